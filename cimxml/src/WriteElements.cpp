// Writing values, paths and objects. One spelling for everything: the
// forms every reader in the field understands.
#include "Elements.h"
#include "XmlChars.h"

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMObjectAccess.h>
#include <Pegasus/Common/CIMValueAccess.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace cimxml
{

// ---- XmlWriter escaping ----

namespace
{
// Bytes below 0x80 that need more than themselves: markup characters, and
// whitespace that a reader would normalise (CR always, TAB/LF in attributes).
struct EscapeTable
{
    bool text[128];
    bool attribute[128];
    EscapeTable()
    {
        for (unsigned c = 0; c < 128; c++)
        {
            bool markup = c == '<' || c == '>' || c == '&';
            bool control = c < 0x20 && c != '\n' && c != '\t';
            text[c] = markup || control;
            attribute[c] = markup || c < 0x20 || c == '"';
        }
    }
};
const EscapeTable kEscape;

// Writes the escaped form of ASCII c at out; returns its length (at most 6).
std::size_t putEscaped(char* out, unsigned c)
{
    const char* entity = nullptr;
    switch (c)
    {
    case '<': entity = "&lt;"; break;
    case '>': entity = "&gt;"; break;
    case '&': entity = "&amp;"; break;
    case '"': entity = "&quot;"; break;
    default: break;
    }
    if (entity)
    {
        std::size_t n = std::strlen(entity);
        std::memcpy(out, entity, n);
        return n;
    }
    // TAB, LF and CR travel as character references so that no reader
    // normalises them away. The other control characters are not XML
    // characters at all, raw or as references: U+FFFD stands in for them.
    if (c != '\t' && c != '\n' && c != '\r')
    {
        std::memcpy(out, kReplacementUtf8, 3);
        return 3;
    }
    std::size_t n = 0;
    out[n++] = '&';
    out[n++] = '#';
    if (c >= 10)
        out[n++] = char('0' + c / 10);
    out[n++] = char('0' + c % 10);
    out[n++] = ';';
    return n;
}

// Copies the run of plain units at s (printable ASCII other than < > & ")
// to out as bytes, eight units at a time, and returns its length: most
// text is plain, and this spares it the unit-by-unit escaping below. A
// run's last few units, and anything else, are left to the caller.
std::size_t copyPlainRun(const Char16* s, std::size_t n, char* out)
{
    std::size_t i = 0;
#if defined(__SSE2__)
    const __m128i belowPrintable = _mm_set1_epi16(0x1F);
    const __m128i delete_ = _mm_set1_epi16(0x7F);
    const __m128i lt = _mm_set1_epi16('<'), gt = _mm_set1_epi16('>');
    const __m128i amp = _mm_set1_epi16('&'), quot = _mm_set1_epi16('"');
    for (; i + 8 <= n; i += 8)
    {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
        // Signed compares: units from 0x8000 up are negative, so not plain.
        __m128i plain = _mm_and_si128(_mm_cmpgt_epi16(v, belowPrintable), _mm_cmplt_epi16(v, delete_));
        __m128i markup = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(v, lt), _mm_cmpeq_epi16(v, gt)),
            _mm_or_si128(_mm_cmpeq_epi16(v, amp), _mm_cmpeq_epi16(v, quot)));
        if (_mm_movemask_epi8(_mm_andnot_si128(markup, plain)) != 0xFFFF)
            break;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(v, v));
    }
#else
    (void)s;
    (void)n;
    (void)out;
#endif
    return i;
}

// Longest output for one UTF-16 unit: an entity of 6 bytes, or 3 bytes of
// UTF-8 (a surrogate pair gives 4 bytes for 2 units).
const std::size_t kMaxBytesPerUnit = 6;
const std::size_t kChunkUnits = 4096;
}  // namespace

void XmlWriter::grow(std::size_t needed)
{
    std::size_t capacity = std::max(needed, _capacity * 2);
    std::unique_ptr<char[]> data(new char[capacity]);
    std::memcpy(data.get(), _data.get(), _size);
    _data = std::move(data);
    _capacity = capacity;
}

