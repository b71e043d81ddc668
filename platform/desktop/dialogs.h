#pragma once
// Dialogs: windows made from templates in the resources, what the system does in them (focus,
// default button, keys), and the calls that reach a control by its number. Controls stand in
// controls.h. Desktop's thread only.

#include "platform/desktop/controls.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

/// @return TRUE for a handled message; for WM_INITDIALOG: TRUE to have the focus set.
using DLGPROC = INT_PTR (*)(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

inline constexpr UINT WM_NEXTDLGCTL = 0x0028;
/// wParam: the control that will get the focus; lParam: the last argument of the creating call.
inline constexpr UINT WM_INITDIALOG = 0x0110;

/// Sent to the dialog when F1 goes down; lParam points at a HELPINFO.
inline constexpr UINT WM_HELP = 0x0053;
inline constexpr int HELPINFO_WINDOW = 1;
struct HELPINFO {
    UINT cbSize;
    int iContextType; ///< HELPINFO_WINDOW
    int iCtrlId;
    HANDLE hItemHandle; ///< the control with the focus
    DWORD_PTR dwContextId;
    POINT MousePos; ///< on the screen
};

inline constexpr UINT DM_GETDEFID = WM_USER + 0;
inline constexpr UINT DM_SETDEFID = WM_USER + 1;
inline constexpr WORD DC_HASDEFID = 0x534B;

inline constexpr DWORD WS_EX_CONTROLPARENT = 0x00010000; ///< Tab goes through its children

inline constexpr DWORD DS_ABSALIGN = 0x0001;     ///< the place is on the screen
inline constexpr DWORD DS_NOFAILCREATE = 0x0010; ///< without the controls that cannot be made
inline constexpr DWORD DS_SETFONT = 0x0040;
inline constexpr DWORD DS_MODALFRAME = 0x0080;
inline constexpr DWORD DS_CONTROL = 0x0400; ///< a page of another dialog: no frame, no focus
inline constexpr DWORD DS_CENTER = 0x0800;
inline constexpr DWORD DS_CENTERMOUSE = 0x1000;

/// The system's own bytes at the beginning of a dialog's extra bytes; a class for dialogs reserves
/// them and calls DefDlgProcA. The three values are pointer-sized.
inline constexpr int DLGWINDOWEXTRA = 30;
inline constexpr int DWLP_MSGRESULT = 0; ///< the answer to a message that the procedure handled
inline constexpr int DWLP_DLGPROC = 8;
inline constexpr int DWLP_USER = 16;

/// The head of a template that is no extended one; a template is found in the resources and passed
/// on as it is.
struct DLGTEMPLATE {
    DWORD style;
    DWORD dwExtendedStyle;
    WORD cdit; ///< number of controls
    std::int16_t x, y, cx, cy;
};

/// Creates a dialog and its controls from a DIALOG or DIALOGEX template, with its font and in its
/// units; sends WM_INITDIALOG; sets the focus to the first control with WS_TABSTOP if that was
/// answered TRUE; with WS_VISIBLE shows it. A template that names no class gets the system's.
/// @param dialog_template  what LockResource gave; every byte is checked to lie in that resource
/// @return 0 for a template that is damaged or none of the resources, for an unknown class of the
/// dialog or (without DS_NOFAILCREATE) of a control, and when WM_INITDIALOG destroyed the dialog.
HWND CreateDialogIndirectParamA(HINSTANCE instance, const DLGTEMPLATE* dialog_template, HWND owner,
                                DLGPROC procedure, LPARAM parameter);

/// The answer of a dialog's class: asks the dialog procedure first, then keeps the focus and the
/// default button, erases in the dialog's colour, makes IDCANCEL of WM_CLOSE.
LRESULT DefDlgProcA(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

/// What keys mean in a dialog: Tab and the arrows move the focus, Enter is the default button,
/// Escape IDCANCEL, Alt and a letter the control that has it underlined. All other messages of the
/// dialog and its controls are translated and dispatched.
/// @return FALSE, and nothing is done, for a message of another window.
BOOL IsDialogMessageA(HWND dialog, MSG* message);

/// Makes pixels of dialog units, in the font of the dialog's template.
/// @return FALSE for a window that is no dialog.
BOOL MapDialogRect(HWND dialog, RECT* rect);

/// The child with this number. @return 0 when there is none. Any thread.
HWND GetDlgItem(HWND dialog, int id);
/// The number of a child, 0 for other windows. Any thread.
int GetDlgCtrlID(HWND control);
BOOL SetDlgItemTextA(HWND dialog, int id, LPCSTR text);
/// @return the bytes copied, the terminating 0 not counted.
UINT GetDlgItemTextA(HWND dialog, int id, LPSTR text, int capacity);
LRESULT SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wparam, LPARAM lparam);
/// @param check  BST_UNCHECKED, BST_CHECKED or BST_INDETERMINATE
BOOL CheckDlgButton(HWND dialog, int id, UINT check);
UINT IsDlgButtonChecked(HWND dialog, int id);

/// The next (or previous) control that Tab stops at: visible, enabled, with WS_TABSTOP; round and
/// round. @param control  0: begins before the first
/// @return `control` when there is no other.
HWND GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous);
/// The next (or previous) visible and enabled control of the same group; round and round.
HWND GetNextDlgGroupItem(HWND dialog, HWND control, BOOL previous);
