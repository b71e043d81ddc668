#pragma once
// Bytes of the kinds that decide what a compressor finds: the same ones on every run.

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace kelvo::material {

using Bytes = std::vector<std::uint8_t>;

enum class Kind : std::uint8_t {
    Random,
    FourLetters,
    Periodic,
    Runs,
    LeadingSpaces,
    QuietSound, ///< long stretches of silence, broken here and there
    NearCopies, ///< earlier bytes again, with small changes
};
inline constexpr Kind kAllKinds[] = {Kind::Random,    Kind::FourLetters,   Kind::Periodic,
                                     Kind::Runs,      Kind::LeadingSpaces, Kind::QuietSound,
                                     Kind::NearCopies};

inline Bytes Make(Kind kind, std::size_t length, std::uint_fast32_t seed) {
    std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
    Bytes bytes(length);
    const std::size_t period = 1 + random() % 600;
    const std::size_t back = 1 + random() % 40;
    for (std::size_t i = 0; i < length; ++i) {
        const auto any = static_cast<std::uint8_t>(random());
        const bool rarely = random() % 20 == 0;
        switch (kind) {
        case Kind::Random:
            bytes[i] = any;
            break;
        case Kind::FourLetters:
            bytes[i] = any % 4;
            break;
        case Kind::Periodic:
            bytes[i] = i < period ? any : bytes[i - period];
            break;
        case Kind::Runs:
            bytes[i] = i == 0 || rarely ? any : bytes[i - 1];
            break;
        case Kind::LeadingSpaces:
            bytes[i] = i < length / 2 || !rarely ? ' ' : any % 3;
            break;
        case Kind::QuietSound:
            bytes[i] = static_cast<std::uint8_t>(127 + (rarely ? any % 5 : 2));
            break;
        case Kind::NearCopies:
            bytes[i] = i < back || rarely ? any : bytes[i - back];
            break;
        }
    }
    return bytes;
}

/// Names a case in a test's message.
inline std::string Describe(Kind kind, std::size_t length) {
    return "kind " + std::to_string(static_cast<int>(kind)) + ", length " + std::to_string(length);
}

} // namespace kelvo::material
