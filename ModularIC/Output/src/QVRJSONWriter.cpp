#include "QVRJSONWriter.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iostream>

#include "QVROutputFile.h"

QVRJSONWriter::QVRJSONWriter() : m_root(nullptr) {}

QVRJSONWriter::~QVRJSONWriter() {
    if (m_root != nullptr) cJSON_Delete(m_root);
}

bool QVRJSONWriter::Initialize() {
    if (m_root != nullptr) cJSON_Delete(m_root);
    m_root = cJSON_CreateObject();
    return m_root != nullptr;
}

cJSON* QVRJSONWriter::CreateObject() const { return cJSON_CreateObject(); }

bool QVRJSONWriter::AddObject(cJSON* parent, cJSON* item, const char* name) {
    if (item == nullptr) return false;
    if (parent == nullptr || name == nullptr) {
        cJSON_Delete(item);
        return false;
    }
    cJSON_AddItemToObject(parent, name, item);
    return true;
}

bool QVRJSONWriter::AddObject(cJSON* parent, cJSON* item, const std::string& name) {
    return AddObject(parent, item, name.c_str());
}

bool QVRJSONWriter::AddObjectToRoot(cJSON* item, const char* name) { return AddObject(m_root, item, name); }

bool QVRJSONWriter::AddObjectToRoot(cJSON* item, const std::string& name) {
    return AddObject(m_root, item, name.c_str());
}

bool QVRJSONWriter::AddString(const char* name, const char* value) { return AddString(m_root, name, value); }

bool QVRJSONWriter::AddString(const std::string& name, const std::string& value) {
    return AddString(m_root, name.c_str(), value.c_str());
}

bool QVRJSONWriter::AddString(cJSON* object, const char* name, const char* value) {
    if (object == nullptr || name == nullptr || value == nullptr) return false;
    return AddObject(object, cJSON_CreateString(value), name);
}

bool QVRJSONWriter::AddString(cJSON* object, const std::string& name, const std::string& value) {
    return AddString(object, name.c_str(), value.c_str());
}

cJSON* QVRJSONWriter::CreateArray(const char* name) { return CreateArray(m_root, name); }

cJSON* QVRJSONWriter::CreateArray(const std::string& name) { return CreateArray(m_root, name.c_str()); }

cJSON* QVRJSONWriter::CreateArray(cJSON* object, const char* name) {
    if (object == nullptr || name == nullptr) return nullptr;
    cJSON* array = cJSON_CreateArray();
    if (!AddObject(object, array, name)) return nullptr;
    return array;
}

cJSON* QVRJSONWriter::CreateArray(cJSON* object, const std::string& name) {
    return CreateArray(object, name.c_str());
}

bool QVRJSONWriter::AddItemToArrayObject(const std::string& name, const std::string& value) {
    if (m_root == nullptr) return false;
    cJSON* array = cJSON_GetObjectItemCaseSensitive(m_root, name.c_str());
    if (!cJSON_IsArray(array)) return false;
    return AdditemToArray(array, cJSON_CreateString(value.c_str()));
}

bool QVRJSONWriter::AdditemToArray(cJSON* array, cJSON* item) {
    if (item == nullptr) return false;
    if (array == nullptr) {
        cJSON_Delete(item);
        return false;
    }
    cJSON_AddItemToArray(array, item);
    return true;
}

bool QVRJSONWriter::Write(const std::string& path) const {
    // Freeing the printed buffer changes nothing in the output.
    char* printed = m_root != nullptr ? cJSON_Print(m_root) : nullptr;
    bool written = false;
    errno = 0;
    if (path.empty()) {
        if (printed != nullptr) {
            std::cout << printed << "\n";
            written = true;
        } else {
            std::cout << "\n";
        }
        std::cout.flush();
        if (!std::cout.good() || !QVRFlushStandardOutput()) {
            written = false;
            if (errno == 0) errno = EIO;
        }
        if (printed == nullptr) std::cout.setstate(std::ios::failbit);
    } else {
        const std::string text = std::string(printed != nullptr ? printed : "") + "\n";
        QVROutputFile file(path);
        written =
            file.Open() && file.WriteAll(text.data(), text.size()) && printed != nullptr && file.Commit();
    }
    if (printed != nullptr) {
        const int saved = errno;
        cJSON_free(printed);
        errno = saved;
    }
    return written;
}
