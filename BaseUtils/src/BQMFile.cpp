#include "BQMFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "CPlatformLayer.h"

namespace {

const BQMString& Slash() {
    static const BQMString slash("/", BQMString::BQM_ENCODING_UTF8);
    return slash;
}

bool StatPath(const BQMString& path, struct stat& info) {
    if (path.IsEmpty()) return false;
    const std::string text = path.GetUTF8String();
    return stat(text.c_str(), &info) == 0;
}

// Position of the last "/" in the path, or npos.
std::size_t LastSlash(const BQMString& path) {
    const BQMString::BQMStringType& units = path.GetData();
    return units.rfind(static_cast<unsigned short>('/'));
}

// Position of the extension's "." in name, or npos; a leading "." does not count.
std::size_t ExtensionDot(const BQMString& name) {
    const std::size_t dot = name.GetData().rfind(static_cast<unsigned short>('.'));
    return dot == 0 ? BQMString::GetNPos() : dot;
}

BQMErrorCodeEnum Report(BQMErrorCodeEnum* error, BQMErrorCodeEnum value) {
    if (error != nullptr) *error = value;
    return value;
}

}  // namespace

BQMErrorCodeEnum BQMErrorCodeFromErrno(int error) {
    switch (error) {
        case 0:
            return BQM_ERROR_NONE;
        case EEXIST:
            return BQM_ERROR_ALREADY_EXISTS;
        case ENOENT:
            return BQM_ERROR_NOT_FOUND;
        case EACCES:
        case EPERM:
        case EROFS:
            return BQM_ERROR_ACCESS_DENIED;
        case ENOSPC:
        case EDQUOT:
            return BQM_ERROR_NO_SPACE;
        case ENAMETOOLONG:
        case ENOTDIR:
        case EINVAL:
        case ELOOP:
            return BQM_ERROR_INVALID_PATH;
        default:
            return BQM_ERROR_UNKNOWN;
    }
}

BQMFile::BQMFile() : mFlags(), mPlatform(&CPlatformLayer::Real()) {}

BQMFile::BQMFile(const BQMString& path, IPlatformImpl& platform)
    : mPath(path), mFlags(), mPlatform(&platform) {}

void BQMFile::SetPath(const BQMString& path) { mPath = path; }

bool BQMFile::Exists() const {
    struct stat info;
    return StatPath(mPath, info);
}

bool BQMFile::Touch() const {
    struct stat info;
    if (!StatPath(mPath, info) || S_ISDIR(info.st_mode)) return false;
    mPlatform->RunShellCommand("touch -c " + mPath.GetUTF8String(), false);
    return true;
}

bool BQMFile::Delete() const {
    struct stat info;
    if (!StatPath(mPath, info)) return false;
    const std::string text = mPath.GetUTF8String();
    return (S_ISDIR(info.st_mode) ? rmdir(text.c_str()) : unlink(text.c_str())) == 0;
}

unsigned long long BQMFile::GetSize() const {
    struct stat info;
    if (!StatPath(mPath, info) || info.st_size < 0) return 0;
    return static_cast<unsigned long long>(info.st_size);
}

bool BQMFile::Refresh() {
    for (BQMTime& time : mTimes) time = BQMTime();
    for (bool& flag : mFlags) flag = false;
    struct stat info;
    if (!StatPath(mPath, info)) return false;
    mTimes[BQM_FILE_TIME_CHANGED] = BQMTime(static_cast<unsigned long long>(info.st_ctime));
    mTimes[BQM_FILE_TIME_MODIFIED] = BQMTime(static_cast<unsigned long long>(info.st_mtime));
    mTimes[BQM_FILE_TIME_ACCESSED] = BQMTime(static_cast<unsigned long long>(info.st_atime));
    mFlags[BQM_FILE_EXISTS] = true;
    mFlags[BQM_FILE_IS_DIRECTORY] = S_ISDIR(info.st_mode);
    mFlags[BQM_FILE_IS_READONLY] = access(mPath.GetUTF8String().c_str(), W_OK) != 0;
    const BQMString name = GetName();
    mFlags[BQM_FILE_IS_HIDDEN] = !name.IsEmpty() && name[0] == '.';
    return true;
}

BQMTime BQMFile::GetTime(BQMFileTimeEnum which) const {
    return which >= 0 && which < BQM_FILE_TIME_COUNT ? mTimes[which] : BQMTime();
}

bool BQMFile::GetFlag(BQMFileBoolEnum which) const {
    return which >= 0 && which < BQM_FILE_BOOL_COUNT ? mFlags[which] : false;
}

