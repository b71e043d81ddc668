#include "container/codec/SampleDifference.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kelvo::codec {

namespace {

constexpr std::uint8_t kNoChange = 127;

// A nibble is a sign (bit 3) and a magnitude; "minus zero" announces that a whole byte follows.
constexpr std::uint8_t kEscape = 8;
constexpr int kLargestMagnitude = 7;

/// The nibble of each difference byte; kEscape for those that need their whole byte.
constexpr std::array<std::uint8_t, 256> kNibbles = [] {
    std::array<std::uint8_t, 256> nibbles{};
    for (int difference = 0; difference < 256; ++difference) {
        const int change = difference - kNoChange;
        const int magnitude = change < 0 ? -change : change;
        int nibble = kEscape;
        if (magnitude <= kLargestMagnitude) nibble = change < 0 ? kEscape | magnitude : magnitude;
        nibbles[static_cast<std::size_t>(difference)] = static_cast<std::uint8_t>(nibble);
    }
    return nibbles;
}();

/// What one packed byte does to the running sample.
struct NibblePair {
    enum class Kind : std::uint8_t {
        TwoChanges,     ///< high and low nibble
        ChangeThenByte, ///< the low nibble is an escape
        ByteFollows,    ///< the high nibble is an escape; the low one carries nothing
    };
    std::uint8_t first_change = 0; ///< modulo 256
    std::uint8_t both_changes = 0; ///< modulo 256
    Kind kind = Kind::TwoChanges;
};

constexpr int ChangeOf(int nibble) {
    const int magnitude = nibble & kLargestMagnitude;
    return (nibble & kEscape) != 0 ? -magnitude : magnitude;
}

constexpr std::array<NibblePair, 256> kNibblePairs = [] {
    std::array<NibblePair, 256> pairs{};
    for (int packed = 0; packed < 256; ++packed) {
        const int high = packed >> 4;
        const int low = packed & 15;
        NibblePair& pair = pairs[static_cast<std::size_t>(packed)];
        pair.first_change = static_cast<std::uint8_t>(ChangeOf(high));
        pair.both_changes = static_cast<std::uint8_t>(ChangeOf(high) + ChangeOf(low));
        if (high == kEscape) {
            pair.kind = NibblePair::Kind::ByteFollows;
        } else if (low == kEscape) {
            pair.kind = NibblePair::Kind::ChangeThenByte;
        }
    }
    return pairs;
}();

constexpr std::uint8_t Sum(std::uint8_t sample, std::uint8_t change) {
    return static_cast<std::uint8_t>(sample + change);
}

#if defined(__SSE2__)

constexpr std::size_t kWide = 16; ///< samples that are handled at once

__m128i LoadWide(const std::uint8_t* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

void StoreWide(std::uint8_t* at, __m128i bytes) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(at), bytes);
}

/// Stores the samples that sixteen changes lead to. @return the last of them
std::uint8_t StoreRunningSums(__m128i changes, std::uint8_t last, std::uint8_t* samples) {
    // Each byte takes in the one 1, 2, 4 and 8 places before it.
    changes = _mm_add_epi8(changes, _mm_slli_si128(changes, 1));
    changes = _mm_add_epi8(changes, _mm_slli_si128(changes, 2));
    changes = _mm_add_epi8(changes, _mm_slli_si128(changes, 4));
    changes = _mm_add_epi8(changes, _mm_slli_si128(changes, 8));
    StoreWide(samples, _mm_add_epi8(changes, _mm_set1_epi8(static_cast<char>(last))));
    return Sum(last, static_cast<std::uint8_t>(_mm_extract_epi16(changes, 7) >> 8));
}

/// What a wide step took and gave.
struct WideStep {
    std::size_t read;
    std::size_t written;
};

