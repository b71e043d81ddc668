// How the main window opens films, by the dialog, by name and from the recent ones, and closes
// them.

#include "app/KelvoWinkel.h"
#include "app/OpenKLVFileDlg.h"
#include "framework/base/FilePaths.h"
#include "framework/window/LUM.h"
#include "media/TrackNames.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr char kTitle[] = "Kelvo";
constexpr char kTitleFilm[] = "Kelvo - ";
constexpr char kTitleNoSound[] = "Kelvo (No Audio) - ";
constexpr char kTitleNoPicture[] = "Kelvo (No Video) - ";
constexpr char kCannotOpen[] = "Impossibile Aprire il file VIDEO Specificato";
constexpr char kStartFailedCaption[] = "Impossibile aprire il file!";
constexpr char kOpenTitle[] = "Apertura Filmato";
constexpr char kOpenFilter[] = "Multimediali ZUVA|*.kva;*.kvf|Audio Video ZUVA *.kva|*.kva|"
                               "ZUVA/Filmati *.kvf|*.kvf|ZUVA/Audio *.kaf|*.kaf|";

constexpr LONG kSoundOnlyWidth = 400;
constexpr LONG kSoundOnlyExtraHeight = 160;

} // namespace

CString KelvoWinkel::ChooseFilm() {
    chooses_film_ = true;
    OpenKLVFileDlg dialog;
    CString name = dialog.Run(this, last_directory_, kOpenFilter, kOpenTitle);
    chooses_film_ = false;
    return name;
}

bool KelvoWinkel::Open(const CString& name) {
    if (!name.IsEmpty()) return OpenFilm(name);
    const CString chosen = ChooseFilm();
    return !chosen.IsEmpty() && OpenFilm(chosen);
}

bool KelvoWinkel::OpenFilm(const CString& name) {
    const TrackNames names = ResolveTrackNames(name);
    CloseWhatIsOpen();
    if (!video_.OpenVideo(names.video)) return OpenSoundOnly(names.audio);
    RememberOpened(names.video);
    video_.StepFrames(-video_.CurrentFrame());
    SetFilmTitle(audio_.OpenAudio(names.audio) ? kTitleFilm : kTitleNoSound, names.video);
    SizeToFilm();
    ShowWhereItStands();
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
    sound_name_ = audio_name;
    SetWindowPos(Window(), nullptr, 0, 0, kSoundOnlyWidth,
                 video_.DisplayHeight() + kSoundOnlyExtraHeight, SWP_NOMOVE | SWP_NOZORDER);
    RememberOpened(audio_name);
    ShowWhereItStands();
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
    button_bar_.ResetTransport();
    times_.Clear();
}

// At once, too: a program that is killed, or another Kelvo that starts, knows the film.
void KelvoWinkel::RememberOpened(const CString& name) {
    recent_files_.AddFile(MenuHandle(), name, 0);
    recent_files_.Save(recent_files_name_);
    last_directory_ = PathDirectory(name);
}

void KelvoWinkel::SetFilmTitle(const char* prefix, const CString& name) {
    SetTitle((CString(prefix) + PathTitle(name)).Text());
}

void KelvoWinkel::OnOpen() {
    Open({});
    InvalidateRect(Window(), nullptr, TRUE);
}

void KelvoWinkel::OnOpenRecent(UINT command) {
    Open(recent_files_.PathOf(command));
    InvalidateRect(Window(), nullptr, TRUE);
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

} // namespace kelvo
