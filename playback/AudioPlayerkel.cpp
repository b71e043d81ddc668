#include "playback/AudioPlayerkel.h"

#include "framework/window/LUM.h"
#include "platform/base/clock.h"
#include "platform/base/threads.h"
#include "platform/desktop/messages.h"
#include "playback/VideoPlayerkel.h"

#include <algorithm>
#include <utility>

namespace kelvo {
namespace {

constexpr char kDeviceRefused[] = "waveOutOpen() error!";

/// Room behind a frame; one byte of it completes a sample that the frames before cut in two.
constexpr std::size_t kBufferSlack = 50;
constexpr int kCloseRounds = 22;
constexpr DWORD kCloseRoundMs = 100;
constexpr DWORD kCloseWaitMs = kCloseRounds * kCloseRoundMs;

} // namespace

AudioPlayerkel::~AudioPlayerkel() {
    CloseAudio();
}

bool AudioPlayerkel::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CWin::HandleMessage(message, wparam, lparam)) return true;
    // What an earlier device still had to say concerns nobody.
    const bool is_input = message >= MM_WIM_OPEN && message <= MM_WIM_DATA;
    const auto device =
        is_input ? reinterpret_cast<WPARAM>(wave_in_) : reinterpret_cast<WPARAM>(wave_out_);
    if (device == 0 || wparam != device) return false;
    return is_input ? HandleInput(message, lparam) : HandleOutput(message, lparam);
}

bool AudioPlayerkel::HandleOutput(UINT message, LPARAM lparam) {
    switch (message) {
    case MM_WOM_OPEN:
        return OnDeviceOpen();
    case MM_WOM_DONE:
        return OnBufferDone(reinterpret_cast<WAVEHDR*>(lparam));
    case MM_WOM_CLOSE:
        return OnDeviceClosed();
    default:
        return false;
    }
}

bool AudioPlayerkel::OpenAudio(const CString& name) {
    if (device_active_) CloseAudio(); // it plays from the buffers that are made anew
    return track_.OpenForRead(name) && FinishOpening();
}

bool AudioPlayerkel::OpenAudioForRecording(const CString& name) {
    if (device_active_) CloseAudio();
    return track_.OpenExisting(name) && FinishOpening();
}

bool AudioPlayerkel::FinishOpening() {
    playing_ = false;
    capturing_ = false;
    paused_ = false;
    stopping_ = false;
    fast_forward_ = false;
    AllocateBuffers();
    SetStyle(Style() & ~WS_VISIBLE);
    if (!HasWindow() && Create() == 0) {
        FreeBuffers();
        track_.Close();
        return false;
    }
    SetPosition(0);
    return true;
}

bool AudioPlayerkel::Play(VideoPlayerkel* video) {
    if (device_active_ && closing_) WaitForDeviceClose();
    if (capturing_) return false;
    if (device_active_) return true;
    if (!track_.IsTrackOpen()) return false;
    ForgetSound();
    linked_video_ = video != nullptr && video->IsTrackOpen() ? video : nullptr;
    const MMRESULT result = waveOutOpen(&wave_out_, WAVE_MAPPER, track_.GetWaveFormat(),
                                        reinterpret_cast<DWORD_PTR>(Window()), 0, CALLBACK_WINDOW);
    if (result == MMSYSERR_NOERROR) {
        heard_device_ = wave_out_;
        device_active_ = true;
        playing_ = true;
        return true;
    }
    wave_out_ = nullptr;
    ErrorBox(kDeviceRefused);
    FreeBuffers();
    paused_ = false;
    stopping_ = true;
    playing_ = false;
    track_.Close();
    return false;
}

// Of the sound before, nothing counts any more.
void AudioPlayerkel::ForgetSound() {
    paused_ = false;
    stopping_ = false;
    fast_forward_ = false;
    current_buffer_ = 0;
    begins_anew_ = false;
    heard_ = false;
    run_out_ = false;
}

