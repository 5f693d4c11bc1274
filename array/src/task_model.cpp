#include "task_model.h"

#include <algorithm>

namespace zdasim
{

int Task::percentAt(time_t now) const
{
    if (state != API_TASK_ACTIVE)
        return percentAtEnd;
    if (now <= start)
        return 0;
    const long duration = durationSeconds > 0 ? durationSeconds : 1;
    const long long elapsed = static_cast<long long>(now - start);
    return elapsed >= duration ? 100 : static_cast<int>(elapsed * 100 / duration);
}

uint32_t Tasks::start(int type, const std::string& name, const std::string& target, const std::string& user,
    time_t now, long durationSeconds)
{
    Task t;
    t.tid = state.nextTid++;
    t.type = type;
    t.name = name;
    t.target = target;
    t.user = user;
    t.start = now;
    t.durationSeconds = durationSeconds > 0 ? durationSeconds : 1;
    state.tasks.push_back(std::move(t));
    trim();
    return state.tasks.back().tid;
}

Task* Tasks::find(uint32_t tid)
{
    // Ids grow with the list, so a binary search finds them.
    auto it = std::lower_bound(
        state.tasks.begin(), state.tasks.end(), tid, [](const Task& t, uint32_t id) { return t.tid < id; });
    return it != state.tasks.end() && it->tid == tid ? &*it : nullptr;
}

const Task* Tasks::find(uint32_t tid) const
{
    return const_cast<Tasks*>(this)->find(tid);
}

void Tasks::end(uint32_t tid, time_t now, int endState, const std::string& why)
{
    Task* t = find(tid);
    if (!t || t->state != API_TASK_ACTIVE)
        return;
    t->percentAtEnd = t->percentAt(now);
    t->state = endState;
    t->end = now;
    t->detail = why;
}

std::string Tasks::volumeUse(const Volume& volume) const
{
    for (const Task& t : state.tasks)
    {
        if (t.state != API_TASK_ACTIVE)
            continue;
        if (t.type == API_TASK_PHYSICAL_COPY && t.name == volume.name)
            return "VV " + volume.name + " is being copied";
        if (t.type == API_TASK_COPY_RESTORE && (t.name == volume.name || t.target == volume.name))
            return "VV " + volume.name + " takes part in a restore";
    }
    return {};
}

void Tasks::cancel(uint32_t tid, ArrayModel& model, time_t now, const std::string& why)
{
    Task* t = find(tid);
    if (t && t->state == API_TASK_ACTIVE)
        finish(*t, model, now, API_TASK_CANCELLED, why);
}

Task* Tasks::activeOn(int type, const std::string& name)
{
    for (Task& t : state.tasks)
        if (t.state == API_TASK_ACTIVE && t.type == type &&
            (type == API_TASK_COPY_RESTORE ? t.target : t.name) == name)
            return &t;
    return nullptr;
}

bool Tasks::failNext(uint32_t tid, const std::string& text)
{
    Task* t = find(tid);
    if (!t || t->state != API_TASK_ACTIVE)
        return false;
    t->failPending = true;
    t->failText = text.empty() ? "task failed" : text;
    return true;
}

void Tasks::trim()
{
    size_t finished = 0;
    for (const Task& t : state.tasks)
        if (t.state != API_TASK_ACTIVE)
            ++finished;
    for (auto it = state.tasks.begin(); finished > kMaxFinished && it != state.tasks.end();)
    {
        if (it->state != API_TASK_ACTIVE)
        {
            it = state.tasks.erase(it);
            --finished;
        }
        else
        {
            ++it;
        }
    }
}

void Tasks::finish(Task& t, ArrayModel& model, time_t when, int endState, const std::string& detail)
{
    t.percentAtEnd = endState == API_TASK_DONE ? 100 : t.percentAt(when);
    t.state = endState;
    t.end = when;
    t.detail = detail;
    if (t.type == API_TASK_COPY_RESTORE)
    {
        if (Volume* copy = model.findVolume(t.target))
        {
            copy->state &= ~API_VV_STATE_RESTORING;
            if (endState == API_TASK_DONE)
                copy->curWhenSynced = when;
        }
        return;
    }
    if (t.type != API_TASK_PHYSICAL_COPY)
        return;
    Volume* v = model.findVolume(t.name);
    if (!v)
        return;
    v->state &= ~API_VV_STATE_COPYING;
    v->copyProgress = static_cast<uint8_t>(t.percentAtEnd);
    if (endState == API_TASK_DONE)
        v->curWhenSynced = when;
}

void Tasks::advanceTo(ArrayModel& model, time_t now)
{
    bool ended = false;
    for (Task& t : state.tasks)
    {
        if (t.state != API_TASK_ACTIVE)
            continue;
        const time_t due = t.start + t.durationSeconds;
        if (t.failPending)
        {
            finish(t, model, now, API_TASK_FAILED, t.failText);
            ended = true;
        }
        else if (t.failAtPercent >= 0 && t.percentAt(now) >= t.failAtPercent)
        {
            const time_t when = t.start + t.durationSeconds * t.failAtPercent / 100;
            finish(t, model, when, API_TASK_FAILED,
                t.failText.empty() ? "copy failed at " + std::to_string(t.failAtPercent) + "%" : t.failText);
            ended = true;
        }
        else if (now >= due)
        {
            finish(t, model, due, API_TASK_DONE, "");
            ended = true;
        }
        else if (t.type == API_TASK_COPY_RESTORE)
        {
            if (Volume* copy = model.findVolume(t.target))
                copy->state |= API_VV_STATE_RESTORING;
        }
        else if (t.type == API_TASK_PHYSICAL_COPY)
        {
            if (Volume* v = model.findVolume(t.name))
            {
                v->state |= API_VV_STATE_COPYING;
                v->copyProgress = static_cast<uint8_t>(t.percentAt(now));
            }
        }
    }
    if (ended)
        trim();
}

}  // namespace zdasim
