#pragma once
// The inner loops of the real transform in two forms, one for any processor and one for AVX2; both
// give the same bits. RealTransform chooses; tests and benchmarks compare.

#include "container/codec/RealTransform.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo::codec {

enum class Direction { Forward, Inverse };

/// Twiddles of consecutive butterflies, in the forward direction; the inverse one has the sines'
/// signs turned (zero stays positive), which changes no other bit.
struct Twiddles {
    const double* cosines;
    const double* sines;
};

/// Whether more butterflies follow.
enum class Stage { Inner, Last };

/// Complex values lie as pairs of floats, but between first_stages and the butterflies of the last
/// stage in whatever order suits the kernels.
struct TransformKernels {
    const char* name;
    std::size_t least_values; ///< complex values of the smallest transform they can do

    /// Puts the values into bit-reversed order and does the first two stages.
    /// @param reversed      the numbers below complex_count / 4 with their bits reversed, or null
    /// where
    ///                      no table holds them
    /// @param quarter_turn  the two twiddles of the second stage, the first of them 1 and 0
    void (*first_stages)(float* array, std::size_t complex_count, const std::uint16_t* reversed,
                         Twiddles quarter_turn, Direction direction);

    /// In each group of 2 x `half` complex values the butterflies number `first` to `first + count
    /// - 1`, which pair the value of that number with the one `half` further on.
    /// @param first, count  multiples of 4, where there are that many
    void (*butterflies)(float* array, std::size_t complex_count, std::size_t half,
                        std::size_t first, std::size_t count, Twiddles twiddles,
                        Direction direction, Stage stage);

    /// Takes the coefficients of two interleaved real halves apart (forward) or puts them together
    /// (inverse): the pairs number `first` to `first + count - 1`, each with its mirror image at
    /// the end.
    void (*mirror_pairs)(float* array, std::size_t complex_count, std::size_t first,
                         std::size_t count, Twiddles twiddles, Direction direction);
};

/// A number below `count`, a power of two, with its bits in reverse.
std::size_t ReverseBits(std::size_t number, std::size_t count);

extern const TransformKernels kPortableKernels;

/// Null where the processor does not know AVX2.
const TransformKernels* Avx2Kernels();

void ForwardTransform(std::span<float> array, const TransformKernels& kernels);
void InverseTransform(std::span<float> array, const TransformKernels& kernels);

} // namespace kelvo::codec
