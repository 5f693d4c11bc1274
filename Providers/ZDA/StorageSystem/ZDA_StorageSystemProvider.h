// ZDA_StorageSystemProvider: the array as a ZDA_StorageSystem (a
// CIM_ComputerSystem) in root/zda, one instance for this array.
//
// Keys: CreationClassName "ZDA_StorageSystem" and Name. This array is named
// by its system name (the SystemName of its volumes and services); a remote
// array, known here only from the remote copy configuration, by its node
// WWN (createObjectPath). docs/shared-keys.md fixes both.
//
// Every operation opens the array for the caller and reads the system afresh
// (one api_getSystemInfo under the array semaphore). A failed or busy read
// gives an empty answer, and CIMObjectNotFoundException for getInstance.
// The instance changing operations are refused. May be called on any
// number of threads at once.
#ifndef ZDA_STORAGE_SYSTEM_PROVIDER_H
#define ZDA_STORAGE_SYSTEM_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_ProviderTypes.h"
#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_StorageSystemProvider : public CIMInstanceProvider
{
public:
    ZDA_StorageSystemProvider();
    virtual ~ZDA_StorageSystemProvider();

    // The path of a remote storage system known by its node WWN: host
    // `hostAddr`, namespace `nameSpace`, keys CreationClassName
    // "ZDA_StorageSystem" and Name `wwn`. The keys depend on the WWN only, so
    // paths of one system reached under different host names match.
    static CIMObjectPath createObjectPath(String const& hostAddr, String const& wwn, String const& nameSpace);

    // The path of this array's storage system: host `hostName`, namespace
    // root/zda, Name `systemName`.
    static CIMObjectPath buildObjectPath(String const& hostName, String const& systemName);

    // The storage system instance of the array described by `info`, on the
    // skeleton of `systemClass` (properties the class lacks are left out),
    // with the path of buildObjectPath(info.hostName, info.name).
    static CIMInstance buildInstance(const api_system_info_t& info, CIMClass& systemClass);

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
    // The one walk behind getInstance, enumerateInstances and
    // enumerateInstanceNames (`method` says which; `reference` is the
    // instance asked for by getInstance).
    void _deliverInstances(const OperationContext& context, const CIMObjectPath& reference,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList,
        cim_method_e method, cim_handler_u handler);

    CIMOMHandle _cimom;
};

PEGASUS_NAMESPACE_END

#endif
