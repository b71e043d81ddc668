#pragma once
// The framework's growable byte string. Text is 8-bit; bytes may be anything. Grows linearly, by
// the request plus the growth increment. An allocation that fails is shown in a box and leaves the
// string empty (assignments) or unchanged (appends and inserts).

#include <compare>
#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelvo {

class Stream;
template <class T>
class CArray;

/// Numbers that a string writes in decimal. A plain char is a character; the 8-bit integers are
/// numbers.
template <class T>
concept DecimalNumber = (std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> &&
                         !std::same_as<T, wchar_t> && !std::same_as<T, char8_t> &&
                         !std::same_as<T, char16_t> && !std::same_as<T, char32_t>);

/// Whether CutTo ends a cut word with a full stop.
enum class Abbreviate : bool { No, Yes };

class CString {
public:
    static constexpr std::int32_t kDefaultGrowth = 10;

    CString() = default;
    CString(const CString& other) { Assign(other.View()); }
    CString(CString&& other) noexcept { Swap(other); }
    /// Null gives the empty string.
    CString(const char* text) { Assign(ViewOf(text)); }
    CString(std::string_view text) { Assign(text); }
    explicit CString(char character) { Assign({&character, 1}); }
    /// Decimal, with a minus sign where negative.
    template <DecimalNumber T>
    explicit CString(T number) {
        *this = number;
    }
    /// General format with as many significant digits as a double has (17).
    explicit CString(double number) { *this = number; }

    // Virtual slots in their order: destructor, Load, Save.
    virtual ~CString();
    /// Reads a 32-bit little-endian length and that many bytes.
    /// @return false, and an empty string, when the stream does not hold them or there is no memory
    virtual bool Load(Stream& stream);
    /// Writes a 32-bit little-endian length and that many bytes; no terminator.
    virtual bool Save(Stream& stream) const;

    CString& operator=(const CString& other);
    CString& operator=(CString&& other) noexcept;
    CString& operator=(const char* text) { return Assign(ViewOf(text)); }
    CString& operator=(std::string_view text) { return Assign(text); }
    CString& operator=(char character) { return Assign({&character, 1}); }
    template <DecimalNumber T>
    CString& operator=(T number) {
        Clear();
        return *this += number;
    }
    CString& operator=(double number) {
        Clear();
        return *this += number;
    }
    CString& Assign(std::string_view text);
    /// printf-style; the text is cut where it passes 2 x (length of the format) + 8191 bytes.
    [[gnu::format(printf, 2, 3)]] CString& AssignFormat(const char* format, ...);
    [[gnu::format(printf, 2, 0)]] CString& AssignFormatList(const char* format,
                                                            std::va_list arguments);
    /// A new string from a printf-style format, bounded like AssignFormat.
    [[gnu::format(printf, 1, 2)]] static CString Formatted(const char* format, ...);

    CString& operator+=(const CString& other) { return Append(other.View()); }
    CString& operator+=(const char* text) { return Append(ViewOf(text)); }
    CString& operator+=(std::string_view text) { return Append(text); }
    CString& operator+=(char character) { return Append({&character, 1}); }
    template <DecimalNumber T>
    CString& operator+=(T number) {
        if constexpr (std::signed_integral<T>) {
            return AppendSigned(number);
        } else {
            return AppendUnsigned(number);
        }
    }
    CString& operator+=(double number);
    CString& Append(std::string_view text);
    [[gnu::format(printf, 2, 3)]] CString& AppendFormat(const char* format, ...);
    [[gnu::format(printf, 2, 0)]] CString& AppendFormatList(const char* format,
                                                            std::va_list arguments);

    friend CString operator+(CString left, const CString& right) {
        left += right;
        return left;
    }
    friend CString operator+(CString left, const char* right) {
        left += right;
        return left;
    }
    friend CString operator+(CString left, char right) {
        left += right;
        return left;
    }
    template <DecimalNumber T>
    friend CString operator+(CString left, T right) {
        left += right;
        return left;
    }
    friend CString operator+(CString left, double right) {
        left += right;
        return left;
    }

    /// Bytes in use, zero bytes included.
    std::int32_t Length() const { return length_; }
    bool IsEmpty() const { return length_ == 0; }
    /// Size of the block: 0 while nothing was ever stored.
    std::int32_t Capacity() const { return capacity_; }
    std::int32_t GrowthIncrement() const { return growth_; }
    void SetGrowthIncrement(std::int32_t bytes) { growth_ = bytes < 1 ? 1 : bytes; }

