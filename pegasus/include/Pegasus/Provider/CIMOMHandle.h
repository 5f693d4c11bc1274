// CIMOMHandle: a provider's way back into the CIM server that hosts it.
//
// Each call is a full CIM operation made on behalf of the caller: routed by
// the host to the providers registered for the class or to its class store,
// with the identity found in `context` (a context without an
// IdentityContainer makes the call as the host decides, see the host's
// documentation). Server errors arrive as CIMException with their original
// status code; any other failure inside the handle becomes
// CIMException(CIM_ERR_FAILED, "Exception caught in CIMOMHandle").
//
// A handle is a shared handle: copies share one connection to the host. The
// host attaches its side (CIMOMHandleBackend.h) to the handles it gives to
// providers. A handle the provider constructs itself has no host attached and
// fails every operation with CIM_ERR_FAILED saying so.
//
// Thread safety: any thread may use a handle, and a provider may call into
// the host from inside one of its own operations (re-entrantly).
#ifndef Pegasus_CIMOMHandle_h
#define Pegasus_CIMOMHandle_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Provider/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

class CIMOMHandleRep;
class CIMOMHandleBackendAccess;

class PEGASUS_PROVIDER_LINKAGE CIMOMHandle
{
public:
    // A handle with no host attached (see above).
    CIMOMHandle();
    CIMOMHandle(const CIMOMHandle& handle);
    virtual ~CIMOMHandle();
    CIMOMHandle& operator=(const CIMOMHandle& handle);

    CIMClass getClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);

    Array<CIMClass> enumerateClasses(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin);

    Array<CIMName> enumerateClassNames(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean deepInheritance);

    void createClass(
        const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMClass& newClass);

    void modifyClass(
        const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMClass& modifiedClass);

    void deleteClass(
        const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className);

    // localOnly is not passed on: instances come back as the provider built them.
    CIMInstance getInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    // Covers the class and all its subclasses in nameSpace.
    Array<CIMInstance> enumerateInstances(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    Array<CIMObjectPath> enumerateInstanceNames(
        const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className);

    CIMObjectPath createInstance(
        const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMInstance& newInstance);

    void modifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMInstance& modifiedInstance, Boolean includeQualifiers, const CIMPropertyList& propertyList);

    void deleteInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName);

    Array<CIMObject> execQuery(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const String& queryLanguage, const String& query);

    Array<CIMObject> associators(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);

    Array<CIMObjectPath> associatorNames(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole);

    Array<CIMObject> references(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList);

    Array<CIMObjectPath> referenceNames(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role);

    CIMValue getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName);

    void setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue);

    // Returns the method's return value and appends its output parameters
    // to outParameters (entries already there are kept).
    CIMValue invokeMethod(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters);

    // Pins the provider in memory until a matching allowProviderUnload().
    // Calls nest; they work with or without a host attached.
    void disallowProviderUnload();
    void allowProviderUnload();

    // The response context of the last operation this thread made through
    // the host (as the host reports it).
    OperationContext getResponseContext();

private:
    CIMOMHandleRep* _rep;
    friend class CIMOMHandleBackendAccess;
};

PEGASUS_NAMESPACE_END

#endif
