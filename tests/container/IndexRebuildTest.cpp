// Making an index anew: mode 5 of a whole container, and the rebuild of damaged files.

#include "container/IndexRebuild.h"
#include "container/ZFilekel.h"
#include "framework/base/ProgressDisplay.h"
#include "tests/container/ContainerFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace kelvo::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class IndexRebuilding : public ContainerTest {
protected:
    /// Zeros over the whole index.
    void EraseIndex(const std::string& name) {
        ByteVector bytes = FileBytes(name);
        std::fill(bytes.begin() + NumberIn(name, 28), bytes.end(), std::uint8_t{0});
        WriteFileBytes(name, bytes);
    }
    bool RebuildInMode5(const std::string& name) {
        ZFilekel file;
        const bool rebuilt = file.OpenInMode(name.c_str(), ZFilekel::Mode::IndexRebuild);
        EXPECT_EQ(file.OpenMode(), ZFilekel::Mode::Closed);
        return rebuilt;
    }
    const std::string name_ = Path("film.kvf");
};

TEST_F(IndexRebuilding, OfAWholeContainerGivesTheSameFile) {
    for (const Shape& shape :
         {Shape{.type = 99}, Shape{.type = 8, .key_interval = 3}, Shape{}, Shape{.records = 0}}) {
        MakeContainer(name_, shape);
        const ByteVector before = FileBytes(name_);
        EraseIndex(name_);
        EXPECT_TRUE(RebuildInMode5(name_));
        EXPECT_EQ(FileBytes(name_), before);
        EraseIndex(name_);
        const Result<RebuildReport> report = RebuildIndex(name_.c_str());
        ASSERT_TRUE(report.Ok());
        EXPECT_TRUE(report.Value().written);
        EXPECT_EQ(report.Value().audio.records, shape.records);
        EXPECT_EQ(FileBytes(name_), before);
    }
    EXPECT_THAT(Texts(), IsEmpty());
    EXPECT_THAT(Names(), ElementsAre("film.kvf"));
}

TEST_F(IndexRebuilding, OfASoundFileTouchesNothing) {
    MakeContainer(name_, {});
    const auto time = std::filesystem::last_write_time(name_);
    const Result<RebuildReport> report = RebuildIndex(name_.c_str());
    ASSERT_TRUE(report.Ok());
    EXPECT_FALSE(report.Value().written);
    EXPECT_EQ(report.Value().audio.records, 10U);
    EXPECT_EQ(std::filesystem::last_write_time(name_), time);
}

TEST_F(IndexRebuilding, InModeFiveEndsAtARawRecordOfAnotherLength) {
    MakeContainer(name_, {.type = 99});
    PutNumber(name_, 1057 + 76, 63);
    const ByteVector before = FileBytes(name_);
    EXPECT_FALSE(RebuildInMode5(name_));
    EXPECT_EQ(FileBytes(name_), before);
    EXPECT_THAT(Texts(), ElementsAre("FILE CORROTTO!"));
}

