// The dispatcher: every intrinsic CIM operation, answered from the class
// repository and the registered providers.
//
// Its operations mirror those of CIMOMHandle one to one (and so a CIM-XML
// request maps onto one call): each takes the request's OperationContext,
// returns SDK objects and reports failures as CIMException with the status
// code and message the client receives. Routing:
//   - Class operations are answered by the repository, which is read-only:
//     creating, modifying or deleting a class gives CIM_ERR_NOT_SUPPORTED.
//   - Instance operations go to the instance provider registered for the
//     class; a class without one is served from the static instances its
//     MOF declares (read-only: writes give CIM_ERR_NOT_SUPPORTED).
//     Enumerations cover the class and every subclass, each provider being
//     asked for its own class.
//   - Association operations go to every association class that can link
//     the object's class, narrowed by AssocClass / ResultClass, Role and
//     ResultRole; each association provider is asked with its own class as
//     the association class; classes without a provider contribute their
//     static instances. Results outside the requested result class are
//     dropped.
//   - Methods go to the method provider registered for the class, with
//     untyped parameters typed from the method's declaration.
//   - ExecQuery gives CIM_ERR_NOT_SUPPORTED.
// Results carry complete paths (the server's host name and the namespace,
// where a provider left them empty). Instances are filtered as PropertyList,
// DeepInheritance, IncludeQualifiers and IncludeClassOrigin ask, whatever
// the provider delivered. LocalOnly is deprecated for instances and clients
// leave it to a default of true that would strip most properties: instance
// operations accept it and always answer as if it were false; class
// operations honour it. A provider that returns without calling
// complete() still has what it delivered returned.
//
// The enumeration and association operations also come in a streamed form
// that hands each result to a consumer as soon as the provider delivers it,
// already finished (filtered, its path complete), instead of returning an
// Array; the Array forms are built on it. Nothing is collected on the way,
// so memory does not grow with the number of results.
//
// Identity: providers receive the request's context; when it has no
// IdentityContainer, one with the local user is added.
//
// Thread safety: every operation may be called from any number of threads
// at once, also re-entrantly from inside a provider call. The dispatcher
// runs each provider on the calling thread and holds no lock across a
// provider call.
#ifndef ZDA_SERVER_DISPATCHER_H
#define ZDA_SERVER_DISPATCHER_H

