#include "tools/resource_compiler/MenuTemplate.h"

#include "tools/resource_compiler/TemplateBytes.h"

#include <cctype>

namespace kelvo::resource_compiler {

namespace {

constexpr std::uint16_t kPopup = 0x10;
constexpr std::uint16_t kLast = 0x80;
constexpr std::uint16_t kSeparator = 0x800;
constexpr int kDeepestPopup = 32;

struct Option {
    std::string_view word;
    std::uint16_t flag;
};

constexpr Option kMenuOptions[] = {
    {"GRAYED", 1},          {"INACTIVE", 2},     {"CHECKED", 8},
    {"MENUBARBREAK", 0x20}, {"MENUBREAK", 0x40}, {"HELP", 0x4000},
};

constexpr std::uint16_t kVirtualKey = 1;
constexpr Option kKeyOptions[] = {
    {"VIRTKEY", kVirtualKey}, {"ASCII", 0},  {"NOINVERT", 2}, {"SHIFT", 4},
    {"CONTROL", 8},           {"ALT", 0x10},
};

template <std::size_t kCount>
std::uint16_t ParseOptions(TokenCursor& cursor, const Option (&options)[kCount]) {
    std::uint16_t flags = 0;
    for (bool found = true; found;) {
        cursor.AcceptComma();
        found = false;
        for (const Option& option : options) {
            if (!cursor.AcceptWord(option.word)) continue;
            flags = static_cast<std::uint16_t>(flags | option.flag);
            found = true;
        }
    }
    return flags;
}

void ParseItems(TokenCursor& cursor, TemplateBytes& bytes, int depth);

void ParsePopup(TokenCursor& cursor, TemplateBytes& bytes, int depth) {
    const std::string text = cursor.ExpectText();
    bytes.AddU16(static_cast<std::uint16_t>(ParseOptions(cursor, kMenuOptions) | kPopup));
    bytes.AddText(text);
    if (depth == kDeepestPopup) cursor.Fail("popups go too deep");
    ParseItems(cursor, bytes, depth + 1);
}

void ParseItem(TokenCursor& cursor, TemplateBytes& bytes) {
    if (cursor.AcceptWord("SEPARATOR")) {
        bytes.AddU16(kSeparator);
        bytes.AddU16(0);
        bytes.AddText("");
        return;
    }
    const std::string text = cursor.ExpectText();
    cursor.ExpectComma();
    const std::uint16_t id = cursor.ExpectWord();
    bytes.AddU16(ParseOptions(cursor, kMenuOptions));
    bytes.AddU16(id);
    bytes.AddText(text);
}

void ParseItems(TokenCursor& cursor, TemplateBytes& bytes, int depth) {
    cursor.ExpectBegin();
    std::optional<std::size_t> last;
    while (!cursor.AcceptEnd()) {
        last = bytes.Size();
        if (cursor.AcceptWord("POPUP")) {
            ParsePopup(cursor, bytes, depth);
        } else if (cursor.AcceptWord("MENUITEM")) {
            ParseItem(cursor, bytes);
        } else {
            cursor.Fail("MENUITEM, POPUP or END is wanted, not " + cursor.Peek().text);
        }
    }
    if (cursor.Failure()) return;
    if (!last) return cursor.Fail("a menu must hold an item");
    bytes.MarkU16(*last, kLast);
}

// "a" is a character, "^C" a control character, anything else a number.
std::uint16_t ParseKey(TokenCursor& cursor) {
    if (cursor.Peek().kind != TokenKind::Text) return cursor.ExpectWord();
    const std::string text = cursor.ExpectText();
    const bool is_control = text.size() == 2 && text[0] == '^';
    if (text.size() != 1 && !is_control) cursor.Fail("a key is one character, or ^ and one");
    const auto letter = static_cast<unsigned char>(text.empty() ? '\0' : text.back());
    return static_cast<std::uint16_t>(is_control ? std::toupper(letter) & 0x1F : letter);
}

} // namespace

std::vector<std::uint8_t> ParseMenu(TokenCursor& cursor) {
    TemplateBytes bytes;
    bytes.AddU32(0);
    ParseItems(cursor, bytes, 0);
    return bytes.Finish();
}

std::vector<std::uint8_t> ParseAccelerators(TokenCursor& cursor) {
    TemplateBytes bytes;
    cursor.ExpectBegin();
    while (!cursor.AcceptEnd()) {
        const bool is_text = cursor.Peek().kind == TokenKind::Text;
        std::uint16_t key = ParseKey(cursor);
        cursor.ExpectComma();
        const std::uint16_t command = cursor.ExpectWord();
        const std::uint16_t flags = ParseOptions(cursor, kKeyOptions);
        // A key code of a letter is that of its capital.
        if (is_text && (flags & kVirtualKey) != 0) {
            key = static_cast<std::uint16_t>(std::toupper(key));
        }
        bytes.AddU16(flags);
        bytes.AddU16(key);
        bytes.AddU16(command);
        bytes.AddU16(0);
    }
    if (bytes.Size() > 0) bytes.MarkU16(bytes.Size() - 8, kLast);
    return bytes.Finish();
}

std::vector<std::uint8_t> ParseRawData(TokenCursor& cursor) {
    TemplateBytes bytes;
    cursor.ExpectBegin();
    while (!cursor.AcceptEnd()) {
        const Token next = cursor.Peek();
        if (next.kind == TokenKind::Text && next.wide) {
            for (const char16_t unit : Utf16From(cursor.ExpectText())) {
                bytes.AddU16(unit);
            }
        } else if (next.kind == TokenKind::Text) {
            const std::string text = cursor.ExpectText();
            bytes.AddBytes({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
        } else if (next.wide) {
            bytes.AddU32(cursor.ExpectNumber());
        } else {
            bytes.AddU16(cursor.ExpectWord());
        }
        cursor.AcceptComma();
    }
    return bytes.Finish();
}

void ParseStringTable(TokenCursor& cursor, std::map<std::uint16_t, std::string>& texts) {
    cursor.ExpectBegin();
    while (!cursor.AcceptEnd()) {
        const Place place = cursor.Peek().place;
        const std::uint16_t id = cursor.ExpectWord();
        cursor.AcceptComma();
        if (!texts.emplace(id, cursor.ExpectText()).second) {
            cursor.FailAt(place, "string " + std::to_string(id) + " occurs twice");
        }
    }
}

std::vector<std::uint8_t> StringBlock(const std::array<std::string, 16>& texts) {
    TemplateBytes bytes;
    for (const std::string& text : texts) {
        const std::u16string units = Utf16From(text);
        bytes.AddU16(static_cast<std::uint16_t>(units.size()));
        for (const char16_t unit : units) {
            bytes.AddU16(unit);
        }
    }
    return bytes.Finish();
}

} // namespace kelvo::resource_compiler
