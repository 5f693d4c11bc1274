// Shared set-up of the array library tests: the test array at a fixed
// time, clean records, log capture; after each test, every allocation the
// library handed out must have been released and the semaphore be free.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zdaapi.h"
#include "zdasim_control.h"

namespace zdatest
{

constexpr time_t kT0 = 1767225600;  // 2026-01-01 00:00:00 UTC

class ArrayTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        zdasim_clock_set(kT0);
        zdasim_reset_test_array();
        zdasim_clear_records();
        zdasim_sem_set_timeout_ms(5000);
        zdasim_log_capture(1);
        zdasim_log_set_threshold(1);  // keep test output quiet; capture sees everything
    }
    void TearDown() override
    {
        char report[256];
        zdasim_ledger_report(report, sizeof report);
        EXPECT_EQ(zdasim_ledger_outstanding(nullptr), 0) << "outstanding: " << report;
        EXPECT_EQ(zdasim_ledger_bad_releases(), 0);
        zdasim_sem_ledger_t sem;
        zdasim_sem_ledger(&sem);
        EXPECT_EQ(sem.held, 0);
        zdasim_faults_clear();
        zdasim_log_capture(0);
        zdasim_log_clear();
    }
};

// Names as the callers build them: zeroed entries of 32 characters.
inline std::vector<api_name_t> names(const std::vector<std::string>& in)
{
    std::vector<api_name_t> out(in.size());
    for (size_t i = 0; i < in.size(); ++i)
    {
        out[i] = api_name_t{};
        in[i].copy(out[i].name, sizeof out[i].name - 1);
    }
    return out;
}

inline std::string text(const api_Status_t& st)
{
    char buf[API_ERRTEXT_LEN];
    return api_getErrorTextNoNL(buf, sizeof buf, &st);
}

inline api_evtparam_t event(const char* op)
{
    api_evtparam_t e{};
    snprintf(e.user, sizeof e.user, "%s", "admin");
    snprintf(e.addr, sizeof e.addr, "%s", "192.0.2.99");
    snprintf(e.method, sizeof e.method, "%s", "ZDA_ReplicationService:Test");
    snprintf(e.inst_op, sizeof e.inst_op, "%s", op);
    return e;
}

inline std::vector<std::string> journal()
{
    std::vector<std::string> out;
    char buf[2048];
    for (size_t i = 0; zdasim_journal_entry(i, buf, sizeof buf) == 0; ++i)
        out.push_back(buf);
    return out;
}

inline std::string lastJournalOf(const std::string& function)
{
    std::string last;
    for (const std::string& e : journal())
        if (e.compare(0, function.size() + 1, function + " ") == 0)
            last = e;
    return last;
}

// The status form of a guarded call, as callers write it.
template <class F>
api_Status_t statusForm(F call)
{
    int semrc = cim_sem_wait();
    api_Status_t st;
    api_initStatus(&st);
    if (semrc == 0)
    {
        st = call();
        cim_sem_post();
    }
    else
    {
        errinfo_set_str(&st, 29, "Semaphore Timed-Out");
    }
    return st;
}

// The int form of a guarded call.
template <class F>
int intForm(F call)
{
    int semrc = cim_sem_wait();
    if (semrc != 0)
        return semrc;
    int rc = call();
    cim_sem_post();
    return rc;
}

// Volume names of a list from api_getVVs / api_getVVs_chunk.
inline std::vector<std::string> vvNames(const api_VVObj_t* list, int count)
{
    std::vector<std::string> out;
    for (int i = 0; i < count; ++i)
        out.push_back(list[i].name);
    return out;
}

}  // namespace zdatest
