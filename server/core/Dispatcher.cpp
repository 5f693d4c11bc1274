#include "Dispatcher.h"

#include "ClassRepository.h"
#include "CurrentRequest.h"
#include "ParameterTyping.h"
#include "ProviderErrors.h"
#include "ResponseCollectors.h"
#include "SchemaObjects.h"

#include <Pegasus/Common/CIMObjectAccess.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>

#include <utility>
#include <vector>

using namespace Pegasus;

namespace zda::server
{

namespace
{

thread_local int operationDepth = 0;
thread_local OperationContext lastResponse;

std::string folded(const CIMName& name)
{
    return foldedKey(name.getString());
}

String nameText(const CIMName& name)
{
    return name.getString();
}
String nameText(const CIMNamespaceName& name)
{
    return name.getString();
}

// Same object: class and keys equal; host ignored, an empty namespace
// taken as `nameSpace`.
bool samePath(const CIMObjectPath& a, const CIMObjectPath& b, const CIMNamespaceName& nameSpace)
{
    CIMObjectPath x(String(), a.getNameSpace().isNull() ? nameSpace : a.getNameSpace(), a.getClassName(),
        a.getKeyBindings());
    CIMObjectPath y(String(), b.getNameSpace().isNull() ? nameSpace : b.getNameSpace(), b.getClassName(),
        b.getKeyBindings());
    return x.identical(y);
}

}  // namespace

// The parts of a class the dispatcher filters and routes by; computed once
// per class (the repository never changes).
struct Dispatcher::ClassShape
{
    struct Reference
    {
        std::string name;  // folded
        CIMName referenceClass;
    };
    CIMClass full;              // every property and method, with qualifiers and origins
    std::set<std::string> all;  // folded property names
    std::vector<Reference> references;
};

struct Dispatcher::FinishMemo
{
    CIMNamespaceName where;
    CIMName deliveredClass;
    std::shared_ptr<const ClassShape> own;
    std::shared_ptr<const ClassShape> requested;
    // Whether the request keeps each property, by its position in the last
    // instance delivered.
    std::vector<std::pair<CIMName, bool>> keeps;
};

// Counts nesting per thread so that the observer hears only of outermost
// operations.
class Dispatcher::OperationScope
{
public:
    OperationScope(const Dispatcher& dispatcher, const char* name) : _dispatcher(dispatcher), _name(name)
    {
        ++operationDepth;
    }
    ~OperationScope()
    {
        if (--operationDepth == 0 && _dispatcher._observer)
        {
            try
            {
                _dispatcher._observer(_name);
            }
            catch (...)
            {
                // An observer's failure must not replace the operation's outcome.
            }
        }
    }

private:
    const Dispatcher& _dispatcher;
    const char* _name;
};

Dispatcher::Dispatcher(const ClassRepository& repository, const ProviderRegistry& registry,
    ProviderManager& providers, DispatcherOptions options)
    : _repository(repository), _registry(registry), _providers(providers), _options(std::move(options))
{}

OperationContext Dispatcher::lastResponseContext()
{
    return lastResponse;
}

// ---- helpers ----------------------------------------------------------------

void Dispatcher::requireNamespace(const CIMNamespaceName& nameSpace) const
{
    if (nameSpace.isNull() || !_repository.namespaceExists(nameSpace))
        throw CIMException(
            CIM_ERR_INVALID_NAMESPACE, "The namespace " + nameText(nameSpace) + " does not exist.");
}

void Dispatcher::requireClass(
    const CIMNamespaceName& nameSpace, const CIMName& className, CIMStatusCode code, const char* what) const
{
    if (className.isNull() || !_repository.classExists(nameSpace, className))
        throw CIMException(code,
            String(what) + " " + nameText(className) + " does not exist in namespace " + nameText(nameSpace) +
                ".");
}

std::shared_ptr<const Dispatcher::ClassShape> Dispatcher::shape(
    const CIMNamespaceName& nameSpace, const CIMName& className) const
{
    if (nameSpace.isNull() || className.isNull())
        return nullptr;
    const std::string key = foldedKey(nameSpace.getString()) + "\n" + folded(className);
    {
        std::lock_guard<std::mutex> lock(_shapesMutex);
        auto it = _shapes.find(key);
        if (it != _shapes.end())
            return it->second;
    }
    if (!_repository.namespaceExists(nameSpace) || !_repository.classExists(nameSpace, className))
        return nullptr;
    auto built = std::make_shared<ClassShape>();
    built->full = _repository.getClass(nameSpace, className, false, true, true);
    for (Uint32 i = 0; i < built->full.getPropertyCount(); ++i)
    {
        CIMConstProperty p = built->full.getProperty(i);
        const std::string name = folded(p.getName());
        built->all.insert(name);
        if (p.getType() == CIMTYPE_REFERENCE)
            built->references.push_back({name, p.getReferenceClassName()});
    }
    std::lock_guard<std::mutex> lock(_shapesMutex);
    return _shapes.emplace(key, std::move(built)).first->second;
}

OperationContext Dispatcher::providerContext(const OperationContext& context) const
{
    OperationContext out(context);
    if (!out.contains(IdentityContainer::NAME))
        out.insert(IdentityContainer(_options.localUser));
    return out;
}

CIMObjectPath Dispatcher::serverPath(
    const CIMNamespaceName& nameSpace, const CIMName& className, const Array<CIMKeyBinding>& keys) const
{
    return CIMObjectPath(_options.hostName, nameSpace, className, keys);
}

void Dispatcher::completePath(CIMObjectPath& path, const CIMNamespaceName& nameSpace) const
{
    if (path.getHost().size() == 0)
        path.setHost(_options.hostName);
    if (path.getNameSpace().isNull())
        path.setNameSpace(nameSpace);
}

CIMObjectPath Dispatcher::finishPath(const CIMObjectPath& delivered, const CIMNamespaceName& nameSpace) const
{
    CIMObjectPath path(delivered);
    completePath(path, nameSpace);
    return path;
}

template <class Interface, class Call>
void Dispatcher::callProvider(
    const ProviderId& id, const OperationContext& context, Call&& call, const CollectorBase* handler)
{
    ProviderManager::Lease lease = _providers.acquire(id);
    Interface* provider = dynamic_cast<Interface*>(&lease.provider());
    if (!provider)
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "Invalid provider interface.");
    CurrentRequestScope scope(context);
    try
    {
        call(*provider);
    }
    catch (const CIMException&)
    {
        if (handler && handler->consumerFailure())
            std::rethrow_exception(handler->consumerFailure());
        throw;  // the provider's own answer
    }
    catch (...)
    {
        // The consumer's failure, passed through the provider: no fault of
        // the provider's.
        if (handler && handler->consumerFailure())
            std::rethrow_exception(handler->consumerFailure());
        // Anything else is a fault of the provider: worth a log line.
        try
        {
            rethrowAsCIMException();
        }
        catch (const CIMException& e)
        {
            if (_options.log)
                _options.log(2,
                    "provider " + id.text() + " failed with a non-CIM exception: " + toUtf8(e.getMessage()));
            throw;
        }
    }
    // A provider that swallowed the consumer's failure still fails.
    if (handler && handler->consumerFailure())
        std::rethrow_exception(handler->consumerFailure());
}

