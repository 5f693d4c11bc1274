// ZDA_StorageVolumeProvider: the array's volumes as ZDA_StorageVolume
// instances in root/zda, one for every volume (base volumes, physical and
// virtual copies, the system volume).
//
// Keys: SystemCreationClassName "ZDA_StorageSystem", SystemName (the system
// name of the array holding the volume), CreationClassName
// "ZDA_StorageVolume" and DeviceID (the volume's WWN text as the array
// writes it). Besides the properties block storage clients read, each
// instance carries VolumeType (the array's volume type: 1 base, 2 physical
// copy, 3 virtual copy, 4 other) and Policy (the array's policy bits).
// docs/shared-keys.md fixes keys and numbering for every library.
//
// The static builders are the one source of a volume's path and shape:
// other providers call them, and the instances served here are built by
// them. Every operation opens the array for the caller; array calls hold
// the semaphore for the call only, never while delivering. A failed or busy
// read gives an empty (or, part way through an enumeration, partial)
// answer, and CIMObjectNotFoundException for getInstance. The instance
// changing operations are refused. May be called on any number of threads.
#ifndef ZDA_STORAGE_VOLUME_PROVIDER_H
#define ZDA_STORAGE_VOLUME_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_ProviderTypes.h"
#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_StorageVolumeProvider : public CIMInstanceProvider
{
public:
    ZDA_StorageVolumeProvider();
    virtual ~ZDA_StorageVolumeProvider();

    // The path of the volume whose DeviceID is `wwn`, on the system
    // `systemName`: host `hostName`, namespace root/zda, the four keys.
    static CIMObjectPath createObjectPath(String wwn, String const& systemName, String const& hostName);

    // The full instance of the volume record `vv` (not null) on the skeleton
    // of `volumeClass` (properties the class lacks are left out), with the
    // path createObjectPath(vv->wwnText, systemName, hostName). `cpgs` and
    // `cpgCount` are the array's CPG list, from which the redundancy of the
    // volume's user space is told (DataRedundancy, PackageRedundancy,
    // NoSinglePointOfFailure); with nullptr and 0 those stay unset.
    static CIMInstance buildInstance(api_VVObj_t* vv, String const& systemName, String const& hostName,
        CIMClass& volumeClass, const api_cpg_t* cpgs, int cpgCount);

    // The full instance of the local volume named `vvName`, looked up on the
    // array (under the semaphore; the caller must not hold it). With
    // `withRedundancy` the CPG list is read as well, for the redundancy
    // properties. An uninitialized instance when the volume does not exist
    // or the array failed or was busy (logged at level 2).
    static CIMInstance buildVVInstance(String const& vvName, String const& systemName, String const& hostName,
        CIMClass& volumeClass, bool withRedundancy);

    // A minimal instance that names a volume without reading it: the four
    // keys (DeviceID `deviceID`, SystemName `systemName`) on the skeleton of
    // `volumeClass`, with the path createObjectPath(deviceID, systemName,
    // hostName). For volumes of other arrays, which only their keys stand for.
    static CIMInstance buildEmptyInstance(
        String const& deviceID, String const& systemName, String const& hostName, CIMClass& volumeClass);

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
    // Every volume, read in chunks: each chunk is fetched under the
    // semaphore, then built and delivered without it.
    void _deliverAll(CIMClass* volumeClass, cim_method_e method, cim_handler_u handler);

    CIMOMHandle _cimom;
};

PEGASUS_NAMESPACE_END

#endif
