#pragma once
// The player's main window: it turns commands of its menu and its button bar and the players'
// notifications into calls on the two players. How films are opened and closed stands in
// OpeningFilms.cpp, what the transport commands do in TransportCommands.cpp, how the window takes
// its size in WindowSizing.cpp; which buttons are shown is TransportBar's, the times are
// TimeDisplay's.

#include "app/Commands.h"
#include "app/DxToolkel.h"
#include "app/LastFileslum.h"
#include "app/TimeDisplay.h"
#include "app/TransportBar.h"
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

class KelvoWinkel : public CWin {
public:
    /// @param recent_files  the file that keeps the recent films between runs
    explicit KelvoWinkel(CString recent_files = RecentFilesName());
    ~KelvoWinkel() override;
    /// "lstfls.dat" where the program keeps its files.
    static CString RecentFilesName();
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    /// Codes of the players, the position bar and the volume slider; those of the picture come from
    /// its thread.
    INT_PTR HandleNotification(int code, INT_PTR a, INT_PTR b) override;

    /// Runs the window as the program's message loop.
    /// @param file_name  may be empty
    /// @param options    StartOption bits; 0 means kPlainStart
    /// @return whether the loop ended with a result other than 0
    bool Run(CWin* owner, const CString& file_name, std::uint32_t options);
    /// For a machine without a display: progress goes to the terminal, and a film that cannot be
    /// opened ends the program with result 1.
    void ShowProgressOnTerminal();

    /// Opens a film, or the one track of it that is there; what was open is closed first. Without a
    /// name a person chooses one; who cancels changes nothing.
    bool Open(const CString& name);

    const AudioPlayerkel& Audio() const { return audio_; }
    const VideoPlayerkel& Video() const { return video_; }
    const CProgressBar& PositionBar() const { return position_bar_; }
    const TransportBar& Buttons() const { return button_bar_; }
    const DxToolkel& ToolDialog() const { return tool_dialog_; }
    const LastFileslum& RecentFiles() const { return recent_files_; }

private:
    struct WaitingCommand {
        WPARAM wparam;
        LPARAM lparam;
    };
    static constexpr int kPlayedOnce = 200; ///< of play_marker_

    bool OnCreate();
    bool OnSize();
    bool OnClose();
    bool OnKey(WPARAM key);
    bool OnTimer(WPARAM timer);
    bool OnCommandMessage(WPARAM wparam, LPARAM lparam);
    bool OnCommand(Command command, LPARAM lparam);
    bool OnTransportCommand(Command command);
    void CreateChildren();
    void CreatePositionBar();

    /// Whether a command or the reading of sound is under way. Its box dispatches what is queued,
    /// and that must not take the film away or start it anew meanwhile.
    bool IsBusy() const { return carries_out_command_ || audio_.IsRefilling(); }

    // Opening
    void OnOpen();
    void OnOpenRecent(UINT command);
    CString ChooseFilm();
    void CloseWhatIsOpen();
    bool OpenFilm(const CString& name);
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
    bool Refuse(Command command, const char* text);
    void StopPlayers();
    void StopAndWait();
    bool WaitForNextSeek() const;
    void PlayFromHere();
    bool PlaySound();
    void KeepSoundAlone(int position);
    void PlayChosenFilm();
    void RewindAtEnd();
    void OnToStart();
    void OnFastBackward();
    void OnStop();
    void OnPause();
    void OnPlay();
    void OnFastForward();
    void ForwardSound();
    void OnToEnd();
    void OnSeek(int position);

    // Position and time
    void OnPosition(int code, int current, int total);
    void OnPlaybackEnded(int code);
    void ShowPlace(int current, int total, int per_second);
    void ShowWhereItStands();
    void OnVolume(int volume);

    AudioPlayerkel audio_;
    VideoPlayerkel video_;
    CProgressBar position_bar_;
    LastFileslum recent_files_;
    /// Above 100 once Play was chosen, or the film of the start failed. UI thread writes, the
    /// picture's thread reads.
    std::atomic<int> play_marker_ = 0;
    bool topmost_ = false;
    TransportBar button_bar_;
    DxToolkel tool_dialog_;
    CString current_file_;
    std::uint32_t options_ = 0; ///< fixed while the window runs
    bool no_video_ = false;
    CString sound_name_;     ///< of the sound that is open without a picture
    CString last_directory_; ///< of the last film opened
    CString recent_files_name_;
    TimeDisplay times_{*this, position_bar_, tool_dialog_};
    WORD volume_ = 0xFFFF; ///< as the slider was left; a device that opens gets it
    bool carries_out_command_ = false;
    /// A person is choosing a film: the end of the one that plays does not end the program then.
    /// UI thread writes, the picture's thread reads.
    std::atomic<bool> chooses_film_ = false;
    std::vector<WaitingCommand> waiting_commands_; ///< came while busy; the oldest first
    bool terminal_ = false;
};

} // namespace kelvo
