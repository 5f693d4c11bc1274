// The local copy relationships of the array as ZDA_StorageSynchronized.
#include "ZDA_StorageSynchronizedProvider.h"

#include <cstring>
#include <unordered_map>

#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_CopyServicesCommon.h"
#include "ZDA_StorageVolumeProvider.h"

PEGASUS_NAMESPACE_BEGIN

using ZDA_CompanionFrame::ArrayList;
using namespace ZDA_CopyServices;

namespace
{

const String ClassName = "ZDA_StorageSynchronized";
const char SOURCE_FILE[] = "ZDA_StorageSynchronizedProvider";
const char SYSTEM_ELEMENT[] = "SystemElement";
const char SYNCED_ELEMENT[] = "SyncedElement";

// The classes a volume end answers to as a result class.
const char* const VOLUME_CLASSES[] = {"ZDA_StorageVolume", "CIM_StorageVolume", "CIM_StorageExtent",
    "CIM_LogicalDevice", "CIM_AllocatedLogicalElement", "CIM_EnabledLogicalElement", "CIM_LogicalElement",
    "CIM_ManagedSystemElement", "CIM_ManagedElement"};
// The classes this association answers to as a result class of references.
const char* const SYNC_CLASSES[] = {"ZDA_StorageSynchronized", "CIM_StorageSynchronized", "CIM_Synchronized"};

// Values of the synchronization properties.
const Uint16 SYNC_TYPE_SNAPSHOT = 7;
const Uint16 SYNC_TYPE_CLONE = 8;
const Uint16 MODE_SYNCHRONOUS = 2;
const Uint16 MODE_ASYNCHRONOUS = 3;
const Uint16 COPY_TYPE_SYNC = 3;
const Uint16 COPY_TYPE_UNSYNC_ASSOC = 4;
const Uint16 REPLICA_FULL_COPY = 2;
const Uint16 REPLICA_BEFORE_DELTA = 3;

template <size_t N>
bool isOneOf(const CIMName& name, const char* const (&names)[N])
{
    if (name.isNull())
        return true;
    for (const char* n : names)
        if (name.equal(n))
            return true;
    return false;
}

bool isLocalCopy(const api_VVObj_t& vv)
{
    return (vv.type == API_VV_TYPE_PHYSICAL_COPY || vv.type == API_VV_TYPE_VIRTUAL_COPY) && vv.copyOfId != 0;
}

// One relationship: indexes of the source and the copy in a volume list.
struct Pair
{
    int source;
    int copy;
};

// The relationships among `volumes` (every volume of the array).
std::vector<Pair> pairsOf(const ArrayList<api_VVObj_t>& volumes)
{
    std::unordered_map<Uint32, int> byId;
    for (int i = 0; i < volumes.size(); i++)
        byId[volumes[i].id] = i;
    std::vector<Pair> pairs;
    for (int c = 0; c < volumes.size(); c++)
    {
        if (!isLocalCopy(volumes[c]))
            continue;
        auto source = byId.find(volumes[c].copyOfId);
        if (source != byId.end())
            pairs.push_back(Pair{source->second, c});
    }
    return pairs;
}

// A relationship seen from one of its ends.
struct Navigation
{
    Pair pair;
    bool fromSource;  // the object is the SystemElement end
};

// The relationships of which `objectName` is an end (through `role`, when
// given), read from the array. False (nothing to answer) when the request
// cannot match or the array could not be read.
bool navigate(const CIMObjectPath& objectName, const String& role, const String& resultRole,
    ArrayList<api_VVObj_t>& volumes, String& systemName, String& host, std::vector<Navigation>& found)
{
    const bool roleSource = role.size() == 0 || String::equalNoCase(role, SYSTEM_ELEMENT);
    const bool roleCopy = role.size() == 0 || String::equalNoCase(role, SYNCED_ELEMENT);
    const bool farCopy = resultRole.size() == 0 || String::equalNoCase(resultRole, SYNCED_ELEMENT);
    const bool farSource = resultRole.size() == 0 || String::equalNoCase(resultRole, SYSTEM_ELEMENT);
    if (!((roleSource && farCopy) || (roleCopy && farSource)))
        return false;
    if (!objectName.getClassName().equal(VOLUME_CLASS))
        return false;
    if (!systemIdentity(SOURCE_FILE, systemName, host))
        return false;
    const int rc = readAllVolumes(volumes);
    if (rc != 0)
    {
        log_message(2, "ZDA_StorageSynchronizedProvider: api_getVVs error (%d)\n", rc);
        return false;
    }
    const CIMObjectPath object = inNamespace(objectName);
    for (const Pair& p : pairsOf(volumes))
    {
        if (roleSource && farCopy &&
            ZDA_Common::matchObjectPath(object,
                ZDA_StorageVolumeProvider::createObjectPath(volumes[p.source].wwnText, systemName, host)))
            found.push_back(Navigation{p, true});
        if (roleCopy && farSource &&
            ZDA_Common::matchObjectPath(object,
                ZDA_StorageVolumeProvider::createObjectPath(volumes[p.copy].wwnText, systemName, host)))
            found.push_back(Navigation{p, false});
    }
    return true;
}

}  // namespace

