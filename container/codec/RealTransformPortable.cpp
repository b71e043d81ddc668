#include "container/codec/RealTransformKernels.h"

#include <utility>

namespace kelvo::codec {

namespace {

/// The sine of a direction. A difference and not a product: a sine of zero stays positive.
double Turned(double sine, Direction direction) {
    return direction == Direction::Forward ? sine : 0.0 - sine;
}

/// Sums of floats are rounded to floats, products with twiddles are taken in double and rounded
/// once.
void Butterfly(float* low, float* high, double cosine, double sine) {
    const auto real = static_cast<float>(cosine * high[0] - sine * high[1]);
    const auto imaginary = static_cast<float>(cosine * high[1] + sine * high[0]);
    high[0] = low[0] - real;
    high[1] = low[1] - imaginary;
    low[0] += real;
    low[1] += imaginary;
}

void Butterflies(float* array, std::size_t complex_count, std::size_t half, std::size_t first,
                 std::size_t count, Twiddles twiddles, Direction direction, Stage) {
    for (std::size_t group = first; group < complex_count; group += 2 * half) {
        float* const low = array + 2 * group;
        float* const high = low + 2 * half;
        for (std::size_t i = 0; i < count; ++i) {
            Butterfly(low + 2 * i, high + 2 * i, twiddles.cosines[i],
                      Turned(twiddles.sines[i], direction));
        }
    }
}

void ReverseOrder(float* array, std::size_t complex_count, const std::uint16_t* reversed) {
    // The two lowest bits of a number, in reverse, choose the quarter that its partner lies in.
    const std::size_t quarter = complex_count / 4;
    const std::size_t quarters[4] = {0, 2 * quarter, quarter, 3 * quarter};
    for (std::size_t group = 0; group < quarter; ++group) {
        const std::size_t place =
            reversed != nullptr ? reversed[group] : ReverseBits(group, quarter);
        for (std::size_t number = 4 * group; number < 4 * group + 4; ++number) {
            const std::size_t partner = quarters[number % 4] + place;
            if (partner <= number) continue;
            std::swap(array[2 * number], array[2 * partner]);
            std::swap(array[2 * number + 1], array[2 * partner + 1]);
        }
    }
}

void FirstStages(float* array, std::size_t complex_count, const std::uint16_t* reversed,
                 Twiddles quarter_turn, Direction direction) {
    ReverseOrder(array, complex_count, reversed);
    const double sine = Turned(quarter_turn.sines[1], direction);
    for (float* group = array; group != array + 2 * complex_count; group += 8) {
        Butterfly(group, group + 2, 1.0, 0.0);
        Butterfly(group + 4, group + 6, 1.0, 0.0);
        Butterfly(group, group + 4, 1.0, 0.0);
        Butterfly(group + 2, group + 6, quarter_turn.cosines[1], sine);
    }
}

void MirrorPairs(float* array, std::size_t complex_count, std::size_t first, std::size_t count,
                 Twiddles twiddles, Direction direction) {
    const float half = direction == Direction::Forward ? 0.5F : -0.5F;
    for (std::size_t i = 0; i < count; ++i) {
        float* const near = array + 2 * (first + i);
        float* const far = array + 2 * (complex_count - first - i);
        const double cosine = twiddles.cosines[i];
        const double sine = Turned(twiddles.sines[i], direction);
        const float even_real = 0.5F * (near[0] + far[0]);
        const float even_imaginary = 0.5F * (near[1] - far[1]);
        const float odd_real = half * (near[1] + far[1]);
        const float odd_imaginary = -half * (near[0] - far[0]);
        near[0] = static_cast<float>(even_real + cosine * odd_real - sine * odd_imaginary);
        near[1] = static_cast<float>(even_imaginary + cosine * odd_imaginary + sine * odd_real);
        far[0] = static_cast<float>(even_real - cosine * odd_real + sine * odd_imaginary);
        far[1] = static_cast<float>(-even_imaginary + cosine * odd_imaginary + sine * odd_real);
    }
}

} // namespace

const TransformKernels kPortableKernels{"portable", 2, FirstStages, Butterflies, MirrorPairs};

} // namespace kelvo::codec
