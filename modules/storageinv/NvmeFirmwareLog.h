#ifndef SVM_NVMEFIRMWARELOG_H
#define SVM_NVMEFIRMWARELOG_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace svm {

// The firmware slot information log page.
const uint8_t kFirmwareSlotLogId = 0x03;
const size_t kFirmwareSlotLogSize = 512;

// The revision in the active slot of a firmware slot information page: byte 0
// bits 2:0 name the active slot (1 to 7), whose revision is the 8 ASCII bytes
// at 8 + 8 * (slot - 1), padded with blanks. The revision is cleaned of
// control characters and invalid UTF-8. False, with why, for a short page, a
// slot outside 1 to 7 or a blank revision.
bool ActiveFirmwareRevision(const std::vector<uint8_t>& page, unsigned& slot, std::string& revision,
                            std::string& why);

}  // namespace svm

#endif
