#include "framework/window/ProgressBarData.h"

namespace kelvo {
namespace {

/// extent x part / total, cut toward zero; wide enough for every 32-bit value.
LONG Scaled(std::int64_t extent, std::int64_t part, std::int64_t total) {
    return static_cast<LONG>(extent * part / total);
}

void Fill(HDC context, LONG left, LONG top, LONG right, LONG bottom, HBRUSH brush) {
    const RECT area{left, top, right, bottom};
    FillRect(context, &area, brush);
}

} // namespace

void ProgressBarData::ColouredBrush::Set(COLORREF new_colour) {
    Free();
    colour = new_colour;
    brush = CreateSolidBrush(new_colour);
}

void ProgressBarData::ColouredBrush::Free() {
    if (brush != nullptr) DeleteObject(brush);
    brush = nullptr;
}

ProgressBarData::ProgressBarData() : CObj(kClassId) {
    SetColours(kDefaultBackground, kDefaultBar, kDefaultMarker);
}

ProgressBarData::~ProgressBarData() {
    background_.Free();
    bar_.Free();
    marker_.Free();
}

void ProgressBarData::SetColours(COLORREF background, COLORREF bar, COLORREF marker) {
    SetBackgroundColour(background);
    SetBarColour(bar);
    SetMarkerColour(marker);
}

void ProgressBarData::SetBackgroundColour(COLORREF colour) {
    background_.Set(colour);
}
void ProgressBarData::SetBarColour(COLORREF colour) {
    bar_.Set(colour);
}
void ProgressBarData::SetMarkerColour(COLORREF colour) {
    marker_.Set(colour);
}

void ProgressBarData::Paint(HDC context, LONG width, LONG height) const {
    const auto [value, total, start, end] = values_;
    if (total < 1) return;
    Fill(context, 0, 0, width + 1, height + 1, background_.brush);
    if (value != 0) {
        if (horizontal_) {
            Fill(context, 0, 0, Scaled(width, value, total) + 1, height + 1, bar_.brush);
        } else {
            Fill(context, 0, height - Scaled(height, value, total), width + 1, height + 1,
                 bar_.brush);
        }
    }
    if (end <= start) return;
    if (horizontal_) {
        Fill(context, Scaled(width, start, total), 1, Scaled(width, end, total) + 1, height - 1,
             marker_.brush);
    } else {
        Fill(context, 1, height - Scaled(height, end, total), width,
             height - Scaled(height, start, total), marker_.brush);
    }
}

std::int32_t ProgressBarData::PositionAt(LONG x, LONG y, LONG width, LONG height) const {
    const LONG along = horizontal_ ? x : height - y;
    const LONG extent = horizontal_ ? width : height;
    return extent < 1 ? 0 : Scaled(along, values_.total, extent);
}

} // namespace kelvo
