// How controls look: colours that the parent chooses, fonts, and what others draw on them.

#include "tests/platform/desktop/ControlWindow.h"

#include <QLabel>

using namespace kelvo::desktop;
using testing::Contains;
using testing::Not;

namespace {

class ControlColour : public ControlWindow {
protected:
    /// What the user sees of the control, as the screen gets it.
    static QImage Seen(HWND control) { return WidgetOf(control)->grab().toImage(); }
    static QRgb SeenAt(HWND control, int x, int y) {
        const QImage image = Seen(control); // of the screen's finer pixels, where it has them
        const double ratio = image.devicePixelRatio();
        return image.pixel(static_cast<int>((x + 0.5) * ratio),
                           static_cast<int>((y + 0.5) * ratio));
    }
    static bool Shows(HWND control, QRgb colour) {
        const QImage image = Seen(control);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixel(x, y) == colour) return true;
            }
        }
        return false;
    }

    HBRUSH blue_ = ::CreateSolidBrush(RGB(0, 0, 200));
    void TearDown() override {
        ControlWindow::TearDown();
        ::DeleteObject(blue_);
    }
};

using ControlSurface = ControlColour;

WNDPROC painter_before = nullptr;
HBRUSH painter_brush = nullptr;
/// Paints a square over what the control has painted.
LRESULT PaintsOver(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const LRESULT result = ::CallWindowProcA(painter_before, window, message, wparam, lparam);
    if (message == WM_PAINT) {
        const HDC dc = ::GetDC(window);
        const RECT square{100, 4, 110, 14};
        ::FillRect(dc, &square, painter_brush);
        ::ReleaseDC(window, dc);
    }
    return result;
}

} // namespace

TEST_F(ControlColour, IsTheParentsWhereItAnswersAndTheDesktopsElsewhere) {
    answer = [&](HWND, UINT message, WPARAM wparam, LPARAM) -> std::optional<LRESULT> {
        if (message != WM_CTLCOLORSTATIC) return std::nullopt;
        ::SetTextColor(reinterpret_cast<HDC>(wparam), RGB(255, 0, 0));
        return reinterpret_cast<LRESULT>(blue_);
    };
    const HWND label = Make("STATIC", SS_LEFT, 106, "██ 00:00");
    const HWND edit = Make("EDIT", 0, 107, "██", {10, 60, 130, 90});
    EXPECT_TRUE(PumpUntil([&] { return Shows(label, qRgb(0, 0, 200)); }));
    EXPECT_TRUE(PumpUntil([&] { return Shows(label, qRgb(255, 0, 0)); }));
    EXPECT_TRUE(PumpUntil([&] { return Pixel(label, 118, 28) == 0x0000C8; })); // also for GetPixel
    EXPECT_FALSE(Shows(edit, qRgb(0, 0, 200)));
    EXPECT_TRUE(Shows(edit, QGuiApplication::palette().color(QPalette::Base).rgb()));

    // Read-only, it asks as a static does.
    ::SendMessageA(edit, EM_SETREADONLY, TRUE, 0);
    ::InvalidateRect(edit, nullptr, TRUE);
    EXPECT_TRUE(PumpUntil([&] { return Shows(edit, qRgb(0, 0, 200)); }));

    answer = nullptr; // and back again
    ::InvalidateRect(label, nullptr, TRUE);
    EXPECT_TRUE(PumpUntil([&] { return !Shows(label, qRgb(0, 0, 200)); }));
}

TEST_F(ControlColour, LetsTheParentThroughAHollowBrush) {
    answer = [&](HWND window, UINT message, WPARAM wparam, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_CTLCOLORSTATIC)
            return reinterpret_cast<LRESULT>(::GetStockObject(NULL_BRUSH));
        if (message != WM_ERASEBKGND || window != parent_) return std::nullopt;
        const RECT all{0, 0, 400, 300};
        ::FillRect(reinterpret_cast<HDC>(wparam), &all, blue_);
        return TRUE;
    };
    ::InvalidateRect(parent_, nullptr, TRUE);
    const HWND label = Make("STATIC", SS_LEFT, 106, "x");
    EXPECT_TRUE(PumpUntil([&] {
        return WidgetOf(parent_)->grab(QRect(120, 30, 1, 1)).toImage().pixel(0, 0) ==
               qRgb(0, 0, 200);
    }));
    EXPECT_NE(label, nullptr);
}

TEST_F(ControlSurface, ShowsWhatIsDrawnThroughADeviceContext) {
    const HWND label = Make("STATIC", SS_LEFT, 106, "text");
    ::UpdateWindow(label);
    const HDC dc = ::GetDC(label);
    const RECT square{100, 4, 110, 14};
    ::FillRect(dc, &square, blue_);
    ::ReleaseDC(label, dc);
    EXPECT_TRUE(PumpUntil([&] { return SeenAt(label, 105, 9) == qRgb(0, 0, 200); }));
    EXPECT_NE(SeenAt(label, 90, 9), qRgb(0, 0, 200)); // the text's own ground is still there
    ::SetWindowTextA(label, "another text");          // paints it away
    EXPECT_TRUE(PumpUntil([&] { return SeenAt(label, 105, 9) != qRgb(0, 0, 200); }));
}

TEST_F(ControlSurface, KeepsWhatAProcedurePaintsOverTheControl) {
    const HWND edit = Make("EDIT", 0, 106, "text");
    painter_brush = blue_;
    painter_before = reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrA(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&PaintsOver)));
    ::InvalidateRect(edit, nullptr, TRUE);
    EXPECT_TRUE(PumpUntil([&] { return SeenAt(edit, 105, 9) == qRgb(0, 0, 200); }));
    const QImage before = Seen(edit);
    Type(edit, "more");
    EXPECT_TRUE(PumpUntil([&] { return Seen(edit) != before; }));
    EXPECT_TRUE(PumpUntil([&] { return SeenAt(edit, 105, 9) == qRgb(0, 0, 200); }));
}

TEST_F(ControlSurface, ComesToRestWhenNothingChanges) {
    const HWND label = Make("STATIC", SS_LEFT, 106, "text");
    const HDC dc = ::GetDC(label);
    const RECT square{100, 4, 110, 14};
    ::FillRect(dc, &square, blue_);
    ::ReleaseDC(label, dc);
    EXPECT_TRUE(PumpUntil([&] {
        Pump();
        seen.clear();
        Pump();
        return SeenOf(parent_, WM_CTLCOLORSTATIC).empty();
    }));
}

TEST_F(ControlSurface, HasTheFontThatItIsGiven) {
    const HWND label = Make("STATIC", SS_LEFT, 106, "text");
    EXPECT_EQ(::SendMessageA(label, WM_GETFONT, 0, 0), 0);
    LOGFONTA description{};
    description.lfHeight = -25;
    const HFONT font = ::CreateFontIndirectA(&description);
    ::SendMessageA(label, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    EXPECT_EQ(::SendMessageA(label, WM_GETFONT, 0, 0), reinterpret_cast<LRESULT>(font));
    EXPECT_EQ(Inner<QLabel>(label)->font().pixelSize(), 25);
    ::DeleteObject(font);
}
