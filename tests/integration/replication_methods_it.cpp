// The replication service's group, copy target, local replica and peer
// system methods and the remote replication model through the running
// server on the demo array (a clone's job followed on the simulator's
// stepped clock), with wbemcli where it can write the parameters and read
// the answer and with CIMClient where it cannot (wbemcli splits a reference
// array at the commas between a path's keys, and `cm` cannot read one).
#include "SdkText.h"
#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMParamValue.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using namespace zda_it;
using zda_test::text;
PEGASUS_USING_PEGASUS;

namespace
{

const char SERVICE[] = "ZDA_ReplicationService.CreationClassName=\"ZDA_ReplicationService\","
                       "Name=\"KX_ORLA_ReplicationService\",SystemCreationClassName="
                       "\"ZDA_StorageSystem\",SystemName=\"zda-demo\"";

CIMValue outValue(const Array<CIMParamValue>& out, const char* name)
{
    for (Uint32 i = 0; i < out.size(); i++)
        if (out[i].getParameterName() == name)
            return out[i].getValue();
    return CIMValue();
}

class ReplicationMethodsTest : public SharedServerTest
{
protected:
    static void SetUpTestSuite() { startServer({"--https-port", "off", "--simulator-control"}); }
    void SetUp() override
    {
        client.connect("127.0.0.1", Uint32(server->httpPort()), "admin", "admin-demo");
        service = client.enumerateInstanceNames("root/zda", "ZDA_ReplicationService")[0];
    }

    // One argument after the object.
    static CommandResult wbemcli(const std::string& verb, const std::string& user, const std::string& object,
        const std::string& argument)
    {
        return SharedServerTest::wbemcli(verb, user, object, {}, {argument});
    }
    Uint32 invoke(const char* method, const Array<CIMParamValue>& in, Array<CIMParamValue>& out)
    {
        Uint32 result = 0;
        client.invokeMethod("root/zda", service, method, in, out).get(result);
        return result;
    }
    Uint16 jobValue(const CIMObjectPath& job, const char* property)
    {
        CIMInstance instance = client.getInstance("root/zda", job, false);
        Uint16 value = 0;
        instance.getProperty(instance.findProperty(property)).getValue().get(value);
        return value;
    }
    // The demo array's volumes by name.
    CIMObjectPath volume(const std::string& name)
    {
        const CIMObjectPath found = volumeNamed(name);
        if (found.getClassName().isNull())
            ADD_FAILURE() << "no volume " << name;
        return found;
    }
    bool volumeExists(const std::string& name) { return !volumeNamed(name).getClassName().isNull(); }
    CIMObjectPath volumeNamed(const std::string& name)
    {
        Array<CIMInstance> all = client.enumerateInstances("root/zda", "ZDA_StorageVolume", true, false);
        for (Uint32 i = 0; i < all.size(); i++)
            if (text(all[i].getProperty(all[i].findProperty("ElementName")).getValue().toString()) == name)
                return all[i].getPath();
        return CIMObjectPath();
    }

    CIMClient client;
    CIMObjectPath service;
};

TEST_F(ReplicationMethodsTest, AGroupIsCreatedRenamedAndDeleted)
{
    Array<CIMObjectPath> members;
    members.append(volume("fin_db05"));
    members.append(volume("fin_db06"));
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("GroupName", CIMValue(String("it_group"))));
    in.append(CIMParamValue("Members", CIMValue(members)));
    ASSERT_EQ(text(client.invokeMethod("root/zda", service, "CreateGroup", in, out).toString()), "0");
    CIMObjectPath group;
    outValue(out, "ReplicationGroup").get(group);
    ASSERT_NE(text(group.toString()).find("KX_ORLA:it_group"), std::string::npos);

    CommandResult renamed = wbemcli("mi", "admin:admin-demo",
        "ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:it_group\"", "ElementName=\"it_renamed\"");
    ASSERT_EQ(renamed.exitCode, 0) << renamed.output;
    CIMObjectPath renamedGroup("root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:it_renamed\"");
    EXPECT_EQ(client.associatorNames("root/zda", renamedGroup, "ZDA_MemberOfReplicationGroup").size(), 2u);

