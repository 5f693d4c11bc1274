#include "LoopbackTransport.h"

#include "ProviderErrors.h"

#include <Pegasus/Common/OperationContext.h>

using namespace Pegasus;

namespace zda::server
{

namespace
{

class LoopbackTransport : public CIMClientTransport
{
public:
    LoopbackTransport(std::weak_ptr<Dispatcher> dispatcher, Uint32 timeout)
        : _dispatcher(std::move(dispatcher)), _timeout(timeout)
    {}

    void setTimeout(Uint32 timeoutMilliseconds) override { _timeout = timeoutMilliseconds; }

    CIMClass getClass(const CIMNamespaceName& ns, const CIMName& className, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.getClass(
                c, ns, className, localOnly, includeQualifiers, includeClassOrigin, propertyList);
        });
    }
    Array<CIMClass> enumerateClasses(const CIMNamespaceName& ns, const CIMName& className,
        Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.enumerateClasses(
                c, ns, className, deepInheritance, localOnly, includeQualifiers, includeClassOrigin);
        });
    }
    Array<CIMName> enumerateClassNames(
        const CIMNamespaceName& ns, const CIMName& className, Boolean deepInheritance) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.enumerateClassNames(c, ns, className, deepInheritance);
        });
    }
    void createClass(const CIMNamespaceName& ns, const CIMClass& newClass) override
    {
        run([&](Dispatcher& d, const OperationContext& c) {
            d.createClass(c, ns, newClass);
            return 0;
        });
    }
    void modifyClass(const CIMNamespaceName& ns, const CIMClass& modifiedClass) override
    {
        run([&](Dispatcher& d, const OperationContext& c) {
            d.modifyClass(c, ns, modifiedClass);
            return 0;
        });
    }
    void deleteClass(const CIMNamespaceName& ns, const CIMName& className) override
    {
        run([&](Dispatcher& d, const OperationContext& c) {
            d.deleteClass(c, ns, className);
            return 0;
        });
    }
    CIMInstance getInstance(const CIMNamespaceName& ns, const CIMObjectPath& instanceName, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.getInstance(
                c, ns, instanceName, localOnly, includeQualifiers, includeClassOrigin, propertyList);
        });
    }
    Array<CIMInstance> enumerateInstances(const CIMNamespaceName& ns, const CIMName& className,
        Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.enumerateInstances(c, ns, className, deepInheritance, localOnly, includeQualifiers,
                includeClassOrigin, propertyList);
        });
    }
    Array<CIMObjectPath> enumerateInstanceNames(const CIMNamespaceName& ns, const CIMName& className) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.enumerateInstanceNames(c, ns, className);
        });
    }
    CIMObjectPath createInstance(const CIMNamespaceName& ns, const CIMInstance& newInstance) override
    {
        return run(
            [&](Dispatcher& d, const OperationContext& c) { return d.createInstance(c, ns, newInstance); });
    }
    void modifyInstance(const CIMNamespaceName& ns, const CIMInstance& modifiedInstance,
        Boolean includeQualifiers, const CIMPropertyList& propertyList) override
    {
        run([&](Dispatcher& d, const OperationContext& c) {
            d.modifyInstance(c, ns, modifiedInstance, includeQualifiers, propertyList);
            return 0;
        });
    }
    void deleteInstance(const CIMNamespaceName& ns, const CIMObjectPath& instanceName) override
    {
        run([&](Dispatcher& d, const OperationContext& c) {
            d.deleteInstance(c, ns, instanceName);
            return 0;
        });
    }
    Array<CIMObject> execQuery(
        const CIMNamespaceName& ns, const String& queryLanguage, const String& query) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.execQuery(c, ns, queryLanguage, query);
        });
    }
    Array<CIMObject> associators(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role, const String& resultRole,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.associators(c, ns, objectName, assocClass, resultClass, role, resultRole,
                includeQualifiers, includeClassOrigin, propertyList);
        });
    }
    Array<CIMObjectPath> associatorNames(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.associatorNames(c, ns, objectName, assocClass, resultClass, role, resultRole);
        });
    }
    Array<CIMObject> references(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.references(
                c, ns, objectName, resultClass, role, includeQualifiers, includeClassOrigin, propertyList);
        });
    }
    Array<CIMObjectPath> referenceNames(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.referenceNames(c, ns, objectName, resultClass, role);
        });
    }
    CIMValue getProperty(
        const CIMNamespaceName& ns, const CIMObjectPath& instanceName, const CIMName& propertyName) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.getProperty(c, ns, instanceName, propertyName);
        });
    }
    void setProperty(const CIMNamespaceName& ns, const CIMObjectPath& instanceName,
        const CIMName& propertyName, const CIMValue& newValue) override
    {
        run([&](Dispatcher& d, const OperationContext& c) {
            d.setProperty(c, ns, instanceName, propertyName, newValue);
            return 0;
        });
    }
    CIMValue invokeMethod(const CIMNamespaceName& ns, const CIMObjectPath& instanceName,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters) override
    {
        return run([&](Dispatcher& d, const OperationContext& c) {
            return d.invokeMethod(c, ns, instanceName, methodName, inParameters, outParameters);
        });
    }

private:
    template <class Operation>
    auto run(Operation&& operation)
        -> decltype(operation(std::declval<Dispatcher&>(), std::declval<const OperationContext&>()))
    {
        std::shared_ptr<Dispatcher> dispatcher = _dispatcher.lock();
        if (!dispatcher)
            throw CannotConnectException("the in-process CIM server has shut down");
        OperationContext context;
        context.insert(IdentityContainer(dispatcher->options().localUser));
        try
        {
            return operation(*dispatcher, context);
        }
        catch (const CIMException& e)
        {
            throw CIMException(e.getCode(), errorDescription(e));
        }
        catch (const Exception& e)
        {
            const CIMException failed(CIM_ERR_FAILED, e.getMessage());
            throw CIMException(CIM_ERR_FAILED, errorDescription(failed));
        }
    }

    std::weak_ptr<Dispatcher> _dispatcher;
    Uint32 _timeout;
};

}  // namespace

CIMClientLoopbackTransportFactory loopbackTransportFactory(std::weak_ptr<Dispatcher> dispatcher)
{
    return [dispatcher](Uint32 timeoutMilliseconds) -> std::unique_ptr<CIMClientTransport> {
        if (dispatcher.expired())
            throw CannotConnectException("the in-process CIM server has shut down");
        return std::make_unique<LoopbackTransport>(dispatcher, timeoutMilliseconds);
    };
}

}  // namespace zda::server
