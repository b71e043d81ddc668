#pragma once
// Window classes and windows: registering, creating, moving, asking and destroying them, the bytes,
// texts and properties kept with them, focus, mouse capture, icons and cursors. A window is made,
// moved and destroyed by the thread that called StartDesktop; what another thread may call says so.
// Messages stand in messages.h, menus in menus.h, drawing in drawing.h.

#include "platform/base/types.h"

// ---- classes ----

using WNDPROC = LRESULT (*)(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

inline constexpr UINT CS_VREDRAW = 0x0001;
inline constexpr UINT CS_HREDRAW = 0x0002;
inline constexpr UINT CS_DBLCLKS = 0x0008;
inline constexpr UINT CS_OWNDC = 0x0020;
/// Accepted; what lies below a window is kept by the desktop anyway.
inline constexpr UINT CS_SAVEBITS = 0x0800;

struct WNDCLASSA {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra; ///< bytes kept with each window, 0 at first, at most 4096
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground; ///< a brush, or a COLOR_ value + 1; 0: WM_ERASEBKGND fills nothing
    LPCSTR lpszMenuName;  ///< menu resource for top-level windows created without a menu; may be 0
    LPCSTR lpszClassName;
};

/// @return the class's number, 0 if it has no name or procedure, wrong sizes, or is registered
/// already.
ATOM RegisterClassA(const WNDCLASSA* window_class);

/// @return FALSE if there is no such class or a window of it lives.
BOOL UnregisterClassA(LPCSTR class_name, HINSTANCE instance);

// ---- windows ----

inline constexpr DWORD WS_OVERLAPPED = 0x00000000;
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr DWORD WS_CHILD = 0x40000000;
inline constexpr DWORD WS_VISIBLE = 0x10000000;
inline constexpr DWORD WS_DISABLED = 0x08000000;
inline constexpr DWORD WS_CLIPSIBLINGS = 0x04000000;
inline constexpr DWORD WS_CLIPCHILDREN = 0x02000000;
inline constexpr DWORD WS_CAPTION = 0x00C00000;
inline constexpr DWORD WS_BORDER = 0x00800000;
inline constexpr DWORD WS_DLGFRAME = 0x00400000;
inline constexpr DWORD WS_SYSMENU = 0x00080000;
inline constexpr DWORD WS_THICKFRAME = 0x00040000;
inline constexpr DWORD WS_MINIMIZEBOX = 0x00020000;
inline constexpr DWORD WS_MAXIMIZEBOX = 0x00010000;
inline constexpr DWORD WS_OVERLAPPEDWINDOW =
    WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;

inline constexpr DWORD WS_EX_TOPMOST = 0x00000008;
/// Of a window without caption that is no child: it lies exactly where it is put, in no task list,
/// and never becomes the active window.
inline constexpr DWORD WS_EX_TOOLWINDOW = 0x00000080;
/// A sunken edge of one pixel. It is drawn around the window, on its parent: the client area is the
/// whole window, so that a view of the picture's size shows the whole picture.
inline constexpr DWORD WS_EX_STATICEDGE = 0x00020000;

inline constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000U);

inline const HWND HWND_TOP = nullptr;
inline const HWND HWND_BOTTOM = reinterpret_cast<HWND>(INT_PTR{1});
inline const HWND HWND_TOPMOST = reinterpret_cast<HWND>(INT_PTR{-1});
inline const HWND HWND_NOTOPMOST = reinterpret_cast<HWND>(INT_PTR{-2});

/// What WM_NCCREATE and WM_CREATE point at with their lParam.
struct CREATESTRUCTA {
    LPVOID lpCreateParams; ///< the last argument of CreateWindowExA, untouched
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCSTR lpszName;
    LPCSTR lpszClass;
    DWORD dwExStyle;
};

/// A WS_CHILD window of the desktop window lies on the screen like a window without caption. A
/// child has no frame, but for WS_THICKFRAME: its edge of 4 pixels is drawn, and can be dragged to
/// size it.
///
/// Creates a window: WM_NCCREATE, WM_CREATE, WM_SIZE and WM_MOVE are sent before it returns, in
/// this order; with WS_VISIBLE it is then shown. Sizes below 0 count as 0; CW_USEDEFAULT as x or
/// width lets the system choose place or size.
/// @param menu       of a top-level window; of a WS_CHILD window its number, given as a handle
/// @param parameter  handed on in CREATESTRUCTA::lpCreateParams
/// @return 0 when the class is unknown, a child has no living parent, WM_NCCREATE answers 0,
/// WM_CREATE
///         answers -1 (the window is then destroyed again), or the thread is not the desktop's.
HWND CreateWindowExA(DWORD extended_style, LPCSTR class_name, LPCSTR title, DWORD style, int x,
                     int y, int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                     LPVOID parameter);

/// Destroys the window and all below it before it returns: WM_DESTROY to the window, then to its
/// children, then WM_NCDESTROY to the children and to the window. Its menu is destroyed with it.
/// @return FALSE for a handle of no window, and on another thread than the window's.
BOOL DestroyWindow(HWND window);

/// The answer of the system to what a window procedure does not handle: WM_NCCREATE 1, WM_CLOSE
/// destroys, WM_ERASEBKGND fills with the class's brush, WM_PAINT erases and validates,
/// WM_SETTEXT, WM_GETTEXT and WM_GETTEXTLENGTH keep the text, the rest 0.
LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

LRESULT CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wparam, LPARAM lparam);

