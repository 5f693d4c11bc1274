// zda-cimserver as users meet it: started as a program, reached over HTTP,
// HTTPS and the local socket by wbemcli, CIMClient and raw requests.
#include "../unit/server/cim_error_of.h"
#include "SdkText.h"
#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <fstream>
#include <regex>

using namespace zda_it;
using zda_test::cimErrorOf;
using zda_test::text;
PEGASUS_USING_PEGASUS;

namespace
{

// A request to /cimom that closes the connection after it.
std::string request(const std::string& method, const std::string& headers, const std::string& body)
{
    return method + " /cimom HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n" + headers +
        "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

const std::string kEnumerateDisks = enumerateBody("EnumerateInstanceNames", "Test_Disk", "root/test");
const std::string kAdmin = "Authorization: " + basicAuthorization("admin", "admin-demo") + "\r\n";
const std::string kCimHeaders = "Content-Type: application/xml; charset=\"utf-8\"\r\n"
                                "CIMOperation: MethodCall\r\nCIMMethod: EnumerateInstanceNames\r\n"
                                "CIMObject: root%2Ftest\r\n";

std::string outParameter(const Array<CIMParamValue>& out, const char* name)
{
    for (Uint32 i = 0; i < out.size(); i++)
        if (out[i].getParameterName() == name)
            return text(out[i].getValue().toString());
    return "<missing>";
}

// A path as class and keys: the traditional operations name instances
// without host and namespace where the pull operations give both.
std::string keysOf(const CIMObjectPath& path)
{
    return text(
        CIMObjectPath(String(), CIMNamespaceName(), path.getClassName(), path.getKeyBindings()).toString());
}

// The sorted texts of paths, or of instances as "path|property count".
template <class T>
std::vector<std::string> sortedTexts(const Array<T>& items)
{
    std::vector<std::string> out;
    for (Uint32 i = 0; i < items.size(); i++)
    {
        if constexpr (std::is_same<T, CIMObjectPath>::value)
        {
            out.push_back(keysOf(items[i]));
        }
        else
        {
            CIMObject object(items[i]);
            out.push_back(keysOf(object.getPath()) + "|" + std::to_string(object.getPropertyCount()));
        }
    }
    std::sort(out.begin(), out.end());
    return out;
}

// Pulls the whole sequence that `open` (given the context and the end
// flag) opens, each piece no larger than `piece`, and expects what the
// traditional operation gave; the context ends with the sequence.
template <class T, class Open>
void expectPulled(CIMClient& client, Uint32 piece, const Array<T>& traditional, Open&& open)
{
    ASSERT_NE(traditional.size(), 0u);
    CIMEnumerationContext context;
    Boolean end = false;
    auto all = open(context, end);
    EXPECT_LE(all.size(), piece);
    while (!end)
    {
        decltype(all) next;
        if constexpr (std::is_same<T, CIMObjectPath>::value)
            next = client.pullInstancePaths(context, end, piece);
        else
            next = client.pullInstancesWithPath(context, end, piece);
        EXPECT_LE(next.size(), piece);
        all.appendArray(next);
    }
    EXPECT_TRUE(context.isNull());
    EXPECT_EQ(sortedTexts(all), sortedTexts(traditional));
}

}  // namespace

// One server for the tests that do not need settings of their own.
class CimServerTest : public SharedServerTest
{
protected:
    static void SetUpTestSuite() { startServer({"--simulator-control"}, true); }

    static CommandResult wbemcli(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "wbemcli");
        return runCommand(arguments);
    }
};

