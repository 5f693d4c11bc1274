#include "ServerHostFixture.h"

#include <zdasim_control.h>

namespace zda_test
{

std::string projectMofDirectory()
{
    return ZDA_PROJECT_MOF_DIR;
}

std::string builtModulesDirectory()
{
    return ZDA_BUILT_MODULES_DIR;
}

zda::server::HostOptions hostOptions(const std::vector<std::string>& extraMofDirectories)
{
    zda::server::HostOptions options;
    options.mofDirectories.push_back(projectMofDirectory());
    options.mofDirectories.insert(options.mofDirectories.end(), extraMofDirectories.begin(),
        extraMofDirectories.end());
    options.modulesDirectory = builtModulesDirectory();
    options.hostName = "testhost";
    return options;
}

void SimulatorFixture::SetUp()
{
    zdasim_reset_test_array();
    zdasim_faults_clear();
    zdasim_clear_records();
    _outstandingAtStart = zdasim_ledger_outstanding(nullptr);
}

void SimulatorFixture::TearDown()
{
    expectLedgersClean("the test");
}

void SimulatorFixture::expectLedgersClean(const std::string& after) const
{
    char report[512];
    zdasim_ledger_report(report, sizeof report);
    EXPECT_EQ(zdasim_ledger_outstanding(nullptr), _outstandingAtStart)
        << "allocations left outstanding after " << after << ": " << report;
    EXPECT_EQ(zdasim_ledger_bad_releases(), 0) << "bad releases after " << after;
    zdasim_sem_ledger_t sem;
    zdasim_sem_ledger(&sem);
    EXPECT_EQ(sem.held, 0) << "the array semaphore is still held after " << after;
    EXPECT_EQ(sem.unbalancedPosts, 0) << "unbalanced semaphore posts after " << after;
    EXPECT_EQ(sem.selfWaits, 0) << "a thread waited for the semaphore it held, in " << after;
    EXPECT_EQ(sem.unguardedCalls, 0) << "array calls without the semaphore in " << after;
}

void ServerHostFixture::SetUp()
{
    SimulatorFixture::SetUp();
    restartHost();
}

void ServerHostFixture::TearDown()
{
    _host.reset();
    SimulatorFixture::TearDown();
}

void ServerHostFixture::restartHost()
{
    _host.reset();
    _host = std::make_unique<zda::server::InProcessHost>(options());
    _host->dispatcher().setOperationObserver(
        [this](const char* operation) { expectLedgersClean(operation); });
}

}  // namespace zda_test
