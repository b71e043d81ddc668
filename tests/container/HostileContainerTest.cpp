// Headers, directories and indices that claim what is not there.

#include "container/IndexRebuild.h"
#include "container/ZFilekel.h"
#include "tests/container/ContainerFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <random>

namespace kelvo::test {

namespace {

using testing::IsEmpty;

constexpr std::size_t kUserHeaderSize = 0;
constexpr std::size_t kRecordLength = 4;
constexpr std::size_t kSideLength = 8;
constexpr std::size_t kRecordCount = 16;
constexpr std::size_t kCompressionType = 20;
constexpr std::size_t kIndexOffset = 28;

/// The most memory that this process ever had, in bytes.
std::size_t PeakMemory() {
    struct rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

using HostileContainer = ContainerTest;

TEST_F(HostileContainer, ThatClaimsMoreThanItHoldsDoesNotOpen) {
    const std::string name = Path("a.kaf");
    const std::string damaged = Path("b.kaf");
    MakeContainer(name, {.type = 17, .records = 10});
    const ByteVector sound = FileBytes(name);
    const auto size = static_cast<std::uint32_t>(sound.size());
    const std::pair<std::size_t, std::uint32_t> kClaims[] = {
        {kUserHeaderSize, size - 1051},
        {kUserHeaderSize, 0x7FFFFFFF},
        {kUserHeaderSize, ~0U},
        {kRecordLength, 0x10000000},
        {kRecordLength, 0x80000000},
        {kRecordLength, ~0U},
        {kSideLength, size},
        {kSideLength, 0x7FFFFFFF},
        {kSideLength, ~0U},
        {kRecordCount, 11},
        {kRecordCount, 0x1FFFFFFF},
        {kRecordCount, 0x40000000},
        {kRecordCount, ~0U},
        {kIndexOffset, 0},
        {kIndexOffset, 1056},
        {kIndexOffset, size - 4},
        {kIndexOffset, size + 1},
        {kIndexOffset, ~0U},
    };
    const std::size_t before = PeakMemory();
    for (const auto& [offset, value] : kClaims) {
        WriteFileBytes(damaged, sound);
        PutNumber(damaged, offset, value);
        ZFilekel file;
        EXPECT_FALSE(file.OpenForRead(damaged.c_str())) << offset << " " << value;
        EXPECT_EQ(file.OpenMode(), ZFilekel::Mode::Closed);
        EXPECT_NE(file.LastError().fault, Fault::None);
        EXPECT_FALSE(file.OpenExisting(damaged.c_str())) << offset << " " << value;
        EXPECT_EQ(RecordNumbersIn(name), Range(10));
    }
    EXPECT_LT(PeakMemory() - before, std::size_t{64} << 20U);
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(HostileContainer, WithoutRecordsMayClaimLongOnesAndTakesNoMemoryForThem) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {.type = 9, .records = 0});
    PutNumber(name, kRecordLength, 0x7FFFFFFF / 16);
    PutNumber(name, kSideLength, 0x7FFFFFFF / 16);
    const std::size_t before = PeakMemory();
    ZFilekel file;
    EXPECT_TRUE(file.OpenForRead(name.c_str()));
    EXPECT_FALSE(file.ReadNextRecord());
    EXPECT_TRUE(file.Close());
    EXPECT_LT(PeakMemory() - before, std::size_t{64} << 20U);
}

TEST_F(HostileContainer, CutAnywhereNeverOpensWhole) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {.type = 2, .records = 3});
    const ByteVector sound = FileBytes(name);
    for (std::size_t size = 0; size < sound.size(); size += size < 1040 ? 97 : 1) {
        WriteFileBytes(name, ByteView{sound}.first(size));
        ZFilekel file;
        EXPECT_FALSE(file.OpenForRead(name.c_str())) << size;
    }
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(HostileContainer, WhoseIndexPointsAnywhereReadsInsideTheFile) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {.type = 9, .records = 6});
    const ByteVector sound = FileBytes(name);
    const std::uint32_t index = NumberIn(name, kIndexOffset);
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        WriteFileBytes(name, sound);
        const std::size_t value = random() % 13;
        const std::uint32_t wrong = round % 3 == 0
                                        ? static_cast<std::uint32_t>(random())
                                        : static_cast<std::uint32_t>(random() % sound.size());
        PutNumber(name, index + value * 4, wrong);
        ZFilekel file;
        if (file.OpenForRead(name.c_str())) {
            static_cast<void>(RecordNumbers(file));
            for (std::uint32_t i = 0; i < 6; ++i) {
                std::uint32_t length = 0;
                static_cast<void>(file.ReadRawRecord(static_cast<int>(i), length));
            }
            EXPECT_TRUE(file.Close());
        }
        // Edits must not be led outside the records: refused, or nothing but records is touched.
        if (file.OpenExisting(name.c_str())) {
            EXPECT_TRUE(file.AppendRecord(Payload(50, 64), Side(50, 8)));
            EXPECT_EQ(file.UserHeader()[0], 1);
            file.AbandonChanges();
            const ByteVector after = FileBytes(name);
            EXPECT_TRUE(std::equal(after.begin(), after.begin() + 1057, sound.begin()));
        }
        boxes_.Clear();
    }
}

