// ZDA_RemoteStorageSynchronizedProvider: the pairs of a local volume in a
// remote copy group and its counterpart on one target of the group
// (ZDA_RemoteStorageSynchronized in root/zda, answering also to
// CIM_StorageSynchronized). SystemElement is the source of the copy,
// SyncedElement its target; the far end is a ZDA_StorageVolume under the
// no-replication-entity policy when its WWN is known, else a
// ZDA_ReplicationEntity. Read-only.
//
// The routines gather the pairs of one api_getRCopy snapshot into arrays and
// the operations deliver them. Their answers, by design:
// - a request whose roles or result class cannot match returns with nothing
//   delivered and without complete(), and without an error;
// - an array failure or a busy array gives an empty answer (complete() is
//   called), and CIMObjectNotFoundException in getInstance.
// Also here: the mapping of a volume's remote copy state to the SMI-S
// values (getVVCopyState) and the lookups over a remote copy configuration
// (findVVMap, findTarget, getRemoteSystemWWN) that every provider showing
// remote copy state shares. Those read the snapshot they are given and
// nothing else: no array call, no semaphore, callable on any thread.
#ifndef ZDA_REMOTE_STORAGE_SYNCHRONIZED_PROVIDER_H
#define ZDA_REMOTE_STORAGE_SYNCHRONIZED_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_RemoteStorageSynchronizedProvider : public CIMAssociationProvider, public CIMInstanceProvider
{
public:
    ZDA_RemoteStorageSynchronizedProvider();
    virtual ~ZDA_RemoteStorageSynchronizedProvider();

    // Keeps the handle and reads the system's host name and name.
    virtual void initialize(CIMOMHandle& cimom);
    // Deletes the provider.
    virtual void terminate();

    // From a local volume its far counterparts, from a far volume (an entity
    // or, under the policy, a volume of another system) the local volume.
    virtual void associators(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& associationClass, const CIMName& resultClass, const String& role,
        const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, ObjectResponseHandler& handler);
    virtual void associatorNames(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& associationClass, const CIMName& resultClass, const String& role,
        const String& resultRole, ObjectPathResponseHandler& handler);
    // The pairs that refer to the object (through `role`, unless empty).
    virtual void references(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
        ObjectResponseHandler& handler);
    virtual void referenceNames(const OperationContext& context, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, ObjectPathResponseHandler& handler);

    // The pair of the reference (exactly two keys, else
    // CIMInvalidParameterException "... Expect two keys."); a reference of
    // class ZDA_ReplicationEntity names no pair and is not found.
    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    // Every pair: groups, their volumes, and each volume's group targets
    // that it has a map for, in the array's order.
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

    // CopyState, ProgressStatus and SyncState of a group volume whose map to
    // `target` has the status `vv_status` (RM_GROUP_VV_*), in `group`. New
    // and remote volumes are Split while the group target is new, stopped or
    // failsafe and Unsynchronized otherwise; syncing ones Unsynchronized
    // (Restoring during a recovery against the natural direction); synced
    // ones Prepared, Synchronized, Failedover, Broken or Split by the group
    // target's option 0x400000, state, disaster-recovery state and the
    // configured target's failure; unsynchronized ones Broken, stale ones
    // Skewed, stopped ones Broken on a failed target and Split otherwise;
    // all else (repairing, failsafe) Not Applicable. Never fails.
    static void getVVCopyState(Uint8& vv_status, api_rcopy_t& rcopy, rm_group_target* target, rm_group* group,
        Uint16& copyState, Uint16& progressStatus, Uint16& syncState);

    // The map of the group volume `gvvs` for the group target `gtarget`:
    // the first of the volume's maps whose target name is the group
    // target's, walking as many maps as the group has targets
    // (grp->group.rm_targets, not the volume's map_count: a volume holds a
    // slot for every target of its group). Null when the volume has no map
    // for that target; a map slot the array left empty names no target.
    static rm_group_vv_map* findVVMap(
        rm_group_wrapper* grp, rm_group_target* gtarget, rm_group_vv_wrapper* gvvs);

    // The configured target that the group target `gtarget` names; null for
    // a null `gtarget` or a name no target of `rcopy` has.
    static rm_target* findTarget(rm_group_target* gtarget, api_rcopy_t& rcopy);

    // The node WWN of the remote system behind the group target `gtarget`,
    // as the array works it out (the target's computed WWN); "" when no
    // configured target has that name or the WWN is not known, which
    // callers read as a remote system of unknown WWN.
    static String getRemoteSystemWWN(api_rcopy_t* pRcopy, rm_group_target* gtarget);

    // SyncMaintained of a remote pair: false while remote copy is invalid,
    // off, or stopped at both ends, or the group target is new or stopped.
    static Boolean syncMaintained(const api_rcopy_t& rcopy, const rm_group_target* target);
    // SyncPolicy of a remote pair: the group target's policy bits (the low
    // eight of its options) with the bit of value 2 always set.
    static Uint32 syncPolicy(const rm_group_target* target);

private:
    // The pair of `srcPath` and `tgtPath` for the map `map` of a volume of
    // `groupInfo` to `target`, on the skeleton of `syncClass`.
    CIMInstance _buildAssociationInstance(CIMObjectPath& srcPath, CIMObjectPath& tgtPath, api_rcopy_t& rcopy,
        rm_group_wrapper* groupInfo, rm_group_target* target, rm_group_vv_map* map, CIMClass& syncClass);
    // Every pair (a null class in `instRef`), or the pair the reference's
    // two keys name. Empty after an array failure.
    Array<CIMInstance> _getInstances(const OperationContext& context, const CIMObjectPath& instRef,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);
    Array<CIMObjectPath> _getInstanceNames(const OperationContext& context);
    // The elements at the other end of the pairs that hold `objectName`.
    Array<CIMInstance> _getRelatedInstances(const OperationContext& context, const CIMObjectPath& objectName,
        const String& role, const String& resultRole, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList);
    // A far volume as a ZDA_StorageVolume of the path `volPath`, told from
    // the map alone (the far array is not read).
    CIMInstance _buildRemoteVVInstance(
        CIMObjectPath& volPath, rm_group_vv_map* map, String localVV, String& sysName, CIMClass& volClass);
    // True for a request that cannot match (see the header comment).
    Boolean _invalidParms(const CIMObjectPath& objectName, const String& role, const String& resultRole,
        const CIMName& resultClass, const String& method);

    CIMOMHandle _cimom;
    CIMName _assoClassName;
    CIMName _volClassName;
    String _hostAddr;
    String _systemName;
};

PEGASUS_NAMESPACE_END

#endif
