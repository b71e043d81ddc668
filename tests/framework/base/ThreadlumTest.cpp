#include "framework/base/Threadlum.h"
#include "framework/base/BKOperation.h"

#include "platform/base/events.h"
#include "platform/base/handles.h"
#include "platform/base/message_boxes.h"
#include "platform/base/threads.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <utility>

namespace kelvo {
namespace {

using platform::MessageBoxRecorder;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::chrono::seconds kDeadline{20};

/// Waits for a condition that another thread brings about.
bool Eventually(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + kDeadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        Sleep(1);
    }
    return true;
}

/// Counts until it is asked to stop.
class Counter : public Threadlum {
public:
    ~Counter() override {
        if (IsRunning()) Concludi();
        EXPECT_TRUE(Eventually([this] { return !IsRunning(); }));
    }
    DWORD Body() override {
        while (!EndRequested()) {
            ++count;
            Sleep(1);
        }
        asked_again = EndRequested();
        return 17;
    }
    bool CountsOn() {
        const int before = count;
        return Eventually([this, before] { return count > before + 2; });
    }

    std::atomic<int> count = 0;
    std::atomic<bool> asked_again = true;
};

TEST(Thread, RunsItsBodyUntilItIsAskedToStop) {
    const MessageBoxRecorder boxes;
    Counter counter;
    EXPECT_EQ(counter.ClassId(), 1040100U);
    EXPECT_EQ(counter.ThreadHandle(), nullptr);
    EXPECT_FALSE(counter.IsRunning());
    const HANDLE handle = counter.StartTread();
    ASSERT_NE(handle, nullptr);
    EXPECT_NE(counter.ThreadId(), 0U);
    EXPECT_TRUE(counter.IsRunning());
    EXPECT_EQ(counter.ThreadHandle(), handle);
    EXPECT_TRUE(counter.CountsOn());
    EXPECT_TRUE(counter.Concludi());
    EXPECT_TRUE(Eventually([&counter] { return !counter.IsRunning(); }));
    EXPECT_EQ(counter.ThreadHandle(), nullptr);
    EXPECT_FALSE(counter.asked_again); // the event is gone with the first poll
    ASSERT_EQ(WaitForSingleObject(handle, 20000), WAIT_OBJECT_0);
    DWORD exit_code = 0;
    EXPECT_TRUE(GetExitCodeThread(handle, &exit_code));
    EXPECT_EQ(exit_code, 17U);
    EXPECT_THAT(boxes.Texts(), IsEmpty());

    EXPECT_FALSE(counter.Kill(0)); // it has ended: its handle is gone
    EXPECT_THAT(boxes.Texts(),
                ElementsAre("Threadlum::Kill() - GetExitCodeThread() non ha funzionato!"));

    EXPECT_NE(counter.StartTread(), nullptr); // with a fresh event
    EXPECT_TRUE(counter.CountsOn());
}

TEST(Thread, IsSuspendedByAFlagNotByACount) {
    const MessageBoxRecorder boxes;
    Counter counter;
    ASSERT_NE(counter.StartTread(), nullptr);
    EXPECT_TRUE(counter.Riprendi()); // runs already
    EXPECT_TRUE(counter.Sospendi());
    EXPECT_TRUE(counter.Sospendi());
    EXPECT_TRUE(counter.IsSuspended());
    EXPECT_TRUE(counter.IsRunning());
    // It stops at its next call into the system; from then on it counts no further.
    int before = -1;
    EXPECT_TRUE(
        Eventually([&] { return std::exchange(before, counter.count.load()) == counter.count; }));
    EXPECT_TRUE(counter.Riprendi());
    EXPECT_FALSE(counter.IsSuspended());
    EXPECT_TRUE(counter.CountsOn());
    EXPECT_THAT(boxes.Texts(), IsEmpty());
}

TEST(Thread, IsKilledAndCanBeStartedAgain) {
    const MessageBoxRecorder boxes;
    Counter counter;
    for (int i = 0; i < 3; ++i) {
        const HANDLE handle = counter.StartTread();
        ASSERT_NE(handle, nullptr);
        EXPECT_TRUE(i == 1 || counter.CountsOn()); // once before the body has begun
        EXPECT_TRUE(i != 2 || counter.Sospendi()); // once asleep
        EXPECT_TRUE(counter.Kill(5));
        EXPECT_FALSE(counter.IsRunning());
        EXPECT_FALSE(counter.IsSuspended());
        EXPECT_EQ(counter.ThreadHandle(), nullptr);
    }
    EXPECT_THAT(boxes.Texts(), IsEmpty());
}

TEST(Thread, ReportsWhatCannotBeDoneWithoutOne) {
    const MessageBoxRecorder boxes;
    Counter counter;
    EXPECT_FALSE(counter.Sospendi());
    EXPECT_FALSE(counter.Riprendi());
    EXPECT_FALSE(counter.Kill(0));
    EXPECT_FALSE(counter.Concludi());
    EXPECT_THAT(boxes.Texts(),
                ElementsAre("Threadlum::Sospendi() - GetExitCodeThread() non ha funzionato!",
                            "Threadlum::Riprendi() - GetExitCodeThread() non ha funzionato!",
                            "Threadlum::Kill() - GetExitCodeThread() non ha funzionato!",
                            "Threadlum::Concludi()  - ::SetEvent() fallita!"));
    EXPECT_EQ(boxes.Boxes()[0].caption, "ERRORE");
}

/// Ends its thread without returning, so that the handle is still there.
class Leaver : public Threadlum {
public:
    DWORD Body() override { ExitThread(3); }
};

TEST(Thread, ReportsWhatCannotBeDoneWithOneThatHasEnded) {
    const MessageBoxRecorder boxes;
    Leaver leaver;
    const HANDLE handle = leaver.StartTread();
    ASSERT_EQ(WaitForSingleObject(handle, 20000), WAIT_OBJECT_0);
    EXPECT_FALSE(leaver.IsRunning());
    EXPECT_FALSE(leaver.Sospendi());
    EXPECT_FALSE(leaver.Riprendi());
    EXPECT_FALSE(leaver.Kill(0));
    EXPECT_THAT(
        boxes.Texts(),
        ElementsAre("Threadlum::Sospendi() - Tentativo di sospendere Tread già concluso!",
                    "Threadlum::Riprendi() - Tentativo di Riprendere un Tread già concluso!",
                    "Threadlum::Kill() - Tentativo di eliminare un Tread già concluso!"));
}

TEST(Thread, ReportsAStartThatTheSystemRefuses) {
    const MessageBoxRecorder boxes;
    Counter counter;
    counter.SetCreationFlags(0x40000000);
    EXPECT_EQ(counter.StartTread(), nullptr);
    EXPECT_FALSE(counter.IsRunning());
    counter.SetCreationFlags(0);
    EXPECT_NE(counter.StartTread(), nullptr);
    EXPECT_EQ(counter.StartTread(), nullptr); // one body at a time
    EXPECT_THAT(boxes.Texts(), ElementsAre("Threadlum::StartTread() - ::CreateThread() Fallito",
                                           "Threadlum::StartTread() - ::CreateThread() Fallito"));
}

/// What the operations of these tests do.
struct Work {
    std::atomic<bool> begun = false;
    std::atomic<bool> ended = false;