Dispatcher::FinishedInstance Dispatcher::finish(const CIMInstance& delivered,
    const CIMNamespaceName& nameSpace, const CIMName& requestedClass, bool deepInheritance,
    bool includeQualifiers, bool includeClassOrigin, const CIMPropertyList& propertyList,
    FinishMemo* memo) const
{
    const CIMNamespaceName where = delivered.getPath().getNameSpace().isNull()
        ? nameSpace
        : delivered.getPath().getNameSpace();
    FinishMemo local;
    FinishMemo& known = memo ? *memo : local;
    if (known.deliveredClass.isNull() || !known.deliveredClass.equal(delivered.getClassName()) ||
        !known.where.equal(where))
    {
        known.where = where;
        known.deliveredClass = delivered.getClassName();
        known.own = shape(where, delivered.getClassName());
        known.requested = nullptr;
        if (known.own)
        {
            known.requested = shape(where, requestedClass);
            if (!known.requested)
                known.requested = known.own;
        }
        known.keeps.clear();
    }
    const std::shared_ptr<const ClassShape>& own = known.own;

    FinishedInstance finished;
    finished.path = delivered.getPath();
    CIMObjectPath& path = finished.path;
    if (path.getClassName().isNull())
        path.setClassName(delivered.getClassName());
    if (path.getKeyBindings().size() == 0 && own)
    {
        try
        {
            path.setKeyBindings(delivered.buildPath(own->full).getKeyBindings());
        }
        catch (const Exception&)
        {
            // A key the provider did not set: the path stays without keys.
        }
    }
    completePath(path, nameSpace);

    // Which properties the request allows: those of the requested class,
    // plus, with deepInheritance, those the instance's subclass adds.
    const std::shared_ptr<const ClassShape>& requested = known.requested;
    auto allowed = [&](const std::string& name) {
        if (requested->all.count(name))
            return true;
        return deepInheritance && own->all.count(name) && !requested->all.count(name);
    };
    auto keeps = [&](Uint32 i, const CIMName& name) {
        if (i < known.keeps.size() && known.keeps[i].first.equal(name))
            return known.keeps[i].second;
        const bool kept = (!own || allowed(folded(name))) &&
            (propertyList.isNull() || propertyList.contains(name));
        if (i >= known.keeps.size())
            known.keeps.resize(i + 1);
        known.keeps[i] = {name, kept};
        return kept;
    };

    // Providers may deliver the same object to several requests, so the
    // delivered instance is never changed. When the request keeps it whole
    // it is answered as it is; else the answer is a new instance that
    // shares the properties it keeps as they are, and only a property that
    // loses qualifiers or its class origin is copied. (The handles taken
    // from `source` are only read and shared.)
    CIMInstance& source = const_cast<CIMInstance&>(delivered);
    const Uint32 count = source.getPropertyCount();
    // With includeClassOrigin, a property the provider left without its
    // class origin gets the one its class declares.
    auto declaredOrigin = [&](const CIMProperty& property) {
        if (!includeClassOrigin || !property.getClassOrigin().isNull() || !own)
            return CIMName();
        const Uint32 at = own->full.findProperty(property.getName());
        return at == PEG_NOT_FOUND ? CIMName() : own->full.getProperty(at).getClassOrigin();
    };
    bool whole = includeQualifiers || source.getQualifierCount() == 0;
    for (Uint32 i = 0; whole && i < count; ++i)
    {
        const CIMProperty& property = CIMObjectAccess::property(source, i);
        whole = keeps(i, property.getName()) && (includeQualifiers || property.getQualifierCount() == 0) &&
            (includeClassOrigin ? declaredOrigin(property).isNull() : property.getClassOrigin().isNull());
    }
    if (whole)
    {
        finished.instance = delivered;
        return finished;
    }
    CIMInstance instance(delivered.getClassName());
    if (includeQualifiers)
        for (Uint32 q = 0; q < source.getQualifierCount(); ++q)
            instance.addQualifier(source.getQualifier(q));
    for (Uint32 i = 0; i < count; ++i)
    {
        CIMProperty property = source.getProperty(i);
        if (!keeps(i, property.getName()))
            continue;
        const bool dropQualifiers = !includeQualifiers && property.getQualifierCount() != 0;
        const bool dropOrigin = !includeClassOrigin && !property.getClassOrigin().isNull();
        const CIMName addOrigin = declaredOrigin(property);
        if (dropQualifiers || dropOrigin || !addOrigin.isNull())
        {
            property = property.clone();
            if (dropOrigin || !addOrigin.isNull())
                property.setClassOrigin(addOrigin);
            while (dropQualifiers && property.getQualifierCount() != 0)
                property.removeQualifier(property.getQualifierCount() - 1);
        }
        instance.addProperty(property);
    }
    finished.instance = instance;
    return finished;
}

