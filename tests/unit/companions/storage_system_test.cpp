// The storage system and the internal cache, served by the in-process host:
// the system instance and its path, the six identity methods (directly and
// over the local connection ZDA_Common uses), and what a busy or failing
// array and a refused user get.
#include "companions_fixture.h"

#include <Pegasus/Provider/CIMOMHandle.h>

#include "CimBuilders.h"
#include "SemaphoreCheckingHandler.h"
#include "ZDA_Common.h"
#include "ZDA_StorageSystemProvider.h"

using namespace Pegasus;
using namespace zda_companions_test;

namespace
{

const char ZDA_NS[] = "root/zda";
const char INTERNAL_NS[] = "root/PG_Internal";

api_system_info_t arraySystemInfo()
{
    api_system_info_t info;
    EXPECT_EQ(cim_sem_wait(), 0);
    EXPECT_EQ(api_getSystemInfo(&info), 0);
    cim_sem_post();
    return info;
}

class StorageSystemTest : public CompanionsTest
{
protected:
    Array<CIMInstance> enumerateSystems(const CIMPropertyList& list = CIMPropertyList())
    {
        return server().enumerateInstances(admin(), ZDA_NS, "ZDA_StorageSystem", true, false,
            false, false, list);
    }
    CIMValue invokeCache(const char* method, Array<CIMParamValue>& out,
        const CIMObjectPath& path = ZDA_Common::buildInternalCacheObjectPath("localhost", "localhost"))
    {
        return server().invokeMethod(admin(), INTERNAL_NS, path, method, Array<CIMParamValue>(), out);
    }
};

TEST_F(StorageSystemTest, OneSystemWhoseNamePathAndInstanceAgree)
{
    const api_system_info_t info = arraySystemInfo();
    Array<CIMObjectPath> names =
        server().enumerateInstanceNames(admin(), ZDA_NS, "ZDA_StorageSystem");
    ASSERT_EQ(names.size(), 1u);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(names[0],
        ZDA_StorageSystemProvider::buildObjectPath("anyhost", info.name)));
    EXPECT_EQ(text(ZDA_Common::getStringProperty(names[0], "Name")), "zda-sim");

    Array<CIMInstance> systems = enumerateSystems();
    ASSERT_EQ(systems.size(), 1u);
    CIMInstance got = server().getInstance(admin(), ZDA_NS, names[0], false, false, false,
        CIMPropertyList());
    for (const CIMInstance& system : {systems[0], got})
    {
        EXPECT_TRUE(ZDA_Common::matchObjectPath(system.getPath(), names[0]));
        EXPECT_EQ(text(get<String>(system, "ElementName")), "zda-sim");
        EXPECT_EQ(text(get<String>(system, "PrimaryOwnerName")), "Example Storage Team");
        Array<String> ids = get<Array<String>>(system, "OtherIdentifyingInfo");
        ASSERT_EQ(ids.size(), 2u);
        EXPECT_EQ(text(ids[0]), info.wwn);
        EXPECT_EQ(uint16s(system, "OperationalStatus"), std::vector<int>{2});
    }
}

TEST_F(StorageSystemTest, PropertyListAndDegradedNodes)
{
    zdasim_system_set_nodes_alive(1);
    Array<CIMInstance> systems =
        enumerateSystems(zda_test::propertyList({"OperationalStatus", "HealthState"}));
    ASSERT_EQ(systems.size(), 1u);
    EXPECT_EQ(systems[0].getPropertyCount(), 2u);
    EXPECT_EQ(uint16s(systems[0], "OperationalStatus"), std::vector<int>{3});
    EXPECT_EQ(get<Uint16>(systems[0], "HealthState"), 10);
    // The keys stay in the path whatever the list.
    EXPECT_EQ(text(ZDA_Common::getStringProperty(systems[0].getPath(), "Name")), "zda-sim");
}

