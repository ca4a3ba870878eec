#include "CollectionSupport.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/ipc.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace collection {

const char kLockFile[] = "/var/lock/sorvik.tmp";
const char kAnotherInstance[] =
    "ERROR: Another instance of the Inventory Collector is currently active. Terminating\n";
const char kFailed[] = "Configured program execution failure";

namespace {

const key_t kProgressKey = static_cast<key_t>(0x94D553DF);

[[noreturn]] void Fail(const std::string& call, int error) {
    throw std::runtime_error(call + ": " + std::strerror(error));
}

std::vector<char*> Pointers(Args& words) {
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(&word[0]);
    pointers.push_back(nullptr);
    return pointers;
}

// Reads both pipes until they close; past the deadline the child's whole
// process group is killed, which also ends children holding the pipes.
void Drain(pid_t child, int outFd, int errFd, ProcessResult& result) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    struct pollfd fds[2] = {{outFd, POLLIN, 0}, {errFd, POLLIN, 0}};
    std::string* sinks[2] = {&result.out, &result.err};
    for (int open = 2; open > 0;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 && !result.timedOut) {
            ::kill(-child, SIGKILL);
            result.timedOut = true;
        }
        const int ready = ::poll(fds, 2, result.timedOut ? 1000 : static_cast<int>(left.count()));
        if (ready < 0 && errno != EINTR) Fail("poll", errno);
        if (ready == 0 && result.timedOut) break;
        for (int i = 0; i < 2 && ready > 0; ++i) {
            if (fds[i].fd < 0 || fds[i].revents == 0) continue;
            char buffer[65536];
            const ssize_t count = ::read(fds[i].fd, buffer, sizeof buffer);
            if (count > 0) {
                sinks[i]->append(buffer, static_cast<std::size_t>(count));
            } else if (count == 0 || errno != EINTR) {
                fds[i].fd = -1;
                --open;
            }
        }
    }
}

std::string Declaration(const std::string& encoding) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n";
}

void RemoveProgressSegment() {
    const int id = ::shmget(kProgressKey, 0, 0);
    if (id >= 0) ::shmctl(id, IPC_RMID, nullptr);
}

std::string ModuleArray(const std::vector<Module>& modules) {
    std::string json = "[";
    for (const Module& m : modules) {
        const std::pair<const char*, std::string> fields[] = {{"_dir", "/" + m.name},
                                                              {"_type", "cli"},
                                                              {"__text", "run.sh"},
                                                              {"#GUID", m.guid},
                                                              {"_CmpType", m.compType}};
        std::string object;
        for (const auto& field : fields)
            if (!field.second.empty())
                object += std::string(object.empty() ? "\"" : ", \"") + field.first + "\": \"" +
                          field.second + "\"";
        json += (json.size() > 1 ? ",\n  {" : "\n  {") + object + "}";
    }
    return json + "]";
}

}  // namespace

ProcessResult RunProgram(const std::string& program, Args argv, const std::string& directory) {
    int out[2], err[2];
    if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) Fail("pipe2", errno);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err[1], STDERR_FILENO);
    posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    pid_t child;
    const int spawnError =
        ::posix_spawn(&child, program.c_str(), &actions, &attributes, Pointers(argv).data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    ::close(out[1]);
    ::close(err[1]);
    ProcessResult result;
    if (spawnError == 0) Drain(child, out[0], err[0], result);
    ::close(out[0]);
    ::close(err[0]);
    if (spawnError != 0) Fail("start " + program, spawnError);

    int status = 0;
    struct rusage usage;
    while (::wait4(child, &status, 0, &usage) < 0)
        if (errno != EINTR) Fail("wait4", errno);
    result.peakRssBytes = usage.ru_maxrss * 1024L;
    result.exited = WIFEXITED(status);
    if (result.exited) result.exitStatus = WEXITSTATUS(status);
    return result;
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) Fail("open " + path, errno);
    std::stringstream contents;
    contents << in.rdbuf();
    return contents.str();
}

