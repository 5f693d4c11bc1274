// The replication capabilities: one fixed instance, fixed tables by
// replication type, and the array's limits.
#include "ZDA_ReplicationServiceCapabilitiesProvider.h"

#include <algorithm>
#include <atomic>
#include <initializer_list>
#include <vector>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_MethodAuthorization.h"
#include "zdaapi.h"

PEGASUS_NAMESPACE_BEGIN

using ZDA_CompanionFrame::callUnderSemaphore;

namespace
{

const String ClassName = "ZDA_ReplicationServiceCapabilities";
const char SOURCE_FILE[] = "ZDA_ReplicationServiceCapabilitiesProvider";
const char CAPS_NAMESPACE[] = "root/zda";
const char INSTANCE_ID[] = "KX_ORLA:ReplicationServiceCapabilities";

// Method return values.
const Uint32 RC_OK = 0;
const Uint32 RC_NOT_SUPPORTED = 1;
const Uint32 RC_INVALID_PARAMETER = 5;

// The only synchronization class whose operations are described.
const Uint16 STORAGE_SYNCHRONIZED = 2;
// LocalOrRemote values.
const Uint16 LOCAL = 2;
const Uint16 REMOTE = 3;
// Groups made by the replication service persist.
const Uint16 GROUP_PERSISTENT = 2;

typedef std::vector<Uint16> Values;

// What the array supports for one replication type. Every list is in the
// order of the reply.
struct ReplicationTypeRow
{
    Uint16 replicationType;
    Uint16 syncType;  // 6 mirror, 7 snapshot, 8 clone
    Uint16 mode;      // 2 synchronous, 3 asynchronous
    Uint16 localOrRemote;
    Values features;
    Values groupFeatures;
    Values copyStates;
    std::vector<bool> hostAccessible;  // one per copy state
    Values groupCopyStates;
    Values operations;  // for one synchronization and for a list alike
    bool groupOperationsSupported;
    Values groupOperations;
    Values consistency;
    Values thinProvisioningFeatures;
    // Setting-data values by property number 2 to 9 (see kSettingDataNames).
    std::vector<Uint64> settingData;
};

const ReplicationTypeRow kReplicationTypes[] = {
    {4, 6, 2, REMOTE, {2, 6, 7, 8, 16, 17}, {2, 4, 5, 11, 14, 18, 34, 40, 59, 60},
        {2, 11, 3, 4, 5, 7, 10, 13}, {true, true, true, true, true, true, true, true},
        {2, 11, 3, 4, 5, 7, 10, 13, 14}, {}, true, {4, 8, 10, 11, 14, 20, 21}, {2}, {2, 3},
        {3, 5, 1, 3, 2, 2, 5, 3}},
    {5, 6, 3, REMOTE, {2, 6, 7, 8, 16, 17}, {2, 4, 5, 11, 14, 18, 34, 40, 59, 60},
        {2, 11, 3, 4, 5, 7, 10, 13}, {true, true, true, true, true, true, true, true},
        {2, 11, 3, 4, 5, 7, 10, 13, 14}, {}, true, {4, 8, 10, 11, 14, 20, 21}, {2}, {2, 3},
        {3, 8, 1, 3, 2, 2, 5, 3}},
    {6, 7, 2, LOCAL, {2, 10, 16}, {3, 4, 11, 14}, {3, 4, 5}, {true, true, false}, {}, {8, 9, 15, 19}, true,
        {19}, {2}, {}, {3, 4, 1, 3, 2, 2, 7, 3}},
    {10, 8, 2, LOCAL, {2, 8, 18}, {3, 4, 8, 11, 12, 14, 16}, {2, 3, 4}, {false, false, false}, {}, {2}, false,
        {}, {2}, {2, 3}, {3, 9, 1, 3, 2, 2, 5, 3}},
    {11, 8, 3, LOCAL, {2, 3, 8, 16}, {3, 4, 8, 11, 12, 14}, {2, 3, 4, 5, 8},
        {false, false, false, false, false}, {}, {14, 8, 9, 2}, false, {}, {2}, {2, 3},
        {3, 9, 1, 3, 2, 2, 5, 3}},
};

// Properties of CIM_ReplicationSettingData by number, from 2.
const char* const kSettingDataNames[] = {"ConsistentPointInTime", "DesiredCopyMethodology", "Multihop",
    "OnGroupOrListError", "UnequalGroupsAction", "TargetElementSupplier", "ThinProvisioningPolicy",
    "Pairing"};
const Uint16 FIRST_SETTING = 2;
const Uint16 LAST_SETTING = 9;

// The copy states a wait may name, by replication type and the method
// (MethodName) that waits.
struct WaitForCopyStatesRow
{
    Values replicationTypes;
    Values methods;
    Values copyStates;
};

const WaitForCopyStatesRow kWaitForCopyStates[] = {
    {{6}, {2, 3, 4, 5}, {4}},
    {{10}, {2, 3}, {4}},
    {{10}, {4, 5}, {}},
    {{11}, {2, 3, 4, 5}, {8}},
    {{4, 5}, {3}, {3}},
    {{4, 5}, {4}, {3, 4, 7, 10}},
};

// Where a maximum comes from.
enum class Source
{
    Constant,         // the number given
    BaseVolumes,      // maxBaseVol
    RWSnapshots,      // maxRWSnapshots
    SnapshotVolumes,  // the smaller of maxVol - maxBaseVol and maxBaseVol
    RemoteCopyVar     // getRemoteCopyMaxVar(the number given)
};

struct MaximumCell
{
    Source source;
    Uint32 number;
};

const MaximumCell BASE = {Source::BaseVolumes, 0};
const MaximumCell RW = {Source::RWSnapshots, 0};
const MaximumCell SNAPSHOTS = {Source::SnapshotVolumes, 0};
MaximumCell constant(Uint32 n)
{
    return {Source::Constant, n};
}
MaximumCell remoteVar(Uint32 var)
{
    return {Source::RemoteCopyVar, var};
}

// GetSupportedMaximum by Component (2 to 9), one cell per replication type
// in the order of kReplicationTypes: 4, 5, 6, 10, 11. The asynchronous
// mirror reads the periodic limits.
struct MaximumRow
{
    Uint16 component;
    MaximumCell cells[5];
};

const MaximumRow kMaximums[] = {
    {2, {remoteVar(ZDA_RM_MAX_GROUPS_SYNC), remoteVar(ZDA_RM_MAX_GROUPS_PERIODIC), SNAPSHOTS, BASE, BASE}},
    {3, {remoteVar(ZDA_RM_GROUP_MAX_VOLUMES), remoteVar(ZDA_RM_GROUP_MAX_VOLUMES), BASE, BASE, BASE}},
    {4, {remoteVar(ZDA_RM_GROUP_MAX_VOLUMES), remoteVar(ZDA_RM_GROUP_MAX_VOLUMES), BASE, BASE, BASE}},
    {5, {constant(1), constant(1), RW, BASE, BASE}},
    {6, {remoteVar(ZDA_RM_MAX_VOLUMES_SYNC), remoteVar(ZDA_RM_MAX_VOLUMES_PERIODIC), BASE, BASE, BASE}},
    {7, {remoteVar(ZDA_RM_MAX_VOLUMES_SYNC), remoteVar(ZDA_RM_MAX_VOLUMES_PERIODIC), BASE, BASE, BASE}},
    {8, {constant(2), constant(8), constant(0), constant(0), constant(0)}},
    {9, {constant(1), constant(1), RW, constant(1), BASE}},
};

// The row of a replication type; null for a type the array does not offer.
const ReplicationTypeRow* replicationTypeRow(Uint16 replicationType)
{
    for (const ReplicationTypeRow& row : kReplicationTypes)
        if (row.replicationType == replicationType)
            return &row;
    return nullptr;
}

bool contains(const Values& values, Uint16 value)
{
    for (Uint16 v : values)
        if (v == value)
            return true;
    return false;
}

Array<Uint16> toArray(const Values& values)
{
    Array<Uint16> out;
    for (Uint16 v : values)
        out.append(v);
    return out;
}

// The Uint16 inputs a handler reads, in the order of their names. The walk
// logs every parameter; a name is matched without case, and a null value
// leaves its input unset.
class Inputs
{
public:
    Inputs(const Array<CIMParamValue>& inParameters, std::initializer_list<const char*> names)
        : _names(names), _set(names.size(), false), _values(names.size(), 0)
    {
        for (Uint32 i = 0; i < inParameters.size(); i++)
        {
            const String name = inParameters[i].getParameterName();
            log_message(4, "Param %s\n", (const char*)name.getCString());
            for (size_t n = 0; n < _names.size(); n++)
            {
                const CIMValue value = inParameters[i].getValue();
                if (String::equalNoCase(name, _names[n]) && !value.isNull())
                {
                    value.get(_values[n]);
                    _set[n] = true;
                }
            }
        }
    }

