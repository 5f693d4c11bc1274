// VVsets, key-value option sets and key-value queries.
#include <algorithm>
#include <cstring>
#include <unordered_set>

#include "call.h"

using namespace zdasim;

namespace
{

constexpr const char* kSets = "sets";
constexpr const char* kOkv = "okv";
constexpr const char* kKvQuery = "kv_query";
constexpr size_t kMaxComment = 256;

bool meets(const VVSet& set, const api_okv_opts_t* conditions)
{
    if (!conditions || !conditions->entries)
        return true;
    for (int i = 0; i < conditions->count; ++i)
    {
        const api_okv_entry_t& e = conditions->entries[i];
        if (e.op != API_OKV_IF)
            continue;
        auto it = set.keyValues.find(e.key);
        if (it == set.keyValues.end() || it->second != e.value)
            return false;
    }
    return true;
}

std::string conditionText(const api_okv_opts_t* conditions)
{
    std::string out;
    for (int i = 0; conditions && conditions->entries && i < conditions->count; ++i)
    {
        if (!out.empty())
            out += ',';
        out += conditions->entries[i].key;
        out += conditions->entries[i].op == API_OKV_IF ? "==" : "=";
        out += conditions->entries[i].value;
    }
    return out;
}

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

// Grows an array handed out under `kind` to hold one more element.
template <class T>
bool growByOne(Ledger& ledger, T*& items, int count, int& capacity, const char* kind)
{
    if (count < capacity)
        return true;
    const int next = capacity ? capacity * 2 : 4;
    auto* grown = static_cast<T*>(ledger.allocate(static_cast<size_t>(next) * sizeof(T), kind));
    if (!grown)
        return false;
    if (items)
        std::memcpy(grown, items, static_cast<size_t>(count) * sizeof(T));
    ledger.release(items, kind);
    items = grown;
    capacity = next;
    return true;
}

int addOkv(const char* function, int op, api_okv_opts_t* opts, const char* key, const char* value)
{
    ApiCall call(function, Sem::NotNeeded);
    call.arg("key", key).arg("value", value);
    if (call.fault())
        return call.done(call.fault()->code);
    if (!opts || !key || !*key || std::strlen(key) >= API_OKV_KEY_LEN ||
        (value && std::strlen(value) >= API_OKV_VALUE_LEN) || opts->count < 0)
        return call.done(API_E_INVALID);
    if (!growByOne(call.ledger(), opts->entries, opts->count, opts->capacity, kOkv))
        return call.done(API_E_NOMEM);
    api_okv_entry_t& e = opts->entries[opts->count++];
    std::memset(&e, 0, sizeof e);
    e.op = op;
    copyText(e.key, key);
    copyText(e.value, str(value));
    return call.done(API_OK);
}

// Checks a member list against the model; fills `vols` or gives a failure.
api_Status_t resolveMembers(
    const ArrayModel& m, api_name_t* names, int count, std::vector<const Volume*>& vols)
{
    if (count < 0 || (count > 0 && !names))
        return statusError(API_E_INVALID, "Invalid member list (count %d)", count);
    std::unordered_set<std::string> seen;
    for (int i = 0; i < count; ++i)
    {
        const std::string name = fieldName(names[i].name, sizeof names[i].name);
        const Volume* v = m.findVolume(name);
        if (!v)
            return statusError(API_E_NOT_FOUND, "VV %s does not exist", name.c_str());
        if (!seen.insert(name).second)
            return statusError(API_E_INVALID, "VV %s is listed twice", name.c_str());
        vols.push_back(v);
    }
    return statusOk();
}

// The domain shared by `vols` and `domain` ("" matches a set without
// members only), or a failure.
api_Status_t commonDomain(const std::vector<const Volume*>& vols, std::string& domain, bool setHasMembers,
    const std::string& setName)
{
    bool fixed = setHasMembers;
    for (const Volume* v : vols)
    {
        if (!fixed)
        {
            domain = v->domain;
            fixed = true;
        }
        else if (v->domain != domain)
        {
            return statusError(API_E_INVALID, "VV %s is in domain \"%s\", VV set %s is in domain \"%s\"",
                v->name.c_str(), v->domain.c_str(), setName.c_str(), domain.c_str());
        }
    }
    return statusOk();
}

// A set that another object owns (the volumes of a remote copy group) is
// changed only through its owner: removing it or changing its members is
// refused as in use.
api_Status_t refuseSetInUse(const ArrayModel& m, const VVSet& set)
{
    const std::string use = m.setUse(set);
    if (use.empty())
        return statusOk();
    return statusError(API_E_IN_USE, "VV set %s %s", set.name.c_str(), use.c_str());
}

}  // namespace