bool AudioPlayerkel::IsHeard() const {
    if (heard_) return true;
    const HWAVEOUT device = heard_device_;
    if (device == nullptr) return false;
    MMTIME time{};
    time.wType = TIME_BYTES;
    return waveOutGetPosition(device, &time, sizeof time) == MMSYSERR_NOERROR && time.u.cb > 0;
}

// --- what the device reports -------------------------------------------------------------------

bool AudioPlayerkel::OnDeviceOpen() {
    if (closing_) return true; // stopped before the device had opened
    refilling_ = true;
    StartPlaying();
    refilling_ = false;
    return true;
}

void AudioPlayerkel::StartPlaying() {
    done_meanwhile_ = nullptr;
    stream_inside_sample_ = false;
    int next = 0;
    std::uint32_t capture_time = 0;
    frame_read_ = track_.CurrentAudioFrame();
    const bool first_read = track_.ReadNextAudioFrame(next, capture_time);
    if (!first_read) run_out_ = true; // before the count, which says nothing any more
    played_frame_counter_ = next;
    if (!first_read) {
        CloseDevice();
        return;
    }
    FillBuffer(0);
    current_buffer_ = 0;
    const bool second_read = ReadNextFrame() || BeginAnewBehindLastFrame();
    if (second_read) FillBuffer(1);
    Notify(NotifyAudioStarted, reinterpret_cast<INT_PTR>(buffers_[0].data()),
           reinterpret_cast<INT_PTR>(buffers_[1].data()));
    // What the notification did may have stopped the device again.
    if (closing_) return;
    stopping_ = false;
    paused_ = false;
    device_active_ = true;
    QueueBuffer(0);
    current_buffer_ = 1;
    if (second_read) {
        QueueBuffer(1);
    } else {
        EndOfTrack(); // nothing for the second buffer: the first one's end closes the device
    }
}

bool AudioPlayerkel::OnBufferDone(WAVEHDR* header) {
    if (closing_) { // a buffer that the reset gives back
        waveOutUnprepareHeader(wave_out_, header, sizeof(WAVEHDR));
        return true;
    }
    // While the box of a damaged frame is open, the other buffer may come back, too. Its frame is
    // the one behind, so it waits.
    if (refilling_) {
        done_meanwhile_ = header;
        return true;
    }
    refilling_ = true;
    RefillBuffer();
    refilling_ = false;
    WAVEHDR* const other = std::exchange(done_meanwhile_, nullptr);
    return other == nullptr || wave_out_ == nullptr || OnBufferDone(other);
}

void AudioPlayerkel::RefillBuffer() {
    heard_ = true;
    device_active_ = true;
    current_buffer_ = 1 - current_buffer_;
    waveOutUnprepareHeader(wave_out_, &headers_[current_buffer_], sizeof(WAVEHDR));
    if (stopping_) {
        CloseDevice();
        return;
    }
    if (std::exchange(begins_anew_, false)) played_frame_counter_ = 0;
    const bool read = fast_forward_ && linked_video_ == nullptr ? ReadFastForward() : ReadNormal();
    if (closing_ || !device_active_) return; // stopped or closed while a box was open
    if (!read) {
        EndOfTrack();
        return;
    }
    FillBuffer(current_buffer_);
    Notify(NotifyAudioBuffer, reinterpret_cast<INT_PTR>(buffers_[current_buffer_].data()),
           static_cast<INT_PTR>(track_.FrameBytes()));
    if (!closing_) QueueBuffer(current_buffer_);
}

bool AudioPlayerkel::OnDeviceClosed() {
    paused_ = false;
    stopping_ = true;
    playing_ = false;
    fast_forward_ = false;
    ForgetDevice();
    if (linked_video_ != nullptr) linked_video_->StopPlayback();
    Notify(NotifyAudioClosed, 0, 0);
    return true;
}

// --- frames ------------------------------------------------------------------------------------

bool AudioPlayerkel::ReadNextFrame() {
    int unused_number = 0;
    std::uint32_t capture_time = 0;
    frame_read_ = track_.CurrentAudioFrame();
    return track_.ReadNextAudioFrame(unused_number, capture_time);
}