TEST_F(CimServerTest, WbemcliVerbsWorkOverHttpAndHttps)
{
    struct Case
    {
        std::vector<std::string> arguments;  // {verb, object (after the URL), extra...}
        std::string expected;                // a regular expression the output matches
    };
    const std::vector<Case> cases = {
        {{"gc", "Test_FastDisk"}, "Test_FastDisk.*Tier"},
        {{"ei", "Test_Disk"}, "Id=\"Disk2\",Name=\"disk Disk2\",Size=20"},
        {{"ein", "Test_Element"}, "Test_Tape.Id=\"Tape2\""},
        {{"gi", "Test_FastDisk.Id=\"Fast1\""}, "Tier=\"gold\""},
        {{"gp", "Test_Disk.Id=\"Disk1\"", "Name"}, "disk Disk1"},
        {{"ai", "Test_Disk.Id=\"Disk1\""}, "Test_Pool.Id=\"Pool1\".*Name=\"pool one\""},
        {{"ain", "Test_Disk.Id=\"Disk1\""}, "Test_Tape.Id=\"Tape1\""},
        {{"ri", "Test_Pool.Id=\"Pool1\""}, "Test_Component"},
        {{"rin", "Test_Disk.Id=\"Disk1\""}, "Test_Backup.Source="},
        {{"cm", "Test_Service.Name=\"svc\"", "User"}, "User \\(string\\): operator"},
        {{"ecn", "Test_Element"}, "Test_Disk"},
    };
    for (bool secure : {false, true})
    {
        for (const Case& c : cases)
        {
            std::vector<std::string> args;
            if (secure)
                args.push_back("-noverify");
            args.push_back(c.arguments[0]);
            args.push_back(server->url("operator:operator-demo", "root/test", secure) + c.arguments[1]);
            args.insert(args.end(), c.arguments.begin() + 2, c.arguments.end());
            CommandResult r = wbemcli(args);
            EXPECT_EQ(r.exitCode, 0) << c.arguments[0] << (secure ? " https: " : " http: ") << r.output;
            EXPECT_TRUE(std::regex_search(r.output, std::regex(c.expected)))
                << c.arguments[0] << (secure ? " https: " : " http: ") << r.output;
        }
    }
}

TEST_F(CimServerTest, WbemcliCreatesAndDeletesThroughTheProvider)
{
    std::string disk = server->url("admin:admin-demo", "root/test") + "Test_Disk.Id=\"New1\"";
    CommandResult created = wbemcli({"ci", disk, "Id=\"New1\",Name=\"new disk\",Size=7"});
    ASSERT_EQ(created.exitCode, 0) << created.output;
    CommandResult read = wbemcli({"gi", disk});
    EXPECT_NE(read.output.find("Name=\"new disk\""), std::string::npos) << read.output;
    CommandResult deleted = wbemcli({"di", disk});
    EXPECT_EQ(deleted.exitCode, 0) << deleted.output;
    CommandResult gone = wbemcli({"gi", disk});
    EXPECT_NE(gone.output.find("CIM_ERR_NOT_FOUND"), std::string::npos) << gone.output;
}

