#pragma once
// The layer's clock. Sleep, timed waits and timers go by it, so a test that turns it by hand turns
// them all.

#include "platform/base/types.h"

#include <chrono>
#include <cstdint>

/// Milliseconds since the program began, so that it starts again from 0 only after 49.7 days of one
/// run. Any thread.
DWORD GetTickCount();

namespace kelvo::platform {

/// The same clock, finer: the time since the program began. Never goes back. Any thread.
[[nodiscard]] std::chrono::nanoseconds ClockNow();

/// Who moves a clock that is turned by hand.
enum class ManualTime : std::uint8_t {
    OnlyAdvance, ///< Advance alone; a Sleep waits for another thread to call it
    SleepToo,    ///< Sleep moves it by its length and returns at once; timed waits last as long as
                 ///< ever
};

/// Stands in place of the system's clock while it lives; one at a time. For tests.
class ManualClock {
public:
    explicit ManualClock(std::chrono::milliseconds start = {},
                         ManualTime mover = ManualTime::OnlyAdvance);
    ~ManualClock();
    ManualClock(const ManualClock&) = delete;
    ManualClock& operator=(const ManualClock&) = delete;

    /// Moves the time on; who has waited long enough by it goes on. Any thread.
    void Advance(std::chrono::nanoseconds step);

    /// How many threads wait for a time to come: what a test looks at before it advances.
    [[nodiscard]] int SleeperCount() const;
};

} // namespace kelvo::platform
