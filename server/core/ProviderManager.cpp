#include "ProviderManager.h"

#include "CurrentRequest.h"
#include "SchemaObjects.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMOMHandleBackend.h>

#include <cxxabi.h>
#include <dlfcn.h>

#include <algorithm>

using namespace Pegasus;

namespace zda::server
{

// The signature of a module's entry.
typedef CIMProvider* (*CreateProviderFunction)(const String& providerName);

struct ProviderManager::Entry
{
    enum class State
    {
        Idle,
        Initializing,
        Ready,
        Failed,
        Terminated
    };

    ProviderId id;
    State state = State::Idle;
    std::thread::id initializer;  // while Initializing
    CIMProvider* provider = nullptr;
    CIMOMHandle handle;
    std::string error;  // while Failed
    int leases = 0;
};

namespace
{

std::string entryKey(const ProviderId& id)
{
    return foldedKey(id.moduleName) + "\n" + foldedKey(id.providerName);
}

// The text of whatever a module threw.
std::string describeCurrentException()
{
    try
    {
        throw;
    }
    catch (const Exception& e)
    {
        return toUtf8(e.getMessage());
    }
    catch (const std::exception& e)
    {
        return e.what();
    }
    catch (...)
    {
        return "unknown exception";
    }
}

}  // namespace

ProviderManager::ProviderManager(
    std::string modulesDirectory, const ProviderRegistry& registry, HandleFactory makeHandle, LogSink log)
    : _modulesDirectory(std::move(modulesDirectory)), _registry(registry), _makeHandle(std::move(makeHandle)),
      _log(std::move(log))
{}

ProviderManager::~ProviderManager()
{
    shutdown();
}

ProviderManager::Lease::Lease(Lease&& other) noexcept : _manager(other._manager), _entry(other._entry)
{
    other._entry = nullptr;
}

ProviderManager::Lease::~Lease()
{
    if (_entry)
        _manager->release(_entry);
}

CIMProvider& ProviderManager::Lease::provider() const
{
    return *_entry->provider;
}

void ProviderManager::release(Entry* entry)
{
    std::lock_guard<std::mutex> lock(_mutex);
    if (--entry->leases == 0 && _shuttingDown)
        _changed.notify_all();
}

std::size_t ProviderManager::initializedCount() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return static_cast<std::size_t>(std::count_if(_entries.begin(), _entries.end(),
        [](const auto& e) { return e.second->state == Entry::State::Ready; }));
}

bool ProviderManager::waitWouldDeadlock(const Entry& target) const
{
    const std::thread::id me = std::this_thread::get_id();
    const Entry* next = &target;
    // Follow "initialized by thread T, which waits for the initialization
    // of ..." until the chain ends or comes back to this thread.
    for (std::size_t steps = 0; steps <= _entries.size(); ++steps)
    {
        if (next->initializer == me)
            return true;
        auto waiting = _waitingFor.find(next->initializer);
        if (waiting == _waitingFor.end())
            return false;
        next = waiting->second;
        if (next->state != Entry::State::Initializing)
            return false;
    }
    return true;
}

ProviderManager::Lease ProviderManager::acquire(const ProviderId& id)
{
    std::unique_lock<std::mutex> lock(_mutex);
    const std::thread::id me = std::this_thread::get_id();
    for (;;)
    {
        if (_shuttingDown)
            throw CIMException(CIM_ERR_SERVER_IS_SHUTTING_DOWN,
                "The provider " + toString(id.text()) + " cannot serve: the server is shutting down.");
        std::unique_ptr<Entry>& slot = _entries[entryKey(id)];
        if (!slot)
        {
            slot = std::make_unique<Entry>();
            slot->id = id;
        }
        Entry& entry = *slot;
        switch (entry.state)
        {
        case Entry::State::Ready: ++entry.leases; return Lease(this, &entry);
        case Entry::State::Failed:
        case Entry::State::Terminated: throw CIMException(CIM_ERR_FAILED, toString(entry.error));
        case Entry::State::Initializing:
            if (waitWouldDeadlock(entry))
            {
                throw CIMException(CIM_ERR_FAILED,
                    "The provider " + toString(id.text()) +
                        " is still being initialized, and its initialization depends on this request.");
            }
            _waitingFor[me] = &entry;
            _changed.wait(lock, [&] { return entry.state != Entry::State::Initializing || _shuttingDown; });
            _waitingFor.erase(me);
            continue;
        case Entry::State::Idle: break;
        }

        // This thread initializes the provider; others wait on the state.
        entry.state = Entry::State::Initializing;
        entry.initializer = me;
        lock.unlock();
        load(entry);
        lock.lock();
        entry.initializer = std::thread::id();
        if (entry.state == Entry::State::Ready)
            _initializationOrder.push_back(&entry);
        _changed.notify_all();
        if (entry.state == Entry::State::Failed)
            _log(2, entry.error);
    }
}