    bool has(size_t n) const { return _set[n]; }
    Uint16 operator[](size_t n) const { return _values[n]; }
    // True when the first `count` inputs are all set.
    bool hasFirst(size_t count) const
    {
        for (size_t n = 0; n < count; n++)
            if (!_set[n])
                return false;
        return true;
    }

private:
    std::vector<const char*> _names;
    std::vector<bool> _set;
    std::vector<Uint16> _values;
};

// A handler's answer: its return value and, with 0, its outputs.
struct Reply
{
    Uint32 status = RC_OK;
    Array<CIMParamValue> outputs;

    void add(const char* name, const CIMValue& value) { outputs.append(CIMParamValue(name, value, true)); }
};

// The closing of every handler: processing, the outputs (only with 0),
// the return value as a Uint32, complete.
void deliverReply(MethodResultResponseHandler& handler, const Reply& reply, const char* handlerName)
{
    handler.processing();
    if (reply.status == RC_OK)
        for (Uint32 i = 0; i < reply.outputs.size(); i++)
            handler.deliverParamValue(reply.outputs[i]);
    handler.deliver(CIMValue(reply.status));
    handler.complete();
    log_message(4, "Overall status of the operation = %d\n", reply.status);
    log_message(4, "<-- ZDA_ReplicationServiceCapabilitiesProvider:: %s\n", handlerName);
}

// The shape every table handler shares: without parameters the call is
// invalid (5); without its first `mandatory` inputs it is invalid too,
// logged with `missingText`; otherwise `answer(inputs, reply)` fills the
// reply.
template <class Answer>
void answerMethod(const char* handlerName, const Array<CIMParamValue>& inParameters,
    std::initializer_list<const char*> names, size_t mandatory, const char* missingText,
    MethodResultResponseHandler& handler, Answer answer)
{
    log_message(4, "--> ZDA_ReplicationServiceCapabilitiesProvider:: %s\n", handlerName);
    Reply reply;
    if (inParameters.size() > 0)
    {
        Inputs inputs(inParameters, names);
        if (!inputs.hasFirst(mandatory))
        {
            log_message(2, "%s", missingText);
            reply.status = RC_INVALID_PARAMETER;
        }
        else
        {
            answer(inputs, reply);
        }
    }
    else
    {
        log_message(2, " Invalid number of parameters\n");
        reply.status = RC_INVALID_PARAMETER;
    }
    deliverReply(handler, reply, handlerName);
}

const char REPLICATION_TYPE_IS_MANDATORY[] = "ReplicationType is mandatory\n";

// The handlers that answer one list of the replication type's row under
// one output name.
void answerTypeList(const char* handlerName, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler, const char* output, Values ReplicationTypeRow::*list)
{
    answerMethod(handlerName, inParameters, {"ReplicationType"}, 1, REPLICATION_TYPE_IS_MANDATORY, handler,
        [&](const Inputs& in, Reply& reply) {
            const ReplicationTypeRow* row = replicationTypeRow(in[0]);
            if (!row)
                reply.status = RC_NOT_SUPPORTED;
            else
                reply.add(output, CIMValue(toArray(row->*list)));
        });
}

// Identity of the request: the user and the client's address.
void identityOf(const OperationContext& context, String& userName, String& ipAddr)
{
    if (!context.contains(IdentityContainer::NAME))
        return;
    IdentityContainer identity(context.get(IdentityContainer::NAME));
    userName = identity.getUserName();
    ipAddr = identity.getIpAddress();
}

// Answers a method the provider has nothing for: 1, without processing.
void answerNotSupported(MethodResultResponseHandler& handler)
{
    handler.deliver(CIMValue(RC_NOT_SUPPORTED));
    handler.complete();
}

}  // namespace

