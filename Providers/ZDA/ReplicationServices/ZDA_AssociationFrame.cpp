// The association providers' shared request checks and array readers.
#include "ZDA_AssociationFrame.h"

#include <cstring>

#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/ProviderException.h>

#include "ZDA_Common.h"
#include "ZDA_CompanionFrame.h"

PEGASUS_NAMESPACE_BEGIN

namespace ZDA_AssociationFrame
{

const char NAMESPACE[] = "root/zda";

namespace
{

const char PARENT_RC_GROUP_KEY[] = "parentRCGroup";

// The end an object of `className` stands at: 1, 2, or 0 for neither.
int endOf(const AssociationShape& shape, const CIMName& className)
{
    if (isOneOf(className, shape.first.classes))
        return 1;
    if (isOneOf(className, shape.second.classes))
        return 2;
    return 0;
}

// A given role must be one of the two role names and, when the object
// stands at an end (`end` 1 or 2), that end's role.
bool roleFits(const AssociationShape& shape, const String& role, int end)
{
    if (role.size() == 0)
        return true;
    const bool isFirst = String::equalNoCase(role, shape.first.role);
    const bool isSecond = String::equalNoCase(role, shape.second.role);
    if (!isFirst && !isSecond)
        return false;
    if (end == 1)
        return isFirst;
    if (end == 2)
        return isSecond;
    return true;
}

}  // namespace

bool isOneOf(const CIMName& name, const std::vector<const char*>& names)
{
    if (name.isNull())
        return false;
    for (const char* n : names)
        if (String::equalNoCase(name.getString(), n))
            return true;
    return false;
}

Boolean invalidRequest(const AssociationShape& shape, const CIMObjectPath& objectName, const String& role,
    const String& resultRole, const CIMName& resultClass, const String& method)
{
    const CIMName objectClass = objectName.getClassName();
    if (isOneOf(objectClass, shape.keyCheckedClasses) &&
        ZDA_Common::extractFromInstanceID(ZDA_Common::getStringProperty(objectName, "InstanceID")).size() ==
            0)
        return true;

    const int ownEnd = endOf(shape, objectClass);
    const int farEnd = ownEnd == 0 ? 0 : 3 - ownEnd;
    if (!roleFits(shape, role, ownEnd) || !roleFits(shape, resultRole, farEnd))
        return true;
    if (resultClass.isNull())
        return false;

    if (String::equalNoCase(method, "references") || String::equalNoCase(method, "referenceNames"))
        return !resultClass.equal(shape.associationClass) && !isOneOf(resultClass, shape.answersTo);

    if (String::equalNoCase(method, "associators") || String::equalNoCase(method, "associatorNames"))
    {
        if (!isOneOf(resultClass, shape.first.classes) && !isOneOf(resultClass, shape.first.superClasses) &&
            !isOneOf(resultClass, shape.second.classes) && !isOneOf(resultClass, shape.second.superClasses) &&
            !isOneOf(resultClass, shape.sharedSuperClasses))
            return true;
        // Asking for the object's own class or one of its end's
        // superclasses asks the way back.
        if (!objectClass.isNull() && resultClass.equal(objectClass))
            return true;
        if (ownEnd != 0 && isOneOf(resultClass, (ownEnd == 1 ? shape.first : shape.second).superClasses))
            return true;
    }
    return false;
}

void logAssociationRequest(const char* provider, const char* operation, const CIMObjectPath& objectName,
    const CIMName& resultClass, const String& role)
{
    log_message(4, "--> %s::%s()\n", provider, operation);
    log_message(4, "objectName = %s \n role = %s, resultClass = %s \n",
        (const char*)objectName.toString().getCString(), (const char*)role.getCString(),
        (const char*)nameText(resultClass).getCString());
}

void logRefusedRequest(const char* provider, const String& method, const CIMName& resultClass)
{
    log_message(2, "%s::%s: invalid params: resultClass = %s \n", provider, (const char*)method.getCString(),
        (const char*)nameText(resultClass).getCString());
}

String nameText(const CIMName& name)
{
    return name.isNull() ? String() : name.getString();
}

SearchDirections searchDirections(const AssociationShape& shape, const String& role, const String& resultRole)
{
    SearchDirections directions;
    if (role.size() == 0 && resultRole.size() == 0)
    {
        directions.towardFirst = directions.towardSecond = true;
        return directions;
    }
    directions.towardSecond = String::equalNoCase(role, shape.first.role) ||
        String::equalNoCase(resultRole, shape.second.role);
    directions.towardFirst = String::equalNoCase(role, shape.second.role) ||
        String::equalNoCase(resultRole, shape.first.role);
    return directions;
}

bool endReference(const CIMObjectPath& associationRef, const String& role, CIMObjectPath& end)
{
    const String text = ZDA_Common::getStringProperty(associationRef, role);
    if (text.size() == 0)
        return false;
    end = CIMObjectPath(text);
    return true;
}

void requireAssociationClass(
    const AssociationShape& shape, const CIMObjectPath& reference, const String& className)
{
    const CIMName given = reference.getClassName();
    if (!given.equal(shape.associationClass) && !isOneOf(given, shape.answersTo))
        throw CIMNotSupportedException(given.getString() + className + " Invalid class name");
}

void requireKeyCount(const CIMObjectPath& reference, Uint32 expected, const char* provider,
    const String& className, const char* refusal)
{
    const Uint32 keys = reference.getKeyBindings().size();
    if (keys == expected)
        return;
    log_message(2, "%s::getInstance(): Invalid number of keys (%d)\n", provider, int(keys));
    throw CIMInvalidParameterException(className + refusal);
}

CIMNotSupportedException notSupported(const String& className, const char* operation)
{
    return CIMNotSupportedException(className + " does not support " + operation + ".");
}

cim_handler_u handlerOf(InstanceResponseHandler& handler)
{
    cim_handler_u u;
    u.instanceHandler = &handler;
    return u;
}

cim_handler_u handlerOf(ObjectPathResponseHandler& handler)
{
    cim_handler_u u;
    u.objectPathHandler = &handler;
    return u;
}

cim_handler_u handlerOf(ObjectResponseHandler& handler)
{
    cim_handler_u u;
    u.objectHandler = &handler;
    return u;
}

CIMClass moduleClass(CIMOMHandle& cimom, const CIMName& className, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    return ZDA_Common::getStoredCIMClass(cimom, OperationContext(), NAMESPACE, className, false,
        includeQualifiers, includeClassOrigin, propertyList);
}

CIMClass queryClass(CIMOMHandle& cimom, const PairQuery& query, const CIMName& className)
{
    return moduleClass(
        cimom, className, query.includeQualifiers, query.includeClassOrigin, query.propertyList);
}

String statusText(const api_Status_t& status)
{
    char buffer[512];
    buffer[0] = '\0';
    api_getErrorTextNoNL(buffer, sizeof buffer, &status);
    return String(buffer);
}

VVSetList::VVSetList()
{
    std::memset(&_list, 0, sizeof _list);
}

VVSetList::~VVSetList()
{
    release();
}

api_Status_t VVSetList::read(const char* name)
{
    release();
    return ZDA_CompanionFrame::statusCall([&] { return api_getVVSets(name, nullptr, 0, &_list); });
}

api_Status_t VVSetList::readChildrenOf(const char* group)
{
    release();
    api_okv_opts_t conditions;
    std::memset(&conditions, 0, sizeof conditions);
    api_okv_addIfKV(&conditions, PARENT_RC_GROUP_KEY, group);
    const api_Status_t status = ZDA_CompanionFrame::statusCall(
        [&] { return api_getVVSets(nullptr, &conditions, 0, &_list); });
    api_free_okv_opts(&conditions);
    return status;
}

void VVSetList::release()
{
    api_freeSets(&_list);
    std::memset(&_list, 0, sizeof _list);
}

RCopySnapshot::RCopySnapshot()
{
    std::memset(&rcopy, 0, sizeof rcopy);
}

RCopySnapshot::~RCopySnapshot()
{
    api_freeRCopy(&rcopy);
}

api_Status_t RCopySnapshot::read(int selector)
{
    api_freeRCopy(&rcopy);
    std::memset(&rcopy, 0, sizeof rcopy);
    return ZDA_CompanionFrame::statusCall([&] { return api_getRCopy(selector, &rcopy); });
}

bool noReplicationEntityPolicy()
{
    return (ZDA_Common::getPolicy() & CIM_POLICY_NO_REPLICATION_ENTITY) != 0;
}

bool readForWalk(RCopySnapshot& snapshot, int selector, const char* provider)
{
    if (snapshot.read(selector).code == 0)
        return true;
    log_message(2, "--> %s::deliverInstances()  api_getRCopy failed.\n", provider);
    return false;
}

bool readForPairs(RCopySnapshot& snapshot, int selector, const char* provider)
{
    const api_Status_t status = snapshot.read(selector);
    if (status.code == 0)
        return true;
    log_message(2, "%s::_getRelatedInstances():api_getRCopy error (%d): %s\n", provider, status.code,
        (const char*)statusText(status).getCString());
    return false;
}

void endWalk(
    const char* provider, const String& className, cim_handler_u handler, cim_method_e method, bool found)
{
    if (method == CIM_GET_INSTANCE && !found)
    {
        log_message(2, "%s::deliverInstances() object not found for getInstance()\n", provider);
        throw CIMObjectNotFoundException(className + " CIM Object not found.");
    }
    ZDA_Common::handleComplete(handler, method);
}

void requireInstanceClass(
    const CIMObjectPath& reference, const std::vector<const char*>& accepted, const String& className)
{
    const CIMName given = reference.getClassName();
    if (!isOneOf(given, accepted))
        throw CIMNotSupportedException(nameText(given) + className + " Invalid class name");
}

void walkGetInstance(const WalkedClass& walked, CIMOMHandle& cimom, const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, const String& systemAddress, InstanceResponseHandler& handler,
    Uint32 line)
{
    log_message(4, "--> %s::getInstance()\n", walked.provider);
    ZDA_CompanionFrame::openArrayForCaller(context, walked.provider, line);
    requireInstanceClass(instanceReference, walked.accepted, walked.className);
    requireKeyCount(instanceReference, walked.keyCount, walked.provider, walked.className, walked.keyRefusal);
    walked.walk(cimom, context, instanceReference, includeQualifiers, includeClassOrigin, propertyList,
        systemAddress, CIM_GET_INSTANCE, handlerOf(handler));
    log_message(4, "<-- %s::getInstance()\n", walked.provider);
}

void walkEnumerateInstances(const WalkedClass& walked, CIMOMHandle& cimom, const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, const String& systemAddress, InstanceResponseHandler& handler,
    Uint32 line)
{
    log_message(4, "--> %s::enumerateInstances()\n", walked.provider);
    ZDA_CompanionFrame::openArrayForCaller(context, walked.provider, line);
    requireInstanceClass(classReference, walked.accepted, walked.className);
    walked.walk(cimom, context, CIMObjectPath(), includeQualifiers, includeClassOrigin, propertyList,
        systemAddress, CIM_ENUMERATE_INSTANCES, handlerOf(handler));
    log_message(4, "<-- %s::enumerateInstances()\n", walked.provider);
}

void walkEnumerateInstanceNames(const WalkedClass& walked, CIMOMHandle& cimom,
    const OperationContext& context, const CIMObjectPath& classReference, const String& systemAddress,
    ObjectPathResponseHandler& handler, Uint32 line)
{
    log_message(4, "--> %s::enumerateInstanceNames()\n", walked.provider);
    ZDA_CompanionFrame::openArrayForCaller(context, walked.provider, line);
    requireInstanceClass(classReference, walked.accepted, walked.className);
    walked.walk(cimom, context, CIMObjectPath(), false, false, CIMPropertyList(), systemAddress,
        CIM_ENUMERATE_INSTANCE_NAMES, handlerOf(handler));
    log_message(4, "<-- %s::enumerateInstanceNames()\n", walked.provider);
}

bool hasParentRCGroup(const api_set_t& set)
{
    api_keyvalue_query_t query;
    std::memset(&query, 0, sizeof query);
    query.objType = API_KV_OBJ_VVSET;
    query.objId = set.id;
    ZDA_CompanionFrame::statusCall([&] { return api_addKeyValueOpt(&query, PARENT_RC_GROUP_KEY); });
    ZDA_CompanionFrame::statusCall([&] { return api_getKeyValues(&query); });
    const bool found = query.found != 0;
    api_freeKeyValueOpt(&query);
    return found;
}

std::string joinMemberNames(const api_set_t& set)
{
    std::string joined;
    joined.reserve(size_t(set.memberCount) * sizeof(api_name_t));
    for (int i = 0; i < set.memberCount; i++)
    {
        if (i > 0)
            joined += '|';
        joined += set.members[i].name;
    }
    return joined;
}

std::vector<std::string> namePieces(const std::string& joined, size_t limit)
{
    std::vector<std::string> pieces;
    std::string rest = joined;
    while (rest.size() > limit)
    {
        // Back from the first character beyond the limit to a separator.
        const size_t cut = rest.rfind('|', limit);
        if (cut == std::string::npos || cut == 0)
        {
            pieces.push_back(rest.substr(0, limit));
            rest.erase(0, limit);
        }
        else
        {
            pieces.push_back(rest.substr(0, cut));
            rest.erase(0, cut + 1);
        }
    }
    if (!rest.empty())
        pieces.push_back(rest);
    return pieces;
}

VolumeQuery::~VolumeQuery()
{
    free_if_not_null(_volumes);
}

int VolumeQuery::byNames(const std::string& piece, int slots)
{
    free_if_not_null(_volumes);
    _volumes = nullptr;
    _count = 0;

    api_getvv_filter_t filter;
    std::memset(&filter, 0, sizeof filter);
    int rc = api_getvv_filter_init(&filter, slots);
    if (rc != 0)
    {
        log_message(2, "Cannot create filter list\n");
        api_getvv_filter_free(&filter);
        return rc;
    }
    rc = api_getvv_filter_add(&filter, API_VVFILTER_ATTR_NAME, API_VVFILTER_OP_ANY, piece.c_str());
    if (rc != 0)
    {
        log_message(2, "Cannot update filter list\n");
        api_getvv_filter_free(&filter);
        return rc;
    }
    api_getvv_cursor_t cursor;
    std::memset(&cursor, 0, sizeof cursor);
    rc = ZDA_CompanionFrame::callUnderSemaphore(
        [&] { return api_getVVs_chunk(&cursor, 0, &filter, &_count, &_volumes, API_GETVV_ALL); });
    api_getvv_filter_free(&filter);
    if (rc != 0)
    {
        log_message(2, "Failed to query volume\n");
        free_if_not_null(_volumes);
        _volumes = nullptr;
        _count = 0;
    }
    return rc;
}

const std::vector<const char*>& classChain(EndClass end)
{
    static const std::vector<const char*> chains[] = {
        {"ZDA_StorageSystem", "CIM_ComputerSystem", "CIM_System", "CIM_AllocatedLogicalElement",
            "CIM_EnabledLogicalElement", "CIM_LogicalElement", "CIM_ManagedSystemElement",
            "CIM_ManagedElement"},
        {"ZDA_ReplicationService", "CIM_ReplicationService", "CIM_Service", "CIM_EnabledLogicalElement",
            "CIM_LogicalElement", "CIM_ManagedSystemElement", "CIM_ManagedElement"},
        {"ZDA_ReplicationServiceCapabilities", "CIM_ReplicationServiceCapabilities", "CIM_Capabilities",
            "CIM_ManagedElement"},
        {"ZDA_ReplicationGroup", "CIM_ReplicationGroup", "CIM_SystemSpecificCollection", "CIM_Collection",
            "CIM_ManagedElement"},
        {"ZDA_RemoteReplicationGroup", "CIM_ReplicationGroup", "CIM_SystemSpecificCollection",
            "CIM_Collection", "CIM_ManagedElement"},
        {"ZDA_RemoteReplicationCollection", "CIM_RemoteReplicationCollection", "CIM_ConnectivityCollection",
            "CIM_SystemSpecificCollection", "CIM_Collection", "CIM_ManagedElement"},
        {"ZDA_RemoteServiceAccessPoint", "CIM_RemoteServiceAccessPoint", "CIM_ServiceAccessPoint",
            "CIM_EnabledLogicalElement", "CIM_LogicalElement", "CIM_ManagedSystemElement",
            "CIM_ManagedElement"},
        {"ZDA_ReplicationEntity", "CIM_ReplicationEntity", "CIM_EnabledLogicalElement", "CIM_LogicalElement",
            "CIM_ManagedSystemElement", "CIM_ManagedElement"},
        {"ZDA_StorageVolume", "CIM_StorageVolume", "CIM_StorageExtent", "CIM_LogicalDevice",
            "CIM_EnabledLogicalElement", "CIM_LogicalElement", "CIM_ManagedSystemElement",
            "CIM_ManagedElement"},
        {"ZDA_ConcreteJob", "CIM_ConcreteJob", "CIM_Job", "CIM_LogicalElement", "CIM_ManagedSystemElement",
            "CIM_ManagedElement"},
        {"ZDA_SCSIProtocolFCEndpoint", "CIM_SCSIProtocolEndpoint", "CIM_ProtocolEndpoint",
            "CIM_ServiceAccessPoint", "CIM_EnabledLogicalElement", "CIM_LogicalElement",
            "CIM_ManagedSystemElement", "CIM_ManagedElement"},
        {"ZDA_IPProtocolEndpoint", "CIM_IPProtocolEndpoint", "CIM_ProtocolEndpoint", "CIM_ServiceAccessPoint",
            "CIM_EnabledLogicalElement", "CIM_LogicalElement", "CIM_ManagedSystemElement",
            "CIM_ManagedElement"},
    };
    return chains[static_cast<int>(end)];
}

namespace
{

bool contains(const std::vector<const char*>& names, const char* name)
{
    for (const char* n : names)
        if (String::equalNoCase(n, name))
            return true;
    return false;
}

// The end of `chain` as a shape sees it: its class, and the superclasses
// that `other` does not have.
AssociationEnd endOfChain(
    const char* role, const std::vector<const char*>& chain, const std::vector<const char*>& other)
{
    AssociationEnd end{role, {chain[0]}, {}};
    for (size_t i = 1; i < chain.size(); i++)
        if (!contains(other, chain[i]))
            end.superClasses.push_back(chain[i]);
    return end;
}

const char* const OPERATION_NAMES[] = {"associators", "associatorNames", "references", "referenceNames",
    "getInstance", "enumerateInstances", "enumerateInstanceNames"};

// A path-only instance: what handleDeliver needs to deliver a path.
CIMInstance pathOnly(const CIMObjectPath& path)
{
    CIMInstance instance(path.getClassName());
    instance.setPath(path);
    return instance;
}

CIMInstance associationInstance(
    const NavigationProvider& provider, const EndPair& pair, CIMClass& associationClass)
{
    const AssociationShape& shape = provider.row.shape;
    CIMInstance instance = ZDA_Common::buildAssocInstance(CIMName(shape.associationClass), shape.first.role,
        shape.second.role, pair.first, pair.second, provider.host, NAMESPACE, associationClass);
    for (const auto& property : pair.properties)
        if (instance.findProperty(property.first) != PEG_NOT_FOUND)
            instance.getProperty(instance.findProperty(property.first)).setValue(property.second);
    return instance;
}

// The refusal of a reference of another class, for the membership kinds
// that check it in `method`.
void checkClass(const NavigationRow& row, const CIMObjectPath& reference, cim_method_e method)
{
    if (row.classCheck == ClassCheck::None ||
        (row.classCheck == ClassCheck::Instances && method == CIM_ENUMERATE_INSTANCE_NAMES))
        return;
    requireAssociationClass(row.shape, reference, row.className);
}

// The association class as the request shapes its instances.
CIMClass associationClassFor(const NavigationProvider& provider, const NavigationRequest& request)
{
    return moduleClass(provider.cimom, CIMName(provider.row.shape.associationClass),
        request.includeQualifiers, request.includeClassOrigin, request.propertyList);
}

bool readPairs(const NavigationProvider& provider, const NavigationRequest& request, int instancesOf,
    std::vector<EndPair>& pairs, const CIMObjectPath& object = CIMObjectPath())
{
    const PairQuery query{request.context, instancesOf, request.includeQualifiers, request.includeClassOrigin,
        request.propertyList, object};
    return provider.readPairs(query, pairs);
}

// Kinds whose read goes to the array alone or through the server's other
// associations: they neither ask the server for the object first nor
// answer an object at neither end.
bool readsOwnPairs(NavigationKind kind)
{
    return kind == NavigationKind::Deliver || kind == NavigationKind::Gather;
}

// Whether the object named by an association operation is there, asked of
// the server; kinds that read only the array do not ask.
bool objectExists(const NavigationProvider& provider, const NavigationRequest& request)
{
    const NavigationKind kind = provider.row.kind;
    if (readsOwnPairs(kind))
        return true;
    try
    {
        provider.cimom.getInstance(
            request.context, NAMESPACE, request.objectName, false, false, false, CIMPropertyList());
        return true;
    }
    catch (...)
    {
        const String object = request.objectName.toString();
        if (kind == NavigationKind::ThroughCimom)
            log_message(2, "%s: Instance does not exist for object %s\n", provider.row.provider,
                (const char*)object.getCString());
        else
            log_message(2, "%s: error trying to getInstance of %s\n", provider.row.provider,
                (const char*)object.getCString());
        return false;
    }
}

void navigate(const NavigationProvider& provider, const NavigationRequest& request, cim_method_e method,
    cim_handler_u handler)
{
    const AssociationShape& shape = provider.row.shape;
    const NavigationKind kind = provider.row.kind;
    const String operation = OPERATION_NAMES[method];
    const bool toReferences = method == CIM_REFERENCES || method == CIM_REFERENCE_NAMES;
    const String resultRole = toReferences ? String::EMPTY : request.resultRole;
    if (provider.invalidParms(request.objectName, request.role, resultRole, request.resultClass, operation))
    {
        logRefusedRequest(provider.row.provider, operation, request.resultClass);
        return;
    }

    const CIMName objectClass = request.objectName.getClassName();
    const int ownEnd = isOneOf(objectClass, shape.first.classes) ? 1
        : isOneOf(objectClass, shape.second.classes)             ? 2
                                                                 : 0;
    const SearchDirections search = searchDirections(shape, request.role, resultRole);
    if ((ownEnd == 1 && !search.towardSecond) || (ownEnd == 2 && !search.towardFirst))
        return;
    if (ownEnd == 0 && readsOwnPairs(kind))
        return;
    if (!objectExists(provider, request))
        return;

    CIMClass associationClass;
    if (toReferences)
        associationClass = associationClassFor(provider, request);
    ZDA_Common::handleProcessing(handler, method);
    std::vector<EndPair> pairs;
    const int farEnd = ownEnd == 0 ? 0 : 3 - ownEnd;
    if (ownEnd != 0 &&
        !readPairs(provider, request, method == CIM_ASSOCIATORS ? farEnd : 0, pairs, request.objectName))
    {
        if (kind != NavigationKind::Deliver)
            ZDA_Common::handleComplete(handler, method);
        return;
    }
    for (const EndPair& pair : pairs)
    {
        if (!sameObject(ownEnd == 1 ? pair.first : pair.second, request.objectName))
            continue;
        CIMInstance result;
        if (method == CIM_ASSOCIATORS)
            result = farEnd == 1 ? pair.firstInstance : pair.secondInstance;
        else if (method == CIM_ASSOCIATOR_NAMES)
            result = pathOnly(farEnd == 1 ? pair.first : pair.second);
        else
            result = associationInstance(provider, pair, associationClass);
        if (!result.isUninitialized())
            ZDA_Common::handleDeliver(handler, method, result);
    }
    ZDA_Common::handleComplete(handler, method);
}

void getPair(const NavigationProvider& provider, const NavigationRequest& request, cim_handler_u handler)
{
    const NavigationRow& row = provider.row;
    const CIMObjectPath& reference = request.objectName;
    checkClass(row, reference, CIM_GET_INSTANCE);
    if (row.kind == NavigationKind::ThroughCimom || readsOwnPairs(row.kind))
        requireKeyCount(reference, 2, row.provider, row.className, " Expect two keys.");

    CIMObjectPath first;
    CIMObjectPath second;
    const bool endsGiven = endReference(reference, row.shape.first.role, first) &&
        endReference(reference, row.shape.second.role, second);
    const bool readsEnds = row.kind == NavigationKind::HostedByWalk || readsOwnPairs(row.kind);
    if (readsEnds && !endsGiven)
        return;

    CIMClass associationClass = associationClassFor(provider, request);
    ZDA_Common::handleProcessing(handler, CIM_GET_INSTANCE);
    std::vector<EndPair> pairs;
    if (!readPairs(provider, request, 0, pairs) && row.kind == NavigationKind::Deliver)
        return;
    if (endsGiven)
    {
        for (const EndPair& pair : pairs)
        {
            if (!sameObject(pair.first, first) || !sameObject(pair.second, second))
                continue;
            ZDA_Common::handleDeliver(
                handler, CIM_GET_INSTANCE, associationInstance(provider, pair, associationClass));
            ZDA_Common::handleComplete(handler, CIM_GET_INSTANCE);
            return;
        }
    }
    if (row.kind == NavigationKind::Affects)
    {
        log_message(2, "%s::getInstance():\n\t Object not found: instanceRef = %s\n", row.provider,
            (const char*)reference.toString().getCString());
        throw CIMObjectNotFoundException(String(row.className) + "::getInstance: " + reference.toString());
    }
    throw CIMObjectNotFoundException(String(row.className) + " CIM Object not found.");
}

void enumeratePairs(const NavigationProvider& provider, const NavigationRequest& request, cim_method_e method,
    cim_handler_u handler)
{
    const NavigationRow& row = provider.row;
    checkClass(row, request.objectName, method);
    const CIMName given = request.objectName.getClassName();
    if ((row.kind == NavigationKind::Affects || row.kind == NavigationKind::HostedByWalk) &&
        !given.equal(row.shape.associationClass) && !isOneOf(given, row.shape.answersTo))
    {
        log_message(2, "%s::%s()\n\t classReference is invalid: %s\n", row.provider, OPERATION_NAMES[method],
            (const char*)nameText(given).getCString());
        return;
    }
    CIMClass associationClass = associationClassFor(provider, request);
    ZDA_Common::handleProcessing(handler, method);
    std::vector<EndPair> pairs;
    if (!readPairs(provider, request, 0, pairs))
    {
        if (row.kind != NavigationKind::Deliver)
            ZDA_Common::handleComplete(handler, method);
        return;
    }
    for (const EndPair& pair : pairs)
        ZDA_Common::handleDeliver(handler, method, associationInstance(provider, pair, associationClass));
    ZDA_Common::handleComplete(handler, method);
}

// The server's instances (or only their names) of `className`, with the
// query's flags.
void endsThroughCimom(CIMOMHandle& cimom, const PairQuery& query, const CIMName& className,
    bool withInstances, Array<CIMObjectPath>& paths, Array<CIMInstance>& instances)
{
    if (!withInstances)
    {
        paths = cimom.enumerateInstanceNames(query.context, NAMESPACE, className);
        return;
    }
    instances = cimom.enumerateInstances(query.context, NAMESPACE, className, true, false,
        query.includeQualifiers, query.includeClassOrigin, query.propertyList);
    for (Uint32 i = 0; i < instances.size(); i++)
        paths.append(instances[i].getPath());
}

}  // namespace

AssociationShape navigationShape(const char* associationClass, const std::vector<const char*>& answersTo,
    const char* firstRole, const std::vector<EndClass>& first, const char* secondRole,
    const std::vector<EndClass>& second)
{
    std::vector<const char*> firstChains;
    std::vector<const char*> secondChains;
    for (EndClass end : first)
        firstChains.insert(firstChains.end(), classChain(end).begin(), classChain(end).end());
    for (EndClass end : second)
        secondChains.insert(secondChains.end(), classChain(end).begin(), classChain(end).end());
    AssociationShape shape{associationClass, answersTo, {firstRole, {}, {}}, {secondRole, {}, {}}, {}, {}};
    const auto fill = [](AssociationEnd& end, const std::vector<EndClass>& classes,
                          const std::vector<const char*>& other) {
        for (EndClass cls : classes)
        {
            const std::vector<const char*>& chain = classChain(cls);
            end.classes.push_back(chain[0]);
            for (size_t i = 1; i < chain.size(); i++)
                if (!contains(other, chain[i]) && !contains(end.superClasses, chain[i]))
                    end.superClasses.push_back(chain[i]);
        }
    };
    fill(shape.first, first, secondChains);
    fill(shape.second, second, firstChains);
    for (const char* name : firstChains)
        if (contains(secondChains, name) && !contains(shape.sharedSuperClasses, name))
            shape.sharedSuperClasses.push_back(name);
    return shape;
}

AssociationShape navigationShape(const char* associationClass, const char* answersTo, const char* firstRole,
    EndClass first, const char* secondRole, EndClass second, bool keyCheckedSecond)
{
    const std::vector<const char*>& firstChain = classChain(first);
    const std::vector<const char*>& secondChain = classChain(second);
    AssociationShape shape{associationClass, {answersTo}, endOfChain(firstRole, firstChain, secondChain),
        endOfChain(secondRole, secondChain, firstChain), {}, {}};
    for (const char* name : firstChain)
        if (contains(secondChain, name))
            shape.sharedSuperClasses.push_back(name);
    if (keyCheckedSecond)
    {
        shape.keyCheckedClasses = shape.second.classes;
        shape.keyCheckedClasses.insert(shape.keyCheckedClasses.end(), shape.second.superClasses.begin(),
            shape.second.superClasses.end());
    }
    return shape;
}

void answer(const NavigationProvider& provider, const NavigationRequest& request, cim_method_e method,
    cim_handler_u handler)
{
    const char* name = provider.row.provider;
    const char* operation = OPERATION_NAMES[method];
    log_message(4, "--> %s::%s()\n", name, operation);
    log_message(4, "objectName = %s \n role = %s, resultRole = %s, resultClass = %s \n",
        (const char*)request.objectName.toString().getCString(), (const char*)request.role.getCString(),
        (const char*)request.resultRole.getCString(),
        (const char*)nameText(request.resultClass).getCString());
    ZDA_CompanionFrame::openArrayForCaller(request.context, name, __LINE__);
    if (method == CIM_GET_INSTANCE)
        getPair(provider, request, handler);
    else if (method == CIM_ENUMERATE_INSTANCES || method == CIM_ENUMERATE_INSTANCE_NAMES)
        enumeratePairs(provider, request, method, handler);
    else
        navigate(provider, request, method, handler);
    log_message(4, "<-- %s::%s()\n", name, operation);
}

bool pairsThroughCimom(CIMOMHandle& cimom, const PairQuery& query, const char* provider,
    const CIMName& firstEnd, const CIMObjectPath& fixedFirst, const CIMName& secondEnd,
    std::vector<EndPair>& pairs)
{
    Array<CIMObjectPath> firstPaths;
    Array<CIMInstance> firstInstances;
    Array<CIMObjectPath> secondPaths;
    Array<CIMInstance> secondInstances;
    try
    {
        if (fixedFirst.getClassName().isNull())
        {
            endsThroughCimom(cimom, query, firstEnd, query.instancesOf == 1, firstPaths, firstInstances);
        }
        else
        {
            firstPaths.append(fixedFirst);
            if (query.instancesOf == 1)
                firstInstances.append(cimom.getInstance(query.context, NAMESPACE, fixedFirst, false,
                    query.includeQualifiers, query.includeClassOrigin, query.propertyList));
        }
        endsThroughCimom(cimom, query, secondEnd, query.instancesOf == 2, secondPaths, secondInstances);
    }
    catch (const Exception& e)
    {
        log_message(2, "%s: cannot read the associated objects: %s\n", provider,
            (const char*)e.getMessage().getCString());
        return false;
    }
    for (Uint32 f = 0; f < firstPaths.size(); f++)
    {
        for (Uint32 s = 0; s < secondPaths.size(); s++)
        {
            EndPair pair{firstPaths[f], secondPaths[s], CIMInstance(), CIMInstance()};
            if (query.instancesOf == 1)
                pair.firstInstance = firstInstances[f];
            if (query.instancesOf == 2)
                pair.secondInstance = secondInstances[s];
            pairs.push_back(pair);
        }
    }
    return true;
}

bool pairsFromRemoteCopy(CIMOMHandle& cimom, const PairQuery& query, const char* provider, int selector,
    const CIMObjectPath& first, const RemoteCopyWalk& walk, std::vector<EndPair>& pairs)
{
    if (first.getClassName().isNull())
    {
        log_message(2, "%s::_getRelatedInstances(): no object to pair\n", provider);
        return false;
    }
    CIMInstance firstInstance;
    try
    {
        if (query.instancesOf == 1)
            firstInstance = cimom.getInstance(query.context, NAMESPACE, first, false, query.includeQualifiers,
                query.includeClassOrigin, query.propertyList);
    }
    catch (const Exception& e)
    {
        log_message(2, "%s: cannot read the associated object: %s\n", provider,
            (const char*)e.getMessage().getCString());
        return false;
    }

    std::vector<WalkEnd> ends;
    {
        RCopySnapshot snapshot;
        if (!readForPairs(snapshot, selector, provider))
            return false;
        walk(snapshot.rcopy, query.instancesOf == 2, ends);
    }
    for (const WalkEnd& end : ends)
        pairs.push_back(EndPair{first, end.path, firstInstance, end.instance});
    return true;
}

RemoteCopyWalk targetWalk(CIMOMHandle& cimom, const PairQuery& query, const CIMName& endClass,
    const std::function<CIMObjectPath(const String& targetName)>& pathOf,
    const std::function<CIMInstance(rm_target_t& target, CIMClass& endClass)>& instanceOf)
{
    return [&cimom, &query, endClass, pathOf, instanceOf](
               api_rcopy_t& rcopy, bool withInstances, std::vector<WalkEnd>& ends) {
        CIMClass shape;
        if (withInstances)
            shape = moduleClass(
                cimom, endClass, query.includeQualifiers, query.includeClassOrigin, query.propertyList);
        for (int i = 0; i < rcopy.target_count; i++)
        {
            rm_target_t& target = rcopy.targets[i];
            WalkEnd end;
            if (withInstances)
            {
                end.instance = instanceOf(target, shape);
                end.path = end.instance.getPath();
            }
            else
            {
                end.path = pathOf(String(target.rm_hdr.rm_name));
            }
            ends.push_back(end);
        }
    };
}

bool sameObject(const CIMObjectPath& end, const CIMObjectPath& object)
{
    CIMObjectPath a = end;
    CIMObjectPath b = object;
    if (a.getNameSpace().isNull())
        a.setNameSpace(NAMESPACE);
    if (b.getNameSpace().isNull())
        b.setNameSpace(NAMESPACE);
    return ZDA_Common::matchObjectPath(a, b);
}

}  // namespace ZDA_AssociationFrame

PEGASUS_NAMESPACE_END
