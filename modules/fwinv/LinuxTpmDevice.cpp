#include "LinuxTpmDevice.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace svm {
namespace {

// The largest response the kernel's TPM drivers hand out.
const size_t kMaxResponse = 4096;

struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0) ::close(fd);
    }
};

int Fail(const std::string& what, const std::string& path, std::string& error) {
    const int err = errno;
    error = what + " " + path + ": " + std::strerror(err);
    return err;
}

}  // namespace

int LinuxTpmDevice::Transact(const std::string& path, const std::vector<uint8_t>& command,
                             std::vector<uint8_t>& response, std::string& error) {
    Descriptor dev{-1};
    do {
        dev.fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOCTTY);
    } while (dev.fd < 0 && errno == EINTR);
    if (dev.fd < 0) return Fail("cannot open", path, error);
    // The driver takes a command in one write and hands the response out in one read.
    ssize_t n;
    do {
        n = ::write(dev.fd, command.data(), command.size());
    } while (n < 0 && errno == EINTR);
    if (n < 0) return Fail("cannot write to", path, error);
    if (static_cast<size_t>(n) != command.size()) {
        error = "cannot write to " + path + ": short write";
        return EIO;
    }
    response.assign(kMaxResponse, 0);
    do {
        n = ::read(dev.fd, response.data(), response.size());
    } while (n < 0 && errno == EINTR);
    if (n < 0) return Fail("cannot read", path, error);
    response.resize(static_cast<size_t>(n));
    return 0;
}

}  // namespace svm
