// The command line into an argument list. Input: the words, separated by NUL
// bytes. Every outcome must be one of the documented result codes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "CFileUtils.h"
#include "IQVRFileSystem.h"
#include "QVRArgumentList.h"
#include "QVROptionArgumentValidation.h"
#include "QVRResultCodes.h"

namespace {

// Path checks answered from the path itself: fast, repeatable, and the fuzzer
// still reaches both answers of every check.
class PatternFileSystem : public IQVRFileSystem {
public:
    bool IsDirectory(const std::string& path) override { return !path.empty() && path.back() == '/'; }
    bool Exists(const std::string& path) override { return path.size() % 2 == 0; }
    bool IsWritable(const std::string& path) override { return path.find('w') != std::string::npos; }
};

PatternFileSystem g_fileSystem;

bool Documented(int code) {
    static const unsigned int codes[] = {QVR_RESULT_SUCCESS,
                                         QVR_RESULT_RECORDS_COLLECTED,
                                         QVR_RESULT_COMPLETE_FAILURE,
                                         QVR_RESULT_ANOTHER_INSTANCE,
                                         QVR_RESULT_LOCK_ERROR,
                                         QVR_RESULT_INVALID_OPTION,
                                         QVR_RESULT_INVALID_LOG_FILE,
                                         QVR_RESULT_INVALID_CONFIG_FILE,
                                         QVR_RESULT_BDIR_PATH_INVALID,
                                         QVR_RESULT_BDIR_NOT_WRITABLE,
                                         QVR_RESULT_ARGUMENT_LIST_FAILED,
                                         QVR_RESULT_INVALID_ENCODING,
                                         QVR_RESULT_REQUIRES_ARGUMENT,
                                         QVR_RESULT_SHOULD_NOT_HAVE_ARGUMENT,
                                         QVR_RESULT_DEPENDENT_OPTION_MISSING,
                                         QVR_RESULT_INVALID_OUTPUT_FORMAT,
                                         QVR_RESULT_INVALID_ARGUMENT,
                                         QVR_RESULT_PROGRESS_WRITTEN,
                                         QVR_RESULT_NO_INSTANCE_ACTIVE,
                                         QVR_RESULT_PROGRESS_FAILED,
                                         QVR_RESULT_INVALID_ARGUMENT_2,
                                         QVR_RESULT_INVALID_ARGUMENT_3};
    for (unsigned int documented : codes)
        if (static_cast<unsigned int>(code) == documented) return true;
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<std::string> words = {"sorvik"};
    std::string word;
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == 0) {
            words.push_back(word);
            word.clear();
        } else {
            word.push_back(static_cast<char>(data[i]));
        }
    }
    if (!word.empty() || size == 0) words.push_back(word);
    std::vector<char*> argv;
    for (std::string& w : words) argv.push_back(&w[0]);
    argv.push_back(nullptr);

    QVRArgumentList list;
    QVROptionArgumentValidation validation(g_fileSystem);
    const int result = validation.ProcessArgument(static_cast<int>(words.size()), argv.data(), &list);
    if (!Documented(result)) __builtin_trap();
    return 0;
}
