// Method authorization shared by the module's method providers: the choice
// of the authorize_* function by a method's authorization kind, the generic
// right named after the class and method, and the refusals a caller throws
// for a result.
//
// The rights are asked of the array without the array semaphore. Every
// function here may run on any thread; none keeps state.
#ifndef ZDA_METHOD_AUTHORIZATION_H
#define ZDA_METHOD_AUTHORIZATION_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// Which authorize_* function a method call goes through. The numbers are
// shared by every provider library of the array; the ones without a name
// (0, 4 and everything above 17) have no function.
enum ZDA_AuthFuncType
{
    AUTH_CREATE_VOLUME_FROM_POOL = 1,
    AUTH_MODIFY_VOLUME_FROM_POOL = 2,
    AUTH_MODIFY_SYNCHRONIZATION = 3,
    AUTH_CREATE_OR_MODIFY_POOL = 5,
    AUTH_DELETE_POOL = 6,
    AUTH_DELETE_VOLUME = 7,
    AUTH_CREATE_ELEMENT_REPLICA = 8,
    AUTH_MODIFY_REPLICA_SYNCHRONIZATION = 9,
    AUTH_MODIFY_LIST_SYNCHRONIZATION = 10,
    AUTH_CREATE_GROUP_REPLICA = 11,
    AUTH_CREATE_GROUP_REPLICA_FROM_ELEMENTS = 12,
    AUTH_CREATE_CONSISTENT_REPLICA_LIST = 13,
    AUTH_MODIFY_GROUP_REPLICA_SYNCHRONIZATION = 14,
    AUTH_REPLICATION_CAPABILITIES = 15,
    AUTH_MODIFY_SETTING_TRANSIENT = 16,
    AUTH_MODIFY_SETTING_PERSISTENT = 17
};

// The code of the authorize_* function that `funcType` selects, called with
// the user, the client's address and the method's input (see
// ZDA_Authorization.h for the codes). A funcType without a function gives
// 3 (not supported) and asks the array nothing.
int authorizeMethod(
    int funcType, const String& userName, const String& ipAddr, const Array<CIMParamValue>& inParameters);

// The array's answer for the right "<className>.<methodName>" in lower
// case, as the methods without a function of their own are authorized.
int authorizeGeneric(
    const String& userName, const String& ipAddr, const String& className, const String& methodName);

// Throws for a result of authorizeMethod that is not 0:
// TraceableCIMException CIM_ERR_ACCESS_DENIED "Insufficient privilege for
// the user" for 1 and 2, CIM_ERR_NOT_SUPPORTED "Does not support!" for any
// other value, naming `file` and `line`. Returns for 0.
void requireAuthorized(int result, const char* file, Uint32 line);

PEGASUS_NAMESPACE_END

#endif
