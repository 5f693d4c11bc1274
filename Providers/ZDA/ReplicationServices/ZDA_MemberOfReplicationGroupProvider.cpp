// Local vvsets and their member volumes.
#include "ZDA_MemberOfReplicationGroupProvider.h"

#include <string>

#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_AssociationFrame.h"
#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_ReplicationGroupProvider.h"
#include "ZDA_StorageVolumeProvider.h"

PEGASUS_NAMESPACE_BEGIN

using namespace ZDA_AssociationFrame;

namespace
{

const String ClassName = "ZDA_MemberOfReplicationGroup";
const char SOURCE_FILE[] = "ZDA_MemberOfReplicationGroupProvider";
const char COLLECTION[] = "Collection";
const char MEMBER[] = "Member";

const AssociationShape SHAPE = {
    "ZDA_MemberOfReplicationGroup",
    {"CIM_MemberOfCollection"},
    {COLLECTION, {"ZDA_ReplicationGroup"},
        {"CIM_ReplicationGroup", "CIM_SystemSpecificCollection", "CIM_Collection"}},
    {MEMBER, {"ZDA_StorageVolume"},
        {"CIM_StorageVolume", "CIM_StorageExtent", "CIM_LogicalDevice", "CIM_EnabledLogicalElement",
            "CIM_LogicalElement", "CIM_ManagedSystemElement", "CIM_ManagedElement"}},
    // A group named by the object must carry a vvset name; so must any
    // object of the group's superclasses, up to the root.
    {"ZDA_ReplicationGroup", "CIM_ReplicationGroup", "CIM_SystemSpecificCollection", "CIM_Collection",
        "CIM_ManagedElement"},
};

}  // namespace

ZDA_MemberOfReplicationGroupProvider::ZDA_MemberOfReplicationGroupProvider()
    : _assoClassName(SHAPE.associationClass), _volumeClassName(SHAPE.second.classes[0]),
      _replicaGroupClassName(SHAPE.first.classes[0])
{}

ZDA_MemberOfReplicationGroupProvider::~ZDA_MemberOfReplicationGroupProvider() = default;

void ZDA_MemberOfReplicationGroupProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
    _systemName = ZDA_Common::getSystemName(cimom);
}

void ZDA_MemberOfReplicationGroupProvider::terminate()
{
    delete this;
}

Boolean ZDA_MemberOfReplicationGroupProvider::_invalidParms(const CIMObjectPath& objectName,
    const String& role, const String& resultRole, const CIMName& resultClass, const String& method)
{
    return invalidRequest(SHAPE, objectName, role, resultRole, resultClass, method);
}

void ZDA_MemberOfReplicationGroupProvider::_deliverRelatedInstances(const CIMObjectPath& objectName,
    const OperationContext& context, const String& role, const String& resultRole, const CIMName& resultClass,
    cim_method_e method, cim_handler_u handler)
{
    _deliverRelatedInstances(
        objectName, context, role, resultRole, resultClass, false, false, CIMPropertyList(), method, handler);
}

