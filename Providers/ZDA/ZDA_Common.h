// ZDA_Common: the shared toolbox of every provider of the array.
//
// A class without data whose static operations the providers call for the
// steps every operation shares: dispatch to the response handler of the
// operation being served, typed reading and writing of properties and
// method parameters, path matching and reference checks, association paths,
// instances and filters, the system's identity, audit event records,
// conversions of times and names, and the resolution and removal of
// volumes.
//
// Conventions of every operation here:
// - Entry and exit are logged at level 4 as "-->ZDA_Common::<name>..." and
//   "<--ZDA_Common::<name>..."; an exception leaves no exit line.
// - Calls into the array are made under the array semaphore, held only for
//   the call itself; the caller must not hold it.
// - Nothing is kept between calls except the system addresses of
//   getSystemIPAddr and the seed of generate_random_string.
// - Every operation may run on any thread.
#ifndef ZDA_COMMON_H
#define ZDA_COMMON_H

#include <ctime>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "zdaapi.h"
#include "ZDA_ProviderTypes.h"
#include "ZDA_InternalCacheService.h"

PEGASUS_NAMESPACE_BEGIN

class ZDA_Common
{
public:
    // ---- response handler dispatch -------------------------------------------
    // Each calls the handler member that `method` selects (see cim_method_e);
    // a method outside 0..6 does nothing.
    static void handleProcessing(cim_handler_u handler, const cim_method_e method);
    // Delivers a CIMObject of the instance (associators, references), its
    // path (the name operations) or the instance itself (getInstance,
    // enumerateInstances).
    static void handleDeliver(cim_handler_u handler, const cim_method_e method, const CIMInstance& instance);
    static void handleComplete(cim_handler_u handler, const cim_method_e method);

    // ---- policy ------------------------------------------------------------------
    // The array's policy flags held by the internal cache service.
    static cim_policy_t getPolicy() { return ZDA_InternalCacheService::getInstance()->getPolicy(); }
    static void setPolicy(cim_policy_t policy) { ZDA_InternalCacheService::getInstance()->setPolicy(policy); }

    // ---- reading properties and parameters --------------------------------------
    // The property's value; an empty String value for an empty name or an
    // uninitialized instance (logged at level 3), a default CIMValue for an
    // absent property.
    static CIMValue getPropertyValue(const CIMInstance& instance, const String& propertyName);
    // The property's value as a String; "" when the name is empty or the
    // instance uninitialized (logged at level 3), the property absent or null.
    static String getStringProperty(const CIMInstance& instance, const String& propertyName);
    // The value of the last key binding of that name (names compare without
    // case); "" when there is none.
    static String getStringProperty(const CIMObjectPath& objectPath, const String& propertyName);

    // Reads a property into `value`. Returns 0 when a value was read, 3 when
    // the property is absent and 4 when it is null; `value` is untouched
    // unless the result is 0. A value of another type throws TypeMismatchException.
    static int getProperty(CIMInstance& instance, const String& propertyName, CIMObjectPath& value);
    static int getProperty(CIMInstance& instance, const String& propertyName, Array<String>& value);
    static int getProperty(CIMInstance& instance, const String& propertyName, Array<int>& value);
    static int getProperty(CIMInstance& instance, const String& propertyName, Array<Uint16>& value);
    static int getProperty(CIMInstance& instance, const String& propertyName, Uint64& value);
    static int getProperty(CIMInstance& instance, const String& propertyName, Uint32& value);
    static int getProperty(CIMInstance& instance, const String& propertyName, Uint16& value);
    static int getProperty(CIMInstance& instance, const String& propertyName, Uint8& value);
    static int getProperty(CIMInstance& instance, const String& propertyName, Boolean& value);
    static int getProperty(CIMInstance& instance, const String& propertyName, CIMDateTime& value);