// Requests refused before any provider runs, and what they are answered.
TEST_F(CimServerTest, InvalidRequestsGetTheirHttpStatusAndCimError)
{
    struct Case
    {
        const char* what;
        std::string request;
        const char* status;
        const char* header;  // a header line the answer must hold, or ""
    };
    const std::vector<Case> cases = {
        {"no credentials", request("POST", kCimHeaders, kEnumerateDisks), "401", "WWW-Authenticate: Basic"},
        {"not Basic", request("POST", "Authorization: Bearer abc\r\n" + kCimHeaders, kEnumerateDisks), "401",
            ""},
        {"no CIMOperation",
            request("POST", kAdmin + "Content-Type: application/xml\r\nCIMMethod: EnumerateInstanceNames\r\n",
                kEnumerateDisks),
            "400", "CIMError: unsupported-operation"},
        {"malformed XML", request("POST", kAdmin + kCimHeaders, "<CIM><MESSAGE"), "400",
            "CIMError: request-not-well-formed"},
        {"not a CIM message", request("POST", kAdmin + kCimHeaders, "<html/>"), "400",
            "CIMError: request-not-valid"},
        {"headers disagree with the body",
            request("POST",
                kAdmin +
                    "Content-Type: application/xml\r\nCIMOperation: MethodCall\r\n"
                    "CIMMethod: GetClass\r\nCIMObject: root%2Ftest\r\n",
                kEnumerateDisks),
            "400", "CIMError: header-mismatch"},
        {"GET", "GET / HTTP/1.1\r\nHost: x\r\nConnection: close\r\n" + kAdmin + "\r\n", "405",
            "Allow: POST, M-POST"},
        {"M-POST without Man", request("M-POST", kAdmin + kCimHeaders, kEnumerateDisks), "501", ""},
        {"unsupported protocol version",
            request("POST", kAdmin + kCimHeaders + "CIMProtocolVersion: 2.0\r\n", kEnumerateDisks), "501",
            "CIMError: unsupported-protocol-version"},
        {"M-POST with the 73- headers",
            request("M-POST",
                kAdmin +
                    "Man: http://www.dmtf.org/cim/mapping/http/v1.0 ; ns=73\r\n"
                    "Content-Type: application/xml\r\n73-CIMOperation: MethodCall\r\n"
                    "73-CIMMethod: EnumerateInstanceNames\r\n73-CIMObject: root%2Ftest\r\n",
                kEnumerateDisks),
            "200", "73-CIMOperation: MethodResponse"},
        {"CIMBatch", request("POST", kAdmin + kCimHeaders + "CIMBatch: CIMBatch\r\n", kEnumerateDisks), "501",
            "CIMError: multiple-requests-unsupported"},
        {"valid POST", request("POST", kAdmin + kCimHeaders, kEnumerateDisks), "200",
            "CIMOperation: MethodResponse"},
    };
    for (const Case& c : cases)
    {
        RawExchange r = rawExchange(server->httpPort(), c.request);
        EXPECT_NE(statusLine(r.response).find(std::string(" ") + c.status + " "), std::string::npos)
            << c.what << ": " << r.response;
        EXPECT_NE(r.response.find(c.header), std::string::npos) << c.what << ": " << r.response;
        EXPECT_TRUE(r.closedByServer) << c.what << ": the request asked to close";
    }
}

