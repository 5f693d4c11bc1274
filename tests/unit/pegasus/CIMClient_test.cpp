// CIMClient: choice of transport at connect/connectLocal, connection errors
// callers can catch and fall back on, forwarding of each operation with its
// arguments (including the documented defaults) to the transport.
#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Client/CIMClientTransport.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RecordingFakes.h"
#include "SdkText.h"
#include "sdk_fixtures.h"

#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

PEGASUS_USING_PEGASUS;
using sdktest::messageOf;
using testing::AllOf;
using testing::HasSubstr;
using zda_test::text;

namespace
{

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

    // A transport logging into log that answers enumerateInstanceNames and
    // invokeMethod with recognisable results.
    std::unique_ptr<CIMClientTransport> fakeTransport()
    {
        auto transport = std::make_unique<zda_test::RecordingClientTransport>(log);
        transport->instanceNames.append(CIMObjectPath("ZDA_StorageSystem.Name=\"S1\""));
        transport->outParameters.append(CIMParamValue("SystemName", CIMValue(String("S1"))));
        transport->returnValue = CIMValue(Uint32(0));
        return transport;
    }

    // Installs a loopback that hands out fake transports.
    void installLoopback()
    {
        CIMClientTransports::setLoopbackTransportFactory([this](Uint32) {
            log->push_back("loopback");
            return fakeTransport();
        });
    }

    std::string lastLogged() const { return log->empty() ? "" : log->back(); }

    std::shared_ptr<std::vector<std::string>> log = std::make_shared<std::vector<std::string>>();
};

}  // namespace

// The socket the variable names is reached in the server's own tests.
TEST_F(CIMClientTest, ConnectLocalPrefersTheInProcessLoopbackOverTheSocket)
{
    bool socketUsed = false;
    CIMClientTransports::setLocalSocketTransportFactory([&](const String&, Uint32) {
        socketUsed = true;
        return fakeTransport();
    });
    setenv(SOCKET_VARIABLE, "/tmp/zda.sock", 1);
    installLoopback();
    CIMClient client;
    client.connectLocal();
    EXPECT_FALSE(socketUsed);
    EXPECT_EQ("setTimeout 20000", lastLogged());
    EXPECT_EQ("loopback", (*log)[log->size() - 2]);
}

// What a network connection is given (host, port, credentials, timeout and
// trust store) is proven over the wire by the CIM-XML client's tests.
TEST_F(CIMClientTest, ConnectWithoutANetworkTransportSaysSo)
{
    CIMClient client;
    EXPECT_THAT(messageOf<CannotConnectException>([&] { client.connect("array1", 5989, "u", "p"); }),
        AllOf(HasSubstr("array1:5989"), HasSubstr("no network")));
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
    client.connectLocal();  // a disconnected client connects again
    client.getClass("root/zda", "ZDA_StorageVolume");
    EXPECT_EQ("getClass root/zda ZDA_StorageVolume 1 1 0 all", lastLogged());
}

// Without a local server, or when the transport factory fails, connectLocal
// throws an exception callers can catch, and the client stays unconnected.
TEST_F(CIMClientTest, ConnectLocalFailuresBecomeConnectionExceptions)
{
    typedef std::function<std::unique_ptr<CIMClientTransport>()> Factory;
    auto throwing = [](auto e) { return Factory([e]() -> std::unique_ptr<CIMClientTransport> { throw e; }); };
    auto loopback = [](Factory factory) {
        return [factory] {
            CIMClientTransports::setLoopbackTransportFactory([factory](Uint32) { return factory(); });
        };
    };
    struct Case
    {
        const char* name;
        std::function<void()> setUp;
        testing::Matcher<std::string> message;
    };
    const Case cases[] = {
        {"no socket variable", [] {}, HasSubstr("ZDA_CIMSERVER_SOCKET is not set")},
        {"no socket transport", [] { setenv(SOCKET_VARIABLE, "/run/zda/cimxml.socket", 1); },
            AllOf(HasSubstr("/run/zda/cimxml.socket"), HasSubstr("no Unix socket transport"))},
        {"connection exception", loopback(throwing(CannotConnectException("socket refused"))),
            HasSubstr("socket refused")},
        {"std::exception", loopback(throwing(std::runtime_error("ECONNREFUSED"))), HasSubstr("ECONNREFUSED")},
        {"no transport", loopback([] { return std::unique_ptr<CIMClientTransport>(); }),
            HasSubstr("returned no connection")},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        clearRegistrations();
        c.setUp();
        CIMClient client;
        EXPECT_THAT(messageOf<CannotConnectException>([&] { client.connectLocal(); }), c.message);
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
