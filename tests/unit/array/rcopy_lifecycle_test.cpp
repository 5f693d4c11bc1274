// Remote copy life cycles under stepped time, read back through
// api_getRCopy as the module reads them.
#include <atomic>
#include <functional>
#include <tuple>

#include "rcopy_support.h"

namespace zdatest
{
namespace
{

using ::testing::Contains;
using ::testing::StartsWith;

Names setMembersById(uint32_t id)
{
    for (const auto& [name, set] : listSets())
        if (set.id == id)
            return set.members;
    ADD_FAILURE() << "no vvset " << id;
    return {};
}

// A periodic group on the given targets.
template <class... Target>
api_Status_t createOn(const std::string& group, Target... targets)
{
    return createGroup(group, {{targets, RM_TARGET_MODE_PERIODIC}...});
}

// A group's disaster-recovery state, current role and natural role.
std::tuple<int, int, int> roles(const std::string& group)
{
    const GroupView g = groupOf(group);
    return {g.dr, g.primary, g.natural};
}

TEST_F(RcopyTest, PrimaryGroupGoesFromCreationThroughSyncStopAndDeletion)
{
    ASSERT_EQ(createGroup("g1").code, 0);
    ASSERT_EQ(admit("g1", "v1", {"tA"}).code, 0);
    ASSERT_EQ(admit("g1", "v2", {"tA"}).code, 0);

    EXPECT_EQ(readRcopy().sysMode, RM_SYS_MODE_ON);
    GroupView g = groupOf("g1");
    EXPECT_EQ(g.domain, "d1");
    EXPECT_EQ(roles("g1"), std::make_tuple(RM_DR_NONE, 1, 1));
    ASSERT_EQ(g.targets.size(), 1u);
    EXPECT_STREQ(g.targets[0].rm_remote_group, "g1.r");
    EXPECT_EQ(g.targets[0].rm_mode, static_cast<uint32_t>(RM_TARGET_MODE_PERIODIC));
    EXPECT_EQ(g.targets[0].rm_state, 0);
    EXPECT_EQ(g.map("v1").rm_status, RM_GROUP_VV_NEW);
    EXPECT_STREQ(g.map("v1").rm_remote_name, "v1_remote");
    EXPECT_EQ(g.map("v1").rm_wwn_status, RM_VV_WWN_INVALID);
    EXPECT_NE(g.volumes[0].wwnRe, 0u);

    // The automatic vvset holds the group's volumes in order.
    const uint32_t setId = api_external_set_id(g.autoSetId);
    ASSERT_NE(setId, 0u);
    EXPECT_EQ(setMembersById(setId), (Names{"v1", "v2"}));
    EXPECT_EQ(api_external_set_id(g.autoSetId + 1000), 0u);
    EXPECT_TRUE(volume("v1").state & API_VV_STATE_IN_RCOPY);

    // Start: one synchronisation, 3 GiB at 100 MiB/s.
    std::vector<uint32_t> started;
    ASSERT_EQ(start("g1", &started).code, 0);
    ASSERT_EQ(started.size(), 1u);
    g = groupOf("g1");
    EXPECT_EQ(g.targets[0].rm_state, 1);
    EXPECT_EQ(g.map("v1").rm_status, RM_GROUP_VV_SYNCING);
    EXPECT_EQ(g.map("v1").rm_sync_length, 1024ull << 20);
    EXPECT_EQ(g.map("v2").rm_sync_length, 2048ull << 20);
    EXPECT_EQ(g.map("v1").rm_wwn_status, RM_VV_WWN_VALID);
    api_task_t t = task(started[0]);
    EXPECT_EQ(std::make_tuple(t.type, t.state), std::make_tuple(API_TASK_RCOPY_SYNC, API_TASK_ACTIVE));
    EXPECT_STREQ(t.user, "admin");

    zdasim_clock_advance(10);
    const rm_group_vv_map midway = groupOf("g1").map("v2");
    EXPECT_EQ(midway.rm_status, RM_GROUP_VV_SYNCING);
    EXPECT_GT(midway.rm_sync_offset, 0u);
    EXPECT_LT(midway.rm_sync_offset, midway.rm_sync_length);
    EXPECT_EQ(task(started[0]).percentDone, 32);

    zdasim_clock_advance(30);
    g = groupOf("g1");
    EXPECT_EQ(g.targets[0].rm_state, 2);
    EXPECT_EQ(g.map("v1").rm_status, RM_GROUP_VV_SYNCED);
    EXPECT_EQ(g.map("v2").rm_sync_offset, g.map("v2").rm_sync_length);
    EXPECT_EQ(g.map("v1").rm_last_synctime, static_cast<uint32_t>(kT0 + 31));
    EXPECT_EQ(g.targets[0].rm_last_synctime, static_cast<uint32_t>(kT0 + 31));
    t = task(started[0]);
    EXPECT_EQ(
        std::make_tuple(t.state, t.percentDone, t.endTime), std::make_tuple(API_TASK_DONE, 100, kT0 + 31));

    // A period makes the group catch up at each boundary.
    ASSERT_EQ(setGroup("g1", API_RCOPY_SET_PERIOD, 300, "tA").code, 0);
    zdasim_clock_advance(650);
    g = groupOf("g1");
    EXPECT_EQ(g.targets[0].rm_sync_period, 300u);
    EXPECT_EQ(g.targets[0].rm_last_synctime, static_cast<uint32_t>(kT0 + 31 + 600));
    EXPECT_EQ(g.map("v1").rm_last_synctime, static_cast<uint32_t>(kT0 + 31 + 600));

    // A sync moves what changed: a sixteenth of each volume.
    std::vector<uint32_t> resync;
    ASSERT_EQ(sync("g1", &resync).code, 0);
    ASSERT_EQ(resync.size(), 1u);
    EXPECT_EQ(groupOf("g1").map("v2").rm_status, RM_GROUP_VV_SYNCING);
    EXPECT_EQ(groupOf("g1").map("v2").rm_sync_length, (2048ull << 20) / 16);
    zdasim_clock_advance(5);
    EXPECT_EQ(groupOf("g1").map("v2").rm_status, RM_GROUP_VV_SYNCED);

    // Stop: the volumes stop; a sync is refused the way callers look for.
    ASSERT_EQ(stop("g1").code, 0);
    EXPECT_EQ(groupOf("g1").targets[0].rm_state, 4);
    EXPECT_EQ(groupOf("g1").map("v1").rm_status, RM_GROUP_VV_STOPPED);
    const api_Status_t st = sync("g1");
    EXPECT_NE(st.code, 0);
    EXPECT_THAT(text(st), HasSubstr("isn't started"));

    // Dismiss and delete hand the volumes back.
    ASSERT_EQ(dismiss("g1", "v2").code, 0);
    EXPECT_EQ(setMembersById(setId), (Names{"v1"}));
    EXPECT_FALSE(volume("v2").state & API_VV_STATE_IN_RCOPY);
    ASSERT_EQ(groupOf("g1").volumes.size(), 1u);
    ASSERT_EQ(removeGroup("g1").code, 0);
    EXPECT_EQ(readRcopy().group("g1"), nullptr);
    EXPECT_FALSE(volume("v1").state & API_VV_STATE_IN_RCOPY);
    api_Status_t gone;
    EXPECT_TRUE(listSets("RCP_g1", nullptr, &gone).empty());
    EXPECT_EQ(gone.code, API_E_NOT_FOUND);
}

TEST_F(RcopyTest, GroupVolumesAndTheirSetAreProtectedWhileTheGroupLives)
{
    ASSERT_EQ(createGroup("g1").code, 0);
    ASSERT_EQ(admit("g1", "v1").code, 0);  // no maps given: the far volume takes the local name
    EXPECT_STREQ(groupOf("g1").map("v1").rm_remote_name, "v1");

    api_name_t vol = names({"v1"})[0];
    api_evtparam_t e = event("remove");
    EXPECT_EQ(intForm([&] { return api_removeVVs(&e, &vol, 1, 1, 0); }), API_E_IN_USE);
    const api_Status_t st = statusForm([&] { return api_removeVVSet(&e, "RCP_g1"); });
    EXPECT_EQ(st.code, API_E_IN_USE);
    EXPECT_THAT(text(st), HasSubstr("g1"));
}

TEST_F(RcopyTest, VolumeAdmittedToAStartedGroupSyncsAtOnce)
{
    ASSERT_EQ(createGroup("g1").code, 0);
    ASSERT_EQ(start("g1").code, 0);  // empty: nothing to move, started at once
    EXPECT_EQ(groupOf("g1").targets[0].rm_state, 2);
    ASSERT_EQ(admit("g1", "v1", {"tA"}).code, 0);
    EXPECT_EQ(groupOf("g1").map("v1").rm_status, RM_GROUP_VV_SYNCING);
    zdasim_clock_advance(11);
    EXPECT_EQ(groupOf("g1").map("v1").rm_status, RM_GROUP_VV_SYNCED);
}

TEST_F(RcopyTest, SecondaryFailsOverFailsBackAndReverses)
{
    EXPECT_EQ(groupOf("sec").primary, 0);
    EXPECT_EQ(groupOf("sec").map("v3").rm_status, RM_GROUP_VV_REMOTE_SYNCED);  // secondary view

    // A secondary group is not started or failed over from the primary side.
    EXPECT_THAT(text(start("sec")), HasSubstr("secondary"));
    ASSERT_EQ(createGroup("prim").code, 0);
    EXPECT_THAT(text(setGroup("prim", API_RCOPY_SET_FAILOVER, 0)), HasSubstr("primary"));

    ASSERT_EQ(setGroup("sec", API_RCOPY_SET_FAILOVER, 0).code, 0);
    EXPECT_EQ(roles("sec"), std::make_tuple(RM_DR_FAILOVER_IN_PROGRESS, 0, 0));
    EXPECT_EQ(groupOf("sec").targets[0].rm_state, 4);
    EXPECT_NE(setGroup("sec", API_RCOPY_SET_FAILOVER, 0).code, 0);  // in progress

    zdasim_clock_advance(5);
    // The role turned; the natural one did not.
    EXPECT_EQ(roles("sec"), std::make_tuple(RM_DR_FAILOVER_DONE, 1, 0));
    EXPECT_EQ(groupOf("sec").map("v3").rm_status, RM_GROUP_VV_SYNCED);
    EXPECT_THAT(text(start("sec")), HasSubstr("disaster-recovery"));

    // Recover moves the data back, failback returns to the natural roles.
    std::vector<uint32_t> moving;
    ASSERT_EQ(setGroup("sec", API_RCOPY_SET_RECOVER, 0, "", &moving).code, 0);
    EXPECT_EQ(moving.size(), 1u);
    EXPECT_EQ(groupOf("sec").dr, RM_DR_RECOVER_IN_PROGRESS);
    zdasim_clock_advance(30);
    EXPECT_EQ(groupOf("sec").dr, RM_DR_RECOVER_DONE);
    ASSERT_EQ(setGroup("sec", API_RCOPY_SET_FAILBACK, 0, "", &moving).code, 0);
    EXPECT_TRUE(moving.empty());  // recovered already: nothing to move
    EXPECT_EQ(groupOf("sec").dr, RM_DR_RESTORE_IN_PROGRESS);
    EXPECT_EQ(groupOf("sec").targets[0].rm_state, 2);
    zdasim_clock_advance(5);
    EXPECT_EQ(roles("sec"), std::make_tuple(RM_DR_NONE, 0, 0));
    EXPECT_EQ(groupOf("sec").map("v3").rm_status, RM_GROUP_VV_REMOTE_SYNCED);

    // Failback straight from a failover resynchronises first.
    ASSERT_EQ(setGroup("sec", API_RCOPY_SET_FAILOVER, 0).code, 0);
    zdasim_clock_advance(5);
    ASSERT_EQ(setGroup("sec", API_RCOPY_SET_FAILBACK, 0, "", &moving).code, 0);
    ASSERT_EQ(moving.size(), 1u);
    zdasim_clock_advance(4);
    EXPECT_EQ(groupOf("sec").dr, RM_DR_RESTORE_IN_PROGRESS);
    zdasim_clock_advance(30);
    EXPECT_EQ(task(moving[0]).state, API_TASK_DONE);
    EXPECT_EQ(groupOf("sec").dr, RM_DR_NONE);

    // Reverse turns both directions round.
    ASSERT_EQ(setGroup("sec", API_RCOPY_SET_REVERSE, 16).code, 0);
    EXPECT_EQ(groupOf("sec").dr, RM_DR_REVERSE_IN_PROGRESS);
    zdasim_clock_advance(5);
    EXPECT_EQ(roles("sec"), std::make_tuple(RM_DR_NONE, 1, 1));
    EXPECT_EQ(groupOf("sec").map("v3").rm_status, RM_GROUP_VV_SYNCED);
}

TEST_F(RcopyTest, FailingTargetStopsItsGroupsAndFailsTheirSync)
{
    ASSERT_EQ(createGroup("g1").code, 0);
    ASSERT_EQ(admit("g1", "v2").code, 0);
    std::vector<uint32_t> started;
    ASSERT_EQ(start("g1", &started).code, 0);
    zdasim_clock_advance(5);
    ASSERT_EQ(zdasim_rcopy_target_set_status("tA", RM_TARGET_FAILED), 0);
    zdasim_clock_advance(1);
    EXPECT_EQ(groupOf("g1").targets[0].rm_state, 4);
    EXPECT_EQ(groupOf("g1").map("v2").rm_status, RM_GROUP_VV_STOPPED);
    const api_task_t t = task(started[0]);
    EXPECT_EQ(t.state, API_TASK_FAILED);
    EXPECT_THAT(t.detail, HasSubstr("tA"));
    EXPECT_GT(t.percentDone, 0);
    EXPECT_LT(t.percentDone, 100);
    // Until the target is back the group does not start.
    EXPECT_THAT(text(start("g1")), HasSubstr("not ready"));
    ASSERT_EQ(zdasim_rcopy_target_set_status("tA", RM_TARGET_READY), 0);
    EXPECT_EQ(start("g1").code, 0);
}

TEST_F(RcopyTest, RefusalsNameTheObjectAndTheReason)
{
    ASSERT_EQ(createGroup("g1").code, 0);
    ASSERT_EQ(createOn("gdown", "tDown").code, 0);
    ASSERT_EQ(admit("g1", "v1").code, 0);
    ASSERT_EQ(admit("gdown", "v2").code, 0);
    const std::vector<std::tuple<const char*, std::function<api_Status_t()>, int, const char*>> cases = {
        {"create twice", [] { return createGroup("g1"); }, API_E_EXISTS, "g1"},
        {"create on unknown target", [] { return createOn("g2", "nope"); }, API_E_NOT_FOUND, "nope"},
        {"create with a mode the target does not suit", [] { return createOn("g2", "tSync"); }, API_E_INVALID,
            "tSync"},
        {"create with a target twice", [] { return createOn("g2", "tA", "tA"); }, API_E_INVALID, "twice"},
        {"admit an unknown volume", [] { return admit("g1", "zz"); }, API_E_NOT_FOUND, "zz"},
        {"admit into an unknown group", [] { return admit("zz", "v2"); }, API_E_NOT_FOUND, "zz"},
        {"admit a virtual copy", [] { return admit("g1", "v1.snap"); }, API_E_INVALID, "virtual copy"},
        {"admit across domains", [] { return admit("g1", "w1"); }, API_E_INVALID, "domain"},
        {"admit a volume of another group", [] { return admit("g1", "v2"); }, API_E_IN_USE, "gdown"},
        {"admit mapped to a foreign target", [] { return admit("g1", "v4", {"tSync"}); }, API_E_NOT_FOUND,
            "tSync"},
        {"start an unknown group", [] { return start("zz"); }, API_E_NOT_FOUND, "zz"},
        {"start on a failed target", [] { return start("gdown"); }, API_E_INVALID, "tDown"},
        {"stop a group never started", [] { return stop("g1"); }, API_E_INVALID, "g1"},
        {"sync a group never started", [] { return sync("g1"); }, API_E_INVALID, "isn't started"},
        {"unknown setting", [] { return setGroup("g1", 42, 1); }, API_E_INVALID, "42"},
        {"period on a foreign target", [] { return setGroup("g1", API_RCOPY_SET_PERIOD, 300, "tSync"); },
            API_E_NOT_FOUND, "tSync"},
        {"failback without failover", [] { return setGroup("sec", API_RCOPY_SET_FAILBACK, 0); },
            API_E_INVALID, "not failed over"},
        {"dismiss a volume not in the group", [] { return dismiss("g1", "v3"); }, API_E_NOT_FOUND, "v3"},
        {"delete an unknown group", [] { return removeGroup("zz"); }, API_E_NOT_FOUND, "zz"},
    };
    for (const auto& [what, call, code, textPart] : cases)
    {
        const api_Status_t st = call();
        EXPECT_EQ(st.code, code) << what << ": " << text(st);
        EXPECT_THAT(text(st), HasSubstr(textPart)) << what;
    }
    EXPECT_THAT(zda_test::journalOf("api_setRCopyGroup"),
        Contains(StartsWith("api_setRCopyGroup name=\"g1\" flags=0 target=\"tSync\" selector=3 value=300")));
    // None of them changed the groups.
    EXPECT_EQ(readRcopy().groups.size(), 3u);
    EXPECT_EQ(groupOf("g1").volumes.size(), 1u);
    EXPECT_EQ(groupOf("g1").targets[0].rm_state, 0);
}

TEST_F(RcopyTest, StartStopSyncHandTheirTasksToTheCaller)
{
    ASSERT_EQ(createGroup("g2", {{"tA", RM_TARGET_MODE_PERIODIC}, {"tSync", RM_TARGET_MODE_SYNC}}).code, 0);
    ASSERT_EQ(admit("g2", "v1", {"tA", "tSync"}).code, 0);
    std::vector<uint32_t> started;
    ASSERT_EQ(start("g2", &started).code, 0);
    EXPECT_EQ(started.size(), 2u);  // one per target
    EXPECT_EQ(zdasim_ledger_outstanding("rcopy_tasks"), 0);
    ASSERT_EQ(groupOf("g2").volumes[0].maps.size(), 2u);
    EXPECT_STREQ(groupOf("g2").map("v1", 1).rm_target, "tSync");
    // An api_syncrcopy while the first synchronisation runs hands back the running tasks.
    std::vector<uint32_t> again;
    ASSERT_EQ(sync("g2", &again).code, 0);
    EXPECT_EQ(again, started);
    // Stop cancels them.
    ASSERT_EQ(stop("g2").code, 0);
    for (uint32_t tid : started)
        EXPECT_EQ(task(tid).state, API_TASK_CANCELLED);
    EXPECT_THAT(lastJournalOf("api_startRCopyGroup"), HasSubstr("tasks="));
}

// Readers see whole snapshots while another thread changes the groups and
// the clock moves.
TEST_F(RcopyTest, SnapshotsStayWholeWhileGroupsChange)
{
    ASSERT_EQ(createGroup("busy", {{"tA", RM_TARGET_MODE_PERIODIC}, {"tSync", RM_TARGET_MODE_SYNC}}).code, 0);
    std::atomic<bool> done{false};
    std::atomic<int> broken{0};
    inThreads(4, [&](int t) {
        for (int i = 0; t == 0 && i < 30; ++i)
        {
            EXPECT_EQ(admit("busy", "v4").code, 0);
            EXPECT_EQ(start("busy").code, 0);
            zdasim_clock_advance(3);
            EXPECT_EQ(stop("busy").code, 0);
            EXPECT_EQ(dismiss("busy", "v4").code, 0);
        }
        if (t == 0)
            done = true;
        while (!done)
        {
            api_rcopy_t rc{};
            broken += statusForm([&] { return api_getRCopy(API_RCOPY_QUERY_TYPE_ALL, &rc); }).code != 0;
            for (rm_group_wrapper* g = rc.groups; g; g = g->next)
                for (rm_group_vv_wrapper* v = g->gvvs; v; v = v->next)
                    broken += v->map_count != g->group.rm_targets || g->gtarget_count != g->group.rm_targets;
            api_freeRCopy(&rc);
        }
    });
    EXPECT_EQ(broken, 0);
}

}  // namespace
}  // namespace zdatest
