// How the main window takes its size from the film, and the zoom commands.

#include "app/KelvoWinkel.h"
#include "app/PositionBarGeometry.h"
#include "platform/desktop/drawing.h"

namespace kelvo {
namespace {

/// What the window needs around the picture in the zoom modes.
constexpr LONG kZoomExtraWidth = 10;
constexpr LONG kZoomExtraHeight = 72;
/// How much larger than the picture a screen must be for the natural size.
constexpr LONG kScreenExtraWidth = 10;
constexpr LONG kScreenExtraHeight = 100;

SIZE ScreenSize() {
    const HDC screen = CreateDCA("DISPLAY", nullptr, nullptr, nullptr);
    const SIZE size{GetDeviceCaps(screen, HORZRES), GetDeviceCaps(screen, VERTRES)};
    DeleteDC(screen);
    return size;
}

Zoom ZoomOf(Command command) {
    switch (command) {
    case Command::Quarter:
        return Zoom::Quarter;
    case Command::Half:
        return Zoom::Half;
    case Command::ThreeQuarters:
        return Zoom::ThreeQuarters;
    case Command::OneAndAHalf:
        return Zoom::OneAndAHalf;
    case Command::Twice:
        return Zoom::Twice;
    default:
        return Zoom::Natural;
    }
}

} // namespace

void KelvoWinkel::SizeToFilm() {
    if ((options_ & kStartNaturalSize) != 0) {
        SizeNaturally();
    } else if ((options_ & kStartFitWindow) != 0 || (options_ & kStartByScreen) == 0) {
        SizeByFit();
    } else {
        SizeByScreen();
    }
}

void KelvoWinkel::SizeNaturally() {
    video_.SetZoom(static_cast<int>(Zoom::Natural));
    RECT area{0, 0, video_.DisplayWidth(), video_.DisplayHeight()};
    AdjustWindowRectEx(&area, Style(), TRUE, ExtendedStyle());
    SetWindowPos(Window(), nullptr, 0, 0, area.right - area.left,
                 area.bottom - area.top + kStripHeight, SWP_NOZORDER);
}

void KelvoWinkel::SizeByScreen() {
    const SIZE screen = ScreenSize();
    if (screen.cx >= video_.ImageWidth() + kScreenExtraWidth &&
        screen.cy >= video_.ImageHeight() + kScreenExtraHeight) {
        SizeNaturally();
        return;
    }
    SetWindowPos(Window(), nullptr, 0, 0, screen.cx, screen.cy, SWP_NOZORDER);
    video_.SetZoom(static_cast<int>(Zoom::Fit), RoomForPicture());
}

void KelvoWinkel::SizeByFit() {
    video_.SetZoom(static_cast<int>(Zoom::Fit), RoomForPicture());
    SizeAroundPicture();
}

RECT KelvoWinkel::RoomForPicture() const {
    RECT room{};
    GetClientRect(Window(), &room);
    room.bottom -= VideoPlayerkel::kFitReserve;
    return room;
}

void KelvoWinkel::SizeAroundPicture() {
    SetWindowPos(Window(), nullptr, 0, 0, video_.DisplayWidth() + kZoomExtraWidth,
                 video_.DisplayHeight() + kZoomExtraHeight, SWP_NOMOVE | SWP_NOZORDER);
}

void KelvoWinkel::OnZoom(Command command) {
    if (!video_.IsTrackOpen()) return;
    video_.SetZoom(static_cast<int>(ZoomOf(command)));
    SizeAroundPicture();
    // Where the window keeps its size, nothing else would repaint the view.
    video_.Redraw();
}

} // namespace kelvo
