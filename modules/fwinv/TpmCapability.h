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

// Values of TPM_PT_MANUFACTURER whose firmware words are read their own way.
const uint32_t kTpmVendorInfineon = 0x49465800;  // "IFX"
const uint32_t kTpmVendorSt = 0x53544D20;        // "STM "
// The software TPM (libtpms, as swtpm and QEMU use it) says "IBM " or "IBM".
const uint32_t kTpmVendorIbmSoftware = 0x49424D20;
const uint32_t kTpmVendorIbmSoftwareOld = 0x49424D00;

// TPM_PT_FIRMWARE_VERSION_1 and _2 as the manufacturer spells its firmware
// version. Infineon: the 16-bit halves of the first word, then bits 31-8
// (build) and 7-0 (patch) of the second, in decimal (0x0007003D 0x000AE100:
// "7.61.2785.0"). STMicroelectronics: the 16-bit halves of the first word
// ("1.258"), the two numbers its advisories name firmware by. The software
// TPM: the four 16-bit halves in hex, as its first word is a date written
// in hex digits (0x20191023 0x00163636: "2019.1023.16.3636"). Every other
// manufacturer, Intel and Nuvoton included: the four 16-bit halves in
// decimal (0x000B0008 0x00320D62: "11.8.50.3426").
std::string FormatTpmFirmwareVersion(uint32_t manufacturer, uint32_t version1, uint32_t version2);

// The vendor id of TPM_PT_MANUFACTURER: four ASCII bytes, most significant
// first, without trailing NULs and blanks, cleaned for XML.
std::string TpmManufacturerText(uint32_t value);

// What a TPM 1.2 chip's sysfs "caps" file says ("Manufacturer: 0x49465800",
// "TCG version: 1.2", "Firmware version: 4.43"); a line that is missing
// leaves its field empty.
struct Tpm12Caps {
    std::string manufacturer;  // the vendor id as text, "IFX"
    std::string tcgVersion;
    std::string firmwareVersion;
};
Tpm12Caps ParseTpm12Caps(const std::string& text);

}  // namespace svm

#endif