void XmlWriter::escape(const Char16* s, std::size_t n, bool attribute)
{
    const bool* table = attribute ? kEscape.attribute : kEscape.text;
    std::size_t i = 0;
    while (i < n)
    {
        // Long strings go in chunks so that the buffer stays small.
        std::size_t end = std::min(n, i + kChunkUnits);
        reserve((end - i) * kMaxBytesPerUnit + 4);
        char* out = _data.get() + _size;
        char* const start = out;
        while (i < end)
        {
            const std::size_t plain = copyPlainRun(s + i, end - i, out);
            i += plain;
            out += plain;
            if (i == end)
                break;
            unsigned c = s[i++];
            if (c < 0x80)
            {
                if (table[c])
                    out += putEscaped(out, c);
                else
                    *out++ = char(c);
                continue;
            }
            unsigned code = c;
            if (c >= 0xD800 && c <= 0xDBFF && i < n && s[i] >= 0xDC00 && s[i] <= 0xDFFF)
                code = 0x10000 + ((c - 0xD800) << 10) + (unsigned(s[i++]) - 0xDC00);
            else if ((c >= 0xD800 && c <= 0xDFFF) || !isXmlChar(c))
                code = 0xFFFD;  // a lone surrogate, U+FFFE or U+FFFF: no XML character
            if (code < 0x800)
            {
                *out++ = char(0xC0 | (code >> 6));
                *out++ = char(0x80 | (code & 0x3F));
            }
            else if (code < 0x10000)
            {
                *out++ = char(0xE0 | (code >> 12));
                *out++ = char(0x80 | ((code >> 6) & 0x3F));
                *out++ = char(0x80 | (code & 0x3F));
            }
            else
            {
                *out++ = char(0xF0 | (code >> 18));
                *out++ = char(0x80 | ((code >> 12) & 0x3F));
                *out++ = char(0x80 | ((code >> 6) & 0x3F));
                *out++ = char(0x80 | (code & 0x3F));
            }
        }
        _size += std::size_t(out - start);
        if (_size >= _limit)
            flush();
    }
}

void XmlWriter::escapeUtf8(const char* s, std::size_t n, bool attribute)
{
    const bool* table = attribute ? kEscape.attribute : kEscape.text;
    std::size_t i = 0;
    while (i < n)
    {
        std::size_t end = std::min(n, i + kChunkUnits);
        reserve((end - i) * kMaxBytesPerUnit);
        char* out = _data.get() + _size;
        char* const start = out;
        while (i < end)
        {
            const unsigned char* u = reinterpret_cast<const unsigned char*>(s + i);
            if (*u < 0x80)
            {
                if (table[*u])
                    out += putEscaped(out, *u);
                else
                    *out++ = char(*u);
                i++;
                continue;
            }
            unsigned code = 0;
            const std::size_t length = decodeUtf8(u, n - i, code);
            if (length == 0 || !isXmlChar(code))
            {
                // Not UTF-8 or not an XML character: one U+FFFD per bad
                // byte or character.
                std::memcpy(out, kReplacementUtf8, 3);
                out += 3;
                i += length ? length : 1;
                continue;
            }
            std::memcpy(out, u, length);
            out += length;
            i += length;
        }
        _size += std::size_t(out - start);
        if (_size >= _limit)
            flush();
    }
}

// ---- types ----

namespace
{
const char* const kTypeNames[] = {
    "boolean",
    "uint8",
    "sint8",
    "uint16",
    "sint16",
    "uint32",
    "sint32",
    "uint64",
    "sint64",
    "real32",
    "real64",
    "char16",
    "string",
    "datetime",
    "reference",
};
}

const char* wireTypeName(CIMType type)
{
    if (type == CIMTYPE_OBJECT || type == CIMTYPE_INSTANCE)
        return "string";
    return kTypeNames[type];
}

bool parseWireType(const char* name, CIMType& type)
{
    for (unsigned i = 0; i < sizeof kTypeNames / sizeof kTypeNames[0]; i++)
    {
        if (std::strcmp(name, kTypeNames[i]) == 0)
        {
            type = CIMType(i);
            return true;
        }
    }
    return false;
}

void writeTypeAttributes(XmlWriter& w, const char* attributeName, CIMType type)
{
    w.raw(" ");
    w.raw(attributeName);
    w.lit("=\"");
    w.raw(wireTypeName(type));
    w.lit("\"");
    if (type == CIMTYPE_OBJECT)
        w.lit(" EmbeddedObject=\"object\"");
    else if (type == CIMTYPE_INSTANCE)
        w.lit(" EmbeddedObject=\"instance\"");
}

// ---- values ----

