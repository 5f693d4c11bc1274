// Making and changing local replicas through the replication service:
// clones and snapshots of one volume, of lists and of groups, and the
// operations on lists of local copies, over the simulator's test array.
#include "replication_fixture.h"

#include <ctime>

#include "ZDA_StorageSettingProvider.h"

using namespace zda_replication_test;

namespace
{

// The group snapshot's workers, opened for the tests.
class SnapshotWorkers : public ZDA_ReplicationServiceProvider
{
public:
    // A snapshot of the group at `set` named `name`: "0" or "<code>: <the
    // array's text>"; what it made is kept in the members.
    std::string groupSnapshot(const CIMObjectPath& set, String& name)
    {
        api_evtparam_t event{};
        CIMObjectPath setRef = set, pool;
        CIMInstance goal;
        targets.clear();
        syncs.clear();
        const api_Status_t status = _createGroupVirtualCopy(
            &event, OperationContext(), setRef, name, pool, goal, targets, syncs, made);
        char errText[API_ERRTEXT_LEN];
        return status.code
            ? std::to_string(status.code) + ": " + api_getErrorTextNoNL(errText, sizeof errText, &status)
            : "0";
    }
    Array<CIMObjectPath> targets, syncs;
    CIMObjectPath made;
};

class ReplicaMethodsTest : public ReplicationTest
{
protected:
    // The provider as an object of the test, with a recording handler, to
    // see where processing() falls; "<handler events> | <code thrown>".
    std::string sequenceDirect(const char* method, const Array<CIMParamValue>& in)
    {
        zda_test::RecordingResponseHandler handler;
        const int thrown = cimErrorOf(
            [&] { directService().invokeMethod(admin(), service, method, in, handler); });
        expectLedgersClean(method);
        return handler.sequence() + " | " + std::to_string(thrown);
    }
    SnapshotWorkers& directService() { return ReplicationTest::directService<SnapshotWorkers>(); }