namespace
{
// A new instance sharing the qualifiers and properties of `instance`, with
// `path`: what callers that keep or change the answer get, since
// `instance` may be a provider's own object.
CIMInstance withPath(const CIMInstance& instance, const CIMObjectPath& path)
{
    CIMInstance& source = const_cast<CIMInstance&>(instance);
    CIMInstance answer(instance.getClassName());
    for (Uint32 q = 0; q < source.getQualifierCount(); ++q)
        answer.addQualifier(source.getQualifier(q));
    for (Uint32 i = 0; i < source.getPropertyCount(); ++i)
        answer.addProperty(source.getProperty(i));
    answer.setPath(path);
    return answer;
}
}  // namespace

CIMInstance Dispatcher::finishInstance(const CIMInstance& delivered, const CIMNamespaceName& nameSpace,
    const CIMName& requestedClass, bool deepInheritance, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList, FinishMemo* memo) const
{
    const FinishedInstance f = finish(delivered, nameSpace, requestedClass, deepInheritance,
        includeQualifiers, includeClassOrigin, propertyList, memo);
    return withPath(f.instance, f.path);
}

// ---- classes ----------------------------------------------------------------

CIMClass Dispatcher::getClass(const OperationContext&, const CIMNamespaceName& nameSpace,
    const CIMName& className, bool localOnly, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    OperationScope scope(*this, "GetClass");
    requireNamespace(nameSpace);
    return _repository.getClass(
        nameSpace, className, localOnly, includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMClass> Dispatcher::enumerateClasses(const OperationContext&, const CIMNamespaceName& nameSpace,
    const CIMName& className, bool deepInheritance, bool localOnly, bool includeQualifiers,
    bool includeClassOrigin)
{
    OperationScope scope(*this, "EnumerateClasses");
    requireNamespace(nameSpace);
    return _repository.enumerateClasses(
        nameSpace, className, deepInheritance, localOnly, includeQualifiers, includeClassOrigin);
}

Array<CIMName> Dispatcher::enumerateClassNames(const OperationContext&, const CIMNamespaceName& nameSpace,
    const CIMName& className, bool deepInheritance)
{
    OperationScope scope(*this, "EnumerateClassNames");
    requireNamespace(nameSpace);
    return _repository.enumerateClassNames(nameSpace, className, deepInheritance);
}

void Dispatcher::createClass(const OperationContext&, const CIMNamespaceName& nameSpace, const CIMClass&)
{
    OperationScope scope(*this, "CreateClass");
    requireNamespace(nameSpace);
    throw CIMException(
        CIM_ERR_NOT_SUPPORTED, "Classes cannot be created: the class repository is read-only.");
}

void Dispatcher::modifyClass(const OperationContext&, const CIMNamespaceName& nameSpace, const CIMClass&)
{
    OperationScope scope(*this, "ModifyClass");
    requireNamespace(nameSpace);
    throw CIMException(
        CIM_ERR_NOT_SUPPORTED, "Classes cannot be modified: the class repository is read-only.");
}

void Dispatcher::deleteClass(const OperationContext&, const CIMNamespaceName& nameSpace, const CIMName&)
{
    OperationScope scope(*this, "DeleteClass");
    requireNamespace(nameSpace);
    throw CIMException(
        CIM_ERR_NOT_SUPPORTED, "Classes cannot be deleted: the class repository is read-only.");
}

// ---- instances --------------------------------------------------------------

CIMInstance Dispatcher::getInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, bool localOnly, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    OperationScope scope(*this, "GetInstance");
    requireNamespace(nameSpace);
    requireClass(nameSpace, instanceName.getClassName(), CIM_ERR_INVALID_CLASS, "The class");
    (void)localOnly;  // deprecated for instances: every property is answered
    return getInstanceFor(providerContext(context), nameSpace, instanceName, includeQualifiers,
        includeClassOrigin, propertyList);
}

CIMInstance Dispatcher::getInstanceFor(const OperationContext& providerCtx, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    const CIMName className = instanceName.getClassName();
    CIMInstance found;
    if (std::optional<ProviderId> id = _registry.find(nameSpace, className, ProviderType::Instance))
    {
        InstanceCollector collector(true);
        const CIMObjectPath reference = serverPath(nameSpace, className, instanceName.getKeyBindings());
        callProvider<CIMInstanceProvider>(*id, providerCtx, [&](CIMInstanceProvider& provider) {
            provider.getInstance(
                providerCtx, reference, includeQualifiers, includeClassOrigin, propertyList, collector);
        });
        lastResponse = collector.responseContext();
        if (collector.instances().size() == 0)
            throw CIMException(CIM_ERR_FAILED, "Too few objects delivered.");
        found = collector.instances()[0];
    }
    else
    {
        found = _repository.getInstance(nameSpace, instanceName);
    }
    return finishInstance(
        found, nameSpace, className, true, includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMInstance> Dispatcher::enumerateInstances(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, bool deepInheritance, bool localOnly,
    bool includeQualifiers, bool includeClassOrigin, const CIMPropertyList& propertyList)
{
    Array<CIMInstance> out;
    enumerateInstances(context, nameSpace, className, deepInheritance, localOnly, includeQualifiers,
        includeClassOrigin, propertyList, [&](const CIMInstance& instance, const CIMObjectPath& path) {
            out.append(withPath(instance, path));
        });
    return out;
}

void Dispatcher::enumerateInstances(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMName& className, bool deepInheritance, bool localOnly, bool includeQualifiers,
    bool includeClassOrigin, const CIMPropertyList& propertyList, const InstanceConsumer& consume)
{
    OperationScope scope(*this, "EnumerateInstances");
    (void)localOnly;  // deprecated for instances: every property is answered
    requireNamespace(nameSpace);
    requireClass(nameSpace, className, CIM_ERR_INVALID_CLASS, "The class");
    const OperationContext providerCtx = providerContext(context);

    FinishMemo memo;
    auto finished = [&](const CIMInstance& delivered) {
        const FinishedInstance f = finish(delivered, nameSpace, className, deepInheritance, includeQualifiers,
            includeClassOrigin, propertyList, &memo);
        consume(f.instance, f.path);
    };
    Array<CIMName> classes;
    classes.append(className);
    classes.appendArray(_repository.enumerateClassNames(nameSpace, className, true));
    for (Uint32 c = 0; c < classes.size(); ++c)
    {
        if (std::optional<ProviderId> id = _registry.find(nameSpace, classes[c], ProviderType::Instance))
        {
            InstanceForwarder forwarder(finished);
            const CIMObjectPath reference = serverPath(nameSpace, classes[c]);
            callProvider<CIMInstanceProvider>(
                *id, providerCtx,
                [&](CIMInstanceProvider& provider) {
                    provider.enumerateInstances(providerCtx, reference, includeQualifiers, includeClassOrigin,
                        propertyList, forwarder);
                },
                &forwarder);
            lastResponse = forwarder.responseContext();
        }
        else
        {
            Array<CIMInstance> stored = _repository.enumerateInstances(nameSpace, classes[c], false);
            for (Uint32 i = 0; i < stored.size(); ++i)
                finished(stored[i]);
        }
    }
}

Array<CIMObjectPath> Dispatcher::enumerateInstanceNames(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className)
{
    Array<CIMObjectPath> out;
    enumerateInstanceNames(
        context, nameSpace, className, [&](const CIMObjectPath& path) { out.append(path); });
    return out;
}

void Dispatcher::enumerateInstanceNames(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMName& className, const PathConsumer& consume)
{
    OperationScope scope(*this, "EnumerateInstanceNames");
    requireNamespace(nameSpace);
    requireClass(nameSpace, className, CIM_ERR_INVALID_CLASS, "The class");
    const OperationContext providerCtx = providerContext(context);

    auto finish = [&](const CIMObjectPath& delivered) { consume(finishPath(delivered, nameSpace)); };
    Array<CIMName> classes;
    classes.append(className);
    classes.appendArray(_repository.enumerateClassNames(nameSpace, className, true));
    for (Uint32 c = 0; c < classes.size(); ++c)
    {
        if (std::optional<ProviderId> id = _registry.find(nameSpace, classes[c], ProviderType::Instance))
        {
            ObjectPathForwarder forwarder(finish);
            const CIMObjectPath reference = serverPath(nameSpace, classes[c]);
            callProvider<CIMInstanceProvider>(
                *id, providerCtx,
                [&](CIMInstanceProvider& provider) {
                    provider.enumerateInstanceNames(providerCtx, reference, forwarder);
                },
                &forwarder);
            lastResponse = forwarder.responseContext();
        }
        else
        {
            Array<CIMInstance> stored = _repository.enumerateInstances(nameSpace, classes[c], false);
            for (Uint32 i = 0; i < stored.size(); ++i)
                finish(stored[i].getPath());
        }
    }
}

CIMObjectPath Dispatcher::createInstance(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMInstance& newInstance)
{
    OperationScope scope(*this, "CreateInstance");
    requireNamespace(nameSpace);
    if (newInstance.isUninitialized())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "CreateInstance needs an instance.");
    const CIMName className = newInstance.getClassName();
    requireClass(nameSpace, className, CIM_ERR_INVALID_CLASS, "The class");
    std::optional<ProviderId> id = _registry.find(nameSpace, className, ProviderType::Instance);
    if (!id)
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
            "No instance provider is registered for class " + nameText(className) + " in namespace " +
                nameText(nameSpace) + ": its instances cannot be created.");
    Array<CIMKeyBinding> keys = newInstance.getPath().getKeyBindings();
    if (keys.size() == 0)
    {
        try
        {
            keys = newInstance.buildPath(shape(nameSpace, className)->full).getKeyBindings();
        }
        catch (const Exception&)
        {
            // Keys the client left out are the provider's to choose.
        }
    }
    const OperationContext providerCtx = providerContext(context);
    const CIMObjectPath reference = serverPath(nameSpace, className, keys);
    ObjectPathCollector collector;
    callProvider<CIMInstanceProvider>(*id, providerCtx, [&](CIMInstanceProvider& provider) {
        provider.createInstance(providerCtx, reference, newInstance, collector);
    });
    lastResponse = collector.responseContext();
    if (collector.objectPaths().size() == 0)
        throw CIMException(CIM_ERR_FAILED, "The provider delivered no path for the created instance.");
    return finishPath(collector.objectPaths()[0], nameSpace);
}

void Dispatcher::modifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance, bool includeQualifiers, const CIMPropertyList& propertyList)
{
    OperationScope scope(*this, "ModifyInstance");
    requireNamespace(nameSpace);
    if (modifiedInstance.isUninitialized())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "ModifyInstance needs an instance.");
    requireClass(nameSpace, modifiedInstance.getClassName(), CIM_ERR_INVALID_CLASS, "The class");
    modifyInstanceFor(providerContext(context), nameSpace, modifiedInstance, includeQualifiers, propertyList);
}

