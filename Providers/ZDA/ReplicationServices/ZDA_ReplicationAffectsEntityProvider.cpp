// The replication service and the far-side entities it affects.
#include "ZDA_ReplicationAffectsEntityProvider.h"

#include "ZDA_Common.h"
#include "ZDA_ReplicationEntityProvider.h"
#include "ZDA_ReplicationServiceProvider.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_ReplicationAffectsEntity";

const NavigationRow ROW = {"ZDA_ReplicationAffectsEntityProvider", "ZDA_ReplicationAffectsEntity",
    NavigationKind::Deliver,
    navigationShape("ZDA_ReplicationAffectsEntity", "CIM_ServiceAffectsElement", "AffectingElement",
        EndClass::ReplicationService, "AffectedElement", EndClass::ReplicationEntity)};

// The request checks test the roles of the synchronization associations,
// SystemElement for the service's end and SyncedElement for the entities',
// not the roles the instances carry: a request naming AffectingElement or
// AffectedElement is refused, and one naming the others finds no end.
const AssociationShape REQUEST_SHAPE = [] {
    AssociationShape shape = ROW.shape;
    shape.first.role = "SystemElement";
    shape.second.role = "SyncedElement";
    return shape;
}();

}  // namespace

void ZDA_ReplicationAffectsEntityProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
    _servicePath = ZDA_ReplicationServiceProvider::buildObjectPath(
        ZDA_Common::getSystemName(cimom), _systemAddress);
}

bool ZDA_ReplicationAffectsEntityProvider::_getRelatedInstances(
    const PairQuery& query, std::vector<EndPair>& pairs)
{
    return pairsFromRemoteCopy(
        _cimom, query, ROW.provider, API_RCOPY_QUERY_TYPE_ALL, _servicePath,
        [&](api_rcopy_t& rcopy, bool withInstances, std::vector<WalkEnd>& ends) {
            CIMClass entityClass;
            CIMClass groupClass;
            CIMClass volumeClass;
            if (withInstances)
            {
                entityClass = moduleClass(_cimom, "ZDA_ReplicationEntity", query.includeQualifiers,
                    query.includeClassOrigin, query.propertyList);
                groupClass = moduleClass(
                    _cimom, "ZDA_RemoteReplicationGroup", false, false, CIMPropertyList());
                volumeClass = moduleClass(_cimom, "ZDA_StorageVolume", false, false, CIMPropertyList());
            }
            ZDA_ReplicationEntityProvider::forEachEntity(
                rcopy, true, true, [&](const char* type, const String& name, const String& host) {
                    WalkEnd end;
                    if (withInstances)
                    {
                        end.instance = ZDA_ReplicationEntityProvider::buildInstance(_systemAddress, host,
                            type, name, String::equal(type, "RG") ? groupClass : volumeClass, entityClass);
                        end.path = end.instance.getPath();
                    }
                    else
                    {
                        end.path = ZDA_ReplicationEntityProvider::buildObjectPath(
                            _systemAddress, host, type, name);
                    }
                    ends.push_back(end);
                    return false;
                });
        },
        pairs);
}

ZDA_NAVIGATION_PROVIDER_DEFINE(ZDA_ReplicationAffectsEntityProvider, _getRelatedInstances, REQUEST_SHAPE)

PEGASUS_NAMESPACE_END
