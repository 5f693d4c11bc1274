// The characters a CIM-XML document may hold: well-formed UTF-8 of the
// characters XML 1.0 allows (TAB, LF, CR, U+0020..U+D7FF, U+E000..U+FFFD,
// U+10000..U+10FFFF). The reader refuses anything else, raw or as a
// character reference; the writer never produces anything else.
#ifndef ZDA_CIMXML_XMLCHARS_H
#define ZDA_CIMXML_XMLCHARS_H

#include <cstddef>

namespace cimxml
{

inline bool isXmlChar(unsigned code)
{
    return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
        (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

// The length of the UTF-8 sequence at s (n bytes available, n > 0), with
// its code point in `code`; 0 when the bytes are not well-formed UTF-8
// (overlong forms, surrogates and code points above U+10FFFF included).
inline std::size_t decodeUtf8(const unsigned char* s, std::size_t n, unsigned& code)
{
    const unsigned c = s[0];
    if (c < 0x80)
    {
        code = c;
        return 1;
    }
    std::size_t length;
    if (c >= 0xC2 && c <= 0xDF)
        length = 2, code = c & 0x1F;
    else if (c >= 0xE0 && c <= 0xEF)
        length = 3, code = c & 0x0F;
    else if (c >= 0xF0 && c <= 0xF4)
        length = 4, code = c & 0x07;
    else
        return 0;
    if (n < length)
        return 0;
    for (std::size_t k = 1; k < length; k++)
    {
        if ((s[k] & 0xC0) != 0x80)
            return 0;
        code = (code << 6) | (s[k] & 0x3F);
    }
    if ((length == 3 && (code < 0x800 || (code >= 0xD800 && code <= 0xDFFF))) ||
        (length == 4 && (code < 0x10000 || code > 0x10FFFF)))
        return 0;
    return length;
}

// UTF-8 of U+FFFD, which the writer sends in place of a character XML
// cannot carry (a control character, a lone surrogate, U+FFFE, U+FFFF).
constexpr char kReplacementUtf8[] = "\xEF\xBF\xBD";

}  // namespace cimxml

#endif