ZDA_ReplicationServiceCapabilitiesProvider::ZDA_ReplicationServiceCapabilitiesProvider() = default;

ZDA_ReplicationServiceCapabilitiesProvider::ZDA_ReplicationServiceCapabilitiesProvider(const CIMObjectPath&)
{
    throw CIMNotSupportedException(ClassName + " does not support constructor with object path.");
}

ZDA_ReplicationServiceCapabilitiesProvider::~ZDA_ReplicationServiceCapabilitiesProvider() = default;

Uint32 ZDA_ReplicationServiceCapabilitiesProvider::getRemoteCopyMaxVar(int vartype)
{
    // Kept for the process once non-zero; a limit that reads 0 is asked
    // again. Atomic, so that threads reading and filling them race safely.
    static std::atomic<Uint32> limits[ZDA_RM_GROUP_MAX_VOLUMES + 1];
    if (vartype < ZDA_RM_MAX_GROUPS_SYNC || vartype > ZDA_RM_GROUP_MAX_VOLUMES)
    {
        log_message(2, "ZDA_ReplicationServiceCapabilities::getRemoteCopyMaxVAR, invalid var type!\n");
        return 0;
    }
    std::atomic<Uint32>& limit = limits[vartype];
    if (limit.load(std::memory_order_relaxed) == 0)
    {
        uint32_t value = 0;
        callUnderSemaphore([&] { return api_getmvar(vartype, &value); });
        limit.store(value, std::memory_order_relaxed);
    }
    return limit.load(std::memory_order_relaxed);
}

