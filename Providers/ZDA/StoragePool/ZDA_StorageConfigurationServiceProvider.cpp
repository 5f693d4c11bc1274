// The storage configuration service and the copy operations on it.
#include "ZDA_StorageConfigurationServiceProvider.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_ConcreteJobProvider.h"
#include "ZDA_CopyServicesCommon.h"
#include "ZDA_StorageSynchronizedProvider.h"
#include "ZDA_StorageVolumeProvider.h"

PEGASUS_NAMESPACE_BEGIN

using ZDA_CompanionFrame::callUnderSemaphore;
using namespace ZDA_CopyServices;

namespace
{

const String ClassName = "ZDA_StorageConfigurationService";
const char SOURCE_FILE[] = "ZDA_StorageConfigurationServiceProvider";
const char SERVICE_NAME[] = "StorageConfigurationService";
const char SYSTEM_CLASS[] = "ZDA_StorageSystem";
const char SET_CLASS[] = "ZDA_ReplicationGroup";
const char RCOPY_GROUP_CLASS[] = "ZDA_RemoteReplicationGroup";
const char POOL_CLASS[] = "ZDA_DynamicStoragePool";
const char DELTA_POOL_CLASS[] = "ZDA_DeltaReplicaStoragePool";
const char POOL_PREFIX[] = "KX_ORLA:CPG:";
const char DELTA_POOL_PREFIX[] = "KX_ORLA:SNAP:";
// A generated volume name: the base cut to this length, a dot and
// eight random characters, within the array's 31.
const Uint32 NAME_BASE_LEN = 22;

api_Status_t failure(int code, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;

api_Status_t failure(int code, const char* format, ...)
{
    char text[API_ERRTEXT_LEN];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
    api_Status_t status;
    api_initStatus(&status);
    errinfo_set_str(&status, code, text);
    log_message(2, "ZDA_StorageConfigurationServiceProvider: %s\n", text);
    return status;
}

api_Status_t success()
{
    api_Status_t status;
    api_initStatus(&status);
    return status;
}

// One status-form array call under the semaphore; a time-out is status 29.
template <class Call>
api_Status_t statusUnderSemaphore(Call&& call)
{
    if (cim_sem_wait() != 0)
        return failure(API_E_SEM_TIMEOUT, "Semaphore Timed-Out");
    const api_Status_t status = call();
    cim_sem_post();
    return status;
}

std::string text(const String& s)
{
    return (const char*)s.getCString();
}

std::string generatedName(const std::string& base)
{
    char random[9];
    ZDA_Common::generate_random_string(random, sizeof random);
    return base.substr(0, NAME_BASE_LEN) + "." + random;
}

void copyName(char (&field)[API_NAME_LEN], const std::string& name)
{
    strncpy(field, name.c_str(), API_NAME_LEN - 1);
    field[API_NAME_LEN - 1] = '\0';
}

// What the caller's identity, the target pool and the goal make of a copy.
struct Placement
{
    std::string userCpg;  // "" the source's
    std::string snapCpg;  // "" the source's
    uint32_t expirationSeconds = 0;
    uint32_t retentionSeconds = 0;
    std::string comment;
};

// Seconds from now that a goal's time stands for: an interval as it is,
// a point in time as the time left until then (at least one second).
uint32_t secondsFromNow(const CIMDateTime& when)
{
    if (when.isInterval())
        return uint32_t(when.toMicroSeconds() / 1000000);
    const time_t at = ZDA_Common::getDateTime(when);
    const time_t now = time(nullptr);
    return at > now ? uint32_t(at - now) : 1;
}

api_Status_t readPlacement(const CIMObjectPath& pool, const CIMInstance& goal, Placement& out)
{
    if (!pool.getClassName().isNull())
    {
        const String id = ZDA_Common::getStringProperty(pool, "InstanceID");
        const std::string instanceID = text(id);
        if (pool.getClassName().equal(POOL_CLASS) && instanceID.rfind(POOL_PREFIX, 0) == 0)
            out.userCpg = instanceID.substr(strlen(POOL_PREFIX));
        else if (pool.getClassName().equal(DELTA_POOL_CLASS) && instanceID.rfind(DELTA_POOL_PREFIX, 0) == 0)
            out.snapCpg = instanceID.substr(strlen(DELTA_POOL_PREFIX));
        else
            return failure(API_E_INVALID, "The target pool %s is not a pool of this array",
                text(pool.toString()).c_str());
    }
    if (!goal.isUninitialized())
    {
        CIMInstance setting = goal;
        const String userCpg = ZDA_Common::getStringProperty(setting, "UserDSPName");
        const String snapCpg = ZDA_Common::getStringProperty(setting, "SnapDSPName");
        if (userCpg.size() > 0)
            out.userCpg = text(userCpg);
        if (snapCpg.size() > 0)
            out.snapCpg = text(snapCpg);
        CIMDateTime when;
        if (ZDA_Common::getProperty(setting, "ExpirationTime", when) == 0)
            out.expirationSeconds = secondsFromNow(when);
        if (ZDA_Common::getProperty(setting, "RetentionTime", when) == 0)
            out.retentionSeconds = secondsFromNow(when);
        out.comment = text(ZDA_Common::getStringProperty(setting, "Description"));
    }
    return success();
}

// The volume a ZDA_StorageVolume path names.
api_Status_t readVolumeOf(const CIMObjectPath& ref, const char* what, api_VVObj_t& volume)
{
    if (ref.getClassName().isNull())
        return failure(API_E_INVALID, "%s is required", what);
    if (!ref.getClassName().equal(VOLUME_CLASS))
        return failure(API_E_INVALID, "%s is not a %s: %s", what, VOLUME_CLASS,
            text(ref.getClassName().getString()).c_str());
    const std::string wwn = text(ZDA_Common::getStringProperty(ref, "DeviceID"));
    const int rc = readVolume(nullptr, wwn.c_str(), volume);
    if (rc == API_E_NOT_FOUND)
        return failure(API_E_NOT_FOUND, "%s %s does not exist", what, wwn.c_str());
    if (rc != 0)
        return failure(rc, "The volume %s could not be read (%d)", wwn.c_str(), rc);
    return success();
}

// The members of the volume set a ZDA_ReplicationGroup path names.
api_Status_t readSetMembers(const CIMObjectPath& ref, std::string& setName, std::vector<std::string>& members)
{
    setName = text(ZDA_Common::extractFromInstanceID(ZDA_Common::getStringProperty(ref, "InstanceID")));
    api_sets_t sets;
    memset(&sets, 0, sizeof sets);
    api_Status_t status = statusUnderSemaphore(
        [&] { return api_getVVSets(setName.c_str(), nullptr, 0, &sets); });
    if (status.code == 0)
    {
        for (uint32_t s = 0; s < sets.count; s++)
            for (int m = 0; m < sets.sets[s].memberCount; m++)
                members.push_back(sets.sets[s].members[m].name);
    }
    api_freeSets(&sets);
    return status;
}

// Paths the copies are reported with.
struct Reporting
{
    String systemName;
    String systemAddress;

    CIMObjectPath volume(const char* wwn) const
    {
        return ZDA_StorageVolumeProvider::createObjectPath(wwn, systemName, systemAddress);
    }
    CIMObjectPath job(Uint32 tid) const
    {
        return ZDA_ConcreteJobProvider::buildObjectPath(
            systemAddress, ZDA_ConcreteJobProvider::makeUniqueID(tid));
    }
};

// A physical copy looked up and ready to start.
struct PlannedCopy
{
    api_VVObj_t parent;
    std::string child;
    bool create;
};

api_Status_t planCopy(
    const CIMObjectPath& parentRef, const CIMObjectPath& childRef, const String& childName, PlannedCopy& plan)
{
    api_Status_t status = readVolumeOf(parentRef, "SourceElement", plan.parent);
    if (status.code != 0)
        return status;
    plan.create = childRef.getClassName().isNull();
    if (plan.create)
    {
        plan.child = childName.size() > 0 ? text(childName) : generatedName(plan.parent.name);
        return success();
    }
    api_VVObj_t target;
    status = readVolumeOf(childRef, "TargetElement", target);
    plan.child = target.name;
    return status;
}

api_Status_t startCopy(api_evtparam_t* event, const PlannedCopy& plan, uint32_t flags,
    const Placement& placement, const Reporting& report, Array<CIMObjectPath>& jobs,
    Array<CIMObjectPath>& synchronizations)
{
    api_physcopy_t request;
    memset(&request, 0, sizeof request);
    copyName(request.parentVolName, plan.parent.name);
    copyName(request.childVolName, plan.child);
    copyName(request.userCpg, placement.userCpg);
    copyName(request.snapCpg, placement.snapCpg);
    request.flags = flags | (plan.create ? API_PCOPY_CREATE_TARGET : 0);
    const api_Status_t status = statusUnderSemaphore([&] { return api_createPhysicalCopy(event, &request); });
    if (status.code != 0)
        return status;
    jobs.append(report.job(request.tid));
    synchronizations.append(ZDA_StorageSynchronizedProvider::buildObjectPath(
        report.volume(plan.parent.wwnText), report.volume(request.childVolWWN), report.systemAddress));
    return status;
}

api_Status_t copyFlags(Uint16 copyType, uint32_t& flags)
{
    if (copyType == ZDA_StorageConfigurationServiceProvider::COPY_INACTIVE)
        flags = API_PCOPY_INACTIVE;
    else if (copyType == ZDA_StorageConfigurationServiceProvider::COPY_SYNCHRONIZED)
        flags = 0;
    else
        return failure(API_E_INVALID,
            "Copy type %u is not supported: 4 (inactive) or 5 "
            "(synchronized)",
            copyType);
    return success();
}

// The local volumes of the remote copy group `groupName`.
api_Status_t readRemoteGroupVolumes(const std::string& groupName, std::vector<std::string>& names)
{
    api_rcopy_t rcopy;
    memset(&rcopy, 0, sizeof rcopy);
    api_Status_t status = statusUnderSemaphore(
        [&] { return api_getRCopy(API_RCOPY_QUERY_TYPE_GROUPS, &rcopy); });
    bool found = false;
    if (status.code == 0)
    {
        for (rm_group_wrapper* g = rcopy.groups; g; g = g->next)
        {
            if (groupName != g->group.rm_hdr.rm_name)
                continue;
            found = true;
            for (rm_group_vv_wrapper* vv = g->gvvs; vv; vv = vv->next)
                names.push_back(vv->gvv.rm_local_name);
        }
    }
    api_freeRCopy(&rcopy);
    if (status.code == 0 && !found)
        return failure(API_E_NOT_FOUND, "The remote copy group %s does not exist", groupName.c_str());
    return status;
}

// The volumes a group copy starts from: a vvset's members, or the local
// volumes of a remote copy group.
api_Status_t readSourceMembers(
    const CIMObjectPath& ref, std::string& groupName, std::vector<std::string>& members)
{
    if (!ref.getClassName().equal(RCOPY_GROUP_CLASS))
        return readSetMembers(ref, groupName, members);
    groupName = text(ZDA_Common::extractFromInstanceID(ZDA_Common::getStringProperty(ref, "InstanceID")));
    return readRemoteGroupVolumes(groupName, members);
}

// Every member of the source set into the target set's members, or into
// new volumes that join the empty target set.
api_Status_t copySet(api_evtparam_t* event, uint32_t flags, const CIMObjectPath& sourceRef,
    const CIMObjectPath& targetRef, const Placement& placement, const Reporting& report,
    Array<CIMObjectPath>& jobs, Array<CIMObjectPath>& synchronizations, const std::string& relationshipName)
{
    if (!targetRef.getClassName().equal(SET_CLASS))
        return failure(API_E_INVALID, "The target of a group copy must be a %s", SET_CLASS);
    std::string sourceSet;
    std::string targetSet;
    std::vector<std::string> sources;
    std::vector<std::string> targets;
    api_Status_t status = readSourceMembers(sourceRef, sourceSet, sources);
    if (status.code == 0)
        status = readSetMembers(targetRef, targetSet, targets);
    if (status.code != 0)
        return status;
    if (sources.empty())
        return failure(API_E_INVALID, "The source group %s has no members", sourceSet.c_str());
    const bool create = targets.empty();
    if (!create && targets.size() != sources.size())
        return failure(API_E_INVALID, "The target group %s has %zu members for %zu sources",
            targetSet.c_str(), targets.size(), sources.size());

    std::vector<api_name_t> made;
    for (size_t i = 0; i < sources.size() && status.code == 0; i++)
    {
        PlannedCopy plan;
        const int rc = readVolume(sources[i].c_str(), nullptr, plan.parent);
        if (rc != 0)
            return failure(rc, "The volume %s could not be read (%d)", sources[i].c_str(), rc);
        plan.create = create;
        plan.child = create ? generatedName(relationshipName.empty() ? sources[i] : relationshipName)
                            : targets[i];
        status = startCopy(event, plan, flags, placement, report, jobs, synchronizations);
        if (status.code == 0 && create)
        {
            api_name_t name;
            copyName(name.name, plan.child);
            made.push_back(name);
        }
    }
    if (!made.empty())
    {
        const api_Status_t added = statusUnderSemaphore(
            [&] { return api_addToVVSet(event, targetSet.c_str(), made.data(), int(made.size())); });
        if (status.code == 0)
            status = added;
    }
    return status;
}

}  // namespace

ZDA_StorageConfigurationServiceProvider::ZDA_StorageConfigurationServiceProvider() = default;
ZDA_StorageConfigurationServiceProvider::~ZDA_StorageConfigurationServiceProvider() = default;

api_Status_t ZDA_StorageConfigurationServiceProvider::createPhysicalCopy(api_evtparam_t* apiEventp,
    CIMOMHandle&, const OperationContext&, Uint16 copyType, const CIMObjectPath& parentVolRef,
    const CIMObjectPath& childVolRef, const CIMObjectPath& tgtPoolRef, const CIMInstance& goalSettingInst,
    Array<CIMObjectPath>& jobs, Array<CIMObjectPath>& synchronizations, const String& systemName,
    const String& systemAddress, String childVolName)
{
    log_message(4, "--> ZDA_StorageConfigurationServiceProvider::createPhysicalCopy()\n");
    uint32_t flags = 0;
    Placement placement;
    api_Status_t status = copyFlags(copyType, flags);
    if (status.code == 0)
        status = readPlacement(tgtPoolRef, goalSettingInst, placement);
    const Reporting report{systemName, systemAddress};
    if (status.code == 0 &&
        (parentVolRef.getClassName().equal(SET_CLASS) ||
            parentVolRef.getClassName().equal(RCOPY_GROUP_CLASS)))
    {
        status = copySet(apiEventp, flags, parentVolRef, childVolRef, placement, report, jobs,
            synchronizations, text(childVolName));
    }
    else if (status.code == 0)
    {
        PlannedCopy plan;
        status = planCopy(parentVolRef, childVolRef, childVolName, plan);
        if (status.code == 0)
            status = startCopy(apiEventp, plan, flags, placement, report, jobs, synchronizations);
    }
    log_message(4, "<-- ZDA_StorageConfigurationServiceProvider::createPhysicalCopy() %d\n", status.code);
    return status;
}

api_Status_t ZDA_StorageConfigurationServiceProvider::createPhysicalCopy(api_evtparam_t* apiEventp,
    CIMOMHandle&, const OperationContext&, Uint16 copyType, const Array<CIMObjectPath>& parentVolRefs,
    const Array<CIMObjectPath>& childVolRefs, const CIMObjectPath& tgtPoolRef,
    const CIMInstance& goalSettingInst, Array<CIMObjectPath>& jobs, Array<CIMObjectPath>& synchronizations,
    const String& systemName, const String& systemAddress, Array<String> childVolNames, bool checkAll)
{
    log_message(4, "--> ZDA_StorageConfigurationServiceProvider::createPhysicalCopy() list\n");
    uint32_t flags = 0;
    Placement placement;
    api_Status_t status = copyFlags(copyType, flags);
    if (status.code == 0)
        status = readPlacement(tgtPoolRef, goalSettingInst, placement);
    if (status.code == 0 && childVolRefs.size() != 0 && childVolRefs.size() != parentVolRefs.size())
        status = failure(
            API_E_INVALID, "%u targets were given for %u sources", childVolRefs.size(), parentVolRefs.size());
    const Reporting report{systemName, systemAddress};
    const CIMObjectPath none;
    auto plan = [&](Uint32 i, PlannedCopy& p) {
        return planCopy(parentVolRefs[i], childVolRefs.size() ? childVolRefs[i] : none,
            i < childVolNames.size() ? childVolNames[i] : String(), p);
    };
    std::vector<PlannedCopy> planned(parentVolRefs.size());
    for (Uint32 i = 0; checkAll && status.code == 0 && i < parentVolRefs.size(); i++)
        status = plan(i, planned[i]);
    for (Uint32 i = 0; status.code == 0 && i < parentVolRefs.size(); i++)
    {
        if (!checkAll)
            status = plan(i, planned[i]);
        if (status.code == 0)
            status = startCopy(apiEventp, planned[i], flags, placement, report, jobs, synchronizations);
    }
    log_message(
        4, "<-- ZDA_StorageConfigurationServiceProvider::createPhysicalCopy() list %d\n", status.code);
    return status;
}

api_Status_t ZDA_StorageConfigurationServiceProvider::createVirtualCopy(api_evtparam_t* apiEventp,
    CIMOMHandle&, const OperationContext&, Array<CIMParamValue>& paramValues,
    const CIMObjectPath& parentVolRef, const String& childVolName, const CIMObjectPath& tgtPoolRef,
    const CIMInstance& goalSettingInst, const String& systemName, const String& systemAddress)
{
    log_message(4, "--> ZDA_StorageConfigurationServiceProvider::createVirtualCopy()\n");
    Placement placement;
    api_Status_t status = readPlacement(tgtPoolRef, goalSettingInst, placement);
    const std::string snapCpg = placement.snapCpg.empty() ? placement.userCpg : placement.snapCpg;
    const std::string name = text(childVolName);

    std::vector<std::string> parents;
    std::vector<std::string> children;
    if (status.code == 0 && parentVolRef.getClassName().equal(RCOPY_GROUP_CLASS))
    {
        const std::string group = text(
            ZDA_Common::extractFromInstanceID(ZDA_Common::getStringProperty(parentVolRef, "InstanceID")));
        status = readRemoteGroupVolumes(group, parents);
        if (status.code == 0 && parents.empty())
            status = failure(API_E_INVALID, "The remote copy group %s has no volumes", group.c_str());
        for (const std::string& parent : parents)
            children.push_back(generatedName(name.empty() ? parent : name));
    }
    else if (status.code == 0)
    {
        api_VVObj_t parent;
        status = readVolumeOf(parentVolRef, "SourceElement", parent);
        if (status.code == 0)
        {
            parents.push_back(parent.name);
            children.push_back(name.empty() ? generatedName(parent.name) : name);
        }
    }
    // Sources without snapshot space get it where the caller asked for the copy.
    for (size_t i = 0; status.code == 0 && !snapCpg.empty() && i < parents.size(); i++)
    {
        status = statusUnderSemaphore(
            [&] { return api_setSnapCPG(apiEventp, parents[i].c_str(), snapCpg.c_str()); });
    }
    if (status.code == 0)
    {
        std::vector<api_groupsv_entry_t> entries(parents.size());
        for (size_t i = 0; i < parents.size(); i++)
        {
            memset(&entries[i], 0, sizeof entries[i]);
            copyName(entries[i].parentVolName, parents[i]);
            copyName(entries[i].childVolName, children[i]);
        }
        api_groupsv_t request;
        memset(&request, 0, sizeof request);
        request.baseID = API_BASEID_ANY;
        request.expirationTime = placement.expirationSeconds;
        request.retentionTime = placement.retentionSeconds;
        strncpy(request.comment, placement.comment.c_str(), sizeof request.comment - 1);
        request.count = uint32_t(entries.size());
        request.svs = entries.data();
        status = statusUnderSemaphore([&] { return api_createGroupSV(apiEventp, &request); });
        const Reporting report{systemName, systemAddress};
        for (size_t i = 0; status.code == 0 && i < entries.size(); i++)
            paramValues.append(
                CIMParamValue("TargetElement", CIMValue(report.volume(entries[i].childVolWWN)), true));
    }
    log_message(4, "<-- ZDA_StorageConfigurationServiceProvider::createVirtualCopy() %d\n", status.code);
    return status;
}

api_Status_t ZDA_StorageConfigurationServiceProvider::modifySynchronization(api_evtparam_t* event,
    CIMOMHandle&, const OperationContext&, Array<CIMObjectPath>& jobs, Uint16 operation,
    const CIMObjectPath& sync, const String& host)
{
    log_message(4, "--> ZDA_StorageConfigurationServiceProvider::modifySynchronization(%u)\n", operation);
    if (operation != OP_DETACH && operation != OP_RESYNC && operation != OP_RESTORE &&
        operation != OP_START_COPY && operation != OP_STOP_COPY)
        return failure(API_E_INVALID,
            "Operation %u is not supported on local copies: 2 (detach), "
            "4 (resync), 5 (restore), 12 (start copy) or 13 (stop copy)",
            operation);

    // The relationship: the copy named by SyncedElement, whose parent is
    // the volume named by SystemElement.
    api_VVObj_t source;
    api_VVObj_t copy;
    api_Status_t status;
    try
    {
        status = readVolumeOf(
            CIMObjectPath(ZDA_Common::getStringProperty(sync, "SystemElement")), "SystemElement", source);
        if (status.code == 0)
            status = readVolumeOf(
                CIMObjectPath(ZDA_Common::getStringProperty(sync, "SyncedElement")), "SyncedElement", copy);
    }
    catch (const Exception&)
    {
        status = failure(
            API_E_INVALID, "%s is not a synchronization of this array", text(sync.toString()).c_str());
    }
    if (status.code == 0 &&
        (copy.copyOfId != source.id ||
            (copy.type != API_VV_TYPE_PHYSICAL_COPY && copy.type != API_VV_TYPE_VIRTUAL_COPY)))
        status = failure(API_E_NOT_FOUND, "%s is not a copy of %s", copy.name, source.name);
    if (status.code != 0)
        return status;

    const bool clone = copy.type == API_VV_TYPE_PHYSICAL_COPY;
    uint32_t tid = 0;
    switch (operation)
    {
    case OP_DETACH:
        if (clone)
        {
            status = statusUnderSemaphore([&] { return api_promoteCopy(event, copy.name); });
        }
        else
        {
            api_name_t name;
            copyName(name.name, copy.name);
            const int rc = callUnderSemaphore([&] { return api_removeVVs(event, &name, 1, 0, 0); });
            if (rc != 0)
                status = failure(rc, "The snapshot %s could not be removed (%d)", copy.name, rc);
        }
        break;
    case OP_START_COPY:
        if (!clone)
        {
            status = failure(API_E_INVALID, "%s is a snapshot: only clones are copied again", copy.name);
            break;
        }
        // Starting the copy of a clone writes it again, as a resync does.
        [[fallthrough]];
    case OP_RESYNC:
        status = statusUnderSemaphore([&] { return api_resyncCopy(event, copy.name, &tid); });
        break;
    case OP_RESTORE:
        status = statusUnderSemaphore([&] { return api_restoreCopy(event, copy.name, &tid); });
        break;
    case OP_STOP_COPY: status = statusUnderSemaphore([&] { return api_stopCopy(event, copy.name); }); break;
    }
    if (status.code == 0 && tid != 0)
        jobs.append(
            ZDA_ConcreteJobProvider::buildObjectPath(host, ZDA_ConcreteJobProvider::makeUniqueID(tid)));
    log_message(4, "<-- ZDA_StorageConfigurationServiceProvider::modifySynchronization() %d\n", status.code);
    return status;
}

api_Status_t ZDA_StorageConfigurationServiceProvider::modifySynchronization(api_evtparam_t* event,
    CIMOMHandle& cimom, const OperationContext& context, Array<CIMObjectPath>& jobs, Uint16 operation,
    const Array<CIMObjectPath>& syncs, const String& host)
{
    api_Status_t status = success();
    for (Uint32 i = 0; i < syncs.size() && status.code == 0; i++)
        status = modifySynchronization(event, cimom, context, jobs, operation, syncs[i], host);
    return status;
}

int ZDA_StorageConfigurationServiceProvider::assignSnapPoolToVolume(
    api_evtparam_t* apiEventp, Array<String>& parentVolNames)
{
    log_message(4, "--> ZDA_StorageConfigurationServiceProvider::assignSnapPoolToVolume()\n");
    for (Uint32 i = 0; i < parentVolNames.size(); i++)
    {
        const std::string name = text(parentVolNames[i]);
        api_VVObj_t volume;
        int rc = readVolume(name.c_str(), nullptr, volume);
        if (rc == 0 && volume.cpgName[0] == '\0')
        {
            rc = statusUnderSemaphore([&] {
                return api_setSnapCPG(apiEventp, volume.name, volume.usrCpgName);
            }).code;
        }
        if (rc != 0)
        {
            log_message(2,
                "ZDA_StorageConfigurationServiceProvider::assignSnapPoolToVolume(): "
                "%s: error %d\n",
                name.c_str(), rc);
            return rc;
        }
    }
    log_message(4, "<-- ZDA_StorageConfigurationServiceProvider::assignSnapPoolToVolume()\n");
    return 0;
}

CIMObjectPath ZDA_StorageConfigurationServiceProvider::buildObjectPath(
    const String& systemName, const String& host)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("CreationClassName", ClassName, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("Name", SERVICE_NAME, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemCreationClassName", SYSTEM_CLASS, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", systemName, CIMKeyBinding::STRING));
    return CIMObjectPath(host, CIMNamespaceName(NAMESPACE), CIMName(ClassName), keys);
}