    // Reads the first non-null parameter of that name (compared without case)
    // into `paramValue`. Returns 0 when read and 3 when the parameter is
    // absent or only null; 4 when a null parameter of the name came before
    // the one read. `paramValue` is untouched when the result is 3. A value
    // of another type throws TypeMismatchException.
    static int getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Uint8& paramValue);
    static int getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Uint16& paramValue);
    static int getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Uint32& paramValue);
    static int getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Uint64& paramValue);
    static int getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Boolean& paramValue);
    static int getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, CIMDateTime& paramValue);
    static int getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, CIMObjectPath& paramValue);
    static int getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, String& paramValue);
    static int getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Array<Uint16>& paramValue);
    static int getParameter(
        const Array<CIMParamValue>& paramList, const String& paramName, Array<String>& paramValue);

    // ---- writing instances -----------------------------------------------------------
    // An instance of the class with every property at its default value.
    static CIMInstance buildInstanceSkeleton(CIMClass& myClass);

    // Sets the value of a property the instance already has; a property it
    // lacks (filtered out by a property list) is skipped silently.
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const String& value);
    // A text literal is a String, not a Boolean.
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const char* value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Boolean& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint8& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint16& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint32& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Uint64& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Sint16& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<String>& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<Uint16>& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<int>& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<Uint64>& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const Array<Boolean>& value);
    static void setPropertyValue(
        CIMInstance& instance, CIMName propertyName, const Array<CIMDateTime>& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const CIMObjectPath& value);
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const CIMDateTime& value);
    // Replaces the property, or adds it when the instance lacks it.
    static void setPropertyValue(CIMInstance& instance, CIMName propertyName, const CIMInstance& value);
    // Sets a present property to a null value of `cimtype`.
    static void setPropertyValueToNull(CIMInstance& instance, CIMName propertyName, CIMType cimtype);

    // The class through the internal cache service (fetched from the server
    // on first use). Server errors pass on as its exceptions.
    static CIMClass getStoredCIMClass(CIMOMHandle& cimom, const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
    {
        return ZDA_InternalCacheService::getInstance()->getStoredCIMClass(cimom, context, nameSpace,
            className, localOnly, includeQualifiers, includeClassOrigin, propertyList);
    }

    // ---- paths and references -------------------------------------------------------------
    // True when both paths name the same object, ignoring the hosts of the
    // paths and of the paths held in their reference (or path-like string)
    // keys, one level deep. Namespace and class count.
    static Boolean matchObjectPath(const CIMObjectPath& path1, const CIMObjectPath& path2);

    // True when `ref` belongs to this system in `nameSpace`: a ref without a
    // namespace gets `nameSpace` (the caller goes on with the changed ref);
    // another namespace is refused. An empty host passes; otherwise the host
    // must be `systemAddress` (without case), the system's IPv4 address, or
    // its IPv6 address in any notation. Refusals are logged at level 2.
    static Boolean verifyRefMethodParam(
        CIMObjectPath& ref, CIMNamespaceName nameSpace, String& systemAddress);
    // As above, and the class of `ref` must be `expectedClass`.
    static Boolean verifyRefMethodParam(
        CIMObjectPath& ref, CIMNamespaceName nameSpace, String& systemAddress, CIMName expectedClass);
    // As above, and the class of `ref` must be one of `expectedClasses`.
    static Boolean verifyRefMethodParam(CIMObjectPath& ref, CIMNamespaceName nameSpace, String& systemAddress,
        const Array<CIMName>& expectedClasses);

    // True when a reference property of the association `instance` (the one
    // named `role`, when given) refers to `target`. Throws CIMException
    // CIM_ERR_INVALID_PARAMETER when `role` names no reference property.
    static Boolean _isInstanceValidReference(
        const CIMObjectPath& target, CIMInstance& instance, const String& role);

    // True when some key of the path has the value `instanceID` (without case).
    static Boolean isPoolPath(const CIMObjectPath& objectName, const String& instanceID);

    // Membership tests: Strings compare with case, paths by matchObjectPath
    // (instances by their paths), names without case.
    static Boolean isPartOfArray(const String& element, const Array<String>& list);
    static Boolean isPartOfArray(const CIMObjectPath& element, const Array<CIMObjectPath>& list);
    static Boolean isPartOfArray(const CIMObjectPath& element, const Array<CIMInstance>& list);
    static Boolean isPartOfArray(const CIMName& element, const Array<CIMName>& list);

    // ---- association paths, instances and filters ----------------------------------------
    // A path in root/zda on host `systemAddress` with the reference keys
    // Antecedent and Dependent.
    static CIMObjectPath buildDepAssocPath(const String& systemAddress, const CIMName& assocClass,
        const CIMObjectPath& antecedent, const CIMObjectPath& dependent);
    static CIMInstance buildDepAssocInstance(const String& systemAddress, const CIMName& assocClass,
        const CIMObjectPath& antecedent, const CIMObjectPath& dependent, CIMClass& classSkeleton);

    // A path on host `hostAddress` (or `localAddress`) in `nameSpace` whose
    // reference keys hold the end paths, each given the host named for it.
    static CIMObjectPath buildAssocPath(const CIMName& assocClass, const String& assocName1,
        const String& assocName2, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
        const String& hostAddress, String nameSpace);
    static CIMObjectPath buildAssocPath(const CIMName& assocClass, const String& assocName1,
        const String& assocName2, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
        const String& hostAddress1, const String& hostAddress2, const String& localAddress, String nameSpace);
    static CIMObjectPath buildAssocPath(const CIMName& assocClass, const String& assocName1,
        const String& assocName2, const String& assocName3, const CIMObjectPath& assocPath1,
        const CIMObjectPath& assocPath2, const CIMObjectPath& assocPath3, const String& hostAddress,
        String nameSpace);

    // The instance of those paths: the skeleton of the class with the end
    // references set, and the path of buildAssocPath.
    static CIMInstance buildAssocInstance(const CIMName& assocClass, const String& assocName1,
        const String& assocName2, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
        const String& hostAddress, String nameSpace, CIMClass& classSkeleton);
    static CIMInstance buildAssocInstance(const CIMName& assocClass, const String& assocName1,
        const String& assocName2, const CIMObjectPath& assocPath1, const CIMObjectPath& assocPath2,
        const String& hostAddress1, const String& hostAddress2, const String& localAddress, String nameSpace,
        CIMClass& classSkeleton);
    static CIMInstance buildAssocInstance(const CIMName& assocClass, const String& assocName1,
        const String& assocName2, const String& assocName3, const CIMObjectPath& assocPath1,
        const CIMObjectPath& assocPath2, const CIMObjectPath& assocPath3, const String& hostAddress,
        String nameSpace, CIMClass& classSkeleton);

    // The association instances (of `resultClass`, unless null) that refer
    // to `objectName` (through `role`, unless empty), in the input's order.
    // Throws as _isInstanceValidReference does.
    static Array<CIMInstance> filterReferenceNames(const Array<CIMInstance>& targetAssociationInstanceList,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role);
    // The far ends of `assocInstance` seen from `targetObjectPath`: each
    // reference that does not match the target, kept when `resultClass` is
    // empty or names its class (once per naming) and `resultRole` is empty
    // or its property's name.
    static Array<CIMObjectPath> filterAssocInstanceToTargetPaths(CIMInstance& assocInstance,
        const CIMObjectPath& targetObjectPath, Array<CIMName>& resultClass, String resultRole);
    // As above, giving the instances of `resultInstanceList` whose paths
    // match those ends.
    static Array<CIMInstance> filterAssocInstanceToTargetInstances(CIMInstance& assocInstance,
        const CIMObjectPath& targetObjectPath, const Array<CIMInstance>& resultInstanceList,
        Array<CIMName>& resultClass, String resultRole);

    // ---- system identity ---------------------------------------------------------------------
    // One call over a local client connection to this process's server
    // (CIMClient::connectLocal). Connection and CIM errors pass on.
    static Array<CIMObjectPath> enumerateInstanceNames(
        const CIMNamespaceName& nameSpace, const CIMName& className);
    static CIMValue invokeMethod(const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters);

    // The path of the internal cache's one instance in root/PG_Internal.
    static CIMObjectPath buildInternalCacheObjectPath(const String& hostAddr, const String& systemName);

    // System facts from the internal cache's methods, asked over a local
    // connection. The forms taking `cimom` (except getSystemHostName) ask
    // again through `cimom` when the local connection fails; the others let
    // the failure pass on. A fact the answer lacks gives "" or 0.
    static String getSystemName(CIMOMHandle& cimom);
    static String getSystemName();
    static String getSystemHostName(CIMOMHandle& cimom);
    static String getSystemAddress(CIMOMHandle& cimom);
    static Uint32 getSystemID();
    static int getSystemType();
    static Uint8 isQuadPortSystem(CIMOMHandle& cimom);

    // The path of the storage system instance in root/zda, with the system's
    // host name; an empty path (and a level 2 line) when there is none.
    static CIMObjectPath getSystemObjectPath(CIMOMHandle& cimom);

    // The system's IPv4 (iptype 1) or IPv6 (iptype 2) address text, asked of
    // the array once and kept for the process; "" when it has none, and for
    // another iptype (logged at level 2).
    static String getSystemIPAddr(int iptype);

    // ---- audit event records -------------------------------------------------------------
    // Fills the record: method "<className>:<method>", op, user and address,
    // each cut to its field. Null texts leave their fields alone; a null
    // record is logged at level 2 and nothing else happens.
    static void setEventParam(_api_evtparam_t* eventp, const char* className, const char* method,
        const char* op, const char* user, const char* addr);
    // As above, and the free text `evtText`, cut to 255 characters.
    static void setEventParam(_api_evtparam_t* eventp, const char* className, const char* method,
        const char* op, const char* user, const char* addr, const char* evtText);
    // Sets the operation text of the record.
    static void setEventOp(_api_evtparam_t* eventp, const char* op);

    // ---- conversions -------------------------------------------------------------------
    // The local time of `time` as a CIM date-time with the zone's offset.
    static CIMDateTime getCIMDateTime(time_t time);
    // The time of a CIM date-time read in local time; 0 for an interval, an
    // unset or malformed date and a year below 1900. Throws
    // DateTimeOutOfRangeException when the time cannot be represented.
    static time_t getDateTime(const CIMDateTime& cimTime);
    // Reads the fields of a CIM date-time text into *tmval: 1 when read, 0
    // for year 0 (interval or unset), -1 for a bad year or month.
    static int _formatDateTime(const char* timeString, tm* tmval);
    // "GMT+<n>" or "GMT-<n>", n the local zone's offset in minutes.
    static String getTimeZone();
    // What follows "KX_ORLA:" in an instance ID ("" without the prefix).
    static String extractFromInstanceID(const String& instanceID);
    // Writes len - 1 random characters of [a-zA-Z0-9_] and a terminator to
    // str. len must be above 0 and str not null, or the process stops.
    static void generate_random_string(char* str, unsigned int len);
    // The remote system's name of the remote copy target `targetName`, "" if
    // no target has that name.
    static String RCTargetToSysname(const api_rcopy_t& rcopy, const String& targetName);
    // The process's address space limit in MB, times th_scale.
    static Uint32 getInstanceThreshold(Uint32 th_scale);
    // The node pair of a node (0-1: 0, ..., 6-7: 3); -1 for other values.
    static int getNodePairIndex(int nodePosition);
    // The logical port id of an FC port by WWN or an iSCSI port by name;
    // -1 when there is none.
    static int getPortLPID(Uint64 portWWN);
    static int getPortLPID(String& iscsiName);

    // ---- volumes -------------------------------------------------------------------------
    // The VV names of the volumes whose WWNs are the paths' DeviceID keys,
    // appended to vvNames. 0 when at least one was found (also fewer than
    // asked), 4 on a failure or when none was found, 5 for an empty list.
    static int fillInVVNames(Array<CIMObjectPath>& memberVols, Array<String>& vvNames);
    // As above into a new array of names that the caller frees (free());
    // 5 for a null argument.
    static int fillInVVNames(
        Array<CIMObjectPath>& memberVols, api_name_t** vvNames, unsigned int* memberCount);
    // Removes the volumes, retrying up to ten times, 2 seconds apart, while
    // the array reports them busy. 0 when all went; 32768 when fewer went
    // than were asked for; 4 on a failure, when still busy, or when none of
    // them could be found.
    static int removeVVs(_api_evtparam_t* apiEventp, Array<CIMObjectPath>& volRefs, Uint32 noWait);
};

PEGASUS_NAMESPACE_END

#endif
