#include "platform/base/threads.h"

#include "tests/platform/base/Eventually.h"

#include "platform/base/clock.h"
#include "platform/base/events.h"
#include "platform/base/handles.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <thread>

using namespace kelvo::platform;

namespace {

constexpr DWORD kFailed = static_cast<DWORD>(-1);

// A thread that runs a function object, which must outlive it.
using Body = std::function<DWORD()>;
DWORD RunBody(LPVOID body) {
    return (*static_cast<Body*>(body))();
}
HANDLE Start(Body& body, DWORD flags = 0) {
    return CreateThread(nullptr, 0, RunBody, &body, flags, nullptr);
}
DWORD ExitCode(HANDLE thread) {
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    return code;
}
DWORD EndOf(HANDLE thread) {
    EXPECT_EQ(WaitForSingleObject(thread, 20000), WAIT_OBJECT_0);
    return ExitCode(thread);
}

struct SetAtEnd {
    std::atomic<bool>& flag;
    ~SetAtEnd() { flag = true; }
};

TEST(Threads, RunTheirRoutineAndKeepItsResult) {
    const HANDLE go = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    DWORD own_id = 0;
    Body body = [&] {
        own_id = GetCurrentThreadId();
        WaitForSingleObject(go, INFINITE);
        return 42U;
    };
    DWORD id = 0;
    const HANDLE thread = CreateThread(nullptr, 0x1000, RunBody, &body, 0, &id);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(ExitCode(thread), STILL_ACTIVE);
    EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_TIMEOUT);
    SetEvent(go);
    EXPECT_EQ(EndOf(thread), 42U);
    EXPECT_EQ(own_id, id);
    EXPECT_NE(id, GetCurrentThreadId());
    EXPECT_TRUE(CloseHandle(thread));
    CloseHandle(go);
}

