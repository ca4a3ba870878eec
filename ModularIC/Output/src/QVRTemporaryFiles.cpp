#include "QVRTemporaryFiles.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <vector>

namespace {

// Never destroyed: a signal may end the process while static objects are
// being destroyed, and the files must still be found then.
std::mutex& FilesMutex() {
    static std::mutex* mutex = new std::mutex();
    return *mutex;
}

std::vector<std::string>& Files() {
    static std::vector<std::string>* files = new std::vector<std::string>();
    return *files;
}

void Forget(const std::string& name) {
    std::vector<std::string>& files = Files();
    files.erase(std::remove(files.begin(), files.end(), name), files.end());
}

}  // namespace

int QVRTemporaryFiles::Create(std::string& pattern) {
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    // Created and recorded under one lock: no file exists unrecorded.
    std::lock_guard<std::mutex> lock(FilesMutex());
    const int fd = ::mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0) return -1;
    pattern = name.data();
    Files().push_back(pattern);
    return fd;
}

bool QVRTemporaryFiles::Rename(const std::string& name, const std::string& final) {
    std::lock_guard<std::mutex> lock(FilesMutex());
    if (::rename(name.c_str(), final.c_str()) != 0) return false;
    Forget(name);
    return true;
}

void QVRTemporaryFiles::Remove(const std::string& name) {
    const int saved = errno;
    std::lock_guard<std::mutex> lock(FilesMutex());
    ::unlink(name.c_str());
    Forget(name);
    errno = saved;
}

void QVRTemporaryFiles::RemoveAllBeforeExit() {
    FilesMutex().lock();  // never unlocked: nothing is created or renamed any more
    for (const std::string& name : Files()) ::unlink(name.c_str());
    Files().clear();
}
