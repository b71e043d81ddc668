// Replacing, inserting and deleting records, and the two ends of an edit.

#include "container/ZFilekel.h"
#include "framework/base/ProgressDisplay.h"
#include "tests/container/ContainerFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace kelvo::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kOnlyExisting[] =
    "L'operazione richiesta può essere eseguita solo su un file aperto in OpenExisting!";

class Editing : public ContainerTest {
protected:
    /// Ten records of type 9, open for editing.
    void Open(std::uint32_t type = 9) {
        MakeContainer(name_, {.type = type});
        before_ = FileBytes(name_);
        ASSERT_TRUE(file_.OpenExisting(name_.c_str()));
    }
    bool Replace(int record, std::uint32_t number) {
        return file_.ReplaceRecord(record, Payload(number, 64), Side(number, 8));
    }
    bool Insert(int record, std::uint32_t number) {
        return file_.InsertRecord(record, Payload(number, 64), Side(number, 8));
    }

    const std::string name_ = Path("film.kvf");
    ByteVector before_;
    ZFilekel file_;
};

TEST_F(Editing, ReplacedRecordIsReadAtOnceAndLeavesNoDeadBytesAfterYes) {
    Open();
    ASSERT_TRUE(Replace(3, 77));
    EXPECT_TRUE(file_.IsModified());
    EXPECT_EQ(file_.CurrentRecord(), 4U);
    const std::vector<int> expected = {0, 1, 2, 77, 4, 5, 6, 7, 8, 9};
    EXPECT_EQ(RecordNumbers(file_), expected);
    boxes_.AnswerNext({IDYES});
    EXPECT_TRUE(file_.Close());
    EXPECT_THAT(Texts(),
                ElementsAre("Occorre ricomprimere il file " + name_ +
                            ".\r\n\r\nSe si sceglie di non effettuare l'operazione, tutte le "
                            "modifiche apportate sui records andranno perse.\r\n\r\n"
                            "RICOMPRIMERE IL FILE?"));
    EXPECT_EQ(boxes_.Boxes().at(0).caption, "ZFilekel");
    EXPECT_EQ(boxes_.Boxes().at(0).type, MB_YESNO | MB_ICONEXCLAMATION);

    // What a container made of these records from the start would be.
    const std::string fresh = Path("fresh.kvf");
    ZFilekel made;
    ASSERT_TRUE(made.Create(fresh.c_str(), 5, 64, 8, 9, 999999, 1));
    ASSERT_TRUE(made.WriteUserHeader(ByteVector{1, 2, 3, 4, 5}));
    for (const int number : expected) {
        const auto n = static_cast<std::uint32_t>(number);
        ASSERT_TRUE(made.AppendRecord(Payload(n, 64), Side(n, 8)));
    }
    ASSERT_TRUE(made.Close());
    EXPECT_EQ(FileBytes(name_), FileBytes(fresh));
    EXPECT_THAT(Names(), ElementsAre("film.kvf", "fresh.kvf"));
}

TEST_F(Editing, AnsweredNoReadsExactlyAsBefore) {
    Open();
    ASSERT_TRUE(Replace(3, 77));
    ASSERT_TRUE(Insert(0, 78));
    ASSERT_TRUE(file_.DeleteRecords(5, 8));
    boxes_.AnswerNext({IDNO});
    EXPECT_FALSE(file_.Close());
    EXPECT_EQ(file_.OpenMode(), ZFilekel::Mode::Closed);
    const ByteVector after = FileBytes(name_);
    EXPECT_GT(after.size(), before_.size()); // the bytes behind the index are never read
    EXPECT_TRUE(std::equal(before_.begin(), before_.end(), after.begin()));
    EXPECT_EQ(RecordNumbersIn(name_), Range(10));
    EXPECT_THAT(Names(), ElementsAre("film.kvf"));
}

