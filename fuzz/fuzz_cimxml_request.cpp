// Arbitrary bytes through the request decoder. A request it accepts must
// survive encoding and decoding again: the server answers what it read, and
// what it writes must be readable.
#include <cimxml/Codec.h>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace cimxml;
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
        StringSink sink;
        encodeResponse(refused.response(), sink);
        decodeResponse(sink.text.data(), sink.text.size());
        return 0;
    }
    StringSink sink;
    encodeRequest(request, sink);
    OperationRequest again = decodeRequest(sink.text.data(), sink.text.size());
    if (again.parameters.size() != request.parameters.size() || again.name() != request.name())
        std::abort();
    return 0;
}
