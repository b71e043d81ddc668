#pragma once
// A window whose procedure writes down what it gets, and what a test needs to drive the loop.

#include "platform/base/threads.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <QWidget>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kelvo::desktop {

struct Seen {
    HWND window = nullptr;
    UINT message = 0;
    WPARAM wparam = 0;
    LPARAM lparam = 0;
    std::thread::id thread;
};

/// Messages of all windows of the test class, in the order of their arrival.
inline std::vector<Seen> seen;

/// May answer in place of the default procedure.
inline std::function<std::optional<LRESULT>(HWND, UINT, WPARAM, LPARAM)> answer;

inline LRESULT RecordingProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    seen.push_back({window, message, wparam, lparam, std::this_thread::get_id()});
    if (answer) {
        if (const auto result = answer(window, message, wparam, lparam)) return *result;
    }
    return ::DefWindowProcA(window, message, wparam, lparam);
}

inline constexpr const char* kTestClass = "RecordingWindow";

inline void RegisterTestClass(const char* name = kTestClass, UINT style = CS_HREDRAW | CS_VREDRAW,
                              int extra_bytes = 0, HBRUSH brush = nullptr) {
    WNDCLASSA values{};
    values.style = style;
    values.lpfnWndProc = &RecordingProcedure;
    values.cbWndExtra = extra_bytes;
    values.hbrBackground = brush;
    values.lpszClassName = name;
    ::RegisterClassA(&values);
}

inline HWND MakeTopLevel(DWORD style = WS_OVERLAPPEDWINDOW, int width = 408, int height = 327,
                         const char* class_name = kTestClass) {
    return ::CreateWindowExA(0, class_name, "a window", style, 20, 30, width, height, nullptr,
                             nullptr, nullptr, nullptr);
}

inline HWND MakeChild(HWND parent, const RECT& place, DWORD extended_style = 0,
                      const char* class_name = kTestClass) {
    return ::CreateWindowExA(extended_style, class_name, "", WS_CHILD | WS_VISIBLE, place.left,
                             place.top, place.right - place.left, place.bottom - place.top, parent,
                             nullptr, nullptr, nullptr);
}

inline std::vector<UINT> MessagesOf(HWND window) {
    std::vector<UINT> messages;
    for (const Seen& each : seen) {
        if (each.window == window) messages.push_back(each.message);
    }
    return messages;
}

inline std::vector<Seen> SeenOf(HWND window, UINT message) {
    std::vector<Seen> found;
    for (const Seen& each : seen) {
        if (each.window == window && each.message == message) found.push_back(each);
    }
    return found;
}

/// Dispatches all there is now.
inline void Pump() {
    MSG message{};
    while (::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        ::TranslateMessage(&message);
        ::DispatchMessageA(&message);
    }
}

/// Runs the loop until the condition holds. @return false when it does not within ten seconds.
inline bool PumpUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    const UINT_PTR beat = ::SetTimer(nullptr, 0, 10, [](HWND, UINT, UINT_PTR, DWORD) {});
    while (!condition() && std::chrono::steady_clock::now() < end) {
        MSG message{};
        ::GetMessageA(&message, nullptr, 0, 0);
        ::TranslateMessage(&message);
        ::DispatchMessageA(&message);
    }
    ::KillTimer(nullptr, beat);
    return condition();
}

inline SIZE ClientSizeOf(HWND window) {
    RECT rect{};
    ::GetClientRect(window, &rect);
    return {rect.right, rect.bottom};
}

} // namespace kelvo::desktop