extern "C"
{

    int api_okv_addSetKV(api_okv_opts_t* opts, const char* key, const char* value)
    try
    {
        return addOkv("api_okv_addSetKV", API_OKV_SET, opts, key, value);
    }
    catch (...)
    {
        return caughtAtBoundary("api_okv_addSetKV").code;
    }

    int api_okv_addIfKV(api_okv_opts_t* opts, const char* key, const char* value)
    try
    {
        return addOkv("api_okv_addIfKV", API_OKV_IF, opts, key, value);
    }
    catch (...)
    {
        return caughtAtBoundary("api_okv_addIfKV").code;
    }

    void api_free_okv_opts(api_okv_opts_t* opts)
    try
    {
        if (!opts)
            return;
        Runtime& rt = runtime();
        rt.ledger.release(opts->entries, kOkv);
        std::memset(opts, 0, sizeof *opts);
        rt.journal.add("api_free_okv_opts");
    }
    catch (...)
    {
        caughtAtBoundary("api_free_okv_opts");
    }

    api_Status_t api_getVVSets(
        const char* name, const api_okv_opts_t* conditions, int flags, api_sets_t* list)
    try
    {
        ApiCall call("api_getVVSets", Sem::Needed);
        call.arg("name", name).arg("if", conditionText(conditions)).arg("flags", flags);
        if (!list)
            return call.done(statusError(API_E_INVALID, "No list to fill"));
        std::memset(list, 0, sizeof *list);
        list->type = API_SET_TYPE_VV;
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        const ArrayModel& m = call.model();

        std::vector<const VVSet*> found;
        if (name)
        {
            const VVSet* s = m.findSet(name);
            if (!s)
                return call.done(statusError(API_E_NOT_FOUND, "VV set %s does not exist", name));
            if (meets(*s, conditions))
                found.push_back(s);
        }
        else
        {
            found.reserve(m.sets().size());
            for (const auto& [id, s] : m.sets())
                if (meets(s, conditions))
                    found.push_back(&s);
        }
        call.arg("count", static_cast<long long>(found.size()));
        if (found.empty())
            return call.done(statusOk());

        // One block: the set records, then every member name.
        size_t memberTotal = 0;
        for (const VVSet* s : found)
            memberTotal += s->members.size();
        const size_t setBytes = found.size() * sizeof(api_set_t);
        auto* block = static_cast<char*>(
            call.ledger().allocate(setBytes + memberTotal * sizeof(api_name_t), kSets));
        if (!block)
            return call.done(statusError(API_E_NOMEM, "Out of memory listing %zu VV sets", found.size()));
        auto* sets = reinterpret_cast<api_set_t*>(block);
        auto* names = reinterpret_cast<api_name_t*>(block + setBytes);
        for (size_t i = 0; i < found.size(); ++i)
        {
            const VVSet& s = *found[i];
            api_set_t& out = sets[i];
            out.type = API_SET_TYPE_VV;
            out.id = s.id;
            copyText(out.name, s.name);
            copyText(out.comment, s.comment);
            copyText(out.domain, s.domain);
            out.memberCount = static_cast<int>(s.members.size());
            out.members = s.members.empty() ? nullptr : names;
            for (const std::string& member : s.members)
                copyText((names++)->name, member);
        }
        list->count = static_cast<uint32_t>(found.size());
        list->sets = sets;
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_getVVSets");
    }

    void api_freeSets(api_sets_t* list)
    try
    {
        if (!list)
            return;
        Runtime& rt = runtime();
        rt.ledger.release(list->sets, kSets);
        std::memset(list, 0, sizeof *list);
        rt.journal.add("api_freeSets");
    }
    catch (...)
    {
        caughtAtBoundary("api_freeSets");
    }

    api_Status_t api_createVVSet(_api_evtparam_t* event, const char* name, api_name_t* vvNames, int count,
        int flags, const char* comment, const api_okv_opts_t* okv)
    try
    {
        ApiCall call("api_createVVSet", Sem::Needed, Changing{event});
        call.arg("name", name)
            .arg("members", joinNames(vvNames, count))
            .arg("count", count)
            .arg("flags", flags)
            .arg("comment", comment)
            .arg("kv", conditionText(okv));
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        ArrayModel& m = call.model();
        const std::string bad = nameProblem(str(name));
        if (!bad.empty())
            return call.done(
                statusError(API_E_INVALID, "VV set name \"%s\" %s", str(name).c_str(), bad.c_str()));
        if (m.findSet(name))
            return call.done(statusError(API_E_EXISTS, "VV set %s already exists", name));
        if (comment && std::strlen(comment) > kMaxComment)
            return call.done(statusError(
                API_E_INVALID, "Comment of VV set %s is longer than %zu characters", name, kMaxComment));
        if (m.sets().size() >= m.system.maxVVSets)
            return call.done(statusError(API_E_LIMIT,
                "Cannot create VV set %s: the system holds at most %u VV sets", name, m.system.maxVVSets));
        std::vector<const Volume*> vols;
        api_Status_t st = resolveMembers(m, vvNames, count, vols);
        if (st.code)
            return call.done(st);
        VVSet set;
        st = commonDomain(vols, set.domain, false, name);
        if (st.code)
            return call.done(st);
        set.name = name;
        set.comment = str(comment);
        for (const Volume* v : vols)
            set.members.push_back(v->name);
        for (int i = 0; okv && okv->entries && i < okv->count; ++i)
            if (okv->entries[i].op == API_OKV_SET)
                set.keyValues[okv->entries[i].key] = okv->entries[i].value;
        const VVSet& made = m.addSet(std::move(set));
        call.arg("id", made.id);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_createVVSet");
    }

    api_Status_t api_setVVSet(_api_evtparam_t* event, const char* setName, const char* newName,
        const char* comment, int renameFlag, int commentFlag)
    try
    {
        ApiCall call("api_setVVSet", Sem::Needed, Changing{event});
        call.arg("name", setName)
            .arg("newName", renameFlag == 1 ? newName : nullptr)
            .arg("comment", commentFlag == 1 ? comment : nullptr)
            .arg("renameFlag", renameFlag)
            .arg("commentFlag", commentFlag);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        ArrayModel& m = call.model();
        VVSet* set = setName ? m.findSet(setName) : nullptr;
        if (!set)
            return call.done(
                statusError(API_E_NOT_FOUND, "VV set %s does not exist", setName ? setName : "(null)"));
        const bool rename = renameFlag == 1;
        const bool recomment = commentFlag == 1;
        if (rename)
        {
            const std::string bad = nameProblem(str(newName));
            if (!bad.empty())
                return call.done(statusError(API_E_INVALID, "New name \"%s\" of VV set %s %s",
                    str(newName).c_str(), setName, bad.c_str()));
            if (std::strcmp(newName, setName) != 0 && m.findSet(newName))
                return call.done(statusError(
                    API_E_EXISTS, "Cannot rename VV set %s: VV set %s already exists", setName, newName));
        }
        if (recomment && comment && std::strlen(comment) > kMaxComment)
            return call.done(statusError(
                API_E_INVALID, "Comment of VV set %s is longer than %zu characters", setName, kMaxComment));
        if (recomment)
            set->comment = str(comment);
        if (rename)
            m.renameSet(set->id, newName);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_setVVSet");
    }

    api_Status_t api_removeVVSet(_api_evtparam_t* event, const char* setName)
    try
    {
        ApiCall call("api_removeVVSet", Sem::Needed, Changing{event});
        call.arg("name", setName);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        ArrayModel& m = call.model();
        const VVSet* set = setName ? m.findSet(setName) : nullptr;
        if (!set)
            return call.done(
                statusError(API_E_NOT_FOUND, "VV set %s does not exist", setName ? setName : "(null)"));
        api_Status_t used = refuseSetInUse(m, *set);
        if (used.code)
            return call.done(used);
        m.removeSet(set->id);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_removeVVSet");
    }

    api_Status_t api_addToVVSet(_api_evtparam_t* event, const char* setName, api_name_t* names, int count)
    try
    {
        ApiCall call("api_addToVVSet", Sem::Needed, Changing{event});
        call.arg("name", setName).arg("members", joinNames(names, count)).arg("count", count);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        ArrayModel& m = call.model();
        VVSet* set = setName ? m.findSet(setName) : nullptr;
        if (!set)
            return call.done(
                statusError(API_E_NOT_FOUND, "VV set %s does not exist", setName ? setName : "(null)"));
        api_Status_t used = refuseSetInUse(m, *set);
        if (used.code)
            return call.done(used);
        if (count <= 0)
            return call.done(statusError(API_E_INVALID, "No volumes to add to VV set %s", setName));
        std::vector<const Volume*> vols;
        api_Status_t st = resolveMembers(m, names, count, vols);
        if (st.code)
            return call.done(st);
        for (const Volume* v : vols)
            for (const std::string& member : set->members)
                if (member == v->name)
                    return call.done(statusError(
                        API_E_EXISTS, "VV %s is already a member of VV set %s", v->name.c_str(), setName));
        std::string domain = set->domain;
        st = commonDomain(vols, domain, !set->members.empty(), setName);
        if (st.code)
            return call.done(st);
        set->domain = domain;
        for (const Volume* v : vols)
            set->members.push_back(v->name);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_addToVVSet");
    }

    api_Status_t api_removeFromVVSet(
        _api_evtparam_t* event, const char* setName, api_name_t* names, int count)
    try
    {
        ApiCall call("api_removeFromVVSet", Sem::Needed, Changing{event});
        call.arg("name", setName).arg("members", joinNames(names, count)).arg("count", count);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        ArrayModel& m = call.model();
        VVSet* set = setName ? m.findSet(setName) : nullptr;
        if (!set)
            return call.done(
                statusError(API_E_NOT_FOUND, "VV set %s does not exist", setName ? setName : "(null)"));
        api_Status_t used = refuseSetInUse(m, *set);
        if (used.code)
            return call.done(used);
        if (count <= 0 || !names)
            return call.done(statusError(API_E_INVALID, "No volumes to remove from VV set %s", setName));
        std::vector<std::string> keep = set->members;
        for (int i = 0; i < count; ++i)
        {
            const std::string name = fieldName(names[i].name, sizeof names[i].name);
            auto it = std::find(keep.begin(), keep.end(), name);
            if (it == keep.end())
                return call.done(statusError(
                    API_E_NOT_FOUND, "VV %s is not a member of VV set %s", name.c_str(), setName));
            keep.erase(it);
        }
        set->members = std::move(keep);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_removeFromVVSet");
    }

    api_Status_t api_addKeyValueOpt(api_keyvalue_query_t* query, const char* key)
    try
    {
        ApiCall call("api_addKeyValueOpt", Sem::Needed);
        call.arg("key", key);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        if (!query || !key || !*key || std::strlen(key) >= API_OKV_KEY_LEN || query->keyCount < 0)
            return call.done(
                statusError(API_E_INVALID, "Invalid key-value query key \"%s\"", key ? key : ""));
        int capacity = query->keyCount;  // the query grows one key at a time
        if (!growByOne(call.ledger(), query->keys, query->keyCount, capacity, kKvQuery))
            return call.done(statusError(API_E_NOMEM, "Out of memory adding key %s", key));
        api_kv_result_t& r = query->keys[query->keyCount++];
        std::memset(&r, 0, sizeof r);
        copyText(r.key, key);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_addKeyValueOpt");
    }

    api_Status_t api_getKeyValues(api_keyvalue_query_t* query)
    try
    {
        ApiCall call("api_getKeyValues", Sem::Needed);
        if (query)
            call.arg("type", query->objType).arg("id", query->objId);
        if (!query)
            return call.done(statusError(API_E_INVALID, "No key-value query"));
        query->found = 0;
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        if (query->objType != API_KV_OBJ_VVSET)
            return call.done(
                statusError(API_E_INVALID, "Key-values of object type %d are not kept", query->objType));
        const VVSet* set = call.model().setById(query->objId);
        if (!set)
            return call.done(statusError(API_E_NOT_FOUND, "VV set with id %u does not exist", query->objId));
        for (int i = 0; query->keys && i < query->keyCount; ++i)
        {
            api_kv_result_t& r = query->keys[i];
            auto it = set->keyValues.find(fieldName(r.key, sizeof r.key));
            r.present = it != set->keyValues.end() ? 1 : 0;
            copyText(r.value, r.present ? it->second : std::string());
            query->found += r.present;
        }
        call.arg("found", query->found);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_getKeyValues");
    }

    void api_freeKeyValueOpt(api_keyvalue_query_t* query)
    try
    {
        if (!query)
            return;
        Runtime& rt = runtime();
        rt.ledger.release(query->keys, kKvQuery);
        query->keys = nullptr;
        query->keyCount = 0;
        query->found = 0;
        rt.journal.add("api_freeKeyValueOpt");
    }
    catch (...)
    {
        caughtAtBoundary("api_freeKeyValueOpt");
    }

}  // extern "C"
