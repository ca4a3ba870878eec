#include "audit/DocumentReader.h"

#include <fcntl.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "JsonText.h"
#include "XmlStream.h"

namespace audit {
namespace {

const char kUtf16Bom[] = "\xFF\xFE";
const char kUtf8Bom[] = "\xEF\xBB\xBF";

bool StartsWith(const std::string& text, size_t at, const char* prefix, size_t length) {
    return text.size() >= at + length && text.compare(at, length, prefix, length) == 0;
}

// Where a second XML document starts in the stream, or npos: the collector
// writes its error document straight after the inventory on standard output.
size_t SecondDocument(const std::string& bytes) {
    static const char kDecl16[] = "<\0?\0x\0m\0l\0";
    if (StartsWith(bytes, 0, kUtf16Bom, 2)) {
        const size_t at = bytes.find(std::string(kDecl16, 10), 4);
        if (at == std::string::npos) return at;
        return at >= 4 && StartsWith(bytes, at - 2, kUtf16Bom, 2) ? at - 2 : at;
    }
    const size_t at = bytes.find("<?xml", StartsWith(bytes, 0, kUtf8Bom, 3) ? 4 : 1);
    if (at == std::string::npos) return at;
    return at >= 3 && StartsWith(bytes, at - 3, kUtf8Bom, 3) ? at - 3 : at;
}

// About as many Device elements as the document has, so the component list
// is allocated once: large inventories would otherwise hold it twice while it
// grows.
size_t DeviceCount(const std::string& bytes) {
    static const char kDevice16[] = "<\0D\0e\0v\0i\0c\0e\0";
    const std::string needle = StartsWith(bytes, 0, kUtf16Bom, 2) ? std::string(kDevice16, 14) : "<Device";
    size_t count = 0;
    for (size_t at = bytes.find(needle); at != std::string::npos; at = bytes.find(needle, at + needle.size()))
        ++count;
    return count;
}

// Line ends before offset, counted in the document's own encoding.
int LinesBefore(const std::string& bytes, size_t offset) {
    const bool utf16 = StartsWith(bytes, 0, kUtf16Bom, 2);
    int lines = 0;
    for (size_t i = 0; i < offset; i += utf16 ? 2 : 1)
        if (bytes[i] == '\n') ++lines;
    return lines;
}

const std::string* Attribute(const XmlAttributes& attributes, const char* name) {
    for (const auto& attribute : attributes)
        if (attribute.first == name) return &attribute.second;
    return nullptr;
}

std::string AttributeOr(const XmlAttributes& attributes, const char* name) {
    const std::string* value = Attribute(attributes, name);
    return value != nullptr ? *value : std::string();
}

// The inventory's elements as the collector writes them; anything else is a
// foreign document.
class InventoryHandler : public XmlHandler {
public:
    explicit InventoryHandler(Inventory& inventory) : m_inventory(inventory) {}

