// CIMClient: a WBEM client connection to a CIM server.
//
// connect() reaches a server over the network (HTTP, or HTTPS when given an
// SSLContext), with Basic authentication. connectLocal() reaches the server
// on this machine: the loopback an in-process host installed if there is
// one, otherwise the server's Unix socket named by ZDA_CIMSERVER_SOCKET. The
// transports behind both are registered at run time (CIMClientTransport.h);
// when the one a connect call needs is not available it throws
// CannotConnectException saying which, so callers can catch it and fall back.
//
// Errors: an operation before a connect throws NotConnectedException; a CIM
// error from the server throws CIMException whose getCode() is the server's
// code and whose getMessage() is the server's description text
// ("CIM_ERR_NOT_FOUND: ..."); an exchange that breaks below the CIM level
// throws the exceptions of CIMClientException.h or ConnectionTimeoutException.
//
// A client is not copyable and not synchronised: use one per thread.
#ifndef Pegasus_CIMClient_h
#define Pegasus_CIMClient_h

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
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/SSLContext.h>
#include <Pegasus/Client/Linkage.h>
#include <Pegasus/Client/CIMClientException.h>
#include <Pegasus/Client/CIMEnumerationContext.h>
#include <Pegasus/Common/UintArgs.h>

PEGASUS_NAMESPACE_BEGIN

class CIMClientRep;

class PEGASUS_CLIENT_LINKAGE CIMClient
{
public:
    CIMClient();
    ~CIMClient();

    // Time to wait for each response, in milliseconds; 20000 by default.
    Uint32 getTimeout() const;
    void setTimeout(Uint32 timeoutMilliseconds);

    // Already connected: AlreadyConnectedException. No network transport
    // available or the server cannot be reached: CannotConnectException.
    void connect(const String& host, const Uint32 portNumber, const String& userName, const String& password);
    void connect(const String& host, const Uint32 portNumber, const SSLContext& sslContext,
        const String& userName, const String& password);

    // Connects to the server of this machine, as described above. Already
    // connected: AlreadyConnectedException; no local server reachable:
    // CannotConnectException.
    void connectLocal();

    // Closes the connection; does nothing when not connected.
    void disconnect();

