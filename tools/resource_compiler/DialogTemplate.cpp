#include "tools/resource_compiler/DialogTemplate.h"

#include "tools/resource_compiler/TemplateBytes.h"

#include <string>
#include <string_view>

namespace kelvo::resource_compiler {

namespace {

constexpr std::uint32_t kPopupWindow = 0x80880000; ///< WS_POPUPWINDOW: a dialog without STYLE
constexpr std::uint32_t kCaption = 0x00C00000;
constexpr std::uint32_t kSetFont = 0x40;
constexpr std::uint32_t kChildVisible = 0x50000000;
constexpr std::uint32_t kBorder = 0x00800000;
constexpr std::uint32_t kGroup = 0x00020000;
constexpr std::uint32_t kTabStop = 0x00010000;

constexpr std::uint16_t kButton = 0x80;
constexpr std::uint16_t kEdit = 0x81;
constexpr std::uint16_t kStatic = 0x82;
constexpr std::uint16_t kListBox = 0x83;
constexpr std::uint16_t kScrollBar = 0x84;
constexpr std::uint16_t kComboBox = 0x85;

struct ControlStatement {
    std::string_view word;
    std::uint16_t window_class;
    std::uint32_t style;         ///< always added
    std::uint32_t style_if_none; ///< added where the script gives no style
    bool has_text;
    bool may_lack_size;
};

// CBS_SIMPLE cannot stand among the styles that are always added: with CBS_DROPDOWN it makes
// another kind of box.
constexpr ControlStatement kStatements[] = {
    {"LTEXT", kStatic, kGroup, 0, true, false},
    {"CTEXT", kStatic, kGroup | 1U, 0, true, false},
    {"RTEXT", kStatic, kGroup | 2U, 0, true, false},
    {"ICON", kStatic, 3, 0, true, true},
    {"PUSHBUTTON", kButton, kTabStop, 0, true, false},
    {"DEFPUSHBUTTON", kButton, kTabStop | 1U, 0, true, false},
    {"CHECKBOX", kButton, kTabStop | 2U, 0, true, false},
    {"AUTOCHECKBOX", kButton, kTabStop | 3U, 0, true, false},
    {"RADIOBUTTON", kButton, kTabStop | 4U, 0, true, false},
    {"STATE3", kButton, kTabStop | 5U, 0, true, false},
    {"AUTO3STATE", kButton, kTabStop | 6U, 0, true, false},
    {"GROUPBOX", kButton, 7, 0, true, false},
    {"AUTORADIOBUTTON", kButton, kTabStop | 9U, 0, true, false},
    {"PUSHBOX", kButton, kTabStop | 10U, 0, true, false},
    {"EDITTEXT", kEdit, kBorder | kTabStop, 0, false, false},
    {"LISTBOX", kListBox, kBorder | 1U, 0, false, false},
    {"SCROLLBAR", kScrollBar, 0, 0, false, false},
    {"COMBOBOX", kComboBox, kTabStop, 1, false, false},
};

struct ClassName {
    std::string_view name;
    std::uint16_t number;
};
constexpr ClassName kClassNames[] = {
    {"BUTTON", kButton},   {"EDIT", kEdit},           {"STATIC", kStatic},
    {"LISTBOX", kListBox}, {"SCROLLBAR", kScrollBar}, {"COMBOBOX", kComboBox},
};

struct Rectangle {
    std::uint16_t x = 0;
    std::uint16_t y = 0;
    std::uint16_t width = 0;
    std::uint16_t height = 0;
};

struct Control {
    NumberOrText window_class;
    NumberOrText title = std::string{};
    std::uint32_t id = 0;
    std::uint32_t style = 0;
    std::uint32_t extended_style = 0;
    std::uint32_t help_id = 0;
    Rectangle place;
};

struct Dialog {
    Extended extended = Extended::No;
    Rectangle place;
    std::uint32_t help_id = 0;
    std::optional<std::uint32_t> given_style;
    std::uint32_t extended_style = 0;
    NumberOrText menu = std::string{};
    NumberOrText window_class = std::string{};
    std::optional<std::string> caption;
    bool has_font = false;
    std::uint16_t point_size = 0;
    std::uint16_t weight = 0;
    std::uint8_t italic = 0;
    std::uint8_t charset = 1; ///< DEFAULT_CHARSET
    std::string face;
    std::optional<std::uint16_t> language;
    std::vector<Control> controls;

