// CIMValue: typed nulls, the get rules, toString, construction traps and
// embedded instances.
#include <type_traits>

#include <gtest/gtest.h>

#define PEGASUS_USE_DEPRECATED_INTERFACES

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>

using namespace Pegasus;

namespace
{

// Which constructor a call picks is decided at compile time; these pin it.
static_assert(!std::is_constructible<CIMValue, long>::value, "long must stay ambiguous");
static_assert(!std::is_constructible<CIMValue, unsigned long>::value, "size_t must stay ambiguous");
static_assert(!std::is_convertible<int, CIMStatusCode>::value, "no implicit int -> status code");

TEST(CIMValueTest, ConstructionTraps)
{
    CIMValue literal("text");  // a pointer converts to bool first
    EXPECT_EQ(literal.getType(), CIMTYPE_BOOLEAN);
    EXPECT_EQ(literal.toString(), "TRUE");
    EXPECT_EQ(CIMValue(String("text")).getType(), CIMTYPE_STRING);
    EXPECT_EQ(CIMValue(5).getType(), CIMTYPE_SINT32);
    EXPECT_EQ(CIMValue(5u).getType(), CIMTYPE_UINT32);
    EXPECT_EQ(CIMValue(Uint64(5)).getType(), CIMTYPE_UINT64);
    EXPECT_EQ(CIMValue(1.5f).getType(), CIMTYPE_REAL32);
    EXPECT_EQ(CIMValue(Char16('x')).getType(), CIMTYPE_CHAR16);
}

TEST(CIMValueTest, DeprecatedCharIsSint8)
{
    CIMValue v('a');
    EXPECT_EQ(v.getType(), CIMTYPE_SINT8);
    char c = 0;
    v.get(c);
    EXPECT_EQ(c, 'a');
    Array<char> chars(2, 'x');
    Array<Sint8> bytes;
    CIMValue(chars).get(bytes);
    EXPECT_EQ(bytes.size(), 2u);
}

TEST(CIMValueTest, DefaultAndTypedNulls)
{
    CIMValue v;
    EXPECT_TRUE(v.isNull());
    EXPECT_EQ(v.getType(), CIMTYPE_BOOLEAN);
    EXPECT_FALSE(v.isArray());
    EXPECT_EQ(v.toString(), "");

    CIMValue nullArray(CIMTYPE_UINT16, true, 4);
    EXPECT_TRUE(nullArray.isNull());
    EXPECT_TRUE(nullArray.isArray());
    EXPECT_EQ(nullArray.getType(), CIMTYPE_UINT16);
    EXPECT_EQ(nullArray.getArraySize(), 4u);

    // Null values are equal only to nulls of the same type and array-ness.
    EXPECT_TRUE(CIMValue(CIMTYPE_STRING, false) == CIMValue(CIMTYPE_STRING, false));
    EXPECT_FALSE(CIMValue(CIMTYPE_STRING, false) == CIMValue(CIMTYPE_STRING, true));
    EXPECT_FALSE(CIMValue(CIMTYPE_STRING, false) == CIMValue(String()));
    EXPECT_FALSE(CIMValue() == CIMValue(false));

    CIMValue s(String("x"));
    s.setNullValue(CIMTYPE_DATETIME, false);
    EXPECT_TRUE(s.isNull());
    EXPECT_EQ(s.getType(), CIMTYPE_DATETIME);
    s.clear();
    EXPECT_TRUE(s.typeCompatible(CIMValue()));
}

TEST(CIMValueTest, GetChecksTypeEvenWhenNull)
{
    String text("unchanged");
    EXPECT_THROW(CIMValue().get(text), TypeMismatchException);
    EXPECT_THROW(CIMValue(Uint16(1)).get(text), TypeMismatchException);

    Uint32 u32 = 9;
    EXPECT_THROW(CIMValue(5).get(u32), TypeMismatchException);           // sint32, not uint32
    CIMValue(CIMTYPE_UINT32, false).get(u32);                              // null of the right type
    EXPECT_EQ(u32, 9u);                                                    // ... leaves x alone
    Array<Uint32> list;
    EXPECT_THROW(CIMValue(Uint32(1)).get(list), TypeMismatchException);   // array-ness counts
    EXPECT_THROW(CIMValue(CIMTYPE_UINT32, true).get(u32), TypeMismatchException);
    Char16 c;
    EXPECT_THROW(CIMValue(Uint16(65)).get(c), TypeMismatchException);
    CIMDateTime dt;
    EXPECT_THROW(CIMValue(String("20200101000000.000000+000")).get(dt), TypeMismatchException);

    try
    {
        CIMValue().get(text);
    }
    catch (const TypeMismatchException& e)
    {
        EXPECT_EQ(e.getMessage(), "type mismatch");
    }
    EXPECT_EQ(text, "unchanged");
}

TEST(CIMValueTest, ValuesRoundTripThroughGet)
{
    Array<String> names;
    names.append("a");
    names.append("b");
    CIMValue v(names);
    names.append("c");  // the value keeps its own copy
    Array<String> out;
    v.get(out);
    EXPECT_EQ(out.size(), 2u);
    EXPECT_EQ(v.getArraySize(), 2u);

    CIMObjectPath path(String("//h/root:S.Name=\"x\""));
    CIMObjectPath gotPath;
    CIMValue(path).get(gotPath);
    EXPECT_TRUE(gotPath.identical(path));

    Sint8 s8 = 0;
    CIMValue(Sint8(-7)).get(s8);
    EXPECT_EQ(s8, -7);
}

TEST(CIMValueTest, ToString)
{
    struct Case { CIMValue value; const char* text; };
    Array<Uint32> fives(2, 5);
    Array<Boolean> flags;
    flags.append(true);
    flags.append(false);
    const Case cases[] = {
        { CIMValue(false), "FALSE" },
        { CIMValue(Sint8(-128)), "-128" },
        { CIMValue(Uint8(255)), "255" },
        { CIMValue(Uint64(18446744073709551615ULL)), "18446744073709551615" },
        { CIMValue(Sint64(-9223372036854775807LL - 1)), "-9223372036854775808" },
        { CIMValue(Char16('z')), "z" },
        { CIMValue(fives), "5 5 " },
        { CIMValue(flags), "TRUE FALSE " },
        { CIMValue(Array<String>()), "" },
        { CIMValue(CIMDateTime()), "00000000000000.000000:000" },
        { CIMValue(CIMObjectPath(String("S.b=2,a=\"x\""))), "S.a=\"x\",b=2" },
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.value.toString(), c.text);
    }
}

