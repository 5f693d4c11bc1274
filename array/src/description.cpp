#include "description.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <set>
#include <tuple>

#include <nlohmann/json.hpp>

#include "call.h"

namespace zdasim
{

using json = nlohmann::ordered_json;

namespace
{

// ---- reading with the path of every field, for errors that say what to fix --

struct DescError
{
    std::string path;
    std::string what;
};

[[noreturn]] void fail(const std::string& path, const std::string& what)
{
    throw DescError{path, what};
}

std::string q(const std::string& s)
{
    return "\"" + s + "\"";
}

// Names given for a number, both ways.
struct Names
{
    std::vector<std::pair<const char*, long long>> entries;

    std::string nameOf(long long v) const
    {
        for (const auto& [n, value] : entries)
            if (value == v)
                return n;
        return {};
    }
    std::string list() const
    {
        std::string out;
        for (const auto& e : entries)
            out += (out.empty() ? "" : ", ") + std::string(e.first);
        return out;
    }
};

// Writes a named value by name when it has one, else as a number.
json named(const Names& names, long long v)
{
    std::string n = names.nameOf(v);
    return n.empty() ? json(v) : json(n);
}

// A value given by name or by number.
long long choiceOf(const json& v, const std::string& path, const Names& names, long long lo, long long hi)
{
    if (v.is_string())
    {
        const std::string s = v.get<std::string>();
        for (const auto& [n, value] : names.entries)
            if (s == n)
                return value;
        fail(path, q(s) + " is not one of " + names.list());
    }
    if (!v.is_number_integer())
        fail(path, "must be one of " + names.list() + ", or a number");
    const long long n = v.get<long long>();
    if (n < lo || n > hi)
        fail(path,
            std::to_string(n) + " is out of range (" + std::to_string(lo) + " to " + std::to_string(hi) +
                ")");
    return n;
}

class Obj
{
public:
    Obj(const json& j, std::string path, time_t now) : j_(j), path_(std::move(path)), now_(now)
    {
        if (!j_.is_object())
            fail(path_, "must be an object");
    }

    const std::string& path() const { return path_; }
    std::string at(const char* key) const { return path_.empty() ? key : path_ + "." + key; }
    bool has(const char* key)
    {
        used_.insert(key);
        return j_.contains(key) && !j_.at(key).is_null();
    }
    const json& raw(const char* key)
    {
        used_.insert(key);
        return j_.at(key);
    }
    void need(const char* key)
    {
        if (!has(key))
            fail(at(key), "is required");
    }

    std::string str(const char* key, const std::string& def = {}, size_t maxLen = API_NAME_LEN - 1)
    {
        if (!has(key))
            return def;
        const json& v = raw(key);
        if (!v.is_string())
            fail(at(key), "must be a string");
        std::string s = v.get<std::string>();
        if (s.size() > maxLen)
            fail(at(key), q(s) + " is longer than " + std::to_string(maxLen) + " characters");
        return s;
    }
    std::string name(const char* key)
    {
        need(key);
        std::string s = str(key);
        if (s.empty())
            fail(at(key), "must not be empty");
        const std::string bad = nameProblem(s);
        if (!bad.empty())
            fail(at(key), q(s) + " " + bad);
        return s;
    }
    long long num(const char* key, long long def, long long lo, long long hi)
    {
        if (!has(key))
            return def;
        const json& v = raw(key);
        if (!v.is_number_integer())
            fail(at(key), "must be a whole number");
        long long n = v.is_number_unsigned() && v.get<unsigned long long>() > 0x7FFFFFFFFFFFFFFFull
            ? hi + 1
            : v.get<long long>();
        if (n < lo || n > hi)
            fail(at(key),
                std::to_string(n) + " is out of range (" + std::to_string(lo) + " to " + std::to_string(hi) +
                    ")");
        return n;
    }
    uint32_t u32(const char* key, uint32_t def = 0)
    {
        return static_cast<uint32_t>(num(key, def, 0, 0xFFFFFFFFll));
    }
    api_u64_t u64(const char* key, api_u64_t def = 0)
    {
        return static_cast<api_u64_t>(num(key, static_cast<long long>(def), 0, 0x7FFFFFFFFFFFFFFFll));
    }
    bool flag(const char* key, bool def = false)
    {
        if (!has(key))
            return def;
        const json& v = raw(key);
        if (!v.is_boolean())
            fail(at(key), "must be true or false");
        return v.get<bool>();
    }
    // A number, or one of the names.
    long long choice(const char* key, const Names& names, long long def, long long lo = 0, long long hi = 255)
    {
        if (!has(key))
            return def;
        return choiceOf(raw(key), at(key), names, lo, hi);
    }
    // Seconds since the epoch, or "now", "-30d", "+1h" (s, m, h, d) from now.
    time_t time(const char* key, time_t def = 0)
    {
        if (!has(key))
            return def;
        const json& v = raw(key);
        if (v.is_number_integer())
            return static_cast<time_t>(num(key, 0, 0, 0xFFFFFFFFll));
        if (!v.is_string())
            fail(at(key), "must be seconds since the epoch or a time like \"-2h\"");
        const std::string s = v.get<std::string>();
        if (s == "now")
            return now_;
        long long n = 0;
        char sign = 0, unit = 0, extra = 0;
        if (std::sscanf(s.c_str(), "%c%lld%c%c", &sign, &n, &unit, &extra) != 3 ||
            (sign != '-' && sign != '+') || n < 0)
            fail(at(key),
                q(s) + " is not a time (seconds since the epoch, \"now\", or like \"-30d\", \"+2h\")");
        long long unitSeconds = unit == 's' ? 1
            : unit == 'm'                   ? 60
            : unit == 'h'                   ? 3600
            : unit == 'd'                   ? 86400
                                            : 0;
        if (!unitSeconds)
            fail(at(key), q(s) + ": the unit must be s, m, h or d");
        const long long t = static_cast<long long>(now_) + (sign == '-' ? -n : n) * unitSeconds;
        if (t < 0)
            fail(at(key), q(s) + " lies before 1970");
        return static_cast<time_t>(t);
    }
    // An array field: calls f(element, path) for each.
    template <class F>
    void each(const char* key, F f)
    {
        if (!has(key))
            return;
        const json& v = raw(key);
        if (!v.is_array())
            fail(at(key), "must be a list");
        for (size_t i = 0; i < v.size(); ++i)
            f(v[i], at(key) + "[" + std::to_string(i) + "]");
    }
    Obj child(const char* key) { return Obj(raw(key), at(key), now_); }

    // Refuses fields nobody read: a misspelt field must not pass unnoticed.
    void done() const
    {
        for (auto it = j_.begin(); it != j_.end(); ++it)
            if (!used_.count(it.key()))
                fail(at(it.key().c_str()), "is not a known field here");
    }

