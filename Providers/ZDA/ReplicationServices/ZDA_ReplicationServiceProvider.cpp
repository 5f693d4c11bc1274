// The replication service: its one instance, the method table and the
// routines its method handlers share.
#include "ZDA_ReplicationServiceProvider.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_AssociationFrame.h"
#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_ConcreteJobProvider.h"
#include "ZDA_RemoteServiceAccessPointProvider.h"
#include "ZDA_ReplicationGroupProvider.h"
#include "ZDA_StorageConfigurationServiceProvider.h"
#include "ZDA_StorageSystemProvider.h"

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
    return className.equal("CIM_ReplicationService") ||
        className.equal("SNIA_ReplicationService") || className.equal(CIMName(ClassName));
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

}  // namespace

CIMObjectPath ZDA_ReplicationServiceProvider::_instanceName;
String ZDA_ReplicationServiceProvider::_name;

// ---- construction ------------------------------------------------------------------

ZDA_ReplicationServiceProvider::ZDA_ReplicationServiceProvider()
{
}

ZDA_ReplicationServiceProvider::ZDA_ReplicationServiceProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ZDA_ReplicationServiceProvider::~ZDA_ReplicationServiceProvider()
{
}

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

void ZDA_ReplicationServiceProvider::_buildInstanceName()
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::_buildInstanceName()\n");
    // Built once per process, by the first provider object.
    if (!_instanceName.getClassName().isNull())
        return;
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("SystemCreationClassName", SYSTEM_CLASS, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", _systemName, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("CreationClassName", ClassName, CIMKeyBinding::STRING));
    _name = SERVICE_NAME;
    keys.append(CIMKeyBinding("Name", _name, CIMKeyBinding::STRING));
    CIMObjectPath path(_systemAddress, CIMNamespaceName(NAMESPACE), CIMName(ClassName));
    path.setKeyBindings(keys);
    _instanceName = path;
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_buildInstanceName()\n");
}

CIMInstance ZDA_ReplicationServiceProvider::_buildInstance(Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
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

void ZDA_ReplicationServiceProvider::_openInstanceOperation(const OperationContext& context,
    const CIMObjectPath& reference, Uint32 line)
{
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, line);
    if (!isServiceClass(reference.getClassName()))
        throw CIMNotSupportedException(
            ClassName + " Invalid class name" + reference.getClassName().getString());
}

