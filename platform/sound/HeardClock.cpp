#include "platform/sound/HeardClock.h"

namespace kelvo::platform {
namespace {

/// What part of an error one block takes away: jitter of the taking thread is smoothed out.
constexpr int kPull = 16;
/// Beyond this the stream was interrupted: no smoothing across a gap.
constexpr std::chrono::milliseconds kGap{60};

} // namespace

HeardClock::HeardClock(std::uint32_t bytes_per_second, Duration latency)
    : bytes_per_second_(bytes_per_second), latency_(latency) {}

HeardClock::Duration HeardClock::LengthOf(std::size_t bytes) const {
    return std::chrono::nanoseconds(static_cast<std::int64_t>(bytes) * 1'000'000'000 /
                                    bytes_per_second_);
}

HeardClock::Time HeardClock::TakeBlock(Time now, std::size_t block_bytes) {
    const Time expected = now + latency_;
    Time heard = next_;
    const Duration error = expected - next_;
    if (!started_ || error > kGap || error < -kGap) {
        heard = expected;
    } else {
        heard += error / kPull;
    }
    started_ = true;
    next_ = heard + LengthOf(block_bytes);
    return heard;
}

} // namespace kelvo::platform
