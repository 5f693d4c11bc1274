// Recording fakes of the host side of the SDK, for tests: a CIMOMHandle
// backend and a CIMClient transport that note each call as one line,
// "<operation> <argument> ...", and answer with empty results (a class or
// instance of the requested class, empty arrays, a null value).
//
// Arguments are written with zda_test::text() except strings, which are
// quoted ("" for an empty one). A test that needs other answers derives,
// overrides the operation and calls the base version to keep the record.
#ifndef ZDA_TESTS_RECORDING_FAKES_H
#define ZDA_TESTS_RECORDING_FAKES_H

#include <Pegasus/Client/CIMClientTransport.h>
#include <Pegasus/Provider/CIMOMHandleBackend.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace zda_test
{

using namespace Pegasus;

// Thread-safe: may be called from many threads and re-entrantly.
class RecordingCIMOMBackend : public CIMOMHandleBackend
{
public:
    struct Call
    {
        std::string call;
        std::string user;  // zda_test::userOf() of the context received
    };

    std::vector<Call> calls() const;
    Call lastCall() const;

    CIMClass getClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override;
    Array<CIMClass> enumerateClasses(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin) override;
    Array<CIMName> enumerateClassNames(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean deepInheritance) override;
    void createClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMClass& newClass) override;
    void modifyClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMClass& modifiedClass) override;
    void deleteClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className) override;
    CIMInstance getInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList) override;
    Array<CIMInstance> enumerateInstances(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList) override;
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className) override;
    CIMObjectPath createInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMInstance& newInstance) override;
    void modifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMInstance& modifiedInstance, Boolean includeQualifiers,
        const CIMPropertyList& propertyList) override;
    void deleteInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName) override;
    Array<CIMObject> execQuery(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const String& queryLanguage, const String& query) override;
    Array<CIMObject> associators(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override;
    Array<CIMObjectPath> associatorNames(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole) override;
    Array<CIMObject> references(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) override;
    Array<CIMObjectPath> referenceNames(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role) override;
    CIMValue getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName) override;
    void setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue) override;
    CIMValue invokeMethod(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters) override;
    // Not recorded: it is no operation of its own.
    OperationContext getResponseContext() override;

private:
    void note(const OperationContext& context, std::string call);

    mutable std::mutex _mutex;
    std::vector<Call> _calls;
};

// Notes into a log that the test shares, so the record outlives the
// transport the client destroys on disconnect ("closed"). setTimeout is
// noted as "setTimeout <ms>".
class RecordingClientTransport : public CIMClientTransport
{
public:
    typedef std::shared_ptr<std::vector<std::string>> Log;

    explicit RecordingClientTransport(Log log) : _log(std::move(log)) {}
    ~RecordingClientTransport() override;

    void setTimeout(Uint32 timeoutMilliseconds) override;
    CIMClass getClass(const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) override;
    Array<CIMClass> enumerateClasses(const CIMNamespaceName& nameSpace, const CIMName& className,
        Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin) override;
    Array<CIMName> enumerateClassNames(
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance) override;
    void createClass(const CIMNamespaceName& nameSpace, const CIMClass& newClass) override;
    void modifyClass(const CIMNamespaceName& nameSpace, const CIMClass& modifiedClass) override;
    void deleteClass(const CIMNamespaceName& nameSpace, const CIMName& className) override;
    CIMInstance getInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override;
    Array<CIMInstance> enumerateInstances(const CIMNamespaceName& nameSpace, const CIMName& className,
        Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override;
    Array<CIMObjectPath> enumerateInstanceNames(
        const CIMNamespaceName& nameSpace, const CIMName& className) override;
    CIMObjectPath createInstance(const CIMNamespaceName& nameSpace, const CIMInstance& newInstance) override;
    void modifyInstance(const CIMNamespaceName& nameSpace, const CIMInstance& modifiedInstance,
        Boolean includeQualifiers, const CIMPropertyList& propertyList) override;
    void deleteInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName) override;
    Array<CIMObject> execQuery(
        const CIMNamespaceName& nameSpace, const String& queryLanguage, const String& query) override;
    Array<CIMObject> associators(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role, const String& resultRole,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) override;
    Array<CIMObjectPath> associatorNames(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole) override;
    Array<CIMObject> references(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) override;
    Array<CIMObjectPath> referenceNames(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role) override;
    CIMValue getProperty(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& propertyName) override;
    void setProperty(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& propertyName, const CIMValue& newValue) override;
    CIMValue invokeMethod(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters) override;

private:
    Log _log;
};

}  // namespace zda_test

#endif
