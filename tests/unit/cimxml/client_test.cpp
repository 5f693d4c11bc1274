// CIMClient over the wire: every operation reaches the server's backend with
// the arguments the caller gave, results and CIM errors come back unchanged,
// over HTTP, HTTPS and a Unix socket; failures surface as the SDK's exceptions.
#include "../server/cim_error_of.h"
#include "TestListener.h"

#include <Certificate.h>
#include <cimxml/ClientTransport.h>

#include <RecordingFakes.h>
#include <SdkText.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Client/CIMClientException.h>
#include <Pegasus/Common/CIMProperty.h>

#include <boost/asio.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

using namespace Pegasus;
using namespace cimxml_test;
using zda::cimserver::ensureSelfSignedCertificate;

namespace
{

using zda_test::cimErrorOf;
using zda_test::text;

// A volume's path: a string key and a numeric one.
CIMObjectPath volume(const std::string& id)
{
    return CIMObjectPath(String(("ZDA_StorageVolume.DeviceID=\"" + id + "\",Size=100").c_str()));
}

// Records like its base and answers a few operations with data or errors.
class Backend : public zda_test::RecordingCIMOMBackend
{
public:
    CIMInstance getInstance(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& path,
        Boolean lo, Boolean iq, Boolean ico, const CIMPropertyList& pl) override
    {
        RecordingCIMOMBackend::getInstance(c, ns, path, lo, iq, ico, pl);
        if (text(path.getKeyBindings()[0].getValue()) == "missing")
            throw CIMException(CIM_ERR_NOT_FOUND, "no volume \"missing\" on the array");
        CIMInstance v("ZDA_StorageVolume");
        v.addProperty(CIMProperty("DeviceID", path.getKeyBindings()[0].getValue()));
        v.addProperty(CIMProperty("Blocks", CIMValue(Uint64(1) << 40)));
        return v;
    }

    CIMObjectPath createInstance(
        const OperationContext& c, const CIMNamespaceName& ns, const CIMInstance& instance) override
    {
        RecordingCIMOMBackend::createInstance(c, ns, instance);
        return volume("new");
    }

    Array<CIMInstance> enumerateInstances(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMName& cn, Boolean di, Boolean lo, Boolean iq, Boolean ico,
        const CIMPropertyList& pl) override
    {
        RecordingCIMOMBackend::enumerateInstances(c, ns, cn, di, lo, iq, ico, pl);
        Array<CIMInstance> all;
        for (const char* id : {"v1", "v2", "v3"})
        {
            CIMInstance v("ZDA_StorageVolume");
            v.addProperty(CIMProperty("DeviceID", CIMValue(String(id))));
            v.setPath(volume(id));
            all.append(v);
        }
        return all;
    }

