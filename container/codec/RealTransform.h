#pragma once
// The Fourier transform of real values that the lossy sound types are built on: packed, in place,
// with the published radix-2 order of operations, so that the bits are the same on every machine.
// What is done with the coefficients is BlockTransform's affair.

#include <bit>
#include <cstddef>
#include <span>

namespace kelvo::codec {

/// The smallest power of two that is not below a record length; 1 for an empty record.
constexpr std::size_t TransformSize(std::size_t record_length) {
    return std::bit_ceil(record_length);
}

/// Turns n real values into n/2 complex coefficients: element 0 is the constant term, element 1 the
/// term at n/2, then follow the real and imaginary parts of terms 1 to n/2 - 1. One value stays
/// itself. Array and butterflies are 32-bit floats, the twiddle recurrences doubles: decoded
/// samples depend on it. Any thread; allocates nothing.
/// @param array  a power of two of values
void ForwardTransform(std::span<float> array);

/// Undoes ForwardTransform up to a factor: gives n/2 times the values.
void InverseTransform(std::span<float> array);

} // namespace kelvo::codec
