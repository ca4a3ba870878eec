#include "audit/fleet/SqliteStatement.h"

namespace audit {
namespace fleet {

bool SqliteStatement::Prepare(sqlite3* db, const char* sql, std::string& error) {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(db, sql, -1, &raw, nullptr) != SQLITE_OK) {
        error = std::string("sqlite3_prepare_v2: ") + sqlite3_errmsg(db);
        sqlite3_finalize(raw);
        return false;
    }
    statement_.reset(raw);
    bindResult_ = SQLITE_OK;
    return true;
}

void SqliteStatement::Bind(int index, const std::string& text) {
    int rc = sqlite3_bind_text(statement_.get(), index, text.data(), static_cast<int>(text.size()),
                               SQLITE_TRANSIENT);
    if (bindResult_ == SQLITE_OK) bindResult_ = rc;
}

void SqliteStatement::Bind(int index, std::int64_t value) {
    int rc = sqlite3_bind_int64(statement_.get(), index, value);
    if (bindResult_ == SQLITE_OK) bindResult_ = rc;
}

void SqliteStatement::Bind(int index, double value) {
    int rc = sqlite3_bind_double(statement_.get(), index, value);
    if (bindResult_ == SQLITE_OK) bindResult_ = rc;
}

int SqliteStatement::Step(std::string& error) {
    if (bindResult_ != SQLITE_OK) {
        error = std::string("sqlite3_bind: ") + sqlite3_errstr(bindResult_);
        return bindResult_;
    }
    int rc = sqlite3_step(statement_.get());
    if (rc != SQLITE_ROW && rc != SQLITE_DONE) {
        error = std::string("sqlite3_step: ") + sqlite3_errmsg(sqlite3_db_handle(statement_.get()));
    }
    return rc;
}

bool SqliteStatement::Run(std::string& error) {
    int rc;
    while ((rc = Step(error)) == SQLITE_ROW) {
    }
    return rc == SQLITE_DONE;
}

std::string SqliteStatement::Text(int column) const {
    const unsigned char* text = sqlite3_column_text(statement_.get(), column);
    if (text == nullptr) return std::string();
    return std::string(reinterpret_cast<const char*>(text),
                       static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column)));
}

std::int64_t SqliteStatement::Int(int column) const { return sqlite3_column_int64(statement_.get(), column); }

bool SqliteStatement::IsNull(int column) const {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

void SqliteStatement::Reset() {
    // Both report the previous step's error, which Step already returned.
    sqlite3_reset(statement_.get());
    sqlite3_clear_bindings(statement_.get());
    bindResult_ = SQLITE_OK;
}

}  // namespace fleet
}  // namespace audit
