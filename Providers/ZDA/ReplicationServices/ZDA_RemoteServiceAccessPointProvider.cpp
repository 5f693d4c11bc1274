// Remote service access points: the array's remote copy targets as
// ZDA_RemoteServiceAccessPoint instances, and the target a client's access
// point stands for.
#include "ZDA_RemoteServiceAccessPointProvider.h"

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

const String ClassName = "ZDA_RemoteServiceAccessPoint";
const char SOURCE_FILE[] = "ZDA_RemoteServiceAccessPointProvider";
const char SYSTEM_CLASS[] = "ZDA_StorageSystem";

const std::vector<const char*> ACCEPTED_CLASSES = {
    "CIM_RemoteServiceAccessPoint", "ZDA_RemoteServiceAccessPoint"};

// InfoFormat "Other", ProtocolIFType "Other" (told by OtherTypeDescription).
const Uint16 INFO_FORMAT_OTHER = 2;
const Uint16 PROTOCOL_IF_TYPE_OTHER = 1;

// OperationalStatus and HealthState values.
const Uint16 OP_UNKNOWN = 0;
const Uint16 OP_OK = 2;
const Uint16 OP_ERROR = 6;
const Uint16 OP_STARTING = 8;
const Uint16 OP_STOPPED = 10;
const Uint16 OP_LOST_COMMUNICATION = 13;
const Uint16 HEALTH_UNKNOWN = 0;
const Uint16 HEALTH_OK = 5;
const Uint16 HEALTH_MINOR_FAILURE = 15;
const Uint16 HEALTH_MAJOR_FAILURE = 20;
const Uint16 HEALTH_CRITICAL_FAILURE = 25;

// Synchronization modes a caller may ask a target for.
const Uint16 MODE_SYNCHRONOUS = 2;
const Uint16 MODE_ASYNCHRONOUS = 3;

bool usable(const rm_target_t& target)
{
    return !(target.rm_options & RM_TARGET_OPT_UNUSABLE) && target.rm_status == RM_TARGET_READY;
}

// The target's flags name the mode asked for.
bool suitsModeByFlag(const rm_target_t& target, Uint16 mode)
{
    return (mode == MODE_ASYNCHRONOUS && (target.rm_flags & RM_TARGET_FLAG_ASYNC)) ||
        (mode == MODE_SYNCHRONOUS && (target.rm_flags & RM_TARGET_FLAG_SYNC));
}

// The target's flags name no mode: it suits every one.
bool suitsAnyMode(const rm_target_t& target)
{
    return (target.rm_flags & RM_TARGET_FLAG_MODE_MASK) == 0;
}

}  // namespace

namespace
{

// The names and the walk the read operations run with.
const WalkedClass WALKED = {SOURCE_FILE, ClassName, ACCEPTED_CLASSES, 4, " Expect four keys.",
    &ZDA_RemoteServiceAccessPointProvider::deliverInstances};

}  // namespace

ZDA_RemoteServiceAccessPointProvider::ZDA_RemoteServiceAccessPointProvider() = default;

ZDA_RemoteServiceAccessPointProvider::ZDA_RemoteServiceAccessPointProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ZDA_RemoteServiceAccessPointProvider::~ZDA_RemoteServiceAccessPointProvider() = default;

