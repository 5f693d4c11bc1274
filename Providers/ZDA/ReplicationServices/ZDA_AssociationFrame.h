// What the association providers of the module share. Each association
// provider keeps its own operations and private routines (_invalidParms,
// its walk) and calls these for the steps they have in common: the test of
// a request's roles and result class against the two ends of the class,
// the directions a walk searches in, the end paths held by an association
// reference, the checks of the membership family, and the handler union of
// the shared delivery routines.
//
// Also here, because the module's walks over vvsets need them: the text of a
// failed status, and owners of the vvset list and the volume query that
// release them on every path. One array call under the semaphore is
// ZDA_CompanionFrame's callUnderSemaphore (int form) or statusCall.
//
// The navigation associations (hosted, affects, capabilities) and the
// membership, access point and job associations share more: each is a row
// of the association table and a reader of its pairs, and one routine here
// serves all their operations (see "Navigation associations" below).
//
// All functions may run on any thread; none holds the semaphore on return.
#ifndef ZDA_ASSOCIATION_FRAME_H
#define ZDA_ASSOCIATION_FRAME_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "zdaapi.h"
#include "ZDA_ProviderTypes.h"

PEGASUS_NAMESPACE_BEGIN

namespace ZDA_AssociationFrame
{

// The namespace of every class of the module.
extern const char NAMESPACE[];

// One end of an association class.
struct AssociationEnd
{
    // The reference property and role name of this end ("Collection").
    const char* role;
    // The classes an object at this end has; a request from an object of
    // one of them must name this end's role as its own.
    std::vector<const char*> classes;
    // The superclasses a client may name as the result class to reach this
    // end. From an object of this end they ask the way back and are refused.
    std::vector<const char*> superClasses;
};

// An association class and its two ends, as the request checks see it.
struct AssociationShape
{
    const char* associationClass;
    // Other names the provider answers to as association or result class.
    std::vector<const char*> answersTo;
    AssociationEnd first;
    AssociationEnd second;
    // Object classes whose InstanceID must name something ("KX_ORLA:<name>")
    // for a request to be valid; empty for providers that check no key.
    std::vector<const char*> keyCheckedClasses;
    // Superclasses of both ends: a valid result class from either end.
    std::vector<const char*> sharedSuperClasses = {};
};

// True when `name` is one of `names` (without case).
bool isOneOf(const CIMName& name, const std::vector<const char*>& names);

// True when an association request from `objectName` cannot match and is to
// be answered with nothing (no processing, no complete). `method` is the
// operation: "associators", "associatorNames", "references" or
// "referenceNames" (without case); references pass an empty resultRole.
// In order: the key of a key-checked object, `role` and `resultRole` (each
// one of the two role names, and fitting the object's end), the result
// class (the association for references; an end class or superclass for
// associators, and not the way back to the object's own end). A null
// result class passes; an object of some third class passes.
Boolean invalidRequest(const AssociationShape& shape, const CIMObjectPath& objectName, const String& role,
    const String& resultRole, const CIMName& resultClass, const String& method);

// The level 4 lines of an association request as it arrives: the entry
// "--> <provider>::<operation>()", then the object, role and result class.
void logAssociationRequest(const char* provider, const char* operation, const CIMObjectPath& objectName,
    const CIMName& resultClass, const String& role);

// The level 2 line of a refused request: "<provider>::<method>: invalid
// params: resultClass = <class>".
void logRefusedRequest(const char* provider, const String& method, const CIMName& resultClass);

// The name's text, "" for a null name.
String nameText(const CIMName& name);

// Which ends a walk looks for, from the request's roles. Both when role and
// resultRole are empty; otherwise the second end when `role` names the
// first or `resultRole` the second, and the first end the other way round
// (role names compare without case).
struct SearchDirections
{
    bool towardFirst = false;
    bool towardSecond = false;
};
SearchDirections searchDirections(
    const AssociationShape& shape, const String& role, const String& resultRole);

// The path an association reference holds under `role`: the key's text read
// as a path. False (and `end` untouched) when the key is absent or empty.
// A text that is no object path throws the SDK's MalformedObjectNameException.
bool endReference(const CIMObjectPath& associationRef, const String& role, CIMObjectPath& end);

// Refusals of the membership family's getInstance and enumerations: the
// reference's class must be the association class or one it answers to,
// else CIMNotSupportedException "<given class><className> Invalid class name".
void requireAssociationClass(
    const AssociationShape& shape, const CIMObjectPath& reference, const String& className);
// The reference must hold exactly `expected` keys, else a level 2 line
// "<provider>::getInstance(): Invalid number of keys (<n>)" and
// CIMInvalidParameterException "<className><refusal>".
void requireKeyCount(const CIMObjectPath& reference, Uint32 expected, const char* provider,
    const String& className, const char* refusal);

// The refusal of an operation a class does not support:
// CIMNotSupportedException "<className> does not support <operation>.".
CIMNotSupportedException notSupported(const String& className, const char* operation);

// The handler union of the shared delivery routines for each handler kind.
cim_handler_u handlerOf(InstanceResponseHandler& handler);
cim_handler_u handlerOf(ObjectPathResponseHandler& handler);
cim_handler_u handlerOf(ObjectResponseHandler& handler);

// The class `className` of the module's namespace as the caller asked for
// it (localOnly false), through the internal cache. Server errors pass on.
CIMClass moduleClass(CIMOMHandle& cimom, const CIMName& className, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList);

// The array's text of a failed status (at most 511 characters).
String statusText(const api_Status_t& status);

// The vvset list of api_getVVSets, cleared before the call and released
// with api_freeSets when the owner goes, on every path.
class VVSetList
{
public:
    VVSetList();
    ~VVSetList();
    VVSetList(const VVSetList&) = delete;
    VVSetList& operator=(const VVSetList&) = delete;

