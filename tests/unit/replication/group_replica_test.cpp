// Replicas of whole groups through the replication service: clones and
// snapshots of vvsets (given or made of volumes), and remote mirrors made
// as new remote copy groups, over the simulator's test arrays.
#include "replication_fixture.h"

#include <cstring>
#include <string>
#include <vector>

#include "CimBuilders.h"
#include "RemoteCopyTestArray.h"
#include "ZDA_AssociationFrame.h"
#include "ZDA_CompanionFrame.h"
#include "ZDA_InternalCacheService.h"
#include "ZDA_RemoteServiceAccessPointProvider.h"
#include "ZDA_ReplicationGroupProvider.h"
#include "ZDA_RemoteReplicationGroupProvider.h"
#include "ZDA_StoragePoolProvider.h"

using namespace zda_replication_test;
using zda_test::param;
using zda_test::params;

namespace
{

CIMValue u16(Uint16 v)
{
    return CIMValue(v);
}

CIMValue str(const std::string& s)
{
    return CIMValue(String(s.c_str()));
}

// The admission workers, opened for the tests.
class AdmissionWorkers : public ZDA_ReplicationServiceProvider
{
public:
    int admit(const char* group, std::initializer_list<const char*> volumes, String& errStr)
    {
        api_evtparam_t event{};
        Array<String> names;
        for (const char* v : volumes)
            names.append(v);
        String relationship;
        return _admitRCopyVVs(&event, String(group), names, relationship, errStr);
    }
};

class GroupReplicaTest : public ReplicationTest
{
protected:
    // The volumes of these names as one reference array.
    CIMValue volumes(std::initializer_list<const char*> names)
    {
        Array<CIMObjectPath> paths;
        for (const char* name : names)
            paths.append(volume(name));
        return CIMValue(paths);
    }
    CIMObjectPath set(const char* name) { return ZDA_ReplicationGroupProvider::buildObjectPath(host, name); }
    CIMObjectPath outPath(const char* name)
    {
        CIMObjectPath path;
        const CIMValue value = outParam(out, name);
        if (!value.isNull())
            value.get(path);
        return path;
    }
    std::string outText(const char* name)
    {
        String value;
        const CIMValue v = outParam(out, name);
        if (!v.isNull())
            v.get(value);
        return text(value);
    }
    static std::string setNameOf(const CIMObjectPath& path)
    {
        return text(ZDA_Common::extractFromInstanceID(ZDA_Common::getStringProperty(path, "InstanceID")));
    }
    // The names of the array's vvsets, in its order.
    std::vector<std::string> setNames()
    {
        std::vector<std::string> names;
        api_sets_t sets;
        std::memset(&sets, 0, sizeof sets);
        if (ZDA_CompanionFrame::statusCall([&] { return api_getVVSets(nullptr, nullptr, 0, &sets); }).code ==
            0)
            for (uint32_t s = 0; s < sets.count; s++)
                names.push_back(sets.sets[s].name);
        api_freeSets(&sets);
        return names;
    }
    bool setExists(const std::string& name)
    {
        for (const std::string& n : setNames())
            if (n == name)
                return true;
        return false;
    }
};

// ---- clones and snapshots of local groups -----------------------------------------------

TEST_F(GroupReplicaTest, LocalLegRefusalsMakeNothing)
{
    struct Case
    {
        const char* method;
        Array<CIMParamValue> in;
        const char* outcome;
    };
    const CIMObjectPath sap = ZDA_RemoteServiceAccessPointProvider::buildObjectPath(host, "t1");
    const CIMObjectPath remoteGroup = ZDA_RemoteReplicationGroupProvider::buildObjectPath(host, "rcg1");
    const Case cases[] = {
        {"CreateGroupReplica",
            params({param("SyncType", u16(7)), param("SourceGroup", CIMValue(set("set1"))),
                param("SourceGroupName", str("set_one"))}),
            "thrown 5: SourceGroup and SourceGroupName must not be specified together unless "
            "they refer to the same group."},
        {"CreateGroupReplicaFromElements",
            params({param("SyncType", u16(8)), param("SourceGroupName", str("set1")),
                param("SourceElements", volumes({"vol3"}))}),
            "thrown 5: SourceGroupName for an existing vvset and SourceElements must not be "
            "specified together"},
        {"CreateGroupReplica",
            params({param("SyncType", u16(7)), param("SourceGroupName", str("no_such_set"))}),
            "thrown 5: SourceGroup parameter must be specified."},
        {"CreateGroupReplicaFromElements",
            params({param("SyncType", u16(7)), param("SourceGroupName", str("no_such_set"))}),
            "thrown 5: The SourceGroup or SourceElements parameters must be specified."},
        {"CreateGroupReplica",
            params({param("SyncType", u16(8)), param("SourceGroup", CIMValue(set("set1"))),
                param("TargetAccessPoint", CIMValue(sap))}),
            "thrown 5: The TargetAccessPoint reference is not used with this SyncType"},
        {"ZDA_CreateGroupReplica",
            params({param("SyncType", u16(7)), param("Consistency", u16(2)),
                param("SourceGroup", CIMValue(set("set1")))}),
            "thrown 5: Only sequential consistency is supported"},
        {"CreateGroupReplica",
            params({param("SyncType", u16(8)), param("SourceGroup", CIMValue(set("set1"))),
                param("TargetGroup", CIMValue(remoteGroup))}),
            "thrown 5: TargetGroup contains invalid object path"},
        {"CreateGroupReplica", params({param("SourceGroup", CIMValue(set("missing_set")))}),
            "thrown 5: Cannot find the SourceGroup replication group"},
        {"CreateGroupReplica",
            params({param("SyncType", u16(6)), param("SourceGroup", CIMValue(set("set1")))}),
            "thrown 5: SyncType/Mode combination not supported"},
        {"ZDA_CreateGroupReplica", params({param("SourceGroup", CIMValue(set("set1")))}),
            "thrown 5: SyncType/Mode combination not supported"},
        {"CreateGroupReplica",
            params({param("SyncType", u16(7)), param("WaitForCopyState", u16(8)),
                param("SourceGroup", CIMValue(set("set1")))}),
            "thrown 5: Only waitForCopyState sync is supported for virtual copy"},
        {"CreateGroupReplica",
            params({param("SyncType", u16(8)), param("WaitForCopyState", u16(3)),
                param("SourceGroup", CIMValue(set("set1")))}),
            "thrown 5: Only waitForCopyState Sync and Inactive are are supported for physical copy"},
        {"CreateGroupReplica", Array<CIMParamValue>(), "thrown 5: Invalid number of parameters"},
    };
    const std::vector<std::string> before = setNames();
    zdasim_journal_clear();
    for (const Case& c : cases)
        EXPECT_EQ(outcome(c.method, c.in), c.outcome) << c.method;
    EXPECT_EQ(setNames(), before);
    EXPECT_EQ(zdasim_journal_count_of("api_createPhysicalCopy") +
            zdasim_journal_count_of("api_createGroupSV") + zdasim_journal_count_of("api_createVVSet"),
        0u);
    expectLedgersClean("refused group replicas");
}

TEST_F(GroupReplicaTest, SnapshotOutputsFollowTheMethod)
{
    // The set's own name given again as SourceGroupName is no conflict.
    EXPECT_EQ(outcome("CreateGroupReplica",
                  params({param("SyncType", u16(7)), param("SourceGroup", CIMValue(set("set1"))),
                      param("SourceGroupName", str("set1")), param("RelationshipName", str("s1"))})),
        "returned 0");
    EXPECT_FALSE(outParam(out, "Synchronization").isNull());
    EXPECT_TRUE(outParam(out, "Synchronizations").isNull());
    EXPECT_TRUE(outParam(out, "TargetElements").isNull());
    EXPECT_TRUE(outParam(out, "Job").isNull());
    // A snapshot of a vvset makes no target set: its TargetGroup is there,
    // as a null reference.
    bool targetGroupGiven = false;
    for (Uint32 i = 0; i < out.size(); i++)
    {
        if (!String::equalNoCase(out[i].getParameterName(), "TargetGroup"))
            continue;
        targetGroupGiven = true;
        EXPECT_TRUE(out[i].getValue().isNull());
        EXPECT_EQ(out[i].getValue().getType(), CIMTYPE_REFERENCE);
    }
    EXPECT_TRUE(targetGroupGiven);
    EXPECT_FALSE(volume("s1_1").getClassName().isNull());
    EXPECT_FALSE(volume("s1_2").getClassName().isNull());

    EXPECT_EQ(outcome("ZDA_CreateGroupReplica",
                  params({param("SyncType", u16(7)), param("SourceGroup", CIMValue(set("set1"))),
                      param("RelationshipName", str("s2"))})),
        "returned 0");
    Array<CIMObjectPath> syncs;
    Array<CIMObjectPath> targets;
    outParam(out, "Synchronizations").get(syncs);
    outParam(out, "TargetElements").get(targets);
    EXPECT_EQ(syncs.size(), 2u);
    EXPECT_EQ(targets.size(), 2u);
    EXPECT_TRUE(outParam(out, "Synchronization").isNull());
    EXPECT_TRUE(outParam(out, "Jobs").isNull());
    expectLedgersClean("group snapshots");
}

TEST_F(GroupReplicaTest, SetsMadeOfElementsGetGeneratedNames)
{
    EXPECT_EQ(outcome("CreateGroupReplicaFromElements",
                  params({param("SyncType", u16(7)), param("SourceElements", volumes({"vol1", "vol3"}))})),
        "returned 0");
    const std::string source = outText("SourceGroupName");
    EXPECT_EQ(source.size(), 25u) << source;
    EXPECT_EQ(source.rfind("smisCreated.", 0), 0u) << source;
    EXPECT_EQ(setNameOf(outPath("SourceGroup")), source);
    EXPECT_TRUE(setExists(source));

    // A name no set has yet names the set made of the elements.
    EXPECT_EQ(outcome("CreateGroupReplicaFromElements",
                  params({param("SyncType", u16(7)), param("SourceGroupName", str("named_set")),
                      param("SourceElements", volumes({"vol2"}))})),
        "returned 0");
    EXPECT_EQ(outText("SourceGroupName"), "named_set");
    EXPECT_TRUE(setExists("named_set"));

    // A clone's target set is named after its source, cut to 20 characters.
    EXPECT_EQ(outcome("CreateGroupReplica",
                  params({param("SyncType", u16(8)), param("SourceGroup", CIMValue(set("set_dom2")))})),
        "returned 4096");
    const std::string target = setNameOf(outPath("TargetGroup"));
    EXPECT_EQ(target.size(), 25u) << target;
    EXPECT_EQ(target.rfind("copyOfset_dom2.", 0), 0u) << target;
    EXPECT_TRUE(setExists(target));
    expectLedgersClean("generated set names");
}

TEST_F(GroupReplicaTest, CloneOutputsAndJobsByMethod)
{
    struct Case
    {
        const char* method;
        bool single;
    };
    for (const Case& c : {Case{"CreateGroupReplica", true}, Case{"ZDA_CreateGroupReplica", false}})
    {
        EXPECT_EQ(outcome(c.method,
                      params({param("SyncType", u16(8)), param("Mode", u16(2)),
                          param("WaitForCopyState", u16(8)), param("SourceGroup", CIMValue(set("set1")))})),
            "returned 4096")
            << c.method;
        Array<CIMObjectPath> jobs;
        outParam(out, "Jobs").get(jobs);
        EXPECT_EQ(jobs.size(), 2u) << c.method;
        EXPECT_EQ(outParam(out, "Job").isNull(), !c.single) << c.method;
        EXPECT_EQ(outParam(out, "Synchronization").isNull(), !c.single) << c.method;
        // The set this call made, and the same set once the copy started.
        Uint32 targetGroups = 0;
        for (Uint32 i = 0; i < out.size(); i++)
            targetGroups += String::equalNoCase(out[i].getParameterName(), "TargetGroup");
        EXPECT_EQ(targetGroups, 2u) << c.method;
        EXPECT_EQ(lastJournalArgument("api_createPhysicalCopy", "flags"),
            std::to_string(API_PCOPY_INACTIVE | API_PCOPY_CREATE_TARGET))
            << c.method;
    }
    expectLedgersClean("group clones");
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
        const std::vector<std::string> before = setNames();
        zdasim_fault_add(c.fault, 1, c.code, "source busy");
        EXPECT_EQ(outcome("CreateGroupReplicaFromElements",
                      params({param("SyncType", u16(Uint16(c.syncType))),
                          param("SourceElements", volumes({"vol4", "vol5"}))})),
            c.outcome)
            << c.fault;
        EXPECT_EQ(setNames(), before) << c.fault;
        zdasim_faults_clear();
    }
    expectLedgersClean("failed group copies");
}

