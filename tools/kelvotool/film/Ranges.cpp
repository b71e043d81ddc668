#include "tools/kelvotool/film/Ranges.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <optional>

namespace kelvo::tool {

namespace {

constexpr std::uint64_t kMicroseconds = 1'000'000;
// Far beyond any film, and small enough that no product with a rate wraps in 128 bits.
constexpr std::uint64_t kLargestNumber = 1'000'000'000'000;
constexpr std::size_t kFractionDigits = 6;
constexpr std::uint64_t kMinute = 60;

__extension__ using Wide = unsigned __int128;

bool IsDigit(char letter) {
    return std::isdigit(static_cast<unsigned char>(letter)) != 0;
}

/// Takes a whole number off the text.
std::optional<std::uint64_t> TakeNumber(std::string_view& text) {
    if (text.empty() || !IsDigit(text.front())) return std::nullopt;
    std::uint64_t value = 0;
    while (!text.empty() && IsDigit(text.front())) {
        value = value * 10 + static_cast<std::uint64_t>(text.front() - '0');
        if (value > kLargestNumber) return std::nullopt;
        text.remove_prefix(1);
    }
    return value;
}

/// ".5" is 500000; what is finer than a microsecond is cut off.
std::optional<std::uint64_t> TakeFraction(std::string_view& text) {
    if (!text.starts_with('.')) return 0;
    text.remove_prefix(1);
    if (text.empty() || !IsDigit(text.front())) return std::nullopt;
    std::uint64_t value = 0;
    for (std::size_t digit = 0; digit < kFractionDigits; ++digit) {
        const bool is_there = !text.empty() && IsDigit(text.front());
        value = value * 10 + (is_there ? static_cast<std::uint64_t>(text.front() - '0') : 0);
        if (is_there) text.remove_prefix(1);
    }
    while (!text.empty() && IsDigit(text.front()))
        text.remove_prefix(1);
    return value;
}

/// Takes one bound off the text.
std::optional<RangeBound> TakeBound(std::string_view& text) {
    auto number = TakeNumber(text);
    if (!number) return std::nullopt;
    if (text.starts_with('f')) {
        text.remove_prefix(1);
        return RangeBound{RangeBound::Unit::Image, *number};
    }
    std::uint64_t seconds = *number;
    for (int colons = 0; colons < 2 && text.starts_with(':'); ++colons) {
        text.remove_prefix(1);
        number = TakeNumber(text);
        if (!number || *number >= kMinute) return std::nullopt;
        seconds = seconds * kMinute + *number;
    }
    const auto fraction = TakeFraction(text);
    if (!fraction || seconds > kLargestNumber) return std::nullopt;
    return RangeBound{RangeBound::Unit::Time, seconds * kMicroseconds + *fraction};
}

/// Takes one range off the text, up to a comma or the end.
std::optional<Range> TakeRange(std::string_view& text) {
    Range range;
    if (!text.starts_with('-')) {
        const auto from = TakeBound(text);
        if (!from) return std::nullopt;
        range.from = *from;
    }
    if (!text.starts_with('-')) return std::nullopt;
    text.remove_prefix(1);
    if (!text.empty() && text.front() != ',') {
        const auto to = TakeBound(text);
        if (!to) return std::nullopt;
        range.to = *to;
    }
    const bool names_nothing = range == Range{};
    const bool is_backwards = range.from.unit == range.to.unit &&
                              range.to.unit != RangeBound::Unit::Edge &&
                              range.from.value >= range.to.value;
    if (names_nothing || is_backwards) return std::nullopt;
    return range;
}

} // namespace

Result<std::vector<Range>> ParseRanges(std::string_view text) {
    std::vector<Range> ranges;
    std::string_view rest = text;
    while (true) {
        const std::uint64_t offset = text.size() - rest.size();
        const auto range = TakeRange(rest);
        if (!range) return Error{Fault::BadValue, offset};
        ranges.push_back(*range);
        if (rest.empty()) return ranges;
        if (rest.front() != ',') return Error{Fault::BadValue, text.size() - rest.size()};
        rest.remove_prefix(1);
    }
}

Result<RangeBound> ParseBound(std::string_view text) {
    std::string_view rest = text;
    const auto bound = TakeBound(rest);
    if (!bound || !rest.empty()) return Error{Fault::BadValue, text.size() - rest.size()};
    return *bound;
}

std::uint64_t PositionOf(const RangeBound& bound, const Counting& counting, std::uint64_t edge) {
    if (bound.unit == RangeBound::Unit::Edge) return std::min(edge, counting.count);
    const bool is_time = bound.unit == RangeBound::Unit::Time;
    const std::uint64_t divisor = is_time ? kMicroseconds : counting.images_per_second;
    const Wide product = Wide{bound.value} * counting.per_second;
    const Wide position = (product + divisor - 1) / divisor;
    return position < counting.count ? static_cast<std::uint64_t>(position) : counting.count;
}

Span SpanOf(const Range& range, const Counting& counting) {
    const std::uint64_t first = PositionOf(range.from, counting, 0);
    const std::uint64_t end = PositionOf(range.to, counting, counting.count);
    return {first, std::max(first, end)};
}

std::vector<Span> SpansOf(const std::vector<Range>& ranges, const Counting& counting) {
    if (ranges.empty()) return {{0, counting.count}};
    std::vector<Span> spans;
    for (const Range& range : ranges)
        spans.push_back(SpanOf(range, counting));
    return spans;
}

} // namespace kelvo::tool