void ZDA_MemberOfReplicationGroupProvider::_deliverRelatedInstances(const CIMObjectPath& objectName,
    const OperationContext&, const String& role, const String& resultRole, const CIMName&,
    const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    cim_method_e method, cim_handler_u handler)
{
    const CIMName objectClass = objectName.getClassName();
    const SearchDirections search = searchDirections(SHAPE, role, resultRole);
    bool isGetInstance = false;
    bool fromGroup = false;
    bool fromVolume = false;
    bool found = false;
    String localGroupName;
    String deviceID;

    if (objectClass.equal(_assoClassName))
    {
        isGetInstance = true;
        CIMObjectPath groupPath;
        CIMObjectPath volumePath;
        if (!endReference(objectName, COLLECTION, groupPath))
            return;
        localGroupName = ZDA_Common::extractFromInstanceID(
            ZDA_Common::getStringProperty(groupPath, "InstanceID"));
        if (!endReference(objectName, MEMBER, volumePath))
            return;
        deviceID = ZDA_Common::getStringProperty(volumePath, "DeviceID");
    }
    else if (objectClass.equal(_replicaGroupClassName))
    {
        if (!search.towardSecond)
            return;
        fromGroup = true;
        localGroupName = ZDA_Common::extractFromInstanceID(
            ZDA_Common::getStringProperty(objectName, "InstanceID"));
    }
    else if (objectClass.equal(_volumeClassName))
    {
        if (!search.towardFirst)
            return;
        fromVolume = true;
        deviceID = ZDA_Common::getStringProperty(objectName, "DeviceID");
    }
    else if (!objectClass.isNull())
    {
        return;
    }

    CIMClass groupClass = moduleClass(
        _cimom, _replicaGroupClassName, includeQualifiers, includeClassOrigin, propertyList);
    CIMClass volumeClass = moduleClass(
        _cimom, _volumeClassName, includeQualifiers, includeClassOrigin, propertyList);
    CIMClass assocClass = moduleClass(
        _cimom, _assoClassName, includeQualifiers, includeClassOrigin, propertyList);

    ZDA_Common::handleProcessing(handler, method);

    // Every vvset is read even for one group: the key-value query needs the
    // set's number, which only the list gives.
    VVSetList sets;
    const api_Status_t status = sets.read(nullptr);
    if (status.code != 0)
    {
        log_message(2,
            "ZDA_MemberOfReplicationGroupProvider::_deliverRelatedInstances():"
            "api_getVVsets error (%d): %s\n",
            status.code, (const char*)statusText(status).getCString());
        return;
    }

    for (Uint32 s = 0; s < sets.size() && !(isGetInstance && found); s++)
    {
        api_set_t& set = sets[s];
        const String setName(set.name);
        if (set.memberCount <= 0 || set.members == nullptr)
            continue;
        if (hasParentRCGroup(set))
            continue;
        if ((isGetInstance || fromGroup) && localGroupName != setName)
            continue;

        for (const std::string& piece : namePieces(joinMemberNames(set)))
        {
            VolumeQuery volumes;
            if (volumes.byNames(piece, set.memberCount + 1) != 0)
                return;
            for (int v = 0; v < volumes.size(); v++)
            {
                api_VVObj_t& vv = volumes[v];
                const String identity(vv.wwnText);
                if (isGetInstance && identity != deviceID)
                    continue;
                CIMInstance instance;
                if (fromVolume)
                {
                    if (identity != deviceID)
                        continue;
                    instance = ZDA_ReplicationGroupProvider::buildInstance(&set, groupClass, _systemName);
                }
                else if (fromGroup)
                {
                    instance = ZDA_StorageVolumeProvider::buildInstance(
                        &vv, _systemName, _systemAddress, volumeClass, nullptr, 0);
                }
                found = true;
                if (method >= CIM_REFERENCES)
                {
                    const CIMObjectPath groupPath = ZDA_ReplicationGroupProvider::buildObjectPath(
                        _systemName, setName);
                    const CIMObjectPath volumePath = ZDA_StorageVolumeProvider::createObjectPath(
                        identity, _systemName, _systemAddress);
                    instance = ZDA_Common::buildAssocInstance(_assoClassName, COLLECTION, MEMBER, groupPath,
                        volumePath, _systemAddress, NAMESPACE, assocClass);
                }
                if (!instance.isUninitialized())
                    ZDA_Common::handleDeliver(handler, method, instance);
                if (isGetInstance)
                    break;
            }
            if (isGetInstance && found)
                break;
        }
    }

    if (isGetInstance && !found)
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    ZDA_Common::handleComplete(handler, method);
}

void ZDA_MemberOfReplicationGroupProvider::associators(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName& associationClass, const CIMName& resultClass,
    const String& role, const String& resultRole, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList, ObjectResponseHandler& handler)
{
    const String method = "associators";
    logAssociationRequest(SOURCE_FILE, "associators", objectName, resultClass, role);
    (void)associationClass;
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (_invalidParms(objectName, role, resultRole, resultClass, method))
    {
        logRefusedRequest(SOURCE_FILE, method, resultClass);
        return;
    }
    _deliverRelatedInstances(objectName, context, role, resultRole, resultClass, includeQualifiers,
        includeClassOrigin, propertyList, CIM_ASSOCIATORS, handlerOf(handler));
    log_message(4, "<-- ZDA_MemberOfReplicationGroupProvider::associators()\n");
}

