#include "ProviderRegistry.h"

#include "ClassRepository.h"
#include "SchemaObjects.h"

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>

#include <set>

using namespace Pegasus;

namespace zda::server
{

std::string foldedKey(const String& s)
{
    // Names are nearly always ASCII: fold them without a UTF-8 copy first.
    const Char16* data = s.getChar16Data();
    std::string out(s.size(), '\0');
    for (Uint32 i = 0; i < s.size(); ++i)
    {
        const Uint16 c = data[i];
        if (c >= 0x80)
        {
            out = toUtf8(s);
            break;
        }
        out[i] = static_cast<char>(c);
    }
    for (char& c : out)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return out;
}

std::string ProviderId::text() const
{
    return toUtf8(moduleName) + "/" + toUtf8(providerName);
}

namespace
{

// The value of a property as a string, or nothing when absent, null or of
// another type.
std::optional<String> stringProperty(const CIMInstance& instance, const char* name)
{
    Uint32 i = instance.findProperty(name);
    if (i == PEG_NOT_FOUND)
        return std::nullopt;
    const CIMValue& v = instance.getProperty(i).getValue();
    if (v.isNull() || v.isArray() || v.getType() != CIMTYPE_STRING)
        return std::nullopt;
    String s;
    v.get(s);
    return s;
}

template <class T>
std::vector<T> arrayProperty(const CIMInstance& instance, const char* name)
{
    std::vector<T> out;
    Uint32 i = instance.findProperty(name);
    if (i == PEG_NOT_FOUND)
        return out;
    const CIMValue& v = instance.getProperty(i).getValue();
    if (v.isNull() || !v.isArray())
        return out;
    Array<T> a;
    try
    {
        v.get(a);
    }
    catch (const TypeMismatchException&)
    {
        return out;
    }
    for (Uint32 k = 0; k < a.size(); ++k)
        out.push_back(a[k]);
    return out;
}

std::string describe(const CIMInstance& instance)
{
    return toUtf8(instance.getPath().toString());
}

}  // namespace

std::string ProviderRegistry::classKey(
    const CIMNamespaceName& ns, const CIMName& cls, ProviderType type) const
{
    std::string nsKey = foldedKey(ns.getString());
    auto alias = _aliases.find(nsKey);
    if (alias != _aliases.end())
        nsKey = alias->second;
    return nsKey + "\n" + foldedKey(cls.getString()) + "\n" + std::to_string(static_cast<int>(type));
}

bool ProviderRegistry::addModule(const ProviderModuleInfo& module)
{
    return _modules.emplace(foldedKey(module.name), module).second;
}

bool ProviderRegistry::addCapability(const ProviderId& provider, const CIMName& className,
    const std::vector<CIMNamespaceName>& namespaces, const std::vector<ProviderType>& types)
{
    if (!_modules.count(foldedKey(provider.moduleName)))
        return false;
    std::vector<std::string> keys;
    for (const CIMNamespaceName& ns : namespaces)
        for (ProviderType type : types)
        {
            std::string key = classKey(ns, className, type);
            if (_byClass.count(key))
                return false;
            keys.push_back(std::move(key));
        }
    for (const std::string& key : keys)
        _byClass.emplace(key, provider);
    return true;
}

std::optional<ProviderId> ProviderRegistry::find(
    const CIMNamespaceName& nameSpace, const CIMName& className, ProviderType type) const
{
    auto it = _byClass.find(classKey(nameSpace, className, type));
    if (it == _byClass.end())
        return std::nullopt;
    return it->second;
}

std::optional<ProviderModuleInfo> ProviderRegistry::module(const String& moduleName) const
{
    auto it = _modules.find(foldedKey(moduleName));
    if (it == _modules.end())
        return std::nullopt;
    return it->second;
}

ProviderRegistry ProviderRegistry::fromRepository(const ClassRepository& repository,
    const CIMNamespaceName& interopNamespace, std::vector<std::string>& problems)
{
    ProviderRegistry registry;
    for (const auto& [alias, target] : repository.namespaceAliases())
        registry._aliases[foldedKey(alias.getString())] = foldedKey(target.getString());
    if (!repository.namespaceExists(interopNamespace))
    {
        problems.push_back("no provider registrations: the namespace " +
            toUtf8(interopNamespace.getString()) + " does not exist");
        return registry;
    }
    auto instancesOf = [&](const char* cls) {
        if (!repository.classExists(interopNamespace, cls))
            return Array<CIMInstance>();
        return repository.enumerateInstances(interopNamespace, cls, true);
    };

    Array<CIMInstance> modules = instancesOf("PG_ProviderModule");
    for (Uint32 i = 0; i < modules.size(); ++i)
    {
        std::optional<String> name = stringProperty(modules[i], "Name");
        std::optional<String> location = stringProperty(modules[i], "Location");
        if (!name || !location || location->size() == 0)
        {
            problems.push_back("provider module " + describe(modules[i]) + " has no Name or Location");
            continue;
        }
        if (!registry.addModule(ProviderModuleInfo{*name, *location}))
            problems.push_back("provider module " + toUtf8(*name) + " is registered twice");
    }

    std::set<std::string> providers;
    Array<CIMInstance> declared = instancesOf("PG_Provider");
    for (Uint32 i = 0; i < declared.size(); ++i)
    {
        std::optional<String> module = stringProperty(declared[i], "ProviderModuleName");
        std::optional<String> name = stringProperty(declared[i], "Name");
        if (!module || !name)
            continue;  // keys are required by the class: cannot happen
        if (!registry.module(*module))
        {
            problems.push_back("provider " + toUtf8(*name) + " names the unknown module " + toUtf8(*module));
            continue;
        }
        providers.insert(foldedKey(*module) + "\n" + foldedKey(*name));
    }

    Array<CIMInstance> capabilities = instancesOf("PG_ProviderCapabilities");
    for (Uint32 i = 0; i < capabilities.size(); ++i)
    {
        const CIMInstance& cap = capabilities[i];
        std::optional<String> module = stringProperty(cap, "ProviderModuleName");
        std::optional<String> provider = stringProperty(cap, "ProviderName");
        std::optional<String> className = stringProperty(cap, "ClassName");
        if (!module || !provider || !className || !CIMName::legal(*className))
        {
            problems.push_back("capability " + describe(cap) + " has no valid ClassName");
            continue;
        }
        if (!providers.count(foldedKey(*module) + "\n" + foldedKey(*provider)))
        {
            problems.push_back(
                "capability " + describe(cap) + " names a provider without a PG_Provider instance");
            continue;
        }
        std::vector<CIMNamespaceName> namespaces;
        for (const String& ns : arrayProperty<String>(cap, "Namespaces"))
        {
            try
            {
                namespaces.push_back(CIMNamespaceName(ns));
            }
            catch (const Exception&)
            {
                problems.push_back(
                    "capability " + describe(cap) + " names the invalid namespace " + toUtf8(ns));
            }
        }
        std::vector<ProviderType> types;
        const std::vector<Uint16> declaredTypes = arrayProperty<Uint16>(cap, "ProviderType");
        if (declaredTypes.empty())
            problems.push_back("capability " + describe(cap) + " names no provider type");
        for (Uint16 t : declaredTypes)
        {
            if (t == 2 || t == 3 || t == 5)
                types.push_back(static_cast<ProviderType>(t));
            else
                problems.push_back("capability " + describe(cap) + ": provider type " + std::to_string(t) +
                    " is not served (only 2 instance, 3 association, 5 method)");
        }
        if (types.empty())
            continue;  // reported above
        if (namespaces.empty())
        {
            problems.push_back("capability " + describe(cap) + " names no usable namespace");
            continue;
        }
        if (!registry.addCapability(ProviderId{*module, *provider}, CIMName(*className), namespaces, types))
            problems.push_back(
                "capability " + describe(cap) + " registers a class that already has a provider");
    }
    return registry;
}

}  // namespace zda::server
