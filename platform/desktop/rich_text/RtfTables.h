#pragma once
// The two tables at the head of a rich text, as they are filled while it is read: fonts with their
// code pages, and colours.

#include "platform/desktop/rich_text/RichText.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kelvo::desktop {

class RtfFontTable {
public:
    static constexpr int kSymbolSet = 2;

    /// Begins the entry of a font; its character set, code page and name follow.
    void Begin(std::int32_t number);
    void SetCharacterSet(std::int32_t character_set);
    void SetCodePage(std::int32_t code_page);
    /// Adds to the name; a ';' ends it, and what follows until the next Begin is ignored.
    void AppendName(std::u16string_view part);

    /// UTF-8; empty for a number that the table does not hold.
    const std::string& Family(std::int32_t number) const;
    /// @return none where the font leaves it to the document.
    std::optional<int> CodePage(std::int32_t number) const;
    /// Whether the bytes of its texts are pictures, not letters.
    bool IsSymbol(std::int32_t number) const;
    /// Of the font whose entry is being read.
    std::optional<int> CurrentCodePage() const { return CodePage(current_); }

private:
    struct Entry {
        std::string family;
        std::optional<int> code_page;
        bool symbol = false;
    };
    Entry* Current();
    const Entry* Find(std::int32_t number) const;

    std::unordered_map<std::int32_t, Entry> fonts_;
    std::int32_t current_ = 0;
    bool in_entry_ = false;
};

class RtfColourTable {
public:
    void SetRed(std::int32_t value) { SetPart(16, value); }
    void SetGreen(std::int32_t value) { SetPart(8, value); }
    void SetBlue(std::int32_t value) { SetPart(0, value); }
    /// Each ';' of the table's text ends an entry.
    void ReadText(std::string_view text);

    /// @return none for an entry that states no colour, or that the table does not hold.
    std::optional<RgbColour> Find(std::int32_t number) const;

private:
    void SetPart(unsigned shift, std::int32_t value);

    std::vector<std::optional<RgbColour>> colours_;
    std::optional<RgbColour> current_;
};

} // namespace kelvo::desktop
