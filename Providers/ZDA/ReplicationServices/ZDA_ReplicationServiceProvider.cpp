// The replication service: its one instance, the method table and the
// routines its method handlers share.
#include "ZDA_ReplicationServiceProvider.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_AssociationFrame.h"
#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_ConcreteJobProvider.h"
#include "ZDA_RemoteGroupSynchronizedProvider.h"
#include "ZDA_RemoteReplicationGroupProvider.h"
#include "ZDA_RemoteServiceAccessPointProvider.h"
#include "ZDA_ReplicationEntityProvider.h"
#include "ZDA_ReplicationGroupProvider.h"
#include "ZDA_StorageConfigurationServiceProvider.h"
#include "ZDA_StorageSystemProvider.h"
#include "ZDA_StorageVolumeProvider.h"

PEGASUS_NAMESPACE_BEGIN

namespace
{

const String ClassName = "ZDA_ReplicationService";
const char SOURCE_FILE[] = "ZDA_ReplicationServiceProvider";
const char NAMESPACE[] = "root/zda";
const char SYSTEM_CLASS[] = "ZDA_StorageSystem";
const char SERVICE_NAME[] = "KX_ORLA_ReplicationService";

// The values of SyncType that _returnToResourcePool acts on.
const Uint16 SYNC_TYPE_SNAPSHOT = 7;
const Uint16 SYNC_TYPE_CLONE = 8;

// The status the module stores when none of the synchronizations exist.
const int NO_SYNCHRONIZATION_FOUND = 50;

Boolean isServiceClass(const CIMName& className)
{
    return className.equal("CIM_ReplicationService") || className.equal("SNIA_ReplicationService") ||
        className.equal(CIMName(ClassName));
}

// The user and address of the request; both empty without an identity,
// which the array then refuses.
void callerOf(const OperationContext& context, String& userName, String& ipAddress)
{
    if (!context.contains(IdentityContainer::NAME))
        return;
    IdentityContainer identity(context.get(IdentityContainer::NAME));
    userName = identity.getUserName();
    ipAddress = identity.getIpAddress();
}

// A method called without parameters is refused with 5 before its loop.
void refuseEmptyParameters(const Array<CIMParamValue>& inParameters, Uint32& outstatus, String& errStr)
{
    if (inParameters.size() != 0)
        return;
    log_message(2, " Invalid number of parameters\n");
    outstatus = 5;
    errStr = "Invalid number of parameters";
}

}  // namespace

CIMObjectPath ZDA_ReplicationServiceProvider::_instanceName;
String ZDA_ReplicationServiceProvider::_name;

// ---- construction ------------------------------------------------------------------

ZDA_ReplicationServiceProvider::ZDA_ReplicationServiceProvider() {}

ZDA_ReplicationServiceProvider::ZDA_ReplicationServiceProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ZDA_ReplicationServiceProvider::~ZDA_ReplicationServiceProvider() {}

void ZDA_ReplicationServiceProvider::initialize(CIMOMHandle& cimom)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::initialize(cimom)\n");
    _cimom = cimom;
    _systemName = ZDA_Common::getSystemName(cimom);
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
    _buildInstanceName();
    log_message(4, "<-- ZDA_ReplicationServiceProvider::initialize(cimom)\n");
}

void ZDA_ReplicationServiceProvider::terminate()
{
    delete this;
}

// ---- the instance --------------------------------------------------------------------

CIMObjectPath ZDA_ReplicationServiceProvider::buildObjectPath(
    const String& systemName, const String& systemAddress)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("SystemCreationClassName", SYSTEM_CLASS, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", systemName, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("CreationClassName", ClassName, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("Name", SERVICE_NAME, CIMKeyBinding::STRING));
    CIMObjectPath path(systemAddress, CIMNamespaceName(NAMESPACE), CIMName(ClassName));
    path.setKeyBindings(keys);
    return path;
}

void ZDA_ReplicationServiceProvider::_buildInstanceName()
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::_buildInstanceName()\n");
    // Built once per process, by the first provider object.
    if (!_instanceName.getClassName().isNull())
        return;
    _name = SERVICE_NAME;
    _instanceName = buildObjectPath(_systemName, _systemAddress);
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_buildInstanceName()\n");
}

CIMInstance ZDA_ReplicationServiceProvider::_buildInstance(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::_buildInstance()\n");
    // Contact and owner are best effort: a failure leaves them empty.
    char contact[256] = "";
    char owner[256] = "";
    if (ZDA_CompanionFrame::callUnderSemaphore([&] { return api_getSystemContact(contact); }) != 0)
        contact[0] = '\0';
    if (ZDA_CompanionFrame::callUnderSemaphore([&] { return api_getOwnerName(owner); }) != 0)
        owner[0] = '\0';

    CIMClass serviceClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), NAMESPACE,
        CIMName(ClassName), false, includeQualifiers, includeClassOrigin, propertyList);
    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(serviceClass);
    ZDA_Common::setPropertyValue(instance, "SystemCreationClassName", SYSTEM_CLASS);
    ZDA_Common::setPropertyValue(instance, "SystemName", _systemName);
    ZDA_Common::setPropertyValue(instance, "CreationClassName", ClassName);
    ZDA_Common::setPropertyValue(instance, "Name", _name);
    ZDA_Common::setPropertyValue(instance, "Caption", _name);
    ZDA_Common::setPropertyValue(instance, "PrimaryOwnerContact", String(contact));
    ZDA_Common::setPropertyValue(instance, "PrimaryOwnerName", String(owner));
    ZDA_Common::setPropertyValue(instance, "Started", Boolean(true));
    ZDA_Common::setPropertyValue(instance, "StartMode", "Automatic");
    instance.setPath(_instanceName);
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_buildInstance()\n");
    return instance;
}

void ZDA_ReplicationServiceProvider::_openInstanceOperation(
    const OperationContext& context, const CIMObjectPath& reference, Uint32 line)
{
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, line);
    if (!isServiceClass(reference.getClassName()))
        throw CIMNotSupportedException(
            ClassName + " Invalid class name" + reference.getClassName().getString());
}

void ZDA_ReplicationServiceProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::getInstance()\n");
    _openInstanceOperation(context, instanceReference, __LINE__);
    const Uint32 keyCount = instanceReference.getKeyBindings().size();
    if (keyCount != 4)
    {
        log_message(
            2, "ZDA_ReplicationServiceProvider::getInstance(): Invalid number of keys (%d)\n", int(keyCount));
        throw CIMInvalidParameterException(ClassName + " Expect four keys.");
    }
    if (!ZDA_Common::matchObjectPath(instanceReference, _instanceName))
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");
    CIMInstance instance = _buildInstance(includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    handler.deliver(instance);
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationServiceProvider::getInstance()\n");
}

void ZDA_ReplicationServiceProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::enumerateInstances() \n");
    _openInstanceOperation(context, classReference, __LINE__);
    log_message(
        4, "\t className = %s\n", (const char*)classReference.getClassName().getString().getCString());
    CIMInstance instance = _buildInstance(includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    handler.deliver(instance);
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationServiceProvider::enumerateInstances() \n");
}

void ZDA_ReplicationServiceProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::enumerateInstanceNames()\n");
    _openInstanceOperation(context, classReference, __LINE__);
    handler.processing();
    handler.deliver(_instanceName);
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationServiceProvider::enumerateInstanceNames()\n");
}

void ZDA_ReplicationServiceProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ZDA_ReplicationServiceProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ZDA_ReplicationServiceProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

// ---- methods: dispatch and authorization ---------------------------------------------------

void ZDA_ReplicationServiceProvider::invokeMethod(const OperationContext& context,
    const CIMObjectPath& objectReference, const CIMName& methodName, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler)
{
    String authUserName;
    String authIp;
    callerOf(context, authUserName, authIp);
    const String authClassName = objectReference.getClassName().getString();
    const String authMethodName = methodName.getString();
    log_message(4, "--> ZDA_ReplicationServiceProvider::invokeMethod(), methodName = %s \n",
        (const char*)authMethodName.getCString());

    if (api_zdaOpenForCimserver((const char*)authUserName.getCString()) != 0)
        throw TraceableCIMException(
            CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user", SOURCE_FILE, __LINE__);

    // The audit record of this call; it lives on this stack so concurrent
    // calls never share one.
    api_evtparam_t apiEvent;
    memset(&apiEvent, 0, sizeof apiEvent);
    api_evtparam_t* apiEventp = &apiEvent;
    ZDA_Common::setEventParam(apiEventp, authClassName.getCString(), authMethodName.getCString(), "",
        authUserName.getCString(), authIp.getCString());

    if (!ZDA_Common::matchObjectPath(objectReference, _instanceName))
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");

    for (const MethodRow* rowp = _methodTable; rowp->name; rowp++)
    {
        const MethodRow& row = *rowp;
        if (!methodName.equal(row.name) && !(row.alternativeName && methodName.equal(row.alternativeName)))
            continue;
        if (row.authorization == GENERIC_AUTHORIZATION)
            _authorizeGeneric(authClassName, authMethodName, authUserName, authIp);
        else
            _authorizeByFuncType(row.authorization, authUserName, authIp, inParameters);
        const MethodCall call{apiEventp, context, methodName, authMethodName, inParameters, handler};
        row.dispatch(*this, call);
        log_message(4, "<-- ZDA_ReplicationServiceProvider::invokeMethod()\n");
        return;
    }

    // A name in no row ends normally with nothing delivered: the client
    // sees a response without a return value. The refusal is made but
    // deliberately not thrown, so the name is only logged.
    log_message(2, " unknown method %s\n", (const char*)authMethodName.getCString());
    {
        CIMMethodNotFoundException unknown(ClassName + ":" + authMethodName + " not supported");
        (void)unknown;
    }
    log_message(4, "<-- ZDA_ReplicationServiceProvider::invokeMethod()\n");
}

void ZDA_ReplicationServiceProvider::_authorizeByFuncType(
    int funcType, const String& userName, const String& ipAddress, const Array<CIMParamValue>& inParameters)
{
    requireAuthorized(authorizeMethod(funcType, userName, ipAddress, inParameters), SOURCE_FILE, __LINE__);
}

void ZDA_ReplicationServiceProvider::_authorizeGeneric(
    const String& className, const String& methodName, const String& userName, const String& ipAddress)
{
    // The key follows the class the client named.
    const int result = authorizeGeneric(userName, ipAddress, className, methodName);
    switch (result)
    {
    case API_AUTH_ALLOWED: return;
    case API_AUTH_DENIED:
    case API_AUTH_UNKNOWN_USER:
        throw TraceableCIMException(
            CIM_ERR_ACCESS_DENIED, "Insufficient generic privilege", SOURCE_FILE, __LINE__);
    default:
        throw TraceableCIMException(
            CIM_ERR_NOT_SUPPORTED, "Does not support in generic!", SOURCE_FILE, __LINE__);
    }
}

// ---- routines the method handlers share ----------------------------------------------------

void ZDA_ReplicationServiceProvider::_completeMethod(MethodResultResponseHandler& handler, Uint32 outstatus,
    const String& errStr, const Array<CIMParamValue>& paramValues, const char* handlerName,
    ProcessingOrder order)
{
    log_message(4, "Overall status of the operation = %d\n", int(outstatus));
    if (order == PROCESSING_FIRST)
        handler.processing();
    // The method's result travels as the CIM status code, unmapped.
    if (outstatus != 0 && errStr.size() > 0)
        throw CIMException(CIMStatusCode(outstatus), errStr, true);
    if (order == PROCESSING_AFTER_CHECK)
        handler.processing();
    for (Uint32 i = 0; i < paramValues.size(); i++)
        handler.deliverParamValue(paramValues[i]);
    handler.deliver(CIMValue(outstatus));
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationServiceProvider:: %s\n", handlerName);
}

Uint16 ZDA_ReplicationServiceProvider::_convertToCopySvcsOp(Uint16 operation)
{
    switch (operation)
    {
    case 2: return ZDA_StorageConfigurationServiceProvider::OP_STOP_COPY;
    case 8:
    case 9: return ZDA_StorageConfigurationServiceProvider::OP_DETACH;
    case 14: return ZDA_StorageConfigurationServiceProvider::OP_RESYNC;
    case 15: return ZDA_StorageConfigurationServiceProvider::OP_RESTORE;
    default: return 0;
    }
}

int ZDA_ReplicationServiceProvider::validateCopyStateOp(Uint16 waitForCopyState, Uint16 op)
{
    if (waitForCopyState == 0)
        return 1;
    switch (op)
    {
    case 0: return 1;
    case 4:
    case 11:
    case 20: return (waitForCopyState == 4 || waitForCopyState == 3) ? 1 : 0;
    case 14: return waitForCopyState == 4 ? 1 : 0;
    case 21: return waitForCopyState == 7 ? 1 : 0;
    case 10: return waitForCopyState == 10 ? 1 : 0;
    case 8:
        // A state of 0 has been answered above, so this is always 0.
        return waitForCopyState == 0 ? 1 : 0;
    default: return -1;
    }
}

void ZDA_ReplicationServiceProvider::setConcreteJobParam(
    Array<CIMParamValue>& paramValues, api_rcopy_start_group& rcgroup)
{
    if (rcgroup.sync_task_num == 0 || rcgroup.sync_task_id == nullptr || rcgroup.sync_task_id[0].tid == 0)
        return;
    // Only the group's first task is reported as its job.
    const CIMObjectPath job = ZDA_ConcreteJobProvider::buildObjectPath(
        _systemAddress, ZDA_ConcreteJobProvider::makeUniqueID(rcgroup.sync_task_id[0].tid));
    paramValues.append(CIMParamValue("Job", CIMValue(job), true));
}

namespace
{

void logSkippedSynchronization(const CIMObjectPath& syncRef, const String& why)
{
    log_message(3, "ZDA_ReplicationServiceProvider::_returnToResourcePool: skipped %s: %s\n",
        (const char*)syncRef.toString().getCString(), (const char*)why.getCString());
}

}  // namespace

api_Status_t ZDA_ReplicationServiceProvider::_returnToResourcePool(api_evtparam_t* apiEventp,
    const OperationContext& context, const Array<CIMObjectPath>& syncRefs, const CIMObjectPath& targetGroup,
    Boolean targetGroupSet)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::_returnToResourcePool()\n");
    api_Status_t status;
    api_initStatus(&status);

    Array<CIMObjectPath> volRefs;
    Array<CIMObjectPath> svRefs;
    Array<Uint16> syncTypes;
    Uint32 found = 0;
    for (Uint32 i = 0; i < syncRefs.size(); i++)
    {
        // A synchronization that cannot be read is skipped, whatever the
        // reason; one that exists but failed to read is logged.
        try
        {
            const CIMObjectPath& syncRef = syncRefs[i];
            const CIMValue value = _cimom.getProperty(
                context, CIMNamespaceName(NAMESPACE), syncRef, "SyncType");
            Uint16 syncType = 0;
            if (!value.isNull())
            {
                value.get(syncType);
                syncTypes.append(syncType);
                found++;
            }
            const CIMObjectPath target(ZDA_Common::getStringProperty(syncRef, "SyncedElement"));
            if (syncType == SYNC_TYPE_CLONE)
                volRefs.append(target);
            else if (syncType == SYNC_TYPE_SNAPSHOT)
                svRefs.append(syncRef);
        }
        catch (CIMException& e)
        {
            if (e.getCode() != CIM_ERR_NOT_FOUND)
                logSkippedSynchronization(syncRefs[i], e.getMessage());
        }
        catch (Exception& e)
        {
            logSkippedSynchronization(syncRefs[i], e.getMessage());
        }
        catch (...)
        {
            logSkippedSynchronization(syncRefs[i], "unknown failure");
        }
    }

    if (found == 0)
    {
        errinfo_set_str(&status, NO_SYNCHRONIZATION_FOUND, "None of the Synchronized instances exist");
        log_message(2, "None of the Synchronized instances exist\n");
        return status;
    }

    if (targetGroupSet)
    {
        const String setName = ZDA_Common::extractFromInstanceID(
            ZDA_Common::getStringProperty(targetGroup, "InstanceID"));
        status = ZDA_CompanionFrame::statusCall(
            [&] { return api_removeVVSet(apiEventp, setName.getCString()); });
        if (status.code != 0)
        {
            char errText[API_ERRTEXT_LEN];
            api_getErrorTextNoNL(errText, sizeof errText, &status);
            log_message(2, "Delete vvset error (%d): %s\n", status.code, errText);
            return status;
        }
    }

    if (volRefs.size() > 0)
        status.code = ZDA_Common::removeVVs(apiEventp, volRefs, 0);

    for (Uint32 i = 0; i < svRefs.size(); i++)
    {
        Array<CIMObjectPath> jobs;
        String host = _systemAddress;
        const api_Status_t detached = ZDA_StorageConfigurationServiceProvider::modifySynchronization(
            apiEventp, _cimom, context, jobs, ZDA_StorageConfigurationServiceProvider::OP_DETACH, svRefs[i],
            host);
        // The first failure is the one reported; the rest are still tried.
        if (detached.code != 0 && status.code == 0)
            status = detached;
    }
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_returnToResourcePool()\n");
    return status;
}

api_Status_t ZDA_ReplicationServiceProvider::_returnToResourcePool(
    api_evtparam_t* apiEventp, const OperationContext& context, const CIMObjectPath& syncRef)
{
    Array<CIMObjectPath> syncRefs;
    syncRefs.append(syncRef);
    return _returnToResourcePool(apiEventp, context, syncRefs, CIMObjectPath(), false);
}

// ---- the method table and its handlers ---------------------------------------------------
//
// One row per method the service answers, walked from the top; the first
// row whose name (or alternative name) equals the method's name without
// case wins. A method is added by adding its row and its handler; names
// without a row take the unknown-method path of invokeMethod. Each row's
// dispatch passes the handler the arguments it takes from the MethodCall.

