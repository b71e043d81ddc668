// Windows from creation to destruction, their sizes, and what is kept with them.

#include "platform/desktop/Surface.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/menus.h"
#include "tests/platform/desktop/RecordingWindow.h"

#include <QTest>
#include <QWindow>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>

using namespace kelvo::desktop;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* kClassWithBytes = "WindowWithBytes";
constexpr int kDialogBytes = 30;

class Windows : public testing::Test {
protected:
    void SetUp() override {
        RegisterTestClass();
        RegisterTestClass(kClassWithBytes, 0, kDialogBytes + int{sizeof(void*)});
        RegisterTestClass("RedWindow", CS_HREDRAW | CS_VREDRAW, 0, red_);
        Pump();
        seen.clear();
        answer = nullptr;
        before_ = CountLiveObjects();
    }
    void TearDown() override {
        answer = nullptr;
        for (const char* name : {kTestClass, kClassWithBytes, "RedWindow"}) {
            EXPECT_TRUE(::UnregisterClassA(name, nullptr)) << "a window of " << name << " is left";
        }
        ::DeleteObject(red_);
        Pump(); // the widgets of dead windows go now
        EXPECT_EQ(CountLiveObjects(), before_);
    }

    LiveCounts before_;
    HBRUSH red_ = ::CreateSolidBrush(RGB(200, 0, 0));
};

using WindowCreation = Windows;
using WindowDestruction = Windows;
using WindowSizes = Windows;
using WindowContents = Windows;
using WindowPainting = Windows;

std::uint32_t PixelOf(HWND window, int x, int y) {
    return SurfaceOf(window)->Snapshot().pixel(x, y) & 0xFFFFFFU;
}

} // namespace

TEST_F(WindowCreation, SendsItsMessagesInOrderBeforeItReturns) {
    int parameter = 0;
    answer = [&](HWND, UINT message, WPARAM, LPARAM lparam) -> std::optional<LRESULT> {
        if (message == WM_NCCREATE || message == WM_CREATE) {
            const auto& created = *reinterpret_cast<const CREATESTRUCTA*>(lparam);
            EXPECT_EQ(created.lpCreateParams, &parameter);
            EXPECT_EQ(created.cx, 300);
            EXPECT_STREQ(created.lpszName, "titolo");
        }
        return std::nullopt;
    };
    const HWND window = ::CreateWindowExA(0, "recordingWINDOW", "titolo", WS_OVERLAPPEDWINDOW, 5, 6,
                                          300, 200, nullptr, nullptr, nullptr, &parameter);
    ASSERT_NE(window, nullptr);
    EXPECT_THAT(MessagesOf(window), ElementsAre(WM_NCCREATE, WM_CREATE, WM_SIZE, WM_MOVE));
    const LPARAM size = SeenOf(window, WM_SIZE).front().lparam;
    EXPECT_EQ(LOWORD(static_cast<DWORD_PTR>(size)), 292);
    EXPECT_EQ(HIWORD(static_cast<DWORD_PTR>(size)), 200 - 8 - 19);
    EXPECT_FALSE(::IsWindowVisible(window));
    ::DestroyWindow(window);
}

TEST_F(WindowCreation, FailsWithoutAClassOrAParentOrWhenTheWindowRefuses) {
    const auto create = [](const char* name, DWORD style, HWND parent) {
        return ::CreateWindowExA(0, name, "", style, 0, 0, 10, 10, parent, nullptr, nullptr,
                                 nullptr);
    };
    EXPECT_EQ(create("no such class", WS_OVERLAPPEDWINDOW, nullptr), nullptr);
    EXPECT_EQ(create(nullptr, WS_OVERLAPPEDWINDOW, nullptr), nullptr);
    EXPECT_EQ(create(kTestClass, WS_CHILD, nullptr), nullptr);
    EXPECT_EQ(create(kTestClass, WS_CHILD, reinterpret_cast<HWND>(UINT_PTR{99})), nullptr);
    EXPECT_THAT(seen, IsEmpty());

    answer = [](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        return message == WM_CREATE ? std::optional<LRESULT>(-1) : std::nullopt;
    };
    EXPECT_EQ(create(kTestClass, WS_OVERLAPPEDWINDOW, nullptr), nullptr);
    EXPECT_THAT(MessagesOf(seen.front().window),
                ElementsAre(WM_NCCREATE, WM_CREATE, WM_DESTROY, WM_NCDESTROY));

    answer = [](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        return message == WM_NCCREATE ? std::optional<LRESULT>(0) : std::nullopt;
    };
    EXPECT_EQ(create(kTestClass, WS_OVERLAPPEDWINDOW, nullptr), nullptr);

    answer = [](HWND window, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_CREATE) ::DestroyWindow(window);
        return std::nullopt;
    };
    EXPECT_EQ(create(kTestClass, WS_OVERLAPPEDWINDOW, nullptr), nullptr);

    std::thread([&] {
        EXPECT_EQ(create(kTestClass, WS_OVERLAPPEDWINDOW, nullptr), nullptr);
    }).join();
}