void ZDA_ReplicationServiceProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::getInstance()\n");
    _openInstanceOperation(context, instanceReference, __LINE__);
    const Uint32 keyCount = instanceReference.getKeyBindings().size();
    if (keyCount != 4)
    {
        log_message(2, "ZDA_ReplicationServiceProvider::getInstance(): Invalid number of keys (%d)\n",
            int(keyCount));
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
    const CIMObjectPath& classReference, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::enumerateInstances() \n");
    _openInstanceOperation(context, classReference, __LINE__);
    log_message(4, "\t className = %s\n",
        (const char*)classReference.getClassName().getString().getCString());
    CIMInstance instance = _buildInstance(includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    handler.deliver(instance);
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationServiceProvider::enumerateInstances() \n");
}

void ZDA_ReplicationServiceProvider::enumerateInstanceNames(const OperationContext& context,
    const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider::enumerateInstanceNames()\n");
    _openInstanceOperation(context, classReference, __LINE__);
    handler.processing();
    handler.deliver(_instanceName);
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationServiceProvider::enumerateInstanceNames()\n");
}

void ZDA_ReplicationServiceProvider::modifyInstance(const OperationContext&,
    const CIMObjectPath&, const CIMInstance&, const Boolean, const CIMPropertyList&,
    ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ZDA_ReplicationServiceProvider::createInstance(const OperationContext&,
    const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ZDA_ReplicationServiceProvider::deleteInstance(const OperationContext&,
    const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

// ---- methods: dispatch and authorization ---------------------------------------------------

void ZDA_ReplicationServiceProvider::invokeMethod(const OperationContext& context,
    const CIMObjectPath& objectReference, const CIMName& methodName,
    const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    String authUserName;
    String authIp;
    callerOf(context, authUserName, authIp);
    const String authClassName = objectReference.getClassName().getString();
    const String authMethodName = methodName.getString();
    log_message(4, "--> ZDA_ReplicationServiceProvider::invokeMethod(), methodName = %s \n",
        (const char*)authMethodName.getCString());

    if (api_zdaOpenForCimserver((const char*)authUserName.getCString()) != 0)
        throw TraceableCIMException(CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user",
            SOURCE_FILE, __LINE__);

    // The audit record of this call; it lives on this stack so concurrent
    // calls never share one.
    api_evtparam_t apiEvent;
    memset(&apiEvent, 0, sizeof apiEvent);
    api_evtparam_t* apiEventp = &apiEvent;
    ZDA_Common::setEventParam(apiEventp, authClassName.getCString(),
        authMethodName.getCString(), "", authUserName.getCString(), authIp.getCString());

    if (!ZDA_Common::matchObjectPath(objectReference, _instanceName))
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");

    for (const MethodRow* rowp = _methodTable; rowp->name; rowp++)
    {
        const MethodRow& row = *rowp;
        if (!methodName.equal(row.name) &&
            !(row.alternativeName && methodName.equal(row.alternativeName)))
            continue;
        if (row.authorization == GENERIC_AUTHORIZATION)
            _authorizeGeneric(authClassName, authMethodName, authUserName, authIp);
        else
            _authorizeByFuncType(row.authorization, authUserName, authIp, inParameters);
        const MethodCall call{apiEventp, context, methodName, authMethodName, inParameters,
            handler};
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

void ZDA_ReplicationServiceProvider::_authorizeByFuncType(int funcType, const String& userName,
    const String& ipAddress, const Array<CIMParamValue>& inParameters)
{
    requireAuthorized(authorizeMethod(funcType, userName, ipAddress, inParameters), SOURCE_FILE,
        __LINE__);
}

void ZDA_ReplicationServiceProvider::_authorizeGeneric(const String& className,
    const String& methodName, const String& userName, const String& ipAddress)
{
    // The key follows the class the client named.
    const int result = authorizeGeneric(userName, ipAddress, className, methodName);
    switch (result)
    {
        case API_AUTH_ALLOWED:
            return;
        case API_AUTH_DENIED:
        case API_AUTH_UNKNOWN_USER:
            throw TraceableCIMException(CIM_ERR_ACCESS_DENIED, "Insufficient generic privilege",
                SOURCE_FILE, __LINE__);
        default:
            throw TraceableCIMException(CIM_ERR_NOT_SUPPORTED, "Does not support in generic!",
                SOURCE_FILE, __LINE__);
    }
}

// ---- routines the method handlers share ----------------------------------------------------

void ZDA_ReplicationServiceProvider::_completeMethod(MethodResultResponseHandler& handler,
    Uint32 outstatus, const String& errStr, const Array<CIMParamValue>& paramValues,
    const char* handlerName)
{
    log_message(4, "Overall status of the operation = %d\n", int(outstatus));
    // The method's result travels as the CIM status code, unmapped.
    if (outstatus != 0 && errStr.size() > 0)
        throw CIMException(CIMStatusCode(outstatus), errStr, true);
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
        case 2:
            return ZDA_StorageConfigurationServiceProvider::OP_STOP_COPY;
        case 8:
        case 9:
            return ZDA_StorageConfigurationServiceProvider::OP_DETACH;
        case 14:
            return ZDA_StorageConfigurationServiceProvider::OP_RESYNC;
        case 15:
            return ZDA_StorageConfigurationServiceProvider::OP_RESTORE;
        default:
            return 0;
    }
}

int ZDA_ReplicationServiceProvider::validateCopyStateOp(Uint16 waitForCopyState, Uint16 op)
{
    if (waitForCopyState == 0)
        return 1;
    switch (op)
    {
        case 0:
            return 1;
        case 4:
        case 11:
        case 20:
            return (waitForCopyState == 4 || waitForCopyState == 3) ? 1 : 0;
        case 14:
            return waitForCopyState == 4 ? 1 : 0;
        case 21:
            return waitForCopyState == 7 ? 1 : 0;
        case 10:
            return waitForCopyState == 10 ? 1 : 0;
        case 8:
            // A state of 0 has been answered above, so this is always 0.
            return waitForCopyState == 0 ? 1 : 0;
        default:
            return -1;
    }
}

void ZDA_ReplicationServiceProvider::setConcreteJobParam(Array<CIMParamValue>& paramValues,
    api_rcopy_start_group& rcgroup)
{
    if (rcgroup.sync_task_num == 0 || rcgroup.sync_task_id == nullptr ||
        rcgroup.sync_task_id[0].tid == 0)
        return;
    // Only the group's first task is reported as its job.
    const CIMObjectPath job = ZDA_ConcreteJobProvider::buildObjectPath(_systemAddress,
        ZDA_ConcreteJobProvider::makeUniqueID(rcgroup.sync_task_id[0].tid));
    paramValues.append(CIMParamValue("Job", CIMValue(job), true));
}

api_Status_t ZDA_ReplicationServiceProvider::_returnToResourcePool(api_evtparam_t* apiEventp,
    const OperationContext& context, const Array<CIMObjectPath>& syncRefs,
    const CIMObjectPath& targetGroup, Boolean targetGroupSet)
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
        // A synchronization that cannot be read is skipped, whatever the reason.
        try
        {
            const CIMObjectPath& syncRef = syncRefs[i];
            const CIMValue value = _cimom.getProperty(context, CIMNamespaceName(NAMESPACE),
                syncRef, "SyncType");
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
        catch (...)
        {
        }
    }

    if (found == 0)
    {
        errinfo_set_str(&status, NO_SYNCHRONIZATION_FOUND,
            "None of the Synchronized instances exist");
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
            apiEventp, _cimom, context, jobs, ZDA_StorageConfigurationServiceProvider::OP_DETACH,
            svRefs[i], host);
        // The first failure is the one reported; the rest are still tried.
        if (detached.code != 0 && status.code == 0)
            status = detached;
    }
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_returnToResourcePool()\n");
    return status;
}

api_Status_t ZDA_ReplicationServiceProvider::_returnToResourcePool(api_evtparam_t* apiEventp,
    const OperationContext& context, const CIMObjectPath& syncRef)
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
    {"CreateGroup", nullptr, GENERIC_AUTHORIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._createGroup(c.apiEventp, c.context, c.inParameters, c.handler);
        }},
    {"DeleteGroup", nullptr, GENERIC_AUTHORIZATION,
        [](ZDA_ReplicationServiceProvider& self, const MethodCall& c) {
            self._deleteGroup(c.apiEventp, c.context, c.inParameters, c.handler);
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
bool candidateTargets(CIMOMHandle& cimom, const OperationContext& context,
    const CIMObjectPath& source, CIMInstance& sourceInstance,
    const Array<CIMObjectPath>* targetPools, Array<CIMObjectPath>& candidates)
{
    const Array<CIMObjectPath> replicaPoolRefs = cimom.associatorNames(context, NAMESPACE,
        source, "ZDA_ReplicaPoolForStorage", "ZDA_DeltaReplicaStoragePool", "Dependent",
        "Antecedent");
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
            log_message(3,
                "None of the TargetPools is the delta replica pool of the input volume\n");
            return false;
        }
    }
    Uint64 inSize = 0;
    if (ZDA_Common::getProperty(sourceInstance, "NumberOfBlocks", inSize) != 0)
    {
        log_message(2, "Trouble getting necessary properties from SourceElement\n");
        return false;
    }

    Array<CIMInstance> volInsts = cimom.enumerateInstances(context, NAMESPACE,
        VOLUME_CLASS, false, false, false, false, CIMPropertyList());
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

void ZDA_ReplicationServiceProvider::_createGroup(api_evtparam_t* apiEventp,
    const OperationContext&, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler)
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
                if (!ZDA_Common::verifyRefMethodParam(members[m], NAMESPACE, _systemAddress,
                        CIMName(VOLUME_CLASS)))
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
        outstatus = _createGroup(apiEventp, groupName, members, Array<String>(), Array<String>(),
            groupPath, errStr);
        if (outstatus == 0)
            paramValues.append(CIMParamValue("ReplicationGroup", CIMValue(groupPath), true));
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_createGroup");
}

int ZDA_ReplicationServiceProvider::_createGroup(api_evtparam_t* apiEventp, String groupName,
    Array<CIMObjectPath>& members, Array<String> const& okv_keys,
    Array<String> const& okv_values, CIMObjectPath& groupReplicaPath, String& errStr)
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
            return api_createVVSet(apiEventp, name, vvNames, int(memberCount), 0, "",
                &options.opts);
        });
    }
    if (status.code == 0)
    {
        groupReplicaPath = ZDA_ReplicationGroupProvider::buildObjectPath(_systemAddress, groupName);
    }
    else
    {
        errStr = ZDA_AssociationFrame::statusText(status);
        log_message(2, "Create vvset error (%d): %s\n", status.code,
            (const char*)errStr.getCString());
        outstatus = 4;
    }
    std::free(vvNames);
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_createGroup(worker)\n");
    return outstatus;
}

