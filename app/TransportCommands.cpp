// Go to start, fast backward, stop, pause, play, fast forward, go to end, and the position bar's
// seeking; and how the players' reports become position and time.

#include "app/KelvoWinkel.h"
#include "app/TerminalProgress.h"
#include "platform/base/clock.h"
#include "platform/base/threads.h"
#include "platform/desktop/messages.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr char kRefusedCaption[] = "Impossibile eseguire";
constexpr char kNoFile[] = "Nessun File Aperto!";
constexpr char kNoFileToForward[] = "Nessun file Aperto!";
constexpr char kNoVideo[] = "Nessun Video Aperto!";

/// Between the picture of a seek and its sound, so that several clicks in a row do not stutter.
constexpr DWORD kSeekPauseMs = 500;
constexpr DWORD kSeekPollMs = 10;

} // namespace

bool KelvoWinkel::OnTransportCommand(Command command) {
    switch (command) {
    case Command::ToStart:
        OnToStart();
        return true;
    case Command::FastBackward:
        OnFastBackward();
        return true;
    case Command::Stop:
        OnStop();
        return true;
    case Command::Pause:
        OnPause();
        return true;
    case Command::Play:
        OnPlay();
        return true;
    case Command::FastForward:
        OnFastForward();
        return true;
    case Command::ToEnd:
        OnToEnd();
        return true;
    default:
        return false;
    }
}

bool KelvoWinkel::RefuseWith(const char* text) const {
    return ErrorBox(text, Caption{kRefusedCaption});
}

void KelvoWinkel::StopPlayers() {
    video_.StopPlayback();
    audio_.StopAudio();
}

void KelvoWinkel::WaitUntilStopped() const {
    while (video_.IsRunning() || audio_.IsPlaying()) {
        Sleep(1);
    }
}

void KelvoWinkel::OnToStart() {
    if (IsNothingOpen()) {
        RefuseWith(kNoFile);
        return;
    }
    audio_.StopAudio();
    video_.StopPlayback();
    if (video_.IsTrackOpen()) video_.StepFrames(-video_.CurrentFrame());
    audio_.SetPosition(0);
}

void KelvoWinkel::OnToEnd() {
    if (IsNothingOpen()) {
        RefuseWith(kNoFile);
        return;
    }
    audio_.StopAudio();
    video_.StopPlayback();
    if (video_.IsTrackOpen()) video_.StepFrames(video_.FrameCount() - video_.CurrentFrame());
    audio_.SetPosition(audio_.FrameCount() - 1);
}

void KelvoWinkel::OnFastBackward() {
    if (!video_.IsTrackOpen()) {
        RefuseWith(kNoVideo);
        return;
    }
    StopPlayers();
    WaitUntilStopped();
    video_.FastBackward();
}

void KelvoWinkel::OnFastForward() {
    if (!video_.IsTrackOpen()) {
        if (audio_.IsTrackOpen()) {
            audio_.FastForward();
        } else {
            RefuseWith(kNoFileToForward);
        }
        return;
    }
    StopPlayers();
    WaitUntilStopped();
    video_.FastForward();
}

void KelvoWinkel::OnStop() {
    if (IsNothingOpen()) return;
    StopPlayers();
    if (video_.IsTrackOpen()) audio_.SyncToVideo(video_);
}

// The picture is held together with its sound: a film whose audio frames are long would otherwise
// run on to the end of the one that is heard, and one without sound would not stop at all.
void KelvoWinkel::OnPause() {
    if (no_video_) {
        audio_.TogglePause();
        return;
    }
    if (!video_.IsTrackOpen() || !video_.IsRunning()) return;
    const bool hold = !video_.IsPictureHeld();
    video_.HoldPicture(hold);
    if (hold) {
        audio_.Pause();
    } else {
        audio_.Resume();
    }
}

void KelvoWinkel::OnPlay() {
    if (IsNothingOpen()) return;
    StopPlayers();
    WaitUntilStopped();
    RewindAtEnd();
    PlayFromHere();
    play_marker_ = kPlayedOnce;
}

// Playing a film that has been played to its end begins anew.
void KelvoWinkel::RewindAtEnd() {
    if (video_.IsTrackOpen()) {
        if (video_.CurrentFrame() >= video_.FrameCount()) {
            video_.StepFrames(-video_.CurrentFrame());
        }
    } else if (audio_.CurrentFrame() >= audio_.FrameCount()) {
        audio_.SetPosition(0);
    }
}

void KelvoWinkel::PlayFromHere() {
    const bool has_sound = audio_.IsTrackOpen();
    if (video_.IsTrackOpen()) {
        audio_.SyncToVideo(video_);
        video_.PlayNormal(&audio_);
    }
    // A machine without a sound device still shows the film, on its own period.
    if (has_sound && !audio_.Play(nullptr) && video_.IsTrackOpen()) video_.PlayNormal(nullptr);
}

// Clicks that come faster than the pause would queue up for minutes, each played for a moment: the
// last one starts the film.
bool KelvoWinkel::WaitForNextSeek() const {
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < kSeekPauseMs) {
        Sleep(kSeekPollMs);
        MSG click{};
        const bool waits = PeekMessageA(&click, position_bar_.Window(), WM_LBUTTONDOWN,
                                        WM_LBUTTONDOWN, PM_NOREMOVE) != FALSE;
        if (waits && click.message == WM_LBUTTONDOWN) return true; // WM_QUIT passes every filter
    }
    return false;
}

void KelvoWinkel::OnSeek(int position) {
    if (IsNothingOpen()) return;
    video_.StopPlayback();
    audio_.StopAudio();
    if (!video_.IsTrackOpen()) {
        audio_.SetPosition(std::clamp(position, 0, std::max(audio_.FrameCount() - 1, 0)));
        audio_.Play(nullptr);
        return;
    }
    video_.StepFrames(position - video_.CurrentFrame());
    audio_.SyncToVideo(video_);
    UpdateWindow(video_.Window());
    if (!WaitForNextSeek()) PlayFromHere();
}

// --- position and time -------------------------------------------------------------------------

void KelvoWinkel::OnPosition(int code, int current, int total) {
    const bool is_audio = code == NotifyAudioStarted || code == NotifyAudioBuffer;
    const int per_second = std::max(is_audio ? audio_.nFramesAlSec() : video_.nImgAlSec(), 1);
    ShowPosition(current, total);
    const bool is_start = code == NotifyStarted || code == NotifyAudioStarted;
    ShowTime(code, (is_start ? total : current) / per_second);
}

void KelvoWinkel::ShowPosition(int current, int total) {
    position_bar_.Update({.value = current, .total = total});
}

void KelvoWinkel::ShowTime(int code, int seconds) {
    if (!terminal_) return;
    if (code == NotifyStarted || code == NotifyAudioStarted) {
        total_seconds_ = seconds;
    } else if (shown_seconds_.exchange(seconds) != seconds) {
        PrintProgress(seconds, total_seconds_);
    }
}

} // namespace kelvo
