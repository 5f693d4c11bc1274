// The volumes through the in-process host: every volume once with the path
// the builders give, the properties clients read, property lists, and what
// a busy or failing array gets.
#include "companions_fixture.h"

#include <map>
#include <set>
#include <tuple>

#include "CimBuilders.h"
#include "SemaphoreCheckingHandler.h"
#include "ZDA_Common.h"
#include "ZDA_StorageVolumeProvider.h"

using namespace Pegasus;
using namespace zda_companions_test;

namespace
{

const char VOLUME[] = "ZDA_StorageVolume";
const std::set<std::string> TEST_ARRAY_VOLUMES = {
    "vol1", "vol2", "vol3", "vol4", "vol5", "admvv", "vol1.rw", "vol1.ro", "vol2.clone"};

class StorageVolumeTest : public CompanionsTest
{
protected:
    std::map<std::string, CIMInstance> volumesByName()
    {
        std::map<std::string, CIMInstance> byName;
        Array<CIMInstance> all = instancesOf(VOLUME);
        for (Uint32 i = 0; i < all.size(); i++)
            byName[text(get<String>(all[i], "ElementName"))] = all[i];
        return byName;
    }
    CIMClass volumeClass() { return host().repository().getClass(ZDA_NS, VOLUME, false); }
};

TEST_F(StorageVolumeTest, EveryVolumeOnceWithThePathTheBuildersGive)
{
    Array<CIMObjectPath> names = namesOf(VOLUME);
    Array<CIMInstance> all = instancesOf(VOLUME);
    ASSERT_EQ(names.size(), TEST_ARRAY_VOLUMES.size());
    ASSERT_EQ(all.size(), names.size());
    CIMClass cls = volumeClass();
    std::set<std::string> seen;
    for (Uint32 i = 0; i < all.size(); i++)
    {
        const String name = get<String>(all[i], "ElementName");
        const String wwn = get<String>(all[i], "DeviceID");
        SCOPED_TRACE(text(name));
        seen.insert(text(name));
        const CIMObjectPath path = all[i].getPath();
        EXPECT_TRUE(ZDA_Common::matchObjectPath(path, names[i]));
        EXPECT_TRUE(ZDA_Common::matchObjectPath(
            path, ZDA_StorageVolumeProvider::createObjectPath(wwn, "zda-sim", "elsewhere")));
        EXPECT_TRUE(ZDA_Common::matchObjectPath(
            path, ZDA_StorageVolumeProvider::buildVVInstance(name, "zda-sim", "h", cls, false).getPath()));
        CIMInstance got = getInstance(names[i]);
        EXPECT_TRUE(ZDA_Common::matchObjectPath(got.getPath(), path));
        EXPECT_EQ(text(get<String>(got, "ElementName")), text(name));
    }
    EXPECT_EQ(seen, TEST_ARRAY_VOLUMES);
}

TEST_F(StorageVolumeTest, PropertiesClientsRead)
{
    ASSERT_EQ(zdasim_clone_start("vol3", "vol3.copying", 600, -1, nullptr), 0);
    ASSERT_EQ(zdasim_clone_start("vol4", "vol4.failed", 100, 10, nullptr), 0);
    zdasim_clock_advance(50);
    const struct
    {
        const char* name;
        Uint16 type, access;
        Uint64 mib;
        bool thin, canDelete;
        int status;
    } table[] = {
        {"vol1", 1, 3, 10240, false, true, 2},
        {"vol5", 1, 3, 51200, true, true, 2},
        {"admvv", 1, 3, 10240, false, false, 2},
        {"vol1.ro", 3, 1, 10240, false, true, 2},
        {"vol2.clone", 2, 3, 20480, false, true, 2},
        {"vol3.copying", 2, 3, 5120, false, true, 8},
        {"vol4.failed", 2, 3, 102400, false, true, 6},
    };
    std::map<std::string, CIMInstance> all = volumesByName();
    for (const auto& e : table)
    {
        SCOPED_TRACE(e.name);
        const CIMInstance& v = all.at(e.name);
        EXPECT_EQ(get<Uint16>(v, "VolumeType"), e.type);
        EXPECT_EQ(get<Uint64>(v, "BlockSize"), 512u);
        EXPECT_EQ(get<Uint64>(v, "NumberOfBlocks"), e.mib * 2048);
        EXPECT_EQ(get<Uint16>(v, "Access"), e.access);
        EXPECT_EQ(get<Boolean>(v, "ThinlyProvisioned"), e.thin);
        EXPECT_EQ(get<Boolean>(v, "CanDelete"), e.canDelete);
        EXPECT_EQ((get<Uint32>(v, "Policy") & VV_POLICY_SYSTEM) == 0, e.canDelete);
        EXPECT_EQ(uint16s(v, "OperationalStatus"), std::vector<int>{e.status});
    }
    EXPECT_EQ(get<Uint16>(all.at("vol1"), "PackageRedundancy"), 1);  // RAID-5 user space
}

TEST_F(StorageVolumeTest, GetInstanceFindsOnlyWhatAllKeysNameAndKeepsThePath)
{
    const CIMObjectPath vol1 = volumesByName().at("vol1").getPath();
    const String wwn = ZDA_Common::getStringProperty(vol1, "DeviceID");
    CIMInstance some = getInstance(vol1, zda_test::propertyList({"NumberOfBlocks", "VolumeType"}));
    EXPECT_EQ(some.getPropertyCount(), 2u);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(some.getPath(), vol1));