namespace
{
template <class Int>
void writeInteger(XmlWriter& w, Int x)
{
    char buf[24];
    auto r = std::to_chars(buf, buf + sizeof buf, x);
    w.raw(buf, std::size_t(r.ptr - buf));
}

template <class Real>
void writeReal(XmlWriter& w, Real x)
{
    if (std::isnan(x))
        w.lit("NaN");
    else if (std::isinf(x))
        w.raw(x < 0 ? "-INF" : "INF");
    else
    {
        char buf[40];
        auto r = std::to_chars(buf, buf + sizeof buf, x);
        w.raw(buf, std::size_t(r.ptr - buf));
    }
}

void writeText(XmlWriter& w, Boolean x)
{
    w.raw(x ? "TRUE" : "FALSE");
}
void writeText(XmlWriter& w, Uint8 x)
{
    writeInteger(w, unsigned(x));
}
void writeText(XmlWriter& w, Sint8 x)
{
    writeInteger(w, int(x));
}
void writeText(XmlWriter& w, Uint16 x)
{
    writeInteger(w, x);
}
void writeText(XmlWriter& w, Sint16 x)
{
    writeInteger(w, x);
}
void writeText(XmlWriter& w, Uint32 x)
{
    writeInteger(w, x);
}
void writeText(XmlWriter& w, Sint32 x)
{
    writeInteger(w, x);
}
void writeText(XmlWriter& w, Uint64 x)
{
    writeInteger(w, x);
}
void writeText(XmlWriter& w, Sint64 x)
{
    writeInteger(w, x);
}
void writeText(XmlWriter& w, Real32 x)
{
    writeReal(w, x);
}
void writeText(XmlWriter& w, Real64 x)
{
    writeReal(w, x);
}
void writeText(XmlWriter& w, const Char16& x)
{
    Char16 s[2] = {x, 0};
    w.text(String(s, 1));
}
void writeText(XmlWriter& w, const String& x)
{
    w.text(x);
}
void writeText(XmlWriter& w, const CIMDateTime& x)
{
    w.text(x.toString());
}

// An embedded object is its own CIM-XML, escaped as text.
void writeEmbedded(XmlWriter& w, const CIMConstObject& object)
{
    StringSink inner;
    XmlWriter iw(inner);
    writeObject(iw, object);
    iw.flush();
    w.text(inner.text);
}
void writeText(XmlWriter& w, const CIMObject& x)
{
    writeEmbedded(w, x);
}
void writeText(XmlWriter& w, const CIMInstance& x)
{
    writeEmbedded(w, x);
}

template <class T>
void writeScalarOrArray(XmlWriter& w, const CIMValue& value)
{
    if (value.isArray())
    {
        Array<T> items;
        value.get(items);
        w.lit("<VALUE.ARRAY>");
        for (Uint32 i = 0; i < items.size(); i++)
        {
            w.lit("<VALUE>");
            writeText(w, items[i]);
            w.lit("</VALUE>");
        }
        w.lit("</VALUE.ARRAY>");
    }
    else
    {
        T item;
        value.get(item);
        w.lit("<VALUE>");
        writeText(w, item);
        w.lit("</VALUE>");
    }
}
}  // namespace

void writeValue(XmlWriter& w, const CIMValue& value)
{
    if (value.isNull())
        return;
    switch (value.getType())
    {
    case CIMTYPE_BOOLEAN: return writeScalarOrArray<Boolean>(w, value);
    case CIMTYPE_UINT8: return writeScalarOrArray<Uint8>(w, value);
    case CIMTYPE_SINT8: return writeScalarOrArray<Sint8>(w, value);
    case CIMTYPE_UINT16: return writeScalarOrArray<Uint16>(w, value);
    case CIMTYPE_SINT16: return writeScalarOrArray<Sint16>(w, value);
    case CIMTYPE_UINT32: return writeScalarOrArray<Uint32>(w, value);
    case CIMTYPE_SINT32: return writeScalarOrArray<Sint32>(w, value);
    case CIMTYPE_UINT64: return writeScalarOrArray<Uint64>(w, value);
    case CIMTYPE_SINT64: return writeScalarOrArray<Sint64>(w, value);
    case CIMTYPE_REAL32: return writeScalarOrArray<Real32>(w, value);
    case CIMTYPE_REAL64: return writeScalarOrArray<Real64>(w, value);
    case CIMTYPE_CHAR16: return writeScalarOrArray<Char16>(w, value);
    case CIMTYPE_STRING:
        if (const String* text = CIMValueAccess::scalarString(value))
        {
            w.lit("<VALUE>");
            writeText(w, *text);
            w.lit("</VALUE>");
            return;
        }
        return writeScalarOrArray<String>(w, value);
    case CIMTYPE_DATETIME: return writeScalarOrArray<CIMDateTime>(w, value);
    case CIMTYPE_OBJECT: return writeScalarOrArray<CIMObject>(w, value);
    case CIMTYPE_INSTANCE: return writeScalarOrArray<CIMInstance>(w, value);
    case CIMTYPE_REFERENCE:
        if (value.isArray())
        {
            Array<CIMObjectPath> paths;
            value.get(paths);
            w.lit("<VALUE.REFARRAY>");
            for (Uint32 i = 0; i < paths.size(); i++)
                writeReference(w, paths[i]);
            w.lit("</VALUE.REFARRAY>");
        }
        else
        {
            CIMObjectPath path;
            value.get(path);
            writeReference(w, path);
        }
        return;
    }
}