TEST_F(StorageSystemTest, GetInstanceRefusesOtherSystemsAndWrongKeys)
{
    EXPECT_EQ(cimErrorOf([&] {
        server().getInstance(admin(), ZDA_NS,
            ZDA_StorageSystemProvider::createObjectPath("zda-siteB", "2FF7000000000001", ZDA_NS),
            false, false, false, CIMPropertyList());
    }), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(cimErrorOf([&] {
        server().getInstance(admin(), ZDA_NS,
            zda_test::instancePath(ZDA_NS, "ZDA_StorageSystem", {{"Name", "zda-sim"}}), false,
            false, false, CIMPropertyList());
    }), CIM_ERR_INVALID_PARAMETER);
}

TEST_F(StorageSystemTest, RemoteSystemPathsMatchByWwnAlone)
{
    const CIMObjectPath viaIp =
        ZDA_StorageSystemProvider::createObjectPath("zda-siteB", "2FF700000013D6A4", ZDA_NS);
    const CIMObjectPath viaFc =
        ZDA_StorageSystemProvider::createObjectPath("10.0.0.7", "2FF700000013D6A4", ZDA_NS);
    const CIMObjectPath other =
        ZDA_StorageSystemProvider::createObjectPath("zda-siteB", "2FF700000013D6A5", ZDA_NS);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(viaIp, viaFc));
    EXPECT_FALSE(ZDA_Common::matchObjectPath(viaIp, other));
    EXPECT_EQ(text(viaIp.getHost()), "zda-siteB");
}

TEST_F(StorageSystemTest, BusyOrFailingArrayGivesNoSystem)
{
    struct Case
    {
        const char* name;
        std::function<void()> inject;
    };
    const Case cases[] = {
        {"semaphore time-out", [] { zdasim_fault_sem_timeouts(1); }},
        {"failing api_getSystemInfo",
            [] { zdasim_fault_add("api_getSystemInfo", 1, API_E_INVALID, "read error"); }},
    };
    const CIMObjectPath path = ZDA_StorageSystemProvider::buildObjectPath("h", "zda-sim");
    ASSERT_EQ(enumerateSystems().size(), 1u);  // the class and the identity cache are read
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        c.inject();
        EXPECT_EQ(server().enumerateInstanceNames(admin(), ZDA_NS, "ZDA_StorageSystem").size(), 0u);
        c.inject();
        EXPECT_EQ(cimErrorOf([&] {
            server().getInstance(admin(), ZDA_NS, path, false, false, false, CIMPropertyList());
        }), CIM_ERR_NOT_FOUND);
        // The array answers again: so does the provider.
        EXPECT_EQ(enumerateSystems().size(), 1u);
    }
}

