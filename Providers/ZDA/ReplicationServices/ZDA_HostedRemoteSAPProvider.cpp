// The storage system and the remote service access points it hosts.
#include "ZDA_HostedRemoteSAPProvider.h"

#include "ZDA_Common.h"
#include "ZDA_RemoteServiceAccessPointProvider.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_HostedRemoteSAP";

const NavigationRow ROW = {"ZDA_HostedRemoteSAPProvider", "ZDA_HostedRemoteSAP", NavigationKind::HostedByWalk,
    navigationShape("ZDA_HostedRemoteSAP", "CIM_HostedAccessPoint", "Antecedent", EndClass::StorageSystem,
        "Dependent", EndClass::RemoteServiceAccessPoint)};

}  // namespace

void ZDA_HostedRemoteSAPProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
    _systemPath = ZDA_Common::getSystemObjectPath(cimom);
}

bool ZDA_HostedRemoteSAPProvider::_getRelatedInstances(const PairQuery& query, std::vector<EndPair>& pairs)
{
    return pairsFromRemoteCopy(_cimom, query, ROW.provider, API_RCOPY_QUERY_TYPE_TARGETS, _systemPath,
        targetWalk(
            _cimom, query, "ZDA_RemoteServiceAccessPoint",
            [this](const String& target) {
                return ZDA_RemoteServiceAccessPointProvider::buildObjectPath(_systemAddress, target);
            },
            [this](rm_target_t& target, CIMClass& endClass) {
                return ZDA_RemoteServiceAccessPointProvider::buildInstance(&target, endClass, _systemAddress);
            }),
        pairs);
}

ZDA_NAVIGATION_PROVIDER_DEFINE(ZDA_HostedRemoteSAPProvider, _getRelatedInstances, ROW.shape)

PEGASUS_NAMESPACE_END