// What clients that send only what they need get back: instance operations
// answer every property whatever LocalOnly says, IncludeClassOrigin adds
// the origins, an empty reference array may come as VALUE.ARRAY, and an
// intrinsic operation the server does not serve is refused in an
// IMETHODRESPONSE.
TEST_F(CimServerTest, RawRequestsGetTheAnswersClientsExpect)
{
    auto post = [&](const std::string& method, const std::string& object, const std::string& call) {
        const std::string body = "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
                                 "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"9\" "
                                 "PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" +
            call + "</SIMPLEREQ></MESSAGE></CIM>";
        const std::string headers = "Authorization: " + basicAuthorization("admin", "admin-demo") +
            "\r\nContent-Type: application/xml\r\nCIMOperation: MethodCall\r\n"
            "CIMMethod: " +
            method + "\r\nCIMObject: " + object + "\r\n";
        return rawExchange(server->httpPort(), request("POST", headers, body)).response;
    };
    auto intrinsic = [&](const std::string& name, const std::string& params) {
        return post(name, "root%2Ftest",
            "<IMETHODCALL NAME=\"" + name +
                "\"><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"test\"/>"
                "</LOCALNAMESPACEPATH>" +
                params + "</IMETHODCALL>");
    };
    const std::string fastDisk =
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Test_FastDisk\"/></IPARAMVALUE>";
    const std::string fast1 = "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME CLASSNAME=\"Test_FastDisk\">"
                              "<KEYBINDING NAME=\"Id\"><KEYVALUE>Fast1</KEYVALUE></KEYBINDING></INSTANCENAME>"
                              "</IPARAMVALUE>";
    const std::string localOnly = "<IPARAMVALUE NAME=\"LocalOnly\"><VALUE>TRUE</VALUE></IPARAMVALUE>";
    const std::string withOrigin =
        "<IPARAMVALUE NAME=\"IncludeClassOrigin\"><VALUE>TRUE</VALUE></IPARAMVALUE>";

    // Id and Name come from the superclasses, Tier from the class itself.
    for (const std::string& answer :
        {intrinsic("EnumerateInstances", fastDisk), intrinsic("EnumerateInstances", fastDisk + localOnly),
            intrinsic("GetInstance", fast1), intrinsic("GetInstance", fast1 + localOnly)})
    {
        EXPECT_NE(answer.find("NAME=\"Id\""), std::string::npos) << answer;
        EXPECT_NE(answer.find("NAME=\"Name\""), std::string::npos) << answer;
        EXPECT_NE(answer.find("NAME=\"Tier\""), std::string::npos) << answer;
        EXPECT_EQ(answer.find("CLASSORIGIN"), std::string::npos) << answer;
    }
    for (const std::string& answer : {intrinsic("EnumerateInstances", fastDisk + withOrigin),
             intrinsic("GetInstance", fast1 + withOrigin)})
    {
        EXPECT_NE(
            answer.find("NAME=\"Name\" TYPE=\"string\" CLASSORIGIN=\"Test_Element\""), std::string::npos)
            << answer;
        EXPECT_NE(answer.find("CLASSORIGIN=\"Test_FastDisk\""), std::string::npos) << answer;
    }

    for (const char* refused : {"GetQualifier", "EnumerateQualifiers", "EnumerationCount", "NoSuchOperation"})
    {
        const std::string answer = intrinsic(refused, "");
        EXPECT_NE(answer.find(std::string("<IMETHODRESPONSE NAME=\"") + refused + "\"><ERROR CODE=\"7\""),
            std::string::npos)
            << answer;
    }

    const std::string echo = post("Echo", "root%2Ftest%3ATest_Service.Name%3D%22svc%22",
        "<METHODCALL NAME=\"Echo\"><LOCALINSTANCEPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/>"
        "<NAMESPACE NAME=\"test\"/></LOCALNAMESPACEPATH><INSTANCENAME CLASSNAME=\"Test_Service\">"
        "<KEYBINDING NAME=\"Name\"><KEYVALUE>svc</KEYVALUE></KEYBINDING></INSTANCENAME></LOCALINSTANCEPATH>"
        "<PARAMVALUE NAME=\"Items\" PARAMTYPE=\"reference\"><VALUE.ARRAY/></PARAMVALUE></METHODCALL>");
    EXPECT_NE(echo.find("Items=reference[]:"), std::string::npos) << echo;
}

// A pulled enumeration returns what the traditional operation returns, in
// pieces no larger than asked for.
TEST_F(CimServerTest, PulledEnumerationsReturnWhatTheTraditionalOperationsReturn)
{
    CIMClient client;
    client.connect("127.0.0.1", Uint32(server->httpPort()), "admin", "admin-demo");
    const CIMNamespaceName test("root/test"), zda("root/zda");
    const CIMName volume("ZDA_StorageVolume");
    const CIMObjectPath pool("root/test:Test_Pool.Id=\"Pool1\"");
    const CIMObjectPath disk("root/test:Test_Disk.Id=\"Disk1\"");
    const CIMPropertyList all;
    for (Uint32 n : {7u, 1u})
    {
        SCOPED_TRACE("in pieces of " + std::to_string(n));
        expectPulled(
            client, n, client.enumerateInstances(zda, volume, true, false), [&](auto& c, Boolean& end) {
                return client.openEnumerateInstances(
                    c, end, zda, volume, true, false, all, "", "", Uint32Arg(), false, n);
            });
        expectPulled(client, n, client.enumerateInstanceNames(zda, volume), [&](auto& c, Boolean& end) {
            return client.openEnumerateInstancePaths(c, end, zda, volume, "", "", Uint32Arg(), false, n);
        });
        expectPulled(client, n, client.references(test, pool), [&](auto& c, Boolean& end) {
            return client.openReferenceInstances(
                c, end, test, pool, CIMName(), "", false, all, "", "", Uint32Arg(), false, n);
        });
        expectPulled(client, n, client.referenceNames(test, disk), [&](auto& c, Boolean& end) {
            return client.openReferenceInstancePaths(
                c, end, test, disk, CIMName(), "", "", "", Uint32Arg(), false, n);
        });
        expectPulled(client, n, client.associators(test, pool), [&](auto& c, Boolean& end) {
            return client.openAssociatorInstances(
                c, end, test, pool, CIMName(), CIMName(), "", "", false, all, "", "", Uint32Arg(), false, n);
        });
        expectPulled(client, n, client.associatorNames(test, disk), [&](auto& c, Boolean& end) {
            return client.openAssociatorInstancePaths(
                c, end, test, disk, CIMName(), CIMName(), "", "", "", "", Uint32Arg(), false, n);
        });
    }

    // A context closed early is gone: closing it again is refused.
    CIMEnumerationContext context;
    Boolean end = false;
    client.openEnumerateInstancePaths(context, end, test, "Test_Bulk");
    ASSERT_FALSE(end);
    const CIMEnumerationContext opened = context;
    client.closeEnumeration(context);
    EXPECT_TRUE(context.isNull());
    context = opened;
    EXPECT_EQ(cimErrorOf([&] { client.closeEnumeration(context); }), CIM_ERR_INVALID_ENUMERATION_CONTEXT);
}

