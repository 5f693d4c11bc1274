// Remote copies of volumes: the state of each pair of a local volume and its
// counterpart on a remote copy target, and the lookups over a remote copy
// configuration shared by the providers that show remote copy state.
#include "ZDA_RemoteStorageSynchronizedProvider.h"

#include <cstring>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_AssociationFrame.h"
#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_RemoteGroupSynchronizedProvider.h"
#include "ZDA_ReplicationEntityProvider.h"
#include "ZDA_StorageVolumeProvider.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_RemoteStorageSynchronized";
const char SOURCE_FILE[] = "ZDA_RemoteStorageSynchronizedProvider";
const char SYSTEM_ELEMENT[] = "SystemElement";
const char SYNCED_ELEMENT[] = "SyncedElement";
const char ENTITY_CLASS[] = "ZDA_ReplicationEntity";
const char VOLUME_TYPE[] = "VV";

// The SMI-S values this provider sets beyond the state triple.
const Uint16 UNDISCOVERED_SYSTEM_ELEMENT = 2;
const Uint16 UNDISCOVERED_SYNCED_ELEMENT = 3;
const Uint16 MODE_SYNCHRONOUS = 2;
const Uint16 MODE_ASYNCHRONOUS = 3;
const Uint16 COPY_TYPE_ASYNC = 2;
const Uint16 COPY_TYPE_SYNC = 3;
const Uint32 DETAILED_COPY_TYPE_SYNC = 2;
const Uint32 DETAILED_COPY_TYPE_PERIODIC = 4;
const Uint16 COPY_METHODOLOGY_SYNC = 5;
const Uint16 COPY_METHODOLOGY_PERIODIC = 8;
const Uint16 SYNC_TYPE_MIRROR = 6;
const Uint16 REPLICA_TYPE_FULL_COPY = 2;
const Uint16 COPY_STATE_SYNCHRONIZED = 4;
const Uint16 COPY_STATE_NOT_APPLICABLE = 15;
const Uint16 SYNC_STATE_RESYNC_IN_PROGRESS = 5;
// The sync policy bit that is always on.
const Uint32 SYNC_POLICY_FORCED = 2;
const Uint64 MICROSECONDS_PER_SECOND = 1000000;
// A WWN no volume has: requests that name nothing usable match nothing.
const api_u64_t NO_WWN = api_u64_t(-10);

// A volume status after which the last sync time says nothing of the copy.
bool brokenOff(Uint8 vvStatus)
{
    return vvStatus == RM_GROUP_VV_UNSYNC || vvStatus == RM_GROUP_VV_REMOTE_UNSYNC ||
        vvStatus == RM_GROUP_VV_LD_CHECKING || vvStatus == RM_GROUP_VV_REMOTE_LD_CHECKING;
}

bool targetFailed(rm_group_target* target, api_rcopy_t& rcopy)
{
    const rm_target* configured = ZDA_RemoteStorageSynchronizedProvider::findTarget(target, rcopy);
    return configured && configured->rm_status == RM_TARGET_FAILED;
}

void setState(
    Uint16& copyState, Uint16& syncState, Uint16& progressStatus, Uint16 copy, Uint16 sync, Uint16 progress)
{
    copyState = copy;
    syncState = sync;
    progressStatus = progress;
}

String wwnText(api_u64_t wwnRe, api_u64_t wwn)
{
    char buffer[33];
    api_wwnIntToString(wwnRe, wwn, buffer, 33);
    buffer[32] = '\0';
    return String(buffer);
}

}  // namespace

ZDA_RemoteStorageSynchronizedProvider::ZDA_RemoteStorageSynchronizedProvider()
    : _assoClassName(ClassName), _volClassName("ZDA_StorageVolume")
{}

ZDA_RemoteStorageSynchronizedProvider::~ZDA_RemoteStorageSynchronizedProvider() = default;

void ZDA_RemoteStorageSynchronizedProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _hostAddr = ZDA_Common::getSystemHostName(cimom);
    _systemName = ZDA_Common::getSystemName(cimom);
}

void ZDA_RemoteStorageSynchronizedProvider::terminate()
{
    delete this;
}

// ---- lookups and the state mapping ----------------------------------------------------

