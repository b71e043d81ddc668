#include "container/codec/ByteGroups.h"

#include "framework/base/ByteReader.h"

#include <algorithm>
#include <cassert>
#include <cstdint>

namespace kelvo::codec {

namespace {

// A header up to kLongestRepeat repeats the byte after it that often; one above it says that
// header - kLongestRepeat literals follow. 0 is never written and stands for a repeat of no bytes.
constexpr std::size_t kLongestRepeat = 190;
constexpr std::size_t kMostLiterals = 65;
static_assert(kLongestRepeat + kMostLiterals == 255);

/// Samples at the front that equal the first one, up to the longest repeat.
std::size_t RepeatLength(ByteView samples) {
    const std::size_t limit = std::min(samples.size(), kLongestRepeat);
    std::size_t length = 1;
    while (length < limit && samples[length] == samples[0]) {
        ++length;
    }
    return length;
}

/// Samples at the front, the first two of which differ, that one literal group takes. Two equal
/// ones end it before the first of them, except that a full group does not look ahead.
std::size_t LiteralLength(ByteView samples) {
    const std::size_t limit = std::min(samples.size(), kMostLiterals);
    for (std::size_t length = 2; length < limit; ++length) {
        if (samples[length] == samples[length - 1]) return length - 1;
    }
    return limit;
}

} // namespace

std::size_t EncodeByteGroups(ByteView samples, ByteSpan stream) {
    assert(stream.size() >= LargestByteGroups(samples.size()));
    if (stream.size() < LargestByteGroups(samples.size())) return 0;
    std::size_t written = 0;
    while (!samples.empty()) {
        const std::size_t repeats = RepeatLength(samples);
        // A lone last sample is a repeat of one, not a literal.
        if (repeats >= 2 || samples.size() == 1) {
            stream[written++] = static_cast<std::uint8_t>(repeats);
            stream[written++] = samples[0];
            samples = samples.subspan(repeats);
        } else {
            const std::size_t literals = LiteralLength(samples);
            stream[written++] = static_cast<std::uint8_t>(kLongestRepeat + literals);
            std::ranges::copy(samples.first(literals), stream.subspan(written).begin());
            written += literals;
            samples = samples.subspan(literals);
        }
    }
    return written;
}

Decoded DecodeByteGroups(ByteView stream, ByteSpan samples) {
    ByteReader reader{stream};
    ByteSpan rest = samples;
    std::uint64_t described = 0;
    bool cut = false;
    while (reader.Remaining() > 0 && !cut) {
        const std::size_t header = reader.ReadU8();
        if (header > kLongestRepeat) {
            const std::size_t promised = header - kLongestRepeat;
            const ByteView literals = reader.ReadBytes(std::min(promised, reader.Remaining()));
            cut = literals.size() < promised;
            const std::size_t fitting = std::min(literals.size(), rest.size());
            std::ranges::copy(literals.first(fitting), rest.begin());
            rest = rest.subspan(fitting);
            described += literals.size();
        } else {
            const std::uint8_t sample = reader.ReadU8();
            cut = !reader.Ok();
            if (cut) break;
            const std::size_t fitting = std::min(header, rest.size());
            std::ranges::fill(rest.first(fitting), sample);
            rest = rest.subspan(fitting);
            described += header;
        }
    }
    const std::size_t written = samples.size() - rest.size();
    if (described > samples.size()) return {written, Fault::TooLarge, described};
    const bool whole = !cut && rest.empty();
    return {written, whole ? Fault::None : Fault::EndsEarly, described};
}

} // namespace kelvo::codec