const ZDA_ReplicationServiceProvider::MethodRow ZDA_ReplicationServiceProvider::_methodTable[] = {
    // name, alternative name, authorization, dispatch
    {"CreateElementReplica", nullptr, AUTH_CREATE_ELEMENT_REPLICA,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._createElementReplica(c.apiEventp, c.context, c.inParameters, c.handler);
        }},
    {"CreateListReplica", nullptr, AUTH_CREATE_ELEMENT_REPLICA,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._createListReplica(c.apiEventp, c.context, c.inParameters, c.handler, c.authMethodName);
        }},
    {"ModifyReplicaSynchronization", nullptr, AUTH_MODIFY_REPLICA_SYNCHRONIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._modifyReplicaSynchronization(c.apiEventp, c.context, c.inParameters, c.handler);
        }},
    {"ModifyListSynchronization", nullptr, AUTH_MODIFY_LIST_SYNCHRONIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._modifyListSynchronization(c.apiEventp, c.context, c.inParameters, c.handler);
        }},
    {"ZDA_ModifyGroupReplicaSynchronization", nullptr, AUTH_MODIFY_GROUP_REPLICA_SYNCHRONIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._modifyListSynchronization(c.apiEventp, c.context, c.inParameters, c.handler);
        }},
    {"CreateGroup", nullptr, GENERIC_AUTHORIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._createGroup(c.apiEventp, c.context, c.inParameters, c.handler);
        }},
    {"DeleteGroup", nullptr, GENERIC_AUTHORIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._deleteGroup(c.apiEventp, c.context, c.inParameters, c.handler);
        }},
    {"CreateGroupReplica", "ZDA_CreateGroupReplica", AUTH_CREATE_GROUP_REPLICA,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._createGroupReplica(c.apiEventp, c.context, c.methodName, c.inParameters, c.handler);
        }},
    {"CreateGroupReplicaFromElements", nullptr, AUTH_CREATE_GROUP_REPLICA,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._createGroupReplica(c.apiEventp, c.context, c.methodName, c.inParameters, c.handler);
        }},
    {"AddMembers", nullptr, GENERIC_AUTHORIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._addMembers(c.apiEventp, c.context, c.inParameters, c.handler);
        }},
    {"RemoveMembers", nullptr, GENERIC_AUTHORIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._removeMembers(c.apiEventp, c.context, c.inParameters, c.handler);
        }},
    {"ZDA_CreateConsistentReplicaList", nullptr, AUTH_CREATE_CONSISTENT_REPLICA_LIST,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._createListReplica(c.apiEventp, c.context, c.inParameters, c.handler, c.authMethodName);
        }},
    {"GetReplicationRelationships", nullptr, GENERIC_AUTHORIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._getReplicationRelationships(c.context, c.methodName, c.inParameters, c.handler);
        }},
    {"GetReplicationRelationshipInstances", nullptr, GENERIC_AUTHORIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._getReplicationRelationships(c.context, c.methodName, c.inParameters, c.handler);
        }},
    {"GetAvailableTargetElements", nullptr, GENERIC_AUTHORIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._getAvailableTargetElements(c.context, c.inParameters, c.handler);
        }},
    {"GetPeerSystems", nullptr, GENERIC_AUTHORIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._getPeerSystems(c.context, c.inParameters, c.handler);
        }},
    {"GetServiceAccessPoints", nullptr, GENERIC_AUTHORIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._getServiceAccessPoints(c.context, c.inParameters, c.handler);
        }},
    {nullptr, nullptr, 0, nullptr}  // end of the table
};

// ---- group creation and deletion, candidate targets -------------------------------

namespace
{

const char VOLUME_CLASS[] = "ZDA_StorageVolume";
const char GROUP_CLASS[] = "ZDA_ReplicationGroup";
const char RCOPY_GROUP_CLASS[] = "ZDA_RemoteReplicationGroup";
const Uint16 VOLUME_TYPE_BASE = 1;
const Uint16 OPERATIONAL_STATUS_OK = 2;
// Removal attempts of busy volumes after the first, two seconds apart.
const int BUSY_RETRIES = 10;

// A key-value option set, released on every path.
struct OptionSet
{
    api_okv_opts_t opts;
    OptionSet() { std::memset(&opts, 0, sizeof opts); }
    ~OptionSet() { api_free_okv_opts(&opts); }
    OptionSet(const OptionSet&) = delete;
    OptionSet& operator=(const OptionSet&) = delete;
};

// The volumes that could receive a full copy of `source` (whose instance is
// `sourceInstance`), in the server's order: base volumes at least as large,
// not system volumes, working. False, after logging why, when the source
// gives no list at all: it has no snapshot space, none of `targetPools`
// (when given) is its snapshot pool, or its size cannot be read.
bool candidateTargets(CIMOMHandle& cimom, const OperationContext& context, const CIMObjectPath& source,
    CIMInstance& sourceInstance, const Array<CIMObjectPath>* targetPools, Array<CIMObjectPath>& candidates)
{
    const Array<CIMObjectPath> replicaPoolRefs = cimom.associatorNames(context, NAMESPACE, source,
        "ZDA_ReplicaPoolForStorage", "ZDA_DeltaReplicaStoragePool", "Dependent", "Antecedent");
    if (replicaPoolRefs.size() == 0)
    {
        log_message(3, "SourceElement volume has no snapspace\n");
        return false;
    }
    if (targetPools)
    {
        Boolean poolMatches = false;
        for (Uint32 i = 0; i < targetPools->size() && !poolMatches; i++)
            poolMatches = ZDA_Common::matchObjectPath((*targetPools)[i], replicaPoolRefs[0]);
        if (!poolMatches)
        {
            log_message(3, "None of the TargetPools is the delta replica pool of the input volume\n");
            return false;
        }
    }
    Uint64 inSize = 0;
    if (ZDA_Common::getProperty(sourceInstance, "NumberOfBlocks", inSize) != 0)
    {
        log_message(2, "Trouble getting necessary properties from SourceElement\n");
        return false;
    }

    Array<CIMInstance> volInsts = cimom.enumerateInstances(
        context, NAMESPACE, VOLUME_CLASS, false, false, false, false, CIMPropertyList());
    for (Uint32 i = 0; i < volInsts.size(); i++)
    {
        CIMInstance& volume = volInsts[i];
        if (ZDA_Common::matchObjectPath(volume.getPath(), source))
            continue;
        Uint64 size = 0;
        Uint16 volType = 0;
        Uint32 policy = 0;
        Array<Uint16> opStatus;
        if (ZDA_Common::getProperty(volume, "NumberOfBlocks", size) != 0 ||
            ZDA_Common::getProperty(volume, "VolumeType", volType) != 0 ||
            ZDA_Common::getProperty(volume, "Policy", policy) != 0 ||
            ZDA_Common::getProperty(volume, "OperationalStatus", opStatus) != 0)
            continue;
        if (size >= inSize && volType == VOLUME_TYPE_BASE && !(policy & VV_POLICY_SYSTEM) &&
            opStatus.size() > 0 && opStatus[0] == OPERATIONAL_STATUS_OK)
            candidates.append(volume.getPath());
    }
    return true;
}

}  // namespace

void ZDA_ReplicationServiceProvider::_createGroup(api_evtparam_t* apiEventp, const OperationContext&,
    const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _createGroup\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    String groupName;
    Array<CIMObjectPath> members;
    if (inParameters.size() == 0)
    {
        log_message(2, " Invalid number of parameters\n");
        outstatus = 5;
        errStr = " Invalid number of parameters";
    }
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const String paramName = inParameters[i].getParameterName();
        const CIMValue value = inParameters[i].getValue();
        if (value.isNull())
            continue;
        if (String::equalNoCase(paramName, "GroupName"))
        {
            value.get(groupName);
        }
        else if (String::equalNoCase(paramName, "Members"))
        {
            value.get(members);
            for (Uint32 m = 0; m < members.size(); m++)
            {
                if (!ZDA_Common::verifyRefMethodParam(
                        members[m], NAMESPACE, _systemAddress, CIMName(VOLUME_CLASS)))
                {
                    outstatus = 5;
                    errStr = "Members parameter contains invalid object path";
                    break;
                }
            }
        }
        else if (String::equalNoCase(paramName, "Persistent"))
        {
            Boolean persistent = true;
            value.get(persistent);
            if (!persistent)
            {
                // Refused by the return value alone: no text, no exception.
                log_message(2, "%s can only be true\n", (const char*)paramName.getCString());
                outstatus = 5;
            }
        }
        else if (String::equalNoCase(paramName, "DeleteOnEmptyElement") ||
            String::equalNoCase(paramName, "DeleteOnUnassociated"))
        {
            Boolean flag = false;
            value.get(flag);
            if (flag)
            {
                log_message(2, "%s can only be false\n", (const char*)paramName.getCString());
                outstatus = 5;
                errStr = paramName + " can only be false";
            }
        }
    }

    if (outstatus == 0)
    {
        CIMObjectPath groupPath;
        outstatus = _createGroup(
            apiEventp, groupName, members, Array<String>(), Array<String>(), groupPath, errStr);
        if (outstatus == 0)
            paramValues.append(CIMParamValue("ReplicationGroup", CIMValue(groupPath), true));
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_createGroup");
}

int ZDA_ReplicationServiceProvider::_createGroup(api_evtparam_t* apiEventp, String groupName,
    Array<CIMObjectPath>& members, Array<String> const& okv_keys, Array<String> const& okv_values,
    CIMObjectPath& groupReplicaPath, String& errStr)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::_createGroup(worker)\n");
    if (groupName.size() == 0)
    {
        log_message(2, "GroupName has to be specified\n");
        errStr = "GroupName has to be specified";
        return 5;
    }

    api_name_t* vvNames = nullptr;
    unsigned int memberCount = 0;
    if (members.size() > 0)
    {
        const int rc = ZDA_Common::fillInVVNames(members, &vvNames, &memberCount);
        if (rc != 0 || memberCount < members.size())
        {
            std::free(vvNames);
            log_message(2, "Cannot find one or more of the volumes in Members\n");
            errStr = "Cannot find one or more of the volumes in Members";
            return 5;
        }
    }
    const CString name = groupName.getCString();
    ZDA_Common::setEventOp(apiEventp, name);

    int outstatus = 0;
    OptionSet options;
    api_Status_t status;
    api_initStatus(&status);
    for (Uint32 i = 0; i < okv_keys.size() && i < okv_values.size() && status.code == 0; i++)
    {
        const CString key = okv_keys[i].getCString();
        const CString value = okv_values[i].getCString();
        // The option call gives a code only; in the status form a semaphore
        // time-out reads "Semaphore Timed-Out" like any other failed call.
        status = ZDA_CompanionFrame::statusCall([&] {
            api_Status_t added;
            api_initStatus(&added);
            added.code = api_okv_addSetKV(&options.opts, key, value);
            return added;
        });
    }
    if (status.code == 0)
    {
        status = ZDA_CompanionFrame::statusCall([&] {
            return api_createVVSet(apiEventp, name, vvNames, int(memberCount), 0, "", &options.opts);
        });
    }
    if (status.code == 0)
    {
        groupReplicaPath = ZDA_ReplicationGroupProvider::buildObjectPath(_systemAddress, groupName);
    }
    else
    {
        errStr = ZDA_AssociationFrame::statusText(status);
        log_message(2, "Create vvset error (%d): %s\n", status.code, (const char*)errStr.getCString());
        outstatus = 4;
    }
    std::free(vvNames);
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_createGroup(worker)\n");
    return outstatus;
}

void ZDA_ReplicationServiceProvider::_deleteGroup(api_evtparam_t* apiEventp, const OperationContext& context,
    const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _deleteGroup\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    CIMObjectPath groupRef;
    Boolean groupGiven = false;
    Boolean removeElements = true;
    if (inParameters.size() == 0)
    {
        log_message(2, " Invalid number of parameters\n");
        outstatus = 5;
        errStr = " Invalid number of parameters";
    }
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const String paramName = inParameters[i].getParameterName();
        const CIMValue value = inParameters[i].getValue();
        if (value.isNull())
            continue;
        if (String::equalNoCase(paramName, "ReplicationGroup"))
        {
            value.get(groupRef);
            Array<CIMName> groupClasses;
            groupClasses.append(GROUP_CLASS);
            groupClasses.append(RCOPY_GROUP_CLASS);
            if (!ZDA_Common::verifyRefMethodParam(groupRef, NAMESPACE, _systemAddress, groupClasses))
            {
                outstatus = 5;
                errStr = paramName + " parameter contains invalid object path";
                break;
            }
            try
            {
                _cimom.getInstance(context, NAMESPACE, groupRef, false, false, false, CIMPropertyList());
            }
            catch (const Exception&)
            {
                log_message(2, "Cannot find the replication group\n");
                outstatus = 5;
                errStr = "Cannot find the specified replication group";
                break;
            }
            groupGiven = true;
        }
        else if (String::equalNoCase(paramName, "RemoveElements"))
        {
            value.get(removeElements);
        }
    }
    if (outstatus == 0 && !groupGiven)
    {
        log_message(2, "ReplicationGroup has to be specified\n");
        outstatus = 5;
        errStr = "ReplicationGroup has to be specified";
    }

    if (outstatus == 0)
    {
        ZDA_Common::setEventOp(apiEventp, groupRef.toString().getCString());
        const String groupName = ZDA_Common::extractFromInstanceID(
            ZDA_Common::getStringProperty(groupRef, "InstanceID"));
        const CString name = groupName.getCString();
        if (groupRef.getClassName().equal(GROUP_CLASS))
        {
            if (!removeElements)
            {
                ZDA_AssociationFrame::VVSetList list;
                const api_Status_t found = list.read(name);
                const api_set_t* set = found.code == 0 && list.size() > 0 ? &list[0] : nullptr;
                if (!set)
                {
                    log_message(2, "_deleteGroup: cannot find vvset %s\n", (const char*)name);
                    outstatus = 2;
                    errStr = "Cannot find group " + groupName;
                }
                else if (set->memberCount != 0)
                {
                    log_message(2, "_deleteGroup: vvset is not empty\n");
                    outstatus = 6;
                    errStr = "Cannot remove Group because it is not empty";
                }
            }
            if (outstatus == 0)
            {
                // Takes the set away; its volumes stay.
                const api_Status_t removed = ZDA_CompanionFrame::statusCall(
                    [&] { return api_removeVVSet(apiEventp, name); });
                if (removed.code != 0)
                {
                    errStr = ZDA_AssociationFrame::statusText(removed);
                    log_message(
                        2, "Delete vvset error (%d): %s\n", removed.code, (const char*)errStr.getCString());
                    outstatus = 4;
                }
            }
        }
        else if (groupRef.getClassName().equal(RCOPY_GROUP_CLASS))
        {
            outstatus = _deleteRCopyGroup(apiEventp, groupName, removeElements, errStr);
        }
        else
        {
            outstatus = 5;
            errStr = "ReplicationGroup contains invalid object path";
        }
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_deleteGroup");
}

int ZDA_ReplicationServiceProvider::_deleteRCopyGroup(
    api_evtparam_t* apiEventp, String groupName, Boolean removeElements, String& errStr)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::_deleteRCopyGroup()\n");
    const CString name = groupName.getCString();
    if (!removeElements)
    {
        ZDA_AssociationFrame::RCopySnapshot snapshot;
        const api_Status_t read = snapshot.read(API_RCOPY_QUERY_TYPE_ALL);
        if (read.code != 0)
        {
            const String text = ZDA_AssociationFrame::statusText(read);
            log_message(2, "api_getRCopy error (%d): %s\n", read.code, (const char*)text.getCString());
            errStr = "Cannot read rcopy group: " + text;
            return 4;
        }
        // A group the snapshot does not hold is left to the array to report.
        for (const rm_group_wrapper* g = snapshot.rcopy.groups; g; g = g->next)
        {
            if (std::strcmp(g->group.rm_hdr.rm_name, name) == 0 && g->gvvs)
            {
                log_message(2, "_deleteRCopyGroup: group is not empty\n");
                errStr = "Cannot remove Group because it is not empty";
                return 6;
            }
        }
    }

    api_rcopy_delete rcopyGroup;
    std::memset(&rcopyGroup, 0, sizeof rcopyGroup);
    std::strncpy(rcopyGroup.name, name, API_NAME_LEN - 1);
    rcopyGroup.removevv_flag = API_RCOPY_REMOVE_VVS;
    const api_Status_t status = ZDA_CompanionFrame::statusCall(
        [&] { return api_deleteRCopyGroup(apiEventp, &rcopyGroup); });
    if (status.code != 0)
    {
        errStr = ZDA_AssociationFrame::statusText(status);
        log_message(2, "delete RCopy Group (%d): %s\n", status.code, (const char*)errStr.getCString());
        return 4;
    }
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_deleteRCopyGroup()\n");
    return 0;
}

int ZDA_ReplicationServiceProvider::_deleteGroupAndMembers(
    api_evtparam_t* apiEventp, String setName, String& errStr)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::_deleteGroupAndMembers()\n");
    const CString name = setName.getCString();
    ZDA_Common::setEventOp(apiEventp, name);

    ZDA_AssociationFrame::VVSetList list;
    const api_Status_t found = list.read(name);
    const api_set_t* set = found.code == 0 && list.size() > 0 ? &list[0] : nullptr;
    if (!set)
    {
        log_message(2, "ReplicationGroup %s does not exist\n", (const char*)name);
        errStr = "ReplicationGroup " + setName + " does not exist";
        return 4;
    }

    const api_Status_t removed = ZDA_CompanionFrame::statusCall(
        [&] { return api_removeVVSet(apiEventp, name); });
    if (removed.code != 0)
    {
        errStr = ZDA_AssociationFrame::statusText(removed);
        log_message(2, "removevvset error (%d): %s\n", removed.code, (const char*)errStr.getCString());
        return 4;
    }

    // The set's snapshot still names the members after the set is gone.
    for (int retry = 0;; retry++)
    {
        const int rc = ZDA_CompanionFrame::callUnderSemaphore(
            [&] { return api_removeVVs(apiEventp, set->members, set->memberCount, 0, 0); });
        switch (rc)
        {
        case 0: log_message(4, "<-- ZDA_ReplicationServiceProvider::_deleteGroupAndMembers()\n"); return 0;
        case API_E_BUSY:
            if (retry < BUSY_RETRIES)
            {
                sleep(2);
                continue;
            }
            log_message(2, "Volumes are busy, cannot be removed\n");
            return 4;
        case API_E_PARTIAL_REMOVE:
            log_message(2, "Failed to remove all volumes from vvset %s\n", (const char*)name);
            errStr = "Failed to remove all volumes in vvset " + setName;
            return 0x8000;
        default:
            log_message(2, "Failed to remove volumes from vvset %s\n", (const char*)name);
            errStr = "Failed to remove volumes in vvset " + setName;
            return 4;
        }
    }
}

