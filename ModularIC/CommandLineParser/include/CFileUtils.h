#ifndef CFILEUTILS_H
#define CFILEUTILS_H

#include <string>
#include <vector>

#include "IQVRFileSystem.h"

// Checks on one path given on the command line.
class CFileUtils {
public:
    // Outcome of the checks a file the program will write must pass, in the
    // order they run.
    enum WritableFileState {
        ILLEGAL_PATH,       // empty, or holds an illegal substring
        LINK_DANGLING,      // a symbolic link that leads to nothing
        DIRECTORY_MISSING,  // the directory part does not exist
        DIRECTORY_NOT_WRITABLE,
        FILE_NOT_WRITABLE,  // the file exists and may not be written
        FILE_WRITABLE,      // the file exists and may be written
        FILE_TO_BE_CREATED  // the file does not exist yet
    };

    // fileSystem, borrowed, answers the existence and permission queries.
    explicit CFileUtils(const std::string& path, IQVRFileSystem& fileSystem = IQVRFileSystem::Real());

    // False for an empty path or one holding any of "?", "*", "<", "\"", ">",
    // "|", ",". The comma because option values are split at it: the name
    // checked would not be the name written.
    bool HasValidPath() const;
    // The part before the last "/"; "/" for a file in the root; "." for a bare name.
    std::string GetDirName() const;
    bool IsDirectoryExist(const std::string& dir) const;
    bool HasWritePermissionDir(const std::string& dir) const;
    bool IsFileExists() const;
    bool HasWritePermission() const;

    // Runs the checks in order and stops at the first that applies; logs each
    // failure and the case of a file still to be created. A symbolic link is
    // checked as the file it leads to, which is where the document goes.
    WritableFileState CheckWritableFile() const;

private:
    std::string m_path;
    IQVRFileSystem& m_fileSystem;
    std::vector<std::string> m_illegalSubstrings;
};

#endif
