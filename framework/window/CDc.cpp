#include "framework/window/CDc.h"

#include "framework/window/CWin.h"

namespace kelvo {

CDc::CDc() : CObj(kClassId) {}

CDc::CDc(HDC context) : CObj(kClassId), context_(context) {}

CDc::~CDc() {
    DropBitmap();
}

HDC CDc::BeginPaint(const CWin& window) {
    context_ = ::BeginPaint(window.Window(), &paint_);
    return context_;
}

void CDc::EndPaint(const CWin& window) {
    ::EndPaint(window.Window(), &paint_);
    context_ = nullptr;
}

HDC CDc::GetWindowDc(const CWin& window) {
    context_ = GetDC(window.Window());
    return context_;
}

void CDc::ReleaseWindowDc(const CWin& window) {
    ReleaseDC(window.Window(), context_);
    context_ = nullptr;
}

bool CDc::MakeCompatible(const CDc& other, LONG width, LONG height) {
    if (bitmap_ != nullptr) Release();
    context_ = CreateCompatibleDC(other.context_);
    if (context_ == nullptr) return false;
    bitmap_ = CreateCompatibleBitmap(other.context_, width, height);
    if (bitmap_ == nullptr) {
        DeleteDC(context_);
        context_ = nullptr;
        return false;
    }
    replaced_ = SelectObject(context_, bitmap_);
    return true;
}

bool CDc::MakeCompatible(const CWin& window) {
    CDc own;
    own.GetWindowDc(window);
    RECT client{};
    GetClientRect(window.Window(), &client);
    const bool made = MakeCompatible(own, client.right, client.bottom);
    own.ReleaseWindowDc(window);
    return made;
}

bool CDc::CopyTo(CDc& target) const {
    BITMAP size{};
    if (GetObjectA(bitmap_, sizeof size, &size) == 0) return false;
    return CopyTo(target, 0, 0, size.bmWidth, size.bmHeight);
}

bool CDc::CopyTo(CDc& target, LONG x, LONG y, LONG width, LONG height) const {
    return BitBlt(target.context_, x, y, width, height, context_, 0, 0, SRCCOPY) != FALSE;
}

void CDc::DropBitmap() {
    if (bitmap_ == nullptr) return;
    SelectObject(context_, replaced_);
    DeleteObject(bitmap_);
    bitmap_ = nullptr;
    replaced_ = nullptr;
    // The context was made for the bitmap and is of no use to anybody else.
    DeleteDC(context_);
    context_ = nullptr;
}

void CDc::Release() {
    DropBitmap();
}

} // namespace kelvo
