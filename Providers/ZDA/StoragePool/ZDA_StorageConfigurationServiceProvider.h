// ZDA_StorageConfigurationServiceProvider: the array's storage
// configuration service (one ZDA_StorageConfigurationService instance in
// root/zda) and the copy operations the replication module calls on it:
// physical copies (clones) of volumes, lists of volumes and volume sets,
// virtual copies (snapshots) of volumes and of the local side of remote
// copy groups, changes of local copy relationships, and snapshot space
// for volumes.
//
// The operations are static and called directly. Each makes its array
// calls under the array semaphore (the caller must not hold it) and passes
// the audit record on to every call that changes the array. A failure is
// the array's status with its text (68 when a volume is in use, 29 when
// the semaphore timed out); 22 names a request this service refuses
// itself. Nothing is rolled back after a failure: copies already started
// keep running. Paths given out use `systemName` and `systemAddress` as
// the other libraries do (docs/shared-keys.md):
// - jobs: ZDA_ConcreteJobProvider::buildObjectPath(systemAddress, makeUniqueID(task id));
// - synchronizations: ZDA_StorageSynchronizedProvider::buildObjectPath of the
//   source and target volume paths, the target's path in SyncedElement.
//
// References the operations take: volumes as ZDA_StorageVolume paths
// (DeviceID), volume sets as ZDA_ReplicationGroup paths and remote copy
// groups as ZDA_RemoteReplicationGroup paths (InstanceID "KX_ORLA:<name>"),
// pools as ZDA_DynamicStoragePool or ZDA_DeltaReplicaStoragePool paths
// (InstanceID "KX_ORLA:CPG:<cpg>" and "KX_ORLA:SNAP:<cpg>"). A goal setting
// (ZDA_StorageSetting) gives the CPGs of a new volume (UserDSPName,
// SnapDSPName) and, for snapshots, ExpirationTime, RetentionTime and the
// comment (Description). An empty path or an uninitialized instance
// stands for "not given".
#ifndef ZDA_STORAGE_CONFIGURATION_SERVICE_PROVIDER_H
#define ZDA_STORAGE_CONFIGURATION_SERVICE_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_StorageConfigurationServiceProvider : public CIMInstanceProvider
{
public:
    // copyType of createPhysicalCopy.
    static const Uint16 COPY_INACTIVE = 4;      // the copy is left inactive once written
    static const Uint16 COPY_SYNCHRONIZED = 5;  // the copy is kept synchronized
    // operation of modifySynchronization.
    static const Uint16 OP_DETACH = 2;       // a clone becomes independent, a snapshot is removed
    static const Uint16 OP_RESYNC = 4;       // the target is written from its source again
    static const Uint16 OP_RESTORE = 5;      // the source is written back from the target
    static const Uint16 OP_START_COPY = 12;  // a clone is written again (as resync)
    static const Uint16 OP_STOP_COPY = 13;   // the running copy or restore stops

    ZDA_StorageConfigurationServiceProvider();
    virtual ~ZDA_StorageConfigurationServiceProvider();

    // A physical copy of the volume `parentVolRef` into `childVolRef`, or
    // into a new volume named `childVolName` (generated when empty) when
    // no target is given, in the CPGs of the goal, else of `tgtPoolRef`,
    // else of the source. With two ZDA_ReplicationGroup paths it copies
    // every member of the source set: into the target set's members in
    // order, or, for an empty target set, into new volumes (named after
    // `childVolName`, generated when empty) that join the target set. A
    // ZDA_RemoteReplicationGroup source is copied from the group's local
    // volumes in the same way.
    // Appends one job and one synchronization per copy started.
    static api_Status_t createPhysicalCopy(api_evtparam_t* apiEventp, CIMOMHandle& cimom,
        const OperationContext& context, Uint16 copyType, const CIMObjectPath& parentVolRef,
        const CIMObjectPath& childVolRef, const CIMObjectPath& tgtPoolRef, const CIMInstance& goalSettingInst,
        Array<CIMObjectPath>& jobs, Array<CIMObjectPath>& synchronizations, const String& systemName,
        const String& systemAddress, String childVolName);

    // The list form: parentVolRefs[i] into childVolRefs[i] (childVolRefs
    // empty: new volumes named childVolNames[i], "" for a generated name).
    // With `checkAll` every source and target is checked before the first
    // copy starts, so that a bad entry starts none. An empty list does
    // nothing and succeeds.
    static api_Status_t createPhysicalCopy(api_evtparam_t* apiEventp, CIMOMHandle& cimom,
        const OperationContext& context, Uint16 copyType, const Array<CIMObjectPath>& parentVolRefs,
        const Array<CIMObjectPath>& childVolRefs, const CIMObjectPath& tgtPoolRef,
        const CIMInstance& goalSettingInst, Array<CIMObjectPath>& jobs,
        Array<CIMObjectPath>& synchronizations, const String& systemName, const String& systemAddress,
        Array<String> childVolNames, bool checkAll);

    // A snapshot of the volume `parentVolRef` named `childVolName`
    // (generated when empty), or, for a ZDA_RemoteReplicationGroup path,
    // snapshots of the group's local volumes taken at one instant, named
    // after `childVolName`. A source without snapshot space gets it in the
    // CPG of the goal's SnapDSPName or of `tgtPoolRef` when one is given.
    // Appends a "TargetElement" reference per snapshot to `paramValues`.
    // Never starts a job.
    static api_Status_t createVirtualCopy(api_evtparam_t* apiEventp, CIMOMHandle& cimom,
        const OperationContext& context, Array<CIMParamValue>& paramValues, const CIMObjectPath& parentVolRef,
        const String& childVolName, const CIMObjectPath& tgtPoolRef, const CIMInstance& goalSettingInst,
        const String& systemName, const String& systemAddress);

    // Applies `operation` (OP_*) to the ZDA_StorageSynchronized `sync`;
    // appends the job of a task it starts. Any other operation, 0
    // included, fails with 22 and says which operations there are. A
    // relationship the array does not have fails with 2 (API_E_NOT_FOUND).
    static api_Status_t modifySynchronization(api_evtparam_t* event, CIMOMHandle& cimom,
        const OperationContext& context, Array<CIMObjectPath>& jobs, Uint16 operation,
        const CIMObjectPath& sync, const String& host);
    // The same for each of `syncs` in order; the first failure ends the
    // walk and is the result (jobs of those started before stay in `jobs`).
    static api_Status_t modifySynchronization(api_evtparam_t* event, CIMOMHandle& cimom,
        const OperationContext& context, Array<CIMObjectPath>& jobs, Uint16 operation,
        const Array<CIMObjectPath>& syncs, const String& host);

    // Gives each named volume that has no snapshot space snapshot space in
    // the CPG of its user space. 0, or the array's code of the first
    // volume that failed (the ones before keep their space).
    static int assignSnapPoolToVolume(api_evtparam_t* apiEventp, Array<String>& parentVolNames);

    // The path of the service of the system `systemName` on `host`.
    static CIMObjectPath buildObjectPath(const String& systemName, const String& host);

    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);
    // Refused with CIMNotSupportedException.
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);

private:
    CIMInstance _buildInstance(const String& systemName, const String& host, CIMClass& serviceClass);

    CIMOMHandle _cimom;
};

PEGASUS_NAMESPACE_END

#endif
