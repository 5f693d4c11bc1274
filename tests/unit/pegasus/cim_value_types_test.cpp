// CIMValue over every CIM type: each scalar and array type keeps its type
// code, reads back what was stored and refuses every other type. The
// members are generated per type, so a slip in one of them shows up here.
#include <gtest/gtest.h>

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>

using namespace Pegasus;

namespace
{

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
