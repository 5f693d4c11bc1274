// Scalar CIM values read from their text form, for every reader of text in
// the system (CIM-XML values and key bindings, untyped method parameters,
// MOF constants), so that one text means one value everywhere. Not part of
// the provider API.
//
// The forms: integers in decimal or 0x-hexadecimal, with an optional sign
// ('+' always, '-' for signed types only); reals in
// decimal or exponent notation, INF, -INF and NaN; booleans true/false in
// any case; a char16 as exactly one character; date-times and object paths
// in their CIM text forms. No blanks around the text: callers that allow
// them trim first.
#ifndef Pegasus_CIMValueText_h
#define Pegasus_CIMValueText_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

struct PEGASUS_COMMON_LINKAGE CIMValueText
{
    // Digits in `base` (2, 8, 10 or 16) from `begin` to `end`, without sign
    // or prefix; false when there are none, one is no digit of the base, or
    // the number exceeds `max`.
    static bool digits(const char* begin, const char* end, unsigned base, Uint64 max, Uint64& value);

    // An unsigned integer of at most `max`.
    static bool toUnsigned(const char* begin, const char* end, Uint64 max, Uint64& value);
    // A signed integer from `min` to `max`.
    static bool toSigned(const char* begin, const char* end, Sint64 min, Sint64 max, Sint64& value);
    static bool toReal(const char* begin, const char* end, Real64& value);
    static bool toBoolean(const char* begin, const char* end, Boolean& value);

    // The value of `type` that `text` writes; false when it is none, and
    // for the embedded object and instance types, which have no text form
    // here.
    static bool toValue(const String& text, CIMType type, CIMValue& value);
};

PEGASUS_NAMESPACE_END

#endif
