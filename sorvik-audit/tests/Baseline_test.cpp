#include "audit/Baseline.h"

#include <gtest/gtest.h>

namespace audit {
namespace {

TEST(BaselineTest, ReadsRulesWithTheirConstraints) {
    Baseline baseline;
    std::string error;
    ASSERT_TRUE(ParseBaseline(R"({"$schema": "x", "schemaVersion": 1, "description": "lab", "rules": [
        {"match": {"componentType": "BIOS", "name": "BIOS*"}, "min": "2.17.1", "max": "3.0", "required": true},
        {"match": {"vendorID": "8086", "systemID": "0A1B"}, "allowed": ["0x1000065", "0x1000070"], "scheme": "hex",
         "module": "/fwinv", "description": "microcode"},
        {"match": {}, "exact": "A12", "scheme": "text"}]})",
                              "b.json", baseline, error))
        << error;
    ASSERT_EQ(3u, baseline.rules.size());
    const Rule& bios = baseline.rules[0];
    ASSERT_EQ(2u, bios.match.size());
    EXPECT_EQ("name", bios.match[1].field);
    EXPECT_EQ("BIOS*", bios.match[1].value);
    EXPECT_TRUE(bios.required);
    EXPECT_EQ(">=2.17.1, <=3.0", ExpectedText(bios));
    EXPECT_EQ(Scheme::Hex, baseline.rules[1].scheme);
    EXPECT_EQ("/fwinv", baseline.rules[1].module);
    EXPECT_EQ("one of 0x1000065, 0x1000070", ExpectedText(baseline.rules[1]));
    EXPECT_EQ("=A12", ExpectedText(baseline.rules[2]));
    EXPECT_EQ("$.rules[2]", baseline.rules[2].path);
}

// Every bad baseline is refused with the file and the place of the fault.
TEST(BaselineTest, BadBaselinesNameTheFileAndPlace) {
    const struct {
        const char* text;
        const char* error;
    } rows[] = {
        {"", "b.json:1:1: truncated JSON"},
        {"{\"schemaVersion\": 1,\n  \"rules\": [}", "b.json:2:13: not valid JSON here"},
        {"{\"schemaVersion\": 1, \"rules\": []} x", "b.json:1:35: text after the JSON document"},
        {"[]", "b.json: $: expected an object, found an array"},
        {"{\"rules\": []}", "b.json: $: no schemaVersion"},
        {"{\"schemaVersion\": 2, \"rules\": []}", "b.json: $.schemaVersion: expected 1"},
        {"{\"schemaVersion\": 1}", "b.json: $: no rules"},
        {"{\"schemaVersion\": 1, \"rule\": []}", "b.json: $.rule: unknown key"},
        {"{\"schemaVersion\": 1, \"rules\": [], \"rules\": []}", "b.json: $.rules: given twice"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"min\": \"1\", \"min\": \"2\"}]}",
         "b.json: $.rules[0].min: given twice"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"match\": {\"name\": \"a\", \"name\": \"b\"}}]}",
         "b.json: $.rules[0].match.name: given twice"},
        {"{\"schemaVersion\": 1, \"rules\": {}}", "b.json: $.rules: expected an array, found an object"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"match\": {\"nmae\": \"x\"}}]}",
         "b.json: $.rules[0].match.nmae: unknown key"},
        {"{\"schemaVersion\": 1, \"rules\": [{}, {\"minimum\": \"1\"}]}",
         "b.json: $.rules[1].minimum: unknown key"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"min\": 2.1}]}",
         "b.json: $.rules[0].min: expected a string, found a number"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"required\": \"yes\"}]}",
         "b.json: $.rules[0].required: expected true or false, found a string"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"match\": {\"name\": \"BIOS[12\"}}]}",
         "b.json: $.rules[0].match.name: bad pattern \"BIOS[12\": the bracket expression at character 5 is "
         "not "
         "closed"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"match\": {\"name\": \"a\\\\\"}}]}",
         "b.json: $.rules[0].match.name: bad pattern \"a\\\": a backslash ends the pattern"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"scheme\": \"semver\"}]}",
         "b.json: $.rules[0].scheme: unknown scheme \"semver\" (auto, numeric, hex or text)"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"scheme\": \"hex\", \"min\": \"2.1\"}]}",
         "b.json: $.rules[0].min: \"2.1\" is not a hexadecimal number (scheme hex)"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"allowed\": [\"1.0\", \"N/A\"]}]}",
         "b.json: $.rules[0].allowed[1]: \"N/A\" has no number (scheme auto)"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"allowed\": []}]}",
         "b.json: $.rules[0].allowed: expected a non-empty array of versions"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"exact\": \"1\", \"min\": \"1\"}]}",
         "b.json: $.rules[0].exact: exact excludes min, max and allowed"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"min\": \"2.0\", \"max\": \"1.9\"}]}",
         "b.json: $.rules[0].max: max is below min"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"scheme\": \"text\", \"max\": \"A\"}]}",
         "b.json: $.rules[0].max: scheme text has no order; use exact or allowed"},
        {"{\"schemaVersion\": 1, \"rules\": [{\"module\": \"storageinv\"}]}",
         "b.json: $.rules[0].module: a module is named by its directory, starting with /"},
    };
    for (const auto& row : rows) {
        Baseline baseline;
        std::string error;
        EXPECT_FALSE(ParseBaseline(row.text, "b.json", baseline, error)) << row.text;
        EXPECT_EQ(row.error, error) << row.text;
    }
}

TEST(BaselineTest, MissingFileNamesItAndTheReason) {
    Baseline baseline;
    std::string error;
    EXPECT_FALSE(LoadBaseline("/nonexistent/b.json", baseline, error));
    EXPECT_EQ("/nonexistent/b.json: cannot open: No such file or directory", error);
}

}  // namespace
}  // namespace audit

namespace audit {
namespace {

// The example users copy must load, with its exception ahead of the rule it
// overrides.
TEST(BaselineTest, ExampleBaselineLoads) {
    Baseline baseline;
    std::string error;
    ASSERT_TRUE(LoadBaseline(SORVIK_DOCS_DIR "/baseline.example.json", baseline, error)) << error;
    ASSERT_GE(baseline.rules.size(), 2u);
    EXPECT_EQ("systemID", baseline.rules[0].match[0].field);
    EXPECT_EQ("=2.9.0", ExpectedText(baseline.rules[0]));
    EXPECT_EQ(">=2.17.1", ExpectedText(baseline.rules[1]));
}

}  // namespace
}  // namespace audit
