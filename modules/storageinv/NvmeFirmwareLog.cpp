#include "NvmeFirmwareLog.h"

#include "svm/TextUtil.h"

namespace svm {

bool ActiveFirmwareRevision(const std::vector<uint8_t>& page, unsigned& slot, std::string& revision,
                            std::string& why) {
    if (page.size() < 64) {
        why = "firmware slot log of " + std::to_string(page.size()) + " bytes";
        return false;
    }
    slot = page[0] & 0x07;
    if (slot == 0) {
        why = "firmware slot log names no active slot";
        return false;
    }
    const char* text = reinterpret_cast<const char*>(page.data()) + 8 + 8 * (slot - 1);
    revision = CleanText(std::string(text, 8));
    if (revision.empty()) {
        why = "active slot " + std::to_string(slot) + " has no revision";
        return false;
    }
    return true;
}

}  // namespace svm
