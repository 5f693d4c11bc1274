// Jobs with the volumes and remote copy groups they act on.
#include "ZDA_AffectedJobElementProvider.h"

#include <cstring>
#include <string>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_ConcreteJobProvider.h"
#include "ZDA_RemoteReplicationGroupProvider.h"
#include "ZDA_ReplicationEntityProvider.h"
#include "ZDA_StorageVolumeProvider.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;
using ZDA_CompanionFrame::ArrayList;

namespace
{

const String ClassName = "ZDA_AffectedJobElement";

const NavigationRow ROW = {
    "ZDA_AffectedJobElementProvider", "ZDA_AffectedJobElement", NavigationKind::Deliver, [] {
        AssociationShape shape = navigationShape("ZDA_AffectedJobElement", {"CIM_AffectedJobElement"},
            "AffectingElement", {EndClass::ConcreteJob}, "AffectedElement",
            {EndClass::StorageVolume, EndClass::RemoteReplicationGroup, EndClass::ReplicationEntity});
        shape.keyCheckedClasses = {"ZDA_RemoteReplicationGroup", "CIM_ReplicationGroup"};
        return shape;
    }()};

// The array names what a task works on as "<object>" or, when the task
// writes one thing from another or runs toward a target,
// "<object>-><other>": a restore names the volume written back to, then
// the copy; a synchronization its group, then the target.
const char NAME_SEPARATOR[] = "->";

void splitTaskName(const api_task_t& task, String& object, String& other)
{
    const std::string name(task.name, strnlen(task.name, sizeof task.name));
    const size_t at = name.find(NAME_SEPARATOR);
    object = String(name.substr(0, at).c_str());
    other = at == std::string::npos ? String()
                                    : String(name.substr(at + std::strlen(NAME_SEPARATOR)).c_str());
}

}  // namespace

void ZDA_AffectedJobElementProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
    _systemName = ZDA_Common::getSystemName(cimom);
}

bool ZDA_AffectedJobElementProvider::_getRelatedInstances(const PairQuery& query, std::vector<EndPair>& pairs)
{
    ArrayList<api_task_t> tasks;
    const int rc = ZDA_CompanionFrame::callUnderSemaphore(
        [&] { return api_getTasks(tasks.count(), tasks.out()); });
    if (rc != 0)
    {
        log_message(2, "%s::_getRelatedInstances(): api_getTasks error (%d)\n", ROW.provider, rc);
        return false;
    }
    RCopySnapshot snapshot;
    bool snapshotRead = false;
    const bool noEntities = isNoREPolicy(ZDA_Common::getPolicy());

    CIMClass jobClass;
    CIMClass volumeClass;
    CIMClass groupClass;
    CIMClass entityClass;
    if (query.instancesOf == 1)
        jobClass = queryClass(_cimom, query, "ZDA_ConcreteJob");
    if (query.instancesOf == 2)
    {
        volumeClass = queryClass(_cimom, query, "ZDA_StorageVolume");
        groupClass = queryClass(_cimom, query, "ZDA_RemoteReplicationGroup");
        entityClass = queryClass(_cimom, query, "ZDA_ReplicationEntity");
    }

    for (const api_task_t& task : tasks)
    {
        const CIMObjectPath job = ZDA_ConcreteJobProvider::buildObjectPath(
            _systemAddress, ZDA_ConcreteJobProvider::makeUniqueID(task.tid));
        CIMInstance jobInstance;
        if (query.instancesOf == 1)
            jobInstance = ZDA_ConcreteJobProvider::buildInstance(task, _systemAddress, jobClass);
        const auto add = [&](const CIMObjectPath& element, const CIMInstance& instance) {
            pairs.push_back(EndPair{job, element, jobInstance, instance});
        };
        String object;
        String other;
        splitTaskName(task, object, other);

        if (task.type == API_TASK_PHYSICAL_COPY || task.type == API_TASK_COPY_RESTORE)
        {
            const CString name = object.getCString();
            ArrayList<api_VVObj_t> vvs;
            const int vvrc = ZDA_CompanionFrame::callUnderSemaphore(
                [&] { return api_getVVs((const char*)name, nullptr, vvs.count(), vvs.out(), 1); });
            if (vvrc == API_E_NOT_FOUND || (vvrc == 0 && vvs.size() == 0))
                continue;  // the volume is gone: the job acts on nothing now
            if (vvrc != 0)
            {
                log_message(2, "%s::_getRelatedInstances(): api_getVVs error (%d) for %s\n", ROW.provider,
                    vvrc, (const char*)name);
                return false;
            }
            add(ZDA_StorageVolumeProvider::createObjectPath(
                    String(vvs[0].wwnText), _systemName, _systemAddress),
                query.instancesOf == 2 ? ZDA_StorageVolumeProvider::buildInstance(
                                             &vvs[0], _systemName, _systemAddress, volumeClass, nullptr, 0)
                                       : CIMInstance());
            continue;
        }
        if (task.type != API_TASK_RCOPY_SYNC)
            continue;

        if (!snapshotRead)
        {
            if (!readForPairs(snapshot, API_RCOPY_QUERY_TYPE_ALL, ROW.provider))
                return false;
            snapshotRead = true;
        }
        rm_group_wrapper_t* g = snapshot.rcopy.groups;
        while (g && !String::equal(String(g->group.rm_hdr.rm_name), object))
            g = g->next;
        if (!g)
            continue;  // the group is gone
        add(ZDA_RemoteReplicationGroupProvider::buildObjectPath(_systemAddress, object),
            query.instancesOf == 2
                ? ZDA_RemoteReplicationGroupProvider::buildInstance(&g->group, groupClass, _systemAddress)
                : CIMInstance());

        // The far group of the task's target.
        for (int t = 0; t < g->gtarget_count; t++)
        {
            const rm_group_target_t& target = g->gtargets[t];
            if (!String::equal(String(target.rm_target), other))
                continue;
            const String farName(target.rm_remote_group);
            const String farHost = ZDA_Common::RCTargetToSysname(snapshot.rcopy, other);
            if (noEntities)
                add(ZDA_RemoteReplicationGroupProvider::buildObjectPath(farHost, farName),
                    query.instancesOf == 2 ? ZDA_RemoteReplicationGroupProvider::buildInstance(
                                                 farName, 65535, groupClass, farHost)
                                           : CIMInstance());
            else
                add(ZDA_ReplicationEntityProvider::buildObjectPath(_systemAddress, farHost, "RG", farName),
                    query.instancesOf == 2 ? ZDA_ReplicationEntityProvider::buildInstance(_systemAddress,
                                                 farHost, "RG", farName, groupClass, entityClass)
                                           : CIMInstance());
        }
    }
    return true;
}

ZDA_NAVIGATION_PROVIDER_DEFINE(ZDA_AffectedJobElementProvider, _getRelatedInstances, ROW.shape)

PEGASUS_NAMESPACE_END