// What the pull operations refuse, and the limits that keep abandoned
// contexts from piling up: a context not pulled in time is closed and its
// place freed.
TEST(CimServerPullTest, RefusalsLimitsAndTimeOuts)
{
    TemporaryFolder folder;
    ServerProcess server(
        folder.path(), {"--pull-max-contexts", "2", "--pull-max-timeout", "5", "--https-port", "off"});
    cimxml::registerClientTransports();
    CIMClient client;
    client.connect("127.0.0.1", Uint32(server.httpPort()), "admin", "admin-demo");
    auto open = [&](CIMEnumerationContext& context, const char* query, Uint32Arg timeout,
                    bool continueOnError, std::string* message = nullptr) {
        Boolean end = false;
        return cimErrorOf(
            [&] {
                client.openEnumerateInstances(context, end, "root/test", "Test_Bulk", true, false,
                    CIMPropertyList(), "", query, timeout, continueOnError, 0);
            },
            message);
    };
    CIMEnumerationContext first, second, third;
    EXPECT_EQ(open(first, "SELECT * FROM Test_Bulk", Uint32Arg(), false),
        CIM_ERR_FILTERED_ENUMERATION_NOT_SUPPORTED);
    EXPECT_EQ(open(first, "", Uint32Arg(), true), CIM_ERR_CONTINUATION_ON_ERROR_NOT_SUPPORTED);
    EXPECT_EQ(open(first, "", Uint32Arg(6), false), CIM_ERR_INVALID_OPERATION_TIMEOUT);

    ASSERT_EQ(open(first, "", Uint32Arg(1), false), CIM_ERR_SUCCESS);
    ASSERT_EQ(open(second, "", Uint32Arg(5), false), CIM_ERR_SUCCESS);
    std::string message;
    EXPECT_EQ(open(third, "", Uint32Arg(), false, &message), CIM_ERR_SERVER_LIMITS_EXCEEDED);
    EXPECT_NE(message.find("open enumeration contexts"), std::string::npos) << message;

    // The first context is abandoned: after its second it is gone and
    // another open fits again.
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    Boolean end = false;
    EXPECT_EQ(cimErrorOf([&] { client.pullInstancesWithPath(first, end, 3); }),
        CIM_ERR_INVALID_ENUMERATION_CONTEXT);
    EXPECT_EQ(open(third, "", Uint32Arg(), false), CIM_ERR_SUCCESS);
    EXPECT_EQ(server.stop(), 0) << server.log();
}

