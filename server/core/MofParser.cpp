#include "MofParser.h"

#include "MofError.h"
#include "MofLexer.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <limits>
#include <sstream>

namespace zda::mof
{

bool equalNoCase(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
    });
}

std::string foldCase(const std::string& s)
{
    std::string out = s;
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

const char* dataTypeName(DataType type)
{
    static const char* const names[] = {"boolean", "uint8", "sint8", "uint16", "sint16", "uint32", "sint32",
        "uint64", "sint64", "real32", "real64", "char16", "string", "datetime", "ref"};
    return names[static_cast<int>(type)];
}

FileReader fileSystemReader()
{
    return [](const std::string& path, const SourceLocation& from) {
        std::ifstream in(path, std::ios::binary);
        if (!in)
            throw MofError(from, "cannot open \"" + path + "\"");
        std::ostringstream text;
        text << in.rdbuf();
        if (in.bad())
            throw MofError(from, "cannot read \"" + path + "\"");
        return text.str();
    };
}

namespace
{

constexpr int kMaxIncludeDepth = 16;

std::string folderOf(const std::string& path)
{
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string joinPath(const std::string& base, const std::string& relative)
{
    if (!relative.empty() && relative[0] == '/')
        return relative;
    return folderOf(base) + relative;
}

const struct
{
    const char* word;
    DataType type;
} kDataTypes[] = {
    {"boolean", DataType::Boolean},
    {"uint8", DataType::Uint8},
    {"sint8", DataType::Sint8},
    {"uint16", DataType::Uint16},
    {"sint16", DataType::Sint16},
    {"uint32", DataType::Uint32},
    {"sint32", DataType::Sint32},
    {"uint64", DataType::Uint64},
    {"sint64", DataType::Sint64},
    {"real32", DataType::Real32},
    {"real64", DataType::Real64},
    {"char16", DataType::Char16},
    {"string", DataType::String},
    {"datetime", DataType::DateTime},
};

const struct
{
    const char* word;
    unsigned bits;
} kScopes[] = {
    {"class", kScopeClass},
    {"association", kScopeAssociation},
    {"indication", kScopeIndication},
    {"property", kScopeProperty},
    {"reference", kScopeReference},
    {"method", kScopeMethod},
    {"parameter", kScopeParameter},
    {"any", kScopeAny},
};

const struct
{
    const char* word;
    unsigned bits;
} kFlavors[] = {
    {"enableoverride", kFlavorEnableOverride}, {"disableoverride", kFlavorDisableOverride},
    {"tosubclass", kFlavorToSubclass}, {"restricted", kFlavorRestricted},
    {"translatable", kFlavorTranslatable}, {"toinstance", 0},  // obsolete, no effect
};

class Parser
{
public:
    Parser(const FileReader& reader, std::vector<Declaration>& out, std::vector<std::string>& openFiles)
        : _reader(reader), _out(out), _openFiles(openFiles)
    {}

    void parseFile(const std::string& text, const std::string& fileName, std::string nameSpace)
    {
        _tokens = tokenize(text, fileName);
        _pos = 0;
        _fileName = fileName;
        _nameSpace = std::move(nameSpace);
        while (!at(Token::Kind::End))
            parseTopLevel();
    }

private:
    // ---- token access -------------------------------------------------
    const Token& cur() const { return _tokens[_pos]; }
    bool at(Token::Kind kind) const { return cur().kind == kind; }
    bool atPunct(char c) const { return at(Token::Kind::Punct) && cur().text[0] == c; }
    bool atWord(const char* word) const
    {
        return at(Token::Kind::Identifier) && equalNoCase(cur().text, word);
    }
    const Token& take()
    {
        const Token& t = _tokens[_pos];
        if (t.kind != Token::Kind::End)
            ++_pos;
        return t;
    }

    [[noreturn]] void expected(const std::string& what) const
    {
        throw MofError(cur().where, "expected " + what + ", found " + describe(cur()));
    }
    void expectPunct(char c, const char* context)
    {
        if (!atPunct(c))
            expected(std::string("'") + c + "' " + context);
        take();
    }
    void expectWord(const char* word, const char* context)
    {
        if (!atWord(word))
            expected(std::string("'") + word + "' " + context);
        take();
    }
    const Token& expectIdentifier(const char* what)
    {
        if (!at(Token::Kind::Identifier))
            expected(what);
        return take();
    }

    // ---- top level ----------------------------------------------------
    void parseTopLevel()
    {
        if (at(Token::Kind::Pragma))
        {
            parsePragma();
            return;
        }
        if (atWord("qualifier"))
        {
            parseQualifierDeclaration();
            return;
        }
        std::vector<QualifierUse> qualifiers;
        if (atPunct('['))
            qualifiers = parseQualifierList();
        if (atWord("class"))
        {
            parseClass(std::move(qualifiers));
        }
        else if (atWord("instance"))
        {
            parseInstance(std::move(qualifiers));
        }
        else
        {
            expected(qualifiers.empty() ? "'class', 'instance', 'qualifier' or '#pragma'"
                                        : "'class' or 'instance' after the qualifier list");
        }
    }

    void parsePragma()
    {
        SourceLocation where = take().where;
        const Token& name = expectIdentifier("a pragma name after '#pragma'");
        std::string pragma = name.text;
        expectPunct('(', "after the pragma name");
        if (!at(Token::Kind::String))
            expected("a string argument of the pragma");
        std::string argument = parseStrings();
        expectPunct(')', "after the pragma argument");
        if (equalNoCase(pragma, "include"))
        {
            include(argument, where);
        }
        else if (equalNoCase(pragma, "namespace"))
        {
            if (argument.empty())
                throw MofError(name.where, "the namespace pragma needs a namespace name");
            _nameSpace = argument;
            while (!_nameSpace.empty() && _nameSpace[0] == '/')
                _nameSpace.erase(0, 1);
            if (_nameSpace.empty())
                throw MofError(name.where, "the namespace pragma needs a namespace name");
        }
        else if (equalNoCase(pragma, "locale") || equalNoCase(pragma, "instancelocale"))
        {
            // Accepted: text is taken as written, whatever its language.
        }
        else
        {
            throw MofError(name.where, "unsupported pragma '" + pragma + "': expected include or namespace");
        }
    }

    void include(const std::string& relative, const SourceLocation& where)
    {
        if (relative.empty())
            throw MofError(where, "the include pragma needs a file name");
        std::string path = joinPath(_fileName, relative);
        if (static_cast<int>(_openFiles.size()) >= kMaxIncludeDepth)
            throw MofError(where, "includes nested more than " + std::to_string(kMaxIncludeDepth) + " deep");
        if (std::find(_openFiles.begin(), _openFiles.end(), path) != _openFiles.end())
            throw MofError(where, "\"" + path + "\" includes itself");
        std::string text = _reader(path, where);
        _openFiles.push_back(path);
        Parser nested(_reader, _out, _openFiles);
        nested.parseFile(text, path, _nameSpace);
        _openFiles.pop_back();
    }

    // ---- qualifiers ---------------------------------------------------
    std::vector<QualifierUse> parseQualifierList()
    {
        expectPunct('[', "to open a qualifier list");
        std::vector<QualifierUse> list;
        for (;;)
        {
            QualifierUse q;
            const Token& name = expectIdentifier("a qualifier name");
            q.name = name.text;
            q.where = name.where;
            if (atPunct('('))
            {
                take();
                q.value = parseInitializer(true);
                expectPunct(')', "after the qualifier value");
            }
            else if (atPunct('{'))
            {
                q.value = parseArrayInitializer();
            }
            if (atPunct(':'))
            {
                take();
                if (!at(Token::Kind::Identifier))
                    expected("a flavor after ':'");
                while (at(Token::Kind::Identifier))
                    q.flavors |= parseFlavor();
            }
            for (const QualifierUse& seen : list)
                if (equalNoCase(seen.name, q.name))
                    throw MofError(q.where, "qualifier '" + q.name + "' given twice");
            list.push_back(std::move(q));
            if (atPunct(','))
            {
                take();
                continue;
            }
            expectPunct(']', "or ',' in the qualifier list");
            return list;
        }
    }

    unsigned parseFlavor()
    {
        const Token& word = take();
        for (const auto& f : kFlavors)
            if (equalNoCase(word.text, f.word))
                return f.bits;
        throw MofError(word.where,
            "expected a flavor (EnableOverride, DisableOverride, ToSubclass, "
            "Restricted, Translatable), found '" +
                word.text + "'");
    }

    void parseQualifierDeclaration()
    {
        QualifierDeclaration decl;
        decl.where = take().where;
        decl.name = expectIdentifier("a qualifier name after 'qualifier'").text;
        expectPunct(':', "before the qualifier type");
        std::optional<DataType> type = dataTypeHere();
        if (!type)
            expected("a data type for the qualifier");
        take();
        decl.type = *type;
        if (atPunct('['))
            parseArraySuffix(decl.isArray, decl.arraySize);
        if (atPunct('='))
        {
            take();
            decl.defaultValue = parseInitializer(false);
        }
        expectPunct(',', "before 'Scope'");
        expectWord("scope", "in the qualifier declaration");
        expectPunct('(', "after 'Scope'");
        for (;;)
        {
            const Token& word = expectIdentifier("a scope (class, association, indication, property, "
                                                 "reference, method, parameter or any)");
            unsigned bits = 0;
            for (const auto& s : kScopes)
                if (equalNoCase(word.text, s.word))
                    bits = s.bits;
            if (!bits)
                throw MofError(word.where,
                    "expected a scope (class, association, indication, property, "
                    "reference, method, parameter or any), found '" +
                        word.text + "'");
            decl.scopes |= bits;
            if (atPunct(','))
            {
                take();
                continue;
            }
            expectPunct(')', "or ',' in the scope list");
            break;
        }
        if (atPunct(','))
        {
            take();
            expectWord("flavor", "after ','");
            expectPunct('(', "after 'Flavor'");
            for (;;)
            {
                if (!at(Token::Kind::Identifier))
                    expected("a flavor");
                decl.flavors |= parseFlavor();
                if (atPunct(','))
                {
                    take();
                    continue;
                }
                expectPunct(')', "or ',' in the flavor list");
                break;
            }
        }
        expectPunct(';', "to end the qualifier declaration");
        _out.push_back(Declaration{_nameSpace, std::move(decl)});
    }

    // ---- classes ------------------------------------------------------
    void parseClass(std::vector<QualifierUse> qualifiers)
    {
        ClassDeclaration cls;
        cls.qualifiers = std::move(qualifiers);
        cls.where = take().where;
        cls.name = expectIdentifier("a class name after 'class'").text;
        if (atPunct(':'))
        {
            take();
            cls.superClass = expectIdentifier("a superclass name after ':'").text;
        }
        expectPunct('{', "to open the class body");
        while (!atPunct('}'))
        {
            if (at(Token::Kind::End))
                expected("'}' to close the class body");
            parseFeature(cls);
        }
        take();
        expectPunct(';', "after the class body");
        _out.push_back(Declaration{_nameSpace, std::move(cls)});
    }

    std::optional<DataType> dataTypeHere() const
    {
        if (!at(Token::Kind::Identifier))
            return std::nullopt;
        for (const auto& t : kDataTypes)
            if (equalNoCase(cur().text, t.word))
                return t.type;
        return std::nullopt;
    }

    // "name ref" or a data type keyword. Returns the type; fills the class
    // for references.
    DataType parseTypeOrReference(std::string& referenceClass, const char* what)
    {
        if (std::optional<DataType> type = dataTypeHere())
        {
            take();
            return *type;
        }
        if (!at(Token::Kind::Identifier))
            expected(what);
        const Token& cls = take();
        if (!atWord("ref"))
            throw MofError(cls.where, "expected a data type or '<class> REF', found '" + cls.text + "'");
        take();
        referenceClass = cls.text;
        return DataType::Reference;
    }

    void parseArraySuffix(bool& isArray, std::optional<std::uint32_t>& size)
    {
        take();  // '['
        isArray = true;
        if (at(Token::Kind::Integer))
        {
            const Token& n = take();
            if (n.negative || n.magnitude == 0 || n.magnitude > std::numeric_limits<std::uint32_t>::max())
                throw MofError(n.where, "array size must be a positive 32-bit number");
            size = static_cast<std::uint32_t>(n.magnitude);
        }
        expectPunct(']', "to close the array size");
    }

    void parseFeature(ClassDeclaration& cls)
    {
        std::vector<QualifierUse> qualifiers;
        if (atPunct('['))
            qualifiers = parseQualifierList();
        SourceLocation typeAt = cur().where;
        std::string referenceClass;
        DataType type = parseTypeOrReference(referenceClass, "a property, reference or method declaration");
        const Token& name = expectIdentifier("a property or method name");
        if (atPunct('('))
        {
            if (type == DataType::Reference)
                throw MofError(typeAt, "a method cannot return a reference");
            MethodDeclaration method;
            method.qualifiers = std::move(qualifiers);
            method.name = name.text;
            method.returnType = type;
            method.where = name.where;
            parseParameters(method);
            expectPunct(';', "after the method declaration");
            cls.methods.push_back(std::move(method));
            return;
        }
        PropertyDeclaration property;
        property.qualifiers = std::move(qualifiers);
        property.name = name.text;
        property.type = type;
        property.referenceClass = referenceClass;
        property.where = name.where;
        if (atPunct('['))
        {
            if (type == DataType::Reference)
                throw MofError(cur().where, "a reference property cannot be an array");
            parseArraySuffix(property.isArray, property.arraySize);
        }
        if (atPunct('='))
        {
            take();
            property.defaultValue = parseInitializer(false);
        }
        expectPunct(';', "after the property declaration");
        cls.properties.push_back(std::move(property));
    }

    void parseParameters(MethodDeclaration& method)
    {
        take();  // '('
        if (atPunct(')'))
        {
            take();
            return;
        }
        for (;;)
        {
            ParameterDeclaration param;
            if (atPunct('['))
                param.qualifiers = parseQualifierList();
            param.type = parseTypeOrReference(param.referenceClass, "a parameter type");
            const Token& name = expectIdentifier("a parameter name");
            param.name = name.text;
            param.where = name.where;
            if (atPunct('['))
                parseArraySuffix(param.isArray, param.arraySize);
            for (const ParameterDeclaration& seen : method.parameters)
                if (equalNoCase(seen.name, param.name))
                    throw MofError(param.where, "parameter '" + param.name + "' declared twice");
            method.parameters.push_back(std::move(param));
            if (atPunct(','))
            {
                take();
                continue;
            }
            expectPunct(')', "or ',' in the parameter list");
            return;
        }
    }

    // ---- instances ----------------------------------------------------
    void parseInstance(std::vector<QualifierUse> qualifiers)
    {
        InstanceDeclaration inst;
        inst.qualifiers = std::move(qualifiers);
        inst.where = take().where;
        expectWord("of", "after 'instance'");
        inst.className = expectIdentifier("a class name after 'instance of'").text;
        if (atWord("as"))
        {
            take();
            if (!at(Token::Kind::Alias))
                expected("an alias ($name) after 'as'");
            inst.alias = take().text;
        }
        expectPunct('{', "to open the instance body");
        while (!atPunct('}'))
        {
            if (at(Token::Kind::End))
                expected("'}' to close the instance body");
            if (atPunct('['))
                parseQualifierList();  // qualifiers on values carry no meaning here
            PropertyValue value;
            const Token& name = expectIdentifier("a property name");
            value.name = name.text;
            value.where = name.where;
            expectPunct('=', "after the property name");
            value.value = parseInitializer(false);
            expectPunct(';', "after the property value");
            for (const PropertyValue& seen : inst.values)
                if (equalNoCase(seen.name, value.name))
                    throw MofError(value.where, "property '" + value.name + "' given twice");
            inst.values.push_back(std::move(value));
        }
        take();
        expectPunct(';', "after the instance body");
        _out.push_back(Declaration{_nameSpace, std::move(inst)});
    }

    // ---- values -------------------------------------------------------
    std::string parseStrings()
    {
        std::string text;
        while (at(Token::Kind::String))
            text += take().text;
        return text;
    }

    Literal parseInitializer(bool inQualifier)
    {
        if (atPunct('{'))
            return parseArrayInitializer();
        return parseConstant(inQualifier ? "a qualifier value" : "a value");
    }

    Literal parseArrayInitializer()
    {
        Literal array;
        array.kind = Literal::Kind::Array;
        array.where = take().where;  // '{'
        if (atPunct('}'))
        {
            take();
            return array;
        }
        for (;;)
        {
            if (atPunct('{'))
                throw MofError(cur().where, "arrays cannot be nested");
            array.elements.push_back(parseConstant("an array element"));
            if (atPunct(','))
            {
                take();
                continue;
            }
            expectPunct('}', "or ',' in the array value");
            return array;
        }
    }

    Literal parseConstant(const char* what)
    {
        Literal value;
        value.where = cur().where;
        switch (cur().kind)
        {
        case Token::Kind::Integer:
            value.kind = Literal::Kind::Integer;
            value.magnitude = cur().magnitude;
            value.negative = cur().negative;
            take();
            return value;
        case Token::Kind::Real:
            value.kind = Literal::Kind::Real;
            value.realValue = cur().realValue;
            take();
            return value;
        case Token::Kind::String:
            value.kind = Literal::Kind::String;
            value.text = parseStrings();
            return value;
        case Token::Kind::Char:
            value.kind = Literal::Kind::Char;
            value.text = take().text;
            return value;
        case Token::Kind::Alias:
            value.kind = Literal::Kind::Alias;
            value.text = take().text;
            return value;
        case Token::Kind::Identifier:
            if (atWord("true") || atWord("false"))
            {
                value.kind = Literal::Kind::Boolean;
                value.boolValue = atWord("true");
                take();
                return value;
            }
            if (atWord("null"))
            {
                take();
                return value;
            }
            break;
        default: break;
        }
        expected(what);
    }

    const FileReader& _reader;
    std::vector<Declaration>& _out;
    std::vector<std::string>& _openFiles;
    std::vector<Token> _tokens;
    size_t _pos = 0;
    std::string _fileName;
    std::string _nameSpace;
};

}  // namespace

std::vector<Declaration> parseMof(const std::string& text, const std::string& fileName,
    const std::string& defaultNamespace, const FileReader& reader)
{
    std::vector<Declaration> out;
    std::vector<std::string> openFiles{fileName};
    Parser(reader, out, openFiles).parseFile(text, fileName, defaultNamespace);
    return out;
}

std::vector<Declaration> parseMofFile(
    const std::string& path, const std::string& defaultNamespace, const FileReader& reader)
{
    std::string text = reader(path, SourceLocation{path, 0, 0});
    return parseMof(text, path, defaultNamespace, reader);
}

}  // namespace zda::mof
