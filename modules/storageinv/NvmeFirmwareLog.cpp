#include "NvmeFirmwareLog.h"

#include "svm/TextUtil.h"

namespace svm {

NvmeAdminCommand IdentifyControllerCommand() {
    NvmeAdminCommand command;
    command.opcode = 0x06;
    command.cdw10 = 0x01;  // CNS: the controller
    command.size = 4096;
    return command;
}

NvmeAdminCommand FirmwareSlotLogCommand() {
    NvmeAdminCommand command;
    command.opcode = 0x02;
    command.nsid = 0xFFFFFFFF;
    command.size = 512;
    // Log id 0x03; the number of dwords less one in bits 27:16.
    command.cdw10 = 0x03 | (command.size / 4 - 1) << 16;
    return command;
}

bool IdentifyFirmwareRevision(const std::vector<uint8_t>& data, std::string& revision, std::string& why) {
    if (data.size() < 72) {
        why = "Identify Controller answer of " + std::to_string(data.size()) + " bytes";
        return false;
    }
    revision = CleanText(std::string(reinterpret_cast<const char*>(data.data()) + 64, 8));
    if (revision.empty()) {
        why = "Identify Controller names no firmware revision";
        return false;
    }
    return true;
}

bool ParseFirmwareSlotLog(const std::vector<uint8_t>& page, FirmwareSlots& slots, std::string& why) {
    if (page.size() < 64) {
        why = "firmware slot log of " + std::to_string(page.size()) + " bytes";
        return false;
    }
    slots.active = page[0] & 0x07;
    slots.next = (page[0] >> 4) & 0x07;
    for (unsigned slot = 1; slot <= 7; ++slot)
        slots.revisions[slot] =
            CleanText(std::string(reinterpret_cast<const char*>(page.data()) + 8 * slot, 8));
    return true;
}

}  // namespace svm
