#pragma once
// The yardsticks for the sound codecs: each as it is described, byte by byte, with nothing done for
// speed. What the fast coders must agree with. The decoders trust their input.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvo::yardstick {

using Bytes = std::vector<std::uint8_t>;

Bytes PlainByteGroups(const Bytes& samples);

/// Difference bytes to nibbles, and nibbles to samples; of any bytes whatever.
Bytes PlainPackNibbles(const Bytes& differences);
Bytes PlainUnpackNibbles(const Bytes& packed);

/// One transform over all samples.
Bytes PlainEncodeWhole(const Bytes& samples);
Bytes PlainDecodeWhole(const Bytes& coded, std::size_t record_length);

Bytes PlainEncodeBlocks(const Bytes& samples, std::size_t block, double divisor, bool two_pass);
Bytes PlainDecodeBlocks(const Bytes& coded, std::size_t block);

Bytes PlainEncodeVariable(const Bytes& samples);
Bytes PlainDecodeVariable(const Bytes& coded);

} // namespace kelvo::yardstick
