#include "DispatcherBackend.h"

#include "CurrentRequest.h"

using namespace Pegasus;

namespace zda::server
{

OperationContext upcallContext(const OperationContext& given)
{
    if (given.contains(IdentityContainer::NAME))
        return given;
    const OperationContext* serving = CurrentRequestScope::current();
    if (!serving || !serving->contains(IdentityContainer::NAME))
        return given;  // the dispatcher adds the local user
    OperationContext out(given);
    out.insert(IdentityContainer(serving->get(IdentityContainer::NAME)));
    return out;
}

std::shared_ptr<Dispatcher> DispatcherBackend::dispatcher() const
{
    std::shared_ptr<Dispatcher> d = _dispatcher.lock();
    if (!d)
        throw CIMException(CIM_ERR_FAILED, "The CIM server this handle belongs to has shut down.");
    return d;
}

CIMClass DispatcherBackend::getClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMName& className, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return dispatcher()->getClass(upcallContext(context), nameSpace, className, localOnly, includeQualifiers,
        includeClassOrigin, propertyList);
}

Array<CIMClass> DispatcherBackend::enumerateClasses(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin)
{
    return dispatcher()->enumerateClasses(upcallContext(context), nameSpace, className, deepInheritance,
        localOnly, includeQualifiers, includeClassOrigin);
}

Array<CIMName> DispatcherBackend::enumerateClassNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance)
{
    return dispatcher()->enumerateClassNames(upcallContext(context), nameSpace, className, deepInheritance);
}

void DispatcherBackend::createClass(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMClass& newClass)
{
    dispatcher()->createClass(upcallContext(context), nameSpace, newClass);
}

void DispatcherBackend::modifyClass(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMClass& modifiedClass)
{
    dispatcher()->modifyClass(upcallContext(context), nameSpace, modifiedClass);
}

void DispatcherBackend::deleteClass(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className)
{
    dispatcher()->deleteClass(upcallContext(context), nameSpace, className);
}

CIMInstance DispatcherBackend::getInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, Boolean, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return dispatcher()->getInstance(upcallContext(context), nameSpace, instanceName, false,
        includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMInstance> DispatcherBackend::enumerateInstances(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance, Boolean,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return dispatcher()->enumerateInstances(upcallContext(context), nameSpace, className, deepInheritance,
        false, includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> DispatcherBackend::enumerateInstanceNames(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className)
{
    return dispatcher()->enumerateInstanceNames(upcallContext(context), nameSpace, className);
}

CIMObjectPath DispatcherBackend::createInstance(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMInstance& newInstance)
{
    return dispatcher()->createInstance(upcallContext(context), nameSpace, newInstance);
}

void DispatcherBackend::modifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance, Boolean includeQualifiers, const CIMPropertyList& propertyList)
{
    dispatcher()->modifyInstance(
        upcallContext(context), nameSpace, modifiedInstance, includeQualifiers, propertyList);
}

void DispatcherBackend::deleteInstance(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName)
{
    dispatcher()->deleteInstance(upcallContext(context), nameSpace, instanceName);
}

Array<CIMObject> DispatcherBackend::execQuery(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const String& queryLanguage, const String& query)
{
    return dispatcher()->execQuery(upcallContext(context), nameSpace, queryLanguage, query);
}

Array<CIMObject> DispatcherBackend::associators(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return dispatcher()->associators(upcallContext(context), nameSpace, objectName, assocClass, resultClass,
        role, resultRole, includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> DispatcherBackend::associatorNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole)
{
    return dispatcher()->associatorNames(
        upcallContext(context), nameSpace, objectName, assocClass, resultClass, role, resultRole);
}

Array<CIMObject> DispatcherBackend::references(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return dispatcher()->references(upcallContext(context), nameSpace, objectName, resultClass, role,
        includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> DispatcherBackend::referenceNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role)
{
    return dispatcher()->referenceNames(upcallContext(context), nameSpace, objectName, resultClass, role);
}

CIMValue DispatcherBackend::getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName)
{
    return dispatcher()->getProperty(upcallContext(context), nameSpace, instanceName, propertyName);
}

void DispatcherBackend::setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue)
{
    dispatcher()->setProperty(upcallContext(context), nameSpace, instanceName, propertyName, newValue);
}

CIMValue DispatcherBackend::invokeMethod(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& methodName, const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters)
{
    return dispatcher()->invokeMethod(
        upcallContext(context), nameSpace, instanceName, methodName, inParameters, outParameters);
}

OperationContext DispatcherBackend::getResponseContext()
{
    return Dispatcher::lastResponseContext();
}

}  // namespace zda::server
