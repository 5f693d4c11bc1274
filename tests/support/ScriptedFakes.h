// Fakes of the host side of the SDK for tests: a CIMOMHandle backend and a
// CIMClient transport whose every operation fails with CIM_ERR_NOT_SUPPORTED
// ("<operation> is not scripted in this test") until a test overrides it.
// A test derives from them and overrides only the operations it expects.
#ifndef ZDA_TESTS_SCRIPTED_FAKES_H
#define ZDA_TESTS_SCRIPTED_FAKES_H

#include <Pegasus/Provider/CIMOMHandleBackend.h>
#include <Pegasus/Client/CIMClientTransport.h>

namespace zda_test
{

class ScriptedCIMOMBackend : public Pegasus::CIMOMHandleBackend
{
public:
    Pegasus::CIMClass getClass(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin, const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMClass> enumerateClasses(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::Boolean deepInheritance, Pegasus::Boolean localOnly,
        Pegasus::Boolean includeQualifiers, Pegasus::Boolean includeClassOrigin) override;
    Pegasus::Array<Pegasus::CIMName> enumerateClassNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::Boolean deepInheritance) override;
    void createClass(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMClass& newClass) override;
    void modifyClass(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMClass& modifiedClass) override;
    void deleteClass(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className) override;
    Pegasus::CIMInstance getInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName,
        Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin, const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, Pegasus::Boolean deepInheritance,
        Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin, const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(
        const Pegasus::OperationContext& context, const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className) override;
    Pegasus::CIMObjectPath createInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMInstance& newInstance) override;
    void modifyInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMInstance& modifiedInstance,
        Pegasus::Boolean includeQualifiers, const Pegasus::CIMPropertyList& propertyList) override;
    void deleteInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName) override;
    Pegasus::Array<Pegasus::CIMObject> execQuery(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::String& queryLanguage,
        const Pegasus::String& query) override;
    Pegasus::Array<Pegasus::CIMObject> associators(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, const Pegasus::String& resultRole,
        Pegasus::Boolean includeQualifiers, Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, const Pegasus::String& resultRole) override;
    Pegasus::Array<Pegasus::CIMObject> references(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        Pegasus::Boolean includeQualifiers, Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role) override;
    Pegasus::CIMValue getProperty(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName,
        const Pegasus::CIMName& propertyName) override;
    void setProperty(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName,
        const Pegasus::CIMName& propertyName, const Pegasus::CIMValue& newValue) override;
    Pegasus::CIMValue invokeMethod(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& instanceName,
        const Pegasus::CIMName& methodName, const Pegasus::Array<Pegasus::CIMParamValue>& inParameters,
        Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;
    Pegasus::OperationContext getResponseContext() override;
};

class ScriptedClientTransport : public Pegasus::CIMClientTransport
{
public:
    // Accepts any timeout; tests that care override it.
    void setTimeout(Pegasus::Uint32 timeoutMilliseconds) override;

    Pegasus::CIMClass getClass(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, Pegasus::Boolean localOnly,
        Pegasus::Boolean includeQualifiers, Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMClass> enumerateClasses(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, Pegasus::Boolean deepInheritance,
        Pegasus::Boolean localOnly, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin) override;
    Pegasus::Array<Pegasus::CIMName> enumerateClassNames(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className, Pegasus::Boolean deepInheritance) override;
    void createClass(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMClass& newClass) override;
    void modifyClass(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMClass& modifiedClass) override;
    void deleteClass(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMName& className) override;
    Pegasus::CIMInstance getInstance(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName, Pegasus::Boolean localOnly,
        Pegasus::Boolean includeQualifiers, Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMInstance> enumerateInstances(
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::Boolean deepInheritance, Pegasus::Boolean localOnly,
        Pegasus::Boolean includeQualifiers, Pegasus::Boolean includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> enumerateInstanceNames(
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className) override;
    Pegasus::CIMObjectPath createInstance(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMInstance& newInstance) override;
    void modifyInstance(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMInstance& modifiedInstance, Pegasus::Boolean includeQualifiers,
        const Pegasus::CIMPropertyList& propertyList) override;
    void deleteInstance(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName) override;
    Pegasus::Array<Pegasus::CIMObject> execQuery(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::String& queryLanguage, const Pegasus::String& query) override;
    Pegasus::Array<Pegasus::CIMObject> associators(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& assocClass,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        const Pegasus::String& resultRole, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin, const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> associatorNames(
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& assocClass, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, const Pegasus::String& resultRole) override;
    Pegasus::Array<Pegasus::CIMObject> references(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& objectName, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, Pegasus::Boolean includeQualifiers,
        Pegasus::Boolean includeClassOrigin, const Pegasus::CIMPropertyList& propertyList) override;
    Pegasus::Array<Pegasus::CIMObjectPath> referenceNames(
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& objectName,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role) override;
    Pegasus::CIMValue getProperty(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName, const Pegasus::CIMName& propertyName) override;
    void setProperty(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName, const Pegasus::CIMName& propertyName,
        const Pegasus::CIMValue& newValue) override;
    Pegasus::CIMValue invokeMethod(const Pegasus::CIMNamespaceName& nameSpace,
        const Pegasus::CIMObjectPath& instanceName, const Pegasus::CIMName& methodName,
        const Pegasus::Array<Pegasus::CIMParamValue>& inParameters,
        Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;
};

}  // namespace zda_test

#endif
