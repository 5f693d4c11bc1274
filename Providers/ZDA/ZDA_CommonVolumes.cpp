// Resolution of volume paths to the array's volume names, and removal of
// volumes with retries while the array reports them busy.
#include "ZDA_Common.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

PEGASUS_NAMESPACE_BEGIN

namespace
{

// One filter value list takes at most this many characters.
const size_t WWN_CHUNK = API_VVFILTER_MAX_VALUES;

// The next chunk of a "wwn|wwn|..." list from `pos`: at most WWN_CHUNK
// characters, cut back after the last "|" so that no WWN is split.
std::string nextChunk(const std::string& list, size_t pos)
{
    if (list.size() - pos <= WWN_CHUNK)
        return list.substr(pos);
    const std::string window = list.substr(pos, WWN_CHUNK);
    size_t cut = window.rfind('|');
    if (cut == std::string::npos)
    {
        // A single value longer than a chunk: passed whole, the filter refuses it.
        cut = list.find('|', pos);
        return cut == std::string::npos ? list.substr(pos) : list.substr(pos, cut - pos + 1);
    }
    return window.substr(0, cut + 1);
}

// Appends the names of the volumes whose WWNs are listed in `chunk`.
// Returns 0, or 4 after logging a failure.
int queryChunk(const std::string& chunk, Array<String>& vvNames)
{
    _api_getvv_filter_t filter;
    std::memset(&filter, 0, sizeof filter);
    if (api_getvv_filter_init(&filter, 1) != 0)
    {
        log_message(2, "Cannot create filter list\n");
        return 4;
    }
    if (api_getvv_filter_add(&filter, API_VVFILTER_ATTR_WWN, API_VVFILTER_OP_ANY, chunk.c_str()) != 0)
    {
        log_message(2, "Cannot update filter list\n");
        api_getvv_filter_free(&filter);
        return 4;
    }

    api_getvv_cursor_t cursor;
    std::memset(&cursor, 0, sizeof cursor);
    int count = 0;
    api_VVObj_t* list = nullptr;
    int rc = cim_sem_wait();
    if (rc == 0)
    {
        rc = api_getVVs_chunk(&cursor, 0, &filter, &count, &list, API_GETVV_ALL);
        cim_sem_post();
    }
    api_getvv_filter_free(&filter);

    if (rc != 0)
    {
        log_message(2, "Failed to query volume\n");
        free_if_not_null(list);
        return 4;
    }
    for (int i = 0; i < count; i++)
        vvNames.append(String(list[i].name));
    free_if_not_null(list);
    return 0;
}

}  // namespace

int ZDA_Common::fillInVVNames(Array<CIMObjectPath>& memberVols, Array<String>& vvNames)
{
    if (memberVols.size() == 0)
    {
        log_message(3, "Empty volume list\n");
        return 5;
    }

    std::string wwns;
    try
    {
        for (Uint32 i = 0; i < memberVols.size(); i++)
        {
            wwns += (const char*)getStringProperty(memberVols[i], "DeviceID").getCString();
            wwns += '|';
        }
    }
    catch (const std::bad_alloc&)
    {
        log_message(2,
            "ZDA_Common::fillInVVNames: Unable to allocate memory for source VV "
            "Paths\n");
        return 4;
    }

    // One query per chunk, not one per volume.
    for (size_t pos = 0; pos < wwns.size();)
    {
        const std::string chunk = nextChunk(wwns, pos);
        pos += chunk.size();
        if (queryChunk(chunk, vvNames) != 0)
            return 4;
    }
    // A partial answer counts as success; only none at all is a failure.
    return vvNames.size() == 0 ? 4 : 0;
}

int ZDA_Common::fillInVVNames(
    Array<CIMObjectPath>& memberVols, api_name_t** vvNames, unsigned int* memberCount)
{
    if (!vvNames || !memberCount)
    {
        log_message(2, "Invalid parameter memberCount or vvNames\n");
        return 5;
    }
    Array<String> names;
    const int rc = fillInVVNames(memberVols, names);
    if (rc != 0)
        return rc;

    api_name_t* entries = static_cast<api_name_t*>(std::malloc(names.size() * sizeof(api_name_t)));
    if (!entries)
    {
        log_message(2, "Unable to allocate vvNames\n");
        return 4;
    }
    std::memset(entries, 0, names.size() * sizeof(api_name_t));
    for (Uint32 i = 0; i < names.size(); i++)
        std::strncpy(entries[i].name, (const char*)names[i].getCString(), API_NAME_LEN - 1);
    *vvNames = entries;
    *memberCount = names.size();
    return 0;
}

int ZDA_Common::removeVVs(_api_evtparam_t* apiEventp, Array<CIMObjectPath>& volRefs, Uint32 noWait)
{
    const int maxRetries = 10;
    for (int retries = 0;; retries++)
    {
        // Resolved anew at each try: the array may have changed meanwhile.
        api_name_t* names = nullptr;
        unsigned int count = 0;
        int rc = fillInVVNames(volRefs, &names, &count);
        if (rc != 0)
        {
            log_message(2, "Cannot find the volume\n");
            return rc;
        }

        rc = cim_sem_wait();
        if (rc == 0)
        {
            rc = api_removeVVs(apiEventp, names, static_cast<int>(count), static_cast<int>(noWait), 0);
            cim_sem_post();
        }
        std::free(names);

        switch (rc)
        {
        case 0:
            // Paths that named no volume were not removed.
            return volRefs.size() > count ? 32768 : 0;
        case API_E_BUSY:
            if (retries < maxRetries)
            {
                sleep(2);
                continue;
            }
            log_message(2, "Volumes are busy, cannot be removed\n");
            return 4;
        case API_E_PARTIAL_REMOVE: return 32768;
        default: log_message(2, "Volume deletion failed\n"); return 4;
        }
    }
}

PEGASUS_NAMESPACE_END