CIMInstance ZDA_StorageConfigurationServiceProvider::_buildInstance(
    const String& systemName, const String& host, CIMClass& serviceClass)
{
    CIMInstance service = ZDA_Common::buildInstanceSkeleton(serviceClass);
    ZDA_Common::setPropertyValue(service, "CreationClassName", ClassName);
    ZDA_Common::setPropertyValue(service, "Name", SERVICE_NAME);
    ZDA_Common::setPropertyValue(service, "SystemCreationClassName", SYSTEM_CLASS);
    ZDA_Common::setPropertyValue(service, "SystemName", systemName);
    ZDA_Common::setPropertyValue(service, "ElementName", "Storage Configuration Service");
    ZDA_Common::setPropertyValue(
        service, "Description", "Makes physical and virtual copies of the array's volumes and changes them");
    ZDA_Common::setPropertyValue(service, "Started", Boolean(true));
    ZDA_Common::setPropertyValue(service, "EnabledState", Uint16(2));
    Array<Uint16> status;
    status.append(2);
    ZDA_Common::setPropertyValue(service, "OperationalStatus", status);
    service.setPath(buildObjectPath(systemName, host));
    return service;
}

void ZDA_StorageConfigurationServiceProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void ZDA_StorageConfigurationServiceProvider::terminate()
{
    delete this;
}

