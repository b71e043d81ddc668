// Letting the user choose a font, starting from one that is there.

#include "framework/window/CDc.h"
#include "framework/window/CWin.h"
#include "platform/desktop/common_dialogs.h"

namespace kelvo {
namespace {

/// What the font really is on the screen, in the form that describes a font.
LOGFONTA DescriptionOf(HFONT font, HWND window) {
    LOGFONTA description{};
    const HDC context = GetDC(window);
    const HGDIOBJ former = SelectObject(context, font);
    GetTextFaceA(context, LF_FACESIZE, description.lfFaceName);
    TEXTMETRICA metrics{};
    if (GetTextMetricsA(context, &metrics) != FALSE) {
        // Below 0: the characters' height alone, which is what is left without the leading.
        description.lfHeight = -(metrics.tmHeight - metrics.tmInternalLeading);
        description.lfWidth = metrics.tmAveCharWidth;
        description.lfWeight = metrics.tmWeight;
        description.lfItalic = metrics.tmItalic;
        description.lfUnderline = metrics.tmUnderlined;
        description.lfStrikeOut = metrics.tmStruckOut;
        description.lfCharSet = metrics.tmCharSet;
    }
    SelectObject(context, former);
    ReleaseDC(window, context);
    return description;
}

} // namespace

HFONT CDc::ChooseFont(const CWin* owner, HFONT current) {
    const HWND window = owner != nullptr ? owner->Window() : nullptr;
    LOGFONTA description{};
    if (current != nullptr) description = DescriptionOf(current, window);
    CHOOSEFONTA request{};
    request.lStructSize = sizeof request;
    request.hwndOwner = window;
    request.lpLogFont = &description;
    request.Flags = CF_SCREENFONTS;
    if (current != nullptr) request.Flags |= CF_INITTOLOGFONTSTRUCT;
    request.nFontType = SCREEN_FONTTYPE;
    return ChooseFontA(&request) != FALSE ? CreateFontIndirectA(&description) : nullptr;
}

} // namespace kelvo
