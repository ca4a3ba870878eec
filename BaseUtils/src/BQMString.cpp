#include "BQMString.h"

#include <cstring>
#include <sstream>

namespace {

const char32_t kReplacement = 0xFFFD;

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Appends one valid code point as one UTF-16 unit or a surrogate pair.
void AppendCodePoint(BQMString::BQMStringType& out, char32_t cp) {
    if (cp >= 0x10000) {
        cp -= 0x10000;
        out.push_back(static_cast<unsigned short>(0xD800 + (cp >> 10)));
        out.push_back(static_cast<unsigned short>(0xDC00 + (cp & 0x3FF)));
    } else {
        out.push_back(static_cast<unsigned short>(cp));
    }
}

// Decodes UTF-8, replacing each maximal ill-formed subpart with one U+FFFD, so
// truncated sequences, overlong forms, encoded surrogates and values past U+10FFFF
// never slip through.
void AppendUtf8(BQMString::BQMStringType& out, const char* text, std::size_t size) {
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(text);
    std::size_t i = 0;
    auto put = [&out](char32_t cp) { AppendCodePoint(out, cp); };
    while (i < size) {
        const unsigned char lead = bytes[i];
        if (lead < 0x80) {
            put(lead);
            ++i;
            continue;
        }
        std::size_t needed = 0;
        char32_t cp = 0;
        unsigned char low = 0x80, high = 0xBF;  // allowed range of the second byte
        if (lead >= 0xC2 && lead <= 0xDF) {
            needed = 1;
            cp = lead & 0x1F;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            needed = 2;
            cp = lead & 0x0F;
            if (lead == 0xE0) low = 0xA0;
            if (lead == 0xED) high = 0x9F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            needed = 3;
            cp = lead & 0x07;
            if (lead == 0xF0) low = 0x90;
            if (lead == 0xF4) high = 0x8F;
        } else {
            put(kReplacement);
            ++i;
            continue;
        }
        std::size_t j = 1;
        bool ok = true;
        for (; j <= needed; ++j) {
            if (i + j >= size) {
                ok = false;
                break;
            }
            const unsigned char byte = bytes[i + j];
            const bool inRange = j == 1 ? (byte >= low && byte <= high) : IsContinuation(byte);
            if (!inRange) {
                ok = false;
                break;
            }
            cp = (cp << 6) | (byte & 0x3F);
        }
        if (ok) {
            put(cp);
            i += needed + 1;
        } else {
            put(kReplacement);
            i += j;
        }
    }
}

void AppendUtf8(BQMString::BQMStringType& out, const char* text) {
    if (text != nullptr) AppendUtf8(out, text, std::strlen(text));
}

void AppendWide(BQMString::BQMStringType& out, const wchar_t* text) {
    if (text == nullptr) return;
    for (; *text != L'\0'; ++text) {
        if (sizeof(wchar_t) == 2) {
            out.push_back(static_cast<unsigned short>(*text));
            continue;
        }
        char32_t cp = static_cast<char32_t>(*text);
        if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) cp = kReplacement;
        AppendCodePoint(out, cp);
    }
}

// Calls sink with each code point; unpaired surrogates become U+FFFD.
template <typename Sink>
void ForEachCodePoint(const BQMString::BQMStringType& units, Sink sink) {
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            if (i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
                sink(0x10000 + ((unit - 0xD800) << 10) + (units[i + 1] - 0xDC00));
                ++i;
            } else {
                sink(kReplacement);
            }
        } else if (unit >= 0xDC00 && unit <= 0xDFFF) {
            sink(kReplacement);
        } else {
            sink(unit);
        }
    }
}

template <typename Number>
Number ParseNumber(const std::string& text, BQMString::BaseManipulator manipulator) {
    std::istringstream stream(text);
    Number value = 0;
    stream >> manipulator >> value;
    return stream.fail() ? Number(0) : value;
}

}  // namespace

BQMString::BQMString() {}

BQMString::BQMString(const char* text, BQMCharEncodingType /*encoding*/) { AppendUtf8(mData, text); }

BQMString::BQMString(const std::string& text, BQMCharEncodingType /*encoding*/) {
    AppendUtf8(mData, text.data(), text.size());
}

BQMString::BQMString(const wchar_t* text) { AppendWide(mData, text); }

BQMString::BQMString(const BQMStringType& units) : mData(units) {}

std::size_t BQMString::GetNPos() { return BQMStringType::npos; }

std::string BQMString::GetUTF8String() const {
    std::string out;
    out.reserve(mData.size());
    ForEachCodePoint(mData, [&out](char32_t cp) {
        if (cp < 0x80) {
            out.push_back(static_cast<char>(cp));
        } else if (cp < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        } else if (cp < 0x10000) {
            out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        }
    });
    return out;
}

std::wstring BQMString::GetWstring() const {
    std::wstring out;
    if (sizeof(wchar_t) == 2) {
        out.assign(mData.begin(), mData.end());
        return out;
    }
    out.reserve(mData.size());
    ForEachCodePoint(mData, [&out](char32_t cp) { out.push_back(static_cast<wchar_t>(cp)); });
    return out;
}

