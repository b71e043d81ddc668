#include "tools/kelvotool/picture/Y4m.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

namespace kelvo::tool {

namespace {

constexpr std::string_view kMagic = "YUV4MPEG2";
constexpr std::string_view kFrame = "FRAME";
constexpr std::size_t kLongestLine = 1024;

// What televisions of standard definition weigh red, green and blue with.
constexpr double kRed = 0.299;
constexpr double kBlue = 0.114;
constexpr double kGreen = 1 - kRed - kBlue;
constexpr double kLumaRange = 219;
constexpr double kColourRange = 224;
constexpr double kLumaBlack = 16;
constexpr double kColourCentre = 128;
// The products below are whole numbers of 65536ths.
constexpr int kShift = 16;

constexpr int Fixed(double value) {
    const double scaled = value * (1 << kShift);
    return static_cast<int>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
}

std::uint8_t Rounded(int fixed) {
    return static_cast<std::uint8_t>(std::clamp((fixed + (1 << (kShift - 1))) >> kShift, 0, 255));
}

std::optional<std::uint32_t> Number(std::string_view text) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

bool TakeRate(std::string_view text, Y4mFormat& format) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return false;
    const auto numerator = Number(text.substr(0, colon));
    const auto denominator = Number(text.substr(colon + 1));
    if (!numerator || !denominator) return false;
    if (*numerator == 0 || *denominator == 0) return true; // nobody knows: the usual rate stays
    format.rate_numerator = *numerator;
    format.rate_denominator = *denominator;
    return true;
}

bool TakeColour(std::string_view text, Y4mFormat& format) {
    if (text == "444") {
        format.share_x = format.share_y = 1;
    } else if (text == "422") {
        format.share_x = 2;
        format.share_y = 1;
    } else if (text == "420" || text == "420jpeg" || text == "420mpeg2" || text == "420paldv") {
        format.share_x = format.share_y = 2;
    } else if (text == "mono") {
        format.has_colour = false;
    } else {
        return false;
    }
    return true;
}

} // namespace

std::string Y4mHeader(const Y4mFormat& format) {
    return fmt::format("{} W{} H{} F{}:{} Ip A1:1 C444 XCOLORRANGE=LIMITED\n", kMagic, format.width,
                       format.height, format.rate_numerator, format.rate_denominator);
}

void EncodeY4m(const RgbImage& image, std::vector<std::uint8_t>& frame) {
    const std::size_t plane = std::size_t{image.width} * image.height;
    const std::size_t line = kFrame.size() + 1;
    frame.resize(line + 3 * plane);
    std::ranges::copy(kFrame, frame.begin());
    frame[kFrame.size()] = '\n';
    constexpr double kLuma = kLumaRange / 255;
    constexpr double kBlueness = kColourRange / 255 / (2 * (1 - kBlue));
    constexpr double kRedness = kColourRange / 255 / (2 * (1 - kRed));
    const std::uint8_t* in = image.bytes.data();
    std::uint8_t* out = frame.data() + line;
    for (std::size_t i = 0; i < plane; ++i, in += 3) {
        const int red = in[0];
        const int green = in[1];
        const int blue = in[2];
        out[i] = Rounded(Fixed(kLuma * kRed) * red + Fixed(kLuma * kGreen) * green +
                         Fixed(kLuma * kBlue) * blue + Fixed(kLumaBlack));
        out[plane + i] =
            Rounded(Fixed(kBlueness * -kRed) * red + Fixed(kBlueness * -kGreen) * green +
                    Fixed(kBlueness * (1 - kBlue)) * blue + Fixed(kColourCentre));
        out[2 * plane + i] =
            Rounded(Fixed(kRedness * (1 - kRed)) * red + Fixed(kRedness * -kGreen) * green +
                    Fixed(kRedness * -kBlue) * blue + Fixed(kColourCentre));
    }
}