void Dispatcher::modifyInstanceFor(const OperationContext& providerCtx, const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance, bool includeQualifiers, const CIMPropertyList& propertyList)
{
    const CIMName className = modifiedInstance.getClassName();
    const Array<CIMKeyBinding>& keys = modifiedInstance.getPath().getKeyBindings();
    if (keys.size() == 0)
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
            "The modified instance of " + nameText(className) + " has no path with keys.");
    std::optional<ProviderId> id = _registry.find(nameSpace, className, ProviderType::Instance);
    if (!id)
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
            "No instance provider is registered for class " + nameText(className) + " in namespace " +
                nameText(nameSpace) + ": its instances cannot be modified.");
    const CIMObjectPath reference = serverPath(nameSpace, className, keys);
    NoResultCollector collector;
    callProvider<CIMInstanceProvider>(*id, providerCtx, [&](CIMInstanceProvider& provider) {
        provider.modifyInstance(
            providerCtx, reference, modifiedInstance, includeQualifiers, propertyList, collector);
    });
    lastResponse = collector.responseContext();
}

void Dispatcher::deleteInstance(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName)
{
    OperationScope scope(*this, "DeleteInstance");
    requireNamespace(nameSpace);
    const CIMName className = instanceName.getClassName();
    requireClass(nameSpace, className, CIM_ERR_INVALID_CLASS, "The class");
    std::optional<ProviderId> id = _registry.find(nameSpace, className, ProviderType::Instance);
    if (!id)
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
            "No instance provider is registered for class " + nameText(className) + " in namespace " +
                nameText(nameSpace) + ": its instances cannot be deleted.");
    const OperationContext providerCtx = providerContext(context);
    const CIMObjectPath reference = serverPath(nameSpace, className, instanceName.getKeyBindings());
    NoResultCollector collector;
    callProvider<CIMInstanceProvider>(*id, providerCtx,
        [&](CIMInstanceProvider& provider) { provider.deleteInstance(providerCtx, reference, collector); });
    lastResponse = collector.responseContext();
}