    CIMClass getClass(const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly = true,
        Boolean includeQualifiers = true, Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMClass> enumerateClasses(const CIMNamespaceName& nameSpace, const CIMName& className = CIMName(),
        Boolean deepInheritance = false, Boolean localOnly = true, Boolean includeQualifiers = true,
        Boolean includeClassOrigin = false);

    Array<CIMName> enumerateClassNames(const CIMNamespaceName& nameSpace,
        const CIMName& className = CIMName(), Boolean deepInheritance = false);

    void createClass(const CIMNamespaceName& nameSpace, const CIMClass& newClass);

    void modifyClass(const CIMNamespaceName& nameSpace, const CIMClass& modifiedClass);

    void deleteClass(const CIMNamespaceName& nameSpace, const CIMName& className);

    CIMInstance getInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        Boolean localOnly = true, Boolean includeQualifiers = false, Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMInstance> enumerateInstances(const CIMNamespaceName& nameSpace, const CIMName& className,
        Boolean deepInheritance = true, Boolean localOnly = true, Boolean includeQualifiers = false,
        Boolean includeClassOrigin = false, const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> enumerateInstanceNames(const CIMNamespaceName& nameSpace, const CIMName& className);

    CIMObjectPath createInstance(const CIMNamespaceName& nameSpace, const CIMInstance& newInstance);

    void modifyInstance(const CIMNamespaceName& nameSpace, const CIMInstance& modifiedInstance,
        Boolean includeQualifiers = true, const CIMPropertyList& propertyList = CIMPropertyList());

    void deleteInstance(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName);

    Array<CIMObject> execQuery(
        const CIMNamespaceName& nameSpace, const String& queryLanguage, const String& query);

    Array<CIMObject> associators(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass = CIMName(), const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY, const String& resultRole = String::EMPTY,
        Boolean includeQualifiers = false, Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> associatorNames(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass = CIMName(), const CIMName& resultClass = CIMName(),
        const String& role = String::EMPTY, const String& resultRole = String::EMPTY);

    Array<CIMObject> references(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(), const String& role = String::EMPTY,
        Boolean includeQualifiers = false, Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList());

    Array<CIMObjectPath> referenceNames(const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(), const String& role = String::EMPTY);

    CIMValue getProperty(
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName, const CIMName& propertyName);

    void setProperty(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& propertyName, const CIMValue& newValue = CIMValue());

    // Returns the method's return value and appends its output parameters
    // to outParameters.
    CIMValue invokeMethod(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters);

    // Pulled enumerations. An open starts one on the server and returns its
    // first (at most maxObjectCount) results; while endOfSequence is false,
    // the pulls return the next ones, and closeEnumeration() ends it early.
    // enumerationContext is filled by the open and cleared when the
    // sequence ends. Instances come with their paths.
    Array<CIMInstance> openEnumerateInstances(CIMEnumerationContext& enumerationContext,
        Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMName& className,
        Boolean deepInheritance = true, Boolean includeClassOrigin = false,
        const CIMPropertyList& propertyList = CIMPropertyList(), const String& filterQueryLanguage = String(),
        const String& filterQuery = String(), const Uint32Arg& operationTimeout = Uint32Arg(),
        Boolean continueOnError = false, Uint32 maxObjectCount = 0);

    Array<CIMObjectPath> openEnumerateInstancePaths(CIMEnumerationContext& enumerationContext,
        Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMName& className,
        const String& filterQueryLanguage = String(), const String& filterQuery = String(),
        const Uint32Arg& operationTimeout = Uint32Arg(), Boolean continueOnError = false,
        Uint32 maxObjectCount = 0);

    Array<CIMInstance> openReferenceInstances(CIMEnumerationContext& enumerationContext,
        Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(), const String& role = String(),
        Boolean includeClassOrigin = false, const CIMPropertyList& propertyList = CIMPropertyList(),
        const String& filterQueryLanguage = String(), const String& filterQuery = String(),
        const Uint32Arg& operationTimeout = Uint32Arg(), Boolean continueOnError = false,
        Uint32 maxObjectCount = 0);

    Array<CIMObjectPath> openReferenceInstancePaths(CIMEnumerationContext& enumerationContext,
        Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass = CIMName(), const String& role = String(),
        const String& filterQueryLanguage = String(), const String& filterQuery = String(),
        const Uint32Arg& operationTimeout = Uint32Arg(), Boolean continueOnError = false,
        Uint32 maxObjectCount = 0);

    Array<CIMInstance> openAssociatorInstances(CIMEnumerationContext& enumerationContext,
        Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass = CIMName(), const CIMName& resultClass = CIMName(),
        const String& role = String(), const String& resultRole = String(),
        Boolean includeClassOrigin = false, const CIMPropertyList& propertyList = CIMPropertyList(),
        const String& filterQueryLanguage = String(), const String& filterQuery = String(),
        const Uint32Arg& operationTimeout = Uint32Arg(), Boolean continueOnError = false,
        Uint32 maxObjectCount = 0);

    Array<CIMObjectPath> openAssociatorInstancePaths(CIMEnumerationContext& enumerationContext,
        Boolean& endOfSequence, const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass = CIMName(), const CIMName& resultClass = CIMName(),
        const String& role = String(), const String& resultRole = String(),
        const String& filterQueryLanguage = String(), const String& filterQuery = String(),
        const Uint32Arg& operationTimeout = Uint32Arg(), Boolean continueOnError = false,
        Uint32 maxObjectCount = 0);

    Array<CIMInstance> pullInstancesWithPath(
        CIMEnumerationContext& enumerationContext, Boolean& endOfSequence, Uint32 maxObjectCount);

    Array<CIMObjectPath> pullInstancePaths(
        CIMEnumerationContext& enumerationContext, Boolean& endOfSequence, Uint32 maxObjectCount);

    void closeEnumeration(CIMEnumerationContext& enumerationContext);

private:
    CIMClient(const CIMClient&);
    CIMClient& operator=(const CIMClient&);

    CIMClientRep* _rep;
};

PEGASUS_NAMESPACE_END

#endif
