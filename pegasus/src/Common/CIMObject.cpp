#include "ObjectRep.h"

PEGASUS_NAMESPACE_BEGIN

CIMObjectRep::CIMObjectRep(Kind k, const CIMName& name) : kind(k), className(name)
{
    if (name.isNull())
        throw UninitializedObjectException();
    path.setClassName(name);
}

CIMObjectRep::CIMObjectRep(const CIMObjectRep& x)
    : RefCounted(x), kind(x.kind), className(x.className), path(x.path), superClassName(x.superClassName)
{
    qualifiers.cloneFrom(x.qualifiers);
    properties.cloneFrom(x.properties);
    methods.cloneFrom(x.methods);
}

void objectSetPath(CIMObjectRep* rep, const CIMObjectPath& path)
{
    if (path.getClassName().isNull())
        throw UninitializedObjectException();
    if (!path.getClassName().equal(rep->className))
        throw TypeMismatchException();
    rep->path = path;
}

void objectFilter(CIMObjectRep* rep, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList)
{
    // Walk backwards so that removals do not shift the entries still to visit.
    for (Uint32 i = rep->properties.size(); i-- > 0;)
    {
        CIMProperty property = rep->properties.at(i);
        if (!propertyList.isNull() && !propertyList.contains(property.getName()))
        {
            rep->properties.remove(i);
            continue;
        }
        if (!includeClassOrigin)
            property.setClassOrigin(CIMName());
        if (!includeQualifiers)
        {
            while (property.getQualifierCount() != 0)
                property.removeQualifier(property.getQualifierCount() - 1);
        }
    }
    if (!includeQualifiers)
        rep->qualifiers.clear();
}

Boolean objectIdentical(const CIMObjectRep* a, const CIMObjectRep* b)
{
    if (a == b)
        return true;
    return a->kind == b->kind && a->className.equal(b->className) &&
        a->superClassName.equal(b->superClassName) && a->path.identical(b->path) &&
        a->qualifiers.identical<CIMConstQualifier>(b->qualifiers) &&
        a->properties.identical<CIMConstProperty>(b->properties) &&
        a->methods.identical<CIMConstMethod>(b->methods);
}

CIMObjectRep* requireKind(CIMObjectRep* rep, CIMObjectRep::Kind kind)
{
    if (rep && rep->kind != kind)
        throw DynamicCastFailedException();
    return rep;
}

// ---------------------------------------------------------------------------
// MOF-like rendering for toString()

namespace
{
void appendQuoted(String& out, const String& text)
{
    out.append(Char16('"'));
    for (Uint32 i = 0; i < text.size(); ++i)
    {
        Char16 c = text[i];
        switch (Uint16(c))
        {
        case '"': out.append(String("\\\"")); break;
        case '\\': out.append(String("\\\\")); break;
        case '\n': out.append(String("\\n")); break;
        case '\r': out.append(String("\\r")); break;
        case '\t': out.append(String("\\t")); break;
        default: out.append(c); break;
        }
    }
    out.append(Char16('"'));
}

Boolean isTextual(CIMType type)
{
    return type == CIMTYPE_STRING || type == CIMTYPE_CHAR16 || type == CIMTYPE_DATETIME ||
        type == CIMTYPE_REFERENCE || type == CIMTYPE_OBJECT || type == CIMTYPE_INSTANCE;
}

template <class T>
void appendElement(String& out, const T& x, CIMType type)
{
    String text = CIMValue(x).toString();
    if (isTextual(type))
        appendQuoted(out, text);
    else
        out.append(text);
}

void appendElement(String& out, const CIMObject& x, CIMType)
{
    appendQuoted(out, x.toString());
}

void appendElement(String& out, const CIMInstance& x, CIMType)
{
    appendQuoted(out, CIMObject(x).toString());
}

template <class T>
void appendValueAs(String& out, const CIMValue& value)
{
    if (value.isArray())
    {
        Array<T> items;
        value.get(items);
        out.append(Char16('{'));
        for (Uint32 i = 0; i < items.size(); ++i)
        {
            if (i != 0)
                out.append(String(", "));
            appendElement(out, items[i], value.getType());
        }
        out.append(Char16('}'));
    }
    else
    {
        T item;
        value.get(item);
        appendElement(out, item, value.getType());
    }
}

void appendValue(String& out, const CIMValue& value)
{
    if (value.isNull())
    {
        out.append(String("NULL"));
        return;
    }
    switch (value.getType())
    {
    case CIMTYPE_BOOLEAN: appendValueAs<Boolean>(out, value); break;
    case CIMTYPE_UINT8: appendValueAs<Uint8>(out, value); break;
    case CIMTYPE_SINT8: appendValueAs<Sint8>(out, value); break;
    case CIMTYPE_UINT16: appendValueAs<Uint16>(out, value); break;
    case CIMTYPE_SINT16: appendValueAs<Sint16>(out, value); break;
    case CIMTYPE_UINT32: appendValueAs<Uint32>(out, value); break;
    case CIMTYPE_SINT32: appendValueAs<Sint32>(out, value); break;
    case CIMTYPE_UINT64: appendValueAs<Uint64>(out, value); break;
    case CIMTYPE_SINT64: appendValueAs<Sint64>(out, value); break;
    case CIMTYPE_REAL32: appendValueAs<Real32>(out, value); break;
    case CIMTYPE_REAL64: appendValueAs<Real64>(out, value); break;
    case CIMTYPE_CHAR16: appendValueAs<Char16>(out, value); break;
    case CIMTYPE_STRING: appendValueAs<String>(out, value); break;
    case CIMTYPE_DATETIME: appendValueAs<CIMDateTime>(out, value); break;
    case CIMTYPE_REFERENCE: appendValueAs<CIMObjectPath>(out, value); break;
    case CIMTYPE_OBJECT: appendValueAs<CIMObject>(out, value); break;
    case CIMTYPE_INSTANCE: appendValueAs<CIMInstance>(out, value); break;
    }
}

void appendQualifiers(String& out, const MemberList<CIMQualifier>& qualifiers)
{
    if (qualifiers.size() == 0)
        return;
    out.append(Char16('['));
    for (Uint32 i = 0; i < qualifiers.size(); ++i)
    {
        const CIMQualifier& q = qualifiers.at(i);
        if (i != 0)
            out.append(String(", "));
        out.append(q.getName().getString());
        out.append(Char16('('));
        appendValue(out, q.getValue());
        out.append(Char16(')'));
    }
    out.append(String("] "));
}

void appendTypeName(String& out, CIMType type, const CIMName& referenceClassName)
{
    if (type == CIMTYPE_REFERENCE)
    {
        out.append(referenceClassName.isNull() ? String("object") : referenceClassName.getString());
        out.append(String(" REF"));
    }
    else
    {
        out.append(String(cimTypeToString(type)));
    }
}
}  // namespace

