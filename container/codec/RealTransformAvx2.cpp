#include "container/codec/RealTransformKernels.h"

#if defined(__x86_64__)
#include <immintrin.h>

#include <cstring>
#endif

namespace kelvo::codec {

#if defined(__x86_64__)

// AVX2 without fused multiply-add, which would round once where the format rounds twice.
#define KELVO_AVX2 __attribute__((target("avx2")))
#define KELVO_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace {

/// Four complex values, real and imaginary parts apart.
struct FourComplex {
    __m128 real;
    __m128 imaginary;
};

/// Four twiddles.
struct FourTwiddles {
    __m256d cosines;
    __m256d sines;
};

KELVO_AVX2_INLINE FourComplex LoadFour(const float* at) {
    const __m128 front = _mm_loadu_ps(at);
    const __m128 back = _mm_loadu_ps(at + 4);
    return {_mm_shuffle_ps(front, back, _MM_SHUFFLE(2, 0, 2, 0)),
            _mm_shuffle_ps(front, back, _MM_SHUFFLE(3, 1, 3, 1))};
}

KELVO_AVX2_INLINE void StoreFour(float* at, FourComplex values) {
    _mm_storeu_ps(at, _mm_unpacklo_ps(values.real, values.imaginary));
    _mm_storeu_ps(at + 4, _mm_unpackhi_ps(values.real, values.imaginary));
}

KELVO_AVX2_INLINE FourTwiddles LoadTwiddles(Twiddles twiddles, std::size_t at,
                                            Direction direction) {
    const __m256d sines = _mm256_loadu_pd(twiddles.sines + at);
    return {_mm256_loadu_pd(twiddles.cosines + at),
            direction == Direction::Forward ? sines : _mm256_sub_pd(_mm256_setzero_pd(), sines)};
}

/// Twiddle times value, in double, rounded once.
KELVO_AVX2_INLINE FourComplex Turn(FourComplex values, FourTwiddles by) {
    const __m256d real = _mm256_cvtps_pd(values.real);
    const __m256d imaginary = _mm256_cvtps_pd(values.imaginary);
    return {_mm256_cvtpd_ps(
                _mm256_sub_pd(_mm256_mul_pd(by.cosines, real), _mm256_mul_pd(by.sines, imaginary))),
            _mm256_cvtpd_ps(_mm256_add_pd(_mm256_mul_pd(by.cosines, imaginary),
                                          _mm256_mul_pd(by.sines, real)))};
}

KELVO_AVX2_INLINE void Butterfly(FourComplex& low, FourComplex& high, FourTwiddles by) {
    const FourComplex turned = Turn(high, by);
    high = {_mm_sub_ps(low.real, turned.real), _mm_sub_ps(low.imaginary, turned.imaginary)};
    low = {_mm_add_ps(low.real, turned.real), _mm_add_ps(low.imaginary, turned.imaginary)};
}

/// A twiddle of 1 and 0: the products are exact, so that single precision gives the same bits,
/// those of zeros and of what is no number included.
KELVO_AVX2_INLINE void PlainButterfly(FourComplex& low, FourComplex& high) {
    const __m128 zero = _mm_setzero_ps();
    const __m128 real = _mm_sub_ps(high.real, _mm_mul_ps(zero, high.imaginary));
    const __m128 imaginary = _mm_add_ps(high.imaginary, _mm_mul_ps(zero, high.real));
    high = {_mm_sub_ps(low.real, real), _mm_sub_ps(low.imaginary, imaginary)};
    low = {_mm_add_ps(low.real, real), _mm_add_ps(low.imaginary, imaginary)};
}

KELVO_AVX2_INLINE void Transpose(FourComplex (&values)[4]) {
    _MM_TRANSPOSE4_PS(values[0].real, values[1].real, values[2].real, values[3].real);
    _MM_TRANSPOSE4_PS(values[0].imaginary, values[1].imaginary, values[2].imaginary,
                      values[3].imaginary);
}

/// Between the first stages and the last, four real parts lie before their four imaginary ones.
KELVO_AVX2_INLINE FourComplex LoadBlock(const float* at) {
    return {_mm_loadu_ps(at), _mm_loadu_ps(at + 4)};
}

KELVO_AVX2_INLINE void StoreBlock(float* at, FourComplex values) {
    _mm_storeu_ps(at, values.real);
    _mm_storeu_ps(at + 4, values.imaginary);
}

// Transforms up to this many complex values are read from a copy on the stack, which saves the
// swaps.
constexpr std::size_t kLargestCopied = 8192;

KELVO_AVX2 void FirstStages(float* array, std::size_t complex_count, const std::uint16_t* reversed,
                            Twiddles quarter_turn, Direction direction) {
    if (reversed == nullptr || complex_count > kLargestCopied) {
        kPortableKernels.first_stages(array, complex_count, reversed, quarter_turn, direction);
        for (float* at = array; at != array + 2 * complex_count; at += 8) {
            StoreBlock(at, LoadFour(at));
        }
        return;
    }
    const double sine =
        direction == Direction::Forward ? quarter_turn.sines[1] : 0.0 - quarter_turn.sines[1];
    const FourTwiddles quarter_twiddles{_mm256_set1_pd(quarter_turn.cosines[1]),
                                        _mm256_set1_pd(sine)};
    float copy[2 * kLargestCopied];
    std::memcpy(copy, array, 2 * complex_count * sizeof(float));
    // The four values of a group come from the four quarters, the groups from `i` on in reversed
    // order: one group a lane, so that the values of a quarter are read side by side.
    const std::size_t quarter = complex_count / 4;
    for (std::size_t i = 0; i < quarter; i += 4) {
        const float* const from = copy + 2 * i;
        FourComplex values[4] = {LoadFour(from), LoadFour(from + 4 * quarter),
                                 LoadFour(from + 2 * quarter), LoadFour(from + 6 * quarter)};
        PlainButterfly(values[0], values[1]);
        PlainButterfly(values[2], values[3]);
        PlainButterfly(values[0], values[2]);
        Butterfly(values[1], values[3], quarter_twiddles);
        Transpose(values);
        for (std::size_t lane = 0; lane < 4; ++lane) {
            StoreBlock(array + std::size_t{8} * reversed[i + lane], values[lane]);
        }
    }
}

template <Stage kStage>
KELVO_AVX2_INLINE void GroupButterflies(float* low_values, float* high_values, std::size_t count,
                                        Twiddles twiddles, Direction direction) {
    for (std::size_t i = 0; i < count; i += 4) {
        FourComplex low = LoadBlock(low_values + 2 * i);
        FourComplex high = LoadBlock(high_values + 2 * i);
        Butterfly(low, high, LoadTwiddles(twiddles, i, direction));
        if constexpr (kStage == Stage::Last) {
            StoreFour(low_values + 2 * i, low);
            StoreFour(high_values + 2 * i, high);
        } else {
            StoreBlock(low_values + 2 * i, low);
            StoreBlock(high_values + 2 * i, high);
        }
    }
}

KELVO_AVX2 void Butterflies(float* array, std::size_t complex_count, std::size_t half,
                            std::size_t first, std::size_t count, Twiddles twiddles,
                            Direction direction, Stage stage) {
    for (std::size_t group = first; group < complex_count; group += 2 * half) {
        float* const low = array + 2 * group;
        float* const high = low + 2 * half;
        if (stage == Stage::Last) {
            GroupButterflies<Stage::Last>(low, high, count, twiddles, direction);
        } else {
            GroupButterflies<Stage::Inner>(low, high, count, twiddles, direction);
        }
    }
}

KELVO_AVX2_INLINE __m128 Backwards(__m128 values) {
    return _mm_shuffle_ps(values, values, _MM_SHUFFLE(0, 1, 2, 3));
}

KELVO_AVX2 void MirrorPairs(float* array, std::size_t complex_count, std::size_t first,
                            std::size_t count, Twiddles twiddles, Direction direction) {
    const __m128 half = _mm_set1_ps(0.5F);
    const __m128 odd_half = _mm_set1_ps(direction == Direction::Forward ? 0.5F : -0.5F);
    const __m128 minus = _mm_set1_ps(-0.0F);
    std::size_t i = 0;
    for (; count - i >= 4; i += 4) {
        float* const near_values = array + 2 * (first + i);
        float* const far_values = array + 2 * (complex_count - first - i - 3);
        const FourComplex near = LoadFour(near_values);
        const FourComplex stored = LoadFour(far_values);
        const FourComplex far{Backwards(stored.real), Backwards(stored.imaginary)};
        const FourTwiddles by = LoadTwiddles(twiddles, i, direction);
        const __m128 even_imaginary = _mm_mul_ps(half, _mm_sub_ps(near.imaginary, far.imaginary));
        const __m256d x = _mm256_cvtps_pd(_mm_mul_ps(half, _mm_add_ps(near.real, far.real)));
        const __m256d y = _mm256_cvtps_pd(even_imaginary);
        const __m256d minus_y = _mm256_xor_pd(y, _mm256_set1_pd(-0.0));
        const __m256d u =
            _mm256_cvtps_pd(_mm_mul_ps(odd_half, _mm_add_ps(near.imaginary, far.imaginary)));
        const __m256d v = _mm256_cvtps_pd(
            _mm_mul_ps(_mm_xor_ps(odd_half, minus), _mm_sub_ps(near.real, far.real)));
        const __m256d cosine_u = _mm256_mul_pd(by.cosines, u);
        const __m256d cosine_v = _mm256_mul_pd(by.cosines, v);
        const __m256d sine_u = _mm256_mul_pd(by.sines, u);
        const __m256d sine_v = _mm256_mul_pd(by.sines, v);
        StoreFour(near_values,
                  {_mm256_cvtpd_ps(_mm256_sub_pd(_mm256_add_pd(x, cosine_u), sine_v)),
                   _mm256_cvtpd_ps(_mm256_add_pd(_mm256_add_pd(y, cosine_v), sine_u))});
        StoreFour(
            far_values,
            {Backwards(_mm256_cvtpd_ps(_mm256_add_pd(_mm256_sub_pd(x, cosine_u), sine_v))),
             Backwards(_mm256_cvtpd_ps(_mm256_add_pd(_mm256_add_pd(minus_y, cosine_v), sine_u)))});
    }
    kPortableKernels.mirror_pairs(array, complex_count, first + i, count - i,
                                  {twiddles.cosines + i, twiddles.sines + i}, direction);
}

constexpr TransformKernels kAvx2Kernels{"avx2", 16, FirstStages, Butterflies, MirrorPairs};

} // namespace

const TransformKernels* Avx2Kernels() {
    return __builtin_cpu_supports("avx2") != 0 ? &kAvx2Kernels : nullptr;
}

#else

const TransformKernels* Avx2Kernels() {
    return nullptr;
}

#endif

} // namespace kelvo::codec
