// ZDA_ReplicationServiceProvider: the array's one replication service
// (ZDA_ReplicationService in root/zda) and the extrinsic methods that make,
// change and dissolve replicas and replication groups.
//
// The instance is read-only: modify, create and delete are refused.
// invokeMethod checks the path against the service's own, finds the
// method's row in the method table (names compare without case),
// authorizes the caller for it and passes the call to the row's handler.
// A name in no row is logged and answered with nothing at all: no
// processing, no return value, no complete, no exception.
//
// Every handler ends through _completeMethod: a non-zero result with an
// error text is thrown as CIMException with the result as its status code;
// anything else is delivered as output parameters and a Uint32 return
// value.
//
// Threads: the server may call any operation on several threads at once.
// The object holds only what initialize writes; the service's path and
// Name are process-wide and written once by the first initialize.
#ifndef ZDA_REPLICATION_SERVICE_PROVIDER_H
#define ZDA_REPLICATION_SERVICE_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "zdaapi.h"
#include "ZDA_MethodAuthorization.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_ReplicationServiceProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    ZDA_ReplicationServiceProvider();
    // Not a working constructor: always throws CIMNotSupportedException
    // "ZDA_ReplicationService does not support constructor with object path.".
    explicit ZDA_ReplicationServiceProvider(const CIMObjectPath& objectPath);
    virtual ~ZDA_ReplicationServiceProvider();

    // Keeps the handle, reads the system's name and host name, and builds
    // the service's path on the first call in the process.
    virtual void initialize(CIMOMHandle& cimom);
    // Deletes this object.
    virtual void terminate();

    // Opening of every instance operation: the user must be able to open
    // the array (else TraceableCIMException CIM_ERR_ACCESS_DENIED) and the
    // class must be CIM_, SNIA_ or ZDA_ReplicationService (else
    // CIMNotSupportedException). getInstance then needs exactly four keys
    // (CIMInvalidParameterException) matching the service's path
    // (CIMObjectNotFoundException).
    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    // Delivers the service's path without reading the array.
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);
    // Refused with CIMNotSupportedException before anything else happens.
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);

    // Opens the array for the user (CIM_ERR_ACCESS_DENIED), matches the
    // path against the service's (CIMObjectNotFoundException), then
    // authorizes and runs the method's row. Authorization refused (1, 2):
    // TraceableCIMException CIM_ERR_ACCESS_DENIED; any other non-zero
    // answer: CIM_ERR_NOT_SUPPORTED. A handler's exception passes unchanged.
    virtual void invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);

    // Appends the output parameter "Job" (the path of the job of the first
    // task) when a remote copy group start began a task; nothing when it
    // began none.
    void setConcreteJobParam(Array<CIMParamValue>& paramValues, api_rcopy_start_group& rcgroup);

    // Whether waiting for `waitForCopyState` fits the operation `op`: 1 it
    // fits (always for a state of 0), 0 it does not, -1 `op` is not one the
    // table knows. Only 0 is a refusal.
    static int validateCopyStateOp(Uint16 waitForCopyState, Uint16 op);

    // The path of the one service of the system `systemName`: host
    // `systemAddress`, root/zda, its four keys (Name "KX_ORLA_ReplicationService").
    static CIMObjectPath buildObjectPath(const String& systemName, const String& systemAddress);
    // The service's path; null until the first initialize.
    static CIMObjectPath instanceName() { return _instanceName; }