TEST_F(CimServerTest, CimClientReachesProvidersOverTcpAndTheLocalSocket)
{
    // "<user>@<address>" as the service sees the client.
    auto caller = [](CIMClient& client) {
        Array<CIMParamValue> out;
        client.invokeMethod(
            "root/test", CIMObjectPath("Test_Service.Name=\"svc\""), "User", Array<CIMParamValue>(), out);
        return outParameter(out, "User") + "@" + outParameter(out, "Address");
    };
    CIMClient client;
    client.connect("127.0.0.1", Uint32(server->httpPort()), "viewer", "viewer-demo");
    EXPECT_EQ(client.enumerateInstanceNames("root/test", "Test_Disk").size(), 3u);
    EXPECT_EQ(caller(client), "viewer@127.0.0.1");
    // The local socket trusts its peer (this test runs as the server's
    // user): the request runs as the server's local user.
    ::setenv("ZDA_CIMSERVER_SOCKET", server->socketPath().c_str(), 1);
    CIMClient local;
    local.connectLocal();
    ::unsetenv("ZDA_CIMSERVER_SOCKET");
    EXPECT_EQ(caller(local), "admin@");
}

TEST_F(CimServerTest, SimulatorControlsDriveTheArrayThroughTheWire)
{
    std::string control = server->url("admin:admin-demo", "root/zda_sim") + "ZDA_SimulatorControl";
    std::string system = server->url("admin:admin-demo", "root/zda") + "ZDA_StorageSystem";

    // Only users whose rights include the system's settings may drive it.
    for (const char* user : {"operator:operator-demo", "viewer:viewer-demo", "noaccess:noaccess-demo"})
    {
        const std::string theirs = server->url(user, "root/zda_sim") + "ZDA_SimulatorControl";
        for (const char* call : {"Reset", "InjectFault.Function=\"api_getSystemInfo\",Count=-1"})
        {
            CommandResult refused = wbemcli({"cm", theirs, call});
            EXPECT_NE(refused.output.find("CIM_ERR_ACCESS_DENIED"), std::string::npos)
                << user << refused.output;
        }
    }
    EXPECT_NE(wbemcli({"ein", system}).output.find("zda-demo"), std::string::npos) << "no fault was injected";

    ASSERT_EQ(wbemcli({"cm", control, "Reset"}).exitCode, 0);
    CommandResult fault = wbemcli(
        {"cm", control, "InjectFault.Function=\"api_getSystemInfo\",Count=-1,Code=5,Text=\"broken\""});
    ASSERT_EQ(fault.exitCode, 0) << fault.output;
    CommandResult failing = wbemcli({"ein", system});
    EXPECT_EQ(failing.output.find("zda-demo"), std::string::npos) << failing.output;

    ASSERT_EQ(wbemcli({"cm", control, "ClearFaults"}).exitCode, 0);
    CommandResult working = wbemcli({"ein", system});
    EXPECT_NE(working.output.find("zda-demo"), std::string::npos) << working.output;

    CommandResult journal = wbemcli({"cm", control, "GetJournal"});
    EXPECT_NE(journal.output.find("api_getSystemInfo -> 5"), std::string::npos) << journal.output;
    EXPECT_NE(journal.output.find("api_getSystemInfo -> 0"), std::string::npos) << journal.output;

    CommandResult ledgers = wbemcli({"cm", control, "GetLedgers"});
    EXPECT_NE(ledgers.output.find("OutstandingCount (sint64): 0"), std::string::npos) << ledgers.output;
    EXPECT_NE(ledgers.output.find("SemaphoreHeld (boolean): FALSE"), std::string::npos) << ledgers.output;

    CommandResult clock0 = wbemcli({"cm", control, "SetClock.Start=1000000"});
    ASSERT_EQ(clock0.exitCode, 0) << clock0.output;
    CommandResult stepped = wbemcli({"cm", control, "StepClock.Seconds=3600"});
    EXPECT_NE(stepped.output.find("Now (sint64): 1003600"), std::string::npos) << stepped.output;
    ASSERT_EQ(wbemcli({"cm", control, "Reset"}).exitCode, 0);
}