TEST(CIMValueTest, EqualityComparesTypeAndValue)
{
    EXPECT_TRUE(CIMValue(Uint16(3)) == CIMValue(Uint16(3)));
    EXPECT_FALSE(CIMValue(Uint16(3)) == CIMValue(Uint32(3)));
    EXPECT_FALSE(CIMValue(String("a")) == CIMValue(String("A")));
    EXPECT_TRUE(CIMValue(CIMObjectPath(String("S.k=\"v\""))) == CIMValue(CIMObjectPath(String("s.K=\"v\""))));
    Array<Uint8> a(2, 1), b(2, 1);
    b[1] = 2;
    EXPECT_FALSE(CIMValue(a) == CIMValue(b));
    b[1] = 1;
    EXPECT_TRUE(CIMValue(a) == CIMValue(b));
}

TEST(CIMValueTest, InstancesAreClonedInAndOut)
{
    CIMInstance inst(CIMName("C"));
    inst.addProperty(CIMProperty(CIMName("P"), CIMValue(Uint32(1))));
    CIMValue v(inst);
    EXPECT_EQ(v.getType(), CIMTYPE_INSTANCE);

    inst.getProperty(0).setValue(CIMValue(Uint32(2)));  // not seen by v
    CIMInstance out;
    v.get(out);
    Uint32 p = 0;
    out.getProperty(0).getValue().get(p);
    EXPECT_EQ(p, 1u);

    out.getProperty(0).setValue(CIMValue(Uint32(3)));  // a clone: v unchanged
    CIMInstance again;
    v.get(again);
    again.getProperty(0).getValue().get(p);
    EXPECT_EQ(p, 1u);

    CIMObject obj;
    EXPECT_THROW(v.get(obj), TypeMismatchException);  // object and instance are distinct
    EXPECT_THROW(CIMValue{CIMInstance()}, UninitializedObjectException);

    CIMValue asObject{CIMObject(inst)};
    EXPECT_EQ(asObject.getType(), CIMTYPE_OBJECT);
    EXPECT_THROW(asObject.get(out), TypeMismatchException);

    Array<CIMInstance> list;
    list.append(inst);
    CIMValue arrayValue(list);
    EXPECT_EQ(arrayValue.getArraySize(), 1u);
    EXPECT_TRUE(arrayValue == CIMValue(list));
}

} // namespace
