// The state file: the array survives a restart, a write cut short leaves
// the last complete state behind, and a change that cannot be saved (or a
// call that fails inside the library) is a failed call that changes nothing.
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "rcopy_support.h"

namespace zdatest {
namespace {

class StateFileTest : public RcopyTest {
protected:
    void SetUp() override {
        RcopyTest::SetUp();
        path_ = ::testing::TempDir() + "zda_state_" + std::to_string(getpid()) + ".json";
        std::remove(path_.c_str());
        std::remove((path_ + ".tmp").c_str());
    }
    void TearDown() override {
        zdasim_state_file_close();
        std::remove(path_.c_str());
        std::remove((path_ + ".tmp").c_str());
        RcopyTest::TearDown();
    }
    // A new process: the array starts as something else, then opens the file.
    std::string restart() {
        zdasim_state_file_close();
        zdasim_reset_test_array();
        char error[512] = "";
        zdasim_state_file_open(path_.c_str(), error, sizeof error);
        return error;
    }
    std::string fileText(const std::string& path) const {
        std::ifstream in(path);
        std::ostringstream s;
        s << in.rdbuf();
        return s.str();
    }
    std::string path_;
};

TEST_F(StateFileTest, ArraySurvivesARestartMidway) {
    char error[512] = "";
    ASSERT_EQ(zdasim_state_file_open(path_.c_str(), error, sizeof error), 0) << error;
    ASSERT_NE(fileText(path_).find("\"sec\""), std::string::npos);  // a new file starts with the array as it is

    ASSERT_EQ(createGroup("g1", {{"tA", RM_TARGET_MODE_PERIODIC}}).code, 0);
    ASSERT_EQ(admit("g1", "v2", {"tA"}).code, 0);
    std::vector<uint32_t> started;
    ASSERT_EQ(start("g1", &started).code, 0);
    ASSERT_EQ(started.size(), 1u);
    uint32_t clone = 0;
    ASSERT_EQ(zdasim_clone_start("v1", "v1.clone", 100, -1, &clone), 0);
    zdasim_clock_advance(10);
    const RcopyView before = readRcopy();

    ASSERT_EQ(restart(), "");
    RcopyView after = readRcopy();
    const GroupView* g = after.group("g1");
    ASSERT_NE(g, nullptr);
    EXPECT_EQ(g->id, before.group("g1")->id);
    EXPECT_EQ(g->autoSetId, before.group("g1")->autoSetId);
    EXPECT_EQ(g->volumes[0].wwn, before.group("g1")->volumes[0].wwn);
    EXPECT_EQ(g->map("v2").status, RM_GROUP_VV_SYNCING);
    EXPECT_EQ(task(started[0]).state, API_TASK_ACTIVE);
    EXPECT_EQ(task(clone).percentDone, 10);

    // The tasks go on where they were.
    zdasim_clock_advance(100);
    after = readRcopy();
    EXPECT_EQ(after.group("g1")->map("v2").status, RM_GROUP_VV_SYNCED);
    EXPECT_EQ(after.group("g1")->map("v2").lastSync, static_cast<uint32_t>(kT0 + 21));
    EXPECT_EQ(task(clone).state, API_TASK_DONE);

    // New objects after a restart do not reuse numbers of loaded ones.
    ASSERT_EQ(createGroup("g2", {{"tA", RM_TARGET_MODE_PERIODIC}}).code, 0);
    after = readRcopy();
    EXPECT_NE(after.group("g2")->id, after.group("g1")->id);
    EXPECT_NE(after.group("g2")->autoSetId, after.group("g1")->autoSetId);
    uint32_t another = 0;
    ASSERT_EQ(zdasim_clone_start("v1", "v1.clone2", 10, -1, &another), 0);
    EXPECT_GT(another, clone);
}

TEST_F(StateFileTest, WriteCutShortLeavesTheLastCompleteState) {
    char error[512] = "";
    ASSERT_EQ(zdasim_state_file_open(path_.c_str(), error, sizeof error), 0) << error;
    ASSERT_EQ(createGroup("kept", {{"tA", RM_TARGET_MODE_PERIODIC}}).code, 0);
    const std::string complete = fileText(path_);

    zdasim_fault_add("zdasim_state_write", 1, 5, "power lost");
    const api_Status_t lost = createGroup("lost", {{"tA", RM_TARGET_MODE_PERIODIC}});
    EXPECT_EQ(lost.code, API_E_INTERNAL);
    EXPECT_NE(text(lost).find("power lost"), std::string::npos) << text(lost);
    EXPECT_EQ(readRcopy().group("lost"), nullptr) << "a change that was not saved is not kept either";
    EXPECT_EQ(fileText(path_), complete);
    const std::string partial = fileText(path_ + ".tmp");
    EXPECT_FALSE(partial.empty());
    EXPECT_LT(partial.size(), complete.size() + 200);
    bool logged = false;
    char line[1024];
    int level = 0;
    for (size_t i = 0; zdasim_log_line(i, &level, line, sizeof line) == 0; ++i)
        logged = logged || (level == LOG_LEVEL_ERROR && std::string(line).find("half-way") != std::string::npos);
    EXPECT_TRUE(logged);

    ASSERT_EQ(restart(), "");
    const RcopyView rc = readRcopy();
    EXPECT_NE(rc.group("kept"), nullptr);
    EXPECT_EQ(rc.group("lost"), nullptr);

    // The next change writes a whole file again.
    ASSERT_EQ(createGroup("next", {{"tA", RM_TARGET_MODE_PERIODIC}}).code, 0);
    ASSERT_EQ(restart(), "");
    EXPECT_NE(readRcopy().group("next"), nullptr);
}

// Whatever goes wrong inside a call, the caller gets a failure status, the
// semaphore is left to the caller (the fixture checks it is free), and the
// array and its file stay as they were.
TEST_F(StateFileTest, FailuresInsideACallAreAnsweredAndUndone) {
    char error[512] = "";
    ASSERT_EQ(zdasim_state_file_open(path_.c_str(), error, sizeof error), 0) << error;
    const std::string before = fileText(path_);
    api_evtparam_t e = event("create");
    auto createSet = [&](const char* name, const char* comment) {
        return statusForm([&] { return api_createVVSet(&e, name, nullptr, 0, 0, comment, nullptr); });
    };
    auto setExists = [](const char* name) {
        api_sets_t list{};
        const api_Status_t st = statusForm([&] { return api_getVVSets(name, nullptr, 0, &list); });
        api_freeSets(&list);
        return st.code == 0;
    };

    // A text the state file cannot hold (not UTF-8) makes the save fail.
    api_Status_t st = createSet("s_badtext", "caf\xe9");
    EXPECT_EQ(st.code, API_E_INTERNAL);
    EXPECT_NE(text(st).find("could not be saved"), std::string::npos) << text(st);
    EXPECT_FALSE(setExists("s_badtext"));

    // An exception after the work: the status form and the int form.
    zdasim_fault_add("api_createVVSet", 1, ZDASIM_FAULT_THROW, "bad luck");
    st = createSet("s_thrown", "");
    EXPECT_EQ(st.code, API_E_INTERNAL);
    EXPECT_NE(text(st).find("bad luck"), std::string::npos) << text(st);
    EXPECT_FALSE(setExists("s_thrown"));
    zdasim_fault_add("api_removeVVs", 1, ZDASIM_FAULT_THROW, "bad luck");
    auto gone = names({"v1"});
    EXPECT_EQ(intForm([&] { return api_removeVVs(&e, gone.data(), 1, 0, 0); }), API_E_INTERNAL);
    int count = 0;
    api_VVObj_t* vv = nullptr;
    EXPECT_EQ(intForm([&] { return api_getVVs("v1", nullptr, &count, &vv, 1); }), 0);
    EXPECT_EQ(count, 1) << "the volume is still there";
    free_if_not_null(vv);
    EXPECT_EQ(fileText(path_), before);

    // The array goes on working, and saving.
    ASSERT_EQ(createSet("s_good", "").code, 0);
    ASSERT_EQ(restart(), "");
    EXPECT_TRUE(setExists("s_good"));
    EXPECT_FALSE(setExists("s_thrown"));
}

TEST_F(StateFileTest, UnreadableStateFileIsRefusedAndLeftAlone) {
    std::ofstream(path_) << "{\"volumes\": [";
    char error[512] = "";
    EXPECT_EQ(zdasim_state_file_open(path_.c_str(), error, sizeof error), -1);
    EXPECT_EQ(std::string(error).rfind(path_ + ": line 1", 0), 0u) << error;
    // Nothing was loaded and nothing is kept in that file.
    EXPECT_NE(readRcopy().group("sec"), nullptr);
    ASSERT_EQ(createGroup("g1", {{"tA", RM_TARGET_MODE_PERIODIC}}).code, 0);
    EXPECT_EQ(fileText(path_), "{\"volumes\": [");
}

}  // namespace
}  // namespace zdatest
