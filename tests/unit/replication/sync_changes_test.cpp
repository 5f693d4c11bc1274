// Changes of synchronizations (ModifyReplicaSynchronization) on remote copy
// groups and on local copies, and group membership (AddMembers,
// RemoveMembers) of vvsets and remote copy groups, as clients call them.
#include "replication_fixture.h"

#include "RemoteCopyTestArray.h"
#include "ZDA_RemoteGroupSynchronizedProvider.h"

using namespace zda_replication_test;

namespace
{

// A stopped primary group whose one volume went stale: neither split nor
// new, so a resync first tries a sync, which the array refuses as not started.
const char STALE_GROUP[] =
    R"({"name": "gStaleStopped", "domain": "dom1",
       "targets": [{"target": "tReady", "state": "stopped", "lastSync": "-1d"}],
       "volumes": [{"name": "sv1", "maps": [{"target": "tReady", "status": "stale"}]}]},
      )";
const char STALE_VOLUME[] = R"({"name": "sv1", "usrCpg": "FC_r5", "sizeMiB": 1024},
    )";

class SyncChangesTest : public ReplicationTest
{
protected:
    // The remote copy state array with the stale stopped group.
    void loadRemoteArray()
    {
        std::string description = zda_test::remoteCopyStateTestArray();
        description.insert(description.find("\"volumes\": [") + 13, STALE_VOLUME);
        description.insert(description.find("\"groups\": [") + 11, STALE_GROUP);
        loadArray(description);
    }
    // The mirror pair of the remote copy group `group`.
    static CIMObjectPath groupSync(const char* group)
    {
        Array<CIMObjectPath> paths = ZDA_RemoteGroupSynchronizedProvider::createObjectPaths(
            group, HOST, false);
        EXPECT_EQ(paths.size(), 1u) << group;
        return paths.size() ? paths[0] : CIMObjectPath();
    }
    std::string modify(
        Uint16 operation, const CIMObjectPath& sync, Array<CIMParamValue> extra = Array<CIMParamValue>())
    {
        Array<CIMParamValue> in = args({{"Operation", u16(operation)}, {"Synchronization", CIMValue(sync)}});
        in.appendArray(extra);
        return outcome("ModifyReplicaSynchronization", in);
    }
    static size_t calls(const char* function) { return zdasim_journal_count_of(function); }
    bool jobGiven() { return !outParam(out, "Job").isNull(); }

    // The names of the volumes of the remote copy group, or {"<none>"}.
    static std::set<std::string> groupVolumes(const char* group)
    {
        const GroupView view = rcopyGroupView(group);
        return view.exists ? std::set<std::string>(view.volumes.begin(), view.volumes.end()) : NO_SET;
    }
    std::string membership(const char* method, const CIMObjectPath& group,
        std::initializer_list<const char*> members, CIMValue deleteOnEmpty = CIMValue())
    {
        Array<CIMParamValue> in = args(
            {{"ReplicationGroup", CIMValue(group)}, {"Members", volumes(members)}});
        if (!deleteOnEmpty.isNull())
            in.append(CIMParamValue("DeleteOnEmptyElement", deleteOnEmpty));
        return outcome(method, in);
    }
};

// ---- operations on a remote copy group ---------------------------------------------------

struct GroupOperationRow
{
    const char* what;
    Uint16 operation;
    const char* group;
    bool force;
    const char* expected;  // the outcome
    const char* call;      // the remote copy call made, "" for none
    const char* argument;  // and what it was given
    const char* value;
};

