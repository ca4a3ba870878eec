#ifndef BQMSTRING_H
#define BQMSTRING_H

#include <cstddef>
#include <ios>
#include <string>
#include <vector>

// A text value held as UTF-16 code units. Narrow text is read as UTF-8 and wide
// text as UTF-32 (Linux wchar_t); malformed input never fails, each bad sequence
// becomes U+FFFD. Not thread-safe for concurrent mutation (a plain value type).
class BQMString {
public:
    // Encoding of narrow text given to the constructor. Only UTF-8 (which covers ASCII) exists.
    enum BQMCharEncodingType { BQM_ENCODING_UTF8 = 1 };

    typedef unsigned short CodeUnit;
    typedef std::basic_string<unsigned short> BQMStringType;
    typedef std::ios_base& (*BaseManipulator)(std::ios_base&);

    BQMString();
    // A null pointer gives the empty string.
    BQMString(const char* text, BQMCharEncodingType encoding);
    explicit BQMString(const std::string& text, BQMCharEncodingType encoding = BQM_ENCODING_UTF8);
    // A null pointer gives the empty string. Code points that UTF-16 cannot hold become U+FFFD.
    BQMString(const wchar_t* text);
    BQMString(const BQMStringType& units);

    // The position meaning "not found" (and "to the end" as a length).
    static std::size_t GetNPos();

    // Unpaired surrogates come out as U+FFFD.
    std::string GetUTF8String() const;
    std::wstring GetWstring() const;
    // Copies the UTF-8 text plus a terminating NUL into buffer, which holds size bytes.
    // On success sets size to the text's length (without the NUL) and returns true. If
    // buffer is null or too small, copies nothing, sets size to the bytes needed
    // (NUL included) and returns false.
    bool GetCString(char* buffer, unsigned long& size) const;

    const BQMStringType& GetData() const { return mData; }
    std::size_t Length() const { return mData.size(); }
    bool IsEmpty() const { return mData.empty(); }
    void Clear() { mData.clear(); }
    CodeUnit operator[](std::size_t index) const { return mData[index]; }

    // First position of text at or after start, or GetNPos().
    std::size_t Find(const BQMString& text, std::size_t start = 0) const;
    // Code units [start, start + length), clipped to the string; empty when start is past the end.
    BQMString SubString(std::size_t start, std::size_t length = GetNPos()) const;
    // Replaces parts with the pieces between the separators (empty pieces kept; a string
    // without the separator, or an empty separator, gives one piece). Returns the count.
    std::size_t SubStrings(const BQMString& separator, std::vector<BQMString>& parts) const;
    // Replaces every non-overlapping occurrence of from, left to right. Empty from changes nothing.
    BQMString& ReplaceAll(const BQMString& from, const BQMString& to);
    // Removes leading and trailing code units that occur in whiteSpaces.
    BQMString& TrimWhiteSpaces(const BQMString& whiteSpaces = BQMString(" \t\r\n\v\f", BQM_ENCODING_UTF8));
    // True if any code unit of characterSet occurs at or after start.
    bool ContainsAny(const BQMString& characterSet, std::size_t start = 0) const;
    // True if any of ~`!@#$%^&*()_+{}:"<>?/.,';][=-|\ occurs.
    bool ContainsSpecialCharacters() const;
    // False when empty or holding any of \ / : ? % * < " > |.
    bool IsPermissableFileName() const;

    // The number at the start of the text (leading white space skipped) in the base the
    // manipulator selects (std::dec, std::hex, std::oct); 0 when there is none.
    int GetIntValue(BaseManipulator manipulator = std::dec) const;
    long long GetLongLongValue(BaseManipulator manipulator = std::dec) const;
    double GetDoubleValue() const;

    // Appends the decimal number, preceded by separator when one is given.
    BQMString& AppendNumber(int number, const char* separator = nullptr);
    BQMString& AppendNumber(long number, const char* separator = nullptr);
    BQMString& AppendNumber(long long number, const char* separator = nullptr);
    BQMString& AppendUNumber(unsigned int number, const char* separator = nullptr);
    BQMString& AppendUNumber(unsigned long number, const char* separator = nullptr);
    BQMString& AppendUNumber(unsigned long long number, const char* separator = nullptr);

    bool operator==(const BQMString& other) const { return mData == other.mData; }
    bool operator==(const char* other) const;
    bool operator==(const wchar_t* other) const;
    bool operator!=(const BQMString& other) const { return !(*this == other); }
    bool operator!=(const char* other) const { return !(*this == other); }
    bool operator!=(const wchar_t* other) const { return !(*this == other); }
    bool operator<(const BQMString& other) const { return mData < other.mData; }

    BQMString operator+(const BQMString& other) const;
    BQMString operator+(const char* other) const;
    BQMString operator+(const wchar_t* other) const;
    BQMString& operator+=(const BQMString& other);
    BQMString& operator+=(const char* other);
    BQMString& operator+=(const wchar_t* other);

private:
    BQMString& AppendAscii(const std::string& text, const char* separator);

    BQMStringType mData;
};

BQMString operator+(const char* left, const BQMString& right);
BQMString operator+(const wchar_t* left, const BQMString& right);

#endif
