#include "CQVRConfigParser.h"

#include <cJSON.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <new>

namespace {

const char* const kConfigRootKey = "SorVikConfig";
const char* const kPreInstall = "PreInstall";
const char* const kPostInstall = "PostInstall";
const char* const kGeneration = "Generation";
const char* const kInvComponent = "InvComponent";

// Owns one cJSON_Print result.
class PrintedJSON {
public:
    explicit PrintedJSON(const cJSON* item) : m_text(item != nullptr ? cJSON_Print(item) : nullptr) {}
    ~PrintedJSON() {
        if (m_text != nullptr) cJSON_free(m_text);
    }
    PrintedJSON(const PrintedJSON&) = delete;
    PrintedJSON& operator=(const PrintedJSON&) = delete;
    const char* get() const { return m_text; }

private:
    char* m_text;
};

cJSON* Member(cJSON* object, const char* key) {
    if (object == nullptr || key == nullptr) return nullptr;
    return cJSON_GetObjectItemCaseSensitive(object, key);
}

}  // namespace

CQVRConfigParser::CQVRConfigParser() : m_isInitialized(false), m_root(nullptr) {}

CQVRConfigParser::~CQVRConfigParser() {
    if (m_root != nullptr) cJSON_Delete(m_root);
}

bool CQVRConfigParser::Initilaize(const char* path) {
    if (m_isInitialized || path == nullptr) return m_isInitialized;
    std::ifstream file(path, std::ios::in | std::ios::binary);
    if (!file.is_open()) {
        std::fputs("Error! Incorrect file!!\n", stdout);
        std::fflush(stdout);
        return false;
    }
    // The JSON text is parsed as one long line: every line end becomes a space.
    m_content.clear();
    std::string line;
    while (std::getline(file, line)) {
        m_content += line;
        m_content += ' ';
    }
    file.close();
    if (m_content.empty()) return false;
    cJSON* root = cJSON_Parse(m_content.c_str());
    if (root == nullptr) return false;
    m_root = root;
    m_isInitialized = true;
    return true;
}

int CQVRConfigParser::ParseConfig(const std::set<std::string>* generationNames, const std::string& section,
                                  std::vector<CQVRModuleDetail*>& out) {
    if (!m_isInitialized) return 2;
    cJSON* config = Member(m_root, kConfigRootKey);
    if (config == nullptr) return 2;
    if (section == kPreInstall || section == kPostInstall) {
        cJSON* array = Member(config, section.c_str());
        if (array != nullptr && !WalkModuleArray(array, out)) return 2;
    } else if (section == kGeneration) {
        ParseGenerationNodeObj(config, generationNames, out);
    } else {
        return 2;
    }
    return out.empty() ? 2 : 0;
}

int CQVRConfigParser::ParseGenerationNodeObj(cJSON* configRoot, const std::set<std::string>* generationNames,
                                             std::vector<CQVRModuleDetail*>& out) {
    cJSON* nodes = Member(configRoot, kGeneration);
    if (nodes == nullptr) return 0;
    cJSON* node = nullptr;
    cJSON_ArrayForEach(node, nodes) {
        if (cJSON_IsNull(node)) continue;
        const std::string type = ExtractJSONStrValue(node, "_type");
        if (generationNames == nullptr || generationNames->count(type) == 0) continue;
        // A record that cannot be built ends this node only.
        WalkModuleArray(Member(node, kInvComponent), out);
    }
    return 0;
}

int CQVRConfigParser::ParseMandatoryInstallObj(cJSON* configRoot, std::string key,
                                               std::vector<CQVRModuleDetail*>& out) {
    return WalkModuleArray(Member(configRoot, key.c_str()), out) ? 0 : 2;
}

int CQVRConfigParser::ParseInvComponentObj(cJSON* node, std::vector<CQVRModuleDetail*>& out) {
    return WalkModuleArray(Member(node, kInvComponent), out) ? 0 : 2;
}

bool CQVRConfigParser::WalkModuleArray(cJSON* array, std::vector<CQVRModuleDetail*>& out) {
    if (array == nullptr) return true;
    // Walked through the sibling links: cJSON_GetArrayItem would make a long
    // array quadratic.
    cJSON* entry = nullptr;
    cJSON_ArrayForEach(entry, array) {
        CQVRModuleDetail* record = nullptr;
        PopulateModuleDetails(entry, &record);
        if (record == nullptr) return false;
        out.push_back(record);
    }
    return true;
}

void CQVRConfigParser::PopulateModuleDetails(cJSON* entry, CQVRModuleDetail** out) {
    if (out == nullptr) return;
    CQVRModuleDetail* record = new (std::nothrow) CQVRModuleDetail();
    *out = record;
    if (record == nullptr) return;
    record->workingDir = ExtractJSONStrValue(entry, "_dir");
    record->configuredDir = record->workingDir;
    record->type = ExtractJSONStrValue(entry, "_type");
    record->commandLine = ExtractJSONStrValue(entry, "__text");
    record->guid = ExtractJSONStrValue(entry, "#GUID");
    record->priority = ExtractJSONStrValue(entry, "_priority");
    record->compType = ExtractJSONStrValue(entry, "_CmpType");
    record->isParallelRunSupported = ExtractJSONStrValue(entry, "_isParallelRunSupported");
}

std::string CQVRConfigParser::ExtractJSONStrValue(cJSON* object, const char* key) {
    cJSON* member = Member(object, key);
    if (member == nullptr) return std::string();
    const PrintedJSON printed(member);
    if (printed.get() == nullptr || std::strcmp(printed.get(), "null") == 0) return std::string();
    std::string value;
    StripJSONStringEndQuotes(printed.get(), value);
    return value;
}

void CQVRConfigParser::StripJSONStringEndQuotes(const char* text, std::string& out) {
    if (text == nullptr) return;
    const std::size_t length = std::strlen(text);
    if (length < 2) return;
    if (text[0] == '"' && text[length - 1] == '"')
        out.assign(text + 1, length - 2);
    else
        out.assign(text, length);
}
