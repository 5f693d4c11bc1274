// The simulator controls (zdasim_control.h).
#include <arpa/inet.h>

#include <cstring>

#include "call.h"
#include "zdasim_control.h"

using namespace zdasim;

namespace
{

// Runs f on the model under the model mutex.
template <class F>
auto withModel(F f)
{
    Runtime& rt = runtime();
    std::lock_guard<std::mutex> lock(rt.modelMutex);
    return f(rt.model, rt.clock.now());
}

void copyOut(char* buffer, size_t size, const std::string& s)
{
    if (buffer && size)
        copyText(buffer, size, s);
}

}  // namespace

extern "C"
{

    void zdasim_reset_empty(void)
    {
        withModel([](ArrayModel& m, time_t) { m.clear(); });
    }

    void zdasim_reset_test_array(void)
    {
        withModel([](ArrayModel& m, time_t now) { loadTestArray(m, now); });
    }

    void zdasim_clear_records(void)
    {
        Runtime& rt = runtime();
        rt.sem.clearCounters();
        rt.ledger.clearBadReleases();
        rt.journal.clear();
        rt.faults.clear();
        rt.log.clearCaptured();
        withModel([](ArrayModel& m, time_t) { m.events.clear(); });
    }

    void zdasim_role_set(const char* role, int defaultAnswer)
    {
        if (!role)
            return;
        withModel([&](ArrayModel& m, time_t) {
            Role& r = m.roles[role];
            r.name = role;
            r.defaultAnswer = defaultAnswer;
        });
    }

    void zdasim_role_set_right(const char* role, const char* key, int answer)
    {
        if (!role || !key)
            return;
        withModel([&](ArrayModel& m, time_t) {
            Role& r = m.roles[role];
            r.name = role;
            r.rights[key] = answer;
        });
    }

    int zdasim_user_set(const char* user, const char* role)
    {
        if (!user || !role)
            return API_E_INVALID;
        return withModel([&](ArrayModel& m, time_t) {
            if (!m.roles.count(role))
                return API_E_NOT_FOUND;
            m.users[user] = User{user, role, false};
            return API_OK;
        });
    }

    int zdasim_user_refuse_open(const char* user, int refuse)
    {
        if (!user)
            return API_E_INVALID;
        return withModel([&](ArrayModel& m, time_t) {
            auto it = m.users.find(user);
            if (it == m.users.end())
                return API_E_NOT_FOUND;
            it->second.openRefused = refuse != 0;
            return API_OK;
        });
    }

    int zdasim_user_may_control(const char* user)
    {
        if (!user)
            return 0;
        return withModel([&](ArrayModel& m, time_t) {
            auto it = m.users.find(user);
            if (it == m.users.end() || it->second.openRefused)
                return 0;
            return m.authorize(user, "zda_storagesetting.modifyinstance") == API_AUTH_ALLOWED ? 1 : 0;
        });
    }

    void zdasim_system_set_policy(uint32_t policyFlags)
    {
        withModel([&](ArrayModel& m, time_t) { m.system.policyFlags = policyFlags; });
    }

    void zdasim_system_set_nodes_alive(int nodes)
    {
        withModel([&](ArrayModel& m, time_t) { m.system.nodesAlive = nodes; });
    }

    int zdasim_system_set_addresses(const char* ipv4, const char* ipv6)
    {
        unsigned char bin[16];
        if (ipv4 && *ipv4 && inet_pton(AF_INET, ipv4, bin) != 1)
            return API_E_INVALID;
        if (ipv6 && *ipv6 && inet_pton(AF_INET6, ipv6, bin) != 1)
            return API_E_INVALID;
        withModel([&](ArrayModel& m, time_t) {
            m.system.ipv4 = str(ipv4);
            m.system.ipv6 = str(ipv6);
        });
        return API_OK;
    }

    void zdasim_system_set_volume_limits(
        uint32_t maxVol, uint32_t maxBaseVol, uint32_t maxSnapshotsPerBase, uint32_t maxRWSnapshots)
    {
        withModel([&](ArrayModel& m, time_t) {
            m.system.maxVolumes = maxVol;
            m.system.maxBaseVolumes = maxBaseVol;
            m.system.maxSnapshotsPerBase = maxSnapshotsPerBase;
            m.system.maxRWSnapshots = maxRWSnapshots;
        });
    }

    int zdasim_system_set_rcopy_limit(int vartype, uint32_t value)
    {
        if (vartype < ZDA_RM_MAX_GROUPS_SYNC || vartype > ZDA_RM_GROUP_MAX_VOLUMES)
            return API_E_INVALID;
        withModel([&](ArrayModel& m, time_t) { m.system.rcopyLimits[vartype] = value; });
        return API_OK;
    }

    int zdasim_volume_set_busy(const char* name, int removals)
    {
        if (!name)
            return API_E_INVALID;
        return withModel([&](ArrayModel& m, time_t) {
            Volume* v = m.findVolume(name);
            if (!v)
                return API_E_NOT_FOUND;
            v->busyRemovals = removals;
            return API_OK;
        });
    }

    int zdasim_volume_add(
        const char* name, const char* usrCpg, const char* snapCpg, unsigned long long sizeMiB)
    {
        if (!name || !nameProblem(name).empty() || !usrCpg)
            return API_E_INVALID;
        return withModel([&](ArrayModel& m, time_t now) {
            if (m.findVolume(name))
                return API_E_EXISTS;
            const Cpg* usr = m.findCpg(usrCpg);
            if (!usr || (snapCpg && *snapCpg && !m.findCpg(snapCpg)))
                return API_E_NOT_FOUND;
            Volume v;
            v.name = name;
            v.usrCpg = usrCpg;
            v.snapCpg = str(snapCpg);
            v.domain = usr->domain;
            v.sizeMiB = v.usedMiB = sizeMiB;
            v.creationTime = now;
            m.addVolume(std::move(v));
            return API_OK;
        });
    }

    int zdasim_vvset_set_key(const char* set, const char* key, const char* value)
    {
        if (!set || !key)
            return API_E_INVALID;
        return withModel([&](ArrayModel& m, time_t) {
            VVSet* s = m.findSet(set);
            if (!s)
                return API_E_NOT_FOUND;
            s->keyValues[key] = str(value);
            return API_OK;
        });
    }

    void zdasim_fault_add(const char* function, int count, int code, const char* text)
    {
        if (!function)
            return;
        runtime().faults.add(function, count, code, str(text));
    }

    void zdasim_fault_sem_timeouts(int count)
    {
        runtime().sem.injectTimeouts(count);
    }

    void zdasim_faults_clear(void)
    {
        runtime().faults.clear();
        runtime().sem.injectTimeouts(0);
    }

    void zdasim_sem_set_timeout_ms(long ms)
    {
        runtime().sem.setTimeout(std::chrono::milliseconds(ms < 0 ? 0 : ms));
    }

    void zdasim_sem_ledger(zdasim_sem_ledger_t* out)
    {
        if (out)
            *out = runtime().sem.ledger();
    }

    long zdasim_ledger_outstanding(const char* kind)
    {
        return runtime().ledger.outstanding(kind);
    }

    long zdasim_ledger_bad_releases(void)
    {
        return runtime().ledger.badReleases();
    }

    void zdasim_ledger_report(char* buffer, size_t size)
    {
        copyOut(buffer, size, runtime().ledger.report());
    }

    size_t zdasim_journal_count(void)
    {
        return runtime().journal.count();
    }

    int zdasim_journal_entry(size_t i, char* buffer, size_t size)
    {
        auto e = runtime().journal.entry(i);
        if (!e)
            return -1;
        copyOut(buffer, size, *e);
        return 0;
    }

    size_t zdasim_journal_count_of(const char* function)
    {
        return function ? runtime().journal.countOf(function) : 0;
    }

    void zdasim_journal_clear(void)
    {
        runtime().journal.clear();
    }

    size_t zdasim_event_count(void)
    {
        return withModel([](ArrayModel& m, time_t) { return m.events.size(); });
    }

    int zdasim_event_get(size_t i, api_evtparam_t* event, char* call, size_t callSize, int* result)
    {
        return withModel([&](ArrayModel& m, time_t) {
            if (i >= m.events.size())
                return -1;
            const EventRecord& e = m.events[i];
            if (event)
                *event = e.event;
            copyOut(call, callSize, e.call);
            if (result)
                *result = e.result;
            return 0;
        });
    }

    void zdasim_log_set_threshold(int level)
    {
        runtime().log.setThreshold(level);
    }

    int zdasim_log_to_file(const char* path)
    {
        return runtime().log.toFile(path) ? 0 : -1;
    }

    void zdasim_log_capture(int on)
    {
        runtime().log.capture(on != 0);
    }

    size_t zdasim_log_count(void)
    {
        return runtime().log.capturedCount();
    }

    int zdasim_log_line(size_t i, int* level, char* buffer, size_t size)
    {
        std::string line;
        if (!runtime().log.captured(i, level, &line))
            return -1;
        copyOut(buffer, size, line);
        return 0;
    }

    void zdasim_log_clear(void)
    {
        runtime().log.clearCaptured();
    }

    void zdasim_clock_set(time_t start)
    {
        runtime().clock.set(start);
    }

    void zdasim_clock_advance(long seconds)
    {
        runtime().clock.advance(seconds);
    }

    void zdasim_clock_use_real(void)
    {
        runtime().clock.useReal();
    }

    time_t zdasim_clock_now(void)
    {
        return runtime().clock.now();
    }

}  // extern "C"