void ZDA_ReplicationServiceProvider::_deleteGroup(api_evtparam_t* apiEventp,
    const OperationContext& context, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler)
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
            if (!ZDA_Common::verifyRefMethodParam(groupRef, NAMESPACE, _systemAddress,
                    groupClasses))
            {
                outstatus = 5;
                errStr = paramName + " parameter contains invalid object path";
                break;
            }
            try
            {
                _cimom.getInstance(context, NAMESPACE, groupRef, false, false, false,
                    CIMPropertyList());
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
                    log_message(2, "Delete vvset error (%d): %s\n", removed.code,
                        (const char*)errStr.getCString());
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

int ZDA_ReplicationServiceProvider::_deleteRCopyGroup(api_evtparam_t* apiEventp,
    String groupName, Boolean removeElements, String& errStr)
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
            log_message(2, "api_getRCopy error (%d): %s\n", read.code,
                (const char*)text.getCString());
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
        log_message(2, "delete RCopy Group (%d): %s\n", status.code,
            (const char*)errStr.getCString());
        return 4;
    }
    log_message(4, "<-- ZDA_ReplicationServiceProvider::_deleteRCopyGroup()\n");
    return 0;
}

int ZDA_ReplicationServiceProvider::_deleteGroupAndMembers(api_evtparam_t* apiEventp,
    String setName, String& errStr)
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
        log_message(2, "removevvset error (%d): %s\n", removed.code,
            (const char*)errStr.getCString());
        return 4;
    }

    // The set's snapshot still names the members after the set is gone.
    for (int retry = 0;; retry++)
    {
        const int rc = ZDA_CompanionFrame::callUnderSemaphore([&] {
            return api_removeVVs(apiEventp, set->members, set->memberCount, 0, 0);
        });
        switch (rc)
        {
            case 0:
                log_message(4, "<-- ZDA_ReplicationServiceProvider::_deleteGroupAndMembers()\n");
                return 0;
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

void ZDA_ReplicationServiceProvider::_getAvailableTargetElements(
    const OperationContext& context, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler)
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
    if (inParameters.size() == 0)
    {
        log_message(2, " Invalid number of parameters\n");
        outstatus = 5;
        errStr = "Invalid number of parameters";
    }
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const String paramName = inParameters[i].getParameterName();
        const CIMValue value = inParameters[i].getValue();
        if (value.isNull())
            continue;
        if (String::equalNoCase(paramName, "SourceElement"))
        {
            value.get(volRef);
            if (!ZDA_Common::verifyRefMethodParam(volRef, NAMESPACE, _systemAddress,
                    CIMName(VOLUME_CLASS)))
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
            inVolInst = _cimom.getInstance(context, NAMESPACE, volRef, false, false, false,
                CIMPropertyList());
        }
        catch (const Exception&)
        {
            log_message(2, "SourceElement does not exist\n");
            outstatus = 5;
            errStr = "SourceElement does not exist";
        }
        Array<CIMObjectPath> candidates;
        if (outstatus == 0 &&
            candidateTargets(_cimom, context, volRef, inVolInst,
                targetPoolRefSet ? &tgtPools : nullptr, candidates))
            paramValues.append(CIMParamValue("Candidates", CIMValue(candidates), true));
    }
    _completeMethod(handler, outstatus, errStr, paramValues, "_getReplicationRelationships");
}

