#include "container/codec/LzssChains.h"

#include "container/codec/WideWords.h"

#include <algorithm>
#include <cstring>

namespace kelvo::codec {

namespace {

/// Steps along chains for every byte of the input before the tree is the better way.
constexpr std::size_t kStepsPerByte = 24;

/// The first `length` bytes (up to 8) of a string, as a number.
std::uint64_t Prefix(const std::uint8_t* text, std::size_t length) {
    return LoadLittleWord(text) << (64 - 8 * length);
}

std::uint64_t Mix(std::uint64_t value) {
    return value * 0x9E3779B97F4A7C15U;
}

std::uint32_t EqualBytes(const std::uint8_t* a, const std::uint8_t* b) {
    const std::uint64_t first = LoadLittleWord(a) ^ LoadLittleWord(b);
    if (first != 0) return static_cast<std::uint32_t>(__builtin_ctzll(first)) / 8;
    const std::uint64_t second = LoadLittleWord(a + 8) ^ LoadLittleWord(b + 8);
    if (second != 0) return 8 + static_cast<std::uint32_t>(__builtin_ctzll(second)) / 8;
    std::uint32_t length = 16;
    while (length < kLzssLongestMatch && a[length] == b[length]) {
        ++length;
    }
    return length;
}

} // namespace

std::optional<std::size_t> LzssChains::Encode(ByteView input, std::uint8_t* stream) {
    steps_ = 0;
    // The end of the spaces before the input, the input, and the spaces that the ring's start still
    // holds behind it.
    std::memset(text_.data(), ' ', kLzssLongestMatch);
    std::memcpy(text_.data() + kLzssLongestMatch, input.data(), input.size());
    std::memset(text_.data() + kLzssLongestMatch + input.size(), ' ',
                kLzssLongestMatch + kTextSlack);
    for (auto* table : {&twin_, &three_, &four_, &oldest_}) {
        table->fill(kNone);
    }

    LzssItemWriter items(stream);
    std::size_t at = kLzssLongestMatch;
    const std::size_t end = at + input.size();
    for (std::size_t back = 1; back <= kLzssLongestMatch; ++back) {
        Insert(at - back, Find::No);
    }
    while (at < end) {
        const LzssMatch match = Insert(at, Find::Longest);
        const std::size_t coded = std::min<std::size_t>(match.length, end - at);
        if (coded < kLzssShortestMatch) {
            items.WriteLiteral(text_[at++]);
            continue;
        }
        items.WriteMatch({match.position, static_cast<std::uint32_t>(coded)});
        for (std::size_t next = at + 1; next < at + coded && next < end; ++next) {
            Insert(next, Find::No);
        }
        at += coded;
        if (steps_ > kStepsPerByte * input.size()) return std::nullopt;
    }
    return items.Finish();
}

LzssMatch LzssChains::Insert(std::size_t at, Find find) {
    std::uint16_t* const twin = Lookup(twin_, at, kLzssLongestMatch);
    if (*twin != kNone) {
        const std::uint16_t latest = latest_[*twin];
        latest_[*twin] = static_cast<std::uint16_t>(at);
        return {Position(latest), kLzssLongestMatch};
    }
    const auto self = static_cast<std::uint16_t>(at);
    *twin = self;
    latest_[at] = self;

    const std::size_t bucket = Mix(Prefix(text_.data() + at, kChainedPrefix)) >> (64U - kTableBits);
    LzssMatch match;
    if (find == Find::Longest && oldest_[bucket] != kNone) {
        const std::uint32_t found = WalkChain(at, oldest_[bucket], &match.length);
        if (match.length != 0) match.position = Position(latest_[found]);
    }
    Append(at, bucket);
    if (match.length != 0) return match; // so its prefixes of 4 and 3 are known as well

    std::uint16_t* const four = Lookup(four_, at, 4);
    if (*four != kNone) return {Position(latest_[*four]), 4};
    *four = self;
    std::uint16_t* const three = Lookup(three_, at, 3);
    if (*three != kNone) return {Position(latest_[*three]), 3};
    *three = self;
    return {};
}

std::uint16_t* LzssChains::Lookup(std::array<std::uint16_t, kTable>& table, std::size_t at,
                                  std::size_t length) {
    const std::uint8_t* const key = text_.data() + at;
    std::uint64_t hash = 0;
    if (length == kLzssLongestMatch) {
        hash = Mix(Mix(LoadLittleWord(key)) ^ LoadLittleWord(key + 8)) ^ Mix(Prefix(key + 16, 2));
        hash = Mix(hash ^ (hash >> 32U));
    } else {
        hash = Mix(Prefix(key, length));
    }
    std::size_t place = hash >> (64U - kTableBits);
    while (table[place] != kNone) {
        const std::uint8_t* const other = text_.data() + table[place];
        const bool same = length == kLzssLongestMatch
                              ? EqualBytes(key, other) == length
                              : Prefix(key, length) == Prefix(other, length);
        if (same) break;
        place = (place + 1) % kTable;
    }
    return &table[place];
}

std::uint32_t LzssChains::WalkChain(std::size_t at, std::uint16_t first, std::uint32_t* length) {
    const std::uint8_t* const key = text_.data() + at;
    std::uint32_t best = 0;
    std::uint32_t best_length = kChainedPrefix - 1; // others may hash here
    for (std::uint16_t other = first; other != kNone; other = newer_[other]) {
        ++steps_;
        const std::uint8_t* const text = text_.data() + other;
        if (text[best_length] != key[best_length]) continue;
        const std::uint32_t equal = EqualBytes(key, text);
        if (equal > best_length) {
            best = other;
            best_length = equal;
        }
    }
    *length = best_length >= kChainedPrefix ? best_length : 0;
    return best;
}

void LzssChains::Append(std::size_t at, std::size_t bucket) {
    const auto self = static_cast<std::uint16_t>(at);
    newer_[at] = kNone;
    if (oldest_[bucket] == kNone) {
        oldest_[bucket] = self;
    } else {
        newer_[newest_[bucket]] = self;
    }
    newest_[bucket] = self;
}

} // namespace kelvo::codec
