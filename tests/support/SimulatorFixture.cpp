#include "SimulatorFixture.h"

#include <zdasim_control.h>

namespace zda_test
{

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

std::vector<std::string> journalOf(const std::string& function)
{
    std::vector<std::string> out;
    char entry[4096];
    for (size_t i = 0; zdasim_journal_entry(i, entry, sizeof entry) == 0; ++i)
        if (std::string(entry).rfind(function + " ", 0) == 0)
            out.push_back(entry);
    return out;
}

std::vector<std::pair<int, std::string>> logLines()
{
    std::vector<std::pair<int, std::string>> out;
    char line[2048];
    int level = 0;
    for (size_t i = 0; zdasim_log_line(i, &level, line, sizeof line) == 0; ++i)
        out.emplace_back(level, line);
    return out;
}

api_VVObj_t vvRecordOf(const char* name, const char* wwn)
{
    api_VVObj_t record{};
    api_VVObj_t* vv = nullptr;
    int count = 0;
    if (cim_sem_wait() == 0)
    {
        if (api_getVVs(name, wwn, &count, &vv, 1) == 0 && count == 1)
            record = vv[0];
        cim_sem_post();
    }
    free_if_not_null(vv);
    return record;
}

}  // namespace zda_test
