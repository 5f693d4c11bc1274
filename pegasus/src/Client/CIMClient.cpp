#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Client/CIMClientTransport.h>
#include "TransportRegistry.h"

#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <memory>

PEGASUS_NAMESPACE_BEGIN

namespace
{
const Uint32 DEFAULT_TIMEOUT_MILLISECONDS = 20000;
}

class CIMClientRep
{
public:
    Uint32 timeoutMilliseconds = DEFAULT_TIMEOUT_MILLISECONDS;
    std::unique_ptr<CIMClientTransport> transport;

    CIMClientTransport& connected()
    {
        if (!transport)
            throw NotConnectedException();
        return *transport;
    }

    void refuseIfConnected() const
    {
        if (transport)
            throw AlreadyConnectedException();
    }

    // Runs a factory and takes its transport. `what` names the server for
    // messages (CannotConnectException puts "Cannot connect to: " in front). Connection exceptions (and any
    // other Exception a factory throws) pass unchanged; everything else
    // becomes CannotConnectException so that callers need to catch only the
    // client's own exception classes.
    template <class MakeTransport>
    void open(const String& what, MakeTransport&& makeTransport)
    {
        std::unique_ptr<CIMClientTransport> opened;
        try
        {
            opened = makeTransport();
        }
        catch (const Exception&)
        {
            throw;
        }
        catch (abi::__forced_unwind&)
        {
            throw;
        }
        catch (const std::exception& e)
        {
            throw CannotConnectException(what + ": " + e.what());
        }
        catch (...)
        {
            throw CannotConnectException(what + ": unknown failure");
        }
        if (!opened)
            throw CannotConnectException(what + ": the transport returned no connection");
        opened->setTimeout(timeoutMilliseconds);
        transport = std::move(opened);
    }
};

namespace
{

// The named parameters of one pull operation.
class PullParameters
{
public:
    PullParameters& with(const char* name, const CIMValue& value)
    {
        if (!value.isNull())
            _parameters.append(CIMParamValue(name, value));
        return *this;
    }
    PullParameters& name(const char* name, const CIMName& value)
    {
        return value.isNull() ? *this : with(name, CIMValue(value.getString()));
    }
    PullParameters& text(const char* name, const String& value)
    {
        return value.size() == 0 ? *this : with(name, CIMValue(value));
    }
    PullParameters& properties(const CIMPropertyList& list)
    {
        if (list.isNull())
            return *this;
        Array<String> names;
        for (Uint32 i = 0; i < list.size(); i++)
            names.append(list[i].getString());
        return with("PropertyList", CIMValue(names));
    }
    PullParameters& filter(const String& language, const String& query, const Uint32Arg& timeout,
        Boolean continueOnError, Uint32 maxObjectCount)
    {
        text("FilterQueryLanguage", language).text("FilterQuery", query);
        if (!timeout.isNull())
            with("OperationTimeout", CIMValue(timeout.getValue()));
        return with("ContinueOnError", CIMValue(continueOnError))
            .with("MaxObjectCount", CIMValue(maxObjectCount));
    }
    const Array<CIMParamValue>& get() const { return _parameters; }

private:
    Array<CIMParamValue> _parameters;
};

}  // namespace

CIMClient::CIMClient() : _rep(new CIMClientRep) {}

CIMClient::~CIMClient()
{
    delete _rep;
}

Uint32 CIMClient::getTimeout() const
{
    return _rep->timeoutMilliseconds;
}

void CIMClient::setTimeout(Uint32 timeoutMilliseconds)
{
    if (_rep->transport)
        _rep->transport->setTimeout(timeoutMilliseconds);
    _rep->timeoutMilliseconds = timeoutMilliseconds;
}

namespace
{

void connectNetwork(CIMClientRep& rep, const String& host, Uint32 portNumber, const SSLContext* sslContext,
    const String& userName, const String& password)
{
    rep.refuseIfConnected();
    String where;
    where.appendPrintf("%s:%u", (const char*)host.getCString(), portNumber);
    CIMClientNetworkTransportFactory factory = ClientTransportRegistry::networkFactory();
    if (!factory)
    {
        throw CannotConnectException(
            where + ": no network (HTTP/HTTPS) transport is registered in this process");
    }
    CIMClientNetworkTarget target{host, portNumber, userName, password, sslContext, rep.timeoutMilliseconds};
    rep.open(where, [&] { return factory(target); });
}

}  // namespace

