// Remote copy groups with the access points and ports they replicate over.
#include "ZDA_SAPAvailableForRemoteReplicationGroupProvider.h"

#include <cstring>
#include <set>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_IPProtocolEndpointProvider.h"
#include "ZDA_RemoteReplicationGroupProvider.h"
#include "ZDA_RemoteServiceAccessPointProvider.h"
#include "ZDA_SCSIEndpointProvider.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;
using ZDA_CompanionFrame::ArrayList;

namespace
{

const String ClassName = "ZDA_SAPAvailableForRemoteReplicationGroup";

const NavigationRow ROW = {"ZDA_SAPAvailableForRemoteReplicationGroupProvider",
    "ZDA_SAPAvailableForRemoteReplicationGroup", NavigationKind::Deliver,
    navigationShape("ZDA_SAPAvailableForRemoteReplicationGroup", {"CIM_SAPAvailableForElement"},
        "ManagedElement", {EndClass::RemoteReplicationGroup}, "AvailableSAP",
        {EndClass::SCSIProtocolFCEndpoint, EndClass::IPProtocolEndpoint,
            EndClass::RemoteServiceAccessPoint})};

// A link's type: FC links name an FC port, all others a remote copy IP port.
const uint8_t LINK_FC = 2;

// The port of `ports` at the position `position` ("n:s:p"), or null.
const api_port_t* portAt(const ArrayList<api_port_t>& ports, const char* position)
{
    for (const api_port_t& port : ports)
        if (ZDA_PortEndpointFrame::positionOf(port) == String(position))
            return &port;
    return nullptr;
}

// Reads one port list under the semaphore; false (logged) on a failure.
bool readPorts(int (*list)(int*, api_port_t**), const char* what, ArrayList<api_port_t>& ports)
{
    const int rc = ZDA_CompanionFrame::callUnderSemaphore([&] { return list(ports.count(), ports.out()); });
    if (rc == 0)
        return true;
    log_message(2, "%s::_getRelatedInstances(): %s error (%d)\n", ROW.provider, what, rc);
    return false;
}

}  // namespace

void ZDA_SAPAvailableForRemoteReplicationGroupProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
    _systemName = ZDA_Common::getSystemName(cimom);
}

bool ZDA_SAPAvailableForRemoteReplicationGroupProvider::_getRelatedInstances(
    const PairQuery& query, std::vector<EndPair>& pairs)
{
    RCopySnapshot snapshot;
    if (!readForPairs(snapshot, API_RCOPY_QUERY_TYPE_ALL, ROW.provider))
        return false;
    ArrayList<api_port_t> fcPorts;
    ArrayList<api_port_t> ipPorts;
    if (!readPorts(api_getFCPorts, "api_getFCPorts", fcPorts) ||
        !readPorts(api_getRCIPPorts, "api_getRCIPPorts", ipPorts))
        return false;

    CIMClass groupClass;
    CIMClass accessPointClass;
    CIMClass fcClass;
    CIMClass ipClass;
    if (query.instancesOf == 1)
        groupClass = queryClass(_cimom, query, "ZDA_RemoteReplicationGroup");
    if (query.instancesOf == 2)
    {
        accessPointClass = queryClass(_cimom, query, "ZDA_RemoteServiceAccessPoint");
        fcClass = queryClass(_cimom, query, "ZDA_SCSIProtocolFCEndpoint");
        ipClass = queryClass(_cimom, query, "ZDA_IPProtocolEndpoint");
    }

    for (rm_group_wrapper_t* g = snapshot.rcopy.groups; g; g = g->next)
    {
        const CIMObjectPath group = ZDA_RemoteReplicationGroupProvider::buildObjectPath(
            _systemAddress, String(g->group.rm_hdr.rm_name));
        CIMInstance groupInstance;
        if (query.instancesOf == 1)
            groupInstance = ZDA_RemoteReplicationGroupProvider::buildInstance(
                &g->group, groupClass, _systemAddress);
        std::set<String> listed;
        const auto add = [&](const CIMObjectPath& path, const std::function<CIMInstance()>& build) {
            if (!listed.insert(path.toString()).second)
                return;
            pairs.push_back(
                EndPair{group, path, groupInstance, query.instancesOf == 2 ? build() : CIMInstance()});
        };
        for (int t = 0; t < g->gtarget_count; t++)
        {
            const char* targetName = g->gtargets[t].rm_target;
            for (int i = 0; i < snapshot.rcopy.target_count; i++)
            {
                rm_target_t& target = snapshot.rcopy.targets[i];
                if (std::strncmp(target.rm_hdr.rm_name, targetName, API_NAME_LEN) != 0)
                    continue;
                add(ZDA_RemoteServiceAccessPointProvider::buildObjectPath(_systemAddress, String(targetName)),
                    [&] {
                        return ZDA_RemoteServiceAccessPointProvider::buildInstance(
                            &target, accessPointClass, _systemAddress);
                    });
            }
            for (int l = 0; l < snapshot.rcopy.link_count; l++)
            {
                const rm_link_t& link = snapshot.rcopy.links[l];
                if (std::strncmp(link.rm_target, targetName, API_NAME_LEN) != 0)
                    continue;
                const bool fc = link.rm_type == LINK_FC;
                const api_port_t* port = portAt(fc ? fcPorts : ipPorts, link.rm_local_port);
                if (!port)
                {
                    log_message(3, "%s: no %s port at %s for link %s\n", ROW.provider, fc ? "FC" : "IP",
                        link.rm_local_port, link.rm_hdr.rm_name);
                    continue;
                }
                if (fc)
                    add(ZDA_SCSIEndpointProvider::buildObjectPath(
                            _systemName, _systemAddress, ZDA_SCSIEndpointProvider::nameOf(*port)),
                        [&] {
                            return ZDA_SCSIEndpointProvider::buildInstance(
                                *port, _systemName, _systemAddress, fcClass);
                        });
                else
                    add(ZDA_IPProtocolEndpointProvider::buildObjectPath(
                            _systemName, _systemAddress, ZDA_IPProtocolEndpointProvider::nameOf(*port)),
                        [&] {
                            return ZDA_IPProtocolEndpointProvider::buildInstance(
                                *port, _systemName, _systemAddress, ipClass);
                        });
            }
        }
    }
    return true;
}

ZDA_NAVIGATION_PROVIDER_DEFINE(
    ZDA_SAPAvailableForRemoteReplicationGroupProvider, _getRelatedInstances, ROW.shape)

PEGASUS_NAMESPACE_END
