// Status records, logging, helpers and fault injection basics.
#include <cstdio>
#include <cstdlib>
#include <tuple>

#include "sim_fixture.h"

using namespace zdatest;

using BaseTest = ArrayTest;

TEST_F(BaseTest, StatusTextsComeBackWithoutNewlinesAndCut)
{
    api_Status_t st;
    api_initStatus(&st);
    EXPECT_EQ(st.code, 0);
    EXPECT_EQ(text(st), "");
    const std::tuple<int, const char*, int, const char*> cases[] = {
        {29, "Semaphore Timed-Out", 512, "Semaphore Timed-Out"},
        {78, "The rcopy group g1 is not found\n", 512, "The rcopy group g1 is not found"},
        {78, "two newlines\n\n", 512, "two newlines"}, {5, "abcdefgh", 5, "abcd"},
        {4, nullptr, 512, "Array error 4"},  // code without text of its own
    };
    for (const auto& [code, in, size, out] : cases)
    {
        errinfo_set_str(&st, code, in);
        EXPECT_EQ(st.code, code);
        char buf[512];
        EXPECT_STREQ(api_getErrorTextNoNL(buf, size, &st), out);
    }
    // A caller that stores a code directly gets a text that names it.
    api_initStatus(&st);
    st.code = 32768;
    EXPECT_EQ(text(st), "Array error 32768");
}

TEST_F(BaseTest, LogMessageHonoursThresholdAndIsCaptured)
{
    const std::string path = tempPath("log");
    ASSERT_EQ(zdasim_log_to_file(path.c_str()), 0);
    zdasim_log_set_threshold(LOG_LEVEL_WARNING);
    log_message(LOG_LEVEL_ERROR, "error %d\n", 1);
    log_message(LOG_LEVEL_WARNING, "warning %s", "two");
    log_message(LOG_LEVEL_TRACE, "--> trace");
    zdasim_log_to_file(nullptr);

    EXPECT_EQ(fileText(path), "error 1\nwarning two\n");
    std::remove(path.c_str());

    ASSERT_EQ(zdasim_log_count(), 3u);  // capture keeps every level
    int level = 0;
    char line[256];
    ASSERT_EQ(zdasim_log_line(2, &level, line, sizeof line), 0);
    EXPECT_EQ(level, LOG_LEVEL_TRACE);
    EXPECT_STREQ(line, "--> trace");
    EXPECT_EQ(zdasim_log_line(3, &level, line, sizeof line), -1);

    // A line longer than any fixed buffer arrives whole.
    std::string longText(3000, 'x');
    log_message(LOG_LEVEL_ERROR, "%s", longText.c_str());
    std::vector<char> big(4000);
    ASSERT_EQ(zdasim_log_line(3, &level, big.data(), big.size()), 0);
    EXPECT_EQ(std::string(big.data()), longText);
}

TEST_F(BaseTest, ValidateConvertIP)
{
    const std::tuple<const char*, int, const char*> cases[] = {
        {"2001:DB8:0:0:0:0:0:1", 10, "2001:db8::1"},
        {"::1", 10, "::1"},
        {"192.0.2.1", 2, "192.0.2.1"},
        {"300.1.1.1", -1, ""},
        {"not an address", -1, ""},
        {"", -1, ""},
    };
    for (const auto& [in, family, normal] : cases)
    {
        char buf[46] = "";
        EXPECT_EQ(validateConvertIP(in, buf, sizeof buf), family) << in;
        if (family > 0)
        {
            EXPECT_STREQ(buf, normal);
        }
    }
}

