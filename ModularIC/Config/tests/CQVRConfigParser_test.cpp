#include "CQVRConfigParser.h"

#include <cJSON.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "ConfigTestSupport.h"

namespace {

// Owns the records a test receives.
struct Records {
    std::vector<CQVRModuleDetail*> items;
    ~Records() {
        for (CQVRModuleDetail* r : items) delete r;
    }
    size_t size() const { return items.size(); }
    CQVRModuleDetail& operator[](size_t i) const { return *items[i]; }
};

struct JSONDeleter {
    void operator()(cJSON* p) const { cJSON_Delete(p); }
};
typedef std::unique_ptr<cJSON, JSONDeleter> JSONPtr;

const std::set<std::string> kNames = {"GenPre12G", "GenTwelveG", "GenThirteenG", "GenFourteenG", "Generic"};

// ---- The value rule -------------------------------------------------------

struct ValueCase {
    const char* name;
    const char* memberJSON;  // the value written after "v":
    const char* expected;
};

class ValueRuleTest : public ::testing::TestWithParam<ValueCase> {};

TEST_P(ValueRuleTest, PrintsBackAndUnquotes) {
    const ValueCase& c = GetParam();
    const std::string text = std::string("{\"v\": ") + c.memberJSON + "}";
    JSONPtr object(cJSON_Parse(text.c_str()));
    ASSERT_TRUE(object) << text;
    CQVRConfigParser parser;
    EXPECT_EQ(parser.ExtractJSONStrValue(object.get(), "v"), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ValueRuleTest,
    ::testing::Values(ValueCase{"QuotedOneDigit", "\"1\"", "1"},
                      ValueCase{"UnquotedOneDigitReadsEmpty", "1", ""},
                      ValueCase{"UnquotedZeroReadsEmpty", "0", ""}, ValueCase{"TwoDigits", "12", "12"},
                      ValueCase{"Negative", "-1", "-1"}, ValueCase{"Fraction", "1.5", "1.5"},
                      ValueCase{"BooleanFalse", "false", "false"}, ValueCase{"BooleanTrue", "true", "true"},
                      ValueCase{"NullReadsEmpty", "null", ""}, ValueCase{"EmptyString", "\"\"", ""},
                      ValueCase{"OneCharString", "\"x\"", "x"},
                      ValueCase{"EscapedQuoteKeepsBackslash", "\"a\\\"b\"", "a\\\"b"},
                      ValueCase{"EscapedBackslashStaysEscaped", "\"a\\\\b\"", "a\\\\b"},
                      ValueCase{"EscapedNewlineStaysEscaped", "\"a\\nb\"", "a\\nb"},
                      ValueCase{"Array", "[1,2]", "[1, 2]"},
                      ValueCase{"PlainText", "\"./nicinv -x\"", "./nicinv -x"}),
    [](const ::testing::TestParamInfo<ValueCase>& info) { return std::string(info.param.name); });

TEST(ValueRule, QuotedNullIsTheWordNull) {
    // The string "null" prints with its quotes, so it is not the JSON null.
    JSONPtr object(cJSON_Parse("{\"v\": \"null\"}"));
    CQVRConfigParser parser;
    EXPECT_EQ(parser.ExtractJSONStrValue(object.get(), "v"), "null");
}

TEST(ValueRule, MissingKeyOrObjectReadsEmpty) {
    JSONPtr object(cJSON_Parse("{\"v\": \"1\"}"));
    CQVRConfigParser parser;
    EXPECT_EQ(parser.ExtractJSONStrValue(object.get(), "w"), "");
    EXPECT_EQ(parser.ExtractJSONStrValue(nullptr, "v"), "");
    EXPECT_EQ(parser.ExtractJSONStrValue(object.get(), nullptr), "");
}

TEST(ValueRule, KeysAreCaseSensitive) {
    JSONPtr object(cJSON_Parse("{\"_DIR\": \"x\"}"));
    CQVRConfigParser parser;
    EXPECT_EQ(parser.ExtractJSONStrValue(object.get(), "_dir"), "");
}

TEST(ValueRule, ObjectValueIsItsPrintedText) {
    JSONPtr object(cJSON_Parse("{\"v\": {\"a\": \"b\"}}"));
    CQVRConfigParser parser;
    char* printed = cJSON_Print(cJSON_GetObjectItem(object.get(), "v"));
    EXPECT_EQ(parser.ExtractJSONStrValue(object.get(), "v"), printed);
    cJSON_free(printed);
}

TEST(StripJSONStringEndQuotes, ShortTextLeavesOutputUntouched) {
    CQVRConfigParser parser;
    std::string out = "kept";
    parser.StripJSONStringEndQuotes("x", out);
    EXPECT_EQ(out, "kept");
    parser.StripJSONStringEndQuotes("", out);
    EXPECT_EQ(out, "kept");
    parser.StripJSONStringEndQuotes(nullptr, out);
    EXPECT_EQ(out, "kept");
}

TEST(StripJSONStringEndQuotes, QuotesOnBothEndsAreRemovedOtherwiseTextIsCopied) {
    CQVRConfigParser parser;
    std::string out;
    parser.StripJSONStringEndQuotes("\"\"", out);
    EXPECT_EQ(out, "");
    parser.StripJSONStringEndQuotes("\"abc\"", out);
    EXPECT_EQ(out, "abc");
    parser.StripJSONStringEndQuotes("\"abc", out);
    EXPECT_EQ(out, "\"abc");
    parser.StripJSONStringEndQuotes("ab", out);
    EXPECT_EQ(out, "ab");
}

// ---- Reading the file -----------------------------------------------------

TEST(Initilaize, MissingFilePrintsTheMessageOnStdout) {
    ConfigDir dir;
    CQVRConfigParser parser;
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(parser.Initilaize("icconfig_new.json"));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Error! Incorrect file!!\n");
    EXPECT_FALSE(parser.IsInitialized());
}

TEST(Initilaize, EmptyFileFailsSilently) {
    ConfigDir dir;
    dir.Write("");
    CQVRConfigParser parser;
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(parser.Initilaize("icconfig_new.json"));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST(Initilaize, MalformedJSONFailsSilently) {
    ConfigDir dir;
    dir.Write("{\"SorVikConfig\": {");
    CQVRConfigParser parser;
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(parser.Initilaize("icconfig_new.json"));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    Records out;
    EXPECT_EQ(parser.ParseConfig(&kNames, "PreInstall", out.items), 2);
}

TEST(Initilaize, SecondCallIsANoOpAndNullPathReturnsTheState) {
    ConfigDir dir;
    dir.Write("{\"SorVikConfig\": {}}");
    CQVRConfigParser parser;
    EXPECT_FALSE(parser.Initilaize(nullptr));
    ASSERT_TRUE(parser.Initilaize("icconfig_new.json"));
    dir.Write("garbage");
    EXPECT_TRUE(parser.Initilaize("icconfig_new.json"));
    EXPECT_TRUE(parser.Initilaize("does-not-exist.json"));
    EXPECT_TRUE(parser.Initilaize(nullptr));
}

TEST(Initilaize, EveryLineEndBecomesOneSpace) {
    ConfigDir dir;
    dir.Write(
        "{\"SorVikConfig\": {\"PreInstall\": [{\"__text\": \"./prep\n-x\",\n\"_dir\": \"a\r\nb\"}]}}\n");
    CQVRConfigParser parser;
    ASSERT_TRUE(parser.Initilaize("icconfig_new.json"));
    Records out;
    ASSERT_EQ(parser.ParseConfig(&kNames, "PreInstall", out.items), 0);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].commandLine, "./prep -x");
    // A carriage return stays (and prints escaped); the newline became a space.
    EXPECT_EQ(out[0].configuredDir, "a\\r b");
}

TEST(Initilaize, DirectoryInsteadOfFileFails) {
    ConfigDir dir;
    ASSERT_TRUE(std::filesystem::create_directory(dir.path() + "/icconfig_new.json"));
    CQVRConfigParser parser;
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(parser.Initilaize("icconfig_new.json"));
    ::testing::internal::GetCapturedStdout();
}

// ---- Sections --------------------------------------------------------------

const char* const kExample = R"({
  "SorVikConfig": {
    "PreInstall":  [ { "_dir": "prep", "_type": "cli", "__text": "./prep.sh",
                       "#GUID": "1000", "_CmpType": "NA" } ],
    "PostInstall": [ { "_dir": "post", "_type": "cli", "__text": "./post.sh",
                       "#GUID": "1001", "_CmpType": "NA" },
                     { "_dir": "post2", "_type": "lib", "__text": "./post2.sh",
                       "#GUID": "1002", "_CmpType": "NA" } ],
    "Generation": [
      { "_type": "GenPre12G",
        "InvComponent": [ { "_dir": "biosinv", "_type": "cli", "__text": "./biosinv -x",
                            "#GUID": "2000", "_CmpType": "BIOS,FRMW",
                            "_priority": "1", "_isParallelRunSupported": "true" } ] },
      { "_type": "GenSixteenG",
        "InvComponent": [ { "_dir": "future", "#GUID": "2999" } ] },
      null,
      { "_type": "GenFourteenG" },
      { "_type": "genfourteeng",
        "InvComponent": [ { "_dir": "lowercase", "#GUID": "2998" } ] },
      { "_type": "GenFourteenG",
        "InvComponent": [ { "_dir": "nicinv", "_type": "cli", "__text": "./nicinv",
                            "#GUID": "2001", "_CmpType": "FRMW",
                            "_isParallelRunSupported": false },
                          { "_dir": "biosinv", "_type": "cli", "__text": "./biosinv -x",
                            "#GUID": "2000", "_CmpType": "BIOS,FRMW", "_priority": 1 } ] }
    ]
  },
  "Other": { "PreInstall": [ { "_dir": "ignored" } ] }
})";

class SectionTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir.Write(kExample);
        ASSERT_TRUE(parser.Initilaize("icconfig_new.json"));
    }
    ConfigDir dir;
    CQVRConfigParser parser;
};

TEST_F(SectionTest, PreInstallRecordCarriesEveryField) {
    Records out;
    ASSERT_EQ(parser.ParseConfig(&kNames, "PreInstall", out.items), 0);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].configuredDir, "prep");
    EXPECT_EQ(out[0].workingDir, "prep");
    EXPECT_EQ(out[0].type, "cli");
    EXPECT_EQ(out[0].commandLine, "./prep.sh");
    EXPECT_EQ(out[0].guid, "1000");
    EXPECT_EQ(out[0].compType, "NA");
    EXPECT_EQ(out[0].priority, "");
    EXPECT_EQ(out[0].isParallelRunSupported, "");
}

TEST_F(SectionTest, PostInstallKeepsFileOrder) {
    Records out;
    ASSERT_EQ(parser.ParseConfig(&kNames, "PostInstall", out.items), 0);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].configuredDir, "post");
    EXPECT_EQ(out[1].configuredDir, "post2");
    EXPECT_EQ(out[1].type, "lib");
}

TEST_F(SectionTest, GenerationTakesMatchingNodesInFileOrder) {
    Records out;
    ASSERT_EQ(parser.ParseConfig(&kNames, "Generation", out.items), 0);
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(out[0].configuredDir, "biosinv");
    EXPECT_EQ(out[0].priority, "1");
    EXPECT_EQ(out[0].isParallelRunSupported, "true");
    EXPECT_EQ(out[0].compType, "BIOS,FRMW");
    EXPECT_EQ(out[1].configuredDir, "nicinv");
    EXPECT_EQ(out[1].isParallelRunSupported, "false");  // boolean false reads as text
    EXPECT_EQ(out[2].configuredDir, "biosinv");
    EXPECT_EQ(out[2].priority, "");  // unquoted 1 reads empty
}

