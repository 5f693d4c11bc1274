// Sessions, rights, the node count, limits and ports.
#include <tuple>

#include "sim_fixture.h"

using namespace zdatest;

using ::testing::AllOf;
using SystemTest = ArrayTest;

TEST_F(SystemTest, OpenAcceptsKnownUsersOnly)
{
    const std::tuple<const char*, bool> cases[] = {{"admin", true}, {"operator", true}, {"viewer", true},
        {"noaccess", false}, {"nobody", false}, {"Admin", false}, {nullptr, false}};
    for (const auto& [user, ok] : cases)
        EXPECT_EQ(api_zdaOpenForCimserver(user) == 0, ok) << (user ? user : "(null)");
    ASSERT_EQ(zdasim_user_refuse_open("admin", 1), 0);
    EXPECT_NE(api_zdaOpenForCimserver("admin"), 0);
    EXPECT_NE(lastJournalOf("api_zdaOpenForCimserver").find("user=\"admin\""), std::string::npos);
}

TEST_F(SystemTest, RightsAreMatchedByExactKey)
{
    const char* abortBlank = "zda_replicationservice.modifyreplicasynchronization.abort ";
    const char* abortBare = "zda_replicationservice.modifyreplicasynchronization.abort";
    const std::tuple<const char*, const char*, int> cases[] = {
        {"admin", "zda_storagesetting.modifyinstance", 0},
        {"admin", "anything at all", 0},
        {"operator", abortBlank, 0},
        {"operator", abortBare, 1},  // the key the operator has ends with a blank
        {"operator", "zda_replicationservice.creategroup", 0},
        {"operator", "ZDA_ReplicationService.CreateGroup", 1},
        {"operator", "zda_storagesetting.modifyinstance", 1},
        {"viewer", "zda_replicationservice.creategroup", 1},
        {"stranger", "zda_replicationservice.creategroup", 2},
    };
    for (const auto& [user, key, answer] : cases)
        EXPECT_EQ(api_authorizeCIMUser(user, "192.0.2.7", key), answer) << user << " / '" << key << "'";

    zdasim_role_set_right("browse", "zda_replicationservicecapabilities", 3);
    EXPECT_EQ(api_authorizeCIMUser("viewer", "::1", "zda_replicationservicecapabilities"), 3);
    ASSERT_EQ(zdasim_user_set("viewer", "edit"), 0);
    EXPECT_EQ(api_authorizeCIMUser("viewer", "::1", abortBlank), 0);
    EXPECT_EQ(zdasim_user_set("x", "no-such-role"), API_E_NOT_FOUND);

    EXPECT_THAT(lastJournalOf("api_authorizeCIMUser"),
        AllOf(HasSubstr("key=\"" + std::string(abortBlank) + "\""), HasSubstr("addr=\"::1\"")));
}

// The identity, owner, contact, node count and addresses are read back
// through the code that uses them; the control refuses what is no address.
TEST_F(SystemTest, AddressControlRefusesWhatIsNoAddress)
{
    EXPECT_EQ(zdasim_system_set_addresses("bogus", ""), API_E_INVALID);
}

TEST_F(SystemTest, Limits)
{
    uint32_t maxVol = 0, maxBase = 0, perBase = 0, rw = 0;
    EXPECT_EQ(api_getMaxVolumeNumbers(&maxVol, &maxBase, &perBase, &rw), 0);
    EXPECT_GT(maxVol, maxBase);
    EXPECT_GT(perBase, 0u);
    EXPECT_GT(rw, 0u);
    for (int var = ZDA_RM_MAX_GROUPS_SYNC; var <= ZDA_RM_GROUP_MAX_VOLUMES; ++var)
    {
        uint32_t v = 0;
        EXPECT_EQ(api_getmvar(var, &v), 0);
        EXPECT_GT(v, 0u) << var;  // callers ask again while a limit reads 0
    }
    uint32_t v = 9;
    EXPECT_NE(api_getmvar(7, &v), 0);
    EXPECT_EQ(v, 0u);
    EXPECT_NE(api_getmvar(-1, &v), 0);
    // The control refuses a limit the array does not have.
    EXPECT_EQ(zdasim_system_set_rcopy_limit(7, 1), API_E_INVALID);
}

TEST_F(SystemTest, PortsAndTheirLogicalIds)
{
    int count = 0;
    api_port_t* ports = nullptr;
    ASSERT_EQ(api_getFCPorts(&count, &ports), 0);
    ASSERT_EQ(count, 2);
    EXPECT_EQ(api_getFCPortLPID(ports[1].wwn), ports[1].lpid);
    free_if_not_null(ports);
    ASSERT_EQ(api_getRCIPPorts(&count, &ports), 0);
    ASSERT_EQ(count, 2);
    EXPECT_STREQ(ports[0].ipAddr, "198.51.100.5");
    free_if_not_null(ports);
    EXPECT_EQ(api_getFCPortLPID(0x1234), -1);
    EXPECT_EQ(api_getiSCSIPortLPID("iqn.2026-01.local.zda-sim:0.2.1"), 3);
    EXPECT_EQ(api_getiSCSIPortLPID("iqn.nope"), -1);
}
