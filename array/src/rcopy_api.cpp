// The remote copy calls (zdaapi_rcopy.h) over the RemoteCopy part.
#include <algorithm>
#include <cstring>

#include "call.h"

using namespace zdasim;

namespace
{

constexpr const char* kRcopy = "rcopy";             // api_getRCopy snapshots
constexpr const char* kRcopyTasks = "rcopy_tasks";  // sync_task_id lists

// Sections of one snapshot block, each aligned for its records.
size_t align(size_t n)
{
    return (n + 15) & ~size_t(15);
}

void fillTarget(const RcTarget& t, const RcState& s, rm_target& out)
{
    copyText(out.rm_hdr.rm_name, t.name);
    out.rm_hdr.rm_type = 2;
    out.rm_hdr.rm_ID = t.id;
    out.rm_status = t.status;
    out.rm_flags = t.flags;
    out.rm_type = t.type;
    out.rm_options = t.options;
    out.rm_remote_sysID = t.remoteSysId;
    copyText(out.rm_remote_sysname, t.remoteSysName);
    copyText(out.rm_node_wwn, t.nodeWwn);
    copyText(out.rm_computed_remote_node_wwn, t.computedWwn);
    uint32_t links = 0;
    for (const RcLink& l : s.links)
        links += l.target == t.name ? 1 : 0;
    out.rm_link_count = links;
    out.rm_policy = t.policy;
}

void fillLink(const RcLink& l, rm_link& out)
{
    copyText(out.rm_hdr.rm_name, l.name);
    out.rm_hdr.rm_type = 3;
    out.rm_hdr.rm_ID = l.id;
    copyText(out.rm_target, l.target);
    copyText(out.rm_local_port, l.localPort);
    copyText(out.rm_remote_addr, l.remoteAddr);
    out.rm_status = l.status;
    out.rm_type = l.type;
}

void fillGroupTarget(const RcGroupTarget& gt, rm_group_target& out)
{
    copyText(out.rm_target, gt.target);
    copyText(out.rm_remote_group, gt.remoteGroup);
    out.rm_mode = gt.mode;
    out.rm_sync_period = gt.syncPeriod;
    out.rm_state = gt.state;
    out.rm_options = gt.options;
    out.rm_last_synctime = gt.lastSync;
    copyText(out.usercpg, gt.userCpg);
    copyText(out.snapcpg, gt.snapCpg);
    out.rm_remote_group_id = gt.remoteGroupId;
}

void fillMap(const RcMap& m, bool primary, rm_group_vv_map& out)
{
    copyText(out.rm_target, m.target);
    copyText(out.rm_remote_name, m.remoteName);
    out.rm_remote_vid = m.remoteVid;
    out.rm_last_synctime = m.lastSync;
    out.rm_status = shownMapStatus(m.status, primary);
    out.rm_sync_offset = m.syncOffset;
    out.rm_sync_length = m.syncLength;
    out.rm_remote_wwn = m.remoteWwn;
    out.rm_remote_wwn_re = m.remoteWwnRe;
    out.rm_wwn_status = m.wwnStatus;
}

// Builds the whole configuration into one block handed out under kRcopy;
// `targets` always points at the block's start so that api_freeRCopy finds it.
api_Status_t snapshot(const ArrayModel& m, const RcState& s, Ledger& ledger, api_rcopy_t& out)
{
    size_t gtargets = 0, vvs = 0, maps = 0;
    for (const RcGroup& g : s.groups)
    {
        gtargets += g.targets.size();
        vvs += g.volumes.size();
        for (const RcVolume& v : g.volumes)
            maps += std::max(v.maps.size(), g.targets.size());
    }
    const size_t offLinks = align(s.targets.size() * sizeof(rm_target));
    const size_t offGroups = offLinks + align(s.links.size() * sizeof(rm_link));
    const size_t offGtargets = offGroups + align(s.groups.size() * sizeof(rm_group_wrapper));
    const size_t offVvs = offGtargets + align(gtargets * sizeof(rm_group_target));
    const size_t offMaps = offVvs + align(vvs * sizeof(rm_group_vv_wrapper));
    const size_t total = offMaps + maps * sizeof(rm_group_vv_map);
    auto* block = static_cast<char*>(ledger.allocate(total, kRcopy));
    if (!block)
        return statusError(API_E_NOMEM, "Out of memory reading the remote copy configuration");

    rm_system_config& sys = out.sys;
    copyText(sys.rm_hdr.rm_name, m.system.name);
    sys.rm_hdr.rm_type = 1;
    sys.rm_hdr.rm_ID = static_cast<uint16_t>(m.system.id & 0xFFFF);
    sys.rm_sys_mode = s.system.mode;
    sys.rm_status = s.system.status;
    sys.rm_local_sysID = m.system.id;
    copyText(sys.rm_local_sysname, m.system.name);
    copyText(sys.rm_node_wwn, wwnToText(0, m.system.wwnPrefix()));
    sys.rm_max_targets = 32;
    sys.rm_max_groups = m.system.rcopyLimits[ZDA_RM_MAX_GROUPS_PERIODIC];
    sys.rm_max_vvs = m.system.rcopyLimits[ZDA_RM_MAX_VOLUMES_PERIODIC];

    auto* targets = reinterpret_cast<rm_target*>(block);
    for (size_t i = 0; i < s.targets.size(); ++i)
        fillTarget(s.targets[i], s, targets[i]);
    auto* links = reinterpret_cast<rm_link*>(block + offLinks);
    for (size_t i = 0; i < s.links.size(); ++i)
        fillLink(s.links[i], links[i]);
    out.target_count = static_cast<int>(s.targets.size());
    out.targets = targets;
    out.link_count = static_cast<int>(s.links.size());
    out.links = s.links.empty() ? nullptr : links;

    auto* groupOut = reinterpret_cast<rm_group_wrapper*>(block + offGroups);
    auto* gtOut = reinterpret_cast<rm_group_target*>(block + offGtargets);
    auto* vvOut = reinterpret_cast<rm_group_vv_wrapper*>(block + offVvs);
    auto* mapOut = reinterpret_cast<rm_group_vv_map*>(block + offMaps);
    rm_group_wrapper** groupLink = &out.groups;
    for (const RcGroup& g : s.groups)
    {
        rm_group_wrapper& w = *groupOut++;
        copyText(w.group.rm_hdr.rm_name, g.name);
        w.group.rm_hdr.rm_type = 4;
        w.group.rm_hdr.rm_ID = g.id;
        w.group.rm_targets = static_cast<uint16_t>(g.targets.size());
        w.group.rm_primary = g.primary;
        w.group.rm_natural = g.natural;
        w.group.rm_dr_state = g.drState;
        copyText(w.group.rm_domain_name, g.domain);
        w.group.rm_auto_set_id = g.autoSetId;
        w.group.rm_flags = g.flags;
        w.gtarget_count = static_cast<int>(g.targets.size());
        w.gtargets = g.targets.empty() ? nullptr : gtOut;
        for (const RcGroupTarget& gt : g.targets)
            fillGroupTarget(gt, *gtOut++);
        rm_group_vv_wrapper** vvLink = &w.gvvs;
        for (const RcVolume& v : g.volumes)
        {
            rm_group_vv_wrapper& vw = *vvOut++;
            copyText(vw.gvv.rm_local_name, v.name);
            vw.gvv.rm_local_wwn = v.wwn;
            vw.gvv.rm_local_wwn_re = v.wwnRe;
            vw.map_count = static_cast<int>(v.maps.size());
            vw.maps = mapOut;
            for (const RcMap& map : v.maps)
            {
                if (!map.absent)
                    fillMap(map, g.primary != 0, *mapOut);
                ++mapOut;
            }
            // Readers walk a volume's maps by the group's target count.
            for (size_t k = v.maps.size(); k < g.targets.size(); ++k)
                ++mapOut;
            *vvLink = &vw;
            vvLink = &vw.next;
        }
        *groupLink = &w;
        groupLink = &w.next;
    }
    out.group_count = static_cast<int>(s.groups.size());
    return statusOk();
}

// Hands the tasks a call started to the caller's record.
api_Status_t giveTasks(ApiCall& call, const RcResult& r, api_rcopy_groupop_t& rec)
{
    rec.sync_task_num = 0;
    rec.sync_task_id = nullptr;
    if (r.tasks.empty())
        return statusOk();
    auto* ids = static_cast<api_rcopy_task_id_t*>(
        call.ledger().allocate(r.tasks.size() * sizeof(api_rcopy_task_id_t), kRcopyTasks));
    if (!ids)
        return statusError(API_E_NOMEM, "Out of memory listing %zu tasks", r.tasks.size());
    std::string list;
    for (size_t i = 0; i < r.tasks.size(); ++i)
    {
        ids[i].tid = r.tasks[i];
        list += (i ? "," : "") + std::to_string(r.tasks[i]);
    }
    rec.sync_task_num = static_cast<uint32_t>(r.tasks.size());
    rec.sync_task_id = ids;
    call.arg("tasks", list);
    return statusOk();
}

api_Status_t result(ApiCall& call, const RcResult& r)
{
    if (!r.ok())
        return call.done(statusError(r.code, "%s", r.text.c_str()));
    return call.done(statusOk());
}

std::string userOf(const api_evtparam_t* event)
{
    return event ? fieldName(event->user, sizeof event->user) : std::string();
}

// The group operations that may start tasks share their frame.
// `setting` (selector and value of api_setRCopyGroup) is journaled when given.
template <class Op>
api_Status_t groupOp(const char* function, api_evtparam_t* event, api_rcopy_groupop_t* rec, Op op,
    const std::pair<int, int>* setting = nullptr)
{
    ApiCall call(function, Sem::Needed, Changing{event});
    if (!rec)
        return call.done(statusError(API_E_INVALID, "No group record"));
    const std::string name = fieldName(rec->name, sizeof rec->name);
    call.arg("name", name).arg("flags", rec->flags);
    if (setting)
        call.arg("target", fieldName(rec->target, sizeof rec->target))
            .arg("selector", setting->first)
            .arg("value", setting->second);
    if (call.fault())
        return call.done(statusFromFault(*call.fault()));
    RcResult r = op(call, name);
    if (!r.ok())
        return result(call, r);
    return call.done(giveTasks(call, r, *rec));
}

}  // namespace

