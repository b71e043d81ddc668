#pragma once
// Writes little-endian numbers into a span: the mirror of ByteReader, with the same sticky failure.

#include "framework/base/Bytes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace kelvo {

class ByteWriter {
public:
    explicit ByteWriter(ByteSpan bytes) : bytes_(bytes) {}

    /// False once something did not fit; nothing is written from then on.
    bool Ok() const { return ok_; }
    std::size_t Offset() const { return offset_; }
    std::size_t Remaining() const { return bytes_.size() - offset_; }
    /// What has been written so far.
    ByteView Written() const { return bytes_.first(offset_); }

    void WriteU8(std::uint8_t value) { WriteUnsigned(value, 1); }
    void WriteU16(std::uint16_t value) { WriteUnsigned(value, 2); }
    void WriteU32(std::uint32_t value) { WriteUnsigned(value, 4); }
    void WriteU64(std::uint64_t value) { WriteUnsigned(value, 8); }

    /// The low `width` bytes of a number, lowest first.
    void WriteUnsigned(std::uint64_t value, std::size_t width) {
        if (!Claim(width)) return;
        for (std::size_t i = 0; i < width; ++i) {
            bytes_[offset_++] = static_cast<std::uint8_t>(value >> (8U * i));
        }
    }
    void WriteBytes(ByteView bytes) {
        if (!Claim(bytes.size())) return;
        std::ranges::copy(bytes, bytes_.subspan(offset_).begin());
        offset_ += bytes.size();
    }

private:
    bool Claim(std::size_t count) {
        if (count > Remaining()) ok_ = false;
        return ok_;
    }

    ByteSpan bytes_;
    std::size_t offset_ = 0;
    bool ok_ = true;
};

} // namespace kelvo
