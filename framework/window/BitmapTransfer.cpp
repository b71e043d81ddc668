#include "framework/window/BitmapTransfer.h"

#include "framework/base/CObj.h"
#include "platform/base/memory.h"
#include "platform/desktop/clipboard.h"

#include <cstdlib>
#include <vector>

namespace kelvo {
namespace {

constexpr char kAllocationFailed[] = "Errore di allocazione!";

} // namespace

void DrawPicture(HDC context, int x, int y, int width, int height, const BITMAPINFO* info,
                 const void* pixels) {
    if (info == nullptr) return;
    StretchDIBits(context, x, y, width, height, 0, 0, info->bmiHeader.biWidth,
                  std::abs(info->bmiHeader.biHeight), pixels, info, DIB_RGB_COLORS, SRCCOPY);
}

bool CreateFromClipboard(HWND owner, const std::function<bool(ByteView packed)>& build) {
    if (IsClipboardFormatAvailable(CF_DIB) == FALSE || OpenClipboard(owner) == FALSE) return false;
    const HANDLE block = GetClipboardData(CF_DIB);
    if (block == nullptr) {
        CloseClipboard();
        return CObj::ErrorBox(kAllocationFailed);
    }
    const auto* bytes = static_cast<const std::uint8_t*>(GlobalLock(block));
    const std::vector<std::uint8_t> copy(bytes, bytes + GlobalSize(block));
    GlobalUnlock(block);
    CloseClipboard();
    return build(copy);
}

} // namespace kelvo
