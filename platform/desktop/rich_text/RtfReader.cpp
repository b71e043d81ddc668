#include "platform/desktop/rich_text/RtfReader.h"

#include "platform/desktop/rich_text/CodePages.h"
#include "platform/desktop/rich_text/RichTextBuilder.h"
#include "platform/desktop/rich_text/RtfTables.h"
#include "platform/desktop/rich_text/RtfTokens.h"
#include "platform/desktop/rich_text/RtfWords.h"
#include "platform/desktop/rich_text/Utf.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo::desktop {
namespace {

/// What is nested deeper is left out; no document goes past a few dozen.
constexpr std::size_t kMaximumDepth = 1000;
constexpr std::int32_t kLongestLength = 31680; ///< twips, 22 inches: no paper is wider
constexpr std::int32_t kMaximumFallback = 32;
constexpr std::int32_t kNone = -1;

enum class Destination : std::uint8_t { Text, FontTable, ColourTable, Nothing };

/// What a group begins with and restores at its end. Fonts and colours are numbers of the tables.
struct GroupState {
    Destination destination = Destination::Text;
    std::int32_t fallback_characters = 1;
    std::int32_t font = kNone; ///< none: the document's
    std::int32_t colour = kNone;
    std::int32_t background = kNone;
    CharacterFormat look; ///< all but family and colours
    bool hidden = false;
    ParagraphFormat paragraph;
    TabKind next_tab = TabKind::Left;
};

/// The pictures that lists begin with, in fonts of pictures.
char16_t SymbolCharacter(std::uint8_t byte) {
    switch (byte) {
    case 0xA7:
        return 0x25AA; // small square
    case 0xA8:
        return 0x25A1; // box
    case 0xB7:
        return 0x2022; // bullet
    case 0xD8:
        return 0x27A2; // arrowhead
    case 0xFC:
        return 0x2713; // check mark
    default:
        return byte;
    }
}

class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes) : tokens_(bytes) {}

    std::optional<RichText> Read();

private:
    void ReadToken(const RtfToken& token);
    void StartGroup();
    void EndGroup();
    void ReadSymbol(char symbol);
    void ReadWord(const RtfToken& token);
    void ReadTextWord(const RtfWord& word, const RtfToken& token);
    bool ApplyCharacterWord(const RtfWord& word, const RtfToken& token);
    bool ApplyParagraphWord(const RtfWord& word, const RtfToken& token);
    void ReadTableWord(RtfAction action, const RtfToken& token);
    void AddTab(std::int32_t position);

    void ReadBytes(std::string_view bytes);
    void AddUnit(char16_t unit);
    void FlushBytes();
    void FlushText();
    void EndParagraph();
    std::int32_t CurrentFont() const;
    CodePage& CurrentCodePage();
    CharacterFormat CurrentFormat() const;

    RtfTokenizer tokens_;
    GroupState state_;
    std::vector<GroupState> outer_;
    std::size_t skipped_depth_ = 0;  ///< groups beyond kMaximumDepth that are open
    std::int32_t fallback_left_ = 0; ///< characters that repeat what \u gave already
    bool ignorable_ = false;         ///< \* was just read
    bool finished_ = false;

    RtfFontTable fonts_;
    RtfColourTable colours_;
    int document_code_page_ = kWesternCodePage;
    std::int32_t default_font_ = kNone;
    std::map<int, CodePage> code_pages_;

    std::string pending_bytes_;   ///< not decoded yet: a character may have two
    std::u16string pending_text_; ///< decoded, in the format of the state
    RichTextBuilder builder_;
};

std::optional<RichText> Reader::Read() {
    if (tokens_.Next().kind != RtfTokenKind::GroupStart) return std::nullopt;
    const RtfToken first = tokens_.Next();
    if (first.kind != RtfTokenKind::Word || first.text != "rtf") return std::nullopt;
    while (!finished_) {
        const RtfToken token = tokens_.Next();
        if (token.kind == RtfTokenKind::End) break;
        ReadToken(token);
    }
    FlushText();
    return builder_.Finish(state_.paragraph, CurrentFormat());
}

void Reader::ReadToken(const RtfToken& token) {
    if (skipped_depth_ > 0 && token.kind != RtfTokenKind::GroupStart &&
        token.kind != RtfTokenKind::GroupEnd) {
        return;
    }
    const bool was_ignorable = std::exchange(ignorable_, false);
    switch (token.kind) {
    case RtfTokenKind::GroupStart:
        return StartGroup();
    case RtfTokenKind::GroupEnd:
        return EndGroup();
    case RtfTokenKind::Word:
        if (was_ignorable) {
            FlushText();
            state_.destination = Destination::Nothing;
            return;
        }
        return ReadWord(token);
    case RtfTokenKind::Symbol:
        return ReadSymbol(token.text.front());
    case RtfTokenKind::HexByte: {
        const char byte = static_cast<char>(token.number);
        return ReadBytes({&byte, 1});
    }
    case RtfTokenKind::Text:
        return ReadBytes(token.text);
    case RtfTokenKind::Binary:
        if (fallback_left_ > 0) --fallback_left_;
        return;
    case RtfTokenKind::End:
        return;
    }
}