void ZDA_MemberOfReplicationGroupProvider::associatorNames(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName& associationClass, const CIMName& resultClass,
    const String& role, const String& resultRole, ObjectPathResponseHandler& handler)
{
    const String method = "associatorNames";
    logAssociationRequest(SOURCE_FILE, "associatorNames", objectName, resultClass, role);
    (void)associationClass;
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (_invalidParms(objectName, role, resultRole, resultClass, method))
    {
        logRefusedRequest(SOURCE_FILE, method, resultClass);
        return;
    }
    _deliverRelatedInstances(
        objectName, context, role, resultRole, resultClass, CIM_ASSOCIATOR_NAMES, handlerOf(handler));
    log_message(4, "<-- ZDA_MemberOfReplicationGroupProvider::associatorNames()\n");
}

void ZDA_MemberOfReplicationGroupProvider::references(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    const Boolean includeQualifiers, const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    ObjectResponseHandler& handler)
{
    const String method = "references";
    logAssociationRequest(SOURCE_FILE, "references", objectName, resultClass, role);
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (_invalidParms(objectName, role, String::EMPTY, resultClass, method))
    {
        logRefusedRequest(SOURCE_FILE, method, resultClass);
        return;
    }
    _deliverRelatedInstances(objectName, context, role, String(), resultClass, includeQualifiers,
        includeClassOrigin, propertyList, CIM_REFERENCES, handlerOf(handler));
    log_message(4, "<-- ZDA_MemberOfReplicationGroupProvider::references()\n");
}

void ZDA_MemberOfReplicationGroupProvider::referenceNames(const OperationContext& context,
    const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
    ObjectPathResponseHandler& handler)
{
    const String method = "referenceNames";
    logAssociationRequest(SOURCE_FILE, "referenceNames", objectName, resultClass, role);
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (_invalidParms(objectName, role, String::EMPTY, resultClass, method))
    {
        logRefusedRequest(SOURCE_FILE, method, resultClass);
        return;
    }
    _deliverRelatedInstances(
        objectName, context, role, String(), resultClass, CIM_REFERENCE_NAMES, handlerOf(handler));
    log_message(4, "<-- ZDA_MemberOfReplicationGroupProvider::referenceNames()\n");
}

void ZDA_MemberOfReplicationGroupProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_MemberOfReplicationGroupProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    requireAssociationClass(SHAPE, instanceReference, ClassName);
    requireKeyCount(instanceReference, 2, SOURCE_FILE, ClassName, " Expect two keys.");
    _deliverRelatedInstances(instanceReference, context, String::EMPTY, String::EMPTY, CIMName(),
        includeQualifiers, includeClassOrigin, propertyList, CIM_GET_INSTANCE, handlerOf(handler));
    log_message(4, "<-- ZDA_MemberOfReplicationGroupProvider::getInstance()\n");
}

void ZDA_MemberOfReplicationGroupProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_MemberOfReplicationGroupProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    requireAssociationClass(SHAPE, classReference, ClassName);
    _deliverRelatedInstances(CIMObjectPath(), context, String::EMPTY, String::EMPTY, CIMName(),
        includeQualifiers, includeClassOrigin, propertyList, CIM_ENUMERATE_INSTANCES, handlerOf(handler));
    log_message(4, "<-- ZDA_MemberOfReplicationGroupProvider::enumerateInstances()\n");
}

void ZDA_MemberOfReplicationGroupProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_MemberOfReplicationGroupProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    requireAssociationClass(SHAPE, classReference, ClassName);
    _deliverRelatedInstances(CIMObjectPath(), context, String::EMPTY, String::EMPTY, CIMName(),
        CIM_ENUMERATE_INSTANCE_NAMES, handlerOf(handler));
    log_message(4, "<-- ZDA_MemberOfReplicationGroupProvider::enumerateInstanceNames()\n");
}

void ZDA_MemberOfReplicationGroupProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw notSupported(ClassName, "modifyInstance");
}

void ZDA_MemberOfReplicationGroupProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw notSupported(ClassName, "createInstance");
}

void ZDA_MemberOfReplicationGroupProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw notSupported(ClassName, "deleteInstance");
}

PEGASUS_NAMESPACE_END
