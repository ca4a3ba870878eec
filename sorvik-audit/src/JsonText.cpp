#include "JsonText.h"

#include <algorithm>

namespace audit {

std::string PlaceOf(const std::string& text, size_t offset, const std::string& name) {
    offset = std::min(offset, text.size());
    size_t line = 1, lineStart = 0;
    for (size_t i = 0; i < offset; ++i) {
        if (text[i] == '\n') {
            ++line;
            lineStart = i + 1;
        }
    }
    return name + ":" + std::to_string(line) + ":" + std::to_string(offset - lineStart + 1);
}

JsonPtr ParseJsonText(const std::string& text, const std::string& name, std::string& error) {
    size_t start = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    const char* end = nullptr;
    JsonPtr json(cJSON_ParseWithLengthOpts(text.data() + start, text.size() - start, &end, false));
    if (!json) {
        const size_t at = end != nullptr ? static_cast<size_t>(end - text.data()) : start;
        error =
            PlaceOf(text, at, name) + ": " + (at >= text.size() ? "truncated JSON" : "not valid JSON here");
        return nullptr;
    }
    size_t rest = static_cast<size_t>(end - text.data());
    while (rest < text.size() &&
           (text[rest] == ' ' || text[rest] == '\t' || text[rest] == '\n' || text[rest] == '\r'))
        ++rest;
    if (rest < text.size()) {
        error = PlaceOf(text, rest, name) + ": text after the JSON document";
        return nullptr;
    }
    return json;
}

std::string JsonString(const std::string& text) {
    std::string out;
    out.reserve(text.size() + 2);
    out += '"';
    for (char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    static const char kHex[] = "0123456789abcdef";
                    out += "\\u00";
                    out += kHex[(c >> 4) & 0xF];
                    out += kHex[c & 0xF];
                } else {
                    out += c;
                }
        }
    }
    out += '"';
    return out;
}

const char* JsonTypeName(const cJSON* item) {
    if (cJSON_IsString(item)) return "a string";
    if (cJSON_IsNumber(item)) return "a number";
    if (cJSON_IsBool(item)) return "a boolean";
    if (cJSON_IsNull(item)) return "null";
    if (cJSON_IsArray(item)) return "an array";
    if (cJSON_IsObject(item)) return "an object";
    return "an invalid value";
}

void AppendJsonIdentity(std::string& out, const Component& c, const char* indent) {
    const std::pair<const char*, const std::string*> fields[] = {{"name", &c.name},
                                                                 {"componentType", &c.componentType},
                                                                 {"componentID", &c.componentID},
                                                                 {"componentInstance", &c.componentInstance},
                                                                 {"fqdd", &c.fqdd},
                                                                 {"vendorID", &c.vendorID},
                                                                 {"deviceID", &c.deviceID},
                                                                 {"subVendorID", &c.subVendorID},
                                                                 {"subDeviceID", &c.subDeviceID}};
    for (const auto& field : fields)
        if (!field.second->empty())
            out.append(",\n")
                .append(indent)
                .append("\"")
                .append(field.first)
                .append("\": ")
                .append(JsonString(*field.second));
}

}  // namespace audit
