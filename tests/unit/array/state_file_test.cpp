// The state file: the array survives a restart and a kill -9, a journal
// record cut short is ignored, compaction keeps the array, and a change
// that cannot be saved (or a call that fails inside the library) is a
// failed call that changes nothing.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <tuple>

#include "rcopy_support.h"

namespace zdatest
{
namespace
{

using ::testing::Contains;
using ::testing::Pair;
using ::testing::StartsWith;

class StateFileTest : public RcopyTest
{
protected:
    void SetUp() override
    {
        RcopyTest::SetUp();
        path_ = tempPath("state.json");
        removeFiles();
    }
    void TearDown() override
    {
        zdasim_state_file_close();
        removeFiles();
        RcopyTest::TearDown();
    }
    void removeFiles() const
    {
        for (const char* suffix : {"", ".tmp", ".journal", ".expected"})
            std::remove((path_ + suffix).c_str());
    }
    // Opens the state file; the error, empty when it opened.
    std::string open()
    {
        char error[512] = "";
        const int rc = zdasim_state_file_open(path_.c_str(), error, sizeof error);
        EXPECT_EQ(rc, error[0] ? -1 : 0) << error;
        return error;
    }
    // A new process: the array starts as something else, then opens the file.
    std::string restart()
    {
        zdasim_state_file_close();
        zdasim_reset_test_array();
        return open();
    }
    // Runs `changes` in a child process that keeps the array in the file,
    // writes the array it ended with to "<path>.expected" and is killed
    // (SIGKILL) without closing anything.
    template <class F>
    void inKilledChild(F changes)
    {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
        {
            if (!open().empty())
                _exit(2);
            changes();
            const std::string expected = path_ + ".expected";
            if (zdasim_save_description_file(expected.c_str(), nullptr, 0) != 0)
                _exit(3);
            kill(getpid(), SIGKILL);
            _exit(4);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "child status " << status;
    }
    std::string path_;
};

TEST_F(StateFileTest, ArraySurvivesARestartMidway)
{
    ASSERT_EQ(open(), "");
    EXPECT_THAT(fileText(path_), HasSubstr("\"sec\"")) << "a new file starts with the array as it is";

    ASSERT_EQ(createGroup("g1").code, 0);
    ASSERT_EQ(admit("g1", "v2", {"tA"}).code, 0);
    std::vector<uint32_t> started;
    ASSERT_EQ(start("g1", &started).code, 0);
    ASSERT_EQ(started.size(), 1u);
    uint32_t clone = 0;
    ASSERT_EQ(zdasim_clone_start("v1", "v1.clone", 100, -1, &clone), 0);
    zdasim_clock_advance(10);
    const GroupView before = groupOf("g1");

    ASSERT_EQ(restart(), "");
    GroupView g = groupOf("g1");
    EXPECT_EQ(g.id, before.id);
    EXPECT_EQ(g.autoSetId, before.autoSetId);
    EXPECT_EQ(g.volumes.at(0).wwn, before.volumes.at(0).wwn);
    EXPECT_EQ(g.map("v2").rm_status, RM_GROUP_VV_SYNCING);
    EXPECT_EQ(task(started[0]).state, API_TASK_ACTIVE);
    EXPECT_EQ(task(clone).percentDone, 10);

    // The tasks go on where they were.
    zdasim_clock_advance(100);
    EXPECT_EQ(groupOf("g1").map("v2").rm_status, RM_GROUP_VV_SYNCED);
    EXPECT_EQ(groupOf("g1").map("v2").rm_last_synctime, static_cast<uint32_t>(kT0 + 21));
    EXPECT_EQ(task(clone).state, API_TASK_DONE);

    // New objects after a restart do not reuse numbers of loaded ones.
    ASSERT_EQ(createGroup("g2").code, 0);
    g = groupOf("g1");
    EXPECT_NE(groupOf("g2").id, g.id);
    EXPECT_NE(groupOf("g2").autoSetId, g.autoSetId);
    uint32_t another = 0;
    ASSERT_EQ(zdasim_clone_start("v1", "v1.clone2", 10, -1, &another), 0);
    EXPECT_GT(another, clone);
}

// Sets created, changed, emptied and removed, volumes and a group: what the
// killed process acknowledged is what the next one starts with.
void makeChanges()
{
    auto members = names({"v1", "v2"});
    for (int i = 0; i < 20; ++i)
        audited(
            api_createVVSet, ("ks" + std::to_string(i)).c_str(), members.data(), 2, 0, "kill test", nullptr);
    audited(api_setVVSet, "ks3", "ks3renamed", "renamed", 1, 1);
    audited(api_removeVVSet, "ks4");
    audited(api_removeFromVVSet, "ks5", names({"v2"}).data(), 1);
    // A removed volume leaves the sets it was in.
    zdasim_volume_add("kvol", "FC", "FC", 2048);
    zdasim_volume_add("kvol2", "FC", "FC", 2048);
    auto held = names({"kvol", "kvol2"});
    audited(api_createVVSet, "ks_held", held.data(), 2, 0, "", nullptr);
    api_evtparam_t e = event("change");
    intForm([&] { return api_removeVVs(&e, held.data(), 1, 0, 0); });
    createGroup("kg");
}

TEST_F(StateFileTest, KilledProcessKeepsEveryAcknowledgedChange)
{
    ASSERT_EQ(open(), "");
    zdasim_state_file_close();
    const std::string snapshot = fileText(path_);

    inKilledChild(makeChanges);
    EXPECT_EQ(fileText(path_), snapshot) << "a change costs a journal record, not a new snapshot";
    EXPECT_GT(fileText(path_ + ".journal").size(), 200u);

    const std::string expected = fileText(path_ + ".expected");
    ASSERT_NE(expected.find("ks3renamed"), std::string::npos);
    ASSERT_EQ(restart(), "");
    EXPECT_EQ(described(), expected);

    // Opening compacted the journal into the snapshot; the array is the same
    // on the next start, and after a clean stop.
    EXPECT_EQ(fileText(path_ + ".journal").find('\n'), fileText(path_ + ".journal").size() - 1)
        << "header only";
    ASSERT_EQ(restart(), "");
    EXPECT_EQ(described(), expected);
}

// What a crash can leave at the end of the journal, and damage it cannot.
TEST_F(StateFileTest, JournalTailsAreReadAsACrashLeavesThem)
{
    const std::string record = "{\"vvsets\":[{\"name\":\"late\",\"id\":900}]}";
    const std::tuple<const char*, std::string, bool> cases[] = {
        {"record cut short", "0123456789abcdef {\"vvsets\":[{\"na", true},
        {"last record with a wrong check", "0123456789abcdef " + record + "\n", true},
        {"damaged record before another", "0123456789abcdef " + record + "\nxx\n", false},
    };
    for (const auto& [what, tail, opens] : cases)
    {
        SCOPED_TRACE(what);
        removeFiles();
        zdasim_reset_test_array();
        ASSERT_EQ(open(), "");
        zdasim_state_file_close();
        inKilledChild([] { audited(api_createVVSet, "kept", nullptr, 0, 0, "", nullptr); });
        std::ofstream(path_ + ".journal", std::ios::app) << tail;
        const std::string snapshot = fileText(path_);
        const std::string error = restart();
        if (opens)
        {
            EXPECT_EQ(error, "");
            EXPECT_EQ(described(), fileText(path_ + ".expected"));
        }
        else
        {
            EXPECT_EQ(error, path_ + ".journal: record 2 is damaged");
            EXPECT_EQ(fileText(path_), snapshot) << "a file that does not load is left alone";
        }
    }

    // A journal written after another snapshot (a compaction cut short once
    // the new snapshot was in place) is already in the snapshot.
    removeFiles();
    ASSERT_EQ(restart(), "");
    const std::string before = described();
    zdasim_state_file_close();
    std::ofstream(path_ + ".journal") << "zda-array-journal 0000000000000000\n";
    ASSERT_EQ(restart(), "");
    EXPECT_EQ(described(), before);
}

TEST_F(StateFileTest, WriteCutShortIsAFailedCallAndLeavesTheLastCompleteState)
{
    ASSERT_EQ(open(), "");
    ASSERT_EQ(createGroup("kept").code, 0);
    const std::string snapshot = fileText(path_);

    zdasim_fault_add("zdasim_state_write", 1, 5, "power lost");
    const api_Status_t lost = createGroup("lost");
    EXPECT_EQ(lost.code, API_E_INTERNAL);
    EXPECT_THAT(text(lost), HasSubstr("power lost"));
    EXPECT_EQ(readRcopy().group("lost"), nullptr) << "a change that was not saved is not kept either";
    EXPECT_EQ(fileText(path_), snapshot);
    EXPECT_THAT(zda_test::logLines(), Contains(Pair(LOG_LEVEL_ERROR, HasSubstr("half-way"))));

    // The next change writes a whole snapshot again, then goes on journaling.
    ASSERT_EQ(createGroup("next").code, 0);
    EXPECT_THAT(fileText(path_), HasSubstr("\"next\""));
    ASSERT_EQ(createGroup("after").code, 0);
    ASSERT_EQ(restart(), "");
    std::vector<std::string> groups;
    for (const GroupView& g : readRcopy().groups)
        groups.push_back(g.name);
    EXPECT_EQ(groups, (Names{"sec", "kept", "next", "after"}));
}

// Whatever goes wrong inside a call, the caller gets a failure status, the
// semaphore is left to the caller (the fixture checks it is free), and the
// array and its file stay as they were.
TEST_F(StateFileTest, FailuresInsideACallAreAnsweredAndUndone)
{
    ASSERT_EQ(open(), "");
    const std::string before = fileText(path_) + fileText(path_ + ".journal");
    auto createSet = [](const char* name, const char* comment) {
        return audited(api_createVVSet, name, nullptr, 0, 0, comment, nullptr);
    };

    // A text the state file cannot hold (not UTF-8) makes the save fail.
    api_Status_t st = createSet("s_badtext", "caf\xe9");
    EXPECT_EQ(st.code, API_E_INTERNAL);
    EXPECT_THAT(text(st), HasSubstr("could not be saved"));
    EXPECT_TRUE(listSets("s_badtext").empty());

    // An exception after the work: the status form and the int form.
    zdasim_fault_add("api_createVVSet", 1, ZDASIM_FAULT_THROW, "bad luck");
    st = createSet("s_thrown", "");
    EXPECT_EQ(st.code, API_E_INTERNAL);
    EXPECT_THAT(text(st), HasSubstr("bad luck"));
    EXPECT_TRUE(listSets("s_thrown").empty());
    zdasim_fault_add("api_removeVVs", 1, ZDASIM_FAULT_THROW, "bad luck");
    auto gone = names({"v1"});
    api_evtparam_t e = event("remove");
    EXPECT_EQ(intForm([&] { return api_removeVVs(&e, gone.data(), 1, 0, 0); }), API_E_INTERNAL);
    EXPECT_EQ(getVVs("v1").names, Names{"v1"}) << "the volume is still there";
    EXPECT_EQ(fileText(path_) + fileText(path_ + ".journal"), before);

    // The array goes on working, and saving.
    ASSERT_EQ(createSet("s_good", "").code, 0);
    ASSERT_EQ(restart(), "");
    EXPECT_FALSE(listSets("s_good").empty());
    EXPECT_TRUE(listSets("s_thrown").empty());
}

TEST_F(StateFileTest, UnreadableStateFileIsRefusedAndLeftAlone)
{
    std::ofstream(path_) << "{\"volumes\": [";
    EXPECT_THAT(open(), StartsWith(path_ + ": line 1"));
    // Nothing was loaded and nothing is kept in that file.
    EXPECT_NE(readRcopy().group("sec"), nullptr);
    ASSERT_EQ(createGroup("g1").code, 0);
    EXPECT_EQ(fileText(path_), "{\"volumes\": [");
}

}  // namespace
}  // namespace zdatest
