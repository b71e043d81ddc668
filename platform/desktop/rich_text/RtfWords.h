#pragma once
// What the control words of rich text mean to the reader: one table.

#include <cstdint>
#include <string_view>

namespace kelvo::desktop {

/// What a word does; `value` of its row refines it, N is the number behind the word.
enum class RtfAction : std::uint8_t {
    // Destinations
    Skip, ///< the group holds nothing to show
    FontTable,
    ColourTable,
    // Text
    Character, ///< value: the character
    Paragraph, ///< ends a paragraph
    Break,     ///< a page or column ends: a line break, where the paragraph has begun
    Row,       ///< ends a row of a table: the paragraph, and the tab of its last cell
    Section,   ///< ends the paragraph, where it has begun
    Unicode,   ///< N: a UTF-16 unit
    Fallback,  ///< N: how many characters after each Unicode stand in for it
    // Code pages
    CodePage,     ///< value, or N where value is 0: the document's
    CharacterSet, ///< N: of the font being declared
    FontCodePage, ///< N: of the font being declared
    DefaultFont,  ///< N
    // Colours of the table: N
    Red,
    Green,
    Blue,
    // Characters; what can be switched off is by N = 0
    Plain,
    Font,     ///< N: of the table; in the table, declares it
    FontSize, ///< N: half points
    Bold,
    Italic,
    Underline,
    NoUnderline,
    Strike,
    Hidden,
    Script,     ///< value: a Script
    Colour,     ///< N: of the table
    Background, ///< N: of the table
    // Paragraphs; lengths N in twips
    ResetParagraph,
    Align, ///< value: an Alignment
    Left,
    Right,
    FirstLine,
    SpaceBefore,
    SpaceAfter,
    NextTabKind, ///< value: a TabKind, of the next Tab
    Tab,
};

struct RtfWord {
    std::string_view name;
    RtfAction action;
    std::int32_t value = 0;
};

/// @return null for a word that means nothing to the reader.
const RtfWord* FindRtfWord(std::string_view name);

} // namespace kelvo::desktop
