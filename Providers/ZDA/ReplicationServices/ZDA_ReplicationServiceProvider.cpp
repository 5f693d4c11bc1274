// The replication service: its one instance, the method table and the
// routines its method handlers share.
#include "ZDA_ReplicationServiceProvider.h"

#include <cstring>

#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_ConcreteJobProvider.h"
#include "ZDA_StorageConfigurationServiceProvider.h"

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
    log_message(4, "<-- ZDA_ReplicationServiceProvider::%s()\n", handlerName);
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
    {nullptr, nullptr, 0, nullptr}  // end of the table
};

PEGASUS_NAMESPACE_END
