#pragma once
// What a progress bar shows, and how it is painted: colours, value, total, marker, direction.

#include "framework/base/CObj.h"
#include "platform/desktop/drawing.h"

#include <cstdint>

namespace kelvo {

/// A position out of a total, and a marked part of it; no marker unless its end lies after its
/// start.
struct ProgressValues {
    std::int32_t value = 0;
    std::int32_t total = 100;
    std::int32_t marker_start = -1;
    std::int32_t marker_end = -1;
};

class ProgressBarData : public CObj {
public:
    static constexpr std::uint32_t kClassId = 1040101;

    static constexpr COLORREF kDefaultBackground = 0xFFFFFF;
    static constexpr COLORREF kDefaultBar = 0xFF0000; ///< blue
    static constexpr COLORREF kDefaultMarker = 0x00FF00;

    ProgressBarData();
    ProgressBarData(const ProgressBarData&) = delete;
    ProgressBarData& operator=(const ProgressBarData&) = delete;
    ~ProgressBarData() override;

    void SetColours(COLORREF background, COLORREF bar, COLORREF marker);
    void SetBackgroundColour(COLORREF colour);
    void SetBarColour(COLORREF colour);
    void SetMarkerColour(COLORREF colour);
    COLORREF BackgroundColour() const { return background_.colour; }
    COLORREF BarColour() const { return bar_.colour; }
    COLORREF MarkerColour() const { return marker_.colour; }
    /// A vertical bar grows upward.
    void SetHorizontal(bool horizontal) { horizontal_ = horizontal; }
    bool IsHorizontal() const { return horizontal_; }

    void SetValues(const ProgressValues& values) { values_ = values; }
    const ProgressValues& Values() const { return values_; }

    /// Paints a bar of width x height pixels; nothing while the total is below 1.
    void Paint(HDC context, LONG width, LONG height) const;
    /// The position that lies under a point of the bar, in the bar's units.
    std::int32_t PositionAt(LONG x, LONG y, LONG width, LONG height) const;

private:
    struct ColouredBrush {
        COLORREF colour = 0;
        HBRUSH brush = nullptr; ///< made anew whenever the colour is set
        void Set(COLORREF new_colour);
        void Free();
    };

    ColouredBrush background_;
    ColouredBrush bar_;
    ColouredBrush marker_;
    ProgressValues values_;
    bool horizontal_ = true;
};

} // namespace kelvo
