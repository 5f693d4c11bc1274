// The process-wide cache of system identity and CIM classes.
#include "ZDA_InternalCacheService.h"

#include <arpa/inet.h>

#include <cctype>

#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

std::mutex g_instanceMutex;
ZDA_InternalCacheService* g_instance = nullptr;

// The singleton lives no longer than this library: a server that unloads
// its provider modules at shutdown (or the process ending) takes it along,
// instead of leaving an object that nothing can reach any more. Defined
// after the mutex, so it is destroyed first.
struct ReleaseServiceAtUnload
{
    ~ReleaseServiceAtUnload() { ZDA_InternalCacheService::destroy(); }
} g_releaseServiceAtUnload;

std::string lowerText(const String& text)
{
    std::string out = (const char*)text.getCString();
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

// The key of one class within its table. A null property list means every
// property, which differs from an empty list (no property at all).
std::string classKey(const CIMNamespaceName& nameSpace, const CIMName& className, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    std::string key = lowerText(nameSpace.getString());
    key += ':';
    key += lowerText(className.getString());
    key += includeClassOrigin ? "|origin" : "|";
    if (propertyList.isNull())
    {
        key += "|*";
    }
    else
    {
        key += "|[";
        for (Uint32 i = 0; i < propertyList.size(); i++)
        {
            key += lowerText(propertyList[i].getString());
            key += ',';
        }
        key += ']';
    }
    return key;
}

}  // namespace

ZDA_InternalCacheService::ZDA_InternalCacheService() = default;

ZDA_InternalCacheService* ZDA_InternalCacheService::getInstance()
{
    ZDA_InternalCacheService* service;
    {
        std::lock_guard<std::mutex> lock(g_instanceMutex);
        if (!g_instance)
            g_instance = new ZDA_InternalCacheService();
        service = g_instance;
    }
    // Filled outside the instance lock: the fill waits for the array.
    if (!service->_filled.load())
        service->initSystemInfo();
    return service;
}

void ZDA_InternalCacheService::destroy()
{
    std::lock_guard<std::mutex> lock(g_instanceMutex);
    delete g_instance;
    g_instance = nullptr;
}

void ZDA_InternalCacheService::refresh()
{
    std::lock_guard<std::mutex> lock(_factsMutex);
    _generation++;
    _filled.store(false);
}

bool ZDA_InternalCacheService::initSystemInfo()
{
    Uint32 generation;
    {
        std::lock_guard<std::mutex> lock(_factsMutex);
        generation = _generation;
    }
    api_system_info_t info;
    int rc = cim_sem_wait();
    if (rc == 0)
    {
        rc = api_getSystemInfo(&info);
        cim_sem_post();
    }
    if (rc != 0)
    {
        log_message(2, "ZDA_InternalCacheService::initSystemInfo: api_getSystemInfo error (%d)\n", rc);
        return false;
    }

    String address;
    _api_ipaddr_t ipaddr;
    if (api_getSystemDualIP(&ipaddr) == 0)
    {
        char text[INET_ADDRSTRLEN] = "";
        in_addr v4;
        v4.s_addr = ipaddr.ipv4_addr;
        if (inet_ntop(AF_INET, &v4, text, sizeof text))
            address = text;
    }

    std::lock_guard<std::mutex> lock(_factsMutex);
    if (_filled.load())
        return true;  // another thread got there first
    _systemName = info.name;
    _systemHostName = info.hostName;
    _systemAddress = address;
    _systemID = info.id;
    _systemType = info.type;
    _isQuadPort = info.isQuadPort;
    _policy.store(info.policyFlags);
    _getStorageArrayUpdateTime = time(nullptr);
    // A refresh while the array was read may have come after the read: the
    // facts are kept, but read again on the next call.
    _filled.store(generation == _generation);
    return true;
}

String ZDA_InternalCacheService::getSystemAddress() const
{
    std::lock_guard<std::mutex> lock(_factsMutex);
    return _systemAddress;
}

String ZDA_InternalCacheService::getSystemName() const
{
    std::lock_guard<std::mutex> lock(_factsMutex);
    return _systemName;
}

String ZDA_InternalCacheService::getSystemHostName() const
{
    std::lock_guard<std::mutex> lock(_factsMutex);
    return _systemHostName;
}

Uint8 ZDA_InternalCacheService::isQuadPortSystem() const
{
    std::lock_guard<std::mutex> lock(_factsMutex);
    return _isQuadPort;
}

Uint32 ZDA_InternalCacheService::getSystemID() const
{
    std::lock_guard<std::mutex> lock(_factsMutex);
    return _systemID;
}

int ZDA_InternalCacheService::getSystemType() const
{
    std::lock_guard<std::mutex> lock(_factsMutex);
    return _systemType;
}

time_t ZDA_InternalCacheService::getStorageArrayUpdateTime() const
{
    std::lock_guard<std::mutex> lock(_factsMutex);
    return _getStorageArrayUpdateTime;
}

Uint32 ZDA_InternalCacheService::getClassHashArrayIndex(Boolean localOnly, Boolean includeQualifiers)
{
    return (localOnly ? 2u : 0u) + (includeQualifiers ? 1u : 0u);
}

CIMClass ZDA_InternalCacheService::getClassFromRepository(CIMOMHandle& cimom, const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return cimom.getClass(
        context, nameSpace, className, localOnly, includeQualifiers, includeClassOrigin, propertyList);
}

CIMClass ZDA_InternalCacheService::getStoredCIMClass(CIMOMHandle& cimom, const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    ZDA_CIMClassHashTable& table = g_cimclassTable[getClassHashArrayIndex(localOnly, includeQualifiers)];
    const std::string key = classKey(nameSpace, className, includeClassOrigin, propertyList);
    {
        std::lock_guard<std::mutex> lock(_classMutex);
        auto found = table.find(key);
        if (found != table.end())
            return found->second.clone();
    }

    // Not held across the server call: the server may call back into
    // providers that use this cache. Two threads that miss together both
    // fetch; the first to return fills the entry.
    CIMClass fetched = getClassFromRepository(
        cimom, context, nameSpace, className, localOnly, includeQualifiers, includeClassOrigin, propertyList);
    std::lock_guard<std::mutex> lock(_classMutex);
    auto inserted = table.emplace(key, fetched.clone());
    return inserted.first->second.clone();
}

void ZDA_InternalCacheService::cleanupRepository()
{
    std::lock_guard<std::mutex> lock(_classMutex);
    for (ZDA_CIMClassHashTable& table : g_cimclassTable)
        table.clear();
}

PEGASUS_NAMESPACE_END
