#pragma once
// The pictures that a script names: BMP files become packed bitmaps, ICO and CUR files a group and
// its images. Nothing in them is trusted.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo::resource_compiler {

/// Info header, palette and pixels, without the file's own header and gaps.
/// @param problem takes what is wrong when nothing comes back
[[nodiscard]] std::optional<std::vector<std::uint8_t>>
PackedBitmapFrom(std::span<const std::uint8_t> file, std::string& problem);

enum class PictureKind : std::uint8_t { Icon, Cursor };

struct PictureGroup {
    std::vector<std::uint8_t> group;               ///< the directory that names the images
    std::vector<std::vector<std::uint8_t>> images; ///< a cursor's begin with the hot spot
};

/// @param first_id the first image's number as a resource; the others follow
[[nodiscard]] std::optional<PictureGroup> PictureGroupFrom(std::span<const std::uint8_t> file,
                                                           PictureKind kind, std::uint16_t first_id,
                                                           std::string& problem);

} // namespace kelvo::resource_compiler
