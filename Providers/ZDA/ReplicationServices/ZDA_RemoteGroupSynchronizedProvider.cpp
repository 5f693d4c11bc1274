// Remote copies of groups: each remote copy group with its counterpart on
// every target, and with the local vvsets of its snapshots.
#include "ZDA_RemoteGroupSynchronizedProvider.h"

#include <string>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_AssociationFrame.h"
#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_RemoteReplicationGroupProvider.h"
#include "ZDA_RemoteStorageSynchronizedProvider.h"
#include "ZDA_ReplicationEntityProvider.h"
#include "ZDA_ReplicationGroupProvider.h"
#include "ZDA_StorageSynchronizedProvider.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_RemoteGroupSynchronized";
const char SOURCE_FILE[] = "ZDA_RemoteGroupSynchronizedProvider";
const char SYSTEM_ELEMENT[] = "SystemElement";
const char SYNCED_ELEMENT[] = "SyncedElement";
const char GROUP_TYPE[] = "RG";

const Uint16 COPY_STATE_INITIALIZED = 2;
const Uint16 COPY_STATE_SYNCHRONIZED = 4;
const Uint16 COPY_STATE_PREPARED = 11;
const Uint16 COPY_STATE_SKEWED = 13;
const Uint16 MIXED = 14;
const Uint16 NOT_APPLICABLE = 15;
const Uint16 PROGRESS_COMPLETED = 2;
const Uint16 PROGRESS_DORMANT = 3;
const Uint16 PROGRESS_PREPARING = 5;
const Uint16 PROGRESS_REQUIRES_ACTIVATE = 19;
const Uint16 MODE_SYNCHRONOUS = 2;
const Uint16 MODE_ASYNCHRONOUS = 3;
const Uint32 DETAILED_COPY_TYPE_SYNC = 2;
const Uint32 DETAILED_COPY_TYPE_PERIODIC = 4;
const Uint16 SYNC_TYPE_MIRROR = 6;
const Uint16 SYNC_TYPE_SNAPSHOT = 7;
// A group's consistency as the array keeps it: every group is one
// consistency group whose volumes move together.
const Uint16 CONSISTENCY_TYPE = 2;
const Uint16 CONSISTENCY_STATE = 3;
const Uint16 CONSISTENCY_STATUS = 2;
const Uint64 MICROSECONDS_PER_SECOND = 1000000;
// The group number of a far group, which this array does not know.
const Uint16 UNKNOWN_GROUP_ID = 65535;
// The longest value the volume filter takes.
const size_t FILTER_VALUE_LIMIT = 255;

// Requested copy state: Synchronized until the pair is, then Not Applicable.
Uint16 requestedCopyState(Uint16 copyState)
{
    return copyState != COPY_STATE_SYNCHRONIZED ? COPY_STATE_SYNCHRONIZED : NOT_APPLICABLE;
}

void setConsistency(CIMInstance& instance)
{
    ZDA_Common::setPropertyValue(instance, "ConsistencyEnabled", Boolean(true));
    ZDA_Common::setPropertyValue(instance, "ConsistencyType", CONSISTENCY_TYPE);
    ZDA_Common::setPropertyValue(instance, "ConsistencyState", CONSISTENCY_STATE);
    ZDA_Common::setPropertyValue(instance, "ConsistencyStatus", CONSISTENCY_STATUS);
}

// The group name an end's InstanceID holds, and for an entity its host.
void endGroup(const CIMObjectPath& end, String& group, String& system)
{
    const String instanceID = ZDA_Common::getStringProperty(end, "InstanceID");
    if (end.getClassName().equal("ZDA_ReplicationEntity"))
    {
        String entityType;
        ZDA_ReplicationEntityProvider::extractFromInstanceID(instanceID, entityType, group, system);
    }
    else
    {
        group = ZDA_Common::extractFromInstanceID(instanceID);
    }
}

// The two ends of the mirror pair of `groupInfo` and `target`, seen from
// this array: the source first.
struct MirrorEnds
{
    String src;
    String tgt;
    CIMObjectPath sysElement;
    CIMObjectPath syncedElement;
};

MirrorEnds mirrorEnds(const api_rcopy_t& rcopy, rm_group_wrapper* groupInfo, rm_group_target* target,
    const String& hostAddr, bool isNoREPolicy)
{
    const String local(groupInfo->group.rm_hdr.rm_name);
    const String far(target->rm_remote_group);
    const String farAddr = ZDA_Common::RCTargetToSysname(rcopy, String(target->rm_target));
    const CIMObjectPath localPath = ZDA_RemoteReplicationGroupProvider::buildObjectPath(hostAddr, local);
    const CIMObjectPath farPath = isNoREPolicy
        ? ZDA_RemoteReplicationGroupProvider::buildObjectPath(farAddr, far)
        : ZDA_ReplicationEntityProvider::buildObjectPath(hostAddr, farAddr, GROUP_TYPE, far);
    if (ZDA_RemoteGroupSynchronizedProvider::isPrimary(groupInfo, target))
        return {local, far, localPath, farPath};
    return {far, local, farPath, localPath};
}