TEST_F(Editing, ReplacesARawRecordInPlaceWithoutAQuestion) {
    Open(99);
    ASSERT_TRUE(Replace(4, 77));
    EXPECT_FALSE(file_.IsModified());
    EXPECT_TRUE(file_.Close());
    EXPECT_THAT(Texts(), IsEmpty());
    EXPECT_EQ(FileBytes(name_).size(), before_.size());
    EXPECT_EQ(RecordNumbersIn(name_), (std::vector<int>{0, 1, 2, 3, 77, 5, 6, 7, 8, 9}));
}

TEST_F(Editing, InsertedRecordTakesTheNumberAndShiftsTheOthersUp) {
    Open();
    ASSERT_TRUE(Insert(0, 50));
    EXPECT_EQ(file_.CurrentRecord(), 1U);
    ASSERT_TRUE(Insert(4, 51));
    ASSERT_TRUE(Insert(11, 52));
    const std::vector<int> expected = {50, 0, 1, 2, 51, 3, 4, 5, 6, 7, 8, 52, 9};
    EXPECT_EQ(RecordNumbers(file_), expected);
    EXPECT_GT(file_.RecordFileOffset(0), file_.RecordFileOffset(10)); // it lies at the end
    boxes_.AnswerNext({IDYES});
    EXPECT_TRUE(file_.Close());
    EXPECT_EQ(RecordNumbersIn(name_), expected);
}

TEST_F(Editing, DeletesHalfOpenRangesButNeverTheLastRecord) {
    Open();
    EXPECT_FALSE(file_.DeleteRecords(4, 4));
    EXPECT_FALSE(file_.DeleteRecords(-1, 4));
    EXPECT_FALSE(file_.DeleteRecords(4, 11));
    EXPECT_FALSE(file_.IsModified());
    ASSERT_TRUE(file_.DeleteRecords(2, 4));
    EXPECT_EQ(RecordNumbers(file_), (std::vector<int>{0, 1, 4, 5, 6, 7, 8, 9}));
    ASSERT_TRUE(file_.DeleteRecords(6, 8));
    EXPECT_EQ(RecordNumbers(file_), (std::vector<int>{0, 1, 4, 5, 6, 7}));
    ASSERT_TRUE(file_.AppendRecord(Payload(90, 64), Side(90, 8)));
    EXPECT_EQ(RecordNumbers(file_), (std::vector<int>{0, 1, 4, 5, 6, 7, 90}));
    ASSERT_TRUE(file_.DeleteRecords(0, 7)); // all: record 0 stays
    EXPECT_EQ(RecordNumbers(file_), (std::vector<int>{0}));
    EXPECT_FALSE(file_.DeleteRecords(0, 1));
    EXPECT_THAT(Texts(), IsEmpty());
    boxes_.AnswerNext({IDYES});
    EXPECT_TRUE(file_.Close());
    EXPECT_EQ(RecordNumbersIn(name_), (std::vector<int>{0}));
}

TEST_F(Editing, IsRefusedInABoxInOtherModesAndSilentlyBeyondTheEnd) {
    Open();
    EXPECT_FALSE(Replace(10, 1));
    EXPECT_FALSE(Replace(-1, 1));
    EXPECT_FALSE(Insert(10, 1));
    EXPECT_THAT(Texts(), IsEmpty());
    EXPECT_TRUE(file_.Close());
    ASSERT_TRUE(file_.OpenForRead(name_.c_str()));
    EXPECT_FALSE(Replace(0, 1));
    EXPECT_FALSE(Insert(0, 1));
    EXPECT_FALSE(file_.DeleteRecords(0, 1));
    EXPECT_THAT(Texts(), ElementsAre(kOnlyExisting, kOnlyExisting, kOnlyExisting));
    EXPECT_FALSE(Replace(10, 1));
    EXPECT_THAT(Texts(), SizeIs(3));
    EXPECT_TRUE(file_.Close());
    EXPECT_EQ(FileBytes(name_), before_);
}

TEST_F(Editing, ThatIsDestroyedAsksLikeClose) {
    MakeContainer(name_, {});
    boxes_.AnswerNext({IDYES});
    {
        ZFilekel file;
        ASSERT_TRUE(file.OpenExisting(name_.c_str()));
        ASSERT_TRUE(file.DeleteRecords(0, 9));
    }
    EXPECT_EQ(RecordNumbersIn(name_), (std::vector<int>{9}));
}

