#include "OperationTable.h"

#include <Pegasus/Common/Exception.h>

#include <cstring>

namespace cimxml
{

namespace
{
using K = ParamKind;

const ParamDescriptor kGetClass[] = {
    {"ClassName", K::ClassName, true, false},
    {"LocalOnly", K::Flag, false, true},
    {"IncludeQualifiers", K::Flag, false, true},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamDescriptor kEnumerateClasses[] = {
    {"ClassName", K::ClassName, false, false},
    {"DeepInheritance", K::Flag, false, false},
    {"LocalOnly", K::Flag, false, true},
    {"IncludeQualifiers", K::Flag, false, true},
    {"IncludeClassOrigin", K::Flag, false, false},
};
const ParamDescriptor kEnumerateClassNames[] = {
    {"ClassName", K::ClassName, false, false},
    {"DeepInheritance", K::Flag, false, false},
};
const ParamDescriptor kCreateClass[] = {{"NewClass", K::Class, true, false}};
const ParamDescriptor kModifyClass[] = {{"ModifiedClass", K::Class, true, false}};
const ParamDescriptor kDeleteClass[] = {{"ClassName", K::ClassName, true, false}};
const ParamDescriptor kGetInstance[] = {
    {"InstanceName", K::InstanceName, true, false},
    {"LocalOnly", K::Flag, false, true},
    {"IncludeQualifiers", K::Flag, false, false},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamDescriptor kEnumerateInstances[] = {
    {"ClassName", K::ClassName, true, false},
    {"LocalOnly", K::Flag, false, true},
    {"DeepInheritance", K::Flag, false, true},
    {"IncludeQualifiers", K::Flag, false, false},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamDescriptor kEnumerateInstanceNames[] = {{"ClassName", K::ClassName, true, false}};
const ParamDescriptor kCreateInstance[] = {{"NewInstance", K::Instance, true, false}};
const ParamDescriptor kModifyInstance[] = {
    {"ModifiedInstance", K::NamedInstance, true, false},
    {"IncludeQualifiers", K::Flag, false, true},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamDescriptor kDeleteInstance[] = {{"InstanceName", K::InstanceName, true, false}};
const ParamDescriptor kExecQuery[] = {
    {"QueryLanguage", K::Text, true, false},
    {"Query", K::Text, true, false},
};
const ParamDescriptor kAssociators[] = {
    {"ObjectName", K::ObjectName, true, false},
    {"AssocClass", K::ClassName, false, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
    {"ResultRole", K::Text, false, false},
    {"IncludeQualifiers", K::Flag, false, false},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamDescriptor kAssociatorNames[] = {
    {"ObjectName", K::ObjectName, true, false},
    {"AssocClass", K::ClassName, false, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
    {"ResultRole", K::Text, false, false},
};
const ParamDescriptor kReferences[] = {
    {"ObjectName", K::ObjectName, true, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
    {"IncludeQualifiers", K::Flag, false, false},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamDescriptor kReferenceNames[] = {
    {"ObjectName", K::ObjectName, true, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
};
const ParamDescriptor kGetProperty[] = {
    {"InstanceName", K::InstanceName, true, false},
    {"PropertyName", K::Text, true, false},
};
const ParamDescriptor kSetProperty[] = {
    {"InstanceName", K::InstanceName, true, false},
    {"PropertyName", K::Text, true, false},
    {"NewValue", K::AnyValue, false, false},
};

// The pull operations. LocalOnly and IncludeQualifiers are accepted on the
// instance forms, as some clients send them, and ignored.
#define PULL_FILTER                                                                                          \
    {"FilterQueryLanguage", K::Text, false, false}, {"FilterQuery", K::Text, false, false},                  \
        {"OperationTimeout", K::Count, false, false}, {"ContinueOnError", K::Flag, false, false},            \
    {                                                                                                        \
        "MaxObjectCount", K::Count, false, true                                                              \
    }
const ParamDescriptor kOpenEnumerateInstances[] = {
    {"ClassName", K::ClassName, true, false},
    {"DeepInheritance", K::Flag, false, true},
    {"LocalOnly", K::Flag, false, false},
    {"IncludeQualifiers", K::Flag, false, false},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
    PULL_FILTER,
};
const ParamDescriptor kOpenEnumerateInstancePaths[] = {
    {"ClassName", K::ClassName, true, false},
    PULL_FILTER,
};
const ParamDescriptor kOpenReferenceInstances[] = {
    {"InstanceName", K::InstanceName, true, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
    PULL_FILTER,
};
const ParamDescriptor kOpenReferenceInstancePaths[] = {
    {"InstanceName", K::InstanceName, true, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
    PULL_FILTER,
};
const ParamDescriptor kOpenAssociatorInstances[] = {
    {"InstanceName", K::InstanceName, true, false},
    {"AssocClass", K::ClassName, false, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
    {"ResultRole", K::Text, false, false},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
    PULL_FILTER,
};
const ParamDescriptor kOpenAssociatorInstancePaths[] = {
    {"InstanceName", K::InstanceName, true, false},
    {"AssocClass", K::ClassName, false, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
    {"ResultRole", K::Text, false, false},
    PULL_FILTER,
};
#undef PULL_FILTER
const ParamDescriptor kPull[] = {
    {"EnumerationContext", K::Text, true, false},
    {"MaxObjectCount", K::Count, true, false},
};
const ParamDescriptor kCloseEnumeration[] = {{"EnumerationContext", K::Text, true, false}};

#define OPERATION(op, shape, params)                                                                         \
    {                                                                                                        \
        Intrinsic::op, #op, ResultShape::shape, params, sizeof params / sizeof params[0]                     \
    }

// In the order of the Intrinsic enumeration.
const OperationDescriptor kOperations[] = {
    OPERATION(GetClass, Class, kGetClass),
    OPERATION(EnumerateClasses, Classes, kEnumerateClasses),
    OPERATION(EnumerateClassNames, ClassNames, kEnumerateClassNames),
    OPERATION(CreateClass, Nothing, kCreateClass),
    OPERATION(ModifyClass, Nothing, kModifyClass),
    OPERATION(DeleteClass, Nothing, kDeleteClass),
    OPERATION(GetInstance, Instance, kGetInstance),
    OPERATION(EnumerateInstances, NamedInstances, kEnumerateInstances),
    OPERATION(EnumerateInstanceNames, InstanceNames, kEnumerateInstanceNames),
    OPERATION(CreateInstance, InstanceName, kCreateInstance),
    OPERATION(ModifyInstance, Nothing, kModifyInstance),
    OPERATION(DeleteInstance, Nothing, kDeleteInstance),
    OPERATION(ExecQuery, ObjectsWithPath, kExecQuery),
    OPERATION(Associators, ObjectsWithPath, kAssociators),
    OPERATION(AssociatorNames, ObjectPaths, kAssociatorNames),
    OPERATION(References, ObjectsWithPath, kReferences),
    OPERATION(ReferenceNames, ObjectPaths, kReferenceNames),
    OPERATION(GetProperty, PropertyValue, kGetProperty),
    OPERATION(SetProperty, Nothing, kSetProperty),
    OPERATION(OpenEnumerateInstances, InstancesWithPath, kOpenEnumerateInstances),
    OPERATION(OpenEnumerateInstancePaths, InstancePaths, kOpenEnumerateInstancePaths),
    OPERATION(OpenReferenceInstances, InstancesWithPath, kOpenReferenceInstances),
    OPERATION(OpenReferenceInstancePaths, InstancePaths, kOpenReferenceInstancePaths),
    OPERATION(OpenAssociatorInstances, InstancesWithPath, kOpenAssociatorInstances),
    OPERATION(OpenAssociatorInstancePaths, InstancePaths, kOpenAssociatorInstancePaths),
    OPERATION(PullInstancesWithPath, InstancesWithPath, kPull),
    OPERATION(PullInstancePaths, InstancePaths, kPull),
    OPERATION(CloseEnumeration, Nothing, kCloseEnumeration),
};
#undef OPERATION

[[noreturn]] void badParameter(const char* name, const char* what)
{
    throw CIMException(CIM_ERR_INVALID_PARAMETER, String("parameter ") + String(name) + ": " + String(what));
}

const CIMParamValue& required(const OperationRequest& r, const char* name)
{
    const CIMParamValue* p = r.find(name);
    if (!p)
        badParameter(name, "missing");
    return *p;
}

CIMValue valueOf(const OperationRequest& r, const char* name, CIMType type, bool isArray)
{
    CIMValue v = required(r, name).getValue();
    if (!v.isNull() && (v.getType() != type || v.isArray() != isArray))
        badParameter(name, "has the wrong type");
    return v;
}
}  // namespace

const OperationDescriptor& operationDescriptor(Intrinsic op)
{
    return kOperations[unsigned(op)];
}

bool isPullOperation(Intrinsic op)
{
    return op >= Intrinsic::OpenEnumerateInstances && op <= Intrinsic::CloseEnumeration;
}

const char* intrinsicName(Intrinsic op)
{
    return operationDescriptor(op).name;
}

bool findIntrinsic(const std::string& name, Intrinsic& op)
{
    for (const OperationDescriptor& entry : kOperations)
    {
        if (name == entry.name)
        {
            op = entry.op;
            return true;
        }
    }
    return false;
}

ResultShape resultShape(Intrinsic op)
{
    return operationDescriptor(op).shape;
}

CIMParamValue defaultParameter(const ParamDescriptor& entry)
{
    switch (entry.kind)
    {
    case K::Flag: return CIMParamValue(entry.name, CIMValue(Boolean(entry.flagDefault)));
    case K::ClassName:
    case K::Text: return CIMParamValue(entry.name, CIMValue(CIMTYPE_STRING, false));
    case K::InstanceName:
    case K::ObjectName: return CIMParamValue(entry.name, CIMValue(CIMTYPE_REFERENCE, false));
    case K::PropertyList: return CIMParamValue(entry.name, CIMValue(CIMTYPE_STRING, true));
    case K::Instance:
    case K::NamedInstance: return CIMParamValue(entry.name, CIMValue(CIMTYPE_INSTANCE, false));
    case K::Class: return CIMParamValue(entry.name, CIMValue(CIMTYPE_OBJECT, false));
    case K::AnyValue: return CIMParamValue(entry.name, CIMValue(CIMTYPE_STRING, false), false);
    case K::Count:
        return entry.flagDefault ? CIMParamValue(entry.name, CIMValue(Uint32(0)))
                                 : CIMParamValue(entry.name, CIMValue(CIMTYPE_UINT32, false));
    }
    return CIMParamValue();
}

// ---- OperationRequest / OperationResponse ----

String OperationRequest::name() const
{
    return intrinsic ? String(intrinsicName(operation)) : methodName.getString();
}

String OperationResponse::name() const
{
    return intrinsic && methodName.isNull() ? String(intrinsicName(operation)) : methodName.getString();
}

OperationResponse errorResponse(const OperationRequest& request, Uint32 code, const String& description)
{
    OperationResponse r;
    r.messageId = request.messageId;
    r.intrinsic = request.intrinsic;
    r.operation = request.operation;
    r.methodName = request.methodName;
    r.errorCode = code;
    r.errorDescription = description;
    return r;
}

const CIMParamValue* OperationRequest::find(const char* name) const
{
    String wanted(name);
    for (Uint32 i = 0; i < parameters.size(); i++)
        if (parameters[i].getParameterName() == wanted)
            return &parameters[i];
    return nullptr;
}

CIMName OperationRequest::className(const char* name) const
{
    CIMValue v = valueOf(*this, name, CIMTYPE_STRING, false);
    if (v.isNull())
        return CIMName();
    String s;
    v.get(s);
    if (s.size() == 0)
        return CIMName();
    if (!CIMName::legal(s))
        badParameter(name, "is not a valid class name");
    return CIMName(s);
}

CIMObjectPath OperationRequest::objectPath(const char* name) const
{
    CIMValue v = valueOf(*this, name, CIMTYPE_REFERENCE, false);
    if (v.isNull())
        badParameter(name, "is null");
    CIMObjectPath path;
    v.get(path);
    return path;
}

Boolean OperationRequest::flag(const char* name) const
{
    CIMValue v = valueOf(*this, name, CIMTYPE_BOOLEAN, false);
    if (v.isNull())
        badParameter(name, "is null");
    Boolean b;
    v.get(b);
    return b;
}

String OperationRequest::text(const char* name) const
{
    CIMValue v = valueOf(*this, name, CIMTYPE_STRING, false);
    String s;
    if (!v.isNull())
        v.get(s);
    return s;
}

CIMPropertyList OperationRequest::propertyList(const char* name) const
{
    CIMValue v = valueOf(*this, name, CIMTYPE_STRING, true);
    if (v.isNull())
        return CIMPropertyList();
    Array<String> names;
    v.get(names);
    Array<CIMName> list;
    for (Uint32 i = 0; i < names.size(); i++)
    {
        if (!CIMName::legal(names[i]))
            badParameter(name, "holds an invalid property name");
        list.append(CIMName(names[i]));
    }
    return CIMPropertyList(list);
}

CIMInstance OperationRequest::instance(const char* name) const
{
    CIMValue v = valueOf(*this, name, CIMTYPE_INSTANCE, false);
    if (v.isNull())
        badParameter(name, "is null");
    CIMInstance i;
    v.get(i);
    return i;
}

CIMClass OperationRequest::cimClass(const char* name) const
{
    CIMValue v = valueOf(*this, name, CIMTYPE_OBJECT, false);
    if (v.isNull())
        badParameter(name, "is null");
    CIMObject o;
    v.get(o);
    if (!o.isClass())
        badParameter(name, "is not a class");
    return CIMClass(o);
}

CIMValue OperationRequest::value(const char* name) const
{
    return required(*this, name).getValue();
}

}  // namespace cimxml