bool isSnapshotOf(const String& group, rm_group_wrapper* groupInfo)
{
    return String::equal(group, groupInfo->group.rm_hdr.rm_name);
}

int volumeCount(rm_group_wrapper* groupInfo)
{
    int count = 0;
    for (rm_group_vv_wrapper* gvv = groupInfo->gvvs; gvv; gvv = gvv->next)
        count++;
    return count;
}

// Calls `visit(copyState, progressStatus)` for each volume of the group
// that has a map for `target`, in the group's order, while it returns true.
template <class Visit>
void forEachVolumeState(
    api_rcopy_t& rcopy, rm_group_wrapper* groupInfo, rm_group_target* target, Visit&& visit)
{
    for (rm_group_vv_wrapper* gvv = groupInfo->gvvs; gvv; gvv = gvv->next)
    {
        rm_group_vv_map* map = ZDA_RemoteStorageSynchronizedProvider::findVVMap(groupInfo, target, gvv);
        if (!map)
            continue;
        Uint16 vvCopy = 0;
        Uint16 vvProgress = 0;
        Uint16 vvSync = 0;
        ZDA_RemoteStorageSynchronizedProvider::getVVCopyState(
            map->rm_status, rcopy, target, &groupInfo->group, vvCopy, vvProgress, vvSync);
        if (!visit(vvCopy, vvProgress))
            return;
    }
}

}  // namespace

ZDA_RemoteGroupSynchronizedProvider::ZDA_RemoteGroupSynchronizedProvider()
    : _assoClassName(ClassName), _remoteReplicaGroupClassName("ZDA_RemoteReplicationGroup"),
      _replicaGroupClassName("ZDA_ReplicationGroup"), _entityClassName("ZDA_ReplicationEntity")
{}

ZDA_RemoteGroupSynchronizedProvider::~ZDA_RemoteGroupSynchronizedProvider() = default;

void ZDA_RemoteGroupSynchronizedProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _hostAddr = ZDA_Common::getSystemHostName(cimom);
}

void ZDA_RemoteGroupSynchronizedProvider::terminate()
{
    delete this;
}

// ---- state of a group --------------------------------------------------------------------

Boolean ZDA_RemoteGroupSynchronizedProvider::isPrimary(rm_group_wrapper* groupInfo, rm_group_target* target)
{
    if (target->rm_options & RM_GTARGET_OPT_PRIMARY_BY_MODE)
    {
        for (int i = 0; i < groupInfo->gtarget_count; i++)
        {
            if (groupInfo->gtargets[i].rm_mode == RM_TARGET_MODE_SYNC)
                return true;
        }
        return false;
    }
    return groupInfo->group.rm_natural != 0;
}

void ZDA_RemoteGroupSynchronizedProvider::_getCopyState(api_rcopy_t& rcopy, rm_group_wrapper* groupInfo,
    rm_group_target* target, Uint16& copyState, Uint16& progressStatus)
{
    if (target->rm_state == 0)
    {
        // Never started: ready to start once it has volumes.
        copyState = groupInfo->gvvs ? COPY_STATE_PREPARED : COPY_STATE_INITIALIZED;
        progressStatus = groupInfo->gvvs ? PROGRESS_REQUIRES_ACTIVATE : PROGRESS_PREPARING;
        return;
    }
    Uint16 previousCopy = 0;
    Uint16 previousProgress = 0;
    copyState = COPY_STATE_SYNCHRONIZED;
    progressStatus = PROGRESS_COMPLETED;
    forEachVolumeState(rcopy, groupInfo, target, [&](Uint16 vvCopy, Uint16 vvProgress) {
        if (previousCopy != 0 && previousCopy != vvCopy)
            previousCopy = copyState = MIXED;
        if (previousProgress != 0 && previousProgress != vvProgress)
            previousProgress = progressStatus = MIXED;
        if (copyState != MIXED)
            previousCopy = copyState = vvCopy;
        if (progressStatus != MIXED)
            previousProgress = progressStatus = vvProgress;
        return !(copyState == MIXED && progressStatus == MIXED);
    });
}

