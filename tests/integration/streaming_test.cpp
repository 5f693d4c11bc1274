// Long answers streamed by the real server: complete and well formed for
// every client, and recognisably failed when the provider breaks after
// part of the answer went out.
#include "../unit/server/cim_error_of.h"
#include "ServerProcess.h"

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

using namespace zda_it;
PEGASUS_USING_PEGASUS;

namespace
{

// How many objects the test provider's bulk classes deliver, and after how
// many Test_BrokenBulk fails (see tests/providers).
constexpr std::size_t kBulkCount = 3000;
constexpr std::size_t kBrokenAfter = 2000;

std::string enumerateRequest(const char* operation, const char* className, const char* httpVersion = "1.1")
{
    std::string body = enumerateBody(operation, className, "root/test");
    return std::string("POST /cimom HTTP/") + httpVersion +
        "\r\nHost: 127.0.0.1\r\nConnection: close\r\nAuthorization: " +
        basicAuthorization("admin", "admin-demo") +
        "\r\nContent-Type: application/xml; charset=\"utf-8\"\r\nCIMOperation: MethodCall\r\n"
        "CIMMethod: " +
        operation + "\r\nCIMObject: root%2Ftest\r\nContent-Length: " + std::to_string(body.size()) +
        "\r\n\r\n" + body;
}

// An HTTP response taken apart: the head, the body with any chunked coding
// removed, how many chunks carried it and the trailer. `wellFormed` is
// false when the message ends before it should.
struct Response
{
    std::string head;
    std::string body;
    std::size_t chunks = 0;
    std::string trailer;
    bool chunked = false;
    bool wellFormed = false;
};

Response parse(const std::string& raw)
{
    Response r;
    std::size_t headEnd = raw.find("\r\n\r\n");
    if (headEnd == std::string::npos)
        return r;
    r.head = raw.substr(0, headEnd + 2);
    std::string lowerHead = r.head;
    std::transform(lowerHead.begin(), lowerHead.end(), lowerHead.begin(), ::tolower);
    r.chunked = lowerHead.find("transfer-encoding: chunked") != std::string::npos;
    std::size_t at = headEnd + 4;
    if (!r.chunked)
    {
        r.body = raw.substr(at);
        r.wellFormed = true;
        return r;
    }
    for (;;)
    {
        std::size_t lineEnd = raw.find("\r\n", at);
        if (lineEnd == std::string::npos)
            return r;
        std::size_t size = std::strtoul(raw.substr(at, lineEnd - at).c_str(), nullptr, 16);
        at = lineEnd + 2;
        if (size == 0)
            break;
        if (at + size + 2 > raw.size() || raw.compare(at + size, 2, "\r\n") != 0)
            return r;
        r.body.append(raw, at, size);
        r.chunks++;
        at += size + 2;
    }
    std::size_t trailerEnd = raw.find("\r\n\r\n", at - 2);
    if (trailerEnd == std::string::npos)
        return r;
    r.trailer = raw.substr(at, trailerEnd + 2 - at);
    r.wellFormed = trailerEnd + 4 == raw.size();
    return r;
}

}  // namespace

class StreamingTest : public SharedServerTest
{
protected:
    static void SetUpTestSuite() { startServer({}, true); }
};

// HTTP/1.1 gets chunks; HTTP/1.0, which has none, a body that ends with the
// connection. Either way the document is whole.
TEST_F(StreamingTest, LongAnswersArriveWholeInPieces)
{
    struct Case
    {
        const char* operation;
        const char* httpVersion;
        const char* element;  // one per object
    };
    const Case cases[] = {
        {"EnumerateInstances", "1.1", "<VALUE.NAMEDINSTANCE>"},
        {"EnumerateInstanceNames", "1.1", "<INSTANCENAME "},
        {"EnumerateInstances", "1.0", "<VALUE.NAMEDINSTANCE>"},
    };
    for (const Case& c : cases)
    {
        std::string what = std::string(c.operation) + " over HTTP/" + c.httpVersion;
        RawExchange exchange = rawExchange(
            server->httpPort(), enumerateRequest(c.operation, "Test_Bulk", c.httpVersion));
        Response r = parse(exchange.response);
        ASSERT_EQ(r.head.rfind(std::string("HTTP/") + c.httpVersion + " 200 OK\r\n", 0), 0u)
            << what << ": " << r.head;
        ASSERT_TRUE(r.wellFormed) << what;
        EXPECT_EQ(countOccurrences(r.body, c.element), kBulkCount) << what;
        const std::string end = "</IRETURNVALUE></IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>\n";
        EXPECT_EQ(r.body.rfind(end), r.body.size() - end.size())
            << what << ": " << r.body.substr(r.body.size() - std::min<std::size_t>(r.body.size(), 200));
        EXPECT_EQ(r.trailer, "") << what;
        if (std::string(c.httpVersion) == "1.1")
        {
            EXPECT_TRUE(r.chunked) << what;
            EXPECT_GT(r.chunks, 1u) << what;
        }
        else
        {
            EXPECT_FALSE(r.chunked) << what;
            EXPECT_EQ(r.head.find("Trailer:"), std::string::npos) << what;
            EXPECT_TRUE(exchange.closedByServer) << what;
        }
    }

    // Short answers keep their length.
    Response shortAnswer = parse(
        rawExchange(server->httpPort(), enumerateRequest("EnumerateInstanceNames", "Test_Disk")).response);
    EXPECT_FALSE(shortAnswer.chunked);
    EXPECT_NE(shortAnswer.head.find("Content-Length: "), std::string::npos) << shortAnswer.head;
}

