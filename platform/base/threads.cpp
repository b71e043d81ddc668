#include "platform/base/threads.h"

#include "platform/base/Immortal.h"
#include "platform/base/Waiting.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <map>
#include <tuple>
#include <utility>

namespace kelvo::platform {

namespace {

constexpr DWORD kMostSuspensions = 127;
constexpr DWORD kReservationFlag =
    0x10000; ///< the stack size is a reservation, as it is here anyway
constexpr std::chrono::milliseconds kPatience{500};
constexpr SIZE_T kLeastStack =
    0x40000; ///< what the language's own library needs, with room to spare

// Thrown by a checkpoint, caught where the thread began; nobody else knows of it.
struct ThreadEnd {
    DWORD exit_code;
};

// All running threads by id; with WaitMutex.
struct Registry {
    std::map<DWORD, std::shared_ptr<ThreadObject>> threads;
    DWORD last_id = 0;
};

Registry& Threads() {
    static Immortal<Registry> registry;
    return *registry;
}

std::shared_ptr<ThreadObject> NewThreadObject(bool ours, DWORD suspended_flag) {
    auto thread = std::make_shared<ThreadObject>();
    const std::scoped_lock lock{WaitMutex()};
    thread->id = ++Threads().last_id;
    thread->ours = ours;
    thread->suspend_count = suspended_flag != 0 ? 1 : 0;
    thread->attention = suspended_flag != 0;
    Threads().threads.emplace(thread->id, thread);
    return thread;
}

// The first end counts: a thread that was abandoned has had its end already.
void MarkEnded(ThreadObject& thread, DWORD exit_code) {
    if (!thread.ended) {
        thread.ended = true;
        thread.exit_code = exit_code;
        NotifyWaiters(thread);
    }
    Threads().threads.erase(thread.id);
}

thread_local ThreadObject* current = nullptr;

// Ends the object of a thread that this layer did not start, with that thread.
struct ForeignThreadEnd {
    ~ForeignThreadEnd() {
        if (current == nullptr) return;
        const std::scoped_lock lock{WaitMutex()};
        const auto keep_until_unlocked = std::exchange(current, nullptr)->shared_from_this();
        MarkEnded(*keep_until_unlocked, 0);
    }
};

void BeginCurrent(ThreadObject& thread) {
    current = &thread;
    const std::scoped_lock lock{WaitMutex()};
    thread.system_id = static_cast<int>(syscall(SYS_gettid));
    thread.changed.notify_all();
}

struct Start {
    std::shared_ptr<ThreadObject> thread;
    LPTHREAD_START_ROUTINE routine;
    LPVOID argument;
};

DWORD RunToTheEnd(const Start& start) {
    try {
        ThreadCheckpoint(); // created suspended, or ended before it began
        return start.routine(start.argument);
    } catch (const ThreadEnd& end) {
        return end.exit_code;
    }
}

void* ThreadMain(void* data) {
    const std::unique_ptr<Start> start{static_cast<Start*>(data)};
    BeginCurrent(*start->thread);
    const DWORD exit_code = RunToTheEnd(*start);
    const std::scoped_lock lock{WaitMutex()};
    current = nullptr;
    MarkEnded(*start->thread, exit_code);
    return nullptr;
}

// Detached: the thread's object, not the system's, is what others wait for.
int StartSystemThread(SIZE_T stack_size, std::unique_ptr<Start> start) {
    pthread_attr_t attributes;
    int failure = pthread_attr_init(&attributes);
    if (failure != 0) return failure;
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (stack_size > 0) {
        const auto page = static_cast<SIZE_T>(sysconf(_SC_PAGESIZE));
        const SIZE_T wanted = std::max(stack_size, kLeastStack);
        failure = wanted > SIZE_MAX / 2
                      ? ENOMEM
                      : pthread_attr_setstacksize(&attributes, (wanted + page - 1) / page * page);
    }
    if (failure == 0) {
        pthread_t system_thread;
        failure = pthread_create(&system_thread, &attributes, ThreadMain, start.get());
        if (failure == 0) std::ignore = start.release(); // ThreadMain has it now
    }
    pthread_attr_destroy(&attributes);
    return failure;
}

std::shared_ptr<ThreadObject> FindThread(HANDLE handle) {
    if (handle == GetCurrentThread()) return CurrentThreadObject().shared_from_this();
    return FindObject<ThreadObject>(handle);
}

enum class MayEnd : std::uint8_t { No, Yes };

// Waits while suspended; then unwinds if the thread is to end and here it may.
void Attend(ThreadObject& self, MayEnd may_end) {
    std::unique_lock lock{WaitMutex()};
    while (self.suspend_count > 0 && !self.to_end) {
        self.changed.wait(lock);
    }
    self.attention = self.to_end;
    if (may_end == MayEnd::Yes && self.MustEndHere()) throw ThreadEnd{self.exit_code};
}

int NiceLevel(int priority) {
    switch (priority) {
    case THREAD_PRIORITY_IDLE:
        return 19;
    case THREAD_PRIORITY_TIME_CRITICAL:
        return -20;
    default:
        return -5 * priority;
    }
}

} // namespace

ThreadObject& CurrentThreadObject() {
    if (current == nullptr) {
        BeginCurrent(*NewThreadObject(false, 0)); // the registry holds it
        thread_local const ForeignThreadEnd end_with_thread;
        std::ignore = &end_with_thread;
    }
    return *current;
}

void ThreadCheckpoint() {
    if (current != nullptr && current->attention) Attend(*current, MayEnd::Yes);
}

void SuspensionPoint() {
    if (current != nullptr && current->attention) Attend(*current, MayEnd::No);
}

bool WakeThread(DWORD thread_id) {
    const std::scoped_lock lock{WaitMutex()};
    const auto found = Threads().threads.find(thread_id);
    if (found == Threads().threads.end()) return false;
    found->second->woken = true;
    found->second->changed.notify_all();
    return true;
}

} // namespace kelvo::platform

