// VVsets: listing with and without conditions, creation with key-values,
// changes, membership, key-value queries.
#include <functional>
#include <map>
#include <tuple>

#include "rcopy_support.h"

using namespace zdatest;

using SetTest = ArrayTest;

TEST_F(SetTest, ListingAllOneOrByKeyValue)
{
    auto all = listSets();
    ASSERT_EQ(all.size(), 5u);
    EXPECT_EQ(all["set1"].members, (Names{"vol1", "vol2"}));
    EXPECT_EQ(all["set1"].comment, "first set");
    EXPECT_EQ(all["set1"].domain, "dom1");
    EXPECT_TRUE(all["set_empty"].members.empty());

    api_Status_t st;
    EXPECT_EQ(listSets("set_one", nullptr, &st).size(), 1u);
    EXPECT_EQ(st.code, 0);
    EXPECT_TRUE(listSets("nosuch", nullptr, &st).empty());
    EXPECT_EQ(st.code, API_E_NOT_FOUND);
    EXPECT_THAT(text(st), HasSubstr("nosuch"));

    auto byKey = listSetsWhere("parentRCGroup", "rcg1", nullptr, &st);
    EXPECT_EQ(st.code, 0);
    ASSERT_EQ(byKey.size(), 1u);
    EXPECT_EQ(byKey.begin()->first, "set_dom2");
    EXPECT_TRUE(listSetsWhere("parentRCGroup", "rcg1", "set1", &st).empty()) << "a named set that misses it";
    EXPECT_EQ(st.code, 0);
    EXPECT_TRUE(listSetsWhere("parentRCGroup", "other", nullptr, &st).empty());
    EXPECT_EQ(st.code, 0);

    EXPECT_THAT(lastJournalOf("api_getVVSets"), HasSubstr("if=\"parentRCGroup==other\""));
}

TEST_F(SetTest, CreateWithKeyValuesIsVisibleToQueries)
{
    api_okv_opts_t okv{};
    for (int i = 0; i < 6; ++i)  // grows past its first block
        ASSERT_EQ(api_okv_addSetKV(&okv, ("k" + std::to_string(i)).c_str(), "x"), 0);
    ASSERT_EQ(api_okv_addSetKV(&okv, "parentRCGroup", "rcg9"), 0);
    auto members = names({"vol4", "vol5"});
    api_evtparam_t e = event("create");
    api_Status_t st = api_createVVSet(&e, "child", members.data(), 2, 0, "", &okv);
    api_free_okv_opts(&okv);
    ASSERT_EQ(st.code, 0) << text(st);

    auto made = listSets("child");
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made["child"].members, (Names{"vol4", "vol5"}));
    EXPECT_EQ(made["child"].domain, "dom2");

    EXPECT_EQ(listSetsWhere("parentRCGroup", "rcg9").size(), 1u);

    // The key-value query reads it by set id.
    const std::tuple<uint32_t, int, int> byId[] = {{listSets("child")["child"].id, 0, 1},
        {listSets("set_dom2")["set_dom2"].id, 0, 1}, {listSets("set1")["set1"].id, 0, 0},
        {9999, API_E_NOT_FOUND, 0}};
    for (const auto& [id, code, found] : byId)
    {
        api_keyvalue_query_t q{};
        q.objType = 1;
        q.objId = id;
        EXPECT_EQ(api_addKeyValueOpt(&q, "parentRCGroup").code, 0);
        EXPECT_EQ(api_getKeyValues(&q).code, code) << id;
        EXPECT_EQ(q.found, found) << id;
        api_freeKeyValueOpt(&q);
    }

    // A group may start empty.
    EXPECT_EQ(api_createVVSet(&e, "empty2", nullptr, 0, 0, nullptr, nullptr).code, 0);
    EXPECT_TRUE(listSets("empty2")["empty2"].members.empty());
}

TEST_F(SetTest, CreateRefusals)
{
    api_evtparam_t e = event("create");
    const std::tuple<const char*, std::vector<std::string>, int, const char*> cases[] = {
        {"set1", {}, API_E_EXISTS, "set1 already exists"},
        {"", {}, API_E_INVALID, "is empty"},
        {"a_name_that_is_far_too_long_to_fit", {}, API_E_INVALID, "longer than 31"},
        {"s", {"vol1", "ghost"}, API_E_NOT_FOUND, "ghost does not exist"},
        {"s", {"vol1", "vol1"}, API_E_INVALID, "vol1 is listed twice"},
        {"s", {"vol1", "vol4"}, API_E_INVALID, "vol4 is in domain"},
    };
    for (const auto& [name, members, code, words] : cases)
    {
        auto n = names(members);
        api_Status_t st = api_createVVSet(&e, name, n.data(), static_cast<int>(n.size()), 0, "", nullptr);
        EXPECT_EQ(st.code, code) << name;
        EXPECT_THAT(text(st), HasSubstr(words));
    }
    EXPECT_EQ(listSets().size(), 5u) << "nothing was made";
    api_okv_opts_t okv{};
    EXPECT_NE(api_okv_addSetKV(&okv, "", "x"), 0);
    EXPECT_NE(api_okv_addSetKV(&okv, std::string(64, 'k').c_str(), "x"), 0);
    EXPECT_NE(api_okv_addSetKV(&okv, "k", std::string(256, 'v').c_str()), 0);
    api_free_okv_opts(&okv);
}

