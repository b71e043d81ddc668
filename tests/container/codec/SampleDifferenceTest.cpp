#include "container/codec/SampleDifference.h"

#include "tests/container/codec/PlainSoundCodecs.h"
#include "tests/container/codec/SoundSignals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace kelvo::codec {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Differences(const Bytes& samples) {
    Bytes differences(samples.size());
    EncodeDifferences(samples, differences);
    return differences;
}

Bytes Pack(const Bytes& differences) {
    Bytes packed(LargestNibbles(differences.size()));
    packed.resize(PackNibbles(differences, packed));
    return packed;
}

TEST(SampleDifferences, AreTheFirstSampleAndThenTheStepsAround127) {
    EXPECT_EQ(Differences({100, 101, 99, 255, 0, 128}), (Bytes{100, 128, 125, 27, 128, 255}));
    EXPECT_EQ(Differences({}), Bytes{});
}

TEST(SampleDifferences, RestoreEveryRecordAlsoInPlace) {
    for (std::size_t count = 0; count < 100; ++count) {
        const Bytes samples = sound::Make(sound::Signal::Noise, count);
        Bytes restored = Differences(samples);
        DecodeDifferences(restored, restored);
        ASSERT_EQ(restored, samples) << count;
    }
}

struct NibbleVector {
    std::string name;
    Bytes samples;
    Bytes packed;
};

const NibbleVector kNibbleVectors[] = {
    {"NoSamplesStoreNothing", {}, {}},
    {"OneQuietSampleAndTheEndMark", {127}, {0x08}},
    {"OneSampleBelowTheCentre", {120}, {0xF8}},
    {"OneLoudSampleTakesItsByte", {135}, {0x80, 135}},
    {"TwoNibblesHighFirst", {130, 128}, {0x3A}},
    {"EscapeInALowNibble", {127, 200}, {0x08, 200}},
    {"EscapeInAHighNibbleStartsANewByte", {0, 1, 1}, {0x80, 0, 0x10}},
    {"EndMarkAfterAnEscape", {127, 200, 201}, {0x08, 200, 0x18}},
    {"AStepOf128IsAnEscapeAround255", {127, 255}, {0x08, 255}},
};

class NibbleVectors : public testing::TestWithParam<NibbleVector> {};

TEST_P(NibbleVectors, StoreTheseBytesAndReadThemBack) {
    const NibbleVector& vector = GetParam();
    EXPECT_EQ(Pack(Differences(vector.samples)), vector.packed);
    Bytes samples(vector.samples.size());
    EXPECT_EQ(UnpackNibblesToSamples(vector.packed, samples),
              (Decoded{samples.size(), Fault::None, samples.size()}));
    EXPECT_EQ(samples, vector.samples);
}

INSTANTIATE_TEST_SUITE_P(, NibbleVectors, testing::ValuesIn(kNibbleVectors),
                         [](const auto& row) { return row.param.name; });

TEST(Nibbles, RestoreEverySignalAtEveryLength) {
    for (const sound::Signal signal : sound::kSignals) {
        for (std::size_t count = 0; count < 120; ++count) {
            const Bytes samples = sound::Make(signal, count);
            const Bytes differences = Differences(samples);
            const Bytes packed = Pack(differences);
            ASSERT_EQ(packed, yardstick::PlainPackNibbles(differences));
            Bytes restored(count);
            ASSERT_EQ(UnpackNibblesToSamples(packed, restored),
                      (Decoded{count, Fault::None, count}));
            ASSERT_EQ(restored, samples);
        }
    }
}

TEST(Nibbles, OfAnyBytesFillNoMoreThanTheRecordAndSayWhatTheyDescribe) {
    std::mt19937 random{18};
    for (int round = 0; round < 5000; ++round) {
        Bytes packed(random() % 80);
        for (std::uint8_t& byte : packed) {
            byte = static_cast<std::uint8_t>(
                random() % 3 == 0 ? random() % 2 * 0x80 + random() % 2 * 8 : random());
        }
        const Bytes described = yardstick::PlainUnpackNibbles(packed);
        const Bytes record(random() % 120, 99);
        Bytes samples = record;
        const Decoded decoded = UnpackNibblesToSamples(packed, samples);
        ASSERT_EQ(decoded.described, described.size());
        ASSERT_EQ(decoded.written, std::min(described.size(), record.size()));
        ASSERT_EQ(decoded.fault == Fault::TooLarge, described.size() > record.size());
        if (described.size() < record.size()) {
            ASSERT_EQ(decoded.fault, Fault::EndsEarly);
        }
        Bytes expected(described.begin(), described.begin() + static_cast<long>(decoded.written));
        expected.resize(record.size(), 99);
        ASSERT_EQ(samples, expected);
    }
}

TEST(Nibbles, WithAnEscapeThatLostItsByteAreCut) {
    Bytes samples(2, 99);
    EXPECT_EQ(UnpackNibblesToSamples(Bytes{0x11, 0x80}, samples), (Decoded{2, Fault::None, 2}));
    Bytes three(3, 99);
    EXPECT_EQ(UnpackNibblesToSamples(Bytes{0x11, 0x80}, three), (Decoded{2, Fault::EndsEarly, 2}));
    EXPECT_EQ(three, (Bytes{128, 129, 99}));
}

} // namespace
} // namespace kelvo::codec
