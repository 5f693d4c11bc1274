// The host's side of CIMOMHandle: what a CIM server (or an in-process test
// host) implements so that the handles it gives to providers reach it.
//
// This header is for hosts only; providers never include it. A host creates
// a CIMOMHandle, attaches its backend with attachCIMOMHandleBackend() before
// handing the handle to a provider's initialize(), and detaches it when the
// provider is gone. Every copy the provider makes of the handle shares the
// attachment.
//
// Contract of every operation below (the same as CIMOMHandle's):
//   - It receives the caller's OperationContext exactly as the provider
//     passed it; choosing the identity of the nested request is the
//     backend's job.
//   - It may be called from any thread at once, and re-entrantly: a provider
//     serving a request the backend dispatched may call back in before that
//     request has finished. A backend must not hold its own locks across the
//     provider calls it makes.
//   - It reports failures by throwing CIMException with the status code the
//     client would see. Anything else thrown out of it reaches the provider
//     as CIMException(CIM_ERR_FAILED, "Exception caught in CIMOMHandle").
#ifndef Pegasus_CIMOMHandleBackend_h
#define Pegasus_CIMOMHandleBackend_h

#include <memory>

#include <Pegasus/Provider/CIMOMHandle.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_PROVIDER_LINKAGE CIMOMHandleBackend
{
public:
    virtual ~CIMOMHandleBackend();

    virtual CIMClass getClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMClass> enumerateClasses(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
        Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin) = 0;

    virtual Array<CIMName> enumerateClassNames(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance) = 0;

    virtual void createClass(
        const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMClass& newClass) = 0;

    virtual void modifyClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMClass& modifiedClass) = 0;

    virtual void deleteClass(
        const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className) = 0;

    // The handle passes localOnly through; a server that follows the
    // reference behaviour ignores it.
    virtual CIMInstance getInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMInstance> enumerateInstances(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
        Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath> enumerateInstanceNames(
        const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className) = 0;

    virtual CIMObjectPath createInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMInstance& newInstance) = 0;

    virtual void modifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMInstance& modifiedInstance, Boolean includeQualifiers,
        const CIMPropertyList& propertyList) = 0;

    virtual void deleteInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName) = 0;

    virtual Array<CIMObject> execQuery(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const String& queryLanguage, const String& query) = 0;

    virtual Array<CIMObject> associators(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath> associatorNames(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
        const CIMName& resultClass, const String& role, const String& resultRole) = 0;

    virtual Array<CIMObject> references(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath> referenceNames(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
        const String& role) = 0;

    virtual CIMValue getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName) = 0;

    virtual void setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue) = 0;

    // Appends the output parameters to outParameters without removing what
    // is already there, and returns the return value.
    virtual CIMValue invokeMethod(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters) = 0;

    // The response context of the last operation the calling thread made
    // through this backend.
    virtual OperationContext getResponseContext() = 0;
};

// Makes handle (and every copy of it, past or future) forward to backend,
// replacing any backend attached before. A null backend detaches: later
// calls fail with CIM_ERR_FAILED. Calls already running finish with the
// backend they started with, which stays alive until they return.
// The handle shares ownership of the backend, so a backend that keeps a copy
// of a handle it is attached to must be detached to be released.
// Thread-safe.
PEGASUS_PROVIDER_LINKAGE void attachCIMOMHandleBackend(
    CIMOMHandle& handle, std::shared_ptr<CIMOMHandleBackend> backend);

// The backend attached to handle, or null.
PEGASUS_PROVIDER_LINKAGE std::shared_ptr<CIMOMHandleBackend> getCIMOMHandleBackend(const CIMOMHandle& handle);

// False while the provider holding handle (or a copy) has called
// disallowProviderUnload() more often than allowProviderUnload(): a host
// must then keep the provider's module loaded.
PEGASUS_PROVIDER_LINKAGE Boolean isProviderUnloadAllowed(const CIMOMHandle& handle);

PEGASUS_NAMESPACE_END

#endif
