// Slows down clients that keep sending wrong credentials, and keeps the log
// of refused logins short.
//
// Each client address has a count of recent failures. The first few cost
// nothing extra; after them, a password check from that address waits a
// delay after the last failure, and checks are spaced at least that delay
// apart; the delay doubles with each further failure, up to a ceiling.
// The caller waits for its turn with a timer, not a thread, and an address
// whose queue of turns reaches too far ahead is refused without a check.
// A success clears the address; failures are forgotten after a quiet while.
#ifndef ZDA_CIMSERVER_LOGIN_THROTTLE_H
#define ZDA_CIMSERVER_LOGIN_THROTTLE_H

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace zda::cimserver
{

// At most `burst` lines per `period`; what was held back is counted and
// reported with the next line that goes out.
class LogLimiter
{
public:
    using Clock = std::chrono::steady_clock;

    LogLimiter(unsigned burst, Clock::duration period) : _burst(burst), _period(period) {}

    // Logs the line (a warning) unless this period's lines are spent.
    void warn(const std::string& line);

private:
    const unsigned _burst;
    const Clock::duration _period;
    std::mutex _mutex;
    Clock::time_point _periodStart{};
    unsigned _logged = 0;
    unsigned long _suppressed = 0;
};

class LoginThrottle
{
public:
    using Clock = std::chrono::steady_clock;

    struct Settings
    {
        unsigned freeFailures = 3;  // failures that earn no wait
        Clock::duration firstDelay = std::chrono::milliseconds(250);
        Clock::duration maxDelay = std::chrono::seconds(8);
        Clock::duration maxWait = std::chrono::seconds(30);  // beyond it: refused unchecked
        Clock::duration forgetAfter = std::chrono::minutes(10);
    };

    LoginThrottle() : LoginThrottle(Settings()) {}
    explicit LoginThrottle(Settings settings) : _settings(settings) {}

    // When the next password check for `address` may start (now when the
    // address has no failures to pay for), or nothing when its turn would
    // lie more than maxWait ahead.
    std::optional<Clock::time_point> admit(const std::string& address, Clock::time_point now = Clock::now());

    // A wrong credential from `address` (naming `user`): counted, and
    // logged at a bounded rate.
    void failed(const std::string& address, const std::string& user, Clock::time_point now = Clock::now());
    void succeeded(const std::string& address);

private:
    struct Record
    {
        unsigned failures = 0;
        Clock::time_point lastFailure;
        Clock::time_point nextTurn;
    };

    Clock::duration delayAfter(unsigned failures) const;
    void forgetOld(Clock::time_point now);

    const Settings _settings;
    std::mutex _mutex;
    std::unordered_map<std::string, Record> _records;
    LogLimiter _log{10, std::chrono::minutes(1)};
};

}  // namespace zda::cimserver

#endif
