// What is found in containers that are damaged, and what a salvage makes of them.

#include "container/RecordMap.h"
#include "container/IndexRebuild.h"
#include "tests/container/ContainerFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <chrono>
#include <random>

namespace kelvo::test {

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kRecordLengthField = 4;
constexpr std::size_t kRecordCountField = 16;
constexpr std::size_t kIndexOffsetField = 28;

enum class Index : std::uint8_t { Whole, Erased, Unnamed };

class RecordMapping : public ContainerTest {
protected:
    Error Map(MapDepth depth, RecordMap& map) const {
        ChFile file;
        if (!file.OpenReadOnly(name_.c_str())) return {Fault::Missing, 0};
        const auto size = static_cast<std::uint32_t>(file.FileLength());
        const ContainerHeader header = ParseContainerHeader(FileBytes(name_)).Value();
        return MapRecords(file.Handle(), {0, size}, header, depth, {}, map);
    }
    std::string States(MapDepth depth) const {
        RecordMap map;
        if (const Error error = Map(depth, map); error.fault != Fault::None) return "fault";
        std::string text;
        for (const RecordVerdict& verdict : map.verdicts)
            text += "k?-"[static_cast<std::size_t>(verdict.state)];
        return text;
    }
    std::vector<std::uint32_t> Offsets() const {
        const std::uint32_t index = NumberIn(name_, kIndexOffsetField);
        std::vector<std::uint32_t> offsets;
        for (std::uint32_t i = 0; i <= NumberIn(name_, kRecordCountField); ++i)
            offsets.push_back(NumberIn(name_, index + i * 4));
        return offsets;
    }
    void Spoil(Index index) const {
        const std::uint32_t offset = NumberIn(name_, kIndexOffsetField);
        ByteVector bytes = FileBytes(name_);
        if (index == Index::Erased) std::fill(bytes.begin() + offset, bytes.end(), std::uint8_t{0});
        WriteFileBytes(name_, bytes);
        if (index != Index::Unnamed) return;
        PutNumber(name_, kRecordCountField, 0);
        PutNumber(name_, kIndexOffsetField, 0);
    }
    void Zero(std::uint32_t first, std::uint32_t end) const {
        ByteVector bytes = FileBytes(name_);
        std::fill(bytes.begin() + first, bytes.begin() + end, std::uint8_t{0});
        WriteFileBytes(name_, bytes);
    }
    const std::string name_ = Path("film.kvf");
};

TEST_F(RecordMapping, GoesOnBehindAHoleWithTheRightNumbers) {
    struct {
        Shape shape;
        const char* states;
    } const rows[] = {
        {{.type = 99, .records = 14}, "kkkk---kkkkkkk"},
        {{.type = 17, .records = 14}, "kkkk---kkkkkkk"},
        {{.type = 9, .records = 14}, "kkkk---kkkkkkk"},
        {{.type = 8, .records = 14, .key_interval = 3}, "kkkk---??kkkkk"},
        {{.type = 7, .records = 14, .key_interval = 5}, "kkkk---???kkkk"},
    };
    for (const auto& row : rows) {
        for (const Index index : {Index::Whole, Index::Erased, Index::Unnamed}) {
            SCOPED_TRACE(testing::Message() << row.shape.type << " " << static_cast<int>(index));
            MakeContainer(name_, row.shape);
            const std::vector<std::uint32_t> offsets = Offsets();
            Spoil(index);
            Zero(offsets[4], offsets[7]);
            // A whole index knows the places of the lost ones, and that they hold nothing.
            std::string expected = row.states;
            if (index == Index::Whole) {
                std::ranges::replace(expected, '-', row.shape.type == 99 ? 'k' : '?');
            }
            for (const MapDepth depth : {MapDepth::Places, MapDepth::Content}) {
                std::string states = States(depth);
                // How many there were, nobody knows where nothing counts them.
                if (index == Index::Unnamed && states.find("-") == 4) {
                    states.replace(4, states.find_last_of('-') - 3, "---");
                }
                EXPECT_EQ(states, expected);
            }
        }
    }
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(RecordMapping, MendsALengthWithoutAnIndex) {
    for (const Shape& shape : {Shape{.type = 99}, Shape{.type = 17}, Shape{.type = 9},
                               Shape{.type = 8, .key_interval = 3}}) {
        for (const std::uint32_t wrong : {0U, 1U, 30U, 200U, 0x7FFFFFFFU, ~0U}) {
            for (const Index index : {Index::Erased, Index::Unnamed}) {
                SCOPED_TRACE(testing::Message() << shape.type << " " << wrong);
                MakeContainer(name_, shape);
                const ByteVector sound = FileBytes(name_);
                const std::vector<std::uint32_t> offsets = Offsets();
                Spoil(index);
                PutNumber(name_, offsets[3], wrong);
                RecordMap map;
                ASSERT_EQ(Map(MapDepth::Content, map).fault, Fault::None);
                EXPECT_EQ(map.index.Count(), 10U);
                EXPECT_EQ(map.Count(RecordState::Kept), 10U);
                EXPECT_EQ(map.verdicts[3].reason, RecordReason::LengthMended);
                ASSERT_TRUE(RebuildIndex(name_.c_str(), {.aim = RebuildAim::Salvage}).Ok());
                EXPECT_EQ(FileBytes(name_), sound);
            }
        }
    }
}

TEST_F(RecordMapping, FindsWhatDoesNotDecodeAndWhatBuildsOnIt) {
    MakeContainer(name_, {.type = 8, .records = 12, .key_interval = 4});
    const std::vector<std::uint32_t> offsets = Offsets();
    Zero(offsets[5] + 4, offsets[6] - 8);
    EXPECT_EQ(States(MapDepth::Places), "kkkkkkkkkkkk");
    EXPECT_EQ(States(MapDepth::Content), "kkkkk???kkkk");
}

TEST_F(RecordMapping, OfAFileCutAnywhereHasTheWholeRecords) {
    for (const Shape& shape : {Shape{.type = 99}, Shape{.type = 8, .key_interval = 4}}) {
        MakeContainer(name_, shape);
        const ByteVector whole = FileBytes(name_);
        const std::vector<std::uint32_t> offsets = Offsets();
        for (std::size_t size = offsets[0]; size < whole.size(); size += 3) {
            WriteFileBytes(name_, ByteView{whole}.first(size));
            RecordMap map;
            const Error error = Map(MapDepth::Places, map);
            const auto there = static_cast<std::uint32_t>(
                std::ranges::count_if(offsets, [size](auto end) { return end <= size; }) - 1);
            ASSERT_EQ(error.fault, Fault::None) << size;
            EXPECT_EQ(map.index.Count(), there) << size;
            EXPECT_EQ(map.missing_at_end, 10 - there) << size;
            EXPECT_EQ(map.Count(RecordState::Kept), there) << size;
        }
    }
}

/// Zeros, one value, and random bytes over every part of the file: whatever is made of it opens
/// whole and holds every record that was not hit.
TEST_F(RecordMapping, SalvageGivesASoundFileWithEveryRecordInItsPlace) {
    std::mt19937 random(7);
    for (const Shape& shape :
         {Shape{.type = 99, .records = 24}, Shape{.type = 17, .records = 24},
          Shape{.type = 9, .records = 24}, Shape{.type = 8, .records = 24, .key_interval = 4},
          Shape{.type = 6, .records = 24}}) {
        MakeContainer(name_, shape);
        const ByteVector sound = FileBytes(name_);
        const std::vector<std::uint32_t> offsets = Offsets();
        for (std::uint32_t start = offsets[1]; start < sound.size(); start += 61) {
            ByteVector bytes = sound;
            const std::size_t end = std::min<std::size_t>(start + 100, bytes.size());
            for (std::size_t i = start; i < end; ++i)
                bytes[i] = start % 2 == 0 ? std::uint8_t{0} : static_cast<std::uint8_t>(random());
            WriteFileBytes(name_, bytes);
            SCOPED_TRACE(testing::Message() << shape.type << " " << start);
            const Result<RebuildReport> report =
                RebuildIndex(name_.c_str(), {.aim = RebuildAim::Salvage});
            ASSERT_TRUE(report.Ok());
            ASSERT_EQ(report.Value().audio.records, 24U);
            const auto& verdicts = report.Value().audio.map.verdicts;
            const std::vector<int> numbers = RecordNumbersIn(name_);
            ASSERT_EQ(numbers.size(), 24U);
            for (std::uint32_t n = 0; n < 24; ++n) {
                const bool hit = offsets[n] < end && offsets[n + 1] > start;
                if (!hit && verdicts[n].state == RecordState::Kept) {
                    EXPECT_EQ(numbers[n], static_cast<int>(n));
                }
                if (!hit && shape.type != 8 && shape.type != 6) {
                    EXPECT_EQ(verdicts[n].state, RecordState::Kept) << n;
                }
            }
            // Nothing of it is damaged any more.
            EXPECT_FALSE(RebuildIndex(name_.c_str(), {.aim = RebuildAim::Salvage}).Value().written);
        }
    }
    EXPECT_THAT(Texts(), IsEmpty());
    EXPECT_THAT(Names(), ElementsAre("film.kvf"));
}

TEST_F(RecordMapping, CostsWhatTheFileHoldsAndNotWhatItClaims) {
    struct rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const long before = usage.ru_maxrss;
    const auto start = std::chrono::steady_clock::now();
    std::mt19937 random(3);
    for (const std::uint32_t type : {1U, 3U, 8U, 9U, 17U, 22U, 30U, 99U}) {
        for (const std::uint32_t length : {1U, 4U, 700U, 1U << 20U, 1U << 29U, 0x7FFFFFFFU}) {
            for (const std::uint32_t filling : {4U, 64U, 700U, 0U}) {
                MakeContainer(name_, {.type = type, .records = 1, .side_length = 0});
                ByteVector bytes = FileBytes(name_);
                bytes.resize(16384);
                for (std::size_t i = 1057; i + 4 <= bytes.size(); i += 4) {
                    const std::uint32_t number =
                        filling != 0 ? filling : static_cast<std::uint32_t>(random());
                    for (unsigned k = 0; k < 4; ++k)
                        bytes[i + k] = static_cast<std::uint8_t>(number >> (8 * k));
                }
                WriteFileBytes(name_, bytes);
                PutNumber(name_, kRecordLengthField, length);
                PutNumber(name_, kRecordCountField, filling == 4 ? 0 : 0x10000000);
                RecordMap map;
                static_cast<void>(Map(MapDepth::Content, map));
                EXPECT_LE(map.index.Count(), 16384U);
                ZFilekel file;
                if (file.OpenSalvaged(name_.c_str(), std::nullopt)) {
                    EXPECT_FALSE(file.Recompress({.compression_type = 9}, nullptr));
                }
            }
        }
    }
    ::getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss - before, 200 * 1024); // a record that may be decoded, and its kin
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(120));
    EXPECT_THAT(Texts(), Each(testing::HasSubstr(""))); // none is waited for
}

