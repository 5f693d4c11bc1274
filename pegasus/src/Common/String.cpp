#ifndef PEGASUS_USE_EXPERIMENTAL_INTERFACES
#define PEGASUS_USE_EXPERIMENTAL_INTERFACES
#endif
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

PEGASUS_NAMESPACE_BEGIN

namespace
{

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
        if ((c & 0xE0) == 0xC0)
        {
            extra = 1;
            c &= 0x1F;
            minimum = 0x80;
        }
        else if ((c & 0xF0) == 0xE0)
        {
            extra = 2;
            c &= 0x0F;
            minimum = 0x800;
        }
        else if ((c & 0xF8) == 0xF0)
        {
            extra = 3;
            c &= 0x07;
            minimum = 0x10000;
        }
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

}  // namespace

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

namespace
{

// The shared empty buffer: a rep followed by its terminating NUL.
struct EmptyStorage
{
    StringRep rep;
    Uint16 nul;
};
EmptyStorage emptyStorage = {{{0}, 0, 0, 0}, 0};
static_assert(offsetof(EmptyStorage, nul) == sizeof(StringRep), "the empty text follows its rep");

inline StringRep* emptyRep()
{
    return &emptyStorage.rep;
}

StringRep* newRep(Uint32 capacity)
{
    void* memory = ::operator new(sizeof(StringRep) + (size_t(capacity) + 1) * sizeof(Char16));
    StringRep* rep = static_cast<StringRep*>(memory);
    new (&rep->refs) std::atomic<Uint32>(1);
    rep->size = 0;
    rep->capacity = capacity;
    rep->unshareable = 0;
    rep->data()[0] = 0;
    return rep;
}

// A new buffer holding the n units at s.
StringRep* newRep(const Char16* s, Uint32 n, Uint32 capacity)
{
    StringRep* rep = newRep(capacity);
    std::memcpy(static_cast<void*>(rep->data()), s, size_t(n) * sizeof(Char16));
    rep->size = n;
    rep->data()[n] = 0;
    return rep;
}

inline void refRep(StringRep* rep)
{
    if (rep != emptyRep())
        rep->refs.fetch_add(1, std::memory_order_relaxed);
}

// A sole owner frees without a locked update (see RefCounted::release).
inline void unrefRep(StringRep* rep)
{
    if (rep != emptyRep() &&
        (rep->refs.load(std::memory_order_acquire) == 1 ||
            rep->refs.fetch_sub(1, std::memory_order_acq_rel) == 1))
        ::operator delete(rep);
}

// What a copy of `rep` holds: the same buffer, unless a writable reference
// into it is out.
inline StringRep* shareRep(StringRep* rep)
{
    if (rep->unshareable)
        return newRep(rep->data(), rep->size, rep->size);
    refRep(rep);
    return rep;
}

}  // namespace

const String String::EMPTY;

String::String() : _rep(emptyRep()) {}

String::String(const String& str) : _rep(shareRep(str._rep)) {}

String::String(const String& str, Uint32 n) : _rep(emptyRep())
{
    if (n > str.size())
        throw IndexOutOfBoundsException();
    if (n == str.size())
        _rep = shareRep(str._rep);
    else if (n > 0)
        _rep = newRep(str._chars(), n, n);
}

String::String(const Char16* str) : _rep(emptyRep())
{
    if (!str)
        throw NullPointer();
    Uint32 n = char16Length(str);
    if (n > 0)
        _rep = newRep(str, n, n);
}

String::String(const Char16* str, Uint32 n) : _rep(emptyRep())
{
    if (!str)
        throw NullPointer();
    if (n > 0)
        _rep = newRep(str, n, n);
}

String::String(const char* str) : _rep(emptyRep())
{
    if (!str)
        throw NullPointer();
    _init(str, strlen(str));
}

String::String(const char* str, Uint32 n) : _rep(emptyRep())
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

String::String(String&& str) noexcept : _rep(str._rep)
{
    str._rep = emptyRep();
}

String& String::operator=(String&& str) noexcept
{
    if (this != &str)
    {
        unrefRep(_rep);
        _rep = str._rep;
        str._rep = emptyRep();
    }
    return *this;
}

