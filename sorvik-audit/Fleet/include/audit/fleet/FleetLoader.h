#pragma once
// Loads inventory files into the fleet store: one collection per file, each
// in its own transaction, a bad file reported by name and skipped.
#include <cstddef>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "audit/Inventory.h"
#include "audit/fleet/FleetStore.h"

namespace audit {
namespace fleet {

// How the loader reads documents; the command passes the program's own
// readers, tests may pass simpler ones.
struct DocumentReaders {
    // Bytes of a whole document in any form the collector writes; name is
    // for messages.
    std::function<bool(const std::string& bytes, const std::string& name, Inventory& inventory,
                       std::string& error)>
        parseInventory;
    std::function<bool(const std::string& path, ErrorDocument& errors, std::string& error)> readErrors;
};

// Reports files done out of a total. The loader calls it after every file.
using LoadProgress = std::function<void(std::size_t done, std::size_t total)>;

struct LoadSummary {
    std::size_t added = 0;
    std::size_t unchanged = 0;          // the host held the same document already
    std::vector<std::string> failures;  // one message per file not loaded, naming it
};

class FleetLoader {
public:
    FleetLoader(FleetStore& store, DocumentReaders readers);

    // The inventory files the arguments name: files as given ("-" is
    // standard input); for a directory, its *.json and *.xml files, sorted,
    // without hidden files and error documents. An argument that is neither
    // goes to errors.
    static std::vector<std::string> ListInventories(const std::vector<std::string>& arguments,
                                                    std::vector<std::string>& errors);

    // The error document the collector's run beside PATH wrote:
    // DIR/NAME.errors.xml for DIR/NAME.EXT.
    static std::string ErrorDocumentPath(const std::string& path);

    // The host a file is of when no host is given: its name without the
    // directory and the last extension.
    static std::string HostFromPath(const std::string& path);

    // Loads one file as a collection of host (HostFromPath when empty).
    bool LoadFile(const std::string& path, const std::string& host, bool& added, std::string& error);

    // Loads each file, going on past failures, calling progress after each.
    // Files are stored in batches, each file in its own transaction.
    LoadSummary Load(const std::vector<std::string>& files, const std::string& host,
                     const LoadProgress& progress = nullptr);

private:
    // How many files go to the store at once: enough to keep a remote server
    // busy, few enough to hold in memory.
    static constexpr std::size_t kBatch = 64;

    // Reads and parses a file into the record to store.
    bool Prepare(const std::string& path, const std::string& host, CollectionRecord& record,
                 std::string& error) const;
    bool Read(const std::string& path, std::string& bytes, std::time_t& modified, std::string& error) const;

    FleetStore& store_;
    DocumentReaders readers_;
};

// Seconds since the epoch for the collector's "YYYY-MM-DD HH:MM:SS" (local
// time); false for anything else.
bool ParseCollectionTime(const std::string& text, std::time_t& when);

}  // namespace fleet
}  // namespace audit
