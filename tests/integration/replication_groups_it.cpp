// Replication groups of the demo array through the running server: wbemcli
// and CIMClient enumerate them, walk from a group to its volumes and back,
// and rename one.
#include "SdkText.h"
#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <set>
#include <sstream>

using namespace zda_it;
using zda_test::text;
PEGASUS_USING_PEGASUS;

namespace
{

const char FIN_DATABASES[] = "ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:fin_databases\"";
const char MEMBER_OF[] = "ZDA_MemberOfReplicationGroup";

class ReplicationGroupsTest : public SharedServerTest
{};

TEST_F(ReplicationGroupsTest, WbemcliWalksFromAGroupToItsVolumesAndBack)
{
    CommandResult groups = wbemcli("ein", "admin:admin-demo", "ZDA_ReplicationGroup");
    ASSERT_EQ(groups.exitCode, 0) << groups.output;
    for (const char* set : {"fin_databases", "fin_logs", "empty_set", "single_set"})
        EXPECT_NE(groups.output.find(std::string("KX_ORLA:") + set), std::string::npos) << set;

    CommandResult volumes = wbemcli("ain", "admin:admin-demo", FIN_DATABASES, {"-ac", MEMBER_OF});
    ASSERT_EQ(volumes.exitCode, 0) << volumes.output;
    std::vector<std::string> volumePaths = outputLines(volumes.output);
    ASSERT_EQ(volumePaths.size(), 4u) << volumes.output;
    EXPECT_EQ(countOccurrences(volumes.output, "ZDA_StorageVolume."), 4u);

    CommandResult pairs = wbemcli("ri", "admin:admin-demo", FIN_DATABASES);
    ASSERT_EQ(pairs.exitCode, 0) << pairs.output;
    EXPECT_EQ(countOccurrences(pairs.output, MEMBER_OF), 4u) << pairs.output;

    // Back from the first volume (fin_db01, also in fin_logs) to its groups.
    const std::string path = volumePaths[0];
    const std::string object = path.substr(path.find(':', path.find('/')) + 1);
    CommandResult back = wbemcli("ai", "admin:admin-demo", object, {"-ac", MEMBER_OF});
    ASSERT_EQ(back.exitCode, 0) << back.output;
    EXPECT_NE(back.output.find("KX_ORLA:fin_databases"), std::string::npos) << back.output;
    EXPECT_NE(back.output.find("KX_ORLA:fin_logs"), std::string::npos) << back.output;
}

TEST_F(ReplicationGroupsTest, WbemcliRenamesAGroup)
{
    const std::string single = "ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:single_set\"";
    const std::string renamed = "ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:single_renamed\"";
    CommandResult modified = wbemcli(
        "mi", "operator:operator-demo", single, {}, {"ElementName=\"single_renamed\""});
    ASSERT_EQ(modified.exitCode, 0) << modified.output;
    CommandResult read = wbemcli("gi", "admin:admin-demo", renamed);
    EXPECT_EQ(read.exitCode, 0) << read.output;
    EXPECT_NE(read.output.find("ElementName=\"single_renamed\""), std::string::npos) << read.output;
    EXPECT_NE(wbemcli("gi", "admin:admin-demo", single).exitCode, 0);

    ASSERT_EQ(wbemcli("mi", "admin:admin-demo", renamed, {}, {"ElementName=\"single_set\""}).exitCode, 0);
}

TEST_F(ReplicationGroupsTest, CimClientWalksBothWays)
{
    CIMClient client;
    client.connect("127.0.0.1", Uint32(server->httpPort()), "admin", "admin-demo");
    Array<CIMObjectPath> groups = client.enumerateInstanceNames("root/zda", "ZDA_ReplicationGroup");
    CIMObjectPath fin;
    for (Uint32 i = 0; i < groups.size(); i++)
        if (groups[i].toString().find("KX_ORLA:fin_databases") != PEG_NOT_FOUND)
            fin = groups[i];
    ASSERT_FALSE(fin.getClassName().isNull());

    Array<CIMObject> volumes = client.associators("root/zda", fin, MEMBER_OF);
    ASSERT_EQ(volumes.size(), 4u);
    std::set<std::string> names;
    for (Uint32 i = 0; i < volumes.size(); i++)
    {
        const Uint32 at = volumes[i].findProperty("ElementName");
        ASSERT_NE(at, PEG_NOT_FOUND);
        names.insert(text(volumes[i].getProperty(at).getValue().toString()));
    }
    EXPECT_EQ(names, (std::set<std::string>{"fin_db01", "fin_db02", "fin_db03", "fin_db04"}));

    Array<CIMObjectPath> back = client.associatorNames(
        "root/zda", volumes[0].getPath(), MEMBER_OF, "CIM_ReplicationGroup");
    ASSERT_GE(back.size(), 1u);
    bool backToFin = false;
    for (Uint32 i = 0; i < back.size(); i++)
        backToFin = backToFin || back[i].toString().find("KX_ORLA:fin_databases") != PEG_NOT_FOUND;
    EXPECT_TRUE(backToFin);
}

}  // namespace