rm_group_vv_map* ZDA_RemoteStorageSynchronizedProvider::findVVMap(
    rm_group_wrapper* grp, rm_group_target* gtarget, rm_group_vv_wrapper* gvvs)
{
    if (!grp || !gtarget || !gvvs || !gvvs->maps)
        return nullptr;
    for (Uint16 i = 0; i < grp->group.rm_targets; i++)
    {
        if (std::strcmp(gvvs->maps[i].rm_target, gtarget->rm_target) == 0)
            return &gvvs->maps[i];
    }
    return nullptr;
}

rm_target* ZDA_RemoteStorageSynchronizedProvider::findTarget(rm_group_target* gtarget, api_rcopy_t& rcopy)
{
    if (!gtarget || !rcopy.targets)
        return nullptr;
    for (int i = 0; i < rcopy.target_count; i++)
    {
        if (std::strcmp(rcopy.targets[i].rm_hdr.rm_name, gtarget->rm_target) == 0)
            return &rcopy.targets[i];
    }
    return nullptr;
}

String ZDA_RemoteStorageSynchronizedProvider::getRemoteSystemWWN(
    api_rcopy_t* pRcopy, rm_group_target* gtarget)
{
    const rm_target* target = pRcopy ? findTarget(gtarget, *pRcopy) : nullptr;
    return target ? String(target->rm_computed_remote_node_wwn) : String();
}

void ZDA_RemoteStorageSynchronizedProvider::getVVCopyState(Uint8& vv_status, api_rcopy_t& rcopy,
    rm_group_target* target, rm_group* group, Uint16& copyState, Uint16& progressStatus, Uint16& syncState)
{
    const Uint8 state = target->rm_state;
    const int dr = group->rm_dr_state;
    const bool againstNature = group->rm_natural == 0;
    switch (vv_status)
    {
    case RM_GROUP_VV_NEW:
    case RM_GROUP_VV_REMOTE:
    case RM_GROUP_VV_NEW_NO_SYNC:
    case RM_GROUP_VV_NEW_SYNC:
        if (state == 0 || state == 4 || state == 5)
            setState(copyState, syncState, progressStatus, 7, 4, 18);
        else
            setState(copyState, syncState, progressStatus, 3, 4, 18);
        return;
    case RM_GROUP_VV_SYNCING:
    case RM_GROUP_VV_REMOTE_SYNCING:
        if (againstNature && (dr == RM_DR_RECOVER_IN_PROGRESS || dr == RM_DR_RECOVER_DONE))
            setState(copyState, syncState, progressStatus, 3, 10, 8);
        else
            setState(copyState, syncState, progressStatus, 3, 5, 6);
        return;
    case RM_GROUP_VV_SYNCED:
    case RM_GROUP_VV_REMOTE_SYNCED:
        if (target->rm_options & RM_GTARGET_OPT_PRIMARY_BY_MODE)
            setState(copyState, syncState, progressStatus, 11, 4, 3);
        else if (state == 1 || state == 2)
            setState(copyState, syncState, progressStatus, 4, 6,
                againstNature && dr == RM_DR_RESTORE_IN_PROGRESS ? 12 : 2);
        else if (dr != RM_DR_NONE && dr != RM_DR_REVERSE && dr != RM_DR_REVERSE_FAIL &&
            dr != RM_DR_REVERSE_IN_PROGRESS && againstNature)
            setState(copyState, syncState, progressStatus, 10, 12, dr == RM_DR_FAILOVER_IN_PROGRESS ? 11 : 2);
        else if (targetFailed(target, rcopy))
            setState(copyState, syncState, progressStatus, 5, 12, 2);
        else
            setState(copyState, syncState, progressStatus, 7, 14, 18);
        return;
    case RM_GROUP_VV_UNSYNC:
    case RM_GROUP_VV_REMOTE_UNSYNC:
    case RM_GROUP_VV_LD_CHECKING:
    case RM_GROUP_VV_REMOTE_LD_CHECKING: setState(copyState, syncState, progressStatus, 5, 12, 2); return;
    case RM_GROUP_VV_STALE:
    case RM_GROUP_VV_REMOTE_STALE: setState(copyState, syncState, progressStatus, 13, 12, 2); return;
    case RM_GROUP_VV_STOPPED:
        if (targetFailed(target, rcopy))
            setState(copyState, syncState, progressStatus, 5, 12, 2);
        else
            setState(copyState, syncState, progressStatus, 7, 14, 18);
        return;
    default:
        // Repairing and failsafe volumes, and values the array may add.
        setState(copyState, syncState, progressStatus, 15, 0, 15);
        return;
    }
}

