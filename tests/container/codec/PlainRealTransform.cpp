#include "tests/container/codec/PlainRealTransform.h"

#include <cmath>
#include <cstddef>
#include <utility>

namespace kelvo::yardstick {

namespace {

void ComplexTransform(std::span<float> data, int sign) {
    const std::size_t n = data.size();
    for (std::size_t i = 0, j = 0; i < n; i += 2) {
        if (j > i) {
            std::swap(data[i], data[j]);
            std::swap(data[i + 1], data[j + 1]);
        }
        std::size_t bit = n / 2;
        while (bit >= 2 && (j & bit) != 0) {
            j -= bit;
            bit /= 2;
        }
        j += bit;
    }
    for (std::size_t span = 2; span < n; span *= 2) {
        const double angle = sign * (6.28318530717959 / static_cast<double>(span));
        const double half_sine = std::sin(0.5 * angle);
        const double cosine_step = -2.0 * half_sine * half_sine;
        const double sine_step = std::sin(angle);
        double cosine = 1.0;
        double sine = 0.0;
        for (std::size_t m = 0; m < span; m += 2) {
            for (std::size_t i = m; i < n; i += 2 * span) {
                const std::size_t j = i + span;
                const auto real = static_cast<float>(cosine * data[j] - sine * data[j + 1]);
                const auto imaginary = static_cast<float>(cosine * data[j + 1] + sine * data[j]);
                data[j] = data[i] - real;
                data[j + 1] = data[i + 1] - imaginary;
                data[i] += real;
                data[i + 1] += imaginary;
            }
            const double before = cosine;
            cosine = before * cosine_step - sine * sine_step + before;
            sine = sine * cosine_step + before * sine_step + sine;
        }
    }
}

void MirrorPairs(std::span<float> data, int sign) {
    const std::size_t n = data.size();
    const float odd = sign > 0 ? -0.5F : 0.5F;
    const double angle = sign * (3.141592653589793 / static_cast<double>(n / 2));
    const double half_sine = std::sin(0.5 * angle);
    const double cosine_step = -2.0 * half_sine * half_sine;
    const double sine_step = std::sin(angle);
    double cosine = 1.0 + cosine_step;
    double sine = sine_step;
    for (std::size_t i = 2; i < n / 2; i += 2) {
        const std::size_t j = n - i;
        const float even_real = 0.5F * (data[i] + data[j]);
        const float even_imaginary = 0.5F * (data[i + 1] - data[j + 1]);
        const float odd_real = -odd * (data[i + 1] + data[j + 1]);
        const float odd_imaginary = odd * (data[i] - data[j]);
        data[i] = static_cast<float>(even_real + cosine * odd_real - sine * odd_imaginary);
        data[i + 1] = static_cast<float>(even_imaginary + cosine * odd_imaginary + sine * odd_real);
        data[j] = static_cast<float>(even_real - cosine * odd_real + sine * odd_imaginary);
        data[j + 1] =
            static_cast<float>(-even_imaginary + cosine * odd_imaginary + sine * odd_real);
        const double before = cosine;
        cosine = before * cosine_step - sine * sine_step + before;
        sine = sine * cosine_step + before * sine_step + sine;
    }
}

} // namespace

void PlainRealTransform(std::span<float> array, int sign) {
    if (sign > 0) {
        ComplexTransform(array, sign);
        MirrorPairs(array, sign);
        const float first = array[0];
        array[0] = first + array[1];
        array[1] = first - array[1];
    } else {
        MirrorPairs(array, sign);
        const float first = array[0];
        array[0] = 0.5F * (first + array[1]);
        array[1] = 0.5F * (first - array[1]);
        ComplexTransform(array, sign);
    }
}

} // namespace kelvo::yardstick