    std::string nameOf(const CIMObjectPath& volumePath)
    {
        return text(get<String>(getInstance(volumePath), "ElementName"));
    }
    size_t volumeCount() { return volumePaths().size(); }
};

TEST_F(ReplicaMethodsTest, CreateElementReplicaRefusesBeforeItStarts)
{
    const CIMValue clone = u16(8);
    const CIMValue snapshot = u16(7);
    const CIMValue source(volume("vol3"));
    const CIMValue setRef(vvset("set1"));
    const CIMValue foreignPool(CIMObjectPath("root/other:ZDA_DynamicStoragePool.InstanceID=\"x\""));
    const CIMValue noSetting(ZDA_StorageSettingProvider::buildObjectPath("nope", HOST));
    const std::pair<Array<CIMParamValue>, std::string> cases[] = {
        {args({}), "thrown 5: Invalid number of parameters"},
        {args({{"SyncType", CIMValue()}, {"Mode", CIMValue()}}),
            "thrown 5: SyncType/Mode combination not supported"},
        // A mirror has a right only when Mode is given: then it has none.
        {args({{"SyncType", u16(6)}}), "thrown 5: Only SyncType Snapshot and Clone is supported"},
        {args({{"SyncType", u16(6)}, {"Mode", u16(2)}}), "thrown 7: Does not support!"},
        {args({{"SyncType", snapshot}, {"Mode", u16(4)}}), "thrown 5: Only Mode Sync or Async are supported"},
        {args({{"SyncType", clone}, {"SourceElement", setRef}}),
            "thrown 5: SourceElement contains invalid object path"},
        {args({{"SyncType", clone}, {"TargetElement", setRef}, {"SourceElement", setRef}}),
            "thrown 5: TargetElement contains invalid object path"},
        {args({{"SyncType", clone}, {"TargetPool", foreignPool}}),
            "thrown 5: TargetPool contains invalid object path"},
        {args({{"SyncType", clone}, {"TargetSettingGoal", source}}),
            "thrown 5: TargetSettingGoal contains invalid object path"},
        {args({{"SyncType", clone}, {"TargetSettingGoal", noSetting}}),
            "thrown 5: TargetSettingGoal not found"},
        {args({{"SyncType", clone}, {"WaitForCopyState", u16(5)}}),
            "thrown 5: Only waitForCopyState Inactive, Unsync and Sync is supported"},
        {args({{"SyncType", snapshot}, {"SourceElement", source}, {"WaitForCopyState", u16(8)}}),
            "thrown 5: Only waitForCopyState sync is supported for virtual copy"},
        {args({{"SyncType", clone}, {"SourceElement", source}, {"WaitForCopyState", u16(3)}}),
            "thrown 5: Only waitForCopyState Sync and Inactive are are supported for physical copy"},
        {args({{"SyncType", clone}, {"Mode", u16(2)}, {"WaitForCopyState", u16(8)}}),
            "thrown 5: Invalid Mode and WaitForCopyState combination"},
        {args({{"SyncType", clone}, {"Mode", u16(3)}, {"WaitForCopyState", u16(4)}}),
            "thrown 5: Invalid Mode and WaitForCopyState combination"},
    };
    const size_t volumesBefore = volumeCount();
    for (const auto& c : cases)
    {
        EXPECT_EQ(outcome("CreateElementReplica", c.first), c.second);
        EXPECT_EQ(out.size(), 0u) << c.second;
    }
    EXPECT_EQ(volumeCount(), volumesBefore);
    EXPECT_EQ(
        zdasim_journal_count_of("api_createPhysicalCopy") + zdasim_journal_count_of("api_createGroupSV"), 0u);
    // A refusal of one volume is thrown before the call is marked as processing.
    EXPECT_EQ(sequenceDirect("CreateElementReplica", args({{"SyncType", u16(6)}})), " | 5");
    EXPECT_EQ(sequenceDirect("CreateElementReplica",
                  args({{"SyncType", clone}, {"Mode", u16(2)}, {"WaitForCopyState", u16(8)}})),
        " | 5");

    // The array's refusals: 68 is in use (6), anything else failed (4).
    for (const auto& failure : {std::make_pair(68, "thrown 6: busy"), std::make_pair(22, "thrown 4: busy")})
    {
        zdasim_fault_add("api_createPhysicalCopy", 1, failure.first, "busy");
        EXPECT_EQ(outcome("CreateElementReplica", args({{"SyncType", clone}, {"SourceElement", source}})),
            failure.second);
    }
    EXPECT_EQ(volumeCount(), volumesBefore);
}

TEST_F(ReplicaMethodsTest, ACloneIsAJobKeptSynchronizedUnlessAskedOtherwise)
{
    // Without Mode and WaitForCopyState the clone is kept synchronized; Mode
    // 3 alone or WaitForCopyState 8 alone leave it inactive.
    struct Case
    {
        std::initializer_list<std::pair<const char*, CIMValue>> extra;
        bool inactive;
    };
    const Case defaults[] = {{{}, false}, {{{"Mode", u16(3)}}, true}, {{{"WaitForCopyState", u16(8)}}, true},
        {{{"Mode", u16(2)}}, false}};
    int n = 0;
    for (const Case& c : defaults)
    {
        Array<CIMParamValue> in = args({{"SyncType", u16(8)}, {"SourceElement", CIMValue(volume("vol3"))},
            {"ElementName", CIMValue(String(("vol3.c" + std::to_string(n++)).c_str()))}});
        for (const auto& p : c.extra)
            in.append(CIMParamValue(p.first, p.second));
        ASSERT_EQ(outcome("CreateElementReplica", in), "returned 4096");
        EXPECT_EQ(
            (std::stoul(lastJournalArgument("api_createPhysicalCopy", "flags")) & API_PCOPY_INACTIVE) != 0,
            c.inactive);
    }

    // The job, the synchronization and the new volume, in that order.
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(text(out[0].getParameterName()), "Job");
    EXPECT_EQ(text(out[1].getParameterName()), "Synchronization");
    EXPECT_EQ(nameOf(outPath("TargetElement")), "vol3.c3");
    EXPECT_TRUE(ZDA_Common::matchObjectPath(
        endOf(outPath("Synchronization"), "SyncedElement"), outPath("TargetElement")));

    // The job follows the array's clock: part-way, then done at 100%.
    const CIMObjectPath job = outPath("Job");
    Uint16 percent = get<Uint16>(getInstance(job), "PercentComplete");
    bool sawPartWay = false;
    for (int step = 0; step < 1000 && get<Uint16>(getInstance(job), "JobState") != 7; step++)
    {
        zdasim_clock_advance(1);
        const Uint16 now = get<Uint16>(getInstance(job), "PercentComplete");
        EXPECT_GE(now, percent);
        sawPartWay = sawPartWay || (now > 0 && now < 100);
        percent = now;
    }
    EXPECT_TRUE(sawPartWay);
    EXPECT_EQ(percent, 100);
}

TEST_F(ReplicaMethodsTest, ASnapshotOfOneVolumeNeedsNoJob)
{
    // Mode is not looked at for a snapshot.
    ASSERT_EQ(outcome("CreateElementReplica",
                  args({{"SyncType", u16(7)}, {"Mode", u16(3)}, {"SourceElement", CIMValue(volume("vol1"))},
                      {"ElementName", str("vol1.s1")}})),
        "returned 0");
    // The copy services' target, then the synchronization and the target again.
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(text(out[1].getParameterName()), "Synchronization");
    EXPECT_EQ(nameOf(outPath("TargetElement")), "vol1.s1");
    EXPECT_TRUE(
        ZDA_Common::matchObjectPath(endOf(outPath("Synchronization"), "SystemElement"), volume("vol1")));
    CIMObjectPath again;
    out[2].getValue().get(again);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(again, volume("vol1.s1")));
}