void ZDA_StorageConfigurationServiceProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageConfigurationServiceProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    CIMClass serviceClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);
    String systemName;
    String host;
    if (!systemIdentity(SOURCE_FILE, systemName, host) ||
        !ZDA_Common::matchObjectPath(inNamespace(instanceReference), buildObjectPath(systemName, host)))
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    handler.processing();
    handler.deliver(_buildInstance(systemName, host, serviceClass));
    handler.complete();
    log_message(4, "<-- ZDA_StorageConfigurationServiceProvider::getInstance()\n");
}

void ZDA_StorageConfigurationServiceProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath&, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageConfigurationServiceProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    CIMClass serviceClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    String systemName;
    String host;
    if (systemIdentity(SOURCE_FILE, systemName, host))
        handler.deliver(_buildInstance(systemName, host, serviceClass));
    handler.complete();
    log_message(4, "<-- ZDA_StorageConfigurationServiceProvider::enumerateInstances()\n");
}

void ZDA_StorageConfigurationServiceProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath&, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageConfigurationServiceProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    handler.processing();
    String systemName;
    String host;
    if (systemIdentity(SOURCE_FILE, systemName, host))
        handler.deliver(buildObjectPath(systemName, host));
    handler.complete();
    log_message(4, "<-- ZDA_StorageConfigurationServiceProvider::enumerateInstanceNames()\n");
}

void ZDA_StorageConfigurationServiceProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ZDA_StorageConfigurationServiceProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ZDA_StorageConfigurationServiceProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

PEGASUS_NAMESPACE_END
