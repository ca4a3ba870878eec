#include "audit/VersionCompare.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace audit {
namespace {

enum class Kind { Number, Hex, Word, Separator };

struct Token {
    Kind kind;
    std::string text;     // digits without leading zeros, lower-case hex digits or word, the separator
    bool suffix = false;  // a single letter straight after a number: "1.0b", "GDC5302Q"
};

bool IsDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }
bool IsAlpha(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }
bool IsXDigit(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }
bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string StripZeros(const std::string& digits) {
    const size_t first = digits.find_first_not_of('0');
    return first == std::string::npos ? "0" : digits.substr(first);
}

// Numbers of any length, as digit strings without leading zeros.
Order CompareMagnitude(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return a.size() < b.size() ? Order::Less : Order::Greater;
    const int c = a.compare(b);
    return c < 0 ? Order::Less : c > 0 ? Order::Greater : Order::Equal;
}

// Parenthesized text is a comment (a release date, a build note) and leading
// and trailing blanks are not part of the version.
std::string Core(const std::string& version) {
    std::string core;
    int open = 0;
    for (char c : version) {
        if (c == '(')
            ++open;
        else if (c == ')' && open > 0)
            --open;
        else if (open == 0)
            core += c;
    }
    if (open > 0) return version;  // unbalanced: no comment after all
    const size_t first = core.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return "";
    return core.substr(first, core.find_last_not_of(" \t\r\n") - first + 1);
}

bool HexLiteral(const std::string& text, size_t at, size_t& end) {
    if (text.size() < at + 3 || text[at] != '0' || (text[at + 1] != 'x' && text[at + 1] != 'X') ||
        !IsXDigit(text[at + 2]))
        return false;
    end = at + 2;
    while (end < text.size() && IsXDigit(text[end])) ++end;
    return end == text.size() || !IsAlpha(text[end]);
}

std::vector<Token> Tokenize(const std::string& core) {
    std::vector<Token> tokens;
    size_t i = 0;
    while (i < core.size()) {
        const char c = core[i];
        size_t end = i + 1;
        if (IsDigit(c) && (i == 0 || !IsAlpha(core[i - 1])) && HexLiteral(core, i, end)) {
            tokens.push_back({Kind::Hex, StripZeros(Lower(core.substr(i + 2, end - i - 2)))});
        } else if (IsDigit(c)) {
            end = i + 1;
            while (end < core.size() && IsDigit(core[end])) ++end;
            tokens.push_back({Kind::Number, StripZeros(core.substr(i, end - i))});
        } else if (IsAlpha(c)) {
            while (end < core.size() && IsAlpha(core[end])) ++end;
            const bool suffix = end - i == 1 && !tokens.empty() && tokens.back().kind == Kind::Number;
            tokens.push_back({Kind::Word, Lower(core.substr(i, end - i)), suffix});
        } else if (IsSpace(c)) {
            while (end < core.size() && IsSpace(core[end])) ++end;
            tokens.push_back({Kind::Separator, " "});
        } else {
            tokens.push_back({Kind::Separator, std::string(1, c)});
        }
        i = end;
    }
    return tokens;
}

bool HasNumber(const std::vector<Token>& tokens) {
    for (const Token& token : tokens)
        if (token.kind == Kind::Number || token.kind == Kind::Hex) return true;
    return false;
}

// Pads the shorter list with ".0" groups when the longer one only has more
// dotted numbers at its end ("2.17" against "2.17.1").
bool PadDotted(std::vector<Token>& shorter, const std::vector<Token>& longer) {
    for (size_t i = shorter.size(); i < longer.size(); i += 2) {
        if (i + 1 >= longer.size() || longer[i].kind != Kind::Separator || longer[i].text != "." ||
            longer[i + 1].kind != Kind::Number)
            return false;
    }
    if (shorter.empty() || shorter.back().kind != Kind::Number) return false;
    while (shorter.size() < longer.size()) {
        shorter.push_back({Kind::Separator, "."});
        shorter.push_back({Kind::Number, "0"});
    }
    return true;
}

Comparison Incomparable(std::string reason) { return Comparison{Order::Incomparable, std::move(reason)}; }

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

Comparison CompareTokens(const std::string& a, const std::string& b) {
    std::vector<Token> left = Tokenize(Core(a)), right = Tokenize(Core(b));
    if (!HasNumber(left)) return Incomparable(Quoted(a) + " has no number");
    if (!HasNumber(right)) return Incomparable(Quoted(b) + " has no number");
    if (left.size() != right.size() &&
        !(left.size() < right.size() ? PadDotted(left, right) : PadDotted(right, left)))
        return Incomparable(Quoted(a) + " and " + Quoted(b) + " are shaped differently");
    for (size_t i = 0; i < left.size(); ++i) {
        if (left[i].kind != right[i].kind ||
            (left[i].kind == Kind::Separator && left[i].text != right[i].text))
            return Incomparable(Quoted(a) + " and " + Quoted(b) + " are shaped differently");
    }
    for (size_t i = 0; i < left.size(); ++i) {
        const Token& l = left[i];
        const Token& r = right[i];
        if (l.text == r.text) continue;
        if (l.kind == Kind::Number || l.kind == Kind::Hex)
            return Comparison{CompareMagnitude(l.text, r.text), ""};
        if (l.kind == Kind::Word && l.suffix && r.suffix)
            return Comparison{l.text < r.text ? Order::Less : Order::Greater, ""};
        return Incomparable(Quoted(a) + " and " + Quoted(b) + " differ in the word " + Quoted(l.text) +
                            " against " + Quoted(r.text));
    }
    return Comparison{Order::Equal, ""};
}

