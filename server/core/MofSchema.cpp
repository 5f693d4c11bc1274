#include "MofSchema.h"

#include "MofError.h"

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <limits>
#include <set>

namespace zda::mof
{

std::optional<size_t> NamespaceSchema::findClass(const std::string& name) const
{
    auto it = classIndex.find(foldCase(name));
    if (it == classIndex.end())
        return std::nullopt;
    return it->second;
}

const QualifierDeclaration* NamespaceSchema::findQualifier(const std::string& name) const
{
    for (const QualifierDeclaration& q : qualifiers)
        if (equalNoCase(q.name, name))
            return &q;
    return nullptr;
}

namespace
{

// ---- names and text ----------------------------------------------------

// Decodes one UTF-8 sequence at `i`; returns false when malformed.
bool nextCodePoint(const std::string& s, size_t& i, unsigned& code)
{
    unsigned char c = static_cast<unsigned char>(s[i]);
    int extra = c < 0x80 ? 0 : (c >> 5) == 0x6 ? 1 : (c >> 4) == 0xE ? 2 : (c >> 3) == 0x1E ? 3 : -1;
    if (extra < 0 || i + extra >= s.size())
        return false;
    code = extra == 0 ? c : extra == 1 ? (c & 0x1F) : extra == 2 ? (c & 0x0F) : (c & 0x07);
    for (int k = 1; k <= extra; ++k)
    {
        unsigned char d = static_cast<unsigned char>(s[i + k]);
        if ((d & 0xC0) != 0x80)
            return false;
        code = (code << 6) | (d & 0x3F);
    }
    static const unsigned minimum[] = {0, 0x80, 0x800, 0x10000};
    if (code < minimum[extra] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return false;
    i += extra + 1;
    return true;
}

// Text that the object model can hold: well-formed UTF-8 of characters in
// the 16-bit range (strings are UCS-2 there).
bool isStorableText(const std::string& s)
{
    for (size_t i = 0; i < s.size();)
    {
        unsigned code = 0;
        if (!nextCodePoint(s, i, code) || code > 0xFFFF || code == 0)
            return false;
    }
    return true;
}

// A legal CIM name: letter or '_' first, then letters, digits and '_';
// characters U+0080..U+FFEF count as letters.
bool isLegalName(const std::string& s)
{
    if (s.empty())
        return false;
    bool first = true;
    for (size_t i = 0; i < s.size();)
    {
        unsigned code = 0;
        if (!nextCodePoint(s, i, code))
            return false;
        bool letter = (code < 0x80 && (std::isalpha(static_cast<int>(code)) || code == '_')) ||
            (code >= 0x80 && code <= 0xFFEF);
        bool digit = code < 0x80 && std::isdigit(static_cast<int>(code));
        if (!(letter || (!first && digit)))
            return false;
        first = false;
    }
    return true;
}

void checkName(const std::string& name, const SourceLocation& where, const char* what)
{
    if (!isLegalName(name))
        throw MofError(where, std::string("'") + name + "' is not a legal " + what + " name");
}

bool isLegalNamespace(const std::string& ns)
{
    size_t start = 0;
    for (;;)
    {
        size_t slash = ns.find('/', start);
        if (!isLegalName(ns.substr(start, slash == std::string::npos ? std::string::npos : slash - start)))
            return false;
        if (slash == std::string::npos)
            return true;
        start = slash + 1;
    }
}

std::string quoteText(const std::string& s)
{
    std::string out = "\"";
    for (char c : s)
    {
        if (c == '"' || c == '\\')
            out += '\\';
        out += c;
    }
    return out + "\"";
}

// ---- values ------------------------------------------------------------

bool isDateTimeText(const std::string& s)
{
    if (s.size() != 25 || s[14] != '.')
        return false;
    for (size_t i = 0; i < 25; ++i)
    {
        if (i == 14 || i == 21)
            continue;
        if (!std::isdigit(static_cast<unsigned char>(s[i])) && s[i] != '*')
            return false;
    }
    return s[21] == '+' || s[21] == '-' || s[21] == ':';
}

void checkScalar(const Literal& v, DataType type, bool allowAlias, const std::string& what)
{
    auto mismatch = [&](const char* expected) { throw MofError(v.where, what + " must be " + expected); };
    if (v.kind == Literal::Kind::Null)
        return;
    if (v.kind == Literal::Kind::Array)
        throw MofError(v.where, what + " must be a single value, not an array");
    switch (type)
    {
    case DataType::Boolean:
        if (v.kind != Literal::Kind::Boolean)
            mismatch("TRUE or FALSE");
        return;
    case DataType::Uint8:
    case DataType::Uint16:
    case DataType::Uint32:
    case DataType::Uint64:
    case DataType::Sint8:
    case DataType::Sint16:
    case DataType::Sint32:
    case DataType::Sint64:
    {
        if (v.kind != Literal::Kind::Integer)
            mismatch(("an integer (" + std::string(dataTypeName(type)) + ")").c_str());
        static const unsigned bits[] = {0, 8, 8, 16, 16, 32, 32, 64, 64};
        unsigned width = bits[static_cast<int>(type)];
        bool isSigned = type == DataType::Sint8 || type == DataType::Sint16 || type == DataType::Sint32 ||
            type == DataType::Sint64;
        std::uint64_t limit = width == 64 ? std::numeric_limits<std::uint64_t>::max()
                                          : (std::uint64_t(1) << width) - 1;
        bool fits;
        if (isSigned)
        {
            std::uint64_t positive = limit >> 1;
            fits = v.negative ? v.magnitude <= positive + 1 : v.magnitude <= positive;
        }
        else
        {
            fits = !v.negative && v.magnitude <= limit;
        }
        if (!fits)
            throw MofError(v.where, what + " is out of the range of " + dataTypeName(type));
        return;
    }
    case DataType::Real32:
    case DataType::Real64:
    {
        if (v.kind != Literal::Kind::Integer && v.kind != Literal::Kind::Real)
            mismatch("a number");
        if (v.kind == Literal::Kind::Real &&
            (!std::isfinite(v.realValue) || (type == DataType::Real32 && std::fabs(v.realValue) > FLT_MAX)))
            throw MofError(v.where, what + " is out of the range of " + dataTypeName(type));
        return;
    }
    case DataType::Char16:
    {
        if (v.kind != Literal::Kind::Char)
            mismatch("a character constant");
        if (!isStorableText(v.text))
            throw MofError(v.where, what + " is not a 16-bit character");
        return;
    }
    case DataType::String:
        if (v.kind != Literal::Kind::String)
            mismatch("a string");
        if (!isStorableText(v.text))
            throw MofError(v.where, what + " holds bytes that are not UTF-8 of 16-bit characters");
        return;
    case DataType::DateTime:
        if (v.kind != Literal::Kind::String)
            mismatch("a date-time string");
        if (!isDateTimeText(v.text))
            throw MofError(v.where,
                what +
                    " must be a date-time of the form yyyymmddhhmmss.mmmmmmsutc "
                    "or ddddddddhhmmss.mmmmmm:000");
        return;
    case DataType::Reference:
        if (v.kind == Literal::Kind::Alias && allowAlias)
            return;
        if (v.kind != Literal::Kind::String)
            mismatch(allowAlias ? "an object path string or an alias" : "an object path string");
        if (!isStorableText(v.text))
            throw MofError(v.where, what + " is not valid text");
        return;
    }
}

void checkValue(const Literal& v, DataType type, bool isArray, std::uint32_t arraySize, bool allowAlias,
    const std::string& what)
{
    if (!isArray)
    {
        checkScalar(v, type, allowAlias, what);
        return;
    }
    if (v.kind == Literal::Kind::Null)
        return;
    if (v.kind != Literal::Kind::Array)
        throw MofError(v.where, what + " must be an array value {...}");
    if (arraySize != 0 && v.elements.size() > arraySize)
        throw MofError(v.where, what + " has more than " + std::to_string(arraySize) + " elements");
    for (const Literal& e : v.elements)
    {
        if (e.kind == Literal::Kind::Null)
            throw MofError(e.where, what + " cannot hold null elements");
        checkScalar(e, type, allowAlias, what);
    }
}

// ---- qualifiers --------------------------------------------------------

unsigned effectiveFlavors(unsigned declared, unsigned atUse)
{
    unsigned flavors = declared;
    if (!(flavors & (kFlavorEnableOverride | kFlavorDisableOverride)))
        flavors |= kFlavorEnableOverride;
    if (!(flavors & (kFlavorToSubclass | kFlavorRestricted)))
        flavors |= kFlavorToSubclass;
    if (atUse & (kFlavorEnableOverride | kFlavorDisableOverride))
        flavors = (flavors & ~(kFlavorEnableOverride | kFlavorDisableOverride)) |
            (atUse & (kFlavorEnableOverride | kFlavorDisableOverride));
    if (atUse & (kFlavorToSubclass | kFlavorRestricted))
        flavors = (flavors & ~(kFlavorToSubclass | kFlavorRestricted)) |
            (atUse & (kFlavorToSubclass | kFlavorRestricted));
    return flavors | (atUse & kFlavorTranslatable);
}

bool sameValue(const Literal& a, const Literal& b)
{
    if (a.kind != b.kind)
        return false;
    switch (a.kind)
    {
    case Literal::Kind::Null: return true;
    case Literal::Kind::Boolean: return a.boolValue == b.boolValue;
    case Literal::Kind::Integer: return a.magnitude == b.magnitude && a.negative == b.negative;
    case Literal::Kind::Real: return a.realValue == b.realValue;
    case Literal::Kind::String:
    case Literal::Kind::Char:
    case Literal::Kind::Alias: return a.text == b.text;
    case Literal::Kind::Array:
        if (a.elements.size() != b.elements.size())
            return false;
        for (size_t i = 0; i < a.elements.size(); ++i)
            if (!sameValue(a.elements[i], b.elements[i]))
                return false;
        return true;
    }
    return false;
}

// What propagates from an element to the same element in a subclass.
std::vector<ResolvedQualifier> inheritable(const std::vector<ResolvedQualifier>& from)
{
    std::vector<ResolvedQualifier> out;
    for (const ResolvedQualifier& q : from)
    {
        if (q.flavors & kFlavorRestricted)
            continue;
        ResolvedQualifier copy = q;
        copy.propagated = true;
        out.push_back(std::move(copy));
    }
    return out;
}

const char* scopeWord(unsigned scope)
{
    switch (scope)
    {
    case kScopeClass: return "class";
    case kScopeAssociation: return "association";
    case kScopeIndication: return "indication";
    case kScopeProperty: return "property";
    case kScopeReference: return "reference";
    case kScopeMethod: return "method";
    default: return "parameter";
    }
}

class Resolver
{
public:
    explicit Resolver(NamespaceSchema& schema) : _schema(schema) {}

    void addQualifierDeclaration(const QualifierDeclaration& decl)
    {
        checkName(decl.name, decl.where, "qualifier");
        if (const QualifierDeclaration* seen = _schema.findQualifier(decl.name))
            throw MofError(
                decl.where, "qualifier '" + decl.name + "' is already declared at " + seen->where.toString());
        if (decl.defaultValue)
            checkValue(*decl.defaultValue, decl.type, decl.isArray, decl.arraySize.value_or(0), false,
                "the default value of qualifier '" + decl.name + "'");
        if ((decl.flavors & kFlavorEnableOverride) && (decl.flavors & kFlavorDisableOverride))
            throw MofError(decl.where,
                "qualifier '" + decl.name + "' cannot be both EnableOverride and DisableOverride");
        if ((decl.flavors & kFlavorToSubclass) && (decl.flavors & kFlavorRestricted))
            throw MofError(
                decl.where, "qualifier '" + decl.name + "' cannot be both ToSubclass and Restricted");
        _schema.qualifiers.push_back(decl);
    }

    void addClass(const ClassDeclaration& cls)
    {
        checkName(cls.name, cls.where, "class");
        if (!cls.superClass.empty())
            checkName(cls.superClass, cls.where, "class");
        auto [it, fresh] = _declared.emplace(foldCase(cls.name), &cls);
        if (!fresh)
            throw MofError(
                cls.where, "class '" + cls.name + "' is already defined at " + it->second->where.toString());
        _order.push_back(&cls);
    }

    void resolveClasses()
    {
        for (const ClassDeclaration* cls : _order)
            resolveWithAncestors(*cls);
    }

    void addInstance(const InstanceDeclaration& inst)
    {
        std::optional<size_t> index = _schema.findClass(inst.className);
        if (!index)
            throw MofError(inst.where, "class '" + inst.className + "' of the instance is not defined");
        const ResolvedClass& cls = _schema.classes[*index];
        if (cls.isAbstract)
            throw MofError(inst.where, "class '" + cls.name + "' is abstract and cannot have instances");
        for (const QualifierUse& q : inst.qualifiers)
            requireDeclared(q);

        ResolvedInstance out;
        out.className = cls.name;
        out.alias = inst.alias;
        out.where = inst.where;
        for (const PropertyValue& given : inst.values)
        {
            const ResolvedProperty* property = findProperty(cls, given.name);
            if (!property)
                throw MofError(given.where, "class '" + cls.name + "' has no property '" + given.name + "'");
            Literal value = given.value;
            checkValue(value, property->type, property->isArray, property->arraySize, true,
                "the value of property '" + property->name + "'");
            replaceAliases(value);
            out.values.emplace_back(property->name, std::move(value));
        }
        for (const ResolvedProperty& property : cls.properties)
        {
            bool given = false;
            for (const auto& [name, value] : out.values)
                given = given || equalNoCase(name, property.name);
            if (!given && property.defaultValue && property.defaultValue->kind != Literal::Kind::Null)
                out.values.emplace_back(property.name, *property.defaultValue);
        }
        for (const ResolvedProperty& property : cls.properties)
        {
            if (!property.isKey)
                continue;
            const Literal* value = valueOf(out, property.name);
            if (!value || value->kind == Literal::Kind::Null)
                throw MofError(inst.where,
                    "the instance of '" + cls.name + "' has no value for key property '" + property.name +
                        "'");
        }
        std::string path = instancePathText(_schema, out);
        if (!_paths.insert(path).second)
            throw MofError(inst.where, "an instance " + path + " is already defined");
        if (!inst.alias.empty())
        {
            checkName(inst.alias, inst.where, "alias");
            if (!_aliases.emplace(foldCase(inst.alias), path).second)
                throw MofError(inst.where, "alias $" + inst.alias + " is already defined");
        }
        _schema.instances.push_back(std::move(out));
    }

private:
    static const Literal* valueOf(const ResolvedInstance& inst, const std::string& name)
    {
        for (const auto& [n, v] : inst.values)
            if (equalNoCase(n, name))
                return &v;
        return nullptr;
    }

    void replaceAliases(Literal& value)
    {
        if (value.kind == Literal::Kind::Alias)
        {
            auto it = _aliases.find(foldCase(value.text));
            if (it == _aliases.end())
                throw MofError(
                    value.where, "alias $" + value.text + " is not defined by an earlier instance");
            value.kind = Literal::Kind::String;
            value.text = it->second;
        }
        for (Literal& e : value.elements)
            replaceAliases(e);
    }

    const QualifierDeclaration& requireDeclared(const QualifierUse& use) const
    {
        const QualifierDeclaration* decl = _schema.findQualifier(use.name);
        if (!decl)
            throw MofError(use.where, "qualifier '" + use.name + "' is not declared");
        return *decl;
    }

    // Checks the qualifiers written on an element and merges them with the
    // ones it inherits: written ones first, in their order, then inherited
    // ones not written again.
    std::vector<ResolvedQualifier> resolveQualifiers(const std::vector<QualifierUse>& uses,
        unsigned allowedScopes, unsigned shownScope, std::vector<ResolvedQualifier> inherited)
    {
        std::vector<ResolvedQualifier> out;
        for (const QualifierUse& use : uses)
        {
            const QualifierDeclaration& decl = requireDeclared(use);
            if (!(decl.scopes & allowedScopes))
                throw MofError(
                    use.where, "qualifier '" + decl.name + "' cannot be used on a " + scopeWord(shownScope));
            ResolvedQualifier q;
            q.name = decl.name;
            q.type = decl.type;
            q.isArray = decl.isArray;
            q.flavors = effectiveFlavors(decl.flavors, use.flavors);
            if (use.value)
            {
                q.value = *use.value;
                checkValue(q.value, decl.type, decl.isArray, decl.arraySize.value_or(0), false,
                    "the value of qualifier '" + decl.name + "'");
            }
            else if (decl.type == DataType::Boolean && !decl.isArray)
            {
                q.value.kind = Literal::Kind::Boolean;
                q.value.boolValue = true;
                q.value.where = use.where;
            }
            else
            {
                throw MofError(use.where,
                    "qualifier '" + decl.name + "' needs a value of type " + dataTypeName(decl.type) +
                        (decl.isArray ? "[]" : ""));
            }
            for (auto it = inherited.begin(); it != inherited.end(); ++it)
            {
                if (!equalNoCase(it->name, q.name))
                    continue;
                if ((it->flavors & kFlavorDisableOverride) && !sameValue(it->value, q.value))
                    throw MofError(use.where,
                        "qualifier '" + decl.name +
                            "' cannot be given another value than the inherited one "
                            "(its flavor is DisableOverride)");
                inherited.erase(it);
                break;
            }
            out.push_back(std::move(q));
        }
        for (ResolvedQualifier& q : inherited)
            out.push_back(std::move(q));
        checkCodesPairUp(uses, out);
        return out;
    }

    // ValueMap and Values of one element give a code and its text at the
    // same index, so a client decodes a value by its place in both lists:
    // the lists must be equally long. Checked where either is written.
    static void checkCodesPairUp(
        const std::vector<QualifierUse>& uses, const std::vector<ResolvedQualifier>& all)
    {
        const ResolvedQualifier* codes = findQualifier(all, "ValueMap");
        const ResolvedQualifier* texts = findQualifier(all, "Values");
        if (!codes || !texts || codes->value.kind != Literal::Kind::Array ||
            texts->value.kind != Literal::Kind::Array ||
            codes->value.elements.size() == texts->value.elements.size())
            return;
        for (const QualifierUse& use : uses)
            if (equalNoCase(use.name, "ValueMap") || equalNoCase(use.name, "Values"))
                throw MofError(use.where,
                    "ValueMap and Values differ in length (" + std::to_string(codes->value.elements.size()) +
                        " and " + std::to_string(texts->value.elements.size()) +
                        "): each code needs its text");
    }

    static const ResolvedQualifier* findQualifier(
        const std::vector<ResolvedQualifier>& list, const char* name)
    {
        for (const ResolvedQualifier& q : list)
            if (equalNoCase(q.name, name))
                return &q;
        return nullptr;
    }
    static bool isTrue(const std::vector<ResolvedQualifier>& list, const char* name)
    {
        const ResolvedQualifier* q = findQualifier(list, name);
        return q && q->value.kind == Literal::Kind::Boolean && q->value.boolValue;
    }

    static const ResolvedProperty* findProperty(const ResolvedClass& cls, const std::string& name)
    {
        for (const ResolvedProperty& p : cls.properties)
            if (equalNoCase(p.name, name))
                return &p;
        return nullptr;
    }

    bool isSameOrSubclass(const std::string& name, const std::string& ancestor) const
    {
        std::optional<size_t> index = _schema.findClass(name);
        while (index)
        {
            const ResolvedClass& c = _schema.classes[*index];
            if (equalNoCase(c.name, ancestor))
                return true;
            if (c.superClass.empty())
                return false;
            index = _schema.findClass(c.superClass);
        }
        return false;
    }

    // Reference classes must name a declared class; returns its spelling.
    std::string referencedClass(const std::string& name, const SourceLocation& where) const
    {
        auto it = _declared.find(foldCase(name));
        if (it == _declared.end())
            throw MofError(where, "referenced class '" + name + "' is not defined");
        return it->second->name;
    }

    // The name an Override qualifier gives, when one is written.
    static const QualifierUse* overrideOf(const std::vector<QualifierUse>& uses)
    {
        for (const QualifierUse& q : uses)
            if (equalNoCase(q.name, "Override"))
                return &q;
        return nullptr;
    }

    // Resolves `cls` after all of its unresolved ancestors, without
    // recursion, so that any depth of chain is handled.
    void resolveWithAncestors(const ClassDeclaration& cls)
    {
        std::vector<const ClassDeclaration*> chain;
        std::set<std::string> onChain;
        const ClassDeclaration* current = &cls;
        while (current && !_schema.findClass(current->name))
        {
            if (!onChain.insert(foldCase(current->name)).second)
                throw MofError(current->where, "class '" + current->name + "' inherits from itself");
            chain.push_back(current);
            if (current->superClass.empty())
                break;
            auto it = _declared.find(foldCase(current->superClass));
            if (it == _declared.end())
                throw MofError(current->where,
                    "superclass '" + current->superClass + "' of class '" + current->name +
                        "' is not defined");
            current = it->second;
        }
        for (auto it = chain.rbegin(); it != chain.rend(); ++it)
            resolveOne(**it);
    }

    void resolveOne(const ClassDeclaration& decl)
    {
        const ResolvedClass* super = nullptr;
        if (!decl.superClass.empty())
            super = &_schema.classes[*_schema.findClass(decl.superClass)];

        ResolvedClass cls;
        cls.name = decl.name;
        cls.superClass = super ? super->name : std::string();
        cls.where = decl.where;

        bool writesAssociation = false;
        for (const QualifierUse& q : decl.qualifiers)
            if (equalNoCase(q.name, "Association") &&
                (!q.value || (q.value->kind == Literal::Kind::Boolean && q.value->boolValue)))
                writesAssociation = true;
        bool association = writesAssociation || (super && super->isAssociation);
        if (writesAssociation && super && !super->isAssociation)
            throw MofError(decl.where,
                "association '" + decl.name + "' cannot derive from '" + super->name +
                    "', which is not an association");
        unsigned classScopes = kScopeClass | kScopeIndication |
            (association ? unsigned(kScopeAssociation) : 0u);
        cls.qualifiers = resolveQualifiers(decl.qualifiers, classScopes,
            association ? kScopeAssociation : kScopeClass,
            super ? inheritable(super->qualifiers) : std::vector<ResolvedQualifier>{});
        cls.isAssociation = isTrue(cls.qualifiers, "Association");
        cls.isAbstract = isTrue(cls.qualifiers, "Abstract");

        bool superHasKeys = false;
        if (super)
        {
            for (const ResolvedProperty& p : super->properties)
            {
                ResolvedProperty copy = p;
                copy.qualifiers = inheritable(p.qualifiers);
                copy.propagated = true;
                cls.properties.push_back(std::move(copy));
                superHasKeys = superHasKeys || p.isKey;
            }
            for (const ResolvedMethod& m : super->methods)
            {
                ResolvedMethod copy = m;
                copy.qualifiers = inheritable(m.qualifiers);
                copy.propagated = true;
                cls.methods.push_back(std::move(copy));
            }
        }

        std::set<std::string> local;
        for (const PropertyDeclaration& p : decl.properties)
        {
            if (!local.insert(foldCase(p.name)).second)
                throw MofError(
                    p.where, "property '" + p.name + "' is declared twice in class '" + decl.name + "'");
            resolveProperty(cls, p, superHasKeys);
        }
        for (const MethodDeclaration& m : decl.methods)
        {
            if (!local.insert(foldCase(m.name)).second)
                throw MofError(m.where, "'" + m.name + "' is declared twice in class '" + decl.name + "'");
            resolveMethod(cls, m);
        }

        _schema.classIndex.emplace(foldCase(cls.name), _schema.classes.size());
        _schema.classes.push_back(std::move(cls));
    }

    void resolveProperty(ResolvedClass& cls, const PropertyDeclaration& p, bool superHasKeys)
    {
        checkName(p.name, p.where, "property");
        bool reference = p.type == DataType::Reference;
        if (reference && !cls.isAssociation)
            throw MofError(p.where, "reference '" + p.name + "' is only allowed in an association class");

        ResolvedProperty* overridden = nullptr;
        for (ResolvedProperty& inherited : cls.properties)
            if (equalNoCase(inherited.name, p.name))
                overridden = &inherited;
        const QualifierUse* override = overrideOf(p.qualifiers);
        if (override)
        {
            if (override->value && override->value->kind == Literal::Kind::String &&
                !equalNoCase(override->value->text, p.name))
                throw MofError(override->where, "Override must name the property itself ('" + p.name + "')");
            if (!overridden)
                throw MofError(override->where,
                    "property '" + p.name + "' overrides nothing: no superclass of '" + cls.name +
                        "' has it");
        }
        else if (overridden)
        {
            throw MofError(p.where,
                "property '" + p.name + "' is already defined in superclass '" + overridden->classOrigin +
                    "'; write Override(\"" + p.name + "\") to redefine it");
        }

        ResolvedProperty out;
        out.name = p.name;
        out.type = p.type;
        out.isArray = p.isArray;
        out.arraySize = p.arraySize.value_or(0);
        out.classOrigin = cls.name;
        out.where = p.where;
        if (reference)
            out.referenceClass = referencedClass(p.referenceClass, p.where);
        if (overridden)
        {
            if (overridden->type != p.type || overridden->isArray != p.isArray)
                throw MofError(p.where,
                    "property '" + p.name + "' must keep the type of the property it overrides (" +
                        dataTypeName(overridden->type) + (overridden->isArray ? "[]" : "") + ")");
            if (reference && !isSameOrSubclass(out.referenceClass, overridden->referenceClass))
                throw MofError(p.where,
                    "reference '" + p.name + "' must refer to '" + overridden->referenceClass +
                        "' or one of its subclasses");
            out.defaultValue = overridden->defaultValue;
        }
        if (p.defaultValue)
        {
            checkValue(*p.defaultValue, p.type, p.isArray, out.arraySize, false,
                "the default value of property '" + p.name + "'");
            out.defaultValue = *p.defaultValue;
        }
        out.qualifiers = resolveQualifiers(p.qualifiers, reference ? kScopeReference : kScopeProperty,
            reference ? kScopeReference : kScopeProperty,
            overridden ? inheritable(overridden->qualifiers) : std::vector<ResolvedQualifier>{});
        out.isKey = isTrue(out.qualifiers, "Key");
        if (out.isKey && out.isArray)
            throw MofError(p.where, "key property '" + p.name + "' cannot be an array");
        if (out.isKey && superHasKeys && !(overridden && overridden->isKey))
            throw MofError(p.where,
                "class '" + cls.name + "' cannot add key '" + p.name +
                    "': its superclasses already define the keys");
        if (overridden)
            *overridden = std::move(out);
        else
            cls.properties.push_back(std::move(out));
    }

    void resolveMethod(ResolvedClass& cls, const MethodDeclaration& m)
    {
        checkName(m.name, m.where, "method");
        ResolvedMethod* overridden = nullptr;
        for (ResolvedMethod& inherited : cls.methods)
            if (equalNoCase(inherited.name, m.name))
                overridden = &inherited;
        for (const ResolvedProperty& p : cls.properties)
            if (equalNoCase(p.name, m.name))
                throw MofError(
                    m.where, "method '" + m.name + "' has the name of a property of '" + cls.name + "'");
        const QualifierUse* override = overrideOf(m.qualifiers);
        if (override)
        {
            if (override->value && override->value->kind == Literal::Kind::String &&
                !equalNoCase(override->value->text, m.name))
                throw MofError(override->where, "Override must name the method itself ('" + m.name + "')");
            if (!overridden)
                throw MofError(override->where,
                    "method '" + m.name + "' overrides nothing: no superclass of '" + cls.name + "' has it");
        }
        else if (overridden)
        {
            throw MofError(m.where,
                "method '" + m.name + "' is already defined in superclass '" + overridden->classOrigin +
                    "'; write Override(\"" + m.name + "\") to redefine it");
        }
        if (overridden && overridden->returnType != m.returnType)
            throw MofError(m.where,
                "method '" + m.name + "' must keep the return type of the method it overrides (" +
                    dataTypeName(overridden->returnType) + ")");

        ResolvedMethod out;
        out.name = m.name;
        out.returnType = m.returnType;
        out.classOrigin = cls.name;
        out.qualifiers = resolveQualifiers(m.qualifiers, kScopeMethod, kScopeMethod,
            overridden ? inheritable(overridden->qualifiers) : std::vector<ResolvedQualifier>{});
        for (const ParameterDeclaration& p : m.parameters)
        {
            checkName(p.name, p.where, "parameter");
            ResolvedParameter param;
            param.name = p.name;
            param.type = p.type;
            param.isArray = p.isArray;
            param.arraySize = p.arraySize.value_or(0);
            if (p.type == DataType::Reference)
                param.referenceClass = referencedClass(p.referenceClass, p.where);
            param.qualifiers = resolveQualifiers(p.qualifiers, kScopeParameter, kScopeParameter, {});
            out.parameters.push_back(std::move(param));
        }
        if (overridden)
            *overridden = std::move(out);
        else
            cls.methods.push_back(std::move(out));
    }

    NamespaceSchema& _schema;
    std::map<std::string, const ClassDeclaration*> _declared;  // folded name
    std::vector<const ClassDeclaration*> _order;
    std::map<std::string, std::string> _aliases;  // folded alias -> path text
    std::set<std::string> _paths;
};

std::string keyValueText(const Literal& v, DataType type)
{
    switch (v.kind)
    {
    case Literal::Kind::Boolean: return v.boolValue ? "TRUE" : "FALSE";
    case Literal::Kind::Integer: return (v.negative ? "-" : "") + std::to_string(v.magnitude);
    case Literal::Kind::Real:
    {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%.17g", v.realValue);
        return buffer;
    }
    default: (void)type; return quoteText(v.text);
    }
}

}  // namespace

std::string instancePathText(const NamespaceSchema& schema, const ResolvedInstance& instance)
{
    const ResolvedClass& cls = schema.classes[*schema.findClass(instance.className)];
    std::string path = cls.name;
    char separator = '.';
    for (const ResolvedProperty& p : cls.properties)
    {
        if (!p.isKey)
            continue;
        for (const auto& [name, value] : instance.values)
        {
            if (!equalNoCase(name, p.name) || value.kind == Literal::Kind::Null)
                continue;
            path += separator;
            path += p.name + "=" + keyValueText(value, p.type);
            separator = ',';
        }
    }
    return path;
}

std::vector<NamespaceSchema> resolveSchema(const std::vector<Declaration>& declarations)
{
    // Group by namespace, keeping the order in which namespaces appear.
    std::vector<NamespaceSchema> schemas;
    std::vector<std::vector<const Declaration*>> groups;
    for (const Declaration& d : declarations)
    {
        size_t i = 0;
        while (i < schemas.size() && !equalNoCase(schemas[i].name, d.nameSpace))
            ++i;
        if (i == schemas.size())
        {
            if (!isLegalNamespace(d.nameSpace))
            {
                SourceLocation where = std::visit([](const auto& body) { return body.where; }, d.body);
                throw MofError(where, "'" + d.nameSpace + "' is not a legal namespace name");
            }
            schemas.emplace_back();
            schemas.back().name = d.nameSpace;
            groups.emplace_back();
        }
        groups[i].push_back(&d);
    }
    for (size_t i = 0; i < schemas.size(); ++i)
    {
        Resolver resolver(schemas[i]);
        for (const Declaration* d : groups[i])
            if (const auto* q = std::get_if<QualifierDeclaration>(&d->body))
                resolver.addQualifierDeclaration(*q);
        for (const Declaration* d : groups[i])
            if (const auto* c = std::get_if<ClassDeclaration>(&d->body))
                resolver.addClass(*c);
        resolver.resolveClasses();
        for (const Declaration* d : groups[i])
            if (const auto* inst = std::get_if<InstanceDeclaration>(&d->body))
                resolver.addInstance(*inst);
    }
    return schemas;
}

}  // namespace zda::mof