TEST_F(ReplicaMethodsTest, AListOfSnapshotsIsTakenAtOneInstant)
{
    // The second and third names are searched for: vol2.rw is free, and
    // vol1.rw is taken so the third copy of vol1 is vol1.rw0.
    ASSERT_EQ(outcome("CreateListReplica",
                  args({{"SyncType", u16(7)}, {"SourceElements", volumes({"vol1", "vol2", "vol1"})},
                      {"TargetNames", texts({"vol1.first"})}})),
        "returned 0");
    EXPECT_EQ(zdasim_journal_count_of("api_createGroupSV"), 1u);
    const Array<CIMObjectPath> targets = outPaths("TargetElements");
    ASSERT_EQ(targets.size(), 3u);
    EXPECT_EQ(nameOf(targets[0]), "vol1.first");
    EXPECT_EQ(nameOf(targets[1]), "vol2.rw");
    EXPECT_EQ(nameOf(targets[2]), "vol1.rw0");
    EXPECT_EQ(outPaths("Synchronizations").size(), 3u);

    const size_t volumesBefore = volumeCount();
    const CIMValue setRef(vvset("set1"));
    const std::pair<Array<CIMParamValue>, std::string> refusals[] = {
        {args({{"SyncType", u16(7)}, {"SourceElements", refs({volume("vol1"), CIMObjectPath()})}}),
            "thrown 5: SourceElements contains an invalid object path at index position 1"},
        {args({{"SyncType", u16(8)}, {"TargetElements", volumes({"vol4", "vol5"})},
             {"SourceElements", volumes({"vol3"})}}),
            "thrown 5: If specified, the number of elements in TargetElements must match the number "
            "in SourceElements."},
        {args({{"SyncType", u16(8)}, {"TargetElements", volumes({"vol4"})}, {"ElementNames", texts({"x"})}}),
            "thrown 5: Cannot specify both ElementNames and TargetElements."},
        {args({{"SyncType", u16(7)}, {"TargetElements", volumes({"vol4"})}}),
            "thrown 5: TargetElements is not supported for virtual copy"},
        {args({{"SyncType", u16(7)}}), "thrown 4: source or target names have to be specified"},
        {args({{"SyncType", u16(7)}, {"SourceElements", volumes({"vol1"})},
             {"ElementNames", texts({"a_name_of_thirty_two_characters_"})}}),
            "thrown 4: Target volume name a_name_of_thirty_two_characters_ too long, has to be no "
            "more than 31 characters"},
    };
    for (const auto& r : refusals)
        EXPECT_EQ(outcome("CreateListReplica", r.first), r.second);
    EXPECT_EQ(volumeCount(), volumesBefore);
    // A list's refusal comes after the call was marked as processing.
    EXPECT_EQ(sequenceDirect("CreateListReplica", refusals[0].first), "processing | 5");

    // All or nothing: vol3 cannot get snapshot space, and no copy is made.
    zdasim_fault_add("api_setSnapCPG", 1, 22, "no space");
    EXPECT_EQ(outcome("CreateListReplica",
                  args({{"SyncType", u16(7)}, {"SourceElements", volumes({"vol1", "vol3"})}})),
        "thrown 4: The was a problem assigning Snap space to source volumes.");
    EXPECT_EQ(volumeCount(), volumesBefore);
}

