#include "ModuleTestSupport.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace svmtest {
namespace {

void MakeDirs(const std::string& path) { std::filesystem::create_directories(path); }

std::string Parent(const std::string& path) { return path.substr(0, path.rfind('/')); }

}  // namespace

FakeRoot::FakeRoot() {
    std::string pattern = std::filesystem::temp_directory_path().string() + "/svmroot.XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp");
    m_path = pattern;
}

FakeRoot::~FakeRoot() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void FakeRoot::Write(const std::string& path, const std::string& content) {
    std::string full = m_path + path;
    MakeDirs(Parent(full));
    std::ofstream out(full, std::ios::binary | std::ios::trunc);
    out << content;
    if (!out) throw std::runtime_error("write " + full);
}

void FakeRoot::MakeDir(const std::string& path) { MakeDirs(m_path + path); }

void FakeRoot::Link(const std::string& target, const std::string& path) {
    std::string full = m_path + path;
    MakeDirs(Parent(full));
    if (::symlink(target.c_str(), full.c_str()) != 0) throw std::runtime_error("symlink " + full);
}

void FakeRoot::AddPciFunction(const std::string& address, const std::string& vendor,
                              const std::string& device, const std::string& subVendor,
                              const std::string& subDevice, const std::string& classCode) {
    const std::string dir = "/sys/devices/pci0000:00/" + address;
    Write(dir + "/vendor", vendor + "\n");
    Write(dir + "/device", device + "\n");
    Write(dir + "/subsystem_vendor", subVendor + "\n");
    Write(dir + "/subsystem_device", subDevice + "\n");
    Write(dir + "/class", classCode + "\n");
    Link("../../../devices/pci0000:00/" + address, "/sys/bus/pci/devices/" + address);
}

void FakeRoot::BindDriver(const std::string& address, const std::string& driver, const std::string& module) {
    MakeDir("/sys/bus/pci/drivers/" + driver);
    Link("../../../bus/pci/drivers/" + driver, "/sys/devices/pci0000:00/" + address + "/driver");
    if (!module.empty()) {
        MakeDir("/sys/module/" + module);
        struct stat st;
        std::string link = m_path + "/sys/bus/pci/drivers/" + driver + "/module";
        if (::lstat(link.c_str(), &st) != 0)
            Link("../../../../module/" + module, "/sys/bus/pci/drivers/" + driver + "/module");
    }
}

std::vector<Attributes> Select(const std::string& xml, const std::string& xpath) {
    std::vector<Attributes> result;
    xmlDocPtr doc = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "module.xml", nullptr,
                                  XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    if (doc == nullptr) {
        ADD_FAILURE() << "document does not parse:\n" << xml;
        return result;
    }
    xmlXPathContextPtr ctx = xmlXPathNewContext(doc);
    xmlXPathObjectPtr found = xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(xpath.c_str()), ctx);
    if (found == nullptr) {
        ADD_FAILURE() << "bad XPath " << xpath;
    } else if (found->nodesetval != nullptr) {
        for (int i = 0; i < found->nodesetval->nodeNr; ++i) {
            xmlNodePtr node = found->nodesetval->nodeTab[i];
            Attributes attrs;
            for (xmlAttrPtr a = node->properties; a != nullptr; a = a->next) {
                xmlChar* value = xmlNodeListGetString(doc, a->children, 1);
                attrs[reinterpret_cast<const char*>(a->name)] =
                    value ? reinterpret_cast<const char*>(value) : "";
                xmlFree(value);
            }
            xmlChar* text = xmlNodeGetContent(node);
            attrs["#text"] = text ? reinterpret_cast<const char*>(text) : "";
            xmlFree(text);
            result.push_back(attrs);
        }
    }
    xmlXPathFreeObject(found);
    xmlXPathFreeContext(ctx);
    xmlFreeDoc(doc);
    return result;
}

std::vector<std::string> Failures(const std::string& xml) {
    std::vector<std::string> texts;
    for (auto& found : Select(xml, "/SVMInventory/SPStatus[@result='false']/Message"))
        texts.push_back(found["#text"]);
    return texts;
}

}  // namespace svmtest