TEST_F(GroupReplicaTest, AuthorizationKeysFollowTheSyncType)
{
    struct Case
    {
        const char* method;
        Uint16 syncType;
        const char* key;
    };
    const Case cases[] = {
        {"CreateGroupReplica", 7, "zda_replicationservice.creategroupreplica.creategroupsv"},
        {"ZDA_CreateGroupReplica", 8, "zda_replicationservice.creategroupreplica.creategroupvvcopy"},
        {"CreateGroupReplicaFromElements", 6, "zda_replicationservice.creategroupreplica.createmirror"},
    };
    for (const Case& c : cases)
    {
        outcome(c.method, params({param("SyncType", u16(c.syncType)), param("Mode", u16(3))}));
        EXPECT_EQ(lastAuthorizationKey(), c.key) << c.method;
    }
    EXPECT_EQ(outcome("CreateGroupReplica",
                  params({param("SyncType", u16(7)), param("SourceGroup", CIMValue(set("set1")))}), "viewer")
                  .rfind("thrown 2:", 0),
        0u);
}

// ---- remote mirrors ---------------------------------------------------------------------

class MirrorTest : public GroupReplicaTest
{
protected:
    void SetUp() override
    {
        GroupReplicaTest::SetUp();
        char error[512] = "";
        ASSERT_EQ(zdasim_load_description_text(
                      zda_test::remoteCopyTestArray(), "remote copy test array", error, sizeof error),
            0)
            << error;
        ZDA_InternalCacheService::destroy();
        for (const char* name : {"mv1", "mv2", "mv3", "mirror_source_volume_with27"})
            ASSERT_EQ(zdasim_volume_add(name, "FC_r5", "", 1024), 0) << name;
        service = server().enumerateInstanceNames(admin(), ZDA_NS, "ZDA_ReplicationService")[0];
    }

