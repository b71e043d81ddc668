#include "tools/kelvotool/report/StopSignal.h"

#include <atomic>
#include <csignal>

namespace kelvo::tool {

namespace {

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
    // Calls are interrupted, so that nobody waits for a pipe that nobody reads.
    action.sa_flags = 0;
    for (const int signal_number : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal_number, &action, nullptr);
    // A full disk, or a limit on the size of files, is an error of the write and no more.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

int StopSignal() {
    return stop_signal;
}

} // namespace kelvo::tool
