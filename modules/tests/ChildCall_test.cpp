// The bounded child call under the megaraid_sas ioctl, with real processes.
#include "ChildCall.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "ModuleTestSupport.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes Text(const std::string& text) { return Bytes(text.begin(), text.end()); }

std::string Link(const std::string& path) {
    char target[256];
    const ssize_t n = ::readlink(path.c_str(), target, sizeof target);
    return n < 0 ? "closed" : std::string(target, static_cast<size_t>(n));
}

TEST(ChildCallTest, AnswersWhatTheChildReturnsLargerThanOneRead) {
    Bytes result, big(100000);
    for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<uint8_t>(i * 7);
    std::string error;
    ASSERT_EQ(svm::CallInChild([&] { return big; }, 5000, result, error), 0) << error;
    EXPECT_EQ(result, big);
    EXPECT_EQ(svm::CallInChild([] { return Bytes(); }, 5000, result, error), 0) << error;
    EXPECT_TRUE(result.empty());
}

// A child stuck in the kernel must not hold the module's standard output (the collector reads it
// to its end) or any other descriptor of ours.
TEST(ChildCallTest, TheChildHoldsNoDescriptorOfTheCaller) {
    int created[2];
    ASSERT_EQ(::pipe(created), 0);  // without close-on-exec, as an inherited one would be
    // Above the descriptors the child uses itself.
    const int pipeFds[2] = {::fcntl(created[0], F_DUPFD, 100), ::fcntl(created[1], F_DUPFD, 100)};
    ::close(created[0]);
    ::close(created[1]);
    Bytes result;
    std::string error;
    const int rc = svm::CallInChild(
        [&] {
            return Text(Link("/proc/self/fd/0") + " " + Link("/proc/self/fd/1") + " " +
                        Link("/proc/self/fd/2") + " " + Link("/proc/self/fd/" + std::to_string(pipeFds[0])) +
                        " " + Link("/proc/self/fd/" + std::to_string(pipeFds[1])));
        },
        5000, result, error);
    ::close(pipeFds[0]);
    ::close(pipeFds[1]);
    ASSERT_EQ(rc, 0) << error;
    EXPECT_EQ(std::string(result.begin(), result.end()), "/dev/null /dev/null /dev/null closed closed");
}

TEST(ChildCallTest, AChildThatDoesNotFinishInTimeIsKilledAndNotWaitedFor) {
    Bytes result;
    std::string error;
    const auto start = std::chrono::steady_clock::now();
    // Already past its time when first looked at: no real waiting here.
    EXPECT_EQ(svm::CallInChild(
                  [] {
                      ::pause();
                      return Bytes();
                  },
                  0, result, error),
              ETIMEDOUT);
    EXPECT_EQ(error, "no answer within 0 ms");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    // This child was killed in an interruptible sleep, so it ends at once: reap it here
    // rather than leave the test program a zombie.
    ::waitpid(-1, nullptr, 0);
}

TEST(ChildCallTest, AChildThatFailsIsAnError) {
    Bytes result;
    std::string error;
    EXPECT_EQ(svm::CallInChild(
                  []() -> Bytes {
                      ::raise(SIGKILL);
                      return {};
                  },
                  5000, result, error),
              ECHILD);
    EXPECT_EQ(error, "child killed by signal 9");
}

}  // namespace
