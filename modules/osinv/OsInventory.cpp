#include "OsInventory.h"

#include <sys/utsname.h>

#include "svm/Sysfs.h"
#include "svm/TextUtil.h"

namespace svm {
namespace {

std::string Unquote(const std::string& raw) {
    std::string v = Trim(raw);
    if (v.size() >= 2 && (v[0] == '"' || v[0] == '\'') && v.back() == v[0]) {
        char quote = v[0];
        std::string out;
        for (size_t i = 1; i + 1 < v.size(); ++i) {
            if (quote == '"' && v[i] == '\\' && i + 2 < v.size()) ++i;
            out += v[i];
        }
        return out;
    }
    return v;
}

std::string Field(const std::map<std::string, std::string>& fields, const char* key) {
    auto it = fields.find(key);
    return it == fields.end() ? std::string() : it->second;
}

std::string Arch(const Sysfs& fs) {
    std::string arch = fs.ReadLineOr("/proc/sys/kernel/arch");
    if (!arch.empty() || fs.Root() != "/") return arch;
    struct utsname names;
    return ::uname(&names) == 0 ? std::string(names.machine) : std::string();
}

}  // namespace

std::map<std::string, std::string> ParseOsRelease(const std::string& text) {
    std::map<std::string, std::string> fields;
    for (const std::string& rawLine : Split(text, '\n')) {
        std::string line = Trim(rawLine);
        if (line.empty() || line[0] == '#') continue;
        size_t eq = line.find('=');
        if (eq == 0 || eq == std::string::npos) continue;
        std::string key = Trim(line.substr(0, eq));
        if (key.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_") != std::string::npos) continue;
        fields[key] = Unquote(line.substr(eq + 1));
    }
    return fields;
}

OperatingSystemInfo MakeOperatingSystem(const std::map<std::string, std::string>& fields,
                                        const std::string& arch) {
    OperatingSystemInfo os;
    os.osVendor = Field(fields, "VENDOR_NAME");
    if (os.osVendor.empty()) os.osVendor = Field(fields, "NAME");
    os.osCode = Field(fields, "ID");
    os.name = Field(fields, "PRETTY_NAME");
    if (os.name.empty()) os.name = Field(fields, "NAME");
    std::string version = Field(fields, "VERSION_ID");
    size_t dot = version.find('.');
    os.majorVersion = version.substr(0, dot);
    if (dot != std::string::npos) os.minorVersion = version.substr(dot + 1);
    os.buildNumber = Field(fields, "BUILD_ID");
    os.osArch = arch;
    return os;
}

void CollectOsInventory(const ModuleOptions& options, SvmDocument& doc) {
    Sysfs fs(options.root);
    std::string text, error, fallbackError;
    if (!fs.ReadFile("/etc/os-release", text, error, 65536) &&
        !fs.ReadFile("/usr/lib/os-release", text, fallbackError, 65536)) {
        doc.AddFailure("Operating system inventory: " + error + "; " + fallbackError);
        return;
    }
    std::map<std::string, std::string> fields = ParseOsRelease(text);
    if (Field(fields, "ID").empty() && Field(fields, "NAME").empty()) {
        doc.AddFailure(
            "Operating system inventory: os-release names no operating system (no ID and no NAME)");
        return;
    }
    doc.AddOperatingSystem(MakeOperatingSystem(fields, Arch(fs)));
}

}  // namespace svm