// Playing starts at the last frame: the first one is queued behind it at once, but not counted
// before it is heard.
bool AudioPlayerkel::BeginAnewBehindLastFrame() {
    if (!continuous_ || !track_.GoToAudioFrame(0)) return false;
    begins_anew_ = ReadNextFrame();
    return begins_anew_;
}

bool AudioPlayerkel::ReadNormal() {
    ++played_frame_counter_;
    if (ReadNextFrame()) return true;
    if (!continuous_) return false;
    SetPosition(0);
    return ReadNextFrame();
}

int AudioPlayerkel::SkipCount() const {
    const int rate = nFramesAlSec();
    const int counter = played_frame_counter_;
    if (rate > 20) return counter % 9 == 0 ? 50 : 1;
    if (rate > 10) return counter % 6 == 0 ? 40 : 1;
    if (rate > 5) return counter % 3 == 0 ? 20 : 1;
    if (rate > 4) return counter % 2 == 0 ? 10 : 1;
    return 10;
}

bool AudioPlayerkel::ReadFastForward() {
    for (int skipped = SkipCount(); skipped > 0; --skipped) {
        ++played_frame_counter_;
        if (!ReadNextFrame()) return false;
    }
    return true;
}

// The device plays the buffers as one stream of bytes. A 16-bit sample that two frames share stays
// whole in it; where the stream jumps, the half sample is left out or completed, so that no byte of
// a sample ever stands in the place of the other.
void AudioPlayerkel::FillBuffer(std::size_t number) {
    const ByteView frame = track_.FrameData();
    std::vector<std::uint8_t>& buffer = buffers_[number];
    std::size_t start = 0;
    std::size_t length = frame.size();
    std::ranges::copy(frame, buffer.begin());
    const bool frame_inside_sample = track_.StartsInsideSample(frame_read_);
    if (track_.BytesPerSample() == 2 && frame_inside_sample != stream_inside_sample_) {
        if (frame_inside_sample) {
            start = 1;
            --length;
        } else {
            buffer[0] = 0;
            std::ranges::copy(frame, buffer.begin() + 1);
            ++length;
        }
    }
    if (track_.BytesPerSample() == 2 && length % 2 == 1) {
        stream_inside_sample_ = !stream_inside_sample_;
    }
    WAVEHDR& header = headers_[number];
    header = {};
    header.lpData = reinterpret_cast<LPSTR>(buffer.data() + start);
    header.dwBufferLength = static_cast<DWORD>(length);
    header.dwFlags = WHDR_BEGINLOOP | WHDR_ENDLOOP;
    header.dwLoops = 1;
}

bool AudioPlayerkel::QueueBuffer(std::size_t number) {
    waveOutPrepareHeader(wave_out_, &headers_[number], sizeof(WAVEHDR));
    return waveOutWrite(wave_out_, &headers_[number], sizeof(WAVEHDR)) == MMSYSERR_NOERROR;
}

void AudioPlayerkel::EndOfTrack() {
    stopping_ = true; // the device empties; its next report closes it
    run_out_ = true;
}

// --- commands ----------------------------------------------------------------------------------

bool AudioPlayerkel::StopAudio() {
    if (linked_video_ != nullptr) linked_video_->StopPlayback();
    stopping_ = true;
    if (device_active_) {
        fast_forward_ = false;
        if (playing_) {
            waveOutReset(wave_out_);
            CloseDevice();
        }
        if (capturing_) CloseInput();
    }
    playing_ = false;
    capturing_ = false;
    return true;
}

void AudioPlayerkel::CloseDevice() {
    if (closing_) return;
    closing_ = true;
    heard_device_ = nullptr;
    waveOutClose(wave_out_);
}

void AudioPlayerkel::DispatchDeviceMessages() const {
    MSG message{};
    while (PeekMessageA(&message, Window(), MM_WOM_OPEN, MM_WIM_DATA, PM_REMOVE) != FALSE) {
        DispatchMessageA(&message);
    }
}