TEST_F(IndexRebuilding, InModeFiveGoesOnOverARecordThatDoesNotDecode) {
    MakeContainer(name_, {.type = 17});
    EraseIndex(name_);
    ByteVector bytes = FileBytes(name_);
    bytes[1057 + 4] ^= 0xFFU;
    WriteFileBytes(name_, bytes);
    EXPECT_TRUE(RebuildInMode5(name_));
    EXPECT_THAT(Texts(), ElementsAre("FILE CORROTTO!"));
    boxes_.Clear();
    const std::vector<int> numbers = RecordNumbersIn(name_);
    ASSERT_EQ(numbers.size(), 10U);
    EXPECT_EQ(std::vector(numbers.begin() + 1, numbers.end()),
              (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

class StoppingDisplay : public ProgressDisplay {
public:
    bool Update(std::int32_t, std::int32_t) override { return false; }
    void Close() override {}
};

TEST_F(IndexRebuilding, StoppedByTheUserLeavesTheFile) {
    MakeContainer(name_, {});
    EraseIndex(name_);
    const ByteVector before = FileBytes(name_);
    std::string title;
    SetProgressDisplayFactory([&](const CString& text) {
        title = text.View();
        return std::make_unique<StoppingDisplay>();
    });
    EXPECT_TRUE(RebuildInMode5(name_));
    SetProgressDisplayFactory({});
    EXPECT_EQ(title, "Ricostruzione indici...");
    EXPECT_EQ(FileBytes(name_), before);
    EXPECT_THAT(Names(), ElementsAre("film.kvf"));
}

TEST_F(IndexRebuilding, OfACutFileKeepsTheRecordsThatAreWhole) {
    MakeContainer(name_, {.type = 7, .key_interval = 4});
    const ByteVector whole = FileBytes(name_);
    ZFilekel file;
    ASSERT_TRUE(file.OpenForRead(name_.c_str()));
    std::vector<std::uint64_t> ends;
    for (std::uint32_t i = 0; i <= 10; ++i)
        ends.push_back(file.RecordFileOffset(i));
    ASSERT_TRUE(file.Close());
    for (int kept = 0; kept <= 10; ++kept) {
        for (const std::uint64_t more : {std::uint64_t{0}, std::uint64_t{3}}) {
            WriteFileBytes(name_,
                           ByteView{whole}.first(ends[static_cast<std::size_t>(kept)] + more));
            const Result<RebuildReport> report = RebuildIndex(name_.c_str());
            ASSERT_TRUE(report.Ok());
            EXPECT_EQ(report.Value().audio.header_records, 10U);
            EXPECT_EQ(report.Value().audio.records, static_cast<std::uint32_t>(kept));
            EXPECT_EQ(RecordNumbersIn(name_), Range(kept));
            EXPECT_EQ(NumberIn(name_, 28), ends[static_cast<std::size_t>(kept)]);
        }
    }
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(IndexRebuilding, KeepsTheRecordsBehindOneWhoseLengthIsDamaged) {
    for (const Shape& shape :
         {Shape{.type = 99}, Shape{.type = 17}, Shape{.type = 8, .key_interval = 3}}) {
        MakeContainer(name_, shape);
        const std::uint32_t index = NumberIn(name_, 28);
        const std::uint32_t fourth = NumberIn(name_, index + 3 * 4);
        const std::uint32_t length = NumberIn(name_, fourth);
        for (const std::uint32_t wrong : {0U, length - 1, length + 5, 0x7FFFFFFFU, ~0U}) {
            MakeContainer(name_, shape);
            PutNumber(name_, fourth, wrong);
            const ByteVector damaged = FileBytes(name_);
            const Result<RebuildReport> report = RebuildIndex(name_.c_str());
            ASSERT_TRUE(report.Ok());
            EXPECT_EQ(report.Value().audio.records, 10U) << shape.type << " " << wrong;
            EXPECT_FALSE(report.Value().written); // it could not be better than it is
            EXPECT_EQ(FileBytes(name_), damaged);
            // With another entry wrong, the records themselves are believed again.
            PutNumber(name_, index + 7 * 4, 1);
            ASSERT_TRUE(RebuildIndex(name_.c_str()).Value().written);
            EXPECT_EQ(FileBytes(name_), damaged);
        }
    }
}

TEST_F(IndexRebuilding, RefusesToDropEveryRecordForADamagedHeader) {
    MakeContainer(name_, {.type = 17});
    EraseIndex(name_);
    PutNumber(name_, 4, 1U << 24U); // no record of this file could be so long
    const ByteVector damaged = FileBytes(name_);
    EXPECT_EQ(RebuildIndex(name_.c_str()).Why().fault, Fault::BadValue);
    EXPECT_EQ(FileBytes(name_), damaged);
    EXPECT_THAT(Names(), ElementsAre("film.kvf"));
}

TEST_F(IndexRebuilding, FindsTheRecordsOfAFileThatWasNeverClosed) {
    for (const Shape& shape :
         {Shape{.type = 99, .records = 20}, Shape{.type = 8, .records = 20, .key_interval = 6},
          Shape{.type = 9, .records = 20}, Shape{.type = 9, .records = 400}}) {
        MakeContainer(name_, shape);
        const ByteVector closed = FileBytes(name_);
        PutNumber(name_, 16, 0);
        PutNumber(name_, 28, 0);
        const ByteVector with_index = FileBytes(name_); // the index is behind the records, unnamed
        ByteVector without_index = with_index;
        without_index.resize(NumberIn(name_, 28) == 0 ? closed.size() - (2 * shape.records + 1) * 4
                                                      : closed.size());
        for (const ByteVector& bytes : {with_index, without_index}) {
            WriteFileBytes(name_, bytes);
            ASSERT_TRUE(RebuildIndex(name_.c_str()).Ok());
            EXPECT_EQ(FileBytes(name_), closed) << shape.type << " " << shape.records;
        }
    }
}

TEST_F(IndexRebuilding, OfACutFilmWritesItsDirectoryAnew) {
    const std::string film = Path("cut.kva");
    std::filesystem::copy(std::string(KELVO_SOURCE_DIR) + "/tests/samples/cut.kva", film);
    const ByteVector before = FileBytes(film);
    std::filesystem::permissions(film, std::filesystem::perms::owner_all);
    ZFilekel file;
    EXPECT_FALSE(file.OpenForRead(film.c_str(), 'V'));
    EXPECT_THAT(Texts(), IsEmpty());

    const Result<RebuildReport> report = RebuildIndex(film.c_str());
    ASSERT_TRUE(report.Ok());
    EXPECT_TRUE(report.Value().is_film);
    EXPECT_FALSE(report.Value().audio.changed);
    EXPECT_EQ(report.Value().audio.records, 60U);
    EXPECT_EQ(report.Value().video.header_records, 60U);
    EXPECT_EQ(report.Value().video.records, 28U);

    const ByteVector after = FileBytes(film);
    EXPECT_EQ(NumberIn(film, 8), 10779U);
    EXPECT_EQ(NumberIn(film, 12), after.size());
    EXPECT_TRUE(std::equal(before.begin() + 16, before.begin() + 10779, after.begin() + 16));
    ASSERT_TRUE(file.OpenForRead(film.c_str(), 'V'));
    EXPECT_EQ(file.RecordCount(), 28U);
    while (file.ReadNextRecord())
        EXPECT_EQ(file.LastError().fault, Fault::None);
    EXPECT_EQ(file.CurrentRecord(), 28U);
    EXPECT_TRUE(file.Close());
    EXPECT_TRUE(file.OpenForRead(film.c_str(), 'A'));
    EXPECT_FALSE(RebuildIndex(film.c_str()).Value().written);
    EXPECT_THAT(Names(), ElementsAre("cut.kva"));
}

TEST_F(IndexRebuilding, SaysWhatIsNoContainer) {
    WriteFileBytes(name_, ByteVector(5000, 0xEE));
    EXPECT_EQ(RebuildIndex(name_.c_str()).Why().fault, Fault::BadValue);
    WriteFileBytes(name_, ByteVector(100));
    EXPECT_EQ(RebuildIndex(name_.c_str()).Why().fault, Fault::BadValue);
    EXPECT_EQ(RebuildIndex(Path("none.kvf").c_str()).Why().fault, Fault::Missing);
    EXPECT_THAT(Names(), ElementsAre("film.kvf"));
}

} // namespace

} // namespace kelvo::test
