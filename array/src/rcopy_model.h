// The array's remote copy: the system configuration, targets, links and
// groups with their per-target state and per-volume maps, and the life
// cycle the remote copy calls drive (create, admit, start, stop, sync,
// set, dismiss, delete). Synchronisations run as tasks (task_model.h);
// the clock moves volumes from syncing to synced, periodic groups to their
// next sync, and disaster-recovery steps to their end.
//
// A group keeps its volumes in a vvset of the model (its automatic set),
// whose members follow admissions and dismissals.
//
// Lives in the Runtime and is only touched under the model mutex.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "model.h"
#include "task_model.h"

namespace zdasim
{

// rm_group_target.rm_state: what a group does on one target.
enum GroupTargetState : uint8_t
{
    kGtNew = 0,       // created, never started
    kGtStarting = 1,  // started, first synchronisation still running
    kGtStarted = 2,   // started
    kGtStopped = 4,   // stopped (by a call, a failover or a failed target)
    kGtFailsafe = 5,  // stopped by the array to protect the data
};

struct RcSystem
{
    uint8_t mode = RM_SYS_MODE_NONE;  // RM_SYS_MODE_* bits
    uint8_t status = 0;               // RM_SYS_INVALID and other bits
};

struct RcTarget
{
    uint16_t id = 0;
    std::string name;
    uint8_t status = RM_TARGET_READY;
    uint8_t flags = 0;
    uint8_t type = 1;  // 1 IP, 2 FC
    uint32_t options = 0;
    uint32_t remoteSysId = 0;
    std::string remoteSysName;
    std::string nodeWwn;  // "" when only the computed WWN is known
    std::string computedWwn;
    uint32_t policy = 0;
    uint32_t syncRateMiBps = 256;  // how fast synchronisations to it run
};

struct RcLink
{
    uint16_t id = 0;
    std::string name;
    std::string target;
    std::string localPort;  // "n:s:p"
    std::string remoteAddr;
    uint8_t status = 1;  // 1 up, 0 down
    uint8_t type = 1;    // 1 IP, 2 FC
};

// A volume's state on one target of its group. `status` is kept in the
// primary's terms (RM_GROUP_VV_NEW .. _UNSYNC, _STALE, _STOPPED, ...);
// a group on the secondary side shows the remote variants.
struct RcMap
{
    std::string target;
    std::string remoteName;
    uint32_t remoteVid = 0xFFFFFFFEu;
    uint32_t lastSync = 0;
    uint8_t status = RM_GROUP_VV_NEW;
    api_u64_t syncOffset = 0;
    api_u64_t syncLength = 0;
    api_u64_t remoteWwn = 0;
    api_u64_t remoteWwnRe = 0;
    uint8_t wwnStatus = RM_VV_WWN_INVALID;
    // The volume has no map for this target: the snapshot leaves its slot
    // zeroed (no target name) and no synchronisation touches it.
    bool absent = false;
};

struct RcVolume
{
    std::string name;
    api_u64_t wwn = 0;        // the local volume's WWN, which never changes while
    api_u64_t wwnRe = 0;      // the volume is in a group (it cannot be removed)
    std::vector<RcMap> maps;  // one per target of the group, in its order
};

struct RcGroupTarget
{
    std::string target;
    std::string remoteGroup;
    uint32_t mode = RM_TARGET_MODE_PERIODIC;
    uint32_t syncPeriod = 0;  // seconds; 0 no periodic sync
    uint8_t state = kGtNew;
    uint32_t options = 0;
    uint32_t lastSync = 0;
    std::string userCpg;  // on the remote system
    std::string snapCpg;
    uint32_t remoteGroupId = 0;
    uint32_t syncTid = 0;  // the running synchronisation, 0 none
};

// RcGroup::flags: a reversal under way started from a failover.
constexpr uint32_t kReverseFromFailover = 0x1u;

struct RcGroup
{
    uint16_t id = 0;
    std::string name;
    std::string domain;
    std::string userCpg;  // local CPGs of the group's volumes
    std::string snapCpg;
    uint8_t primary = 1;  // the group is the source now
    uint8_t natural = 1;  // the group is the source in its natural direction
    rm_dr_state_t drState = RM_DR_NONE;
    time_t drStepEnds = 0;  // when the running disaster-recovery step ends
    uint32_t autoSetId = 0;
    uint32_t setId = 0;  // the vvset that holds the group's volumes
    uint32_t flags = 0;
    std::vector<RcGroupTarget> targets;
    std::vector<RcVolume> volumes;

