#include "container/codec/Lzss.h"

#include "container/codec/LzssChains.h"
#include "container/codec/LzssItems.h"
#include "container/codec/LzssTree.h"
#include "container/codec/WideWords.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <cstring>

namespace kelvo::codec {

namespace {

/// The reference coder on inputs that end before the ring's mirror (the 17 bytes behind it, for
/// strings that wrap) has been filled: there it reads zeros where the ring itself holds spaces.
/// So few strings need no tree, only their order of age.
class TinyLzss {
public:
    explicit TinyLzss(ByteView input) : input_(input) {
        ring_.fill(0);
        std::fill_n(ring_.begin(), kLzssFirstPosition, std::uint8_t{' '});
        for (std::size_t i = 0; i < input.size(); ++i) {
            const std::size_t at = (kLzssFirstPosition + i) % kLzssRing;
            ring_[at] = input[i];
            if (i >= kLzssLongestMatch) ring_[at + kLzssRing] = input[i];
        }
    }

    std::size_t Encode(std::uint8_t* stream) {
        LzssItemWriter items(stream);
        for (std::size_t back = 1; back <= kLzssLongestMatch; ++back) {
            Insert(kLzssFirstPosition - back);
        }
        std::size_t at = 0;
        while (at < input_.size()) {
            const LzssMatch match = Insert((kLzssFirstPosition + at) % kLzssRing);
            const std::size_t coded = std::min<std::size_t>(match.length, input_.size() - at);
            if (coded < kLzssShortestMatch) {
                items.WriteLiteral(input_[at++]);
                continue;
            }
            items.WriteMatch({match.position, static_cast<std::uint32_t>(coded)});
            for (std::size_t next = at + 1; next < at + coded; ++next) {
                Insert((kLzssFirstPosition + next) % kLzssRing);
            }
            at += coded;
        }
        return items.Finish();
    }

private:
    LzssMatch Insert(std::size_t position) {
        const auto self = static_cast<std::uint32_t>(position);
        LzssMatch best;
        for (std::size_t i = 0; i < count_; ++i) {
            const auto key = ring_.begin() + self;
            const auto equal = static_cast<std::uint32_t>(
                std::mismatch(key, key + kLzssLongestMatch, ring_.begin() + latest_[i]).first -
                key);
            if (equal > best.length) best = {latest_[i], equal};
            if (equal == kLzssLongestMatch) {
                latest_[i] = self;
                return best;
            }
        }
        latest_[count_++] = self;
        return best;
    }

    ByteView input_;
    std::array<std::uint8_t, kLzssRing + kLzssLongestMatch - 1> ring_;
    std::array<std::uint32_t, kLzssLongestMatch + kLzssTreeShortest> latest_{}; ///< oldest first
    std::size_t count_ = 0;
};

/// Ring bytes behind the spaces that only an input fills.
constexpr std::size_t kUnfilledRing = kLzssRing - kLzssFirstPosition;
constexpr std::size_t kGroupStream = 1 + kLzssItemsPerGroup * kLzssMatchBytes;
/// What decoding one group reads, the wide loads of literals included.
constexpr std::size_t kGroupRead = kGroupStream + kLzssItemsPerGroup;
constexpr std::size_t kGroupOutput = kLzssItemsPerGroup * kLzssLongestMatch;
/// A wide copy writes up to this much behind a match.
constexpr std::size_t kCopySlack = kLzssLongestMatch - kLzssShortestMatch;
/// So many bytes of stream stand for at least kCopySlack bytes of output (eight for nine, at
/// worst): what a wide copy spoilt is then overwritten by what follows.
constexpr std::size_t kStreamThatCovers = 18;
static_assert((kStreamThatCovers / 9) * 8 >= kCopySlack);

/// Where a decoder stands. `out` has the ring's 4096 bytes before it, whatever `at` is.
struct Decoding {
    const std::uint8_t* in;
    const std::uint8_t* in_end;
    std::uint8_t* out;
    std::uint64_t at; ///< bytes of output described so far
    std::size_t room; ///< of `out`; from there on output is only counted
    bool cut = false; ///< the stream ended inside a match

