#include "PostgresServer.h"

#include <fcntl.h>
#include <glob.h>
#include <grp.h>
#include <libpq-fe.h>
#include <pwd.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include "TempDir.h"
#include "audit/fleet/PgHandle.h"

namespace audit {
namespace fleet {
namespace testing {

namespace {

std::string ServerBinDir() {
    if (const char* dir = std::getenv("SORVIK_PG_BINDIR")) return dir;
    glob_t found = {};
    std::string dir;
    if (glob("/usr/lib/postgresql/*/bin/initdb", 0, nullptr, &found) == 0) {
        // Versions sort as text well enough: Debian ships one at a time.
        std::string path = found.gl_pathv[found.gl_pathc - 1];
        dir = path.substr(0, path.rfind('/'));
    }
    globfree(&found);
    return dir;
}

std::string ReadText(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

struct Identity {
    bool drop = false;
    uid_t uid = 0;
    gid_t gid = 0;
};

// Starts argv with its output in log, as the unprivileged user when root.
// With dieWithParent, the child is told to quit when this program dies, so
// a crashed test leaves no server behind.
pid_t Spawn(const std::vector<std::string>& argv, const std::string& cwd, const std::string& log,
            const Identity& identity, bool dieWithParent) {
    std::vector<char*> args;
    for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    pid_t pid = fork();
    if (pid != 0) return pid;
    int out = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (out < 0 || dup2(out, 1) < 0 || dup2(out, 2) < 0) _exit(126);
    if (identity.drop &&
        (setgroups(0, nullptr) != 0 || setgid(identity.gid) != 0 || setuid(identity.uid) != 0)) {
        _exit(126);
    }
    // After the identity change, which clears it.
    if (dieWithParent && prctl(PR_SET_PDEATHSIG, SIGQUIT) != 0) _exit(126);
    if (chdir(cwd.c_str()) != 0) _exit(126);
    setenv("LC_ALL", "C", 1);
    execv(args[0], args.data());
    _exit(127);
}

}  // namespace

PostgresServer& PostgresServer::Shared() {
    static PostgresServer server;
    return server;
}

PostgresServer::PostgresServer() {
    if (!Start(startError_)) Stop();
}

PostgresServer::~PostgresServer() { Stop(); }

bool PostgresServer::Start(std::string& error) {
    std::string bin = ServerBinDir();
    if (bin.empty() || access((bin + "/initdb").c_str(), X_OK) != 0) {
        error = "no PostgreSQL server binaries under /usr/lib/postgresql (Debian package postgresql-15)";
        return false;
    }
    // Under /tmp whatever TMPDIR says: "nobody" must reach the directory, and
    // the socket's path must stay within the 107 bytes a Unix socket takes.
    dir_ = MakeTempDir("sorvik-pg", "/tmp");
    if (dir_.empty()) {
        error = std::string("mkdtemp: ") + std::strerror(errno);
        return false;
    }
    Identity identity;
    if (geteuid() == 0) {
        struct passwd* nobody = getpwnam("nobody");
        if (nobody == nullptr) {
            error = "no user nobody to run the server as";
            return false;
        }
        identity = {true, nobody->pw_uid, nobody->pw_gid};
        if (chown(dir_.c_str(), identity.uid, identity.gid) != 0) {
            error = "chown " + dir_ + ": " + std::strerror(errno);
            return false;
        }
    }
    std::string log = dir_ + "/server.log";
    pid_t initdb = Spawn({bin + "/initdb", "-D", dir_ + "/data", "-U", "sorvik", "--auth=trust", "--no-sync",
                          "-E", "UTF8", "--locale=C"},
                         dir_, log, identity, false);
    int status = 0;
    if (initdb < 0 || waitpid(initdb, &status, 0) != initdb || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0) {
        error = "initdb failed: " + ReadText(log);
        return false;
    }
    // No TCP port: the socket in the directory is the only way in. The data
    // is thrown away afterwards, so nothing needs to reach the disk.
    server_ = Spawn({bin + "/postgres", "-D", dir_ + "/data", "-k", dir_, "-c", "listen_addresses=", "-c",
                     "fsync=off", "-c", "full_page_writes=off", "-c", "synchronous_commit=off"},
                    dir_, log, identity, true);
    if (server_ < 0) {
        error = std::string("fork: ") + std::strerror(errno);
        return false;
    }
    std::string ping = Conninfo("postgres");
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (PQping(ping.c_str()) != PQPING_OK) {
        if (waitpid(server_, &status, WNOHANG) == server_) {
            server_ = -1;
            error = "the PostgreSQL server stopped: " + ReadText(log);
            return false;
        }
        if (std::chrono::steady_clock::now() > deadline) {
            error = "the PostgreSQL server did not start within 60 s: " + ReadText(log);
            return false;
        }
        // A real server starting: there is no event to wait for but its socket.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

void PostgresServer::Stop() {
    if (server_ > 0) {
        // Immediate shutdown: the data is thrown away anyway.
        kill(server_, SIGQUIT);
        int status;
        while (waitpid(server_, &status, 0) < 0 && errno == EINTR) {
        }
        server_ = -1;
    }
    if (!dir_.empty()) RemoveTree(dir_);
    dir_.clear();
}

std::string PostgresServer::Conninfo(const std::string& database) const {
    return "host=" + dir_ + " dbname=" + database + " user=sorvik";
}

bool PostgresServer::NewDatabase(std::string& conninfo, std::string& error) {
    if (server_ < 0) {
        error = startError_;
        return false;
    }
    PgConnection admin(PQconnectdb(Conninfo("postgres").c_str()));
    if (!admin || PQstatus(admin.get()) != CONNECTION_OK) {
        error = admin ? PQerrorMessage(admin.get()) : "PQconnectdb failed";
        return false;
    }
    std::string name = "fleet" + std::to_string(++databases_);
    PgResult created(PQexec(admin.get(), ("CREATE DATABASE " + name).c_str()));
    if (!created || PQresultStatus(created.get()) != PGRES_COMMAND_OK) {
        error = PQerrorMessage(admin.get());
        return false;
    }
    conninfo = Conninfo(name);
    return true;
}

}  // namespace testing
}  // namespace fleet
}  // namespace audit
