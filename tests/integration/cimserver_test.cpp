// zda-cimserver as users meet it: started as a program, reached over HTTP,
// HTTPS and the local socket by wbemcli, CIMClient and raw requests.
#include "SdkText.h"
#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>
#include <cimxml/Codec.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <fstream>
#include <memory>
#include <regex>
#include <sstream>

using namespace zda_it;
using zda_test::text;
PEGASUS_USING_PEGASUS;

namespace
{

std::string request(const std::string& method, const std::string& headers, const std::string& body)
{
    return method + " /cimom HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n" + headers +
        "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

const std::string kEnumerateDisks = enumerateBody("EnumerateInstanceNames", "Test_Disk", "root/test");

std::string statusLine(const std::string& response)
{
    return response.substr(0, response.find("\r\n"));
}

std::string outParameter(const Array<CIMParamValue>& out, const char* name)
{
    for (Uint32 i = 0; i < out.size(); i++)
        if (out[i].getParameterName() == name)
            return text(out[i].getValue().toString());
    return "<missing>";
}

// One intrinsic call as raw CIM-XML over a fresh connection, as user admin;
// the answer decoded (it must not be streamed).
cimxml::OperationResponse intrinsicCall(
    int port, cimxml::Intrinsic op, const char* nameSpace, const Array<CIMParamValue>& parameters)
{
    cimxml::OperationRequest r;
    r.operation = op;
    r.nameSpace = CIMNamespaceName(nameSpace);
    r.parameters = parameters;
    cimxml::StringSink body;
    cimxml::encodeRequest(r, body);
    const std::string headers = "Authorization: " + basicAuthorization("admin", "admin-demo") +
        "\r\nContent-Type: application/xml\r\nCIMOperation: MethodCall\r\nCIMMethod: " +
        cimxml::intrinsicName(op) +
        "\r\nCIMObject: " + std::regex_replace(nameSpace, std::regex("/"), "%2F") + "\r\n";
    const std::string answer = rawExchange(port, request("POST", headers, body.text)).response;
    const std::size_t start = answer.find("\r\n\r\n");
    if (start == std::string::npos || answer.find("Transfer-Encoding: chunked") != std::string::npos)
        throw std::runtime_error("no plain answer: " + answer.substr(0, 400));
    return cimxml::decodeResponse(answer.data() + start + 4, answer.size() - start - 4);
}

std::string contextOf(const cimxml::OperationResponse& r)
{
    for (Uint32 i = 0; i < r.outParameters.size(); i++)
        if (r.outParameters[i].getParameterName() == "EnumerationContext" &&
            !r.outParameters[i].getValue().isNull())
            return text(r.outParameters[i].getValue().toString());
    return std::string();
}

bool endOf(const cimxml::OperationResponse& r)
{
    for (Uint32 i = 0; i < r.outParameters.size(); i++)
        if (r.outParameters[i].getParameterName() == "EndOfSequence")
            return r.outParameters[i].getValue().toString() == "TRUE";
    throw std::runtime_error("no EndOfSequence");
}

// A path as class and keys: the traditional operations name instances
// without host and namespace where the pull operations give both.
std::string keysOf(const CIMObjectPath& path)
{
    return text(
        CIMObjectPath(String(), CIMNamespaceName(), path.getClassName(), path.getKeyBindings()).toString());
}

// The sorted texts of what a pulled enumeration returns, opened by `open`
// with `parameters` and pulled in pieces of `piece`: "path" for a path,
// "path|property count" for an instance.
std::vector<std::string> pulledAll(int port, cimxml::Intrinsic open, const char* nameSpace,
    Array<CIMParamValue> parameters, Uint32 piece, unsigned& answers)
{
    const bool paths = cimxml::resultShape(open) == cimxml::ResultShape::InstancePaths;
    std::vector<std::string> out;
    auto collect = [&](const cimxml::OperationResponse& r) {
        if (r.isError())
            throw std::runtime_error(
                "CIM error " + std::to_string(r.errorCode) + ": " + text(r.errorDescription));
        answers++;
        if (paths)
        {
            Array<CIMObjectPath> items;
            r.returnValue.get(items);
            EXPECT_LE(items.size(), piece);
            for (Uint32 i = 0; i < items.size(); i++)
                out.push_back(keysOf(items[i]));
        }
        else
        {
            Array<CIMInstance> items;
            r.returnValue.get(items);
            EXPECT_LE(items.size(), piece);
            for (Uint32 i = 0; i < items.size(); i++)
                out.push_back(keysOf(items[i].getPath()) + "|" + std::to_string(items[i].getPropertyCount()));
        }
    };
    parameters.append(CIMParamValue("MaxObjectCount", CIMValue(piece)));
    cimxml::OperationResponse r = intrinsicCall(port, open, nameSpace, parameters);
    collect(r);
    while (!endOf(r))
    {
        Array<CIMParamValue> next;
        next.append(CIMParamValue("EnumerationContext", CIMValue(String(contextOf(r).c_str()))));
        next.append(CIMParamValue("MaxObjectCount", CIMValue(piece)));
        r = intrinsicCall(port,
            paths ? cimxml::Intrinsic::PullInstancePaths : cimxml::Intrinsic::PullInstancesWithPath,
            nameSpace, next);
        collect(r);
    }
    std::sort(out.begin(), out.end());
    return out;
}

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

TEST_F(CimServerTest, CompanionClassesAreServed)
{
    std::string zda = server->url("admin:admin-demo", "root/zda");
    CommandResult system = wbemcli({"ein", zda + "ZDA_StorageSystem"});
    EXPECT_NE(system.output.find("Name=\"zda-demo\""), std::string::npos) << system.output;
    CommandResult volumes = wbemcli({"ein", zda + "ZDA_StorageVolume"});
    EXPECT_EQ(volumes.exitCode, 0) << volumes.output;
    EXPECT_GT(std::count(volumes.output.begin(), volumes.output.end(), '\n'), 30) << volumes.output;
}

// Requests refused before any provider runs, and what they are answered.
TEST_F(CimServerTest, InvalidRequestsGetTheirHttpStatusAndCimError)
{
    const std::string admin = "Authorization: " + basicAuthorization("admin", "admin-demo") + "\r\n";
    const std::string cimHeaders = "Content-Type: application/xml; charset=\"utf-8\"\r\n"
                                   "CIMOperation: MethodCall\r\nCIMMethod: EnumerateInstanceNames\r\n"
                                   "CIMObject: root%2Ftest\r\n";
    struct Case
    {
        const char* what;
        std::string request;
        const char* status;
        const char* header;  // a header line the answer must hold, or ""
    };
    const std::vector<Case> cases = {
        {"no credentials", request("POST", cimHeaders, kEnumerateDisks), "401", "WWW-Authenticate: Basic"},
        {"wrong password",
            request("POST", "Authorization: " + basicAuthorization("admin", "nope") + "\r\n" + cimHeaders,
                kEnumerateDisks),
            "401", ""},
        {"unknown user",
            request("POST", "Authorization: " + basicAuthorization("mallory", "x") + "\r\n" + cimHeaders,
                kEnumerateDisks),
            "401", ""},
        {"not Basic", request("POST", "Authorization: Bearer abc\r\n" + cimHeaders, kEnumerateDisks), "401",
            ""},
        {"no CIMOperation",
            request("POST", admin + "Content-Type: application/xml\r\nCIMMethod: EnumerateInstanceNames\r\n",
                kEnumerateDisks),
            "400", "CIMError: unsupported-operation"},
        {"malformed XML", request("POST", admin + cimHeaders, "<CIM><MESSAGE"), "400",
            "CIMError: request-not-well-formed"},
        {"not a CIM message", request("POST", admin + cimHeaders, "<html/>"), "400",
            "CIMError: request-not-valid"},
        {"a reference to a lone surrogate",
            request("POST", admin + cimHeaders,
                std::regex_replace(kEnumerateDisks, std::regex("Test_Disk"), "Test_&#xD800;")),
            "400", "CIMError: request-not-well-formed"},
        {"a second SIMPLEREQ",
            request("POST", admin + cimHeaders,
                std::regex_replace(kEnumerateDisks, std::regex("</SIMPLEREQ>"), "</SIMPLEREQ><SIMPLEREQ/>")),
            "400", "CIMError: request-not-valid"},
        {"headers disagree with the body",
            request("POST",
                admin +
                    "Content-Type: application/xml\r\nCIMOperation: MethodCall\r\n"
                    "CIMMethod: GetClass\r\nCIMObject: root%2Ftest\r\n",
                kEnumerateDisks),
            "400", "CIMError: header-mismatch"},
        {"GET", "GET / HTTP/1.1\r\nHost: x\r\nConnection: close\r\n" + admin + "\r\n", "405",
            "Allow: POST, M-POST"},
        {"M-POST without Man", request("M-POST", admin + cimHeaders, kEnumerateDisks), "501", ""},
        {"unsupported protocol version",
            request("POST", admin + cimHeaders + "CIMProtocolVersion: 2.0\r\n", kEnumerateDisks), "501",
            "CIMError: unsupported-protocol-version"},
        {"M-POST with the 73- headers",
            request("M-POST",
                admin +
                    "Man: http://www.dmtf.org/cim/mapping/http/v1.0 ; ns=73\r\n"
                    "Content-Type: application/xml\r\n73-CIMOperation: MethodCall\r\n"
                    "73-CIMMethod: EnumerateInstanceNames\r\n73-CIMObject: root%2Ftest\r\n",
                kEnumerateDisks),
            "200", "73-CIMOperation: MethodResponse"},
        {"CIMBatch", request("POST", admin + cimHeaders + "CIMBatch: CIMBatch\r\n", kEnumerateDisks), "501",
            "CIMError: multiple-requests-unsupported"},
        {"valid POST", request("POST", admin + cimHeaders, kEnumerateDisks), "200",
            "CIMOperation: MethodResponse"},
    };
    for (const Case& c : cases)
    {
        RawExchange r = rawExchange(server->httpPort(), c.request);
        EXPECT_NE(statusLine(r.response).find(std::string(" ") + c.status + " "), std::string::npos)
            << c.what << ": " << r.response;
        EXPECT_NE(r.response.find(c.header), std::string::npos) << c.what << ": " << r.response;
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
    using cimxml::Intrinsic;
    CIMClient client;
    client.connect("127.0.0.1", Uint32(server->httpPort()), "admin", "admin-demo");
    const CIMNamespaceName test("root/test"), zda("root/zda");
    const CIMObjectPath pool("root/test:Test_Pool.Id=\"Pool1\"");
    const CIMObjectPath disk("root/test:Test_Disk.Id=\"Disk1\"");
    auto named = [](const char* name, const CIMValue& value) {
        Array<CIMParamValue> p;
        p.append(CIMParamValue(name, value));
        return p;
    };
    struct Case
    {
        const char* what;
        const char* nameSpace;
        Intrinsic open;
        Array<CIMParamValue> parameters;
        std::vector<std::string> expected;
    };
    const String volume("ZDA_StorageVolume");
    const std::vector<Case> cases = {
        {"instances", "root/zda", Intrinsic::OpenEnumerateInstances, named("ClassName", CIMValue(volume)),
            sortedTexts(client.enumerateInstances(zda, CIMName(volume), true, false))},
        {"paths", "root/zda", Intrinsic::OpenEnumerateInstancePaths, named("ClassName", CIMValue(volume)),
            sortedTexts(client.enumerateInstanceNames(zda, CIMName(volume)))},
        {"references", "root/test", Intrinsic::OpenReferenceInstances, named("InstanceName", CIMValue(pool)),
            sortedTexts(client.references(test, pool))},
        {"reference paths", "root/test", Intrinsic::OpenReferenceInstancePaths,
            named("InstanceName", CIMValue(disk)), sortedTexts(client.referenceNames(test, disk))},
        {"associators", "root/test", Intrinsic::OpenAssociatorInstances,
            named("InstanceName", CIMValue(pool)), sortedTexts(client.associators(test, pool))},
        {"associator paths", "root/test", Intrinsic::OpenAssociatorInstancePaths,
            named("InstanceName", CIMValue(disk)), sortedTexts(client.associatorNames(test, disk))},
    };
    for (const Case& c : cases)
    {
        ASSERT_FALSE(c.expected.empty()) << c.what;
        for (Uint32 piece : {7u, 1u})
        {
            unsigned answers = 0;
            EXPECT_EQ(
                pulledAll(server->httpPort(), c.open, c.nameSpace, c.parameters, piece, answers), c.expected)
                << c.what << " in pieces of " << piece;
            EXPECT_GE(answers, (c.expected.size() + piece - 1) / piece) << c.what;
        }
    }
    // CIMClient's pull calls walk the same sequences.
    {
        CIMEnumerationContext context;
        Boolean end = false;
        Array<CIMInstance> pulled = client.openEnumerateInstances(context, end, zda, CIMName(volume), true,
            false, CIMPropertyList(), String(), String(), Uint32Arg(), false, 7);
        while (!end)
            pulled.appendArray(client.pullInstancesWithPath(context, end, 7));
        EXPECT_TRUE(context.isNull());
        EXPECT_EQ(sortedTexts(pulled), cases[0].expected);

        Array<CIMObjectPath> paths = client.openAssociatorInstancePaths(context, end, test, disk, CIMName(),
            CIMName(), String(), String(), String(), String(), Uint32Arg(), false, 1);
        while (!end)
            paths.appendArray(client.pullInstancePaths(context, end, 1));
        EXPECT_EQ(sortedTexts(paths), cases[5].expected);

        client.openReferenceInstancePaths(context, end, test, disk);
        ASSERT_FALSE(context.isNull());
        client.closeEnumeration(context);
        EXPECT_TRUE(context.isNull());
    }

    // Every context ended with its sequence: closing one now is refused.
    cimxml::OperationResponse opened = intrinsicCall(server->httpPort(),
        Intrinsic::OpenEnumerateInstancePaths, "root/test",
        named("ClassName", CIMValue(String("Test_Bulk"))));
    ASSERT_FALSE(endOf(opened));
    Array<CIMParamValue> close = named("EnumerationContext", CIMValue(String(contextOf(opened).c_str())));
    EXPECT_FALSE(
        intrinsicCall(server->httpPort(), Intrinsic::CloseEnumeration, "root/test", close).isError());
    EXPECT_EQ(intrinsicCall(server->httpPort(), Intrinsic::CloseEnumeration, "root/test", close).errorCode,
        Uint32(CIM_ERR_INVALID_ENUMERATION_CONTEXT));
}

// What the pull operations refuse, and the limits that keep abandoned
// contexts from piling up: a context not pulled in time is closed and its
// place freed.
TEST(CimServerPullTest, RefusalsLimitsAndTimeOuts)
{
    using cimxml::Intrinsic;
    cimxml::registerClientTransports();
    TemporaryFolder folder;
    ServerProcess server(folder.path(), {"--pull-max-contexts", "2", "--pull-max-timeout", "5"});
    auto open = [&](Array<CIMParamValue> extra) {
        extra.append(CIMParamValue("ClassName", CIMValue(String("Test_Bulk"))));
        return intrinsicCall(server.httpPort(), Intrinsic::OpenEnumerateInstances, "root/test", extra);
    };
    auto with = [](const char* name, const CIMValue& value) {
        Array<CIMParamValue> p;
        p.append(CIMParamValue(name, value));
        return p;
    };
    EXPECT_EQ(open(with("FilterQuery", CIMValue(String("SELECT * FROM Test_Bulk")))).errorCode,
        Uint32(CIM_ERR_FILTERED_ENUMERATION_NOT_SUPPORTED));
    EXPECT_EQ(open(with("ContinueOnError", CIMValue(Boolean(true)))).errorCode,
        Uint32(CIM_ERR_CONTINUATION_ON_ERROR_NOT_SUPPORTED));
    EXPECT_EQ(open(with("OperationTimeout", CIMValue(Uint32(6)))).errorCode,
        Uint32(CIM_ERR_INVALID_OPERATION_TIMEOUT));

    cimxml::OperationResponse first = open(with("OperationTimeout", CIMValue(Uint32(1))));
    cimxml::OperationResponse second = open(with("OperationTimeout", CIMValue(Uint32(5))));
    ASSERT_FALSE(first.isError());
    ASSERT_FALSE(second.isError());
    const cimxml::OperationResponse third = open(Array<CIMParamValue>());
    EXPECT_EQ(third.errorCode, Uint32(CIM_ERR_SERVER_LIMITS_EXCEEDED));
    EXPECT_NE(text(third.errorDescription).find("open enumeration contexts"), std::string::npos);

    // The paths form cannot continue an instances context.
    Array<CIMParamValue> pullFirst = with("EnumerationContext", CIMValue(String(contextOf(first).c_str())));
    pullFirst.append(CIMParamValue("MaxObjectCount", CIMValue(Uint32(3))));
    EXPECT_EQ(
        intrinsicCall(server.httpPort(), Intrinsic::PullInstancePaths, "root/test", pullFirst).errorCode,
        Uint32(CIM_ERR_INVALID_ENUMERATION_CONTEXT));

    // The first context is abandoned: after its second it is gone and
    // another open fits again.
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    EXPECT_EQ(
        intrinsicCall(server.httpPort(), Intrinsic::PullInstancesWithPath, "root/test", pullFirst).errorCode,
        Uint32(CIM_ERR_INVALID_ENUMERATION_CONTEXT));
    EXPECT_FALSE(open(Array<CIMParamValue>()).isError());
    EXPECT_EQ(server.stop(), 0) << server.log();
}

TEST_F(CimServerTest, KeepAliveServesSeveralRequestsOnOneConnection)
{
    std::string one = "POST /cimom HTTP/1.1\r\nHost: x\r\nAuthorization: " +
        basicAuthorization("admin", "admin-demo") +
        "\r\nContent-Type: application/xml\r\nCIMOperation: MethodCall\r\n"
        "CIMMethod: EnumerateInstanceNames\r\nCIMObject: root%2Ftest\r\nContent-Length: " +
        std::to_string(kEnumerateDisks.size()) + "\r\n\r\n" + kEnumerateDisks;
    std::string last = request("POST",
        "Authorization: " + basicAuthorization("admin", "admin-demo") +
            "\r\nContent-Type: application/xml\r\nCIMOperation: MethodCall\r\n"
            "CIMMethod: EnumerateInstanceNames\r\nCIMObject: root%2Ftest\r\n",
        kEnumerateDisks);
    RawExchange r = rawExchange(server->httpPort(), one + one + last);
    std::size_t answers = 0;
    for (std::size_t at = 0; (at = r.response.find("HTTP/1.1 200 OK", at)) != std::string::npos; at++)
        answers++;
    EXPECT_EQ(answers, 3u) << r.response;
    EXPECT_TRUE(r.closedByServer);
}

TEST_F(CimServerTest, CimClientReachesProvidersOverTcpAndTheLocalSocket)
{
    const CIMObjectPath service("Test_Service.Name=\"svc\"");
    {
        CIMClient client;
        client.connect("127.0.0.1", Uint32(server->httpPort()), "viewer", "viewer-demo");
        EXPECT_EQ(client.enumerateInstanceNames("root/test", "Test_Disk").size(), 3u);
        Array<CIMParamValue> out;
        client.invokeMethod("root/test", service, "User", Array<CIMParamValue>(), out);
        EXPECT_EQ(outParameter(out, "User"), "viewer");
        EXPECT_EQ(outParameter(out, "Address"), "127.0.0.1");
    }
    {
        CIMClient wrong;
        wrong.connect("127.0.0.1", Uint32(server->httpPort()), "viewer", "admin-demo");
        EXPECT_ANY_THROW(wrong.enumerateInstanceNames("root/test", "Test_Disk"));
    }
    {
        // The local socket trusts its peer (this test runs as the server's
        // user): the request runs as the server's local user.
        ::setenv("ZDA_CIMSERVER_SOCKET", server->socketPath().c_str(), 1);
        CIMClient local;
        local.connectLocal();
        Array<CIMParamValue> out;
        local.invokeMethod("root/test", service, "User", Array<CIMParamValue>(), out);
        ::unsetenv("ZDA_CIMSERVER_SOCKET");
        EXPECT_EQ(outParameter(out, "User"), "admin");
        EXPECT_EQ(outParameter(out, "Address"), "");
    }
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
    try
    {
        client.enumerateClassNames("root/PG_Internal", CIMName(), true);
        ADD_FAILURE() << "root/PG_Internal was served";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_INVALID_NAMESPACE);
    }
    // The storage system asks the internal cache for its identity.
    Array<CIMObjectPath> systems = client.enumerateInstanceNames("root/zda", "ZDA_StorageSystem");
    ASSERT_EQ(systems.size(), 1u);
    EXPECT_NE(text(systems[0].toString()).find("zda-demo"), std::string::npos);
}

// A name the array cannot hold is refused before it reaches the array or its
// state file, and the server goes on serving and saving.
TEST(CimServerStateTest, NamesTheArrayCannotHoldAreRefusedAndNothingStops)
{
    TemporaryFolder folder;
    const std::string state = folder.path() + "/array.json";
    const std::vector<std::string> arguments = {"--state", state, "--https-port", "off"};
    cimxml::registerClientTransports();
    auto groups = [](CIMClient& client) {
        std::string all;
        Array<CIMObjectPath> names = client.enumerateInstanceNames("root/zda", "ZDA_ReplicationGroup");
        for (Uint32 i = 0; i < names.size(); i++)
            all += text(names[i].toString()) + "\n";
        return all;
    };
    {
        ServerProcess server(folder.path(), arguments, false);
        const std::string body =
            "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
            "<MESSAGE ID=\"9\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><METHODCALL NAME=\"CreateGroup\">"
            "<LOCALCLASSPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"zda\"/>"
            "</LOCALNAMESPACEPATH><CLASSNAME NAME=\"ZDA_ReplicationService\"/></LOCALCLASSPATH>"
            "<PARAMVALUE NAME=\"GroupName\" PARAMTYPE=\"string\"><VALUE>g&#xD800;</VALUE></PARAMVALUE>"
            "</METHODCALL></SIMPLEREQ></MESSAGE></CIM>";
        RawExchange lone = rawExchange(server.httpPort(),
            request("POST",
                "Authorization: " + basicAuthorization("admin", "admin-demo") +
                    "\r\nContent-Type: application/xml\r\nCIMOperation: MethodCall\r\n"
                    "CIMMethod: CreateGroup\r\nCIMObject: root%2Fzda%3AZDA_ReplicationService\r\n",
                body));
        EXPECT_NE(lone.response.find("CIMError: request-not-well-formed"), std::string::npos)
            << lone.response;

        CIMClient client;
        client.connect("127.0.0.1", Uint32(server.httpPort()), "admin", "admin-demo");
        const CIMObjectPath service = client.enumerateInstanceNames("root/zda", "ZDA_ReplicationService")[0];
        for (const char* name : {"two words", "a/b", "tab\there"})
        {
            Array<CIMParamValue> in, out;
            in.append(CIMParamValue("GroupName", CIMValue(String(name))));
            try
            {
                EXPECT_NE(
                    text(client.invokeMethod("root/zda", service, "CreateGroup", in, out).toString()), "0")
                    << name;
            }
            catch (const CIMException&)
            {
                // refused as an error: as good
            }
        }
        EXPECT_EQ(groups(client).find("two words"), std::string::npos);
        Array<CIMParamValue> in, out;
        in.append(CIMParamValue("GroupName", CIMValue(String("it_kept"))));
        EXPECT_EQ(text(client.invokeMethod("root/zda", service, "CreateGroup", in, out).toString()), "0");
        EXPECT_EQ(server.stop(), 0) << server.log();
    }
    ServerProcess again(folder.path(), arguments, false);
    CIMClient client;
    client.connect("127.0.0.1", Uint32(again.httpPort()), "admin", "admin-demo");
    const std::string after = groups(client);
    EXPECT_NE(after.find("it_kept"), std::string::npos) << after;
    EXPECT_EQ(after.find("two words"), std::string::npos) << after;
}

// A server of its own with small limits.
TEST(CimServerLimitsTest, OversizedDeepAndStalledRequestsAreRefused)
{
    TemporaryFolder folder;
    ServerProcess server(folder.path(),
        {"--max-request-bytes", "4096", "--max-xml-depth", "16", "--header-timeout", "1", "--body-timeout",
            "1", "--https-port", "off"});
    const std::string headers = "Authorization: " + basicAuthorization("admin", "admin-demo") +
        "\r\nContent-Type: application/xml\r\nCIMOperation: MethodCall\r\n"
        "CIMMethod: EnumerateInstanceNames\r\nCIMObject: root%2Ftest\r\n";

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
    CommandResult added = runCommand(
        {serverProgram(), "--users", users, "--add-user", "alice"}, 60000, "alice-secret\n");
    ASSERT_EQ(added.exitCode, 0) << added.output;
    CommandResult again = runCommand(
        {serverProgram(), "--users", users, "--add-user", "bob"}, 60000, "bob-pw\n");
    ASSERT_EQ(again.exitCode, 0) << again.output;
    CommandResult noPassword = runCommand(
        {serverProgram(), "--users", users, "--add-user", "carol"}, 60000, "");
    EXPECT_NE(noPassword.exitCode, 0);

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

    ServerProcess server(folder.path(), {"--users", users, "--https-port", "off"});
    CommandResult alice = runCommand(
        {"wbemcli", "ein", server.url("alice:alice-secret", "root/test") + "Test_Disk"});
    EXPECT_EQ(alice.exitCode, 0) << alice.output;
    CommandResult bob = runCommand({"wbemcli", "ein", server.url("bob:bob-pw", "root/test") + "Test_Disk"});
    EXPECT_EQ(bob.exitCode, 0) << bob.output;
    CommandResult demo = runCommand(
        {"wbemcli", "ein", server.url("admin:admin-demo", "root/test") + "Test_Disk"});
    EXPECT_NE(demo.exitCode, 0) << demo.output;
    // A credential that verified is remembered; a near miss of it is not.
    CommandResult nearMiss = runCommand(
        {"wbemcli", "ein", server.url("alice:alice-secreT", "root/test") + "Test_Disk"});
    EXPECT_NE(nearMiss.exitCode, 0) << nearMiss.output;
    CommandResult aliceAgain = runCommand(
        {"wbemcli", "ein", server.url("alice:alice-secret", "root/test") + "Test_Disk"});
    EXPECT_EQ(aliceAgain.exitCode, 0) << aliceAgain.output;
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