Boolean ZDA_RemoteStorageSynchronizedProvider::syncMaintained(
    const api_rcopy_t& rcopy, const rm_group_target* target)
{
    const Uint8 mode = rcopy.sys.rm_sys_mode;
    return !((rcopy.sys.rm_status & RM_SYS_INVALID) || mode == RM_SYS_MODE_NONE ||
        mode == (RM_SYS_MODE_ON | RM_SYS_MODE_STOP) || target->rm_state == 0 || target->rm_state == 4);
}

Uint32 ZDA_RemoteStorageSynchronizedProvider::syncPolicy(const rm_group_target* target)
{
    return (target->rm_options & RM_GTARGET_OPT_POLICY_MASK) | SYNC_POLICY_FORCED;
}

// ---- building the pairs ----------------------------------------------------------------

CIMInstance ZDA_RemoteStorageSynchronizedProvider::_buildAssociationInstance(CIMObjectPath& srcPath,
    CIMObjectPath& tgtPath, api_rcopy_t& rcopy, rm_group_wrapper* groupInfo, rm_group_target* target,
    rm_group_vv_map* map, CIMClass& syncClass)
{
    rm_group& group = groupInfo->group;
    Uint16 copyState = 0;
    Uint16 progressStatus = 0;
    Uint16 syncState = 0;
    getVVCopyState(map->rm_status, rcopy, target, &group, copyState, progressStatus, syncState);
    const Uint16 unDiscovered = ZDA_RemoteGroupSynchronizedProvider::isPrimary(groupInfo, target)
        ? UNDISCOVERED_SYNCED_ELEMENT
        : UNDISCOVERED_SYSTEM_ELEMENT;

    CIMInstance instance = ZDA_Common::buildAssocInstance(_assoClassName, SYSTEM_ELEMENT, SYNCED_ELEMENT,
        srcPath, tgtPath, _hostAddr, _hostAddr, _hostAddr, NAMESPACE, syncClass);
    ZDA_Common::setPropertyValue(instance, "UndiscoveredElement", unDiscovered);

    const bool lastSyncUsable = map->rm_last_synctime != 0 && !brokenOff(map->rm_status);
    if (target->rm_mode == RM_TARGET_MODE_SYNC)
    {
        ZDA_Common::setPropertyValue(instance, "Caption", "Synchronous Remote Storage Association");
        ZDA_Common::setPropertyValue(instance, "Mode", MODE_SYNCHRONOUS);
        ZDA_Common::setPropertyValue(instance, "CopyType", COPY_TYPE_SYNC);
        ZDA_Common::setPropertyValue(instance, "DetailedCopyType", DETAILED_COPY_TYPE_SYNC);
        ZDA_Common::setPropertyValue(instance, "CopyMethodology", COPY_METHODOLOGY_SYNC);
        // A synchronous copy only has a last sync time while it is stopped.
        if (target->rm_state == 4 && lastSyncUsable)
            ZDA_Common::setPropertyValue(
                instance, "WhenSynced", ZDA_Common::getCIMDateTime(time_t(map->rm_last_synctime)));
    }
    else if (target->rm_mode == RM_TARGET_MODE_PERIODIC)
    {
        ZDA_Common::setPropertyValue(instance, "Caption", "Periodic Remote Storage Association");
        ZDA_Common::setPropertyValue(instance, "Mode", MODE_ASYNCHRONOUS);
        ZDA_Common::setPropertyValue(instance, "CopyType", COPY_TYPE_ASYNC);
        ZDA_Common::setPropertyValue(instance, "DetailedCopyType", DETAILED_COPY_TYPE_PERIODIC);
        ZDA_Common::setPropertyValue(instance, "CopyMethodology", COPY_METHODOLOGY_PERIODIC);
        ZDA_Common::setPropertyValue(instance, "SyncInterval",
            CIMDateTime(Uint64(target->rm_sync_period) * MICROSECONDS_PER_SECOND, true));
        if (lastSyncUsable)
        {
            const CIMDateTime when = ZDA_Common::getCIMDateTime(time_t(map->rm_last_synctime));
            ZDA_Common::setPropertyValue(instance, "WhenSynced", when);
            if (copyState == COPY_STATE_SYNCHRONIZED)
            {
                ZDA_Common::setPropertyValue(instance, "WhenSynchronized", when);
                ZDA_Common::setPropertyValue(instance, "PercentSynced", Uint16(100));
            }
        }
    }

    ZDA_Common::setPropertyValue(instance, "SyncPolicy", syncPolicy(target));
    ZDA_Common::setPropertyValue(instance, "SyncMaintained", syncMaintained(rcopy, target));
    ZDA_Common::setPropertyValue(instance, "SyncType", SYNC_TYPE_MIRROR);
    ZDA_Common::setPropertyValue(instance, "RequestedCopyState",
        copyState != COPY_STATE_SYNCHRONIZED ? COPY_STATE_SYNCHRONIZED : COPY_STATE_NOT_APPLICABLE);
    ZDA_Common::setPropertyValue(instance, "CopyState", copyState);
    ZDA_Common::setPropertyValue(instance, "ProgressStatus", progressStatus);
    ZDA_Common::setPropertyValue(instance, "SyncState", syncState);
    ZDA_Common::setPropertyValue(instance, "ReplicaType", REPLICA_TYPE_FULL_COPY);
    // Progress is known on the side that sends the data.
    if (syncState == SYNC_STATE_RESYNC_IN_PROGRESS && group.rm_primary != 0)
    {
        const Uint64 length = map->rm_sync_length;
        const Uint16 percent = length == 0 ? Uint16(0) : Uint16(Uint64(map->rm_sync_offset) * 100 / length);
        ZDA_Common::setPropertyValue(instance, "PercentSynced", percent);
    }
    ZDA_Common::setPropertyValue(instance, "RoleReversed", Boolean(group.rm_natural != group.rm_primary));
    return instance;
}

