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

}  // namespace

bool AllCompliant(const std::vector<HostVerdicts>& hosts) {
    for (const HostVerdicts& host : hosts)
        for (const ComponentVerdict& verdict : host.verdicts)
            if (verdict.verdict != Verdict::Compliant && verdict.verdict != Verdict::Unmatched) return false;
    return true;
}

std::string CheckTable(const std::vector<HostVerdicts>& hosts, bool colour) {
    std::map<Verdict, size_t> counts;
    size_t total = 0;
    for (const HostVerdicts& host : hosts) {
        for (const ComponentVerdict& v : host.verdicts) {
            ++counts[v.verdict];
            ++total;
        }
    }
    std::string text = RenderTable(
        {"VERDICT", "HOST", "TYPE", "NAME", "VERSION", "EXPECTED", "REASON"},
        [&hosts](const RowVisitor& visit) {
            for (const HostVerdicts& host : hosts)
                for (const ComponentVerdict& v : host.verdicts)
                    visit({VerdictName(v.verdict), HostName(*host.inventory), v.component.componentType,
                           v.component.name, v.component.version, v.expected, v.reason},
                          Colour(v.verdict));
        },
        colour);
    std::string summary = std::to_string(total) + (total == 1 ? " component" : " components");
    std::string parts;
    for (const auto& count : counts)
        parts +=
            (parts.empty() ? ": " : ", ") + std::to_string(count.second) + " " + VerdictName(count.first);
    text.append(summary).append(parts).append("\n");
    return text;
}

std::string CheckJson(const std::vector<HostVerdicts>& hosts, const std::string& baseline) {
    std::map<Verdict, size_t> counts;
    size_t total = 0;
    for (const HostVerdicts& host : hosts) {
        for (const ComponentVerdict& v : host.verdicts) ++counts[v.verdict];
        total += host.verdicts.size();
    }
    std::string summary;
    for (Verdict verdict : {Verdict::Compliant, Verdict::Outdated, Verdict::Newer, Verdict::Unknown,
                            Verdict::Missing, Verdict::Unmatched})
        summary += std::string(summary.empty() ? "" : ", ") + "\"" + VerdictName(verdict) +
                   "\": " + std::to_string(counts[verdict]);
    // One string appended in place: a report of 100,000 components is large.
    std::string out;
    out.reserve(512 * total + 1024);
    out.append("{\n  \"reportVersion\": 1,\n  \"command\": \"check\",\n  \"baseline\": ")
        .append(JsonString(baseline))
        .append(",\n  \"compliant\": ")
        .append(AllCompliant(hosts) ? "true" : "false")
        .append(",\n  \"summary\": {")
        .append(summary)
        .append("},\n  \"inventories\": [");
    for (size_t h = 0; h < hosts.size(); ++h) {
        const Inventory& inventory = *hosts[h].inventory;
        out.append(h > 0 ? ",\n    {\n      \"source\": " : "\n    {\n      \"source\": ")
            .append(JsonString(inventory.source))
            .append(",\n      \"systemID\": ")
            .append(JsonString(inventory.systemID))
            .append(",\n      \"failedModules\": [");
        for (size_t f = 0; f < inventory.failures.size(); ++f)
            out.append(f > 0 ? ", " : "").append(JsonString(inventory.failures[f].module));
        out.append("],\n      \"components\": [");
        const auto& verdicts = hosts[h].verdicts;
        for (size_t i = 0; i < verdicts.size(); ++i) {
            const ComponentVerdict& v = verdicts[i];
            out.append(i > 0 ? ",\n        {\n          \"verdict\": "
                             : "\n        {\n          \"verdict\": ")
                .append(JsonString(VerdictName(v.verdict)))
                .append(",\n          \"version\": ")
                .append(JsonString(v.component.version))
                .append(",\n          \"expected\": ")
                .append(JsonString(v.expected))
                .append(",\n          \"reason\": ")
                .append(JsonString(v.reason))
                .append(",\n          \"rule\": ")
                .append(std::to_string(v.rule))
                .append(",\n          \"key\": ")
                .append(JsonString(ComponentKey(v.component)));
            AppendJsonIdentity(out, v.component, "          ");
            out.append("\n        }");
        }
        out.append(verdicts.empty() ? "]\n    }" : "\n      ]\n    }");
    }
    out.append(hosts.empty() ? "]\n}\n" : "\n  ]\n}\n");
    return out;
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
    size_t total = 0;
    for (const HostVerdicts& host : hosts) total += host.verdicts.size();
    std::string text;
    text.reserve(400 * total + 1024);
    text.append(
        "# HELP sorvik_component_compliant 1 when the component's version meets the baseline, else 0.\n"
        "# TYPE sorvik_component_compliant gauge\n");
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
            text.append("sorvik_component_compliant{");
            for (const auto& label : labels)
                text.append(label.first).append("=\"").append(PrometheusLabel(*label.second)).append("\",");
            text.append("verdict=\"")
                .append(VerdictName(v.verdict))
                .append("\"} ")
                .append(v.verdict == Verdict::Compliant ? "1" : "0")
                .append("\n");
        }
    }
    text.append(
            "# HELP sorvik_audit_last_run_timestamp_seconds When sorvik-audit check wrote this file, in Unix "
            "time.\n"
            "# TYPE sorvik_audit_last_run_timestamp_seconds gauge\n"
            "sorvik_audit_last_run_timestamp_seconds ")
        .append(std::to_string(static_cast<long long>(now)))
        .append("\n");
    return text;
}

}  // namespace audit
