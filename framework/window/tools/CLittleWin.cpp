#include "framework/window/tools/CLittleWin.h"

#include "framework/window/CDc.h"
#include "framework/window/LUM.h"
#include "platform/desktop/messages.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr char kHintClass[] = "Lum32LittleToolWin";
constexpr char kNotRegistered[] = "IMPOSSIBILE REGISTRARE CLASSE";
constexpr char kNotRegisteredCaption[] = "CLittleWin::CLittleWin()";

constexpr COLORREF kLightYellow = 0xE1FFFF;
constexpr LONG kDefaultWidth = 100;
constexpr LONG kDefaultHeight = 16;
constexpr LONG kDefaultDistance = 10;
constexpr LONG kScreenMargin = 10; ///< to the right edge of the screen
constexpr POINT kTextPlace{4, 1};
constexpr LONG kFontHeight = 14;
constexpr LONG kBorders = 2;

bool RegisterHintClass() {
    static bool registered = false; // once per process
    if (!registered) {
        registered = lum.RegisterNewClass(lum.Instance(), nullptr, kHintClass, nullptr, CS_SAVEBITS,
                                          nullptr, nullptr) != 0;
    }
    return registered;
}

/// Delete it after use.
HFONT HintFont() {
    LOGFONTA font{};
    font.lfHeight = kFontHeight;
    font.lfWeight = FW_NORMAL;
    font.lfCharSet = DEFAULT_CHARSET;
    font.lfPitchAndFamily = VARIABLE_PITCH | FF_SWISS;
    return CreateFontIndirectA(&font);
}

} // namespace

CLittleWin::CLittleWin()
    : wished_width_(kDefaultWidth), box_width_(kDefaultWidth), box_height_(kDefaultHeight),
      horizontal_distance_(kDefaultDistance), vertical_distance_(kDefaultDistance) {
    SetWindowClass(kHintClass);
    SetBackgroundColour(kLightYellow);
    SetPaintBackground(true);
    SetStyle(WS_CHILD | WS_CLIPSIBLINGS | WS_BORDER);
    SetExtendedStyle(WS_EX_TOOLWINDOW);
    SetParent(&lum.Desktop());
    SetPlacement(0, 0, kDefaultWidth, kDefaultHeight);
    if (!RegisterHintClass()) {
        ErrorBox(kNotRegistered, Caption{kNotRegisteredCaption});
        return;
    }
    CWin::Create();
}

CLittleWin& CLittleWin::ButtonTips() {
    static CLittleWin tips;
    return tips;
}

CLittleWin& CLittleWin::MenuTips() {
    static CLittleWin tips;
    return tips;
}

bool CLittleWin::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_DESTROY) shown_ = 0;
    if (CWin::HandleMessage(message, wparam, lparam)) return true;
    return message == WM_PAINT && OnPaint();
}

bool CLittleWin::OnPaint() {
    CDc dc;
    dc.BeginPaint(*this);
    const HFONT font = HintFont();
    const HGDIOBJ former = SelectObject(dc.Context(), font);
    SetBkColor(dc.Context(), BackgroundColour());
    TextOutA(dc.Context(), kTextPlace.x, kTextPlace.y, text_.Text(), text_.Length());
    SelectObject(dc.Context(), former);
    DeleteObject(font);
    dc.EndPaint(*this);
    return true;
}

void CLittleWin::FitBox() {
    const HDC screen = GetDC(nullptr);
    const HFONT font = HintFont();
    const HGDIOBJ former = SelectObject(screen, font);
    SIZE extent{};
    GetTextExtentPoint32A(screen, text_.Text(), text_.Length(), &extent);
    SelectObject(screen, former);
    DeleteObject(font);
    ReleaseDC(nullptr, screen);
    box_width_ = std::max(wished_width_, extent.cx + 2 * kTextPlace.x + kBorders);
    SetSize(box_width_, box_height_);
}

void CLittleWin::SetHintText(const char* text) {
    text_ = text;
    FitBox();
}

void CLittleWin::SetBoxSize(LONG width, LONG height) {
    wished_width_ = width;
    box_height_ = height;
    FitBox();
}

void CLittleWin::SetDistance(LONG horizontal, LONG vertical) {
    horizontal_distance_ = horizontal;
    vertical_distance_ = vertical;
}

void CLittleWin::Show(LONG x, LONG y) {
    if (!HasWindow() && (SetSize(box_width_, box_height_), CWin::Create() == 0)) return;
    anchor_ = {x, y};
    RECT screen{};
    GetWindowRect(GetDesktopWindow(), &screen);
    const bool passes_right = x + box_width_ + kScreenMargin > screen.right;
    const bool passes_bottom = y + box_height_ > screen.bottom;
    const LONG left =
        passes_right ? x - horizontal_distance_ - box_width_ : x + horizontal_distance_;
    const LONG top = passes_bottom ? y - vertical_distance_ - box_height_ : y + vertical_distance_;
    const bool was_shown = IsShown();
    SetWindowPos(Window(), HWND_BOTTOM, left, top, 0, 0,
                 was_shown ? SWP_NOSIZE : SWP_NOSIZE | SWP_SHOWWINDOW);
    SetTopmost();
    shown_ = 1;
    if (!was_shown) return;
    InvalidateRect(Window(), nullptr, TRUE);
    UpdateWindow(Window());
}

void CLittleWin::Hide() {
    if (HasWindow()) ShowWindow(Window(), SW_HIDE);
    shown_ = 0;
}

} // namespace kelvo