/// Packs sixteen differences, or those up to the first escape and its byte.
/// @param packed  room for 10 bytes; what lies behind the step may be written, too
WideStep PackWide(const std::uint8_t* differences, std::uint8_t* packed) {
    const __m128i changes = _mm_sub_epi8(LoadWide(differences), _mm_set1_epi8(kNoChange));
    const __m128i negative = _mm_cmpgt_epi8(_mm_setzero_si128(), changes);
    const __m128i magnitudes = _mm_sub_epi8(_mm_xor_si128(changes, negative), negative);
    // The magnitude of a change of 128 is 128, because the bytes are taken as unsigned here.
    const __m128i large = _mm_subs_epu8(magnitudes, _mm_set1_epi8(kLargestMagnitude));
    const __m128i small = _mm_cmpeq_epi8(large, _mm_setzero_si128());
    const __m128i escape = _mm_set1_epi8(kEscape);
    const __m128i signs = _mm_or_si128(negative, _mm_xor_si128(small, _mm_set1_epi8(-1)));
    const __m128i nibbles =
        _mm_or_si128(_mm_and_si128(small, magnitudes), _mm_and_si128(escape, signs));
    // Of each pair the first nibble lies in the low byte of 16 bits.
    const __m128i pairs = _mm_and_si128(
        _mm_or_si128(_mm_slli_epi16(nibbles, 4), _mm_srli_epi16(nibbles, 8)), _mm_set1_epi16(0xFF));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(packed), _mm_packus_epi16(pairs, pairs));
    const unsigned escapes = ~static_cast<unsigned>(_mm_movemask_epi8(small)) & 0xFFFFU;
    if (escapes == 0) return {kWide, kWide / 2};
    const auto first = static_cast<std::size_t>(std::countr_zero(escapes));
    // An escape in a high nibble leaves the low one empty.
    std::uint8_t* const at = packed + first / 2;
    at[0] = first % 2 == 0 ? kEscape << 4U : at[0];
    at[1] = differences[first];
    return {first + 1, first / 2 + 2};
}

/// Unpacks eight bytes into sixteen samples, or those up to the first escape and its byte.
/// @param packed   nine bytes
/// @param samples  room for sixteen; those behind the step may be written, too
WideStep UnpackWide(const std::uint8_t* packed, std::uint8_t& last, std::uint8_t* samples) {
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(packed));
    const __m128i low_bits = _mm_set1_epi8(15);
    const __m128i nibbles = _mm_unpacklo_epi8(_mm_and_si128(_mm_srli_epi16(bytes, 4), low_bits),
                                              _mm_and_si128(bytes, low_bits));
    const __m128i escape = _mm_set1_epi8(kEscape);
    const __m128i negative = _mm_cmpgt_epi8(nibbles, escape);
    const __m128i magnitudes = _mm_and_si128(nibbles, _mm_set1_epi8(kLargestMagnitude));
    const __m128i changes = _mm_sub_epi8(_mm_xor_si128(magnitudes, negative), negative);
    const std::uint8_t end = StoreRunningSums(changes, last, samples);
    const auto escapes = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(nibbles, escape)));
    if (escapes == 0) {
        last = end;
        return {kWide / 2, kWide};
    }
    const auto first = static_cast<std::size_t>(std::countr_zero(escapes));
    // An escape adds no change of its own to the sums, so the sample before it stands in its place.
    const auto change = static_cast<std::uint8_t>(packed[first / 2 + 1] - kNoChange);
    last = Sum(samples[first], change);
    samples[first] = last;
    return {first / 2 + 2, first + 1};
}

#endif

/// Samples that the rest of a stream describes when nothing of it is written any more.
std::uint64_t CountNibbles(ByteView packed) {
    std::uint64_t count = 0;
    std::size_t at = 0;
    while (at < packed.size()) {
        const bool is_last = at + 1 == packed.size();
        const NibblePair::Kind kind = kNibblePairs[packed[at]].kind;
        const bool takes_byte = kind != NibblePair::Kind::TwoChanges;
        const int samples = kind == NibblePair::Kind::ByteFollows ? 1 : 2;
        count += static_cast<std::uint64_t>(samples) - (takes_byte && is_last ? 1U : 0U);
        at += takes_byte ? 2 : 1;
    }
    return count;
}

} // namespace

void EncodeDifferences(ByteView samples, ByteSpan differences) {
    assert(differences.size() >= samples.size());
    const std::size_t count = std::min(samples.size(), differences.size());
    if (count == 0) return;
    differences[0] = samples[0];
    const std::uint8_t* const from = samples.data();
    std::uint8_t* const to = differences.data();
    for (std::size_t i = 1; i < count; ++i) {
        to[i] = static_cast<std::uint8_t>(from[i] - from[i - 1] + kNoChange);
    }
}

void DecodeDifferences(ByteView differences, ByteSpan samples) {
    assert(samples.size() >= differences.size());
    const std::size_t count = std::min(samples.size(), differences.size());
    // Before the first sample stands one that makes its difference come out as the sample itself.
    std::uint8_t last = kNoChange;
    std::size_t i = 0;
#if defined(__SSE2__)
    const __m128i no_change = _mm_set1_epi8(kNoChange);
    for (; count - i >= kWide; i += kWide) {
        const __m128i changes = _mm_sub_epi8(LoadWide(differences.data() + i), no_change);
        last = StoreRunningSums(changes, last, samples.data() + i);
    }
#endif
    for (; i < count; ++i) {
        last = static_cast<std::uint8_t>(differences[i] + last - kNoChange);
        samples[i] = last;
    }
}

