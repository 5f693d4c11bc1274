#include "InProcessHost.h"

#include "LoopbackTransport.h"
#include "MofError.h"
#include "MofParser.h"
#include "SchemaObjects.h"
#include "ServerLog.h"

#include <Pegasus/Client/CIMClientTransport.h>
#include <Pegasus/Provider/CIMOMHandleBackend.h>

#include <algorithm>
#include <filesystem>
#include <unistd.h>

using namespace Pegasus;

namespace zda::server
{

namespace
{

std::vector<mof::Declaration> compileDirectories(const std::vector<std::string>& directories)
{
    namespace fs = std::filesystem;
    std::vector<mof::Declaration> all;
    for (const std::string& directory : directories)
    {
        std::vector<std::string> entries;
        std::error_code error;
        for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error))
            if (it->is_regular_file() && it->path().extension() == ".mof")
                entries.push_back(it->path().string());
        if (error)
            throw mof::MofError(
                mof::SourceLocation{directory, 0, 0}, "cannot read the MOF folder: " + error.message());
        std::sort(entries.begin(), entries.end());
        for (const std::string& entry : entries)
        {
            std::vector<mof::Declaration> declarations = mof::parseMofFile(entry, "root/cimv2");
            std::move(declarations.begin(), declarations.end(), std::back_inserter(all));
        }
    }
    return all;
}

}  // namespace

String systemHostName()
{
    char buffer[256] = {0};
    if (gethostname(buffer, sizeof(buffer) - 1) != 0 || buffer[0] == '\0')
        return "localhost";
    return String(buffer);
}

OperationContext InProcessHost::contextFor(const String& userName, const String& ipAddress)
{
    OperationContext context;
    context.insert(IdentityContainer(userName, ipAddress));
    return context;
}

bool InProcessHost::isInternalNamespace(const CIMNamespaceName& nameSpace)
{
    return !nameSpace.isNull() && nameSpace.equal("root/PG_Internal");
}

InProcessHost::InProcessHost(HostOptions options)
{
    ProviderManager::LogSink log = options.log ? options.log : ProviderManager::LogSink(logLine);
    _repository = std::make_unique<ClassRepository>(compileDirectories(options.mofDirectories));
    if (_repository->namespaceExists(options.interopNamespace))
        for (const CIMNamespaceName& alias : options.interopAliases)
            if (!_repository->namespaceExists(alias))
                _repository->addNamespaceAlias(alias, options.interopNamespace);
    _registry = ProviderRegistry::fromRepository(*_repository, options.interopNamespace, _problems);
    for (const std::string& problem : _problems)
        log(3, "provider registration: " + problem);

    // Providers are created only after the dispatcher exists, so the
    // factory can hand out the backend already bound to it.
    _providers = std::make_unique<ProviderManager>(
        options.modulesDirectory, _registry,
        [this] {
            CIMOMHandle handle;
            attachCIMOMHandleBackend(handle, _backend);
            return handle;
        },
        log);
    DispatcherOptions dispatcherOptions;
    dispatcherOptions.hostName = options.hostName.size() ? options.hostName : systemHostName();
    dispatcherOptions.localUser = options.localUser;
    dispatcherOptions.log = log;
    _dispatcher = std::make_shared<Dispatcher>(*_repository, _registry, *_providers, dispatcherOptions);
    _backend = std::make_shared<DispatcherBackend>(_dispatcher);
    if (options.installLoopback)
    {
        CIMClientTransports::setLoopbackTransportFactory(loopbackTransportFactory(_dispatcher));
        _loopbackInstalled = true;
    }
}

InProcessHost::~InProcessHost()
{
    shutdown();
    // Handles or clients kept beyond shutdown now fail cleanly.
    _dispatcher.reset();
}

void InProcessHost::shutdown()
{
    if (_shutDown)
        return;
    _shutDown = true;
    if (_loopbackInstalled)
        CIMClientTransports::setLoopbackTransportFactory(CIMClientLoopbackTransportFactory());
    _providers->shutdown();
}

}  // namespace zda::server
