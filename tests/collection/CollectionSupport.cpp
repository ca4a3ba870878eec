#include "CollectionSupport.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>

#include <algorithm>
#include <regex>
#include <sstream>

namespace collection {

const char kLockFile[] = "/var/lock/sorvik.tmp";
const char kAnotherInstance[] =
    "ERROR: Another instance of the Inventory Collector is currently active. Terminating\n";

namespace {

const key_t kProgressKey = static_cast<key_t>(0x94D553DF);

std::string ModuleArray(const std::vector<Module>& modules) {
    std::string json = "[";
    for (const Module& m : modules) {
        // clang-format off
        const std::pair<const char*, std::string> fields[] = {{"_dir", "/" + m.name}, {"_type", m.type},
            {"__text", "run.sh"}, {"#GUID", m.guid}, {"_CmpType", m.compType}, {"_priority", m.priority},
            {"_isParallelRunSupported", m.parallel}};
        // clang-format on
        std::string object;
        for (const auto& field : fields)
            if (!field.second.empty())
                object += std::string(object.empty() ? "\"" : ", \"") + field.first + "\": \"" +
                          field.second + "\"";
        json += (json.size() > 1 ? ",\n  {" : "\n  {") + object + "}";
    }
    return json + "]";
}

std::string Declaration(const std::string& encoding) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n";
}

void RemoveProgressSegment() {
    const int id = ::shmget(kProgressKey, 0, 0);
    if (id >= 0) ::shmctl(id, IPC_RMID, nullptr);
}

}  // namespace

Config GenericOnly(std::vector<Module> modules) {
    Config config;
    config.generations = {{"Generic", std::move(modules)}};
    return config;
}

std::string Emit(const std::string& text) { return "cat <<'SORVIK_END'\n" + text + "\nSORVIK_END\n"; }

std::string DeviceDoc(const std::string& id) {
    return "<SVMInventory><Device componentID=\"" + id + "\" display=\"D" + id +
           "\"><Application componentType=\"FRMW\" version=\"1\" display=\"A" + id +
           "\"/></Device></SVMInventory>";
}

std::string DeviceBody(const std::string& id) {
    return "  <Device display=\"D" + id + "\" componentID=\"" + id + "\">\n    <Application display=\"A" +
           id + "\" version=\"1\" componentType=\"FRMW\"/>\n  </Device>\n";
}

std::string InventoryXml(const std::string& body, const std::string& encoding) {
    const std::string root =
        "<SVMInventory lang=\"en\" schemaVersion=\"1.0\" timestamp=\"T\" "
        "sorvikVersion=\"21.09.200 (BLD_1155)\" sorvikBuild=\"1155\"";
    if (body.empty()) return Declaration(encoding) + root + "/>\n";
    return Declaration(encoding) + root + ">\n" + body + "</SVMInventory>\n";
}

std::string ErrorXml(const Errors& entries, const std::string& encoding) {
    std::string xml = Declaration(encoding) + "<InventoryError lang=\"en\">\n";
    for (const auto& entry : entries)
        xml += "  <SPStatus module=\"" + entry.first + "\" result=\"false\">\n    <Message>" + entry.second +
               "</Message>\n  </SPStatus>\n";
    return xml + "</InventoryError>\n";
}

std::string ProgressXml(int total, int completed) {
    return Declaration("UTF-8") + "<SorVikProgress lang=\"en\" timestamp=\"T\" totalInvComponents=\"" +
           std::to_string(total) + "\" completedInvComponents=\"" + std::to_string(completed) + "\"/>\n";
}

std::string NormalizeTimestamps(const std::string& document) {
    static const std::regex attribute("timestamp=\"([^\"]*)\"");
    static const std::regex shape("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}");
    for (auto it = std::sregex_iterator(document.begin(), document.end(), attribute);
         it != std::sregex_iterator(); ++it)
        EXPECT_TRUE(std::regex_match((*it)[1].str(), shape)) << "timestamp " << (*it)[1].str();
    return std::regex_replace(document, attribute, "timestamp=\"T\"");
}

std::string Utf16LeToUtf8(const std::string& bytes) {
    if (bytes.size() < 2 || bytes.compare(0, 2, "\xFF\xFE") != 0) {
        ADD_FAILURE() << "no little-endian byte-order mark";
        return "";
    }
    EXPECT_EQ(bytes.size() % 2, 0u) << "odd number of bytes";
    std::string text;
    for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const unsigned u =
            static_cast<unsigned char>(bytes[i]) | (static_cast<unsigned char>(bytes[i + 1]) << 8);
        EXPECT_LT(u, 0x800u) << "only one- and two-byte characters occur here";
        if (u < 0x80)
            text += static_cast<char>(u);
        else
            text += {static_cast<char>(0xC0 | (u >> 6)), static_cast<char>(0x80 | (u & 0x3F))};
    }
    return text;
}

void ExpectResult(const e2e::ProcessResult& result, int exitStatus, const std::string& out,
                  const std::string& err) {
    EXPECT_EQ(result.exitStatus, exitStatus) << result.err;
    EXPECT_EQ(NormalizeTimestamps(result.out), out);
    EXPECT_EQ(result.err, err);
}

bool ProgressSegmentExists() { return ::shmget(kProgressKey, 0, 0) >= 0; }

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
    std::string json = "{\"SorVikConfig\": {\n\"PreInstall\": " + ModuleArray(config.preInstall) +
                       ",\n\"PostInstall\": " + ModuleArray(config.postInstall) + ",\n\"Generation\": [";
    for (const auto& node : config.generations)
        json += std::string(json.back() == '[' ? "\n" : ",\n") + "{\"_type\": \"" + node.first + "\"" +
                ", \"InvComponent\": " + ModuleArray(node.second) + "}";
    WriteConfigText(json + "]\n}}\n");

    auto write = [this](const std::vector<Module>& modules) {
        for (const Module& m : modules) dir.WriteFile(m.name + "/run.sh", "#!/bin/sh\n" + m.script, 0755);
    };
    write(config.preInstall);
    write(config.postInstall);
    for (const auto& node : config.generations) write(node.second);
}

e2e::ProcessResult CollectionTest::Run(const Args& args,
                                       const std::map<std::string, std::string>& environment) const {
    e2e::RunOptions options;
    options.workingDirectory = dir.Path();
    options.environment = environment;
    options.args = args;
    e2e::ProcessResult result = e2e::RunSorvik(options);
    EXPECT_TRUE(result.exited) << result.err;
    return result;
}

std::string CollectionTest::Note(const std::string& line) const {
    return "echo '" + line + "' >> '" + dir.PathOf("ran.log") + "'\n";
}

std::vector<std::string> CollectionTest::Ran(bool sorted) const {
    std::vector<std::string> lines;
    if (!dir.Exists("ran.log")) return lines;
    std::istringstream stream(dir.ReadFile("ran.log"));
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    if (sorted) std::sort(lines.begin(), lines.end());
    return lines;
}

void CollectionTest::ForgetRan() const { ::unlink(dir.PathOf("ran.log").c_str()); }

}  // namespace collection
