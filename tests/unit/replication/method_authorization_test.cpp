// The choice of a method's right by its authorization kind, and the
// refusals its result leads to, against the simulator's test array.
#include <string>

#include <Pegasus/Common/Exception.h>

#include <zdasim_control.h>

#include "ServerHostFixture.h"
#include "replication_fixture.h"
#include "ZDA_MethodAuthorization.h"

using namespace Pegasus;

namespace
{

using MethodAuthorizationTest = zda_test::SimulatorFixture;
using zda_replication_test::lastAuthorizationKey;

TEST_F(MethodAuthorizationTest, KindsChooseTheirRightAndKindsWithoutOneAskNothing)
{
    const Array<CIMParamValue> none;
    EXPECT_EQ(authorizeMethod(AUTH_REPLICATION_CAPABILITIES, "viewer", "192.0.2.1", none), 1);
    EXPECT_EQ(lastAuthorizationKey(), "zda_replicationservicecapabilities");
    EXPECT_EQ(authorizeMethod(AUTH_MODIFY_SETTING_PERSISTENT, "operator", "192.0.2.1", none), 1);
    EXPECT_EQ(lastAuthorizationKey(), "zda_storagesetting.modifyinstance");
    EXPECT_EQ(authorizeMethod(AUTH_CREATE_ELEMENT_REPLICA, "operator", "192.0.2.1", none), 0);
    EXPECT_EQ(lastAuthorizationKey(), "zda_replicationservice.createelementreplica.createvvcopy");

    zdasim_journal_clear();
    for (int kind : {0, 4, 18, -1})
        EXPECT_EQ(authorizeMethod(kind, "admin", "192.0.2.1", none), 3) << kind;
    EXPECT_EQ(zdasim_journal_count_of("api_authorizeCIMUser"), 0u);

    EXPECT_EQ(authorizeGeneric("operator", "192.0.2.1", "ZDA_ReplicationService", "CreateGroup"), 0);
    EXPECT_EQ(lastAuthorizationKey(), "zda_replicationservice.creategroup");
}

TEST_F(MethodAuthorizationTest, ResultsBecomeTheirRefusals)
{
    struct Case
    {
        int result;
        int code;
        const char* words;
    };
    const Case cases[] = {{1, CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user"},
        {2, CIM_ERR_ACCESS_DENIED, "Insufficient privilege for the user"},
        {3, CIM_ERR_NOT_SUPPORTED, "Does not support!"}, {-7, CIM_ERR_NOT_SUPPORTED, "Does not support!"}};
    EXPECT_NO_THROW(requireAuthorized(0, "File", 1));
    for (const Case& c : cases)
    {
        try
        {
            requireAuthorized(c.result, "File", 1);
            ADD_FAILURE() << c.result << " was taken as allowed";
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), c.code) << c.result;
            EXPECT_NE(std::string((const char*)e.getMessage().getCString()).find(c.words), std::string::npos)
                << c.result;
        }
    }
}

}  // namespace