TEST_F(SectionTest, GenerationWithOnlyOneNameTakesOnlyThatNode) {
    const std::set<std::string> names = {"GenSixteenG"};
    Records out;
    ASSERT_EQ(parser.ParseConfig(&names, "Generation", out.items), 0);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].guid, "2999");
}

TEST_F(SectionTest, EmptyOrNullNameSetTakesNothing) {
    const std::set<std::string> empty;
    Records out;
    EXPECT_EQ(parser.ParseConfig(&empty, "Generation", out.items), 2);
    EXPECT_EQ(parser.ParseConfig(nullptr, "Generation", out.items), 2);
    EXPECT_EQ(out.size(), 0u);
}

TEST_F(SectionTest, UnknownOrMiscasedSectionReturnsTwo) {
    Records out;
    EXPECT_EQ(parser.ParseConfig(&kNames, "preinstall", out.items), 2);
    EXPECT_EQ(parser.ParseConfig(&kNames, "Other", out.items), 2);
    EXPECT_EQ(parser.ParseConfig(&kNames, "", out.items), 2);
    EXPECT_EQ(out.size(), 0u);
}

TEST_F(SectionTest, ResultTellsWhetherOutHoldsAnythingAtAll) {
    Records out;
    ASSERT_EQ(parser.ParseConfig(&kNames, "PreInstall", out.items), 0);
    const std::set<std::string> none;
    // Nothing appended, but out is not empty: 0.
    EXPECT_EQ(parser.ParseConfig(&none, "Generation", out.items), 0);
    EXPECT_EQ(out.size(), 1u);
}

