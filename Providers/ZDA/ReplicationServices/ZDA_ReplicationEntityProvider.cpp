// Replication entities: the far side's groups and volumes of the array's
// remote copy groups as ZDA_ReplicationEntity instances.
#include "ZDA_ReplicationEntityProvider.h"

#include <cstring>

#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_AssociationFrame.h"
#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_RemoteReplicationGroupProvider.h"
#include "ZDA_RemoteStorageSynchronizedProvider.h"
#include "ZDA_StorageVolumeProvider.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_ReplicationEntity";
const char SOURCE_FILE[] = "ZDA_ReplicationEntityProvider";
const char INSTANCE_ID_PREFIX[] = "KX_ORLA:";
const char GROUP_TYPE[] = "RG";
const char VOLUME_TYPE[] = "VV";
// Type "Other": the entity stands for an element of another system.
const Uint16 ENTITY_TYPE_OTHER = 11;

const std::vector<const char*> ACCEPTED_CLASSES = {"CIM_ReplicationEntity", "ZDA_ReplicationEntity"};

// The properties an embedded element keeps: its keys.
CIMPropertyList groupKeys()
{
    Array<CIMName> names;
    names.append("InstanceID");
    return CIMPropertyList(names);
}

CIMPropertyList volumeKeys()
{
    Array<CIMName> names;
    names.append("CreationClassName");
    names.append("SystemCreationClassName");
    names.append("SystemName");
    names.append("DeviceID");
    return CIMPropertyList(names);
}

// The entity a getInstance asks for; empty for an enumeration.
struct Wanted
{
    bool one = false;
    String type;
    String name;
    String host;

    bool skips(const char* entityType, const String& entityName, const String& entityHost) const
    {
        return one &&
            (!String::equal(type, entityType) || !String::equal(name, entityName) ||
                !String::equal(host, entityHost));
    }
    bool wants(const char* entityType) const { return !one || String::equal(type, entityType); }
};

}  // namespace

namespace
{

// The names and the walk the read operations run with.
const WalkedClass WALKED = {SOURCE_FILE, ClassName, ACCEPTED_CLASSES, 1, " Expect only one key.",
    &ZDA_ReplicationEntityProvider::deliverInstances};

}  // namespace

ZDA_ReplicationEntityProvider::ZDA_ReplicationEntityProvider() = default;

ZDA_ReplicationEntityProvider::ZDA_ReplicationEntityProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ZDA_ReplicationEntityProvider::~ZDA_ReplicationEntityProvider() = default;

String ZDA_ReplicationEntityProvider::buildInstanceID(
    String systemAddress, String entityType, String entityName)
{
    return INSTANCE_ID_PREFIX + entityType + ":" + entityName + ":" + systemAddress;
}

CIMObjectPath ZDA_ReplicationEntityProvider::buildObjectPath(
    String systemName, String entitySystemName, String entityType, String entityName)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(
        "InstanceID", buildInstanceID(entitySystemName, entityType, entityName), CIMKeyBinding::STRING));
    return CIMObjectPath(systemName, NAMESPACE, ClassName, keys);
}

CIMInstance ZDA_ReplicationEntityProvider::buildInstance(String const& localHostName,
    String const& entityHostName, String const& entityType, String const& entityName, CIMClass& entityClass,
    CIMClass& replicaEntityClass)
{
    CIMInstance element;
    if (String::equal(entityType, GROUP_TYPE))
    {
        element = ZDA_RemoteReplicationGroupProvider::buildEmptyInstance(
            entityName, entityClass, entityHostName);
        element.filter(false, false, groupKeys());
    }
    else
    {
        element = ZDA_StorageVolumeProvider::buildEmptyInstance(
            entityName, entityHostName, entityHostName, entityClass);
        element.filter(false, false, volumeKeys());
    }
    // The element's identity within its own system: no host, no namespace.
    CIMObjectPath elementPath = element.getPath();
    elementPath.setHost(String());
    elementPath.setNameSpace(CIMNamespaceName());

    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(replicaEntityClass);
    ZDA_Common::setPropertyValue(
        instance, "InstanceID", buildInstanceID(entityHostName, entityType, entityName));
    ZDA_Common::setPropertyValue(instance, "Type", ENTITY_TYPE_OTHER);
    if (instance.findProperty("Element") != PEG_NOT_FOUND)
        ZDA_Common::setPropertyValue(instance, "Element", element);
    ZDA_Common::setPropertyValue(instance, "EntityID", elementPath.toString());
    ZDA_Common::setPropertyValue(instance, "ElementName", entityName);
    ZDA_Common::setPropertyValue(instance, "Caption", entityName);
    ZDA_Common::setPropertyValue(instance, "Name", entityName);
    instance.setPath(buildObjectPath(localHostName, entityHostName, entityType, entityName));
    return instance;
}

void ZDA_ReplicationEntityProvider::extractFromInstanceID(
    const String& instanceID, String& entityType, String& entityName, String& hostName)
{
    entityType.clear();
    entityName.clear();
    hostName.clear();
    const String tail = ZDA_Common::extractFromInstanceID(instanceID);
    const Uint32 first = tail.find(':');
    if (first == PEG_NOT_FOUND)
        return;
    entityType = tail.subString(0, first);
    const String rest = tail.subString(first + 1);
    const Uint32 second = rest.find(':');
    if (second == PEG_NOT_FOUND)
    {
        entityName = rest;
        return;
    }
    entityName = rest.subString(0, second);
    hostName = rest.subString(second + 1);
}

