#include "tools/media/Report.h"

#include "tools/media/Libraries.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>

namespace kelvo::media_tool {

namespace {

constexpr std::uint64_t kMostLines = 20;

std::atomic<int> stop_signal{0};
static_assert(std::atomic<int>::is_always_lock_free);

void NoteSignal(int signal_number) {
    stop_signal = signal_number;
}

} // namespace

void CatchStopSignals() {
    struct sigaction action{};
    action.sa_handler = NoteSignal;
    sigemptyset(&action.sa_mask);
    // Calls are interrupted, so that nobody waits for a pipe that nobody fills.
    action.sa_flags = 0;
    for (const int signal_number : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal_number, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

int StopSignal() {
    return stop_signal;
}

Report::~Report() {
    if (count_ > kMostLines) {
        SayLine(fmt::format("{}: {} more of these are not shown", file_, count_ - kMostLines));
    }
}

int Report::Code() const {
    return StopSignal() != 0 ? kStoppedBase + StopSignal() : worst_;
}

void Report::Say(ExitCode severity, std::string_view what) {
    worst_ = std::max<int>(worst_, severity);
    // A failure behind a long list of damage is still said.
    if (++count_ <= kMostLines || severity == kNotDone) SayLine(fmt::format("{}: {}", file_, what));
}

void SayLine(std::string_view text) {
    std::string line = fmt::format("kelvotool: {}", text);
    std::ranges::replace_if(
        line,
        [](char letter) { return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F; },
        '?');
    line += '\n';
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t count = ::write(STDERR_FILENO, rest.data(), rest.size());
        if (count <= 0) return; // nobody is left to be told
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::string ErrorText(int error) {
    if (error == AVERROR(ENOMEM)) return "it asks for too much memory";
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return text.data();
}

} // namespace kelvo::media_tool