void ProviderManager::load(Entry& entry)
{
    using State = Entry::State;
    auto fail = [&](std::string why) {
        entry.error = "The provider " + entry.id.text() + " is not available: " + why;
        std::lock_guard<std::mutex> lock(_mutex);
        entry.state = State::Failed;
    };

    std::optional<ProviderModuleInfo> module = _registry.module(entry.id.moduleName);
    if (!module)
        return fail("its module " + toUtf8(entry.id.moduleName) + " is not registered");

    // Open the module once; a second thread that opened it at the same time
    // drops its own reference.
    const std::string moduleKey = foldedKey(module->name);
    void* create = nullptr;
    {
        std::unique_lock<std::mutex> lock(_mutex);
        Module& m = _modules[moduleKey];
        if (!m.tried)
        {
            lock.unlock();
            const std::string path = _modulesDirectory + "/lib" + toUtf8(module->location) + ".so";
            std::string error;
            void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
            void* entryPoint = nullptr;
            if (!handle)
            {
                const char* why = dlerror();
                error = "cannot load " + path + ": " + (why ? why : "unknown error");
            }
            else if (!(entryPoint = dlsym(handle, "PegasusCreateProvider")))
            {
                error = path + " has no PegasusCreateProvider entry";
                dlclose(handle);
                handle = nullptr;
            }
            lock.lock();
            Module& stored = _modules[moduleKey];
            if (!stored.tried)
            {
                stored.tried = true;
                stored.handle = handle;
                stored.create = entryPoint;
                stored.error = error;
                if (!error.empty())
                    _log(2, "provider module " + toUtf8(module->name) + ": " + error);
            }
            else if (handle)
            {
                dlclose(handle);
            }
        }
        Module& loaded = _modules[moduleKey];
        if (!loaded.create)
        {
            std::string error = loaded.error;
            lock.unlock();
            return fail(error);
        }
        create = loaded.create;
    }

    CIMProvider* provider = nullptr;
    try
    {
        provider = reinterpret_cast<CreateProviderFunction>(create)(entry.id.providerName);
    }
    catch (abi::__forced_unwind&)
    {
        throw;
    }
    catch (...)
    {
        return fail("PegasusCreateProvider threw: " + describeCurrentException());
    }
    if (!provider)
        return fail("the module " + toUtf8(module->name) + " creates no provider of that name");

    CIMOMHandle handle = _makeHandle();
    try
    {
        OutsideRequestScope noRequest;
        provider->initialize(handle);
    }
    catch (abi::__forced_unwind&)
    {
        throw;
    }
    catch (...)
    {
        std::string why = describeCurrentException();
        try
        {
            provider->terminate();
        }
        catch (...)
        {
            _log(3,
                "provider " + entry.id.text() +
                    ": terminate after a failed initialize threw: " + describeCurrentException());
        }
        attachCIMOMHandleBackend(handle, nullptr);
        return fail("its initialize failed: " + why);
    }
    std::lock_guard<std::mutex> lock(_mutex);
    entry.provider = provider;
    entry.handle = handle;
    entry.state = State::Ready;
}

void ProviderManager::shutdown()
{
    std::vector<Entry*> toTerminate;
    {
        std::unique_lock<std::mutex> lock(_mutex);
        if (_shuttingDown)
            return;
        _shuttingDown = true;
        _changed.notify_all();
        // Initializations still running finish first, so that their
        // providers are terminated too.
        _changed.wait(lock, [&] {
            return std::none_of(_entries.begin(), _entries.end(),
                [](const auto& e) { return e.second->state == Entry::State::Initializing; });
        });
        toTerminate.assign(_initializationOrder.rbegin(), _initializationOrder.rend());
        _initializationOrder.clear();
    }
    for (Entry* entry : toTerminate)
    {
        {
            std::unique_lock<std::mutex> lock(_mutex);
            _changed.wait(lock, [&] { return entry->leases == 0; });
        }
        try
        {
            entry->provider->terminate();
        }
        catch (abi::__forced_unwind&)
        {
            throw;
        }
        catch (...)
        {
            _log(3, "provider " + entry->id.text() + ": terminate threw: " + describeCurrentException());
        }
        attachCIMOMHandleBackend(entry->handle, nullptr);
        std::lock_guard<std::mutex> lock(_mutex);
        entry->provider = nullptr;
        entry->state = Entry::State::Terminated;
        entry->error = "The provider " + entry->id.text() + " has been terminated.";
    }
    std::lock_guard<std::mutex> lock(_mutex);
    for (auto& [name, module] : _modules)
        if (module.handle)
        {
            dlclose(module.handle);
            module.handle = nullptr;
            module.create = nullptr;
        }
}

}  // namespace zda::server
