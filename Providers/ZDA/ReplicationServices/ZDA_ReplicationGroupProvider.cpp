// Replication groups: the array's vvsets as ZDA_ReplicationGroup instances.
#include "ZDA_ReplicationGroupProvider.h"

#include <cstdio>
#include <cstring>

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_AssociationFrame.h"
#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_MethodAuthorization.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_ReplicationGroup";
const char SOURCE_FILE[] = "ZDA_ReplicationGroupProvider";
const char INSTANCE_ID_PREFIX[] = "KX_ORLA:";

void requireGroupClass(const CIMObjectPath& reference)
{
    const CIMName given = reference.getClassName();
    if (!given.equal("CIM_ReplicationGroup") && !given.equal(ClassName))
        throw CIMNotSupportedException(given.getString() + ClassName + " Invalid class name");
}

String userOf(const OperationContext& context, String& ipAddress)
{
    if (!context.contains(IdentityContainer::NAME))
        return String();
    const IdentityContainer identity(context.get(IdentityContainer::NAME));
    ipAddress = identity.getIpAddress();
    return identity.getUserName();
}

// What a modification asks of the vvset.
struct SetChange
{
    bool any = false;
    int renameFlag = 0;
    int commentFlag = 0;
    String newName;
    String description;
};

// Takes one property of the modified instance into the change. A null
// ElementName is refused: a vvset cannot lose its name. A null Description
// leaves the comment as it is.
void takeProperty(const CIMConstProperty& property, SetChange& change)
{
    const CIMValue value = property.getValue();
    if (property.getName().equal("Description"))
    {
        if (value.isNull())
            return;
        try
        {
            value.get(change.description);
        }
        catch (const Exception& e)
        {
            log_message(2, "Problem setting property %s: %s\n", "Description",
                (const char*)e.getMessage().getCString());
            throw Exception(e.getMessage());
        }
        change.commentFlag = 1;
        change.any = true;
    }
    else if (property.getName().equal("ElementName"))
    {
        if (value.isNull())
        {
            log_message(2, "\tInvalid ElementName\n");
            // Code 5 on purpose: clients of the array read it as the
            // refusal of a group's name.
            throw CIMException(CIMStatusCode(5), "Invalid ElementName");
        }
        value.get(change.newName);
        change.renameFlag = 1;
        change.any = true;
    }
}

}  // namespace

ZDA_ReplicationGroupProvider::ZDA_ReplicationGroupProvider() = default;

ZDA_ReplicationGroupProvider::ZDA_ReplicationGroupProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ZDA_ReplicationGroupProvider::~ZDA_ReplicationGroupProvider() = default;

CIMObjectPath ZDA_ReplicationGroupProvider::buildObjectPath(String systemAddress, String setName)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", INSTANCE_ID_PREFIX + setName, CIMKeyBinding::STRING));
    return CIMObjectPath(systemAddress, NAMESPACE, ClassName, keys);
}

CIMInstance ZDA_ReplicationGroupProvider::buildInstance(
    api_set_t* pSet, CIMClass& replicaGroupClass, String& systemAddress)
{
    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(replicaGroupClass);
    ZDA_Common::setPropertyValue(instance, "ElementName", String(pSet->name));
    char caption[30];
    snprintf(caption, sizeof caption - 1, "vvset ID %u", pSet->id);
    ZDA_Common::setPropertyValue(instance, "Caption", String(caption));
    if (pSet->comment[0] != '\0')
    {
        // A comment the class cannot take costs the instance its
        // Description only.
        try
        {
            ZDA_Common::setPropertyValue(instance, "Description", String(pSet->comment));
        }
        catch (const Exception& e)
        {
            log_message(2, "Problem setting property %s: %s\n", "Description",
                (const char*)e.getMessage().getCString());
        }
    }
    ZDA_Common::setPropertyValue(instance, "InstanceID", String(INSTANCE_ID_PREFIX) + String(pSet->name));
    ZDA_Common::setPropertyValue(instance, "Persistent", Boolean(true));
    ZDA_Common::setPropertyValue(instance, "ConsistentPointInTime", Boolean(true));
    ZDA_Common::setPropertyValue(instance, "DeleteOnEmptyElement", Boolean(false));
    ZDA_Common::setPropertyValue(instance, "DeleteOnUnassociated", Boolean(false));
    ZDA_Common::setPropertyValue(instance, "ID", Uint32(pSet->id));
    instance.setPath(buildObjectPath(systemAddress, pSet->name));
    return instance;
}

void ZDA_ReplicationGroupProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemName = ZDA_Common::getSystemName(cimom);
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
}

void ZDA_ReplicationGroupProvider::terminate()
{
    delete this;
}

