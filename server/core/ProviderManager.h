// Loads provider modules and keeps their providers: each provider is
// created once by name, initialized once, and terminated at shutdown.
//
// A module is the library lib<Location>.so in the modules directory, opened
// with dlopen; its providers come from its PegasusCreateProvider entry.
// Each provider gets a CIMOMHandle of its own, made by the handle factory
// the manager was given (the host attaches its backend to it).
//
// Thread safety: every member may be called from any thread at once. The
// manager holds its lock only for its own bookkeeping, never across a call
// into a module (dlopen, PegasusCreateProvider, initialize, terminate), so a
// provider may call back into the server from any of them. Initialization
// happens on the first request for a provider; concurrent first requests
// wait for the one initialization. A request that would have to wait for an
// initialization that is itself waiting, directly or through other
// initializations, for the requesting thread (a provider reaching itself
// from its own initialize, or two providers reaching each other from
// theirs) is refused at once with CIM_ERR_FAILED instead of deadlocking.
// initialize() runs outside any request, even when a request caused it, so
// its upcalls carry the local identity.
#ifndef ZDA_SERVER_PROVIDER_MANAGER_H
#define ZDA_SERVER_PROVIDER_MANAGER_H

#include "ProviderRegistry.h"
#include "ServerLog.h"

#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMProvider.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zda::server
{

class ProviderManager
{
    struct Entry;

public:
    // Makes the handle given to one provider's initialize().
    using HandleFactory = std::function<Pegasus::CIMOMHandle()>;
    using LogSink = zda::server::LogSink;

    // `registry` must outlive the manager.
    ProviderManager(std::string modulesDirectory, const ProviderRegistry& registry, HandleFactory makeHandle,
        LogSink log);
    // Shuts down (see shutdown()).
    ~ProviderManager();

    ProviderManager(const ProviderManager&) = delete;
    ProviderManager& operator=(const ProviderManager&) = delete;

    // A provider in use. While a lease exists the provider is not
    // terminated; shutdown() waits for it. Movable, not copyable.
    class Lease
    {
    public:
        Lease(Lease&& other) noexcept;
        Lease& operator=(Lease&&) = delete;
        ~Lease();
        Pegasus::CIMProvider& provider() const;

    private:
        friend class ProviderManager;
        Lease(ProviderManager* manager, Entry* entry) : _manager(manager), _entry(entry) {}
        ProviderManager* _manager;
        Entry* _entry;
    };

    // The provider `id`, loaded, created and initialized if this is its first
    // use. Throws CIMException CIM_ERR_FAILED when its module is not
    // registered, cannot be loaded or has no PegasusCreateProvider, when the
    // module creates no provider of that name, when initialize() threw (such
    // a provider stays failed: later requests get the same error), or to
    // break a wait that would deadlock (see above);
    // CIM_ERR_SERVER_IS_SHUTTING_DOWN after shutdown() began. The failures of
    // loading are logged once, at level 2.
    Lease acquire(const ProviderId& id);

    // Terminates every initialized provider, the most recently initialized
    // first, after the leases on it are released; detaches the backend from
    // its handle; then closes the modules. Later acquire() calls fail.
    // Idempotent. Must not be called from inside a provider call.
    void shutdown();

    // How many providers are initialized and not yet terminated.
    std::size_t initializedCount() const;

private:
    struct Module
    {
        void* handle = nullptr;
        void* create = nullptr;  // PegasusCreateProvider
        std::string error;       // set when loading failed
        bool tried = false;
    };

    void load(Entry& entry);                            // called without the lock, by the initializing thread
    bool waitWouldDeadlock(const Entry& target) const;  // needs the lock
    void release(Entry* entry);

    const std::string _modulesDirectory;
    const ProviderRegistry& _registry;
    const HandleFactory _makeHandle;
    const LogSink _log;

    mutable std::mutex _mutex;
    std::condition_variable _changed;
    bool _shuttingDown = false;
    std::map<std::string, std::unique_ptr<Entry>> _entries;  // by folded "module\nprovider"
    std::map<std::string, Module> _modules;                  // by folded module name
    std::map<std::thread::id, const Entry*> _waitingFor;     // threads waiting for an initialization
    std::vector<Entry*> _initializationOrder;
};

}  // namespace zda::server

#endif
