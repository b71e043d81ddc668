#include "container/codec/RealTransform.h"

#include "container/codec/RealTransformKernels.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <utility>

namespace kelvo::codec {

namespace {

// These two constants differ from twice each other in their last bits, and those bits are heard.
constexpr double kHalfTurn = 3.141592653589793;
constexpr double kFullTurn = 6.28318530717959;

/// Walks around the unit circle in equal steps. The rounding of every step is part of the format.
struct TwiddleWalk {
    double cosine = 1.0;
    double sine = 0.0;
    double cosine_step; ///< cos(step) - 1
    double sine_step;

    explicit TwiddleWalk(double step) {
        const double half_sine = std::sin(0.5 * step);
        cosine_step = -2.0 * half_sine * half_sine;
        sine_step = std::sin(step);
    }
    void Advance() {
        const double previous = cosine;
        cosine = previous * cosine_step - sine * sine_step + previous;
        sine = sine * cosine_step + previous * sine_step + sine;
    }
};

/// The walk of the butterflies that pair values `half` apart.
TwiddleWalk ButterflyWalk(std::size_t half) {
    return TwiddleWalk{kFullTurn / static_cast<double>(2 * half)};
}
/// The walk of the mirror pairs of a transform of `complex_count` values.
TwiddleWalk MirrorWalk(std::size_t complex_count) {
    return TwiddleWalk{kHalfTurn / static_cast<double>(complex_count)};
}

// Tables serve transforms up to this size; it covers a second and a half of 44100 Hz. Larger ones,
// which only an odd file asks for, walk as they go, so memory stays bounded whatever a file claims.
constexpr std::size_t kLargestTabled = 65536;

/// Tables for every size at once, each at the offset that its own length gives. Pages that no
/// transform needed are never touched.
struct Tables {
    static constexpr std::size_t kCount = kLargestTabled / 2;
    std::array<double, kCount> butterfly_cosines; ///< those of `half` at offset `half`
    std::array<double, kCount> butterfly_sines;
    std::array<double, kCount> mirror_cosines; ///< those of q mirror pairs at offset q
    std::array<double, kCount> mirror_sines;
    std::array<std::pair<std::uint16_t, std::uint16_t>, kCount> swaps; ///< see SwapTable

