#include "playback/VideoPlayerkel.h"

#include "framework/window/CDc.h"
#include "framework/window/LUM.h"
#include "media/VideoHeader.h"
#include "platform/base/clock.h"
#include "platform/base/threads.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/messages.h"
#include "playback/AudioPlayerkel.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr char kWindowClass[] = "LUMOWNDCCLASS";
constexpr UINT kOwnContextClassStyle = CS_VREDRAW | CS_HREDRAW | CS_OWNDC;
constexpr COLORREF kDarkBlue = RGB(0, 0, 90);
constexpr char kNotForEditing[] =
    "Play Normal può essere usato solo con file aperti non in Editing!";

constexpr char kLogo[] = "ZuvaLogosBmp";
constexpr LONG kLogoWidth = 290;
constexpr LONG kLogoHeight = 68;

constexpr DWORD kLoopEndWaitMs = 2000;
/// The loop looks at its flag every few milliseconds; a longer poll would only make closing slow.
constexpr DWORD kLoopEndPollMs = 2;
constexpr LONG kSmallestRoom = 10;

void RegisterViewClass() {
    static bool registered = false;
    if (registered) return;
    registered = true;
    lum.RegisterNewClass(lum.Instance(), nullptr, kWindowClass, nullptr, kOwnContextClassStyle,
                         nullptr, nullptr);
}

SIZE FitInto(LONG width, LONG height, LONG room_width, LONG room_height) {
    const double ratio_x = static_cast<double>(width) / room_width;
    const double ratio_y = static_cast<double>(height) / room_height;
    if (ratio_x <= ratio_y) return {static_cast<LONG>(width / ratio_y), room_height};
    return {room_width, static_cast<LONG>(height / ratio_x)};
}

} // namespace

VideoPlayerkel::VideoPlayerkel() {
    RegisterViewClass();
    SetWindowClass(kWindowClass);
    SetBackgroundColour(kDarkBlue);
    SetPaintBackground(true);
}

VideoPlayerkel::~VideoPlayerkel() {
    CloseVideo();
}

// --- opening and closing -----------------------------------------------------------------------

bool VideoPlayerkel::OpenVideo(const CString& name) {
    if (!track_.OpenForRead(name)) return false;
    display_size_ = SIZE{track_.Width(), track_.Height()};
    image_waits_ = false;
    StepFrames(0);
    frame_valid_ = true;
    return true;
}

bool VideoPlayerkel::CloseVideo() {
    frame_valid_ = false;
    StopPlayback();
    const DWORD start = GetTickCount();
    while (IsRunning() && GetTickCount() - start < kLoopEndWaitMs) {
        Sleep(kLoopEndPollMs);
    }
    if (IsRunning()) operation_.Kill(0);
    track_.Close();
    image_waits_ = false;
    return true;
}

bool VideoPlayerkel::StopPlayback() {
    stop_ = true;
    held_ = false;
    return true;
}

// --- starting ----------------------------------------------------------------------------------

void VideoPlayerkel::EndLoop() {
    if (!IsRunning()) return;
    StopPlayback();
    while (IsRunning()) {
        Sleep(1);
    }
}

void VideoPlayerkel::ObtainDeviceContext() {
    if (device_context_ == nullptr) device_context_ = GetDC(Window());
}

bool VideoPlayerkel::StartLoop(INT_PTR (VideoPlayerkel::*loop)(INT_PTR, INT_PTR, INT_PTR)) {
    ObtainDeviceContext();
    Redraw();
    // Cleared here and not by the loop: a stop that comes before the thread runs must not be lost.
    stop_ = false;
    held_ = false;
    return operation_.Start(loop) != nullptr;
}

bool VideoPlayerkel::PlayNormal(AudioPlayerkel* audio) {
    EndLoop();
    if (track_.OpenMode() != ZFilekel::Mode::ForRead) {
        return ErrorBox(kNotForEditing);
    }
    m_pAudioPlayer = audio != nullptr && audio->IsTrackOpen() ? audio : nullptr;
    audio_frame_count_ = m_pAudioPlayer != nullptr ? m_pAudioPlayer->FrameCount() : 0;
    shown_before_ = m_pAudioPlayer != nullptr ? ImagesBeforeInAudioFrame() : 0;
    return StartLoop(&VideoPlayerkel::PlayNormalLoop);
}