    CIMValue invokeMethod(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& path,
        const CIMName& method, const Array<CIMParamValue>& in, Array<CIMParamValue>& out) override
    {
        RecordingCIMOMBackend::invokeMethod(c, ns, path, method, in, out);
        if (method.getString() == "Fail")
            throw CIMException(CIMStatusCode(4096), "a job was started");
        out.append(CIMParamValue("Job", CIMValue(volume("job-1"))));
        out.append(CIMParamValue("Echo", in.size() ? in[0].getValue() : CIMValue()));
        return CIMValue(Uint32(5));
    }
};

const CIMNamespaceName kNs("root/zda");

typedef std::function<void(CIMClient&)> Operation;

// Every operation of CIMClient, with arguments that differ from the defaults.
std::vector<std::pair<const char*, Operation>> everyOperation()
{
    CIMPropertyList props(Array<CIMName>(1, CIMName("DeviceID")));
    CIMInstance named("ZDA_StorageVolume");
    named.addProperty(CIMProperty("DeviceID", CIMValue(String("v9"))));
    named.setPath(volume("v9"));
    const CIMObjectPath classOnly("ZDA_StorageVolume");
    return {
        {"getClass", [=](CIMClient& c) { c.getClass(kNs, "ZDA_A", false, false, true, props); }},
        {"enumerateClasses",
            [](CIMClient& c) { c.enumerateClasses(kNs, "ZDA_A", true, false, false, true); }},
        {"enumerateClassNames", [](CIMClient& c) { c.enumerateClassNames(kNs, CIMName(), true); }},
        {"createClass", [](CIMClient& c) { c.createClass(kNs, CIMClass("ZDA_New", "ZDA_A")); }},
        {"modifyClass", [](CIMClient& c) { c.modifyClass(kNs, CIMClass("ZDA_New")); }},
        {"deleteClass", [](CIMClient& c) { c.deleteClass(kNs, "ZDA_New"); }},
        {"getInstance", [=](CIMClient& c) { c.getInstance(kNs, volume("v1"), false, true, true, props); }},
        {"enumerateInstances",
            [](CIMClient& c) { c.enumerateInstances(kNs, "ZDA_StorageVolume", false, false, true, true); }},
        {"enumerateInstanceNames", [](CIMClient& c) { c.enumerateInstanceNames(kNs, "ZDA_StorageVolume"); }},
        {"createInstance", [=](CIMClient& c) { c.createInstance(kNs, named); }},
        {"modifyInstance", [=](CIMClient& c) { c.modifyInstance(kNs, named, false, props); }},
        {"deleteInstance", [](CIMClient& c) { c.deleteInstance(kNs, volume("v9")); }},
        {"execQuery", [](CIMClient& c) { c.execQuery(kNs, "WQL", "SELECT * FROM ZDA_StorageVolume"); }},
        {"associators",
            [=](CIMClient& c) {
                c.associators(
                    kNs, volume("v1"), "ZDA_Assoc", "ZDA_B", "Antecedent", "Dependent", true, true, props);
            }},
        {"associatorNames",
            [=](CIMClient& c) {
                c.associatorNames(kNs, classOnly, "ZDA_Assoc", CIMName(), "", "Dependent");
            }},
        {"references",
            [](CIMClient& c) { c.references(kNs, volume("v1"), "ZDA_Assoc", "Antecedent", true, false); }},
        {"referenceNames",
            [](CIMClient& c) { c.referenceNames(kNs, volume("v1"), CIMName(), "Antecedent"); }},
        {"getProperty", [](CIMClient& c) { c.getProperty(kNs, volume("v1"), "Blocks"); }},
        {"setProperty",
            [](CIMClient& c) { c.setProperty(kNs, volume("v1"), "Blocks", CIMValue(Uint64(7))); }},
        {"invokeMethod",
            [](CIMClient& c) {
                Array<CIMParamValue> in, out;
                in.append(CIMParamValue("ElementName", CIMValue(String("copy"))));
                in.append(CIMParamValue("Count", CIMValue(Uint16(2))));
                c.invokeMethod(kNs, volume("v1"), "CreateReplica", in, out);
            }},
    };
}

// What the in-process recording transport notes for op: the line the
// server's backend must note for the same call made over the wire.
std::string expectedLine(const Operation& op)
{
    auto log = std::make_shared<std::vector<std::string>>();
    CIMClientTransports::setLoopbackTransportFactory([log](Uint32) {
        return std::unique_ptr<CIMClientTransport>(new zda_test::RecordingClientTransport(log));
    });
    {
        CIMClient local;
        local.connectLocal();
        op(local);
        CIMClientTransports::setLoopbackTransportFactory(nullptr);
    }
    for (const std::string& l : *log)
        if (l.rfind("setTimeout", 0) != 0 && l != "closed")
            return l;
    return "<nothing>";
}

class CimXmlClient : public ::testing::Test
{
protected:
    void SetUp() override
    {
        cimxml::registerClientTransports();
        char folderTemplate[] = "/tmp/cimxml-test-XXXXXX";
        folder = mkdtemp(folderTemplate);
    }

    void TearDown() override
    {
        std::string command = "rm -rf '" + folder + "'";
        EXPECT_EQ(0, std::system(command.c_str()));
    }

    std::shared_ptr<Backend> backend = std::make_shared<Backend>();
    std::string folder;
};

unsigned closedPort()
{
    boost::asio::io_context io;
    boost::asio::ip::tcp::acceptor a(io, {boost::asio::ip::make_address("127.0.0.1"), 0});
    return a.local_endpoint().port();  // closed again when a goes
}

}  // namespace

TEST_F(CimXmlClient, EveryOperationReachesTheBackendWithItsArgumentsOverHttp)
{
    TestListener::Options options;
    options.requiredAuthorization = "Basic YWRtaW46czNjcmV0";  // admin:s3cret
    TestListener listener(backend, options);
    CIMClient client;
    client.connect("127.0.0.1", listener.port(), "admin", "s3cret");
    for (const auto& [name, op] : everyOperation())
    {
        SCOPED_TRACE(name);
        op(client);
        EXPECT_EQ(expectedLine(op), backend->lastCall().call);
    }
    // One connection carried every request, each with its CIM headers.
    EXPECT_EQ(1u, listener.connectionsAccepted());
    std::vector<std::string> headers = listener.cimHeaders();
    ASSERT_EQ(20u, headers.size());
    EXPECT_EQ("GetClass root/zda", headers[0]);
    EXPECT_EQ(0u, headers.back().rfind("CreateReplica root/zda:ZDA_StorageVolume.", 0));
}

