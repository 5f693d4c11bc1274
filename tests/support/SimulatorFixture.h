// SimulatorFixture resets the array simulator to its small test array
// before each test and checks its ledgers after it: no allocation left
// outstanding beyond what was there at the start, no bad release, no
// unbalanced post, no call made without the semaphore that needs it, and
// the semaphore free.
#ifndef ZDA_TESTS_SIMULATOR_FIXTURE_H
#define ZDA_TESTS_SIMULATOR_FIXTURE_H

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include <zdaapi.h>

namespace zda_test
{

class SimulatorFixture : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    // Adds a test failure for each ledger fault, naming `after`.
    void expectLedgersClean(const std::string& after) const;

private:
    long _outstandingAtStart = 0;
};

// The simulator's journal entries of one array call ("<function> ..."),
// oldest first.
std::vector<std::string> journalOf(const std::string& function);
// The captured log lines as (level, text without the newline).
std::vector<std::pair<int, std::string>> logLines();
// The array's record of the volume of this name, or of this WWN text when
// the name is null, read under the semaphore; all zero when there is none.
api_VVObj_t vvRecordOf(const char* name, const char* wwn = nullptr);

}  // namespace zda_test

#endif
