#ifndef SVM_TEXTUTIL_H
#define SVM_TEXTUTIL_H

#include <cstdint>
#include <string>
#include <vector>

namespace svm {

// Removes leading and trailing blanks, tabs, line ends and NUL bytes.
std::string Trim(const std::string& text);

// Makes text safe for an XML 1.0 attribute or element: invalid UTF-8
// sequences become '?', control characters other than tab become a blank,
// and the result is trimmed. Markup characters are left for libxml2 to escape.
std::string CleanText(const std::string& text);

// Parses "0x8086", "8086" or "0X8086" (surrounding blanks allowed) as hex.
bool ParseHex(const std::string& text, uint32_t& value);

// Formats value as lower-case hex, zero-padded to width digits.
std::string FormatHex(uint32_t value, int width);

std::string ToLower(std::string text);

std::vector<std::string> Split(const std::string& text, char separator);

}  // namespace svm

#endif
