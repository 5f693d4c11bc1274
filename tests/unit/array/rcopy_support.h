// Helpers of the remote copy tests: a small array with remote copy, the
// request records as callers fill them, and a readable copy of what
// api_getRCopy answers.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "sim_fixture.h"

namespace zdatest
{

// Two ready targets to one remote system (one suits synchronous mode
// only), a failed one, base volumes in two domains, and a secondary
// group "sec" that is started and in sync.
inline const char* kRcopyArray = R"({
  "cpgs": [{"name": "FC", "domain": "d1"}, {"name": "NL", "domain": "d2"}],
  "users": [], "roles": [],
  "volumes": [
    {"name": "v1", "usrCpg": "FC", "snapCpg": "FC", "sizeMiB": 1024},
    {"name": "v2", "usrCpg": "FC", "snapCpg": "FC", "sizeMiB": 2048},
    {"name": "v3", "usrCpg": "FC", "sizeMiB": 1024},
    {"name": "v4", "usrCpg": "FC", "sizeMiB": 512},
    {"name": "w1", "usrCpg": "NL", "sizeMiB": 1024},
    {"name": "v1.snap", "type": "virtual-copy", "copyOf": "v1"}
  ],
  "remoteCopy": {
    "mode": "on",
    "targets": [
      {"name": "tA", "remoteSystemName": "far", "remoteSystemId": 77, "syncRateMiBps": 100,
       "nodeWwn": "2FF70002AC00004D"},
      {"name": "tSync", "remoteSystemName": "far", "remoteSystemId": 77, "flags": 1, "syncRateMiBps": 100},
      {"name": "tDown", "remoteSystemName": "gone", "remoteSystemId": 78, "status": "failed"}
    ],
    "links": [{"name": "l1", "target": "tA", "localPort": "0:3:1", "remoteAddress": "198.51.100.7"}],
    "groups": [
      {"name": "sec", "domain": "d1", "role": "secondary",
       "targets": [{"target": "tA", "mode": "periodic", "period": 600, "state": "started", "lastSync": "-1m"}],
       "volumes": [{"name": "v3", "maps": [{"target": "tA", "status": "synced", "lastSync": "-1m"}]}]}
    ]
  }
})";

class RcopyTest : public ArrayTest
{
protected:
    void SetUp() override
    {
        ArrayTest::SetUp();
        char error[512] = "";
        ASSERT_EQ(zdasim_load_description_text(kRcopyArray, "rcopy test array", error, sizeof error), 0)
            << error;
        zdasim_clear_records();
    }
};

// ---- requests, as callers build them ----------------------------------------

// Groups are periodic to tA unless told.
inline api_Status_t createGroup(const std::string& name,
    const std::vector<std::pair<std::string, uint32_t>>& targets = {{"tA", RM_TARGET_MODE_PERIODIC}},
    const std::string& domain = "d1")
{
    api_rcopy_group_t g{};
    setField(g.name, name);
    setField(g.domain, domain);
    for (size_t i = 0; i < targets.size(); ++i)
    {
        setField(g.targets[i].rm_target, targets[i].first);
        g.targets[i].rm_mode = targets[i].second;
    }
    g.numtargets = static_cast<uint32_t>(targets.size());
    return audited(api_createRCopyGroup, &g);
}

inline api_Status_t admit(
    const std::string& group, const std::string& vv, const std::vector<std::string>& targets = {})
{
    api_rcopy_vv_t r{};
    setField(r.vvname, vv);
    setField(r.group, group);
    r.nummaps = static_cast<uint32_t>(targets.size());
    for (size_t i = 0; i < targets.size(); ++i)
    {
        setField(r.vvmaps[i].rm_target, targets[i]);
        setField(r.vvmaps[i].rm_remote_name, vv + "_remote");
        r.vvmaps[i].rm_remote_vid = 0xFFFFFFFEu;
    }
    r.vv_add_flags = 0x4;
    return audited(api_admitRCopyVV, &r);
}

// A group operation; the task ids it started go to *tasks when given.
template <class Call>
api_Status_t groupOp(Call call, const std::string& group, uint8_t flags = 0,
    std::vector<uint32_t>* tasks = nullptr, const std::string& target = "")
{
    api_rcopy_groupop_t r{};
    setField(r.name, group);
    setField(r.target, target);
    r.flags = flags;
    const api_Status_t st = audited(call, &r);
    if (tasks)
    {
        tasks->clear();
        for (uint32_t i = 0; r.sync_task_id && i < r.sync_task_num; ++i)
            tasks->push_back(r.sync_task_id[i].tid);
    }
    api_freeRCopyGroup(&r);
    return st;
}

