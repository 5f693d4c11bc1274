// Disaster recovery through the running server on the demo array, as a
// client library runs it: a remote copy group split, resynchronised,
// failed over on the secondary's array and failed back, dissolved and
// detached, with the group pair's state read after each step on the
// simulator's stepped clock; and volumes taken into and out of groups.
#include "SdkText.h"
#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/CIMParamValue.h>

#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace zda_it;
using zda_test::text;
PEGASUS_USING_PEGASUS;

namespace
{

const char NS[] = "root/zda";
const char GROUP_SYNC[] = "ZDA_RemoteGroupSynchronized";

class DisasterRecoveryIT : public SharedServerTest
{
protected:
    static void SetUpTestSuite()
    {
        cimxml::registerClientTransports();
        startServer({"--https-port", "off", "--simulator-control"});
    }
    void SetUp() override
    {
        client.connect("127.0.0.1", Uint32(server->httpPort()), "admin", "admin-demo");
        service = client.enumerateInstanceNames(NS, "ZDA_ReplicationService")[0];
    }

    static void control(const std::string& call)
    {
        CommandResult done = runCommand({"wbemcli", "cm",
            server->url("admin:admin-demo", "root/zda_sim") + "ZDA_SimulatorControl", call});
        ASSERT_EQ(done.exitCode, 0) << done.output;
    }
    static CIMObjectPath group(const char* name)
    {
        return CIMObjectPath(String((std::string("root/zda:ZDA_RemoteReplicationGroup."
                                                 "InstanceID=\"KX_ORLA:") +
            name + "\"")
                                        .c_str()));
    }
    // The mirror pair (SyncType 6) of the remote copy group `name`.
    CIMObjectPath pairOf(const char* name)
    {
        Array<CIMObject> pairs = client.references(NS, group(name), GROUP_SYNC);
        for (Uint32 i = 0; i < pairs.size(); i++)
            if (value(CIMInstance(pairs[i]), "SyncType") == 6)
                return pairs[i].getPath();
        ADD_FAILURE() << "no mirror pair of " << name;
        return CIMObjectPath();
    }
    static Uint16 value(const CIMInstance& instance, const char* property)
    {
        Uint16 v = 0;
        instance.getProperty(instance.findProperty(property)).getValue().get(v);
        return v;
    }
    // "<CopyState>/<ProgressStatus>" of the pair.
    std::string state(const CIMObjectPath& pair)
    {
        const CIMInstance instance = client.getInstance(NS, pair, false);
        return std::to_string(value(instance, "CopyState")) + "/" +
            std::to_string(value(instance, "ProgressStatus"));
    }
    // The result of ModifyReplicaSynchronization, or the exception's code.
    std::string modify(Uint16 operation, const CIMObjectPath& pair)
    {
        Array<CIMParamValue> in;
        Array<CIMParamValue> out;
        in.append(CIMParamValue("Operation", CIMValue(operation)));
        in.append(CIMParamValue("Synchronization", CIMValue(pair)));
        return call("ModifyReplicaSynchronization", in, out);
    }
    std::string call(const char* method, const Array<CIMParamValue>& in, Array<CIMParamValue>& out)
    {
        try
        {
            Uint32 result = 0;
            client.invokeMethod(NS, service, method, in, out).get(result);
            return "returned " + std::to_string(result);
        }
        catch (const CIMException& e)
        {
            return "thrown " + std::to_string(e.getCode()) + ": " + text(e.getMessage());
        }
    }
    CIMObjectPath volume(const std::string& name)
    {
        Array<CIMInstance> all = client.enumerateInstances(NS, "ZDA_StorageVolume", true, false);
        for (Uint32 i = 0; i < all.size(); i++)
            if (text(all[i].getProperty(all[i].findProperty("ElementName")).getValue().toString()) == name)
                return all[i].getPath();
        ADD_FAILURE() << "no volume " << name;
        return CIMObjectPath();
    }
    std::string members(const char* method, const CIMObjectPath& groupPath, const std::string& member,
        bool deleteOnEmpty = false)
    {
        Array<CIMParamValue> in;
        Array<CIMParamValue> out;
        in.append(CIMParamValue("ReplicationGroup", CIMValue(groupPath)));
        in.append(CIMParamValue("Members", CIMValue(Array<CIMObjectPath>(1, volume(member)))));
        if (deleteOnEmpty)
            in.append(CIMParamValue("DeleteOnEmptyElement", CIMValue(true)));
        return call(method, in, out);
    }
    static std::string deviceId(const CIMObjectPath& volumePath)
    {
        const Array<CIMKeyBinding> keys = volumePath.getKeyBindings();
        for (Uint32 i = 0; i < keys.size(); i++)
            if (keys[i].getName().equal("DeviceID"))
                return text(keys[i].getValue());
        return "";
    }
    std::string deviceId(const std::string& name) { return deviceId(volume(name)); }
    // The DeviceIDs of the volumes a group path leads to through its
    // membership association.
    std::set<std::string> memberIds(const CIMObjectPath& groupPath, const char* association)
    {
        const Array<CIMObjectPath> found = client.associatorNames(NS, groupPath, association);
        std::set<std::string> ids;
        for (Uint32 i = 0; i < found.size(); i++)
            ids.insert(deviceId(found[i]));
        return ids;
    }
    size_t memberCount(const CIMObjectPath& groupPath, const char* association)
    {
        return memberIds(groupPath, association).size();
    }

