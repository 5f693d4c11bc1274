// What the port endpoint companions share: the array's ports as protocol
// endpoints of the storage system. Each endpoint class serves the ports of
// one protocol; an EndpointKind names the class, the array's list of those
// ports and the endpoint's Name for a port, and serve() answers getInstance
// and the enumerations from it.
//
// Keys of every endpoint: SystemCreationClassName "ZDA_StorageSystem",
// SystemName (this array's system name), CreationClassName (the endpoint's
// class) and Name (chosen by the kind). Header only, so that each companion
// library carries its own copy.
#ifndef ZDA_PORT_ENDPOINT_FRAME_H
#define ZDA_PORT_ENDPOINT_FRAME_H

#include <cstdio>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_InternalCacheService.h"
#include "ZDA_ProviderTypes.h"
#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

namespace ZDA_PortEndpointFrame
{

const char ENDPOINT_NAMESPACE[] = "root/zda";
const char SYSTEM_CLASS[] = "ZDA_StorageSystem";
const Uint32 KEY_COUNT = 4;

// The port's position on the array, "n:s:p", as remote copy links name it.
inline String positionOf(const api_port_t& port)
{
    char text[16];
    snprintf(text, sizeof text, "%u:%u:%u", unsigned(port.node), unsigned(port.slot), unsigned(port.port));
    return String(text);
}

// The path of an endpoint: host `hostName`, the four keys.
inline CIMObjectPath endpointPath(
    const char* className, const String& systemName, const String& hostName, const String& name)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("SystemCreationClassName", SYSTEM_CLASS, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", systemName, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("CreationClassName", className, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("Name", name, CIMKeyBinding::STRING));
    return CIMObjectPath(hostName, CIMNamespaceName(ENDPOINT_NAMESPACE), CIMName(className), keys);
}

// What every endpoint shows: its keys, a caption, and whether the port's
// link is up (OperationalStatus 2 OK or 10 Stopped; EnabledState 2 enabled).
inline CIMInstance endpointInstance(const char* className, const String& systemName, const String& hostName,
    const String& name, const String& caption, bool linkUp, CIMClass& endpointClass)
{
    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(endpointClass);
    ZDA_Common::setPropertyValue(instance, "SystemCreationClassName", String(SYSTEM_CLASS));
    ZDA_Common::setPropertyValue(instance, "SystemName", systemName);
    ZDA_Common::setPropertyValue(instance, "CreationClassName", String(className));
    ZDA_Common::setPropertyValue(instance, "Name", name);
    ZDA_Common::setPropertyValue(instance, "ElementName", caption);
    ZDA_Common::setPropertyValue(instance, "Caption", caption);
    Array<Uint16> status;
    status.append(linkUp ? Uint16(2) : Uint16(10));
    ZDA_Common::setPropertyValue(instance, "OperationalStatus", status);
    ZDA_Common::setPropertyValue(instance, "EnabledState", Uint16(2));
    instance.setPath(endpointPath(className, systemName, hostName, name));
    return instance;
}

// One endpoint class over the ports of one protocol.
struct EndpointKind
{
    // The class served, and the class it also answers to.
    const char* className;
    const char* superClass;
    // The provider's name: heads log lines, names the source of a refusal.
    const char* provider;
    // The array's list of the ports (int form of the semaphore).
    int (*list)(int* count, api_port_t** ports);
    // The endpoint's Name for a port.
    String (*nameOf)(const api_port_t& port);
    // The full instance of a port.
    CIMInstance (*build)(
        const api_port_t& port, const String& systemName, const String& hostName, CIMClass& endpointClass);
};

// The system name and host name the endpoints carry, from the internal
// cache. False while the array has not answered the cache's first read.
inline bool systemIdentity(const char* provider, String& systemName, String& hostName)
{
    ZDA_InternalCacheService* service = ZDA_InternalCacheService::getInstance();
    if (service->getStorageArrayUpdateTime() == 0)
    {
        log_message(2, "%s: the system identity could not be read from the array\n", provider);
        return false;
    }
    systemName = service->getSystemName();
    hostName = service->getSystemHostName();
    return true;
}

// Serves getInstance (`method` CIM_GET_INSTANCE, `reference` the instance's
// path) or an enumeration (`reference` the class): the session, the class
// check (CIMNotSupportedException), the key count of getInstance
// (CIMInvalidParameterException), then the ports of the kind, read under
// the semaphore and delivered without it. A failed or busy read answers an
// empty enumeration, and not found for getInstance, as does a reference
// that names no port by its Name.
inline void serve(const EndpointKind& kind, CIMOMHandle& cimom, const OperationContext& context,
    const CIMObjectPath& reference, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, cim_method_e method, cim_handler_u handler)
{
    log_message(4, "--> %s::serve(%d)\n", kind.provider, int(method));
    ZDA_CompanionFrame::openArrayForCaller(context, kind.provider, __LINE__);
    const CIMName given = reference.getClassName();
    if (!given.equal(kind.className) && !given.equal(kind.superClass))
        throw CIMNotSupportedException(
            String(kind.className) + " Invalid class name" + (given.isNull() ? String() : given.getString()));
    const bool getInstance = method == CIM_GET_INSTANCE;
    String wanted;
    if (getInstance)
    {
        const Uint32 keys = reference.getKeyBindings().size();
        if (keys != KEY_COUNT)
        {
            log_message(2, "%s::getInstance(): Invalid number of keys (%u)\n", kind.provider, keys);
            throw CIMInvalidParameterException(String(kind.className) + " Expect four keys.");
        }
        wanted = ZDA_Common::getStringProperty(reference, "Name");
    }

    CIMClass endpointClass;
    if (method != CIM_ENUMERATE_INSTANCE_NAMES)
        endpointClass = ZDA_Common::getStoredCIMClass(cimom, OperationContext(), ENDPOINT_NAMESPACE,
            kind.className, false, includeQualifiers, includeClassOrigin, propertyList);

    String systemName;
    String hostName;
    ZDA_CompanionFrame::ArrayList<api_port_t> ports;
    bool read = systemIdentity(kind.provider, systemName, hostName);
    if (read)
    {
        const int rc = ZDA_CompanionFrame::callUnderSemaphore(
            [&] { return kind.list(ports.count(), ports.out()); });
        if (rc != 0)
        {
            log_message(2, "%s: the port list could not be read (%d)\n", kind.provider, rc);
            read = false;
        }
    }

    bool found = false;
    if (!getInstance)
        ZDA_Common::handleProcessing(handler, method);
    for (int i = 0; read && i < ports.size(); i++)
    {
        const String name = kind.nameOf(ports[i]);
        if (getInstance && !String::equal(name, wanted))
            continue;
        CIMInstance instance;
        if (method == CIM_ENUMERATE_INSTANCE_NAMES)
        {
            instance = CIMInstance(CIMName(kind.className));
            instance.setPath(endpointPath(kind.className, systemName, hostName, name));
        }
        else
        {
            instance = kind.build(ports[i], systemName, hostName, endpointClass);
        }
        if (getInstance)
        {
            // The Name finds the port; the other keys must name it as well.
            CIMObjectPath asked = reference;
            if (asked.getNameSpace().isNull())
                asked.setNameSpace(ENDPOINT_NAMESPACE);
            if (!ZDA_Common::matchObjectPath(asked, instance.getPath()))
                break;
            ZDA_Common::handleProcessing(handler, method);
        }
        ZDA_Common::handleDeliver(handler, method, instance);
        found = true;
        if (getInstance)
            break;
    }
    if (getInstance && !found)
        throw CIMObjectNotFoundException(String(kind.className) + " CIM Object not found.");
    ZDA_Common::handleComplete(handler, method);
    log_message(4, "<-- %s::serve(%d)\n", kind.provider, int(method));
}

// The instance provider of one endpoint kind: getInstance and the
// enumerations through serve(); the endpoints follow from the ports, so the
// changing operations are refused. Thread-safe: `_cimom` is written by
// initialize only.
class EndpointProvider : public CIMInstanceProvider
{
public:
    explicit EndpointProvider(const EndpointKind& kind) : _kind(kind) {}
    virtual ~EndpointProvider() {}

