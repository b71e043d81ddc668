// Menus: built, changed, shown in the window's bar, chosen.

#include "platform/desktop/menus.h"
#include "tests/platform/desktop/CompiledResources.h"
#include "tests/platform/desktop/RecordingWindow.h"

#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using namespace kelvo::desktop;
using testing::ElementsAre;

namespace {

constexpr UINT kNone = 0xFFFFFFFF;

class Menus : public testing::Test {
protected:
    void SetUp() override {
        RegisterTestClass();
        answer = nullptr;
        Pump();
        before_ = CountLiveObjects();
        menu_ = ::CreateMenu();
        file_ = ::CreatePopupMenu();
        ASSERT_TRUE(::AppendMenuA(file_, MF_STRING, 101, "Apri..."));
        ASSERT_TRUE(::AppendMenuA(file_, MF_STRING | MF_GRAYED, 102, "Chiudi"));
        ASSERT_TRUE(::AppendMenuA(file_, MF_SEPARATOR, 0, nullptr));
        ASSERT_TRUE(::AppendMenuA(file_, MF_STRING, 10005, "Esci"));
        ASSERT_TRUE(::AppendMenuA(menu_, MF_POPUP, reinterpret_cast<UINT_PTR>(file_), "&File"));
        window_ = ::CreateWindowExA(0, kTestClass, "", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 400,
                                    300, nullptr, menu_, nullptr, nullptr);
        Pump();
        seen.clear();
    }
    void TearDown() override {
        ::DestroyWindow(window_);
        ::DestroyMenu(menu_);
        ::UnregisterClassA(kTestClass, nullptr);
        Pump(); // the widgets of dead windows go now
        EXPECT_EQ(CountLiveObjects(), before_);
    }
    QMenuBar* Bar() const { return WidgetOf(window_)->window()->findChild<QMenuBar*>(); }
    QMenu* Popup(int position) const { return Bar()->actions().at(position)->menu(); }
    std::vector<std::string> Shown() const {
        std::vector<std::string> texts;
        for (const QAction* action : Popup(0)->actions()) {
            texts.push_back(action->isSeparator() ? "-" : action->text().toStdString());
        }
        return texts;
    }
    std::vector<WPARAM> Commands() const {
        std::vector<WPARAM> commands;
        for (const Seen& each : SeenOf(window_, WM_COMMAND))
            commands.push_back(each.wparam);
        return commands;
    }

    LiveCounts before_;
    HMENU menu_ = nullptr;
    HMENU file_ = nullptr;
    HWND window_ = nullptr;
};

std::string TextOf(HMENU menu, UINT item, UINT flags) {
    char text[64] = "";
    ::GetMenuStringA(menu, item, text, sizeof text, flags);
    return text;
}

/// "&Fì" with a checked item, a separator and a submenu of a grey item; behind it "Esci".
const std::vector<std::uint8_t> kMenuResource = {
    0,    0, 0,    0,                           // version, header size
    0x10, 0, '&',  0,    'F', 0, 0xEC, 0, 0, 0, // a submenu
    0x08, 0, 0xE9, 0x03, 'A', 0, 0,    0,       // 1001, checked
    0x00, 0, 0,    0,    0,   0,                // a separator
    0x90, 0, 'S',  0,    0,   0,                // the last: a submenu
    0x81, 0, 7,    0,    'B', 0, 0,    0,       // its last, grey
    0x80, 0, 0x15, 0x27, 'E', 0, 0,    0,       // the last, 10005
};

} // namespace

TEST_F(Menus, PostTheChosenCommandToTheWindow) {
    Popup(0)->actions().at(0)->trigger();
    EXPECT_THAT(Commands(), testing::IsEmpty()) << "it is posted";
    Pump();
    EXPECT_THAT(Commands(), ElementsAre(101U));
    EXPECT_EQ(SeenOf(window_, WM_COMMAND).front().lparam, 0);
}

TEST_F(Menus, AreDrivenByTheMouseWhileTheLoopRuns) {
    const QRect title = Bar()->actionGeometry(Bar()->actions().at(0));
    QTest::mouseClick(Bar(), Qt::LeftButton, {}, title.center());
    ASSERT_TRUE(PumpUntil([&] { return Popup(0)->isVisible(); }));
    ::PostMessageA(window_, WM_USER, 0, 0);
    Pump();
    EXPECT_EQ(SeenOf(window_, WM_USER).size(), 1U) << "the queue runs while the menu is open";
    const QRect leave = Popup(0)->actionGeometry(Popup(0)->actions().at(3));
    QTest::mouseClick(Popup(0), Qt::LeftButton, {}, leave.center());
    Pump();
    EXPECT_THAT(Commands(), ElementsAre(10005U));
    EXPECT_FALSE(Popup(0)->isVisible());
}

