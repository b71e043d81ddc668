#include "framework/window/dialogs/ProgressBarDialoglum.h"

#include "framework/base/XLanguageInfoClass.h"
#include "framework/window/dialogs/MinutesAndSeconds.h"
#include "platform/base/clock.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"

#include <algorithm>
#include <limits>

namespace kelvo {
namespace {

constexpr std::int32_t kTemplateId = 1213;
constexpr char kTemplate[] = "ProgressBarDialoglum";

constexpr int kStop = 2; // the button
constexpr int kFinished = 45;
constexpr int kElapsed = 101;
constexpr int kTotal = 102;
constexpr int kRemaining = 103;

constexpr RECT kBarPlace{2, 2, 2 + 430, 2 + 14};

} // namespace

ProgressBarDialoglum::ProgressBarDialoglum()
    : ProgressBarDialoglum(XLanguageInfoClass::Translate(kTemplateId, kTemplate)) {}

ProgressBarDialoglum::ProgressBarDialoglum(LPCSTR template_name) {
    ResourceName(template_name);
}

int ProgressBarDialoglum::Start(CWin* owner, const CString& title) {
    SetTitle(title.Text());
    return CreateModeless(owner);
}

void ProgressBarDialoglum::SetTitle(LPCSTR title) {
    CDialog::SetTitle(title);
    restarts_ = true;
}

bool ProgressBarDialoglum::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CDialog::HandleMessage(message, wparam, lparam)) return true;
    switch (message) {
    case WM_INITDIALOG:
        return OnInitialise();
    case WM_COMMAND:
        return OnCommand(LOWORD(wparam));
    default:
        return false;
    }
}

bool ProgressBarDialoglum::OnInitialise() {
    cancelled_ = false;
    bar_.SetPlacement(kBarPlace.left, kBarPlace.top, kBarPlace.right - kBarPlace.left,
                      kBarPlace.bottom - kBarPlace.top);
    bar_.SetStyle(WS_CHILD | WS_VISIBLE);
    bar_.SetExtendedStyle(WS_EX_STATICEDGE);
    bar_.SetParent(this);
    bar_.Create();
    return true;
}

bool ProgressBarDialoglum::OnCommand(int id) {
    switch (id) {
    case kStop:
        cancelled_ = true;
        EndDialog(0);
        return true;
    case kFinished:
        EndDialog(1);
        return true;
    default:
        return false;
    }
}

bool ProgressBarDialoglum::Update(std::int32_t current, std::int32_t total) {
    if (current <= 0 || restarts_) {
        start_ms_ = GetTickCount();
        restarts_ = false;
    } else if (HasWindow()) {
        ShowTimes(current, total);
    }
    bar_.Update({.value = current, .total = total});
    ProcessMessages();
    return !cancelled_;
}

void ProgressBarDialoglum::ShowTimes(std::int32_t current, std::int32_t total) const {
    const std::int64_t elapsed = GetTickCount() - start_ms_;
    const double estimate = static_cast<double>(total) / current * static_cast<double>(elapsed);
    const auto all = static_cast<std::int64_t>(
        std::clamp<double>(estimate, 0, std::numeric_limits<std::int32_t>::max()));
    ShowTime(kElapsed, elapsed);
    ShowTime(kTotal, all);
    ShowTime(kRemaining, std::max<std::int64_t>(all - elapsed, 0));
}

void ProgressBarDialoglum::ShowTime(int id, std::int64_t milliseconds) const {
    time_text_ = MinutesAndSeconds(milliseconds);
    // Work reports many times a second; what stands there already is not drawn again.
    if (ControlText(id) != time_text_) SetControlText(id, time_text_);
}

} // namespace kelvo
