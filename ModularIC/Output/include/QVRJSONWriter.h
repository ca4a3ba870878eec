#ifndef QVRJSONWRITER_H
#define QVRJSONWRITER_H

#include <cjson/cJSON.h>

#include <string>

// Thin wrapper over a cJSON tree under construction. Owns the root object and
// deletes it (with everything added to it) on destruction.
class QVRJSONWriter {
public:
    QVRJSONWriter();
    QVRJSONWriter(const QVRJSONWriter&) = delete;
    QVRJSONWriter& operator=(const QVRJSONWriter&) = delete;
    ~QVRJSONWriter();

    // root = a new object (a root made before is deleted); true if it succeeded.
    bool Initialize();
    // A new detached object; the caller adds it somewhere or deletes it.
    cJSON* CreateObject() const;
    // Adds the item to the parent under the name. Takes ownership of the item in
    // every case: when the parent (or the name) is null the item is deleted and
    // false returned; false for a null item.
    bool AddObject(cJSON* parent, cJSON* item, const char* name);
    bool AddObject(cJSON* parent, cJSON* item, const std::string& name);
    // The same with the root as parent.
    bool AddObjectToRoot(cJSON* item, const char* name);
    bool AddObjectToRoot(cJSON* item, const std::string& name);
    // A string member on the root or on the object.
    bool AddString(const char* name, const char* value);
    bool AddString(const std::string& name, const std::string& value);
    bool AddString(cJSON* object, const char* name, const char* value);
    bool AddString(cJSON* object, const std::string& name, const std::string& value);
    // A new array added under the name to the root or to the object, returned
    // (null on failure).
    cJSON* CreateArray(const char* name);
    cJSON* CreateArray(const std::string& name);
    cJSON* CreateArray(cJSON* object, const char* name);
    cJSON* CreateArray(cJSON* object, const std::string& name);
    // Appends a string to the root's array of that name; false when the root has
    // no array of that name.
    bool AddItemToArrayObject(const std::string& name, const std::string& value);
    // Appends the item to the array. Takes ownership of the item in every case.
    bool AdditemToArray(cJSON* array, cJSON* item);

    // Prints the tree (formatted) and one newline: to standard output when the
    // path is empty, else to the file, replacing its content. Nothing is written
    // when the file cannot be opened. True when the text was written.
    bool Write(const std::string& path) const;

    cJSON* GetRoot() const { return m_root; }

private:
    cJSON* m_root;
};

#endif
