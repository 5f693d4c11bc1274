// CIMClient: choice of transport at connect/connectLocal, connection errors
// callers can catch and fall back on, forwarding of each operation with its
// arguments (including the documented defaults) to the transport.
#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Client/CIMClientTransport.h>

#include <gtest/gtest.h>

#include "RecordingFakes.h"
#include "SdkText.h"

#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

PEGASUS_USING_PEGASUS;
using zda_test::text;

namespace
{

// Answers enumerateInstanceNames and invokeMethod with recognisable results.
class FakeTransport : public zda_test::RecordingClientTransport
{
public:
    using RecordingClientTransport::RecordingClientTransport;

    Array<CIMObjectPath> enumerateInstanceNames(const CIMNamespaceName& ns, const CIMName& cn) override
    {
        RecordingClientTransport::enumerateInstanceNames(ns, cn);
        Array<CIMObjectPath> paths;
        paths.append(CIMObjectPath((text(cn) + ".Name=\"S1\"").c_str()));
        return paths;
    }
    CIMValue invokeMethod(const CIMNamespaceName& ns, const CIMObjectPath& p, const CIMName& m,
        const Array<CIMParamValue>& in, Array<CIMParamValue>& out) override
    {
        RecordingClientTransport::invokeMethod(ns, p, m, in, out);
        out.append(CIMParamValue("SystemName", CIMValue(String("S1"))));
        return CIMValue(Uint32(0));
    }
};

const char* const SOCKET_VARIABLE = CIMClientTransports::LOCAL_SOCKET_ENVIRONMENT_VARIABLE;

class CIMClientTest : public ::testing::Test
{
protected:
    void SetUp() override { clearRegistrations(); }
    void TearDown() override { clearRegistrations(); }

    static void clearRegistrations()
    {
        CIMClientTransports::setNetworkTransportFactory(nullptr);
        CIMClientTransports::setLocalSocketTransportFactory(nullptr);
        CIMClientTransports::setLoopbackTransportFactory(nullptr);
        unsetenv(SOCKET_VARIABLE);
    }

    // Installs a loopback that hands out fake transports logging into log.
    void installLoopback()
    {
        auto log = this->log;
        CIMClientTransports::setLoopbackTransportFactory([log](Uint32) {
            log->push_back("loopback");
            return std::unique_ptr<CIMClientTransport>(new FakeTransport(log));
        });
    }

    std::string lastLogged() const { return log->empty() ? "" : log->back(); }

    std::shared_ptr<std::vector<std::string>> log = std::make_shared<std::vector<std::string>>();
};

// Runs call, expecting CannotConnectException; returns its message.
std::string cannotConnectMessage(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const CannotConnectException& e)
    {
        return text(e.getMessage());
    }
    catch (const Exception& e)
    {
        return "wrong exception: " + text(e.getMessage());
    }
    return "no exception";
}

bool contains(const std::string& haystack, const std::string& needle)
{
    return haystack.find(needle) != std::string::npos;
}

}  // namespace

TEST_F(CIMClientTest, ConnectLocalFailsCatchablyWhenNoLocalServerIsAvailable)
{
    CIMClient client;
    std::string message = cannotConnectMessage([&] { client.connectLocal(); });
    EXPECT_TRUE(contains(message, "ZDA_CIMSERVER_SOCKET is not set")) << message;

    setenv(SOCKET_VARIABLE, "/run/zda/cimxml.socket", 1);
    message = cannotConnectMessage([&] { client.connectLocal(); });
    EXPECT_TRUE(contains(message, "/run/zda/cimxml.socket")) << message;
    EXPECT_TRUE(contains(message, "no Unix socket transport")) << message;

    // Still not connected after the failures.
    EXPECT_THROW(client.enumerateInstanceNames("root/zda", "ZDA_StorageSystem"), NotConnectedException);
}

