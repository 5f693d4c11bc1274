// The storage system and the internal cache through the in-process host:
// the system's instance and path, the identity methods over the local
// connection ZDA_Common uses, a busy or failing array, and refused users.
#include "companions_fixture.h"

#include <tuple>

#include "CimBuilders.h"
#include "ZDA_Common.h"
#include "ZDA_StorageSystemProvider.h"

using namespace Pegasus;
using namespace zda_companions_test;

namespace
{

const char INTERNAL_NS[] = "root/PG_Internal";
const CIMObjectPath CACHE = ZDA_Common::buildInternalCacheObjectPath("localhost", "localhost");

api_system_info_t arraySystemInfo()
{
    api_system_info_t info;
    EXPECT_EQ(cim_sem_wait(), 0);
    EXPECT_EQ(api_getSystemInfo(&info), 0);
    cim_sem_post();
    return info;
}

const char SYSTEM[] = "ZDA_StorageSystem";

class StorageSystemTest : public CompanionsTest
{};

TEST_F(StorageSystemTest, OneSystemWhoseNameInstanceAndBuilderAgree)
{
    const api_system_info_t info = arraySystemInfo();
    Array<CIMObjectPath> names = namesOf(SYSTEM);
    ASSERT_EQ(names.size(), 1u);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(
        names[0], ZDA_StorageSystemProvider::buildObjectPath("anyhost", info.name)));

    ASSERT_EQ(instancesOf(SYSTEM).size(), 1u);
    for (const CIMInstance& system : {instancesOf(SYSTEM)[0], getInstance(names[0])})
    {
        EXPECT_TRUE(ZDA_Common::matchObjectPath(system.getPath(), names[0]));
        EXPECT_EQ(text(get<String>(system, "Name")), "zda-sim");
        EXPECT_EQ(text(get<String>(system, "PrimaryOwnerName")), "Example Storage Team");
        Array<String> ids = get<Array<String>>(system, "OtherIdentifyingInfo");
        ASSERT_EQ(ids.size(), 2u);
        EXPECT_EQ(text(ids[0]), info.wwn);
        EXPECT_EQ(uint16s(system, "OperationalStatus"), std::vector<int>{2});
    }

    // A node down: degraded. The property list leaves the keys in the path.
    zdasim_system_set_nodes_alive(1);
    CIMInstance some = instancesOf(SYSTEM, zda_test::propertyList({"OperationalStatus", "HealthState"}))[0];
    EXPECT_EQ(some.getPropertyCount(), 2u);
    EXPECT_EQ(uint16s(some, "OperationalStatus"), std::vector<int>{3});
    EXPECT_EQ(get<Uint16>(some, "HealthState"), 10);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(some.getPath(), names[0]));
}

TEST_F(StorageSystemTest, GetInstanceRefusesOtherSystemsAndWrongKeys)
{
    EXPECT_EQ(cimErrorOf([&] {
        getInstance(ZDA_StorageSystemProvider::createObjectPath("zda-siteB", "2FF7000000000001", ZDA_NS));
    }),
        CIM_ERR_NOT_FOUND);
    EXPECT_EQ(cimErrorOf([&] {
        getInstance(zda_test::instancePath(ZDA_NS, "ZDA_StorageSystem", {{"Name", "zda-sim"}}));
    }),
        CIM_ERR_INVALID_PARAMETER);
}

TEST_F(StorageSystemTest, BusyOrFailingArrayGivesNoSystem)
{
    const std::pair<const char*, std::function<void()>> faults[] = {
        {"semaphore time-out", [] { zdasim_fault_sem_timeouts(1); }},
        {"failing read", [] { zdasim_fault_add("api_getSystemInfo", 1, API_E_INVALID, "read error"); }},
    };
    const CIMObjectPath path = ZDA_StorageSystemProvider::buildObjectPath("h", "zda-sim");
    ASSERT_EQ(instancesOf(SYSTEM).size(), 1u);  // reads the class and fills the identity cache
    for (const auto& fault : faults)
    {
        SCOPED_TRACE(fault.first);
        fault.second();
        EXPECT_EQ(namesOf(SYSTEM).size(), 0u);
        fault.second();
        EXPECT_EQ(cimErrorOf([&] { getInstance(path); }), CIM_ERR_NOT_FOUND);
        EXPECT_EQ(instancesOf(SYSTEM).size(), 1u);  // the array answers again, so does the provider
    }
}

