#pragma once
// The queue of one thread: posted messages, input, calls that other threads wait for, WM_QUIT and
// timers. Waiting is the business of who reads it (Messages.cpp, UiLoop.h): a descriptor becomes
// readable when there is something to look at.

#include "platform/desktop/messages.h"

#include <QEvent>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace kelvo::desktop {

/// What GetMessageA and PeekMessageA are asked for.
struct MessageFilter {
    std::function<bool(HWND)> wants_window; ///< empty: all
    UINT first = 0;
    UINT last = 0; ///< both 0: all

    bool Wants(HWND window, UINT message) const;
};

enum class Removal : bool { Keep, Take };

class MessageQueue {
public:
    MessageQueue();
    ~MessageQueue();
    MessageQueue(const MessageQueue&) = delete;
    MessageQueue& operator=(const MessageQueue&) = delete;

    /// The calling thread's, made when it is first asked for; it is closed when the thread ends.
    static std::shared_ptr<MessageQueue> OfThisThread();
    /// @return null if this thread never asked for messages.
    static std::shared_ptr<MessageQueue> OfThisThreadIfAny();

    // Any thread.

    /// @return false when it is closed or holds 10000 posted messages already.
    bool Post(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    /// Has the queue's thread run the call, and waits for it; that thread itself runs it at once.
    /// @return its answer, 0 when the queue is closed before it ran.
    LRESULT Call(std::function<LRESULT()> call);
    /// The same without waiting; forgotten when the queue is closed before.
    void Defer(std::function<void()> call);
    /// Has the reader look again.
    void Signal();
    /// The same, also when the thread waits in Sleep and its kind.
    void SignalWaits();
    bool IsClosed() const;

    // The queue's thread only.

    /// Behind all input; a move replaces a move to the same window before it.
    void AddInput(MSG message, std::unique_ptr<QEvent> event);
    /// The keyboard has moved on: keys that wait for one window wait for the other.
    void MoveKeys(HWND from, HWND to);
    /// Queued moves and button messages of the mouse go to the window that has just captured it.
    /// @param position  their lParam there, made of their point on the screen
    void MoveMouse(HWND to, const std::function<LPARAM(POINT)>& position);
    /// Runs what other threads wait for.
    void AnswerCalls();
    /// The next posted message or input.
    std::optional<MSG> TakeQueued(const MessageFilter& filter, Removal removal);
    /// @return the exit code, when PostQuitMessage was called and nothing is queued.
    std::optional<int> TakeQuit(Removal removal);
    std::optional<MSG> TakeTimer(const MessageFilter& filter, Removal removal);
    void Quit(int exit_code);
    UINT_PTR SetTimer(HWND window, UINT_PTR timer, std::chrono::milliseconds period,
                      TIMERPROC procedure);
    bool KillTimer(HWND window, UINT_PTR timer);
    bool HasTimer(TIMERPROC procedure) const;
    /// How long until the next timer is due; nothing when there is none.
    std::optional<std::chrono::nanoseconds> TimeToNextTimer() const;
    int TimerCount() const;
    /// Drops the messages and timers of a window that goes.
    void Forget(HWND window);
    /// The input that a message lately taken came from. @return null for a message without.
    std::shared_ptr<QEvent> InputBehind(const MSG& message) const;

    int Descriptor() const { return descriptor_; }
    /// Before looking into the queue: what comes after makes the descriptor readable again.
    void ClearSignal();

    /// Nothing more is accepted; calls that wait are answered 0.
    void Close();

private:
    struct Entry {
        MSG message{};
        std::shared_ptr<QEvent> event;
    };
    struct PendingCall {
        std::function<LRESULT()> run;
        std::optional<LRESULT> result; ///< under the queue's mutex
        bool started = false;          ///< under the queue's mutex
    };
    struct Timer {
        HWND window = nullptr;
        UINT_PTR id = 0;
        std::chrono::nanoseconds period{};
        std::chrono::nanoseconds due{};
        TIMERPROC procedure = nullptr;
    };

    bool Enqueue(const std::shared_ptr<PendingCall>& call);
    void Remember(const Entry& entry);

    const DWORD thread_id_;
    const int descriptor_; ///< an eventfd

    mutable std::mutex mutex_; ///< guards all below
    std::condition_variable call_done_;
    std::deque<MSG> posted_;
    std::deque<std::shared_ptr<PendingCall>> calls_;
    bool closed_ = false;
    bool signalled_ = false;

    // The queue's thread only.
    std::deque<Entry> input_;
    std::deque<Entry> recent_input_; ///< taken, but perhaps not yet dispatched
    DWORD next_input_ = 1;
    std::optional<int> quit_code_;
    std::vector<Timer> timers_; ///< in the order of their last turn
    UINT_PTR next_timer_ = 0x7000;
};

} // namespace kelvo::desktop