inline api_Status_t start(const std::string& g, std::vector<uint32_t>* tasks = nullptr)
{
    return groupOp(api_startRCopyGroup, g, 2, tasks);
}
inline api_Status_t stop(const std::string& g)
{
    return groupOp(api_stopRCopyGroup, g);
}
inline api_Status_t sync(const std::string& g, std::vector<uint32_t>* tasks = nullptr)
{
    return groupOp(api_syncrcopy, g, 0, tasks);
}
inline api_Status_t setGroup(const std::string& g, int selector, int value, const std::string& target = "",
    std::vector<uint32_t>* tasks = nullptr)
{
    return groupOp(
        [&](api_evtparam_t* e, api_rcopy_groupop_t* r) { return api_setRCopyGroup(e, r, selector, value); },
        g, 0, tasks, target);
}
inline api_Status_t removeGroup(const std::string& g)
{
    api_rcopy_delete d{};
    setField(d.name, g);
    d.removevv_flag = API_RCOPY_REMOVE_VVS;
    return audited(api_deleteRCopyGroup, &d);
}
inline api_Status_t dismiss(const std::string& g, const std::string& vv)
{
    api_rcopy_dismiss_vv d{};
    setField(d.group, g);
    setField(d.vvname, vv);
    d.removevv_flag = API_RCOPY_REMOVE_VVS;
    return audited(api_dismissRCopyVV, &d);
}

// ---- what api_getRCopy answers, copied out of the record ------------------------

struct VolView
{
    std::string name;
    unsigned long long wwn, wwnRe;
    std::vector<rm_group_vv_map> maps;
};
struct GroupView
{
    std::string name, domain;
    int id, primary, natural, dr;
    uint32_t autoSetId;
    std::vector<rm_group_target> targets;
    std::vector<VolView> volumes;
    const rm_group_vv_map& map(const std::string& vv, size_t t = 0) const
    {
        for (const VolView& v : volumes)
            if (v.name == vv)
                return v.maps.at(t);
        throw std::out_of_range("no volume " + vv);
    }
};
struct RcopyView
{
    int sysMode = 0;
    std::vector<rm_target> targets;
    int linkCount = 0;
    std::vector<GroupView> groups;
    const GroupView* group(const std::string& name) const
    {
        for (const GroupView& g : groups)
            if (g.name == name)
                return &g;
        return nullptr;
    }
};

// Reads the configuration the way every caller does: zeroed record, status
// form, release whatever happened.
inline RcopyView readRcopy(int selector = API_RCOPY_QUERY_TYPE_ALL)
{
    api_rcopy_t rc{};
    api_Status_t st = statusForm([&] { return api_getRCopy(selector, &rc); });
    RcopyView out;
    EXPECT_EQ(st.code, 0) << text(st);
    out.sysMode = rc.sys.rm_sys_mode;
    for (int i = 0; i < rc.target_count; ++i)
        out.targets.push_back(rc.targets[i]);
    out.linkCount = rc.link_count;
    for (rm_group_wrapper* w = rc.groups; w; w = w->next)
    {
        EXPECT_EQ(w->gtarget_count, w->group.rm_targets);
        GroupView g{w->group.rm_hdr.rm_name, w->group.rm_domain_name, w->group.rm_hdr.rm_ID,
            w->group.rm_primary, w->group.rm_natural, static_cast<int>(w->group.rm_dr_state),
            w->group.rm_auto_set_id, {w->gtargets, w->gtargets + w->gtarget_count}, {}};
        // Readers walk the maps by the group's target count.
        for (rm_group_vv_wrapper* v = w->gvvs; v; v = v->next)
            g.volumes.push_back({v->gvv.rm_local_name, v->gvv.rm_local_wwn, v->gvv.rm_local_wwn_re,
                {v->maps, v->maps + w->group.rm_targets}});
        out.groups.push_back(g);
    }
    api_freeRCopy(&rc);
    return out;
}

// One group as api_getRCopy answers it now.
inline GroupView groupOf(const std::string& name)
{
    const RcopyView rc = readRcopy();
    const GroupView* g = rc.group(name);
    EXPECT_NE(g, nullptr) << "no group " << name;
    return g ? *g : GroupView{};
}

inline std::vector<api_task_t> tasks()
{
    int count = -1;
    api_task_t* list = nullptr;
    EXPECT_EQ(intForm([&] { return api_getTasks(&count, &list); }), 0);
    std::vector<api_task_t> out(list, list + (count > 0 ? count : 0));
    free_if_not_null(list);
    return out;
}

inline api_task_t task(uint32_t tid)
{
    for (const api_task_t& t : tasks())
        if (t.tid == tid)
            return t;
    ADD_FAILURE() << "no task " << tid;
    return api_task_t{};
}

}  // namespace zdatest
