#include <Pegasus/Common/CIMValueText.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Exception.h>

#include <cctype>
#include <charconv>
#include <cstring>
#include <limits>
#include <string>

PEGASUS_NAMESPACE_BEGIN

namespace
{

bool hasHexPrefix(const char* b, const char* e)
{
    return e - b > 2 && b[0] == '0' && (b[1] == 'x' || b[1] == 'X');
}

// The magnitude of an integer text: its sign stripped, decimal or
// 0x-hexadecimal.
bool magnitude(const char* b, const char* e, bool& negative, Uint64& value)
{
    if (b != e && *b == '+')
        b++;
    negative = b != e && *b == '-';
    if (negative)
        b++;
    if (hasHexPrefix(b, e))
        return CIMValueText::digits(b + 2, e, 16, std::numeric_limits<Uint64>::max(), value);
    return CIMValueText::digits(b, e, 10, std::numeric_limits<Uint64>::max(), value);
}

template <class T>
bool integerValue(const String& text, CIMValue& value)
{
    CString c = text.getCString();
    const char* b = c;
    const char* e = b + std::strlen(b);
    if (std::numeric_limits<T>::is_signed)
    {
        Sint64 v;
        if (!CIMValueText::toSigned(b, e, std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), v))
            return false;
        value = CIMValue(T(v));
    }
    else
    {
        Uint64 v;
        if (!CIMValueText::toUnsigned(b, e, std::numeric_limits<T>::max(), v))
            return false;
        value = CIMValue(T(v));
    }
    return true;
}

}  // namespace

bool CIMValueText::digits(const char* b, const char* e, unsigned base, Uint64 max, Uint64& value)
{
    if (b == e)
        return false;
    Uint64 v = 0;
    for (; b != e; b++)
    {
        const char c = *b;
        unsigned d;
        if (c >= '0' && c <= '9')
            d = unsigned(c - '0');
        else if (c >= 'a' && c <= 'f')
            d = unsigned(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F')
            d = unsigned(c - 'A' + 10);
        else
            return false;
        if (d >= base || v > (max - d) / base)
            return false;
        v = v * base + d;
    }
    value = v;
    return true;
}

bool CIMValueText::toUnsigned(const char* b, const char* e, Uint64 max, Uint64& value)
{
    bool negative;
    Uint64 v;
    if (!magnitude(b, e, negative, v) || v > max || negative)
        return false;
    value = v;
    return true;
}

bool CIMValueText::toSigned(const char* b, const char* e, Sint64 min, Sint64 max, Sint64& value)
{
    bool negative;
    Uint64 v;
    if (!magnitude(b, e, negative, v))
        return false;
    if (negative)
    {
        if (v > Uint64(0) - Uint64(min))
            return false;
        value = Sint64(Uint64(0) - v);
    }
    else
    {
        if (v > Uint64(max))
            return false;
        value = Sint64(v);
    }
    return true;
}

bool CIMValueText::toReal(const char* b, const char* e, Real64& value)
{
    const std::string v(b, e);
    if (v == "INF" || v == "+INF")
        value = std::numeric_limits<Real64>::infinity();
    else if (v == "-INF")
        value = -std::numeric_limits<Real64>::infinity();
    else if (v == "NaN")
        value = std::numeric_limits<Real64>::quiet_NaN();
    else
    {
        // from_chars reads no leading '+'.
        if (b != e && *b == '+')
            b++;
        if (b == e)
            return false;
        Real64 x = 0;
        auto r = std::from_chars(b, e, x);
        if (r.ec != std::errc() || r.ptr != e)
            return false;
        value = x;
    }
    return true;
}

bool CIMValueText::toBoolean(const char* b, const char* e, Boolean& value)
{
    std::string v(b, e);
    for (char& c : v)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    if (v == "true")
        value = true;
    else if (v == "false")
        value = false;
    else
        return false;
    return true;
}

bool CIMValueText::toValue(const String& text, CIMType type, CIMValue& value)
{
    switch (type)
    {
    case CIMTYPE_BOOLEAN:
    {
        CString c = text.getCString();
        Boolean v;
        if (!toBoolean(c, static_cast<const char*>(c) + std::strlen(c), v))
            return false;
        value = CIMValue(v);
        return true;
    }
    case CIMTYPE_UINT8: return integerValue<Uint8>(text, value);
    case CIMTYPE_SINT8: return integerValue<Sint8>(text, value);
    case CIMTYPE_UINT16: return integerValue<Uint16>(text, value);
    case CIMTYPE_SINT16: return integerValue<Sint16>(text, value);
    case CIMTYPE_UINT32: return integerValue<Uint32>(text, value);
    case CIMTYPE_SINT32: return integerValue<Sint32>(text, value);
    case CIMTYPE_UINT64: return integerValue<Uint64>(text, value);
    case CIMTYPE_SINT64: return integerValue<Sint64>(text, value);
    case CIMTYPE_REAL32:
    case CIMTYPE_REAL64:
    {
        CString c = text.getCString();
        Real64 v;
        if (!toReal(c, static_cast<const char*>(c) + std::strlen(c), v))
            return false;
        value = type == CIMTYPE_REAL32 ? CIMValue(Real32(v)) : CIMValue(v);
        return true;
    }
    case CIMTYPE_CHAR16:
        if (text.size() != 1)
            return false;
        value = CIMValue(text[0]);
        return true;
    case CIMTYPE_STRING: value = CIMValue(text); return true;
    case CIMTYPE_DATETIME:
        try
        {
            value = CIMValue(CIMDateTime(text));
            return true;
        }
        catch (const Exception&)
        {
            return false;
        }
    case CIMTYPE_REFERENCE:
        try
        {
            value = CIMValue(CIMObjectPath(text));
            return true;
        }
        catch (const Exception&)
        {
            return false;
        }
    default: return false;
    }
}

PEGASUS_NAMESPACE_END