TEST_F(CIMClientTest, ConnectLocalPrefersTheInProcessLoopbackOverTheSocket)
{
    std::string socketPathSeen;
    CIMClientTransports::setLocalSocketTransportFactory([&](const String& path, Uint32) {
        socketPathSeen = text(path);
        return std::unique_ptr<CIMClientTransport>(new FakeTransport(log));
    });
    setenv(SOCKET_VARIABLE, "/tmp/zda.sock", 1);

    CIMClient viaSocket;
    viaSocket.connectLocal();
    EXPECT_EQ("/tmp/zda.sock", socketPathSeen);

    installLoopback();
    CIMClient viaLoopback;
    viaLoopback.connectLocal();
    EXPECT_EQ("setTimeout 20000", lastLogged());
    EXPECT_EQ("loopback", (*log)[log->size() - 2]);
}

TEST_F(CIMClientTest, ConnectSelectsTheNetworkTransportWithWhatTheCallerGave)
{
    CIMClient client;
    std::string message = cannotConnectMessage([&] { client.connect("array1", 5989, "u", "p"); });
    EXPECT_TRUE(contains(message, "array1:5989")) << message;
    EXPECT_TRUE(contains(message, "no network")) << message;

    std::vector<CIMClientNetworkTarget> targets;
    std::vector<std::string> trustStores;
    CIMClientTransports::setNetworkTransportFactory([&](const CIMClientNetworkTarget& t) {
        targets.push_back(t);
        trustStores.push_back(t.sslContext ? text(t.sslContext->getTrustStore()) : "<plain>");
        return std::unique_ptr<CIMClientTransport>(new FakeTransport(log));
    });

    client.setTimeout(5000);
    client.connect("array1", 5988, "alice", "secret");
    client.disconnect();
    client.connect("array1", 5989, SSLContext("/etc/zda/ca.pem", nullptr), "bob", "pw");

    ASSERT_EQ(2u, targets.size());
    EXPECT_EQ("array1", text(targets[0].host));
    EXPECT_EQ(5988u, targets[0].portNumber);
    EXPECT_EQ("alice", text(targets[0].userName));
    EXPECT_EQ("secret", text(targets[0].password));
    EXPECT_EQ(5000u, targets[0].timeoutMilliseconds);
    EXPECT_EQ("<plain>", trustStores[0]);
    EXPECT_EQ(5989u, targets[1].portNumber);
    EXPECT_EQ("/etc/zda/ca.pem", trustStores[1]);
}

TEST_F(CIMClientTest, ConnectionStateIsEnforced)
{
    installLoopback();
    CIMClient client;
    EXPECT_THROW(client.getClass("root/zda", "ZDA_StorageVolume"), NotConnectedException);
    client.disconnect();  // harmless when not connected

    client.connectLocal();
    EXPECT_THROW(client.connectLocal(), AlreadyConnectedException);
    EXPECT_THROW(client.connect("h", 1, "u", "p"), AlreadyConnectedException);

    client.setTimeout(1234);
    EXPECT_EQ("setTimeout 1234", lastLogged());
    EXPECT_EQ(1234u, client.getTimeout());

    client.disconnect();
    EXPECT_EQ("closed", lastLogged());
    EXPECT_THROW(client.getClass("root/zda", "ZDA_StorageVolume"), NotConnectedException);
}

