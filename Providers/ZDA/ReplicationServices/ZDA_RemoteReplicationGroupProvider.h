// ZDA_RemoteReplicationGroupProvider: ZDA_RemoteReplicationGroup in root/zda
// (answering also to CIM_ReplicationGroup), one instance for each remote
// copy group of the array. Key: InstanceID "KX_ORLA:<group name>", which
// names no array: a group on the far side has the same form and is told
// apart by the host of its path. Read-only.
//
// Its static builders are the one source of the class's path and shape:
// the replication service and the association providers call them.
//
// Every operation opens the array for the caller and reads the whole remote
// copy configuration (one api_getRCopy under the semaphore, never held while
// an instance is built or delivered). A failed or busy read gives an empty
// enumeration and not found for getInstance. Thread-safe: the members are
// written by initialize only.
#ifndef ZDA_REMOTE_REPLICATION_GROUP_PROVIDER_H
#define ZDA_REMOTE_REPLICATION_GROUP_PROVIDER_H

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

class ZDA_RemoteReplicationGroupProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    ZDA_RemoteReplicationGroupProvider();
    // Not a working constructor: throws CIMNotSupportedException
    // "ZDA_RemoteReplicationGroup does not support constructor with object path.".
    explicit ZDA_RemoteReplicationGroupProvider(const CIMObjectPath& path);
    virtual ~ZDA_RemoteReplicationGroupProvider();

    // "KX_ORLA:<grpName>".
    static String buildInstanceID(const String& grpName);
    // The path of the group `grpName`: host `systemAddress`, root/zda, the
    // key InstanceID.
    static CIMObjectPath buildObjectPath(const String& systemAddress, const String& grpName);
    // The group instance from a name and number on the skeleton of
    // `replicaGroupClass` (properties the class lacks are left out), with
    // the path of buildObjectPath(hostName, groupName). Caption and
    // Description read "RemoteReplicationGroup <name>, ID <n>", or without
    // the ID for the number 65535 (unknown), cut to 60 characters. No
    // Domain.
    static CIMInstance buildInstance(
        const String& groupName, Uint16 ID, CIMClass& replicaGroupClass, const String& hostName);
    // The same for the array's group record `pGroup` (not null), with its
    // Domain when the group has one.
    static CIMInstance buildInstance(rm_group_t* pGroup, CIMClass& replicaGroupClass, String& systemAddress);
    // A group the array does not report (one on a far system): the skeleton
    // with InstanceID and the path only.
    static CIMInstance buildEmptyInstance(
        const String& groupName, CIMClass& replicaGroupClass, const String& hostName);

    // Keeps the handle and reads the system's host name.
    virtual void initialize(CIMOMHandle& cimom);
    // Deletes the provider.
    virtual void terminate();

    // The group of the reference (class CIM_ReplicationGroup or
    // ZDA_RemoteReplicationGroup, one key). No such group, an InstanceID
    // naming none, or a failed or busy array: CIMObjectNotFoundException.
    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    // Every remote copy group, in the array's order; nothing (and no error)
    // when the array fails or is busy.
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);

    // Refused with CIMNotSupportedException: groups are made, changed and
    // removed by the replication service's methods.
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);
    // Refused with CIMNotSupportedException: the class has no methods.
    virtual void invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);

private:
    // The groups the reference names: all for a reference without a class,
    // else the one of its InstanceID. Empty for an InstanceID naming
    // nothing, a group the array does not know, or a failed or busy array.
    // The class fetch's errors pass on.
    Array<CIMInstance> _buildInstances(const OperationContext& context,
        const CIMObjectPath& instanceReference, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    CIMOMHandle _cimom;
    // The system's host name: the host of the paths served here.
    String _systemAddress;
};

PEGASUS_NAMESPACE_END

#endif
