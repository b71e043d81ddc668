#include "container/codec/BlockTransform.h"

#include "container/codec/CoefficientCodes.h"
#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"

#include <array>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>

namespace kelvo::codec {

namespace {

// Every block begins with its scale, a double. What follows, all of 32 bits: in type 19 the samples
// and a fifth of them (written, never read), in types 20 to 25 the length of the codes, in type 30
// also the size.
constexpr std::size_t kWholeHeader = 16;
constexpr std::size_t kBlockHeader = 12;
constexpr std::size_t kVariableHeader = 16;

// 8-bit samples give no coefficient beyond 2^38 in a record that fits into a file. A greater scale
// is damage, and without it no decoded value leaves the range of the floats.
constexpr double kLargestScale = 1099511627776.0;

constexpr float kCentre = 127.0F;

constexpr double kInt64Limit = 9223372036854775808.0;
constexpr double kInt32Safe = 2147480000.0; ///< with the centre added it still fits into 32 bits

void LoadBlock(ByteView samples, std::span<float> array) {
    const std::uint8_t* const from = samples.data();
    float* const to = array.data();
    for (std::size_t i = 0; i < samples.size(); ++i) {
        to[i] = static_cast<float>(from[i]) - kCentre;
    }
    std::ranges::fill(array.subspan(samples.size()), 0.0F);
    ForwardTransform(array);
}

/// An overshoot wraps, as it always did; what no 64-bit integer holds becomes 0.
std::uint8_t LowByteOf(double value) {
    if (!(std::abs(value) < kInt64Limit)) return 0;
    return static_cast<std::uint8_t>(static_cast<std::int64_t>(value));
}

void StoreBlock(std::span<float> array, ByteSpan samples) {
    InverseTransform(array);
    const float* const from = array.data();
    std::uint8_t* const to = samples.data();
    const double factor = 2.0 / static_cast<double>(array.size());
    // What fits into 32 bits, and all honest sound does, is cut many at a time.
    if (LargestMagnitude(array.first(samples.size())) * factor < kInt32Safe) {
        for (std::size_t i = 0; i < samples.size(); ++i) {
            to[i] = static_cast<std::uint8_t>(
                static_cast<std::int32_t>(from[i] * factor + double{kCentre}));
        }
        return;
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
        to[i] = LowByteOf(from[i] * factor + double{kCentre});
    }
}

void WriteDouble(ByteWriter& writer, double value) {
    writer.WriteU64(std::bit_cast<std::uint64_t>(value));
}

double ReadDouble(ByteReader& reader) {
    return std::bit_cast<double>(reader.ReadU64());
}

/// Codes what the samples would decode to after a first coding. @return bytes written
std::size_t EncodeBlock(ByteView samples, ByteSpan coded, std::span<float> array,
                        const TransformBlocks& rule) {
    const std::span<float> coefficients = array.first(samples.size());
    LoadBlock(samples, array);
    CoefficientCoding coding = ChooseCoding(coefficients, rule.divisor);
    if (rule.two_pass) {
        std::array<std::uint8_t, kLargestBlock> first_pass;
        const ByteSpan decoded = ByteSpan{first_pass}.first(samples.size());
        Quantise(coefficients, coding);
        std::ranges::fill(array.subspan(samples.size()), 0.0F);
        StoreBlock(array, decoded);
        LoadBlock(decoded, array);
        coding = ChooseCoding(coefficients, rule.divisor);
    }
    const std::size_t length = WriteCodes(coefficients, coding, coded.subspan(kBlockHeader));
    ByteWriter header{coded.first(kBlockHeader)};
    WriteDouble(header, coding.scale);
    header.WriteU32(static_cast<std::uint32_t>(length));
    return kBlockHeader + length;
}

/// The divisor of a block of type 30.
double VariableDivisor(std::size_t size) {
    switch (size) {
    case 64:
    case 128:
        return 2.0;
    case 256:
    case 512:
        return 4.0;
    case 1024:
    case 2048:
        return 5.0;
    default:
        return 3.0;
    }
}

struct VariableBlock {
    std::size_t size = 0;   ///< of the transform
    std::size_t stored = 1; ///< bytes of header and codes