bool VideoPlayerkel::FastForward() {
    EndLoop();
    return StartLoop(track_.IsSequentialOnly() ? &VideoPlayerkel::SequentialForwardLoop
                                               : &VideoPlayerkel::SteppingForwardLoop);
}

bool VideoPlayerkel::FastBackward() {
    EndLoop();
    return StartLoop(&VideoPlayerkel::BackwardLoop);
}

// --- sizes, steps ------------------------------------------------------------------------------

bool VideoPlayerkel::SetZoom(int mode, const RECT& room) {
    if (!IsTrackOpen()) return false;
    const LONG width = track_.Width();
    const LONG height = track_.Height();
    if (mode == static_cast<int>(Zoom::Fit) &&
        (room.right < kSmallestRoom || room.bottom < kSmallestRoom)) {
        return false;
    }
    zoom_mode_ = mode;
    switch (static_cast<Zoom>(mode)) {
    case Zoom::Natural:
        display_size_ = SIZE{width, height};
        return true;
    case Zoom::Fit:
        display_size_ = FitInto(width, height, room.right, room.bottom);
        return true;
    case Zoom::Quarter:
        display_size_ = SIZE{width / 4, height / 4};
        return true;
    case Zoom::Half:
        display_size_ = SIZE{width / 2, height / 2};
        return true;
    case Zoom::ThreeQuarters:
        display_size_ = SIZE{static_cast<LONG>(width * 0.75), static_cast<LONG>(height * 0.75)};
        return true;
    case Zoom::OneAndAHalf:
        display_size_ = SIZE{static_cast<LONG>(width * 1.5), static_cast<LONG>(height * 1.5)};
        return true;
    case Zoom::Twice:
        display_size_ = SIZE{2 * width, 2 * height};
        return true;
    }
    return false;
}

bool VideoPlayerkel::FitToWindow() {
    RECT room{};
    GetClientRect(Window(), &room);
    room.bottom -= kFitReserve;
    if (!SetZoom(static_cast<int>(Zoom::Fit), room)) return false;
    Redraw();
    return true;
}

// The track's buffer keeps the image that is shown, so that it can be painted again. Images that
// build on one another would lose it if the track were put back in front of it.
bool VideoPlayerkel::StepFrames(int delta) {
    EndLoop();
    const bool moved = track_.GoToRecord(CurrentFrame() + delta);
    image_waits_ = false;
    image_waits_ = track_.ReadNextFrame(waiting_side_);
    Redraw();
    return moved;
}

int VideoPlayerkel::AudioFrameOfCurrentImage(int audio_frames_per_second) {
    EndLoop();
    const std::uint32_t sync_number = track_.SyncNumberOf(CurrentFrame());
    if (sync_number < kNeverLinked) return static_cast<int>(sync_number);
    return static_cast<int>(std::int64_t{CurrentFrame()} * audio_frames_per_second /
                            track_.ImagesPerSecond());
}

// A film that starts inside an audio frame starts that frame's sound from its beginning: its images
// then come as late in the frame as they would have come by themselves.
DWORD VideoPlayerkel::ImagesBeforeInAudioFrame() {
    const int current = std::min(CurrentFrame(), track_.FrameCount() - 1);
    const std::uint32_t sync_number = track_.SyncNumberOf(current);
    const int images_per_second = track_.ImagesPerSecond();
    DWORD before = 0;
    for (int frame = current - 1; frame >= 0 && frame > current - images_per_second; --frame) {
        if (track_.SyncNumberOf(frame) != sync_number) break;
        ++before;
    }
    return before;
}

void VideoPlayerkel::Redraw() {
    if (HasWindow()) InvalidateRect(Window(), nullptr, TRUE);
}

// --- drawing and messages ----------------------------------------------------------------------

