#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/CIMOMHandleBackend.h>

#include <atomic>
#include <cxxabi.h>
#include <memory>
#include <mutex>
#include <utility>

PEGASUS_NAMESPACE_BEGIN

// Shared by all copies of one handle. The backend pointer is guarded by a
// mutex only while it is read or replaced; calls into the backend run
// without any lock held, so backends may be re-entered from any thread.
class CIMOMHandleRep
{
public:
    std::atomic<Uint32> refs{1};
    std::atomic<Sint32> unloadPins{0};

    std::shared_ptr<CIMOMHandleBackend> backend() const
    {
        std::lock_guard<std::mutex> lock(_mutex);
        return _backend;
    }

    void setBackend(std::shared_ptr<CIMOMHandleBackend> backend)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _backend.swap(backend);
        // The previous backend, if any, is released outside the lock.
    }

private:
    mutable std::mutex _mutex;
    std::shared_ptr<CIMOMHandleBackend> _backend;
};

class CIMOMHandleBackendAccess
{
public:
    static CIMOMHandleRep& rep(const CIMOMHandle& handle) { return *handle._rep; }
};

namespace
{

void release(CIMOMHandleRep* rep)
{
    if (rep->refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete rep;
}

// Runs one operation on the attached backend: fails clearly without one, and
// lets only CIMException through so that providers see what a server would
// give them.
template <class Operation>
auto forward(const CIMOMHandleRep& rep, const char* operationName, Operation&& operation)
    -> decltype(operation(std::declval<CIMOMHandleBackend&>()))
{
    std::shared_ptr<CIMOMHandleBackend> backend = rep.backend();
    if (!backend)
    {
        throw CIMException(CIM_ERR_FAILED,
            String("CIMOMHandle::") + operationName +
                ": the handle is not attached to a CIM server; only the handle a"
                " provider receives in initialize() can reach its host");
    }
    try
    {
        return operation(*backend);
    }
    catch (const CIMException&)
    {
        throw;
    }
    catch (abi::__forced_unwind&)
    {
        throw;  // thread cancellation must keep unwinding
    }
    catch (...)
    {
        throw CIMException(CIM_ERR_FAILED, "Exception caught in CIMOMHandle");
    }
}

}  // namespace

CIMOMHandle::CIMOMHandle() : _rep(new CIMOMHandleRep) {}

CIMOMHandle::CIMOMHandle(const CIMOMHandle& handle) : _rep(handle._rep)
{
    _rep->refs.fetch_add(1, std::memory_order_relaxed);
}

CIMOMHandle::~CIMOMHandle()
{
    release(_rep);
}

CIMOMHandle& CIMOMHandle::operator=(const CIMOMHandle& handle)
{
    if (_rep != handle._rep)
    {
        handle._rep->refs.fetch_add(1, std::memory_order_relaxed);
        release(_rep);
        _rep = handle._rep;
    }
    return *this;
}

CIMClass CIMOMHandle::getClass(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMName& className, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return forward(*_rep, "getClass", [&](CIMOMHandleBackend& b) {
        return b.getClass(
            context, nameSpace, className, localOnly, includeQualifiers, includeClassOrigin, propertyList);
    });
}

Array<CIMClass> CIMOMHandle::enumerateClasses(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin)
{
    return forward(*_rep, "enumerateClasses", [&](CIMOMHandleBackend& b) {
        return b.enumerateClasses(
            context, nameSpace, className, deepInheritance, localOnly, includeQualifiers, includeClassOrigin);
    });
}

Array<CIMName> CIMOMHandle::enumerateClassNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance)
{
    return forward(*_rep, "enumerateClassNames", [&](CIMOMHandleBackend& b) {
        return b.enumerateClassNames(context, nameSpace, className, deepInheritance);
    });
}

void CIMOMHandle::createClass(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMClass& newClass)
{
    forward(
        *_rep, "createClass", [&](CIMOMHandleBackend& b) { b.createClass(context, nameSpace, newClass); });
}

void CIMOMHandle::modifyClass(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMClass& modifiedClass)
{
    forward(*_rep, "modifyClass",
        [&](CIMOMHandleBackend& b) { b.modifyClass(context, nameSpace, modifiedClass); });
}

void CIMOMHandle::deleteClass(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className)
{
    forward(
        *_rep, "deleteClass", [&](CIMOMHandleBackend& b) { b.deleteClass(context, nameSpace, className); });
}

CIMInstance CIMOMHandle::getInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return forward(*_rep, "getInstance", [&](CIMOMHandleBackend& b) {
        return b.getInstance(
            context, nameSpace, instanceName, localOnly, includeQualifiers, includeClassOrigin, propertyList);
    });
}

