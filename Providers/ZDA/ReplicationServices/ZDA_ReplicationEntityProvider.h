// ZDA_ReplicationEntityProvider: ZDA_ReplicationEntity in root/zda
// (answering also to CIM_ReplicationEntity), one instance for each thing on
// the far side of a remote copy: a group on a target (type "RG") or a
// volume on a target (type "VV"). An entity names the far thing and embeds
// a minimal element carrying only its keys. Read-only.
//
// Key: InstanceID "KX_ORLA:<type>:<name>:<host>". A far group is named by
// its name on the target, on the peer's system name. A far volume is named
// by its WWN on the peer's WWN when both are known, else by its name on
// the target's name. The host part may itself hold colons.
//
// Its static builders are the one source of the class's path and shape.
// Every operation opens the array for the caller and reads the remote copy
// configuration once (api_getRCopy under the semaphore, never held while an
// instance is built or delivered). A failed or busy read gives a complete,
// empty enumeration and not found for getInstance. Thread-safe: the members
// are written by initialize only.
#ifndef ZDA_REPLICATION_ENTITY_PROVIDER_H
#define ZDA_REPLICATION_ENTITY_PROVIDER_H

#include <functional>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "ZDA_ProviderTypes.h"
#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_ReplicationEntityProvider : public CIMInstanceProvider, public CIMMethodProvider
{
public:
    ZDA_ReplicationEntityProvider();
    // Not a working constructor: throws CIMNotSupportedException
    // "ZDA_ReplicationEntity does not support constructor with object path.".
    explicit ZDA_ReplicationEntityProvider(const CIMObjectPath& path);
    virtual ~ZDA_ReplicationEntityProvider();

    // "KX_ORLA:<entityType>:<entityName>:<systemAddress>": the entity's
    // host comes last although it is the first argument.
    static String buildInstanceID(String systemAddress, String entityType, String entityName);
    // The entity's path: host `systemName`, root/zda, InstanceID
    // buildInstanceID(entitySystemName, entityType, entityName).
    static CIMObjectPath buildObjectPath(
        String systemName, String entitySystemName, String entityType, String entityName);
    // The entity on the skeleton of `replicaEntityClass` (properties the
    // class lacks are left out), with the path of
    // buildObjectPath(localHostName, entityHostName, entityType, entityName).
    // Type is 11; ElementName, Caption and Name are the entity's name.
    // Element embeds the far thing on the skeleton of `entityClass`: a group
    // ("RG") with its InstanceID only, a volume ("VV") with its four keys
    // (DeviceID the entity's name, SystemName its host); EntityID is the
    // text of that element's path without host and namespace.
    static CIMInstance buildInstance(String const& localHostName, String const& entityHostName,
        String const& entityType, String const& entityName, CIMClass& entityClass,
        CIMClass& replicaEntityClass);
    // Splits an entity's InstanceID: the text after "KX_ORLA:" up to the
    // first colon is the type, up to the second the name, all the rest
    // (colons included) the host. With one colon the host is empty; with
    // none, or without the prefix, all three are empty.
    static void extractFromInstanceID(
        const String& instanceID, String& entityType, String& entityName, String& hostName);
    // Receives one entity of a walk: its type ("RG" or "VV"), name and host.
    // True ends the walk.
    typedef std::function<bool(const char* entityType, const String& entityName, const String& entityHost)>
        EntityVisitor;
    // The entities of a remote copy snapshot, in the walk's order: with
    // `groups` every far group, one per group and target; then with
    // `volumes` every far volume, one per group volume and target that has
    // a map, named by its WWN when the peer's WWN is known, else by its
    // name on the target.
    static void forEachEntity(api_rcopy_t& rcopy, bool groups, bool volumes, const EntityVisitor& visit);
    // The walk behind getInstance (`method` CIM_GET_INSTANCE: the entity the
    // reference's InstanceID names, CIMObjectNotFoundException when there is
    // none), enumerateInstances and enumerateInstanceNames (for a reference
    // without a class: every far group, one per group and target, then
    // every far volume, one per group volume and target that has a map).
    // Paths carry `systemAddress`. Calls processing first and complete at
    // the end, also after an array failure.
    static void deliverInstances(CIMOMHandle& cimom, const OperationContext& context,
        const CIMObjectPath& instanceReference, const Boolean includeQualifiers,
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList, const String& systemAddress,
        cim_method_e method, cim_handler_u handler);

    // Keeps the handle and reads the system's host name.
    virtual void initialize(CIMOMHandle& cimom);
    virtual void terminate();

    // Class CIM_ReplicationEntity or ZDA_ReplicationEntity (else
    // CIMNotSupportedException); getInstance needs exactly one key
    // (CIMInvalidParameterException).
    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);
    virtual void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& classReference,
        ObjectPathResponseHandler& handler);

    // Refused with CIMNotSupportedException: far elements are not changed
    // from here, and the class has no methods.
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, const Boolean includeQualifiers,
        const CIMPropertyList& propertyList, ResponseHandler& handler);
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);
    virtual void deleteInstance(
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);
    virtual void invokeMethod(const OperationContext& context, const CIMObjectPath& objectReference,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        MethodResultResponseHandler& handler);

private:
    CIMOMHandle _cimom;
    // The system's host name: the host of the paths served here.
    String _systemAddress;
};

PEGASUS_NAMESPACE_END

#endif
