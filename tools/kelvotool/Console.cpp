#include "tools/kelvotool/Console.h"

#include "framework/base/ProgressDisplay.h"
#include "platform/base/message_boxes.h"
#include "tools/kelvotool/Commands.h"
#include "tools/kelvotool/StopSignal.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>

namespace kelvo::tool {

namespace {

constexpr std::size_t kBufferBytes = std::size_t{64} * 1024;
constexpr auto kProgressInterval = std::chrono::milliseconds(100);
constexpr char kClearLine[] = "\r\033[K";

std::string& Task() {
    static std::string task;
    return task;
}

bool progress_line_shown = false;

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

class ProgressLine : public ProgressDisplay {
public:
    ProgressLine() : on_terminal_(::isatty(STDERR_FILENO) == 1) {}
    ~ProgressLine() override { Close(); }

    bool Update(std::int32_t current, std::int32_t total) override {
        const auto now = std::chrono::steady_clock::now();
        if (on_terminal_ && total > 0 && now - shown_at_ >= kProgressInterval) {
            shown_at_ = now;
            const std::int64_t percent = std::int64_t{current} * 100 / total;
            const std::string line = fmt::format("{}{}: {} %", kClearLine, Task(), percent);
            progress_line_shown = WriteTo(STDERR_FILENO, line);
        }
        return !StopRequested();
    }
    void Close() override {
        if (progress_line_shown) WriteError({});
    }

private:
    bool on_terminal_;
    // Work that is done at once shows nothing.
    std::chrono::steady_clock::time_point shown_at_ = std::chrono::steady_clock::now();
};

} // namespace

void InstallConsole(Boxes boxes) {
    platform::SetMessageBoxHandler([boxes](const platform::MessageBoxRequest& request) {
        if (boxes == Boxes::Shown) {
            WriteError(fmt::format("kelvotool: box: {}\n", platform::MessageBoxLine(request)));
        }
        return platform::SafeAnswer(request.type);
    });
    SetProgressDisplayFactory([](const CString&) { return std::make_unique<ProgressLine>(); });
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
    WriteError(fmt::format("kelvotool: {}\n", text));
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