    // The vvset named `name`, or all vvsets for a null name, under the
    // semaphore. What was held before is released first.
    api_Status_t read(const char* name);
    // The vvsets whose key "parentRCGroup" is `group` (the snapshot sets of
    // that remote copy group), under the semaphore. What was held before is
    // released first.
    api_Status_t readChildrenOf(const char* group);
    // Releases now (the destructor then has nothing to do).
    void release();

    Uint32 size() const { return _list.sets ? _list.count : 0; }
    api_set_t& operator[](Uint32 i) { return _list.sets[i]; }

private:
    api_sets_t _list;
};

// The remote copy configuration of api_getRCopy, zeroed before the call and
// released with api_freeRCopy when the owner goes, on every path.
class RCopySnapshot
{
public:
    RCopySnapshot();
    ~RCopySnapshot();
    RCopySnapshot(const RCopySnapshot&) = delete;
    RCopySnapshot& operator=(const RCopySnapshot&) = delete;

    // Reads the configuration with `selector` under the semaphore; what was
    // held before is released first.
    api_Status_t read(int selector);

    api_rcopy_t rcopy;
};

// True under the no-replication-entity policy: a far element with a known
// WWN is shown as a volume or group of its own class, not as an entity.
bool noReplicationEntityPolicy();

// The walk of a remote copy instance provider (collections, entities,
// access points) over one snapshot: reads it for `provider`'s
// deliverInstances and, on a failed or busy array, logs "--> <provider>::
// deliverInstances()  api_getRCopy failed." at level 2 and gives false.
bool readForWalk(RCopySnapshot& snapshot, int selector, const char* provider);
// The read of a pair reader: the snapshot with `selector`; on a failed or
// busy array a level 2 line ("<provider>::_getRelatedInstances():
// api_getRCopy error (<code>): <text>") and false.
bool readForPairs(RCopySnapshot& snapshot, int selector, const char* provider);
// The end of such a walk: for getInstance (`method` 4) with nothing found,
// a level 2 line and CIMObjectNotFoundException "<className> CIM Object not
// found."; otherwise handleComplete. An enumeration thus completes empty
// after an array failure.
void endWalk(
    const char* provider, const String& className, cim_handler_u handler, cim_method_e method, bool found);
// A provider of the remote model whose instance operations all run one walk
// (its static deliverInstances): its name for log lines and refusals, its
// class, the classes it answers to, its number of keys and the walk.
typedef void (*InstanceWalk)(CIMOMHandle& cimom, const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, const String& systemAddress, cim_method_e method,
    cim_handler_u handler);
struct WalkedClass
{
    const char* provider;
    const String& className;
    std::vector<const char*> accepted;
    Uint32 keyCount;
    // The refusal of another key count, behind the class name.
    const char* keyRefusal;
    InstanceWalk walk;
};
// The three read operations of such a provider. Each logs its entry and
// exit, opens the array for the caller (refusal naming the provider and
// `line`) and checks the class; getInstance also the key count. Then the
// walk runs with the reference (getInstance) or an empty path.
void walkGetInstance(const WalkedClass& walked, CIMOMHandle& cimom, const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, const String& systemAddress, InstanceResponseHandler& handler,
    Uint32 line);
void walkEnumerateInstances(const WalkedClass& walked, CIMOMHandle& cimom, const OperationContext& context,
    const CIMObjectPath& classReference, const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, const String& systemAddress, InstanceResponseHandler& handler,
    Uint32 line);
void walkEnumerateInstanceNames(const WalkedClass& walked, CIMOMHandle& cimom,
    const OperationContext& context, const CIMObjectPath& classReference, const String& systemAddress,
    ObjectPathResponseHandler& handler, Uint32 line);

// The class check of an instance provider: the reference's class must be
// one of `accepted`, else CIMNotSupportedException "<given class><className>
// Invalid class name".
void requireInstanceClass(
    const CIMObjectPath& reference, const std::vector<const char*>& accepted, const String& className);

// True when the array holds the key "parentRCGroup" for the vvset: the set
// stands for a remote copy group and is no local replication group. The
// query's status is not looked at: a failed query finds nothing.
bool hasParentRCGroup(const api_set_t& set);

// The member names of `set` joined by "|".
std::string joinMemberNames(const api_set_t& set);

// Cuts a "|"-joined name list into pieces of at most `limit` characters for
// the volume filter: while the rest is longer, the cut is at the last "|"
// at or before position `limit` (the cut "|" belongs to no piece), or at
// `limit` itself when there is none. An empty list gives no piece.
std::vector<std::string> namePieces(const std::string& joined, size_t limit = 255);

// The volumes whose names are in one piece of names, in the filter's order,
// through a name filter and api_getVVs_chunk. Returns 0, or the failing
// step's code with a level 2 line ("Cannot create filter list", "Cannot
// update filter list", "Failed to query volume"); the list is empty then.
// `slots` sizes the filter (the set's member count plus one). The list is
// released with free_if_not_null when the owner goes.
class VolumeQuery
{
public:
    VolumeQuery() = default;
    ~VolumeQuery();
    VolumeQuery(const VolumeQuery&) = delete;
    VolumeQuery& operator=(const VolumeQuery&) = delete;