    const std::pair<CIMObjectPath, int> cases[] = {
        {ZDA_StorageVolumeProvider::createObjectPath(wwn, "zda-siteB", ""), CIM_ERR_NOT_FOUND},
        {ZDA_StorageVolumeProvider::createObjectPath("60002D1A00000000000000000000BEEF", "zda-sim", ""),
            CIM_ERR_NOT_FOUND},
        {zda_test::instancePath(ZDA_NS, VOLUME,
             {{"DeviceID", text(wwn)}, {"SystemName", "zda-sim"}, {"CreationClassName", VOLUME}}),
            CIM_ERR_INVALID_PARAMETER},
    };
    for (const auto& c : cases)
        EXPECT_EQ(cimErrorOf([&] { getInstance(c.first); }), c.second) << text(c.first.toString());
}

// A far volume known by its keys alone is checked where replication
// entities embed it; a volume built by name must exist on the array.
TEST_F(StorageVolumeTest, BuildingAVolumeTheArrayLacksGivesNothing)
{
    CIMClass cls = volumeClass();
    EXPECT_TRUE(
        ZDA_StorageVolumeProvider::buildVVInstance("nosuch", "zda-sim", "h", cls, false).isUninitialized());
}

TEST_F(StorageVolumeTest, BusyOrFailingArrayGivesEmptyAnswers)
{
    const CIMObjectPath vol1 = volumesByName().at("vol1").getPath();  // fills the identity cache
    auto fail = [](const char* call) { zdasim_fault_add(call, 1, API_E_INVALID, "read error"); };
    auto noNames = [&] { EXPECT_EQ(namesOf(VOLUME).size(), 0u); };
    auto notFound = [&] { EXPECT_EQ(cimErrorOf([&] { getInstance(vol1); }), CIM_ERR_NOT_FOUND); };
    // What goes wrong, how it is made to, and what a client then gets.
    const std::tuple<const char*, std::function<void()>, std::function<void()>> cases[] = {
        {"names, busy", [] { zdasim_fault_sem_timeouts(1); }, noNames},
        {"names, failing read", [&] { fail("api_getVVs_chunk"); }, noNames},
        {"instances, busy", [] { zdasim_fault_sem_timeouts(2); },
            [&] { EXPECT_EQ(instancesOf(VOLUME).size(), 0u); }},
        {"get, busy", [] { zdasim_fault_sem_timeouts(2); }, notFound},
        {"get, failing read", [&] { fail("api_getVVs"); }, notFound},
        {"identity not read yet",
            [] {
                ZDA_InternalCacheService::destroy();
                zdasim_fault_sem_timeouts(1);
            },
            noNames},
        {"no CPG list", [&] { fail("api_getCPGs"); },
            [&] {
                Array<CIMInstance> all = instancesOf(VOLUME);
                ASSERT_EQ(all.size(), TEST_ARRAY_VOLUMES.size());
                EXPECT_TRUE(valueOf(all[0], "PackageRedundancy").isNull());
            }},
    };
    for (const auto& [what, inject, check] : cases)
    {
        SCOPED_TRACE(what);
        inject();
        check();
        zdasim_faults_clear();
        EXPECT_EQ(namesOf(VOLUME).size(), TEST_ARRAY_VOLUMES.size());
    }
}

TEST_F(StorageVolumeTest, ManyVolumesComeInChunksDeliveredWithoutTheArrayHeld)
{
    const int added = 300;  // more than one answer of the array holds
    for (int i = 0; i < added; i++)
        ASSERT_EQ(zdasim_volume_add(("bulk" + std::to_string(i)).c_str(), "FC_r5", "", 1024), 0);

    CIMOMHandle handle;
    attachCIMOMHandleBackend(handle, std::make_shared<RepositoryBackend>(host()));
    ZDA_StorageVolumeProvider* provider = new ZDA_StorageVolumeProvider();
    provider->initialize(handle);
    zda_test::SemaphoreCheckingHandler handler;
    provider->enumerateInstances(admin(), CIMObjectPath(VOLUME), false, false, CIMPropertyList(), handler);
    provider->terminate();
    attachCIMOMHandleBackend(handle, nullptr);

    const int expected = added + int(TEST_ARRAY_VOLUMES.size());
    EXPECT_EQ(handler.deliveries(), expected);
    EXPECT_EQ(handler.deliveriesUnderSemaphore(), 0);
    EXPECT_TRUE(handler.completed());
    std::set<std::string> wwns;
    for (const CIMInstance& v : handler.instances())
        wwns.insert(text(get<String>(v, "DeviceID")));
    EXPECT_EQ(int(wwns.size()), expected);
}

}  // namespace
