#include "TpmCapability.h"

#include <cstdio>

#include "svm/TextUtil.h"

namespace svm {
namespace {

const uint16_t kTpmStNoSessions = 0x8001;
const uint32_t kTpmCcGetCapability = 0x17A;
const uint32_t kTpmCapTpmProperties = 6;
const size_t kHeaderSize = 10;  // tag, size, command or response code

void Put16(std::vector<uint8_t>& out, uint16_t v) {
    out.push_back(static_cast<uint8_t>(v >> 8));
    out.push_back(static_cast<uint8_t>(v));
}

void Put32(std::vector<uint8_t>& out, uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(v >> shift));
}

uint32_t Get32(const std::vector<uint8_t>& in, size_t at) {
    return static_cast<uint32_t>(in[at]) << 24 | static_cast<uint32_t>(in[at + 1]) << 16 |
           static_cast<uint32_t>(in[at + 2]) << 8 | in[at + 3];
}

std::string Hex(uint32_t value) { return "0x" + FormatHex(value, 0); }

}  // namespace

std::vector<uint8_t> GetTpmPropertiesCommand(uint32_t property, uint32_t count) {
    std::vector<uint8_t> command;
    Put16(command, kTpmStNoSessions);
    Put32(command, 0);  // size, set below
    Put32(command, kTpmCcGetCapability);
    Put32(command, kTpmCapTpmProperties);
    Put32(command, property);
    Put32(command, count);
    const uint32_t size = static_cast<uint32_t>(command.size());
    for (int i = 0; i < 4; ++i) command[2 + i] = static_cast<uint8_t>(size >> (24 - 8 * i));
    return command;
}

bool ParseTpmPropertiesResponse(const std::vector<uint8_t>& response,
                                std::map<uint32_t, uint32_t>& properties, bool& more, std::string& why) {
    if (response.size() < kHeaderSize) {
        why = "short TPM response of " + std::to_string(response.size()) + " bytes";
        return false;
    }
    const uint32_t tag = static_cast<uint32_t>(response[0]) << 8 | response[1];
    const uint32_t size = Get32(response, 2), code = Get32(response, 6);
    if (size < kHeaderSize || size > response.size()) {
        why = "TPM response size " + std::to_string(size) + " with " + std::to_string(response.size()) +
              " bytes received";
        return false;
    }
    if (code != 0) {
        why = "TPM response code " + Hex(code);
        return false;
    }
    if (tag != kTpmStNoSessions) {
        why = "TPM response tag " + Hex(tag);
        return false;
    }
    // moreData, capability, property count.
    if (size < kHeaderSize + 9) {
        why = "short TPM response of " + std::to_string(size) + " bytes";
        return false;
    }
    if (response[kHeaderSize] > 1 || Get32(response, kHeaderSize + 1) != kTpmCapTpmProperties) {
        why = "TPM response is not a list of TPM properties";
        return false;
    }
    more = response[kHeaderSize] == 1;
    const uint32_t count = Get32(response, kHeaderSize + 5);
    const size_t first = kHeaderSize + 9;
    if (count > (size - first) / 8) {
        why = "TPM response lists " + std::to_string(count) + " properties in " + std::to_string(size) +
              " bytes";
        return false;
    }
    for (size_t i = 0; i < count; ++i)
        properties[Get32(response, first + 8 * i)] = Get32(response, first + 8 * i + 4);
    return true;
}

std::string FormatTpmFirmwareVersion(uint32_t manufacturer, uint32_t version1, uint32_t version2) {
    char text[48];
    const unsigned major = version1 >> 16, minor = version1 & 0xFFFF;
    if (manufacturer == kTpmVendorInfineon)
        std::snprintf(text, sizeof text, "%u.%u.%u.%u", major, minor, version2 >> 8, version2 & 0xFF);
    else if (manufacturer == kTpmVendorSt)
        std::snprintf(text, sizeof text, "%u.%u", major, minor);
    else if (manufacturer == kTpmVendorIbmSoftware || manufacturer == kTpmVendorIbmSoftwareOld)
        std::snprintf(text, sizeof text, "%x.%x.%x.%x", major, minor, version2 >> 16, version2 & 0xFFFF);
    else
        std::snprintf(text, sizeof text, "%u.%u.%u.%u", major, minor, version2 >> 16, version2 & 0xFFFF);
    return text;
}

std::string TpmManufacturerText(uint32_t value) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(value >> shift & 0xFF);
    return CleanText(text);
}

Tpm12Caps ParseTpm12Caps(const std::string& text) {
    Tpm12Caps caps;
    for (const std::string& line : Split(text, '\n')) {
        const std::string::size_type colon = line.find(':');
        if (colon == std::string::npos) continue;
        const std::string key = Trim(line.substr(0, colon)), value = CleanText(line.substr(colon + 1));
        uint32_t id = 0;
        if (key == "Manufacturer" && ParseHex(value, id))
            caps.manufacturer = TpmManufacturerText(id);
        else if (key == "TCG version")
            caps.tcgVersion = value;
        else if (key == "Firmware version")
            caps.firmwareVersion = value;
    }
    return caps;
}

}  // namespace svm
