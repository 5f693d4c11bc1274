// The CIM server's engine in one object, without any network: the class
// repository compiled from MOF, the provider registrations it declares, the
// provider manager, the dispatcher, the CIMOMHandle backend given to every
// provider, and a loopback through which CIMClient::connectLocal() in this
// process reaches the dispatcher. The server executable puts its listeners
// in front of it; tests drive it directly.
//
// Only one host at a time should exist in a process: the loopback is a
// process-wide registration (the newest host's replaces the older one's,
// and a host removes it when it shuts down).
#ifndef ZDA_SERVER_IN_PROCESS_HOST_H
#define ZDA_SERVER_IN_PROCESS_HOST_H

#include "ClassRepository.h"
#include "Dispatcher.h"
#include "DispatcherBackend.h"
#include "ProviderManager.h"
#include "ProviderRegistry.h"

#include <Pegasus/Common/OperationContext.h>

#include <memory>
#include <string>
#include <vector>

namespace zda::server
{

struct HostOptions
{
    // MOF folders compiled in this order into one repository (each *.mof
    // file directly in a folder is an entry file, compiled in name order).
    std::vector<std::string> mofDirectories;
    // Where lib<Location>.so of each registered module is looked for.
    std::string modulesDirectory;
    // The namespace holding the provider registrations.
    Pegasus::CIMNamespaceName interopNamespace = Pegasus::CIMNamespaceName("root/PG_InterOp");
    // Other names of the interop namespace, the ones discovery clients try
    // first (ignored when the MOF has no interop namespace).
    std::vector<Pegasus::CIMNamespaceName> interopAliases = {
        Pegasus::CIMNamespaceName("interop"), Pegasus::CIMNamespaceName("root/interop")};
    // The identity of connectLocal clients and of requests without one.
    Pegasus::String localUser = "admin";
    // The host name in result paths; empty: the system's host name.
    Pegasus::String hostName;
    // Whether connectLocal() in this process is to reach this host.
    bool installLoopback = true;
    // Receives the host's log lines; empty: the server's log (ServerLog.h).
    ProviderManager::LogSink log;
};

class InProcessHost
{
public:
    // Compiles the MOF, reads the registrations (problems are logged at
    // level 3 and kept, see registrationProblems()) and installs the
    // loopback. Providers are loaded on first use. Throws mof::MofError for
    // MOF that does not compile.
    explicit InProcessHost(HostOptions options);
    // Shuts down.
    ~InProcessHost();

    InProcessHost(const InProcessHost&) = delete;
    InProcessHost& operator=(const InProcessHost&) = delete;

    Dispatcher& dispatcher() { return *_dispatcher; }
    const ClassRepository& repository() const { return *_repository; }
    const ProviderRegistry& registry() const { return _registry; }
    ProviderManager& providers() { return *_providers; }
    const std::vector<std::string>& registrationProblems() const { return _problems; }

    // A request context of an authenticated client.
    static Pegasus::OperationContext contextFor(
        const Pegasus::String& userName, const Pegasus::String& ipAddress = Pegasus::String());

    // Whether `nameSpace` is the server's own (root/PG_Internal, where
    // providers share their caches through in-process calls). Network
    // clients are answered as if it did not exist.
    static bool isInternalNamespace(const Pegasus::CIMNamespaceName& nameSpace);

    // Removes the loopback, terminates the providers and stops serving:
    // later operations that need a provider fail with
    // CIM_ERR_SERVER_IS_SHUTTING_DOWN. Idempotent; not to be called from a
    // provider.
    void shutdown();

private:
    std::unique_ptr<ClassRepository> _repository;
    ProviderRegistry _registry;
    std::vector<std::string> _problems;
    std::shared_ptr<DispatcherBackend> _backend;
    std::unique_ptr<ProviderManager> _providers;
    std::shared_ptr<Dispatcher> _dispatcher;
    bool _loopbackInstalled = false;
    bool _shutDown = false;
};

// The system's host name ("localhost" when it cannot be read).
Pegasus::String systemHostName();

}  // namespace zda::server

#endif
