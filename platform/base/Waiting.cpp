#include "platform/base/Waiting.h"

#include "platform/base/Immortal.h"
#include "platform/base/threads.h"

#include <algorithm>
#include <vector>

namespace kelvo::platform {

namespace {

std::atomic<WaitHook> wait_hook{nullptr};

std::vector<ThreadObject*>& WaitingThreads() {
    static Immortal<std::vector<ThreadObject*>> threads;
    return *threads;
}

// Puts the thread among the waiting ones as long as it lives; with WaitMutex at both ends.
class Registration {
public:
    Registration(ThreadObject& thread, const Waitable* object,
                 const std::optional<Deadline>& deadline)
        : thread_(thread) {
        thread.waits_for = object;
        thread.waits_on_manual_clock = deadline && deadline->manual_clock;
        WaitingThreads().push_back(&thread);
    }
    ~Registration() { std::erase(WaitingThreads(), &thread_); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

private:
    ThreadObject& thread_;
};

void WaitForChange(ThreadObject& self, std::unique_lock<std::mutex>& lock,
                   const std::optional<Deadline>& deadline) {
    if (!deadline || deadline->manual_clock) {
        self.changed.wait(lock);
    } else {
        self.changed.wait_until(lock, std::chrono::steady_clock::time_point{deadline->at});
    }
}

// Waits until the object or the deadline ends the wait, or the thread has something else to do.
std::optional<Waited> WaitUndisturbed(ThreadObject& self, Waitable* object,
                                      const std::optional<Deadline>& deadline) {
    std::unique_lock lock{WaitMutex()};
    const Registration registration{self, object, deadline};
    while (self.suspend_count == 0 && !self.MustEndHere()) {
        if (object != nullptr && object->TakeSignal()) return Waited::Signalled;
        if (deadline && HasPassed(*deadline)) return Waited::TimedOut;
        if (self.woken) break;
        WaitForChange(self, lock, deadline);
    }
    return std::nullopt;
}

} // namespace

std::mutex& WaitMutex() {
    static Immortal<std::mutex> mutex;
    return *mutex;
}

WaitHook SetWaitHook(WaitHook hook) {
    return wait_hook.exchange(hook);
}

void ServeSentMessages() {
    {
        ThreadObject& self = CurrentThreadObject();
        const std::scoped_lock lock{WaitMutex()};
        self.woken = false;
    }
    if (const WaitHook hook = wait_hook) hook();
}

Waited WaitFor(Waitable* object, const std::optional<Deadline>& deadline) {
    ThreadObject& self = CurrentThreadObject();
    for (;;) {
        ThreadCheckpoint();
        ServeSentMessages();
        if (const auto end = WaitUndisturbed(self, object, deadline)) return *end;
    }
}

void NotifyWaiters(const Waitable& object) {
    for (ThreadObject* thread : WaitingThreads()) {
        if (thread->waits_for == &object) thread->changed.notify_all();
    }
}

void NotifySleepers() {
    for (ThreadObject* thread : WaitingThreads()) {
        if (thread->waits_on_manual_clock) thread->changed.notify_all();
    }
}

int CountSleepers() {
    return static_cast<int>(
        std::ranges::count_if(WaitingThreads(), &ThreadObject::waits_on_manual_clock));
}

} // namespace kelvo::platform
