// Copies of single volumes (zdaapi_copies.h): physical copies written by
// tasks, resync, restore, stop and promote of physical and virtual copies,
// and snapshot space for a volume.
#include <algorithm>
#include <cstring>

#include "call.h"

using namespace zdasim;

namespace
{

long copySeconds(const Volume& v)
{
    return std::max<long>(1, static_cast<long>(v.sizeMiB / API_COPY_MIB_PER_SECOND));
}

// Why a task keeps `v` from taking part in another copy, or "".
std::string taskUse(Tasks& tasks, const Volume& v)
{
    if (tasks.activeOn(API_TASK_PHYSICAL_COPY, v.name))
        return "VV " + v.name + " is being copied";
    if (tasks.activeOn(API_TASK_COPY_RESTORE, v.name))
        return "VV " + v.name + " is being restored to its parent";
    return {};
}

// Why any task keeps the copy `copy` or its parent busy, or "".
std::string copyBusy(Tasks& tasks, const ArrayModel& m, const Volume& copy)
{
    std::string why = taskUse(tasks, copy);
    if (!why.empty())
        return why;
    if (const Volume* parent = m.volumeById(copy.copyOfId))
    {
        why = taskUse(tasks, *parent);
        if (!why.empty())
            return why;
        for (uint32_t sibling : m.childrenOf(parent->id))
            if (const Volume* s = m.volumeById(sibling); s && tasks.activeOn(API_TASK_COPY_RESTORE, s->name))
                return "VV " + parent->name + " is being restored from " + s->name;
    }
    return {};
}

// Looks up the copy named by a request: a physical or virtual copy with its parent.
api_Status_t findCopy(ArrayModel& m, const char* name, Volume*& copy, const Volume*& parent)
{
    const std::string n = str(name);
    copy = m.findVolume(n);
    if (!copy)
        return statusError(API_E_NOT_FOUND, "VV %s does not exist", n.c_str());
    parent = copy->copyOfId ? m.volumeById(copy->copyOfId) : nullptr;
    if ((copy->type != API_VV_TYPE_PHYSICAL_COPY && copy->type != API_VV_TYPE_VIRTUAL_COPY) || !parent)
        return statusError(API_E_INVALID, "VV %s is not a copy of another volume", n.c_str());
    return statusOk();
}

}  // namespace

