#pragma once
// The UI thread between its queue and the toolkit's event loop: waiting, waking, changed surfaces,
// and the messages that must go on while a loop of the toolkit's own runs (menu, message box).

#include "platform/desktop/MessageQueue.h"

#include <QBasicTimer>
#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace kelvo::desktop {

/// The UI thread's queue. Any thread. @return null while there is no desktop.
std::shared_ptr<MessageQueue> UiQueue();

/// Runs the call on the UI thread and waits for it; on that thread it runs at once. Any thread.
/// @return its answer, 0 while there is no desktop.
LRESULT RunOnUiThread(std::function<LRESULT()> call);

enum class Waiting : bool { No, Yes };

class UiLoop final : public QObject {
public:
    /// On the thread that becomes the UI thread, after the application object was made.
    UiLoop();
    ~UiLoop() override;

    /// @return null while there is no desktop. UI thread only.
    static UiLoop* Instance();

    /// Lets the toolkit deliver its events, and waits for one if asked to.
    void Step(Waiting waiting);
    /// Whether the toolkit has waited so long that it must have its turn between two messages.
    bool IsStepDue() const;
    /// Hands changed surfaces to their widgets. @return whether there was one.
    bool DeliverSurfaces();
    /// Deletes the widgets of dead windows; only where no code of theirs can be running.
    static void DeleteLeftWidgets();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    static void OnWait();
    void OnReadable();
    void ArmTimer();
    void DispatchInForeignLoop();

    const std::shared_ptr<MessageQueue> queue_;
    QSocketNotifier notifier_;
    QBasicTimer timer_;
    std::chrono::steady_clock::time_point last_step_;
    int pump_level_ = -1; ///< the toolkit's loop depth at which Step runs; -1 outside of it
};

} // namespace kelvo::desktop
