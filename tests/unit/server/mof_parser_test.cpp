// MOF parser: what it builds from valid text, and where it points when the
// text is wrong.
#include "MofError.h"
#include "MofParser.h"

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

TEST(MofParser, IncludeFaultsPointAtThePragma)
{
    auto reader = memoryReader({
        {"a.mof", "class X {};\n  #pragma include(\"b.mof\")"},
        {"b.mof", "#pragma include(\"a.mof\")"},
        {"c.mof", "\n\n #pragma include(\"missing.mof\")"},
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
    try
    {
        parseMofFile("c.mof", "root", reader);
        FAIL() << "a missing include was accepted";
    }
    catch (const MofError& e)
    {
        EXPECT_EQ(e.where().toString(), "c.mof:3:2");
        EXPECT_NE(e.message().find("missing.mof"), std::string::npos);
    }
}

struct BadMof
{
    const char* text;
    unsigned line;
    unsigned column;
    const char* message;  // a part of the message
};

class MofParserError : public ::testing::TestWithParam<BadMof>
{};

TEST_P(MofParserError, NamesPositionAndWhatWasExpected)
{
    const BadMof& bad = GetParam();
    try
    {
        parse(bad.text);
        FAIL() << "accepted: " << bad.text;
    }
    catch (const MofError& e)
    {
        EXPECT_EQ(e.where().file, "test.mof");
        EXPECT_EQ(e.where().line, bad.line) << e.what();
        EXPECT_EQ(e.where().column, bad.column) << e.what();
        EXPECT_NE(e.message().find(bad.message), std::string::npos) << e.what();
        EXPECT_EQ(std::string(e.what()).rfind("test.mof:", 0), 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, MofParserError,
    ::testing::Values(BadMof{"class A {\n  string Name\n};", 3, 1,
                          "expected ';' after the property declaration, found '}'"},
        BadMof{"class A {};\nclas B {};", 2, 1, "expected 'class', 'instance', 'qualifier' or '#pragma'"},
        BadMof{"class A : {};", 1, 11, "expected a superclass name after ':'"},
        BadMof{"class A { strin Name; };", 1, 11, "expected a data type or '<class> REF'"},
        BadMof{"class A { uint8 X = ; };", 1, 21, "expected a value"},
        BadMof{"class A {\n  [Key string Id; };", 2, 8, "expected ']' or ',' in the qualifier list"},
        BadMof{"class A { string Id; ", 1, 22, "expected '}' to close the class body, found end of file"},
        BadMof{"class A { string S = \"open; };", 1, 22, "unterminated string"},
        BadMof{"/* never closed", 1, 1, "unterminated comment"},
        BadMof{"class A { uint64 X = 18446744073709551616; };", 1, 22, "out of range"},
        BadMof{"class A { string S = \"\\q\"; };", 1, 23, "unknown escape sequence"},
        BadMof{"class A { uint8 X = 09; };", 1, 21, "octal"},
        BadMof{"class A { uint8 X = 1x; };", 1, 21, "malformed number"},
        BadMof{"class A { A REF R[]; };", 1, 18, "reference property cannot be an array"},
        BadMof{"class A { A REF F(); };", 1, 11, "cannot return a reference"},
        BadMof{"class A { uint8 F(uint8 P, uint8 p); };", 1, 34, "parameter 'p' declared twice"},
        BadMof{"class A { uint8 X[0]; };", 1, 19, "array size"},
        BadMof{"class A { uint8 X = {{1}}; };", 1, 22, "arrays cannot be nested"},
        BadMof{"[Key, key] class A {};", 1, 7, "qualifier 'key' given twice"},
        BadMof{
            "[Key] qualifier Q : boolean;", 1, 7, "expected 'class' or 'instance' after the qualifier list"},
        BadMof{"Qualifier Q : boolean = false;", 1, 30, "expected ',' before 'Scope'"},
        BadMof{"Qualifier Q : boolean, Scope(klass);", 1, 30, "expected a scope"},
        BadMof{"Qualifier Q : boolean, Scope(any), Flavor(Sticky);", 1, 43, "expected a flavor"},
        BadMof{"#pragma locale(\"en\")\n#pragma source(\"x\")", 2, 9, "unsupported pragma 'source'"},
        BadMof{"#pragma include(\"nowhere.mof\")", 1, 1, "cannot open"},
        BadMof{"#pragma namespace(\"/\")", 1, 9, "needs a namespace name"},
        BadMof{"#pragmatic", 1, 1, "expected 'pragma' after '#'"},
        BadMof{"instance of A { X = 1; x = 2; };", 1, 24, "property 'x' given twice"},
        BadMof{"instance of A as first { };", 1, 18, "expected an alias ($name) after 'as'"},
        BadMof{"instance A { };", 1, 10, "expected 'of' after 'instance'"},
        BadMof{"class A { char16 C = 'ab'; };", 1, 22, "more than one character"},
        BadMof{"class A {}; @", 1, 13, "unexpected character '@'"}));

}  // namespace
