// Frames that the layer draws itself, windows that lie on the screen without one, and what a press
// outside of a client area tells.

#include "platform/desktop/menus.h"
#include "tests/platform/desktop/RecordingWindow.h"

#include <QMenuBar>
#include <QTest>

#include <gtest/gtest.h>

using namespace kelvo::desktop;

namespace {

class WindowFrames : public testing::Test {
protected:
    void SetUp() override {
        RegisterTestClass();
        answer = nullptr;
        parent_ = MakeTopLevel(WS_POPUP | WS_VISIBLE, 300, 200);
        Pump();
        seen.clear();
    }
    void TearDown() override {
        answer = nullptr;
        ::DestroyWindow(parent_);
        ::UnregisterClassA(kTestClass, nullptr);
        Pump();
    }
    static HWND Make(DWORD extended_style, DWORD style, HWND parent, const RECT& place) {
        return ::CreateWindowExA(extended_style, kTestClass, "", style, place.left, place.top,
                                 place.right - place.left, place.bottom - place.top, parent,
                                 nullptr, nullptr, nullptr);
    }

    HWND parent_ = nullptr;
};

TEST_F(WindowFrames, SurroundAChildWithASizingFrameAndTellItsPresses) {
    const HWND child = Make(0, WS_CHILD | WS_VISIBLE | WS_THICKFRAME, parent_, {50, 40, 150, 120});
    Pump();
    const SIZE client = ClientSizeOf(child);
    EXPECT_EQ(client.cx, 92);
    EXPECT_EQ(client.cy, 72);
    EXPECT_EQ(WidgetOf(child)->pos(), QPoint(54, 44));
    const std::vector<Seen> moves = SeenOf(child, WM_MOVE);
    ASSERT_FALSE(moves.empty());
    EXPECT_EQ(moves.back().lparam, MAKELPARAM(54, 44));
    struct Press {
        QPoint at;
        Qt::MouseButton button;
        UINT message;
        WPARAM part;
    };
    answer = [](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_NCLBUTTONDOWN) return 0; // no sizing here
        return std::nullopt;
    };
    for (const Press& press : {Press{{51, 80}, Qt::LeftButton, WM_NCLBUTTONDOWN, HTLEFT},
                               Press{{149, 118}, Qt::RightButton, WM_NCRBUTTONDOWN, HTBOTTOMRIGHT},
                               Press{{100, 41}, Qt::MiddleButton, WM_NCMBUTTONDOWN, HTTOP}}) {
        seen.clear();
        QTest::mousePress(WidgetOf(parent_), press.button, {}, press.at);
        Pump();
        const std::vector<Seen> told = SeenOf(child, press.message);
        ASSERT_EQ(told.size(), 1U);
        EXPECT_EQ(told[0].wparam, press.part);
        EXPECT_EQ(SeenOf(parent_, WM_LBUTTONDOWN).size(), 0U);
        QTest::mouseRelease(WidgetOf(parent_), press.button, {}, press.at);
        Pump();
    }
    seen.clear();
    QTest::mouseClick(WidgetOf(parent_), Qt::LeftButton, {}, {30, 30});
    Pump();
    EXPECT_EQ(SeenOf(parent_, WM_LBUTTONDOWN).size(), 1U);
}

TEST_F(WindowFrames, LeaveAToolWindowExactlyWhereItIsPut) {
    const HWND desktop_child = Make(WS_EX_TOOLWINDOW, WS_CHILD | WS_VISIBLE | WS_BORDER,
                                    ::GetDesktopWindow(), {200, 220, 300, 236});
    const HWND popup = Make(WS_EX_TOOLWINDOW, WS_POPUP | WS_VISIBLE, parent_, {210, 230, 250, 300});
    ASSERT_NE(desktop_child, nullptr);
    Pump();
    RECT rect{};
    ::GetWindowRect(desktop_child, &rect);
    EXPECT_EQ(rect.left, 200);
    EXPECT_EQ(rect.bottom, 236);
    EXPECT_EQ(ClientSizeOf(desktop_child).cx, 98); // its border is drawn
    EXPECT_EQ(WidgetOf(desktop_child)->mapToGlobal(QPoint(0, 0)), QPoint(201, 221));
    EXPECT_EQ(WidgetOf(popup)->mapToGlobal(QPoint(0, 0)), QPoint(210, 230));
    EXPECT_EQ(::GetParent(desktop_child), nullptr);
    EXPECT_EQ(::GetParent(popup), parent_);
    EXPECT_EQ(::IsChild(parent_, popup), FALSE);
    ::DestroyWindow(desktop_child);
}

TEST_F(WindowFrames, TellThatAMenuBarIsPressed) {
    const HMENU menu = ::CreateMenu();
    ::AppendMenuA(menu, MF_STRING, 101, "Apri");
    ::SetMenu(parent_, menu);
    Pump();
    seen.clear();
    auto* const bar = WidgetOf(parent_)->window()->findChild<QMenuBar*>();
    QTest::mousePress(bar, Qt::LeftButton, {}, {bar->width() - 5, 5});
    QTest::mouseRelease(bar, Qt::LeftButton, {}, {bar->width() - 5, 5});
    Pump();
    ASSERT_EQ(SeenOf(parent_, WM_NCLBUTTONDOWN).size(), 1U);
    EXPECT_EQ(SeenOf(parent_, WM_NCLBUTTONDOWN)[0].wparam, HTMENU);
}

TEST_F(WindowFrames, LetMoveWindowAndShowWindowFlagDoTheirWork) {
    const HWND child = Make(0, WS_CHILD, parent_, {0, 0, 20, 20});
    EXPECT_NE(::SetWindowPos(child, HWND_BOTTOM, 5, 6, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW), FALSE);
    EXPECT_NE(::IsWindowVisible(child), FALSE);
    seen.clear();
    EXPECT_NE(::MoveWindow(child, 30, 40, 50, 60, TRUE), FALSE);
    EXPECT_EQ(SeenOf(child, WM_PAINT).size(), 1U); // at once
    EXPECT_EQ(ClientSizeOf(child).cx, 50);
    EXPECT_EQ(WidgetOf(child)->pos(), QPoint(30, 40));
    EXPECT_EQ(::MoveWindow(nullptr, 0, 0, 1, 1, TRUE), FALSE);
    EXPECT_EQ(::GetCursorPos(nullptr), FALSE);
}

TEST_F(WindowFrames, LetAWindowDestroyItsChildrenWhileItIsDestroyed) {
    const HWND child = MakeChild(parent_, {0, 0, 10, 10});
    const HWND other = MakeChild(parent_, {20, 0, 30, 10});
    BOOL destroyed = FALSE;
    BOOL again = TRUE;
    answer = [&](HWND window, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (window == parent_ && message == WM_DESTROY) {
            destroyed = ::DestroyWindow(child);
            again = ::DestroyWindow(parent_);
        }
        return std::nullopt;
    };
    EXPECT_NE(::DestroyWindow(parent_), FALSE);
    EXPECT_NE(destroyed, FALSE);
    EXPECT_EQ(again, FALSE);
    EXPECT_EQ(SeenOf(child, WM_DESTROY).size(), 1U);
    EXPECT_EQ(SeenOf(child, WM_NCDESTROY).size(), 1U);
    EXPECT_EQ(SeenOf(other, WM_DESTROY).size(), 1U);
    EXPECT_EQ(SeenOf(parent_, WM_NCDESTROY).size(), 1U);
}

} // namespace
