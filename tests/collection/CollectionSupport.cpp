#include "CollectionSupport.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cerrno>
#include <regex>
#include <sstream>

namespace collection {

const char kLockFile[] = "/var/lock/sorvik.tmp";
const char kAnotherInstance[] =
    "ERROR: Another instance of the Inventory Collector is currently active. Terminating\n";
const char kNoInstance[] = "No Instance of Inventory Collector is active \n";

namespace {

const key_t kProgressKey = static_cast<key_t>(0x94D553DF);

std::string Quote(const std::string& text) {
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

std::string ModuleJson(const Module& module) {
    std::vector<std::pair<std::string, std::string>> fields = {{"_dir", "/" + module.name},
                                                               {"_type", module.type},
                                                               {"__text", "run.sh"},
                                                               {"#GUID", module.guid},
                                                               {"_CmpType", module.compType},
                                                               {"_priority", module.priority},
                                                               {"_isParallelRunSupported", module.parallel}};
    std::string json = "{";
    for (const auto& field : fields) {
        if (field.second.empty()) continue;
        if (json.size() > 1) json += ", ";
        json += Quote(field.first) + ": " + Quote(field.second);
    }
    return json + "}";
}

std::string ModuleArray(const std::vector<Module>& modules) {
    std::string json = "[";
    for (size_t i = 0; i < modules.size(); ++i)
        json += (i ? ",\n      " : "\n      ") + ModuleJson(modules[i]);
    return json + "]";
}

std::string Declaration(const std::string& encoding) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n";
}

}  // namespace

std::string Emit(const std::string& text) { return "cat <<'SORVIK_END'\n" + text + "\nSORVIK_END\n"; }

std::string Append(const std::string& path, const std::string& line) {
    return "echo '" + line + "' >> '" + path + "'\n";
}

std::string InventoryXml(const std::string& body, const std::string& encoding) {
    const std::string root =
        "<SVMInventory lang=\"en\" schemaVersion=\"1.0\" timestamp=\"T\" "
        "sorvikVersion=\"21.09.200 (BLD_1155)\" sorvikBuild=\"1155\"";
    if (body.empty()) return Declaration(encoding) + root + "/>\n";
    return Declaration(encoding) + root + ">\n" + body + "</SVMInventory>\n";
}

std::string ErrorXml(const std::vector<std::pair<std::string, std::string>>& entries,
                     const std::string& encoding) {
    std::string xml = Declaration(encoding) + "<InventoryError lang=\"en\">\n";
    for (const auto& entry : entries) {
        xml += "  <SPStatus module=\"" + entry.first + "\" result=\"false\">\n";
        xml += "    <Message>" + entry.second + "</Message>\n";
        xml += "  </SPStatus>\n";
    }
    return xml + "</InventoryError>\n";
}

std::string ProgressXml(int total, int completed, const std::string& encoding) {
    return Declaration(encoding) + "<SorVikProgress lang=\"en\" timestamp=\"T\" totalInvComponents=\"" +
           std::to_string(total) + "\" completedInvComponents=\"" + std::to_string(completed) + "\"/>\n";
}

std::string NormalizeTimestamps(const std::string& document) {
    static const std::regex attribute("timestamp=\"([^\"]*)\"");
    static const std::regex shape("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}");
    for (auto it = std::sregex_iterator(document.begin(), document.end(), attribute);
         it != std::sregex_iterator(); ++it) {
        EXPECT_TRUE(std::regex_match((*it)[1].str(), shape)) << "timestamp " << (*it)[1].str();
    }
    return std::regex_replace(document, attribute, "timestamp=\"T\"");
}

std::string Utf16LeToUtf8(const std::string& bytes) {
    if (bytes.size() < 2 || static_cast<unsigned char>(bytes[0]) != 0xFF ||
        static_cast<unsigned char>(bytes[1]) != 0xFE) {
        ADD_FAILURE() << "no little-endian byte-order mark";
        return "";
    }
    EXPECT_EQ(bytes.size() % 2, 0u) << "odd number of bytes";
    std::string text;
    for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const unsigned unit =
            static_cast<unsigned char>(bytes[i]) | (static_cast<unsigned char>(bytes[i + 1]) << 8);
        // Only characters of the basic plane occur in these tests.
        if (unit < 0x80) {
            text += static_cast<char>(unit);
        } else if (unit < 0x800) {
            text += static_cast<char>(0xC0 | (unit >> 6));
            text += static_cast<char>(0x80 | (unit & 0x3F));
        } else {
            text += static_cast<char>(0xE0 | (unit >> 12));
            text += static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
            text += static_cast<char>(0x80 | (unit & 0x3F));
        }
    }
    return text;
}

bool ProgressSegmentExists() { return ::shmget(kProgressKey, 0, 0) >= 0; }

void RemoveProgressSegment() {
    const int id = ::shmget(kProgressKey, 0, 0);
    if (id >= 0) ::shmctl(id, IPC_RMID, nullptr);
}

void CollectionTest::SetUp() {
    ASSERT_FALSE(e2e::PathExists(kLockFile)) << kLockFile << " exists: is a collection running?";
    RemoveProgressSegment();
}

void CollectionTest::TearDown() {
    EXPECT_FALSE(e2e::PathExists(kLockFile)) << "a run left " << kLockFile;
    ::unlink(kLockFile);
    RemoveProgressSegment();
}

void CollectionTest::Install(const Config& config) const {
    std::string json = "{\n  \"SorVikConfig\": {\n";
    json += "    \"PreInstall\": " + ModuleArray(config.preInstall) + ",\n";
    json += "    \"PostInstall\": " + ModuleArray(config.postInstall) + ",\n";
    json += "    \"Generation\": [";
    for (size_t i = 0; i < config.generations.size(); ++i) {
        const auto& node = config.generations[i];
        json += (i ? ",\n" : "\n");
        json += "      {\"_type\": " + Quote(node.first) +
                ",\n       \"InvComponent\": " + ModuleArray(node.second) + "}";
    }
    json += "]\n  }\n}\n";
    WriteConfigText(json);

    auto writeModules = [this](const std::vector<Module>& modules) {
        for (const Module& module : modules)
            dir.WriteFile(module.name + "/run.sh", "#!/bin/sh\n" + module.script, 0755);
    };
    writeModules(config.preInstall);
    writeModules(config.postInstall);
    for (const auto& node : config.generations) writeModules(node.second);
}

void CollectionTest::WriteConfigText(const std::string& text) const {
    dir.WriteFile("icconfig_new.json", text);
}

e2e::ProcessResult CollectionTest::Run(std::vector<std::string> args,
                                       const std::map<std::string, std::string>& environment) const {
    e2e::RunOptions options;
    options.args = std::move(args);
    options.workingDirectory = dir.Path();
    options.environment = environment;
    return e2e::RunSorvik(options);
}

e2e::ProcessResult CollectionTest::RunWithSimulator(
    std::vector<std::string> args, const std::map<std::string, std::string>& environment) const {
    e2e::RunOptions options;
    options.args = {IPMISIM_RUN_SCRIPT, e2e::SorvikBinary()};
    options.args.insert(options.args.end(), args.begin(), args.end());
    options.workingDirectory = dir.Path();
    options.environment = environment;
    return e2e::RunProgram("/bin/sh", options);
}

std::vector<std::string> CollectionTest::Lines(const std::string& relative) const {
    std::vector<std::string> lines;
    if (!dir.Exists(relative)) return lines;
    std::istringstream stream(dir.ReadFile(relative));
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

}  // namespace collection
