// The array's remote copy IP ports as IP protocol endpoints.
#include "ZDA_IPProtocolEndpointProvider.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

const String ClassName = "ZDA_IPProtocolEndpoint";

const Uint16 IPV4 = 1;
const Uint16 IF_TYPE_IPV4 = 4096;

const ZDA_PortEndpointFrame::EndpointKind KIND = {"ZDA_IPProtocolEndpoint", "CIM_IPProtocolEndpoint",
    "ZDA_IPProtocolEndpointProvider", api_getRCIPPorts, ZDA_IPProtocolEndpointProvider::nameOf,
    ZDA_IPProtocolEndpointProvider::buildInstance};

}  // namespace

ZDA_IPProtocolEndpointProvider::ZDA_IPProtocolEndpointProvider() : EndpointProvider(KIND) {}

String ZDA_IPProtocolEndpointProvider::nameOf(const api_port_t& port)
{
    return ZDA_PortEndpointFrame::positionOf(port);
}

CIMObjectPath ZDA_IPProtocolEndpointProvider::buildObjectPath(
    const String& systemName, const String& hostName, const String& name)
{
    return ZDA_PortEndpointFrame::endpointPath(KIND.className, systemName, hostName, name);
}

CIMInstance ZDA_IPProtocolEndpointProvider::buildInstance(
    const api_port_t& port, const String& systemName, const String& hostName, CIMClass& endpointClass)
{
    const String position = ZDA_PortEndpointFrame::positionOf(port);
    CIMInstance instance = ZDA_PortEndpointFrame::endpointInstance(KIND.className, systemName, hostName,
        position, "RCIP port " + position, port.linkUp != 0, endpointClass);
    const String address(port.ipAddr);
    ZDA_Common::setPropertyValue(instance, "ProtocolIFType", IF_TYPE_IPV4);
    ZDA_Common::setPropertyValue(instance, "IPv4Address", address);
    ZDA_Common::setPropertyValue(instance, "Address", address);
    ZDA_Common::setPropertyValue(instance, "AddressType", IPV4);
    ZDA_Common::setPropertyValue(instance, "IPVersionSupport", IPV4);
    return instance;
}

PEGASUS_NAMESPACE_END