TEST_F(SyncChangesTest, EachOperationOnARemoteGroup)
{
    const GroupOperationRow rows[] = {
        {"split", 21, "gSync", false, "returned 0", "api_stopRCopyGroup", "name", "gSync"},
        {"activate after a split", 4, "csStoppedSplit", false, "returned 4096", "api_startRCopyGroup",
            "flags", "0"},
        {"resync of a split group starts it", 14, "csStoppedSplit", true, "returned 4096",
            "api_startRCopyGroup", "flags", "2"},
        {"forced resync of a synced group", 14, "gSync", true, "returned 4096", "api_syncrcopy", "flags",
            "1"},
        {"reverse names the local source", 20, "gSync", false, "returned 0", "api_setRCopyGroup", "selector",
            "4"},
        {"failover on the secondary's view", 10, "csSyncingSecondary", false, "returned 0",
            "api_setRCopyGroup", "name", "csSyncingSecondary"},
        {"failback after a failover", 11, "csFailedOver", false, "returned 4096", "api_setRCopyGroup",
            "selector", "7"},
        {"detach deletes the group, far volumes kept", 8, "gEmpty", false, "returned 0",
            "api_deleteRCopyGroup", "removevv_flag", "0"},
        {"abort asks nothing", 2, "gSync", false, "returned 0", "", "", ""},
        {"dissolve asks nothing", 9, "gSync", false, "returned 0", "", "", ""},
        {"restore asks nothing", 15, "gSync", false, "returned 0", "", "", ""},
        {"failover on the primary's view names a far group", 10, "gSync", false,
            "thrown 5:  Invalid SyncedElement reference.", "", "", ""},
        {"the array's refusal", 21, "csStoppedSplit", false,
            "thrown 4: remote copy group \"csStoppedSplit\" is already stopped", "", "", ""},
    };
    for (const GroupOperationRow& row : rows)
    {
        loadRemoteArray();
        zdasim_journal_clear();
        Array<CIMParamValue> extra;
        if (row.force)
            extra.append(CIMParamValue("Force", CIMValue(true)));
        EXPECT_EQ(modify(row.operation, groupSync(row.group), extra), row.expected) << row.what;
        EXPECT_EQ(jobGiven(), std::string(row.expected) == "returned 4096") << row.what;
        const size_t groupCalls = calls("api_startRCopyGroup") + calls("api_stopRCopyGroup") +
            calls("api_syncrcopy") + calls("api_setRCopyGroup") + calls("api_deleteRCopyGroup");
        if (*row.call)
        {
            EXPECT_EQ(lastJournalArgument(row.call, row.argument), row.value) << row.what;
        }
        else if (std::string(row.expected).rfind("returned", 0) == 0)
        {
            EXPECT_EQ(groupCalls, 0u) << row.what;
        }
        if (row.operation == 8)
        {
            EXPECT_EQ(groupVolumes(row.group), NO_SET) << row.what;
        }
    }
}

TEST_F(SyncChangesTest, AResyncTheArrayRefusesAsNotStartedIsRetriedOnceAsAStart)
{
    loadRemoteArray();
    // The start succeeds, but the failed sync stays the result: its text
    // travels under the job's code.
    EXPECT_EQ(modify(14, groupSync("gStaleStopped")),
        "thrown 4096: remote copy group \"gStaleStopped\" isn't started");
    EXPECT_EQ(calls("api_syncrcopy"), 1u);
    EXPECT_EQ(lastJournalArgument("api_startRCopyGroup", "flags"), "2");
    EXPECT_EQ(lastJournalArgument("api_startRCopyGroup", "name"), "gStaleStopped");

    // Any other refusal of the sync is not retried.
    zdasim_journal_clear();
    zdasim_fault_add("api_syncrcopy", 1, 77, "the link is down");
    EXPECT_EQ(modify(14, groupSync("gSync")), "thrown 4: the link is down");
    EXPECT_EQ(calls("api_startRCopyGroup"), 0u);
}

TEST_F(SyncChangesTest, RequestsRefusedBeforeTheArrayIsAsked)
{
    loadRemoteArray();
    const CIMObjectPath sync = groupSync("gSync");
    zdasim_journal_clear();
    // An operation outside the table has no right to ask for.
    EXPECT_EQ(modify(3, sync), "thrown 7: Does not support!");
    EXPECT_EQ(modify(2, sync, args({{"SyncPair", refs({sync})}})),
        "thrown 5: Only NULL SyncPair is supported currently.");
    EXPECT_EQ(outcome("ModifyReplicaSynchronization", args({{"Operation", u16(21)}})),
        "thrown 5:  Invalid cim_synchronized refernce");
    EXPECT_EQ(outcome("ModifyReplicaSynchronization", Array<CIMParamValue>()),
        "thrown 5: Invalid number of parameters");
    EXPECT_EQ(modify(21, sync, args({{"WaitForCopyState", u16(4)}})),
        "thrown 5:  Invalid copy state for the operation");
    // A null SyncPair and an absent Operation pass; nothing is asked of the array.
    EXPECT_EQ(modify(2, sync, args({{"SyncPair", CIMValue(CIMTYPE_REFERENCE, false)}})), "returned 0");
    EXPECT_EQ(
        outcome("ModifyReplicaSynchronization", args({{"Synchronization", CIMValue(sync)}})), "returned 0");
    EXPECT_EQ(calls("api_stopRCopyGroup") + calls("api_getRCopy"), 0u);
    // A return on a mirror pair is no snapshot of the group.
    EXPECT_EQ(modify(19, sync).rfind("thrown 5: The synchronization reference is not for a local "
                                     "snapshot of a replication group.",
                  0),
        0u);
}