Array<CIMInstance> ZDA_ReplicationGroupProvider::_buildInstances(const OperationContext&,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    Array<CIMInstance> instances;
    VVSetList sets;
    api_Status_t status;
    if (instanceReference.getClassName().isNull())
    {
        status = sets.read(nullptr);
    }
    else
    {
        const String instanceID = ZDA_Common::getStringProperty(instanceReference, "InstanceID");
        const String setName = ZDA_Common::extractFromInstanceID(instanceID);
        if (setName.size() == 0)
        {
            log_message(2, "--> ZDA_ReplicationGroupProvider::_buildInstances()  invalid InstanceID %s\n",
                (const char*)instanceID.getCString());
            return instances;
        }
        status = sets.read(setName.getCString());
    }
    if (status.code != 0)
    {
        log_message(2, "--> ZDA_ReplicationGroupProvider::_buildInstances()  api_getSets failed.\n");
        return instances;
    }
    CIMClass groupClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);
    for (Uint32 i = 0; i < sets.size(); i++)
        instances.append(buildInstance(&sets[i], groupClass, _systemAddress));
    return instances;
}

void ZDA_ReplicationGroupProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationGroupProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    requireGroupClass(instanceReference);
    requireKeyCount(instanceReference, 1, SOURCE_FILE, ClassName, " Expect only one key.");
    Array<CIMInstance> instances = _buildInstances(
        context, instanceReference, includeQualifiers, includeClassOrigin, propertyList);
    if (instances.size() == 0)
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    handler.processing();
    handler.deliver(instances[0]);
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationGroupProvider::getInstance()\n");
}

void ZDA_ReplicationGroupProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationGroupProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    requireGroupClass(classReference);
    log_message(
        4, "\t className = %s\n", (const char*)classReference.getClassName().getString().getCString());
    Array<CIMInstance> instances = _buildInstances(
        context, CIMObjectPath(), includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    for (Uint32 i = 0; i < instances.size(); i++)
        handler.deliver(instances[i]);
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationGroupProvider::enumerateInstances()\n");
}

void ZDA_ReplicationGroupProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationGroupProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    requireGroupClass(classReference);
    log_message(
        4, "\t className = %s\n", (const char*)classReference.getClassName().getString().getCString());
    Array<CIMInstance> instances = _buildInstances(context, CIMObjectPath(), false, false, CIMPropertyList());
    handler.processing();
    for (Uint32 i = 0; i < instances.size(); i++)
        handler.deliver(instances[i].getPath());
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationGroupProvider::enumerateInstanceNames()\n");
}

void ZDA_ReplicationGroupProvider::modifyInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const CIMInstance& instanceObject, const Boolean,
    const CIMPropertyList& propertyList, ResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationGroupProvider::modifyInstance()\n");
    String ipAddress;
    const String userName = userOf(context, ipAddress);
    const String className = instanceReference.getClassName().getString();
    const String methodName = "modifyinstance";
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);

    const int authorized = authorizeGeneric(userName, ipAddress, className, methodName);
    if (authorized == 1 || authorized == 2)
        throw TraceableCIMException(
            CIM_ERR_ACCESS_DENIED, "Insufficient generic privilege", SOURCE_FILE, __LINE__);
    if (authorized != 0)
        throw TraceableCIMException(
            CIM_ERR_NOT_SUPPORTED, "Does not support in generic!", SOURCE_FILE, __LINE__);

    _api_evtparam_t event;
    std::memset(&event, 0, sizeof event);
    ZDA_Common::setEventParam(&event, className.getCString(), methodName.getCString(), "",
        userName.getCString(), ipAddress.getCString());

    handler.processing();
    if (_buildInstances(context, instanceReference, false, false, CIMPropertyList()).size() == 0)
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    const String setName = ZDA_Common::extractFromInstanceID(
        ZDA_Common::getStringProperty(instanceReference, "InstanceID"));

    // Only the name and the comment of a vvset can change; read-only
    // properties a client sends back are passed over, not refused.
    SetChange change;
    if (propertyList.isNull())
    {
        for (Uint32 i = 0; i < instanceObject.getPropertyCount(); i++)
            takeProperty(instanceObject.getProperty(i), change);
    }
    else
    {
        for (Uint32 i = 0; i < propertyList.size(); i++)
        {
            const Uint32 at = instanceObject.findProperty(propertyList[i]);
            if (at != PEG_NOT_FOUND)
                takeProperty(instanceObject.getProperty(at), change);
        }
    }

    if (change.any)
    {
        const api_Status_t status = ZDA_CompanionFrame::statusCall([&] {
            return api_setVVSet(&event, setName.getCString(), change.newName.getCString(),
                change.description.getCString(), change.renameFlag, change.commentFlag);
        });
        if (status.code != 0)
        {
            const String text = statusText(status);
            log_message(2, "\tError: %d, message: %s\n", status.code, (const char*)text.getCString());
            throw CIMOperationFailedException(ClassName + ", " + text);
        }
    }
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationGroupProvider::modifyInstance()\n");
}

void ZDA_ReplicationGroupProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw notSupported(ClassName, "createInstance");
}

void ZDA_ReplicationGroupProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw notSupported(ClassName, "deleteInstance");
}

void ZDA_ReplicationGroupProvider::invokeMethod(const OperationContext&, const CIMObjectPath&, const CIMName&,
    const Array<CIMParamValue>&, MethodResultResponseHandler&)
{
    throw notSupported(ClassName, "invokeMethod");
}

PEGASUS_NAMESPACE_END
