// Object path parsing, printing, key normalisation and comparison.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>

#include "sdk_fixtures.h"

using namespace Pegasus;
using sdktest::messageOf;
using testing::StartsWith;

namespace
{

struct RoundTrip
{
    const char* input;
    const char* printed;  // toString() of the parsed path
    const char* host;
    const char* nameSpace;
    const char* className;
};

class PathRoundTrip : public ::testing::TestWithParam<RoundTrip>
{};

TEST_P(PathRoundTrip, ParsesAndPrintsCanonically)
{
    const RoundTrip& c = GetParam();
    CIMObjectPath path{String(c.input)};
    EXPECT_EQ(path.toString(), c.printed);
    EXPECT_EQ(path.getHost(), c.host);
    EXPECT_EQ(path.getNameSpace().getString(), c.nameSpace);
    EXPECT_EQ(path.getClassName().getString(), c.className);
    // The printed form parses back to an identical path with the same text.
    CIMObjectPath again{path.toString()};
    EXPECT_TRUE(again.identical(path));
    EXPECT_EQ(again.toString(), path.toString());
}

INSTANTIATE_TEST_SUITE_P(Paths, PathRoundTrip,
    ::testing::Values(
        // Keys of every kind come out sorted by name ignoring case; booleans upper-case.
        RoundTrip{
            "//myhost/root/x:My_Service.SystemName=\"s\",num=5,Name=\"n\",flag=true,CreationClassName=\"c\"",
            "//myhost/root/x:My_Service.CreationClassName=\"c\",flag=TRUE,Name=\"n\",num=5,SystemName=\"s\"",
            "myhost", "root/x", "My_Service"},
        // A reference key holding a path with a host; its own keys get sorted.
        RoundTrip{"A.Antecedent=\"//h/root/x:S.Name=\\\"x\\\",CreationClassName=\\\"C\\\"\"",
            "A.Antecedent=\"//h/root/x:S.CreationClassName=\\\"C\\\",Name=\\\"x\\\"\"", "", "", "A"},
        // Escapes in string values.
        RoundTrip{"C.K=\"a\\\\b \\\"q\\\"\"", "C.K=\"a\\\\b \\\"q\\\"\"", "", "", "C"},
        // Legal-name text alone is a class-only path, "word:Name" a namespace and a class.
        RoundTrip{"abc", "abc", "", "", "abc"}, RoundTrip{"S1234567", "S1234567", "", "", "S1234567"},
        RoundTrip{"Prefix:set1", "Prefix:set1", "", "Prefix", "set1"},
        // Leading '/' of a namespace is dropped; a trailing ',' after the keys is tolerated.
        RoundTrip{"/root/x:C.a=-12,b=0x1F,", "root/x:C.a=-12,b=0x1F", "", "root/x", "C"},
        // A '.' before the first ':' means there is no namespace.
        RoundTrip{"C.K=\"ns:x\"", "C.K=\"ns:x\"", "", "", "C"},
        // Hosts: IPv4 with a port, bracketed IPv6 with a port, an empty port.
        RoundTrip{"//10.0.0.1:5989/root:C", "//10.0.0.1:5989/root:C", "10.0.0.1:5989", "root", "C"},
        RoundTrip{
            "//[fd00::1]:5988/root:C.k=1", "//[fd00::1]:5988/root:C.k=1", "[fd00::1]:5988", "root", "C"},
        RoundTrip{"//host-1.example_x.com:/root:C", "//host-1.example_x.com:/root:C",
            "host-1.example_x.com:", "root", "C"}));

class MalformedPath : public ::testing::TestWithParam<const char*>
{};

TEST_P(MalformedPath, ThrowsMalformedObjectName)
{
    // The message names the whole input and a reason.
    const std::string input = GetParam();
    EXPECT_THAT(messageOf<MalformedObjectNameException>([&] { CIMObjectPath path{String(input.c_str())}; }),
        StartsWith("malformed object name: " + input + ", reason:\""));
}

INSTANTIATE_TEST_SUITE_P(Paths, MalformedPath,
    ::testing::Values("",
        "50002AC0012B4",  // starts with a digit
        "Prefix:my-set",  // '-' in the class name
        "my vol",         // blank
        "X.K=v",          // bare word is not a number
        "X.K=01",         // leading zero
        "X.K=0x",         // hex without digits
        "X.K=\"a\\b\"",   // only \\ and \" are escapes
        "X.K=\"open",     // unterminated
        "X.K=\"v\" ",     // blank after a value
        "X.K=1 ,L=2",
        "X.K",               // no '='
        "X.9K=1",            // illegal key name
        "//h/C",             // host without namespace
        "//h",               // host without slash
        "//fe80::1/root:C",  // IPv6 without brackets
        "//123/root:C", "//1.2.3/root:C", "//a b/root:C",
        "//h:70000/root:C",  // port out of range
        "root/9x:C"          // illegal namespace
        ));

TEST(CIMObjectPathTest, StringValueThatIsAPathWithKeysBecomesAReference)
{
    CIMObjectPath p{String("A.R=\"S.Name=\\\"x\\\"\",T=\"plain=text\",U=\"word:Name\"")};
    const Array<CIMKeyBinding>& keys = p.getKeyBindings();
    ASSERT_EQ(keys.size(), 3u);
    EXPECT_EQ(keys[0].getType(), CIMKeyBinding::REFERENCE);
    EXPECT_EQ(keys[1].getType(), CIMKeyBinding::STRING);  // has '=' but is no path
    EXPECT_EQ(keys[2].getType(), CIMKeyBinding::STRING);  // a path, but without keys
}

TEST(CIMObjectPathTest, KeysAreSortedAndReferencesNormalisedOnEverySet)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("b", "2", CIMKeyBinding::NUMERIC));
    keys.append(CIMKeyBinding("Ref", "//H/root:S.Z=1,a=2", CIMKeyBinding::REFERENCE));
    keys.append(CIMKeyBinding("A", "x", CIMKeyBinding::STRING));
    CIMObjectPath p("", CIMNamespaceName(), CIMName("C"), keys);
    EXPECT_EQ(p.toString(), "C.A=\"x\",b=2,Ref=\"//H/root:S.a=2,Z=1\"");

    p.setKeyBindings(keys);
    EXPECT_EQ(p.getKeyBindings()[0].getName().getString(), "A");

    Array<CIMKeyBinding> bad;
    bad.append(CIMKeyBinding("Ref", "not a path", CIMKeyBinding::REFERENCE));
    EXPECT_THROW(p.setKeyBindings(bad), MalformedObjectNameException);
    EXPECT_THROW(CIMObjectPath("", CIMNamespaceName(), CIMName("C"), bad), MalformedObjectNameException);
    EXPECT_EQ(p.getKeyBindings().size(), 3u);  // unchanged by the failed call
}

