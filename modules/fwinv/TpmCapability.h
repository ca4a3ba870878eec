#ifndef SVM_TPMCAPABILITY_H
#define SVM_TPMCAPABILITY_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace svm {

const uint32_t kTpmPtManufacturer = 0x105;
const uint32_t kTpmPtFirmwareVersion1 = 0x10B;
const uint32_t kTpmPtFirmwareVersion2 = 0x10C;

// The TPM2_GetCapability command without sessions asking for count TPM
// properties (TPM_CAP_TPM_PROPERTIES) from property on.
std::vector<uint8_t> GetTpmPropertiesCommand(uint32_t property, uint32_t count);

// Adds the (property, value) pairs of a TPM2_GetCapability response for TPM
// properties to properties; more says whether the TPM holds further ones.
// False, with why, for an error response code and for a response that is
// short, longer than its size field allows, or not the answer asked for.
bool ParseTpmPropertiesResponse(const std::vector<uint8_t>& response,
                                std::map<uint32_t, uint32_t>& properties, bool& more, std::string& why);

// "major.minor.build.patch": the upper and lower 16 bits of
// TPM_PT_FIRMWARE_VERSION_1, then those of TPM_PT_FIRMWARE_VERSION_2, in
// decimal.
std::string FormatTpmFirmwareVersion(uint32_t version1, uint32_t version2);

// The vendor id of TPM_PT_MANUFACTURER: four ASCII bytes, most significant
// first, without trailing NULs and blanks, cleaned for XML.
std::string TpmManufacturerText(uint32_t value);

}  // namespace svm

#endif