TEST_F(Menus, AreDrivenByTheKeyboard) {
    ASSERT_TRUE(QTest::qWaitForWindowActive(WidgetOf(window_)->window()));
    QTest::keyClick(WidgetOf(window_)->window(), Qt::Key_F, Qt::AltModifier);
    ASSERT_TRUE(PumpUntil([&] { return Popup(0)->isVisible(); }));
    QTest::keyClick(Popup(0), Qt::Key_Up);
    QTest::keyClick(Popup(0), Qt::Key_Return);
    Pump();
    EXPECT_THAT(Commands(), ElementsAre(10005U));
}

TEST_F(Menus, ShowItemsThatComeAndGo) {
    EXPECT_THAT(Shown(), ElementsAre("Apri...", "Chiudi", "-", "Esci"));
    EXPECT_TRUE(::InsertMenuA(menu_, 10005, MF_BYCOMMAND | MF_STRING, 20000, "film"));
    EXPECT_TRUE(::InsertMenuA(file_, 0, MF_BYPOSITION | MF_STRING, 7, "primo"));
    EXPECT_TRUE(::InsertMenuA(file_, kNone, MF_BYPOSITION | MF_STRING, 8, "ultimo"));
    EXPECT_THAT(Shown(), ElementsAre("primo", "Apri...", "Chiudi", "-", "film", "Esci", "ultimo"));
    EXPECT_FALSE(::InsertMenuA(menu_, 999, MF_BYCOMMAND | MF_STRING, 9, "?"));
    EXPECT_TRUE(::DeleteMenu(menu_, 20000, MF_BYCOMMAND));
    EXPECT_FALSE(::DeleteMenu(menu_, 20000, MF_BYCOMMAND));
    EXPECT_TRUE(::RemoveMenu(file_, 0, MF_BYPOSITION));
    EXPECT_FALSE(::RemoveMenu(file_, 17, MF_BYPOSITION));
    EXPECT_THAT(Shown(), ElementsAre("Apri...", "Chiudi", "-", "Esci", "ultimo"));
    EXPECT_EQ(::GetMenuItemCount(file_), 5);
    EXPECT_EQ(::GetMenuItemID(file_, 1), 102U);
    EXPECT_EQ(::GetMenuItemID(file_, -1), kNone);
    EXPECT_EQ(::GetMenuItemID(menu_, 0), kNone) << "a submenu has no number";
    EXPECT_EQ(::GetSubMenu(menu_, 0), file_);
    EXPECT_EQ(::GetSubMenu(file_, 0), nullptr);
}

TEST_F(Menus, MarkAndGreyItems) {
    EXPECT_EQ(::CheckMenuItem(menu_, 101, MF_BYCOMMAND | MF_CHECKED), MF_UNCHECKED);
    EXPECT_TRUE(Popup(0)->actions().at(0)->isChecked());
    EXPECT_EQ(::GetMenuState(menu_, 101, MF_BYCOMMAND), MF_CHECKED);
    Popup(0)->actions().at(0)->trigger();
    Pump();
    EXPECT_TRUE(Popup(0)->actions().at(0)->isChecked()) << "only the program changes marks";
    EXPECT_EQ(::CheckMenuItem(menu_, 101, MF_BYCOMMAND | MF_UNCHECKED), MF_CHECKED);
    EXPECT_FALSE(Popup(0)->actions().at(0)->isChecked());
    EXPECT_EQ(::CheckMenuItem(menu_, 999, MF_BYCOMMAND | MF_CHECKED), kNone);

    EXPECT_FALSE(Popup(0)->actions().at(1)->isEnabled());
    EXPECT_EQ(::EnableMenuItem(menu_, 102, MF_BYCOMMAND | MF_ENABLED),
              static_cast<BOOL>(MF_GRAYED));
    EXPECT_TRUE(Popup(0)->actions().at(1)->isEnabled());
    EXPECT_EQ(::EnableMenuItem(file_, 1, MF_BYPOSITION | MF_GRAYED), static_cast<BOOL>(MF_ENABLED));
    Popup(0)->actions().at(1)->trigger();
    Pump();
    EXPECT_THAT(Commands(), ElementsAre(101U)) << "a grey item cannot be chosen";
    EXPECT_EQ(::EnableMenuItem(menu_, 999, MF_BYCOMMAND | MF_GRAYED), -1);
    EXPECT_EQ(::GetMenuState(menu_, 0, MF_BYPOSITION), MF_POPUP | (4U << 8U));
}

TEST_F(Menus, GiveTheirTexts) {
    EXPECT_EQ(TextOf(menu_, 10005, MF_BYCOMMAND), "Esci");
    EXPECT_EQ(TextOf(menu_, 0, MF_BYPOSITION), "&File");
    EXPECT_EQ(::GetMenuStringA(menu_, 101, nullptr, 0, MF_BYCOMMAND), 7);
    char small[4];
    EXPECT_EQ(::GetMenuStringA(menu_, 101, small, sizeof small, MF_BYCOMMAND), 3);
    EXPECT_STREQ(small, "Apr");
    EXPECT_EQ(::GetMenuStringA(menu_, 999, small, sizeof small, MF_BYCOMMAND), 0);
}

