// Classes and instances: building instances from classes, filtering,
// property and path rules, key handling; property lists (null versus empty,
// value semantics), parameter values (a shared handle) and qualifier
// declarations.
#include <gtest/gtest.h>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMQualifierDecl.h>

#include "sdk_fixtures.h"

using namespace Pegasus;
using namespace sdktest;

using Names = std::vector<std::string>;

TEST(BuildInstance, NullListGivesEveryPropertyWithItsDefaultAndDeclaredType)
{
    CIMClass cls = makeDiskClass();
    CIMInstance inst = cls.buildInstance(false, false, CIMPropertyList());
    EXPECT_TRUE(inst.getClassName().equal(CIMName("Test_Disk")));
    EXPECT_EQ(inst.getPath().toString(), "Test_Disk");  // no host, namespace or keys

    // Each property has its default, or a null of its declared type.
    EXPECT_EQ(inst.getProperty(0).getValue(), CIMValue(CIMTYPE_STRING, false));
    EXPECT_EQ(inst.getProperty(1).getValue(), CIMValue(Uint64(100)));
    EXPECT_EQ(inst.getProperty(2).getValue(), CIMValue(CIMTYPE_STRING, true));
    EXPECT_EQ(inst.getProperty(3).getValue(), CIMValue(CIMTYPE_REFERENCE, false));
    EXPECT_TRUE(inst.getProperty(3).getReferenceClassName().equal(CIMName("Test_Host")));

    // Without qualifiers and class origins; the propagated flag is kept.
    CIMConstProperty comment = inst.getProperty(4);
    EXPECT_EQ(inst.getQualifierCount(), 0u);
    EXPECT_EQ(comment.getQualifierCount(), 0u);
    EXPECT_EQ(inst.getProperty(0).getQualifierCount(), 0u);
    EXPECT_TRUE(comment.getClassOrigin().isNull());
    EXPECT_TRUE(comment.getPropagated());
}

TEST(BuildInstance, ResultIsIndependentOfTheClassAndKeepsDeclaredTypes)
{
    CIMClass cls = makeDiskClass();
    CIMInstance first = cls.buildInstance(false, false, CIMPropertyList());
    CIMInstance second = cls.buildInstance(false, false, CIMPropertyList());

    Uint32 pos = first.findProperty(CIMName("Size"));
    first.getProperty(pos).setValue(CIMValue(Uint64(7)));
    first.removeProperty(0);

    EXPECT_TRUE(second.getProperty(pos).getValue().equal(CIMValue(Uint64(100))));
    EXPECT_TRUE(cls.getProperty(pos).getValue().equal(CIMValue(Uint64(100))));
    EXPECT_EQ(cls.getPropertyCount(), 5u);

    // The skeleton keeps the declared type, even where its value is null.
    EXPECT_THROW(second.getProperty(0).setValue(CIMValue(Uint32(1))), TypeMismatchException);
    EXPECT_NO_THROW(second.getProperty(0).setValue(CIMValue(String("disk1"))));
}

// --- property lists: buildInstance, filter, instanceFilter --------------------

struct FilterCase
{
    const char* title;
    bool nullList;
    std::vector<const char*> names;
    Names expected;
};

void PrintTo(const FilterCase& c, std::ostream* os)
{
    *os << c.title;
}

class InstanceFilter : public ::testing::TestWithParam<FilterCase>
{};

