#pragma once
// cJSON documents for the baseline and inventory readers: an owner, and a
// parse whose failure names the file, line and column.
#include <cjson/cJSON.h>

#include <memory>
#include <string>

#include "audit/Inventory.h"

namespace audit {

struct JsonDeleter {
    void operator()(cJSON* json) const { cJSON_Delete(json); }
};
using JsonPtr = std::unique_ptr<cJSON, JsonDeleter>;

// The whole text as one JSON value (a UTF-8 byte-order mark is skipped;
// whitespace may follow). On failure: null, and error reads
// "<name>:<line>:<column>: <what>".
JsonPtr ParseJsonText(const std::string& text, const std::string& name, std::string& error);

// "<name>:<line>:<column>" for a byte offset into text.
std::string PlaceOf(const std::string& text, size_t offset, const std::string& name);

// The text as a JSON string literal, quotes included.
std::string JsonString(const std::string& text);

// Appends ",\n<indent>\"field\": value" for each identifying field of the
// component that is not empty, in the inventory's own JSON names.
void AppendJsonIdentity(std::string& out, const Component& component, const char* indent);

// The JSON type in words, for "expected a string, found a number".
const char* JsonTypeName(const cJSON* item);

}  // namespace audit