TEST(CIMObjectPathTest, HostValidation)
{
    CIMObjectPath p;
    const char* good[] = {"", "host", "a.b.c", "10.1.2.3", "[::1]", "h:5988", "_srv.local"};
    for (const char* host : good)
    {
        SCOPED_TRACE(host);
        EXPECT_NO_THROW(p.setHost(host));
        EXPECT_EQ(p.getHost(), host);
    }
    const char* bad[] = {"fe80::1", "123", "1.2.3", "a..b", "-a", "a b", "[::1", "[x]", "h:65536"};
    for (const char* host : bad)
    {
        SCOPED_TRACE(host);
        EXPECT_THROW(p.setHost(host), MalformedObjectNameException);
        EXPECT_THROW(p.set(host, CIMNamespaceName("root"), CIMName("C")), MalformedObjectNameException);
    }
}

TEST(CIMObjectPathTest, ToStringWritesNamespaceWhenThereIsAHost)
{
    CIMObjectPath p("h", CIMNamespaceName(), CIMName("C"));
    EXPECT_EQ(p.toString(), "//h/:C");
    EXPECT_EQ(CIMObjectPath().toString(), "");
}

struct Identity
{
    const char* a;
    const char* b;
    bool identical;
};

class PathIdentity : public ::testing::TestWithParam<Identity>
{};

