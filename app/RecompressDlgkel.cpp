#include "app/RecompressDlgkel.h"

#include "framework/window/dialogs/MinutesAndSeconds.h"
#include "platform/base/clock.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace kelvo {
namespace {

constexpr char kTemplate[] = "ZRECOMPRESSDIALOGKEL";

constexpr int kStop = 2; // the button
constexpr int kFinished = 45;
constexpr int kRecompress = 88;
constexpr int kElapsed = 101;
constexpr int kTotal = 102;
constexpr int kRemaining = 103;
constexpr int kFinalSize = 104;

constexpr DWORD kBarPeriodMs = 100;
constexpr DWORD kFiguresPeriodMs = 1000;
/// Notifications may come by the thousand in a second; sound wants an answer every few
/// milliseconds.
constexpr DWORD kAnswerPeriodMs = 10;

constexpr LONG kBarLeft = 2;
constexpr LONG kBarTop = 2;
constexpr LONG kBarWidth = 430;
constexpr LONG kBarHeight = 14;

CString SizeText(double bytes) {
    constexpr double kKilo = 1024;
    constexpr double kMega = kKilo * 1024;
    constexpr double kGiga = kMega * 1024;
    std::array<char, 40> text{};
    if (bytes > kGiga) {
        std::snprintf(text.data(), text.size(), "%.3f GB", bytes / kGiga);
    } else if (bytes > kMega) {
        std::snprintf(text.data(), text.size(), "%.3f MB", bytes / kMega);
    } else {
        std::snprintf(text.data(), text.size(), "%.3f KB", bytes / kKilo);
    }
    return CString(text.data());
}

} // namespace

RecompressDlgkel::RecompressDlgkel(const CString& file_name, const RewriteParameters& parameters,
                                   char selector)
    : file_name_(file_name), selector_(selector), parameters_(parameters) {
    ResourceName(kTemplate);
}

RecompressDlgkel::RecompressDlgkel(ZFilekel& container, const RewriteParameters& parameters)
    : container_(&container), parameters_(parameters) {
    ResourceName(kTemplate);
}

bool RecompressDlgkel::Run(CWin* owner) {
    return ModalRun(owner) == 1;
}

bool RecompressDlgkel::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CDialog::HandleMessage(message, wparam, lparam)) return true;
    switch (message) {
    case WM_INITDIALOG:
        return OnInitialise();
    case WM_COMMAND:
        return OnCommand(LOWORD(wparam));
    case WM_DESTROY:
        stopped_ = true; // nobody could stop it any more
        return false;
    default:
        return false;
    }
}

bool RecompressDlgkel::OnInitialise() {
    stopped_ = false;
    is_first_ = true;
    bar_.SetPlacement(kBarLeft, kBarTop, kBarWidth, kBarHeight);
    bar_.SetStyle(WS_CHILD | WS_VISIBLE);
    bar_.SetExtendedStyle(WS_EX_STATICEDGE);
    bar_.SetParent(this);
    bar_.Create();
    Post(WM_COMMAND, kRecompress, 0);
    return true;
}

bool RecompressDlgkel::OnCommand(int command) {
    switch (command) {
    case kRecompress:
        OnRecompress();
        return true;
    case kFinished:
        EndDialog(1);
        return true;
    case kStop:
        OnStop();
        return true;
    default:
        return false;
    }
}

void RecompressDlgkel::OnRecompress() {
    if (rewriting_) return;
    rewriting_ = true;
    const bool rewritten = Rewrite();
    rewriting_ = false;
    Post(WM_COMMAND, rewritten ? kFinished : kStop, 0);
}

bool RecompressDlgkel::Rewrite() {
    if (container_ != nullptr) return container_->Recompress(parameters_, this);
    ZFilekel file;
    return file.RecompressFile(file_name_, parameters_, this, selector_);
}

// A rewrite that runs answers the flag with its own end, which posts what ends the dialog: so the
// dialog says "rewritten" when the stop came too late.
void RecompressDlgkel::OnStop() {
    stopped_ = true;
    if (rewriting_) return;
    if (background_.IsRunning()) {
        Post(WM_COMMAND, kStop, 0);
    } else {
        EndDialog(0);
    }
}

int RecompressDlgkel::ProgressNotify(int code, int done, const RewriteInformation& info) {
    if (code != kRewriteProgress) return 0;
    const DWORD now = GetTickCount();
    if (is_first_ || done == 0) {
        BeginTimes(done, info);
    } else if (now - shown_ms_ >= kBarPeriodMs) {
        bar_.Update({.value = done, .total = static_cast<std::int32_t>(info.record_count)});
        if (now - shown_ms_ >= kFiguresPeriodMs) {
            shown_ms_ = now;
            ShowFigures(done, now - start_ms_, info);
        }
    }
    LetWindowsAnswer(now);
    return stopped_ ? 1 : 0;
}

void RecompressDlgkel::BeginTimes(int done, const RewriteInformation& info) {
    is_first_ = false;
    start_ms_ = GetTickCount();
    shown_ms_ = start_ms_;
    answered_ms_ = start_ms_ - kAnswerPeriodMs; // at once: the dialog has never been painted
    bar_.Update({.value = done, .total = static_cast<std::int32_t>(info.record_count)});
}

void RecompressDlgkel::ShowFigures(int done, DWORD elapsed, const RewriteInformation& info) const {
    const std::int64_t total =
        static_cast<std::int64_t>(elapsed / static_cast<DWORD>(done)) * info.record_count;
    SetControlText(kElapsed, MinutesAndSeconds(elapsed));
    SetControlText(kTotal, MinutesAndSeconds(total));
    // The whole milliseconds of a record make the total a little short.
    SetControlText(kRemaining, MinutesAndSeconds(std::max<std::int64_t>(total - elapsed, 0)));
    SetControlText(kFinalSize,
                   SizeText(info.temporary_size * (static_cast<double>(info.record_count) / done)));
}

void RecompressDlgkel::LetWindowsAnswer(DWORD now) {
    if (now - answered_ms_ < kAnswerPeriodMs) return;
    answered_ms_ = now;
    ProcessMessages(Parent());
}

} // namespace kelvo
