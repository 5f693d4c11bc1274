// CIMDateTime text forms, range checks and arithmetic.
#include <gtest/gtest.h>

#define PEGASUS_USE_EXPERIMENTAL_INTERFACES

#include <Pegasus/Common/CIMDateTime.h>

#include "sdk_fixtures.h"

using namespace Pegasus;
using sdktest::messageOf;

namespace
{

TEST(CIMDateTimeTest, ValidTextsRoundTrip)
{
    struct Case
    {
        const char* text;
        bool interval;
    };
    const Case cases[] = {
        {"20200131235959.999999-300", false},  // five hours behind UTC
        {"20200229120000.000000+330", false},  // leap day, positive offset
        {"00000101000000.000000+000", false},  // year 0000 is a time stamp
        {"99991231235959.999999+999", false},
        {"00000000000500.000000:000", true},
        {"99999999235959.999999:000", true},
        {"2020013123****.******+000", false},  // wildcards from a field on
        {"20200131235959.12****-060", false},  // ... or inside the microseconds
        {"**************.******:000", true},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.text);
        CIMDateTime dt{String(c.text)};
        EXPECT_EQ(dt.toString(), c.text);
        EXPECT_EQ(dt.isInterval(), c.interval);
    }
}

TEST(CIMDateTimeTest, NegativeZeroOffsetIsStoredAsPositive)
{
    EXPECT_EQ(CIMDateTime(String("20200101000000.000000-000")).toString(), "20200101000000.000000+000");
}

TEST(CIMDateTimeTest, FormatErrors)
{
    const char* bad[] = {
        "",
        "20200101000000.000000+00",    // 24 characters
        "20200101000000.000000+0000",  // 26 characters
        "20200101000000,000000+000",   // no '.'
        "20200101000000.000000*000",   // bad sign character
        "2020010100000a.000000+000",   // non-digit
        "00000000000500.000000:001",   // interval must end in 000
        "20200101000000.000000+0*0",   // wildcard in the offset
        "2020*101000000.000000+000",   // wildcard not at a field start
        "202001010000*0.000000+000",   // digit after a wildcard
    };
    for (const char* text : bad)
    {
        SCOPED_TRACE(text);
        EXPECT_THROW(CIMDateTime dt{String(text)}, InvalidDateTimeFormatException);
    }
}

TEST(CIMDateTimeTest, OutOfRangeFields)
{
    struct Case
    {
        const char* text;
        const char* message;
    };
    const Case cases[] = {
        {"20200001000000.000000+000", "DateTime is out of range : illegal month number"},
        {"20201301000000.000000+000", "DateTime is out of range : illegal month number"},
        {"20210229000000.000000+000", "DateTime is out of range : illegal day number"},
        {"20200431000000.000000+000", "DateTime is out of range : illegal day number"},
        {"20200100000000.000000+000", "DateTime is out of range : illegal day number"},
        {"20200101240000.000000+000", "DateTime is out of range : illegal hours number"},
        {"20200101006000.000000+000", "DateTime is out of range : illegal minutes number"},
        {"20200101000060.000000+000", "DateTime is out of range : illegal seconds number"},
        {"00000001240000.000000:000", "DateTime is out of range : illegal hours number"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.text);
        CIMDateTime dt{String("20200101000000.000000+000")};
        EXPECT_EQ(messageOf<DateTimeOutOfRangeException>([&] { dt.set(c.text); }), c.message);
        // set() clears first: after a failure the value is the zero interval.
        EXPECT_EQ(dt.toString(), "00000000000000.000000:000");
    }
}

TEST(CIMDateTimeTest, FromMicroseconds)
{
    EXPECT_EQ(CIMDateTime(300000000ULL, true).toString(), "00000000000500.000000:000");
    EXPECT_EQ(CIMDateTime(0ULL, false).toString(), "00000101000000.000000+000");
    // 0000 is a leap year in the proleptic calendar: day 59 is Feb 29.
    EXPECT_EQ(CIMDateTime(59ULL * 86400000000ULL + 1, false).toString(), "00000229000000.000001+000");
    CIMDateTime last(String("99991231235959.999999+000"));
    EXPECT_EQ(CIMDateTime(last.toMicroSeconds(), false).toString(), "99991231235959.999999+000");
    EXPECT_THROW(CIMDateTime(last.toMicroSeconds() + 1, false), DateTimeOutOfRangeException);
    EXPECT_THROW(CIMDateTime(100000000ULL * 86400000000ULL, true), DateTimeOutOfRangeException);
    EXPECT_NO_THROW(CIMDateTime(100000000ULL * 86400000000ULL - 1, true));
}