    // Deleted by reference; the host is the one the array's paths carry.
    const std::string reference = "ReplicationGroup=" + text(group.getHost()) +
        "/root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:it_renamed\"";
    CommandResult deleted = wbemcli("cm", "admin:admin-demo", SERVICE, "DeleteGroup." + reference);
    EXPECT_NE(deleted.output.find("DeleteGroup: 0"), std::string::npos) << deleted.output;
    // The set is gone, its volumes stay.
    EXPECT_EQ(client.associatorNames("root/zda", renamedGroup, "ZDA_MemberOfReplicationGroup").size(), 0u);
    EXPECT_NO_THROW(client.getInstance("root/zda", members[1]));
}

TEST_F(ReplicationMethodsTest, AvailableTargetsOnTheDemoArray)
{
    const CIMObjectPath source = volume("fin_db01");
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("SourceElement", CIMValue(source)));
    in.append(CIMParamValue("SyncType", CIMValue(Uint16(8))));
    in.append(CIMParamValue("Mode", CIMValue(Uint16(2))));
    ASSERT_EQ(
        text(client.invokeMethod("root/zda", service, "GetAvailableTargetElements", in, out).toString()),
        "0");
    Array<CIMObjectPath> candidates;
    outValue(out, "Candidates").get(candidates);
    ASSERT_GT(candidates.size(), 0u);
    for (Uint32 i = 0; i < candidates.size(); i++)
        EXPECT_NE(text(candidates[i].toString()), text(source.toString()));
}

TEST_F(ReplicationMethodsTest, AViewerMayNotCreateAGroup)
{
    CommandResult refused = wbemcli(
        "cm", "viewer:viewer-demo", SERVICE, "CreateGroup.GroupName=\"viewer_group\"");
    EXPECT_NE(refused.exitCode, 0);
    EXPECT_NE(refused.output.find("CIM_ERR_ACCESS_DENIED: Insufficient generic privilege"), std::string::npos)
        << refused.output;
}

// Each class of the remote replication model, listed by wbemcli and every
// path it lists fetched again. The demo array has 13 remote copy groups and
// 8 targets; 15 far groups (one per group and target) and 23 far volumes
// (one per group volume and target it has a map for).
TEST_F(ReplicationMethodsTest, TheRemoteModelIsListedAndFetched)
{
    const std::vector<std::pair<const char*, size_t>> classes = {{"ZDA_RemoteReplicationGroup", 13},
        {"ZDA_RemoteReplicationCollection", 8}, {"ZDA_RemoteServiceAccessPoint", 8},
        {"ZDA_ReplicationEntity", 38}};
    for (const auto& c : classes)
    {
        CommandResult listed = runCommand(
            {"wbemcli", "ein", server->url("admin:admin-demo", "root/zda") + c.first});
        ASSERT_EQ(listed.exitCode, 0) << listed.output;
        Array<CIMObjectPath> paths = client.enumerateInstanceNames("root/zda", c.first);
        EXPECT_EQ(paths.size(), c.second) << c.first;
        for (Uint32 i = 0; i < paths.size(); i++)
        {
            const std::string path = text(paths[i].toString());
            EXPECT_NE(listed.output.find(path.substr(path.find(':') + 1)), std::string::npos)
                << path << "\n"
                << listed.output;
            // The instance fetched by the path carries the path's keys.
            const CIMInstance fetched = client.getInstance("root/zda", paths[i], false);
            const Array<CIMKeyBinding> keys = paths[i].getKeyBindings();
            for (Uint32 k = 0; k < keys.size(); k++)
            {
                const Uint32 at = fetched.findProperty(keys[k].getName());
                ASSERT_NE(at, PEG_NOT_FOUND) << path << " " << text(keys[k].getName().getString());
                EXPECT_EQ(text(fetched.getProperty(at).getValue().toString()), text(keys[k].getValue()))
                    << path;
            }
        }
    }
    CommandResult sap = runCommand({"wbemcli", "-nl", "gi",
        server->url("admin:admin-demo", "root/zda") +
            "ZDA_RemoteServiceAccessPoint.CreationClassName=\"ZDA_RemoteServiceAccessPoint\","
            "Name=\"siteE\",SystemCreationClassName=\"ZDA_StorageSystem\",SystemName=\"elsewhere\""});
    EXPECT_NE(sap.output.find("-OperationalStatus=10,2"), std::string::npos) << sap.output;
}

