// CIMValue: typed nulls, the get rules, toString, construction traps and
// embedded instances; and over every CIM type: each scalar and array type
// keeps its type code, reads back what was stored and refuses every other
// type. The members are generated per type, so a slip in one of them shows
// up here.
#include <type_traits>

#include <gtest/gtest.h>

#define PEGASUS_USE_DEPRECATED_INTERFACES

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>

#include "sdk_fixtures.h"

using namespace Pegasus;

namespace
{

// Which constructor a call picks is decided at compile time; these pin it.
static_assert(!std::is_constructible<CIMValue, long>::value, "long must stay ambiguous");
static_assert(!std::is_constructible<CIMValue, unsigned long>::value, "size_t must stay ambiguous");
static_assert(!std::is_convertible<int, CIMStatusCode>::value, "no implicit int -> status code");

TEST(CIMValueTest, ConstructionTraps)
{
    // Plain literals pick by their C++ type; each SDK type's own code is
    // checked for every type below.
    CIMValue literal("text");  // a pointer converts to bool first
    EXPECT_EQ(literal.getType(), CIMTYPE_BOOLEAN);
    EXPECT_EQ(literal.toString(), "TRUE");
    EXPECT_EQ(CIMValue(5).getType(), CIMTYPE_SINT32);
    EXPECT_EQ(CIMValue(5u).getType(), CIMTYPE_UINT32);
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
    EXPECT_EQ(out.getProperty(0).getValue(), CIMValue(Uint32(1)));

    out.getProperty(0).setValue(CIMValue(Uint32(3)));  // a clone: v unchanged
    CIMInstance again;
    v.get(again);
    EXPECT_EQ(again.getProperty(0).getValue(), CIMValue(Uint32(1)));

    CIMObject obj;
    EXPECT_THROW(v.get(obj), TypeMismatchException);  // object and instance are distinct

    CIMValue asObject{CIMObject(inst)};
    EXPECT_EQ(asObject.getType(), CIMTYPE_OBJECT);
    EXPECT_THROW(asObject.get(out), TypeMismatchException);

    Array<CIMInstance> list;
    list.append(inst);
    CIMValue arrayValue(list);
    EXPECT_EQ(arrayValue.getArraySize(), 1u);
    EXPECT_TRUE(arrayValue == CIMValue(list));
}

// A sample value per type, and how to compare two of them.
template <class T>
struct Sample;
#define SAMPLE(T, CODE, VALUE, OTHER)                                                                        \
    template <>                                                                                              \
    struct Sample<T>                                                                                         \
    {                                                                                                        \
        static constexpr CIMType code = CODE;                                                                \
        static T value() { return VALUE; }                                                                   \
        static T other() { return OTHER; }                                                                   \
        static bool same(const T& a, const T& b) { return a == b; }                                          \
    };
SAMPLE(Boolean, CIMTYPE_BOOLEAN, true, false)
SAMPLE(Uint8, CIMTYPE_UINT8, 200, 1)
SAMPLE(Sint8, CIMTYPE_SINT8, -100, 1)
SAMPLE(Uint16, CIMTYPE_UINT16, 60000, 1)
SAMPLE(Sint16, CIMTYPE_SINT16, -30000, 1)
SAMPLE(Uint32, CIMTYPE_UINT32, 4000000000u, 1)
SAMPLE(Sint32, CIMTYPE_SINT32, -2000000000, 1)
SAMPLE(Uint64, CIMTYPE_UINT64, 18000000000000000000ULL, 1)
SAMPLE(Sint64, CIMTYPE_SINT64, -9000000000000000000LL, 1)
SAMPLE(Real32, CIMTYPE_REAL32, 1.5f, 2.0f)
SAMPLE(Real64, CIMTYPE_REAL64, -2.25, 3.0)
SAMPLE(Char16, CIMTYPE_CHAR16, Char16(0x263A), Char16('a'))
SAMPLE(String, CIMTYPE_STRING, String("value"), String("other"))
SAMPLE(CIMDateTime, CIMTYPE_DATETIME, CIMDateTime(String("20200101000000.000000+000")), CIMDateTime())
SAMPLE(CIMObjectPath, CIMTYPE_REFERENCE, CIMObjectPath(String("//h/root:C.k=1")), CIMObjectPath(String("D")))
#undef SAMPLE

CIMInstance instanceOf(const char* className, Uint32 p)
{
    CIMInstance inst{CIMName(className)};
    inst.addProperty(CIMProperty(CIMName("P"), CIMValue(p)));
    return inst;
}

template <>
struct Sample<CIMInstance>
{
    static constexpr CIMType code = CIMTYPE_INSTANCE;
    static CIMInstance value() { return instanceOf("C", 1); }
    static CIMInstance other() { return instanceOf("C", 2); }
    static bool same(const CIMInstance& a, const CIMInstance& b) { return a.identical(b); }
};

template <>
struct Sample<CIMObject>
{
    static constexpr CIMType code = CIMTYPE_OBJECT;
    static CIMObject value() { return CIMObject(instanceOf("C", 1)); }
    static CIMObject other() { return CIMObject(instanceOf("D", 1)); }
    static bool same(const CIMObject& a, const CIMObject& b) { return a.identical(b); }
};

template <class T>
class CIMValueOfType : public ::testing::Test
{};

typedef ::testing::Types<Boolean, Uint8, Sint8, Uint16, Sint16, Uint32, Sint32, Uint64, Sint64, Real32,
    Real64, Char16, String, CIMDateTime, CIMObjectPath, CIMInstance, CIMObject>
    AllTypes;
TYPED_TEST_SUITE(CIMValueOfType, AllTypes);

// A value of another type than T to probe the refusals with.
template <class T>
CIMValue otherTypeValue()
{
    return Sample<T>::code == CIMTYPE_STRING ? CIMValue(Uint8(1)) : CIMValue(String("x"));
}

TYPED_TEST(CIMValueOfType, ScalarStoresAndReadsBack)
{
    typedef TypeParam T;
    CIMValue v(Sample<T>::value());
    EXPECT_EQ(v.getType(), Sample<T>::code);
    EXPECT_FALSE(v.isArray());
    EXPECT_FALSE(v.isNull());
    EXPECT_EQ(v.getArraySize(), 0u);
    T out = Sample<T>::other();
    v.get(out);
    EXPECT_TRUE(Sample<T>::same(out, Sample<T>::value()));

    // set() replaces type and value.
    CIMValue w = otherTypeValue<T>();
    w.set(Sample<T>::value());
    EXPECT_TRUE(w == v);
    EXPECT_FALSE(CIMValue(Sample<T>::other()) == v);
}

TYPED_TEST(CIMValueOfType, ArrayStoresAndReadsBack)
{
    typedef TypeParam T;
    Array<T> in;
    in.append(Sample<T>::value());
    in.append(Sample<T>::other());
    CIMValue v(in);
    EXPECT_EQ(v.getType(), Sample<T>::code);
    EXPECT_TRUE(v.isArray());
    EXPECT_EQ(v.getArraySize(), 2u);
    Array<T> out;
    v.get(out);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_TRUE(Sample<T>::same(out[0], Sample<T>::value()));
    EXPECT_TRUE(Sample<T>::same(out[1], Sample<T>::other()));

    CIMValue w;
    w.set(in);
    EXPECT_TRUE(w == v);
    in.remove(1);
    EXPECT_FALSE(CIMValue(in) == v);
}

TYPED_TEST(CIMValueOfType, TypedNullsAndRefusals)
{
    typedef TypeParam T;
    T out = Sample<T>::other();
    CIMValue null(Sample<T>::code, false);
    null.get(out);  // the right type: no exception, x unchanged
    EXPECT_TRUE(Sample<T>::same(out, Sample<T>::other()));

    Array<T> list;
    EXPECT_THROW(null.get(list), TypeMismatchException);
    EXPECT_THROW(CIMValue(Sample<T>::code, true).get(out), TypeMismatchException);
    EXPECT_THROW(otherTypeValue<T>().get(out), TypeMismatchException);
    EXPECT_THROW(CIMValue(CIMTYPE_STRING == Sample<T>::code ? CIMTYPE_UINT8 : CIMTYPE_STRING, false).get(out),
        TypeMismatchException);
}

TEST(CIMValueCopies, ChangingACopyLeavesTheOriginal)
{
    CIMValue a(String("a"));
    CIMValue b(a);
    b.set(Uint32(1));
    CIMValue c;
    c.assign(a);
    c.setNullValue(CIMTYPE_STRING, true);
    String s;
    a.get(s);
    EXPECT_EQ(s, "a");
    EXPECT_EQ(b.getType(), CIMTYPE_UINT32);
    EXPECT_TRUE(c.isNull());

    Array<CIMValue> values;
    values.append(a);
    values.append(b);
    Array<CIMValue> copy(values);
    copy[0].clear();
    EXPECT_FALSE(values[0].isNull());
}

}  // namespace
