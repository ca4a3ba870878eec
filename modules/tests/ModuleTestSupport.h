#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xmlschemas.h>
#include <libxml/xpath.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "svm/ModuleMain.h"
#include "svm/SvmDocument.h"

namespace svmtest {

// A scoped temporary directory standing in for "/".
struct FakeRoot {
    FakeRoot() : path(std::filesystem::temp_directory_path().string() + "/svmroot.XXXXXX") {
        if (::mkdtemp(path.data()) == nullptr) throw std::runtime_error("mkdtemp");
    }
    ~FakeRoot() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    // Creates the file and its parent directories; a path ending in "/" is only a directory.
    void Write(const std::string& file, const std::string& content = "") {
        std::filesystem::create_directories((path + file).substr(0, (path + file).rfind('/')));
        if (file.back() != '/' && !(std::ofstream(path + file, std::ios::binary) << content))
            throw std::runtime_error("write " + file);
    }
    void Link(const std::string& target, const std::string& link) {
        Write(link.substr(0, link.rfind('/') + 1));
        std::filesystem::create_symlink(target, path + link);
    }
    // A PCI function listed in /sys/bus/pci/devices; ids: "vendor device subvendor subdevice class"
    // in hex. A driver of the same-named module is bound unless driver is empty.
    void AddPci(const std::string& address, const std::string& ids, const std::string& driver = "",
                bool builtIn = false) {
        const std::string dir = "/sys/devices/pci0000:00/" + address;
        std::istringstream in(ids);
        std::string id;
        for (const char* file : {"vendor", "device", "subsystem_vendor", "subsystem_device", "class"})
            in >> id, Write(dir + "/" + file, "0x" + id + "\n");
        Link("../../../devices/pci0000:00/" + address, "/sys/bus/pci/devices/" + address);
        if (driver.empty()) return;
        const std::string drivers = "/sys/bus/pci/drivers/" + driver;
        Write(drivers + "/");
        Link("../../../bus/pci/drivers/" + driver, dir + "/driver");
        if (!builtIn && !std::filesystem::exists(path + drivers + "/module"))
            Write("/sys/module/" + driver + "/"), Link("../../../../module/" + driver, drivers + "/module");
    }
    std::string path;
};

// Attributes of each element the XPath expression selects, plus "#text" for its text. Every
// document looked at must also match the module document schema.
using Attributes = std::map<std::string, std::string>;
inline std::vector<Attributes> Select(const std::string& xml, const std::string& xpath) {
    std::vector<Attributes> result;
    xmlDocPtr doc = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "module.xml", nullptr,
                                  XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    if (doc == nullptr) {
        ADD_FAILURE() << "document does not parse:\n" << xml;
        return result;
    }
    static const xmlSchemaPtr schema = [] {
        xmlSchemaParserCtxtPtr parser = xmlSchemaNewParserCtxt(SVM_MODULE_SCHEMA);
        xmlSchemaPtr parsed = xmlSchemaParse(parser);
        xmlSchemaFreeParserCtxt(parser);
        return parsed;
    }();
    xmlSchemaValidCtxtPtr validator = xmlSchemaNewValidCtxt(schema);
    if (schema == nullptr || xmlSchemaValidateDoc(validator, doc) != 0)
        ADD_FAILURE() << "document does not match " << SVM_MODULE_SCHEMA << ":\n" << xml;
    xmlSchemaFreeValidCtxt(validator);
    xmlXPathContextPtr ctx = xmlXPathNewContext(doc);
    xmlXPathObjectPtr found = xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(xpath.c_str()), ctx);
    for (int i = 0; found != nullptr && found->nodesetval != nullptr && i < found->nodesetval->nodeNr; ++i) {
        xmlNodePtr node = found->nodesetval->nodeTab[i];
        Attributes attrs;
        for (xmlAttrPtr a = node->properties; a != nullptr; a = a->next) {
            xmlChar* value = xmlNodeListGetString(doc, a->children, 1);
            attrs[reinterpret_cast<const char*>(a->name)] = value ? reinterpret_cast<const char*>(value) : "";
            xmlFree(value);
        }
        xmlChar* text = xmlNodeGetContent(node);
        attrs["#text"] = text ? reinterpret_cast<const char*>(text) : "";
        xmlFree(text);
        result.push_back(attrs);
    }
    xmlXPathFreeObject(found);
    xmlXPathFreeContext(ctx);
    xmlFreeDoc(doc);
    return result;
}

// The texts of the failure messages (SPStatus result="false").
inline std::vector<std::string> Failures(const std::string& xml) {
    std::vector<std::string> texts;
    for (auto& found : Select(xml, "/SVMInventory/SPStatus[@result='false']/Message"))
        texts.push_back(found["#text"]);
    return texts;
}

// Runs a module's collect function over root and answers its document.
template <class CollectFn, class... Extra>
std::string Collect(CollectFn collect, const FakeRoot& root, Extra&... extra) {
    svm::SvmDocument doc;
    collect(svm::ModuleOptions{root.path}, doc, extra...);
    return doc.ToString();
}

}  // namespace svmtest
