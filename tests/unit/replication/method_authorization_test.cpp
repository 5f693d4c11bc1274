// The choice of a method's right by its authorization kind, and the
// refusals its result leads to, against the simulator's test array. The
// rights of the replication service's own methods are asked through the
// service (see the service's tests).

#include "replication_fixture.h"
#include "ZDA_MethodAuthorization.h"

using namespace Pegasus;

namespace
{

using MethodAuthorizationTest = zda_test::SimulatorFixture;
using zda_replication_test::failure;
using zda_replication_test::lastAuthorizationKey;

TEST_F(MethodAuthorizationTest, KindsChooseTheirRightAndKindsWithoutOneAskNothing)
{
    const Array<CIMParamValue> none;
    EXPECT_EQ(authorizeMethod(AUTH_REPLICATION_CAPABILITIES, "viewer", "192.0.2.1", none), 1);
    EXPECT_EQ(lastAuthorizationKey(), "zda_replicationservicecapabilities");
    EXPECT_EQ(authorizeMethod(AUTH_MODIFY_SETTING_PERSISTENT, "operator", "192.0.2.1", none), 1);
    EXPECT_EQ(lastAuthorizationKey(), "zda_storagesetting.modifyinstance");

    zdasim_journal_clear();
    for (int kind : {0, 4, 18, -1})
        EXPECT_EQ(authorizeMethod(kind, "admin", "192.0.2.1", none), 3) << kind;
    EXPECT_EQ(zdasim_journal_count_of("api_authorizeCIMUser"), 0u);
}

TEST_F(MethodAuthorizationTest, ResultsBecomeTheirRefusals)
{
    const std::pair<int, const char*> cases[] = {{1, "thrown 2: Insufficient privilege for the user"},
        {2, "thrown 2: Insufficient privilege for the user"}, {3, "thrown 7: Does not support!"},
        {-7, "thrown 7: Does not support!"}, {0, "none"}};
    for (const auto& c : cases)
        EXPECT_EQ(failure([&] { requireAuthorized(c.first, "File", 1); }).rfind(c.second, 0), 0u) << c.first;
}

}  // namespace