    RcGroupTarget* findTarget(const std::string& target);
    int targetIndex(const std::string& target) const;  // -1 when not a target
    RcVolume* findVolume(const std::string& volume);
};

// Everything the remote copy part keeps; copied whole by array descriptions.
struct RcState
{
    RcSystem system;
    std::vector<RcTarget> targets;
    std::vector<RcLink> links;
    std::vector<RcGroup> groups;  // in creation order
    uint16_t nextGroupId = 1;
    uint32_t nextAutoSetId = 5001;

    const RcTarget* findTarget(const std::string& name) const;
    RcTarget* findTarget(const std::string& name);
    RcGroup* findGroup(const std::string& name);
    const RcGroup* findGroup(const std::string& name) const;
    const RcGroup* groupOfVolume(const std::string& volume) const;
};

// The outcome of a remote copy operation: code 0 or an API_E_* code with a
// text naming the object and the reason; `tasks` the synchronisations started.
struct RcResult
{
    int code = API_OK;
    std::string text;
    std::vector<uint32_t> tasks;

    static RcResult fail(int code, std::string text) { return RcResult{code, std::move(text), {}}; }
    bool ok() const { return code == API_OK; }
};

class RemoteCopy : public ModelPart
{
public:
    // How long disaster-recovery steps without data to move take.
    static constexpr long kDrStepSeconds = 5;
    // The share of a volume a resynchronisation after a stop moves.
    static constexpr int kDeltaDivisor = 16;

    explicit RemoteCopy(Tasks& tasks) : tasks_(&tasks) {}

    RcState state;

    void clear() override { state = RcState{}; }
    void advanceTo(ArrayModel& model, time_t now) override;
    std::string volumeUse(const Volume& volume) const override;
    std::string setUse(const VVSet& set) const override;

    // The calls. `user` is the caller's user for the tasks started.
    RcResult create(ArrayModel& m, const api_rcopy_group_t& req, time_t now);
    RcResult admit(ArrayModel& m, const api_rcopy_vv_t& req, time_t now);
    RcResult start(ArrayModel& m, const std::string& group, int flags, const std::string& user, time_t now);
    RcResult stop(ArrayModel& m, const std::string& group, time_t now);
    RcResult sync(ArrayModel& m, const std::string& group, int flags, const std::string& user, time_t now);
    RcResult set(ArrayModel& m, const std::string& group, const std::string& target, int selector, int value,
        const std::string& user, time_t now);
    RcResult dismiss(ArrayModel& m, const std::string& group, const std::string& volume, time_t now);
    RcResult remove(ArrayModel& m, const std::string& group, time_t now);
    // The vvset id behind a group's automatic set id; 0 for none.
    uint32_t externalSetId(uint32_t autoSetId) const;

    // Adds a group as a description gives it: makes its automatic vvset
    // when it has none, marks its volumes. The caller checked the names.
    void addLoadedGroup(ArrayModel& m, RcGroup g);

private:
    Tasks* tasks_;

    // Starts a synchronisation of every volume of `g` on target `gt` that
    // is not synced (full, or a delta after a stop); returns the task id,
    // or 0 when there is nothing to move.
    uint32_t startSync(const ArrayModel& m, RcGroup& g, size_t gtIndex, bool resyncSynced,
        const std::string& user, time_t now);
    // Stops `g` on target `gtIndex`: its synchronisation ends as `taskEnd`.
    void stopTarget(RcGroup& g, size_t gtIndex, time_t now, int taskEnd, const std::string& why);
    void advanceGroup(RcGroup& g, time_t now);
    std::string makeAutoSetName(const ArrayModel& m, const std::string& group) const;
};

// The status a map shows for a group on the primary or secondary side.
uint8_t shownMapStatus(uint8_t status, bool primary);

}  // namespace zdasim
