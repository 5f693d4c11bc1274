// Background tasks of the array: physical copies, restores of copies and
// remote copy synchronisations. A task runs from its start time for a fixed duration;
// its progress is the share of that duration the clock has passed. A task
// may be told to fail, which it does at the next step of the clock.
//
// Lives in the Runtime and is only touched under the model mutex.
#pragma once

#include <cstdint>
#include <ctime>
#include <deque>
#include <string>

#include "model.h"

namespace zdasim
{

struct Task
{
    uint32_t tid = 0;
    int type = API_TASK_PHYSICAL_COPY;
    int state = API_TASK_ACTIVE;
    std::string name;    // the volume (physical copy), parent (restore) or group (sync)
    std::string target;  // the copy a restore reads, the remote copy target of a sync
    std::string user;
    time_t start = 0;
    long durationSeconds = 1;  // time from start to 100%
    time_t end = 0;            // 0 while active
    int percentAtEnd = 0;      // progress when the task ended
    // A task told to fail ends at the next step with `failText`; a task
    // with failAtPercent >= 0 fails by itself when it reaches that share.
    bool failPending = false;
    int failAtPercent = -1;
    std::string failText;
    std::string detail;  // why it failed or was cancelled; "" otherwise

    // Progress in percent at `now` (0..100).
    int percentAt(time_t now) const;
};

// The tasks the array remembers, oldest first.
struct TaskState
{
    std::deque<Task> tasks;
    uint32_t nextTid = 1001;
};

class Tasks : public ModelPart
{
public:
    static constexpr size_t kMaxFinished = 1000;  // finished tasks kept

    TaskState state;

    void clear() override { state = TaskState{}; }
    // Ends the tasks whose time has come; physical copies write their
    // progress into their volume.
    void advanceTo(ArrayModel& model, time_t now) override;

    // A volume a running copy writes, or a restore reads or writes, cannot
    // be removed or changed.
    std::string volumeUse(const Volume& volume) const override;

    // Starts a task and returns its id.
    uint32_t start(int type, const std::string& name, const std::string& target, const std::string& user,
        time_t now, long durationSeconds);
    Task* find(uint32_t tid);
    const Task* find(uint32_t tid) const;
    // Ends an active task now as API_TASK_CANCELLED or API_TASK_FAILED with
    // `why`; no-op for a task that is not active.
    void end(uint32_t tid, time_t now, int endState, const std::string& why);
    // Ends an active task now as API_TASK_CANCELLED with `why`, leaving its
    // volumes as a task that ended there would (a physical copy keeps what
    // was written); no-op for a task that is not active.
    void cancel(uint32_t tid, ArrayModel& model, time_t now, const std::string& why);
    // The active task of `type` on `name` (the volume a physical copy writes,
    // the copy a restore reads), or nullptr.
    Task* activeOn(int type, const std::string& name);
    // Marks an active task to fail at the next step; false when it is not active.
    bool failNext(uint32_t tid, const std::string& text);

    // Keeps a finished task out of the list's growth: drops the oldest
    // finished tasks beyond kMaxFinished.
    void trim();

private:
    void finish(Task& t, ArrayModel& model, time_t when, int state, const std::string& detail);
};

}  // namespace zdasim
