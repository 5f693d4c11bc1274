// Navigation through the running server on the demo array: from the storage
// system to every group, collection and access point it hosts, from the
// replication service to its capabilities and to every element it affects,
// from a remote copy group to its ordered volumes, access points and ports,
// from a job to what it acts on, and back, with wbemcli and CIMClient.
#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <sstream>

using namespace zda_it;
PEGASUS_USING_PEGASUS;

namespace
{

const char SYSTEM[] = "ZDA_StorageSystem.CreationClassName=\"ZDA_StorageSystem\",Name=\"zda-demo\"";
const char SERVICE[] = "ZDA_ReplicationService.CreationClassName=\"ZDA_ReplicationService\","
                       "Name=\"KX_ORLA_ReplicationService\",SystemCreationClassName="
                       "\"ZDA_StorageSystem\",SystemName=\"zda-demo\"";

// One association: the object it starts from and the class of its far ends.
struct Walk
{
    const char* association;
    const char* from;
    const char* farClass;
    const char* farRole;
};

const Walk WALKS[] = {
    {"ZDA_CapabilitiesOfReplicationService", SERVICE, "ZDA_ReplicationServiceCapabilities", "Capabilities"},
    {"ZDA_ReplicationAffectsElement", SERVICE, "ZDA_ReplicationGroup", "AffectedElement"},
    {"ZDA_HostedReplicationGroup", SYSTEM, "ZDA_ReplicationGroup", "Dependent"},
    {"ZDA_ReplicationServiceAffectsRemoteReplicationGroup", SERVICE, "ZDA_RemoteReplicationGroup",
        "AffectedElement"},
    {"ZDA_HostedRemoteReplicationGroup", SYSTEM, "ZDA_RemoteReplicationGroup", "Dependent"},
    {"ZDA_ReplicationAffectsRemoteCollection", SERVICE, "ZDA_RemoteReplicationCollection", "AffectedElement"},
    {"ZDA_HostedRemoteReplicationCollection", SYSTEM, "ZDA_RemoteReplicationCollection", "Dependent"},
    {"ZDA_ReplicationAffectsEntity", SERVICE, "ZDA_ReplicationEntity", "AffectedElement"},
    {"ZDA_HostedRemoteSAP", SYSTEM, "ZDA_RemoteServiceAccessPoint", "Dependent"},
};

// The object part of a path wbemcli printed ("host:port/root/zda:<object>").
std::string objectOf(const std::string& line)
{
    return line.substr(line.find(':', line.find('/')) + 1);
}

class NavigationWalkTest : public SharedServerTest
{
protected:
    // As admin.
    static CommandResult wbemcli(
        const std::string& verb, const std::string& object, const std::vector<std::string>& options = {})
    {
        return SharedServerTest::wbemcli(verb, "admin:admin-demo", object, options);
    }
};

TEST_F(NavigationWalkTest, WbemcliWalksEveryAssociationBothWays)
{
    for (const Walk& walk : WALKS)
    {
        SCOPED_TRACE(walk.association);
        CommandResult every = wbemcli("ein", walk.farClass);
        ASSERT_EQ(every.exitCode, 0) << every.output;
        const size_t count = outputLines(every.output).size();
        ASSERT_GT(count, 0u);

        CommandResult far = wbemcli("ain", walk.from, {"-ac", walk.association});
        ASSERT_EQ(far.exitCode, 0) << far.output;
        std::vector<std::string> farPaths = outputLines(far.output);
        EXPECT_EQ(farPaths.size(), count) << far.output;
        CommandResult links = wbemcli("rin", walk.from, {"-arc", walk.association});
        ASSERT_EQ(links.exitCode, 0) << links.output;
        EXPECT_EQ(outputLines(links.output).size(), count) << links.output;

        // Back from each far end to where the walk started.
        for (const std::string& path : farPaths)
        {
            CommandResult back = wbemcli("ain", objectOf(path), {"-ac", walk.association});
            ASSERT_EQ(back.exitCode, 0) << back.output;
            std::vector<std::string> found = outputLines(back.output);
            ASSERT_EQ(found.size(), 1u) << back.output;
            const std::string fromClass(walk.from, std::string(walk.from).find('.') + 1);
            EXPECT_EQ(objectOf(found[0]).rfind(fromClass, 0), 0u) << found[0];
        }
    }
}

TEST_F(NavigationWalkTest, CimClientReadsTheAssociationsAndTheirEnds)
{
    CIMClient client;
    client.connect("127.0.0.1", Uint32(server->httpPort()), "admin", "admin-demo");
    for (const Walk& walk : WALKS)
    {
        SCOPED_TRACE(walk.association);
        const CIMObjectPath from(walk.from);
        Array<CIMObject> ends = client.associators("root/zda", from, walk.association, walk.farClass);
        Array<CIMObjectPath> every = client.enumerateInstanceNames("root/zda", walk.farClass);
        EXPECT_EQ(ends.size(), every.size());
        for (Uint32 i = 0; i < ends.size(); i++)
            EXPECT_TRUE(ends[i].getClassName().equal(walk.farClass));

        Array<CIMObject> links = client.references("root/zda", from, walk.association);
        ASSERT_EQ(links.size(), every.size());
        Array<CIMInstance> all = client.enumerateInstances("root/zda", walk.association);
        EXPECT_EQ(all.size(), every.size());
        // A link read by its path names the far end it was found with.
        CIMInstance link = client.getInstance("root/zda", links[0].getPath());
        const Uint32 at = link.findProperty(walk.farRole);
        ASSERT_NE(at, PEG_NOT_FOUND);
        CIMObjectPath farEnd;
        link.getProperty(at).getValue().get(farEnd);
        EXPECT_TRUE(farEnd.getClassName().equal(walk.farClass));
        Array<CIMObjectPath> back = client.associatorNames("root/zda", farEnd, walk.association);
        ASSERT_EQ(back.size(), 1u);
        EXPECT_TRUE(back[0].getClassName().equal(from.getClassName()));

        // A far end the array does not have leads nowhere.
        Array<CIMKeyBinding> keys = farEnd.getKeyBindings();
        for (Uint32 k = 0; k < keys.size(); k++)
            if (keys[k].getName().equal("InstanceID") || keys[k].getName().equal("Name"))
                keys[k] = CIMKeyBinding(keys[k].getName(), "KX_ORLA:no_such", CIMKeyBinding::STRING);
        farEnd.setKeyBindings(keys);
        EXPECT_EQ(client.associatorNames("root/zda", farEnd, walk.association).size(), 0u);
    }
}

const char RCG_MIXED[] = "ZDA_RemoteReplicationGroup.InstanceID=\"KX_ORLA:rcg_mixed\"";
const char RCG_FIN_SYNC[] = "ZDA_RemoteReplicationGroup.InstanceID=\"KX_ORLA:rcg_fin_sync\"";
const char SYNC_JOB[] = "ZDA_ConcreteJob.InstanceID=\"KX_ORLA:1003\"";
const char FC_PORT[] = "ZDA_SCSIProtocolFCEndpoint.CreationClassName=\"ZDA_SCSIProtocolFCEndpoint\","
                       "Name=\"20120002AC00A42A\",SystemCreationClassName=\"ZDA_StorageSystem\","
                       "SystemName=\"zda-demo\"";

// How many of `paths` are of the class `className`.
size_t countOfClass(const std::vector<std::string>& paths, const std::string& className)
{
    size_t n = 0;
    for (const std::string& path : paths)
        n += objectOf(path).rfind(className + ".", 0) == 0;
    return n;
}

TEST_F(NavigationWalkTest, WbemcliWalksGroupsToVolumesPortsAndJobsToWhatTheyAffect)
{
    // A remote copy group's volumes, one link for each.
    CommandResult members = wbemcli("ain", RCG_MIXED, {"-ac", "ZDA_OrderedMemberOfRemoteReplicationGroup"});
    ASSERT_EQ(members.exitCode, 0) << members.output;
    EXPECT_EQ(countOfClass(outputLines(members.output), "ZDA_StorageVolume"), 4u) << members.output;
    CommandResult links = wbemcli("ri", RCG_MIXED, {"-arc", "ZDA_OrderedMemberOfRemoteReplicationGroup"});
    ASSERT_EQ(links.exitCode, 0) << links.output;
    EXPECT_NE(links.output.find("AssignedSequence=4"), std::string::npos) << links.output;

    // The FC target's access point and its link's FC port, and back from the
    // port to the group and to the group's volumes.
    CommandResult available = wbemcli(
        "ain", RCG_FIN_SYNC, {"-ac", "ZDA_SAPAvailableForRemoteReplicationGroup"});
    ASSERT_EQ(available.exitCode, 0) << available.output;
    std::vector<std::string> points = outputLines(available.output);
    EXPECT_EQ(points.size(), 2u) << available.output;
    EXPECT_EQ(countOfClass(points, "ZDA_RemoteServiceAccessPoint"), 1u);
    EXPECT_EQ(countOfClass(points, "ZDA_SCSIProtocolFCEndpoint"), 1u);
    CommandResult port = wbemcli("gi", FC_PORT);
    ASSERT_EQ(port.exitCode, 0) << port.output;
    EXPECT_NE(port.output.find("FC port 0:1:2"), std::string::npos) << port.output;
    CommandResult volumes = wbemcli("ain", FC_PORT, {"-ac", "ZDA_SAPAvailableForRemoteReplicaVolume"});
    ASSERT_EQ(volumes.exitCode, 0) << volumes.output;
    EXPECT_EQ(countOfClass(outputLines(volumes.output), "ZDA_StorageVolume"), 2u) << volumes.output;
    CommandResult ipPorts = wbemcli("ein", "ZDA_IPProtocolEndpoint");
    ASSERT_EQ(ipPorts.exitCode, 0) << ipPorts.output;
    EXPECT_EQ(outputLines(ipPorts.output).size(), 2u) << ipPorts.output;

    // A synchronization job: its group and the far group, as an entity.
    CommandResult affected = wbemcli("ain", SYNC_JOB, {"-ac", "ZDA_AffectedJobElement"});
    ASSERT_EQ(affected.exitCode, 0) << affected.output;
    std::vector<std::string> ends = outputLines(affected.output);
    EXPECT_EQ(countOfClass(ends, "ZDA_RemoteReplicationGroup"), 1u) << affected.output;
    EXPECT_EQ(countOfClass(ends, "ZDA_ReplicationEntity"), 1u) << affected.output;
}

TEST_F(NavigationWalkTest, CimClientReadsMembersInOrderAndWhatAJobAffects)
{
    CIMClient client;
    client.connect("127.0.0.1", Uint32(server->httpPort()), "admin", "admin-demo");
    const char* order[] = {"eng_scratch02", "eng_scratch03", "eng_build06", "eng_build04"};
    Array<CIMObject> links = client.references(
        "root/zda", CIMObjectPath(RCG_MIXED), "ZDA_OrderedMemberOfRemoteReplicationGroup");
    ASSERT_EQ(links.size(), 4u);
    for (Uint32 i = 0; i < links.size(); i++)
    {
        CIMInstance link(links[i]);
        Uint64 sequence = 0;
        ASSERT_NE(link.findProperty("AssignedSequence"), PEG_NOT_FOUND);
        link.getProperty(link.findProperty("AssignedSequence")).getValue().get(sequence);
        EXPECT_EQ(sequence, Uint64(i + 1));
        CIMObjectPath member;
        link.getProperty(link.findProperty("Member")).getValue().get(member);
        CIMInstance volume = client.getInstance("root/zda", member, false);
        String name;
        volume.getProperty(volume.findProperty("ElementName")).getValue().get(name);
        EXPECT_EQ(name, String(order[i]));
    }

    // Each target's collection holds its access point.
    Array<CIMObject> points = client.associators("root/zda",
        CIMObjectPath("ZDA_RemoteReplicationCollection.InstanceID=\"KX_ORLA:siteB_ip\""),
        "ZDA_MemberOfRemoteReplicationCollection");
    ASSERT_EQ(points.size(), 1u);
    EXPECT_TRUE(points[0].getClassName().equal("ZDA_RemoteServiceAccessPoint"));

    // The job, its group's instance, and back from the group to the job.
    Array<CIMObject> groups = client.associators(
        "root/zda", CIMObjectPath(SYNC_JOB), "ZDA_AffectedJobElement", "ZDA_RemoteReplicationGroup");
    ASSERT_EQ(groups.size(), 1u);
    Array<CIMObjectPath> jobs = client.associatorNames(
        "root/zda", groups[0].getPath(), "ZDA_AffectedJobElement");
    ASSERT_EQ(jobs.size(), 1u);
    EXPECT_TRUE(jobs[0].getClassName().equal("ZDA_ConcreteJob"));
}

}  // namespace
