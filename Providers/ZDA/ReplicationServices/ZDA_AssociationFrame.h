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
// All functions may run on any thread; none holds the semaphore on return.
#ifndef ZDA_ASSOCIATION_FRAME_H
#define ZDA_ASSOCIATION_FRAME_H

#include <string>
#include <vector>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
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
Boolean invalidRequest(const AssociationShape& shape, const CIMObjectPath& objectName,
    const String& role, const String& resultRole, const CIMName& resultClass,
    const String& method);

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
SearchDirections searchDirections(const AssociationShape& shape, const String& role,
    const String& resultRole);

// The path an association reference holds under `role`: the key's text read
// as a path. False (and `end` untouched) when the key is absent or empty.
// A text that is no object path throws the SDK's MalformedObjectNameException.
bool endReference(const CIMObjectPath& associationRef, const String& role, CIMObjectPath& end);

// Refusals of the membership family's getInstance and enumerations: the
// reference's class must be the association class or one it answers to,
// else CIMNotSupportedException "<given class><className> Invalid class name".
void requireAssociationClass(const AssociationShape& shape, const CIMObjectPath& reference,
    const String& className);
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
// The end of such a walk: for getInstance (`method` 4) with nothing found,
// a level 2 line and CIMObjectNotFoundException "<className> CIM Object not
// found."; otherwise handleComplete. An enumeration thus completes empty
// after an array failure.
void endWalk(const char* provider, const String& className, cim_handler_u handler,
    cim_method_e method, bool found);
// A provider of the remote model whose instance operations all run one walk
// (its static deliverInstances): its name for log lines and refusals, its
// class, the classes it answers to, its number of keys and the walk.
typedef void (*InstanceWalk)(CIMOMHandle& cimom, const OperationContext& context,
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    const String& systemAddress, cim_method_e method, cim_handler_u handler);
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
    const CIMObjectPath& instanceReference, const Boolean includeQualifiers,
    const Boolean includeClassOrigin, const CIMPropertyList& propertyList,
    const String& systemAddress, InstanceResponseHandler& handler, Uint32 line);
void walkEnumerateInstances(const WalkedClass& walked, CIMOMHandle& cimom,
    const OperationContext& context, const CIMObjectPath& classReference,
    const Boolean includeQualifiers, const Boolean includeClassOrigin,
    const CIMPropertyList& propertyList, const String& systemAddress,
    InstanceResponseHandler& handler, Uint32 line);
void walkEnumerateInstanceNames(const WalkedClass& walked, CIMOMHandle& cimom,
    const OperationContext& context, const CIMObjectPath& classReference,
    const String& systemAddress, ObjectPathResponseHandler& handler, Uint32 line);

// The class check of an instance provider: the reference's class must be
// one of `accepted`, else CIMNotSupportedException "<given class><className>
// Invalid class name".
void requireInstanceClass(const CIMObjectPath& reference,
    const std::vector<const char*>& accepted, const String& className);

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

}  // namespace ZDA_AssociationFrame

PEGASUS_NAMESPACE_END

#endif