#include "ProviderManager.h"
#include "ProviderRegistry.h"

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace zda::server
{

class ClassRepository;
class CollectorBase;

struct DispatcherOptions
{
    // The host name put into result paths.
    Pegasus::String hostName;
    // The identity of requests that come without one.
    Pegasus::String localUser = "admin";
    // Receives a level-2 line for each provider that fails with something
    // other than a CIMException (a provider fault); may be empty.
    ProviderManager::LogSink log;
};

class Dispatcher
{
public:
    // Called after each outermost operation of a thread has finished (also
    // when it failed), with the operation's name ("EnumerateInstances").
    using OperationObserver = std::function<void(const char* operation)>;

    // `repository`, `registry` and `providers` must outlive the dispatcher.
    Dispatcher(const ClassRepository& repository, const ProviderRegistry& registry,
        ProviderManager& providers, DispatcherOptions options);

    Dispatcher(const Dispatcher&) = delete;
    Dispatcher& operator=(const Dispatcher&) = delete;

    const DispatcherOptions& options() const { return _options; }

    // Consumers of the streamed forms. A consumer runs on the thread of the
    // operation, inside the provider's deliver(), once per result in
    // delivery order. It may throw to abandon the operation: the provider's
    // deliver() passes the exception on, later deliveries fail the same way,
    // and the operation ends by rethrowing it (unchanged, whatever the
    // provider did with it). A CIM error raised after some results were
    // consumed passes out as usual: the consumer has then seen part of the
    // answer.
    //
    // An instance consumer gets the instance and the name it is answered
    // under, which the instance itself need not carry. The instance may be
    // the provider's own object: a consumer reads it and does not keep it.
    using InstanceConsumer =
        std::function<void(const Pegasus::CIMInstance& instance, const Pegasus::CIMObjectPath& path)>;
    using ObjectConsumer = std::function<void(const Pegasus::CIMObject&)>;
    using PathConsumer = std::function<void(const Pegasus::CIMObjectPath&)>;

    // Replaces the observer. Not to be called while operations run.
    void setOperationObserver(OperationObserver observer) { _observer = std::move(observer); }

    // ---- classes ----------------------------------------------------------
    Pegasus::CIMClass getClass(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className, bool localOnly,
        bool includeQualifiers, bool includeClassOrigin, const Pegasus::CIMPropertyList& propertyList);
    Pegasus::Array<Pegasus::CIMClass> enumerateClasses(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className, bool deepInheritance,
        bool localOnly, bool includeQualifiers, bool includeClassOrigin);
    Pegasus::Array<Pegasus::CIMName> enumerateClassNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className, bool deepInheritance);
    // The repository is read-only: these three throw CIM_ERR_NOT_SUPPORTED
    // (after the namespace check).
    void createClass(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMClass& newClass);
    void modifyClass(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMClass& modifiedClass);
    void deleteClass(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className);

    // ---- instances --------------------------------------------------------
    // Unknown namespace: CIM_ERR_INVALID_NAMESPACE; unknown class:
    // CIM_ERR_INVALID_CLASS; no such static instance: CIM_ERR_NOT_FOUND.
    Pegasus::CIMInstance getInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName,
        bool localOnly, bool includeQualifiers, bool includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList);
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className, bool deepInheritance,
        bool localOnly, bool includeQualifiers, bool includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList);
    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className);
    void enumerateInstances(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className, bool deepInheritance,
        bool localOnly, bool includeQualifiers, bool includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList, const InstanceConsumer& consume);
    void enumerateInstanceNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        const PathConsumer& consume);
    // No instance provider for the class: CIM_ERR_NOT_SUPPORTED. A provider
    // that delivers no path: CIM_ERR_FAILED.
    Pegasus::CIMObjectPath createInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMInstance& newInstance);
    // The instance's path names the instance; a path without keys:
    // CIM_ERR_INVALID_PARAMETER.
    void modifyInstance(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMInstance& modifiedInstance, bool includeQualifiers,
        const Pegasus::CIMPropertyList& propertyList);
    void deleteInstance(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName);
    // Served by getInstance with a one-name property list and both flags
    // false (by modifyInstance with an instance holding only the property).
    // A property the class does not declare, or that the instance lacks:
    // CIM_ERR_NO_SUCH_PROPERTY.
    Pegasus::CIMValue getProperty(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName,
        const Pegasus::CIMName& propertyName);
    void setProperty(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName, const Pegasus::CIMName& propertyName,
        const Pegasus::CIMValue& newValue);
    // Always CIM_ERR_NOT_SUPPORTED.
    Pegasus::Array<Pegasus::CIMObject> execQuery(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::String& queryLanguage,
        const Pegasus::String& query);

    // ---- associations -----------------------------------------------------
    // objectName names an instance (with keys) or, without keys, a class
    // of the namespace; the answer is then classes (as paths for the Names
    // forms), taken from the repository. An unknown class in objectName,
    // AssocClass or ResultClass: CIM_ERR_INVALID_PARAMETER.
    Pegasus::Array<Pegasus::CIMObject> associators(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass, const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole, bool includeQualifiers, bool includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList);
    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass, const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole);
    Pegasus::Array<Pegasus::CIMObject> references(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role, bool includeQualifiers,
        bool includeClassOrigin, const Pegasus::CIMPropertyList& propertyList);
    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role);

    // The streamed forms of the four above.
    void associators(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& assocClass,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role, const Pegasus::String& resultRole,
        bool includeQualifiers, bool includeClassOrigin, const Pegasus::CIMPropertyList& propertyList,
        const ObjectConsumer& consume);
    void associatorNames(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& assocClass,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role, const Pegasus::String& resultRole,
        const PathConsumer& consume);
    void references(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, bool includeQualifiers, bool includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList, const ObjectConsumer& consume);
    void referenceNames(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, const PathConsumer& consume);

    // ---- methods ----------------------------------------------------------
    // Appends the delivered output parameters to outParameters and returns
    // the delivered return value (a null value when none was delivered).
    // Unknown class: CIM_ERR_INVALID_CLASS; unknown method:
    // CIM_ERR_METHOD_NOT_FOUND; parameters: see typeParameters(); no method
    // provider: CIM_ERR_NOT_SUPPORTED.
    Pegasus::CIMValue invokeMethod(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName,
        const Pegasus::CIMName& methodName, const Pegasus::Array<Pegasus::CIMParamValue>& inParameters,
        Pegasus::Array<Pegasus::CIMParamValue>& outParameters);

    // The context the provider set on the response of the last operation
    // this thread made (empty when it set none).
    static Pegasus::OperationContext lastResponseContext();