ZDA_StorageSynchronizedProvider::ZDA_StorageSynchronizedProvider() = default;
ZDA_StorageSynchronizedProvider::~ZDA_StorageSynchronizedProvider() = default;

void ZDA_StorageSynchronizedProvider::getSyncState(
    api_VVObj_t*, api_VVObj_t* copy, Uint16& syncState, Uint16& copyState, Uint16& progressStatus)
{
    if (copy->state & API_VV_STATE_RESTORING)
    {
        copyState = 3;       // Unsynchronized
        syncState = 10;      // RestoreInProgress
        progressStatus = 8;  // Restoring
    }
    else if (copy->type == API_VV_TYPE_VIRTUAL_COPY)
    {
        copyState = 4;       // Synchronized: the snapshot holds its point in time
        syncState = 6;       // Synchronized
        progressStatus = 2;  // Completed
    }
    else if (copy->state & API_VV_STATE_COPYING)
    {
        copyState = 3;       // Unsynchronized
        syncState = 15;      // CopyInProgress
        progressStatus = 6;  // Synchronizing
    }
    else if (copy->copyProgress < 100)
    {
        copyState = 6;        // Fractured: stopped or failed part way
        syncState = 13;       // Fractured
        progressStatus = 18;  // Requires resync
    }
    else if (copy->state & API_VV_STATE_COPY_INACTIVE)
    {
        copyState = 8;       // Inactive
        syncState = 11;      // Idle
        progressStatus = 3;  // Dormant
    }
    else
    {
        copyState = 4;       // Synchronized
        syncState = 6;       // Synchronized
        progressStatus = 2;  // Completed
    }
}

CIMObjectPath ZDA_StorageSynchronizedProvider::buildObjectPath(
    const CIMObjectPath& source, const CIMObjectPath& copy, const String& host)
{
    return ZDA_Common::buildAssocPath(
        ClassName, SYSTEM_ELEMENT, SYNCED_ELEMENT, source, copy, host, NAMESPACE);
}

