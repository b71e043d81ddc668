#include "tools/kelvotool/picture/TinyLetters.h"

#include <fmt/format.h>

#include <array>
#include <cmath>

namespace kelvo::tool {

namespace {

constexpr std::uint32_t kLetterWidth = 3;
constexpr std::uint8_t kInk = 255;
constexpr std::uint8_t kGround = 0;

struct Letter {
    char sign;
    std::array<std::string_view, kLetterHeight> rows;
};

constexpr std::array kLetters = {
    Letter{'0', {"###", "# #", "# #", "# #", "###"}},
    Letter{'1', {" # ", "## ", " # ", " # ", "###"}},
    Letter{'2', {"###", "  #", "###", "#  ", "###"}},
    Letter{'3', {"###", "  #", " ##", "  #", "###"}},
    Letter{'4', {"# #", "# #", "###", "  #", "  #"}},
    Letter{'5', {"###", "#  ", "###", "  #", "###"}},
    Letter{'6', {"###", "#  ", "###", "# #", "###"}},
    Letter{'7', {"###", "  #", " # ", " # ", " # "}},
    Letter{'8', {"###", "# #", "###", "# #", "###"}},
    Letter{'9', {"###", "# #", "###", "  #", "###"}},
    Letter{':', {"   ", " # ", "   ", " # ", "   "}},
    Letter{'.', {"   ", "   ", "   ", "   ", " # "}},
    Letter{'-', {"   ", "   ", "###", "   ", "   "}},
};

void Fill(RgbImage& image, std::uint32_t x, std::uint32_t y, std::uint32_t side,
          std::uint8_t value) {
    for (std::uint32_t row = y; row < y + side && row < image.height; ++row)
        for (std::uint32_t column = x; column < x + side && column < image.width; ++column)
            for (std::size_t channel = 0; channel < 3; ++channel)
                image.Row(row)[std::size_t{column} * 3 + channel] = value;
}

} // namespace

void DrawLetters(RgbImage& image, std::uint32_t x, std::uint32_t y, std::string_view text,
                 std::uint32_t dot) {
    const auto columns = static_cast<std::uint32_t>(text.size()) * kLetterStep + 1;
    for (std::uint32_t row = 0; row < kLetterHeight + 2; ++row)
        for (std::uint32_t column = 0; column < columns; ++column)
            Fill(image, x + column * dot, y + row * dot, dot, kGround);
    for (std::size_t i = 0; i < text.size(); ++i) {
        for (const Letter& letter : kLetters) {
            if (letter.sign != text[i]) continue;
            for (std::uint32_t row = 0; row < kLetterHeight; ++row)
                for (std::uint32_t column = 0; column < kLetterWidth; ++column)
                    if (letter.rows[row][column] == '#') {
                        const auto left = static_cast<std::uint32_t>(i) * kLetterStep + 1 + column;
                        Fill(image, x + left * dot, y + (row + 1) * dot, dot, kInk);
                    }
        }
    }
}

std::string TimeText(double seconds) {
    constexpr std::uint64_t kHour = 3600;
    constexpr std::uint64_t kMinute = 60;
    const auto tenths = static_cast<std::uint64_t>(std::llround(seconds * 10));
    const std::uint64_t whole = tenths / 10;
    if (whole >= kHour) {
        return fmt::format("{}:{:02}:{:02}", whole / kHour, whole / kMinute % kMinute,
                           whole % kMinute);
    }
    return fmt::format("{}:{:02}.{}", whole / kMinute, whole % kMinute, tenths % 10);
}

} // namespace kelvo::tool