    bool Start(int depth, const std::string& name, const XmlAttributes& attributes,
               std::string& error) override {
        if (depth == 1) m_inDevice = name == "Device";
        if (depth == 0) {
            if (name != "SVMInventory") {
                error = name == "InventoryError" ? "an error document (root InventoryError), not an inventory"
                                                 : "root element " + name + ", not SVMInventory";
                return false;
            }
            const std::string* version = Attribute(attributes, "schemaVersion");
            if (version != nullptr && *version != "1.0") {
                error = "schemaVersion " + *version + " is not 1.0";
                return false;
            }
            m_inventory.timestamp = AttributeOr(attributes, "timestamp");
            m_inventory.collectorVersion = AttributeOr(attributes, "sorvikVersion");
            return true;
        }
        if (depth == 1 && name == "OperatingSystem") {
            OperatingSystem& os = m_inventory.os;
            for (const auto& attribute : attributes) {
                if (attribute.first == "osVendor")
                    os.osVendor = attribute.second;
                else if (attribute.first == "osCode")
                    os.osCode = attribute.second;
                else if (attribute.first == "osArch")
                    os.osArch = attribute.second;
                else if (attribute.first == "majorVersion")
                    os.majorVersion = attribute.second;
                else if (attribute.first == "minorVersion")
                    os.minorVersion = attribute.second;
                else if (attribute.first == "spMajorVersion")
                    os.spMajorVersion = attribute.second;
                else if (attribute.first == "spMinorVersion")
                    os.spMinorVersion = attribute.second;
                else if (attribute.first == "buildNumber")
                    os.buildNumber = attribute.second;
            }
            return true;
        }
        if (depth == 1 && name == "System") {
            m_inventory.systemID = AttributeOr(attributes, "systemID");
            return true;
        }
        if (depth == 1 && name == "Device") {
            m_inventory.components.emplace_back();
            Component& component = m_inventory.components.back();
            for (const auto& attribute : attributes) {
                if (attribute.first == "componentID")
                    component.componentID = attribute.second;
                else if (attribute.first == "enum")
                    component.componentInstance = attribute.second;
                else if (attribute.first == "FQDD")
                    component.fqdd = attribute.second;
                else if (attribute.first == "vendorID")
                    component.vendorID = attribute.second;
                else if (attribute.first == "deviceID")
                    component.deviceID = attribute.second;
                else if (attribute.first == "subVendorID")
                    component.subVendorID = attribute.second;
                else if (attribute.first == "subDeviceID")
                    component.subDeviceID = attribute.second;
            }
            m_applications = 0;
            return true;
        }
        if (depth == 2 && name == "Application" && m_inDevice) {
            if (++m_applications > 1) {
                error = "a second Application in one Device";
                return false;
            }
            Component& component = m_inventory.components.back();
            component.name = AttributeOr(attributes, "display");
            component.componentType = AttributeOr(attributes, "componentType");
            const std::string* version = Attribute(attributes, "version");
            if (version == nullptr) {
                error = "Application without a version";
                return false;
            }
            component.version = *version;
            return true;
        }
        error = "unexpected element " + name;
        return false;
    }

    bool End(int depth, const std::string& name, std::string& error) override {
        if (depth == 1 && name == "Device") {
            m_inDevice = false;
            if (m_applications == 0) {
                error = "Device without an Application";
                return false;
            }
        }
        return true;
    }

private:
    Inventory& m_inventory;
    bool m_inDevice = false;
    int m_applications = 0;
};

class ErrorDocumentHandler : public XmlHandler {
public:
    explicit ErrorDocumentHandler(ErrorDocument& errors) : m_errors(errors) {}

    bool Start(int depth, const std::string& name, const XmlAttributes& attributes,
               std::string& error) override {
        if (depth == 0) {
            if (name == "InventoryError") return true;
            error = name == "SVMInventory" ? "an inventory (root SVMInventory), not an error document"
                                           : "root element " + name + ", not InventoryError";
            return false;
        }
        if (depth == 1 && name == "SPStatus") {
            const std::string* module = Attribute(attributes, "module");
            if (module == nullptr) {
                error = "SPStatus without a module";
                return false;
            }
            m_errors.failures.push_back(ModuleFailure{*module, ""});
            return true;
        }
        if (depth == 2 && name == "Message") {
            m_inMessage = true;
            return true;
        }
        error = "unexpected element " + name;
        return false;
    }

    void Text(const char* text, size_t length) override {
        if (m_inMessage) m_errors.failures.back().message.append(text, length);
    }

