#include "audit/fleet/FleetStore.h"

#include "audit/fleet/PostgresStore.h"
#include "audit/fleet/SqliteStore.h"

namespace audit {
namespace fleet {

bool FleetStore::AddCollection(const CollectionRecord& record, bool& added, std::string& error) {
    std::vector<AddResult> results;
    AddCollections({record}, results);
    added = results[0].added;
    error = results[0].error;
    return error.empty();
}

const char* const kDefaultStoreUrl = "sqlite:/var/lib/sorvik/fleet.db";

bool OpenFleetStore(const std::string& url, std::unique_ptr<FleetStore>& store, std::string& error) {
    const std::string sqlite = "sqlite:";
    if (url.compare(0, sqlite.size(), sqlite) == 0) {
        std::string path = url.substr(sqlite.size());
        if (path.empty()) {
            error = "sqlite: names no file";
            return false;
        }
        return SqliteStore::Open(path, store, error);
    }
    return PostgresStore::Open(url, store, error);
}

}  // namespace fleet
}  // namespace audit
