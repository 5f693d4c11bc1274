// The array's FC ports as SCSI protocol endpoints.
#include "ZDA_SCSIEndpointProvider.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

const String ClassName = "ZDA_SCSIProtocolFCEndpoint";

const Uint16 CONNECTION_FIBRE_CHANNEL = 2;
const Uint16 IF_TYPE_FIBRE_CHANNEL = 56;

const ZDA_PortEndpointFrame::EndpointKind KIND = {"ZDA_SCSIProtocolFCEndpoint", "CIM_SCSIProtocolEndpoint",
    "ZDA_SCSIEndpointProvider", api_getFCPorts, ZDA_SCSIEndpointProvider::nameOf,
    ZDA_SCSIEndpointProvider::buildInstance};

}  // namespace

ZDA_SCSIEndpointProvider::ZDA_SCSIEndpointProvider() : EndpointProvider(KIND) {}

String ZDA_SCSIEndpointProvider::nameOf(const api_port_t& port)
{
    char text[17];
    snprintf(text, sizeof text, "%016llX", static_cast<unsigned long long>(port.wwn));
    return String(text);
}

CIMObjectPath ZDA_SCSIEndpointProvider::buildObjectPath(
    const String& systemName, const String& hostName, const String& name)
{
    return ZDA_PortEndpointFrame::endpointPath(KIND.className, systemName, hostName, name);
}

CIMInstance ZDA_SCSIEndpointProvider::buildInstance(
    const api_port_t& port, const String& systemName, const String& hostName, CIMClass& endpointClass)
{
    CIMInstance instance = ZDA_PortEndpointFrame::endpointInstance(KIND.className, systemName, hostName,
        nameOf(port), "FC port " + ZDA_PortEndpointFrame::positionOf(port), port.linkUp != 0, endpointClass);
    ZDA_Common::setPropertyValue(instance, "NameFormat", String("WWN"));
    ZDA_Common::setPropertyValue(instance, "ProtocolIFType", IF_TYPE_FIBRE_CHANNEL);
    ZDA_Common::setPropertyValue(instance, "ConnectionType", CONNECTION_FIBRE_CHANNEL);
    ZDA_Common::setPropertyValue(instance, "TargetRelativePortNumber", Uint32(port.lpid));
    return instance;
}

PEGASUS_NAMESPACE_END
