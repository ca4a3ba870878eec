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

    // All records go in one pipeline, each in its own implicit transaction:
    // one round trip for the lot.
    void AddCollections(const std::vector<CollectionRecord>& records,
                        std::vector<AddResult>& results) override;
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
    // Prepares the statements of a load on this connection.
    bool Prepare(std::string& error);
    // Queues a prepared statement in the pipeline.
    bool Send(const char* statement, const std::vector<std::string>& params);
    // Queues one record's two statements and their sync.
    bool SendRecord(const CollectionRecord& record);
    // Reads one record's results; false with error when it was not stored.
    bool ReadRecord(bool& added, std::string& error);
    bool UpgradeSchema(std::string& error);
    bool Rollback(const std::string& why, std::string& error);

    PgConnection connection_;
    std::string name_;  // the database, for messages
};

}  // namespace fleet
}  // namespace audit