void ZDA_ReplicationServiceProvider::_getAvailableTargetElements(const OperationContext& context,
    const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _getReplicationRelationships\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    Uint16 syncType = 0;
    Boolean syncTypeSet = false;
    Boolean modeSet = false;
    CIMObjectPath volRef;
    Boolean volRefSet = false;
    Array<CIMObjectPath> tgtPools;
    Boolean targetPoolRefSet = false;
    refuseEmptyParameters(inParameters, outstatus, errStr);
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const String paramName = inParameters[i].getParameterName();
        const CIMValue value = inParameters[i].getValue();
        if (value.isNull())
            continue;
        if (String::equalNoCase(paramName, "SourceElement"))
        {
            value.get(volRef);
            if (!ZDA_Common::verifyRefMethodParam(volRef, NAMESPACE, _systemAddress, CIMName(VOLUME_CLASS)))
            {
                outstatus = 5;
                errStr = "Invalid SourceElement object path " + volRef.toString();
                break;
            }
            volRefSet = true;
        }
        else if (String::equalNoCase(paramName, "TargetPools"))
        {
            value.get(tgtPools);
            for (Uint32 p = 0; p < tgtPools.size() && outstatus == 0; p++)
            {
                if (!ZDA_Common::verifyRefMethodParam(tgtPools[p], NAMESPACE, _systemAddress))
                {
                    outstatus = 5;
                    errStr = "Invalid TargetPools object path " + tgtPools[p].toString();
                }
            }
            targetPoolRefSet = true;
        }
        else if (String::equalNoCase(paramName, "SyncType"))
        {
            value.get(syncType);
            syncTypeSet = true;
        }
        else if (String::equalNoCase(paramName, "Mode"))
        {
            // Required, but it does not change which volumes qualify.
            modeSet = true;
        }
    }

    if (outstatus == 0 && !(syncTypeSet && modeSet && volRefSet))
    {
        log_message(2, "SyncType, Mode and SourceElement must all be specified\n");
        outstatus = 5;
        errStr = "SyncType, Mode and SourceElement must all be specified";
    }
    else if (outstatus == 0 && syncType == SYNC_TYPE_SNAPSHOT)
    {
        // A snapshot makes its own target: the method answers 0 and no list.
        log_message(2, "Virtual copy requires no candidate target volume\n");
        errStr = "Virtual copy requires no candidate target volume";
    }
    else if (outstatus == 0)
    {
        CIMInstance inVolInst;
        try
        {
            inVolInst = _cimom.getInstance(
                context, NAMESPACE, volRef, false, false, false, CIMPropertyList());
        }
        catch (const Exception&)
        {
            log_message(2, "SourceElement does not exist\n");
            outstatus = 5;
            errStr = "SourceElement does not exist";
        }
        Array<CIMObjectPath> candidates;
        if (outstatus == 0 &&
            candidateTargets(
                _cimom, context, volRef, inVolInst, targetPoolRefSet ? &tgtPools : nullptr, candidates))
            paramValues.append(CIMParamValue("Candidates", CIMValue(candidates), true));
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_getReplicationRelationships");
}

// ---- making local replicas ---------------------------------------------------------

namespace
{

const char SYNC_CLASS[] = "ZDA_StorageSynchronized";
const char SETTING_CLASS[] = "ZDA_StorageSetting";
const char MEMBER_ASSOC_CLASS[] = "ZDA_MemberOfReplicationGroup";

// The status a refusal of the group virtual copy carries.
const int GROUP_COPY_REFUSED = 78;
// Longest relationship name; a generated one is always 25 characters, at
// most 20 of the set's name, a point and a random tail.
const Uint32 RELATIONSHIP_NAME_MAX = 24;
const Uint32 GENERATED_STEM_MAX = 20;
const unsigned int GENERATED_NAME_BUFFER = 26;
// Longest name of a copy the array takes.
const Uint32 TARGET_NAME_MAX = 31;
// Expiration and retention lie between an hour and five 365-day years ahead.
const Uint32 SHORTEST_LIFE = 3600;
const Uint32 LONGEST_LIFE = 157680000;

// Array codes a method maps to its own results.
const int ARRAY_IN_USE = 68;
const int ARRAY_BAD_VALUE_1 = 76;
const int ARRAY_BAD_VALUE_2 = 77;
const int ARRAY_BAD_VALUE_3 = 80;
const int ARRAY_SOME_NOT_DELETED = 89;

// The result of a method whose array call failed with `code`: in use (6)
// for 68, failed (4) otherwise; with `invalidCodes` also invalid parameter
// (5) for 76, 77 and 80.
Uint32 copyFailure(int code, bool invalidCodes = false)
{
    if (code == ARRAY_IN_USE)
        return 6;
    if (invalidCodes && (code == ARRAY_BAD_VALUE_1 || code == ARRAY_BAD_VALUE_2 || code == ARRAY_BAD_VALUE_3))
        return 5;
    return 4;
}

api_Status_t groupCopyRefusal(const char* text)
{
    api_Status_t status;
    api_initStatus(&status);
    errinfo_set_str(&status, GROUP_COPY_REFUSED, text);
    return status;
}

// Fills in the clone defaults (synchronous goes with synchronized,
// asynchronous with inactive) and gives the refusal of a state or pairing
// a physical copy cannot take, or null.
const char* cloneRefusal(Uint16& mode, Uint16& waitForCopyState)
{
    if (mode == 0)
        mode = waitForCopyState == 8 ? 3 : 2;
    if (waitForCopyState == 0)
        waitForCopyState = mode == 3 ? 8 : 4;
    if (waitForCopyState != 4 && waitForCopyState != 8)
        return "Only waitForCopyState Sync and Inactive are are supported for physical copy";
    if ((mode == 2 && waitForCopyState != 4) || (mode == 3 && waitForCopyState != 8))
        return "Invalid Mode and WaitForCopyState combination";
    return nullptr;
}

Uint16 cloneCopyType(Uint16 waitForCopyState)
{
    return waitForCopyState == 8 ? ZDA_StorageConfigurationServiceProvider::COPY_INACTIVE
                                 : ZDA_StorageConfigurationServiceProvider::COPY_SYNCHRONIZED;
}

void refuse(Uint32& outstatus, String& errStr, const char* text)
{
    log_message(2, "%s\n", text);
    outstatus = 5;
    errStr = text;
}

// A goal's time as seconds since the epoch; 0 for none, an interval or a
// value that cannot be read.
Uint32 goalTime(CIMInstance& goal, const char* property)
{
    try
    {
        CIMDateTime when;
        if (ZDA_Common::getProperty(goal, property, when) != 0)
            return 0;
        return Uint32(ZDA_Common::getDateTime(when));
    }
    catch (...)
    {
        return 0;
    }
}

// GetReplicationRelationships' Type and Locality: the values that find
// something. Type 3 is a group relationship, 2 any other; Locality 3 is
// remote, 2 local.
const Uint16 RELATIONSHIP_OTHER = 2;
const Uint16 RELATIONSHIP_GROUP = 3;
const Uint16 LOCALITY_LOCAL = 2;
const Uint16 LOCALITY_REMOTE = 3;
const Uint16 FIRST_COPY_STATE = 2;
const Uint16 LAST_COPY_STATE = 15;

const char REMOTE_GROUP_SYNC[] = "ZDA_RemoteGroupSynchronized";
const char REMOTE_VOLUME_SYNC[] = "ZDA_RemoteStorageSynchronized";
const char LOCAL_VOLUME_SYNC[] = "ZDA_StorageSynchronized";

// A Uint16 filter parameter: set once a non-null value was given.
struct Filter
{
    const char* name;
    bool set = false;
    Uint16 value = 0;
};

// True when `instance` has the property of the filter with its value.
bool passes(CIMInstance& instance, const Filter& filter)
{
    if (!filter.set)
        return true;
    Uint16 value = 0;
    return ZDA_Common::getProperty(instance, filter.name, value) == 0 && value == filter.value;
}

}  // namespace

String ZDA_ReplicationServiceProvider::_readCopyParameter(
    const OperationContext& context, const String& name, const CIMValue& value, CopyRequest& request)
{
    if (String::equalNoCase(name, "SyncType"))
    {
        value.get(request.syncType);
        if (request.syncType != SYNC_TYPE_SNAPSHOT && request.syncType != SYNC_TYPE_CLONE)
        {
            log_message(2, "Only SyncType Snapshot and Clone is supported\n");
            return "Only SyncType Snapshot and Clone is supported";
        }
    }
    else if (String::equalNoCase(name, "Mode"))
    {
        value.get(request.mode);
        if (request.mode != 2 && request.mode != 3)
        {
            log_message(2, "Only Mode Sync or Async  are supported\n");
            return "Only Mode Sync or Async are supported";
        }
    }
    else if (String::equalNoCase(name, "TargetPool"))
    {
        value.get(request.tgtPoolRef);
        if (!ZDA_Common::verifyRefMethodParam(request.tgtPoolRef, NAMESPACE, _systemAddress))
            return "TargetPool contains invalid object path";
    }
    else if (String::equalNoCase(name, "TargetSettingGoal"))
    {
        value.get(request.tgtSettingGoalRef);
        if (!ZDA_Common::verifyRefMethodParam(
                request.tgtSettingGoalRef, NAMESPACE, _systemAddress, CIMName(SETTING_CLASS)))
            return "TargetSettingGoal contains invalid object path";
        // Whatever the server answers, a goal it cannot give is not found.
        try
        {
            request.goalSettingInst = _cimom.getInstance(
                context, NAMESPACE, request.tgtSettingGoalRef, false, false, false, CIMPropertyList());
        }
        catch (...)
        {
            log_message(2, "Goal Storage Setting is not found\n");
            return "TargetSettingGoal not found";
        }
    }
    else if (String::equalNoCase(name, "WaitForCopyState"))
    {
        value.get(request.waitForCopyState);
        const Uint16 state = request.waitForCopyState;
        if (state != 4 && state != 3 && state != 8)
        {
            log_message(2, "Only waitForCopyState Inactive, Unsync and Sync is supported\n");
            return "Only waitForCopyState Inactive, Unsync and Sync is supported";
        }
    }
    return String();
}

String ZDA_ReplicationServiceProvider::_freeCopyName(const String& sourceName)
{
    const CString source = sourceName.getCString();
    char name[100];
    for (Uint32 id = 0;; id++)
    {
        if (id == 0)
            std::snprintf(name, sizeof name, "%s.rw", (const char*)source);
        else
            std::snprintf(name, sizeof name, "%s.rw%u", (const char*)source, id - 1);
        ZDA_CompanionFrame::ArrayList<api_VVObj_t> found;
        const int rc = ZDA_CompanionFrame::callUnderSemaphore(
            [&] { return api_getVVs(name, nullptr, found.count(), found.out(), 1); });
        if (rc != 0)
            return String(name);
    }
}

void ZDA_ReplicationServiceProvider::_createElementReplica(api_evtparam_t* apiEventp,
    const OperationContext& context, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _createElementReplica\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    String childVolName;
    CIMObjectPath parentVolRef;
    CIMObjectPath childVolRef;
    CopyRequest copy;
    refuseEmptyParameters(inParameters, outstatus, errStr);
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const String paramName = inParameters[i].getParameterName();
        const CIMValue value = inParameters[i].getValue();
        log_message(4, "Param %s\n", (const char*)paramName.getCString());
        if (value.isNull())
            continue;
        if (String::equalNoCase(paramName, "ElementName"))
        {
            value.get(childVolName);
        }
        else if (String::equalNoCase(paramName, "SourceElement") ||
            String::equalNoCase(paramName, "TargetElement"))
        {
            const bool source = String::equalNoCase(paramName, "SourceElement");
            CIMObjectPath& ref = source ? parentVolRef : childVolRef;
            value.get(ref);
            if (!ZDA_Common::verifyRefMethodParam(ref, NAMESPACE, _systemAddress, CIMName(VOLUME_CLASS)))
            {
                outstatus = 5;
                errStr = source ? "SourceElement contains invalid object path"
                                : "TargetElement contains invalid object path";
            }
        }
        else
        {
            errStr = _readCopyParameter(context, paramName, value, copy);
            if (errStr.size() > 0)
                outstatus = 5;
        }
    }

    if (outstatus == 0 && copy.syncType == SYNC_TYPE_CLONE)
    {
        const String op = "clone " + parentVolRef.toString() + " " + childVolRef.toString() + " " +
            childVolName;
        ZDA_Common::setEventOp(apiEventp, op.getCString());
        if (const char* refusal = cloneRefusal(copy.mode, copy.waitForCopyState))
        {
            refuse(outstatus, errStr, refusal);
        }
        else
        {
            Array<CIMObjectPath> jobs;
            Array<CIMObjectPath> synchronizations;
            const api_Status_t status = ZDA_StorageConfigurationServiceProvider::createPhysicalCopy(apiEventp,
                _cimom, context, cloneCopyType(copy.waitForCopyState), parentVolRef, childVolRef,
                copy.tgtPoolRef, copy.goalSettingInst, jobs, synchronizations, _systemName, _systemAddress,
                childVolName);
            if (jobs.size() > 0)
            {
                paramValues.append(CIMParamValue("Job", CIMValue(jobs[0]), true));
                outstatus = 4096;
            }
            if (synchronizations.size() > 0)
                paramValues.append(CIMParamValue("Synchronization", CIMValue(synchronizations[0]), true));
            if (status.code == 0 && synchronizations.size() > 0)
            {
                const CIMObjectPath target(
                    ZDA_Common::getStringProperty(synchronizations[0], "SyncedElement"));
                paramValues.append(CIMParamValue("TargetElement", CIMValue(target), true));
            }
            if (status.code != 0)
            {
                outstatus = copyFailure(status.code);
                errStr = ZDA_AssociationFrame::statusText(status);
            }
        }
    }
    else if (outstatus == 0 && copy.syncType == SYNC_TYPE_SNAPSHOT)
    {
        const String op = "snapshot " + parentVolRef.toString() + " " + childVolName;
        ZDA_Common::setEventOp(apiEventp, op.getCString());
        if (copy.waitForCopyState != 0 && copy.waitForCopyState != 4)
        {
            refuse(outstatus, errStr, "Only waitForCopyState sync is supported for virtual copy");
        }
        else
        {
            const api_Status_t status = ZDA_StorageConfigurationServiceProvider::createVirtualCopy(apiEventp,
                _cimom, context, paramValues, parentVolRef, childVolName, copy.tgtPoolRef,
                copy.goalSettingInst, _systemName, _systemAddress);
            if (status.code != 0)
            {
                outstatus = copyFailure(status.code);
                errStr = ZDA_AssociationFrame::statusText(status);
            }
            else
            {
                // The new volume is the first target the copy services name;
                // it replaces any TargetElement the caller sent.
                for (Uint32 i = 0; i < paramValues.size(); i++)
                {
                    if (String::equalNoCase(paramValues[i].getParameterName(), "TargetElement") &&
                        !paramValues[i].getValue().isNull())
                    {
                        paramValues[i].getValue().get(childVolRef);
                        break;
                    }
                }
                if (!childVolRef.getClassName().isNull())
                {
                    const CIMObjectPath sync = ZDA_Common::buildAssocPath(SYNC_CLASS, "SystemElement",
                        "SyncedElement", parentVolRef, childVolRef, _systemName, NAMESPACE);
                    paramValues.append(CIMParamValue("Synchronization", CIMValue(sync), true));
                    paramValues.append(CIMParamValue("TargetElement", CIMValue(childVolRef), true));
                }
            }
        }
    }
    else if (outstatus == 0)
    {
        refuse(outstatus, errStr, "SyncType/Mode combination not supported");
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_createElementReplica");
}