Uint16 ZDA_RemoteGroupSynchronizedProvider::_getPercentSynced(
    api_rcopy_t& rcopy, rm_group_wrapper* groupInfo, rm_group_target* target)
{
    Uint32 volumes = 0;
    Uint32 synced = 0;
    forEachVolumeState(rcopy, groupInfo, target, [&](Uint16 vvCopy, Uint16) {
        volumes++;
        if (vvCopy == COPY_STATE_SYNCHRONIZED)
            synced++;
        return true;
    });
    return volumes == 0 ? Uint16(0) : Uint16(synced * 100 / volumes);
}

int ZDA_RemoteGroupSynchronizedProvider::getDRState(
    rm_dr_state_t dr_state, Uint8 target_rm_state, Uint16& copyState, Uint16& progressStatus)
{
    switch (dr_state)
    {
    case RM_DR_FAILOVER_IN_PROGRESS: copyState = 5, progressStatus = 11; break;
    case RM_DR_FAILOVER_DONE:
    case RM_DR_RECOVER_DONE:
    case RM_DR_RECOVER_FAIL:
    case RM_DR_RESTORE_FAIL: copyState = 10, progressStatus = 2; break;
    case RM_DR_FAILOVER_FAIL: copyState = 5, progressStatus = 2; break;
    case RM_DR_RECOVER_IN_PROGRESS: copyState = 3, progressStatus = 8; break;
    case RM_DR_RESTORE_IN_PROGRESS: copyState = 10, progressStatus = 12; break;
    case RM_DR_RESTORE_DONE:
    case RM_DR_REVERSE_CURRENT:
    case RM_DR_REVERSE_NATURAL:
    case RM_DR_REVERSE:
    case RM_DR_REVERSE_FAIL: copyState = 4, progressStatus = 2; break;
    case RM_DR_REVERSE_CURRENT_IN_PROGRESS:
    case RM_DR_REVERSE_NATURAL_IN_PROGRESS:
    case RM_DR_REVERSE_IN_PROGRESS:
    case RM_DR_IN_PROGRESS: copyState = 3, progressStatus = 6; break;
    default:
        // No recovery, or one this mapping does not know.
        copyState = NOT_APPLICABLE, progressStatus = NOT_APPLICABLE;
        return 0;
    }
    if (target_rm_state == 4)
        progressStatus = PROGRESS_DORMANT;
    return 0;
}

int ZDA_RemoteGroupSynchronizedProvider::_getVVSetMembersInfo(api_name_t* vvNames, int memberCount,
    Uint16& copyState, Uint16& progressStatus, Uint16& percentSynced, time_t& whenSynced)
{
    copyState = COPY_STATE_INITIALIZED;
    progressStatus = PROGRESS_PREPARING;
    percentSynced = 0;
    whenSynced = 0;
    if (memberCount <= 0 || vvNames == nullptr)
    {
        log_message(3, "Empty volume list\n");
        return 5;
    }
    std::string joined;
    joined.reserve(size_t(memberCount) * (sizeof(api_name_t) + 1));
    for (int i = 0; i < memberCount; i++)
    {
        if (i > 0)
            joined += '|';
        joined += vvNames[i].name;
    }

    int seenInLastPiece = 0;
    for (const std::string& piece : namePieces(joined, FILTER_VALUE_LIMIT))
    {
        VolumeQuery volumes;
        if (volumes.byNames(piece, memberCount + 1) != 0)
            return 4;
        // Each piece starts afresh: of several, the last one decides.
        int synced = 0;
        seenInLastPiece = volumes.size();
        for (int v = 0; v < volumes.size(); v++)
        {
            api_VVObj_t* vv = &volumes[v];
            Uint16 syncState = 0;
            Uint16 vvCopy = 0;
            Uint16 vvProgress = 0;
            ZDA_StorageSynchronizedProvider::getSyncState(vv, vv, syncState, vvCopy, vvProgress);
            if (vvCopy == COPY_STATE_SYNCHRONIZED)
                synced++;
            if (v == 0)
            {
                copyState = vvCopy;
                progressStatus = vvProgress;
                whenSynced = vv->curWhenSynced;
                continue;
            }
            if (vv->curWhenSynced < whenSynced)
                whenSynced = vv->curWhenSynced;
            if (vvCopy != copyState)
                copyState = MIXED;
            if (vvProgress != progressStatus)
                progressStatus = MIXED;
        }
        percentSynced = volumes.size() == 0 ? Uint16(0) : Uint16(synced * 100 / volumes.size());
    }
    return seenInLastPiece == 0 ? 4 : 0;
}

// ---- building the pairs ----------------------------------------------------------------

