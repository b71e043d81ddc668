#include "platform/base/resources.h"

#include "platform/base/paths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace kelvo::platform;

namespace {

constexpr WORD kItalian = 0x0410;
constexpr WORD kSwissItalian = 0x0810;
constexpr WORD kEnglish = 0x0409;

// Two resources written out byte by byte: dialog (5) "BOX" in no language, and "pic" of type "OWN"
// in Italian.
const std::vector<std::uint8_t> kCompiled = {
    'K', 'V', 'R', 'C',  1,   0, 0, 0,    2,    0,    0, 0, 0,   0,   0,   0,             //
    5,   0,   0,   0,    56,  0, 0, 0x80, 0,    0,    0, 0, 72,  0,   0,   0, 3, 0, 0, 0, //
    66,  0,   0,   0x80, 61,  0, 0, 0x80, 0x10, 0x04, 0, 0, 80,  0,   0,   0, 1, 0, 0, 0, //
    3,   0,   'B', 'O',  'X', 3, 0, 'p',  'i',  'c',  3, 0, 'O', 'W', 'N', 0,             //
    'd', 'l', 'g', 0,    0,   0, 0, 0,                                                    //
    'x', 0,   0,   0,    0,   0, 0, 0,                                                    //
};

std::string DataOf(HMODULE module, HRSRC resource) {
    const auto* const bytes =
        static_cast<const char*>(LockResource(LoadResource(module, resource)));
    return bytes == nullptr ? "-" : std::string{bytes, SizeofResource(module, resource)};
}

// One resource each time: a dialog "D" whose single byte tells them apart.
std::vector<std::uint8_t> DialogD(WORD language, char mark) {
    std::vector<std::uint8_t> bytes = {
        'K', 'V', 'R', 'C', 1,  0, 0, 0,    1, 0, 0, 0, 0,  0, 0, 0,             //
        5,   0,   0,   0,   36, 0, 0, 0x80, 0, 0, 0, 0, 40, 0, 0, 0, 1, 0, 0, 0, //
        1,   0,   'D', 0,                                                        //
        0,   0,   0,   0,   0,  0, 0, 0,                                         //
    };
    bytes[24] = LOBYTE(language);
    bytes[25] = HIBYTE(language);
    bytes[40] = static_cast<std::uint8_t>(mark);
    return bytes;
}

TEST(Resources, AreFoundByTypeAndNameWithoutCase) {
    const HMODULE module = AddModule();
    ASSERT_TRUE(RegisterResources(module, kCompiled));
    EXPECT_EQ(DataOf(module, FindResourceA(module, "box", RT_DIALOG)), "dlg");
    EXPECT_EQ(DataOf(module, FindResourceA(module, "Box", "#5")), "dlg");
    EXPECT_EQ(DataOf(module, FindResourceA(module, "PIC", "own")), "x");
    EXPECT_EQ(FindResourceA(module, "pic", RT_DIALOG), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_NAME_NOT_FOUND);
    EXPECT_EQ(FindResourceA(module, "box", RT_MENU), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_TYPE_NOT_FOUND);
    EXPECT_EQ(FindResourceA(module, MAKEINTRESOURCEA(7), RT_DIALOG), nullptr);
}

TEST(Resources, OfOneLanguageAreFoundByAskingForNone) {
    const HMODULE module = AddModule();
    ASSERT_TRUE(RegisterResources(module, kCompiled));
    EXPECT_EQ(DataOf(module, FindResourceExA(module, "OWN", "pic", 0)), "x");
    EXPECT_EQ(DataOf(module, FindResourceExA(module, "OWN", "pic", kEnglish)), "x");
}

TEST(Resources, OfSeveralLanguagesAreChosenByWhatIsAskedFor) {
    const auto english = DialogD(kEnglish, 'e');
    const auto italian = DialogD(kItalian, 'i');
    const auto neutral = DialogD(0, 'n');
    const HMODULE module = AddModule();
    const auto found = [&](WORD language) {
        return DataOf(module, FindResourceExA(module, RT_DIALOG, "D", language));
    };
    ASSERT_TRUE(RegisterResources(module, english));
    EXPECT_EQ(DataOf(module, FindResourceA(module, "D", RT_DIALOG)), "e");
    ASSERT_TRUE(RegisterResources(module, italian));
    EXPECT_EQ(DataOf(module, FindResourceA(module, "D", RT_DIALOG)), "i");
    EXPECT_EQ(found(kEnglish), "e");
    EXPECT_EQ(found(kSwissItalian), "i");
    ASSERT_TRUE(RegisterResources(module, neutral));
    EXPECT_EQ(DataOf(module, FindResourceA(module, "D", RT_DIALOG)), "n");
    EXPECT_EQ(found(0), "n");
    EXPECT_EQ(found(kItalian), "i");
    EXPECT_EQ(found(0x0407), "n"); // German: there is none
}

TEST(Resources, LaterOnesAreFoundFirst) {
    const auto old_bytes = DialogD(0, 'o');
    const auto new_bytes = DialogD(0, 'n');
    const HMODULE module = AddModule();
    ASSERT_TRUE(RegisterResources(module, old_bytes));
    const HRSRC old_one = FindResourceA(module, "D", RT_DIALOG);
    ASSERT_TRUE(RegisterResources(module, new_bytes));
    EXPECT_EQ(DataOf(module, FindResourceA(module, "D", RT_DIALOG)), "n");
    EXPECT_EQ(DataOf(module, old_one), "o");
}

TEST(Resources, BelongToTheirModule) {
    const HMODULE module = AddModule();
    const HMODULE other = AddModule();
    ASSERT_TRUE(RegisterResources(module, kCompiled));
    const HRSRC box = FindResourceA(module, "BOX", RT_DIALOG);
    EXPECT_EQ(FindResourceA(other, "BOX", RT_DIALOG), nullptr);
    EXPECT_EQ(LoadResource(other, box), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(SizeofResource(other, box), 0U);
    EXPECT_EQ(LoadResource(module, nullptr), nullptr);
    EXPECT_EQ(LockResource(nullptr), nullptr);
    int no_module = 0;
    auto* const wrong = reinterpret_cast<HMODULE>(&no_module);
    EXPECT_EQ(FindResourceA(wrong, "BOX", RT_DIALOG), nullptr);
    EXPECT_FALSE(RegisterResources(wrong, kCompiled));
}

TEST(Resources, TheProgramsModuleGoesByItsName) {
    const HMODULE program = GetModuleHandleA(nullptr);
    ASSERT_NE(program, nullptr);
    EXPECT_EQ(GetModuleHandleA(ProgramFile().c_str()), program);
    EXPECT_EQ(GetModuleHandleA("PLATFORM_BASE_TESTS.EXE"), program);
    EXPECT_EQ(GetModuleHandleA("other"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST(DamagedResources, AreRefusedWherePlacesLieOutside) {
    const HMODULE module = AddModule();
    for (std::size_t length = 0; length <= 80; ++length) { // at 81 the last data byte is there
        const auto cut = std::make_unique<std::uint8_t[]>(length); // exact: an overread is seen
        std::copy_n(kCompiled.begin(), length, cut.get());
        EXPECT_FALSE(RegisterResources(module, {cut.get(), length})) << length;
    }
    const struct {
        std::size_t offset;
        std::uint8_t value;
    } kDamage[] = {
        {0, 'X'},   // no mark
        {4, 2},     // another version
        {11, 0x10}, // 268 million entries
        {18, 1},    // a type of more than 16 bits
        {20, 0xFF}, // a text behind the end
        {26, 1},    // a language of more than 16 bits
        {28, 73},   // data that begins at no multiple of 8
        {28, 96},   // data behind the end
        {35, 0x7F}, // data longer than the bytes
        {56, 0xFF}, // a text longer than the bytes
    };
    for (const auto& damage : kDamage) {
        std::vector<std::uint8_t> bytes = kCompiled;
        bytes[damage.offset] = damage.value;
        EXPECT_FALSE(RegisterResources(module, bytes)) << damage.offset;
    }
    EXPECT_EQ(FindResourceA(module, "BOX", RT_DIALOG), nullptr);
}

} // namespace
