#include "platform/desktop/rich_text/RtfWriter.h"

#include "platform/desktop/rich_text/CodePages.h"
#include "platform/desktop/rich_text/Utf.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

namespace kelvo::desktop {
namespace {

constexpr std::string_view kAlignmentWords[] = {"\\ql", "\\qr", "\\qc", "\\qj"};
constexpr std::string_view kTabKindWords[] = {"", "\\tqr", "\\tqc", "\\tqdec"};

class Writer {
public:
    std::string Write(const RichText& text);

private:
    void Collect(const RichText& text);
    void Collect(const CharacterFormat& format);
    void WriteHeader();
    void WriteParagraph(const Paragraph& paragraph);
    void WriteFormat(const ParagraphFormat& format);
    void WriteFormat(const CharacterFormat& format);
    void WriteText(std::u16string_view text);
    void WriteUnit(char16_t unit);
    void WriteByte(std::uint8_t byte);
    void WriteLength(std::string_view word, std::int32_t value);
    void Put(std::string_view part) { out_ += part; }
    void PutNumber(std::string_view word, std::int64_t number) {
        out_ += word;
        out_ += std::to_string(number);
    }

    std::map<std::string, std::size_t> fonts_;
    std::map<RgbColour, std::size_t> colours_; ///< counted from 1: 0 is the desktop's
    bool has_unnamed_font_ = false;
    std::string out_;
};

void Writer::Collect(const RichText& text) {
    for (const Paragraph& paragraph : text.paragraphs) {
        if (paragraph.runs.empty()) Collect(paragraph.if_empty);
        for (const TextRun& run : paragraph.runs)
            Collect(run.format);
    }
    // Numbered by their order, so that equal texts give equal bytes.
    std::size_t next_font = 0;
    for (auto& font : fonts_)
        font.second = next_font++;
    std::size_t next_colour = 1;
    for (auto& colour : colours_)
        colour.second = next_colour++;
}

void Writer::Collect(const CharacterFormat& format) {
    if (format.family.empty()) {
        has_unnamed_font_ = true;
    } else {
        fonts_.emplace(format.family, 0);
    }
    if (format.colour) colours_.emplace(*format.colour, 0);
    if (format.background) colours_.emplace(*format.background, 0);
}

std::string Writer::Write(const RichText& text) {
    Collect(text);
    WriteHeader();
    for (const Paragraph& paragraph : text.paragraphs)
        WriteParagraph(paragraph);
    Put("}\r\n");
    return std::move(out_);
}

void Writer::WriteHeader() {
    Put("{\\rtf1\\ansi\\ansicpg1252");
    // A document's font would speak for texts that name none.
    if (!has_unnamed_font_) Put("\\deff0");
    Put("\\uc1\r\n{\\fonttbl");
    for (const auto& [family, number] : fonts_) {
        PutNumber("{\\f", static_cast<std::int64_t>(number));
        Put("\\fnil\\fcharset0 ");
        WriteText(Utf16Of(family));
        Put(";}");
    }
    Put("}\r\n{\\colortbl ;");
    for (const auto& entry : colours_) {
        PutNumber("\\red", (entry.first >> 16U) & 0xFFU);
        PutNumber("\\green", (entry.first >> 8U) & 0xFFU);
        PutNumber("\\blue", entry.first & 0xFFU);
        Put(";");
    }
    Put("}\r\n");
}

void Writer::WriteParagraph(const Paragraph& paragraph) {
    WriteFormat(paragraph.format);
    if (paragraph.runs.empty()) WriteFormat(paragraph.if_empty);
    for (const TextRun& run : paragraph.runs) {
        WriteFormat(run.format);
        WriteText(run.text);
    }
    Put("\\par\r\n");
}

void Writer::WriteLength(std::string_view word, std::int32_t value) {
    if (value != 0) PutNumber(word, value);
}

void Writer::WriteFormat(const ParagraphFormat& format) {
    Put("\\pard");
    Put(kAlignmentWords[static_cast<std::size_t>(format.alignment)]);
    WriteLength("\\li", format.left);
    WriteLength("\\ri", format.right);
    WriteLength("\\fi", format.first_line);
    WriteLength("\\sb", format.space_before);
    WriteLength("\\sa", format.space_after);
    for (const TabStop& tab : format.tabs) {
        Put(kTabKindWords[static_cast<std::size_t>(tab.kind)]);
        PutNumber("\\tx", tab.position_twips);
    }
}

void Writer::WriteFormat(const CharacterFormat& format) {
    Put("\\plain");
    if (const auto font = fonts_.find(format.family); font != fonts_.end()) {
        PutNumber("\\f", static_cast<std::int64_t>(font->second));
    }
    PutNumber("\\fs", format.half_points);
    if (format.bold) Put("\\b");
    if (format.italic) Put("\\i");
    if (format.underline) Put("\\ul");
    if (format.strike) Put("\\strike");
    if (format.script == Script::Super) Put("\\super");
    if (format.script == Script::Sub) Put("\\sub");
    if (format.colour) PutNumber("\\cf", static_cast<std::int64_t>(colours_.at(*format.colour)));
    if (format.background) {
        // Readers know one word or the other.
        const auto number = static_cast<std::int64_t>(colours_.at(*format.background));
        PutNumber("\\chcbpat", number);
        PutNumber("\\highlight", number);
    }
    Put(" ");
}

void Writer::WriteText(std::u16string_view text) {
    for (const char16_t unit : text)
        WriteUnit(unit);
}

void Writer::WriteUnit(char16_t unit) {
    switch (unit) {
    case u'\\':
        return Put("\\\\");
    case u'{':
        return Put("\\{");
    case u'}':
        return Put("\\}");
    case u'\t':
        return Put("\\tab ");
    case kLineBreak:
        return Put("\\line ");
    case 0x00A0:
        return Put("\\~");
    case 0x00AD:
        return Put("\\-");
    case 0x2011:
        return Put("\\_");
    default:
        break;
    }
    if (const std::optional<std::uint8_t> byte = WesternByte(unit)) return WriteByte(*byte);
    PutNumber("\\u", static_cast<std::int16_t>(unit));
    Put("?");
}

void Writer::WriteByte(std::uint8_t byte) {
    if (byte < 0x80) {
        out_ += static_cast<char>(byte);
        return;
    }
    constexpr std::string_view kDigits = "0123456789abcdef";
    Put("\\'");
    out_ += kDigits[byte >> 4U];
    out_ += kDigits[byte & 0xFU];
}

} // namespace

std::string WriteRtf(const RichText& text) {
    return Writer{}.Write(text);
}

} // namespace kelvo::desktop
