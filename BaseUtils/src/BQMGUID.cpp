#include "BQMGUID.h"

#include <cstdio>
#include <cstring>
#include <random>
#include <string>

namespace {
int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool IsDashPosition(std::size_t index) { return index == 8 || index == 13 || index == 18 || index == 23; }
}  // namespace

BQMGUID::BQMGUID() { std::memset(mBytes, 0, sizeof mBytes); }

BQMGUID BQMGUID::Generate() {
    std::random_device source;
    BQMGUID guid;
    for (std::size_t i = 0; i < sizeof guid.mBytes; i += 4) {
        const unsigned int value = source();
        for (std::size_t j = 0; j < 4; ++j) guid.mBytes[i + j] = static_cast<unsigned char>(value >> (8 * j));
    }
    guid.mBytes[6] = static_cast<unsigned char>((guid.mBytes[6] & 0x0F) | 0x40);
    guid.mBytes[8] = static_cast<unsigned char>((guid.mBytes[8] & 0x3F) | 0x80);
    return guid;
}

bool BQMGUID::FromString(const BQMString& text) {
    const std::string value = text.GetUTF8String();
    if (value.size() != 36) return false;
    unsigned char bytes[16];
    std::size_t byte = 0;
    for (std::size_t i = 0; i < value.size();) {
        if (IsDashPosition(i)) {
            if (value[i] != '-') return false;
            ++i;
            continue;
        }
        const int high = HexValue(value[i]);
        const int low = HexValue(value[i + 1]);
        if (high < 0 || low < 0 || IsDashPosition(i + 1)) return false;
        bytes[byte++] = static_cast<unsigned char>(high * 16 + low);
        i += 2;
    }
    std::memcpy(mBytes, bytes, sizeof mBytes);
    return true;
}

BQMString BQMGUID::ToString() const {
    char text[37];
    std::snprintf(text, sizeof text, "%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X",
                  mBytes[0], mBytes[1], mBytes[2], mBytes[3], mBytes[4], mBytes[5], mBytes[6], mBytes[7],
                  mBytes[8], mBytes[9], mBytes[10], mBytes[11], mBytes[12], mBytes[13], mBytes[14],
                  mBytes[15]);
    return BQMString(text, BQMString::BQM_ENCODING_UTF8);
}

bool BQMGUID::IsNull() const { return *this == BQMGUID(); }

bool BQMGUID::operator==(const BQMGUID& other) const {
    return std::memcmp(mBytes, other.mBytes, sizeof mBytes) == 0;
}

bool BQMGUID::operator<(const BQMGUID& other) const {
    return std::memcmp(mBytes, other.mBytes, sizeof mBytes) < 0;
}
