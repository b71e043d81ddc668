// The loops that the view's thread runs: normal play, fast forward, fast backward.

#include "platform/base/clock.h"
#include "platform/base/threads.h"
#include "platform/desktop/drawing.h"
#include "playback/PlaybackTiming.h"
#include "playback/VideoPlayerkel.h"

#include <algorithm>
#include <tuple>

namespace kelvo {
namespace {

constexpr int kProgressEvery = 10;
constexpr DWORD kHoldPollMs = 2;

// Sequential fast forward: its speed rises with the time since its start.
constexpr double kFirstFactor = 5.0;
struct SpeedStep {
    double below;      ///< while the factor is below this
    DWORD after_ms;    ///< and so much time has passed
    double new_factor; ///< it becomes this
};
constexpr SpeedStep kSpeedSteps[] = {{9, 1000, 10}, {19, 2000, 20}, {29, 3000, 30}, {39, 4000, 40}};
/// Images that the fast loop may lag before it stops drawing.
constexpr int kAllowedLag = 5;

/// Keeps steps of a fast loop one period apart.
class StepPacer {
public:
    explicit StepPacer(DWORD period_ms) : period_ms_(period_ms) {}

    /// Milliseconds to sleep until the next step is due, cut so that a stop is noticed soon; 0:
    /// due.
    DWORD Delay() {
        const DWORD elapsed = GetTickCount() - last_ms_;
        if (elapsed < period_ms_) return std::min(period_ms_ - elapsed, kLongestSleepMs);
        last_ms_ = elapsed < 2 * period_ms_ ? last_ms_ + period_ms_ : GetTickCount();
        return 0;
    }

private:
    DWORD period_ms_;
    DWORD last_ms_ = GetTickCount() - kLongAgoMs;
};

/// How many images fast forward may have shown by now.
class FastForwardRate {
public:
    explicit FastForwardRate(int images_per_second)
        : images_per_second_(images_per_second), start_ms_(GetTickCount()) {
        SetFactor(kFirstFactor);
    }

    int Allowed() const {
        return static_cast<int>(static_cast<double>(GetTickCount() - start_ms_) * images_per_ms_);
    }
    /// The time counts from the start also at the new speed: the loop catches up without drawing.
    void RaiseByTime() {
        const DWORD elapsed = GetTickCount() - start_ms_;
        for (const SpeedStep& step : kSpeedSteps) {
            if (factor_ >= step.below) continue;
            if (elapsed > step.after_ms) SetFactor(step.new_factor);
            return;
        }
    }

private:
    void SetFactor(double factor) {
        factor_ = factor;
        images_per_ms_ = static_cast<int>(images_per_second_ * factor) * 0.001;
    }

    int images_per_second_;
    DWORD start_ms_;
    double factor_ = 0;
    double images_per_ms_ = 0;
};

} // namespace

void VideoPlayerkel::Notify(int code, int first, int second) const {
    if (Parent() != nullptr) Parent()->HandleNotification(code, first, second);
}

bool VideoPlayerkel::TakeStop() {
    return stop_.exchange(false);
}

void VideoPlayerkel::BeginLoop() {
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_NORMAL);
    Notify(NotifyStarted, CurrentFrame(), track_.FrameCount());
}

bool VideoPlayerkel::ReadNext(FrameSide& side) {
    if (image_waits_.exchange(false)) {
        side = waiting_side_;
        return true;
    }
    bool read = false;
    {
        const std::lock_guard lock(picture_mutex_);
        read = track_.ReadNextFrame(side);
    }
    AskForMissedPainting();
    return read;
}

// An image that was read but not shown when the film was stopped is the next one to be played.
void VideoPlayerkel::KeepForNextPlay(const FrameSide& side) {
    waiting_side_ = side;
    image_waits_ = true;
}

bool VideoPlayerkel::ReadNumber(int frame, FrameSide& side) {
    image_waits_ = false;
    bool read = false;
    {
        const std::lock_guard lock(picture_mutex_);
        read = track_.ReadFrame(frame, side);
    }
    AskForMissedPainting();
    return read;
}

void VideoPlayerkel::ShowImage() {
    {
        const std::lock_guard lock(picture_mutex_);
        DrawFrame(device_context_, 0, 0);
    }
    AskForMissedPainting();
}

// What surrounds the picture may have been erased while an older size of it was being drawn.
void VideoPlayerkel::AskForMissedPainting() {
    if (painting_missed_.exchange(false)) InvalidateRect(Window(), nullptr, TRUE);
}

VideoPlayerkel::Step VideoPlayerkel::WaitWhileHeld(FilmClock& clock) {
    if (!held_) return Step::Go;
    const DWORD start = GetTickCount();
    while (held_) {
        if (TakeStop()) return Step::Stopped;
        Sleep(kHoldPollMs);
    }
    clock.HeldFor(GetTickCount() - start);
    return Step::Go;
}

