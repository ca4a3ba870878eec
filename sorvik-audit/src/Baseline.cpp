#include "audit/Baseline.h"

#include <cstring>

#include "JsonText.h"
#include "audit/DocumentReader.h"

namespace audit {
namespace {

const char* const kMatchFields[] = {"name",        "componentType", "componentID",  "componentInstance",
                                    "fqdd",        "vendorID",      "deviceID",     "subVendorID",
                                    "subDeviceID", "systemID",      "osName",       "osVendor",
                                    "osCode",      "osArch",        "majorVersion", "minorVersion"};

bool KnownMatchField(const char* field) {
    for (const char* known : kMatchFields)
        if (std::strcmp(known, field) == 0) return true;
    return false;
}

// cJSON keeps both members of a key given twice; a baseline must not say two
// things at once, so the second is refused.
const cJSON* Duplicate(const cJSON* object) {
    for (const cJSON* member = object->child; member != nullptr; member = member->next)
        for (const cJSON* earlier = object->child; earlier != member; earlier = earlier->next)
            if (std::strcmp(earlier->string, member->string) == 0) return member;
    return nullptr;
}

// A shell-style pattern fnmatch(3) reads the way it is meant: every bracket
// expression closed, no backslash left dangling.
bool PatternValid(const std::string& pattern, std::string& reason) {
    for (size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == '\\') {
            if (++i == pattern.size()) {
                reason = "a backslash ends the pattern";
                return false;
            }
        } else if (pattern[i] == '[') {
            size_t j = i + 1;
            if (j < pattern.size() && (pattern[j] == '!' || pattern[j] == '^')) ++j;
            if (j < pattern.size() && pattern[j] == ']') ++j;
            while (j < pattern.size() && pattern[j] != ']') ++j;
            if (j == pattern.size()) {
                reason = "the bracket expression at character " + std::to_string(i + 1) + " is not closed";
                return false;
            }
            i = j;
        }
    }
    return true;
}

class RuleReader {
public:
    RuleReader(const std::string& name, std::string& error) : m_name(name), m_error(error) {}

    bool Fail(const std::string& path, const std::string& what) {
        m_error = m_name + ": " + path + ": " + what;
        return false;
    }

    bool String(const cJSON* item, const std::string& path, std::string& value) {
        if (!cJSON_IsString(item))
            return Fail(path, std::string("expected a string, found ") + JsonTypeName(item));
        value = item->valuestring;
        return true;
    }

    bool Version(const cJSON* item, const std::string& path, Scheme scheme, std::string& value) {
        if (!String(item, path, value)) return false;
        std::string reason;
        if (!VersionParses(value, scheme, reason))
            return Fail(path, reason + " (scheme " + SchemeName(scheme) + ")");
        return true;
    }

