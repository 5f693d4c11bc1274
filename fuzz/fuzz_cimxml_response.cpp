// Arbitrary bytes through the response decoder, as a client reads what a
// server sent. A response it accepts must survive encoding and decoding again.
#include <cimxml/Codec.h>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace cimxml;
    OperationResponse response;
    try
    {
        response = decodeResponse(reinterpret_cast<const char*>(data), size);
    }
    catch (const DecodeError&)
    {
        return 0;
    }
    StringSink sink;
    encodeResponse(response, sink);
    OperationResponse again = decodeResponse(sink.text.data(), sink.text.size());
    if (again.errorCode != response.errorCode || again.name() != response.name() ||
        again.outParameters.size() != response.outParameters.size())
        std::abort();
    return 0;
}
