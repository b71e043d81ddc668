#pragma once
// Reads little-endian numbers from bytes that nobody vouches for. A failure is sticky: reads then
// give 0 and empty views, so a parser reads straight down and asks Ok() once before it uses
// anything.

#include "framework/base/Bytes.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

class ByteReader {
public:
    explicit ByteReader(ByteView bytes) : bytes_(bytes) {}

    /// False once anything was asked for that is not there.
    bool Ok() const { return ok_; }
    std::size_t Offset() const { return offset_; }
    std::size_t Remaining() const { return bytes_.size() - offset_; }

    /// Moves to an absolute offset; one beyond the end is a failure.
    void Seek(std::size_t offset) {
        if (offset > bytes_.size()) {
            ok_ = false;
        } else if (ok_) {
            offset_ = offset;
        }
    }
    void Skip(std::size_t count) {
        if (Claim(count)) offset_ += count;
    }

    std::uint8_t ReadU8() { return static_cast<std::uint8_t>(ReadUnsigned(1)); }
    std::uint16_t ReadU16() { return static_cast<std::uint16_t>(ReadUnsigned(2)); }
    std::uint32_t ReadU32() { return static_cast<std::uint32_t>(ReadUnsigned(4)); }
    std::uint64_t ReadU64() { return ReadUnsigned(8); }

    /// A little-endian number of 1 to 8 bytes.
    std::uint64_t ReadUnsigned(std::size_t width) {
        if (!Claim(width)) return 0;
        std::uint64_t value = 0;
        for (std::size_t i = width; i-- > 0;) {
            value = (value << 8U) | bytes_[offset_ + i];
        }
        offset_ += width;
        return value;
    }

    /// A view of the next bytes; empty when there are not that many.
    ByteView ReadBytes(std::size_t count) {
        if (!Claim(count)) return {};
        const ByteView view = bytes_.subspan(offset_, count);
        offset_ += count;
        return view;
    }

private:
    bool Claim(std::size_t count) {
        if (count > Remaining()) ok_ = false;
        return ok_;
    }

    ByteView bytes_;
    std::size_t offset_ = 0;
    bool ok_ = true;
};

} // namespace kelvo
