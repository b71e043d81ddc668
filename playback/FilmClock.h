#pragma once
// When an image of a playing film is due. With sound, the count of the audio frames decides: an
// image is shown once the count has passed its SyncNumber, the images that share one follow each
// other at the image period. Without sound (or once it has run out, or for images that were never
// linked to it) the image period alone decides. Lives on the playing thread for one run.

#include "platform/base/types.h"

#include <atomic>
#include <cstdint>

namespace kelvo {

class AudioPlayerkel;

/// What the clock pointer points at when no sound is linked: every image is then due at once.
inline constexpr std::int32_t NoClockValue = 999999999;

class FilmClock {
public:
    enum class Verdict {
        Wait,    ///< not due yet: ask again in DelayMs()
        Show,    ///< due now
        Restart, ///< the sound has begun anew: go on with image 0
    };

    /// @param audio             whose count decides; may be null
    /// @param audio_frame_count of its track
    /// @param period_ms         of one image
    /// @param shown_before      images with the first image's SyncNumber that lie before it
    FilmClock(const AudioPlayerkel* audio, std::int32_t audio_frame_count, DWORD period_ms,
              DWORD shown_before);

    /// Whether the image with this SyncNumber is due.
    Verdict Ask(std::uint32_t sync_number);
    /// How long a Wait may sleep before it asks again, in milliseconds.
    DWORD DelayMs() const { return delay_ms_; }
    /// The image that was due is being shown.
    void Shown(std::uint32_t sync_number);
    /// Whether the image shown last has had its period.
    bool LastImageIsOver();
    /// Whether a film that plays over and over may begin anew; with sound, the sound decides.
    bool MayRestart();
    /// The film begins anew at image 0.
    void Restarted();
    /// The picture was held for so long: what is due moves on.
    void HeldFor(DWORD milliseconds);

private:
    bool SoundDecides(std::uint32_t sync_number) const;
    bool PeriodIsOver();
    Verdict AskSound(std::int32_t count, std::int32_t target);

    const AudioPlayerkel* audio_;
    const std::atomic<std::int32_t>* count_; ///< null without sound
    std::int32_t audio_frame_count_;
    DWORD period_ms_;
    DWORD last_ms_; ///< when the last image was due
    DWORD delay_ms_ = 0;
    std::int64_t group_ = -1;  ///< SyncNumber of the images that are being shown
    DWORD group_start_ms_ = 0; ///< when the first of them was due
    DWORD group_index_ = 0;    ///< how many of them have been shown
    DWORD first_group_index_;
    std::int32_t last_count_ = 0;
    bool wrapped_ = false; ///< the count went back: the sound has begun anew
};

} // namespace kelvo