CIMInstance ZDA_StorageSynchronizedProvider::buildInstance(const api_VVObj_t& source, const api_VVObj_t& copy,
    const String& systemName, const String& host, CIMClass& syncClass)
{
    const CIMObjectPath sourcePath = ZDA_StorageVolumeProvider::createObjectPath(
        source.wwnText, systemName, host);
    const CIMObjectPath copyPath = ZDA_StorageVolumeProvider::createObjectPath(
        copy.wwnText, systemName, host);
    CIMInstance sync = ZDA_Common::buildAssocInstance(
        ClassName, SYSTEM_ELEMENT, SYNCED_ELEMENT, sourcePath, copyPath, host, NAMESPACE, syncClass);

    const bool clone = copy.type == API_VV_TYPE_PHYSICAL_COPY;
    const bool inactive = (copy.state & API_VV_STATE_COPY_INACTIVE) != 0;
    Uint16 syncState = 0;
    Uint16 copyState = 0;
    Uint16 progressStatus = 0;
    api_VVObj_t sourceRecord = source;
    api_VVObj_t copyRecord = copy;
    getSyncState(&sourceRecord, &copyRecord, syncState, copyState, progressStatus);

    ZDA_Common::setPropertyValue(sync, "SyncType", clone ? SYNC_TYPE_CLONE : SYNC_TYPE_SNAPSHOT);
    ZDA_Common::setPropertyValue(sync, "Mode", clone && !inactive ? MODE_SYNCHRONOUS : MODE_ASYNCHRONOUS);
    ZDA_Common::setPropertyValue(
        sync, "CopyType", clone && !inactive ? COPY_TYPE_SYNC : COPY_TYPE_UNSYNC_ASSOC);
    ZDA_Common::setPropertyValue(sync, "ReplicaType", clone ? REPLICA_FULL_COPY : REPLICA_BEFORE_DELTA);
    ZDA_Common::setPropertyValue(sync, "SyncMaintained", Boolean(clone && !inactive));
    ZDA_Common::setPropertyValue(sync, "CopyState", copyState);
    ZDA_Common::setPropertyValue(sync, "SyncState", syncState);
    ZDA_Common::setPropertyValue(sync, "ProgressStatus", progressStatus);
    ZDA_Common::setPropertyValue(sync, "PercentSynced", Uint16(clone ? copy.copyProgress : 100));
    ZDA_Common::setPropertyValue(sync, "WhenEstablished", ZDA_Common::getCIMDateTime(copy.creationTime));
    const time_t synced = clone ? copy.curWhenSynced : copy.creationTime;
    if (synced != 0)
        ZDA_Common::setPropertyValue(sync, "WhenSynced", ZDA_Common::getCIMDateTime(synced));
    return sync;
}

void ZDA_StorageSynchronizedProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void ZDA_StorageSynchronizedProvider::terminate()
{
    delete this;
}

void ZDA_StorageSynchronizedProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSynchronizedProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(instanceReference, ClassName, "CIM_StorageSynchronized");
    CIMClass syncClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);

    CIMInstance instance;
    String systemName;
    String host;
    String wwn;
    try
    {
        const CIMObjectPath copyRef(ZDA_Common::getStringProperty(instanceReference, SYNCED_ELEMENT));
        wwn = ZDA_Common::getStringProperty(copyRef, "DeviceID");
    }
    catch (const Exception&)
    {
        // Not a path: no such relationship.
    }
    if (wwn.size() > 0 && systemIdentity(SOURCE_FILE, systemName, host))
    {
        api_VVObj_t copy;
        api_VVObj_t source;
        const CString wwnText = wwn.getCString();
        if (readVolume(nullptr, wwnText, copy) == 0 && isLocalCopy(copy) &&
            readVolume(copy.copyOfName, nullptr, source) == 0)
            instance = buildInstance(source, copy, systemName, host, syncClass);
    }
    if (instance.isUninitialized() ||
        !ZDA_Common::matchObjectPath(inNamespace(instanceReference), instance.getPath()))
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    handler.processing();
    handler.deliver(instance);
    handler.complete();
    log_message(4, "<-- ZDA_StorageSynchronizedProvider::getInstance()\n");
}

void ZDA_StorageSynchronizedProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSynchronizedProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, "CIM_StorageSynchronized");
    CIMClass syncClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    String systemName;
    String host;
    ArrayList<api_VVObj_t> volumes;
    if (systemIdentity(SOURCE_FILE, systemName, host) && readAllVolumes(volumes) == 0)
    {
        for (const Pair& p : pairsOf(volumes))
            handler.deliver(buildInstance(volumes[p.source], volumes[p.copy], systemName, host, syncClass));
    }
    handler.complete();
    log_message(4, "<-- ZDA_StorageSynchronizedProvider::enumerateInstances()\n");
}

