#include "framework/window/CProgressBar.h"

#include "framework/window/CDc.h"
#include "platform/desktop/messages.h"

namespace kelvo {

CProgressBar::CProgressBar() {
    SetSize(kDefaultWidth, kDefaultHeight);
}

CProgressBar::~CProgressBar() {
    const std::lock_guard lock(mutex_);
    painted_window_ = nullptr; // a late update of the playing thread then draws nothing
}

bool CProgressBar::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CWin::HandleMessage(message, wparam, lparam)) return true;
    const auto x = static_cast<std::int16_t>(LOWORD(static_cast<DWORD_PTR>(lparam)));
    const auto y = static_cast<std::int16_t>(HIWORD(static_cast<DWORD_PTR>(lparam)));
    switch (message) {
    case WM_SIZE: {
        const std::lock_guard lock(mutex_);
        painted_window_ = Window();
        painted_size_ = {x, y};
        return false;
    }
    case WM_DESTROY: {
        const std::lock_guard lock(mutex_);
        painted_window_ = nullptr;
        return false;
    }
    case WM_PAINT:
        return OnPaint();
    case WM_LBUTTONDOWN:
        return OnClick(x, y);
    default:
        return false;
    }
}

void CProgressBar::PaintOn(HDC context) {
    data_.Paint(context, painted_size_.cx, painted_size_.cy);
}

bool CProgressBar::OnPaint() {
    CDc context;
    context.BeginPaint(*this);
    {
        const std::lock_guard lock(mutex_);
        PaintOn(context.Context());
    }
    context.EndPaint(*this);
    return true;
}

bool CProgressBar::OnClick(LONG x, LONG y) {
    if (Parent() == nullptr) return false;
    std::int32_t position = 0;
    {
        const std::lock_guard lock(mutex_);
        position = data_.PositionAt(x, y, painted_size_.cx, painted_size_.cy);
    }
    Parent()->HandleNotification(kPositionClicked, position, 0);
    return true;
}

void CProgressBar::Update(const ProgressValues& values) {
    const std::lock_guard lock(mutex_);
    if (painted_window_ == nullptr) return;
    data_.SetValues(values);
    const HDC context = GetDC(painted_window_);
    PaintOn(context);
    ReleaseDC(painted_window_, context);
}

ProgressValues CProgressBar::Values() const {
    const std::lock_guard lock(mutex_);
    return data_.Values();
}

void CProgressBar::SetColours(COLORREF background, COLORREF bar, COLORREF marker) {
    const std::lock_guard lock(mutex_);
    data_.SetColours(background, bar, marker);
}

void CProgressBar::SetBackgroundColour(COLORREF colour) {
    const std::lock_guard lock(mutex_);
    data_.SetBackgroundColour(colour);
}

void CProgressBar::SetBarColour(COLORREF colour) {
    const std::lock_guard lock(mutex_);
    data_.SetBarColour(colour);
}

void CProgressBar::SetMarkerColour(COLORREF colour) {
    const std::lock_guard lock(mutex_);
    data_.SetMarkerColour(colour);
}

COLORREF CProgressBar::BackgroundColour() const {
    const std::lock_guard lock(mutex_);
    return data_.BackgroundColour();
}

COLORREF CProgressBar::BarColour() const {
    const std::lock_guard lock(mutex_);
    return data_.BarColour();
}

COLORREF CProgressBar::MarkerColour() const {
    const std::lock_guard lock(mutex_);
    return data_.MarkerColour();
}

void CProgressBar::SetHorizontal(bool horizontal) {
    const std::lock_guard lock(mutex_);
    data_.SetHorizontal(horizontal);
}

} // namespace kelvo
