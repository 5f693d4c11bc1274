#include "EnumerationContexts.h"

#include <Pegasus/Common/Exception.h>

#include <deque>
#include <random>
#include <sstream>

using namespace Pegasus;

namespace zda::server
{

namespace
{

using Clock = std::chrono::steady_clock;

// Thrown into a producer whose context has ended, to stop its enumeration.
struct ContextEnded
{};

String text(const std::string& s)
{
    return String(s.c_str());
}

}  // namespace

struct EnumerationContexts::Context
{
    std::string name;
    std::string user;
    bool paths = false;
    std::chrono::milliseconds timeout{0};
    Clock::time_point deadline;
    std::deque<Item> buffer;
    bool produced = false;  // the producer has returned or failed
    std::exception_ptr failure;
    bool ended = false;
    bool busy = false;  // a request is using it
};

EnumerationContexts::EnumerationContexts(PullLimits limits) : _limits(limits)
{
    _reaper = std::thread([this] { reap(); });
}

EnumerationContexts::~EnumerationContexts()
{
    std::unique_lock<std::mutex> lock(_mutex);
    _stopping = true;
    while (!_contexts.empty())
        end(_contexts.begin()->second, lock);
    _changed.notify_all();
    _deadlines.notify_all();
    _changed.wait(lock, [&] { return _producers == 0; });
    lock.unlock();
    _reaper.join();
}

std::chrono::milliseconds EnumerationContexts::timeoutFor(std::optional<Uint32> seconds) const
{
    if (!seconds)
        return _limits.defaultTimeout;
    const std::chrono::milliseconds asked = std::chrono::seconds(*seconds);
    if (*seconds == 0 || asked > _limits.maxTimeout)
        throw CIMException(CIM_ERR_INVALID_OPERATION_TIMEOUT,
            "OperationTimeout must be from 1 to " + text(std::to_string(_limits.maxTimeout.count() / 1000)) +
                " seconds.");
    return asked;
}

void EnumerationContexts::checkObjectCount(Uint32 count) const
{
    if (count > _limits.maxObjectCount)
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
            "MaxObjectCount may be at most " + text(std::to_string(_limits.maxObjectCount)) + ".");
}

EnumerationContexts::Opened EnumerationContexts::open(const std::string& user, bool paths,
    std::chrono::milliseconds timeout, Producer produce, Uint32 maxObjectCount, const Take& take)
{
    auto context = std::make_shared<Context>();
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (_stopping)
            throw CIMException(CIM_ERR_SERVER_IS_SHUTTING_DOWN, "The server is shutting down.");
        if (_contexts.size() >= _limits.maxContexts)
            throw CIMException(CIM_ERR_SERVER_LIMITS_EXCEEDED,
                "The server has " + text(std::to_string(_contexts.size())) +
                    " open enumeration contexts, the most it allows; finish or close one first.");
        if (_perUser[user] >= _limits.maxContextsPerUser)
            throw CIMException(CIM_ERR_SERVER_LIMITS_EXCEEDED,
                "User " + text(user) + " has " + text(std::to_string(_perUser[user])) +
                    " open enumeration contexts, the most allowed per user; finish or close "
                    "one first.");
        // A name that is hard to guess: the counter keeps it unique, the
        // random part keeps other clients from naming contexts they did
        // not open.
        static std::mt19937_64 random{std::random_device{}()};
        std::ostringstream name;
        name << "zda-enum-" << ++_next << "-" << std::hex << random();
        context->name = name.str();
        context->user = user;
        context->paths = paths;
        context->timeout = timeout;
        context->busy = true;  // the open's own first pull follows
        _contexts.emplace(context->name, context);
        ++_perUser[user];
        ++_producers;
    }
    std::thread([this, context, produce = std::move(produce)] {
        std::exception_ptr failure;
        try
        {
            produce([this, &context](Item&& item) {
                std::unique_lock<std::mutex> lock(_mutex);
                _changed.wait(
                    lock, [&] { return context->ended || context->buffer.size() < _limits.bufferSize; });
                if (context->ended)
                    throw ContextEnded();
                context->buffer.push_back(std::move(item));
                _changed.notify_all();
            });
        }
        catch (const ContextEnded&)
        {}
        catch (...)
        {
            failure = std::current_exception();
        }
        std::lock_guard<std::mutex> lock(_mutex);
        context->produced = true;
        if (!context->ended)
            context->failure = failure;
        --_producers;
        _changed.notify_all();
    }).detach();
    Opened opened;
    opened.endOfSequence = deliver(context, maxObjectCount, take);
    if (!opened.endOfSequence)
        opened.name = context->name;
    return opened;
}