CIMInstance ZDA_RemoteStorageSynchronizedProvider::_buildRemoteVVInstance(
    CIMObjectPath& volPath, rm_group_vv_map* map, String localVV, String& sysName, CIMClass& volClass)
{
    const String deviceID = ZDA_Common::getStringProperty(volPath, "DeviceID");
    const String remoteName(map->rm_remote_name);
    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(volClass);
    ZDA_Common::setPropertyValue(instance, "CreationClassName", "ZDA_StorageVolume");
    ZDA_Common::setPropertyValue(instance, "SystemCreationClassName", "ZDA_StorageSystem");
    ZDA_Common::setPropertyValue(instance, "SystemName", sysName);
    ZDA_Common::setPropertyValue(instance, "DeviceID", deviceID);
    ZDA_Common::setPropertyValue(instance, "ElementName", remoteName);
    ZDA_Common::setPropertyValue(instance, "Caption", remoteName);
    ZDA_Common::setPropertyValue(instance, "Name", deviceID);
    ZDA_Common::setPropertyValue(instance, "NameFormat", Uint16(9));
    ZDA_Common::setPropertyValue(instance, "NameNamespace", Uint16(2));
    ZDA_Common::setPropertyValue(instance, "Description",
        "Remote volume residing in target system " + volPath.getHost() +
            " that is in a replication relationship with local volume " + localVV);
    ZDA_Common::setPropertyValue(instance, "Usage", Uint16(2));
    char vid[16];
    std::snprintf(vid, sizeof vid, "%d", int(map->rm_remote_vid));
    Array<String> identifying;
    identifying.append(vid);
    ZDA_Common::setPropertyValue(instance, "OtherIdentifyingInfo", identifying);
    Array<String> descriptions;
    descriptions.append("Volume System ID");
    ZDA_Common::setPropertyValue(instance, "IdentifyingDescriptions", descriptions);
    instance.setPath(volPath);
    return instance;
}

// ---- the walks ---------------------------------------------------------------------------

