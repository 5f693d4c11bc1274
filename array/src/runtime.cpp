#include "runtime.h"

#include <cstdlib>
#include <cstring>

namespace zdasim
{

// ---- Clock ---------------------------------------------------------------

time_t Clock::now() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return stepped_ ? stepped_now_ : std::time(nullptr);
}

void Clock::set(time_t start)
{
    std::lock_guard<std::mutex> lock(mutex_);
    stepped_ = true;
    stepped_now_ = start;
}

void Clock::advance(long seconds)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (!stepped_)
    {
        stepped_ = true;
        stepped_now_ = std::time(nullptr);
    }
    stepped_now_ += seconds;
}

void Clock::useReal()
{
    std::lock_guard<std::mutex> lock(mutex_);
    stepped_ = false;
}

// ---- Semaphore -------------------------------------------------------------

Semaphore::Semaphore()
{
    if (const char* env = std::getenv("ZDA_SEM_TIMEOUT_MS"))
    {
        long ms = std::strtol(env, nullptr, 10);
        if (ms >= 0)
            timeout_ = std::chrono::milliseconds(ms);
    }
}

int Semaphore::wait()
{
    std::unique_lock<std::mutex> lock(mutex_);
    ++counts_.waits;
    if (injected_timeouts_ > 0)
    {
        --injected_timeouts_;
        ++counts_.timeouts;
        return CIM_SEM_TIMEDOUT;
    }
    const auto self = std::this_thread::get_id();
    if (held_ && holder_ == self)
        ++counts_.selfWaits;
    if (!freed_.wait_for(lock, timeout_, [this] { return !held_; }))
    {
        ++counts_.timeouts;
        return CIM_SEM_TIMEDOUT;
    }
    held_ = true;
    holder_ = self;
    ++counts_.acquired;
    return 0;
}

void Semaphore::post()
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (!held_ || holder_ != std::this_thread::get_id())
    {
        // Releasing a semaphore this thread does not hold would let two
        // callers in at once: count it and leave the holder alone.
        ++counts_.unbalancedPosts;
        return;
    }
    held_ = false;
    holder_ = std::thread::id();
    ++counts_.posts;
    freed_.notify_one();
}

void Semaphore::setTimeout(std::chrono::milliseconds t)
{
    std::lock_guard<std::mutex> lock(mutex_);
    timeout_ = t;
}

void Semaphore::injectTimeouts(int count)
{
    std::lock_guard<std::mutex> lock(mutex_);
    injected_timeouts_ = count < 0 ? 0 : count;
}

bool Semaphore::heldByCaller() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return held_ && holder_ == std::this_thread::get_id();
}

void Semaphore::noteUnguardedCall()
{
    std::lock_guard<std::mutex> lock(mutex_);
    ++counts_.unguardedCalls;
}

zdasim_sem_ledger_t Semaphore::ledger() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    zdasim_sem_ledger_t out = counts_;
    out.held = held_ ? 1 : 0;
    out.heldByCaller = held_ && holder_ == std::this_thread::get_id() ? 1 : 0;
    return out;
}

void Semaphore::clearCounters()
{
    std::lock_guard<std::mutex> lock(mutex_);
    counts_ = zdasim_sem_ledger_t{};
    injected_timeouts_ = 0;
}

// ---- Ledger ------------------------------------------------------------------

void* Ledger::allocate(size_t bytes, const char* kind)
{
    void* p = std::calloc(1, bytes ? bytes : 1);
    if (!p)
        return nullptr;
    std::lock_guard<std::mutex> lock(mutex_);
    live_[p] = kind;
    ++byKind_[kind];
    return p;
}

void Ledger::release(void* p, const char* kind)
{
    if (!p)
        return;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = live_.find(p);
        if (it == live_.end() || (kind && std::strcmp(it->second, kind) != 0))
        {
            ++bad_;
            return;
        }
        --byKind_[it->second];
        live_.erase(it);
    }
    std::free(p);
}

void Ledger::releaseAny(void* p)
{
    if (!p)
        return;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = live_.find(p);
        if (it != live_.end())
        {
            --byKind_[it->second];
            live_.erase(it);
        }
    }
    std::free(p);
}

long Ledger::outstanding(const char* kind) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (!kind)
        return static_cast<long>(live_.size());
    auto it = byKind_.find(kind);
    return it == byKind_.end() ? 0 : it->second;
}