void ZDA_ReplicationServiceProvider::_createListReplica(api_evtparam_t* apiEventp,
    const OperationContext& context, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler, String methodName)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _createListReplica\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    Array<CIMObjectPath> sourceElements;
    Array<CIMObjectPath> targetElements;
    Array<String> elementNames;
    CopyRequest copy;
    refuseEmptyParameters(inParameters, outstatus, errStr);
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const String paramName = inParameters[i].getParameterName();
        const CIMValue value = inParameters[i].getValue();
        log_message(4, "Param %s\n", (const char*)paramName.getCString());
        if (value.isNull())
            continue;
        if (String::equalNoCase(paramName, "ElementNames") || String::equalNoCase(paramName, "TargetNames"))
        {
            value.get(elementNames);
        }
        else if (String::equalNoCase(paramName, "SourceElements") ||
            String::equalNoCase(paramName, "TargetElements"))
        {
            const bool sources = String::equalNoCase(paramName, "SourceElements");
            Array<CIMObjectPath>& refs = sources ? sourceElements : targetElements;
            value.get(refs);
            for (Uint32 e = 0; e < refs.size() && outstatus == 0; e++)
            {
                if (!ZDA_Common::verifyRefMethodParam(
                        refs[e], NAMESPACE, _systemAddress, CIMName(VOLUME_CLASS)))
                {
                    outstatus = 5;
                    errStr = (sources ? "SourceElements contains an invalid object path at index position "
                                      : "TargetElements contains invalid object path at index position ") +
                        String(std::to_string(e).c_str());
                }
                else if (sources && e > 0 && !refs[e].getClassName().equal(refs[e - 1].getClassName()))
                {
                    // Answered by the return value alone.
                    log_message(2, "SourceElements cannot contain a mix of element types.\n");
                    outstatus = 5;
                }
            }
        }
        else
        {
            errStr = _readCopyParameter(context, paramName, value, copy);
            if (errStr.size() > 0)
                outstatus = 5;
        }
    }

    Array<CIMObjectPath> jobs;
    Array<CIMObjectPath> synchronizations;
    Array<CIMObjectPath> outTargetElements;
    api_Status_t status;
    api_initStatus(&status);
    if (outstatus == 0 && copy.syncType == SYNC_TYPE_CLONE)
    {
        const char* refusal = nullptr;
        if (targetElements.size() > 0 && elementNames.size() > 0)
            refusal = "Cannot specify both ElementNames and TargetElements.";
        else if (targetElements.size() > 0 && targetElements.size() != sourceElements.size())
            refusal = "If specified, the number of elements in TargetElements must match the "
                      "number in SourceElements.";
        else
            refusal = cloneRefusal(copy.mode, copy.waitForCopyState);
        if (refusal)
        {
            refuse(outstatus, errStr, refusal);
        }
        else
        {
            Array<CIMObjectPath> parentVolRefs;
            Array<CIMObjectPath> childVolRefs;
            Array<String> childVolNames;
            String parentVolRefStr;
            String childVolRefStr;
            String childVolNameStr;
            for (Uint32 i = 0; i < sourceElements.size(); i++)
            {
                parentVolRefs.append(sourceElements[i]);
                parentVolRefStr.append(sourceElements[i].toString() + " ");
                // A short list of names leaves the rest to the copy services.
                const String name = i < elementNames.size() ? elementNames[i] : String();
                childVolNames.append(name);
                childVolNameStr.append(name + " ");
                if (targetElements.size() > 0)
                {
                    childVolRefs.append(targetElements[i]);
                    childVolRefStr.append(targetElements[i].toString() + " ");
                }
            }
            const String op = "clone " + parentVolRefStr + " " + childVolRefStr + " " + childVolNameStr;
            ZDA_Common::setEventOp(apiEventp, op.getCString());
            status = ZDA_StorageConfigurationServiceProvider::createPhysicalCopy(apiEventp, _cimom, context,
                cloneCopyType(copy.waitForCopyState), parentVolRefs, childVolRefs, copy.tgtPoolRef,
                copy.goalSettingInst, jobs, synchronizations, _systemName, _systemAddress, childVolNames,
                true);
            if (jobs.size() > 0)
            {
                // The standard method has room for one job only.
                if (String::equalNoCase(methodName, "CreateListReplica"))
                    paramValues.append(CIMParamValue("Job", CIMValue(jobs[0]), true));
                else
                    paramValues.append(CIMParamValue("Jobs", CIMValue(jobs), true));
                outstatus = 4096;
            }
            if (synchronizations.size() > 0)
            {
                paramValues.append(CIMParamValue("Synchronizations", CIMValue(synchronizations), true));
                for (Uint32 i = 0; i < synchronizations.size(); i++)
                    outTargetElements.append(
                        CIMObjectPath(ZDA_Common::getStringProperty(synchronizations[i], "SyncedElement")));
            }
            if (outTargetElements.size() > 0)
                paramValues.append(CIMParamValue("TargetElements", CIMValue(outTargetElements), true));
        }
    }
    else if (outstatus == 0 && copy.syncType == SYNC_TYPE_SNAPSHOT)
    {
        if (copy.waitForCopyState != 0 && copy.waitForCopyState != 4)
            refuse(outstatus, errStr, "Only waitForCopyState sync is supported for virtual copy");
        else if (targetElements.size() > 0)
            refuse(outstatus, errStr, "TargetElements is not supported for virtual copy");
        Array<String> parentVolNames;
        Array<String> childVolNames;
        String parentVolRefStr;
        String targetStr;
        for (Uint32 i = 0; i < sourceElements.size() && outstatus == 0; i++)
        {
            parentVolRefStr.append(sourceElements[i].toString() + " ");
            String parentVolName;
            try
            {
                CIMInstance source = _cimom.getInstance(
                    context, NAMESPACE, sourceElements[i], false, false, false, CIMPropertyList());
                parentVolName = ZDA_Common::getStringProperty(source, "ElementName");
            }
            catch (...)
            {
                refuse(outstatus, errStr, "Cannot find the source volume");
                break;
            }
            parentVolNames.append(parentVolName);
            if (i < elementNames.size())
            {
                childVolNames.append(elementNames[i]);
                targetStr.append(elementNames[i] + " ");
            }
            else
            {
                childVolNames.append(_freeCopyName(parentVolName));
            }
        }
        if (outstatus == 0)
        {
            const String op = "snapshot " + parentVolRefStr + " " + targetStr;
            ZDA_Common::setEventOp(apiEventp, op.getCString());
            status = _createGroupVirtualCopy(apiEventp, parentVolNames, childVolNames, copy.goalSettingInst,
                outTargetElements, synchronizations);
            if (outTargetElements.size() > 0)
                paramValues.append(CIMParamValue("TargetElements", CIMValue(outTargetElements), true));
            if (synchronizations.size() > 0)
                paramValues.append(CIMParamValue("Synchronizations", CIMValue(synchronizations), true));
        }
    }
    else if (outstatus == 0)
    {
        refuse(outstatus, errStr, "SyncType/Mode combination not supported");
    }
    if (status.code != 0)
    {
        outstatus = copyFailure(status.code);
        errStr = ZDA_AssociationFrame::statusText(status);
    }
    // A list's caller has been told the request is in hand before any refusal.
    _completeMethod(handler, outstatus, errStr, paramValues, "_createListReplica", PROCESSING_FIRST);
}

api_Status_t ZDA_ReplicationServiceProvider::_createGroupVirtualCopy(api_evtparam_t* apiEventp,
    const OperationContext& context, CIMObjectPath& parentSetRef, String& relationshipName, CIMObjectPath&,
    CIMInstance& goalSettingInst, Array<CIMObjectPath>& targetVolumes, Array<CIMObjectPath>& synchronizations,
    CIMObjectPath& groupReplicaPath)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::_createGroupVirtualCopy(set)\n");
    if (parentSetRef.getClassName().isNull())
    {
        log_message(2, "SourceElement has to be specified\n");
        return groupCopyRefusal("SourceElement has to be specified");
    }
    if (relationshipName.size() > RELATIONSHIP_NAME_MAX)
    {
        char text[API_ERRTEXT_LEN];
        std::snprintf(text, sizeof text, "The size of the RelationshipName must be less than %d\n",
            int(RELATIONSHIP_NAME_MAX + 1));
        log_message(2, "%s", text);
        return groupCopyRefusal(text);
    }
    const String parentSetName = ZDA_Common::extractFromInstanceID(
        ZDA_Common::getStringProperty(parentSetRef, "InstanceID"));
    if (parentSetName.size() == 0)
    {
        log_message(2, "Null InstanceID\n");
        return groupCopyRefusal("Null InstanceID");
    }
    if (relationshipName.size() == 0)
    {
        const String stem = parentSetName.subString(0, GENERATED_STEM_MAX) + ".";
        char tail[GENERATED_NAME_BUFFER];
        ZDA_Common::generate_random_string(tail, GENERATED_NAME_BUFFER - stem.size());
        relationshipName = stem + tail;
    }

    // The copies of a set's members are named after the relationship and
    // numbered from 1.
    auto snapshotMembers = [&](const api_set_t& set) {
        Array<String> parentVolNames;
        Array<String> childVolNames;
        const CString stem = relationshipName.getCString();
        for (int m = 0; m < set.memberCount; m++)
        {
            char child[100];
            std::snprintf(child, sizeof child, "%s_%u", (const char*)stem, unsigned(m + 1));
            parentVolNames.append(String(set.members[m].name));
            childVolNames.append(String(child));
        }
        return _createGroupVirtualCopy(
            apiEventp, parentVolNames, childVolNames, goalSettingInst, targetVolumes, synchronizations);
    };

    api_Status_t status;
    api_initStatus(&status);
    if (parentSetRef.getClassName().equal(RCOPY_GROUP_CLASS))
    {
        const CString groupName = parentSetName.getCString();
        Boolean primary = false;
        Uint32 setID = 0;
        {
            ZDA_AssociationFrame::RCopySnapshot snapshot;
            const api_Status_t read = snapshot.read(API_RCOPY_QUERY_TYPE_GROUPS);
            if (read.code != 0)
            {
                log_message(2, "api_getRCopy error (%d): %s\n", read.code,
                    (const char*)ZDA_AssociationFrame::statusText(read).getCString());
                return read;
            }
            rm_group_wrapper* group = snapshot.rcopy.groups;
            while (group && std::strcmp(group->group.rm_hdr.rm_name, groupName) != 0)
                group = group->next;
            if (!group)
            {
                char text[API_ERRTEXT_LEN];
                std::snprintf(text, sizeof text, "The rcopy group %s is not found\n", (const char*)groupName);
                log_message(2, "%s", text);
                return groupCopyRefusal(text);
            }
            primary = ZDA_RemoteGroupSynchronizedProvider::isPrimary(group, group->gtargets);
            setID = api_external_set_id(group->group.rm_auto_set_id);
        }

        if (primary)
        {
            // The primary side's snapshot is the copy services' work; the
            // goal is deliberately not passed on.
            Array<CIMParamValue> paramValues;
            return ZDA_StorageConfigurationServiceProvider::createVirtualCopy(apiEventp, _cimom, context,
                paramValues, parentSetRef, relationshipName, CIMObjectPath(), CIMInstance(), _systemName,
                _systemAddress);
        }

        // The secondary side: snapshot the members of the set behind the
        // group, and gather the copies in a new set named after the
        // relationship.
        const String childSetName = relationshipName;
        Array<String> keys;
        Array<String> values;
        keys.append("parentRCGroup");
        values.append(parentSetName);
        ZDA_AssociationFrame::VVSetList sets;
        sets.read(nullptr);
        const api_set_t* parentSet = nullptr;
        const api_set_t* childSet = nullptr;
        for (Uint32 i = 0; i < sets.size() && !(parentSet && childSet); i++)
        {
            if (Uint32(sets[i].id) == setID)
                parentSet = &sets[i];
            if (childSetName == String(sets[i].name))
                childSet = &sets[i];
        }
        char text[API_ERRTEXT_LEN];
        if (!parentSet)
        {
            std::snprintf(text, sizeof text, "The vvset associated with rcopy group %s is not found\n",
                (const char*)groupName);
            log_message(2, "%s", text);
            return groupCopyRefusal(text);
        }
        if (childSet)
        {
            std::snprintf(text, sizeof text, "The target vvset %s already exists.\n",
                (const char*)childSetName.getCString());
            log_message(2, "%s", text);
            return groupCopyRefusal(text);
        }
        status = snapshotMembers(*parentSet);
        if (status.code != 0)
            return status;
        String errStr;
        if (_createGroup(apiEventp, childSetName, targetVolumes, keys, values, groupReplicaPath, errStr) != 0)
        {
            // The snapshots stay, without a set.
            std::snprintf(text, sizeof text, "Problem creating vvset %s : %s\n",
                (const char*)childSetName.getCString(), (const char*)errStr.getCString());
            log_message(2, "%s", text);
            return groupCopyRefusal(text);
        }
        // One group-level synchronization stands for the per-volume ones.
        synchronizations.clear();
        synchronizations.append(ZDA_Common::buildAssocPath("ZDA_RemoteGroupSynchronized", "SystemElement",
            "SyncedElement", parentSetRef, groupReplicaPath, _systemAddress, NAMESPACE));
    }
    else if (parentSetRef.getClassName().equal(GROUP_CLASS))
    {
        ZDA_AssociationFrame::VVSetList parentSets;
        status = parentSets.read(parentSetName.getCString());
        if (status.code == 0 && parentSets.size() > 0)
            status = snapshotMembers(parentSets[0]);
    }
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_createGroupVirtualCopy(set)\n");
    return status;
}

api_Status_t ZDA_ReplicationServiceProvider::_createGroupVirtualCopy(api_evtparam_t* apiEventp,
    Array<String>& parentVolNames, Array<String>& childVolNames, CIMInstance& goalSettingInst,
    Array<CIMObjectPath>& targetVolumes, Array<CIMObjectPath>& synchronizations)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::_createGroupVirtualCopy(names)\n");
    if (parentVolNames.size() == 0 || childVolNames.size() == 0)
    {
        log_message(2, "source or target names have to be specified\n");
        return groupCopyRefusal("source or target names have to be specified");
    }
    if (parentVolNames.size() != childVolNames.size())
    {
        log_message(2, "source and target names have to be the same\n");
        return groupCopyRefusal("source and target names must be of same size");
    }

    Uint32 baseID = API_BASEID_ANY;
    Uint32 expirationTime = 0;
    Uint32 retentionTime = 0;
    String comment;
    if (!goalSettingInst.isUninitialized())
    {
        // A goal without BaseID lets the array choose the first id.
        const Uint32 at = goalSettingInst.findProperty("BaseID");
        if (at != PEG_NOT_FOUND && !goalSettingInst.getProperty(at).getValue().isNull())
            goalSettingInst.getProperty(at).getValue().get(baseID);
        // Only points in time count here; an interval reads as none.
        expirationTime = goalTime(goalSettingInst, "ExpirationTime");
        retentionTime = goalTime(goalSettingInst, "RetentionTime");
        try
        {
            comment = ZDA_Common::getStringProperty(goalSettingInst, "Description");
        }
        catch (const Exception& e)
        {
            log_message(2, "property %s value is not valid: %s\n", "Description",
                (const char*)e.getMessage().getCString());
        }

        // 32-bit sums, as the array keeps its times.
        const Uint32 currTime = Uint32(time(nullptr));
        const char* refusal = nullptr;
        if (retentionTime != 0 && currTime + SHORTEST_LIFE > retentionTime)
            refusal = "expiration must be at least 1hr longer";
        else if (retentionTime != 0 && currTime + LONGEST_LIFE < retentionTime)
            refusal = "expiration must be no longer than 5 years";
        else if (expirationTime != 0 && retentionTime > expirationTime)
            refusal = "Retention must be no longer than expiration";
        else if (expirationTime != 0 && currTime + SHORTEST_LIFE > expirationTime)
            refusal = "expiration must be at least 1hr longer";
        else if (expirationTime != 0 && currTime + LONGEST_LIFE < expirationTime)
            refusal = "expiration must be no longer than 5 years";
        if (refusal)
        {
            log_message(2, "%s.\n", refusal);
            return groupCopyRefusal(refusal);
        }
        if (expirationTime != 0)
            expirationTime -= currTime;
        if (retentionTime != 0)
            retentionTime -= currTime;
    }

    std::vector<api_groupsv_entry_t> svs(parentVolNames.size());
    std::memset(svs.data(), 0, svs.size() * sizeof(api_groupsv_entry_t));
    for (Uint32 i = 0; i < parentVolNames.size(); i++)
    {
        const CString child = childVolNames[i].getCString();
        if (std::strlen(child) > TARGET_NAME_MAX)
        {
            char text[API_ERRTEXT_LEN];
            std::snprintf(text, sizeof text,
                "Target volume name %s too long, has to be no more than %u characters\n", (const char*)child,
                unsigned(TARGET_NAME_MAX));
            log_message(2, "%s", text);
            return groupCopyRefusal(text);
        }
        // A longer source name is cut: the array knows no such volume.
        std::strncpy(svs[i].parentVolName, parentVolNames[i].getCString(), API_NAME_LEN - 1);
        std::strncpy(svs[i].childVolName, child, API_NAME_LEN - 1);
        svs[i].readOnly = 0;
    }
    if (ZDA_StorageConfigurationServiceProvider::assignSnapPoolToVolume(apiEventp, parentVolNames) != 0)
    {
        log_message(2, "Problem assigning SNAP space to source volumes.\n");
        return groupCopyRefusal("The was a problem assigning Snap space to source volumes.");
    }

    api_groupsv_t groupsv;
    std::memset(&groupsv, 0, sizeof groupsv);
    groupsv.baseID = baseID;
    groupsv.expirationTime = expirationTime;
    groupsv.retentionTime = retentionTime;
    std::strncpy(groupsv.comment, comment.getCString(), sizeof groupsv.comment - 1);
    groupsv.count = Uint32(svs.size());
    groupsv.svs = svs.data();
    const api_Status_t status = ZDA_CompanionFrame::statusCall(
        [&] { return api_createGroupSV(apiEventp, &groupsv); });
    if (status.code == 0)
    {
        for (const api_groupsv_entry_t& sv : svs)
        {
            if (sv.parentVolWWN[0] == '\0' || sv.childVolWWN[0] == '\0')
                continue;
            const CIMObjectPath parentVolPath = ZDA_StorageVolumeProvider::createObjectPath(
                sv.parentVolWWN, _systemName, _systemAddress);
            const CIMObjectPath childVolPath = ZDA_StorageVolumeProvider::createObjectPath(
                sv.childVolWWN, _systemName, _systemAddress);
            synchronizations.append(ZDA_Common::buildAssocPath(SYNC_CLASS, "SystemElement", "SyncedElement",
                parentVolPath, childVolPath, _systemAddress, NAMESPACE));
            targetVolumes.append(childVolPath);
        }
    }
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_createGroupVirtualCopy(names)\n");
    return status;
}

// ---- changing lists of local replicas -----------------------------------------------------

