// The replication service and the replication groups it affects.
#include "ZDA_ReplicationAffectsElement.h"

#include "ZDA_Common.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_ReplicationAffectsElement";

const NavigationRow ROW = {"ZDA_ReplicationAffectsElement", "ZDA_ReplicationAffectsElement",
    NavigationKind::Affects,
    navigationShape("ZDA_ReplicationAffectsElement", "CIM_ServiceAffectsElement", "AffectingElement",
        EndClass::ReplicationService, "AffectedElement", EndClass::ReplicationGroup, true)};

}  // namespace

void ZDA_ReplicationAffectsElement::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
}

bool ZDA_ReplicationAffectsElement::_getInstances(const PairQuery& query, std::vector<EndPair>& pairs)
{
    return pairsThroughCimom(_cimom, query, ROW.provider, "ZDA_ReplicationService", CIMObjectPath(),
        "ZDA_ReplicationGroup", pairs);
}

ZDA_NAVIGATION_PROVIDER_DEFINE(ZDA_ReplicationAffectsElement, _getInstances, ROW.shape)

PEGASUS_NAMESPACE_END
