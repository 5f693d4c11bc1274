// Response handlers: how a provider hands the results of one operation back
// to the host that called it.
//
// A provider calls processing() first, then deliver() (or deliverParamValue())
// once per result or once per array of results, then complete(). The host
// supplies the concrete handler and decides what each call does: checking
// what is delivered, collecting or forwarding it. Host handlers report a
// refused delivery by throwing CIMException into the provider. A handler is
// used by the one thread serving its operation.
#ifndef Pegasus_ResponseHandler_h
#define Pegasus_ResponseHandler_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/OperationContext.h>

PEGASUS_NAMESPACE_BEGIN

// The handler of an operation without results (modifyInstance,
// deleteInstance), and the base of every other handler.
class PEGASUS_COMMON_LINKAGE ResponseHandler
{
public:
    virtual ~ResponseHandler();

    // The provider has started work on the operation.
    virtual void processing() = 0;

    // The provider has delivered everything. A host sends results that were
    // delivered but not yet passed on when this is called.
    virtual void complete() = 0;

    // The context that goes back with the response (a copy is stored).
    void setContext(const OperationContext& context);

protected:
    ResponseHandler();
    ResponseHandler(const ResponseHandler& handler);
    ResponseHandler& operator=(const ResponseHandler& handler);

    // A copy of the context last given to setContext(); empty if none.
    OperationContext getContext() const;

private:
    OperationContext _context;
};

// Results of getInstance and enumerateInstances.
class PEGASUS_COMMON_LINKAGE InstanceResponseHandler : virtual public ResponseHandler
{
public:
    virtual void deliver(const CIMInstance& instance) = 0;
    virtual void deliver(const Array<CIMInstance>& instances) = 0;
};

// Results of enumerateInstanceNames, createInstance, associatorNames and
// referenceNames.
class PEGASUS_COMMON_LINKAGE ObjectPathResponseHandler : virtual public ResponseHandler
{
public:
    virtual void deliver(const CIMObjectPath& objectPath) = 0;
    virtual void deliver(const Array<CIMObjectPath>& objectPaths) = 0;
};

// Results of invokeMethod: output parameters in any number, and the one
// return value.
class PEGASUS_COMMON_LINKAGE MethodResultResponseHandler : virtual public ResponseHandler
{
public:
    virtual void deliverParamValue(const CIMParamValue& outParamValue) = 0;
    virtual void deliverParamValue(const Array<CIMParamValue>& outParamValues) = 0;
    virtual void deliver(const CIMValue& returnValue) = 0;
};

// Results of associators and references (an instance converts to CIMObject).
class PEGASUS_COMMON_LINKAGE ObjectResponseHandler : virtual public ResponseHandler
{
public:
    virtual void deliver(const CIMObject& object) = 0;
    virtual void deliver(const Array<CIMObject>& objects) = 0;
};

PEGASUS_NAMESPACE_END

#endif
