// The array's state: system identity, users and rights, CPGs, volumes,
// vvsets, ports and the event log, plus the parts kept in files of their
// own (remote copy, tasks) through ModelPart.
//
// One instance lives in the Runtime and is only touched under the
// runtime's model mutex; nothing here locks.
#pragma once

#include <cstdint>
#include <ctime>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "zdaapi.h"

namespace zdasim
{

struct SystemInfo
{
    std::string name = "zda-sim";
    uint32_t id = 1300001;
    int type = 7400;
    std::string hostName = "zda-sim.local";
    std::string contact;
    std::string owner;
    std::string ipv4;  // dotted text, "" for none
    std::string ipv6;  // text, "" for none
    uint8_t isQuadPort = 0;
    uint32_t policyFlags = 0;  // API_POLICY_* bits
    int nodesTotal = 2;
    int nodesAlive = 2;
    // Volume limits.
    uint32_t maxVolumes = 16384;
    uint32_t maxBaseVolumes = 8192;
    uint32_t maxSnapshotsPerBase = 2048;
    uint32_t maxRWSnapshots = 256;
    uint32_t maxVVSets = 8192;
    // Remote copy limits, indexed by api_mvar_t.
    uint32_t rcopyLimits[7] = {800, 2400, 32, 800, 6000, 512, 300};

    // High 64 bits of every WWN of this array (volumes add a serial).
    api_u64_t wwnPrefix() const { return (0x60002D1Aull << 32) | id; }
};

struct Role
{
    std::string name;
    int defaultAnswer = API_AUTH_DENIED;
    std::map<std::string, int> rights;  // exact key -> API_AUTH_* answer
};

struct User
{
    std::string name;
    std::string role;
    bool openRefused = false;
};

struct Cpg
{
    uint32_t id = 0;
    std::string name;
    std::string domain;
    api_u64_t totalMiB = 0;
    int raidType = 3;
};

// A storage setting: the record as callers read and write it.
struct Setting
{
    api_setting_t record{};
};

struct Volume
{
    uint32_t id = 0;
    std::string name;
    int type = API_VV_TYPE_BASE;
    uint32_t policy = 0;
    uint32_t baseId = 0;
    uint32_t copyOfId = 0;
    uint32_t state = API_VV_STATE_NORMAL;
    api_u64_t sizeMiB = 0;
    api_u64_t usedMiB = 0;
    api_u64_t snapUsedMiB = 0;
    api_u64_t wwn = 0;
    api_u64_t wwnRe = 0;
    std::string wwnText;  // upper-case, as api_wwnIntToString writes it
    time_t creationTime = 0;
    time_t curWhenSynced = 0;
    uint32_t expirationTime = 0;
    uint32_t retentionTime = 0;
    bool readOnly = false;
    uint8_t copyProgress = 0;
    std::string usrCpg;
    std::string snapCpg;  // "" when the volume has no snapshot space
    std::string domain;
    std::string comment;
    int busyRemovals = 0;  // removal attempts still answered busy; -1 always
};

struct VVSet
{
    uint32_t id = 0;
    std::string name;
    std::string comment;
    std::string domain;
    std::vector<std::string> members;  // volume names, in order
    std::map<std::string, std::string> keyValues;
};

struct Port
{
    api_port_t record{};
};

struct EventRecord
{
    time_t when = 0;
    std::string call;
    api_evtparam_t event{};
    int result = 0;
};

class ArrayModel;

// What changed in the model since the changes were last taken, so that the
// state file writes only those objects. Volumes and vvsets are noted by id
// whenever they are handed out for change, added or removed (an id no longer
// in the model was removed); `whole` means everything may have changed.
struct ModelChanges
{
    bool whole = false;
    std::set<uint32_t> volumes;
    std::set<uint32_t> sets;
};

// A part of the model kept in its own files. The model calls every part
// under the model mutex.
class ModelPart
{
public:
    virtual ~ModelPart() = default;
    // The array was emptied.
    virtual void clear() = 0;
    // The clock moved forward to `now` (called before every call); a part
    // may update the local objects it drives (e.g. a finished copy).
    virtual void advanceTo(ArrayModel& model, time_t now)
    {
        (void)model;
        (void)now;
    }
    // A call that changes the array has finished (whatever its result).
    virtual void changed(ArrayModel& model, time_t now)
    {
        (void)model;
        (void)now;
    }
    // Why `volume` cannot be removed or changed because this part uses it,
    // or "" when it is free.
    virtual std::string volumeUse(const Volume& volume) const
    {
        (void)volume;
        return {};
    }
    // Why `set` cannot be removed because this part uses it, or "".
    virtual std::string setUse(const VVSet& set) const
    {
        (void)set;
        return {};
    }
};

class ArrayModel
{
public:
    SystemInfo system;
    std::map<std::string, Role> roles;
    std::map<std::string, User> users;
    std::map<uint32_t, Cpg> cpgs;
    std::vector<Port> ports;
    std::map<std::string, Setting> settings;  // by name
    std::deque<EventRecord> events;
    static constexpr size_t kMaxEvents = 10000;

