// ZDA_IPProtocolEndpointProvider: the array's remote copy IP ports as
// ZDA_IPProtocolEndpoint instances in root/zda (answering also to
// CIM_IPProtocolEndpoint).
//
// Keys: SystemCreationClassName "ZDA_StorageSystem", SystemName (this
// array's system name), CreationClassName "ZDA_IPProtocolEndpoint" and
// Name, the port's position "n:s:p" (its address may change, its position
// does not). docs/shared-keys.md fixes them. The static builders are the one
// source of an endpoint's path and shape; the replication module calls them
// for the local ports of its remote copy links.
#ifndef ZDA_IP_PROTOCOL_ENDPOINT_PROVIDER_H
#define ZDA_IP_PROTOCOL_ENDPOINT_PROVIDER_H

#include "ZDA_PortEndpointFrame.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_IPProtocolEndpointProvider : public ZDA_PortEndpointFrame::EndpointProvider
{
public:
    ZDA_IPProtocolEndpointProvider();

    // The endpoint's Name for the IP port `port`: its position.
    static String nameOf(const api_port_t& port);
    // The path of the endpoint named `name` on the system `systemName`:
    // host `hostName`, namespace root/zda, the four keys.
    static CIMObjectPath buildObjectPath(
        const String& systemName, const String& hostName, const String& name);
    // The full instance of the IP port `port` on the skeleton of
    // `endpointClass`: the keys, ElementName and Caption "RCIP port n:s:p",
    // the link's state, the port's address as IPv4Address and Address,
    // AddressType and IPVersionSupport 1 (IPv4), ProtocolIFType 4096 (IPv4).
    static CIMInstance buildInstance(
        const api_port_t& port, const String& systemName, const String& hostName, CIMClass& endpointClass);
};

PEGASUS_NAMESPACE_END

#endif