TEST_F(SectionTest, InterfaceWalksReportZeroWhenWalkedOrMissing) {
    cJSON* root = nullptr;
    {
        // Reach the tree through a second parse of the same text.
        root = cJSON_Parse(kExample);
    }
    JSONPtr owner(root);
    cJSON* config = cJSON_GetObjectItem(root, "SorVikConfig");
    Records out;
    EXPECT_EQ(parser.ParseMandatoryInstallObj(config, "PostInstall", out.items), 0);
    EXPECT_EQ(out.size(), 2u);
    EXPECT_EQ(parser.ParseMandatoryInstallObj(config, "Missing", out.items), 0);
    cJSON* node = cJSON_GetArrayItem(cJSON_GetObjectItem(config, "Generation"), 0);
    EXPECT_EQ(parser.ParseInvComponentObj(node, out.items), 0);
    EXPECT_EQ(out.size(), 3u);
    EXPECT_EQ(parser.ParseGenerationNodeObj(config, &kNames, out.items), 0);
    EXPECT_EQ(out.size(), 6u);
}

struct DocCase {
    const char* name;
    const char* json;
    const char* section;
    int expected;
    size_t count;
};

class DocumentShapeTest : public ::testing::TestWithParam<DocCase> {};

TEST_P(DocumentShapeTest, GivesTheExpectedResultAndCount) {
    const DocCase& c = GetParam();
    ConfigDir dir;
    dir.Write(c.json);
    CQVRConfigParser parser;
    ASSERT_TRUE(parser.Initilaize("icconfig_new.json"));
    Records out;
    EXPECT_EQ(parser.ParseConfig(&kNames, c.section, out.items), c.expected);
    EXPECT_EQ(out.size(), c.count);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, DocumentShapeTest,
    ::testing::Values(
        DocCase{"NoSorVikConfig", "{\"Other\": {}}", "PreInstall", 2, 0},
        DocCase{"MiscasedRootKey", "{\"sorvikconfig\": {\"PreInstall\": [{}]}}", "PreInstall", 2, 0},
        DocCase{"RootIsAnArray", "[1, 2, 3]", "PreInstall", 2, 0},
        DocCase{"MissingSection", "{\"SorVikConfig\": {}}", "PostInstall", 2, 0},
        DocCase{"EmptySection", "{\"SorVikConfig\": {\"PreInstall\": []}}", "PreInstall", 2, 0},
        DocCase{"SectionIsAString", "{\"SorVikConfig\": {\"PreInstall\": \"x\"}}", "PreInstall", 2, 0},
        DocCase{"EntriesOfOtherKinds", "{\"SorVikConfig\": {\"PreInstall\": [1, \"x\", null, []]}}",
                "PreInstall", 0, 4},
        DocCase{"GenerationNodeWithoutComponents",
                "{\"SorVikConfig\": {\"Generation\": [{\"_type\": \"Generic\"}]}}", "Generation", 2, 0},
        DocCase{"GenerationIsMissing", "{\"SorVikConfig\": {}}", "Generation", 2, 0},
        DocCase{"GenerationNodesOfOtherKinds",
                "{\"SorVikConfig\": {\"Generation\": [1, \"Generic\", [], null, {\"_type\": \"Generic\", "
                "\"InvComponent\": [{}]}]}}",
                "Generation", 0, 1},
        DocCase{"SameModuleUnderTwoMatchingNodes",
                "{\"SorVikConfig\": {\"Generation\": [{\"_type\": \"Generic\", \"InvComponent\": [{\"_dir\": "
                "\"m\"}]}, {\"_type\": \"GenPre12G\", \"InvComponent\": [{\"_dir\": \"m\"}]}]}}",
                "Generation", 0, 2}),
    [](const ::testing::TestParamInfo<DocCase>& info) { return std::string(info.param.name); });

