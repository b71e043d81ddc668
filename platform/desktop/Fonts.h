#pragma once
// A font as the program describes it, and what the desktop gives for it. Any thread; what touches
// the desktop's fonts is done under one lock.

#include "platform/desktop/drawing.h"

#include <QFont>

#include <mutex>
#include <optional>
#include <string>

namespace kelvo::desktop {

/// A font of the desktop at a given size, in pixels.
struct RealisedFont {
    QFont font;
    double stretch = 1.0; ///< of all widths, for the character width that was asked for
    int ascent = 0;
    int descent = 0;
    int internal_leading = 0;
    int external_leading = 0;
    int average_width = 0;
    int maximum_width = 0;
    bool is_fixed_pitch = false;
    std::string face;
};

/// Held while fonts are looked up, measured or drawn; after the lock of a pixel buffer.
std::mutex& TextMutex();

/// Whether there are fonts at all: without a desktop there are none.
bool HasFonts();

class Font {
public:
    explicit Font(const LOGFONTA& description) : description_(description) {}

    const LOGFONTA& Description() const { return description_; }

    /// The desktop's font, at the size times the scales of the mapping; only with TextMutex() held
    /// and where there are fonts.
    RealisedFont Realise(double scale_x, double scale_y);

private:
    const LOGFONTA description_;
    std::optional<RealisedFont> realised_; ///< the last one, under TextMutex(), as its scales
    double scale_x_ = 0;
    double scale_y_ = 0;
};

} // namespace kelvo::desktop
