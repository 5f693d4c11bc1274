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

namespace zdasim
{

enum class Sem
{
    Needed,
    NotNeeded
};

// Marks a call that changes the array, with the audit record it received
// (may be null).
struct Changing
{
    const api_evtparam_t* event;
};

class ApiCall
{
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

    // Journal the result and hand it back. A change that cannot be saved
    // to the state file is undone, and the call fails with API_E_INTERNAL.
    int done(int code);
    api_Status_t done(const api_Status_t& status);

private:
    // done() for both forms; `failure` gets why a successful result was
    // turned into a failure.
    int finish(int code, std::string& failure);
    // Puts the array back as the state file last saved it.
    void undo();

    Runtime& rt_;
    const char* function_;
    const api_evtparam_t* event_ = nullptr;
    bool changing_ = false;
    std::string args_;
    std::optional<Fault> fault_;
    std::optional<std::string> throwAtEnd_;  // an injected ZDASIM_FAULT_THROW
    std::unique_lock<std::mutex> lock_;
    time_t now_;
    bool finished_ = false;
};

// What an entry point answers after its work threw: the exception is
// logged and journaled, and the caller gets a failure (API_E_INTERNAL with
// the exception's text) instead of an exception crossing the C boundary.
// Call only from a catch handler.
api_Status_t caughtAtBoundary(const char* function) noexcept;

// The naming rule for everything the array names (volumes, VV sets, CPGs,
// settings, remote copy groups and targets, users, roles): 1 to 31
// characters (a name field holds 32 bytes with its terminator), each a
// printable ASCII character other than the blank, '|' and '/'. Returns ""
// for a good name, else why it is refused.
std::string nameProblem(const std::string& name);

// A status with code and printf-formatted text.
api_Status_t statusOk();
api_Status_t statusError(int code, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;
api_Status_t statusFromFault(const Fault& f);

// strncpy that always terminates; copies at most size - 1 bytes.
inline void copyText(char* dst, size_t size, const std::string& src)
{
    if (size == 0)
        return;
    const size_t n = src.size() < size - 1 ? src.size() : size - 1;
    std::memcpy(dst, src.data(), n);
    dst[n] = '\0';
}
template <size_t N>
void copyText(char (&dst)[N], const std::string& src)
{
    copyText(dst, N, src);
}

// A C string argument as std::string, with NULL as "".
inline std::string str(const char* s)
{
    return s ? std::string(s) : std::string();
}

// A name field of a request: at most 31 characters up to the first NUL.
std::string fieldName(const char* field, size_t size);

}  // namespace zdasim
