// The array as a ZDA_StorageSystem instance.
#include "ZDA_StorageSystemProvider.h"

#include <cstdio>

#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

const String ClassName = "ZDA_StorageSystem";
const char SOURCE_FILE[] = "ZDA_StorageSystemProvider";
const char SYSTEM_NAMESPACE[] = "root/zda";
const Uint32 KEY_COUNT = 2;

// CIM_ComputerSystem.Dedicated: a storage system.
const Uint16 DEDICATED_STORAGE = 3;
const Uint16 STATUS_OK = 2;
const Uint16 STATUS_DEGRADED = 3;
const Uint16 HEALTH_OK = 5;
const Uint16 HEALTH_DEGRADED = 10;

CIMObjectPath systemPath(String const& hostName, String const& nameSpace, String const& name)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("CreationClassName", ClassName, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("Name", name, CIMKeyBinding::STRING));
    return CIMObjectPath(hostName, CIMNamespaceName(nameSpace), CIMName(ClassName), keys);
}

}  // namespace

ZDA_StorageSystemProvider::ZDA_StorageSystemProvider() = default;
ZDA_StorageSystemProvider::~ZDA_StorageSystemProvider() = default;

CIMObjectPath ZDA_StorageSystemProvider::createObjectPath(
    String const& hostAddr, String const& wwn, String const& nameSpace)
{
    return systemPath(hostAddr, nameSpace, wwn);
}

CIMObjectPath ZDA_StorageSystemProvider::buildObjectPath(String const& hostName, String const& systemName)
{
    return systemPath(hostName, SYSTEM_NAMESPACE, systemName);
}

CIMInstance ZDA_StorageSystemProvider::buildInstance(const api_system_info_t& info, CIMClass& systemClass)
{
    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(systemClass);
    const String name = info.name;
    ZDA_Common::setPropertyValue(instance, "CreationClassName", ClassName);
    ZDA_Common::setPropertyValue(instance, "Name", name);
    ZDA_Common::setPropertyValue(instance, "NameFormat", "Other");
    ZDA_Common::setPropertyValue(instance, "ElementName", name);
    ZDA_Common::setPropertyValue(instance, "Caption", name);

    // The array's other identities: the node WWN (by which remote arrays
    // name it) and the serial number.
    char serial[16];
    snprintf(serial, sizeof serial, "%u", info.id);
    Array<String> identities;
    identities.append(String(info.wwn));
    identities.append(String(serial));
    Array<String> descriptions;
    descriptions.append("Node WWN");
    descriptions.append("Serial Number");
    ZDA_Common::setPropertyValue(instance, "OtherIdentifyingInfo", identities);
    ZDA_Common::setPropertyValue(instance, "IdentifyingDescriptions", descriptions);

    if (info.owner[0])
        ZDA_Common::setPropertyValue(instance, "PrimaryOwnerName", String(info.owner));
    if (info.contact[0])
        ZDA_Common::setPropertyValue(instance, "PrimaryOwnerContact", String(info.contact));

    Array<Uint16> dedicated;
    dedicated.append(DEDICATED_STORAGE);
    ZDA_Common::setPropertyValue(instance, "Dedicated", dedicated);

    // A node down leaves the array serving, with less redundancy.
    const bool allNodesUp = info.nodesAlive >= info.nodesTotal;
    Array<Uint16> status;
    status.append(allNodesUp ? STATUS_OK : STATUS_DEGRADED);
    ZDA_Common::setPropertyValue(instance, "OperationalStatus", status);
    ZDA_Common::setPropertyValue(instance, "HealthState", allNodesUp ? HEALTH_OK : HEALTH_DEGRADED);

    instance.setPath(buildObjectPath(String(info.hostName), name));
    return instance;
}

void ZDA_StorageSystemProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
}

void ZDA_StorageSystemProvider::terminate()
{
    delete this;
}

void ZDA_StorageSystemProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSystemProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(instanceReference, ClassName, "CIM_ComputerSystem");
    const Uint32 keyCount = instanceReference.getKeyBindings().size();
    if (keyCount != KEY_COUNT)
    {
        log_message(2, "ZDA_StorageSystemProvider::getInstance(): Invalid number of keys (%u)\n", keyCount);
        throw CIMInvalidParameterException(ClassName + " Expect two keys.");
    }
    cim_handler_u h;
    h.instanceHandler = &handler;
    _deliverInstances(
        context, instanceReference, includeQualifiers, includeClassOrigin, propertyList, CIM_GET_INSTANCE, h);
    log_message(4, "<-- ZDA_StorageSystemProvider::getInstance()\n");
}

void ZDA_StorageSystemProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSystemProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, "CIM_ComputerSystem");
    cim_handler_u h;
    h.instanceHandler = &handler;
    _deliverInstances(context, CIMObjectPath(), includeQualifiers, includeClassOrigin, propertyList,
        CIM_ENUMERATE_INSTANCES, h);
    log_message(4, "<-- ZDA_StorageSystemProvider::enumerateInstances()\n");
}

void ZDA_StorageSystemProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_StorageSystemProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    ZDA_CompanionFrame::checkClassName(classReference, ClassName, "CIM_ComputerSystem");
    cim_handler_u h;
    h.objectPathHandler = &handler;
    _deliverInstances(
        context, CIMObjectPath(), false, false, CIMPropertyList(), CIM_ENUMERATE_INSTANCE_NAMES, h);
    log_message(4, "<-- ZDA_StorageSystemProvider::enumerateInstanceNames()\n");
}

void ZDA_StorageSystemProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ZDA_StorageSystemProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ZDA_StorageSystemProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

void ZDA_StorageSystemProvider::_deliverInstances(const OperationContext&, const CIMObjectPath& reference,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    cim_method_e method, cim_handler_u handler)
{
    // The class first: the server is not called while the array is held.
    CIMClass systemClass;
    if (method != CIM_ENUMERATE_INSTANCE_NAMES)
        systemClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), SYSTEM_NAMESPACE, ClassName,
            false, includeQualifiers, includeClassOrigin, propertyList);

    api_system_info_t info;
    const int rc = ZDA_CompanionFrame::callUnderSemaphore([&] { return api_getSystemInfo(&info); });
    bool found = rc == 0;
    if (!found)
        log_message(2, "ZDA_StorageSystemProvider::_deliverInstances(): api_getSystemInfo error (%d)\n", rc);

    CIMObjectPath path;
    if (found)
    {
        path = buildObjectPath(String(info.hostName), String(info.name));
        if (method == CIM_GET_INSTANCE)
        {
            // A reference without a namespace names one in the provider's.
            CIMObjectPath wanted = reference;
            if (wanted.getNameSpace().isNull())
                wanted.setNameSpace(SYSTEM_NAMESPACE);
            found = ZDA_Common::matchObjectPath(wanted, path);
        }
    }
    if (method == CIM_GET_INSTANCE && !found)
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");

    ZDA_Common::handleProcessing(handler, method);
    if (found)
    {
        if (method == CIM_ENUMERATE_INSTANCE_NAMES)
        {
            CIMInstance named{CIMName(ClassName)};
            named.setPath(path);
            ZDA_Common::handleDeliver(handler, method, named);
        }
        else
        {
            ZDA_Common::handleDeliver(handler, method, buildInstance(info, systemClass));
        }
    }
    ZDA_Common::handleComplete(handler, method);
}

PEGASUS_NAMESPACE_END