// The peer systems and one's access points: wbemcli prints the raw answer
// (cmx), CIMClient reads it and passes a peer back as it came.
TEST_F(ReplicationMethodsTest, PeerSystemsAndTheirAccessPoints)
{
    CommandResult ready = wbemcli("cmx", "admin:admin-demo", SERVICE, "GetPeerSystems.Options=2");
    EXPECT_EQ(ready.exitCode, 0) << ready.output;
    EXPECT_NE(ready.output.find("2FF70002AC013E64"), std::string::npos) << ready.output;
    EXPECT_EQ(ready.output.find("2FF70002AC01B5C8"), std::string::npos) << ready.output;

    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("Options", CIMValue(Uint16(0))));
    ASSERT_EQ(text(client.invokeMethod("root/zda", service, "GetPeerSystems", in, out).toString()), "0");
    Array<CIMObjectPath> systems;
    outValue(out, "Systems").get(systems);
    ASSERT_EQ(systems.size(), 5u);  // siteB's two targets count once; no WWN, no entry

    in.clear();
    in.append(CIMParamValue("System", CIMValue(systems[0])));
    ASSERT_EQ(
        text(client.invokeMethod("root/zda", service, "GetServiceAccessPoints", in, out).toString()), "0");
    Array<CIMObjectPath> accessPoints;
    outValue(out, "ServiceAccessPoints").get(accessPoints);
    std::vector<std::string> names;
    for (Uint32 i = 0; i < accessPoints.size(); i++)
    {
        const CIMInstance sap = client.getInstance("root/zda", accessPoints[i], false);
        names.push_back(text(sap.getProperty(sap.findProperty("Name")).getValue().toString()));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"siteB_ip", "siteB_fc"}));

    for (const char* method : {"GetPeerSystems.Options=0",
             "GetServiceAccessPoints.System=zda-siteB/root/zda:ZDA_StorageSystem.CreationClassName="
             "\"ZDA_StorageSystem\",Name=\"2FF70002AC013E64\""})
    {
        CommandResult refused = wbemcli("cmx", "viewer:viewer-demo", SERVICE, method);
        EXPECT_NE(refused.output.find("CIM_ERR_ACCESS_DENIED"), std::string::npos) << method << "\n"
                                                                                   << refused.output;
    }
}

