#pragma once
// The procedures that the framework's window classes run: they find the object behind a window
// handle and hand it each message. The object is stored with its window, never looked up.

#include "platform/desktop/windows.h"

namespace kelvo {

class CDialog;
class CWin;

/// Window extra bytes: where the object stands in a window of RegisterNewClass's classes, and how
/// many bytes such a class reserves.
inline constexpr int kObjectOffset = 0;
inline constexpr int kWindowExtraBytes = kObjectOffset + static_cast<int>(sizeof(void*));
/// The same for dialog windows, behind the dialog manager's own 30 bytes. The place is misaligned:
/// the layer copies the value byte by byte.
inline constexpr int kDialogObjectOffset = 30;
inline constexpr int kDialogExtraBytes = kDialogObjectOffset + static_cast<int>(sizeof(void*));

/// Stores the object with a window of RegisterNewClass's classes.
void BindWindow(HWND window, CWin* object);
/// Stores the object with a dialog.
void BindDialog(HWND window, CDialog* object);

/// Runs every class of RegisterNewClass: binds the object at WM_NCCREATE, then calls its
/// HandleMessage and falls back to the default procedure.
LRESULT CWinWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
/// What the dialog manager asks: binds the object at WM_INITDIALOG, then calls its HandleMessage.
/// @return FALSE for what it did not handle, else the message result
INT_PTR LumDlgProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
/// Runs the dialog classes: binds the object at WM_NCCREATE, then calls its HandleClassMessage and
/// falls back to the dialog manager.
LRESULT CDialogWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

} // namespace kelvo
