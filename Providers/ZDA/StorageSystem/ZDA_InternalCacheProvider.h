// ZDA_InternalCacheProvider: the method provider of ZDA_InternalCache in
// root/PG_Internal, through which providers ask for the system's identity
// over a local connection to their own server.
//
// Its six methods answer from the process-wide ZDA_InternalCacheService,
// which reads the facts from the array on first use: "GetSystemName" (out
// "SystemName", string), "GetSystemHostName" ("SystemHostName", string),
// "GetSystemAddress" ("SystemAddress", string), "GetSystemID" ("SystemID",
// uint32), "GetSystemType" ("SystemType", sint32) and "IsQuadPortSystem"
// ("IsQuadPort", uint8). Each returns 0 with its output parameter; when the
// array has not answered yet (busy or failing) it returns 1 without one, so
// the caller reads an empty or zero fact, and the next call asks the array
// again.
// "Refresh" (no parameters, returns 0) has the service read the facts from
// the array again on the next call, for a process whose array was replaced;
// it reads nothing itself, so it does not open the array for the caller.
//
// The one instance has the InstanceID "localhost-InternalCache"; a path
// naming another is not found. May be called on any number of threads.
#ifndef ZDA_INTERNAL_CACHE_PROVIDER_H
#define ZDA_INTERNAL_CACHE_PROVIDER_H

#include <Pegasus/Common/Config.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

PEGASUS_NAMESPACE_BEGIN

class ZDA_InternalCacheProvider : public CIMMethodProvider
{
public:
    ZDA_InternalCacheProvider();
    virtual ~ZDA_InternalCacheProvider();

    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    // Opens the array for the caller (access denied when refused), checks
    // the class (CIMNotSupportedException) and the instance
    // (CIMObjectNotFoundException), and answers the method; an unknown
    // method throws CIMMethodNotFoundException.
    virtual void invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);
};

PEGASUS_NAMESPACE_END

#endif