String::~String()
{
    unrefRep(_rep);
}

void String::_init(const char* utf8, size_t n)
{
    if (n == 0)
        return;  // stays on the shared empty buffer
    // Plain ASCII, the common case, is widened unit by unit.
    size_t ascii = 0;
    while (ascii < n && Uint8(utf8[ascii]) < 0x80)
        ascii++;
    if (ascii == n)
    {
        StringRep* rep = newRep(Uint32(n));
        Char16* data = rep->data();
        for (size_t i = 0; i < n; i++)
            data[i] = Uint16(Uint8(utf8[i]));
        rep->size = Uint32(n);
        data[n] = 0;
        _rep = rep;
        return;
    }
    std::u16string units;
    decodeUtf8(utf8, n, units);
    _rep = newRep(reinterpret_cast<const Char16*>(units.data()), Uint32(units.size()), Uint32(units.size()));
}

void String::_own(Uint32 capacity)
{
    const bool shared = _rep == emptyRep() || _rep->refs.load(std::memory_order_acquire) != 1;
    if (!shared && capacity <= _rep->capacity)
        return;
    if (capacity < _rep->size)
        capacity = _rep->size;
    StringRep* rep = newRep(_rep->data(), _rep->size, capacity);
    unrefRep(_rep);
    _rep = rep;
}

