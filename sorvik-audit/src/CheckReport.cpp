#include "audit/CheckReport.h"

#include <map>

#include "JsonText.h"
#include "TextTable.h"

namespace audit {
namespace {

const char* Colour(Verdict verdict) {
    switch (verdict) {
        case Verdict::Compliant:
            return "32";
        case Verdict::Outdated:
        case Verdict::Missing:
            return "31";
        case Verdict::Newer:
        case Verdict::Unknown:
            return "33";
        case Verdict::Unmatched:
            return "2";
    }
    return "";
}

const std::string& HostName(const Inventory& inventory) {
    return inventory.systemID.empty() ? inventory.source : inventory.systemID;
}

// The identifying fields, in the inventory's own JSON names, when not empty.
std::string IdentityMembers(const Component& c, const std::string& indent) {
    const std::pair<const char*, const std::string*> fields[] = {{"name", &c.name},
                                                                 {"componentType", &c.componentType},
                                                                 {"componentID", &c.componentID},
                                                                 {"componentInstance", &c.componentInstance},
                                                                 {"fqdd", &c.fqdd},
                                                                 {"vendorID", &c.vendorID},
                                                                 {"deviceID", &c.deviceID},
                                                                 {"subVendorID", &c.subVendorID},
                                                                 {"subDeviceID", &c.subDeviceID}};
    std::string text;
    for (const auto& field : fields)
        if (!field.second->empty())
            text += ",\n" + indent + "\"" + field.first + "\": " + JsonString(*field.second);
    return text;
}

}  // namespace

bool AllCompliant(const std::vector<HostVerdicts>& hosts) {
    for (const HostVerdicts& host : hosts)
        for (const ComponentVerdict& verdict : host.verdicts)
            if (verdict.verdict != Verdict::Compliant && verdict.verdict != Verdict::Unmatched) return false;
    return true;
}

std::string CheckTable(const std::vector<HostVerdicts>& hosts, bool colour) {
    TextTable table({"VERDICT", "HOST", "TYPE", "NAME", "VERSION", "EXPECTED", "REASON"});
    std::map<Verdict, size_t> counts;
    size_t total = 0;
    for (const HostVerdicts& host : hosts) {
        for (const ComponentVerdict& v : host.verdicts) {
            table.Add({VerdictName(v.verdict), HostName(*host.inventory), v.component.componentType,
                       v.component.name, v.component.version, v.expected, v.reason},
                      Colour(v.verdict));
            ++counts[v.verdict];
            ++total;
        }
    }
    std::string summary = std::to_string(total) + (total == 1 ? " component" : " components");
    std::string parts;
    for (const auto& count : counts)
        parts +=
            (parts.empty() ? ": " : ", ") + std::to_string(count.second) + " " + VerdictName(count.first);
    return table.Text(colour) + summary + parts + "\n";
}

std::string CheckJson(const std::vector<HostVerdicts>& hosts, const std::string& baseline) {
    std::map<Verdict, size_t> counts;
    std::string inventories;
    for (const HostVerdicts& host : hosts) {
        const Inventory& inventory = *host.inventory;
        std::string failed;
        for (const ModuleFailure& failure : inventory.failures)
            failed += (failed.empty() ? "" : ", ") + JsonString(failure.module);
        std::string components;
        for (const ComponentVerdict& v : host.verdicts) {
            ++counts[v.verdict];
            components += std::string(components.empty() ? "" : ",") +
                          "\n        {\n          \"verdict\": " + JsonString(VerdictName(v.verdict)) +
                          ",\n          \"version\": " + JsonString(v.component.version) +
                          ",\n          \"expected\": " + JsonString(v.expected) +
                          ",\n          \"reason\": " + JsonString(v.reason) +
                          ",\n          \"rule\": " + std::to_string(v.rule) +
                          ",\n          \"key\": " + JsonString(ComponentKey(v.component)) +
                          IdentityMembers(v.component, "          ") + "\n        }";
        }
        inventories += std::string(inventories.empty() ? "" : ",") +
                       "\n    {\n      \"source\": " + JsonString(inventory.source) +
                       ",\n      \"systemID\": " + JsonString(inventory.systemID) +
                       ",\n      \"failedModules\": [" + failed + "],\n      \"components\": [" + components +
                       (components.empty() ? "]" : "\n      ]") + "\n    }";
    }
    std::string summary;
    for (Verdict verdict : {Verdict::Compliant, Verdict::Outdated, Verdict::Newer, Verdict::Unknown,
                            Verdict::Missing, Verdict::Unmatched})
        summary += std::string(summary.empty() ? "" : ", ") + "\"" + VerdictName(verdict) +
                   "\": " + std::to_string(counts[verdict]);
    return "{\n  \"reportVersion\": 1,\n  \"command\": \"check\",\n  \"baseline\": " + JsonString(baseline) +
           ",\n  \"compliant\": " + (AllCompliant(hosts) ? "true" : "false") + ",\n  \"summary\": {" +
           summary + "},\n  \"inventories\": [" + inventories + (inventories.empty() ? "]" : "\n  ]") +
           "\n}\n";
}

std::string PrometheusLabel(const std::string& value) {
    std::string out;
    out.reserve(value.size());
    for (char c : value) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '"')
            out += "\\\"";
        else if (c == '\n')
            out += "\\n";
        else
            out += c;
    }
    return out;
}

std::string CheckPrometheus(const std::vector<HostVerdicts>& hosts, std::time_t now) {
    std::string text =
        "# HELP sorvik_component_compliant 1 when the component's version meets the baseline, else 0.\n"
        "# TYPE sorvik_component_compliant gauge\n";
    for (const HostVerdicts& host : hosts) {
        for (const ComponentVerdict& v : host.verdicts) {
            if (v.verdict == Verdict::Unmatched) continue;
            const Component& c = v.component;
            const std::pair<const char*, const std::string*> labels[] = {
                {"system_id", &host.inventory->systemID},
                {"component_type", &c.componentType},
                {"name", &c.name},
                {"component_id", &c.componentID},
                {"component_instance", &c.componentInstance},
                {"fqdd", &c.fqdd},
                {"vendor_id", &c.vendorID},
                {"device_id", &c.deviceID},
                {"sub_vendor_id", &c.subVendorID},
                {"sub_device_id", &c.subDeviceID},
                {"version", &c.version},
                {"expected", &v.expected}};
            text += "sorvik_component_compliant{";
            for (const auto& label : labels)
                text += std::string(label.first) + "=\"" + PrometheusLabel(*label.second) + "\",";
            text += std::string("verdict=\"") + VerdictName(v.verdict) + "\"} " +
                    (v.verdict == Verdict::Compliant ? "1" : "0") + "\n";
        }
    }
    text +=
        "# HELP sorvik_audit_last_run_timestamp_seconds When sorvik-audit check wrote this file, in Unix "
        "time.\n"
        "# TYPE sorvik_audit_last_run_timestamp_seconds gauge\n"
        "sorvik_audit_last_run_timestamp_seconds " +
        std::to_string(static_cast<long long>(now)) + "\n";
    return text;
}

}  // namespace audit
