#include "tools/demo_film/Bell.h"

#include "framework/base/ByteWriter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvo::demo {

namespace {

struct Partial {
    double ratio;    ///< to the bell's pitch
    double strength; ///< the sum of all stays below 1
    double decay_s;  ///< until it is down to a third
};
// Higher partials die away sooner, as in everything that is struck.
constexpr Partial kPartials[] = {{1, 0.42, 0.16}, {2.0, 0.16, 0.09}, {2.76, 0.10, 0.06}};

constexpr double kPitchHz = 880;
constexpr double kFifthPitchHz = 1320; // every fifth second, as on the dial
constexpr double kAttackSeconds = 0.001;
constexpr double kHighest = 32767;

double BellAt(double seconds, double pitch_hz) {
    double sum = 0;
    for (const Partial& partial : kPartials) {
        sum += partial.strength * std::exp(-seconds / partial.decay_s) *
               std::sin(2 * std::numbers::pi * pitch_hz * partial.ratio * seconds);
    }
    return sum * std::min(1.0, seconds / kAttackSeconds);
}

} // namespace

void StrikeBell(std::uint64_t first, ByteSpan pcm) {
    ByteWriter writer{pcm};
    for (std::uint64_t sample = first; sample < first + pcm.size() / 2; ++sample) {
        const std::uint64_t second = sample / kSampleRate;
        const double since = static_cast<double>(sample % kSampleRate) / kSampleRate;
        const double value = BellAt(since, second % 5 == 0 ? kFifthPitchHz : kPitchHz);
        const auto rounded = static_cast<std::int16_t>(std::lround(value * kHighest));
        writer.WriteU16(static_cast<std::uint16_t>(rounded));
    }
}

} // namespace kelvo::demo
