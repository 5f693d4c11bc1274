// Resolution of parsed MOF: inheritance, overrides, qualifier flavors,
// class origin, instances, and the faults each check catches.
#include "MofError.h"
#include "MofParser.h"
#include "MofSchema.h"

#include <gtest/gtest.h>

using namespace zda::mof;

namespace
{

const char* const kQualifiers = R"(
Qualifier Abstract : boolean = false, Scope(class, association), Flavor(EnableOverride, Restricted);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride, ToSubclass);
Qualifier Description : string = null, Scope(any), Flavor(EnableOverride, ToSubclass, Translatable);
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Override : string = null, Scope(property, reference, method), Flavor(EnableOverride, Restricted);
Qualifier MaxLen : uint32 = null, Scope(property, method, parameter);
Qualifier In : boolean = true, Scope(parameter), Flavor(DisableOverride, ToSubclass);
Qualifier Out : boolean = false, Scope(parameter), Flavor(DisableOverride, ToSubclass);
Qualifier Tags : string[], Scope(class, property);
Qualifier ValueMap : string[], Scope(property, method, parameter);
Qualifier Values : string[], Scope(property, method, parameter), Flavor(EnableOverride, ToSubclass, Translatable);
)";

// The qualifier block takes lines 1 to 12, so positions in `text` start at
// line 13.
NamespaceSchema resolve(const std::string& text)
{
    auto reader = [](const std::string& path, const SourceLocation& from) -> std::string {
        throw MofError(from, "no file " + path);
    };
    auto schemas = resolveSchema(parseMof(std::string(kQualifiers) + text, "t.mof", "root/t", reader));
    EXPECT_EQ(schemas.size(), 1u);
    return schemas.at(0);
}

const ResolvedClass& cls(const NamespaceSchema& s, const char* name)
{
    auto index = s.findClass(name);
    EXPECT_TRUE(index.has_value()) << name;
    return s.classes.at(index.value_or(0));
}

const ResolvedProperty& prop(const ResolvedClass& c, const char* name)
{
    for (const ResolvedProperty& p : c.properties)
        if (equalNoCase(p.name, name))
            return p;
    ADD_FAILURE() << c.name << " has no " << name;
    return c.properties.at(0);
}

const ResolvedQualifier* qual(const std::vector<ResolvedQualifier>& list, const char* name)
{
    for (const ResolvedQualifier& q : list)
        if (equalNoCase(q.name, name))
            return &q;
    return nullptr;
}

const char* const kHierarchy = R"(
[Abstract, Description("root"), Tags{"a", "b"}]
class T_Base {
    [Key, Description("id")] string Id;
    [Description("text")] string Text = "base";
    uint16 Codes[] = {1, 2};
    [Description("run")] uint32 Run([In] string Arg);
};
class T_Middle : T_Base {
    [Override("Text"), MaxLen(8)] string Text;
    sint64 Extra = -5;
    [Override("Run")] uint32 Run([In, Out] string Arg, [Out] uint8 Extra);
};
class t_leaf : T_MIDDLE {
    [Description("leaf text"), Override("text")] string Text = "leaf";
};
)";

