// The queue: order, threads, sending, input, loops of the toolkit's own.

#include "platform/base/events.h"
#include "platform/base/handles.h"
#include "tests/platform/desktop/RecordingWindow.h"

#include <QApplication>
#include <QEventLoop>
#include <QInputMethodEvent>
#include <QMouseEvent>
#include <QTest>
#include <QWindow>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

using namespace kelvo::desktop;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Messages : public testing::Test {
protected:
    void SetUp() override {
        RegisterTestClass();
        RegisterTestClass("DoubleClicks", CS_DBLCLKS);
        window_ = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE);
        Pump();
        seen.clear();
        answer = nullptr;
    }
    void TearDown() override {
        answer = nullptr;
        ::DestroyWindow(window_);
        ::UnregisterClassA(kTestClass, nullptr);
        ::UnregisterClassA("DoubleClicks", nullptr);
    }
    QWidget* Widget() const { return WidgetOf(window_); }

    HWND window_ = nullptr;
};

using PostedMessages = Messages;
using SentMessages = Messages;
using InputMessages = Messages;
using ForeignLoops = Messages;

std::vector<WPARAM> ParametersOf(HWND window, UINT message) {
    std::vector<WPARAM> parameters;
    for (const Seen& each : SeenOf(window, message))
        parameters.push_back(each.wparam);
    return parameters;
}

POINT PointOf(const Seen& each) {
    const auto packed = static_cast<DWORD_PTR>(each.lparam);
    return {static_cast<short>(LOWORD(packed)), static_cast<short>(HIWORD(packed))};
}

} // namespace

TEST_F(PostedMessages, ArriveInOrderFromManyThreads) {
    constexpr int kThreads = 4;
    constexpr int kEach = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < kEach; ++i) {
                EXPECT_TRUE(::PostMessageA(window_, WM_USER + static_cast<UINT>(t),
                                           static_cast<WPARAM>(i), 0));
            }
        });
    }
    EXPECT_TRUE(PumpUntil([&] {
        return std::ranges::count_if(seen, [](const Seen& each) {
                   return each.message >= WM_USER;
               }) == kThreads * kEach;
    }));
    for (std::thread& thread : threads)
        thread.join();
    for (int t = 0; t < kThreads; ++t) {
        const auto parameters = ParametersOf(window_, WM_USER + static_cast<UINT>(t));
        ASSERT_EQ(parameters.size(), static_cast<std::size_t>(kEach));
        for (std::size_t i = 0; i < parameters.size(); ++i)
            EXPECT_EQ(parameters[i], i);
    }
    for (const Seen& each : seen)
        EXPECT_EQ(each.thread, std::this_thread::get_id());
}

TEST_F(PostedMessages, AreLimitedSoThatNobodyFillsTheMemory) {
    int accepted = 0;
    while (accepted < 20000 && ::PostMessageA(window_, WM_USER, 0, 0) != FALSE)
        ++accepted;
    EXPECT_EQ(accepted, 10000);
    Pump();
    EXPECT_EQ(SeenOf(window_, WM_USER).size(), 10000U);
    EXPECT_TRUE(::PostMessageA(window_, WM_USER, 0, 0));
}

