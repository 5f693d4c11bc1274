// The enumeration-context table of the pull operations: pieces, limits,
// time-outs, one request at a time per context, producers paced by pulls.
#include "cim_error_of.h"

#include <EnumerationContexts.h>

#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

using namespace zda::server;
using namespace std::chrono_literals;
using Pegasus::CIMException;
using Pegasus::CIMStatusCode;
using zda_test::cimErrorOf;

namespace
{

using Items = std::vector<std::string>;

constexpr int kNoContext = Pegasus::CIM_ERR_INVALID_ENUMERATION_CONTEXT;
constexpr int kLimits = Pegasus::CIM_ERR_SERVER_LIMITS_EXCEEDED;

// Produces "0", "1", ... "count-1", then fails with `failure` if set;
// counts what it produced.
struct Numbers
{
    explicit Numbers(int count, std::optional<CIMStatusCode> failure = std::nullopt)
        : count(count), failure(failure)
    {}

    int count;
    std::shared_ptr<std::atomic<int>> produced = std::make_shared<std::atomic<int>>(0);
    std::optional<CIMStatusCode> failure;

    EnumerationContexts::Producer producer() const
    {
        return
            [count = count, produced = produced, failure = failure](const EnumerationContexts::Emit& emit) {
                for (int i = 0; i < count; ++i)
                {
                    emit(std::to_string(i));
                    ++*produced;
                }
                if (failure)
                    throw CIMException(*failure, "the producer failed");
            };
    }
};

class EnumerationContextsTest : public ::testing::Test
{
protected:
    static PullLimits limits()
    {
        PullLimits l;
        l.defaultTimeout = 10s;
        l.maxContexts = 3;
        l.maxContextsPerUser = 2;
        l.bufferSize = 4;
        return l;
    }

    EnumerationContexts::Opened open(const std::string& user, const Numbers& numbers, Pegasus::Uint32 first,
        Items& into, std::chrono::milliseconds timeout = 10s)
    {
        return table.open(user, false, timeout, numbers.producer(), first,
            [&](const std::string& item) { into.push_back(item); });
    }
    bool pull(const std::string& user, const std::string& name, Pegasus::Uint32 count, Items& into)
    {
        return table.pull(user, name, false, count, [&](const std::string& item) { into.push_back(item); });
    }