void AudioPlayerkel::WaitForDeviceClose() {
    const DWORD start = GetTickCount();
    while (device_active_ && GetTickCount() - start < kCloseWaitMs) {
        DispatchDeviceMessages();
        if (device_active_) Sleep(1);
    }
    if (!device_active_) return;
    ForgetDevice();
    FinishRecording();
}

// One that does not report its close is left to itself; what it still says is dropped.
void AudioPlayerkel::ForgetDevice() {
    device_active_ = false;
    closing_ = false;
    heard_device_ = nullptr;
    wave_out_ = nullptr;
    wave_in_ = nullptr;
}

bool AudioPlayerkel::CloseAudio() {
    StopAudio();
    for (int round = 0; round < kCloseRounds && device_active_; ++round) {
        StopAudio();
        lum.ProcessMessages();
        // The device reports within a few milliseconds; the stated round is the longest wait.
        const DWORD start = GetTickCount();
        while (device_active_ && GetTickCount() - start < kCloseRoundMs) {
            Sleep(2);
            DispatchDeviceMessages();
        }
    }
    FinishRecording(); // where the device did not report its close
    FreeBuffers();
    paused_ = false;
    stopping_ = true;
    playing_ = false;
    capturing_ = false;
    fast_forward_ = false;
    ForgetDevice();
    if (track_.IsTrackOpen()) {
        track_.Close();
        DestroyWindow(Window());
    }
    linked_video_ = nullptr;
    return true;
}

bool AudioPlayerkel::Pause() {
    if (!device_active_ || (!playing_ && !capturing_)) return false;
    if (paused_) return true;
    if (capturing_) {
        HoldInput();
        return true;
    }
    paused_ = waveOutPause(wave_out_) == MMSYSERR_NOERROR;
    return paused_;
}

bool AudioPlayerkel::Resume() {
    fast_forward_ = false;
    if (!device_active_ || (!playing_ && !capturing_)) return false;
    if (!paused_) return true;
    if (capturing_) {
        ResumeInput();
        return true;
    }
    paused_ = waveOutRestart(wave_out_) != MMSYSERR_NOERROR;
    return !paused_;
}

bool AudioPlayerkel::TogglePause() {
    if (!paused_) return Pause();
    Resume();
    return false;
}

bool AudioPlayerkel::FastForward() {
    if (linked_video_ != nullptr) {
        fast_forward_ = false;
        return false;
    }
    if (!playing_ && !Play(nullptr)) return false;
    fast_forward_ = true;
    return true;
}

void AudioPlayerkel::SetPosition(int frame) {
    played_frame_counter_ = frame;
    track_.GoToAudioFrame(frame);
}

bool AudioPlayerkel::SyncToVideo(VideoPlayerkel& video) {
    if (!video.IsTrackOpen()) return false;
    SetPosition(video.AudioFrameOfCurrentImage(nFramesAlSec()));
    return true;
}

WORD AudioPlayerkel::GetVolume() const {
    DWORD volume = 0;
    if (!device_active_ || waveOutGetVolume(wave_out_, &volume) != MMSYSERR_NOERROR) return 0;
    return LOWORD(volume);
}

bool AudioPlayerkel::SetVolume(WORD volume) {
    return device_active_ &&
           waveOutSetVolume(wave_out_, static_cast<DWORD>(MAKELONG(volume, volume))) ==
               MMSYSERR_NOERROR;
}

// --- buffers -----------------------------------------------------------------------------------

void AudioPlayerkel::AllocateBuffers() {
    for (auto& buffer : buffers_) {
        buffer.assign(track_.FrameBytes() + kBufferSlack, 0);
    }
    recorded_.reserve(track_.FrameBytes());
}

void AudioPlayerkel::FreeBuffers() {
    for (auto& buffer : buffers_) {
        buffer = {};
    }
    recorded_ = {};
}

void AudioPlayerkel::Notify(int code, INT_PTR a, INT_PTR b) {
    if (Parent() != nullptr) Parent()->HandleNotification(code, a, b);
}

} // namespace kelvo
