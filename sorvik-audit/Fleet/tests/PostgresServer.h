#pragma once
// A PostgreSQL server of the test program's own: initdb into a temporary
// directory, the server listening only on a Unix socket there, stopped and
// the directory removed when the program ends. As root, the server runs as
// "nobody" (initdb refuses root). Debian's server binaries are used; set
// SORVIK_PG_BINDIR to use others.
#include <sys/types.h>

#include <string>

namespace audit {
namespace fleet {
namespace testing {

class PostgresServer {
public:
    // The program's server, started on first use. Empty conninfo and a
    // message when it cannot start.
    static PostgresServer& Shared();

    ~PostgresServer();
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;

    // Creates a fresh database and returns its conninfo; false with error.
    bool NewDatabase(std::string& conninfo, std::string& error);

    const std::string& StartError() const { return startError_; }

private:
    PostgresServer();
    bool Start(std::string& error);
    void Stop();
    std::string Conninfo(const std::string& database) const;

    std::string dir_;
    pid_t server_ = -1;
    int databases_ = 0;
    std::string startError_;
};

}  // namespace testing
}  // namespace fleet
}  // namespace audit
