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

// The typed tests probe refusals against a far type; these are the close
// relatives a converting get() would wrongly accept.
TEST(CIMValueTest, GetDoesNotConvertBetweenRelatedTypes)
{
    String text;
    Uint32 u32 = 9;
    Char16 c;
    CIMDateTime dt;
    EXPECT_THROW(CIMValue().get(text), TypeMismatchException);  // the default null is boolean
    EXPECT_THROW(CIMValue(5).get(u32), TypeMismatchException);  // sint32, not uint32
    EXPECT_THROW(CIMValue(Uint16(65)).get(c), TypeMismatchException);
    EXPECT_THROW(CIMValue(String("20200101000000.000000+000")).get(dt), TypeMismatchException);
}

TEST(CIMValueTest, ToString)
{
    struct Case
    {
        CIMValue value;
        const char* text;
    };
    Array<Uint32> fives(2, 5);
    Array<Boolean> flags;
    flags.append(true);
    flags.append(false);
    Array<CIMObjectPath> refs;
    refs.append(CIMObjectPath(String("A.k=1")));
    refs.append(CIMObjectPath(String("B")));
    const Case cases[] = {
        {CIMValue(false), "FALSE"},
        {CIMValue(Sint8(-128)), "-128"},
        {CIMValue(Uint8(255)), "255"},
        {CIMValue(Uint64(18446744073709551615ULL)), "18446744073709551615"},
        {CIMValue(Sint64(-9223372036854775807LL - 1)), "-9223372036854775808"},
        {CIMValue(Char16('z')), "z"},
        {CIMValue(fives), "5 5 "},
        {CIMValue(flags), "TRUE FALSE "},
        {CIMValue(Array<String>()), ""},
        {CIMValue(CIMDateTime()), "00000000000000.000000:000"},
        {CIMValue(CIMObjectPath(String("S.b=2,a=\"x\""))), "S.a=\"x\",b=2"},
        {CIMValue(refs), "A.k=1 B "},
        {CIMValue(Array<CIMDateTime>(1, CIMDateTime(String("00000001000000.000000:000")))),
            "00000001000000.000000:000 "},
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

}  // namespace