CIMObjectPath ZDA_RemoteServiceAccessPointProvider::buildObjectPath(String systemName, String targetName)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("SystemCreationClassName", SYSTEM_CLASS, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("SystemName", systemName, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("CreationClassName", ClassName, CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("Name", targetName, CIMKeyBinding::STRING));
    return CIMObjectPath(systemName, NAMESPACE, ClassName, keys);
}

Array<Uint16> ZDA_RemoteServiceAccessPointProvider::_getOperationalStatus(rm_target_t* pTarget)
{
    Array<Uint16> status;
    if (pTarget->rm_options & RM_TARGET_OPT_UNUSABLE)
        status.append(OP_STOPPED);
    switch (pTarget->rm_status)
    {
    case RM_TARGET_NEW: status.append(OP_STARTING); break;
    case RM_TARGET_READY: status.append(OP_OK); break;
    case RM_TARGET_RELEASE_UNSUPPORTED: status.append(OP_ERROR); break;
    case RM_TARGET_FAILING:
    case RM_TARGET_FAILED: status.append(OP_LOST_COMMUNICATION); break;
    case RM_TARGET_DISABLED: status.append(OP_STOPPED); break;
    default: status.append(OP_UNKNOWN); break;
    }
    return status;
}

Uint16 ZDA_RemoteServiceAccessPointProvider::_getHealthState(rm_target_t* pTarget)
{
    switch (pTarget->rm_status)
    {
    case RM_TARGET_NEW:
    case RM_TARGET_READY: return HEALTH_OK;
    case RM_TARGET_RELEASE_UNSUPPORTED: return HEALTH_CRITICAL_FAILURE;
    case RM_TARGET_FAILING: return HEALTH_MINOR_FAILURE;
    case RM_TARGET_FAILED: return HEALTH_MAJOR_FAILURE;
    default: return HEALTH_UNKNOWN;
    }
}

CIMInstance ZDA_RemoteServiceAccessPointProvider::buildInstance(
    rm_target_t* pTarget, CIMClass& remoteSAPClass, const String& systemName)
{
    const String name = pTarget->rm_hdr.rm_name;
    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(remoteSAPClass);
    ZDA_Common::setPropertyValue(instance, "SystemCreationClassName", SYSTEM_CLASS);
    ZDA_Common::setPropertyValue(instance, "SystemName", systemName);
    ZDA_Common::setPropertyValue(instance, "CreationClassName", remoteSAPClass.getClassName().getString());
    ZDA_Common::setPropertyValue(instance, "Name", name);
    ZDA_Common::setPropertyValue(instance, "AccessInfo", name);
    ZDA_Common::setPropertyValue(instance, "InfoFormat", INFO_FORMAT_OTHER);
    ZDA_Common::setPropertyValue(instance, "ProtocolIFType", PROTOCOL_IF_TYPE_OTHER);
    ZDA_Common::setPropertyValue(instance, "OtherTypeDescription", "RCopy");
    ZDA_Common::setPropertyValue(instance, "Caption", name);
    ZDA_Common::setPropertyValue(instance, "OperationalStatus", _getOperationalStatus(pTarget));
    ZDA_Common::setPropertyValue(instance, "HealthState", _getHealthState(pTarget));
    instance.setPath(buildObjectPath(systemName, name));
    return instance;
}

void ZDA_RemoteServiceAccessPointProvider::deliverInstances(CIMOMHandle& cimom, const OperationContext&,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, const String& systemAddress, cim_method_e method,
    cim_handler_u handler)
{
    log_message(4, "--> ZDA_RemoteServiceAccessPointProvider::deliverInstances()\n");
    ZDA_Common::handleProcessing(handler, method);
    CIMClass sapClass = moduleClass(cimom, ClassName, includeQualifiers, includeClassOrigin, propertyList);
    bool found = false;
    bool isGetInstance = false;
    bool readable = true;
    String targetName;
    if (!instanceReference.getClassName().isNull())
    {
        targetName = ZDA_Common::getStringProperty(instanceReference, "Name");
        if (targetName.size() == 0)
        {
            log_message(2, "--> ZDA_RemoteServiceAccessPointProvider::deliverInstances()  NULL Name\n");
            readable = false;
        }
        isGetInstance = true;
    }
    RCopySnapshot snapshot;
    if (readable && readForWalk(snapshot, API_RCOPY_QUERY_TYPE_TARGETS, SOURCE_FILE))
    {
        // Only Name tells the targets apart: the other keys are this
        // array's and not compared.
        const CString wanted = targetName.getCString();
        for (int i = 0; i < snapshot.rcopy.target_count; i++)
        {
            rm_target_t& target = snapshot.rcopy.targets[i];
            if (isGetInstance && std::strcmp(target.rm_hdr.rm_name, wanted) != 0)
                continue;
            ZDA_Common::handleDeliver(handler, method, buildInstance(&target, sapClass, systemAddress));
            found = true;
            if (isGetInstance)
                break;
        }
    }
    endWalk(SOURCE_FILE, ClassName, handler, method, found);
    log_message(4, "<-- ZDA_RemoteServiceAccessPointProvider::deliverInstances()\n");
}

bool ZDA_RemoteServiceAccessPointProvider::getRcopyTargetFromSAP(
    String& targetNameOut, const CIMObjectPath& targetSAPRef, Uint16 mode, String& errStr)
{
    const String sapName = ZDA_Common::getStringProperty(targetSAPRef, "Name");
    if (sapName.size() == 0)
    {
        log_message(2,
            "ZDA_ReplicationServiceProvider::_getRcopyTargetFromSAP(): the TargetAccessPoint is not valid %s\n",
            (const char*)targetSAPRef.toString().getCString());
        errStr = "reference is not valid";
        return false;
    }
    RCopySnapshot snapshot;
    if (snapshot.read(API_RCOPY_QUERY_TYPE_TARGETS).code != 0)
    {
        log_message(2, "api_getRCopy error\n");
        errStr = "Problem getting rcopy information";
        return false;
    }

    const CString wanted = sapName.getCString();
    const rm_target_t* chosen = nullptr;
    for (int i = 0; i < snapshot.rcopy.target_count && !chosen; i++)
    {
        const rm_target_t& target = snapshot.rcopy.targets[i];
        if (usable(target) && std::strcmp(target.rm_hdr.rm_name, wanted) == 0)
            chosen = &target;
    }
    if (!chosen)
    {
        errStr = "No remote copy target is configured for provided Service Access Point";
        return false;
    }
    targetNameOut = chosen->rm_hdr.rm_name;
    if (mode == 0 || suitsModeByFlag(*chosen, mode) || suitsAnyMode(*chosen))
        return true;

    // The named target cannot copy in this mode: another target to the same
    // remote system may. One that names the mode wins at once; one that
    // suits any mode is taken only when none does.
    bool anyModeFound = false;
    for (int i = 0; i < snapshot.rcopy.target_count; i++)
    {
        const rm_target_t& target = snapshot.rcopy.targets[i];
        if (&target == chosen || !usable(target) || target.rm_remote_sysID != chosen->rm_remote_sysID)
            continue;
        targetNameOut = target.rm_hdr.rm_name;
        if (suitsModeByFlag(target, mode))
            return true;
        anyModeFound = anyModeFound || suitsAnyMode(target);
    }
    if (anyModeFound)
        return true;
    errStr = "The target access point " + sapName +
        " is not currently available with the requested synchronization";
    return false;
}

bool ZDA_RemoteServiceAccessPointProvider::getRcopyTargetFromSAP(
    String& targetNameOut, const CIMObjectPath& targetSAPRef, String& errStr)
{
    return getRcopyTargetFromSAP(targetNameOut, targetSAPRef, 0, errStr);
}

void ZDA_RemoteServiceAccessPointProvider::initialize(CIMOMHandle& cimom)
{
    _cimom = cimom;
    _systemAddress = ZDA_Common::getSystemHostName(cimom);
}

void ZDA_RemoteServiceAccessPointProvider::terminate()
{
    delete this;
}

void ZDA_RemoteServiceAccessPointProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    walkGetInstance(WALKED, _cimom, context, instanceReference, includeQualifiers, includeClassOrigin,
        propertyList, _systemAddress, handler, __LINE__);
}

void ZDA_RemoteServiceAccessPointProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    walkEnumerateInstances(WALKED, _cimom, context, classReference, includeQualifiers, includeClassOrigin,
        propertyList, _systemAddress, handler, __LINE__);
}

void ZDA_RemoteServiceAccessPointProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    walkEnumerateInstanceNames(WALKED, _cimom, context, classReference, _systemAddress, handler, __LINE__);
}

void ZDA_RemoteServiceAccessPointProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw notSupported(ClassName, "modifyInstance");
}

void ZDA_RemoteServiceAccessPointProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw notSupported(ClassName, "createInstance");
}

void ZDA_RemoteServiceAccessPointProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw notSupported(ClassName, "deleteInstance");
}

void ZDA_RemoteServiceAccessPointProvider::invokeMethod(const OperationContext&, const CIMObjectPath&,
    const CIMName&, const Array<CIMParamValue>&, MethodResultResponseHandler&)
{
    throw notSupported(ClassName, "invokeMethod");
}

PEGASUS_NAMESPACE_END
