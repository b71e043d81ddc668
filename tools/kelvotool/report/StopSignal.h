#pragma once
// A person who stops the tool (Ctrl-C, kill) stops it between two records, so that what it was
// writing is taken away again.

namespace kelvo::tool {

/// From now on SIGINT, SIGTERM and SIGHUP are only noted, and writing into a closed pipe or beyond
/// the largest size of a file is an error like another.
void CatchStopSignals();

/// The number of the signal that came, or 0.
int StopSignal();

/// True once a signal came: whoever works stops soon.
inline bool StopRequested() {
    return StopSignal() != 0;
}

} // namespace kelvo::tool
