#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMValueText.h>

#include <algorithm>
#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <unistd.h>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

namespace
{

inline bool isDigit(Uint16 c)
{
    return c >= '0' && c <= '9';
}
inline bool isHexDigit(Uint16 c)
{
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
inline bool isAsciiAlnum(Uint16 c)
{
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Thrown by the parser with its reason; turned into the public exception
// (which names the whole input) at the top level.
struct ParseError
{
    String reason;
};

[[noreturn]] void fail(const String& reason)
{
    throw ParseError{reason};
}

[[noreturn]] void fail(const char* reason)
{
    throw ParseError{String(reason)};
}

[[noreturn]] void throwMalformed(const String& input, const String& reason)
{
    String text(input);
    text.append(String(", reason:\""));
    text.append(reason);
    text.append(Char16('"'));
    throw MalformedObjectNameException(text);
}

//
// Host names
//

bool validPort(const String& port)
{
    if (port.size() > 5)
        return false;
    Uint32 value = 0;
    for (Uint32 i = 0; i < port.size(); i++)
    {
        if (!isDigit(port[i]))
            return false;
        value = value * 10 + Uint32(port[i] - '0');
    }
    return value <= 65535;
}

bool validIPv4(const String& text)
{
    Uint32 parts = 0;
    Uint32 i = 0, n = text.size();
    while (true)
    {
        Uint32 value = 0, digits = 0;
        while (i < n && isDigit(text[i]) && digits < 4)
        {
            value = value * 10 + Uint32(text[i] - '0');
            digits++;
            i++;
        }
        if (digits == 0 || digits > 3 || value > 255)
            return false;
        parts++;
        if (i == n)
            return parts == 4;
        if (text[i] != '.' || parts == 4)
            return false;
        i++;
    }
}

// Dot-separated labels of letters, digits, '-' and '_', each starting with
// a letter, digit or '_'; the last label must not be all digits.
bool validHostName(const String& text)
{
    Uint32 n = text.size();
    if (n == 0)
        return false;
    Uint32 i = 0;
    bool lastAllDigits = false;
    while (true)
    {
        Uint32 start = i;
        bool allDigits = true;
        while (i < n && (isAsciiAlnum(text[i]) || text[i] == '-' || text[i] == '_'))
        {
            if (!isDigit(text[i]))
                allDigits = false;
            i++;
        }
        if (i == start || text[start] == '-')
            return false;
        lastAllDigits = allDigits;
        if (i == n)
            break;
        if (text[i] != '.')
            return false;
        i++;
    }
    return !lastAllDigits;
}

bool validHost(const String& host)
{
    if (host.size() == 0)
        return false;
    String address;
    String port;
    bool hasPort = false;
    if (host[0] == '[')
    {
        Uint32 close = host.find(Char16(']'));
        if (close == PEG_NOT_FOUND)
            return false;
        String inside = host.subString(1, close - 1);
        CString text = inside.getCString();
        unsigned char buffer[16];
        if (inside.size() == 0 || inet_pton(AF_INET6, text, buffer) != 1)
            return false;
        if (close + 1 < host.size())
        {
            if (host[close + 1] != ':')
                return false;
            return validPort(host.subString(close + 2));
        }
        return true;
    }
    Uint32 colon = host.find(Char16(':'));
    if (colon != PEG_NOT_FOUND)
    {
        address = host.subString(0, colon);
        port = host.subString(colon + 1);
        hasPort = true;
    }
    else
        address = host;
    if (hasPort && !validPort(port))
        return false;
    return validIPv4(address) || validHostName(address);
}

String localHostName()
{
    char buffer[256];
    if (gethostname(buffer, sizeof(buffer)) != 0)
        return String();
    buffer[sizeof(buffer) - 1] = 0;
    try
    {
        return String(buffer);
    }
    catch (const Exception&)
    {
        return String();
    }
}

//
// Key values
//

// A decimal integer without leading zeros (optionally negative), or 0x hex.
bool validNumber(const String& text)
{
    Uint32 n = text.size();
    if (n >= 3 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
    {
        for (Uint32 i = 2; i < n; i++)
            if (!isHexDigit(text[i]))
                return false;
        return true;
    }
    Uint32 i = (n > 0 && text[0] == '-') ? 1 : 0;
    if (i == n)
        return false;
    if (text[i] == '0')
        return i + 1 == n;
    for (; i < n; i++)
        if (!isDigit(text[i]))
            return false;
    return true;
}

bool parseUnsigned(const String& text, Uint64& value)
{
    CString c = text.getCString();
    const char* s = c;
    return CIMValueText::toUnsigned(s, s + strlen(s), std::numeric_limits<Uint64>::max(), value);
}

bool parseSigned(const String& text, Sint64& value)
{
    CString c = text.getCString();
    const char* s = c;
    return CIMValueText::toSigned(
        s, s + strlen(s), std::numeric_limits<Sint64>::min(), std::numeric_limits<Sint64>::max(), value);
}

bool keyNameLess(const CIMKeyBinding& a, const CIMKeyBinding& b)
{
    return String::compareNoCase(a.getName().getString(), b.getName().getString()) < 0;
}

struct ParsedPath
{
    String host;
    CIMNamespaceName nameSpace;
    CIMName className;
    Array<CIMKeyBinding> keys;
};

void parsePath(const String& input, ParsedPath& out);
Array<CIMKeyBinding> normalizeKeys(const Array<CIMKeyBinding>& keys);

// Does text read as a path with at least one key?
bool isReferenceText(const String& text)
{
    if (text.find(Char16('=')) == PEG_NOT_FOUND)
        return false;
    try
    {
        ParsedPath path;
        parsePath(text, path);
        return path.keys.size() > 0;
    }
    catch (const ParseError&)
    {
        return false;
    }
    catch (const Exception&)
    {
        return false;
    }
}

// Parses "name=value{,name=value}[,]" starting at index pos.
void parseKeys(const String& s, Uint32 pos, Array<CIMKeyBinding>& keys)
{
    Uint32 n = s.size();
    while (pos < n)
    {
        Uint32 eq = s.find(pos, Char16('='));
        if (eq == PEG_NOT_FOUND)
            fail("missing equal sign in key binding");
        String name = s.subString(pos, eq - pos);
        if (!CIMName::legal(name))
            fail(String("key name ") + name + String(" not a legal CIM name"));
        pos = eq + 1;

        String value;
        CIMKeyBinding::Type type;
        if (pos < n && s[pos] == '"')
        {
            pos++;
            bool closed = false;
            while (pos < n)
            {
                Char16 c = s[pos];
                if (c == '\\')
                {
                    if (pos + 1 >= n || (s[pos + 1] != '\\' && s[pos + 1] != '"'))
                        fail("invalid escape sequence in string key value");
                    value.append(s[pos + 1]);
                    pos += 2;
                }
                else if (c == '"')
                {
                    pos++;
                    closed = true;
                    break;
                }
                else
                {
                    value.append(c);
                    pos++;
                }
            }
            if (!closed)
                fail("unterminated string key value");
            type = isReferenceText(value) ? CIMKeyBinding::REFERENCE : CIMKeyBinding::STRING;
        }
        else
        {
            Uint32 comma = s.find(pos, Char16(','));
            Uint32 end = comma == PEG_NOT_FOUND ? n : comma;
            value = s.subString(pos, end - pos);
            pos = end;
            if (String::equalNoCase(value, String("TRUE")))
            {
                value = String("TRUE");
                type = CIMKeyBinding::BOOLEAN;
            }
            else if (String::equalNoCase(value, String("FALSE")))
            {
                value = String("FALSE");
                type = CIMKeyBinding::BOOLEAN;
            }
            else
            {
                if (!validNumber(value))
                    fail(String("invalid number value ") + value);
                type = CIMKeyBinding::NUMERIC;
            }
        }
        keys.append(CIMKeyBinding(CIMName(name), value, type));

        if (pos == n)
            break;
        if (s[pos] != ',')
            fail("unexpected character after key value");
        pos++;  // a trailing comma is tolerated
    }
}

void parsePath(const String& input, ParsedPath& out)
{
    String s(input);
    Uint32 pos = 0;
    Uint32 n = s.size();

    bool hasHost = false;
    if (n >= 2 && s[0] == '/' && s[1] == '/')
    {
        Uint32 slash = s.find(2, Char16('/'));
        if (slash == PEG_NOT_FOUND)
            fail("missing slash after hostname");
        out.host = s.subString(2, slash - 2);
        if (!validHost(out.host))
            fail(String("invalid hostname ") + out.host);
        hasHost = true;
        pos = slash + 1;
    }

    // A namespace ends at the first ':' when no '.' comes before it.
    Uint32 colon = s.find(pos, Char16(':'));
    Uint32 dot = s.find(pos, Char16('.'));
    if (colon != PEG_NOT_FOUND && (dot == PEG_NOT_FOUND || dot > colon))
    {
        String ns = s.subString(pos, colon - pos);
        if (!CIMNamespaceName::legal(ns))
            fail(String("namespace ") + ns + String(" not a legal CIM namespace name"));
        out.nameSpace = CIMNamespaceName(ns);
        pos = colon + 1;
    }
    else if (hasHost)
        fail("host specified, missing namespace");

    dot = s.find(pos, Char16('.'));
    Uint32 classEnd = dot == PEG_NOT_FOUND ? n : dot;
    String className = s.subString(pos, classEnd - pos);
    if (!CIMName::legal(className))
        fail(String("class name ") + className + String(" not a legal CIM name"));
    out.className = CIMName(className);

    if (dot != PEG_NOT_FOUND)
        parseKeys(s, dot + 1, out.keys);
    out.keys = normalizeKeys(out.keys);
}

// Sorted keys with every REFERENCE value in canonical path form. A
// REFERENCE value that is not a path throws MalformedObjectNameException
// naming that value.
Array<CIMKeyBinding> normalizeKeys(const Array<CIMKeyBinding>& keys)
{
    std::vector<CIMKeyBinding> sorted(keys.getData(), keys.getData() + keys.size());
    std::stable_sort(sorted.begin(), sorted.end(), keyNameLess);
    Array<CIMKeyBinding> result;
    result.reserveCapacity(Uint32(sorted.size()));
    for (CIMKeyBinding& key : sorted)
    {
        if (key.getType() == CIMKeyBinding::REFERENCE)
        {
            ParsedPath ref;
            try
            {
                parsePath(key.getValue(), ref);
            }
            catch (const ParseError& e)
            {
                throwMalformed(key.getValue(), e.reason);
            }
            key.setValue(CIMObjectPath(ref.host, ref.nameSpace, ref.className, ref.keys).toString());
        }
        result.append(key);
    }
    return result;
}

void appendEscaped(String& out, const String& value)
{
    out.append(Char16('"'));
    for (Uint32 i = 0; i < value.size(); i++)
    {
        Char16 c = value[i];
        if (c == '\\' || c == '"')
            out.append(Char16('\\'));
        out.append(c);
    }
    out.append(Char16('"'));
}

}  // namespace

//
// CIMKeyBinding
//

CIMKeyBinding::CIMKeyBinding() : _type(STRING) {}

CIMKeyBinding::CIMKeyBinding(const CIMKeyBinding& x) = default;
CIMKeyBinding::CIMKeyBinding(CIMKeyBinding&& x) noexcept = default;

CIMKeyBinding::CIMKeyBinding(const CIMName& name, const String& value, Type type)
    : _name(name), _value(value), _type(type)
{}

CIMKeyBinding::CIMKeyBinding(const CIMName& name, const CIMValue& value) : _name(name)
{
    if (value.isArray())
        throw TypeMismatchException();
    switch (value.getType())
    {
    case CIMTYPE_BOOLEAN: _type = BOOLEAN; break;
    case CIMTYPE_CHAR16:
    case CIMTYPE_STRING:
    case CIMTYPE_DATETIME: _type = STRING; break;
    case CIMTYPE_REFERENCE: _type = REFERENCE; break;
    case CIMTYPE_OBJECT:
    case CIMTYPE_INSTANCE: throw TypeMismatchException();
    default: _type = NUMERIC; break;
    }
    _value = value.toString();
}

CIMKeyBinding::~CIMKeyBinding() {}

CIMKeyBinding& CIMKeyBinding::operator=(const CIMKeyBinding& x) = default;
CIMKeyBinding& CIMKeyBinding::operator=(CIMKeyBinding&& x) noexcept = default;

const CIMName& CIMKeyBinding::getName() const
{
    return _name;
}
void CIMKeyBinding::setName(const CIMName& name)
{
    _name = name;
}
const String& CIMKeyBinding::getValue() const
{
    return _value;
}
void CIMKeyBinding::setValue(const String& value)
{
    _value = value;
}
CIMKeyBinding::Type CIMKeyBinding::getType() const
{
    return _type;
}
void CIMKeyBinding::setType(Type type)
{
    _type = type;
}

Boolean CIMKeyBinding::equal(CIMValue value)
{
    if (value.isArray() || value.isNull())
        return false;
    CIMValue mine;
    try
    {
        switch (value.getType())
        {
        case CIMTYPE_CHAR16:
            if (_type != STRING || _value.size() != 1)
                return false;
            mine.set(_value[0]);
            break;
        case CIMTYPE_STRING:
            if (_type != STRING)
                return false;
            mine.set(_value);
            break;
        case CIMTYPE_DATETIME:
            if (_type != STRING)
                return false;
            mine.set(CIMDateTime(_value));
            break;
        case CIMTYPE_REFERENCE:
            if (_type != REFERENCE)
                return false;
            mine.set(CIMObjectPath(_value));
            break;
        case CIMTYPE_BOOLEAN:
            if (_type != BOOLEAN)
                return false;
            if (String::equalNoCase(_value, String("TRUE")))
                mine.set(true);
            else if (String::equalNoCase(_value, String("FALSE")))
                mine.set(false);
            else
                return false;
            break;
        case CIMTYPE_OBJECT:
        case CIMTYPE_INSTANCE: return false;
        default:
        {
            if (_type != NUMERIC)
                return false;
            // Compare in the widest type of the value's signedness.
            Uint64 u;
            Sint64 i;
            switch (value.getType())
            {
            case CIMTYPE_UINT8:
            {
                Uint8 v;
                value.get(v);
                return parseUnsigned(_value, u) && u == v;
            }
            case CIMTYPE_UINT16:
            {
                Uint16 v;
                value.get(v);
                return parseUnsigned(_value, u) && u == v;
            }
            case CIMTYPE_UINT32:
            {
                Uint32 v;
                value.get(v);
                return parseUnsigned(_value, u) && u == v;
            }
            case CIMTYPE_UINT64:
            {
                Uint64 v;
                value.get(v);
                return parseUnsigned(_value, u) && u == v;
            }
            case CIMTYPE_SINT8:
            {
                Sint8 v;
                value.get(v);
                return parseSigned(_value, i) && i == v;
            }
            case CIMTYPE_SINT16:
            {
                Sint16 v;
                value.get(v);
                return parseSigned(_value, i) && i == v;
            }
            case CIMTYPE_SINT32:
            {
                Sint32 v;
                value.get(v);
                return parseSigned(_value, i) && i == v;
            }
            case CIMTYPE_SINT64:
            {
                Sint64 v;
                value.get(v);
                return parseSigned(_value, i) && i == v;
            }
            default:
                // Real keys compare by their text form.
                return String::equal(_value, value.toString());
            }
        }
        }
    }
    catch (const Exception&)
    {
        return false;
    }
    return value.equal(mine);
}

Boolean operator==(const CIMKeyBinding& x, const CIMKeyBinding& y)
{
    if (!x.getName().equal(y.getName()) || x.getType() != y.getType())
        return false;
    const String& a = x.getValue();
    const String& b = y.getValue();
    switch (x.getType())
    {
    case CIMKeyBinding::REFERENCE:
        try
        {
            return CIMObjectPath(a).identical(CIMObjectPath(b));
        }
        catch (const Exception&)
        {
            return String::equal(a, b);
        }
    case CIMKeyBinding::BOOLEAN: return String::equalNoCase(a, b);
    case CIMKeyBinding::NUMERIC:
    {
        Uint64 ua, ub;
        if (parseUnsigned(a, ua) && parseUnsigned(b, ub))
            return ua == ub;
        Sint64 sa, sb;
        if (parseSigned(a, sa) && parseSigned(b, sb))
            return sa == sb;
        return String::equal(a, b);
    }
    case CIMKeyBinding::STRING:
    default: return String::equal(a, b);
    }
}

//
// CIMObjectPath
//

CIMObjectPath::CIMObjectPath() {}

CIMObjectPath::CIMObjectPath(const CIMObjectPath& x) = default;
CIMObjectPath::CIMObjectPath(CIMObjectPath&& x) noexcept = default;

CIMObjectPath::CIMObjectPath(const String& objectName)
{
    set(objectName);
}

CIMObjectPath::CIMObjectPath(const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
    const Array<CIMKeyBinding>& keyBindings)
{
    set(host, nameSpace, className, keyBindings);
}

CIMObjectPath::~CIMObjectPath() {}

CIMObjectPath& CIMObjectPath::operator=(const CIMObjectPath& x) = default;
CIMObjectPath& CIMObjectPath::operator=(CIMObjectPath&& x) noexcept = default;

CIMObjectPath& CIMObjectPath::operator=(const String& objectName)
{
    set(objectName);
    return *this;
}

void CIMObjectPath::clear()
{
    _host.clear();
    _nameSpace.clear();
    _className.clear();
    _keyBindings.clear();
}

void CIMObjectPath::set(const String& host, const CIMNamespaceName& nameSpace, const CIMName& className,
    const Array<CIMKeyBinding>& keyBindings)
{
    if (host.size() && !validHost(host))
        throwMalformed(host, String("invalid hostname"));
    Array<CIMKeyBinding> keys = normalizeKeys(keyBindings);
    _host = host;
    _nameSpace = nameSpace;
    _className = className;
    _keyBindings = keys;
}

void CIMObjectPath::set(const String& objectName)
{
    ParsedPath parsed;
    try
    {
        parsePath(objectName, parsed);
    }
    catch (const ParseError& e)
    {
        throwMalformed(objectName, e.reason);
    }
    _host = parsed.host;
    _nameSpace = parsed.nameSpace;
    _className = parsed.className;
    _keyBindings = parsed.keys;
}

const String& CIMObjectPath::getHost() const
{
    return _host;
}

void CIMObjectPath::setHost(const String& host)
{
    if (host.size() && !validHost(host) && !String::equal(host, localHostName()))
        throwMalformed(host, String("invalid hostname"));
    _host = host;
}

const CIMNamespaceName& CIMObjectPath::getNameSpace() const
{
    return _nameSpace;
}

void CIMObjectPath::setNameSpace(const CIMNamespaceName& nameSpace)
{
    _nameSpace = nameSpace;
}

const CIMName& CIMObjectPath::getClassName() const
{
    return _className;
}

void CIMObjectPath::setClassName(const CIMName& className)
{
    _className = className;
}

const Array<CIMKeyBinding>& CIMObjectPath::getKeyBindings() const
{
    return _keyBindings;
}

void CIMObjectPath::setKeyBindings(const Array<CIMKeyBinding>& keyBindings)
{
    _keyBindings = normalizeKeys(keyBindings);
}

String CIMObjectPath::toString() const
{
    String out;
    if (_host.size())
    {
        out.append(String("//"));
        out.append(_host);
        out.append(Char16('/'));
    }
    if (!_nameSpace.isNull() || _host.size())
    {
        out.append(_nameSpace.getString());
        out.append(Char16(':'));
    }
    out.append(_className.getString());
    for (Uint32 i = 0; i < _keyBindings.size(); i++)
    {
        const CIMKeyBinding& key = _keyBindings[i];
        out.append(Char16(i == 0 ? '.' : ','));
        out.append(key.getName().getString());
        out.append(Char16('='));
        if (key.getType() == CIMKeyBinding::STRING || key.getType() == CIMKeyBinding::REFERENCE)
            appendEscaped(out, key.getValue());
        else
            out.append(key.getValue());
    }
    return out;
}

Boolean CIMObjectPath::identical(const CIMObjectPath& x) const
{
    if (this == &x)
        return true;
    if (!String::equalNoCase(_host, x._host) || !_nameSpace.equal(x._nameSpace) ||
        !_className.equal(x._className) || _keyBindings.size() != x._keyBindings.size())
        return false;
    for (Uint32 i = 0; i < _keyBindings.size(); i++)
        if (!(_keyBindings[i] == x._keyBindings[i]))
            return false;
    return true;
}

Uint32 CIMObjectPath::makeHashCode() const
{
    // FNV-1a over a form in which everything compared without case is
    // lower-cased, so identical paths hash alike. Reference values are
    // hashed through their own paths; numbers by their parsed value.
    Uint32 hash = 2166136261u;
    auto mix = [&hash](const String& s, bool fold) {
        String t(s);
        if (fold)
            t.toLower();
        for (Uint32 i = 0; i < t.size(); i++)
        {
            hash ^= Uint16(t[i]);
            hash *= 16777619u;
        }
        hash ^= 0xFFFF;
        hash *= 16777619u;
    };
    mix(_host, true);
    mix(_nameSpace.getString(), true);
    mix(_className.getString(), true);
    for (Uint32 i = 0; i < _keyBindings.size(); i++)
    {
        const CIMKeyBinding& key = _keyBindings[i];
        mix(key.getName().getString(), true);
        switch (key.getType())
        {
        case CIMKeyBinding::REFERENCE:
        {
            Uint32 inner = 0;
            try
            {
                inner = CIMObjectPath(key.getValue()).makeHashCode();
            }
            catch (const Exception&)
            {}
            hash ^= inner;
            hash *= 16777619u;
            break;
        }
        case CIMKeyBinding::BOOLEAN: mix(key.getValue(), true); break;
        case CIMKeyBinding::NUMERIC:
        {
            Uint64 u;
            Sint64 s;
            if (parseUnsigned(key.getValue(), u))
                hash ^= Uint32(u ^ (u >> 32));
            else if (parseSigned(key.getValue(), s))
                hash ^= Uint32(Uint64(s) ^ (Uint64(s) >> 32));
            else
                mix(key.getValue(), false);
            hash *= 16777619u;
            break;
        }
        default: mix(key.getValue(), false); break;
        }
    }
    return hash;
}

Boolean operator==(const CIMObjectPath& x, const CIMObjectPath& y)
{
    return x.identical(y);
}

Boolean operator!=(const CIMObjectPath& x, const CIMObjectPath& y)
{
    return !x.identical(y);
}

PEGASUS_NAMESPACE_END
