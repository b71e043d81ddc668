#pragma once
// The window that a test puts around the players: it keeps their notifications, which come from two
// threads, and pumps messages until something is true.

#include "framework/window/CWin.h"
#include "framework/window/LUM.h"
#include "platform/base/clock.h"
#include "platform/base/resources.h"
#include "platform/base/threads.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/drawing.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <mutex>
#include <vector>

namespace kelvo::test {

class StartedFramework : public testing::Environment {
public:
    void SetUp() override {
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        setenv("SDL_AUDIODRIVER", "dummy", 1);
        ASSERT_TRUE(platform::StartDesktop("playback tests"));
        ASSERT_EQ(lum.StartDefaultKernel(GetModuleHandleA(nullptr), nullptr), 3);
    }
    void TearDown() override { platform::EndDesktop(); }
};

class PlayerWindow : public CWin {
public:
    struct Notification {
        int code;
        INT_PTR a;
        INT_PTR b;
        DWORD at_ms;
        friend bool operator==(const Notification& x, const Notification& y) {
            return x.code == y.code && x.a == y.a && x.b == y.b;
        }
    };

    PlayerWindow() {
        SetStyle(WS_POPUP | WS_VISIBLE);
        SetPlacement(0, 0, 300, 200);
    }
    INT_PTR HandleNotification(int code, INT_PTR a, INT_PTR b) override {
        {
            const std::lock_guard lock(mutex_);
            notifications_.push_back({code, a, b, GetTickCount()});
        }
        if (on_notification) on_notification(code, a, b);
        return 0;
    }
    std::vector<Notification> Notifications() const {
        const std::lock_guard lock(mutex_);
        return notifications_;
    }
    int Count(int code) const {
        int count = 0;
        for (const Notification& one : Notifications()) {
            if (one.code == code) ++count;
        }
        return count;
    }
    void Forget() {
        const std::lock_guard lock(mutex_);
        notifications_.clear();
    }

    /// Called on the notifying thread; set while nothing plays.
    std::function<void(int code, INT_PTR a, INT_PTR b)> on_notification;

private:
    mutable std::mutex mutex_;
    std::vector<Notification> notifications_;
};

inline constexpr DWORD kDeadlineMs = 10000;

/// @return false when it did not come true within the deadline
inline bool PumpUntil(const std::function<bool()>& condition) {
    const DWORD start = GetTickCount();
    while (!condition()) {
        if (GetTickCount() - start > kDeadlineMs) return false;
        lum.ProcessMessages();
        Sleep(1);
    }
    return true;
}

inline COLORREF PixelOf(const CWin& window, LONG x, LONG y) {
    const HDC context = GetDC(window.Window());
    const COLORREF colour = GetPixel(context, x, y);
    ReleaseDC(window.Window(), context);
    return colour;
}

} // namespace kelvo::test
