// Drawing in real windows: erasing and painting by messages, and from a thread of its own.

#include "platform/desktop/Surface.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <gtest/gtest.h>

#include <QWidget>

#include <thread>

namespace kelvo::desktop {
namespace {

constexpr COLORREF kGround = RGB(0, 0, 90);

/// What the window procedure of the tests' class saw and shall do; UI thread only.
struct Painted {
    int erasures = 0;
    RECT rect{};
    BOOL erase_left = TRUE;
    bool erases = true;
    HDC kept = nullptr;
    bool is_drawn_outside_clip = false;
};
Painted painted;

void OnPaint(HWND window) {
    PAINTSTRUCT paint{};
    const HDC dc = BeginPaint(window, &paint);
    painted.rect = paint.rcPaint;
    painted.erase_left = paint.fErase;
    // The kept context is not clipped by the painting that goes on.
    if (painted.kept != nullptr) SetPixel(painted.kept, 0, 0, RGB(1, 2, 3));
    painted.is_drawn_outside_clip = SetPixel(dc, 39, 0, RGB(9, 9, 9)) != CLR_INVALID;
    SetPixel(dc, 10, 10, RGB(255, 0, 0));
    EndPaint(window, &paint);
}

LRESULT PaintingProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_ERASEBKGND: {
        ++painted.erasures;
        if (!painted.erases) return 0;
        RECT client{};
        GetClientRect(window, &client);
        const HBRUSH brush = CreateSolidBrush(kGround);
        FillRect(reinterpret_cast<HDC>(wparam), &client, brush);
        DeleteObject(brush);
        return 1;
    }
    case WM_PAINT:
        OnPaint(window);
        return 0;
    default:
        return DefWindowProcA(window, message, wparam, lparam);
    }
}

class Painting : public testing::Test {
protected:
    Painting() : before_(CountDrawingObjects()) {
        painted = {};
        WNDCLASSA window_class{};
        window_class.style = CS_OWNDC;
        window_class.lpfnWndProc = PaintingProcedure;
        window_class.lpszClassName = "PAINTINGTEST";
        RegisterClassA(&window_class);
        window_ = CreateWindowExA(0, "PAINTINGTEST", "", WS_POPUP | WS_VISIBLE, 0, 0, 40, 30,
                                  nullptr, nullptr, nullptr, nullptr);
        UpdateWindow(window_);
    }
    ~Painting() override {
        if (window_ != nullptr) {
            EXPECT_TRUE(DestroyWindow(window_));
        }
        EXPECT_TRUE(UnregisterClassA("PAINTINGTEST", nullptr));
        EXPECT_EQ(CountDrawingObjects(), before_);
    }

    COLORREF Pixel(int x, int y) {
        const HDC dc = GetDC(window_);
        const COLORREF colour = GetPixel(dc, x, y);
        ReleaseDC(window_, dc);
        return colour;
    }
    void DispatchAll() {
        MSG message{};
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageA(&message);
    }

    DrawingObjectCounts before_;
    HWND window_ = nullptr;
};

TEST_F(Painting, ErasesFirstAndOnlyWhereSomethingWasInvalid) {
    EXPECT_EQ(painted.erasures, 1);
    EXPECT_FALSE(painted.erase_left);
    EXPECT_EQ(painted.rect.right, 40);
    EXPECT_EQ(painted.rect.bottom, 30);
    EXPECT_EQ(Pixel(0, 29), kGround);
    EXPECT_EQ(Pixel(10, 10), RGB(255, 0, 0));

    painted.kept = GetDC(window_);
    const RECT white{0, 0, 40, 30};
    FillRect(painted.kept, &white, GetStockObject(WHITE_BRUSH));
    const RECT part{5, 5, 15, 15};
    InvalidateRect(window_, &part, TRUE);
    UpdateWindow(window_);
    EXPECT_EQ(painted.erasures, 2);
    EXPECT_FALSE(painted.is_drawn_outside_clip);
    EXPECT_EQ(Pixel(5, 5), kGround);
    EXPECT_EQ(Pixel(4, 5), RGB(255, 255, 255));
    EXPECT_EQ(Pixel(15, 15), RGB(255, 255, 255));
    EXPECT_EQ(Pixel(0, 0), RGB(1, 2, 3));

    InvalidateRect(window_, &part, FALSE);
    UpdateWindow(window_);
    EXPECT_EQ(painted.erasures, 2);
    painted.erases = false;
    InvalidateRect(window_, &part, TRUE);
    UpdateWindow(window_);
    EXPECT_TRUE(painted.erase_left) << "the procedure left it to the painter";
}

TEST_F(Painting, WhatAThreadDrawsReachesTheWidget) {
    DispatchAll();
    const HDC kept = GetDC(window_);
    std::thread([kept] {
        const RECT all{0, 0, 1000, 1000};
        const HBRUSH brush = CreateSolidBrush(RGB(0, 200, 0));
        EXPECT_EQ(FillRect(kept, &all, brush), 1);
        EXPECT_TRUE(DeleteObject(brush));
    }).join();
    DispatchAll();
    QWidget* const widget = WidgetOf(window_);
    ASSERT_NE(widget, nullptr);
    const QImage seen = widget->grab().toImage();
    EXPECT_EQ(seen.pixel(0, 0), 0xFF00C800U);
    EXPECT_EQ(seen.pixel(39, 29), 0xFF00C800U);
}

TEST_F(Painting, AKeptContextSurvivesANewSizeAndDiesWithTheWindow) {
    const HDC kept = GetDC(window_);
    EXPECT_EQ(SetPixel(kept, 59, 49, 0), CLR_INVALID);
    SetWindowPos(window_, nullptr, 0, 0, 60, 50, SWP_NOZORDER);
    EXPECT_EQ(SetPixel(kept, 59, 49, 0), 0U);
    EXPECT_TRUE(DestroyWindow(window_));
    window_ = nullptr;
    EXPECT_EQ(SetPixel(kept, 0, 0, 0), CLR_INVALID);
}

} // namespace
} // namespace kelvo::desktop