// ---- paths ----

void writeLocalNamespacePath(XmlWriter& w, const CIMNamespaceName& nameSpace)
{
    w.lit("<LOCALNAMESPACEPATH>");
    const String& ns = nameSpace.getString();
    Uint32 start = 0;
    for (Uint32 i = 0; i <= ns.size(); i++)
    {
        if (i == ns.size() || ns[i] == '/')
        {
            if (i > start)
            {
                w.lit("<NAMESPACE NAME=\"");
                w.attrText(ns.subString(start, i - start));
                w.lit("\"/>");
            }
            start = i + 1;
        }
    }
    w.lit("</LOCALNAMESPACEPATH>");
}

namespace
{
void writeNamespacePath(XmlWriter& w, const CIMObjectPath& path)
{
    w.lit("<NAMESPACEPATH><HOST>");
    w.text(path.getHost());
    w.lit("</HOST>");
    writeLocalNamespacePath(w, path.getNameSpace());
    w.lit("</NAMESPACEPATH>");
}

void writeClassName(XmlWriter& w, const CIMName& name)
{
    w.lit("<CLASSNAME NAME=\"");
    w.attrText(name.getString());
    w.lit("\"/>");
}
}  // namespace

void writeInstanceName(XmlWriter& w, const CIMObjectPath& path)
{
    w.lit("<INSTANCENAME CLASSNAME=\"");
    w.attrText(path.getClassName().getString());
    w.lit("\">");
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); i++)
    {
        const CIMKeyBinding& key = keys[i];
        w.lit("<KEYBINDING NAME=\"");
        w.attrText(key.getName().getString());
        w.lit("\">");
        switch (key.getType())
        {
        case CIMKeyBinding::REFERENCE: writeReference(w, CIMObjectPath(key.getValue())); break;
        case CIMKeyBinding::BOOLEAN:
            w.lit("<KEYVALUE VALUETYPE=\"boolean\">");
            w.text(key.getValue());
            w.lit("</KEYVALUE>");
            break;
        case CIMKeyBinding::NUMERIC:
            w.lit("<KEYVALUE VALUETYPE=\"numeric\">");
            w.text(key.getValue());
            w.lit("</KEYVALUE>");
            break;
        case CIMKeyBinding::STRING:
            w.lit("<KEYVALUE VALUETYPE=\"string\">");
            w.text(key.getValue());
            w.lit("</KEYVALUE>");
            break;
        }
        w.lit("</KEYBINDING>");
    }
    w.lit("</INSTANCENAME>");
}

void writeObjectPath(XmlWriter& w, const CIMObjectPath& path)
{
    if (path.getKeyBindings().size() == 0)
    {
        w.lit("<CLASSPATH>");
        writeNamespacePath(w, path);
        writeClassName(w, path.getClassName());
        w.lit("</CLASSPATH>");
    }
    else
    {
        w.lit("<INSTANCEPATH>");
        writeNamespacePath(w, path);
        writeInstanceName(w, path);
        w.lit("</INSTANCEPATH>");
    }
}

