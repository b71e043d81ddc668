#include "platform/desktop/MessageQueue.h"

#include "platform/base/clock.h"
#include "platform/base/threads.h"

#include <QCursor>

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <system_error>

namespace kelvo::desktop {

namespace {

constexpr std::size_t kMostPosted = 10000;
// Enough for a program that takes several messages before it dispatches them.
constexpr std::size_t kMostRecentInput = 16;

int OpenDescriptor() {
    const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    return descriptor;
}

/// Closes the queue when its thread ends.
struct QueueOfThread {
    std::shared_ptr<MessageQueue> queue;
    QueueOfThread() = default;
    QueueOfThread(const QueueOfThread&) = delete;
    QueueOfThread& operator=(const QueueOfThread&) = delete;
    ~QueueOfThread() {
        if (queue) queue->Close();
    }
};

thread_local QueueOfThread queue_of_thread;

} // namespace

bool MessageFilter::Wants(HWND window, UINT message) const {
    if ((first != 0 || last != 0) && (message < first || message > last)) return false;
    return !wants_window || wants_window(window);
}

MessageQueue::MessageQueue() : thread_id_(::GetCurrentThreadId()), descriptor_(OpenDescriptor()) {}

MessageQueue::~MessageQueue() {
    ::close(descriptor_);
}

std::shared_ptr<MessageQueue> MessageQueue::OfThisThread() {
    if (!queue_of_thread.queue) queue_of_thread.queue = std::make_shared<MessageQueue>();
    return queue_of_thread.queue;
}

std::shared_ptr<MessageQueue> MessageQueue::OfThisThreadIfAny() {
    return queue_of_thread.queue;
}

bool MessageQueue::Post(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    MSG posted{};
    posted.hwnd = window;
    posted.message = message;
    posted.wParam = wparam;
    posted.lParam = lparam;
    posted.time = ::GetTickCount();
    {
        const std::scoped_lock lock(mutex_);
        if (closed_ || posted_.size() >= kMostPosted) return false;
        posted_.push_back(posted);
    }
    Signal();
    return true;
}

LRESULT MessageQueue::Call(std::function<LRESULT()> call) {
    if (::GetCurrentThreadId() == thread_id_) return call();
    const auto pending = std::make_shared<PendingCall>();
    pending->run = std::move(call);
    if (!Enqueue(pending)) return 0;
    std::unique_lock lock(mutex_);
    call_done_.wait(lock, [&] { return pending->result || (closed_ && !pending->started); });
    return pending->result.value_or(0);
}

void MessageQueue::Defer(std::function<void()> call) {
    const auto pending = std::make_shared<PendingCall>();
    pending->run = [call = std::move(call)]() -> LRESULT {
        call();
        return 0;
    };
    Enqueue(pending);
}

bool MessageQueue::Enqueue(const std::shared_ptr<PendingCall>& call) {
    {
        const std::scoped_lock lock(mutex_);
        if (closed_) return false;
        calls_.push_back(call);
    }
    SignalWaits();
    return true;
}

void MessageQueue::Signal() {
    const std::scoped_lock lock(mutex_);
    if (signalled_ || closed_) return;
    signalled_ = true;
    const std::uint64_t one = 1;
    // The counter is 0 here, so the write cannot fail for want of room.
    [[maybe_unused]] const auto written = ::write(descriptor_, &one, sizeof one);
}

void MessageQueue::SignalWaits() {
    Signal();
    platform::WakeThread(thread_id_);
}

bool MessageQueue::IsClosed() const {
    const std::scoped_lock lock(mutex_);
    return closed_;
}

void MessageQueue::ClearSignal() {
    const std::scoped_lock lock(mutex_);
    if (!signalled_) return;
    signalled_ = false;
    std::uint64_t counted = 0;
    // Never blocks, and outside of the lock it could take the next signal along.
    // NOLINTNEXTLINE(clang-analyzer-unix.BlockInCriticalSection)
    [[maybe_unused]] const auto read = ::read(descriptor_, &counted, sizeof counted);
}

void MessageQueue::AddInput(MSG message, std::unique_ptr<QEvent> event) {
    message.time = ::GetTickCount();
    Entry entry{message, std::shared_ptr<QEvent>(std::move(event))};
    if (entry.event) {
        entry.message.lPrivate = next_input_++;
        if (next_input_ == 0) next_input_ = 1;
    }
    if (!input_.empty() && message.message == WM_MOUSEMOVE) {
        const MSG& before = input_.back().message;
        if (before.message == WM_MOUSEMOVE && before.hwnd == message.hwnd &&
            before.wParam == message.wParam) {
            input_.pop_back();
        }
    }
    input_.push_back(std::move(entry));
    Signal();
}

void MessageQueue::MoveKeys(HWND from, HWND to) {
    for (Entry& entry : input_) {
        const UINT message = entry.message.message;
        const bool is_key =
            (message >= WM_KEYDOWN && message <= WM_SYSKEYUP) || message == WM_IME_COMPOSITION;
        if (is_key && entry.message.hwnd == from) entry.message.hwnd = to;
    }
}

void MessageQueue::MoveMouse(HWND to, const std::function<LPARAM(POINT)>& position) {
    for (Entry& entry : input_) {
        MSG& message = entry.message;
        if (message.message < WM_MOUSEMOVE || message.message > WM_MBUTTONUP) continue;
        message.hwnd = to;
        message.lParam = position(message.pt);
    }
}

void MessageQueue::AnswerCalls() {
    for (;;) {
        std::shared_ptr<PendingCall> call;
        {
            const std::scoped_lock lock(mutex_);
            if (calls_.empty()) return;
            call = calls_.front();
            calls_.pop_front();
            call->started = true;
        }
        const LRESULT result = call->run();
        const std::scoped_lock lock(mutex_);
        call->result = result;
        call_done_.notify_all();
    }
}

std::optional<MSG> MessageQueue::TakeQueued(const MessageFilter& filter, Removal removal) {
    {
        const std::scoped_lock lock(mutex_);
        const auto found = std::ranges::find_if(posted_, [&](const MSG& message) {
            return filter.Wants(message.hwnd, message.message);
        });
        if (found != posted_.end()) {
            const MSG message = *found;
            if (removal == Removal::Take) posted_.erase(found);
            return message;
        }
    }
    const auto found = std::ranges::find_if(input_, [&](const Entry& entry) {
        return filter.Wants(entry.message.hwnd, entry.message.message);
    });
    if (found == input_.end()) return std::nullopt;
    const MSG message = found->message;
    if (removal == Removal::Take) {
        Remember(*found);
        input_.erase(found);
    }
    return message;
}

void MessageQueue::Remember(const Entry& entry) {
    if (!entry.event) return;
    recent_input_.push_back(entry);
    if (recent_input_.size() > kMostRecentInput) recent_input_.pop_front();
}

std::shared_ptr<QEvent> MessageQueue::InputBehind(const MSG& message) const {
    if (message.lPrivate == 0) return nullptr;
    for (const Entry& entry : recent_input_) {
        if (entry.message.lPrivate == message.lPrivate) return entry.event;
    }
    return nullptr;
}

void MessageQueue::Quit(int exit_code) {
    quit_code_ = exit_code;
    Signal();
}

std::optional<int> MessageQueue::TakeQuit(Removal removal) {
    if (!quit_code_) return std::nullopt;
    const int code = *quit_code_;
    if (removal == Removal::Take) quit_code_.reset();
    return code;
}

UINT_PTR MessageQueue::SetTimer(HWND window, UINT_PTR timer, std::chrono::milliseconds period,
                                TIMERPROC procedure) {
    const auto same = [&](const Timer& known) {
        return known.window == window && known.id == timer;
    };
    const bool known = std::ranges::any_of(timers_, same);
    if (window == nullptr && !known) timer = next_timer_++;
    if (timer == 0) timer = 1;
    std::erase_if(timers_, same);
    timers_.push_back({window, timer, period, platform::ClockNow() + period, procedure});
    Signal();
    return timer;
}

bool MessageQueue::KillTimer(HWND window, UINT_PTR timer) {
    return std::erase_if(timers_, [&](const Timer& known) {
               return known.window == window && known.id == timer;
           }) > 0;
}

bool MessageQueue::HasTimer(TIMERPROC procedure) const {
    return std::ranges::any_of(timers_,
                               [&](const Timer& timer) { return timer.procedure == procedure; });
}

std::optional<MSG> MessageQueue::TakeTimer(const MessageFilter& filter, Removal removal) {
    const auto now = platform::ClockNow();
    const auto found = std::ranges::find_if(timers_, [&](const Timer& timer) {
        return timer.due <= now && filter.Wants(timer.window, WM_TIMER);
    });
    if (found == timers_.end()) return std::nullopt;
    MSG message{};
    message.hwnd = found->window;
    message.message = WM_TIMER;
    message.wParam = found->id;
    message.lParam = reinterpret_cast<LPARAM>(found->procedure);
    message.time = ::GetTickCount();
    if (removal == Removal::Take) {
        // The next one keeps the beat; beats that have passed are not made up for.
        const auto late = now - found->due;
        found->due += found->period * (late / found->period + 1);
        std::rotate(found, found + 1, timers_.end());
    }
    return message;
}

std::optional<std::chrono::nanoseconds> MessageQueue::TimeToNextTimer() const {
    if (timers_.empty()) return std::nullopt;
    const auto next = std::ranges::min(timers_, {}, &Timer::due).due;
    return std::max(std::chrono::nanoseconds{0}, next - platform::ClockNow());
}

int MessageQueue::TimerCount() const {
    return static_cast<int>(timers_.size());
}

void MessageQueue::Forget(HWND window) {
    std::erase_if(input_, [&](const Entry& entry) { return entry.message.hwnd == window; });
    std::erase_if(timers_, [&](const Timer& timer) { return timer.window == window; });
    const std::scoped_lock lock(mutex_);
    std::erase_if(posted_, [&](const MSG& message) { return message.hwnd == window; });
}

void MessageQueue::Close() {
    const std::scoped_lock lock(mutex_);
    closed_ = true;
    posted_.clear();
    calls_.clear();
    call_done_.notify_all();
}

} // namespace kelvo::desktop
