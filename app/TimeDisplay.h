#pragma once
// How far the film is: the position bar, and the two time labels, or without a display a line on
// the terminal. Two threads report: the UI thread, and the thread that plays the picture. The bar
// draws itself from either; a label is set by the UI thread alone, which the other one only tells
// that the time has changed, so that neither ever waits for the other.

#include "app/DxToolkel.h"
#include "framework/window/CProgressBar.h"
#include "platform/desktop/messages.h"

#include <atomic>

namespace kelvo {

/// Posted to the owner when another thread has changed a time; the owner calls ShowLabels.
inline constexpr UINT kTimesChanged = WM_USER + 444;

class TimeDisplay {
public:
    /// Built on the UI thread; all three outlive it.
    TimeDisplay(CWin& owner, CProgressBar& bar, DxToolkel& labels);

    /// Times go to the terminal, too.
    void ShowOnTerminal() { terminal_ = true; }
    /// Any thread.
    void ShowPosition(int current, int total) const;
    /// Seconds since the film's start, and of all of it. Any thread.
    void ShowElapsed(int seconds);
    void ShowTotal(int seconds);
    /// Nothing is open.
    void Clear();
    /// Puts the latest times into the labels.
    void ShowLabels();

private:
    static constexpr int kNoTime = -1; ///< shown like 0, but 0 still is news

    void TimeChanged();

    CWin& owner_;
    CProgressBar& bar_;
    DxToolkel& labels_;
    const DWORD ui_thread_;
    bool terminal_ = false;
    std::atomic<int> elapsed_ = kNoTime; // any thread
    std::atomic<int> total_ = 0;         // any thread
    /// A kTimesChanged is on its way: the UI thread takes it back before it reads the times.
    std::atomic<bool> told_ = false;
};

} // namespace kelvo
