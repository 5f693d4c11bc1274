#include "call.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace zdasim
{

ApiCall::ApiCall(const char* function, Sem sem, Changing change) : ApiCall(function, sem)
{
    event_ = change.event;
    changing_ = true;
}

ApiCall::ApiCall(const char* function, Sem sem) : rt_(runtime()), function_(function)
{
    if (sem == Sem::Needed && !rt_.sem.heldByCaller())
        rt_.sem.noteUnguardedCall();
    fault_ = rt_.faults.take(function);
    if (fault_ && fault_->code == ZDASIM_FAULT_THROW)
    {
        throwAtEnd_ = fault_->text;
        fault_.reset();
    }
    lock_ = std::unique_lock<std::mutex>(rt_.modelMutex);
    now_ = rt_.clock.now();
    rt_.model.advanceTo(now_);
}

ApiCall::~ApiCall()
{
    if (finished_)
        return;
    // Only an exception leaves a call without done(): whatever the call
    // changed before it threw is undone, not saved.
    if (changing_)
    {
        changing_ = false;
        undo();
    }
    std::string failure;
    try
    {
        finish(-1, failure);
    }
    catch (...)
    {
        if (lock_.owns_lock())
            lock_.unlock();
    }
}

void ApiCall::undo()
{
    try
    {
        const std::string why = rt_.stateFile.restore(rt_, now_);
        if (!why.empty())
            rt_.log.write(
                LOG_LEVEL_ERROR, std::string(function_) + ": the change could not be undone: " + why);
    }
    catch (...)
    {
        rt_.log.write(LOG_LEVEL_ERROR, std::string(function_) + ": the change could not be undone");
    }
}

ApiCall& ApiCall::arg(const char* key, const char* value)
{
    args_ += ' ';
    args_ += key;
    if (value)
    {
        args_ += "=\"";
        args_ += value;
        args_ += '"';
    }
    else
    {
        args_ += "=null";
    }
    return *this;
}

ApiCall& ApiCall::arg(const char* key, long long value)
{
    args_ += ' ';
    args_ += key;
    args_ += '=';
    args_ += std::to_string(value);
    return *this;
}

int ApiCall::done(int code)
{
    std::string failure;
    return finish(code, failure);
}

api_Status_t ApiCall::done(const api_Status_t& status)
{
    std::string failure;
    const int code = finish(status.code, failure);
    if (failure.empty())
        return status;
    api_Status_t failed;
    errinfo_set_str(&failed, code, failure.c_str());
    return failed;
}

int ApiCall::finish(int code, std::string& failure)
{
    if (throwAtEnd_)
    {
        const std::string why = *throwAtEnd_;
        throwAtEnd_.reset();
        throw std::runtime_error(why);
    }
    finished_ = true;
    if (changing_)
    {
        std::string unsaved;
        try
        {
            rt_.model.noteChanged(now_);
            unsaved = rt_.stateFile.takeFailure();
        }
        catch (const std::exception& e)
        {
            unsaved = e.what();
        }
        if (!unsaved.empty())
        {
            undo();
            if (code == API_OK)
            {
                code = API_E_INTERNAL;
                failure = "The change could not be saved (" + unsaved + "); the array is unchanged";
            }
        }
    }
    if (event_)
    {
        rt_.model.recordEvent(now_, function_, event_, code);
        arg("evt.user", event_->user)
            .arg("evt.addr", event_->addr)
            .arg("evt.method", event_->method)
            .arg("evt.op", event_->inst_op)
            .arg("evt.param", event_->inst_param);
    }
    std::string entry = function_;
    entry += args_;
    entry += " -> ";
    entry += std::to_string(code);
    if (fault_)
        entry += " (injected)";
    if (lock_.owns_lock())
        lock_.unlock();
    rt_.journal.add(std::move(entry));
    return code;
}

api_Status_t statusOk()
{
    api_Status_t s;
    api_initStatus(&s);
    return s;
}

api_Status_t statusError(int code, const char* format, ...)
{
    api_Status_t s;
    s.code = code;
    va_list ap;
    va_start(ap, format);
    std::vsnprintf(s.text, sizeof s.text, format, ap);
    va_end(ap);
    return s;
}

api_Status_t statusFromFault(const Fault& f)
{
    api_Status_t s;
    errinfo_set_str(&s, f.code, f.text.c_str());
    return s;
}

api_Status_t caughtAtBoundary(const char* function) noexcept
{
    std::string why = "unknown exception";
    try
    {
        throw;
    }
    catch (const std::exception& e)
    {
        why = e.what();
    }
    catch (...)
    {}
    api_Status_t s;
    s.code = API_E_INTERNAL;
    std::snprintf(s.text, sizeof s.text, "%s failed: %s", function, why.c_str());
    try
    {
        runtime().log.write(LOG_LEVEL_ERROR, s.text);
    }
    catch (...)
    {
        // Out of memory while reporting: the status still says what failed.
    }
    return s;
}

std::string nameProblem(const std::string& name)
{
    if (name.empty())
        return "is empty";
    if (name.size() >= API_NAME_LEN)
        return "is longer than " + std::to_string(API_NAME_LEN - 1) + " characters";
    for (const char c : name)
    {
        const unsigned char u = static_cast<unsigned char>(c);
        if (u <= 0x20 || u >= 0x7F || c == '|' || c == '/')
            return "may hold only printable ASCII characters other than blank, '|' and '/'";
    }
    return {};
}

std::string fieldName(const char* field, size_t size)
{
    return std::string(field, strnlen(field, size));
}

}  // namespace zdasim
