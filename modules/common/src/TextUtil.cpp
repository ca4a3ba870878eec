#include "svm/TextUtil.h"

#include <cctype>
#include <cstdio>

namespace svm {

std::string Trim(const std::string& text) {
    const char* blanks = " \t\r\n\v\f";
    size_t end = text.size();
    while (end > 0 && (text[end - 1] == '\0' || std::char_traits<char>::find(blanks, 6, text[end - 1])))
        --end;
    size_t begin = 0;
    while (begin < end && (text[begin] == '\0' || std::char_traits<char>::find(blanks, 6, text[begin])))
        ++begin;
    return text.substr(begin, end - begin);
}

namespace {

// Length of the valid UTF-8 sequence at text[i], or 0 when it is invalid.
size_t Utf8Length(const std::string& text, size_t i) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    size_t len;
    unsigned min;
    unsigned code;
    if (c < 0x80) return 1;
    if ((c & 0xE0) == 0xC0) {
        len = 2, min = 0x80, code = c & 0x1F;
    } else if ((c & 0xF0) == 0xE0) {
        len = 3, min = 0x800, code = c & 0x0F;
    } else if ((c & 0xF8) == 0xF0) {
        len = 4, min = 0x10000, code = c & 0x07;
    } else {
        return 0;
    }
    if (i + len > text.size()) return 0;
    for (size_t k = 1; k < len; ++k) {
        unsigned char cc = static_cast<unsigned char>(text[i + k]);
        if ((cc & 0xC0) != 0x80) return 0;
        code = (code << 6) | (cc & 0x3F);
    }
    if (code < min || code > 0x10FFFF) return 0;
    if (code >= 0xD800 && code <= 0xDFFF) return 0;
    if (code == 0xFFFE || code == 0xFFFF) return 0;  // not XML characters
    return len;
}

}  // namespace

std::string CleanText(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        size_t len = Utf8Length(text, i);
        if (len == 0) {
            out += '?';
            ++i;
            continue;
        }
        unsigned char c = static_cast<unsigned char>(text[i]);
        if (len == 1 && (c < 0x20 || c == 0x7F) && c != '\t') {
            out += ' ';
        } else {
            out.append(text, i, len);
        }
        i += len;
    }
    return Trim(out);
}

bool ParseHex(const std::string& text, uint32_t& value) {
    std::string t = Trim(text);
    if (t.size() >= 2 && t[0] == '0' && (t[1] == 'x' || t[1] == 'X')) t = t.substr(2);
    if (t.empty() || t.size() > 8) return false;
    uint32_t v = 0;
    for (char ch : t) {
        int d;
        if (ch >= '0' && ch <= '9')
            d = ch - '0';
        else if (ch >= 'a' && ch <= 'f')
            d = ch - 'a' + 10;
        else if (ch >= 'A' && ch <= 'F')
            d = ch - 'A' + 10;
        else
            return false;
        v = (v << 4) | static_cast<uint32_t>(d);
    }
    value = v;
    return true;
}

std::string FormatHex(uint32_t value, int width) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%0*x", width, value);
    return buffer;
}

std::string ToLower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    size_t start = 0;
    for (;;) {
        size_t pos = text.find(separator, start);
        if (pos == std::string::npos) {
            parts.push_back(text.substr(start));
            return parts;
        }
        parts.push_back(text.substr(start, pos - start));
        start = pos + 1;
    }
}

}  // namespace svm
