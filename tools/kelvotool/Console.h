#pragma once
// What a person at a terminal or a script sees: results on standard output, everything else on
// standard error, a progress line where that is a terminal, and the boxes of the classes only where
// they were asked for.

#include <string>
#include <string_view>

namespace kelvo::tool {

enum class Boxes : bool { Hidden, Shown };

/// Installs the console behind the seams of the classes: boxes are answered with the safe answer,
/// and progress becomes a line on a terminal. Stopping comes from StopSignal.
void InstallConsole(Boxes boxes);

/// What the progress line says until the next call, for example "verify film.kva".
void SetTask(std::string task);

/// A text without control characters, so that a hostile name cannot drive a terminal.
std::string Printable(std::string_view text);

/// One line on standard error, behind "kelvotool: ".
void SayError(std::string_view text);

/// Standard output, buffered; what cannot be written is kept in mind until the end.
class StandardOutput {
public:
    StandardOutput() = default;
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

    void Write(std::string_view text);
    /// Writes what is left and says so when not everything arrived.
    /// @return `exit_code`, or kNotDone when standard output failed
    [[nodiscard]] int Finish(int exit_code);
    bool Failed() const { return failed_; }

private:
    void Flush();

    std::string buffer_;
    bool failed_ = false;
};

} // namespace kelvo::tool
