#pragma once
// Closing of what CreateFileA, CreateThread, _beginthreadex and CreateEventA give.

#include "platform/base/errors.h"
#include "platform/base/types.h"

/// Gives the handle back. A thread goes on running, and who waits on the object goes on waiting.
/// @return FALSE for what is no open handle (ERROR_INVALID_HANDLE), and for a file whose late write
///         error shows now (it is closed all the same). GetCurrentThread() may be closed; nothing
///         happens.
BOOL CloseHandle(HANDLE handle);
