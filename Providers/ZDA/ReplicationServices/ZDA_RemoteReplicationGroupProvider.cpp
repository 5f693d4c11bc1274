// Remote replication groups: the array's remote copy groups as
// ZDA_RemoteReplicationGroup instances.
#include "ZDA_RemoteReplicationGroupProvider.h"

#include <cstdio>
#include <cstring>

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_AssociationFrame.h"
#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_RemoteReplicationGroup";
const char SOURCE_FILE[] = "ZDA_RemoteReplicationGroupProvider";
const char INSTANCE_ID_PREFIX[] = "KX_ORLA:";
// The group number the array gives a group it does not number.
const Uint16 UNKNOWN_GROUP_ID = 65535;

const std::vector<const char*> ACCEPTED_CLASSES = {"CIM_ReplicationGroup", "ZDA_RemoteReplicationGroup"};

}  // namespace

ZDA_RemoteReplicationGroupProvider::ZDA_RemoteReplicationGroupProvider() = default;

ZDA_RemoteReplicationGroupProvider::ZDA_RemoteReplicationGroupProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ZDA_RemoteReplicationGroupProvider::~ZDA_RemoteReplicationGroupProvider() = default;

String ZDA_RemoteReplicationGroupProvider::buildInstanceID(const String& grpName)
{
    return INSTANCE_ID_PREFIX + grpName;
}

CIMObjectPath ZDA_RemoteReplicationGroupProvider::buildObjectPath(
    const String& systemAddress, const String& grpName)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", buildInstanceID(grpName), CIMKeyBinding::STRING));
    return CIMObjectPath(systemAddress, NAMESPACE, ClassName, keys);
}

CIMInstance ZDA_RemoteReplicationGroupProvider::buildInstance(
    const String& groupName, Uint16 ID, CIMClass& replicaGroupClass, const String& hostName)
{
    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(replicaGroupClass);
    const CString name = groupName.getCString();
    char caption[62];
    if (ID == UNKNOWN_GROUP_ID)
        snprintf(caption, sizeof caption - 1, "RemoteReplicationGroup %s", (const char*)name);
    else
        snprintf(
            caption, sizeof caption - 1, "RemoteReplicationGroup %s, ID %u", (const char*)name, unsigned(ID));
    ZDA_Common::setPropertyValue(instance, "ElementName", groupName);
    ZDA_Common::setPropertyValue(instance, "Caption", String(caption));
    ZDA_Common::setPropertyValue(instance, "Description", String(caption));
    ZDA_Common::setPropertyValue(instance, "InstanceID", buildInstanceID(groupName));
    ZDA_Common::setPropertyValue(instance, "Persistent", Boolean(true));
    ZDA_Common::setPropertyValue(instance, "ConsistentPointInTime", Boolean(true));
    ZDA_Common::setPropertyValue(instance, "DeleteOnEmptyElement", Boolean(false));
    ZDA_Common::setPropertyValue(instance, "DeleteOnUnassociated", Boolean(false));
    instance.setPath(buildObjectPath(hostName, groupName));
    return instance;
}

CIMInstance ZDA_RemoteReplicationGroupProvider::buildInstance(
    rm_group_t* pGroup, CIMClass& replicaGroupClass, String& systemAddress)
{
    CIMInstance instance = buildInstance(
        String(pGroup->rm_hdr.rm_name), pGroup->rm_hdr.rm_ID, replicaGroupClass, systemAddress);
    if (pGroup->rm_domain_name[0] != '\0')
        ZDA_Common::setPropertyValue(instance, "Domain", String(pGroup->rm_domain_name));
    return instance;
}

CIMInstance ZDA_RemoteReplicationGroupProvider::buildEmptyInstance(
    const String& groupName, CIMClass& replicaGroupClass, const String& hostName)
{
    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(replicaGroupClass);
    ZDA_Common::setPropertyValue(instance, "InstanceID", buildInstanceID(groupName));
    instance.setPath(buildObjectPath(hostName, groupName));
    return instance;
}

void ZDA_RemoteReplicationGroupProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
}

