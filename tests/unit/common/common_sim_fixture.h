// Set-up shared by the tests of ZDA_Common: the simulator's test array at a
// fixed time with clean records and every log line captured; after each
// test, the simulator's ledgers must show no allocation left unreleased, no
// bad release, and a semaphore that is free and was never misused. The
// internal cache service is dropped so that each test starts from the array
// it loaded.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "ZDA_Common.h"
#include "zdaapi.h"
#include "zdasim_control.h"

namespace zda_common_test {

constexpr time_t kT0 = 1767225600;  // 2026-01-01 00:00:00 UTC

class CommonSimTest : public ::testing::Test {
protected:
    void SetUp() override {
        zdasim_clock_set(kT0);
        zdasim_reset_test_array();
        zdasim_clear_records();
        zdasim_sem_set_timeout_ms(2000);
        zdasim_log_capture(1);
        zdasim_log_set_threshold(1);  // quiet output; the capture keeps every level
        Pegasus::ZDA_InternalCacheService::destroy();
    }

    void TearDown() override {
        char report[256];
        zdasim_ledger_report(report, sizeof report);
        EXPECT_EQ(zdasim_ledger_outstanding(nullptr), 0) << "outstanding: " << report;
        EXPECT_EQ(zdasim_ledger_bad_releases(), 0);
        zdasim_sem_ledger_t sem;
        zdasim_sem_ledger(&sem);
        EXPECT_EQ(sem.held, 0);
        EXPECT_EQ(sem.unbalancedPosts, 0);
        EXPECT_EQ(sem.selfWaits, 0);
        EXPECT_EQ(sem.unguardedCalls, 0);
        zdasim_faults_clear();
        zdasim_log_capture(0);
        zdasim_log_clear();
        Pegasus::ZDA_InternalCacheService::destroy();
    }
};

// Captured log lines as (level, text without the newline).
inline std::vector<std::pair<int, std::string>> logLines() {
    std::vector<std::pair<int, std::string>> out;
    char buf[2048];
    int level = 0;
    for (size_t i = 0; zdasim_log_line(i, &level, buf, sizeof buf) == 0; ++i)
        out.emplace_back(level, buf);
    return out;
}

// Whether a line of exactly this level and text was logged.
inline bool logged(int level, const std::string& text) {
    for (const auto& line : logLines())
        if (line.first == level && line.second == text) return true;
    return false;
}

// Journal entries of one function of the array library, oldest first.
inline std::vector<std::string> journalOf(const std::string& function) {
    std::vector<std::string> out;
    char buf[4096];
    for (size_t i = 0; zdasim_journal_entry(i, buf, sizeof buf) == 0; ++i) {
        std::string entry = buf;
        if (entry.compare(0, function.size() + 1, function + " ") == 0) out.push_back(entry);
    }
    return out;
}

// The WWN text of a volume of the array, read under the semaphore.
inline std::string wwnOf(const std::string& name) {
    int count = 0;
    api_VVObj_t* vv = nullptr;
    std::string wwn;
    if (cim_sem_wait() == 0) {
        if (api_getVVs(name.c_str(), nullptr, &count, &vv, 1) == 0 && count == 1) wwn = vv[0].wwnText;
        cim_sem_post();
    }
    free_if_not_null(vv);
    return wwn;
}

// A storage volume path whose DeviceID is the WWN text.
inline Pegasus::CIMObjectPath volumePath(const std::string& wwn) {
    Pegasus::Array<Pegasus::CIMKeyBinding> keys;
    keys.append(Pegasus::CIMKeyBinding("DeviceID", wwn.c_str(), Pegasus::CIMKeyBinding::STRING));
    keys.append(Pegasus::CIMKeyBinding("SystemName", "zda-sim", Pegasus::CIMKeyBinding::STRING));
    return Pegasus::CIMObjectPath("", "root/zda", "ZDA_StorageVolume", keys);
}

inline std::string str(const Pegasus::String& s) { return (const char*)s.getCString(); }

}  // namespace zda_common_test
