#include <cimxml/Http.h>

#include <Pegasus/Common/Exception.h>

#include <cctype>

namespace cimxml
{
namespace http
{

const char CIM_OPERATION[] = "CIMOperation";
const char CIM_METHOD[] = "CIMMethod";
const char CIM_OBJECT[] = "CIMObject";
const char CIM_BATCH[] = "CIMBatch";
const char CIM_ERROR[] = "CIMError";
const char CIM_PROTOCOL_VERSION[] = "CIMProtocolVersion";
const char CIM_STATUS_CODE[] = "CIMStatusCode";
const char CIM_STATUS_CODE_DESCRIPTION[] = "CIMStatusCodeDescription";
const char CONTENT_TYPE_XML[] = "application/xml; charset=\"utf-8\"";

Refusal refusalFor(DecodeFailure failure)
{
    switch (failure)
    {
    case DecodeFailure::NotWellFormed: return {400, "request-not-well-formed"};
    case DecodeFailure::NotValid: return {400, "request-not-valid"};
    case DecodeFailure::LimitExceeded: return {400, "request-not-valid"};
    case DecodeFailure::UnsupportedCimVersion: return {501, "unsupported-cim-version"};
    case DecodeFailure::UnsupportedDtdVersion: return {501, "unsupported-dtd-version"};
    case DecodeFailure::UnsupportedProtocolVersion: return {501, "unsupported-protocol-version"};
    case DecodeFailure::MultipleRequests: return {501, "multiple-requests-unsupported"};
    }
    return {400, "request-not-valid"};
}

Refusal unsupportedOperation()
{
    return {400, "unsupported-operation"};
}

Refusal headerMismatch()
{
    return {400, "header-mismatch"};
}

namespace
{
std::string lower(std::string s)
{
    for (char& c : s)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string trim(const std::string& s)
{
    std::size_t b = s.find_first_not_of(" \t");
    if (b == std::string::npos)
        return std::string();
    std::size_t e = s.find_last_not_of(" \t");
    return s.substr(b, e - b + 1);
}

std::string utf8(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}
}  // namespace

std::string extensionHeaderPrefix(const std::string& manHeader)
{
    std::string value = lower(manHeader);
    if (value.find("http://www.dmtf.org/cim/mapping/http/v1.0") == std::string::npos)
        return std::string();
    std::size_t ns = value.find("ns");
    while (ns != std::string::npos)
    {
        std::size_t eq = value.find_first_not_of(" \t", ns + 2);
        if (eq != std::string::npos && value[eq] == '=')
        {
            std::size_t b = value.find_first_not_of(" \t", eq + 1);
            std::size_t e = b;
            while (e < value.size() && std::isdigit(static_cast<unsigned char>(value[e])))
                e++;
            if (b != std::string::npos && e > b && e - b <= 2)
                return value.substr(b, e - b) + "-";
            return std::string();
        }
        ns = value.find("ns", ns + 2);
    }
    return std::string();
}

bool isXmlContentType(const std::string& contentType)
{
    std::string value = lower(contentType);
    std::size_t semi = value.find(';');
    std::string media = trim(value.substr(0, semi));
    if (media != "application/xml" && media != "text/xml")
        return false;
    while (semi != std::string::npos)
    {
        std::size_t next = value.find(';', semi + 1);
        std::string param = trim(
            value.substr(semi + 1, next == std::string::npos ? std::string::npos : next - semi - 1));
        semi = next;
        std::size_t eq = param.find('=');
        if (eq == std::string::npos || trim(param.substr(0, eq)) != "charset")
            continue;
        std::string charset = trim(param.substr(eq + 1));
        if (charset.size() >= 2 && charset.front() == '"' && charset.back() == '"')
            charset = charset.substr(1, charset.size() - 2);
        if (charset != "utf-8" && charset != "utf8")
            return false;
    }
    return true;
}

std::string escapeHeaderValue(const std::string& value)
{
    static const char hex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : value)
    {
        if (c <= 0x20 || c >= 0x7F || c == '%' || c == '"')
        {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
        else
            out += char(c);
    }
    return out;
}

std::string unescapeHeaderValue(const std::string& value)
{
    std::string out;
    for (std::size_t i = 0; i < value.size(); i++)
    {
        if (value[i] == '%' && i + 2 < value.size() &&
            std::isxdigit(static_cast<unsigned char>(value[i + 1])) &&
            std::isxdigit(static_cast<unsigned char>(value[i + 2])))
        {
            out += char(std::stoi(value.substr(i + 1, 2), nullptr, 16));
            i += 2;
        }
        else
            out += value[i];
    }
    return out;
}

std::string cimMethodOf(const OperationRequest& request)
{
    return utf8(request.name());
}

std::string cimObjectOf(const OperationRequest& request)
{
    if (request.intrinsic)
        return utf8(request.nameSpace.getString());
    CIMObjectPath path = request.target;
    path.setHost(String());
    path.setNameSpace(request.nameSpace);
    return utf8(path.toString());
}

bool headersMatch(const OperationRequest& request, const std::string& cimMethod, const std::string& cimObject)
{
    if (unescapeHeaderValue(cimMethod) != cimMethodOf(request))
        return false;
    std::string object = unescapeHeaderValue(cimObject);
    if (request.intrinsic)
        return lower(object) == lower(cimObjectOf(request));
    try
    {
        CIMObjectPath sent{String(object.c_str())};
        CIMObjectPath expected = request.target;
        expected.setNameSpace(request.nameSpace);
        sent.setHost(String());
        return sent.identical(expected);
    }
    catch (const Exception&)
    {
        return false;
    }
}

bool parseContentLength(const std::string& value, std::size_t maxBytes, std::size_t& length)
{
    std::string v = trim(value);
    if (v.empty())
        return false;
    std::size_t n = 0;
    for (char c : v)
    {
        if (c < '0' || c > '9')
            return false;
        unsigned digit = unsigned(c - '0');
        if (n > maxBytes / 10)
            return false;
        n *= 10;
        if (digit > maxBytes - n)
            return false;
        n += digit;
    }
    length = n;
    return true;
}

}  // namespace http
}  // namespace cimxml
