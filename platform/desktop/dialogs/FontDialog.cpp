// Choosing a font, between the system's description of it and the toolkit's.

#include "platform/desktop/Fonts.h"
#include "platform/desktop/common_dialogs.h"
#include "platform/desktop/dialogs/DialogOwner.h"
#include "platform/desktop/dialogs/ItalianTexts.h"

#include <QFontDialog>
#include <QFontInfo>

#include <algorithm>
#include <cmath>

namespace kelvo::desktop {

namespace {

constexpr double kPointsPerInch = 72.0;
constexpr WORD kTenthsOfPoint = 10;
constexpr int kUsualPoints = 10;

// Pixels of the program are device-independent: the screen's own number of them an inch.
double PointsPerPixel(const QWidget& widget) {
    return kPointsPerInch / std::max(widget.logicalDpiY(), 1);
}

// Of a face that there is: the dialog knows no other ones.
QFont ToolkitFont(const LOGFONTA& description, double points_per_pixel) {
    RealisedFont realised;
    {
        const std::scoped_lock lock(TextMutex());
        realised = Font(description).Realise(1.0, 1.0);
    }
    QFont font = realised.font;
    font.setPointSizeF(std::max(1.0, std::round(font.pixelSize() * points_per_pixel)));
    font.setFamilies({QString::fromStdString(realised.face)});
    return font;
}

void Describe(const QFont& font, double points_per_pixel, LOGFONTA& description) {
    const double points = font.pointSizeF() > 0 ? font.pointSizeF() : kUsualPoints;
    description = {};
    description.lfHeight = -static_cast<LONG>(std::lround(points / points_per_pixel));
    description.lfWeight = font.weight();
    description.lfItalic = font.italic() ? 1 : 0;
    description.lfUnderline = font.underline() ? 1 : 0;
    description.lfStrikeOut = font.strikeOut() ? 1 : 0;
    description.lfCharSet = DEFAULT_CHARSET;
    description.lfQuality = PROOF_QUALITY;
    description.lfPitchAndFamily = QFontInfo(font).fixedPitch() ? FIXED_PITCH : VARIABLE_PITCH;
    // A longer name is cut: the nearest face is found by what is left.
    const QByteArray face = font.family().toUtf8().left(LF_FACESIZE - 1);
    std::ranges::copy(face, description.lfFaceName);
}

} // namespace

} // namespace kelvo::desktop

BOOL ChooseFontA(CHOOSEFONTA* request) {
    using namespace kelvo::desktop;
    if (request == nullptr || request->lStructSize != sizeof *request ||
        request->lpLogFont == nullptr || !CanShowDialogs()) {
        return FALSE;
    }
    SpeakItalian();
    QFontDialog dialog;
    dialog.setOption(QFontDialog::DontUseNativeDialog);
    const double points_per_pixel = PointsPerPixel(dialog);
    if ((request->Flags & CF_INITTOLOGFONTSTRUCT) != 0) {
        dialog.setCurrentFont(ToolkitFont(*request->lpLogFont, points_per_pixel));
    }
    MakeModalFor(dialog, request->hwndOwner);
    if (dialog.exec() != QDialog::Accepted) return FALSE;
    const QFont font = dialog.selectedFont();
    Describe(font, points_per_pixel, *request->lpLogFont);
    request->iPointSize =
        static_cast<int>(std::lround(std::max(font.pointSizeF(), 0.0) * kTenthsOfPoint));
    request->nFontType = SCREEN_FONTTYPE;
    return TRUE;
}
