#include "playback/FilmClock.h"

#include "media/VideoHeader.h"
#include "platform/base/clock.h"
#include "playback/AudioPlayerkel.h"
#include "playback/PlaybackTiming.h"

#include <algorithm>

namespace kelvo {
namespace {

/// How often the count of audio frames is looked at.
constexpr DWORD kCountPollMs = 2;

} // namespace

FilmClock::FilmClock(const AudioPlayerkel* audio, std::int32_t audio_frame_count, DWORD period_ms,
                     DWORD shown_before)
    : audio_(audio), count_(audio != nullptr ? &audio->PlayedFrameCounter() : nullptr),
      audio_frame_count_(audio_frame_count), period_ms_(period_ms),
      last_ms_(GetTickCount() - kLongAgoMs), first_group_index_(shown_before) {
    if (count_ != nullptr) last_count_ = *count_;
}

bool FilmClock::SoundDecides(std::uint32_t sync_number) const {
    if (count_ == nullptr || sync_number >= kNeverLinked) return false;
    // The images of the last audio frame keep to it, although the track has no more.
    return !audio_->HasRunOut() || static_cast<std::uint32_t>(*count_) == sync_number + 1;
}

bool FilmClock::PeriodIsOver() {
    const DWORD elapsed = GetTickCount() - last_ms_;
    if (elapsed >= period_ms_) return true;
    delay_ms_ = std::min(period_ms_ - elapsed, kLongestSleepMs);
    return false;
}

FilmClock::Verdict FilmClock::Ask(std::uint32_t sync_number) {
    if (!SoundDecides(sync_number)) {
        // Images without a link to the sound that plays still end with it when it begins anew.
        return PeriodIsOver() ? Verdict::Show : Verdict::Wait;
    }
    const std::int32_t count = *count_;
    if (count < last_count_) wrapped_ = true;
    last_count_ = count;
    const auto target = static_cast<std::int32_t>(sync_number) + 1;
    if (!wrapped_) return AskSound(count, target);
    // The last audio frame is still heard while the count is 0; then image 0 is due.
    return count >= 1 ? Verdict::Restart : AskSound(audio_frame_count_, target);
}

FilmClock::Verdict FilmClock::AskSound(std::int32_t count, std::int32_t target) {
    if (count > target) return Verdict::Show; // the sound is ahead: catch up
    if (count < target || !audio_->IsHeard()) {
        delay_ms_ = kCountPollMs;
        return Verdict::Wait;
    }
    if (group_ != target - 1) return Verdict::Show; // the first image of an audio frame
    const DWORD due_after = group_index_ * period_ms_;
    const DWORD elapsed = GetTickCount() - group_start_ms_;
    if (elapsed >= due_after) return Verdict::Show;
    delay_ms_ = std::min(due_after - elapsed, kCountPollMs);
    return Verdict::Wait;
}

void FilmClock::Shown(std::uint32_t sync_number) {
    const DWORD now = GetTickCount();
    if (!SoundDecides(sync_number)) {
        // An image that is shown late does not make the next one late.
        const DWORD elapsed = now - last_ms_;
        last_ms_ = elapsed < 2 * period_ms_ && elapsed >= period_ms_ ? last_ms_ + period_ms_ : now;
        group_ = sync_number;
        return;
    }
    if (group_ == sync_number) {
        last_ms_ = group_start_ms_ + group_index_ * period_ms_;
    } else {
        group_index_ = group_ < 0 ? first_group_index_ : 0;
        group_start_ms_ = now;
        group_ = sync_number;
        last_ms_ = now;
    }
    ++group_index_;
}

bool FilmClock::LastImageIsOver() {
    return PeriodIsOver();
}

bool FilmClock::MayRestart() {
    if (count_ == nullptr || audio_->HasRunOut() || group_ >= kNeverLinked) return PeriodIsOver();
    const std::int32_t count = *count_;
    if (count < last_count_) wrapped_ = true;
    last_count_ = count;
    delay_ms_ = kCountPollMs;
    return wrapped_ && count >= 1;
}

void FilmClock::Restarted() {
    wrapped_ = false;
    group_ = -1;
    first_group_index_ = 0;
}

void FilmClock::HeldFor(DWORD milliseconds) {
    last_ms_ += milliseconds;
    group_start_ms_ += milliseconds;
}

} // namespace kelvo