TEST_F(CIMClientTest, FactoryFailuresBecomeConnectionExceptions)
{
    struct Case
    {
        const char* name;
        std::function<std::unique_ptr<CIMClientTransport>()> factory;
        const char* expectedText;
    };
    const Case cases[] = {
        {"connection exception",
            []() -> std::unique_ptr<CIMClientTransport> { throw CannotConnectException("socket refused"); },
            "socket refused"},
        {"std::exception",
            []() -> std::unique_ptr<CIMClientTransport> { throw std::runtime_error("ECONNREFUSED"); },
            "ECONNREFUSED"},
        {"no transport", [] { return std::unique_ptr<CIMClientTransport>(); }, "returned no connection"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        auto factory = c.factory;
        CIMClientTransports::setLoopbackTransportFactory([factory](Uint32) { return factory(); });
        CIMClient client;
        std::string message = cannotConnectMessage([&] { client.connectLocal(); });
        EXPECT_TRUE(contains(message, c.expectedText)) << message;
        EXPECT_THROW(client.getClass("root/zda", "X"), NotConnectedException);
    }
}

TEST_F(CIMClientTest, ForwardsEachOperationWithItsArgumentsAndDefaults)
{
    installLoopback();
    CIMClient client;
    client.connectLocal();

    const CIMNamespaceName ns("root/zda");
    const CIMObjectPath path("ZDA_StorageSystem.Name=\"S1\"");
    const std::string p = "ZDA_StorageSystem.Name=\"S1\"";
    Array<CIMName> names;
    names.append(CIMName("Name"));
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("A", CIMValue(Uint16(1))));

    struct Case
    {
        std::function<void()> call;
        std::string expected;
    };
    const Case cases[] = {
        {[&] { client.getClass(ns, "ZDA_StorageSystem"); }, "getClass root/zda ZDA_StorageSystem 1 1 0 all"},
        {[&] { client.getClass(ns, "ZDA_StorageSystem", false, false, true, names); },
            "getClass root/zda ZDA_StorageSystem 0 0 1 [Name]"},
        {[&] { client.enumerateClasses(ns); }, "enumerateClasses root/zda - 0 1 1 0"},
        {[&] { client.enumerateClassNames(ns, "CIM_System", true); },
            "enumerateClassNames root/zda CIM_System 1"},
        {[&] { client.createClass(ns, CIMClass("ZDA_X")); }, "createClass root/zda ZDA_X"},
        {[&] { client.modifyClass(ns, CIMClass("ZDA_X")); }, "modifyClass root/zda ZDA_X"},
        {[&] { client.deleteClass(ns, "ZDA_X"); }, "deleteClass root/zda ZDA_X"},
        {[&] { client.getInstance(ns, path); }, "getInstance root/zda " + p + " 1 0 0 all"},
        {[&] { client.enumerateInstances(ns, "ZDA_StorageSystem"); },
            "enumerateInstances root/zda ZDA_StorageSystem 1 1 0 0 all"},
        {[&] { client.enumerateInstanceNames(ns, "ZDA_StorageSystem"); },
            "enumerateInstanceNames root/zda ZDA_StorageSystem"},
        {[&] { client.createInstance(ns, CIMInstance("ZDA_X")); }, "createInstance root/zda ZDA_X"},
        {[&] { client.modifyInstance(ns, CIMInstance("ZDA_X")); }, "modifyInstance root/zda ZDA_X 1 all"},
        {[&] { client.deleteInstance(ns, path); }, "deleteInstance root/zda " + p},
        {[&] { client.execQuery(ns, "WQL", "SELECT * FROM X"); },
            "execQuery root/zda \"WQL\" \"SELECT * FROM X\""},
        {[&] { client.associators(ns, path); }, "associators root/zda " + p + " - - \"\" \"\" 0 0 all"},
        {[&] { client.associatorNames(ns, path, "A_Assoc", "R_Class", "Role", "ResultRole"); },
            "associatorNames root/zda " + p + " A_Assoc R_Class \"Role\" \"ResultRole\""},
        {[&] { client.references(ns, path); }, "references root/zda " + p + " - \"\" 0 0 all"},
        {[&] { client.referenceNames(ns, path, "A_Assoc", "Member"); },
            "referenceNames root/zda " + p + " A_Assoc \"Member\""},
        {[&] { client.getProperty(ns, path, "Name"); }, "getProperty root/zda " + p + " Name"},
        {[&] { client.setProperty(ns, path, "ElementName"); },
            "setProperty root/zda " + p + " ElementName null"},
        {[&] { client.invokeMethod(ns, path, "GetSystemName", in, out); },
            "invokeMethod root/zda " + p + " GetSystemName (A)"},
    };
    for (const Case& c : cases)
    {
        c.call();
        EXPECT_EQ(c.expected, lastLogged());
    }

    ASSERT_EQ(1u, out.size()) << "output parameters are appended";
    EXPECT_EQ(String("SystemName"), out[0].getParameterName());
    Array<CIMObjectPath> systems = client.enumerateInstanceNames(ns, "ZDA_StorageSystem");
    ASSERT_EQ(1u, systems.size());
    EXPECT_EQ(path, systems[0]);
}
