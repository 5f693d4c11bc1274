// The replication service as clients meet it through zda-cimserver: the
// module's library loaded from its registration, its one instance listed
// and read by wbemcli and CIMClient.
#include "SdkText.h"
#include "ServerProcess.h"

#include <cimxml/ClientTransport.h>

#include <Pegasus/Client/CIMClient.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <string>

using namespace zda_it;
using zda_test::text;
PEGASUS_USING_PEGASUS;

namespace
{

const char ZDA_NS[] = "root/zda";

class ReplicationServiceIT : public SharedServerTest
{};

TEST_F(ReplicationServiceIT, WbemcliListsAndReadsTheService)
{
    CommandResult names = wbemcli("ein", "viewer:viewer-demo", "ZDA_ReplicationService");
    ASSERT_EQ(names.exitCode, 0) << names.output;
    EXPECT_NE(names.output.find("Name=\"KX_ORLA_ReplicationService\""), std::string::npos) << names.output;
    EXPECT_NE(names.output.find("SystemName=\"zda-demo\""), std::string::npos) << names.output;

    const std::string path =
        "ZDA_ReplicationService.CreationClassName=\"ZDA_ReplicationService\","
        "Name=\"KX_ORLA_ReplicationService\",SystemCreationClassName=\"ZDA_StorageSystem\","
        "SystemName=\"zda-demo\"";
    CommandResult service = wbemcli("gi", "admin:admin-demo", path);
    ASSERT_EQ(service.exitCode, 0) << service.output;
    EXPECT_NE(service.output.find("StartMode=\"Automatic\""), std::string::npos) << service.output;
    EXPECT_NE(service.output.find("Started=TRUE"), std::string::npos) << service.output;
}

TEST_F(ReplicationServiceIT, CimClientEnumeratesAndGetsTheService)
{
    CIMClient client;
    client.connect("127.0.0.1", Uint32(server->httpPort()), "operator", "operator-demo");
    Array<CIMObjectPath> names = client.enumerateInstanceNames(ZDA_NS, "ZDA_ReplicationService");
    ASSERT_EQ(names.size(), 1u);
    Array<CIMInstance> all = client.enumerateInstances(ZDA_NS, "ZDA_ReplicationService", true, false);
    ASSERT_EQ(all.size(), 1u);

    CIMInstance service = client.getInstance(ZDA_NS, names[0], false);
    CIMValue caption = service.getProperty(service.findProperty("Caption")).getValue();
    EXPECT_EQ(text(caption.toString()), "KX_ORLA_ReplicationService");
    CIMValue owner = service.getProperty(service.findProperty("PrimaryOwnerName")).getValue();
    EXPECT_EQ(
        owner.toString(), all[0].getProperty(all[0].findProperty("PrimaryOwnerName")).getValue().toString());
}

}  // namespace
