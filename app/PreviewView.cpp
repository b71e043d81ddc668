#include "app/PreviewView.h"

#include "framework/window/BitmapTransfer.h"
#include "framework/window/CDc.h"
#include "platform/desktop/messages.h"

#include <algorithm>
#include <utility>

namespace kelvo {
namespace {

constexpr int kSmoothStretching = 4;
constexpr LONG kNearMargin = 10; ///< of the crossed box, left and above
constexpr LONG kFarMargin = 20;  ///< right and below

} // namespace

void PreviewView::Show(NewCBitmaplum picture) {
    picture_ = std::move(picture);
    RECT client{};
    GetClientRect(Window(), &client);
    valid_ = picture_.HasImage() && client.right > 0 && client.bottom > 0;
    if (valid_) {
        const auto ratio = [](std::int32_t of_picture, LONG of_area) {
            return static_cast<float>(of_picture) / static_cast<float>(of_area);
        };
        scale_ = std::max(ratio(picture_.Width(), client.right),
                          ratio(picture_.Height(), client.bottom));
    }
    InvalidateRect(Window(), nullptr, TRUE);
}

void PreviewView::ShowPlaceholder() {
    if (!valid_) return;
    valid_ = false;
    picture_.Free();
    InvalidateRect(Window(), nullptr, TRUE);
}

SIZE PreviewView::DrawnSize() const {
    return {static_cast<LONG>(static_cast<float>(picture_.Width()) / scale_),
            static_cast<LONG>(static_cast<float>(picture_.Height()) / scale_)};
}

bool PreviewView::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CWin::HandleMessage(message, wparam, lparam)) return true;
    return message == WM_PAINT && OnPaint();
}

bool PreviewView::OnPaint() {
    CDc dc;
    const HDC context = dc.BeginPaint(*this);
    if (valid_) {
        DrawFilmImage(context);
    } else {
        DrawPlaceholder(dc);
    }
    dc.EndPaint(*this);
    SetMessageResult(0);
    return true;
}

void PreviewView::DrawFilmImage(HDC context) const {
    const SIZE size = DrawnSize();
    SetStretchBltMode(context, kSmoothStretching);
    DrawPicture(context, 0, 0, size.cx, size.cy, picture_.Info(), picture_.Pixels());
}

void PreviewView::DrawPlaceholder(const CDc& dc) const {
    RECT client{};
    GetClientRect(Window(), &client);
    const LONG right = client.right - kFarMargin;
    const LONG bottom = client.bottom - kFarMargin;
    // Each line leaves its end to the next one.
    dc.DrawLine(kNearMargin, kNearMargin, right, kNearMargin);
    dc.DrawLine(right, kNearMargin, right, bottom);
    dc.DrawLine(right, bottom, kNearMargin, bottom);
    dc.DrawLine(kNearMargin, bottom, kNearMargin, kNearMargin);
    dc.DrawLine(kNearMargin, kNearMargin, right, bottom);
    dc.DrawLine(kNearMargin, bottom, right, kNearMargin);
}

} // namespace kelvo
