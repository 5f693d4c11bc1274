// ZDA_StorageSynchronizedProvider: the local copy relationships of the
// array as ZDA_StorageSynchronized associations in root/zda, one between
// every volume (SystemElement) and each of its physical copies (clones,
// SyncType 8) and virtual copies (snapshots, SyncType 7) (SyncedElement).
//
// The keys are the two volume paths of ZDA_StorageVolumeProvider; the
// states follow the copy as the array reports it (getSyncState). The
// values are listed in docs/shared-keys.md.
//
// Every operation opens the array for the caller; array calls hold the
// semaphore for the call only. A failed or busy read gives an empty
// answer, and not found for getInstance. The instance changing operations
// are refused: relationships change through the storage configuration
// service. May be called on any number of threads.
#ifndef ZDA_STORAGE_SYNCHRONIZED_PROVIDER_H
#define ZDA_STORAGE_SYNCHRONIZED_PROVIDER_H

#include <vector>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_StorageSynchronizedProvider : public CIMInstanceProvider, public CIMAssociationProvider
{
public:
    ZDA_StorageSynchronizedProvider();
    virtual ~ZDA_StorageSynchronizedProvider();

    // The states of the local copy `copy` of `source`. Only the copy's
    // record is read, so callers that hold no record of the source may
    // pass the copy twice. CopyState 4 (Synchronized) means the copy holds
    // its point in time: a finished snapshot or a clone kept synchronized.
    static void getSyncState(
        api_VVObj_t* source, api_VVObj_t* copy, Uint16& syncState, Uint16& copyState, Uint16& progressStatus);

    // The association path between the volume paths `source` and `copy`
    // (as ZDA_StorageVolumeProvider::createObjectPath gives them), on `host`.
    static CIMObjectPath buildObjectPath(
        const CIMObjectPath& source, const CIMObjectPath& copy, const String& host);

    // The full association instance of the copy `copy` of `source` on the
    // skeleton of `syncClass`.
    static CIMInstance buildInstance(const api_VVObj_t& source, const api_VVObj_t& copy,
        const String& systemName, const String& host, CIMClass& syncClass);

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

    // From a volume: its copies (role SystemElement) and its parent (role
    // SyncedElement). A role, result role or result class that cannot match
    // gives an empty answer.
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