extern "C"
{

    api_Status_t api_getRCopy(int selector, api_rcopy_t* rcopy)
    try
    {
        ApiCall call("api_getRCopy", Sem::Needed);
        call.arg("selector", selector);
        if (!rcopy)
            return call.done(statusError(API_E_INVALID, "No remote copy record to fill"));
        std::memset(rcopy, 0, sizeof *rcopy);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        if (selector < API_RCOPY_QUERY_TYPE_ALL || selector > API_RCOPY_QUERY_TYPE_GROUPS)
            return call.done(statusError(API_E_INVALID, "Unknown remote copy query type %d", selector));
        api_Status_t st = snapshot(call.model(), runtime().rcopy.state, call.ledger(), *rcopy);
        if (st.code)
            std::memset(rcopy, 0, sizeof *rcopy);
        return call.done(st);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getRCopy");
    }

    void api_freeRCopy(api_rcopy_t* rcopy)
    try
    {
        if (!rcopy)
            return;
        Runtime& rt = runtime();
        rt.ledger.release(rcopy->targets, kRcopy);
        std::memset(rcopy, 0, sizeof *rcopy);
        rt.journal.add("api_freeRCopy");
    }
    catch (...)
    {
        caughtAtBoundary("api_freeRCopy");
    }

    api_Status_t api_createRCopyGroup(_api_evtparam_t* event, api_rcopy_group_t* group)
    try
    {
        ApiCall call("api_createRCopyGroup", Sem::Needed, Changing{event});
        if (!group)
            return call.done(statusError(API_E_INVALID, "No group record"));
        call.arg("name", fieldName(group->name, sizeof group->name))
            .arg("domain", fieldName(group->domain, sizeof group->domain))
            .arg("numtargets", group->numtargets);
        for (uint32_t j = 0; j < group->numtargets && j < 4; ++j)
        {
            const std::string k = "targets[" + std::to_string(j) + "].";
            const rm_group_target_t& t = group->targets[j];
            call.arg((k + "rm_target").c_str(), fieldName(t.rm_target, sizeof t.rm_target))
                .arg((k + "rm_mode").c_str(), t.rm_mode)
                .arg((k + "usercpg").c_str(), fieldName(t.usercpg, sizeof t.usercpg))
                .arg((k + "snapcpg").c_str(), fieldName(t.snapcpg, sizeof t.snapcpg));
        }
        call.arg("usercpg", fieldName(group->usercpg, sizeof group->usercpg))
            .arg("snapcpg", fieldName(group->snapcpg, sizeof group->snapcpg));
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        return result(call, runtime().rcopy.create(call.model(), *group, call.now()));
    }
    catch (...)
    {
        return caughtAtBoundary("api_createRCopyGroup");
    }

    api_Status_t api_setRCopyGroup(
        _api_evtparam_t* event, api_rcopy_groupop_t* rcopygroup, int selector, int value)
    try
    {
        const std::string user = userOf(event);
        const std::pair<int, int> setting(selector, value);
        return groupOp(
            "api_setRCopyGroup", event, rcopygroup,
            [&](ApiCall& call, const std::string& name) {
                const std::string target = fieldName(rcopygroup->target, sizeof rcopygroup->target);
                return runtime().rcopy.set(call.model(), name, target, selector, value, user, call.now());
            },
            &setting);
    }
    catch (...)
    {
        return caughtAtBoundary("api_setRCopyGroup");
    }

    api_Status_t api_admitRCopyVV(_api_evtparam_t* event, api_rcopy_vv_t* rcvv)
    try
    {
        ApiCall call("api_admitRCopyVV", Sem::Needed, Changing{event});
        if (!rcvv)
            return call.done(statusError(API_E_INVALID, "No volume record"));
        call.arg("vvname", fieldName(rcvv->vvname, sizeof rcvv->vvname))
            .arg("group", fieldName(rcvv->group, sizeof rcvv->group))
            .arg("nummaps", rcvv->nummaps);
        for (uint32_t j = 0; j < rcvv->nummaps && j < 4; ++j)
        {
            const std::string k = "vvmaps[" + std::to_string(j) + "].";
            const rm_group_vv_map_t& mp = rcvv->vvmaps[j];
            call.arg((k + "rm_target").c_str(), fieldName(mp.rm_target, sizeof mp.rm_target))
                .arg((k + "rm_remote_name").c_str(), fieldName(mp.rm_remote_name, sizeof mp.rm_remote_name))
                .arg((k + "rm_remote_vid").c_str(), static_cast<long long>(mp.rm_remote_vid));
        }
        call.arg("vv_add_flags", rcvv->vv_add_flags);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        return result(call, runtime().rcopy.admit(call.model(), *rcvv, call.now()));
    }
    catch (...)
    {
        return caughtAtBoundary("api_admitRCopyVV");
    }

    api_Status_t api_startRCopyGroup(_api_evtparam_t* event, api_rcopy_start_group* startGroup)
    try
    {
        const std::string user = userOf(event);
        return groupOp("api_startRCopyGroup", event, startGroup, [&](ApiCall& call, const std::string& name) {
            return runtime().rcopy.start(call.model(), name, startGroup->flags, user, call.now());
        });
    }
    catch (...)
    {
        return caughtAtBoundary("api_startRCopyGroup");
    }

    api_Status_t api_stopRCopyGroup(_api_evtparam_t* event, api_rcopy_groupop_t* group)
    try
    {
        return groupOp("api_stopRCopyGroup", event, group, [&](ApiCall& call, const std::string& name) {
            return runtime().rcopy.stop(call.model(), name, call.now());
        });
    }
    catch (...)
    {
        return caughtAtBoundary("api_stopRCopyGroup");
    }

    api_Status_t api_syncrcopy(_api_evtparam_t* event, api_rcopy_groupop_t* group)
    try
    {
        const std::string user = userOf(event);
        return groupOp("api_syncrcopy", event, group, [&](ApiCall& call, const std::string& name) {
            return runtime().rcopy.sync(call.model(), name, group->flags, user, call.now());
        });
    }
    catch (...)
    {
        return caughtAtBoundary("api_syncrcopy");
    }

    api_Status_t api_deleteRCopyGroup(_api_evtparam_t* event, api_rcopy_delete* rcdelgroup)
    try
    {
        ApiCall call("api_deleteRCopyGroup", Sem::Needed, Changing{event});
        if (!rcdelgroup)
            return call.done(statusError(API_E_INVALID, "No group record"));
        const std::string name = fieldName(rcdelgroup->name, sizeof rcdelgroup->name);
        call.arg("name", name)
            .arg("options", rcdelgroup->options)
            .arg("removevv_flag", rcdelgroup->removevv_flag)
            .arg("keepsnap", rcdelgroup->keepsnap);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        return result(call, runtime().rcopy.remove(call.model(), name, call.now()));
    }
    catch (...)
    {
        return caughtAtBoundary("api_deleteRCopyGroup");
    }

    api_Status_t api_dismissRCopyVV(_api_evtparam_t* event, api_rcopy_dismiss_vv* vv)
    try
    {
        ApiCall call("api_dismissRCopyVV", Sem::Needed, Changing{event});
        if (!vv)
            return call.done(statusError(API_E_INVALID, "No volume record"));
        const std::string name = fieldName(vv->vvname, sizeof vv->vvname);
        const std::string group = fieldName(vv->group, sizeof vv->group);
        call.arg("vvname", name)
            .arg("group", group)
            .arg("removevv_flag", vv->removevv_flag)
            .arg("keepsnap", vv->keepsnap);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        return result(call, runtime().rcopy.dismiss(call.model(), group, name, call.now()));
    }
    catch (...)
    {
        return caughtAtBoundary("api_dismissRCopyVV");
    }

    void api_freeRCopyGroup(api_rcopy_groupop_t* group)
    try
    {
        if (!group)
            return;
        Runtime& rt = runtime();
        rt.ledger.release(group->sync_task_id, kRcopyTasks);
        group->sync_task_id = nullptr;
        group->sync_task_num = 0;
        rt.journal.add("api_freeRCopyGroup");
    }
    catch (...)
    {
        caughtAtBoundary("api_freeRCopyGroup");
    }

    uint32_t api_external_set_id(uint32_t rm_auto_set_id)
    try
    {
        ApiCall call("api_external_set_id", Sem::NotNeeded);
        call.arg("rm_auto_set_id", rm_auto_set_id);
        const uint32_t id = runtime().rcopy.externalSetId(rm_auto_set_id);
        call.done(static_cast<int>(id));
        return id;
    }
    catch (...)
    {
        caughtAtBoundary("api_external_set_id");
        return 0;
    }

}  // extern "C"
