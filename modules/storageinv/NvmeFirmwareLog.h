#ifndef SVM_NVMEFIRMWARELOG_H
#define SVM_NVMEFIRMWARELOG_H

#include <cstdint>
#include <string>
#include <vector>

#include "INvmeAdmin.h"

namespace svm {

// The time limit of each admin command: a controller that does not answer in
// a few seconds is stuck, and the kernel resets it when this runs out.
const unsigned kNvmeAdminTimeoutMs = 3000;

// Identify (admin opcode 0x06) with CNS 1: the 4096-byte controller data
// structure.
NvmeAdminCommand IdentifyControllerCommand();

// Get Log Page (admin opcode 0x02) for all namespaces: the 512-byte firmware
// slot information log (log 0x03).
NvmeAdminCommand FirmwareSlotLogCommand();

// The firmware revision the controller runs: Identify Controller bytes 64 to
// 71 (FR), ASCII padded with blanks, cleaned of control characters and invalid
// UTF-8. False, with why, for a short answer or a blank revision.
bool IdentifyFirmwareRevision(const std::vector<uint8_t>& data, std::string& revision, std::string& why);

// What a firmware slot information page says: byte 0 bits 2:0 name the active
// slot, bits 6:4 the slot active after the next reset (0: the same); slot n's
// revision is the 8 ASCII bytes at 8 * n, blank padded.
struct FirmwareSlots {
    unsigned active = 0;
    unsigned next = 0;
    std::string revisions[8];  // by slot number, [0] unused
};

// False, with why, for a page shorter than the 64 bytes that hold the slots.
bool ParseFirmwareSlotLog(const std::vector<uint8_t>& page, FirmwareSlots& slots, std::string& why);

}  // namespace svm

#endif
