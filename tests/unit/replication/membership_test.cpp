// Membership, access point and job associations on the demo array: remote
// copy groups with their ordered volumes, targets with their access points,
// groups and volumes with what they replicate over, jobs with what they act
// on; and the port endpoints those lead to. One table drives what the five
// associations share.
#include "replication_fixture.h"

#include <map>

using namespace zda_replication_test;

namespace
{

// Which operations refuse a reference of another class.
enum class ClassCheck
{
    None,
    Instances,  // getInstance and enumerateInstances
    All         // and enumerateInstanceNames
};

struct Row
{
    const char* association;
    const char* firstRole;
    const char* secondRole;
    ClassCheck classCheck;
    bool throughServer;       // gathered through the server: a failure completes
    const char* failingCall;  // an array call whose failure empties the answer
};

const Row ROWS[] = {
    {"ZDA_OrderedMemberOfRemoteReplicationGroup", "Collection", "Member", ClassCheck::All, false,
        "api_getRCopy"},
    {"ZDA_MemberOfRemoteReplicationCollection", "Collection", "Member", ClassCheck::Instances, false,
        "api_getRCopy"},
    {"ZDA_SAPAvailableForRemoteReplicationGroup", "ManagedElement", "AvailableSAP", ClassCheck::None, false,
        "api_getFCPorts"},
    {"ZDA_SAPAvailableForRemoteReplicaVolume", "ManagedElement", "AvailableSAP", ClassCheck::None, true,
        "api_getRCIPPorts"},
    {"ZDA_AffectedJobElement", "AffectingElement", "AffectedElement", ClassCheck::None, false,
        "api_getTasks"},
};

const char FC_PORT_0_1_2[] = "20120002AC00A42A";

class MembershipTest : public ReplicationTest
{
protected:
    void SetUp() override
    {
        ReplicationTest::SetUp();
        zdasim_reset_demo_array();
        ZDA_InternalCacheService::destroy();
    }

