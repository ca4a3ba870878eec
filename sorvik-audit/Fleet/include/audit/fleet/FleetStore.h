#pragma once
// The fleet store: every host's collections with their components and module
// failures, in SQLite or PostgreSQL. Both keep the same tables and answer the
// same questions; OpenFleetStore picks one by the URL.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "audit/Inventory.h"

namespace audit {
namespace fleet {

// The schema this program writes. A database with a higher version was
// written by a newer program and is refused.
constexpr int kSchemaVersion = 1;

// One inventory of one host, as it is stored.
struct CollectionRecord {
    std::string host;
    std::int64_t collectedAt = 0;  // seconds since the epoch
    std::string collectorVersion;
    std::string contentHash;  // hex SHA-256 of the document's bytes
    std::string source;       // the file it was loaded from
    Inventory inventory;      // system id, OS and components
    std::vector<ModuleFailure> failures;
};

struct StoreCounts {
    std::int64_t hosts = 0;
    std::int64_t collections = 0;
    std::int64_t components = 0;
    std::int64_t failures = 0;
};

// How many hosts run one version of one component group, over each host's
// latest collection, and how many hosts the group spans.
struct VersionCount {
    std::string group;
    std::string version;
    std::int64_t hosts = 0;
    std::int64_t groupHosts = 0;
};

struct OutlierHost {
    std::string group;
    std::string version;
    std::string host;
};

struct AddResult {
    bool added = false;
    std::string error;  // empty when stored or already there
};

class FleetStore {
public:
    virtual ~FleetStore() = default;

    // Stores each record in a transaction of its own, results[i] telling of
    // records[i]: added is false when the host already holds a collection
    // with the same content hash (then nothing is written), error is set when
    // the record could not be stored (then nothing of it is). The hosts are
    // created when new. Safe against another process loading the same hosts
    // or documents at the same time.
    virtual void AddCollections(const std::vector<CollectionRecord>& records,
                                std::vector<AddResult>& results) = 0;

    // One record, as AddCollections stores it.
    bool AddCollection(const CollectionRecord& record, bool& added, std::string& error);

    // Over each host's latest collection (latest collection time, then latest
    // loaded): every group with more than one version, each version with its
    // host count, ordered by group and by falling count; and the hosts whose
    // version fewer than maxSharePercent of the group's hosts run.
    virtual bool Drift(double maxSharePercent, std::vector<VersionCount>& versions,
                       std::vector<OutlierHost>& outliers, std::string& error) = 0;

    // Each host's latest collection with its components (in document order)
    // and module failures, ordered by host name.
    virtual bool LatestCollections(std::vector<CollectionRecord>& collections, std::string& error) = 0;

    virtual bool Counts(StoreCounts& counts, std::string& error) = 0;
};

// Opens the store a URL names, creating or upgrading its schema:
// "sqlite:PATH" (the file and its directory are created), anything else is a
// PostgreSQL connection URI or conninfo string. False with a message naming
// the database when it cannot be opened or holds a newer schema.
bool OpenFleetStore(const std::string& url, std::unique_ptr<FleetStore>& store, std::string& error);

// The default store: sqlite:/var/lib/sorvik/fleet.db.
extern const char* const kDefaultStoreUrl;

}  // namespace fleet
}  // namespace audit
