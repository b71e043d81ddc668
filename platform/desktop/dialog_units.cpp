#include "platform/desktop/dialog_units.h"

#include "platform/desktop/drawing.h"

#include <algorithm>
#include <cstring>

namespace kelvo::platform {
namespace {

/// The average width of a character is measured on these.
constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr int kLetterCount = sizeof kLetters - 1;
constexpr int kPointsPerInch = 72;

} // namespace

DialogUnits::DialogUnits(const char* face, int points) : base_width_(0), base_height_(0) {
    const HDC screen = GetDC(nullptr);
    LOGFONTA description{};
    description.lfHeight = -(points * GetDeviceCaps(screen, LOGPIXELSY) / kPointsPerInch);
    description.lfWeight = FW_NORMAL;
    description.lfCharSet = DEFAULT_CHARSET;
    std::copy_n(face, std::min<std::size_t>(std::strlen(face), LF_FACESIZE - 1),
                description.lfFaceName);
    const HFONT font = CreateFontIndirectA(&description);
    const HGDIOBJ former = SelectObject(screen, font);
    SIZE extent{};
    GetTextExtentPoint32A(screen, kLetters, kLetterCount, &extent);
    SelectObject(screen, former);
    DeleteObject(font);
    ReleaseDC(nullptr, screen);
    base_width_ = (extent.cx / (kLetterCount / 2) + 1) / 2;
    base_height_ = extent.cy;
}

} // namespace kelvo::platform
