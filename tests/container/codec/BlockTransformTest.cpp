#include "container/codec/BlockTransform.h"

#include "framework/base/ByteWriter.h"
#include "tests/container/codec/PlainSoundCodecs.h"
#include "tests/container/codec/SoundSignals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace kelvo::codec {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// One sound type, fast and plain, behind buffers of exactly the promised sizes.
struct SoundType {
    std::string name;
    std::function<Bytes(const Bytes& samples)> encode;
    std::function<Decoded(const Bytes& coded, ByteSpan samples)> decode;
    std::function<Bytes(const Bytes& samples)> plain_encode;
    std::function<Bytes(const Bytes& coded, std::size_t record_length)> plain_decode;
};

SoundType Whole() {
    return {"Whole",
            [](const Bytes& samples) {
                Bytes coded(LargestWholeTransform(samples.size()));
                std::vector<float> array(WholeTransformArray(samples.size()));
                coded.resize(EncodeWholeTransform(samples, coded, array));
                return coded;
            },
            [](const Bytes& coded, ByteSpan samples) {
                std::vector<float> array(WholeTransformArray(samples.size()), 1e30F);
                return DecodeWholeTransform(coded, samples, array);
            },
            yardstick::PlainEncodeWhole, yardstick::PlainDecodeWhole};
}

SoundType Blocks(std::string name, TransformBlocks rule) {
    return {std::move(name),
            [rule](const Bytes& samples) {
                Bytes coded(LargestTransformBlocks(samples.size(), rule));
                std::vector<float> array(TransformBlocksArray(rule));
                coded.resize(EncodeTransformBlocks(samples, coded, array, rule));
                return coded;
            },
            [rule](const Bytes& coded, ByteSpan samples) {
                std::vector<float> array(TransformBlocksArray(rule), 1e30F);
                return DecodeTransformBlocks(coded, samples, array, rule);
            },
            [rule](const Bytes& samples) {
                return yardstick::PlainEncodeBlocks(samples, rule.block, rule.divisor,
                                                    rule.two_pass);
            },
            [rule](const Bytes& coded, std::size_t) {
                return yardstick::PlainDecodeBlocks(coded, rule.block);
            }};
}

SoundType Variable() {
    return {"Variable",
            [](const Bytes& samples) {
                Bytes coded(LargestVariableBlocks(samples.size()));
                std::vector<float> array(VariableBlocksArray(samples.size()));
                coded.resize(EncodeVariableBlocks(samples, coded, array));
                return coded;
            },
            [](const Bytes& coded, ByteSpan samples) {
                std::vector<float> array(VariableBlocksArray(samples.size()), 1e30F);
                return DecodeVariableBlocks(coded, samples, array);
            },
            yardstick::PlainEncodeVariable,
            [](const Bytes& coded, std::size_t) { return yardstick::PlainDecodeVariable(coded); }};
}

const TransformBlocks kCoarse{512, 10.0, true};

std::vector<SoundType> SoundTypes() {
    return {Whole(),
            Blocks("Coarse", kCoarse),
            Blocks("Fine", {512, 1.25, true}),
            Blocks("Long", {1024, 1.25, false}),
            Blocks("Short", {256, 5.0, false}),
            Variable()};
}

class SoundTransforms : public testing::TestWithParam<SoundType> {};

TEST_P(SoundTransforms, GiveTheBytesOfTheDescriptionForEverySignalAndLength) {
    for (const sound::Signal signal : sound::kSignals) {
        for (const std::size_t count :
             {0U,   1U,   2U,   3U,   63U,  64U,   65U,   100U,  128U,  255U, 256U,
              257U, 511U, 512U, 513U, 800U, 1024U, 1025U, 2205U, 4410U, 5000U}) {
            const Bytes samples = sound::Make(signal, count);
            const Bytes coded = GetParam().encode(samples);
            ASSERT_EQ(coded, GetParam().plain_encode(samples)) << count;
            Bytes decoded(count, 99);
            ASSERT_EQ(GetParam().decode(coded, decoded), (Decoded{count, Fault::None, count}));
            ASSERT_EQ(decoded, GetParam().plain_decode(coded, count)) << count;
        }
    }
}

TEST_P(SoundTransforms, KeepSilenceSilent) {
    const Bytes silence(3000, 127);
    Bytes decoded(silence.size());
    const Bytes coded = GetParam().encode(silence);
    EXPECT_EQ(GetParam().decode(coded, decoded).fault, Fault::None);
    EXPECT_EQ(decoded, silence);
}

