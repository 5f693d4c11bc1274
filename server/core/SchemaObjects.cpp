#include "SchemaObjects.h"

#include "MofError.h"

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMScope.h>
#include <Pegasus/Common/Exception.h>

using namespace Pegasus;

namespace zda::server
{

using mof::DataType;
using mof::Literal;
using mof::MofError;

String toString(const std::string& utf8)
{
    return String(utf8.data(), static_cast<Uint32>(utf8.size()));
}

std::string toUtf8(const String& s)
{
    CString text = s.getCString();
    return std::string(static_cast<const char*>(text));
}

namespace
{

CIMName toName(const std::string& name)
{
    return CIMName(toString(name));
}

CIMType toType(DataType type)
{
    return type == DataType::Reference ? CIMTYPE_REFERENCE : static_cast<CIMType>(static_cast<int>(type));
}

template <typename T>
T signedValue(const Literal& v)
{
    Uint64 magnitude = v.magnitude;
    return v.negative ? static_cast<T>(static_cast<Sint64>(Uint64(0) - magnitude))
                      : static_cast<T>(magnitude);
}

double realValue(const Literal& v)
{
    if (v.kind == Literal::Kind::Real)
        return v.realValue;
    double magnitude = static_cast<double>(v.magnitude);
    return v.negative ? -magnitude : magnitude;
}

Char16 toChar16(const Literal& v)
{
    const std::string& s = v.text;
    unsigned char c = static_cast<unsigned char>(s[0]);
    unsigned code = c;
    if (c >= 0xE0)
        code = ((c & 0x0Fu) << 12) | ((static_cast<unsigned char>(s[1]) & 0x3Fu) << 6) |
            (static_cast<unsigned char>(s[2]) & 0x3Fu);
    else if (c >= 0xC0)
        code = ((c & 0x1Fu) << 6) | (static_cast<unsigned char>(s[1]) & 0x3Fu);
    return Char16(static_cast<Uint16>(code));
}

// Runs a conversion of the object model and reports its refusal at `where`.
template <typename F>
auto refusedAt(const mof::SourceLocation& where, const char* what, F&& convert) -> decltype(convert())
{
    try
    {
        return convert();
    }
    catch (const Exception& e)
    {
        throw MofError(where, std::string(what) + ": " + toUtf8(e.getMessage()));
    }
}

template <typename T, typename Convert>
CIMValue arrayValue(const Literal& v, Convert convert)
{
    Array<T> out;
    for (const Literal& e : v.elements)
        out.append(convert(e));
    return CIMValue(out);
}

template <typename T, typename Convert>
CIMValue scalarOrArray(const Literal& v, bool isArray, Convert convert)
{
    return isArray ? arrayValue<T>(v, convert) : CIMValue(convert(v));
}

CIMDateTime toDateTime(const Literal& v)
{
    return refusedAt(v.where, "not a valid date-time", [&] { return CIMDateTime(toString(v.text)); });
}

CIMObjectPath toPath(const Literal& v)
{
    return refusedAt(v.where, "not a valid object path", [&] { return CIMObjectPath(toString(v.text)); });
}

CIMFlavor toFlavor(unsigned bits)
{
    CIMFlavor flavor = CIMFlavor::NONE;
    if (bits & mof::kFlavorEnableOverride)
        flavor.addFlavor(CIMFlavor::ENABLEOVERRIDE);
    if (bits & mof::kFlavorDisableOverride)
        flavor.addFlavor(CIMFlavor::DISABLEOVERRIDE);
    if (bits & mof::kFlavorToSubclass)
        flavor.addFlavor(CIMFlavor::TOSUBCLASS);
    if (bits & mof::kFlavorRestricted)
        flavor.addFlavor(CIMFlavor::RESTRICTED);
    if (bits & mof::kFlavorTranslatable)
        flavor.addFlavor(CIMFlavor::TRANSLATABLE);
    return flavor;
}

CIMScope toScope(unsigned bits)
{
    if ((bits & mof::kScopeAny) == mof::kScopeAny)
        return CIMScope::ANY;
    CIMScope scope = CIMScope::NONE;
    if (bits & mof::kScopeClass)
        scope.addScope(CIMScope::CLASS);
    if (bits & mof::kScopeAssociation)
        scope.addScope(CIMScope::ASSOCIATION);
    if (bits & mof::kScopeIndication)
        scope.addScope(CIMScope::INDICATION);
    if (bits & mof::kScopeProperty)
        scope.addScope(CIMScope::PROPERTY);
    if (bits & mof::kScopeReference)
        scope.addScope(CIMScope::REFERENCE);
    if (bits & mof::kScopeMethod)
        scope.addScope(CIMScope::METHOD);
    if (bits & mof::kScopeParameter)
        scope.addScope(CIMScope::PARAMETER);
    return scope;
}

CIMQualifier toQualifier(const mof::ResolvedQualifier& q)
{
    return CIMQualifier(
        toName(q.name), toValue(q.value, q.type, q.isArray, 0), toFlavor(q.flavors), q.propagated);
}

template <typename Element>
void addQualifiers(Element& element, const std::vector<mof::ResolvedQualifier>& qualifiers)
{
    for (const mof::ResolvedQualifier& q : qualifiers)
        element.addQualifier(toQualifier(q));
}

CIMProperty toProperty(const mof::ResolvedProperty& p)
{
    CIMValue value = p.defaultValue ? toValue(*p.defaultValue, p.type, p.isArray, p.arraySize)
                                    : CIMValue(toType(p.type), p.isArray, p.arraySize);
    CIMProperty property(toName(p.name), value, p.arraySize,
        p.type == DataType::Reference ? toName(p.referenceClass) : CIMName(), toName(p.classOrigin),
        p.propagated);
    addQualifiers(property, p.qualifiers);
    return property;
}

CIMMethod toMethod(const mof::ResolvedMethod& m)
{
    CIMMethod method(toName(m.name), toType(m.returnType), toName(m.classOrigin), m.propagated);
    addQualifiers(method, m.qualifiers);
    for (const mof::ResolvedParameter& p : m.parameters)
    {
        CIMParameter parameter(toName(p.name), toType(p.type), p.isArray, p.arraySize,
            p.type == DataType::Reference ? toName(p.referenceClass) : CIMName());
        addQualifiers(parameter, p.qualifiers);
        method.addParameter(parameter);
    }
    return method;
}

}  // namespace

CIMValue toValue(const Literal& v, DataType type, bool isArray, std::uint32_t arraySize)
{
    if (v.kind == Literal::Kind::Null)
        return CIMValue(toType(type), isArray, arraySize);
    switch (type)
    {
    case DataType::Boolean:
        return scalarOrArray<Boolean>(v, isArray, [](const Literal& e) { return Boolean(e.boolValue); });
    case DataType::Uint8:
        return scalarOrArray<Uint8>(
            v, isArray, [](const Literal& e) { return static_cast<Uint8>(e.magnitude); });
    case DataType::Sint8:
        return scalarOrArray<Sint8>(v, isArray, [](const Literal& e) { return signedValue<Sint8>(e); });
    case DataType::Uint16:
        return scalarOrArray<Uint16>(
            v, isArray, [](const Literal& e) { return static_cast<Uint16>(e.magnitude); });
    case DataType::Sint16:
        return scalarOrArray<Sint16>(v, isArray, [](const Literal& e) { return signedValue<Sint16>(e); });
    case DataType::Uint32:
        return scalarOrArray<Uint32>(
            v, isArray, [](const Literal& e) { return static_cast<Uint32>(e.magnitude); });
    case DataType::Sint32:
        return scalarOrArray<Sint32>(v, isArray, [](const Literal& e) { return signedValue<Sint32>(e); });
    case DataType::Uint64:
        return scalarOrArray<Uint64>(
            v, isArray, [](const Literal& e) { return static_cast<Uint64>(e.magnitude); });
    case DataType::Sint64:
        return scalarOrArray<Sint64>(v, isArray, [](const Literal& e) { return signedValue<Sint64>(e); });
    case DataType::Real32:
        return scalarOrArray<Real32>(
            v, isArray, [](const Literal& e) { return static_cast<Real32>(realValue(e)); });
    case DataType::Real64:
        return scalarOrArray<Real64>(v, isArray, [](const Literal& e) { return Real64(realValue(e)); });
    case DataType::Char16: return scalarOrArray<Char16>(v, isArray, toChar16);
    case DataType::String:
        return scalarOrArray<String>(v, isArray, [](const Literal& e) { return toString(e.text); });
    case DataType::DateTime: return scalarOrArray<CIMDateTime>(v, isArray, toDateTime);
    case DataType::Reference: return scalarOrArray<CIMObjectPath>(v, isArray, toPath);
    }
    return CIMValue();
}

CIMQualifierDecl toQualifierDecl(const mof::QualifierDeclaration& decl)
{
    std::uint32_t arraySize = decl.arraySize.value_or(0);
    CIMValue value = decl.defaultValue ? toValue(*decl.defaultValue, decl.type, decl.isArray, arraySize)
                                       : CIMValue(toType(decl.type), decl.isArray, arraySize);
    // A declaration that names no flavor gets the defaults of the language.
    unsigned flavors = decl.flavors;
    if (!(flavors & (mof::kFlavorEnableOverride | mof::kFlavorDisableOverride)))
        flavors |= mof::kFlavorEnableOverride;
    if (!(flavors & (mof::kFlavorToSubclass | mof::kFlavorRestricted)))
        flavors |= mof::kFlavorToSubclass;
    return refusedAt(decl.where, "cannot declare the qualifier", [&] {
        return CIMQualifierDecl(toName(decl.name), value, toScope(decl.scopes), toFlavor(flavors), arraySize);
    });
}

CIMClass toClass(const mof::ResolvedClass& resolved)
{
    return refusedAt(resolved.where, "cannot build the class", [&] {
        CIMClass cls(
            toName(resolved.name), resolved.superClass.empty() ? CIMName() : toName(resolved.superClass));
        addQualifiers(cls, resolved.qualifiers);
        for (const mof::ResolvedProperty& p : resolved.properties)
            cls.addProperty(toProperty(p));
        for (const mof::ResolvedMethod& m : resolved.methods)
            cls.addMethod(toMethod(m));
        return cls;
    });
}

CIMInstance toInstance(const mof::ResolvedInstance& instance, const mof::ResolvedClass& resolvedClass,
    const CIMClass& cls, const std::string& nameSpace)
{
    return refusedAt(instance.where, "cannot build the instance", [&] {
        CIMInstance out(cls.getClassName());
        for (const auto& [name, value] : instance.values)
        {
            const mof::ResolvedProperty* declared = nullptr;
            for (const mof::ResolvedProperty& p : resolvedClass.properties)
                if (mof::equalNoCase(p.name, name))
                    declared = &p;
            CIMValue cimValue = toValue(value, declared->type, declared->isArray, declared->arraySize);
            out.addProperty(CIMProperty(toName(declared->name), cimValue, declared->arraySize,
                declared->type == DataType::Reference ? toName(declared->referenceClass) : CIMName(),
                toName(declared->classOrigin), false));
        }
        CIMObjectPath path = out.buildPath(cls);
        path.setNameSpace(CIMNamespaceName(toString(nameSpace)));
        out.setPath(path);
        return out;
    });
}

}  // namespace zda::server
