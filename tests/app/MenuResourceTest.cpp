// The menu resource and its copies in other languages.

#include "platform/base/resources.h"
#include "platform/desktop/menus.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace kelvo {
namespace {

struct Entry {
    UINT id; ///< 0 for a separator
    std::string text;
    friend bool operator==(const Entry&, const Entry&) = default;
};

void PrintTo(const Entry& entry, std::ostream* out) {
    *out << entry.id << " " << entry.text;
}

std::string TextOf(HMENU menu, int position) {
    std::array<char, 100> text{};
    GetMenuStringA(menu, static_cast<UINT>(position), text.data(), static_cast<int>(text.size()),
                   MF_BYPOSITION);
    return text.data();
}

std::vector<Entry> EntriesOf(HMENU popup) {
    std::vector<Entry> entries;
    for (int i = 0; i < GetMenuItemCount(popup); ++i) {
        entries.push_back({GetMenuItemID(popup, i), TextOf(popup, i)});
    }
    return entries;
}

struct MenuCase {
    const char* resource;
    const char* second_popup;
    std::vector<Entry> file;
    std::vector<Entry> options;
};

const Entry kSeparator{0, ""};
const std::vector<Entry> kItalianFile = {
    {101, "Apri..."}, {102, "Chiudi"}, kSeparator, kSeparator, {10005, "Esci"}};
const std::vector<Entry> kItalianZoom = {{1001, "Dimensioni Originali"},
                                         {1007, "Adatta alla finestra"},
                                         kSeparator,
                                         {1002, "Zoom 25%"},
                                         {1003, "Zoom 50%"},
                                         {1004, "Zoom 75%"},
                                         {1005, "Zoom 150%"},
                                         {1006, "Zoom 200%"}};

std::vector<Entry> WithOptions(std::vector<Entry> entries) {
    entries.push_back(kSeparator);
    entries.push_back({1016, "Sempre in Primo Piano"});
    entries.push_back({1015, "Riproduzione continua"});
    return entries;
}

std::vector<Entry> InEnglish(std::vector<Entry> entries) {
    entries[0].text = "Original size";
    entries[1].text = "Fit to window";
    return entries;
}

TEST(MenuResource, HasItsTextsInEveryLanguage) {
    const MenuCase cases[] = {
        {"MENUKELVOWIN", "&Impostaz", kItalianFile, WithOptions(kItalianZoom)},
        {"MENUKELVOWIN_EN",
         "&Zoom",
         {{101, "Open..."}, {102, "Close"}, kSeparator, kSeparator, {10005, "Esc"}},
         InEnglish(kItalianZoom)},
        {"MENUKELVOWIN_ES", "&Zoom", kItalianFile, kItalianZoom},
        {"MENUKELVOWIN_FR", "&Zoom", kItalianFile, kItalianZoom},
    };
    for (const MenuCase& one : cases) {
        const HMENU menu = LoadMenuA(GetModuleHandleA(nullptr), one.resource);
        ASSERT_NE(menu, nullptr) << one.resource;
        EXPECT_EQ(GetMenuItemCount(menu), 2);
        EXPECT_EQ(TextOf(menu, 0), "&File");
        EXPECT_EQ(TextOf(menu, 1), one.second_popup);
        EXPECT_EQ(EntriesOf(GetSubMenu(menu, 0)), one.file) << one.resource;
        EXPECT_EQ(EntriesOf(GetSubMenu(menu, 1)), one.options) << one.resource;
        DestroyMenu(menu);
    }
}

} // namespace
} // namespace kelvo
