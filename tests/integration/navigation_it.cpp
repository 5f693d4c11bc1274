// Navigation through the running server on the demo array, as the clients
// read it: from the storage system to every group, collection and access
// point it hosts and from the replication service to its capabilities and
// to every element it affects, and back, with CIMClient; from a remote copy
// group and a job to ends of several classes with wbemcli. What each walk
// finds is proven in-process by the navigation and membership tests.
#include "DemoArrayTest.h"

#include <map>

using namespace zda_it;
PEGASUS_USING_PEGASUS;

namespace
{

const char SYSTEM[] = "ZDA_StorageSystem.CreationClassName=\"ZDA_StorageSystem\",Name=\"zda-demo\"";

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

class NavigationWalkTest : public DemoArrayTest
{};

TEST_F(NavigationWalkTest, CimClientReadsTheAssociationsAndTheirEnds)
{
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
    }
}

// wbemcli's view of far ends of several classes: a remote copy group's
// target access point and link port, and a synchronization job's group and
// far group, as an entity; and the FC port's own words.
TEST_F(NavigationWalkTest, WbemcliWalksGroupsAndJobsToEndsOfSeveralClasses)
{
    struct Case
    {
        const char* from;
        const char* association;
        std::map<std::string, size_t> found;  // how many far ends of each class
    };
    const Case cases[] = {
        {"ZDA_RemoteReplicationGroup.InstanceID=\"KX_ORLA:rcg_fin_sync\"",
            "ZDA_SAPAvailableForRemoteReplicationGroup",
            {{"ZDA_RemoteServiceAccessPoint", 1}, {"ZDA_SCSIProtocolFCEndpoint", 1}}},
        {"ZDA_ConcreteJob.InstanceID=\"KX_ORLA:1003\"", "ZDA_AffectedJobElement",
            {{"ZDA_RemoteReplicationGroup", 1}, {"ZDA_ReplicationEntity", 1}}},
    };
    for (const Case& c : cases)
    {
        CommandResult r = admin("ain", c.from, {}, {"-ac", c.association});
        SCOPED_TRACE(std::string(c.from) + " " + c.association + "\n" + r.output);
        ASSERT_EQ(r.exitCode, 0);
        std::map<std::string, size_t> found;
        for (const std::string& path : outputLines(r.output))
            found[objectOf(path).substr(0, objectOf(path).find('.'))]++;
        EXPECT_EQ(found, c.found);
    }
    CommandResult port = admin("gi",
        "ZDA_SCSIProtocolFCEndpoint.CreationClassName=\"ZDA_SCSIProtocolFCEndpoint\",Name=\"20120002AC00A42A\","
        "SystemCreationClassName=\"ZDA_StorageSystem\",SystemName=\"zda-demo\"");
    EXPECT_NE(port.output.find("FC port 0:1:2"), std::string::npos) << port.output;
}

}  // namespace
