#pragma once
// How threads of this layer wait: for an object, for a time by the layer's clock, or both, serving
// what other threads have sent meanwhile. One lock guards the state of everything that can be
// waited for, of threads and of the clock: they change rarely, and a wait looks at several of them
// at once.

#include "platform/base/HandleTable.h"
#include "platform/base/types.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>

namespace kelvo::platform {

/// Held while any of the state below is read or changed.
[[nodiscard]] std::mutex& WaitMutex();

class Waitable : public SystemObject {
public:
    /// Whether a wait may end now; with WaitMutex. Uses the signal up where one wait is all it is
    /// for.
    [[nodiscard]] virtual bool TakeSignal() = 0;
};

/// A moment after which a wait has lasted long enough, on the clock that was in use when it was
/// made.
struct Deadline {
    std::chrono::nanoseconds at{};   ///< as ClockNow, or as the real clock has it
    std::optional<int> manual_clock; ///< the number of the clock that is turned by hand
};

/// Nothing for INFINITE. Takes WaitMutex.
[[nodiscard]] std::optional<Deadline> DeadlineAfter(DWORD milliseconds);
/// The same on the real clock, whatever clock is in use.
[[nodiscard]] Deadline RealDeadlineAfter(std::chrono::milliseconds wait);

/// With WaitMutex.
[[nodiscard]] bool HasPassed(const Deadline& deadline);

/// Moves a clock that Sleep moves on; false when the clock in use is another. Takes WaitMutex.
bool SleepMovesClock(DWORD milliseconds);

enum class Waited : std::uint8_t { Signalled, TimedOut };

/// Waits on the calling thread for the object (if any) or the deadline (if any). A checkpoint.
[[nodiscard]] Waited WaitFor(Waitable* object, const std::optional<Deadline>& deadline);

/// Lets those who wait for this object look again; with WaitMutex.
void NotifyWaiters(const Waitable& object);
/// Lets those who wait for a time on a clock that is turned by hand look again; with WaitMutex.
void NotifySleepers();
/// How many of them there are; with WaitMutex.
[[nodiscard]] int CountSleepers();

/// Lets the calling thread answer what was sent to it.
void ServeSentMessages();

/// One thread, of this layer or not. All with WaitMutex, except what says otherwise.
class ThreadObject : public Waitable, public std::enable_shared_from_this<ThreadObject> {
public:
    bool TakeSignal() override { return ended; }

    /// Tells the thread that something about it changed.
    void Alert() {
        attention = true;
        changed.notify_all();
    }

    /// Whether the thread, which calls this, is to unwind: one that unwinds already cannot again.
    [[nodiscard]] bool MustEndHere() const { return to_end && std::uncaught_exceptions() == 0; }

    std::atomic<bool> attention{false}; ///< suspended or to be ended; read without the lock
    DWORD id = 0;                       ///< fixed before the thread can be seen
    bool ours = false;                  ///< started by CreateThread; fixed like the id

    std::condition_variable changed; ///< only this thread waits on it
    int system_id = 0;               ///< the kernel's number; 0 until it runs
    DWORD suspend_count = 0;
    DWORD exit_code = 0; ///< once it has ended or is to end
    bool to_end = false; ///< by force
    bool ended = false;
    bool woken = false; ///< its hook has something to do

    const Waitable* waits_for = nullptr; ///< may be none
    bool waits_on_manual_clock = false;
};

/// The calling thread's object; made at its first call.
[[nodiscard]] ThreadObject& CurrentThreadObject();

} // namespace kelvo::platform
