// ZDA_RemoteGroupSynchronizedProvider: ZDA_RemoteGroupSynchronized in
// root/zda (answering also to CIM_GroupSynchronized), pairs of two kinds:
// - mirror (SyncType 6): a remote copy group and its counterpart group on one
//   target of the group; the far group is a ZDA_RemoteReplicationGroup under
//   the no-replication-entity policy and a ZDA_ReplicationEntity otherwise;
// - snapshot (SyncType 7): a remote copy group and a local vvset of its
//   snapshots, one that the array marks with the key "parentRCGroup".
//
// One routine walks the array and delivers as it finds, for the association
// operations and the instance operations alike. Its answers, by design:
// - a request whose roles or result class cannot match, or an object of a
//   class the association has no end for, returns with nothing delivered
//   and without complete(), and without an error;
// - an array failure or a busy array ends the answer with what was
//   delivered, without complete(), and without an error;
// - getInstance of a pair that is not there is CIMObjectNotFoundException;
// - an instance that cannot be built or delivered is logged and skipped.
// Array calls hold the semaphore for the call only, never while delivering.
// Thread-safe: the members are written by the constructor and initialize.
#ifndef ZDA_REMOTE_GROUP_SYNCHRONIZED_PROVIDER_H
#define ZDA_REMOTE_GROUP_SYNCHRONIZED_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_ProviderTypes.h"
#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_RemoteGroupSynchronizedProvider : public CIMAssociationProvider, public CIMInstanceProvider
{
public:
    ZDA_RemoteGroupSynchronizedProvider();
    virtual ~ZDA_RemoteGroupSynchronizedProvider();

    // Keeps the handle and reads the system's host name.
    virtual void initialize(CIMOMHandle& cimom);
    // Deletes the provider.
    virtual void terminate();

    // From a remote copy group its far groups and snapshot vvsets; from a
    // far group (an entity, or a remote group under the policy) or a
    // snapshot vvset the remote copy group.
    virtual void associators(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& associationClass, const CIMName& resultClass, const String& role,
        const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, ObjectResponseHandler& handler);
    virtual void associatorNames(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& associationClass, const CIMName& resultClass, const String& role,
        const String& resultRole, ObjectPathResponseHandler& handler);
    virtual void references(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
        ObjectResponseHandler& handler);
    virtual void referenceNames(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, ObjectPathResponseHandler& handler);

    // The pair of the reference (exactly two keys, else
    // CIMInvalidParameterException "... Expect two keys.").
    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    // Every mirror pair (groups, then their targets), then every snapshot
    // pair (groups, then their snapshot vvsets).
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);

    // Refused with CIMNotSupportedException: copies change through the
    // replication service's methods.
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);

    // True when the local side of the group `groupInfo` is the source of its
    // copy to `target`. A group target flagged 0x400000 decides by mode: the
    // local side is the source when any target of the group is synchronous.
    // Otherwise the group's natural direction decides (rm_natural).
    static Boolean isPrimary(rm_group_wrapper* groupInfo, rm_group_target* target);

    // The mirror pair paths of the group `groupNameIn`, one per target, with
    // `hostAddr` as the local host; empty when the array cannot be read.
    static Array<CIMObjectPath> createObjectPaths(String groupNameIn, String hostAddr, Boolean isNoREPolicy);

    // CopyState and ProgressStatus of a group's disaster-recovery state
    // `dr_state`; a group target stopped (`target_rm_state` 4) shows every
    // known state as Dormant. Returns 0. Kept for the recovery methods.
    static int getDRState(
        rm_dr_state_t dr_state, Uint8 target_rm_state, Uint16& copyState, Uint16& progressStatus);

private:
    // The engine of all seven operations: `objectName` is an association
    // reference (getInstance), a group or entity (navigation) or has no
    // class (enumeration); delivers through `handler` as `method` says.
    void _deliverRelatedInstances(const CIMObjectPath& objectName, const OperationContext& context,
        const String& role, const String& resultRole, const CIMName& resultClass,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, cim_method_e method, cim_handler_u handler);
    // The same for the name operations: no qualifiers, no class origin, every
    // property.
    void _deliverRelatedInstances(const CIMObjectPath& objectName, const OperationContext& context,
        const String& role, const String& resultRole, const CIMName& resultClass, cim_method_e method,
        cim_handler_u handler);

    // The mirror pair of `groupInfo` and its target `target`.
    CIMInstance _buildAssociationInstance(
        api_rcopy_t& rcopy, rm_group_wrapper* groupInfo, rm_group_target* target, CIMClass& syncClass);
    // The snapshot pair of `groupInfo` and its vvset `syncSet`; empty for a
    // null pointer.
    CIMInstance _buildAssociationInstance(
        rm_group_wrapper* groupInfo, api_set_t* syncSet, CIMClass& syncClass);

    // The group's CopyState and ProgressStatus on `target`: Prepared or
    // Preparing while the target is new, else the common value of its
    // volumes, Mixed (14) where they differ.
    static void _getCopyState(api_rcopy_t& rcopy, rm_group_wrapper* groupInfo, rm_group_target* target,
        Uint16& copyState, Uint16& progressStatus);
    // The share of the group's volumes on `target` that are Synchronized,
    // in whole percent; 0 for none.
    static Uint16 _getPercentSynced(api_rcopy_t& rcopy, rm_group_wrapper* groupInfo, rm_group_target* target);
    // The state of the snapshot volumes `vvNames`, read from the array in
    // pieces the volume filter can hold: CopyState and ProgressStatus
    // (Mixed where they differ), the percent Synchronized and the earliest
    // sync time. Each piece starts afresh, so the last one decides. Returns
    // 0, 5 for an empty list, 4 when the array fails or finds nothing.
    static int _getVVSetMembersInfo(api_name_t* vvNames, int memberCount, Uint16& copyState,
        Uint16& progressStatus, Uint16& percentSynced, time_t& whenSynced);

    // True for a request that cannot match (see the header comment).
    Boolean _invalidParms(const CIMObjectPath& objectName, const String& role, const String& resultRole,
        const CIMName& resultClass, const String& method);

    CIMOMHandle _cimom;
    CIMName _assoClassName;
    CIMName _remoteReplicaGroupClassName;
    CIMName _replicaGroupClassName;
    CIMName _entityClassName;
    String _hostAddr;
};

PEGASUS_NAMESPACE_END

#endif
