// api_getTasks (zdaapi_tasks.h) over the Tasks part.
#include <cstring>

#include "call.h"

using namespace zdasim;

extern "C"
{

    int api_getTasks(int* count, api_task_t** tasks)
    try
    {
        ApiCall call("api_getTasks", Sem::Needed);
        if (!count || !tasks)
            return call.done(API_E_INVALID);
        *count = 0;
        *tasks = nullptr;
        if (call.fault())
            return call.done(call.fault()->code);
        const TaskState& s = runtime().tasks.state;
        call.arg("count", static_cast<long long>(s.tasks.size()));
        if (s.tasks.empty())
            return call.done(API_OK);
        auto* out = static_cast<api_task_t*>(
            call.ledger().allocate(s.tasks.size() * sizeof(api_task_t), "task_list"));
        if (!out)
            return call.done(API_E_NOMEM);
        size_t i = 0;
        for (const Task& t : s.tasks)
        {
            api_task_t& r = out[i++];
            r.tid = t.tid;
            r.type = t.type;
            r.state = t.state;
            r.percentDone = static_cast<uint8_t>(t.percentAt(call.now()));
            copyText(r.name, t.target.empty() ? t.name : t.name + "->" + t.target);
            copyText(r.user, t.user);
            r.startTime = t.start;
            r.endTime = t.end;
            copyText(r.detail, t.detail);
            r.asOf = call.now();
        }
        *count = static_cast<int>(s.tasks.size());
        *tasks = out;
        return call.done(API_OK);
    }
    catch (...)
    {
        return caughtAtBoundary("api_getTasks").code;
    }

}  // extern "C"
