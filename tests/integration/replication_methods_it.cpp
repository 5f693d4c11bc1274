// The replication service's group and copy target methods through the
// running server on the demo array, called with wbemcli where it can write
// the parameters and with CIMClient where it cannot (wbemcli splits a
// reference array at the commas between a path's keys).
#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMParamValue.h>

#include <gtest/gtest.h>

using namespace zda_it;
PEGASUS_USING_PEGASUS;

namespace
{

const char SERVICE[] = "ZDA_ReplicationService.CreationClassName=\"ZDA_ReplicationService\","
                       "Name=\"KX_ORLA_ReplicationService\",SystemCreationClassName="
                       "\"ZDA_StorageSystem\",SystemName=\"zda-demo\"";

std::string text(const String& s)
{
    return static_cast<const char*>(s.getCString());
}

CIMValue outValue(const Array<CIMParamValue>& out, const char* name)
{
    for (Uint32 i = 0; i < out.size(); i++)
        if (out[i].getParameterName() == name)
            return out[i].getValue();
    return CIMValue();
}

class ReplicationMethodsTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        cimxml::registerClientTransports();
        folder = new TemporaryFolder;
        server = new ServerProcess(folder->path(), {"--https-port", "off"}, false);
    }
    static void TearDownTestSuite()
    {
        EXPECT_EQ(server->stop(), 0) << server->log();
        delete server;
        delete folder;
    }
    void SetUp() override
    {
        client.connect("127.0.0.1", Uint32(server->httpPort()), "admin", "admin-demo");
        service = client.enumerateInstanceNames("root/zda", "ZDA_ReplicationService")[0];
    }

    static CommandResult wbemcli(const std::string& verb, const std::string& user,
        const std::string& object, const std::string& argument)
    {
        return runCommand({"wbemcli", verb, server->url(user, "root/zda") + object, argument});
    }
    // The demo array's volumes by name.
    CIMObjectPath volume(const std::string& name)
    {
        Array<CIMInstance> all =
            client.enumerateInstances("root/zda", "ZDA_StorageVolume", true, false);
        for (Uint32 i = 0; i < all.size(); i++)
            if (text(all[i].getProperty(all[i].findProperty("ElementName")).getValue().toString())
                == name)
                return all[i].getPath();
        ADD_FAILURE() << "no volume " << name;
        return CIMObjectPath();
    }

    static TemporaryFolder* folder;
    static ServerProcess* server;
    CIMClient client;
    CIMObjectPath service;
};

TemporaryFolder* ReplicationMethodsTest::folder = nullptr;
ServerProcess* ReplicationMethodsTest::server = nullptr;

TEST_F(ReplicationMethodsTest, AGroupIsCreatedRenamedAndDeleted)
{
    Array<CIMObjectPath> members;
    members.append(volume("fin_db05"));
    members.append(volume("fin_db06"));
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("GroupName", CIMValue(String("it_group"))));
    in.append(CIMParamValue("Members", CIMValue(members)));
    ASSERT_EQ(text(client.invokeMethod("root/zda", service, "CreateGroup", in, out).toString()),
        "0");
    CIMObjectPath group;
    outValue(out, "ReplicationGroup").get(group);
    ASSERT_NE(text(group.toString()).find("KX_ORLA:it_group"), std::string::npos);

    CommandResult renamed = wbemcli("mi", "admin:admin-demo",
        "ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:it_group\"", "ElementName=\"it_renamed\"");
    ASSERT_EQ(renamed.exitCode, 0) << renamed.output;
    CIMObjectPath renamedGroup("root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:it_renamed\"");
    EXPECT_EQ(client.associatorNames("root/zda", renamedGroup, "ZDA_MemberOfReplicationGroup")
                  .size(), 2u);

    // Deleted by reference; the host is the one the array's paths carry.
    const std::string reference = "ReplicationGroup=" + text(group.getHost()) +
        "/root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:it_renamed\"";
    CommandResult deleted = wbemcli("cm", "admin:admin-demo", SERVICE, "DeleteGroup." + reference);
    EXPECT_NE(deleted.output.find("DeleteGroup: 0"), std::string::npos) << deleted.output;
    // The set is gone, its volumes stay.
    EXPECT_EQ(client.associatorNames("root/zda", renamedGroup, "ZDA_MemberOfReplicationGroup")
                  .size(), 0u);
    EXPECT_NO_THROW(client.getInstance("root/zda", members[1]));
}

TEST_F(ReplicationMethodsTest, AvailableTargetsOnTheDemoArray)
{
    const CIMObjectPath source = volume("fin_db01");
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("SourceElement", CIMValue(source)));
    in.append(CIMParamValue("SyncType", CIMValue(Uint16(8))));
    in.append(CIMParamValue("Mode", CIMValue(Uint16(2))));
    ASSERT_EQ(text(client.invokeMethod("root/zda", service, "GetAvailableTargetElements", in, out)
                       .toString()), "0");
    Array<CIMObjectPath> candidates;
    outValue(out, "Candidates").get(candidates);
    ASSERT_GT(candidates.size(), 0u);
    for (Uint32 i = 0; i < candidates.size(); i++)
        EXPECT_NE(text(candidates[i].toString()), text(source.toString()));
}

TEST_F(ReplicationMethodsTest, AViewerMayNotCreateAGroup)
{
    CommandResult refused = wbemcli("cm", "viewer:viewer-demo", SERVICE,
        "CreateGroup.GroupName=\"viewer_group\"");
    EXPECT_NE(refused.exitCode, 0);
    EXPECT_NE(refused.output.find("CIM_ERR_ACCESS_DENIED: Insufficient generic privilege"),
        std::string::npos) << refused.output;
}

}  // namespace
