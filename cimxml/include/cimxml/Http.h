// The HTTP side of CIM operations: header names and values, the status and
// CIMError answer for each way a request can be refused, and the checks a
// server makes on the CIM headers against the decoded request.
#ifndef ZDA_CIMXML_HTTP_H
#define ZDA_CIMXML_HTTP_H

#include <cimxml/Codec.h>

#include <string>

namespace cimxml
{
namespace http
{

extern const char CIM_OPERATION[];                // "CIMOperation", value "MethodCall" / "MethodResponse"
extern const char CIM_METHOD[];                   // "CIMMethod"
extern const char CIM_OBJECT[];                   // "CIMObject"
extern const char CIM_BATCH[];                    // "CIMBatch": a multiple request, not served
extern const char CIM_ERROR[];                    // "CIMError"
extern const char CIM_PROTOCOL_VERSION[];         // "CIMProtocolVersion"
extern const char CIM_STATUS_CODE[];              // "CIMStatusCode" (trailer of chunked responses)
extern const char CIM_STATUS_CODE_DESCRIPTION[];  // "CIMStatusCodeDescription"
extern const char CONTENT_TYPE_XML[];             // what we send: application/xml; charset="utf-8"

// An HTTP answer that refuses a request before any CIM processing.
struct Refusal
{
    unsigned status;       // 400, 501, ...
    std::string cimError;  // CIMError header value, e.g. "request-not-valid"
};

Refusal refusalFor(DecodeFailure failure);
Refusal unsupportedOperation();  // no or wrong CIMOperation header: 400 unsupported-operation
Refusal headerMismatch();        // CIMMethod/CIMObject disagree with the body: 400 header-mismatch

// The prefix of the CIM headers of an M-POST request: "73-" for
// `Man: http://www.dmtf.org/cim/mapping/http/v1.0 ; ns=73`; empty when the
// Man header does not name the CIM mapping (the request is then no CIM
// operation).
std::string extensionHeaderPrefix(const std::string& manHeader);

// True for application/xml and text/xml with no charset or a UTF-8 one,
// quoted or not, in any letter case ("text/xml;charset=UTF-8").
bool isXmlContentType(const std::string& contentType);

// %XX-escapes what may not appear literally in a header value (controls,
// non-ASCII bytes of the UTF-8 form, space, '%', '"'); the reverse.
// decode leaves a malformed escape as it is.
std::string escapeHeaderValue(const std::string& utf8);
std::string unescapeHeaderValue(const std::string& value);

// The CIMMethod and CIMObject header values for a request (unescaped:
// pass them through escapeHeaderValue before sending).
std::string cimMethodOf(const OperationRequest& request);
std::string cimObjectOf(const OperationRequest& request);

// Whether the (escaped) CIMMethod and CIMObject header values a client sent
// agree with the request decoded from its body. Namespaces and class names
// compare without regard to case.
bool headersMatch(
    const OperationRequest& request, const std::string& cimMethod, const std::string& cimObject);

// The Content-Length value, or false when it is missing digits, has
// anything else, or exceeds maxBytes (no overflow on any input).
bool parseContentLength(const std::string& value, std::size_t maxBytes, std::size_t& length);

}  // namespace http
}  // namespace cimxml

#endif
