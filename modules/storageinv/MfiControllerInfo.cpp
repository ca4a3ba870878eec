#include "MfiControllerInfo.h"

#include <cstring>

#include "svm/TextUtil.h"

namespace svm {
namespace {

const uint8_t kMfiCmdDcmd = 0x05;
const uint16_t kMfiFrameDirRead = 0x0010;
const uint32_t kDcmdSglOffset = 0x28;  // the SGL of struct megasas_dcmd_frame

void PutLe(uint8_t* at, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) at[i] = static_cast<uint8_t>(value >> (8 * i));
}

uint32_t GetLe32(const std::vector<uint8_t>& data, size_t at) {
    return data[at] | data[at + 1] << 8 | data[at + 2] << 16 | static_cast<uint32_t>(data[at + 3]) << 24;
}

// A NUL-terminated text field.
std::string Text(const std::vector<uint8_t>& data, size_t at, size_t size) {
    const char* begin = reinterpret_cast<const char*>(data.data()) + at;
    return CleanText(std::string(begin, strnlen(begin, size)));
}

std::vector<MfiImage> Images(const std::vector<uint8_t>& data, size_t countAt, size_t listAt) {
    std::vector<MfiImage> images;
    const uint32_t count = GetLe32(data, countAt);
    for (uint32_t i = 0; i < count && i < 8; ++i) {
        MfiImage image{Text(data, listAt + 72 * i, 8), Text(data, listAt + 72 * i + 8, 32)};
        if (!image.name.empty() || !image.version.empty()) images.push_back(image);
    }
    return images;
}

}  // namespace

void BuildMfiDcmd(MfiIocPacket& packet, uint16_t hostNo, uint32_t opcode, void* buffer, uint32_t size) {
    std::memset(&packet, 0, sizeof packet);
    // The packet is the driver's own, in the machine's byte order; the frame
    // goes to the controller, little-endian.
    packet.hostNo = hostNo;
    packet.sglOffset = kDcmdSglOffset;
    packet.sgeCount = 1;
    uint8_t* frame = packet.frame;
    frame[0x00] = kMfiCmdDcmd;
    frame[0x02] = 0xFF;  // status, until the controller writes its own
    frame[0x07] = 1;     // one SGE
    PutLe(frame + 0x10, kMfiFrameDirRead, 2);
    PutLe(frame + 0x14, size, 4);
    PutLe(frame + 0x18, opcode, 4);
    packet.sgl[0].iov_base = buffer;
    packet.sgl[0].iov_len = size;
}

bool ParseMfiControllerInfo(const std::vector<uint8_t>& data, MfiControllerInfo& info, std::string& why) {
    if (data.size() < 0x6a0) {
        why = "controller information of " + std::to_string(data.size()) + " bytes";
        return false;
    }
    info.productName = Text(data, 1344, 80);
    info.packageVersion = Text(data, 1600, 96);
    info.images = Images(data, 180, 184);
    info.pending = Images(data, 760, 764);
    return true;
}

}  // namespace svm