TEST(MofSchema, InheritsPropertiesWithClassOriginAndPropagation)
{
    NamespaceSchema s = resolve(kHierarchy);
    ASSERT_EQ(s.classes.size(), 3u);
    EXPECT_EQ(s.classes[0].name, "T_Base");  // superclasses come first

    const ResolvedClass& middle = cls(s, "t_middle");
    EXPECT_EQ(middle.superClass, "T_Base");
    ASSERT_EQ(middle.properties.size(), 4u);
    EXPECT_EQ(middle.properties[0].name, "Id");
    EXPECT_EQ(middle.properties[0].classOrigin, "T_Base");
    EXPECT_TRUE(middle.properties[0].propagated);
    EXPECT_TRUE(middle.properties[0].isKey);

    // The override keeps its place, takes the new class origin, keeps the
    // inherited default and adds its own qualifier to the inherited one.
    const ResolvedProperty& text = middle.properties[1];
    EXPECT_EQ(text.classOrigin, "T_Middle");
    EXPECT_FALSE(text.propagated);
    EXPECT_EQ(text.defaultValue->text, "base");
    EXPECT_EQ(qual(text.qualifiers, "MaxLen")->value.magnitude, 8u);
    ASSERT_NE(qual(text.qualifiers, "Description"), nullptr);
    EXPECT_TRUE(qual(text.qualifiers, "Description")->propagated);
    EXPECT_EQ(middle.properties[3].name, "Extra");
    EXPECT_TRUE(middle.properties[3].defaultValue->negative);

    ASSERT_EQ(middle.methods.size(), 1u);
    EXPECT_EQ(middle.methods[0].classOrigin, "T_Middle");
    EXPECT_EQ(middle.methods[0].parameters.size(), 2u);
    EXPECT_TRUE(qual(middle.methods[0].qualifiers, "Description")->propagated);

    const ResolvedClass& leaf = cls(s, "T_Leaf");
    EXPECT_EQ(leaf.superClass, "T_Middle");  // spelled as the class is
    const ResolvedProperty& leafText = prop(leaf, "Text");
    EXPECT_EQ(leafText.classOrigin, "t_leaf");
    EXPECT_EQ(leafText.defaultValue->text, "leaf");
    EXPECT_FALSE(qual(leafText.qualifiers, "Description")->propagated);
    EXPECT_TRUE(qual(leafText.qualifiers, "MaxLen")->propagated);
    EXPECT_EQ(prop(leaf, "Extra").classOrigin, "T_Middle");
    EXPECT_TRUE(prop(leaf, "Extra").propagated);
    EXPECT_EQ(leaf.methods[0].classOrigin, "T_Middle");
    EXPECT_TRUE(leaf.methods[0].propagated);
}

TEST(MofSchema, QualifierFlavorsDecideWhatPropagates)
{
    NamespaceSchema s = resolve(kHierarchy);
    const ResolvedClass& base = cls(s, "T_Base");
    const ResolvedClass& middle = cls(s, "T_Middle");
    const ResolvedClass& leaf = cls(s, "T_Leaf");
    EXPECT_TRUE(base.isAbstract);
    EXPECT_FALSE(middle.isAbstract);  // Restricted: not inherited
    EXPECT_EQ(qual(middle.qualifiers, "Abstract"), nullptr);
    EXPECT_TRUE(qual(middle.qualifiers, "Tags")->propagated);
    EXPECT_EQ(qual(middle.qualifiers, "Tags")->value.elements.size(), 2u);
    // Override is Restricted: the leaf's inherited Run does not carry it.
    EXPECT_NE(qual(middle.methods[0].qualifiers, "Override"), nullptr);
    EXPECT_EQ(qual(leaf.methods[0].qualifiers, "Override"), nullptr);
    // A boolean qualifier written without a value is true.
    EXPECT_TRUE(qual(prop(base, "Id").qualifiers, "Key")->value.boolValue);
    // A flavor given at the use wins over the declaration.
    NamespaceSchema t = resolve("[Description(\"x\") : Restricted] class A {}; class B : A {};");
    EXPECT_NE(qual(cls(t, "A").qualifiers, "Description"), nullptr);
    EXPECT_EQ(qual(cls(t, "B").qualifiers, "Description"), nullptr);
}

TEST(MofSchema, AssociationsNarrowTheirReferences)
{
    NamespaceSchema s = resolve(R"(
        class T_Thing {};
        class T_Special : T_Thing {};
        [Association] class T_Link { [Key] T_Thing REF Left; [Key] T_Thing REF Right; };
        class T_Narrow : T_Link { [Override("Left")] T_Special REF Left; };)");
    const ResolvedClass& narrow = cls(s, "T_Narrow");
    EXPECT_TRUE(narrow.isAssociation);  // Association propagates
    EXPECT_EQ(prop(narrow, "Left").referenceClass, "T_Special");
    EXPECT_EQ(prop(narrow, "Right").referenceClass, "T_Thing");
    EXPECT_TRUE(prop(narrow, "Right").isKey);
}