    bool HasInput() const { return in != in_end; }
};

struct Item {
    std::size_t distance; ///< 1 to kLzssRing
    std::size_t length;
};

/// @param at  output bytes before the match; their number modulo the ring is what counts
inline Item MatchAt(const std::uint8_t* in, std::uint64_t at) {
    const std::uint64_t position = in[0] | ((in[1] & 0xF0U) << 4U);
    return {((at + kLzssFirstPosition - position - 1) % kLzssRing) + 1,
            (in[1] & 0x0FU) + kLzssShortestMatch};
}

/// One group, item by item, within the room and the stream's end.
void DecodeGroup(Decoding& d) {
    const unsigned flags = *d.in++;
    for (unsigned bit = 0; bit < kLzssItemsPerGroup && d.HasInput(); ++bit) {
        if ((flags >> bit & 1U) != 0) {
            if (d.at < d.room) d.out[d.at] = *d.in;
            ++d.in;
            ++d.at;
            continue;
        }
        if (d.in_end - d.in < static_cast<std::ptrdiff_t>(kLzssMatchBytes)) {
            d.in = d.in_end;
            d.cut = true;
            return;
        }
        const Item item = MatchAt(d.in, d.at);
        d.in += kLzssMatchBytes;
        const std::uint64_t stop = std::min<std::uint64_t>(d.at + item.length, d.room);
        for (std::uint64_t to = d.at; to < stop; ++to) {
            d.out[to] = d.out[static_cast<std::ptrdiff_t>(to - item.distance)];
        }
        d.at += item.length;
    }
}

/// For a pattern of n bytes: its mask, and the factor that repeats it through a word.
struct Pattern {
    std::uint64_t mask;
    std::uint64_t factor;
};
constexpr std::array<Pattern, 8> kPatterns = [] {
    std::array<Pattern, 8> patterns{};
    for (unsigned n = 1; n < 8; ++n) {
        patterns[n].mask = (std::uint64_t{1} << (8 * n)) - 1;
        for (unsigned at = 0; at < 8; at += n) {
            patterns[n].factor |= std::uint64_t{1} << (8 * at);
        }
    }
    return patterns;
}();

/// Writes the 18 bytes that repeat the `distance` bytes before `to`.
inline void CopyLongestMatch(std::uint8_t* to, std::size_t distance) {
    const std::uint8_t* const from = to - distance;
    if (distance >= 16) [[likely]] {
        std::memcpy(to, from, 16);
        std::memcpy(to + 16, from + 16, 2);
    } else if (distance >= 8) {
        std::memcpy(to, from, 8);
        std::memcpy(to + 8, from + 8, 8);
        std::memcpy(to + 16, from + 16, 2);
    } else {
        // Out of registers: loads of bytes just stored would stall.
        const Pattern& pattern = kPatterns[distance];
        const std::uint64_t word = (LoadLittleWord(from) & pattern.mask) * pattern.factor;
        StoreLittleWord(to, word);
        StoreLittleWord(to + 8, (word >> (8 * (8 % distance)) & pattern.mask) * pattern.factor);
        const std::uint64_t rest = word >> (8 * (16 % distance));
        to[16] = static_cast<std::uint8_t>(rest);
        to[17] = static_cast<std::uint8_t>(rest >> 8U);
    }
}

/// Whole groups with no check inside them, as long as the room suffices for any group.
/// @param stream_kept  at least kGroupRead; kGroupRead + kStreamThatCovers where what a wide copy
///     writes behind the last match must not be seen
void DecodeFastGroups(Decoding& d, std::size_t stream_kept) {
    const std::uint8_t* in = d.in;
    std::uint8_t* out = d.out + d.at;
    const std::uint8_t* const out_end = d.out + d.room;
    while (d.in_end - in >= static_cast<std::ptrdiff_t>(stream_kept) &&
           out_end - out >= static_cast<std::ptrdiff_t>(kGroupOutput + kCopySlack)) {
        const unsigned flags = *in++;
        if (flags == 0xFF) {
            std::memcpy(out, in, kLzssItemsPerGroup);
            in += kLzssItemsPerGroup;
            out += kLzssItemsPerGroup;
            continue;
        }
        // A match and the literals before it at a time: a branch for every flag would be a coin
        // toss.
        unsigned matches = ~flags & 0xFFU;
        std::size_t literals = kLzssItemsPerGroup;
        while (matches != 0) {
            const unsigned run = static_cast<unsigned>(__builtin_ctz(matches));
            matches >>= run + 1;
            literals -= run + 1;
            std::memcpy(out, in, kLzssItemsPerGroup);
            in += run;
            out += run;
            const Item item = MatchAt(in, static_cast<std::uint64_t>(out - d.out));
            in += kLzssMatchBytes;
            CopyLongestMatch(out, item.distance);
            out += item.length;
        }
        std::memcpy(out, in, kLzssItemsPerGroup);
        in += literals;
        out += literals;
    }
    d.in = in;
    d.at = static_cast<std::uint64_t>(out - d.out);
}

} // namespace

struct LzssEncoder::Working {
    LzssTree tree;
    LzssChains chains;
};

LzssEncoder::LzssEncoder() : working_(new Working) {}
LzssEncoder::~LzssEncoder() = default;

std::size_t LzssEncoder::Encode(ByteView input, ByteSpan stream) {
    if (stream.size() < LzssWorstCase(input.size())) {
        assert(false && "the stream must have room for the worst case");
        return 0;
    }
    if (input.empty()) return 0;
    if (input.size() < kLzssTreeShortest) return TinyLzss(input).Encode(stream.data());
    if (input.size() <= kLzssChainsLongest) {
        if (const auto length = working_->chains.Encode(input, stream.data())) return *length;
    }
    return working_->tree.Encode(input, stream.data());
}

Decoded DecodeLzss(ByteView stream, ByteSpan output) {
    // The ring before the first byte, then room for as much as the ring holds and the rest of a
    // group: from there on the output is its own ring.
    std::array<std::uint8_t, kLzssRing + kLzssRing + kGroupOutput + kGroupOutput + kCopySlack>
        start;
    std::memset(start.data(), 0, kUnfilledRing);
    std::memset(start.data() + kUnfilledRing, ' ', kLzssFirstPosition);

    Decoding d{.in = stream.data(),
               .in_end = stream.data() + stream.size(),
               .out = start.data() + kLzssRing,
               .at = 0,
               .room = kLzssRing + kGroupOutput + kCopySlack};
    DecodeFastGroups(d, kGroupRead);
    while (d.HasInput() && d.at < kLzssRing) {
        DecodeGroup(d);
    }
    if (!output.empty()) {
        std::memcpy(output.data(), d.out, std::min<std::size_t>(d.at, output.size()));
    }
    d.out = output.data();
    d.room = output.size();
    if (d.at < d.room) DecodeFastGroups(d, kGroupRead + kStreamThatCovers);
    while (d.HasInput()) {
        DecodeGroup(d);
    }
    const Fault fault = d.at > d.room ? Fault::TooLarge : d.cut ? Fault::EndsEarly : Fault::None;
    return {static_cast<std::size_t>(std::min<std::uint64_t>(d.at, d.room)), fault, d.at};
}

} // namespace kelvo::codec
