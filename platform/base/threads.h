#pragma once
// Threads by the documented calls. Suspension and termination take effect at the thread's next call
// into this layer (an asynchronous stop could hold the allocator's lock): there it waits, or an
// internal exception unwinds it to its start, so its objects are destroyed. Nobody swallows that
// exception: `catch (...)` in a thread's body throws on.
// Any thread may make any of these calls.

#include "platform/base/errors.h"
#include "platform/base/types.h"

#include <cstdint>

inline constexpr DWORD STILL_ACTIVE = 259;
inline constexpr DWORD CREATE_SUSPENDED = 4;

inline constexpr int THREAD_PRIORITY_IDLE = -15;
inline constexpr int THREAD_PRIORITY_LOWEST = -2;
inline constexpr int THREAD_PRIORITY_BELOW_NORMAL = -1;
inline constexpr int THREAD_PRIORITY_NORMAL = 0;
inline constexpr int THREAD_PRIORITY_ABOVE_NORMAL = 1;
inline constexpr int THREAD_PRIORITY_HIGHEST = 2;
inline constexpr int THREAD_PRIORITY_TIME_CRITICAL = 15;

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};

using LPTHREAD_START_ROUTINE = DWORD (*)(LPVOID argument);

/// Starts a thread; what `start` returns is its exit code.
/// @param security   not looked at
/// @param stack_size in bytes; 0 is the system's usual one, and less than the least is the least
/// @param flags      0, or CREATE_SUSPENDED: it waits for its first ResumeThread
/// @param id         takes the thread's id; may be null
/// @return null on failure. The handle must be closed; the thread does not end with it.
HANDLE CreateThread(SECURITY_ATTRIBUTES* security, SIZE_T stack_size, LPTHREAD_START_ROUTINE start,
                    LPVOID argument, DWORD flags, LPDWORD id);

/// CreateThread as the language's runtime offers it. @return 0 on failure.
std::uintptr_t _beginthreadex(void* security, unsigned stack_size, unsigned (*start)(void*),
                              void* argument, unsigned flags, unsigned* id);

/// Ends the calling thread, unwinding it. On a thread that CreateThread did not start (the main
/// one), it ends the process with this code.
[[noreturn]] void ExitThread(DWORD exit_code);

/// @param exit_code takes STILL_ACTIVE (259) until the thread has ended; a thread that was ended by
///        force has the code given there
/// @return FALSE for what is no thread (ERROR_INVALID_HANDLE). Sent messages are served (below).
BOOL GetExitCodeThread(HANDLE thread, LPDWORD exit_code);

/// @return how often it was suspended before, or (DWORD)-1: no thread, or suspended 127 times. The
///         thread stops at its next call into the layer, the calling thread at once.
DWORD SuspendThread(HANDLE thread);

/// @return how often it was suspended before (it runs on when that was 0 or 1), or (DWORD)-1.
DWORD ResumeThread(HANDLE thread);

/// Ends the thread by force. Waits, serving sent messages, until the thread has unwound; one that
/// does not come into the layer within half a second is abandoned: it counts as ended, with this
/// code, and ends if it ever does come. Ending a thread that has ended changes nothing and
/// succeeds.
BOOL TerminateThread(HANDLE thread, DWORD exit_code);

/// @return FALSE when the system does not allow it (raising mostly; ERROR_ACCESS_DENIED) or the
/// level
///         is none of the above.
BOOL SetThreadPriority(HANDLE thread, int priority);

/// A pseudo handle that means the calling thread wherever it is used; need not be closed.
HANDLE GetCurrentThread();

DWORD GetCurrentThreadId();

/// Waits this long by the layer's clock (clock.h), serving sent messages; 0 gives way to others,
/// INFINITE never returns.
void Sleep(DWORD milliseconds);

namespace kelvo::platform {

/// Where a suspended thread waits and a terminated one begins to unwind. Every call of the layer
/// that a thread's body makes begins with it, before it takes a lock. It may throw, so it has no
/// place in what destructors call; there stands SuspensionPoint, which only waits.
void ThreadCheckpoint();
void SuspensionPoint();

/// Called without any lock on the thread that waits in Sleep, WaitForSingleObject,
/// GetExitCodeThread or TerminateThread: once before it blocks, and again after each WakeThread for
/// it. The window layer answers there what other threads have sent to this one. It may wait itself.
using WaitHook = void (*)();

/// @return the hook before; null takes it away.
WaitHook SetWaitHook(WaitHook hook);

/// Lets the thread call its hook now if it waits, else at its next wait. Never lost, any thread;
/// false when there is no such thread (any more).
bool WakeThread(DWORD thread_id);

} // namespace kelvo::platform
