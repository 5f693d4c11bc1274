// Navigation through the running server on the demo array: from the storage
// system to every group, collection and access point it hosts, from the
// replication service to its capabilities and to every element it affects,
// and back, with wbemcli and CIMClient.
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
    {"ZDA_CapabilitiesOfReplicationService", SERVICE, "ZDA_ReplicationServiceCapabilities",
        "Capabilities"},
    {"ZDA_ReplicationAffectsElement", SERVICE, "ZDA_ReplicationGroup", "AffectedElement"},
    {"ZDA_HostedReplicationGroup", SYSTEM, "ZDA_ReplicationGroup", "Dependent"},
    {"ZDA_ReplicationServiceAffectsRemoteReplicationGroup", SERVICE, "ZDA_RemoteReplicationGroup",
        "AffectedElement"},
    {"ZDA_HostedRemoteReplicationGroup", SYSTEM, "ZDA_RemoteReplicationGroup", "Dependent"},
    {"ZDA_ReplicationAffectsRemoteCollection", SERVICE, "ZDA_RemoteReplicationCollection",
        "AffectedElement"},
    {"ZDA_HostedRemoteReplicationCollection", SYSTEM, "ZDA_RemoteReplicationCollection",
        "Dependent"},
    {"ZDA_ReplicationAffectsEntity", SERVICE, "ZDA_ReplicationEntity", "AffectedElement"},
    {"ZDA_HostedRemoteSAP", SYSTEM, "ZDA_RemoteServiceAccessPoint", "Dependent"},
};

std::vector<std::string> lines(const std::string& output)
{
    std::vector<std::string> out;
    std::istringstream in(output);
    for (std::string line; std::getline(in, line);)
        if (!line.empty())
            out.push_back(line);
    return out;
}

// The object part of a path wbemcli printed ("host:port/root/zda:<object>").
std::string objectOf(const std::string& line)
{
    return line.substr(line.find(':', line.find('/')) + 1);
}

class NavigationWalkTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        cimxml::registerClientTransports();
        folder = new TemporaryFolder;
        server = new ServerProcess(folder->path(), {}, false);
    }
    static void TearDownTestSuite()
    {
        const int status = server->stop();
        if (status != 0)
            ADD_FAILURE() << "the server exited with status " << status << ":\n" << server->log();
        delete server;
        delete folder;
    }
    void TearDown() override
    {
        if (HasFailure())
            std::cerr << "server log:\n" << server->log();
    }

    static CommandResult wbemcli(const std::string& verb, const std::string& object,
        const std::vector<std::string>& options = {})
    {
        std::vector<std::string> argv = {"wbemcli", verb};
        argv.insert(argv.end(), options.begin(), options.end());
        argv.push_back(server->url("admin:admin-demo", "root/zda") + object);
        return runCommand(argv);
    }

    static TemporaryFolder* folder;
    static ServerProcess* server;
};
TemporaryFolder* NavigationWalkTest::folder = nullptr;
ServerProcess* NavigationWalkTest::server = nullptr;

TEST_F(NavigationWalkTest, WbemcliWalksEveryAssociationBothWays)
{
    for (const Walk& walk : WALKS)
    {
        SCOPED_TRACE(walk.association);
        CommandResult every = wbemcli("ein", walk.farClass);
        ASSERT_EQ(every.exitCode, 0) << every.output;
        const size_t count = lines(every.output).size();
        ASSERT_GT(count, 0u);

        CommandResult far = wbemcli("ain", walk.from, {"-ac", walk.association});
        ASSERT_EQ(far.exitCode, 0) << far.output;
        std::vector<std::string> farPaths = lines(far.output);
        EXPECT_EQ(farPaths.size(), count) << far.output;
        CommandResult links = wbemcli("rin", walk.from, {"-arc", walk.association});
        ASSERT_EQ(links.exitCode, 0) << links.output;
        EXPECT_EQ(lines(links.output).size(), count) << links.output;

        // Back from each far end to where the walk started.
        for (const std::string& path : farPaths)
        {
            CommandResult back = wbemcli("ain", objectOf(path), {"-ac", walk.association});
            ASSERT_EQ(back.exitCode, 0) << back.output;
            std::vector<std::string> found = lines(back.output);
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
        Array<CIMObject> ends = client.associators("root/zda", from, walk.association,
            walk.farClass);
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

}  // namespace
