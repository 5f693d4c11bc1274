// Checks parsed MOF declarations and resolves inheritance.
//
// The result describes every class as a client sees it: its own and its
// inherited qualifiers, properties and methods, each marked with the class
// that defined it (class origin) and whether it came from a superclass
// (propagated). Values are checked against their declared types here, so
// that turning them into objects later cannot fail on range or kind.
#ifndef ZDA_SERVER_MOF_SCHEMA_H
#define ZDA_SERVER_MOF_SCHEMA_H

#include "MofAst.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zda::mof
{

struct ResolvedQualifier
{
    std::string name;  // spelled as declared
    DataType type = DataType::Boolean;
    bool isArray = false;
    Literal value;         // fits type and isArray; Kind::Null when null
    unsigned flavors = 0;  // effective FlavorBits
    bool propagated = false;
};

struct ResolvedProperty
{
    std::string name;
    DataType type = DataType::Boolean;
    bool isArray = false;
    std::uint32_t arraySize = 0;          // 0: variable length
    std::string referenceClass;           // references only; spelled as the class is
    std::optional<Literal> defaultValue;  // fits the type
    std::vector<ResolvedQualifier> qualifiers;
    std::string classOrigin;
    bool propagated = false;
    bool isKey = false;
    SourceLocation where;
};

struct ResolvedParameter
{
    std::string name;
    DataType type = DataType::Boolean;
    bool isArray = false;
    std::uint32_t arraySize = 0;
    std::string referenceClass;
    std::vector<ResolvedQualifier> qualifiers;
};

struct ResolvedMethod
{
    std::string name;
    DataType returnType = DataType::Uint32;
    std::vector<ResolvedParameter> parameters;
    std::vector<ResolvedQualifier> qualifiers;
    std::string classOrigin;
    bool propagated = false;
};

struct ResolvedClass
{
    std::string name;
    std::string superClass;  // empty for a root class
    std::vector<ResolvedQualifier> qualifiers;
    std::vector<ResolvedProperty> properties;  // inherited first, in superclass order
    std::vector<ResolvedMethod> methods;
    bool isAssociation = false;
    bool isAbstract = false;
    SourceLocation where;
};

struct ResolvedInstance
{
    std::string className;  // spelled as the class is
    std::string alias;
    // Values in class property order: the ones given, then class defaults
    // for the properties not given. Reference values are path texts, with
    // aliases already replaced (see referenceTexts).
    std::vector<std::pair<std::string, Literal>> values;
    SourceLocation where;
};

struct NamespaceSchema
{
    std::string name;
    std::vector<QualifierDeclaration> qualifiers;  // in declaration order
    std::vector<ResolvedClass> classes;            // every superclass before its subclasses
    std::vector<ResolvedInstance> instances;       // in declaration order

    // Index into `classes`, or nullopt. Case-insensitive.
    std::optional<size_t> findClass(const std::string& name) const;
    const QualifierDeclaration* findQualifier(const std::string& name) const;

    std::map<std::string, size_t> classIndex;  // folded name -> index
};

// Checks and resolves declarations, grouped by their namespace. Namespaces
// are independent: a class may use only qualifiers and classes of its own
// namespace, declared anywhere in it (order does not matter). Instance
// aliases are replaced by the path text of the aliased instance, built as
// Class.Key="value",... from its key values.
//
// Throws MofError at the declaration at fault: unknown or duplicate names,
// qualifiers out of scope or of the wrong type, overrides of a qualifier
// whose flavor forbids it, Override of a feature the superclass lacks or of
// another type, a redefinition without Override, keys added below a class
// that has keys, references outside associations, unknown or abstract
// instance classes, missing key values, values that do not fit.
std::vector<NamespaceSchema> resolveSchema(const std::vector<Declaration>& declarations);

// The path text of an instance ("Class.Key1=\"v\",Key2=5"); keys in class
// order.
std::string instancePathText(const NamespaceSchema& schema, const ResolvedInstance& instance);

}  // namespace zda::mof

#endif