TEST_F(CimXmlClient, ResultsAndCimErrorsComeBackUnchanged)
{
    TestListener listener(backend, {});
    CIMClient client;
    client.connect("127.0.0.1", listener.port(), "", "");

    Array<CIMInstance> all = client.enumerateInstances(kNs, "ZDA_StorageVolume");
    ASSERT_EQ(3u, all.size());
    EXPECT_TRUE(all[2].getPath() == volume("v3"));
    CIMInstance one = client.getInstance(kNs, volume("v2"));
    CIMValue blocks = one.getProperty(one.findProperty("Blocks")).getValue();
    EXPECT_TRUE(blocks == CIMValue(Uint64(1) << 40));

    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("Goal", CIMValue(one)));
    CIMValue ret = client.invokeMethod(kNs, volume("v1"), "CreateReplica", in, out);
    EXPECT_TRUE(ret == CIMValue(Uint32(5)));  // a method's return number travels as is
    ASSERT_EQ(2u, out.size());
    EXPECT_TRUE(out[0].getValue() == CIMValue(volume("job-1")));
    CIMInstance echoed;
    out[1].getValue().get(echoed);
    EXPECT_TRUE(echoed.identical(one));

    std::string message;
    EXPECT_EQ(cimErrorOf([&] { client.getInstance(kNs, volume("missing")); }, &message), CIM_ERR_NOT_FOUND);
    EXPECT_NE(std::string::npos, message.find("no volume \"missing\""));
    EXPECT_EQ(cimErrorOf([&] { client.invokeMethod(kNs, volume("v1"), "Fail", in, out); }, &message), 4096);
    EXPECT_EQ("a job was started", message);
    // The connection is still good after errors.
    EXPECT_EQ(0u, client.enumerateInstanceNames(kNs, "ZDA_StorageVolume").size());
}

TEST_F(CimXmlClient, ConnectionProblemsSurfaceAsTheSdksExceptions)
{
    {
        CIMClient client;
        EXPECT_THROW(client.connect("127.0.0.1", closedPort(), "", ""), CannotConnectException);
        EXPECT_THROW(client.connect("no-such-host.invalid", 5988, "", ""), CannotConnectException);
        setenv("ZDA_CIMSERVER_SOCKET", (folder + "/absent.socket").c_str(), 1);
        EXPECT_THROW(client.connectLocal(), CannotConnectException);
        unsetenv("ZDA_CIMSERVER_SOCKET");
    }
    {
        TestListener::Options options;
        options.requiredAuthorization = "Basic YWRtaW46czNjcmV0";
        TestListener listener(backend, options);
        CIMClient client;
        client.connect("127.0.0.1", listener.port(), "admin", "wrong");
        try
        {
            client.enumerateClassNames(kNs, CIMName(), false);
            ADD_FAILURE() << "accepted";
        }
        catch (const CIMClientHTTPErrorException& e)
        {
            EXPECT_EQ(401u, e.getCode());
        }
    }
    {
        TestListener::Options options;
        options.neverAnswer = true;
        TestListener listener(backend, options);
        CIMClient client;
        client.setTimeout(300);
        client.connect("127.0.0.1", listener.port(), "", "");
        EXPECT_THROW(client.getClass(kNs, "ZDA_A"), ConnectionTimeoutException);
    }
}

