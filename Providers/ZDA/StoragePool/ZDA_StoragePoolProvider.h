// ZDA_StoragePoolProvider: the array's CPGs as storage pools in root/zda.
// Each CPG is a ZDA_DynamicStoragePool (InstanceID "KX_ORLA:CPG:<cpg>"),
// the space volumes are carved from, and a ZDA_DeltaReplicaStoragePool
// (InstanceID "KX_ORLA:SNAP:<cpg>"), the snapshot space of the volumes
// that keep their snapshots in it; both grow within the CPG's limit.
//
// Every operation opens the array for the caller; array calls hold the
// semaphore for the call only. A failed or busy read gives an empty
// answer, and not found for getInstance. Pools cannot be created,
// modified or deleted by clients. May be called on any number of threads.
#ifndef ZDA_STORAGE_POOL_PROVIDER_H
#define ZDA_STORAGE_POOL_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_StoragePoolProvider : public CIMInstanceProvider
{
public:
    ZDA_StoragePoolProvider();
    virtual ~ZDA_StoragePoolProvider();

    // The path of the dynamic pool of the CPG `cpgName`, on `host`.
    static CIMObjectPath buildObjectPath(const String& cpgName, const String& host);
    // The path of the delta replica pool (snapshot space) of `cpgName`.
    static CIMObjectPath buildDeltaObjectPath(const String& cpgName, const String& host);
    // The pool of `cpg` on the skeleton of `poolClass`: its dynamic pool, or
    // with `delta` its delta replica pool, whose reserved space is the
    // snapshot space in use, `snapshotMiB`.
    static CIMInstance buildInstance(
        const api_cpg_t& cpg, bool delta, Uint64 snapshotMiB, const String& host, CIMClass& poolClass);
    // The CPG a pool path of either class names; "" for another path.
    static String cpgOf(const CIMObjectPath& poolPath);

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
    // The pools of `className` (either pool class), each handed to
    // `deliver` as an instance: built on `poolClass`, or with null only its path.
    template <class Deliver>
    void _forEachPool(const CIMName& className, CIMClass* poolClass, Deliver&& deliver);

    CIMOMHandle _cimom;
};

PEGASUS_NAMESPACE_END

#endif
