// Local copy relationships through the in-process host: instances and
// association operations from either end. Their states as copies run are
// followed in the copy operations' tests.
#include "copysvcs_fixture.h"

#include "ZDA_StorageSynchronizedProvider.h"

using namespace zda_copysvcs_test;

namespace
{

const char SYNC[] = "ZDA_StorageSynchronized";

class SynchronizedTest : public CopyServicesTest
{
protected:
    std::string nameOf(const CIMObjectPath& volumePath)
    {
        return text(get<String>(getInstance(volumePath), "ElementName"));
    }
};

TEST_F(SynchronizedTest, EveryLocalCopyOnceWithItsTypeAndPath)
{
    // The test array: two snapshots of vol1 and a finished clone of vol2.
    Array<CIMInstance> all = instancesOf(SYNC);
    Array<CIMObjectPath> paths = namesOf(SYNC);
    ASSERT_EQ(all.size(), 3u);
    ASSERT_EQ(paths.size(), 3u);
    std::map<std::string, int> syncTypeOf;
    for (Uint32 i = 0; i < all.size(); i++)
    {
        EXPECT_TRUE(ZDA_Common::matchObjectPath(all[i].getPath(), paths[i]));
        const std::string copy = nameOf(endOf(paths[i], "SyncedElement"));
        syncTypeOf[nameOf(endOf(paths[i], "SystemElement")) + ">" + copy] = get<Uint16>(all[i], "SyncType");
        EXPECT_TRUE(ZDA_Common::matchObjectPath(getInstance(paths[i]).getPath(), paths[i]));
    }
    EXPECT_EQ(syncTypeOf,
        (std::map<std::string, int>{{"vol1>vol1.rw", 7}, {"vol1>vol1.ro", 7}, {"vol2>vol2.clone", 8}}));

    // A path whose ends are not a copy and its source is not found.
    const CIMObjectPath wrong = ZDA_StorageSynchronizedProvider::buildObjectPath(
        volume("vol2"), volume("vol1.rw"), HOST);
    EXPECT_EQ(cimErrorOf([&] { getInstance(wrong); }), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(cimErrorOf([&] { server().deleteInstance(admin(), ZDA_NS, paths[0]); }), CIM_ERR_NOT_SUPPORTED);
}

TEST_F(SynchronizedTest, AssociationsFromEitherEnd)
{
    const CIMObjectPath vol1 = volume("vol1");
    const CIMObjectPath snap = volume("vol1.rw");
    EXPECT_EQ(elementNamesOf(assocNames(vol1, SYNC)), (std::set<std::string>{"vol1.rw", "vol1.ro"}));
    EXPECT_EQ(elementNamesOf(assocNames(snap, SYNC, "SyncedElement", "SystemElement", "CIM_StorageVolume")),
        (std::set<std::string>{"vol1"}));
    // Roles that cannot match give nothing.
    EXPECT_EQ(assocNames(vol1, SYNC, "SyncedElement").size(), 0u);
    EXPECT_EQ(assocNames(vol1, SYNC, "SystemElement", "SystemElement").size(), 0u);

    Array<CIMObject> objects = assocObjects(snap, SYNC);
    ASSERT_EQ(objects.size(), 1u);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(objects[0].getPath(), vol1));

    // The module finds the relationship of a target by its SyncedElement role.
    Array<CIMObjectPath> refs = refNames(snap, SYNC, "SyncedElement");
    ASSERT_EQ(refs.size(), 1u);
    EXPECT_TRUE(ZDA_Common::matchObjectPath(endOf(refs[0], "SystemElement"), vol1));
    EXPECT_EQ(refObjects(vol1, SYNC).size(), 2u);
    EXPECT_EQ(refNames(volume("vol3"), SYNC).size(), 0u);
}

}  // namespace