Array<CIMInstance> CIMOMHandle::enumerateInstances(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return forward(*_rep, "enumerateInstances", [&](CIMOMHandleBackend& b) {
        return b.enumerateInstances(context, nameSpace, className, deepInheritance, localOnly,
            includeQualifiers, includeClassOrigin, propertyList);
    });
}

Array<CIMObjectPath> CIMOMHandle::enumerateInstanceNames(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMName& className)
{
    return forward(*_rep, "enumerateInstanceNames",
        [&](CIMOMHandleBackend& b) { return b.enumerateInstanceNames(context, nameSpace, className); });
}

CIMObjectPath CIMOMHandle::createInstance(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMInstance& newInstance)
{
    return forward(*_rep, "createInstance",
        [&](CIMOMHandleBackend& b) { return b.createInstance(context, nameSpace, newInstance); });
}

void CIMOMHandle::modifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance, Boolean includeQualifiers, const CIMPropertyList& propertyList)
{
    forward(*_rep, "modifyInstance", [&](CIMOMHandleBackend& b) {
        b.modifyInstance(context, nameSpace, modifiedInstance, includeQualifiers, propertyList);
    });
}

void CIMOMHandle::deleteInstance(
    const OperationContext& context, const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName)
{
    forward(*_rep, "deleteInstance",
        [&](CIMOMHandleBackend& b) { b.deleteInstance(context, nameSpace, instanceName); });
}

Array<CIMObject> CIMOMHandle::execQuery(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const String& queryLanguage, const String& query)
{
    return forward(*_rep, "execQuery",
        [&](CIMOMHandleBackend& b) { return b.execQuery(context, nameSpace, queryLanguage, query); });
}

Array<CIMObject> CIMOMHandle::associators(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return forward(*_rep, "associators", [&](CIMOMHandleBackend& b) {
        return b.associators(context, nameSpace, objectName, assocClass, resultClass, role, resultRole,
            includeQualifiers, includeClassOrigin, propertyList);
    });
}

Array<CIMObjectPath> CIMOMHandle::associatorNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole)
{
    return forward(*_rep, "associatorNames", [&](CIMOMHandleBackend& b) {
        return b.associatorNames(context, nameSpace, objectName, assocClass, resultClass, role, resultRole);
    });
}

Array<CIMObject> CIMOMHandle::references(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return forward(*_rep, "references", [&](CIMOMHandleBackend& b) {
        return b.references(context, nameSpace, objectName, resultClass, role, includeQualifiers,
            includeClassOrigin, propertyList);
    });
}

Array<CIMObjectPath> CIMOMHandle::referenceNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role)
{
    return forward(*_rep, "referenceNames", [&](CIMOMHandleBackend& b) {
        return b.referenceNames(context, nameSpace, objectName, resultClass, role);
    });
}

CIMValue CIMOMHandle::getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName)
{
    return forward(*_rep, "getProperty",
        [&](CIMOMHandleBackend& b) { return b.getProperty(context, nameSpace, instanceName, propertyName); });
}

void CIMOMHandle::setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue)
{
    forward(*_rep, "setProperty", [&](CIMOMHandleBackend& b) {
        b.setProperty(context, nameSpace, instanceName, propertyName, newValue);
    });
}

CIMValue CIMOMHandle::invokeMethod(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& methodName, const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters)
{
    return forward(*_rep, "invokeMethod", [&](CIMOMHandleBackend& b) {
        return b.invokeMethod(context, nameSpace, instanceName, methodName, inParameters, outParameters);
    });
}

void CIMOMHandle::disallowProviderUnload()
{
    _rep->unloadPins.fetch_add(1, std::memory_order_acq_rel);
}

void CIMOMHandle::allowProviderUnload()
{
    // An unmatched allow is ignored rather than letting the count go negative.
    Sint32 pins = _rep->unloadPins.load(std::memory_order_acquire);
    while (pins > 0 && !_rep->unloadPins.compare_exchange_weak(pins, pins - 1, std::memory_order_acq_rel))
    {}
}

OperationContext CIMOMHandle::getResponseContext()
{
    return forward(
        *_rep, "getResponseContext", [&](CIMOMHandleBackend& b) { return b.getResponseContext(); });
}

// Host side

CIMOMHandleBackend::~CIMOMHandleBackend() {}

void attachCIMOMHandleBackend(CIMOMHandle& handle, std::shared_ptr<CIMOMHandleBackend> backend)
{
    CIMOMHandleBackendAccess::rep(handle).setBackend(std::move(backend));
}

std::shared_ptr<CIMOMHandleBackend> getCIMOMHandleBackend(const CIMOMHandle& handle)
{
    return CIMOMHandleBackendAccess::rep(handle).backend();
}

Boolean isProviderUnloadAllowed(const CIMOMHandle& handle)
{
    return CIMOMHandleBackendAccess::rep(handle).unloadPins.load(std::memory_order_acquire) == 0;
}

PEGASUS_NAMESPACE_END