protected:
    // The copy services' operation code for this service's Operation value
    // (2 -> 13, 8 and 9 -> 2, 14 -> 4, 15 -> 5), 0 for any other.
    static Uint16 _convertToCopySvcsOp(Uint16 operation);

    // Takes the targets of the synchronizations `syncRefs` out of
    // existence: removes the target vvset of `targetGroup` when
    // `targetGroupSet`, then the target volumes of clones (SyncType 8), then
    // detaches snapshots (SyncType 7). Synchronizations that cannot be read
    // are skipped. Fails with 50 "None of the Synchronized instances exist"
    // when none could be read, with the vvset removal's status when that
    // fails (nothing further is done), else gives the volume removal's
    // result or the first failed detach.
    api_Status_t _returnToResourcePool(api_evtparam_t* apiEventp, const OperationContext& context,
        const Array<CIMObjectPath>& syncRefs, const CIMObjectPath& targetGroup, Boolean targetGroupSet);
    // The same for one synchronization, without a target group.
    api_Status_t _returnToResourcePool(
        api_evtparam_t* apiEventp, const OperationContext& context, const CIMObjectPath& syncRef);

    // Authorize a method call or throw: the answer of authorizeMethod for
    // the ZDA_AuthFuncType `funcType`, or for the generic form the array's
    // answer for the key "<class>.<method>" in lower case (so it follows
    // the class the client named). 0 returns; 1 and 2 throw TraceableCIMException
    // CIM_ERR_ACCESS_DENIED ("Insufficient privilege for the user", generic:
    // "Insufficient generic privilege"); anything else CIM_ERR_NOT_SUPPORTED
    // ("Does not support!", generic: "Does not support in generic!").
    void _authorizeByFuncType(int funcType, const String& userName, const String& ipAddress,
        const Array<CIMParamValue>& inParameters);
    void _authorizeGeneric(
        const String& className, const String& methodName, const String& userName, const String& ipAddress);

    // When the closing of a method calls processing(): after the check for
    // a failure (the usual order), or before it, so that a failed call has
    // already been marked as processing when it throws.
    enum ProcessingOrder
    {
        PROCESSING_AFTER_CHECK,
        PROCESSING_FIRST
    };

    // Ends a method handler: logs the overall status; throws
    // CIMException(outstatus, errStr) when outstatus is non-zero and errStr
    // not empty; else processing, each output parameter, the Uint32 return
    // value and complete, and the exit line "<-- <class>:: <handlerName>".
    // With PROCESSING_FIRST processing() comes before the check.
    void _completeMethod(MethodResultResponseHandler& handler, Uint32 outstatus, const String& errStr,
        const Array<CIMParamValue>& paramValues, const char* handlerName,
        ProcessingOrder order = PROCESSING_AFTER_CHECK);

    // Snapshots of the members of the replication group `parentSetRef`
    // taken at one instant, the copies named "<relationshipName>_<n>" from
    // 1 (a 25-character name is generated from the set's when
    // `relationshipName` is empty, and written back). A remote copy group
    // held here as primary is snapshotted by the copy services; held as
    // secondary, its copies also form the new vvset `relationshipName`,
    // given in `groupReplicaPath` with one group synchronization. Refusals
    // come back as status 78 with their text; any other class is a success
    // that makes nothing.
    api_Status_t _createGroupVirtualCopy(api_evtparam_t* apiEventp, const OperationContext& context,
        CIMObjectPath& parentSetRef, String& relationshipName, CIMObjectPath& targetPoolRef,
        CIMInstance& goalSettingInst, Array<CIMObjectPath>& targetVolumes,
        Array<CIMObjectPath>& synchronizations, CIMObjectPath& groupReplicaPath);
    // One snapshot of each parentVolNames[i] named childVolNames[i], all in
    // one array call, after giving sources without snapshot space some. The
    // goal (when initialized) gives BaseID, the comment (Description) and
    // expiration and retention as points in time, which must lie between
    // one hour and five years ahead. Appends a synchronization and a target
    // path per copy. Refusals come back as status 78 with their text.
    api_Status_t _createGroupVirtualCopy(api_evtparam_t* apiEventp, Array<String>& parentVolNames,
        Array<String>& childVolNames, CIMInstance& goalSettingInst, Array<CIMObjectPath>& targetVolumes,
        Array<CIMObjectPath>& synchronizations);

    // Makes the vvset `groupName` of the volumes `members` (none is
    // allowed), storing the key-values okv_keys[i] = okv_values[i], and
    // gives its group path in `groupReplicaPath`. Returns 0; 5 with errStr
    // for an empty name or a member the array lacks; 4 with the array's
    // text when the set cannot be made. Nothing is undone on a failure.
    int _createGroup(api_evtparam_t* apiEventp, String groupName, Array<CIMObjectPath>& members,
        Array<String> const& okv_keys, Array<String> const& okv_values, CIMObjectPath& groupReplicaPath,
        String& errStr);
    // Deletes the remote copy group `groupName`, asking the array to remove
    // the far array's copies of its volumes too; the local volumes stay.
    // Unless `removeElements`, a group that still has volumes is refused
    // with 6. Returns 0, 6, or 4 with errStr when the configuration cannot
    // be read or the array refuses the deletion.
    int _deleteRCopyGroup(
        api_evtparam_t* apiEventp, String groupName, Boolean removeElements, String& errStr);
    // Removes the vvset `setName`, then its member volumes, retrying up to
    // ten times two seconds apart while the array reports them busy.
    // Returns 0; 4 (with errStr unless the volumes stayed busy) when the set
    // does not exist, cannot be removed or its volumes cannot; 0x8000 with
    // errStr when only some volumes went. The set is gone once the volumes
    // are tried.
    int _deleteGroupAndMembers(api_evtparam_t* apiEventp, String setName, String& errStr);

    CIMOMHandle _cimom;
    String _systemName;
    String _systemAddress;

