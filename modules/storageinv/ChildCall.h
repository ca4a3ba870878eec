#ifndef SVM_CHILDCALL_H
#define SVM_CHILDCALL_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace svm {

// Runs call in a forked child and answers the bytes it returns, waiting at
// most timeoutMs. The child's standard input, output and error are /dev/null
// and it keeps no other descriptor of ours, so a child stuck in the kernel
// holds nothing the caller's reader waits on. Answers 0; ETIMEDOUT after
// killing a child that did not finish in time (it is not waited for: one
// stuck in an uninterruptible sleep ends when the kernel lets it); or another
// errno value. error names what failed. Only for single-threaded callers.
int CallInChild(const std::function<std::vector<uint8_t>()>& call, unsigned timeoutMs,
                std::vector<uint8_t>& result, std::string& error);

}  // namespace svm

#endif
