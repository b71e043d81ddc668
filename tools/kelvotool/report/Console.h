#pragma once
// What a person at a terminal or a script sees: results on standard output, everything else on
// standard error, a progress line where that is a terminal, and the boxes of the classes only where
// they were asked for.

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo::tool {

enum class Boxes : bool { Hidden, Shown };

/// How progress is shown, always on standard error.
enum class ProgressStyle : std::uint8_t {
    Auto,  ///< Bar on a terminal, else None
    Bar,   ///< one line that is written over and over
    Lines, ///< a new line each second
    Json,  ///< a JSON object each second: task, percent
    None,
};

enum class ColourUse : std::uint8_t {
    Auto, ///< on a terminal, unless NO_COLOR is set
    Always,
    Never,
};

struct ConsoleOptions {
    Boxes boxes = Boxes::Hidden;
    ProgressStyle progress = ProgressStyle::Auto;
    ColourUse colour = ColourUse::Auto;
};

/// Installs the console behind the seams of the classes: boxes are answered with the safe answer,
/// and progress is shown as it was asked for. Stopping comes from StopSignal.
void InstallConsole(const ConsoleOptions& options);

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
    /// Hands on what was written so far, for whoever reads line by line.
    void Flush();
    /// Writes what is left and says so when not everything arrived.
    /// @return `exit_code`, or kNotDone when standard output failed
    [[nodiscard]] int Finish(int exit_code);
    bool Failed() const { return failed_; }

private:
    std::string buffer_;
    bool failed_ = false;
};

} // namespace kelvo::tool
