// Replication groups and their member volumes through the in-process host
// over the test array (set1 {vol1, vol2}, set_empty {}, set_one {vol3},
// set_dom2 {vol4, vol5} standing for a remote copy group, set_overlap
// {vol1}), and the association frame's request checks.
#include "replication_fixture.h"

using namespace zda_replication_test;

namespace
{

const char GROUP[] = "ZDA_ReplicationGroup";
const char MEMBER_OF[] = "ZDA_MemberOfReplicationGroup";

typedef std::set<std::pair<std::string, std::string>> Pairs;

class GroupsTest : public ReplicationTest
{
protected:
    // (vvset, volume) of each membership, given as paths or instances.
    template <class Links>
    Pairs pairs(const Links& links)
    {
        Pairs out;
        for (Uint32 i = 0; i < links.size(); i++)
            out.insert(
                {label(endOf(pathOf(links[i]), "Collection")), label(endOf(pathOf(links[i]), "Member"))});
        return out;
    }
    Array<CIMObjectPath> members(const CIMObjectPath& groupPath) { return far(groupPath, MEMBER_OF); }
    int modify(const CIMInstance& instance, const CIMPropertyList& list, const char* user = "admin")
    {
        return cimErrorOf([&] { server().modifyInstance(as(user), ZDA_NS, instance, false, list); });
    }
    // A vvset named `name` holding new volumes with these names, made
    // through the service.
    void addSet(const char* name, const std::vector<std::string>& names)
    {
        for (const std::string& volume : names)
            ASSERT_EQ(zdasim_volume_add(volume.c_str(), "FC_r5", "", 1024), 0);
        const auto paths = volumePaths();
        Array<CIMObjectPath> members;
        for (const std::string& volume : names)
            members.append(paths.at(volume));
        ASSERT_EQ(outcome("CreateGroup", args({{"GroupName", str(name)}, {"Members", CIMValue(members)}})),
            "returned 0");
    }
};

TEST_F(GroupsTest, EveryVvsetIsAGroupWithItsShape)
{
    const Array<CIMInstance> every = instancesOf(GROUP);
    Array<CIMObjectPath> paths = namesOf(GROUP);
    ASSERT_EQ(every.size(), 5u);
    ASSERT_EQ(paths.size(), 5u);
    std::vector<std::string> order;
    for (Uint32 i = 0; i < every.size(); i++)
    {
        order.push_back(text(get<String>(every[i], "ElementName")));
        EXPECT_TRUE(ZDA_Common::matchObjectPath(every[i].getPath(), paths[i]));
        EXPECT_TRUE(foundByPath(paths[i]));
    }
    EXPECT_EQ(order, (std::vector<std::string>{"set1", "set_empty", "set_one", "set_dom2", "set_overlap"}));
    EXPECT_EQ(text(get<String>(every[0], "InstanceID")), "KX_ORLA:set1");
    EXPECT_EQ(
        text(get<String>(every[4], "Caption")), "vvset ID " + std::to_string(get<Uint32>(every[4], "ID")));
    EXPECT_EQ(text(get<String>(every[0], "Description")), "first set");
    EXPECT_TRUE(valueOf(every[1], "Description").isNull());
}

TEST_F(GroupsTest, ReadFailuresAnswerEmptyOrNotFound)
{
    members(vvset("set1"));  // the providers and the identity cache are up
    zdasim_fault_sem_timeouts(1);
    EXPECT_EQ(instancesOf(GROUP).size(), 0u);
    zdasim_fault_add("api_getVVSets", 1, API_E_INVALID, "broken");
    EXPECT_EQ(namesOf(GROUP).size(), 0u);
    zdasim_fault_sem_timeouts(1);
    EXPECT_EQ(readError(vvset("set1")), CIM_ERR_NOT_FOUND);

    EXPECT_EQ(readError(withKey(vvset("set1"), "InstanceID", "KX_ORLAset1")), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(readError(vvset("no_such_set")), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(readError(vvset("set1"), "noaccess"), CIM_ERR_ACCESS_DENIED);
}

TEST_F(GroupsTest, ModifyChangesOnlyNameAndComment)
{
    auto instance = [&](const char* set, std::vector<std::pair<const char*, CIMValue>> values) {
        CIMInstance i(GROUP);
        for (auto& v : values)
            i.addProperty(CIMProperty(v.first, v.second));
        i.setPath(vvset(set));
        return i;
    };
    const CIMValue nullText(CIMTYPE_STRING, false);
    struct Case
    {
        const char* what;
        CIMInstance instance;
        CIMPropertyList list;
        const char* user;
        int error;
        size_t arrayCalls;
    };
    const Case cases[] = {
        {"other properties only",
            instance("set1", {{"Persistent", CIMValue(Boolean(false))}, {"Caption", str("x")}}),
            CIMPropertyList(), "admin", -1, 0},
        {"null ElementName", instance("set1", {{"ElementName", nullText}}), CIMPropertyList(), "admin", 5, 0},
        {"null Description", instance("set1", {{"Description", nullText}}), CIMPropertyList(), "admin", -1,
            0},
        {"listed name absent", instance("set1", {{"Description", str("new")}}),
            zda_test::propertyList({"ElementName"}), "admin", -1, 0},
        {"no such vvset", instance("gone", {{"Description", str("x")}}), CIMPropertyList(), "admin",
            CIM_ERR_NOT_FOUND, 0},
        {"viewer", instance("set1", {{"Description", str("x")}}), CIMPropertyList(), "viewer",
            CIM_ERR_ACCESS_DENIED, 0},
        {"empty comment", instance("set1", {{"Description", str("")}}), CIMPropertyList(), "operator", -1, 1},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        zdasim_journal_clear();
        EXPECT_EQ(modify(c.instance, c.list, c.user), c.error);
        EXPECT_EQ(zdasim_journal_count_of("api_setVVSet"), c.arrayCalls);
    }
    EXPECT_TRUE(valueOf(getInstance(vvset("set1")), "Description").isNull());

    // Name and comment go in one call; the group is then found by its new name.
    zdasim_journal_clear();
    EXPECT_EQ(modify(instance("set1", {{"ElementName", str("renamed")}, {"Description", str("moved")}}),
                  CIMPropertyList()),
        -1);
    EXPECT_EQ(zdasim_journal_count_of("api_setVVSet"), 1u);
    EXPECT_EQ(text(get<String>(getInstance(vvset("renamed")), "Description")), "moved");
    EXPECT_EQ(labels(members(vvset("renamed"))), (Labels{"vol1", "vol2"}));

    zdasim_fault_add("api_setVVSet", 1, API_E_INVALID, "no rename today");
    EXPECT_EQ(
        modify(instance("renamed", {{"ElementName", str("again")}}), CIMPropertyList()), CIM_ERR_FAILED);
}

TEST_F(GroupsTest, MembershipPairsSkipEmptyAndRemoteCopySets)
{
    Array<CIMObjectPath> paths = namesOf(MEMBER_OF);
    const Array<CIMInstance> every = instancesOf(MEMBER_OF);
    const Pairs expected = {{"set1", "vol1"}, {"set1", "vol2"}, {"set_one", "vol3"}, {"set_overlap", "vol1"}};
    EXPECT_EQ(pairs(paths), expected);
    ASSERT_EQ(every.size(), paths.size());
    for (Uint32 i = 0; i < paths.size(); i++)
    {
        EXPECT_TRUE(ZDA_Common::matchObjectPath(every[i].getPath(), paths[i]));
        EXPECT_TRUE(foundByPath(paths[i]));
    }

    // A pair of a set that stands for a remote copy group is not there.
    CIMObjectPath remote = paths[0];
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Collection", vvset("set_dom2").toString(), CIMKeyBinding::REFERENCE));
    keys.append(CIMKeyBinding("Member", volume("vol4").toString(), CIMKeyBinding::REFERENCE));
    remote.setKeyBindings(keys);
    EXPECT_EQ(readError(remote), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(changeErrors(paths[0]), "7 7 7");
}

TEST_F(GroupsTest, NavigationBothWays)
{
    struct Case
    {
        CIMObjectPath object;
        const char* resultClass;
        const char* role;
        Labels expected;
    };
    const Case cases[] = {
        {vvset("set1"), nullptr, "", {"vol1", "vol2"}},
        {vvset("set1"), "CIM_ManagedElement", "COLLECTION", {"vol1", "vol2"}},
        {volume("vol1"), "CIM_ReplicationGroup", "member", {"set1", "set_overlap"}},
        {vvset("set_dom2"), nullptr, "", {}},
        {vvset("set_empty"), nullptr, "", {}},
        {vvset("no_such_set"), nullptr, "", {}},
        {volume("vol4"), nullptr, "", {}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(text(c.object.toString()));
        const CIMName resultClass = c.resultClass ? CIMName(c.resultClass) : CIMName();
        EXPECT_EQ(labels(assocNames(c.object, MEMBER_OF, c.role, "", resultClass)), c.expected);
        EXPECT_EQ(assocObjects(c.object, MEMBER_OF, c.role, "", resultClass).size(), c.expected.size());
        EXPECT_EQ(refNames(c.object, MEMBER_OF, c.role).size(), c.expected.size());
    }
    EXPECT_EQ(
        pairs(refObjects(volume("vol1"), MEMBER_OF)), (Pairs{{"set1", "vol1"}, {"set_overlap", "vol1"}}));
}

TEST_F(GroupsTest, RequestsThatCannotMatchAnswerNothingWithoutComplete)
{
    const CIMObjectPath set1 = vvset("set1");
    const CIMObjectPath vol1 = volume("vol1");
    const CIMObjectPath noName = withKey(set1, "InstanceID", "set1");
    struct Case
    {
        const char* what;
        CIMObjectPath object;
        bool references;
        const char* resultClass;
        const char* role;
        const char* resultRole;
        bool answered;
    };
    const Case cases[] = {
        {"own class", set1, false, GROUP, "", "", false},
        {"way back from a group", set1, false, "CIM_Collection", "", "", false},
        {"far end's role", vol1, true, nullptr, "Collection", "", false},
        {"unknown role", set1, false, nullptr, "Owner", "", false},
        {"references of another class", set1, true, "ZDA_StorageVolume", "", "", false},
        {"group without a vvset name", noName, false, nullptr, "", "", false},
        {"object of a third class", CIMObjectPath("ZDA_StoragePool"), false, nullptr, "", "", false},
        {"root class from a group", set1, false, "CIM_ManagedElement", "", "MEMBER", true},
        {"association's parent class", vol1, true, "CIM_MemberOfCollection", "Member", "", true},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        const CIMName resultClass = c.resultClass ? CIMName(c.resultClass) : CIMName();
        EXPECT_EQ(directNames(MEMBER_OF, c.object, c.references, resultClass, c.role, c.resultRole),
            c.answered ? "processing deliver(path) deliver(path) complete" : "");
    }
}

TEST_F(GroupsTest, ArrayFailureAfterProcessingEndsWithoutComplete)
{
    for (const char* failing : {"api_getVVSets", "api_getVVs_chunk", ""})
        EXPECT_EQ(enumerateFailing(MEMBER_OF, failing), "processing") << failing;
    // Without faults the walk completes and never delivers under the semaphore.
    EXPECT_EQ(enumerateFailing(MEMBER_OF, nullptr, true),
        "processing deliver(instance) deliver(instance) deliver(instance) deliver(instance) complete");
}

TEST_F(GroupsTest, LongMemberListsAreQueriedInPieces)
{
    // Member names joined by "|": 8 * 31 + 7 = 255 fit one filter; a ninth
    // name after those ends the first piece at exactly 255; 8 * 28 + 24 + 8
    // = 256 are cut at the last bar before the limit.
    struct Case
    {
        const char* set;
        int count;
        size_t length;
        size_t lastLength;
        size_t queries;
    };
    const Case cases[] = {{"fits", 8, 31, 31, 1}, {"barAt255", 9, 31, 10, 2}, {"spills", 9, 28, 24, 2}};
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.set);
        std::vector<std::string> volumes;
        Labels expected;
        for (int i = 0; i < c.count; i++)
        {
            std::string name = std::string(c.set) + std::to_string(i);
            name += std::string((i + 1 < c.count ? c.length : c.lastLength) - name.size(), 'x');
            volumes.push_back(name);
            expected.insert(name);
        }
        addSet(c.set, volumes);
        zdasim_journal_clear();
        Array<CIMObjectPath> found = members(vvset(c.set));
        EXPECT_EQ(zdasim_journal_count_of("api_getVVs_chunk"), c.queries);
        EXPECT_EQ(labels(found), expected);
    }
}

}  // namespace
