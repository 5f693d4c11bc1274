// Replicas of whole groups through the running server on the demo array: a
// snapshot and a clone of a vvset with wbemcli, and a remote mirror of a
// vvset's volumes made with CIMClient and followed to synchronized on the
// simulator's stepped clock through the pair's ZDA_RemoteGroupSynchronized.
#include "SdkText.h"
#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMParamValue.h>

#include <gtest/gtest.h>

#include <string>

using namespace zda_it;
using zda_test::text;
PEGASUS_USING_PEGASUS;

namespace
{

const char SERVICE[] = "ZDA_ReplicationService.CreationClassName=\"ZDA_ReplicationService\","
                       "Name=\"KX_ORLA_ReplicationService\",SystemCreationClassName="
                       "\"ZDA_StorageSystem\",SystemName=\"zda-demo\"";
const char HOST[] = "zda-demo.example.net";

// The shared server's fixture, with the simulator's controls served.
class GroupReplicaIT : public SharedServerTest
{
protected:
    static void SetUpTestSuite()
    {
        cimxml::registerClientTransports();
        folder = new TemporaryFolder;
        server = new ServerProcess(folder->path(), {"--simulator-control"}, false);
    }
    void SetUp() override
    {
        client.connect("127.0.0.1", Uint32(server->httpPort()), "admin", "admin-demo");
        service = client.enumerateInstanceNames("root/zda", "ZDA_ReplicationService")[0];
    }

    static CommandResult wbemcli(
        const std::string& verb, const std::string& object, const std::string& argument = std::string())
    {
        std::vector<std::string> argv = {
            "wbemcli", verb, server->url("admin:admin-demo", "root/zda") + object};
        if (!argument.empty())
            argv.push_back(argument);
        return runCommand(argv);
    }
    static CommandResult control(const std::string& call)
    {
        return runCommand({"wbemcli", "cm",
            server->url("admin:admin-demo", "root/zda_sim") + "ZDA_SimulatorControl", call});
    }
    // The members of the vvset `set`, in the set's order.
    Array<CIMObjectPath> membersOf(const char* set)
    {
        const CIMObjectPath group(String(
            (std::string("root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:") + set + "\"").c_str()));
        return client.associatorNames("root/zda", group, "ZDA_MemberOfReplicationGroup", "ZDA_StorageVolume");
    }
    Uint16 value16(const CIMInstance& instance, const char* property)
    {
        Uint16 value = 0;
        instance.getProperty(instance.findProperty(property)).getValue().get(value);
        return value;
    }

    CIMClient client;
    CIMObjectPath service;
};

CIMValue outValue(const Array<CIMParamValue>& out, const char* name)
{
    for (Uint32 i = 0; i < out.size(); i++)
        if (out[i].getParameterName() == name)
            return out[i].getValue();
    return CIMValue();
}

TEST_F(GroupReplicaIT, WbemcliSnapshotsAndClonesAVvset)
{
    // The group's reference goes last, written as the array's paths are.
    // The answers are read as XML (cmx): a snapshot's TargetGroup is a null
    // reference and a clone's Jobs an array, neither of which cm can print.
    const std::string group = std::string(HOST) +
        "/root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:fin_databases\"";
    CommandResult snapshot = wbemcli(
        "cmx", SERVICE, "CreateGroupReplica.RelationshipName=\"it_gsnap\",SyncType=7,SourceGroup=" + group);
    EXPECT_NE(snapshot.output.find("<RETURNVALUE PARAMTYPE=\"uint32\"><VALUE>0</VALUE>"), std::string::npos)
        << snapshot.output;
    EXPECT_NE(snapshot.output.find("<PARAMVALUE NAME=\"TargetGroup\" PARAMTYPE=\"reference\">"
                                   "</PARAMVALUE>"),
        std::string::npos)
        << snapshot.output;
    CommandResult copies = wbemcli("ei", "ZDA_StorageVolume");
    for (const char* copy : {"it_gsnap_1", "it_gsnap_2", "it_gsnap_3", "it_gsnap_4"})
        EXPECT_NE(copies.output.find("ElementName=\"" + std::string(copy) + "\""), std::string::npos) << copy;

    // A clone runs on as one job per member, into a new set named after
    // its source.
    CommandResult clone = wbemcli("cmx", SERVICE,
        "CreateGroupReplica.SyncType=8,SourceGroup=" + std::string(HOST) +
            "/root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:fin_mirror_set\"");
    EXPECT_NE(clone.output.find("<RETURNVALUE PARAMTYPE=\"uint32\"><VALUE>4096</VALUE>"), std::string::npos)
        << clone.output;
    EXPECT_NE(clone.output.find("<PARAMVALUE NAME=\"Jobs\""), std::string::npos) << clone.output;
    CommandResult groups = wbemcli("ein", "ZDA_ReplicationGroup");
    EXPECT_NE(groups.output.find("KX_ORLA:copyOffin_mirror_set."), std::string::npos) << groups.output;
}

TEST_F(GroupReplicaIT, CimClientMirrorsAVvsetAndFollowsItToSynchronized)
{
    ASSERT_EQ(control("SetClock.Start=2000000000").exitCode, 0);
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("SyncType", CIMValue(Uint16(6))));
    in.append(CIMParamValue("Mode", CIMValue(Uint16(3))));
    in.append(CIMParamValue("RelationshipName", CIMValue(String("it_dr"))));
    in.append(CIMParamValue("SourceElements", CIMValue(membersOf("fin_mirror_set"))));
    in.append(CIMParamValue("TargetPool",
        CIMValue(
            CIMObjectPath("//zda-siteB/root/zda:ZDA_DynamicStoragePool.InstanceID=\"KX_ORLA:CPG:FC_r6\""))));
    in.append(CIMParamValue("TargetAccessPoint",
        CIMValue(CIMObjectPath("root/zda:ZDA_RemoteServiceAccessPoint.CreationClassName="
                               "\"ZDA_RemoteServiceAccessPoint\",Name=\"siteB_ip\",SystemCreationClassName="
                               "\"ZDA_StorageSystem\",SystemName=\"zda-demo.example.net\""))));
    Uint32 result = 99;
    client.invokeMethod("root/zda", service, "CreateGroupReplicaFromElements", in, out).get(result);
    ASSERT_EQ(result, 0u);
    String name;
    outValue(out, "SourceGroupName").get(name);
    EXPECT_EQ(text(name), "it_dr");
    outValue(out, "TargetGroupName").get(name);
    EXPECT_EQ(text(name), "it_dr.r");
    CIMObjectPath pair;
    outValue(out, "Synchronization").get(pair);
    ASSERT_EQ(text(pair.getClassName().getString()), "ZDA_RemoteGroupSynchronized");

    // Mirroring starts unsynchronized and in progress, and is in sync once
    // the array's clock has moved on.
    CIMInstance state = client.getInstance("root/zda", pair, false);
    EXPECT_EQ(value16(state, "SyncType"), 6);
    EXPECT_EQ(value16(state, "Mode"), 3);
    EXPECT_NE(value16(state, "CopyState"), 4);
    ASSERT_EQ(control("StepClock.Seconds=7200").exitCode, 0);
    state = client.getInstance("root/zda", pair, false);
    EXPECT_EQ(value16(state, "CopyState"), 4);
    ASSERT_EQ(control("UseRealClock").exitCode, 0);

    // The new group is one of the array's remote groups.
    CommandResult remote = wbemcli("ein", "ZDA_RemoteReplicationGroup");
    EXPECT_NE(remote.output.find("KX_ORLA:it_dr\""), std::string::npos) << remote.output;
}

}  // namespace