TEST_F(ReplicaMethodsTest, ListClonesReportTheirJobsByMethod)
{
    for (const char* method : {"CreateListReplica", "ZDA_CreateConsistentReplicaList"})
    {
        // Three sources, two names: the third copy's name is left to the array.
        const bool standard = std::string(method) == "CreateListReplica";
        ASSERT_EQ(
            outcome(method,
                args({{"SyncType", u16(8)}, {"SourceElements", volumes({"vol3", "vol4", "vol5"})},
                    {"ElementNames", standard ? texts({"list_a", "list_b"}) : texts({"cons_a", "cons_b"})}})),
            "returned 4096");
        EXPECT_EQ(outParam(out, "Job").isNull(), !standard);
        EXPECT_EQ(outPaths("Jobs").size(), standard ? 0u : 3u);
        ASSERT_EQ(outPaths("TargetElements").size(), 3u);
        EXPECT_NE(nameOf(outPaths("TargetElements")[2]), "");
    }
}

TEST_F(ReplicaMethodsTest, GroupSnapshotNamesAndTimeLimits)
{
    // The relationship name: 24 characters pass, 25 are refused, none
    // gives a generated one of 25 (20 of the set's name, a point, a tail).
    SnapshotWorkers& workers = directService();
    String name = "a_relationship_name_24ch";
    EXPECT_EQ(workers.groupSnapshot(vvset("set1"), name), "0");
    ASSERT_EQ(workers.targets.size(), 2u);
    EXPECT_EQ(nameOf(workers.targets[0]), "a_relationship_name_24ch_1");
    name = String("a_relationship_name_25chr");
    EXPECT_EQ(workers.groupSnapshot(vvset("set1"), name),
        "78: The size of the RelationshipName must be less than 25");
    name.clear();
    EXPECT_EQ(workers.groupSnapshot(vvset("set1"), name), "0");
    EXPECT_EQ(name.size(), 25u);
    EXPECT_EQ(text(name).substr(0, 5), "set1.");
    expectLedgersClean("group snapshot");

    // Expiration and retention as points in time, at their bounds. The
    // clock is read before and after: a call that straddles a second is
    // made again.
    struct Limit
    {
        long expiration;
        long retention;
        const char* expected;
    };
    const Limit limits[] = {
        {3600, 0, "returned 0"},
        {3599, 0, "thrown 4: expiration must be at least 1hr longer"},
        {157680000, 3600, "returned 0"},
        {157680001, 0, "thrown 4: expiration must be no longer than 5 years"},
        {0, 3599, "thrown 4: expiration must be at least 1hr longer"},
        {0, 157680001, "thrown 4: expiration must be no longer than 5 years"},
        {7200, 7200, "returned 0"},
    };
    int n = 0;
    for (const Limit& l : limits)
    {
        std::string result;
        for (int attempt = 0; attempt < 5; attempt++)
        {
            const time_t before = time(nullptr);
            const std::string setting = "limit" + std::to_string(n++);
            auto point = [&](long seconds) { return CIMValue(ZDA_Common::getCIMDateTime(before + seconds)); };
            CIMInstance goalInstance("ZDA_StorageSetting");
            goalInstance.addProperty(CIMProperty("ElementName", CIMValue(String(setting.c_str()))));
            if (l.expiration)
                goalInstance.addProperty(CIMProperty("ExpirationTime", point(l.expiration)));
            if (l.retention)
                goalInstance.addProperty(CIMProperty("RetentionTime", point(l.retention)));
            const CIMObjectPath goalPath = server().createInstance(admin(), ZDA_NS, goalInstance);
            result = outcome("CreateListReplica",
                args({{"SyncType", u16(7)}, {"SourceElements", volumes({"vol1"})},
                    {"ElementNames", texts({("vol1.l" + std::to_string(n)).c_str()})},
                    {"TargetSettingGoal", CIMValue(goalPath)}}));
            if (time(nullptr) == before)
                break;
        }
        EXPECT_EQ(result, l.expected) << l.expiration << " " << l.retention;
    }
}

