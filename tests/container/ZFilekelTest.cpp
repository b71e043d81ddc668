// The container as its callers see it: the bytes that it writes, and reading by number and in
// sequence.

#include "container/ZFilekel.h"
#include "tests/container/ContainerFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

namespace kelvo::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const ByteVector kReserved(ContainerHeader::kReservedBytes);
constexpr char kCorrupt[] = "FILE CORROTTO!";

using Container = ContainerTest;

TEST_F(Container, WithoutRecordsHoldsHeaderUserHeaderAndOneValue) {
    const std::string name = Path("empty.kvf");
    {
        ZFilekel file;
        ASSERT_TRUE(file.Create(name.c_str(), 3, 100, 12, 9, 999999, 1));
        ASSERT_TRUE(file.WriteUserHeader(ByteVector{7, 8, 9}));
        ASSERT_TRUE(file.Close());
    }
    EXPECT_EQ(FileBytes(name), Joined({Numbers({3, 100, 12, 1, 0, 9, 999999, 1055, 1}),
                                       kReserved,
                                       {7, 8, 9},
                                       Numbers({1055})}));
    ZFilekel file;
    ASSERT_TRUE(file.OpenForRead(name.c_str()));
    EXPECT_EQ(file.RecordCount(), 0U);
    EXPECT_FALSE(file.ReadNextRecord());
    EXPECT_FALSE(file.ReadRecord(0));
    EXPECT_FALSE(file.GoToRecord(0));
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(Container, OfRawRecordsStoresEachAsLengthBytesAndSideBlock) {
    const std::string name = Path("raw.kvf");
    ZFilekel file;
    ASSERT_TRUE(file.Create(name.c_str(), 2, 3, 1, 99, 5, 1));
    EXPECT_TRUE(file.AppendRecord(ByteVector{1, 2, 3}, ByteVector{10}));
    EXPECT_TRUE(file.WriteUserHeader(ByteVector{0xAA, 0xBB})); // in the middle of appending
    EXPECT_TRUE(file.AppendRecord(ByteVector{4, 5, 6}, ByteVector{20}));
    ASSERT_TRUE(file.Close());
    EXPECT_EQ(FileBytes(name), Joined({Numbers({2, 3, 1, 1, 2, 99, 5, 1070, 1}),
                                       kReserved,
                                       {0xAA, 0xBB},
                                       {3, 0, 0, 0, 1, 2, 3, 10},
                                       {3, 0, 0, 0, 4, 5, 6, 20},
                                       Numbers({1054, 1062, 1070}),
                                       Numbers({1061, 1069})}));
}

TEST_F(Container, OfCmprsRecordsStoresTheStreamOfEach) {
    const std::string name = Path("cmprs.kaf");
    ZFilekel file;
    ASSERT_TRUE(file.Create(name.c_str(), 0, 4, 2, 17, 999999, 1));
    ASSERT_TRUE(file.AppendRecord(ByteVector{'a', 'a', 'a', 'a'}, ByteVector{1, 2}));
    ASSERT_TRUE(file.Close());
    EXPECT_EQ(FileBytes(name), Joined({Numbers({0, 4, 2, 1, 1, 17, 999999, 1062, 1}),
                                       kReserved,
                                       {4, 0, 0, 0, 0x01, 0x61, 0xEE, 0xF0, 1, 2},
                                       Numbers({1052, 1062}),
                                       Numbers({1060})}));
}

TEST_F(Container, CannotBeOpenedTwiceOrAppendedToWrongly) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {});
    ZFilekel file;
    EXPECT_FALSE(file.Close());
    EXPECT_FALSE(file.WriteUserHeader({}));
    ASSERT_TRUE(file.OpenForRead(name.c_str()));
    EXPECT_FALSE(file.OpenForRead(name.c_str()));
    EXPECT_FALSE(file.AppendRecord(Payload(1, 64), Side(1, 8))); // not in this mode
    EXPECT_TRUE(file.Close());
    ASSERT_TRUE(file.OpenExisting(name.c_str()));
    EXPECT_FALSE(file.AppendRecord(Payload(1, 63), Side(1, 8)));
    EXPECT_FALSE(file.AppendRecord(Payload(1, 64), Side(1, 9)));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(RecordNumbersIn(name), Range(10));
}

struct ReadingCase {
    const char* name;
    Shape shape;
};

class ContainerOfType : public ContainerTest, public testing::WithParamInterface<ReadingCase> {};