void CIMClient::connect(
    const String& host, const Uint32 portNumber, const String& userName, const String& password)
{
    connectNetwork(*_rep, host, portNumber, nullptr, userName, password);
}

void CIMClient::connect(const String& host, const Uint32 portNumber, const SSLContext& sslContext,
    const String& userName, const String& password)
{
    connectNetwork(*_rep, host, portNumber, &sslContext, userName, password);
}

void CIMClient::connectLocal()
{
    _rep->refuseIfConnected();
    const Uint32 timeout = _rep->timeoutMilliseconds;

    // A host in this process comes first: it is the server this process
    // belongs to, and reaching it needs no socket.
    if (CIMClientLoopbackTransportFactory loopback = ClientTransportRegistry::loopbackFactory())
    {
        _rep->open("the in-process CIM server", [&] { return loopback(timeout); });
        return;
    }

    const char* socketPath = std::getenv(CIMClientTransports::LOCAL_SOCKET_ENVIRONMENT_VARIABLE);
    if (!socketPath || !*socketPath)
    {
        throw CannotConnectException(String("the local CIM server: no in-process server is installed and ") +
            CIMClientTransports::LOCAL_SOCKET_ENVIRONMENT_VARIABLE + " is not set");
    }
    const String path(socketPath);
    const String where = "the local CIM server at " + path;
    CIMClientLocalSocketTransportFactory socket = ClientTransportRegistry::localSocketFactory();
    if (!socket)
        throw CannotConnectException(where + ": no Unix socket transport is registered in this process");
    _rep->open(where, [&] { return socket(path, timeout); });
}

void CIMClient::disconnect()
{
    _rep->transport.reset();
}

