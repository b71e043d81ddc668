#pragma once
// A window with a tool window in it, pictures that are known pixel by pixel, and a hand on the
// mouse.

#include "framework/window/tools/CLittleWin.h"
#include "framework/window/tools/ToolWinlum.h"
#include "platform/desktop/Window.h"
#include "tests/framework/window/WindowFixture.h"
#include "tests/platform/desktop/CompiledResources.h"

#include <QApplication>
#include <QCursor>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <string>
#include <vector>

namespace kelvo {

/// What showed itself before the framework was started, and before the classes could be registered.
struct EarlyBoxes {
    std::vector<platform::MessageBoxRequest> hint_class;
    std::vector<platform::MessageBoxRequest> hint_before_kernel;
    std::vector<platform::MessageBoxRequest> menu_class;
};
EarlyBoxes& Early();

/// "Picture" is 3 x 2, its pixels 0x000001 to 0x000006 from the top left; "Square" is 16 x 16 in
/// one colour; "Other" is 3 x 2 in another.
inline constexpr COLORREF kSquareColour = 0x112233;

inline void Click(HWND window, QPoint at = {3, 3}) {
    QWidget* const widget = desktop::WidgetOf(window);
    QTest::mouseMove(widget, at);
    QTest::mousePress(widget, Qt::LeftButton, {}, at);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, at);
}

/// To a point of the screen, through whatever window of ours lies there.
inline void MovePointer(int x, int y) {
    const QPoint point(x, y);
    QCursor::setPos(point);
    QWidget* const below = QApplication::widgetAt(point);
    if (below != nullptr) QTest::mouseMove(below, below->mapFromGlobal(point));
}

/// Runs the loop until the condition holds. @return false when it does not within ten seconds.
inline bool ProcessUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition() && std::chrono::steady_clock::now() < end)
        lum.ProcessMessages();
    return condition();
}

/// The pixels of a window, a letter for each colour of the key.
inline std::vector<std::string> Picture(const CWin& window,
                                        const std::vector<std::pair<COLORREF, char>>& key) {
    RECT client{};
    GetClientRect(window.Window(), &client);
    std::vector<std::string> rows;
    for (LONG y = 0; y < client.bottom; ++y) {
        rows.emplace_back();
        for (LONG x = 0; x < client.right; ++x) {
            char letter = '?';
            for (const auto& [colour, its_letter] : key) {
                if (PixelOf(window, x, y) == colour) letter = its_letter;
            }
            rows.back() += letter;
        }
    }
    return rows;
}

class ToolWindowTest : public testing::Test {
protected:
    void SetUp() override {
        MovePointer(700, 700);
        owner_.SetStyle(WS_POPUP | WS_VISIBLE);
        owner_.SetPlacement(0, 0, 300, 200);
        ASSERT_EQ(owner_.Create(), 1);
        bar_.SetParent(&owner_);
        bar_.SetPlacement(0, 0, 200, 24);
        ASSERT_EQ(bar_.Create(), 1);
        lum.ProcessMessages();
        owner_.noted.clear();
    }
    int AddSquare(std::int32_t id, LONG left, ButtonKind kind = ButtonKind::Push,
                  std::int32_t group = 0, const char* tip = "") {
        const int added = bar_.AddButton("Square", id, left, 2, tip, kind, group);
        lum.ProcessMessages();
        return added;
    }
    void ClickButton(std::int32_t id) {
        Click(bar_.FindButton(id)->Window());
        lum.ProcessMessages();
    }
    bool IsDown(std::int32_t id) const { return bar_.FindButton(id)->IsPressed(); }
    /// Ids of the commands that have reached the owner since this was last asked.
    std::vector<WPARAM> Commands() {
        std::vector<WPARAM> ids;
        for (const NotingWindow::Noted& one : owner_.noted) {
            if (one.message == WM_COMMAND) ids.push_back(one.wparam);
        }
        owner_.noted.clear();
        return ids;
    }

    NotingWindow owner_;
    ToolWinlum bar_;
};

} // namespace kelvo
