#include <Pegasus/Client/CIMClientTransport.h>
#include "TransportRegistry.h"

#include <Pegasus/Common/Exception.h>

#include <mutex>
#include <utility>

PEGASUS_NAMESPACE_BEGIN

CIMValue CIMClientTransport::invokePullOperation(
    const CIMNamespaceName&, const String& operation, const Array<CIMParamValue>&, Array<CIMParamValue>&)
{
    throw CIMException(CIM_ERR_NOT_SUPPORTED, operation + " is not supported by this connection.");
}

CIMClientTransport::~CIMClientTransport() {}

const char CIMClientTransports::LOCAL_SOCKET_ENVIRONMENT_VARIABLE[] = "ZDA_CIMSERVER_SOCKET";

namespace
{

// Factories are copied out under the lock and called outside it, so a
// factory may take its time (or register another) without blocking others.
struct Registry
{
    std::mutex mutex;
    CIMClientNetworkTransportFactory network;
    CIMClientLocalSocketTransportFactory localSocket;
    CIMClientLoopbackTransportFactory loopback;
};

Registry& registry()
{
    static Registry* instance = new Registry;  // never destroyed: usable during exit
    return *instance;
}

template <class Factory>
void store(Factory Registry::*slot, Factory factory)
{
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    (r.*slot).swap(factory);
}

template <class Factory>
Factory load(Factory Registry::*slot)
{
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    return r.*slot;
}

}  // namespace

void CIMClientTransports::setNetworkTransportFactory(CIMClientNetworkTransportFactory factory)
{
    store(&Registry::network, std::move(factory));
}

void CIMClientTransports::setLocalSocketTransportFactory(CIMClientLocalSocketTransportFactory factory)
{
    store(&Registry::localSocket, std::move(factory));
}

void CIMClientTransports::setLoopbackTransportFactory(CIMClientLoopbackTransportFactory factory)
{
    store(&Registry::loopback, std::move(factory));
}

Boolean CIMClientTransports::hasNetworkTransportFactory()
{
    return static_cast<bool>(load(&Registry::network));
}

Boolean CIMClientTransports::hasLocalSocketTransportFactory()
{
    return static_cast<bool>(load(&Registry::localSocket));
}

Boolean CIMClientTransports::hasLoopbackTransportFactory()
{
    return static_cast<bool>(load(&Registry::loopback));
}

namespace ClientTransportRegistry
{

CIMClientNetworkTransportFactory networkFactory()
{
    return load(&Registry::network);
}

CIMClientLocalSocketTransportFactory localSocketFactory()
{
    return load(&Registry::localSocket);
}

CIMClientLoopbackTransportFactory loopbackFactory()
{
    return load(&Registry::loopback);
}

}  // namespace ClientTransportRegistry

PEGASUS_NAMESPACE_END
