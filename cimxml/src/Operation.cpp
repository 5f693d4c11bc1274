#include "OperationTable.h"

#include <Pegasus/Common/Exception.h>

#include <cstring>

namespace cimxml
{

namespace
{
using K = ParamKind;

const ParamSpec kGetClass[] = {
    {"ClassName", K::ClassName, true, false},
    {"LocalOnly", K::Flag, false, true},
    {"IncludeQualifiers", K::Flag, false, true},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamSpec kEnumerateClasses[] = {
    {"ClassName", K::ClassName, false, false},
    {"DeepInheritance", K::Flag, false, false},
    {"LocalOnly", K::Flag, false, true},
    {"IncludeQualifiers", K::Flag, false, true},
    {"IncludeClassOrigin", K::Flag, false, false},
};
const ParamSpec kEnumerateClassNames[] = {
    {"ClassName", K::ClassName, false, false},
    {"DeepInheritance", K::Flag, false, false},
};
const ParamSpec kCreateClass[] = {{"NewClass", K::Class, true, false}};
const ParamSpec kModifyClass[] = {{"ModifiedClass", K::Class, true, false}};
const ParamSpec kDeleteClass[] = {{"ClassName", K::ClassName, true, false}};
const ParamSpec kGetInstance[] = {
    {"InstanceName", K::InstanceName, true, false},
    {"LocalOnly", K::Flag, false, true},
    {"IncludeQualifiers", K::Flag, false, false},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamSpec kEnumerateInstances[] = {
    {"ClassName", K::ClassName, true, false},
    {"LocalOnly", K::Flag, false, true},
    {"DeepInheritance", K::Flag, false, true},
    {"IncludeQualifiers", K::Flag, false, false},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamSpec kEnumerateInstanceNames[] = {{"ClassName", K::ClassName, true, false}};
const ParamSpec kCreateInstance[] = {{"NewInstance", K::Instance, true, false}};
const ParamSpec kModifyInstance[] = {
    {"ModifiedInstance", K::NamedInstance, true, false},
    {"IncludeQualifiers", K::Flag, false, true},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamSpec kDeleteInstance[] = {{"InstanceName", K::InstanceName, true, false}};
const ParamSpec kExecQuery[] = {
    {"QueryLanguage", K::Text, true, false},
    {"Query", K::Text, true, false},
};
const ParamSpec kAssociators[] = {
    {"ObjectName", K::ObjectName, true, false},
    {"AssocClass", K::ClassName, false, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
    {"ResultRole", K::Text, false, false},
    {"IncludeQualifiers", K::Flag, false, false},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamSpec kAssociatorNames[] = {
    {"ObjectName", K::ObjectName, true, false},
    {"AssocClass", K::ClassName, false, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
    {"ResultRole", K::Text, false, false},
};
const ParamSpec kReferences[] = {
    {"ObjectName", K::ObjectName, true, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
    {"IncludeQualifiers", K::Flag, false, false},
    {"IncludeClassOrigin", K::Flag, false, false},
    {"PropertyList", K::PropertyList, false, false},
};
const ParamSpec kReferenceNames[] = {
    {"ObjectName", K::ObjectName, true, false},
    {"ResultClass", K::ClassName, false, false},
    {"Role", K::Text, false, false},
};
const ParamSpec kGetProperty[] = {
    {"InstanceName", K::InstanceName, true, false},
    {"PropertyName", K::Text, true, false},
};
const ParamSpec kSetProperty[] = {
    {"InstanceName", K::InstanceName, true, false},
    {"PropertyName", K::Text, true, false},
    {"NewValue", K::AnyValue, false, false},
};

#define SPEC(op, shape, params) \
    {Intrinsic::op, #op, ResultShape::shape, params, sizeof params / sizeof params[0]}

// In the order of the Intrinsic enumeration.
const OperationSpec kOperations[] = {
    SPEC(GetClass, Class, kGetClass),
    SPEC(EnumerateClasses, Classes, kEnumerateClasses),
    SPEC(EnumerateClassNames, ClassNames, kEnumerateClassNames),
    SPEC(CreateClass, Nothing, kCreateClass),
    SPEC(ModifyClass, Nothing, kModifyClass),
    SPEC(DeleteClass, Nothing, kDeleteClass),
    SPEC(GetInstance, Instance, kGetInstance),
    SPEC(EnumerateInstances, NamedInstances, kEnumerateInstances),
    SPEC(EnumerateInstanceNames, InstanceNames, kEnumerateInstanceNames),
    SPEC(CreateInstance, InstanceName, kCreateInstance),
    SPEC(ModifyInstance, Nothing, kModifyInstance),
    SPEC(DeleteInstance, Nothing, kDeleteInstance),
    SPEC(ExecQuery, ObjectsWithPath, kExecQuery),
    SPEC(Associators, ObjectsWithPath, kAssociators),
    SPEC(AssociatorNames, ObjectPaths, kAssociatorNames),
    SPEC(References, ObjectsWithPath, kReferences),
    SPEC(ReferenceNames, ObjectPaths, kReferenceNames),
    SPEC(GetProperty, PropertyValue, kGetProperty),
    SPEC(SetProperty, Nothing, kSetProperty),
};
#undef SPEC

[[noreturn]] void badParameter(const char* name, const char* what)
{
    throw CIMException(CIM_ERR_INVALID_PARAMETER,
                       String("parameter ") + String(name) + ": " + String(what));
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

const OperationSpec& operationSpec(Intrinsic op)
{
    return kOperations[unsigned(op)];
}

const char* intrinsicName(Intrinsic op)
{
    return operationSpec(op).name;
}

bool findIntrinsic(const std::string& name, Intrinsic& op)
{
    for (const OperationSpec& spec : kOperations)
    {
        if (name == spec.name)
        {
            op = spec.op;
            return true;
        }
    }
    return false;
}

ResultShape resultShape(Intrinsic op)
{
    return operationSpec(op).shape;
}

CIMParamValue defaultParameter(const ParamSpec& spec)
{
    switch (spec.kind)
    {
    case K::Flag: return CIMParamValue(spec.name, CIMValue(Boolean(spec.flagDefault)));
    case K::ClassName:
    case K::Text: return CIMParamValue(spec.name, CIMValue(CIMTYPE_STRING, false));
    case K::InstanceName:
    case K::ObjectName: return CIMParamValue(spec.name, CIMValue(CIMTYPE_REFERENCE, false));
    case K::PropertyList: return CIMParamValue(spec.name, CIMValue(CIMTYPE_STRING, true));
    case K::Instance:
    case K::NamedInstance: return CIMParamValue(spec.name, CIMValue(CIMTYPE_INSTANCE, false));
    case K::Class: return CIMParamValue(spec.name, CIMValue(CIMTYPE_OBJECT, false));
    case K::AnyValue: return CIMParamValue(spec.name, CIMValue(CIMTYPE_STRING, false), false);
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
    return intrinsic ? String(intrinsicName(operation)) : methodName.getString();
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
