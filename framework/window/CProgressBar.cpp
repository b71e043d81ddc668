#include "framework/window/CProgressBar.h"

#include "framework/base/XLanguageInfoClass.h"
#include "framework/window/CDc.h"
#include "platform/base/message_boxes.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr std::int32_t kStopQuestionId = 1107;
constexpr char kStopQuestion[] = "Si desidera interrompere il processo in corso ?";
constexpr std::int32_t kStopCaptionId = 1108;
constexpr char kStopCaption[] = "PROCESSO IN CORSO";

bool BelongsTo(HWND window, HWND whole) {
    return whole != nullptr && (window == whole || IsChild(whole, window) != FALSE);
}

bool WantsToStop(HWND owner) {
    return MessageBoxA(owner, XLanguageInfoClass::Translate(kStopQuestionId, kStopQuestion),
                       XLanguageInfoClass::Translate(kStopCaptionId, kStopCaption),
                       MB_YESNO | MB_ICONQUESTION) == IDYES;
}

} // namespace

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

int CProgressBar::UpdateWithAbort(const ProgressValues& values) {
    MSG message{};
    bool quits = false;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        if (message.message == WM_QUIT) {
            quits = true; // the program's own loop is to find it
        } else if (!IsOnOwnerSide(message.hwnd)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        } else if (message.message == WM_PAINT) {
            DispatchMessageA(&message);
        } else if (message.message == WM_LBUTTONDOWN && WantsToStop(Parent()->Window())) {
            if (quits) Quit();
            return 0;
        }
    }
    if (quits) Quit();
    Update(values);
    return 1;
}

bool CProgressBar::IsOnOwnerSide(HWND window) const {
    return Parent() != nullptr && BelongsTo(window, Parent()->Window()) &&
           !BelongsTo(window, Window());
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
