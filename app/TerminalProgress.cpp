#include "app/TerminalProgress.h"

#include <cstdio>
#include <unistd.h>

namespace kelvo {

void PrintProgress(int seconds, int total_seconds) {
    // On a real terminal the line is written over itself, in a file or a pipe one follows another.
    const char* end = isatty(STDOUT_FILENO) != 0 ? "\r" : "\n";
    std::printf("%02d:%02d / %02d:%02d%s", seconds / 60, seconds % 60, total_seconds / 60,
                total_seconds % 60, end);
    std::fflush(stdout);
}

} // namespace kelvo
