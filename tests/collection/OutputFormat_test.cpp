#include <cjson/cJSON.h>
#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <memory>

#include "CollectionSupport.h"

namespace collection {
namespace {

// The operating system, the system, a PCI and two non-PCI devices.
const std::string kModuleDocument =
    "<SVMInventory>\n"
    "<OperatingSystem osVendor=\"Acme\" osArch=\"x86_64\" majorVersion=\"12\" minorVersion=\"4\" "
    "spMajorVersion=\"1\" name=\"Acme Linux\" osCode=\"LIN\"/>\n"
    "<System systemID=\"0627\"/>\n"
    "<Device vendorID=\"8086\" deviceID=\"1572\" subVendorID=\"1028\" subDeviceID=\"1f9c\" "
    "componentID=\"106\" display=\"Contr\xC3\xB4leur 10G\" bus=\"3B\" device=\"00\" function=\"1\" "
    "enum=\"2\">\n  <Application componentType=\"FRMW\" version=\"16.5.0\" display=\"NIC FW\"/>\n"
    "</Device>\n"
    "<Device componentID=\"159\" display=\"BIOS\" enum=\"1\" FQDD=\"BIOS.Setup.1-1\">\n"
    "  <Application componentType=\"BIOS\" version=\"2.1.7\" display=\"BIOS 2.1.7\"/>\n</Device>\n"
    "<Device display=\"Fan\"><Application componentType=\"FRMW\" version=\"\" display=\"Fan FW\"/>"
    "</Device>\n</SVMInventory>";

const std::string kXmlBody =
    "  <OperatingSystem osVendor=\"Acme\" osCode=\"LIN\" osArch=\"x86_64\" majorVersion=\"12\" "
    "minorVersion=\"4\" spMajorVersion=\"1\"/>\n"
    "  <System systemID=\"0627\"/>\n"
    "  <Device display=\"Contr\xC3\xB4leur 10G\" enum=\"2\" componentID=\"106\" function=\"1\" device=\"0\" "
    "bus=\"3b\" subVendorID=\"1028\" subDeviceID=\"1f9c\" deviceID=\"1572\" vendorID=\"8086\">\n"
    "    <Application display=\"NIC FW\" version=\"16.5.0\" componentType=\"FRMW\"/>\n  </Device>\n"
    "  <Device display=\"BIOS\" componentID=\"159\" enum=\"1\" FQDD=\"BIOS.Setup.1-1\">\n"
    "    <Application display=\"BIOS 2.1.7\" version=\"2.1.7\" componentType=\"BIOS\"/>\n  </Device>\n"
    "  <Device display=\"Fan\" componentID=\"\">\n"
    "    <Application display=\"Fan FW\" version=\"\" componentType=\"FRMW\"/>\n  </Device>\n";

const std::string kJson =
    "{\"UpdatableComponentsInventory\":{\"OperatingSystem\":{\"name\":\"Acme Linux\",\"osVendor\":"
    "\"Acme\",\"osCode\":\"LIN\",\"osArch\":\"x86_64\",\"majorVersion\":\"12\",\"minorVersion\":"
    "\"4\",\"spMajorVersion\":\"1\"},\"System\":{\"systemID\":\"0627\"},"
    "\"UpdateableComponent\":["
    "{\"name\":\"NIC FW\",\"componentType\":\"FRMW\",\"componentID\":\"106\","
    "\"componentInstance\":\"2\",\"vendorID\":\"8086\",\"deviceID\":\"1572\",\"subVendorID\":\"1028\","
    "\"subDeviceID\":\"1f9c\",\"version\":\"16.5.0\"},"
    "{\"name\":\"BIOS 2.1.7\",\"componentType\":\"BIOS\",\"componentID\":\"159\","
    "\"version\":\"2.1.7\",\"componentInstance\":\"1\",\"fqdd\":\"BIOS.Setup.1-1\"},"
    "{\"name\":\"Fan FW\",\"componentType\":\"FRMW\",\"componentID\":\"\",\"version\":\"\"}]}}";

// Checks that the text is one formatted JSON document and a newline; returns it
// printed compactly, member order and value types kept.
std::string CompactJson(const std::string& text) {
    std::unique_ptr<cJSON, void (*)(cJSON*)> json(cJSON_Parse(text.c_str()), cJSON_Delete);
    if (!json) {
        ADD_FAILURE() << "not JSON: " << text;
        return "";
    }
    std::unique_ptr<char, void (*)(void*)> formatted(cJSON_Print(json.get()), cJSON_free);
    EXPECT_EQ(text, std::string(formatted.get()) + "\n");
    std::unique_ptr<char, void (*)(void*)> compact(cJSON_PrintUnformatted(json.get()), cJSON_free);
    return compact.get();
}

using OutputFormatTest = CollectionTest;

// Which document goes where in which encoding is the output manager's golden
// table; these rows are the options' way there from the command line, with a
// module's document carried through to the bytes.
TEST_F(OutputFormatTest, FormatEncodingAndFilesReachTheWriters) {
    Install(GenericOnly({Module{"inv", Emit(kModuleDocument)}, Module{"failing", "exit 3\n"}}));
    const auto errors = [](const char* encoding) { return ErrorXml({{"/failing", kFailed}}, encoding); };
    const std::string log = dir.PathOf("err.xml");
    const struct {
        Args args;
        std::string out;        // standard output, timestamps normalized; kJson: compared as JSON
        const char* inventory;  // encoding of inv.xml, "JSON" for inv.json, null: neither written
        const char* errorLog;   // encoding of err.xml, null: not written
    } rows[] = {
        {{}, InventoryXml(kXmlBody) + errors("UTF-8"), nullptr, nullptr},
        // Relative to the start directory, although modules ran elsewhere.
        {{"-outc=./inv.xml"}, errors("UTF-8"), "UTF-16", nullptr},
        {{"-o=" + dir.PathOf("inv.xml"), "-logc=" + log}, "", "UTF-16", "UTF-16"},
        {{"-outc=./inv.xml", "-l=" + log, "-enc=UTF-8"}, "", "UTF-8", "UTF-8"},
        // JSON is UTF-8 whatever is asked, and has no error document.
        {{"-outf=JSON", "-enc=UTF-16"}, kJson, nullptr, nullptr},
        {{"-outf=JSON", "-o=" + dir.PathOf("inv.json"), "-l=" + log}, "", "JSON", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.args));
        dir.WriteFile("inv.xml", std::string(20000, 'x'));  // replaced, not overwritten in place
        ::unlink(log.c_str());
        ::unlink(dir.PathOf("inv.json").c_str());
        const ProcessResult result = Run(row.args);
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.err, "");
        if (row.out == kJson) {
            EXPECT_EQ(CompactJson(result.out), kJson);
        } else {
            EXPECT_EQ(NormalizeTimestamps(result.out), row.out);
        }
        const std::string inventory = row.inventory ? row.inventory : "";
        if (inventory == "JSON") {
            EXPECT_EQ(CompactJson(dir.ReadFile("inv.json")), kJson);
        } else if (!inventory.empty()) {
            const std::string bytes = dir.ReadFile("inv.xml");
            EXPECT_EQ(NormalizeTimestamps(inventory == "UTF-8" ? bytes : Utf16LeToUtf8(bytes)),
                      InventoryXml(kXmlBody, inventory));
        }
        EXPECT_EQ(dir.Exists("inv.json"), inventory == "JSON");
        ASSERT_EQ(dir.Exists("err.xml"), row.errorLog != nullptr);
        if (row.errorLog == nullptr) continue;
        const std::string bytes = dir.ReadFile("err.xml");
        EXPECT_EQ(row.errorLog[4] == '8' ? bytes : Utf16LeToUtf8(bytes), errors(row.errorLog));
    }
}

