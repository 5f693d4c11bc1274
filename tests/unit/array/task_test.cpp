// Physical copies as tasks driven by the array's clock.
#include "rcopy_support.h"

namespace zdatest
{
namespace
{

TEST_F(ArrayTest, CloneTaskRunsFromNothingToComplete)
{
    uint32_t tid = 0;
    ASSERT_EQ(zdasim_clone_start("vol1", "vol1.full", 200, -1, &tid), 0);
    ASSERT_NE(tid, 0u);
    api_VVObj_t v = volume("vol1.full");
    EXPECT_EQ(v.type, API_VV_TYPE_PHYSICAL_COPY);
    EXPECT_STREQ(v.copyOfName, "vol1");
    EXPECT_EQ(v.copyProgress, 0);
    EXPECT_TRUE(v.state & API_VV_STATE_COPYING);
    api_task_t t = task(tid);
    EXPECT_EQ(t.type, API_TASK_PHYSICAL_COPY);
    EXPECT_STREQ(t.name, "vol1.full");
    EXPECT_EQ(t.percentDone, 0);
    EXPECT_EQ(t.startTime, kT0);

    zdasim_clock_advance(50);
    EXPECT_EQ(volume("vol1.full").copyProgress, 25);
    EXPECT_EQ(task(tid).percentDone, 25);

    zdasim_clock_advance(1000);
    v = volume("vol1.full");
    EXPECT_EQ(v.copyProgress, 100);
    EXPECT_FALSE(v.state & API_VV_STATE_COPYING);
    EXPECT_EQ(v.curWhenSynced, kT0 + 200);  // when it finished, not when it was looked at
    t = task(tid);
    EXPECT_EQ(t.state, API_TASK_DONE);
    EXPECT_EQ(t.percentDone, 100);
    EXPECT_EQ(t.endTime, kT0 + 200);
    EXPECT_STREQ(t.detail, "");
}

TEST_F(ArrayTest, CloneTasksFailOnTheirOwnOrWhenTold)
{
    uint32_t bySelf = 0, byControl = 0;
    ASSERT_EQ(zdasim_clone_start("vol2", "vol2.bad", 100, 60, &bySelf), 0);
    ASSERT_EQ(zdasim_clone_start("vol4", "vol4.bad", 100, -1, &byControl), 0);
    zdasim_clock_advance(30);
    ASSERT_EQ(zdasim_task_fail(byControl, "the source could not be read"), 0);
    EXPECT_EQ(task(byControl).state, API_TASK_FAILED);  // at the next step, which this query is
    zdasim_clock_advance(70);

    api_task_t t = task(bySelf);
    EXPECT_EQ(t.state, API_TASK_FAILED);
    EXPECT_EQ(t.percentDone, 60);
    EXPECT_EQ(t.endTime, kT0 + 60);
    EXPECT_NE(std::string(t.detail).find("60%"), std::string::npos) << t.detail;
    api_VVObj_t v = volume("vol2.bad");
    EXPECT_EQ(v.copyProgress, 60);
    EXPECT_FALSE(v.state & API_VV_STATE_COPYING);
    EXPECT_EQ(v.curWhenSynced, 0);

    t = task(byControl);
    EXPECT_EQ(t.percentDone, 30);
    EXPECT_STREQ(t.detail, "the source could not be read");
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

TEST_F(ArrayTest, TaskListIsReleasedWithTheGenericRelease)
{
    ASSERT_EQ(zdasim_clone_start("vol1", "c1", 10, -1, nullptr), 0);
    ASSERT_EQ(zdasim_clone_start("vol1", "c2", 10, -1, nullptr), 0);
    int count = 0;
    api_task_t* list = nullptr;
    ASSERT_EQ(intForm([&] { return api_getTasks(&count, &list); }), 0);
    ASSERT_EQ(count, 2);
    EXPECT_LT(list[0].tid, list[1].tid);  // oldest first
    EXPECT_EQ(zdasim_ledger_outstanding("task_list"), 1);
    free_if_not_null(list);
    zdasim_fault_add("api_getTasks", 1, 5, "injected");
    EXPECT_EQ(intForm([&] { return api_getTasks(&count, &list); }), 5);
    EXPECT_EQ(list, nullptr);
}

}  // namespace
}  // namespace zdatest