using kelvo::platform::ThreadCheckpoint;
using kelvo::platform::ThreadObject;
using kelvo::platform::WaitMutex;

HANDLE CreateThread(SECURITY_ATTRIBUTES*, SIZE_T stack_size, LPTHREAD_START_ROUTINE start,
                    LPVOID argument, DWORD flags, LPDWORD id) {
    ThreadCheckpoint();
    if (start == nullptr ||
        (flags & ~(CREATE_SUSPENDED | kelvo::platform::kReservationFlag)) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const auto thread = kelvo::platform::NewThreadObject(true, flags & CREATE_SUSPENDED);
    if (id != nullptr) *id = thread->id; // before the thread runs, which may look at it
    const int failure = kelvo::platform::StartSystemThread(
        stack_size, std::make_unique<kelvo::platform::Start>(thread, start, argument));
    if (failure != 0) {
        const std::scoped_lock lock{WaitMutex()};
        kelvo::platform::MarkEnded(*thread, 0);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    return kelvo::platform::AddHandle(thread);
}

std::uintptr_t _beginthreadex(void* security, unsigned stack_size, unsigned (*start)(void*),
                              void* argument, unsigned flags, unsigned* id) {
    return reinterpret_cast<std::uintptr_t>(CreateThread(
        static_cast<SECURITY_ATTRIBUTES*>(security), stack_size, start, argument, flags, id));
}

void ExitThread(DWORD exit_code) {
    if (!kelvo::platform::CurrentThreadObject().ours) std::exit(static_cast<int>(exit_code));
    throw kelvo::platform::ThreadEnd{exit_code};
}

BOOL GetExitCodeThread(HANDLE thread, LPDWORD exit_code) {
    ThreadCheckpoint();
    kelvo::platform::ServeSentMessages();
    const auto object = kelvo::platform::FindThread(thread);
    if (!object) return FALSE;
    if (exit_code == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const std::scoped_lock lock{WaitMutex()};
    *exit_code = object->ended ? object->exit_code : STILL_ACTIVE;
    return TRUE;
}

DWORD SuspendThread(HANDLE thread) {
    ThreadCheckpoint();
    constexpr DWORD kFailed = static_cast<DWORD>(-1);
    const auto object = kelvo::platform::FindThread(thread);
    if (!object) return kFailed;
    DWORD before = 0;
    {
        const std::scoped_lock lock{WaitMutex()};
        if (object->ended || object->suspend_count == kelvo::platform::kMostSuspensions) {
            SetLastError(object->ended ? ERROR_ACCESS_DENIED : ERROR_SIGNAL_REFUSED);
            return kFailed;
        }
        before = object->suspend_count++;
        object->Alert();
    }
    ThreadCheckpoint(); // it may have been the calling thread itself
    return before;
}

DWORD ResumeThread(HANDLE thread) {
    ThreadCheckpoint();
    const auto object = kelvo::platform::FindThread(thread);
    if (!object) return static_cast<DWORD>(-1);
    const std::scoped_lock lock{WaitMutex()};
    if (object->ended) {
        SetLastError(ERROR_ACCESS_DENIED);
        return static_cast<DWORD>(-1);
    }
    const DWORD before = object->suspend_count;
    if (before > 0) --object->suspend_count;
    object->changed.notify_all();
    return before;
}

BOOL TerminateThread(HANDLE thread, DWORD exit_code) {
    ThreadCheckpoint();
    const auto object = kelvo::platform::FindThread(thread);
    if (!object) return FALSE;
    {
        const std::scoped_lock lock{WaitMutex()};
        if (object->ended) return TRUE;
        if (!object->ours) {
            SetLastError(ERROR_ACCESS_DENIED);
            return FALSE;
        }
        object->to_end = true;
        object->exit_code = exit_code;
        object->Alert();
    }
    ThreadCheckpoint(); // it may have been the calling thread itself
    const auto deadline = kelvo::platform::RealDeadlineAfter(kelvo::platform::kPatience);
    std::ignore = kelvo::platform::WaitFor(object.get(), deadline); // either way it counts as ended
    const std::scoped_lock lock{WaitMutex()};
    kelvo::platform::MarkEnded(*object, exit_code);
    return TRUE;
}

BOOL SetThreadPriority(HANDLE thread, int priority) {
    ThreadCheckpoint();
    const auto object = kelvo::platform::FindThread(thread);
    if (!object) return FALSE;
    if (std::abs(priority) > THREAD_PRIORITY_HIGHEST &&
        std::abs(priority) != THREAD_PRIORITY_TIME_CRITICAL) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::unique_lock lock{WaitMutex()};
    while (object->system_id == 0) {
        object->changed.wait(lock); // it has been started and says its number at once
    }
    const auto system_id = static_cast<id_t>(object->system_id);
    if (object->ended ||
        setpriority(PRIO_PROCESS, system_id, kelvo::platform::NiceLevel(priority)) != 0) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    return TRUE;
}

HANDLE GetCurrentThread() {
    return reinterpret_cast<HANDLE>(static_cast<INT_PTR>(-2));
}

DWORD GetCurrentThreadId() {
    return kelvo::platform::CurrentThreadObject().id;
}

void Sleep(DWORD milliseconds) {
    if (milliseconds == 0) {
        ThreadCheckpoint();
        kelvo::platform::ServeSentMessages();
        sched_yield();
        return;
    }
    if (milliseconds != INFINITE && kelvo::platform::SleepMovesClock(milliseconds)) {
        ThreadCheckpoint();
        kelvo::platform::ServeSentMessages();
        return;
    }
    const auto deadline = kelvo::platform::DeadlineAfter(milliseconds);
    std::ignore = kelvo::platform::WaitFor(nullptr, deadline); // only the time can end it
}