    bool End(int depth, const std::string&, std::string&) override {
        if (depth == 2) m_inMessage = false;
        return true;
    }

private:
    ErrorDocument& m_errors;
    bool m_inMessage = false;
};

std::string Field(const cJSON* object, const char* key) {
    const cJSON* item = cJSON_GetObjectItemCaseSensitive(object, key);
    return cJSON_IsString(item) ? item->valuestring : "";
}

// Every member of object must be a string named in keys; error names the
// first that is not, by its JSON path.
bool StringMembers(const cJSON* object, const std::string& path, const char* const* keys,
                   std::string& error) {
    if (!cJSON_IsObject(object)) {
        error = path + ": expected an object, found " + JsonTypeName(object);
        return false;
    }
    for (const cJSON* member = object->child; member != nullptr; member = member->next) {
        bool known = false;
        for (const char* const* key = keys; *key != nullptr; ++key)
            known = known || std::strcmp(*key, member->string) == 0;
        if (!known) {
            error = path + "." + member->string + ": unknown key";
            return false;
        }
        if (!cJSON_IsString(member)) {
            error = path + "." + member->string + ": expected a string, found " + JsonTypeName(member);
            return false;
        }
    }
    return true;
}

bool ParseJsonInventory(const std::string& bytes, const std::string& name, Inventory& inventory,
                        std::string& error) {
    JsonPtr json = ParseJsonText(bytes, name, error);
    if (!json) return false;
    static const char* const kRootKeys[] = {"UpdatableComponentsInventory", nullptr};
    static const char* const kBodyKeys[] = {"OperatingSystem", "System", "UpdateableComponent", nullptr};
    static const char* const kOsKeys[] = {"name",         "osVendor",     "osCode",         "osArch",
                                          "majorVersion", "minorVersion", "spMajorVersion", "spMinorVersion",
                                          "buildNumber",  nullptr};
    static const char* const kSystemKeys[] = {"systemID", nullptr};
    static const char* const kComponentKeys[] = {
        "name",     "componentType", "componentID", "componentInstance", "fqdd", "vendorID",
        "deviceID", "subVendorID",   "subDeviceID", "version",           nullptr};
    const cJSON* root = json.get();
    const cJSON* body = cJSON_GetObjectItemCaseSensitive(root, "UpdatableComponentsInventory");
    if (!cJSON_IsObject(root) || body == nullptr) {
        error = name + ": $: not an inventory (no UpdatableComponentsInventory object)";
        return false;
    }
    for (const cJSON* member = root->child; member != nullptr; member = member->next) {
        if (std::strcmp(member->string, kRootKeys[0]) != 0) {
            error = name + ": $." + member->string + ": unknown key";
            return false;
        }
    }
    const std::string bodyPath = "$.UpdatableComponentsInventory";
    if (!cJSON_IsObject(body)) {
        error = name + ": " + bodyPath + ": expected an object, found " + JsonTypeName(body);
        return false;
    }
    for (const cJSON* member = body->child; member != nullptr; member = member->next) {
        bool known = false;
        for (const char* const* key = kBodyKeys; *key != nullptr; ++key)
            known = known || std::strcmp(*key, member->string) == 0;
        if (!known) {
            error = name + ": " + bodyPath + "." + member->string + ": unknown key";
            return false;
        }
    }
    std::string where;
    if (const cJSON* os = cJSON_GetObjectItemCaseSensitive(body, "OperatingSystem")) {
        if (!StringMembers(os, bodyPath + ".OperatingSystem", kOsKeys, where)) {
            error = name + ": " + where;
            return false;
        }
        inventory.os = OperatingSystem{
            Field(os, "name"),           Field(os, "osVendor"),       Field(os, "osCode"),
            Field(os, "osArch"),         Field(os, "majorVersion"),   Field(os, "minorVersion"),
            Field(os, "spMajorVersion"), Field(os, "spMinorVersion"), Field(os, "buildNumber")};
    }
    if (const cJSON* system = cJSON_GetObjectItemCaseSensitive(body, "System")) {
        if (!StringMembers(system, bodyPath + ".System", kSystemKeys, where)) {
            error = name + ": " + where;
            return false;
        }
        inventory.systemID = Field(system, "systemID");
    }
    const cJSON* list = cJSON_GetObjectItemCaseSensitive(body, "UpdateableComponent");
    if (list == nullptr) {
        error = name + ": " + bodyPath + ": no UpdateableComponent array";
        return false;
    }
    if (!cJSON_IsArray(list)) {
        error =
            name + ": " + bodyPath + ".UpdateableComponent: expected an array, found " + JsonTypeName(list);
        return false;
    }
    size_t index = 0;
    for (const cJSON* item = list->child; item != nullptr; item = item->next, ++index) {
        const std::string path = bodyPath + ".UpdateableComponent[" + std::to_string(index) + "]";
        if (!StringMembers(item, path, kComponentKeys, where)) {
            error = name + ": " + where;
            return false;
        }
        if (cJSON_GetObjectItemCaseSensitive(item, "version") == nullptr) {
            error = name + ": " + path + ": no version";
            return false;
        }
        Component component;
        for (const cJSON* member = item->child; member != nullptr; member = member->next) {
            const char* key = member->string;
            std::string value = member->valuestring;
            if (std::strcmp(key, "name") == 0)
                component.name = std::move(value);
            else if (std::strcmp(key, "componentType") == 0)
                component.componentType = std::move(value);
            else if (std::strcmp(key, "componentID") == 0)
                component.componentID = std::move(value);
            else if (std::strcmp(key, "componentInstance") == 0)
                component.componentInstance = std::move(value);
            else if (std::strcmp(key, "fqdd") == 0)
                component.fqdd = std::move(value);
            else if (std::strcmp(key, "vendorID") == 0)
                component.vendorID = std::move(value);
            else if (std::strcmp(key, "deviceID") == 0)
                component.deviceID = std::move(value);
            else if (std::strcmp(key, "subVendorID") == 0)
                component.subVendorID = std::move(value);
            else if (std::strcmp(key, "subDeviceID") == 0)
                component.subDeviceID = std::move(value);
            else
                component.version = std::move(value);
        }
        inventory.components.push_back(std::move(component));
    }
    return true;
}

enum class Form { Xml, Json, Empty, Unknown };

Form FormOf(const std::string& bytes) {
    if (StartsWith(bytes, 0, kUtf16Bom, 2)) return Form::Xml;
    size_t at = StartsWith(bytes, 0, kUtf8Bom, 3) ? 3 : 0;
    while (at < bytes.size() && std::strchr(" \t\r\n", bytes[at]) != nullptr && bytes[at] != '\0') ++at;
    if (at == bytes.size()) return Form::Empty;
    if (bytes[at] == '<') return Form::Xml;
    if (bytes[at] == '{') return Form::Json;
    return Form::Unknown;
}

}  // namespace

bool ReadWholeFile(const std::string& path, std::string& bytes, std::string& error) {
    const bool standardInput = path == "-";
    const int fd = standardInput ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = path + ": cannot open: " + std::strerror(errno);
        return false;
    }
    bytes.clear();
    struct stat info;
    if (fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0)
        bytes.reserve(static_cast<size_t>(info.st_size));
    char buffer[65536];
    bool ok = true;
    for (;;) {
        const ssize_t n = read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            error = path + ": cannot read: " + std::strerror(errno);
            ok = false;
            break;
        }
        if (n == 0) break;
        bytes.append(buffer, static_cast<size_t>(n));
    }
    if (!standardInput && close(fd) != 0 && ok) {
        error = path + ": cannot close: " + std::strerror(errno);
        ok = false;
    }
    return ok;
}

