// Requests from many threads at once, first requests racing to initialize
// the providers, and providers whose initializations wait for each other.
// Also run under ThreadSanitizer.
#include "server_test_fixture.h"

#include <Pegasus/Client/CIMClient.h>

#include <atomic>
#include <thread>

using namespace Pegasus;
using namespace zda_test;

namespace
{

class ConcurrencyTest : public TestModuleFixture
{};

TEST_F(ConcurrencyTest, ConcurrentRequestsGetFullAnswersAndInitializeEachProviderOnce)
{
    constexpr int threads = 6;
    constexpr int rounds = 15;
    std::atomic<int> ready{0};
    std::atomic<int> failures{0};
    auto worker = [&](int n) {
        const OperationContext context = zda::server::InProcessHost::contextFor(
            ("user" + std::to_string(n)).c_str());
        // Start together, so that first requests race for initialization.
        ++ready;
        while (ready.load() < threads)
            std::this_thread::yield();
        for (int round = 0; round < rounds; ++round)
        {
            try
            {
                if (server()
                        .enumerateInstances(
                            context, TEST_NS, "Test_Element", true, false, false, false, CIMPropertyList())
                        .size() != 5)
                    ++failures;
                if (server()
                        .associatorNames(context, TEST_NS, disk("Pool1", "Test_Pool"), CIMName(), CIMName(),
                            String(), String())
                        .size() != 3)
                    ++failures;
                Array<CIMParamValue> out;
                server().invokeMethod(context, TEST_NS, service(), "Upcalls", Array<CIMParamValue>(), out);
                if (paramNamed(out, "HandleUser") != CIMValue(String(("user" + std::to_string(n)).c_str())))
                    ++failures;
                CIMClient client;
                client.connectLocal();
                if (client.getInstance(TEST_NS, disk("Fast1", "Test_FastDisk"), false).getPropertyCount() !=
                    5)
                    ++failures;
            }
            catch (const Exception& e)
            {
                ADD_FAILURE() << (const char*)e.getMessage().getCString();
                ++failures;
            }
        }
    };
    std::vector<std::thread> pool;
    for (int n = 0; n < threads; ++n)
        pool.emplace_back(worker, n);
    for (std::thread& t : pool)
        t.join();
    EXPECT_EQ(failures.load(), 0);
    for (const char* provider :
        {"Test_DiskProvider", "Test_FastDiskProvider", "Test_ComponentProvider", "Test_ServiceProvider"})
        EXPECT_EQ(zda_test_providers::initializeCount(provider), 1) << provider;
}

TEST_F(ConcurrencyTest, ProvidersReachingEachOtherFromInitializeDoNotDeadlock)
{
    zda_test_providers::setCycleRendezvous(true);
    const OperationContext context = zda::server::InProcessHost::contextFor("alice");
    Uint32 a = 0, b = 0;
    std::thread first([&] { a = server().enumerateInstanceNames(context, TEST_NS, "Test_CycleA").size(); });
    std::thread second([&] { b = server().enumerateInstanceNames(context, TEST_NS, "Test_CycleB").size(); });
    first.join();
    second.join();
    EXPECT_EQ(a, 1u);
    EXPECT_EQ(b, 1u);
    // Both initializations ran at once: one waited for the other, whose own
    // request for the first was refused instead of waiting in a cycle.
    std::vector<std::string> outcomes = zda_test_providers::notesStartingWith("Test_Cycle");
    std::sort(outcomes.begin(), outcomes.end());
    ASSERT_EQ(outcomes.size(), 2u);
    const bool aRefused = outcomes[0] == "Test_CycleAProvider other failed 1";
    EXPECT_EQ(
        outcomes[0], aRefused ? "Test_CycleAProvider other failed 1" : "Test_CycleAProvider other ok 1");
    EXPECT_EQ(
        outcomes[1], aRefused ? "Test_CycleBProvider other ok 1" : "Test_CycleBProvider other failed 1");
    EXPECT_EQ(zda_test_providers::initializeCount("Test_CycleAProvider"), 1);
    EXPECT_EQ(zda_test_providers::initializeCount("Test_CycleBProvider"), 1);
}

}  // namespace
