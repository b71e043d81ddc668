#pragma once
// Accelerators: keys that stand for commands, from a table in the resources. Desktop's thread only.

#include "platform/desktop/messages.h"

using HACCEL = struct AcceleratorTable*;

/// A table of the module's resources. It lives as long as the program; loading it again gives the
/// same one. @return 0 when there is none or it is damaged.
HACCEL LoadAcceleratorsA(HINSTANCE module, LPCSTR name);

/// Sends the command of a key message to the window: WM_COMMAND with the number in the low word of
/// wParam and 1 in its high word. @return 0 when the message is no key of the table.
int TranslateAcceleratorA(HWND window, HACCEL table, MSG* message);
