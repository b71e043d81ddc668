#pragma once
// Streams a sound track to the wave device, one audio frame a buffer and two buffers in flight, and
// counts the frames: that count is the clock of the whole player. It records from the microphone
// into a track the same way round. The device reports through this hidden window, so everything
// here runs on the UI thread; the playing thread of the picture only reads the count and whether it
// still runs.

#include "framework/base/CString.h"
#include "framework/window/CWin.h"
#include "media/AudioFilekel.h"
#include "platform/sound/wave.h"
#include "platform/sound/wave_in.h"
#include "playback/CapturedFrames.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

namespace kelvo {

class VideoPlayerkel;

/// What the parent's notification handler receives; only a sound film's player has a parent.
inline constexpr int NotifyAudioBuffer = 94;  ///< the refilled buffer, its length
inline constexpr int NotifyAudioStarted = 95; ///< both buffers, just before they are queued
inline constexpr int NotifyAudioClosed = 96;  ///< the device has closed

class AudioPlayerkel : public CWin {
public:
    AudioPlayerkel() = default;
    ~AudioPlayerkel() override;
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

    /// Opens the track and makes the buffers. @return false when the file is no sound track.
    bool OpenAudio(const CString& name);
    /// The same for a track that is recorded into, which must be stored uncompressed. It plays only
    /// once it is opened by OpenAudio.
    bool OpenAudioForRecording(const CString& name);
    /// Starts where the track stands. Returns true and changes nothing while the device plays; a
    /// stop that is under way is waited for, so that stop and play in one step play.
    /// @param video  whose thread ends with the sound; may be none, else it lives until CloseAudio
    /// @return false when no track is open, or when there is no device (after a box; the track is
    ///         then closed), or while it records
    bool Play(VideoPlayerkel* video);
    /// Records over the track's frames from where it stands, until so many are written, the track
    /// ends or StopAudio is called; a frame that was only begun then keeps the rest of its old
    /// sound. Returns true and changes nothing while it records.
    /// @param frame_count  0: to the track's end
    /// @param video        as for Play
    /// @return false while it plays, when no track is open, or when there is no microphone (after a
    ///         box; the track is then closed)
    bool Record(int frame_count, VideoPlayerkel* video);
    /// Asks the device to stop; it reports later that it has closed.
    bool StopAudio();
    /// Stops, waits for the device's report (2.2 s at most), frees the buffers, closes the track.
    bool CloseAudio();

    bool Pause();
    bool Resume();
    /// @return false when it resumed
    bool TogglePause();
    /// For sound without picture: skips frames. Starts playing if need be.
    bool FastForward();
    void SetPosition(int frame);
    /// Moves to the sound of the picture's current image. @return false without a picture track.
    bool SyncToVideo(VideoPlayerkel& video);
    /// Of the left channel, 0 to 65535; 0 while the device is closed.
    WORD GetVolume() const;
    /// Of both channels; refused while the device is closed.
    bool SetVolume(WORD volume);
    /// Whether the track starts again at its end.
    void SetContinuous(bool continuous) { continuous_ = continuous; }

    bool IsTrackOpen() const { return track_.IsTrackOpen(); }
    int FrameCount() const { return track_.FrameCount(); }
    /// Number of the frame that is read next.
    int CurrentFrame() const { return track_.CurrentAudioFrame(); }
    int nFramesAlSec() const { return static_cast<int>(track_.nFramesAlSec()); }
    bool IsPlaying() const { return playing_; }
    bool IsCapturing() const { return capturing_; }
    bool IsPaused() const { return paused_; }
    /// From the request to open the device until its report that it closed.
    bool IsDeviceActive() const { return device_active_; }
    bool IsFastForward() const { return fast_forward_; }
    /// Whether a frame is being read, perhaps with a box that says why it is damaged: the track
    /// must stay open meanwhile.
    bool IsRefilling() const { return refilling_; }
    /// One more than the number of the frame that is heard, or the number of the one that was
    /// recorded; where sound will start, while it is stopped. Any thread.
    const std::atomic<std::int32_t>& PlayedFrameCounter() const { return played_frame_counter_; }
    /// Whether sound that was started has ended by itself: the count then stands still. Any thread.
    bool HasRunOut() const { return run_out_; }
    /// Whether the first sample since Play has left the loudspeaker, as nearly as the device can
    /// tell. Any thread.
    bool IsHeard() const;

private:
    bool FinishOpening();
    bool HandleOutput(UINT message, LPARAM lparam);
    bool OnDeviceOpen();
    bool OnBufferDone(WAVEHDR* header);
    void StartPlaying();
    void RefillBuffer();
    bool OnDeviceClosed();
    bool ReadNextFrame();
    bool ReadNormal();
    bool BeginAnewBehindLastFrame();
    bool ReadFastForward();
    int SkipCount() const;
    void FillBuffer(std::size_t number);
    bool QueueBuffer(std::size_t number);
    void EndOfTrack();
    void CloseDevice();
    void WaitForDeviceClose();
    void ForgetDevice();
    void DispatchDeviceMessages() const;
    void ForgetSound();
    // Recording (AudioRecording.cpp)
    bool HandleInput(UINT message, LPARAM lparam);
    bool OnInputOpen();
    bool OnInputData(const WAVEHDR* header);
    bool OnInputClosed();
    void QueueInput(std::size_t number);
    void HoldInput();
    void ResumeInput();
    void CloseInput();
    void FinishRecording();
    void SayNotWritten() const;
    void AllocateBuffers();
    void FreeBuffers();
    void Notify(int code, INT_PTR a, INT_PTR b);

    AudioFilekel track_;
    VideoPlayerkel* linked_video_ = nullptr;
    HWAVEOUT wave_out_ = nullptr;
    HWAVEIN wave_in_ = nullptr;
    std::array<WAVEHDR, 2> headers_{};
    std::array<std::vector<std::uint8_t>, 2> buffers_;
    std::size_t current_buffer_ = 0;    ///< the one queued last
    int frame_read_ = 0;                ///< number of the frame that the track's buffer holds
    bool begins_anew_ = false;          ///< the second buffer holds the first frame again
    bool stream_inside_sample_ = false; ///< the bytes queued so far end with half a 16-bit sample

    CapturedFrames captured_;
    std::array<bool, 2> input_queued_{}; ///< which buffers the microphone has
    std::vector<std::uint8_t> recorded_; ///< what it gave last

    bool playing_ = false;
    bool capturing_ = false;
    bool paused_ = false;
    bool stopping_ = false;
    bool continuous_ = false;
    bool fast_forward_ = false;
    bool device_active_ = false;
    bool closing_ = false;              ///< the device was asked to close and has not reported it
    bool refilling_ = false;            ///< a buffer is being refilled, and a box may be open
    WAVEHDR* done_meanwhile_ = nullptr; ///< what the device gave back until then

    // UI thread writes, the picture's thread reads.
    std::atomic<std::int32_t> played_frame_counter_ = 0;
    std::atomic<bool> run_out_ = false;
    std::atomic<bool> heard_ = false;              ///< a buffer was reported as heard
    std::atomic<HWAVEOUT> heard_device_ = nullptr; ///< asked for its position until then
};

} // namespace kelvo
