#include "platform/desktop/rich_text/RtfWords.h"

#include "platform/desktop/rich_text/RichText.h"

#include <unordered_map>

namespace kelvo::desktop {
namespace {

constexpr std::int32_t Value(auto enumerator) {
    return static_cast<std::int32_t>(enumerator);
}

constexpr RtfWord kWords[] = {
    {"fonttbl", RtfAction::FontTable},
    {"colortbl", RtfAction::ColourTable},

    // Groups whose content is not the document's text.
    {"annotation", RtfAction::Skip},
    {"atnauthor", RtfAction::Skip},
    {"atndate", RtfAction::Skip},
    {"atnid", RtfAction::Skip},
    {"bkmkend", RtfAction::Skip},
    {"bkmkstart", RtfAction::Skip},
    {"datafield", RtfAction::Skip},
    {"do", RtfAction::Skip},
    {"filetbl", RtfAction::Skip},
    {"fldinst", RtfAction::Skip},
    {"footer", RtfAction::Skip},
    {"footerf", RtfAction::Skip},
    {"footerl", RtfAction::Skip},
    {"footerr", RtfAction::Skip},
    {"footnote", RtfAction::Skip},
    {"generator", RtfAction::Skip},
    {"header", RtfAction::Skip},
    {"headerf", RtfAction::Skip},
    {"headerl", RtfAction::Skip},
    {"headerr", RtfAction::Skip},
    {"info", RtfAction::Skip},
    {"keycode", RtfAction::Skip},
    {"listoverridetable", RtfAction::Skip},
    {"listtable", RtfAction::Skip},
    {"nonshppict", RtfAction::Skip},
    {"objalias", RtfAction::Skip},
    {"objclass", RtfAction::Skip},
    {"objdata", RtfAction::Skip},
    {"objname", RtfAction::Skip},
    {"objsect", RtfAction::Skip},
    {"pict", RtfAction::Skip},
    {"pn", RtfAction::Skip},
    {"private", RtfAction::Skip},
    {"revtbl", RtfAction::Skip},
    {"rxe", RtfAction::Skip},
    {"stylesheet", RtfAction::Skip},
    {"tc", RtfAction::Skip},
    {"tcn", RtfAction::Skip},
    {"template", RtfAction::Skip},
    {"txe", RtfAction::Skip},
    {"xe", RtfAction::Skip},

    {"bullet", RtfAction::Character, 0x2022},
    {"cell", RtfAction::Character, '\t'},
    {"emdash", RtfAction::Character, 0x2014},
    {"emspace", RtfAction::Character, 0x2003},
    {"endash", RtfAction::Character, 0x2013},
    {"enspace", RtfAction::Character, 0x2002},
    {"ldblquote", RtfAction::Character, 0x201C},
    {"line", RtfAction::Character, kLineBreak},
    {"lquote", RtfAction::Character, 0x2018},
    {"ltrmark", RtfAction::Character, 0x200E},
    {"nestcell", RtfAction::Character, '\t'},
    {"qmspace", RtfAction::Character, 0x2005},
    {"rdblquote", RtfAction::Character, 0x201D},
    {"rquote", RtfAction::Character, 0x2019},
    {"rtlmark", RtfAction::Character, 0x200F},
    {"tab", RtfAction::Character, '\t'},
    {"zwbo", RtfAction::Character, 0x200B},
    {"zwj", RtfAction::Character, 0x200D},
    {"zwnbo", RtfAction::Character, 0x2060},
    {"zwnj", RtfAction::Character, 0x200C},
    {"column", RtfAction::Break},
    {"page", RtfAction::Break},
    {"par", RtfAction::Paragraph},
    {"nestrow", RtfAction::Row},
    {"row", RtfAction::Row},
    {"sect", RtfAction::Section},
    {"u", RtfAction::Unicode},
    {"uc", RtfAction::Fallback},

    {"ansi", RtfAction::CodePage, 1252},
    {"ansicpg", RtfAction::CodePage},
    {"mac", RtfAction::CodePage, 10000},
    {"pc", RtfAction::CodePage, 437},
    {"pca", RtfAction::CodePage, 850},
    {"cpg", RtfAction::FontCodePage},
    {"deff", RtfAction::DefaultFont},
    {"fcharset", RtfAction::CharacterSet},
    {"blue", RtfAction::Blue},
    {"green", RtfAction::Green},
    {"red", RtfAction::Red},

    {"b", RtfAction::Bold},
    {"cb", RtfAction::Background},
    {"cf", RtfAction::Colour},
    {"chcbpat", RtfAction::Background},
    {"f", RtfAction::Font},
    {"fs", RtfAction::FontSize},
    {"highlight", RtfAction::Background},
    {"i", RtfAction::Italic},
    {"nosupersub", RtfAction::Script, Value(Script::Normal)},
    {"plain", RtfAction::Plain},
    {"strike", RtfAction::Strike},
    {"striked", RtfAction::Strike},
    {"sub", RtfAction::Script, Value(Script::Sub)},
    {"super", RtfAction::Script, Value(Script::Super)},
    {"ul", RtfAction::Underline},
    {"uld", RtfAction::Underline},
    {"uldash", RtfAction::Underline},
    {"uldashd", RtfAction::Underline},
    {"uldashdd", RtfAction::Underline},
    {"uldb", RtfAction::Underline},
    {"ulhwave", RtfAction::Underline},
    {"ulldash", RtfAction::Underline},
    {"ulnone", RtfAction::NoUnderline},
    {"ulth", RtfAction::Underline},
    {"ulthd", RtfAction::Underline},
    {"ulthdash", RtfAction::Underline},
    {"ulthdashd", RtfAction::Underline},
    {"ulthdashdd", RtfAction::Underline},
    {"ulthldash", RtfAction::Underline},
    {"ululdbwave", RtfAction::Underline},
    {"ulw", RtfAction::Underline},
    {"ulwave", RtfAction::Underline},
    {"v", RtfAction::Hidden},

    {"fi", RtfAction::FirstLine},
    {"li", RtfAction::Left},
    {"pard", RtfAction::ResetParagraph},
    {"qc", RtfAction::Align, Value(Alignment::Centre)},
    {"qd", RtfAction::Align, Value(Alignment::Justified)},
    {"qj", RtfAction::Align, Value(Alignment::Justified)},
    {"ql", RtfAction::Align, Value(Alignment::Left)},
    {"qr", RtfAction::Align, Value(Alignment::Right)},
    {"ri", RtfAction::Right},
    {"sa", RtfAction::SpaceAfter},
    {"sb", RtfAction::SpaceBefore},
    {"tqc", RtfAction::NextTabKind, Value(TabKind::Centre)},
    {"tqdec", RtfAction::NextTabKind, Value(TabKind::Decimal)},
    {"tqr", RtfAction::NextTabKind, Value(TabKind::Right)},
    {"tx", RtfAction::Tab},
};

} // namespace

const RtfWord* FindRtfWord(std::string_view name) {
    static const auto by_name = [] {
        std::unordered_map<std::string_view, const RtfWord*> words;
        for (const RtfWord& word : kWords)
            words.emplace(word.name, &word);
        return words;
    }();
    const auto found = by_name.find(name);
    return found == by_name.end() ? nullptr : found->second;
}

} // namespace kelvo::desktop
