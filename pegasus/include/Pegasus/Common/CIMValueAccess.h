// In-place read access to a value's contents, for the server's encoder.
// Not part of the provider API.
//
// CIMValue::get(String&) hands out a copy; copies of a String share one
// counted buffer, so each copy writes that count twice. A long answer
// encodes millions of string values, often built by a provider from one
// shared String: reading them in place writes nothing.
#ifndef Pegasus_CIMValueAccess_h
#define Pegasus_CIMValueAccess_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

struct PEGASUS_COMMON_LINKAGE CIMValueAccess
{
    // The text of a non-null scalar string value, valid as long as the
    // value is; null for any other value.
    static const String* scalarString(const CIMValue& value);
};

PEGASUS_NAMESPACE_END

#endif
