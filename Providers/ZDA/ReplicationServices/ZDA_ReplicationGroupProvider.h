// ZDA_ReplicationGroupProvider: ZDA_ReplicationGroup in root/zda, one
// instance for each vvset of the array. Key: InstanceID "KX_ORLA:<vvset
// name>". The provider enumerates, fetches and renames or re-describes
// groups; groups are created and deleted through the replication service.
//
// Its static builders are the one source of the class's path and shape:
// the association providers of the module call them.
//
// Every operation opens the array for the caller; array calls hold the
// semaphore for the call only, never while an instance is built or
// delivered. A failed or busy read gives an empty enumeration, and not
// found for getInstance and modifyInstance. Thread-safe: the members are
// written by initialize only.
#ifndef ZDA_REPLICATION_GROUP_PROVIDER_H
#define ZDA_REPLICATION_GROUP_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_ReplicationGroupProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    ZDA_ReplicationGroupProvider();
    // Not a working constructor: throws CIMNotSupportedException
    // "ZDA_ReplicationGroup does not support constructor with object path.".
    explicit ZDA_ReplicationGroupProvider(const CIMObjectPath& path);
    virtual ~ZDA_ReplicationGroupProvider();

    // The group path of the vvset `setName`: host `systemAddress`, root/zda,
    // InstanceID "KX_ORLA:<setName>".
    static CIMObjectPath buildObjectPath(String systemAddress, String setName);

    // The group instance of the vvset `pSet` (not null) on the skeleton of
    // `replicaGroupClass` (properties the class lacks are left out), with the
    // path of buildObjectPath(systemAddress, name). Description is set only
    // for a non-empty comment.
    static CIMInstance buildInstance(api_set_t* pSet, CIMClass& replicaGroupClass, String& systemAddress);

    // Keeps the handle and reads the system's name and host name.
    virtual void initialize(CIMOMHandle& cimom);
    // Deletes the provider.
    virtual void terminate();

    // The group of the reference (class CIM_ReplicationGroup or
    // ZDA_ReplicationGroup, one key). No such vvset, an InstanceID naming
    // none, or a failed or busy array: CIMObjectNotFoundException.
    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    // Every vvset, in the array's order; nothing (and no error) when the
    // array fails or is busy.
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);

    // Renames the vvset (ElementName) and/or sets its comment (Description)
    // in one array call; other properties are passed over, and with neither
    // present no call is made. With a property list only the listed
    // properties that the instance holds count. Needs the right
    // "<class>.modifyinstance". Refusals: CIMException 5 for a null
    // ElementName, CIMObjectNotFoundException for no such vvset,
    // CIMOperationFailedException with the array's text when the change
    // fails. processing() comes before the vvset is looked up.
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    // Refused with CIMNotSupportedException: groups are made and removed by
    // the replication service's methods.
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);
    // Refused with CIMNotSupportedException: the class has no methods.
    virtual void invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);

private:
    // The groups the reference names: all vvsets for a reference without a
    // class, else the one of its InstanceID. Empty for an InstanceID naming
    // nothing, a vvset the array does not know, or a failed or busy array.
    // The class fetch's errors pass on.
    Array<CIMInstance> _buildInstances(const OperationContext& context,
        const CIMObjectPath& instanceReference, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    CIMOMHandle _cimom;
    String _systemName;
    // The system's host name: the host of the paths served here.
    String _systemAddress;
};

PEGASUS_NAMESPACE_END

#endif
