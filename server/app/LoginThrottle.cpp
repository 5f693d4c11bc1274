#include "LoginThrottle.h"

#include <ServerLog.h>

#include <algorithm>

namespace zda::cimserver
{

namespace
{

// Addresses remembered at most; beyond it the oldest quiet ones go first.
constexpr std::size_t kMaxRecords = 10000;

}  // namespace

void LogLimiter::warn(const std::string& line)
{
    unsigned long heldBack = 0;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        const Clock::time_point now = Clock::now();
        if (now - _periodStart >= _period)
        {
            _periodStart = now;
            _logged = 0;
        }
        if (_logged >= _burst)
        {
            _suppressed++;
            return;
        }
        _logged++;
        heldBack = _suppressed;
        _suppressed = 0;
    }
    if (heldBack)
        server::logFormat(3, "zda-cimserver: %s (and %lu more like it not logged)", line.c_str(), heldBack);
    else
        server::logFormat(3, "zda-cimserver: %s", line.c_str());
}

LoginThrottle::Clock::duration LoginThrottle::delayAfter(unsigned failures) const
{
    if (failures < _settings.freeFailures)
        return Clock::duration::zero();
    Clock::duration delay = _settings.firstDelay;
    for (unsigned i = _settings.freeFailures; i < failures && delay < _settings.maxDelay; i++)
        delay *= 2;
    return std::min(delay, _settings.maxDelay);
}

std::optional<LoginThrottle::Clock::time_point> LoginThrottle::admit(
    const std::string& address, Clock::time_point now)
{
    std::lock_guard<std::mutex> lock(_mutex);
    auto found = _records.find(address);
    if (found == _records.end())
        return now;
    Record& r = found->second;
    if (now - r.lastFailure > _settings.forgetAfter)
    {
        _records.erase(found);
        return now;
    }
    const Clock::duration delay = delayAfter(r.failures);
    if (delay == Clock::duration::zero())
        return now;
    // The next check waits the delay after the last failure, and turns are
    // handed out one delay apart, so that parallel connections from one
    // address get no more checks than a single one.
    const Clock::time_point turn = std::max({now, r.lastFailure + delay, r.nextTurn});
    if (turn - now > _settings.maxWait)
        return std::nullopt;
    r.nextTurn = turn + delay;
    return turn;
}

void LoginThrottle::failed(const std::string& address, const std::string& user, Clock::time_point now)
{
    unsigned failures;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        forgetOld(now);
        Record& r = _records[address];
        r.failures++;
        r.lastFailure = now;
        failures = r.failures;
    }
    _log.warn("refused a login" + (user.empty() ? std::string() : " as '" + user + "'") + " from " +
        (address.empty() ? std::string("the local socket") : address) + " (" + std::to_string(failures) +
        " failed in a row)");
}

void LoginThrottle::succeeded(const std::string& address)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _records.erase(address);
}

void LoginThrottle::forgetOld(Clock::time_point now)
{
    if (_records.size() < kMaxRecords)
        return;
    for (auto it = _records.begin(); it != _records.end();)
        it = now - it->second.lastFailure > _settings.forgetAfter ? _records.erase(it) : std::next(it);
    // Still full of recent failures: start over rather than grow.
    if (_records.size() >= kMaxRecords)
        _records.clear();
}

}  // namespace zda::cimserver
