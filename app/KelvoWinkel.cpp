#include "app/KelvoWinkel.h"

#include "app/PositionBarGeometry.h"
#include "app/TerminalProgress.h"
#include "framework/base/FilePaths.h"
#include "framework/window/LUM.h"
#include "media/TrackNames.h"
#include "platform/desktop/menus.h"
#include "platform/desktop/messages.h"

#include <utility>

namespace kelvo {
namespace {

constexpr char kTitle[] = "Kelvo";
constexpr char kTitleFilm[] = "Kelvo - ";
constexpr char kTitleNoSound[] = "Kelvo (No Audio) - ";
constexpr char kTitleNoPicture[] = "Kelvo (No Video) - ";
constexpr char kCannotOpen[] = "Impossibile Aprire il file VIDEO Specificato";
constexpr char kStartFailedCaption[] = "Impossibile aprire il file!";
constexpr char kMenu[] = "MENUKELVOWIN";

constexpr int kLightGrey = 7;
constexpr int kExitThreshold = 100;
constexpr UINT_PTR kWaitingCommandsTimer = 1;
constexpr UINT kWaitingCommandsMs = 20;
constexpr LONG kSoundOnlyWidth = 400;
constexpr LONG kSoundOnlyExtraHeight = 160;

} // namespace

KelvoWinkel::KelvoWinkel() {
    SetTitle(kTitle);
    SetBackgroundColour(LUM::IndexColor(kLightGrey));
    SetPaintBackground(true);
    SetMenuHandle(LoadMenuA(lum.Instance(), kMenu));
}

KelvoWinkel::~KelvoWinkel() {
    // Window and players go first: what they report meanwhile still needs the members.
    if (HasWindow()) DestroyWindow(Window());
    CloseWhatIsOpen();
    if (GetMenuItemCount(MenuHandle()) >= 0) DestroyMenu(MenuHandle());
}

bool KelvoWinkel::Run(CWin* owner, const CString& file_name, std::uint32_t options) {
    options_ = options == 0 ? kPlainStart : options;
    if (terminal_) options_ |= kStartExitAtEnd;
    current_file_ = file_name;
    play_marker_ = 0;
    return ModalRun(owner) != 0;
}

// --- messages ----------------------------------------------------------------------------------

bool KelvoWinkel::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_CLOSE && OnClose()) return true;
    if (CWin::HandleMessage(message, wparam, lparam)) return true;
    switch (message) {
    case WM_CREATE:
        return OnCreate();
    case WM_SIZE:
        return OnSize();
    case WM_COMMAND:
        return OnCommandMessage(wparam, lparam);
    case WM_TIMER:
        return OnTimer(wparam);
    default:
        return false;
    }
}

bool KelvoWinkel::OnCreate() {
    CreateChildren();
    if ((options_ & kStartOpenAndPlay) != 0 && !current_file_.IsEmpty()) {
        Post(WM_COMMAND, static_cast<WPARAM>(Command::OpenNamed),
             reinterpret_cast<LPARAM>(current_file_.Text()));
    }
    if ((options_ & kStartTopmost) != 0) ShowTopmost(true);
    return false;
}

void KelvoWinkel::CreateChildren() {
    video_.SetParent(this);
    video_.SetStyle(WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | WS_CLIPCHILDREN);
    video_.SetExtendedStyle(WS_EX_STATICEDGE);
    video_.SetPlacement(0, kStripHeight, 0, 0);
    video_.Create();
    video_.SetAnchors({.left = 0, .right = 0, .top = kStripHeight, .bottom = 0});

    position_bar_.SetParent(this);
    position_bar_.SetStyle(WS_CHILD | WS_VISIBLE);
    position_bar_.SetExtendedStyle(WS_EX_STATICEDGE);
    position_bar_.SetPlacement(PositionBarLeft(), kPositionBarTop, 0, kPositionBarHeight);
    position_bar_.Create();
    position_bar_.SetAnchors({.left = PositionBarLeft(),
                              .right = kPositionBarRightMargin,
                              .top = kPositionBarTop,
                              .bottom = -1});
    OnSize();
}

bool KelvoWinkel::OnSize() {
    video_.ReapplyAnchors();
    position_bar_.ReapplyAnchors();
    return false;
}

// A window that is busy goes as soon as it is done.
bool KelvoWinkel::OnClose() {
    if (!IsBusy() || !RunsModally()) return false;
    EndModal(0);
    return true;
}

bool KelvoWinkel::OnTimer(WPARAM timer) {
    if (timer != kWaitingCommandsTimer) return false;
    if (IsBusy()) return true;
    KillTimer(Window(), kWaitingCommandsTimer);
    for (const WaitingCommand& command : std::exchange(waiting_commands_, {})) {
        Post(WM_COMMAND, command.wparam, command.lparam);
    }
    return true;
}

bool KelvoWinkel::OnCommandMessage(WPARAM wparam, LPARAM lparam) {
    const auto command = static_cast<Command>(LOWORD(wparam));
    if (IsBusy() && command != Command::Exit) {
        waiting_commands_.push_back({wparam, lparam});
        SetTimer(Window(), kWaitingCommandsTimer, kWaitingCommandsMs, nullptr);
        return true;
    }
    const bool was_busy = std::exchange(carries_out_command_, true);
    const bool handled = OnCommand(command, lparam);
    carries_out_command_ = was_busy;
    return handled;
}

