#ifndef BQMFILE_H
#define BQMFILE_H

#include "BQMString.h"
#include "BQMTime.h"
#include "CPlatformLayer.h"

enum BQMFileTimeEnum {
    BQM_FILE_TIME_CHANGED = 0,  // last status change (Linux keeps no creation time)
    BQM_FILE_TIME_MODIFIED,
    BQM_FILE_TIME_ACCESSED,
    BQM_FILE_TIME_COUNT
};

enum BQMFileBoolEnum {
    BQM_FILE_EXISTS = 0,
    BQM_FILE_IS_DIRECTORY,
    BQM_FILE_IS_READONLY,  // the process may not write it
    BQM_FILE_IS_HIDDEN,    // the name begins with "."
    BQM_FILE_BOOL_COUNT
};

enum BQMErrorCodeEnum {
    BQM_ERROR_NONE = 0,
    BQM_ERROR_INVALID_PATH,
    BQM_ERROR_ALREADY_EXISTS,
    BQM_ERROR_NOT_FOUND,
    BQM_ERROR_ACCESS_DENIED,
    BQM_ERROR_NO_SPACE,
    BQM_ERROR_UNKNOWN
};

// A "/"-separated path plus the time stamps and flags read by Refresh(). Path
// arithmetic never touches the file system; queries (Exists, GetSize, ...) ask it
// afresh each time. Failures give false or an empty value, never an exception.
class BQMFile {
public:
    BQMFile();
    // platform, not owned, runs Touch's shell command.
    explicit BQMFile(const BQMString& path, IPlatformImpl& platform = CPlatformLayer::Real());

    bool operator==(const BQMFile& other) const { return mPath == other.mPath; }
    bool operator!=(const BQMFile& other) const { return !(*this == other); }

    bool HasPath() const { return !mPath.IsEmpty(); }
    const BQMString& GetPath() const { return mPath; }
    void SetPath(const BQMString& path);

    // Whether anything (file, directory, device, ...) exists at the path, links followed.
    bool Exists() const;
    // False for an empty path, a path where nothing exists, or a directory; otherwise runs
    // "touch -c " + path (unquoted, as it stands) through the given platform's shell and
    // returns true whatever the command's status.
    bool Touch() const;
    // Removes the file (or empty directory). False if nothing was removed.
    bool Delete() const;
    // Size in bytes; 0 when nothing exists at the path.
    unsigned long long GetSize() const;
    bool IsEmpty() const { return GetSize() == 0; }

    // Rereads the time stamps and flags from the file system; false when nothing exists
    // there (the values are then cleared).
    bool Refresh();
    BQMTime GetTime(BQMFileTimeEnum which) const;
    bool GetFlag(BQMFileBoolEnum which) const;

    // Everything before the last component ("" when there is no "/", "/" for "/name"),
    // with a trailing "/" when withSeparator is true. Trailing "/"s of the path are ignored.
    BQMString GetParentPath(bool withSeparator = false) const;
    // The last component.
    BQMString GetName() const;
    // The last component without its extension.
    BQMString GetBaseName() const;
    // The text after the last "." of the last component ("" when none, and for names like ".profile").
    BQMString GetExtension() const;
    // Replaces the last component.
    void SetName(const BQMString& name);
    // Adds a component at the end.
    void AppendName(const BQMString& name);
    // Drops the last component.
    void RemoveName();
    // Replaces or adds the extension (a leading "." in extension is ignored); empty removes it.
    void SetExtension(const BQMString& extension);
    // The last component is a permissible file name.
    bool IsValidName() const;
    bool ParentExists() const;
    // The path is not empty and every component is a permissible file name.
    bool HasValidPath() const;

    // Creates the directory, with its missing parents when recursive. True if it exists
    // as a directory afterwards (already existing counts). error, when given, gets the outcome.
    bool MakeDirectory(bool recursive, BQMErrorCodeEnum* error = nullptr) const;
    // Creates an empty file (mode 0644 less the umask). An existing file is truncated when
    // overwrite is true and is an error otherwise.
    bool Create(bool overwrite, BQMErrorCodeEnum* error = nullptr) const;

private:
    BQMString TrimmedPath() const;

    BQMString mPath;
    BQMTime mTimes[BQM_FILE_TIME_COUNT];
    bool mFlags[BQM_FILE_BOOL_COUNT];
    IPlatformImpl* mPlatform;
};

// Maps an errno value to the error code reported by file operations.
BQMErrorCodeEnum BQMErrorCodeFromErrno(int error);

#endif