TEST_F(ReplicaMethodsTest, GroupSnapshotOfARemoteCopyGroupBySide)
{
    zdasim_reset_demo_array();
    SnapshotWorkers& workers = directService();
    // Held here as secondary: the copies of the group's volumes form a new
    // set tied to the group, with one group synchronization.
    String name = "dr_snap";
    ASSERT_EQ(workers.groupSnapshot(rcopyGroup("rcg_dr_secondary"), name), "0");
    ASSERT_EQ(workers.targets.size(), 2u);
    EXPECT_EQ(nameOf(workers.targets[0]), "dr_snap_1");
    ASSERT_EQ(workers.syncs.size(), 1u);
    EXPECT_EQ(text(workers.syncs[0].getClassName().getString()), "ZDA_RemoteGroupSynchronized");
    EXPECT_TRUE(ZDA_Common::matchObjectPath(workers.made, vvset("dr_snap")));
    {
        ZDA_AssociationFrame::VVSetList made;
        ASSERT_EQ(made.read("dr_snap").code, 0);
        ASSERT_EQ(made.size(), 1u);
        EXPECT_EQ(made[0].memberCount, 2);
        EXPECT_TRUE(ZDA_AssociationFrame::hasParentRCGroup(made[0]));
    }
    EXPECT_EQ(workers.groupSnapshot(rcopyGroup("rcg_dr_secondary"), name),
        "78: The target vvset dr_snap already exists.");
    EXPECT_EQ(workers.groupSnapshot(rcopyGroup("rcg_nowhere"), name),
        "78: The rcopy group rcg_nowhere is not found");

    // Held here as primary: the copy services snapshot it, nothing is reported.
    const size_t volumesBefore = volumeCount();
    name = "fin_sync_snap";
    ASSERT_EQ(workers.groupSnapshot(rcopyGroup("rcg_fin_sync"), name), "0");
    EXPECT_EQ(workers.targets.size() + workers.syncs.size(), 0u);
    EXPECT_EQ(volumeCount(), volumesBefore + 2);
    expectLedgersClean("remote group snapshot");
}

TEST_F(ReplicaMethodsTest, ModifyListSynchronizationRefusals)
{
    const CIMValue set1(vvset("set1"));
    const std::pair<Array<CIMParamValue>, std::string> cases[] = {
        {args({}), "thrown 5: Invalid number of parameters"},
        {args({{"Operation", u16(8)}}), "thrown 5: Synchronization or TargetGroup parameter is required"},
        {args({{"Operation", u16(8)}, {"TargetGroup", set1}}),
            "thrown 5: TargetGroup does not require synchronization"},
        {args({{"Operation", u16(8)}, {"TargetGroup", CIMValue(volume("vol1"))}}),
            "thrown 5: TargetGroup parameter contains invalid object path"},
        {args({{"Operation", u16(8)}, {"Synchronization", volumes({"vol1"})}}),
            "thrown 5: Synchronization parameter contains invalid object path"},
        {args({{"Operation", u16(8)}, {"Synchronization", refs({syncOf("vol1.rw"), syncOf("vol2.clone")})}}),
            "thrown 5: All elements of Synchronization array shall have the same SyncType and Mode"},
    };
    const size_t volumesBefore = volumeCount();
    for (const auto& c : cases)
        EXPECT_EQ(outcome("ModifyListSynchronization", c.first), c.second);
    // Operation 4 has no right here: refused before the method looks at it.
    EXPECT_EQ(
        outcome("ModifyListSynchronization", args({{"Operation", u16(4)}})), "thrown 7: Does not support!");
    EXPECT_EQ(volumeCount(), volumesBefore);
}