// The server's own namespace serves its providers' in-process calls only.
TEST_F(CimServerTest, TheInternalNamespaceIsNotServedToClients)
{
    CIMClient client;
    client.connect("127.0.0.1", Uint32(server->httpPort()), "admin", "admin-demo");
    EXPECT_EQ(cimErrorOf([&] { client.enumerateClassNames("root/PG_Internal", CIMName(), true); }),
        CIM_ERR_INVALID_NAMESPACE);
}

// A server of its own with small limits.
TEST(CimServerLimitsTest, OversizedDeepAndStalledRequestsAreRefused)
{
    TemporaryFolder folder;
    ServerProcess server(folder.path(),
        {"--max-request-bytes", "4096", "--max-xml-depth", "16", "--header-timeout", "1", "--body-timeout",
            "1", "--https-port", "off"});
    const std::string headers = kAdmin + kCimHeaders;

    RawExchange big = rawExchange(server.httpPort(), request("POST", headers, std::string(5000, ' ')));
    EXPECT_NE(statusLine(big.response).find(" 413 "), std::string::npos) << big.response;

    std::string deep = kEnumerateDisks;
    std::string nest;
    for (int i = 0; i < 40; i++)
        nest += "<VALUE>";
    deep.insert(deep.find("</IMETHODCALL>"), "<IPARAMVALUE NAME=\"X\">" + nest + "</IPARAMVALUE>");
    RawExchange tooDeep = rawExchange(server.httpPort(), request("POST", headers, deep));
    EXPECT_NE(statusLine(tooDeep.response).find(" 400 "), std::string::npos) << tooDeep.response;

    // Clients that stop sending in the headers or in the body are closed
    // after their time-out (1 s here), well before the exchange gives up.
    RawExchange stalledHeaders = rawExchange(server.httpPort(), "POST /cimom HTTP/1.1\r\nHost: x\r\n", 20000);
    EXPECT_TRUE(stalledHeaders.closedByServer);
    EXPECT_LT(stalledHeaders.elapsedMs, 15000);
    RawExchange stalledBody = rawExchange(server.httpPort(),
        "POST /cimom HTTP/1.1\r\nHost: x\r\n" + headers + "Content-Length: 100\r\n\r\n<?xml", 20000);
    EXPECT_TRUE(stalledBody.closedByServer);
    EXPECT_LT(stalledBody.elapsedMs, 15000);
    EXPECT_EQ(stalledBody.response.find("200 OK"), std::string::npos);

    // The server still serves after all that.
    RawExchange fine = rawExchange(server.httpPort(), request("POST", headers, kEnumerateDisks));
    EXPECT_NE(statusLine(fine.response).find(" 200 "), std::string::npos) << fine.response;
    EXPECT_EQ(server.stop(), 0) << server.log();
}

TEST(CimServerLimitsTest, ConnectionsBeyondTheLimitGet503)
{
    TemporaryFolder folder;
    ServerProcess server(folder.path(), {"--max-connections", "1", "--https-port", "off"});
    // The first connection stays open (its headers are never finished).
    int port = server.httpPort();
    std::thread holder([port] { rawExchange(port, "POST /cimom HTTP/1.1\r\n", 6000); });
    // Until the holder's connection is accepted, a second one may still be
    // served; retry until the refusal shows. The bound is time, not a count
    // of attempts, and stays inside the holder's life, so a slow start of
    // the holder thread on a loaded machine cannot fail the test.
    std::string answer;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (answer.find(" 503 ") == std::string::npos && std::chrono::steady_clock::now() < deadline)
        answer = rawExchange(port, request("POST", "", "")).response;
    holder.join();
    EXPECT_NE(answer.find(" 503 "), std::string::npos) << answer;
}

