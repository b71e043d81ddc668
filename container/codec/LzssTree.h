#pragma once
// Finds cmprs matches with the binary search trees of the reference coder, one for each first byte,
// in a layout that walks them without a branch. For inputs of kLzssTreeShortest bytes and more.

#include "container/codec/LzssItems.h"
#include "framework/base/Bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvo::codec {

/// Shorter inputs end before the ring's mirror is filled; TinyLzss knows what they see there.
inline constexpr std::size_t kLzssTreeShortest = 2 * kLzssLongestMatch - 1;

class LzssTree {
public:
    /// @param stream  LzssWorstCase(input.size()) bytes
    /// @return the bytes written
    std::size_t Encode(ByteView input, std::uint8_t* stream);

private:
    // A node is the place of a string in the text, modulo twice the ring: so a node's number is its
    // address, and the text can be written far ahead of the 4096 bytes that are searched. (Wide
    // loads of bytes just stored one by one would stall.)
    static constexpr std::uint32_t kNodes = 2 * kLzssRing;
    static constexpr std::uint32_t kNil = kNodes;
    // The children of node n stand in slots 2n and 2n + 1, the roots behind them; a parent is the
    // number of the slot that names the node. kNil has slots and a parent that nobody reads.
    static constexpr std::uint32_t kFirstRoot = 2 * (kNodes + 1);
    static constexpr std::uint32_t kSlots = kFirstRoot + 256;
    static constexpr std::uint32_t kNoSlot = 0xFFFF;
    static_assert(kSlots < kNoSlot);
    /// Strings that wrap around the text's end are read on in a copy of its start.
    static constexpr std::size_t kMirror = 32;
    static constexpr std::size_t kFillStep = 2048;
    static_assert(kNodes % kFillStep == 0 && kFillStep + kLzssRing + kMirror <= kNodes);
    static_assert(kFillStep - kLzssFirstPosition % kFillStep >= kLzssLongestMatch);

    static constexpr std::size_t Left(std::size_t node) { return 2 * node; }
    static constexpr std::size_t Right(std::size_t node) { return 2 * node + 1; }

    void Begin(ByteView input);
    void FillText();
    enum class Find : std::uint8_t { No, Longest };
    template <Find kFind>
    LzssMatch Insert(std::uint32_t node);
    void Delete(std::uint32_t node);
    void Replace(std::uint32_t old_node, std::uint32_t new_node);

    ByteView input_;
    std::size_t filled_ = 0; ///< place up to which the text is written; the input begins at 4078
    std::array<std::uint16_t, kSlots> child_;
    std::array<std::uint16_t, kNodes + 1> parent_;
    std::array<std::uint8_t, kNodes + kMirror> text_;
};

} // namespace kelvo::codec
