// Pools, the replica pool association and storage settings through the
// in-process host.
#include "copysvcs_fixture.h"

#include <set>

#include "CimBuilders.h"
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
{};

TEST_F(PoolsAndSettingsTest, EveryCPGIsAPoolAndHoldsSnapshotSpace)
{
    Array<CIMInstance> pools = instancesOf(POOL);
    Array<CIMInstance> deltas = instancesOf(DELTA);
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
    Array<CIMObjectPath> links = namesOf(REPLICA_POOL);
    EXPECT_EQ(links.size(), 7u);

    Array<CIMObjectPath> pools = assocNames(volume("vol1"), REPLICA_POOL, "Dependent");
    ASSERT_EQ(pools.size(), 1u);
    EXPECT_TRUE(
        ZDA_Common::matchObjectPath(pools[0], ZDA_StoragePoolProvider::buildDeltaObjectPath("FC_r1", HOST)));
    EXPECT_EQ(assocObjects(volume("vol1"), REPLICA_POOL, "", "Antecedent", "CIM_StoragePool").size(), 1u);
    EXPECT_EQ(assocNames(volume("vol3"), REPLICA_POOL).size(), 0u);
    EXPECT_EQ(assocNames(volume("vol1"), REPLICA_POOL, "Antecedent").size(), 0u);

    // From the pool: every volume that keeps snapshots there.
    EXPECT_EQ(elementNamesOf(
                  assocObjects(ZDA_StoragePoolProvider::buildDeltaObjectPath("NL_r6", HOST), REPLICA_POOL)),
        (std::set<std::string>{"vol4", "vol5"}));
    EXPECT_EQ(refObjects(volume("vol2"), REPLICA_POOL).size(), 1u);

    // Snapshot space given by the copy services shows at once.
    Array<String> vol3;
    vol3.append("vol3");
    ASSERT_EQ(ZDA_StorageConfigurationServiceProvider::assignSnapPoolToVolume(&event, vol3), 0);
    EXPECT_EQ(assocNames(volume("vol3"), REPLICA_POOL).size(), 1u);
}

TEST_F(PoolsAndSettingsTest, SettingsAreCreatedModifiedDeletedAndKeptWithTheArray)
{
    CIMInstance gold(SETTING);
    gold.addProperty(CIMProperty("ElementName", CIMValue(String("gold"))));
    gold.addProperty(CIMProperty("SnapDSPName", CIMValue(String("FC_r1"))));
    gold.addProperty(CIMProperty("ExpirationTime", CIMValue(CIMDateTime(Uint64(7200) * 1000000, true))));
    gold.addProperty(CIMProperty("Description", CIMValue(String("two-hour snapshots"))));
    const CIMObjectPath path = server().createInstance(admin(), ZDA_NS, gold);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(path, ZDA_StorageSettingProvider::buildObjectPath("gold", HOST)));
    EXPECT_EQ(cimErrorOf([&] { server().createInstance(admin(), ZDA_NS, gold); }), CIM_ERR_ALREADY_EXISTS);

    const std::pair<const char*, CIMValue> refused[] = {
        {"UserDSPName", CIMValue(String("nope"))},                               // no such CPG
        {"RetentionTime", CIMValue(CIMDateTime(Uint64(9000) * 1000000, true))},  // beyond expiration
        {"BaseID", CIMValue(String("seven"))},                                   // wrong type
    };
    for (const auto& [property, value] : refused)
    {
        CIMInstance change = gold.clone();
        change.addProperty(CIMProperty(property, value));
        change.setPath(path);
        EXPECT_EQ(
            cimErrorOf([&] { server().modifyInstance(admin(), ZDA_NS, change, false, CIMPropertyList()); }),
            CIM_ERR_INVALID_PARAMETER)
            << property;
    }
    EXPECT_EQ(cimErrorOf([&] { server().createInstance(admin(), ZDA_NS, CIMInstance(SETTING)); }),
        CIM_ERR_INVALID_PARAMETER);

    CIMInstance change(SETTING);
    change.addProperty(CIMProperty("DeltaReservationGoal", CIMValue(Uint8(30))));
    change.addProperty(CIMProperty("Description", CIMValue(String("ignored"))));
    change.setPath(path);
    server().modifyInstance(admin(), ZDA_NS, change, false, zda_test::propertyList({"DeltaReservationGoal"}));
    CIMInstance got = getInstance(path);
    EXPECT_EQ(get<Uint8>(got, "DeltaReservationGoal"), 30);
    EXPECT_EQ(text(get<String>(got, "Description")), "two-hour snapshots");
    EXPECT_EQ(text(get<String>(got, "SnapDSPName")), "FC_r1");

    // A time is kept as given: a point in time beside an interval.
    const CIMDateTime retainedUntil("20300101000000.000000+000");
    CIMInstance pointed(SETTING);
    pointed.addProperty(CIMProperty("RetentionTime", CIMValue(retainedUntil)));
    pointed.setPath(path);
    server().modifyInstance(admin(), ZDA_NS, pointed, false, zda_test::propertyList({"RetentionTime"}));

    // Kept with the array: a description written and read back holds it.
    const std::string file = ::testing::TempDir() + "settings_provider.json";
    char error[256] = "";
    ASSERT_EQ(zdasim_save_description_file(file.c_str(), error, sizeof error), 0) << error;
    server().deleteInstance(admin(), ZDA_NS, path);
    EXPECT_EQ(instancesOf(SETTING).size(), 0u);
    EXPECT_EQ(cimErrorOf([&] { server().deleteInstance(admin(), ZDA_NS, path); }), CIM_ERR_NOT_FOUND);
    ASSERT_EQ(zdasim_load_description_file(file.c_str(), error, sizeof error), 0) << error;
    std::remove(file.c_str());
    ASSERT_EQ(instancesOf(SETTING).size(), 1u);
    EXPECT_EQ(get<CIMDateTime>(getInstance(path), "ExpirationTime").toString(),
        CIMDateTime(Uint64(7200) * 1000000, true).toString());
    const CIMDateTime shown = get<CIMDateTime>(getInstance(path), "RetentionTime");
    EXPECT_FALSE(shown.isInterval());
    EXPECT_EQ(ZDA_Common::getDateTime(shown), ZDA_Common::getDateTime(retainedUntil));
}

}  // namespace