TEST_F(CimXmlClient, BrokenAnswersSurfaceAsTheClientsExceptionClasses)
{
    const std::string xml = "application/xml; charset=utf-8";
    auto answer = [&](const std::string& headers, const std::string& body) {
        return "HTTP/1.1 200 OK\r\nContent-Type: " + xml + "\r\n" + headers +
            "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    };
    const std::string names =
        "<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
        "PROTOCOLVERSION=\"1.0\"><SIMPLERSP><IMETHODRESPONSE NAME=\"EnumerateClassNames\">"
        "<IRETURNVALUE><CLASSNAME NAME=\"ZDA_A\"/></IRETURNVALUE></IMETHODRESPONSE></SIMPLERSP>"
        "</MESSAGE></CIM>";
    std::string otherMessage = names;
    otherMessage.replace(otherMessage.find("ID=\"1\""), 6, "ID=\"2\"");
    std::string chunked = "HTTP/1.1 200 OK\r\nContent-Type: " + xml +
        "\r\nTransfer-Encoding: chunked\r\nTrailer: CIMStatusCode\r\n\r\n";
    std::string firstHalf = names.substr(0, 100), secondHalf = names.substr(100);
    auto chunk = [](const std::string& s) {
        char size[16];
        std::snprintf(size, sizeof size, "%zx\r\n", s.size());
        return size + s + "\r\n";
    };

    enum Outcome
    {
        Works,
        CimError,
        HttpError,
        Malformed,
        BadXml,
        WrongAnswer
    };
    struct Case
    {
        const char* label;
        std::string raw;
        Outcome outcome;
    };
    std::vector<Case> cases = {
        {"plain", answer("", names), Works},
        {"chunked", chunked + chunk(firstHalf) + chunk(secondHalf) + "0\r\n\r\n", Works},
        {"error in the trailer",
            chunked + chunk(firstHalf) +
                "0\r\nCIMStatusCode: 27\r\nCIMStatusCodeDescription: "
                "out%20of%20memory\r\n\r\n",
            CimError},
        {"http error",
            "HTTP/1.1 501 Not Implemented\r\nCIMError: unsupported-cim-version\r\n"
            "Content-Length: 0\r\n\r\n",
            HttpError},
        {"not http", "SSH-2.0-OpenSSH_9.2\r\n\r\n", Malformed},
        {"not xml content",
            "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n"
            "Content-Length: 2\r\n\r\nhi",
            Malformed},
        {"not cim-xml", answer("", "<html/>"), BadXml},
        {"another message", answer("", otherMessage), WrongAnswer},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.label);
        TestListener::Options options;
        options.rawAnswer = c.raw;
        TestListener listener(backend, options);
        CIMClient client;
        client.connect("127.0.0.1", listener.port(), "", "");
        Outcome got = Works;
        std::string message;
        try
        {
            Array<CIMName> result = client.enumerateClassNames(kNs, CIMName(), false);
            EXPECT_EQ(1u, result.size());
        }
        catch (const CIMException& e)
        {
            got = CimError;
            EXPECT_EQ(27, int(e.getCode()));
            EXPECT_EQ("out of memory", text(e.getMessage()));
        }
        catch (const CIMClientHTTPErrorException& e)
        {
            got = HttpError;
            EXPECT_EQ(501u, e.getCode());
            EXPECT_EQ("unsupported-cim-version", text(e.getCIMError()));
        }
        catch (const CIMClientMalformedHTTPException&)
        {
            got = Malformed;
        }
        catch (const CIMClientXmlException&)
        {
            got = BadXml;
        }
        catch (const CIMClientResponseException&)
        {
            got = WrongAnswer;
        }
        EXPECT_EQ(c.outcome, got);
    }
}

TEST_F(CimXmlClient, ReconnectsWhenTheServerClosesBetweenRequests)
{
    TestListener::Options options;
    options.closeAfterEachResponse = true;
    TestListener listener(backend, options);
    CIMClient client;
    client.connect("127.0.0.1", listener.port(), "", "");
    for (int i = 0; i < 3; i++)
        EXPECT_EQ(3u, client.enumerateInstances(kNs, "ZDA_StorageVolume").size());
    EXPECT_EQ(3u, listener.connectionsAccepted());
}

TEST_F(CimXmlClient, HttpsVerifiesTheServerUnlessTheCallerRelaxesIt)
{
    const std::string cert = ensureSelfSignedCertificate(folder).certificate;
    ASSERT_EQ(0, mkdir((folder + "/other").c_str(), 0700));
    const std::string otherCert = ensureSelfSignedCertificate(folder + "/other").certificate;
    TestListener::Options options;
    options.certFile = cert;
    options.keyFile = folder + "/server.key";
    TestListener listener(backend, options);

    struct Case
    {
        const char* label;
        std::string trustStore;
        SSLCertificateVerifyFunction* verify;
        const char* host;
        bool connects;
    };
    std::vector<Case> cases = {
        {"trusted", cert, nullptr, "127.0.0.1", true},
        {"trusted by host name", cert, nullptr, "localhost", true},
        {"untrusted", otherCert, nullptr, "127.0.0.1", false},
        {"relaxed: no trust store", "", nullptr, "127.0.0.1", true},
        {"callback accepts", otherCert, [](SSLCertificateInfo&) -> Boolean { return true; }, "127.0.0.1",
            true},
        // A real certificate's subject is never empty.
        {"callback refuses", cert,
            [](SSLCertificateInfo& info) -> Boolean { return info.getSubjectName().size() == 0; },
            "127.0.0.1", false},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.label);
        SSLContext ssl(c.trustStore.c_str(), c.verify);
        CIMClient client;
        if (c.connects)
        {
            client.connect(c.host, listener.port(), ssl, "", "");
            EXPECT_EQ(3u, client.enumerateInstances(kNs, "ZDA_StorageVolume").size());
        }
        else
            EXPECT_THROW(client.connect(c.host, listener.port(), ssl, "", ""), CannotConnectException);
    }
}
