#ifndef SVM_MODULETESTSUPPORT_H
#define SVM_MODULETESTSUPPORT_H

#include <map>
#include <string>
#include <vector>

namespace svmtest {

// A scoped temporary directory standing in for "/", removed with everything
// below it when the object goes away.
class FakeRoot {
  public:
    FakeRoot();
    ~FakeRoot();
    FakeRoot(const FakeRoot&) = delete;
    FakeRoot& operator=(const FakeRoot&) = delete;

    const std::string& Path() const { return m_path; }

    // Creates the file (and its parent directories) with the content.
    void Write(const std::string& path, const std::string& content);
    void MakeDir(const std::string& path);
    // Creates a symbolic link at path pointing to target (taken as written).
    void Link(const std::string& target, const std::string& path);

    // A PCI function under /sys/devices/pci0000:00 with its link in
    // /sys/bus/pci/devices; ids as sysfs writes them ("0x8086").
    void AddPciFunction(const std::string& address, const std::string& vendor, const std::string& device,
                        const std::string& subVendor, const std::string& subDevice,
                        const std::string& classCode);
    // Binds the function to a driver provided by module (empty: no module link).
    void BindDriver(const std::string& address, const std::string& driver, const std::string& module);

  private:
    std::string m_path;
};

// Attributes of one element, plus "#text" for its text content.
using Attributes = std::map<std::string, std::string>;

// Parses the document and answers the elements the XPath expression selects.
// Fails the current test when the document does not parse.
std::vector<Attributes> Select(const std::string& xml, const std::string& xpath);

}  // namespace svmtest

#endif
