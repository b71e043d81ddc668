// Timers: their beat, their numbers, their end.

#include "platform/base/clock.h"
#include "tests/platform/desktop/RecordingWindow.h"

#include <gtest/gtest.h>

using namespace kelvo::desktop;
using namespace std::chrono_literals;

namespace {

class Timers : public testing::Test {
protected:
    void SetUp() override {
        RegisterTestClass();
        answer = nullptr;
        window_ = MakeTopLevel();
        Pump();
        seen.clear();
    }
    void TearDown() override {
        ::DestroyWindow(window_);
        ::UnregisterClassA(kTestClass, nullptr);
        EXPECT_EQ(CountLiveObjects().timers, 0);
    }
    std::size_t Beats(WPARAM timer) const {
        return static_cast<std::size_t>(std::ranges::count_if(seen, [&](const Seen& each) {
            return each.message == WM_TIMER && each.wparam == timer;
        }));
    }

    HWND window_ = nullptr;
};

} // namespace

TEST_F(Timers, KeepTheirBeatAndMakeUpForNothing) {
    kelvo::platform::ManualClock clock;
    EXPECT_EQ(::SetTimer(window_, 3, 100, nullptr), 3U);
    clock.Advance(99ms);
    Pump();
    EXPECT_EQ(Beats(3), 0U);
    clock.Advance(1ms);
    Pump();
    EXPECT_EQ(Beats(3), 1U);
    clock.Advance(350ms); // three beats at once are one message
    Pump();
    EXPECT_EQ(Beats(3), 2U);
    clock.Advance(50ms); // and the beat is still that of the beginning
    Pump();
    EXPECT_EQ(Beats(3), 3U);
    EXPECT_TRUE(::KillTimer(window_, 3));
    EXPECT_FALSE(::KillTimer(window_, 3));
    clock.Advance(1000ms);
    Pump();
    EXPECT_EQ(Beats(3), 3U);
}

TEST_F(Timers, StartAnewWhenSetAgain) {
    kelvo::platform::ManualClock clock;
    ::SetTimer(window_, 3, 100, nullptr);
    clock.Advance(90ms);
    ::SetTimer(window_, 3, 200, nullptr);
    clock.Advance(190ms);
    Pump();
    EXPECT_EQ(Beats(3), 0U);
    clock.Advance(10ms);
    Pump();
    EXPECT_EQ(Beats(3), 1U);
    EXPECT_EQ(CountLiveObjects().timers, 1);
}

TEST_F(Timers, BeatAtMostEveryTenMilliseconds) {
    kelvo::platform::ManualClock clock;
    ::SetTimer(window_, 1, 0, nullptr);
    clock.Advance(9ms);
    Pump();
    EXPECT_EQ(Beats(1), 0U);
    clock.Advance(1ms);
    Pump();
    EXPECT_EQ(Beats(1), 1U);
}

TEST_F(Timers, ComeAfterPostedMessagesAndTakeTurns) {
    kelvo::platform::ManualClock clock;
    ::SetTimer(window_, 1, 10, nullptr);
    ::SetTimer(window_, 2, 10, nullptr);
    clock.Advance(10ms);
    ::PostMessageA(window_, WM_USER, 0, 0);
    Pump();
    ASSERT_EQ(MessagesOf(window_).size(), 3U);
    EXPECT_EQ(MessagesOf(window_).front(), WM_USER);
    EXPECT_EQ(Beats(1), 1U);
    EXPECT_EQ(Beats(2), 1U);
}

TEST_F(Timers, CallTheirOwnProcedureInPlaceOfTheWindows) {
    kelvo::platform::ManualClock clock;
    static int calls = 0;
    calls = 0;
    const TIMERPROC procedure = [](HWND, UINT message, UINT_PTR timer, DWORD) {
        EXPECT_EQ(message, WM_TIMER);
        EXPECT_EQ(timer, 8U);
        ++calls;
    };
    ::SetTimer(window_, 8, 10, procedure);
    clock.Advance(10ms);
    Pump();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(Beats(8), 0U);
    ::KillTimer(window_, 8);
    // A posted message that names a procedure of no timer calls nothing.
    ::PostMessageA(window_, WM_TIMER, 8, reinterpret_cast<LPARAM>(procedure));
    Pump();
    EXPECT_EQ(calls, 1);
}

TEST_F(Timers, GetNumbersOfTheirOwnWithoutAWindow) {
    const UINT_PTR first = ::SetTimer(nullptr, 0, 1000, nullptr);
    const UINT_PTR second = ::SetTimer(nullptr, 0, 1000, nullptr);
    EXPECT_NE(first, 0U);
    EXPECT_NE(first, second);
    EXPECT_EQ(::SetTimer(nullptr, first, 2000, nullptr), first);
    EXPECT_TRUE(::KillTimer(nullptr, first));
    EXPECT_TRUE(::KillTimer(nullptr, second));
    EXPECT_EQ(::SetTimer(reinterpret_cast<HWND>(UINT_PTR{5}), 1, 10, nullptr), 0U);
    std::thread([this] { EXPECT_EQ(::SetTimer(window_, 1, 10, nullptr), 0U); }).join();
}

TEST_F(Timers, WakeTheWaitingLoop) {
    ::SetTimer(window_, 5, 20, nullptr);
    MSG message{};
    do {
        ASSERT_TRUE(::GetMessageA(&message, nullptr, 0, 0));
    } while (message.message != WM_TIMER);
    EXPECT_EQ(message.wParam, 5U);
}