CIMInstance ZDA_RemoteGroupSynchronizedProvider::_buildAssociationInstance(
    api_rcopy_t& rcopy, rm_group_wrapper* groupInfo, rm_group_target* target, CIMClass& syncClass)
{
    Uint16 copyState = 0;
    Uint16 progressStatus = 0;
    _getCopyState(rcopy, groupInfo, target, copyState, progressStatus);
    const MirrorEnds ends = mirrorEnds(rcopy, groupInfo, target, _hostAddr, noReplicationEntityPolicy());
    CIMInstance instance = ZDA_Common::buildAssocInstance(_assoClassName, SYSTEM_ELEMENT, SYNCED_ELEMENT,
        ends.sysElement, ends.syncedElement, String(), String(), _hostAddr, NAMESPACE, syncClass);

    const Boolean maintained = ZDA_RemoteStorageSynchronizedProvider::syncMaintained(rcopy, target);
    ZDA_Common::setPropertyValue(instance, "SyncMaintained", maintained);
    if (target->rm_mode == RM_TARGET_MODE_SYNC)
    {
        ZDA_Common::setPropertyValue(instance, "Caption", "Synchronous Remote Replication Group Association");
        ZDA_Common::setPropertyValue(instance, "Mode", MODE_SYNCHRONOUS);
        ZDA_Common::setPropertyValue(instance, "DetailedCopyType", DETAILED_COPY_TYPE_SYNC);
        // A synchronous group has a last sync time only once it fell behind.
        if (!maintained && target->rm_last_synctime != 0)
            ZDA_Common::setPropertyValue(
                instance, "WhenSynced", ZDA_Common::getCIMDateTime(time_t(target->rm_last_synctime)));
    }
    else if (target->rm_mode == RM_TARGET_MODE_PERIODIC)
    {
        ZDA_Common::setPropertyValue(instance, "Caption", "Periodic Remote Replication Group Association");
        ZDA_Common::setPropertyValue(instance, "Mode", MODE_ASYNCHRONOUS);
        ZDA_Common::setPropertyValue(instance, "DetailedCopyType", DETAILED_COPY_TYPE_PERIODIC);
        ZDA_Common::setPropertyValue(instance, "SyncInterval",
            CIMDateTime(Uint64(target->rm_sync_period) * MICROSECONDS_PER_SECOND, true));
        if (target->rm_last_synctime != 0)
            ZDA_Common::setPropertyValue(
                instance, "WhenSynced", ZDA_Common::getCIMDateTime(time_t(target->rm_last_synctime)));
    }
    ZDA_Common::setPropertyValue(
        instance, "SyncPolicy", ZDA_RemoteStorageSynchronizedProvider::syncPolicy(target));
    ZDA_Common::setPropertyValue(instance, "RequestedCopyState", requestedCopyState(copyState));
    ZDA_Common::setPropertyValue(instance, "SyncType", SYNC_TYPE_MIRROR);
    ZDA_Common::setPropertyValue(instance, "CopyState", copyState);
    ZDA_Common::setPropertyValue(instance, "ProgressStatus", progressStatus);
    ZDA_Common::setPropertyValue(instance, "PercentSynced", _getPercentSynced(rcopy, groupInfo, target));
    ZDA_Common::setPropertyValue(instance, "RelationshipName", ends.src + "->" + ends.tgt);
    setConsistency(instance);
    ZDA_Common::setPropertyValue(
        instance, "RoleReversed", Boolean(groupInfo->group.rm_natural != groupInfo->group.rm_primary));
    return instance;
}

