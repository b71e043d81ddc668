#pragma once
// Events, and waiting for them and for the end of threads. Any thread.

#include "platform/base/errors.h"
#include "platform/base/types.h"

struct SECURITY_ATTRIBUTES;

inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

/// @param security not looked at
/// @param manual_reset FALSE: each signal lets one wait through and is gone with it
/// @param name must be null (ERROR_INVALID_PARAMETER): events are not shared between processes
/// @return null on failure; close it by CloseHandle.
HANDLE CreateEventA(SECURITY_ATTRIBUTES* security, BOOL manual_reset, BOOL initially_set,
                    LPCSTR name);

/// FALSE for what is no event (ERROR_INVALID_HANDLE).
BOOL SetEvent(HANDLE event);
BOOL ResetEvent(HANDLE event);

/// Waits for an event to be set or a thread to end, at most `milliseconds` by the layer's clock (0
/// only asks, INFINITE waits for ever). While it waits, messages that other threads have sent are
/// served (threads.h, WaitHook).
/// @return WAIT_OBJECT_0, WAIT_TIMEOUT, or WAIT_FAILED for what can be neither.
DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);
