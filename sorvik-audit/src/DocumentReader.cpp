#include "audit/DocumentReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "JsonInventory.h"
#include "XmlStream.h"

namespace audit {
namespace {

const char kUtf16Bom[] = "\xFF\xFE";
const char kUtf8Bom[] = "\xEF\xBB\xBF";

bool StartsWith(const std::string& text, size_t at, const char* prefix, size_t length) {
    return text.size() >= at + length && text.compare(at, length, prefix, length) == 0;
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
    InventoryHandler(Inventory& inventory, const ComponentSink& sink)
        : m_inventory(inventory), m_sink(sink) {}

    bool Start(int depth, const std::string& name, const XmlAttributes& attributes,
               std::string& error) override {
        if (depth == 1) m_inDevice = name == "Device";
        // Components are judged as they are read, against host fields read
        // before them: the collector writes these two first.
        if (depth == 1 && m_devices > 0 && (name == "OperatingSystem" || name == "System")) {
            error = name + " after a Device";
            return false;
        }
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
            m_current = Component();
            ++m_devices;
            Component& component = m_current;
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
            Component& component = m_current;
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
            m_sink(std::move(m_current));
        }
        return true;
    }

private:
    Inventory& m_inventory;
    const ComponentSink& m_sink;
    Component m_current;
    bool m_inDevice = false;
    int m_applications = 0;
    size_t m_devices = 0;
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

// The bytes of one inventory as they are read, in pieces of any size: the
// form is told by the first of them; XML goes through a push parser as it
// comes (UTF-16 converted on the way), so a large file is never held whole,
// and an error document following the inventory in the same stream gets a
// parser of its own. JSON is gathered and parsed at the end.
class InventoryFeed {
public:
    InventoryFeed(const std::string& name, Inventory& inventory, const ComponentSink& sink)
        : m_name(name), m_inventory(inventory), m_sink(sink), m_handler(inventory, sink) {}

    bool Feed(const char* data, size_t size, bool last, std::string& error) {
        if (m_form == Form::Unknown) {
            m_head.append(data, size);
            if (!Decide(last, error)) return false;
            if (m_form == Form::Unknown) return true;
            std::string head;
            head.swap(m_head);
            return Take(head.data(), head.size(), last, error);
        }
        return Take(data, size, last, error);
    }

private:
    enum class Form { Unknown, Json, Xml8, Xml16 };

    bool Decide(bool last, std::string& error) {
        size_t at = StartsWith(m_head, 0, kUtf8Bom, 3) ? 3 : 0;
        if (StartsWith(m_head, 0, kUtf16Bom, 2)) {
            m_form = Form::Xml16;
            return true;
        }
        while (at < m_head.size() &&
               (m_head[at] == ' ' || m_head[at] == '\t' || m_head[at] == '\r' || m_head[at] == '\n'))
            ++at;
        if (at < m_head.size()) {
            if (m_head[at] == '{')
                m_form = Form::Json;
            else if (m_head[at] == '<')
                m_form = Form::Xml8;
            else
                error = m_name + ":1:1: neither an XML nor a JSON document";
            return m_form != Form::Unknown;
        }
        // Only blanks so far; one more byte may be a lone byte-order mark half.
        if (last) {
            error = m_name + ": empty, not an inventory";
            return false;
        }
        return true;
    }

    bool Take(const char* data, size_t size, bool last, std::string& error) {
        if (m_form == Form::Json) {
            m_json.append(data, size);
            return !last || ParseJsonInventory(m_json, m_name, m_inventory, m_sink, error);
        }
        if (m_form == Form::Xml8) return Text(data, size, last, error);
        if (!m_bomSkipped) {
            data += 2;  // the byte-order mark
            size -= 2;
            m_bomSkipped = true;
        }
        m_converted.clear();
        size_t bad = 0;
        if (!m_decoder.Decode(data, size, last, m_converted, bad)) {
            error = m_name + ": broken UTF-16 at byte " + std::to_string(2 + bad);
            return false;
        }
        return Text(m_converted.data(), m_converted.size(), last, error);
    }

    // UTF-8 text of the stream. The last bytes are held back until more come,
    // so an XML declaration split between two pieces is still found.
    bool Text(const char* data, size_t size, bool last, std::string& error) {
        static const size_t kHold = 8;
        m_pending.append(data, size);
        if (!m_inventoryParser) {
            // A UTF-8 byte-order mark may open the stream; a declaration may
            // follow it.
            const bool bom = StartsWith(m_pending, 0, kUtf8Bom, 3);
            if (m_pending.size() < 4 && !last) return true;
            m_inventoryParser.reset(new XmlPushParser(m_name, 0, m_handler, m_form == Form::Xml16));
            m_searchFrom = bom ? 4 : 1;
        }
        if (!m_errorParser) {
            const size_t at = m_pending.find("<?xml", m_searchFrom);
            if (at != std::string::npos) {
                const size_t end = at >= 3 && m_pending.compare(at - 3, 3, kUtf8Bom) == 0 ? at - 3 : at;
                if (!ToInventory(m_pending.data(), end, true, error)) return false;
                m_errorHandler.reset(new ErrorDocumentHandler(m_trailing));
                m_errorParser.reset(
                    new XmlPushParser(m_name, m_lines, *m_errorHandler, m_form == Form::Xml16));
                m_pending.erase(0, at);
            } else {
                const size_t ready = last                       ? m_pending.size()
                                     : m_pending.size() > kHold ? m_pending.size() - kHold
                                                                : 0;
                if (!ToInventory(m_pending.data(), ready, last, error)) return false;
                m_pending.erase(0, ready);
                m_searchFrom = 0;
                return true;
            }
        }
        if (!m_errorParser->Feed(m_pending.data(), m_pending.size(), last, error)) return false;
        m_pending.clear();
        if (last) m_inventory.failures = std::move(m_trailing.failures);
        return true;
    }

