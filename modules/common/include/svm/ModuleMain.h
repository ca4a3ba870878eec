#ifndef SVM_MODULEMAIN_H
#define SVM_MODULEMAIN_H

#include <functional>
#include <string>

#include "svm/SvmDocument.h"
#include "svm/Sysfs.h"

namespace svm {

// Command-line options shared by every module.
struct ModuleOptions {
    std::string root = "/";  // --root DIR
};

using CollectFunction = std::function<void(const ModuleOptions&, SvmDocument&)>;

// Parses "--root DIR", "--root=DIR", "-h"/"--help" and "--version", runs
// collect and prints the document on standard output. Any exception escaping
// collect becomes an "SPStatus" failure, so the document is always printed.
// Exit status: 0 document printed without failures, 1 with at least one
// failure, 2 invalid command line (a document with the failure is printed),
// 3 the document could not be written.
int RunModule(int argc, char** argv, const char* name, const char* summary, const CollectFunction& collect);

}  // namespace svm

#endif
