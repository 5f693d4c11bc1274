#include "rcopy_model.h"

#include <algorithm>

#include "call.h"

namespace zdasim
{

namespace
{

bool running(const RcGroupTarget& gt)
{
    return gt.state == kGtStarting || gt.state == kGtStarted;
}

// Disaster-recovery states during which the group takes no other operation.
bool drBusy(rm_dr_state_t s)
{
    switch (s)
    {
    case RM_DR_FAILOVER_IN_PROGRESS:
    case RM_DR_RECOVER_IN_PROGRESS:
    case RM_DR_RESTORE_IN_PROGRESS:
    case RM_DR_REVERSE_CURRENT_IN_PROGRESS:
    case RM_DR_REVERSE_NATURAL_IN_PROGRESS:
    case RM_DR_REVERSE_IN_PROGRESS:
    case RM_DR_IN_PROGRESS:
    case RM_DR_SWITCHOVER_IN_PROGRESS:
    case RM_DR_FAILSAFE_IN_PROGRESS: return true;
    default: return false;
    }
}

std::string quoted(const std::string& s)
{
    return "\"" + s + "\"";
}

// High 64 bits of the WWNs of a remote system's volumes.
api_u64_t remoteWwnPrefix(uint32_t remoteSysId)
{
    return (0x60002D1Aull << 32) | remoteSysId;
}

}  // namespace

uint8_t shownMapStatus(uint8_t status, bool primary)
{
    if (primary)
        return status;
    switch (status)
    {
    case RM_GROUP_VV_NEW: return RM_GROUP_VV_REMOTE;
    case RM_GROUP_VV_SYNCING: return RM_GROUP_VV_REMOTE_SYNCING;
    case RM_GROUP_VV_SYNCED: return RM_GROUP_VV_REMOTE_SYNCED;
    case RM_GROUP_VV_UNSYNC: return RM_GROUP_VV_REMOTE_UNSYNC;
    case RM_GROUP_VV_STALE: return RM_GROUP_VV_REMOTE_STALE;
    case RM_GROUP_VV_LD_CHECKING: return RM_GROUP_VV_REMOTE_LD_CHECKING;
    case RM_GROUP_VV_REPAIRING: return RM_GROUP_VV_REMOTE_REPAIRING;
    default: return status;
    }
}

// ---- look-ups ---------------------------------------------------------------

RcGroupTarget* RcGroup::findTarget(const std::string& target)
{
    int i = targetIndex(target);
    return i < 0 ? nullptr : &targets[static_cast<size_t>(i)];
}

int RcGroup::targetIndex(const std::string& target) const
{
    for (size_t i = 0; i < targets.size(); ++i)
        if (targets[i].target == target)
            return static_cast<int>(i);
    return -1;
}

RcVolume* RcGroup::findVolume(const std::string& volume)
{
    for (RcVolume& v : volumes)
        if (v.name == volume)
            return &v;
    return nullptr;
}

const RcTarget* RcState::findTarget(const std::string& name) const
{
    for (const RcTarget& t : targets)
        if (t.name == name)
            return &t;
    return nullptr;
}

RcTarget* RcState::findTarget(const std::string& name)
{
    return const_cast<RcTarget*>(static_cast<const RcState*>(this)->findTarget(name));
}

const RcGroup* RcState::findGroup(const std::string& name) const
{
    for (const RcGroup& g : groups)
        if (g.name == name)
            return &g;
    return nullptr;
}

RcGroup* RcState::findGroup(const std::string& name)
{
    return const_cast<RcGroup*>(static_cast<const RcState*>(this)->findGroup(name));
}

const RcGroup* RcState::groupOfVolume(const std::string& volume) const
{
    for (const RcGroup& g : groups)
        for (const RcVolume& v : g.volumes)
            if (v.name == volume)
                return &g;
    return nullptr;
}

std::string RemoteCopy::volumeUse(const Volume& volume) const
{
    if (const RcGroup* g = state.groupOfVolume(volume.name))
        return "volume " + quoted(volume.name) + " is in remote copy group " + quoted(g->name);
    return {};
}

std::string RemoteCopy::setUse(const VVSet& set) const
{
    for (const RcGroup& g : state.groups)
        if (g.setId == set.id)
            return "vvset " + quoted(set.name) + " holds the volumes of remote copy group " + quoted(g.name);
    return {};
}

uint32_t RemoteCopy::externalSetId(uint32_t autoSetId) const
{
    for (const RcGroup& g : state.groups)
        if (g.autoSetId == autoSetId)
            return g.setId;
    return 0;
}

// ---- the clock ----------------------------------------------------------------

void RemoteCopy::advanceTo(ArrayModel& model, time_t now)
{
    (void)model;
    for (RcGroup& g : state.groups)
        advanceGroup(g, now);
}

void RemoteCopy::advanceGroup(RcGroup& g, time_t now)
{
    bool syncFailed = false;
    for (size_t i = 0; i < g.targets.size(); ++i)
    {
        RcGroupTarget& gt = g.targets[i];
        const RcTarget* t = state.findTarget(gt.target);
        if (running(gt) && (!t || t->status != RM_TARGET_READY))
        {
            // A target that fails stops the group on it; a running
            // synchronisation fails with it.
            stopTarget(g, i, now, API_TASK_FAILED, "target " + quoted(gt.target) + " is not ready");
            syncFailed = true;
            continue;
        }
        if (gt.syncTid != 0)
        {
            const Task* task = tasks_->find(gt.syncTid);
            if (!task)
            {
                gt.syncTid = 0;
            }
            else if (task->state == API_TASK_ACTIVE)
            {
                const long long elapsed = static_cast<long long>(now - task->start);
                for (RcVolume& v : g.volumes)
                {
                    RcMap& m = v.maps[i];
                    if (m.status != RM_GROUP_VV_SYNCING)
                        continue;
                    m.syncOffset = elapsed >= task->durationSeconds
                        ? m.syncLength
                        : static_cast<api_u64_t>(static_cast<long double>(m.syncLength) *
                              (elapsed < 0 ? 0 : elapsed) / task->durationSeconds);
                }
                continue;
            }
            else if (task->state == API_TASK_DONE)
            {
                const uint32_t when = static_cast<uint32_t>(task->end);
                for (RcVolume& v : g.volumes)
                {
                    RcMap& m = v.maps[i];
                    if (m.status != RM_GROUP_VV_SYNCING)
                        continue;
                    m.status = RM_GROUP_VV_SYNCED;
                    m.syncOffset = m.syncLength;
                    m.lastSync = when;
                }
                gt.lastSync = when;
                gt.state = kGtStarted;
                gt.syncTid = 0;
            }
            else
            {
                // Failed: the volumes it was moving are out of sync and the
                // group stops on this target.
                for (RcVolume& v : g.volumes)
                {
                    RcMap& m = v.maps[i];
                    if (m.status == RM_GROUP_VV_SYNCING)
                        m.status = RM_GROUP_VV_UNSYNC;
                }
                gt.state = kGtStopped;
                gt.syncTid = 0;
                syncFailed = true;
                continue;
            }
        }
        // Nothing (left) to move: a starting target has started.
        if (gt.state == kGtStarting && gt.syncTid == 0)
            gt.state = kGtStarted;
        if (gt.state != kGtStarted)
            continue;
        if (gt.mode == RM_TARGET_MODE_PERIODIC)
        {
            // Periodic groups catch up at every period boundary.
            if (gt.syncPeriod == 0 || gt.lastSync == 0 ||
                now < static_cast<time_t>(gt.lastSync) + gt.syncPeriod)
                continue;
            const time_t periods = (now - gt.lastSync) / gt.syncPeriod;
            gt.lastSync += static_cast<uint32_t>(periods * gt.syncPeriod);
            for (RcVolume& v : g.volumes)
                if (v.maps[i].status == RM_GROUP_VV_SYNCED)
                    v.maps[i].lastSync = gt.lastSync;
        }
        else if (gt.mode == RM_TARGET_MODE_SYNC)
        {
            // A synchronous pair is in sync at every moment.
            gt.lastSync = static_cast<uint32_t>(now);
            for (RcVolume& v : g.volumes)
                if (v.maps[i].status == RM_GROUP_VV_SYNCED)
                    v.maps[i].lastSync = gt.lastSync;
        }
    }

    bool syncing = false;
    for (const RcGroupTarget& gt : g.targets)
        syncing = syncing || gt.syncTid != 0;
    switch (g.drState)
    {
    case RM_DR_FAILOVER_IN_PROGRESS:
        if (now >= g.drStepEnds)
        {
            g.drState = RM_DR_FAILOVER_DONE;
            g.primary = 1;
        }
        break;
    case RM_DR_RECOVER_IN_PROGRESS:
        if (syncFailed)
            g.drState = RM_DR_RECOVER_FAIL;
        else if (!syncing && now >= g.drStepEnds)
            g.drState = RM_DR_RECOVER_DONE;
        break;
    case RM_DR_RESTORE_IN_PROGRESS:
        if (syncFailed)
        {
            g.drState = RM_DR_RESTORE_FAIL;
        }
        else if (!syncing && now >= g.drStepEnds)
        {
            g.drState = RM_DR_NONE;
            g.primary = g.natural;
        }
        break;
    case RM_DR_REVERSE_IN_PROGRESS:
        if (now >= g.drStepEnds)
        {
            // From a failover the present roles become the natural ones;
            // otherwise both directions turn round.
            if (g.flags & kReverseFromFailover)
            {
                g.natural = g.primary;
            }
            else
            {
                g.natural = g.natural ? 0 : 1;
                g.primary = g.primary ? 0 : 1;
            }
            g.flags &= ~kReverseFromFailover;
            g.drState = RM_DR_NONE;
        }
        break;
    default: break;
    }
}

// ---- helpers of the calls -----------------------------------------------------

uint32_t RemoteCopy::startSync(
    const ArrayModel& m, RcGroup& g, size_t i, bool resyncSynced, const std::string& user, time_t now)
{
    RcGroupTarget& gt = g.targets[i];
    if (gt.syncTid != 0)
    {
        const Task* running = tasks_->find(gt.syncTid);
        if (running && running->state == API_TASK_ACTIVE)
            return gt.syncTid;
    }
    api_u64_t total = 0;
    bool any = false;
    for (RcVolume& v : g.volumes)
    {
        RcMap& map = v.maps[i];
        if (map.absent || (map.status == RM_GROUP_VV_SYNCED && !resyncSynced))
            continue;
        const Volume* vol = m.findVolume(v.name);
        const api_u64_t bytes = vol ? vol->sizeMiB << 20 : 0;
        // A volume that held the data once only moves what changed since.
        const bool hadData = map.lastSync != 0 || map.status == RM_GROUP_VV_SYNCED;
        map.syncLength = hadData ? bytes / kDeltaDivisor : bytes;
        map.syncOffset = 0;
        map.status = RM_GROUP_VV_SYNCING;
        map.wwnStatus = RM_VV_WWN_VALID;  // the remote volume exists from the first start on
        total += map.syncLength;
        any = true;
    }
    if (!any)
        return 0;
    const RcTarget* t = state.findTarget(gt.target);
    const api_u64_t rate = static_cast<api_u64_t>(t && t->syncRateMiBps ? t->syncRateMiBps : 256) << 20;
    const long duration = static_cast<long>(std::max<api_u64_t>(1, (total + rate - 1) / rate));
    gt.syncTid = tasks_->start(API_TASK_RCOPY_SYNC, g.name, gt.target, user, now, duration);
    return gt.syncTid;
}

void RemoteCopy::stopTarget(RcGroup& g, size_t i, time_t now, int taskEnd, const std::string& why)
{
    RcGroupTarget& gt = g.targets[i];
    if (gt.syncTid != 0)
    {
        tasks_->end(gt.syncTid, now, taskEnd, why);
        gt.syncTid = 0;
    }
    gt.state = kGtStopped;
    for (RcVolume& v : g.volumes)
    {
        RcMap& m = v.maps[i];
        if (m.status != RM_GROUP_VV_NEW)
            m.status = RM_GROUP_VV_STOPPED;
    }
}

std::string RemoteCopy::makeAutoSetName(const ArrayModel& m, const std::string& group) const
{
    std::string base = ("RCP_" + group).substr(0, API_NAME_LEN - 1);
    std::string name = base;
    for (int n = 1; m.findSet(name); ++n)
    {
        const std::string suffix = "." + std::to_string(n);
        name = base.substr(0, API_NAME_LEN - 1 - suffix.size()) + suffix;
    }
    return name;
}

void RemoteCopy::addLoadedGroup(ArrayModel& m, RcGroup g)
{
    if (g.id == 0)
        g.id = state.nextGroupId;
    state.nextGroupId = static_cast<uint16_t>(std::max<int>(state.nextGroupId, g.id + 1));
    for (RcGroupTarget& gt : g.targets)
        if (gt.remoteGroupId == 0)
            gt.remoteGroupId = g.id;
    if (g.autoSetId == 0)
        g.autoSetId = state.nextAutoSetId;
    state.nextAutoSetId = std::max(state.nextAutoSetId, g.autoSetId + 1);
    const VVSet* set = g.setId ? m.setById(g.setId) : nullptr;
    if (!set)
    {
        VVSet s;
        s.name = makeAutoSetName(m, g.name);
        s.comment = "remote copy group " + g.name;
        s.domain = g.domain;
        for (const RcVolume& v : g.volumes)
            s.members.push_back(v.name);
        g.setId = m.addSet(std::move(s)).id;
    }
    for (const RcVolume& v : g.volumes)
        if (Volume* vol = m.findVolume(v.name))
            vol->state |= API_VV_STATE_IN_RCOPY;
    state.groups.push_back(std::move(g));
}

// ---- the calls ------------------------------------------------------------------

RcResult RemoteCopy::create(ArrayModel& m, const api_rcopy_group_t& req, time_t now)
{
    (void)now;
    const std::string name = fieldName(req.name, sizeof req.name);
    const std::string bad = nameProblem(name);
    if (!bad.empty())
        return RcResult::fail(API_E_INVALID, "remote copy group name " + quoted(name) + " " + bad);
    if (!(state.system.mode & RM_SYS_MODE_ON))
        return RcResult::fail(API_E_INVALID, "remote copy is not configured on this system");
    if (state.findGroup(name))
        return RcResult::fail(API_E_EXISTS, "remote copy group " + quoted(name) + " already exists");
    if (req.numtargets == 0 || req.numtargets > 4)
        return RcResult::fail(API_E_INVALID,
            "remote copy group " + quoted(name) + ": " + std::to_string(req.numtargets) +
                " targets (1 to 4 allowed)");
    const std::string userCpg = fieldName(req.usercpg, sizeof req.usercpg);
    const std::string snapCpg = fieldName(req.snapcpg, sizeof req.snapcpg);
    for (const std::string& cpg : {userCpg, snapCpg})
        if (!cpg.empty() && !m.findCpg(cpg))
            return RcResult::fail(API_E_NOT_FOUND, "CPG " + quoted(cpg) + " does not exist");

    RcGroup g;
    g.name = name;
    g.domain = fieldName(req.domain, sizeof req.domain);
    g.userCpg = userCpg;
    g.snapCpg = snapCpg;
    for (uint32_t j = 0; j < req.numtargets; ++j)
    {
        const rm_group_target_t& in = req.targets[j];
        const std::string tname = fieldName(in.rm_target, sizeof in.rm_target);
        const RcTarget* t = state.findTarget(tname);
        if (!t)
            return RcResult::fail(API_E_NOT_FOUND, "remote copy target " + quoted(tname) + " does not exist");
        if (g.findTarget(tname))
            return RcResult::fail(API_E_INVALID, "remote copy target " + quoted(tname) + " is named twice");
        const uint32_t mode = in.rm_mode;
        if (mode != RM_TARGET_MODE_SYNC && mode != RM_TARGET_MODE_ASYNC && mode != RM_TARGET_MODE_SEMISYNC &&
            mode != RM_TARGET_MODE_PERIODIC)
            return RcResult::fail(
                API_E_INVALID, "target " + quoted(tname) + ": unknown mode " + std::to_string(mode));
        // A target that names the modes it suits takes only those.
        if (t->flags & RM_TARGET_FLAG_MODE_MASK)
        {
            const bool sync = mode == RM_TARGET_MODE_SYNC;
            if ((sync && !(t->flags & RM_TARGET_FLAG_SYNC)) || (!sync && !(t->flags & RM_TARGET_FLAG_ASYNC)))
                return RcResult::fail(API_E_INVALID,
                    "remote copy target " + quoted(tname) + " does not support " +
                        (sync ? "synchronous" : "asynchronous") + " mode");
        }
        RcGroupTarget gt;
        gt.target = tname;
        gt.remoteGroup = fieldName(in.rm_remote_group, sizeof in.rm_remote_group);
        if (gt.remoteGroup.empty())
            gt.remoteGroup = (name + ".r").substr(0, API_NAME_LEN - 1);
        gt.mode = mode;
        gt.syncPeriod = in.rm_sync_period;
        gt.options = in.rm_options;
        gt.userCpg = fieldName(in.usercpg, sizeof in.usercpg);
        gt.snapCpg = fieldName(in.snapcpg, sizeof in.snapcpg);
        g.targets.push_back(std::move(gt));
    }
    g.id = state.nextGroupId;
    for (RcGroupTarget& gt : g.targets)
        gt.remoteGroupId = g.id;
    addLoadedGroup(m, std::move(g));
    return {};
}

RcResult RemoteCopy::admit(ArrayModel& m, const api_rcopy_vv_t& req, time_t now)
{
    const std::string gname = fieldName(req.group, sizeof req.group);
    const std::string vname = fieldName(req.vvname, sizeof req.vvname);
    RcGroup* g = state.findGroup(gname);
    if (!g)
        return RcResult::fail(API_E_NOT_FOUND, "remote copy group " + quoted(gname) + " does not exist");
    Volume* vol = m.findVolume(vname);
    if (!vol)
        return RcResult::fail(API_E_NOT_FOUND, "volume " + quoted(vname) + " does not exist");
    if (vol->policy & VV_POLICY_SYSTEM)
        return RcResult::fail(
            API_E_INVALID, "volume " + quoted(vname) + " is a system volume and cannot be replicated");
    if (vol->type == API_VV_TYPE_VIRTUAL_COPY)
        return RcResult::fail(
            API_E_INVALID, "volume " + quoted(vname) + " is a virtual copy and cannot be replicated");
    if (const RcGroup* other = state.groupOfVolume(vname))
        return RcResult::fail(API_E_IN_USE,
            "volume " + quoted(vname) + " is already in remote copy group " + quoted(other->name));
    if (!g->domain.empty() && vol->domain != g->domain)
        return RcResult::fail(API_E_INVALID,
            "volume " + quoted(vname) + " is in domain " + quoted(vol->domain) + ", remote copy group " +
                quoted(gname) + " in " + quoted(g->domain));
    if (g->volumes.size() >= m.system.rcopyLimits[ZDA_RM_GROUP_MAX_VOLUMES])
        return RcResult::fail(API_E_LIMIT,
            "remote copy group " + quoted(gname) + " already holds " + std::to_string(g->volumes.size()) +
                " volumes, the most it may");
    if (req.nummaps > 4)
        return RcResult::fail(API_E_INVALID, std::to_string(req.nummaps) + " volume maps (at most 4)");

    RcVolume rv;
    rv.name = vname;
    rv.wwn = vol->wwn;
    rv.wwnRe = vol->wwnRe;
    rv.maps.resize(g->targets.size());
    std::vector<bool> given(g->targets.size(), false);
    for (uint32_t j = 0; j < req.nummaps; ++j)
    {
        const rm_group_vv_map_t& in = req.vvmaps[j];
        const std::string tname = fieldName(in.rm_target, sizeof in.rm_target);
        const int i = g->targetIndex(tname);
        if (i < 0)
            return RcResult::fail(API_E_NOT_FOUND,
                "remote copy target " + quoted(tname) + " is not a target of group " + quoted(gname));
        if (given[static_cast<size_t>(i)])
            return RcResult::fail(API_E_INVALID, "remote copy target " + quoted(tname) + " is mapped twice");
        given[static_cast<size_t>(i)] = true;
        RcMap& map = rv.maps[static_cast<size_t>(i)];
        map.remoteName = fieldName(in.rm_remote_name, sizeof in.rm_remote_name);
        map.remoteVid = in.rm_remote_vid;
    }
    for (size_t i = 0; i < g->targets.size(); ++i)
    {
        RcMap& map = rv.maps[i];
        map.target = g->targets[i].target;
        if (map.remoteName.empty())
            map.remoteName = vname;  // the far volume takes the local name
        const RcTarget* t = state.findTarget(map.target);
        map.remoteWwnRe = remoteWwnPrefix(t ? t->remoteSysId : 0);
        map.remoteWwn = vol->wwn;
    }
    g->volumes.push_back(std::move(rv));
    if (const VVSet* s = m.setById(g->setId))
        if (VVSet* set = m.findSet(s->name))
            set->members.push_back(vname);
    vol->state |= API_VV_STATE_IN_RCOPY;
    // A volume that joins a running group is synchronised at once.
    for (size_t i = 0; i < g->targets.size(); ++i)
        if (running(g->targets[i]))
        {
            RcMap& map = g->volumes.back().maps[i];
            if (g->targets[i].syncTid != 0)
            {
                map.status = RM_GROUP_VV_SYNCING;
                map.syncLength = vol->sizeMiB << 20;
                map.wwnStatus = RM_VV_WWN_VALID;
            }
            else
            {
                startSync(m, *g, i, false, "", now);
            }
        }
    return {};
}

RcResult RemoteCopy::start(
    ArrayModel& m, const std::string& name, int flags, const std::string& user, time_t now)
{
    (void)flags;
    RcGroup* g = state.findGroup(name);
    if (!g)
        return RcResult::fail(API_E_NOT_FOUND, "remote copy group " + quoted(name) + " does not exist");
    if ((state.system.mode & RM_SYS_MODE_ON) == 0 || (state.system.mode & RM_SYS_MODE_STOP) != 0)
        return RcResult::fail(API_E_INVALID, "remote copy is not started on this system");
    if (g->drState != RM_DR_NONE)
        return RcResult::fail(API_E_INVALID,
            "remote copy group " + quoted(name) + " is in disaster-recovery state " +
                std::to_string(g->drState) + "; recover or fail back first");
    if (!g->primary)
        return RcResult::fail(API_E_INVALID,
            "remote copy group " + quoted(name) + " is secondary here; it is started on its primary system");
    std::vector<size_t> pending;
    for (size_t i = 0; i < g->targets.size(); ++i)
    {
        if (running(g->targets[i]))
            continue;
        const RcTarget* t = state.findTarget(g->targets[i].target);
        if (!t || t->status != RM_TARGET_READY)
            return RcResult::fail(API_E_INVALID,
                "remote copy target " + quoted(g->targets[i].target) + " of group " + quoted(name) +
                    " is not ready");
        pending.push_back(i);
    }
    if (pending.empty())
        return RcResult::fail(API_E_INVALID, "remote copy group " + quoted(name) + " is already started");
    RcResult r;
    for (size_t i : pending)
    {
        const uint32_t tid = startSync(m, *g, i, false, user, now);
        g->targets[i].state = tid ? kGtStarting : kGtStarted;
        if (tid)
            r.tasks.push_back(tid);
    }
    return r;
}

RcResult RemoteCopy::stop(ArrayModel& m, const std::string& name, time_t now)
{
    (void)m;
    RcGroup* g = state.findGroup(name);
    if (!g)
        return RcResult::fail(API_E_NOT_FOUND, "remote copy group " + quoted(name) + " does not exist");
    bool any = false;
    for (size_t i = 0; i < g->targets.size(); ++i)
        if (running(g->targets[i]))
        {
            stopTarget(*g, i, now, API_TASK_CANCELLED, "remote copy group " + quoted(name) + " was stopped");
            any = true;
        }
    if (!any)
        return RcResult::fail(API_E_INVALID, "remote copy group " + quoted(name) + " is already stopped");
    return {};
}

RcResult RemoteCopy::sync(
    ArrayModel& m, const std::string& name, int flags, const std::string& user, time_t now)
{
    (void)flags;
    RcGroup* g = state.findGroup(name);
    if (!g)
        return RcResult::fail(API_E_NOT_FOUND, "remote copy group " + quoted(name) + " does not exist");
    RcResult r;
    bool started = false;
    for (size_t i = 0; i < g->targets.size(); ++i)
    {
        if (!running(g->targets[i]))
            continue;
        started = true;
        if (const uint32_t tid = startSync(m, *g, i, true, user, now))
            r.tasks.push_back(tid);
    }
    if (!started)
        return RcResult::fail(API_E_INVALID, "remote copy group " + quoted(name) + " isn't started");
    return r;
}

RcResult RemoteCopy::set(ArrayModel& m, const std::string& name, const std::string& target, int selector,
    int value, const std::string& user, time_t now)
{
    RcGroup* g = state.findGroup(name);
    if (!g)
        return RcResult::fail(API_E_NOT_FOUND, "remote copy group " + quoted(name) + " does not exist");
    const std::string group = "remote copy group " + quoted(name);
    if (selector != API_RCOPY_SET_PERIOD && drBusy(g->drState))
        return RcResult::fail(
            API_E_INVALID, group + " is in disaster-recovery state " + std::to_string(g->drState));
    RcResult r;
    switch (selector)
    {
    case API_RCOPY_SET_PERIOD:
    {
        if (value < 0)
            return RcResult::fail(API_E_INVALID, "sync period " + std::to_string(value) + " is negative");
        bool any = false;
        for (RcGroupTarget& gt : g->targets)
        {
            if (!target.empty() && gt.target != target)
                continue;
            if (gt.mode != RM_TARGET_MODE_PERIODIC)
            {
                if (target.empty())
                    continue;
                return RcResult::fail(
                    API_E_INVALID, group + " is not in periodic mode on target " + quoted(target));
            }
            gt.syncPeriod = static_cast<uint32_t>(value);
            any = true;
        }
        if (!any)
            return RcResult::fail(target.empty() ? API_E_INVALID : API_E_NOT_FOUND,
                target.empty() ? group + " has no periodic target"
                               : "remote copy target " + quoted(target) + " is not a target of " + group);
        return r;
    }
    case API_RCOPY_SET_FAILOVER:
        if (g->primary)
            return RcResult::fail(
                API_E_INVALID, group + " is the primary; a failover is made on its secondary system");
        if (g->drState != RM_DR_NONE)
            return RcResult::fail(
                API_E_INVALID, group + " is in disaster-recovery state " + std::to_string(g->drState));
        for (size_t i = 0; i < g->targets.size(); ++i)
        {
            RcGroupTarget& gt = g->targets[i];
            if (gt.syncTid)
            {
                tasks_->end(gt.syncTid, now, API_TASK_CANCELLED, group + " failed over");
                gt.syncTid = 0;
            }
            gt.state = kGtStopped;
            // What was in sync stays usable; what was moving is not.
            for (RcVolume& v : g->volumes)
                if (v.maps[i].status == RM_GROUP_VV_SYNCING)
                    v.maps[i].status = RM_GROUP_VV_STOPPED;
        }
        g->drState = RM_DR_FAILOVER_IN_PROGRESS;
        g->drStepEnds = now + kDrStepSeconds;
        return r;
    case API_RCOPY_SET_RECOVER:
    case API_RCOPY_SET_FAILBACK:
    {
        const bool recover = selector == API_RCOPY_SET_RECOVER;
        const bool fromFailover = g->drState == RM_DR_FAILOVER_DONE;
        if (!fromFailover && (recover || g->drState != RM_DR_RECOVER_DONE))
            return RcResult::fail(API_E_INVALID,
                group + " is not failed over" + (recover ? std::string() : std::string(" or recovered")));
        for (size_t i = 0; i < g->targets.size(); ++i)
        {
            const RcTarget* t = state.findTarget(g->targets[i].target);
            if (!t || t->status != RM_TARGET_READY)
                return RcResult::fail(API_E_INVALID,
                    "remote copy target " + quoted(g->targets[i].target) + " of group " + quoted(name) +
                        " is not ready");
        }
        for (size_t i = 0; i < g->targets.size(); ++i)
        {
            g->targets[i].state = kGtStarted;
            if (fromFailover)
                if (const uint32_t tid = startSync(m, *g, i, true, user, now))
                    r.tasks.push_back(tid);
        }
        g->drState = recover ? RM_DR_RECOVER_IN_PROGRESS : RM_DR_RESTORE_IN_PROGRESS;
        g->drStepEnds = now + kDrStepSeconds;
        return r;
    }
    case API_RCOPY_SET_REVERSE:
        if (g->drState != RM_DR_NONE && g->drState != RM_DR_FAILOVER_DONE && g->drState != RM_DR_RECOVER_DONE)
            return RcResult::fail(
                API_E_INVALID, group + " is in disaster-recovery state " + std::to_string(g->drState));
        if (g->drState == RM_DR_NONE)
            g->flags &= ~kReverseFromFailover;
        else
            g->flags |= kReverseFromFailover;
        g->drState = RM_DR_REVERSE_IN_PROGRESS;
        g->drStepEnds = now + kDrStepSeconds;
        return r;
    default:
        return RcResult::fail(API_E_INVALID,
            "unknown remote copy group setting " + std::to_string(selector) + " (value " +
                std::to_string(value) + ")");
    }
}

RcResult RemoteCopy::dismiss(ArrayModel& m, const std::string& name, const std::string& volume, time_t now)
{
    (void)now;
    RcGroup* g = state.findGroup(name);
    if (!g)
        return RcResult::fail(API_E_NOT_FOUND, "remote copy group " + quoted(name) + " does not exist");
    auto it = std::find_if(
        g->volumes.begin(), g->volumes.end(), [&](const RcVolume& v) { return v.name == volume; });
    if (it == g->volumes.end())
        return RcResult::fail(
            API_E_NOT_FOUND, "volume " + quoted(volume) + " is not in remote copy group " + quoted(name));
    g->volumes.erase(it);
    if (const VVSet* s = m.setById(g->setId))
        if (VVSet* set = m.findSet(s->name))
            set->members.erase(
                std::remove(set->members.begin(), set->members.end(), volume), set->members.end());
    if (Volume* vol = m.findVolume(volume))
        vol->state &= ~API_VV_STATE_IN_RCOPY;
    return {};
}

RcResult RemoteCopy::remove(ArrayModel& m, const std::string& name, time_t now)
{
    auto it = std::find_if(
        state.groups.begin(), state.groups.end(), [&](const RcGroup& g) { return g.name == name; });
    if (it == state.groups.end())
        return RcResult::fail(API_E_NOT_FOUND, "remote copy group " + quoted(name) + " does not exist");
    for (RcGroupTarget& gt : it->targets)
        if (gt.syncTid)
            tasks_->end(
                gt.syncTid, now, API_TASK_CANCELLED, "remote copy group " + quoted(name) + " was deleted");
    for (const RcVolume& v : it->volumes)
        if (Volume* vol = m.findVolume(v.name))
            vol->state &= ~API_VV_STATE_IN_RCOPY;
    const uint32_t setId = it->setId;
    state.groups.erase(it);
    m.removeSet(setId);
    return {};
}

}  // namespace zdasim