    // The job of the array's task that works on `name` ("<object>" or
    // "<object>-><other>").
    CIMObjectPath job(const std::string& name)
    {
        const Array<CIMInstance> jobs = instancesOf("ZDA_ConcreteJob");
        for (Uint32 i = 0; i < jobs.size(); i++)
            if (text(get<String>(jobs[i], "ElementName")) == name)
                return jobs[i].getPath();
        ADD_FAILURE() << "no job on " << name;
        return CIMObjectPath();
    }
};

TEST_F(MembershipTest, EveryPairIsFoundFromBothEndsAndByItsPath)
{
    for (const Row& row : ROWS)
    {
        SCOPED_TRACE(row.association);
        Array<CIMInstance> links = instancesOf(row.association);
        ASSERT_GT(links.size(), 0u);
        for (Uint32 i = 0; i < links.size() && i < 6; i++)
        {
            const CIMObjectPath first = endOf(links[i].getPath(), row.firstRole);
            const CIMObjectPath second = endOf(links[i].getPath(), row.secondRole);
            EXPECT_TRUE(foundByPath(links[i].getPath()));
            const Array<CIMObjectPath> fromFirst = far(first, row.association);
            const Array<CIMObjectPath> fromSecond = far(second, row.association);
            EXPECT_EQ(labels(fromFirst).count(label(second)), 1u);
            EXPECT_EQ(labels(fromSecond).count(label(first)), 1u);
            // The instances of the far ends are those the class's own
            // provider serves.
            Array<CIMObject> objects = assocObjects(first, row.association);
            ASSERT_EQ(objects.size(), fromFirst.size());
            const CIMInstance served = getInstance(objects[0].getPath());
            EXPECT_EQ(CIMInstance(objects[0]).getPropertyCount(), served.getPropertyCount());
            EXPECT_EQ(refNames(first, row.association, row.firstRole).size(), fromFirst.size());
        }
    }
}

TEST_F(MembershipTest, RefusalsAndRequestsThatCannotMatch)
{
    for (const Row& row : ROWS)
    {
        SCOPED_TRACE(row.association);
        const CIMObjectPath link = namesOf(row.association)[0];
        const CIMObjectPath first = endOf(link, row.firstRole);
        EXPECT_EQ(readError(withKey(link, row.secondRole, nullptr)), CIM_ERR_INVALID_PARAMETER);
        EXPECT_EQ(readError(link, "noaccess"), CIM_ERR_ACCESS_DENIED);
        EXPECT_EQ(changeErrors(link), "7 7 7");

        // Another class: refused by the membership family, as its row says.
        const CIMObjectPath other("ZDA_StorageVolume");
        const auto refusal = [&](bool instances) {
            return cimErrorOf([&] {
                direct(row.association, [&](auto&, auto& p, auto& h) {
                    if (instances)
                        p.enumerateInstances(admin(), other, false, false, CIMPropertyList(), h);
                    else
                        p.enumerateInstanceNames(admin(), other, h);
                });
            });
        };
        EXPECT_EQ(refusal(true) == CIM_ERR_NOT_SUPPORTED, row.classCheck != ClassCheck::None);
        EXPECT_EQ(refusal(false) == CIM_ERR_NOT_SUPPORTED, row.classCheck == ClassCheck::All);

        // The way back, the far role for the object, and an unknown role
        // answer nothing at all.
        for (const auto& c : std::vector<std::pair<CIMName, String>>{
                 {first.getClassName(), ""}, {CIMName(), row.secondRole}, {CIMName(), "Owner"}})
            EXPECT_EQ(directNames(row.association, first, false, c.first, c.second), "");
    }
}

TEST_F(MembershipTest, AnArrayFailureAnswersEmpty)
{
    for (const Row& row : ROWS)
    {
        SCOPED_TRACE(row.association);
        const CIMObjectPath first = endOf(namesOf(row.association)[0], row.firstRole);
        // Reading from the array leaves the answer without complete();
        // gathering through the server completes it empty.
        const std::string expected = row.throughServer ? "processing complete" : "processing";
        EXPECT_EQ(direct(row.association,
                      [&](auto& p, auto&, auto& h) {
                          zdasim_fault_add(row.failingCall, 1, API_E_INVALID, "broken");
                          p.referenceNames(admin(), first, CIMName(), "", h);
                      }),
            expected);
        zdasim_faults_clear();
        EXPECT_EQ(enumerateFailing(row.association, ""), expected);
    }
}

TEST_F(MembershipTest, MembersComeInTheGroupsOrderThroughOneMembership)
{
    const char* ordered = "ZDA_OrderedMemberOfRemoteReplicationGroup";
    EXPECT_EQ(far(rcopyGroup("rcg_empty"), ordered).size(), 0u);

    // A remote copy group's volumes come in the group's order, numbered from 1.
    Array<CIMObject> links = refObjects(rcopyGroup("rcg_mixed"), ordered);
    const std::vector<std::string> order = {"eng_scratch02", "eng_scratch03", "eng_build06", "eng_build04"};
    ASSERT_EQ(links.size(), order.size());
    for (Uint32 i = 0; i < links.size(); i++)
    {
        EXPECT_EQ(label(endOf(links[i].getPath(), "Member")), order[i]);
        EXPECT_EQ(get<Uint64>(CIMInstance(links[i]), "AssignedSequence"), Uint64(i + 1));
    }

    // Every vvset's members are reached through exactly one membership
    // association: the remote copy ones here, the others by the plain one.
    Array<CIMObjectPath> sets = namesOf("ZDA_ReplicationGroup");
    for (Uint32 i = 0; i < sets.size(); i++)
    {
        const std::string name = label(sets[i]);
        SCOPED_TRACE(name);
        const size_t plain = far(sets[i], "ZDA_MemberOfReplicationGroup").size();
        const size_t remote = far(sets[i], ordered).size();
        EXPECT_EQ(plain + remote, setMembers(name.c_str()).size());
        EXPECT_TRUE(plain == 0 || remote == 0);
        if (name == "rcg_fin_sync_snap")
        {
            EXPECT_EQ(labels(far(sets[i], ordered)), (Labels{"rcg_fin_snap_1", "rcg_fin_snap_2"}));
        }
    }
}

TEST_F(MembershipTest, GroupsReplicateOverTheirTargetsAndLinkPorts)
{
    const char* available = "ZDA_SAPAvailableForRemoteReplicationGroup";
    // An FC target's link gives the FC port at its position.
    EXPECT_EQ(labels(far(rcopyGroup("rcg_fin_sync"), available)), (Labels{"siteB_fc", FC_PORT_0_1_2}));
    // IP links give the IP ports; the port two targets' links share once.
    EXPECT_EQ(labels(far(rcopyGroup("rcg_two_targets"), available)),
        (Labels{"siteB_ip", "0:3:1", "1:3:1", "siteC"}));
    Array<CIMObject> endpoints = assocObjects(
        rcopyGroup("rcg_fin_sync"), available, "", "", "ZDA_SCSIProtocolFCEndpoint");
    ASSERT_EQ(endpoints.size(), 1u);
    EXPECT_EQ(get<Uint16>(CIMInstance(endpoints[0]), "ConnectionType"), 2);

    // A target reached as a collection is one with its access point.
    const CIMObjectPath collection("root/zda:ZDA_RemoteReplicationCollection.InstanceID=\"KX_ORLA:siteE\"");
    EXPECT_EQ(labels(far(collection, "ZDA_MemberOfRemoteReplicationCollection")), (Labels{"siteE"}));

    // A volume has what its group has; one in no remote copy group nothing.
    const char* volumeAvailable = "ZDA_SAPAvailableForRemoteReplicaVolume";
    EXPECT_EQ(labels(far(volume("fin_app02"), volumeAvailable)),
        labels(far(rcopyGroup("rcg_fin_sync"), available)));
    EXPECT_EQ(far(volume("fin_db01"), volumeAvailable).size(), 0u);
    // Back from the FC port: the volumes of the groups replicating over it.
    const CIMObjectPath port = far(rcopyGroup("rcg_fin_sync"), available, "ZDA_SCSIProtocolFCEndpoint")[0];
    EXPECT_EQ(labels(far(port, volumeAvailable)), (Labels{"fin_app01", "fin_app02"}));
}

TEST_F(MembershipTest, JobsActOnTheirVolumesAndGroups)
{
    const char* affected = "ZDA_AffectedJobElement";
    // A physical copy, failed or running, writes its copy.
    EXPECT_EQ(labels(far(job("eng_build03.clone"), affected)), (Labels{"eng_build03.clone"}));
    EXPECT_EQ(labels(far(job("fin_db03.clone"), affected)), (Labels{"fin_db03.clone"}));
    // A restore writes the copy back to its parent.
    uint32_t tid = 0;
    ASSERT_EQ(cim_sem_wait(), 0);
    const api_Status_t restore = api_restoreCopy(&event, "fin_db02.clone", &tid);
    cim_sem_post();
    ASSERT_EQ(restore.code, 0);
    EXPECT_EQ(labels(far(job("fin_db02->fin_db02.clone"), affected)), (Labels{"fin_db02"}));

    // A synchronization: its group, and the far group on its target, as an
    // entity or, under the no-replication-entity policy, a group of the
    // far system.
    const CIMObjectPath sync = job("rcg_eng_syncing->siteF");
    Array<CIMObjectPath> ends = far(sync, affected);
    EXPECT_EQ(labels(ends), (Labels{"rcg_eng_syncing", "RG:rcg_eng_syncing.r:zda-siteF"}));
    zdasim_system_set_policy(API_POLICY_NO_REPLICATION_ENTITY);
    ZDA_InternalCacheService::destroy();
    ends = far(sync, affected, "ZDA_RemoteReplicationGroup");
    ASSERT_EQ(ends.size(), 2u);
    EXPECT_EQ(labels(ends), (Labels{"rcg_eng_syncing", "rcg_eng_syncing.r"}));
    std::set<std::string> hosts;
    for (Uint32 i = 0; i < ends.size(); i++)
        hosts.insert(text(ends[i].getHost()));
    EXPECT_EQ(hosts.count("zda-siteF"), 1u);
    // A group named by no name in its InstanceID is refused before any walk.
    for (const char* association : {affected, "ZDA_OrderedMemberOfRemoteReplicationGroup"})
        EXPECT_EQ(directNames(association,
                      CIMObjectPath("ZDA_RemoteReplicationGroup.InstanceID=\"rcg_eng_syncing\"")),
            "")
            << association;
    EXPECT_EQ(far(volume("fin_db01"), affected).size(), 0u);
}

TEST_F(MembershipTest, PortEndpointsOfTheArray)
{
    struct Case
    {
        const char* className;
        Labels names;
    };
    const Case cases[] = {
        {"ZDA_SCSIProtocolFCEndpoint",
            {"20110002AC00A42A", "21110002AC00A42A", FC_PORT_0_1_2, "21120002AC00A42A"}},
        {"ZDA_IPProtocolEndpoint", {"0:3:1", "1:3:1"}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.className);
        const Array<CIMInstance> every = instancesOf(c.className);
        EXPECT_EQ(labels(every), c.names);
        EXPECT_EQ(namesOf(c.className).size(), every.size());
        EXPECT_TRUE(foundByPath(every[0].getPath()));
        const CIMObjectPath missing = withKey(every[0].getPath(), "Name", "9:9:9");
        EXPECT_EQ(readError(missing), CIM_ERR_NOT_FOUND);
        EXPECT_EQ(readError(withKey(missing, "CreationClassName", nullptr)), CIM_ERR_INVALID_PARAMETER);
    }
    // An IP port shows its address and whether its link is up.
    std::map<std::string, CIMInstance> ip;
    const Array<CIMInstance> ports = instancesOf("ZDA_IPProtocolEndpoint");
    for (Uint32 i = 0; i < ports.size(); i++)
        ip[text(get<String>(ports[i], "Name"))] = ports[i];
    EXPECT_EQ(text(get<String>(ip["0:3:1"], "IPv4Address")), "198.51.100.10");
    EXPECT_EQ(uint16s(ip["0:3:1"], "OperationalStatus"), std::vector<int>{2});
    EXPECT_EQ(uint16s(ip["1:3:1"], "OperationalStatus"), std::vector<int>{10});
}

}  // namespace
