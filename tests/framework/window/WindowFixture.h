#pragma once
// A desktop off screen and a started framework, and windows to look into.

#include "framework/window/CWin.h"
#include "framework/window/LUM.h"
#include "platform/base/message_boxes.h"
#include "platform/base/resources.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/messages.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <vector>

namespace kelvo {

/// The desktop lives as long as the test program; the kernel is started once on it.
class StartedFramework : public testing::Environment {
public:
    void SetUp() override {
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        ASSERT_TRUE(platform::StartDesktop("framework_window_tests"));
        StartResult() = lum.StartDefaultKernel(GetModuleHandleA(nullptr), "NoSuchIcon");
    }
    void TearDown() override { platform::EndDesktop(); }
    /// What StartDefaultKernel gave.
    static int& StartResult() {
        static int result = -1;
        return result;
    }
};

/// A window that notes the messages it gets and does what a test tells it.
class NotingWindow : public CWin {
public:
    struct Noted {
        UINT message;
        WPARAM wparam;
        LPARAM lparam;
    };
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        noted.push_back({message, wparam, lparam});
        if (CWin::HandleMessage(message, wparam, lparam)) return true;
        return handler && handler(message, wparam, lparam);
    }
    INT_PTR HandleNotification(int code, INT_PTR a, INT_PTR b) override {
        notifications.push_back({static_cast<UINT>(code), static_cast<WPARAM>(a), b});
        return 0;
    }
    int Count(UINT message) const {
        int count = 0;
        for (const Noted& one : noted) {
            if (one.message == message) ++count;
        }
        return count;
    }
    using CWin::SetMessageResult;

    std::function<bool(UINT, WPARAM, LPARAM)> handler;
    std::vector<Noted> noted;
    std::vector<Noted> notifications;
};

inline COLORREF PixelOf(const CWin& window, LONG x, LONG y) {
    const HDC context = GetDC(window.Window());
    const COLORREF colour = GetPixel(context, x, y);
    ReleaseDC(window.Window(), context);
    return colour;
}

} // namespace kelvo
