// Pieces shared by the SDK's tests: a small class (a keyed disk with
// defaults, an array, a reference and a property inherited from a base),
// property lists, and the exception a call throws.
#ifndef ZDA_TESTS_SDK_FIXTURES_H
#define ZDA_TESTS_SDK_FIXTURES_H

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

// Values show as their text when an assertion fails.
namespace Pegasus
{
inline void PrintTo(const CIMValue& value, std::ostream* os)
{
    *os << (value.isNull() ? "null" : (const char*)value.toString().getCString());
}
}  // namespace Pegasus

namespace sdktest
{
using namespace Pegasus;

inline CIMQualifier keyQualifier()
{
    return CIMQualifier(CIMName("Key"), CIMValue(true));
}

inline CIMQualifier description(const char* text)
{
    return CIMQualifier(CIMName("Description"), CIMValue(String(text)));
}

// Test_Disk : Test_Base, properties in this order:
//   Name    string  [Key]
//   Size    uint64  default 100
//   Tags    string[]
//   Owner   Test_Host REF
//   Comment string  [Description], class origin Test_Base, propagated
inline CIMClass makeDiskClass()
{
    CIMClass cls(CIMName("Test_Disk"), CIMName("Test_Base"));
    cls.addQualifier(description("a disk"));
    cls.addProperty(
        CIMProperty(CIMName("Name"), CIMValue(CIMTYPE_STRING, false)).addQualifier(keyQualifier()));
    cls.addProperty(CIMProperty(CIMName("Size"), CIMValue(Uint64(100))));
    cls.addProperty(CIMProperty(CIMName("Tags"), CIMValue(CIMTYPE_STRING, true)));
    cls.addProperty(
        CIMProperty(CIMName("Owner"), CIMValue(CIMTYPE_REFERENCE, false), 0, CIMName("Test_Host")));
    cls.addProperty(CIMProperty(
        CIMName("Comment"), CIMValue(CIMTYPE_STRING, false), 0, CIMName(), CIMName("Test_Base"), true)
                        .addQualifier(description("free text")));
    return cls;
}

inline std::vector<std::string> propertyNames(const CIMConstInstance& instance)
{
    std::vector<std::string> names;
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i)
        names.push_back((const char*)instance.getProperty(i).getName().getString().getCString());
    return names;
}

inline CIMPropertyList listOf(std::initializer_list<const char*> names)
{
    Array<CIMName> array;
    for (const char* n : names)
        array.append(CIMName(n));
    return CIMPropertyList(array);
}

// Runs call, expecting an E; returns its message ("no exception" if none).
template <class E>
std::string messageOf(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const E& e)
    {
        return (const char*)e.getMessage().getCString();
    }
    return "no exception";
}

// Runs call and returns the CIMException it throws (code 0 if none).
inline CIMException thrownBy(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const CIMException& e)
    {
        return e;
    }
    return CIMException(CIM_ERR_SUCCESS, "nothing thrown");
}

}  // namespace sdktest

#endif
