#include "platform/desktop/UiLoop.h"

#include "platform/base/threads.h"
#include "platform/desktop/MessageBoxes.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/Surface.h"
#include "platform/desktop/Window.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QThread>
#include <QTimerEvent>

#include <algorithm>
#include <atomic>
#include <utility>

namespace kelvo::desktop {

namespace {

constexpr std::chrono::milliseconds kLongestWithoutStep{5};
constexpr std::chrono::milliseconds kLongestForeignDispatch{10};

/// What the other threads need to reach the UI thread.
struct UiLink {
    std::mutex mutex;
    std::shared_ptr<MessageQueue> queue;          ///< under mutex
    std::vector<std::weak_ptr<Surface>> surfaces; ///< under mutex
    std::atomic<DWORD> thread_id{0};
};

UiLink& Link() {
    static auto* const link = new UiLink; // other threads may outlive main
    return *link;
}

UiLoop* the_loop = nullptr; // UI thread only

} // namespace

std::shared_ptr<MessageQueue> UiQueue() {
    const std::scoped_lock lock(Link().mutex);
    return Link().queue;
}

LRESULT RunOnUiThread(std::function<LRESULT()> call) {
    const auto queue = UiQueue();
    return queue ? queue->Call(std::move(call)) : 0;
}

bool OnUiThread() {
    const DWORD id = Link().thread_id;
    return id != 0 && id == ::GetCurrentThreadId();
}

void DeliverSoon(const std::weak_ptr<Surface>& surface) {
    std::shared_ptr<MessageQueue> queue;
    {
        const std::scoped_lock lock(Link().mutex);
        if (!Link().queue) return;
        queue = Link().queue;
        Link().surfaces.push_back(surface);
    }
    if (OnUiThread()) {
        queue->Signal(); // it cannot be waiting in Sleep meanwhile
    } else {
        queue->SignalWaits();
    }
}

void WakeUiThread() {
    if (const auto queue = UiQueue()) queue->Signal();
}

UiLoop::UiLoop()
    : queue_(MessageQueue::OfThisThread()), notifier_(queue_->Descriptor(), QSocketNotifier::Read) {
    connect(&notifier_, &QSocketNotifier::activated, this, [this] { OnReadable(); });
    Link().thread_id = ::GetCurrentThreadId();
    {
        const std::scoped_lock lock(Link().mutex);
        Link().queue = queue_;
    }
    the_loop = this;
    platform::SetWaitHook(&UiLoop::OnWait);
}

UiLoop::~UiLoop() {
    platform::SetWaitHook(nullptr);
    the_loop = nullptr;
    Link().thread_id = 0;
    {
        const std::scoped_lock lock(Link().mutex);
        Link().queue.reset();
        Link().surfaces.clear();
    }
    queue_->Close();
}

UiLoop* UiLoop::Instance() {
    return the_loop;
}

void UiLoop::Step(Waiting waiting) {
    if (waiting == Waiting::Yes) ArmTimer();
    const int level = std::exchange(pump_level_, QThread::currentThread()->loopLevel());
    QAbstractEventDispatcher* const dispatcher = QAbstractEventDispatcher::instance();
    dispatcher->processEvents(waiting == Waiting::Yes
                                  ? QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents
                                  : QEventLoop::ProcessEventsFlags{QEventLoop::AllEvents});
    pump_level_ = level;
    last_step_ = std::chrono::steady_clock::now();
}

bool UiLoop::IsStepDue() const {
    return std::chrono::steady_clock::now() - last_step_ > kLongestWithoutStep;
}

bool UiLoop::DeliverSurfaces() {
    std::vector<std::weak_ptr<Surface>> surfaces;
    {
        const std::scoped_lock lock(Link().mutex);
        surfaces.swap(Link().surfaces);
    }
    for (const auto& changed : surfaces) {
        if (const auto surface = changed.lock()) surface->DeliverChanges();
    }
    return !surfaces.empty();
}

void UiLoop::DeleteLeftWidgets() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void UiLoop::timerEvent(QTimerEvent* event) {
    if (event->timerId() != timer_.timerId()) return;
    timer_.stop();
    OnReadable();
}

// Serves what others wait for while this thread sleeps: their calls, their boxes and pictures.
void UiLoop::OnWait() {
    if (const auto queue = MessageQueue::OfThisThreadIfAny()) queue->AnswerCalls();
    if (the_loop == nullptr || !OnUiThread()) return;
    // This thread may be waiting for the very thread that waits for an answer.
    if (IsThreadsBoxOpen()) the_loop->Step(Waiting::No);
    if (!the_loop->DeliverSurfaces()) return;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        QCoreApplication::sendPostedEvents(widget, QEvent::UpdateRequest);
    }
}

// Inside Step nothing needs to be done: who called it looks into the queue next.
void UiLoop::OnReadable() {
    if (QThread::currentThread()->loopLevel() > pump_level_) DispatchInForeignLoop();
}

void UiLoop::ArmTimer() {
    const auto next = queue_->TimeToNextTimer();
    if (!next) {
        timer_.stop();
        return;
    }
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(*next);
    timer_.start(static_cast<int>(std::min<long long>(wait.count(), 60'000)), Qt::PreciseTimer,
                 this);
}

void UiLoop::DispatchInForeignLoop() {
    const auto end = std::chrono::steady_clock::now() + kLongestForeignDispatch;
    queue_->ClearSignal();
    MSG message{};
    while (TakeNextButQuit(*queue_, message)) {
        ::TranslateMessage(&message);
        ::DispatchMessageA(&message);
        if (std::chrono::steady_clock::now() > end) {
            queue_->Signal(); // the foreign loop has its turn first
            break;
        }
    }
    ArmTimer();
}

} // namespace kelvo::desktop