    virtual void initialize(CIMOMHandle& cimom) { _cimom = cimom; }
    virtual void terminate() { delete this; }

    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
    {
        cim_handler_u h;
        h.instanceHandler = &handler;
        serve(_kind, _cimom, context, instanceReference, includeQualifiers, includeClassOrigin, propertyList,
            CIM_GET_INSTANCE, h);
    }
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
    {
        cim_handler_u h;
        h.instanceHandler = &handler;
        serve(_kind, _cimom, context, classReference, includeQualifiers, includeClassOrigin, propertyList,
            CIM_ENUMERATE_INSTANCES, h);
    }
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler)
    {
        cim_handler_u h;
        h.objectPathHandler = &handler;
        serve(_kind, _cimom, context, classReference, false, false, CIMPropertyList(),
            CIM_ENUMERATE_INSTANCE_NAMES, h);
    }
    virtual void modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
        const Boolean, const CIMPropertyList&, ResponseHandler&)
    {
        throw CIMNotSupportedException(String(_kind.className) + " does not support modifyInstance.");
    }
    virtual void createInstance(
        const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
    {
        throw CIMNotSupportedException(String(_kind.className) + " does not support createInstance.");
    }
    virtual void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&)
    {
        throw CIMNotSupportedException(String(_kind.className) + " does not support deleteInstance.");
    }

private:
    const EndpointKind& _kind;
    CIMOMHandle _cimom;
};

}  // namespace ZDA_PortEndpointFrame

PEGASUS_NAMESPACE_END

#endif