bool KelvoWinkel::OnCommand(Command command, LPARAM lparam) {
    switch (command) {
    case Command::CloseFilm:
        OnCloseFilm();
        return true;
    case Command::OpenNamed:
        OnOpenNamed(reinterpret_cast<const char*>(lparam));
        return true;
    case Command::Exit:
        EndModal(0);
        return true;
    case Command::NaturalSize:
    case Command::Quarter:
    case Command::Half:
    case Command::ThreeQuarters:
    case Command::OneAndAHalf:
    case Command::Twice:
        OnZoom(command);
        return true;
    case Command::FitToWindow:
        if (video_.IsTrackOpen()) video_.FitToWindow();
        return true;
    case Command::Continuous:
        OnToggleContinuous();
        return true;
    case Command::Topmost:
        ShowTopmost(!topmost_);
        return true;
    default:
        return OnTransportCommand(command);
    }
}

INT_PTR KelvoWinkel::HandleNotification(int code, INT_PTR a, INT_PTR b) {
    switch (code) {
    case NotifyStarted:
    case NotifyProgress:
        OnPosition(code, static_cast<int>(a), static_cast<int>(b));
        break;
    case NotifyAudioStarted:
    case NotifyAudioBuffer:
        OnPosition(code, audio_.PlayedFrameCounter(), audio_.FrameCount());
        break;
    case NotifyAudioClosed:
    case NotifyEnded:
        OnPlaybackEnded();
        break;
    case kPositionClicked:
        if (IsBusy()) break; // as good as a click on an inert window
        carries_out_command_ = true;
        OnSeek(static_cast<int>(a));
        carries_out_command_ = false;
        break;
    default:
        break;
    }
    return 0;
}

void KelvoWinkel::OnPlaybackEnded() {
    if ((options_ & kStartExitAtEnd) != 0 && play_marker_ > kExitThreshold) {
        Post(WM_COMMAND, static_cast<WPARAM>(Command::Exit), 0);
    }
}

// --- opening and closing -----------------------------------------------------------------------

bool KelvoWinkel::Open(const CString& name) {
    const TrackNames names = ResolveTrackNames(name);
    CloseWhatIsOpen();
    if (!video_.OpenVideo(names.video)) return OpenSoundOnly(names.audio);
    RememberOpened(names.video);
    video_.StepFrames(-video_.CurrentFrame());
    SetFilmTitle(audio_.OpenAudio(names.audio) ? kTitleFilm : kTitleNoSound, names.video);
    SizeToFilm();
    return true;
}

bool KelvoWinkel::OpenSoundOnly(const CString& audio_name) {
    if (!audio_.OpenAudio(audio_name)) {
        SetTitle(kTitle);
        return ErrorBox(kCannotOpen);
    }
    SetFilmTitle(kTitleNoPicture, audio_name);
    audio_.SetParent(this);
    no_video_ = true;
    SetWindowPos(Window(), nullptr, 0, 0, kSoundOnlyWidth,
                 video_.DisplayHeight() + kSoundOnlyExtraHeight, SWP_NOMOVE | SWP_NOZORDER);
    RememberOpened(audio_name);
    return true;
}

void KelvoWinkel::CloseWhatIsOpen() {
    if (video_.IsTrackOpen()) {
        audio_.CloseAudio();
        video_.CloseVideo();
    }
    if (audio_.IsTrackOpen()) {
        audio_.StopAudio();
        audio_.CloseAudio();
    }
    no_video_ = false;
    audio_.SetParent(nullptr);
    position_bar_.Update({.value = 0, .total = 1});
}

void KelvoWinkel::RememberOpened(const CString& name) {
    last_directory_ = PathDirectory(name);
}

void KelvoWinkel::SetFilmTitle(const char* prefix, const CString& name) {
    SetTitle((CString(prefix) + PathTitle(name)).Text());
}

void KelvoWinkel::OnOpenNamed(const char* name) {
    if (!Open(CString(name))) {
        ErrorBox(current_file_, Caption{kStartFailedCaption});
        play_marker_ = kPlayedOnce;
        // Nobody sees the empty window, and nobody could close it.
        if (terminal_) EndModal(1);
        return;
    }
    InvalidateRect(Window(), nullptr, TRUE);
    lum.ProcessMessages();
    Post(WM_COMMAND, static_cast<WPARAM>(Command::Play), 0);
}

void KelvoWinkel::OnCloseFilm() {
    StopPlayers();
    CloseWhatIsOpen();
    SetTitle(kTitle);
    video_.Redraw();
}

// --- options -----------------------------------------------------------------------------------

void KelvoWinkel::CheckMenu(Command command, bool checked) const {
    CheckMenuItem(MenuHandle(), static_cast<UINT>(command),
                  MF_BYCOMMAND | (checked ? MF_CHECKED : MF_UNCHECKED));
}

void KelvoWinkel::OnToggleContinuous() {
    video_.ToggleContinuous();
    audio_.SetContinuous(video_.IsContinuous());
    CheckMenu(Command::Continuous, video_.IsContinuous());
}

void KelvoWinkel::ShowTopmost(bool topmost) {
    topmost_ = topmost;
    if (topmost_) {
        SetTopmost();
    } else {
        SetNotTopmost();
    }
    CheckMenu(Command::Topmost, topmost_);
}

} // namespace kelvo