    std::uint32_t Style() const {
        return given_style.value_or(kPopupWindow) | (caption ? kCaption : 0U) |
               (has_font ? kSetFont : 0U);
    }
};

Rectangle ParseRectangle(TokenCursor& cursor) {
    Rectangle place;
    place.x = cursor.ExpectWord();
    cursor.ExpectComma();
    place.y = cursor.ExpectWord();
    cursor.ExpectComma();
    place.width = cursor.ExpectWord();
    cursor.ExpectComma();
    place.height = cursor.ExpectWord();
    return place;
}

NumberOrText ParseClass(TokenCursor& cursor) {
    if (cursor.Peek().kind != TokenKind::Text && cursor.AtNumber()) return cursor.ExpectWord();
    // A class may also be named by a bare word: CONTROL "", 5, BUTTON, ...
    const std::string name =
        cursor.Peek().kind == TokenKind::Word ? cursor.Take().text : cursor.ExpectText();
    for (const ClassName& known : kClassNames) {
        if (SameWord(name, known.name)) return known.number;
    }
    return name;
}

// What may follow a control's size (and, but for CONTROL, its style): extended style and help id.
void ParseControlTail(TokenCursor& cursor, Control& control) {
    if (cursor.AcceptSign(',')) control.extended_style = cursor.ExpectStyle(0);
    if (cursor.AcceptSign(',')) control.help_id = cursor.ExpectNumber();
}

// CONTROL text, id, class, style, x, y, width, height [, extended style [, help id]]
Control ParseGeneralControl(TokenCursor& cursor) {
    Control control;
    control.title = cursor.ExpectNumberOrText();
    cursor.ExpectComma();
    control.id = cursor.ExpectNumber();
    cursor.ExpectComma();
    control.window_class = ParseClass(cursor);
    cursor.ExpectComma();
    control.style = cursor.ExpectStyle(kChildVisible);
    cursor.ExpectComma();
    control.place = ParseRectangle(cursor);
    ParseControlTail(cursor, control);
    return control;
}

// [text,] id, x, y, width, height [, style [, extended style [, help id]]]
Control ParseNamedControl(TokenCursor& cursor, const ControlStatement& statement) {
    Control control;
    control.window_class = statement.window_class;
    if (statement.has_text) {
        control.title = cursor.ExpectNumberOrText();
        cursor.ExpectComma();
    }
    control.id = cursor.ExpectNumber();
    cursor.ExpectComma();
    control.place.x = cursor.ExpectWord();
    cursor.ExpectComma();
    control.place.y = cursor.ExpectWord();
    if (cursor.AcceptSign(',')) {
        control.place.width = cursor.ExpectWord();
        cursor.ExpectComma();
        control.place.height = cursor.ExpectWord();
    } else if (!statement.may_lack_size) {
        cursor.ExpectComma();
    }
    control.style = kChildVisible | statement.style;
    if (cursor.AcceptSign(',')) {
        control.style = cursor.ExpectStyle(control.style);
        ParseControlTail(cursor, control);
    } else {
        control.style |= statement.style_if_none;
    }
    return control;
}

Control ParseControl(TokenCursor& cursor) {
    if (cursor.AcceptWord("CONTROL")) return ParseGeneralControl(cursor);
    for (const ControlStatement& statement : kStatements) {
        if (cursor.AcceptWord(statement.word)) return ParseNamedControl(cursor, statement);
    }
    cursor.Fail("a control or END is wanted, not " + cursor.Peek().text);
    return {};
}

// FONT size, face [, weight, italic [, charset]]
void ParseFont(TokenCursor& cursor, Dialog& dialog) {
    dialog.has_font = true;
    dialog.point_size = cursor.ExpectWord();
    cursor.ExpectComma();
    dialog.face = cursor.ExpectText();
    if (cursor.AcceptSign(',')) dialog.weight = cursor.ExpectWord();
    if (cursor.AcceptSign(',')) dialog.italic = static_cast<std::uint8_t>(cursor.ExpectWord());
    if (cursor.AcceptSign(',')) dialog.charset = static_cast<std::uint8_t>(cursor.ExpectWord());
}

// @return false when what comes next is no statement of the dialog's head.
bool ParseHeadStatement(TokenCursor& cursor, Dialog& dialog) {
    if (cursor.AcceptWord("STYLE")) {
        dialog.given_style = cursor.ExpectStyle(0);
    } else if (cursor.AcceptWord("EXSTYLE")) {
        dialog.extended_style = cursor.ExpectStyle(0);
    } else if (cursor.AcceptWord("CAPTION")) {
        dialog.caption = cursor.ExpectText();
    } else if (cursor.AcceptWord("MENU")) {
        dialog.menu = cursor.ExpectNumberOrText();
    } else if (cursor.AcceptWord("CLASS")) {
        dialog.window_class = cursor.ExpectNumberOrText();
    } else if (cursor.AcceptWord("FONT")) {
        ParseFont(cursor, dialog);
    } else if (cursor.AcceptWord("LANGUAGE")) {
        dialog.language = ParseLanguage(cursor);
    } else if (cursor.AcceptWord("CHARACTERISTICS") || cursor.AcceptWord("VERSION")) {
        cursor.ExpectNumber(); // means nothing to any program
    } else {
        return false;
    }
    return true;
}

void WritePlace(TemplateBytes& bytes, const Rectangle& place) {
    bytes.AddU16(place.x);
    bytes.AddU16(place.y);
    bytes.AddU16(place.width);
    bytes.AddU16(place.height);
}

void WriteHead(TemplateBytes& bytes, const Dialog& dialog) {
    const bool extended = dialog.extended == Extended::Yes;
    if (extended) {
        bytes.AddU16(1);
        bytes.AddU16(0xFFFF);
        bytes.AddU32(dialog.help_id);
        bytes.AddU32(dialog.extended_style);
        bytes.AddU32(dialog.Style());
    } else {
        bytes.AddU32(dialog.Style());
        bytes.AddU32(dialog.extended_style);
    }
    bytes.AddU16(static_cast<std::uint16_t>(dialog.controls.size()));
    WritePlace(bytes, dialog.place);
    bytes.AddNumberOrText(dialog.menu);
    bytes.AddNumberOrText(dialog.window_class);
    bytes.AddText(dialog.caption.value_or(std::string{}));
    if ((dialog.Style() & kSetFont) == 0) return;
    bytes.AddU16(dialog.point_size);
    if (extended) {
        bytes.AddU16(dialog.weight);
        bytes.AddU8(dialog.italic);
        bytes.AddU8(dialog.charset);
    }
    bytes.AddText(dialog.face);
}

void WriteControl(TemplateBytes& bytes, const Control& control, Extended extended) {
    bytes.AlignTo(4);
    if (extended == Extended::Yes) {
        bytes.AddU32(control.help_id);
        bytes.AddU32(control.extended_style);
        bytes.AddU32(control.style);
        WritePlace(bytes, control.place);
        bytes.AddU32(control.id);
    } else {
        bytes.AddU32(control.style);
        bytes.AddU32(control.extended_style);
        WritePlace(bytes, control.place);
        bytes.AddU16(static_cast<std::uint16_t>(control.id));
    }
    bytes.AddNumberOrText(control.window_class);
    bytes.AddNumberOrText(control.title);
    bytes.AddU16(0); // no creation data
}

} // namespace

std::uint16_t ParseLanguage(TokenCursor& cursor) {
    const std::uint32_t primary = cursor.ExpectNumber();
    cursor.ExpectComma();
    const std::uint32_t sub = cursor.ExpectNumber();
    if (primary > 0x3FF || sub > 0x3F) cursor.Fail("there is no such language");
    return static_cast<std::uint16_t>((sub << 10U) | primary);
}

ParsedDialog ParseDialog(TokenCursor& cursor, Extended extended) {
    Dialog dialog;
    dialog.extended = extended;
    dialog.place = ParseRectangle(cursor);
    if (extended == Extended::Yes && cursor.AcceptSign(',')) dialog.help_id = cursor.ExpectNumber();
    while (ParseHeadStatement(cursor, dialog)) {}
    if ((dialog.given_style.value_or(0) & kSetFont) != 0 && !dialog.has_font) {
        cursor.Fail("DS_SETFONT without FONT");
    }
    cursor.ExpectBegin();
    while (!cursor.AcceptEnd()) {
        dialog.controls.push_back(ParseControl(cursor));
    }
    if (dialog.controls.size() > 0xFFFF) cursor.Fail("too many controls");
    TemplateBytes bytes;
    WriteHead(bytes, dialog);
    for (const Control& control : dialog.controls) {
        WriteControl(bytes, control, extended);
    }
    return {bytes.Finish(), dialog.language};
}

} // namespace kelvo::resource_compiler
