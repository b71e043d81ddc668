#pragma once
// The yardstick for the compressor: the reference binary-tree coder as it is described, with
// nothing done for speed. What the fast coder and decoder must agree with, byte for byte.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo::yardstick {

class PlainLzss {
public:
    /// @param stream  room for nine bytes for every eight of `input`
    /// @return the bytes written
    std::size_t Encode(std::span<const std::uint8_t> input, std::span<std::uint8_t> stream);
    /// @param output  room for all that `stream` stands for
    /// @return the bytes written
    std::size_t Decode(std::span<const std::uint8_t> stream, std::span<std::uint8_t> output);

private:
    static constexpr int kRing = 4096;
    static constexpr int kLongest = 18;
    static constexpr int kThreshold = 2;
    static constexpr int kNil = kRing;

    void InsertNode(int r);
    void DeleteNode(int p);

    std::array<std::uint8_t, kRing + kLongest - 1> ring_{};
    std::array<int, kRing + 257> left_{};
    std::array<int, kRing + 257> right_{};
    std::array<int, kRing + 1> parent_{};
    int match_position_ = 0;
    int match_length_ = 0;
};

} // namespace kelvo::yardstick