void ZDA_ReplicationServiceProvider::_modifyListSynchronization(api_evtparam_t* apiEventp,
    const OperationContext& context, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _modifyListSynchronization\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    Uint16 operation = 0;
    Array<CIMObjectPath> syncRefs;
    CIMObjectPath targetGroup;
    Boolean targetGroupSet = false;
    // A caller's list reports one Job; a list taken from a group all Jobs.
    Boolean returnSingleJob = true;
    refuseEmptyParameters(inParameters, outstatus, errStr);
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const String paramName = inParameters[i].getParameterName();
        const CIMValue value = inParameters[i].getValue();
        log_message(4, "Param %s\n", (const char*)paramName.getCString());
        if (value.isNull())
            continue;
        if (String::equalNoCase(paramName, "Operation"))
        {
            value.get(operation);
            if (operation != 2 && operation != 8 && operation != 9 && operation != 14 && operation != 15 &&
                operation != 19)
            {
                log_message(2, "Operation %d not supported\n", int(operation));
                outstatus = 5;
                errStr = "Operation not supported";
            }
        }
        else if (String::equalNoCase(paramName, "Synchronization"))
        {
            value.get(syncRefs);
            Uint16 prevReplicaType = 0xFFFF;
            for (Uint32 e = 0; e < syncRefs.size() && outstatus == 0; e++)
            {
                if (!ZDA_Common::verifyRefMethodParam(
                        syncRefs[e], NAMESPACE, _systemAddress, CIMName(SYNC_CLASS)))
                {
                    outstatus = 5;
                    errStr = "Synchronization parameter contains invalid object path";
                    break;
                }
                const CIMValue replica = _cimom.getProperty(context, NAMESPACE, syncRefs[e], "ReplicaType");
                if (replica.isNull())
                {
                    refuse(outstatus, errStr, "Cannot get at ReplicaType of the StorageSynchronized");
                    break;
                }
                Uint16 replicaType = 0;
                replica.get(replicaType);
                if (prevReplicaType != 0xFFFF && prevReplicaType != replicaType)
                {
                    refuse(outstatus, errStr,
                        "All elements of Synchronization array shall have the same SyncType and Mode");
                    break;
                }
                prevReplicaType = replicaType;
            }
        }
        else if (String::equalNoCase(paramName, "TargetGroup"))
        {
            value.get(targetGroup);
            if (!ZDA_Common::verifyRefMethodParam(
                    targetGroup, NAMESPACE, _systemAddress, CIMName(GROUP_CLASS)))
            {
                outstatus = 5;
                errStr = "TargetGroup parameter contains invalid object path";
            }
            else
            {
                targetGroupSet = true;
            }
        }
    }

    if (outstatus == 0 && syncRefs.size() == 0 && targetGroupSet)
    {
        // The synchronizations whose targets are the group's members.
        const Array<CIMObjectPath> volRefs = _cimom.associatorNames(
            context, NAMESPACE, targetGroup, MEMBER_ASSOC_CLASS, VOLUME_CLASS, "Collection", "Member");
        for (Uint32 v = 0; v < volRefs.size(); v++)
            syncRefs.appendArray(
                _cimom.referenceNames(context, NAMESPACE, volRefs[v], SYNC_CLASS, "SyncedElement"));
        returnSingleJob = false;
    }
    if (outstatus == 0 && syncRefs.size() == 0)
        refuse(outstatus, errStr,
            targetGroupSet ? "TargetGroup does not require synchronization"
                           : "Synchronization or TargetGroup parameter is required");

    Array<String> errStrs;
    if (outstatus == 0 && (operation == 2 || operation == 14))
    {
        // One call for the whole list: it fails or succeeds as one.
        Array<CIMObjectPath> jobs;
        const api_Status_t status = ZDA_StorageConfigurationServiceProvider::modifySynchronization(
            apiEventp, _cimom, context, jobs, _convertToCopySvcsOp(operation), syncRefs, _systemAddress);
        if (jobs.size() > 0)
        {
            outstatus = 4096;
            if (returnSingleJob)
                paramValues.append(CIMParamValue("Job", CIMValue(jobs[0]), true));
            else
                paramValues.append(CIMParamValue("Jobs", CIMValue(jobs), true));
        }
        if (status.code != 0)
        {
            outstatus = copyFailure(status.code, true);
            errStr = ZDA_AssociationFrame::statusText(status);
            log_message(2, "Createvv copy error (%d): %s\n", status.code, (const char*)errStr.getCString());
        }
    }
    else if (outstatus == 0 && operation == 19)
    {
        const api_Status_t status = _returnToResourcePool(
            apiEventp, context, syncRefs, targetGroup, targetGroupSet);
        if (status.code != 0)
        {
            if (status.code == ARRAY_SOME_NOT_DELETED)
            {
                log_message(2, "Some of the volume deletion failed\n");
                outstatus = 0x8000;
            }
            else
            {
                log_message(2, "Volume deletion failed\n");
                outstatus = 4;
            }
            errStr = ZDA_AssociationFrame::statusText(status);
            log_message(2, "Createvv copy error (%d): %s\n", status.code, (const char*)errStr.getCString());
        }
    }
    else if (outstatus == 0)
    {
        // Detach, dissolve and restore go element by element: every element
        // is tried, and each one's outcome is a line of the text.
        Array<CIMObjectPath> jobs;
        for (Uint32 i = 0; i < syncRefs.size(); i++)
        {
            Uint32 tmpstatus = 0;
            Array<CIMObjectPath> outjobs;
            const api_Status_t status = ZDA_StorageConfigurationServiceProvider::modifySynchronization(
                apiEventp, _cimom, context, outjobs, _convertToCopySvcsOp(operation), syncRefs[i],
                _systemAddress);
            if (status.code != 0)
            {
                tmpstatus = copyFailure(status.code, true);
                const String text = ZDA_AssociationFrame::statusText(status);
                log_message(2, "Createvv copy error (%d): %s\n", status.code, (const char*)text.getCString());
                errStrs.append(syncRefs[i].toString() + ": " + text);
            }
            else
            {
                errStrs.append(syncRefs[i].toString() + ": Operation succeeded");
            }
            // Deliberately uneven: the first element's outcome always counts,
            // of the later ones only a plain failure.
            if (tmpstatus == 4 || i == 0)
                outstatus = tmpstatus;
            if (i == 0 && returnSingleJob && outjobs.size() > 0)
            {
                paramValues.append(CIMParamValue("Job", CIMValue(outjobs[0]), true));
                outstatus = 4096;
            }
            if (outjobs.size() > 0 && !returnSingleJob)
                jobs.appendArray(outjobs);
        }
        if (jobs.size() > 0 && !returnSingleJob)
        {
            paramValues.append(CIMParamValue("Jobs", CIMValue(jobs), true));
            outstatus = 4096;
        }
    }

    log_message(4, "Overall status of the operation = %d\n", int(outstatus));
    if (errStr.size() > 0)
    {
        errStrs.append(errStr);
        errStr.clear();
    }
    if (outstatus != 0 && errStrs.size() > 0)
    {
        for (Uint32 i = 0; i < errStrs.size(); i++)
            errStr.append(i == 0 ? errStrs[i] : "; " + errStrs[i]);
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_modifyListSynchronization");
}

// ---- relationships -------------------------------------------------------------------------