CIMInstance ZDA_RemoteGroupSynchronizedProvider::_buildAssociationInstance(
    rm_group_wrapper* groupInfo, api_set_t* syncSet, CIMClass& syncClass)
{
    if (!groupInfo || !syncSet)
        return CIMInstance();
    Uint16 copyState = 0;
    Uint16 progressStatus = 0;
    Uint16 percentSynced = 0;
    time_t whenSynced = 0;
    _getVVSetMembersInfo(
        syncSet->members, syncSet->memberCount, copyState, progressStatus, percentSynced, whenSynced);
    // Snapshots of only some of the group's volumes do not make a
    // consistent image of the group.
    if (volumeCount(groupInfo) != syncSet->memberCount)
    {
        copyState = COPY_STATE_SKEWED;
        progressStatus = NOT_APPLICABLE;
    }
    const String src(groupInfo->group.rm_hdr.rm_name);
    const String tgt(syncSet->name);
    const CIMObjectPath sysElement = ZDA_RemoteReplicationGroupProvider::buildObjectPath(_hostAddr, src);
    const CIMObjectPath syncedElement = ZDA_ReplicationGroupProvider::buildObjectPath(_hostAddr, tgt);
    CIMInstance instance = ZDA_Common::buildAssocInstance(_assoClassName, SYSTEM_ELEMENT, SYNCED_ELEMENT,
        sysElement, syncedElement, String(), String(), _hostAddr, NAMESPACE, syncClass);
    ZDA_Common::setPropertyValue(instance, "Caption", "Snapshot Remote Replication Group Association");
    ZDA_Common::setPropertyValue(instance, "Mode", MODE_SYNCHRONOUS);
    ZDA_Common::setPropertyValue(instance, "DetailedCopyType", DETAILED_COPY_TYPE_SYNC);
    ZDA_Common::setPropertyValue(instance, "RequestedCopyState", requestedCopyState(copyState));
    if (whenSynced != 0)
        ZDA_Common::setPropertyValue(instance, "WhenSynced", ZDA_Common::getCIMDateTime(whenSynced));
    ZDA_Common::setPropertyValue(instance, "SyncType", SYNC_TYPE_SNAPSHOT);
    ZDA_Common::setPropertyValue(instance, "CopyState", copyState);
    ZDA_Common::setPropertyValue(instance, "ProgressStatus", progressStatus);
    ZDA_Common::setPropertyValue(instance, "PercentSynced", percentSynced);
    ZDA_Common::setPropertyValue(instance, "SyncMaintained", Boolean(true));
    ZDA_Common::setPropertyValue(instance, "RelationshipName", src + "->" + tgt);
    setConsistency(instance);
    return instance;
}

Array<CIMObjectPath> ZDA_RemoteGroupSynchronizedProvider::createObjectPaths(
    String groupNameIn, String hostAddr, Boolean isNoREPolicy)
{
    Array<CIMObjectPath> paths;
    RCopySnapshot snapshot;
    if (snapshot.read(API_RCOPY_QUERY_TYPE_ALL).code != 0)
    {
        log_message(2, "api_getRCopy error\n");
        return paths;
    }
    for (rm_group_wrapper* group = snapshot.rcopy.groups; group; group = group->next)
    {
        if (!isSnapshotOf(groupNameIn, group))
            continue;
        for (int t = 0; t < group->gtarget_count; t++)
        {
            const MirrorEnds ends = mirrorEnds(
                snapshot.rcopy, group, &group->gtargets[t], hostAddr, isNoREPolicy);
            paths.append(ZDA_Common::buildAssocPath(ClassName, SYSTEM_ELEMENT, SYNCED_ELEMENT,
                ends.sysElement, ends.syncedElement, String(), String(), hostAddr, NAMESPACE));
        }
    }
    return paths;
}

// ---- the engine ----------------------------------------------------------------------------

void ZDA_RemoteGroupSynchronizedProvider::_deliverRelatedInstances(const CIMObjectPath& objectName,
    const OperationContext& context, const String& role, const String& resultRole, const CIMName& resultClass,
    cim_method_e method, cim_handler_u handler)
{
    _deliverRelatedInstances(
        objectName, context, role, resultRole, resultClass, false, false, CIMPropertyList(), method, handler);
}

