// The volumes, served by the in-process host: every volume once with the
// path the builders give, the properties block storage and replication
// clients read, property lists, and what a busy or failing array gets.
#include "companions_fixture.h"

#include <map>
#include <set>

#include <Pegasus/Provider/CIMOMHandle.h>

#include "CimBuilders.h"
#include "SemaphoreCheckingHandler.h"
#include "ZDA_Common.h"
#include "ZDA_StorageVolumeProvider.h"

using namespace Pegasus;
using namespace zda_companions_test;

namespace
{

const char ZDA_NS[] = "root/zda";
const char VOLUME[] = "ZDA_StorageVolume";
const std::set<std::string> TEST_ARRAY_VOLUMES = {"vol1", "vol2", "vol3", "vol4", "vol5",
    "admvv", "vol1.rw", "vol1.ro", "vol2.clone"};

class StorageVolumeTest : public CompanionsTest
{
protected:
    Array<CIMInstance> enumerateVolumes(const CIMPropertyList& list = CIMPropertyList())
    {
        return server().enumerateInstances(admin(), ZDA_NS, VOLUME, true, false, false, false,
            list);
    }
    Array<CIMObjectPath> volumeNames()
    {
        return server().enumerateInstanceNames(admin(), ZDA_NS, VOLUME);
    }
    CIMInstance getVolume(const CIMObjectPath& path, const CIMPropertyList& list = CIMPropertyList())
    {
        return server().getInstance(admin(), ZDA_NS, path, false, false, false, list);
    }
    std::map<std::string, CIMInstance> volumesByName()
    {
        std::map<std::string, CIMInstance> byName;
        Array<CIMInstance> volumes = enumerateVolumes();
        for (Uint32 i = 0; i < volumes.size(); i++)
            byName[text(get<String>(volumes[i], "ElementName"))] = volumes[i];
        return byName;
    }
    CIMObjectPath pathOf(const char* volumeName)
    {
        return volumesByName().at(volumeName).getPath();
    }
};

TEST_F(StorageVolumeTest, EveryVolumeOnceWithThePathTheBuildersGive)
{
    Array<CIMObjectPath> names = volumeNames();
    Array<CIMInstance> volumes = enumerateVolumes();
    ASSERT_EQ(names.size(), TEST_ARRAY_VOLUMES.size());
    ASSERT_EQ(volumes.size(), names.size());

    CIMClass volumeClass = storedClass(ZDA_NS, VOLUME);
    std::set<std::string> seen;
    for (Uint32 i = 0; i < volumes.size(); i++)
    {
        const CIMInstance& volume = volumes[i];
        const String name = get<String>(volume, "ElementName");
        const String wwn = get<String>(volume, "DeviceID");
        SCOPED_TRACE(text(name));
        seen.insert(text(name));

        EXPECT_TRUE(ZDA_Common::matchObjectPath(volume.getPath(), names[i]));
        EXPECT_TRUE(ZDA_Common::matchObjectPath(volume.getPath(),
            ZDA_StorageVolumeProvider::createObjectPath(wwn, "zda-sim", "elsewhere")));
        CIMInstance byName = ZDA_StorageVolumeProvider::buildVVInstance(name, "zda-sim",
            "zda-sim.local", volumeClass, false);
        ASSERT_FALSE(byName.isUninitialized());
        EXPECT_TRUE(ZDA_Common::matchObjectPath(volume.getPath(), byName.getPath()));

        CIMInstance got = getVolume(names[i]);
        EXPECT_TRUE(ZDA_Common::matchObjectPath(got.getPath(), volume.getPath()));
        EXPECT_EQ(text(get<String>(got, "ElementName")), text(name));
        EXPECT_EQ(text(get<String>(got, "Name")), text(wwn));
    }
    EXPECT_EQ(seen, TEST_ARRAY_VOLUMES);
}

TEST_F(StorageVolumeTest, PropertiesClientsRead)
{
    struct Expected
    {
        const char* name;
        Uint16 volumeType;
        Uint64 mib;
        Uint16 access;
        bool thin;
        bool canDelete;
        bool systemPolicy;
    };
    const Expected table[] = {
        {"vol1", 1, 10240, 3, false, true, false},
        {"vol5", 1, 51200, 3, true, true, false},
        {"admvv", 1, 10240, 3, false, false, true},
        {"vol1.ro", 3, 10240, 1, false, true, false},
        {"vol1.rw", 3, 10240, 3, false, true, false},
        {"vol2.clone", 2, 20480, 3, false, true, false},
    };
    std::map<std::string, CIMInstance> volumes = volumesByName();
    for (const Expected& e : table)
    {
        SCOPED_TRACE(e.name);
        const CIMInstance& v = volumes.at(e.name);
        EXPECT_EQ(get<Uint16>(v, "VolumeType"), e.volumeType);
        EXPECT_EQ(get<Uint64>(v, "BlockSize"), 512u);
        EXPECT_EQ(get<Uint64>(v, "NumberOfBlocks"), e.mib * 2048);
        EXPECT_EQ(get<Uint64>(v, "ConsumableBlocks"), e.mib * 2048);
        EXPECT_EQ(get<Uint16>(v, "Access"), e.access);
        EXPECT_EQ(get<Boolean>(v, "ThinlyProvisioned"), e.thin);
        EXPECT_EQ(get<Boolean>(v, "CanDelete"), e.canDelete);
        EXPECT_EQ((get<Uint32>(v, "Policy") & VV_POLICY_SYSTEM) != 0, e.systemPolicy);
        EXPECT_EQ(uint16s(v, "OperationalStatus"), std::vector<int>{2});
        EXPECT_EQ(text(get<String>(v, "SystemName")), "zda-sim");
    }
    // vol1's user space is on a RAID-5 CPG.
    EXPECT_EQ(get<Uint16>(volumes.at("vol1"), "PackageRedundancy"), 1);
    EXPECT_EQ(get<Boolean>(volumes.at("vol1"), "NoSinglePointOfFailure"), true);
}

TEST_F(StorageVolumeTest, CopiesInProgressOrFailedAreNotOk)
{
    ASSERT_EQ(zdasim_clone_start("vol3", "vol3.copying", 600, -1, nullptr), 0);
    ASSERT_EQ(zdasim_clone_start("vol4", "vol4.failing", 100, 10, nullptr), 0);
    zdasim_clock_advance(50);
    std::map<std::string, CIMInstance> volumes = volumesByName();
    EXPECT_EQ(uint16s(volumes.at("vol3.copying"), "OperationalStatus"), std::vector<int>{8});
    EXPECT_EQ(uint16s(volumes.at("vol4.failing"), "OperationalStatus"), std::vector<int>{6});
    EXPECT_EQ(get<Uint16>(volumes.at("vol4.failing"), "HealthState"), 25);
}

TEST_F(StorageVolumeTest, PropertyListsKeepThePath)
{
    const CIMObjectPath vol1 = pathOf("vol1");
    CIMInstance some = getVolume(vol1, zda_test::propertyList({"NumberOfBlocks", "VolumeType"}));
    EXPECT_EQ(some.getPropertyCount(), 2u);
    EXPECT_EQ(get<Uint64>(some, "NumberOfBlocks"), 10240u * 2048);

    Array<CIMInstance> none = enumerateVolumes(zda_test::propertyList({}));
    ASSERT_EQ(none.size(), TEST_ARRAY_VOLUMES.size());
    for (Uint32 i = 0; i < none.size(); i++)
    {
        EXPECT_EQ(none[i].getPropertyCount(), 0u);
        EXPECT_EQ(none[i].getPath().getKeyBindings().size(), 4u);
    }
}

TEST_F(StorageVolumeTest, GetInstanceFindsOnlyWhatAllKeysName)
{
    const CIMObjectPath vol1 = pathOf("vol1");
    const String wwn = ZDA_Common::getStringProperty(vol1, "DeviceID");
    const struct
    {
        const char* why;
        CIMObjectPath path;
        int code;
    } cases[] = {
        {"another system", ZDA_StorageVolumeProvider::createObjectPath(wwn, "zda-siteB", ""),
            CIM_ERR_NOT_FOUND},
        {"unknown WWN",
            ZDA_StorageVolumeProvider::createObjectPath("60002D1A0000000000000000DEADBEEF",
                "zda-sim", ""),
            CIM_ERR_NOT_FOUND},
        {"three keys",
            zda_test::instancePath(ZDA_NS, VOLUME, {{"DeviceID", text(wwn)},
                {"SystemName", "zda-sim"}, {"CreationClassName", VOLUME}}),
            CIM_ERR_INVALID_PARAMETER},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(cimErrorOf([&] { getVolume(c.path); }), c.code);
    }
}

TEST_F(StorageVolumeTest, RefusedUserAndRefusedOperations)
{
    CIMInstance vol1 = getVolume(pathOf("vol1"));
    EXPECT_EQ(cimErrorOf([&] {
        server().enumerateInstances(zda::server::InProcessHost::contextFor("noaccess"), ZDA_NS,
            VOLUME, true, false, false, false, CIMPropertyList());
    }), CIM_ERR_ACCESS_DENIED);
    EXPECT_EQ(cimErrorOf([&] { server().modifyInstance(admin(), ZDA_NS, vol1, false,
        CIMPropertyList()); }), CIM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(cimErrorOf([&] { server().createInstance(admin(), ZDA_NS, vol1); }),
        CIM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(cimErrorOf([&] { server().deleteInstance(admin(), ZDA_NS, vol1.getPath()); }),
        CIM_ERR_NOT_SUPPORTED);
}

TEST_F(StorageVolumeTest, BuildersForOtherProviders)
{
    CIMClass volumeClass = storedClass(ZDA_NS, VOLUME);

    // A far volume named only by its keys, as a replication entity embeds it.
    CIMInstance empty = ZDA_StorageVolumeProvider::buildEmptyInstance(
        "60002D1A0013D6A40000000000000042", "2FF700000013D6A4", "zda-siteB", volumeClass);
    Array<CIMName> keys;
    for (const char* k : {"CreationClassName", "SystemCreationClassName", "SystemName", "DeviceID"})
        keys.append(k);
    empty.filter(false, false, CIMPropertyList(keys));
    EXPECT_EQ(empty.getPropertyCount(), 4u);
    EXPECT_EQ(text(get<String>(empty, "SystemName")), "2FF700000013D6A4");
    EXPECT_TRUE(ZDA_Common::matchObjectPath(empty.getPath(),
        ZDA_StorageVolumeProvider::createObjectPath("60002D1A0013D6A40000000000000042",
            "2FF700000013D6A4", "")));
    EXPECT_EQ(text(empty.getPath().getHost()), "zda-siteB");

    // Redundancy needs the CPG list; the volume alone leaves it unset.
    CIMInstance without = ZDA_StorageVolumeProvider::buildVVInstance("vol4", "zda-sim", "h",
        volumeClass, false);
    CIMInstance with = ZDA_StorageVolumeProvider::buildVVInstance("vol4", "zda-sim", "h",
        volumeClass, true);
    EXPECT_TRUE(valueOf(without, "PackageRedundancy").isNull());
    EXPECT_EQ(get<Uint16>(with, "PackageRedundancy"), 2);  // RAID-6

    EXPECT_TRUE(ZDA_StorageVolumeProvider::buildVVInstance("nosuch", "zda-sim", "h",
        volumeClass, false).isUninitialized());
}

TEST_F(StorageVolumeTest, BusyOrFailingArrayGivesEmptyAnswers)
{
    const CIMObjectPath vol1 = pathOf("vol1");  // also reads the system identity
    struct Case
    {
        const char* what;
        std::function<void()> inject;
        std::function<void()> check;
    };
    const Case cases[] = {
        {"names, busy", [] { zdasim_fault_sem_timeouts(1); },
            [&] { EXPECT_EQ(volumeNames().size(), 0u); }},
        {"names, failing read",
            [] { zdasim_fault_add("api_getVVs_chunk", 1, API_E_INVALID, "read error"); },
            [&] { EXPECT_EQ(volumeNames().size(), 0u); }},
        {"instances, busy", [] { zdasim_fault_sem_timeouts(2); },
            [&] { EXPECT_EQ(enumerateVolumes().size(), 0u); }},
        {"get, busy", [] { zdasim_fault_sem_timeouts(2); },
            [&] { EXPECT_EQ(cimErrorOf([&] { getVolume(vol1); }), CIM_ERR_NOT_FOUND); }},
        {"get, failing read",
            [] { zdasim_fault_add("api_getVVs", 1, API_E_INVALID, "read error"); },
            [&] { EXPECT_EQ(cimErrorOf([&] { getVolume(vol1); }), CIM_ERR_NOT_FOUND); }},
        {"no CPG list: volumes without redundancy",
            [] { zdasim_fault_add("api_getCPGs", 1, API_E_INVALID, "read error"); },
            [&] {
                Array<CIMInstance> volumes = enumerateVolumes();
                ASSERT_EQ(volumes.size(), TEST_ARRAY_VOLUMES.size());
                EXPECT_TRUE(valueOf(volumes[0], "PackageRedundancy").isNull());
            }},
        {"system identity not read yet",
            [] {
                ZDA_InternalCacheService::destroy();
                zdasim_fault_sem_timeouts(1);
            },
            [&] { EXPECT_EQ(volumeNames().size(), 0u); }},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        c.inject();
        c.check();
        zdasim_faults_clear();
        EXPECT_EQ(volumeNames().size(), TEST_ARRAY_VOLUMES.size());
    }
}

TEST_F(StorageVolumeTest, ManyVolumesComeInChunksDeliveredWithoutTheArrayHeld)
{
    const int added = 300;
    for (int i = 0; i < added; i++)
        ASSERT_EQ(zdasim_volume_add(("bulk" + std::to_string(i)).c_str(), "FC_r5", "", 1024), 0);

    CIMOMHandle handle;
    attachCIMOMHandleBackend(handle, std::make_shared<RepositoryBackend>(host()));
    ZDA_StorageVolumeProvider* provider = new ZDA_StorageVolumeProvider();
    provider->initialize(handle);
    zda_test::SemaphoreCheckingHandler handler;
    provider->enumerateInstances(admin(), CIMObjectPath(VOLUME), false, false, CIMPropertyList(),
        handler);
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
