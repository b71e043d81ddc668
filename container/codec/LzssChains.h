#pragma once
// Finds the same cmprs matches as LzssTree in inputs so short that no string ever leaves the ring:
// sound records, mostly. A tree from which nothing is deleted is a heap on age. So of the strings
// that share the longest prefix with the key it finds the oldest first, and names the latest place
// of its 18 bytes. Chains of equal prefixes, oldest first, give just that without any tree.

#include "container/codec/LzssItems.h"
#include "container/codec/LzssTree.h"
#include "framework/base/Bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace kelvo::codec {

inline constexpr std::size_t kLzssChainsShortest = kLzssTreeShortest;
/// The 18 strings before the input are in the ring, too.
inline constexpr std::size_t kLzssChainsLongest = kLzssFirstPosition - kLzssLongestMatch;

class LzssChains {
public:
    /// @param input   kLzssChainsShortest to kLzssChainsLongest bytes
    /// @param stream  LzssWorstCase(input.size()) bytes
    /// @return the bytes written; nothing when the chains grow so long that the tree is faster
    std::optional<std::size_t> Encode(ByteView input, std::uint8_t* stream);

private:
    static constexpr std::size_t kStrings = kLzssLongestMatch + kLzssChainsLongest;
    static constexpr std::size_t kTextSlack = 32;
    static constexpr unsigned kTableBits = 13;
    static constexpr std::size_t kTable = std::size_t{1} << kTableBits;
    static_assert(kTable >= 2 * kStrings);
    static constexpr std::uint16_t kNone = 0xFFFF;
    static constexpr std::size_t kChainedPrefix = 5;

    enum class Find : std::uint8_t { No, Longest };

    /// Adds the string at `at`, and finds what the tree would find on its way.
    LzssMatch Insert(std::size_t at, Find find);
    /// The table's place for the `length`-byte prefix of the string: that of an equal one, or free.
    std::uint16_t* Lookup(std::array<std::uint16_t, kTable>& table, std::size_t at,
                          std::size_t length);
    std::uint32_t WalkChain(std::size_t at, std::uint16_t first, std::uint32_t* length);
    void Append(std::size_t at, std::size_t bucket);
    static std::uint32_t Position(std::size_t at) {
        return static_cast<std::uint32_t>((kLzssChainsLongest + at) % kLzssRing);
    }

    std::size_t steps_ = 0; ///< along chains, so far
    std::array<std::uint8_t, kLzssLongestMatch + kStrings + kTextSlack> text_;
    std::array<std::uint16_t, kTable> twin_;   ///< first string with these 18 bytes
    std::array<std::uint16_t, kTable> three_;  ///< oldest string with this prefix of 3
    std::array<std::uint16_t, kTable> four_;   ///< oldest string with this prefix of 4
    std::array<std::uint16_t, kTable> oldest_; ///< of the strings whose prefix of 5 hashes here
    std::array<std::uint16_t, kTable> newest_;
    std::array<std::uint16_t, kStrings> newer_;  ///< the next one in the chain
    std::array<std::uint16_t, kStrings> latest_; ///< last place of the 18 bytes of this string
};

} // namespace kelvo::codec
