// Volume look-ups, filters and chunked queries, removal, group snapshots.
#include <map>
#include <tuple>

#include "sim_fixture.h"

using namespace zdatest;

namespace
{

// One filter of the given entries, queried to the end in chunks of maxCount.
Query chunked(const std::vector<std::pair<int, std::string>>& entries, int maxCount = 0, int flags = 1)
{
    Query q;
    _api_getvv_filter_t filter;
    EXPECT_EQ(api_getvv_filter_init(&filter, static_cast<int>(entries.size()) + 1), 0);
    for (const auto& [attr, values] : entries)
        EXPECT_EQ(api_getvv_filter_add(&filter, attr, 1, values.c_str()), 0);
    api_getvv_cursor_t cursor{};
    int rounds = 0;
    do
    {
        int count = 0;
        api_VVObj_t* list = nullptr;
        q.rc = api_getVVs_chunk(&cursor, maxCount, &filter, &count, &list, flags);
        for (const auto& n : vvNames(list, count))
            q.names.push_back(n);
        free_if_not_null(list);
    } while (q.rc == 0 && !cursor.done && ++rounds < 1000);
    api_getvv_filter_free(&filter);
    return q;
}

using ::testing::AllOf;
using VolumeTest = ArrayTest;

}  // namespace

TEST_F(VolumeTest, LookUpByNameOrWwn)
{
    const api_VVObj_t r = volume("vol2");
    EXPECT_EQ(r.type, API_VV_TYPE_BASE);
    EXPECT_STREQ(r.usrCpgName, "FC_r5");
    EXPECT_STREQ(r.cpgName, "FC_r1");
    EXPECT_STREQ(r.domain, "dom1");
    // The WWN text agrees with the numbers (its place in the record is fixed
    // by the layout test).
    char wwn[33];
    api_wwnIntToString(r.wwn_re, r.wwn, wwn, sizeof wwn);
    EXPECT_STREQ(wwn, r.wwnText);

    std::string lower = r.wwnText;
    for (char& c : lower)
        c = static_cast<char>(tolower(c));
    Query byWwn = getVVs(nullptr, lower.c_str());
    EXPECT_EQ(byWwn.rc, 0);
    EXPECT_EQ(byWwn.names, std::vector<std::string>{"vol2"});

    // The types, read-only flags, sources and system policy of the test
    // array's volumes are read through the volume and copy providers.
    EXPECT_EQ(volume("vol1").snapCount, 2u);

    // A name that does not exist answers non-zero: callers search free names this way.
    EXPECT_NE(getVVs("vol1.rw0").rc, 0);
    EXPECT_EQ(getVVs(nullptr, "60002D1A0013D621FFFFFFFFFFFFFFFF").rc, API_E_NOT_FOUND);
    EXPECT_EQ(getVVs(nullptr, nullptr, 0).names.size(), 9u) << "no name and no WWN: all volumes";
    EXPECT_EQ(getVVs(nullptr, nullptr, 4).names.size(), 4u);
}

TEST_F(VolumeTest, ChunkedQueriesByNameAndWwn)
{
    // Names in the filter's order; unknown names and repeats are skipped.
    Query q = chunked({{API_VVFILTER_ATTR_NAME, "vol4|nosuch|vol1|vol4|vol2.clone"}});
    EXPECT_EQ(q.rc, 0);
    EXPECT_EQ(q.names, (std::vector<std::string>{"vol4", "vol1", "vol2.clone"}));

    // By WWN, as callers resolve paths to names.
    const std::string w1 = volume("vol1").wwnText;
    const std::string w3 = volume("vol3").wwnText;
    q = chunked({{API_VVFILTER_ATTR_WWN, w3 + "|" + w1 + "|"}});
    EXPECT_EQ(q.names, (std::vector<std::string>{"vol3", "vol1"}));

    // Two attributes narrow: names that also match the WWNs.
    q = chunked({{API_VVFILTER_ATTR_NAME, "vol1|vol2|vol3"}, {API_VVFILTER_ATTR_WWN, w3}});
    EXPECT_EQ(q.names, std::vector<std::string>{"vol3"});

    // Nothing matches: success with an empty answer.
    q = chunked({{API_VVFILTER_ATTR_NAME, "a|b|c"}});
    EXPECT_EQ(q.rc, 0);
    EXPECT_TRUE(q.names.empty());

    // Paging: small chunks give the same answer as one.
    EXPECT_EQ(chunked({}, 2, 0).names, chunked({}, 0, 1).names);
    EXPECT_EQ(chunked({}, 2, 0).names.size(), 9u);
    EXPECT_EQ(chunked({{API_VVFILTER_ATTR_NAME, "vol1|vol2|vol3|vol4|vol5"}}, 2, 0).names.size(), 5u);

    EXPECT_THAT(lastJournalOf("api_getVVs_chunk"), HasSubstr("names=\"vol1|vol2|vol3|vol4|vol5\""));
}

