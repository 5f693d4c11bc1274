// Password checks and the throttle of failed logins: what is accepted, that
// unknown users cost what known ones cost, and how waits grow and reset.
#include <LoginThrottle.h>
#include <RequestPool.h>
#include <Users.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <ctime>
#include <mutex>

using namespace zda::cimserver;
using namespace std::chrono_literals;

TEST(LoginChecksTest, OnlyTheExactPasswordOfAKnownUserVerifies)
{
    const UserStore users = UserStore::demoUsers();
    struct Case
    {
        std::string user;
        std::string password;
        bool accepted;
    };
    const Case cases[] = {
        {"admin", "admin-demo", true},
        {"admin", "admin-demo", true},  // again, now remembered
        {"admin", "admin-demO", false},
        {"admin", std::string("admin-demo\0xyz", 14), false},
        {std::string("admin\0x", 7), "admin-demo", false},
        {"mallory", "admin-demo", false},
        {"viewer", "admin-demo", false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(users.verify(c.user, c.password), c.accepted) << c.user << " / " << c.password;
    EXPECT_TRUE(users.remembered("admin", "admin-demo"));
    EXPECT_FALSE(users.remembered("viewer", "viewer-demo"));
    EXPECT_FALSE(users.remembered("admin", std::string("admin-demo\0xyz", 14)));
}

// The slow hash is paid for unknown users too: the cheapest of a few checks
// of an unknown user costs at least a third of the cheapest for a known one
// (it was a few hundredths before). CPU time of this thread, so that a busy
// machine does not blur the comparison.
TEST(LoginChecksTest, UnknownUsersCostWhatKnownUsersCost)
{
    const UserStore users = UserStore::demoUsers();
    auto threadCpuNanos = [] {
        timespec t{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
        return std::int64_t(t.tv_sec) * 1000000000 + t.tv_nsec;
    };
    auto cheapest = [&](const std::string& user) {
        std::int64_t best = INT64_MAX;
        for (int i = 0; i < 3; i++)
        {
            std::int64_t start = threadCpuNanos();
            EXPECT_FALSE(users.verify(user, "not-the-password"));
            best = std::min(best, threadCpuNanos() - start);
        }
        return best;
    };
    const std::int64_t known = cheapest("admin");
    const std::int64_t unknown = cheapest("mallory");
    EXPECT_GT(unknown * 3, known) << "known " << known << " ns, unknown " << unknown << " ns";
}

TEST(LoginChecksTest, FailuresFromOneAddressEarnGrowingWaits)
{
    LoginThrottle::Settings settings;  // 3 free failures, 250 ms doubling to 8 s, at most 30 s ahead
    LoginThrottle throttle(settings);
    const auto t0 = LoginThrottle::Clock::time_point() + 1h;
    for (int i = 0; i < 3; i++)
    {
        EXPECT_EQ(throttle.admit("10.0.0.1", t0), t0) << i;
        throttle.failed("10.0.0.1", "admin", t0);
    }
    // Free failures are spent: each further failure doubles the wait after it.
    auto now = t0;
    for (std::chrono::milliseconds wait : {250ms, 500ms, 1000ms, 2000ms, 4000ms, 8000ms, 8000ms})
    {
        EXPECT_EQ(throttle.admit("10.0.0.1", now), now + wait) << wait.count();
        now += wait;
        throttle.failed("10.0.0.1", "admin", now);
    }
    // Parallel attempts queue one wait apart, and are refused unchecked
    // once their turn lies more than 30 s ahead.
    std::vector<LoginThrottle::Clock::time_point> turns;
    while (auto turn = throttle.admit("10.0.0.1", now))
        turns.push_back(*turn);
    ASSERT_EQ(turns.size(), 3u);  // at 8, 16 and 24 s; the next, at 32 s, is refused
    EXPECT_EQ(turns.back() - now, 24s);

    EXPECT_EQ(throttle.admit("10.0.0.2", now), now) << "another address";
    throttle.succeeded("10.0.0.1");
    EXPECT_EQ(throttle.admit("10.0.0.1", now), now) << "after a success";
    for (int i = 0; i < 5; i++)
        throttle.failed("10.0.0.3", "", now);
    EXPECT_EQ(throttle.admit("10.0.0.3", now + 11min), now + 11min) << "forgotten after a quiet while";
}

// A request that holds its thread does not make the next one wait; idle
// threads beyond the ones kept end.
TEST(LoginChecksTest, RequestPoolStartsThreadsWhileAllAreBusy)
{
    RequestPool pool(1, 50ms);
    std::mutex mutex;
    std::condition_variable changed;
    bool release = false;
    int done = 0;
    for (int i = 0; i < 3; i++)
        pool.post([&] {
            std::unique_lock<std::mutex> lock(mutex);
            changed.wait(lock, [&] { return release; });
            done++;
            changed.notify_all();
        });
    std::atomic<bool> ran{false};
    pool.post([&] { ran = true; });
    for (int i = 0; i < 500 && !ran; i++)
        std::this_thread::sleep_for(10ms);
    EXPECT_TRUE(ran);
    EXPECT_GE(pool.threads(), 4u);
    {
        std::unique_lock<std::mutex> lock(mutex);
        release = true;
        changed.notify_all();
        changed.wait_for(lock, 10s, [&] { return done == 3; });
    }
    for (int i = 0; i < 500 && pool.threads() > 1; i++)
        std::this_thread::sleep_for(10ms);
    EXPECT_EQ(pool.threads(), 1u);
    pool.stop();
}
