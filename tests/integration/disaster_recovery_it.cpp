// Disaster recovery through the running server on the demo array, as a
// client library runs it: a remote copy group split, resynchronised,
// failed over on the secondary's array and failed back, dissolved and
// detached, with the group pair's state read after each step on the
// simulator's stepped clock.
#include "DemoArrayTest.h"

using namespace zda_it;
PEGASUS_USING_PEGASUS;

namespace
{

class DisasterRecoveryIT : public DemoArrayTest
{
protected:
    static CIMObjectPath group(const char* name)
    {
        return CIMObjectPath(
            String(("root/zda:ZDA_RemoteReplicationGroup.InstanceID=\"KX_ORLA:" + std::string(name) + "\"")
                       .c_str()));
    }
    // The mirror pair (SyncType 6) of the remote copy group `name`.
    CIMObjectPath pairOf(const char* name)
    {
        Array<CIMObject> pairs = client.references("root/zda", group(name), "ZDA_RemoteGroupSynchronized");
        for (Uint32 i = 0; i < pairs.size(); i++)
            if (valueOf<Uint16>(CIMInstance(pairs[i]), "SyncType") == 6)
                return pairs[i].getPath();
        ADD_FAILURE() << "no mirror pair of " << name;
        return CIMObjectPath();
    }
    // "<CopyState>/<ProgressStatus>" of the pair.
    std::string state(const CIMObjectPath& pair)
    {
        const CIMInstance instance = client.getInstance("root/zda", pair, false);
        return std::to_string(valueOf<Uint16>(instance, "CopyState")) + "/" +
            std::to_string(valueOf<Uint16>(instance, "ProgressStatus"));
    }
    std::string modify(Uint16 operation, const CIMObjectPath& pair)
    {
        Array<CIMParamValue> in, out;
        in.append(CIMParamValue("Operation", CIMValue(operation)));
        in.append(CIMParamValue("Synchronization", CIMValue(pair)));
        return call("ModifyReplicaSynchronization", in, out);
    }
};

TEST_F(DisasterRecoveryIT, AGroupIsSplitResyncedFailedOverFailedBackAndDissolved)
{
    step("SetClock.Start=2000000000");
    // The primary side: a synchronous group, in sync.
    const CIMObjectPath primary = pairOf("rcg_fin_sync");
    EXPECT_EQ(state(primary), "4/2");
    EXPECT_EQ(modify(21, primary), "returned 0");
    EXPECT_EQ(state(primary), "7/18");  // split: frozen, requires a resync
    // A split group's resync restarts it and gives the synchronisation's job.
    EXPECT_EQ(modify(14, primary), "returned 4096");
    EXPECT_EQ(state(primary), "3/6");
    step("StepClock.Seconds=600");
    EXPECT_EQ(state(primary), "4/2");

    // The secondary side is worked from the array that holds it.
    const CIMObjectPath secondary = pairOf("rcg_dr_secondary");
    EXPECT_NE(modify(10, primary).find("thrown 5: "), std::string::npos);
    EXPECT_EQ(modify(10, secondary), "returned 0");
    EXPECT_EQ(state(secondary), "10/11");  // failing over
    step("StepClock.Seconds=600");
    EXPECT_EQ(state(secondary), "10/2");  // failed over
    EXPECT_EQ(modify(11, secondary), "returned 4096");
    EXPECT_EQ(state(secondary), "3/6");  // failing back: the volumes resynchronise
    step("StepClock.Seconds=600");
    EXPECT_EQ(state(secondary).substr(0, 2), "4/");

    // Dissolve asks nothing of the array; detach deletes the group, and the
    // pair with it, while the local volumes stay.
    EXPECT_EQ(modify(9, primary), "returned 0");
    EXPECT_EQ(state(primary), "4/2");
    EXPECT_EQ(modify(8, primary), "returned 0");
    EXPECT_THROW(client.getInstance("root/zda", group("rcg_fin_sync")), CIMException);
    EXPECT_EQ(volume("fin_app01").getClassName().getString(), "ZDA_StorageVolume");
    step("UseRealClock");
}

}  // namespace
