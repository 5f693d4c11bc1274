// Splits MOF text into tokens.
#ifndef ZDA_SERVER_MOF_LEXER_H
#define ZDA_SERVER_MOF_LEXER_H

#include "MofAst.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zda::mof
{

struct Token
{
    enum class Kind
    {
        Identifier,  // also every keyword; the parser compares without case
        Integer,     // magnitude/negative
        Real,        // realValue
        String,      // text, escapes resolved, one literal (no concatenation)
        Char,        // text, one character
        Alias,       // "$name"; text is the name
        Pragma,      // "#pragma"
        Punct,       // one of { } [ ] ( ) ; , : =; text holds it
        End,
    };
    Kind kind = Kind::End;
    std::string text;
    std::uint64_t magnitude = 0;
    bool negative = false;
    double realValue = 0.0;
    SourceLocation where;
};

// Tokenizes the whole of `text`, named `file` in positions. Comments are
// dropped. Throws MofError at the first character that cannot start or
// continue a token (unterminated string or comment, bad escape, integer
// out of range). The last token is always End.
std::vector<Token> tokenize(const std::string& text, const std::string& file);

// Human-readable form of a token for "found ..." in messages.
std::string describe(const Token& token);

}  // namespace zda::mof

#endif