TEST_P(ContainerOfType, GivesEveryRecordInSequenceByNumberAndAfterGoingThere) {
    const std::string name = Path("film.kvf");
    const Shape& shape = GetParam().shape;
    MakeContainer(name, shape);
    EXPECT_EQ(RecordNumbersIn(name), Range(static_cast<int>(shape.records)));

    ZFilekel file;
    ASSERT_TRUE(file.OpenForRead(name.c_str()));
    EXPECT_EQ(RecordNumbers(file), Range(static_cast<int>(shape.records)));
    const auto last = static_cast<int>(shape.records) - 1;
    for (int record = last; record >= 0; --record) {
        ASSERT_TRUE(file.ReadRecord(record));
        EXPECT_EQ(file.CurrentRecord(), static_cast<std::uint32_t>(record) + 1);
        EXPECT_THAT(file.RecordBuffer(),
                    testing::ElementsAreArray(
                        Payload(static_cast<std::uint32_t>(record), shape.record_length)));
    }
    for (const auto& [wanted, given] :
         {std::pair{-5, 0}, {0, 0}, {7, 7}, {last, last}, {999, last}}) {
        ASSERT_TRUE(file.GoToRecord(wanted));
        EXPECT_EQ(file.CurrentRecord(), static_cast<std::uint32_t>(given));
        ASSERT_TRUE(file.ReadNextRecord());
        EXPECT_THAT(file.RecordBuffer(),
                    testing::ElementsAreArray(
                        Payload(static_cast<std::uint32_t>(given), shape.record_length)));
        EXPECT_THAT(file.SideBuffer(), testing::ElementsAreArray(Side(
                                           static_cast<std::uint32_t>(given), shape.side_length)));
    }
    EXPECT_FALSE(file.ReadNextRecord()); // the last one was read
    EXPECT_FALSE(file.ReadRecord(last + 1));
    EXPECT_FALSE(file.ReadRecord(-1));
    EXPECT_THAT(Texts(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    All, ContainerOfType,
    testing::Values(ReadingCase{"Raw", {.type = 99, .records = 25}},
                    ReadingCase{"Runs", {.type = 1, .records = 25}},
                    ReadingCase{"Sound", {.type = 16, .records = 25, .record_length = 333}},
                    ReadingCase{"Difference", {.type = 7, .records = 25, .key_interval = 10}},
                    ReadingCase{"CompressedDifference",
                                {.type = 8, .records = 25, .key_interval = 4}},
                    ReadingCase{"OneKeyRecord", {.type = 6, .records = 25, .key_interval = 999999}},
                    ReadingCase{"EveryRecordKey", {.type = 7, .records = 25, .key_interval = 1}},
                    ReadingCase{"KeyIntervalZero", {.type = 7, .records = 25, .key_interval = 0}},
                    ReadingCase{"NoSideBlock", {.type = 9, .records = 25, .side_length = 0}},
                    ReadingCase{"Unknown", {.type = 12, .records = 25}},
                    ReadingCase{"PassThrough", {.type = 69, .records = 25}}),
    [](const auto& row) { return row.param.name; });

TEST_F(Container, GivesARecordAsItIsStored) {
    const std::string name = Path("a.kaf");
    MakeContainer(name, {.type = 17, .records = 3, .record_length = 4});
    ZFilekel file;
    ASSERT_TRUE(file.OpenForRead(name.c_str()));
    std::uint32_t stored_length = 0;
    const std::uint8_t* stored = file.ReadRawRecord(1, stored_length);
    ASSERT_NE(stored, nullptr);
    // One flag byte, then four literals: 1, 0, 0, 0.
    EXPECT_THAT(std::vector(stored, stored + stored_length), ElementsAre(0x0F, 1, 0, 0, 0));
    EXPECT_EQ(file.StoredLength(1), 5U);
    EXPECT_EQ(file.CurrentRecord(), 2U);
    EXPECT_EQ(file.ReadRawRecord(3, stored_length), nullptr);
    EXPECT_EQ(file.ReadRawRecord(-1, stored_length), nullptr);
}

TEST_F(Container, ReadsInSequenceOnlyWhenOpenForRead) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {});
    ZFilekel file;
    ASSERT_TRUE(file.OpenExisting(name.c_str()));
    EXPECT_FALSE(file.ReadNextRecord());
    EXPECT_THAT(Texts(), ElementsAre("L'operazione richiesta può essere eseguita solo su un file "
                                     "aperto in OpenForRead!"));
    EXPECT_EQ(boxes_.Boxes().at(0).caption, "ERRORE");
}

