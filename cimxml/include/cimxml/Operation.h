// The operation model the CIM-XML codec reads and writes: one request (an
// intrinsic operation on a namespace or an extrinsic method on an object)
// and its response (a result or a CIM error). It carries SDK objects only, so
// that a server front end and the client transport can map it one-to-one
// onto their own calls without the codec knowing either of them.
#ifndef ZDA_CIMXML_OPERATION_H
#define ZDA_CIMXML_OPERATION_H

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

#include <string>

namespace cimxml
{
using namespace Pegasus;

// The intrinsic operations the codec knows. Each has a fixed set of named
// parameters and one shape of result (see Result below).
enum class Intrinsic
{
    GetClass,
    EnumerateClasses,
    EnumerateClassNames,
    CreateClass,
    ModifyClass,
    DeleteClass,
    GetInstance,
    EnumerateInstances,
    EnumerateInstanceNames,
    CreateInstance,
    ModifyInstance,
    DeleteInstance,
    ExecQuery,
    Associators,
    AssociatorNames,
    References,
    ReferenceNames,
    GetProperty,
    SetProperty,
    // The pull operations.
    OpenEnumerateInstances,
    OpenEnumerateInstancePaths,
    OpenReferenceInstances,
    OpenReferenceInstancePaths,
    OpenAssociatorInstances,
    OpenAssociatorInstancePaths,
    PullInstancesWithPath,
    PullInstancePaths,
    CloseEnumeration,
};

// The pull operations (Open*, Pull*, CloseEnumeration): they continue
// across requests, on an enumeration context the server keeps.
bool isPullOperation(Intrinsic op);

// "GetClass" and so on; the wire spelling.
const char* intrinsicName(Intrinsic op);
// The operation named name (exact, case-sensitive spelling); false if none.
bool findIntrinsic(const std::string& name, Intrinsic& op);

// What the result of a successful intrinsic operation holds, and how it is
// packed into OperationResponse::returnValue:
//   Nothing         null CIMValue
//   Class           CIMObject holding the CIMClass
//   Classes         Array<CIMObject>, each holding a CIMClass
//   ClassNames      Array<String>
//   Instance        CIMInstance (no path)
//   NamedInstances  Array<CIMInstance>, each with its path set
//   InstanceNames   Array<CIMObjectPath>
//   InstanceName    CIMObjectPath
//   ObjectsWithPath Array<CIMObject>, each with its (full) path set
//   ObjectPaths     Array<CIMObjectPath> (class or instance paths)
//   PropertyValue   the property's value as sent (strings when untyped)
//   InstancesWithPath  Array<CIMInstance>, each with its (full) path set
//   InstancePaths   Array<CIMObjectPath> (full instance paths)
// The Open* and Pull* operations also answer, in outParameters,
// EnumerationContext (String; null once the sequence ended) and
// EndOfSequence (Boolean).
enum class ResultShape
{
    Nothing,
    Class,
    Classes,
    ClassNames,
    Instance,
    NamedInstances,
    InstanceNames,
    InstanceName,
    ObjectsWithPath,
    ObjectPaths,
    PropertyValue,
    InstancesWithPath,
    InstancePaths,
};

ResultShape resultShape(Intrinsic op);

// How the named parameters of intrinsic operations are carried in
// OperationRequest::parameters (the codec types them by name):
//   ClassName, AssocClass, ResultClass          String (the class name)
//   InstanceName, ObjectName                    CIMObjectPath (an ObjectName
//                                               without keys names a class)
//   LocalOnly, DeepInheritance, Include*        Boolean
//   Role, ResultRole, QueryLanguage, Query,
//   PropertyName                                String
//   PropertyList                                Array<String>; a null value
//                                               means "all properties"
//   NewInstance                                 CIMInstance
//   ModifiedInstance                            CIMInstance with its path
//   NewClass, ModifiedClass                     CIMObject holding a CIMClass
//   NewValue                                    as sent; untyped (isTyped()
//                                               false) unless a reference
//   FilterQueryLanguage, FilterQuery,
//   EnumerationContext                          String
//   ContinueOnError                             Boolean
//   OperationTimeout, MaxObjectCount            Uint32; OperationTimeout is
//                                               null when not given
// A decoded request holds every parameter the operation defines: those the
// client left out carry the operation's default (false/true for flags, a
// null value otherwise), so a server needs no table of defaults.

struct OperationRequest
{
    std::string messageId = "1";

    bool intrinsic = true;
    Intrinsic operation = Intrinsic::GetClass;  // when intrinsic
    CIMName methodName;                         // when extrinsic

    // Intrinsic: the target namespace. Extrinsic: the namespace of target.
    CIMNamespaceName nameSpace;
    // Extrinsic only: the class (no keys) or instance the method runs on;
    // its namespace and host are not set.
    CIMObjectPath target;

    // Intrinsic: named as above. Extrinsic: the method's input parameters;
    // a parameter sent without a type is a String (or Array<String>) with
    // isTyped() false, for the server to type from the method declaration.
    Array<CIMParamValue> parameters;

    // The operation's name as it travels ("GetClass", or the method name).
    String name() const;

    // The parameter named name (exact spelling), or null.
    const CIMParamValue* find(const char* name) const;

    // Typed access to intrinsic parameters. Each throws CIMException
    // (CIM_ERR_INVALID_PARAMETER) naming the parameter when it is missing or
    // holds another type; the optional ones accept a null value.
    CIMName className(const char* name) const;  // null name when null
    CIMObjectPath objectPath(const char* name) const;
    Boolean flag(const char* name) const;
    String text(const char* name) const;  // empty when null
    CIMPropertyList propertyList(const char* name = "PropertyList") const;
    CIMInstance instance(const char* name) const;
    CIMClass cimClass(const char* name) const;
    CIMValue value(const char* name) const;
};

struct OperationResponse
{
    std::string messageId = "1";

    bool intrinsic = true;
    Intrinsic operation = Intrinsic::GetClass;
    // Extrinsic: the method. Intrinsic: null, or the name of an operation
    // the codec does not know (the response to its refusal).
    CIMName methodName;

    // A CIM error: errorCode != 0 (CIMStatusCode, or any other number a
    // provider chose; it travels unchanged).
    Uint32 errorCode = 0;
    String errorDescription;

    // Intrinsic: the result, packed as ResultShape says.
    // Extrinsic: the method's return value (null when the server sent none).
    CIMValue returnValue;
    // Extrinsic: the output parameters. Intrinsic: those of the pull
    // operations (see ResultShape).
    Array<CIMParamValue> outParameters;

    String name() const;
    bool isError() const { return errorCode != 0; }
};

// The answer to `request` that reports a CIM error.
OperationResponse errorResponse(const OperationRequest& request, Uint32 code, const String& description);

}  // namespace cimxml

#endif
