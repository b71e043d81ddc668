#pragma once
// A shown window with controls in it, and what tests do to them as a user would.

#include "platform/desktop/Surface.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/drawing.h"
#include "tests/platform/desktop/RecordingWindow.h"

#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace kelvo::desktop {

class ControlWindow : public testing::Test {
protected:
    void SetUp() override {
        RegisterTestClass();
        Pump();
        seen.clear();
        answer = nullptr;
        before_ = CountLiveObjects();
        objects_before_ = CountDrawingObjects();
        parent_ = MakeTopLevel();
        ::ShowWindow(parent_, SW_SHOW);
        Pump();
    }
    void TearDown() override {
        answer = nullptr;
        ::DestroyWindow(parent_);
        Pump();
        EXPECT_TRUE(::UnregisterClassA(kTestClass, nullptr));
        EXPECT_EQ(CountLiveObjects(), before_);
        EXPECT_EQ(CountDrawingObjects(), objects_before_);
    }

    HWND Make(const char* class_name, DWORD style, int number, const char* title = "",
              const RECT& place = {10, 10, 130, 40}) const {
        const HWND control = ::CreateWindowExA(
            0, class_name, title, WS_CHILD | WS_VISIBLE | style, place.left, place.top,
            place.right - place.left, place.bottom - place.top, parent_,
            reinterpret_cast<HMENU>(static_cast<UINT_PTR>(number)), nullptr, nullptr);
        Pump();
        return control;
    }

    /// The toolkit's widget in the control.
    template <class W = QWidget>
    static W* Inner(HWND control) {
        return qobject_cast<W*>(WidgetOf(control)->focusProxy());
    }
    static void Click(HWND control) {
        QTest::mouseClick(Inner(control), Qt::LeftButton);
        Pump();
    }
    static void Press(HWND control, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        ::SetFocus(control);
        // As a keyboard does it, Ctrl and a letter bring a control character.
        const bool is_control = modifiers == Qt::ControlModifier && key >= Qt::Key_A;
        const QString text =
            is_control && key <= Qt::Key_Z ? QString(QChar(key - Qt::Key_A + 1)) : QString();
        if (text.isEmpty()) {
            QTest::keyClick(Inner(control), key, modifiers);
        } else {
            QTest::sendKeyEvent(QTest::Click, Inner(control), key, text, modifiers);
        }
        Pump();
    }
    static void Type(HWND control, const char* letters) {
        ::SetFocus(control);
        for (const QChar letter : QString::fromUtf8(letters)) {
            QTest::sendKeyEvent(QTest::Click, Inner(control), Qt::Key_unknown, QString(letter), {});
        }
        Pump();
    }
    static std::string TextOf(HWND control) {
        char text[256] = {};
        ::GetWindowTextA(control, text, sizeof text);
        return text;
    }

    using Command = std::pair<int, UINT>; ///< number, code
    /// What the parent was told since the last call.
    std::vector<Command> Commands() const {
        std::vector<Command> commands;
        for (const Seen& each : SeenOf(parent_, WM_COMMAND))
            commands.emplace_back(LOWORD(each.wparam), HIWORD(each.wparam));
        seen.clear();
        return commands;
    }
    static std::uint32_t Pixel(HWND window, int x, int y) {
        return SurfaceOf(window)->Snapshot().pixel(x, y) & 0xFFFFFFU;
    }

    HWND parent_ = nullptr;

private:
    LiveCounts before_;
    DrawingObjectCounts objects_before_;
};

} // namespace kelvo::desktop
