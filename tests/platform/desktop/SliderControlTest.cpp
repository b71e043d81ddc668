// Trackbars and scroll bars, and the wheel.

#include "tests/platform/desktop/ControlWindow.h"

#include <QSlider>
#include <QWheelEvent>

using namespace kelvo::desktop;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

class Sliders : public ControlWindow {
protected:
    using Code = std::pair<int, int>; ///< code, position
    std::vector<Code> Codes(UINT message = WM_HSCROLL) const {
        std::vector<Code> codes;
        for (const Seen& each : SeenOf(parent_, message))
            codes.emplace_back(LOWORD(each.wparam), HIWORD(each.wparam));
        seen.clear();
        return codes;
    }
};

using Trackbars = Sliders;
using ScrollBars = Sliders;
using Wheels = Sliders;

void Turn(QWidget& widget, int angle) {
    const QPointF position(5, 5);
    QWheelEvent event(position, QPointF(widget.mapToGlobal(QPoint(5, 5))), {}, {0, angle},
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&widget, &event);
    Pump();
}

} // namespace

TEST_F(Trackbars, KeepRangePositionAndPage) {
    const HWND bar = Make("msctls_trackbar32", TBS_HORZ, 101);
    const auto send = [&](UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
        return ::SendMessageA(bar, message, wparam, lparam);
    };
    EXPECT_EQ(send(TBM_GETRANGEMAX), 100);
    send(TBM_SETRANGE, TRUE, MAKELPARAM(0, 255));
    EXPECT_EQ(send(TBM_GETRANGEMAX), 255);
    EXPECT_EQ(send(TBM_GETPAGESIZE), 51);
    send(TBM_SETPOS, TRUE, 128);
    EXPECT_EQ(send(TBM_GETPOS), 128);
    send(TBM_SETPOS, TRUE, 1000);
    EXPECT_EQ(send(TBM_GETPOS), 255);
    EXPECT_EQ(send(TBM_SETPAGESIZE, 0, 16), 51);
    EXPECT_EQ(send(TBM_GETPAGESIZE), 16);
    EXPECT_THAT(Codes(), IsEmpty());
}

TEST_F(Trackbars, TellEveryMoveOfTheUserWithThePositionAlreadyThere) {
    const HWND bar = Make("msctls_trackbar32", TBS_HORZ, 101);
    ::SendMessageA(bar, TBM_SETRANGE, TRUE, MAKELPARAM(0, 255));
    std::vector<LRESULT> positions;
    answer = [&](HWND, UINT message, WPARAM wparam, LPARAM lparam) -> std::optional<LRESULT> {
        if (message == WM_HSCROLL && LOWORD(wparam) != TB_ENDTRACK) {
            EXPECT_EQ(lparam, reinterpret_cast<LPARAM>(bar));
            positions.push_back(::SendMessageA(bar, TBM_GETPOS, 0, 0));
        }
        return std::nullopt;
    };
    Press(bar, Qt::Key_Right);
    EXPECT_THAT(Codes(), ElementsAre(Pair(TB_LINEDOWN, 0), Pair(TB_ENDTRACK, 0)));
    Press(bar, Qt::Key_PageUp);
    Press(bar, Qt::Key_End);
    seen.clear();
    EXPECT_THAT(positions, testing::SizeIs(3));
    EXPECT_EQ(positions.front(), 1);
    EXPECT_EQ(positions.back(), 255);

    auto* const slider = Inner<QSlider>(bar);
    ::SendMessageA(bar, TBM_SETPOS, TRUE, 0);
    QTest::mousePress(slider, Qt::LeftButton, {}, QPoint(5, slider->height() / 2));
    Pump();
    ASSERT_TRUE(slider->isSliderDown());
    QTest::mouseMove(slider, QPoint(60, slider->height() / 2));
    Pump();
    const auto moved = static_cast<int>(::SendMessageA(bar, TBM_GETPOS, 0, 0));
    EXPECT_GT(moved, 50);
    EXPECT_LT(moved, 200);
    QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(60, slider->height() / 2));
    Pump();
    EXPECT_THAT(Codes(), ElementsAre(Pair(TB_THUMBTRACK, moved), Pair(TB_THUMBPOSITION, moved),
                                     Pair(TB_ENDTRACK, 0)));
}

TEST_F(Trackbars, TellWhatAnAssistiveProgramSets) {
    const HWND bar = Make("msctls_trackbar32", TBS_HORZ, 101);
    Inner<QSlider>(bar)->setValue(30);
    Pump();
    EXPECT_THAT(Codes(), ElementsAre(Pair(TB_THUMBPOSITION, 30), Pair(TB_ENDTRACK, 0)));
}

TEST_F(Trackbars, OfVerticalStyleBeginAtTheTopAndTellVertically) {
    const HWND bar = Make("msctls_trackbar32", TBS_VERT, 101, "", {10, 10, 40, 150});
    auto* const slider = Inner<QSlider>(bar);
    QTest::mouseClick(slider, Qt::LeftButton, {}, QPoint(slider->width() / 2, 130));
    Pump();
    EXPECT_THAT(Codes(WM_VSCROLL), testing::Contains(Pair(TB_PAGEDOWN, 0)));
    EXPECT_EQ(::SendMessageA(bar, TBM_GETPOS, 0, 0), 20);
}

TEST_F(ScrollBars, MoveOnlyWhenTheParentSaysSo) {
    const HWND bar = Make("SCROLLBAR", SBS_HORZ, 8);
    SCROLLINFO info{sizeof info, SIF_RANGE | SIF_PAGE | SIF_POS, 0, 99, 10, 40, 0};
    ::SendMessageA(bar, SBM_SETSCROLLINFO, TRUE, reinterpret_cast<LPARAM>(&info));
    Press(bar, Qt::Key_Right);
    EXPECT_THAT(Codes(), ElementsAre(Pair(SB_LINEDOWN, 0), Pair(SB_ENDSCROLL, 0)));
    EXPECT_EQ(::SendMessageA(bar, SBM_GETPOS, 0, 0), 40);
    EXPECT_EQ(Inner<QAbstractSlider>(bar)->value(), 40);
    EXPECT_EQ(::SendMessageA(bar, SBM_SETPOS, 95, TRUE), 40);
    EXPECT_EQ(::SendMessageA(bar, SBM_GETPOS, 0, 0), 90); // from there the page shows the end
    EXPECT_EQ(Inner<QAbstractSlider>(bar)->value(), 90);
}

TEST_F(Wheels, TurnWhatIsUnderTheMouseElseTheParent) {
    const HWND bar = Make("msctls_trackbar32", TBS_HORZ, 101);
    ::SendMessageA(bar, TBM_SETPOS, TRUE, 50);
    seen.clear();
    Turn(*Inner(bar), WHEEL_DELTA);
    EXPECT_GT(::SendMessageA(bar, TBM_GETPOS, 0, 0), 50);
    EXPECT_THAT(SeenOf(parent_, WM_MOUSEWHEEL), IsEmpty());
    EXPECT_EQ(Codes().back().first, TB_ENDTRACK);
    const HWND button = Make("BUTTON", BS_PUSHBUTTON, 7, "", {10, 60, 90, 90});
    Turn(*Inner(button), -WHEEL_DELTA);
    const auto wheels = SeenOf(parent_, WM_MOUSEWHEEL);
    ASSERT_EQ(wheels.size(), 1U);
    EXPECT_EQ(static_cast<std::int16_t>(HIWORD(wheels[0].wparam)), -WHEEL_DELTA);
}
