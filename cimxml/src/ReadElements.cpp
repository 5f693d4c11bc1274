// Reading values, paths and objects from a parsed document. Tolerant of the
// variations other implementations send; refuses what it cannot represent
// with a message naming the element.
#include "Elements.h"
#include "XmlChars.h"

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMValueText.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace cimxml
{

void invalid(const std::string& message)
{
    throw DecodeError(DecodeFailure::NotValid, message);
}

pugi::xml_node firstElement(const pugi::xml_node& e)
{
    for (pugi::xml_node c = e.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element)
            return c;
    return pugi::xml_node();
}

pugi::xml_node nextElement(const pugi::xml_node& e)
{
    for (pugi::xml_node c = e.next_sibling(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element)
            return c;
    return pugi::xml_node();
}

namespace
{
inline bool is(const pugi::xml_node& e, const char* name)
{
    return isElement(e, name);
}

std::string elementName(const pugi::xml_node& e)
{
    return std::string(e.name());
}

pugi::xml_node requireChild(const pugi::xml_node& e, const char* name)
{
    pugi::xml_node c = e.child(name);
    if (!c)
        invalid(elementName(e) + " without " + name);
    return c;
}

// The document was checked to be UTF-8 when it was parsed, so this decodes
// without checks; most text is ASCII and is widened directly.
String toString(const char* utf8)
{
    thread_local std::vector<Char16> units;
    units.clear();
    const unsigned char* s = reinterpret_cast<const unsigned char*>(utf8);
    while (*s)
    {
        unsigned c = *s++;
        if (c < 0x80)
        {
            units.push_back(Char16(Uint16(c)));
            continue;
        }
        unsigned extra = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : 1;
        unsigned code = c & (0x3F >> extra);
        for (unsigned k = 0; k < extra && *s; k++)
            code = (code << 6) | (*s++ & 0x3F);
        if (code >= 0x10000)
        {
            code -= 0x10000;
            units.push_back(Char16(Uint16(0xD800 + (code >> 10))));
            units.push_back(Char16(Uint16(0xDC00 + (code & 0x3FF))));
        }
        else
            units.push_back(Char16(Uint16(code)));
    }
    String result = units.empty() ? String() : String(units.data(), Uint32(units.size()));
    if (units.capacity() > (1u << 20))
        std::vector<Char16>().swap(units);  // do not keep a huge buffer per thread
    return result;
}

std::string trimmed(const char* s)
{
    const char* b = s;
    while (*b == ' ' || *b == '\t' || *b == '\n' || *b == '\r')
        b++;
    const char* e = b + std::strlen(b);
    while (e > b && (e[-1] == ' ' || e[-1] == '\t' || e[-1] == '\n' || e[-1] == '\r'))
        e--;
    return std::string(b, e);
}

bool attrBool(const pugi::xml_node& e, const char* name, bool fallback)
{
    pugi::xml_attribute a = e.attribute(name);
    if (!a)
        return fallback;
    const std::string v = trimmed(a.value());
    Boolean x = false;
    if (!CIMValueText::toBoolean(v.data(), v.data() + v.size(), x))
        invalid(elementName(e) + ": " + name + " is neither true nor false");
    return x;
}

Uint32 attrArraySize(const pugi::xml_node& e)
{
    pugi::xml_attribute a = e.attribute("ARRAYSIZE");
    if (!a)
        return 0;
    std::string v = trimmed(a.value());
    Uint32 n = 0;
    auto r = std::from_chars(v.data(), v.data() + v.size(), n);
    if (r.ec != std::errc() || r.ptr != v.data() + v.size())
        invalid(elementName(e) + ": ARRAYSIZE is not a number");
    return n;
}

// ---- scalar text ----

template <class Int>
Int parseInteger(const char* text, const char* typeName)
{
    const std::string v = trimmed(text);
    const char* b = v.data();
    const char* e = b + v.size();
    bool ok;
    Int x = 0;
    if (std::numeric_limits<Int>::is_signed)
    {
        Sint64 y = 0;
        ok = CIMValueText::toSigned(
            b, e, std::numeric_limits<Int>::min(), std::numeric_limits<Int>::max(), y);
        x = Int(y);
    }
    else
    {
        Uint64 y = 0;
        ok = CIMValueText::toUnsigned(b, e, std::numeric_limits<Int>::max(), y);
        x = Int(y);
    }
    if (!ok)
        invalid(std::string("'") + text + "' is not a valid " + typeName);
    return x;
}

template <class Real>
Real parseReal(const char* text, const char* typeName)
{
    const std::string v = trimmed(text);
    Real64 x = 0;
    if (!CIMValueText::toReal(v.data(), v.data() + v.size(), x))
        invalid(std::string("'") + text + "' is not a valid " + typeName);
    return Real(x);
}

bool parseBoolean(const char* text)
{
    const std::string v = trimmed(text);
    Boolean x = false;
    if (!CIMValueText::toBoolean(v.data(), v.data() + v.size(), x))
        invalid(std::string("'") + text + "' is not a valid boolean");
    return x;
}

void parse(const char* t, ReadContext&, Boolean& x)
{
    x = parseBoolean(t);
}
void parse(const char* t, ReadContext&, Uint8& x)
{
    x = parseInteger<Uint8>(t, "uint8");
}
void parse(const char* t, ReadContext&, Sint8& x)
{
    x = parseInteger<Sint8>(t, "sint8");
}
void parse(const char* t, ReadContext&, Uint16& x)
{
    x = parseInteger<Uint16>(t, "uint16");
}
void parse(const char* t, ReadContext&, Sint16& x)
{
    x = parseInteger<Sint16>(t, "sint16");
}
void parse(const char* t, ReadContext&, Uint32& x)
{
    x = parseInteger<Uint32>(t, "uint32");
}
void parse(const char* t, ReadContext&, Sint32& x)
{
    x = parseInteger<Sint32>(t, "sint32");
}
void parse(const char* t, ReadContext&, Uint64& x)
{
    x = parseInteger<Uint64>(t, "uint64");
}
void parse(const char* t, ReadContext&, Sint64& x)
{
    x = parseInteger<Sint64>(t, "sint64");
}
void parse(const char* t, ReadContext&, Real32& x)
{
    x = parseReal<Real32>(t, "real32");
}
void parse(const char* t, ReadContext&, Real64& x)
{
    x = parseReal<Real64>(t, "real64");
}
void parse(const char* t, ReadContext&, String& x)
{
    x = toString(t);
}
void parse(const char* t, ReadContext&, Char16& x)
{
    String s = toString(t);
    if (s.size() != 1)
        invalid(std::string("'") + t + "' is not a single char16");
    x = s[0];
}
void parse(const char* t, ReadContext&, CIMDateTime& x)
{
    std::string v = trimmed(t);
    x = CIMDateTime(String(v.data(), Uint32(v.size())));
}
void parse(const char* t, ReadContext& ctx, CIMObject& x)
{
    x = readEmbeddedObject(toString(t), ctx);
}
void parse(const char* t, ReadContext& ctx, CIMInstance& x)
{
    CIMObject object = readEmbeddedObject(toString(t), ctx);
    if (!object.isInstance())
        invalid("an embedded instance holds a class");
    x = CIMInstance(object);
}

// The text of a VALUE element. VALUE.NULL (a null array element) cannot be
// held by the object model and is refused.
const char* valueText(const pugi::xml_node& e)
{
    if (!is(e, "VALUE"))
    {
        if (is(e, "VALUE.NULL"))
            invalid("null array elements (VALUE.NULL) are not supported");
        invalid("expected VALUE, found " + elementName(e));
    }
    return e.child_value();
}

template <class T>
CIMValue readOfType(const pugi::xml_node& e, bool isArray, ReadContext& ctx)
{
    if (isArray)
    {
        if (!is(e, "VALUE.ARRAY"))
            invalid("expected VALUE.ARRAY, found " + elementName(e));
        Array<T> items;
        for (pugi::xml_node c = firstElement(e); c; c = nextElement(c))
        {
            T x;
            parse(valueText(c), ctx, x);
            items.append(x);
        }
        return CIMValue(items);
    }
    T x;
    parse(valueText(e), ctx, x);
    return CIMValue(x);
}

// ---- paths ----

CIMObjectPath readClassNamePath(const pugi::xml_node& e)
{
    CIMObjectPath path;
    path.setClassName(attrName(e, "NAME", true));
    return path;
}

void readNamespacePath(const pugi::xml_node& e, CIMObjectPath& path)
{
    path.setHost(textOf(requireChild(e, "HOST")));
    path.setNameSpace(readLocalNamespacePath(requireChild(e, "LOCALNAMESPACEPATH")));
}

CIMKeyBinding readKeyValue(const CIMName& name, const pugi::xml_node& e)
{
    // VALUETYPE defaults to string; older senders leave it out and give
    // TYPE alone, or an empty TYPE.
    std::string valueType = e.attribute("VALUETYPE").value();
    std::string type = e.attribute("TYPE").value();
    CIMKeyBinding::Type kind = CIMKeyBinding::STRING;
    if (valueType == "boolean" || (valueType.empty() && type == "boolean"))
        kind = CIMKeyBinding::BOOLEAN;
    else if (valueType == "numeric")
        kind = CIMKeyBinding::NUMERIC;
    else if (valueType.empty() && !type.empty() && type != "string" && type != "char16" && type != "datetime")
        kind = CIMKeyBinding::NUMERIC;
    else if (!valueType.empty() && valueType != "string")
        invalid("KEYVALUE with unknown VALUETYPE '" + valueType + "'");
    String text = textOf(e);
    if (kind != CIMKeyBinding::STRING)
    {
        std::string t = trimmed(e.child_value());
        text = String(t.data(), Uint32(t.size()));
    }
    return CIMKeyBinding(name, text, kind);
}
}  // namespace

String textOf(const pugi::xml_node& element)
{
    pugi::xml_node first = element.first_child();
    if (first && !first.next_sibling() &&
        (first.type() == pugi::node_pcdata || first.type() == pugi::node_cdata))
        return toString(first.value());
    std::string all;
    for (pugi::xml_node c = first; c; c = c.next_sibling())
        if (c.type() == pugi::node_pcdata || c.type() == pugi::node_cdata)
            all += c.value();
    return String(all.data(), Uint32(all.size()));
}

String attrString(const pugi::xml_node& e, const char* name, bool required)
{
    pugi::xml_attribute a = e.attribute(name);
    if (!a && required)
        invalid(elementName(e) + " without " + name);
    return toString(a.value());
}

CIMName attrName(const pugi::xml_node& e, const char* name, bool required)
{
    pugi::xml_attribute a = e.attribute(name);
    if (!a || !*a.value())
    {
        if (required)
            invalid(elementName(e) + " without " + name);
        return CIMName();
    }
    String s = toString(a.value());
    if (!CIMName::legal(s))
        invalid(elementName(e) + ": '" + a.value() + "' is not a valid name for " + name);
    return CIMName(s);
}

bool isEmbeddedObject(const pugi::xml_node& e, CIMType& embeddedType)
{
    pugi::xml_attribute a = e.attribute("EmbeddedObject");
    if (!a)
        a = e.attribute("EMBEDDEDOBJECT");
    if (!a)
        return false;
    std::string v = a.value();
    if (v == "object")
        embeddedType = CIMTYPE_OBJECT;
    else if (v == "instance")
        embeddedType = CIMTYPE_INSTANCE;
    else
        invalid(elementName(e) + ": embedded-object marker '" + v + "' is neither object nor instance");
    return true;
}

CIMNamespaceName readLocalNamespacePath(const pugi::xml_node& e)
{
    std::string ns;
    for (pugi::xml_node c = firstElement(e); c; c = nextElement(c))
    {
        if (!is(c, "NAMESPACE"))
            invalid("LOCALNAMESPACEPATH holds " + elementName(c));
        if (!ns.empty())
            ns += '/';
        ns += c.attribute("NAME").value();
    }
    if (ns.empty())
        invalid("LOCALNAMESPACEPATH without NAMESPACE");
    String s(ns.data(), Uint32(ns.size()));
    if (!CIMNamespaceName::legal(s))
        invalid("'" + ns + "' is not a valid namespace name");
    return CIMNamespaceName(s);
}

CIMObjectPath readInstanceName(const pugi::xml_node& e, ReadContext& ctx)
{
    if (!is(e, "INSTANCENAME"))
        invalid("expected INSTANCENAME, found " + elementName(e));
    CIMObjectPath path;
    path.setClassName(attrName(e, "CLASSNAME", true));
    Array<CIMKeyBinding> keys;
    for (pugi::xml_node c = firstElement(e); c; c = nextElement(c))
    {
        if (!is(c, "KEYBINDING"))
            invalid("INSTANCENAME with an unnamed key (" + elementName(c) + ") is not supported");
        CIMName name = attrName(c, "NAME", true);
        pugi::xml_node v = firstElement(c);
        if (!v)
            invalid("KEYBINDING without a value");
        if (is(v, "KEYVALUE"))
            keys.append(readKeyValue(name, v));
        else if (is(v, "VALUE.REFERENCE"))
            keys.append(CIMKeyBinding(name, readAnyPath(v, ctx).toString(), CIMKeyBinding::REFERENCE));
        else
            invalid("KEYBINDING holds " + elementName(v));
    }
    path.setKeyBindings(keys);
    return path;
}

CIMObjectPath readAnyPath(const pugi::xml_node& e, ReadContext& ctx)
{
    if (is(e, "VALUE.REFERENCE") || is(e, "OBJECTPATH"))
    {
        pugi::xml_node inner = firstElement(e);
        if (!inner || is(inner, "VALUE.REFERENCE") || is(inner, "OBJECTPATH"))
            invalid(elementName(e) + " without a path");
        return readAnyPath(inner, ctx);
    }
    if (is(e, "CLASSNAME"))
        return readClassNamePath(e);
    if (is(e, "INSTANCENAME"))
        return readInstanceName(e, ctx);
    CIMObjectPath path;
    if (is(e, "LOCALCLASSPATH") || is(e, "LOCALINSTANCEPATH"))
    {
        CIMNamespaceName ns = readLocalNamespacePath(requireChild(e, "LOCALNAMESPACEPATH"));
        path = is(e, "LOCALCLASSPATH") ? readClassNamePath(requireChild(e, "CLASSNAME"))
                                       : readInstanceName(requireChild(e, "INSTANCENAME"), ctx);
        path.setNameSpace(ns);
        return path;
    }
    if (is(e, "CLASSPATH") || is(e, "INSTANCEPATH"))
    {
        CIMObjectPath where;
        readNamespacePath(requireChild(e, "NAMESPACEPATH"), where);
        path = is(e, "CLASSPATH") ? readClassNamePath(requireChild(e, "CLASSNAME"))
                                  : readInstanceName(requireChild(e, "INSTANCENAME"), ctx);
        path.setNameSpace(where.getNameSpace());
        path.setHost(where.getHost());
        return path;
    }
    invalid("expected an object path, found " + elementName(e));
}

// ---- values ----

CIMValue readTypedValue(const pugi::xml_node& e, CIMType type, bool isArray, ReadContext& ctx)
{
    if (!e)
        return CIMValue(type, isArray);
    switch (type)
    {
    case CIMTYPE_BOOLEAN: return readOfType<Boolean>(e, isArray, ctx);
    case CIMTYPE_UINT8: return readOfType<Uint8>(e, isArray, ctx);
    case CIMTYPE_SINT8: return readOfType<Sint8>(e, isArray, ctx);
    case CIMTYPE_UINT16: return readOfType<Uint16>(e, isArray, ctx);
    case CIMTYPE_SINT16: return readOfType<Sint16>(e, isArray, ctx);
    case CIMTYPE_UINT32: return readOfType<Uint32>(e, isArray, ctx);
    case CIMTYPE_SINT32: return readOfType<Sint32>(e, isArray, ctx);
    case CIMTYPE_UINT64: return readOfType<Uint64>(e, isArray, ctx);
    case CIMTYPE_SINT64: return readOfType<Sint64>(e, isArray, ctx);
    case CIMTYPE_REAL32: return readOfType<Real32>(e, isArray, ctx);
    case CIMTYPE_REAL64: return readOfType<Real64>(e, isArray, ctx);
    case CIMTYPE_CHAR16: return readOfType<Char16>(e, isArray, ctx);
    case CIMTYPE_STRING: return readOfType<String>(e, isArray, ctx);
    case CIMTYPE_DATETIME: return readOfType<CIMDateTime>(e, isArray, ctx);
    case CIMTYPE_OBJECT: return readOfType<CIMObject>(e, isArray, ctx);
    case CIMTYPE_INSTANCE: return readOfType<CIMInstance>(e, isArray, ctx);
    case CIMTYPE_REFERENCE:
        if (isArray)
        {
            // Some clients send an empty reference array as an empty
            // VALUE.ARRAY: it holds nothing that could be mistyped.
            if (is(e, "VALUE.ARRAY") && !firstElement(e))
                return CIMValue(Array<CIMObjectPath>());
            if (!is(e, "VALUE.REFARRAY"))
                invalid("expected VALUE.REFARRAY, found " + elementName(e));
            Array<CIMObjectPath> paths;
            for (pugi::xml_node c = firstElement(e); c; c = nextElement(c))
                paths.append(readAnyPath(c, ctx));
            return CIMValue(paths);
        }
        if (!is(e, "VALUE.REFERENCE"))
            invalid("expected VALUE.REFERENCE, found " + elementName(e));
        return CIMValue(readAnyPath(e, ctx));
    }
    invalid("unknown type");
}

CIMValue readUntypedValue(const pugi::xml_node& e, ReadContext& ctx, bool& typed)
{
    typed = false;
    if (!e)
        return CIMValue(CIMTYPE_STRING, false);
    if (is(e, "VALUE"))
        return readOfType<String>(e, false, ctx);
    if (is(e, "VALUE.ARRAY"))
        return readOfType<String>(e, true, ctx);
    typed = true;
    if (is(e, "VALUE.REFERENCE"))
        return readTypedValue(e, CIMTYPE_REFERENCE, false, ctx);
    if (is(e, "VALUE.REFARRAY"))
        return readTypedValue(e, CIMTYPE_REFERENCE, true, ctx);
    invalid("expected a value, found " + elementName(e));
}

// ---- objects ----

namespace
{
CIMQualifier readQualifier(const pugi::xml_node& e, ReadContext& ctx)
{
    CIMName name = attrName(e, "NAME", true);
    CIMType type;
    if (!parseWireType(e.attribute("TYPE").value(), type))
        invalid("QUALIFIER " + std::string(e.attribute("NAME").value()) + ": unknown TYPE '" +
            e.attribute("TYPE").value() + "'");
    pugi::xml_node v = firstElement(e);
    CIMValue value = readTypedValue(v, type, v && is(v, "VALUE.ARRAY"), ctx);
    CIMFlavor flavor;
    flavor.addFlavor(attrBool(e, "OVERRIDABLE", true) ? CIMFlavor::OVERRIDABLE : CIMFlavor::DISABLEOVERRIDE);
    flavor.addFlavor(attrBool(e, "TOSUBCLASS", true) ? CIMFlavor::TOSUBCLASS : CIMFlavor::RESTRICTED);
    if (attrBool(e, "TOINSTANCE", false))
        flavor.addFlavor(CIMFlavor::TOINSTANCE);
    if (attrBool(e, "TRANSLATABLE", false))
        flavor.addFlavor(CIMFlavor::TRANSLATABLE);
    return CIMQualifier(name, value, flavor, attrBool(e, "PROPAGATED", false));
}

// Reads the leading QUALIFIER children into owner; returns the first other child.
template <class Owner>
pugi::xml_node readQualifiers(const pugi::xml_node& e, Owner& owner, ReadContext& ctx)
{
    pugi::xml_node c = firstElement(e);
    for (; c && is(c, "QUALIFIER"); c = nextElement(c))
        owner.addQualifier(readQualifier(c, ctx));
    return c;
}

// String-typed declarations marked as embedded objects by qualifier.
CIMType embeddedByQualifier(const pugi::xml_node& e, CIMType type)
{
    if (type != CIMTYPE_STRING)
        return type;
    for (pugi::xml_node q = e.child("QUALIFIER"); q; q = q.next_sibling("QUALIFIER"))
    {
        const char* name = q.attribute("NAME").value();
        if (strcasecmp(name, "EmbeddedObject") == 0)
            return CIMTYPE_OBJECT;
        if (strcasecmp(name, "EmbeddedInstance") == 0)
            return CIMTYPE_INSTANCE;
    }
    return type;
}

CIMProperty readProperty(const pugi::xml_node& e, ReadContext& ctx)
{
    CIMName name = attrName(e, "NAME", true);
    CIMName origin = attrName(e, "CLASSORIGIN", false);
    bool propagated = attrBool(e, "PROPAGATED", false);
    bool isReference = is(e, "PROPERTY.REFERENCE");
    bool isArray = is(e, "PROPERTY.ARRAY");
    CIMType type = CIMTYPE_REFERENCE;
    if (!isReference)
    {
        const char* typeName = e.attribute("TYPE").value();
        if (!parseWireType(typeName, type))
            invalid(elementName(e) + " " + e.attribute("NAME").value() + ": unknown TYPE '" + typeName + "'");
        CIMType embedded;
        if (isEmbeddedObject(e, embedded))
            type = embedded;
        else
            type = embeddedByQualifier(e, type);
    }
    // The value comes after the qualifiers; read it first so that the
    // property is built complete.
    pugi::xml_node v = firstElement(e);
    while (v && is(v, "QUALIFIER"))
        v = nextElement(v);
    CIMValue value = readTypedValue(v, type, isArray, ctx);
    CIMProperty p(name, value, isArray ? attrArraySize(e) : 0,
        isReference ? attrName(e, "REFERENCECLASS", false) : CIMName(), origin, propagated);
    readQualifiers(e, p, ctx);
    return p;
}

CIMParameter readParameter(const pugi::xml_node& e, ReadContext& ctx)
{
    CIMName name = attrName(e, "NAME", true);
    bool isReference = is(e, "PARAMETER.REFERENCE") || is(e, "PARAMETER.REFARRAY");
    bool isArray = is(e, "PARAMETER.ARRAY") || is(e, "PARAMETER.REFARRAY");
    CIMType type = CIMTYPE_REFERENCE;
    if (!isReference)
    {
        if (!parseWireType(e.attribute("TYPE").value(), type))
            invalid(elementName(e) + " " + e.attribute("NAME").value() + ": unknown TYPE");
        type = embeddedByQualifier(e, type);
    }
    CIMParameter p(name, type, isArray, isArray ? attrArraySize(e) : 0,
        isReference ? attrName(e, "REFERENCECLASS", false) : CIMName());
    pugi::xml_node rest = readQualifiers(e, p, ctx);
    if (rest)
        invalid(elementName(e) + " holds " + elementName(rest));
    return p;
}

CIMMethod readMethod(const pugi::xml_node& e, ReadContext& ctx)
{
    CIMType type = CIMTYPE_UINT32;  // a method without TYPE returns nothing useful
    pugi::xml_attribute t = e.attribute("TYPE");
    if (t && !parseWireType(t.value(), type))
        invalid(std::string("METHOD ") + e.attribute("NAME").value() + ": unknown TYPE");
    type = embeddedByQualifier(e, type);
    CIMMethod m(
        attrName(e, "NAME", true), type, attrName(e, "CLASSORIGIN", false), attrBool(e, "PROPAGATED", false));
    for (pugi::xml_node c = readQualifiers(e, m, ctx); c; c = nextElement(c))
    {
        if (std::strncmp(c.name(), "PARAMETER", 9) != 0)
            invalid("METHOD holds " + elementName(c));
        m.addParameter(readParameter(c, ctx));
    }
    return m;
}

bool isPropertyElement(const pugi::xml_node& c)
{
    return is(c, "PROPERTY") || is(c, "PROPERTY.ARRAY") || is(c, "PROPERTY.REFERENCE");
}
}  // namespace

CIMInstance readInstance(const pugi::xml_node& e, ReadContext& ctx)
{
    if (!is(e, "INSTANCE"))
        invalid("expected INSTANCE, found " + elementName(e));
    CIMInstance instance(attrName(e, "CLASSNAME", true));
    for (pugi::xml_node c = readQualifiers(e, instance, ctx); c; c = nextElement(c))
    {
        if (!isPropertyElement(c))
            invalid("INSTANCE holds " + elementName(c));
        instance.addProperty(readProperty(c, ctx));
    }
    return instance;
}

CIMClass readClass(const pugi::xml_node& e, ReadContext& ctx)
{
    if (!is(e, "CLASS"))
        invalid("expected CLASS, found " + elementName(e));
    CIMClass cimClass(attrName(e, "NAME", true), attrName(e, "SUPERCLASS", false));
    for (pugi::xml_node c = readQualifiers(e, cimClass, ctx); c; c = nextElement(c))
    {
        if (isPropertyElement(c))
            cimClass.addProperty(readProperty(c, ctx));
        else if (is(c, "METHOD"))
            cimClass.addMethod(readMethod(c, ctx));
        else
            invalid("CLASS holds " + elementName(c));
    }
    return cimClass;
}

CIMInstance readNamedInstance(const pugi::xml_node& e, ReadContext& ctx)
{
    if (!is(e, "VALUE.NAMEDINSTANCE"))
        invalid("expected VALUE.NAMEDINSTANCE, found " + elementName(e));
    CIMObjectPath path = readInstanceName(requireChild(e, "INSTANCENAME"), ctx);
    CIMInstance instance = readInstance(requireChild(e, "INSTANCE"), ctx);
    instance.setPath(path);
    return instance;
}

CIMObject readObjectWithPath(const pugi::xml_node& e, ReadContext& ctx)
{
    if (!is(e, "VALUE.OBJECTWITHPATH") && !is(e, "VALUE.OBJECTWITHLOCALPATH") && !is(e, "VALUE.OBJECT"))
        invalid("expected VALUE.OBJECTWITHPATH, found " + elementName(e));
    pugi::xml_node first = firstElement(e);
    if (!first)
        invalid(elementName(e) + " is empty");
    pugi::xml_node objectElement = is(e, "VALUE.OBJECT") ? first : nextElement(first);
    if (!objectElement)
        invalid(elementName(e) + " without an object");
    CIMObject object = is(objectElement, "CLASS") ? CIMObject(readClass(objectElement, ctx))
                                                  : CIMObject(readInstance(objectElement, ctx));
    if (!is(e, "VALUE.OBJECT"))
        object.setPath(readAnyPath(first, ctx));
    return object;
}

CIMObject readEmbeddedObject(const String& xml, ReadContext& ctx)
{
    if (ctx.embedding >= ctx.limits.maxEmbeddingDepth)
        throw DecodeError(DecodeFailure::LimitExceeded,
            "embedded objects nest deeper than " + std::to_string(ctx.limits.maxEmbeddingDepth) + " levels");
    CString utf8 = xml.getCString();
    const char* text = utf8;
    pugi::xml_document doc;
    parseDocument(doc, text, std::strlen(text), ctx.limits);
    pugi::xml_node root = doc.document_element();
    ctx.embedding++;
    struct Leave
    {
        unsigned& depth;
        ~Leave() { depth--; }
    } leave{ctx.embedding};
    if (is(root, "INSTANCE"))
        return CIMObject(readInstance(root, ctx));
    if (is(root, "CLASS"))
        return CIMObject(readClass(root, ctx));
    invalid("an embedded object holds " + elementName(root));
}

CIMObject decodeEmbeddedObject(const String& xml, const DecodeLimits& limits)
{
    ReadContext ctx;
    ctx.limits = limits;
    return readEmbeddedObject(xml, ctx);
}

// ---- documents ----

namespace
{
int digitValue(unsigned char c, bool hex)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const unsigned lower = c | 0x20u;
    if (hex && lower >= 'a' && lower <= 'f')
        return int(lower - 'a') + 10;
    return -1;
}

// Why the document holds a character XML does not allow, with the byte
// offset; "" when it holds none. Character references are checked as well
// as raw text (outside comments, CDATA sections and processing
// instructions, where "&#" is plain text), so that no value the parser
// expands can hold such a character either.
std::string nonXmlCharacter(const char* data, std::size_t size)
{
    const unsigned char* s = reinterpret_cast<const unsigned char*>(data);
    const char* literalEnd = nullptr;  // while inside a comment, CDATA or PI
    auto at = [](std::size_t i) { return " (byte " + std::to_string(i) + ")"; };
    auto startsWith = [&](std::size_t i, const char* prefix) {
        const std::size_t n = std::strlen(prefix);
        return size - i >= n && std::memcmp(data + i, prefix, n) == 0;
    };
    for (std::size_t i = 0; i < size;)
    {
        unsigned code = 0;
        const std::size_t length = decodeUtf8(s + i, size - i, code);
        if (length == 0)
            return "the document is not UTF-8" + at(i);
        if (!isXmlChar(code))
            return "the document holds a character XML does not allow" + at(i);
        if (s[i] != '<' && s[i] != '&' && s[i] != (literalEnd ? literalEnd[0] : 0))
        {
            i += length;
            continue;
        }
        if (literalEnd)
        {
            if (startsWith(i, literalEnd))
            {
                i += std::strlen(literalEnd);
                literalEnd = nullptr;
                continue;
            }
        }
        else if (startsWith(i, "<!--"))
            literalEnd = "-->";
        else if (startsWith(i, "<![CDATA["))
            literalEnd = "]]>";
        else if (startsWith(i, "<?"))
            literalEnd = "?>";
        else if (startsWith(i, "&#"))
        {
            std::size_t k = i + 2;
            const bool hex = k < size && data[k] == 'x';
            if (hex)
                k++;
            unsigned long value = 0;
            std::size_t digits = 0;
            for (; k < size && data[k] != ';'; k++, digits++)
            {
                const int digit = digitValue(s[k], hex);
                if (digit < 0)
                    break;
                value = value * (hex ? 16 : 10) + unsigned(digit);
                if (value > 0x10FFFF)
                    value = 0x110000;  // stays out of range however long
            }
            if (k >= size || data[k] != ';' || digits == 0)
                return "a character reference is malformed" + at(i);
            if (!isXmlChar(unsigned(value)))
                return "a character reference names a character XML does not allow" + at(i);
            i = k + 1;
            continue;
        }
        i += length;
    }
    return {};
}
}  // namespace

void parseDocument(pugi::xml_document& doc, const char* data, std::size_t size, const DecodeLimits& limits,
    char* writableData)
{
    // Text becomes SDK strings, which hold Unicode only, and goes on to the
    // array and back to clients: only characters XML allows get that far.
    const std::string bad = nonXmlCharacter(data, size);
    if (!bad.empty())
        throw DecodeError(DecodeFailure::NotWellFormed, bad);
    // parse_doctype keeps a document type in the tree so that it can be
    // refused; entities other than the five predefined ones and character
    // references are never expanded by the parser.
    unsigned options = pugi::parse_default | pugi::parse_doctype | pugi::parse_ws_pcdata_single;
    pugi::xml_parse_result result = writableData
        ? doc.load_buffer_inplace(writableData, size, options, pugi::encoding_utf8)
        : doc.load_buffer(data, size, options, pugi::encoding_utf8);
    if (!result)
        throw DecodeError(DecodeFailure::NotWellFormed,
            std::string("XML error at offset ") + std::to_string(result.offset) + ": " +
                result.description());

    // Walk the tree without recursion: depth, attribute sizes, doctype.
    struct Frame
    {
        pugi::xml_node node;
        unsigned depth;
    };
    std::vector<Frame> stack;
    for (pugi::xml_node top = doc.first_child(); top; top = top.next_sibling())
    {
        if (top.type() == pugi::node_doctype)
            throw DecodeError(DecodeFailure::NotWellFormed,
                "document type declarations (and entity declarations) are refused");
        if (top.type() == pugi::node_element)
            stack.push_back({top, 1});
    }
    if (!doc.document_element())
        throw DecodeError(DecodeFailure::NotWellFormed, "the document has no element");
    while (!stack.empty())
    {
        Frame f = stack.back();
        stack.pop_back();
        if (f.depth > limits.maxDepth)
            throw DecodeError(DecodeFailure::LimitExceeded,
                "elements nest deeper than " + std::to_string(limits.maxDepth) + " levels");
        for (pugi::xml_attribute a = f.node.first_attribute(); a; a = a.next_attribute())
            if (std::strlen(a.value()) > limits.maxAttributeSize)
                throw DecodeError(DecodeFailure::LimitExceeded,
                    std::string("attribute ") + a.name() + " of " + f.node.name() + " is longer than " +
                        std::to_string(limits.maxAttributeSize) + " bytes");
        for (pugi::xml_node c = f.node.first_child(); c; c = c.next_sibling())
            if (c.type() == pugi::node_element)
                stack.push_back({c, f.depth + 1});
    }
}

}  // namespace cimxml
