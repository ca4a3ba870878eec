#pragma once
// RAII owners for an SQLite connection and a prepared statement.
#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>

namespace audit {
namespace fleet {

struct SqliteCloser {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
using SqliteDb = std::unique_ptr<sqlite3, SqliteCloser>;

// One prepared statement. Bind failures are kept and reported by the next
// Step, so a caller checks one result per execution.
class SqliteStatement {
public:
    bool Prepare(sqlite3* db, const char* sql, std::string& error);
    void Bind(int index, const std::string& text);
    void Bind(int index, std::int64_t value);
    void Bind(int index, double value);
    // SQLITE_ROW, SQLITE_DONE, or another code with error set to the
    // database's message.
    int Step(std::string& error);
    // Steps to the end; false with error on failure.
    bool Run(std::string& error);
    std::string Text(int column) const;
    std::int64_t Int(int column) const;
    bool IsNull(int column) const;
    // Ready for the next execution, bindings cleared.
    void Reset();

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
    int bindResult_ = SQLITE_OK;
};

}  // namespace fleet
}  // namespace audit