long Ledger::badReleases() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return bad_;
}

std::string Ledger::report() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::string out;
    for (const auto& [kind, n] : byKind_)
    {
        if (n == 0)
            continue;
        if (!out.empty())
            out += ' ';
        out += kind + "=" + std::to_string(n);
    }
    return out;
}

void Ledger::clearBadReleases()
{
    std::lock_guard<std::mutex> lock(mutex_);
    bad_ = 0;
}

// ---- Journal -------------------------------------------------------------------

void Journal::add(std::string entry)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (entries_.size() >= kMax)
    {
        // Keep the newest half: a long-running server must not grow without end.
        entries_.erase(entries_.begin(), entries_.begin() + kMax / 2);
        dropped_ += kMax / 2;
    }
    entries_.push_back(std::move(entry));
}

size_t Journal::count() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return entries_.size();
}

std::optional<std::string> Journal::entry(size_t i) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (i >= entries_.size())
        return std::nullopt;
    return entries_[i];
}

size_t Journal::countOf(const std::string& function) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    size_t n = 0;
    for (const std::string& e : entries_)
        if (e.compare(0, function.size(), function) == 0 &&
            (e.size() == function.size() || e[function.size()] == ' '))
            ++n;
    return n;
}

void Journal::clear()
{
    std::lock_guard<std::mutex> lock(mutex_);
    entries_.clear();
    dropped_ = 0;
}

// ---- Faults ----------------------------------------------------------------------

void Faults::add(const std::string& function, int count, int code, const std::string& text)
{
    if (count == 0)
        return;
    std::lock_guard<std::mutex> lock(mutex_);
    pending_[function].push_back(Entry{count < 0 ? -1 : count, Fault{code, text}});
}

std::optional<Fault> Faults::take(const std::string& function)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = pending_.find(function);
    if (it == pending_.end() || it->second.empty())
        return std::nullopt;
    Entry& e = it->second.front();
    Fault f = e.fault;
    if (e.remaining > 0 && --e.remaining == 0)
        it->second.erase(it->second.begin());
    return f;
}

void Faults::clear()
{
    std::lock_guard<std::mutex> lock(mutex_);
    pending_.clear();
}

// ---- LogSink ------------------------------------------------------------------------

LogSink::LogSink()
{
    if (const char* lvl = std::getenv("ZDA_LOG_LEVEL"))
        threshold_ = std::atoi(lvl);
    if (const char* path = std::getenv("ZDA_LOG_FILE"))
        file_ = std::fopen(path, "a");
}

LogSink::~LogSink()
{
    if (file_)
        std::fclose(file_);
}

void LogSink::write(int level, const std::string& line)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (capturing_)
        lines_.emplace_back(level, line);
    if (level > threshold_)
        return;
    FILE* out = file_ ? file_ : stderr;
    std::fprintf(out, "%s\n", line.c_str());
    std::fflush(out);
}

void LogSink::setThreshold(int level)
{
    std::lock_guard<std::mutex> lock(mutex_);
    threshold_ = level;
}

bool LogSink::toFile(const char* path)
{
    FILE* f = nullptr;
    if (path && !(f = std::fopen(path, "a")))
        return false;
    std::lock_guard<std::mutex> lock(mutex_);
    if (file_)
        std::fclose(file_);
    file_ = f;
    return true;
}

void LogSink::capture(bool on)
{
    std::lock_guard<std::mutex> lock(mutex_);
    capturing_ = on;
}

size_t LogSink::capturedCount() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return lines_.size();
}

bool LogSink::captured(size_t i, int* level, std::string* line) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (i >= lines_.size())
        return false;
    if (level)
        *level = lines_[i].first;
    if (line)
        *line = lines_[i].second;
    return true;
}

void LogSink::clearCaptured()
{
    std::lock_guard<std::mutex> lock(mutex_);
    lines_.clear();
}

// ---- Runtime --------------------------------------------------------------------------

Runtime::Runtime()
{
    model.addPart(&tasks);
    model.addPart(&rcopy);
    model.addPart(&stateFile);
    startArray(*this);
}

Runtime& runtime()
{
    // Never destroyed: callers may still be running while the process exits.
    static Runtime* instance = new Runtime();
    return *instance;
}

}  // namespace zdasim