String objectToString(const CIMObjectRep* rep)
{
    const Boolean isClass = rep->kind == CIMObjectRep::CLASS;
    String out;
    appendQualifiers(out, rep->qualifiers);
    out.append(String(isClass ? "class " : "instance of "));
    out.append(rep->className.getString());
    if (isClass && !rep->superClassName.isNull())
    {
        out.append(String(" : "));
        out.append(rep->superClassName.getString());
    }
    out.append(String("\n{\n"));
    for (Uint32 i = 0; i < rep->properties.size(); ++i)
    {
        const CIMProperty& p = rep->properties.at(i);
        out.append(String("    "));
        appendQualifiers(out, CIMHandleAccess::rep(p)->qualifiers);
        if (isClass)
        {
            appendTypeName(out, p.getType(), p.getReferenceClassName());
            out.append(Char16(' '));
        }
        out.append(p.getName().getString());
        if (isClass && p.isArray())
            out.append(String("[]"));
        if (!isClass || !p.getValue().isNull())
        {
            out.append(String(" = "));
            appendValue(out, p.getValue());
        }
        out.append(String(";\n"));
    }
    for (Uint32 i = 0; i < rep->methods.size(); ++i)
    {
        const CIMMethod& m = rep->methods.at(i);
        out.append(String("    "));
        appendQualifiers(out, CIMHandleAccess::rep(m)->qualifiers);
        appendTypeName(out, m.getType(), CIMName());
        out.append(Char16(' '));
        out.append(m.getName().getString());
        out.append(Char16('('));
        for (Uint32 j = 0; j < m.getParameterCount(); ++j)
        {
            CIMConstParameter param = m.getParameter(j);
            if (j != 0)
                out.append(String(", "));
            appendQualifiers(out, CIMHandleAccess::rep(param)->qualifiers);
            appendTypeName(out, param.getType(), param.getReferenceClassName());
            out.append(Char16(' '));
            out.append(param.getName().getString());
            if (param.isArray())
                out.append(String("[]"));
        }
        out.append(String(");\n"));
    }
    out.append(String("};\n"));
    return out;
}

// ---------------------------------------------------------------------------
// CIMObject

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMObject)

CIMObject::CIMObject(CIMObjectRep* rep) : _rep(rep) {}

