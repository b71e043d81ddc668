#pragma once
// Parts of a film as a person names them: "12:34.5-13:00", "300f-450f", several by comma. Which
// images and samples a part means is decided here, too, so that every command cuts at the same
// place.

#include "framework/base/Result.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace kelvo::tool {

/// Where a range begins or ends.
struct RangeBound {
    enum class Unit : std::uint8_t {
        Edge,  ///< nothing was said: the film's own start or end
        Time,  ///< microseconds from the film's start
        Image, ///< number of an image, or of an audio frame where there are no images
    };
    Unit unit = Unit::Edge;
    std::uint64_t value = 0;
    friend bool operator==(const RangeBound&, const RangeBound&) = default;
};

/// From the first bound on, up to but without the last: ranges that share a bound share nothing.
struct Range {
    RangeBound from = {};
    RangeBound to = {};
    friend bool operator==(const Range&, const Range&) = default;
};

/// Reads "A-B,A-B...". A bound is [[H:]M:]S[.FRACTION], or a number and "f"; one of a range may be
/// left out.
/// @return BadValue with the offset in the text; also for a range that ends before it begins in the
///         same unit.
Result<std::vector<Range>> ParseRanges(std::string_view text);
/// Reads one bound, as an option that means a single place has it; an empty text is refused.
Result<RangeBound> ParseBound(std::string_view text);

/// What is counted along a film: images, audio frames or samples.
struct Counting {
    std::uint64_t count = 0;             ///< of all that there are
    std::uint64_t per_second = 1;        ///< above 0
    std::uint64_t images_per_second = 1; ///< what "f" counts; above 0
};

/// [first, end) of what is counted.
struct Span {
    std::uint64_t first = 0;
    std::uint64_t end = 0;
    std::uint64_t Count() const { return end - first; }
    friend bool operator==(const Span&, const Span&) = default;
};

/// The first of what is counted that does not begin before the bound, at most `count`.
/// @param edge  what a bound means at which nothing was said
std::uint64_t PositionOf(const RangeBound& bound, const Counting& counting, std::uint64_t edge);
/// What begins within the range, taken into what there is; may be empty.
Span SpanOf(const Range& range, const Counting& counting);
/// One span a range, in the order given; no ranges mean everything.
std::vector<Span> SpansOf(const std::vector<Range>& ranges, const Counting& counting);

} // namespace kelvo::tool