TEST_F(StreamingTest, ClientsReadStreamedAnswersOnAKeptAliveConnection)
{
    CIMClient client;
    client.connect("127.0.0.1", Uint32(server->httpPort()), "viewer", "viewer-demo");
    for (int round = 0; round < 2; round++)
    {
        Array<CIMInstance> items = client.enumerateInstances("root/test", "Test_Bulk");
        ASSERT_EQ(items.size(), kBulkCount);
        const CIMInstance& last = items[items.size() - 1];
        ASSERT_EQ(last.getPath().getKeyBindings().size(), 1u);
        EXPECT_EQ(last.getPath().getKeyBindings()[0].getValue(), "item2999") << "round " << round;
        EXPECT_EQ(last.getProperty(last.findProperty("Number")).getValue().toString(), "2999");
    }
    EXPECT_EQ(client.enumerateInstanceNames("root/test", "Test_Bulk").size(), kBulkCount);

    // The other transports: the local socket, and TLS.
    ::setenv("ZDA_CIMSERVER_SOCKET", server->socketPath().c_str(), 1);
    CIMClient local;
    local.connectLocal();
    ::unsetenv("ZDA_CIMSERVER_SOCKET");
    EXPECT_EQ(local.enumerateInstances("root/test", "Test_Bulk").size(), kBulkCount);

    for (bool secure : {false, true})
    {
        std::vector<std::string> arguments = {
            "wbemcli", "ein", server->url("viewer:viewer-demo", "root/test", secure) + "Test_Bulk"};
        if (secure)
            arguments.insert(arguments.begin() + 1, "-noverify");
        CommandResult wbemcli = runCommand(arguments);
        EXPECT_EQ(wbemcli.exitCode, 0) << (secure ? "https: " : "http: ") << wbemcli.output.substr(0, 2000);
        EXPECT_EQ(countOccurrences(wbemcli.output, "Test_Bulk.Id="), kBulkCount)
            << (secure ? "https" : "http");
    }
}

// A provider that fails after part of the answer went out: the raw answer
// is cut short with the error in its trailer, CIMClient reports the
// provider's error and wbemcli fails. One that fails while the answer is
// still short gets an ordinary error response.
TEST_F(StreamingTest, AProviderFailingMidwayGivesAFailingAnswer)
{
    Response raw = parse(
        rawExchange(server->httpPort(), enumerateRequest("EnumerateInstances", "Test_BrokenBulk")).response);
    ASSERT_TRUE(raw.chunked) << raw.head;
    EXPECT_TRUE(raw.wellFormed);
    EXPECT_NE(raw.head.find("Trailer: CIMStatusCode, CIMStatusCodeDescription"), std::string::npos)
        << raw.head;
    EXPECT_NE(raw.trailer.find("CIMStatusCode: 1\r\n"), std::string::npos) << raw.trailer;
    EXPECT_NE(raw.trailer.find("CIMStatusCodeDescription: CIM_ERR_FAILED:%20The%20bulk%20source%20broke"),
        std::string::npos)
        << raw.trailer;
    EXPECT_EQ(raw.body.find("</CIM>"), std::string::npos);
    EXPECT_LT(countOccurrences(raw.body, "<VALUE.NAMEDINSTANCE>"), kBrokenAfter + 1);

    CIMClient client;
    client.connect("127.0.0.1", Uint32(server->httpPort()), "viewer", "viewer-demo");
    std::string message;
    EXPECT_EQ(
        zda_test::cimErrorOf([&] { client.enumerateInstances("root/test", "Test_BrokenBulk"); }, &message),
        CIM_ERR_FAILED);
    EXPECT_NE(message.find("The bulk source broke after 2000 objects."), std::string::npos) << message;
    // The connection stays usable.
    EXPECT_EQ(client.enumerateInstanceNames("root/test", "Test_Disk").size(), 3u);

    CommandResult wbemcli = runCommand(
        {"wbemcli", "ei", server->url("viewer:viewer-demo", "root/test") + "Test_BrokenBulk"});
    EXPECT_NE(wbemcli.exitCode, 0) << wbemcli.output.substr(0, 2000);

    Response early = parse(
        rawExchange(server->httpPort(), enumerateRequest("EnumerateInstanceNames", "Test_BrokenBulk"))
            .response);
    EXPECT_FALSE(early.chunked) << early.head;
    EXPECT_NE(
        early.body.find("<ERROR CODE=\"1\" DESCRIPTION=\"CIM_ERR_FAILED: The bulk source broke after 10"),
        std::string::npos)
        << early.body;
    EXPECT_EQ(countOccurrences(early.body, "<INSTANCENAME "), 0u);
}
