// The array's volumes as ZDA_StorageVolume instances.
#include "ZDA_StorageVolumeProvider.h"

#include <cstdio>
#include <cstring>

#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"

PEGASUS_NAMESPACE_BEGIN

using ZDA_CompanionFrame::ArrayList;
using ZDA_CompanionFrame::callUnderSemaphore;

namespace
{

const String ClassName = "ZDA_StorageVolume";
const char SOURCE_FILE[] = "ZDA_StorageVolumeProvider";
const char VOLUME_NAMESPACE[] = "root/zda";
const char SYSTEM_CLASS[] = "ZDA_StorageSystem";
const Uint32 KEY_COUNT = 4;

// The array addresses volumes in 512-byte blocks; sizes come in MiB.
const Uint64 BLOCK_SIZE = 512;
const Uint64 BLOCKS_PER_MIB = 2048;

// CIM_StorageExtent values.
const Uint16 NAME_FORMAT_NAA = 9;
const Uint16 NAME_NAMESPACE_VPD83_TYPE3 = 2;
const Uint16 USAGE_UNRESTRICTED = 2;
const Uint16 ACCESS_READABLE = 1;
const Uint16 ACCESS_READ_WRITE = 3;
const Uint16 STATUS_OK = 2;
const Uint16 STATUS_ERROR = 6;
const Uint16 STATUS_STARTING = 8;
const Uint16 HEALTH_OK = 5;
const Uint16 HEALTH_CRITICAL = 25;

// RAID types of api_cpg_t.
const int RAID_0 = 1;
const int RAID_1 = 2;
const int RAID_5 = 3;
const int RAID_6 = 4;

// A volume is usable (OK) unless a physical copy is still being written to
// it (starting) or such a copy ended before it was complete (error).
void setStatus(CIMInstance& instance, const api_VVObj_t& vv)
{
    Uint16 status = STATUS_OK;
    if (vv.state & API_VV_STATE_COPYING)
        status = STATUS_STARTING;
    else if (vv.type == API_VV_TYPE_PHYSICAL_COPY && vv.copyProgress < 100)
        status = STATUS_ERROR;
    Array<Uint16> statuses;
    statuses.append(status);
    ZDA_Common::setPropertyValue(instance, "OperationalStatus", statuses);
    ZDA_Common::setPropertyValue(
        instance, "HealthState", status == STATUS_ERROR ? HEALTH_CRITICAL : HEALTH_OK);
}

// The redundancy of the CPG that holds the volume's user space.
void setRedundancy(CIMInstance& instance, const api_VVObj_t& vv, const api_cpg_t* cpgs, int cpgCount)
{
    for (int i = 0; cpgs && i < cpgCount; i++)
    {
        if (strncmp(cpgs[i].name, vv.usrCpgName, API_NAME_LEN) != 0)
            continue;
        Uint16 dataRedundancy = 1;
        Uint16 packageRedundancy = 0;
        switch (cpgs[i].raidType)
        {
        case RAID_1:
            dataRedundancy = 2;
            packageRedundancy = 1;
            break;
        case RAID_5: packageRedundancy = 1; break;
        case RAID_6: packageRedundancy = 2; break;
        case RAID_0:
        default: break;
        }
        ZDA_Common::setPropertyValue(instance, "DataRedundancy", dataRedundancy);
        ZDA_Common::setPropertyValue(instance, "PackageRedundancy", packageRedundancy);
        ZDA_Common::setPropertyValue(
            instance, "NoSinglePointOfFailure", Boolean(packageRedundancy > 0 || dataRedundancy > 1));
        ZDA_Common::setPropertyValue(instance, "IsBasedOnUnderlyingRedundancy", Boolean(true));
        return;
    }
}

// Reads the CPG list into `cpgs`; a failure leaves it empty (the volumes are
// then served without their redundancy) and is logged.
void readCPGs(ArrayList<api_cpg_t>& cpgs)
{
    const int rc = callUnderSemaphore([&] { return api_getCPGs(cpgs.count(), cpgs.out()); });
    if (rc != 0)
    {
        cpgs.reset();
        log_message(2, "ZDA_StorageVolumeProvider: api_getCPGs error (%d)\n", rc);
    }
}

}  // namespace

ZDA_StorageVolumeProvider::ZDA_StorageVolumeProvider() = default;
ZDA_StorageVolumeProvider::~ZDA_StorageVolumeProvider() = default;

CIMObjectPath ZDA_StorageVolumeProvider::createObjectPath(
    String wwn, String const& systemName, String const& hostName)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("CreationClassName", ClassName, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("DeviceID", wwn, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemCreationClassName", SYSTEM_CLASS, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", systemName, CIMKeyBinding::STRING));
    return CIMObjectPath(hostName, CIMNamespaceName(VOLUME_NAMESPACE), CIMName(ClassName), keys);
}

