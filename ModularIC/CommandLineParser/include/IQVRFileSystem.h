#ifndef IQVRFILESYSTEM_H
#define IQVRFILESYSTEM_H

#include <string>

// The file-system queries behind CFileUtils. The real one asks the operating
// system; tests install a fake with CFileUtils::SetFileSystemForTesting.
class IQVRFileSystem {
public:
    virtual ~IQVRFileSystem() = default;
    // Whether the path names an existing directory (links followed).
    virtual bool IsDirectory(const std::string& path) = 0;
    // Whether anything exists at the path (links followed).
    virtual bool Exists(const std::string& path) = 0;
    // Whether the calling process may write to the path.
    virtual bool IsWritable(const std::string& path) = 0;
};

#endif