TEST_F(VolumeTest, FilterRefusesWhatItCannotHold)
{
    _api_getvv_filter_t f;
    ASSERT_EQ(api_getvv_filter_init(&f, 1), 0);
    const std::string full(255, 'a');
    EXPECT_NE(api_getvv_filter_add(&f, API_VVFILTER_ATTR_NAME, 1, (full + "a").c_str()), 0)
        << "256 characters";
    EXPECT_NE(api_getvv_filter_add(&f, 9, 1, "vol1"), 0) << "unknown attribute";
    EXPECT_EQ(api_getvv_filter_add(&f, API_VVFILTER_ATTR_NAME, 1, full.c_str()), 0);
    EXPECT_NE(api_getvv_filter_add(&f, API_VVFILTER_ATTR_NAME, 1, "vol1"), 0) << "full";
    api_getvv_filter_free(&f);
    EXPECT_NE(api_getvv_filter_init(&f, 0), 0);
    api_getvv_filter_free(&f);

    zdasim_fault_add("api_getvv_filter_init", 1, 12, "");
    EXPECT_EQ(api_getvv_filter_init(&f, 2), 12);
    api_getvv_filter_free(&f);
    zdasim_fault_add("api_getVVs_chunk", 1, 4, "");
    Query q = chunked({{API_VVFILTER_ATTR_NAME, "vol1"}});
    EXPECT_EQ(q.rc, 4);
    EXPECT_TRUE(q.names.empty());
}

TEST_F(VolumeTest, RemovalAnswers)
{
    api_evtparam_t e = event("return");
    auto remove = [&](std::vector<std::string> list, int flags = 0) {
        auto n = names(list);
        return api_removeVVs(&e, n.data(), static_cast<int>(n.size()), 0, flags);
    };
    auto exists = [](const char* name) { return getVVs(name).rc == 0; };

    // Busy: nothing goes until the volume is free; each attempt counts.
    ASSERT_EQ(zdasim_volume_set_busy("vol3", 2), 0);
    EXPECT_EQ(remove({"vol3", "vol5"}), API_E_BUSY);
    EXPECT_EQ(remove({"vol3", "vol5"}), API_E_BUSY);
    EXPECT_TRUE(exists("vol5"));
    EXPECT_EQ(remove({"vol3", "vol5"}), 0);
    EXPECT_FALSE(exists("vol3"));
    EXPECT_FALSE(exists("vol5"));

    // Partial: one of two does not exist.
    EXPECT_EQ(remove({"vol4", "ghost"}), API_E_PARTIAL_REMOVE);
    EXPECT_FALSE(exists("vol4"));
    EXPECT_EQ(remove({"ghost"}), API_E_NOT_FOUND);

    // A volume with copies stays unless its copies go too.
    EXPECT_EQ(remove({"vol1"}), API_E_IN_USE);
    EXPECT_EQ(remove({"vol1", "vol1.rw"}), API_E_PARTIAL_REMOVE) << "vol1.ro is left";
    EXPECT_TRUE(exists("vol1"));
    EXPECT_FALSE(exists("vol1.rw"));
    EXPECT_EQ(remove({"vol1"}, API_REMOVEVV_WITH_COPIES), 0);
    EXPECT_FALSE(exists("vol1.ro"));
    EXPECT_EQ(remove({"admvv"}), API_E_ACCESS);

    EXPECT_EQ(listSets("set1")["set1"].members, Names{"vol2"}) << "removed volumes leave their vvsets";

    // Each attempt, refused ones too, is journaled with its names and kept in
    // the event log (the record's fields are read by the module's removal tests).
    EXPECT_EQ(zdasim_journal_count_of("api_removeVVs"), 9u);
    ASSERT_EQ(zdasim_event_count(), 9u);
    api_evtparam_t got;
    char call[64];
    int result = 0;
    ASSERT_EQ(zdasim_event_get(0, &got, call, sizeof call, &result), 0);
    EXPECT_EQ(result, API_E_BUSY);
    EXPECT_THAT(lastJournalOf("api_removeVVs"), HasSubstr("names=\"admvv\""));
}

