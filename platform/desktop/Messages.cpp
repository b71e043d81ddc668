#include "platform/desktop/messages.h"

#include "platform/base/clock.h"
#include "platform/base/threads.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/Surface.h"
#include "platform/desktop/UiLoop.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowTable.h"

#include <QCursor>
#include <QKeyEvent>

#include <poll.h>

#include <algorithm>
#include <utility>

using namespace kelvo::desktop;
using kelvo::platform::ThreadCheckpoint;

namespace kelvo::desktop {

namespace {

constexpr std::chrono::milliseconds kLeastTimerPeriod{10};
// How often a waiting thread other than the UI thread looks whether it is suspended or terminated.
constexpr std::chrono::milliseconds kLongestWait{100};

thread_local std::shared_ptr<QEvent> input_in_dispatch;
thread_local HWND window_in_dispatch = nullptr;
thread_local UINT message_in_dispatch = WM_NULL;
thread_local int dispatch_depth = 0;

std::optional<MSG> NextPaint(const MessageFilter& filter) {
    if (!OnUiThread()) return std::nullopt;
    std::vector<HWND> visible;
    {
        LockedWindows windows;
        for (const HWND window : windows.All()) {
            if (windows.IsVisible(window)) visible.push_back(window);
        }
    }
    for (const HWND window : visible) {
        const auto surface = SurfaceOf(window);
        if (!surface || !surface->NeedsPaint() || !filter.Wants(window, WM_PAINT)) continue;
        MSG message{};
        message.hwnd = window;
        message.message = WM_PAINT;
        message.time = ::GetTickCount();
        return message;
    }
    return std::nullopt;
}

std::optional<MSG> NextMade(MessageQueue& queue, const MessageFilter& filter, Removal removal) {
    if (auto paint = NextPaint(filter)) return paint;
    return queue.TakeTimer(filter, removal);
}

void AnswerOthers(MessageQueue& queue) {
    queue.ClearSignal();
    queue.AnswerCalls();
    if (UiLoop* loop = UiLoop::Instance(); loop != nullptr && OnUiThread()) loop->DeliverSurfaces();
}

// Gives the toolkit its turn where the queue is empty or has kept it waiting.
std::optional<MSG> NextQueued(MessageQueue& queue, const MessageFilter& filter, Removal removal) {
    UiLoop* const loop = OnUiThread() ? UiLoop::Instance() : nullptr;
    if (loop != nullptr) {
        if (dispatch_depth == 0) UiLoop::DeleteLeftWidgets();
        if (loop->IsStepDue()) loop->Step(Waiting::No);
    }
    if (auto queued = queue.TakeQueued(filter, removal)) return queued;
    if (loop == nullptr) return std::nullopt;
    loop->Step(Waiting::No);
    AnswerOthers(queue);
    return queue.TakeQueued(filter, removal);
}

std::optional<MSG> Next(MessageQueue& queue, const MessageFilter& filter, Removal removal) {
    AnswerOthers(queue);
    if (auto queued = NextQueued(queue, filter, removal)) return queued;
    if (const auto exit_code = queue.TakeQuit(removal)) {
        MSG message{};
        message.message = WM_QUIT;
        message.wParam = static_cast<WPARAM>(*exit_code);
        message.time = ::GetTickCount();
        return message;
    }
    return NextMade(queue, filter, removal);
}

void WaitForMore(const MessageQueue& queue) {
    if (OnUiThread()) {
        UiLoop::Instance()->Step(Waiting::Yes);
        return;
    }
    auto wait = kLongestWait;
    if (const auto timer = queue.TimeToNextTimer()) {
        wait = std::min(wait, std::chrono::ceil<std::chrono::milliseconds>(*timer));
    }
    pollfd descriptor{.fd = queue.Descriptor(), .events = POLLIN, .revents = 0};
    ::poll(&descriptor, 1, static_cast<int>(wait.count()));
}

MessageFilter FilterFor(HWND window, UINT first, UINT last) {
    MessageFilter filter{.wants_window = {}, .first = first, .last = last};
    if (window != nullptr) {
        filter.wants_window = [window](HWND candidate) {
            return candidate == window || ::IsChild(window, candidate) != FALSE;
        };
    }
    return filter;
}

} // namespace

bool TakeNextButQuit(MessageQueue& queue, MSG& message) {
    AnswerOthers(queue);
    auto next = queue.TakeQueued({}, Removal::Take);
    if (!next) next = NextMade(queue, {}, Removal::Take);
    if (!next) return false;
    message = *next;
    return true;
}

std::shared_ptr<QEvent> InputInDispatch() {
    return input_in_dispatch;
}

std::shared_ptr<QEvent> InputBehindMessage(HWND window, UINT message) {
    const bool is_this = window == window_in_dispatch && message == message_in_dispatch;
    return is_this ? input_in_dispatch : nullptr;
}

LRESULT CallWindow(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    WNDPROC procedure = nullptr;
    {
        LockedWindows windows;
        if (const WindowData* data = windows.Find(window)) procedure = data->procedure;
    }
    return procedure == nullptr ? 0 : procedure(window, message, wparam, lparam);
}

} // namespace kelvo::desktop