// The pairs of a remote copy group and of one of its volumes, from both
// ends and by their paths, and the relationship listings: 22 volume pairs
// (one per far volume), 14 mirror pairs and 2 snapshot pairs of groups.
TEST_F(ReplicationMethodsTest, RemotePairsAndRelationships)
{
    const std::string group = "ZDA_RemoteReplicationGroup.InstanceID=\"KX_ORLA:rcg_fin_sync\"";
    CommandResult related = runCommand({"wbemcli", "ain", "-ac", "ZDA_RemoteGroupSynchronized",
        server->url("admin:admin-demo", "root/zda") + group});
    ASSERT_EQ(related.exitCode, 0) << related.output;
    for (const char* end : {"KX_ORLA:RG:rcg_fin_sync.r:zda-siteB", "KX_ORLA:rcg_fin_sync_snap\"",
             "KX_ORLA:rcg_fin_sync_snap_half\""})
        EXPECT_NE(related.output.find(end), std::string::npos) << end << "\n" << related.output;

    const CIMObjectPath groupPath("root/zda:" + String(group.c_str()));
    Array<CIMObject> pairs = client.references("root/zda", groupPath, "ZDA_RemoteGroupSynchronized");
    ASSERT_EQ(pairs.size(), 3u);
    std::map<std::string, Uint16> copyStates;
    for (Uint32 i = 0; i < pairs.size(); i++)
        copyStates[text(
            pairs[i].getProperty(pairs[i].findProperty("RelationshipName")).getValue().toString())] =
            Uint16(std::stoi(
                text(pairs[i].getProperty(pairs[i].findProperty("CopyState")).getValue().toString())));
    EXPECT_EQ(copyStates,
        (std::map<std::string, Uint16>{{"rcg_fin_sync->rcg_fin_sync.r", 4},
            {"rcg_fin_sync->rcg_fin_sync_snap", 4}, {"rcg_fin_sync->rcg_fin_sync_snap_half", 13}}));

    const CIMObjectPath fin = volume("fin_app01");
    Array<CIMObject> far = client.associators("root/zda", fin, "ZDA_RemoteStorageSynchronized");
    ASSERT_EQ(far.size(), 1u);
    EXPECT_EQ(text(far[0].getClassName().getString()), "ZDA_ReplicationEntity");
    CommandResult volumePairs = runCommand({"wbemcli", "rin", "-arc", "ZDA_RemoteStorageSynchronized",
        server->url("admin:admin-demo", "root/zda") +
            text(fin.toString()).substr(text(fin.toString()).find("ZDA_StorageVolume"))});
    ASSERT_EQ(volumePairs.exitCode, 0) << volumePairs.output;
    EXPECT_NE(volumePairs.output.find("ZDA_RemoteStorageSynchronized."), std::string::npos)
        << volumePairs.output;

    // Every pair of both classes fetched again by its path.
    const std::vector<std::pair<const char*, Uint32>> classes = {
        {"ZDA_RemoteStorageSynchronized", 23}, {"ZDA_RemoteGroupSynchronized", 17}};
    for (const auto& c : classes)
    {
        Array<CIMObjectPath> paths = client.enumerateInstanceNames("root/zda", c.first);
        EXPECT_EQ(paths.size(), c.second) << c.first;
        for (Uint32 i = 0; i < paths.size(); i++)
        {
            const CIMInstance fetched = client.getInstance("root/zda", paths[i], false);
            EXPECT_EQ(text(fetched.getClassName().getString()), c.first);
        }
    }

    // Relationships: the remote ones by path, the Skewed ones as instances.
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("Locality", CIMValue(Uint16(3))));
    ASSERT_EQ(
        text(client.invokeMethod("root/zda", service, "GetReplicationRelationships", in, out).toString()),
        "0");
    Array<CIMObjectPath> remote;
    outValue(out, "Synchronizations").get(remote);
    EXPECT_EQ(remote.size(), 23u + 17u);
    in.clear();
    out.clear();
    in.append(CIMParamValue("CopyState", CIMValue(Uint16(13))));
    ASSERT_EQ(text(client.invokeMethod("root/zda", service, "GetReplicationRelationshipInstances", in, out)
                       .toString()),
        "0");
    Array<CIMObject> skewed;
    outValue(out, "Synchronizations").get(skewed);
    ASSERT_FALSE(skewed.size() == 0);
    for (Uint32 i = 0; i < skewed.size(); i++)
        EXPECT_EQ(
            text(skewed[i].getProperty(skewed[i].findProperty("CopyState")).getValue().toString()), "13");

    CommandResult listed = wbemcli("cmx", "admin:admin-demo", SERVICE, "GetReplicationRelationships.Type=3");
    ASSERT_EQ(listed.exitCode, 0) << listed.output;
    size_t groups = 0;
    for (size_t at = listed.output.find("CLASSNAME=\"ZDA_RemoteGroupSynchronized\""); at != std::string::npos;
         at = listed.output.find("CLASSNAME=\"ZDA_RemoteGroupSynchronized\"", at + 1))
        groups++;
    EXPECT_EQ(groups, 17u);
    CommandResult refused = wbemcli(
        "cm", "admin:admin-demo", SERVICE, "GetReplicationRelationships.CopyState=1");
    EXPECT_NE(refused.exitCode, 0);
    EXPECT_NE(refused.output.find("Invalid copyState"), std::string::npos) << refused.output;
}

TEST_F(ReplicationMethodsTest, ARemoteCopyGroupIsDeleted)
{
    const CIMObjectPath group("root/zda:ZDA_RemoteReplicationGroup.InstanceID=\"KX_ORLA:rcg_empty\"");
    ASSERT_NO_THROW(client.getInstance("root/zda", group));
    CommandResult deleted = wbemcli("cm", "admin:admin-demo", SERVICE,
        "DeleteGroup.ReplicationGroup=zda-demo.example.net/root/zda:ZDA_RemoteReplicationGroup."
        "InstanceID=\"KX_ORLA:rcg_empty\",RemoveElements=false");
    EXPECT_NE(deleted.output.find("DeleteGroup: 0"), std::string::npos) << deleted.output;
    EXPECT_THROW(client.getInstance("root/zda", group), CIMException);
}

TEST_F(ReplicationMethodsTest, ACloneIsFollowedToCompletionOnASteppedClock)
{
    ASSERT_EQ(control("SetClock.Start=2000000000").exitCode, 0);
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("ElementName", CIMValue(String("it_clone"))));
    in.append(CIMParamValue("SyncType", CIMValue(Uint16(8))));
    in.append(CIMParamValue("SourceElement", CIMValue(volume("fin_log02"))));
    ASSERT_EQ(invoke("CreateElementReplica", in, out), 4096u);
    CIMObjectPath job;
    outValue(out, "Job").get(job);
    EXPECT_EQ(jobValue(job, "JobState"), 4);

    // fin_log02 holds 8 GiB: the copy takes 32 seconds of the array's clock.
    ASSERT_EQ(control("StepClock.Seconds=16").exitCode, 0);
    EXPECT_EQ(jobValue(job, "PercentComplete"), 50);
    ASSERT_EQ(control("StepClock.Seconds=16").exitCode, 0);
    EXPECT_EQ(jobValue(job, "JobState"), 7);
    EXPECT_EQ(jobValue(job, "PercentComplete"), 100);
    ASSERT_EQ(control("UseRealClock").exitCode, 0);
}