TEST_F(VolumeTest, GroupSnapshotMakesAllAtOnceAndFillsWwns)
{
    zdasim_clock_set(kT0 + 500);
    api_groupsv_t req = snapshotRequest(7200, 3600, "nightly");
    std::vector<api_groupsv_entry_t> svs;
    api_Status_t st = groupSnapshot({{"vol1", "rel_1"}, {"vol4", "rel_2"}}, req, &svs);
    ASSERT_EQ(st.code, 0) << text(st);
    for (const api_groupsv_entry_t& sv : svs)
    {
        const api_VVObj_t c = volume(sv.childVolName);
        EXPECT_STREQ(sv.childVolWWN, c.wwnText);
        EXPECT_STREQ(sv.parentVolWWN, volume(sv.parentVolName).wwnText);
        EXPECT_EQ(c.type, API_VV_TYPE_VIRTUAL_COPY);
        EXPECT_STREQ(c.copyOfName, sv.parentVolName);
        EXPECT_EQ(c.creationTime, kT0 + 500);
        EXPECT_EQ(c.expirationTime, kT0 + 500 + 7200);
        EXPECT_EQ(c.retentionTime, kT0 + 500 + 3600);
        EXPECT_STREQ(c.comment, "nightly");
        EXPECT_EQ(c.readOnly, 0);
    }

    // All or nothing: a bad entry makes no snapshot at all.
    const std::tuple<const char*, const char*, int, const char*> bad[] = {
        {"ghost", "x_1", API_E_NOT_FOUND, "ghost"},
        {"vol3", "x_1", API_E_INVALID, "vol3 has no snapshot space"},
        {"vol2", "rel_1", API_E_EXISTS, "rel_1 already exists"},
        {"vol2", "", API_E_INVALID, "empty"},
    };
    for (const auto& [parent, child, code, words] : bad)
    {
        st = groupSnapshot({{"vol2", "fresh_1"}, {parent, child}}, req);
        EXPECT_EQ(st.code, code) << parent << " " << child;
        EXPECT_THAT(text(st), HasSubstr(words));
        EXPECT_NE(getVVs("fresh_1").rc, 0) << "nothing was made";
    }
    req.retentionTime = 9000;  // longer than expiration
    EXPECT_EQ(groupSnapshot({{"vol2", "fresh_1"}, {"vol2", "fresh_2"}}, req).code, API_E_INVALID);

    // A chosen id for the first snapshot; ids in use are refused.
    req.retentionTime = 0;
    req.baseID = 500;
    ASSERT_EQ(groupSnapshot({{"vol2", "fresh_1"}, {"vol2", "fresh_2"}}, req).code, 0);
    EXPECT_EQ(volume("fresh_1").id, 500u);
    EXPECT_EQ(volume("fresh_2").id, 501u);
    EXPECT_EQ(groupSnapshot({{"vol2", "again_1"}, {"vol2", "again_2"}}, req).code, API_E_EXISTS);
    EXPECT_THAT(lastJournalOf("api_createGroupSV"),
        AllOf(HasSubstr("svs=\"vol2>again_1|vol2>again_2\""), HasSubstr("evt.op=\"test\"")));
}

TEST_F(VolumeTest, CpgsWithDomainsAndUse)
{
    int count = 0;
    api_cpg_t* cpgs = nullptr;
    ASSERT_EQ(api_getCPGs(&count, &cpgs), 0);
    std::map<std::string, api_cpg_t> byName;
    for (int i = 0; i < count; ++i)
        byName[cpgs[i].name] = cpgs[i];
    free_if_not_null(cpgs);
    ASSERT_EQ(byName.size(), 4u);
    EXPECT_STREQ(byName["FC_r5"].domain, "dom1");
    EXPECT_STREQ(byName["NL_r6"].domain, "dom2");
    EXPECT_STREQ(byName["SSD_r1"].domain, "");
    EXPECT_EQ(byName["FC_r5"].volumeCount, 6) << "vol1, vol2, vol3 and their three copies";
    EXPECT_EQ(byName["FC_r5"].usedMiB, 10240u + 20480u + 5120u + 20480u)
        << "copies' user space; snapshots use none";
}