TEST_F(Container, AppendedToWhileExistingHasItsIndexBehindTheNewLastRecord) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {.type = 99, .records = 2});
    const std::size_t record_bytes = 4 + 64 + 8;
    const std::uint32_t old_index = 1057 + 2 * record_bytes;
    ASSERT_EQ(NumberIn(name, 28), old_index);
    {
        ZFilekel file;
        ASSERT_TRUE(file.OpenExisting(name.c_str()));
        EXPECT_TRUE(file.AppendRecord(Payload(2, 64), Side(2, 8)));
        EXPECT_EQ(file.CurrentRecord(), 1U);
        EXPECT_EQ(RecordNumbers(file), Range(3));
        EXPECT_TRUE(file.Close());
    }
    EXPECT_EQ(NumberIn(name, 28), old_index + record_bytes);
    EXPECT_EQ(FileBytes(name).size(), old_index + record_bytes + 7 * 4);
    EXPECT_EQ(RecordNumbersIn(name), Range(3));
    EXPECT_THAT(Names(), ElementsAre("a.kvf"));
}

TEST_F(Container, OpenForItsHeaderAloneKeepsItsRecordsAndTakesNewOnes) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {.records = 3});
    const ByteVector before = FileBytes(name);
    ZFilekel file;
    ASSERT_TRUE(file.OpenInMode(name.c_str(), ZFilekel::Mode::HeaderOnly));
    EXPECT_EQ(RecordNumbers(file), Range(3));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(FileBytes(name), before);
    ASSERT_TRUE(file.OpenInMode(name.c_str(), ZFilekel::Mode::HeaderOnly));
    EXPECT_TRUE(file.AppendRecord(Payload(3, 64), Side(3, 8)));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(RecordNumbersIn(name), Range(4));
}