void ZDA_RemoteGroupSynchronizedProvider::_deliverRelatedInstances(const CIMObjectPath& objectName,
    const OperationContext&, const String& role, const String& resultRole, const CIMName& resultClass,
    const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    cim_method_e method, cim_handler_u handler)
{
    const bool isNoREPolicy = noReplicationEntityPolicy();
    bool searchForSource = true;
    bool searchForTarget = true;
    if (role.size() > 0 || resultRole.size() > 0)
    {
        searchForSource = false;
        searchForTarget = false;
        if (String::equalNoCase(role, SYSTEM_ELEMENT) || String::equalNoCase(resultRole, SYNCED_ELEMENT))
            searchForTarget = true;
        else if (String::equalNoCase(resultRole, SYSTEM_ELEMENT) || String::equalNoCase(role, SYNCED_ELEMENT))
            searchForSource = true;
    }

    const CIMName objectClass = objectName.getClassName();
    bool isEntityGetInstance = false;
    bool isSnapGetInstance = false;
    String srcGroup, srcSystem, tgtGroup, tgtSystem;
    String localGroupName, localHostName;
    if (objectClass.equal(_assoClassName))
    {
        CIMObjectPath srcPath;
        CIMObjectPath tgtPath;
        if (!endReference(objectName, SYSTEM_ELEMENT, srcPath))
            return;
        endGroup(srcPath, srcGroup, srcSystem);
        if (!endReference(objectName, SYNCED_ELEMENT, tgtPath))
            return;
        endGroup(tgtPath, tgtGroup, tgtSystem);
        isSnapGetInstance = tgtPath.getClassName().equal(_replicaGroupClassName);
        isEntityGetInstance = !isSnapGetInstance;
    }
    else if (objectClass.equal(_remoteReplicaGroupClassName))
    {
        localGroupName = ZDA_Common::extractFromInstanceID(
            ZDA_Common::getStringProperty(objectName, "InstanceID"));
        // Under the policy a far group is a remote group too, told apart by
        // its host.
        if (isNoREPolicy)
            localHostName = _hostAddr;
    }
    else if (objectClass.equal(_replicaGroupClassName))
    {
        localGroupName = ZDA_Common::extractFromInstanceID(
            ZDA_Common::getStringProperty(objectName, "InstanceID"));
        localHostName = _hostAddr;
    }
    else if (objectClass.equal(_entityClassName))
    {
        String entityType;
        ZDA_ReplicationEntityProvider::extractFromInstanceID(
            ZDA_Common::getStringProperty(objectName, "InstanceID"), entityType, localGroupName,
            localHostName);
    }
    else if (!objectClass.isNull())
    {
        return;
    }
    const bool navigating = !objectClass.isNull() && !objectClass.equal(_assoClassName);
    const bool fromRemoteGroup = objectClass.equal(_remoteReplicaGroupClassName);
    const bool fromSnapshotSet = objectClass.equal(_replicaGroupClassName);
    const bool fromEntity = objectClass.equal(_entityClassName);

    CIMClass assoClass = moduleClass(
        _cimom, _assoClassName, includeQualifiers, includeClassOrigin, propertyList);
    CIMClass replicaGroupClass = moduleClass(
        _cimom, _replicaGroupClassName, includeQualifiers, includeClassOrigin, propertyList);
    CIMClass remoteReplicaGroupClass = moduleClass(
        _cimom, _remoteReplicaGroupClassName, includeQualifiers, includeClassOrigin, propertyList);
    CIMClass entityClass = moduleClass(
        _cimom, _entityClassName, includeQualifiers, includeClassOrigin, propertyList);

    ZDA_Common::handleProcessing(handler, method);

    RCopySnapshot snapshot;
    const api_Status_t status = snapshot.read(API_RCOPY_QUERY_TYPE_ALL);
    if (status.code != 0)
    {
        log_message(2,
            "ZDA_remoteGroupSynchronizedProvider::_deliverRelatedInstances():"
            "api_getRCopy error (%d): %s\n",
            status.code, (const char*)statusText(status).getCString());
        return;
    }
    api_rcopy_t& rcopy = snapshot.rcopy;
    const bool relatedOnly = method == CIM_ASSOCIATORS || method == CIM_ASSOCIATOR_NAMES;
    bool found = false;

    // The mirror pairs.
    bool mirrorDone = isSnapGetInstance || fromSnapshotSet;
    for (rm_group_wrapper* group = rcopy.groups; group && !mirrorDone; group = group->next)
    {
        const String groupName(group->group.rm_hdr.rm_name);
        for (int t = 0; t < group->gtarget_count; t++)
        {
            rm_group_target* target = &group->gtargets[t];
            const bool primary = isPrimary(group, target);
            const String farGroup(target->rm_remote_group);
            const String& src = primary ? groupName : farGroup;
            const String& tgt = primary ? farGroup : groupName;
            if (isEntityGetInstance && !(src == srcGroup && tgt == tgtGroup))
                continue;
            // Far groups on two targets may share a name: the far end's
            // host, when the reference names one, tells them apart.
            const String& farSystem = primary ? tgtSystem : srcSystem;
            if (isEntityGetInstance && farSystem.size() > 0 &&
                farSystem != ZDA_Common::RCTargetToSysname(rcopy, String(target->rm_target)))
                continue;
            if ((fromRemoteGroup || fromEntity) &&
                ((localGroupName == src && !searchForTarget) || (localGroupName == tgt && !searchForSource)))
                continue;
            try
            {
                CIMInstance instance;
                if (navigating && localGroupName == groupName)
                {
                    const String hostName = ZDA_Common::RCTargetToSysname(rcopy, String(target->rm_target));
                    // The object named is the far group of the same name.
                    if (localHostName.size() > 0 && localHostName == hostName)
                        continue;
                    if (isNoREPolicy)
                        instance = ZDA_RemoteReplicationGroupProvider::buildInstance(
                            farGroup, UNKNOWN_GROUP_ID, remoteReplicaGroupClass, hostName);
                    else if (isOneOf(resultClass,
                                 {"ZDA_RemoteReplicationGroup", "CIM_ReplicationGroup",
                                     "CIM_SystemSpecificCollection", "CIM_Collection"}))
                        continue;
                    else
                        instance = ZDA_ReplicationEntityProvider::buildInstance(
                            _hostAddr, hostName, GROUP_TYPE, farGroup, remoteReplicaGroupClass, entityClass);
                }
                else if (navigating && localGroupName == farGroup)
                {
                    if (localHostName.size() > 0 && localHostName == _hostAddr)
                        continue;
                    instance = ZDA_RemoteReplicationGroupProvider::buildInstance(
                        &group->group, remoteReplicaGroupClass, _hostAddr);
                }
                else if (navigating)
                {
                    continue;
                }
                found = true;
                if (!relatedOnly)
                    instance = _buildAssociationInstance(rcopy, group, target, assoClass);
                if (!instance.isUninitialized())
                    ZDA_Common::handleDeliver(handler, method, instance);
            }
            catch (...)
            {
                log_message(2,
                    "exception in ZDA_RemoteGroupSynchronizedProvider::"
                    "_deliverRelatedInstancescheck rcopy\n");
            }
            if (isEntityGetInstance)
                break;
        }
        if (isEntityGetInstance && found)
            mirrorDone = true;
    }

    // The snapshot pairs, unless the result can only be a far element.
    const bool isREClassResult = isOneOf(resultClass,
        {"ZDA_ReplicationEntity", "CIM_ReplicationEntity", "CIM_EnabledLogicalElement", "CIM_LogicalElement",
            "CIM_ManagedSystemElement"});
    const bool snapshotsWanted = !isREClassResult && !isEntityGetInstance && !fromEntity;
    bool snapshotDone = !snapshotsWanted;
    for (rm_group_wrapper* group = rcopy.groups; group && !snapshotDone; group = group->next)
    {
        const String groupName(group->group.rm_hdr.rm_name);
        if (isSnapGetInstance && groupName != srcGroup)
            continue;
        if (fromRemoteGroup && groupName != localGroupName)
            continue;
        VVSetList sets;
        const api_Status_t setStatus = sets.readChildrenOf(group->group.rm_hdr.rm_name);
        if (setStatus.code != 0)
        {
            log_message(2,
                "ZDA_remoteGroupSynchronizedProvider::_deliverRelatedInstances():"
                "api_getRCopy error (%d): %s\n",
                setStatus.code, (const char*)statusText(setStatus).getCString());
            break;
        }
        for (Uint32 s = 0; s < sets.size(); s++)
        {
            api_set_t& set = sets[s];
            const String setName(set.name);
            if (isSnapGetInstance && !(groupName == srcGroup && setName == tgtGroup))
                continue;
            if ((fromRemoteGroup || fromSnapshotSet) &&
                ((localGroupName == groupName && !searchForTarget) ||
                    (localGroupName == setName && !searchForSource)))
                continue;
            try
            {
                CIMInstance instance;
                if (fromRemoteGroup)
                {
                    instance = ZDA_ReplicationGroupProvider::buildInstance(
                        &set, replicaGroupClass, _hostAddr);
                }
                else if (fromSnapshotSet)
                {
                    if (localGroupName != setName)
                        continue;
                    instance = ZDA_RemoteReplicationGroupProvider::buildInstance(
                        &group->group, remoteReplicaGroupClass, _hostAddr);
                }
                found = true;
                if (!relatedOnly)
                    instance = _buildAssociationInstance(group, &set, assoClass);
                if (!instance.isUninitialized())
                    ZDA_Common::handleDeliver(handler, method, instance);
            }
            catch (...)
            {
                log_message(2,
                    "exception in ZDA_RemoteGroupSynchronizedProvider::"
                    "_deliverRelatedInstancescheck vvsets\n");
            }
            if (isSnapGetInstance && found)
            {
                snapshotDone = true;
                break;
            }
        }
    }

    if ((isEntityGetInstance || isSnapGetInstance) && !found)
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    ZDA_Common::handleComplete(handler, method);
}

