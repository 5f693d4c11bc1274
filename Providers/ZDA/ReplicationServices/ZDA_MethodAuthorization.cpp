// The authorization kinds of method calls and the refusals they lead to.
#include "ZDA_MethodAuthorization.h"

#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>

#include "ZDA_Authorization.h"
#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

const int NOT_SUPPORTED = 3;

typedef int (*AuthorizeFunction)(const String&, const String&, const Array<CIMParamValue>&);

struct AuthorizationRow
{
    int funcType;
    AuthorizeFunction authorize;
};

const AuthorizationRow kAuthorizations[] = {
    {AUTH_CREATE_VOLUME_FROM_POOL, authorize_CreateOrModifyElemFromStoragePool},
    {AUTH_MODIFY_VOLUME_FROM_POOL, authorize_CreateOrModifyElemFromStoragePool},
    {AUTH_MODIFY_SYNCHRONIZATION, authorize_ModifySynchronization},
    {AUTH_CREATE_OR_MODIFY_POOL, authorize_CreateOrModifyStoragePool},
    {AUTH_DELETE_POOL, authorize_DeleteStoragePool},
    {AUTH_DELETE_VOLUME, authorize_DeleteStorageVolume},
    {AUTH_CREATE_ELEMENT_REPLICA, authorize_CreateElementReplica},
    {AUTH_MODIFY_REPLICA_SYNCHRONIZATION, authorize_ModifyReplicaSynchronization},
    {AUTH_MODIFY_LIST_SYNCHRONIZATION, authorize_ModifyListSynchronization},
    {AUTH_MODIFY_GROUP_REPLICA_SYNCHRONIZATION, authorize_ModifyListSynchronization},
    {AUTH_CREATE_GROUP_REPLICA, authorize_CreateGroupReplica},
    {AUTH_CREATE_GROUP_REPLICA_FROM_ELEMENTS, authorize_CreateGroupReplica},
    {AUTH_CREATE_CONSISTENT_REPLICA_LIST, authorize_CreateGroupReplica},
    {AUTH_REPLICATION_CAPABILITIES, authorize_ReplicationServiceCapabilitiesMethod},
    {AUTH_MODIFY_SETTING_TRANSIENT, authorize_ModifyStorageSetting_Transient},
    {AUTH_MODIFY_SETTING_PERSISTENT, authorize_ModifyStorageSetting_Persistent},
};

}  // namespace

int authorizeMethod(
    int funcType, const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters)
{
    for (const AuthorizationRow& row : kAuthorizations)
        if (row.funcType == funcType)
            return row.authorize(userName, ipAddr, inParameters);
    return NOT_SUPPORTED;
}

int authorizeGeneric(
    const String& userName, const String& ipAddr, const String& className, const String& methodName)
{
    String key = className + "." + methodName;
    key.toLower();
    return api_authorizeCIMUser(
        (const char*)userName.getCString(), (const char*)ipAddr.getCString(), (const char*)key.getCString());
}

void requireAuthorized(int result, const char* file, Uint32 line)
{
    switch (result)
    {
    case 0: return;
    case 1:
    case 2:
        throw TraceableCIMException(CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user", file, line);
    default: throw TraceableCIMException(CIM_ERR_NOT_SUPPORTED, "Does not support!", file, line);
    }
}

PEGASUS_NAMESPACE_END
