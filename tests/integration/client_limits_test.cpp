// The real server against clients that misbehave: clients that stop reading
// a long answer, send bodies without valid credentials, hold connections
// idle, or guess passwords. Other clients must be served meanwhile.
#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>

#include <Pegasus/Client/CIMClient.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <thread>

using namespace zda_it;
PEGASUS_USING_PEGASUS;

namespace
{

using Clock = std::chrono::steady_clock;

// A kept-alive POST of `body` (an enumeration in root/zda), with
// `extraHeaders` (each ending in CRLF) and `length` as its Content-Length
// (the body's own size when negative).
std::string post(const std::string& authorization, const std::string& body,
    const std::string& extraHeaders = "", long length = -1)
{
    const std::size_t name = body.find("IMETHODCALL NAME=\"") + 18;
    const std::string operation = body.empty() ? "EnumerateInstanceNames"
                                               : body.substr(name, body.find('"', name) - name);
    return "POST /cimom HTTP/1.1\r\nHost: 127.0.0.1\r\n" +
        (authorization.empty() ? std::string() : "Authorization: " + authorization + "\r\n") +
        "Content-Type: application/xml; charset=\"utf-8\"\r\nCIMOperation: MethodCall\r\n"
        "CIMMethod: " +
        operation + "\r\nCIMObject: root%2Fzda\r\n" + extraHeaders +
        "Content-Length: " + std::to_string(length < 0 ? long(body.size()) : length) + "\r\n\r\n" + body;
}

const std::string kSystemNames = enumerateBody("EnumerateInstanceNames", "ZDA_StorageSystem", "root/zda");
const std::string kAdmin = basicAuthorization("admin", "admin-demo");

int millisSince(Clock::time_point start)
{
    return int(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

// A fresh CIMClient connection asking for the storage system's name: what
// a legitimate client does. Returns the milliseconds it took.
int timedLegitimateRequest(int port)
{
    auto start = Clock::now();
    CIMClient client;
    client.connect("127.0.0.1", Uint32(port), "admin", "admin-demo");
    EXPECT_EQ(client.enumerateInstanceNames("root/zda", "ZDA_StorageSystem").size(), 1u);
    return millisSince(start);
}

// The sanitizers make encoding many times slower: under them, four clients
// (as many as the server has listener threads) stand for the sixteen.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kStalledClients = 4;
#else
constexpr int kStalledClients = 16;
#endif

}  // namespace

// Sixteen clients ask for a long answer (25,000 volumes, about 17 MB) and
// never read it. What is queued for each stays bounded, they hold no thread
// that others need, and each is dropped once it has made no progress for
// the send time-out.
TEST(ClientLimitsTest, ClientsThatStopReadingDoNotHoldTheServer)
{
    TemporaryFolder folder;
    std::string array = folder.path() + "/array.json";
    {
        std::ofstream out(array);
        out << "{\"system\": {\"limits\": {\"maxVolumes\": 30000, \"maxBaseVolumes\": 30000}},"
               " \"roles\": [{\"name\": \"super\", \"default\": \"allowed\"}],"
               " \"users\": [{\"name\": \"admin\", \"role\": \"super\"}, {\"name\": \"viewer\", \"role\": \"super\"}],"
               " \"cpgs\": [{\"name\": \"C1\"}], \"volumes\": [";
        for (int i = 0; i < 25000; i++)
            out << (i ? "," : "") << "{\"name\": \"vol" << i << "\", \"usrCpg\": \"C1\", \"sizeMiB\": 1024}";
        out << "]}";
    }
    cimxml::registerClientTransports();
    ServerProcess server(
        folder.path(), {"--array", array, "--https-port", "off", "--send-timeout", "3"}, false);
    timedLegitimateRequest(server.httpPort());  // the credential is remembered from here on

    const std::string volumes = post(basicAuthorization("viewer", "viewer-demo"),
        enumerateBody("EnumerateInstances", "ZDA_StorageVolume", "root/zda"));
    std::vector<std::unique_ptr<RawConnection>> stalled;
    for (int i = 0; i < kStalledClients; i++)
    {
        stalled.push_back(std::make_unique<RawConnection>(server.httpPort(), "127.0.0.1", 4096));
        stalled.back()->send(volumes);
    }
    // Each answer has started (its head is read, nothing more will be).
    for (auto& c : stalled)
        ASSERT_EQ(statusLine(c->readUntil("\r\n\r\n", 60000)), "HTTP/1.1 200 OK");
    std::this_thread::sleep_for(std::chrono::seconds(1));

    int worst = 0;
    for (int i = 0; i < 3; i++)
        worst = std::max(worst, timedLegitimateRequest(server.httpPort()));
    std::cout << "legitimate request beside " << kStalledClients
              << " clients that stopped reading: worst of 3 " << worst << " ms\n";
    EXPECT_LT(worst, 5000);

    // Dropped: each stalled connection is closed by the server.
    auto deadline = Clock::now() + std::chrono::seconds(60);
    while (countOccurrences(server.log(), "stopped reading its answer") < stalled.size() &&
        Clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(countOccurrences(server.log(), "stopped reading its answer"), stalled.size()) << server.log();
    stalled.clear();
    EXPECT_LT(timedLegitimateRequest(server.httpPort()), 5000);
    EXPECT_EQ(server.stop(), 0) << server.log();
}

// One server with small limits for the connection, body and password
// checks. Tests use client addresses of their own (127.0.0.x), so that the
// per-address counts and failures of one do not reach another.
class ClientLimitsServerTest : public SharedServerTest
{
protected:
    static void SetUpTestSuite()
    {
        startServer({"--https-port", "off", "--max-request-bytes", "65536", "--max-body-bytes-in-flight",
            "131072", "--max-connections", "8", "--max-unauthenticated-connections", "3",
            "--max-connections-per-address", "2", "--unauthenticated-timeout", "2"});
    }

    static int port() { return server->httpPort(); }
};

// The credentials are checked on the headers: a client that cannot log in
// gets its 401 at once, without sending its body and without a
// 100-continue; one that can is told to continue, and is answered.
TEST_F(ClientLimitsServerTest, CredentialsAreCheckedBeforeTheBody)
{
    struct Case
    {
        const char* what;
        std::string authorization;
    };
    const Case refused[] = {
        {"no credentials", ""},
        {"a wrong password", basicAuthorization("admin", "wrong")},
        {"a password with a NUL byte", basicAuthorization("admin", std::string("admin-demo\0xyz", 14))},
    };
    for (const Case& c : refused)
    {
        RawConnection connection(port(), "127.0.0.11");
        auto start = Clock::now();
        connection.send(post(c.authorization, "", "Expect: 100-continue\r\n", 60000));
        const std::string& answer = connection.readUntil("", 10000);
        EXPECT_EQ(statusLine(answer), "HTTP/1.1 401 Unauthorized") << c.what << ": " << answer;
        EXPECT_EQ(answer.find("100 Continue"), std::string::npos) << c.what;
        EXPECT_TRUE(connection.closedByServer()) << c.what;
        EXPECT_LT(millisSince(start), 8000) << c.what;
    }

    RawConnection admitted(port(), "127.0.0.12");
    admitted.send(post(kAdmin, "", "Expect: 100-continue\r\n", long(kSystemNames.size())));
    ASSERT_EQ(statusLine(admitted.readUntil("\r\n\r\n", 10000)), "HTTP/1.1 100 Continue");
    admitted.send(kSystemNames);
    const std::string& answer = admitted.readUntil("</CIM>", 10000);
    EXPECT_NE(answer.find("HTTP/1.1 200 OK"), std::string::npos) << answer;
}

// Bodies being received count against one allowance for all connections
// (131072 bytes here): a body that does not fit gets 503 before it is read.
TEST_F(ClientLimitsServerTest, BodiesInFlightShareOneAllowance)
{
    std::vector<std::unique_ptr<RawConnection>> holders;
    for (const char* source : {"127.0.0.13", "127.0.0.14"})
    {
        holders.push_back(std::make_unique<RawConnection>(port(), source));
        holders.back()->send(post(kAdmin, "", "Expect: 100-continue\r\n", 60000));
        ASSERT_EQ(statusLine(holders.back()->readUntil("\r\n\r\n", 10000)), "HTTP/1.1 100 Continue");
    }
    RawConnection third(port(), "127.0.0.15");
    third.send(post(kAdmin, "", "Expect: 100-continue\r\n", 60000));
    EXPECT_EQ(statusLine(third.readUntil("", 10000)), "HTTP/1.1 503 Service Unavailable");

    holders.clear();
    // The allowance is given back when a connection goes.
    auto deadline = Clock::now() + std::chrono::seconds(5);
    std::string answer;
    while (answer.find(" 200 ") == std::string::npos && Clock::now() < deadline)
        answer = rawExchange(
            port(), post(kAdmin, kSystemNames + std::string(60000, ' '), "Connection: close\r\n"))
                     .response;
    EXPECT_EQ(statusLine(answer), "HTTP/1.1 200 OK");
}

// Connections not yet authenticated get a share of the cap (3 here) and a
// short idle time (2 s); one address gets 2 connections; the local socket
// is counted apart; an authenticated connection keeps the longer idle time.
TEST_F(ClientLimitsServerTest, UnauthenticatedConnectionsGetASmallerShare)
{
    // A request without credentials gets a 401 and leaves its connection
    // open and unauthenticated: the server has surely counted it then.
    auto idleUnauthenticated = [](const char* source) {
        auto c = std::make_unique<RawConnection>(port(), source);
        c->send("POST /cimom HTTP/1.1\r\nHost: x\r\nContent-Length: 0\r\n\r\n");
        EXPECT_EQ(statusLine(c->readUntil("\r\n\r\n", 10000)), "HTTP/1.1 401 Unauthorized") << source;
        return c;
    };
    auto refused = [](const char* source) {
        RawConnection c(port(), source);
        return statusLine(c.readUntil("", 10000)) == "HTTP/1.1 503 Service Unavailable" && c.closedByServer();
    };
    std::vector<std::unique_ptr<RawConnection>> idle;
    idle.push_back(idleUnauthenticated("127.0.0.21"));
    idle.push_back(idleUnauthenticated("127.0.0.21"));
    EXPECT_TRUE(refused("127.0.0.21")) << "a third connection from one address";
    idle.push_back(idleUnauthenticated("127.0.0.22"));
    EXPECT_TRUE(refused("127.0.0.23")) << "a fourth unauthenticated connection";

    ::setenv("ZDA_CIMSERVER_SOCKET", server->socketPath().c_str(), 1);
    CIMClient local;
    local.connectLocal();
    ::unsetenv("ZDA_CIMSERVER_SOCKET");
    EXPECT_EQ(local.enumerateInstanceNames("root/zda", "ZDA_StorageSystem").size(), 1u);

    // The idle ones are closed after the short idle time, which frees the share.
    auto start = Clock::now();
    for (auto& c : idle)
    {
        c->readUntil("", 10000);
        EXPECT_TRUE(c->closedByServer());
    }
    EXPECT_LT(millisSince(start), 8000);

    // Past the short idle time, an authenticated connection is still served.
    RawConnection authenticated(port(), "127.0.0.23");
    for (std::size_t round = 1; round <= 2; round++)
    {
        if (round == 2)
            std::this_thread::sleep_for(std::chrono::milliseconds(3000));
        authenticated.send(post(kAdmin, kSystemNames));
        auto deadline = Clock::now() + std::chrono::seconds(10);
        while (countOccurrences(authenticated.readUntil("", 100), "</CIM>") < round &&
            Clock::now() < deadline && !authenticated.closedByServer())
        {}
        EXPECT_EQ(countOccurrences(authenticated.readUntil("", 0), "HTTP/1.1 200 OK"), round);
    }
}

// Wrong passwords: refused, whatever the user; an address that keeps
// failing waits longer and longer for each check (others are served
// meanwhile, at once); refusals are logged at a bounded rate.
TEST_F(ClientLimitsServerTest, RepeatedFailuresAreSlowedAndLoggedAtABoundedRate)
{
    const std::string wrong = post(
        basicAuthorization("admin", "guess"), kSystemNames, "Connection: close\r\n");
    const std::size_t logBefore = server->log().size();
    // Three failures are free; then each check waits after the failure
    // before it: 250, 500, 1000 ms.
    int slowest = 0;
    for (int attempt = 1; attempt <= 6; attempt++)
    {
        auto start = Clock::now();
        RawConnection c(port(), "127.0.0.31");
        c.send(wrong);
        EXPECT_EQ(statusLine(c.readUntil("", 20000)), "HTTP/1.1 401 Unauthorized") << attempt;
        slowest = std::max(slowest, millisSince(start));
    }
    EXPECT_GE(slowest, 900);
    EXPECT_LT(timedLegitimateRequest(port()), 5000);

    // Failures from many addresses: at most 10 lines a minute. This test
    // spans at most two such minutes, so 20 lines for its 36 failures.
    for (int i = 0; i < 30; i++)
    {
        RawConnection c(port(), "127.0.0." + std::to_string(40 + i));
        c.send(wrong);
        EXPECT_EQ(statusLine(c.readUntil("", 20000)), "HTTP/1.1 401 Unauthorized") << i;
    }
    const std::size_t logged = countOccurrences(server->log().substr(logBefore), "refused a login");
    EXPECT_GE(logged, 1u);
    EXPECT_LE(logged, 20u);
}