CIMValue Dispatcher::getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName)
{
    OperationScope scope(*this, "GetProperty");
    requireNamespace(nameSpace);
    const CIMName className = instanceName.getClassName();
    requireClass(nameSpace, className, CIM_ERR_INVALID_CLASS, "The class");
    if (propertyName.isNull() || !shape(nameSpace, className)->all.count(folded(propertyName)))
        throw CIMException(CIM_ERR_NO_SUCH_PROPERTY,
            "The class " + nameText(className) + " has no property " + nameText(propertyName) + ".");
    Array<CIMName> names;
    names.append(propertyName);
    CIMInstance instance = getInstanceFor(
        providerContext(context), nameSpace, instanceName, false, false, CIMPropertyList(names));
    Uint32 index = instance.findProperty(propertyName);
    if (index == PEG_NOT_FOUND)
        throw CIMException(CIM_ERR_NO_SUCH_PROPERTY,
            "The instance " + instanceName.toString() + " has no property " + nameText(propertyName) + ".");
    return instance.getProperty(index).getValue();
}

void Dispatcher::setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue)
{
    OperationScope scope(*this, "SetProperty");
    requireNamespace(nameSpace);
    const CIMName className = instanceName.getClassName();
    requireClass(nameSpace, className, CIM_ERR_INVALID_CLASS, "The class");
    std::shared_ptr<const ClassShape> own = shape(nameSpace, className);
    Uint32 index = propertyName.isNull() ? PEG_NOT_FOUND : own->full.findProperty(propertyName);
    if (index == PEG_NOT_FOUND)
        throw CIMException(CIM_ERR_NO_SUCH_PROPERTY,
            "The class " + nameText(className) + " has no property " + nameText(propertyName) + ".");
    CIMConstProperty declared = own->full.getProperty(index);
    CIMValue value = newValue;
    if (value.isNull())
        value.setNullValue(declared.getType(), declared.isArray());
    if (value.getType() != declared.getType() || value.isArray() != declared.isArray())
        throw CIMException(CIM_ERR_TYPE_MISMATCH,
            "The property " + nameText(declared.getName()) + " is declared " +
                cimTypeToString(declared.getType()) + (declared.isArray() ? "[]" : "") + ".");
    CIMInstance instance(className);
    instance.addProperty(CIMProperty(declared.getName(), value, 0, declared.getReferenceClassName()));
    instance.setPath(serverPath(nameSpace, className, instanceName.getKeyBindings()));
    Array<CIMName> names;
    names.append(declared.getName());
    modifyInstanceFor(providerContext(context), nameSpace, instance, false, CIMPropertyList(names));
}

