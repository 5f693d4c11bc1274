// CPGs, volume queries and filters, removal, WWN texts, group snapshots.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <functional>
#include <set>
#include <unordered_set>

#include "call.h"

using namespace zdasim;

namespace
{

constexpr const char* kVVList = "vv_list";
constexpr const char* kFilter = "vv_filter";
constexpr int kDefaultChunk = 256;

void fillVV(const ArrayModel& m, const Volume& v, api_VVObj_t* out)
{
    std::memset(out, 0, sizeof *out);
    out->id = v.id;
    out->type = v.type;
    out->policy = v.policy;
    out->baseId = v.baseId;
    out->copyOfId = v.copyOfId;
    out->state = v.state;
    out->sizeMiB = v.sizeMiB;
    out->usedMiB = v.usedMiB;
    out->snapUsedMiB = v.snapUsedMiB;
    out->wwn = v.wwn;
    out->wwn_re = v.wwnRe;
    out->creationTime = v.creationTime;
    out->curWhenSynced = v.curWhenSynced;
    out->expirationTime = v.expirationTime;
    out->retentionTime = v.retentionTime;
    out->readOnly = v.readOnly ? 1 : 0;
    out->copyProgress = v.copyProgress;
    uint32_t snaps = 0;
    for (uint32_t child : m.childrenOf(v.id))
    {
        const Volume* c = m.volumeById(child);
        if (c && c->type == API_VV_TYPE_VIRTUAL_COPY)
            ++snaps;
    }
    out->snapCount = snaps;
    copyText(out->wwnText, v.wwnText);
    copyText(out->name, v.name);
    copyText(out->usrCpgName, v.usrCpg);
    copyText(out->cpgName, v.snapCpg);
    copyText(out->domain, v.domain);
    if (const Volume* b = m.volumeById(v.baseId))
        copyText(out->baseName, b->name);
    if (const Volume* p = m.volumeById(v.copyOfId))
        copyText(out->copyOfName, p->name);
    copyText(out->comment, v.comment);
}

// Hands the volumes to the caller as one contiguous list.
int handOut(ApiCall& call, const std::vector<const Volume*>& vols, int* count, api_VVObj_t** list)
{
    if (vols.empty())
        return API_OK;
    auto* out = static_cast<api_VVObj_t*>(call.ledger().allocate(vols.size() * sizeof(api_VVObj_t), kVVList));
    if (!out)
        return API_E_NOMEM;
    for (size_t i = 0; i < vols.size(); ++i)
        fillVV(call.model(), *vols[i], &out[i]);
    *count = static_cast<int>(vols.size());
    *list = out;
    return API_OK;
}

std::vector<std::string> splitValues(const char* values)
{
    std::vector<std::string> out;
    const char* p = values;
    while (*p)
    {
        const char* bar = std::strchr(p, '|');
        size_t n = bar ? static_cast<size_t>(bar - p) : std::strlen(p);
        if (n)
            out.emplace_back(p, n);
        p += n;
        if (*p == '|')
            ++p;
    }
    return out;
}

// A filter read once: the values of each attribute, for exact look-ups.
struct ParsedFilter
{
    int firstAttribute = 0;
    std::vector<std::string> firstValues;  // in order, for the candidates
    bool hasNames = false, hasWwns = false;
    std::unordered_set<std::string> names, wwns;  // WWNs upper-case

    explicit ParsedFilter(const _api_getvv_filter_t& f)
    {
        for (int i = 0; i < f.count; ++i)
        {
            const auto& e = f.entries[i];
            if (i == 0)
                firstAttribute = e.attribute;
            for (std::string& value : splitValues(e.values))
            {
                if (e.attribute == firstAttribute)
                    firstValues.push_back(value);
                if (e.attribute == API_VVFILTER_ATTR_NAME)
                {
                    hasNames = true;
                    names.insert(std::move(value));
                }
                else if (e.attribute == API_VVFILTER_ATTR_WWN)
                {
                    hasWwns = true;
                    wwns.insert(upperCase(std::move(value)));
                }
            }
            hasNames = hasNames || e.attribute == API_VVFILTER_ATTR_NAME;
            hasWwns = hasWwns || e.attribute == API_VVFILTER_ATTR_WWN;
        }
    }

