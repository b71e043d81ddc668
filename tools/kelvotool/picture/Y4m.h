#pragma once
// The plain stream of uncompressed images (.y4m): 4:4:4, 8 bits, the limited range. 5-5-5 pixels
// come back from it exactly; a channel of 8 bits may be off by one or two.

#include "tools/kelvotool/picture/RgbImage.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::tool {

struct Y4mFormat {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t rate_numerator = 25;
    std::uint32_t rate_denominator = 1;
    /// Pixels that share one colour sample, across and down.
    std::uint32_t share_x = 1;
    std::uint32_t share_y = 1;
    bool has_colour = true;

    std::uint64_t LumaBytes() const { return std::uint64_t{width} * height; }
    std::uint64_t ColourBytes() const {
        if (!has_colour) return 0;
        return std::uint64_t{(width + share_x - 1) / share_x} * ((height + share_y - 1) / share_y);
    }
    std::uint64_t FrameBytes() const { return LumaBytes() + 2 * ColourBytes(); }
};

/// The line in front of all images.
std::string Y4mHeader(const Y4mFormat& format);
/// The line and planes of one image.
void EncodeY4m(const RgbImage& image, std::vector<std::uint8_t>& frame);

/// The first line without its end; nothing for what this program does not read (more than 8 bits).
std::optional<Y4mFormat> ParseY4mHeader(std::string_view line, std::uint32_t largest_side);
/// @param planes  FrameBytes of them
void DecodeY4m(const Y4mFormat& format, const std::vector<std::uint8_t>& planes, RgbImage& image);

/// Reads a .y4m file image by image.
class Y4mReader {
public:
    /// @return false for what cannot be opened or read as one
    [[nodiscard]] bool Open(const std::string& name, std::uint32_t largest_side);
    const Y4mFormat& Format() const { return format_; }
    /// Images that the file has room for.
    std::uint64_t Count() const { return count_; }
    /// Starts again with the first image.
    bool Rewind();
    /// @return false at the end and where the file is cut off or damaged
    bool Next(RgbImage& image);
    /// Whether nothing follows what was read.
    bool AtEnd() const;

private:
    bool ReadLine(std::string& line);

    struct CloseFile {
        void operator()(std::FILE* file) const { std::ignore = std::fclose(file); } // only read
    };
    std::unique_ptr<std::FILE, CloseFile> file_;
    Y4mFormat format_;
    long start_ = 0;
    std::uint64_t count_ = 0;
    bool cut_off_ = false; ///< the last image began and is not whole
    std::vector<std::uint8_t> planes_;
};

} // namespace kelvo::tool
