#include "tools/kelvotool/report/Console.h"

#include "framework/base/ProgressDisplay.h"
#include "platform/base/message_boxes.h"
#include "tools/kelvotool/report/Problem.h"
#include "tools/kelvotool/report/Results.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <memory>

namespace kelvo::tool {

namespace {

constexpr std::size_t kBufferBytes = std::size_t{64} * 1024;
constexpr auto kBarInterval = std::chrono::milliseconds(100);
constexpr auto kLineInterval = std::chrono::seconds(1);
constexpr char kClearLine[] = "\r\033[K";
constexpr char kRed[] = "\033[31m";
constexpr char kPlain[] = "\033[0m";

std::string& Task() {
    static std::string task;
    return task;
}

std::atomic<bool> progress_line_shown = false; // a box may come from any thread
bool uses_colour = false;

/// @return false when not everything could be written
bool WriteTo(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(file, text.data(), text.size());
        if (count < 0) {
            if (errno == EINTR && !StopRequested()) continue;
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void WriteError(std::string line) {
    if (progress_line_shown) line.insert(0, kClearLine);
    progress_line_shown = false;
    // Nobody is left to be told when standard error is closed.
    WriteTo(STDERR_FILENO, line);
}

ProgressStyle Settle(ProgressStyle style) {
    if (style != ProgressStyle::Auto) return style;
    return ::isatty(STDERR_FILENO) == 1 ? ProgressStyle::Bar : ProgressStyle::None;
}

class ProgressLine : public ProgressDisplay {
public:
    explicit ProgressLine(ProgressStyle style)
        : style_(style),
          interval_(style == ProgressStyle::Bar ? Clock::duration(kBarInterval) : kLineInterval) {}
    ~ProgressLine() override { Close(); }

    bool Update(std::int32_t current, std::int32_t total) override {
        const auto now = Clock::now();
        if (style_ != ProgressStyle::None && total > 0 && now - shown_at_ >= interval_) {
            shown_at_ = now;
            Show(std::int64_t{current} * 100 / total);
        }
        return !StopRequested();
    }
    void Close() override {
        if (progress_line_shown) WriteError({});
    }

private:
    using Clock = std::chrono::steady_clock;

    void Show(std::int64_t percent) {
        switch (style_) {
        case ProgressStyle::Bar:
            progress_line_shown =
                WriteTo(STDERR_FILENO, fmt::format("{}{}: {} %", kClearLine, Task(), percent));
            break;
        case ProgressStyle::Json: {
            const nlohmann::ordered_json json{{"task", JsonText(Task())}, {"percent", percent}};
            WriteTo(STDERR_FILENO, json.dump() + "\n");
            break;
        }
        default:
            WriteTo(STDERR_FILENO, fmt::format("{}: {} %\n", Task(), percent));
            break;
        }
    }

    ProgressStyle style_;
    Clock::duration interval_;
    // Work that is done at once shows nothing.
    Clock::time_point shown_at_ = Clock::now();
};

bool WantsColour(ColourUse use) {
    if (use != ColourUse::Auto) return use == ColourUse::Always;
    const char* const no_colour = std::getenv("NO_COLOR");
    return (no_colour == nullptr || *no_colour == '\0') && ::isatty(STDERR_FILENO) == 1;
}

} // namespace

void InstallConsole(const ConsoleOptions& options) {
    uses_colour = WantsColour(options.colour);
    platform::SetMessageBoxHandler(
        [boxes = options.boxes](const platform::MessageBoxRequest& request) {
            if (boxes == Boxes::Shown) {
                WriteError(fmt::format("kelvotool: box: {}\n", platform::MessageBoxLine(request)));
            }
            return platform::SafeAnswer(request.type);
        });
    SetProgressDisplayFactory([style = Settle(options.progress)](const CString&) {
        return std::make_unique<ProgressLine>(style);
    });
}

void SetTask(std::string task) {
    Task() = Printable(task);
}

std::string Printable(std::string_view text) {
    std::string printable(text);
    const auto is_control = [](char letter) {
        return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F;
    };
    std::ranges::replace_if(printable, is_control, '?');
    return printable;
}

void SayError(std::string_view text) {
    const char* const begin = uses_colour ? kRed : "";
    const char* const end = uses_colour ? kPlain : "";
    WriteError(fmt::format("{}kelvotool:{} {}\n", begin, end, text));
}

void StandardOutput::Write(std::string_view text) {
    buffer_ += text;
    if (buffer_.size() >= kBufferBytes) Flush();
}

void StandardOutput::Flush() {
    if (!failed_ && !buffer_.empty()) {
        if (progress_line_shown) WriteError({});
        failed_ = !WriteTo(STDOUT_FILENO, buffer_);
    }
    buffer_.clear();
}

int StandardOutput::Finish(int exit_code) {
    Flush();
    // Only closing tells of what a file system noticed late.
    const int copy = ::dup(STDOUT_FILENO);
    if (copy >= 0 && ::close(copy) != 0) failed_ = true;
    if (!failed_ || StopRequested()) return exit_code;
    SayError("standard output: cannot be written");
    return std::max<int>(exit_code, kNotDone);
}

} // namespace kelvo::tool