std::shared_ptr<EnumerationContexts::Context> EnumerationContexts::claim(
    const std::string& user, const std::string& name, std::optional<bool> paths)
{
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _contexts.find(name);
    if (it == _contexts.end() || it->second->user != user)
        throw CIMException(CIM_ERR_INVALID_ENUMERATION_CONTEXT,
            "The enumeration context \"" + text(name) +
                "\" is not open: it ended, timed out or never existed.");
    std::shared_ptr<Context> context = it->second;
    if (paths && *paths != context->paths)
        throw CIMException(CIM_ERR_INVALID_ENUMERATION_CONTEXT,
            "The enumeration context \"" + text(name) + "\" was opened for " +
                (context->paths ? "paths: continue it with PullInstancePaths."
                                : "instances: continue it with PullInstancesWithPath."));
    if (context->busy)
        throw CIMException(CIM_ERR_SERVER_LIMITS_EXCEEDED,
            "The enumeration context \"" + text(name) + "\" is in use by another request.");
    context->busy = true;
    return context;
}

void EnumerationContexts::release(const std::shared_ptr<Context>& context, bool endIt)
{
    std::unique_lock<std::mutex> lock(_mutex);
    context->busy = false;
    if (endIt || context->ended)
    {
        end(context, lock);
    }
    else
    {
        context->deadline = Clock::now() + context->timeout;
        _deadlines.notify_all();
    }
    _changed.notify_all();
}

void EnumerationContexts::end(const std::shared_ptr<Context>& which, std::unique_lock<std::mutex>&)
{
    // `which` may be the table's own entry, which is erased below.
    const std::shared_ptr<Context> context = which;
    if (!context->ended)
    {
        context->ended = true;
        std::deque<Item>().swap(context->buffer);
    }
    auto it = _contexts.find(context->name);
    if (it != _contexts.end() && it->second == context)
    {
        _contexts.erase(it);
        auto user = _perUser.find(context->user);
        if (user != _perUser.end() && --user->second == 0)
            _perUser.erase(user);
    }
    _changed.notify_all();
}

bool EnumerationContexts::pull(
    const std::string& user, const std::string& name, bool paths, Uint32 maxObjectCount, const Take& take)
{
    return deliver(claim(user, name, paths), maxObjectCount, take);
}

bool EnumerationContexts::deliver(
    const std::shared_ptr<Context>& context, Uint32 maxObjectCount, const Take& take)
{
    try
    {
        for (Uint32 taken = 0;;)
        {
            std::unique_lock<std::mutex> lock(_mutex);
            if (taken == maxObjectCount)
            {
                // Say so now when nothing is left, so that the client needs
                // no further pull.
                const bool finished = context->buffer.empty() && context->produced && !context->failure;
                lock.unlock();
                release(context, finished);
                return finished;
            }
            _changed.wait(
                lock, [&] { return context->ended || !context->buffer.empty() || context->produced; });
            if (context->ended)
                throw CIMException(CIM_ERR_SERVER_IS_SHUTTING_DOWN, "The server is shutting down.");
            if (!context->buffer.empty())
            {
                Item item = std::move(context->buffer.front());
                context->buffer.pop_front();
                _changed.notify_all();
                lock.unlock();
                take(item);
                ++taken;
                continue;
            }
            // Produced and nothing left: the end, or the producer's failure
            // (which the handler below passes on after ending the context).
            if (context->failure)
                std::rethrow_exception(context->failure);
            lock.unlock();
            release(context, true);
            return true;
        }
    }
    catch (...)
    {
        release(context, true);
        throw;
    }
}

void EnumerationContexts::close(const std::string& user, const std::string& name)
{
    release(claim(user, name, std::nullopt), true);
}

std::size_t EnumerationContexts::openCount() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _contexts.size();
}

void EnumerationContexts::reap()
{
    std::unique_lock<std::mutex> lock(_mutex);
    while (!_stopping)
    {
        const Clock::time_point now = Clock::now();
        std::optional<Clock::time_point> next;
        for (auto it = _contexts.begin(); it != _contexts.end();)
        {
            std::shared_ptr<Context> context = (it++)->second;
            if (context->busy)
                continue;
            if (context->deadline <= now)
                end(context, lock);
            else if (!next || context->deadline < *next)
                next = context->deadline;
        }
        if (next)
            _deadlines.wait_until(lock, *next);
        else
            _deadlines.wait(lock);
    }
}

}  // namespace zda::server
