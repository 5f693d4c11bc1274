// The storage system and the replication groups it hosts.
#include "ZDA_HostedReplicationGroupProvider.h"

#include "ZDA_Common.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_HostedReplicationGroup";

const NavigationRow ROW = {"ZDA_HostedReplicationGroupProvider", "ZDA_HostedReplicationGroup",
    NavigationKind::ThroughCimom,
    navigationShape("ZDA_HostedReplicationGroup", "CIM_HostedCollection", "Antecedent",
        EndClass::StorageSystem, "Dependent", EndClass::ReplicationGroup)};

}  // namespace

void ZDA_HostedReplicationGroupProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
    _systemPath = ZDA_Common::getSystemObjectPath(cimom);
}

bool ZDA_HostedReplicationGroupProvider::_buildAssociationInstances(
    const PairQuery& query, std::vector<EndPair>& pairs)
{
    return pairsThroughCimom(
        _cimom, query, ROW.provider, "ZDA_StorageSystem", _systemPath, "ZDA_ReplicationGroup", pairs);
}

ZDA_NAVIGATION_PROVIDER_DEFINE(ZDA_HostedReplicationGroupProvider, _buildAssociationInstances, ROW.shape)

PEGASUS_NAMESPACE_END
