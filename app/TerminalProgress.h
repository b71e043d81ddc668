#pragma once
// The player's progress on a terminal, for machines without a display.

namespace kelvo {

/// One line, "mm:ss / mm:ss", on standard output. Any thread.
void PrintProgress(int seconds, int total_seconds);

} // namespace kelvo
