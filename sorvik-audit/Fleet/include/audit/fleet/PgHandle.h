#pragma once
// RAII owners for a libpq connection and a query result.
#include <libpq-fe.h>

#include <memory>

namespace audit {
namespace fleet {

struct PgConnectionCloser {
    void operator()(PGconn* connection) const { PQfinish(connection); }
};
using PgConnection = std::unique_ptr<PGconn, PgConnectionCloser>;

struct PgResultClearer {
    void operator()(PGresult* result) const { PQclear(result); }
};
using PgResult = std::unique_ptr<PGresult, PgResultClearer>;

}  // namespace fleet
}  // namespace audit