TEST_F(WindowCreation, RefusesClassesThatCannotWork) {
    WNDCLASSA values{};
    values.lpszClassName = "Strange";
    EXPECT_EQ(::RegisterClassA(&values), 0); // no procedure
    values.lpfnWndProc = &RecordingProcedure;
    values.cbWndExtra = -1;
    EXPECT_EQ(::RegisterClassA(&values), 0);
    values.cbWndExtra = 4;
    EXPECT_NE(::RegisterClassA(&values), 0);
    values.lpszClassName = "STRANGE";
    EXPECT_EQ(::RegisterClassA(&values), 0); // the same name in other letters
    values.lpszClassName = "";
    EXPECT_EQ(::RegisterClassA(&values), 0);
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW, 50, 50, "Strange");
    EXPECT_FALSE(::UnregisterClassA("Strange", nullptr));
    ::DestroyWindow(window);
    EXPECT_TRUE(::UnregisterClassA("Strange", nullptr));
    EXPECT_FALSE(::UnregisterClassA("Strange", nullptr));
}

TEST_F(WindowCreation, LetsTheSystemChooseASizeOnlyWhereItIsAskedTo) {
    const HWND window =
        ::CreateWindowExA(0, kTestClass, "", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                          CW_USEDEFAULT, CW_USEDEFAULT, nullptr, nullptr, nullptr, nullptr);
    EXPECT_GT(ClientSizeOf(window).cx, 100);
    EXPECT_GT(ClientSizeOf(window).cy, 100);
    ::DestroyWindow(window);
    const HWND negative = MakeTopLevel(WS_OVERLAPPEDWINDOW, -5, -7);
    EXPECT_EQ(ClientSizeOf(negative).cx, 0);
    EXPECT_EQ(ClientSizeOf(negative).cy, 0);
    ::DestroyWindow(negative);
}

TEST_F(WindowDestruction, TellsParentsFirstAndBuriesChildrenFirst) {
    const HWND top = MakeTopLevel();
    const HWND child = MakeChild(top, {0, 0, 50, 50});
    const HWND grandchild = MakeChild(child, {0, 0, 20, 20});
    EXPECT_TRUE(::IsChild(top, grandchild));
    EXPECT_FALSE(::IsChild(grandchild, top));
    EXPECT_EQ(::GetParent(grandchild), child);
    EXPECT_EQ(::GetParent(top), nullptr);
    seen.clear();
    EXPECT_TRUE(::DestroyWindow(top));
    std::vector<std::pair<HWND, UINT>> order;
    for (const Seen& each : seen) {
        if (each.message == WM_DESTROY || each.message == WM_NCDESTROY) {
            order.emplace_back(each.window, each.message);
        }
    }
    EXPECT_THAT(order,
                ElementsAre(std::pair(top, WM_DESTROY), std::pair(child, WM_DESTROY),
                            std::pair(grandchild, WM_DESTROY), std::pair(grandchild, WM_NCDESTROY),
                            std::pair(child, WM_NCDESTROY), std::pair(top, WM_NCDESTROY)));
    for (const HWND window : {top, child, grandchild})
        EXPECT_FALSE(::IsWindow(window));
    EXPECT_FALSE(::DestroyWindow(top));
    RECT rect{};
    EXPECT_FALSE(::GetWindowRect(top, &rect));
    EXPECT_FALSE(::PostMessageA(top, WM_USER, 0, 0));
    EXPECT_EQ(::SendMessageA(top, WM_USER, 0, 0), 0);
}