void Reader::StartGroup() {
    if (outer_.size() >= kMaximumDepth) {
        ++skipped_depth_;
        return;
    }
    FlushText();
    fallback_left_ = 0;
    outer_.push_back(state_);
}

void Reader::EndGroup() {
    if (skipped_depth_ > 0) {
        --skipped_depth_;
        return;
    }
    FlushText();
    fallback_left_ = 0;
    if (outer_.empty()) {
        finished_ = true;
        return;
    }
    state_ = std::move(outer_.back());
    outer_.pop_back();
}

void Reader::ReadSymbol(char symbol) {
    switch (symbol) {
    case '*':
        ignorable_ = true;
        return;
    case '\\':
    case '{':
    case '}':
        return ReadBytes({&symbol, 1});
    case '~':
        return AddUnit(0x00A0);
    case '-':
        return AddUnit(0x00AD);
    case '_':
        return AddUnit(0x2011);
    case '\t':
        return AddUnit(u'\t');
    case '\r':
    case '\n':
        return EndParagraph();
    default:
        return; // marks of an index, formulas
    }
}

void Reader::ReadWord(const RtfToken& token) {
    const RtfWord* const word = FindRtfWord(token.text);
    if (word == nullptr || state_.destination == Destination::Nothing) return;
    switch (word->action) {
    case RtfAction::Skip:
        FlushText();
        state_.destination = Destination::Nothing;
        return;
    case RtfAction::FontTable:
        state_.destination = Destination::FontTable;
        return;
    case RtfAction::ColourTable:
        state_.destination = Destination::ColourTable;
        return;
    case RtfAction::Fallback:
        state_.fallback_characters = std::clamp(token.number, 0, kMaximumFallback);
        return;
    case RtfAction::Unicode:
        fallback_left_ = 0;
        AddUnit(static_cast<char16_t>(token.number & 0xFFFF));
        fallback_left_ = state_.fallback_characters;
        return;
    case RtfAction::CodePage:
        document_code_page_ = word->value != 0 ? word->value : token.number;
        return;
    case RtfAction::DefaultFont:
        default_font_ = token.number;
        return;
    default:
        break;
    }
    if (state_.destination != Destination::Text) return ReadTableWord(word->action, token);
    ReadTextWord(*word, token);
}

void Reader::ReadTableWord(RtfAction action, const RtfToken& token) {
    FlushText(); // a part of the name before, in the code page of before
    switch (action) {
    case RtfAction::Font:
        if (state_.destination == Destination::FontTable) fonts_.Begin(token.number);
        return;
    case RtfAction::CharacterSet:
        fonts_.SetCharacterSet(token.number);
        return;
    case RtfAction::FontCodePage:
        fonts_.SetCodePage(token.number);
        return;
    case RtfAction::Red:
        colours_.SetRed(token.number);
        return;
    case RtfAction::Green:
        colours_.SetGreen(token.number);
        return;
    case RtfAction::Blue:
        colours_.SetBlue(token.number);
        return;
    default:
        return;
    }
}

void Reader::ReadTextWord(const RtfWord& word, const RtfToken& token) {
    if (word.action == RtfAction::Character) return AddUnit(static_cast<char16_t>(word.value));
    FlushText();
    fallback_left_ = 0;
    switch (word.action) {
    case RtfAction::Paragraph:
        return EndParagraph();
    case RtfAction::Break:
        if (builder_.HasBegun()) AddUnit(kLineBreak);
        return;
    case RtfAction::Row:
        if (!builder_.HasBegun()) return;
        builder_.DropLastTab();
        return EndParagraph();
    case RtfAction::Section:
        if (builder_.HasBegun()) EndParagraph();
        return;
    default:
        break;
    }
    if (!ApplyCharacterWord(word, token)) ApplyParagraphWord(word, token);
}

