// The array semaphore: one holder at a time across threads, the time-out
// path in both forms, and the ledger's view of unbalanced use; the library
// itself under concurrent calls.
#include <atomic>
#include <chrono>
#include <thread>

#include "sim_fixture.h"

using namespace zdatest;

namespace
{

using SemaphoreTest = ArrayTest;

// Reads every vvset and three volumes by a filter; false unless both
// answers are whole.
bool readsWhole()
{
    api_sets_t sets{};
    bool whole = api_getVVSets(nullptr, nullptr, 0, &sets).code == 0 && sets.count >= 5;
    for (uint32_t s = 0; s < sets.count; ++s)
        whole = whole && !(sets.sets[s].memberCount > 0 && sets.sets[s].members[0].name[0] == '\0');
    api_freeSets(&sets);
    _api_getvv_filter_t f;
    api_getvv_filter_init(&f, 1);
    api_getvv_filter_add(&f, API_VVFILTER_ATTR_NAME, 1, "vol1|vol2|vol3");
    api_getvv_cursor_t cursor{};
    int count = 0;
    api_VVObj_t* list = nullptr;
    whole = api_getVVs_chunk(&cursor, 0, &f, &count, &list, 1) == 0 && count == 3 && whole;
    free_if_not_null(list);
    api_getvv_filter_free(&f);
    return whole;
}

}  // namespace

TEST_F(SemaphoreTest, NeverTwoHoldersUnderContention)
{
    constexpr int kThreads = 8;
    constexpr int kRounds = 300;
    std::atomic<int> inside{0};
    std::atomic<int> maxInside{0};
    std::atomic<int> failures{0};
    inThreads(kThreads, [&](int) {
        for (int i = 0; i < kRounds; ++i)
        {
            if (cim_sem_wait() != 0)
            {
                ++failures;
                continue;
            }
            int now = ++inside;
            int seen = maxInside.load();
            while (now > seen && !maxInside.compare_exchange_weak(seen, now))
            {}
            if (!readsWhole())
                ++failures;
            --inside;
            cim_sem_post();
        }
    });
    EXPECT_EQ(maxInside.load(), 1);
    EXPECT_EQ(failures.load(), 0);
    const zdasim_sem_ledger_t sem = semLedger();
    EXPECT_EQ(sem.acquired, kThreads * kRounds);
    EXPECT_EQ(sem.posts, kThreads * kRounds);
    EXPECT_EQ(sem.unbalancedPosts, 0);
    EXPECT_EQ(sem.unguardedCalls, 0);
    EXPECT_EQ(sem.timeouts, 0);
}

TEST_F(SemaphoreTest, WaitTimesOutWhileAnotherThreadHolds)
{
    zdasim_sem_set_timeout_ms(50);
    ASSERT_EQ(cim_sem_wait(), 0);
    std::atomic<int> rc{-1};
    api_Status_t st{};
    int intRc = -1;
    std::thread other([&] {
        const auto start = std::chrono::steady_clock::now();
        rc = cim_sem_wait();
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(45));
        EXPECT_TRUE(listSets("set1", nullptr, &st).empty());
        char buf[256];
        intRc = intForm([&] { return api_getSystemContact(buf); });
    });
    other.join();
    cim_sem_post();
    EXPECT_EQ(rc.load(), CIM_SEM_TIMEDOUT);
    EXPECT_EQ(intRc, CIM_SEM_TIMEDOUT) << "the int form takes the wait's code";
    EXPECT_EQ(semLedger().timeouts, 3);
    EXPECT_EQ(semLedger().unbalancedPosts, 0) << "no post after a time-out";
    EXPECT_EQ(zdasim_journal_count_of("api_getVVSets"), 0u) << "the call never reached the array";
}

TEST_F(SemaphoreTest, LedgerNotesTimeoutsUnbalancedPostsSelfWaitsAndUnguardedCalls)
{
    zdasim_fault_sem_timeouts(2);
    EXPECT_EQ(cim_sem_wait(), CIM_SEM_TIMEDOUT);
    EXPECT_EQ(cim_sem_wait(), CIM_SEM_TIMEDOUT);
    ASSERT_EQ(cim_sem_wait(), 0);
    EXPECT_EQ(semLedger().timeouts, 2);
    EXPECT_EQ(semLedger().held, 1);
    EXPECT_EQ(semLedger().heldByCaller, 1);
    zdasim_sem_set_timeout_ms(20);
    EXPECT_EQ(cim_sem_wait(), CIM_SEM_TIMEDOUT) << "not reentrant";
    EXPECT_EQ(semLedger().selfWaits, 1);

    // A post from a thread that does not hold it must not free it.
    std::thread([] { cim_sem_post(); }).join();
    EXPECT_EQ(semLedger().held, 1);
    EXPECT_EQ(semLedger().unbalancedPosts, 1);
    cim_sem_post();
    cim_sem_post();  // post without a wait
    EXPECT_EQ(semLedger().held, 0);
    EXPECT_EQ(semLedger().posts, 1);
    EXPECT_EQ(semLedger().unbalancedPosts, 2);

    char buf[256];
    EXPECT_EQ(api_getOwnerName(buf), 0);  // needs it, made without
    EXPECT_EQ(api_authorizeCIMUser("admin", "::1", "zda_replicationservicecapabilities"), 0);  // takes none
    api_sets_t sets{};
    api_freeSets(&sets);  // releases take none
    EXPECT_EQ(semLedger().unguardedCalls, 1);
}

// The library itself is safe to call from many threads at once without the
// semaphore: writers and readers of the same sets, the controls and the log
// all interleave.
TEST_F(SemaphoreTest, LibraryIsThreadSafeWithoutTheSemaphore)
{
    constexpr int kRounds = 150;
    std::atomic<int> failures{0};
    inThreads(6, [&](int t) {
        api_evtparam_t e = event("churn");
        const std::string name = "churn" + std::to_string(t);
        auto members = names({"vol1", "vol2"});
        for (int i = 0; i < kRounds; ++i)
        {
            if (t < 3)
            {
                api_okv_opts_t okv{};
                api_okv_addSetKV(&okv, "parentRCGroup", name.c_str());
                failures += api_createVVSet(&e, name.c_str(), members.data(), 2, 0, "", &okv).code != 0;
                api_free_okv_opts(&okv);
                failures += api_removeVVSet(&e, name.c_str()).code != 0;
                continue;
            }
            failures += !readsWhole();
            log_message(LOG_LEVEL_TRACE, "reader %d", i);
            zdasim_ledger_outstanding(nullptr);
            zdasim_journal_count();
            zdasim_event_count();
        }
    });
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(zdasim_log_count(), 3u * kRounds);
    EXPECT_EQ(zdasim_event_count(), 3u * 2 * kRounds);
}
