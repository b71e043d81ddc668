#pragma once
// How numbers stand in the controls of a dialog.

namespace kelvo {

/// 15 significant digits in at most 15 characters, without superfluous zeros and without a zero
/// before the point: 12.5, 3, .5, -.25. Beyond 10 to the power of 200 either way it is "0".
/// @return one static buffer, which the next call overwrites; UI thread only
const char* FixedNumberText(double value);

/// So many significant digits (17 at most), as short as they allow: 0.5, 1e+20.
/// @return one static buffer, which the next call overwrites; UI thread only
const char* SignificantDigitsText(double value, int digits);

} // namespace kelvo