extern "C"
{

    api_Status_t api_createPhysicalCopy(_api_evtparam_t* event, api_physcopy_t* copy)
    try
    {
        ApiCall call("api_createPhysicalCopy", Sem::Needed, Changing{event});
        if (copy)
        {
            call.arg("parent", fieldName(copy->parentVolName, API_NAME_LEN))
                .arg("child", fieldName(copy->childVolName, API_NAME_LEN))
                .arg("userCpg", fieldName(copy->userCpg, API_NAME_LEN))
                .arg("snapCpg", fieldName(copy->snapCpg, API_NAME_LEN))
                .arg("flags", copy->flags);
        }
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        if (!copy)
            return call.done(statusError(API_E_INVALID, "No copy requested"));
        copy->tid = 0;
        copy->childVolWWN[0] = '\0';
        const std::string bad = nameProblem(fieldName(copy->childVolName, API_NAME_LEN));
        if (!bad.empty())
            return call.done(statusError(API_E_INVALID, "Copy name %s", bad.c_str()));
        ArrayModel& m = call.model();
        Tasks& tasks = runtime().tasks;
        const std::string parentName = fieldName(copy->parentVolName, API_NAME_LEN);
        const std::string childName = fieldName(copy->childVolName, API_NAME_LEN);
        if (childName.empty())
            return call.done(statusError(API_E_INVALID, "Copy name is empty"));
        const Volume* parent = m.findVolume(parentName);
        if (!parent)
            return call.done(statusError(API_E_NOT_FOUND, "VV %s does not exist", parentName.c_str()));
        if (parent->type == API_VV_TYPE_VIRTUAL_COPY)
            return call.done(statusError(
                API_E_INVALID, "VV %s is a virtual copy and cannot be copied", parentName.c_str()));
        if (std::string why = taskUse(tasks, *parent); !why.empty())
            return call.done(statusError(API_E_IN_USE, "%s", why.c_str()));
        const bool create = (copy->flags & API_PCOPY_CREATE_TARGET) != 0;
        Volume* target = m.findVolume(childName);
        if (create)
        {
            if (target)
                return call.done(statusError(API_E_EXISTS, "VV %s already exists", childName.c_str()));
            if (m.volumes().size() + 1 > m.system.maxVolumes)
                return call.done(
                    statusError(API_E_LIMIT, "The system holds at most %u volumes", m.system.maxVolumes));
            const std::string usr = fieldName(copy->userCpg, API_NAME_LEN).empty()
                ? parent->usrCpg
                : fieldName(copy->userCpg, API_NAME_LEN);
            const std::string snap = fieldName(copy->snapCpg, API_NAME_LEN).empty()
                ? parent->snapCpg
                : fieldName(copy->snapCpg, API_NAME_LEN);
            const Cpg* usrCpg = m.findCpg(usr);
            if (!usrCpg)
                return call.done(statusError(API_E_NOT_FOUND, "CPG %s does not exist", usr.c_str()));
            if (!snap.empty() && !m.findCpg(snap))
                return call.done(statusError(API_E_NOT_FOUND, "CPG %s does not exist", snap.c_str()));
            Volume v;
            v.name = childName;
            v.type = API_VV_TYPE_BASE;  // relinked as the parent's copy below
            v.policy = parent->policy & ~VV_POLICY_SYSTEM;
            v.sizeMiB = parent->sizeMiB;
            v.usedMiB = parent->usedMiB;
            v.usrCpg = usr;
            v.snapCpg = snap;
            v.domain = usrCpg->domain;
            v.creationTime = call.now();
            target = &m.addVolume(std::move(v));
        }
        else
        {
            if (!target)
                return call.done(statusError(API_E_NOT_FOUND, "VV %s does not exist", childName.c_str()));
            if (target->id == parent->id)
                return call.done(
                    statusError(API_E_INVALID, "VV %s cannot be copied onto itself", childName.c_str()));
            if (target->policy & VV_POLICY_SYSTEM)
                return call.done(statusError(API_E_ACCESS, "VV %s is a system volume", childName.c_str()));
            if (std::string why = m.volumeUse(*target); !why.empty())
                return call.done(statusError(API_E_IN_USE, "%s", why.c_str()));
            if (std::string why = taskUse(tasks, *target); !why.empty())
                return call.done(statusError(API_E_IN_USE, "%s", why.c_str()));
            if (!m.childrenOf(target->id).empty())
                return call.done(statusError(API_E_IN_USE, "VV %s has copies of its own", childName.c_str()));
            if (target->type != API_VV_TYPE_BASE)
                return call.done(statusError(API_E_INVALID, "VV %s is not a base volume", childName.c_str()));
            if (target->sizeMiB < parent->sizeMiB)
                return call.done(statusError(
                    API_E_INVALID, "VV %s is smaller than %s", childName.c_str(), parentName.c_str()));
            if (target->domain != parent->domain)
                return call.done(statusError(API_E_INVALID, "VV %s is in another domain than %s",
                    childName.c_str(), parentName.c_str()));
        }
        m.relinkVolume(target->id, parent->id, API_VV_TYPE_PHYSICAL_COPY);
        target->state = API_VV_STATE_NORMAL | API_VV_STATE_COPYING;
        if (copy->flags & API_PCOPY_INACTIVE)
            target->state |= API_VV_STATE_COPY_INACTIVE;
        target->copyProgress = 0;
        target->curWhenSynced = 0;
        target->readOnly = false;
        const uint32_t tid = tasks.start(API_TASK_PHYSICAL_COPY, childName, "",
            event ? fieldName(event->user, sizeof event->user) : "", call.now(), copySeconds(*parent));
        copy->tid = tid;
        copyText(copy->childVolWWN, target->wwnText);
        call.arg("tid", tid);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_createPhysicalCopy");
    }

    api_Status_t api_resyncCopy(_api_evtparam_t* event, const char* copyName, uint32_t* tid)
    try
    {
        ApiCall call("api_resyncCopy", Sem::Needed, Changing{event});
        call.arg("copy", copyName);
        if (tid)
            *tid = 0;
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        ArrayModel& m = call.model();
        Tasks& tasks = runtime().tasks;
        Volume* copy = nullptr;
        const Volume* parent = nullptr;
        api_Status_t found = findCopy(m, copyName, copy, parent);
        if (found.code)
            return call.done(found);
        if (std::string why = copyBusy(tasks, m, *copy); !why.empty())
            return call.done(statusError(API_E_IN_USE, "%s", why.c_str()));
        if (copy->type == API_VV_TYPE_VIRTUAL_COPY)
        {
            copy->creationTime = call.now();
            copy->curWhenSynced = call.now();
            copy->usedMiB = 0;
            return call.done(statusOk());
        }
        copy->state |= API_VV_STATE_COPYING;
        copy->copyProgress = 0;
        const uint32_t id = tasks.start(API_TASK_PHYSICAL_COPY, copy->name, "",
            event ? fieldName(event->user, sizeof event->user) : "", call.now(), copySeconds(*parent));
        if (tid)
            *tid = id;
        call.arg("tid", id);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_resyncCopy");
    }

    api_Status_t api_restoreCopy(_api_evtparam_t* event, const char* copyName, uint32_t* tid)
    try
    {
        ApiCall call("api_restoreCopy", Sem::Needed, Changing{event});
        call.arg("copy", copyName);
        if (tid)
            *tid = 0;
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        ArrayModel& m = call.model();
        Tasks& tasks = runtime().tasks;
        Volume* copy = nullptr;
        const Volume* parent = nullptr;
        api_Status_t found = findCopy(m, copyName, copy, parent);
        if (found.code)
            return call.done(found);
        if (std::string why = copyBusy(tasks, m, *copy); !why.empty())
            return call.done(statusError(API_E_IN_USE, "%s", why.c_str()));
        if (std::string why = m.volumeUse(*parent); !why.empty())
            return call.done(statusError(API_E_IN_USE, "%s", why.c_str()));
        if (copy->type == API_VV_TYPE_PHYSICAL_COPY && copy->copyProgress < 100)
            return call.done(statusError(API_E_INVALID, "VV %s is an incomplete copy", copy->name.c_str()));
        copy->state |= API_VV_STATE_RESTORING;
        const uint32_t id = tasks.start(API_TASK_COPY_RESTORE, parent->name, copy->name,
            event ? fieldName(event->user, sizeof event->user) : "", call.now(), copySeconds(*parent));
        if (tid)
            *tid = id;
        call.arg("tid", id);
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_restoreCopy");
    }

    api_Status_t api_stopCopy(_api_evtparam_t* event, const char* copyName)
    try
    {
        ApiCall call("api_stopCopy", Sem::Needed, Changing{event});
        call.arg("copy", copyName);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        ArrayModel& m = call.model();
        Tasks& tasks = runtime().tasks;
        Volume* copy = nullptr;
        const Volume* parent = nullptr;
        api_Status_t found = findCopy(m, copyName, copy, parent);
        if (found.code)
            return call.done(found);
        Task* t = tasks.activeOn(API_TASK_PHYSICAL_COPY, copy->name);
        if (!t)
            t = tasks.activeOn(API_TASK_COPY_RESTORE, copy->name);
        if (!t)
            return call.done(
                statusError(API_E_INVALID, "No copy or restore of VV %s is in progress", copy->name.c_str()));
        call.arg("tid", t->tid);
        tasks.cancel(t->tid, m, call.now(), "stopped");
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_stopCopy");
    }

    api_Status_t api_promoteCopy(_api_evtparam_t* event, const char* copyName)
    try
    {
        ApiCall call("api_promoteCopy", Sem::Needed, Changing{event});
        call.arg("copy", copyName);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        ArrayModel& m = call.model();
        Volume* copy = nullptr;
        const Volume* parent = nullptr;
        api_Status_t found = findCopy(m, copyName, copy, parent);
        if (found.code)
            return call.done(found);
        if (copy->type != API_VV_TYPE_PHYSICAL_COPY)
            return call.done(statusError(API_E_INVALID, "VV %s is not a physical copy", copy->name.c_str()));
        if (std::string why = copyBusy(runtime().tasks, m, *copy); !why.empty())
            return call.done(statusError(API_E_IN_USE, "%s", why.c_str()));
        m.relinkVolume(copy->id, 0, API_VV_TYPE_BASE);
        copy->state &= ~API_VV_STATE_COPY_INACTIVE;
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_promoteCopy");
    }

    api_Status_t api_setSnapCPG(_api_evtparam_t* event, const char* name, const char* cpg)
    try
    {
        ApiCall call("api_setSnapCPG", Sem::Needed, Changing{event});
        call.arg("name", name).arg("cpg", cpg);
        if (call.fault())
            return call.done(statusFromFault(*call.fault()));
        ArrayModel& m = call.model();
        Volume* v = m.findVolume(str(name));
        if (!v)
            return call.done(statusError(API_E_NOT_FOUND, "VV %s does not exist", str(name).c_str()));
        if (!v->snapCpg.empty())
            return call.done(statusOk());
        const Cpg* c = m.findCpg(str(cpg));
        if (!c)
            return call.done(statusError(API_E_NOT_FOUND, "CPG %s does not exist", str(cpg).c_str()));
        if (c->domain != v->domain)
            return call.done(statusError(
                API_E_INVALID, "CPG %s is not in the domain of VV %s", c->name.c_str(), v->name.c_str()));
        v->snapCpg = c->name;
        return call.done(statusOk());
    }
    catch (...)
    {
        return caughtAtBoundary("api_setSnapCPG");
    }

}  // extern "C"
