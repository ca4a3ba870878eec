#ifndef IQVRFILESYSTEM_H
#define IQVRFILESYSTEM_H

#include <string>

// The file-system queries behind CFileUtils. The real one asks the operating
// system; CFileUtils and the path options take one in their constructors, so
// tests hand in a fake.
class IQVRFileSystem {
public:
    virtual ~IQVRFileSystem() = default;
    // Whether the path names an existing directory (links followed).
    virtual bool IsDirectory(const std::string& path) = 0;
    // Whether anything exists at the path (links followed).
    virtual bool Exists(const std::string& path) = 0;
    // Whether the calling process may write to the path.
    virtual bool IsWritable(const std::string& path) = 0;
    // The name the path's chain of symbolic links ends in (the path itself when
    // it is no link or the chain cannot be followed). This default knows no links.
    virtual std::string ResolveLinks(const std::string& path) { return path; }

    static IQVRFileSystem& Real();
};

#endif
