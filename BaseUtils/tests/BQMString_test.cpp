#include "BQMString.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace {

typedef BQMString::BQMStringType Units;
const unsigned short R = 0xFFFD;

BQMString S(const std::string& text) { return BQMString(text); }

TEST(BQMStringTest, Utf8DecodesToUtf16AndEachBadSequenceBecomesOneReplacement) {
    // clang-format off
    const struct { std::string input; Units expected; } cases[] = {
        {"", {}}, {"abc", {'a', 'b', 'c'}}, {"\xC3\xA9", {0xE9}}, {"\xE2\x82\xAC", {0x20AC}},
        {"\xF0\x9F\x98\x80", {0xD83D, 0xDE00}}, {"\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}}, {"\xFF", {R}},
        {"a\xC3", {'a', R}}, {"\xE2\x82", {R}}, {"\xC3(", {R, '('}}, {"\xF0\x9F\x98x", {R, 'x'}},
        {"\xC0\xAF", {R, R}}, {"\xE0\x80\xAF", {R, R, R}}, {"\xED\xA0\x80", {R, R, R}},
        {"\xF4\x90\x80\x80", {R, R, R, R}}, {"\x80z", {R, 'z'}}};
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(BQMString(c.input).GetData(), c.expected) << c.input;
        EXPECT_EQ(BQMString(c.input.c_str(), BQMString::BQM_ENCODING_UTF8).GetData(), c.expected) << c.input;
    }
}

TEST(BQMStringTest, TextRoundTripsThroughUtf16AndLoneSurrogatesBecomeReplacements) {
    const std::string text = "plain \xC3\xA9t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF";
    EXPECT_EQ(S(text).GetUTF8String(), text);
    const std::string withNul("a\0b", 3);
    EXPECT_EQ(S(withNul).GetUTF8String(), withNul);
    EXPECT_EQ(BQMString(withNul.c_str(), BQMString::BQM_ENCODING_UTF8).GetData(), Units{'a'});
    EXPECT_TRUE(BQMString(static_cast<const char*>(nullptr), BQMString::BQM_ENCODING_UTF8).IsEmpty());

    const std::string r = "\xEF\xBF\xBD";
    EXPECT_EQ(BQMString(Units{0xD83D}).GetUTF8String(), r);
    EXPECT_EQ(BQMString(Units{0xDBFF, 'a'}).GetUTF8String(), r + "a");
    EXPECT_EQ(BQMString(Units{0xDFFF, 0xD800}).GetUTF8String(), r + r);

    const wchar_t wide[] = {L'A', 0x20AC, 0x1F600, 0};
    EXPECT_EQ(BQMString(wide).GetData(), (Units{'A', 0x20AC, 0xD83D, 0xDE00}));
    EXPECT_EQ(BQMString(wide).GetWstring(), std::wstring(wide));
    const wchar_t bad[] = {static_cast<wchar_t>(0x110000), static_cast<wchar_t>(0xD800), L'x', 0};
    EXPECT_EQ(BQMString(bad).GetData(), (Units{R, R, 'x'}));
}

TEST(BQMStringTest, GetCStringCopiesOnlyWhenTheBufferHoldsTheTextAndNul) {
    char buffer[16] = "untouched";
    unsigned long size = 5;  // the text's 5 bytes but no room for the NUL
    EXPECT_FALSE(S("\xC3\xA9t\xC3\xA9").GetCString(buffer, size));
    EXPECT_EQ(size, 6u);
    EXPECT_STREQ(buffer, "untouched");
    ASSERT_TRUE(S("\xC3\xA9t\xC3\xA9").GetCString(buffer, size));
    EXPECT_EQ(size, 5u);
    EXPECT_STREQ(buffer, "\xC3\xA9t\xC3\xA9");
}

TEST(BQMStringTest, SplitAndReplaceKeepEmptyPiecesAndStopOnEmptyPatterns) {
    const char* const splits[][4] = {
        {"a,,b,", ",", "a||b|", "4"}, {"one::two", "::", "one|two", "2"}, {"a,b", "", "a,b", "1"}};
    for (const auto& c : splits) {
        std::vector<BQMString> parts(3, S("stale"));
        EXPECT_EQ(std::to_string(S(c[0]).SubStrings(S(c[1]), parts)), c[3]) << c[0];
        std::string joined;
        for (std::size_t i = 0; i < parts.size(); ++i) joined += (i ? "|" : "") + parts[i].GetUTF8String();
        EXPECT_EQ(joined, c[2]);
    }
    const char* const replaces[][4] = {{"aaa", "a", "aa", "aaaaaa"},
                                       {"aaaa", "aa", "b", "bb"},
                                       {"abc", "", "x", "abc"},
                                       {"x--y--", "--", "", "xy"}};
    for (const auto& c : replaces) EXPECT_EQ(S(c[0]).ReplaceAll(S(c[1]), S(c[2])), c[3]) << c[0];
}

TEST(BQMStringTest, SpecialCharactersAndReservedFileNameCharacters) {
    const std::string special = "~`!@#$%^&*()_+{}:\"<>?/.,';][=-|\\";
    ASSERT_EQ(special.size(), 32u);
    for (char c : special) EXPECT_TRUE(S(std::string("name") + c + "x").ContainsSpecialCharacters()) << c;
    EXPECT_FALSE(S("Letters0123456789 ").ContainsSpecialCharacters());
    EXPECT_FALSE(S("a.bc").ContainsAny(S(".;"), 2));

    EXPECT_FALSE(S("").IsPermissableFileName());
    EXPECT_TRUE(S("file.log").IsPermissableFileName());
    for (char c : std::string("\\/:?%*<\">|")) {
        EXPECT_FALSE(S(std::string("a") + c + "b").IsPermissableFileName()) << c;
    }
}

TEST(BQMStringTest, NumbersParseInTheGivenBaseAndAppendInDecimal) {
    EXPECT_EQ(S("  -7").GetIntValue(std::dec), -7);
    EXPECT_EQ(S("0x1A").GetIntValue(std::hex), 26);
    EXPECT_EQ(S("99999999999").GetIntValue(std::dec), 0);  // out of range
    BQMString value = S("id");
    value.AppendNumber(-12, ",").AppendNumber(LLONG_MIN, " ").AppendUNumber(ULLONG_MAX, ":");
    EXPECT_EQ(value, "id,-12 -9223372036854775808:18446744073709551615");
    EXPECT_EQ("x" + S("y") + L"z" + "w", "xyzw");
}

}  // namespace
