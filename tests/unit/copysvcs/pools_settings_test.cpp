// Pools, the replica pool association and storage settings through the
// in-process host, and a setting used as the goal of a copy.
#include "copysvcs_fixture.h"

#include <set>

#include "ZDA_StorageConfigurationServiceProvider.h"
#include "ZDA_StoragePoolProvider.h"
#include "ZDA_StorageSettingProvider.h"

using namespace zda_copysvcs_test;

namespace
{

const char POOL[] = "ZDA_DynamicStoragePool";
const char DELTA[] = "ZDA_DeltaReplicaStoragePool";
const char REPLICA_POOL[] = "ZDA_ReplicaPoolForStorage";
const char SETTING[] = "ZDA_StorageSetting";

class PoolsAndSettingsTest : public CopyServicesTest
{
protected:
    Array<CIMInstance> all(const char* className)
    {
        return server().enumerateInstances(
            admin(), ZDA_NS, className, true, false, false, false, CIMPropertyList());
    }
    CIMInstance settingInstance(const char* name)
    {
        CIMInstance s(SETTING);
        s.addProperty(CIMProperty("ElementName", CIMValue(String(name))));
        return s;
    }
};

TEST_F(PoolsAndSettingsTest, EveryCPGIsAPoolAndHoldsSnapshotSpace)
{
    Array<CIMInstance> pools = all(POOL);
    Array<CIMInstance> deltas = all(DELTA);
    ASSERT_EQ(pools.size(), 4u);  // FC_r5, FC_r1, NL_r6, SSD_r1
    ASSERT_EQ(deltas.size(), 4u);
    std::map<std::string, CIMInstance> byName;
    for (Uint32 i = 0; i < pools.size(); i++)
    {
        const String id = get<String>(pools[i], "PoolID");
        byName[text(id)] = pools[i];
        EXPECT_TRUE(ZDA_Common::matchObjectPath(
            pools[i].getPath(), ZDA_StoragePoolProvider::buildObjectPath(id, "h")));
        EXPECT_EQ(text(ZDA_StoragePoolProvider::cpgOf(pools[i].getPath())), text(id));
        EXPECT_LE(get<Uint64>(pools[i], "RemainingManagedSpace"), get<Uint64>(pools[i], "TotalManagedSpace"));
    }
    EXPECT_EQ(get<Uint64>(byName["FC_r5"], "TotalManagedSpace"), Uint64(4) << 40);
    EXPECT_EQ(get<Uint16>(deltas[0], "Usage"), 4);
    EXPECT_EQ(text(get<String>(getInstance(deltas[1].getPath()), "PoolID")),
        text(get<String>(deltas[1], "PoolID")));
    EXPECT_EQ(cimErrorOf([&] { getInstance(ZDA_StoragePoolProvider::buildObjectPath("nope", HOST)); }),
        CIM_ERR_NOT_FOUND);
}

TEST_F(PoolsAndSettingsTest, VolumesWithSnapshotSpaceLeadToTheirDeltaPool)
{
    // vol3 and admvv have no snapshot space; the others keep it in a CPG.
    Array<CIMObjectPath> links = server().enumerateInstanceNames(admin(), ZDA_NS, REPLICA_POOL);
    EXPECT_EQ(links.size(), 7u);

    Array<CIMObjectPath> pools = server().associatorNames(
        admin(), ZDA_NS, volume("vol1"), REPLICA_POOL, CIMName(), "Dependent", "");
    ASSERT_EQ(pools.size(), 1u);
    EXPECT_TRUE(
        ZDA_Common::matchObjectPath(pools[0], ZDA_StoragePoolProvider::buildDeltaObjectPath("FC_r1", HOST)));
    Array<CIMObject> poolObjects = server().associators(admin(), ZDA_NS, volume("vol1"), REPLICA_POOL,
        "CIM_StoragePool", "", "Antecedent", false, false, CIMPropertyList());
    ASSERT_EQ(poolObjects.size(), 1u);
    EXPECT_EQ(
        server().associatorNames(admin(), ZDA_NS, volume("vol3"), REPLICA_POOL, CIMName(), "", "").size(),
        0u);
    EXPECT_EQ(server()
                  .associatorNames(admin(), ZDA_NS, volume("vol1"), REPLICA_POOL, CIMName(), "Antecedent", "")
                  .size(),
        0u);

    // From the pool: every volume that keeps snapshots there.
    Array<CIMObject> volumes = server().associators(admin(), ZDA_NS,
        ZDA_StoragePoolProvider::buildDeltaObjectPath("NL_r6", HOST), REPLICA_POOL, CIMName(), "", "", false,
        false, CIMPropertyList());
    std::set<std::string> names;
    for (Uint32 i = 0; i < volumes.size(); i++)
        names.insert(text(get<String>(CIMInstance(volumes[i]), "ElementName")));
    EXPECT_EQ(names, (std::set<std::string>{"vol4", "vol5"}));
    EXPECT_EQ(
        server()
            .references(admin(), ZDA_NS, volume("vol2"), REPLICA_POOL, "", false, false, CIMPropertyList())
            .size(),
        1u);

    // Snapshot space given by the copy services shows at once.
    Array<String> vol3;
    vol3.append("vol3");
    ASSERT_EQ(ZDA_StorageConfigurationServiceProvider::assignSnapPoolToVolume(&event, vol3), 0);
    EXPECT_EQ(
        server().associatorNames(admin(), ZDA_NS, volume("vol3"), REPLICA_POOL, CIMName(), "", "").size(),
        1u);
}

TEST_F(PoolsAndSettingsTest, SettingsAreCreatedModifiedDeletedAndKeptWithTheArray)
{
    CIMInstance gold = settingInstance("gold");
    gold.addProperty(CIMProperty("SnapDSPName", CIMValue(String("FC_r1"))));
    gold.addProperty(CIMProperty("ExpirationTime", CIMValue(CIMDateTime(Uint64(7200) * 1000000, true))));
    gold.addProperty(CIMProperty("Description", CIMValue(String("two-hour snapshots"))));
    const CIMObjectPath path = server().createInstance(admin(), ZDA_NS, gold);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(path, ZDA_StorageSettingProvider::buildObjectPath("gold", HOST)));
    EXPECT_EQ(cimErrorOf([&] { server().createInstance(admin(), ZDA_NS, gold); }), CIM_ERR_ALREADY_EXISTS);

