#include "audit/fleet/FleetCheck.h"

#include <cjson/cJSON.h>

#include <algorithm>
#include <memory>

namespace audit {
namespace fleet {

namespace {

const Verdict kCounted[] = {Verdict::Compliant, Verdict::Outdated, Verdict::Newer, Verdict::Unknown,
                            Verdict::Missing};

struct JsonDeleter {
    void operator()(cJSON* json) const { cJSON_Delete(json); }
};
struct TextDeleter {
    void operator()(char* text) const { cJSON_free(text); }
};

std::size_t Count(const HostCheck& host, Verdict verdict) {
    auto found = host.counts.find(verdict);
    return found == host.counts.end() ? 0 : found->second;
}

void WriteRow(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths,
              std::ostream& out) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
        out << cells[i];
        if (i + 1 < cells.size()) out << std::string(widths[i] - cells[i].size() + 2, ' ');
    }
    out << '\n';
}

void WriteTable(const std::vector<std::vector<std::string>>& rows, std::ostream& out) {
    std::vector<std::size_t> widths(rows[0].size(), 0);
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    for (const auto& row : rows) WriteRow(row, widths, out);
}

std::string Upper(const char* text) {
    std::string upper = text;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return upper;
}

}  // namespace

bool CheckFleet(FleetStore& store, const Baseline& baseline, std::vector<HostCheck>& hosts,
                std::string& error) {
    std::vector<CollectionRecord> collections;
    if (!store.LatestCollections(collections, error)) return false;
    hosts.clear();
    for (CollectionRecord& collection : collections) {
        HostCheck host;
        host.host = collection.host;
        host.collectedAt = collection.collectedAt;
        collection.inventory.failures = collection.failures;
        for (ComponentVerdict& verdict : CheckInventory(baseline, collection.inventory, nullptr, false)) {
            ++host.counts[verdict.verdict];
            if (verdict.verdict != Verdict::Compliant && verdict.verdict != Verdict::Unmatched) {
                host.nonCompliant.push_back(std::move(verdict));
            }
        }
        hosts.push_back(std::move(host));
    }
    return true;
}

bool FleetCompliant(const std::vector<HostCheck>& hosts) {
    return std::all_of(hosts.begin(), hosts.end(),
                       [](const HostCheck& host) { return host.nonCompliant.empty(); });
}

void WriteFleetCheckTable(const std::vector<HostCheck>& hosts, std::ostream& out) {
    std::vector<std::vector<std::string>> counts = {{"HOST"}};
    for (Verdict verdict : kCounted) counts[0].push_back(Upper(VerdictName(verdict)));
    for (const HostCheck& host : hosts) {
        counts.push_back({host.host});
        for (Verdict verdict : kCounted) counts.back().push_back(std::to_string(Count(host, verdict)));
    }
    WriteTable(counts, out);
    std::vector<std::vector<std::string>> components = {
        {"HOST", "VERDICT", "COMPONENT", "VERSION", "EXPECTED", "REASON"}};
    for (const HostCheck& host : hosts) {
        for (const ComponentVerdict& verdict : host.nonCompliant) {
            components.push_back({host.host, VerdictName(verdict.verdict), verdict.component.name,
                                  verdict.component.version, verdict.expected, verdict.reason});
        }
    }
    if (components.size() > 1) {
        out << '\n';
        WriteTable(components, out);
    }
}

void WriteFleetCheckJson(const std::vector<HostCheck>& hosts, std::ostream& out) {
    std::unique_ptr<cJSON, JsonDeleter> root(cJSON_CreateObject());
    cJSON_AddNumberToObject(root.get(), "schemaVersion", 1);
    cJSON* totals = cJSON_AddObjectToObject(root.get(), "totals");
    cJSON* list = cJSON_AddArrayToObject(root.get(), "hosts");
    for (Verdict verdict : kCounted) {
        std::size_t sum = 0;
        for (const HostCheck& host : hosts) sum += Count(host, verdict);
        cJSON_AddNumberToObject(totals, VerdictName(verdict), static_cast<double>(sum));
    }
    for (const HostCheck& host : hosts) {
        cJSON* item = cJSON_CreateObject();
        cJSON_AddItemToArray(list, item);
        cJSON_AddStringToObject(item, "host", host.host.c_str());
        cJSON_AddNumberToObject(item, "collectedAt", static_cast<double>(host.collectedAt));
        cJSON* counts = cJSON_AddObjectToObject(item, "counts");
        for (Verdict verdict : kCounted) {
            cJSON_AddNumberToObject(counts, VerdictName(verdict), static_cast<double>(Count(host, verdict)));
        }
        cJSON* components = cJSON_AddArrayToObject(item, "components");
        for (const ComponentVerdict& verdict : host.nonCompliant) {
            const Component& c = verdict.component;
            cJSON* entry = cJSON_CreateObject();
            cJSON_AddItemToArray(components, entry);
            cJSON_AddStringToObject(entry, "verdict", VerdictName(verdict.verdict));
            const std::pair<const char*, const std::string*> fields[] = {
                {"name", &c.name},
                {"componentType", &c.componentType},
                {"componentID", &c.componentID},
                {"fqdd", &c.fqdd},
                {"componentInstance", &c.componentInstance},
                {"vendorID", &c.vendorID},
                {"deviceID", &c.deviceID},
                {"subVendorID", &c.subVendorID},
                {"subDeviceID", &c.subDeviceID},
                {"version", &c.version},
                {"expected", &verdict.expected},
                {"reason", &verdict.reason}};
            for (const auto& field : fields)
                cJSON_AddStringToObject(entry, field.first, field.second->c_str());
        }
    }
    std::unique_ptr<char, TextDeleter> text(cJSON_Print(root.get()));
    if (text) out << text.get() << '\n';
}

}  // namespace fleet
}  // namespace audit
