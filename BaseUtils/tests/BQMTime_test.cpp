#include "BQMTime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

namespace {

// Pins the process's time zone for local-time conversions and restores it.
class ScopedTimeZone {
  public:
    explicit ScopedTimeZone(const char* zone) {
        const char* old = std::getenv("TZ");
        mHadOld = old != nullptr;
        if (mHadOld) mOld = old;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~ScopedTimeZone() {
        if (mHadOld) {
            setenv("TZ", mOld.c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }

  private:
    bool mHadOld;
    std::string mOld;
};

struct FormatCase {
    unsigned long long seconds;
    const char* date;
    const char* time;
};

class BQMTimeFormatTest : public ::testing::TestWithParam<FormatCase> {};

TEST_P(BQMTimeFormatTest, RendersDateWithIsoWeekYearAndTwelveHourTime) {
    const BQMTime value(GetParam().seconds);
    BQMString date, time;
    ASSERT_TRUE(value.DateToString(date, false));
    ASSERT_TRUE(value.TimeToString(time, false));
    EXPECT_EQ(date.GetUTF8String(), GetParam().date);
    EXPECT_EQ(time.GetUTF8String(), GetParam().time);
}

INSTANTIATE_TEST_SUITE_P(Cases, BQMTimeFormatTest,
                         ::testing::Values(
                             // 1 January 2021 belongs to the last ISO week of 2020.
                             FormatCase{1609459200ULL, "Friday, January 01, 2020", "12:00AM"},
                             // 30 December 2024 belongs to the first ISO week of 2025.
                             FormatCase{1735563959ULL, "Monday, December 30, 2025", "01:05PM"},
                             FormatCase{1686832200ULL, "Thursday, June 15, 2023", "12:30PM"},
                             FormatCase{1686787620ULL, "Thursday, June 15, 2023", "12:07AM"}));

TEST(BQMTimeTest, LocalRenderingFollowsTheTimeZone) {
    ScopedTimeZone zone("UTC");
    BQMString time;
    ASSERT_TRUE(BQMTime(1735563959ULL).TimeToString(time));
    EXPECT_EQ(time.GetUTF8String(), "01:05PM");
}

TEST(BQMTimeTest, UnsetTimeRendersNothing) {
    const BQMTime unset;
    EXPECT_FALSE(unset.IsValid());
    BQMString text("stale", BQMString::BQM_ENCODING_UTF8);
    EXPECT_FALSE(unset.DateToString(text));
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_FALSE(unset.TimeToString(text));
    int y, mo, d, h, mi, s;
    EXPECT_FALSE(unset.GetTime(y, mo, d, h, mi, s));
}

TEST(BQMTimeTest, SetTimeBuildsLocalTimeAndGetTimeSplitsIt) {
    ScopedTimeZone zone("UTC");
    BQMTime value;
    ASSERT_TRUE(value.SetTime(2024, 12, 30, 13, 5, 59));
    EXPECT_TRUE(value.IsValid());
    EXPECT_EQ(value.GetValue(), 1735563959ULL);
    int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
    ASSERT_TRUE(value.GetTime(y, mo, d, h, mi, s));
    EXPECT_EQ(y, 2024);
    EXPECT_EQ(mo, 12);
    EXPECT_EQ(d, 30);
    EXPECT_EQ(h, 13);
    EXPECT_EQ(mi, 5);
    EXPECT_EQ(s, 59);
}

TEST(BQMTimeTest, SetTimeRoundTripsInAnotherZone) {
    ScopedTimeZone zone("America/New_York");
    BQMTime value;
    ASSERT_TRUE(value.SetTime(2023, 6, 15, 8, 30, 0));
    int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
    ASSERT_TRUE(value.GetTime(y, mo, d, h, mi, s));
    EXPECT_EQ(y * 10000 + mo * 100 + d, 20230615);
    EXPECT_EQ(h * 100 + mi, 830);
}

struct BadPartsCase {
    int year, month, day, hour, minute, second;
};

class BQMTimeBadPartsTest : public ::testing::TestWithParam<BadPartsCase> {};

TEST_P(BQMTimeBadPartsTest, RejectsPartsThatNameNoTimeAndKeepsTheValue) {
    ScopedTimeZone zone("UTC");
    BQMTime value(42);
    const BadPartsCase& c = GetParam();
    EXPECT_FALSE(value.SetTime(c.year, c.month, c.day, c.hour, c.minute, c.second));
    EXPECT_EQ(value.GetValue(), 42u);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BQMTimeBadPartsTest,
    ::testing::Values(BadPartsCase{2023, 13, 1, 0, 0, 0}, BadPartsCase{2023, 0, 1, 0, 0, 0},
                      BadPartsCase{2023, 2, 30, 0, 0, 0}, BadPartsCase{2023, 4, 31, 0, 0, 0},
                      BadPartsCase{2023, 1, 1, 24, 0, 0}, BadPartsCase{2023, 1, 1, 0, 60, 0},
                      BadPartsCase{1969, 12, 31, 0, 0, 0}, BadPartsCase{-5, 1, 1, 0, 0, 0}));

TEST(BQMTimeTest, ComparisonsUseTheCount) {
    EXPECT_TRUE(BQMTime(5) == BQMTime(5));
    EXPECT_TRUE(BQMTime(5) != BQMTime(6));
    EXPECT_TRUE(BQMTime(5) < BQMTime(6));
    EXPECT_TRUE(BQMTime(7) > BQMTime(6));
    const BQMTime now = BQMTime::CurrentTime();
    EXPECT_TRUE(now.IsValid());
    EXPECT_GT(now.GetValue(), 1600000000ULL);
}

}  // namespace
