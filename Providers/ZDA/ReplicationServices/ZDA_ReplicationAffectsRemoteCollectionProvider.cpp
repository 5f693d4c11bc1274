// The replication service and the remote replication collections it affects.
#include "ZDA_ReplicationAffectsRemoteCollectionProvider.h"

#include "ZDA_Common.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_ReplicationAffectsRemoteCollection";

const NavigationRow ROW = {"ZDA_ReplicationAffectsRemoteCollectionProvider",
    "ZDA_ReplicationAffectsRemoteCollection", NavigationKind::Affects,
    navigationShape("ZDA_ReplicationAffectsRemoteCollection", "CIM_ServiceAffectsElement", "AffectingElement",
        EndClass::ReplicationService, "AffectedElement", EndClass::RemoteReplicationCollection)};

}  // namespace

void ZDA_ReplicationAffectsRemoteCollectionProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
}

bool ZDA_ReplicationAffectsRemoteCollectionProvider::_getInstances(
    const PairQuery& query, std::vector<EndPair>& pairs)
{
    return pairsThroughCimom(_cimom, query, ROW.provider, "ZDA_ReplicationService", CIMObjectPath(),
        "ZDA_RemoteReplicationCollection", pairs);
}

ZDA_NAVIGATION_PROVIDER_DEFINE(ZDA_ReplicationAffectsRemoteCollectionProvider, _getInstances, ROW.shape)

PEGASUS_NAMESPACE_END