Array<CIMInstance> ZDA_RemoteStorageSynchronizedProvider::_getInstances(const OperationContext&,
    const CIMObjectPath& instRef, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    Array<CIMInstance> instances;
    const bool isNoREPolicy = noReplicationEntityPolicy();
    const bool getInstance = !instRef.getClassName().isNull();
    CIMObjectPath inSrcPath;
    CIMObjectPath inTgtPath;
    if (getInstance &&
        (!endReference(instRef, SYSTEM_ELEMENT, inSrcPath) ||
            !endReference(instRef, SYNCED_ELEMENT, inTgtPath)))
        return instances;
    const CIMName srcClass = inSrcPath.getClassName();
    const CIMName tgtClass = inTgtPath.getClassName();

    RCopySnapshot snapshot;
    const api_Status_t status = snapshot.read(API_RCOPY_QUERY_TYPE_ALL);
    if (status.code != 0)
    {
        if (status.code == API_E_SEM_TIMEOUT)
            log_message(2, "\tAccess busy.\n");
        else
            log_message(2, "--> ZDA_src volumeProvider::_buildInstances()  api_getRCopy failed.\n");
        return instances;
    }
    api_rcopy_t& rcopy = snapshot.rcopy;
    CIMClass syncClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, _assoClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);

    for (rm_group_wrapper* group = rcopy.groups; group; group = group->next)
    {
        for (rm_group_vv_wrapper* gvv = group->gvvs; gvv; gvv = gvv->next)
        {
            for (int t = 0; t < group->gtarget_count; t++)
            {
                rm_group_target* gtarget = &group->gtargets[t];
                const String remSysWWNStr = getRemoteSystemWWN(&rcopy, gtarget);
                rm_group_vv_map* map = findVVMap(group, gtarget, gvv);
                if (!map)
                    continue;
                const bool primary = ZDA_RemoteGroupSynchronizedProvider::isPrimary(group, gtarget);
                if (getInstance)
                {
                    // The near end is always a local volume; a far end of
                    // unknown WWN can only be an entity.
                    const CIMName& nearClass = primary ? srcClass : tgtClass;
                    const CIMName& farClass = primary ? tgtClass : srcClass;
                    if (nearClass.equal(ENTITY_CLASS))
                        continue;
                    if (remSysWWNStr.size() == 0 && !farClass.equal(ENTITY_CLASS))
                        continue;
                }
                const String localWWN = wwnText(gvv->gvv.rm_local_wwn_re, gvv->gvv.rm_local_wwn);
                const String remoteWWN = wwnText(map->rm_remote_wwn_re, map->rm_remote_wwn);
                CIMObjectPath nearPath = ZDA_StorageVolumeProvider::createObjectPath(
                    localWWN, _systemName, _hostAddr);
                CIMObjectPath farPath;
                if (remSysWWNStr.size() > 0 && map->rm_wwn_status != 0)
                    farPath = isNoREPolicy ? ZDA_StorageVolumeProvider::createObjectPath(
                                                 remoteWWN, remSysWWNStr, String(gtarget->rm_target))
                                           : ZDA_ReplicationEntityProvider::buildObjectPath(
                                                 _hostAddr, remSysWWNStr, VOLUME_TYPE, remoteWWN);
                else
                    // Without its WWN the far volume is named by the target
                    // and its name there.
                    farPath = ZDA_ReplicationEntityProvider::buildObjectPath(
                        _hostAddr, String(gtarget->rm_target), VOLUME_TYPE, String(map->rm_remote_name));
                CIMObjectPath& src = primary ? nearPath : farPath;
                CIMObjectPath& tgt = primary ? farPath : nearPath;
                if (getInstance &&
                    !(ZDA_Common::matchObjectPath(inSrcPath, src) &&
                        ZDA_Common::matchObjectPath(inTgtPath, tgt)))
                    continue;
                instances.append(_buildAssociationInstance(src, tgt, rcopy, group, gtarget, map, syncClass));
                if (getInstance)
                    break;
            }
        }
    }
    return instances;
}

Array<CIMObjectPath> ZDA_RemoteStorageSynchronizedProvider::_getInstanceNames(const OperationContext& context)
{
    const Array<CIMInstance> instances = _getInstances(
        context, CIMObjectPath(), false, false, CIMPropertyList());
    Array<CIMObjectPath> paths;
    for (Uint32 i = 0; i < instances.size(); i++)
        paths.append(instances[i].getPath());
    return paths;
}