TEST(MofSchema, InstancesTakeDefaultsAndAliasPaths)
{
    NamespaceSchema s = resolve(R"(
        class T_Thing { [Key] string Id; [Key] uint8 N; string Note = "n"; boolean On; };
        [Association] class T_Link { [Key] T_Thing REF Left; [Key] T_Thing REF Right; };
        instance of T_Thing as $a { Id = "a\"b"; N = 1; };
        instance of T_Thing as $b { N = 2; Id = "b"; On = true; };
        instance of T_Link { Left = $a; Right = $B; };)");
    ASSERT_EQ(s.instances.size(), 3u);
    const ResolvedInstance& a = s.instances[0];
    ASSERT_EQ(a.values.size(), 3u);
    EXPECT_EQ(a.values[2].first, "Note");
    EXPECT_EQ(a.values[2].second.text, "n");
    EXPECT_EQ(instancePathText(s, a), "T_Thing.Id=\"a\\\"b\",N=1");
    const ResolvedInstance& link = s.instances[2];
    EXPECT_EQ(link.values[0].second.kind, Literal::Kind::String);
    EXPECT_EQ(link.values[0].second.text, "T_Thing.Id=\"a\\\"b\",N=1");
    EXPECT_EQ(link.values[1].second.text, "T_Thing.Id=\"b\",N=2");
}

TEST(MofSchema, DeclarationOrderDoesNotMatterWithinANamespace)
{
    NamespaceSchema s = resolve("class C : B {}; class B : A {}; class A { [Key] string K; };");
    EXPECT_EQ(s.classes[0].name, "A");
    EXPECT_EQ(s.classes[2].name, "C");
    EXPECT_TRUE(prop(cls(s, "C"), "K").isKey);
}

struct BadSchema
{
    const char* text;
    unsigned line;  // counted from the first line of `text` (1-based)
    unsigned column;
    const char* message;
};

class MofSchemaError : public ::testing::TestWithParam<BadSchema>
{};