Array<CIMObject> Dispatcher::execQuery(
    const OperationContext&, const CIMNamespaceName& nameSpace, const String& queryLanguage, const String&)
{
    OperationScope scope(*this, "ExecQuery");
    requireNamespace(nameSpace);
    throw CIMException(
        CIM_ERR_NOT_SUPPORTED, "ExecQuery is not supported (query language " + queryLanguage + ").");
}

// ---- associations -----------------------------------------------------------

// One association request as each of its three sources (class-level
// associations, association providers, MOF association instances) sees it.
struct Dispatcher::AssociationWalk
{
    AssociationOp op;
    CIMNamespaceName nameSpace;
    CIMObjectPath objectName;
    CIMName objectClass;
    CIMObjectPath objectRef;  // the object as providers are asked about it
    CIMName resultClass;
    String role;
    String resultRole;
    std::string roleName;        // folded
    std::string resultRoleName;  // folded; empty for References
    bool toAssociators;
    bool wantsPaths;
    bool includeQualifiers;
    bool includeClassOrigin;
    CIMPropertyList propertyList;
    OperationContext providerCtx;
    ObjectConsumer emitObject;
    PathConsumer emitPath;
};

bool Dispatcher::forEachEnd(const AssociationWalk& walk, const ClassShape& association, bool resultEitherWay,
    const std::function<bool(const CIMName& farClass)>& visit) const
{
    for (const ClassShape::Reference& near : association.references)
    {
        if (!walk.roleName.empty() && near.name != walk.roleName)
            continue;
        if (!_repository.isSubclassOf(walk.nameSpace, walk.objectClass, near.referenceClass))
            continue;
        for (const ClassShape::Reference& far : association.references)
        {
            if (&far == &near)
                continue;
            if (!walk.resultRoleName.empty() && far.name != walk.resultRoleName)
                continue;
            if (!walk.resultClass.isNull() &&
                !_repository.isSubclassOf(walk.nameSpace, far.referenceClass, walk.resultClass) &&
                !(resultEitherWay &&
                    _repository.isSubclassOf(walk.nameSpace, walk.resultClass, far.referenceClass)))
                continue;
            if (visit(far.referenceClass))
                return true;
        }
    }
    return false;
}

void Dispatcher::associate(AssociationOp op, const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole, bool includeQualifiers,
    bool includeClassOrigin, const CIMPropertyList& propertyList, const ObjectConsumer* consumeObject,
    const PathConsumer* consumePath)
{
    requireNamespace(nameSpace);
    const CIMName objectClass = objectName.getClassName();
    requireClass(nameSpace, objectClass, CIM_ERR_INVALID_PARAMETER, "The object name's class");
    if (!assocClass.isNull())
        requireClass(nameSpace, assocClass, CIM_ERR_INVALID_PARAMETER, "The association class");
    if (!resultClass.isNull())
        requireClass(nameSpace, resultClass, CIM_ERR_INVALID_PARAMETER, "The result class");

    AssociationWalk walk;
    walk.op = op;
    walk.nameSpace = nameSpace;
    walk.objectName = objectName;
    walk.objectClass = objectClass;
    walk.objectRef = serverPath(nameSpace, objectClass, objectName.getKeyBindings());
    walk.resultClass = resultClass;
    walk.role = role;
    walk.resultRole = resultRole;
    walk.toAssociators = op == AssociationOp::Associators || op == AssociationOp::AssociatorNames;
    walk.wantsPaths = op == AssociationOp::AssociatorNames || op == AssociationOp::ReferenceNames;
    walk.roleName = foldedKey(role);
    walk.resultRoleName = walk.toAssociators ? foldedKey(resultRole) : std::string();
    walk.includeQualifiers = includeQualifiers;
    walk.includeClassOrigin = includeClassOrigin;
    walk.propertyList = propertyList;
    walk.providerCtx = providerContext(context);
    const CIMName associationFilter = walk.toAssociators ? assocClass : resultClass;

    // An object name without keys names a class: the answer is classes,
    // from the repository alone, passed on as they are.
    const bool ofClass = objectName.getKeyBindings().size() == 0;

    // Only results of the requested result class (for References and
    // ReferenceNames, the association class) are passed on; objects of
    // classes another namespace defines are kept. Each result is finished
    // as it comes.
    auto wantedClass = [&](const CIMName& cls, const CIMNamespaceName& where) {
        if (resultClass.isNull())
            return true;
        const CIMNamespaceName ns = where.isNull() ? nameSpace : where;
        if (!ns.equal(nameSpace) || !_repository.classExists(nameSpace, cls))
            return true;
        return bool(_repository.isSubclassOf(nameSpace, cls, resultClass));
    };
    walk.emitObject = [&](const CIMObject& object) {
        if (ofClass)
        {
            (*consumeObject)(object);
        }
        else if (!wantedClass(object.getClassName(), object.getPath().getNameSpace()))
        {
            return;
        }
        else if (object.isInstance())
        {
            CIMInstance instance(object);
            (*consumeObject)(CIMObject(finishInstance(instance, nameSpace, instance.getClassName(), true,
                includeQualifiers, includeClassOrigin, propertyList)));
        }
        else
        {
            (*consumeObject)(object);
        }
    };
    walk.emitPath = [&](const CIMObjectPath& path) {
        if (ofClass)
            (*consumePath)(path);
        else if (wantedClass(path.getClassName(), path.getNameSpace()))
            (*consumePath)(finishPath(path, nameSpace));
    };

    std::set<std::string> classesSeen;
    Array<CIMName> candidates = _repository.getAssociationClassNames(nameSpace, objectClass, role);
    for (Uint32 a = 0; a < candidates.size(); ++a)
    {
        const CIMName& association = candidates[a];
        if (!associationFilter.isNull() &&
            !_repository.isSubclassOf(nameSpace, association, associationFilter))
            continue;
        std::shared_ptr<const ClassShape> associationShape = shape(nameSpace, association);
        // Skip associations that cannot lead from the object to the result.
        if (walk.toAssociators &&
            !forEachEnd(walk, *associationShape, true, [](const CIMName&) { return true; }))
            continue;

        if (ofClass)
            associateClasses(walk, association, *associationShape, classesSeen);
        else if (std::optional<ProviderId> id = _registry.find(
                     nameSpace, association, ProviderType::Association))
            associateByProvider(walk, association, *id);
        else
            associateFromMof(walk, association);
    }
}

