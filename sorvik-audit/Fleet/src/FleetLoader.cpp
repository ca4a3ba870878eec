#include "audit/fleet/FleetLoader.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "audit/fleet/Sha256.h"

namespace audit {
namespace fleet {

namespace {

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

struct DirCloser {
    void operator()(DIR* dir) const { closedir(dir); }
};

struct FdCloser {
    int fd;
    ~FdCloser() {
        if (fd >= 0) close(fd);
    }
};

bool ReadAll(int fd, std::string& bytes) {
    char buffer[65536];
    for (;;) {
        ssize_t n = read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        if (n == 0) return true;
        bytes.append(buffer, static_cast<std::size_t>(n));
    }
}

// Every message of a failed file starts with the file's name.
bool Named(const std::string& path, std::string& error) {
    if (error.compare(0, path.size(), path) != 0) error = path + ": " + error;
    return false;
}

}  // namespace

bool ParseCollectionTime(const std::string& text, std::time_t& when) {
    std::tm parts = {};
    char tail = 0;
    if (text.size() != 19 ||
        std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d%c", &parts.tm_year, &parts.tm_mon, &parts.tm_mday,
                    &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &tail) != 6) {
        return false;
    }
    if (parts.tm_mon < 1 || parts.tm_mon > 12 || parts.tm_mday < 1 || parts.tm_mday > 31 ||
        parts.tm_hour > 23 || parts.tm_min > 59 || parts.tm_sec > 60) {
        return false;
    }
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    parts.tm_isdst = -1;
    when = std::mktime(&parts);
    return when != static_cast<std::time_t>(-1);
}

FleetLoader::FleetLoader(FleetStore& store, DocumentReaders readers)
    : store_(store), readers_(std::move(readers)) {}

std::vector<std::string> FleetLoader::ListInventories(const std::vector<std::string>& arguments,
                                                      std::vector<std::string>& errors) {
    std::vector<std::string> files;
    for (const std::string& argument : arguments) {
        struct stat info;
        if (argument == "-" || (stat(argument.c_str(), &info) == 0 && !S_ISDIR(info.st_mode))) {
            files.push_back(argument);
            continue;
        }
        if (stat(argument.c_str(), &info) != 0) {
            errors.push_back(argument + ": " + std::strerror(errno));
            continue;
        }
        std::unique_ptr<DIR, DirCloser> dir(opendir(argument.c_str()));
        if (!dir) {
            errors.push_back(argument + ": opendir: " + std::strerror(errno));
            continue;
        }
        std::vector<std::string> found;
        errno = 0;
        while (dirent* entry = readdir(dir.get())) {
            std::string name = entry->d_name;
            if (name[0] == '.' || EndsWith(name, ".errors.xml")) continue;
            if (!EndsWith(name, ".json") && !EndsWith(name, ".xml")) continue;
            std::string path = argument + (EndsWith(argument, "/") ? "" : "/") + name;
            if (stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode)) found.push_back(path);
        }
        if (errno != 0) errors.push_back(argument + ": readdir: " + std::strerror(errno));
        std::sort(found.begin(), found.end());
        files.insert(files.end(), found.begin(), found.end());
    }
    return files;
}

std::string FleetLoader::HostFromPath(const std::string& path) {
    std::string name = path.substr(path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1);
    std::string::size_type dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

std::string FleetLoader::ErrorDocumentPath(const std::string& path) {
    std::string::size_type slash = path.rfind('/');
    std::string::size_type dot = path.rfind('.');
    std::string stem =
        dot == std::string::npos || (slash != std::string::npos && dot < slash) ? path : path.substr(0, dot);
    return stem + ".errors.xml";
}

bool FleetLoader::Read(const std::string& path, std::string& bytes, std::time_t& modified,
                       std::string& error) const {
    int fd = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    FdCloser owner{path == "-" ? -1 : fd};
    struct stat info;
    if (fstat(fd, &info) != 0) {
        error = path + ": fstat: " + std::strerror(errno);
        return false;
    }
    // Standard input has no file time worth keeping: it was collected now.
    modified = S_ISREG(info.st_mode) ? info.st_mtime : std::time(nullptr);
    if (!ReadAll(fd, bytes)) {
        error = path + ": read: " + std::strerror(errno);
        return false;
    }
    return true;
}

bool FleetLoader::Prepare(const std::string& path, const std::string& host, CollectionRecord& record,
                          std::string& error) const {
    record.host = host.empty() ? HostFromPath(path) : host;
    if (record.host.empty() || record.host == "-") {
        error = path + ": no host name; give one with --host";
        return false;
    }
    std::string bytes;
    std::time_t modified = 0;
    if (!Read(path, bytes, modified, error)) return false;
    if (!readers_.parseInventory(bytes, path, record.inventory, error)) return Named(path, error);
    record.failures = record.inventory.failures;
    if (path != "-") {
        std::string errorPath = ErrorDocumentPath(path);
        struct stat info;
        if (stat(errorPath.c_str(), &info) == 0) {
            ErrorDocument errors;
            if (!readers_.readErrors(errorPath, errors, error)) return Named(errorPath, error);
            record.failures = std::move(errors.failures);
        }
    }
    std::time_t collected = modified;
    if (!record.inventory.timestamp.empty() && !ParseCollectionTime(record.inventory.timestamp, collected)) {
        error = path + ": timestamp \"" + record.inventory.timestamp + "\" is not YYYY-MM-DD HH:MM:SS";
        return false;
    }
    record.collectedAt = static_cast<std::int64_t>(collected);
    record.collectorVersion = record.inventory.collectorVersion;
    record.contentHash = Sha256Hex(bytes);
    record.source = path;
    return true;
}

bool FleetLoader::LoadFile(const std::string& path, const std::string& host, bool& added,
                           std::string& error) {
    added = false;
    CollectionRecord record;
    if (!Prepare(path, host, record, error)) return false;
    if (!store_.AddCollection(record, added, error)) return Named(path, error);
    return true;
}

LoadSummary FleetLoader::Load(const std::vector<std::string>& files, const std::string& host,
                              const LoadProgress& progress) {
    LoadSummary summary;
    std::vector<CollectionRecord> batch;
    std::vector<AddResult> results;
    std::size_t done = 0;
    auto store = [&] {
        store_.AddCollections(batch, results);
        for (std::size_t i = 0; i < batch.size(); ++i) {
            if (!results[i].error.empty()) {
                Named(batch[i].source, results[i].error);
                summary.failures.push_back(results[i].error);
            } else if (results[i].added) {
                ++summary.added;
            } else {
                ++summary.unchanged;
            }
            if (progress) progress(++done, files.size());
        }
        batch.clear();
    };
    for (const std::string& path : files) {
        CollectionRecord record;
        std::string error;
        if (Prepare(path, host, record, error)) {
            batch.push_back(std::move(record));
            if (batch.size() == kBatch) store();
            continue;
        }
        summary.failures.push_back(error);
        if (progress) progress(++done, files.size());
    }
    store();
    return summary;
}

}  // namespace fleet
}  // namespace audit