Array<CIMInstance> ZDA_RemoteStorageSynchronizedProvider::_getRelatedInstances(
    const OperationContext& context, const CIMObjectPath& objectName, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    Array<CIMInstance> related;
    if (role.size() > 0 && resultRole.size() > 0 && String::equalNoCase(role, resultRole))
    {
        log_message(2, "Role and resultRole cannot be the same: %s\n", (const char*)role.getCString());
        return related;
    }
    bool searchForTarget = true;
    bool searchForSource = true;
    if (role.size() > 0 || resultRole.size() > 0)
    {
        if (String::equalNoCase(role, SYSTEM_ELEMENT) || String::equalNoCase(resultRole, SYNCED_ELEMENT))
            searchForSource = false;
        else if (String::equalNoCase(resultRole, SYSTEM_ELEMENT) || String::equalNoCase(role, SYNCED_ELEMENT))
            searchForTarget = false;
    }

    const bool isNoREPolicy = noReplicationEntityPolicy();
    const CIMName objectClass = objectName.getClassName();
    const bool fromEntity = objectClass.equal(ENTITY_CLASS);
    api_u64_t vvWWN = NO_WWN;
    api_u64_t vvWWN_re = 0;
    String ID;
    if (objectClass.equal(_volClassName))
    {
        ID = ZDA_Common::getStringProperty(objectName, "DeviceID");
        api_wwnStringToInt((const char*)ID.getCString(), &vvWWN_re, &vvWWN);
    }
    else if (fromEntity)
    {
        String entityType;
        String entityHost;
        ZDA_ReplicationEntityProvider::extractFromInstanceID(
            ZDA_Common::getStringProperty(objectName, "InstanceID"), entityType, ID, entityHost);
        api_wwnStringToInt((const char*)ID.getCString(), &vvWWN_re, &vvWWN);
    }

    RCopySnapshot snapshot;
    if (snapshot.read(API_RCOPY_QUERY_TYPE_ALL).code != 0)
    {
        log_message(2, "api_getRCopy error\n");
        return related;
    }
    api_rcopy_t& rcopy = snapshot.rcopy;
    CIMClass targetClass = ZDA_Common::getStoredCIMClass(_cimom, context, NAMESPACE, _volClassName, false,
        includeQualifiers, includeClassOrigin, propertyList);
    CIMClass entityClass = ZDA_Common::getStoredCIMClass(_cimom, context, NAMESPACE, CIMName(ENTITY_CLASS),
        false, includeQualifiers, includeClassOrigin, propertyList);

    for (rm_group_wrapper* group = rcopy.groups; group; group = group->next)
    {
        for (rm_group_vv_wrapper* gvv = group->gvvs; gvv; gvv = gvv->next)
        {
            const bool objFound = !fromEntity && gvv->gvv.rm_local_wwn == vvWWN &&
                gvv->gvv.rm_local_wwn_re == vvWWN_re;
            for (int t = 0; t < group->gtarget_count; t++)
            {
                rm_group_target* gtarget = &group->gtargets[t];
                rm_group_vv_map* map = findVVMap(group, gtarget, gvv);
                if (!map)
                    continue;
                const String remSysWWNStr = getRemoteSystemWWN(&rcopy, gtarget);
                const bool primary = ZDA_RemoteGroupSynchronizedProvider::isPrimary(group, gtarget);
                if ((primary && !searchForTarget) || (!primary && !searchForSource))
                    continue;
                const bool knownWWN = remSysWWNStr.size() > 0 && map->rm_wwn_status != 0;
                const String wwnStr = wwnText(map->rm_remote_wwn_re, map->rm_remote_wwn);
                if (objFound)
                {
                    if (knownWWN && isNoREPolicy)
                    {
                        CIMObjectPath volPath = ZDA_StorageVolumeProvider::createObjectPath(
                            wwnStr, remSysWWNStr, String(gtarget->rm_target));
                        related.append(_buildRemoteVVInstance(
                            volPath, map, String(gvv->gvv.rm_local_name), _systemName, targetClass));
                    }
                    else if (knownWWN)
                    {
                        related.append(ZDA_ReplicationEntityProvider::buildInstance(
                            _systemName, remSysWWNStr, VOLUME_TYPE, wwnStr, targetClass, entityClass));
                    }
                    else
                    {
                        // Named as the pair names it: by the target and the
                        // far volume's name.
                        related.append(ZDA_ReplicationEntityProvider::buildInstance(_hostAddr,
                            String(gtarget->rm_target), VOLUME_TYPE, String(map->rm_remote_name), targetClass,
                            entityClass));
                    }
                }
                else if (fromEntity)
                {
                    const bool matches = knownWWN
                        ? (map->rm_remote_wwn == vvWWN && map->rm_remote_wwn_re == vvWWN_re)
                        : String::equal(ID, map->rm_remote_name);
                    if (!matches)
                        continue;
                    CIMInstance local = ZDA_StorageVolumeProvider::buildVVInstance(
                        String(gvv->gvv.rm_local_name), _systemName, _hostAddr, targetClass, false);
                    if (!local.isUninitialized())
                        related.append(local);
                }
            }
        }
    }
    return related;
}

