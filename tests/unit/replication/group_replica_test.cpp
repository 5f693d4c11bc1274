// Replicas of whole groups through the replication service: clones and
// snapshots of vvsets (given or made of volumes), and remote mirrors made
// as new remote copy groups, over the simulator's test arrays.
#include "replication_fixture.h"

#include "RemoteCopyTestArray.h"
#include "ZDA_StoragePoolProvider.h"

using namespace zda_replication_test;

namespace
{

// The admission workers, opened for the tests.
class AdmissionWorkers : public ZDA_ReplicationServiceProvider
{
public:
    // "<code>: <text>" of admitting the volumes to the group.
    std::string admit(const char* group, std::initializer_list<const char*> volumes)
    {
        api_evtparam_t event{};
        Array<String> names;
        for (const char* v : volumes)
            names.append(v);
        String relationship, errStr;
        const int code = _admitRCopyVVs(&event, String(group), names, relationship, errStr);
        return std::to_string(code) + ": " + text(errStr);
    }
};

class GroupReplicaTest : public ReplicationTest
{
protected:
    // The names of the array's vvsets, each a replication group.
    Labels setNames() { return labels(namesOf("ZDA_ReplicationGroup")); }
};

// ---- clones and snapshots of local groups -----------------------------------------------

TEST_F(GroupReplicaTest, LocalLegRefusalsMakeNothing)
{
    const CIMValue set1(vvset("set1"));
    struct Case
    {
        const char* method;
        Array<CIMParamValue> in;
        const char* outcome;
    };
    const Case cases[] = {
        {"CreateGroupReplica",
            args({{"SyncType", u16(7)}, {"SourceGroup", set1}, {"SourceGroupName", str("set_one")}}),
            "thrown 5: SourceGroup and SourceGroupName must not be specified together unless "
            "they refer to the same group."},
        {"CreateGroupReplicaFromElements",
            args({{"SyncType", u16(8)}, {"SourceGroupName", str("set1")},
                {"SourceElements", volumes({"vol3"})}}),
            "thrown 5: SourceGroupName for an existing vvset and SourceElements must not be "
            "specified together"},
        {"CreateGroupReplica", args({{"SyncType", u16(7)}, {"SourceGroupName", str("no_such_set")}}),
            "thrown 5: SourceGroup parameter must be specified."},
        {"CreateGroupReplicaFromElements",
            args({{"SyncType", u16(7)}, {"SourceGroupName", str("no_such_set")}}),
            "thrown 5: The SourceGroup or SourceElements parameters must be specified."},
        {"CreateGroupReplica",
            args({{"SyncType", u16(8)}, {"SourceGroup", set1}, {"TargetAccessPoint", CIMValue(sap("t1"))}}),
            "thrown 5: The TargetAccessPoint reference is not used with this SyncType"},
        {"ZDA_CreateGroupReplica",
            args({{"SyncType", u16(7)}, {"Consistency", u16(2)}, {"SourceGroup", set1}}),
            "thrown 5: Only sequential consistency is supported"},
        {"CreateGroupReplica",
            args(
                {{"SyncType", u16(8)}, {"SourceGroup", set1}, {"TargetGroup", CIMValue(rcopyGroup("rcg1"))}}),
            "thrown 5: TargetGroup contains invalid object path"},
        {"CreateGroupReplica", args({{"SourceGroup", CIMValue(vvset("missing_set"))}}),
            "thrown 5: Cannot find the SourceGroup replication group"},
        {"CreateGroupReplica", args({{"SyncType", u16(6)}, {"SourceGroup", set1}}),
            "thrown 5: SyncType/Mode combination not supported"},
        {"ZDA_CreateGroupReplica", args({{"SourceGroup", set1}}),
            "thrown 5: SyncType/Mode combination not supported"},
        {"CreateGroupReplica",
            args({{"SyncType", u16(7)}, {"WaitForCopyState", u16(8)}, {"SourceGroup", set1}}),
            "thrown 5: Only waitForCopyState sync is supported for virtual copy"},
        {"CreateGroupReplica",
            args({{"SyncType", u16(8)}, {"WaitForCopyState", u16(3)}, {"SourceGroup", set1}}),
            "thrown 5: Only waitForCopyState Sync and Inactive are are supported for physical copy"},
        {"CreateGroupReplica", Array<CIMParamValue>(), "thrown 5: Invalid number of parameters"},
    };
    const Labels before = setNames();
    zdasim_journal_clear();
    for (const Case& c : cases)
        EXPECT_EQ(outcome(c.method, c.in), c.outcome) << c.method;
    EXPECT_EQ(setNames(), before);
    EXPECT_EQ(zdasim_journal_count_of("api_createPhysicalCopy") +
            zdasim_journal_count_of("api_createGroupSV") + zdasim_journal_count_of("api_createVVSet"),
        0u);
}

TEST_F(GroupReplicaTest, SnapshotOutputsFollowTheMethod)
{
    // The set's own name given again as SourceGroupName is no conflict.
    EXPECT_EQ(outcome("CreateGroupReplica",
                  args({{"SyncType", u16(7)}, {"SourceGroup", CIMValue(vvset("set1"))},
                      {"SourceGroupName", str("set1")}, {"RelationshipName", str("s1")}})),
        "returned 0");
    EXPECT_FALSE(outParam(out, "Synchronization").isNull());
    EXPECT_TRUE(outParam(out, "Synchronizations").isNull());
    EXPECT_TRUE(outParam(out, "TargetElements").isNull());
    EXPECT_TRUE(outParam(out, "Job").isNull());
    EXPECT_FALSE(volume("s1_1").getClassName().isNull());
    EXPECT_FALSE(volume("s1_2").getClassName().isNull());

    EXPECT_EQ(outcome("ZDA_CreateGroupReplica",
                  args({{"SyncType", u16(7)}, {"SourceGroup", CIMValue(vvset("set1"))},
                      {"RelationshipName", str("s2")}})),
        "returned 0");
    EXPECT_EQ(outPaths("Synchronizations").size(), 2u);
    EXPECT_EQ(outPaths("TargetElements").size(), 2u);
    EXPECT_TRUE(outParam(out, "Synchronization").isNull());
    EXPECT_TRUE(outParam(out, "Jobs").isNull());
}

TEST_F(GroupReplicaTest, SetsMadeOfElementsGetGeneratedNames)
{
    EXPECT_EQ(outcome("CreateGroupReplicaFromElements",
                  args({{"SyncType", u16(7)}, {"SourceElements", volumes({"vol1", "vol3"})}})),
        "returned 0");
    const std::string source = outText("SourceGroupName");
    EXPECT_EQ(source.size(), 25u) << source;
    EXPECT_EQ(source.rfind("smisCreated.", 0), 0u) << source;
    EXPECT_EQ(label(outPath("SourceGroup")), source);
    EXPECT_NE(setMembers(source.c_str()), NO_SET);

    // A name no set has yet names the set made of the elements.
    EXPECT_EQ(outcome("CreateGroupReplicaFromElements",
                  args({{"SyncType", u16(7)}, {"SourceGroupName", str("named_set")},
                      {"SourceElements", volumes({"vol2"})}})),
        "returned 0");
    EXPECT_EQ(outText("SourceGroupName"), "named_set");
    EXPECT_NE(setMembers("named_set"), NO_SET);

    // A clone's target set is named after its source, cut to 20 characters.
    EXPECT_EQ(outcome("CreateGroupReplica",
                  args({{"SyncType", u16(8)}, {"SourceGroup", CIMValue(vvset("set_dom2"))}})),
        "returned 4096");
    const std::string target = label(outPath("TargetGroup"));
    EXPECT_EQ(target.size(), 25u) << target;
    EXPECT_EQ(target.rfind("copyOfset_dom2.", 0), 0u) << target;
    EXPECT_NE(setMembers(target.c_str()), NO_SET);
}

TEST_F(GroupReplicaTest, CloneOutputsAndJobsByMethod)
{
    for (const char* method : {"CreateGroupReplica", "ZDA_CreateGroupReplica"})
    {
        // The standard method answers with one job and synchronization too.
        const bool single = std::string(method) == "CreateGroupReplica";
        EXPECT_EQ(outcome(method,
                      args({{"SyncType", u16(8)}, {"Mode", u16(2)}, {"WaitForCopyState", u16(8)},
                          {"SourceGroup", CIMValue(vvset("set1"))}})),
            "returned 4096")
            << method;
        EXPECT_EQ(outPaths("Jobs").size(), 2u) << method;
        EXPECT_EQ(outParam(out, "Job").isNull(), !single) << method;
        EXPECT_EQ(outParam(out, "Synchronization").isNull(), !single) << method;
        // The set this call made, and the same set once the copy started.
        Uint32 targetGroups = 0;
        for (Uint32 i = 0; i < out.size(); i++)
            targetGroups += String::equalNoCase(out[i].getParameterName(), "TargetGroup");
        EXPECT_EQ(targetGroups, 2u) << method;
        EXPECT_EQ(lastJournalArgument("api_createPhysicalCopy", "flags"),
            std::to_string(API_PCOPY_INACTIVE | API_PCOPY_CREATE_TARGET))
            << method;
    }
}

TEST_F(GroupReplicaTest, FailedCopiesTakeAwayTheSetsTheyMade)
{
    struct Case
    {
        int syncType;
        int code;
        const char* fault;
        const char* outcome;
    };
    const Case cases[] = {
        {8, 68, "api_createPhysicalCopy", "thrown 6: source busy"},
        {8, 22, "api_createPhysicalCopy", "thrown 4: source busy"},
        {7, 68, "api_createGroupSV", "thrown 6: source busy"},
    };
    for (const Case& c : cases)
    {
        const Labels before = setNames();
        zdasim_fault_add(c.fault, 1, c.code, "source busy");
        EXPECT_EQ(
            outcome("CreateGroupReplicaFromElements",
                args({{"SyncType", u16(Uint16(c.syncType))}, {"SourceElements", volumes({"vol4", "vol5"})}})),
            c.outcome)
            << c.fault;
        EXPECT_EQ(setNames(), before) << c.fault;
        zdasim_faults_clear();
    }
}

// ---- remote mirrors ---------------------------------------------------------------------

class MirrorTest : public GroupReplicaTest
{
protected:
    void SetUp() override
    {
        GroupReplicaTest::SetUp();
        loadArray(zda_test::remoteCopyTestArray());
        for (const char* name : {"mv1", "mv2", "mv3", "mirror_source_volume_with27"})
            ASSERT_EQ(zdasim_volume_add(name, "FC_r5", "", 1024), 0) << name;
        service = namesOf("ZDA_ReplicationService")[0];
    }