std::optional<Y4mFormat> ParseY4mHeader(std::string_view line, std::uint32_t largest_side) {
    if (!line.starts_with(kMagic)) return std::nullopt;
    line.remove_prefix(kMagic.size());
    Y4mFormat format;
    format.share_x = format.share_y = 2; // where nothing is said
    while (!line.empty()) {
        line.remove_prefix(1);
        const std::string_view field = line.substr(0, line.find(' '));
        line.remove_prefix(field.size());
        if (field.empty()) continue;
        const std::string_view value = field.substr(1);
        bool understood = true;
        switch (field.front()) {
        case 'W':
            format.width = Number(value).value_or(0);
            break;
        case 'H':
            format.height = Number(value).value_or(0);
            break;
        case 'F':
            understood = TakeRate(value, format);
            break;
        case 'C':
            understood = TakeColour(value, format);
            break;
        default:
            break;
        }
        if (!understood) return std::nullopt;
    }
    const bool has_sides = format.width > 0 && format.height > 0 && format.width <= largest_side &&
                           format.height <= largest_side;
    return has_sides ? std::optional(format) : std::nullopt;
}

void DecodeY4m(const Y4mFormat& format, const std::vector<std::uint8_t>& planes, RgbImage& image) {
    constexpr double kLuma = 255 / kLumaRange;
    constexpr double kFromBlue = 255 / kColourRange * 2 * (1 - kBlue);
    constexpr double kFromRed = 255 / kColourRange * 2 * (1 - kRed);
    image.Resize(format.width, format.height);
    const std::size_t colour_width = (format.width + format.share_x - 1) / format.share_x;
    const std::uint8_t* const blueness = planes.data() + format.LumaBytes();
    const std::uint8_t* const redness = blueness + format.ColourBytes();
    for (std::uint32_t y = 0; y < format.height; ++y) {
        std::uint8_t* out = image.Row(y);
        for (std::uint32_t x = 0; x < format.width; ++x, out += 3) {
            const int luma = Fixed(kLuma) * (planes[std::size_t{y} * format.width + x] - 16);
            const std::size_t at = colour_width * (y / format.share_y) + x / format.share_x;
            const int blue = format.has_colour ? blueness[at] - 128 : 0;
            const int red = format.has_colour ? redness[at] - 128 : 0;
            out[0] = Rounded(luma + Fixed(kFromRed) * red);
            out[1] = Rounded(luma - Fixed(kFromBlue * kBlue / kGreen) * blue -
                             Fixed(kFromRed * kRed / kGreen) * red);
            out[2] = Rounded(luma + Fixed(kFromBlue) * blue);
        }
    }
}

bool Y4mReader::ReadLine(std::string& line) {
    line.clear();
    int letter = 0;
    while ((letter = std::fgetc(file_.get())) != '\n') {
        if (letter == EOF || line.size() >= kLongestLine) return false;
        line.push_back(static_cast<char>(letter));
    }
    return true;
}

bool Y4mReader::Open(const std::string& name, std::uint32_t largest_side) {
    file_.reset(std::fopen(name.c_str(), "rbe"));
    std::string line;
    if (!file_ || !ReadLine(line)) return false;
    const auto format = ParseY4mHeader(line, largest_side);
    if (!format) return false;
    format_ = *format;
    start_ = std::ftell(file_.get());
    if (start_ < 0 || std::fseek(file_.get(), 0, SEEK_END) != 0) return false;
    const long end = std::ftell(file_.get());
    const std::uint64_t rest = end > start_ ? static_cast<std::uint64_t>(end - start_) : 0;
    count_ = rest / (format_.FrameBytes() + kFrame.size() + 1);
    if (count_ > 0) planes_.resize(format_.FrameBytes());
    return Rewind();
}

bool Y4mReader::AtEnd() const {
    const int letter = std::fgetc(file_.get());
    if (letter != EOF) std::ungetc(letter, file_.get());
    return letter == EOF && !cut_off_;
}

bool Y4mReader::Rewind() {
    return std::fseek(file_.get(), start_, SEEK_SET) == 0;
}

bool Y4mReader::Next(RgbImage& image) {
    std::string line;
    if (planes_.empty()) return false;
    const bool has_line = ReadLine(line);
    cut_off_ = !line.empty() || has_line;
    if (!has_line || !line.starts_with(kFrame)) return false;
    if (std::fread(planes_.data(), 1, planes_.size(), file_.get()) != planes_.size()) return false;
    cut_off_ = false;
    DecodeY4m(format_, planes_, image);
    return true;
}

} // namespace kelvo::tool
