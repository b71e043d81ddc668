#pragma once
// Dialog units: a quarter of a font's average character width, an eighth of its height.

#include "platform/base/types.h"

namespace kelvo::platform {

class DialogUnits {
public:
    /// @param face    of the dialog's font; one that is not there counts as the nearest one
    /// @param points  its size
    DialogUnits(const char* face, int points);

    /// Pixels of so many horizontal or vertical units, cut toward zero.
    LONG Horizontal(LONG units) const { return units * base_width_ / 4; }
    LONG Vertical(LONG units) const { return units * base_height_ / 8; }
    LONG BaseWidth() const { return base_width_; }
    LONG BaseHeight() const { return base_height_; }

private:
    LONG base_width_;
    LONG base_height_;
};

} // namespace kelvo::platform