std::size_t PackNibbles(ByteView differences, ByteSpan packed) {
    assert(packed.size() >= LargestNibbles(differences.size()));
    if (packed.size() < LargestNibbles(differences.size())) return 0;
    const std::uint8_t* const from = differences.data();
    std::uint8_t* const to = packed.data();
    std::size_t read = 0;
    std::size_t written = 0;
    while (read + 1 < differences.size()) {
#if defined(__SSE2__)
        if (differences.size() - read >= kWide) {
            const WideStep step = PackWide(from + read, to + written);
            read += step.read;
            written += step.written;
            continue;
        }
#endif
        // Always two bytes are stored, of which one or both stay: at most two bytes a difference,
        // so there is room for both. Noise makes escapes unpredictable, hence no branch on them.
        const unsigned high = kNibbles[from[read]];
        const unsigned low = kNibbles[from[read + 1]];
        const bool high_escapes = high == kEscape;
        const bool low_escapes = low == kEscape;
        to[written] = static_cast<std::uint8_t>(high << 4U | (high_escapes ? 0U : low));
        to[written + 1] = from[read + (high_escapes ? 0U : 1U)];
        written += 1U + static_cast<unsigned>(high_escapes | low_escapes);
        read += 2U - static_cast<unsigned>(high_escapes);
    }
    if (read < differences.size()) {
        const unsigned high = kNibbles[from[read]];
        if (high == kEscape) {
            to[written++] = kEscape << 4U;
            to[written++] = from[read];
        } else {
            // An escape without its byte marks the end.
            to[written++] = static_cast<std::uint8_t>(high << 4U | kEscape);
        }
    }
    return written;
}

Decoded UnpackNibblesToSamples(ByteView packed, ByteSpan samples) {
    using Kind = NibblePair::Kind;
    const std::size_t room = samples.size();
    std::size_t at = 0;
    std::size_t written = 0;
    std::uint8_t last = kNoChange;
    bool cut = false;
    // While two samples fit and the byte after a packed byte is there, nothing else need be asked.
    while (room - written >= 2 && packed.size() - at >= 2) {
#if defined(__SSE2__)
        // So many bytes are sure to give sixteen samples, over those that a step writes behind it.
        if (packed.size() - at > 2 * kWide && room - written >= kWide) {
            const WideStep step = UnpackWide(packed.data() + at, last, samples.data() + written);
            at += step.read;
            written += step.written;
            continue;
        }
#endif
        const NibblePair pair = kNibblePairs[packed[at]];
        if (pair.kind == Kind::TwoChanges) {
            samples[written] = Sum(last, pair.first_change);
            last = Sum(last, pair.both_changes);
            samples[written + 1] = last;
            written += 2;
            at += 1;
            continue;
        }
        const auto change = static_cast<std::uint8_t>(packed[at + 1] - kNoChange);
        at += 2;
        if (pair.kind == Kind::ChangeThenByte) {
            last = Sum(last, pair.first_change);
            samples[written++] = last;
        }
        last = Sum(last, change);
        samples[written++] = last;
    }
    const auto give = [&](std::uint8_t change) {
        last = Sum(last, change);
        if (written < room) samples[written] = last;
        ++written;
    };
    // The end of the stream or of the record: at most a few bytes.
    while (at < packed.size() && written < room) {
        const NibblePair pair = kNibblePairs[packed[at]];
        const bool is_last = at + 1 == packed.size();
        if (pair.kind != Kind::ByteFollows) give(pair.first_change);
        if (pair.kind == Kind::TwoChanges) {
            give(static_cast<std::uint8_t>(pair.both_changes - pair.first_change));
            at += 1;
            continue;
        }
        // A low escape in the last byte is the end mark; a high one there has lost its byte.
        if (!is_last) give(static_cast<std::uint8_t>(packed[at + 1] - kNoChange));
        cut = is_last && pair.kind == Kind::ByteFollows;
        at = is_last ? packed.size() : at + 2;
    }
    const std::uint64_t described =
        written + (at < packed.size() ? CountNibbles(packed.subspan(at)) : 0);
    written = std::min(written, room);
    if (described > room) return {written, Fault::TooLarge, described};
    return {written, cut || written < room ? Fault::EndsEarly : Fault::None, described};
}

} // namespace kelvo::codec