bool Reader::ApplyCharacterWord(const RtfWord& word, const RtfToken& token) {
    const bool on = !token.has_number || token.number != 0;
    CharacterFormat& look = state_.look;
    switch (word.action) {
    case RtfAction::Plain:
        look = {};
        state_.font = state_.colour = state_.background = kNone;
        state_.hidden = false;
        return true;
    case RtfAction::Font:
        state_.font = token.number;
        return true;
    case RtfAction::FontSize:
        if (token.number > 0) look.half_points = std::clamp(token.number, 2, 3276);
        return true;
    case RtfAction::Bold:
        look.bold = on;
        return true;
    case RtfAction::Italic:
        look.italic = on;
        return true;
    case RtfAction::Underline:
        look.underline = on;
        return true;
    case RtfAction::NoUnderline:
        look.underline = false;
        return true;
    case RtfAction::Strike:
        look.strike = on;
        return true;
    case RtfAction::Hidden:
        state_.hidden = on;
        return true;
    case RtfAction::Script:
        look.script = on ? static_cast<Script>(word.value) : Script::Normal;
        return true;
    case RtfAction::Colour:
        state_.colour = token.number;
        return true;
    case RtfAction::Background:
        state_.background = token.number;
        return true;
    default:
        return false;
    }
}

bool Reader::ApplyParagraphWord(const RtfWord& word, const RtfToken& token) {
    ParagraphFormat& format = state_.paragraph;
    const std::int32_t length = std::clamp(token.number, 0, kLongestLength);
    switch (word.action) {
    case RtfAction::ResetParagraph:
        format = {};
        state_.next_tab = TabKind::Left;
        return true;
    case RtfAction::Align:
        format.alignment = static_cast<Alignment>(word.value);
        return true;
    case RtfAction::Left:
        format.left = length;
        return true;
    case RtfAction::Right:
        format.right = length;
        return true;
    case RtfAction::FirstLine:
        format.first_line = std::clamp(token.number, -kLongestLength, kLongestLength);
        return true;
    case RtfAction::SpaceBefore:
        format.space_before = length;
        return true;
    case RtfAction::SpaceAfter:
        format.space_after = length;
        return true;
    case RtfAction::NextTabKind:
        state_.next_tab = static_cast<TabKind>(word.value);
        return true;
    case RtfAction::Tab:
        AddTab(length);
        return true;
    default:
        return false;
    }
}

void Reader::AddTab(std::int32_t position) {
    const TabKind kind = std::exchange(state_.next_tab, TabKind::Left);
    std::vector<TabStop>& tabs = state_.paragraph.tabs;
    if (tabs.size() < kMaximumTabs) tabs.push_back({position, kind});
}

void Reader::ReadBytes(std::string_view bytes) {
    if (state_.destination == Destination::Nothing) return;
    const std::size_t repeated = std::min(bytes.size(), static_cast<std::size_t>(fallback_left_));
    fallback_left_ -= static_cast<std::int32_t>(repeated);
    bytes.remove_prefix(repeated);
    if (state_.destination == Destination::ColourTable) {
        colours_.ReadText(bytes);
    } else {
        pending_bytes_ += bytes;
    }
}

void Reader::AddUnit(char16_t unit) {
    if (fallback_left_ > 0) {
        --fallback_left_;
        return;
    }
    if (state_.destination == Destination::Nothing) return;
    FlushBytes();
    pending_text_ += unit;
}

void Reader::FlushBytes() {
    if (pending_bytes_.empty()) return;
    if (state_.destination == Destination::Text && fonts_.IsSymbol(CurrentFont())) {
        for (const char byte : pending_bytes_) {
            pending_text_ += SymbolCharacter(static_cast<std::uint8_t>(byte));
        }
    } else {
        pending_text_ += CurrentCodePage().Decode(pending_bytes_);
    }
    pending_bytes_.clear();
}

void Reader::FlushText() {
    FlushBytes();
    if (pending_text_.empty()) return;
    if (state_.destination == Destination::FontTable) {
        fonts_.AppendName(pending_text_);
    } else if (state_.destination == Destination::Text && !state_.hidden) {
        builder_.Append(WithoutStrayUnits(pending_text_), CurrentFormat());
    }
    pending_text_.clear();
}

void Reader::EndParagraph() {
    if (state_.destination != Destination::Text) return;
    FlushText();
    builder_.EndParagraph(state_.paragraph, CurrentFormat());
}

std::int32_t Reader::CurrentFont() const {
    return state_.font != kNone ? state_.font : default_font_;
}

CodePage& Reader::CurrentCodePage() {
    const std::optional<int> of_font = state_.destination == Destination::FontTable
                                           ? fonts_.CurrentCodePage()
                                           : fonts_.CodePage(CurrentFont());
    const int number = KnownCodePage(of_font.value_or(document_code_page_));
    return code_pages_.try_emplace(number, number).first->second;
}

CharacterFormat Reader::CurrentFormat() const {
    CharacterFormat format = state_.look;
    format.family = fonts_.Family(CurrentFont());
    format.colour = colours_.Find(state_.colour);
    format.background = colours_.Find(state_.background);
    return format;
}

} // namespace

std::optional<RichText> ReadRtf(std::span<const std::uint8_t> bytes) {
    return Reader{bytes}.Read();
}

} // namespace kelvo::desktop