void ZDA_ReplicationServiceProvider::_getReplicationRelationships(const OperationContext& context,
    const CIMName& methodName, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _getReplicationRelationships\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;
    const bool isInstancesMethod = methodName.equal(CIMName("GetReplicationRelationshipInstances"));

    Filter type{"Type"}, syncType{"SyncType"}, mode{"Mode"}, locality{"Locality"}, copyState{"CopyState"};
    Filter* filters[] = {&type, &syncType, &mode, &locality, &copyState};
    for (Uint32 i = 0; i < inParameters.size(); i++)
    {
        const CIMValue value = inParameters[i].getValue();
        if (value.isNull())
            continue;
        for (Filter* filter : filters)
        {
            if (String::equalNoCase(inParameters[i].getParameterName(), filter->name))
            {
                value.get(filter->value);
                filter->set = true;
            }
        }
    }

    // A Type or Locality no relationship has finds nothing; that is no error.
    bool findsNothing = (type.set && type.value != RELATIONSHIP_OTHER && type.value != RELATIONSHIP_GROUP) ||
        (locality.set && locality.value != LOCALITY_LOCAL && locality.value != LOCALITY_REMOTE);
    if (!findsNothing && copyState.set &&
        (copyState.value < FIRST_COPY_STATE || copyState.value > LAST_COPY_STATE))
    {
        log_message(2, "Invalid copyState %d\n", int(copyState.value));
        outstatus = 5;
        errStr = "Invalid copyState";
    }

    Array<CIMObjectPath> synchronizations;
    Array<CIMObject> syncObjs;
    if (outstatus == 0 && !findsNothing)
    {
        // Local and remote relationships of every provider, through the server.
        Array<CIMInstance> syncInsts = _cimom.enumerateInstances(
            context, NAMESPACE, CIMName("CIM_Synchronized"), false, false, false, false, CIMPropertyList());
        for (Uint32 i = 0; i < syncInsts.size(); i++)
        {
            CIMInstance& instance = syncInsts[i];
            const CIMName className = instance.getClassName();
            const bool isGroup = className.equal(REMOTE_GROUP_SYNC);
            if (type.set && (type.value == RELATIONSHIP_GROUP) != isGroup)
                continue;
            if (locality.set &&
                !(locality.value == LOCALITY_REMOTE ? isGroup || className.equal(REMOTE_VOLUME_SYNC)
                                                    : className.equal(LOCAL_VOLUME_SYNC)))
                continue;
            if (!passes(instance, syncType) || !passes(instance, mode) || !passes(instance, copyState))
                continue;
            if (isInstancesMethod)
                syncObjs.append(CIMObject(instance));
            else
                synchronizations.append(instance.getPath());
        }
    }
    if (outstatus == 0)
    {
        if (isInstancesMethod)
            paramValues.append(CIMParamValue("Synchronizations", CIMValue(syncObjs), true));
        else
            paramValues.append(CIMParamValue("Synchronizations", CIMValue(synchronizations), true));
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_getReplicationRelationships");
}

// ---- peer systems and their access points --------------------------------------------

namespace
{

// GetPeerSystems' Options: every target, or only the ready, usable ones.
const Uint16 PEERS_ALL = 0;
const Uint16 PEERS_READY = 2;

bool readyAndUsable(const rm_target& target)
{
    return !(target.rm_options & RM_TARGET_OPT_UNUSABLE) && target.rm_status == RM_TARGET_READY;
}

}  // namespace

void ZDA_ReplicationServiceProvider::_getPeerSystems(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _getPeerSystems\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    Uint16 options = PEERS_ALL;
    refuseEmptyParameters(inParameters, outstatus, errStr);
    for (Uint32 i = 0; i < inParameters.size(); i++)
    {
        const CIMValue value = inParameters[i].getValue();
        if (!value.isNull() && String::equalNoCase(inParameters[i].getParameterName(), "Options"))
            value.get(options);
    }

    if (outstatus == 0)
    {
        Array<CIMObjectPath> systems;
        Array<String> remoteWWNStrings;
        ZDA_AssociationFrame::RCopySnapshot snapshot;
        if (snapshot.read(API_RCOPY_QUERY_TYPE_TARGETS).code != 0)
            log_message(2, "api_getRCopy error\n");
        for (int i = 0; i < snapshot.rcopy.target_count; i++)
        {
            const rm_target& target = snapshot.rcopy.targets[i];
            if (options != PEERS_ALL && (options != PEERS_READY || !readyAndUsable(target)))
                continue;
            // Only a system whose node WWN the array knows can be named.
            const String wwn = target.rm_node_wwn;
            if (wwn.size() == 0 || ZDA_Common::isPartOfArray(wwn, remoteWWNStrings))
                continue;
            remoteWWNStrings.append(wwn);
            systems.append(ZDA_StorageSystemProvider::createObjectPath(
                String(target.rm_remote_sysname), wwn, NAMESPACE));
        }
        paramValues.append(CIMParamValue("Systems", CIMValue(systems), true));
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_getPeerSystems");
}

void ZDA_ReplicationServiceProvider::_getServiceAccessPoints(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _getServiceAccessPoints\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    CIMObjectPath systemRef;
    Boolean systemGiven = false;
    refuseEmptyParameters(inParameters, outstatus, errStr);
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const CIMValue value = inParameters[i].getValue();
        if (value.isNull() || !String::equalNoCase(inParameters[i].getParameterName(), "System"))
            continue;
        value.get(systemRef);
        // A peer system lives on another host: the reference is checked
        // against its own host, for namespace and class.
        String peerHost = systemRef.getHost();
        systemGiven = ZDA_Common::verifyRefMethodParam(systemRef, NAMESPACE, peerHost, CIMName(SYSTEM_CLASS));
        if (!systemGiven)
            break;
    }
    if (outstatus == 0 && !systemGiven)
    {
        outstatus = 5;
        errStr = "System parameter contains invalid object path";
    }

    ZDA_AssociationFrame::RCopySnapshot snapshot;
    if (outstatus == 0 && snapshot.read(API_RCOPY_QUERY_TYPE_TARGETS).code != 0)
    {
        log_message(2, "api_getRCopy error\n");
        outstatus = 4;
        errStr = "Problem getting rcopy information";
    }
    if (outstatus == 0)
    {
        Array<CIMObjectPath> accessPoints;
        for (int i = 0; i < snapshot.rcopy.target_count; i++)
        {
            const rm_target& target = snapshot.rcopy.targets[i];
            if (!readyAndUsable(target))
                continue;
            // A target the array knows only by its computed WWN still
            // leads to its system.
            String wwn = target.rm_node_wwn;
            if (wwn.size() == 0)
                wwn = target.rm_computed_remote_node_wwn;
            const CIMObjectPath peer = ZDA_StorageSystemProvider::createObjectPath(
                String(target.rm_remote_sysname), wwn, NAMESPACE);
            if (!ZDA_Common::matchObjectPath(peer, systemRef))
                continue;
            accessPoints.append(ZDA_RemoteServiceAccessPointProvider::buildObjectPath(
                _systemAddress, String(target.rm_hdr.rm_name)));
        }
        paramValues.append(CIMParamValue("ServiceAccessPoints", CIMValue(accessPoints), true));
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_getServiceAccessPoints");
}

// ---- group replicas and remote mirrors -------------------------------------------------

namespace
{

const Uint16 SYNC_TYPE_MIRROR = 6;
const Uint16 MODE_SYNCHRONOUS = 2;
const Uint16 MODE_ASYNCHRONOUS = 3;
const Uint16 WAIT_UNSYNCHRONIZED = 3;
const Uint16 WAIT_SYNCHRONIZED = 4;
const Uint16 WAIT_INACTIVE = 8;
const Uint16 CONSISTENCY_SEQUENTIAL = 3;
const Uint16 SUPPLIER_CREATE_NEW = 2;
const char SAP_CLASS[] = "ZDA_RemoteServiceAccessPoint";
const char POOL_CLASS[] = "ZDA_DynamicStoragePool";
const char GENERATED_STEM[] = "smisCreated";
const char COPY_STEM[] = "copyOf";

// A mirror's relationship name leaves room for "_<n>" in a remote volume
// name; an unnamed mirror group gets "smisCreated." and 10 random characters.
const Uint32 MIRROR_RELATIONSHIP_NAME_MAX = 27;
const unsigned int MIRROR_NAME_BUFFER = 23;
const char REMOTE_SUFFIX[] = "_remote";
// Group target modes, the period an asynchronous group syncs at, and the
// request values the array takes for a new mirror.
const uint32_t RCOPY_MODE_SYNC = 1;
const uint32_t RCOPY_MODE_PERIODIC = 8;
const int PERIODIC_SYNC_SECONDS = 300;
const uint32_t REMOTE_VID_ANY = 0xFFFFFFFE;
const uint32_t ADMIT_FLAGS = 0x4;
const uint8_t START_FLAGS = 2;
const uint8_t START_WAIT_FLAG = 0x2;

// "<stem>.<random>": the stem cut to 20 characters, 25 characters in all.
String generatedSetName(const String& stem)
{
    const String head = stem.subString(0, GENERATED_STEM_MAX) + ".";
    char tail[GENERATED_NAME_BUFFER];
    ZDA_Common::generate_random_string(tail, GENERATED_NAME_BUFFER - head.size());
    return head + tail;
}

// A name into an array record's field, cut to the 31 characters it holds.
void copyField(char (&field)[API_NAME_LEN], const char* value)
{
    const size_t length = strnlen(value, API_NAME_LEN - 1);
    std::memcpy(field, value, length);
    field[length] = '\0';
}

void copyField(char (&field)[API_NAME_LEN], const String& value)
{
    copyField(field, (const char*)value.getCString());
}

String arrayText(const api_Status_t& status)
{
    return ZDA_AssociationFrame::statusText(status);
}

// The instance a reference parameter names, fetched through the server;
// false when the server cannot give it, whatever the reason.
bool fetch(
    CIMOMHandle& cimom, const OperationContext& context, const CIMObjectPath& path, CIMInstance& instance)
{
    try
    {
        instance = cimom.getInstance(context, NAMESPACE, path, false, false, false, CIMPropertyList());
        return true;
    }
    catch (...)
    {
        return false;
    }
}

}  // namespace

void ZDA_ReplicationServiceProvider::_createGroupReplica(api_evtparam_t* apiEventp,
    const OperationContext& context, const CIMName& methodName, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _createGroupReplica\n");
    GroupReplicaRequest request;
    request.isZDAMethod = methodName.equal("ZDA_CreateGroupReplica");
    request.isCreateGroupReplica = methodName.equal("CreateGroupReplica");
    request.isCreateGroupReplicaFromElements = methodName.equal("CreateGroupReplicaFromElements");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    refuseEmptyParameters(inParameters, outstatus, errStr);
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const String paramName = inParameters[i].getParameterName();
        const CIMValue value = inParameters[i].getValue();
        log_message(4, "Param %s\n", (const char*)paramName.getCString());
        if (value.isNull())
            continue;
        const char* refusal = _readGroupReplicaParameter(context, paramName, value, request);
        if (refusal)
            refuse(outstatus, errStr, refusal);
    }

    if (outstatus == 0)
    {
        const Uint16 syncType = request.syncType;
        if (syncType == SYNC_TYPE_MIRROR && request.isCreateGroupReplicaFromElements)
            _createMirrorGroup(apiEventp, request, paramValues, outstatus, errStr);
        else if (syncType == SYNC_TYPE_CLONE || syncType == SYNC_TYPE_SNAPSHOT)
            _createLocalGroupReplica(apiEventp, context, request, paramValues, outstatus, errStr);
        else
            refuse(outstatus, errStr, "SyncType/Mode combination not supported");
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_createGroupReplica", PROCESSING_FIRST);
}

const char* ZDA_ReplicationServiceProvider::_readGroupReplicaParameter(
    const OperationContext& context, const String& name, const CIMValue& value, GroupReplicaRequest& request)
{
    auto is = [&](const char* parameter) { return String::equalNoCase(name, parameter); };
    auto verified = [&](CIMObjectPath& ref, const char* className) {
        value.get(ref);
        return ZDA_Common::verifyRefMethodParam(ref, NAMESPACE, _systemAddress, CIMName(className));
    };
    if (is("RelationshipName"))
    {
        value.get(request.relationshipName);
    }
    else if (is("SourceGroupName"))
    {
        value.get(request.sourceGroupNameIn);
    }
    else if (is("SourceGroup"))
    {
        value.get(request.sourceGroupRef);
        Array<CIMName> groupClasses;
        groupClasses.append(CIMName(GROUP_CLASS));
        groupClasses.append(CIMName(RCOPY_GROUP_CLASS));
        if (!ZDA_Common::verifyRefMethodParam(
                request.sourceGroupRef, NAMESPACE, _systemAddress, groupClasses))
            return "SourceGroup contains invalid object path";
        try
        {
            const CIMInstance group = _cimom.getInstance(
                context, NAMESPACE, request.sourceGroupRef, false, false, false, CIMPropertyList());
            const Uint32 pos = group.findProperty("ElementName");
            if (pos != PEG_NOT_FOUND && !group.getProperty(pos).getValue().isNull())
                group.getProperty(pos).getValue().get(request.sourceGroupName);
        }
        catch (...)
        {
            return "Cannot find the SourceGroup replication group";
        }
    }
    else if (is("SourceElements"))
    {
        value.get(request.sourceElements);
        for (Uint32 e = 0; e < request.sourceElements.size(); e++)
        {
            if (!ZDA_Common::verifyRefMethodParam(
                    request.sourceElements[e], NAMESPACE, _systemAddress, CIMName(VOLUME_CLASS)))
                return "SourceElements parameter contains invalid object path";
        }
    }
    else if (is("TargetGroup"))
    {
        if (!verified(request.targetGroupRef, GROUP_CLASS))
            return "TargetGroup contains invalid object path";
        CIMInstance group;
        if (!fetch(_cimom, context, request.targetGroupRef, group))
            return "Cannot find the TargetGroup replication group";
    }
    else if (is("SyncType"))
    {
        value.get(request.syncType);
        if (request.syncType != SYNC_TYPE_MIRROR && request.syncType != SYNC_TYPE_SNAPSHOT &&
            request.syncType != SYNC_TYPE_CLONE)
            return "Only SyncTypes Snapshot, Clone, and Mirror are supported";
    }
    else if (is("Mode"))
    {
        value.get(request.mode);
        if (request.mode != MODE_SYNCHRONOUS && request.mode != MODE_ASYNCHRONOUS)
        {
            log_message(2, "Only Modes Sync or Async  are supported\n");
            return "Only Modes Sync or Async are supported";
        }
    }
    else if (is("Consistency"))
    {
        Uint16 consistency = 0;
        value.get(consistency);
        if (consistency != CONSISTENCY_SEQUENTIAL)
            return "Only sequential consistency is supported";
    }
    else if (is("TargetPool"))
    {
        value.get(request.targetPoolRef);
    }
    else if (is("ReplicationSettingData"))
    {
        // Only an instance carries the supplier; any other value is as if
        // it were not given.
        if (value.getType() == CIMTYPE_INSTANCE && !value.isArray())
        {
            value.get(request.dataInst);
            ZDA_Common::getProperty(request.dataInst, "TargetElementSupplier", request.targetElementSupplier);
        }
    }
    else if (is("TargetSettingGoal"))
    {
        if (!verified(request.tgtSettingGoalRef, SETTING_CLASS))
            return "TargetSettingGoal parameter contains invalid object path";
        if (!fetch(_cimom, context, request.tgtSettingGoalRef, request.goalSettingInst))
        {
            log_message(2, "Goal Storage Setting is not found\n");
            return "TargetSettingGoal not found";
        }
    }
    else if (is("TargetAccessPoint"))
    {
        if (!verified(request.targetSAPRef, SAP_CLASS))
            return "TargetAccessPoint contains invalid object path";
    }
    else if (is("WaitForCopyState"))
    {
        value.get(request.waitForCopyState);
        const Uint16 state = request.waitForCopyState;
        if (state != WAIT_UNSYNCHRONIZED && state != WAIT_SYNCHRONIZED && state != WAIT_INACTIVE)
            return "Only waitForCopyStates Sync, Unsync, and Inactive are  supported";
    }
    return nullptr;
}

const char* ZDA_ReplicationServiceProvider::_resolveLocalGroupSource(
    const OperationContext& context, GroupReplicaRequest& request)
{
    if (!request.targetPoolRef.getClassName().isNull() &&
        !ZDA_Common::verifyRefMethodParam(request.targetPoolRef, NAMESPACE, _systemAddress))
        return "TargetPool contains invalid object path";
    if (request.sourceGroupNameIn.size() > 0)
    {
        if (request.sourceGroupName.size() > 0)
        {
            if (request.sourceGroupName != request.sourceGroupNameIn)
                return "SourceGroup and SourceGroupName must not be specified together unless "
                       "they refer to the same group.";
            request.sourceGroupNameIn.clear();
        }
        else
        {
            // A name the server does not know stands for a set yet to be made.
            request.sourceGroupName = request.sourceGroupNameIn;
            request.sourceGroupRef = ZDA_ReplicationGroupProvider::buildObjectPath(
                _systemAddress, request.sourceGroupName);
            CIMInstance group;
            if (!fetch(_cimom, context, request.sourceGroupRef, group))
                request.sourceGroupRef = CIMObjectPath();
        }
    }
    const bool sourceGroupGiven = !request.sourceGroupRef.getClassName().isNull();
    const bool sourceElementsGiven = request.sourceElements.size() > 0;
    if (!sourceGroupGiven && !sourceElementsGiven)
        return request.isZDAMethod || request.isCreateGroupReplica
            ? "SourceGroup parameter must be specified."
            : "The SourceGroup or SourceElements parameters must be specified.";
    if (sourceGroupGiven && sourceElementsGiven)
        return request.sourceGroupNameIn.size() > 0
            ? "SourceGroupName for an existing vvset and SourceElements must not be specified "
              "together"
            : "SourceGroup and SourceElements must not be specified together";
    if (sourceElementsGiven && request.sourceGroupName.size() == 0)
        request.sourceGroupName = generatedSetName(GENERATED_STEM);
    if (!request.targetSAPRef.getClassName().isNull())
        return "The TargetAccessPoint reference is not used with this SyncType";
    return nullptr;
}

void ZDA_ReplicationServiceProvider::_removeSourceSet(
    api_evtparam_t* apiEventp, const GroupReplicaRequest& request)
{
    if (request.sourceElements.size() == 0)
        return;
    const api_Status_t status = ZDA_CompanionFrame::statusCall(
        [&] { return api_removeVVSet(apiEventp, request.sourceGroupName.getCString()); });
    if (status.code != 0)
        log_message(
            2, "Delete vvset error (%d): %s\n", status.code, (const char*)arrayText(status).getCString());
}

void ZDA_ReplicationServiceProvider::_createLocalGroupReplica(api_evtparam_t* apiEventp,
    const OperationContext& context, GroupReplicaRequest& request, Array<CIMParamValue>& paramValues,
    Uint32& outstatus, String& errStr)
{
    if (const char* refusal = _resolveLocalGroupSource(context, request))
    {
        refuse(outstatus, errStr, refusal);
        return;
    }
    const bool clone = request.syncType == SYNC_TYPE_CLONE;
    if (clone)
    {
        if (request.mode == 0)
            request.mode = request.waitForCopyState == WAIT_INACTIVE ? MODE_ASYNCHRONOUS : MODE_SYNCHRONOUS;
        if (request.waitForCopyState == 0)
            request.waitForCopyState = request.mode == MODE_ASYNCHRONOUS ? WAIT_INACTIVE : WAIT_SYNCHRONIZED;
        if (request.waitForCopyState != WAIT_SYNCHRONIZED && request.waitForCopyState != WAIT_INACTIVE)
        {
            refuse(outstatus, errStr,
                "Only waitForCopyState Sync and Inactive are are supported for physical copy");
            return;
        }
    }
    else if (request.waitForCopyState != 0 && request.waitForCopyState != WAIT_SYNCHRONIZED)
    {
        refuse(outstatus, errStr, "Only waitForCopyState sync is supported for virtual copy");
        return;
    }

    // A source given as volumes becomes a set first.
    if (request.sourceElements.size() > 0)
    {
        outstatus = _createGroup(apiEventp, request.sourceGroupName, request.sourceElements, Array<String>(),
            Array<String>(), request.sourceGroupRef, errStr);
        if (outstatus != 0)
            return;
        paramValues.append(CIMParamValue("SourceGroupName", CIMValue(request.sourceGroupName), true));
        paramValues.append(CIMParamValue("SourceGroup", CIMValue(request.sourceGroupRef), true));
    }
    if (clone)
        _cloneGroup(apiEventp, context, request, paramValues, outstatus, errStr);
    else
        _snapshotGroup(apiEventp, context, request, paramValues, outstatus, errStr);
}

void ZDA_ReplicationServiceProvider::_cloneGroup(api_evtparam_t* apiEventp, const OperationContext& context,
    GroupReplicaRequest& request, Array<CIMParamValue>& paramValues, Uint32& outstatus, String& errStr)
{
    String targetGroupName;
    if (request.targetGroupRef.getClassName().isNull())
    {
        targetGroupName = generatedSetName(request.sourceGroupName.size() > 0
                ? COPY_STEM + request.sourceGroupName
                : String(GENERATED_STEM));
        Array<CIMObjectPath> noMembers;
        outstatus = _createGroup(apiEventp, targetGroupName, noMembers, Array<String>(), Array<String>(),
            request.targetGroupRef, errStr);
        if (outstatus != 0)
            return;
        paramValues.append(CIMParamValue("TargetGroup", CIMValue(request.targetGroupRef), true));
    }
    const String op = "clone " + request.sourceGroupRef.toString() + " " + request.targetGroupRef.toString();
    ZDA_Common::setEventOp(apiEventp, op.getCString());

    Array<CIMObjectPath> jobs;
    Array<CIMObjectPath> synchronizations;
    const api_Status_t status = ZDA_StorageConfigurationServiceProvider::createPhysicalCopy(apiEventp, _cimom,
        context, cloneCopyType(request.waitForCopyState), request.sourceGroupRef, request.targetGroupRef,
        request.targetPoolRef, request.goalSettingInst, jobs, synchronizations, _systemName, _systemAddress,
        request.relationshipName);
    if (status.code == 0)
    {
        paramValues.append(CIMParamValue("TargetGroup", CIMValue(request.targetGroupRef), true));
    }
    else
    {
        // Sets this call made are taken away again; only the copy's failure
        // is reported.
        outstatus = copyFailure(status.code);
        errStr = arrayText(status);
        if (targetGroupName.size() > 0)
        {
            String delErrStr;
            if (_deleteGroupAndMembers(apiEventp, targetGroupName, delErrStr) != 0)
                log_message(2, "Problem removing TargetGroup vvset %s: %s\n",
                    (const char*)targetGroupName.getCString(), (const char*)delErrStr.getCString());
        }
        _removeSourceSet(apiEventp, request);
    }
    if (jobs.size() > 0)
    {
        paramValues.append(CIMParamValue("Jobs", CIMValue(jobs), true));
        outstatus = 4096;
    }
    if (synchronizations.size() > 0)
        paramValues.append(CIMParamValue("Synchronizations", CIMValue(synchronizations), true));
    if (!request.isZDAMethod)
    {
        if (jobs.size() > 0)
        {
            paramValues.append(CIMParamValue("Job", CIMValue(jobs[0]), true));
            outstatus = 4096;
        }
        if (synchronizations.size() > 0)
            paramValues.append(CIMParamValue("Synchronization", CIMValue(synchronizations[0]), true));
    }
}

void ZDA_ReplicationServiceProvider::_snapshotGroup(api_evtparam_t* apiEventp,
    const OperationContext& context, GroupReplicaRequest& request, Array<CIMParamValue>& paramValues,
    Uint32& outstatus, String& errStr)
{
    const String op = "copy " + request.sourceGroupRef.toString();
    ZDA_Common::setEventOp(apiEventp, op.getCString());
    Array<CIMObjectPath> targetElements;
    Array<CIMObjectPath> synchronizations;
    const api_Status_t status = _createGroupVirtualCopy(apiEventp, context, request.sourceGroupRef,
        request.relationshipName, request.tgtSettingGoalRef, request.goalSettingInst, targetElements,
        synchronizations, request.targetGroupRef);
    if (request.isZDAMethod)
    {
        if (synchronizations.size() > 0)
            paramValues.append(CIMParamValue("Synchronizations", CIMValue(synchronizations), true));
        if (targetElements.size() > 0)
            paramValues.append(CIMParamValue("TargetElements", CIMValue(targetElements), true));
    }
    else if (synchronizations.size() > 0)
    {
        paramValues.append(CIMParamValue("Synchronization", CIMValue(synchronizations[0]), true));
    }
    if (status.code == 0)
    {
        paramValues.append(CIMParamValue("TargetGroup", CIMValue(request.targetGroupRef), true));
    }
    else
    {
        outstatus = copyFailure(status.code);
        errStr = arrayText(status);
        _removeSourceSet(apiEventp, request);
    }
}

String ZDA_ReplicationServiceProvider::_checkMirrorRequest(
    GroupReplicaRequest& request, Array<String>& vvNames, api_evtparam_t* apiEventp)
{
    request.sourceGroupName = request.sourceGroupNameIn;
    if (request.targetPoolRef.getClassName().isNull())
        return "The TargetPool reference must be specified for SyncType mirror.";
    // The pool may lie on the far system: it is checked against its own host.
    String targetSystemAddress = request.targetPoolRef.getHost();
    if (!ZDA_Common::verifyRefMethodParam(
            request.targetPoolRef, NAMESPACE, targetSystemAddress, CIMName(POOL_CLASS)))
        return "TargetPool contains invalid object path";
    const Uint16 wait = request.waitForCopyState;
    if (wait != 0 && wait != WAIT_UNSYNCHRONIZED && wait != WAIT_SYNCHRONIZED)
    {
        log_message(2, "Only waitForCopyState UnSysnc is supported for SyncType mirror\n");
        return "Only waitForCopyState Unsync is supported for SyncType mirror";
    }
    if (!request.sourceGroupRef.getClassName().isNull() || !request.targetGroupRef.getClassName().isNull())
    {
        log_message(2, "The SourceGroup reference must not be specified for SyncType mirror\n");
        return "The SourceGroup reference parameters must not be specified for SyncType mirror.";
    }
    if (request.targetSAPRef.getClassName().isNull())
        return "The TargetAccessPoint reference must be specified for SyncType mirror.";
    if (request.relationshipName.size() > MIRROR_RELATIONSHIP_NAME_MAX)
    {
        log_message(2, "The RelationshipName specified is too big.\n");
        return "The size of the RelationshipName must be less than " +
            String(std::to_string(MIRROR_RELATIONSHIP_NAME_MAX + 1).c_str());
    }
    if (request.targetElementSupplier != 0 && request.targetElementSupplier != SUPPLIER_CREATE_NEW)
        return "ReplicationSettingData.TargetElementSupplier must be \"Create New (2)\"must be "
               "specified for SyncType mirror.";
    if (request.sourceElements.size() > 0)
    {
        if (ZDA_Common::fillInVVNames(request.sourceElements, vvNames) != 0 ||
            vvNames.size() != request.sourceElements.size())
            return "Cannot find one or more of the volumes in SourceElements";
        if (ZDA_StorageConfigurationServiceProvider::assignSnapPoolToVolume(apiEventp, vvNames) != 0)
            return "Problem assigning snap space to SourceElements";
    }
    // A mirror group is always started unsynchronized; without a mode it
    // syncs periodically.
    request.waitForCopyState = WAIT_UNSYNCHRONIZED;
    if (request.mode == 0)
        request.mode = MODE_ASYNCHRONOUS;
    if (request.sourceGroupName.size() == 0)
    {
        if (request.relationshipName.size() > 0)
        {
            request.sourceGroupName = request.relationshipName;
        }
        else
        {
            const String head = String(GENERATED_STEM) + ".";
            char tail[MIRROR_NAME_BUFFER];
            ZDA_Common::generate_random_string(tail, MIRROR_NAME_BUFFER - head.size());
            request.sourceGroupName = head + tail;
        }
    }
    if (request.targetPoolRef != CIMObjectPath())
    {
        // A pool's InstanceID names a CPG, with or without its kind in front.
        String pool = ZDA_Common::extractFromInstanceID(
            ZDA_Common::getStringProperty(request.targetPoolRef, "InstanceID"));
        for (const char* kind : {"CPG:", "SNAP:"})
        {
            const String prefix(kind);
            if (pool.size() >= prefix.size() && pool.subString(0, prefix.size()) == prefix)
                pool = pool.subString(prefix.size());
        }
        request.targetUserDSPName = pool;
        request.targetSnapDSPName = pool;
    }
    if (!request.goalSettingInst.isUninitialized())
    {
        request.targetUserDSPName.clear();
        request.targetSnapDSPName.clear();
        for (const char* name : {"UserDSPName", "SnapDSPName"})
        {
            const Uint32 pos = request.goalSettingInst.findProperty(name);
            if (pos == PEG_NOT_FOUND)
                continue;
            const CIMValue value = request.goalSettingInst.getProperty(pos).getValue();
            if (value.isNull() || value.getType() != CIMTYPE_STRING || value.isArray())
                continue;
            value.get(
                String::equal(name, "UserDSPName") ? request.targetUserDSPName : request.targetSnapDSPName);
        }
    }
    if (request.targetUserDSPName.size() == 0 || request.targetSnapDSPName.size() == 0)
        return "Unable to determine Target User and SNAP CPG from TargetPool or TargetSettingGoal";
    if (request.sourceElements.size() == 0)
        return "SourceElements must be specified.";
    if (ZDA_Common::getStringProperty(request.sourceElements[0], "DeviceID").size() == 0)
        return "SourceElement[0] does not contain a valid DeviceID";
    return String();
}

void ZDA_ReplicationServiceProvider::_createMirrorGroup(api_evtparam_t* apiEventp,
    GroupReplicaRequest& request, Array<CIMParamValue>& paramValues, Uint32& outstatus, String& errStr)
{
    Array<String> vvNames;
    const String refusal = _checkMirrorRequest(request, vvNames, apiEventp);
    if (refusal.size() > 0)
    {
        refuse(outstatus, errStr, refusal.getCString());
        return;
    }

    // The first volume decides the group's domain and local CPGs.
    const CIMObjectPath& first = request.sourceElements[0];
    const String wwn = ZDA_Common::getStringProperty(first, "DeviceID");
    String sourceUserDSPName;
    String sourceSnapDSPName;
    String domain;
    {
        ZDA_CompanionFrame::ArrayList<api_VVObj_t> found;
        const int rc = ZDA_CompanionFrame::callUnderSemaphore(
            [&] { return api_getVVs(nullptr, wwn.getCString(), found.count(), found.out(), 1); });
        if (rc != 0 || found.size() == 0)
        {
            const String text = "Cannot find source volume " + first.toString();
            log_message(2, "%s\n", (const char*)text.getCString());
            outstatus = 5;
            errStr = text;
            return;
        }
        sourceUserDSPName = found[0].usrCpgName;
        sourceSnapDSPName = found[0].cpgName;
        domain = found[0].domain;
    }

    String targetName;
    String sapErrStr;
    if (!ZDA_RemoteServiceAccessPointProvider::getRcopyTargetFromSAP(
            targetName, request.targetSAPRef, request.mode, sapErrStr))
    {
        const String text = "Cannot determine rcopy target from TargetAccessPoint :" + sapErrStr;
        log_message(2, "%s\n", (const char*)text.getCString());
        outstatus = 5;
        errStr = text;
        return;
    }
    const String op = "create_rcopy_group " + request.sourceGroupName;
    ZDA_Common::setEventOp(apiEventp, op.getCString());

    api_rcopy_group_t group;
    memset(&group, 0, sizeof group);
    copyField(group.name, request.sourceGroupName);
    copyField(group.domain, domain);
    group.numtargets = 1;
    copyField(group.targets[0].rm_target, targetName);
    group.targets[0].rm_mode = request.mode == MODE_SYNCHRONOUS ? RCOPY_MODE_SYNC : RCOPY_MODE_PERIODIC;
    copyField(group.targets[0].usercpg, request.targetUserDSPName);
    copyField(group.targets[0].snapcpg, request.targetSnapDSPName);
    copyField(group.usercpg, sourceUserDSPName);
    copyField(group.snapcpg, sourceSnapDSPName);
    api_Status_t status = ZDA_CompanionFrame::statusCall(
        [&] { return api_createRCopyGroup(apiEventp, &group); });
    if (status.code != 0)
    {
        errStr = arrayText(status);
        log_message(2, "Create RCopy Group (%d): %s\n", status.code, (const char*)errStr.getCString());
        outstatus = 4;
        return;
    }

    // From here on a failure leaves the group as far as it got.
    if (request.mode == MODE_ASYNCHRONOUS)
    {
        api_rcopy_groupop_t rcopygroup;
        memset(&rcopygroup, 0, sizeof rcopygroup);
        copyField(rcopygroup.name, request.sourceGroupName);
        copyField(rcopygroup.target, targetName);
        status = ZDA_CompanionFrame::statusCall([&] {
            return api_setRCopyGroup(apiEventp, &rcopygroup, API_RCOPY_SET_PERIOD, PERIODIC_SYNC_SECONDS);
        });
        if (status.code != 0)
        {
            outstatus = 4;
            errStr = arrayText(status);
            log_message(2, "Set RCopy Group (%d): %s\n", status.code, (const char*)errStr.getCString());
            api_freeRCopyGroup(&rcopygroup);
            return;
        }
        api_freeRCopyGroup(&rcopygroup);
    }
    outstatus = _admitRCopyVVs(apiEventp, group, vvNames, request.relationshipName, errStr);
    if (outstatus != 0)
        return;

    api_rcopy_start_group startGroup;
    memset(&startGroup, 0, sizeof startGroup);
    copyField(startGroup.name, request.sourceGroupName);
    startGroup.flags = START_FLAGS;
    if (request.waitForCopyState == WAIT_SYNCHRONIZED)
        startGroup.flags &= uint8_t(~START_WAIT_FLAG);
    status = ZDA_CompanionFrame::statusCall([&] { return api_startRCopyGroup(apiEventp, &startGroup); });
    if (status.code != 0)
    {
        errStr = arrayText(status);
        log_message(2, "Start RCopy Group (%d): %s\n", status.code, (const char*)errStr.getCString());
        outstatus = 4;
        api_freeRCopyGroup(&startGroup);
        return;
    }

    paramValues.append(CIMParamValue("SourceGroupName", CIMValue(request.sourceGroupName), true));
    const CIMObjectPath sourceGroupRef = ZDA_RemoteReplicationGroupProvider::buildObjectPath(
        _systemAddress, request.sourceGroupName);
    paramValues.append(CIMParamValue("SourceGroup", CIMValue(sourceGroupRef), true));
    // The tasks the start began are known but deliberately not reported: a
    // mirror's creation answers 0, and its progress shows in the pair's state.
    Array<CIMObjectPath> jobs;
    for (Uint32 t = 0; startGroup.sync_task_id && t < startGroup.sync_task_num; t++)
    {
        if (startGroup.sync_task_id[t].tid != 0)
            jobs.append(ZDA_ConcreteJobProvider::buildObjectPath(
                _systemAddress, ZDA_ConcreteJobProvider::makeUniqueID(startGroup.sync_task_id[t].tid)));
    }
    log_message(4, "Remote copy group %s started %u task(s)\n",
        (const char*)request.sourceGroupName.getCString(), jobs.size());

    const Boolean isNoREPolicy = (ZDA_Common::getPolicy() & 0x2) != 0;
    const Array<CIMObjectPath> synchronizations = ZDA_RemoteGroupSynchronizedProvider::createObjectPaths(
        request.sourceGroupName, _systemAddress, isNoREPolicy);
    CIMObjectPath targetGroupRef;
    String targetGroupName;
    if (synchronizations.size() > 0)
    {
        paramValues.append(CIMParamValue("Synchronization", CIMValue(synchronizations[0]), true));
        targetGroupRef = CIMObjectPath(ZDA_Common::getStringProperty(synchronizations[0], "SyncedElement"));
        const String instanceID = ZDA_Common::getStringProperty(targetGroupRef, "InstanceID");
        if (targetGroupRef.getClassName().equal("ZDA_ReplicationEntity") ||
            targetGroupRef.getClassName().equal("CIM_ReplicationEntity"))
        {
            String entityType;
            String entityHost;
            ZDA_ReplicationEntityProvider::extractFromInstanceID(
                instanceID, entityType, targetGroupName, entityHost);
        }
        else
        {
            targetGroupName = ZDA_Common::extractFromInstanceID(instanceID);
        }
    }
    paramValues.append(CIMParamValue("TargetGroup", CIMValue(targetGroupRef), true));
    if (targetGroupName.size() > 0)
        paramValues.append(CIMParamValue("TargetGroupName", CIMValue(targetGroupName), true));
    api_freeRCopyGroup(&startGroup);
}

int ZDA_ReplicationServiceProvider::_admitRCopyVVs(api_evtparam_t* apiEventp, api_rcopy_group_t& group,
    Array<String>& vvNames, String& relationshipName, String& errStr)
{
    api_rcopy_vv_t rcvv;
    memset(&rcvv, 0, sizeof rcvv);
    copyField(rcvv.group, group.name);
    rcvv.vv_add_flags |= ADMIT_FLAGS;
    for (Uint32 i = 0; i < vvNames.size(); i++)
    {
        copyField(rcvv.vvname, vvNames[i]);
        rcvv.nummaps = group.numtargets;
        for (Uint32 j = 0; j < group.numtargets && j < 4; j++)
        {
            rm_group_vv_map_t& map = rcvv.vvmaps[j];
            copyField(map.rm_target, group.targets[j].rm_target);
            if (relationshipName.size() > 0)
            {
                // At most 30 characters: a 27-character relationship name
                // still numbers 99 volumes.
                std::snprintf(map.rm_remote_name, TARGET_NAME_MAX, "%s_%u",
                    (const char*)relationshipName.getCString(), unsigned(i + 1));
            }
            else
            {
                // As much of the suffix as fits behind the local name.
                std::string remote = (const char*)vvNames[i].getCString();
                remote += REMOTE_SUFFIX;
                copyField(map.rm_remote_name, remote.c_str());
            }
            map.rm_remote_vid = REMOTE_VID_ANY;
        }
        const api_Status_t status = ZDA_CompanionFrame::statusCall(
            [&] { return api_admitRCopyVV(apiEventp, &rcvv); });
        if (status.code != 0)
        {
            errStr = arrayText(status);
            log_message(2, "Admit RCopy VV (%d): %s\n", status.code, (const char*)errStr.getCString());
            return 4;
        }
    }
    return 0;
}

int ZDA_ReplicationServiceProvider::_admitRCopyVVs(api_evtparam_t* apiEventp, String groupName,
    Array<String>& vvNames, String& relationshipName, String& errStr)
{
    api_rcopy_group_t group;
    memset(&group, 0, sizeof group);
    {
        ZDA_AssociationFrame::RCopySnapshot snapshot;
        const api_Status_t status = snapshot.read(API_RCOPY_QUERY_TYPE_GROUPS);
        if (status.code != 0)
        {
            const String text = arrayText(status);
            log_message(2, "api_getRCopy error (%d): %s\n", status.code, (const char*)text.getCString());
            errStr = "Cannot read rcopy group: " + text;
            return 4;
        }
        const rm_group_wrapper* found = nullptr;
        for (const rm_group_wrapper* g = snapshot.rcopy.groups; g && !found; g = g->next)
        {
            if (groupName == g->group.rm_hdr.rm_name)
                found = g;
        }
        if (!found)
        {
            log_message(2, "RemoteReplicationGroup %s does not exist\n", (const char*)groupName.getCString());
            errStr = "RemoteReplicationGroup " + groupName + " does not exist";
            return 7;
        }
        copyField(group.name, groupName);
        group.numtargets = Uint32(found->gtarget_count);
        for (int t = 0; t < found->gtarget_count && t < 4; t++)
            copyField(group.targets[t].rm_target, found->gtargets[t].rm_target);
    }
    return _admitRCopyVVs(apiEventp, group, vvNames, relationshipName, errStr);
}

// ---- synchronization changes and group membership ---------------------------------------

namespace
{

const char GROUP_SYNC_CLASS[] = "ZDA_RemoteGroupSynchronized";
const char STORAGE_SYNC_CLASS[] = "ZDA_StorageSynchronized";

// The Operation values of ModifyReplicaSynchronization and the words that
// become the audit record's operation.
struct SyncOperation
{
    Uint16 operation;
    const char* word;
};
const SyncOperation SYNC_OPERATIONS[] = {{2, "abort"}, {4, "activate"}, {8, "detach"}, {9, "dissolve"},
    {10, "failover"}, {11, "failback"}, {14, "resync"}, {15, "restore"}, {19, "return"}, {20, "reverse"},
    {21, "split"}};

const Uint16 OP_ACTIVATE = 4;
const Uint16 OP_DETACH = 8;
const Uint16 OP_FAILOVER = 10;
const Uint16 OP_FAILBACK = 11;
const Uint16 OP_RESYNC = 14;
const Uint16 OP_RETURN = 19;
const Uint16 OP_REVERSE = 20;
const Uint16 OP_SPLIT = 21;

// Copy states from which a resync of a group is a fresh start.
Boolean resyncStartsAfresh(Uint16 copyState)
{
    return copyState == 7 || copyState == 5 || copyState == 2 || copyState == 11;
}

const char* operationWord(Uint16 operation)
{
    for (const SyncOperation& op : SYNC_OPERATIONS)
        if (op.operation == operation)
            return op.word;
    return nullptr;
}

// The group named by one end of a group synchronization: a replication
// entity carries it with its type and host, any other group in its InstanceID.
String groupOfEnd(const CIMObjectPath& end, Boolean& isEntity)
{
    const String instanceId = ZDA_Common::getStringProperty(end, "InstanceID");
    isEntity = end.getClassName().equal("ZDA_ReplicationEntity") ||
        end.getClassName().equal("CIM_ReplicationEntity");
    if (!isEntity)
        return ZDA_Common::extractFromInstanceID(instanceId);
    String entityType;
    String groupName;
    String systemName;
    ZDA_ReplicationEntityProvider::extractFromInstanceID(instanceId, entityType, groupName, systemName);
    return groupName;
}

// The request record of the remote copy group calls; whatever the array
// left in it is released when it is reset or goes.
struct GroupRequest
{
    api_rcopy_groupop_t rec;
    GroupRequest() { std::memset(&rec, 0, sizeof rec); }
    ~GroupRequest() { api_freeRCopyGroup(&rec); }
    GroupRequest(const GroupRequest&) = delete;
    GroupRequest& operator=(const GroupRequest&) = delete;
    void reset()
    {
        api_freeRCopyGroup(&rec);
        std::memset(&rec, 0, sizeof rec);
    }
    void name(const String& groupName) { std::strncpy(rec.name, groupName.getCString(), API_NAME_LEN - 1); }
};

// The CIM status a failure of the copy services becomes.
Uint32 copyServicesResult(int code)
{
    switch (code)
    {
    case API_E_IN_USE: return 6;
    case 0x50:
    case 0x4D:
    case 0x4C: return 5;
    default: return 4;
    }
}

// The parameters AddMembers and RemoveMembers share, as their loop leaves
// them.
struct MembershipRequest
{
    CIMObjectPath groupRef;
    Boolean groupGiven = false;
    Array<CIMObjectPath> members;
    Boolean deleteOnEmptyElement = false;
};

void readMembershipParameters(const Array<CIMParamValue>& inParameters, String& systemAddress,
    const Array<CIMName>& groupClasses, MembershipRequest& request, Uint32& outstatus, String& errStr)
{
    if (inParameters.size() == 0)
    {
        log_message(2, " Invalid number of parameters\n");
        outstatus = 5;
        errStr = " Invalid number of parameters";
        return;
    }
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const String paramName = inParameters[i].getParameterName();
        const CIMValue value = inParameters[i].getValue();
        if (value.isNull())
            continue;
        if (String::equalNoCase(paramName, "ReplicationGroup"))
        {
            value.get(request.groupRef);
            if (!ZDA_Common::verifyRefMethodParam(request.groupRef, NAMESPACE, systemAddress, groupClasses))
            {
                outstatus = 5;
                errStr = paramName + " parameter contains invalid object path";
                return;
            }
            request.groupGiven = true;
        }
        else if (String::equalNoCase(paramName, "Members"))
        {
            value.get(request.members);
            for (Uint32 m = 0; m < request.members.size(); m++)
            {
                if (!ZDA_Common::verifyRefMethodParam(
                        request.members[m], NAMESPACE, systemAddress, CIMName(VOLUME_CLASS)))
                {
                    outstatus = 5;
                    errStr = "Members parameter contains invalid object path";
                    return;
                }
            }
        }
        else if (String::equalNoCase(paramName, "DeleteOnEmptyElement"))
        {
            value.get(request.deleteOnEmptyElement);
        }
    }
    if (outstatus == 0 && !request.groupGiven)
    {
        log_message(2, "ReplicationGroup has to be specified\n");
        outstatus = 5;
        errStr = "ReplicationGroup has to be specified";
    }
}

// True when every member was named (`rc` 0 and `found` names for the
// members); otherwise a refusal of 5.
Boolean membersFound(
    int rc, Uint32 found, const Array<CIMObjectPath>& members, Uint32& outstatus, String& errStr)
{
    if (rc == 0 && found >= members.size())
        return true;
    log_message(2, "Cannot find one or more of the volumes in Members\n");
    outstatus = 5;
    errStr = "Cannot find one or more of the volumes in Members";
    return false;
}

// The volume names of `members`, or a refusal of 5 when the array lacks any.
Boolean resolveMembers(Array<CIMObjectPath>& members, api_name_t*& vvNames, unsigned int& memberCount,
    Uint32& outstatus, String& errStr)
{
    const int rc = ZDA_Common::fillInVVNames(members, &vvNames, &memberCount);
    return membersFound(rc, memberCount, members, outstatus, errStr);
}

Boolean resolveMembers(
    Array<CIMObjectPath>& members, Array<String>& vvNames, Uint32& outstatus, String& errStr)
{
    const int rc = ZDA_Common::fillInVVNames(members, vvNames);
    return membersFound(rc, vvNames.size(), members, outstatus, errStr);
}

}  // namespace

void ZDA_ReplicationServiceProvider::_modifyReplicaSynchronization(api_evtparam_t* apiEventp,
    const OperationContext& context, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _modifyReplicaSynchronization\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    Uint16 operation = 0;
    String operationStr = "*not specified*";
    CIMObjectPath syncRef;
    Boolean force = false;
    Uint16 waitforCopyState = 0;

    refuseEmptyParameters(inParameters, outstatus, errStr);
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const String paramName = inParameters[i].getParameterName();
        const CIMValue value = inParameters[i].getValue();
        log_message(4, "Param %s\n", (const char*)paramName.getCString());
        if (value.isNull())
            continue;
        if (String::equalNoCase(paramName, "Operation"))
        {
            value.get(operation);
            const char* word = operationWord(operation);
            if (!word)
            {
                log_message(2, "Operation %d not supported\n", int(operation));
                outstatus = 5;
                errStr = "Operation not supported";
                break;
            }
            operationStr = word;
        }
        else if (String::equalNoCase(paramName, "Synchronization"))
        {
            value.get(syncRef);
        }
        else if (String::equalNoCase(paramName, "SyncPair"))
        {
            outstatus = 5;
            errStr = "Only NULL SyncPair is supported currently.";
        }
        else if (String::equalNoCase(paramName, "Force"))
        {
            value.get(force);
        }
        else if (String::equalNoCase(paramName, "WaitForCopyState"))
        {
            value.get(waitforCopyState);
        }
        // ReplicationSettingData is accepted and not used.
    }

    if (outstatus == 0 && syncRef.getClassName().isNull())
    {
        log_message(2, " Invalid cim_synchronized ref.\n");
        outstatus = 5;
        errStr = " Invalid cim_synchronized refernce";
    }
    if (outstatus == 0)
    {
        ZDA_Common::setEventOp(apiEventp, operationStr.getCString());
        if (validateCopyStateOp(waitforCopyState, operation) == 0)
        {
            outstatus = 5;
            errStr = " Invalid copy state for the operation";
        }
    }
    if (outstatus == 0)
    {
        if (ZDA_Common::verifyRefMethodParam(syncRef, NAMESPACE, _systemAddress, CIMName(GROUP_SYNC_CLASS)))
            _modifyGroupSynchronization(
                apiEventp, context, syncRef, operation, force, paramValues, outstatus, errStr);
        else
            _modifyElementSynchronization(
                apiEventp, context, syncRef, operation, paramValues, outstatus, errStr);
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_modifyReplicaSynchronization");
}

void ZDA_ReplicationServiceProvider::_modifyGroupSynchronization(api_evtparam_t* apiEventp,
    const OperationContext& context, CIMObjectPath& syncRef, Uint16 operation, Boolean force,
    Array<CIMParamValue>& paramValues, Uint32& outstatus, String& errStr)
{
    CIMObjectPath sysElem(ZDA_Common::getStringProperty(syncRef, "SystemElement"));
    CIMObjectPath syncedElem(ZDA_Common::getStringProperty(syncRef, "SyncedElement"));
    Boolean isEntitySysElement = false;
    Boolean targetIsEntity = false;
    const String sourcegroup = groupOfEnd(sysElem, isEntitySysElement);
    const String targetgroup = groupOfEnd(syncedElem, targetIsEntity);
    if (sourcegroup.size() == 0 || targetgroup.size() == 0)
    {
        log_message(2, " invalid source or target name\n");
        outstatus = 5;
        errStr = " Invalid source or target name.";
        return;
    }
    log_message(4, "\t source group [%s], target group[%s], op=%u\n", (const char*)sourcegroup.getCString(),
        (const char*)targetgroup.getCString(), unsigned(operation));

    GroupRequest rcopygroup;
    // One array call on the request record; a failure leaves 4 and the
    // array's text.
    auto groupCall = [&](const std::function<api_Status_t()>& call) {
        const api_Status_t status = ZDA_CompanionFrame::statusCall(call);
        if (status.code == 0)
            return true;
        outstatus = 4;
        errStr = ZDA_AssociationFrame::statusText(status);
        return false;
    };
    // Failover and failback act on the group of SyncedElement, which the
    // array that holds the secondary calls its own.
    auto syncedIsGroup = [&]() {
        if (ZDA_Common::verifyRefMethodParam(
                syncedElem, NAMESPACE, _systemAddress, CIMName(RCOPY_GROUP_CLASS)))
            return true;
        outstatus = 5;
        errStr = " Invalid SyncedElement reference.";
        return false;
    };

    Boolean called = true;
    switch (operation)
    {
    case OP_ACTIVATE:
        rcopygroup.name(sourcegroup);
        called = groupCall([&] { return api_startRCopyGroup(apiEventp, &rcopygroup.rec); });
        break;
    case OP_SPLIT:
        rcopygroup.name(sourcegroup);
        called = groupCall([&] { return api_stopRCopyGroup(apiEventp, &rcopygroup.rec); });
        break;
    case OP_FAILOVER:
    case OP_FAILBACK:
        if (!syncedIsGroup())
            return;
        rcopygroup.reset();
        rcopygroup.name(targetgroup);
        called = groupCall([&] {
            return api_setRCopyGroup(apiEventp, &rcopygroup.rec,
                operation == OP_FAILOVER ? API_RCOPY_SET_FAILOVER : API_RCOPY_SET_FAILBACK, 0);
        });
        break;
    case OP_REVERSE:
        rcopygroup.reset();
        rcopygroup.name(isEntitySysElement ? targetgroup : sourcegroup);
        called = groupCall(
            [&] { return api_setRCopyGroup(apiEventp, &rcopygroup.rec, API_RCOPY_SET_REVERSE, 0x10); });
        break;
    case OP_RESYNC:
        called = _resyncGroup(
            apiEventp, context, syncRef, sourcegroup, force, rcopygroup.rec, outstatus, errStr);
        break;
    case OP_DETACH:
    {
        api_rcopy_delete rcdelgroup;
        std::memset(&rcdelgroup, 0, sizeof rcdelgroup);
        std::strncpy(rcdelgroup.name, sourcegroup.getCString(), API_NAME_LEN - 1);
        called = groupCall([&] { return api_deleteRCopyGroup(apiEventp, &rcdelgroup); });
        break;
    }
    case OP_RETURN:
        _returnGroupSnapshot(apiEventp, context, syncRef, syncedElem, targetgroup, outstatus, errStr);
        return;
    default:
        // Abort, dissolve and restore ask nothing of the array for a
        // group; an absent Operation neither.
        break;
    }
    if (!called)
        return;
    if (rcopygroup.rec.sync_task_id)
    {
        setConcreteJobParam(paramValues, rcopygroup.rec);
        outstatus = 4096;
    }
}

Boolean ZDA_ReplicationServiceProvider::_readGroupSyncProperty(const OperationContext& context,
    const CIMObjectPath& syncRef, const char* name, Uint16& value, Uint32& outstatus, String& errStr)
{
    try
    {
        CIMInstance sync = _cimom.getInstance(
            context, NAMESPACE, syncRef, false, false, false, CIMPropertyList());
        ZDA_Common::getProperty(sync, name, value);
        return true;
    }
    catch (...)
    {
        log_message(2, "Cannot find the GroupSynchronized instance\n");
        outstatus = 5;
        errStr = "Cannot find the RemoteGroupSynchronized instance";
        return false;
    }
}

Boolean ZDA_ReplicationServiceProvider::_resyncGroup(api_evtparam_t* apiEventp,
    const OperationContext& context, const CIMObjectPath& syncRef, const String& sourcegroup, Boolean force,
    api_rcopy_groupop_t& rcopygroup, Uint32& outstatus, String& errStr)
{
    Uint16 copyState = 7;
    if (!_readGroupSyncProperty(context, syncRef, "CopyState", copyState, outstatus, errStr))
        return false;

    Boolean tryStart = false;
    do
    {
        std::strncpy(rcopygroup.name, sourcegroup.getCString(), API_NAME_LEN - 1);
        if (tryStart || resyncStartsAfresh(copyState))
        {
            tryStart = false;
            rcopygroup.flags = 2;
            const api_Status_t status = ZDA_CompanionFrame::statusCall(
                [&] { return api_startRCopyGroup(apiEventp, &rcopygroup); });
            if (status.code != 0)
            {
                outstatus = 4;
                errStr = ZDA_AssociationFrame::statusText(status);
                return false;
            }
        }
        else
        {
            if (force)
                rcopygroup.flags = 1;
            const api_Status_t status = ZDA_CompanionFrame::statusCall(
                [&] { return api_syncrcopy(apiEventp, &rcopygroup); });
            if (status.code != 0)
            {
                // The failure stays the method's result even when the start
                // that follows succeeds.
                errStr = ZDA_AssociationFrame::statusText(status);
                outstatus = 4;
                api_freeRCopyGroup(&rcopygroup);
                if (errStr.find("isn't started") == PEG_NOT_FOUND)
                    return false;
                tryStart = true;
                std::memset(&rcopygroup, 0, sizeof rcopygroup);
            }
        }
    } while (tryStart);
    return true;
}

void ZDA_ReplicationServiceProvider::_returnGroupSnapshot(api_evtparam_t* apiEventp,
    const OperationContext& context, const CIMObjectPath& syncRef, const CIMObjectPath& syncedElem,
    const String& targetgroup, Uint32& outstatus, String& errStr)
{
    Uint16 syncType = 0;
    if (!_readGroupSyncProperty(context, syncRef, "SyncType", syncType, outstatus, errStr))
        return;
    const CIMName targetClass = syncedElem.getClassName();
    if (syncType != SYNC_TYPE_SNAPSHOT ||
        !(targetClass.equal(GROUP_CLASS) || targetClass.equal("CIM_ReplicationGroup")))
    {
        const char text[] = "The synchronization reference is not for a local snapshot of a "
                            "replication group. The synchronized element it references is not "
                            "a local replication group (vvset)\n";
        log_message(2, "%s", text);
        outstatus = 5;
        errStr = text;
        return;
    }
    // The set of snapshots goes, and its volumes with it.
    outstatus = _deleteGroupAndMembers(apiEventp, targetgroup, errStr);
}

void ZDA_ReplicationServiceProvider::_modifyElementSynchronization(api_evtparam_t* apiEventp,
    const OperationContext& context, CIMObjectPath& syncRef, Uint16 operation,
    Array<CIMParamValue>& paramValues, Uint32& outstatus, String& errStr)
{
    if (operation == OP_RETURN)
    {
        const api_Status_t status = _returnToResourcePool(apiEventp, context, syncRef);
        if (status.code != 0)
        {
            errStr = ZDA_AssociationFrame::statusText(status);
            log_message(2, "Createvv copy error (%d): %s\n", status.code, (const char*)errStr.getCString());
            outstatus = 4;
        }
        return;
    }
    if (!ZDA_Common::verifyRefMethodParam(syncRef, NAMESPACE, _systemAddress, CIMName(STORAGE_SYNC_CLASS)))
    {
        outstatus = 5;
        errStr = "Synchronization parameter contains invalid object path";
        return;
    }
    Array<CIMObjectPath> jobs;
    String host = _systemAddress;
    const api_Status_t status = ZDA_StorageConfigurationServiceProvider::modifySynchronization(
        apiEventp, _cimom, context, jobs, _convertToCopySvcsOp(operation), syncRef, host);
    if (jobs.size() > 0)
    {
        paramValues.append(CIMParamValue("Job", CIMValue(jobs[0]), true));
        outstatus = 4096;
    }
    if (status.code != 0)
    {
        outstatus = copyServicesResult(status.code);
        errStr = ZDA_AssociationFrame::statusText(status);
        log_message(2, "Createvv copy error (%d): %s\n", status.code, (const char*)errStr.getCString());
    }
}

void ZDA_ReplicationServiceProvider::_addMembers(api_evtparam_t* apiEventp, const OperationContext& context,
    const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _addMembers\n");
    Uint32 outstatus = 0;
    String errStr;
    MembershipRequest request;
    Array<CIMName> groupClasses;
    groupClasses.append(GROUP_CLASS);
    groupClasses.append(RCOPY_GROUP_CLASS);
    readMembershipParameters(inParameters, _systemAddress, groupClasses, request, outstatus, errStr);
    if (outstatus == 0)
    {
        try
        {
            _cimom.getInstance(context, NAMESPACE, request.groupRef, false, false, false, CIMPropertyList());
        }
        catch (...)
        {
            log_message(2, "ReplicationGroup does not exist\n");
            outstatus = 7;
            errStr = "ReplicationGroup does not exist";
        }
    }
    api_name_t* vvNames = nullptr;
    if (outstatus == 0)
    {
        ZDA_Common::setEventOp(apiEventp, request.groupRef.toString().getCString());
        const String groupName = ZDA_Common::extractFromInstanceID(
            ZDA_Common::getStringProperty(request.groupRef, "InstanceID"));
        unsigned int memberCount = 0;
        if (request.groupRef.getClassName().equal(RCOPY_GROUP_CLASS))
        {
            // Every volume must be known before any is admitted. Without a
            // relationship name each far volume is named after its local one.
            Array<String> names;
            String relationshipName;
            if (resolveMembers(request.members, names, outstatus, errStr))
                outstatus = Uint32(_admitRCopyVVs(apiEventp, groupName, names, relationshipName, errStr));
        }
        else if (resolveMembers(request.members, vvNames, memberCount, outstatus, errStr))
        {
            const CString name = groupName.getCString();
            const api_Status_t status = ZDA_CompanionFrame::statusCall(
                [&] { return api_addToVVSet(apiEventp, name, vvNames, int(memberCount)); });
            if (status.code != 0)
            {
                errStr = ZDA_AssociationFrame::statusText(status);
                log_message(
                    2, "Add to vvset error (%d): %s\n", status.code, (const char*)errStr.getCString());
                outstatus = 4;
            }
        }
    }
    std::free(vvNames);
    _completeMethod(handler, outstatus, errStr, Array<CIMParamValue>(), "_addMembers");
}

void ZDA_ReplicationServiceProvider::_removeMembers(api_evtparam_t* apiEventp, const OperationContext&,
    const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _removeMembers\n");
    Uint32 outstatus = 0;
    String errStr;
    MembershipRequest request;
    Array<CIMName> groupClasses;
    groupClasses.append(GROUP_CLASS);
    groupClasses.append(RCOPY_GROUP_CLASS);
    readMembershipParameters(inParameters, _systemAddress, groupClasses, request, outstatus, errStr);
    if (outstatus == 0)
    {
        ZDA_Common::setEventOp(apiEventp, request.groupRef.toString().getCString());
        const String groupName = ZDA_Common::extractFromInstanceID(
            ZDA_Common::getStringProperty(request.groupRef, "InstanceID"));
        if (request.groupRef.getClassName().equal(RCOPY_GROUP_CLASS))
            outstatus = _dismissRCopyVVs(
                apiEventp, groupName, request.members, request.deleteOnEmptyElement, errStr);
        else
            outstatus = _removeFromVVSet(
                apiEventp, groupName, request.members, request.deleteOnEmptyElement, errStr);
    }
    _completeMethod(handler, outstatus, errStr, Array<CIMParamValue>(), "_removeMembers");
}

int ZDA_ReplicationServiceProvider::_removeFromVVSet(api_evtparam_t* apiEventp, const String& groupName,
    Array<CIMObjectPath>& members, Boolean deleteOnEmptyElement, String& errStr)
{
    const CString name = groupName.getCString();
    ZDA_AssociationFrame::VVSetList list;
    const api_Status_t found = list.read(name);
    const api_set_t* set = found.code == 0 && list.size() > 0 ? &list[0] : nullptr;
    if (!set)
    {
        log_message(2, "ReplicationGroup %s does not exist\n", (const char*)name);
        errStr = "ReplicationGroup " + groupName + " does not exist";
        return 7;
    }
    api_name_t* vvNames = nullptr;
    unsigned int memberCount = 0;
    Uint32 outstatus = 0;
    if (!resolveMembers(members, vvNames, memberCount, outstatus, errStr))
    {
        std::free(vvNames);
        return int(outstatus);
    }
    // Every volume must be in the set before any is taken out.
    for (unsigned int i = 0; i < memberCount; i++)
    {
        Boolean inSet = false;
        for (int m = 0; m < set->memberCount && !inSet; m++)
            inSet = std::strncmp(vvNames[i].name, set->members[m].name, API_NAME_LEN) == 0;
        if (!inSet)
        {
            const String member(vvNames[i].name);
            log_message(2, "Member %s not in vvset %s\n", vvNames[i].name, (const char*)name);
            errStr = "Member " + member + " not in Group " + groupName;
            std::free(vvNames);
            return 8;
        }
    }
    api_Status_t status = ZDA_CompanionFrame::statusCall(
        [&] { return api_removeFromVVSet(apiEventp, name, vvNames, int(memberCount)); });
    std::free(vvNames);
    if (status.code == 0 && deleteOnEmptyElement)
    {
        ZDA_AssociationFrame::VVSetList after;
        status = after.read(name);
        if (status.code == 0 && after.size() > 0 && after[0].memberCount == 0)
            status = ZDA_CompanionFrame::statusCall([&] { return api_removeVVSet(apiEventp, name); });
    }
    if (status.code != 0)
    {
        errStr = ZDA_AssociationFrame::statusText(status);
        log_message(2, "Add to vvset error (%d): %s\n", status.code, (const char*)errStr.getCString());
        return 4;
    }
    return 0;
}

int ZDA_ReplicationServiceProvider::_dismissRCopyVVs(api_evtparam_t* apiEventp, String groupName,
    Array<CIMObjectPath>& members, Boolean deleteOnEmptyElement, String& errStr)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::_dismissRCopyVVs()\n");
    const CString name = groupName.getCString();
    Array<String> foundVVs;
    Uint32 numVolsInGroup = 0;
    {
        ZDA_AssociationFrame::RCopySnapshot snapshot;
        const api_Status_t read = snapshot.read(API_RCOPY_QUERY_TYPE_ALL);
        if (read.code != 0)
        {
            const String text = ZDA_AssociationFrame::statusText(read);
            log_message(2, "api_getRCopy error (%d): %s\n", read.code, (const char*)text.getCString());
            errStr = "Cannot read rcopy group: " + text;
            return 4;
        }
        const rm_group_wrapper* group = snapshot.rcopy.groups;
        while (group && std::strcmp(group->group.rm_hdr.rm_name, name) != 0)
            group = group->next;
        if (!group)
        {
            log_message(2, "RemoteReplicationGroup %s does not exist\n", (const char*)name);
            errStr = "RemoteReplicationGroup " + groupName + " does not exist";
            return 7;
        }
        for (const rm_group_vv_wrapper* v = group->gvvs; v; v = v->next)
            numVolsInGroup++;
        // Every volume must be in the group before any is dismissed.
        for (Uint32 i = 0; i < members.size(); i++)
        {
            const String deviceId = ZDA_Common::getStringProperty(members[i], "DeviceID");
            api_u64_t wwn = api_u64_t(-10);
            api_u64_t wwnRe = 0;
            api_wwnStringToInt(deviceId.getCString(), &wwnRe, &wwn);
            const rm_group_vv_wrapper* v = group->gvvs;
            while (v && !(v->gvv.rm_local_wwn == wwn && v->gvv.rm_local_wwn_re == wwnRe))
                v = v->next;
            if (!v)
            {
                log_message(2, "Member %s not in RemoteReplicationGroup %s\n",
                    (const char*)deviceId.getCString(), (const char*)name);
                errStr = "Member " + deviceId + " not in RemoteReplicationGroup " + groupName;
                return 8;
            }
            foundVVs.append(String(v->gvv.rm_local_name));
        }
    }

    for (Uint32 i = 0; i < foundVVs.size(); i++)
    {
        // The far array's copy goes with the volume; the local volume stays.
        api_rcopy_dismiss_vv vv;
        std::memset(&vv, 0, sizeof vv);
        vv.removevv_flag = API_RCOPY_REMOVE_VVS;
        std::strncpy(vv.group, name, API_NAME_LEN - 1);
        std::strncpy(vv.vvname, foundVVs[i].getCString(), API_NAME_LEN - 1);
        const api_Status_t status = ZDA_CompanionFrame::statusCall(
            [&] { return api_dismissRCopyVV(apiEventp, &vv); });
        if (status.code != 0)
        {
            errStr = ZDA_AssociationFrame::statusText(status);
            log_message(2, "Dismiss RCopy VV (%d): %s\n", status.code, (const char*)errStr.getCString());
            return 4;
        }
    }
    if (deleteOnEmptyElement && foundVVs.size() == numVolsInGroup)
        return _deleteRCopyGroup(apiEventp, groupName, false, errStr);
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_dismissRCopyVVs()\n");
    return 0;
}

PEGASUS_NAMESPACE_END
