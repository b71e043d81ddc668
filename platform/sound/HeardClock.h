#pragma once
// Estimates when bytes that the device has taken are heard. The device takes blocks, often several
// at once; what it has taken it plays one after the other at the sample rate. So the time at which
// a block is heard follows the one before, and is drawn gently to where the time of taking puts it,
// since the device's clock and ours never agree exactly.

#include <chrono>
#include <cstdint>

namespace kelvo::platform {

class HeardClock {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::steady_clock::duration;

    /// @param bytes_per_second  of the stream
    /// @param latency           from the taking of a block until its first sample is heard
    HeardClock(std::uint32_t bytes_per_second, Duration latency);
    /// For a latency that is known only later; before the first block.
    void SetLatency(Duration latency) { latency_ = latency; }

    /// The device takes a block now. @return when its first byte is heard
    Time TakeBlock(Time now, std::size_t block_bytes);
    Duration LengthOf(std::size_t bytes) const;

private:
    std::uint32_t bytes_per_second_;
    Duration latency_;
    Time next_{}; ///< when the next block is heard, if it is taken in time
    bool started_ = false;
};

} // namespace kelvo::platform