    bool ToInventory(const char* data, size_t size, bool last, std::string& error) {
        for (size_t i = 0; i < size; ++i)
            if (data[i] == '\n') ++m_lines;
        return m_inventoryParser->Feed(data, size, last, error);
    }

    const std::string& m_name;
    Inventory& m_inventory;
    const ComponentSink& m_sink;
    Form m_form = Form::Unknown;
    std::string m_head, m_json, m_converted, m_pending;
    bool m_bomSkipped = false;
    Utf16Decoder m_decoder;
    InventoryHandler m_handler;
    std::unique_ptr<XmlPushParser> m_inventoryParser, m_errorParser;
    std::unique_ptr<ErrorDocumentHandler> m_errorHandler;
    ErrorDocument m_trailing;
    size_t m_searchFrom = 1;
    int m_lines = 0;
};

const size_t kPiece = 1 << 16;

// Reads the file in pieces into the feed; "-" is standard input.
bool ReadPieces(const std::string& path, const std::function<bool(const char*, size_t, bool)>& take,
                std::string& error) {
    const bool standardInput = path == "-";
    const int fd = standardInput ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = path + ": cannot open: " + std::strerror(errno);
        return false;
    }
    std::vector<char> buffer(kPiece);
    bool ok = true;
    for (;;) {
        const ssize_t n = read(fd, buffer.data(), buffer.size());
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            error = path + ": cannot read: " + std::strerror(errno);
            ok = false;
            break;
        }
        if (!take(buffer.data(), static_cast<size_t>(n), n == 0)) {
            ok = false;
            break;
        }
        if (n == 0) break;
    }
    if (!standardInput && close(fd) != 0 && ok) {
        error = path + ": cannot close: " + std::strerror(errno);
        ok = false;
    }
    return ok;
}

}  // namespace

bool ReadWholeFile(const std::string& path, std::string& bytes, std::string& error) {
    bytes.clear();
    return ReadPieces(
        path,
        [&](const char* data, size_t size, bool) {
            bytes.append(data, size);
            return true;
        },
        error);
}

bool StreamInventory(const std::string& path, Inventory& inventory, const ComponentSink& sink,
                     std::string& error) {
    inventory = Inventory();
    inventory.source = path;
    InventoryFeed feed(path, inventory, sink);
    return ReadPieces(
        path, [&](const char* data, size_t size, bool last) { return feed.Feed(data, size, last, error); },
        error);
}

bool ParseInventory(const std::string& bytes, const std::string& name, Inventory& inventory,
                    std::string& error) {
    inventory = Inventory();
    inventory.source = name;
    const ComponentSink keep = [&inventory](Component&& component) {
        inventory.components.push_back(std::move(component));
    };
    InventoryFeed feed(name, inventory, keep);
    size_t at = 0;
    do {
        const size_t length = std::min(kPiece, bytes.size() - at);
        if (!feed.Feed(bytes.data() + at, length, at + length == bytes.size(), error)) return false;
        at += length;
    } while (at < bytes.size());
    return true;
}

size_t ComponentBound(const std::string& path) {
    struct stat info;
    if (path == "-" || stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return 0;
    return static_cast<size_t>(info.st_size) / 80;
}

bool ReadInventory(const std::string& path, Inventory& inventory, std::string& error) {
    // Reserved ahead: a list grown by doubling would hold a large inventory
    // twice while it moves.
    std::vector<Component> components;
    components.reserve(ComponentBound(path));
    const ComponentSink keep = [&components](Component&& component) {
        components.push_back(std::move(component));
    };
    if (!StreamInventory(path, inventory, keep, error)) return false;
    inventory.components = std::move(components);
    return true;
}

bool ParseErrorDocument(const std::string& bytes, const std::string& name, ErrorDocument& errors,
                        std::string& error) {
    errors = ErrorDocument();
    errors.source = name;
    size_t at = StartsWith(bytes, 0, kUtf8Bom, 3) ? 3 : 0;
    while (at < bytes.size() &&
           (bytes[at] == ' ' || bytes[at] == '\t' || bytes[at] == '\r' || bytes[at] == '\n'))
        ++at;
    if (!StartsWith(bytes, 0, kUtf16Bom, 2) && (at == bytes.size() || bytes[at] != '<')) {
        error = name +
                (at == bytes.size() ? ": empty, not an error document" : ":1:1: not an XML error document");
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
