// Which provider serves which class: the registrations read from the
// PG_ProviderModule, PG_Provider and PG_ProviderCapabilities instances that
// the MOF declares in the interop namespace.
//
// A registry is built once and read-only afterwards; every member is const
// and may be called from any number of threads. Names (modules, providers,
// classes, namespaces) are compared without regard to ASCII case.
#ifndef ZDA_SERVER_PROVIDER_REGISTRY_H
#define ZDA_SERVER_PROVIDER_REGISTRY_H

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zda::server
{

class ClassRepository;

// The interfaces a capability can name (PG_ProviderCapabilities.ProviderType).
enum class ProviderType
{
    Instance = 2,
    Association = 3,
    Method = 5
};

// One provider: the module it lives in and the name PegasusCreateProvider
// is called with, both as registered.
struct ProviderId
{
    Pegasus::String moduleName;
    Pegasus::String providerName;
    // "<module>/<provider>" for messages.
    std::string text() const;
};

struct ProviderModuleInfo
{
    Pegasus::String name;
    // Base name of the library: "X" means libX.so in the modules directory.
    Pegasus::String location;
};

class ProviderRegistry
{
public:
    ProviderRegistry() = default;

    // Reads the registrations from `repository`'s static instances in
    // `interopNamespace`; the repository's namespace aliases find the
    // providers of the namespaces they name. Registrations that cannot be used (a capability
    // naming an unknown module or provider, a module without Location, a
    // class registered twice for the same type) are left out and described
    // in `problems`; the rest are kept. A missing interop namespace gives an
    // empty registry and one problem.
    static ProviderRegistry fromRepository(const ClassRepository& repository,
        const Pegasus::CIMNamespaceName& interopNamespace, std::vector<std::string>& problems);

    // Registers one capability directly (used by fromRepository and by hosts
    // that register providers without MOF). Returns false when the module is
    // unknown or the class already has a provider of that type in one of
    // the namespaces; nothing is changed then.
    bool addModule(const ProviderModuleInfo& module);
    bool addCapability(const ProviderId& provider, const Pegasus::CIMName& className,
        const std::vector<Pegasus::CIMNamespaceName>& namespaces, const std::vector<ProviderType>& types);

    // The provider registered for exactly `className` in `nameSpace` with
    // `type`, or nothing.
    std::optional<ProviderId> find(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, ProviderType type) const;

    // The module of that name, or nothing.
    std::optional<ProviderModuleInfo> module(const Pegasus::String& moduleName) const;

    std::size_t capabilityCount() const { return _byClass.size(); }

private:
    // "<ns>\n<class>\n<type>" folded, an alias replaced by its namespace.
    std::string classKey(
        const Pegasus::CIMNamespaceName& ns, const Pegasus::CIMName& cls, ProviderType type) const;

    std::map<std::string, std::string> _aliases;         // folded alias -> folded namespace
    std::map<std::string, ProviderModuleInfo> _modules;  // by folded name
    // "<ns>\n<class>\n<type>" folded -> provider
    std::map<std::string, ProviderId> _byClass;
};

// ASCII case folding of a UTF-8 copy of `s`: the key used for names.
std::string foldedKey(const Pegasus::String& s);

}  // namespace zda::server

#endif
