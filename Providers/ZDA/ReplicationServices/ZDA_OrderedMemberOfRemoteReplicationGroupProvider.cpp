// Remote copy groups, and the vvsets that stand for them, with their
// volumes in order.
#include "ZDA_OrderedMemberOfRemoteReplicationGroupProvider.h"

#include <map>
#include <string>

#include "ZDA_Common.h"
#include "ZDA_RemoteReplicationGroupProvider.h"
#include "ZDA_ReplicationGroupProvider.h"
#include "ZDA_StorageVolumeProvider.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_OrderedMemberOfRemoteReplicationGroup";

const NavigationRow ROW = {"ZDA_OrderedMemberOfRemoteReplicationGroupProvider",
    "ZDA_OrderedMemberOfRemoteReplicationGroup", NavigationKind::Deliver,
    [] {
        AssociationShape shape = navigationShape("ZDA_OrderedMemberOfRemoteReplicationGroup",
            {"CIM_OrderedMemberOfCollection", "CIM_MemberOfCollection"}, "Collection",
            {EndClass::RemoteReplicationGroup, EndClass::ReplicationGroup}, "Member",
            {EndClass::StorageVolume});
        shape.keyCheckedClasses = {
            "ZDA_RemoteReplicationGroup", "ZDA_ReplicationGroup", "CIM_ReplicationGroup"};
        return shape;
    }(),
    ClassCheck::InstancesAndNames};

// The volumes named in `names`, by name, read through the volume filter a
// piece of names at a time. False when a query failed (it has logged why).
bool readVolumes(const std::vector<std::string>& names, std::map<std::string, api_VVObj_t>& out)
{
    std::string joined;
    for (const std::string& name : names)
        joined += (joined.empty() ? "" : "|") + name;
    for (const std::string& piece : namePieces(joined))
    {
        VolumeQuery volumes;
        if (volumes.byNames(piece, int(names.size()) + 1) != 0)
            return false;
        for (int i = 0; i < volumes.size(); i++)
            out[volumes[i].name] = volumes[i];
    }
    return true;
}

}  // namespace

void ZDA_OrderedMemberOfRemoteReplicationGroupProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
    _systemName = ZDA_Common::getSystemName(cimom);
}

bool ZDA_OrderedMemberOfRemoteReplicationGroupProvider::_getRelatedInstances(
    const PairQuery& query, std::vector<EndPair>& pairs)
{
    // From a group only that group's members are wanted.
    const CIMName objectClass = query.object.getClassName();
    const bool fromRemoteGroup = objectClass.equal("ZDA_RemoteReplicationGroup");
    const bool fromSet = objectClass.equal("ZDA_ReplicationGroup");
    const String wanted = (fromRemoteGroup || fromSet)
        ? ZDA_Common::extractFromInstanceID(ZDA_Common::getStringProperty(query.object, "InstanceID"))
        : String();
    CIMClass groupClass;
    CIMClass volumeClass;
    if (query.instancesOf == 2)
        volumeClass = queryClass(_cimom, query, "ZDA_StorageVolume");

    // The pairs of one group, whose path and instance are given, with the
    // volumes `names` in order.
    const auto addMembers = [&](const CIMObjectPath& group, const CIMInstance& groupInstance,
                                const std::vector<std::string>& names) {
        std::map<std::string, api_VVObj_t> volumes;
        if (!readVolumes(names, volumes))
            return false;
        for (size_t i = 0; i < names.size(); i++)
        {
            auto found = volumes.find(names[i]);
            if (found == volumes.end())
                continue;
            api_VVObj_t& vv = found->second;
            EndPair pair{group,
                ZDA_StorageVolumeProvider::createObjectPath(String(vv.wwnText), _systemName, _systemAddress),
                groupInstance, CIMInstance()};
            if (query.instancesOf == 2)
                pair.secondInstance = ZDA_StorageVolumeProvider::buildInstance(
                    &vv, _systemName, _systemAddress, volumeClass, nullptr, 0);
            pair.properties.push_back({"AssignedSequence", CIMValue(Uint64(i + 1))});
            pairs.push_back(pair);
        }
        return true;
    };

    if (!fromSet)
    {
        RCopySnapshot snapshot;
        if (!readForPairs(snapshot, API_RCOPY_QUERY_TYPE_GROUPS, ROW.provider))
            return false;
        if (query.instancesOf == 1)
            groupClass = queryClass(_cimom, query, "ZDA_RemoteReplicationGroup");
        for (rm_group_wrapper_t* g = snapshot.rcopy.groups; g; g = g->next)
        {
            const String name(g->group.rm_hdr.rm_name);
            if (fromRemoteGroup && !String::equal(name, wanted))
                continue;
            std::vector<std::string> names;
            for (rm_group_vv_wrapper_t* v = g->gvvs; v; v = v->next)
                names.push_back(v->gvv.rm_local_name);
            CIMInstance groupInstance;
            if (query.instancesOf == 1)
                groupInstance = ZDA_RemoteReplicationGroupProvider::buildInstance(
                    &g->group, groupClass, _systemAddress);
            if (!addMembers(ZDA_RemoteReplicationGroupProvider::buildObjectPath(_systemAddress, name),
                    groupInstance, names))
                return false;
        }
        if (fromRemoteGroup)
            return true;
    }

    VVSetList sets;
    const api_Status_t status = sets.read(fromSet ? (const char*)wanted.getCString() : nullptr);
    if (status.code != 0)
    {
        // A set that is not there has no members.
        if (fromSet && status.code == API_E_NOT_FOUND)
            return true;
        log_message(2, "%s::_getRelatedInstances():api_getVVSets error (%d): %s\n", ROW.provider, status.code,
            (const char*)statusText(status).getCString());
        return false;
    }
    if (query.instancesOf == 1)
        groupClass = queryClass(_cimom, query, "ZDA_ReplicationGroup");
    for (Uint32 s = 0; s < sets.size(); s++)
    {
        api_set_t& set = sets[s];
        if (!hasParentRCGroup(set))
            continue;
        std::vector<std::string> names;
        for (int m = 0; m < set.memberCount; m++)
            names.push_back(set.members[m].name);
        CIMInstance groupInstance;
        if (query.instancesOf == 1)
            groupInstance = ZDA_ReplicationGroupProvider::buildInstance(&set, groupClass, _systemAddress);
        if (!addMembers(ZDA_ReplicationGroupProvider::buildObjectPath(_systemAddress, String(set.name)),
                groupInstance, names))
            return false;
    }
    return true;
}

ZDA_NAVIGATION_PROVIDER_DEFINE(
    ZDA_OrderedMemberOfRemoteReplicationGroupProvider, _getRelatedInstances, ROW.shape)

PEGASUS_NAMESPACE_END
