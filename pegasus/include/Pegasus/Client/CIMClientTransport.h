// How CIMClient reaches a server: a transport per connection, and the
// process-wide places where transports are made available.
//
// CIMClient itself knows no wire format. connect() asks the network
// transport factory for a connection, connectLocal() the loopback factory or
// the local socket factory; each operation of the client is then forwarded
// unchanged to the transport it got. The factories are registered by the
// libraries that implement them: the CIM-XML codec library registers the
// network (HTTP/HTTPS) and local socket transports, and an in-process host
// registers a loopback to itself. Until one is registered the matching
// connect call fails with CannotConnectException naming what is missing.
#ifndef Pegasus_CIMClientTransport_h
#define Pegasus_CIMClientTransport_h

#include <functional>
#include <memory>

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
#include <Pegasus/Common/SSLContext.h>
#include <Pegasus/Client/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

// One open connection to a server. Used by one CIMClient, hence one thread
// at a time. Each operation has the meaning and arguments of the CIMClient
// operation of the same name and reports failures the same way:
// CIMException for a CIM error the server returned (its message is the
// server's description text), ConnectionTimeoutException when the timeout
// expires, the CIMClient*Exception classes for a broken exchange.
// The destructor closes the connection.
class PEGASUS_CLIENT_LINKAGE CIMClientTransport
{
public:
    virtual ~CIMClientTransport();

    // Time to wait for each response; called on connect and when the
    // client's timeout changes.
    virtual void setTimeout(Uint32 timeoutMilliseconds) = 0;

    virtual CIMClass getClass(const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMClass> enumerateClasses(const CIMNamespaceName& nameSpace, const CIMName& className,
        Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin) = 0;

    virtual Array<CIMName> enumerateClassNames(
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance) = 0;

    virtual void createClass(const CIMNamespaceName& nameSpace, const CIMClass& newClass) = 0;

    virtual void modifyClass(const CIMNamespaceName& nameSpace, const CIMClass& modifiedClass) = 0;

    virtual void deleteClass(const CIMNamespaceName& nameSpace, const CIMName& className) = 0;

    virtual CIMInstance getInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMInstance> enumerateInstances(const CIMNamespaceName& nameSpace, const CIMName& className,
        Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath> enumerateInstanceNames(
        const CIMNamespaceName& nameSpace, const CIMName& className) = 0;

    virtual CIMObjectPath createInstance(
        const CIMNamespaceName& nameSpace, const CIMInstance& newInstance) = 0;

    virtual void modifyInstance(const CIMNamespaceName& nameSpace, const CIMInstance& modifiedInstance,
        Boolean includeQualifiers, const CIMPropertyList& propertyList) = 0;

    virtual void deleteInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName) = 0;

    virtual Array<CIMObject> execQuery(
        const CIMNamespaceName& nameSpace, const String& queryLanguage, const String& query) = 0;

    virtual Array<CIMObject> associators(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role, const String& resultRole,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath> associatorNames(const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole) = 0;

    virtual Array<CIMObject> references(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;

    virtual Array<CIMObjectPath> referenceNames(const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role) = 0;

    virtual CIMValue getProperty(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& propertyName) = 0;

    virtual void setProperty(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& propertyName, const CIMValue& newValue) = 0;

    // Appends the output parameters to outParameters; returns the return value.
    virtual CIMValue invokeMethod(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters) = 0;

    // The pull operations, by name ("OpenEnumerateInstances", ...,
    // "CloseEnumeration") with their named parameters: returns the result
    // (Array<CIMInstance> with paths, or Array<CIMObjectPath>) and appends
    // EnumerationContext and EndOfSequence to outParameters. Transports
    // without them refuse with CIM_ERR_NOT_SUPPORTED.
    virtual CIMValue invokePullOperation(const CIMNamespaceName& nameSpace, const String& operation,
        const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters);
};

// What CIMClient::connect() was asked for. sslContext is null for plain
// HTTP; it points to the caller's context only during the factory call, so a
// transport copies what it needs.
struct CIMClientNetworkTarget
{
    String host;
    Uint32 portNumber;
    String userName;
    String password;
    const SSLContext* sslContext;
    Uint32 timeoutMilliseconds;
};

// A factory opens a connection and returns its transport, or throws
// CannotConnectException (or another connection exception) when it cannot.
// Factories may be called from several threads at once.
typedef std::function<std::unique_ptr<CIMClientTransport>(const CIMClientNetworkTarget& target)>
    CIMClientNetworkTransportFactory;
typedef std::function<std::unique_ptr<CIMClientTransport>(
    const String& socketPath, Uint32 timeoutMilliseconds)>
    CIMClientLocalSocketTransportFactory;
typedef std::function<std::unique_ptr<CIMClientTransport>(Uint32 timeoutMilliseconds)>
    CIMClientLoopbackTransportFactory;

// The process-wide registration points. Each setter replaces the factory
// registered before; an empty function removes it. Clients that are already
// connected keep their transports. Thread-safe.
class PEGASUS_CLIENT_LINKAGE CIMClientTransports
{
public:
    // Used by connect() for HTTP and HTTPS.
    static void setNetworkTransportFactory(CIMClientNetworkTransportFactory factory);

    // Used by connectLocal() to reach the server's Unix socket.
    static void setLocalSocketTransportFactory(CIMClientLocalSocketTransportFactory factory);

    // Used by connectLocal() ahead of the socket: a host running in this
    // process installs it so that its providers' local clients reach it
    // without a socket.
    static void setLoopbackTransportFactory(CIMClientLoopbackTransportFactory factory);

    static Boolean hasNetworkTransportFactory();
    static Boolean hasLocalSocketTransportFactory();
    static Boolean hasLoopbackTransportFactory();

    // The environment variable that names the server's Unix socket.
    static const char LOCAL_SOCKET_ENVIRONMENT_VARIABLE[];  // "ZDA_CIMSERVER_SOCKET"
};

PEGASUS_NAMESPACE_END

#endif
