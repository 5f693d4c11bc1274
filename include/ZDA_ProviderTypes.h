// Types every provider of the module shares: which CIM operation a shared
// delivery routine serves, the response handler that goes with it, and the
// policy flags of the array.
#ifndef ZDA_PROVIDER_TYPES_H
#define ZDA_PROVIDER_TYPES_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/ResponseHandler.h>

PEGASUS_NAMESPACE_BEGIN

// The operation being served. The values are fixed: routines that serve
// several operations switch on them, and anything outside 0..6 is ignored.
enum cim_method_e
{
    CIM_ASSOCIATORS = 0,              // ObjectResponseHandler, delivers CIMObject
    CIM_ASSOCIATOR_NAMES = 1,         // ObjectPathResponseHandler, delivers the path
    CIM_REFERENCES = 2,               // ObjectResponseHandler, delivers CIMObject
    CIM_REFERENCE_NAMES = 3,          // ObjectPathResponseHandler, delivers the path
    CIM_GET_INSTANCE = 4,             // InstanceResponseHandler, delivers the instance
    CIM_ENUMERATE_INSTANCES = 5,      // InstanceResponseHandler, delivers the instance
    CIM_ENUMERATE_INSTANCE_NAMES = 6  // ObjectPathResponseHandler, delivers the path
};

// The response handler of the operation named by the cim_method_e passed
// beside it; only that member is valid. Passed by value and owns nothing.
union cim_handler_u
{
    InstanceResponseHandler* instanceHandler;
    ObjectPathResponseHandler* objectPathHandler;
    ObjectResponseHandler* objectHandler;
};

// The array's policy flags, as the internal cache service holds them.
typedef Uint32 cim_policy_t;

// The no-replication-entity policy: a remote element with a known WWN is
// shown as a volume or group of its own class, not as a replication entity.
const cim_policy_t CIM_POLICY_NO_REPLICATION_ENTITY = 0x2;

inline Boolean isNoREPolicy(cim_policy_t policy)
{
    return (policy & CIM_POLICY_NO_REPLICATION_ENTITY) != 0;
}

PEGASUS_NAMESPACE_END

#endif