    // Empties everything (system identity back to defaults) and every part.
    void clear();

    // The changes noted since the last call, which forgets them.
    ModelChanges takeChanges() { return std::exchange(changes_, ModelChanges{}); }

    // The answer (API_AUTH_*) of `user`'s role for the rights key `key`.
    int authorize(const char* user, const char* key) const;

    // ---- CPGs
    const Cpg* findCpg(const std::string& name) const;
    Cpg& addCpg(Cpg cpg);  // assigns the id

    // ---- volumes; the maps are ordered by id, the indexes by name and WWN text.
    const std::map<uint32_t, Volume>& volumes() const { return volumes_; }
    Volume* findVolume(const std::string& name);
    const Volume* findVolume(const std::string& name) const;
    const Volume* findVolumeByWwn(const std::string& wwnText) const;  // any case
    const Volume* volumeById(uint32_t id) const;
    bool volumeIdFree(uint32_t id) const { return volumes_.count(id) == 0; }
    // Adds a volume: assigns the id (when 0) and the WWN; returns it.
    Volume& addVolume(Volume v);
    // Removes the volume and its vvset memberships.
    void removeVolume(uint32_t id);
    // Makes the volume `id` a copy of `parentId` of `type`, or with
    // parentId 0 a base volume of its own; keeps its vvset memberships.
    void relinkVolume(uint32_t id, uint32_t parentId, int type);
    // Ids of the volumes whose parent is `id` (copies made of it).
    const std::vector<uint32_t>& childrenOf(uint32_t id) const;

    // ---- vvsets
    const std::map<uint32_t, VVSet>& sets() const { return sets_; }
    VVSet* findSet(const std::string& name);
    const VVSet* findSet(const std::string& name) const;
    const VVSet* setById(uint32_t id) const;
    VVSet& addSet(VVSet set);  // assigns the id
    void removeSet(uint32_t id);
    void renameSet(uint32_t id, const std::string& newName);

    // ---- events
    void recordEvent(time_t when, const char* call, const api_evtparam_t* event, int result);

    // ---- parts kept in other files (remote copy, tasks)
    void addPart(ModelPart* part) { parts_.push_back(part); }
    const std::vector<ModelPart*>& parts() const { return parts_; }
    // Why a part keeps the volume from being removed, or "".
    std::string volumeUse(const Volume& v) const;
    std::string setUse(const VVSet& s) const;
    void advanceTo(time_t now);
    void noteChanged(time_t now);

private:
    std::map<uint32_t, Volume> volumes_;
    std::unordered_map<std::string, uint32_t> volumeByName_;
    std::unordered_map<std::string, uint32_t> volumeByWwn_;
    std::unordered_map<uint32_t, std::vector<uint32_t>> children_;
    std::map<uint32_t, VVSet> sets_;
    std::unordered_map<std::string, uint32_t> setByName_;
    uint32_t nextVolumeId_ = 1;
    uint32_t nextSetId_ = 1;
    uint32_t nextCpgId_ = 0;
    api_u64_t nextWwnSerial_ = 1;
    std::vector<ModelPart*> parts_;  // not owned; they live in the Runtime
    ModelChanges changes_;
};

// Upper-case WWN text of (wwnRe, wwn), as api_wwnIntToString writes it.
std::string wwnToText(api_u64_t wwnRe, api_u64_t wwn);
std::string upperCase(std::string s);

}  // namespace zdasim
