// Bitmap buttons and pictures of a dialog: loading what the controls show.

#include "framework/window/CDialog.h"
#include "framework/window/LUM.h"
#include "platform/desktop/drawing.h"

namespace kelvo {
namespace {

constexpr char kNoResourceModule[] = "no Kernel.ResourceIst()";
constexpr char kAddOwnerDrawBtn[] = "CDialog::AddOwnerDrawBtn()";
constexpr char kAddBitmap[] = "CDialog::AddBitmap()";

bool HasResourceModule(const char* operation) {
    return lum.ResourceIst() != nullptr || CObj::ErrorBox(kNoResourceModule, Caption{operation});
}

HBITMAP LoadNamed(LPCSTR name) {
    if (name == nullptr || *name == '\0') return nullptr;
    return LoadBitmapA(lum.ResourceIst(), name);
}

} // namespace

void CDialog::AddOwnerDrawBtn(int id, LPCSTR pressed_bitmap, LPCSTR normal_bitmap) {
    if (!HasResourceModule(kAddOwnerDrawBtn)) return;
    owner_draw_buttons_.AddButton(id, {LoadNamed(pressed_bitmap), LoadNamed(normal_bitmap)});
}

void CDialog::AddOwnerDrawBtn(int id, LPCSTR pressed_bitmap, LPCSTR normal_bitmap,
                              COLORREF replacement) {
    if (!HasResourceModule(kAddOwnerDrawBtn)) return;
    owner_draw_buttons_.AddButton(id, {LoadNamed(pressed_bitmap), LoadNamed(normal_bitmap)},
                                  replacement);
}

void CDialog::AddBitmap(int id, LPCSTR bitmap) {
    if (!HasResourceModule(kAddBitmap)) return;
    owner_draw_buttons_.AddButton(id, {nullptr, LoadNamed(bitmap)});
}

void CDialog::AddStaticBitmap(const staticctrlbitmap& bitmap) {
    static_bitmaps_.Add(bitmap);
}

} // namespace kelvo
