#pragma once
// A formatted text as plain data: what the rich-text reader makes, what the writer takes, and what
// goes to and comes from the desktop's document. Knows neither the file's bytes nor the desktop.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::desktop {

/// Ends a line inside a paragraph.
inline constexpr char16_t kLineBreak = 0x2028;

/// 0xRRGGBB.
using RgbColour = std::uint32_t;

enum class Alignment : std::uint8_t { Left, Right, Centre, Justified };
enum class Script : std::uint8_t { Normal, Super, Sub };
enum class TabKind : std::uint8_t { Left, Right, Centre, Decimal };

struct TabStop {
    std::int32_t position_twips = 0; ///< from the left margin
    TabKind kind = TabKind::Left;
    friend bool operator==(const TabStop&, const TabStop&) = default;
};

/// How characters look.
struct CharacterFormat {
    std::string family;            ///< UTF-8; empty: whatever the document's reader prefers
    std::int32_t half_points = 24; ///< size, 2 to 3276
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    Script script = Script::Normal;
    std::optional<RgbColour> colour;     ///< none: the desktop's
    std::optional<RgbColour> background; ///< none: the paper's
    friend bool operator==(const CharacterFormat&, const CharacterFormat&) = default;
};

/// How a paragraph lies; lengths in twips (1/1440 inch).
struct ParagraphFormat {
    Alignment alignment = Alignment::Left;
    std::int32_t left = 0;
    std::int32_t right = 0;
    std::int32_t first_line = 0; ///< further than `left`; negative hangs
    std::int32_t space_before = 0;
    std::int32_t space_after = 0;
    std::vector<TabStop> tabs; ///< at most kMaximumTabs
    friend bool operator==(const ParagraphFormat&, const ParagraphFormat&) = default;
};
inline constexpr std::size_t kMaximumTabs = 32;

/// Text of one format: UTF-16 without lone surrogates; no control character but the tab.
struct TextRun {
    std::u16string text;
    CharacterFormat format;
    friend bool operator==(const TextRun&, const TextRun&) = default;
};

struct Paragraph {
    ParagraphFormat format;
    std::vector<TextRun> runs; ///< none of them empty, no two neighbours of one format
    CharacterFormat if_empty;  ///< what a text typed into it would look like; only without runs

    void Append(std::u16string_view text, const CharacterFormat& run_format) {
        if (text.empty()) return;
        if (!runs.empty() && runs.back().format == run_format) {
            runs.back().text += text;
        } else {
            runs.push_back({std::u16string(text), run_format});
        }
    }
    friend bool operator==(const Paragraph&, const Paragraph&) = default;
};

struct RichText {
    std::vector<Paragraph> paragraphs; ///< at least one
    friend bool operator==(const RichText&, const RichText&) = default;
};

} // namespace kelvo::desktop
