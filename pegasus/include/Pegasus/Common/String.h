// String: a UTF-16 string with value semantics; CString: a UTF-8 copy of one.
//
// Sizes and indexes count UTF-16 code units. Text given as const char* is
// UTF-8; a null pointer throws NullPointer and ill-formed UTF-8 throws
// Exception. Case-insensitive operations fold only ASCII letters.
//
// Copies share one buffer until either side changes (the count is atomic),
// so distinct String objects may be used from different threads at once
// even when they are copies of each other. A writable reference from the
// non-const operator[] stops its buffer from being shared again, so that
// writing through it can never change another string.
#ifndef Pegasus_String_h
#define Pegasus_String_h

#include <atomic>
#include <iostream>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/Char16.h>

PEGASUS_NAMESPACE_BEGIN

class String;

// The buffer behind a String: this header, then capacity + 1 code units.
struct StringRep
{
    std::atomic<Uint32> refs;  // the shared empty buffer is never counted
    Uint32 size;
    Uint32 capacity;
    Uint32 unshareable;  // a writable reference to a unit is out
    Char16* data() { return reinterpret_cast<Char16*>(this + 1); }
    const Char16* data() const { return reinterpret_cast<const Char16*>(this + 1); }
};

// A NUL-terminated UTF-8 copy of a String. The pointer it converts to stays
// valid only as long as this CString object lives.
class PEGASUS_COMMON_LINKAGE CString
{
public:
    CString();
    CString(const CString& cstr);
    ~CString();
    CString& operator=(const CString& cstr);
    operator const char*() const;

private:
    explicit CString(char* owned);
    char* _rep;
    friend class String;
};

class PEGASUS_COMMON_LINKAGE String
{
public:
    static const String EMPTY;

    String();
    String(const String& str);
    // The first n code units of str; n > str.size() throws IndexOutOfBoundsException.
    String(const String& str, Uint32 n);
    String(const Char16* str);
    String(const Char16* str, Uint32 n);
    String(const char* str);
    // The first n bytes of the UTF-8 text str.
    String(const char* str, Uint32 n);
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    String(const String& s1, const String& s2);
    String(const String& s1, const char* s2);
    String(const char* s1, const String& s2);
#endif
    // Takes over str's text; str is left empty.
    String(String&& str) noexcept;
    ~String();

    String& operator=(const String& str);
    String& operator=(String&& str) noexcept;
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    String& operator=(const char* str);
#endif
    String& assign(const String& str);
    String& assign(const Char16* str);
    String& assign(const Char16* str, Uint32 n);
    String& assign(const char* str);
    String& assign(const char* str, Uint32 n);

    void clear();
    void reserveCapacity(Uint32 capacity);
    Uint32 size() const
    {
        return _rep->size;
    }

    // NUL-terminated; valid until the string is next modified.
    const Char16* getChar16Data() const;
    CString getCString() const;

    // Out of range throws IndexOutOfBoundsException.
    Char16& operator[](Uint32 index);
    const Char16 operator[](Uint32 index) const;

    String& append(const Char16& c);
    String& append(const Char16* str, Uint32 n);
    String& append(const String& str);
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    String& append(const char* str);
    String& append(const char* str, Uint32 size);
#endif

    // Removes size units from index (PEG_NOT_FOUND: to the end). A range that
    // does not fit throws IndexOutOfBoundsException.
    void remove(Uint32 index, Uint32 size = PEG_NOT_FOUND);

    // Never throws: index >= size() gives "", n is clipped to what is there.
    String subString(Uint32 index, Uint32 n = PEG_NOT_FOUND) const;

    Uint32 find(Char16 c) const;
    Uint32 find(Uint32 index, Char16 c) const;
    Uint32 find(const String& s) const;
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    Uint32 find(const char* s) const;
#endif
    Uint32 reverseFind(Char16 c) const;

    // Lower-/upper-cases ASCII letters only, in place.
    void toLower();
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    void toUpper();
#endif

    void appendPrintf(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // Code-unit order: negative, zero or positive.
    static int compare(const String& s1, const String& s2);
    static int compare(const String& s1, const String& s2, Uint32 n);
    static int compareNoCase(const String& s1, const String& s2);
    static Boolean equal(const String& s1, const String& s2);
    static Boolean equalNoCase(const String& s1, const String& s2);
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    static int compare(const String& s1, const char* s2);
    static Boolean equal(const String& s1, const char* s2);
    static Boolean equalNoCase(const String& s1, const char* s2);
#endif

private:
    void _init(const char* utf8, size_t n);
    // Makes the buffer this string's own, with room for `capacity` units.
    void _own(Uint32 capacity);
    void _append(const Char16* s, Uint32 n);
    const Char16* _chars() const
    {
        return _rep->data();
    }

    StringRep* _rep;  // NUL-terminated at size
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE Boolean operator==(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const String& s1, const char* s2);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const char* s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator<(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator<=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator>(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE Boolean operator>=(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE String operator+(const String& s1, const String& s2);
PEGASUS_COMMON_LINKAGE std::ostream& operator<<(std::ostream& os, const String& str);

PEGASUS_NAMESPACE_END

#endif
