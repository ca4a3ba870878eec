#ifndef BQMFILEUTIL_H
#define BQMFILEUTIL_H

#include <vector>

#include "BQMFile.h"
#include "BQMString.h"

// File-system helpers over "/"-separated paths. Every call reports failure by its
// result (false or an empty value) and never throws.
class BQMFileUtil {
  public:
    // "/".
    static BQMString GetSeparator();
    // The characters a permissible file name may not hold: \ / : ? % * < " > |
    static BQMString GetIllegalCharacters();
    // Names that never denote a new file: "." and "..".
    static std::vector<BQMString> GetReservedNames();
    // The running program's path, or its directory when withName is false; empty if unknown.
    static BQMString GetCurrentExecutablePath(bool withName);

    static bool IsDirectory(const BQMString& path);
    // Removes the directory; with recursive, everything in it as well.
    static bool DeleteDirectory(const BQMString& path, bool recursive);
    // Creates base/prefix + name, the name formed with "%x-%x-%x-%x-%x%x" from random
    // values, and returns its path in created. base must exist.
    static bool CreateUniqueDirectory(const BQMString& base, const BQMString& prefix, BQMString& created);
    // rename(2): both paths on one file system; an existing target file is replaced.
    static bool RenameFile(const BQMString& from, const BQMString& to);
    // Copies a regular file; an existing target is replaced only when overwrite is true.
    static bool MakeCopyOfFile(const BQMString& from, const BQMString& to, bool overwrite);
    // Renames, or copies and removes when the paths are on different file systems.
    static bool MoveFile(const BQMString& from, const BQMString& to);
    // "/tmp".
    static BQMString GetSystemTempDirectory();
    static bool CreateUniqueTemporaryDirectory(const BQMString& prefix, BQMString& created);
    // Creates an empty file named like CreateUniqueDirectory's directories.
    static bool CreateUniqueFile(const BQMString& base, const BQMString& prefix, BQMString& created);
    static bool CreateUniqueTemporaryFile(const BQMString& prefix, BQMString& created);
    // The names (not paths) of the directory's entries but "." and "..", sorted.
    static bool GetFileNamesInDirectory(const BQMString& directory, std::vector<BQMString>& names);
    // The file named name inside directory.
    static BQMFile GetFile(const BQMString& directory, const BQMString& name);
    // Copies the directory tree; to must not exist yet.
    static bool CopyDirectory(const BQMString& from, const BQMString& to);

  private:
    static BQMString UniqueName(const BQMString& base, const BQMString& prefix);
};

#endif
