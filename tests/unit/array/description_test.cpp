// Array descriptions: what loads, what is refused and how, and the demo
// array compiled into the library.
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "rcopy_support.h"

namespace zdatest
{
namespace
{

std::string load(const std::string& json, const char* origin = "t.json")
{
    char error[1024] = "";
    const int rc = zdasim_load_description_text(json.c_str(), origin, error, sizeof error);
    EXPECT_EQ(rc == 0, error[0] == '\0') << error;
    return error;
}

std::string slurp(const std::string& path)
{
    std::ifstream in(path);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

std::string tempPath(const char* name)
{
    return (::testing::TempDir() + "zda_" + std::to_string(getpid()) + "_" + name);
}

TEST_F(ArrayTest, BadDescriptionsNameTheFieldAndChangeNothing)
{
    const std::string cpg = R"("cpgs": [{"name": "C", "domain": "d"}])";
    const std::string target = R"({"name": "t", "remoteSystemName": "far"})";
    struct Case
    {
        std::string json;
        std::string error;  // the whole message after "t.json: "
    };
    const std::vector<Case> cases = {
        {"{\"cpgs\": [\n  {\"name\": }]}",
            "line 2, column 12: not valid JSON (syntax error while parsing value - unexpected '}'; expected '[', '{', "
            "or a literal)"},
        {R"({"cpgs": {}})", "cpgs: must be a list"},
        {R"({"cpgz": []})", "cpgz: is not a known field here"},
        {R"({"format": "other"})", "format: \"other\" is not \"zda-array\""},
        {"{" + cpg + R"(, "volumes": [{"name": "a", "usrCpg": "C"}]})", "volumes[0].sizeMiB: is required"},
        {"{" + cpg + R"(, "volumes": [{"name": "a", "usrCpg": "C", "sizeMiB": "big"}]})",
            "volumes[0].sizeMiB: must be a whole number"},
        {R"({"system": {"nodesTotal": 9}})", "system.nodesTotal: 9 is out of range (1 to 8)"},
        {R"({"system": {"ipv4": "300.1.1.1"}})", "system.ipv4: \"300.1.1.1\" is not an IPv4 address"},
        {R"({"volumes": [{"name": "a", "usrCpg": "none", "sizeMiB": 1}]})",
            "volumes[0].usrCpg: CPG \"none\" is not described under cpgs"},
        {R"({"cpgs": [{"name": "C"}, {"name": "C"}]})", "cpgs[1].name: CPG \"C\" is described twice"},
        {"{" + cpg +
                R"(, "volumes": [{"name": "a_name_that_is_longer_than_31_chars", "usrCpg": "C", "sizeMiB": 1}]})",
            "volumes[0].name: \"a_name_that_is_longer_than_31_chars\" is longer than 31 characters"},
        {R"({"cpgs": [{"name": "two words"}]})",
            "cpgs[0].name: \"two words\" may hold only printable ASCII characters other than blank, '|' and '/'"},
        {R"({"roles": [{"name": "r|w"}]})",
            "roles[0].name: \"r|w\" may hold only printable ASCII characters other than blank, '|' and '/'"},
        {"{" + cpg + R"(, "volumes": [{"name": "a", "usrCpg": "C", "sizeMiB": 1, "created": "yesterday"}]})",
            "volumes[0].created: \"yesterday\" is not a time (seconds since the epoch, \"now\", or like \"-30d\", \"+2h\")"},
        {"{" + cpg + R"(, "volumes": [{"name": "a", "usrCpg": "C", "sizeMiB": 1, "wwn": "XYZ"}]})",
            "volumes[0].wwn: \"XYZ\" is not a WWN (16 or 32 hexadecimal digits)"},
        {R"({"roles": [{"name": "r", "rights": {"k": "maybe"}}]})",
            "roles[0].rights.k: \"maybe\" is not one of allowed, denied, unknown-user, unsupported"},
        {R"({"users": [{"name": "u", "role": "ghost"}]})",
            "users[0].role: role \"ghost\" is not described under roles"},
        {R"({"remoteCopy": {"targets": [{"name": "t", "remoteSystemName": "far", "status": "sleepy"}]}})",
            "remoteCopy.targets[0].status: \"sleepy\" is not one of new, ready, release-unsupported, failing, failed, disabled"},
        {R"({"remoteCopy": {"targets": [)" + target + R"(], "groups": [{"name": "g", "targets": []}]}})",
            "remoteCopy.groups[0].targets: a group needs at least one target"},
        {"{" + cpg +
                R"(, "volumes": [{"name": "a", "usrCpg": "C", "sizeMiB": 1}], "remoteCopy": {"targets": [)" +
                target +
                R"(], "groups": [{"name": "g", "targets": [{"target": "t"}], "volumes": [{"name": "a", "maps": [{"target": "u"}]}]}]}})",
            "remoteCopy.groups[0].volumes[0].maps[0].target: target \"u\" is not a target of this group"},
        {R"({"tasks": [{"tid": 5, "type": "rcopy-sync", "name": "g"}], "remoteCopy": {"targets": [)" +
                target + R"(], "groups": [{"name": "g", "targets": [{"target": "t", "syncTask": 5}]}]}})",
            "remoteCopy.groups[0].targets[0].syncTask: task 5 is not a synchronisation of this group to this target"},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(load(c.json), "t.json: " + c.error) << c.json;
        // The array is the one loaded before.
        EXPECT_STREQ(volume("vol1").name, "vol1") << c.json;
    }
    EXPECT_EQ(readRcopy().groups.size(), 0u);

    // A file is named in its errors, also when it cannot be read.
    char error[512];
    const std::string path = tempPath("bad.json");
    std::ofstream(path) << R"({"system": {"name": ""}})";
    EXPECT_EQ(zdasim_load_description_file(path.c_str(), error, sizeof error), -1);
    EXPECT_EQ(std::string(error), path + ": system.name: must not be empty");
    std::remove(path.c_str());
    EXPECT_EQ(zdasim_load_description_file(path.c_str(), error, sizeof error), -1);
    EXPECT_EQ(std::string(error).rfind(path + ": cannot open", 0), 0u) << error;
}

TEST_F(ArrayTest, DescriptionRoundTripsThroughAFile)
{
    zdasim_reset_demo_array();
    zdasim_clock_advance(100);  // let tasks move, so that running state is written too
    char error[512] = "";
    const std::string first = tempPath("first.json");
    const std::string second = tempPath("second.json");
    ASSERT_EQ(zdasim_save_description_file(first.c_str(), error, sizeof error), 0) << error;
    const RcopyView before = readRcopy();
    ASSERT_EQ(zdasim_load_description_file(first.c_str(), error, sizeof error), 0) << error;
    ASSERT_EQ(zdasim_save_description_file(second.c_str(), error, sizeof error), 0) << error;
    EXPECT_EQ(slurp(first), slurp(second));
    const RcopyView after = readRcopy();
    ASSERT_EQ(after.groups.size(), before.groups.size());
    for (size_t i = 0; i < after.groups.size(); ++i)
    {
        EXPECT_EQ(after.groups[i].name, before.groups[i].name);
        EXPECT_EQ(after.groups[i].autoSetId, before.groups[i].autoSetId);
        EXPECT_EQ(after.groups[i].volumes.size(), before.groups[i].volumes.size());
    }
    std::remove(first.c_str());
    std::remove(second.c_str());
}

// ---- the demo array ------------------------------------------------------------------

std::vector<api_VVObj_t> allVolumes()
{
    int count = 0;
    api_VVObj_t* vv = nullptr;
    EXPECT_EQ(intForm([&] { return api_getVVs(nullptr, nullptr, &count, &vv, 0); }), 0);
    std::vector<api_VVObj_t> out;
    if (vv != nullptr && count > 0)
        out.assign(vv, vv + static_cast<size_t>(count));
    free_if_not_null(vv);
    return out;
}

struct SetView
{
    std::string name;
    std::vector<std::string> members;
};

std::vector<SetView> allSets(const char* ifKey = nullptr, const char* ifValue = nullptr)
{
    api_okv_opts_t opts{};
    if (ifKey)
        api_okv_addIfKV(&opts, ifKey, ifValue);
    api_sets_t list{};
    api_Status_t st = statusForm([&] { return api_getVVSets(nullptr, ifKey ? &opts : nullptr, 0, &list); });
    EXPECT_EQ(st.code, 0);
    std::vector<SetView> out;
    for (uint32_t i = 0; i < list.count; ++i)
    {
        SetView s{list.sets[i].name, {}};
        for (int k = 0; k < list.sets[i].memberCount; ++k)
            s.members.push_back(list.sets[i].members[k].name);
        out.push_back(s);
    }
    api_freeSets(&list);
    api_free_okv_opts(&opts);
    return out;
}

TEST_F(ArrayTest, DemoArrayHoldsEveryFeatureItPromises)
{
    zdasim_reset_demo_array();
    EXPECT_EQ(zdasim_log_count(), 0u) << "the demo array logged a problem";

    // Volumes: 20 and more base volumes of several sizes over 3 CPGs and 2
    // domains, some without snapshot space, a system volume, copies.
    std::set<std::string> cpgs, domains;
    std::set<unsigned long long> sizes;
    int base = 0, noSnap = 0, system = 0, snapshots = 0;
    std::map<std::string, api_VVObj_t> clones;
    for (const api_VVObj_t& v : allVolumes())
    {
        if (v.type == API_VV_TYPE_BASE && !(v.policy & VV_POLICY_SYSTEM))
        {
            ++base;
            cpgs.insert(v.usrCpgName);
            if (v.domain[0])
                domains.insert(v.domain);
            sizes.insert(v.sizeMiB);
            noSnap += v.cpgName[0] == '\0';
        }
        system += (v.policy & VV_POLICY_SYSTEM) != 0;
        snapshots += v.type == API_VV_TYPE_VIRTUAL_COPY;
        if (v.type == API_VV_TYPE_PHYSICAL_COPY)
            clones[v.name] = v;
    }
    EXPECT_GE(base, 20);
    EXPECT_GE(cpgs.size(), 3u);
    EXPECT_EQ(domains.size(), 2u);
    EXPECT_GE(sizes.size(), 4u);
    EXPECT_GE(noSnap, 2);
    EXPECT_EQ(system, 1);
    EXPECT_GE(snapshots, 3);

    // Clones in different states: done, copying, failed, and one that fails soon.
    ASSERT_EQ(clones.size(), 4u);
    EXPECT_EQ(clones["fin_db02.clone"].copyProgress, 100);
    EXPECT_NE(clones["fin_db02.clone"].curWhenSynced, 0);
    EXPECT_TRUE(clones["fin_db03.clone"].state & API_VV_STATE_COPYING);
    EXPECT_EQ(clones["fin_db03.clone"].copyProgress, 40);
    std::map<std::string, api_task_t> copyTasks;
    for (const api_task_t& t : tasks())
        if (t.type == API_TASK_PHYSICAL_COPY)
            copyTasks[t.name] = t;
    EXPECT_EQ(copyTasks["eng_build03.clone"].state, API_TASK_FAILED);
    EXPECT_EQ(copyTasks["eng_build02.clone"].state, API_TASK_ACTIVE);

    // Sets: empty, one member, names joined longer than 255, parentRCGroup,
    // a volume in two sets.
    std::map<std::string, int> setsOf;
    bool empty = false, single = false, longJoin = false;
    for (const SetView& s : allSets())
    {
        empty = empty || s.members.empty();
        single = single || s.members.size() == 1;
        size_t joined = 0;
        for (const std::string& m : s.members)
            joined += m.size() + 1;
        longJoin = longJoin || joined > 256;
        for (const std::string& m : s.members)
            ++setsOf[m];
    }
    EXPECT_TRUE(empty);
    EXPECT_TRUE(single);
    EXPECT_TRUE(longJoin);
    EXPECT_EQ(setsOf["fin_db01"], 2);
    // Snapshot sets of a remote copy group: of all its volumes, and of fewer.
    std::set<size_t> snapshotCounts;
    for (const SetView& s : allSets("parentRCGroup", "rcg_fin_sync"))
        snapshotCounts.insert(s.members.size());
    EXPECT_EQ(snapshotCounts, (std::set<size_t>{1, 2}));

    // Remote copy: targets of every kind.
    RcopyView rc = readRcopy();
    EXPECT_EQ(rc.sysMode, RM_SYS_MODE_ON);
    std::set<int> statuses;
    std::map<uint32_t, int> perRemote;
    bool unusable = false, computedOnly = false;
    for (const rm_target& t : rc.targets)
    {
        statuses.insert(t.rm_status);
        ++perRemote[t.rm_remote_sysID];
        unusable = unusable || (t.rm_options & 0x800000u);
        computedOnly = computedOnly || (t.rm_node_wwn[0] == '\0' && t.rm_computed_remote_node_wwn[0] != '\0');
    }
    EXPECT_TRUE(statuses.count(RM_TARGET_READY) && statuses.count(RM_TARGET_FAILED) &&
        statuses.count(RM_TARGET_DISABLED));
    EXPECT_TRUE(unusable);
    EXPECT_TRUE(computedOnly);
    int sharedRemote = 0;
    for (const auto& [id, n] : perRemote)
        sharedRemote += n >= 2;
    EXPECT_GE(sharedRemote, 1);
    EXPECT_GT(rc.linkCount, 0);

    // Groups: primary and secondary, sync and periodic, started, stopped,
    // syncing, two targets, mixed volume states, failed over.
    std::set<int> roles, modes, states;
    bool twoTargets = false, mixed = false, syncing = false, failedOver = false;
    for (const GroupView& g : rc.groups)
    {
        roles.insert(g.natural);
        twoTargets = twoTargets || g.targets.size() == 2;
        failedOver = failedOver || g.dr == RM_DR_FAILOVER_DONE;
        for (const GroupTargetView& t : g.targets)
        {
            modes.insert(static_cast<int>(t.mode));
            states.insert(t.state);
        }
        std::set<int> mapStates;
        for (const VolView& v : g.volumes)
        {
            mapStates.insert(v.maps[0].status);
            syncing = syncing || v.maps[0].status == RM_GROUP_VV_SYNCING;
        }
        mixed = mixed || mapStates.size() >= 3;
    }
    EXPECT_EQ(roles, (std::set<int>{0, 1}));
    EXPECT_TRUE(modes.count(RM_TARGET_MODE_SYNC) && modes.count(RM_TARGET_MODE_PERIODIC));
    EXPECT_TRUE(states.count(2) && states.count(4));
    EXPECT_TRUE(twoTargets);
    EXPECT_TRUE(mixed);
    EXPECT_TRUE(syncing);
    EXPECT_TRUE(failedOver);

    // A new target in no group, a target without any WWN, a group never
    // started, one without a domain, an empty one, a volume without a map
    // for one of its group's targets (its slot names no target).
    std::set<std::string> grouped;
    for (const GroupView& g : rc.groups)
        for (const GroupTargetView& t : g.targets)
            grouped.insert(t.target);
    bool newUnused = false, noWwn = false;
    for (const rm_target& t : rc.targets)
    {
        newUnused = newUnused || (t.rm_status == RM_TARGET_NEW && !grouped.count(t.rm_hdr.rm_name));
        noWwn = noWwn || (t.rm_node_wwn[0] == '\0' && t.rm_computed_remote_node_wwn[0] == '\0');
    }
    EXPECT_TRUE(newUnused);
    EXPECT_TRUE(noWwn);
    bool neverStarted = false, noDomain = false, emptyGroup = false, unmapped = false;
    bool byMode = false, newEmpty = false;
    for (const GroupView& g : rc.groups)
    {
        bool allNew = !g.volumes.empty();
        for (const GroupTargetView& t : g.targets)
            allNew = allNew && t.state == 0;
        for (const VolView& v : g.volumes)
            for (const MapView& m : v.maps)
            {
                allNew = allNew && m.status == RM_GROUP_VV_NEW;
                unmapped = unmapped || m.target.empty();
            }
        neverStarted = neverStarted || allNew;
        noDomain = noDomain || g.domain.empty();
        emptyGroup = emptyGroup || g.volumes.empty();
        for (const GroupTargetView& t : g.targets)
            byMode = byMode || (t.mode == RM_TARGET_MODE_PERIODIC && (t.options & 0x400000u));
        newEmpty = newEmpty || (g.volumes.empty() && g.targets[0].state == 0);
    }
    EXPECT_TRUE(neverStarted && noDomain && emptyGroup && unmapped);
    // A periodic group whose direction follows its mode (option 0x400000),
    // and a group never started without volumes.
    EXPECT_TRUE(byMode && newEmpty);

    // Users and their rights.
    const char* replication = "zda_replicationservice.modifyreplicasynchronization.split";
    const char* settings = "zda_storagesetting.modifyinstance";
    EXPECT_EQ(api_authorizeCIMUser("admin", "192.0.2.1", settings), API_AUTH_ALLOWED);
    EXPECT_EQ(api_authorizeCIMUser("operator", "192.0.2.1", replication), API_AUTH_ALLOWED);
    EXPECT_EQ(api_authorizeCIMUser("operator", "192.0.2.1", settings), API_AUTH_DENIED);
    EXPECT_EQ(api_authorizeCIMUser("viewer", "192.0.2.1", replication), 1);
    EXPECT_EQ(api_zdaOpenForCimserver("viewer"), 0);
    EXPECT_NE(api_zdaOpenForCimserver("noaccess"), 0);

    // The clock moves the demo along: the syncing group gets in sync, the
    // failing clone fails.
    zdasim_clock_advance(3 * 3600);
    rc = readRcopy();
    for (const VolView& v : rc.group("rcg_eng_syncing")->volumes)
        EXPECT_EQ(v.maps[0].status, RM_GROUP_VV_SYNCED);
    for (const api_task_t& t : tasks())
    {
        if (std::string(t.name) == "eng_build02.clone")
        {
            EXPECT_EQ(t.state, API_TASK_FAILED);
        }
    }
}

}  // namespace
}  // namespace zdatest
