// The simulator's process-wide services: the model and its mutex, the
// array semaphore, the allocation ledger, the journal, faults, the log and
// the clock. Each service locks on its own, so that releases, the
// semaphore and logging never wait for the model.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <ctime>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "model.h"
#include "rcopy_model.h"
#include "state_file.h"
#include "task_model.h"
#include "zdasim_control.h"

namespace zdasim
{

// The array's time: real by default, stepped in tests.
class Clock
{
public:
    time_t now() const;
    void set(time_t start);
    void advance(long seconds);
    void useReal();

private:
    mutable std::mutex mutex_;
    bool stepped_ = false;
    time_t stepped_now_ = 0;
};

// The process-wide array semaphore, with a time-out and a ledger.
class Semaphore
{
public:
    Semaphore();
    int wait();
    void post();
    void setTimeout(std::chrono::milliseconds t);
    void injectTimeouts(int count);
    bool heldByCaller() const;
    void noteUnguardedCall();
    zdasim_sem_ledger_t ledger() const;
    void clearCounters();

private:
    mutable std::mutex mutex_;
    std::condition_variable freed_;
    bool held_ = false;
    std::thread::id holder_;
    std::chrono::milliseconds timeout_{30000};
    int injected_timeouts_ = 0;
    zdasim_sem_ledger_t counts_{};
};

// Allocations handed to callers, by kind, until they are released.
class Ledger
{
public:
    // calloc'ed memory recorded under `kind`; nullptr when out of memory.
    void* allocate(size_t bytes, const char* kind);
    // Releases p if it was handed out as `kind` (any kind when kind is
    // nullptr); a pointer that was not handed out is counted as a bad
    // release and left alone. nullptr is fine.
    void release(void* p, const char* kind);
    // free_if_not_null: releases p whether or not it was handed out.
    void releaseAny(void* p);
    long outstanding(const char* kind) const;
    long badReleases() const;
    std::string report() const;
    void clearBadReleases();

private:
    mutable std::mutex mutex_;
    std::unordered_map<void*, const char*> live_;
    std::map<std::string, long> byKind_;
    long bad_ = 0;
};

// Journal of calls with their key arguments and results.
class Journal
{
public:
    void add(std::string entry);
    size_t count() const;
    std::optional<std::string> entry(size_t i) const;
    size_t countOf(const std::string& function) const;
    void clear();

private:
    static constexpr size_t kMax = 100000;
    mutable std::mutex mutex_;
    std::vector<std::string> entries_;
    size_t dropped_ = 0;
};

struct Fault
{
    int code = 0;
    std::string text;
};

// Injected failures by function name.
class Faults
{
public:
    void add(const std::string& function, int count, int code, const std::string& text);
    // The fault the next call of `function` takes, if any.
    std::optional<Fault> take(const std::string& function);
    void clear();

private:
    struct Entry
    {
        int remaining;  // -1: until cleared
        Fault fault;
    };
    std::mutex mutex_;
    std::map<std::string, std::vector<Entry>> pending_;
};

// log_message: a threshold, stderr or a file, and capture for tests.
class LogSink
{
public:
    LogSink();
    ~LogSink();
    void write(int level, const std::string& line);
    void setThreshold(int level);
    bool toFile(const char* path);
    void capture(bool on);
    size_t capturedCount() const;
    bool captured(size_t i, int* level, std::string* line) const;
    void clearCaptured();

private:
    mutable std::mutex mutex_;
    int threshold_ = LOG_LEVEL_WARNING;
    FILE* file_ = nullptr;  // nullptr: stderr
    bool capturing_ = false;
    std::vector<std::pair<int, std::string>> lines_;
};

struct Runtime
{
    Runtime();
    std::mutex modelMutex;
    ArrayModel model;  // guarded by modelMutex
    Semaphore sem;
    Ledger ledger;
    Journal journal;
    Faults faults;
    LogSink log;
    Clock clock;
    // Parts of the model kept in files of their own, in the order the
    // clock advances them: tasks end before remote copy reads them.
    Tasks tasks;
    RemoteCopy rcopy{tasks};
    StateFile stateFile{rcopy, tasks, faults, log};
};

// The one instance, made on first use.
Runtime& runtime();

// Loads the built-in test array into `model` (which must be empty).
void loadTestArray(ArrayModel& model, time_t now);

// Replaces the array with the demo array compiled into the library; the
// caller holds the model mutex (or is the Runtime being made). Returns ""
// or why the demo array did not load.
std::string loadDemoArray(Runtime& rt);

}  // namespace zdasim