bool PathExists(const std::string& path) {
    struct stat info;
    return ::lstat(path.c_str(), &info) == 0;
}

TempDir::TempDir() {
    char pattern[] = "/tmp/sorvik-e2e-XXXXXX";
    if (::mkdtemp(pattern) == nullptr) Fail("mkdtemp", errno);
    m_path = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void TempDir::WriteFile(const std::string& relative, const std::string& contents, mode_t mode) const {
    const std::string path = PathOf(relative);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    // Close-on-exec: a script still open for writing in a started child could not be run.
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
    if (fd < 0) Fail("open " + path, errno);
    const bool written =
        ::write(fd, contents.data(), contents.size()) == static_cast<ssize_t>(contents.size());
    // The mode given to open is reduced by the umask; scripts need theirs exactly.
    const int error = !written ? errno : ::fchmod(fd, mode) != 0 ? errno : 0;
    ::close(fd);
    if (error != 0) Fail("write " + path, error);
}

FileLock::FileLock(const std::string& path)
    : m_fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0222)) {
    // An open file description lock conflicts with a record lock held by any
    // other process, so no helper process is needed to hold it.
    struct flock request = {};
    request.l_type = F_WRLCK;
    request.l_whence = SEEK_SET;
    if (m_fd < 0 || ::fcntl(m_fd, F_OFD_SETLK, &request) != 0) Fail("lock " + path, errno);
}

void FileLock::Release() {
    if (m_fd >= 0) ::close(m_fd);
    m_fd = -1;
}

Config GenericOnly(std::vector<Module> modules) {
    Config config;
    config.generations = {{"Generic", std::move(modules)}};
    return config;
}

std::string Emit(const std::string& text) { return "cat <<'SORVIK_END'\n" + text + "\nSORVIK_END\n"; }

std::string DeviceDoc(const std::string& id) {
    return "<SVMInventory><Device componentID=\"" + id + "\" display=\"D" + id +
           "\"><Application componentType=\"FRMW\" version=\"1\" display=\"A" + id +
           "\"/></Device></SVMInventory>";
}

std::string DeviceBody(const std::string& id) {
    return "  <Device display=\"D" + id + "\" componentID=\"" + id + "\">\n    <Application display=\"A" +
           id + "\" version=\"1\" componentType=\"FRMW\"/>\n  </Device>\n";
}

std::string InventoryXml(const std::string& body, const std::string& encoding) {
    const std::string root =
        "<SVMInventory lang=\"en\" schemaVersion=\"1.0\" timestamp=\"T\" "
        "sorvikVersion=\"21.09.200 (BLD_1155)\" sorvikBuild=\"1155\"";
    if (body.empty()) return Declaration(encoding) + root + "/>\n";
    return Declaration(encoding) + root + ">\n" + body + "</SVMInventory>\n";
}

std::string ErrorXml(const Errors& entries, const std::string& encoding) {
    std::string xml = Declaration(encoding) + "<InventoryError lang=\"en\">\n";
    for (const auto& entry : entries)
        xml += "  <SPStatus module=\"" + entry.first + "\" result=\"false\">\n    <Message>" + entry.second +
               "</Message>\n  </SPStatus>\n";
    return xml + "</InventoryError>\n";
}

std::string ProgressXml(int total, int completed) {
    return Declaration("UTF-8") + "<SorVikProgress lang=\"en\" timestamp=\"T\" totalInvComponents=\"" +
           std::to_string(total) + "\" completedInvComponents=\"" + std::to_string(completed) + "\"/>\n";
}

std::string NormalizeTimestamps(const std::string& document) {
    static const std::regex attribute("timestamp=\"([^\"]*)\"");
    static const std::regex shape("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}");
    for (auto it = std::sregex_iterator(document.begin(), document.end(), attribute);
         it != std::sregex_iterator(); ++it)
        EXPECT_TRUE(std::regex_match((*it)[1].str(), shape)) << "timestamp " << (*it)[1].str();
    return std::regex_replace(document, attribute, "timestamp=\"T\"");
}