TEST_F(ReplicationMethodsTest, ASnapshotOfOneVolumeWithWbemcli)
{
    // The volume's reference goes last, written as the array's paths are.
    const std::string source = "zda-demo.example.net/root/zda:ZDA_StorageVolume.CreationClassName="
                               "\"ZDA_StorageVolume\",DeviceID=\"60002D1A0013D64A2000000000000001\","
                               "SystemCreationClassName=\"ZDA_StorageSystem\",SystemName=\"zda-demo\"";
    CommandResult made = wbemcli("cm", "admin:admin-demo", SERVICE,
        "CreateElementReplica.ElementName=\"it_snap\",SyncType=7,SourceElement=" + source);
    EXPECT_NE(made.output.find("CreateElementReplica: 0"), std::string::npos) << made.output;
    EXPECT_TRUE(volumeExists("it_snap"));

    // A user who may only read is refused the right of a snapshot.
    CommandResult refused = wbemcli(
        "cm", "viewer:viewer-demo", SERVICE, "CreateElementReplica.SyncType=7,SourceElement=" + source);
    EXPECT_NE(refused.output.find("CIM_ERR_ACCESS_DENIED"), std::string::npos) << refused.output;
}

TEST_F(ReplicationMethodsTest, ListsOfCopiesAreMadeAndChanged)
{
    // Snapshots of two volumes at one instant, kept as a goal says.
    Array<CIMObjectPath> sources;
    sources.append(volume("fin_db02"));
    sources.append(volume("fin_db03"));
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("SyncType", CIMValue(Uint16(7))));
    in.append(CIMParamValue("SourceElements", CIMValue(sources)));
    in.append(CIMParamValue("TargetSettingGoal",
        CIMValue(
            CIMObjectPath("root/zda:ZDA_StorageSetting.InstanceID=\"KX_ORLA:SETTING:snap_month_end\""))));
    ASSERT_EQ(invoke("CreateListReplica", in, out), 0u);
    Array<CIMObjectPath> synchronizations;
    outValue(out, "Synchronizations").get(synchronizations);
    ASSERT_EQ(synchronizations.size(), 2u);
    EXPECT_TRUE(volumeExists("fin_db02.rw"));

    // Clones of a list as one consistent set: a job for each.
    Array<CIMObjectPath> clones;
    clones.append(volume("fin_log03"));
    clones.append(volume("fin_app01"));
    Array<String> names;
    names.append("it_list_a");
    names.append("it_list_b");
    in.clear();
    in.append(CIMParamValue("SyncType", CIMValue(Uint16(8))));
    in.append(CIMParamValue("SourceElements", CIMValue(clones)));
    in.append(CIMParamValue("ElementNames", CIMValue(names)));
    ASSERT_EQ(invoke("ZDA_CreateConsistentReplicaList", in, out), 4096u);
    Array<CIMObjectPath> jobs;
    outValue(out, "Jobs").get(jobs);
    EXPECT_EQ(jobs.size(), 2u);

    // The snapshots dissolved as a list, each element on its own.
    in.clear();
    in.append(CIMParamValue("Operation", CIMValue(Uint16(9))));
    in.append(CIMParamValue("Synchronization", CIMValue(synchronizations)));
    EXPECT_EQ(invoke("ModifyListSynchronization", in, out), 0u);
    EXPECT_FALSE(volumeExists("fin_db02.rw"));

    // A group's copies returned to the pool, the group named with wbemcli.
    CommandResult returned = wbemcli("cm", "admin:admin-demo", SERVICE,
        "ZDA_ModifyGroupReplicaSynchronization.Operation=19,TargetGroup="
        "zda-demo.example.net/root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:eng_copies\"");
    EXPECT_NE(returned.output.find("ZDA_ModifyGroupReplicaSynchronization: 0"), std::string::npos)
        << returned.output;
    EXPECT_FALSE(volumeExists("eng_build03.clone"));
    EXPECT_TRUE(volumeExists("eng_build03"));
}

}  // namespace