TEST_F(RecordMapping, OpensWithoutAnIndexAndKeepsNumbersByEveryRoad) {
    for (const Shape& shape : {Shape{.type = 99, .records = 14}, Shape{.type = 17, .records = 14},
                               Shape{.type = 8, .records = 14, .key_interval = 4}}) {
        MakeContainer(name_, shape);
        const std::vector<std::uint32_t> offsets = Offsets();
        Spoil(Index::Erased);
        Zero(offsets[5], offsets[7]);
        const ByteVector damaged = FileBytes(name_);
        ZFilekel file;
        ASSERT_TRUE(file.OpenSalvaged(name_.c_str(), std::nullopt));
        ASSERT_EQ(file.RecordCount(), 14U);
        std::vector<ByteVector> in_order;
        while (file.ReadNextRecord())
            in_order.emplace_back(file.RecordBuffer().begin(), file.RecordBuffer().end());
        ASSERT_EQ(in_order.size(), 14U);
        for (const int n : {4, 8, 9, 12, 13})
            EXPECT_EQ(in_order[static_cast<std::size_t>(n)] ==
                          Payload(static_cast<std::uint32_t>(n), shape.record_length),
                      true)
                << shape.type << " " << n;
        EXPECT_EQ(in_order[5], in_order[4]);
        EXPECT_EQ(in_order[6], in_order[4]);
        for (int n = 13; n >= 0; --n) {
            ASSERT_TRUE(file.ReadRecord(n));
            EXPECT_EQ(file.RecordIsLost(), n == 5 || n == 6);
            const bool same =
                std::ranges::equal(file.RecordBuffer(), in_order[static_cast<std::size_t>(n)]);
            EXPECT_TRUE(same) << shape.type << " " << n;
        }
        EXPECT_TRUE(file.Close());
        EXPECT_EQ(FileBytes(name_), damaged);
    }
    EXPECT_THAT(Texts(), IsEmpty());
}

} // namespace

} // namespace kelvo::test