VideoPlayerkel::Step VideoPlayerkel::WaitUntilDue(FilmClock& clock, std::uint32_t sync_number,
                                                  bool& restart) {
    restart = false;
    while (true) {
        if (TakeStop() || WaitWhileHeld(clock) == Step::Stopped) return Step::Stopped;
        switch (clock.Ask(sync_number)) {
        case FilmClock::Verdict::Show:
            return Step::Go;
        case FilmClock::Verdict::Restart:
            restart = true;
            return Step::Go;
        case FilmClock::Verdict::Wait:
            Sleep(clock.DelayMs());
            break;
        }
    }
}

VideoPlayerkel::Step VideoPlayerkel::FinishOrRestart(FilmClock& clock) {
    while (true) {
        if (TakeStop() || WaitWhileHeld(clock) == Step::Stopped) return Step::Stopped;
        if (continuous_) {
            if (clock.MayRestart()) return Step::Go;
        } else if (clock.LastImageIsOver()) {
            return Step::AtEnd;
        }
        Sleep(kHoldPollMs);
    }
}

// An image is read, then waited for, then drawn: drawn first, it would be seen a period before its
// sound. The image that was drawn last keeps its period, also at the film's end.
INT_PTR VideoPlayerkel::PlayNormalLoop(INT_PTR /*first*/, INT_PTR /*second*/, INT_PTR /*third*/) {
    BeginLoop();
    FilmClock clock(m_pAudioPlayer, audio_frame_count_, static_cast<DWORD>(track_.PeriodMs()),
                    shown_before_);
    while (true) {
        FrameSide side;
        if (!ReadNext(side)) {
            const Step step = FinishOrRestart(clock);
            if (step == Step::Stopped) return 0;
            if (step == Step::AtEnd || !ReadNumber(0, side)) {
                Notify(NotifyEnded, track_.FrameCount(), track_.FrameCount());
                return 1;
            }
            clock.Restarted();
        }
        bool restart = false;
        if (WaitUntilDue(clock, side.SyncNumber, restart) == Step::Stopped) {
            KeepForNextPlay(side);
            return 0;
        }
        if (restart) {
            clock.Restarted();
            if (!ReadNumber(0, side)) continue; // then the next read ends the film
        }
        ShowImage();
        clock.Shown(side.SyncNumber);
        if (TakeStop()) return 0;
        if (track_.CurrentFrame() % kProgressEvery == 0) {
            Notify(NotifyProgress, track_.CurrentFrame(), track_.FrameCount());
        }
    }
}

bool VideoPlayerkel::ShowStep(int frame) {
    FrameSide side;
    if (!ReadNumber(frame, side)) return false;
    Notify(NotifyProgress, frame, track_.FrameCount());
    return true;
}

INT_PTR VideoPlayerkel::SteppingForwardLoop(INT_PTR /*first*/, INT_PTR /*second*/,
                                            INT_PTR /*third*/) {
    BeginLoop();
    const int images_per_second = track_.ImagesPerSecond();
    StepPacer pacer(static_cast<DWORD>(track_.PeriodMs()));
    for (int frame = CurrentFrame(); frame < track_.FrameCount(); frame += images_per_second) {
        if (!ShowStep(frame)) return 1;
        for (DWORD delay = pacer.Delay(); delay != 0; delay = pacer.Delay()) {
            if (TakeStop()) return 0;
            Sleep(delay);
        }
        ShowImage();
        if (TakeStop()) return 0;
    }
    return 1;
}

INT_PTR VideoPlayerkel::SequentialForwardLoop(INT_PTR /*first*/, INT_PTR /*second*/,
                                              INT_PTR /*third*/) {
    BeginLoop();
    FastForwardRate rate(track_.ImagesPerSecond());
    const int first_frame = CurrentFrame();
    while (true) {
        FrameSide side;
        if (!ReadNext(side)) return 1;
        const int frame = track_.CurrentFrame();
        if (frame % kProgressEvery == 0) Notify(NotifyProgress, frame, track_.FrameCount());
        const int done = frame - first_frame;
        while (done > rate.Allowed()) {
            if (TakeStop()) return 0;
            Sleep(1);
        }
        if (rate.Allowed() - kAllowedLag > done) {
            if (TakeStop()) return 0; // a loop that only catches up can be stopped, too
            continue;
        }
        rate.RaiseByTime();
        ShowImage();
        if (TakeStop()) return 0;
    }
}

INT_PTR VideoPlayerkel::BackwardLoop(INT_PTR /*first*/, INT_PTR /*second*/, INT_PTR /*third*/) {
    BeginLoop();
    const int step = 2 * track_.ImagesPerSecond();
    StepPacer pacer(static_cast<DWORD>(1000 / step));
    for (int frame = std::min(CurrentFrame(), track_.FrameCount() - 1); frame >= 0; frame -= step) {
        if (!ShowStep(frame)) break;
        for (DWORD delay = pacer.Delay(); delay != 0; delay = pacer.Delay()) {
            if (TakeStop()) return 0;
            Sleep(delay);
        }
        ShowImage();
        if (TakeStop()) return 0;
    }
    if (ShowStep(0)) ShowImage();
    return 1;
}

} // namespace kelvo