inline constexpr UINT SWP_NOSIZE = 0x0001;
inline constexpr UINT SWP_NOMOVE = 0x0002;
inline constexpr UINT SWP_NOZORDER = 0x0004;
inline constexpr UINT SWP_SHOWWINDOW = 0x0040; ///< shows it once it is in its place
inline constexpr UINT SWP_NOOWNERZORDER =
    0x0200; ///< owners are never moved in the stack: nothing to do

/// Moves, sizes and restacks a window. WM_MOVE and WM_SIZE are sent before it returns, each only
/// where something changed. Sizes are those of the whole window; below 0 they count as 0.
/// @param after  HWND_TOP, HWND_BOTTOM, HWND_TOPMOST, HWND_NOTOPMOST or a sibling to lie behind;
/// unless SWP_NOZORDER
BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags);

/// Moves and sizes a window, keeping its place in the stack.
/// @param repaint  whether what the move uncovers or changes is painted at once
BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint);

inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOWNORMAL = 1;
inline constexpr int SW_SHOW = 5;

/// @return whether the window was visible before.
BOOL ShowWindow(HWND window, int command);

/// Lets the window have input, or not: its mouse messages then go to its parent, and nothing at all
/// reaches what lies in a top-level window without. WM_ENABLE is sent when that changes.
/// @return whether it was disabled before.
BOOL EnableWindow(HWND window, BOOL enable);
BOOL IsWindowEnabled(HWND window); ///< any thread

BOOL IsWindow(HWND window); ///< any thread
/// Whether the window and all its parents have WS_VISIBLE. Any thread.
BOOL IsWindowVisible(HWND window);

/// The whole window in screen coordinates. Any thread.
BOOL GetWindowRect(HWND window, RECT* rect);
/// The client area, (0, 0, width, height). Any thread.
BOOL GetClientRect(HWND window, RECT* rect);
/// Makes of a client rectangle that of the whole window. The frame is the classic one, whatever the
/// window manager draws: sizing frame 4, fixed frame 3, border 1, caption 19, menu 19.
BOOL AdjustWindowRectEx(RECT* rect, DWORD style, BOOL menu, DWORD extended_style);
BOOL ScreenToClient(HWND window, POINT* point); ///< any thread
BOOL ClientToScreen(HWND window, POINT* point); ///< any thread

/// The parent of a child, the owner of another window, 0 when there is none. Any thread.
HWND GetParent(HWND window);
/// Whether `window` is a child of `parent`, or a child of a child, and so on. Any thread.
BOOL IsChild(HWND parent, HWND window);
/// The window that stands for the whole screen; it receives nothing and cannot be destroyed.
HWND GetDesktopWindow();

/// Sets the title by WM_SETTEXT.
BOOL SetWindowTextA(HWND window, LPCSTR text);
/// Asks for the text by WM_GETTEXT. @return the bytes copied, the terminating 0 not counted.
int GetWindowTextA(HWND window, LPSTR text, int capacity);

inline constexpr int GWLP_WNDPROC = -4;
inline constexpr int GWL_STYLE = -16;
inline constexpr int GWL_EXSTYLE = -20;

/// The name that the window's class was registered with. @return its length, 0 on failure; cut to
/// what fits.
int GetClassNameA(HWND window, LPSTR name, int capacity);

/// Reads the pointer-sized value at an offset of the window's extra bytes (any offset, misaligned
/// ones too), or one of the GWL values. @return 0 also for an offset outside of the extra bytes.
LONG_PTR GetWindowLongPtrA(HWND window, int index);
/// @return the value before.
LONG_PTR SetWindowLongPtrA(HWND window, int index, LONG_PTR value);

/// Keeps a value with the window under a name; properties go with the window.
BOOL SetPropA(HWND window, LPCSTR name, HANDLE value);
/// @return 0 when there is no such property.
HANDLE GetPropA(HWND window, LPCSTR name);
/// @return the value that was kept.
HANDLE RemovePropA(HWND window, LPCSTR name);

/// Where the mouse pointer is on the screen. Any thread.
BOOL GetCursorPos(POINT* point);

/// All mouse messages go to the window until ReleaseCapture, those from outside of it as well
/// (signed client coordinates). @return the window that had the mouse before; it is sent
/// WM_CAPTURECHANGED.
HWND SetCapture(HWND window);
BOOL ReleaseCapture();
HWND GetCapture();

/// Gives the keyboard to the window: WM_KILLFOCUS to the one before, then WM_SETFOCUS.
/// @return the window that had it before.
HWND SetFocus(HWND window);
HWND GetFocus();

/// Adds to what the next WM_PAINT will paint; 0 means the whole client area. Any thread.
BOOL InvalidateRect(HWND window, const RECT* rect, BOOL erase);
/// Takes it away from what the next WM_PAINT will paint; 0 means the whole client area. Any thread.
BOOL ValidateRect(HWND window, const RECT* rect);
/// Sends WM_PAINT at once if there is something to paint.
BOOL UpdateWindow(HWND window);

// ---- sound, icons, cursors ----

/// Rings the desktop's bell; 0xFFFFFFFF is the plain beep.
BOOL MessageBeep(UINT type);

inline const LPCSTR IDI_APPLICATION = reinterpret_cast<LPCSTR>(UINT_PTR{32512});
inline const LPCSTR IDC_ARROW = reinterpret_cast<LPCSTR>(UINT_PTR{32512});

/// An icon of the program's resources, or with instance 0 one of the IDI_ icons.
/// @return 0 when there is none or its picture is damaged.
HICON LoadIconA(HINSTANCE instance, LPCSTR name);
/// A cursor of the program's resources, or with instance 0 one of the IDC_ cursors.
HCURSOR LoadCursorA(HINSTANCE instance, LPCSTR name);