void writeLocalObjectPath(XmlWriter& w, const CIMNamespaceName& nameSpace, const CIMObjectPath& path)
{
    if (path.getKeyBindings().size() == 0)
    {
        w.lit("<LOCALCLASSPATH>");
        writeLocalNamespacePath(w, nameSpace);
        writeClassName(w, path.getClassName());
        w.lit("</LOCALCLASSPATH>");
    }
    else
    {
        w.lit("<LOCALINSTANCEPATH>");
        writeLocalNamespacePath(w, nameSpace);
        writeInstanceName(w, path);
        w.lit("</LOCALINSTANCEPATH>");
    }
}

// The most complete form the path allows: with host and namespace, with
// namespace only, or just the instance name.
void writeReference(XmlWriter& w, const CIMObjectPath& path)
{
    w.lit("<VALUE.REFERENCE>");
    bool hasNamespace = !path.getNameSpace().isNull();
    if (hasNamespace && path.getHost().size() > 0)
    {
        w.lit("<INSTANCEPATH>");
        writeNamespacePath(w, path);
        writeInstanceName(w, path);
        w.lit("</INSTANCEPATH>");
    }
    else if (hasNamespace)
    {
        w.lit("<LOCALINSTANCEPATH>");
        writeLocalNamespacePath(w, path.getNameSpace());
        writeInstanceName(w, path);
        w.lit("</LOCALINSTANCEPATH>");
    }
    else
        writeInstanceName(w, path);
    w.lit("</VALUE.REFERENCE>");
}

// ---- objects ----

namespace
{
void writeOriginAndPropagated(XmlWriter& w, const CIMName& classOrigin, Boolean propagated)
{
    if (!classOrigin.isNull())
        w.attr("CLASSORIGIN", classOrigin.getString());
    if (propagated)
        w.lit(" PROPAGATED=\"true\"");
}

template <class Owner>
void writeQualifiers(XmlWriter& w, const Owner& owner)
{
    for (Uint32 i = 0; i < owner.getQualifierCount(); i++)
    {
        CIMConstQualifier q = owner.getQualifier(i);
        w.lit("<QUALIFIER");
        w.attr("NAME", q.getName().getString());
        writeTypeAttributes(w, "TYPE", q.getType());
        if (q.getPropagated())
            w.lit(" PROPAGATED=\"true\"");
        const CIMFlavor& f = q.getFlavor();
        // Overridable and propagated to subclasses unless the flavor says so.
        if (!f.hasFlavor(CIMFlavor::OVERRIDABLE))
            w.lit(" OVERRIDABLE=\"false\"");
        if (!f.hasFlavor(CIMFlavor::TOSUBCLASS))
            w.lit(" TOSUBCLASS=\"false\"");
        if (f.hasFlavor(CIMFlavor::TOINSTANCE))
            w.lit(" TOINSTANCE=\"true\"");
        if (f.hasFlavor(CIMFlavor::TRANSLATABLE))
            w.lit(" TRANSLATABLE=\"true\"");
        w.lit(">");
        writeValue(w, q.getValue());
        w.lit("</QUALIFIER>");
    }
}

// For CIMProperty (an instance's, read in place) and CIMConstProperty.
template <class Property>
void writeProperty(XmlWriter& w, const Property& p)
{
    const CIMValue& value = p.getValue();
    CIMType type = p.getType();
    if (type == CIMTYPE_REFERENCE && !p.isArray())
    {
        w.lit("<PROPERTY.REFERENCE");
        w.attr("NAME", p.getName().getString());
        if (!p.getReferenceClassName().isNull())
            w.attr("REFERENCECLASS", p.getReferenceClassName().getString());
        writeOriginAndPropagated(w, p.getClassOrigin(), p.getPropagated());
        w.lit(">");
        writeQualifiers(w, p);
        writeValue(w, value);
        w.lit("</PROPERTY.REFERENCE>");
        return;
    }
    const char* element = p.isArray() ? "PROPERTY.ARRAY" : "PROPERTY";
    w.lit("<");
    w.raw(element);
    w.attr("NAME", p.getName().getString());
    writeTypeAttributes(w, "TYPE", type);
    if (p.isArray() && p.getArraySize() != 0)
    {
        w.lit(" ARRAYSIZE=\"");
        writeInteger(w, p.getArraySize());
        w.lit("\"");
    }
    writeOriginAndPropagated(w, p.getClassOrigin(), p.getPropagated());
    w.lit(">");
    writeQualifiers(w, p);
    writeValue(w, value);
    w.lit("</");
    w.raw(element);
    w.lit(">");
}

void writeParameter(XmlWriter& w, const CIMConstParameter& p)
{
    const char* element;
    if (p.getType() == CIMTYPE_REFERENCE)
        element = p.isArray() ? "PARAMETER.REFARRAY" : "PARAMETER.REFERENCE";
    else
        element = p.isArray() ? "PARAMETER.ARRAY" : "PARAMETER";
    w.lit("<");
    w.raw(element);
    w.attr("NAME", p.getName().getString());
    if (p.getType() == CIMTYPE_REFERENCE)
    {
        if (!p.getReferenceClassName().isNull())
            w.attr("REFERENCECLASS", p.getReferenceClassName().getString());
    }
    else
        w.attr("TYPE", wireTypeName(p.getType()));
    if (p.isArray() && p.getArraySize() != 0)
    {
        w.lit(" ARRAYSIZE=\"");
        writeInteger(w, p.getArraySize());
        w.lit("\"");
    }
    w.lit(">");
    writeQualifiers(w, p);
    w.lit("</");
    w.raw(element);
    w.lit(">");
}

void writeMethod(XmlWriter& w, const CIMConstMethod& m)
{
    w.lit("<METHOD");
    w.attr("NAME", m.getName().getString());
    w.attr("TYPE", wireTypeName(m.getType()));
    writeOriginAndPropagated(w, m.getClassOrigin(), m.getPropagated());
    w.lit(">");
    writeQualifiers(w, m);
    for (Uint32 i = 0; i < m.getParameterCount(); i++)
        writeParameter(w, m.getParameter(i));
    w.lit("</METHOD>");
}
}  // namespace

