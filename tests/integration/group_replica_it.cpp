// Replicas of whole groups through the running server on the demo array: a
// snapshot and a clone of a vvset with wbemcli, and a remote mirror of a
// vvset's volumes made with CIMClient and followed to synchronized on the
// simulator's stepped clock through the pair's ZDA_RemoteGroupSynchronized.
#include "DemoArrayTest.h"

using namespace zda_it;
using zda_test::text;
PEGASUS_USING_PEGASUS;

namespace
{

class GroupReplicaIT : public DemoArrayTest
{};

TEST_F(GroupReplicaIT, WbemcliSnapshotsAndClonesAVvset)
{
    // The group's reference goes last, written as the array's paths are.
    // The answers are read as XML (cmx): a snapshot's TargetGroup is a null
    // reference and a clone's Jobs an array, neither of which cm can print.
    const std::string sets = "zda-demo.example.net/root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:";
    CommandResult snapshot = admin("cmx", SERVICE,
        {"CreateGroupReplica.RelationshipName=\"it_gsnap\",SyncType=7,SourceGroup=" + sets +
            "fin_databases\""});
    EXPECT_NE(snapshot.output.find("<RETURNVALUE PARAMTYPE=\"uint32\"><VALUE>0</VALUE>"), std::string::npos)
        << snapshot.output;
    EXPECT_NE(snapshot.output.find("<PARAMVALUE NAME=\"TargetGroup\" PARAMTYPE=\"reference\">"
                                   "</PARAMVALUE>"),
        std::string::npos)
        << snapshot.output;
    for (const char* copy : {"it_gsnap_1", "it_gsnap_2", "it_gsnap_3", "it_gsnap_4"})
        EXPECT_FALSE(volume(copy).getClassName().isNull()) << copy;

    // A clone runs on as one job per member, into a new set named after
    // its source.
    CommandResult clone = admin(
        "cmx", SERVICE, {"CreateGroupReplica.SyncType=8,SourceGroup=" + sets + "fin_mirror_set\""});
    EXPECT_NE(clone.output.find("<RETURNVALUE PARAMTYPE=\"uint32\"><VALUE>4096</VALUE>"), std::string::npos)
        << clone.output;
    EXPECT_NE(clone.output.find("<PARAMVALUE NAME=\"Jobs\""), std::string::npos) << clone.output;
    CommandResult groups = admin("ein", "ZDA_ReplicationGroup");
    EXPECT_NE(groups.output.find("KX_ORLA:copyOffin_mirror_set."), std::string::npos) << groups.output;
}

TEST_F(GroupReplicaIT, CimClientMirrorsAVvsetAndFollowsItToSynchronized)
{
    step("SetClock.Start=2000000000");
    const CIMObjectPath set("root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:fin_mirror_set\"");
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("SyncType", CIMValue(Uint16(6))));
    in.append(CIMParamValue("Mode", CIMValue(Uint16(3))));
    in.append(CIMParamValue("RelationshipName", CIMValue(String("it_dr"))));
    in.append(CIMParamValue("SourceElements",
        CIMValue(
            client.associatorNames("root/zda", set, "ZDA_MemberOfReplicationGroup", "ZDA_StorageVolume"))));
    in.append(CIMParamValue("TargetPool",
        CIMValue(
            CIMObjectPath("//zda-siteB/root/zda:ZDA_DynamicStoragePool.InstanceID=\"KX_ORLA:CPG:FC_r6\""))));
    in.append(CIMParamValue("TargetAccessPoint",
        CIMValue(CIMObjectPath("root/zda:ZDA_RemoteServiceAccessPoint.CreationClassName="
                               "\"ZDA_RemoteServiceAccessPoint\",Name=\"siteB_ip\",SystemCreationClassName="
                               "\"ZDA_StorageSystem\",SystemName=\"zda-demo.example.net\""))));
    ASSERT_EQ(call("CreateGroupReplicaFromElements", in, out), "returned 0");
    EXPECT_EQ(outValue(out, "SourceGroupName"), CIMValue(String("it_dr")));
    EXPECT_EQ(outValue(out, "TargetGroupName"), CIMValue(String("it_dr.r")));
    CIMObjectPath pair;
    outValue(out, "Synchronization").get(pair);
    ASSERT_EQ(text(pair.getClassName().getString()), "ZDA_RemoteGroupSynchronized");

    // Mirroring starts unsynchronized and in progress, and is in sync once
    // the array's clock has moved on.
    CIMInstance state = client.getInstance("root/zda", pair, false);
    EXPECT_EQ(valueOf<Uint16>(state, "SyncType"), 6);
    EXPECT_EQ(valueOf<Uint16>(state, "Mode"), 3);
    EXPECT_NE(valueOf<Uint16>(state, "CopyState"), 4);
    step("StepClock.Seconds=7200");
    EXPECT_EQ(valueOf<Uint16>(client.getInstance("root/zda", pair, false), "CopyState"), 4);
    step("UseRealClock");

    // The new group is one of the array's remote groups.
    CommandResult remote = admin("ein", "ZDA_RemoteReplicationGroup");
    EXPECT_NE(remote.output.find("KX_ORLA:it_dr\""), std::string::npos) << remote.output;
}

}  // namespace
