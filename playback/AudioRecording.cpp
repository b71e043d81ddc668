// Recording from the microphone into the track that is open.

#include "playback/AudioPlayerkel.h"
#include "playback/VideoPlayerkel.h"

namespace kelvo {
namespace {

constexpr char kInputRefused[] = "waveinOpen() error!";
constexpr char kFile[] = "Il file [";
constexpr char kCannotBeWritten[] = "] non può essere scritto!\r\n\r\nRegistrazione interrotta!";

/// The end of a recording that nobody limited: beyond every track.
constexpr int kNoEnd = 1215752191;
constexpr int kEditing = static_cast<int>(ZFilekel::Mode::Existing);

} // namespace

bool AudioPlayerkel::Record(int frame_count, VideoPlayerkel* video) {
    if (device_active_ && closing_) WaitForDeviceClose();
    if (playing_) return false;
    if (device_active_) return true;
    if (!track_.IsTrackOpen()) return false;
    const int position = track_.CurrentAudioFrame();
    // The track says itself why it cannot be recorded into, wherever it stands.
    if (track_.TrackMode() != kEditing) return track_.ReplaceAudioFrame(0, track_.FrameData());
    ForgetSound();
    linked_video_ = video != nullptr && video->IsTrackOpen() ? video : nullptr;
    const int end =
        frame_count == 0 || frame_count > kNoEnd - position ? kNoEnd : position + frame_count;
    const MMRESULT result = waveInOpen(&wave_in_, WAVE_MAPPER, track_.GetWaveFormat(),
                                       reinterpret_cast<DWORD_PTR>(Window()), 0, CALLBACK_WINDOW);
    if (result != MMSYSERR_NOERROR) {
        wave_in_ = nullptr;
        FreeBuffers();
        stopping_ = true;
        capturing_ = false;
        track_.Close();
        return ErrorBox(kInputRefused);
    }
    device_active_ = true;
    captured_.Begin(track_, end);
    input_queued_ = {};
    for (std::size_t i = 0; i < headers_.size(); ++i) {
        headers_[i] = {};
        headers_[i].lpData = reinterpret_cast<LPSTR>(buffers_[i].data());
        headers_[i].dwBufferLength = track_.FrameBytes();
        headers_[i].dwLoops = 1;
        waveInPrepareHeader(wave_in_, &headers_[i], sizeof(WAVEHDR));
    }
    capturing_ = true;
    return true;
}

// --- what the device reports -------------------------------------------------------------------

bool AudioPlayerkel::HandleInput(UINT message, LPARAM lparam) {
    switch (message) {
    case MM_WIM_OPEN:
        return OnInputOpen();
    case MM_WIM_DATA:
        return OnInputData(reinterpret_cast<const WAVEHDR*>(lparam));
    case MM_WIM_CLOSE:
        return OnInputClosed();
    default:
        return false;
    }
}

bool AudioPlayerkel::OnInputOpen() {
    if (closing_) return true; // stopped before the device had opened
    if (captured_.IsAtEnd()) {
        StopAudio();
        return true;
    }
    stopping_ = false;
    device_active_ = true;
    heard_ = true; // a linked picture begins with the recording
    ResumeInput();
    return true;
}

// The bytes are taken before the device gets the buffer again, or it could write over them; they
// reach the file afterwards, while the device fills the other buffer.
bool AudioPlayerkel::OnInputData(const WAVEHDR* header) {
    const std::size_t number = header == headers_.data() ? 0 : 1;
    const std::vector<std::uint8_t>& buffer = buffers_[number];
    recorded_.assign(buffer.begin(), buffer.begin() + static_cast<long>(header->dwBytesRecorded));
    input_queued_[number] = false;
    if (!stopping_ && !paused_ && !closing_) QueueInput(number);
    // What a pause or a stop cut off is part of the recording, too.
    const bool written = captured_.Take(recorded_);
    played_frame_counter_ = captured_.LastWritten();
    if (captured_.IsAtEnd()) StopAudio();
    if (!written) SayNotWritten();
    return true;
}

bool AudioPlayerkel::OnInputClosed() {
    paused_ = false;
    stopping_ = true;
    playing_ = false;
    capturing_ = false;
    ForgetDevice();
    if (linked_video_ != nullptr) linked_video_->StopPlayback();
    FinishRecording();
    return true;
}

void AudioPlayerkel::FinishRecording() {
    if (!captured_.Finish()) SayNotWritten();
}

void AudioPlayerkel::SayNotWritten() const {
    ErrorBox(CString(kFile) + PathFileName(track_.FileName()) + kCannotBeWritten);
}

// --- commands ----------------------------------------------------------------------------------

void AudioPlayerkel::QueueInput(std::size_t number) {
    if (input_queued_[number]) return;
    input_queued_[number] =
        waveInAddBuffer(wave_in_, &headers_[number], sizeof(WAVEHDR)) == MMSYSERR_NOERROR;
}

// What is recorded so far comes back with the device's next report.
void AudioPlayerkel::HoldInput() {
    paused_ = waveInStop(wave_in_) == MMSYSERR_NOERROR;
}

// A buffer whose report is still on its way is queued when that arrives.
void AudioPlayerkel::ResumeInput() {
    paused_ = false;
    for (std::size_t i = 0; i < headers_.size(); ++i) {
        QueueInput(i);
    }
    waveInStart(wave_in_);
}

void AudioPlayerkel::CloseInput() {
    if (closing_) return;
    closing_ = true;
    waveInReset(wave_in_);
    for (WAVEHDR& header : headers_) {
        waveInUnprepareHeader(wave_in_, &header, sizeof(WAVEHDR));
    }
    waveInClose(wave_in_);
}

} // namespace kelvo