void ZDA_RemoteReplicationGroupProvider::terminate()
{
    delete this;
}

Array<CIMInstance> ZDA_RemoteReplicationGroupProvider::_buildInstances(const OperationContext&,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    Array<CIMInstance> instances;
    String groupName;
    const bool oneGroup = !instanceReference.getClassName().isNull();
    if (oneGroup)
    {
        const String instanceID = ZDA_Common::getStringProperty(instanceReference, "InstanceID");
        groupName = ZDA_Common::extractFromInstanceID(instanceID);
        if (groupName.size() == 0)
        {
            log_message(2,
                "--> ZDA_RemoteReplicationGroupProvider::_buildInstances()  invalid InstanceID %s\n",
                (const char*)instanceID.getCString());
            return instances;
        }
    }
    RCopySnapshot snapshot;
    if (snapshot.read(API_RCOPY_QUERY_TYPE_GROUPS).code != 0)
    {
        log_message(2, "--> ZDA_RemoteReplicationGroupProvider::_buildInstances()  api_getRCopy failed.\n");
        return instances;
    }
    CIMClass groupClass = moduleClass(_cimom, ClassName, includeQualifiers, includeClassOrigin, propertyList);
    const CString wanted = groupName.getCString();
    for (rm_group_wrapper* g = snapshot.rcopy.groups; g; g = g->next)
    {
        if (oneGroup && std::strcmp(g->group.rm_hdr.rm_name, wanted) != 0)
            continue;
        instances.append(buildInstance(&g->group, groupClass, _systemAddress));
        if (oneGroup)
            break;
    }
    return instances;
}

void ZDA_RemoteReplicationGroupProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_RemoteReplicationGroupProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    requireInstanceClass(instanceReference, ACCEPTED_CLASSES, ClassName);
    requireKeyCount(instanceReference, 1, SOURCE_FILE, ClassName, " Expect only one key.");
    Array<CIMInstance> instances = _buildInstances(
        context, instanceReference, includeQualifiers, includeClassOrigin, propertyList);
    if (instances.size() == 0)
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    handler.processing();
    handler.deliver(instances[0]);
    handler.complete();
    log_message(4, "<-- ZDA_RemoteReplicationGroupProvider::getInstance()\n");
}

void ZDA_RemoteReplicationGroupProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_RemoteReplicationGroupProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    requireInstanceClass(classReference, ACCEPTED_CLASSES, ClassName);
    log_message(
        4, "\t className = %s\n", (const char*)classReference.getClassName().getString().getCString());
    Array<CIMInstance> instances = _buildInstances(
        context, CIMObjectPath(), includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    for (Uint32 i = 0; i < instances.size(); i++)
        handler.deliver(instances[i]);
    handler.complete();
    log_message(4, "<-- ZDA_RemoteReplicationGroupProvider::enumerateInstances()\n");
}

void ZDA_RemoteReplicationGroupProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_RemoteReplicationGroupProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    requireInstanceClass(classReference, ACCEPTED_CLASSES, ClassName);
    log_message(
        4, "\t className = %s\n", (const char*)classReference.getClassName().getString().getCString());
    Array<CIMInstance> instances = _buildInstances(context, CIMObjectPath(), false, false, CIMPropertyList());
    handler.processing();
    for (Uint32 i = 0; i < instances.size(); i++)
        handler.deliver(instances[i].getPath());
    handler.complete();
    log_message(4, "<-- ZDA_RemoteReplicationGroupProvider::enumerateInstanceNames()\n");
}

void ZDA_RemoteReplicationGroupProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw notSupported(ClassName, "modifyInstance");
}

void ZDA_RemoteReplicationGroupProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw notSupported(ClassName, "createInstance");
}

void ZDA_RemoteReplicationGroupProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw notSupported(ClassName, "deleteInstance");
}

void ZDA_RemoteReplicationGroupProvider::invokeMethod(const OperationContext&, const CIMObjectPath&,
    const CIMName&, const Array<CIMParamValue>&, MethodResultResponseHandler&)
{
    throw notSupported(ClassName, "invokeMethod");
}

PEGASUS_NAMESPACE_END