    int byNames(const std::string& piece, int slots);

    int size() const { return _volumes ? _count : 0; }
    api_VVObj_t& operator[](int i) { return _volumes[i]; }

private:
    api_VVObj_t* _volumes = nullptr;
    int _count = 0;
};

// ---- Navigation associations ---------------------------------------------
// The hosted, affects and capabilities associations link one object (the
// storage system or the replication service) with the elements it hosts or
// affects; the membership, access point and job associations link groups
// with their members, what they replicate over, and jobs with what they
// act on. Each of their providers is its row (a NavigationRow) and a reader
// of its pairs; the operations below serve every request from those two.

// The end classes these associations join.
enum class EndClass
{
    StorageSystem,
    ReplicationService,
    ReplicationServiceCapabilities,
    ReplicationGroup,
    RemoteReplicationGroup,
    RemoteReplicationCollection,
    RemoteServiceAccessPoint,
    ReplicationEntity,
    StorageVolume,
    ConcreteJob,
    SCSIProtocolFCEndpoint,
    IPProtocolEndpoint
};

// The class of an end, then its superclasses up to CIM_ManagedElement.
const std::vector<const char*>& classChain(EndClass end);

// The shape of an association between two end classes: each end has its
// own class; the superclasses only one end has lead there (and ask the way
// back from it); those both have are valid from either end. With
// `keyCheckedSecond` an object of the second end's class or of its own
// superclasses must carry a name in its InstanceID.
AssociationShape navigationShape(const char* associationClass, const char* answersTo, const char* firstRole,
    EndClass first, const char* secondRole, EndClass second, bool keyCheckedSecond = false);

// The same for ends that objects of several classes stand at: an end's
// classes are the first of each chain, its superclasses the rest of its
// chains that the other end's chains lack.
AssociationShape navigationShape(const char* associationClass, const std::vector<const char*>& answersTo,
    const char* firstRole, const std::vector<EndClass>& first, const char* secondRole,
    const std::vector<EndClass>& second);

// How a navigation provider reads its pairs and answers, which decides the
// frame's checks:
// - ThroughCimom: the pairs come from the server. Association operations
//   first ask the server for the object (logging "Instance does not exist
//   for object ..."); getInstance wants two keys and searches all pairs.
// - Affects: as ThroughCimom, but the object check logs "error trying to
//   getInstance of ...", getInstance counts no keys and its not-found names
//   the reference, and enumerations of another class answer nothing.
// - HostedByWalk: the pairs come from the array. The object check and the
//   enumerations as Affects; getInstance reads the reference's ends first
//   (an empty end answers nothing) and counts no keys.
// - Deliver: the pairs come from the array, nothing is asked of the server.
//   getInstance wants two keys and reads the ends first; navigation that
//   the roles exclude, or from an object at neither end, answers nothing;
//   a failed read leaves the answer without complete().
// - Gather: as Deliver, but the pairs are gathered through the server, and
//   a failed read answers empty and complete.
// In every other kind a failed read answers empty and complete.
enum class NavigationKind
{
    ThroughCimom,
    Affects,
    HostedByWalk,
    Deliver,
    Gather
};

// Which operations of a membership association refuse a reference of a
// class that is neither the association nor one it answers to
// (CIMNotSupportedException "<given class><className> Invalid class name").
enum class ClassCheck
{
    None,
    InstancesAndNames,  // getInstance and both enumerations
    Instances           // getInstance and enumerateInstances only
};

// A navigation provider's row of the association table.
struct NavigationRow
{
    // The provider's class name: heads the log lines and names the source
    // file of a refused session.
    const char* provider;
    // The provider's ClassName: heads the messages of its exceptions.
    const char* className;
    NavigationKind kind;
    AssociationShape shape;
    ClassCheck classCheck = ClassCheck::None;
};

// One pair that the association links, first end first. The instances are
// set when the reader was asked for the instances of that end.
struct EndPair
{
    CIMObjectPath first;
    CIMObjectPath second;
    CIMInstance firstInstance;
    CIMInstance secondInstance;
    // Further properties of the association instance, beside its two ends.
    std::vector<std::pair<const char*, CIMValue>> properties = {};
};

// What a pair reader is asked for: paths only (`instancesOf` 0), or also
// the instances of the first (1) or second (2) end, as the caller's flags
// and property list shape them.
struct PairQuery
{
    const OperationContext& context;
    int instancesOf;
    Boolean includeQualifiers;
    Boolean includeClassOrigin;
    const CIMPropertyList& propertyList;
    // The object navigated from, when it stands at an end; a reader may
    // read only its pairs (the frame keeps only those). Null otherwise.
    CIMObjectPath object = CIMObjectPath();
};

// The class `className` as the query shapes the instances it asks for.
CIMClass queryClass(CIMOMHandle& cimom, const PairQuery& query, const CIMName& className);

// Appends every pair of the association to `pairs`, in the order the array
// or the server gives them. False when they could not be read (the reader
// has logged why); what was appended is then not used.
typedef std::function<bool(const PairQuery& query, std::vector<EndPair>& pairs)> PairReader;

// The request checks of a provider: its _invalidParms.
typedef std::function<Boolean(const CIMObjectPath& objectName, const String& role, const String& resultRole,
    const CIMName& resultClass, const String& method)>
    RequestCheck;

// What a navigation provider hands the frame for one operation: its row,
// the server handle, the host of the association paths it builds, its
// request checks and its pair reader. Holds references only.
struct NavigationProvider
{
    const NavigationRow& row;
    CIMOMHandle& cimom;
    const String& host;
    RequestCheck invalidParms;
    PairReader readPairs;
};

// One request, as the provider's operation received it. Fields an
// operation lacks stay empty.
struct NavigationRequest
{
    const OperationContext& context;
    CIMObjectPath objectName;
    CIMName resultClass;
    String role;
    String resultRole;
    Boolean includeQualifiers;
    Boolean includeClassOrigin;
    CIMPropertyList propertyList;
};

// Serves one operation of a navigation provider: `method` says which (the
// four association operations, getInstance, and the two enumerations) and
// which member of `handler` is valid. For the association operations
// `request.objectName` is the object, for getInstance the association's
// reference, for the enumerations the class reference.
// The session is opened first (TraceableCIMException CIM_ERR_ACCESS_DENIED
// for a refused user). Then, as the row's kind says above:
// - association operations: a request the provider's checks refuse, or an
//   object the server does not find, answers nothing (no processing, no
//   complete, no exception). Otherwise associators give the far ends'
//   instances, associatorNames their paths, references and referenceNames
//   the association instances and paths of the object's pairs;
// - getInstance: the pair of the reference; CIMInvalidParameterException
//   "<className> Expect two keys." for a wrong key count where counted,
//   CIMObjectNotFoundException when no pair matches;
// - enumerations: every pair's association instance or path.
// Server errors while reading classes pass on.
void answer(const NavigationProvider& provider, const NavigationRequest& request, cim_method_e method,
    cim_handler_u handler);

// Pairs read through the server, for ThroughCimom and Affects providers:
// each object of `firstEnd` with each of `secondEnd`. An end is either a
// class whose instance names (or instances) the server enumerates, or, when
// `fixedFirst` is not null, that one path for the first end (its instance
// asked of the server when wanted). A server error is logged at level 2
// with `provider` and gives false.
bool pairsThroughCimom(CIMOMHandle& cimom, const PairQuery& query, const char* provider,
    const CIMName& firstEnd, const CIMObjectPath& fixedFirst, const CIMName& secondEnd,
    std::vector<EndPair>& pairs);

// A far end found by a walk of the remote copy configuration: its path and,
// when the walk was asked for them, its instance.
struct WalkEnd
{
    CIMObjectPath path;
    CIMInstance instance;
};
// Appends the far ends one snapshot holds, in the walk's order.
typedef std::function<void(api_rcopy_t& rcopy, bool withInstances, std::vector<WalkEnd>& ends)>
    RemoteCopyWalk;

// Pairs read from the array, for HostedByWalk and Deliver providers: `first`
// with each far end `walk` finds in the remote copy configuration
// (api_getRCopy with `selector`, the semaphore held for that call only).
// The first end's instance, when wanted, is asked of the server. A failed or
// busy array is logged at level 2 ("<provider>::_getRelatedInstances():
// api_getRCopy error (<code>): <text>") and gives false, as does a null
// `first` or a server error.
bool pairsFromRemoteCopy(CIMOMHandle& cimom, const PairQuery& query, const char* provider, int selector,
    const CIMObjectPath& first, const RemoteCopyWalk& walk, std::vector<EndPair>& pairs);

// The walk of the remote copy targets, one far end for each target in the
// array's order: its path from `pathOf` (given the target's name) or, when
// instances are asked for, its instance from `instanceOf` on `endClass` as
// the query shapes it.
RemoteCopyWalk targetWalk(CIMOMHandle& cimom, const PairQuery& query, const CIMName& endClass,
    const std::function<CIMObjectPath(const String& targetName)>& pathOf,
    const std::function<CIMInstance(rm_target_t& target, CIMClass& endClass)>& instanceOf);

// True when `end` and `object` name the same object; a path without a
// namespace is taken to be in the module's namespace, hosts do not count.
bool sameObject(const CIMObjectPath& end, const CIMObjectPath& object);

}  // namespace ZDA_AssociationFrame