TEST_F(WindowDestruction, IsRefusedToOtherThreadsAndForTheDesktop) {
    const HWND window = MakeTopLevel();
    std::thread([&] { EXPECT_FALSE(::DestroyWindow(window)); }).join();
    EXPECT_TRUE(::IsWindow(window));
    EXPECT_FALSE(::DestroyWindow(::GetDesktopWindow()));
    EXPECT_TRUE(::IsWindow(::GetDesktopWindow()));
    ::DestroyWindow(window);
}

TEST_F(WindowDestruction, DropsWhatWasPostedToTheWindow) {
    const HWND window = MakeTopLevel();
    ::PostMessageA(window, WM_USER, 0, 0);
    ::SetTimer(window, 1, 10, nullptr);
    ::DestroyWindow(window);
    seen.clear();
    Pump();
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(WindowDestruction, FollowsTheCloseButtonThroughTheQueue) {
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    Pump();
    seen.clear();
    WidgetOf(window)->window()->close();
    EXPECT_TRUE(::IsWindow(window)) << "closing is asked for, not done";
    EXPECT_THAT(SeenOf(window, WM_CLOSE), IsEmpty());
    Pump();
    ASSERT_EQ(SeenOf(window, WM_CLOSE).size(), 1U);
    EXPECT_EQ(SeenOf(window, WM_CLOSE).front().lparam, 0);
    EXPECT_FALSE(::IsWindow(window));
}

TEST_F(WindowDestruction, TakesOwnedWindowsAlong) {
    const HWND owner = MakeTopLevel();
    const HWND owned = ::CreateWindowExA(0, kTestClass, "", WS_POPUP | WS_CAPTION, 0, 0, 100, 100,
                                         owner, nullptr, nullptr, nullptr);
    EXPECT_EQ(::GetParent(owned), owner);
    EXPECT_FALSE(::IsChild(owner, owned));
    ::DestroyWindow(owner);
    EXPECT_FALSE(::IsWindow(owned));
}

TEST_F(WindowSizes, FollowTheClassicMetricsWhateverTheWindowManagerDraws) {
    struct Row {
        const char* name;
        DWORD style;
        BOOL menu;
        RECT expected;
    };
    const Row rows[] = {
        {"sizable with caption and menu", WS_OVERLAPPEDWINDOW, TRUE, {-4, -42, 644, 484}},
        {"sizable with caption", WS_OVERLAPPEDWINDOW, FALSE, {-4, -23, 644, 484}},
        {"fixed with caption", WS_POPUP | WS_CAPTION, FALSE, {-3, -22, 643, 483}},
        {"border", WS_POPUP | WS_BORDER, FALSE, {-1, -1, 641, 481}},
        {"plain", WS_POPUP, FALSE, {0, 0, 640, 480}},
    };
    for (const Row& row : rows) {
        RECT rect{0, 0, 640, 480};
        EXPECT_TRUE(::AdjustWindowRectEx(&rect, row.style, row.menu, 0)) << row.name;
        EXPECT_EQ(rect.left, row.expected.left) << row.name;
        EXPECT_EQ(rect.top, row.expected.top) << row.name;
        EXPECT_EQ(rect.right, row.expected.right) << row.name;
        EXPECT_EQ(rect.bottom, row.expected.bottom) << row.name;
    }
}

TEST_F(WindowSizes, ShowAFilmOfAnySizeExactly) {
    const HMENU menu = ::CreateMenu();
    const HMENU file = ::CreatePopupMenu();
    ::AppendMenuA(file, MF_STRING, 1, "Apri");
    ::AppendMenuA(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(file), "&File");
    const HWND window = ::CreateWindowExA(0, kTestClass, "", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0,
                                          300, 200, nullptr, menu, nullptr, nullptr);
    const HWND view = MakeChild(window, {0, 24, 10, 34}, WS_EX_STATICEDGE);
    Pump();
    // The natural size: the frame around the picture and the strip of 24 pixels above it.
    RECT rect{0, 0, 320, 240};
    ::AdjustWindowRectEx(&rect, WS_OVERLAPPEDWINDOW, TRUE, 0);
    ::SetWindowPos(window, nullptr, 0, 0, rect.right - rect.left, rect.bottom - rect.top + 24,
                   SWP_NOZORDER);
    EXPECT_EQ(ClientSizeOf(window).cx, 320);
    EXPECT_EQ(ClientSizeOf(window).cy, 264);
    ::SetWindowPos(view, nullptr, 0, 24, 320, 240, SWP_NOZORDER);
    EXPECT_EQ(ClientSizeOf(view).cx, 320);
    EXPECT_EQ(ClientSizeOf(view).cy, 240);
    EXPECT_EQ(SurfaceOf(view)->Size(), QSize(320, 240));
    EXPECT_EQ(WidgetOf(view)->size(), QSize(320, 240));
    // The fitted size: picture + 10 by + 72.
    ::SetWindowPos(window, nullptr, 0, 0, 320 + 10, 240 + 72, SWP_NOZORDER | SWP_NOMOVE);
    EXPECT_EQ(ClientSizeOf(window).cx, 322);
    EXPECT_EQ(ClientSizeOf(window).cy, 240 + 24 + 2);
    EXPECT_TRUE(PumpUntil([&] { return WidgetOf(window)->size() == QSize(322, 266); }));
    ::DestroyWindow(window);
}

TEST_F(WindowSizes, AreAnnouncedBeforeTheCallReturnsAndOnlyWhereTheyChanged) {
    for (const DWORD visible : {DWORD{0}, WS_VISIBLE}) {
        const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | visible);
        const HWND child = MakeChild(window, {0, 0, 50, 50});
        Pump();
        seen.clear();
        ::SetWindowPos(child, nullptr, 3, 4, 60, 70, SWP_NOZORDER);
        EXPECT_THAT(MessagesOf(child), ElementsAre(WM_MOVE, WM_SIZE));
        EXPECT_EQ(SeenOf(child, WM_SIZE).front().lparam, MAKELPARAM(60, 70));
        EXPECT_EQ(SeenOf(child, WM_MOVE).front().lparam, MAKELPARAM(3, 4));
        seen.clear();
        ::SetWindowPos(child, nullptr, 3, 4, 60, 70, SWP_NOZORDER);
        ::SetWindowPos(child, nullptr, 9, 9, 9, 9, SWP_NOZORDER | SWP_NOMOVE | SWP_NOSIZE);
        EXPECT_THAT(MessagesOf(child), IsEmpty());
        ::SetWindowPos(child, nullptr, 9, 9, 61, 71, SWP_NOZORDER | SWP_NOMOVE);
        EXPECT_THAT(MessagesOf(child), ElementsAre(WM_SIZE));
        ::SetWindowPos(child, nullptr, 9, 9, -3, -4, SWP_NOZORDER | SWP_NOMOVE);
        EXPECT_EQ(ClientSizeOf(child).cx, 0);
        seen.clear();
        Pump();
        EXPECT_THAT(SeenOf(child, WM_SIZE), IsEmpty()) << "the toolkit's echo";
        EXPECT_FALSE(::SetWindowPos(nullptr, nullptr, 0, 0, 1, 1, 0));
        ::DestroyWindow(window);
    }
}

