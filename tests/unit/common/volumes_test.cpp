// Resolving volume paths to names in chunked queries, and removing volumes
// with retries while the array reports them busy. The pause between retries
// is taken over by this program's own sleep(), which records the request and
// returns at once, so the retry tests run in no time.
#include "common_sim_fixture.h"

#include <cstdlib>
#include <mutex>
#include <set>
#include <tuple>

using namespace Pegasus;
using namespace zda_common_test;

namespace
{
std::mutex g_sleepMutex;
std::vector<unsigned int> g_sleeps;
}  // namespace

// Interposes the C library's sleep for the libraries this program loads.
extern "C" unsigned int sleep(unsigned int seconds)
{
    std::lock_guard<std::mutex> lock(g_sleepMutex);
    g_sleeps.push_back(seconds);
    return 0;
}

namespace
{

const char kUnknownWwn[] = "60002D1A00000000000000000000FFFF";  // 32 digits, no such volume

class VolumesTest : public CommonSimTest
{
protected:
    void SetUp() override
    {
        CommonSimTest::SetUp();
        std::lock_guard<std::mutex> lock(g_sleepMutex);
        g_sleeps.clear();
    }
    static std::vector<unsigned int> sleeps()
    {
        std::lock_guard<std::mutex> lock(g_sleepMutex);
        return g_sleeps;
    }
    static Array<CIMObjectPath> paths(const std::vector<std::string>& wwns)
    {
        Array<CIMObjectPath> out;
        for (const auto& w : wwns)
            out.append(volumePath(w));
        return out;
    }
};

TEST_F(VolumesTest, NamesAreQueriedInChunksOfAtMost255CharactersWithoutSplittingAWwn)
{
    std::vector<std::string> wwns = {"60002D1A0000FFFF"};  // 16 digits, no such volume
    std::set<std::string> expectedNames;
    for (int i = 0; i < 40; ++i)
    {
        const std::string name = "chunk" + std::to_string(i);
        ASSERT_EQ(zdasim_volume_add(name.c_str(), "FC_r5", "", 1024), 0);
        wwns.push_back(wwnOf(name));
        ASSERT_EQ(wwns.back().size(), 32u);
        expectedNames.insert(name);
    }
    zdasim_journal_clear();

    Array<CIMObjectPath> vols = paths(wwns);
    Array<String> names;
    ASSERT_EQ(ZDA_Common::fillInVVNames(vols, names), 0);
    std::set<std::string> got;
    for (Uint32 i = 0; i < names.size(); ++i)
        got.insert(text(names[i]));
    EXPECT_EQ(got, expectedNames);

    // 17 + 40 * 33 characters with separators: the first chunk stops at 248,
    // before the WWN that would cross 255, the next ones hold seven WWNs (231).
    const auto queries = journalOf("api_getVVs_chunk");
    ASSERT_EQ(queries.size(), 6u);
    std::string queried, expected;
    for (const std::string& q : queries)
    {
        const size_t start = q.find("wwns=\"") + 6;
        const std::string list = q.substr(start, q.find('"', start) - start);
        EXPECT_LE(list.size(), 255u) << q;
        EXPECT_EQ(list.back(), '|') << q;  // cut only after a whole WWN
        queried += list;
    }
    for (const std::string& wwn : wwns)
        expected += wwn + "|";
    EXPECT_EQ(queried, expected);  // every WWN whole, once, in order
}

TEST_F(VolumesTest, PartialAnswersSucceedEmptyAnswersFail)
{
    Array<String> names;
    Array<CIMObjectPath> some = paths({wwnOf("vol1"), kUnknownWwn});
    EXPECT_EQ(ZDA_Common::fillInVVNames(some, names), 0);
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(text(names[0]), "vol1");

    Array<String> none;
    Array<CIMObjectPath> missing = paths({kUnknownWwn});
    EXPECT_EQ(ZDA_Common::fillInVVNames(missing, none), 4);

    Array<CIMObjectPath> empty;
    EXPECT_EQ(ZDA_Common::fillInVVNames(empty, none), 5);
    EXPECT_TRUE(logged(3, "Empty volume list"));

    api_name_t* entries = nullptr;
    unsigned int count = 0;
    EXPECT_EQ(ZDA_Common::fillInVVNames(some, nullptr, &count), 5);
    EXPECT_EQ(ZDA_Common::fillInVVNames(some, &entries, nullptr), 5);
    EXPECT_TRUE(logged(2, "Invalid parameter memberCount or vvNames"));
    ASSERT_EQ(ZDA_Common::fillInVVNames(some, &entries, &count), 0);
    ASSERT_EQ(count, 1u);
    EXPECT_STREQ(entries[0].name, "vol1");
    std::free(entries);
}

TEST_F(VolumesTest, FailedQueriesGiveFour)
{
    Array<CIMObjectPath> vols = paths({wwnOf("vol1")});
    Array<String> names;
    zdasim_fault_add("api_getVVs_chunk", 1, API_E_INVALID, "injected");
    EXPECT_EQ(ZDA_Common::fillInVVNames(vols, names), 4);
    EXPECT_TRUE(logged(2, "Failed to query volume"));

    zdasim_fault_sem_timeouts(1);
    EXPECT_EQ(ZDA_Common::fillInVVNames(vols, names), 4);
    EXPECT_EQ(names.size(), 0u);

    zdasim_fault_add("api_getvv_filter_add", 1, API_E_INVALID, "injected");
    EXPECT_EQ(ZDA_Common::fillInVVNames(vols, names), 4);
    EXPECT_TRUE(logged(2, "Cannot update filter list"));
}

TEST_F(VolumesTest, BusyVolumesAreRetriedTwoSecondsApartUntilTheyGo)
{
    ASSERT_EQ(zdasim_volume_set_busy("vol3", 3), 0);
    Array<CIMObjectPath> vols = paths({wwnOf("vol3")});
    api_evtparam_t ev{};
    ZDA_Common::setEventParam(&ev, "ZDA_ReplicationServiceProvider", "ModifyReplicaSynchronization",
        "remove volumes", "admin", "192.0.2.99");
    EXPECT_EQ(ZDA_Common::removeVVs(&ev, vols, 0), 0);
    EXPECT_EQ(sleeps(), (std::vector<unsigned int>{2, 2, 2}));
    EXPECT_EQ(journalOf("api_removeVVs").size(), 4u);
    EXPECT_EQ(journalOf("api_getVVs_chunk").size(), 4u);  // names resolved anew each time
    EXPECT_EQ(wwnOf("vol3"), "");

    // The audit record reached the array with the removal.
    api_evtparam_t logged{};
    char call[64];
    int result = -1;
    ASSERT_GT(zdasim_event_count(), 0u);
    ASSERT_EQ(zdasim_event_get(zdasim_event_count() - 1, &logged, call, sizeof call, &result), 0);
    EXPECT_STREQ(call, "api_removeVVs");
    EXPECT_EQ(result, 0);
    EXPECT_STREQ(logged.method, "ZDA_ReplicationServiceProvider:ModifyReplicaSynchronization");
    EXPECT_STREQ(logged.user, "admin");
}

TEST_F(VolumesTest, VolumesStillBusyAfterTenRetriesGiveFour)
{
    ASSERT_EQ(zdasim_volume_set_busy("vol3", -1), 0);
    Array<CIMObjectPath> vols = paths({wwnOf("vol3")});
    EXPECT_EQ(ZDA_Common::removeVVs(nullptr, vols, 1), 4);
    EXPECT_EQ(sleeps(), std::vector<unsigned int>(10, 2));
    EXPECT_EQ(journalOf("api_removeVVs").size(), 11u);
    EXPECT_TRUE(logged(2, "Volumes are busy, cannot be removed"));
    EXPECT_NE(wwnOf("vol3"), "");
}

TEST_F(VolumesTest, RemovalResults)
{
    // What is removed ("" for a path of no volume), the code and the one error logged.
    const std::tuple<const char*, std::vector<std::string>, int, const char*> cases[] = {
        {"a path that names no volume", {"vol4", ""}, 32768, nullptr},
        {"the array removes only some", {"vol5", "vol1"}, 32768, nullptr},
        {"the array removes none", {"vol1"}, 4, "Volume deletion failed"},
        {"no volume found", {""}, 4, "Cannot find the volume"},
    };
    for (const auto& [what, volumes, code, log] : cases)
    {
        zdasim_log_clear();
        std::vector<std::string> wwns;
        for (const auto& v : volumes)
            wwns.push_back(v.empty() ? kUnknownWwn : wwnOf(v));
        Array<CIMObjectPath> vols = paths(wwns);
        EXPECT_EQ(ZDA_Common::removeVVs(nullptr, vols, 0), code) << what;
        std::vector<std::string> errors;
        for (const auto& line : logLines())
            if (line.first == 2)
                errors.push_back(line.second);
        EXPECT_EQ(errors, log ? std::vector<std::string>{log} : std::vector<std::string>()) << what;
    }
    EXPECT_TRUE(sleeps().empty());
}

}  // namespace