TEST(CIMDateTimeTest, ComparisonUsesUtc)
{
    CIMDateTime east(String("20200101060000.000000+360"));
    CIMDateTime utc(String("20200101000000.000000+000"));
    CIMDateTime west(String("20191231190000.000000-300"));
    EXPECT_TRUE(east == utc);
    EXPECT_TRUE(west == utc);
    EXPECT_EQ(east.toMicroSeconds(), utc.toMicroSeconds());
    EXPECT_EQ(CIMDateTime::getDifference(utc, CIMDateTime(String("20200101000001.000000+000"))), 1000000);
    EXPECT_THROW(CIMDateTime::getDifference(utc, CIMDateTime()), InvalidDateTimeFormatException);
    EXPECT_THROW((void)(utc < CIMDateTime()), TypeMismatchException);
}

TEST(CIMDateTimeTest, Arithmetic)
{
    CIMDateTime start(String("20201231235959.500000-060"));
    CIMDateTime step(String("00000000000000.500000:000"));
    EXPECT_EQ((start + step).toString(), "20210101000000.000000-060");
    EXPECT_EQ((start - step).toString(), "20201231235959.000000-060");
    EXPECT_EQ((step * 4).toString(), "00000000000002.000000:000");
    EXPECT_EQ(CIMDateTime(String("00000001000000.000000:000")) / step, 172800ULL);
    EXPECT_EQ(
        (CIMDateTime(String("20210101000000.000000+000")) - CIMDateTime(String("20201231000000.000000+000")))
            .toString(),
        "00000001000000.000000:000");
    EXPECT_THROW(start + start, TypeMismatchException);
    EXPECT_THROW(step - start, TypeMismatchException);
    EXPECT_THROW(start * 2, TypeMismatchException);
    EXPECT_THROW(step - (step * 2), DateTimeOutOfRangeException);
    EXPECT_THROW(CIMDateTime(String("99991231235959.999999+000")) + step, DateTimeOutOfRangeException);
}

TEST(CIMDateTimeTest, FieldConstructors)
{
    EXPECT_EQ(CIMDateTime(2021, 2, 28, 23, 5, 9, 123456, 6, -90).toString(), "20210228230509.123456-090");
    EXPECT_EQ(CIMDateTime(2021, 2, 28, 23, 5, 9, 123456, 2, 0).toString(), "20210228230509.12****+000");
    EXPECT_EQ(CIMDateTime(2021, 2, CIMDateTime::WILDCARD, 1, 1, 1, 0, 6, 60).toString(),
        "202102********.******+060");
    EXPECT_EQ(CIMDateTime(3, 4, 5, 6, 7, 6).toString(), "00000003040506.000007:000");
    EXPECT_TRUE(CIMDateTime(3, 4, 5, 6, 7, 6).isInterval());
    EXPECT_TRUE(CIMDateTime(2021, 1, 1, 0, 0, 0, 0, 6, 0).isTimeStamp());
    EXPECT_THROW(CIMDateTime(2021, 2, 29, 0, 0, 0, 0, 6, 0), DateTimeOutOfRangeException);
    EXPECT_THROW(CIMDateTime(2021, 1, 1, 0, 0, 0, 0, 6, 1000), DateTimeOutOfRangeException);
    EXPECT_THROW(CIMDateTime(12345, 1, 1, 0, 0, 0, 0, 6, 0), DateTimeOutOfRangeException);
}

TEST(CIMDateTimeTest, CurrentTimeIsATimeStamp)
{
    CIMDateTime now = CIMDateTime::getCurrentDateTime();
    EXPECT_FALSE(now.isInterval());
    String text = now.toString();
    EXPECT_EQ(text.size(), 25u);
    EXPECT_TRUE(text[21] == '+' || text[21] == '-');
    EXPECT_NO_THROW(CIMDateTime{text});
}

}  // namespace