TEST_P(PathIdentity, Identical)
{
    const Identity& c = GetParam();
    CIMObjectPath a{String(c.a)}, b{String(c.b)};
    EXPECT_EQ(a.identical(b), c.identical);
    EXPECT_EQ(b.identical(a), c.identical);
    EXPECT_EQ(a == b, c.identical);
    EXPECT_EQ(a != b, !c.identical);
    if (c.identical)
    {
        EXPECT_EQ(a.makeHashCode(), b.makeHashCode());
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, PathIdentity,
    ::testing::Values(
        // Names of classes, keys and namespaces and the host ignore case.
        Identity{"//HOST/Root/X:my_class.NAME=\"v\"", "//host/root/x:MY_CLASS.name=\"v\"", true},
        // String key values are case-sensitive; boolean and numeric ones compare by value.
        Identity{"C.Name=\"v\"", "C.Name=\"V\"", false}, Identity{"C.Flag=true", "C.Flag=TRUE", true},
        Identity{"C.N=0x10", "C.N=16", true}, Identity{"C.N=-5", "C.N=5", false},
        // Hosts and namespaces count.
        Identity{"//a/root:C.k=1", "//b/root:C.k=1", false}, Identity{"root:C.k=1", "C.k=1", false},
        // Key order does not matter; key count does.
        Identity{"C.a=1,b=2", "C.b=2,a=1", true}, Identity{"C.a=1,b=2", "C.a=1", false},
        // References compare as paths: case of inner names ignored, inner hosts count.
        Identity{"A.R=\"//h/root:S.Name=\\\"x\\\"\"", "A.R=\"//H/ROOT:s.name=\\\"x\\\"\"", true},
        Identity{"A.R=\"//h/root:S.Name=\\\"x\\\"\"", "A.R=\"//g/root:S.Name=\\\"x\\\"\"", false},
        Identity{"A.R=\"S.Name=\\\"x\\\"\"", "A.R=\"S.Name=\\\"X\\\"\"", false}));

TEST(CIMObjectPathTest, ParsingReplacesEverythingOrNothing)
{
    CIMObjectPath p{String("//h/root:C.k=1")};
    p = String("D");
    EXPECT_EQ(p.getHost(), "");
    EXPECT_TRUE(p.getNameSpace().isNull());
    EXPECT_EQ(p.getKeyBindings().size(), 0u);

    p.set("//h/root:C.k=1");
    EXPECT_THROW(p.set("C.k=bad"), MalformedObjectNameException);
    EXPECT_EQ(p.toString(), "//h/root:C.k=1");
    p.clear();
    EXPECT_EQ(p.toString(), "");
}

TEST(CIMKeyBindingTest, StringNeverEqualsReferenceWithSameText)
{
    CIMKeyBinding s("K", "S.Name=\"x\"", CIMKeyBinding::STRING);
    CIMKeyBinding r("k", "S.Name=\"x\"", CIMKeyBinding::REFERENCE);
    EXPECT_FALSE(s == r);
    CIMKeyBinding r2("K", "s.NAME=\"x\"", CIMKeyBinding::REFERENCE);
    EXPECT_TRUE(r == r2);
    // A reference value that does not parse falls back to exact text.
    EXPECT_TRUE(CIMKeyBinding("K", "!", CIMKeyBinding::REFERENCE) ==
        CIMKeyBinding("K", "!", CIMKeyBinding::REFERENCE));
}

TEST(CIMKeyBindingTest, FromTypedValues)
{
    struct Case
    {
        CIMValue value;
        CIMKeyBinding::Type type;
        const char* text;
    };
    const Case cases[] = {
        {CIMValue(true), CIMKeyBinding::BOOLEAN, "TRUE"},
        {CIMValue(Uint16(7)), CIMKeyBinding::NUMERIC, "7"},
        {CIMValue(Sint64(-3)), CIMKeyBinding::NUMERIC, "-3"},
        {CIMValue(String("s")), CIMKeyBinding::STRING, "s"},
        {CIMValue(Char16('c')), CIMKeyBinding::STRING, "c"},
        {CIMValue(CIMDateTime(String("20200101000000.000000+000"))), CIMKeyBinding::STRING,
            "20200101000000.000000+000"},
        {CIMValue(CIMObjectPath(String("S.k=1"))), CIMKeyBinding::REFERENCE, "S.k=1"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.text);
        CIMKeyBinding key(CIMName("K"), c.value);
        EXPECT_EQ(key.getType(), c.type);
        EXPECT_EQ(key.getValue(), c.text);
        EXPECT_TRUE(key.equal(c.value));
    }
    Array<Uint32> array;
    array.append(1);
    EXPECT_THROW(CIMKeyBinding(CIMName("K"), CIMValue(array)), TypeMismatchException);

    CIMKeyBinding numeric("K", "0x10", CIMKeyBinding::NUMERIC);
    EXPECT_TRUE(numeric.equal(CIMValue(Uint32(16))));
    EXPECT_FALSE(numeric.equal(CIMValue(String("0x10"))));
    EXPECT_FALSE(numeric.equal(CIMValue(CIMTYPE_UINT32, false)));
    EXPECT_FALSE(CIMKeyBinding("K", "-1", CIMKeyBinding::NUMERIC).equal(CIMValue(Uint32(4294967295u))));
    EXPECT_TRUE(CIMKeyBinding("K", "-1", CIMKeyBinding::NUMERIC).equal(CIMValue(Sint8(-1))));
    EXPECT_TRUE(CIMKeyBinding("K", "true", CIMKeyBinding::BOOLEAN).equal(CIMValue(true)));
    EXPECT_FALSE(CIMKeyBinding("K", "yes", CIMKeyBinding::BOOLEAN).equal(CIMValue(true)));
    EXPECT_TRUE(CIMKeyBinding("K", "s.K=1", CIMKeyBinding::REFERENCE)
                    .equal(CIMValue(CIMObjectPath(String("S.k=1")))));
}

}  // namespace