void Dispatcher::associateClasses(const AssociationWalk& walk, const CIMName& association,
    const ClassShape& associationShape, std::set<std::string>& classesSeen)
{
    auto addClass = [&](const CIMName& cls) {
        if (!classesSeen.insert(folded(cls)).second)
            return;
        if (walk.wantsPaths)
        {
            walk.emitPath(serverPath(walk.nameSpace, cls));
        }
        else
        {
            CIMClass found = _repository.getClass(walk.nameSpace, cls, false, walk.includeQualifiers,
                walk.includeClassOrigin, walk.propertyList);
            found.setPath(serverPath(walk.nameSpace, cls));
            walk.emitObject(CIMObject(found));
        }
    };
    if (!walk.toAssociators)
    {
        addClass(association);
        return;
    }
    // The classes at the far ends that the filters allow.
    forEachEnd(walk, associationShape, false, [&](const CIMName& farClass) {
        addClass(farClass);
        return false;
    });
}

void Dispatcher::associateByProvider(
    const AssociationWalk& walk, const CIMName& association, const ProviderId& id)
{
    ObjectForwarder objects(walk.emitObject);
    ObjectPathForwarder paths(walk.emitPath);
    const CollectorBase& handler = walk.wantsPaths ? static_cast<const CollectorBase&>(paths) : objects;
    const OperationContext& ctx = walk.providerCtx;
    callProvider<CIMAssociationProvider>(
        id, ctx,
        [&](CIMAssociationProvider& provider) {
            switch (walk.op)
            {
            case AssociationOp::Associators:
                provider.associators(ctx, walk.objectRef, association, walk.resultClass, walk.role,
                    walk.resultRole, walk.includeQualifiers, walk.includeClassOrigin, walk.propertyList,
                    objects);
                break;
            case AssociationOp::AssociatorNames:
                provider.associatorNames(
                    ctx, walk.objectRef, association, walk.resultClass, walk.role, walk.resultRole, paths);
                break;
            case AssociationOp::References:
                provider.references(ctx, walk.objectRef, association, walk.role, walk.includeQualifiers,
                    walk.includeClassOrigin, walk.propertyList, objects);
                break;
            case AssociationOp::ReferenceNames:
                provider.referenceNames(ctx, walk.objectRef, association, walk.role, paths);
                break;
            }
        },
        &handler);
    lastResponse = handler.responseContext();
}

void Dispatcher::associateFromMof(const AssociationWalk& walk, const CIMName& association)
{
    const CIMNamespaceName& nameSpace = walk.nameSpace;
    Array<CIMInstance> links = _repository.enumerateInstances(nameSpace, association, false);
    for (Uint32 l = 0; l < links.size(); ++l)
    {
        const CIMInstance& link = links[l];
        for (Uint32 n = 0; n < link.getPropertyCount(); ++n)
        {
            CIMConstProperty near = link.getProperty(n);
            if (near.getType() != CIMTYPE_REFERENCE || near.getValue().isNull())
                continue;
            if (!walk.roleName.empty() && folded(near.getName()) != walk.roleName)
                continue;
            CIMObjectPath nearPath;
            near.getValue().get(nearPath);
            if (!samePath(nearPath, walk.objectName, nameSpace))
                continue;
            if (walk.op == AssociationOp::References)
                walk.emitObject(CIMObject(link));
            if (walk.op == AssociationOp::ReferenceNames)
                walk.emitPath(link.getPath());
            if (walk.toAssociators)
            {
                for (Uint32 f = 0; f < link.getPropertyCount(); ++f)
                {
                    CIMConstProperty far = link.getProperty(f);
                    if (f == n || far.getType() != CIMTYPE_REFERENCE || far.getValue().isNull())
                        continue;
                    if (!walk.resultRoleName.empty() && folded(far.getName()) != walk.resultRoleName)
                        continue;
                    CIMObjectPath farPath;
                    far.getValue().get(farPath);
                    if (walk.op == AssociationOp::AssociatorNames)
                    {
                        walk.emitPath(farPath);
                        continue;
                    }
                    const CIMNamespaceName farNamespace = farPath.getNameSpace().isNull()
                        ? nameSpace
                        : farPath.getNameSpace();
                    CIMInstance farInstance;
                    try
                    {
                        farInstance = getInstanceFor(walk.providerCtx, farNamespace, farPath,
                            walk.includeQualifiers, walk.includeClassOrigin, walk.propertyList);
                    }
                    catch (const CIMException& e)
                    {
                        // A link to an object that is gone is no result.
                        if (e.getCode() != CIM_ERR_NOT_FOUND && e.getCode() != CIM_ERR_INVALID_CLASS)
                            throw;
                        continue;
                    }
                    walk.emitObject(CIMObject(farInstance));
                }
            }
            break;
        }
    }
}

