// Linked into every test program that takes the collector's lock file or its
// progress segment: before any test runs, the process gets a /var/lock and a
// System V IPC space of its own, inherited by every collector it starts. Tests
// then never meet an installed collector's lock or segment, nor each other's.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace {

class MachineIsolation : public ::testing::Environment {
public:
    void SetUp() override {
        std::string failed;
        if (unshare(CLONE_NEWNS | CLONE_NEWIPC) != 0) {
            failed = "unshare";
        } else if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
            failed = "making / private";
        } else if (mount("sorvik-test", "/var/lock", "tmpfs", MS_NOSUID | MS_NODEV, "mode=1777") != 0) {
            failed = "mounting a tmpfs on /var/lock";
        }
        ASSERT_TRUE(failed.empty()) << failed << ": " << std::strerror(errno)
                                    << " (these tests run as root, in namespaces of their own)";
    }
};

const ::testing::Environment* const kIsolation = ::testing::AddGlobalTestEnvironment(new MachineIsolation);

}  // namespace
