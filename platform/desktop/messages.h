#pragma once
// Messages: the queue of each thread, sending and posting, timers. Numbers of messages that the
// program handles or sends stand here; those of controls and dialogs with the controls.

#include "platform/base/types.h"

inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_MOVE = 0x0003;
inline constexpr UINT WM_SIZE = 0x0005;
inline constexpr UINT WM_SETFOCUS = 0x0007;
inline constexpr UINT WM_KILLFOCUS = 0x0008;
inline constexpr UINT WM_ENABLE = 0x000A;
inline constexpr UINT WM_SETTEXT = 0x000C;
inline constexpr UINT WM_GETTEXT = 0x000D;
inline constexpr UINT WM_GETTEXTLENGTH = 0x000E;
inline constexpr UINT WM_PAINT = 0x000F;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr UINT WM_ERASEBKGND = 0x0014;
inline constexpr UINT WM_SHOWWINDOW = 0x0018;
inline constexpr UINT WM_NCCREATE = 0x0081;
inline constexpr UINT WM_NCDESTROY = 0x0082;
/// A press on a frame that this layer draws, or on a menu bar: wParam one of the HT values, lParam
/// the place on the screen. Frames of the window manager tell nothing.
inline constexpr UINT WM_NCLBUTTONDOWN = 0x00A1;
inline constexpr UINT WM_NCRBUTTONDOWN = 0x00A4;
inline constexpr UINT WM_NCMBUTTONDOWN = 0x00A7;
inline constexpr UINT WM_KEYDOWN = 0x0100;
inline constexpr UINT WM_KEYUP = 0x0101;
inline constexpr UINT WM_CHAR = 0x0102;
inline constexpr UINT WM_SYSKEYDOWN = 0x0104;
inline constexpr UINT WM_SYSKEYUP = 0x0105;
inline constexpr UINT WM_IME_COMPOSITION = 0x010F;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_SYSCOMMAND = 0x0112;
inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr UINT WM_MOUSEMOVE = 0x0200;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
inline constexpr UINT WM_LBUTTONDBLCLK = 0x0203;
inline constexpr UINT WM_RBUTTONDOWN = 0x0204;
inline constexpr UINT WM_RBUTTONUP = 0x0205;
inline constexpr UINT WM_RBUTTONDBLCLK = 0x0206;
inline constexpr UINT WM_MBUTTONDOWN = 0x0207;
inline constexpr UINT WM_MBUTTONUP = 0x0208;
inline constexpr UINT WM_MBUTTONDBLCLK = 0x0209;
/// To the window under the mouse: high word of wParam the way turned (signed, WHEEL_DELTA a notch,
/// above 0 away from the user), lParam the position on the screen. The default procedure hands it
/// on to the parent.
inline constexpr UINT WM_MOUSEWHEEL = 0x020A;
inline constexpr int WHEEL_DELTA = 120;
inline constexpr UINT WM_CAPTURECHANGED = 0x0215;
inline constexpr UINT WM_USER = 0x0400;

/// wParam of the mouse messages: what is held down.
inline constexpr WPARAM MK_LBUTTON = 0x0001;
inline constexpr WPARAM MK_RBUTTON = 0x0002;
inline constexpr WPARAM MK_SHIFT = 0x0004;
inline constexpr WPARAM MK_CONTROL = 0x0008;
inline constexpr WPARAM MK_MBUTTON = 0x0010;

/// wParam of the presses outside of the client area: what was hit.
inline constexpr WPARAM HTMENU = 5;
inline constexpr WPARAM HTLEFT = 10;
inline constexpr WPARAM HTRIGHT = 11;
inline constexpr WPARAM HTTOP = 12;
inline constexpr WPARAM HTTOPLEFT = 13;
inline constexpr WPARAM HTTOPRIGHT = 14;
inline constexpr WPARAM HTBOTTOM = 15;
inline constexpr WPARAM HTBOTTOMLEFT = 16;
inline constexpr WPARAM HTBOTTOMRIGHT = 17;
inline constexpr WPARAM HTBORDER = 18;

