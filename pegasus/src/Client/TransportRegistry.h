// Read access to the registered transport factories, for CIMClient.
#ifndef Pegasus_Client_TransportRegistry_h
#define Pegasus_Client_TransportRegistry_h

#include <Pegasus/Client/CIMClientTransport.h>

PEGASUS_NAMESPACE_BEGIN

namespace ClientTransportRegistry
{
// Copies of the current factories; empty when none is registered.
CIMClientNetworkTransportFactory networkFactory();
CIMClientLocalSocketTransportFactory localSocketFactory();
CIMClientLoopbackTransportFactory loopbackFactory();
}  // namespace ClientTransportRegistry

PEGASUS_NAMESPACE_END

#endif