PEGASUS_NAMESPACE_END

// The operations every navigation provider declares, inside its class body:
// - the default constructor, the destructor, and terminate(), which deletes
//   the provider;
// - associators, associatorNames, references, referenceNames, getInstance,
//   enumerateInstances and enumerateInstanceNames, each served by
//   ZDA_AssociationFrame::answer (see there for what each gives and throws);
// - modifyInstance, createInstance and deleteInstance, refused with
//   CIMNotSupportedException "<ClassName> does not support <operation>.":
//   the pairs follow from the array;
// - _invalidParms, the provider's request checks (see invalidRequest), and
//   _frame(), the provider as the frame sees it.
// Leaves the class body in its private part.
#define ZDA_NAVIGATION_PROVIDER_OPERATIONS(Provider)                                                         \
public:                                                                                                      \
    Provider();                                                                                              \
    virtual ~Provider();                                                                                     \
    virtual void terminate();                                                                                \
    virtual void associators(const OperationContext& context, const CIMObjectPath& objectName,               \
        const CIMName& associationClass, const CIMName& resultClass, const String& role,                     \
        const String& resultRole, const Boolean includeQualifiers, const Boolean includeClassOrigin,         \
        const CIMPropertyList& propertyList, ObjectResponseHandler& handler);                                \
    virtual void associatorNames(const OperationContext& context, const CIMObjectPath& objectName,           \
        const CIMName& associationClass, const CIMName& resultClass, const String& role,                     \
        const String& resultRole, ObjectPathResponseHandler& handler);                                       \
    virtual void references(const OperationContext& context, const CIMObjectPath& objectName,                \
        const CIMName& resultClass, const String& role, const Boolean includeQualifiers,                     \
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList,                               \
        ObjectResponseHandler& handler);                                                                     \
    virtual void referenceNames(const OperationContext& context, const CIMObjectPath& objectName,            \
        const CIMName& resultClass, const String& role, ObjectPathResponseHandler& handler);                 \
    virtual void getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,        \
        const Boolean includeQualifiers, const Boolean includeClassOrigin,                                   \
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);                              \
    virtual void enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,    \
        const Boolean includeQualifiers, const Boolean includeClassOrigin,                                   \
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler);                              \
    virtual void enumerateInstanceNames(const OperationContext& context,                                     \
        const CIMObjectPath& classReference, ObjectPathResponseHandler& handler);                            \
    virtual void modifyInstance(const OperationContext& context, const CIMObjectPath& instanceReference,     \
        const CIMInstance& instanceObject, const Boolean includeQualifiers,                                  \
        const CIMPropertyList& propertyList, ResponseHandler& handler);                                      \
    virtual void createInstance(const OperationContext& context, const CIMObjectPath& instanceReference,     \
        const CIMInstance& instanceObject, ObjectPathResponseHandler& handler);                              \
    virtual void deleteInstance(                                                                             \
        const OperationContext& context, const CIMObjectPath& instanceReference, ResponseHandler& handler);  \
                                                                                                             \
