// The replication service and the remote replication groups it affects.
#include "ZDA_ReplicationServiceAffectsRemoteReplicationGroupProvider.h"

#include "ZDA_Common.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_ReplicationServiceAffectsRemoteReplicationGroup";

const NavigationRow ROW = {"ZDA_ReplicationServiceAffectsRemoteReplicationGroupProvider",
    "ZDA_ReplicationServiceAffectsRemoteReplicationGroup", NavigationKind::Affects,
    navigationShape("ZDA_ReplicationServiceAffectsRemoteReplicationGroup", "CIM_ServiceAffectsElement",
        "AffectingElement", EndClass::ReplicationService, "AffectedElement", EndClass::RemoteReplicationGroup,
        true)};

}  // namespace

void ZDA_ReplicationServiceAffectsRemoteReplicationGroupProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
}

bool ZDA_ReplicationServiceAffectsRemoteReplicationGroupProvider::_getInstances(
    const PairQuery& query, std::vector<EndPair>& pairs)
{
    return pairsThroughCimom(_cimom, query, ROW.provider, "ZDA_ReplicationService", CIMObjectPath(),
        "ZDA_RemoteReplicationGroup", pairs);
}

ZDA_NAVIGATION_PROVIDER_DEFINE(
    ZDA_ReplicationServiceAffectsRemoteReplicationGroupProvider, _getInstances, ROW.shape)

PEGASUS_NAMESPACE_END