BOOL GetMessageA(MSG* message, HWND window, UINT first, UINT last) {
    ThreadCheckpoint();
    if (message == nullptr || (window != nullptr && ::IsWindow(window) == FALSE)) return -1;
    const auto queue = MessageQueue::OfThisThread();
    const MessageFilter filter = FilterFor(window, first, last);
    for (;;) {
        if (const auto next = Next(*queue, filter, Removal::Take)) {
            *message = *next;
            return next->message == WM_QUIT ? FALSE : TRUE;
        }
        WaitForMore(*queue);
        ThreadCheckpoint();
    }
}

BOOL PeekMessageA(MSG* message, HWND window, UINT first, UINT last, UINT remove) {
    ThreadCheckpoint();
    if (message == nullptr || (window != nullptr && ::IsWindow(window) == FALSE)) return FALSE;
    const auto removal = (remove & PM_REMOVE) != 0 ? Removal::Take : Removal::Keep;
    const auto next = Next(*MessageQueue::OfThisThread(), FilterFor(window, first, last), removal);
    if (!next) return FALSE;
    *message = *next;
    return TRUE;
}

BOOL TranslateMessage(const MSG* message) {
    if (message == nullptr) return FALSE;
    switch (message->message) {
    case WM_KEYDOWN:
    case WM_KEYUP:
    case WM_SYSKEYDOWN:
    case WM_SYSKEYUP:
        break;
    default:
        return FALSE;
    }
    const auto queue = MessageQueue::OfThisThread();
    const auto input = queue->InputBehind(*message);
    if (message->message == WM_KEYDOWN && input && input->type() == QEvent::KeyPress) {
        const QByteArray text = static_cast<const QKeyEvent&>(*input).text().toUtf8();
        for (const char letter : text) {
            queue->Post(message->hwnd, WM_CHAR, static_cast<unsigned char>(letter),
                        message->lParam);
        }
    }
    return TRUE;
}

LRESULT DispatchMessageA(const MSG* message) {
    ThreadCheckpoint();
    if (message == nullptr) return 0;
    const auto queue = MessageQueue::OfThisThread();
    struct Dispatch {
        Dispatch(std::shared_ptr<QEvent> input, const MSG& of)
            : input_before(std::exchange(input_in_dispatch, std::move(input))),
              window_before(std::exchange(window_in_dispatch, of.hwnd)),
              message_before(std::exchange(message_in_dispatch, of.message)) {
            ++dispatch_depth;
        }
        ~Dispatch() {
            input_in_dispatch = input_before;
            window_in_dispatch = window_before;
            message_in_dispatch = message_before;
            --dispatch_depth;
        }
        Dispatch(const Dispatch&) = delete;
        Dispatch& operator=(const Dispatch&) = delete;
        std::shared_ptr<QEvent> input_before;
        HWND window_before;
        UINT message_before;
    };
    const Dispatch dispatch(queue->InputBehind(*message), *message);
    if (message->message == WM_TIMER && message->lParam != 0) {
        const auto procedure = reinterpret_cast<TIMERPROC>(message->lParam);
        // Anybody may post a WM_TIMER: only a procedure that a timer names is called.
        if (queue->HasTimer(procedure)) {
            procedure(message->hwnd, WM_TIMER, message->wParam, ::GetTickCount());
        }
        return 0;
    }
    return CallWindow(message->hwnd, message->message, message->wParam, message->lParam);
}

BOOL PostMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    ThreadCheckpoint();
    std::shared_ptr<MessageQueue> queue;
    if (window == nullptr) {
        queue = MessageQueue::OfThisThread();
    } else {
        LockedWindows windows;
        if (const WindowData* data = windows.Find(window)) queue = data->queue;
    }
    return queue && queue->Post(window, message, wparam, lparam) ? TRUE : FALSE;
}

LRESULT SendMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    ThreadCheckpoint();
    std::shared_ptr<MessageQueue> queue;
    {
        LockedWindows windows;
        if (const WindowData* data = windows.Find(window)) queue = data->queue;
    }
    if (!queue) return 0;
    return queue->Call([=] { return CallWindow(window, message, wparam, lparam); });
}

void PostQuitMessage(int exit_code) {
    MessageQueue::OfThisThread()->Quit(exit_code);
}

UINT_PTR SetTimer(HWND window, UINT_PTR timer, UINT period_ms, TIMERPROC procedure) {
    ThreadCheckpoint();
    const auto queue = MessageQueue::OfThisThread();
    if (window != nullptr) {
        LockedWindows windows;
        const WindowData* data = windows.Find(window);
        if (data == nullptr || data->queue != queue) return 0;
    }
    const auto period = std::max(kLeastTimerPeriod, std::chrono::milliseconds(period_ms));
    return queue->SetTimer(window, timer, period, procedure);
}

BOOL KillTimer(HWND window, UINT_PTR timer) {
    const auto queue = MessageQueue::OfThisThreadIfAny();
    return queue && queue->KillTimer(window, timer) ? TRUE : FALSE;
}
