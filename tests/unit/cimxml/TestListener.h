// A small CIM-XML server for client tests: HTTP or HTTPS on a free loopback
// port, requests decoded with the codec and answered by a CIMOMHandleBackend,
// as a server front end would.
#ifndef ZDA_TESTS_CIMXML_TESTLISTENER_H
#define ZDA_TESTS_CIMXML_TESTLISTENER_H

#include <Pegasus/Provider/CIMOMHandleBackend.h>

#include <memory>
#include <string>
#include <vector>

namespace cimxml_test
{

class TestListener
{
public:
    struct Options
    {
        std::string certFile, keyFile;      // HTTPS when set
        std::string requiredAuthorization;  // exact Authorization header, if not empty
        bool closeAfterEachResponse = false;
        bool neverAnswer = false;  // read requests, never respond
        std::string rawAnswer;     // if set: sent verbatim to every request, then closed
    };

    // Starts listening at once; the destructor stops and joins.
    TestListener(std::shared_ptr<Pegasus::CIMOMHandleBackend> backend, Options options);
    ~TestListener();

    unsigned port() const;
    // "CIMMethod CIMObject" of every request answered, in order.
    std::vector<std::string> cimHeaders() const;
    unsigned connectionsAccepted() const;

private:
    class Impl;
    std::unique_ptr<Impl> _impl;
};

}  // namespace cimxml_test

#endif