void String::_append(const Char16* s, Uint32 n)
{
    if (n == 0)
        return;
    const Uint32 size = _rep->size;
    const Uint32 needed = size + n;
    const bool shared = _rep == emptyRep() || _rep->refs.load(std::memory_order_acquire) != 1;
    if (shared || needed > _rep->capacity)
    {
        // s may point into the old buffer, which stays alive until the
        // units are copied.
        Uint32 grown = shared ? needed : _rep->capacity * 2;
        StringRep* rep = newRep(_rep->data(), size, grown > needed ? grown : needed);
        std::memcpy(static_cast<void*>(rep->data() + size), s, size_t(n) * sizeof(Char16));
        rep->size = needed;
        rep->data()[needed] = 0;
        unrefRep(_rep);
        _rep = rep;
        return;
    }
    // s lies before our end, if in our buffer at all: no overlap.
    std::memcpy(static_cast<void*>(_rep->data() + size), s, size_t(n) * sizeof(Char16));
    _rep->size = needed;
    _rep->data()[needed] = 0;
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
    if (_rep != str._rep || _rep->unshareable)
    {
        StringRep* rep = shareRep(str._rep);
        unrefRep(_rep);
        _rep = rep;
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
    if (_rep != emptyRep() && _rep->refs.load(std::memory_order_acquire) == 1)
    {
        _rep->size = 0;
        _rep->data()[0] = 0;
        return;
    }
    unrefRep(_rep);
    _rep = emptyRep();
}

void String::reserveCapacity(Uint32 capacity)
{
    if (capacity > _rep->capacity)
        _own(capacity);
}

const Char16* String::getChar16Data() const
{
    return _chars();
}

CString String::getCString() const
{
    std::string utf8 = encodeUtf8(_chars(), size());
    char* p = static_cast<char*>(malloc(utf8.size() + 1));
    if (!p)
        throw std::bad_alloc();
    memcpy(p, utf8.c_str(), utf8.size() + 1);
    return CString(p);
}

Char16& String::operator[](Uint32 index)
{
    if (index >= size())
        throw IndexOutOfBoundsException();
    _own(_rep->capacity);
    _rep->unshareable = 1;
    return _rep->data()[index];
}

const Char16 String::operator[](Uint32 index) const
{
    if (index >= size())
        throw IndexOutOfBoundsException();
    return _chars()[index];
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
    if (size() == 0 && !str._rep->unshareable)
        return assign(str);
    _append(str._chars(), str.size());
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
    const Uint32 length = this->size();
    if (index > length)
        throw IndexOutOfBoundsException();
    if (size == PEG_NOT_FOUND)
        size = length - index;
    if (size > length - index)
        throw IndexOutOfBoundsException();
    if (size == 0)
        return;
    _own(_rep->capacity);
    Char16* data = _rep->data();
    std::memmove(static_cast<void*>(data + index), data + index + size,
        size_t(length - index - size) * sizeof(Char16));
    _rep->size = length - size;
    data[_rep->size] = 0;
}

String String::subString(Uint32 index, Uint32 n) const
{
    const Uint32 length = size();
    if (index >= length)
        return String();
    if (n > length - index)
        n = length - index;
    if (index == 0 && n == length)
        return *this;
    return String(_chars() + index, n);
}

Uint32 String::find(Char16 c) const
{
    return find(0, c);
}

Uint32 String::find(Uint32 index, Char16 c) const
{
    const Char16* data = _chars();
    for (Uint32 i = index; i < size(); i++)
        if (data[i] == c)
            return i;
    return PEG_NOT_FOUND;
}

Uint32 String::find(const String& s) const
{
    const Uint32 n = s.size();
    if (n > size())
        return PEG_NOT_FOUND;
    const Char16* data = _chars();
    const Char16* wanted = s._chars();
    for (Uint32 i = 0; i + n <= size(); i++)
    {
        Uint32 j = 0;
        while (j < n && data[i + j] == wanted[j])
            j++;
        if (j == n)
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
    const Char16* data = _chars();
    for (Uint32 i = size(); i > 0; i--)
        if (data[i - 1] == c)
            return i - 1;
    return PEG_NOT_FOUND;
}

void String::toLower()
{
    if (size() == 0)
        return;
    _own(_rep->capacity);
    Char16* data = _rep->data();
    for (Uint32 i = 0; i < _rep->size; i++)
        data[i] = asciiLower(data[i]);
}

void String::toUpper()
{
    if (size() == 0)
        return;
    _own(_rep->capacity);
    Char16* data = _rep->data();
    for (Uint32 i = 0; i < _rep->size; i++)
        data[i] = asciiUpper(data[i]);
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
    for (; i < n && i < s1.size() && i < s2.size(); i++)
    {
        int d = int(Uint16(s1._chars()[i])) - int(Uint16(s2._chars()[i]));
        if (d)
            return d;
    }
    if (i == n)
        return 0;
    if (i < s1.size())
        return 1;
    if (i < s2.size())
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
    for (; i < s1.size() && i < s2.size(); i++)
    {
        int d = int(asciiLower(s1._chars()[i])) - int(asciiLower(s2._chars()[i]));
        if (d)
            return d;
    }
    if (i < s1.size())
        return 1;
    if (i < s2.size())
        return -1;
    return 0;
}

Boolean String::equal(const String& s1, const String& s2)
{
    return s1.size() == s2.size() && compare(s1, s2) == 0;
}

Boolean String::equal(const String& s1, const char* s2)
{
    return equal(s1, String(s2));
}

Boolean String::equalNoCase(const String& s1, const String& s2)
{
    return s1.size() == s2.size() && compareNoCase(s1, s2) == 0;
}

Boolean String::equalNoCase(const String& s1, const char* s2)
{
    return equalNoCase(s1, String(s2));
}

Boolean operator==(const String& s1, const String& s2)
{
    return String::equal(s1, s2);
}
Boolean operator==(const String& s1, const char* s2)
{
    return String::equal(s1, String(s2));
}
Boolean operator==(const char* s1, const String& s2)
{
    return String::equal(String(s1), s2);
}
Boolean operator!=(const String& s1, const String& s2)
{
    return !String::equal(s1, s2);
}
Boolean operator!=(const String& s1, const char* s2)
{
    return !(s1 == s2);
}
Boolean operator!=(const char* s1, const String& s2)
{
    return !(s1 == s2);
}
Boolean operator<(const String& s1, const String& s2)
{
    return String::compare(s1, s2) < 0;
}
Boolean operator<=(const String& s1, const String& s2)
{
    return String::compare(s1, s2) <= 0;
}
Boolean operator>(const String& s1, const String& s2)
{
    return String::compare(s1, s2) > 0;
}
Boolean operator>=(const String& s1, const String& s2)
{
    return String::compare(s1, s2) >= 0;
}

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
