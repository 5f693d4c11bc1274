// ZDA_RemoteReplicationCollectionProvider: ZDA_RemoteReplicationCollection
// in root/zda (answering also to CIM_RemoteReplicationCollection), one
// instance for each remote copy target of the array. Key: InstanceID
// "KX_ORLA:<target name>", the target's name as the array knows it. The
// same targets are also access points (ZDA_RemoteServiceAccessPoint).
// Read-only.
//
// Its static builders are the one source of the class's path and shape.
// Every operation opens the array for the caller and reads the remote copy
// configuration once (api_getRCopy under the semaphore, never held while an
// instance is built or delivered). A failed or busy read gives a complete,
// empty enumeration and not found for getInstance. Thread-safe: the members
// are written by initialize only.
#ifndef ZDA_REMOTE_REPLICATION_COLLECTION_PROVIDER_H
#define ZDA_REMOTE_REPLICATION_COLLECTION_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_ProviderTypes.h"
#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_RemoteReplicationCollectionProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    ZDA_RemoteReplicationCollectionProvider();
    // Not a working constructor: throws CIMNotSupportedException
    // "ZDA_RemoteReplicationCollection does not support constructor with
    // object path.".
    explicit ZDA_RemoteReplicationCollectionProvider(const CIMObjectPath& path);
    virtual ~ZDA_RemoteReplicationCollectionProvider();

    // The path of the target `targetName`'s collection: host
    // `systemAddress`, root/zda, InstanceID "KX_ORLA:<targetName>".
    static CIMObjectPath buildObjectPath(String systemAddress, String targetName);
    // The collection of the target `pTarget` (not null) on the skeleton of
    // `collectionClass` (properties the class lacks are left out), with the
    // path of buildObjectPath(hostName, name). ConnectivityStatus: 2 for a
    // ready target without the not-usable option 0x800000, 4 for a new one
    // without it, else 3; Active exactly when it is 2.
    static CIMInstance buildInstance(rm_target_t* pTarget, CIMClass& collectionClass, const String& hostName);
    // The walk behind getInstance (`method` CIM_GET_INSTANCE: the target
    // named by the reference's InstanceID, CIMObjectNotFoundException when
    // there is none), enumerateInstances and enumerateInstanceNames (every
    // target in the array's order, for a reference without a class). Paths
    // carry `systemAddress`. Calls processing before it reads the array and
    // complete at the end, also after an array failure.
    static void deliverInstances(CIMOMHandle& cimom, const OperationContext& context,
        const CIMObjectPath& instanceReference, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList, const String& systemAddress,
        cim_method_e method, cim_handler_u handler);

    // Keeps the handle and reads the system's host name.
    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    // Class CIM_RemoteReplicationCollection or ZDA_RemoteReplicationCollection
    // (else CIMNotSupportedException); getInstance needs exactly one key
    // (CIMInvalidParameterException).
    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);

    // Refused with CIMNotSupportedException: the targets are configured on
    // the array, and the class has no methods.
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);
    virtual void invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);

private:
    CIMOMHandle _cimom;
    // The system's host name: the host of the paths served here.
    String _systemAddress;
};

PEGASUS_NAMESPACE_END

#endif
