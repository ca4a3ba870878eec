#include "audit/fleet/Drift.h"

#include <cjson/cJSON.h>

#include <algorithm>
#include <map>
#include <memory>

namespace audit {
namespace fleet {

namespace {

struct JsonDeleter {
    void operator()(cJSON* json) const { cJSON_Delete(json); }
};
using Json = std::unique_ptr<cJSON, JsonDeleter>;

struct TextDeleter {
    void operator()(char* text) const { cJSON_free(text); }
};

}  // namespace

bool ComputeDrift(FleetStore& store, double maxSharePercent, std::vector<DriftGroup>& groups,
                  std::string& error) {
    std::vector<VersionCount> versions;
    std::vector<OutlierHost> outliers;
    if (!store.Drift(maxSharePercent, versions, outliers, error)) return false;
    std::map<std::string, DriftGroup> byGroup;
    for (const VersionCount& count : versions) {
        DriftGroup& group = byGroup[count.group];
        group.group = count.group;
        group.hosts = count.groupHosts;
        group.versions.emplace_back(count.version, count.hosts);
    }
    for (const OutlierHost& outlier : outliers)
        byGroup[outlier.group].outliers.emplace_back(outlier.host, outlier.version);
    groups.clear();
    for (auto& entry : byGroup) {
        DriftGroup& group = entry.second;
        std::sort(group.versions.begin(), group.versions.end(), [](const auto& a, const auto& b) {
            return a.second != b.second ? a.second > b.second : a.first < b.first;
        });
        std::sort(group.outliers.begin(), group.outliers.end(), [](const auto& a, const auto& b) {
            return a.second != b.second ? a.second < b.second : a.first < b.first;
        });
        groups.push_back(std::move(group));
    }
    return true;
}

void WriteDriftTable(const std::vector<DriftGroup>& groups, std::ostream& out) {
    if (groups.empty()) {
        out << "no drift: every group of like components runs one version\n";
        return;
    }
    for (const DriftGroup& group : groups) {
        out << group.group << " (" << group.hosts << (group.hosts == 1 ? " host)\n" : " hosts)\n");
        std::size_t width = 7;
        for (const auto& version : group.versions) width = std::max(width, version.first.size());
        out << "  " << std::string("VERSION") << std::string(width - 7 + 2, ' ') << "HOSTS\n";
        for (const auto& version : group.versions) {
            out << "  " << version.first << std::string(width - version.first.size() + 2, ' ')
                << version.second << '\n';
        }
        for (const auto& outlier : group.outliers)
            out << "  outlier " << outlier.first << ' ' << outlier.second << '\n';
    }
}

void WriteDriftJson(const std::vector<DriftGroup>& groups, double maxSharePercent, std::ostream& out) {
    Json root(cJSON_CreateObject());
    cJSON_AddNumberToObject(root.get(), "schemaVersion", 1);
    cJSON_AddNumberToObject(root.get(), "maxShare", maxSharePercent);
    cJSON* list = cJSON_AddArrayToObject(root.get(), "groups");
    for (const DriftGroup& group : groups) {
        cJSON* item = cJSON_CreateObject();
        cJSON_AddItemToArray(list, item);
        cJSON_AddStringToObject(item, "group", group.group.c_str());
        cJSON_AddNumberToObject(item, "hosts", static_cast<double>(group.hosts));
        cJSON* versions = cJSON_AddArrayToObject(item, "versions");
        for (const auto& version : group.versions) {
            cJSON* entry = cJSON_CreateObject();
            cJSON_AddItemToArray(versions, entry);
            cJSON_AddStringToObject(entry, "version", version.first.c_str());
            cJSON_AddNumberToObject(entry, "hosts", static_cast<double>(version.second));
        }
        cJSON* outliers = cJSON_AddArrayToObject(item, "outliers");
        for (const auto& outlier : group.outliers) {
            cJSON* entry = cJSON_CreateObject();
            cJSON_AddItemToArray(outliers, entry);
            cJSON_AddStringToObject(entry, "host", outlier.first.c_str());
            cJSON_AddStringToObject(entry, "version", outlier.second.c_str());
        }
    }
    std::unique_ptr<char, TextDeleter> text(cJSON_Print(root.get()));
    if (text) out << text.get() << '\n';
}

}  // namespace fleet
}  // namespace audit
