// The storage system and the remote replication collections it hosts.
#include "ZDA_HostedRemoteReplicationCollectionProvider.h"

#include "ZDA_Common.h"
#include "ZDA_RemoteReplicationCollectionProvider.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_HostedRemoteReplicationCollection";

const NavigationRow ROW = {"ZDA_HostedRemoteReplicationCollectionProvider",
    "ZDA_HostedRemoteReplicationCollection", NavigationKind::HostedByWalk,
    navigationShape("ZDA_HostedRemoteReplicationCollection", "CIM_HostedCollection", "Antecedent",
        EndClass::StorageSystem, "Dependent", EndClass::RemoteReplicationCollection)};

}  // namespace

void ZDA_HostedRemoteReplicationCollectionProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
    _systemPath = ZDA_Common::getSystemObjectPath(cimom);
}

bool ZDA_HostedRemoteReplicationCollectionProvider::_getRelatedInstances(
    const PairQuery& query, std::vector<EndPair>& pairs)
{
    return pairsFromRemoteCopy(_cimom, query, ROW.provider, API_RCOPY_QUERY_TYPE_TARGETS, _systemPath,
        targetWalk(
            _cimom, query, "ZDA_RemoteReplicationCollection",
            [this](const String& target) {
                return ZDA_RemoteReplicationCollectionProvider::buildObjectPath(_systemAddress, target);
            },
            [this](rm_target_t& target, CIMClass& endClass) {
                return ZDA_RemoteReplicationCollectionProvider::buildInstance(
                    &target, endClass, _systemAddress);
            }),
        pairs);
}

ZDA_NAVIGATION_PROVIDER_DEFINE(ZDA_HostedRemoteReplicationCollectionProvider, _getRelatedInstances, ROW.shape)

PEGASUS_NAMESPACE_END
