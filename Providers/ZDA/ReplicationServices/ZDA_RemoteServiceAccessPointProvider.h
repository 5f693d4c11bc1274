// ZDA_RemoteServiceAccessPointProvider: ZDA_RemoteServiceAccessPoint in
// root/zda (answering also to CIM_RemoteServiceAccessPoint), one instance
// for each remote copy target of the array: the point through which the
// peer array is reached. Keys: SystemCreationClassName "ZDA_StorageSystem",
// SystemName (this array's host name), CreationClassName and Name, the
// target's name as the array knows it. Read-only.
//
// Its static builders are the one source of the class's path and shape; it
// also turns a client's reference to an access point into a target name
// for the replication service's methods.
//
// Every operation opens the array for the caller and reads the remote copy
// configuration once (api_getRCopy under the semaphore, never held while an
// instance is built or delivered). A failed or busy read gives a complete,
// empty enumeration and not found for getInstance. Thread-safe: the members
// are written by initialize only.
#ifndef ZDA_REMOTE_SERVICE_ACCESS_POINT_PROVIDER_H
#define ZDA_REMOTE_SERVICE_ACCESS_POINT_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
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

class ZDA_RemoteServiceAccessPointProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    ZDA_RemoteServiceAccessPointProvider();
    // Not a working constructor: throws CIMNotSupportedException
    // "ZDA_RemoteServiceAccessPoint does not support constructor with object
    // path.".
    explicit ZDA_RemoteServiceAccessPointProvider(const CIMObjectPath& path);
    virtual ~ZDA_RemoteServiceAccessPointProvider();

    // The path of the target `targetName`'s access point: host `systemName`,
    // root/zda, the four keys with SystemName `systemName`.
    static CIMObjectPath buildObjectPath(String systemName, String targetName);
    // The access point of the target `pTarget` (not null) on the skeleton of
    // `remoteSAPClass` (properties the class lacks are left out), with
    // SystemName `systemName` and the path of buildObjectPath(systemName,
    // name). OperationalStatus and HealthState follow the target's status;
    // a target with the not-usable option 0x800000 shows 10 (stopped) first.
    static CIMInstance buildInstance(
        rm_target_t* pTarget, CIMClass& remoteSAPClass, const String& systemName);
    // The walk behind getInstance (`method` CIM_GET_INSTANCE: the target
    // named by the reference's key Name, whatever its other keys say;
    // CIMObjectNotFoundException when there is none), enumerateInstances and
    // enumerateInstanceNames (every target in the array's order, for a
    // reference without a class). Calls processing first and complete at
    // the end, also after an array failure.
    static void deliverInstances(CIMOMHandle& cimom, const OperationContext& context,
        const CIMObjectPath& instanceReference, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList, const String& systemAddress,
        cim_method_e method, cim_handler_u handler);

    // The remote copy target that a client's access point `targetSAPRef`
    // stands for, for a copy in the synchronization `mode` (2 synchronous,
    // 3 asynchronous, 0 any). Only ready targets without the not-usable
    // option count. When the named target does not suit the mode (its flags
    // name other modes), another target to the same remote system is
    // taken: the first that suits the mode, else one that suits any mode,
    // in which case `targetNameOut` holds the last target looked at. True
    // with `targetNameOut` set when a target was chosen; false with the
    // reason in `errStr` otherwise. Reads the array under the semaphore.
    static bool getRcopyTargetFromSAP(
        String& targetNameOut, const CIMObjectPath& targetSAPRef, Uint16 mode, String& errStr);
    // The same for any mode.
    static bool getRcopyTargetFromSAP(
        String& targetNameOut, const CIMObjectPath& targetSAPRef, String& errStr);

    // Keeps the handle and reads the system's host name.
    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    // Class CIM_RemoteServiceAccessPoint or ZDA_RemoteServiceAccessPoint
    // (else CIMNotSupportedException); getInstance needs exactly four keys
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
    // OperationalStatus of a target: 10 first when it is not usable, then
    // by status 0 -> 8, 1 -> 2, 2 -> 6, 3 and 4 -> 13, 153 -> 10, else 0.
    static Array<Uint16> _getOperationalStatus(rm_target_t* pTarget);
    // HealthState of a target by status: 0 and 1 -> 5, 2 -> 25, 3 -> 15,
    // 4 -> 20, else 0.
    static Uint16 _getHealthState(rm_target_t* pTarget);

    CIMOMHandle _cimom;
    // The system's host name: the SystemName and host of the paths served.
    String _systemAddress;
};

PEGASUS_NAMESPACE_END

#endif