Boolean ZDA_RemoteStorageSynchronizedProvider::_invalidParms(const CIMObjectPath& objectName,
    const String& role, const String& resultRole, const CIMName& resultClass, const String& method)
{
    for (const String* r : {&role, &resultRole})
    {
        if (r->size() > 0 && !String::equalNoCase(*r, SYSTEM_ELEMENT) &&
            !String::equalNoCase(*r, SYNCED_ELEMENT))
            return true;
    }
    if (String::equalNoCase(method, "references") || String::equalNoCase(method, "referenceNames"))
        return !resultClass.isNull() &&
            !isOneOf(resultClass, {"CIM_StorageSynchronized", "ZDA_RemoteStorageSynchronized"});
    if (!String::equalNoCase(method, "associators") && !String::equalNoCase(method, "associatorNames"))
        return false;
    if (resultClass.isNull())
        return false;
    if (!isOneOf(resultClass,
            {"ZDA_ReplicationEntity", "CIM_ReplicationEntity", "ZDA_StorageVolume", "CIM_StorageVolume",
                "CIM_StorageExtent", "CIM_LogicalDevice", "CIM_EnabledLogicalElement", "CIM_LogicalElement",
                "CIM_ManagedSystemElement", "CIM_ManagedElement"}))
        return true;
    // Under the policy a volume may sit at either end: no way back to refuse.
    if (noReplicationEntityPolicy())
        return false;
    const CIMName objectClass = objectName.getClassName();
    if (resultClass.equal(objectClass))
        return true;
    if (objectClass.equal(_volClassName))
        return isOneOf(resultClass, {"CIM_StorageVolume", "CIM_StorageExtent", "CIM_LogicalDevice"});
    if (objectClass.equal(ENTITY_CLASS))
        return resultClass.equal("CIM_ReplicationEntity");
    return false;
}

// ---- the operations ----------------------------------------------------------------------

