#pragma once
// Sound to try codecs on: what records are made of, and what is awkward about them.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <random>
#include <vector>

namespace kelvo::sound {

enum class Signal { Silence, Tone, Speech, Noise, FullSquare, Staircase, LoneClick };

inline constexpr Signal kSignals[] = {Signal::Silence,  Signal::Tone,       Signal::Speech,
                                      Signal::Noise,    Signal::FullSquare, Signal::Staircase,
                                      Signal::LoneClick};

/// @return `count` unsigned 8-bit samples around 127
inline std::vector<std::uint8_t> Make(Signal signal, std::size_t count) {
    std::mt19937 random{static_cast<std::mt19937::result_type>(count)};
    std::vector<std::uint8_t> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = static_cast<double>(i);
        double level = 0.0;
        switch (signal) {
        case Signal::Silence:
            break;
        case Signal::Tone:
            level = 60.0 * std::sin(t * 0.05) + 30.0 * std::sin(t * 0.31);
            break;
        case Signal::Speech:
            level = 50.0 * std::sin(t * 0.013) * std::sin(t * 0.11 + std::sin(t * 0.002)) +
                    static_cast<double>(random() % 7) - 3.0;
            break;
        case Signal::Noise:
            level = static_cast<double>(random() % 256) - 127.0;
            break;
        case Signal::FullSquare:
            level = (i / 11) % 2 == 0 ? 128.0 : -127.0;
            break;
        case Signal::Staircase:
            level = static_cast<double>(i / 3 % 100) - 50.0;
            break;
        case Signal::LoneClick:
            level = i == count / 2 ? 128.0 : 0.0;
            break;
        }
        samples[i] = static_cast<std::uint8_t>(static_cast<int>(127.0 + level));
    }
    return samples;
}

} // namespace kelvo::sound
