// Group creation and deletion and the search for copy targets, as clients
// call them on the replication service, over the simulator's test array.
#include "replication_fixture.h"

using namespace zda_replication_test;

namespace
{

// The service's workers that other methods share, opened for the tests.
class ServiceWorkers : public ZDA_ReplicationServiceProvider
{
public:
    // "<code>: <text>" of removing the set and its volumes; the audit
    // record kept in `event`.
    std::string deleteSet(const char* name)
    {
        String errStr;
        const int code = _deleteGroupAndMembers(&event, name, errStr);
        return std::to_string(code) + ": " + text(errStr);
    }
    // "<code>: <text>" of making an empty set with these options.
    std::string createGroup(const char* name, const Array<String>& keys, const Array<String>& values)
    {
        Array<CIMObjectPath> noMembers;
        CIMObjectPath made;
        String errStr;
        const int code = _createGroup(&event, name, noMembers, keys, values, made, errStr);
        return std::to_string(code) + ": " + text(errStr);
    }
    api_evtparam_t event{};
};

class GroupMethodsTest : public ReplicationTest
{
protected:
    ServiceWorkers& directService() { return ReplicationTest::directService<ServiceWorkers>(); }

    bool volumeExists(const char* name) { return !volume(name).getClassName().isNull(); }
};

TEST_F(GroupMethodsTest, CreateGroupMakesAVvsetOrRefuses)
{
    // Names compare without case; a null value counts as absent.
    EXPECT_EQ(outcome("CreateGroup",
                  args({{"GroupName", str("grp_new")}, {"members", volumes({"vol1", "vol3"})},
                      {"Persistent", CIMValue(true)}, {"DeleteOnEmptyElement", CIMValue()}})),
        "returned 0");
    EXPECT_TRUE(ZDA_Common::matchObjectPath(outPath("ReplicationGroup"), vvset("grp_new")));
    EXPECT_EQ(setMembers("grp_new"), Names({"vol1", "vol3"}));
    EXPECT_EQ(outcome("CreateGroup", args({{"GroupName", str("grp_empty")}})), "returned 0");
    EXPECT_EQ(setMembers("grp_empty"), Names());

    const CIMValue name(String("grp_refused"));
    const std::pair<Array<CIMParamValue>, std::string> refusals[] = {
        {args({}), "thrown 5:  Invalid number of parameters"},
        // Refused by the return value alone, without a text.
        {args({{"GroupName", name}, {"Persistent", CIMValue(false)}}), "returned 5"},
        {args({{"GroupName", name}, {"DeleteOnEmptyElement", CIMValue(true)}}),
            "thrown 5: DeleteOnEmptyElement can only be false"},
        {args({{"GroupName", name}, {"Members", refs({vvset("set1")})}}),
            "thrown 5: Members parameter contains invalid object path"},
        {args({{"GroupName", name}, {"Members", refs({unknownVolume("vol1")})}}),
            "thrown 5: Cannot find one or more of the volumes in Members"},
        {args({{"Persistent", CIMValue(true)}}), "thrown 5: GroupName has to be specified"},
        {args({{"GroupName", str("set1")}}), "thrown 4: VV set set1 already exists"},
    };
    for (const auto& r : refusals)
    {
        EXPECT_EQ(outcome("CreateGroup", r.first), r.second);
        EXPECT_EQ(out.size(), 0u) << r.second;
        EXPECT_EQ(setMembers("grp_refused"), NO_SET);
    }
}

TEST_F(GroupMethodsTest, DeleteGroupOfAVvsetKeepsItsVolumes)
{
    auto deleteGroup = [&](const char* set, const CIMValue& removeElements) {
        Array<CIMParamValue> in = args({{"ReplicationGroup", CIMValue(vvset(set))}});
        if (!removeElements.isNull())
            in.append(CIMParamValue("RemoveElements", removeElements));
        return outcome("DeleteGroup", in);
    };
    EXPECT_EQ(deleteGroup("set1", CIMValue(false)), "thrown 6: Cannot remove Group because it is not empty");
    EXPECT_EQ(setMembers("set1"), Names({"vol1", "vol2"}));
    EXPECT_EQ(deleteGroup("set_empty", CIMValue(false)), "returned 0");
    EXPECT_EQ(deleteGroup("set1", CIMValue()), "returned 0");  // RemoveElements true by default
    EXPECT_EQ(setMembers("set1"), NO_SET);
    EXPECT_EQ(setMembers("set_empty"), NO_SET);
    EXPECT_TRUE(volumeExists("vol1") && volumeExists("vol2"));

    EXPECT_EQ(
        deleteGroup("no_such_set", CIMValue(true)), "thrown 5: Cannot find the specified replication group");
    EXPECT_EQ(outcome("DeleteGroup", args({{"RemoveElements", CIMValue(true)}})),
        "thrown 5: ReplicationGroup has to be specified");
    EXPECT_EQ(outcome("DeleteGroup", args({{"ReplicationGroup", CIMValue(volume("vol3"))}})),
        "thrown 5: ReplicationGroup parameter contains invalid object path");
    EXPECT_EQ(zdasim_journal_count_of("api_removeVVSet"), 2u);
}

TEST_F(GroupMethodsTest, DeletingASetWithItsMembersWaitsForBusyVolumes)
{
    // vol1 has snapshots: it cannot go.
    ASSERT_EQ(
        outcome("CreateGroup", args({{"GroupName", str("mixed")}, {"Members", volumes({"vol3", "vol1"})}})),
        "returned 0");

    ASSERT_EQ(zdasim_volume_set_busy("vol4", 1), 0);
    EXPECT_EQ(directService().deleteSet("set_dom2"), "0: ");
    EXPECT_EQ(zdasim_journal_count_of("api_removeVVs"), 2u);  // busy once, then removed
    EXPECT_FALSE(volumeExists("vol4") || volumeExists("vol5"));
    EXPECT_STREQ(directService().event.inst_op, "set_dom2");

    const std::pair<const char*, const char*> cases[] = {
        {"set_dom2", "4: ReplicationGroup set_dom2 does not exist"},
        {"mixed", "32768: Failed to remove all volumes in vvset mixed"},
        {"set1", "4: Failed to remove volumes in vvset set1"},  // both have copies
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(directService().deleteSet(c.first), c.second);
        EXPECT_EQ(setMembers(c.first), NO_SET);
        expectLedgersClean(c.first);
    }
    EXPECT_FALSE(volumeExists("vol3"));
    EXPECT_TRUE(volumeExists("vol1"));
}

TEST_F(GroupMethodsTest, OptionTimeOutFailsTheNewSetLikeAnyArrayCall)
{
    zdasim_fault_sem_timeouts(1);
    EXPECT_EQ(
        directService().createGroup("with_opts", Array<String>(1, "smisCreated"), Array<String>(1, "1")),
        "4: Semaphore Timed-Out");
    EXPECT_EQ(setMembers("with_opts"), NO_SET);
    expectLedgersClean("with_opts");
}

// A GetAvailableTargetElements call: source volume, sync type, the pools.
Array<CIMParamValue> targetQuery(const CIMObjectPath& source, Uint16 syncType, const char* pool = nullptr)
{
    Array<CIMParamValue> in = args({{"SourceElement", CIMValue(source)}, {"SyncType", CIMValue(syncType)},
        {"Mode", CIMValue(Uint16(2))}});
    if (pool)
        in.append(CIMParamValue("TargetPools",
            CIMValue(Array<CIMObjectPath>(1,
                CIMObjectPath(String("//") + HOST +
                    "/root/zda:ZDA_DeltaReplicaStoragePool"
                    ".InstanceID=\"KX_ORLA:SNAP:" +
                    pool + "\"")))));
    return in;
}

TEST_F(GroupMethodsTest, AvailableTargetsAreWorkingBaseVolumesAtLeastAsLarge)
{
    // vol1: 10240 MiB, snapshot space in FC_r1. Copies, the system volume
    // and smaller volumes do not qualify; one of the same size does.
    ASSERT_EQ(zdasim_volume_add("same", "FC_r5", "", 10240), 0);
    ASSERT_EQ(zdasim_volume_add("smaller", "FC_r5", "", 10239), 0);
    const Labels larger = {"same", "vol2", "vol4", "vol5"};
    zdasim_log_capture(1);
    for (const char* pool : {(const char*)nullptr, "FC_r1"})
    {
        EXPECT_EQ(outcome("GetAvailableTargetElements", targetQuery(volume("vol1"), 8, pool)), "returned 0");
        EXPECT_EQ(labels(outPaths("Candidates")), larger);
    }
    // Its trace lines carry the name of the relationships method, as
    // operators' log filters expect.
    std::set<std::string> traces;
    for (const auto& line : zda_test::logLines())
        if (line.first == 4)
            traces.insert(line.second);
    zdasim_log_capture(0);
    EXPECT_EQ(traces.count("--> ZDA_ReplicationServiceProvider:: _getReplicationRelationships"), 1u);
    EXPECT_EQ(traces.count("<-- ZDA_ReplicationServiceProvider:: _getReplicationRelationships"), 1u);

    // Answered 0 without a list: no snapshot space, another pool, a snapshot.
    for (const Array<CIMParamValue>& in : {targetQuery(volume("vol3"), 8),
             targetQuery(volume("vol1"), 8, "NL_r6"), targetQuery(volume("vol3"), 7)})
    {
        EXPECT_EQ(outcome("GetAvailableTargetElements", in), "returned 0");
        EXPECT_EQ(out.size(), 0u);
    }

    CIMObjectPath elsewhere = volume("vol3");
    elsewhere.setHost("elsewhere.example");
    Array<CIMParamValue> noMode = targetQuery(volume("vol1"), 8);
    noMode.remove(2);
    for (const Array<CIMParamValue>& in :
        {targetQuery(vvset("set1"), 8), targetQuery(elsewhere, 8), noMode, args({})})
        EXPECT_EQ(outcome("GetAvailableTargetElements", in).substr(0, 9), "thrown 5:");
}

}  // namespace
