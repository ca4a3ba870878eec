#include "CQVRConfigParser.h"

#include <cJSON.h>
#include <gtest/gtest.h>

#include <memory>

#include "ConfigTestSupport.h"

namespace {

Strings Fields(const CQVRModuleDetail& m) {
    return {m.configuredDir, m.workingDir, m.type,     m.commandLine,
            m.guid,          m.compType,   m.priority, m.isParallelRunSupported};
}

TEST(ConfigValueRule, PrintsTheValueBackAndStripsOnlyTheOuterQuotes) {
    // clang-format off
    const std::vector<std::pair<const char*, const char*>> rows = {
        {"\"1\"", "1"}, {"1", ""}, {"12", "12"}, {"-1", "-1"}, {"false", "false"}, {"true", "true"},
        {"null", ""}, {"\"null\"", "null"}, {"\"\"", ""}, {"\"x\"", "x"}, {"\"a\\\"b\"", "a\\\"b"},
        {"\"a\\nb\"", "a\\nb"}, {"[1,2]", "[1, 2]"}};
    // clang-format on
    CQVRConfigParser parser;
    for (const auto& row : rows) {
        const std::string text = std::string("{\"v\": ") + row.first + "}";
        std::unique_ptr<cJSON, void (*)(cJSON*)> object(cJSON_Parse(text.c_str()), cJSON_Delete);
        EXPECT_EQ(parser.ExtractJSONStrValue(object.get(), "v"), row.second) << text;
        EXPECT_EQ(parser.ExtractJSONStrValue(object.get(), "V"), "") << "keys are case-sensitive";
    }
}

TEST(ConfigFile, OnlyAnUnopenableFilePrintsTheMessage) {
    // Rows expecting the message have no file; empty, malformed or too deep files fail silently.
    // clang-format off
    const std::vector<std::pair<const char*, std::string>> rows = {
        {"Error! Incorrect file!!\n", ""}, {"", ""}, {"", "{\"SorVikConfig\": {"},
        {"", std::string("{\"a\": \"x\0y\"}", 12)},
        {"", std::string(100000, '[') + std::string(100000, ']')}};
    // clang-format on
    for (const auto& row : rows) {
        ConfigDir dir;
        if (*row.first == '\0') dir.Write(row.second);
        CQVRConfigParser parser;
        ::testing::internal::CaptureStdout();
        EXPECT_FALSE(parser.Initilaize("icconfig_new.json")) << row.second.substr(0, 40);
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), row.first) << row.second.substr(0, 40);
    }
}

TEST(ConfigFile, LineEndsBecomeSpacesAndLongValuesStayWhole) {
    ConfigDir dir;
    const std::string big(8 << 20, 'x');
    const std::string text =
        "{\"SorVikConfig\": {\"PreInstall\": [{\"__text\": \"./prep\n-x\",\n\"_dir\": \"a\r\nb\",";
    dir.Write(text + "\"#GUID\": \"" + big + "\"}]}}\n");
    CQVRConfigParser parser;
    ASSERT_TRUE(parser.Initilaize("icconfig_new.json"));
    Records out;
    ASSERT_EQ(parser.ParseConfig(&kNames, "PreInstall", out), 0);
    EXPECT_EQ(out[0]->commandLine, "./prep -x");
    EXPECT_EQ(out[0]->configuredDir, "a\\r b");  // the carriage return stays, printed escaped
    EXPECT_EQ(out[0]->guid, big);
}

TEST(ConfigSections, GiveTheirRecordsInFileOrderAndTwoWhenOutStaysEmpty) {
    ConfigDir dir;
    dir.Write(kConfig);
    CQVRConfigParser parser;
    ASSERT_TRUE(parser.Initilaize("icconfig_new.json"));
    Records pre, gen, none;
    ASSERT_EQ(parser.ParseConfig(&kNames, "PreInstall", pre), 0);
    EXPECT_EQ(Fields(*pre[0]), (Strings{"prep", "prep", "cli", "./prep.sh", "1000", "NA", "", ""}));
    ASSERT_EQ(parser.ParseConfig(&kNames, "Generation", gen), 0);
    ASSERT_EQ(gen.size(), kGenerationOrder.size());
    EXPECT_EQ(Fields(*gen[0]),
              (Strings{"biosinv", "biosinv", "cli", "./biosinv -x", "2000", "FRMW, BIOS", "1", "true"}));

    for (const char* json :
         {"{\"Other\": {\"PreInstall\": [{}]}}", "{\"SorVikConfig\": {\"PreInstall\": []}}"}) {
        dir.Write(json);
        CQVRConfigParser other;
        ASSERT_TRUE(other.Initilaize("icconfig_new.json"));
        for (const char* section : {"PreInstall", "PostInstall", "Generation"})
            EXPECT_EQ(other.ParseConfig(&kNames, section, none), 2) << json << section;
    }
    EXPECT_EQ(none.size(), 0u);
}

}  // namespace
