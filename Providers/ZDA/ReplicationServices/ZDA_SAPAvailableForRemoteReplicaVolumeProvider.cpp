// Volumes of remote copy groups with the access points and ports their
// groups replicate over, gathered through the server.
#include "ZDA_SAPAvailableForRemoteReplicaVolumeProvider.h"

#include <map>
#include <set>

#include <Pegasus/Common/CIMObject.h>

#include "ZDA_Common.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_SAPAvailableForRemoteReplicaVolume";

const NavigationRow ROW = {"ZDA_SAPAvailableForRemoteReplicaVolumeProvider",
    "ZDA_SAPAvailableForRemoteReplicaVolume", NavigationKind::Gather,
    navigationShape("ZDA_SAPAvailableForRemoteReplicaVolume", {"CIM_SAPAvailableForElement"},
        "ManagedElement", {EndClass::StorageVolume}, "AvailableSAP",
        {EndClass::SCSIProtocolFCEndpoint, EndClass::IPProtocolEndpoint,
            EndClass::RemoteServiceAccessPoint})};

const char MEMBERSHIP[] = "ZDA_OrderedMemberOfRemoteReplicationGroup";
const char GROUP_ACCESS[] = "ZDA_SAPAvailableForRemoteReplicationGroup";
const char REMOTE_GROUP[] = "ZDA_RemoteReplicationGroup";

}  // namespace

void ZDA_SAPAvailableForRemoteReplicaVolumeProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
}

bool ZDA_SAPAvailableForRemoteReplicaVolumeProvider::_getRelatedInstances(
    const PairQuery& query, std::vector<EndPair>& pairs)
{
    try
    {
        // Each volume with its remote copy group: from the volume asked
        // about, or from every membership of a remote copy group.
        std::vector<std::pair<CIMObjectPath, CIMObjectPath>> memberships;
        if (query.object.getClassName().equal("ZDA_StorageVolume"))
        {
            Array<CIMObjectPath> groups = _cimom.associatorNames(
                query.context, NAMESPACE, query.object, MEMBERSHIP, REMOTE_GROUP, "Member", "Collection");
            for (Uint32 i = 0; i < groups.size(); i++)
                memberships.push_back({query.object, groups[i]});
        }
        else
        {
            Array<CIMObjectPath> links = _cimom.enumerateInstanceNames(query.context, NAMESPACE, MEMBERSHIP);
            for (Uint32 i = 0; i < links.size(); i++)
            {
                CIMObjectPath group;
                CIMObjectPath volume;
                if (endReference(links[i], "Collection", group) && endReference(links[i], "Member", volume) &&
                    group.getClassName().equal(REMOTE_GROUP))
                    memberships.push_back({volume, group});
            }
        }

        // What each group has available, asked once per group.
        std::map<String, std::vector<std::pair<CIMObjectPath, CIMInstance>>> available;
        std::map<String, CIMInstance> volumeInstances;
        for (const auto& membership : memberships)
        {
            const String group = membership.second.toString();
            if (available.count(group))
                continue;
            std::vector<std::pair<CIMObjectPath, CIMInstance>>& points = available[group];
            if (query.instancesOf == 2)
            {
                Array<CIMObject> objects = _cimom.associators(query.context, NAMESPACE, membership.second,
                    GROUP_ACCESS, CIMName(), "ManagedElement", "AvailableSAP", query.includeQualifiers,
                    query.includeClassOrigin, query.propertyList);
                for (Uint32 i = 0; i < objects.size(); i++)
                    points.push_back({objects[i].getPath(), CIMInstance(objects[i])});
            }
            else
            {
                Array<CIMObjectPath> paths = _cimom.associatorNames(query.context, NAMESPACE,
                    membership.second, GROUP_ACCESS, CIMName(), "ManagedElement", "AvailableSAP");
                for (Uint32 i = 0; i < paths.size(); i++)
                    points.push_back({paths[i], CIMInstance()});
            }
        }

        std::set<String> listed;
        for (const auto& membership : memberships)
        {
            const CIMObjectPath& volume = membership.first;
            const String volumeText = volume.toString();
            CIMInstance volumeInstance;
            if (query.instancesOf == 1)
            {
                auto known = volumeInstances.find(volumeText);
                if (known == volumeInstances.end())
                    known = volumeInstances
                                .insert({volumeText,
                                    _cimom.getInstance(query.context, NAMESPACE, volume, false,
                                        query.includeQualifiers, query.includeClassOrigin,
                                        query.propertyList)})
                                .first;
                volumeInstance = known->second;
            }
            for (const auto& point : available[membership.second.toString()])
                if (listed.insert(volumeText + "|" + point.first.toString()).second)
                    pairs.push_back(EndPair{volume, point.first, volumeInstance, point.second});
        }
    }
    catch (const Exception& e)
    {
        log_message(
            2, "%s::_getRelatedInstances(): %s\n", ROW.provider, (const char*)e.getMessage().getCString());
        return false;
    }
    return true;
}

ZDA_NAVIGATION_PROVIDER_DEFINE(
    ZDA_SAPAvailableForRemoteReplicaVolumeProvider, _getRelatedInstances, ROW.shape)

PEGASUS_NAMESPACE_END
