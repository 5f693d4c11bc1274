// Reading and writing CIM-XML messages.
//
// Writing is strict: one spelling of everything, UTF-8, every value typed.
// What is written is always well-formed XML 1.0: a character XML cannot
// carry (a control character other than TAB, LF and CR, a lone surrogate,
// U+FFFE, U+FFFF, bytes of a text that are not UTF-8) is written as U+FFFD,
// so that one bad value never costs the client the whole answer. Such
// values cannot come from a client: reading refuses them.
// Reading is tolerant of the variations found in the field (KEYVALUE without
// TYPE, VALUE.REFERENCE holding a local path or a bare INSTANCENAME in key
// bindings, both spellings of the embedded-object attribute, a method
// response without a return value, a missing IRETURNVALUE for an empty
// result) and refuses, with a DecodeError saying what and where, anything
// that is not well-formed (characters XML does not allow included, raw or
// as character references), holds a document type or entity declaration,
// nests deeper than the limits allow or carries oversized attributes.
//
// All functions are thread-safe; each call works on its own data.
#ifndef ZDA_CIMXML_CODEC_H
#define ZDA_CIMXML_CODEC_H

#include <cimxml/Operation.h>

#include <cstddef>
#include <stdexcept>
#include <string>

namespace cimxml
{

// Where encoded bytes go. write() receives consecutive pieces of the
// document; it may throw to abandon the encoding (the exception passes out
// of the encoder unchanged).
class Sink
{
public:
    virtual ~Sink() = default;
    virtual void write(const char* data, std::size_t size) = 0;
};

// A Sink that appends to a string it owns.
class StringSink : public Sink
{
public:
    void write(const char* data, std::size_t size) override { text.append(data, size); }
    std::string text;
};

// Why a document was refused.
enum class DecodeFailure
{
    NotWellFormed,  // not XML, or XML this reader never accepts (DTDs, entities)
    NotValid,       // well-formed XML that is not a CIM-XML message of the kind expected
    UnsupportedCimVersion,
    UnsupportedDtdVersion,
    UnsupportedProtocolVersion,
    MultipleRequests,  // MULTIREQ: not served
    LimitExceeded,     // depth, attribute size or embedding depth over the limits
};

class DecodeError : public std::runtime_error
{
public:
    DecodeError(DecodeFailure failure, const std::string& message)
        : std::runtime_error(message), failure(failure)
    {}
    DecodeFailure failure;
};

// A request that is a valid message but that the server must answer with a
// CIM error (unknown operation, missing or mistyped parameter): the error
// goes back in an ordinary response, for which this keeps the message id
// and the operation's name.
class RequestRefused : public std::runtime_error
{
public:
    RequestRefused(Uint32 code, const std::string& message, const std::string& messageId,
        const std::string& methodName, bool intrinsic)
        : std::runtime_error(message), code(code), messageId(messageId), methodName(methodName),
          intrinsic(intrinsic)
    {}
    Uint32 code;
    std::string messageId;
    std::string methodName;
    bool intrinsic;

    // The error response to send back.
    OperationResponse response() const;
};

struct DecodeLimits
{
    unsigned maxDepth = 64;                  // element nesting, per document
    std::size_t maxAttributeSize = 1 << 20;  // bytes of one attribute value
    unsigned maxEmbeddingDepth = 4;          // embedded objects inside embedded objects
};

// Requests (server side). decodeRequest throws DecodeError for documents it
// refuses and RequestRefused for valid messages that ask for something
// impossible. The buffer is copied; it need not be NUL-terminated.
OperationRequest decodeRequest(
    const char* data, std::size_t size, const DecodeLimits& limits = DecodeLimits());
void encodeRequest(const OperationRequest& request, Sink& sink);

// Responses (client side decodes, server side encodes). decodeResponse
// throws DecodeError; a CIM error in the message is no failure, it is
// returned in OperationResponse::errorCode.
OperationResponse decodeResponse(
    const char* data, std::size_t size, const DecodeLimits& limits = DecodeLimits());
void encodeResponse(const OperationResponse& response, Sink& sink);
// As decodeResponse, reading in the caller's buffer instead of a copy (less
// memory for large results); the buffer's content is overwritten.
OperationResponse decodeResponseInPlace(
    char* data, std::size_t size, const DecodeLimits& limits = DecodeLimits());

// The object an embedded-object text holds (an INSTANCE or a CLASS
// element, as a string-typed value carries it). Throws DecodeError for text
// that is no such object.
CIMObject decodeEmbeddedObject(const String& xml, const DecodeLimits& limits = DecodeLimits());

// Streams the response of an intrinsic operation: the envelope is written
// by begin(), each result element as it is added, the closing tags by
// finish(). Bytes reach the sink in pieces of about bufferSize, so memory
// stays bounded however many objects are written. The add* call must match
// the operation's ResultShape (checked: std::logic_error otherwise); for
// single-valued shapes it is called once. An operation that fails before
// begin() is answered with encodeResponse() of an error response instead.
// One result of a pull operation, encoded for ResponseWriter::addEncoded:
// VALUE.INSTANCEWITHPATH, and INSTANCEPATH. `path` must be complete (host
// and namespace).
std::string encodeInstanceWithPath(const CIMConstInstance& instance, const CIMObjectPath& path);
std::string encodeInstancePath(const CIMObjectPath& path);

class ResponseWriter
{
public:
    ResponseWriter(
        Sink& sink, const std::string& messageId, Intrinsic operation, std::size_t bufferSize = 64 * 1024);
    ~ResponseWriter();
    ResponseWriter(const ResponseWriter&) = delete;
    ResponseWriter& operator=(const ResponseWriter&) = delete;

    void begin();
    void addClass(const CIMConstClass& cimClass);        // Class, Classes
    void addClassName(const CIMName& className);         // ClassNames
    void addInstance(const CIMConstInstance& instance);  // Instance, NamedInstances (needs its path)
    // As addInstance(instance), named by `path` instead of its own path.
    void addInstance(const CIMConstInstance& instance, const CIMObjectPath& path);
    void addInstanceName(const CIMObjectPath& path);  // InstanceNames, InstanceName
    void addObject(const CIMConstObject& object);     // ObjectsWithPath (needs a full path)
    void addObjectPath(const CIMObjectPath& path);    // ObjectPaths
    void addValue(const CIMValue& value);             // PropertyValue
    // An element encoded by encodeInstanceWithPath() (InstancesWithPath)
    // or encodeInstancePath() (InstancePaths).
    void addEncoded(const std::string& element);
    // Ends the answer; `outParameters` follow the result (the pull
    // operations' EnumerationContext and EndOfSequence).
    void finish(const Array<CIMParamValue>& outParameters = Array<CIMParamValue>());

private:
    class Impl;
    Impl* _impl;
};

}  // namespace cimxml

#endif