private:
    // What one method call hands its handler: each row's dispatch picks
    // the arguments its handler takes.
    struct MethodCall
    {
        api_evtparam_t* apiEventp;
        const OperationContext& context;
        const CIMName& methodName;
        const String& authMethodName;
        const Array<CIMParamValue>& inParameters;
        MethodResultResponseHandler& handler;
    };
    typedef void (*MethodDispatch)(ZDA_ReplicationServiceProvider& self, const MethodCall& call);

    // Marks a row authorized by the generic key "<class>.<method>".
    static const int GENERIC_AUTHORIZATION = -1;

    // One method: its name and an alternative (or null), its authorization
    // (a ZDA_AuthFuncType or GENERIC_AUTHORIZATION) and the handler it runs.
    struct MethodRow
    {
        const char* name;
        const char* alternativeName;
        int authorization;
        MethodDispatch dispatch;
    };
    // Ends with a row whose name is null.
    static const MethodRow _methodTable[];

    // The opening shared by the instance operations.
    void _openInstanceOperation(const OperationContext& context, const CIMObjectPath& reference, Uint32 line);
    void _buildInstanceName();
    CIMInstance _buildInstance(
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    static CIMObjectPath _instanceName;
    static String _name;

    // The parameters the copy-making methods share, as the parameter loop
    // leaves them; 0 and empty stand for "not given".
    struct CopyRequest
    {
        Uint16 syncType = 0;
        Uint16 mode = 0;
        Uint16 waitForCopyState = 0;
        CIMObjectPath tgtPoolRef;
        CIMObjectPath tgtSettingGoalRef;
        CIMInstance goalSettingInst;
    };
    // Reads the parameter `name` into `request` when it is one of the
    // shared ones (SyncType, Mode, TargetPool, TargetSettingGoal,
    // WaitForCopyState). Gives the refusal's text, or "" when the value is
    // taken or the name is not a shared one.
    String _readCopyParameter(
        const OperationContext& context, const String& name, const CIMValue& value, CopyRequest& request);
    // Free copy names: "<source>.rw", then "<source>.rw0", "<source>.rw1"...
    // the first the array does not know (a failed look-up counts as free).
    static String _freeCopyName(const String& sourceName);

    // ---- method handlers ----------------------------------------------------------
    // CreateElementReplica: one clone (SyncType 8, a Job when it runs on,
    // 4096) or snapshot (7) of SourceElement.
    void _createElementReplica(api_evtparam_t* apiEventp, const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    // CreateListReplica and ZDA_CreateConsistentReplicaList: clones or
    // snapshots of SourceElements; the snapshots at one instant. The
    // consistent form reports every job (Jobs), the standard one the first.
    void _createListReplica(api_evtparam_t* apiEventp, const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler, String methodName);
    // ModifyListSynchronization and ZDA_ModifyGroupReplicaSynchronization:
    // abort, detach, dissolve, resync, restore or return the targets of a
    // list of synchronizations, or of those of TargetGroup's members.
    void _modifyListSynchronization(api_evtparam_t* apiEventp, const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    // CreateGroup: GroupName, Members (volume paths), Persistent (only
    // true), DeleteOnEmptyElement and DeleteOnUnassociated (only false);
    // gives ReplicationGroup. A Persistent false is answered 5 without an
    // exception; the other refusals throw 5.
    void _createGroup(api_evtparam_t* apiEventp, const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    // DeleteGroup: ReplicationGroup (a vvset or a remote copy group that
    // the server finds) and RemoveElements (default true; false refuses a
    // group with members, 6). A vvset goes without its volumes.
    void _deleteGroup(api_evtparam_t* apiEventp, const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    // GetAvailableTargetElements: SourceElement, SyncType and Mode (all
    // required), TargetPools; gives Candidates, the volumes a full copy of
    // the source could go to. Answers 0 without Candidates for a snapshot
    // (SyncType 7), a source without snapshot space, and TargetPools that
    // miss the source's snapshot pool. Reads the server only.
    void _getAvailableTargetElements(const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    // GetReplicationRelationships and GetReplicationRelationshipInstances
    // (by `methodName`): Type, SyncType, Mode, Locality and CopyState
    // (each optional) filter the server's CIM_Synchronized instances;
    // gives Synchronizations, their paths or the instances. A Type or
    // Locality outside 2..3 finds nothing; a CopyState outside 2..15 is
    // refused with 5 "Invalid copyState".
    void _getReplicationRelationships(const OperationContext& context, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    // GetPeerSystems: Options (default 0); gives Systems, the storage
    // systems the array has remote copy targets on, one path per node WWN,
    // in the order of the targets. Options 0 lists every target with a node
    // WWN; 2 only the ready ones without the not-usable option; any other
    // value nothing. An array failure gives an empty list and 0.
    void _getPeerSystems(const OperationContext& context, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);
    // GetServiceAccessPoints: System (required, a ZDA_StorageSystem of this
    // namespace, on any host: peers live elsewhere); gives ServiceAccessPoints,
    // the access points of the ready, usable targets whose remote system is
    // `System` (by node WWN, else the computed one). 4 when the array
    // cannot be read.
    void _getServiceAccessPoints(const OperationContext& context, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);

    // ---- synchronization changes and group membership -----------------------------
    // ModifyReplicaSynchronization: Operation (abort 2, activate 4, detach
    // 8, dissolve 9, failover 10, failback 11, resync 14, restore 15,
    // return 19, reverse 20, split 21) on Synchronization. A
    // ZDA_RemoteGroupSynchronized is worked on through the remote copy
    // calls (a Job and 4096 when the array began a task, 4 with its text
    // on a failure); any other synchronization goes to the copy services
    // (a Job and 4096 for a job; failures 6 in use, 5 invalid, else 4).
    void _modifyReplicaSynchronization(api_evtparam_t* apiEventp, const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    // The operation on the remote copy groups at the two ends of `syncRef`.
    void _modifyGroupSynchronization(api_evtparam_t* apiEventp, const OperationContext& context,
        CIMObjectPath& syncRef, Uint16 operation, Boolean force, Array<CIMParamValue>& paramValues,
        Uint32& outstatus, String& errStr);
    // Reads the Uint16 property `name` of the group synchronization
    // `syncRef` (left as it is when the instance lacks it); false, with 5
    // and its text, when the server cannot give the instance.
    Boolean _readGroupSyncProperty(const OperationContext& context, const CIMObjectPath& syncRef,
        const char* name, Uint16& value, Uint32& outstatus, String& errStr);
    // Resync of the group `sourcegroup`: a start from a split, failed,
    // new or idle copy state, else a sync (forced with `force`); a sync the
    // array refuses as not started is retried once as a start, and its
    // failure stays the result. False when the method is to end now.
    Boolean _resyncGroup(api_evtparam_t* apiEventp, const OperationContext& context,
        const CIMObjectPath& syncRef, const String& sourcegroup, Boolean force,
        api_rcopy_groupop_t& rcopygroup, Uint32& outstatus, String& errStr);
    // Return of a snapshot set of a remote copy group: removes the set and
    // its volumes; 5 for a synchronization of another kind.
    void _returnGroupSnapshot(api_evtparam_t* apiEventp, const OperationContext& context,
        const CIMObjectPath& syncRef, const CIMObjectPath& syncedElem, const String& targetgroup,
        Uint32& outstatus, String& errStr);
    // The operation on a single synchronization, through the copy services.
    void _modifyElementSynchronization(api_evtparam_t* apiEventp, const OperationContext& context,
        CIMObjectPath& syncRef, Uint16 operation, Array<CIMParamValue>& paramValues, Uint32& outstatus,
        String& errStr);
    // AddMembers: the volumes Members join the vvset ReplicationGroup;
    // 7 when the server does not find the group, 5 for a volume the array
    // lacks, 4 with the array's text when it refuses.
    void _addMembers(api_evtparam_t* apiEventp, const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    // RemoveMembers: the volumes Members leave ReplicationGroup (a vvset
    // or a remote copy group); with DeleteOnEmptyElement a group left empty
    // goes too. 7 no such group, 8 a volume not in it (nothing is taken
    // out then), 4 an array failure; what was done before it stays.
    void _removeMembers(api_evtparam_t* apiEventp, const OperationContext& context,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler);
    // Takes `members` out of the vvset `groupName`; removes the set when it
    // is left empty and `deleteOnEmptyElement`. Returns 0, 4, 5, 7 or 8.
    int _removeFromVVSet(api_evtparam_t* apiEventp, const String& groupName, Array<CIMObjectPath>& members,
        Boolean deleteOnEmptyElement, String& errStr);
    // Takes `members` (found by WWN) out of the remote copy group
    // `groupName`, the far array's copies with them; the local volumes stay.
    // When all its volumes went and `deleteOnEmptyElement`, the group goes
    // too. Returns 0, 4 (the volumes dismissed before stay out), 6, 7 or 8.
    int _dismissRCopyVVs(api_evtparam_t* apiEventp, String groupName, Array<CIMObjectPath>& members,
        Boolean deleteOnEmptyElement, String& errStr);

    // ---- group replicas and remote mirrors -------------------------------------------
    // CreateGroupReplica, ZDA_CreateGroupReplica and
    // CreateGroupReplicaFromElements: a clone (SyncType 8) or snapshot (7)
    // of SourceGroup, or of a vvset made of SourceElements, and, from
    // elements only, a remote mirror (6): a new remote copy group of
    // SourceElements to the target of TargetAccessPoint, started. A clone
    // undoes the sets it made when the copy fails; a mirror is left as far
    // as it got.
    void _createGroupReplica(api_evtparam_t* apiEventp, const OperationContext& context,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);

    // What the group replica methods were asked, as the parameter loop and
    // the rules after it leave it; 0 and empty stand for "not given".
    struct GroupReplicaRequest
    {
        Boolean isZDAMethod = false;
        Boolean isCreateGroupReplica = false;
        Boolean isCreateGroupReplicaFromElements = false;
        String relationshipName;
        String sourceGroupName;
        String sourceGroupNameIn;
        CIMObjectPath sourceGroupRef;
        CIMObjectPath targetGroupRef;
        CIMObjectPath targetSAPRef;
        CIMObjectPath targetPoolRef;
        CIMObjectPath tgtSettingGoalRef;
        Array<CIMObjectPath> sourceElements;
        Uint16 syncType = 0;
        Uint16 mode = 0;
        Uint16 waitForCopyState = 0;
        Uint16 targetElementSupplier = 0;
        CIMInstance goalSettingInst;
        CIMInstance dataInst;
        String targetUserDSPName;
        String targetSnapDSPName;
    };
    // Takes one parameter of the loop; the refusal's text, or null.
    const char* _readGroupReplicaParameter(const OperationContext& context, const String& name,
        const CIMValue& value, GroupReplicaRequest& request);
    // The rules a clone or snapshot of a group checks before it starts:
    // which group is the source, and its name. The refusal's text, or null.
    const char* _resolveLocalGroupSource(const OperationContext& context, GroupReplicaRequest& request);
    void _createLocalGroupReplica(api_evtparam_t* apiEventp, const OperationContext& context,
        GroupReplicaRequest& request, Array<CIMParamValue>& paramValues, Uint32& outstatus, String& errStr);
    void _cloneGroup(api_evtparam_t* apiEventp, const OperationContext& context, GroupReplicaRequest& request,
        Array<CIMParamValue>& paramValues, Uint32& outstatus, String& errStr);
    void _snapshotGroup(api_evtparam_t* apiEventp, const OperationContext& context,
        GroupReplicaRequest& request, Array<CIMParamValue>& paramValues, Uint32& outstatus, String& errStr);
    // Removes the source vvset made of SourceElements; a failure is logged.
    void _removeSourceSet(api_evtparam_t* apiEventp, const GroupReplicaRequest& request);
    // The mirror's refusals in their order, settling the group's name, the
    // far CPGs and the local names of SourceElements (`vvNames`) on the
    // way; the refusal's text, or empty.
    String _checkMirrorRequest(
        GroupReplicaRequest& request, Array<String>& vvNames, api_evtparam_t* apiEventp);
    // Creates, fills and starts the remote copy group; gives the group, its
    // mirror pair and the far group.
    void _createMirrorGroup(api_evtparam_t* apiEventp, GroupReplicaRequest& request,
        Array<CIMParamValue>& paramValues, Uint32& outstatus, String& errStr);

protected:
    // Admits the volumes `vvNames` into the remote copy group `group`, one
    // array call each, mapped on every target of the group: named
    // "<relationshipName>_<n>" from 1 on the far side, or the local name
    // with as much of "_remote" as fits in 31 characters. Returns 0, or 4
    // with the array's text at the first refusal (volumes admitted before
    // it stay).
    int _admitRCopyVVs(api_evtparam_t* apiEventp, api_rcopy_group_t& group, Array<String>& vvNames,
        String& relationshipName, String& errStr);
    // The same for the existing group `groupName`, whose targets are read
    // from the array: also 4 when the array cannot be read and 7 when the
    // group does not exist.
    int _admitRCopyVVs(api_evtparam_t* apiEventp, String groupName, Array<String>& vvNames,
        String& relationshipName, String& errStr);
};

PEGASUS_NAMESPACE_END

#endif
