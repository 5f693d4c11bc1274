// String, Array, CIMName/CIMNamespaceName and the exception family (with
// the exceptions providers and clients throw): the behaviour providers rely
// on and a straightforward implementation misses.
#include <atomic>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#define PEGASUS_USE_EXPERIMENTAL_INTERFACES
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Provider/ProviderException.h>
#include <Pegasus/Client/CIMClientException.h>

#include "sdk_fixtures.h"

using namespace Pegasus;

namespace
{

std::string utf8(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

// A provider exception fixes its status code and keeps the message as
// given. A server catches CIMException first: it must arrive there with its
// code and the message untouched, and the client receives the description.
template <class E>
void expectProviderException(CIMStatusCode code)
{
    SCOPED_TRACE(cimStatusCodeToString(code));
    const String message = "ZDA_ReplicationService does not support createInstance.";
    try
    {
        throw E(message);
    }
    catch (const CIMOperationFailedException& e)
    {
        const CIMException& asCIM = e;
        EXPECT_EQ(code, asCIM.getCode());
        EXPECT_EQ(message, asCIM.getMessage());
        EXPECT_EQ(String(cimStatusCodeToString(code)) + ": " + message,
            TraceableCIMException(asCIM).getDescription());
    }
}

}  // namespace

TEST(StringTest, Utf8RoundTripCountsUtf16Units)
{
    // a, e-acute (2 bytes), euro sign (3 bytes), G clef (4 bytes: a surrogate pair)
    const char* text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E";
    String s(text);
    EXPECT_EQ(s.size(), 5u);
    EXPECT_EQ(Uint16(s[1]), 0x00E9);
    EXPECT_EQ(Uint16(s[3]), 0xD834);
    EXPECT_EQ(Uint16(s[4]), 0xDD1E);
    EXPECT_EQ(utf8(s), text);
}

TEST(StringTest, InvalidUtf8Throws)
{
    const char* bad[] = {
        "\x80",              // continuation byte without a lead
        "\xC3",              // truncated sequence
        "\xC0\x80",          // overlong NUL
        "\xE0\x80\xAF",      // overlong '/'
        "\xED\xA0\x80",      // encoded surrogate
        "\xF4\x90\x80\x80",  // beyond U+10FFFF
        "ab\xFF",            // never valid
    };
    for (const char* text : bad)
    {
        SCOPED_TRACE(text);
        EXPECT_THROW(String s(text), Exception);
    }
    EXPECT_THROW(String(static_cast<const char*>(nullptr)), NullPointer);
}

TEST(StringTest, CaseFoldingIsAsciiOnly)
{
    String s("AbC-\xC3\x84\xC3\x96");  // "AbC-ÄÖ"
    s.toLower();
    EXPECT_EQ(utf8(s), "abc-\xC3\x84\xC3\x96");

    EXPECT_TRUE(String::equalNoCase("HeLLo", "hello"));
    EXPECT_FALSE(String::equalNoCase("\xC3\x84", "\xC3\xA4"));  // Ä vs ä
    EXPECT_FALSE(String::equalNoCase("abc", "abcd"));
    EXPECT_FALSE(String::equal("abc", "ABC"));
    EXPECT_LT(String::compareNoCase("apple", "BANANA"), 0);
    EXPECT_LT(String::compare("B", "a"), 0);  // code-unit order
    EXPECT_LT(String::compare("ab", "abc"), 0);
    EXPECT_EQ(String::compare("abX", "abY", 2), 0);
}

TEST(StringTest, BoundsOfRemoveSubStringAndIndex)
{
    String s("hello");
    EXPECT_EQ(s.subString(10), String());
    EXPECT_EQ(s.subString(3, 100), String("lo"));
    EXPECT_THROW(s[5], IndexOutOfBoundsException);
    EXPECT_THROW(s.remove(3, 3), IndexOutOfBoundsException);
    s.remove(1, 2);
    EXPECT_EQ(s, "hlo");
    s.remove(1);
    EXPECT_EQ(s, "h");
    EXPECT_EQ(String("a,b,c").find(2, Char16(',')), 3u);
    EXPECT_EQ(String("a,b,c").reverseFind(Char16('a')), 0u);
    EXPECT_EQ(String("abc").find(String("bd")), PEG_NOT_FOUND);
}

TEST(StringTest, ConversionsAndCStringCopies)
{
    EXPECT_EQ("x" + String("y") + "z", String("xyz"));
    String p;
    p.appendPrintf("%s=%d", "n", 42);
    EXPECT_EQ(p, "n=42");

    CString c;
    EXPECT_STREQ(c, "");
    {
        String s("temporary \xE2\x82\xAC");
        c = s.getCString();
        s.clear();
        s.append(String("overwritten"));
    }
    CString d(c);
    EXPECT_STREQ(d, "temporary \xE2\x82\xAC");               // owns its copy
    EXPECT_EQ(String("abc").getChar16Data()[3], Char16(0));  // NUL-terminated
}

TEST(StringTest, CopiesStayIndependentOfEveryChange)
{
    const String original("shared text");
    String appended(original), lowered(original), removed(original), cleared(original), indexed(original);
    appended.append(Char16('!'));
    lowered.toUpper();
    removed.remove(0, 7);
    cleared.clear();
    indexed[0] = 'S';
    EXPECT_EQ(original, "shared text");
    EXPECT_EQ(appended, "shared text!");
    EXPECT_EQ(lowered, "SHARED TEXT");
    EXPECT_EQ(removed, "text");
    EXPECT_EQ(cleared, "");
    EXPECT_EQ(indexed, "Shared text");

    // A writable reference still held must not reach copies made later.
    String source("abc");
    Char16& first = source[0];
    String later(source), assigned;
    assigned = source;
    first = 'z';
    EXPECT_EQ(source, "zbc");
    EXPECT_EQ(later, "abc");
    EXPECT_EQ(assigned, "abc");

    // Appending a string to an empty one, or a copy to itself (twice, so
    // that it grows past its first capacity).
    String empty;
    empty.append(original);
    String twice(original);
    twice.append(twice);
    twice.append(twice);
    EXPECT_EQ(empty, "shared text");
    EXPECT_EQ(twice, "shared textshared textshared textshared text");
    EXPECT_EQ(original.subString(0), original);
}

// A move hands the text over: the source is left empty (or null, cleared)
// and copies made before see no change made through the target.
TEST(MoveTest, ValueTypesLeaveTheirSourceEmpty)
{
    String text("moved text");
    const String before(text);
    String target(std::move(text));
    EXPECT_EQ(text, "");
    target.append(Char16('!'));
    EXPECT_EQ(before, "moved text");
    String assigned("old");
    assigned = std::move(target);
    EXPECT_EQ(target, "");
    EXPECT_EQ(assigned, "moved text!");
    String& alias = assigned;
    assigned = std::move(alias);
    EXPECT_EQ(assigned, "moved text!");

    // A string with a writable reference out stays unshared after a move.
    String source("abc");
    Char16& first = source[0];
    String moved(std::move(source));
    String later(moved);
    first = 'z';
    EXPECT_EQ(moved, "zbc");
    EXPECT_EQ(later, "abc");

    CIMName name("Name");
    CIMName movedName(std::move(name));
    EXPECT_TRUE(name.isNull());
    EXPECT_EQ(movedName.getString(), "Name");

    CIMValue value(String("v"));
    CIMValue movedValue(std::move(value));
    EXPECT_TRUE(value.isNull());
    EXPECT_EQ(movedValue, CIMValue(String("v")));

    Array<Uint32> numbers;
    numbers.append(1);
    const Array<Uint32> kept(numbers);
    Array<Uint32> movedNumbers(std::move(numbers));
    EXPECT_EQ(numbers.size(), 0u);
    numbers.append(2);
    movedNumbers.append(3);
    EXPECT_EQ(kept.size(), 1u);
    EXPECT_EQ(movedNumbers.size(), 2u);

    CIMObjectPath path("//host/root/test:Test_Disk.Id=\"1\"");
    CIMObjectPath movedPath(std::move(path));
    EXPECT_EQ(path.getKeyBindings().size(), 0u);
    EXPECT_EQ(movedPath.getKeyBindings().size(), 1u);
    EXPECT_EQ(movedPath.getHost(), "host");
}

TEST(ArrayTest, CopiesDoNotSeeLaterChanges)
{
    Array<String> a;
    a.append("one");
    Array<String> b(a);
    b.append("two");
    a[0] = "changed";
    EXPECT_EQ(a.size(), 1u);
    EXPECT_EQ(b.size(), 2u);
    EXPECT_EQ(b[0], "one");

    Array<Uint32> c(3, 7);
    Array<Uint32> d;
    d = c;
    d.remove(0, 2);
    EXPECT_EQ(c.size(), 3u);
    EXPECT_EQ(d.size(), 1u);
}

TEST(ArrayTest, InsertingElementsOfItselfAndBounds)
{
    Array<String> a;
    for (int i = 0; i < 9; i++)  // past the first capacity, so appends reallocate
        a.append(a.size() ? a[a.size() - 1] + "x" : String("x"));
    EXPECT_EQ(a[8], "xxxxxxxxx");
    a.insert(0, a[8]);
    a.prepend(a[1]);
    a.appendArray(a);
    EXPECT_EQ(a.size(), 22u);
    EXPECT_EQ(a[0], "x");
    EXPECT_EQ(a[1], "xxxxxxxxx");
    EXPECT_EQ(a[12], "xxxxxxxxx");

    EXPECT_THROW(a[22], IndexOutOfBoundsException);
    EXPECT_THROW(a.remove(20, 3), IndexOutOfBoundsException);
    EXPECT_THROW(a.insert(23, String()), IndexOutOfBoundsException);
    const Array<String>& ca = a;
    EXPECT_THROW(ca[100], IndexOutOfBoundsException);
}

TEST(ArrayTest, ImplicitSizeConstructorAndGrow)
{
    Array<Boolean> flags = 3;  // Array(Uint32) is not explicit
    EXPECT_EQ(flags.size(), 3u);
    EXPECT_FALSE(flags[2]);
    flags.grow(2, true);
    EXPECT_EQ(flags.size(), 5u);
    EXPECT_TRUE(flags[4]);
}

// Copies of one string and one array made and changed on several threads at
// once: copy on write must neither leak a change into the shared value nor
// lose a reference.
TEST(CopyOnWriteTest, CopiesOfOneValueAcrossThreads)
{
    const String text("a value many threads copy and change");
    const Array<String> shared(50, String("v"));
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++)
        threads.emplace_back([&] {
            for (int i = 0; i < 20000; i++)
            {
                String copy(text);
                String other = copy;
                other.append(Char16('x'));
                Array<String> mine(shared);
                mine.append("w");
                if (copy.size() + 1 != other.size() || copy != text || mine.size() != 51 ||
                    shared.size() != 50)
                    wrong++;
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_EQ(text, "a value many threads copy and change");
}

TEST(CIMNameTest, Legality)
{
    struct Case
    {
        const char* name;
        bool legal;
    };
    const Case cases[] = {
        {"CIM_System", true},
        {"_x9", true},
        {"\xC3\x84rger", true},  // non-ASCII letters are allowed
        {"", false},
        {"9lives", false},
        {"my-set", false},
        {"a b", false},
        {"a.b", false},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(CIMName::legal(c.name), c.legal);
        if (c.legal)
            EXPECT_EQ(CIMName(c.name).getString(), String(c.name));
        else
            EXPECT_THROW(CIMName(c.name), InvalidNameException);
    }
    EXPECT_TRUE(CIMName().isNull());
    EXPECT_THROW(CIMName{String()}, InvalidNameException);
    CIMName n;
    EXPECT_THROW(n = String("1x"), InvalidNameException);
    EXPECT_TRUE(CIMName("Name") == CIMName("NAME"));
}

TEST(CIMNameTest, NamespaceNames)
{
    EXPECT_EQ(CIMNamespaceName("/root/zda").getString(), "root/zda");
    EXPECT_EQ(CIMNamespaceName("root").getString(), "root");
    EXPECT_TRUE(CIMNamespaceName("ROOT/Zda") == CIMNamespaceName("root/zda"));
    const char* bad[] = {"", "/", "root/", "root//x", "//root", "root/9x", "root x"};
    for (const char* text : bad)
    {
        SCOPED_TRACE(text);
        EXPECT_THROW(CIMNamespaceName n(text), InvalidNamespaceNameException);
    }
}

TEST(ExceptionTest, MessagesAndStatusCodes)
{
    EXPECT_EQ(TypeMismatchException().getMessage(), "type mismatch");
    EXPECT_EQ(InvalidNameException("1x").getMessage(), "The CIM name is not valid: 1x");
    EXPECT_EQ(DateTimeOutOfRangeException("x").getMessage(), "DateTime is out of range : x");
    EXPECT_EQ(AlreadyExistsException("property \"b\"").getMessage(), "already exists: property \"b\"");

    CIMException e(CIM_ERR_NOT_FOUND, "X not found");
    EXPECT_EQ(e.getMessage(), "X not found");  // no status prefix
    EXPECT_EQ(e.getCode(), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(CIMException(CIMStatusCode(4096), "x").getCode(), 4096);

    EXPECT_STREQ(cimStatusCodeToString(CIM_ERR_SERVER_IS_SHUTTING_DOWN), "CIM_ERR_SERVER_IS_SHUTTING_DOWN");
    EXPECT_STREQ(cimStatusCodeToString(CIMStatusCode(18)), "Unrecognized CIM status code");
    EXPECT_STREQ(cimStatusCodeToString(CIMStatusCode(32768)), "Unrecognized CIM status code");
}

TEST(ExceptionTest, BooleanThirdArgumentAttachesUninitializedInstances)
{
    CIMException withTrue(CIM_ERR_INVALID_PARAMETER, String::EMPTY, true);
    EXPECT_EQ(withTrue.getErrorCount(), 1u);
    EXPECT_TRUE(withTrue.getError(0).isUninitialized());
    CIMException copy(withTrue);
    EXPECT_EQ(copy.getErrorCount(), 1u);

    CIMException withFalse(CIM_ERR_INVALID_PARAMETER, "m", false);
    EXPECT_EQ(withFalse.getErrorCount(), 0u);
    EXPECT_THROW(withFalse.getError(0), IndexOutOfBoundsException);
}

TEST(ExceptionTest, AddedErrorsAreNotSharedWithEarlierCopies)
{
    CIMException e(CIM_ERR_FAILED, "m");
    CIMException before(e);
    CIMInstance error{CIMName("CIM_Error")};
    e.addError(error);
    e.addError(error);
    EXPECT_EQ(e.getErrorCount(), 2u);
    EXPECT_EQ(before.getErrorCount(), 0u);
    error.addProperty(CIMProperty(CIMName("Message"), CIMValue(String("later"))));
    EXPECT_EQ(e.getError(0).getPropertyCount(), 0u);  // stored as a clone
    EXPECT_EQ(e.getError(1).getClassName().getString(), "CIM_Error");
}

TEST(ExceptionTest, TraceableDescriptions)
{
    TraceableCIMException e = PEGASUS_CIM_EXCEPTION(CIM_ERR_NOT_SUPPORTED, "nope");
    EXPECT_EQ(e.getMessage(), "nope");
    EXPECT_EQ(e.getDescription(), "CIM_ERR_NOT_SUPPORTED: nope");
    EXPECT_EQ(e.getLine(), Uint32(__LINE__ - 3));
    EXPECT_EQ(TraceableCIMException(CIMException(CIM_ERR_FAILED)).getDescription(), "CIM_ERR_FAILED");
    EXPECT_EQ(TraceableCIMException(CIMException(CIMStatusCode(4096), "m")).getDescription(),
        "Unrecognized CIM status code \"4096\": m");

    MessageLoaderParms parms("id", "value $0 of $1 is bad", String("x"), Uint32(3));
    EXPECT_EQ(CIMException(CIM_ERR_FAILED, parms).getMessage(), "value x of 3 is bad");
    EXPECT_EQ(Formatter::format("\\$0 $1 $2 $9", true, Sint64(-5), Real64(0.5)), "$0 -5 0.5 ");
}

TEST(ProviderExceptionTest, EachFixesItsCodeAndKeepsTheMessage)
{
    expectProviderException<CIMOperationFailedException>(CIM_ERR_FAILED);
    expectProviderException<CIMAccessDeniedException>(CIM_ERR_ACCESS_DENIED);
    expectProviderException<CIMInvalidParameterException>(CIM_ERR_INVALID_PARAMETER);
    expectProviderException<CIMObjectNotFoundException>(CIM_ERR_NOT_FOUND);
    expectProviderException<CIMNotSupportedException>(CIM_ERR_NOT_SUPPORTED);
    expectProviderException<CIMObjectAlreadyExistsException>(CIM_ERR_ALREADY_EXISTS);
    expectProviderException<CIMPropertyNotFoundException>(CIM_ERR_NO_SUCH_PROPERTY);
    expectProviderException<CIMMethodNotFoundException>(CIM_ERR_METHOD_NOT_FOUND);
}

TEST(CIMClientExceptionTest, HttpErrorDescribesStatusAndCIMError)
{
    CIMClientHTTPErrorException full(400, "Bad Request", "request-not-valid", "no CIMOperation header");
    EXPECT_EQ(400u, full.getCode());
    EXPECT_EQ(String("request-not-valid"), full.getCIMError());
    EXPECT_EQ(String("400 Bad Request, CIMError: request-not-valid, detail: no CIMOperation header"),
        full.getMessage());

    CIMClientHTTPErrorException bare(401, "Unauthorized", String(), String());
    EXPECT_EQ(String("401 Unauthorized"), bare.getMessage());

    const Exception& asException = CIMClientXmlException("unexpected element FOO");
    EXPECT_EQ(String("unexpected element FOO"), asException.getMessage());
}
