// The storage system and the remote replication groups it hosts.
#include "ZDA_HostedRemoteReplicationGroupProvider.h"

#include "ZDA_Common.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_HostedRemoteReplicationGroup";

const NavigationRow ROW = {"ZDA_HostedRemoteReplicationGroupProvider", "ZDA_HostedRemoteReplicationGroup",
    NavigationKind::ThroughCimom,
    navigationShape("ZDA_HostedRemoteReplicationGroup", "CIM_HostedCollection", "Antecedent",
        EndClass::StorageSystem, "Dependent", EndClass::RemoteReplicationGroup)};

}  // namespace

void ZDA_HostedRemoteReplicationGroupProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
    _systemPath = ZDA_Common::getSystemObjectPath(cimom);
}

bool ZDA_HostedRemoteReplicationGroupProvider::_buildAssociationInstances(
    const PairQuery& query, std::vector<EndPair>& pairs)
{
    return pairsThroughCimom(
        _cimom, query, ROW.provider, "ZDA_StorageSystem", _systemPath, "ZDA_RemoteReplicationGroup", pairs);
}

ZDA_NAVIGATION_PROVIDER_DEFINE(
    ZDA_HostedRemoteReplicationGroupProvider, _buildAssociationInstances, ROW.shape)

PEGASUS_NAMESPACE_END
