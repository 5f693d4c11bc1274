#include "ZDA_CopyServicesCommon.h"

PEGASUS_NAMESPACE_BEGIN

namespace ZDA_CopyServices
{

const char NAMESPACE[] = "root/zda";
const char VOLUME_CLASS[] = "ZDA_StorageVolume";
const char SYNC_CLASS[] = "ZDA_StorageSynchronized";

int readAllVolumes(ZDA_CompanionFrame::ArrayList<api_VVObj_t>& volumes)
{
    const int rc = ZDA_CompanionFrame::callUnderSemaphore(
        [&] { return api_getVVs(nullptr, nullptr, volumes.count(), volumes.out(), 0); });
    if (rc != 0)
        volumes.reset();
    return rc;
}

int readVolume(const char* name, const char* wwn, api_VVObj_t& volume)
{
    ZDA_CompanionFrame::ArrayList<api_VVObj_t> found;
    const int rc = ZDA_CompanionFrame::callUnderSemaphore(
        [&] { return api_getVVs(name, wwn, found.count(), found.out(), 1); });
    if (rc != 0)
        return rc;
    if (found.size() == 0)
        return API_E_NOT_FOUND;
    volume = found[0];
    return 0;
}

CIMObjectPath inNamespace(const CIMObjectPath& path)
{
    CIMObjectPath out = path;
    if (out.getNameSpace().isNull())
        out.setNameSpace(NAMESPACE);
    return out;
}

}  // namespace ZDA_CopyServices

PEGASUS_NAMESPACE_END
