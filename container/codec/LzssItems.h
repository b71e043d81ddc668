#pragma once
// How the items of a cmprs stream are laid down: shared by the coders that find the matches.

#include "container/codec/Lzss.h"

#include <cstddef>
#include <cstdint>

namespace kelvo::codec {

/// A string found in the ring, and where.
struct LzssMatch {
    std::uint32_t position = 0; ///< in the ring, below kLzssRing
    std::uint32_t length = 0;
};

/// Writes items in groups of eight behind their flag byte. The caller vouches for LzssWorstCase
/// bytes.
class LzssItemWriter {
public:
    explicit LzssItemWriter(std::uint8_t* stream) : begin_(stream), next_(stream) {}

    void WriteLiteral(std::uint8_t byte) {
        OpenGroup();
        flags_ |= flag_;
        *next_++ = byte;
        CloseItem();
    }
    void WriteMatch(LzssMatch match) {
        OpenGroup();
        next_[0] = static_cast<std::uint8_t>(match.position);
        next_[1] = static_cast<std::uint8_t>(((match.position >> 4U) & 0xF0U) |
                                             (match.length - kLzssShortestMatch));
        next_ += kLzssMatchBytes;
        CloseItem();
    }
    /// Ends the last group. @return the bytes written
    std::size_t Finish() {
        if (flag_ != 1) *flag_byte_ = static_cast<std::uint8_t>(flags_);
        return static_cast<std::size_t>(next_ - begin_);
    }

private:
    void OpenGroup() {
        if (flag_ == 1) flag_byte_ = next_++;
    }
    void CloseItem() {
        flag_ <<= 1U;
        if (flag_ != 1U << kLzssItemsPerGroup) return;
        *flag_byte_ = static_cast<std::uint8_t>(flags_);
        flags_ = 0;
        flag_ = 1;
    }

    std::uint8_t* begin_;
    std::uint8_t* next_;
    std::uint8_t* flag_byte_ = nullptr;
    unsigned flags_ = 0;
    unsigned flag_ = 1;
};

} // namespace kelvo::codec
