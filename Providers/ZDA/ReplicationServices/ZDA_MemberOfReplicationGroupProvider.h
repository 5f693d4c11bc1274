// ZDA_MemberOfReplicationGroupProvider: ZDA_MemberOfReplicationGroup in
// root/zda (answering also to CIM_MemberOfCollection), the pairs of a local
// vvset (ZDA_ReplicationGroup, role Collection) and a volume in it
// (ZDA_StorageVolume, role Member). A vvset without members, or one the
// array marks with the key "parentRCGroup" (it stands for a remote copy
// group), gives no pair.
//
// One routine walks the array and delivers as it finds, for the association
// operations and the instance operations alike. Its answers, by design:
// - a request whose key, roles or result class cannot match returns with
//   nothing delivered and without complete(), and without an error;
// - an array failure or a busy array after processing() ends the answer
//   with what was delivered, without complete(), and without an error;
// - getInstance of a pair that is not there is CIMObjectNotFoundException.
// Array calls hold the semaphore for the call only, never while delivering.
// Thread-safe: the members are written by the constructor and initialize.
#ifndef ZDA_MEMBER_OF_REPLICATION_GROUP_PROVIDER_H
#define ZDA_MEMBER_OF_REPLICATION_GROUP_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_ProviderTypes.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_MemberOfReplicationGroupProvider : public CIMAssociationProvider, public CIMInstanceProvider
{
public:
    ZDA_MemberOfReplicationGroupProvider();
    virtual ~ZDA_MemberOfReplicationGroupProvider();

    // Keeps the handle and reads the system's host name and name.
    virtual void initialize(CIMOMHandle& cimom);
    // Deletes the provider.
    virtual void terminate();

    // From a group its member volumes, from a volume the groups holding it.
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

    // The pair of the reference (class ZDA_MemberOfReplicationGroup or
    // CIM_MemberOfCollection, else CIMNotSupportedException; two keys, else
    // CIMInvalidParameterException).
    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    // Every pair, in the array's order of vvsets and then of volumes.
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);

    // Refused with CIMNotSupportedException: membership changes through the
    // replication service's methods.
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);

private:
    // Walks the vvsets and their members for `objectName` (an association
    // reference: getInstance; a group or a volume: navigation; no class:
    // enumeration) and delivers through `handler` as `method` says.
    void _deliverRelatedInstances(const CIMObjectPath& objectName, const OperationContext& context,
        const String& role, const String& resultRole, const CIMName& resultClass,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, cim_method_e method, cim_handler_u handler);
    // The same for the name operations: no qualifiers, no class origin, every
    // property.
    void _deliverRelatedInstances(const CIMObjectPath& objectName, const OperationContext& context,
        const String& role, const String& resultRole, const CIMName& resultClass, cim_method_e method,
        cim_handler_u handler);
    // True for a request that cannot match (see the header comment).
    Boolean _invalidParms(const CIMObjectPath& objectName, const String& role, const String& resultRole,
        const CIMName& resultClass, const String& method);

    CIMOMHandle _cimom;
    String _systemAddress;
    String _systemName;
    CIMName _assoClassName;
    CIMName _volumeClassName;
    CIMName _replicaGroupClassName;
};

PEGASUS_NAMESPACE_END

#endif
