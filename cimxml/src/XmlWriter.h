// A buffered XML text writer: markup is appended as is, text and attribute
// values are escaped, and SDK strings (UTF-16) are converted to UTF-8 on the
// way. The buffer goes to the sink whenever it holds bufferSize bytes, so
// writing a document of any size needs only the buffer.
#ifndef ZDA_CIMXML_XMLWRITER_H
#define ZDA_CIMXML_XMLWRITER_H

#include <cimxml/Codec.h>

#include <cstring>
#include <memory>
#include <string>

namespace cimxml
{

class XmlWriter
{
public:
    XmlWriter(Sink& sink, std::size_t bufferSize = 64 * 1024)
        : _sink(sink), _limit(bufferSize), _capacity(bufferSize + 4096), _data(new char[_capacity])
    {}
    XmlWriter(const XmlWriter&) = delete;
    XmlWriter& operator=(const XmlWriter&) = delete;

    // Markup, written unchanged.
    void raw(const char* s, std::size_t n)
    {
        reserve(n);
        std::memcpy(_data.get() + _size, s, n);
        _size += n;
        if (_size >= _limit)
            flush();
    }
    void raw(const char* s) { raw(s, std::strlen(s)); }
    template <std::size_t N>
    void lit(const char (&s)[N])
    {
        raw(s, N - 1);
    }
    void raw(const std::string& s) { raw(s.data(), s.size()); }

    // Escaped character data (inside elements).
    void text(const String& s) { escape(s.getChar16Data(), s.size(), false); }
    void text(const std::string& utf8) { escapeUtf8(utf8.data(), utf8.size(), false); }
    // Escaped attribute value (without the quotes).
    void attrText(const String& s) { escape(s.getChar16Data(), s.size(), true); }
    void attrText(const char* utf8) { escapeUtf8(utf8, std::strlen(utf8), true); }

    // ` name="value"`
    void attr(const char* name, const String& value)
    {
        raw(" ", 1);
        raw(name);
        raw("=\"", 2);
        attrText(value);
        raw("\"", 1);
    }
    void attr(const char* name, const char* value)
    {
        raw(" ", 1);
        raw(name);
        raw("=\"", 2);
        attrText(value);
        raw("\"", 1);
    }

    // Hands everything buffered to the sink.
    void flush()
    {
        if (_size > 0)
        {
            _sink.write(_data.get(), _size);
            _size = 0;
        }
    }

private:
    // Room for n more bytes.
    void reserve(std::size_t n)
    {
        if (_size + n > _capacity)
            grow(_size + n);
    }
    void grow(std::size_t needed);
    void escape(const Char16* s, std::size_t n, bool attribute);
    void escapeUtf8(const char* s, std::size_t n, bool attribute);

    Sink& _sink;
    std::size_t _limit;
    std::size_t _capacity;
    std::unique_ptr<char[]> _data;
    std::size_t _size = 0;
};

}  // namespace cimxml

#endif
