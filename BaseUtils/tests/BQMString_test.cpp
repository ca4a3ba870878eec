#include "BQMString.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace {

typedef BQMString::BQMStringType Units;

BQMString Utf8(const char* text) { return BQMString(text, BQMString::BQM_ENCODING_UTF8); }

struct Utf8Case {
    const char* name;
    std::string input;
    Units expected;
};

class BQMStringUtf8DecodeTest : public ::testing::TestWithParam<Utf8Case> {};

TEST_P(BQMStringUtf8DecodeTest, DecodesToExpectedCodeUnits) {
    const Utf8Case& c = GetParam();
    EXPECT_EQ(BQMString(c.input).GetData(), c.expected);
    EXPECT_EQ(BQMString(c.input.c_str(), BQMString::BQM_ENCODING_UTF8).GetData(), c.expected);
}

const unsigned short R = 0xFFFD;

INSTANTIATE_TEST_SUITE_P(
    Cases, BQMStringUtf8DecodeTest,
    ::testing::Values(Utf8Case{"Empty", "", {}}, Utf8Case{"Ascii", "abc", {'a', 'b', 'c'}},
                      Utf8Case{"TwoByte", "\xC3\xA9", {0xE9}},
                      Utf8Case{"ThreeByte", "\xE2\x82\xAC", {0x20AC}},
                      Utf8Case{"FourByteBecomesSurrogatePair", "\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
                      Utf8Case{"HighestCodePoint", "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
                      Utf8Case{"InvalidByte", "\xFF", {R}}, Utf8Case{"TruncatedAtEnd", "a\xC3", {'a', R}},
                      Utf8Case{"TruncatedThreeByteIsOneReplacement", "\xE2\x82", {R}},
                      Utf8Case{"BadContinuationKeepsNextCharacter", "\xC3(", {R, '('}},
                      Utf8Case{"TruncatedFourByteBeforeAscii", "\xF0\x9F\x98x", {R, 'x'}},
                      Utf8Case{"OverlongSlash", "\xC0\xAF", {R, R}},
                      Utf8Case{"OverlongThreeByte", "\xE0\x80\xAF", {R, R, R}},
                      Utf8Case{"EncodedSurrogate", "\xED\xA0\x80", {R, R, R}},
                      Utf8Case{"BeyondUnicode", "\xF4\x90\x80\x80", {R, R, R, R}},
                      Utf8Case{"LoneContinuation", "\x80z", {R, 'z'}}),
    [](const ::testing::TestParamInfo<Utf8Case>& info) { return std::string(info.param.name); });

TEST(BQMStringTest, StdStringKeepsEmbeddedNulButCStringStopsAtIt) {
    const std::string text("a\0b", 3);
    EXPECT_EQ(BQMString(text).GetData(), (Units{'a', 0, 'b'}));
    EXPECT_EQ(BQMString(text).GetUTF8String(), text);
    EXPECT_EQ(BQMString(text.c_str(), BQMString::BQM_ENCODING_UTF8).GetData(), (Units{'a'}));
}

TEST(BQMStringTest, NullNarrowAndWideTextGiveEmptyString) {
    EXPECT_TRUE(BQMString(static_cast<const char*>(nullptr), BQMString::BQM_ENCODING_UTF8).IsEmpty());
    EXPECT_TRUE(BQMString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
}

TEST(BQMStringTest, Utf8RoundTripsThroughUtf16) {
    const std::string text = "plain \xC3\xA9t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF";
    EXPECT_EQ(BQMString(text).GetUTF8String(), text);
}

TEST(BQMStringTest, UnpairedSurrogatesEncodeAsReplacementCharacter) {
    const std::string replacement = "\xEF\xBF\xBD";
    EXPECT_EQ(BQMString(Units{0xD83D}).GetUTF8String(), replacement);
    EXPECT_EQ(BQMString(Units{0xD83D, 'a'}).GetUTF8String(), replacement + "a");
    EXPECT_EQ(BQMString(Units{0xDE00, 'a'}).GetUTF8String(), replacement + "a");
    EXPECT_EQ(BQMString(Units{0xDE00, 0xD83D}).GetUTF8String(), replacement + replacement);
}

TEST(BQMStringTest, WideTextConvertsBothWays) {
    const wchar_t text[] = {L'A', 0x20AC, 0x1F600, 0};
    const BQMString value(text);
    EXPECT_EQ(value.GetData(), (Units{'A', 0x20AC, 0xD83D, 0xDE00}));
    EXPECT_EQ(value.GetWstring(), std::wstring(text));
    EXPECT_EQ(value.GetUTF8String(), "A\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(BQMStringTest, WideCodePointsOutsideUnicodeBecomeReplacement) {
    const wchar_t text[] = {static_cast<wchar_t>(0x110000), static_cast<wchar_t>(0xD800), L'x', 0};
    EXPECT_EQ(BQMString(text).GetData(), (Units{R, R, 'x'}));
}

TEST(BQMStringTest, GetCStringCopiesOnlyWhenTheBufferIsLargeEnough) {
    const BQMString value = Utf8("\xC3\xA9t\xC3\xA9");  // 5 bytes of UTF-8
    char buffer[16];
    std::fill(buffer, buffer + sizeof buffer, 'x');
    unsigned long size = 5;
    EXPECT_FALSE(value.GetCString(buffer, size));
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(buffer[0], 'x');

    unsigned long nullSize = 100;
    EXPECT_FALSE(value.GetCString(nullptr, nullSize));
    EXPECT_EQ(nullSize, 6u);

    size = 6;
    ASSERT_TRUE(value.GetCString(buffer, size));
    EXPECT_EQ(size, 5u);
    EXPECT_STREQ(buffer, "\xC3\xA9t\xC3\xA9");
}

TEST(BQMStringTest, NPosIsTheNotFoundPosition) {
    EXPECT_EQ(Utf8("abc").Find(Utf8("z")), BQMString::GetNPos());
    EXPECT_EQ(Utf8("abcabc").Find(Utf8("c"), 3), 5u);
}

struct SubStringCase {
    const char* text;
    std::size_t start;
    std::size_t length;
    const char* expected;
};

class BQMStringSubStringTest : public ::testing::TestWithParam<SubStringCase> {};

TEST_P(BQMStringSubStringTest, ClipsToTheString) {
    const SubStringCase& c = GetParam();
    EXPECT_EQ(Utf8(c.text).SubString(c.start, c.length).GetUTF8String(), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, BQMStringSubStringTest,
                         ::testing::Values(SubStringCase{"hello", 1, 3, "ell"},
                                           SubStringCase{"hello", 2, BQMString::GetNPos(), "llo"},
                                           SubStringCase{"hello", 3, 100, "lo"},
                                           SubStringCase{"hello", 5, 1, ""}, SubStringCase{"hello", 9, 1, ""},
                                           SubStringCase{"hello", 0, 0, ""}));

struct SplitCase {
    const char* text;
    const char* separator;
    std::vector<std::string> expected;
};

class BQMStringSubStringsTest : public ::testing::TestWithParam<SplitCase> {};

TEST_P(BQMStringSubStringsTest, SplitsAtEverySeparator) {
    const SplitCase& c = GetParam();
    std::vector<BQMString> parts(3, Utf8("stale"));
    EXPECT_EQ(Utf8(c.text).SubStrings(Utf8(c.separator), parts), c.expected.size());
    std::vector<std::string> actual;
    for (const BQMString& part : parts) actual.push_back(part.GetUTF8String());
    EXPECT_EQ(actual, c.expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, BQMStringSubStringsTest,
                         ::testing::Values(SplitCase{"a,b,c", ",", {"a", "b", "c"}},
                                           SplitCase{"a,,b,", ",", {"a", "", "b", ""}},
                                           SplitCase{"one::two", "::", {"one", "two"}},
                                           SplitCase{"plain", ",", {"plain"}}, SplitCase{"", ",", {""}},
                                           SplitCase{"a,b", "", {"a,b"}}));

struct ReplaceCase {
    const char* text;
    const char* from;
    const char* to;
    const char* expected;
};

class BQMStringReplaceAllTest : public ::testing::TestWithParam<ReplaceCase> {};

TEST_P(BQMStringReplaceAllTest, ReplacesEveryOccurrence) {
    const ReplaceCase& c = GetParam();
    BQMString value = Utf8(c.text);
    value.ReplaceAll(Utf8(c.from), Utf8(c.to));
    EXPECT_EQ(value.GetUTF8String(), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BQMStringReplaceAllTest,
    ::testing::Values(ReplaceCase{"a.b.c", ".", "/", "a/b/c"}, ReplaceCase{"aaa", "a", "aa", "aaaaaa"},
                      ReplaceCase{"aaaa", "aa", "b", "bb"}, ReplaceCase{"abc", "", "x", "abc"},
                      ReplaceCase{"x--y--", "--", "", "xy"}, ReplaceCase{"none", "z", "y", "none"}));

TEST(BQMStringTest, TrimWhiteSpacesRemovesOnlyTheEnds) {
    BQMString value = Utf8(" \t inner  text \r\n");
    EXPECT_EQ(value.TrimWhiteSpaces().GetUTF8String(), "inner  text");
    BQMString blank = Utf8(" \t\n ");
    EXPECT_TRUE(blank.TrimWhiteSpaces().IsEmpty());
    BQMString custom = Utf8("xxabcxx");
    EXPECT_EQ(custom.TrimWhiteSpaces(Utf8("x")).GetUTF8String(), "abc");
}

TEST(BQMStringTest, ContainsAnyLooksFromTheStartPosition) {
    const BQMString value = Utf8("a.bc");
    EXPECT_TRUE(value.ContainsAny(Utf8(".;"), 0));
    EXPECT_TRUE(value.ContainsAny(Utf8(".;"), 1));
    EXPECT_FALSE(value.ContainsAny(Utf8(".;"), 2));
    EXPECT_FALSE(value.ContainsAny(Utf8(""), 0));
    EXPECT_FALSE(value.ContainsAny(Utf8("a"), 10));
}

TEST(BQMStringTest, EveryOneOfTheThirtyTwoSpecialCharactersCounts) {
    const std::string special = "~`!@#$%^&*()_+{}:\"<>?/.,';][=-|\\";
    ASSERT_EQ(special.size(), 32u);
    for (char c : special) {
        const std::string name = std::string("name") + c + "x";
        EXPECT_TRUE(Utf8(name.c_str()).ContainsSpecialCharacters()) << name;
    }
    EXPECT_FALSE(Utf8("Letters0123456789").ContainsSpecialCharacters());
    EXPECT_FALSE(Utf8("").ContainsSpecialCharacters());
    EXPECT_FALSE(Utf8("with space").ContainsSpecialCharacters());
}

struct FileNameCase {
    const char* name;
    bool permissible;
};

class BQMStringFileNameTest : public ::testing::TestWithParam<FileNameCase> {};

TEST_P(BQMStringFileNameTest, RejectsEmptyAndTheTenReservedCharacters) {
    EXPECT_EQ(Utf8(GetParam().name).IsPermissableFileName(), GetParam().permissible) << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P(Cases, BQMStringFileNameTest,
                         ::testing::Values(FileNameCase{"", false}, FileNameCase{"file.log", true},
                                           FileNameCase{"under_score-dash", true},
                                           FileNameCase{"c:drive", false}, FileNameCase{"a\\b", false},
                                           FileNameCase{"a/b", false}, FileNameCase{"what?", false},
                                           FileNameCase{"100%", false}, FileNameCase{"star*", false},
                                           FileNameCase{"<in", false}, FileNameCase{"out>", false},
                                           FileNameCase{"quote\"", false}, FileNameCase{"pi|pe", false}));

struct IntCase {
    const char* text;
    BQMString::BaseManipulator base;
    int expected;
};

class BQMStringIntValueTest : public ::testing::TestWithParam<IntCase> {};

TEST_P(BQMStringIntValueTest, ParsesInTheGivenBase) {
    EXPECT_EQ(Utf8(GetParam().text).GetIntValue(GetParam().base), GetParam().expected) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Cases, BQMStringIntValueTest,
                         ::testing::Values(IntCase{"42", std::dec, 42}, IntCase{"  -7", std::dec, -7},
                                           IntCase{"12abc", std::dec, 12}, IntCase{"ff", std::hex, 255},
                                           IntCase{"0x1A", std::hex, 26}, IntCase{"17", std::oct, 15},
                                           IntCase{"10", std::hex, 16}, IntCase{"abc", std::dec, 0},
                                           IntCase{"", std::dec, 0}, IntCase{"99999999999", std::dec, 0}));

TEST(BQMStringTest, LongLongAndDoubleValues) {
    EXPECT_EQ(Utf8("9223372036854775807").GetLongLongValue(), LLONG_MAX);
    EXPECT_EQ(Utf8("ffffffffff").GetLongLongValue(std::hex), 0xffffffffffLL);
    EXPECT_DOUBLE_EQ(Utf8("3.25").GetDoubleValue(), 3.25);
    EXPECT_DOUBLE_EQ(Utf8(" -1e3").GetDoubleValue(), -1000.0);
    EXPECT_DOUBLE_EQ(Utf8("x1").GetDoubleValue(), 0.0);
}

TEST(BQMStringTest, AppendNumberWritesDecimalWithOptionalSeparator) {
    BQMString value = Utf8("id");
    value.AppendNumber(5).AppendNumber(-12, ",").AppendNumber(LLONG_MIN, " ");
    EXPECT_EQ(value.GetUTF8String(), "id5,-12 -9223372036854775808");
    BQMString unsignedValue;
    unsignedValue.AppendUNumber(4000000000u).AppendUNumber(ULLONG_MAX, ":").AppendUNumber(7ul, "");
    EXPECT_EQ(unsignedValue.GetUTF8String(), "4000000000:184467440737095516157");
}

TEST(BQMStringTest, ComparisonAndConcatenationAcrossTextKinds) {
    const BQMString value = Utf8("\xC3\xA9t\xC3\xA9");
    EXPECT_TRUE(value == "\xC3\xA9t\xC3\xA9");
    EXPECT_TRUE(value == L"\u00E9t\u00E9");
    EXPECT_TRUE(value == BQMString(L"\u00E9t\u00E9"));
    EXPECT_TRUE(value != "ete");
    EXPECT_FALSE(value == "\xC3\xA9t");

    EXPECT_EQ((Utf8("a") + "b" + L"c" + Utf8("d")).GetUTF8String(), "abcd");
    EXPECT_EQ(("x" + Utf8("y")).GetUTF8String(), "xy");
    EXPECT_EQ((L"x" + Utf8("y")).GetUTF8String(), "xy");
    BQMString grown = Utf8("log");
    grown += ".";
    grown += Utf8("txt");
    EXPECT_EQ(grown.GetUTF8String(), "log.txt");
    EXPECT_TRUE(Utf8("a") < Utf8("b"));
}

}  // namespace
