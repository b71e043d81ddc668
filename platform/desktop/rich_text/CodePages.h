#pragma once
// From the 8-bit code pages of documents to UTF-16. Code page 1252 is a table of its own, for the
// writer needs it, too; the others are the system's.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo::desktop {

inline constexpr int kWesternCodePage = 1252;

/// The code page of the texts in a font of this character set.
/// @return none for the sets that leave it to the document, and for unknown ones.
std::optional<int> CodePageOfCharacterSet(int character_set);

/// @return the number itself, or 1252 where the code page is unknown.
int KnownCodePage(int number);

/// One code page, opened once and used for many texts.
class CodePage {
public:
    /// An unknown number counts as 1252.
    explicit CodePage(int number);
    ~CodePage();
    CodePage(const CodePage&) = delete;
    CodePage& operator=(const CodePage&) = delete;

    int Number() const { return number_; }
    /// Bytes that mean nothing become U+FFFD. Whole texts only: a first half of a character at the
    /// end is not kept for the next call.
    std::u16string Decode(std::string_view bytes);

private:
    int number_;
    void* converter_ = nullptr; ///< of the system; none for 1252
};

/// The byte of a character in code page 1252. @return none where there is none.
std::optional<std::uint8_t> WesternByte(char16_t character);

} // namespace kelvo::desktop