TEST_F(Container, InAFilmIsReadThroughItsWindow) {
    MakeContainer(Path("s.kaf"), {.type = 16, .records = 4});
    MakeContainer(Path("p.kvf"), {.type = 8, .records = 7, .key_interval = 3});
    MakeFilm(Path("both.KvA"), Path("s.kaf"), Path("p.kvf"));
    MakeFilm(Path("silent.kva"), "", Path("p.kvf"));
    const std::string both = Path("both.KvA");
    EXPECT_EQ(RecordNumbersIn(both, 'A'), Range(4));
    EXPECT_EQ(RecordNumbersIn(both, 'x'), Range(4));
    EXPECT_EQ(RecordNumbersIn(both, 'V'), Range(7));
    EXPECT_EQ(RecordNumbersIn(both, 'v'), Range(7));
    EXPECT_EQ(RecordNumbersIn(Path("silent.kva"), 'V'), Range(7));
    ZFilekel file;
    EXPECT_FALSE(file.OpenForRead(Path("silent.kva").c_str(), 'A')); // an absent track
    EXPECT_EQ(file.LastError().fault, Fault::Missing);
    EXPECT_FALSE(file.OpenExisting(both.c_str())); // its first track would grow over its second
    EXPECT_FALSE(file.OpenInMode(both.c_str(), ZFilekel::Mode::IndexRebuild));
    // A plain container may bear the name of a film.
    std::filesystem::copy(Path("s.kaf"), Path("bare.kva"));
    EXPECT_EQ(RecordNumbersIn(Path("bare.kva"), 'N'), Range(4));
    EXPECT_EQ(RecordNumbersIn(Path("bare.kva"), 'n'), Range(4));
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(Container, IsFoundInAnotherCaseOfItsLetters) {
    MakeContainer(Path("Film Uno.kvf"), {.records = 3});
    EXPECT_EQ(RecordNumbersIn(Path("FILM uno.KVF")), Range(3));
    ZFilekel file;
    ASSERT_TRUE(
        file.RecompressFile(Path("FILM UNO.KVF").c_str(), {.compression_type = 2}, nullptr));
    EXPECT_THAT(Names(), ElementsAre("Film Uno.kvf")); // not a second file in other letters
    EXPECT_EQ(NumberIn(Path("Film Uno.kvf"), 20), 2U);
}

// Damage inside a container that opens.

TEST_F(Container, ReadsOnOverADamagedRecord) {
    const std::string name = Path("a.kaf");
    MakeContainer(name, {.type = 17, .records = 6, .record_length = 64});
    ZFilekel file;
    ASSERT_TRUE(file.OpenForRead(name.c_str()));
    const std::uint64_t third = file.RecordFileOffset(2);
    const std::uint32_t stored_length = file.StoredLength(2);
    ASSERT_TRUE(file.Close());
    for (const std::uint32_t wrong : {0U, stored_length - 1, stored_length + 1, 0x7FFFFFFFU, ~0U}) {
        boxes_.Clear();
        PutNumber(name, third, wrong);
        ASSERT_TRUE(file.OpenForRead(name.c_str()));
        for (int record = 0; record < 6; ++record) {
            ASSERT_TRUE(file.ReadNextRecord()) << record << " of stored length " << wrong;
            EXPECT_EQ(file.RecordIsDamaged(), record == 2 && !Texts().empty());
            EXPECT_EQ(file.LastError().fault != Fault::None, record == 2);
            if (record == 2) {
                EXPECT_EQ(file.LastError().offset, third);
                continue;
            }
            EXPECT_THAT(file.RecordBuffer(),
                        testing::ElementsAreArray(Payload(static_cast<std::uint32_t>(record), 64)));
        }
        EXPECT_FALSE(file.ReadNextRecord());
        EXPECT_TRUE(file.ReadRecord(2));
        EXPECT_TRUE(file.ReadRecord(3));
        EXPECT_FALSE(file.RecordIsDamaged());
        // With one byte too many the stream is still whole, and the index has the side block.
        if (wrong == stored_length + 1) {
            EXPECT_THAT(Texts(), IsEmpty());
        } else {
            EXPECT_THAT(Texts(), ElementsAre(kCorrupt, kCorrupt)) << wrong;
        }
        ASSERT_TRUE(file.Close());
    }
}

TEST_F(Container, SaysThatARawRecordOfAnotherLengthIsCorruptAndReadsItAllTheSame) {
    const std::string name = Path("a.kaf");
    MakeContainer(name, {.type = 99, .records = 3, .user_header_size = 0});
    PutNumber(name, 1052, 63);
    ZFilekel file;
    ASSERT_TRUE(file.OpenForRead(name.c_str()));
    EXPECT_TRUE(file.ReadNextRecord());
    EXPECT_THAT(file.RecordBuffer(), testing::ElementsAreArray(Payload(0, 64)));
    EXPECT_THAT(file.SideBuffer(), testing::ElementsAreArray(Side(0, 8)));
    EXPECT_THAT(Texts(), ElementsAre(kCorrupt));
    EXPECT_EQ(boxes_.Boxes().at(0).caption, "ERRORE");
    EXPECT_TRUE(file.ReadNextRecord());
    EXPECT_THAT(file.RecordBuffer(), testing::ElementsAreArray(Payload(1, 64)));
    EXPECT_THAT(Texts(), testing::SizeIs(1));
}

TEST_F(Container, WhoseIndexDisagreesWithAWholeRecordReadsItAndKeepsTheFault) {
    const std::string name = Path("a.kaf");
    MakeContainer(name, {.type = 17, .records = 3});
    const std::uint32_t index = NumberIn(name, 28);
    PutNumber(name, index + 4 * 4, NumberIn(name, index + 4 * 4) + 1); // side position 0
    ZFilekel file;
    ASSERT_TRUE(file.OpenForRead(name.c_str()));
    ASSERT_TRUE(file.ReadNextRecord());
    EXPECT_THAT(file.RecordBuffer(), testing::ElementsAreArray(Payload(0, 64)));
    EXPECT_EQ(file.LastError(), (Error{Fault::Mismatch, 1057}));
    ASSERT_TRUE(file.ReadNextRecord());
    EXPECT_EQ(file.LastError().fault, Fault::None);
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(Container, WhoseTypeNeedsALengthButHasNoneOpensAndGivesNoRecord) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {.type = 9, .records = 2});
    PutNumber(name, 4, 0);
    ZFilekel file;
    EXPECT_TRUE(file.OpenForRead(name.c_str()));
    EXPECT_THAT(Texts(), ElementsAre("Compressionekel TIPO 9 NECESSITA LUNGHEZZA BYTES!!!"));
    EXPECT_FALSE(file.ReadNextRecord());
    EXPECT_FALSE(file.ReadRecord(0));
}

} // namespace

} // namespace kelvo::test
