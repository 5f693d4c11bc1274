// CIMPropertyList (null versus empty, value semantics) and CIMParamValue
// (a shared handle).
#include <gtest/gtest.h>

#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

using namespace Pegasus;

TEST(PropertyList, NullMeansAllAndEmptyMeansNone)
{
    CIMPropertyList all;
    CIMPropertyList none{Array<CIMName>()};
    Array<CIMName> names;
    names.append(CIMName("Name"));
    names.append(CIMName("Size"));
    CIMPropertyList some(names);

    EXPECT_TRUE(all.isNull());
    EXPECT_FALSE(none.isNull());
    EXPECT_EQ(none.size(), 0u);

    EXPECT_TRUE(all.useThisProperty(CIMName("Anything")));
    EXPECT_FALSE(all.contains(CIMName("Anything")));
    EXPECT_FALSE(none.useThisProperty(CIMName("Name")));
    EXPECT_TRUE(some.useThisProperty(CIMName("SIZE")));
    EXPECT_FALSE(some.useThisProperty(CIMName("Owner")));

    EXPECT_EQ(all.toString(), String("NULL"));
    EXPECT_EQ(none.toString(), String("EMPTY"));
    EXPECT_EQ(some.toString(), String("Name, Size"));

    some.clear();
    EXPECT_TRUE(some.isNull());
    EXPECT_EQ(some.size(), 0u);
}

TEST(PropertyList, CopiesAreIndependentValues)
{
    Array<CIMName> names;
    names.append(CIMName("Name"));
    CIMPropertyList a(names);
    CIMPropertyList b = a;
    b.clear();
    EXPECT_FALSE(a.isNull());
    EXPECT_TRUE(a[0].equal(CIMName("name")));
    EXPECT_THROW(a[1], IndexOutOfBoundsException);

    b = a;
    Array<String> more;
    more.append(String("Size"));
    b.append(more);
    EXPECT_EQ(a.size(), 1u);
    EXPECT_EQ(b.getPropertyNameArray().size(), 2u);

    CIMPropertyList fromNull;
    Array<String> nothing;
    fromNull.append(nothing);
    EXPECT_FALSE(fromNull.isNull());
}

TEST(PropertyList, RejectsBadNamesWithoutChange)
{
    Array<CIMName> withNull;
    withNull.append(CIMName("Name"));
    withNull.append(CIMName());
    EXPECT_THROW(CIMPropertyList{withNull}, UninitializedObjectException);

    CIMPropertyList list;
    EXPECT_THROW(list.set(withNull), UninitializedObjectException);
    EXPECT_TRUE(list.isNull());

    Array<String> bad;
    bad.append(String("Good"));
    bad.append(String("not valid"));
    EXPECT_THROW(list.append(bad), InvalidNameException);
    EXPECT_TRUE(list.isNull());

    list.appendCIMNameTag(42);
    EXPECT_EQ(list.getCIMNameTag(0), 42u);
    EXPECT_THROW(list.getCIMNameTag(1), IndexOutOfBoundsException);
}

TEST(ParamValue, CopiesShareAndCloneDetaches)
{
    CIMParamValue pv(String("Count"), CIMValue(Uint32(1)), false);
    CIMParamValue copy = pv;
    CIMValue two(Uint32(2));
    copy.setValue(two);
    copy.setIsTyped();
    String renamed("Total");
    copy.setParameterName(renamed);

    EXPECT_TRUE(pv.getValue().equal(CIMValue(Uint32(2))));
    EXPECT_TRUE(pv.isTyped());
    EXPECT_EQ(pv.getParameterName(), String("Total"));

    CIMParamValue clone = pv.clone();
    CIMValue three(Uint32(3));
    clone.setValue(three);
    EXPECT_TRUE(pv.getValue().equal(CIMValue(Uint32(2))));

    String empty;
    EXPECT_THROW(pv.setParameterName(empty), UninitializedObjectException);
    EXPECT_THROW(CIMParamValue(String(), CIMValue(true)), UninitializedObjectException);
}

TEST(ParamValue, MayHoldReferenceArraysUnlikeProperties)
{
    Array<CIMObjectPath> refs;
    refs.append(CIMObjectPath("Test_Disk.Name=\"a\""));
    refs.append(CIMObjectPath("Test_Disk.Name=\"b\""));
    CIMParamValue pv(String("Elements"), CIMValue(refs));
    Array<CIMObjectPath> out;
    pv.getValue().get(out);
    EXPECT_EQ(out.size(), 2u);
    EXPECT_THROW(CIMProperty(CIMName("Elements"), CIMValue(refs)), TypeMismatchException);
}

TEST(QualifierDeclarations, ScopeFlavorAndArraySize)
{
    CIMQualifierDecl key(CIMName("Key"), CIMValue(false), CIMScope::PROPERTY + CIMScope::REFERENCE,
        CIMFlavor::DISABLEOVERRIDE + CIMFlavor::TOSUBCLASS);
    EXPECT_TRUE(key.getScope().hasScope(CIMScope::REFERENCE));
    EXPECT_FALSE(key.getScope().hasScope(CIMScope::CLASS));
    EXPECT_EQ(key.getScope().toString(), String("PROPERTY REFERENCE"));
    EXPECT_EQ(CIMScope::ANY.toString(), String("ANY"));
    EXPECT_TRUE(key.getFlavor().hasFlavor(CIMFlavor::DISABLEOVERRIDE));
    EXPECT_FALSE(key.getFlavor().hasFlavor(CIMFlavor::OVERRIDABLE));

    CIMQualifierDecl plain(CIMName("Description"), CIMValue(CIMTYPE_STRING, false), CIMScope::ANY);
    EXPECT_TRUE(plain.getFlavor().equal(CIMFlavor::OVERRIDABLE + CIMFlavor::TOSUBCLASS));
    EXPECT_TRUE(plain.clone().identical(plain));
    EXPECT_FALSE(plain.identical(key));

    EXPECT_THROW(CIMQualifierDecl(CIMName("A"), CIMValue(Uint32(1)), CIMScope::ANY, CIMFlavor::DEFAULTS, 2),
        TypeMismatchException);
}
