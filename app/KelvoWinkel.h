#pragma once
// The player's main window: it turns menu commands and the players' notifications into calls on the
// two players, opens films, and titles and sizes itself to the picture. What the transport commands
// do stands in TransportCommands.cpp, how the window takes its size in WindowSizing.cpp.

#include "framework/base/CString.h"
#include "framework/window/CProgressBar.h"
#include "framework/window/CWin.h"
#include "playback/AudioPlayerkel.h"
#include "playback/VideoPlayerkel.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace kelvo {

/// What Run does besides showing the window; bits that may be added up.
enum StartOption : std::uint32_t {
    kStartNaturalSize =
        0x01,               ///< picture in its own size, window exactly around it, at the top left
    kStartByScreen = 0x02,  ///< the same, or the whole screen where the picture is too large for it
    kStartFitWindow = 0x04, ///< picture fitted into the window as it is
    kStartOpenAndPlay = 0x08, ///< open the given file and play it
    kStartExitAtEnd = 0x10,   ///< the program ends with the film
    kStartTopmost = 0x20,
};
inline constexpr std::uint32_t kPlainStart = kStartByScreen | kStartOpenAndPlay | kStartExitAtEnd;
inline constexpr std::uint32_t kCommandLineStart =
    kStartNaturalSize | kStartOpenAndPlay | kStartTopmost;

/// Numbers of the commands, as the menu resource has them.
enum class Command : WORD {
    Open = 101,
    CloseFilm = 102,
    OpenNamed = 249, ///< lParam: the name
    ToStart = 401,
    FastBackward = 402,
    Stop = 403,
    Pause = 404,
    Play = 405,
    FastForward = 406,
    ToEnd = 407,
    NaturalSize = 1001,
    Quarter = 1002,
    Half = 1003,
    ThreeQuarters = 1004,
    OneAndAHalf = 1005,
    Twice = 1006,
    FitToWindow = 1007,
    Continuous = 1015,
    Topmost = 1016,
    Exit = 10005,
};

class KelvoWinkel : public CWin {
public:
    KelvoWinkel();
    ~KelvoWinkel() override;
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    /// Codes of the players and of the position bar; those of the picture come from its thread.
    INT_PTR HandleNotification(int code, INT_PTR a, INT_PTR b) override;

    /// Runs the window as the program's message loop.
    /// @param file_name  may be empty
    /// @param options    StartOption bits; 0 means kPlainStart
    /// @return whether the loop ended with a result other than 0
    bool Run(CWin* owner, const CString& file_name, std::uint32_t options);
    /// For a machine without a display: progress goes to the terminal, and a film that cannot be
    /// opened ends the program with result 1.
    void ShowProgressOnTerminal() { terminal_ = true; }

    /// Opens a film, or the one track of it that is there; what was open is closed first.
    bool Open(const CString& name);

    const AudioPlayerkel& Audio() const { return audio_; }
    const VideoPlayerkel& Video() const { return video_; }
    const CProgressBar& PositionBar() const { return position_bar_; }

private:
    struct WaitingCommand {
        WPARAM wparam;
        LPARAM lparam;
    };
    static constexpr int kPlayedOnce = 200; ///< of play_marker_

    bool OnCreate();
    bool OnSize();
    bool OnClose();
    bool OnTimer(WPARAM timer);
    bool OnCommandMessage(WPARAM wparam, LPARAM lparam);
    bool OnCommand(Command command, LPARAM lparam);
    bool OnTransportCommand(Command command);
    void CreateChildren();

    /// Whether a command or the reading of sound is under way. Its box dispatches what is queued,
    /// and that must not take the film away or start it anew meanwhile.
    bool IsBusy() const { return carries_out_command_ || audio_.IsRefilling(); }

    // Opening
    void CloseWhatIsOpen();
    bool OpenSoundOnly(const CString& audio_name);
    void OnOpenNamed(const char* name);
    void OnCloseFilm();
    void SetFilmTitle(const char* prefix, const CString& name);
    void RememberOpened(const CString& name);

    // Sizes
    void SizeToFilm();
    void SizeNaturally();
    void SizeByScreen();
    void SizeByFit();
    void SizeAroundPicture();
    RECT RoomForPicture() const;
    void OnZoom(Command command);
    void OnToggleContinuous();
    void ShowTopmost(bool topmost);
    void CheckMenu(Command command, bool checked) const;

    // Transport
    bool IsNothingOpen() const { return !video_.IsTrackOpen() && !no_video_; }
    bool RefuseWith(const char* text) const;
    void StopPlayers();
    void WaitUntilStopped() const;
    bool WaitForNextSeek() const;
    void PlayFromHere();
    void RewindAtEnd();
    void OnToStart();
    void OnFastBackward();
    void OnStop();
    void OnPause();
    void OnPlay();
    void OnFastForward();
    void OnToEnd();
    void OnSeek(int position);

    // Position and time
    void OnPosition(int code, int current, int total);
    void OnPlaybackEnded();
    void ShowPosition(int current, int total);
    void ShowTime(int code, int seconds);

    AudioPlayerkel audio_;
    VideoPlayerkel video_;
    CProgressBar position_bar_;
    /// Above 100 once Play was chosen, or the film of the start failed. UI thread writes, the
    /// picture's thread reads.
    std::atomic<int> play_marker_ = 0;
    bool topmost_ = false;
    CString current_file_;
    std::uint32_t options_ = 0;
    bool no_video_ = false;
    CString last_directory_; ///< of the last film opened
    bool carries_out_command_ = false;
    std::vector<WaitingCommand> waiting_commands_; ///< came while busy; the oldest first
    bool terminal_ = false;
    std::atomic<int> total_seconds_ = 0; ///< either thread, for the terminal's line
    std::atomic<int> shown_seconds_ = -1;
};

} // namespace kelvo
