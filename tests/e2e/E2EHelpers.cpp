#include "E2EHelpers.h"

#include <fcntl.h>
#include <ftw.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

extern char** environ;

namespace e2e {
namespace {

[[noreturn]] void Fail(const std::string& call, int error) {
    throw std::runtime_error(call + ": " + std::strerror(error));
}

// Closes the descriptor it holds.
class Fd {
public:
    explicit Fd(int fd = -1) : m_fd(fd) {}
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    ~Fd() { Reset(); }
    int Get() const { return m_fd; }
    int Release() {
        const int fd = m_fd;
        m_fd = -1;
        return fd;
    }
    void Reset(int fd = -1) {
        if (m_fd >= 0) ::close(m_fd);
        m_fd = fd;
    }

private:
    int m_fd;
};

void MakePipe(Fd& readEnd, Fd& writeEnd) {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) Fail("pipe2", errno);
    readEnd.Reset(fds[0]);
    writeEnd.Reset(fds[1]);
}

std::vector<std::string> BuildEnvironment(const RunOptions& options) {
    std::map<std::string, std::string> variables;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string text(*entry);
        const std::string::size_type equals = text.find('=');
        if (equals != std::string::npos) variables[text.substr(0, equals)] = text.substr(equals + 1);
    }
    for (const auto& variable : options.environment) variables[variable.first] = variable.second;
    std::vector<std::string> environment;
    for (const auto& variable : variables) environment.push_back(variable.first + "=" + variable.second);
    return environment;
}

std::vector<char*> Pointers(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(&word[0]);
    pointers.push_back(nullptr);
    return pointers;
}

// Only async-signal-safe calls: the child of a possibly threaded test process.
[[noreturn]] void ExecChild(const char* program, char** argv, char** envp, const char* directory, int input,
                            int output, int error, int reportFd) {
    ::setpgid(0, 0);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    for (int sig = 1; sig < NSIG; ++sig) ::signal(sig, SIG_DFL);
    if (::dup2(input, STDIN_FILENO) < 0 || ::dup2(output, STDOUT_FILENO) < 0 ||
        ::dup2(error, STDERR_FILENO) < 0 || (directory != nullptr && ::chdir(directory) != 0)) {
        const int failure = errno;
        if (::write(reportFd, &failure, sizeof failure) < 0) {
        }
        ::_exit(127);
    }
    ::execve(program, argv, envp);
    const int failure = errno;
    if (::write(reportFd, &failure, sizeof failure) < 0) {
    }
    ::_exit(127);
}

}  // namespace

const std::string& SorvikBinary() {
    static const std::string path = SORVIK_BINARY;
    return path;
}

