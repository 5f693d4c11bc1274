// The replication service and its capabilities.
#include "ZDA_CapabilitiesOfReplicationService.h"

#include "ZDA_Common.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_CapabilitiesOfReplicationService";

const NavigationRow ROW = {"ZDA_CapabilitiesOfReplicationService", "ZDA_CapabilitiesOfReplicationService",
    NavigationKind::ThroughCimom,
    navigationShape("ZDA_CapabilitiesOfReplicationService", "CIM_ElementCapabilities", "ManagedElement",
        EndClass::ReplicationService, "Capabilities", EndClass::ReplicationServiceCapabilities)};

}  // namespace

void ZDA_CapabilitiesOfReplicationService::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
}

bool ZDA_CapabilitiesOfReplicationService::_getInstances(const PairQuery& query, std::vector<EndPair>& pairs)
{
    return pairsThroughCimom(_cimom, query, ROW.provider, "ZDA_ReplicationService", CIMObjectPath(),
        "ZDA_ReplicationServiceCapabilities", pairs);
}

ZDA_NAVIGATION_PROVIDER_DEFINE(ZDA_CapabilitiesOfReplicationService, _getInstances, ROW.shape)

PEGASUS_NAMESPACE_END