void writeInstance(XmlWriter& w, const CIMConstInstance& instance)
{
    w.lit("<INSTANCE CLASSNAME=\"");
    w.attrText(instance.getClassName().getString());
    w.lit("\">");
    writeQualifiers(w, instance);
    for (Uint32 i = 0; i < instance.getPropertyCount(); i++)
        writeProperty(w, CIMObjectAccess::property(instance, i));
    w.lit("</INSTANCE>");
}

void writeClass(XmlWriter& w, const CIMConstClass& cimClass)
{
    w.lit("<CLASS");
    w.attr("NAME", cimClass.getClassName().getString());
    if (!cimClass.getSuperClassName().isNull())
        w.attr("SUPERCLASS", cimClass.getSuperClassName().getString());
    w.lit(">");
    writeQualifiers(w, cimClass);
    for (Uint32 i = 0; i < cimClass.getPropertyCount(); i++)
        writeProperty(w, cimClass.getProperty(i));
    for (Uint32 i = 0; i < cimClass.getMethodCount(); i++)
        writeMethod(w, cimClass.getMethod(i));
    w.lit("</CLASS>");
}

void writeObject(XmlWriter& w, const CIMConstObject& object)
{
    if (object.isClass())
        writeClass(w, CIMConstClass(object));
    else
        writeInstance(w, CIMConstInstance(object));
}

void writeNamedInstance(XmlWriter& w, const CIMConstInstance& instance)
{
    writeNamedInstance(w, instance, instance.getPath());
}

void writeNamedInstance(XmlWriter& w, const CIMConstInstance& instance, const CIMObjectPath& path)
{
    w.lit("<VALUE.NAMEDINSTANCE>");
    writeInstanceName(w, path);
    writeInstance(w, instance);
    w.lit("</VALUE.NAMEDINSTANCE>");
}

void writeObjectWithPath(XmlWriter& w, const CIMConstObject& object)
{
    if (object.getPath().getNameSpace().isNull())
    {
        // Without a namespace there is no path to give: the object alone.
        w.lit("<VALUE.OBJECT>");
        writeObject(w, object);
        w.lit("</VALUE.OBJECT>");
        return;
    }
    w.lit("<VALUE.OBJECTWITHPATH>");
    const CIMObjectPath& path = object.getPath();
    if (object.isClass())
    {
        w.lit("<CLASSPATH>");
        writeNamespacePath(w, path);
        writeClassName(w, path.getClassName().isNull() ? object.getClassName() : path.getClassName());
        w.lit("</CLASSPATH>");
    }
    else
    {
        w.lit("<INSTANCEPATH>");
        writeNamespacePath(w, path);
        writeInstanceName(w, path);
        w.lit("</INSTANCEPATH>");
    }
    writeObject(w, object);
    w.lit("</VALUE.OBJECTWITHPATH>");
}

}  // namespace cimxml
