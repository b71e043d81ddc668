#pragma once
// The inner loops of the real transform in two forms, one for any processor and one for AVX2; both
// give the same bits. RealTransform chooses; tests and benchmarks compare.

#include "container/codec/RealTransform.h"

#include <cstddef>
#include <span>

namespace kelvo::codec {

enum class Direction { Forward, Inverse };

/// Twiddles of consecutive butterflies, in the forward direction; the inverse one has the sines'
/// signs turned (zero stays positive), which changes no other bit.
struct Twiddles {
    const double* cosines;
    const double* sines;
};

/// Complex values lie as pairs of floats. Every kernel allows any `count`.
struct TransformKernels {
    const char* name;

    /// The two first stages of a transform of `complex_count` values (4 or more) in bit-reversed
    /// order.
    /// @param quarter_turn  the two twiddles of the second stage, the first of them 1 and 0
    void (*first_stages)(float* array, std::size_t complex_count, Twiddles quarter_turn,
                         Direction direction);

    /// In each group of 2 x `half` complex values the butterflies number `first` to `first + count
    /// - 1`, which pair the value of that number with the one `half` further on.
    void (*butterflies)(float* array, std::size_t complex_count, std::size_t half,
                        std::size_t first, std::size_t count, Twiddles twiddles,
                        Direction direction);

    /// Takes the coefficients of two interleaved real halves apart (forward) or puts them together
    /// (inverse): the pairs number `first` to `first + count - 1`, each with its mirror image at
    /// the end.
    void (*mirror_pairs)(float* array, std::size_t complex_count, std::size_t first,
                         std::size_t count, Twiddles twiddles, Direction direction);
};

extern const TransformKernels kPortableKernels;

/// Null where the processor does not know AVX2.
const TransformKernels* Avx2Kernels();

void ForwardTransform(std::span<float> array, const TransformKernels& kernels);
void InverseTransform(std::span<float> array, const TransformKernels& kernels);

} // namespace kelvo::codec
