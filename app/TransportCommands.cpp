// Go to start, fast backward, stop, pause, play, fast forward, go to end, and the position bar's
// seeking; and how the players' reports become position and time.

#include "app/KelvoWinkel.h"
#include "framework/window/LUM.h"
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
constexpr int kLoudest = 0xFFFF;

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

bool KelvoWinkel::Refuse(Command command, const char* text) {
    button_bar_.Raise(command);
    return ErrorBox(text, Caption{kRefusedCaption});
}

void KelvoWinkel::StopPlayers() {
    video_.StopPlayback();
    audio_.StopAudio();
}

void KelvoWinkel::StopAndWait() {
    StopPlayers();
    while (video_.IsRunning() || audio_.IsPlaying()) {
        Sleep(1);
    }
}

void KelvoWinkel::OnToStart() {
    if (IsNothingOpen()) {
        Refuse(Command::ToStart, kNoFile);
        return;
    }
    audio_.StopAudio();
    video_.StopPlayback();
    if (video_.IsTrackOpen()) video_.StepFrames(-video_.CurrentFrame());
    audio_.SetPosition(0);
    button_bar_.ResetTransport();
    ShowWhereItStands();
}

void KelvoWinkel::OnToEnd() {
    if (IsNothingOpen()) {
        Refuse(Command::ToEnd, kNoFile);
        return;
    }
    audio_.StopAudio();
    video_.StopPlayback();
    if (video_.IsTrackOpen()) video_.StepFrames(video_.FrameCount() - video_.CurrentFrame());
    audio_.SetPosition(audio_.FrameCount() - 1);
    button_bar_.ResetTransport();
    ShowWhereItStands();
}

void KelvoWinkel::OnFastBackward() {
    if (!video_.IsTrackOpen()) {
        Refuse(Command::FastBackward, kNoVideo);
        return;
    }
    button_bar_.SetTransportBusy(WithPause::Yes);
    StopAndWait();
    video_.FastBackward();
}

void KelvoWinkel::OnFastForward() {
    if (video_.IsTrackOpen()) {
        button_bar_.SetTransportBusy(WithPause::Yes);
        StopAndWait();
        video_.FastForward();
    } else if (!audio_.IsTrackOpen()) {
        Refuse(Command::FastForward, kNoFileToForward);
    } else {
        ForwardSound();
    }
}

void KelvoWinkel::ForwardSound() {
    const int position = audio_.CurrentFrame();
    if (audio_.FastForward()) {
        audio_.SetVolume(volume_);
        button_bar_.SetTransportBusy(WithPause::Yes);
    } else {
        button_bar_.Raise(Command::FastForward);
        KeepSoundAlone(position);
    }
}

void KelvoWinkel::OnStop() {
    if (IsNothingOpen()) {
        button_bar_.Raise(Command::Stop);
        return;
    }
    button_bar_.RestoreTransport();
    StopPlayers();
    if (video_.IsTrackOpen()) audio_.SyncToVideo(video_);
}

// The picture is held together with its sound: a film whose audio frames are long would otherwise
// run on to the end of the one that is heard, and one without sound would not stop at all.
void KelvoWinkel::OnPause() {
    const bool plays = no_video_ ? audio_.IsPlaying() : video_.IsRunning();
    if (IsNothingOpen() || !plays) {
        button_bar_.Raise(Command::Pause);
        return;
    }
    const bool hold = button_bar_.IsDown(Command::Pause);
    if (!no_video_) video_.HoldPicture(hold);
    if (hold) {
        audio_.Pause();
    } else {
        audio_.Resume();
    }
}

void KelvoWinkel::OnPlay() {
    if (IsNothingOpen()) {
        PlayChosenFilm();
        return;
    }
    button_bar_.SetTransportBusy(WithPause::No);
    StopAndWait();
    RewindAtEnd();
    PlayFromHere();
    play_marker_ = kPlayedOnce;
}

void KelvoWinkel::PlayChosenFilm() {
    if (!Open({})) {
        button_bar_.Raise(Command::Play);
        return;
    }
    InvalidateRect(Window(), nullptr, TRUE);
    lum.ProcessMessages();
    if (video_.IsTrackOpen()) Sleep(kSeekPauseMs);
    PlayFromHere();
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

// The bar shows that something plays, whichever road led here; nothing is paused any more.
void KelvoWinkel::PlayFromHere() {
    button_bar_.ShowClick(Command::Play);
    button_bar_.Raise(Command::Pause);
    button_bar_.SetTransportBusy(WithPause::No);
    const bool has_sound = audio_.IsTrackOpen();
    bool plays = false;
    if (video_.IsTrackOpen()) {
        audio_.SyncToVideo(video_);
        plays = video_.PlayNormal(&audio_);
    }
    if (has_sound && PlaySound()) return;
    // A machine without a sound device still shows the film, on its own period.
    if (has_sound && video_.IsTrackOpen()) plays = video_.PlayNormal(nullptr);
    if (!plays) button_bar_.ResetTransport();
}

bool KelvoWinkel::PlaySound() {
    const int position = audio_.CurrentFrame();
    if (!audio_.Play(nullptr)) {
        KeepSoundAlone(position);
        return false;
    }
    audio_.SetVolume(volume_);
    tool_dialog_.SetVolumePosition(audio_.GetVolume());
    return true;
}

// A device that refuses leaves the track closed. Sound alone is opened anew where it stood, so that
// the next Play tries again: whoever holds the device now may be gone by then.
void KelvoWinkel::KeepSoundAlone(int position) {
    if (!no_video_ || audio_.IsTrackOpen()) return;
    if (audio_.OpenAudio(sound_name_)) {
        audio_.SetPosition(position);
    } else {
        OnCloseFilm();
    }
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
        ShowWhereItStands();
        PlayFromHere();
        return;
    }
    video_.StepFrames(position - video_.CurrentFrame());
    audio_.SyncToVideo(video_);
    ShowWhereItStands();
    UpdateWindow(video_.Window());
    if (!WaitForNextSeek()) PlayFromHere();
}

void KelvoWinkel::OnVolume(int volume) {
    volume_ = static_cast<WORD>(std::clamp(volume, 0, kLoudest));
    audio_.SetVolume(volume_);
}

// --- position and time -------------------------------------------------------------------------

void KelvoWinkel::OnPosition(int code, int current, int total) {
    const bool is_audio = code == NotifyAudioStarted || code == NotifyAudioBuffer;
    const int per_second = std::max(is_audio ? audio_.nFramesAlSec() : video_.nImgAlSec(), 1);
    times_.ShowPosition(current, total);
    if (code == NotifyStarted || code == NotifyAudioStarted) {
        times_.ShowTotal(total / per_second);
    } else {
        times_.ShowElapsed(current / per_second);
    }
}

void KelvoWinkel::ShowPlace(int current, int total, int per_second) {
    times_.ShowPosition(current, total);
    times_.ShowTotal(total / std::max(per_second, 1));
    times_.ShowElapsed(current / std::max(per_second, 1));
}

// While nothing plays, nobody reports where the film stands.
void KelvoWinkel::ShowWhereItStands() {
    if (video_.IsTrackOpen()) {
        ShowPlace(video_.CurrentFrame(), video_.FrameCount(), video_.nImgAlSec());
    } else if (audio_.IsTrackOpen()) {
        ShowPlace(audio_.CurrentFrame(), audio_.FrameCount(), audio_.nFramesAlSec());
    }
}

} // namespace kelvo
