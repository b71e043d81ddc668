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

namespace kelvo::codec {

namespace {

// The full turn is not quite twice the half turn: their last digits reach the decoded samples.
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
    /// The numbers below q with their bits reversed, at offset q.
    std::array<std::uint16_t, kCount / 2> reversed;

    std::mutex making;
    std::atomic<std::size_t> prepared{1}; ///< transforms up to this size can run
};

constinit Tables tables{};

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
    const std::size_t quarter = complex_count / 4;
    for (std::size_t i = 0; i < quarter; ++i) {
        tables.reversed[quarter + i] = static_cast<std::uint16_t>(ReverseBits(i, quarter));
    }
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

constexpr std::size_t kPiece = 256;

/// Calls work(first, count, twiddles) until `count` twiddles of a walk are used up, for those that
/// no table holds.
template <class Work>
void WalkInPieces(TwiddleWalk walk, std::size_t count, Work work) {
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
    if (complex_count == 1) return;
    if (complex_count == 2) {
        kernels.butterflies(array, 2, 1, 0, 1, TabledButterfly(1), direction, Stage::Last);
        return;
    }
    const std::size_t quarter = complex_count / 4;
    const bool tabled = 2 * complex_count <= kLargestTabled;
    kernels.first_stages(array, complex_count, tabled ? tables.reversed.data() + quarter : nullptr,
                         TabledButterfly(2), direction);
    for (std::size_t half = 4; half < complex_count; half *= 2) {
        const Stage stage = 2 * half == complex_count ? Stage::Last : Stage::Inner;
        if (4 * half <= kLargestTabled) {
            kernels.butterflies(array, complex_count, half, 0, half, TabledButterfly(half),
                                direction, stage);
            continue;
        }
        WalkInPieces(ButterflyWalk(half), half,
                     [&](std::size_t first, std::size_t count, Twiddles twiddles) {
                         kernels.butterflies(array, complex_count, half, first, count, twiddles,
                                             direction, stage);
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

const TransformKernels& KernelsFor(std::size_t complex_count, const TransformKernels& given) {
    return complex_count < given.least_values ? kPortableKernels : given;
}

const TransformKernels& BestKernels() {
    static const TransformKernels* const best = Avx2Kernels();
    return best != nullptr ? *best : kPortableKernels;
}

} // namespace

std::size_t ReverseBits(std::size_t number, std::size_t count) {
    std::size_t reversed = 0;
    for (std::size_t bit = 1; bit < count; bit <<= 1U) {
        reversed = (reversed << 1U) | (number & 1U);
        number >>= 1U;
    }
    return reversed;
}

void ForwardTransform(std::span<float> array, const TransformKernels& given) {
    assert(std::has_single_bit(array.size()));
    if (array.size() < 2 || !std::has_single_bit(array.size())) return;
    PrepareTables(array.size());
    const std::size_t complex_count = array.size() / 2;
    const TransformKernels& kernels = KernelsFor(complex_count, given);
    ComplexTransform(array.data(), complex_count, Direction::Forward, kernels);
    MirrorPairs(array.data(), complex_count, Direction::Forward, kernels);
    const float constant = array[0];
    array[0] = constant + array[1];
    array[1] = constant - array[1];
}

void InverseTransform(std::span<float> array, const TransformKernels& given) {
    assert(std::has_single_bit(array.size()));
    if (!std::has_single_bit(array.size())) return;
    const float constant = array[0];
    if (array.size() == 1) {
        array[0] = 0.5F * constant;
        return;
    }
    PrepareTables(array.size());
    const std::size_t complex_count = array.size() / 2;
    const TransformKernels& kernels = KernelsFor(complex_count, given);
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