TEST_F(WindowSizes, FollowThePersonWhoDragsTheFrame) {
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    Pump();
    for (int i = 0; i < 200; ++i)
        WidgetOf(window)->window()->resize(300 + i, 200 + i % 7);
    ASSERT_TRUE(PumpUntil([&] { return ClientSizeOf(window).cx == 499; }));
    EXPECT_EQ(SurfaceOf(window)->Size(), QSize(499, 200 + 199 % 7));
    RECT rect{};
    ::GetWindowRect(window, &rect);
    EXPECT_EQ(rect.right - rect.left, 499 + 8);
    EXPECT_EQ(SeenOf(window, WM_SIZE).back().lparam, MAKELPARAM(499, 203));
    ::DestroyWindow(window);
}

TEST_F(WindowSizes, ComeOutOfAStormOfCallsExact) {
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    for (int i = 0; i < 200; ++i) {
        ::SetWindowPos(window, nullptr, 0, 0, 200 + (i * 37) % 300, 150 + (i * 53) % 300,
                       SWP_NOZORDER);
        if (i % 10 == 0) Pump();
    }
    ::SetWindowPos(window, nullptr, 0, 0, 348, 287, SWP_NOZORDER);
    ASSERT_TRUE(PumpUntil([&] {
        return WidgetOf(window)->size() == QSize(340, 260) && ClientSizeOf(window).cx == 340;
    }));
    EXPECT_EQ(SurfaceOf(window)->Size(), QSize(340, 260));
    ::DestroyWindow(window);
}