TEST_F(Menus, TakeTheirRoomFromTheWindowNotFromItsSize) {
    const SIZE with_menu = ClientSizeOf(window_);
    EXPECT_EQ(::GetMenu(window_), menu_);
    EXPECT_TRUE(::DrawMenuBar(window_));
    EXPECT_TRUE(::SetMenu(window_, nullptr));
    EXPECT_EQ(ClientSizeOf(window_).cy, with_menu.cy + 19);
    EXPECT_EQ(SeenOf(window_, WM_SIZE).size(), 1U);
    EXPECT_FALSE(Bar()->isVisible());
    EXPECT_FALSE(::DrawMenuBar(window_));
    EXPECT_TRUE(::SetMenu(window_, menu_));
    EXPECT_EQ(ClientSizeOf(window_).cy, with_menu.cy);
    EXPECT_TRUE(PumpUntil([&] { return WidgetOf(window_)->height() == with_menu.cy; }));
    EXPECT_EQ(WidgetOf(window_)->y(), Bar()->height());
    EXPECT_FALSE(::SetMenu(MakeChild(window_, {0, 0, 5, 5}), menu_));
    EXPECT_FALSE(::SetMenu(window_, file_)) << "a submenu is no bar";
}

TEST_F(Menus, AreNeverInTwoPlacesNorInThemselves) {
    const HMENU other = ::CreatePopupMenu();
    EXPECT_FALSE(::AppendMenuA(other, MF_POPUP, reinterpret_cast<UINT_PTR>(file_), "again"));
    EXPECT_FALSE(::AppendMenuA(other, MF_POPUP, reinterpret_cast<UINT_PTR>(other), "self"));
    EXPECT_FALSE(::AppendMenuA(file_, MF_POPUP, reinterpret_cast<UINT_PTR>(menu_), "round"));
    EXPECT_TRUE(::AppendMenuA(file_, MF_POPUP, reinterpret_cast<UINT_PTR>(other), "sub"));
    EXPECT_TRUE(::AppendMenuA(other, MF_STRING, 55, "deep"));
    Popup(0)->actions().back()->menu()->actions().at(0)->trigger();
    Pump();
    EXPECT_THAT(Commands(), ElementsAre(55U));
    EXPECT_TRUE(::DestroyMenu(other));
    EXPECT_FALSE(::DestroyMenu(other));
    EXPECT_EQ(::GetMenuItemCount(file_), 4) << "it has left its place";
    EXPECT_EQ(::GetMenuItemCount(other), -1);
}

TEST_F(Menus, GoWithTheirWindow) {
    ::DestroyWindow(window_);
    EXPECT_EQ(::GetMenuItemCount(menu_), -1);
    EXPECT_EQ(::GetMenuItemCount(file_), -1);
}

TEST_F(Menus, AreReadFromResources) {
    const HMODULE module = ModuleWith({{4, "MENUTEST", 0, kMenuResource}});
    ASSERT_NE(module, nullptr);
    const HMENU menu = ::LoadMenuA(module, "MenuTest");
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(::GetMenuItemCount(menu), 2);
    EXPECT_EQ(TextOf(menu, 0, MF_BYPOSITION), "&Fì");
    EXPECT_EQ(TextOf(menu, 10005, MF_BYCOMMAND), "E");
    const HMENU first = ::GetSubMenu(menu, 0);
    EXPECT_EQ(::GetMenuItemCount(first), 3);
    EXPECT_EQ(::GetMenuState(first, 1001, MF_BYCOMMAND), MF_CHECKED);
    EXPECT_EQ(::GetMenuState(first, 1, MF_BYPOSITION), MF_SEPARATOR);
    EXPECT_EQ(::GetMenuState(menu, 7, MF_BYCOMMAND), MF_GRAYED);
    EXPECT_TRUE(::DestroyMenu(menu));
    EXPECT_EQ(::LoadMenuA(module, "NONE"), nullptr);
}

TEST_F(Menus, AreRefusedWhereverTheirResourceIsCut) {
    const int menus = CountLiveObjects().menus;
    for (std::size_t length = 0; length < kMenuResource.size(); ++length) {
        const std::vector<std::uint8_t> cut(
            kMenuResource.begin(), kMenuResource.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(::LoadMenuA(ModuleWith({{4, "CUT", 0, cut}}), "CUT"), nullptr) << length;
    }
    // Submenus without end, and a version that nobody knows.
    std::vector<std::uint8_t> deep = {0, 0, 0, 0};
    for (int i = 0; i < 5000; ++i)
        deep.insert(deep.end(), {0x10, 0, 'x', 0, 0, 0});
    EXPECT_EQ(::LoadMenuA(ModuleWith({{4, "DEEP", 0, deep}}), "DEEP"), nullptr);
    std::vector<std::uint8_t> other = kMenuResource;
    other[0] = 1;
    EXPECT_EQ(::LoadMenuA(ModuleWith({{4, "OTHER", 0, other}}), "OTHER"), nullptr);
    EXPECT_EQ(CountLiveObjects().menus, menus);
}