// Listed properties are kept in class order, names ignoring case.
TEST_P(InstanceFilter, KeepsOnlyListedPropertiesInEveryForm)
{
    const FilterCase& c = GetParam();
    CIMPropertyList list;
    if (!c.nullList)
    {
        Array<CIMName> names;
        for (const char* n : c.names)
            names.append(CIMName(n));
        list.set(names);
    }
    CIMClass cls = makeDiskClass();
    EXPECT_EQ(propertyNames(cls.buildInstance(false, false, list)), c.expected);
    EXPECT_EQ(propertyNames(CIMConstClass(cls).buildInstance(false, false, list)), c.expected);

    CIMInstance viaFilter = cls.buildInstance(true, true, CIMPropertyList());
    viaFilter.filter(true, true, list);
    EXPECT_EQ(propertyNames(viaFilter), c.expected);

    CIMInstance viaInstanceFilter = cls.buildInstance(true, true, CIMPropertyList());
    viaInstanceFilter.instanceFilter(true, true, list);
    EXPECT_EQ(propertyNames(viaInstanceFilter), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Lists, InstanceFilter,
    ::testing::Values(FilterCase{"NullKeepsAll", true, {}, {"Name", "Size", "Tags", "Owner", "Comment"}},
        FilterCase{"EmptyKeepsNone", false, {}, {}},
        FilterCase{"NamesIgnoreCase", false, {"COMMENT", "name"}, {"Name", "Comment"}},
        FilterCase{"UnknownNamesIgnored", false, {"Nope", "tags"}, {"Tags"}}),
    [](const ::testing::TestParamInfo<FilterCase>& info) { return info.param.title; });

TEST(InstanceFilter, DropsQualifiersAndClassOriginsWhenNotIncluded)
{
    CIMInstance inst = makeDiskClass().buildInstance(true, true, CIMPropertyList());
    CIMInstance kept = inst.clone();

    // Built with qualifiers and class origins, and kept by a filter that includes them.
    kept.filter(true, true, CIMPropertyList());
    EXPECT_NE(kept.findQualifier(CIMName("description")), PEG_NOT_FOUND);
    EXPECT_EQ(kept.getQualifierCount(), 1u);
    EXPECT_NE(kept.getProperty(4).findQualifier(CIMName("Description")), PEG_NOT_FOUND);
    EXPECT_NE(kept.getProperty(0).findQualifier(CIMName("KEY")), PEG_NOT_FOUND);
    EXPECT_TRUE(kept.getProperty(4).getClassOrigin().equal(CIMName("Test_Base")));

    inst.filter(false, false, CIMPropertyList());
    EXPECT_EQ(inst.getQualifierCount(), 0u);
    for (Uint32 i = 0; i < inst.getPropertyCount(); ++i)
    {
        EXPECT_EQ(inst.getProperty(i).getQualifierCount(), 0u);
        EXPECT_TRUE(inst.getProperty(i).getClassOrigin().isNull());
    }
}

// --- properties of an object --------------------------------------------------

TEST(ObjectProperties, AddFindRemoveFollowNameAndIndexRules)
{
    CIMInstance inst(CIMName("Test_Disk"));
    inst.addProperty(CIMProperty(CIMName("a"), CIMValue(Uint32(1))))
        .addProperty(CIMProperty(CIMName("b"), CIMValue(Uint32(2))))
        .addProperty(CIMProperty(CIMName("c"), CIMValue(Uint32(3))));

    EXPECT_EQ(messageOf<AlreadyExistsException>(
                  [&] { inst.addProperty(CIMProperty(CIMName("B"), CIMValue(Uint32(9)))); }),
        "already exists: property \"B\"");
    EXPECT_THROW(inst.addProperty(CIMProperty()), UninitializedObjectException);

    EXPECT_EQ(inst.findProperty(CIMName("C")), 2u);
    EXPECT_EQ(inst.findProperty(CIMName("d")), PEG_NOT_FOUND);
    EXPECT_THROW(inst.getProperty(3), IndexOutOfBoundsException);
    EXPECT_THROW(inst.removeProperty(3), IndexOutOfBoundsException);

    inst.removeProperty(0);
    EXPECT_EQ(propertyNames(inst), (Names{"b", "c"}));
    EXPECT_EQ(inst.findProperty(CIMName("c")), 1u);
}

TEST(ObjectProperties, AddedHandleStaysSharedAndCannotBeRenamedWhileOwned)
{
    CIMInstance inst(CIMName("Test_Disk"));
    CIMProperty p(CIMName("Size"), CIMValue(Uint64(1)));
    inst.addProperty(p);

    p.setValue(CIMValue(Uint64(2)));
    EXPECT_TRUE(inst.getProperty(0).getValue().equal(CIMValue(Uint64(2))));
    inst.getProperty(0).setValue(CIMValue(Uint64(3)));
    EXPECT_TRUE(p.getValue().equal(CIMValue(Uint64(3))));

    EXPECT_THROW(p.setName(CIMName("Other")), Exception);
    inst.removeProperty(0);
    EXPECT_NO_THROW(p.setName(CIMName("Other")));

    // Held by two containers, one of which went away: still owned until the
    // other goes too.
    {
        CIMInstance first("Test_A");
        first.addProperty(p);
        {
            CIMInstance second("Test_B");
            second.addProperty(p);
        }
        EXPECT_THROW(p.setName(CIMName("Again")), Exception);
    }
    p.setName(CIMName("Again"));
    EXPECT_EQ(p.getName().getString(), String("Again"));

    CIMQualifier q = keyQualifier();
    p.addQualifier(q);
    EXPECT_THROW(q.setName(CIMName("Renamed")), Exception);
    EXPECT_THROW(p.addQualifier(CIMQualifier(CIMName("key"), CIMValue(false))), AlreadyExistsException);
}

TEST(PropertyRules, ConstructorRejectsInconsistentDeclarations)
{
    Array<CIMObjectPath> refs;
    refs.append(CIMObjectPath("Test_Host.Name=\"h\""));
    Array<Uint32> three(3u, Uint32(0));

    EXPECT_THROW(CIMProperty(CIMName(), CIMValue(Uint32(1))), UninitializedObjectException);
    EXPECT_THROW(CIMProperty(CIMName("R"), CIMValue(refs)), TypeMismatchException);
    EXPECT_THROW(
        CIMProperty(CIMName("S"), CIMValue(String("x")), 0, CIMName("Test_Host")), TypeMismatchException);
    EXPECT_THROW(CIMProperty(CIMName("A"), CIMValue(Uint32(1)), 2), TypeMismatchException);
    EXPECT_THROW(CIMProperty(CIMName("A"), CIMValue(three), 2), TypeMismatchException);

    EXPECT_NO_THROW(CIMProperty(CIMName("A"), CIMValue(three), 3));
    EXPECT_NO_THROW(CIMProperty(CIMName("A"), CIMValue(CIMTYPE_UINT32, true), 3));
    EXPECT_NO_THROW(CIMProperty(CIMName("R"), CIMValue(refs[0]), 0, CIMName("Test_Host")));
}

TEST(PropertyRules, SetValueKeepsTypeAndArrayness)
{
    CIMProperty p(CIMName("Port"), CIMValue(Uint16(80)));
    EXPECT_THROW(p.setValue(CIMValue(Uint32(80))), TypeMismatchException);
    EXPECT_THROW(p.setValue(CIMValue(Array<Uint16>())), TypeMismatchException);
    EXPECT_THROW(p.setValue(CIMValue()), TypeMismatchException);  // null, but boolean
    EXPECT_NO_THROW(p.setValue(CIMValue(CIMTYPE_UINT16, false)));
    EXPECT_TRUE(p.getValue().isNull());
    EXPECT_EQ(p.getType(), CIMTYPE_UINT16);
}

TEST(PropertyRules, IdenticalComparesContentNotHandles)
{
    CIMProperty a(CIMName("Name"), CIMValue(String("x")));
    a.addQualifier(keyQualifier());
    CIMProperty b = a.clone();
    EXPECT_TRUE(a.identical(b));
    b.setClassOrigin(CIMName("Elsewhere"));  // bookkeeping only
    EXPECT_TRUE(a.identical(b));
    b.setValue(CIMValue(String("y")));
    EXPECT_FALSE(a.identical(b));
    CIMProperty c = a.clone();
    c.removeQualifier(0);
    EXPECT_FALSE(a.identical(c));
}

// --- paths and keys --------------------------------------------------------

TEST(ObjectPath, SetPathChecksTheClassAndStoresThePathAsGiven)
{
    CIMInstance inst(CIMName("Test_Disk"));
    EXPECT_THROW(inst.setPath(CIMObjectPath()), UninitializedObjectException);
    EXPECT_THROW(inst.setPath(CIMObjectPath("Other.Name=\"d\"")), TypeMismatchException);

    CIMObjectPath path("//host1/root/zda:test_disk.Name=\"d1\"");
    inst.setPath(path);
    EXPECT_TRUE(inst.getPath().identical(path));
    EXPECT_EQ(inst.getPath().getHost(), String("host1"));
}

TEST(ClassKeys, KeyNamesBuildPathAndQualifierHelpers)
{
    CIMClass cls = makeDiskClass();
    Array<CIMName> keys;
    keys.append(CIMName("stale"));
    cls.getKeyNames(keys);
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_TRUE(keys[0].equal(CIMName("Name")));
    EXPECT_TRUE(cls.hasKeys());
    EXPECT_FALSE(CIMClass(CIMName("Test_Keyless")).hasKeys());

    CIMInstance inst = cls.buildInstance(false, false, CIMPropertyList());
    inst.getProperty(0).setValue(CIMValue(String("d1")));
    CIMObjectPath path = inst.buildPath(cls);
    EXPECT_EQ(path.toString(), String("Test_Disk.Name=\"d1\""));

    inst.removeProperty(0);
    EXPECT_THROW(inst.buildPath(cls), NoSuchProperty);

    EXPECT_FALSE(cls.isAssociation());
    cls.addQualifier(CIMQualifier(CIMName("Association"), CIMValue(true)));
    cls.addQualifier(CIMQualifier(CIMName("Abstract"), CIMValue(false)));
    EXPECT_TRUE(cls.isAssociation());
    EXPECT_FALSE(cls.isAbstract());
}

TEST(ClassMethods, MethodsAndParametersKeepOrderAndUniqueNames)
{
    CIMClass cls(CIMName("Test_Service"));
    CIMMethod m(CIMName("Create"), CIMTYPE_UINT32);
    m.addParameter(CIMParameter(CIMName("Name"), CIMTYPE_STRING))
        .addParameter(CIMParameter(CIMName("Target"), CIMTYPE_REFERENCE, false, 0, CIMName("Test_Disk")))
        .addParameter(CIMParameter(CIMName("Sizes"), CIMTYPE_UINT64, true));
    cls.addMethod(m);

    EXPECT_THROW(cls.addMethod(CIMMethod(CIMName("create"), CIMTYPE_UINT32)), AlreadyExistsException);
    EXPECT_THROW(m.addParameter(CIMParameter(CIMName("NAME"), CIMTYPE_STRING)), AlreadyExistsException);
    EXPECT_THROW(
        CIMParameter(CIMName("P"), CIMTYPE_STRING, false, 0, CIMName("Test_Disk")), TypeMismatchException);

    CIMConstMethod found = CIMConstClass(cls).getMethod(cls.findMethod(CIMName("CREATE")));
    EXPECT_EQ(found.getParameterCount(), 3u);
    EXPECT_EQ(found.findParameter(CIMName("sizes")), 2u);
    EXPECT_TRUE(found.getParameter(2).isArray());
    EXPECT_TRUE(found.getParameter(1).getReferenceClassName().equal(CIMName("Test_Disk")));

    // A cloned class has its own methods.
    CIMClass copy = cls.clone();
    copy.getMethod(0).removeParameter(0);
    EXPECT_EQ(cls.getMethod(0).getParameterCount(), 3u);
    EXPECT_FALSE(copy.identical(cls));
    EXPECT_TRUE(cls.clone().identical(cls));
}

TEST(ObjectText, ToStringShowsClassAndValues)
{
    CIMInstance inst = makeDiskClass().buildInstance(false, false, listOf({"Name", "Size"}));
    inst.getProperty(0).setValue(CIMValue(String("d\"1")));
    String text = CIMObject(inst).toString();
    EXPECT_NE(text.find(String("instance of Test_Disk")), PEG_NOT_FOUND);
    EXPECT_NE(text.find(String("Name = \"d\\\"1\";")), PEG_NOT_FOUND);
    EXPECT_NE(text.find(String("Size = 100;")), PEG_NOT_FOUND);
}

TEST(ObjectText, ClassRenderingShowsDeclarations)
{
    CIMClass cls = makeDiskClass();
    CIMMethod create(CIMName("Create"), CIMTYPE_UINT32);
    create.addParameter(CIMParameter(CIMName("Names"), CIMTYPE_STRING, true));
    cls.addMethod(create);
    String text = CIMObject(cls).toString();

    for (const char* part :
        {"[Description(\"a disk\")] class Test_Disk : Test_Base", "[Key(TRUE)] string Name;",
            "uint64 Size = 100;", "string Tags[];", "Test_Host REF Owner;", "uint32 Create(string Names[]);"})
        EXPECT_NE(text.find(String(part)), PEG_NOT_FOUND) << part << "\n" << text;
}

TEST(ObjectIdentity, IdenticalComparesKindPathQualifiersAndProperties)
{
    CIMInstance a = makeDiskClass().buildInstance(false, false, CIMPropertyList());
    CIMInstance b = makeDiskClass().buildInstance(false, false, CIMPropertyList());
    EXPECT_TRUE(a.identical(b));

    b.setPath(CIMObjectPath("Test_Disk.Name=\"d\""));
    EXPECT_FALSE(a.identical(b));
    a.setPath(CIMObjectPath("test_disk.name=\"d\""));
    EXPECT_TRUE(a.identical(b));

    a.addQualifier(description("x"));
    EXPECT_FALSE(a.identical(b));

    // A class and an instance of the same name and content differ in kind.
    CIMObject cls = CIMClass(CIMName("Test_Empty"));
    CIMObject inst = CIMInstance(CIMName("Test_Empty"));
    EXPECT_FALSE(cls.identical(inst));
}

TEST(ObjectQualifiers, ElementsShareTheNameAndIndexRules)
{
    CIMClass cls(CIMName("Test_Assoc"));
    cls.addQualifier(CIMQualifier(CIMName("Association"), CIMValue(true)))
        .addQualifier(CIMQualifier(CIMName("Version"), CIMValue(String("1.0"))));
    EXPECT_THROW(
        cls.addQualifier(CIMQualifier(CIMName("ASSOCIATION"), CIMValue(false))), AlreadyExistsException);
    EXPECT_THROW(cls.addQualifier(CIMQualifier()), UninitializedObjectException);
    EXPECT_THROW(cls.getQualifier(2), IndexOutOfBoundsException);

    // A qualifier taken from the class writes through.
    cls.getQualifier(cls.findQualifier(CIMName("association"))).setValue(CIMValue(false));
    EXPECT_FALSE(cls.isAssociation());

    cls.removeQualifier(0);
    EXPECT_EQ(cls.findQualifier(CIMName("Version")), 0u);
    EXPECT_EQ(cls.findQualifier(CIMName("Association")), PEG_NOT_FOUND);
}

// --- property lists, parameter values, qualifier declarations ---------------

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
