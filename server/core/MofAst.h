// The syntax tree that the MOF parser produces.
//
// It holds declarations exactly as written, with the position of each, and
// knows nothing of inheritance or of the object model: the repository
// builder checks and resolves it. Names keep their spelling; comparisons
// elsewhere ignore ASCII case.
#ifndef ZDA_SERVER_MOF_AST_H
#define ZDA_SERVER_MOF_AST_H

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zda::mof
{

struct SourceLocation
{
    std::string file;
    unsigned line = 0;
    unsigned column = 0;

    // "file:line:column"
    std::string toString() const;
};

// The CIM data types a declaration can name. The order is that of the
// object model's CIMType, so a cast converts between them.
enum class DataType
{
    Boolean,
    Uint8,
    Sint8,
    Uint16,
    Sint16,
    Uint32,
    Sint32,
    Uint64,
    Sint64,
    Real32,
    Real64,
    Char16,
    String,
    DateTime,
    Reference
};

// Lower-case MOF spelling ("uint16", "ref" for references).
const char* dataTypeName(DataType type);

// A constant as written: the type it must fit is known only later.
struct Literal
{
    enum class Kind
    {
        Null,
        Boolean,
        Integer,
        Real,
        String,
        Char,
        Array,
        Alias
    };

    Kind kind = Kind::Null;
    bool boolValue = false;
    // Integers keep magnitude and sign apart so that the whole range of
    // both uint64 and sint64 can be written.
    std::uint64_t magnitude = 0;
    bool negative = false;
    double realValue = 0.0;
    std::string text;               // String and Char contents (UTF-8), alias name
    std::vector<Literal> elements;  // Array elements (never arrays)
    SourceLocation where;
};

// Bit sets of the scopes and flavors a qualifier declaration names.
enum ScopeBits : unsigned
{
    kScopeClass = 1u << 0,
    kScopeAssociation = 1u << 1,
    kScopeIndication = 1u << 2,
    kScopeProperty = 1u << 3,
    kScopeReference = 1u << 4,
    kScopeMethod = 1u << 5,
    kScopeParameter = 1u << 6,
    kScopeAny = (1u << 7) - 1,
};

enum FlavorBits : unsigned
{
    kFlavorEnableOverride = 1u << 0,
    kFlavorDisableOverride = 1u << 1,
    kFlavorToSubclass = 1u << 2,
    kFlavorRestricted = 1u << 3,
    kFlavorTranslatable = 1u << 4,
};

// A qualifier as used on an element: [Name], [Name(value)], [Name{a, b}],
// optionally followed by ": flavor ..." (flavors given at the use win over
// the declaration's).
struct QualifierUse
{
    std::string name;
    std::optional<Literal> value;  // absent: "[Name]", true for a boolean
    unsigned flavors = 0;          // FlavorBits given at the use
    SourceLocation where;
};

struct QualifierDeclaration
{
    std::string name;
    DataType type = DataType::Boolean;
    bool isArray = false;
    std::optional<std::uint32_t> arraySize;
    std::optional<Literal> defaultValue;
    unsigned scopes = 0;   // ScopeBits
    unsigned flavors = 0;  // FlavorBits
    SourceLocation where;
};

// Properties and references share one form: a reference has type Reference
// and names its class.
struct PropertyDeclaration
{
    std::vector<QualifierUse> qualifiers;
    std::string name;
    DataType type = DataType::Boolean;
    std::string referenceClass;
    bool isArray = false;
    std::optional<std::uint32_t> arraySize;
    std::optional<Literal> defaultValue;
    SourceLocation where;
};

struct ParameterDeclaration
{
    std::vector<QualifierUse> qualifiers;
    std::string name;
    DataType type = DataType::Boolean;
    std::string referenceClass;
    bool isArray = false;
    std::optional<std::uint32_t> arraySize;
    SourceLocation where;
};

struct MethodDeclaration
{
    std::vector<QualifierUse> qualifiers;
    std::string name;
    DataType returnType = DataType::Uint32;
    std::vector<ParameterDeclaration> parameters;
    SourceLocation where;
};

struct ClassDeclaration
{
    std::vector<QualifierUse> qualifiers;
    std::string name;
    std::string superClass;  // empty for a root class
    std::vector<PropertyDeclaration> properties;
    std::vector<MethodDeclaration> methods;
    SourceLocation where;
};

struct PropertyValue
{
    std::string name;
    Literal value;
    SourceLocation where;
};

struct InstanceDeclaration
{
    std::vector<QualifierUse> qualifiers;
    std::string className;
    std::string alias;  // "$name" without the '$'; empty when none
    std::vector<PropertyValue> values;
    SourceLocation where;
};

// One top-level declaration and the namespace that was current for it.
struct Declaration
{
    std::string nameSpace;
    std::variant<QualifierDeclaration, ClassDeclaration, InstanceDeclaration> body;
};

// ASCII case-insensitive comparison, the rule for every CIM name.
bool equalNoCase(const std::string& a, const std::string& b);
std::string foldCase(const std::string& s);

}  // namespace zda::mof

#endif
