// ZDA_ReplicaPoolForStorageProvider: ZDA_ReplicaPoolForStorage in root/zda,
// linking every volume that has snapshot space (Dependent) to the delta
// replica pool of the CPG holding it (Antecedent). Keys: the pool path of
// ZDA_StoragePoolProvider::buildDeltaObjectPath and the volume path of
// ZDA_StorageVolumeProvider::createObjectPath.
//
// Every operation opens the array for the caller; array calls hold the
// semaphore for the call only. A failed or busy read gives an empty
// answer, and not found for getInstance. Changes are refused: a volume's
// snapshot space is given through the storage configuration service.
#ifndef ZDA_REPLICA_POOL_FOR_STORAGE_PROVIDER_H
#define ZDA_REPLICA_POOL_FOR_STORAGE_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

PEGASUS_NAMESPACE_BEGIN

class ZDA_ReplicaPoolForStorageProvider : public CIMInstanceProvider, public CIMAssociationProvider
{
public:
    ZDA_ReplicaPoolForStorageProvider();
    virtual ~ZDA_ReplicaPoolForStorageProvider();

    // The association path between a delta replica pool and a volume, on `host`.
    static CIMObjectPath buildObjectPath(
        const CIMObjectPath& pool, const CIMObjectPath& volume, const String& host);

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

    // From a volume its delta replica pool (role Dependent), from a delta
    // replica pool its volumes (role Antecedent). Roles or result classes
    // that cannot match give an empty answer.
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

private:
    CIMOMHandle _cimom;
};

PEGASUS_NAMESPACE_END

#endif
