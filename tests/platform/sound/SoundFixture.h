#pragma once
// A window that notes what the wave devices post to it, and what both directions need besides.

#include "platform/base/clock.h"
#include "platform/base/threads.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"
#include "platform/sound/wave.h"
#include "platform/sound/wave_in.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace kelvo::platform {

inline constexpr DWORD kDeadlineMs = 5000;

struct Noted {
    UINT message;
    WPARAM device;
    WAVEHDR* header;
    DWORD at_ms;
};
inline std::vector<Noted> g_noted;

inline LRESULT NotingProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message >= MM_WOM_OPEN && message <= MM_WIM_DATA) {
        g_noted.push_back({message, wparam, reinterpret_cast<WAVEHDR*>(lparam), GetTickCount()});
    }
    return DefWindowProcA(window, message, wparam, lparam);
}

inline WAVEFORMATEX Pcm(DWORD rate, WORD bits) {
    WAVEFORMATEX format{};
    format.wFormatTag = WAVE_FORMAT_PCM;
    format.nChannels = 1;
    format.nSamplesPerSec = rate;
    format.wBitsPerSample = bits;
    format.nBlockAlign = static_cast<WORD>(bits / 8);
    format.nAvgBytesPerSec = rate * format.nBlockAlign;
    return format;
}

class DesktopForSound : public testing::Environment {
public:
    void SetUp() override {
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        ASSERT_TRUE(StartDesktop("sound tests"));
    }
    void TearDown() override { EndDesktop(); }
};
inline const auto* const kDesktopForSound = // once, however many files include this
    testing::AddGlobalTestEnvironment(new DesktopForSound);

class SoundFixture : public testing::Test {
protected:
    void SetUp() override {
        UseDriver("dummy");
        WNDCLASSA window_class{};
        window_class.lpfnWndProc = NotingProcedure;
        window_class.lpszClassName = "NOTING";
        RegisterClassA(&window_class);
        window_ =
            CreateWindowExA(0, "NOTING", "", 0, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(window_, nullptr);
        g_noted.clear();
    }
    void TearDown() override {
        EXPECT_TRUE(PumpUntil([] { return CountWaveDevices() == 0; }));
        DestroyWindow(window_);
    }
    static void UseDriver(const char* name) { setenv("SDL_AUDIODRIVER", name, 1); }

    template <class Condition>
    static bool PumpUntil(Condition condition) {
        const DWORD start = GetTickCount();
        while (!condition()) {
            if (GetTickCount() - start > kDeadlineMs) return false;
            MSG message{};
            while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
                DispatchMessageA(&message);
            }
            Sleep(1);
        }
        return true;
    }
    static std::ptrdiff_t Count(UINT message) {
        return std::ranges::count(g_noted, message, &Noted::message);
    }
    static WAVEHDR HeaderOf(std::vector<std::uint8_t>& bytes) {
        WAVEHDR header{};
        header.lpData = reinterpret_cast<LPSTR>(bytes.data());
        header.dwBufferLength = static_cast<DWORD>(bytes.size());
        return header;
    }

    HWND window_ = nullptr;
};

} // namespace kelvo::platform
