// A small CIM-XML server for client tests: HTTP, HTTPS or a Unix socket on
// a free loopback port (or a path), requests decoded with the codec and
// answered by a CIMOMHandleBackend, as a server front end would.
#ifndef ZDA_TESTS_CIMXML_TESTLISTENER_H
#define ZDA_TESTS_CIMXML_TESTLISTENER_H

#include <cimxml/Codec.h>

#include <Pegasus/Provider/CIMOMHandleBackend.h>

#include <memory>
#include <string>
#include <vector>

namespace cimxml_test
{

// Runs the request against backend and packs the result or the CIM error
// into a response. Thread-safe if backend is.
cimxml::OperationResponse dispatch(
    Pegasus::CIMOMHandleBackend& backend, const cimxml::OperationRequest& request);

class TestListener
{
public:
    enum class Kind
    {
        Http,
        Https,
        Unix
    };
    struct Options
    {
        Kind kind = Kind::Http;
        std::string certFile, keyFile;      // Https
        std::string socketPath;             // Unix
        std::string requiredAuthorization;  // exact Authorization header, if not empty
        bool closeAfterEachResponse = false;
        bool neverAnswer = false;  // read requests, never respond
        std::string rawAnswer;     // if set: sent verbatim to every request, then closed
    };

    // Starts listening at once; the destructor stops and joins.
    TestListener(std::shared_ptr<Pegasus::CIMOMHandleBackend> backend, Options options);
    ~TestListener();

    unsigned port() const;  // Http, Https
    // "CIMMethod CIMObject" of every request answered, in order.
    std::vector<std::string> cimHeaders() const;
    unsigned connectionsAccepted() const;

private:
    class Impl;
    std::unique_ptr<Impl> _impl;
};

// Writes a fresh self-signed certificate for 127.0.0.1 and localhost and
// its key as PEM files into folder; returns {certFile, keyFile}.
std::pair<std::string, std::string> makeSelfSignedCertificate(
    const std::string& folder, const std::string& name);

}  // namespace cimxml_test

#endif