    bool ImprovesOn(const VariableBlock& other) const {
        return std::uint64_t{size} * other.stored > std::uint64_t{other.size} * stored;
    }
};

/// Writes the samples as a block of this size if that stores more samples a byte than the best so
/// far, which `coded` then held. @return the one that `coded` holds now
VariableBlock TryVariableBlock(ByteView samples, std::size_t size, const VariableBlock& best,
                               ByteSpan coded, std::span<float> array) {
    LoadBlock(samples, array.first(size));
    const std::span<const float> coefficients = array.first(samples.size());
    const CoefficientCoding coding = ChooseCoding(coefficients, VariableDivisor(size));
    const std::size_t length = CountCodes(coefficients, coding);
    const VariableBlock tried{size, kVariableHeader + length};
    if (!tried.ImprovesOn(best)) return best;
    ByteWriter header{coded.first(kVariableHeader)};
    WriteDouble(header, coding.scale);
    header.WriteU32(static_cast<std::uint32_t>(length));
    header.WriteU32(static_cast<std::uint32_t>(size));
    WriteCodes(coefficients, coding, coded.subspan(kVariableHeader));
    return tried;
}

/// A scale that is not is taken as 0: silence of the right length is better than noise, and what
/// follows keeps its place.
bool IsUsable(double scale) {
    return std::abs(scale) <= kLargestScale;
}

/// Decodes the blocks of a record one after the other and keeps account of damage.
class BlockDecoder {
public:
    BlockDecoder(ByteSpan samples, std::span<float> array)
        : rest_(samples), length_(samples.size()), array_(array) {}

    /// The first damage is the one reported.
    void Note(Fault fault) {
        if (fault_ == Fault::None) fault_ = fault;
    }

    /// @param size  of the transform: a power of two, not above the array
    void Add(ByteView codes, double scale, std::size_t size) {
        if (!IsUsable(scale)) Note(Fault::BadValue);
        // Honest blocks cover the record before their sizes add up beyond it. Of others no more are
        // transformed, only counted, or a small stream could claim hours of work.
        const std::span<float> array = array_.first(reach_ < length_ ? size : 0);
        reach_ += size;
        const ReadCoefficients read = ReadCodes(codes, IsUsable(scale) ? scale : 0.0, array);
        if (read.cut) Note(Fault::EndsEarly);
        if (read.count > size) Note(Fault::BadValue);
        described_ += read.count;
        const auto covered = static_cast<std::size_t>(
            std::min<std::uint64_t>({read.count, array.size(), rest_.size()}));
        if (covered == 0) return;
        StoreBlock(array, rest_.first(covered));
        rest_ = rest_.subspan(covered);
    }