TEST_F(WindowSizes, AreOnTheScreenWhereThePointsSay) {
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    const HWND child = MakeChild(window, {7, 9, 57, 59});
    Pump();
    POINT point{1, 2};
    EXPECT_TRUE(::ClientToScreen(child, &point));
    const QPoint global = WidgetOf(child)->mapToGlobal(QPoint(1, 2));
    EXPECT_EQ(point.x, global.x());
    EXPECT_EQ(point.y, global.y());
    RECT rect{};
    ::GetWindowRect(child, &rect);
    POINT corner{rect.left, rect.top};
    EXPECT_TRUE(::ScreenToClient(window, &corner));
    EXPECT_EQ(corner.x, 7);
    EXPECT_EQ(corner.y, 9);
    EXPECT_FALSE(::ScreenToClient(nullptr, &corner));
    ::DestroyWindow(window);
}

TEST_F(WindowSizes, KeepTheWindowOnTopWithoutHidingIt) {
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    Pump();
    QWidget* const frame = WidgetOf(window)->window();
    ::SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    EXPECT_TRUE(frame->isVisible());
    EXPECT_TRUE(frame->windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_NE(::GetWindowLongPtrA(window, GWL_EXSTYLE) & WS_EX_TOPMOST, 0);
    ::SetWindowPos(window, HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    EXPECT_TRUE(frame->isVisible());
    EXPECT_FALSE(frame->windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint));
    ::DestroyWindow(window);
}

TEST_F(WindowSizes, StackSiblings) {
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    const HWND below = MakeChild(window, {0, 0, 50, 50});
    const HWND above = MakeChild(window, {0, 0, 50, 50});
    const auto top_at = [&] { return WidgetOf(window)->childAt(10, 10); };
    EXPECT_EQ(top_at(), WidgetOf(above));
    ::SetWindowPos(below, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    EXPECT_EQ(top_at(), WidgetOf(below));
    ::SetWindowPos(below, above, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    EXPECT_EQ(top_at(), WidgetOf(above));
    EXPECT_FALSE(::SetWindowPos(below, window, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE));
    ::DestroyWindow(window);
}

TEST_F(WindowContents, KeepPointersAtAnyOffset) {
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW, 50, 50, kClassWithBytes);
    constexpr LONG_PTR kFirst = 0x1122334455667788;
    EXPECT_EQ(::SetWindowLongPtrA(window, 0, kFirst), 0);
    EXPECT_EQ(::SetWindowLongPtrA(window, kDialogBytes, -2), 0);
    EXPECT_EQ(::GetWindowLongPtrA(window, 0), kFirst);
    EXPECT_EQ(::GetWindowLongPtrA(window, kDialogBytes), -2);
    EXPECT_EQ(::SetWindowLongPtrA(window, kDialogBytes, 5), -2);
    EXPECT_EQ(::SetWindowLongPtrA(window, kDialogBytes + 1, 7), 0); // reaches beyond the bytes
    EXPECT_EQ(::GetWindowLongPtrA(window, kDialogBytes + 1), 0);
    EXPECT_EQ(::GetWindowLongPtrA(window, kDialogBytes), 5);
    EXPECT_EQ(::GetWindowLongPtrA(window, -100), 0);
    ::DestroyWindow(window);
    EXPECT_EQ(::GetWindowLongPtrA(window, 0), 0);
}

TEST_F(WindowContents, KeepStyleAndProcedure) {
    const HWND window = MakeTopLevel();
    EXPECT_EQ(static_cast<DWORD>(::GetWindowLongPtrA(window, GWL_STYLE)), WS_OVERLAPPEDWINDOW);
    ::SetWindowLongPtrA(window, GWL_STYLE, WS_OVERLAPPEDWINDOW | WS_DISABLED);
    EXPECT_NE(::GetWindowLongPtrA(window, GWL_STYLE) & WS_DISABLED, 0);
    static WNDPROC before = nullptr;
    static int calls = 0;
    const WNDPROC other = [](HWND w, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        ++calls;
        return message == WM_USER ? 42 : ::CallWindowProcA(before, w, message, wparam, lparam);
    };
    before = reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(other)));
    EXPECT_EQ(before, &RecordingProcedure);
    EXPECT_EQ(::SendMessageA(window, WM_USER, 0, 0), 42);
    seen.clear();
    ::SetWindowTextA(window, "through both");
    EXPECT_EQ(SeenOf(window, WM_SETTEXT).size(), 1U);
    EXPECT_GE(calls, 2);
    ::SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(before));
    ::DestroyWindow(window);
}

