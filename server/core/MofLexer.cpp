#include "MofLexer.h"

#include "MofError.h"

#include <Pegasus/Common/CIMValueText.h>

#include <cctype>
#include <cstdlib>
#include <limits>

namespace zda::mof
{

std::string SourceLocation::toString() const
{
    return file + ":" + std::to_string(line) + ":" + std::to_string(column);
}

MofError::MofError(SourceLocation where, const std::string& message)
    : std::runtime_error(where.toString() + ": " + message), _where(std::move(where)), _message(message)
{}

namespace
{

bool isIdentStart(unsigned char c)
{
    return std::isalpha(c) || c == '_' || c >= 0x80;
}
bool isIdentPart(unsigned char c)
{
    return isIdentStart(c) || std::isdigit(c);
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

void appendUtf8(std::string& out, unsigned code)
{
    if (code < 0x80)
    {
        out += static_cast<char>(code);
    }
    else if (code < 0x800)
    {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

class Lexer
{
public:
    Lexer(const std::string& text, const std::string& file) : _text(text), _file(file) {}

    std::vector<Token> run()
    {
        std::vector<Token> tokens;
        for (;;)
        {
            skipSpaceAndComments();
            Token token;
            token.where = here();
            if (_pos >= _text.size())
            {
                tokens.push_back(token);
                return tokens;
            }
            lexOne(token);
            tokens.push_back(std::move(token));
        }
    }

private:
    SourceLocation here() const { return SourceLocation{_file, _line, _column}; }
    char peek(size_t ahead = 0) const { return _pos + ahead < _text.size() ? _text[_pos + ahead] : '\0'; }
    bool atEnd() const { return _pos >= _text.size(); }
    void advance()
    {
        if (_text[_pos] == '\n')
        {
            ++_line;
            _column = 1;
        }
        else
        {
            ++_column;
        }
        ++_pos;
    }

    [[noreturn]] void fail(const SourceLocation& where, const std::string& message) const
    {
        throw MofError(where, message);
    }

    void skipSpaceAndComments()
    {
        while (!atEnd())
        {
            char c = peek();
            if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v')
            {
                advance();
            }
            else if (c == '/' && peek(1) == '/')
            {
                while (!atEnd() && peek() != '\n')
                    advance();
            }
            else if (c == '/' && peek(1) == '*')
            {
                SourceLocation start = here();
                advance();
                advance();
                while (!(peek() == '*' && peek(1) == '/'))
                {
                    if (atEnd())
                        fail(start, "unterminated comment: expected '*/'");
                    advance();
                }
                advance();
                advance();
            }
            else
            {
                return;
            }
        }
    }

    void lexOne(Token& token)
    {
        char c = peek();
        if (isIdentStart(static_cast<unsigned char>(c)))
        {
            token.kind = Token::Kind::Identifier;
            while (!atEnd() && isIdentPart(static_cast<unsigned char>(peek())))
            {
                token.text += peek();
                advance();
            }
            return;
        }
        if (std::isdigit(static_cast<unsigned char>(c)) ||
            ((c == '+' || c == '-' || c == '.') &&
                (std::isdigit(static_cast<unsigned char>(peek(1))) ||
                    (peek(1) == '.' && c != '.' && std::isdigit(static_cast<unsigned char>(peek(2)))))))
        {
            lexNumber(token);
            return;
        }
        switch (c)
        {
        case '"':
            token.kind = Token::Kind::String;
            token.text = lexQuoted('"');
            return;
        case '\'':
        {
            token.kind = Token::Kind::Char;
            token.text = lexQuoted('\'');
            if (token.text.empty())
                fail(token.where, "empty character constant");
            return;
        }
        case '$':
        {
            token.kind = Token::Kind::Alias;
            advance();
            if (atEnd() || !isIdentStart(static_cast<unsigned char>(peek())))
                fail(here(), "expected an alias name after '$'");
            while (!atEnd() && isIdentPart(static_cast<unsigned char>(peek())))
            {
                token.text += peek();
                advance();
            }
            return;
        }
        case '#':
        {
            advance();
            std::string word;
            while (!atEnd() && isIdentPart(static_cast<unsigned char>(peek())))
            {
                word += peek();
                advance();
            }
            if (!equalNoCase(word, "pragma"))
                fail(token.where, "expected 'pragma' after '#'");
            token.kind = Token::Kind::Pragma;
            token.text = "#pragma";
            return;
        }
        case '{':
        case '}':
        case '[':
        case ']':
        case '(':
        case ')':
        case ';':
        case ',':
        case ':':
        case '=':
            token.kind = Token::Kind::Punct;
            token.text = std::string(1, c);
            advance();
            return;
        default: break;
        }
        std::string shown = std::isprint(static_cast<unsigned char>(c))
            ? std::string("'") + c + "'"
            : "byte " + std::to_string(static_cast<unsigned char>(c));
        fail(token.where, "unexpected character " + shown);
    }

    // Integers in binary (101b), octal (017), decimal and hex (0x1F), and
    // reals with a decimal point and an optional exponent.
    void lexNumber(Token& token)
    {
        std::string sign;
        if (peek() == '+' || peek() == '-')
        {
            sign = peek();
            advance();
        }
        size_t start = _pos;
        std::string digits;
        if (peek() == '0' && (peek(1) == 'x' || peek(1) == 'X'))
        {
            advance();
            advance();
            while (hexDigit(peek()) >= 0)
            {
                digits += peek();
                advance();
            }
            if (digits.empty())
                fail(token.where, "expected hexadecimal digits after '0x'");
            finishInteger(token, sign, digits, 16);
            return;
        }
        while (std::isdigit(static_cast<unsigned char>(peek())))
        {
            digits += peek();
            advance();
        }
        if (peek() == '.' || peek() == 'e' || peek() == 'E')
        {
            bool sawPoint = false;
            if (peek() == '.')
            {
                sawPoint = true;
                advance();
                if (!std::isdigit(static_cast<unsigned char>(peek())))
                    fail(here(), "expected a digit after the decimal point");
                while (std::isdigit(static_cast<unsigned char>(peek())))
                    advance();
            }
            if (peek() == 'e' || peek() == 'E')
            {
                advance();
                if (peek() == '+' || peek() == '-')
                    advance();
                if (!std::isdigit(static_cast<unsigned char>(peek())))
                    fail(here(), "expected digits in the exponent");
                while (std::isdigit(static_cast<unsigned char>(peek())))
                    advance();
            }
            else if (!sawPoint)
            {
                fail(here(), "malformed number");
            }
            std::string text = sign + _text.substr(start, _pos - start);
            token.kind = Token::Kind::Real;
            if (!Pegasus::CIMValueText::toReal(text.data(), text.data() + text.size(), token.realValue))
                fail(token.where, "real constant out of range");
            token.text = text;
            checkNumberEnd(token);
            return;
        }
        if ((peek() == 'b' || peek() == 'B') && !isIdentPart(static_cast<unsigned char>(peek(1))))
        {
            for (char d : digits)
                if (d != '0' && d != '1')
                    fail(token.where, "binary constant with a digit other than 0 or 1");
            advance();
            finishInteger(token, sign, digits, 2);
            return;
        }
        if (digits.size() > 1 && digits[0] == '0')
        {
            for (char d : digits)
                if (d > '7')
                    fail(token.where, "octal constant with a digit above 7");
            finishInteger(token, sign, digits.substr(1), 8);
            return;
        }
        finishInteger(token, sign, digits, 10);
    }

    void finishInteger(Token& token, const std::string& sign, const std::string& digits, unsigned base)
    {
        Pegasus::Uint64 value = 0;
        if (!digits.empty() &&
            !Pegasus::CIMValueText::digits(digits.data(), digits.data() + digits.size(), base,
                std::numeric_limits<Pegasus::Uint64>::max(), value))
            fail(token.where, "integer constant out of range");
        token.kind = Token::Kind::Integer;
        token.magnitude = value;
        token.negative = sign == "-" && value != 0;
        token.text = sign + digits;
        checkNumberEnd(token);
    }

    void checkNumberEnd(const Token& token)
    {
        if (!atEnd() && (isIdentPart(static_cast<unsigned char>(peek())) || peek() == '.'))
            fail(token.where, "malformed number: unexpected '" + std::string(1, peek()) + "'");
    }

    std::string lexQuoted(char quote)
    {
        SourceLocation start = here();
        advance();
        std::string out;
        for (;;)
        {
            if (atEnd() || peek() == '\n')
                fail(start,
                    std::string("unterminated ") + (quote == '"' ? "string" : "character") +
                        " constant: expected " + quote);
            char c = peek();
            if (c == quote)
            {
                advance();
                break;
            }
            if (c != '\\')
            {
                out += c;
                advance();
                continue;
            }
            SourceLocation escapeAt = here();
            advance();
            if (atEnd())
                fail(escapeAt, "unterminated escape sequence");
            char e = peek();
            advance();
            switch (e)
            {
            case 'b': out += '\b'; break;
            case 't': out += '\t'; break;
            case 'n': out += '\n'; break;
            case 'f': out += '\f'; break;
            case 'r': out += '\r'; break;
            case '"': out += '"'; break;
            case '\'': out += '\''; break;
            case '\\': out += '\\'; break;
            case 'x':
            case 'X':
            {
                unsigned code = 0;
                int count = 0;
                while (count < 4 && hexDigit(peek()) >= 0)
                {
                    code = code * 16 + static_cast<unsigned>(hexDigit(peek()));
                    advance();
                    ++count;
                }
                if (count == 0)
                    fail(escapeAt, "expected hexadecimal digits after '\\x'");
                if (code == 0)
                    fail(escapeAt, "a string may not contain the character 0");
                appendUtf8(out, code);
                break;
            }
            default: fail(escapeAt, std::string("unknown escape sequence '\\") + e + "'");
            }
        }
        if (quote == '\'')
        {
            // One character: a single byte, or one UTF-8 sequence.
            size_t length = out.empty() ? 0 : 1;
            while (length < out.size() && (static_cast<unsigned char>(out[length]) & 0xC0) == 0x80)
                ++length;
            if (length != out.size())
                fail(start, "character constant holds more than one character");
        }
        return out;
    }

    const std::string& _text;
    std::string _file;
    size_t _pos = 0;
    unsigned _line = 1;
    unsigned _column = 1;
};

}  // namespace

std::vector<Token> tokenize(const std::string& text, const std::string& file)
{
    return Lexer(text, file).run();
}

std::string describe(const Token& token)
{
    switch (token.kind)
    {
    case Token::Kind::Identifier: return "'" + token.text + "'";
    case Token::Kind::Integer: return "integer " + token.text;
    case Token::Kind::Real: return "real " + token.text;
    case Token::Kind::String: return "a string";
    case Token::Kind::Char: return "a character constant";
    case Token::Kind::Alias: return "alias $" + token.text;
    case Token::Kind::Pragma: return "'#pragma'";
    case Token::Kind::Punct: return "'" + token.text + "'";
    case Token::Kind::End: return "end of file";
    }
    return "?";
}

}  // namespace zda::mof