    bool Read(const cJSON* item, const std::string& path, Rule& rule) {
        rule.path = path;
        if (!cJSON_IsObject(item))
            return Fail(path, std::string("expected an object, found ") + JsonTypeName(item));
        if (const cJSON* twice = Duplicate(item)) return Fail(path + "." + twice->string, "given twice");
        // The scheme first: the versions are checked against it.
        if (const cJSON* scheme = cJSON_GetObjectItemCaseSensitive(item, "scheme")) {
            std::string text;
            if (!String(scheme, path + ".scheme", text)) return false;
            if (!ParseScheme(text, rule.scheme))
                return Fail(path + ".scheme", "unknown scheme \"" + text + "\" (auto, numeric, hex or text)");
        }
        for (const cJSON* member = item->child; member != nullptr; member = member->next) {
            const std::string key = member->string;
            const std::string at = path + "." + key;
            if (key == "scheme") continue;
            if (key == "match") {
                if (!Match(member, at, rule)) return false;
            } else if (key == "min") {
                if (!Version(member, at, rule.scheme, rule.min)) return false;
                rule.hasMin = true;
            } else if (key == "max") {
                if (!Version(member, at, rule.scheme, rule.max)) return false;
                rule.hasMax = true;
            } else if (key == "exact") {
                if (!Version(member, at, rule.scheme, rule.exact)) return false;
                rule.hasExact = true;
            } else if (key == "allowed") {
                if (!cJSON_IsArray(member) || cJSON_GetArraySize(member) == 0)
                    return Fail(at, "expected a non-empty array of versions");
                int index = 0;
                for (const cJSON* version = member->child; version != nullptr;
                     version = version->next, ++index) {
                    rule.allowed.emplace_back();
                    if (!Version(version, at + "[" + std::to_string(index) + "]", rule.scheme,
                                 rule.allowed.back()))
                        return false;
                }
            } else if (key == "required") {
                if (!cJSON_IsBool(member))
                    return Fail(at, std::string("expected true or false, found ") + JsonTypeName(member));
                rule.required = cJSON_IsTrue(member);
            } else if (key == "module") {
                if (!String(member, at, rule.module)) return false;
                if (rule.module.empty() || rule.module[0] != '/')
                    return Fail(at, "a module is named by its directory, starting with /");
            } else if (key == "description") {
                if (!String(member, at, rule.description)) return false;
            } else {
                return Fail(at, "unknown key");
            }
        }
        if (rule.hasExact && (rule.hasMin || rule.hasMax || !rule.allowed.empty()))
            return Fail(path + ".exact", "exact excludes min, max and allowed");
        if (!rule.allowed.empty() && (rule.hasMin || rule.hasMax))
            return Fail(path + ".allowed", "allowed excludes min and max");
        if (rule.scheme == Scheme::Text && (rule.hasMin || rule.hasMax))
            return Fail(path + (rule.hasMin ? ".min" : ".max"),
                        "scheme text has no order; use exact or allowed");
        if (rule.hasMin && rule.hasMax) {
            const Comparison order = CompareVersions(rule.min, rule.max, rule.scheme);
            if (order.order == Order::Incomparable) return Fail(path + ".max", order.reason);
            if (order.order == Order::Greater) return Fail(path + ".max", "max is below min");
        }
        return true;
    }

private:
    bool Match(const cJSON* match, const std::string& path, Rule& rule) {
        if (!cJSON_IsObject(match))
            return Fail(path, std::string("expected an object, found ") + JsonTypeName(match));
        if (const cJSON* twice = Duplicate(match)) return Fail(path + "." + twice->string, "given twice");
        for (const cJSON* member = match->child; member != nullptr; member = member->next) {
            const std::string at = path + "." + member->string;
            if (!KnownMatchField(member->string)) return Fail(at, "unknown key");
            MatchCondition condition{member->string, ""};
            if (!String(member, at, condition.value)) return false;
            std::string reason;
            if (condition.field == "name" && !PatternValid(condition.value, reason))
                return Fail(at, "bad pattern \"" + condition.value + "\": " + reason);
            rule.match.push_back(std::move(condition));
        }
        return true;
    }

    const std::string& m_name;
    std::string& m_error;
};

}  // namespace

bool ParseBaseline(const std::string& text, const std::string& name, Baseline& baseline, std::string& error) {
    baseline = Baseline();
    baseline.source = name;
    JsonPtr json = ParseJsonText(text, name, error);
    if (!json) return false;
    RuleReader reader(name, error);
    const cJSON* root = json.get();
    if (!cJSON_IsObject(root))
        return reader.Fail("$", std::string("expected an object, found ") + JsonTypeName(root));
    if (const cJSON* twice = Duplicate(root))
        return reader.Fail(std::string("$.") + twice->string, "given twice");
    bool versioned = false, ruled = false;
    for (const cJSON* member = root->child; member != nullptr; member = member->next) {
        const std::string key = member->string;
        if (key == "schemaVersion") {
            if (!cJSON_IsNumber(member) || member->valuedouble != 1)
                return reader.Fail("$.schemaVersion", "expected 1");
            versioned = true;
        } else if (key == "rules") {
            if (!cJSON_IsArray(member))
                return reader.Fail("$.rules",
                                   std::string("expected an array, found ") + JsonTypeName(member));
            int index = 0;
            for (const cJSON* item = member->child; item != nullptr; item = item->next, ++index) {
                baseline.rules.emplace_back();
                if (!reader.Read(item, "$.rules[" + std::to_string(index) + "]", baseline.rules.back()))
                    return false;
            }
            ruled = true;
        } else if (key != "$schema" && key != "description") {
            return reader.Fail("$." + key, "unknown key");
        } else if (!cJSON_IsString(member)) {
            return reader.Fail("$." + key, std::string("expected a string, found ") + JsonTypeName(member));
        }
    }
    if (!versioned) return reader.Fail("$", "no schemaVersion");
    if (!ruled) return reader.Fail("$", "no rules");
    return true;
}

bool LoadBaseline(const std::string& path, Baseline& baseline, std::string& error) {
    std::string text;
    return ReadWholeFile(path, text, error) && ParseBaseline(text, path, baseline, error);
}

std::string ExpectedText(const Rule& rule) {
    if (rule.hasExact) return "=" + rule.exact;
    if (!rule.allowed.empty()) {
        std::string text = "one of ";
        for (size_t i = 0; i < rule.allowed.size(); ++i) text += (i > 0 ? ", " : "") + rule.allowed[i];
        return text;
    }
    if (rule.hasMin && rule.hasMax) return ">=" + rule.min + ", <=" + rule.max;
    if (rule.hasMin) return ">=" + rule.min;
    if (rule.hasMax) return "<=" + rule.max;
    return "any";
}

}  // namespace audit
