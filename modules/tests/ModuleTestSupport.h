#ifndef SVM_MODULETESTSUPPORT_H
#define SVM_MODULETESTSUPPORT_H

#include <map>
#include <string>
#include <vector>

#include "svm/ModuleMain.h"
#include "svm/SvmDocument.h"

namespace svmtest {

// A scoped temporary directory standing in for "/".
class FakeRoot {
public:
    FakeRoot();
    ~FakeRoot();
    const std::string& Path() const { return m_path; }
    // Creates the file (and its parent directories) with the content.
    void Write(const std::string& path, const std::string& content);
    void MakeDir(const std::string& path);
    void Link(const std::string& target, const std::string& path);
    // A PCI function under /sys/devices/pci0000:00 linked from /sys/bus/pci/devices.
    void AddPciFunction(const std::string& address, const std::string& vendor, const std::string& device,
                        const std::string& subVendor, const std::string& subDevice,
                        const std::string& classCode);
    // Binds the function to a driver provided by module (empty: built in).
    void BindDriver(const std::string& address, const std::string& driver, const std::string& module);

private:
    std::string m_path;
};

// Attributes of one element, plus "#text" for its text content.
using Attributes = std::map<std::string, std::string>;
// The elements the XPath expression selects; fails the test when the document does not parse.
std::vector<Attributes> Select(const std::string& xml, const std::string& xpath);
// The texts of the failure messages (SPStatus result="false").
std::vector<std::string> Failures(const std::string& xml);

// Runs a module's collect function over root and answers its document.
template <class CollectFn, class... Extra>
std::string Collect(CollectFn collect, const FakeRoot& root, Extra&... extra) {
    svm::SvmDocument doc;
    svm::ModuleOptions options;
    options.root = root.Path();
    collect(options, doc, extra...);
    return doc.ToString();
}

}  // namespace svmtest

#endif
