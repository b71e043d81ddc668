#pragma once
// Copies part of a picture into another, scaled: the inner loop behind StretchDIBits, StretchBlt
// and BitBlt.

#include "platform/desktop/Dib.h"

#include <QImage>
#include <QRect>

namespace kelvo::desktop {

enum class Sampling { Nearest, Smooth };

/// Where from and where to; no extent is negative.
struct Placement {
    QRect target;
    int source_x = 0; ///< from the picture's left
    int source_y = 0; ///< from the picture's top
    int source_width = 0;
    int source_height = 0;
    bool mirror_x = false;
    bool mirror_y = false;
};

/// Target pixels whose source lies outside of the picture stay as they are.
/// @param clip  within the target
/// @return the rectangle that was drawn, within the clip.
QRect StretchInto(QImage& target, const QRect& clip, const Placement& placement,
                  const DibView& source, Sampling sampling);

} // namespace kelvo::desktop
