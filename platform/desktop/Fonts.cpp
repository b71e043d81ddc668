#include "platform/desktop/Fonts.h"

#include "platform/base/Immortal.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

namespace kelvo::desktop {

namespace {

// What a height of 0 asks for: the system's usual size.
constexpr double kDefaultCellHeight = 16.0;
constexpr double kGreatestHeight = 2000.0;
constexpr int kProbeSize = 100;

QFont UnsizedFont(const LOGFONTA& description) {
    const bool is_fixed = (description.lfPitchAndFamily & 3U) == FIXED_PITCH;
    const auto face =
        QString::fromUtf8(description.lfFaceName,
                          static_cast<qsizetype>(strnlen(description.lfFaceName, LF_FACESIZE)));
    QStringList families;
    if (!face.isEmpty()) families << face;
    families << (is_fixed ? QStringLiteral("monospace") : QStringLiteral("sans-serif"));
    QFont font(families);
    font.setStyleHint(
        is_fixed ? QFont::Monospace : QFont::SansSerif,
        // Coloured fringes would stay in the pixels when these are scaled.
        static_cast<QFont::StyleStrategy>(QFont::PreferDefault | QFont::NoSubpixelAntialias));
    font.setFixedPitch(is_fixed);
    const LONG weight = description.lfWeight == 0 ? FW_NORMAL : description.lfWeight;
    font.setWeight(static_cast<QFont::Weight>(std::clamp<LONG>(weight, 1, 1000)));
    font.setItalic(description.lfItalic != 0);
    font.setUnderline(description.lfUnderline != 0);
    font.setStrikeOut(description.lfStrikeOut != 0);
    return font;
}

// A height above 0 is the cell's, ascent and descent together; below 0 the characters' alone.
int PixelSizeFor(QFont font, LONG height, double scale) {
    const double wanted =
        std::min((height == 0 ? kDefaultCellHeight : std::abs(double{height * 1.0})) * scale,
                 kGreatestHeight);
    double em = wanted;
    if (height >= 0) {
        font.setPixelSize(kProbeSize);
        const QFontMetricsF metrics(font);
        em = wanted * kProbeSize / (metrics.ascent() + metrics.descent());
    }
    return std::max(1, static_cast<int>(std::lround(em)));
}

} // namespace

std::mutex& TextMutex() {
    static platform::Immortal<std::mutex> mutex;
    return *mutex;
}

bool HasFonts() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

RealisedFont Font::Realise(double scale_x, double scale_y) {
    scale_x = std::abs(scale_x);
    scale_y = std::abs(scale_y);
    if (realised_ && scale_x_ == scale_x && scale_y_ == scale_y) return *realised_;
    RealisedFont realised;
    realised.font = UnsizedFont(description_);
    realised.font.setPixelSize(PixelSizeFor(realised.font, description_.lfHeight, scale_y));
    const QFontMetricsF metrics(realised.font);
    const double natural_width = std::max(metrics.averageCharWidth(), 1.0);
    realised.stretch = scale_x / scale_y;
    if (description_.lfWidth != 0) {
        const double wanted = std::abs(double{description_.lfWidth * 1.0}) * scale_x;
        realised.stretch = std::clamp(wanted / natural_width, 0.05, 20.0);
    }
    realised.ascent = static_cast<int>(std::lround(metrics.ascent()));
    realised.descent = static_cast<int>(std::lround(metrics.descent()));
    realised.internal_leading =
        std::max(0, realised.ascent + realised.descent - realised.font.pixelSize());
    realised.external_leading = std::max(0, static_cast<int>(std::lround(metrics.leading())));
    realised.average_width = static_cast<int>(std::lround(natural_width * realised.stretch));
    realised.maximum_width = static_cast<int>(std::lround(metrics.maxWidth() * realised.stretch));
    const QFontInfo info(realised.font);
    realised.is_fixed_pitch = info.fixedPitch();
    realised.face = info.family().toStdString();
    realised_ = realised;
    scale_x_ = scale_x;
    scale_y_ = scale_y;
    return realised;
}

} // namespace kelvo::desktop