void ZDA_StorageSynchronizedProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSynchronizedProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, "CIM_StorageSynchronized");
    handler.processing();
    String systemName;
    String host;
    ArrayList<api_VVObj_t> volumes;
    if (systemIdentity(SOURCE_FILE, systemName, host) && readAllVolumes(volumes) == 0)
    {
        for (const Pair& p : pairsOf(volumes))
            handler.deliver(buildObjectPath(
                ZDA_StorageVolumeProvider::createObjectPath(volumes[p.source].wwnText, systemName, host),
                ZDA_StorageVolumeProvider::createObjectPath(volumes[p.copy].wwnText, systemName, host),
                host));
    }
    handler.complete();
    log_message(4, "<-- ZDA_StorageSynchronizedProvider::enumerateInstanceNames()\n");
}

void ZDA_StorageSynchronizedProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ZDA_StorageSynchronizedProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ZDA_StorageSynchronizedProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

void ZDA_StorageSynchronizedProvider::associators(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName&, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSynchronizedProvider::associators()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    handler.processing();
    ArrayList<api_VVObj_t> volumes;
    String systemName;
    String host;
    std::vector<Navigation> found;
    if (isOneOf(resultClass, VOLUME_CLASSES) &&
        navigate(objectName, role, resultRole, volumes, systemName, host, found))
    {
        CIMClass volumeClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE,
            VOLUME_CLASS, false, includeQualifiers, includeClassOrigin, propertyList);
        for (const Navigation& n : found)
        {
            api_VVObj_t& far = volumes[n.fromSource ? n.pair.copy : n.pair.source];
            handler.deliver(
                ZDA_StorageVolumeProvider::buildInstance(&far, systemName, host, volumeClass, nullptr, 0));
        }
    }
    handler.complete();
    log_message(4, "<-- ZDA_StorageSynchronizedProvider::associators()\n");
}

void ZDA_StorageSynchronizedProvider::associatorNames(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName&, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSynchronizedProvider::associatorNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    handler.processing();
    ArrayList<api_VVObj_t> volumes;
    String systemName;
    String host;
    std::vector<Navigation> found;
    if (isOneOf(resultClass, VOLUME_CLASSES) &&
        navigate(objectName, role, resultRole, volumes, systemName, host, found))
    {
        for (const Navigation& n : found)
        {
            const api_VVObj_t& far = volumes[n.fromSource ? n.pair.copy : n.pair.source];
            handler.deliver(ZDA_StorageVolumeProvider::createObjectPath(far.wwnText, systemName, host));
        }
    }
    handler.complete();
    log_message(4, "<-- ZDA_StorageSynchronizedProvider::associatorNames()\n");
}

void ZDA_StorageSynchronizedProvider::references(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    ObjectResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSynchronizedProvider::references()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    handler.processing();
    ArrayList<api_VVObj_t> volumes;
    String systemName;
    String host;
    std::vector<Navigation> found;
    if (isOneOf(resultClass, SYNC_CLASSES) &&
        navigate(objectName, role, String(), volumes, systemName, host, found))
    {
        CIMClass syncClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, ClassName,
            false, includeQualifiers, includeClassOrigin, propertyList);
        for (const Navigation& n : found)
            handler.deliver(
                buildInstance(volumes[n.pair.source], volumes[n.pair.copy], systemName, host, syncClass));
    }
    handler.complete();
    log_message(4, "<-- ZDA_StorageSynchronizedProvider::references()\n");
}

void ZDA_StorageSynchronizedProvider::referenceNames(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSynchronizedProvider::referenceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    handler.processing();
    ArrayList<api_VVObj_t> volumes;
    String systemName;
    String host;
    std::vector<Navigation> found;
    if (isOneOf(resultClass, SYNC_CLASSES) &&
        navigate(objectName, role, String(), volumes, systemName, host, found))
    {
        for (const Navigation& n : found)
            handler.deliver(buildObjectPath(
                ZDA_StorageVolumeProvider::createObjectPath(volumes[n.pair.source].wwnText, systemName, host),
                ZDA_StorageVolumeProvider::createObjectPath(volumes[n.pair.copy].wwnText, systemName, host),
                host));
    }
    handler.complete();
    log_message(4, "<-- ZDA_StorageSynchronizedProvider::referenceNames()\n");
}

PEGASUS_NAMESPACE_END
