#pragma once
// Reads the collector's documents in every form it writes them: the XML
// inventory (root "SVMInventory", UTF-8 or UTF-16 with a byte-order mark), the
// JSON inventory (root key "UpdatableComponentsInventory", UTF-8) and the XML
// error document (root "InventoryError"). Parsing never loads external
// entities or DTDs, prints nothing and keeps libxml2's size limits.
#include <cstddef>
#include <functional>
#include <string>

#include "audit/Inventory.h"

namespace audit {

// Any form the collector writes; "-" reads standard input. An XML inventory
// followed by its error document in the same stream (the collector's standard
// output when a module failed) fills inventory.failures as well.
// On failure: false, and error names the file and the place (line and column,
// or the JSON path); inventory is then unspecified.
bool ReadInventory(const std::string& path, Inventory& inventory, std::string& error);
// The same from bytes in memory; name stands for the file in messages and in
// inventory.source.
bool ParseInventory(const std::string& bytes, const std::string& name, Inventory& inventory,
                    std::string& error);

// Receives each component as it is read, in document order.
using ComponentSink = std::function<void(Component&&)>;

// ReadInventory without keeping the components: each goes to sink as soon as
// it is read, so a large inventory is never held whole. inventory gets the
// host's fields (in the XML form they come before the devices) and failures.
bool StreamInventory(const std::string& path, Inventory& inventory, const ComponentSink& sink,
                     std::string& error);

// At most how many components the file can hold (the smallest device element
// the collector writes is 80 bytes), 0 when unknown (standard input). For
// reserving: the untouched part of a reservation costs no memory.
size_t ComponentBound(const std::string& path);

// The error document; "-" reads standard input.
bool ReadErrorDocument(const std::string& path, ErrorDocument& errors, std::string& error);
bool ParseErrorDocument(const std::string& bytes, const std::string& name, ErrorDocument& errors,
                        std::string& error);

// The whole file, or standard input for "-". On failure: false, and error
// names the file and the system's reason.
bool ReadWholeFile(const std::string& path, std::string& bytes, std::string& error);

}  // namespace audit
