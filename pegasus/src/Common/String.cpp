#ifndef PEGASUS_USE_EXPERIMENTAL_INTERFACES
#define PEGASUS_USE_EXPERIMENTAL_INTERFACES
#endif
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

PEGASUS_NAMESPACE_BEGIN

namespace
{

Char16 emptyData[1] = { Char16(0) };

inline Uint16 asciiLower(Uint16 c)
{
    return (c >= 'A' && c <= 'Z') ? Uint16(c + ('a' - 'A')) : c;
}

inline Uint16 asciiUpper(Uint16 c)
{
    return (c >= 'a' && c <= 'z') ? Uint16(c - ('a' - 'A')) : c;
}

Uint32 char16Length(const Char16* s)
{
    Uint32 n = 0;
    while (s[n] != Char16(0))
        n++;
    return n;
}

// Decodes well-formed UTF-8 (no overlong forms, no encoded surrogates, nothing
// above U+10FFFF) into UTF-16. Throws Exception on anything else.
void decodeUtf8(const char* in, size_t n, std::u16string& out)
{
    const Uint8* p = reinterpret_cast<const Uint8*>(in);
    const Uint8* end = p + n;
    out.reserve(out.size() + n);
    while (p < end)
    {
        Uint32 c = *p;
        if (c < 0x80)
        {
            out.push_back(char16_t(c));
            p++;
            continue;
        }
        int extra;
        Uint32 minimum;
        if ((c & 0xE0) == 0xC0) { extra = 1; c &= 0x1F; minimum = 0x80; }
        else if ((c & 0xF0) == 0xE0) { extra = 2; c &= 0x0F; minimum = 0x800; }
        else if ((c & 0xF8) == 0xF0) { extra = 3; c &= 0x07; minimum = 0x10000; }
        else
            throw Exception("String: invalid UTF-8 lead byte");
        if (end - p <= extra)
            throw Exception("String: truncated UTF-8 sequence");
        for (int i = 1; i <= extra; i++)
        {
            Uint8 b = p[i];
            if ((b & 0xC0) != 0x80)
                throw Exception("String: invalid UTF-8 continuation byte");
            c = (c << 6) | (b & 0x3F);
        }
        if (c < minimum || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
            throw Exception("String: invalid UTF-8 code point");
        if (c >= 0x10000)
        {
            c -= 0x10000;
            out.push_back(char16_t(0xD800 + (c >> 10)));
            out.push_back(char16_t(0xDC00 + (c & 0x3FF)));
        }
        else
            out.push_back(char16_t(c));
        p += extra + 1;
    }
}

// Encodes UTF-16 as UTF-8. Surrogate pairs become one 4-byte sequence; a
// lone surrogate is written as its own 3-byte sequence so nothing is lost.
std::string encodeUtf8(const Char16* s, Uint32 n)
{
    std::string out;
    out.reserve(n);
    for (Uint32 i = 0; i < n; i++)
    {
        Uint32 c = Uint16(s[i]);
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < n)
        {
            Uint32 low = Uint16(s[i + 1]);
            if (low >= 0xDC00 && low <= 0xDFFF)
            {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                i++;
            }
        }
        if (c < 0x80)
            out.push_back(char(c));
        else if (c < 0x800)
        {
            out.push_back(char(0xC0 | (c >> 6)));
            out.push_back(char(0x80 | (c & 0x3F)));
        }
        else if (c < 0x10000)
        {
            out.push_back(char(0xE0 | (c >> 12)));
            out.push_back(char(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(char(0x80 | (c & 0x3F)));
        }
        else
        {
            out.push_back(char(0xF0 | (c >> 18)));
            out.push_back(char(0x80 | ((c >> 12) & 0x3F)));
            out.push_back(char(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(char(0x80 | (c & 0x3F)));
        }
    }
    return out;
}

} // namespace

//
// CString
//

CString::CString() : _rep(nullptr) {}

CString::CString(char* owned) : _rep(owned) {}

CString::CString(const CString& cstr) : _rep(nullptr)
{
    if (cstr._rep)
        _rep = strdup(cstr._rep);
}

CString::~CString()
{
    free(_rep);
}

CString& CString::operator=(const CString& cstr)
{
    if (this != &cstr)
    {
        char* copy = cstr._rep ? strdup(cstr._rep) : nullptr;
        free(_rep);
        _rep = copy;
    }
    return *this;
}

CString::operator const char*() const
{
    return _rep ? _rep : "";
}

//
// String
//

const String String::EMPTY;

String::String() : _data(emptyData), _size(0), _capacity(0) {}

String::String(const String& str) : _data(emptyData), _size(0), _capacity(0)
{
    _init(str._data, str._size);
}

String::String(const String& str, Uint32 n) : _data(emptyData), _size(0), _capacity(0)
{
    if (n > str._size)
        throw IndexOutOfBoundsException();
    _init(str._data, n);
}

String::String(const Char16* str) : _data(emptyData), _size(0), _capacity(0)
{
    if (!str)
        throw NullPointer();
    _init(str, char16Length(str));
}

String::String(const Char16* str, Uint32 n) : _data(emptyData), _size(0), _capacity(0)
{
    if (!str)
        throw NullPointer();
    _init(str, n);
}

String::String(const char* str) : _data(emptyData), _size(0), _capacity(0)
{
    if (!str)
        throw NullPointer();
    _init(str, strlen(str));
}

String::String(const char* str, Uint32 n) : _data(emptyData), _size(0), _capacity(0)
{
    if (!str)
        throw NullPointer();
    _init(str, n);
}

String::String(const String& s1, const String& s2) : String(s1)
{
    append(s2);
}

String::String(const String& s1, const char* s2) : String(s1)
{
    append(String(s2));
}

String::String(const char* s1, const String& s2) : String(s1)
{
    append(s2);
}

String::~String()
{
    if (_data != emptyData)
        delete[] _data;
}

void String::_init(const Char16* s, Uint32 n)
{
    _reserve(n);
    _append(s, n);
}

void String::_init(const char* utf8, size_t n)
{
    // Plain ASCII, the common case, needs no decoding step of its own.
    size_t ascii = 0;
    while (ascii < n && Uint8(utf8[ascii]) < 0x80)
        ascii++;
    if (n == 0)
        return;  // stays on the shared empty buffer, which is never written
    if (ascii == n)
    {
        _reserve(Uint32(n));
        for (size_t i = 0; i < n; i++)
            _data[i] = Uint16(Uint8(utf8[i]));
        _size = Uint32(n);
        _data[_size] = 0;
        return;
    }
    std::u16string units;
    decodeUtf8(utf8, n, units);
    _reserve(Uint32(units.size()));
    _append(reinterpret_cast<const Char16*>(units.data()), Uint32(units.size()));
}

void String::_reserve(Uint32 capacity)
{
    if (capacity <= _capacity)
        return;
    Char16* data = new Char16[size_t(capacity) + 1];
    for (Uint32 i = 0; i < _size; i++)
        data[i] = _data[i];
    data[_size] = 0;
    if (_data != emptyData)
        delete[] _data;
    _data = data;
    _capacity = capacity;
}

void String::_append(const Char16* s, Uint32 n)
{
    if (n == 0)
        return;
    if (_size + n > _capacity)
    {
        Uint32 grown = _capacity * 2;
        Uint32 needed = _size + n;
        // s may point into our own buffer: copy before reallocating.
        std::u16string copy(reinterpret_cast<const char16_t*>(s), n);
        _reserve(grown > needed ? grown : needed);
        _append(reinterpret_cast<const Char16*>(copy.data()), n);
        return;
    }
    for (Uint32 i = 0; i < n; i++)
        _data[_size + i] = s[i];
    _size += n;
    _data[_size] = 0;
}

String& String::operator=(const String& str)
{
    return assign(str);
}

String& String::operator=(const char* str)
{
    return assign(str);
}

String& String::assign(const String& str)
{
    if (this != &str)
    {
        String copy(str);
        std::swap(_data, copy._data);
        std::swap(_size, copy._size);
        std::swap(_capacity, copy._capacity);
    }
    return *this;
}

String& String::assign(const Char16* str)
{
    return assign(String(str));
}

String& String::assign(const Char16* str, Uint32 n)
{
    return assign(String(str, n));
}

String& String::assign(const char* str)
{
    return assign(String(str));
}

String& String::assign(const char* str, Uint32 n)
{
    return assign(String(str, n));
}

void String::clear()
{
    _size = 0;
    if (_data != emptyData)
        _data[0] = 0;
}

void String::reserveCapacity(Uint32 capacity)
{
    _reserve(capacity);
}

const Char16* String::getChar16Data() const
{
    return _data;
}

CString String::getCString() const
{
    std::string utf8 = encodeUtf8(_data, _size);
    char* p = static_cast<char*>(malloc(utf8.size() + 1));
    if (!p)
        throw std::bad_alloc();
    memcpy(p, utf8.c_str(), utf8.size() + 1);
    return CString(p);
}

Char16& String::operator[](Uint32 index)
{
    if (index >= _size)
        throw IndexOutOfBoundsException();
    return _data[index];
}

const Char16 String::operator[](Uint32 index) const
{
    if (index >= _size)
        throw IndexOutOfBoundsException();
    return _data[index];
}

String& String::append(const Char16& c)
{
    Char16 copy = c;
    _append(&copy, 1);
    return *this;
}

String& String::append(const Char16* str, Uint32 n)
{
    if (!str && n)
        throw NullPointer();
    _append(str, n);
    return *this;
}

String& String::append(const String& str)
{
    _append(str._data, str._size);
    return *this;
}

String& String::append(const char* str)
{
    return append(String(str));
}

String& String::append(const char* str, Uint32 size)
{
    return append(String(str, size));
}

void String::remove(Uint32 index, Uint32 size)
{
    if (index > _size)
        throw IndexOutOfBoundsException();
    if (size == PEG_NOT_FOUND)
        size = _size - index;
    if (size > _size - index)
        throw IndexOutOfBoundsException();
    for (Uint32 i = index + size; i < _size; i++)
        _data[i - size] = _data[i];
    _size -= size;
    if (_data != emptyData)
        _data[_size] = 0;
}

String String::subString(Uint32 index, Uint32 n) const
{
    if (index >= _size)
        return String();
    if (n > _size - index)
        n = _size - index;
    return String(_data + index, n);
}

Uint32 String::find(Char16 c) const
{
    return find(0, c);
}

Uint32 String::find(Uint32 index, Char16 c) const
{
    for (Uint32 i = index; i < _size; i++)
        if (_data[i] == c)
            return i;
    return PEG_NOT_FOUND;
}

Uint32 String::find(const String& s) const
{
    if (s._size > _size)
        return PEG_NOT_FOUND;
    for (Uint32 i = 0; i + s._size <= _size; i++)
    {
        Uint32 j = 0;
        while (j < s._size && _data[i + j] == s._data[j])
            j++;
        if (j == s._size)
            return i;
    }
    return PEG_NOT_FOUND;
}

Uint32 String::find(const char* s) const
{
    return find(String(s));
}

Uint32 String::reverseFind(Char16 c) const
{
    for (Uint32 i = _size; i > 0; i--)
        if (_data[i - 1] == c)
            return i - 1;
    return PEG_NOT_FOUND;
}

void String::toLower()
{
    for (Uint32 i = 0; i < _size; i++)
        _data[i] = asciiLower(_data[i]);
}

void String::toUpper()
{
    for (Uint32 i = 0; i < _size; i++)
        _data[i] = asciiUpper(_data[i]);
}

void String::appendPrintf(const char* format, ...)
{
    va_list ap;
    va_start(ap, format);
    va_list again;
    va_copy(again, ap);
    int n = vsnprintf(nullptr, 0, format, ap);
    va_end(ap);
    if (n > 0)
    {
        std::string buffer(size_t(n) + 1, '\0');
        vsnprintf(&buffer[0], buffer.size(), format, again);
        buffer.resize(size_t(n));
        std::u16string units;
        try
        {
            decodeUtf8(buffer.data(), buffer.size(), units);
        }
        catch (const Exception&)
        {
            // Not UTF-8: keep the bytes as Latin-1 characters.
            units.clear();
            for (char ch : buffer)
                units.push_back(char16_t(Uint8(ch)));
        }
        _append(reinterpret_cast<const Char16*>(units.data()), Uint32(units.size()));
    }
    va_end(again);
}

int String::compare(const String& s1, const String& s2, Uint32 n)
{
    Uint32 i = 0;
    for (; i < n && i < s1._size && i < s2._size; i++)
    {
        int d = int(Uint16(s1._data[i])) - int(Uint16(s2._data[i]));
        if (d)
            return d;
    }
    if (i == n)
        return 0;
    if (i < s1._size)
        return 1;
    if (i < s2._size)
        return -1;
    return 0;
}

int String::compare(const String& s1, const String& s2)
{
    return compare(s1, s2, PEG_NOT_FOUND);
}

int String::compare(const String& s1, const char* s2)
{
    return compare(s1, String(s2));
}

int String::compareNoCase(const String& s1, const String& s2)
{
    Uint32 i = 0;
    for (; i < s1._size && i < s2._size; i++)
    {
        int d = int(asciiLower(s1._data[i])) - int(asciiLower(s2._data[i]));
        if (d)
            return d;
    }
    if (i < s1._size)
        return 1;
    if (i < s2._size)
        return -1;
    return 0;
}

Boolean String::equal(const String& s1, const String& s2)
{
    return s1._size == s2._size && compare(s1, s2) == 0;
}

Boolean String::equal(const String& s1, const char* s2)
{
    return equal(s1, String(s2));
}

Boolean String::equalNoCase(const String& s1, const String& s2)
{
    return s1._size == s2._size && compareNoCase(s1, s2) == 0;
}

Boolean String::equalNoCase(const String& s1, const char* s2)
{
    return equalNoCase(s1, String(s2));
}

Boolean operator==(const String& s1, const String& s2) { return String::equal(s1, s2); }
Boolean operator==(const String& s1, const char* s2) { return String::equal(s1, String(s2)); }
Boolean operator==(const char* s1, const String& s2) { return String::equal(String(s1), s2); }
Boolean operator!=(const String& s1, const String& s2) { return !String::equal(s1, s2); }
Boolean operator!=(const String& s1, const char* s2) { return !(s1 == s2); }
Boolean operator!=(const char* s1, const String& s2) { return !(s1 == s2); }
Boolean operator<(const String& s1, const String& s2) { return String::compare(s1, s2) < 0; }
Boolean operator<=(const String& s1, const String& s2) { return String::compare(s1, s2) <= 0; }
Boolean operator>(const String& s1, const String& s2) { return String::compare(s1, s2) > 0; }
Boolean operator>=(const String& s1, const String& s2) { return String::compare(s1, s2) >= 0; }

String operator+(const String& s1, const String& s2)
{
    String result;
    result.reserveCapacity(s1.size() + s2.size());
    result.append(s1);
    result.append(s2);
    return result;
}

std::ostream& operator<<(std::ostream& os, const String& str)
{
    return os << static_cast<const char*>(str.getCString());
}

PEGASUS_NAMESPACE_END