/// wParam of the key messages; letters and digits are their own capital ASCII.
inline constexpr WPARAM VK_BACK = 0x08;
inline constexpr WPARAM VK_TAB = 0x09;
inline constexpr WPARAM VK_RETURN = 0x0D;
inline constexpr WPARAM VK_SHIFT = 0x10;
inline constexpr WPARAM VK_CONTROL = 0x11;
inline constexpr WPARAM VK_MENU = 0x12;
inline constexpr WPARAM VK_ESCAPE = 0x1B;
inline constexpr WPARAM VK_SPACE = 0x20;
inline constexpr WPARAM VK_PRIOR = 0x21;
inline constexpr WPARAM VK_NEXT = 0x22;
inline constexpr WPARAM VK_END = 0x23;
inline constexpr WPARAM VK_HOME = 0x24;
inline constexpr WPARAM VK_LEFT = 0x25;
inline constexpr WPARAM VK_UP = 0x26;
inline constexpr WPARAM VK_RIGHT = 0x27;
inline constexpr WPARAM VK_DOWN = 0x28;
inline constexpr WPARAM VK_INSERT = 0x2D;
inline constexpr WPARAM VK_DELETE = 0x2E;
inline constexpr WPARAM VK_F1 = 0x70; ///< VK_F1 + n is F(n + 1), up to F24

struct MSG {
    HWND hwnd; ///< 0 for a message to the thread itself
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;     ///< milliseconds, GetTickCount's clock
    POINT pt;       ///< of the mouse, on the screen
    DWORD lPrivate; ///< ties the message to the input that it came from; leave it alone
};

/// Takes the next message of the calling thread, waiting for one. The order: what other threads
/// have sent is answered first, then posted messages and input, then WM_QUIT, WM_PAINT, WM_TIMER.
/// @param window  0 for all, else only messages of this window and its children
/// @return 0 for WM_QUIT, -1 if `window` is no window, else nonzero.
BOOL GetMessageA(MSG* message, HWND window, UINT first, UINT last);

inline constexpr UINT PM_NOREMOVE = 0x0000;
inline constexpr UINT PM_REMOVE = 0x0001;

/// The same without waiting. @return FALSE when there is nothing.
BOOL PeekMessageA(MSG* message, HWND window, UINT first, UINT last, UINT remove);

/// Posts WM_CHAR for the text that a key message brings, one message a byte (UTF-8).
/// @return whether the message was a key message.
BOOL TranslateMessage(const MSG* message);

/// Calls the window's procedure, or a timer's own. @return what that returned.
LRESULT DispatchMessageA(const MSG* message);

/// Puts a message at the end of the window's queue and returns at once; window 0: the calling
/// thread's own queue. Any thread. @return FALSE when there is no such window.
BOOL PostMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

/// Calls the window's procedure; from another thread it is called on the window's thread, as soon
/// as that thread asks for a message or waits, while the caller waits. Any thread.
/// @return the procedure's answer; 0 when the window does not exist or goes before it answered.
LRESULT SendMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

/// GetMessageA answers 0, once, when the queue holds no more posted messages.
void PostQuitMessage(int exit_code);

using TIMERPROC = void (*)(HWND window, UINT message, UINT_PTR timer, DWORD time);

/// WM_TIMER every `period_ms` (10 at least) until KillTimer or the window's end; a period that
/// passes before the last message was taken is not made up for. Set again with the same number, it
/// starts anew.
/// @param window     of the calling thread, or 0: the timer then gets a number of the system's
/// choice
/// @param procedure  called by DispatchMessageA in place of the window's procedure; may be 0
/// @return the timer's number (1 for number 0 of a window), 0 on failure.
UINT_PTR SetTimer(HWND window, UINT_PTR timer, UINT period_ms, TIMERPROC procedure);
/// Takes back its waiting WM_TIMER, too. @return FALSE when there is no such timer.
BOOL KillTimer(HWND window, UINT_PTR timer);
