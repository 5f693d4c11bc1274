// The replication service, its capabilities and the volume sets as
// replication groups through the running server: what wbemcli writes and
// prints for each kind of value, what CIMClient reads of an embedded
// instance, and the refusals a user's rights bring.
#include "DemoArrayTest.h"

using namespace zda_it;
PEGASUS_USING_PEGASUS;

namespace
{

const char CAPS[] =
    "ZDA_ReplicationServiceCapabilities.InstanceID=\"KX_ORLA:ReplicationServiceCapabilities\"";

class ReplicationModelIT : public DemoArrayTest
{};

// In order: a group renamed by one row is read by the next ones.
TEST_F(ReplicationModelIT, WbemcliReadsCallsAndChangesTheModel)
{
    struct Case
    {
        const char* user;  // the demo user, whose password is "<user>-demo"
        const char* verb;
        std::string object;
        std::string argument;  // or ""
        bool succeeds;
        const char* expected;  // a part of the output
    };
    const std::string single = "ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:single_set\"";
    const std::string renamed = "ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:single_renamed\"";
    const Case cases[] = {
        {"viewer", "ein", "ZDA_ReplicationService", "", true, "Name=\"KX_ORLA_ReplicationService\""},
        {"admin", "gi", SERVICE, "", true, "Started=TRUE"},
        {"admin", "gi", CAPS, "", true, "SupportedReplicationTypes=4,5,6,10,11"},
        {"operator", "cm", CAPS, "GetSupportedFeatures.ReplicationType=6", true,
            "GetSupportedFeatures: 0, Features (uint16): 2,10,16"},
        {"operator", "cm", CAPS, "GetSupportedCopyStates.ReplicationType=6", true,
            "SupportedCopyStates (uint16): 3,4,5, HostAccessible (boolean): TRUE,TRUE,FALSE"},
        {"operator", "cm", CAPS, "GetSupportedMaximum.ReplicationType=4,Component=8", true,
            "MaxValue (uint64): 2"},
        {"operator", "cm", CAPS, "GetSupportedFeatures", true, "GetSupportedFeatures: 5"},
        {"operator", "cm", CAPS, "GetDefaultGroupPersistency", true, "DefaultGroupPersistency (uint16): 2"},
        {"viewer", "cm", CAPS, "GetSupportedFeatures.ReplicationType=6", false,
            "CIM_ERR_ACCESS_DENIED: Insufficient privilege for the user"},
        {"viewer", "cm", SERVICE, "CreateGroup.GroupName=\"viewer_group\"", false,
            "CIM_ERR_ACCESS_DENIED: Insufficient generic privilege"},
        {"admin", "ein", "ZDA_ReplicationGroup", "", true, "KX_ORLA:empty_set"},
        {"operator", "mi", single, "ElementName=\"single_renamed\"", true, ""},
        {"admin", "gi", renamed, "", true, "ElementName=\"single_renamed\""},
        {"admin", "gi", single, "", false, ""},
    };
    for (const Case& c : cases)
    {
        const std::string user = std::string(c.user) + ":" + c.user + "-demo";
        CommandResult r = wbemcli(c.verb, user, c.object, {},
            c.argument.empty() ? std::vector<std::string>() : std::vector{c.argument});
        SCOPED_TRACE(
            std::string(c.user) + " " + c.verb + " " + c.object + " " + c.argument + "\n" + r.output);
        EXPECT_EQ(r.exitCode == 0, c.succeeds);
        EXPECT_NE(r.output.find(c.expected), std::string::npos);
    }
}

// A setting comes back as an embedded instance of its own class.
TEST_F(ReplicationModelIT, CimClientReadsAnEmbeddedInstance)
{
    const CIMObjectPath caps = client.enumerateInstanceNames(
        "root/zda", "ZDA_ReplicationServiceCapabilities")[0];
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("ReplicationType", CIMValue(Uint16(6))));
    EXPECT_EQ(client.invokeMethod("root/zda", caps, "GetDefaultReplicationSettingData", in, out),
        CIMValue(Uint32(0)));
    ASSERT_EQ(out.size(), 1u);
    CIMInstance setting;
    out[0].getValue().get(setting);
    EXPECT_EQ(setting.getClassName().getString(), "CIM_ReplicationSettingData");
    EXPECT_EQ(valueOf<Uint64>(setting, "ThinProvisioningPolicy"), 7u);
}

}  // namespace