TEST_F(Editing, AbandonedLosesANewFile) {
    ASSERT_TRUE(file_.Create(name_.c_str(), 0, 4, 0, 99, 1, 1));
    file_.AbandonChanges();
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(file_.OpenMode(), ZFilekel::Mode::Closed);
}

TEST_F(Editing, OfADifferentialContainerAsksAndTurnsItIntoTypeNine) {
    MakeContainer(name_, {.type = 8, .key_interval = 4});
    const ByteVector before = FileBytes(name_);
    boxes_.AnswerNext({IDNO, IDYES});
    EXPECT_FALSE(file_.OpenExisting(name_.c_str()));
    EXPECT_EQ(file_.OpenMode(), ZFilekel::Mode::Closed);
    EXPECT_EQ(FileBytes(name_), before);
    EXPECT_THAT(
        Texts(),
        ElementsAre("ATTENZIONE! - E' stata richiesta l'apertura del file in Read, Random-Write "
                    "con possibilità di inserimento e cancellazione.\r\nIl file ha un tipo di "
                    "codifica che non consente inserimento o cancellazione di records.\r\nCOSA "
                    "FARE?\r\nPremendo <Si> il file sarà ricompresso utilizzando una codifica "
                    "appropriata, premendo <No> l'operazione sarà annullata\r\n\r\nRICOMPRIMERE "
                    "IL FILE?"));
    EXPECT_EQ(boxes_.Boxes().at(0).caption, "ZFilekel");
    ASSERT_TRUE(file_.OpenExisting(name_.c_str()));
    EXPECT_EQ(file_.OpenMode(), ZFilekel::Mode::Existing);
    EXPECT_EQ(file_.CompressionType(), 9U);
    EXPECT_EQ(file_.KeyInterval(), 4U);
    EXPECT_EQ(RecordNumbers(file_), Range(10));
    EXPECT_TRUE(file_.Close());
}

class CountingDisplay : public ProgressDisplay {
public:
    CountingDisplay(std::vector<std::pair<int, int>>& updates, int stop_at)
        : updates_(updates), stop_at_(stop_at) {}
    bool Update(std::int32_t current, std::int32_t total) override {
        updates_.emplace_back(current, total);
        return current < stop_at_;
    }
    void Close() override {}

private:
    std::vector<std::pair<int, int>>& updates_;
    int stop_at_;
};

TEST_F(Editing, ShowsItsRewriteEveryTenRecordsAndAStopGivesTheChangesUp) {
    MakeContainer(name_, {.records = 35});
    std::string title;
    std::vector<std::pair<int, int>> updates;
    int stop_at = 1000;
    SetProgressDisplayFactory([&](const CString& text) {
        title = text.View();
        return std::make_unique<CountingDisplay>(updates, stop_at);
    });
    boxes_.AnswerQuestions(IDYES);
    ASSERT_TRUE(file_.OpenExisting(name_.c_str()));
    ASSERT_TRUE(file_.DeleteRecords(0, 1));
    EXPECT_TRUE(file_.Close());
    EXPECT_EQ(title, "Ricompressione in chiusura...");
    EXPECT_THAT(updates, ElementsAre(std::pair(0, 34), std::pair(10, 34), std::pair(20, 34),
                                     std::pair(30, 34)));
    const ByteVector before = FileBytes(name_);
    stop_at = 20;
    ASSERT_TRUE(file_.OpenExisting(name_.c_str()));
    ASSERT_TRUE(Replace(3, 99));
    EXPECT_TRUE(file_.Close());
    EXPECT_EQ(file_.LastError().fault, Fault::Stopped);
    SetProgressDisplayFactory({});
    EXPECT_TRUE(std::ranges::equal(before, ByteView{FileBytes(name_)}.first(before.size())));
    EXPECT_THAT(Names(), ElementsAre("film.kvf"));
    EXPECT_THAT(Texts(), SizeIs(2)); // the two questions
}

} // namespace

} // namespace kelvo::test
