#ifndef CQVRCONFIGPARSER_H
#define CQVRCONFIGPARSER_H

#include <set>
#include <string>
#include <vector>

#include "CQVRModuleDetail.h"

struct cJSON;

// Reads the module configuration file (JSON, root key "SorVikConfig") once and
// hands out the module records of its sections "PreInstall", "PostInstall" and
// "Generation". Keys are matched exactly and case-sensitively. Records handed
// out belong to the receiver of the vector. Not thread-safe.
class CQVRConfigParser {
public:
    CQVRConfigParser();
    CQVRConfigParser(const CQVRConfigParser&) = delete;
    CQVRConfigParser& operator=(const CQVRConfigParser&) = delete;
    ~CQVRConfigParser();

    // Reads the file line by line (each line end becomes one space) and parses
    // it. True only when the file opened, was not empty and parsed. Prints
    // "Error! Incorrect file!!" and a newline on standard output when the file
    // cannot be opened. Once initialised, or with a null path, returns the
    // current state without doing anything.
    bool Initilaize(const char* path);
    bool IsInitialized() const { return m_isInitialized; }

    // Appends the records of one section to out. 0 when out is non-empty
    // afterwards, 2 otherwise (not initialised, no "SorVikConfig", unknown
    // section, record allocation failure in "PreInstall"/"PostInstall").
    int ParseConfig(const std::set<std::string>* generationNames, const std::string& section,
                    std::vector<CQVRModuleDetail*>& out);

    // The "Generation" walk: the modules of every generation node whose "_type"
    // is in generationNames, in file order. Always 0.
    int ParseGenerationNodeObj(cJSON* configRoot, const std::set<std::string>* generationNames,
                               std::vector<CQVRModuleDetail*>& out);
    // Walk the array under key of configRoot, respectively under "InvComponent"
    // of node: 0 when missing or walked to the end, 2 when an entry yielded no
    // record (later entries are not read).
    int ParseMandatoryInstallObj(cJSON* configRoot, std::string key, std::vector<CQVRModuleDetail*>& out);
    int ParseInvComponentObj(cJSON* node, std::vector<CQVRModuleDetail*>& out);

    // Builds one record from one array element; *out is null when it could
    // not be allocated.
    void PopulateModuleDetails(cJSON* entry, CQVRModuleDetail** out);

    // The value rule: the member printed back to JSON text; "null", a missing
    // member and texts shorter than two characters read empty; a quoted text
    // loses its two quotes (nothing is unescaped); anything else stays as printed.
    std::string ExtractJSONStrValue(cJSON* object, const char* key);

    // Two or more characters: out becomes text without its surrounding double
    // quotes when it has both, else text unchanged. Shorter (or null) text
    // leaves out untouched.
    void StripJSONStringEndQuotes(const char* text, std::string& out);

private:
    // Appends one record per element of array; false as soon as one could not
    // be built.
    bool WalkModuleArray(cJSON* array, std::vector<CQVRModuleDetail*>& out);

    bool m_isInitialized;
    cJSON* m_root;
    std::string m_content;
};

#endif
