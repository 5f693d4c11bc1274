#include "call.h"

#include <cstdio>
#include <cstring>

namespace zdasim {

ApiCall::ApiCall(const char* function, Sem sem, Changing change) : ApiCall(function, sem) {
    event_ = change.event;
    changing_ = true;
}

ApiCall::ApiCall(const char* function, Sem sem) : rt_(runtime()), function_(function) {
    if (sem == Sem::Needed && !rt_.sem.heldByCaller()) rt_.sem.noteUnguardedCall();
    fault_ = rt_.faults.take(function);
    lock_ = std::unique_lock<std::mutex>(rt_.modelMutex);
    now_ = rt_.clock.now();
    rt_.model.advanceTo(now_);
}

ApiCall::~ApiCall() {
    if (!finished_) done(-1);
}

ApiCall& ApiCall::arg(const char* key, const char* value) {
    args_ += ' ';
    args_ += key;
    if (value) {
        args_ += "=\"";
        args_ += value;
        args_ += '"';
    } else {
        args_ += "=null";
    }
    return *this;
}

ApiCall& ApiCall::arg(const char* key, long long value) {
    args_ += ' ';
    args_ += key;
    args_ += '=';
    args_ += std::to_string(value);
    return *this;
}

int ApiCall::done(int code) {
    finished_ = true;
    if (changing_) rt_.model.noteChanged(now_);
    if (event_) {
        rt_.model.recordEvent(now_, function_, event_, code);
        arg("evt.user", event_->user).arg("evt.addr", event_->addr).arg("evt.method", event_->method)
            .arg("evt.op", event_->inst_op).arg("evt.param", event_->inst_param);
    }
    std::string entry = function_;
    entry += args_;
    entry += " -> ";
    entry += std::to_string(code);
    if (fault_) entry += " (injected)";
    if (lock_.owns_lock()) lock_.unlock();
    rt_.journal.add(std::move(entry));
    return code;
}

api_Status_t ApiCall::done(const api_Status_t& status) {
    done(status.code);
    return status;
}

api_Status_t statusOk() {
    api_Status_t s;
    api_initStatus(&s);
    return s;
}

api_Status_t statusError(int code, const char* format, ...) {
    api_Status_t s;
    s.code = code;
    va_list ap;
    va_start(ap, format);
    std::vsnprintf(s.text, sizeof s.text, format, ap);
    va_end(ap);
    return s;
}

api_Status_t statusFromFault(const Fault& f) {
    api_Status_t s;
    errinfo_set_str(&s, f.code, f.text.c_str());
    return s;
}

std::string fieldName(const char* field, size_t size) {
    return std::string(field, strnlen(field, size));
}

}  // namespace zdasim