TEST_F(SyncChangesTest, ReturnOfAGroupsSnapshotSetRemovesItAndItsVolumes)
{
    loadRemoteArray();
    Array<CIMObjectPath> pairs = refNames(vvset("gTwo_part"), "ZDA_RemoteGroupSynchronized", "SyncedElement");
    ASSERT_EQ(pairs.size(), 1u);
    EXPECT_EQ(modify(19, pairs[0]), "returned 0");
    EXPECT_EQ(setMembers("gTwo_part"), NO_SET);
    EXPECT_EQ(calls("api_removeVVs"), 1u);
}

// ---- operations on a local copy --------------------------------------------------------------

TEST_F(SyncChangesTest, ALocalCopyGoesToTheCopyServicesAndTheirCodesAreMapped)
{
    const CIMObjectPath clone = syncOf("vol2.clone");
    EXPECT_EQ(modify(14, clone), "returned 4096");
    EXPECT_TRUE(jobGiven());
    EXPECT_EQ(calls("api_resyncCopy"), 1u);

    const std::pair<int, const char*> codes[] = {{68, "thrown 6: busy"}, {80, "thrown 5: busy"},
        {77, "thrown 5: busy"}, {76, "thrown 5: busy"}, {99, "thrown 4: busy"}};
    for (const auto& code : codes)
    {
        zdasim_fault_add("api_resyncCopy", 1, code.first, "busy");
        EXPECT_EQ(modify(14, clone), code.second) << code.first;
    }
    // An operation the copy services do not take is still passed down.
    EXPECT_EQ(modify(21, syncOf("vol1.rw")).rfind("thrown ", 0), 0u);
    EXPECT_EQ(modify(19, volume("vol1")), "thrown 4: None of the Synchronized instances exist");
}

// ---- membership of vvsets -------------------------------------------------------------------

TEST_F(SyncChangesTest, VolumesJoinAndLeaveAVvset)
{
    EXPECT_EQ(membership("AddMembers", vvset("set1"), {"vol3"}), "returned 0");
    EXPECT_EQ(setMembers("set1"), Names({"vol1", "vol2", "vol3"}));
    EXPECT_EQ(membership("RemoveMembers", vvset("set1"), {"vol1", "vol3"}), "returned 0");
    EXPECT_EQ(setMembers("set1"), Names({"vol2"}));
    // The set stays when it keeps members, and when emptied without the flag.
    EXPECT_EQ(membership("RemoveMembers", vvset("set1"), {"vol2"}, CIMValue(false)), "returned 0");
    EXPECT_EQ(setMembers("set1"), Names());
    EXPECT_EQ(membership("AddMembers", vvset("set1"), {"vol2"}), "returned 0");
    EXPECT_EQ(membership("RemoveMembers", vvset("set1"), {"vol2"}, CIMValue(true)), "returned 0");
    EXPECT_EQ(setMembers("set1"), NO_SET);
}

