#pragma once
// The fleet store in one SQLite file: the default, needing no set-up.
#include <memory>
#include <string>

#include "audit/fleet/FleetStore.h"
#include "audit/fleet/SqliteStatement.h"

namespace audit {
namespace fleet {

class SqliteStore : public FleetStore {
public:
    // Opens or creates the file (its directory too), in WAL mode so readers
    // and one writer do not block each other; a writer waits for another's
    // transaction instead of failing.
    static bool Open(const std::string& path, std::unique_ptr<FleetStore>& store, std::string& error);

    void AddCollections(const std::vector<CollectionRecord>& records,
                        std::vector<AddResult>& results) override;
    bool Drift(double maxSharePercent, std::vector<VersionCount>& versions,
               std::vector<OutlierHost>& outliers, std::string& error) override;
    bool LatestCollections(std::vector<CollectionRecord>& collections, std::string& error) override;
    bool Counts(StoreCounts& counts, std::string& error) override;

private:
    explicit SqliteStore(SqliteDb db, std::string path);
    bool Exec(const char* sql, std::string& error);
    bool UpgradeSchema(std::string& error);
    bool PrepareLoad(std::string& error);
    bool AddOne(const CollectionRecord& record, bool& added, std::string& error);
    bool InsertRows(const CollectionRecord& record, bool& added, std::string& error);
    bool Fail(const std::string& what, std::string& error) const;

    SqliteDb db_;
    std::string path_;
    SqliteStatement insertHost_;
    SqliteStatement insertCollection_;
    SqliteStatement insertComponent_;
    SqliteStatement insertFailure_;
};

}  // namespace fleet
}  // namespace audit
