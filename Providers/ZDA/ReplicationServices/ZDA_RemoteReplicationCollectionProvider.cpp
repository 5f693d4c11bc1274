// Remote replication collections: the array's remote copy targets as
// ZDA_RemoteReplicationCollection instances.
#include "ZDA_RemoteReplicationCollectionProvider.h"

#include <cstdio>
#include <cstring>

#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_AssociationFrame.h"
#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_RemoteReplicationCollection";
const char SOURCE_FILE[] = "ZDA_RemoteReplicationCollectionProvider";
const char INSTANCE_ID_PREFIX[] = "KX_ORLA:";

const std::vector<const char*> ACCEPTED_CLASSES = {
    "CIM_RemoteReplicationCollection", "ZDA_RemoteReplicationCollection"};

// ConnectivityStatus values.
const Uint16 CONNECTIVITY_UP = 2;
const Uint16 CONNECTIVITY_DOWN = 3;
const Uint16 PARTITIONED = 4;

Uint16 connectivityStatus(const rm_target_t& target)
{
    if (target.rm_options & RM_TARGET_OPT_UNUSABLE)
        return CONNECTIVITY_DOWN;
    if (target.rm_status == RM_TARGET_READY)
        return CONNECTIVITY_UP;
    if (target.rm_status == RM_TARGET_NEW)
        return PARTITIONED;
    return CONNECTIVITY_DOWN;
}

}  // namespace

namespace
{

// The names and the walk the read operations run with.
const WalkedClass WALKED = {SOURCE_FILE, ClassName, ACCEPTED_CLASSES, 1, " Expect only one key.",
    &ZDA_RemoteReplicationCollectionProvider::deliverInstances};

}  // namespace

ZDA_RemoteReplicationCollectionProvider::ZDA_RemoteReplicationCollectionProvider() = default;

ZDA_RemoteReplicationCollectionProvider::ZDA_RemoteReplicationCollectionProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ZDA_RemoteReplicationCollectionProvider::~ZDA_RemoteReplicationCollectionProvider() = default;

CIMObjectPath ZDA_RemoteReplicationCollectionProvider::buildObjectPath(
    String systemAddress, String targetName)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", INSTANCE_ID_PREFIX + targetName, CIMKeyBinding::STRING));
    return CIMObjectPath(systemAddress, NAMESPACE, ClassName, keys);
}

CIMInstance ZDA_RemoteReplicationCollectionProvider::buildInstance(
    rm_target_t* pTarget, CIMClass& collectionClass, const String& hostName)
{
    const String name = pTarget->rm_hdr.rm_name;
    char caption[62];
    snprintf(caption, sizeof caption - 1, "RemoteReplicationCollection %s", pTarget->rm_hdr.rm_name);
    const Uint16 connectivity = connectivityStatus(*pTarget);

    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(collectionClass);
    ZDA_Common::setPropertyValue(instance, "ElementName", name);
    ZDA_Common::setPropertyValue(instance, "Caption", String(caption));
    ZDA_Common::setPropertyValue(instance, "Description", String(caption));
    ZDA_Common::setPropertyValue(instance, "InstanceID", INSTANCE_ID_PREFIX + name);
    ZDA_Common::setPropertyValue(instance, "ConnectivityStatus", connectivity);
    ZDA_Common::setPropertyValue(instance, "Active", Boolean(connectivity == CONNECTIVITY_UP));
    ZDA_Common::setPropertyValue(instance, "DeleteOnUnassociated", Boolean(false));
    instance.setPath(buildObjectPath(hostName, name));
    return instance;
}

void ZDA_RemoteReplicationCollectionProvider::deliverInstances(CIMOMHandle& cimom, const OperationContext&,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, const String& systemAddress, cim_method_e method,
    cim_handler_u handler)
{
    const bool isGetInstance = method == CIM_GET_INSTANCE;
    log_message(4, "--> ZDA_RemoteReplicationCollectionProvider::deliverInstances()\n");
    ZDA_Common::handleProcessing(handler, method);
    bool found = false;
    String targetName;
    bool readable = true;
    if (!instanceReference.getClassName().isNull())
    {
        const String instanceID = ZDA_Common::getStringProperty(instanceReference, "InstanceID");
        targetName = ZDA_Common::extractFromInstanceID(instanceID);
        if (targetName.size() == 0)
        {
            log_message(2,
                "--> ZDA_RemoteReplicationCollectionProvider::deliverInstances()  invalid InstanceID %s\n",
                (const char*)instanceID.getCString());
            readable = false;
        }
    }
    RCopySnapshot snapshot;
    if (readable && readForWalk(snapshot, API_RCOPY_QUERY_TYPE_TARGETS, SOURCE_FILE))
    {
        CIMClass collectionClass = moduleClass(
            cimom, ClassName, includeQualifiers, includeClassOrigin, propertyList);
        const CString wanted = targetName.getCString();
        for (int i = 0; i < snapshot.rcopy.target_count; i++)
        {
            rm_target_t& target = snapshot.rcopy.targets[i];
            if (isGetInstance && std::strcmp(target.rm_hdr.rm_name, wanted) != 0)
                continue;
            ZDA_Common::handleDeliver(
                handler, method, buildInstance(&target, collectionClass, systemAddress));
            found = true;
            if (isGetInstance)
                break;
        }
    }
    endWalk(SOURCE_FILE, ClassName, handler, method, found);
    log_message(4, "<-- ZDA_RemoteReplicationCollectionProvider::deliverInstances()\n");
}

void ZDA_RemoteReplicationCollectionProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
}

void ZDA_RemoteReplicationCollectionProvider::terminate()
{
    delete this;
}

void ZDA_RemoteReplicationCollectionProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    walkGetInstance(WALKED, _cimom, context, instanceReference, includeQualifiers, includeClassOrigin,
        propertyList, _systemAddress, handler, __LINE__);
}

void ZDA_RemoteReplicationCollectionProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    walkEnumerateInstances(WALKED, _cimom, context, classReference, includeQualifiers, includeClassOrigin,
        propertyList, _systemAddress, handler, __LINE__);
}

void ZDA_RemoteReplicationCollectionProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    walkEnumerateInstanceNames(WALKED, _cimom, context, classReference, _systemAddress, handler, __LINE__);
}

void ZDA_RemoteReplicationCollectionProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw notSupported(ClassName, "modifyInstance");
}

void ZDA_RemoteReplicationCollectionProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw notSupported(ClassName, "createInstance");
}

void ZDA_RemoteReplicationCollectionProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw notSupported(ClassName, "deleteInstance");
}

void ZDA_RemoteReplicationCollectionProvider::invokeMethod(const OperationContext&, const CIMObjectPath&,
    const CIMName&, const Array<CIMParamValue>&, MethodResultResponseHandler&)
{
    throw notSupported(ClassName, "invokeMethod");
}

PEGASUS_NAMESPACE_END
