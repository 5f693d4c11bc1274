// Array descriptions: what loads, what is refused and how, and the demo
// array compiled into the library.
#include <fstream>
#include <map>
#include <set>
#include <tuple>

#include "rcopy_support.h"

namespace zdatest
{
namespace
{

using ::testing::Contains;
using ::testing::StartsWith;

std::string load(const std::string& json, const char* origin = "t.json")
{
    char error[1024] = "";
    const int rc = zdasim_load_description_text(json.c_str(), origin, error, sizeof error);
    EXPECT_EQ(rc == 0, error[0] == '\0') << error;
    return error;
}

TEST_F(ArrayTest, BadDescriptionsNameTheFieldAndChangeNothing)
{
    const std::string cpg = R"("cpgs": [{"name": "C", "domain": "d"}])";
    const std::string target = R"({"name": "t", "remoteSystemName": "far"})";
    // Each description, and the whole message after "t.json: ".
    const std::vector<std::tuple<std::string, std::string>> cases = {
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
    for (const auto& [json, error] : cases)
    {
        EXPECT_EQ(load(json), "t.json: " + error) << json;
        // The array is the one loaded before.
        EXPECT_STREQ(volume("vol1").name, "vol1") << json;
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
    EXPECT_THAT(error, StartsWith(path + ": cannot open"));
}

TEST_F(ArrayTest, DescriptionRoundTripsThroughAFile)
{
    zdasim_reset_demo_array();
    zdasim_clock_advance(100);  // let tasks move, so that running state is written too
    auto groups = [] {
        std::vector<std::tuple<std::string, uint32_t, size_t>> out;
        for (const GroupView& g : readRcopy().groups)
            out.emplace_back(g.name, g.autoSetId, g.volumes.size());
        return out;
    };
    const std::string first = described();
    const auto before = groups();
    reloadDescription();
    EXPECT_EQ(described(), first);
    EXPECT_EQ(groups(), before);
}

// ---- the demo array, as its documentation lists it ----------------------------------

TEST_F(ArrayTest, DemoArrayHoldsEveryFeatureItPromises)
{
    zdasim_reset_demo_array();
    EXPECT_EQ(zdasim_log_count(), 0u) << "the demo array logged a problem";

    // 43 base volumes of several sizes besides the one system volume, over
    // three CPGs in two domains; some without snapshot space.
    std::set<std::string> cpgs, domains;
    std::set<unsigned long long> sizes;
    int base = 0, system = 0;
    for (const api_VVObj_t& v : getVVs(nullptr, nullptr, 0).records)
    {
        system += (v.policy & VV_POLICY_SYSTEM) != 0;
        if (v.type == API_VV_TYPE_BASE && !(v.policy & VV_POLICY_SYSTEM))
        {
            ++base;
            cpgs.insert(v.usrCpgName);
            domains.insert(v.domain);
            sizes.insert(v.sizeMiB);
        }
    }
    EXPECT_EQ(base, 43);
    EXPECT_EQ(system, 1);
    EXPECT_NE(volume("admvv").policy & VV_POLICY_SYSTEM, 0u);
    EXPECT_EQ(cpgs, (std::set<std::string>{"FC_r6", "SSD_r1", "NL_r6"}));
    EXPECT_EQ(domains, (std::set<std::string>{"finance", "engineering"}));
    EXPECT_GE(sizes.size(), 4u);
    EXPECT_STREQ(volume("fin_log01").cpgName, "");
    EXPECT_STREQ(volume("eng_scratch01").cpgName, "");

    // Copies, and clones in every state: done, copying, failing soon, failed.
    const std::pair<const char*, int> copies[] = {{"fin_db01.snap", API_VV_TYPE_VIRTUAL_COPY},
        {"fin_db01.rw", API_VV_TYPE_VIRTUAL_COPY}, {"eng_build01.snap0", API_VV_TYPE_VIRTUAL_COPY},
        {"rcg_fin_snap_1", API_VV_TYPE_VIRTUAL_COPY}, {"fin_db02.clone", API_VV_TYPE_PHYSICAL_COPY},
        {"fin_db03.clone", API_VV_TYPE_PHYSICAL_COPY}, {"eng_build02.clone", API_VV_TYPE_PHYSICAL_COPY},
        {"eng_build03.clone", API_VV_TYPE_PHYSICAL_COPY}};
    for (const auto& [name, type] : copies)
        EXPECT_EQ(volume(name).type, type) << name;
    EXPECT_EQ(volume("fin_db02.clone").copyProgress, 100);
    EXPECT_NE(volume("fin_db02.clone").curWhenSynced, 0);
    EXPECT_TRUE(volume("fin_db03.clone").state & API_VV_STATE_COPYING);
    EXPECT_EQ(volume("fin_db03.clone").copyProgress, 40);
    const std::tuple<uint32_t, std::string, int> copyTasks[] = {{900, "eng_build03.clone", API_TASK_FAILED},
        {1001, "fin_db03.clone", API_TASK_ACTIVE}, {1002, "eng_build02.clone", API_TASK_ACTIVE}};
    for (const auto& [tid, name, state] : copyTasks)
    {
        EXPECT_EQ(task(tid).name, name);
        EXPECT_EQ(task(tid).state, state) << name;
    }

    // Sets: empty, of one member, of names that join past 255 characters, a
    // volume in two sets, snapshots of a remote copy group: all and fewer.
    std::map<std::string, SetView> sets = listSets();
    EXPECT_TRUE(sets["empty_set"].members.empty());
    EXPECT_EQ(sets["single_set"].members, Names{"eng_build04"});
    size_t joined = 0;
    for (const std::string& m : sets["eng_archive_long"].members)
        joined += m.size() + 1;
    EXPECT_GT(joined, 256u);
    EXPECT_THAT(sets["fin_databases"].members, Contains("fin_db01"));
    EXPECT_THAT(sets["fin_logs"].members, Contains("fin_db01"));
    sets = listSetsWhere("parentRCGroup", "rcg_fin_sync");
    EXPECT_EQ(sets["rcg_fin_sync_snap"].members, (Names{"rcg_fin_snap_1", "rcg_fin_snap_2"}));
    EXPECT_EQ(sets["rcg_fin_sync_snap_half"].members, Names{"rcg_fin_snap_1"});

    // Remote copy targets of every kind, two of them to one system.
    RcopyView rc = readRcopy();
    EXPECT_EQ(rc.sysMode, RM_SYS_MODE_ON);
    EXPECT_GT(rc.linkCount, 0);
    std::map<std::string, rm_target> targets;
    for (const rm_target& t : rc.targets)
        targets[t.rm_hdr.rm_name] = t;
    EXPECT_EQ(targets["siteB_ip"].rm_status, RM_TARGET_READY);
    EXPECT_EQ(targets["siteB_fc"].rm_remote_sysID, targets["siteB_ip"].rm_remote_sysID);
    EXPECT_EQ(targets["siteC"].rm_status, RM_TARGET_FAILED);
    EXPECT_EQ(targets["siteD"].rm_status, RM_TARGET_DISABLED);
    EXPECT_NE(targets["siteE"].rm_options & 0x800000u, 0u);
    EXPECT_STREQ(targets["siteF"].rm_node_wwn, "");
    EXPECT_STRNE(targets["siteF"].rm_computed_remote_node_wwn, "");
    EXPECT_EQ(targets["siteG"].rm_status, RM_TARGET_NEW);
    EXPECT_STREQ(targets["siteH"].rm_node_wwn, "");
    EXPECT_STREQ(targets["siteH"].rm_computed_remote_node_wwn, "");
    for (const GroupView& g : rc.groups)
        for (const rm_group_target& t : g.targets)
            EXPECT_STRNE(t.rm_target, "siteG") << "siteG is in no group, " << g.name << " uses it";

    // Groups: each shape the documentation names.
    EXPECT_EQ(groupOf("rcg_fin_sync").natural, 1);
    EXPECT_EQ(groupOf("rcg_fin_sync").targets.at(0).rm_mode, static_cast<uint32_t>(RM_TARGET_MODE_SYNC));
    EXPECT_EQ(
        groupOf("rcg_fin_periodic").targets.at(0).rm_mode, static_cast<uint32_t>(RM_TARGET_MODE_PERIODIC));
    EXPECT_EQ(groupOf("rcg_fin_periodic").targets.at(0).rm_state, 2);
    EXPECT_EQ(groupOf("rcg_fin_stopped").targets.at(0).rm_state, 4);
    EXPECT_EQ(groupOf("rcg_eng_syncing").volumes.at(0).maps.at(0).rm_status, RM_GROUP_VV_SYNCING);
    EXPECT_EQ(groupOf("rcg_two_targets").targets.size(), 2u);
    std::set<int> mixed;
    for (const VolView& v : groupOf("rcg_mixed").volumes)
        mixed.insert(v.maps.at(0).rm_status);
    EXPECT_GE(mixed.size(), 3u);
    EXPECT_EQ(groupOf("rcg_dr_secondary").natural, 0);
    EXPECT_EQ(groupOf("rcg_dr_failover").dr, RM_DR_FAILOVER_DONE);
    EXPECT_EQ(groupOf("rcg_no_domain").domain, "");
    const GroupView empty = groupOf("rcg_empty");
    EXPECT_TRUE(empty.volumes.empty());
    EXPECT_EQ(empty.targets.at(0).rm_state, 0);
    const rm_group_target byMode = groupOf("rcg_fin_bymode").targets.at(0);
    EXPECT_EQ(byMode.rm_mode, static_cast<uint32_t>(RM_TARGET_MODE_PERIODIC));
    EXPECT_NE(byMode.rm_options & 0x400000u, 0u);
    // Never started: its targets and volumes are new, and one volume has no
    // map for the second target (its slot names no target).
    const GroupView never = groupOf("rcg_eng_new");
    for (const rm_group_target& t : never.targets)
        EXPECT_EQ(t.rm_state, 0) << t.rm_target;
    EXPECT_EQ(never.map("eng_archive_long_name_vol_09").rm_status, RM_GROUP_VV_NEW);
    EXPECT_EQ(never.map("eng_archive_long_name_vol_10").rm_status, RM_GROUP_VV_NEW);
    EXPECT_STREQ(never.map("eng_archive_long_name_vol_10", 1).rm_target, "");

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
    for (const VolView& v : groupOf("rcg_eng_syncing").volumes)
        EXPECT_EQ(v.maps.at(0).rm_status, RM_GROUP_VV_SYNCED);
    EXPECT_EQ(task(1002).state, API_TASK_FAILED);
}

}  // namespace
}  // namespace zdatest