void ZDA_ReplicationServiceCapabilitiesProvider::initialize(CIMOMHandle& cimom)
{
    log_message(4, "--> ZDA_ReplicationServiceCapabilitiesProvider::initialize(cimom)\n");
    _cimom = cimom;
    _hostName = ZDA_Common::getSystemHostName(cimom);
    _buildInstanceName();
    log_message(4, "<-- ZDA_ReplicationServiceCapabilitiesProvider::initialize(cimom)\n");
}

void ZDA_ReplicationServiceCapabilitiesProvider::terminate()
{
    delete this;
}

void ZDA_ReplicationServiceCapabilitiesProvider::_buildInstanceName()
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("InstanceID", INSTANCE_ID, CIMKeyBinding::STRING));
    _instanceName = CIMObjectPath(_hostName, CIMNamespaceName(CAPS_NAMESPACE), CIMName(ClassName), keys);
}

CIMInstance ZDA_ReplicationServiceCapabilitiesProvider::_buildInstance(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    CIMClass capsClass = ZDA_Common::getStoredCIMClass(_cimom, OperationContext(), CAPS_NAMESPACE, ClassName,
        false, includeQualifiers, includeClassOrigin, propertyList);
    CIMInstance instance = ZDA_Common::buildInstanceSkeleton(capsClass);
    ZDA_Common::setPropertyValue(instance, "InstanceID", INSTANCE_ID);
    ZDA_Common::setPropertyValue(instance, "ElementName", "Capabililites of ReplicationServiceCapabilities");
    ZDA_Common::setPropertyValue(instance, "SupportedSynchronousActions",
        toArray({2, 3, 5, 6, 8, 9, 10, 11, 12, 13, 14, 15, 19, 20, 21}));
    ZDA_Common::setPropertyValue(instance, "SupportedAsynchronousActions", toArray({2, 5, 6, 19, 20}));
    Values types;
    for (const ReplicationTypeRow& row : kReplicationTypes)
        types.push_back(row.replicationType);
    ZDA_Common::setPropertyValue(instance, "SupportedReplicationTypes", toArray(types));
    ZDA_Common::setPropertyValue(instance, "SupportedStorageObjects", toArray({2}));
    instance.setPath(_instanceName);
    return instance;
}