TEST(Threads, StartThroughTheRuntimeToo) {
    unsigned id = 0;
    unsigned argument = 6;
    const auto start = [](void* number) { return *static_cast<unsigned*>(number) + 1; };
    const auto started = _beginthreadex(nullptr, 0, start, &argument, 0, &id);
    ASSERT_NE(started, 0U);
    const HANDLE thread = reinterpret_cast<HANDLE>(started);
    EXPECT_EQ(EndOf(thread), 7U);
    EXPECT_NE(id, 0U);
    CloseHandle(thread);
    EXPECT_EQ(_beginthreadex(nullptr, 0, nullptr, nullptr, 0, nullptr), 0U);
    EXPECT_EQ(CreateThread(nullptr, 0, nullptr, nullptr, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    Body body = [] { return 0U; };
    EXPECT_EQ(CreateThread(nullptr, 0, RunBody, &body, 0x200, nullptr), nullptr);
    EXPECT_EQ(CreateThread(nullptr, SIZE_MAX / 4, RunBody, &body, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
}

TEST(Threads, GoOnWhenTheirHandleIsClosed) {
    const HANDLE go = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    std::atomic<bool> done{false};
    Body body = [&] {
        WaitForSingleObject(go, INFINITE);
        done = true;
        return 0U;
    };
    const HANDLE thread = Start(body);
    EXPECT_TRUE(CloseHandle(thread));
    EXPECT_FALSE(CloseHandle(thread));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    SetEvent(go);
    EXPECT_TRUE(Eventually([&] { return done.load(); }));
    CloseHandle(go);
}

TEST(Threads, CreatedSuspendedTheyWaitToBeResumed) {
    std::atomic<bool> ran{false};
    Body body = [&] {
        ran = true;
        return 5U;
    };
    HANDLE thread = Start(body, CREATE_SUSPENDED);
    EXPECT_EQ(SuspendThread(thread), 1U);
    EXPECT_EQ(ResumeThread(thread), 2U);
    EXPECT_EQ(WaitForSingleObject(thread, 20), WAIT_TIMEOUT);
    EXPECT_EQ(ResumeThread(thread), 1U);
    EXPECT_EQ(EndOf(thread), 5U);
    CloseHandle(thread);

    ran = false; // one that is ended before it was ever resumed never runs
    thread = Start(body, CREATE_SUSPENDED);
    EXPECT_TRUE(TerminateThread(thread, 9));
    EXPECT_EQ(EndOf(thread), 9U);
    EXPECT_FALSE(ran);
    CloseHandle(thread);
}

TEST(Threads, SuspendedTheyTakeNothingUntilResumed) {
    const HANDLE signal = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    std::atomic<int> turns{0};
    Body body = [&] {
        while (WaitForSingleObject(signal, INFINITE) == WAIT_OBJECT_0 && ++turns < 2) {}
        return 0U;
    };
    const HANDLE thread = Start(body);
    SetEvent(signal);
    ASSERT_TRUE(Eventually([&] { return turns == 1; }));
    EXPECT_EQ(SuspendThread(thread), 0U);
    SetEvent(signal);
    EXPECT_EQ(WaitForSingleObject(thread, 20), WAIT_TIMEOUT);
    EXPECT_EQ(turns, 1);
    EXPECT_EQ(ExitCode(thread), STILL_ACTIVE);
    EXPECT_EQ(ResumeThread(thread), 1U);
    EndOf(thread);
    EXPECT_EQ(turns, 2);
    EXPECT_EQ(ResumeThread(thread), kFailed);
    EXPECT_EQ(SuspendThread(thread), kFailed);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    CloseHandle(thread);
    CloseHandle(signal);
}

TEST(Threads, SuspendThemselvesAtOnceAndCountTo127) {
    std::atomic<bool> passed{false};
    Body body = [&] {
        SuspendThread(GetCurrentThread());
        passed = true;
        return 0U;
    };
    const HANDLE thread = Start(body);
    ASSERT_TRUE(Eventually([&] {
        const DWORD before = SuspendThread(thread);
        if (before == 0) ResumeThread(thread); // it had not come so far
        return before == 1;
    }));
    EXPECT_FALSE(passed);
    for (DWORD before = 2; before < 127; ++before) {
        ASSERT_EQ(SuspendThread(thread), before);
    }
    EXPECT_EQ(SuspendThread(thread), kFailed);
    EXPECT_EQ(GetLastError(), ERROR_SIGNAL_REFUSED);
    for (DWORD before = 127; before > 0; --before) {
        EXPECT_EQ(ResumeThread(thread), before);
    }
    EXPECT_EQ(EndOf(thread), 0U);
    CloseHandle(thread);
}

TEST(Threads, EndedByForceTheyUnwind) {
    const HANDLE never = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    const std::function<void()> kWaits[] = {
        [] { Sleep(INFINITE); },
        [&] { WaitForSingleObject(never, INFINITE); },
        [] {
            for (;;) {
                GetTickCount();
            }
        },
        [] { SuspendThread(GetCurrentThread()); },
    };
    for (const auto& wait : kWaits) {
        std::atomic<bool> inside{false};
        std::atomic<bool> unwound{false};
        Body body = [&] {
            const SetAtEnd at_end{unwound};
            inside = true;
            wait();
            return 1U;
        };
        const HANDLE thread = Start(body);
        ASSERT_TRUE(Eventually([&] { return inside.load(); }));
        EXPECT_TRUE(TerminateThread(thread, 7));
        EXPECT_TRUE(unwound);
        EXPECT_EQ(EndOf(thread), 7U);
        EXPECT_TRUE(TerminateThread(thread, 8)); // it has ended: nothing changes
        EXPECT_EQ(ExitCode(thread), 7U);
        CloseHandle(thread);
    }
    CloseHandle(never);
}

TEST(Threads, ThatNeverCallAreAbandonedAndEndWhenTheyDo) {
    std::atomic<bool> inside{false};
    std::atomic<bool> released{false};
    std::atomic<bool> unwound{false};
    std::atomic<bool> went_on{false};
    Body body = [&] {
        const SetAtEnd at_end{unwound};
        inside = true;
        while (!released) {
            std::this_thread::yield();
        }
        ThreadCheckpoint();
        went_on = true;
        return 1U;
    };
    const HANDLE thread = Start(body);
    ASSERT_TRUE(Eventually([&] { return inside.load(); }));
    EXPECT_TRUE(TerminateThread(thread, 3));
    EXPECT_FALSE(unwound);
    EXPECT_EQ(EndOf(thread), 3U);
    CloseHandle(thread);
    released = true;
    EXPECT_TRUE(Eventually([&] { return unwound.load(); }));
    EXPECT_FALSE(went_on);
}

TEST(Threads, MayWaitInTheDestructorsOfTheirUnwinding) {
    struct SleepAtEnd {
        std::atomic<bool>& flag;
        ~SleepAtEnd() {
            Sleep(1);
            flag = WaitForSingleObject(GetCurrentThread(), 1) == WAIT_TIMEOUT;
        }
    };
    const struct {
        std::function<void()> end;
        DWORD exit_code;
    } kEnds[] = {{[] { ExitThread(11); }, 11}, {[] { Sleep(INFINITE); }, 12}};
    for (const auto& row : kEnds) {
        std::atomic<bool> inside{false};
        std::atomic<bool> waited{false};
        Body body = [&] {
            const SleepAtEnd at_end{waited};
            inside = true;
            row.end();
            return 0U;
        };
        const HANDLE thread = Start(body);
        ASSERT_TRUE(Eventually([&] { return inside.load(); }));
        EXPECT_TRUE(TerminateThread(thread, 12));
        EXPECT_TRUE(waited);
        EXPECT_EQ(EndOf(thread), row.exit_code);
        CloseHandle(thread);
    }
}

TEST(Threads, EndingOneselfEndsAtOnce) {
    Body body = [] {
        TerminateThread(GetCurrentThread(), 21);
        return 1U;
    };
    const HANDLE thread = Start(body);
    EXPECT_EQ(EndOf(thread), 21U);
    CloseHandle(thread);
}

TEST(Threads, ForeignOnesHaveHandlesButCannotBeEnded) {
    EXPECT_EQ(ExitCode(GetCurrentThread()), STILL_ACTIVE);
    EXPECT_TRUE(CloseHandle(GetCurrentThread()));
    EXPECT_EQ(WaitForSingleObject(GetCurrentThread(), 0), WAIT_TIMEOUT);
    EXPECT_FALSE(TerminateThread(GetCurrentThread(), 1));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    DWORD id = 0;
    std::thread{[&] { id = GetCurrentThreadId(); }}.join();
    EXPECT_NE(id, GetCurrentThreadId());
    EXPECT_FALSE(WakeThread(id)); // it is gone
}

TEST(Threads, CallsRefuseWhatIsNoThread) {
    Body body = [] { return 0U; };
    const HANDLE closed = Start(body);
    EndOf(closed);
    CloseHandle(closed);
    const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    for (const HANDLE wrong : {closed, event, static_cast<HANDLE>(nullptr), INVALID_HANDLE_VALUE}) {
        const std::function<bool()> kRefusals[] = {
            [&] {
                DWORD code = 0;
                return GetExitCodeThread(wrong, &code) == FALSE;
            },
            [&] { return SuspendThread(wrong) == kFailed; },
            [&] { return ResumeThread(wrong) == kFailed; },
            [&] { return TerminateThread(wrong, 0) == FALSE; },
            [&] { return SetThreadPriority(wrong, 0) == FALSE; },
        };
        for (const auto& refused : kRefusals) {
            SetLastError(ERROR_SUCCESS);
            EXPECT_TRUE(refused());
            EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        }
    }
    EXPECT_FALSE(GetExitCodeThread(GetCurrentThread(), nullptr));
    CloseHandle(event);
}

TEST(Threads, StepBackWhenTheirPriorityIsLowered) {
    const HANDLE go = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    Body body = [&] {
        WaitForSingleObject(go, INFINITE);
        return static_cast<DWORD>(getpriority(PRIO_PROCESS, 0));
    };
    const HANDLE thread = Start(body);
    const DWORD usual = static_cast<DWORD>(getpriority(PRIO_PROCESS, 0));
    EXPECT_FALSE(SetThreadPriority(thread, 5));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(SetThreadPriority(thread, THREAD_PRIORITY_IDLE));
    SetEvent(go);
    EXPECT_EQ(EndOf(thread), 19U);
    EXPECT_EQ(static_cast<DWORD>(getpriority(PRIO_PROCESS, 0)), usual);
    EXPECT_FALSE(SetThreadPriority(thread, THREAD_PRIORITY_NORMAL));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    CloseHandle(thread);
    CloseHandle(go);
}

// What a window layer does in the hook: answer what other threads have sent to this one.
class SentMessages : public testing::Test {
protected:
    SentMessages() {
        receiver_ = GetCurrentThreadId();
        answered = CreateEventA(nullptr, FALSE, FALSE, nullptr);
        asked = 0;
        before_ = SetWaitHook([] {
            if (GetCurrentThreadId() != receiver_) return;
            if (asked.exchange(0) != 0) SetEvent(answered);
        });
    }
    ~SentMessages() override {
        SetWaitHook(before_);
        CloseHandle(answered);
    }

    // On another thread: returns when the receiver has answered.
    static void SendToReceiver() {
        asked = 1;
        EXPECT_TRUE(WakeThread(receiver_));
        EXPECT_EQ(WaitForSingleObject(answered, INFINITE), WAIT_OBJECT_0);
    }

    static inline std::atomic<int> asked{0};
    static inline HANDLE answered = nullptr;
    static inline DWORD receiver_ = 0;
    WaitHook before_ = nullptr;
};

TEST_F(SentMessages, AreAnsweredWhileTheReceiverWaitsForTheSender) {
    Body body = [] {
        for (int i = 0; i < 100; ++i) {
            SendToReceiver();
        }
        return 1U;
    };
    HANDLE thread = Start(body);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(thread);

    thread = Start(body); // the same where the receiver only asks again and again
    while (ExitCode(thread) == STILL_ACTIVE) {}
    CloseHandle(thread);
}

TEST_F(SentMessages, InterruptASleepWhichThenGoesOn) {
    ManualClock clock;
    std::atomic<bool> served{false};
    Body body = [&] {
        while (clock.SleeperCount() != 1) {
            std::this_thread::yield();
        }
        clock.Advance(std::chrono::milliseconds{99});
        SendToReceiver();
        served = true;
        clock.Advance(std::chrono::milliseconds{1});
        return 1U;
    };
    const HANDLE thread = Start(body);
    Sleep(100);
    EXPECT_TRUE(served);
    EXPECT_EQ(GetTickCount(), 100U);
    EXPECT_EQ(EndOf(thread), 1U);
    CloseHandle(thread);
}

TEST_F(SentMessages, AreNotLostWhenTheyComeBeforeTheWait) {
    std::atomic<bool> sent{false};
    Body body = [&] {
        asked = 1;
        WakeThread(receiver_);
        sent = true;
        return WaitForSingleObject(answered, INFINITE);
    };
    const HANDLE thread = Start(body);
    ASSERT_TRUE(Eventually([&] { return sent.load(); }));
    Sleep(0);
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(EndOf(thread), WAIT_OBJECT_0);
    CloseHandle(thread);
}

TEST_F(SentMessages, AreAnsweredWhileTheReceiverEndsTheSender) {
    std::atomic<bool> sending{false};
    std::atomic<int> rounds{0};
    Body body = [&] {
        for (;;) {
            sending = true;
            SendToReceiver();
            ++rounds;
        }
        return 0U;
    };
    const HANDLE thread = Start(body);
    ASSERT_TRUE(Eventually([&] { return sending.load(); }));
    EXPECT_TRUE(TerminateThread(thread, 4));
    EXPECT_EQ(ExitCode(thread), 4U);
    CloseHandle(thread);
}

} // namespace
