// Each remote copy target's collection with the target's access point.
#include "ZDA_MemberOfRemoteReplicationCollectionProvider.h"

#include "ZDA_Common.h"
#include "ZDA_RemoteReplicationCollectionProvider.h"
#include "ZDA_RemoteServiceAccessPointProvider.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_MemberOfRemoteReplicationCollection";

const NavigationRow ROW = {"ZDA_MemberOfRemoteReplicationCollectionProvider",
    "ZDA_MemberOfRemoteReplicationCollection", NavigationKind::Deliver,
    navigationShape("ZDA_MemberOfRemoteReplicationCollection", {"CIM_MemberOfCollection"}, "Collection",
        {EndClass::RemoteReplicationCollection}, "Member", {EndClass::RemoteServiceAccessPoint}),
    ClassCheck::Instances};

}  // namespace

void ZDA_MemberOfRemoteReplicationCollectionProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
}

bool ZDA_MemberOfRemoteReplicationCollectionProvider::_getRelatedInstances(
    const PairQuery& query, std::vector<EndPair>& pairs)
{
    RCopySnapshot snapshot;
    if (!readForPairs(snapshot, API_RCOPY_QUERY_TYPE_TARGETS, ROW.provider))
        return false;
    CIMClass endClass;
    if (query.instancesOf != 0)
        endClass = queryClass(_cimom, query,
            query.instancesOf == 1 ? "ZDA_RemoteReplicationCollection" : "ZDA_RemoteServiceAccessPoint");
    for (int i = 0; i < snapshot.rcopy.target_count; i++)
    {
        rm_target_t& target = snapshot.rcopy.targets[i];
        const String name(target.rm_hdr.rm_name);
        EndPair pair{ZDA_RemoteReplicationCollectionProvider::buildObjectPath(_systemAddress, name),
            ZDA_RemoteServiceAccessPointProvider::buildObjectPath(_systemAddress, name), CIMInstance(),
            CIMInstance()};
        if (query.instancesOf == 1)
            pair.firstInstance = ZDA_RemoteReplicationCollectionProvider::buildInstance(
                &target, endClass, _systemAddress);
        if (query.instancesOf == 2)
            pair.secondInstance = ZDA_RemoteServiceAccessPointProvider::buildInstance(
                &target, endClass, _systemAddress);
        pairs.push_back(pair);
    }
    return true;
}

ZDA_NAVIGATION_PROVIDER_DEFINE(
    ZDA_MemberOfRemoteReplicationCollectionProvider, _getRelatedInstances, ROW.shape)

PEGASUS_NAMESPACE_END