TEST_F(StorageSystemTest, IdentityAndSystemPathOverTheLocalConnection)
{
    const api_system_info_t info = arraySystemInfo();
    // The name and host name are read again after the array is replaced.
    CIMOMHandle unused;  // the local connection answers, the handle is not needed
    EXPECT_EQ(text(ZDA_Common::getSystemAddress(unused)), "192.0.2.10");
    EXPECT_EQ(ZDA_Common::getSystemID(), info.id);
    EXPECT_EQ(ZDA_Common::getSystemType(), info.type);
    EXPECT_EQ(ZDA_Common::isQuadPortSystem(unused), info.isQuadPort);

    const CIMObjectPath path = ZDA_Common::getSystemObjectPath(unused);
    EXPECT_EQ(text(path.getHost()), "zda-sim.local");
    EXPECT_EQ(text(path.getNameSpace()), "root/zda");
    EXPECT_EQ(text(get<String>(getInstance(path), "Name")), "zda-sim");

    zdasim_fault_sem_timeouts(1);
    EXPECT_EQ(ZDA_Common::getSystemObjectPath(unused).getKeyBindings().size(), 0u);
}

TEST_F(StorageSystemTest, CacheAnswersOnlyItsInstanceAndOnlyOnceTheArrayHasAnswered)
{
    Array<CIMParamValue> out;
    zdasim_fault_sem_timeouts(1);
    CIMValue rc = server().invokeMethod(
        admin(), INTERNAL_NS, CACHE, "GetSystemID", Array<CIMParamValue>(), out);
    EXPECT_TRUE(rc.equal(CIMValue(Uint32(1))));
    EXPECT_EQ(out.size(), 0u);
    EXPECT_EQ(text(ZDA_Common::getSystemName()), "zda-sim");

    EXPECT_EQ(cimErrorOf([&] {
        server().invokeMethod(admin(), INTERNAL_NS,
            ZDA_Common::buildInternalCacheObjectPath("localhost", "otherhost"), "GetSystemID",
            Array<CIMParamValue>(), out);
    }),
        CIM_ERR_NOT_FOUND);
}

// The simulator's controls replace the array under running providers: what
// they answer next is the new array's identity and policy, not the first
// array's that the cache read.
class ArrayReplacedTest : public StorageSystemTest
{
protected:
    zda::server::HostOptions options() const override
    {
        return zda_test::hostOptions({ZDA_SIMULATOR_CONTROL_MOF_DIR});
    }
};

TEST_F(ArrayReplacedTest, ProvidersAnswerForTheArrayNowLoaded)
{
    const char otherArray[] = R"({"version": 1,
        "system": {"name": "zda-other", "hostName": "zda-other.example.net", "policyFlags": 2},
        "roles": [{"name": "super", "default": "allowed"}],
        "users": [{"name": "admin", "role": "super"}]})";
    const Array<CIMParamValue> description = zda_test::params(
        {zda_test::param("Description", String(otherArray))});
    // The control, its arguments, and the system's name and host name after it.
    const std::tuple<const char*, Array<CIMParamValue>, const char*, const char*, bool> cases[] = {
        {"LoadDescription", description, "zda-other", "zda-other.example.net", true},
        {"LoadDemo", {}, "zda-demo", "zda-demo.example.net", false},
        {"LoadDescription", description, "zda-other", "zda-other.example.net", true},
        {"Reset", {}, "zda-demo", "zda-demo.example.net", false},
    };
    CIMOMHandle unused;                                       // the local connection answers
    ASSERT_EQ(text(ZDA_Common::getSystemName()), "zda-sim");  // the cache is filled
    for (const auto& [control, in, name, hostName, noReplicationEntities] : cases)
    {
        SCOPED_TRACE(control);
        Array<CIMParamValue> out;
        const CIMObjectPath simulator("ZDA_SimulatorControl");
        EXPECT_TRUE(
            server().invokeMethod(admin(), "root/zda_sim", simulator, control, in, out).equal(Uint32(0)));
        EXPECT_EQ(text(ZDA_Common::getSystemName()), name);
        EXPECT_EQ(text(ZDA_Common::getSystemHostName(unused)), hostName);
        EXPECT_EQ(text(get<String>(instancesOf(SYSTEM)[0], "Name")), name);
        EXPECT_EQ(isNoREPolicy(ZDA_Common::getPolicy()), noReplicationEntities);
    }
}

TEST_F(StorageSystemTest, RefusedUsersAreDeniedAccess)
{
    const OperationContext noaccess = zda::server::InProcessHost::contextFor("noaccess");
    Array<CIMParamValue> out;
    EXPECT_EQ(cimErrorOf([&] { server().enumerateInstanceNames(noaccess, ZDA_NS, "ZDA_StorageSystem"); }),
        CIM_ERR_ACCESS_DENIED);
    EXPECT_EQ(cimErrorOf([&] { server().enumerateInstanceNames(noaccess, ZDA_NS, "ZDA_StorageVolume"); }),
        CIM_ERR_ACCESS_DENIED);
    EXPECT_EQ(cimErrorOf([&] {
        server().invokeMethod(noaccess, INTERNAL_NS, CACHE, "GetSystemID", Array<CIMParamValue>(), out);
    }),
        CIM_ERR_ACCESS_DENIED);
}

}  // namespace
