// The CIMOMHandle backend of the server: every upcall a provider makes
// through its handle re-enters the dispatcher, on the provider's thread.
//
// Identity: an upcall whose context has no IdentityContainer, made while the
// thread serves a request, carries that request's identity (user and
// address); one made outside any request runs as the dispatcher's local
// user. A context with an identity is passed on unchanged. localOnly of
// getInstance and enumerateInstances is not forwarded (treated as false).
//
// Thread-safe and re-entrant. The backend holds the dispatcher weakly: once
// the dispatcher is gone, calls fail with CIM_ERR_FAILED.
#ifndef ZDA_SERVER_DISPATCHER_BACKEND_H
#define ZDA_SERVER_DISPATCHER_BACKEND_H

#include "Dispatcher.h"

#include <Pegasus/Provider/CIMOMHandleBackend.h>

#include <memory>

namespace zda::server
{

class DispatcherBackend : public Pegasus::CIMOMHandleBackend
{
public:
    explicit DispatcherBackend(std::weak_ptr<Dispatcher> dispatcher) : _dispatcher(std::move(dispatcher)) {}

    Pegasus::CIMClass getClass(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers, Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMClass> enumerateClasses(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::Boolean deepInheritance, Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin) override;
    Pegasus::Array<Pegasus::CIMName> enumerateClassNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::Boolean deepInheritance) override;
    void createClass(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMClass& newClass) override;
    void modifyClass(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMClass& modifiedClass) override;
    void deleteClass(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className) override;
    Pegasus::CIMInstance getInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName,
        Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers, Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::Boolean deepInheritance, Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin, const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className) override;
    Pegasus::CIMObjectPath createInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMInstance& newInstance) override;
    void modifyInstance(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMInstance& modifiedInstance, Pegasus::Boolean includeQualifiers,
        const Pegasus::CIMPropertyList& propertyList) override;
    void deleteInstance(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName) override;
    Pegasus::Array<Pegasus::CIMObject> execQuery(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::String& queryLanguage,
        const Pegasus::String& query) override;
    Pegasus::Array<Pegasus::CIMObject> associators(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass, const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin, const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass, const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole) override;
    Pegasus::Array<Pegasus::CIMObject> references(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin, const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role) override;
    Pegasus::CIMValue getProperty(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName,
        const Pegasus::CIMName& propertyName) override;
    void setProperty(const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName, const Pegasus::CIMName& propertyName,
        const Pegasus::CIMValue& newValue) override;
    Pegasus::CIMValue invokeMethod(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName,
        const Pegasus::CIMName& methodName, const Pegasus::Array<Pegasus::CIMParamValue>& inParameters,
        Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;
    Pegasus::OperationContext getResponseContext() override;

private:
    std::shared_ptr<Dispatcher> dispatcher() const;

    std::weak_ptr<Dispatcher> _dispatcher;
};

// The context an upcall runs with (see above).
Pegasus::OperationContext upcallContext(const Pegasus::OperationContext& given);

}  // namespace zda::server

#endif