void ZDA_RemoteStorageSynchronizedProvider::associators(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName&, const CIMName& resultClass, const String& role,
    const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    const String method = "associators";
    logAssociationRequest(SOURCE_FILE, "associators", objectName, resultClass, role);
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (_invalidParms(objectName, role, resultRole, resultClass, method))
    {
        logRefusedRequest(SOURCE_FILE, method, resultClass);
        return;
    }
    const Array<CIMInstance> related = _getRelatedInstances(
        context, objectName, role, resultRole, includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    for (Uint32 i = 0; i < related.size(); i++)
        handler.deliver(related[i]);
    handler.complete();
    log_message(4, "<-- ZDA_RemoteStorageSynchronizedProvider::associators()\n");
}

void ZDA_RemoteStorageSynchronizedProvider::associatorNames(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName&, const CIMName& resultClass, const String& role,
    const String& resultRole, ObjectPathResponseHandler& handler)
{
    const String method = "associatorNames";
    logAssociationRequest(SOURCE_FILE, "associatorNames", objectName, resultClass, role);
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (_invalidParms(objectName, role, resultRole, resultClass, method))
    {
        logRefusedRequest(SOURCE_FILE, method, resultClass);
        return;
    }
    const Array<CIMInstance> related = _getRelatedInstances(
        context, objectName, role, resultRole, false, false, CIMPropertyList());
    handler.processing();
    for (Uint32 i = 0; i < related.size(); i++)
        handler.deliver(related[i].getPath());
    handler.complete();
    log_message(4, "<-- ZDA_RemoteStorageSynchronizedProvider::associatorNames()\n");
}

void ZDA_RemoteStorageSynchronizedProvider::references(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    ObjectResponseHandler& handler)
{
    const String method = "references";
    logAssociationRequest(SOURCE_FILE, "references", objectName, resultClass, role);
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (_invalidParms(objectName, role, String::EMPTY, resultClass, method))
    {
        logRefusedRequest(SOURCE_FILE, method, resultClass);
        return;
    }
    const Array<CIMInstance> pairs = ZDA_Common::filterReferenceNames(
        _getInstances(context, CIMObjectPath(), includeQualifiers, includeClassOrigin, propertyList),
        objectName, resultClass, role);
    handler.processing();
    for (Uint32 i = 0; i < pairs.size(); i++)
        handler.deliver(pairs[i]);
    handler.complete();
    log_message(4, "<-- ZDA_RemoteStorageSynchronizedProvider::references()\n");
}

void ZDA_RemoteStorageSynchronizedProvider::referenceNames(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    ObjectPathResponseHandler& handler)
{
    const String method = "referenceNames";
    logAssociationRequest(SOURCE_FILE, "referenceNames", objectName, resultClass, role);
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (_invalidParms(objectName, role, String::EMPTY, resultClass, method))
    {
        logRefusedRequest(SOURCE_FILE, method, resultClass);
        return;
    }
    const Array<CIMInstance> pairs = ZDA_Common::filterReferenceNames(
        _getInstances(context, CIMObjectPath(), false, false, CIMPropertyList()), objectName, resultClass,
        role);
    handler.processing();
    for (Uint32 i = 0; i < pairs.size(); i++)
        handler.deliver(pairs[i].getPath());
    handler.complete();
    log_message(4, "<-- ZDA_RemoteStorageSynchronizedProvider::referenceNames()\n");
}

void ZDA_RemoteStorageSynchronizedProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_RemoteStorageSynchronizedProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    const bool entityReference = instanceReference.getClassName().equal(ENTITY_CLASS);
    if (!entityReference)
        requireKeyCount(instanceReference, 2, SOURCE_FILE, ClassName, " Expect two keys.");
    Array<CIMInstance> found;
    if (!entityReference)
        found = _getInstances(
            context, instanceReference, includeQualifiers, includeClassOrigin, propertyList);
    if (found.size() == 0)
        throw CIMObjectNotFoundException(
            nameText(instanceReference.getClassName()) + " CIM Object not found.");
    handler.processing();
    handler.deliver(found[0]);
    handler.complete();
    log_message(4, "<-- ZDA_RemoteStorageSynchronizedProvider::getInstance()\n");
}

void ZDA_RemoteStorageSynchronizedProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_RemoteStorageSynchronizedProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (classReference.getClassName().equal(ENTITY_CLASS))
        return;
    const Array<CIMInstance> pairs = _getInstances(
        context, CIMObjectPath(), includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    for (Uint32 i = 0; i < pairs.size(); i++)
        handler.deliver(pairs[i]);
    handler.complete();
    log_message(4, "<-- ZDA_RemoteStorageSynchronizedProvider::enumerateInstances()\n");
}

void ZDA_RemoteStorageSynchronizedProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_RemoteStorageSynchronizedProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    const Array<CIMObjectPath> paths = _getInstanceNames(context);
    handler.processing();
    for (Uint32 i = 0; i < paths.size(); i++)
        handler.deliver(paths[i]);
    handler.complete();
    log_message(4, "<-- ZDA_RemoteStorageSynchronizedProvider::enumerateInstanceNames()\n");
}

void ZDA_RemoteStorageSynchronizedProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw notSupported(ClassName, "modifyInstance");
}

void ZDA_RemoteStorageSynchronizedProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw notSupported(ClassName, "createInstance");
}

void ZDA_RemoteStorageSynchronizedProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw notSupported(ClassName, "deleteInstance");
}

PEGASUS_NAMESPACE_END
