#include "app/TimeDisplay.h"

#include "app/TerminalProgress.h"
#include "platform/base/threads.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr int kSecondsAMinute = 60;

CString TimeText(int seconds) {
    seconds = std::max(seconds, 0);
    return CString::Formatted("%02d:%02d", seconds / kSecondsAMinute, seconds % kSecondsAMinute);
}

} // namespace

TimeDisplay::TimeDisplay(CWin& owner, CProgressBar& bar, DxToolkel& labels)
    : owner_(owner), bar_(bar), labels_(labels), ui_thread_(GetCurrentThreadId()) {}

void TimeDisplay::ShowPosition(int current, int total) const {
    bar_.Update({.value = current, .total = total});
}

void TimeDisplay::ShowElapsed(int seconds) {
    if (elapsed_.exchange(seconds) == seconds) return;
    if (terminal_) PrintProgress(seconds, total_);
    TimeChanged();
}

void TimeDisplay::ShowTotal(int seconds) {
    if (total_.exchange(seconds) != seconds) TimeChanged();
}

void TimeDisplay::Clear() {
    ShowPosition(0, 1);
    elapsed_ = kNoTime;
    total_ = 0;
    ShowLabels();
}

void TimeDisplay::TimeChanged() {
    if (GetCurrentThreadId() == ui_thread_) {
        ShowLabels();
    } else if (!told_.exchange(true) && !owner_.Post(kTimesChanged, 0, 0)) {
        told_ = false;
    }
}

void TimeDisplay::ShowLabels() {
    told_ = false;
    if (!labels_.HasWindow()) return;
    labels_.SetLabel(DxToolkel::kElapsedLabel, TimeText(elapsed_));
    labels_.SetLabel(DxToolkel::kTotalLabel, TimeText(total_));
}

} // namespace kelvo
