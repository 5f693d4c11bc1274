// Audit event records and conversions: times in zones behind and ahead of
// UTC, instance IDs and generated names.
#include "common_sim_fixture.h"

#include <cstdlib>
#include <cstring>
#include <set>
#include <tuple>

#include <Pegasus/Common/Exception.h>

using namespace Pegasus;
using namespace zda_common_test;

namespace
{

class EventParamTest : public CommonSimTest
{};

TEST_F(EventParamTest, FieldsAreFilledAndCutToTheirSizes)
{
    api_evtparam_t ev{};
    ZDA_Common::setEventParam(&ev, "ZDA_ReplicationServiceProvider", "CreateElementReplica", "create",
        "admin", "192.0.2.99", "vol1 -> vol1.snap");
    EXPECT_STREQ(ev.method, "ZDA_ReplicationServiceProvider:CreateElementReplica");
    EXPECT_STREQ(ev.inst_op, "create");
    EXPECT_STREQ(ev.user, "admin");
    EXPECT_STREQ(ev.addr, "192.0.2.99");
    EXPECT_STREQ(ev.inst_param, "vol1 -> vol1.snap");

    // 100 + 1 + 100 characters leave the method cut to the field and terminated.
    const std::string cls(100, 'c'), method(100, 'm'), longText(300, 't');
    api_evtparam_t cut;
    std::memset(&cut, 'x', sizeof cut);
    ZDA_Common::setEventParam(&cut, cls.c_str(), method.c_str(), std::string(40, 'o').c_str(),
        std::string(40, 'u').c_str(), std::string(60, 'a').c_str(), longText.c_str());
    EXPECT_EQ(std::string(cut.method), cls + ":" + std::string(26, 'm'));
    EXPECT_EQ(std::strlen(cut.inst_op), sizeof cut.inst_op - 1);
    EXPECT_EQ(std::strlen(cut.user), sizeof cut.user - 1);
    EXPECT_EQ(std::strlen(cut.addr), sizeof cut.addr - 1);
    EXPECT_EQ(std::string(cut.inst_param), std::string(255, 't'));

    // A class name longer than the field still leaves room for the colon.
    ZDA_Common::setEventParam(&cut, std::string(200, 'c').c_str(), "M", nullptr, nullptr, nullptr);
    EXPECT_EQ(std::string(cut.method), std::string(126, 'c') + ":");

    // Without a class the method starts with a colon; null texts leave fields alone.
    api_evtparam_t noClass{};
    std::strcpy(noClass.user, "kept");
    ZDA_Common::setEventParam(&noClass, nullptr, "AddMembers", nullptr, nullptr, nullptr);
    EXPECT_STREQ(noClass.method, ":AddMembers");
    EXPECT_STREQ(noClass.user, "kept");

    ZDA_Common::setEventOp(&noClass, "add members to set1");
    EXPECT_STREQ(noClass.inst_op, "add members to ");
    for (const auto& line : logLines())
        EXPECT_NE(line.first, 2) << line.second;
}

TEST_F(EventParamTest, NullRecordIsLoggedAndNothingElseHappens)
{
    ZDA_Common::setEventParam(nullptr, "C", "M", "op", "u", "a");
    ZDA_Common::setEventParam(nullptr, "C", "M", "op", "u", "a", "text");
    ZDA_Common::setEventOp(nullptr, "op");
    EXPECT_TRUE(
        logged(2, "setEventParam: Unable to log event data. The control block pointer (eventp) is null."));
    EXPECT_TRUE(
        logged(2, "setEventOp: Unable to log event data. The control block pointer (eventp) is null."));
}

// Runs the test body in a time zone and restores the one before.
class TimeZoneTest : public CommonSimTest
{
protected:
    void TearDown() override
    {
        if (hadTz_)
            setenv("TZ", savedTz_.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
        CommonSimTest::TearDown();
    }
    static void zone(const char* tz)
    {
        setenv("TZ", tz, 1);
        tzset();
    }

private:
    const bool hadTz_ = std::getenv("TZ") != nullptr;
    const std::string savedTz_ = hadTz_ ? std::getenv("TZ") : "";
};

TEST_F(TimeZoneTest, DateTimeTextCarriesTheZonesOffsetAndReadsBack)
{
    // The zone, the text of the time in it and the zone's name.
    const std::tuple<const char*, const char*, const char*> zones[] = {
        {"EST5", "20251231190000.000000-300", "GMT-300"},      // five hours behind UTC
        {"IST-5:30", "20260101053000.000000+330", "GMT+330"},  // five and a half ahead
        {"UTC0", "20260101000000.000000+000", "GMT-0"},
    };
    for (const auto& [tz, dateTime, zoneName] : zones)
    {
        zone(tz);
        const CIMDateTime dt = ZDA_Common::getCIMDateTime(kT0);
        EXPECT_EQ(text(dt.toString()), dateTime) << tz;
        EXPECT_EQ(ZDA_Common::getDateTime(dt), kT0) << tz;
        EXPECT_EQ(text(ZDA_Common::getTimeZone()), zoneName) << tz;
    }
}

TEST_F(TimeZoneTest, DatesWithoutATimeReadAsZero)
{
    zone("UTC0");
    EXPECT_EQ(ZDA_Common::getDateTime(CIMDateTime("00000001020304.000000:000")), 0);  // an interval
    EXPECT_EQ(ZDA_Common::getDateTime(CIMDateTime("18991231235959.000000+000")), 0);  // before 1900
    EXPECT_EQ(ZDA_Common::getDateTime(CIMDateTime()), 0);                             // unset

    tm fields{};
    EXPECT_EQ(
        ZDA_Common::_formatDateTime("20261301000000.000000+000", &fields), 1);  // no upper bound on the month
    EXPECT_EQ(fields.tm_mon, 12);
    EXPECT_EQ(ZDA_Common::_formatDateTime("20260001000000.000000+000", &fields), -1);
    EXPECT_EQ(ZDA_Common::_formatDateTime("-123", &fields), -1);
    EXPECT_EQ(ZDA_Common::_formatDateTime("20260315123456.000000+000", &fields), 1);
    EXPECT_EQ((std::vector<int>{fields.tm_year, fields.tm_mon, fields.tm_mday, fields.tm_hour, fields.tm_min,
                  fields.tm_sec, fields.tm_isdst}),
        (std::vector<int>{126, 2, 15, 12, 34, 56, -1}));
}

class ConversionTest : public CommonSimTest
{};

TEST_F(ConversionTest, InstanceIDsGiveWhatFollowsThePrefix)
{
    EXPECT_EQ(text(ZDA_Common::extractFromInstanceID("KX_ORLA:rcg1:target2")), "rcg1:target2");
    EXPECT_EQ(text(ZDA_Common::extractFromInstanceID("KX_ORLA:set1")), "set1");
    EXPECT_EQ(text(ZDA_Common::extractFromInstanceID("ZDA:KX_ORLA:set1")), "set1");
    EXPECT_EQ(text(ZDA_Common::extractFromInstanceID("set1")), "");
    EXPECT_EQ(text(ZDA_Common::extractFromInstanceID("kx_orla:set1")), "");
}

TEST_F(ConversionTest, RandomStringsHaveLenMinusOneCharactersOfTheAlphabet)
{
    char buf[64];
    std::memset(buf, 'x', sizeof buf);
    ZDA_Common::generate_random_string(buf, 1);
    EXPECT_STREQ(buf, "");
    std::set<std::string> seen;
    for (int i = 0; i < 20; ++i)
    {
        std::memset(buf, 'x', sizeof buf);
        ZDA_Common::generate_random_string(buf, 17);
        ASSERT_EQ(std::strlen(buf), 16u);
        EXPECT_EQ(std::strspn(buf, "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_"), 16u)
            << buf;
        seen.insert(buf);
    }
    EXPECT_EQ(seen.size(), 20u);
}

TEST_F(ConversionTest, RandomStringStopsTheProcessOnBadArguments)
{
    char buf[4];
    EXPECT_DEATH(ZDA_Common::generate_random_string(buf, 0), "");
    EXPECT_DEATH(ZDA_Common::generate_random_string(nullptr, 8), "");
}

}  // namespace
