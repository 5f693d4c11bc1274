// Arbitrary bytes through the request decoder, then through the encoder as
// the server answers: every value the request carried goes back in an
// answer (a method's output parameters, an instance, an error text), and
// what would be sent must be well-formed XML of XML characters only, and
// decode to the same values (encoding what was decoded gives the same
// bytes). The request itself must survive encoding and decoding too.
#include <cimxml/Codec.h>

#include "XmlChars.h"

#include <pugixml.hpp>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{
using namespace cimxml;

// Every character of `text` (UTF-8) is one XML allows.
bool xmlText(const char* text)
{
    const auto* s = reinterpret_cast<const unsigned char*>(text);
    const std::size_t n = std::strlen(text);
    for (std::size_t i = 0; i < n;)
    {
        unsigned code = 0;
        const std::size_t length = decodeUtf8(s + i, n - i, code);
        if (length == 0 || !isXmlChar(code))
            return false;
        i += length;
    }
    return true;
}

// The bytes parse as XML, and no text or attribute value (with its
// references expanded) holds a character XML does not allow. A NUL from a
// reference would cut a value short, so references to NUL are looked for
// in the bytes themselves.
void requireWellFormed(const std::string& bytes)
{
    if (bytes.find("&#0;") != std::string::npos || bytes.find("&#x0;") != std::string::npos)
        std::abort();
    pugi::xml_document doc;
    if (!doc.load_buffer(bytes.data(), bytes.size(), pugi::parse_default, pugi::encoding_utf8))
        std::abort();
    struct Check : pugi::xml_tree_walker
    {
        bool for_each(pugi::xml_node& node) override
        {
            if (!xmlText(node.value()))
                std::abort();
            for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute())
                if (!xmlText(a.value()))
                    std::abort();
            return true;
        }
    } check;
    doc.traverse(check);
}

std::string encoded(const OperationResponse& response)
{
    StringSink sink;
    encodeResponse(response, sink);
    return sink.text;
}

// Sends `response` as the server would and reads it as a client would.
void answer(const OperationResponse& response)
{
    const std::string sent = encoded(response);
    requireWellFormed(sent);
    if (encoded(decodeResponse(sent.data(), sent.size())) != sent)
        std::abort();
}

// The answers that carry the request's values back.
void answerWithValues(const OperationRequest& request)
{
    OperationResponse echo;
    echo.messageId = request.messageId;
    if (request.intrinsic)
    {
        // The client's texts come back in error descriptions; an instance
        // it sent comes back as an instance.
        echo.operation = request.operation;
        echo.errorCode = 6;
        echo.errorDescription = request.name() + ": " + request.nameSpace.getString();
        for (Uint32 i = 0; i < request.parameters.size(); i++)
        {
            const CIMValue value = request.parameters[i].getValue();
            if (!value.isNull() && !value.isArray() && value.getType() == CIMTYPE_STRING)
            {
                String text;
                value.get(text);
                echo.errorDescription.append(" " + text);
            }
            if (!value.isNull() && !value.isArray() && value.getType() == CIMTYPE_INSTANCE)
            {
                OperationResponse instance;
                instance.messageId = request.messageId;
                instance.operation = Intrinsic::GetInstance;
                CIMInstance sent;
                value.get(sent);
                instance.returnValue = CIMValue(sent);
                answer(instance);
            }
        }
        answer(echo);
        return;
    }
    echo.intrinsic = false;
    echo.methodName = request.methodName;
    echo.returnValue = CIMValue(Uint32(0));
    echo.outParameters = request.parameters;
    answer(echo);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    OperationRequest request;
    try
    {
        request = decodeRequest(reinterpret_cast<const char*>(data), size);
    }
    catch (const DecodeError&)
    {
        return 0;
    }
    catch (const RequestRefused& refused)
    {
        answer(refused.response());
        return 0;
    }
    answerWithValues(request);
    StringSink sink;
    encodeRequest(request, sink);
    OperationRequest again = decodeRequest(sink.text.data(), sink.text.size());
    if (again.parameters.size() != request.parameters.size() || again.name() != request.name())
        std::abort();
    return 0;
}