bool ParseInventory(const std::string& bytes, const std::string& name, Inventory& inventory,
                    std::string& error) {
    inventory = Inventory();
    inventory.source = name;
    switch (FormOf(bytes)) {
        case Form::Empty:
            error = name + ": empty, not an inventory";
            return false;
        case Form::Unknown:
            error = name + ":1:1: neither an XML nor a JSON document";
            return false;
        case Form::Json:
            return ParseJsonInventory(bytes, name, inventory, error);
        case Form::Xml:
            break;
    }
    const size_t second = SecondDocument(bytes);
    inventory.components.reserve(DeviceCount(bytes));
    InventoryHandler handler(inventory);
    if (!ParseXml(bytes.data(), second == std::string::npos ? bytes.size() : second, name, 0, handler, error))
        return false;
    if (second == std::string::npos) return true;
    ErrorDocument trailing;
    ErrorDocumentHandler errorHandler(trailing);
    if (!ParseXml(bytes.data() + second, bytes.size() - second, name, LinesBefore(bytes, second),
                  errorHandler, error))
        return false;
    inventory.failures = std::move(trailing.failures);
    return true;
}

bool ReadInventory(const std::string& path, Inventory& inventory, std::string& error) {
    std::string bytes;
    return ReadWholeFile(path, bytes, error) && ParseInventory(bytes, path, inventory, error);
}

bool ParseErrorDocument(const std::string& bytes, const std::string& name, ErrorDocument& errors,
                        std::string& error) {
    errors = ErrorDocument();
    errors.source = name;
    const Form form = FormOf(bytes);
    if (form != Form::Xml) {
        error = name +
                (form == Form::Empty ? ": empty, not an error document" : ":1:1: not an XML error document");
        return false;
    }
    ErrorDocumentHandler handler(errors);
    return ParseXml(bytes.data(), bytes.size(), name, 0, handler, error);
}

bool ReadErrorDocument(const std::string& path, ErrorDocument& errors, std::string& error) {
    std::string bytes;
    return ReadWholeFile(path, bytes, error) && ParseErrorDocument(bytes, path, errors, error);
}

}  // namespace audit
