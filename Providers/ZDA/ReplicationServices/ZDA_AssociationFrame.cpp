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

Boolean invalidRequest(const AssociationShape& shape, const CIMObjectPath& objectName,
    const String& role, const String& resultRole, const CIMName& resultClass,
    const String& method)
{
    const CIMName objectClass = objectName.getClassName();
    if (isOneOf(objectClass, shape.keyCheckedClasses) &&
        ZDA_Common::extractFromInstanceID(ZDA_Common::getStringProperty(objectName, "InstanceID"))
            .size() == 0)
        return true;

    const int ownEnd = endOf(shape, objectClass);
    const int farEnd = ownEnd == 0 ? 0 : 3 - ownEnd;
    if (!roleFits(shape, role, ownEnd) || !roleFits(shape, resultRole, farEnd))
        return true;
    if (resultClass.isNull())
        return false;

    if (String::equalNoCase(method, "references") || String::equalNoCase(method, "referenceNames"))
        return !resultClass.equal(shape.associationClass) && !isOneOf(resultClass, shape.answersTo);

    if (String::equalNoCase(method, "associators") ||
        String::equalNoCase(method, "associatorNames"))
    {
        if (!isOneOf(resultClass, shape.first.classes) &&
            !isOneOf(resultClass, shape.first.superClasses) &&
            !isOneOf(resultClass, shape.second.classes) &&
            !isOneOf(resultClass, shape.second.superClasses))
            return true;
        // Asking for the object's own class or one of its end's
        // superclasses asks the way back.
        if (!objectClass.isNull() && resultClass.equal(objectClass))
            return true;
        if (ownEnd != 0 &&
            isOneOf(resultClass, (ownEnd == 1 ? shape.first : shape.second).superClasses))
            return true;
    }
    return false;
}

void logRefusedRequest(const char* provider, const String& method, const CIMName& resultClass)
{
    log_message(2, "%s::%s: invalid params: resultClass = %s \n", provider,
        (const char*)method.getCString(), (const char*)nameText(resultClass).getCString());
}

String nameText(const CIMName& name)
{
    return name.isNull() ? String() : name.getString();
}

SearchDirections searchDirections(const AssociationShape& shape, const String& role,
    const String& resultRole)
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

void requireAssociationClass(const AssociationShape& shape, const CIMObjectPath& reference,
    const String& className)
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

void endWalk(const char* provider, const String& className, cim_handler_u handler,
    cim_method_e method, bool found)
{
    if (method == CIM_GET_INSTANCE && !found)
    {
        log_message(2, "%s::deliverInstances() object not found for getInstance()\n", provider);
        throw CIMObjectNotFoundException(className + " CIM Object not found.");
    }
    ZDA_Common::handleComplete(handler, method);
}

void requireInstanceClass(const CIMObjectPath& reference,
    const std::vector<const char*>& accepted, const String& className)
{
    const CIMName given = reference.getClassName();
    if (!isOneOf(given, accepted))
        throw CIMNotSupportedException(nameText(given) + className + " Invalid class name");
}

void walkGetInstance(const WalkedClass& walked, CIMOMHandle& cimom, const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    const String& systemAddress, InstanceResponseHandler& handler, Uint32 line)
{
    log_message(4, "--> %s::getInstance()\n", walked.provider);
    ZDA_CompanionFrame::openArrayForCaller(context, walked.provider, line);
    requireInstanceClass(instanceReference, walked.accepted, walked.className);
    requireKeyCount(instanceReference, walked.keyCount, walked.provider, walked.className,
        walked.keyRefusal);
    walked.walk(cimom, context, instanceReference, includeQualifiers, includeClassOrigin,
        propertyList, systemAddress, CIM_GET_INSTANCE, handlerOf(handler));
    log_message(4, "<-- %s::getInstance()\n", walked.provider);
}

void walkEnumerateInstances(const WalkedClass& walked, CIMOMHandle& cimom,
    const OperationContext& context, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, const String& systemAddress,
    InstanceResponseHandler& handler, Uint32 line)
{
    log_message(4, "--> %s::enumerateInstances()\n", walked.provider);
    ZDA_CompanionFrame::openArrayForCaller(context, walked.provider, line);
    requireInstanceClass(classReference, walked.accepted, walked.className);
    walked.walk(cimom, context, CIMObjectPath(), includeQualifiers, includeClassOrigin,
        propertyList, systemAddress, CIM_ENUMERATE_INSTANCES, handlerOf(handler));
    log_message(4, "<-- %s::enumerateInstances()\n", walked.provider);
}

void walkEnumerateInstanceNames(const WalkedClass& walked, CIMOMHandle& cimom,
    const OperationContext& context, const CIMObjectPath& classReference,
    const String& systemAddress, ObjectPathResponseHandler& handler, Uint32 line)
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

}  // namespace ZDA_AssociationFrame

PEGASUS_NAMESPACE_END
