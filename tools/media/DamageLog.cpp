#include "tools/media/DamageLog.h"

#include "tools/media/Libraries.h"

#include <array>
#include <cstdarg>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo::media_tool {

namespace {

constexpr std::size_t kMostKept = 64;

// Coders speak from their own threads.
std::mutex mutex;
std::vector<std::string> lines;

void Keep(void* object, int level, const char* format, std::va_list arguments) {
    if (level > AV_LOG_ERROR) return;
    std::array<char, 512> text{};
    int begins_line = 0; // without the object's address, which differs from run to run
    std::va_list copy;
    va_copy(copy, arguments);
    av_log_format_line2(nullptr, level, format, copy, text.data(), static_cast<int>(text.size()),
                        &begins_line);
    va_end(copy);
    std::string_view said = text.data();
    while (!said.empty() && (said.back() == '\n' || said.back() == ' '))
        said.remove_suffix(1);
    if (said.empty()) return;
    std::string line;
    if (object != nullptr) {
        const AVClass* const kind = *static_cast<AVClass**>(object);
        if (kind != nullptr && kind->item_name != nullptr) {
            line = std::string(kind->item_name(object)) + ": ";
        }
    }
    line += said;
    const std::lock_guard lock(mutex);
    if (lines.size() < kMostKept) lines.push_back(std::move(line));
}

std::vector<std::string> Take() {
    const std::lock_guard lock(mutex);
    return std::exchange(lines, {});
}

} // namespace

void KeepLog() {
    av_log_set_callback(Keep);
}

void ForgetLog() {
    Take();
}

void ReportLog(Report& report) {
    for (const std::string& line : Take())
        report.Damaged(line);
}

} // namespace kelvo::media_tool
