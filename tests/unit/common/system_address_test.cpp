// The system's addresses on an array without IPv6. A program of its own:
// the addresses are kept for the life of the process once the array gave
// an IPv4 address.
#include "common_sim_fixture.h"

using namespace Pegasus;
using namespace zda_common_test;

namespace
{

class SystemAddressTest : public CommonSimTest
{};

TEST_F(SystemAddressTest, AddressesAreAskedUntilKnownThenKeptWithoutIPv6)
{
    ASSERT_EQ(zdasim_system_set_addresses("", ""), 0);
    EXPECT_EQ(text(ZDA_Common::getSystemIPAddr(1)), "");
    EXPECT_EQ(text(ZDA_Common::getSystemIPAddr(2)), "");
    EXPECT_EQ(journalOf("api_getSystemDualIP").size(), 2u);  // no address yet: asked each time

    ASSERT_EQ(zdasim_system_set_addresses("192.0.2.10", ""), 0);
    EXPECT_EQ(text(ZDA_Common::getSystemIPAddr(2)), "");
    EXPECT_EQ(text(ZDA_Common::getSystemIPAddr(1)), "192.0.2.10");
    EXPECT_EQ(journalOf("api_getSystemDualIP").size(), 3u);

    // Kept: an IPv6 address added later does not show, and an IPv6 host
    // cannot name this system.
    ASSERT_EQ(zdasim_system_set_addresses("192.0.2.10", "2001:db8::10"), 0);
    EXPECT_EQ(text(ZDA_Common::getSystemIPAddr(2)), "");
    EXPECT_EQ(journalOf("api_getSystemDualIP").size(), 3u);
    String systemAddress = "zda-sim.local";
    CIMObjectPath ref("//[2001:db8::10]/root/zda:ZDA_StorageVolume.DeviceID=\"60-01\"");
    EXPECT_FALSE(ZDA_Common::verifyRefMethodParam(ref, "root/zda", systemAddress));
    ref.setHost("192.0.2.10");
    EXPECT_TRUE(ZDA_Common::verifyRefMethodParam(ref, "root/zda", systemAddress));
}

}  // namespace
