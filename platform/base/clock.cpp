#include "platform/base/clock.h"

#include "platform/base/Waiting.h"
#include "platform/base/threads.h"

#include <cassert>

namespace kelvo::platform {

namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

nanoseconds RealNow() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

// Also right for a static object that asks before this file's turn has come.
nanoseconds ProgramStart() {
    static const nanoseconds start = RealNow();
    return start;
}
[[maybe_unused]] const nanoseconds kAskedAtTheStart = ProgramStart();

// Guarded by WaitMutex, except that `in_use` is also read without it.
struct HandTurned {
    std::atomic<bool> in_use{false};
    int number = 0; ///< which of the clocks so far
    ManualTime mover = ManualTime::OnlyAdvance;
    nanoseconds now{};
};
constinit HandTurned manual;

} // namespace

nanoseconds ClockNow() {
    if (manual.in_use) {
        const std::scoped_lock lock{WaitMutex()};
        if (manual.in_use) return manual.now;
    }
    const nanoseconds start = ProgramStart();
    return RealNow() - start;
}

std::optional<Deadline> DeadlineAfter(DWORD wait_ms) {
    if (wait_ms == INFINITE) return std::nullopt;
    const std::scoped_lock lock{WaitMutex()};
    if (manual.in_use && manual.mover == ManualTime::OnlyAdvance) {
        return Deadline{manual.now + milliseconds{wait_ms}, manual.number};
    }
    return RealDeadlineAfter(milliseconds{wait_ms});
}

Deadline RealDeadlineAfter(milliseconds wait) {
    return {RealNow() + wait, std::nullopt};
}

bool HasPassed(const Deadline& deadline) {
    if (!deadline.manual_clock) return RealNow() >= deadline.at;
    // With its clock gone nobody could ever end the wait.
    return !manual.in_use || manual.number != *deadline.manual_clock || manual.now >= deadline.at;
}

bool SleepMovesClock(DWORD sleep_ms) {
    const std::scoped_lock lock{WaitMutex()};
    if (!manual.in_use || manual.mover != ManualTime::SleepToo) return false;
    manual.now += milliseconds{sleep_ms};
    return true;
}

ManualClock::ManualClock(milliseconds start, ManualTime mover) {
    const std::scoped_lock lock{WaitMutex()};
    assert(!manual.in_use);
    ++manual.number;
    manual.mover = mover;
    manual.now = start;
    manual.in_use = true;
}

ManualClock::~ManualClock() {
    const std::scoped_lock lock{WaitMutex()};
    manual.in_use = false;
    NotifySleepers();
}

void ManualClock::Advance(nanoseconds step) {
    const std::scoped_lock lock{WaitMutex()};
    manual.now += step;
    NotifySleepers();
}

int ManualClock::SleeperCount() const {
    const std::scoped_lock lock{WaitMutex()};
    return CountSleepers();
}

} // namespace kelvo::platform

DWORD GetTickCount() {
    kelvo::platform::ThreadCheckpoint();
    const auto now =
        std::chrono::duration_cast<std::chrono::milliseconds>(kelvo::platform::ClockNow());
    return static_cast<DWORD>(now.count());
}
