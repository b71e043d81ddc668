#include "container/codec/ByteGroups.h"

#include "tests/container/codec/PlainSoundCodecs.h"
#include "tests/container/codec/SoundSignals.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace kelvo::codec {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Encode(const Bytes& samples) {
    Bytes stream(LargestByteGroups(samples.size()));
    stream.resize(EncodeByteGroups(samples, stream));
    return stream;
}

Bytes Numbers(int first, int count) {
    Bytes bytes;
    for (int i = 0; i < count; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(first + i));
    }
    return bytes;
}

Bytes operator+(Bytes front, const Bytes& back) {
    front.insert(front.end(), back.begin(), back.end());
    return front;
}

struct GroupVector {
    std::string name;
    Bytes samples;
    Bytes stream;
};

const GroupVector kGroupVectors[] = {
    {"NoSamplesStoreNothing", {}, {}},
    {"OneSampleIsARepeatOfOne", {9}, {1, 9}},
    {"RunOf200IsCutAt190", Bytes(200, 7), {190, 7, 10, 7}},
    {"RunOf191LeavesALoneSample", Bytes(191, 7), {190, 7, 1, 7}},
    {"ThreeDifferentAreOneGroup", {1, 2, 3}, {193, 1, 2, 3}},
    {"APairEndsTheLiteralsBeforeIt", {1, 2, 2, 2}, {191, 1, 3, 2}},
    {"ALoneSampleAfterARun", {5, 5, 6}, {2, 5, 1, 6}},
    {"SixtyFiveLiteralsFillAGroup", Numbers(0, 66), Bytes{255} + Numbers(0, 65) + Bytes{1, 65}},
    {"AFullGroupDoesNotLookAhead", Numbers(0, 65) + Bytes{64, 64},
     Bytes{255} + Numbers(0, 65) + Bytes{2, 64}},
    {"APairAtTheLastPlaceOfAGroupIsARun", Numbers(0, 64) + Bytes{63},
     Bytes{253} + Numbers(0, 63) + Bytes{2, 63}},
};

class ByteGroupVectors : public testing::TestWithParam<GroupVector> {};

TEST_P(ByteGroupVectors, StoreTheseBytesAndReadThemBack) {
    const GroupVector& vector = GetParam();
    EXPECT_EQ(Encode(vector.samples), vector.stream);
    Bytes samples(vector.samples.size());
    EXPECT_EQ(DecodeByteGroups(vector.stream, samples),
              (Decoded{samples.size(), Fault::None, samples.size()}));
    EXPECT_EQ(samples, vector.samples);
}

INSTANTIATE_TEST_SUITE_P(, ByteGroupVectors, testing::ValuesIn(kGroupVectors),
                         [](const auto& row) { return row.param.name; });

TEST(ByteGroups, AgreeWithTheStateMachineOnRunsAndLiteralsOfEveryLength) {
    std::mt19937 random{15};
    for (std::size_t count = 0; count < 700; ++count) {
        Bytes samples;
        while (samples.size() < count) {
            const std::size_t run = random() % 3 == 0 ? random() % 200 + 1 : 1;
            samples.insert(samples.end(), run, static_cast<std::uint8_t>(random() % 3));
        }
        samples.resize(count);
        const Bytes stream = Encode(samples);
        ASSERT_EQ(stream, yardstick::PlainByteGroups(samples)) << count;
        Bytes decoded(count);
        ASSERT_EQ(DecodeByteGroups(stream, decoded).fault, Fault::None);
        ASSERT_EQ(decoded, samples);
    }
}

struct DamagedGroups {
    std::string name;
    Bytes stream;
    Bytes expected; // of a record of 4, filled with 99 before
    Decoded decoded;
};

const DamagedGroups kDamagedGroups[] = {
    {"NothingAtAll", {}, {99, 99, 99, 99}, {0, Fault::EndsEarly, 0}},
    {"AHeaderWithoutItsSample", {2, 5, 2}, {5, 5, 99, 99}, {2, Fault::EndsEarly, 2}},
    {"CutLiteralsKeepWhatIsThere", {194, 1, 2, 3}, {1, 2, 3, 99}, {3, Fault::EndsEarly, 3}},
    {"ARunPastTheEnd", {3, 5, 190, 6}, {5, 5, 5, 6}, {4, Fault::TooLarge, 193}},
    {"LiteralsPastTheEnd", {195, 1, 2, 3, 4, 5, 2, 6}, {1, 2, 3, 4}, {4, Fault::TooLarge, 7}},
    {"AHeaderOfZeroSkipsAByte", {0, 5, 4, 6}, {6, 6, 6, 6}, {4, Fault::None, 4}},
};

TEST(DamagedByteGroups, KeepTheSamplesBeforeTheDamage) {
    for (const DamagedGroups& row : kDamagedGroups) {
        Bytes samples(4, 99);
        EXPECT_EQ(DecodeByteGroups(row.stream, samples), row.decoded) << row.name;
        EXPECT_EQ(samples, row.expected) << row.name;
    }
}

} // namespace
} // namespace kelvo::codec