    time_t now() const { return now_; }

private:
    const json& j_;
    std::string path_;
    time_t now_;
    std::set<std::string> used_;
};

// ---- the value names ------------------------------------------------------------

const Names kAnswers{{{"allowed", API_AUTH_ALLOWED}, {"denied", API_AUTH_DENIED},
    {"unknown-user", API_AUTH_UNKNOWN_USER}, {"unsupported", API_AUTH_UNSUPPORTED}}};
const Names kVolumeTypes{{{"base", API_VV_TYPE_BASE}, {"physical-copy", API_VV_TYPE_PHYSICAL_COPY},
    {"virtual-copy", API_VV_TYPE_VIRTUAL_COPY}, {"other", API_VV_TYPE_OTHER}}};
const Names kPolicies{{{"stale-ss-ok", VV_POLICY_STALE_SS_OK}, {"zero-detect", VV_POLICY_ZERO_DETECT},
    {"thin", VV_POLICY_THIN}, {"system", VV_POLICY_SYSTEM}}};
const Names kProtocols{{{"fc", API_PORT_FC}, {"iscsi", API_PORT_ISCSI}, {"rcip", API_PORT_RCIP}}};
const Names kSysModes{{{"none", RM_SYS_MODE_NONE}, {"local", RM_SYS_MODE_LOCAL},
    {"remote", RM_SYS_MODE_REMOTE}, {"on", RM_SYS_MODE_ON}, {"stopped", RM_SYS_MODE_ON | RM_SYS_MODE_STOP}}};
const Names kTargetStatus{{{"new", RM_TARGET_NEW}, {"ready", RM_TARGET_READY},
    {"release-unsupported", RM_TARGET_RELEASE_UNSUPPORTED}, {"failing", RM_TARGET_FAILING},
    {"failed", RM_TARGET_FAILED}, {"disabled", RM_TARGET_DISABLED}}};
const Names kLinkTypes{{{"ip", 1}, {"fc", 2}}};
const Names kModes{{{"sync", RM_TARGET_MODE_SYNC}, {"async", RM_TARGET_MODE_ASYNC},
    {"semisync", RM_TARGET_MODE_SEMISYNC}, {"periodic", RM_TARGET_MODE_PERIODIC}}};
const Names kGtStates{{{"new", kGtNew}, {"starting", kGtStarting}, {"started", kGtStarted},
    {"stopped", kGtStopped}, {"failsafe", kGtFailsafe}}};
const Names kRoles{{{"secondary", 0}, {"primary", 1}}};
const Names kDrStates{{{"none", RM_DR_NONE}, {"failover-in-progress", RM_DR_FAILOVER_IN_PROGRESS},
    {"failover-done", RM_DR_FAILOVER_DONE}, {"failover-failed", RM_DR_FAILOVER_FAIL},
    {"recover-in-progress", RM_DR_RECOVER_IN_PROGRESS}, {"recover-done", RM_DR_RECOVER_DONE},
    {"recover-failed", RM_DR_RECOVER_FAIL}, {"restore-in-progress", RM_DR_RESTORE_IN_PROGRESS},
    {"restore-done", RM_DR_RESTORE_DONE}, {"restore-failed", RM_DR_RESTORE_FAIL},
    {"reverse-in-progress", RM_DR_REVERSE_IN_PROGRESS}, {"reverse-failed", RM_DR_REVERSE_FAIL}}};
const Names kMapStatus{{{"new", RM_GROUP_VV_NEW}, {"syncing", RM_GROUP_VV_SYNCING},
    {"synced", RM_GROUP_VV_SYNCED}, {"unsynced", RM_GROUP_VV_UNSYNC}, {"stale", RM_GROUP_VV_STALE},
    {"ld-checking", RM_GROUP_VV_LD_CHECKING}, {"new-no-sync", RM_GROUP_VV_NEW_NO_SYNC},
    {"new-sync", RM_GROUP_VV_NEW_SYNC}, {"repairing", RM_GROUP_VV_REPAIRING},
    {"stopped", RM_GROUP_VV_STOPPED}, {"failsafe", RM_GROUP_VV_FAILSAFE}}};
const Names kWwnStatus{
    {{"invalid", RM_VV_WWN_INVALID}, {"valid", RM_VV_WWN_VALID}, {"computed", RM_VV_WWN_COMPUTED}}};
const Names kTaskTypes{{{"physical-copy", API_TASK_PHYSICAL_COPY}, {"rcopy-sync", API_TASK_RCOPY_SYNC},
    {"copy-restore", API_TASK_COPY_RESTORE}}};
const Names kTaskStates{{{"active", API_TASK_ACTIVE}, {"done", API_TASK_DONE}, {"failed", API_TASK_FAILED},
    {"cancelled", API_TASK_CANCELLED}}};

const char* const kLimitNames[7] = {"groupsSync", "groupsPeriodic", "groupsAsync", "volumesSync",
    "volumesPeriodic", "volumesAsync", "groupVolumes"};

// A list of names or a number, for bit sets.
uint32_t bits(Obj& o, const char* key, const Names& names, uint32_t def)
{
    if (!o.has(key))
        return def;
    const json& v = o.raw(key);
    if (!v.is_array())
        return static_cast<uint32_t>(o.num(key, def, 0, 0xFFFFFFFFll));
    uint32_t out = 0;
    for (size_t i = 0; i < v.size(); ++i)
    {
        const std::string path = o.at(key) + "[" + std::to_string(i) + "]";
        if (!v[i].is_string())
            fail(path, "must be one of " + names.list());
        const std::string s = v[i].get<std::string>();
        bool found = false;
        for (const auto& [n, value] : names.entries)
            if (s == n)
            {
                out |= static_cast<uint32_t>(value);
                found = true;
            }
        if (!found)
            fail(path, q(s) + " is not one of " + names.list());
    }
    return out;
}

json bitNames(const Names& names, uint32_t value)
{
    json out = json::array();
    uint32_t rest = value;
    for (const auto& [n, v] : names.entries)
        if (value & static_cast<uint32_t>(v))
        {
            out.push_back(n);
            rest &= ~static_cast<uint32_t>(v);
        }
    return rest ? json(value) : out;
}

// WWN texts: 16 or 32 hex digits.
std::pair<api_u64_t, api_u64_t> wwn(Obj& o, const char* key)
{
    const std::string s = o.str(key, "", 32);
    if (s.empty())
        return {0, 0};
    api_u64_t re = 0, lo = 0;
    if (api_wwnStringToInt(s.c_str(), &re, &lo) != 0 || (re == 0 && lo == 0))
        fail(o.at(key), q(s) + " is not a WWN (16 or 32 hexadecimal digits)");
    return {re, lo};
}

// ---- the sections ---------------------------------------------------------------------

void readSystem(Obj o, SystemInfo& s)
{
    s.name = o.str("name", s.name);
    if (s.name.empty())
        fail(o.at("name"), "must not be empty");
    s.id = o.u32("id", s.id);
    s.type = static_cast<int>(o.num("type", s.type, 0, 0x7FFFFFFF));
    s.hostName = o.str("hostName", s.hostName, 255);
    s.contact = o.str("contact", s.contact, 255);
    s.owner = o.str("owner", s.owner, 255);
    unsigned char bin[16];
    s.ipv4 = o.str("ipv4", s.ipv4, 45);
    if (!s.ipv4.empty() && inet_pton(AF_INET, s.ipv4.c_str(), bin) != 1)
        fail(o.at("ipv4"), q(s.ipv4) + " is not an IPv4 address");
    s.ipv6 = o.str("ipv6", s.ipv6, 45);
    if (!s.ipv6.empty() && inet_pton(AF_INET6, s.ipv6.c_str(), bin) != 1)
        fail(o.at("ipv6"), q(s.ipv6) + " is not an IPv6 address");
    s.isQuadPort = o.flag("quadPort", s.isQuadPort) ? 1 : 0;
    s.policyFlags = o.u32("policyFlags", s.policyFlags);
    s.nodesTotal = static_cast<int>(o.num("nodesTotal", s.nodesTotal, 1, 8));
    s.nodesAlive = static_cast<int>(o.num("nodesAlive", s.nodesTotal, 0, s.nodesTotal));
    if (o.has("limits"))
    {
        Obj l = o.child("limits");
        s.maxVolumes = l.u32("maxVolumes", s.maxVolumes);
        s.maxBaseVolumes = l.u32("maxBaseVolumes", s.maxBaseVolumes);
        s.maxSnapshotsPerBase = l.u32("maxSnapshotsPerBase", s.maxSnapshotsPerBase);
        s.maxRWSnapshots = l.u32("maxRWSnapshots", s.maxRWSnapshots);
        s.maxVVSets = l.u32("maxVVSets", s.maxVVSets);
        if (l.has("rcopy"))
        {
            Obj r = l.child("rcopy");
            for (int i = 0; i < 7; ++i)
                s.rcopyLimits[i] = r.u32(kLimitNames[i], s.rcopyLimits[i]);
            r.done();
        }
        l.done();
    }
    o.done();
}

void readRoles(Obj& top, ArrayModel& m)
{
    top.each("roles", [&](const json& j, const std::string& path) {
        Obj o(j, path, top.now());
        Role r;
        r.name = o.name("name");
        if (m.roles.count(r.name))
            fail(o.at("name"), "role " + q(r.name) + " is described twice");
        r.defaultAnswer = static_cast<int>(o.choice("default", kAnswers, API_AUTH_DENIED, 0, 3));
        if (o.has("rights"))
        {
            const json& rights = o.raw("rights");
            if (!rights.is_object())
                fail(o.at("rights"), "must be an object of key: answer");
            for (auto it = rights.begin(); it != rights.end(); ++it)
            {
                r.rights[it.key()] = static_cast<int>(
                    choiceOf(it.value(), o.at("rights") + "." + it.key(), kAnswers, 0, 3));
            }
        }
        o.done();
        m.roles[r.name] = r;
    });
    top.each("users", [&](const json& j, const std::string& path) {
        Obj o(j, path, top.now());
        User u;
        u.name = o.name("name");
        if (m.users.count(u.name))
            fail(o.at("name"), "user " + q(u.name) + " is described twice");
        u.role = o.name("role");
        if (!m.roles.count(u.role))
            fail(o.at("role"), "role " + q(u.role) + " is not described under roles");
        u.openRefused = o.flag("refuseOpen");
        o.done();
        m.users[u.name] = u;
    });
}

void readCpgs(Obj& top, ArrayModel& m)
{
    top.each("cpgs", [&](const json& j, const std::string& path) {
        Obj o(j, path, top.now());
        Cpg c;
        c.name = o.name("name");
        if (m.findCpg(c.name))
            fail(o.at("name"), "CPG " + q(c.name) + " is described twice");
        c.domain = o.str("domain");
        c.totalMiB = o.u64("totalMiB", 1u << 20);
        c.raidType = static_cast<int>(o.num("raid", 3, 0, 10));
        o.done();
        m.addCpg(c);
    });
}

void readSettings(Obj& top, ArrayModel& m)
{
    top.each("settings", [&](const json& j, const std::string& path) {
        Obj o(j, path, top.now());
        Setting s;
        api_setting_t& r = s.record;
        const std::string name = o.name("name");
        if (m.settings.count(name))
            fail(o.at("name"), "setting " + q(name) + " is described twice");
        copyText(r.name, name);
        copyText(r.comment, o.str("comment", "", 256));
        r.baseId = o.u32("baseId");
        // Each time is an interval or a point in time, never both.
        for (auto [seconds, at, field, flag] : {std::make_tuple("expirationSeconds", "expiresAt",
                                                    &r.expirationSeconds, API_SETTING_EXPIRATION_AT),
                 std::make_tuple(
                     "retentionSeconds", "retainedUntil", &r.retentionSeconds, API_SETTING_RETENTION_AT)})
        {
            if (o.has(seconds) && o.has(at))
                fail(o.at(at), std::string("cannot be given with ") + seconds);
            if (o.has(at))
            {
                *field = static_cast<uint32_t>(o.time(at));
                r.timesAt |= flag;
            }
            else
            {
                *field = o.u32(seconds);
            }
        }
        for (auto [key, field] : {std::make_pair("userCpg", r.userCpg), std::make_pair("snapCpg", r.snapCpg)})
        {
            const std::string cpg = o.str(key);
            if (!cpg.empty() && !m.findCpg(cpg))
                fail(o.at(key), "CPG " + q(cpg) + " is not described under cpgs");
            copyText(field, API_NAME_LEN, cpg);
        }
        r.dataRedundancyGoal = static_cast<uint16_t>(o.num("dataRedundancyGoal", 0, 0, 0xFFFF));
        r.packageRedundancyGoal = static_cast<uint16_t>(o.num("packageRedundancyGoal", 0, 0, 0xFFFF));
        r.deltaReservationGoal = static_cast<uint8_t>(o.num("deltaReservationGoal", 0, 0, 100));
        r.noSinglePointOfFailure = o.flag("noSinglePointOfFailure") ? 1 : 0;
        o.done();
        m.settings[name] = s;
    });
}

void readVolumes(Obj& top, ArrayModel& m, Tasks& tasks)
{
    top.each("volumes", [&](const json& j, const std::string& path) {
        Obj o(j, path, top.now());
        Volume v;
        v.name = o.name("name");
        if (m.findVolume(v.name))
            fail(o.at("name"), "volume " + q(v.name) + " is described twice");
        v.id = o.u32("id");
        if (v.id != 0 && !m.volumeIdFree(v.id))
            fail(o.at("id"), "id " + std::to_string(v.id) + " is taken by another volume");
        v.type = static_cast<int>(o.choice("type", kVolumeTypes, API_VV_TYPE_BASE, 0, 4));
        const Volume* parent = nullptr;
        if (v.type == API_VV_TYPE_PHYSICAL_COPY || v.type == API_VV_TYPE_VIRTUAL_COPY)
        {
            const std::string of = o.name("copyOf");
            parent = m.findVolume(of);
            if (!parent)
                fail(o.at("copyOf"), "volume " + q(of) + " is not described before this copy");
            v.copyOfId = parent->id;
            v.baseId = parent->baseId;
        }
        else if (o.has("copyOf"))
        {
            fail(o.at("copyOf"), "only copies name the volume they copy");
        }
        v.usrCpg = o.str("usrCpg", parent ? parent->usrCpg : "");
        if (v.usrCpg.empty())
            fail(o.at("usrCpg"), "is required");
        const Cpg* usr = m.findCpg(v.usrCpg);
        if (!usr)
            fail(o.at("usrCpg"), "CPG " + q(v.usrCpg) + " is not described under cpgs");
        v.snapCpg = o.str("snapCpg", parent ? parent->snapCpg : "");
        if (!v.snapCpg.empty() && !m.findCpg(v.snapCpg))
            fail(o.at("snapCpg"), "CPG " + q(v.snapCpg) + " is not described under cpgs");
        v.domain = o.str("domain", usr->domain);
        if (v.domain != usr->domain)
            fail(o.at("domain"), q(v.domain) + " differs from the domain of CPG " + q(v.usrCpg));
        if (!parent)
            o.need("sizeMiB");
        v.sizeMiB = o.u64("sizeMiB", parent ? parent->sizeMiB : 0);
        if (v.sizeMiB == 0)
            fail(o.at("sizeMiB"), "must be more than 0");
        v.usedMiB = o.u64("usedMiB", v.type == API_VV_TYPE_VIRTUAL_COPY ? 0 : v.sizeMiB);
        v.snapUsedMiB = o.u64("snapUsedMiB");
        v.policy = bits(o, "policy", kPolicies, 0);
        const auto [wre, wlo] = wwn(o, "wwn");
        if (wre || wlo)
        {
            if (m.findVolumeByWwn(wwnToText(wre, wlo)))
                fail(o.at("wwn"), "WWN is already used by another volume");
            v.wwnRe = wre;
            v.wwn = wlo;
        }
        v.creationTime = o.time("created", top.now());
        v.curWhenSynced = o.time("syncedAt");
        v.expirationTime = static_cast<uint32_t>(o.time("expiresAt"));
        v.retentionTime = static_cast<uint32_t>(o.time("retainedUntil"));
        v.readOnly = o.flag("readOnly");
        if (o.flag("inactive"))
        {
            if (v.type != API_VV_TYPE_PHYSICAL_COPY)
                fail(o.at("inactive"), "only physical copies are left inactive");
            v.state |= API_VV_STATE_COPY_INACTIVE;
        }
        v.comment = o.str("comment", "", 511);
        v.busyRemovals = static_cast<int>(o.num("busyRemovals", 0, -1, 1000000));
        v.copyProgress = static_cast<uint8_t>(
            o.num("copyProgress", v.type == API_VV_TYPE_PHYSICAL_COPY ? 100 : 0, 0, 100));
        if (o.has("copy"))
        {
            // A physical copy still being made: a task that has come `progress` percent.
            if (v.type != API_VV_TYPE_PHYSICAL_COPY)
                fail(o.at("copy"), "only physical copies are copied");
            Obj c = o.child("copy");
            const int progress = static_cast<int>(c.num("progress", 0, 0, 99));
            const long duration = static_cast<long>(c.num("durationSeconds", 600, 1, 100000000));
            const int failAt = static_cast<int>(c.num("failAtPercent", -1, -1, 100));
            if (failAt >= 0 && failAt <= progress)
                fail(c.at("failAtPercent"), "must lie beyond progress");
            const std::string user = c.str("user", "admin");
            c.done();
            const time_t start = top.now() - duration * progress / 100;
            const uint32_t tid = tasks.start(API_TASK_PHYSICAL_COPY, v.name, "", user, start, duration);
            tasks.find(tid)->failAtPercent = failAt;
            v.copyProgress = static_cast<uint8_t>(progress);
            v.state |= API_VV_STATE_COPYING;
        }
        o.done();
        m.addVolume(std::move(v));
    });
}

void readSets(Obj& top, ArrayModel& m)
{
    top.each("vvsets", [&](const json& j, const std::string& path) {
        Obj o(j, path, top.now());
        VVSet s;
        s.name = o.name("name");
        if (m.findSet(s.name))
            fail(o.at("name"), "vvset " + q(s.name) + " is described twice");
        s.id = o.u32("id");
        if (s.id != 0 && m.setById(s.id))
            fail(o.at("id"), "id " + std::to_string(s.id) + " is taken by another vvset");
        s.comment = o.str("comment", "", 256);
        s.domain = o.str("domain");
        o.each("members", [&](const json& mj, const std::string& mpath) {
            if (!mj.is_string())
                fail(mpath, "must be a volume name");
            const std::string name = mj.get<std::string>();
            const Volume* v = m.findVolume(name);
            if (!v)
                fail(mpath, "volume " + q(name) + " is not described under volumes");
            if (std::find(s.members.begin(), s.members.end(), name) != s.members.end())
                fail(mpath, "volume " + q(name) + " is a member twice");
            s.members.push_back(name);
        });
        if (o.has("keyValues"))
        {
            const json& kv = o.raw("keyValues");
            if (!kv.is_object())
                fail(o.at("keyValues"), "must be an object of key: value");
            for (auto it = kv.begin(); it != kv.end(); ++it)
            {
                if (!it.value().is_string())
                    fail(o.at("keyValues") + "." + it.key(), "must be a string");
                s.keyValues[it.key()] = it.value().get<std::string>();
            }
        }
        o.done();
        m.addSet(std::move(s));
    });
}

void readPorts(Obj& top, ArrayModel& m)
{
    top.each("ports", [&](const json& j, const std::string& path) {
        Obj o(j, path, top.now());
        Port p;
        api_port_t& r = p.record;
        o.need("protocol");
        r.protocol = static_cast<int>(o.choice("protocol", kProtocols, 0, 1, 3));
        const std::string pos = o.name("position");
        unsigned n = 0, sl = 0, pt = 0;
        char extra = 0;
        if (std::sscanf(pos.c_str(), "%u:%u:%u%c", &n, &sl, &pt, &extra) != 3 || n > 255 || sl > 255 ||
            pt > 255)
            fail(o.at("position"), q(pos) + " is not a position like \"0:1:2\"");
        r.node = static_cast<uint8_t>(n);
        r.slot = static_cast<uint8_t>(sl);
        r.port = static_cast<uint8_t>(pt);
        r.linkUp = o.flag("linkUp", true) ? 1 : 0;
        r.lpid = static_cast<int>(o.num("lpid", 0, 0, 0x7FFFFFFF));
        r.wwn = wwn(o, "wwn").second;
        copyText(r.iscsiName, o.str("iscsiName", "", sizeof r.iscsiName - 1));
        copyText(r.ipAddr, o.str("ip", "", sizeof r.ipAddr - 1));
        o.done();
        m.ports.push_back(p);
    });
}

void readTasks(Obj& top, Tasks& tasks)
{
    top.each("tasks", [&](const json& j, const std::string& path) {
        Obj o(j, path, top.now());
        Task t;
        t.tid = static_cast<uint32_t>(o.num("tid", 0, 1, 0xFFFFFFFFll));
        o.need("tid");
        if (!tasks.state.tasks.empty() && t.tid <= tasks.state.tasks.back().tid)
            fail(o.at("tid"), "task ids must grow down the list");
        o.need("type");
        t.type = static_cast<int>(o.choice("type", kTaskTypes, 0, 1, 3));
        t.state = static_cast<int>(o.choice("state", kTaskStates, API_TASK_ACTIVE, 1, 4));
        t.name = o.name("name");
        t.target = o.str("target");
        t.user = o.str("user");
        t.start = o.time("start", top.now());
        t.durationSeconds = static_cast<long>(o.num("durationSeconds", 1, 1, 100000000));
        t.end = o.time("end");
        if (t.state != API_TASK_ACTIVE && t.end == 0)
            fail(o.at("end"), "a finished task needs its end time");
        t.percentAtEnd = static_cast<int>(o.num("percentAtEnd", t.state == API_TASK_DONE ? 100 : 0, 0, 100));
        t.failAtPercent = static_cast<int>(o.num("failAtPercent", -1, -1, 100));
        t.failPending = o.flag("failPending");
        t.failText = o.str("failText", "", 255);
        t.detail = o.str("detail", "", 255);
        o.done();
        tasks.state.nextTid = std::max(tasks.state.nextTid, t.tid + 1);
        tasks.state.tasks.push_back(std::move(t));
    });
}

// remoteCopy.targets: the far arrays remote copy can reach.
void readRcTargets(Obj& o, RcState& s)
{
    o.each("targets", [&](const json& j, const std::string& path) {
        Obj t(j, path, o.now());
        RcTarget r;
        r.name = t.name("name");
        if (s.findTarget(r.name))
            fail(t.at("name"), "target " + q(r.name) + " is described twice");
        r.id = static_cast<uint16_t>(t.num("id", static_cast<long long>(s.targets.size() + 1), 0, 65535));
        r.status = static_cast<uint8_t>(t.choice("status", kTargetStatus, RM_TARGET_READY));
        r.flags = static_cast<uint8_t>(t.num("flags", 0, 0, 255));
        r.type = static_cast<uint8_t>(t.choice("type", kLinkTypes, 1, 1, 2));
        r.options = t.u32("options");
        r.remoteSysId = t.u32("remoteSystemId");
        r.remoteSysName = t.name("remoteSystemName");
        r.nodeWwn = t.str("nodeWwn", "", 63);
        r.computedWwn = t.str("computedWwn", r.nodeWwn, 63);
        r.policy = t.u32("policy");
        r.syncRateMiBps = static_cast<uint32_t>(t.num("syncRateMiBps", 256, 1, 1000000));
        t.done();
        s.targets.push_back(std::move(r));
    });
}

// remoteCopy.links: the links to the targets.
void readRcLinks(Obj& o, RcState& s)
{
    o.each("links", [&](const json& j, const std::string& path) {
        Obj l(j, path, o.now());
        RcLink r;
        r.name = l.name("name");
        r.id = static_cast<uint16_t>(l.num("id", static_cast<long long>(s.links.size() + 1), 0, 65535));
        r.target = l.name("target");
        if (!s.findTarget(r.target))
            fail(l.at("target"), "target " + q(r.target) + " is not described under remoteCopy.targets");
        r.localPort = l.str("localPort", "", 15);
        r.remoteAddr = l.str("remoteAddress", "", 45);
        r.status = l.flag("up", true) ? 1 : 0;
        r.type = static_cast<uint8_t>(l.choice("type", kLinkTypes, 1, 1, 2));
        l.done();
        s.links.push_back(std::move(r));
    });
}

// One entry of a group's targets. A synchronisation task it names must be
// this group's to this target, and claimed by no other entry.
RcGroupTarget readRcGroupTarget(
    Obj& t, const RcState& s, RcGroup& r, Tasks& tasks, std::set<uint32_t>& claimedTasks)
{
    RcGroupTarget gt;
    gt.target = t.name("target");
    if (!s.findTarget(gt.target))
        fail(t.at("target"), "target " + q(gt.target) + " is not described under remoteCopy.targets");
    if (r.findTarget(gt.target))
        fail(t.at("target"), "target " + q(gt.target) + " is named twice in this group");
    gt.remoteGroup = t.str("remoteGroup", (r.name + ".r").substr(0, API_NAME_LEN - 1));
    gt.mode = static_cast<uint32_t>(t.choice("mode", kModes, RM_TARGET_MODE_PERIODIC, 1, 8));
    if (gt.mode != 1 && gt.mode != 2 && gt.mode != 4 && gt.mode != 8)
        fail(t.at("mode"), "must be one of " + kModes.list());
    gt.syncPeriod = t.u32("period", gt.mode == RM_TARGET_MODE_PERIODIC ? 300 : 0);
    gt.state = static_cast<uint8_t>(t.choice("state", kGtStates, kGtNew));
    gt.options = t.u32("options");
    gt.lastSync = static_cast<uint32_t>(t.time("lastSync"));
    gt.userCpg = t.str("userCpg");
    gt.snapCpg = t.str("snapCpg");
    gt.remoteGroupId = t.u32("remoteGroupId", r.id);
    gt.syncTid = t.u32("syncTask");
    if (gt.syncTid != 0)
    {
        const Task* task = tasks.find(gt.syncTid);
        if (!task || task->type != API_TASK_RCOPY_SYNC || task->name != r.name || task->target != gt.target)
            fail(t.at("syncTask"),
                "task " + std::to_string(gt.syncTid) +
                    " is not a synchronisation of this group to this target");
        if (!claimedTasks.insert(gt.syncTid).second)
            fail(t.at("syncTask"), "task is claimed twice");
    }
    t.done();
    return gt;
}

// One volume of a group, with its map to each of the group's targets; a
// target the entry does not map gets the far volume the array would work
// out.
RcVolume readRcVolume(Obj& vo, ArrayModel& m, const RcState& s, RcGroup& r)
{
    RcVolume v;
    v.name = vo.name("name");
    const Volume* vol = m.findVolume(v.name);
    if (!vol)
        fail(vo.at("name"), "volume " + q(v.name) + " is not described under volumes");
    if (r.findVolume(v.name))
        fail(vo.at("name"), "volume " + q(v.name) + " is in this group twice");
    v.wwn = vol->wwn;
    v.wwnRe = vol->wwnRe;
    if (const RcGroup* other = s.groupOfVolume(v.name))
        fail(vo.at("name"), "volume " + q(v.name) + " is already in remote copy group " + q(other->name));
    if (!r.domain.empty() && vol->domain != r.domain)
        fail(vo.at("name"),
            "volume " + q(v.name) + " is in domain " + q(vol->domain) + ", the group in " + q(r.domain));
    v.maps.resize(r.targets.size());
    std::vector<bool> given(r.targets.size(), false);
    vo.each("maps", [&](const json& mj, const std::string& mpath) {
        Obj mo(mj, mpath, vo.now());
        const std::string target = mo.name("target");
        const int i = r.targetIndex(target);
        if (i < 0)
            fail(mo.at("target"), "target " + q(target) + " is not a target of this group");
        if (given[static_cast<size_t>(i)])
            fail(mo.at("target"), "target " + q(target) + " is mapped twice");
        given[static_cast<size_t>(i)] = true;
        RcMap& map = v.maps[static_cast<size_t>(i)];
        map.absent = mo.flag("absent");
        if (map.absent)
        {
            mo.done();
            return;
        }
        map.remoteName = mo.str("remoteName", v.name);
        map.remoteVid = mo.u32("remoteVid", 0xFFFFFFFEu);
        map.status = static_cast<uint8_t>(mo.choice("status", kMapStatus, RM_GROUP_VV_NEW));
        map.lastSync = static_cast<uint32_t>(mo.time("lastSync"));
        map.syncLength = mo.u64("syncLength", map.status == RM_GROUP_VV_SYNCING ? vol->sizeMiB << 20 : 0);
        map.syncOffset = mo.u64("syncOffset");
        if (map.syncOffset > map.syncLength)
            fail(mo.at("syncOffset"), "lies beyond syncLength");
        auto [re, lo] = wwn(mo, "remoteWwn");
        if (!re && !lo)
        {
            // The far volume's WWN as the array works it out.
            re = (0x60002D1Aull << 32) | s.findTarget(target)->remoteSysId;
            lo = vol->wwn;
        }
        map.remoteWwnRe = re;
        map.remoteWwn = lo;
        // A volume that has been synchronised once has its far volume known.
        const bool known = map.status != RM_GROUP_VV_NEW || map.lastSync != 0;
        map.wwnStatus = static_cast<uint8_t>(
            mo.choice("wwnStatus", kWwnStatus, known ? RM_VV_WWN_VALID : RM_VV_WWN_INVALID, 0, 2));
        mo.done();
    });
    for (size_t i = 0; i < r.targets.size(); ++i)
    {
        RcMap& map = v.maps[i];
        map.target = r.targets[i].target;
        if (given[i])
            continue;
        map.remoteName = v.name;
        map.remoteWwnRe = (0x60002D1Aull << 32) | s.findTarget(map.target)->remoteSysId;
        map.remoteWwn = vol->wwn;
    }
    vo.done();
    return v;
}

// A target whose volumes are syncing without a task of its own gets one, so
// that the clock brings them to synced.
void startMissingSyncTasks(RcGroup& r, const RcState& s, Tasks& tasks, time_t now)
{
    for (size_t i = 0; i < r.targets.size(); ++i)
    {
        RcGroupTarget& gt = r.targets[i];
        if (gt.syncTid != 0 || (gt.state != kGtStarting && gt.state != kGtStarted))
            continue;
        api_u64_t total = 0, done = 0;
        for (const RcVolume& v : r.volumes)
            if (v.maps[i].status == RM_GROUP_VV_SYNCING)
            {
                total += v.maps[i].syncLength;
                done += v.maps[i].syncOffset;
            }
        if (total == 0)
            continue;
        const api_u64_t rate = static_cast<api_u64_t>(s.findTarget(gt.target)->syncRateMiBps) << 20;
        const long duration = static_cast<long>(std::max<api_u64_t>(1, (total + rate - 1) / rate));
        const time_t start = now - static_cast<time_t>(static_cast<long double>(duration) * done / total);
        gt.syncTid = tasks.start(API_TASK_RCOPY_SYNC, r.name, gt.target, "admin", start, duration);
    }
}

// The vvset behind a group: it must hold the group's volumes in their order
// and back no other group.
void bindGroupVVSet(Obj& g, ArrayModel& m, const RcState& s, RcGroup& r)
{
    std::string vvset = g.str("vvset");
    if (!vvset.empty())
    {
        const VVSet* set = m.findSet(vvset);
        if (!set)
            fail(g.at("vvset"), "vvset " + q(vvset) + " is not described under vvsets");
        std::vector<std::string> names;
        for (const RcVolume& v : r.volumes)
            names.push_back(v.name);
        if (set->members != names)
            fail(g.at("vvset"), "vvset " + q(vvset) + " must hold the group's volumes in their order");
        for (const RcGroup& other : s.groups)
            if (other.setId == set->id)
                fail(g.at("vvset"), "vvset " + q(vvset) + " backs another group");
        r.setId = set->id;
    }
}

// One remote copy group with its targets, volumes and vvset.
RcGroup readRcGroup(Obj& g, ArrayModel& m, Tasks& tasks, const RcState& s, std::set<uint32_t>& claimedTasks)
{
    RcGroup r;
    r.name = g.name("name");
    if (s.findGroup(r.name))
        fail(g.at("name"), "remote copy group " + q(r.name) + " is described twice");
    r.id = static_cast<uint16_t>(g.num("id", 0, 0, 65534));
    for (const RcGroup& other : s.groups)
        if (r.id != 0 && other.id == r.id)
            fail(g.at("id"), "id " + std::to_string(r.id) + " is taken by another group");
    r.domain = g.str("domain");
    r.userCpg = g.str("userCpg");
    r.snapCpg = g.str("snapCpg");
    for (const char* key : {"userCpg", "snapCpg"})
    {
        const std::string& cpg = std::strcmp(key, "userCpg") == 0 ? r.userCpg : r.snapCpg;
        if (!cpg.empty() && !m.findCpg(cpg))
            fail(g.at(key), "CPG " + q(cpg) + " is not described under cpgs");
    }
    r.primary = static_cast<uint8_t>(g.choice("role", kRoles, 1, 0, 1));
    r.natural = static_cast<uint8_t>(g.choice("natural", kRoles, r.primary, 0, 1));
    r.drState = static_cast<rm_dr_state_t>(g.choice("drState", kDrStates, RM_DR_NONE, 0, 22));
    r.drStepEnds = g.time("drStepEnds", g.now() + RemoteCopy::kDrStepSeconds);
    r.autoSetId = g.u32("autoSetId");
    r.flags = g.u32("flags");
    for (const RcGroup& other : s.groups)
        if (r.autoSetId != 0 && other.autoSetId == r.autoSetId)
            fail(g.at("autoSetId"), "is taken by another group");
    g.need("targets");
    g.each("targets", [&](const json& tj, const std::string& tpath) {
        Obj t(tj, tpath, g.now());
        r.targets.push_back(readRcGroupTarget(t, s, r, tasks, claimedTasks));
    });
    if (r.targets.empty())
        fail(g.at("targets"), "a group needs at least one target");
    if (r.targets.size() > 4)
        fail(g.at("targets"), "a group has at most 4 targets");
    g.each("volumes", [&](const json& vj, const std::string& vpath) {
        const json wrapped = vj.is_string() ? json::object({{"name", vj}}) : vj;
        Obj vo(wrapped, vpath, g.now());
        r.volumes.push_back(readRcVolume(vo, m, s, r));
    });
    startMissingSyncTasks(r, s, tasks, g.now());
    bindGroupVVSet(g, m, s, r);
    g.done();
    return r;
}

void readRemoteCopy(Obj o, ArrayModel& m, Tasks& tasks, RemoteCopy& rc)
{
    RcState& s = rc.state;
    s.system.mode = static_cast<uint8_t>(o.choice("mode", kSysModes, RM_SYS_MODE_ON));
    s.system.status = static_cast<uint8_t>(o.num("status", 0, 0, 255));
    readRcTargets(o, s);
    readRcLinks(o, s);
    std::set<uint32_t> claimedTasks;
    o.each("groups", [&](const json& j, const std::string& path) {
        Obj g(j, path, o.now());
        rc.addLoadedGroup(m, readRcGroup(g, m, tasks, s, claimedTasks));
    });
    o.done();
}

// ---- writing -----------------------------------------------------------------------------

json writeSystem(const SystemInfo& s)
{
    json limits = {{"maxVolumes", s.maxVolumes}, {"maxBaseVolumes", s.maxBaseVolumes},
        {"maxSnapshotsPerBase", s.maxSnapshotsPerBase}, {"maxRWSnapshots", s.maxRWSnapshots},
        {"maxVVSets", s.maxVVSets}};
    for (int i = 0; i < 7; ++i)
        limits["rcopy"][kLimitNames[i]] = s.rcopyLimits[i];
    return {{"name", s.name}, {"id", s.id}, {"type", s.type}, {"hostName", s.hostName},
        {"contact", s.contact}, {"owner", s.owner}, {"ipv4", s.ipv4}, {"ipv6", s.ipv6},
        {"quadPort", s.isQuadPort != 0}, {"policyFlags", s.policyFlags}, {"nodesTotal", s.nodesTotal},
        {"nodesAlive", s.nodesAlive}, {"limits", limits}};
}

json writeVolume(const ArrayModel& m, const Volume& v)
{
    json o = {{"name", v.name}, {"id", v.id}, {"type", named(kVolumeTypes, v.type)}};
    if (const Volume* parent = v.copyOfId ? m.volumeById(v.copyOfId) : nullptr)
        o["copyOf"] = parent->name;
    o["usrCpg"] = v.usrCpg;
    o["snapCpg"] = v.snapCpg;
    o["domain"] = v.domain;
    o["sizeMiB"] = v.sizeMiB;
    o["usedMiB"] = v.usedMiB;
    o["snapUsedMiB"] = v.snapUsedMiB;
    o["policy"] = bitNames(kPolicies, v.policy);
    o["wwn"] = v.wwnText;
    o["created"] = static_cast<long long>(v.creationTime);
    o["syncedAt"] = static_cast<long long>(v.curWhenSynced);
    o["expiresAt"] = v.expirationTime;
    o["retainedUntil"] = v.retentionTime;
    o["readOnly"] = v.readOnly;
    if (v.state & API_VV_STATE_COPY_INACTIVE)
        o["inactive"] = true;
    o["comment"] = v.comment;
    o["busyRemovals"] = v.busyRemovals;
    o["copyProgress"] = v.copyProgress;
    return o;
}

json writeRemoteCopy(const ArrayModel& m, const RcState& s)
{
    json o = {{"mode", named(kSysModes, s.system.mode)}, {"status", s.system.status}};
    o["targets"] = json::array();
    for (const RcTarget& t : s.targets)
        o["targets"].push_back({{"name", t.name}, {"id", t.id}, {"status", named(kTargetStatus, t.status)},
            {"flags", t.flags}, {"type", named(kLinkTypes, t.type)}, {"options", t.options},
            {"remoteSystemId", t.remoteSysId}, {"remoteSystemName", t.remoteSysName}, {"nodeWwn", t.nodeWwn},
            {"computedWwn", t.computedWwn}, {"policy", t.policy}, {"syncRateMiBps", t.syncRateMiBps}});
    o["links"] = json::array();
    for (const RcLink& l : s.links)
        o["links"].push_back(
            {{"name", l.name}, {"id", l.id}, {"target", l.target}, {"localPort", l.localPort},
                {"remoteAddress", l.remoteAddr}, {"up", l.status != 0}, {"type", named(kLinkTypes, l.type)}});
    o["groups"] = json::array();
    for (const RcGroup& g : s.groups)
    {
        json jg = {{"name", g.name}, {"id", g.id}, {"domain", g.domain}, {"userCpg", g.userCpg},
            {"snapCpg", g.snapCpg}, {"role", named(kRoles, g.primary)}, {"natural", named(kRoles, g.natural)},
            {"drState", named(kDrStates, g.drState)}, {"drStepEnds", static_cast<long long>(g.drStepEnds)},
            {"autoSetId", g.autoSetId}, {"flags", g.flags}};
        if (const VVSet* set = m.setById(g.setId))
            jg["vvset"] = set->name;
        jg["targets"] = json::array();
        for (const RcGroupTarget& gt : g.targets)
        {
            json t = {{"target", gt.target}, {"remoteGroup", gt.remoteGroup},
                {"mode", named(kModes, gt.mode)}, {"period", gt.syncPeriod},
                {"state", named(kGtStates, gt.state)}, {"options", gt.options}, {"lastSync", gt.lastSync},
                {"userCpg", gt.userCpg}, {"snapCpg", gt.snapCpg}, {"remoteGroupId", gt.remoteGroupId}};
            if (gt.syncTid)
                t["syncTask"] = gt.syncTid;
            jg["targets"].push_back(t);
        }
        jg["volumes"] = json::array();
        for (const RcVolume& v : g.volumes)
        {
            json maps = json::array();
            for (const RcMap& mp : v.maps)
            {
                if (mp.absent)
                {
                    maps.push_back({{"target", mp.target}, {"absent", true}});
                    continue;
                }
                json jm = {{"target", mp.target}, {"remoteName", mp.remoteName}, {"remoteVid", mp.remoteVid},
                    {"status", named(kMapStatus, mp.status)}, {"lastSync", mp.lastSync},
                    {"syncOffset", mp.syncOffset}, {"syncLength", mp.syncLength},
                    {"wwnStatus", named(kWwnStatus, mp.wwnStatus)}};
                if (mp.remoteWwn || mp.remoteWwnRe)
                    jm["remoteWwn"] = wwnToText(mp.remoteWwnRe, mp.remoteWwn);
                maps.push_back(jm);
            }
            jg["volumes"].push_back({{"name", v.name}, {"maps", maps}});
        }
        o["groups"].push_back(jg);
    }
    return o;
}

std::string lineAndColumn(const std::string& text, size_t byte)
{
    size_t line = 1, col = 1;
    for (size_t i = 0; i + 1 < byte && i < text.size(); ++i)
    {
        if (text[i] == '\n')
        {
            ++line;
            col = 1;
        }
        else
        {
            ++col;
        }
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(col);
}

}  // namespace

std::string parseDescription(const std::string& text, const std::string& origin, time_t now, LoadedArray& out)
{
    json doc;
    try
    {
        doc = json::parse(text);
    }
    catch (const json::parse_error& e)
    {
        std::string what = e.what();
        const size_t colon = what.rfind(": ");
        return origin + ": " + lineAndColumn(text, e.byte) + ": not valid JSON (" +
            (colon == std::string::npos ? what : what.substr(colon + 2)) + ")";
    }
    Tasks tasks;
    RemoteCopy rc(tasks);
    ArrayModel& m = out.model;
    m.clear();
    try
    {
        Obj top(doc, "", now);
        const std::string format = top.str("format", "zda-array");
        if (format != "zda-array")
            fail("format", q(format) + " is not \"zda-array\"");
        top.num("version", 1, 1, 1);
        if (top.has("system"))
            readSystem(top.child("system"), m.system);
        readRoles(top, m);
        readCpgs(top, m);
        readSettings(top, m);
        readTasks(top, tasks);
        readVolumes(top, m, tasks);
        readSets(top, m);
        readPorts(top, m);
        if (top.has("remoteCopy"))
        {
            readRemoteCopy(top.child("remoteCopy"), m, tasks, rc);
        }
        else
        {
            rc.state.system.mode = RM_SYS_MODE_NONE;
        }
        top.done();
    }
    catch (const DescError& e)
    {
        return origin + ": " + (e.path.empty() ? "top level" : e.path) + ": " + e.what;
    }
    catch (const json::exception& e)
    {
        return origin + ": " + e.what();
    }
    out.rcopy = std::move(rc.state);
    out.tasks = std::move(tasks.state);
    return {};
}

json describeSections(const ArrayModel& m, const RcState& rc, const TaskState& tasks)
{
    json doc = {{"system", writeSystem(m.system)}};
    doc["roles"] = json::array();
    for (const auto& [name, r] : m.roles)
    {
        json rights = json::object();
        for (const auto& [key, answer] : r.rights)
            rights[key] = named(kAnswers, answer);
        doc["roles"].push_back(
            {{"name", name}, {"default", named(kAnswers, r.defaultAnswer)}, {"rights", rights}});
    }
    doc["users"] = json::array();
    for (const auto& [name, u] : m.users)
        doc["users"].push_back({{"name", name}, {"role", u.role}, {"refuseOpen", u.openRefused}});
    doc["cpgs"] = json::array();
    for (const auto& [id, c] : m.cpgs)
        doc["cpgs"].push_back(
            {{"name", c.name}, {"domain", c.domain}, {"totalMiB", c.totalMiB}, {"raid", c.raidType}});
    doc["settings"] = json::array();
    for (const auto& [name, s] : m.settings)
    {
        const api_setting_t& r = s.record;
        json setting = {{"name", name}, {"comment", r.comment}, {"baseId", r.baseId}, {"userCpg", r.userCpg},
            {"snapCpg", r.snapCpg}, {"dataRedundancyGoal", r.dataRedundancyGoal},
            {"packageRedundancyGoal", r.packageRedundancyGoal},
            {"deltaReservationGoal", r.deltaReservationGoal},
            {"noSinglePointOfFailure", r.noSinglePointOfFailure != 0}};
        setting[(r.timesAt & API_SETTING_EXPIRATION_AT) ? "expiresAt" : "expirationSeconds"] =
            r.expirationSeconds;
        setting[(r.timesAt & API_SETTING_RETENTION_AT) ? "retainedUntil" : "retentionSeconds"] =
            r.retentionSeconds;
        doc["settings"].push_back(setting);
    }
    doc["ports"] = json::array();
    for (const Port& p : m.ports)
    {
        const api_port_t& r = p.record;
        char pos[16];
        std::snprintf(pos, sizeof pos, "%u:%u:%u", r.node, r.slot, r.port);
        json jp = {{"protocol", named(kProtocols, r.protocol)}, {"position", pos}, {"linkUp", r.linkUp != 0},
            {"lpid", r.lpid}, {"iscsiName", r.iscsiName}, {"ip", r.ipAddr}};
        if (r.wwn)
            jp["wwn"] = wwnToText(0, r.wwn);
        doc["ports"].push_back(jp);
    }
    doc["tasks"] = json::array();
    for (const Task& t : tasks.tasks)
        doc["tasks"].push_back({{"tid", t.tid}, {"type", named(kTaskTypes, t.type)},
            {"state", named(kTaskStates, t.state)}, {"name", t.name}, {"target", t.target}, {"user", t.user},
            {"start", static_cast<long long>(t.start)}, {"durationSeconds", t.durationSeconds},
            {"end", static_cast<long long>(t.end)}, {"percentAtEnd", t.percentAtEnd},
            {"failAtPercent", t.failAtPercent}, {"failPending", t.failPending}, {"failText", t.failText},
            {"detail", t.detail}});
    doc["remoteCopy"] = writeRemoteCopy(m, rc);
    return doc;
}

json describeVolume(const ArrayModel& m, const Volume& v)
{
    return writeVolume(m, v);
}

json describeSet(const VVSet& s)
{
    return {{"name", s.name}, {"id", s.id}, {"comment", s.comment}, {"domain", s.domain},
        {"members", s.members}, {"keyValues", s.keyValues}};
}

std::string assembleDescription(const DescriptionPieces& pieces)
{
    json doc = {{"format", "zda-array"}, {"version", 1}};
    auto section = [&](const char* key) {
        auto it = pieces.sections.find(key);
        if (it != pieces.sections.end())
            doc[key] = *it;
    };
    for (const char* key : {"system", "roles", "users", "cpgs", "settings"})
        section(key);
    // Parents before their copies, as a reader needs them.
    std::map<std::string, const json*> byName;
    for (const auto& [id, v] : pieces.volumes)
        byName[v.value("name", "")] = &v;
    doc["volumes"] = json::array();
    std::set<std::string> placed;
    for (const auto& [id, v] : pieces.volumes)
    {
        std::vector<const json*> chain;
        for (const json* p = &v; p && !placed.count(p->value("name", ""));)
        {
            chain.push_back(p);
            placed.insert(p->value("name", ""));
            auto parent = p->contains("copyOf") ? byName.find((*p)["copyOf"].get<std::string>())
                                                : byName.end();
            p = parent == byName.end() ? nullptr : parent->second;
        }
        for (auto it = chain.rbegin(); it != chain.rend(); ++it)
            doc["volumes"].push_back(**it);
    }
    doc["vvsets"] = json::array();
    for (const auto& [id, s] : pieces.sets)
        doc["vvsets"].push_back(s);
    for (const char* key : {"ports", "tasks", "remoteCopy"})
        section(key);
    return doc.dump(1) + "\n";
}

std::string describeArray(const ArrayModel& m, const RcState& rc, const TaskState& tasks)
{
    DescriptionPieces pieces;
    pieces.sections = describeSections(m, rc, tasks);
    for (const auto& [id, v] : m.volumes())
        pieces.volumes.emplace(id, describeVolume(m, v));
    for (const auto& [id, s] : m.sets())
        pieces.sets.emplace(id, describeSet(s));
    return assembleDescription(pieces);
}

void installArray(Runtime& rt, LoadedArray&& loaded)
{
    const std::vector<ModelPart*> parts = rt.model.parts();
    rt.model = std::move(loaded.model);
    for (ModelPart* p : parts)
        rt.model.addPart(p);
    rt.tasks.state = std::move(loaded.tasks);
    rt.rcopy.state = std::move(loaded.rcopy);
}

std::string loadDemoArray(Runtime& rt)
{
    LoadedArray loaded;
    std::string error = parseDescription(demoDescription(), "demo array", rt.clock.now(), loaded);
    if (error.empty())
        installArray(rt, std::move(loaded));
    return error;
}

}  // namespace zdasim
