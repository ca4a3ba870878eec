#include "audit/fleet/ProgressPrinter.h"

#include <gtest/gtest.h>

#include <sstream>

namespace audit {
namespace fleet {
namespace {

TEST(ProgressPrinterTest, RewritesTheLineAtMostFiveTimesASecondAndAlwaysAtTheEnd) {
    double now = 10;
    std::ostringstream out;
    ProgressPrinter printer(out, [&now] { return now; });
    now = 11;
    printer.Update(1, 4);
    now = 11.1;
    printer.Update(2, 4);  // too soon after the last
    now = 11.3;
    printer.Update(3, 4);
    now = 11.31;
    printer.Update(4, 4);  // the last file always shows
    printer.Finish();
    EXPECT_EQ(out.str(),
              "\rloaded 1/4 files (1 files/s)\rloaded 3/4 files (2 files/s)\rloaded 4/4 files (3 files/s)\n");
}

TEST(ProgressPrinterTest, WritesNothingWithoutAnUpdate) {
    std::ostringstream out;
    ProgressPrinter printer(out, [] { return 0.0; });
    printer.Finish();
    EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace fleet
}  // namespace audit
