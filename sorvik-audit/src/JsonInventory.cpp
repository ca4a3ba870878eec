#include "JsonInventory.h"

#include <cstring>

#include "JsonText.h"

namespace audit {
namespace {

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

}  // namespace

bool ParseJsonInventory(const std::string& bytes, const std::string& name, Inventory& inventory,
                        const ComponentSink& sink, std::string& error) {
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
        sink(std::move(component));
    }
    return true;
}

}  // namespace audit