private:
    class OperationScope;
    struct ClassShape;
    enum class AssociationOp
    {
        Associators,
        AssociatorNames,
        References,
        ReferenceNames
    };

    void requireNamespace(const Pegasus::CIMNamespaceName& nameSpace) const;
    void requireClass(const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::CIMStatusCode code, const char* what) const;
    std::shared_ptr<const ClassShape> shape(
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className) const;
    Pegasus::OperationContext providerContext(const Pegasus::OperationContext& context) const;
    Pegasus::CIMObjectPath serverPath(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className,
        const Pegasus::Array<Pegasus::CIMKeyBinding>& keys = Pegasus::Array<Pegasus::CIMKeyBinding>()) const;
    void completePath(Pegasus::CIMObjectPath& path, const Pegasus::CIMNamespaceName& nameSpace) const;

    // Runs `call` on the provider; with `handler`, a failure of the
    // handler's consumer is what the call ends with.
    template <class Interface, class Call>
    void callProvider(const ProviderId& id, const Pegasus::OperationContext& context, Call&& call,
        const CollectorBase* handler = nullptr);

    // What finishInstance() worked out for the last instance of one
    // operation; the next instance, usually of the same class with the
    // same properties, reuses it.
    struct FinishMemo;
    // An instance as the request asks for it, and its complete path (which
    // the instance itself need not carry): the delivered instance when the
    // request keeps it whole, else a new one without the properties,
    // qualifiers and class origins the request leaves out.
    struct FinishedInstance
    {
        Pegasus::CIMInstance instance;
        Pegasus::CIMObjectPath path;
    };
    FinishedInstance finish(const Pegasus::CIMInstance& delivered, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& requestedClass, bool deepInheritance, bool includeQualifiers,
        bool includeClassOrigin, const Pegasus::CIMPropertyList& propertyList,
        FinishMemo* memo = nullptr) const;
    // finish(), as one instance that carries its path.
    Pegasus::CIMInstance finishInstance(const Pegasus::CIMInstance& delivered,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& requestedClass,
        bool deepInheritance, bool includeQualifiers, bool includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList, FinishMemo* memo = nullptr) const;
    Pegasus::CIMObjectPath finishPath(
        const Pegasus::CIMObjectPath& delivered, const Pegasus::CIMNamespaceName& nameSpace) const;

    Pegasus::CIMInstance getInstanceFor(const Pegasus::OperationContext& providerCtx,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName,
        bool includeQualifiers, bool includeClassOrigin, const Pegasus::CIMPropertyList& propertyList);
    void modifyInstanceFor(const Pegasus::OperationContext& providerCtx,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMInstance& modifiedInstance,
        bool includeQualifiers, const Pegasus::CIMPropertyList& propertyList);

    void associate(AssociationOp op, const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass, const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole, bool includeQualifiers, bool includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList, const ObjectConsumer* consumeObject,
        const PathConsumer* consumePath);
    // The three sources of association results, each passing its results
    // to the walk's emitters.
    struct AssociationWalk;
    // Calls `visit` with the far end's class of each pair of references of
    // `association` that can hold the object at the near end and, with the
    // walk's result class, lead to it (also up the hierarchy when
    // `resultEitherWay`); stops and returns true when `visit` does.
    bool forEachEnd(const AssociationWalk& walk, const ClassShape& association, bool resultEitherWay,
        const std::function<bool(const Pegasus::CIMName& farClass)>& visit) const;
    void associateClasses(const AssociationWalk& walk, const Pegasus::CIMName& association,
        const ClassShape& associationShape, std::set<std::string>& classesSeen);
    void associateByProvider(
        const AssociationWalk& walk, const Pegasus::CIMName& association, const ProviderId& id);
    void associateFromMof(const AssociationWalk& walk, const Pegasus::CIMName& association);

    const ClassRepository& _repository;
    const ProviderRegistry& _registry;
    ProviderManager& _providers;
    const DispatcherOptions _options;
    OperationObserver _observer;

    mutable std::mutex _shapesMutex;
    mutable std::map<std::string, std::shared_ptr<const ClassShape>> _shapes;
};

}  // namespace zda::server

#endif