TEST_F(BaseTest, WwnTextsRoundTrip)
{
    const std::tuple<api_u64_t, api_u64_t, const char*> cases[] = {
        {0, 0x50002ACFF7000001ull, "50002ACFF7000001"},
        {0x60002D1A0013D621ull, 0x2000000000000001ull, "60002D1A0013D6212000000000000001"},
    };
    for (const auto& [wantRe, wantLo, txt] : cases)
    {
        char buf[33];
        ASSERT_EQ(api_wwnIntToString(wantRe, wantLo, buf, sizeof buf), 0);
        EXPECT_STREQ(buf, txt);
        api_u64_t re = 1, lo = 1;
        ASSERT_EQ(api_wwnStringToInt(txt, &re, &lo), 0);
        EXPECT_EQ(re, wantRe);
        EXPECT_EQ(lo, wantLo);
    }
    api_u64_t re = 0, lo = 0;
    EXPECT_EQ(api_wwnStringToInt("60002d1a0013d6212000000000000001", &re, &lo), 0)
        << "lower case is read too";
    EXPECT_EQ(re, 0x60002D1A0013D621ull);
    for (const char* bad : {"", "XYZ", "50002ACFF700000", "50002ACFF7000001AB", "G0002ACFF7000001"})
    {
        re = lo = 7;
        EXPECT_NE(api_wwnStringToInt(bad, &re, &lo), 0) << bad;
        EXPECT_EQ(re, 0u);
        EXPECT_EQ(lo, 0u);
    }
    char small[16];
    EXPECT_NE(api_wwnIntToString(0, 1, small, sizeof small), 0) << "16 digits need 17 bytes";
}

TEST_F(BaseTest, FreeIfNotNullTakesLibraryAndOwnMemory)
{
    free_if_not_null(nullptr);
    free_if_not_null(std::malloc(10));  // memory of the caller's own
    ASSERT_EQ(zdasim_clone_start("vol1", "c1", 10, -1, nullptr), 0);
    int count = 0;
    api_VVObj_t* vvs = nullptr;
    api_task_t* taskList = nullptr;
    ASSERT_EQ(api_getVVs("vol1", nullptr, &count, &vvs, 1), 0);
    ASSERT_EQ(api_getTasks(&count, &taskList), 0);
    EXPECT_EQ(zdasim_ledger_outstanding("vv_list"), 1);
    EXPECT_EQ(zdasim_ledger_outstanding("task_list"), 1);
    free_if_not_null(vvs);
    free_if_not_null(taskList);
    EXPECT_EQ(zdasim_ledger_outstanding(nullptr), 0);
    zdasim_fault_add("api_getTasks", 1, 5, "injected");
    EXPECT_EQ(api_getTasks(&count, &taskList), 5);
    EXPECT_EQ(taskList, nullptr);
}

TEST_F(BaseTest, ReleasingTwiceIsCounted)
{
    api_sets_t list{};
    ASSERT_EQ(api_getVVSets("set1", nullptr, 0, &list).code, 0);
    api_sets_t copy = list;
    api_freeSets(&list);
    api_freeSets(&list);  // cleared by the first release: fine
    EXPECT_EQ(zdasim_ledger_bad_releases(), 0);
    api_freeSets(&copy);  // the same memory again
    EXPECT_EQ(zdasim_ledger_bad_releases(), 1);
    zdasim_clear_records();
}

TEST_F(BaseTest, InjectedFaultsHitTheNamedCallOnlyAndRunOut)
{
    zdasim_fault_add("api_getVVs", 2, 4, "injected failure");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(getVVs("vol1").rc, 4);  // answering nothing, as getVVs checks
    EXPECT_EQ(listSets("set1").size(), 1u) << "another call is not affected";
    EXPECT_EQ(getVVs("vol1").rc, 0) << "the fault ran out";
    EXPECT_THAT(lastJournalOf("api_getVVs"), HasSubstr("-> 0"));
    EXPECT_EQ(zdasim_journal_count_of("api_getVVs"), 3u);

    zdasim_fault_add("api_removeVVSet", -1, 68, "VV set is in use");
    api_evtparam_t e = event("remove");
    for (int i = 0; i < 3; ++i)
    {
        api_Status_t st = api_removeVVSet(&e, "set1");
        EXPECT_EQ(st.code, 68);
        EXPECT_EQ(text(st), "VV set is in use");
    }
    zdasim_faults_clear();
    EXPECT_EQ(api_removeVVSet(&e, "set1").code, 0);
}

// The stepped clock is what every copy and task test runs on.
TEST_F(BaseTest, ClockCanFollowTheRealTimeAgain)
{
    zdasim_clock_use_real();
    EXPECT_GT(zdasim_clock_now(), kT0 - 86400 * 365 * 10);
    EXPECT_LE(std::labs(zdasim_clock_now() - time(nullptr)), 2);
    zdasim_clock_set(kT0);
}

TEST(BaseDeathTest, PanicStopsTheProcess)
{
    EXPECT_DEATH(zda_panic("Assertion point: file: %s, line: %d\n", "x.cpp", 7),
        "Assertion point: file: x.cpp, line: 7");
}
