#pragma once
// The yardstick for the transform: the packed real Fourier transform in its textbook form,
// recurrences and all, with nothing done for speed. What the fast one must agree with, bit for bit.

#include <span>

namespace kelvo::yardstick {

/// @param array  a power of two of values, 2 or more
/// @param sign   1 forward, -1 inverse (gives n/2 times the values)
void PlainRealTransform(std::span<float> array, int sign);

} // namespace kelvo::yardstick