    CIMClient client;
    CIMObjectPath service;
};

TEST_F(DisasterRecoveryIT, AGroupIsSplitResyncedFailedOverFailedBackAndDissolved)
{
    control("SetClock.Start=2000000000");
    // The primary side: a synchronous group, in sync.
    const CIMObjectPath primary = pairOf("rcg_fin_sync");
    EXPECT_EQ(state(primary), "4/2");
    EXPECT_EQ(modify(21, primary), "returned 0");
    EXPECT_EQ(state(primary), "7/18");  // split: frozen, requires a resync
    // A split group's resync restarts it and gives the synchronisation's job.
    EXPECT_EQ(modify(14, primary), "returned 4096");
    EXPECT_EQ(state(primary), "3/6");
    control("StepClock.Seconds=600");
    EXPECT_EQ(state(primary), "4/2");

    // The secondary side is worked from the array that holds it.
    const CIMObjectPath secondary = pairOf("rcg_dr_secondary");
    EXPECT_NE(modify(10, primary).find("thrown 5: "), std::string::npos);
    EXPECT_EQ(modify(10, secondary), "returned 0");
    EXPECT_EQ(state(secondary), "10/11");  // failing over
    control("StepClock.Seconds=600");
    EXPECT_EQ(state(secondary), "10/2");  // failed over
    EXPECT_EQ(modify(11, secondary), "returned 4096");
    EXPECT_EQ(state(secondary), "3/6");  // failing back: the volumes resynchronise
    control("StepClock.Seconds=600");
    EXPECT_EQ(state(secondary).substr(0, 2), "4/");

    // Dissolve asks nothing of the array; detach deletes the group, and the
    // pair with it, while the local volumes stay.
    EXPECT_EQ(modify(9, primary), "returned 0");
    EXPECT_EQ(state(primary), "4/2");
    EXPECT_EQ(modify(8, primary), "returned 0");
    EXPECT_THROW(client.getInstance(NS, group("rcg_fin_sync")), CIMException);
    EXPECT_EQ(volume("fin_app01").getClassName().getString(), "ZDA_StorageVolume");
    control("UseRealClock");
}

TEST_F(DisasterRecoveryIT, AResyncOfAStoppedStaleGroupStartsIt)
{
    const CIMObjectPath stale = pairOf("rcg_fin_stale");
    EXPECT_EQ(state(stale).substr(0, 3), "13/");
    // The sync is refused as not started and the start that follows works:
    // its text is the answer, the group runs.
    const std::string answer = modify(14, stale);
    EXPECT_NE(answer.find("isn't started"), std::string::npos) << answer;
    EXPECT_EQ(state(stale).substr(0, 2), "3/");
}

TEST_F(DisasterRecoveryIT, VolumesJoinAndLeaveAVvsetAndARemoteCopyGroup)
{
    const CIMObjectPath set("root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:fin_databases\"");
    const size_t before = memberCount(set, "ZDA_MemberOfReplicationGroup");
    EXPECT_EQ(members("AddMembers", set, "fin_db06"), "returned 0");
    EXPECT_EQ(memberCount(set, "ZDA_MemberOfReplicationGroup"), before + 1);
    EXPECT_EQ(members("RemoveMembers", set, "fin_db06"), "returned 0");
    EXPECT_EQ(memberCount(set, "ZDA_MemberOfReplicationGroup"), before);

    const CIMObjectPath rcg = group("rcg_fin_periodic");
    const char* ordered = "ZDA_OrderedMemberOfRemoteReplicationGroup";
    EXPECT_EQ(memberCount(rcg, ordered), 2u);
    EXPECT_EQ(members("RemoveMembers", rcg, "fin_db06"), "returned 0");
    EXPECT_EQ(memberCount(rcg, ordered), 1u);
    const std::string again = members("RemoveMembers", rcg, "fin_db06");
    EXPECT_EQ(again.rfind("thrown 8: ", 0), 0u) << again;
    EXPECT_NE(
        again.find("Member " + deviceId("fin_db06") + " not in RemoteReplicationGroup rcg_fin_periodic"),
        std::string::npos)
        << again;
    // Back in, it is an ordered member again; then out once more.
    EXPECT_EQ(members("AddMembers", rcg, "fin_db06"), "returned 0");
    const std::set<std::string> joined = memberIds(rcg, ordered);
    EXPECT_EQ(joined.size(), 2u);
    EXPECT_EQ(joined.count(deviceId("fin_db06")), 1u);
    EXPECT_EQ(members("RemoveMembers", rcg, "fin_db06"), "returned 0");
    EXPECT_EQ(memberIds(rcg, ordered).count(deviceId("fin_db06")), 0u);
    // The last volume out with DeleteOnEmptyElement takes the group with it.
    EXPECT_EQ(members("RemoveMembers", rcg, "fin_db05", true), "returned 0");
    EXPECT_THROW(client.getInstance(NS, rcg), CIMException);
}

}  // namespace