TEST_F(HostileContainer, WhoseTypeBecameRawReadsNoMoreThanARecord) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {.type = 3, .records = 6, .record_length = 128});
    PutNumber(name, kCompressionType, 99);
    const ByteVector bytes = FileBytes(name);
    ZFilekel file;
    ASSERT_TRUE(file.OpenForRead(name.c_str()));
    bool some_longer = false;
    for (std::uint32_t record = 0; record < 6; ++record) {
        some_longer = some_longer || file.StoredLength(record) > 128;
        ASSERT_TRUE(file.ReadNextRecord());
        EXPECT_EQ(file.RecordIsDamaged(), file.StoredLength(record) != 128);
        const ByteView stored = ByteView{bytes}.subspan(file.RecordFileOffset(record) + 4);
        EXPECT_TRUE(std::ranges::equal(file.RecordBuffer(), stored.first(128))) << record;
        EXPECT_TRUE(std::ranges::equal(file.SideBuffer(), Side(record, 8))) << record;
    }
    EXPECT_TRUE(some_longer);
    EXPECT_THAT(Texts(), testing::Contains("FILE CORROTTO!"));
}

TEST_F(HostileContainer, OfRandomBytesDoesNoHarm) {
    MakeContainer(Path("s.kaf"), {.type = 16, .records = 4});
    MakeContainer(Path("p.kvf"), {.type = 8, .records = 7, .key_interval = 3});
    MakeFilm(Path("film.kva"), Path("s.kaf"), Path("p.kvf"));
    const ByteVector sound = FileBytes(Path("film.kva"));
    const std::string damaged = Path("d.kva");
    std::mt19937 random(2);
    for (int round = 0; round < 400; ++round) {
        ByteVector bytes = sound;
        for (int i = 0; i < 4; ++i) {
            // Mostly in the directory and the headers, where the claims are.
            const std::size_t window = round % 2 == 0 ? 60 : bytes.size();
            const std::size_t start = round % 4 < 2 ? 0 : (bytes.size() - window) / 2;
            bytes[start + random() % window] = static_cast<std::uint8_t>(random());
        }
        WriteFileBytes(damaged, bytes);
        static_cast<void>(RecordNumbersIn(damaged, 'A'));
        static_cast<void>(RecordNumbersIn(damaged, 'V'));
        static_cast<void>(RecordNumbersIn(damaged, 'N'));
        static_cast<void>(RebuildIndex(damaged.c_str()));
        boxes_.Clear();
    }
}

TEST_F(HostileContainer, FilmWhoseWindowsLieOutsideDoesNotOpen) {
    MakeContainer(Path("s.kaf"), {.records = 2});
    const std::string film = Path("film.kva");
    MakeFilm(film, Path("s.kaf"), Path("s.kaf"));
    const ByteVector sound = FileBytes(film);
    const auto size = static_cast<std::uint32_t>(sound.size());
    const std::pair<std::uint32_t, std::uint32_t> kWindows[] = {
        {0, 0}, {0, size}, {15, size}, {16, 15}, {16, size + 1}, {size, ~0U}, {~0U, ~0U}, {~0U, 0},
    };
    for (const auto& [start, end] : kWindows) {
        WriteFileBytes(film, sound);
        PutNumber(film, 0, start);
        PutNumber(film, 4, end);
        ZFilekel file;
        EXPECT_FALSE(file.OpenForRead(film.c_str(), 'A')) << start << " " << end;
        EXPECT_EQ(RecordNumbersIn(film, 'V'), Range(2));
    }
    WriteFileBytes(film, ByteView{sound}.first(15));
    ZFilekel file;
    EXPECT_FALSE(file.OpenForRead(film.c_str(), 'A'));
    EXPECT_FALSE(file.OpenForRead(Path("missing.kvf").c_str()));
    EXPECT_EQ(file.LastError().fault, Fault::Missing);
    EXPECT_FALSE(file.OpenForRead(Path("").c_str())); // a folder
}

} // namespace

} // namespace kelvo::test