TEST_F(WindowContents, ShowTheTitleToTheLetter) {
    const HWND window = MakeTopLevel();
    for (const char* title : {"Kelvo - perché no", "a[*]b", "", "100% & <b>più</b>"}) {
        EXPECT_TRUE(::SetWindowTextA(window, title));
        char text[64];
        EXPECT_EQ(::GetWindowTextA(window, text, sizeof text),
                  static_cast<int>(std::strlen(title)));
        EXPECT_STREQ(text, title);
        EXPECT_EQ(::SendMessageA(window, WM_GETTEXTLENGTH, 0, 0),
                  static_cast<LRESULT>(std::strlen(title)));
        const QString shown = WidgetOf(window)->window()->windowHandle()->title();
        EXPECT_EQ(shown.toStdString(), title);
    }
    ::SetWindowTextA(window, "cut here");
    char small[4];
    EXPECT_EQ(::GetWindowTextA(window, small, sizeof small), 3);
    EXPECT_STREQ(small, "cut");
    std::thread([&] { EXPECT_FALSE(::SetWindowTextA(nullptr, "x")); }).join();
    ::DestroyWindow(window);
}

TEST_F(WindowContents, KeepProperties) {
    const HWND window = MakeTopLevel();
    int value = 0;
    EXPECT_EQ(::GetPropA(window, "OBJECT"), nullptr);
    EXPECT_TRUE(::SetPropA(window, "OBJECT", &value));
    EXPECT_EQ(::GetPropA(window, "OBJECT"), &value);
    EXPECT_EQ(::RemovePropA(window, "OBJECT"), &value);
    EXPECT_EQ(::RemovePropA(window, "OBJECT"), nullptr);
    ::SetPropA(window, "OBJECT", &value);
    ::DestroyWindow(window);
    EXPECT_EQ(::GetPropA(window, "OBJECT"), nullptr);
    EXPECT_FALSE(::SetPropA(window, "OBJECT", &value));
}

TEST_F(WindowPainting, ComesAfterPostedMessagesAndFillsWithTheClassBrush) {
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE, 108, 127, "RedWindow");
    ::PostMessageA(window, WM_USER, 0, 0);
    seen.clear();
    Pump();
    const auto messages = MessagesOf(window);
    const auto posted = std::ranges::find(messages, WM_USER);
    const auto painted = std::ranges::find(messages, WM_PAINT);
    ASSERT_NE(painted, messages.end());
    EXPECT_LT(posted, painted);
    EXPECT_EQ(std::ranges::count(messages, WM_PAINT), 1);
    EXPECT_EQ(std::ranges::count(messages, WM_ERASEBKGND), 1);
    EXPECT_EQ(PixelOf(window, 50, 50), 0xC80000U);
    ASSERT_TRUE(PumpUntil([&] {
        return (WidgetOf(window)->grab().toImage().pixel(50, 50) & 0xFFFFFFU) == 0xC80000U;
    }));
    ::DestroyWindow(window);
}