    struct Bad
    {
        const char* property;
        CIMValue value;
    };
    const Bad refused[] = {
        {"UserDSPName", CIMValue(String("nope"))},                               // no such CPG
        {"RetentionTime", CIMValue(CIMDateTime(Uint64(9000) * 1000000, true))},  // beyond expiration
        {"BaseID", CIMValue(String("seven"))},                                   // wrong type
    };
    for (const Bad& b : refused)
    {
        CIMInstance change = gold.clone();
        change.removeProperty(
            change.findProperty(b.property) == PEG_NOT_FOUND ? 0 : change.findProperty(b.property));
        change.addProperty(CIMProperty(b.property, b.value));
        change.setPath(path);
        EXPECT_EQ(
            cimErrorOf([&] { server().modifyInstance(admin(), ZDA_NS, change, false, CIMPropertyList()); }),
            CIM_ERR_INVALID_PARAMETER)
            << b.property;
    }
    EXPECT_EQ(cimErrorOf([&] { server().createInstance(admin(), ZDA_NS, CIMInstance(SETTING)); }),
        CIM_ERR_INVALID_PARAMETER);

    CIMInstance change(SETTING);
    change.addProperty(CIMProperty("DeltaReservationGoal", CIMValue(Uint8(30))));
    change.addProperty(CIMProperty("Description", CIMValue(String("ignored"))));
    change.setPath(path);
    Array<CIMName> only;
    only.append("DeltaReservationGoal");
    server().modifyInstance(admin(), ZDA_NS, change, false, CIMPropertyList(only));
    CIMInstance got = getInstance(path);
    EXPECT_EQ(get<Uint8>(got, "DeltaReservationGoal"), 30);
    EXPECT_EQ(text(get<String>(got, "Description")), "two-hour snapshots");
    EXPECT_EQ(text(get<String>(got, "SnapDSPName")), "FC_r1");