TEST_F(ReplicaMethodsTest, PerElementOperationsReportEveryElement)
{
    const CIMObjectPath rw = syncOf("vol1.rw");
    const CIMObjectPath ro = syncOf("vol1.ro");
    // The first element's outcome counts whatever the rest do: its 68 is
    // "in use" although the second element was detached.
    zdasim_fault_add("api_removeVVs", 1, 68, "in use");
    EXPECT_EQ(outcome("ModifyListSynchronization",
                  args({{"Operation", u16(8)}, {"Synchronization", refs({rw, ro})}})),
        "thrown 6: " + text(rw.toString()) + ": The snapshot vol1.rw could not be removed (68); " +
            text(ro.toString()) + ": Operation succeeded");
    EXPECT_FALSE(volume("vol1.rw").getClassName().isNull());
    EXPECT_TRUE(volume("vol1.ro").getClassName().isNull());
    // A later plain failure overrides a first success: the second copy is
    // busy and cannot be removed, the first is.
    ASSERT_EQ(outcome("CreateElementReplica",
                  args({{"SyncType", u16(7)}, {"SourceElement", CIMValue(volume("vol1"))},
                      {"ElementName", str("vol1.s2")}})),
        "returned 0");
    zdasim_volume_set_busy("vol1.s2", 1);
    EXPECT_EQ(outcome("ModifyListSynchronization",
                  args({{"Operation", u16(9)}, {"Synchronization", refs({rw, syncOf("vol1.s2")})}}))
                  .substr(0, 9),
        "thrown 4:");
    EXPECT_TRUE(volume("vol1.rw").getClassName().isNull());
    EXPECT_FALSE(volume("vol1.s2").getClassName().isNull());
}

TEST_F(ReplicaMethodsTest, ListOperationsAndTheReturnToThePool)
{
    // Resync of a list is one call; a caller's list gets Job, a group's Jobs.
    const CIMObjectPath clone = syncOf("vol2.clone");
    EXPECT_EQ(outcome("ModifyListSynchronization",
                  args({{"Operation", u16(14)}, {"Synchronization", refs({clone})}})),
        "returned 4096");
    EXPECT_FALSE(outParam(out, "Job").isNull());
    zdasim_clock_advance(86400);
    ASSERT_EQ(
        outcome("CreateGroup", args({{"GroupName", str("clones")}, {"Members", volumes({"vol2.clone"})}})),
        "returned 0");
    const CIMValue clones(vvset("clones"));
    EXPECT_EQ(outcome("ZDA_ModifyGroupReplicaSynchronization",
                  args({{"Operation", u16(14)}, {"TargetGroup", clones}})),
        "returned 4096");
    EXPECT_TRUE(outParam(out, "Job").isNull());
    EXPECT_EQ(outPaths("Jobs").size(), 1u);
    zdasim_clock_advance(86400);
    // The array's codes 76, 77 and 80 are an invalid parameter.
    zdasim_fault_add("api_resyncCopy", 1, 80, "bad value");
    EXPECT_EQ(outcome("ModifyListSynchronization",
                  args({{"Operation", u16(14)}, {"Synchronization", refs({clone})}})),
        "thrown 5: bad value");

    // Some volumes of a return not deleted: 32768 with the array's text.
    zdasim_fault_add("api_removeVVs", 1, 89, "some volumes stayed");
    EXPECT_EQ(outcome("ModifyListSynchronization",
                  args({{"Operation", u16(19)}, {"Synchronization", refs({syncOf("vol1.rw")})}})),
        "thrown 32768: The snapshot vol1.rw could not be removed (89)");
    // Returned by group: the set and its copies go, the sources stay.
    ASSERT_EQ(outcome("CreateGroup",
                  args({{"GroupName", str("copies")}, {"Members", volumes({"vol2.clone", "vol1.rw"})}})),
        "returned 0");
    EXPECT_EQ(outcome("ZDA_ModifyGroupReplicaSynchronization",
                  args({{"Operation", u16(19)}, {"TargetGroup", CIMValue(vvset("copies"))}})),
        "returned 0");
    EXPECT_TRUE(volume("vol2.clone").getClassName().isNull());
    EXPECT_TRUE(volume("vol1.rw").getClassName().isNull());
    EXPECT_FALSE(volume("vol2").getClassName().isNull());
}

}  // namespace