void ZDA_ReplicationEntityProvider::deliverInstances(CIMOMHandle& cimom, const OperationContext&,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, const String& systemAddress, cim_method_e method,
    cim_handler_u handler)
{
    log_message(4, "--> ZDA_ReplicationEntityProvider::deliverInstances()\n");
    ZDA_Common::handleProcessing(handler, method);
    CIMClass entityClass = moduleClass(cimom, ClassName, includeQualifiers, includeClassOrigin, propertyList);
    // The embedded elements keep their keys whatever the caller asked for.
    CIMClass volumeClass = moduleClass(cimom, "ZDA_StorageVolume", false, false, CIMPropertyList());
    CIMClass groupClass = moduleClass(cimom, "ZDA_RemoteReplicationGroup", false, false, CIMPropertyList());

    Wanted wanted;
    bool readable = true;
    if (!instanceReference.getClassName().isNull())
    {
        const String instanceID = ZDA_Common::getStringProperty(instanceReference, "InstanceID");
        extractFromInstanceID(instanceID, wanted.type, wanted.name, wanted.host);
        wanted.one = method == CIM_GET_INSTANCE;
        if (wanted.name.size() == 0)
        {
            log_message(2, "--> ZDA_ReplicationEntityProvider::deliverInstances()  invalid InstanceID %s\n",
                (const char*)instanceID.getCString());
            readable = false;
        }
    }

    bool found = false;
    // A getInstance ends at the first entity that matches: a far group
    // reached through two targets to one system is one entity.
    auto deliver = [&](const char* type, const String& name, const String& host) {
        if (wanted.skips(type, name, host))
            return false;
        ZDA_Common::handleDeliver(handler, method,
            buildInstance(systemAddress, host, type, name,
                String::equal(type, GROUP_TYPE) ? groupClass : volumeClass, entityClass));
        found = true;
        return wanted.one;
    };

    RCopySnapshot snapshot;
    if (readable && readForWalk(snapshot, API_RCOPY_QUERY_TYPE_ALL, SOURCE_FILE))
        forEachEntity(snapshot.rcopy, wanted.wants(GROUP_TYPE), wanted.wants(VOLUME_TYPE), deliver);
    endWalk(SOURCE_FILE, ClassName, handler, method, found);
    log_message(4, "<-- ZDA_ReplicationEntityProvider::deliverInstances()\n");
}

void ZDA_ReplicationEntityProvider::forEachEntity(
    api_rcopy_t& rcopy, bool groups, bool volumes, const EntityVisitor& visit)
{
    for (rm_group_wrapper* g = rcopy.groups; g && groups; g = g->next)
    {
        for (int t = 0; t < g->gtarget_count; t++)
        {
            rm_group_target& gtarget = g->gtargets[t];
            if (visit(GROUP_TYPE, String(gtarget.rm_remote_group),
                    ZDA_Common::RCTargetToSysname(rcopy, gtarget.rm_target)))
                return;
        }
    }
    for (rm_group_wrapper* g = rcopy.groups; g && volumes; g = g->next)
    {
        for (rm_group_vv_wrapper* v = g->gvvs; v; v = v->next)
        {
            for (int t = 0; t < g->gtarget_count; t++)
            {
                rm_group_target* gtarget = &g->gtargets[t];
                const String peerWWN = ZDA_RemoteStorageSynchronizedProvider::getRemoteSystemWWN(
                    &rcopy, gtarget);
                const rm_group_vv_map* map = ZDA_RemoteStorageSynchronizedProvider::findVVMap(g, gtarget, v);
                if (!map)
                    continue;
                bool stop;
                if (peerWWN.size() > 0 && map->rm_wwn_status != RM_VV_WWN_INVALID)
                {
                    char wwn[API_WWN_TEXT_LEN];
                    api_wwnIntToString(map->rm_remote_wwn_re, map->rm_remote_wwn, wwn, sizeof wwn);
                    wwn[API_WWN_TEXT_LEN - 1] = '\0';
                    stop = visit(VOLUME_TYPE, String(wwn), peerWWN);
                }
                else
                {
                    stop = visit(VOLUME_TYPE, String(map->rm_remote_name), String(gtarget->rm_target));
                }
                if (stop)
                    return;
            }
        }
    }
}

void ZDA_ReplicationEntityProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
}

void ZDA_ReplicationEntityProvider::terminate()
{
    delete this;
}

void ZDA_ReplicationEntityProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    walkGetInstance(WALKED, _cimom, context, instanceReference, includeQualifiers, includeClassOrigin,
        propertyList, _systemAddress, handler, __LINE__);
}

void ZDA_ReplicationEntityProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    walkEnumerateInstances(WALKED, _cimom, context, classReference, includeQualifiers, includeClassOrigin,
        propertyList, _systemAddress, handler, __LINE__);
}

void ZDA_ReplicationEntityProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    walkEnumerateInstanceNames(WALKED, _cimom, context, classReference, _systemAddress, handler, __LINE__);
}

void ZDA_ReplicationEntityProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw notSupported(ClassName, "modifyInstance");
}

void ZDA_ReplicationEntityProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw notSupported(ClassName, "createInstance");
}

void ZDA_ReplicationEntityProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw notSupported(ClassName, "deleteInstance");
}

void ZDA_ReplicationEntityProvider::invokeMethod(const OperationContext&, const CIMObjectPath&,
    const CIMName&, const Array<CIMParamValue>&, MethodResultResponseHandler&)
{
    throw notSupported(ClassName, "invokeMethod");
}

PEGASUS_NAMESPACE_END
