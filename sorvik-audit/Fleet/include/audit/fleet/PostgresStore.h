#pragma once
// The fleet store in a PostgreSQL database, for a fleet that outgrows one
// file or a site whose record systems already run PostgreSQL.
#include <memory>
#include <string>
#include <vector>

#include "audit/fleet/FleetStore.h"
#include "audit/fleet/PgHandle.h"

namespace audit {
namespace fleet {

class PostgresStore : public FleetStore {
public:
    // Connects with a libpq URI or conninfo string and creates or upgrades
    // the schema under an advisory lock, so two programs starting at once on
    // an empty database do not both create it.
    static bool Open(const std::string& conninfo, std::unique_ptr<FleetStore>& store, std::string& error);

    bool AddCollection(const CollectionRecord& record, bool& added, std::string& error) override;
    bool Drift(double maxSharePercent, std::vector<VersionCount>& versions,
               std::vector<OutlierHost>& outliers, std::string& error) override;
    bool LatestCollections(std::vector<CollectionRecord>& collections, std::string& error) override;
    bool Counts(StoreCounts& counts, std::string& error) override;

private:
    explicit PostgresStore(PgConnection connection, std::string name);
    // Runs a command or query; false with error set unless its status is expected.
    bool Run(const char* sql, ExecStatusType expected, std::string& error, PgResult* result = nullptr);
    bool RunParams(const char* sql, const std::vector<std::string>& params, ExecStatusType expected,
                   std::string& error, PgResult* result = nullptr);
    bool Copy(const char* sql, const std::string& rows, std::string& error);
    bool UpgradeSchema(std::string& error);
    bool InsertRows(const CollectionRecord& record, bool& added, std::string& error);
    bool Rollback(const std::string& why, std::string& error);

    PgConnection connection_;
    std::string name_;  // the database, for messages
};

}  // namespace fleet
}  // namespace audit