    // A mirror request that passes every check, with `change` applied.
    Array<CIMParamValue> mirror(std::initializer_list<std::pair<const char*, CIMValue>> change,
        std::initializer_list<const char*> drop = {})
    {
        const Array<CIMParamValue> base = args(
            {{"SyncType", u16(6)}, {"SourceElements", volumes({"mv1", "mv2", "mv3"})},
                {"TargetPool", CIMValue(ZDA_StoragePoolProvider::buildObjectPath("FC_r5", "peer1"))},
                {"TargetAccessPoint", CIMValue(sap("tReady"))}});
        Array<CIMParamValue> in;
        for (Uint32 i = 0; i < base.size(); i++)
        {
            bool keep = true;
            for (const char* d : drop)
                keep = keep && !String::equalNoCase(base[i].getParameterName(), d);
            for (const auto& c : change)
                keep = keep && !String::equalNoCase(base[i].getParameterName(), c.first);
            if (keep)
                in.append(base[i]);
        }
        in.appendArray(args(change));
        return in;
    }
    static CIMValue supplier(Uint16 value)
    {
        CIMInstance data("CIM_ReplicationSettingData");
        data.addProperty(CIMProperty("TargetElementSupplier", CIMValue(value)));
        return CIMValue(data);
    }
};

TEST_F(MirrorTest, RefusalsComeInTheirOrder)
{
    const std::string name27(27, 'r');
    struct Case
    {
        Array<CIMParamValue> in;
        const char* outcome;
    };
    const Case cases[] = {
        {mirror({{"WaitForCopyState", u16(8)}}, {"TargetPool"}),
            "thrown 5: The TargetPool reference must be specified for SyncType mirror."},
        {mirror({{"WaitForCopyState", u16(8)}, {"SourceGroup", CIMValue(rcopyGroup("gEmpty"))}}),
            "thrown 5: Only waitForCopyState Unsync is supported for SyncType mirror"},
        {mirror({{"SourceGroup", CIMValue(rcopyGroup("gEmpty"))}}, {"TargetAccessPoint"}),
            "thrown 5: The SourceGroup reference parameters must not be specified for SyncType "
            "mirror."},
        {mirror({{"RelationshipName", str(name27 + "x")}}, {"TargetAccessPoint"}),
            "thrown 5: The TargetAccessPoint reference must be specified for SyncType mirror."},
        {mirror({{"RelationshipName", str(name27 + "x")}, {"ReplicationSettingData", supplier(3)}}),
            "thrown 5: The size of the RelationshipName must be less than 28"},
        {mirror({{"ReplicationSettingData", supplier(3)}}),
            "thrown 5: ReplicationSettingData.TargetElementSupplier must be \"Create New (2)\"must "
            "be specified for SyncType mirror."},
        {mirror({{"TargetPool", CIMValue(ZDA_StoragePoolProvider::buildObjectPath("", "peer1"))}}),
            "thrown 5: Unable to determine Target User and SNAP CPG from TargetPool or "
            "TargetSettingGoal"},
        {mirror({}, {"SourceElements"}), "thrown 5: SourceElements must be specified."},
        {mirror({{"TargetAccessPoint", CIMValue(sap("tFailed"))}}),
            "thrown 5: Cannot determine rcopy target from TargetAccessPoint :No remote copy "
            "target is configured for provided Service Access Point"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(outcome("CreateGroupReplicaFromElements", c.in), c.outcome);
    EXPECT_EQ(zdasim_journal_count_of("api_createRCopyGroup"), 0u);
}

TEST_F(MirrorTest, APeriodicMirrorIsCreatedAdmittedAndStarted)
{
    EXPECT_EQ(
        outcome("CreateGroupReplicaFromElements", mirror({{"RelationshipName", str("dr")}})), "returned 0");
    EXPECT_EQ(outText("SourceGroupName"), "dr");
    EXPECT_EQ(label(outPath("SourceGroup")), "dr");
    EXPECT_EQ(outPath("SourceGroup").getClassName().getString(), "ZDA_RemoteReplicationGroup");
    EXPECT_EQ(outText("TargetGroupName"), "dr.r");
    EXPECT_FALSE(outPath("Synchronization").getClassName().isNull());
    EXPECT_FALSE(outPath("TargetGroup").getClassName().isNull());
    EXPECT_TRUE(outParam(out, "Job").isNull());

    const GroupView view = rcopyGroupView("dr");
    EXPECT_TRUE(view.started);
    EXPECT_EQ(view.target, "tReady");
    EXPECT_EQ(view.mode, 8u);
    EXPECT_EQ(view.period, 300u);
    EXPECT_EQ(view.volumes, (std::vector<std::string>{"mv1", "mv2", "mv3"}));
    EXPECT_EQ(view.remoteNames, (std::vector<std::string>{"dr_1", "dr_2", "dr_3"}));
    EXPECT_EQ(lastJournalArgument("api_createRCopyGroup", "domain"), "dom1");
    EXPECT_EQ(lastJournalArgument("api_createRCopyGroup", "usercpg"), "FC_r5");
    EXPECT_EQ(lastJournalArgument("api_createRCopyGroup", "targets[0].usercpg"), "FC_r5");
    EXPECT_EQ(lastJournalArgument("api_setRCopyGroup", "value"), "300");
    EXPECT_EQ(lastJournalArgument("api_admitRCopyVV", "vv_add_flags"), "4");
}

TEST_F(MirrorTest, TheLongestRelationshipNameNamesGroupAndFarVolumes)
{
    const std::string name(27, 'n');
    EXPECT_EQ(
        outcome("CreateGroupReplicaFromElements", mirror({{"RelationshipName", str(name)}})), "returned 0");
    const GroupView view = rcopyGroupView(name);
    EXPECT_TRUE(view.started);
    EXPECT_EQ(view.remoteNames, (std::vector<std::string>{name + "_1", name + "_2", name + "_3"}));
    EXPECT_EQ(outText("TargetGroupName"), name + ".r");
}

TEST_F(MirrorTest, ASynchronousMirrorTakesASuitingTargetAndNamesItsVolumes)
{
    // The asynchronous-only access point gives way to the first target of
    // the same system that names synchronous mirrors.
    EXPECT_EQ(outcome("CreateGroupReplicaFromElements",
                  mirror({{"Mode", u16(2)}, {"TargetAccessPoint", CIMValue(sap("tAsyncOnly"))},
                      {"SourceElements", volumes({"mirror_source_volume_with27"})}})),
        "returned 0");
    const std::string name = outText("SourceGroupName");
    EXPECT_EQ(name.size(), 22u) << name;
    EXPECT_EQ(name.rfind("smisCreated.", 0), 0u) << name;
    const GroupView view = rcopyGroupView(name);
    EXPECT_EQ(view.target, "tSyncOnly");
    EXPECT_EQ(view.mode, 1u);
    EXPECT_EQ(zdasim_journal_count_of("api_setRCopyGroup"), 0u);
    // 27 characters leave room for only the first four of the suffix.
    EXPECT_EQ(view.remoteNames, (std::vector<std::string>{"mirror_source_volume_with27_rem"}));
}

TEST_F(MirrorTest, ArrayFailuresLeaveTheGroupAsFarAsItGot)
{
    struct Case
    {
        const char* fault;
        bool exists;
        size_t volumes;
        bool started;
    };
    const Case cases[] = {
        {"api_createRCopyGroup", false, 0, false},
        {"api_setRCopyGroup", true, 0, false},
        {"api_admitRCopyVV", true, 0, false},
        {"api_startRCopyGroup", true, 3, false},
    };
    int n = 0;
    for (const Case& c : cases)
    {
        const std::string name = "fail" + std::to_string(++n);
        zdasim_fault_add(c.fault, 1, 22, "array says no");
        EXPECT_EQ(outcome("CreateGroupReplicaFromElements", mirror({{"RelationshipName", str(name)}})),
            "thrown 4: array says no")
            << c.fault;
        zdasim_faults_clear();
        const GroupView view = rcopyGroupView(name);
        EXPECT_EQ(view.exists, c.exists) << c.fault;
        EXPECT_EQ(view.volumes.size(), c.volumes) << c.fault;
        EXPECT_EQ(view.started, c.started) << c.fault;
        // The volumes go free for the next case.
        if (view.exists)
        {
            EXPECT_EQ(
                outcome("DeleteGroup", args({{"ReplicationGroup", CIMValue(rcopyGroup(name.c_str()))}})),
                "returned 0")
                << c.fault;
        }
    }
}

TEST_F(MirrorTest, VolumesJoinAnExistingGroup)
{
    AdmissionWorkers& workers = directService<AdmissionWorkers>();
    EXPECT_EQ(
        workers.admit("no_such_group", {"mv1"}), "7: RemoteReplicationGroup no_such_group does not exist");
    EXPECT_EQ(workers.admit("gEmpty", {"mv1", "mv2"}), "0: ");
    const GroupView view = rcopyGroupView("gEmpty");
    EXPECT_EQ(view.volumes, (std::vector<std::string>{"mv1", "mv2"}));
    EXPECT_EQ(view.remoteNames, (std::vector<std::string>{"mv1_remote", "mv2_remote"}));
    zdasim_fault_add("api_getRCopy", 1, 22, "unreadable");
    EXPECT_EQ(workers.admit("gEmpty", {"mv3"}), "4: Cannot read rcopy group: unreadable");
    expectLedgersClean("admission into an existing group");
}

TEST_F(MirrorTest, ACloneOfARemoteGroupCopiesItsLocalVolumes)
{
    EXPECT_EQ(outcome("CreateGroupReplica",
                  args({{"SyncType", u16(8)}, {"SourceGroup", CIMValue(rcopyGroup("gTwo"))}})),
        "returned 4096");
    EXPECT_EQ(outPaths("Jobs").size(), 2u);
    EXPECT_EQ(label(outPath("TargetGroup")).rfind("copyOfgTwo.", 0), 0u);
}

}  // namespace
