#ifndef SVM_SYSFS_H
#define SVM_SYSFS_H

#include <string>
#include <vector>

namespace svm {

// Read-only access to the files of a root directory ("/" on a live system,
// a fake tree in tests). Every path given is absolute within that root.
class Sysfs {
public:
    explicit Sysfs(std::string root);

    const std::string& Root() const { return m_root; }

    // root + path, with exactly one "/" between them.
    std::string Path(const std::string& path) const;

    // Reads at most maxBytes of the file. On failure, error names the file and
    // the reason ("cannot read /sys/...: No such file or directory").
    bool ReadFile(const std::string& path, std::string& content, std::string& error,
                  size_t maxBytes = 1 << 20) const;

    // The first line of the file, trimmed; false when the file cannot be read.
    bool ReadLine(const std::string& path, std::string& line, std::string& error) const;

    // Like ReadLine but answers an empty text on any failure.
    std::string ReadLineOr(const std::string& path, const std::string& fallback = std::string()) const;

    // Sorted entry names of a directory, without "." and "..".
    bool ListDir(const std::string& path, std::vector<std::string>& names, std::string& error) const;

    bool Exists(const std::string& path) const;
    bool IsDirectory(const std::string& path) const;

    // Last component of a symbolic link's target; empty if not a link.
    std::string LinkBaseName(const std::string& path) const;

    // The resolved absolute path of path within the host file system (not
    // relative to the root); empty when it cannot be resolved.
    std::string RealPath(const std::string& path) const;

private:
    std::string m_root;
};

}  // namespace svm

#endif
