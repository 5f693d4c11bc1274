// The one mapping of a decoded request onto a call: each intrinsic
// operation to the member of the same name of `target` with the request's
// parameters, and an extrinsic method to target.invokeMethod(). Any target
// whose operations mirror CIMOMHandle's (the server's dispatcher, a
// CIMOMHandleBackend) can answer requests through it.
#ifndef ZDA_CIMXML_OPERATIONCALLS_H
#define ZDA_CIMXML_OPERATIONCALLS_H

#include <cimxml/Operation.h>

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/OperationContext.h>

namespace cimxml
{

template <class T>
CIMValue objectsValue(const Array<T>& items)
{
    Array<CIMObject> out;
    for (Uint32 i = 0; i < items.size(); i++)
        out.append(CIMObject(items[i]));
    return CIMValue(out);
}

// Runs `r` on `target` and returns its answer, packed as ResultShape says
// (for an extrinsic method: the return value and the output parameters).
// What the call throws passes out unchanged.
template <class Target>
OperationResponse callOperation(Target& target, const OperationContext& ctx, const OperationRequest& r)
{
    OperationResponse out;
    out.messageId = r.messageId;
    out.intrinsic = r.intrinsic;
    out.operation = r.operation;
    out.methodName = r.methodName;
    const CIMNamespaceName& ns = r.nameSpace;
    if (!r.intrinsic)
    {
        out.returnValue = target.invokeMethod(
            ctx, ns, r.target, r.methodName, r.parameters, out.outParameters);
        return out;
    }
    switch (r.operation)
    {
    case Intrinsic::GetClass:
        out.returnValue = CIMValue(
            CIMObject(target.getClass(ctx, ns, r.className("ClassName"), r.flag("LocalOnly"),
                r.flag("IncludeQualifiers"), r.flag("IncludeClassOrigin"), r.propertyList())));
        break;
    case Intrinsic::EnumerateClasses:
        out.returnValue = objectsValue(
            target.enumerateClasses(ctx, ns, r.className("ClassName"), r.flag("DeepInheritance"),
                r.flag("LocalOnly"), r.flag("IncludeQualifiers"), r.flag("IncludeClassOrigin")));
        break;
    case Intrinsic::EnumerateClassNames:
    {
        Array<CIMName> names = target.enumerateClassNames(
            ctx, ns, r.className("ClassName"), r.flag("DeepInheritance"));
        Array<String> texts;
        for (Uint32 i = 0; i < names.size(); i++)
            texts.append(names[i].getString());
        out.returnValue = CIMValue(texts);
        break;
    }
    case Intrinsic::CreateClass: target.createClass(ctx, ns, r.cimClass("NewClass")); break;
    case Intrinsic::ModifyClass: target.modifyClass(ctx, ns, r.cimClass("ModifiedClass")); break;
    case Intrinsic::DeleteClass: target.deleteClass(ctx, ns, r.className("ClassName")); break;
    case Intrinsic::GetInstance:
        out.returnValue = CIMValue(
            target.getInstance(ctx, ns, r.objectPath("InstanceName"), r.flag("LocalOnly"),
                r.flag("IncludeQualifiers"), r.flag("IncludeClassOrigin"), r.propertyList()));
        break;
    case Intrinsic::EnumerateInstances:
        out.returnValue = CIMValue(target.enumerateInstances(ctx, ns, r.className("ClassName"),
            r.flag("DeepInheritance"), r.flag("LocalOnly"), r.flag("IncludeQualifiers"),
            r.flag("IncludeClassOrigin"), r.propertyList()));
        break;
    case Intrinsic::EnumerateInstanceNames:
        out.returnValue = CIMValue(target.enumerateInstanceNames(ctx, ns, r.className("ClassName")));
        break;
    case Intrinsic::CreateInstance:
        out.returnValue = CIMValue(target.createInstance(ctx, ns, r.instance("NewInstance")));
        break;
    case Intrinsic::ModifyInstance:
        target.modifyInstance(
            ctx, ns, r.instance("ModifiedInstance"), r.flag("IncludeQualifiers"), r.propertyList());
        break;
    case Intrinsic::DeleteInstance: target.deleteInstance(ctx, ns, r.objectPath("InstanceName")); break;
    case Intrinsic::ExecQuery:
        out.returnValue = CIMValue(target.execQuery(ctx, ns, r.text("QueryLanguage"), r.text("Query")));
        break;
    case Intrinsic::Associators:
        out.returnValue = CIMValue(target.associators(ctx, ns, r.objectPath("ObjectName"),
            r.className("AssocClass"), r.className("ResultClass"), r.text("Role"), r.text("ResultRole"),
            r.flag("IncludeQualifiers"), r.flag("IncludeClassOrigin"), r.propertyList()));
        break;
    case Intrinsic::AssociatorNames:
        out.returnValue = CIMValue(target.associatorNames(ctx, ns, r.objectPath("ObjectName"),
            r.className("AssocClass"), r.className("ResultClass"), r.text("Role"), r.text("ResultRole")));
        break;
    case Intrinsic::References:
        out.returnValue = CIMValue(
            target.references(ctx, ns, r.objectPath("ObjectName"), r.className("ResultClass"), r.text("Role"),
                r.flag("IncludeQualifiers"), r.flag("IncludeClassOrigin"), r.propertyList()));
        break;
    case Intrinsic::ReferenceNames:
        out.returnValue = CIMValue(target.referenceNames(
            ctx, ns, r.objectPath("ObjectName"), r.className("ResultClass"), r.text("Role")));
        break;
    case Intrinsic::GetProperty:
        out.returnValue = target.getProperty(
            ctx, ns, r.objectPath("InstanceName"), CIMName(r.text("PropertyName")));
        break;
    case Intrinsic::SetProperty:
        target.setProperty(
            ctx, ns, r.objectPath("InstanceName"), CIMName(r.text("PropertyName")), r.value("NewValue"));
        break;
    default:
        // The pull operations need enumeration contexts, which only a
        // server keeps.
        throw CIMException(
            CIM_ERR_NOT_SUPPORTED, String(intrinsicName(r.operation)) + " is not supported here.");
    }
    return out;
}

}  // namespace cimxml

#endif