    // A mirror request that passes every check, with `change` applied.
    Array<CIMParamValue> mirror(
        std::initializer_list<CIMParamValue> change, std::initializer_list<const char*> drop = {})
    {
        Array<CIMParamValue> base = params(
            {param("SyncType", u16(6)), param("SourceElements", volumes({"mv1", "mv2", "mv3"})),
                param("TargetPool", CIMValue(ZDA_StoragePoolProvider::buildObjectPath("FC_r5", "peer1"))),
                param("TargetAccessPoint", CIMValue(sap("tReady")))});
        Array<CIMParamValue> in;
        for (Uint32 i = 0; i < base.size(); i++)
        {
            bool keep = true;
            for (const char* d : drop)
                keep = keep && !String::equalNoCase(base[i].getParameterName(), d);
            for (const CIMParamValue& c : change)
                keep = keep && !String::equalNoCase(base[i].getParameterName(), c.getParameterName());
            if (keep)
                in.append(base[i]);
        }
        for (const CIMParamValue& c : change)
            in.append(c);
        return in;
    }
    CIMObjectPath rcg(const char* name)
    {
        return ZDA_RemoteReplicationGroupProvider::buildObjectPath(host, name);
    }
    CIMObjectPath sap(const char* target)
    {
        return ZDA_RemoteServiceAccessPointProvider::buildObjectPath(host, target);
    }
    static CIMValue supplier(Uint16 value)
    {
        CIMInstance data("CIM_ReplicationSettingData");
        data.addProperty(CIMProperty("TargetElementSupplier", CIMValue(value)));
        return CIMValue(data);
    }

