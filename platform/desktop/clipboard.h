#pragma once
// The desktop's clipboard, for pictures. UI thread only.

#include "platform/base/bitmaps.h"
#include "platform/base/types.h"

/// Fails while another window of the program holds the clipboard open.
BOOL OpenClipboard(HWND owner);
/// Gives what SetClipboardData brought to the desktop. Fails when the clipboard is not open.
BOOL CloseClipboard();
BOOL IsClipboardFormatAvailable(UINT format);
/// @return a block for GlobalLock and GlobalSize; it belongs to the clipboard and lives until the
/// clipboard is closed. 0 when there is no picture.
HANDLE GetClipboardData(UINT format);
BOOL EmptyClipboard();
/// Takes over the block (from GlobalAlloc); fails before EmptyClipboard, and for a block that is
/// no packed bitmap, which then stays the caller's.
HANDLE SetClipboardData(UINT format, HANDLE block);
