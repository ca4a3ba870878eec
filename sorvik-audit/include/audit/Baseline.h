#pragma once
// The baseline: which versions of which components are approved. A JSON
// document, schema in docs/schemas/baseline.schema.json.
#include <string>
#include <utility>
#include <vector>

#include "audit/VersionCompare.h"

namespace audit {

// One "match" condition: the inventory field's name (a component field,
// "systemID", or an operating system field "osName", "osVendor", "osCode",
// "osArch", "majorVersion", "minorVersion") and the value it must equal.
// For "name" the value is a shell-style pattern (fnmatch(3)).
struct MatchCondition {
    std::string field;
    std::string value;
};

struct Rule {
    std::string path;  // "$.rules[3]", for messages
    std::string description;
    std::vector<MatchCondition> match;  // all must hold; none matches every component
    bool hasMin = false, hasMax = false, hasExact = false;
    std::string min, max, exact;
    std::vector<std::string> allowed;  // empty: no "allowed" list
    Scheme scheme = Scheme::Auto;
    bool required = false;
    std::string module;  // the module ("/storageinv") whose failure makes the rule's verdicts unknown
};

struct Baseline {
    std::string source;
    std::vector<Rule> rules;  // in file order; a component takes the first rule that matches it
};

// The baseline file ("-": standard input). On failure: false, and error names
// the file and the place: line and column for bad JSON, else the JSON path
// ("$.rules[2].match.name") of the unknown key, wrong type, bad pattern,
// scheme or version.
bool LoadBaseline(const std::string& path, Baseline& baseline, std::string& error);
bool ParseBaseline(const std::string& text, const std::string& name, Baseline& baseline, std::string& error);

// The constraint in words, e.g. ">=2.17.1", "=1.0", "one of 2.1, 2.3", "any".
std::string ExpectedText(const Rule& rule);

}  // namespace audit