Array<CIMObject> Dispatcher::associators(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    Array<CIMObject> out;
    associators(context, nameSpace, objectName, assocClass, resultClass, role, resultRole, includeQualifiers,
        includeClassOrigin, propertyList, [&](const CIMObject& object) { out.append(object); });
    return out;
}

void Dispatcher::associators(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList, const ObjectConsumer& consume)
{
    OperationScope scope(*this, "Associators");
    associate(AssociationOp::Associators, context, nameSpace, objectName, assocClass, resultClass, role,
        resultRole, includeQualifiers, includeClassOrigin, propertyList, &consume, nullptr);
}

Array<CIMObjectPath> Dispatcher::associatorNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole)
{
    Array<CIMObjectPath> out;
    associatorNames(context, nameSpace, objectName, assocClass, resultClass, role, resultRole,
        [&](const CIMObjectPath& path) { out.append(path); });
    return out;
}

void Dispatcher::associatorNames(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole, const PathConsumer& consume)
{
    OperationScope scope(*this, "AssociatorNames");
    associate(AssociationOp::AssociatorNames, context, nameSpace, objectName, assocClass, resultClass, role,
        resultRole, false, false, CIMPropertyList(), nullptr, &consume);
}

Array<CIMObject> Dispatcher::references(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role, bool includeQualifiers,
    bool includeClassOrigin, const CIMPropertyList& propertyList)
{
    Array<CIMObject> out;
    references(context, nameSpace, objectName, resultClass, role, includeQualifiers, includeClassOrigin,
        propertyList, [&](const CIMObject& object) { out.append(object); });
    return out;
}

void Dispatcher::references(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role, bool includeQualifiers,
    bool includeClassOrigin, const CIMPropertyList& propertyList, const ObjectConsumer& consume)
{
    OperationScope scope(*this, "References");
    associate(AssociationOp::References, context, nameSpace, objectName, CIMName(), resultClass, role,
        String(), includeQualifiers, includeClassOrigin, propertyList, &consume, nullptr);
}

Array<CIMObjectPath> Dispatcher::referenceNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role)
{
    Array<CIMObjectPath> out;
    referenceNames(context, nameSpace, objectName, resultClass, role,
        [&](const CIMObjectPath& path) { out.append(path); });
    return out;
}

void Dispatcher::referenceNames(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    const PathConsumer& consume)
{
    OperationScope scope(*this, "ReferenceNames");
    associate(AssociationOp::ReferenceNames, context, nameSpace, objectName, CIMName(), resultClass, role,
        String(), false, false, CIMPropertyList(), nullptr, &consume);
}

// ---- methods ----------------------------------------------------------------

CIMValue Dispatcher::invokeMethod(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& methodName, const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters)
{
    OperationScope scope(*this, "InvokeMethod");
    requireNamespace(nameSpace);
    const CIMName className = instanceName.getClassName();
    requireClass(nameSpace, className, CIM_ERR_INVALID_CLASS, "The class");
    std::shared_ptr<const ClassShape> own = shape(nameSpace, className);
    Uint32 index = methodName.isNull() ? PEG_NOT_FOUND : own->full.findMethod(methodName);
    if (index == PEG_NOT_FOUND)
        throw CIMException(CIM_ERR_METHOD_NOT_FOUND,
            "The class " + nameText(className) + " has no method " + nameText(methodName) + ".");
    const Array<CIMParamValue> typed = typeParameters(own->full.getMethod(index), inParameters);
    std::optional<ProviderId> id = _registry.find(nameSpace, className, ProviderType::Method);
    if (!id)
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
            "No method provider is registered for class " + nameText(className) + " in namespace " +
                nameText(nameSpace) + ".");
    const OperationContext providerCtx = providerContext(context);
    const CIMObjectPath reference = serverPath(nameSpace, className, instanceName.getKeyBindings());
    MethodResultCollector collector;
    callProvider<CIMMethodProvider>(*id, providerCtx, [&](CIMMethodProvider& provider) {
        provider.invokeMethod(providerCtx, reference, methodName, typed, collector);
    });
    lastResponse = collector.responseContext();
    outParameters.appendArray(collector.outParameters());
    return collector.returnValue();
}

}  // namespace zda::server