BQMString BQMFile::TrimmedPath() const {
    BQMString::BQMStringType units = mPath.GetData();
    while (units.size() > 1 && units.back() == '/') units.pop_back();
    return BQMString(units);
}

BQMString BQMFile::GetParentPath(bool withSeparator) const {
    const BQMString path = TrimmedPath();
    const std::size_t slash = LastSlash(path);
    BQMString parent;
    if (slash == BQMString::GetNPos() || path == Slash()) {
        parent = BQMString();
    } else if (slash == 0) {
        parent = Slash();
    } else {
        parent = path.SubString(0, slash);
    }
    if (withSeparator && !parent.IsEmpty() && parent != Slash()) parent += Slash();
    return parent;
}

BQMString BQMFile::GetName() const {
    const BQMString path = TrimmedPath();
    if (path == Slash()) return BQMString();
    const std::size_t slash = LastSlash(path);
    return slash == BQMString::GetNPos() ? path : path.SubString(slash + 1);
}

BQMString BQMFile::GetBaseName() const {
    const BQMString name = GetName();
    return name.SubString(0, ExtensionDot(name));
}

BQMString BQMFile::GetExtension() const {
    const BQMString name = GetName();
    const std::size_t dot = ExtensionDot(name);
    return dot == BQMString::GetNPos() ? BQMString() : name.SubString(dot + 1);
}

void BQMFile::SetName(const BQMString& name) {
    const BQMString parent = GetParentPath(true);
    mPath = parent + name;
}

void BQMFile::AppendName(const BQMString& name) {
    if (mPath.IsEmpty()) {
        mPath = name;
        return;
    }
    BQMString path = TrimmedPath();
    if (path != Slash()) path += Slash();
    mPath = path + name;
}

void BQMFile::RemoveName() { mPath = GetParentPath(false); }

void BQMFile::SetExtension(const BQMString& extension) {
    BQMString bare = extension;
    if (!bare.IsEmpty() && bare[0] == '.') bare = bare.SubString(1);
    BQMString name = GetBaseName();
    if (!bare.IsEmpty()) name = name + "." + bare;
    SetName(name);
}

bool BQMFile::IsValidName() const { return GetName().IsPermissableFileName(); }

bool BQMFile::ParentExists() const {
    BQMString parent = GetParentPath(false);
    if (parent.IsEmpty()) parent = BQMString(".", BQMString::BQM_ENCODING_UTF8);
    struct stat info;
    return StatPath(parent, info) && S_ISDIR(info.st_mode);
}

bool BQMFile::HasValidPath() const {
    if (mPath.IsEmpty()) return false;
    std::vector<BQMString> parts;
    TrimmedPath().SubStrings(Slash(), parts);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        // An empty piece comes from the leading "/" of an absolute path or from "//".
        if (parts[i].IsEmpty()) continue;
        if (!parts[i].IsPermissableFileName()) return false;
    }
    return true;
}

bool BQMFile::MakeDirectory(bool recursive, BQMErrorCodeEnum* error) const {
    if (mPath.IsEmpty()) return Report(error, BQM_ERROR_INVALID_PATH) == BQM_ERROR_NONE;
    struct stat info;
    if (StatPath(mPath, info)) {
        if (S_ISDIR(info.st_mode)) return Report(error, BQM_ERROR_NONE) == BQM_ERROR_NONE;
        return Report(error, BQM_ERROR_ALREADY_EXISTS) == BQM_ERROR_NONE;
    }
    if (recursive) {
        const BQMString parent = GetParentPath(false);
        if (!parent.IsEmpty() && parent != mPath && !BQMFile(parent).MakeDirectory(true, error)) return false;
    }
    if (mkdir(mPath.GetUTF8String().c_str(), 0755) != 0 && errno != EEXIST) {
        return Report(error, BQMErrorCodeFromErrno(errno)) == BQM_ERROR_NONE;
    }
    const bool isDirectory = StatPath(mPath, info) && S_ISDIR(info.st_mode);
    return Report(error, isDirectory ? BQM_ERROR_NONE : BQM_ERROR_ALREADY_EXISTS) == BQM_ERROR_NONE;
}

bool BQMFile::Create(bool overwrite, BQMErrorCodeEnum* error) const {
    if (mPath.IsEmpty()) return Report(error, BQM_ERROR_INVALID_PATH) == BQM_ERROR_NONE;
    const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (overwrite ? O_TRUNC : O_EXCL);
    int fd;
    do {
        fd = open(mPath.GetUTF8String().c_str(), flags, 0644);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) return Report(error, BQMErrorCodeFromErrno(errno)) == BQM_ERROR_NONE;
    close(fd);
    return Report(error, BQM_ERROR_NONE) == BQM_ERROR_NONE;
}