void VideoPlayerkel::DrawFrame(HDC context, LONG x, LONG y) const {
    const SIZE size = display_size_;
    StretchDIBits(context, x, y, size.cx, size.cy, 0, 0, track_.Width(), track_.Height(),
                  track_.GetFrameBits(), track_.GetBitmapInfo(), DIB_RGB_COLORS, SRCCOPY);
}

bool VideoPlayerkel::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_ERASEBKGND && frame_valid_) {
        return OnEraseAroundPicture(reinterpret_cast<HDC>(wparam));
    }
    if (CWin::HandleMessage(message, wparam, lparam)) return true;
    // Signed: a drag may leave the view to the left and above.
    const auto x = static_cast<std::int16_t>(LOWORD(static_cast<DWORD_PTR>(lparam)));
    const auto y = static_cast<std::int16_t>(HIWORD(static_cast<DWORD_PTR>(lparam)));
    switch (message) {
    case WM_PAINT:
        return OnPaint();
    case WM_LBUTTONDOWN:
        return OnButtonDown(x, y);
    case WM_MOUSEMOVE:
        return OnDrag(x, y);
    case WM_LBUTTONUP:
        return OnButtonUp();
    case WM_DESTROY:
        CloseVideo();
        device_context_ = nullptr; // goes with the window
        return false;
    default:
        return false;
    }
}

bool VideoPlayerkel::OnPaint() {
    if (!IsTrackOpen()) {
        PaintLogo();
        return true;
    }
    if (!frame_valid_) return false;
    std::unique_lock lock(picture_mutex_, std::try_to_lock);
    if (!lock.owns_lock()) {
        painting_missed_ = true;
        // Tried again: whoever let go of it in between has not seen the flag.
        if (!lock.try_lock()) return false; // the default procedure erases around the picture
    }
    PAINTSTRUCT paint{};
    const HDC context = BeginPaint(Window(), &paint);
    DrawFrame(context, pan_.x, pan_.y);
    EndPaint(Window(), &paint);
    return true;
}

// Erased below the picture, too, the background would flash up between two images.
bool VideoPlayerkel::OnEraseAroundPicture(HDC context) const {
    RECT client{};
    GetClientRect(Window(), &client);
    const SIZE size = display_size_;
    const LONG left = std::clamp(pan_.x, 0, client.right);
    const LONG top = std::clamp(pan_.y, 0, client.bottom);
    const LONG right = std::clamp(pan_.x + size.cx, left, client.right);
    const LONG bottom = std::clamp(pan_.y + size.cy, top, client.bottom);
    const HBRUSH brush = CreateSolidBrush(BackgroundColour());
    for (const RECT& strip :
         {RECT{0, 0, client.right, top}, RECT{0, top, left, bottom},
          RECT{right, top, client.right, bottom}, RECT{0, bottom, client.right, client.bottom}}) {
        FillRect(context, &strip, brush);
    }
    DeleteObject(brush);
    return true;
}

void VideoPlayerkel::PaintLogo() {
    const HBITMAP logo = LoadBitmapA(lum.Instance(), kLogo);
    CDc context;
    context.BeginPaint(*this);
    RECT client{};
    GetClientRect(Window(), &client);
    context.DrawBitmap(logo, (client.right - kLogoWidth) / 2, (client.bottom - kLogoHeight) / 2);
    context.EndPaint(*this);
    DeleteObject(logo);
}

bool VideoPlayerkel::OnButtonDown(LONG x, LONG y) {
    if (!IsTrackOpen() || track_.OpenMode() == ZFilekel::Mode::ForRead) return false;
    last_mouse_ = {x, y};
    SetCapture(Window());
    dragged_ = true;
    return true;
}

bool VideoPlayerkel::OnDrag(LONG x, LONG y) {
    if (!dragged_) return false;
    pan_.x += x - last_mouse_.x;
    pan_.y += y - last_mouse_.y;
    last_mouse_ = {x, y};
    if (IsTrackOpen() && !IsRunning() && frame_valid_) {
        ObtainDeviceContext();
        DrawFrame(device_context_, pan_.x, pan_.y);
    }
    return true;
}

bool VideoPlayerkel::OnButtonUp() {
    if (!dragged_) return false;
    ReleaseCapture();
    dragged_ = false;
    return true;
}

} // namespace kelvo
