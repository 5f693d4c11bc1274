// A CIMClient transport that reaches a dispatcher in the same process, so
// that CIMClient::connectLocal() works without sockets. Every request runs
// as the dispatcher's local user, like a client on the server's local
// socket. CIM errors reach the client as a network client sees them: the
// code, and the description text ("CIM_ERR_NOT_FOUND: <message>") as the
// message.
//
// Requests run synchronously on the calling thread, so the timeout is kept
// but never expires. The transport holds the dispatcher weakly: once it is
// gone, operations throw CannotConnectException.
#ifndef ZDA_SERVER_LOOPBACK_TRANSPORT_H
#define ZDA_SERVER_LOOPBACK_TRANSPORT_H

#include "Dispatcher.h"

#include <Pegasus/Client/CIMClientTransport.h>

#include <memory>

namespace zda::server
{

// A factory for CIMClientTransports::setLoopbackTransportFactory.
Pegasus::CIMClientLoopbackTransportFactory loopbackTransportFactory(std::weak_ptr<Dispatcher> dispatcher);

}  // namespace zda::server

#endif
