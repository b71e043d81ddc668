#include "platform/base/events.h"

#include "platform/base/clock.h"
#include "platform/base/handles.h"
#include "platform/base/memory.h"
#include "platform/base/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <vector>

using namespace kelvo::platform;

namespace {

TEST(Events, LetOneWaitThroughOrAllAsTheyWereMade) {
    const HANDLE one = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    EXPECT_EQ(WaitForSingleObject(one, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(SetEvent(one));
    EXPECT_TRUE(SetEvent(one)); // signals are not counted
    EXPECT_EQ(WaitForSingleObject(one, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(one, 1), WAIT_TIMEOUT);

    const HANDLE all = CreateEventA(nullptr, TRUE, TRUE, nullptr);
    EXPECT_EQ(WaitForSingleObject(all, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(all, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(ResetEvent(all));
    EXPECT_EQ(WaitForSingleObject(all, 0), WAIT_TIMEOUT);
    CloseHandle(one);
    CloseHandle(all);
}

TEST(Events, RefuseNamesAndWhatIsNoEvent) {
    EXPECT_EQ(CreateEventA(nullptr, FALSE, FALSE, "shared"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    const HANDLE closed = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(closed);
    for (const HANDLE wrong :
         {closed, static_cast<HANDLE>(nullptr), INVALID_HANDLE_VALUE, GetCurrentThread()}) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(SetEvent(wrong));
        EXPECT_FALSE(ResetEvent(wrong));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        if (wrong != GetCurrentThread()) {
            EXPECT_EQ(WaitForSingleObject(wrong, 0), WAIT_FAILED);
        }
    }
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, 1);
    EXPECT_EQ(WaitForSingleObject(memory, 0), WAIT_FAILED);
    GlobalFree(memory);
}

TEST(Events, EverySignalLetsExactlyOneOfManyThrough) {
    struct Shared {
        HANDLE signal = CreateEventA(nullptr, FALSE, FALSE, nullptr);
        HANDLE taken = CreateEventA(nullptr, FALSE, FALSE, nullptr);
        std::atomic<int> count{0};
    } shared;
    constexpr int kThreads = 4;
    constexpr int kTurns = 200;
    std::vector<HANDLE> threads;
    for (int i = 0; i < kThreads; ++i) {
        const auto body = [](LPVOID argument) -> DWORD {
            auto& all = *static_cast<Shared*>(argument);
            for (int turn = 0; turn < kTurns; ++turn) {
                WaitForSingleObject(all.signal, INFINITE);
                ++all.count;
                SetEvent(all.taken);
            }
            return 0;
        };
        threads.push_back(CreateThread(nullptr, 0, body, &shared, 0, nullptr));
    }
    for (int i = 1; i <= kThreads * kTurns; ++i) {
        SetEvent(shared.signal);
        ASSERT_EQ(WaitForSingleObject(shared.taken, 20000), WAIT_OBJECT_0);
        ASSERT_EQ(shared.count, i);
    }
    for (const HANDLE thread : threads) {
        EXPECT_EQ(WaitForSingleObject(thread, 20000), WAIT_OBJECT_0);
        CloseHandle(thread);
    }
    CloseHandle(shared.signal);
    CloseHandle(shared.taken);
}

TEST(Events, AClosedHandleStillEndsTheWaitThatHoldsIt) {
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    ManualClock clock;
    const auto body = [](LPVOID handle) -> DWORD {
        return WaitForSingleObject(*static_cast<HANDLE*>(handle), 50);
    };
    HANDLE argument = event;
    const HANDLE thread = CreateThread(nullptr, 0, body, &argument, 0, nullptr);
    while (clock.SleeperCount() == 0) {
        Sleep(0);
    }
    CloseHandle(event);
    clock.Advance(std::chrono::milliseconds{50});
    DWORD code = STILL_ACTIVE;
    while (code == STILL_ACTIVE) {
        GetExitCodeThread(thread, &code);
    }
    EXPECT_EQ(code, WAIT_TIMEOUT);
    CloseHandle(thread);
}

TEST(Clock, CountsMillisecondsByHandAndWrapsAt32Bits) {
    ManualClock clock{std::chrono::milliseconds{0xFFFFFFFFLL}};
    EXPECT_EQ(GetTickCount(), 0xFFFFFFFFU);
    clock.Advance(std::chrono::microseconds{1999});
    EXPECT_EQ(GetTickCount(), 0U);
    clock.Advance(std::chrono::microseconds{1});
    EXPECT_EQ(GetTickCount(), 1U);
}

TEST(Clock, ASleepCanMoveItOn) {
    ManualClock clock{std::chrono::milliseconds{10}, ManualTime::SleepToo};
    Sleep(1000000);
    EXPECT_EQ(GetTickCount(), 1000010U);
    EXPECT_EQ(ClockNow(), std::chrono::milliseconds{1000010});
}

TEST(Clock, ASleepLastsNoShorterThanItSays) {
    const DWORD before = GetTickCount();
    const auto fine = ClockNow();
    Sleep(30);
    EXPECT_GE(ClockNow() - fine, std::chrono::milliseconds{30});
    EXPECT_GE(GetTickCount() - before, 29U); // both ends are cut to whole milliseconds
}

TEST(Clock, SleepersGoOnWhenTheHandTurnedClockGoes) {
    std::atomic<bool> awake{false};
    const auto body = [](LPVOID flag) -> DWORD {
        Sleep(1000000);
        *static_cast<std::atomic<bool>*>(flag) = true;
        return 0;
    };
    HANDLE thread = nullptr;
    {
        ManualClock clock;
        thread = CreateThread(nullptr, 0, body, &awake, 0, nullptr);
        while (clock.SleeperCount() == 0) {
            Sleep(0);
        }
        EXPECT_FALSE(awake);
    }
    EXPECT_EQ(WaitForSingleObject(thread, 20000), WAIT_OBJECT_0);
    EXPECT_TRUE(awake);
    CloseHandle(thread);
}

TEST(MemoryBlocks, KeepTheirBytesAndTheirExactSize) {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 1001);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalSize(block), 1001U);
    void* const bytes = GlobalLock(block);
    ASSERT_NE(bytes, nullptr);
    std::memset(bytes, 7, 1001);
    EXPECT_EQ(GlobalLock(block), bytes);
    EXPECT_TRUE(GlobalUnlock(block)); // still locked once
    SetLastError(1);
    EXPECT_FALSE(GlobalUnlock(block));
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    EXPECT_EQ(GlobalFree(block), nullptr);

    EXPECT_EQ(GlobalFree(block), block);
    EXPECT_EQ(GlobalLock(block), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(GlobalSize(block), 0U);
    EXPECT_EQ(GlobalAlloc(GMEM_MOVEABLE, SIZE_MAX), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(GlobalAlloc(0x1000, 1), nullptr);
}

} // namespace