TEST_P(SoundTransforms, CutAnywhereStayInsideTheRecordAndNeverPassAsWhole) {
    const Bytes samples = sound::Make(sound::Signal::Speech, 700);
    const Bytes coded = GetParam().encode(samples);
    for (std::size_t length = 0; length < coded.size(); ++length) {
        Bytes decoded(samples.size(), 99);
        const Decoded result = GetParam().decode(
            Bytes(coded.begin(), coded.begin() + static_cast<long>(length)), decoded);
        ASSERT_EQ(result.fault, Fault::EndsEarly) << length;
        ASSERT_LE(result.written, decoded.size());
        ASSERT_TRUE(std::all_of(decoded.begin() + static_cast<long>(result.written), decoded.end(),
                                [](std::uint8_t byte) { return byte == 99; }));
    }
}

TEST_P(SoundTransforms, OfAnyBytesStayInsideTheRecord) {
    std::mt19937 random{30};
    const Bytes samples = sound::Make(sound::Signal::Speech, 700);
    const Bytes honest = GetParam().encode(samples);
    for (int round = 0; round < 1500; ++round) {
        Bytes coded = honest;
        if (round % 3 == 0) coded.resize(random() % honest.size());
        for (std::size_t hits = random() % 12; !coded.empty() && hits > 0; --hits) {
            coded[random() % std::min<std::size_t>(coded.size(), round % 2 == 0 ? 20 : 4096)] =
                static_cast<std::uint8_t>(random());
        }
        Bytes decoded(random() % 900, 99);
        const Decoded result = GetParam().decode(coded, decoded);
        ASSERT_LE(result.written, decoded.size());
        ASSERT_LE(result.written, result.described);
        if (result.fault == Fault::None) {
            ASSERT_EQ(result.described, decoded.size());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, SoundTransforms, testing::ValuesIn(SoundTypes()),
                         [](const auto& row) { return row.param.name; });

/// Appends little-endian numbers and codes.
class Stream {
public:
    Stream& Scale(double scale) { return Append(std::bit_cast<std::uint64_t>(scale), 8); }
    Stream& Number(std::uint32_t number) { return Append(number, 4); }
    Stream& Codes(const Bytes& codes) {
        bytes_.insert(bytes_.end(), codes.begin(), codes.end());
        return *this;
    }
    operator Bytes() const { return bytes_; }

private:
    Stream& Append(std::uint64_t number, std::size_t width) {
        for (std::size_t i = 0; i < width; ++i) {
            bytes_.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
        }
        return *this;
    }
    Bytes bytes_;
};

TEST(WholeTransform, OfSilenceIsRunsOf255AndARest) {
    EXPECT_EQ(
        Whole().encode(Bytes(600, 127)),
        Bytes(Stream{}.Scale(1.0).Number(600).Number(120).Codes({0x7E, 255, 0x7E, 255, 0x7E, 90})));
    EXPECT_EQ(Whole().encode(Bytes(511, 127)),
              Bytes(Stream{}.Scale(1.0).Number(511).Number(102).Codes({0x7E, 255, 0x7E, 255, 0})));
}

TEST(WholeTransform, OfAConstantIsItsFirstCoefficient) {
    // 8 x 124 above the centre, so that the scale is 8 and the code 124.
    EXPECT_EQ(Whole().encode(Bytes(8, 251)),
              Bytes(Stream{}.Scale(8.0).Number(8).Number(1).Codes({124, 0x7E, 7})));
    EXPECT_EQ(Whole().encode(Bytes{3}),
              Bytes(Stream{}.Scale(1.0).Number(1).Number(0).Codes({0x84})));
}

TEST(WholeTransform, TrustsTheCodesNoFurtherThanTheTransform) {
    Bytes samples(8, 99);
    const Bytes beyond = Stream{}.Scale(8.0).Number(8).Number(1).Codes({124, 0x7E, 255, 1, 1});
    EXPECT_EQ(Whole().decode(beyond, samples), (Decoded{8, Fault::BadValue, 8}));
    EXPECT_EQ(samples, Bytes(8, 251));
    const Bytes longer = Stream{}.Scale(8.0).Number(4000000000).Number(1).Codes({124, 0x7E, 7});
    EXPECT_EQ(Whole().decode(longer, samples), (Decoded{8, Fault::TooLarge, 4000000000}));
    Bytes claimed(10, 99);
    const Bytes shorter = Stream{}.Scale(16.0).Number(8).Number(1).Codes({124, 0x7E, 7});
    EXPECT_EQ(Whole().decode(shorter, claimed), (Decoded{8, Fault::EndsEarly, 8}));
    EXPECT_EQ(claimed, (Bytes{251, 251, 251, 251, 251, 251, 251, 251, 99, 99}));
}

TEST(TransformBlocks, ShorterThanABlockAreOneBlock) {
    EXPECT_EQ(Blocks("", kCoarse).encode(Bytes(300, 127)),
              Bytes(Stream{}.Scale(1.0).Number(4).Codes({0x7E, 255, 0x7E, 45})));
}

TEST(TransformBlocks, KeepOnlyTheLowByteOfAnOvershoot) {
    // A first coefficient of 300 x 512 lifts every sample by 300: 427 is 171 in 8 bits.
    const Bytes coded =
        Stream{}.Scale(1536.0).Number(5).Codes({100, 0x7E, 255, 0x7E, 255}).Scale(1.0).Number(0);
    Bytes samples(511, 99);
    EXPECT_EQ(Blocks("", kCoarse).decode(coded, samples), (Decoded{511, Fault::None, 511}));
    EXPECT_EQ(samples, Bytes(511, 171));
}

TEST(TransformBlocks, AcceptCountsThatNoEncoderWrites) {
    const Bytes coded = Stream{}.Scale(1.0).Number(6).Codes({0x7E, 0, 0x7E, 1, 0x7E, 3});
    Bytes samples(4, 99);
    EXPECT_EQ(Blocks("", kCoarse).decode(coded, samples), (Decoded{4, Fault::None, 4}));
    EXPECT_EQ(samples, Bytes(4, 127));
}

TEST(TransformBlocks, WithAScaleThatIsNoNumberAreSilentAndNothingMoves) {
    for (const double scale : {std::numeric_limits<double>::quiet_NaN(),
                               -std::numeric_limits<double>::infinity(), 1e300}) {
        const Bytes coded = Stream{}
                                .Scale(scale)
                                .Number(5)
                                .Codes({100, 0x7E, 255, 0x7E, 255})
                                .Scale(1536.0)
                                .Number(4)
                                .Codes({100, 0, 0, 0});
        Bytes samples(515, 99);
        EXPECT_EQ(Blocks("", kCoarse).decode(coded, samples), (Decoded{515, Fault::BadValue, 515}));
        Bytes expected(515, 127);
        std::fill(expected.end() - 4, expected.end(), std::uint8_t{171});
        EXPECT_EQ(samples, expected);
    }
}

TEST(VariableBlocks, OfAHundredSamplesAre64And36) {
    EXPECT_EQ(Variable().encode(Bytes(100, 127)), Bytes(Stream{}
                                                            .Scale(1.0)
                                                            .Number(2)
                                                            .Number(64)
                                                            .Codes({0x7E, 64})
                                                            .Scale(1.0)
                                                            .Number(2)
                                                            .Number(64)
                                                            .Codes({0x7E, 36})));
}

TEST(VariableBlocks, OfSilenceAreTheLongestThatLeaveARest) {
    const auto sizes = [](std::size_t count) {
        const Bytes coded = Variable().encode(Bytes(count, 127));
        std::vector<int> found;
        for (std::size_t at = 0; at < coded.size(); at += 16U + coded[at + 8]) {
            found.push_back(coded[at + 12] | coded[at + 13] << 8);
        }
        return found;
    };
    EXPECT_EQ(sizes(64), (std::vector{64}));
    EXPECT_EQ(sizes(65), (std::vector{64, 64}));
    EXPECT_EQ(sizes(128), (std::vector{64, 64}));
    EXPECT_EQ(sizes(129), (std::vector{128, 64}));
    EXPECT_EQ(sizes(2205), (std::vector{2048, 128, 64}));
}

TEST(VariableBlocks, RefuseATransformThatTheRecordCannotHold) {
    for (const std::uint32_t size : {0U, 1U, 32U, 63U, 96U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
        const Bytes coded = Stream{}
                                .Scale(1.0)
                                .Number(2)
                                .Number(64)
                                .Codes({0x7E, 64})
                                .Scale(1.0)
                                .Number(2)
                                .Number(size)
                                .Codes({0x7E, 36});
        Bytes samples(100, 99);
        EXPECT_EQ(Variable().decode(coded, samples), (Decoded{64, Fault::BadValue, 64})) << size;
    }
}

// Two million blocks of one sample and a transform of a million would be a day of work.
TEST(VariableBlocks, ThatClaimMuchAndHoldLittleAreDoneAtOnce) {
    constexpr std::uint32_t kRecord = 1U << 20U;
    Bytes coded;
    for (int i = 0; i < 20000; ++i) {
        const Bytes block = Stream{}.Scale(1.0).Number(1).Number(kRecord).Codes({5});
        coded.insert(coded.end(), block.begin(), block.end());
    }
    Bytes samples(kRecord, 99);
    const Decoded decoded = Variable().decode(coded, samples);
    EXPECT_EQ(decoded.fault, Fault::EndsEarly);
    EXPECT_EQ(decoded.described, 20000U);
}

} // namespace
} // namespace kelvo::codec
