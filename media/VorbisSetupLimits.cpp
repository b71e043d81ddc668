#include "media/VorbisSetupLimits.h"

#include <ogg/ogg.h>

#include <algorithm>
#include <bit>

namespace kelvo::vorbis_setup {

namespace {

constexpr long kCodebookMark = 0x564342;
constexpr int kPacketNameBits = 7 * 8;

/// Reads bits, lowest first, and remembers that it once ran out of them.
class BitReader {
public:
    explicit BitReader(ByteView bytes) {
        // The library never writes through the pointer of a reader.
        oggpack_readinit(&bits_, const_cast<unsigned char*>(bytes.data()),
                         static_cast<int>(bytes.size()));
    }
    bool Ok() const { return ok_; }
    std::uint32_t Read(int count) {
        if (!ok_) return 0;
        if (count == 32) {
            const std::uint32_t low = Read(16);
            return low | (Read(16) << 16U);
        }
        const long value = oggpack_read(&bits_, count);
        if (value < 0) {
            ok_ = false;
            return 0;
        }
        return static_cast<std::uint32_t>(value);
    }

private:
    oggpack_buffer bits_{};
    bool ok_ = true;
};

/// The largest number whose dim-th power does not pass `entries`: how many values of a lattice.
std::uint32_t LatticeValues(std::uint32_t entries, std::uint32_t dimensions) {
    const auto fits = [=](std::uint64_t base) {
        std::uint64_t power = 1;
        for (std::uint32_t i = 0; i < dimensions && base > 1; ++i) {
            power *= base;
            if (power > entries) return false;
        }
        return power <= entries;
    };
    if (dimensions == 1) return entries;
    std::uint32_t values = 0;
    while (fits(std::uint64_t{values} + 1)) {
        ++values;
    }
    return values;
}

void SkipLengths(BitReader& bits, std::uint32_t entries) {
    const bool ordered = bits.Read(1) != 0;
    if (ordered) {
        bits.Read(5);
        for (std::uint32_t i = 0; i < entries && bits.Ok();) {
            const std::uint32_t run = bits.Read(static_cast<int>(std::bit_width(entries - i)));
            if (run > entries - i) return;
            i += run;
        }
        return;
    }
    const bool sparse = bits.Read(1) != 0;
    for (std::uint32_t i = 0; i < entries && bits.Ok(); ++i) {
        if (!sparse || bits.Read(1) != 0) bits.Read(5);
    }
}

/// @return false when the codebook cannot be
bool CountCodebook(BitReader& bits, CodebookTotals& totals) {
    if (bits.Read(24) != kCodebookMark) return false;
    const std::uint32_t dimensions = bits.Read(16);
    const std::uint32_t entries = bits.Read(24);
    totals.entries += entries;
    totals.largest = std::max(totals.largest, entries);
    // The decoder's search for the lattice never ends without a dimension.
    if (dimensions == 0 || entries > kMostEntriesOfOne || totals.entries > kMostEntries) {
        return false;
    }
    SkipLengths(bits, entries);
    const std::uint32_t map_type = bits.Read(4);
    if (map_type == 0) return bits.Ok();
    if (map_type > 2) return false;
    totals.values += std::uint64_t{entries} * dimensions;
    if (totals.values > kMostValues) return false;
    bits.Read(32);
    bits.Read(32);
    const int value_bits = static_cast<int>(bits.Read(4)) + 1;
    bits.Read(1);
    const std::uint64_t values =
        map_type == 1 ? LatticeValues(entries, dimensions) : std::uint64_t{entries} * dimensions;
    for (std::uint64_t i = 0; i < values && bits.Ok(); ++i) {
        bits.Read(value_bits);
    }
    return bits.Ok();
}

} // namespace

CodebookTotals CountCodebooks(ByteView packet) {
    CodebookTotals totals;
    BitReader bits{packet};
    for (int skipped = 0; skipped < kPacketNameBits; skipped += 8) {
        bits.Read(8);
    }
    const std::uint32_t count = bits.Read(8) + 1;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!bits.Ok() || !CountCodebook(bits, totals)) return totals;
    }
    totals.readable = bits.Ok();
    return totals;
}

bool TablesStaySmall(ByteView packet) {
    return CountCodebooks(packet).readable;
}

} // namespace kelvo::vorbis_setup