    EnumerationContexts table{limits()};
};

TEST_F(EnumerationContextsTest, PiecesComeInOrderAndTheLastOneEndsTheSequence)
{
    Items got;
    Numbers twenty{20};
    auto opened = open("alice", twenty, 7, got);
    ASSERT_FALSE(opened.endOfSequence);
    EXPECT_EQ(got.size(), 7u);
    EXPECT_FALSE(pull("alice", opened.name, 7, got));
    // The third piece holds the last six: the end is known without a
    // further pull.
    EXPECT_TRUE(pull("alice", opened.name, 7, got));
    Items expected;
    for (int i = 0; i < 20; ++i)
        expected.push_back(std::to_string(i));
    EXPECT_EQ(got, expected);
    EXPECT_EQ(table.openCount(), 0u);
    EXPECT_EQ(cimErrorOf([&] { pull("alice", opened.name, 1, got); }), kNoContext);

    // A sequence that fits the open's piece leaves no context.
    Items few;
    auto whole = open("alice", Numbers{3}, 7, few);
    EXPECT_TRUE(whole.endOfSequence);
    EXPECT_TRUE(whole.name.empty());
    EXPECT_EQ(few.size(), 3u);
}

TEST_F(EnumerationContextsTest, TheProducerStaysAtMostABufferAheadOfThePulls)
{
    Items got;
    Numbers many{1000};
    auto opened = open("alice", many, 0, got);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(many.produced->load(), 4);  // blocked on its fifth result
    EXPECT_FALSE(pull("alice", opened.name, 10, got));
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(many.produced->load(), 14);
    table.close("alice", opened.name);
    EXPECT_EQ(table.openCount(), 0u);
}

TEST_F(EnumerationContextsTest, ContextsBelongToTheirUserAndTheirPullOperation)
{
    Items got;
    auto opened = open("alice", Numbers{50}, 1, got);
    EXPECT_EQ(cimErrorOf([&] { pull("bob", opened.name, 1, got); }), kNoContext);
    EXPECT_EQ(cimErrorOf([&] { table.close("bob", opened.name); }), kNoContext);
    EXPECT_EQ(cimErrorOf([&] { table.pull("alice", opened.name, true, 1, [](const std::string&) {}); }),
        kNoContext);
    EXPECT_EQ(cimErrorOf([&] { pull("alice", "zda-enum-1-0", 1, got); }), kNoContext);
    // Refusals leave the context usable by its owner.
    EXPECT_FALSE(pull("alice", opened.name, 1, got));
    EXPECT_EQ(got, (Items{"0", "1"}));
}

TEST_F(EnumerationContextsTest, LimitsPerUserAndPerServerRefuseFurtherOpens)
{
    Items got;
    auto a1 = open("alice", Numbers{50}, 0, got);
    auto a2 = open("alice", Numbers{50}, 0, got);
    EXPECT_EQ(cimErrorOf([&] { open("alice", Numbers{50}, 0, got); }), kLimits);
    auto b1 = open("bob", Numbers{50}, 0, got);
    EXPECT_EQ(cimErrorOf([&] { open("carol", Numbers{50}, 0, got); }), kLimits);
    EXPECT_EQ(table.openCount(), 3u);
    // Closing one makes room again.
    table.close("alice", a1.name);
    EXPECT_NO_THROW(open("carol", Numbers{1}, 5, got));
    EXPECT_NO_THROW(open("alice", Numbers{1}, 5, got));
    table.close("alice", a2.name);
    table.close("bob", b1.name);
    EXPECT_EQ(table.openCount(), 0u);
}

TEST_F(EnumerationContextsTest, AContextNotPulledInTimeIsClosedAndFreed)
{
    Items got;
    Numbers endless{1000000};
    auto opened = open("alice", endless, 1, got, 200ms);
    // Each pull restarts the clock.
    std::this_thread::sleep_for(120ms);
    EXPECT_FALSE(pull("alice", opened.name, 1, got));
    std::this_thread::sleep_for(120ms);
    EXPECT_FALSE(pull("alice", opened.name, 0, got));
    EXPECT_EQ(table.openCount(), 1u);
    std::this_thread::sleep_for(400ms);
    EXPECT_EQ(table.openCount(), 0u);
    EXPECT_EQ(cimErrorOf([&] { pull("alice", opened.name, 1, got); }), kNoContext);
    // Its producer was stopped, not left running.
    const int produced = endless.produced->load();
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(endless.produced->load(), produced);
    EXPECT_LT(produced, 10);
}

TEST_F(EnumerationContextsTest, OneRequestAtATimePerContext)
{
    Items got;
    auto opened = open("alice", Numbers{50}, 0, got);
    std::promise<void> inside;
    std::promise<void> leave;
    std::thread first([&] {
        Items mine;
        table.pull("alice", opened.name, false, 2, [&](const std::string&) {
            if (mine.empty())
            {
                inside.set_value();
                leave.get_future().wait();
            }
            mine.push_back("x");
        });
    });
    inside.get_future().wait();
    EXPECT_EQ(cimErrorOf([&] { pull("alice", opened.name, 1, got); }), kLimits);
    EXPECT_EQ(cimErrorOf([&] { table.close("alice", opened.name); }), kLimits);
    leave.set_value();
    first.join();
    EXPECT_FALSE(pull("alice", opened.name, 1, got));
    EXPECT_EQ(got, Items{"2"});
    table.close("alice", opened.name);
}

TEST_F(EnumerationContextsTest, AProducerFailureAnswersThePullThatMeetsItAndEndsTheContext)
{
    Items got;
    Numbers failing{5, Pegasus::CIM_ERR_ACCESS_DENIED};
    auto opened = open("alice", failing, 3, got);
    EXPECT_EQ(cimErrorOf([&] { pull("alice", opened.name, 7, got); }), Pegasus::CIM_ERR_ACCESS_DENIED);
    EXPECT_EQ(got.size(), 5u);
    EXPECT_EQ(table.openCount(), 0u);
}

TEST_F(EnumerationContextsTest, TimeoutAndCountLimits)
{
    EXPECT_EQ(table.timeoutFor(std::nullopt), 10s);
    EXPECT_EQ(table.timeoutFor(5), 5s);
    EXPECT_EQ(cimErrorOf([&] { table.timeoutFor(0); }), Pegasus::CIM_ERR_INVALID_OPERATION_TIMEOUT);
    EXPECT_EQ(cimErrorOf([&] { table.timeoutFor(91); }), Pegasus::CIM_ERR_INVALID_OPERATION_TIMEOUT);
    EXPECT_NO_THROW(table.checkObjectCount(10000));
    EXPECT_EQ(cimErrorOf([&] { table.checkObjectCount(10001); }), Pegasus::CIM_ERR_INVALID_PARAMETER);
}

}  // namespace
