#include "MegaraidFirmware.h"

#include <cstdio>
#include <ostream>
#include <vector>

#include "MfiControllerInfo.h"
#include "svm/PciIdDatabase.h"
#include "svm/TextUtil.h"

namespace svm {
namespace {

const char kPrefix[] = "Storage inventory: ";

struct Controller {
    unsigned hostNo = 0;
    PciFunction pci;
    std::string version;
    std::string display;
};

// The private management node, made on first use and removed with its owner.
class ManagementNode {
public:
    ManagementNode(const Sysfs& fs, IMfiDevice& mfi) : m_fs(fs), m_mfi(mfi) {}
    ~ManagementNode() {
        if (m_made) m_mfi.RemoveNode(m_path);
    }
    ManagementNode(const ManagementNode&) = delete;
    ManagementNode& operator=(const ManagementNode&) = delete;

    bool Get(std::string& path, std::string& error) {
        if (!m_path.empty()) {
            path = m_path;
            return true;
        }
        if (!m_error.empty()) {
            error = m_error;
            return false;
        }
        const std::string node = "/dev/megaraid_sas_ioctl_node";
        if (m_fs.Exists(node)) {
            m_path = path = m_fs.Path(node);
            return true;
        }
        // The driver registers its character device without making a node.
        std::string devices;
        unsigned major = 0;
        if (m_fs.ReadFile("/proc/devices", devices, m_error)) {
            m_error = "no " + node + " and no megaraid_sas_ioctl in /proc/devices";
            bool characters = false;
            for (const std::string& line : Split(devices, '\n')) {
                if (line.compare(0, 10, "Character ") == 0) characters = true;
                if (line.compare(0, 6, "Block ") == 0) characters = false;
                char name[64];
                if (characters && std::sscanf(line.c_str(), " %u %63s", &major, name) == 2 &&
                    std::string(name) == "megaraid_sas_ioctl") {
                    m_error.clear();
                    break;
                }
            }
        }
        if (m_error.empty() && m_mfi.MakeNode(major, m_path, m_error) == 0) {
            m_made = true;
            path = m_path;
            return true;
        }
        m_path.clear();
        error = m_error;
        return false;
    }

private:
    const Sysfs& m_fs;
    IMfiDevice& m_mfi;
    std::string m_path;
    std::string m_error;
    bool m_made = false;
};

std::string ImageList(const std::vector<MfiImage>& images) {
    std::string text;
    for (const MfiImage& image : images)
        text += (text.empty() ? "" : ", ") + Trim(image.name + " " + image.version);
    return text;
}

// The controller's firmware, or false with error.
bool AskController(Controller& controller, ManagementNode& node, IMfiDevice& mfi, std::string& error) {
    std::string path;
    if (!node.Get(path, error)) return false;
    std::vector<uint8_t> data;
    uint8_t status = 0xFF;
    if (mfi.Dcmd(path, controller.hostNo, kMfiCtrlGetInfo, kMfiCtrlInfoSize, kMfiTimeoutMs, data, status,
                 error) != 0)
        return false;
    if (status != 0) {
        char text[96];
        std::snprintf(text, sizeof text, "MR_DCMD_CTRL_GET_INFO completed with MFI status 0x%02x", status);
        error = text;
        return false;
    }
    MfiControllerInfo info;
    if (!ParseMfiControllerInfo(data, info, error)) return false;
    controller.version = info.packageVersion;
    for (const MfiImage& image : info.images)
        if (controller.version.empty() && image.name == "APP") controller.version = image.version;
    if (controller.version.empty()) {
        error = "the controller information names no firmware package or APP version";
        return false;
    }
    controller.display = (info.productName.empty() ? "RAID controller" : info.productName) +
                         " firmware package (megaraid_sas)";
    if (!info.images.empty()) controller.display += ": " + ImageList(info.images);
    if (!info.pending.empty()) controller.display += "; after the next reset: " + ImageList(info.pending);
    return true;
}

}  // namespace

void CollectMegaraidFirmware(const Sysfs& fs, SvmDocument& doc, IMfiDevice& mfi, std::ostream& log) {
    const std::string dir = "/sys/class/scsi_host";
    std::vector<std::string> hosts;
    std::string error;
    if (!fs.IsDirectory(dir)) return;
    if (!fs.ListDir(dir, hosts, error)) {
        doc.AddFailure(kPrefix + error);
        return;
    }
    ManagementNode node(fs, mfi);
    std::vector<Controller> found;
    PciIdDatabase ids;
    for (const std::string& host : hosts) {
        if (Trim(fs.ReadLineOr(dir + "/" + host + "/proc_name")) != "megaraid_sas") continue;
        Controller controller;
        if (std::sscanf(host.c_str(), "host%u", &controller.hostNo) != 1) continue;
        std::string where;
        const std::vector<std::string> parts = Split(fs.RealPath(dir + "/" + host + "/device"), '/');
        for (auto part = parts.rbegin(); part != parts.rend() && where.empty(); ++part)
            if (ParsePciAddress(*part, controller.pci)) where = controller.pci.address;
        if (where.empty()) continue;  // not on a PCI function: nothing to put the firmware on
        const std::string name = "megaraid_sas " + host + " (" + where + ")";
        if (!AskController(controller, node, mfi, error)) {
            doc.AddFailure(kPrefix + name + ": " + error);
            log << "storageinv: " << name << ": " << error << "\n";
            continue;
        }
        if (!ReadPciFunction(fs, where, controller.pci, error)) {
            doc.AddFailure(kPrefix + error);
            continue;
        }
        log << "storageinv: " << name << ": firmware package " << controller.version
            << " from MR_DCMD_CTRL_GET_INFO\n";
        ids.Want(controller.pci.vendor, controller.pci.deviceId, controller.pci.classCode);
        found.push_back(controller);
    }
    if (found.empty()) return;
    ids.Load(fs);
    for (const Controller& controller : found)
        doc.AddApplication(doc.AddPciDevice(DescribePciFunction(controller.pci, ids)),
                           {"FRMW", controller.version, controller.display});
}

}  // namespace svm