Boolean ZDA_RemoteGroupSynchronizedProvider::_invalidParms(const CIMObjectPath& objectName,
    const String& role, const String& resultRole, const CIMName& resultClass, const String& method)
{
    for (const String* r : {&role, &resultRole})
    {
        if (r->size() > 0 && !String::equalNoCase(*r, SYSTEM_ELEMENT) &&
            !String::equalNoCase(*r, SYNCED_ELEMENT))
            return true;
    }
    if (resultClass.isNull())
        return false;
    if (String::equalNoCase(method, "references") || String::equalNoCase(method, "referenceNames"))
        return !isOneOf(resultClass, {"CIM_GroupSynchronized", "ZDA_RemoteGroupSynchronized"});
    if (!String::equalNoCase(method, "associators") && !String::equalNoCase(method, "associatorNames"))
        return false;
    if (!isOneOf(resultClass,
            {"ZDA_RemoteReplicationGroup", "ZDA_ReplicationGroup", "CIM_ReplicationGroup",
                "CIM_SystemSpecificCollection", "CIM_Collection", "CIM_ManagedSystemElement",
                "CIM_ManagedElement", "ZDA_ReplicationEntity", "CIM_ReplicationEntity",
                "CIM_EnabledLogicalElement", "CIM_LogicalElement"}))
        return true;
    // Under the policy a remote group may sit at either end.
    if (noReplicationEntityPolicy())
        return false;
    const CIMName objectClass = objectName.getClassName();
    return resultClass.equal(objectClass) ||
        (objectClass.equal(_remoteReplicaGroupClassName) &&
            resultClass.equal("ZDA_RemoteReplicationGroup")) ||
        (objectClass.equal(_replicaGroupClassName) && resultClass.equal("ZDA_ReplicationGroup")) ||
        (objectClass.equal(_entityClassName) &&
            isOneOf(resultClass,
                {"ZDA_ReplicationEntity", "CIM_ReplicationEntity", "CIM_EnabledLogicalElement",
                    "CIM_LogicalElement"}));
}