CIMInstance ZDA_StorageVolumeProvider::buildEmptyInstance(
    String const& deviceID, String const& systemName, String const& hostName, CIMClass& volumeClass)
{
    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(volumeClass);
    ZDA_Common::setPropertyValue(instance, "CreationClassName", ClassName);
    ZDA_Common::setPropertyValue(instance, "SystemCreationClassName", SYSTEM_CLASS);
    ZDA_Common::setPropertyValue(instance, "SystemName", systemName);
    ZDA_Common::setPropertyValue(instance, "DeviceID", deviceID);
    instance.setPath(createObjectPath(deviceID, systemName, hostName));
    return instance;
}

CIMInstance ZDA_StorageVolumeProvider::buildInstance(api_VVObj_t* vv, String const& systemName,
    String const& hostName, CIMClass& volumeClass, const api_cpg_t* cpgs, int cpgCount)
{
    const String wwn = vv->wwnText;
    const String name = vv->name;
    CIMInstance instance = buildEmptyInstance(wwn, systemName, hostName, volumeClass);

    ZDA_Common::setPropertyValue(instance, "ElementName", name);
    ZDA_Common::setPropertyValue(instance, "Caption", name);
    if (vv->comment[0])
        ZDA_Common::setPropertyValue(instance, "Description", String(vv->comment));
    ZDA_Common::setPropertyValue(instance, "Name", wwn);
    ZDA_Common::setPropertyValue(instance, "NameFormat", NAME_FORMAT_NAA);
    ZDA_Common::setPropertyValue(instance, "NameNamespace", NAME_NAMESPACE_VPD83_TYPE3);

    char id[16];
    snprintf(id, sizeof id, "%u", vv->id);
    Array<String> identities;
    identities.append(String(id));
    Array<String> descriptions;
    descriptions.append("Volume System ID");
    ZDA_Common::setPropertyValue(instance, "OtherIdentifyingInfo", identities);
    ZDA_Common::setPropertyValue(instance, "IdentifyingDescriptions", descriptions);

    const Uint64 blocks = Uint64(vv->sizeMiB) * BLOCKS_PER_MIB;
    ZDA_Common::setPropertyValue(instance, "BlockSize", BLOCK_SIZE);
    ZDA_Common::setPropertyValue(instance, "NumberOfBlocks", blocks);
    ZDA_Common::setPropertyValue(instance, "ConsumableBlocks", blocks);
    ZDA_Common::setPropertyValue(instance, "Usage", USAGE_UNRESTRICTED);
    ZDA_Common::setPropertyValue(instance, "Access", vv->readOnly ? ACCESS_READABLE : ACCESS_READ_WRITE);
    ZDA_Common::setPropertyValue(instance, "Primordial", Boolean(false));
    ZDA_Common::setPropertyValue(instance, "ThinlyProvisioned", Boolean((vv->policy & VV_POLICY_THIN) != 0));
    ZDA_Common::setPropertyValue(instance, "CanDelete", Boolean((vv->policy & VV_POLICY_SYSTEM) == 0));
    ZDA_Common::setPropertyValue(instance, "InstallDate", ZDA_Common::getCIMDateTime(vv->creationTime));
    setStatus(instance, *vv);
    setRedundancy(instance, *vv, cpgs, cpgCount);

    ZDA_Common::setPropertyValue(instance, "VolumeType", Uint16(vv->type));
    ZDA_Common::setPropertyValue(instance, "Policy", Uint32(vv->policy));
    return instance;
}

CIMInstance ZDA_StorageVolumeProvider::buildVVInstance(String const& vvName, String const& systemName,
    String const& hostName, CIMClass& volumeClass, bool withRedundancy)
{
    ArrayList<api_cpg_t> cpgs;
    if (withRedundancy)
        readCPGs(cpgs);

    const CString name = vvName.getCString();
    ArrayList<api_VVObj_t> vvs;
    const int rc = callUnderSemaphore(
        [&] { return api_getVVs((const char*)name, nullptr, vvs.count(), vvs.out(), 1); });
    if (rc != 0 || vvs.size() == 0)
    {
        log_message(2, "ZDA_StorageVolumeProvider::buildVVInstance(): api_getVVs error (%d) for %s\n", rc,
            (const char*)name);
        return CIMInstance();
    }
    return buildInstance(&vvs[0], systemName, hostName, volumeClass, cpgs.begin(), cpgs.size());
}

void ZDA_StorageVolumeProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void ZDA_StorageVolumeProvider::terminate()
{
    delete this;
}