    // The group as the array holds it: started, its volumes and their far names.
    struct GroupView
    {
        bool exists = false;
        bool started = false;
        std::vector<std::string> volumes;
        std::vector<std::string> remoteNames;
        std::string target;
        uint32_t mode = 0;
        uint32_t period = 0;
    };
    GroupView group(const std::string& name)
    {
        GroupView view;
        ZDA_AssociationFrame::RCopySnapshot snapshot;
        EXPECT_EQ(snapshot.read(API_RCOPY_QUERY_TYPE_GROUPS).code, 0);
        for (rm_group_wrapper* g = snapshot.rcopy.groups; g; g = g->next)
        {
            if (name != g->group.rm_hdr.rm_name)
                continue;
            view.exists = true;
            if (g->gtarget_count > 0)
            {
                view.target = g->gtargets[0].rm_target;
                view.mode = g->gtargets[0].rm_mode;
                view.period = g->gtargets[0].rm_sync_period;
                // Starting (1) or started (2): the group runs on the target.
                view.started = g->gtargets[0].rm_state == 1 || g->gtargets[0].rm_state == 2;
            }
            for (rm_group_vv_wrapper* vv = g->gvvs; vv; vv = vv->next)
            {
                view.volumes.push_back(vv->gvv.rm_local_name);
                view.remoteNames.push_back(vv->map_count > 0 ? vv->maps[0].rm_remote_name : "");
            }
        }
        return view;
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
        {mirror({param("WaitForCopyState", u16(8))}, {"TargetPool"}),
            "thrown 5: The TargetPool reference must be specified for SyncType mirror."},
        {mirror({param("WaitForCopyState", u16(8)), param("SourceGroup", CIMValue(rcg("gEmpty")))}),
            "thrown 5: Only waitForCopyState Unsync is supported for SyncType mirror"},
        {mirror({param("SourceGroup", CIMValue(rcg("gEmpty")))}, {"TargetAccessPoint"}),
            "thrown 5: The SourceGroup reference parameters must not be specified for SyncType "
            "mirror."},
        {mirror({param("RelationshipName", str(name27 + "x"))}, {"TargetAccessPoint"}),
            "thrown 5: The TargetAccessPoint reference must be specified for SyncType mirror."},
        {mirror({param("RelationshipName", str(name27 + "x")), param("ReplicationSettingData", supplier(3))}),
            "thrown 5: The size of the RelationshipName must be less than 28"},
        {mirror({param("ReplicationSettingData", supplier(3))}),
            "thrown 5: ReplicationSettingData.TargetElementSupplier must be \"Create New (2)\"must "
            "be specified for SyncType mirror."},
        {mirror({param("TargetPool", CIMValue(ZDA_StoragePoolProvider::buildObjectPath("", "peer1")))}),
            "thrown 5: Unable to determine Target User and SNAP CPG from TargetPool or "
            "TargetSettingGoal"},
        {mirror({}, {"SourceElements"}), "thrown 5: SourceElements must be specified."},
        {mirror({param("TargetAccessPoint", CIMValue(sap("tFailed")))}),
            "thrown 5: Cannot determine rcopy target from TargetAccessPoint :No remote copy "
            "target is configured for provided Service Access Point"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(outcome("CreateGroupReplicaFromElements", c.in), c.outcome);
    EXPECT_EQ(zdasim_journal_count_of("api_createRCopyGroup"), 0u);
    expectLedgersClean("refused mirrors");
}

TEST_F(MirrorTest, APeriodicMirrorIsCreatedAdmittedAndStarted)
{
    EXPECT_EQ(outcome("CreateGroupReplicaFromElements", mirror({param("RelationshipName", str("dr"))})),
        "returned 0");
    EXPECT_EQ(outText("SourceGroupName"), "dr");
    EXPECT_EQ(setNameOf(outPath("SourceGroup")), "dr");
    EXPECT_EQ(outPath("SourceGroup").getClassName().getString(), "ZDA_RemoteReplicationGroup");
    EXPECT_EQ(outText("TargetGroupName"), "dr.r");
    EXPECT_FALSE(outPath("Synchronization").getClassName().isNull());
    EXPECT_FALSE(outPath("TargetGroup").getClassName().isNull());
    EXPECT_TRUE(outParam(out, "Job").isNull());

    const GroupView view = group("dr");
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
    expectLedgersClean("a periodic mirror");
}

TEST_F(MirrorTest, TheLongestRelationshipNameNamesGroupAndFarVolumes)
{
    const std::string name(27, 'n');
    EXPECT_EQ(outcome("CreateGroupReplicaFromElements", mirror({param("RelationshipName", str(name))})),
        "returned 0");
    const GroupView view = group(name);
    EXPECT_TRUE(view.started);
    EXPECT_EQ(view.remoteNames, (std::vector<std::string>{name + "_1", name + "_2", name + "_3"}));
    EXPECT_EQ(outText("TargetGroupName"), name + ".r");
    expectLedgersClean("a mirror with the longest name");
}

TEST_F(MirrorTest, ASynchronousMirrorTakesASuitingTargetAndNamesItsVolumes)
{
    // The asynchronous-only access point gives way to the first target of
    // the same system that names synchronous mirrors.
    EXPECT_EQ(outcome("CreateGroupReplicaFromElements",
                  mirror({param("Mode", u16(2)), param("TargetAccessPoint", CIMValue(sap("tAsyncOnly"))),
                      param("SourceElements", volumes({"mirror_source_volume_with27"}))})),
        "returned 0");
    const std::string name = outText("SourceGroupName");
    EXPECT_EQ(name.size(), 22u) << name;
    EXPECT_EQ(name.rfind("smisCreated.", 0), 0u) << name;
    const GroupView view = group(name);
    EXPECT_EQ(view.target, "tSyncOnly");
    EXPECT_EQ(view.mode, 1u);
    EXPECT_EQ(zdasim_journal_count_of("api_setRCopyGroup"), 0u);
    // 27 characters leave room for only the first four of the suffix.
    EXPECT_EQ(view.remoteNames, (std::vector<std::string>{"mirror_source_volume_with27_rem"}));
    expectLedgersClean("a synchronous mirror");
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
        EXPECT_EQ(outcome("CreateGroupReplicaFromElements", mirror({param("RelationshipName", str(name))})),
            "thrown 4: array says no")
            << c.fault;
        zdasim_faults_clear();
        const GroupView view = group(name);
        EXPECT_EQ(view.exists, c.exists) << c.fault;
        EXPECT_EQ(view.volumes.size(), c.volumes) << c.fault;
        EXPECT_EQ(view.started, c.started) << c.fault;
        // The volumes go free for the next case.
        if (view.exists)
        {
            api_rcopy_delete del;
            std::memset(&del, 0, sizeof del);
            std::strcpy(del.name, name.c_str());
            api_evtparam_t event{};
            EXPECT_EQ(
                ZDA_CompanionFrame::statusCall([&] { return api_deleteRCopyGroup(&event, &del); }).code, 0)
                << c.fault;
        }
    }
    expectLedgersClean("failed mirrors");
}

TEST_F(MirrorTest, VolumesJoinAnExistingGroup)
{
    AdmissionWorkers& workers = directService<AdmissionWorkers>();
    String errStr;
    EXPECT_EQ(workers.admit("no_such_group", {"mv1"}, errStr), 7);
    EXPECT_EQ(text(errStr), "RemoteReplicationGroup no_such_group does not exist");
    EXPECT_EQ(workers.admit("gEmpty", {"mv1", "mv2"}, errStr), 0);
    const GroupView view = group("gEmpty");
    EXPECT_EQ(view.volumes, (std::vector<std::string>{"mv1", "mv2"}));
    EXPECT_EQ(view.remoteNames, (std::vector<std::string>{"mv1_remote", "mv2_remote"}));
    zdasim_fault_add("api_getRCopy", 1, 22, "unreadable");
    EXPECT_EQ(workers.admit("gEmpty", {"mv3"}, errStr), 4);
    EXPECT_EQ(text(errStr), "Cannot read rcopy group: unreadable");
    expectLedgersClean("admission into an existing group");
}

TEST_F(MirrorTest, ACloneOfARemoteGroupCopiesItsLocalVolumes)
{
    EXPECT_EQ(outcome("CreateGroupReplica",
                  params({param("SyncType", u16(8)), param("SourceGroup", CIMValue(rcg("gTwo")))})),
        "returned 4096");
    Array<CIMObjectPath> jobs;
    outParam(out, "Jobs").get(jobs);
    EXPECT_EQ(jobs.size(), 2u);
    EXPECT_EQ(setNameOf(outPath("TargetGroup")).rfind("copyOfgTwo.", 0), 0u);
    expectLedgersClean("a clone of a remote group");
}

}  // namespace
