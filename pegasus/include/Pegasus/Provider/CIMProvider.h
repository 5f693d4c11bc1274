// CIMProvider: the base of every provider a module creates.
//
// A host obtains a provider from the module's PegasusCreateProvider, calls
// initialize() once with a CIMOMHandle that the host owns, then any of the
// operations of the provider interfaces the object implements (possibly on
// many threads at once), and terminate() last. The host never deletes the
// provider: terminate() releases it, usually with `delete this`.
#ifndef Pegasus_CIMProvider_h
#define Pegasus_CIMProvider_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Provider/Linkage.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/ProviderException.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_PROVIDER_LINKAGE CIMProvider
{
public:
    CIMProvider();
    virtual ~CIMProvider();

    // Called once before any operation. The handle stays valid until
    // terminate() returns; a provider may keep copies of it. An exception
    // aborts loading, and the host then calls terminate().
    virtual void initialize(CIMOMHandle& cimom) = 0;

    // The last call the host makes on this object.
    virtual void terminate() = 0;
};

PEGASUS_NAMESPACE_END

#endif
