#include "BQMTime.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(BQMTimeTest, RendersDateWithIsoWeekYearAndTwelveHourTime) {
    const struct {
        unsigned long long seconds;
        const char *date, *time;
    } cases[] = {{1609459200ULL, "Friday, January 01, 2020", "12:00AM"},   // last ISO week of 2020
                 {1735563959ULL, "Monday, December 30, 2025", "01:05PM"},  // first ISO week of 2025
                 {1686832200ULL, "Thursday, June 15, 2023", "12:30PM"}};
    for (const auto& c : cases) {
        BQMString date, time;
        ASSERT_TRUE(BQMTime(c.seconds).DateToString(date, false));
        ASSERT_TRUE(BQMTime(c.seconds).TimeToString(time, false));
        EXPECT_EQ(date, c.date);
        EXPECT_EQ(time, c.time);
    }
    BQMString text("stale");
    EXPECT_FALSE(BQMTime().DateToString(text));
    EXPECT_TRUE(text.IsEmpty());
}

TEST(BQMTimeTest, SetTimeRoundTripsThroughGetTimeAndRejectsImpossibleParts) {
    BQMTime value;
    int p[6] = {};
    ASSERT_TRUE(value.SetTime(2024, 2, 29, 13, 5, 59) && value.GetTime(p[0], p[1], p[2], p[3], p[4], p[5]));
    EXPECT_EQ(std::vector<int>(p, p + 6), (std::vector<int>{2024, 2, 29, 13, 5, 59}));
    for (const auto& c : {std::vector<int>{2023, 13, 1, 0, 0}, {2023, 2, 29, 0, 0}, {2023, 1, 1, 24, 0}}) {
        BQMTime kept(42);
        EXPECT_FALSE(kept.SetTime(c[0], c[1], c[2], c[3], c[4], 0)) << c[1] << "/" << c[2] << " " << c[3];
        EXPECT_EQ(kept.GetValue(), 42u);
    }
}

}  // namespace
