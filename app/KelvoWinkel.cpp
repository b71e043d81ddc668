#include "app/KelvoWinkel.h"

#include "app/PositionBarGeometry.h"
#include "framework/base/FilePaths.h"
#include "framework/window/LUM.h"
#include "platform/desktop/menus.h"
#include "platform/desktop/messages.h"

#include <utility>

namespace kelvo {
namespace {

constexpr char kTitle[] = "Kelvo";
constexpr char kMenu[] = "MENUKELVOWIN";
constexpr char kRecentFiles[] = "lstfls.dat";

constexpr int kLightGrey = 7;
constexpr int kFilePopup = 0;
constexpr std::int32_t kMostRecentFiles = 10;
constexpr int kExitThreshold = 100;
constexpr UINT_PTR kWaitingCommandsTimer = 1;
constexpr UINT kWaitingCommandsMs = 20;

} // namespace

CString KelvoWinkel::RecentFilesName() {
    return ProgramDirectory() + kRecentFiles;
}

KelvoWinkel::KelvoWinkel(CString recent_files)
    : recent_files_(static_cast<UINT>(Command::FirstRecent), kFilePopup,
                    static_cast<UINT>(Command::Exit), kMostRecentFiles),
      recent_files_name_(std::move(recent_files)) {
    SetTitle(kTitle);
    SetBackgroundColour(LUM::IndexColor(kLightGrey));
    SetPaintBackground(true);
    recent_files_.Load(recent_files_name_);
    SetMenuHandle(LoadMenuA(lum.Instance(), kMenu));
}

KelvoWinkel::~KelvoWinkel() {
    recent_files_.Save(recent_files_name_);
    // Window and players go first: what they report meanwhile still needs the members.
    if (HasWindow()) DestroyWindow(Window());
    CloseWhatIsOpen();
    if (GetMenuItemCount(MenuHandle()) >= 0) DestroyMenu(MenuHandle());
}

void KelvoWinkel::ShowProgressOnTerminal() {
    terminal_ = true;
    times_.ShowOnTerminal();
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
    case WM_KEYDOWN:
        return OnKey(wparam);
    case kTimesChanged:
        times_.ShowLabels();
        return true;
    default:
        return false;
    }
}

bool KelvoWinkel::OnCreate() {
    recent_files_.RebuildMenu(MenuHandle(), nullptr);
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

    button_bar_.CreateIn(*this);
    tool_dialog_.CreateModeless(this, DxToolkel::kTemplate);
    tool_dialog_.SetPosition(kToolDialogLeft, kToolDialogTop);
    tool_dialog_.SetVolumePosition(volume_);
    CreatePositionBar();
    OnSize();
}

void KelvoWinkel::CreatePositionBar() {
    position_bar_.SetParent(this);
    position_bar_.SetStyle(WS_CHILD | WS_VISIBLE);
    position_bar_.SetExtendedStyle(WS_EX_STATICEDGE);
    position_bar_.SetPlacement(PositionBarLeft(), kPositionBarTop, 0, kPositionBarHeight);
    position_bar_.Create();
    position_bar_.SetAnchors({.left = PositionBarLeft(),
                              .right = kPositionBarRightMargin,
                              .top = kPositionBarTop,
                              .bottom = -1});
}

bool KelvoWinkel::OnSize() {
    button_bar_.ReapplyAnchors();
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

// Tab leads from the volume to the buttons and back.
bool KelvoWinkel::OnKey(WPARAM key) {
    if (key != VK_TAB) return false;
    if (button_bar_.HasKeyboard() || !button_bar_.TakeKeyboard()) tool_dialog_.TakeKeyboard();
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
    bool handled = true;
    if (recent_files_.IsRecentCommand(WM_COMMAND, wparam)) {
        OnOpenRecent(static_cast<UINT>(wparam));
    } else {
        handled = OnCommand(command, lparam);
    }
    carries_out_command_ = was_busy;
    return handled;
}

bool KelvoWinkel::OnCommand(Command command, LPARAM lparam) {
    switch (command) {
    case Command::Open:
        OnOpen();
        return true;
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
        // One that no button sent shows on the bar what a click would.
        if (lparam == 0) button_bar_.ShowClick(command);
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
        OnPlaybackEnded(code);
        break;
    case kVolumeChanged:
        OnVolume(static_cast<int>(a));
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

// Sound that was stopped closes its device, too, and whoever presses Stop wants to go on.
void KelvoWinkel::OnPlaybackEnded(int code) {
    if (code == NotifyAudioClosed && !audio_.HasRunOut()) return;
    const bool exits = (options_ & kStartExitAtEnd) != 0 && play_marker_ > kExitThreshold;
    if (exits && !chooses_film_) Post(WM_COMMAND, static_cast<WPARAM>(Command::Exit), 0);
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