TEST_F(PostedMessages, AreTakenByRangeAndWindow) {
    const HWND child = MakeChild(window_, {0, 0, 10, 10});
    const HWND other = MakeTopLevel();
    Pump();
    ::PostMessageA(other, WM_USER + 1, 0, 0);
    ::PostMessageA(child, WM_USER + 2, 0, 0);
    ::PostMessageA(window_, WM_USER + 3, 0, 0);
    MSG message{};
    ASSERT_TRUE(::PeekMessageA(&message, nullptr, WM_USER + 3, WM_USER + 9, PM_NOREMOVE));
    EXPECT_EQ(message.message, WM_USER + 3);
    ASSERT_TRUE(::PeekMessageA(&message, window_, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.hwnd, child);
    ASSERT_TRUE(::PeekMessageA(&message, window_, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, WM_USER + 3);
    EXPECT_FALSE(::PeekMessageA(&message, window_, WM_USER, WM_USER + 9, PM_REMOVE));
    ASSERT_TRUE(::PeekMessageA(&message, nullptr, WM_USER, WM_USER + 9, PM_REMOVE));
    EXPECT_EQ(message.hwnd, other);
    ::DestroyWindow(other);
    EXPECT_EQ(::GetMessageA(&message, other, 0, 0), -1);
}

TEST_F(PostedMessages, ComeBeforeTheRequestToQuit) {
    ::PostQuitMessage(7);
    ::PostMessageA(window_, WM_USER, 0, 0);
    MSG message{};
    EXPECT_TRUE(::GetMessageA(&message, nullptr, WM_USER, WM_USER));
    EXPECT_FALSE(::GetMessageA(&message, nullptr, 0, 0));
    EXPECT_EQ(message.message, WM_QUIT);
    EXPECT_EQ(message.wParam, 7U);
    EXPECT_FALSE(::PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
}

TEST_F(PostedMessages, ReachAThreadWithoutWindows) {
    std::thread([] {
        EXPECT_TRUE(::PostMessageA(nullptr, WM_USER, 5, 6));
        const UINT_PTR timer = ::SetTimer(nullptr, 0, 10, nullptr);
        MSG message{};
        EXPECT_TRUE(::GetMessageA(&message, nullptr, 0, 0));
        EXPECT_EQ(message.message, WM_USER);
        EXPECT_EQ(message.lParam, 6);
        EXPECT_TRUE(::GetMessageA(&message, nullptr, 0, 0));
        EXPECT_EQ(message.message, WM_TIMER);
        EXPECT_EQ(message.wParam, timer);
        ::PostQuitMessage(3);
        ::KillTimer(nullptr, timer);
        EXPECT_FALSE(::GetMessageA(&message, nullptr, 0, 0));
        EXPECT_EQ(message.wParam, 3U);
    }).join();
}

TEST_F(SentMessages, RunAtOnceOnTheirOwnThread) {
    answer = [](HWND, UINT message, WPARAM wparam, LPARAM) -> std::optional<LRESULT> {
        return message == WM_USER ? std::optional<LRESULT>(static_cast<LRESULT>(wparam) * 2)
                                  : std::nullopt;
    };
    ::PostMessageA(window_, WM_USER + 1, 0, 0);
    EXPECT_EQ(::SendMessageA(window_, WM_USER, 21, 0), 42);
    EXPECT_THAT(MessagesOf(window_), ElementsAre(WM_USER));
}

// What a thread sends is answered on the window's thread, whichever call that thread is in.
TEST_F(SentMessages, AreAnsweredWhileTheirThreadSleepsOrWaits) {
    answer = [](HWND, UINT message, WPARAM wparam, LPARAM) -> std::optional<LRESULT> {
        return message == WM_USER ? std::optional<LRESULT>(static_cast<LRESULT>(wparam) + 1)
                                  : std::nullopt;
    };
    const LPTHREAD_START_ROUTINE send = [](LPVOID window) -> DWORD {
        LRESULT sum = 0;
        for (WPARAM i = 0; i < 100; ++i)
            sum += ::SendMessageA(static_cast<HWND>(window), WM_USER, i, 0);
        return static_cast<DWORD>(sum);
    };
    DWORD exit_code = STILL_ACTIVE;
    const HANDLE waited_for = ::CreateThread(nullptr, 0, send, window_, 0, nullptr);
    EXPECT_EQ(::WaitForSingleObject(waited_for, INFINITE), WAIT_OBJECT_0);
    ::GetExitCodeThread(waited_for, &exit_code);
    EXPECT_EQ(exit_code, 5050U);

    const HANDLE spun_on = ::CreateThread(nullptr, 0, send, window_, 0, nullptr);
    do {
        ASSERT_TRUE(::GetExitCodeThread(spun_on, &exit_code));
    } while (exit_code == STILL_ACTIVE);
    EXPECT_EQ(exit_code, 5050U);

    const HANDLE slept_through = ::CreateThread(nullptr, 0, send, window_, 0, nullptr);
    for (int i = 0; i < 200 && ::WaitForSingleObject(slept_through, 0) != WAIT_OBJECT_0; ++i)
        ::Sleep(50);
    ::GetExitCodeThread(slept_through, &exit_code);
    EXPECT_EQ(exit_code, 5050U);
    for (const HANDLE thread : {waited_for, spun_on, slept_through})
        ::CloseHandle(thread);
    for (const Seen& each : SeenOf(window_, WM_USER))
        EXPECT_EQ(each.thread, std::this_thread::get_id());
    EXPECT_EQ(SeenOf(window_, WM_USER).size(), 300U);
}

TEST_F(SentMessages, AreAnsweredInsideTheLoopAndBeforeWhatIsPosted) {
    std::atomic<bool> answered{false};
    std::thread sender([&] {
        ::PostMessageA(window_, WM_USER + 1, 0, 0);
        ::SendMessageA(window_, WM_USER + 2, 0, 0);
        answered = true;
    });
    EXPECT_TRUE(PumpUntil([&] { return answered.load(); }));
    sender.join();
    EXPECT_EQ(SeenOf(window_, WM_USER + 2).size(), 1U);
    EXPECT_EQ(SeenOf(window_, WM_USER + 1).size(), 1U);
}

TEST_F(SentMessages, GiveZeroWhenTheWindowHasGone) {
    const HWND other = MakeTopLevel();
    std::atomic<bool> answered{false};
    answer = [&](HWND window, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        return window == other && message == WM_USER ? std::optional<LRESULT>(9) : std::nullopt;
    };
    std::atomic<LRESULT> result{-1};
    std::thread sender([&] {
        result = ::SendMessageA(other, WM_USER, 0, 0);
        answered = true;
    });
    ::DestroyWindow(other); // it may still be answered before, but nobody waits for ever
    EXPECT_TRUE(PumpUntil([&] { return answered.load(); }));
    sender.join();
    EXPECT_TRUE(result == 0 || result == 9);
    EXPECT_EQ(::SendMessageA(other, WM_USER, 0, 0), 0);
}

TEST_F(InputMessages, ComeFromTheMouseThroughTheQueue) {
    const HWND child = MakeChild(window_, {100, 50, 200, 150});
    Pump();
    seen.clear();
    QTest::mousePress(WidgetOf(child), Qt::LeftButton, Qt::ShiftModifier, QPoint(10, 20));
    EXPECT_THAT(seen, IsEmpty()) << "input waits in the queue";
    QTest::mouseRelease(WidgetOf(child), Qt::LeftButton, {}, QPoint(11, 21));
    Pump();
    const auto down = SeenOf(child, WM_LBUTTONDOWN);
    ASSERT_EQ(down.size(), 1U);
    EXPECT_EQ(down.front().wparam, MK_LBUTTON | MK_SHIFT);
    EXPECT_EQ(PointOf(down.front()).x, 10);
    EXPECT_EQ(PointOf(down.front()).y, 20);
    const auto up = SeenOf(child, WM_LBUTTONUP);
    ASSERT_EQ(up.size(), 1U);
    EXPECT_EQ(up.front().wparam, 0U);
    EXPECT_THAT(SeenOf(window_, WM_LBUTTONDOWN), IsEmpty()) << "only the window under the mouse";
}

TEST_F(InputMessages, MakeTheSecondFastPressADoubleClickOnlyWhereTheClassWantsIt) {
    const HWND plain = MakeChild(window_, {0, 0, 50, 50});
    const HWND doubling = MakeChild(window_, {60, 0, 110, 50}, 0, "DoubleClicks");
    Pump();
    QWindow* const frame = Widget()->window()->windowHandle();
    seen.clear();
    for (const HWND target : {plain, doubling}) {
        QWidget* const widget = WidgetOf(target);
        QTest::mouseDClick(frame, Qt::LeftButton, {},
                           widget->mapTo(widget->window(), QPoint(5, 5)));
        Pump();
    }
    EXPECT_EQ(SeenOf(plain, WM_LBUTTONDOWN).size(), 2U);
    EXPECT_THAT(SeenOf(plain, WM_LBUTTONDBLCLK), IsEmpty());
    EXPECT_EQ(SeenOf(plain, WM_LBUTTONUP).size(), 2U);
    EXPECT_EQ(SeenOf(doubling, WM_LBUTTONDOWN).size(), 1U);
    EXPECT_EQ(SeenOf(doubling, WM_LBUTTONDBLCLK).size(), 1U);
}

TEST_F(InputMessages, FollowTheCaptureOutsideOfTheWindow) {
    const HWND child = MakeChild(window_, {100, 50, 200, 150});
    Pump();
    seen.clear();
    QTest::mousePress(WidgetOf(child), Qt::LeftButton, {}, QPoint(10, 10));
    QTest::mouseMove(WidgetOf(child), QPoint(-20, -15));
    Pump();
    EXPECT_THAT(SeenOf(child, WM_MOUSEMOVE), IsEmpty())
        << "without capture it belongs to the parent";
    EXPECT_FALSE(SeenOf(window_, WM_MOUSEMOVE).empty());

    seen.clear();
    EXPECT_EQ(::SetCapture(child), nullptr);
    EXPECT_EQ(::GetCapture(), child);
    QTest::mouseMove(WidgetOf(child), QPoint(-30, -40));
    Pump();
    ASSERT_FALSE(SeenOf(child, WM_MOUSEMOVE).empty());
    EXPECT_EQ(PointOf(SeenOf(child, WM_MOUSEMOVE).back()).x, -30);
    EXPECT_EQ(PointOf(SeenOf(child, WM_MOUSEMOVE).back()).y, -40);
    EXPECT_EQ(::SetCapture(window_), child);
    EXPECT_EQ(SeenOf(child, WM_CAPTURECHANGED).size(), 1U);
    EXPECT_TRUE(::ReleaseCapture());
    EXPECT_EQ(SeenOf(window_, WM_CAPTURECHANGED).size(), 1U);
    EXPECT_EQ(::GetCapture(), nullptr);
    QTest::mouseRelease(WidgetOf(child), Qt::LeftButton, {}, QPoint(10, 10));
    Pump();
    ::SetCapture(child);
    ::DestroyWindow(child);
    EXPECT_EQ(::GetCapture(), nullptr);
}

TEST_F(InputMessages, MeltMovesThatWaitIntoOne) {
    // Events of our own only: moving the real pointer would bring one more, whenever it likes.
    for (int i = 10; i < 60; ++i) {
        const QPointF position(i, i);
        QMouseEvent move(QEvent::MouseMove, position, Widget()->mapToGlobal(position), Qt::NoButton,
                         Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(Widget(), &move);
    }
    Pump();
    const auto moves = SeenOf(window_, WM_MOUSEMOVE);
    ASSERT_EQ(moves.size(), 1U);
    EXPECT_EQ(PointOf(moves.back()).x, 59);
}

TEST_F(InputMessages, ComeFromTheKeyboardWithTheirText) {
    QTest::keyClick(Widget(), 'A');
    QTest::keyClick(Widget(), Qt::Key_Left);
    QKeyEvent accented(QEvent::KeyPress, Qt::Key_Egrave, {}, QStringLiteral("è"));
    QApplication::sendEvent(Widget(), &accented);
    EXPECT_THAT(SeenOf(window_, WM_KEYDOWN), IsEmpty());
    Pump();
    EXPECT_THAT(ParametersOf(window_, WM_KEYDOWN), ElementsAre('A', VK_LEFT, 0));
    EXPECT_THAT(ParametersOf(window_, WM_CHAR), ElementsAre('A', 0xC3, 0xA8));
    EXPECT_THAT(ParametersOf(window_, WM_KEYUP), ElementsAre('A', VK_LEFT));
    // The text of a key comes before the next key.
    std::vector<UINT> order;
    for (const Seen& each : seen) {
        if (each.message == WM_KEYDOWN || each.message == WM_CHAR) order.push_back(each.message);
    }
    EXPECT_THAT(order, ElementsAre(WM_KEYDOWN, WM_CHAR, WM_KEYDOWN, WM_KEYDOWN, WM_CHAR, WM_CHAR));
}

TEST_F(InputMessages, ComeFromInputMethodsBehindEarlierKeys) {
    QTest::keyClick(Widget(), Qt::Key_X);
    QInputMethodEvent composed;
    composed.setCommitString(QStringLiteral("çà"));
    QApplication::sendEvent(Widget(), &composed);
    Pump();
    EXPECT_THAT(ParametersOf(window_, WM_CHAR), ElementsAre('x', 0xC3, 0xA7, 0xC3, 0xA0));
}

TEST_F(InputMessages, GiveTheKeysToTheWindowWithTheFocus) {
    const HWND first = MakeChild(window_, {0, 0, 50, 50});
    const HWND second = MakeChild(window_, {60, 0, 110, 50});
    ASSERT_TRUE(QTest::qWaitForWindowActive(Widget()->window()));
    Pump();
    ::SetFocus(first);
    seen.clear();
    EXPECT_EQ(::SetFocus(second), first);
    EXPECT_EQ(::GetFocus(), second);
    EXPECT_EQ(SeenOf(first, WM_KILLFOCUS).size(), 1U);
    EXPECT_EQ(SeenOf(second, WM_SETFOCUS).size(), 1U);
    EXPECT_EQ(SeenOf(second, WM_SETFOCUS).front().wparam, reinterpret_cast<WPARAM>(first));
    QTest::keyClick(Widget()->window()->windowHandle(), Qt::Key_Space);
    Pump();
    EXPECT_THAT(ParametersOf(second, WM_KEYDOWN), ElementsAre(VK_SPACE));
    EXPECT_THAT(SeenOf(first, WM_KEYDOWN), IsEmpty());
    ::DestroyWindow(second);
    EXPECT_EQ(::GetFocus(), nullptr);
}

TEST_F(ForeignLoops, GoOnDispatchingWhatIsPostedAndTimed) {
    QEventLoop loop;
    std::thread poster([this] {
        for (WPARAM i = 0; i < 50; ++i)
            ::PostMessageA(window_, WM_USER, i, 0);
        ::SendMessageA(window_, WM_USER + 1, 0, 0);
    });
    ::SetTimer(window_, 4, 10, nullptr);
    answer = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_TIMER && SeenOf(window_, WM_TIMER).size() == 5) loop.quit();
        return std::nullopt;
    };
    ::InvalidateRect(window_, nullptr, TRUE);
    loop.exec();
    poster.join();
    EXPECT_EQ(SeenOf(window_, WM_TIMER).size(), 5U);
    EXPECT_EQ(SeenOf(window_, WM_USER).size(), 50U);
    EXPECT_EQ(SeenOf(window_, WM_USER + 1).size(), 1U);
    EXPECT_EQ(SeenOf(window_, WM_PAINT).size(), 1U);
    ::KillTimer(window_, 4);
}

TEST_F(ForeignLoops, LeaveTheRequestToQuitToTheProgram) {
    ::PostQuitMessage(1);
    QEventLoop loop;
    ::SetTimer(window_, 4, 10, nullptr);
    answer = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_TIMER) loop.quit();
        return std::nullopt;
    };
    loop.exec();
    ::KillTimer(window_, 4);
    MSG message{};
    EXPECT_TRUE(::PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
}
