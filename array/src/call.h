// ApiCall: what every library call does around its work. It notes a call
// made without the array semaphore, takes an injected fault, locks the
// model, lets the clock-driven parts catch up, and journals the call with
// its key arguments and result (and keeps the audit record in the event
// log).
#pragma once

#include <cstdarg>
#include <cstring>
#include <mutex>
#include <optional>
#include <string>

#include "runtime.h"

namespace zdasim {

enum class Sem { Needed, NotNeeded };

// Marks a call that changes the array, with the audit record it received
// (may be null).
struct Changing {
    const api_evtparam_t* event;
};

class ApiCall {
public:
    ApiCall(const char* function, Sem sem);
    ApiCall(const char* function, Sem sem, Changing change);
    ~ApiCall();
    ApiCall(const ApiCall&) = delete;
    ApiCall& operator=(const ApiCall&) = delete;

    // Key arguments for the journal: strings are quoted, NULL shows as null.
    ApiCall& arg(const char* key, const char* value);
    ApiCall& arg(const char* key, const std::string& value) { return arg(key, value.c_str()); }
    ApiCall& arg(const char* key, long long value);

    // The injected fault this call takes, if any.
    const std::optional<Fault>& fault() const { return fault_; }

    ArrayModel& model() { return rt_.model; }
    Ledger& ledger() { return rt_.ledger; }
    time_t now() const { return now_; }

    // Journal the result and hand it back.
    int done(int code);
    api_Status_t done(const api_Status_t& status);

private:
    Runtime& rt_;
    const char* function_;
    const api_evtparam_t* event_ = nullptr;
    bool changing_ = false;
    std::string args_;
    std::optional<Fault> fault_;
    std::unique_lock<std::mutex> lock_;
    time_t now_;
    bool finished_ = false;
};

// A status with code and printf-formatted text.
api_Status_t statusOk();
api_Status_t statusError(int code, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;
api_Status_t statusFromFault(const Fault& f);

// strncpy that always terminates; copies at most size - 1 bytes.
inline void copyText(char* dst, size_t size, const std::string& src) {
    if (size == 0) return;
    const size_t n = src.size() < size - 1 ? src.size() : size - 1;
    std::memcpy(dst, src.data(), n);
    dst[n] = '\0';
}
template <size_t N>
void copyText(char (&dst)[N], const std::string& src) { copyText(dst, N, src); }

// A C string argument as std::string, with NULL as "".
inline std::string str(const char* s) { return s ? std::string(s) : std::string(); }

// A name field of a request: at most 31 characters up to the first NUL.
std::string fieldName(const char* field, size_t size);

}  // namespace zdasim