    // A time is kept as given: a point in time beside an interval.
    const CIMDateTime retainedUntil("20300101000000.000000+000");
    CIMInstance pointed(SETTING);
    pointed.addProperty(CIMProperty("RetentionTime", CIMValue(retainedUntil)));
    pointed.setPath(path);
    Array<CIMName> retentionOnly;
    retentionOnly.append("RetentionTime");
    server().modifyInstance(admin(), ZDA_NS, pointed, false, CIMPropertyList(retentionOnly));

    // Kept with the array: a description written and read back holds it.
    const std::string file = ::testing::TempDir() + "settings_provider.json";
    char error[256] = "";
    ASSERT_EQ(zdasim_save_description_file(file.c_str(), error, sizeof error), 0) << error;
    server().deleteInstance(admin(), ZDA_NS, path);
    EXPECT_EQ(all(SETTING).size(), 0u);
    EXPECT_EQ(cimErrorOf([&] { server().deleteInstance(admin(), ZDA_NS, path); }), CIM_ERR_NOT_FOUND);
    ASSERT_EQ(zdasim_load_description_file(file.c_str(), error, sizeof error), 0) << error;
    std::remove(file.c_str());
    ASSERT_EQ(all(SETTING).size(), 1u);
    EXPECT_EQ(get<CIMDateTime>(getInstance(path), "ExpirationTime").toString(),
        CIMDateTime(Uint64(7200) * 1000000, true).toString());
    const CIMDateTime shown = get<CIMDateTime>(getInstance(path), "RetentionTime");
    EXPECT_FALSE(shown.isInterval());
    EXPECT_EQ(ZDA_Common::getDateTime(shown), ZDA_Common::getDateTime(retainedUntil));
}

TEST_F(PoolsAndSettingsTest, ASettingIsTheGoalOfACopy)
{
    CIMInstance goal = settingInstance("r1copies");
    goal.addProperty(CIMProperty("UserDSPName", CIMValue(String("FC_r1"))));
    goal.addProperty(CIMProperty("SnapDSPName", CIMValue(String("FC_r1"))));
    const CIMObjectPath path = server().createInstance(admin(), ZDA_NS, goal);
    const CIMInstance stored = getInstance(path);

    Array<CIMObjectPath> jobs;
    Array<CIMObjectPath> syncs;
    ASSERT_EQ(ZDA_StorageConfigurationServiceProvider::createPhysicalCopy(&event, cimom, admin(),
                  ZDA_StorageConfigurationServiceProvider::COPY_SYNCHRONIZED, volume("vol3"), CIMObjectPath(),
                  CIMObjectPath(), stored, jobs, syncs, systemName, host, "vol3.r1")
                  .code,
        0);
    // Its user space is in FC_r1: FC_r1's pool now has its space in use.
    api_VVObj_t* vv = nullptr;
    int count = 0;
    ASSERT_EQ(cim_sem_wait(), 0);
    api_getVVs("vol3.r1", nullptr, &count, &vv, 1);
    cim_sem_post();
    ASSERT_EQ(count, 1);
    EXPECT_STREQ(vv[0].usrCpgName, "FC_r1");
    EXPECT_STREQ(vv[0].cpgName, "FC_r1");
    free_if_not_null(vv);

    // A snapshot of vol3 (no snapshot space of its own) takes the goal's.
    Array<CIMParamValue> params;
    ASSERT_EQ(ZDA_StorageConfigurationServiceProvider::createVirtualCopy(&event, cimom, admin(), params,
                  volume("vol3"), "vol3.snap", CIMObjectPath(), stored, systemName, host)
                  .code,
        0);
    EXPECT_EQ(params.size(), 1u);
    expectLedgersClean("copies with a goal");
}

}  // namespace
