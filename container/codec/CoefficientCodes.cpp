#include "container/codec/CoefficientCodes.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kelvo::codec {

namespace {

// The strongest coefficient becomes this code, so that no code is ever the mark of a run.
constexpr int kStrongestCode = 124;
constexpr std::uint8_t kRunMark = 0x7E;
static_assert(kStrongestCode < kRunMark);

constexpr std::size_t kLongestRun = 255;

constexpr std::int32_t kMagnitudeBits = 0x7FFFFFFF;

/// The greatest float that is not above a positive value: a float exceeds one if it exceeds the
/// other.
float FloatNotAbove(double value) {
    const auto rounded = static_cast<float>(value);
    if (static_cast<double>(rounded) <= value) return rounded;
    return std::nextafter(rounded, 0.0F);
}

/// Number of the first strong coefficient from `at` on, or how many there are.
std::size_t NextStrong(std::span<const float> coefficients, std::size_t at, float threshold) {
    const float* const values = coefficients.data();
    const std::size_t count = coefficients.size();
#if defined(__SSE2__)
    const __m128 magnitude = _mm_castsi128_ps(_mm_set1_epi32(kMagnitudeBits));
    const __m128 limit = _mm_set1_ps(threshold);
    for (; count - at >= 8; at += 8) {
        const __m128 front = _mm_and_ps(_mm_loadu_ps(values + at), magnitude);
        const __m128 back = _mm_and_ps(_mm_loadu_ps(values + at + 4), magnitude);
        const int strong = _mm_movemask_ps(_mm_cmpgt_ps(front, limit)) |
                           _mm_movemask_ps(_mm_cmpgt_ps(back, limit)) << 4;
        if (strong != 0) {
            return at + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(strong)));
        }
    }
#endif
    while (at < count && !(std::abs(values[at]) > threshold)) {
        ++at;
    }
    return at;
}

/// Never 0 for a coefficient that a divisor above 1 kept, and within +-124 of it.
std::int8_t CodeOf(float coefficient, double scale) {
    return static_cast<std::int8_t>(coefficient / scale);
}

/// A run of 255 stands alone; what is left of one coefficient is a zero code and no run.
constexpr std::size_t RunBytes(std::size_t length) {
    return length / kLongestRun * 2 + std::min<std::size_t>(length % kLongestRun, 2);
}

std::size_t WriteRun(std::size_t length, std::uint8_t* codes) {
    std::size_t written = 0;
    for (; length >= kLongestRun; length -= kLongestRun) {
        codes[written++] = kRunMark;
        codes[written++] = kLongestRun;
    }
    if (length == 1) {
        codes[written++] = 0;
    } else if (length > 1) {
        codes[written++] = kRunMark;
        codes[written++] = static_cast<std::uint8_t>(length);
    }
    return written;
}

} // namespace

float LargestMagnitude(std::span<const float> values) {
    // Magnitudes in order are bit patterns in order, and the largest of integers is found many at a
    // time.
    std::int32_t largest = 0;
    const float* const at = values.data();
    for (std::size_t i = 0; i < values.size(); ++i) {
        largest = std::max(largest, std::bit_cast<std::int32_t>(at[i]) & kMagnitudeBits);
    }
    return std::bit_cast<float>(largest);
}

CoefficientCoding ChooseCoding(std::span<const float> coefficients, double divisor) {
    const auto strongest = static_cast<double>(LargestMagnitude(coefficients));
    // Old films were scaled by 1/124 in 80-bit arithmetic. A float divided by 124 = 4 x 31 leaves a
    // 31st and so never lies next to the middle between two doubles: plain division rounds to the
    // same scale. Multiplying by the double nearest to 1/124 does not.
    const double scale = strongest >= 1.0 ? strongest / kStrongestCode : 1.0;
    return {scale, FloatNotAbove(scale * divisor)};
}

std::size_t CountCodes(std::span<const float> coefficients, const CoefficientCoding& coding) {
    std::size_t bytes = 0;
    std::size_t at = 0;
    for (;;) {
        const std::size_t strong = NextStrong(coefficients, at, coding.threshold);
        bytes += RunBytes(strong - at);
        if (strong == coefficients.size()) return bytes;
        bytes += 1;
        at = strong + 1;
    }
}

std::size_t WriteCodes(std::span<const float> coefficients, const CoefficientCoding& coding,
                       ByteSpan codes) {
    assert(codes.size() >= CountCodes(coefficients, coding));
    std::size_t written = 0;
    std::size_t at = 0;
    for (;;) {
        const std::size_t strong = NextStrong(coefficients, at, coding.threshold);
        written += WriteRun(strong - at, codes.data() + written);
        if (strong == coefficients.size()) return written;
        codes[written++] = static_cast<std::uint8_t>(CodeOf(coefficients[strong], coding.scale));
        at = strong + 1;
    }
}

void Quantise(std::span<float> coefficients, const CoefficientCoding& coding) {
    std::size_t at = 0;
    for (;;) {
        const std::size_t strong = NextStrong(coefficients, at, coding.threshold);
        std::ranges::fill(coefficients.subspan(at, strong - at), 0.0F);
        if (strong == coefficients.size()) return;
        coefficients[strong] =
            static_cast<float>(CodeOf(coefficients[strong], coding.scale) * coding.scale);
        at = strong + 1;
    }
}

ReadCoefficients ReadCodes(ByteView codes, double scale, std::span<float> array) {
    std::ranges::fill(array, 0.0F);
    ReadCoefficients read;
    for (std::size_t i = 0; i < codes.size(); ++i) {
        if (codes[i] == kRunMark) {
            if (++i == codes.size()) {
                read.cut = true;
                break;
            }
            read.count += codes[i];
        } else {
            const auto code = static_cast<std::int8_t>(codes[i]);
            if (read.count < array.size()) {
                array[static_cast<std::size_t>(read.count)] = static_cast<float>(code * scale);
            }
            ++read.count;
        }
    }
    return read;
}

} // namespace kelvo::codec