TEST_F(WindowPainting, IsAskedForByInvalidationAndResizeButNotByTheScreen) {
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE, 108, 127, "RedWindow");
    Pump();
    seen.clear();
    WidgetOf(window)->repaint(); // as an expose does
    Pump();
    EXPECT_THAT(SeenOf(window, WM_PAINT), IsEmpty());
    const RECT part{5, 5, 10, 10};
    EXPECT_TRUE(::InvalidateRect(window, &part, FALSE));
    EXPECT_TRUE(::InvalidateRect(window, nullptr, FALSE));
    Pump();
    EXPECT_EQ(SeenOf(window, WM_PAINT).size(), 1U);
    EXPECT_THAT(SeenOf(window, WM_ERASEBKGND), IsEmpty());
    ::SetWindowPos(window, nullptr, 0, 0, 200, 200, SWP_NOMOVE | SWP_NOZORDER);
    Pump();
    EXPECT_EQ(SeenOf(window, WM_PAINT).size(), 2U);
    ::InvalidateRect(window, nullptr, TRUE);
    seen.clear();
    EXPECT_TRUE(::UpdateWindow(window));
    EXPECT_EQ(MessagesOf(window).front(), WM_PAINT);
    EXPECT_TRUE(::UpdateWindow(window));
    EXPECT_EQ(SeenOf(window, WM_PAINT).size(), 1U) << "nothing was left to paint";
    ::ShowWindow(window, SW_HIDE);
    ::InvalidateRect(window, nullptr, TRUE);
    seen.clear();
    Pump();
    EXPECT_THAT(SeenOf(window, WM_PAINT), IsEmpty()) << "hidden windows are not painted";
    std::thread([&] { EXPECT_TRUE(::InvalidateRect(window, nullptr, TRUE)); }).join();
    EXPECT_FALSE(::ShowWindow(window, SW_SHOW));
    Pump();
    EXPECT_EQ(SeenOf(window, WM_PAINT).size(), 1U);
    ::DestroyWindow(window);
    EXPECT_FALSE(::InvalidateRect(window, nullptr, TRUE));
}

TEST_F(WindowPainting, DrawsTheSunkenEdgeAroundTheChild) {
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE, 208, 227, "RedWindow");
    const HWND child = MakeChild(window, {20, 20, 60, 60}, WS_EX_STATICEDGE);
    Pump();
    const QImage shown = WidgetOf(window)->grab().toImage();
    const auto differs = [&](int x, int y) { return (shown.pixel(x, y) & 0xFFFFFFU) != 0xC80000U; };
    EXPECT_TRUE(differs(19, 30));
    EXPECT_TRUE(differs(60, 30));
    EXPECT_TRUE(differs(30, 19));
    EXPECT_TRUE(differs(30, 60));
    EXPECT_FALSE(differs(18, 30));
    EXPECT_FALSE(differs(61, 30));
    EXPECT_EQ(ClientSizeOf(child).cx, 40);
    ::DestroyWindow(window);
}

TEST_F(WindowPainting, BringsWhatAThreadDrawsToTheScreenWhileTheLoopWaits) {
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE, 108, 127, "RedWindow");
    Pump();
    std::thread drawing([&] {
        const HDC dc = ::GetDC(window);
        const RECT all{0, 0, 100, 100};
        const HBRUSH blue = ::CreateSolidBrush(RGB(0, 0, 200));
        ::FillRect(dc, &all, blue);
        ::DeleteObject(blue);
        ::ReleaseDC(window, dc);
    });
    EXPECT_TRUE(PumpUntil([&] {
        const QWidget* frame = WidgetOf(window)->window();
        const QImage shown = const_cast<QWidget*>(frame)->grab().toImage();
        return (shown.pixel(50, 50) & 0xFFFFFFU) == 0x0000C8U;
    }));
    drawing.join();
    ::DestroyWindow(window);
}
