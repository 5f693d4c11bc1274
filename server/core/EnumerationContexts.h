// The open enumeration contexts of the pull operations.
//
// An open runs the enumeration on a thread of its own (the producer); each
// result goes into the context's buffer, and the producer waits while the
// buffer is full. Pulls take results out, so the producer is paced by the
// client and a context never holds more than `bufferSize` results,
// however long the enumeration is. Results are held encoded, ready for
// the answer.
//
// A context belongs to the user who opened it; it ends when a pull reaches
// the end of the sequence, on close, when the producer fails (the failure
// is the answer to the pull that meets it: errors do not continue), and
// when no request used it within its operation timeout. Ending it drops its
// buffer at once and makes the producer's next result fail, so the
// enumeration stops. Limits on open contexts, per server and per user,
// keep abandoned contexts from piling up.
//
// Thread safety: every member may be called from any number of threads.
#ifndef ZDA_SERVER_ENUMERATION_CONTEXTS_H
#define ZDA_SERVER_ENUMERATION_CONTEXTS_H

#include <Pegasus/Common/Config.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace zda::server
{

struct PullLimits
{
    // The operation timeout of an open that names none, and the longest one
    // a client may ask for (0, "never", is refused too).
    std::chrono::milliseconds defaultTimeout{std::chrono::seconds(30)};
    std::chrono::milliseconds maxTimeout{std::chrono::seconds(90)};
    // The most results one open or pull may ask for.
    Pegasus::Uint32 maxObjectCount = 10000;
    // Contexts open at once, in the whole server and per user.
    unsigned maxContexts = 64;
    unsigned maxContextsPerUser = 16;
    // Results a producer may be ahead of the pulls.
    std::size_t bufferSize = 256;
};

class EnumerationContexts
{
public:
    // One result, already encoded as it goes into a pull's answer: the
    // producer encodes what a provider delivers before the provider gets
    // control back, since the provider may reuse its objects.
    using Item = std::string;
    // Runs the enumeration, handing each result to `emit`. emit() throws
    // when the context has ended; the producer lets that pass.
    using Emit = std::function<void(Item&&)>;
    using Producer = std::function<void(const Emit& emit)>;
    using Take = std::function<void(const Item&)>;

    explicit EnumerationContexts(PullLimits limits = PullLimits());
    // Ends every context and waits for their producers.
    ~EnumerationContexts();

    EnumerationContexts(const EnumerationContexts&) = delete;
    EnumerationContexts& operator=(const EnumerationContexts&) = delete;

    const PullLimits& limits() const { return _limits; }

    // The operation timeout for a request's OperationTimeout (seconds; none
    // given: the default). CIM_ERR_INVALID_OPERATION_TIMEOUT for 0 and for
    // more than the longest allowed.
    std::chrono::milliseconds timeoutFor(std::optional<Pegasus::Uint32> seconds) const;
    // CIM_ERR_INVALID_PARAMETER when `count` exceeds the limit.
    void checkObjectCount(Pegasus::Uint32 count) const;

    // Opens a context for `user`, starts `produce` and pulls the first
    // `maxObjectCount` results as pull() does; returns the context's name
    // (empty when the sequence already ended). `paths` says which pull
    // operation may continue it. Past a limit on open contexts:
    // CIM_ERR_SERVER_LIMITS_EXCEEDED, and nothing runs.
    struct Opened
    {
        std::string name;
        bool endOfSequence = false;
    };
    Opened open(const std::string& user, bool paths, std::chrono::milliseconds timeout, Producer produce,
        Pegasus::Uint32 maxObjectCount, const Take& take);

    // Passes up to `maxObjectCount` results of the context to `take`, in
    // order, waiting for the producer as needed; returns true when the
    // sequence ended (the context is then gone). An unknown or ended
    // context, one of another user, or one of the other pull operation:
    // CIM_ERR_INVALID_ENUMERATION_CONTEXT; a context that another request
    // is using: CIM_ERR_SERVER_LIMITS_EXCEEDED; the producer's failure ends
    // the context and is thrown. When `take` throws, the context ends too.
    bool pull(const std::string& user, const std::string& name, bool paths, Pegasus::Uint32 maxObjectCount,
        const Take& take);

    // Ends the context. Errors as for pull().
    void close(const std::string& user, const std::string& name);

    // Contexts open now.
    std::size_t openCount() const;

private:
    struct Context;

    std::shared_ptr<Context> claim(
        const std::string& user, const std::string& name, std::optional<bool> paths);
    void release(const std::shared_ptr<Context>& context, bool end);
    bool deliver(const std::shared_ptr<Context>& context, Pegasus::Uint32 maxObjectCount, const Take& take);
    void end(const std::shared_ptr<Context>& context, std::unique_lock<std::mutex>& lock);
    void reap();

    const PullLimits _limits;
    mutable std::mutex _mutex;
    std::condition_variable _changed;    // buffers, producers
    std::condition_variable _deadlines;  // the reaper's
    std::map<std::string, std::shared_ptr<Context>> _contexts;
    std::map<std::string, unsigned> _perUser;
    unsigned long _next = 0;
    unsigned _producers = 0;  // producer threads still running
    bool _stopping = false;
    std::thread _reaper;
};

}  // namespace zda::server

#endif
