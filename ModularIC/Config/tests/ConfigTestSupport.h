#ifndef CONFIGTESTSUPPORT_H
#define CONFIGTESTSUPPORT_H

#include <string>

// A fresh directory under the system temp dir, removed with its contents.
class ScopedTempDir {
public:
    ScopedTempDir();
    ~ScopedTempDir();
    ScopedTempDir(const ScopedTempDir&) = delete;
    ScopedTempDir& operator=(const ScopedTempDir&) = delete;
    const std::string& path() const { return m_path; }
    // Writes text (bytes as given) to name inside the directory.
    void WriteFile(const std::string& name, const std::string& text) const;

private:
    std::string m_path;
};

// Changes the current directory for the life of a scope.
class ScopedChdir {
public:
    explicit ScopedChdir(const std::string& dir);
    ~ScopedChdir();
    ScopedChdir(const ScopedChdir&) = delete;
    ScopedChdir& operator=(const ScopedChdir&) = delete;

private:
    std::string m_previous;
};

// A temp dir that is the current directory, holding icconfig_new.json.
class ConfigDir {
public:
    ConfigDir() : m_cwd(m_dir.path()) {}
    void Write(const std::string& json) const { m_dir.WriteFile("icconfig_new.json", json); }
    const std::string& path() const { return m_dir.path(); }

private:
    ScopedTempDir m_dir;
    ScopedChdir m_cwd;
};

#endif
