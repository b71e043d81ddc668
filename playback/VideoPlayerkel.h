#pragma once
// The view in which a film's pictures are shown: it owns the picture track, draws its current image
// in one of seven sizes, and plays it on a thread of its own, in step with the sound or by the
// images' own period, or fast in either direction.
//
// Two threads: the UI thread runs everything but the loops. While a loop runs, the track belongs to
// it; whoever wants the track stops the loop and waits for its end.

#include "framework/base/BKOperation.h"
#include "framework/base/CString.h"
#include "framework/window/CWin.h"
#include "media/VideoFilekel.h"
#include "playback/FilmClock.h"

#include <atomic>
#include <cstdint>
#include <mutex>

namespace kelvo {

class AudioPlayerkel;

// What the parent's notification handler receives, on the playing thread: two numbers of images.
inline constexpr int NotifyStarted = 78412;  ///< current image, count: a loop begins
inline constexpr int NotifyProgress = 78413; ///< current image, count
inline constexpr int NotifyEnded = 78414;    ///< count twice: the film has been played to its end

/// How large the picture is drawn.
enum class Zoom : int {
    Natural = 1,
    Fit = 2, ///< as large as fits into a rectangle, keeping its shape
    Quarter = 3,
    Half = 4,
    ThreeQuarters = 5,
    OneAndAHalf = 6,
    Twice = 7,
};

class VideoPlayerkel : public CWin {
public:
    /// What fitting leaves free below the picture.
    static constexpr LONG kFitReserve = 22;

    VideoPlayerkel();
    ~VideoPlayerkel() override;
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

    /// Opens a track and shows its first image. @return false, with nothing changed, when the file
    /// is no picture track
    bool OpenVideo(const CString& name);
    /// Stops what plays, waits 2 s at most for its thread (then ends it by force), closes the
    /// track.
    bool CloseVideo();

    /// Asks the loop to end; does not wait.
    bool StopPlayback();
    /// Whether a loop runs.
    bool IsRunning() const { return operation_.IsRunning(); }
    /// Plays from the current image.
    /// @param audio  whose sound clocks the picture if its track is open; may be null
    /// @return whether the loop was started; false after a box for a track that is open for editing
    bool PlayNormal(AudioPlayerkel* audio);
    bool FastForward();
    bool FastBackward();
    /// Keeps the picture that is shown until it is released; stopping releases it.
    void HoldPicture(bool hold) { held_ = hold; }
    bool IsPictureHeld() const { return held_; }

    /// @param room  for Zoom::Fit: its right and bottom are the room that there is
    /// @return false when no track is open, for a mode that is none, and for room below 10 pixels
    bool SetZoom(int mode, const RECT& room = {});
    /// Fits the picture into the view, less 22 pixels at the bottom, and redraws it.
    bool FitToWindow();
    /// Goes to an image relative to the current one (clamped) and shows it. Ends a running loop.
    bool StepFrames(int delta);
    void ToggleContinuous() { continuous_ = !continuous_; }
    bool IsContinuous() const { return continuous_; }
    void Redraw();

    bool IsTrackOpen() const { return track_.OpenMode() != ZFilekel::Mode::Closed; }
    LONG DisplayWidth() const { return display_size_.load().cx; }
    LONG DisplayHeight() const { return display_size_.load().cy; }
    int ZoomMode() const { return zoom_mode_; }
    int ImageWidth() const { return track_.Width(); }
    int ImageHeight() const { return track_.Height(); }
    /// Any thread.
    int FrameCount() const { return track_.FrameCount(); }
    /// Images per second, 1 at least. Any thread.
    int nImgAlSec() const { return track_.ImagesPerSecond(); }
    /// Number of the image that is played next: after a step, the one that is shown. Any thread.
    int CurrentFrame() const { return track_.CurrentFrame() - (image_waits_ ? 1 : 0); }
    /// Number of the audio frame that belongs to the current image: its SyncNumber, or for a track
    /// that was never linked to sound, the frame of the same time. Ends a running loop.
    /// @param audio_frames_per_second  of the sound
    int AudioFrameOfCurrentImage(int audio_frames_per_second);
    const VideoFilekel& Track() const { return track_; }

private:
    enum class Step { Go, Stopped, AtEnd };

    // Starting and ending a loop: UI thread.
    void EndLoop();
    bool StartLoop(INT_PTR (VideoPlayerkel::*loop)(INT_PTR, INT_PTR, INT_PTR));
    void ObtainDeviceContext();
    DWORD ImagesBeforeInAudioFrame();

    // The loops: playing thread.
    INT_PTR PlayNormalLoop(INT_PTR, INT_PTR, INT_PTR);
    INT_PTR SteppingForwardLoop(INT_PTR, INT_PTR, INT_PTR);
    INT_PTR SequentialForwardLoop(INT_PTR, INT_PTR, INT_PTR);
    INT_PTR BackwardLoop(INT_PTR, INT_PTR, INT_PTR);
    void BeginLoop();
    bool TakeStop();
    bool ReadNext(FrameSide& side);
    void KeepForNextPlay(const FrameSide& side);
    bool ReadNumber(int frame, FrameSide& side);
    void ShowImage();
    void AskForMissedPainting();
    Step WaitUntilDue(FilmClock& clock, std::uint32_t sync_number, bool& restart);
    Step FinishOrRestart(FilmClock& clock);
    Step WaitWhileHeld(FilmClock& clock);
    bool ShowStep(int frame);
    void Notify(int code, int first, int second) const;

    // Messages: UI thread.
    bool OnPaint();
    bool OnEraseAroundPicture(HDC context) const;
    bool OnButtonDown(LONG x, LONG y);
    bool OnDrag(LONG x, LONG y);
    bool OnButtonUp();
    void PaintLogo();
    void DrawFrame(HDC context, LONG x, LONG y) const;

    VideoFilekel track_;
    // UI thread only.
    bool dragged_ = false;
    POINT last_mouse_{};
    POINT pan_{};
    bool frame_valid_ = false;
    int zoom_mode_ = static_cast<int>(Zoom::Fit);
    // UI thread writes, playing thread reads.
    std::atomic<bool> continuous_ = false;
    std::atomic<bool> held_ = false;
    std::atomic<SIZE> display_size_{};
    std::atomic<bool> stop_ = false; ///< raised by the UI thread, taken by the loop
    // Whoever owns the track: the loop while one runs, else the UI thread.
    std::atomic<bool> image_waits_ = false; ///< the current image is decoded and still to be played
    FrameSide waiting_side_;
    // Fixed while a loop runs.
    AudioPlayerkel* m_pAudioPlayer = nullptr;
    HDC device_context_ = nullptr; ///< the view's own, obtained on first use and kept
    int audio_frame_count_ = 0;
    DWORD shown_before_ = 0; ///< images of the current audio frame before the current one
    /// Held while the loop decodes into the track's buffer or draws from it, so that the view can
    /// be painted meanwhile. The paint handler never waits for it: a box may be open inside a read.
    std::mutex picture_mutex_;
    /// The paint handler sets it where it did not get the lock, who held the lock then has the view
    /// painted again.
    std::atomic<bool> painting_missed_ = false;
    BKOperation<VideoPlayerkel> operation_{this};
};

} // namespace kelvo