// The target of a symbolic link; empty when the path is no link.
std::string LinkTarget(const std::string& path) {
    char target[PATH_MAX];
    const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
    return length > 0 ? std::string(target, static_cast<std::size_t>(length)) : std::string();
}

struct stat StatOf(const std::string& path) {
    struct stat info = {};
    EXPECT_EQ(::stat(path.c_str(), &info), 0) << path;
    return info;
}

// Hidden names in the directory: a temporary file left behind.
std::vector<std::string> HiddenFiles(const std::string& directory) {
    std::vector<std::string> names;
    std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(directory.c_str()), ::closedir);
    if (!listing) return names;
    while (const struct dirent* entry = ::readdir(listing.get())) {
        const std::string name = entry->d_name;
        if (name[0] == '.' && name != "." && name != "..") names.push_back(name);
    }
    return names;
}

// Sets or clears the immutable attribute: not even root creates a file in an
// immutable directory.
void SetImmutable(const std::string& directory, bool on) {
    const int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(fd, 0) << directory;
    int flags = 0;
    EXPECT_EQ(::ioctl(fd, FS_IOC_GETFLAGS, &flags), 0);
    flags = on ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
    EXPECT_EQ(::ioctl(fd, FS_IOC_SETFLAGS, &flags), 0) << directory;
    ::close(fd);
}

