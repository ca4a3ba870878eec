#include "BQMGUID.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

BQMString Utf8(const char* text) { return BQMString(text, BQMString::BQM_ENCODING_UTF8); }

TEST(BQMGUIDTest, ParsesAndPrintsTheCanonicalForm) {
    BQMGUID guid;
    EXPECT_TRUE(guid.IsNull());
    ASSERT_TRUE(guid.FromString(Utf8("0123abcd-4567-89ef-ABCD-0123456789aB")));
    EXPECT_EQ(guid.ToString().GetUTF8String(), "0123ABCD-4567-89EF-ABCD-0123456789AB");
    EXPECT_FALSE(guid.IsNull());
}

TEST(BQMGUIDTest, RejectsMalformedTextAndKeepsTheValue) {
    BQMGUID guid;
    ASSERT_TRUE(guid.FromString(Utf8("00000000-0000-0000-0000-000000000001")));
    for (const char* bad : {"", "00000000-0000-0000-0000-00000000000",
                            "00000000-0000-0000-0000-0000000000001", "00000000+0000-0000-0000-000000000001",
                            "0000000g-0000-0000-0000-000000000001", "000000000-000-0000-0000-000000000001"}) {
        EXPECT_FALSE(guid.FromString(Utf8(bad))) << bad;
    }
    EXPECT_EQ(guid.ToString().GetUTF8String(), "00000000-0000-0000-0000-000000000001");
}

TEST(BQMGUIDTest, ComparesByValue) {
    BQMGUID low, high, same;
    low.FromString(Utf8("00000000-0000-0000-0000-0000000000FF"));
    high.FromString(Utf8("00000000-0000-0000-0001-000000000000"));
    same.FromString(Utf8("00000000-0000-0000-0000-0000000000ff"));
    EXPECT_TRUE(low == same);
    EXPECT_TRUE(low != high);
    EXPECT_TRUE(low < high);
    EXPECT_TRUE(high > low);
    EXPECT_FALSE(high < low);
}

TEST(BQMGUIDTest, GeneratedIdentifiersAreVersionFourAndDistinct) {
    std::set<std::string> seen;
    for (int i = 0; i < 100; ++i) {
        const std::string text = BQMGUID::Generate().ToString().GetUTF8String();
        EXPECT_EQ(text[14], '4') << text;
        EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos) << text;
        seen.insert(text);
    }
    EXPECT_EQ(seen.size(), 100u);
}

}  // namespace