    Decoded Finish() const {
        const std::size_t written = length_ - rest_.size();
        if (described_ > length_) return {written, Fault::TooLarge, described_};
        if (fault_ != Fault::None) return {written, fault_, described_};
        return {written, rest_.empty() ? Fault::None : Fault::EndsEarly, described_};
    }

private:
    ByteSpan rest_;
    std::size_t length_;
    std::span<float> array_;
    std::uint64_t described_ = 0;
    std::uint64_t reach_ = 0; ///< sum of the sizes of the transforms
    Fault fault_ = Fault::None;
};

/// The codes of a block, or what is there of them.
ByteView ReadBlockCodes(ByteReader& reader, std::size_t length, BlockDecoder& decoder) {
    if (length > reader.Remaining()) decoder.Note(Fault::EndsEarly);
    return reader.ReadBytes(std::min(length, reader.Remaining()));
}

} // namespace

std::size_t EncodeWholeTransform(ByteView samples, ByteSpan coded, std::span<float> array) {
    const std::size_t size = WholeTransformArray(samples.size());
    const bool fits = coded.size() >= LargestWholeTransform(samples.size()) && array.size() >= size;
    assert(fits);
    if (!fits) return 0;
    LoadBlock(samples, array.first(size));
    const std::span<const float> coefficients = array.first(samples.size());
    const CoefficientCoding coding = ChooseCoding(coefficients, kWholeDivisor);
    ByteWriter header{coded.first(kWholeHeader)};
    WriteDouble(header, coding.scale);
    header.WriteU32(static_cast<std::uint32_t>(samples.size()));
    header.WriteU32(static_cast<std::uint32_t>(samples.size() / 5));
    return kWholeHeader + WriteCodes(coefficients, coding, coded.subspan(kWholeHeader));
}

std::size_t EncodeTransformBlocks(ByteView samples, ByteSpan coded, std::span<float> array,
                                  const TransformBlocks& rule) {
    const bool fits = std::has_single_bit(rule.block) && rule.block <= kLargestBlock &&
                      coded.size() >= LargestTransformBlocks(samples.size(), rule) &&
                      array.size() >= rule.block;
    assert(fits);
    if (!fits) return 0;
    std::size_t written = 0;
    while (!samples.empty()) {
        const ByteView block = samples.first(std::min(rule.block, samples.size()));
        written += EncodeBlock(block, coded.subspan(written), array.first(rule.block), rule);
        samples = samples.subspan(block.size());
    }
    return written;
}

std::size_t EncodeVariableBlocks(ByteView samples, ByteSpan coded, std::span<float> array) {
    const bool fits = coded.size() >= LargestVariableBlocks(samples.size()) &&
                      array.size() >= VariableBlocksArray(samples.size());
    assert(fits);
    if (!fits) return 0;
    std::size_t written = 0;
    while (!samples.empty()) {
        const ByteSpan room = coded.subspan(written);
        VariableBlock best{};
        std::size_t size = kSmallestVariableBlock;
        do {
            best = TryVariableBlock(samples.first(std::min(size, samples.size())), size, best, room,
                                    array);
            size *= 2;
        } while (size < samples.size());
        written += best.stored;
        samples = samples.subspan(std::min(best.size, samples.size()));
    }
    return written;
}

Decoded DecodeWholeTransform(ByteView coded, ByteSpan samples, std::span<float> array) {
    const std::size_t size = WholeTransformArray(samples.size());
    assert(array.size() >= size);
    if (array.size() < size) return {0, Fault::TooLarge, 0};
    ByteReader reader{coded};
    const double scale = ReadDouble(reader);
    const std::size_t claimed = reader.ReadU32();
    reader.Skip(sizeof(std::uint32_t));
    if (!reader.Ok()) return {0, Fault::EndsEarly, 0};
    const ReadCoefficients read = ReadCodes(reader.ReadBytes(reader.Remaining()),
                                            IsUsable(scale) ? scale : 0.0, array.first(size));
    // The header says how many samples there are. Where the codes stop short the rest of the
    // coefficients is 0, and all samples are still worth having.
    const std::size_t written = std::min(claimed, samples.size());
    StoreBlock(array.first(size), samples.first(written));
    const auto fault = [&] {
        if (claimed > samples.size()) return Fault::TooLarge;
        if (claimed < samples.size() || read.cut || read.count < claimed) return Fault::EndsEarly;
        return read.count > claimed || !IsUsable(scale) ? Fault::BadValue : Fault::None;
    };
    return {written, fault(), claimed};
}

Decoded DecodeTransformBlocks(ByteView coded, ByteSpan samples, std::span<float> array,
                              const TransformBlocks& rule) {
    const bool fits = std::has_single_bit(rule.block) && array.size() >= rule.block;
    assert(fits);
    if (!fits) return {0, Fault::TooLarge, 0};
    ByteReader reader{coded};
    BlockDecoder decoder{samples, array};
    while (reader.Remaining() > 0) {
        const double scale = ReadDouble(reader);
        const std::size_t length = reader.ReadU32();
        if (!reader.Ok()) {
            decoder.Note(Fault::EndsEarly);
            break;
        }
        decoder.Add(ReadBlockCodes(reader, length, decoder), scale, rule.block);
    }
    return decoder.Finish();
}

Decoded DecodeVariableBlocks(ByteView coded, ByteSpan samples, std::span<float> array) {
    const std::size_t largest = VariableBlocksArray(samples.size());
    assert(array.size() >= largest);
    if (array.size() < largest) return {0, Fault::TooLarge, 0};
    ByteReader reader{coded};
    BlockDecoder decoder{samples, array};
    while (reader.Remaining() > 0) {
        const double scale = ReadDouble(reader);
        const std::size_t length = reader.ReadU32();
        const std::size_t size = reader.ReadU32();
        if (!reader.Ok()) {
            decoder.Note(Fault::EndsEarly);
            break;
        }
        if (!std::has_single_bit(size) || size < kSmallestVariableBlock || size > largest) {
            decoder.Note(Fault::BadValue);
            break;
        }
        decoder.Add(ReadBlockCodes(reader, length, decoder), scale, size);
    }
    return decoder.Finish();
}

} // namespace kelvo::codec
