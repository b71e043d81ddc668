#pragma once
// The coefficients of one transformed block as bytes: which are strong enough to be kept, one byte
// for each of these, runs for the others. BlockTransform puts blocks and their headers together.

#include "framework/base/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo::codec {

/// No number at all if one of the values is none; 0 for no values.
float LargestMagnitude(std::span<const float> values);

/// How the coefficients of one block become codes.
struct CoefficientCoding {
    double scale;    ///< of which a code is the multiple
    float threshold; ///< the greatest magnitude that is dropped
};

/// Takes the scale from the strongest coefficient; drops those up to `divisor` times the scale.
CoefficientCoding ChooseCoding(std::span<const float> coefficients, double divisor);

/// Bytes that WriteCodes would write; never more than coefficients.
std::size_t CountCodes(std::span<const float> coefficients, const CoefficientCoding& coding);

/// @param codes  CountCodes() bytes or more
/// @return bytes written
std::size_t WriteCodes(std::span<const float> coefficients, const CoefficientCoding& coding,
                       ByteSpan codes);

/// Makes of the coefficients what ReadCodes would make of their codes.
void Quantise(std::span<float> coefficients, const CoefficientCoding& coding);

/// What ReadCodes found.
struct ReadCoefficients {
    std::uint64_t count = 0; ///< that the codes describe; may be more than the array holds
    bool cut = false;        ///< the last run had lost its length
};

/// Any bytes may be given; coefficients that the codes do not reach, and those in runs, become 0.
ReadCoefficients ReadCodes(ByteView codes, double scale, std::span<float> array);

} // namespace kelvo::codec
