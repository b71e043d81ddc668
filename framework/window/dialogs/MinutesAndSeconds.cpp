#include "framework/window/dialogs/MinutesAndSeconds.h"

#include <array>
#include <cinttypes>
#include <cstdio>

namespace kelvo {

CString MinutesAndSeconds(std::int64_t milliseconds) {
    const std::int64_t seconds = milliseconds / 1000;
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%02" PRId64 ":%02" PRId64 " ", seconds / 60,
                  seconds % 60);
    return CString(text.data());
}

} // namespace kelvo