std::string Decoded(const std::string& bytes, const std::string& encoding) {
    return NormalizeTimestamps(encoding == "UTF-8" ? bytes : Utf16LeToUtf8(bytes));
}

// A link given as -outc or -logc is written through: its target gets the
// document by a rename in the target's own directory and the link stays. A
// link to nothing or into a directory nobody may write is refused before any
// module runs, and nothing is lost. A file already there keeps its owner, group
// and mode.
TEST_F(OutputFormatTest, LinksAreWrittenThroughAndAFileKeepsItsOwnerGroupAndMode) {
    Install(GenericOnly({Module{"inv", Note("ran") + Emit(kModuleDocument)}, Module{"failing", "exit 3\n"}}));
    const std::string errors = ErrorXml({{"/failing", kFailed}}, "UTF-16");
    const char kLogFile[] =
        "Log file either does not exist or is not writable. Provide a valid writable file for avoiding this "
        "error.";
    dir.WriteFile("data/keep", "");
    dir.WriteFile("locked/inv-dated.xml", "old inventory");
    const std::string data = dir.PathOf("data"), locked = dir.PathOf("locked");
    struct Unlock {
        std::string path;
        ~Unlock() { SetImmutable(path, false); }
    } unlock{locked};
    const struct {
        const char* name;
        const char* invLink;  // inv.xml is made a link to this (relative to dir), null: a plain file
        const char* errLink;  // the same for err.xml
        int status;
        std::string err;
        bool collected;  // the modules ran and both documents were written
    } rows[] = {
        {"links to files", "data/inv-dated.xml", "data/err-dated.xml", 1, "", true},
        {"absolute link through a link", "inv2.xml", "data/err-dated.xml", 1, "", true},
        {"a dangling output link", "data/missing.xml", nullptr, 6, kLogFile, false},
        {"a dangling log link", nullptr, "data/missing.xml", 6, kLogFile, false},
        {"an output link into an unwritable directory", "locked/inv-dated.xml", nullptr, 6, kLogFile, false},
        {"a log link into an unwritable directory", nullptr, "locked/inv-dated.xml", 6, kLogFile, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        for (const char* name :
             {"inv.xml", "err.xml", "inv2.xml", "data/inv-dated.xml", "data/err-dated.xml"})
            ::unlink(dir.PathOf(name).c_str());
        ForgetRan();
        dir.WriteFile("data/inv-dated.xml", "old inventory");
        dir.WriteFile("data/err-dated.xml", "old errors");
        // The second row's inventory link leads on through another, absolute, link.
        ASSERT_EQ(::symlink(dir.PathOf("data/inv-dated.xml").c_str(), dir.PathOf("inv2.xml").c_str()), 0);
        if (row.invLink != nullptr) {
            ASSERT_EQ(::symlink(row.invLink, dir.PathOf("inv.xml").c_str()), 0);
        }
        if (row.errLink != nullptr) {
            ASSERT_EQ(::symlink(row.errLink, dir.PathOf("err.xml").c_str()), 0);
        }
        SetImmutable(locked, true);
        const ProcessResult result =
            Run({"-outc=" + dir.PathOf("inv.xml"), "-logc=" + dir.PathOf("err.xml")});
        SetImmutable(locked, false);
        EXPECT_EQ(result.exitStatus, row.status);
        EXPECT_EQ(result.err, row.err);
        EXPECT_EQ(Ran(), row.collected ? Args{"ran"} : Args{});
        if (row.invLink != nullptr) {
            EXPECT_EQ(LinkTarget(dir.PathOf("inv.xml")), row.invLink);
        }
        if (row.errLink != nullptr) {
            EXPECT_EQ(LinkTarget(dir.PathOf("err.xml")), row.errLink);
        }
        EXPECT_EQ(LinkTarget(dir.PathOf("inv2.xml")), dir.PathOf("data/inv-dated.xml"));
        EXPECT_FALSE(dir.Exists("data/missing.xml"));
        EXPECT_EQ(dir.ReadFile("locked/inv-dated.xml"), "old inventory");
        if (row.collected) {
            EXPECT_EQ(Decoded(dir.ReadFile("data/inv-dated.xml"), "UTF-16"),
                      InventoryXml(kXmlBody, "UTF-16"));
            EXPECT_EQ(Decoded(dir.ReadFile("data/err-dated.xml"), "UTF-16"), errors);
        } else {
            EXPECT_EQ(dir.ReadFile("data/inv-dated.xml"), "old inventory");
            EXPECT_EQ(dir.ReadFile("data/err-dated.xml"), "old errors");
            EXPECT_EQ(dir.Exists("inv.xml"), row.invLink != nullptr);
            EXPECT_EQ(dir.Exists("err.xml"), row.errLink != nullptr);
        }
        for (const std::string& directory : {dir.Path(), data, locked})
            EXPECT_EQ(HiddenFiles(directory), std::vector<std::string>()) << directory;
    }

    // Another account's 0640 files: replaced, with their owner, group and mode.
    for (const char* name : {"inv.xml", "err.xml"}) {
        ::unlink(dir.PathOf(name).c_str());
        dir.WriteFile(name, "old", 0640);
        ASSERT_EQ(::chown(dir.PathOf(name).c_str(), 65534, 65534), 0);
    }
    const mode_t mask = ::umask(022);
    const ProcessResult result = Run({"-outc=" + dir.PathOf("inv.xml"), "-logc=" + dir.PathOf("err.xml")});
    ::umask(mask);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(Decoded(dir.ReadFile("inv.xml"), "UTF-16"), InventoryXml(kXmlBody, "UTF-16"));
    EXPECT_EQ(Decoded(dir.ReadFile("err.xml"), "UTF-16"), errors);
    for (const char* name : {"inv.xml", "err.xml"}) {
        const struct stat info = StatOf(dir.PathOf(name));
        EXPECT_EQ(info.st_uid, 65534u) << name;
        EXPECT_EQ(info.st_gid, 65534u) << name;
        EXPECT_EQ(info.st_mode & 07777, 0640u) << name;
    }
    // A new file gets what the umask leaves.
    ::unlink(dir.PathOf("inv.xml").c_str());
    EXPECT_EQ(Run({"-outc=" + dir.PathOf("inv.xml")}).exitStatus, 1);
    EXPECT_EQ(StatOf(dir.PathOf("inv.xml")).st_mode & 07777, 0644u);
    EXPECT_EQ(StatOf(dir.PathOf("inv.xml")).st_uid, 0u);
}

// libxml2 unescapes %XX and strips file:// when it opens a name itself; every
// document here lands under exactly the name given, in either encoding.
TEST_F(OutputFormatTest, NamesAreTakenLiterallyForEveryDocumentInEveryEncoding) {
    Install(GenericOnly({Module{"inv", Emit(kModuleDocument)}, Module{"failing", "exit 3\n"}}));
    // "file://" + an absolute name is a relative name below the directory "file:".
    const std::string uri = "file://" + dir.Path();
    dir.WriteFile(uri + "/keep", "");
    const struct {
        std::string inv, err;  // relative to the start directory
    } names[] = {{"inv%20a.xml", "err%20b.xml"}, {uri + "/inv.xml", uri + "/err.xml"}};
    for (const auto& name : names) {
        for (const std::string encoding : {"UTF-8", "UTF-16"}) {
            SCOPED_TRACE(name.inv + " " + encoding);
            const ProcessResult result = Run({"-outc=" + name.inv, "-logc=" + name.err, "-enc=" + encoding});
            EXPECT_EQ(result.exitStatus, 1);
            EXPECT_EQ(result.err, "");
            EXPECT_EQ(Decoded(dir.ReadFile(name.inv), encoding), InventoryXml(kXmlBody, encoding));
            EXPECT_EQ(Decoded(dir.ReadFile(name.err), encoding), ErrorXml({{"/failing", kFailed}}, encoding));
            for (const char* stray : {"inv a.xml", "err b.xml", "inv.xml", "err.xml"})
                EXPECT_FALSE(dir.Exists(stray)) << stray;
            EXPECT_EQ(HiddenFiles(dir.Path()), std::vector<std::string>());
            ::unlink(dir.PathOf(name.inv).c_str());
            ::unlink(dir.PathOf(name.err).c_str());

            // The progress document of a run held elsewhere, under the same name.
            FileLock holder(kLockFile);
            const ProcessResult progress = Run({"-p", "-outc=" + name.inv, "-enc=" + encoding});
            holder.Release();
            ::unlink(kLockFile);
            EXPECT_EQ(progress.exitStatus, 0);
            // The finished run's counters, read once.
            std::string expected = ProgressXml(2, 2);
            expected.replace(expected.find("UTF-8"), 5, encoding);
            EXPECT_EQ(Decoded(dir.ReadFile(name.inv), encoding), expected);
            EXPECT_FALSE(dir.Exists("inv a.xml"));
            EXPECT_FALSE(dir.Exists("inv.xml"));
            ::unlink(dir.PathOf(name.inv).c_str());
        }
    }
}

}  // namespace
}  // namespace collection