    INT_PTR PollUntilStopped(INT_PTR thread, INT_PTR /*unused*/, INT_PTR /*unused*/) {
        begun = true;
        while (!reinterpret_cast<Threadlum*>(thread)->EndRequested()) {
            Sleep(1);
        }
        ended = true;
        return 0;
    }
    INT_PTR Add(INT_PTR first, INT_PTR second, INT_PTR third) { return first + second + third; }
    INT_PTR SleepForEver(INT_PTR /*unused*/, INT_PTR /*unused*/, INT_PTR /*unused*/) {
        begun = true;
        Sleep(INFINITE);
        ended = true;
        return 0;
    }
};

TEST(BackgroundOperation, RunsAMemberFunctionWithItsArguments) {
    Work work;
    BKOperation<Work> operation(&work);
    const HANDLE handle = operation.Start(&Work::Add, 1, 20, 300);
    ASSERT_NE(handle, nullptr);
    ASSERT_EQ(WaitForSingleObject(handle, 20000), WAIT_OBJECT_0);
    DWORD exit_code = 0;
    EXPECT_TRUE(GetExitCodeThread(handle, &exit_code));
    EXPECT_EQ(exit_code, 321U);
    EXPECT_TRUE(Eventually([&operation] { return !operation.IsRunning(); }));
}

TEST(BackgroundOperation, NeverOutlivesItsObject) {
    const MessageBoxRecorder boxes;
    Work work;
    HANDLE handle = nullptr;
    {
        BKOperation<Work> operation(&work);
        handle = operation.Start(&Work::SleepForEver);
        EXPECT_TRUE(Eventually([&work] { return work.begun.load(); }));
    }
    EXPECT_FALSE(work.ended);
    DWORD exit_code = 0;
    EXPECT_FALSE(GetExitCodeThread(handle, &exit_code)); // closed
    EXPECT_THAT(boxes.Texts(), IsEmpty());
}

/// Waits on an event of the test; once it has begun it does not look at its object.
class Waiter : public Threadlum {
public:
    Waiter(HANDLE go_on, Work& work) : go_on_(go_on), work_(work) {}
    DWORD Body() override {
        const HANDLE go_on = go_on_;
        Work& work = work_;
        work.begun = true;
        WaitForSingleObject(go_on, INFINITE);
        work.ended = true;
        return 0;
    }

private:
    HANDLE go_on_;
    Work& work_;
};

TEST(Thread, ReportsSystemCallsThatFail) {
    const MessageBoxRecorder boxes;
    Work work;
    const HANDLE go_on = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    {
        Waiter waiter(go_on, work);
        const HANDLE handle = waiter.StartTread();
        ASSERT_NE(handle, nullptr);
        ASSERT_TRUE(Eventually([&work] { return work.begun.load(); }));
        while (SuspendThread(handle) != static_cast<DWORD>(-1)) {}
        EXPECT_FALSE(waiter.Sospendi());
        while (ResumeThread(handle) > 1) {}
        EXPECT_TRUE(CloseHandle(handle)); // behind its back
    }
    EXPECT_THAT(boxes.Texts(),
                ElementsAre("Threadlum::Sospendi() - SuspendThread() non ha funzionato!",
                            "Threadlum::~Threadlum() - GetExitCodeThread() non ha funzionato!"));
    EXPECT_TRUE(SetEvent(go_on));
    EXPECT_TRUE(Eventually([&work] { return work.ended.load(); }));
    EXPECT_TRUE(CloseHandle(go_on));
}

/// A thread object without a destructor of its own that would stop the body.
class Careless : public Threadlum {
public:
    explicit Careless(Work& work) : work_(work) {}
    DWORD Body() override {
        return static_cast<DWORD>(
            work_.PollUntilStopped(reinterpret_cast<INT_PTR>(static_cast<Threadlum*>(this)), 0, 0));
    }

private:
    Work& work_;
};

TEST(Thread, IsStoppedAndAwaitedByTheDestructor) {
    const MessageBoxRecorder boxes;
    Work running;
    Work suspended;
    {
        Careless thread(running);
        Careless sleeper(suspended);
        ASSERT_NE(thread.StartTread(), nullptr);
        ASSERT_NE(sleeper.StartTread(), nullptr);
        EXPECT_TRUE(Eventually([&] { return running.begun && suspended.begun; }));
        EXPECT_TRUE(sleeper.Sospendi());
    }
    EXPECT_TRUE(running.ended);
    EXPECT_TRUE(suspended.ended);
    EXPECT_THAT(boxes.Texts(), IsEmpty());
}

} // namespace
} // namespace kelvo
