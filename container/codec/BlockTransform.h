#pragma once
// The lossy sound types: the strong coefficients of a real transform, one byte each against the
// scale of their block, and runs of dropped ones. Type 19 transforms the whole record at once,
// types 20 to 25 work in blocks of one size, type 30 chooses the size of each block. The cmprs
// stage around them is the catalogue's affair. Nothing here allocates; every function may run in
// any thread.

#include "container/codec/RealTransform.h"
#include "framework/base/Bytes.h"
#include "framework/base/Result.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace kelvo::codec {

/// How the block types 20 to 25 cut and drop.
struct TransformBlocks {
    std::size_t block =
        512; ///< samples of a block and size of its transform; a power of two of 1 to 1024
    double divisor = 10.0; ///< coefficients up to this many times the scale are dropped
    bool two_pass = true;  ///< code what the first coding decodes to once more ("bicompress")
};

inline constexpr std::size_t kLargestBlock = 1024; ///< of types 20 to 25
inline constexpr std::size_t kSmallestVariableBlock = 64;
inline constexpr double kWholeDivisor = 10.0; ///< of type 19

/// Values that the transform array needs for a record; the encoder and the decoder use it.
constexpr std::size_t WholeTransformArray(std::size_t record_length) {
    return TransformSize(record_length);
}
constexpr std::size_t TransformBlocksArray(const TransformBlocks& rule) {
    return rule.block;
}
constexpr std::size_t VariableBlocksArray(std::size_t record_length) {
    return std::max(kSmallestVariableBlock, TransformSize(record_length));
}

/// Bytes that a coded record may take at most, before the cmprs stage: a header a block, and never
/// more than one code a sample.
constexpr std::size_t LargestWholeTransform(std::size_t record_length) {
    return 16 + record_length;
}
constexpr std::size_t LargestTransformBlocks(std::size_t record_length,
                                             const TransformBlocks& rule) {
    return record_length + 12 * ((record_length + rule.block - 1) / rule.block);
}
constexpr std::size_t LargestVariableBlocks(std::size_t record_length) {
    return record_length +
           16 * ((record_length + kSmallestVariableBlock - 1) / kSmallestVariableBlock);
}

/// Type 19. @param coded  at least LargestWholeTransform(samples.size()) bytes
/// @param array  at least WholeTransformArray(samples.size()) values, of no meaning before and
/// after
/// @return bytes written
[[nodiscard]] std::size_t EncodeWholeTransform(ByteView samples, ByteSpan coded,
                                               std::span<float> array);
/// Types 20 to 25. @param coded  at least LargestTransformBlocks(samples.size(), rule) bytes
/// @param array  at least TransformBlocksArray(rule) values
/// @return bytes written
[[nodiscard]] std::size_t EncodeTransformBlocks(ByteView samples, ByteSpan coded,
                                                std::span<float> array,
                                                const TransformBlocks& rule);
/// Type 30. @param coded  at least LargestVariableBlocks(samples.size()) bytes
/// @param array  at least VariableBlocksArray(samples.size()) values
/// @return bytes written
[[nodiscard]] std::size_t EncodeVariableBlocks(ByteView samples, ByteSpan coded,
                                               std::span<float> array);

/// The decoders take the array of their encoder and the record in `samples` (its size is the record
/// length), which is left as it was from .written on. Any bytes may be given: the work is bounded
/// by the record, whatever they claim. They return EndsEarly when the stream is cut or covers less
/// than the record, TooLarge when it describes more, BadValue when it holds what no encoder writes
/// (a scale that is no number, a transform size that is no power of two or beyond the record, codes
/// beyond the transform).
Decoded DecodeWholeTransform(ByteView coded, ByteSpan samples, std::span<float> array);
Decoded DecodeTransformBlocks(ByteView coded, ByteSpan samples, std::span<float> array,
                              const TransformBlocks& rule);
Decoded DecodeVariableBlocks(ByteView coded, ByteSpan samples, std::span<float> array);

} // namespace kelvo::codec