void ZDA_ReplicationServiceCapabilitiesProvider::getInstance(const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceCapabilitiesProvider::getInstance()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (instanceReference.getKeyBindings().size() != 1)
    {
        log_message(
            2, "ZDA_ReplicationServiceCapabilitiesProvider::getInstance(): Invalid number of keys.\n");
        throw CIMInvalidParameterException(ClassName + " Expect only one key.");
    }
    if (!ZDA_Common::matchObjectPath(instanceReference, _instanceName))
    {
        log_message(2, "ZDA_ReplicationServiceCapabilitiesProvider::getInstance() instance not found: %s \n",
            (const char*)instanceReference.toString().getCString());
        throw CIMObjectNotFoundException("The requested ReplicationServiceCapabilities does not exists.");
    }
    CIMInstance instance = _buildInstance(includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    handler.deliver(instance);
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationServiceCapabilitiesProvider::getInstance()\n");
}

namespace
{

bool isCapabilitiesClass(const CIMObjectPath& classReference)
{
    const CIMName className = classReference.getClassName();
    return className.equal(ClassName) || className.equal("CIM_ReplicationServiceCapabilities");
}

}  // namespace

void ZDA_ReplicationServiceCapabilitiesProvider::enumerateInstances(const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, InstanceResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceCapabilitiesProvider::enumerateInstances()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (!isCapabilitiesClass(classReference))
        return;
    CIMInstance instance = _buildInstance(includeQualifiers, includeClassOrigin, propertyList);
    handler.processing();
    handler.deliver(instance);
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationServiceCapabilitiesProvider::enumerateInstances()\n");
}

void ZDA_ReplicationServiceCapabilitiesProvider::enumerateInstanceNames(
    const OperationContext& context, const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)
{
    log_message(4, "--> ZDA_ReplicationServiceCapabilitiesProvider::enumerateInstanceNames()\n");
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    if (!isCapabilitiesClass(classReference))
        return;
    handler.processing();
    handler.deliver(_instanceName);
    handler.complete();
    log_message(4, "<-- ZDA_ReplicationServiceCapabilitiesProvider::enumerateInstanceNames()\n");
}

void ZDA_ReplicationServiceCapabilitiesProvider::modifyInstance(const OperationContext&, const CIMObjectPath&,
    const CIMInstance&, const Boolean, const CIMPropertyList&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support modifyInstance.");
}

void ZDA_ReplicationServiceCapabilitiesProvider::createInstance(
    const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support createInstance.");
}

void ZDA_ReplicationServiceCapabilitiesProvider::deleteInstance(
    const OperationContext&, const CIMObjectPath&, ResponseHandler&)
{
    throw CIMNotSupportedException(ClassName + " does not support deleteInstance.");
}

void ZDA_ReplicationServiceCapabilitiesProvider::invokeMethod(const OperationContext& context,
    const CIMObjectPath& objectReference, const CIMName& methodName, const Array<CIMParamValue>& inParameters,
    MethodResultResponseHandler& handler)
{
    typedef ZDA_ReplicationServiceCapabilitiesProvider Self;
    typedef void (*MethodHandler)(Self&, const OperationContext&, const CIMName&, const Array<CIMParamValue>&,
        MethodResultResponseHandler&);
    // Tried from the top; the first row naming the method answers it. A
    // row without a handler answers 1. "GetSupportedGroupCopyStates" stands
    // in two rows: the first one answers it.
    struct MethodRow
    {
        const char* name;
        const char* otherName;
        MethodHandler handle;
    };
    static const MethodRow kMethods[] = {
        {"ConvertSyncTypeToReplicationType", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._convertSyncTypeToReplicationType(c, in, h); }},
        {"ConvertReplicationTypeToSyncType", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._convertReplicationTypeToSyncType(c, in, h); }},
        {"GetSupportedFeatures", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getSupportedFeatures(c, in, h); }},
        {"GetSupportedGroupFeatures", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getSupportedGroupFeatures(c, in, h); }},
        {"GetSupportedCopyStates", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getSupportedCopyStates(c, in, h); }},
        {"GetSupportedGroupCopyStates", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getSupportedGroupCopyStates(c, in, h); }},
        {"GetSupportedGroupCopyStates", "GetSupportedSettingsDefineStateOperations", nullptr},
        {"GetSupportedWaitForCopyStates", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getSupportedWaitForCopyStates(c, in, h); }},
        {"GetSupportedConsistency", "GetDefaultConsistency",
            [](Self& p, const OperationContext& c, const CIMName& m, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getSupportedConsistency(c, m, in, h); }},
        {"GetSupportedOperations", "GetSupportedListOperations",
            [](Self& p, const OperationContext& c, const CIMName& m, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getSupportedOperations(c, m, in, h); }},
        {"GetSupportedGroupOperations", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getSupportedGroupOperations(c, in, h); }},
        {"GetDefaultGroupPersistency", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getDefaultGroupPersistency(c, in, h); }},
        {"GetSupportedReplicationSettingData", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getSupportedReplicationSettingData(c, in, h); }},
        {"GetDefaultReplicationSettingData", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getDefaultReplicationSettingData(c, in, h); }},
        {"GetSupportedThinProvisioningFeatures", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getSupportedThinProvisioningFeatures(c, in, h); }},
        {"GetSupportedMaximum", nullptr,
            [](Self& p, const OperationContext& c, const CIMName&, const Array<CIMParamValue>& in,
                MethodResultResponseHandler& h) { p._getSupportedMaximum(c, in, h); }},
    };

    String userName;
    String ipAddr;
    identityOf(context, userName, ipAddr);
    log_message(4, "--> ZDA_ReplicationServiceCapabilitiesProvider::invokeMethod(), methodName = %s \n",
        (const char*)methodName.getString().getCString());
    ZDA_CompanionFrame::openArrayForCaller(context, SOURCE_FILE, __LINE__);
    requireAuthorized(authorizeMethod(AUTH_REPLICATION_CAPABILITIES, userName, ipAddr, inParameters),
        SOURCE_FILE, __LINE__);
    if (!ZDA_Common::matchObjectPath(objectReference, _instanceName))
        throw CIMObjectNotFoundException(ClassName + " CIM Object not found.");

    for (const MethodRow& row : kMethods)
    {
        if (methodName.equal(row.name) || (row.otherName && methodName.equal(row.otherName)))
        {
            if (row.handle)
                row.handle(*this, context, methodName, inParameters, handler);
            else
                answerNotSupported(handler);
            log_message(4, "<-- ZDA_ReplicationServiceCapabilitiesProvider::invokeMethod()\n");
            return;
        }
    }
    log_message(2, " unknown method %s\n", (const char*)methodName.getString().getCString());
    answerNotSupported(handler);
    log_message(4, "<-- ZDA_ReplicationServiceCapabilitiesProvider::invokeMethod()\n");
}

