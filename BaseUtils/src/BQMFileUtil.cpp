#include "BQMFileUtil.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>

namespace fs = std::filesystem;

namespace {
fs::path ToPath(const BQMString& path) { return fs::path(path.GetUTF8String()); }

// Tries a fresh name this many times before giving up on a crowded directory.
const int kUniqueAttempts = 16;
}  // namespace

BQMString BQMFileUtil::GetSeparator() { return BQMString("/", BQMString::BQM_ENCODING_UTF8); }

BQMString BQMFileUtil::GetIllegalCharacters() {
    return BQMString("\\/:?%*<\">|", BQMString::BQM_ENCODING_UTF8);
}

std::vector<BQMString> BQMFileUtil::GetReservedNames() {
    return {BQMString(".", BQMString::BQM_ENCODING_UTF8), BQMString("..", BQMString::BQM_ENCODING_UTF8)};
}

BQMString BQMFileUtil::GetCurrentExecutablePath(bool withName) {
    char buffer[PATH_MAX + 1];
    const ssize_t length = readlink("/proc/self/exe", buffer, PATH_MAX);
    if (length <= 0) return BQMString();
    BQMFile file(BQMString(std::string(buffer, static_cast<std::size_t>(length))));
    return withName ? file.GetPath() : file.GetParentPath(false);
}

bool BQMFileUtil::IsDirectory(const BQMString& path) {
    std::error_code error;
    return fs::is_directory(ToPath(path), error);
}

bool BQMFileUtil::DeleteDirectory(const BQMString& path, bool recursive) {
    if (!IsDirectory(path)) return false;
    std::error_code error;
    if (recursive) return fs::remove_all(ToPath(path), error) != static_cast<std::uintmax_t>(-1) && !error;
    return fs::remove(ToPath(path), error) && !error;
}

BQMString BQMFileUtil::UniqueName(const BQMString& base, const BQMString& prefix) {
    static thread_local std::mt19937 generator(std::random_device{}());
    char name[64];
    std::snprintf(name, sizeof name, "%x-%x-%x-%x-%x%x", static_cast<unsigned>(generator()),
                  static_cast<unsigned>(generator() & 0xFFFF), static_cast<unsigned>(generator() & 0xFFFF),
                  static_cast<unsigned>(generator() & 0xFFFF), static_cast<unsigned>(generator() & 0xFFFF),
                  static_cast<unsigned>(generator()));
    BQMFile file(base);
    file.AppendName(prefix + name);
    return file.GetPath();
}

bool BQMFileUtil::CreateUniqueDirectory(const BQMString& base, const BQMString& prefix, BQMString& created) {
    if (!IsDirectory(base)) return false;
    for (int attempt = 0; attempt < kUniqueAttempts; ++attempt) {
        const BQMString candidate = UniqueName(base, prefix);
        const std::string text = candidate.GetUTF8String();
        if (mkdir(text.c_str(), 0700) == 0) {
            created = candidate;
            return true;
        }
        if (errno != EEXIST) return false;
    }
    return false;
}

bool BQMFileUtil::RenameFile(const BQMString& from, const BQMString& to) {
    return std::rename(from.GetUTF8String().c_str(), to.GetUTF8String().c_str()) == 0;
}

bool BQMFileUtil::MakeCopyOfFile(const BQMString& from, const BQMString& to, bool overwrite) {
    std::error_code error;
    const fs::copy_options options =
        overwrite ? fs::copy_options::overwrite_existing : fs::copy_options::none;
    return fs::copy_file(ToPath(from), ToPath(to), options, error) && !error;
}

bool BQMFileUtil::MoveFile(const BQMString& from, const BQMString& to) {
    if (RenameFile(from, to)) return true;
    if (errno != EXDEV) return false;
    std::error_code error;
    fs::copy(ToPath(from), ToPath(to), fs::copy_options::recursive, error);
    if (error) return false;
    fs::remove_all(ToPath(from), error);
    return !error;
}

BQMString BQMFileUtil::GetSystemTempDirectory() { return BQMString("/tmp", BQMString::BQM_ENCODING_UTF8); }

bool BQMFileUtil::CreateUniqueTemporaryDirectory(const BQMString& prefix, BQMString& created) {
    return CreateUniqueDirectory(GetSystemTempDirectory(), prefix, created);
}

bool BQMFileUtil::CreateUniqueFile(const BQMString& base, const BQMString& prefix, BQMString& created) {
    if (!IsDirectory(base)) return false;
    for (int attempt = 0; attempt < kUniqueAttempts; ++attempt) {
        const BQMString candidate = UniqueName(base, prefix);
        BQMErrorCodeEnum code = BQM_ERROR_NONE;
        if (BQMFile(candidate).Create(false, &code)) {
            created = candidate;
            return true;
        }
        if (code != BQM_ERROR_ALREADY_EXISTS) return false;
    }
    return false;
}

bool BQMFileUtil::CreateUniqueTemporaryFile(const BQMString& prefix, BQMString& created) {
    return CreateUniqueFile(GetSystemTempDirectory(), prefix, created);
}

bool BQMFileUtil::GetFileNamesInDirectory(const BQMString& directory, std::vector<BQMString>& names) {
    names.clear();
    std::error_code error;
    fs::directory_iterator it(ToPath(directory), error);
    if (error) return false;
    for (; it != fs::directory_iterator(); it.increment(error)) {
        if (error) return false;
        names.push_back(BQMString(it->path().filename().string()));
    }
    if (error) return false;
    std::sort(names.begin(), names.end());
    return true;
}

BQMFile BQMFileUtil::GetFile(const BQMString& directory, const BQMString& name) {
    BQMFile file(directory);
    file.AppendName(name);
    return file;
}

bool BQMFileUtil::CopyDirectory(const BQMString& from, const BQMString& to) {
    if (!IsDirectory(from)) return false;
    std::error_code error;
    if (fs::exists(ToPath(to), error)) return false;
    fs::copy(ToPath(from), ToPath(to), fs::copy_options::recursive, error);
    return !error;
}