private:                                                                                                     \
    Boolean _invalidParms(const CIMObjectPath& objectName, const String& role, const String& resultRole,     \
        const CIMName& resultClass, const String& method);                                                   \
    ZDA_AssociationFrame::NavigationProvider _frame();

// Defines those operations for `Provider`, in its source file; its request
// checks test `requestShape`. The file provides, at file scope, `ROW` (its
// NavigationRow) and `ClassName`; the class has `_cimom`, `_systemAddress`
// (the host of its association paths), `_assoClassName` and the pair reader
// named `reader`.
#define ZDA_NAVIGATION_PROVIDER_DEFINE(Provider, reader, requestShape)                                       \
    Provider::Provider() : _assoClassName(ROW.shape.associationClass) {}                                     \
    Provider::~Provider() = default;                                                                         \
    void Provider::terminate()                                                                               \
    {                                                                                                        \
        delete this;                                                                                         \
    }                                                                                                        \
    Boolean Provider::_invalidParms(const CIMObjectPath& objectName, const String& role,                     \
        const String& resultRole, const CIMName& resultClass, const String& method)                          \
    {                                                                                                        \
        return ZDA_AssociationFrame::invalidRequest(                                                         \
            requestShape, objectName, role, resultRole, resultClass, method);                                \
    }                                                                                                        \
    ZDA_AssociationFrame::NavigationProvider Provider::_frame()                                              \
    {                                                                                                        \
        return ZDA_AssociationFrame::NavigationProvider{ROW, _cimom, _systemAddress,                         \
            [this](const CIMObjectPath& objectName, const String& role, const String& resultRole,            \
                const CIMName& resultClass, const String& method) {                                          \
                return _invalidParms(objectName, role, resultRole, resultClass, method);                     \
            },                                                                                               \
            [this](const ZDA_AssociationFrame::PairQuery& query,                                             \
                std::vector<ZDA_AssociationFrame::EndPair>& pairs) { return reader(query, pairs); }};        \
    }                                                                                                        \
    void Provider::associators(const OperationContext& context, const CIMObjectPath& objectName,             \
        const CIMName&, const CIMName& resultClass, const String& role, const String& resultRole,            \
        const Boolean includeQualifiers, const Boolean includeClassOrigin,                                   \
        const CIMPropertyList& propertyList, ObjectResponseHandler& handler)                                 \
    {                                                                                                        \
        ZDA_AssociationFrame::answer(_frame(),                                                               \
            {context, objectName, resultClass, role, resultRole, includeQualifiers, includeClassOrigin,      \
                propertyList},                                                                               \
            CIM_ASSOCIATORS, ZDA_AssociationFrame::handlerOf(handler));                                      \
    }                                                                                                        \
    void Provider::associatorNames(const OperationContext& context, const CIMObjectPath& objectName,         \
        const CIMName&, const CIMName& resultClass, const String& role, const String& resultRole,            \
        ObjectPathResponseHandler& handler)                                                                  \
    {                                                                                                        \
        ZDA_AssociationFrame::answer(_frame(),                                                               \
            {context, objectName, resultClass, role, resultRole, false, false, CIMPropertyList()},           \
            CIM_ASSOCIATOR_NAMES, ZDA_AssociationFrame::handlerOf(handler));                                 \
    }                                                                                                        \
    void Provider::references(const OperationContext& context, const CIMObjectPath& objectName,              \
        const CIMName& resultClass, const String& role, const Boolean includeQualifiers,                     \
        const Boolean includeClassOrigin, const CIMPropertyList& propertyList,                               \
        ObjectResponseHandler& handler)                                                                      \
    {                                                                                                        \
        ZDA_AssociationFrame::answer(_frame(),                                                               \
            {context, objectName, resultClass, role, String(), includeQualifiers, includeClassOrigin,        \
                propertyList},                                                                               \
            CIM_REFERENCES, ZDA_AssociationFrame::handlerOf(handler));                                       \
    }                                                                                                        \
    void Provider::referenceNames(const OperationContext& context, const CIMObjectPath& objectName,          \
        const CIMName& resultClass, const String& role, ObjectPathResponseHandler& handler)                  \
    {                                                                                                        \
        ZDA_AssociationFrame::answer(_frame(),                                                               \
            {context, objectName, resultClass, role, String(), false, false, CIMPropertyList()},             \
            CIM_REFERENCE_NAMES, ZDA_AssociationFrame::handlerOf(handler));                                  \
    }                                                                                                        \
    void Provider::getInstance(const OperationContext& context, const CIMObjectPath& instanceReference,      \
        const Boolean includeQualifiers, const Boolean includeClassOrigin,                                   \
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler)                               \
    {                                                                                                        \
        ZDA_AssociationFrame::answer(_frame(),                                                               \
            {context, instanceReference, CIMName(), String(), String(), includeQualifiers,                   \
                includeClassOrigin, propertyList},                                                           \
            CIM_GET_INSTANCE, ZDA_AssociationFrame::handlerOf(handler));                                     \
    }                                                                                                        \
    void Provider::enumerateInstances(const OperationContext& context, const CIMObjectPath& classReference,  \
        const Boolean includeQualifiers, const Boolean includeClassOrigin,                                   \
        const CIMPropertyList& propertyList, InstanceResponseHandler& handler)                               \
    {                                                                                                        \
        ZDA_AssociationFrame::answer(_frame(),                                                               \
            {context, classReference, CIMName(), String(), String(), includeQualifiers, includeClassOrigin,  \
                propertyList},                                                                               \
            CIM_ENUMERATE_INSTANCES, ZDA_AssociationFrame::handlerOf(handler));                              \
    }                                                                                                        \
    void Provider::enumerateInstanceNames(const OperationContext& context,                                   \
        const CIMObjectPath& classReference, ObjectPathResponseHandler& handler)                             \
    {                                                                                                        \
        ZDA_AssociationFrame::answer(_frame(),                                                               \
            {context, classReference, CIMName(), String(), String(), false, false, CIMPropertyList()},       \
            CIM_ENUMERATE_INSTANCE_NAMES, ZDA_AssociationFrame::handlerOf(handler));                         \
    }                                                                                                        \
    void Provider::modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,         \
        const Boolean, const CIMPropertyList&, ResponseHandler&)                                             \
    {                                                                                                        \
        throw ZDA_AssociationFrame::notSupported(ClassName, "modifyInstance");                               \
    }                                                                                                        \
    void Provider::createInstance(                                                                           \
        const OperationContext&, const CIMObjectPath&, const CIMInstance&, ObjectPathResponseHandler&)       \
    {                                                                                                        \
        throw ZDA_AssociationFrame::notSupported(ClassName, "createInstance");                               \
    }                                                                                                        \
    void Provider::deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&)           \
    {                                                                                                        \
        throw ZDA_AssociationFrame::notSupported(ClassName, "deleteInstance");                               \
    }

#endif