    std::mutex making;
    std::atomic<std::size_t> prepared{1}; ///< transforms up to this size can run
};

constinit Tables tables{};

std::size_t ReverseBits(std::size_t number, std::size_t count) {
    std::size_t reversed = 0;
    for (std::size_t bit = 1; bit < count; bit <<= 1U) {
        reversed = (reversed << 1U) | (number & 1U);
        number >>= 1U;
    }
    return reversed;
}

/// Calls swap(i, j) for every pair of numbers below count, a power of two, that are each other's
/// mirror image.
template <class Swap>
void ForEachMirrored(std::size_t count, Swap swap) {
    for (std::size_t i = 1; i < count; ++i) {
        const std::size_t j = ReverseBits(i, count);
        if (j > i) swap(i, j);
    }
}

/// Where the swaps for `complex_count` values lie. There are as many as numbers that are no
/// palindrome in binary, halved: always fewer than complex_count / 2.
std::size_t SwapTable(std::size_t complex_count) {
    return complex_count / 2;
}
std::size_t SwapCount(std::size_t complex_count) {
    const auto bits = static_cast<unsigned>(std::countr_zero(complex_count));
    return (complex_count - (std::size_t{1} << ((bits + 1) / 2))) / 2;
}

void MakeTables(std::size_t size) {
    const std::size_t complex_count = size / 2;
    const std::size_t half = complex_count / 2;
    if (half == 0) return;
    TwiddleWalk butterfly = ButterflyWalk(half);
    TwiddleWalk mirror = MirrorWalk(complex_count);
    for (std::size_t i = 0; i < half; ++i) {
        tables.butterfly_cosines[half + i] = butterfly.cosine;
        tables.butterfly_sines[half + i] = butterfly.sine;
        butterfly.Advance();
        tables.mirror_cosines[half + i] = mirror.cosine;
        tables.mirror_sines[half + i] = mirror.sine;
        mirror.Advance();
    }
    std::size_t at = SwapTable(complex_count);
    ForEachMirrored(complex_count, [&](std::size_t i, std::size_t j) {
        tables.swaps[at++] = {static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(j)};
    });
    assert(at == SwapTable(complex_count) + SwapCount(complex_count));
}

void PrepareTables(std::size_t size) {
    size = std::min(size, kLargestTabled);
    if (tables.prepared.load() >= size) return;
    const std::lock_guard lock{tables.making};
    for (std::size_t next = 2 * tables.prepared.load(); next <= size; next *= 2) {
        MakeTables(next);
        tables.prepared.store(next);
    }
}

void SwapComplex(float* array, std::size_t i, std::size_t j) {
    std::swap(array[2 * i], array[2 * j]);
    std::swap(array[2 * i + 1], array[2 * j + 1]);
}

void ReverseOrder(float* array, std::size_t complex_count) {
    if (2 * complex_count > kLargestTabled) {
        ForEachMirrored(complex_count,
                        [&](std::size_t i, std::size_t j) { SwapComplex(array, i, j); });
        return;
    }
    const auto* const swaps = tables.swaps.data() + SwapTable(complex_count);
    const std::size_t count = SwapCount(complex_count);
    for (std::size_t n = 0; n < count; ++n) {
        SwapComplex(array, swaps[n].first, swaps[n].second);
    }
}

/// Calls work(first, count, twiddles) until `count` twiddles of a walk are used up, for those that
/// no table holds.
template <class Work>
void WalkInPieces(TwiddleWalk walk, std::size_t count, Work work) {
    constexpr std::size_t kPiece = 256;
    std::array<double, kPiece> cosines;
    std::array<double, kPiece> sines;
    for (std::size_t first = 0; first < count; first += kPiece) {
        const std::size_t piece = std::min(kPiece, count - first);
        for (std::size_t i = 0; i < piece; ++i) {
            cosines[i] = walk.cosine;
            sines[i] = walk.sine;
            walk.Advance();
        }
        work(first, piece, Twiddles{cosines.data(), sines.data()});
    }
}

Twiddles TabledButterfly(std::size_t half) {
    return {tables.butterfly_cosines.data() + half, tables.butterfly_sines.data() + half};
}

void ComplexTransform(float* array, std::size_t complex_count, Direction direction,
                      const TransformKernels& kernels) {
    ReverseOrder(array, complex_count);
    std::size_t half = 1;
    if (complex_count >= 4) {
        kernels.first_stages(array, complex_count, TabledButterfly(2), direction);
        half = 4;
    }
    for (; half < complex_count; half *= 2) {
        if (2 * half <= kLargestTabled / 2) {
            kernels.butterflies(array, complex_count, half, 0, half, TabledButterfly(half),
                                direction);
            continue;
        }
        WalkInPieces(ButterflyWalk(half), half,
                     [&](std::size_t first, std::size_t count, Twiddles twiddles) {
                         kernels.butterflies(array, complex_count, half, first, count, twiddles,
                                             direction);
                     });
    }
}

void MirrorPairs(float* array, std::size_t complex_count, Direction direction,
                 const TransformKernels& kernels) {
    const std::size_t pairs = complex_count / 2; // of which number 0 is no pair
    if (pairs < 2) return;
    if (2 * complex_count <= kLargestTabled) {
        kernels.mirror_pairs(
            array, complex_count, 1, pairs - 1,
            {tables.mirror_cosines.data() + pairs + 1, tables.mirror_sines.data() + pairs + 1},
            direction);
        return;
    }
    TwiddleWalk walk = MirrorWalk(complex_count);
    walk.Advance();
    WalkInPieces(walk, pairs - 1, [&](std::size_t first, std::size_t count, Twiddles twiddles) {
        kernels.mirror_pairs(array, complex_count, 1 + first, count, twiddles, direction);
    });
}

const TransformKernels& BestKernels() {
    static const TransformKernels* const best = Avx2Kernels();
    return best != nullptr ? *best : kPortableKernels;
}

} // namespace

void ForwardTransform(std::span<float> array, const TransformKernels& kernels) {
    assert(std::has_single_bit(array.size()));
    if (array.size() < 2) return;
    PrepareTables(array.size());
    const std::size_t complex_count = array.size() / 2;
    ComplexTransform(array.data(), complex_count, Direction::Forward, kernels);
    MirrorPairs(array.data(), complex_count, Direction::Forward, kernels);
    const float constant = array[0];
    array[0] = constant + array[1];
    array[1] = constant - array[1];
}

void InverseTransform(std::span<float> array, const TransformKernels& kernels) {
    assert(std::has_single_bit(array.size()));
    if (array.empty()) return;
    const float constant = array[0];
    if (array.size() == 1) {
        array[0] = 0.5F * constant;
        return;
    }
    PrepareTables(array.size());
    const std::size_t complex_count = array.size() / 2;
    MirrorPairs(array.data(), complex_count, Direction::Inverse, kernels);
    array[0] = 0.5F * (constant + array[1]);
    array[1] = 0.5F * (constant - array[1]);
    ComplexTransform(array.data(), complex_count, Direction::Inverse, kernels);
}

void ForwardTransform(std::span<float> array) {
    ForwardTransform(array, BestKernels());
}

void InverseTransform(std::span<float> array) {
    InverseTransform(array, BestKernels());
}

} // namespace kelvo::codec
