#include "audit/DiffReport.h"

#include <map>

#include "JsonText.h"
#include "TextTable.h"

namespace audit {
namespace {

const char* Colour(Change change) {
    switch (change) {
        case Change::Added:
            return "32";
        case Change::Removed:
            return "31";
        case Change::Changed:
            return "33";
        case Change::Unknown:
            return "35";
    }
    return "";
}

const Component& Identity(const ComponentChange& change) {
    return change.change == Change::Removed || change.change == Change::Unknown ? change.before
                                                                                : change.after;
}

}  // namespace

std::string DiffTable(const std::vector<ComponentChange>& changes, bool colour) {
    if (changes.empty()) return "no change\n";
    std::map<Change, size_t> counts;
    for (const ComponentChange& change : changes) ++counts[change.change];
    std::string text = RenderTable(
        {"CHANGE", "KEY", "FROM", "TO"},
        [&changes](const RowVisitor& visit) {
            for (const ComponentChange& change : changes) {
                const bool hasBefore = change.change != Change::Added;
                const bool hasAfter = change.change == Change::Added || change.change == Change::Changed;
                const std::string_view from =
                    hasBefore ? std::string_view(change.before.version) : std::string_view();
                const std::string_view to = hasAfter ? std::string_view(change.after.version)
                                                     : std::string_view(change.reason);  // why it is unknown
                visit({ChangeName(change.change), change.key, from, to}, Colour(change.change));
            }
        },
        colour);
    std::string parts;
    for (const auto& count : counts)
        parts += (parts.empty() ? "" : ", ") + std::to_string(count.second) + " " + ChangeName(count.first);
    text.append(parts).append("\n");
    return text;
}

std::string DiffJson(const std::vector<ComponentChange>& changes, const Inventory& before,
                     const Inventory& after) {
    std::map<Change, size_t> counts;
    std::string items;
    for (const ComponentChange& change : changes) {
        ++counts[change.change];
        const Component& c = Identity(change);
        std::string item = "\n    {\n      \"change\": " + JsonString(ChangeName(change.change)) +
                           ",\n      \"key\": " + JsonString(change.key);
        if (change.change != Change::Added) item += ",\n      \"from\": " + JsonString(change.before.version);
        if (change.change == Change::Added || change.change == Change::Changed)
            item += ",\n      \"to\": " + JsonString(change.after.version);
        if (change.change == Change::Changed && change.before.name != change.after.name)
            item += ",\n      \"fromName\": " + JsonString(change.before.name);
        if (!change.reason.empty()) item += ",\n      \"reason\": " + JsonString(change.reason);
        AppendJsonIdentity(item, c, "      ");
        items += std::string(items.empty() ? "" : ",") + item + "\n    }";
    }
    std::string summary;
    for (Change change : {Change::Added, Change::Removed, Change::Changed, Change::Unknown})
        summary += std::string(summary.empty() ? "" : ", ") + "\"" + ChangeName(change) +
                   "\": " + std::to_string(counts[change]);
    return "{\n  \"reportVersion\": 1,\n  \"command\": \"diff\",\n  \"old\": " + JsonString(before.source) +
           ",\n  \"new\": " + JsonString(after.source) + ",\n  \"summary\": {" + summary +
           "},\n  \"changes\": [" + items + (items.empty() ? "]" : "\n  ]") + "\n}\n";
}

}  // namespace audit
