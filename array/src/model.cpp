#include "model.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace zdasim
{

std::string upperCase(std::string s)
{
    for (char& c : s)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

std::string wwnToText(api_u64_t wwnRe, api_u64_t wwn)
{
    char buf[API_WWN_TEXT_LEN];
    if (wwnRe == 0)
        std::snprintf(buf, sizeof buf, "%016llX", wwn);
    else
        std::snprintf(buf, sizeof buf, "%016llX%016llX", wwnRe, wwn);
    return buf;
}

void ArrayModel::clear()
{
    system = SystemInfo{};
    roles.clear();
    users.clear();
    cpgs.clear();
    ports.clear();
    settings.clear();
    events.clear();
    volumes_.clear();
    volumeByName_.clear();
    volumeByWwn_.clear();
    children_.clear();
    sets_.clear();
    setByName_.clear();
    nextVolumeId_ = 1;
    nextSetId_ = 1;
    nextCpgId_ = 0;
    nextWwnSerial_ = 1;
    changes_ = ModelChanges{};
    changes_.whole = true;
    for (ModelPart* p : parts_)
        p->clear();
}

const Cpg* ArrayModel::findCpg(const std::string& name) const
{
    for (const auto& [id, cpg] : cpgs)
        if (cpg.name == name)
            return &cpg;
    return nullptr;
}

Cpg& ArrayModel::addCpg(Cpg cpg)
{
    cpg.id = nextCpgId_++;
    return cpgs[cpg.id] = std::move(cpg);
}

Volume* ArrayModel::findVolume(const std::string& name)
{
    auto it = volumeByName_.find(name);
    if (it == volumeByName_.end())
        return nullptr;
    changes_.volumes.insert(it->second);
    return &volumes_.at(it->second);
}

const Volume* ArrayModel::findVolume(const std::string& name) const
{
    auto it = volumeByName_.find(name);
    return it == volumeByName_.end() ? nullptr : &volumes_.at(it->second);
}

const Volume* ArrayModel::findVolumeByWwn(const std::string& wwnText) const
{
    auto it = volumeByWwn_.find(upperCase(wwnText));
    return it == volumeByWwn_.end() ? nullptr : &volumes_.at(it->second);
}

const Volume* ArrayModel::volumeById(uint32_t id) const
{
    auto it = volumes_.find(id);
    return it == volumes_.end() ? nullptr : &it->second;
}

Volume& ArrayModel::addVolume(Volume v)
{
    if (v.id == 0)
    {
        while (volumes_.count(nextVolumeId_))
            ++nextVolumeId_;
        v.id = nextVolumeId_++;
    }
    if (v.type == API_VV_TYPE_BASE)
        v.baseId = v.id;
    constexpr api_u64_t kSerialMask = 0xFFFFFFFFFFFFull;
    if (v.wwn == 0 && v.wwnRe == 0)
    {
        v.wwnRe = system.wwnPrefix();
        v.wwn = (0x2000ull << 48) | nextWwnSerial_++;
    }
    else if (v.wwnRe == system.wwnPrefix() && (v.wwn & kSerialMask) >= nextWwnSerial_)
    {
        // A volume loaded with a WWN of this array: new WWNs must not repeat it.
        nextWwnSerial_ = (v.wwn & kSerialMask) + 1;
    }
    v.wwnText = wwnToText(v.wwnRe, v.wwn);
    volumeByName_[v.name] = v.id;
    volumeByWwn_[v.wwnText] = v.id;
    if (v.copyOfId != 0 && v.copyOfId != v.id)
        children_[v.copyOfId].push_back(v.id);
    changes_.volumes.insert(v.id);
    return volumes_[v.id] = std::move(v);
}

void ArrayModel::removeVolume(uint32_t id)
{
    auto it = volumes_.find(id);
    if (it == volumes_.end())
        return;
    const std::string name = it->second.name;
    volumeByName_.erase(name);
    volumeByWwn_.erase(it->second.wwnText);
    if (it->second.copyOfId != 0)
    {
        auto c = children_.find(it->second.copyOfId);
        if (c != children_.end())
        {
            c->second.erase(std::remove(c->second.begin(), c->second.end(), id), c->second.end());
            if (c->second.empty())
                children_.erase(c);
        }
    }
    volumes_.erase(it);
    children_.erase(id);
    changes_.volumes.insert(id);
    for (auto& [sid, set] : sets_)
    {
        auto& m = set.members;
        auto gone = std::remove(m.begin(), m.end(), name);
        if (gone == m.end())
            continue;
        m.erase(gone, m.end());
        changes_.sets.insert(sid);
    }
}

void ArrayModel::relinkVolume(uint32_t id, uint32_t parentId, int type)
{
    auto it = volumes_.find(id);
    if (it == volumes_.end())
        return;
    Volume& v = it->second;
    changes_.volumes.insert(id);
    if (v.copyOfId != 0)
    {
        auto c = children_.find(v.copyOfId);
        if (c != children_.end())
        {
            c->second.erase(std::remove(c->second.begin(), c->second.end(), id), c->second.end());
            if (c->second.empty())
                children_.erase(c);
        }
    }
    v.type = type;
    v.copyOfId = parentId;
    const Volume* parent = parentId ? volumeById(parentId) : nullptr;
    v.baseId = parent ? parent->baseId : v.id;
    if (parentId != 0)
        children_[parentId].push_back(id);
}

const std::vector<uint32_t>& ArrayModel::childrenOf(uint32_t id) const
{
    static const std::vector<uint32_t> none;
    auto it = children_.find(id);
    return it == children_.end() ? none : it->second;
}

VVSet* ArrayModel::findSet(const std::string& name)
{
    auto it = setByName_.find(name);
    if (it == setByName_.end())
        return nullptr;
    changes_.sets.insert(it->second);
    return &sets_.at(it->second);
}

const VVSet* ArrayModel::findSet(const std::string& name) const
{
    auto it = setByName_.find(name);
    return it == setByName_.end() ? nullptr : &sets_.at(it->second);
}

const VVSet* ArrayModel::setById(uint32_t id) const
{
    auto it = sets_.find(id);
    return it == sets_.end() ? nullptr : &it->second;
}

VVSet& ArrayModel::addSet(VVSet set)
{
    if (set.id == 0)
    {
        while (sets_.count(nextSetId_))
            ++nextSetId_;
        set.id = nextSetId_++;
    }
    setByName_[set.name] = set.id;
    changes_.sets.insert(set.id);
    return sets_[set.id] = std::move(set);
}

void ArrayModel::removeSet(uint32_t id)
{
    auto it = sets_.find(id);
    if (it == sets_.end())
        return;
    setByName_.erase(it->second.name);
    sets_.erase(it);
    changes_.sets.insert(id);
}

void ArrayModel::renameSet(uint32_t id, const std::string& newName)
{
    auto it = sets_.find(id);
    if (it == sets_.end())
        return;
    setByName_.erase(it->second.name);
    changes_.sets.insert(id);
    it->second.name = newName;
    setByName_[newName] = id;
}

void ArrayModel::recordEvent(time_t when, const char* call, const api_evtparam_t* event, int result)
{
    EventRecord rec;
    rec.when = when;
    rec.call = call;
    if (event)
        rec.event = *event;
    rec.result = result;
    events.push_back(std::move(rec));
    while (events.size() > kMaxEvents)
        events.pop_front();
}

std::string ArrayModel::volumeUse(const Volume& v) const
{
    for (const ModelPart* p : parts_)
    {
        std::string why = p->volumeUse(v);
        if (!why.empty())
            return why;
    }
    return {};
}

std::string ArrayModel::setUse(const VVSet& s) const
{
    for (const ModelPart* p : parts_)
    {
        std::string why = p->setUse(s);
        if (!why.empty())
            return why;
    }
    return {};
}

void ArrayModel::advanceTo(time_t now)
{
    for (ModelPart* p : parts_)
        p->advanceTo(*this, now);
}

int ArrayModel::authorize(const char* user, const char* key) const
{
    auto u = user ? users.find(user) : users.end();
    if (u == users.end())
        return API_AUTH_UNKNOWN_USER;
    auto r = roles.find(u->second.role);
    if (r == roles.end())
        return API_AUTH_DENIED;
    if (!key)
        return API_AUTH_UNSUPPORTED;
    auto right = r->second.rights.find(key);
    return right == r->second.rights.end() ? r->second.defaultAnswer : right->second;
}

void ArrayModel::noteChanged(time_t now)
{
    for (ModelPart* p : parts_)
        p->changed(*this, now);
}

}  // namespace zdasim