TEST_F(SyncChangesTest, VvsetMembershipRefusals)
{
    const struct
    {
        const char* method;
        const char* set;
        std::initializer_list<const char*> members;
        const char* expected;
    } rows[] = {
        {"RemoveMembers", "set1", {"vol2", "vol3"}, "thrown 8: Member vol3 not in Group set1"},
        {"RemoveMembers", "nosuch", {"vol1"}, "thrown 7: ReplicationGroup nosuch does not exist"},
        {"AddMembers", "nosuch", {"vol1"}, "thrown 7: ReplicationGroup does not exist"},
        {"AddMembers", "set1", {"vol1"}, "thrown 4: VV vol1 is already a member of VV set set1"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(membership(row.method, vvset(row.set), row.members), row.expected)
            << row.method << " " << row.set;
        EXPECT_EQ(setMembers("set1"), Names({"vol1", "vol2"}));
    }
    EXPECT_EQ(outcome("AddMembers", Array<CIMParamValue>()), "thrown 5:  Invalid number of parameters");
    EXPECT_EQ(outcome("RemoveMembers", args({{"Members", volumes({"vol1"})}})),
        "thrown 5: ReplicationGroup has to be specified");
    EXPECT_EQ(outcome("AddMembers",
                  args({{"ReplicationGroup", CIMValue(vvset("set1"))}, {"Members", refs({vvset("set1")})}})),
        "thrown 5: Members parameter contains invalid object path");
    // A failure after the removal leaves the removal done.
    zdasim_fault_add("api_removeVVSet", 1, 99, "cannot remove now");
    EXPECT_EQ(membership("RemoveMembers", vvset("set1"), {"vol1", "vol2"}, CIMValue(true)),
        "thrown 4: cannot remove now");
    EXPECT_EQ(setMembers("set1"), Names());
}

// ---- membership of remote copy groups ----------------------------------------------------

TEST_F(SyncChangesTest, VolumesLeaveAndRejoinARemoteCopyGroupWhichGoesWhenEmptied)
{
    loadRemoteArray();
    EXPECT_EQ(membership("RemoveMembers", rcopyGroup("gTwo"), {"rv5"}), "returned 0");
    EXPECT_EQ(groupVolumes("gTwo"), Names({"rv6"}));
    // The far copy goes with it; the local volume stays.
    EXPECT_EQ(lastJournalArgument("api_dismissRCopyVV", "removevv_flag"), "1");
    EXPECT_FALSE(volume("rv5").getClassName().isNull());
    // It comes back with a far copy on each of the group's two targets,
    // named after the local volume.
    EXPECT_EQ(membership("AddMembers", rcopyGroup("gTwo"), {"rv5"}), "returned 0");
    EXPECT_EQ(groupVolumes("gTwo"), Names({"rv5", "rv6"}));
    EXPECT_EQ(lastJournalArgument("api_admitRCopyVV", "nummaps"), "2");
    EXPECT_EQ(lastJournalArgument("api_admitRCopyVV", "vvmaps[1].rm_target"), "tComputed");
    EXPECT_EQ(lastJournalArgument("api_admitRCopyVV", "vvmaps[1].rm_remote_name"), "rv5_remote");
    EXPECT_EQ(membership("RemoveMembers", rcopyGroup("gTwo"), {"rv6", "rv5"}, CIMValue(true)), "returned 0");
    EXPECT_EQ(groupVolumes("gTwo"), NO_SET);
    // Without the flag the emptied group stays.
    EXPECT_EQ(membership("RemoveMembers", rcopyGroup("gNoDomain"), {"rv3"}), "returned 0");
    EXPECT_EQ(groupVolumes("gNoDomain"), Names());
}

TEST_F(SyncChangesTest, RemoteCopyGroupMembershipRefusalsAndFailures)
{
    loadRemoteArray();
    const String rv1 = ZDA_Common::getStringProperty(volume("rv1"), "DeviceID");
    EXPECT_EQ(membership("RemoveMembers", rcopyGroup("gTwo"), {"rv5", "rv1"}),
        "thrown 8: Member " + text(rv1) + " not in RemoteReplicationGroup gTwo");
    EXPECT_EQ(membership("RemoveMembers", rcopyGroup("gNope"), {"rv5"}),
        "thrown 7: RemoteReplicationGroup gNope does not exist");
    EXPECT_EQ(groupVolumes("gTwo"), Names({"rv5", "rv6"}));

    // Admission: a missing group, an unknown volume among known ones (no
    // volume is admitted), and the array's refusal.
    const size_t admitted = calls("api_admitRCopyVV");
    EXPECT_EQ(
        membership("AddMembers", rcopyGroup("gNope"), {"rv1"}), "thrown 7: ReplicationGroup does not exist");
    EXPECT_EQ(outcome("AddMembers",
                  args({{"ReplicationGroup", CIMValue(rcopyGroup("gEmpty"))},
                      {"Members", refs({volume("rv1"), unknownVolume("rv1")})}})),
        "thrown 5: Cannot find one or more of the volumes in Members");
    EXPECT_EQ(calls("api_admitRCopyVV"), admitted);
    zdasim_fault_add("api_admitRCopyVV", 1, 99, "link lost");
    EXPECT_EQ(membership("AddMembers", rcopyGroup("gEmpty"), {"rv1"}), "thrown 4: link lost");
    EXPECT_EQ(groupVolumes("gEmpty"), Names());

    zdasim_fault_add("api_getRCopy", 1, 99, "configuration locked");
    EXPECT_EQ(membership("RemoveMembers", rcopyGroup("gTwo"), {"rv5"}),
        "thrown 4: Cannot read rcopy group: configuration locked");
    // A refused dismissal ends the call: the group is not deleted.
    zdasim_fault_add("api_dismissRCopyVV", 1, 99, "link lost");
    EXPECT_EQ(membership("RemoveMembers", rcopyGroup("gTwo"), {"rv5", "rv6"}, CIMValue(true)),
        "thrown 4: link lost");
    EXPECT_EQ(calls("api_dismissRCopyVV"), 1u);
    EXPECT_EQ(groupVolumes("gTwo"), Names({"rv5", "rv6"}));

    // The set behind a remote copy group changes only through the group.
    EXPECT_EQ(
        membership("RemoveMembers", vvset("RCP_gTwo"), {"rv5"}).rfind("thrown 4: VV set RCP_gTwo ", 0), 0u);
    EXPECT_EQ(
        membership("AddMembers", vvset("RCP_gTwo"), {"rv1"}).rfind("thrown 4: VV set RCP_gTwo ", 0), 0u);
    EXPECT_EQ(setMembers("RCP_gTwo"), Names({"rv5", "rv6"}));
    EXPECT_EQ(groupVolumes("gTwo"), Names({"rv5", "rv6"}));
}

}  // namespace
