#include "framework/window/dialogs/COwnerDrawButton.h"

#include "framework/base/MemCheck.h"
#include "framework/window/CDc.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <memory>
#include <new>

namespace kelvo {
namespace {

constexpr char kNotAllocated[] = "new FALLITO in: COwnerDrawButtonArray::AddButton()";
constexpr UINT kMeasuredSide = 10;

/// The size that a picture is fitted to: divided by whichever ratio makes both sides fit, and never
/// enlarged.
SIZE FittedSize(const BITMAP& picture, const RECT& item) {
    const SIZE own{picture.bmWidth, picture.bmHeight};
    if (item.right <= 0 || item.bottom <= 0) return {0, 0};
    double ratio = static_cast<double>(own.cx) / item.right;
    if (item.bottom < own.cy / ratio) ratio = static_cast<double>(own.cy) / item.bottom;
    if (ratio <= 1) return own;
    return {static_cast<LONG>(own.cx / ratio), static_cast<LONG>(own.cy / ratio)};
}

void DrawFitted(const DRAWITEMSTRUCT& item, HBITMAP picture) {
    BITMAP size{};
    if (GetObjectA(picture, sizeof size, &size) == 0) return;
    const SIZE fitted = FittedSize(size, item.rcItem);
    if (fitted.cx == size.bmWidth && fitted.cy == size.bmHeight) {
        CDc(item.hDC).DrawBitmap(picture, 0, 0);
        return;
    }
    const int former = SetStretchBltMode(item.hDC, HALFTONE);
    CDc(item.hDC).DrawBitmap(picture, RECT{0, 0, fitted.cx, fitted.cy}, kDrawStretch, 0);
    SetStretchBltMode(item.hDC, former);
}

} // namespace

COwnerDrawButton::COwnerDrawButton(int control_id, const ButtonPictures& pictures,
                                   std::optional<COLORREF> replacement)
    : CObj(kClassId), control_id_(control_id), pictures_(pictures),
      replacement_(replacement.value_or(0)), replaces_background_(replacement ? 1 : 0) {}

COwnerDrawButton::~COwnerDrawButton() {
    if (owns_pictures_ == 0) return;
    if (pictures_.pressed != nullptr) DeleteObject(pictures_.pressed);
    if (pictures_.normal != nullptr) DeleteObject(pictures_.normal);
}

bool COwnerDrawButton::HandleMessage(UINT message, WPARAM /*wparam*/, LPARAM lparam) {
    switch (message) {
    case WM_DRAWITEM: {
        const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lparam);
        return item.CtlID == static_cast<UINT>(control_id_) && OnDraw(item);
    }
    case WM_MEASUREITEM: {
        auto& item = *reinterpret_cast<MEASUREITEMSTRUCT*>(lparam);
        if (item.CtlID != static_cast<UINT>(control_id_)) return false;
        item.itemWidth = kMeasuredSide;
        item.itemHeight = kMeasuredSide;
        return true;
    }
    default:
        return false;
    }
}

bool COwnerDrawButton::OnDraw(const DRAWITEMSTRUCT& item) const {
    const bool is_pressed = (item.itemState & ODS_SELECTED) != 0;
    if (!is_pressed && pictures_.pressed == nullptr) {
        DrawFitted(item, pictures_.normal);
    } else {
        DrawOnto(item, is_pressed ? pictures_.pressed : pictures_.normal);
    }
    return true;
}

/// The button takes the picture's size.
void COwnerDrawButton::DrawOnto(const DRAWITEMSTRUCT& item, HBITMAP picture) const {
    BITMAP size{};
    if (GetObjectA(picture, sizeof size, &size) == 0) return;
    SetWindowPos(item.hwndItem, nullptr, 0, 0, size.bmWidth, size.bmHeight,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_SHOWWINDOW);
    const CDc context(item.hDC);
    if (replaces_background_ != 0) {
        context.DrawBitmap(picture, 0, 0, replacement_);
    } else {
        context.DrawBitmap(picture, 0, 0);
    }
}

bool COwnerDrawButtonArray::AddButton(int control_id, const ButtonPictures& pictures,
                                      std::optional<COLORREF> replacement) {
    std::unique_ptr<COwnerDrawButton> button(
        AllocationAllowed(sizeof(COwnerDrawButton))
            ? new (std::nothrow) COwnerDrawButton(control_id, pictures, replacement)
            : nullptr);
    if (button == nullptr) {
        if (pictures.pressed != nullptr) DeleteObject(pictures.pressed);
        if (pictures.normal != nullptr) DeleteObject(pictures.normal);
        return ErrorBox(kNotAllocated);
    }
    if (Add(button.get()) == 0) return false;
    button.release();
    return true;
}

bool COwnerDrawButtonArray::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message != WM_DRAWITEM && message != WM_MEASUREITEM) return false;
    for (std::int32_t number = 0; number < Count(); ++number) {
        if (At(number)->HandleMessage(message, wparam, lparam)) return true;
    }
    return false;
}

} // namespace kelvo