    /// The whole as a zero-terminated text; first the length is cut at the first zero byte. Lives
    /// until the next change of the string.
    const char* Text() const;
    /// The same under the name that everybody knows.
    const char* c_str() const { return Text(); }
    /// The zero-terminated text from an offset on, the length left alone; the empty text for an
    /// offset outside the string.
    const char* TextFrom(std::int32_t offset) const;
    /// All bytes in use, zero bytes included; lives until the next change of the string.
    std::string_view View() const {
        return length_ == 0 ? std::string_view{}
                            : std::string_view{data_, static_cast<std::size_t>(length_)};
    }
    /// The byte at an index below the length; not checked.
    char& operator[](std::int32_t index) { return data_[index]; }
    char operator[](std::int32_t index) const { return data_[index]; }

    /// Empties the string and gives a block of exactly `count` bytes to fill, all zero; Text() then
    /// fixes the length to what was written. 0 gives the shared empty text (not to be written) and
    /// changes nothing.
    /// @return null, and an empty string, when there is no memory
    char* RawBuffer(std::int32_t count);
    /// Room for so many more bytes. @return false when there is no memory; the box has been shown
    bool Reserve(std::int32_t count);

    /// Frees the block.
    void Clear();
    /// No effect when `count` is not below the length.
    void Truncate(std::int32_t count);
    void DeleteFirst(std::int32_t count);
    /// Shifts the rest right; a position beyond the length appends, one below 0 inserts in front.
    /// @return false when there is no memory; the string is unchanged
    bool Insert(std::int32_t position, std::string_view text);
    bool Insert(std::int32_t position, char character) { return Insert(position, {&character, 1}); }
    /// `count` copies; below 1, or of an empty pattern, none.
    CString& Fill(char character, std::int32_t count);
    CString& Fill(const char* pattern, std::int32_t count);
    void RemoveLeading(char character);
    CString WithoutLeadingSpaces() const;
    CString PaddedRight(std::int32_t width, char pad) const;
    CString Replaced(char from, char to) const;
    /// A start outside gives the empty string, a negative count means up to the end.
    CString Substring(std::int32_t start, std::int32_t count = -1) const;
    /// ASCII letters of the half-open range alone; `to` below `from` or not below the length is the
    /// length.
    void UpperCase(std::int32_t from = 0, std::int32_t to = -1);
    void LowerCase(std::int32_t from = 0, std::int32_t to = -1);
    /// Cut to a width, or padded to it; a word that is cut in its middle may end with ".".
    CString CutTo(std::int32_t width, char pad, Abbreviate abbreviate) const;

    /// Index at or after `start`, or -1.
    std::int32_t Find(char character, std::int32_t start = 0) const;
    /// Index of the first whole match at or after `start`, or -1; an empty pattern is never found.
    std::int32_t Find(const CString& pattern, std::int32_t start = 0) const;
    /// Index of the first, or the length when there is none.
    std::int32_t FirstIndexOf(char character) const;
    /// Index of the last, or -1.
    std::int32_t LastIndexOf(char character) const;
    std::int32_t CountOf(char character) const;

    /// Same length and same bytes.
    friend bool operator==(const CString& left, const CString& right) {
        return left.View() == right.View();
    }
    friend bool operator==(const CString& left, const char* right) {
        return left.View() == ViewOf(right);
    }
    /// Byte-wise order of the two zero-terminated texts.
    friend std::strong_ordering operator<=>(const CString& left, const CString& right) {
        return left.Compare(right) <=> 0;
    }
    /// Below 0, 0 or above 0, like strcmp.
    int Compare(const CString& other) const;
    /// The same with ASCII letters folded.
    int CompareWithoutCase(const CString& other) const;

    /// True for the 23 characters that end a word.
    static bool IsDelimiter(char character);

    void Swap(CString& other) noexcept;

private:
    static std::string_view ViewOf(const char* text) {
        return text == nullptr ? std::string_view{} : std::string_view{text};
    }
    bool AllocSpace(std::int32_t count);
    bool Overlaps(std::string_view text) const;
    CString& AppendSigned(std::int64_t number);
    CString& AppendUnsigned(std::uint64_t number);

    // One zero byte always stands behind the bytes in use, so that reading never writes and two
    // threads may read one string.
    char* data_ = nullptr;
    mutable std::int32_t length_ = 0; // Text() cuts it at a zero byte that a raw buffer left
    std::int32_t capacity_ = 0;
    std::int32_t growth_ = kDefaultGrowth;
};

/// Sorts in place, byte-wise.
void SortStrings(CArray<CString>& strings);

} // namespace kelvo
