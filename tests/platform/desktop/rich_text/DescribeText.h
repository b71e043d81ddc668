#pragma once
// A formatted text as lines that a test can spell out, and back from bytes.

#include "platform/desktop/rich_text/RichText.h"
#include "platform/desktop/rich_text/RtfReader.h"
#include "platform/desktop/rich_text/Utf.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo::desktop {

inline std::optional<RichText> ReadRtfText(std::string_view bytes) {
    return ReadRtf(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

inline std::string DescribeColour(const char* mark, const std::optional<RgbColour>& colour) {
    if (!colour) return {};
    char text[16];
    std::snprintf(text, sizeof text, " %s%06x", mark, static_cast<unsigned>(*colour));
    return text;
}

/// As "Arial 24 bold #c00000 on#ffff00".
inline std::string Describe(const CharacterFormat& format) {
    std::string text = format.family.empty() ? "-" : format.family;
    text += " " + std::to_string(format.half_points);
    if (format.bold) text += " bold";
    if (format.italic) text += " italic";
    if (format.underline) text += " underline";
    if (format.strike) text += " strike";
    if (format.script == Script::Super) text += " super";
    if (format.script == Script::Sub) text += " sub";
    text += DescribeColour("#", format.colour);
    text += DescribeColour("on#", format.background);
    return text;
}

inline std::string Describe(const ParagraphFormat& format) {
    constexpr const char* kAlignments[] = {"left", "right", "centre", "justified"};
    constexpr const char* kTabs[] = {"tab", "right-tab", "centre-tab", "decimal-tab"};
    std::string text = kAlignments[static_cast<std::size_t>(format.alignment)];
    const auto add = [&text](const char* name, std::int32_t value) {
        if (value != 0) text += std::string(" ") + name + std::to_string(value);
    };
    add("left", format.left);
    add("right", format.right);
    add("first", format.first_line);
    add("before", format.space_before);
    add("after", format.space_after);
    for (const TabStop& tab : format.tabs) {
        text += std::string(" ") + kTabs[static_cast<std::size_t>(tab.kind)] +
                std::to_string(tab.position_twips);
    }
    return text;
}

/// The text alone; "|" between paragraphs, "/" where a line breaks.
inline std::string PlainText(const RichText& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.paragraphs.size(); ++i) {
        if (i > 0) plain += "|";
        for (const TextRun& run : text.paragraphs[i].runs) {
            std::u16string shown = run.text;
            for (char16_t& unit : shown) {
                if (unit == kLineBreak) unit = u'/';
            }
            plain += Utf8Of(shown);
        }
    }
    return plain;
}

/// A line for each paragraph and each run: "centre" then "  Arial 24 bold: text"; what an empty
/// paragraph would look like is not told.
inline std::string Describe(const RichText& text) {
    std::string lines;
    for (const Paragraph& paragraph : text.paragraphs) {
        lines += Describe(paragraph.format) + "\n";
        for (const TextRun& run : paragraph.runs) {
            RichText alone;
            alone.paragraphs.push_back({{}, {run}, {}});
            lines += "  " + Describe(run.format) + ": " + PlainText(alone) + "\n";
        }
    }
    return lines;
}

} // namespace kelvo::desktop