std::string Utf16LeToUtf8(const std::string& bytes) {
    if (bytes.size() < 2 || bytes.compare(0, 2, "\xFF\xFE") != 0) {
        ADD_FAILURE() << "no little-endian byte-order mark";
        return "";
    }
    EXPECT_EQ(bytes.size() % 2, 0u) << "odd number of bytes";
    std::string text;
    for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const unsigned u =
            static_cast<unsigned char>(bytes[i]) | (static_cast<unsigned char>(bytes[i + 1]) << 8);
        EXPECT_LT(u, 0x800u) << "only one- and two-byte characters occur here";
        if (u < 0x80)
            text += static_cast<char>(u);
        else
            text += {static_cast<char>(0xC0 | (u >> 6)), static_cast<char>(0x80 | (u & 0x3F))};
    }
    return text;
}

void ExpectResult(const ProcessResult& result, int exitStatus, const std::string& out,
                  const std::string& err) {
    EXPECT_EQ(result.exitStatus, exitStatus) << result.err;
    EXPECT_EQ(NormalizeTimestamps(result.out), out);
    EXPECT_EQ(result.err, err);
}

bool ProgressSegmentExists() { return ::shmget(kProgressKey, 0, 0) >= 0; }

void CollectionTest::SetUp() {
    ASSERT_FALSE(PathExists(kLockFile)) << kLockFile << " exists: is a collection running?";
    RemoveProgressSegment();
}

void CollectionTest::TearDown() {
    EXPECT_FALSE(PathExists(kLockFile)) << "a run left " << kLockFile;
    ::unlink(kLockFile);
    RemoveProgressSegment();
}

void CollectionTest::Install(const Config& config) const {
    std::string json = "{\"SorVikConfig\": {\n\"PreInstall\": " + ModuleArray(config.preInstall) +
                       ",\n\"PostInstall\": " + ModuleArray(config.postInstall) + ",\n\"Generation\": [";
    for (const auto& node : config.generations)
        json += std::string(json.back() == '[' ? "\n" : ",\n") + "{\"_type\": \"" + node.first + "\"" +
                ", \"InvComponent\": " + ModuleArray(node.second) + "}";
    WriteConfigText(json + "]\n}}\n");

    auto write = [this](const std::vector<Module>& modules) {
        for (const Module& m : modules) dir.WriteFile(m.name + "/run.sh", "#!/bin/sh\n" + m.script, 0755);
    };
    write(config.preInstall);
    write(config.postInstall);
    for (const auto& node : config.generations) write(node.second);
}

ProcessResult CollectionTest::Run(const Args& args, const Environment& environment,
                                  const std::string& shell) const {
    Args argv = {"sh", "-c", shell, "sh", "env"};
    for (const auto& variable : environment) argv.push_back(variable.first + "=" + variable.second);
    argv.insert(argv.end(), {IPMISIM_RUN_SCRIPT, SORVIK_BINARY});
    argv.insert(argv.end(), args.begin(), args.end());
    ProcessResult result = RunProgram("/bin/sh", argv, dir.Path());
    EXPECT_TRUE(result.exited) << result.err;
    return result;
}

std::string CollectionTest::Note(const std::string& line) const {
    return "echo '" + line + "' >> '" + dir.PathOf("ran.log") + "'\n";
}

std::vector<std::string> CollectionTest::Ran(bool sorted) const {
    std::vector<std::string> lines;
    if (!dir.Exists("ran.log")) return lines;
    std::istringstream stream(dir.ReadFile("ran.log"));
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    if (sorted) std::sort(lines.begin(), lines.end());
    return lines;
}

void CollectionTest::ForgetRan() const { ::unlink(dir.PathOf("ran.log").c_str()); }

}  // namespace collection