    // Any value of each attribute that has entries.
    bool matches(const Volume& v) const
    {
        return (!hasNames || names.count(v.name)) && (!hasWwns || wwns.count(v.wwnText));
    }
};

std::string joinNames(const api_name_t* names, int count)
{
    std::string out;
    for (int i = 0; names && i < count; ++i)
    {
        if (i)
            out += '|';
        out += fieldName(names[i].name, sizeof names[i].name);
    }
    return out;
}

}  // namespace

extern "C"
{

    int api_getCPGs(int* count, api_cpg_t** cpgs)
    try
    {
        ApiCall call("api_getCPGs", Sem::Needed);
        if (!count || !cpgs)
            return call.done(API_E_INVALID);
        *count = 0;
        *cpgs = nullptr;
        if (call.fault())
            return call.done(call.fault()->code);
        const ArrayModel& m = call.model();
        if (m.cpgs.empty())
            return call.done(API_OK);
        auto* out = static_cast<api_cpg_t*>(
            call.ledger().allocate(m.cpgs.size() * sizeof(api_cpg_t), "cpg_list"));
        if (!out)
            return call.done(API_E_NOMEM);
        size_t i = 0;
        for (const auto& [id, cpg] : m.cpgs)
        {
            api_cpg_t& c = out[i++];
            c.id = cpg.id;
            copyText(c.name, cpg.name);
            copyText(c.domain, cpg.domain);
            c.totalMiB = cpg.totalMiB;
            c.raidType = cpg.raidType;
            for (const auto& [vid, v] : m.volumes())
            {
                if (v.usrCpg == cpg.name)
                {
                    c.usedMiB += v.usedMiB;
                    ++c.volumeCount;
                }
                if (v.snapCpg == cpg.name)
                    c.usedMiB += v.snapUsedMiB;
            }
        }
        *count = static_cast<int>(i);
        *cpgs = out;
        return call.done(API_OK);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getCPGs").code;
    }

    int api_getVVs(const char* name, const char* wwn, int* count, api_VVObj_t** vv, int max)
    try
    {
        ApiCall call("api_getVVs", Sem::Needed);
        call.arg("name", name).arg("wwn", wwn).arg("max", max);
        if (!count || !vv)
            return call.done(API_E_INVALID);
        *count = 0;
        *vv = nullptr;
        if (call.fault())
            return call.done(call.fault()->code);
        const ArrayModel& m = call.model();
        const bool byName = name && *name;
        const bool byWwn = wwn && *wwn;
        std::vector<const Volume*> found;
        if (byName || byWwn)
        {
            const Volume* v = byName ? m.findVolume(name) : m.findVolumeByWwn(wwn);
            if (v && byName && byWwn && upperCase(wwn) != v->wwnText)
                v = nullptr;
            if (!v)
                return call.done(API_E_NOT_FOUND);
            found.push_back(v);
        }
        else
        {
            for (const auto& [id, v] : m.volumes())
            {
                if (max > 0 && found.size() >= static_cast<size_t>(max))
                    break;
                found.push_back(&v);
            }
        }
        int rc = handOut(call, found, count, vv);
        call.arg("count", *count);
        return call.done(rc);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getVVs").code;
    }

    int api_getvv_filter_init(_api_getvv_filter_t* filter, int n)
    try
    {
        ApiCall call("api_getvv_filter_init", Sem::NotNeeded);
        call.arg("n", n);
        if (!filter)
            return call.done(API_E_INVALID);
        std::memset(filter, 0, sizeof *filter);
        if (call.fault())
            return call.done(call.fault()->code);
        if (n < 1)
            return call.done(API_E_INVALID);
        filter->entries = static_cast<api_getvv_filter_entry_t*>(
            call.ledger().allocate(static_cast<size_t>(n) * sizeof(api_getvv_filter_entry_t), kFilter));
        if (!filter->entries)
            return call.done(API_E_NOMEM);
        filter->capacity = n;
        return call.done(API_OK);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getvv_filter_init").code;
    }

    int api_getvv_filter_add(_api_getvv_filter_t* filter, int attribute, int op, const char* values)
    try
    {
        ApiCall call("api_getvv_filter_add", Sem::NotNeeded);
        call.arg("attribute", attribute).arg("op", op).arg("values", values);
        if (call.fault())
            return call.done(call.fault()->code);
        if (!filter || !filter->entries || !values || filter->count >= filter->capacity ||
            (attribute != API_VVFILTER_ATTR_NAME && attribute != API_VVFILTER_ATTR_WWN) ||
            op != API_VVFILTER_OP_ANY || std::strlen(values) > API_VVFILTER_MAX_VALUES)
            return call.done(API_E_INVALID);
        api_getvv_filter_entry_t& e = filter->entries[filter->count++];
        e.attribute = attribute;
        e.op = op;
        copyText(e.values, values);
        return call.done(API_OK);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getvv_filter_add").code;
    }

    void api_getvv_filter_free(_api_getvv_filter_t* filter)
    try
    {
        if (!filter)
            return;
        Runtime& rt = runtime();
        rt.ledger.release(filter->entries, kFilter);
        std::memset(filter, 0, sizeof *filter);
        rt.journal.add("api_getvv_filter_free");
    }
    catch (...)
    {
        caughtAtBoundary("api_getvv_filter_free");
    }

    int api_getVVs_chunk(api_getvv_cursor_t* cursor, int maxCount, const _api_getvv_filter_t* filter,
        int* count, api_VVObj_t** list, int flags)
    try
    {
        ApiCall call("api_getVVs_chunk", Sem::Needed);
        call.arg("max", maxCount).arg("flags", flags);
        for (int i = 0; filter && filter->entries && i < filter->count; ++i)
            call.arg(filter->entries[i].attribute == API_VVFILTER_ATTR_NAME ? "names" : "wwns",
                filter->entries[i].values);
        if (!cursor || !count || !list)
            return call.done(API_E_INVALID);
        *count = 0;
        *list = nullptr;
        if (call.fault())
            return call.done(call.fault()->code);
        if (filter && filter->count > 0 && !filter->entries)
            return call.done(API_E_INVALID);
        if (cursor->done)
            return call.done(API_OK);
        const ArrayModel& m = call.model();
        const size_t limit = (flags & API_GETVV_ALL)
            ? SIZE_MAX
            : static_cast<size_t>(maxCount > 0 ? maxCount : kDefaultChunk);
        const bool filtered = filter && filter->count > 0;

        std::vector<const Volume*> found;
        if (filtered)
        {
            // The values of the first attribute name the candidates exactly, in
            // their order; entries of the other attribute then narrow them down.
            const ParsedFilter parsed(*filter);
            std::unordered_set<uint32_t> seen;
            std::vector<const Volume*> candidates;
            for (const std::string& value : parsed.firstValues)
            {
                const Volume* v = parsed.firstAttribute == API_VVFILTER_ATTR_NAME ? m.findVolume(value)
                                                                                  : m.findVolumeByWwn(value);
                if (v && seen.insert(v->id).second)
                    candidates.push_back(v);
            }
            size_t pos = cursor->nextId;
            for (; pos < candidates.size() && found.size() < limit; ++pos)
                if (parsed.matches(*candidates[pos]))
                    found.push_back(candidates[pos]);
            cursor->nextId = static_cast<uint32_t>(pos);
            cursor->done = pos >= candidates.size() ? 1 : 0;
        }
        else
        {
            auto it = m.volumes().lower_bound(cursor->nextId);
            for (; it != m.volumes().end() && found.size() < limit; ++it)
                found.push_back(&it->second);
            cursor->done = it == m.volumes().end() ? 1 : 0;
            cursor->nextId = it == m.volumes().end() ? 0 : it->first;
        }
        int rc = handOut(call, found, count, list);
        call.arg("count", *count);
        return call.done(rc);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getVVs_chunk").code;
    }

    int api_removeVVs(_api_evtparam_t* event, api_name_t* names, int count, int noWait, int flags)
    try
    {
        ApiCall call("api_removeVVs", Sem::Needed, Changing{event});
        call.arg("names", joinNames(names, count))
            .arg("count", count)
            .arg("noWait", noWait)
            .arg("flags", flags);
        if (call.fault())
            return call.done(call.fault()->code);
        if (!names || count <= 0)
            return call.done(API_E_INVALID);
        ArrayModel& m = call.model();

        std::vector<Volume*> targets;
        std::unordered_set<uint32_t> listed;
        int firstFailure = 0;
        int failures = 0;
        auto fail = [&](int code, const std::string& text) {
            ++failures;
            if (!firstFailure)
                firstFailure = code;
            log_message(LOG_LEVEL_TRACE, "api_removeVVs: %s", text.c_str());
        };
        for (int i = 0; i < count; ++i)
        {
            const std::string name = fieldName(names[i].name, sizeof names[i].name);
            Volume* v = m.findVolume(name);
            if (!v)
            {
                fail(API_E_NOT_FOUND, "VV " + name + " does not exist");
            }
            else if (listed.insert(v->id).second)
            {
                targets.push_back(v);
            }
        }

        // A busy volume holds up the whole removal, so that a retry finds the
        // same list; each attempt uses up one busy answer.
        bool busy = false;
        for (Volume* v : targets)
        {
            if (v->busyRemovals == 0)
                continue;
            busy = true;
            if (v->busyRemovals > 0)
                --v->busyRemovals;
        }
        if (busy)
            return call.done(API_E_BUSY);

        // What goes: the listed volumes and, with API_REMOVEVV_WITH_COPIES,
        // their copies; a volume with copies that stay cannot go.
        std::vector<uint32_t> order;  // copies before their parents
        std::unordered_set<uint32_t> removing;
        std::function<void(uint32_t)> collect = [&](uint32_t id) {
            for (uint32_t child : m.childrenOf(id))
                collect(child);
            if (removing.insert(id).second)
                order.push_back(id);
        };
        for (Volume* v : targets)
        {
            if (v->policy & VV_POLICY_SYSTEM)
            {
                fail(API_E_ACCESS, "VV " + v->name + " is a system volume");
                continue;
            }
            std::string use = m.volumeUse(*v);
            if (!use.empty())
            {
                fail(API_E_IN_USE, "VV " + v->name + " " + use);
                continue;
            }
            if (flags & API_REMOVEVV_WITH_COPIES)
            {
                collect(v->id);
            }
            else if (removing.insert(v->id).second)
            {
                order.push_back(v->id);
            }
        }
        // Without the flag, a listed parent whose copies are not all listed stays.
        std::vector<uint32_t> removable;
        for (uint32_t id : order)
        {
            bool blocked = false;
            std::vector<uint32_t> pending(m.childrenOf(id));
            while (!pending.empty() && !blocked)
            {
                uint32_t c = pending.back();
                pending.pop_back();
                if (!removing.count(c))
                    blocked = true;
                for (uint32_t g : m.childrenOf(c))
                    pending.push_back(g);
            }
            if (blocked)
            {
                const Volume* v = m.volumeById(id);
                fail(API_E_IN_USE,
                    "VV " + (v ? v->name : std::to_string(id)) + " has copies that are not removed");
                removing.erase(id);
            }
            else
            {
                removable.push_back(id);
            }
        }
        // Children first: sort so that a copy precedes its parent.
        std::sort(removable.begin(), removable.end(), [&](uint32_t a, uint32_t b) {
            auto depth = [&](uint32_t id) {
                int d = 0;
                for (const Volume* v = m.volumeById(id); v && v->copyOfId && v->copyOfId != v->id;
                     v = m.volumeById(v->copyOfId))
                    ++d;
                return d;
            };
            return depth(a) > depth(b);
        });
        for (uint32_t id : removable)
            m.removeVolume(id);

        if (failures == 0)
            return call.done(API_OK);
        if (removable.empty())
            return call.done(firstFailure);
        return call.done(API_E_PARTIAL_REMOVE);
    }
    catch (...)
    {
        return caughtAtBoundary("api_removeVVs").code;
    }

    int api_wwnIntToString(api_u64_t wwn_re, api_u64_t wwn, char* buffer, int size)
    try
    {
        const std::string text = wwnToText(wwn_re, wwn);
        if (!buffer || size <= static_cast<int>(text.size()))
        {
            if (buffer && size > 0)
                buffer[0] = '\0';
            return API_E_INVALID;
        }
        copyText(buffer, static_cast<size_t>(size), text);
        return API_OK;
    }
    catch (...)
    {
        return caughtAtBoundary("api_wwnIntToString").code;
    }

    int api_wwnStringToInt(const char* text, api_u64_t* wwn_re, api_u64_t* wwn)
    try
    {
        api_u64_t hi = 0, lo = 0;
        const size_t n = text ? std::strlen(text) : 0;
        bool ok = n == 16 || n == 32;
        for (size_t i = 0; ok && i < n; ++i)
        {
            const unsigned char c = static_cast<unsigned char>(text[i]);
            if (!std::isxdigit(c))
            {
                ok = false;
                break;
            }
            const unsigned digit = std::isdigit(c) ? c - '0' : std::toupper(c) - 'A' + 10;
            api_u64_t& part = (n == 32 && i < 16) ? hi : lo;
            part = (part << 4) | digit;
        }
        if (!ok)
            hi = lo = 0;
        if (wwn_re)
            *wwn_re = hi;
        if (wwn)
            *wwn = lo;
        return ok ? API_OK : API_E_INVALID;
    }
    catch (...)
    {
        return caughtAtBoundary("api_wwnStringToInt").code;
    }

    api_Status_t api_createGroupSV(_api_evtparam_t* event, api_groupsv_t* groupsv)
    try
    {
        ApiCall call("api_createGroupSV", Sem::Needed, Changing{event});
        if (groupsv)
        {
            std::string pairs;
            for (uint32_t i = 0; groupsv->svs && i < groupsv->count; ++i)
            {
                if (i)
                    pairs += '|';
                pairs += fieldName(groupsv->svs[i].parentVolName, API_NAME_LEN) + ">" +
                    fieldName(groupsv->svs[i].childVolName, API_NAME_LEN);
            }
            call.arg("baseID", groupsv->baseID)
                .arg("expiration", groupsv->expirationTime)
                .arg("retention", groupsv->retentionTime)
                .arg("comment", fieldName(groupsv->comment, sizeof groupsv->comment))
                .arg("count", groupsv->count)
                .arg("svs", pairs);
        }
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        if (!groupsv || groupsv->count == 0 || !groupsv->svs)
            return call.done(statusError(API_E_INVALID, "No snapshots requested"));
        ArrayModel& m = call.model();
        const uint32_t n = groupsv->count;
        if (groupsv->retentionTime && groupsv->expirationTime &&
            groupsv->retentionTime > groupsv->expirationTime)
            return call.done(
                statusError(API_E_INVALID, "Retention time %u s is longer than expiration time %u s",
                    groupsv->retentionTime, groupsv->expirationTime));
        if (m.volumes().size() + n > m.system.maxVolumes)
            return call.done(statusError(API_E_LIMIT,
                "Cannot create %u snapshots: the system holds at most %u volumes", n, m.system.maxVolumes));

        std::vector<const Volume*> parents(n);
        std::set<std::string> childNames;
        std::map<uint32_t, uint32_t> newSnapsPerBase;
        for (uint32_t i = 0; i < n; ++i)
        {
            const api_groupsv_entry_t& e = groupsv->svs[i];
            const std::string parent = fieldName(e.parentVolName, sizeof e.parentVolName);
            const std::string child = fieldName(e.childVolName, sizeof e.childVolName);
            const std::string bad = nameProblem(child);
            if (!bad.empty())
                return call.done(
                    statusError(API_E_INVALID, "Snapshot name of %s %s", parent.c_str(), bad.c_str()));
            const Volume* p = m.findVolume(parent);
            if (!p)
                return call.done(statusError(API_E_NOT_FOUND, "VV %s does not exist", parent.c_str()));
            if (p->snapCpg.empty())
                return call.done(statusError(API_E_INVALID, "VV %s has no snapshot space", parent.c_str()));
            if (m.findVolume(child) || !childNames.insert(child).second)
                return call.done(statusError(API_E_EXISTS, "VV %s already exists", child.c_str()));
            parents[i] = p;
            ++newSnapsPerBase[p->baseId];
        }
        for (const auto& [baseId, added] : newSnapsPerBase)
        {
            uint32_t existing = 0;
            for (const auto& [id, v] : m.volumes())
                if (v.baseId == baseId && v.type == API_VV_TYPE_VIRTUAL_COPY)
                    ++existing;
            if (existing + added > m.system.maxSnapshotsPerBase)
            {
                const Volume* b = m.volumeById(baseId);
                return call.done(statusError(API_E_LIMIT, "VV %s would have more than %u snapshots",
                    b ? b->name.c_str() : "?", m.system.maxSnapshotsPerBase));
            }
        }
        if (groupsv->baseID != API_BASEID_ANY)
        {
            for (uint32_t i = 0; i < n; ++i)
                if (groupsv->baseID + i == 0 || !m.volumeIdFree(groupsv->baseID + i))
                    return call.done(
                        statusError(API_E_EXISTS, "Volume id %u is in use", groupsv->baseID + i));
        }

        const std::string comment = fieldName(groupsv->comment, sizeof groupsv->comment);
        const time_t now = call.now();
        for (uint32_t i = 0; i < n; ++i)
        {
            api_groupsv_entry_t& e = groupsv->svs[i];
            const Volume& p = *parents[i];
            Volume snap;
            snap.id = groupsv->baseID != API_BASEID_ANY ? groupsv->baseID + i : 0;
            snap.name = fieldName(e.childVolName, sizeof e.childVolName);
            snap.type = API_VV_TYPE_VIRTUAL_COPY;
            snap.policy = p.policy & ~VV_POLICY_SYSTEM;
            snap.baseId = p.baseId;
            snap.copyOfId = p.id;
            snap.sizeMiB = p.sizeMiB;
            snap.usrCpg = p.usrCpg;
            snap.snapCpg = p.snapCpg;
            snap.domain = p.domain;
            snap.creationTime = now;
            snap.readOnly = e.readOnly != 0;
            snap.expirationTime = groupsv->expirationTime
                ? static_cast<uint32_t>(now + groupsv->expirationTime)
                : 0;
            snap.retentionTime = groupsv->retentionTime ? static_cast<uint32_t>(now + groupsv->retentionTime)
                                                        : 0;
            snap.comment = comment;
            copyText(e.parentVolWWN, p.wwnText);
            const Volume& made = m.addVolume(std::move(snap));
            copyText(e.childVolWWN, made.wwnText);
        }
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_createGroupSV");
    }

}  // extern "C"
