#pragma once
// The windows and their classes as data, behind one lock, so that every thread may ask about them.
// A handle is a number that is never given twice: a dead one is recognised for ever. The widgets
// behind the windows stand in WindowViews.h.

#include "platform/desktop/windows.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kelvo::desktop {

class Control;
struct ControlSetup;
class MessageQueue;

/// A registered class; fixed after RegisterClassA.
struct WindowClass {
    ATOM atom = 0;
    std::string name;
    std::string menu_name;
    WNDCLASSA values{}; ///< its texts point at the two above
    /// Makes what stands behind a window of a control class; null for every other class.
    std::unique_ptr<Control> (*make_control)(const ControlSetup& setup) = nullptr;
};

enum class WindowKind : std::uint8_t { Child, TopLevel, Desktop };

/// Width and height of what lies around the client area.
struct FrameMargins {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};
FrameMargins FrameMarginsOf(DWORD style, bool has_menu);

struct WindowData {
    // Fixed after creation.
    HWND handle = nullptr;
    WindowKind kind = WindowKind::TopLevel;
    std::shared_ptr<const WindowClass> window_class; ///< none for the desktop
    std::shared_ptr<MessageQueue> queue;             ///< of the thread that made it
    HWND parent = nullptr;                           ///< or owner
    int id = 0;                                      ///< of a child, among its parent's

    // Under the table's lock; only the UI thread writes.
    WNDPROC procedure = nullptr;
    DWORD style = 0;
    DWORD extended_style = 0;
    RECT rect{}; ///< whole window; a child's in its parent's client area, others on the screen
    POINT client_origin{}; ///< of a top-level window, on the screen
    bool has_menu = false;
    bool dying = false;        ///< itself or one above it is being destroyed
    bool destroy_sent = false; ///< WM_DESTROY has been sent
    std::vector<std::byte> extra;
    std::string text;
    std::map<std::string, HANDLE> properties;
    std::vector<HWND> children; ///< also the windows that it owns; the oldest first

    /// What lies around the client area within `rect`.
    FrameMargins Margins() const;
    SIZE ClientSize() const;
};

/// Holds the table's lock as long as it lives: nothing is sent, posted or shown meanwhile.
class LockedWindows {
public:
    LockedWindows();

    /// @return null for no window; else valid as long as the lock is held.
    WindowData* Find(HWND window);
    /// Gives the window its handle and puts it under its parent.
    HWND Add(std::unique_ptr<WindowData> window);
    void Remove(HWND window);
    /// All handles but the desktop's, the oldest first.
    std::vector<HWND> All() const;
    HWND Desktop() const;

    bool IsVisible(HWND window);
    /// Of the client area, on the screen.
    POINT ClientOrigin(HWND window);

    bool AddClass(std::shared_ptr<WindowClass> window_class);
    /// The name's letters may have another case. @return null when there is none.
    std::shared_ptr<const WindowClass> FindClass(LPCSTR name);
    /// @return false when there is none or a window of it lives.
    bool RemoveClass(LPCSTR name);

private:
    std::unique_lock<std::mutex> lock_;
};

} // namespace kelvo::desktop
