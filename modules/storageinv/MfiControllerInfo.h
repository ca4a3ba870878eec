#ifndef SVM_MFICONTROLLERINFO_H
#define SVM_MFICONTROLLERINFO_H

#include <sys/uio.h>

#include <cstdint>
#include <string>
#include <vector>

namespace svm {

// MFI DCMD opcode of the controller information, answered with the 2048
// bytes of the kernel's struct megasas_ctrl_info (little-endian).
const uint32_t kMfiCtrlGetInfo = 0x01010000;
const uint32_t kMfiCtrlInfoSize = 2048;

// The kernel's struct megasas_iocpacket: the argument of MEGASAS_IOC_FIRMWARE,
// _IOWR('M', 1, ...) on the megaraid_sas management node. The driver copies
// the frame's first 128 bytes to the controller, puts its own buffers'
// addresses at sglOffset in the frame, and copies back the buffers and the
// frame's status byte.
#pragma pack(push, 1)
struct MfiIocPacket {
    uint16_t hostNo;
    uint16_t pad;
    uint32_t sglOffset;
    uint32_t sgeCount;
    uint32_t senseOffset;
    uint32_t senseLength;
    uint8_t frame[128];
    struct iovec sgl[16];
};
#pragma pack(pop)
static_assert(sizeof(MfiIocPacket) == 20 + 128 + 16 * sizeof(struct iovec), "the driver's packet layout");

// Offset of the MFI status byte in the packet (frame byte 2).
const size_t kMfiStatusOffset = 22;

// Fills packet with a DCMD frame reading size bytes into buffer from the
// controller with SCSI host number hostNo. The frame's status starts at 0xFF,
// which no controller answers.
void BuildMfiDcmd(MfiIocPacket& packet, uint16_t hostNo, uint32_t opcode, void* buffer, uint32_t size);

struct MfiImage {
    std::string name;  // "APP", "BIOS", ...
    std::string version;
};

// What the inventory takes from struct megasas_ctrl_info: the product name
// (byte 1344, 80 bytes), the firmware package version (byte 1600, 96 bytes),
// the image components in flash (count at byte 180, eight of 72 bytes from
// byte 184: name 8, version 32) and those flashed but waiting for a reset
// (count at byte 760, components from byte 764). Texts end at their NUL and
// are cleaned of control characters and invalid UTF-8.
struct MfiControllerInfo {
    std::string productName;
    std::string packageVersion;
    std::vector<MfiImage> images;
    std::vector<MfiImage> pending;
};

// False, with why, for an answer too short to hold the package version.
bool ParseMfiControllerInfo(const std::vector<uint8_t>& data, MfiControllerInfo& info, std::string& why);

}  // namespace svm

#endif
