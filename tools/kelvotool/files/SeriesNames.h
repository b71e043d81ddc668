#pragma once
// The names of a series of pictures: "frames-%06d.png", or a folder of them.

#include "tools/kelvotool/report/Reporter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::tool {

/// What a pattern such as "frames-%06d.png" says.
struct SeriesPattern {
    std::string before = {};
    std::uint32_t digits = 1; ///< at least so many
    std::string after = {};

    std::string NameOf(std::uint64_t number) const;
    /// The number in a name, if it is one of the series.
    std::optional<std::uint64_t> NumberIn(std::string_view name) const;
};

/// Nothing when there is no place for a number or more than one. "%%" is a percent sign.
std::optional<SeriesPattern> ParsePattern(std::string_view file_name);

/// Files that a series of pictures is read from, in order: those of a pattern by their numbers,
/// those of a folder by their names.
/// @param given      a pattern or a folder, as the person named it
/// @return nothing after it was reported that there is none
std::optional<std::vector<std::string>> ListSeries(const std::string& given, Reporter& reporter);

/// The last point of a name and what follows, in small letters; may be empty.
std::string ExtensionOf(std::string_view name);

} // namespace kelvo::tool
