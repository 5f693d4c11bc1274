// Method authorization: work out which right a method call needs from its
// input parameters, and ask the array whether the user has it.
//
// Every authorize_* function returns one code:
//   0  allowed (or nothing to ask)
//   1  refused (the user's role lacks the right)
//   2  refused (unknown user)
//   3  the request has no right: the combination of parameters is not
//      supported (no call is made to the array then)
// Other values are the array's answer as it stands. Parameters are matched
// by name without case; a null value counts as absent. The rights are asked
// without the array semaphore; nothing throws except the SDK's own
// exceptions for a parameter of an unexpected type.
#ifndef ZDA_AUTHORIZATION_H
#define ZDA_AUTHORIZATION_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// Replication service methods.
int authorize_CreateElementReplica(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_CreateGroupReplica(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ModifyReplicaSynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ModifyListSynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ReplicationServiceCapabilitiesMethod(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);

// Storage configuration methods.
int authorize_DeleteStorageVolume(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_CreateOrModifyElemFromStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ModifySynchronization(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_CreateOrModifyStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_DeleteStoragePool(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ModifyStorageSetting_Transient(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);
int authorize_ModifyStorageSetting_Persistent(
    const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);

// modifyInstance of an allocated-from-pool association: the right follows
// the class of the path's Dependent (a pool or a volume); another class
// gives 3.
int authorize_AllocatedFromStoragePoolModifyInstance(
    const String& userName, const String& ipAddr, const CIMObjectPath& instanceName);

// Sets methodName to the right that removing the volume of volRef (found by
// its DeviceID WWN) needs, by the volume's type. Leaves methodName alone
// (and logs at level 2) when the volume is not found or has no type.
// Always returns 0. Takes the array semaphore for the lookup.
int handleDeleteVolumeMethod(CIMObjectPath& volRef, String& methodName);

// The number of live nodes of the array.
int getNumberOfNodes();

PEGASUS_NAMESPACE_END

#endif
