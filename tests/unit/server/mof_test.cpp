// The MOF compiler: what the parser builds from valid text, how parsed
// declarations resolve (inheritance, overrides, qualifier flavors, class
// origin, instances), and where each fault of the text is reported.
#include "MofError.h"
#include "MofParser.h"
#include "MofSchema.h"

#include <gtest/gtest.h>

#include <map>

using namespace zda::mof;

namespace
{

// Files held in memory, so that includes can be tested without a disk.
FileReader memoryReader(std::map<std::string, std::string> files)
{
    return [files](const std::string& path, const SourceLocation& from) {
        auto it = files.find(path);
        if (it == files.end())
            throw MofError(from, "cannot open \"" + path + "\"");
        return it->second;
    };
}

std::vector<Declaration> parse(const std::string& text)
{
    return parseMof(text, "test.mof", "root/test", memoryReader({}));
}

template <typename T>
const T& body(const Declaration& d)
{
    return std::get<T>(d.body);
}

TEST(MofParser, BuildsClassesWithTheirFeatures)
{
    auto decls = parse(R"(
        Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
        Qualifier ValueMap : string[], Scope(property, method, parameter);
        [Abstract, Description("A " "joined" " text.")]
        class Test_Base : Test_Root {
              [Key] string Id;
            uint16 Codes[4] = {1, 0x1F, 017, 101b};
            real64 Ratio = -2.5e1;
            char16 Letter = 'x';
            Test_Other REF Peer;
              [Override("Go") : Restricted]
            uint32 Go([IN] string Name, [IN(false), OUT] Test_Other ref Result[],
                      sint8 Small[]);
            datetime Empty();
        };)");
    ASSERT_EQ(decls.size(), 3u);
    EXPECT_EQ(decls[0].nameSpace, "root/test");

    const auto& key = body<QualifierDeclaration>(decls[0]);
    EXPECT_EQ(key.type, DataType::Boolean);
    EXPECT_EQ(key.scopes, unsigned(kScopeProperty | kScopeReference));
    EXPECT_EQ(key.flavors, unsigned(kFlavorDisableOverride | kFlavorToSubclass));
    EXPECT_TRUE(body<QualifierDeclaration>(decls[1]).isArray);
    EXPECT_FALSE(body<QualifierDeclaration>(decls[1]).defaultValue.has_value());

    const auto& cls = body<ClassDeclaration>(decls[2]);
    EXPECT_EQ(cls.name, "Test_Base");
    EXPECT_EQ(cls.superClass, "Test_Root");
    ASSERT_EQ(cls.qualifiers.size(), 2u);
    EXPECT_FALSE(cls.qualifiers[0].value.has_value());
    EXPECT_EQ(cls.qualifiers[1].value->text, "A joined text.");

    ASSERT_EQ(cls.properties.size(), 5u);
    const auto& codes = cls.properties[1];
    EXPECT_TRUE(codes.isArray);
    EXPECT_EQ(codes.arraySize, 4u);
    ASSERT_EQ(codes.defaultValue->elements.size(), 4u);
    EXPECT_EQ(codes.defaultValue->elements[1].magnitude, 31u);
    EXPECT_EQ(codes.defaultValue->elements[2].magnitude, 15u);
    EXPECT_EQ(codes.defaultValue->elements[3].magnitude, 5u);
    EXPECT_DOUBLE_EQ(cls.properties[2].defaultValue->realValue, -25.0);
    EXPECT_EQ(cls.properties[3].defaultValue->text, "x");
    EXPECT_EQ(cls.properties[4].type, DataType::Reference);
    EXPECT_EQ(cls.properties[4].referenceClass, "Test_Other");

    ASSERT_EQ(cls.methods.size(), 2u);
    const auto& go = cls.methods[0];
    EXPECT_EQ(go.returnType, DataType::Uint32);
    EXPECT_EQ(go.qualifiers[0].flavors, unsigned(kFlavorRestricted));
    ASSERT_EQ(go.parameters.size(), 3u);
    EXPECT_EQ(go.parameters[1].type, DataType::Reference);
    EXPECT_TRUE(go.parameters[1].isArray);
    EXPECT_FALSE(go.parameters[1].qualifiers[0].value->boolValue);
    EXPECT_EQ(go.parameters[2].type, DataType::Sint8);
    EXPECT_TRUE(cls.methods[1].parameters.empty());
    EXPECT_EQ(cls.methods[1].returnType, DataType::DateTime);
}

TEST(MofParser, BuildsInstancesWithAliases)
{
    auto decls = parse(R"(
        instance of Test_Thing as $first { Id = "a\x41\n"; Count = -9223372036854775808; On = TRUE; };
        instance of Test_Link { Left = $first; Names = {"x", null}; Nothing = NULL; };)");
    ASSERT_EQ(decls.size(), 2u);
    const auto& first = body<InstanceDeclaration>(decls[0]);
    EXPECT_EQ(first.alias, "first");
    ASSERT_EQ(first.values.size(), 3u);
    EXPECT_EQ(first.values[0].value.text, "aA\n");
    EXPECT_TRUE(first.values[1].value.negative);
    EXPECT_EQ(first.values[1].value.magnitude, 9223372036854775808ull);
    EXPECT_TRUE(first.values[2].value.boolValue);
    const auto& link = body<InstanceDeclaration>(decls[1]);
    EXPECT_EQ(link.values[0].value.kind, Literal::Kind::Alias);
    EXPECT_EQ(link.values[1].value.elements[1].kind, Literal::Kind::Null);
    EXPECT_EQ(link.values[2].value.kind, Literal::Kind::Null);
    EXPECT_EQ(link.values[2].where.line, 3u);
}

TEST(MofParser, IncludesAreRelativeAndKeepTheirNamespaceToThemselves)
{
    auto reader = memoryReader({
        {"top/main.mof",
            "#pragma namespace(\"root/a\")\n#pragma include(\"sub/one.mof\")\nclass A_After {};"},
        {"top/sub/one.mof", "class A_One {};\n#pragma namespace(\"/root/b\")\n#pragma include(\"two.mof\")"},
        {"top/sub/two.mof", "class B_Two {};"},
    });
    auto decls = parseMofFile("top/main.mof", "root/default", reader);
    ASSERT_EQ(decls.size(), 3u);
    EXPECT_EQ(body<ClassDeclaration>(decls[0]).name, "A_One");
    EXPECT_EQ(decls[0].nameSpace, "root/a");
    EXPECT_EQ(body<ClassDeclaration>(decls[1]).name, "B_Two");
    EXPECT_EQ(decls[1].nameSpace, "root/b");
    EXPECT_EQ(decls[1].body.index(), 1u);
    EXPECT_EQ(body<ClassDeclaration>(decls[2]).name, "A_After");
    EXPECT_EQ(decls[2].nameSpace, "root/a");
    EXPECT_EQ(body<ClassDeclaration>(decls[1]).where.file, "top/sub/two.mof");
}

// A missing include is a row of the compiler's fault table below.
TEST(MofParser, AnIncludeCycleIsReportedAtThePragma)
{
    auto reader = memoryReader({
        {"a.mof", "class X {};\n  #pragma include(\"b.mof\")"},
        {"b.mof", "#pragma include(\"a.mof\")"},
    });
    try
    {
        parseMofFile("a.mof", "root", reader);
        FAIL() << "an include cycle was accepted";
    }
    catch (const MofError& e)
    {
        EXPECT_EQ(e.where().file, "b.mof");
        EXPECT_NE(e.message().find("includes itself"), std::string::npos) << e.what();
    }
}

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

// Parses and resolves `text` after the qualifier block, which takes lines 1
// to 12, so that positions in `text` start at line 13.
NamespaceSchema resolve(const std::string& text)
{
    auto schemas = resolveSchema(
        parseMof(std::string(kQualifiers) + text, "test.mof", "root/t", memoryReader({})));
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

// Each fault, in parsing or in resolving, is reported with the file, the
// line (counted here from the first line of `text`) and the column of what is
// at fault, and says what is wrong.
struct BadMof
{
    const char* text;
    unsigned line;
    unsigned column;
    const char* message;  // a part of the message
};

TEST(MofCompiler, FaultsNameTheirPositionAndWhatIsWrong)
{
    const BadMof faults[] = {
        {"class A {\n  string Name\n};", 3, 1, "expected ';' after the property declaration, found '}'"},
        {"class A {};\nclas B {};", 2, 1, "expected 'class', 'instance', 'qualifier' or '#pragma'"},
        {"class A : {};", 1, 11, "expected a superclass name after ':'"},
        {"class A { strin Name; };", 1, 11, "expected a data type or '<class> REF'"},
        {"class A { uint8 X = ; };", 1, 21, "expected a value"},
        {"class A {\n  [Key string Id; };", 2, 8, "expected ']' or ',' in the qualifier list"},
        {"class A { string Id; ", 1, 22, "expected '}' to close the class body, found end of file"},
        {"class A { string S = \"open; };", 1, 22, "unterminated string"},
        {"/* never closed", 1, 1, "unterminated comment"},
        {"class A { uint64 X = 18446744073709551616; };", 1, 22, "out of range"},
        {"class A { string S = \"\\q\"; };", 1, 23, "unknown escape sequence"},
        {"class A { uint8 X = 09; };", 1, 21, "octal"},
        {"class A { uint8 X = 1x; };", 1, 21, "malformed number"},
        {"class A { A REF R[]; };", 1, 18, "reference property cannot be an array"},
        {"class A { A REF F(); };", 1, 11, "cannot return a reference"},
        {"class A { uint8 F(uint8 P, uint8 p); };", 1, 34, "parameter 'p' declared twice"},
        {"class A { uint8 X[0]; };", 1, 19, "array size"},
        {"class A { uint8 X = {{1}}; };", 1, 22, "arrays cannot be nested"},
        {"[Key, key] class A {};", 1, 7, "qualifier 'key' given twice"},
        {"[Key] qualifier Q : boolean;", 1, 7, "expected 'class' or 'instance' after the qualifier list"},
        {"Qualifier Q : boolean = false;", 1, 30, "expected ',' before 'Scope'"},
        {"Qualifier Q : boolean, Scope(klass);", 1, 30, "expected a scope"},
        {"Qualifier Q : boolean, Scope(any), Flavor(Sticky);", 1, 43, "expected a flavor"},
        {"#pragma locale(\"en\")\n#pragma source(\"x\")", 2, 9, "unsupported pragma 'source'"},
        {"class A {};\n  #pragma include(\"nowhere.mof\")", 2, 3, "cannot open \"nowhere.mof\""},
        {"#pragma namespace(\"/\")", 1, 9, "needs a namespace name"},
        {"#pragmatic", 1, 1, "expected 'pragma' after '#'"},
        {"instance of A { X = 1; x = 2; };", 1, 24, "property 'x' given twice"},
        {"instance of A as first { };", 1, 18, "expected an alias ($name) after 'as'"},
        {"instance A { };", 1, 10, "expected 'of' after 'instance'"},
        {"class A { char16 C = 'ab'; };", 1, 22, "more than one character"},
        {"class A {}; @", 1, 13, "unexpected character '@'"},
        {"class A {};\nclass a {};", 2, 1, "class 'a' is already defined at test.mof:13:1"},
        {"class B : A {};", 1, 1, "superclass 'A' of class 'B' is not defined"},
        {"class A : B {};\nclass B : A {};", 1, 1, "inherits from itself"},
        {"[Colour(\"red\")] class A {};", 1, 2, "qualifier 'Colour' is not declared"},
        {"class A { [Association] string S; };", 1, 12, "cannot be used on a property"},
        {"class A { [MaxLen] string S; };", 1, 12, "needs a value of type uint32"},
        {"class A { [MaxLen(\"x\")] string S; };", 1, 19, "must be an integer"},
        {"class A { [Key] string K; };\nclass B : A { [Key(false), Override(\"K\")] string K; };", 2, 16,
            "(its flavor is DisableOverride)"},
        {"class A { string S; };\nclass B : A { string s; };", 2, 22,
            "already defined in superclass 'A'; write Override(\"s\")"},
        {"class A {};\nclass B : A { [Override(\"S\")] string S; };", 2, 16, "overrides nothing"},
        {"class A { string S; };\nclass B : A { [Override(\"S\")] uint8 S; };", 2, 37,
            "must keep the type of the property it overrides (string)"},
        {"class A { [Key] string K; };\nclass B : A { [Key] string K2; };", 2, 28, "cannot add key 'K2'"},
        {"class A { [Key] string K[]; };", 1, 24, "cannot be an array"},
        {"class A { A REF R; };", 1, 17, "only allowed in an association"},
        {"[Association] class L { Nowhere REF R; };", 1, 37, "referenced class 'Nowhere' is not defined"},
        {"class T {}; class U {};\n[Association] class L { T REF R; };\n[Association] class M : L { [Override(\"R\")] U REF R; };",
            3, 51, "must refer to 'T' or one of its subclasses"},
        {"class A {};\n[Association] class L : A {};", 2, 15, "which is not an association"},
        {"class A { uint8 N = 256; };", 1, 21, "out of the range of uint8"},
        {"class A { sint8 N = -129; };", 1, 21, "out of the range of sint8"},
        {"class A { uint32 N = -1; };", 1, 22, "out of the range of uint32"},
        {"class A { real32 R = 1e39; };", 1, 22, "out of the range of real32"},
        {"class A { boolean B = 1; };", 1, 23, "must be TRUE or FALSE"},
        {"class A { uint8 N[] = 3; };", 1, 23, "must be an array value"},
        {"class A { uint8 N[2] = {1, 2, 3}; };", 1, 24, "more than 2 elements"},
        {"class A { datetime D = \"2024\"; };", 1, 24, "must be a date-time"},
        {"class A { uint32 M(); uint32 m(); };", 1, 30, "declared twice"},
        {"class A { uint32 M(); };\nclass B : A { uint8 M(); };", 2, 21, "already defined in superclass"},
        {"class A { uint32 M(); };\nclass B : A { [Override(\"M\")] uint8 M(); };", 2, 37,
            "must keep the return type"},
        {"class A { uint32 M([Key] string P); };", 1, 21, "cannot be used on a parameter"},
        {"class A { [ValueMap{\"1\", \"2\"}, Values{\"One\"}] uint16 C; };", 1, 12,
            "ValueMap and Values differ in length (2 and 1)"},
        {"class A { [ValueMap{\"1\"}, Values{\"One\"}] uint16 C; };\n"
         "class B : A { [Override(\"C\"), Values{\"One\", \"Two\"}] uint16 C; };",
            2, 31, "ValueMap and Values differ in length (1 and 2)"},
        {"instance of Nothing { };", 1, 1, "class 'Nothing' of the instance is not defined"},
        {"[Abstract] class A {};\ninstance of A { };", 2, 1, "is abstract"},
        {"class A { [Key] string K; };\ninstance of A { k = null; };", 2, 1, "no value for key property 'K'"},
        {"class A { [Key] string K; };\ninstance of A { K = \"x\"; Other = 1; };", 2, 26,
            "class 'A' has no property 'Other'"},
        {"class A { [Key] string K; };\ninstance of A { K = \"x\"; };\ninstance of A { K = \"x\"; };", 3, 1,
            "already defined"},
        {"class A { [Key] string K; };\n[Association] class L { [Key] A REF R; };\ninstance of L { R = $x; };",
            3, 21, "alias $x is not defined"},
        {"class A { [Key] string K; };\ninstance of A { K = 5; };", 2, 21, "must be a string"},
    };
    for (const BadMof& bad : faults)
    {
        SCOPED_TRACE(bad.text);
        try
        {
            resolve(bad.text);
            ADD_FAILURE() << "accepted";
        }
        catch (const MofError& e)
        {
            EXPECT_EQ(e.where().file, "test.mof");
            EXPECT_EQ(e.where().line, bad.line + 12) << e.what();
            EXPECT_EQ(e.where().column, bad.column) << e.what();
            EXPECT_NE(e.message().find(bad.message), std::string::npos) << e.what();
            EXPECT_EQ(std::string(e.what()).rfind("test.mof:", 0), 0u);
        }
    }
}

TEST(MofSchema, RejectsIllegalNamesAndNamespaces)
{
    EXPECT_THROW(resolve("class A { string \xC3\x28; };"), MofError);
    EXPECT_THROW(resolve("#pragma namespace(\"root//x\") class A {};"), MofError);
}

}  // namespace