void ZDA_StorageVolumeProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageVolumeProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(instanceReference, ClassName, "CIM_StorageVolume");
    const Uint32 keyCount = instanceReference.getKeyBindings().size();
    if (keyCount != KEY_COUNT)
    {
        log_message(2, "ZDA_StorageVolumeProvider::getInstance(): Invalid number of keys (%u)\n", keyCount);
        throw CIMInvalidParameterException(ClassName + " Expect four keys.");
    }

    CIMClass volumeClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), VOLUME_NAMESPACE,
        ClassName, false, includeQualifiers, includeClassOrigin, propertyList);

    CIMInstance instance;
    String systemName;
    String hostName;
    const String deviceID = ZDA_Common::getStringProperty(instanceReference, "DeviceID");
    if (deviceID.size() > 0 && ZDA_CompanionFrame::systemIdentity(SOURCE_FILE, systemName, hostName))
    {
        ArrayList<api_cpg_t> cpgs;
        readCPGs(cpgs);
        const CString wwn = deviceID.getCString();
        ArrayList<api_VVObj_t> vvs;
        const int rc = callUnderSemaphore(
            [&] { return api_getVVs(nullptr, (const char*)wwn, vvs.count(), vvs.out(), 1); });
        if (rc == 0 && vvs.size() > 0)
            instance = buildInstance(&vvs[0], systemName, hostName, volumeClass, cpgs.begin(), cpgs.size());
        else if (rc != API_E_NOT_FOUND)
            log_message(2, "ZDA_StorageVolumeProvider::getInstance(): api_getVVs error (%d)\n", rc);
    }
    // The WWN finds the volume; the other keys must name it as well. A
    // reference without a namespace names one in the provider's.
    CIMObjectPath wanted = instanceReference;
    if (wanted.getNameSpace().isNull())
        wanted.setNameSpace(VOLUME_NAMESPACE);
    if (instance.isUninitialized() || !ZDA_Common::matchObjectPath(wanted, instance.getPath()))
    {
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    }

    handler.processing();
    handler.deliver(instance);
    handler.complete();
    log_message(4, "<-- ZDA_StorageVolumeProvider::getInstance()\n");
}

void ZDA_StorageVolumeProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageVolumeProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, "CIM_StorageVolume");
    CIMClass volumeClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), VOLUME_NAMESPACE,
        ClassName, false, includeQualifiers, includeClassOrigin, propertyList);
    cim_handler_u h;
    h.instanceHandler = &handler;
    _deliverAll(&volumeClass, CIM_ENUMERATE_INSTANCES, h);
    log_message(4, "<-- ZDA_StorageVolumeProvider::enumerateInstances()\n");
}

void ZDA_StorageVolumeProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageVolumeProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, "CIM_StorageVolume");
    cim_handler_u h;
    h.objectPathHandler = &handler;
    _deliverAll(nullptr, CIM_ENUMERATE_INSTANCE_NAMES, h);
    log_message(4, "<-- ZDA_StorageVolumeProvider::enumerateInstanceNames()\n");
}

void ZDA_StorageVolumeProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ZDA_StorageVolumeProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ZDA_StorageVolumeProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

void ZDA_StorageVolumeProvider::_deliverAll(CIMClass* volumeClass, cim_method_e method, cim_handler_u handler)
{
    ZDA_Common::handleProcessing(handler, method);
    String systemName;
    String hostName;
    if (ZDA_CompanionFrame::systemIdentity(SOURCE_FILE, systemName, hostName))
    {
        ArrayList<api_cpg_t> cpgs;
        if (volumeClass)
            readCPGs(cpgs);

        api_getvv_cursor_t cursor;
        memset(&cursor, 0, sizeof cursor);
        ArrayList<api_VVObj_t> chunk;
        while (!cursor.done)
        {
            const int rc = callUnderSemaphore(
                [&] { return api_getVVs_chunk(&cursor, 0, nullptr, chunk.count(), chunk.out(), 0); });
            if (rc != 0)
            {
                log_message(2,
                    "ZDA_StorageVolumeProvider::_deliverAll(): api_getVVs_chunk error "
                    "(%d)\n",
                    rc);
                break;
            }
            for (api_VVObj_t& vv : chunk)
            {
                if (volumeClass)
                {
                    ZDA_Common::handleDeliver(handler, method,
                        buildInstance(&vv, systemName, hostName, *volumeClass, cpgs.begin(), cpgs.size()));
                }
                else
                {
                    CIMInstance named{CIMName(ClassName)};
                    named.setPath(createObjectPath(String(vv.wwnText), systemName, hostName));
                    ZDA_Common::handleDeliver(handler, method, named);
                }
            }
        }
    }
    ZDA_Common::handleComplete(handler, method);
}

PEGASUS_NAMESPACE_END