TEST(CimServerUsersTest, UsersFileReplacesTheDemoUsers)
{
    TemporaryFolder folder;
    std::string users = folder.path() + "/users";
    auto addUser = [&](const char* name, const char* password) {
        return runCommand({serverProgram(), "--users", users, "--add-user", name}, 60000, password).exitCode;
    };
    ASSERT_EQ(addUser("alice", "alice-secret\n"), 0);
    ASSERT_EQ(addUser("bob", "bob-pw\n"), 0);
    EXPECT_NE(addUser("carol", ""), 0) << "no password";

    std::ifstream in(users);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_TRUE(std::regex_search(text, std::regex("^alice:\\$")));
    EXPECT_EQ(text.find("alice-secret"), std::string::npos);

    std::string broken = folder.path() + "/broken-users";
    std::ofstream(broken) << "# users\nalice\n";
    CommandResult refused = runCommand({serverProgram(), "--users", broken, "--http-port", "0",
        "--https-port", "off", "--state-dir", folder.path()});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.output.find("broken-users:2:"), std::string::npos) << refused.output;

    // In order: a credential that verified is remembered; a near miss of it
    // is not.
    ServerProcess server(folder.path(), {"--users", users, "--https-port", "off"});
    const std::pair<const char*, bool> logins[] = {{"alice:alice-secret", true}, {"bob:bob-pw", true},
        {"admin:admin-demo", false}, {"alice:alice-secreT", false}, {"alice:alice-secret", true}};
    for (const auto& [user, admitted] : logins)
    {
        CommandResult r = runCommand({"wbemcli", "ein", server.url(user, "root/test") + "Test_Disk"});
        EXPECT_EQ(r.exitCode == 0, admitted) << user << ": " << r.output;
    }
}

TEST(CimServerStateTest, PersistedStateSurvivesARestart)
{
    TemporaryFolder folder;
    std::string state = folder.path() + "/array.json";
    const char* description =
        "{\"system\": {\"name\": \"lab-array\"},"
        " \"roles\": [{\"name\": \"super\", \"default\": \"allowed\"}],"
        " \"users\": [{\"name\": \"admin\", \"role\": \"super\"}],"
        " \"cpgs\": [{\"name\": \"C1\"}],"
        " \"volumes\": [{\"name\": \"lab_vol1\", \"usrCpg\": \"C1\", \"sizeMiB\": 1024}]}";
    {
        ServerProcess first(folder.path(), {"--state", state, "--simulator-control", "--https-port", "off"});
        cimxml::registerClientTransports();
        CIMClient client;
        client.connect("127.0.0.1", Uint32(first.httpPort()), "admin", "admin-demo");
        Array<CIMParamValue> in, out;
        in.append(CIMParamValue("Description", CIMValue(String(description))));
        CIMValue result = client.invokeMethod(
            "root/zda_sim", CIMObjectPath("ZDA_SimulatorControl"), "LoadDescription", in, out);
        ASSERT_EQ(text(result.toString()), "0") << outParameter(out, "Error");
        EXPECT_EQ(first.stop(), 0) << first.log();
        EXPECT_NE(first.output().find("zda-cimserver stopped"), std::string::npos);
    }
    ServerProcess second(folder.path(), {"--state", state, "--https-port", "off"});
    CommandResult system = runCommand(
        {"wbemcli", "ein", second.url("admin:admin-demo", "root/zda") + "ZDA_StorageSystem"});
    EXPECT_NE(system.output.find("Name=\"lab-array\""), std::string::npos) << system.output << second.log();
    CommandResult volumes = runCommand(
        {"wbemcli", "ein", second.url("admin:admin-demo", "root/zda") + "ZDA_StorageVolume"});
    EXPECT_EQ(std::count(volumes.output.begin(), volumes.output.end(), '\n'), 1) << volumes.output;
}

// The tour in the README works as printed against a server started the
// way the README starts it (project MOF only, demo array, demo users).
TEST(CimServerReadmeTest, TourCommandsWorkAsPrinted)
{
    TemporaryFolder folder;
    ServerProcess server(folder.path(), {}, false);
    std::string all = runReadmeSection("tour", server, 4);
    EXPECT_NE(all.find("zda-demo"), std::string::npos) << all;
    EXPECT_NE(all.find("ZDA_StorageVolume"), std::string::npos) << all;
}