// ---- the operations ----------------------------------------------------------------------

void ZDA_RemoteGroupSynchronizedProvider::associators(const OperationContext& context,
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
    _deliverRelatedInstances(objectName, context, role, resultRole, resultClass, includeQualifiers,
        includeClassOrigin, propertyList, CIM_ASSOCIATORS, handlerOf(handler));
    log_message(4, "<-- ZDA_RemoteGroupSynchronizedProvider::associators()\n");
}

void ZDA_RemoteGroupSynchronizedProvider::associatorNames(const OperationContext& context,
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
    _deliverRelatedInstances(
        objectName, context, role, resultRole, resultClass, CIM_ASSOCIATOR_NAMES, handlerOf(handler));
    log_message(4, "<-- ZDA_RemoteGroupSynchronizedProvider::associatorNames()\n");
}

void ZDA_RemoteGroupSynchronizedProvider::references(const OperationContext& context,
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
    _deliverRelatedInstances(objectName, context, role, String(), resultClass, includeQualifiers,
        includeClassOrigin, propertyList, CIM_REFERENCES, handlerOf(handler));
    log_message(4, "<-- ZDA_RemoteGroupSynchronizedProvider::references()\n");
}

void ZDA_RemoteGroupSynchronizedProvider::referenceNames(const OperationContext& context,
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
    _deliverRelatedInstances(
        objectName, context, role, String(), resultClass, CIM_REFERENCE_NAMES, handlerOf(handler));
    log_message(4, "<-- ZDA_RemoteGroupSynchronizedProvider::referenceNames()\n");
}

void ZDA_RemoteGroupSynchronizedProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_RemoteGroupSynchronizedProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    requireKeyCount(instanceReference, 2, SOURCE_FILE, ClassName, " Expect two keys.");
    _deliverRelatedInstances(instanceReference, context, String::EMPTY, String::EMPTY, CIMName(),
        includeQualifiers, includeClassOrigin, propertyList, CIM_GET_INSTANCE, handlerOf(handler));
    log_message(4, "<-- ZDA_RemoteGroupSynchronizedProvider::getInstance()\n");
}

void ZDA_RemoteGroupSynchronizedProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath&, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_RemoteGroupSynchronizedProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    _deliverRelatedInstances(CIMObjectPath(), context, String::EMPTY, String::EMPTY, CIMName(),
        includeQualifiers, includeClassOrigin, propertyList, CIM_ENUMERATE_INSTANCES, handlerOf(handler));
    log_message(4, "<-- ZDA_RemoteGroupSynchronizedProvider::enumerateInstances()\n");
}

void ZDA_RemoteGroupSynchronizedProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_RemoteGroupSynchronizedProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    _deliverRelatedInstances(CIMObjectPath(), context, String::EMPTY, String::EMPTY, CIMName(),
        CIM_ENUMERATE_INSTANCE_NAMES, handlerOf(handler));
    log_message(4, "<-- ZDA_RemoteGroupSynchronizedProvider::enumerateInstanceNames()\n");
}

void ZDA_RemoteGroupSynchronizedProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw notSupported(ClassName, "modifyInstance");
}

void ZDA_RemoteGroupSynchronizedProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw notSupported(ClassName, "createInstance");
}

void ZDA_RemoteGroupSynchronizedProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw notSupported(ClassName, "deleteInstance");
}

PEGASUS_NAMESPACE_END
