#pragma once
// What is wrong, on standard error in kelvotool's form, and the exit code that follows from it. And
// the signals that stop the work.

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo::media_tool {

/// kelvotool's exit codes.
enum ExitCode : int {
    kAllWell = 0,
    kDamaged = 1,       ///< done, but something is damaged or was left out
    kNotDone = 2,       ///< unreadable, or wrong use
    kStoppedBase = 128, ///< plus the number of the signal
};

/// From now on SIGINT, SIGTERM and SIGHUP are only noted, and writing into a closed pipe or beyond
/// the largest size of a file is an error like another.
void CatchStopSignals();
/// The number of the signal that came, or 0.
int StopSignal();

/// Everything that is wrong with one file.
class Report {
public:
    /// @param file  as the person named it
    explicit Report(std::string file) : file_(std::move(file)) {}
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;
    /// Says how many lines were not shown, when they were too many.
    ~Report();

    void Warn(std::string_view what) { Say(kAllWell, what); }
    void Damaged(std::string_view what) { Say(kDamaged, what); }
    /// @return false, for whoever gives up with it
    bool NotDone(std::string_view what) {
        Say(kNotDone, what);
        return false;
    }

    /// The worst so far; the signal's when one stopped the work.
    int Code() const;

private:
    void Say(ExitCode severity, std::string_view what);

    std::string file_;
    int worst_ = kAllWell;
    std::uint64_t count_ = 0;
};

/// One line on standard error, behind "kelvotool: ", without control characters.
void SayLine(std::string_view text);

} // namespace kelvo::media_tool