CIMObject::CIMObject(const CIMClass& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMObject::CIMObject(const CIMInstance& x) : _rep(x._rep)
{
    refRep(_rep);
}

const CIMName& CIMObject::getClassName() const
{
    return checkedRep(_rep)->className;
}

const CIMObjectPath& CIMObject::getPath() const
{
    return checkedRep(_rep)->path;
}

void CIMObject::setPath(const CIMObjectPath& path)
{
    objectSetPath(checkedRep(_rep), path);
}

CIMObject& CIMObject::addQualifier(const CIMQualifier& qualifier)
{
    checkedRep(_rep)->qualifiers.add(qualifier, "qualifier");
    return *this;
}

Uint32 CIMObject::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMQualifier CIMObject::getQualifier(Uint32 index)
{
    return checkedRep(_rep)->qualifiers.at(index);
}

CIMConstQualifier CIMObject::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

void CIMObject::removeQualifier(Uint32 index)
{
    checkedRep(_rep)->qualifiers.remove(index);
}

Uint32 CIMObject::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

CIMObject& CIMObject::addProperty(const CIMProperty& x)
{
    checkedRep(_rep)->properties.add(x, "property");
    return *this;
}

Uint32 CIMObject::findProperty(const CIMName& name) const
{
    return checkedRep(_rep)->properties.find(name);
}

CIMProperty CIMObject::getProperty(Uint32 index)
{
    return checkedRep(_rep)->properties.at(index);
}

CIMConstProperty CIMObject::getProperty(Uint32 index) const
{
    return checkedRep(_rep)->properties.at(index);
}

void CIMObject::removeProperty(Uint32 index)
{
    checkedRep(_rep)->properties.remove(index);
}

Uint32 CIMObject::getPropertyCount() const
{
    return checkedRep(_rep)->properties.size();
}

Boolean CIMObject::isClass() const
{
    return checkedRep(_rep)->kind == CIMObjectRep::CLASS;
}

Boolean CIMObject::isInstance() const
{
    return checkedRep(_rep)->kind == CIMObjectRep::INSTANCE;
}

Boolean CIMObject::identical(const CIMConstObject& x) const
{
    return objectIdentical(checkedRep(_rep), checkedRep(x._rep));
}

CIMObject CIMObject::clone() const
{
    return CIMObject(new CIMObjectRep(*checkedRep(_rep)));
}

String CIMObject::toString() const
{
    return objectToString(checkedRep(_rep));
}

void CIMObject::instanceFilter(
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList)
{
    objectFilter(checkedRep(_rep), includeQualifiers, includeClassOrigin, propertyList);
}

// ---------------------------------------------------------------------------
// CIMConstObject

ZDA_DEFINE_HANDLE_LIFECYCLE(CIMConstObject)

CIMConstObject::CIMConstObject(const CIMObject& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMConstObject::CIMConstObject(const CIMClass& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMConstObject::CIMConstObject(const CIMConstClass& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMConstObject::CIMConstObject(const CIMInstance& x) : _rep(x._rep)
{
    refRep(_rep);
}

CIMConstObject::CIMConstObject(const CIMConstInstance& x) : _rep(x._rep)
{
    refRep(_rep);
}

const CIMName& CIMConstObject::getClassName() const
{
    return checkedRep(_rep)->className;
}

const CIMObjectPath& CIMConstObject::getPath() const
{
    return checkedRep(_rep)->path;
}

Uint32 CIMConstObject::findQualifier(const CIMName& name) const
{
    return checkedRep(_rep)->qualifiers.find(name);
}

CIMConstQualifier CIMConstObject::getQualifier(Uint32 index) const
{
    return checkedRep(_rep)->qualifiers.at(index);
}

Uint32 CIMConstObject::getQualifierCount() const
{
    return checkedRep(_rep)->qualifiers.size();
}

Uint32 CIMConstObject::findProperty(const CIMName& name) const
{
    return checkedRep(_rep)->properties.find(name);
}

CIMConstProperty CIMConstObject::getProperty(Uint32 index) const
{
    return checkedRep(_rep)->properties.at(index);
}

Uint32 CIMConstObject::getPropertyCount() const
{
    return checkedRep(_rep)->properties.size();
}

Boolean CIMConstObject::isClass() const
{
    return checkedRep(_rep)->kind == CIMObjectRep::CLASS;
}

Boolean CIMConstObject::isInstance() const
{
    return checkedRep(_rep)->kind == CIMObjectRep::INSTANCE;
}

Boolean CIMConstObject::identical(const CIMConstObject& x) const
{
    return objectIdentical(checkedRep(_rep), checkedRep(x._rep));
}

CIMObject CIMConstObject::clone() const
{
    return CIMObject(new CIMObjectRep(*checkedRep(_rep)));
}

String CIMConstObject::toString() const
{
    return objectToString(checkedRep(_rep));
}

PEGASUS_NAMESPACE_END
