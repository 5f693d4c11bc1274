// ZDA_SCSIEndpointProvider: the array's Fibre Channel ports as
// ZDA_SCSIProtocolFCEndpoint instances in root/zda (answering also to
// CIM_SCSIProtocolEndpoint), host ports and remote copy ports alike.
//
// Keys: SystemCreationClassName "ZDA_StorageSystem", SystemName (this
// array's system name), CreationClassName "ZDA_SCSIProtocolFCEndpoint" and
// Name, the port's WWN as 16 upper-case hex digits. docs/shared-keys.md
// fixes them. The static builders are the one source of an endpoint's path
// and shape; the replication module calls them for the local ports of its
// remote copy links.
#ifndef ZDA_SCSI_ENDPOINT_PROVIDER_H
#define ZDA_SCSI_ENDPOINT_PROVIDER_H

#include "ZDA_PortEndpointFrame.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_SCSIEndpointProvider : public ZDA_PortEndpointFrame::EndpointProvider
{
public:
    ZDA_SCSIEndpointProvider();

    // The endpoint's Name for the FC port `port`: its WWN text.
    static String nameOf(const api_port_t& port);
    // The path of the endpoint named `name` on the system `systemName`:
    // host `hostName`, namespace root/zda, the four keys.
    static CIMObjectPath buildObjectPath(
        const String& systemName, const String& hostName, const String& name);
    // The full instance of the FC port `port` on the skeleton of
    // `endpointClass`: the keys, ElementName and Caption "FC port n:s:p",
    // the link's state, ConnectionType 2 (Fibre Channel), ProtocolIFType 56
    // (Fibre Channel) and the port's logical id as TargetRelativePortNumber.
    static CIMInstance buildInstance(
        const api_port_t& port, const String& systemName, const String& hostName, CIMClass& endpointClass);
};

PEGASUS_NAMESPACE_END

#endif
