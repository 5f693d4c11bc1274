// The replication service's group and peer system methods and the remote
// replication model through the running server on the demo array: paths,
// reference arrays and embedded instances as CIMClient sends and reads
// them, and references as wbemcli writes them.
#include "DemoArrayTest.h"

#include <vector>

using namespace zda_it;
using zda_test::text;
PEGASUS_USING_PEGASUS;

namespace
{

class ReplicationMethodsTest : public DemoArrayTest
{};

TEST_F(ReplicationMethodsTest, AGroupIsCreatedRenamedAndDeleted)
{
    Array<CIMObjectPath> members;
    members.append(volume("fin_db05"));
    members.append(volume("fin_db06"));
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("GroupName", CIMValue(String("it_group"))));
    in.append(CIMParamValue("Members", CIMValue(members)));
    ASSERT_EQ(call("CreateGroup", in, out), "returned 0");
    CIMObjectPath group;
    outValue(out, "ReplicationGroup").get(group);
    ASSERT_NE(text(group.toString()).find("KX_ORLA:it_group"), std::string::npos);

    CommandResult renamed = admin(
        "mi", "ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:it_group\"", {"ElementName=\"it_renamed\""});
    ASSERT_EQ(renamed.exitCode, 0) << renamed.output;
    CIMObjectPath renamedGroup("root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:it_renamed\"");
    EXPECT_EQ(client.associatorNames("root/zda", renamedGroup, "ZDA_MemberOfReplicationGroup").size(), 2u);

    // Deleted by reference; the host is the one the array's paths carry.
    const std::string reference = "ReplicationGroup=" + text(group.getHost()) +
        "/root/zda:ZDA_ReplicationGroup.InstanceID=\"KX_ORLA:it_renamed\"";
    CommandResult deleted = admin("cm", SERVICE, {"DeleteGroup." + reference});
    EXPECT_NE(deleted.output.find("DeleteGroup: 0"), std::string::npos) << deleted.output;
    // The set is gone, its volumes stay.
    EXPECT_EQ(client.associatorNames("root/zda", renamedGroup, "ZDA_MemberOfReplicationGroup").size(), 0u);
    EXPECT_NO_THROW(client.getInstance("root/zda", members[1]));
}

// Each class of the remote replication model, listed and every path it
// lists fetched again, carrying its keys: plain and reference keys as
// CIMClient sends and reads them. The demo array has 13 remote copy groups
// and 8 targets; 15 far groups (one per group and target) and 23 far
// volumes (one per group volume and target it has a map for); 23 pairs of
// volumes and 17 of groups.
TEST_F(ReplicationMethodsTest, TheRemoteModelIsListedAndFetched)
{
    const std::vector<std::pair<const char*, size_t>> classes = {{"ZDA_RemoteReplicationGroup", 13},
        {"ZDA_RemoteReplicationCollection", 8}, {"ZDA_RemoteServiceAccessPoint", 8},
        {"ZDA_ReplicationEntity", 38}, {"ZDA_RemoteStorageSynchronized", 23},
        {"ZDA_RemoteGroupSynchronized", 17}};
    for (const auto& c : classes)
    {
        Array<CIMObjectPath> paths = client.enumerateInstanceNames("root/zda", c.first);
        EXPECT_EQ(paths.size(), c.second) << c.first;
        for (Uint32 i = 0; i < paths.size(); i++)
        {
            SCOPED_TRACE(text(paths[i].toString()));
            const CIMInstance fetched = client.getInstance("root/zda", paths[i], false);
            EXPECT_EQ(text(fetched.getClassName().getString()), c.first);
            const Array<CIMKeyBinding> keys = paths[i].getKeyBindings();
            for (Uint32 k = 0; k < keys.size(); k++)
            {
                const Uint32 at = fetched.findProperty(keys[k].getName());
                ASSERT_NE(at, PEG_NOT_FOUND) << text(keys[k].getName().getString());
                const CIMValue value = fetched.getProperty(at).getValue();
                if (keys[k].getType() == CIMKeyBinding::REFERENCE)
                {
                    CIMObjectPath end;
                    value.get(end);
                    EXPECT_TRUE(end.getClassName().equal(CIMObjectPath(keys[k].getValue()).getClassName()));
                }
                else
                {
                    EXPECT_EQ(text(value.toString()), text(keys[k].getValue()));
                }
            }
        }
    }
    CommandResult sap = admin("gi",
        "ZDA_RemoteServiceAccessPoint.CreationClassName=\"ZDA_RemoteServiceAccessPoint\","
        "Name=\"siteE\",SystemCreationClassName=\"ZDA_StorageSystem\",SystemName=\"elsewhere\"",
        {}, {"-nl"});
    EXPECT_NE(sap.output.find("-OperationalStatus=10,2"), std::string::npos) << sap.output;
}

// The peer systems and one's access points: wbemcli prints the raw answer
// (cmx), CIMClient reads it and passes a peer back as it came.
TEST_F(ReplicationMethodsTest, PeerSystemsAndTheirAccessPoints)
{
    CommandResult ready = admin("cmx", SERVICE, {"GetPeerSystems.Options=2"});
    EXPECT_EQ(ready.exitCode, 0) << ready.output;
    EXPECT_NE(ready.output.find("2FF70002AC013E64"), std::string::npos) << ready.output;
    EXPECT_EQ(ready.output.find("2FF70002AC01B5C8"), std::string::npos) << ready.output;

    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("Options", CIMValue(Uint16(0))));
    ASSERT_EQ(call("GetPeerSystems", in, out), "returned 0");
    Array<CIMObjectPath> systems;
    outValue(out, "Systems").get(systems);
    ASSERT_EQ(systems.size(), 5u);  // siteB's two targets count once; no WWN, no entry

    in.clear();
    in.append(CIMParamValue("System", CIMValue(systems[0])));
    ASSERT_EQ(call("GetServiceAccessPoints", in, out), "returned 0");
    Array<CIMObjectPath> accessPoints;
    outValue(out, "ServiceAccessPoints").get(accessPoints);
    std::vector<std::string> names;
    for (Uint32 i = 0; i < accessPoints.size(); i++)
        names.push_back(
            text(valueOf<String>(client.getInstance("root/zda", accessPoints[i], false), "Name")));
    EXPECT_EQ(names, (std::vector<std::string>{"siteB_ip", "siteB_fc"}));
}

// Relationships listed as paths, and as embedded instances.
TEST_F(ReplicationMethodsTest, RelationshipsAsPathsAndAsInstances)
{
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("Locality", CIMValue(Uint16(3))));
    ASSERT_EQ(call("GetReplicationRelationships", in, out), "returned 0");
    Array<CIMObjectPath> remote;
    outValue(out, "Synchronizations").get(remote);
    EXPECT_EQ(remote.size(), 23u + 17u);

    in.clear();
    out.clear();
    in.append(CIMParamValue("CopyState", CIMValue(Uint16(13))));
    ASSERT_EQ(call("GetReplicationRelationshipInstances", in, out), "returned 0");
    Array<CIMObject> skewed;
    outValue(out, "Synchronizations").get(skewed);
    ASSERT_FALSE(skewed.size() == 0);
    for (Uint32 i = 0; i < skewed.size(); i++)
        EXPECT_EQ(valueOf<Uint16>(CIMInstance(skewed[i]), "CopyState"), 13);
}

}  // namespace
