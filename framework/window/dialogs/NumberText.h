#pragma once
// Numbers as the fields of a dialog show them.

namespace kelvo {

/// At most 15 characters, without a zero before the point ("12.5", "3", ".5", "-.25"); "0" for what
/// lies outside of the exponents -200 to 200.
/// @return a static buffer that the next call overwrites; UI thread only
const char* FixedNumberText(double value);

} // namespace kelvo