TEST(SectionEntries, EntriesThatAreNotObjectsYieldEmptyRecords) {
    ConfigDir dir;
    dir.Write("{\"SorVikConfig\": {\"PreInstall\": [\"./x\", 42]}}");
    CQVRConfigParser parser;
    ASSERT_TRUE(parser.Initilaize("icconfig_new.json"));
    Records out;
    ASSERT_EQ(parser.ParseConfig(&kNames, "PreInstall", out.items), 0);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].commandLine, "");
    EXPECT_EQ(out[1].configuredDir, "");
}

// ---- Bad input never crashes, throws or leaks --------------------------------

TEST(BadConfigInput, DeeplyNestedJSONIsRejected) {
    ConfigDir dir;
    dir.Write(std::string(100000, '[') + std::string(100000, ']'));
    CQVRConfigParser parser;
    EXPECT_FALSE(parser.Initilaize("icconfig_new.json"));
}

TEST(BadConfigInput, NestingJustInsideTheLimitIsPrintedBack) {
    ConfigDir dir;
    const std::string nested = std::string(900, '[') + std::string(900, ']');
    dir.Write("{\"SorVikConfig\": {\"PreInstall\": [{\"_dir\": " + nested + "}]}}");
    CQVRConfigParser parser;
    ASSERT_TRUE(parser.Initilaize("icconfig_new.json"));
    Records out;
    ASSERT_EQ(parser.ParseConfig(&kNames, "PreInstall", out.items), 0);
    EXPECT_EQ(out[0].configuredDir.front(), '[');
    EXPECT_GE(out[0].configuredDir.size(), 1800u);
}

TEST(BadConfigInput, HugeValuesAreKeptWhole) {
    ConfigDir dir;
    const std::string big(8 * 1024 * 1024, 'x');
    dir.Write("{\"SorVikConfig\": {\"PreInstall\": [{\"__text\": \"" + big + "\"}]}}");
    CQVRConfigParser parser;
    ASSERT_TRUE(parser.Initilaize("icconfig_new.json"));
    Records out;
    ASSERT_EQ(parser.ParseConfig(&kNames, "PreInstall", out.items), 0);
    EXPECT_EQ(out[0].commandLine, big);
}

TEST(BadConfigInput, LongSectionsAreReadInLinearTime) {
    ConfigDir dir;
    std::string entries;
    const int kCount = 50000;
    for (int i = 0; i < kCount; ++i)
        entries += std::string(i ? "," : "") + "{\"#GUID\": \"" + std::to_string(i) + "0\"}";
    dir.Write("{\"SorVikConfig\": {\"PostInstall\": [" + entries + "]}}");
    CQVRConfigParser parser;
    ASSERT_TRUE(parser.Initilaize("icconfig_new.json"));
    Records out;
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(parser.ParseConfig(&kNames, "PostInstall", out.items), 0);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ASSERT_EQ(out.size(), static_cast<size_t>(kCount));
    EXPECT_EQ(out[kCount - 1].guid, std::to_string(kCount - 1) + "0");
    EXPECT_LT(seconds, 5.0);
}

TEST(BadConfigInput, BinaryGarbageIsRejected) {
    ConfigDir dir;
    std::string garbage;
    unsigned int state = 12345;
    for (int i = 0; i < 65536; ++i) {
        state = state * 1103515245u + 12345u;
        garbage += static_cast<char>(state >> 24);
    }
    garbage[0] = '\x01';
    dir.Write(garbage);
    CQVRConfigParser parser;
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(parser.Initilaize("icconfig_new.json"));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST(BadConfigInput, EmbeddedNulEndsTheText) {
    ConfigDir dir;
    static const char kText[] = "{\"SorVikConfig\": {\"PreInstall\": [{\"_dir\": \"a\0b\"}]}}";
    dir.Write(std::string(kText, sizeof kText - 1));
    CQVRConfigParser parser;
    EXPECT_FALSE(parser.Initilaize("icconfig_new.json"));
}

TEST(BadConfigInput, TruncatedDocumentsAreRejected) {
    const std::string text = kExample;
    for (size_t cut = 1; cut < text.size(); cut += 7) {
        ConfigDir dir;
        dir.Write(text.substr(0, cut));
        CQVRConfigParser parser;
        EXPECT_FALSE(parser.Initilaize("icconfig_new.json")) << "cut at " << cut;
    }
}

}  // namespace
