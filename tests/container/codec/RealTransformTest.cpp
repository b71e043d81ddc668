#include "container/codec/RealTransform.h"

#include "container/codec/RealTransformKernels.h"
#include "tests/container/codec/PlainRealTransform.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <thread>
#include <vector>

namespace kelvo::codec {
namespace {

using Values = std::vector<float>;

enum class Data { Samples, WideRange, SignedZeros, NoNumbers };

Values Make(Data data, std::size_t count) {
    std::mt19937 random{static_cast<std::mt19937::result_type>(count)};
    Values values(count);
    for (float& value : values) {
        const auto number = static_cast<float>(static_cast<int>(random() % 256) - 127);
        switch (data) {
        case Data::Samples:
            value = number;
            break;
        case Data::WideRange:
            value = std::ldexp(number / 3.0F, static_cast<int>(random() % 240) - 145);
            break;
        case Data::SignedZeros:
            value = random() % 8 == 0 ? number : std::copysign(0.0F, number);
            break;
        case Data::NoNumbers:
            value = random() % 64 != 0 ? number : std::numeric_limits<float>::infinity();
            break;
        }
    }
    return values;
}

/// The bits; those that are no number are all alike.
std::uint32_t Bits(float value) {
    return std::isnan(value) ? 0x7FC00000 : std::bit_cast<std::uint32_t>(value);
}

testing::AssertionResult SameBits(const Values& values, const Values& expected) {
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (Bits(values[i]) != Bits(expected[i])) {
            return testing::AssertionFailure()
                   << "element " << i << ": " << values[i] << " and not " << expected[i];
        }
    }
    return testing::AssertionSuccess();
}

void CompareWithTheTextbook(const TransformKernels& kernels, std::size_t size) {
    for (const Data data : {Data::Samples, Data::WideRange, Data::SignedZeros, Data::NoNumbers}) {
        Values expected = Make(data, size);
        Values values = expected;
        yardstick::PlainRealTransform(expected, 1);
        ForwardTransform(values, kernels);
        ASSERT_TRUE(SameBits(values, expected)) << "forward, " << size;
        expected = values = Make(data, size);
        yardstick::PlainRealTransform(expected, -1);
        InverseTransform(values, kernels);
        ASSERT_TRUE(SameBits(values, expected)) << "inverse, " << size;
    }
}

// Up to a size that no table serves any more.
constexpr std::size_t kLargestTried = 262144;

// With the kernels of any processor, and with those that only some processors have.
TEST(RealTransform, GivesTheBitsOfTheTextbookWithEveryKernelOfThisProcessor) {
    std::vector<const TransformKernels*> all = {&kPortableKernels};
    if (Avx2Kernels() != nullptr) all.push_back(Avx2Kernels());
    for (const TransformKernels* const kernels : all) {
        for (std::size_t size = 2; size <= kLargestTried; size *= 2) {
            CompareWithTheTextbook(*kernels, size);
        }
    }
}

TEST(RealTransform, InverseGivesHalfTheSizeTimesTheValues) {
    for (std::size_t size = 1; size <= 4096; size *= 2) {
        const Values original = Make(Data::Samples, size);
        Values values = original;
        ForwardTransform(values);
        InverseTransform(values);
        for (std::size_t i = 0; i < size; ++i) {
            const double restored = values[i] * 2.0 / static_cast<double>(size);
            ASSERT_NEAR(restored, original[i], 1e-3) << size;
        }
    }
}

TEST(RealTransform, FindsATone) {
    constexpr std::size_t kSize = 256;
    constexpr std::size_t kTerm = 5;
    Values values(kSize);
    for (std::size_t i = 0; i < kSize; ++i) {
        values[i] = static_cast<float>(
            std::cos(2.0 * 3.14159265358979 * static_cast<double>(kTerm * i) / kSize));
    }
    ForwardTransform(values);
    for (std::size_t i = 0; i < kSize; ++i) {
        ASSERT_NEAR(values[i], i == 2 * kTerm ? kSize / 2.0 : 0.0, 1e-3) << i;
    }
}

TEST(RealTransform, RunsInSeveralThreadsFromTheFirstCallOn) {
    std::vector<Values> results(4, Make(Data::Samples, 8192));
    Values expected = results.front();
    yardstick::PlainRealTransform(expected, 1);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < results.size(); ++i) {
        threads.emplace_back([&values = results[i], i] {
            Values other = Make(Data::Samples, std::size_t{64} << i);
            InverseTransform(other);
            ForwardTransform(values);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const Values& values : results) {
        EXPECT_TRUE(SameBits(values, expected));
    }
}

} // namespace
} // namespace kelvo::codec