// "v"? digits ([.-_] digits)* ("[" digits "]")?, as its numbers.
bool NumericParts(const std::string& version, std::vector<std::string>& parts) {
    const std::string core = Core(version);
    size_t i = !core.empty() && (core[0] == 'v' || core[0] == 'V') ? 1 : 0;
    parts.clear();
    for (;;) {
        const size_t start = i;
        while (i < core.size() && IsDigit(core[i])) ++i;
        if (i == start) return false;
        parts.push_back(StripZeros(core.substr(start, i - start)));
        if (i == core.size()) return true;
        if (core[i] == '[') {
            const size_t open = ++i;
            while (i < core.size() && IsDigit(core[i])) ++i;
            if (i == open || i + 1 != core.size() || core[i] != ']') return false;
            parts.push_back(StripZeros(core.substr(open, i - open)));
            return true;
        }
        if (core[i] != '.' && core[i] != '-' && core[i] != '_') return false;
        ++i;
    }
}

bool HexValue(const std::string& version, std::string& value) {
    std::string core = Core(version);
    if (core.size() > 2 && core[0] == '0' && (core[1] == 'x' || core[1] == 'X')) core.erase(0, 2);
    if (core.empty()) return false;
    for (char c : core)
        if (!IsXDigit(c)) return false;
    value = StripZeros(Lower(core));
    return true;
}

bool WholeHexLiteral(const std::string& version) {
    const std::string core = Core(version);
    size_t end = 0;
    return HexLiteral(core, 0, end) && end == core.size();
}

}  // namespace

bool ParseScheme(const std::string& text, Scheme& scheme) {
    static const Scheme kAll[] = {Scheme::Auto, Scheme::Numeric, Scheme::Hex, Scheme::Text};
    for (Scheme candidate : kAll) {
        if (text == SchemeName(candidate)) {
            scheme = candidate;
            return true;
        }
    }
    return false;
}

const char* SchemeName(Scheme scheme) {
    switch (scheme) {
        case Scheme::Auto:
            return "auto";
        case Scheme::Numeric:
            return "numeric";
        case Scheme::Hex:
            return "hex";
        case Scheme::Text:
            return "text";
    }
    return "auto";
}

bool VersionParses(const std::string& version, Scheme scheme, std::string& reason) {
    std::vector<std::string> parts;
    std::string value;
    switch (scheme) {
        case Scheme::Auto:
            if (HasNumber(Tokenize(Core(version)))) return true;
            reason = Quoted(version) + " has no number";
            return false;
        case Scheme::Numeric:
            if (NumericParts(version, parts)) return true;
            reason = Quoted(version) + " is not a numeric version";
            return false;
        case Scheme::Hex:
            if (HexValue(version, value)) return true;
            reason = Quoted(version) + " is not a hexadecimal number";
            return false;
        case Scheme::Text:
            if (!version.empty()) return true;
            reason = "an empty version";
            return false;
    }
    return false;
}

Comparison CompareVersions(const std::string& a, const std::string& b, Scheme scheme) {
    std::string reason;
    if (!VersionParses(a, scheme, reason) || !VersionParses(b, scheme, reason)) return Incomparable(reason);
    switch (scheme) {
        case Scheme::Text:
            if (a == b) return Comparison{Order::Equal, ""};
            return Incomparable(Quoted(a) + " is not " + Quoted(b) + " (text versions have no order)");
        case Scheme::Hex: {
            std::string left, right;
            HexValue(a, left);
            HexValue(b, right);
            return Comparison{CompareMagnitude(left, right), ""};
        }
        case Scheme::Numeric: {
            std::vector<std::string> left, right;
            NumericParts(a, left);
            NumericParts(b, right);
            const size_t count = std::max(left.size(), right.size());
            left.resize(count, "0");
            right.resize(count, "0");
            for (size_t i = 0; i < count; ++i) {
                const Order order = CompareMagnitude(left[i], right[i]);
                if (order != Order::Equal) return Comparison{order, ""};
            }
            return Comparison{Order::Equal, ""};
        }
        case Scheme::Auto:
            break;
    }
    if (WholeHexLiteral(a) && WholeHexLiteral(b)) return CompareVersions(a, b, Scheme::Hex);
    return CompareTokens(a, b);
}

}  // namespace audit