// ---- relationships -------------------------------------------------------------------------

namespace
{

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

void ZDA_ReplicationServiceProvider::_getReplicationRelationships(
    const OperationContext& context, const CIMName& methodName,
    const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _getReplicationRelationships\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;
    const bool isInstancesMethod =
        methodName.equal(CIMName("GetReplicationRelationshipInstances"));

    Filter type{"Type"}, syncType{"SyncType"}, mode{"Mode"}, locality{"Locality"},
        copyState{"CopyState"};
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
    bool findsNothing =
        (type.set && type.value != RELATIONSHIP_OTHER && type.value != RELATIONSHIP_GROUP) ||
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
        Array<CIMInstance> syncInsts = _cimom.enumerateInstances(context, NAMESPACE,
            CIMName("CIM_Synchronized"), false, false, false, false, CIMPropertyList());
        for (Uint32 i = 0; i < syncInsts.size(); i++)
        {
            CIMInstance& instance = syncInsts[i];
            const CIMName className = instance.getClassName();
            const bool isGroup = className.equal(REMOTE_GROUP_SYNC);
            if (type.set && (type.value == RELATIONSHIP_GROUP) != isGroup)
                continue;
            if (locality.set &&
                !(locality.value == LOCALITY_REMOTE
                        ? isGroup || className.equal(REMOTE_VOLUME_SYNC)
                        : className.equal(LOCAL_VOLUME_SYNC)))
                continue;
            if (!passes(instance, syncType) || !passes(instance, mode) ||
                !passes(instance, copyState))
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

void ZDA_ReplicationServiceProvider::_getPeerSystems(const OperationContext&,
    const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _getPeerSystems\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    Uint16 options = PEERS_ALL;
    if (inParameters.size() == 0)
    {
        log_message(2, " Invalid number of parameters\n");
        outstatus = 5;
        errStr = "Invalid number of parameters";
    }
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

void ZDA_ReplicationServiceProvider::_getServiceAccessPoints(const OperationContext&,
    const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceProvider:: _getServiceAccessPoints\n");
    Uint32 outstatus = 0;
    String errStr;
    Array<CIMParamValue> paramValues;

    CIMObjectPath systemRef;
    Boolean systemGiven = false;
    if (inParameters.size() == 0)
    {
        log_message(2, " Invalid number of parameters\n");
        outstatus = 5;
        errStr = "Invalid number of parameters";
    }
    for (Uint32 i = 0; i < inParameters.size() && outstatus == 0; i++)
    {
        const CIMValue value = inParameters[i].getValue();
        if (value.isNull() || !String::equalNoCase(inParameters[i].getParameterName(), "System"))
            continue;
        value.get(systemRef);
        // A peer system lives on another host: the reference is checked
        // against its own host, for namespace and class.
        String peerHost = systemRef.getHost();
        systemGiven = ZDA_Common::verifyRefMethodParam(systemRef, NAMESPACE, peerHost,
            CIMName(SYSTEM_CLASS));
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

PEGASUS_NAMESPACE_END
