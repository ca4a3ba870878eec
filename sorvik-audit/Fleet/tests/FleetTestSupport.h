#pragma once
// What the fleet tests share: scoped temporary directories, documents in a
// small line format with readers for it (the loader's reader seam), and a
// fixture that runs a test against SQLite and against PostgreSQL.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TempDir.h"
#include "audit/Inventory.h"
#include "audit/fleet/FleetLoader.h"
#include "audit/fleet/FleetStore.h"

namespace audit {
namespace fleet {
namespace testing {

void WriteFile(const std::string& path, const std::string& text);

// A document of the test format: "system S", optional "time T", then one
// "component TYPE|NAME|FQDD|VENDOR|DEVICE|VERSION" line per component.
std::string TestDocument(const std::string& systemID, const std::vector<Component>& components,
                         const std::string& time = "");
Component TestComponent(const std::string& type, const std::string& name, const std::string& fqdd,
                        const std::string& vendor, const std::string& device, const std::string& version);
// Readers of the test format; error documents hold "MODULE|MESSAGE" lines.
DocumentReaders TestReaders();

// Runs SQL outside the store, e.g. to age the schema; fails the test on error.
void ExecSql(const std::string& url, const std::string& sql);

enum class Backend { Sqlite, Postgres };

class FleetDatabaseTest : public ::testing::TestWithParam<Backend> {
protected:
    void SetUp() override;
    void TearDown() override;
    // Opens another store on the same database.
    std::unique_ptr<FleetStore> OpenAgain();
    StoreCounts Counts();

    std::string dir_;
    std::string url_;
    std::unique_ptr<FleetStore> store_;
};

std::string BackendName(const ::testing::TestParamInfo<Backend>& info);

#define SORVIK_FLEET_BOTH_DATABASES(suite)                                                  \
    INSTANTIATE_TEST_SUITE_P(Databases, suite,                                              \
                             ::testing::Values(::audit::fleet::testing::Backend::Sqlite,    \
                                               ::audit::fleet::testing::Backend::Postgres), \
                             ::audit::fleet::testing::BackendName)

}  // namespace testing
}  // namespace fleet
}  // namespace audit
