// The simulator controls for descriptions, the demo array, the state file,
// remote copy targets and tasks (zdasim_control.h).
#include <cstring>
#include <fstream>
#include <sstream>

#include "call.h"
#include "description.h"
#include "zdasim_control.h"

using namespace zdasim;

namespace
{

int report(const std::string& error, char* buffer, size_t size)
{
    if (buffer && size)
        copyText(buffer, size, error);
    return error.empty() ? 0 : -1;
}

// Runs f under the model mutex; a change it reports (true) reaches the
// state file.
template <class F>
auto changeModel(F f)
{
    Runtime& rt = runtime();
    std::lock_guard<std::mutex> lock(rt.modelMutex);
    const time_t now = rt.clock.now();
    rt.model.advanceTo(now);
    auto [result, changed] = f(rt, now);
    if (changed && rt.stateFile.isOpen())
        rt.stateFile.save(rt.model);
    return result;
}

std::string loadText(const std::string& text, const std::string& origin)
{
    return changeModel([&](Runtime& rt, time_t now) {
        LoadedArray loaded;
        std::string error = parseDescription(text, origin, now, loaded);
        if (error.empty())
            installArray(rt, std::move(loaded));
        return std::make_pair(error, error.empty());
    });
}

}  // namespace

extern "C"
{

    void zdasim_reset_demo_array(void)
    {
        changeModel([](Runtime& rt, time_t) {
            const std::string error = loadDemoArray(rt);
            if (!error.empty())
                rt.log.write(LOG_LEVEL_ERROR, "demo array: " + error);
            return std::make_pair(0, error.empty());
        });
    }

    int zdasim_load_description_file(const char* path, char* error, size_t size)
    {
        if (!path || !*path)
            return report("no description file named", error, size);
        std::ifstream in(path, std::ios::binary);
        if (!in)
            return report(std::string(path) + ": cannot open: " + std::strerror(errno), error, size);
        std::ostringstream text;
        text << in.rdbuf();
        return report(loadText(text.str(), path), error, size);
    }

    int zdasim_load_description_text(const char* text, const char* origin, char* error, size_t size)
    {
        if (!text)
            return report("no description text", error, size);
        return report(loadText(text, origin && *origin ? origin : "description"), error, size);
    }

    int zdasim_save_description_file(const char* path, char* error, size_t size)
    {
        if (!path || !*path)
            return report("no description file named", error, size);
        const std::string failure = changeModel([&](Runtime& rt, time_t) {
            const std::string text = describeArray(rt.model, rt.rcopy.state, rt.tasks.state);
            const std::string tmp = std::string(path) + ".tmp";
            std::ofstream out(tmp, std::ios::binary | std::ios::trunc);
            out << text;
            out.close();
            std::string why;
            if (!out)
                why = tmp + ": cannot write: " + std::strerror(errno);
            else if (std::rename(tmp.c_str(), path) != 0)
                why = std::string(path) + ": cannot rename: " + std::strerror(errno);
            return std::make_pair(why, false);
        });
        return report(failure, error, size);
    }

    int zdasim_state_file_open(const char* path, char* error, size_t size)
    {
        Runtime& rt = runtime();
        std::lock_guard<std::mutex> lock(rt.modelMutex);
        rt.model.advanceTo(rt.clock.now());
        return report(rt.stateFile.open(rt, path ? path : ""), error, size);
    }

    void zdasim_state_file_close(void)
    {
        Runtime& rt = runtime();
        std::lock_guard<std::mutex> lock(rt.modelMutex);
        rt.stateFile.close();
    }

    int zdasim_rcopy_target_set_status(const char* target, int status)
    {
        if (!target || status < 0 || status > 255)
            return API_E_INVALID;
        return changeModel([&](Runtime& rt, time_t) {
            RcTarget* t = rt.rcopy.state.findTarget(target);
            if (!t)
                return std::make_pair(API_E_NOT_FOUND, false);
            t->status = static_cast<uint8_t>(status);
            return std::make_pair(API_OK, true);
        });
    }

    int zdasim_clone_start(
        const char* source, const char* clone, long seconds, int failAtPercent, uint32_t* tid)
    {
        if (!source || !clone || !nameProblem(clone).empty() || seconds <= 0 || failAtPercent < -1 ||
            failAtPercent > 99)
            return API_E_INVALID;
        return changeModel([&](Runtime& rt, time_t now) {
            ArrayModel& m = rt.model;
            const Volume* src = m.findVolume(source);
            if (!src)
                return std::make_pair(API_E_NOT_FOUND, false);
            if (m.findVolume(clone))
                return std::make_pair(API_E_EXISTS, false);
            Volume v = *src;
            v.id = 0;
            v.wwn = v.wwnRe = 0;
            v.name = clone;
            v.type = API_VV_TYPE_PHYSICAL_COPY;
            v.copyOfId = src->id;
            v.baseId = src->baseId;
            v.state = API_VV_STATE_NORMAL | API_VV_STATE_COPYING;
            v.policy &= ~VV_POLICY_SYSTEM;
            v.creationTime = now;
            v.curWhenSynced = 0;
            v.copyProgress = 0;
            v.comment.clear();
            v.busyRemovals = 0;
            v.readOnly = false;
            m.addVolume(std::move(v));
            const uint32_t id = rt.tasks.start(API_TASK_PHYSICAL_COPY, clone, "", "", now, seconds);
            rt.tasks.find(id)->failAtPercent = failAtPercent;
            if (tid)
                *tid = id;
            return std::make_pair(API_OK, true);
        });
    }

    int zdasim_task_fail(uint32_t tid, const char* text)
    {
        return changeModel([&](Runtime& rt, time_t) {
            const bool ok = rt.tasks.failNext(tid, text ? text : "");
            return std::make_pair(ok ? API_OK : API_E_NOT_FOUND, ok);
        });
    }

}  // extern "C"