TEST_P(MofSchemaError, PointsAtTheDeclarationAtFault)
{
    const BadSchema& bad = GetParam();
    try
    {
        resolve(bad.text);
        FAIL() << "accepted: " << bad.text;
    }
    catch (const MofError& e)
    {
        EXPECT_EQ(e.where().line, bad.line + 12) << e.what();
        EXPECT_EQ(e.where().column, bad.column) << e.what();
        EXPECT_NE(e.message().find(bad.message), std::string::npos) << e.what();
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, MofSchemaError,
    ::testing::Values(
        BadSchema{"class A {};\nclass a {};", 2, 1, "class 'a' is already defined at t.mof:13:1"},
        BadSchema{"class B : A {};", 1, 1, "superclass 'A' of class 'B' is not defined"},
        BadSchema{"class A : B {};\nclass B : A {};", 1, 1, "inherits from itself"},
        BadSchema{"[Colour(\"red\")] class A {};", 1, 2, "qualifier 'Colour' is not declared"},
        BadSchema{"class A { [Association] string S; };", 1, 12, "cannot be used on a property"},
        BadSchema{"class A { [MaxLen] string S; };", 1, 12, "needs a value of type uint32"},
        BadSchema{"class A { [MaxLen(\"x\")] string S; };", 1, 19, "must be an integer"},
        BadSchema{"class A { [Key] string K; };\nclass B : A { [Key(false), Override(\"K\")] string K; };", 2,
            16, "(its flavor is DisableOverride)"},
        BadSchema{"class A { string S; };\nclass B : A { string s; };", 2, 22,
            "already defined in superclass 'A'; write Override(\"s\")"},
        BadSchema{"class A {};\nclass B : A { [Override(\"S\")] string S; };", 2, 16, "overrides nothing"},
        BadSchema{"class A { string S; };\nclass B : A { [Override(\"S\")] uint8 S; };", 2, 37,
            "must keep the type of the property it overrides (string)"},
        BadSchema{
            "class A { [Key] string K; };\nclass B : A { [Key] string K2; };", 2, 28, "cannot add key 'K2'"},
        BadSchema{"class A { [Key] string K[]; };", 1, 24, "cannot be an array"},
        BadSchema{"class A { A REF R; };", 1, 17, "only allowed in an association"},
        BadSchema{
            "[Association] class L { Nowhere REF R; };", 1, 37, "referenced class 'Nowhere' is not defined"},
        BadSchema{
            "class T {}; class U {};\n[Association] class L { T REF R; };\n[Association] class M : L { [Override(\"R\")] U REF R; };",
            3, 51, "must refer to 'T' or one of its subclasses"},
        BadSchema{"class A {};\n[Association] class L : A {};", 2, 15, "which is not an association"},
        BadSchema{"class A { uint8 N = 256; };", 1, 21, "out of the range of uint8"},
        BadSchema{"class A { sint8 N = -129; };", 1, 21, "out of the range of sint8"},
        BadSchema{"class A { uint32 N = -1; };", 1, 22, "out of the range of uint32"},
        BadSchema{"class A { real32 R = 1e39; };", 1, 22, "out of the range of real32"},
        BadSchema{"class A { boolean B = 1; };", 1, 23, "must be TRUE or FALSE"},
        BadSchema{"class A { uint8 N[] = 3; };", 1, 23, "must be an array value"},
        BadSchema{"class A { uint8 N[2] = {1, 2, 3}; };", 1, 24, "more than 2 elements"},
        BadSchema{"class A { datetime D = \"2024\"; };", 1, 24, "must be a date-time"},
        BadSchema{"class A { uint32 M(); uint32 m(); };", 1, 30, "declared twice"},
        BadSchema{
            "class A { uint32 M(); };\nclass B : A { uint8 M(); };", 2, 21, "already defined in superclass"},
        BadSchema{"class A { uint32 M(); };\nclass B : A { [Override(\"M\")] uint8 M(); };", 2, 37,
            "must keep the return type"},
        BadSchema{"class A { uint32 M([Key] string P); };", 1, 21, "cannot be used on a parameter"},
        BadSchema{"class A { [ValueMap{\"1\", \"2\"}, Values{\"One\"}] uint16 C; };", 1, 12,
            "ValueMap and Values differ in length (2 and 1)"},
        BadSchema{"class A { [ValueMap{\"1\"}, Values{\"One\"}] uint16 C; };\n"
                  "class B : A { [Override(\"C\"), Values{\"One\", \"Two\"}] uint16 C; };",
            2, 31, "ValueMap and Values differ in length (1 and 2)"},
        BadSchema{"instance of Nothing { };", 1, 1, "class 'Nothing' of the instance is not defined"},
        BadSchema{"[Abstract] class A {};\ninstance of A { };", 2, 1, "is abstract"},
        BadSchema{"class A { [Key] string K; };\ninstance of A { k = null; };", 2, 1,
            "no value for key property 'K'"},
        BadSchema{"class A { [Key] string K; };\ninstance of A { K = \"x\"; Other = 1; };", 2, 26,
            "class 'A' has no property 'Other'"},
        BadSchema{
            "class A { [Key] string K; };\ninstance of A { K = \"x\"; };\ninstance of A { K = \"x\"; };", 3,
            1, "already defined"},
        BadSchema{
            "class A { [Key] string K; };\n[Association] class L { [Key] A REF R; };\ninstance of L { R = $x; };",
            3, 21, "alias $x is not defined"},
        BadSchema{"class A { [Key] string K; };\ninstance of A { K = 5; };", 2, 21, "must be a string"}));

TEST(MofSchema, RejectsIllegalNamesAndNamespaces)
{
    EXPECT_THROW(resolve("class A { string \xC3\x28; };"), MofError);
    auto reader = [](const std::string&, const SourceLocation& from) -> std::string {
        throw MofError(from, "none");
    };
    EXPECT_THROW(
        resolveSchema(parseMof("#pragma namespace(\"root//x\") class A {};", "n.mof", "root", reader)),
        MofError);
}

}  // namespace