ProcessResult RunProgram(const std::string& program, const RunOptions& options) {
    std::vector<std::string> words;
    words.push_back(options.argv0.empty() ? program : options.argv0);
    words.insert(words.end(), options.args.begin(), options.args.end());
    std::vector<char*> argv = Pointers(words);
    std::vector<std::string> environment = BuildEnvironment(options);
    std::vector<char*> envp = Pointers(environment);

    Fd input(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (input.Get() < 0) Fail("open /dev/null", errno);
    Fd outRead, outWrite, errRead, errWrite, reportRead, reportWrite;
    MakePipe(outRead, outWrite);
    MakePipe(errRead, errWrite);
    MakePipe(reportRead, reportWrite);

    const char* directory = options.workingDirectory.empty() ? nullptr : options.workingDirectory.c_str();
    const pid_t child = ::fork();
    if (child < 0) Fail("fork", errno);
    if (child == 0) {
        ExecChild(program.c_str(), argv.data(), envp.data(), directory, input.Get(), outWrite.Get(),
                  errWrite.Get(), reportWrite.Get());
    }
    outWrite.Reset();
    errWrite.Reset();
    reportWrite.Reset();

    int startError = 0;
    ssize_t reported;
    do {
        reported = ::read(reportRead.Get(), &startError, sizeof startError);
    } while (reported < 0 && errno == EINTR);

    ProcessResult result;
    if (reported <= 0) {
        const auto deadline = std::chrono::steady_clock::now() + options.timeout;
        struct pollfd fds[2] = {{outRead.Get(), POLLIN, 0}, {errRead.Get(), POLLIN, 0}};
        std::string* sinks[2] = {&result.out, &result.err};
        int open = 2;
        while (open > 0) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0 && !result.timedOut) {
                // Killing the whole group also ends children holding the pipes.
                ::kill(-child, SIGKILL);
                result.timedOut = true;
            }
            const int ready = ::poll(fds, 2, result.timedOut ? 1000 : static_cast<int>(left.count()));
            if (ready < 0) {
                if (errno == EINTR) continue;
                Fail("poll", errno);
            }
            if (ready == 0 && result.timedOut) break;
            for (int i = 0; i < 2; ++i) {
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

    int status = 0;
    pid_t waited;
    do {
        waited = ::waitpid(child, &status, 0);
    } while (waited < 0 && errno == EINTR);
    if (waited < 0) Fail("waitpid", errno);
    if (reported > 0) Fail("start " + program, startError);
    if (WIFEXITED(status)) {
        result.exited = true;
        result.exitStatus = WEXITSTATUS(status);
    } else if (WIFSIGNALED(status)) {
        result.termSignal = WTERMSIG(status);
    }
    return result;
}

ProcessResult RunSorvik(const RunOptions& options) {
    // A renamed program cannot pass through the simulator's wrapper; such runs
    // stop before the generation is asked for.
    if (!options.argv0.empty()) return RunProgram(SorvikBinary(), options);
    RunOptions simulated = options;
    simulated.args.insert(simulated.args.begin(), {IPMISIM_RUN_SCRIPT, SorvikBinary()});
    return RunProgram("/bin/sh", simulated);
}

TempDir::TempDir() {
    char pattern[] = "/tmp/sorvik-e2e-XXXXXX";
    if (::mkdtemp(pattern) == nullptr) Fail("mkdtemp", errno);
    m_path = pattern;
}

TempDir::~TempDir() {
    ::nftw(
        m_path.c_str(),
        [](const char* path, const struct stat*, int, struct FTW*) {
            ::remove(path);
            return 0;
        },
        16, FTW_DEPTH | FTW_PHYS);
}

std::string TempDir::PathOf(const std::string& relative) const { return m_path + "/" + relative; }

void TempDir::MakeDirectory(const std::string& relative) const {
    std::string::size_type position = 0;
    while (position != std::string::npos) {
        position = relative.find('/', position + 1);
        const std::string path = PathOf(relative.substr(0, position));
        if (::mkdir(path.c_str(), 0755) != 0 && errno != EEXIST) Fail("mkdir " + path, errno);
    }
}

void TempDir::WriteFile(const std::string& relative, const std::string& contents, mode_t mode) const {
    const std::string::size_type slash = relative.rfind('/');
    if (slash != std::string::npos && slash > 0) MakeDirectory(relative.substr(0, slash));
    const std::string path = PathOf(relative);
    Fd fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode));
    if (fd.Get() < 0) Fail("open " + path, errno);
    std::size_t written = 0;
    while (written < contents.size()) {
        const ssize_t count = ::write(fd.Get(), contents.data() + written, contents.size() - written);
        if (count < 0) {
            if (errno == EINTR) continue;
            Fail("write " + path, errno);
        }
        written += static_cast<std::size_t>(count);
    }
    // The mode given to open is reduced by the umask; scripts need theirs exactly.
    if (::fchmod(fd.Get(), mode) != 0) Fail("fchmod " + path, errno);
}

bool TempDir::Exists(const std::string& relative) const { return PathExists(PathOf(relative)); }

std::string TempDir::ReadFile(const std::string& relative) const {
    const std::string path = PathOf(relative);
    Fd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.Get() < 0) Fail("open " + path, errno);
    std::string contents;
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(fd.Get(), buffer, sizeof buffer);
        if (count < 0) {
            if (errno == EINTR) continue;
            Fail("read " + path, errno);
        }
        if (count == 0) break;
        contents.append(buffer, static_cast<std::size_t>(count));
    }
    return contents;
}

bool PathExists(const std::string& path) {
    struct stat info;
    return ::lstat(path.c_str(), &info) == 0;
}

ExternalFileLock::ExternalFileLock(const std::string& path) : m_child(-1), m_releaseFd(-1) {
    Fd readyRead, readyWrite, releaseRead, releaseWrite;
    MakePipe(readyRead, readyWrite);
    MakePipe(releaseRead, releaseWrite);
    const pid_t child = ::fork();
    if (child < 0) Fail("fork", errno);
    if (child == 0) {
        // Only the parent may keep the release pipe open, or it never reads end of file.
        releaseWrite.Reset();
        readyRead.Reset();
        char outcome = 'F';
        const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0222);
        struct flock request = {};
        request.l_type = F_WRLCK;
        request.l_whence = SEEK_SET;
        if (fd >= 0 && ::fcntl(fd, F_SETLK, &request) == 0) outcome = 'L';
        if (::write(readyWrite.Get(), &outcome, 1) != 1) ::_exit(1);
        char byte;
        while (::read(releaseRead.Get(), &byte, 1) < 0 && errno == EINTR) {
        }
        ::_exit(0);
    }
    readyWrite.Reset();
    releaseRead.Reset();
    m_child = child;
    char outcome = 0;
    ssize_t count;
    do {
        count = ::read(readyRead.Get(), &outcome, 1);
    } while (count < 0 && errno == EINTR);
    m_releaseFd = releaseWrite.Release();
    if (outcome != 'L') {
        Release();
        throw std::runtime_error("could not lock " + path + " from a helper process");
    }
}

ExternalFileLock::~ExternalFileLock() { Release(); }

void ExternalFileLock::Release() {
    if (m_releaseFd >= 0) {
        ::close(m_releaseFd);
        m_releaseFd = -1;
    }
    if (m_child > 0) {
        int status;
        while (::waitpid(m_child, &status, 0) < 0 && errno == EINTR) {
        }
        m_child = -1;
    }
}

}  // namespace e2e