void ZDA_ReplicationServiceCapabilitiesProvider::_convertSyncTypeToReplicationType(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerMethod("_convertSyncTypeToReplicationType", inParameters, {"SyncType", "Mode", "LocalOrRemote"}, 3,
        "syncType, Mode and LocalOrRemote are mandatory\n", handler, [](const Inputs& in, Reply& reply) {
            if (in[2] != LOCAL && in[2] != REMOTE)
            {
                log_message(2, "Only Local and remote are supported\n");
                reply.status = RC_NOT_SUPPORTED;
                return;
            }
            for (const ReplicationTypeRow& row : kReplicationTypes)
            {
                if (row.syncType == in[0] && row.mode == in[1] && row.localOrRemote == in[2])
                {
                    reply.add("SupportedReplicationTypes", CIMValue(row.replicationType));
                    return;
                }
            }
            reply.status = RC_NOT_SUPPORTED;
        });
}

void ZDA_ReplicationServiceCapabilitiesProvider::_convertReplicationTypeToSyncType(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerMethod("_convertReplicationTypeToSyncType", inParameters, {"ReplicationType"}, 1,
        REPLICATION_TYPE_IS_MANDATORY, handler, [](const Inputs& in, Reply& reply) {
            const ReplicationTypeRow* row = replicationTypeRow(in[0]);
            if (!row)
            {
                reply.status = RC_NOT_SUPPORTED;
                return;
            }
            reply.add("SyncType", CIMValue(row->syncType));
            reply.add("Mode", CIMValue(row->mode));
            reply.add("LocalOrRemote", CIMValue(row->localOrRemote));
        });
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getSupportedFeatures(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerTypeList("_getSupportedFeatures", inParameters, handler, "Features", &ReplicationTypeRow::features);
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getSupportedGroupFeatures(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerTypeList("_getSupportedGroupFeatures", inParameters, handler, "GroupFeatures",
        &ReplicationTypeRow::groupFeatures);
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getSupportedCopyStates(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerMethod("_getSupportedCopyStates", inParameters, {"ReplicationType"}, 1,
        REPLICATION_TYPE_IS_MANDATORY, handler, [](const Inputs& in, Reply& reply) {
            const ReplicationTypeRow* row = replicationTypeRow(in[0]);
            if (!row)
            {
                reply.status = RC_NOT_SUPPORTED;
                return;
            }
            Array<Boolean> hostAccessible;
            for (bool accessible : row->hostAccessible)
                hostAccessible.append(accessible);
            reply.add("SupportedCopyStates", CIMValue(toArray(row->copyStates)));
            reply.add("HostAccessible", CIMValue(hostAccessible));
        });
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getSupportedGroupCopyStates(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerTypeList("_getSupportedGroupCopyStates", inParameters, handler, "SupportedCopyStates",
        &ReplicationTypeRow::groupCopyStates);
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getSupportedWaitForCopyStates(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerMethod("_getSupportedWaitForCopyStates", inParameters, {"ReplicationType", "MethodName"}, 1,
        REPLICATION_TYPE_IS_MANDATORY, handler, [](const Inputs& in, Reply& reply) {
            if (!replicationTypeRow(in[0]))
            {
                reply.status = RC_NOT_SUPPORTED;
                return;
            }
            // A method that waits for nothing of this type is no error:
            // the list stays empty.
            const WaitForCopyStatesRow* found = nullptr;
            for (const WaitForCopyStatesRow& row : kWaitForCopyStates)
            {
                if (contains(row.replicationTypes, in[0]) && in.has(1) && contains(row.methods, in[1]))
                {
                    found = &row;
                    break;
                }
            }
            if (!found)
                log_message(2, "invalid method\n");
            reply.add("SupportedCopyStates", CIMValue(toArray(found ? found->copyStates : Values())));
        });
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getSupportedConsistency(const OperationContext&,
    const CIMName& methodName, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    const bool wantsDefault = methodName.equal("GetDefaultConsistency");
    answerMethod("_getSupportedConsistency", inParameters, {"ReplicationType"}, 1,
        REPLICATION_TYPE_IS_MANDATORY, handler, [&](const Inputs& in, Reply& reply) {
            const ReplicationTypeRow* row = replicationTypeRow(in[0]);
            if (!row)
                reply.status = RC_NOT_SUPPORTED;
            else if (wantsDefault)
                reply.add("DefaultConsistency", CIMValue(row->consistency.front()));
            else
                reply.add("SupportedConsistency", CIMValue(toArray(row->consistency)));
        });
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getSupportedOperations(const OperationContext&,
    const CIMName& methodName, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    const char* output = methodName.equal("GetSupportedListOperations") ? "SupportedListOperations"
                                                                        : "SupportedOperations";
    answerMethod("_getSupportedOperations", inParameters, {"ReplicationType", "SynchronizationType"}, 1,
        REPLICATION_TYPE_IS_MANDATORY, handler, [&](const Inputs& in, Reply& reply) {
            if (in.has(1) && in[1] != STORAGE_SYNCHRONIZED)
            {
                log_message(2, "Only StorageSynchronized class is supported\n");
                reply.status = RC_NOT_SUPPORTED;
                return;
            }
            const ReplicationTypeRow* row = replicationTypeRow(in[0]);
            if (!row)
                reply.status = RC_NOT_SUPPORTED;
            else
                reply.add(output, CIMValue(toArray(row->operations)));
        });
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getSupportedGroupOperations(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerMethod("_getSupportedGroupOperations", inParameters, {"ReplicationType"}, 1,
        REPLICATION_TYPE_IS_MANDATORY, handler, [](const Inputs& in, Reply& reply) {
            const ReplicationTypeRow* row = replicationTypeRow(in[0]);
            if (!row || !row->groupOperationsSupported)
                reply.status = RC_NOT_SUPPORTED;
            else
                reply.add("SupportedGroupOperations", CIMValue(toArray(row->groupOperations)));
        });
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getDefaultGroupPersistency(
    const OperationContext&, const Array<CIMParamValue>&, MethodResultResponseHandler& handler)
{
    const char* handlerName = "_getDefaultGroupPersistency";
    log_message(4, "--> ZDA_ReplicationServiceCapabilitiesProvider:: %s\n", handlerName);
    Reply reply;
    reply.add("DefaultGroupPersistency", CIMValue(GROUP_PERSISTENT));
    deliverReply(handler, reply, handlerName);
}

Uint32 ZDA_ReplicationServiceCapabilitiesProvider::_getReplicationSettingDataSupportedValues(
    Uint16 replicationType, Uint16 propertyName, Array<Uint64>& supportedValues)
{
    const ReplicationTypeRow* row = replicationTypeRow(replicationType);
    if (!row || propertyName < FIRST_SETTING || propertyName > LAST_SETTING)
        return RC_NOT_SUPPORTED;
    supportedValues.append(row->settingData[propertyName - FIRST_SETTING]);
    return RC_OK;
}

String ZDA_ReplicationServiceCapabilitiesProvider::_getReplicationSettingDataPropertyName(Uint16 propertyName)
{
    if (propertyName < FIRST_SETTING || propertyName > LAST_SETTING)
        propertyName = LAST_SETTING;
    return kSettingDataNames[propertyName - FIRST_SETTING];
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getSupportedReplicationSettingData(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerMethod("_getSupportedReplicationSettingData", inParameters, {"ReplicationType", "PropertyName"}, 2,
        "ReplicationType or PropertyName is mandatory\n", handler, [](const Inputs& in, Reply& reply) {
            Array<Uint64> values;
            reply.status = _getReplicationSettingDataSupportedValues(in[0], in[1], values);
            reply.add("SupportedValues", CIMValue(values));
        });
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getDefaultReplicationSettingData(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerMethod("_getDefaultReplicationSettingData", inParameters, {"ReplicationType"}, 1,
        REPLICATION_TYPE_IS_MANDATORY, handler, [](const Inputs& in, Reply& reply) {
            CIMInstance setting("CIM_ReplicationSettingData");
            for (Uint16 property = FIRST_SETTING; property <= LAST_SETTING; property++)
            {
                Array<Uint64> values;
                if (_getReplicationSettingDataSupportedValues(in[0], property, values) != RC_OK)
                {
                    // Only a replication type without settings fails here.
                    log_message(2, "Wrong ReplicationType\n");
                    reply.status = RC_NOT_SUPPORTED;
                    continue;
                }
                setting.addProperty(CIMProperty(
                    CIMName(_getReplicationSettingDataPropertyName(property)), CIMValue(values[0])));
            }
            reply.add("DefaultInstance", CIMValue(setting));
        });
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getSupportedThinProvisioningFeatures(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerTypeList("_getSupportedThinProvisioningFeatures", inParameters, handler,
        "SupportedThinProvisioningFeatures", &ReplicationTypeRow::thinProvisioningFeatures);
}

void ZDA_ReplicationServiceCapabilitiesProvider::_getSupportedMaximum(
    const OperationContext&, const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler)
{
    answerMethod("_getSupportedMaximum", inParameters, {"ReplicationType", "Component"}, 2,
        "ReplicationType and Component is mandatory\n", handler, [](const Inputs& in, Reply& reply) {
            const Uint16 replicationType = in[0];
            const Uint16 component = in[1];
            size_t column = 0;
            while (column < sizeof kReplicationTypes / sizeof kReplicationTypes[0] &&
                kReplicationTypes[column].replicationType != replicationType)
                column++;
            if (column == sizeof kReplicationTypes / sizeof kReplicationTypes[0])
            {
                log_message(2, "ReplicationType %u not supported\n", unsigned(replicationType));
                reply.status = RC_NOT_SUPPORTED;
                return;
            }
            // The volume limits are read whatever the component; the
            // array's outputs are taken as they stand.
            uint32_t maxVol = 0, maxBaseVol = 0, maxSnapshotPerBase = 0, maxRWSnapshots = 0;
            callUnderSemaphore([&] {
                return api_getMaxVolumeNumbers(&maxVol, &maxBaseVol, &maxSnapshotPerBase, &maxRWSnapshots);
            });
            const MaximumCell* cell = nullptr;
            for (const MaximumRow& row : kMaximums)
                if (row.component == component)
                    cell = &row.cells[column];
            if (!cell)
            {
                log_message(2, "Invalid Component value %u\n", unsigned(component));
                reply.status = RC_INVALID_PARAMETER;
                return;
            }
            Uint64 maxValue = 0;
            switch (cell->source)
            {
            case Source::Constant: maxValue = cell->number; break;
            case Source::BaseVolumes: maxValue = maxBaseVol; break;
            case Source::RWSnapshots: maxValue = maxRWSnapshots; break;
            case Source::SnapshotVolumes:
                maxValue = std::min(Uint32(maxVol - maxBaseVol), Uint32(maxBaseVol));
                break;
            case Source::RemoteCopyVar: maxValue = getRemoteCopyMaxVar(int(cell->number)); break;
            }
            reply.add("MaxValue", CIMValue(maxValue));
        });
}

PEGASUS_NAMESPACE_END
