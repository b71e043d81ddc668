#pragma once
// 16-bit pixels as the bytes of a frame or a stream, for the tests of the picture codecs.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <vector>

namespace kelvo::pixels {

using Bytes = std::vector<std::uint8_t>;

/// Little-endian bytes of 16-bit values.
inline Bytes Words(const std::vector<unsigned>& values) {
    Bytes bytes;
    for (const unsigned value : values) {
        bytes.push_back(static_cast<std::uint8_t>(value));
        bytes.push_back(static_cast<std::uint8_t>(value >> 8U));
    }
    return bytes;
}
inline Bytes Repeated(std::size_t count, unsigned value) {
    return Words(std::vector<unsigned>(count, value));
}
/// 0, 1, 2, ... from `first` on.
inline Bytes Distinct(std::size_t count, unsigned first = 0) {
    std::vector<unsigned> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = first + static_cast<unsigned>(i);
    }
    return Words(values);
}
inline Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes whole;
    for (const Bytes& part : parts) {
        whole.insert(whole.end(), part.begin(), part.end());
    }
    return whole;
}

/// A frame that keeps most of `previous`: stretches unchanged, repeated and noisy.
inline Bytes Changed(const Bytes& previous, std::uint32_t seed) {
    std::mt19937 random(seed);
    Bytes frame = previous;
    for (std::size_t at = 0; at + 1 < frame.size();) {
        const std::size_t stretch = 1 + random() % (random() % 4 == 0 ? 300 : 5);
        const auto what = random() % 3;
        const auto colour = static_cast<unsigned>(random() % 32768);
        for (std::size_t i = 0; i < stretch && at + 1 < frame.size(); ++i, at += 2) {
            if (what == 0) continue;
            const unsigned pixel = what == 1 ? colour : static_cast<unsigned>(random() % 32768);
            frame[at] = static_cast<std::uint8_t>(pixel);
            frame[at + 1] = static_cast<std::uint8_t>(pixel >> 8U);
        }
    }
    return frame;
}

} // namespace kelvo::pixels
