// Shared set-up of the array library tests: the test array at a fixed
// time, clean records, log capture; after each test, every allocation the
// library handed out must have been released and the semaphore be free.
#pragma once

#include <gtest/gtest.h>

#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "SimulatorFixture.h"
#include "zdaapi.h"
#include "zdasim_control.h"

namespace zdatest
{

using ::testing::HasSubstr;
using Names = std::vector<std::string>;

constexpr time_t kT0 = 1767225600;  // 2026-01-01 00:00:00 UTC

inline zdasim_sem_ledger_t semLedger()
{
    zdasim_sem_ledger_t sem;
    zdasim_sem_ledger(&sem);
    return sem;
}

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
        EXPECT_EQ(semLedger().held, 0);
        zdasim_faults_clear();
        zdasim_log_capture(0);
        zdasim_log_clear();
    }
};

// Fills a name field as callers do: zero padded, and without a terminator
// when the name fills the field.
template <size_t N>
void setField(char (&field)[N], const std::string& text)
{
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), std::min(text.size(), N));
}

// Names as the callers build them: zeroed entries of 32 characters.
inline std::vector<api_name_t> names(const Names& in)
{
    std::vector<api_name_t> out(in.size());
    for (size_t i = 0; i < in.size(); ++i)
        setField(out[i].name, in[i]);
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

// Runs body(0) .. body(n - 1) in threads of their own and waits for all.
template <class F>
void inThreads(int n, F body)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < n; ++t)
        threads.emplace_back(body, t);
    for (std::thread& th : threads)
        th.join();
}

// The newest journal entry of one call, empty when there is none.
inline std::string lastJournalOf(const std::string& function)
{
    const std::vector<std::string> all = zda_test::journalOf(function);
    return all.empty() ? std::string() : all.back();
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

// An audited call (the audit record of event("test")) in the status form.
template <class Call, class... Args>
api_Status_t audited(Call call, Args... args)
{
    api_evtparam_t e = event("test");
    return statusForm([&] { return call(&e, args...); });
}

// A physical copy of parent to child; the task it started goes to *tid.
inline api_Status_t physicalCopy(
    const std::string& parent, const std::string& child, uint32_t flags, uint32_t* tid = nullptr)
{
    api_physcopy_t req{};
    setField(req.parentVolName, parent);
    setField(req.childVolName, child);
    req.flags = flags;
    const api_Status_t st = audited(api_createPhysicalCopy, &req);
    if (tid)
        *tid = req.tid;
    return st;
}

inline api_groupsv_t snapshotRequest(
    uint32_t expiration = 0, uint32_t retention = 0, const char* comment = "")
{
    api_groupsv_t req{};
    req.baseID = API_BASEID_ANY;
    req.expirationTime = expiration;
    req.retentionTime = retention;
    setField(req.comment, comment);
    return req;
}

// A snapshot of each parent>child pair at once, with the times and comment
// of `req`; the entries, with the WWNs the array filled in, go to *done.
inline api_Status_t groupSnapshot(const std::vector<std::pair<std::string, std::string>>& pairs,
    api_groupsv_t req = snapshotRequest(), std::vector<api_groupsv_entry_t>* done = nullptr)
{
    std::vector<api_groupsv_entry_t> svs(pairs.size());
    for (size_t i = 0; i < pairs.size(); ++i)
    {
        setField(svs[i].parentVolName, pairs[i].first);
        setField(svs[i].childVolName, pairs[i].second);
    }
    req.count = static_cast<uint32_t>(svs.size());
    req.svs = svs.data();
    const api_Status_t st = audited(api_createGroupSV, &req);
    if (done)
        *done = svs;
    return st;
}

inline api_setting_t setting(const std::string& name)
{
    api_setting_t s{};
    setField(s.name, name);
    return s;
}

// Volume names of a list from api_getVVs / api_getVVs_chunk.
inline std::vector<std::string> vvNames(const api_VVObj_t* list, int count)
{
    std::vector<std::string> out;
    for (int i = 0; i < count; ++i)
        out.push_back(list[i].name);
    return out;
}

// A volume query through the semaphore; a failed one hands back nothing.
struct Query
{
    int rc = -1;
    Names names;
    std::vector<api_VVObj_t> records;
};

inline Query getVVs(const char* name, const char* wwn = nullptr, int max = 1)
{
    Query q;
    int count = -1;
    api_VVObj_t* list = nullptr;
    q.rc = intForm([&] { return api_getVVs(name, wwn, &count, &list, max); });
    if (q.rc != 0)
    {
        EXPECT_EQ(list, nullptr);
        EXPECT_EQ(count, 0);
    }
    q.names = vvNames(list, count > 0 ? count : 0);
    if (list)
        q.records.assign(list, list + count);
    free_if_not_null(list);
    return q;
}

// The record of one volume, zeroed when the array has no such volume.
inline api_VVObj_t volume(const std::string& name)
{
    const Query q = getVVs(name.c_str());
    return q.records.size() == 1 ? q.records[0] : api_VVObj_t{};
}

struct SetView
{
    uint32_t id = 0;
    std::string comment, domain;
    Names members;
};

// The vvsets api_getVVSets answers, by name; the list is released here.
inline std::map<std::string, SetView> listSets(
    const char* name = nullptr, const api_okv_opts_t* cond = nullptr, api_Status_t* status = nullptr)
{
    api_sets_t list{};
    const api_Status_t st = statusForm([&] { return api_getVVSets(name, cond, 0, &list); });
    if (status)
        *status = st;
    std::map<std::string, SetView> out;
    for (uint32_t i = 0; i < list.count; ++i)
    {
        const api_set_t& s = list.sets[i];
        SetView v{s.id, s.comment, s.domain, {}};
        for (int m = 0; m < s.memberCount; ++m)
            v.members.push_back(s.members[m].name);
        out[s.name] = v;
    }
    api_freeSets(&list);
    return out;
}

// The vvsets whose key has the value (of the named one only, when given).
inline std::map<std::string, SetView> listSetsWhere(
    const char* key, const char* value, const char* name = nullptr, api_Status_t* status = nullptr)
{
    api_okv_opts_t cond{};
    EXPECT_EQ(api_okv_addIfKV(&cond, key, value), 0);
    std::map<std::string, SetView> out = listSets(name, &cond, status);
    api_free_okv_opts(&cond);
    EXPECT_EQ(cond.entries, nullptr);
    return out;
}

inline std::string fileText(const std::string& path)
{
    std::ifstream in(path);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

inline std::string tempPath(const std::string& name)
{
    return ::testing::TempDir() + "zda_" + std::to_string(getpid()) + "_" + name;
}

// The whole array as a description.
inline std::string described()
{
    const std::string file = tempPath("described.json");
    char error[512] = "";
    EXPECT_EQ(zdasim_save_description_file(file.c_str(), error, sizeof error), 0) << error;
    const std::string text = fileText(file);
    std::remove(file.c_str());
    return text;
}

// Saves the array as a description, starts over from the test array and
// loads the description back: what a restart from a saved file does.
// `afterReset` sees the array in between.
inline void reloadDescription(const std::function<void()>& afterReset = {})
{
    const std::string path = tempPath("reload.json");
    char error[256] = "";
    ASSERT_EQ(zdasim_save_description_file(path.c_str(), error, sizeof error), 0) << error;
    zdasim_reset_test_array();
    if (afterReset)
        afterReset();
    ASSERT_EQ(zdasim_load_description_file(path.c_str(), error, sizeof error), 0) << error;
    std::remove(path.c_str());
}

}  // namespace zdatest
