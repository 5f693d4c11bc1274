// The replication capabilities through the running server: read with
// wbemcli, asked with wbemcli's method calls and with CIMClient, refused
// for a user without the right.
#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace zda_it;
PEGASUS_USING_PEGASUS;

namespace
{

const char CAPS_PATH[] =
    "ZDA_ReplicationServiceCapabilities.InstanceID=\"KX_ORLA:ReplicationServiceCapabilities\"";

bool contains(const std::string& output, const std::string& part)
{
    return output.find(part) != std::string::npos;
}

class ReplicationCapabilitiesIT : public SharedServerTest
{
protected:
    // As `user` with the demo password, and one method call or nothing.
    static CommandResult wbemcli(const std::string& verb, const std::string& user, const std::string& object,
        const std::string& extra = std::string())
    {
        return SharedServerTest::wbemcli(verb, user + ":" + user + "-demo", object, {},
            extra.empty() ? std::vector<std::string>() : std::vector<std::string>{extra});
    }
    static void connect(CIMClient& client, const char* user)
    {
        client.connect("127.0.0.1", Uint32(server->httpPort()), user, String(user) + "-demo");
    }
};

TEST_F(ReplicationCapabilitiesIT, WbemcliReadsTheInstance)
{
    CommandResult names = wbemcli("ein", "viewer", "ZDA_ReplicationServiceCapabilities");
    ASSERT_EQ(names.exitCode, 0) << names.output;
    EXPECT_TRUE(contains(names.output, CAPS_PATH)) << names.output;

    CommandResult one = runCommand(
        {"wbemcli", "-nl", "gi", server->url("admin:admin-demo", "root/zda") + CAPS_PATH});
    ASSERT_EQ(one.exitCode, 0) << one.output;
    EXPECT_TRUE(contains(one.output, "-ElementName=\"Capabililites of ReplicationServiceCapabilities\""))
        << one.output;
    EXPECT_TRUE(contains(one.output, "-SupportedReplicationTypes=4,5,6,10,11")) << one.output;
}

TEST_F(ReplicationCapabilitiesIT, WbemcliCallsTheMethods)
{
    struct Case
    {
        std::string call;
        std::string answer;
    };
    const Case cases[] = {
        {"GetSupportedFeatures.ReplicationType=6", "GetSupportedFeatures: 0, Features (uint16): 2,10,16"},
        {"GetSupportedCopyStates.ReplicationType=6",
            "SupportedCopyStates (uint16): 3,4,5, HostAccessible (boolean): TRUE,TRUE,FALSE"},
        {"GetSupportedMaximum.ReplicationType=4,Component=8", "MaxValue (uint64): 2"},
        {"GetSupportedGroupOperations.ReplicationType=10", "GetSupportedGroupOperations: 1"},
        {"GetSupportedFeatures", "GetSupportedFeatures: 5"},
        {"GetDefaultGroupPersistency", "DefaultGroupPersistency (uint16): 2"},
    };
    for (const Case& c : cases)
    {
        CommandResult r = wbemcli("cm", "operator", CAPS_PATH, c.call);
        EXPECT_EQ(r.exitCode, 0) << c.call << "\n" << r.output;
        EXPECT_TRUE(contains(r.output, c.answer)) << c.call << "\n" << r.output;
    }

    CommandResult refused = wbemcli("cm", "viewer", CAPS_PATH, "GetSupportedFeatures.ReplicationType=6");
    EXPECT_NE(refused.exitCode, 0);
    EXPECT_TRUE(contains(refused.output, "CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user"))
        << refused.output;
}

TEST_F(ReplicationCapabilitiesIT, CimClientGetsTypedOutputsAndTheEmbeddedSetting)
{
    CIMClient client;
    connect(client, "operator");
    Array<CIMObjectPath> names = client.enumerateInstanceNames(
        "root/zda", "ZDA_ReplicationServiceCapabilities");
    ASSERT_EQ(names.size(), 1u);
    const CIMObjectPath caps = names[0];

    Array<CIMParamValue> in;
    in.append(CIMParamValue("ReplicationType", CIMValue(Uint16(5))));
    in.append(CIMParamValue("Component", CIMValue(Uint16(6))));
    Array<CIMParamValue> out;
    CIMValue rc = client.invokeMethod("root/zda", caps, "GetSupportedMaximum", in, out);
    EXPECT_EQ(rc, CIMValue(Uint32(0)));
    ASSERT_EQ(out.size(), 1u);
    // The asynchronous mirror reads the demo array's periodic volume limit.
    Uint64 maxValue = 0;
    out[0].getValue().get(maxValue);
    EXPECT_GT(maxValue, 0u);

    Array<CIMParamValue> typeOnly;
    typeOnly.append(CIMParamValue("ReplicationType", CIMValue(Uint16(6))));
    out.clear();
    rc = client.invokeMethod("root/zda", caps, "GetDefaultReplicationSettingData", typeOnly, out);
    EXPECT_EQ(rc, CIMValue(Uint32(0)));
    ASSERT_EQ(out.size(), 1u);
    CIMInstance setting;
    out[0].getValue().get(setting);
    EXPECT_EQ(setting.getClassName().getString(), "CIM_ReplicationSettingData");
    const Uint32 at = setting.findProperty("ThinProvisioningPolicy");
    ASSERT_NE(at, PEG_NOT_FOUND);
    EXPECT_EQ(setting.getProperty(at).getValue(), CIMValue(Uint64(7)));

    CIMClient viewer;
    connect(viewer, "viewer");
    try
    {
        viewer.invokeMethod("root/zda", caps, "GetSupportedFeatures", typeOnly, out);
        ADD_FAILURE() << "a user without the right was answered";
    }
    catch (const CIMException& e)
    {
        EXPECT_EQ(e.getCode(), CIM_ERR_ACCESS_DENIED);
    }
}

}  // namespace