CIMClass CIMClient::getClass(const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _rep->connected().getClass(
        nameSpace, className, localOnly, includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMClass> CIMClient::enumerateClasses(const CIMNamespaceName& nameSpace, const CIMName& className,
    Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin)
{
    return _rep->connected().enumerateClasses(
        nameSpace, className, deepInheritance, localOnly, includeQualifiers, includeClassOrigin);
}

Array<CIMName> CIMClient::enumerateClassNames(
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance)
{
    return _rep->connected().enumerateClassNames(nameSpace, className, deepInheritance);
}

void CIMClient::createClass(const CIMNamespaceName& nameSpace, const CIMClass& newClass)
{
    _rep->connected().createClass(nameSpace, newClass);
}

void CIMClient::modifyClass(const CIMNamespaceName& nameSpace, const CIMClass& modifiedClass)
{
    _rep->connected().modifyClass(nameSpace, modifiedClass);
}

void CIMClient::deleteClass(const CIMNamespaceName& nameSpace, const CIMName& className)
{
    _rep->connected().deleteClass(nameSpace, className);
}

CIMInstance CIMClient::getInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
    Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _rep->connected().getInstance(
        nameSpace, instanceName, localOnly, includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMInstance> CIMClient::enumerateInstances(const CIMNamespaceName& nameSpace, const CIMName& className,
    Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _rep->connected().enumerateInstances(nameSpace, className, deepInheritance, localOnly,
        includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CIMClient::enumerateInstanceNames(
    const CIMNamespaceName& nameSpace, const CIMName& className)
{
    return _rep->connected().enumerateInstanceNames(nameSpace, className);
}

CIMObjectPath CIMClient::createInstance(const CIMNamespaceName& nameSpace, const CIMInstance& newInstance)
{
    return _rep->connected().createInstance(nameSpace, newInstance);
}

void CIMClient::modifyInstance(const CIMNamespaceName& nameSpace, const CIMInstance& modifiedInstance,
    Boolean includeQualifiers, const CIMPropertyList& propertyList)
{
    _rep->connected().modifyInstance(nameSpace, modifiedInstance, includeQualifiers, propertyList);
}

void CIMClient::deleteInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName)
{
    _rep->connected().deleteInstance(nameSpace, instanceName);
}

Array<CIMObject> CIMClient::execQuery(
    const CIMNamespaceName& nameSpace, const String& queryLanguage, const String& query)
{
    return _rep->connected().execQuery(nameSpace, queryLanguage, query);
}

Array<CIMObject> CIMClient::associators(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
    const CIMName& assocClass, const CIMName& resultClass, const String& role, const String& resultRole,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return _rep->connected().associators(nameSpace, objectName, assocClass, resultClass, role, resultRole,
        includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CIMClient::associatorNames(const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole)
{
    return _rep->connected().associatorNames(
        nameSpace, objectName, assocClass, resultClass, role, resultRole);
}

Array<CIMObject> CIMClient::references(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
    const CIMName& resultClass, const String& role, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    return _rep->connected().references(
        nameSpace, objectName, resultClass, role, includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CIMClient::referenceNames(const CIMNamespaceName& nameSpace,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role)
{
    return _rep->connected().referenceNames(nameSpace, objectName, resultClass, role);
}

CIMValue CIMClient::getProperty(
    const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName, const CIMName& propertyName)
{
    return _rep->connected().getProperty(nameSpace, instanceName, propertyName);
}

void CIMClient::setProperty(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
    const CIMName& propertyName, const CIMValue& newValue)
{
    _rep->connected().setProperty(nameSpace, instanceName, propertyName, newValue);
}

CIMValue CIMClient::invokeMethod(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
    const CIMName& methodName, const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters)
{
    return _rep->connected().invokeMethod(nameSpace, instanceName, methodName, inParameters, outParameters);
}

// ---- pulled enumerations ----

namespace
{

// Runs one pull operation and keeps the context it answers.
template <class T>
Array<T> runPull(CIMClientTransport& transport, CIMEnumerationContext& context, String& contextText,
    CIMNamespaceName& contextNameSpace, Boolean& endOfSequence, const CIMNamespaceName& nameSpace,
    const char* operation, const Array<CIMParamValue>& parameters)
{
    Array<CIMParamValue> out;
    CIMValue result = transport.invokePullOperation(nameSpace, operation, parameters, out);
    endOfSequence = true;
    contextText.clear();
    for (Uint32 i = 0; i < out.size(); i++)
    {
        const CIMValue& v = out[i].getValue();
        if (v.isNull())
            continue;
        if (String::equalNoCase(out[i].getParameterName(), "EndOfSequence"))
            v.get(endOfSequence);
        else if (String::equalNoCase(out[i].getParameterName(), "EnumerationContext"))
            v.get(contextText);
    }
    if (endOfSequence)
        context.clear();
    else
        contextNameSpace = nameSpace;
    Array<T> items;
    if (!result.isNull())
        result.get(items);
    return items;
}

}  // namespace

#define ZDA_PULL(T, operation, nameSpace, parameters)                                                        \
    runPull<T>(_rep->connected(), enumerationContext, enumerationContext._context,                           \
        enumerationContext._nameSpace, endOfSequence, nameSpace, operation, parameters)

Array<CIMInstance> CIMClient::openEnumerateInstances(CIMEnumerationContext& enumerationContext,
    Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMName& className,
    Boolean deepInheritance, Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    const String& filterQueryLanguage, const String& filterQuery, const Uint32Arg& operationTimeout,
    Boolean continueOnError, Uint32 maxObjectCount)
{
    PullParameters p;
    p.name("ClassName", className)
        .with("DeepInheritance", CIMValue(deepInheritance))
        .with("IncludeClassOrigin", CIMValue(includeClassOrigin))
        .properties(propertyList)
        .filter(filterQueryLanguage, filterQuery, operationTimeout, continueOnError, maxObjectCount);
    return ZDA_PULL(CIMInstance, "OpenEnumerateInstances", nameSpace, p.get());
}

Array<CIMObjectPath> CIMClient::openEnumerateInstancePaths(CIMEnumerationContext& enumerationContext,
    Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMName& className,
    const String& filterQueryLanguage, const String& filterQuery, const Uint32Arg& operationTimeout,
    Boolean continueOnError, Uint32 maxObjectCount)
{
    PullParameters p;
    p.name("ClassName", className)
        .filter(filterQueryLanguage, filterQuery, operationTimeout, continueOnError, maxObjectCount);
    return ZDA_PULL(CIMObjectPath, "OpenEnumerateInstancePaths", nameSpace, p.get());
}

Array<CIMInstance> CIMClient::openReferenceInstances(CIMEnumerationContext& enumerationContext,
    Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
    const CIMName& resultClass, const String& role, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, const String& filterQueryLanguage, const String& filterQuery,
    const Uint32Arg& operationTimeout, Boolean continueOnError, Uint32 maxObjectCount)
{
    PullParameters p;
    p.with("InstanceName", CIMValue(objectName))
        .name("ResultClass", resultClass)
        .text("Role", role)
        .with("IncludeClassOrigin", CIMValue(includeClassOrigin))
        .properties(propertyList)
        .filter(filterQueryLanguage, filterQuery, operationTimeout, continueOnError, maxObjectCount);
    return ZDA_PULL(CIMInstance, "OpenReferenceInstances", nameSpace, p.get());
}

Array<CIMObjectPath> CIMClient::openReferenceInstancePaths(CIMEnumerationContext& enumerationContext,
    Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
    const CIMName& resultClass, const String& role, const String& filterQueryLanguage,
    const String& filterQuery, const Uint32Arg& operationTimeout, Boolean continueOnError,
    Uint32 maxObjectCount)
{
    PullParameters p;
    p.with("InstanceName", CIMValue(objectName))
        .name("ResultClass", resultClass)
        .text("Role", role)
        .filter(filterQueryLanguage, filterQuery, operationTimeout, continueOnError, maxObjectCount);
    return ZDA_PULL(CIMObjectPath, "OpenReferenceInstancePaths", nameSpace, p.get());
}

Array<CIMInstance> CIMClient::openAssociatorInstances(CIMEnumerationContext& enumerationContext,
    Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
    const CIMName& assocClass, const CIMName& resultClass, const String& role, const String& resultRole,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList, const String& filterQueryLanguage,
    const String& filterQuery, const Uint32Arg& operationTimeout, Boolean continueOnError,
    Uint32 maxObjectCount)
{
    PullParameters p;
    p.with("InstanceName", CIMValue(objectName))
        .name("AssocClass", assocClass)
        .name("ResultClass", resultClass)
        .text("Role", role)
        .text("ResultRole", resultRole)
        .with("IncludeClassOrigin", CIMValue(includeClassOrigin))
        .properties(propertyList)
        .filter(filterQueryLanguage, filterQuery, operationTimeout, continueOnError, maxObjectCount);
    return ZDA_PULL(CIMInstance, "OpenAssociatorInstances", nameSpace, p.get());
}

Array<CIMObjectPath> CIMClient::openAssociatorInstancePaths(CIMEnumerationContext& enumerationContext,
    Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
    const CIMName& assocClass, const CIMName& resultClass, const String& role, const String& resultRole,
    const String& filterQueryLanguage, const String& filterQuery, const Uint32Arg& operationTimeout,
    Boolean continueOnError, Uint32 maxObjectCount)
{
    PullParameters p;
    p.with("InstanceName", CIMValue(objectName))
        .name("AssocClass", assocClass)
        .name("ResultClass", resultClass)
        .text("Role", role)
        .text("ResultRole", resultRole)
        .filter(filterQueryLanguage, filterQuery, operationTimeout, continueOnError, maxObjectCount);
    return ZDA_PULL(CIMObjectPath, "OpenAssociatorInstancePaths", nameSpace, p.get());
}

// The namespace is copied: a pull that ends the sequence clears the context.
#define ZDA_NEXT(T, operation)                                                                               \
    ZDA_PULL(T, operation, CIMNamespaceName(enumerationContext._nameSpace),                                  \
        PullParameters()                                                                                     \
            .with("EnumerationContext", CIMValue(enumerationContext._context))                               \
            .with("MaxObjectCount", CIMValue(maxObjectCount))                                                \
            .get())

Array<CIMInstance> CIMClient::pullInstancesWithPath(
    CIMEnumerationContext& enumerationContext, Boolean& endOfSequence, Uint32 maxObjectCount)
{
    return ZDA_NEXT(CIMInstance, "PullInstancesWithPath");
}

Array<CIMObjectPath> CIMClient::pullInstancePaths(
    CIMEnumerationContext& enumerationContext, Boolean& endOfSequence, Uint32 maxObjectCount)
{
    return ZDA_NEXT(CIMObjectPath, "PullInstancePaths");
}

#undef ZDA_NEXT

#undef ZDA_PULL

void CIMClient::closeEnumeration(CIMEnumerationContext& enumerationContext)
{
    Array<CIMParamValue> parameters;
    parameters.append(CIMParamValue("EnumerationContext", CIMValue(enumerationContext._context)));
    Array<CIMParamValue> out;
    _rep->connected().invokePullOperation(enumerationContext._nameSpace, "CloseEnumeration", parameters, out);
    enumerationContext.clear();
}

PEGASUS_NAMESPACE_END
