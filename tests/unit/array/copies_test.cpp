// Copies of single volumes: physical copies made by tasks (through the
// library and through the simulator's control), resync, restore, stop and
// promote, snapshot space and storage settings.
#include <tuple>

#include "rcopy_support.h"

namespace zdatest
{
namespace
{

TEST_F(ArrayTest, PhysicalCopyOfANewVolumeRunsAsATaskAndCanBeLeftInactive)
{
    uint32_t tid = 0;
    ASSERT_EQ(physicalCopy("vol1", "vol1.pc", API_PCOPY_CREATE_TARGET | API_PCOPY_INACTIVE, &tid).code, 0);
    api_VVObj_t v = volume("vol1.pc");
    EXPECT_EQ(v.type, API_VV_TYPE_PHYSICAL_COPY);
    EXPECT_STREQ(v.copyOfName, "vol1");
    EXPECT_STREQ(v.usrCpgName, "FC_r5");
    EXPECT_EQ(v.sizeMiB, 10240u);
    EXPECT_EQ(v.state & (API_VV_STATE_COPYING | API_VV_STATE_COPY_INACTIVE),
        API_VV_STATE_COPYING | API_VV_STATE_COPY_INACTIVE);
    EXPECT_EQ(task(tid).type, API_TASK_PHYSICAL_COPY);
    EXPECT_STREQ(task(tid).user, "admin");

    // 10240 MiB at the array's copy speed; looked at later, the copy keeps
    // the time it finished.
    const time_t finished = kT0 + 10240 / API_COPY_MIB_PER_SECOND;
    zdasim_clock_set(finished + 100);
    v = volume("vol1.pc");
    EXPECT_EQ(v.copyProgress, 100);
    EXPECT_FALSE(v.state & API_VV_STATE_COPYING);
    EXPECT_EQ(v.curWhenSynced, finished);
    const api_task_t t = task(tid);
    EXPECT_EQ(
        std::make_tuple(t.state, t.percentDone, t.endTime), std::make_tuple(API_TASK_DONE, 100, finished));
}

TEST_F(ArrayTest, PhysicalCopyOntoAnExistingVolumeChecksTheTarget)
{
    // vol3 (5120 MiB) is too small for vol1 (10240 MiB); vol2 has a copy of its own.
    const std::tuple<const char*, const char*, int> cases[] = {
        {"vol1", "vol3", API_E_INVALID}, {"vol1", "vol2", API_E_IN_USE}, {"vol1", "admvv", API_E_ACCESS},
        {"vol1", "nothere", API_E_NOT_FOUND}, {"vol1", "vol1.rw", API_E_INVALID},
        {"vol1.rw", "vol2", API_E_INVALID}, {"vol1", "vol4", API_E_INVALID},  // another domain
        {"vol3", "vol1", API_E_IN_USE},                                       // vol1 has snapshots
    };
    for (const auto& [parent, target, code] : cases)
        EXPECT_EQ(physicalCopy(parent, target, 0).code, code) << parent << " " << target;
    EXPECT_EQ(physicalCopy("vol1", "vol2", API_PCOPY_CREATE_TARGET).code, API_E_EXISTS);

    ASSERT_EQ(physicalCopy("vol3", "vol3.pc", API_PCOPY_CREATE_TARGET).code, 0);
    // While it runs the copy takes part in no other copy, and is not removed.
    EXPECT_EQ(physicalCopy("vol3.pc", "vol3.pc2", API_PCOPY_CREATE_TARGET).code, API_E_IN_USE);
    EXPECT_EQ(audited(api_resyncCopy, "vol3.pc", nullptr).code, API_E_IN_USE);
    EXPECT_EQ(audited(api_restoreCopy, "vol3.pc", nullptr).code, API_E_IN_USE);
    EXPECT_EQ(audited(api_promoteCopy, "vol3.pc").code, API_E_IN_USE);
    api_name_t name = names({"vol3.pc"})[0];
    api_evtparam_t e{};
    EXPECT_EQ(intForm([&] { return api_removeVVs(&e, &name, 1, 0, 0); }), API_E_IN_USE);
    zdasim_clock_advance(100);
    EXPECT_EQ(intForm([&] { return api_removeVVs(&e, &name, 1, 0, 0); }), 0);
}

TEST_F(ArrayTest, StopResyncRestoreAndPromoteOfAPhysicalCopy)
{
    uint32_t tid = 0;
    ASSERT_EQ(physicalCopy("vol2", "vol2.pc", API_PCOPY_CREATE_TARGET, &tid).code, 0);
    zdasim_clock_advance(20);  // 20480 MiB: 80 s in all
    ASSERT_EQ(audited(api_stopCopy, "vol2.pc").code, 0);
    EXPECT_EQ(task(tid).state, API_TASK_CANCELLED);
    EXPECT_EQ(volume("vol2.pc").copyProgress, 25);
    EXPECT_FALSE(volume("vol2.pc").state & API_VV_STATE_COPYING);

    // Stopping what does not run, restoring from an incomplete copy, the
    // restore's flag and a busy parent are refused or shown through the
    // copy services; here the tasks and records behind them.
    uint32_t again = 0;
    ASSERT_EQ(audited(api_resyncCopy, "vol2.pc", &again).code, 0);
    EXPECT_NE(again, tid);
    EXPECT_EQ(volume("vol2.pc").copyProgress, 0);
    zdasim_clock_advance(80);
    EXPECT_EQ(volume("vol2.pc").copyProgress, 100);

    uint32_t back = 0;
    ASSERT_EQ(audited(api_restoreCopy, "vol2.pc", &back).code, 0);
    EXPECT_EQ(task(back).type, API_TASK_COPY_RESTORE);
    EXPECT_STREQ(task(back).name, "vol2->vol2.pc");
    zdasim_clock_advance(80);
    EXPECT_EQ(task(back).state, API_TASK_DONE);

    ASSERT_EQ(audited(api_promoteCopy, "vol2.pc").code, 0);
    const api_VVObj_t v = volume("vol2.pc");
    EXPECT_EQ(v.type, API_VV_TYPE_BASE);
    EXPECT_EQ(v.copyOfId, 0u);
    EXPECT_EQ(v.baseId, v.id);
    EXPECT_EQ(audited(api_promoteCopy, "vol2.pc").code, API_E_INVALID);
    EXPECT_EQ(audited(api_resyncCopy, "vol2", nullptr).code, API_E_INVALID);
    EXPECT_EQ(audited(api_resyncCopy, "gone", nullptr).code, API_E_NOT_FOUND);
}

// A snapshot's resync needs no task and its restore one, as the copy
// services show; its new point in time and its refused promotion show here.
TEST_F(ArrayTest, SnapshotsResyncToNowAndAreNotPromoted)
{
    zdasim_clock_advance(100);
    ASSERT_EQ(audited(api_resyncCopy, "vol1.rw", nullptr).code, 0);
    EXPECT_EQ(volume("vol1.rw").creationTime, kT0 + 100);
    EXPECT_EQ(audited(api_promoteCopy, "vol1.ro").code, API_E_INVALID);
}

TEST_F(ArrayTest, SnapshotSpaceIsGivenOnceAndPersistsInDescriptions)
{
    auto setSnapCpg = [](const char* cpg) { return audited(api_setSnapCPG, "vol3", cpg).code; };
    EXPECT_EQ(setSnapCpg("NL_r6"), API_E_INVALID);  // another domain
    EXPECT_EQ(setSnapCpg("none"), API_E_NOT_FOUND);
    ASSERT_EQ(setSnapCpg("FC_r1"), 0);
    EXPECT_STREQ(volume("vol3").cpgName, "FC_r1");
    EXPECT_EQ(setSnapCpg("FC_r5"), 0);
    EXPECT_STREQ(volume("vol3").cpgName, "FC_r1");

    // An inactive copy and a running restore survive a description round trip.
    ASSERT_EQ(physicalCopy("vol3", "vol3.pc", API_PCOPY_CREATE_TARGET | API_PCOPY_INACTIVE).code, 0);
    zdasim_clock_advance(100);
    uint32_t back = 0;
    ASSERT_EQ(audited(api_restoreCopy, "vol3.pc", &back).code, 0);
    reloadDescription();
    EXPECT_TRUE(volume("vol3.pc").state & API_VV_STATE_COPY_INACTIVE);
    EXPECT_EQ(task(back).type, API_TASK_COPY_RESTORE);
    zdasim_clock_advance(1);
    EXPECT_TRUE(volume("vol3.pc").state & API_VV_STATE_RESTORING);
}

std::vector<api_setting_t> settings()
{
    int count = 0;
    api_setting_t* list = nullptr;
    EXPECT_EQ(intForm([&] { return api_getSettings(&count, &list); }), 0);
    std::vector<api_setting_t> out(list, list + count);
    free_if_not_null(list);
    return out;
}

TEST_F(ArrayTest, SettingsAreCheckedKeptByNameAndPersisted)
{
    auto create = [](api_setting_t s) { return audited(api_createSetting, &s).code; };
    auto modify = [](api_setting_t s) { return audited(api_modifySetting, &s).code; };
    api_setting_t gold = setting("gold");
    gold.expirationSeconds = 3600;
    gold.retentionSeconds = 600;
    std::strcpy(gold.snapCpg, "FC_r1");
    std::strcpy(gold.comment, "hourly snapshots");
    ASSERT_EQ(create(gold), 0);
    // A second "gold", a retention beyond the expiration, an unknown CPG and
    // a second removal are refused through the setting provider.
    EXPECT_EQ(create(setting("")), API_E_INVALID);
    EXPECT_EQ(modify(setting("silver")), API_E_NOT_FOUND);

    gold.deltaReservationGoal = 20;
    ASSERT_EQ(modify(gold), 0);
    // A point in time is no interval: a retention interval beside an
    // expiration point is not compared with it.
    api_setting_t bronze = setting("bronze");
    bronze.expirationSeconds = 1900000000;
    bronze.retentionSeconds = 7200;
    bronze.timesAt = API_SETTING_EXPIRATION_AT;
    ASSERT_EQ(create(bronze), 0);
    std::vector<api_setting_t> all = settings();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_STREQ(all[0].name, "bronze");
    EXPECT_EQ(all[1].deltaReservationGoal, 20);

    reloadDescription([] { EXPECT_TRUE(settings().empty()); });
    all = settings();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(std::memcmp(&all[1], &gold, sizeof gold), 0);
    EXPECT_EQ(std::memcmp(&all[0], &bronze, sizeof bronze), 0);

    ASSERT_EQ(audited(api_removeSetting, "gold").code, 0);
    EXPECT_EQ(settings().size(), 1u);
}

TEST_F(ArrayTest, CloneTasksFailOnTheirOwnOrWhenTold)
{
    uint32_t bySelf = 0, byControl = 0;
    ASSERT_EQ(zdasim_clone_start("vol2", "vol2.bad", 100, 60, &bySelf), 0);
    ASSERT_EQ(zdasim_clone_start("vol4", "vol4.bad", 100, -1, &byControl), 0);
    ASSERT_EQ(tasks().size(), 2u);
    EXPECT_EQ(tasks()[0].tid, bySelf) << "oldest first";
    zdasim_clock_advance(30);
    ASSERT_EQ(zdasim_task_fail(byControl, "the source could not be read"), 0);
    EXPECT_EQ(task(byControl).state, API_TASK_FAILED);  // at the next step, which this query is
    zdasim_clock_advance(70);

    const api_task_t t = task(bySelf);
    EXPECT_EQ(
        std::make_tuple(t.state, t.percentDone, t.endTime), std::make_tuple(API_TASK_FAILED, 60, kT0 + 60));
    const api_VVObj_t v = volume("vol2.bad");
    EXPECT_EQ(std::make_tuple(v.type, v.copyProgress), std::make_tuple(API_VV_TYPE_PHYSICAL_COPY, 60));
    EXPECT_STREQ(v.copyOfName, "vol2");
    EXPECT_EQ(v.curWhenSynced, 0);
    EXPECT_EQ(volume("vol4.bad").copyProgress, 30);
    // A finished task cannot be failed again.
    EXPECT_EQ(zdasim_task_fail(byControl, "again"), API_E_NOT_FOUND);
}

TEST_F(ArrayTest, CloneStartRefusesBadRequests)
{
    EXPECT_EQ(zdasim_clone_start("nope", "x", 10, -1, nullptr), API_E_NOT_FOUND);
    EXPECT_EQ(zdasim_clone_start("vol1", "vol2", 10, -1, nullptr), API_E_EXISTS);
    EXPECT_EQ(zdasim_clone_start("vol1", "x", 0, -1, nullptr), API_E_INVALID);
    EXPECT_EQ(zdasim_clone_start("vol1", "x", 10, 100, nullptr), API_E_INVALID);
    EXPECT_EQ(
        zdasim_clone_start("vol1", "name_that_is_far_longer_than_31_chars", 10, -1, nullptr), API_E_INVALID);
}

}  // namespace
}  // namespace zdatest
