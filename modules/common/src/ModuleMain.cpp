#include "svm/ModuleMain.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

#include "SorvikVersion.h"

namespace svm {
namespace {

const char* const kVersion = SORVIK_VERSION;

void PrintUsage(const char* name, const char* summary) {
    std::printf(
        "Usage: %s [--root DIR]\n"
        "%s\n"
        "Prints one SVMInventory XML document on standard output.\n"
        "  --root DIR   read the system files below DIR instead of / (for tests)\n"
        "  -h, --help   show this help\n"
        "  --version    show the module version\n",
        name, summary);
}

}  // namespace

int RunModule(int argc, char** argv, const char* name, const char* summary, const CollectFunction& collect) {
    ModuleOptions options;
    std::string usageError;
    for (int i = 1; i < argc && usageError.empty(); ++i) {
        const char* arg = argv[i];
        if (std::strcmp(arg, "-h") == 0 || std::strcmp(arg, "--help") == 0) {
            PrintUsage(name, summary);
            return 0;
        }
        if (std::strcmp(arg, "--version") == 0) {
            std::printf("%s %s\n", name, kVersion);
            return 0;
        }
        if (std::strcmp(arg, "--root") == 0) {
            if (i + 1 >= argc || argv[i + 1][0] == '\0')
                usageError = "option --root requires a directory";
            else
                options.root = argv[++i];
        } else if (std::strncmp(arg, "--root=", 7) == 0) {
            if (arg[7] == '\0')
                usageError = "option --root requires a directory";
            else
                options.root = arg + 7;
        } else {
            usageError = std::string("unknown option ") + arg;
        }
    }

    int status = 0;
    try {
        SvmDocument doc;
        if (!usageError.empty()) {
            doc.AddFailure(std::string(name) + ": " + usageError);
            status = 2;
        } else {
            try {
                collect(options, doc);
            } catch (const std::exception& e) {
                doc.AddFailure(std::string(name) + ": unexpected error: " + e.what());
            }
            status = doc.FailureCount() > 0 ? 1 : 0;
        }
        if (!doc.Write(stdout)) return 3;
    } catch (const std::bad_alloc&) {
        return 3;
    }
    return status;
}

}  // namespace svm