TEST_F(StorageSystemTest, RefusedUserAndRefusedOperations)
{
    EXPECT_EQ(cimErrorOf([&] {
        server().enumerateInstanceNames(zda::server::InProcessHost::contextFor("noaccess"),
            ZDA_NS, "ZDA_StorageSystem");
    }), CIM_ERR_ACCESS_DENIED);

    CIMInstance system = enumerateSystems()[0];
    EXPECT_EQ(cimErrorOf([&] { server().modifyInstance(admin(), ZDA_NS, system, false,
        CIMPropertyList()); }), CIM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(cimErrorOf([&] { server().createInstance(admin(), ZDA_NS, system); }),
        CIM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(cimErrorOf([&] { server().deleteInstance(admin(), ZDA_NS, system.getPath()); }),
        CIM_ERR_NOT_SUPPORTED);
}

TEST_F(StorageSystemTest, SystemObjectPathOverTheLocalConnection)
{
    CIMOMHandle unused;  // the local connection answers: the handle is not needed
    const CIMObjectPath path = ZDA_Common::getSystemObjectPath(unused);
    EXPECT_EQ(text(path.getHost()), "zda-sim.local");
    EXPECT_EQ(text(path.getNameSpace().getString()), ZDA_NS);
    CIMInstance system =
        server().getInstance(admin(), ZDA_NS, path, false, false, false, CIMPropertyList());
    EXPECT_EQ(text(get<String>(system, "Name")), "zda-sim");

    zdasim_fault_sem_timeouts(1);
    EXPECT_EQ(ZDA_Common::getSystemObjectPath(unused).getKeyBindings().size(), 0u);
}

TEST_F(StorageSystemTest, DeliversWithoutHoldingTheArray)
{
    CIMOMHandle handle;
    attachCIMOMHandleBackend(handle, std::make_shared<RepositoryBackend>(host()));
    ZDA_StorageSystemProvider* provider = new ZDA_StorageSystemProvider();
    provider->initialize(handle);
    zda_test::SemaphoreCheckingHandler handler;
    provider->enumerateInstances(admin(), CIMObjectPath("ZDA_StorageSystem"), false, false,
        CIMPropertyList(), handler);
    EXPECT_EQ(handler.deliveries(), 1);
    EXPECT_EQ(handler.deliveriesUnderSemaphore(), 0);
    EXPECT_TRUE(handler.completed());
    provider->terminate();
    attachCIMOMHandleBackend(handle, nullptr);
}

// ---- the internal cache ------------------------------------------------------------

TEST_F(StorageSystemTest, SixIdentityMethodsAnswerFromTheArray)
{
    const api_system_info_t info = arraySystemInfo();
    struct Case
    {
        const char* method;
        const char* out;
        CIMValue expected;
    };
    const Case cases[] = {
        {"GetSystemName", "SystemName", CIMValue(String(info.name))},
        {"GetSystemHostName", "SystemHostName", CIMValue(String(info.hostName))},
        {"GetSystemAddress", "SystemAddress", CIMValue(String("192.0.2.10"))},
        {"GetSystemID", "SystemID", CIMValue(Uint32(info.id))},
        {"GetSystemType", "SystemType", CIMValue(Sint32(info.type))},
        {"IsQuadPortSystem", "IsQuadPort", CIMValue(Uint8(info.isQuadPort))},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.method);
        Array<CIMParamValue> out;
        EXPECT_TRUE(invokeCache(c.method, out).equal(CIMValue(Uint32(0))));
        ASSERT_EQ(out.size(), 1u);
        EXPECT_EQ(text(out[0].getParameterName()), c.out);
        EXPECT_TRUE(out[0].getValue().equal(c.expected)) << text(out[0].getValue().toString());
    }
}

TEST_F(StorageSystemTest, IdentityOverTheLocalConnection)
{
    const api_system_info_t info = arraySystemInfo();
    CIMOMHandle unused;
    EXPECT_EQ(text(ZDA_Common::getSystemName()), info.name);
    EXPECT_EQ(text(ZDA_Common::getSystemName(unused)), info.name);
    EXPECT_EQ(text(ZDA_Common::getSystemHostName(unused)), info.hostName);
    EXPECT_EQ(text(ZDA_Common::getSystemAddress(unused)), "192.0.2.10");
    EXPECT_EQ(ZDA_Common::getSystemID(), info.id);
    EXPECT_EQ(ZDA_Common::getSystemType(), info.type);
    EXPECT_EQ(ZDA_Common::isQuadPortSystem(unused), info.isQuadPort);
}

TEST_F(StorageSystemTest, BusyArrayLeavesTheFactsUnreadUntilItAnswers)
{
    zdasim_fault_sem_timeouts(1);
    Array<CIMParamValue> out;
    EXPECT_TRUE(invokeCache("GetSystemName", out).equal(CIMValue(Uint32(1))));
    EXPECT_EQ(out.size(), 0u);
    EXPECT_EQ(text(ZDA_Common::getSystemName()), "zda-sim");
}

TEST_F(StorageSystemTest, CacheRefusesOtherInstancesAndUsers)
{
    Array<CIMParamValue> out;
    EXPECT_EQ(cimErrorOf([&] {
        invokeCache("GetSystemName", out,
            ZDA_Common::buildInternalCacheObjectPath("localhost", "otherhost"));
    }), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(cimErrorOf([&] {
        server().invokeMethod(zda::server::InProcessHost::contextFor("noaccess"), INTERNAL_NS,
            ZDA_Common::buildInternalCacheObjectPath("localhost", "localhost"), "GetSystemID",
            Array<CIMParamValue>(), out);
    }), CIM_ERR_ACCESS_DENIED);
}

}  // namespace