// One naming rule for every name the array stores: 1 to 31 printable ASCII
// characters other than blank, '|' and '/'. Each way of naming a new
// object refuses the same names with API_E_INVALID.
TEST_F(SetTest, EveryNewNameFollowsTheNamingRule)
{
    const std::map<std::string, std::function<api_Status_t(const std::string&)>> creators = {
        {"vvset",
            [](const std::string& n) {
                return audited(api_createVVSet, n.c_str(), nullptr, 0, 0, "", nullptr);
            }},
        {"rename",
            [](const std::string& n) { return audited(api_setVVSet, "set1", n.c_str(), nullptr, 1, 0); }},
        {"setting",
            [](const std::string& n) {
                api_setting_t s = setting(n);
                return audited(api_createSetting, &s);
            }},
        {"rcopy group", [](const std::string& n) { return createGroup(n, {}, ""); }},
        {"snapshot",
            [](const std::string& n) {
                return groupSnapshot({{"vol1", n}});
            }},
        {"physical copy",
            [](const std::string& n) { return physicalCopy("vol1", n, API_PCOPY_CREATE_TARGET); }},
    };
    const std::string refused[] = {
        "",
        std::string(32, 'n'),
        "two words",
        "a|b",
        "a/b",
        "tab\there",
        std::string("\x01ctl"),
        "del\x7f",
        "caf\xc3\xa9",
        "lone\xed\xa0\x80",
    };
    for (const auto& [what, create] : creators)
        for (const std::string& name : refused)
            EXPECT_EQ(create(name).code, API_E_INVALID) << what << " named \"" << name << "\"";
    EXPECT_EQ(listSets().size(), 5u) << "nothing was made";
    EXPECT_EQ(creators.at("vvset")("ok.name-1_x:y").code, 0);
    EXPECT_EQ(creators.at("vvset")(std::string(31, 'n')).code, 0);
}

TEST_F(SetTest, RenameCommentAndRemove)
{
    api_evtparam_t e = event("modify");
    // A string counts only where its flag is 1.
    EXPECT_EQ(api_setVVSet(&e, "set1", "ignored", "new words", 0, 1).code, 0);
    EXPECT_EQ(listSets("set1")["set1"].comment, "new words");
    EXPECT_EQ(api_setVVSet(&e, "set1", "renamed", "ignored", 1, 0).code, 0);
    auto renamed = listSets("renamed");
    EXPECT_EQ(renamed["renamed"].comment, "new words");
    EXPECT_EQ(renamed["renamed"].members, (Names{"vol1", "vol2"}));
    EXPECT_EQ(api_setVVSet(&e, "set1", nullptr, nullptr, 0, 0).code, API_E_NOT_FOUND);
    EXPECT_EQ(api_setVVSet(&e, "renamed", "set_one", nullptr, 1, 0).code, API_E_EXISTS);
    EXPECT_EQ(api_setVVSet(&e, "renamed", "", nullptr, 1, 0).code, API_E_INVALID);
    EXPECT_EQ(api_setVVSet(&e, "renamed", nullptr, std::string(257, 'c').c_str(), 0, 1).code, API_E_INVALID);

    // Removing a set keeps its volumes.
    EXPECT_EQ(api_removeVVSet(&e, "renamed").code, 0);
    EXPECT_EQ(api_removeVVSet(&e, "renamed").code, API_E_NOT_FOUND);
    EXPECT_EQ(getVVs("vol1").rc, 0);
    EXPECT_EQ(zdasim_event_count(), 8u) << "every change keeps its audit record";
}

TEST_F(SetTest, AddAndRemoveMembers)
{
    api_evtparam_t e = event("members");
    auto add = [&](const char* set, std::vector<std::string> l) {
        auto n = names(l);
        return api_addToVVSet(&e, set, n.data(), static_cast<int>(n.size()));
    };
    auto drop = [&](const char* set, std::vector<std::string> l) {
        auto n = names(l);
        return api_removeFromVVSet(&e, set, n.data(), static_cast<int>(n.size()));
    };
    EXPECT_EQ(add("set_empty", {"vol4"}).code, 0);
    EXPECT_EQ(listSets("set_empty")["set_empty"].domain, "dom2")
        << "an empty set takes its first member's domain";
    EXPECT_EQ(add("set_empty", {"vol1"}).code, API_E_INVALID) << "another domain";
    EXPECT_EQ(add("set1", {"vol3", "vol1.rw"}).code, 0);
    EXPECT_EQ(listSets("set1")["set1"].members, (Names{"vol1", "vol2", "vol3", "vol1.rw"}));
    EXPECT_EQ(add("set1", {"vol2"}).code, API_E_EXISTS);
    EXPECT_EQ(add("set1", {"ghost"}).code, API_E_NOT_FOUND);
    EXPECT_EQ(add("nosuch", {"vol1"}).code, API_E_NOT_FOUND);

    // Removal is all or nothing: one non-member leaves the set as it was.
    api_Status_t st = drop("set1", {"vol1", "vol5"});
    EXPECT_EQ(st.code, API_E_NOT_FOUND);
    EXPECT_THAT(text(st), HasSubstr("vol5 is not a member of VV set set1"));
    EXPECT_EQ(listSets("set1")["set1"].members.size(), 4u);
    EXPECT_EQ(drop("set1", {"vol1", "vol3"}).code, 0);
    EXPECT_EQ(listSets("set1")["set1"].members, (Names{"vol2", "vol1.rw"}));
    EXPECT_EQ(drop("set1", {"vol2", "vol1.rw"}).code, 0);
    EXPECT_TRUE(listSets("set1")["set1"].members.empty());

    EXPECT_THAT(lastJournalOf("api_removeFromVVSet"), HasSubstr("members=\"vol2|vol1.rw\" count=2"));
}
