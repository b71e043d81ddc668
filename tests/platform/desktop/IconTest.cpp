// Icons and cursors: from resources to the window that shows them; damaged ones are refused.

#include "tests/platform/desktop/CompiledResources.h"
#include "tests/platform/desktop/RecordingWindow.h"

#include <QCursor>
#include <QIcon>
#include <QImage>
#include <QPixmap>

#include <gtest/gtest.h>

using namespace kelvo::desktop;

namespace {

constexpr WORD kCursor = 1;
constexpr WORD kIcon = 3;
constexpr WORD kGroupCursor = 12;
constexpr WORD kGroupIcon = 14;

/// 2 x 2 pixels of 32 bits, bottom row first, then the mask: red, green / blue, transparent.
const std::vector<std::uint8_t> kPicture = {
    40,   0, 0,   0,   2,  0,   0, 0,   4, 0, 0, 0, 1, 0, 32, 0,
    0,    0, 0,   0,   24, 0,   0, 0,                            // header, two heights
    0,    0, 0,   0,   0,  0,   0, 0,   0, 0, 0, 0, 0, 0, 0,  0, // to its 40 bytes
    255,  0, 0,   255, 0,  0,   0, 0,                            // blue, transparent
    0,    0, 255, 255, 0,  255, 0, 255,                          // red, green
    0x40, 0, 0,   0,   0,  0,   0, 0,                            // mask
};

std::vector<std::uint8_t> IconGroup() {
    return {0, 0, 1, 0, 1, 0, 2, 2, 0, 0, 1, 0, 32, 0, static_cast<std::uint8_t>(kPicture.size()),
            0, 0, 0, 7, 0};
}

std::vector<std::uint8_t> CursorGroup() {
    return {
        0, 0, 2, 0, 1, 0, 2, 0, 4, 0, 1, 0, 32, 0, static_cast<std::uint8_t>(kPicture.size() + 4),
        0, 0, 0, 9, 0};
}

std::vector<std::uint8_t> CursorPicture() {
    std::vector<std::uint8_t> bytes = {1, 0, 1, 0}; // the hot spot
    bytes.insert(bytes.end(), kPicture.begin(), kPicture.end());
    return bytes;
}

HMODULE Module() {
    static const HMODULE module = ModuleWith({{kGroupIcon, "PROGRAM", 0, IconGroup()},
                                              {kIcon, "", 7, kPicture},
                                              {kGroupCursor, "CROSS", 0, CursorGroup()},
                                              {kCursor, "", 9, CursorPicture()}});
    return module;
}

} // namespace

TEST(Icons, ReachTheWindowOfTheClass) {
    WNDCLASSA values{};
    values.lpfnWndProc = &RecordingProcedure;
    values.lpszClassName = "WithPictures";
    values.hIcon = ::LoadIconA(Module(), "program");
    values.hCursor = ::LoadCursorA(Module(), "CROSS");
    ASSERT_NE(values.hIcon, nullptr);
    ASSERT_NE(values.hCursor, nullptr);
    ASSERT_NE(::RegisterClassA(&values), 0);
    answer = nullptr;
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW, 100, 100, "WithPictures");
    const QImage icon = WidgetOf(window)->window()->windowIcon().pixmap(2, 2).toImage();
    ASSERT_EQ(icon.size(), QSize(2, 2));
    EXPECT_EQ(icon.pixelColor(0, 0), QColor(255, 0, 0));
    EXPECT_EQ(icon.pixelColor(1, 0), QColor(0, 255, 0));
    EXPECT_EQ(icon.pixelColor(0, 1), QColor(0, 0, 255));
    EXPECT_EQ(icon.pixelColor(1, 1).alpha(), 0);
    const QCursor cursor = WidgetOf(window)->cursor();
    EXPECT_EQ(cursor.hotSpot(), QPoint(1, 1));
    EXPECT_EQ(cursor.pixmap().toImage().pixelColor(0, 0), QColor(255, 0, 0));
    ::DestroyWindow(window);
    ::UnregisterClassA("WithPictures", nullptr);
}

TEST(Icons, AreTheSameHandleEachTimeAndZeroWhenThereIsNone) {
    EXPECT_EQ(::LoadIconA(Module(), "PROGRAM"), ::LoadIconA(Module(), "PROGRAM"));
    EXPECT_NE(::LoadIconA(nullptr, IDI_APPLICATION), nullptr);
    EXPECT_EQ(::LoadIconA(Module(), "NONE"), nullptr);
    EXPECT_EQ(::LoadIconA(Module(), nullptr), nullptr);
    EXPECT_EQ(::LoadCursorA(nullptr, IDC_ARROW), ::LoadCursorA(nullptr, IDC_ARROW));
    EXPECT_EQ(::LoadCursorA(Module(), "NONE"), nullptr);
}

TEST(Icons, AreRefusedWhenTheirGroupIsCutOrNamesNoPicture) {
    for (std::size_t length = 0; length < IconGroup().size(); ++length) {
        std::vector<std::uint8_t> group = IconGroup();
        group.resize(length);
        const HMODULE module =
            ModuleWith({{kGroupIcon, "CUT", 0, group}, {kIcon, "", 7, kPicture}});
        EXPECT_EQ(::LoadIconA(module, "CUT"), nullptr) << length;
    }
    EXPECT_EQ(::LoadIconA(ModuleWith({{kGroupIcon, "LONE", 0, IconGroup()}}), "LONE"), nullptr);
    for (std::size_t length = 0; length < 40; ++length) { // within the picture's header
        std::vector<std::uint8_t> picture = kPicture;
        picture.resize(length);
        const HMODULE module =
            ModuleWith({{kGroupIcon, "DAMAGED", 0, IconGroup()}, {kIcon, "", 7, picture}});
        EXPECT_EQ(::LoadIconA(module, "DAMAGED"), nullptr) << length;
    }
    std::vector<std::uint8_t> cursor = CursorPicture();
    cursor.resize(3);
    const HMODULE module =
        ModuleWith({{kGroupCursor, "SHORT", 0, CursorGroup()}, {kCursor, "", 9, cursor}});
    EXPECT_EQ(::LoadCursorA(module, "SHORT"), nullptr);
}