bool BQMString::GetCString(char* buffer, unsigned long& size) const {
    const std::string text = GetUTF8String();
    if (buffer == nullptr || size < text.size() + 1) {
        size = static_cast<unsigned long>(text.size() + 1);
        return false;
    }
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    size = static_cast<unsigned long>(text.size());
    return true;
}

std::size_t BQMString::Find(const BQMString& text, std::size_t start) const {
    return mData.find(text.mData, start);
}

BQMString BQMString::SubString(std::size_t start, std::size_t length) const {
    if (start >= mData.size()) return BQMString();
    return BQMString(mData.substr(start, length));
}

std::size_t BQMString::SubStrings(const BQMString& separator, std::vector<BQMString>& parts) const {
    parts.clear();
    if (separator.IsEmpty()) {
        parts.push_back(*this);
        return parts.size();
    }
    std::size_t start = 0;
    for (;;) {
        const std::size_t found = mData.find(separator.mData, start);
        if (found == BQMStringType::npos) break;
        parts.push_back(BQMString(mData.substr(start, found - start)));
        start = found + separator.mData.size();
    }
    parts.push_back(BQMString(mData.substr(start)));
    return parts.size();
}

BQMString& BQMString::ReplaceAll(const BQMString& from, const BQMString& to) {
    if (from.IsEmpty()) return *this;
    BQMStringType result;
    std::size_t start = 0;
    for (;;) {
        const std::size_t found = mData.find(from.mData, start);
        if (found == BQMStringType::npos) break;
        result.append(mData, start, found - start);
        result.append(to.mData);
        start = found + from.mData.size();
    }
    result.append(mData, start, BQMStringType::npos);
    mData.swap(result);
    return *this;
}

BQMString& BQMString::TrimWhiteSpaces(const BQMString& whiteSpaces) {
    const std::size_t first = mData.find_first_not_of(whiteSpaces.mData);
    if (first == BQMStringType::npos) {
        mData.clear();
        return *this;
    }
    const std::size_t last = mData.find_last_not_of(whiteSpaces.mData);
    mData = mData.substr(first, last - first + 1);
    return *this;
}

bool BQMString::ContainsAny(const BQMString& characterSet, std::size_t start) const {
    if (characterSet.IsEmpty()) return false;
    return mData.find_first_of(characterSet.mData, start) != BQMStringType::npos;
}

bool BQMString::ContainsSpecialCharacters() const {
    static const BQMString special("~`!@#$%^&*()_+{}:\"<>?/.,';][=-|\\", BQM_ENCODING_UTF8);
    return ContainsAny(special, 0);
}

bool BQMString::IsPermissableFileName() const {
    static const BQMString forbidden("\\/:?%*<\">|", BQM_ENCODING_UTF8);
    if (IsEmpty()) return false;
    return !ContainsAny(forbidden, 0);
}

int BQMString::GetIntValue(BaseManipulator manipulator) const {
    return ParseNumber<int>(GetUTF8String(), manipulator);
}

long long BQMString::GetLongLongValue(BaseManipulator manipulator) const {
    return ParseNumber<long long>(GetUTF8String(), manipulator);
}

double BQMString::GetDoubleValue() const { return ParseNumber<double>(GetUTF8String(), std::dec); }

BQMString& BQMString::AppendAscii(const std::string& text, const char* separator) {
    AppendUtf8(mData, separator);
    AppendUtf8(mData, text.data(), text.size());
    return *this;
}

BQMString& BQMString::AppendNumber(int number, const char* separator) {
    return AppendAscii(std::to_string(number), separator);
}
BQMString& BQMString::AppendNumber(long number, const char* separator) {
    return AppendAscii(std::to_string(number), separator);
}
BQMString& BQMString::AppendNumber(long long number, const char* separator) {
    return AppendAscii(std::to_string(number), separator);
}
BQMString& BQMString::AppendUNumber(unsigned int number, const char* separator) {
    return AppendAscii(std::to_string(number), separator);
}
BQMString& BQMString::AppendUNumber(unsigned long number, const char* separator) {
    return AppendAscii(std::to_string(number), separator);
}
BQMString& BQMString::AppendUNumber(unsigned long long number, const char* separator) {
    return AppendAscii(std::to_string(number), separator);
}

bool BQMString::operator==(const char* other) const { return *this == BQMString(other, BQM_ENCODING_UTF8); }
bool BQMString::operator==(const wchar_t* other) const { return *this == BQMString(other); }

BQMString BQMString::operator+(const BQMString& other) const { return BQMString(mData + other.mData); }
BQMString BQMString::operator+(const char* other) const {
    return *this + BQMString(other, BQM_ENCODING_UTF8);
}
BQMString BQMString::operator+(const wchar_t* other) const { return *this + BQMString(other); }

BQMString& BQMString::operator+=(const BQMString& other) {
    mData += other.mData;
    return *this;
}
BQMString& BQMString::operator+=(const char* other) {
    AppendUtf8(mData, other);
    return *this;
}
BQMString& BQMString::operator+=(const wchar_t* other) {
    AppendWide(mData, other);
    return *this;
}

BQMString operator+(const char* left, const BQMString& right) {
    return BQMString(left, BQMString::BQM_ENCODING_UTF8) + right;
}
BQMString operator+(const wchar_t* left, const BQMString& right) { return BQMString(left) + right; }
