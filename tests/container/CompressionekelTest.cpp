#include "container/Compressionekel.h"

#include "platform/base/message_boxes.h"
#include "tests/container/codec/ByteMaterial.h"
#include "tests/container/codec/Pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <set>
#include <string>

namespace kelvo {
namespace {

using codec::CompressionType;
using pixels::Bytes;
using pixels::Joined;
using pixels::Repeated;
using pixels::Words;

constexpr std::uint8_t kUntouched = 0xEE;

/// A catalogue with a type set.
class Catalogue : public Compressionekel {
public:
    Catalogue(int type, std::size_t length) {
        EXPECT_TRUE(SetCompressionType(type, static_cast<int>(length))) << "type " << type;
    }
    Bytes Store(const Bytes& record) {
        Bytes stored(StoredRoom(record.size()));
        stored.resize(Compress(record, stored));
        return stored;
    }
    Bytes StoreKey(const Bytes& record) {
        Bytes stored(StoredRoom(record.size()));
        stored.resize(CompressKey(record, stored));
        return stored;
    }
};

TEST(CompressionTypes, AreNamedAndDescribedAsFilesNeedThem) {
    EXPECT_STREQ(Compressionekel::TypeDescription(8), "Vid: QTrx+cmprs Random Read Access");
    EXPECT_STREQ(Compressionekel::TypeDescription(99), "Nessuna");
    EXPECT_STREQ(Compressionekel::TypeDescription(10), "");
    EXPECT_STREQ(Compressionekel::TypeDescription(16), Compressionekel::TypeDescription(18));

    std::set<int> needing, differential, lossy;
    for (const CompressionType& type : codec::AllCompressionTypes()) {
        if (type.length_required) needing.insert(type.id);
        if (type.differential) differential.insert(type.id);
        if (!type.lossless) lossy.insert(type.id);
        Catalogue catalogue(type.id, 64);
        EXPECT_EQ(catalogue.CurrentType(), type.id);
        EXPECT_EQ(catalogue.IsDifferential(), type.differential) << type.id;
    }
    EXPECT_EQ(needing, (std::set{5, 6, 7, 8, 9, 16, 18, 19, 20, 21, 22, 23, 24, 25, 30}));
    EXPECT_EQ(differential, (std::set{5, 6, 7, 8}));
    EXPECT_EQ(lossy, (std::set{19, 20, 21, 22, 23, 24, 25, 30, 69}));
}

TEST(CompressionTypes, AreOfferedForSoundInThisOrder) {
    CArray<int> list;
    list.Add(7); // what was in the list is replaced
    Compressionekel::ListAudioTypes(list);
    const std::vector<int> ids(list.begin(), list.end());
    EXPECT_EQ(ids, (std::vector{15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 30, 69, 99}));
}

TEST(Catalogue, RefusesATypeThatNeedsALengthAndGetsNone) {
    platform::MessageBoxRecorder recorder;
    for (const CompressionType& type : codec::AllCompressionTypes()) {
        for (const int length : {0, -1}) {
            Catalogue catalogue(1, 8); // something set before
            recorder.Clear();
            EXPECT_EQ(catalogue.SetCompressionType(type.id, length), !type.length_required);
            if (!type.length_required) {
                EXPECT_TRUE(recorder.Boxes().empty());
                continue;
            }
            ASSERT_EQ(recorder.Boxes().size(), 1U) << type.id;
            const platform::MessageBoxRequest box = recorder.Boxes().front();
            EXPECT_EQ(box.text, "Compressionekel TIPO " + std::to_string(type.id) +
                                    " NECESSITA LUNGHEZZA BYTES!!!");
            EXPECT_EQ(box.caption, "void Compressionekel::SetCompressionType(int encd, int len)");
            EXPECT_EQ(box.type & MB_ICONMASK, MB_ICONHAND);
            EXPECT_EQ(catalogue.CurrentType(), 0);
            EXPECT_FALSE(catalogue.IsDifferential());
            EXPECT_FALSE(catalogue.CanCode());
        }
    }
}

TEST(Catalogue, CodesNothingUntilATypeIsSet) {
    Compressionekel catalogue;
    Bytes record(8, kUntouched);
    Bytes stored(64);
    EXPECT_EQ(catalogue.CurrentType(), 0);
    EXPECT_EQ(catalogue.Compress(record, stored), 0U);
    EXPECT_EQ(catalogue.DecodeRecord(stored, record), (Decoded{0, Fault::BadValue, 0}));
    EXPECT_EQ(record, Bytes(8, kUntouched));
}

TEST(Catalogue, CodesAnUnknownTypeAsTypeOne) {
    Catalogue catalogue(42, 0);
    EXPECT_EQ(catalogue.CurrentType(), 42);
    EXPECT_EQ(catalogue.Store(Repeated(600, 7)), (Bytes{7, 0, 255, 7, 0, 255, 7, 0, 90}));
}

TEST(Catalogue, SizesTheTransformToTheRecord) {
    for (const auto& [length, size] : {std::pair{3000, 4096U}, {4096, 4096U}, {1, 1U}}) {
        EXPECT_EQ(Catalogue(19, static_cast<std::size_t>(length)).TransformSize(), size);
    }
    EXPECT_EQ(Catalogue(17, 100).TransformSize(), 0U);
}

TEST(Catalogue, StoresRecordsOfTheCopyingTypesAsTheyAre) {
    const Bytes record = {1, 2, 3, 250, 0};
    for (const int type : {69, 99}) {
        Catalogue catalogue(type, record.size());
        EXPECT_EQ(catalogue.Store(record), record);
        Bytes decoded(record.size());
        EXPECT_EQ(catalogue.Decompress(record, decoded), record.size());
        EXPECT_EQ(decoded, record);
    }
}

TEST(Catalogue, PutsCmprsBehindTheCoder) {
    // Type 17 on text; type 9 on one colour: a palette of zeros that itself is compressed.
    const Bytes abc = {'a', 'b', 'c'};
    EXPECT_EQ(Catalogue(17, 0).Store(abc), (Bytes{0x07, 0x61, 0x62, 0x63}));
    Catalogue runs(2, 0);
    Catalogue packed(9, 1200);
    Catalogue bytes(17, 0);
    EXPECT_EQ(packed.Store(Repeated(600, 7)), bytes.Store(runs.Store(Repeated(600, 7))));
    Catalogue groups(7, 1200);
    Catalogue packed_groups(8, 1200);
    EXPECT_EQ(packed_groups.Store(Repeated(600, 7)), bytes.Store(groups.Store(Repeated(600, 7))));
}

// Sound codecs take any byte; picture codecs whole pixels.
std::vector<std::size_t> LengthsFor(const CompressionType& type) {
    if (type.codes_video && !type.codes_audio) return {2, 4, 6, 34, 510, 512, 2050, 9000};
    return {1, 2, 3, 35, 255, 256, 800, 2205, 4061};
}

TEST(LosslessTypes, GiveBackEveryRecordAtAnySize) {
    for (const CompressionType& type : codec::AllCompressionTypes()) {
        if (!type.lossless) continue;
        for (const std::size_t length : LengthsFor(type)) {
            Catalogue writer(type.id, length);
            Catalogue reader(type.id, length);
            Bytes shown(length, kUntouched);
            std::uint32_t seed = 0;
            for (const material::Kind kind : material::kAllKinds) {
                const Bytes record = material::Make(kind, length, ++seed);
                const Bytes stored = writer.Store(record);
                ASSERT_LE(stored.size(), codec::WorstStoredLength(type, length));
                ASSERT_EQ(reader.DecodeRecord(stored, shown),
                          (Decoded{length, Fault::None, length}))
                    << "type " << type.id << ", " << material::Describe(kind, length);
                ASSERT_EQ(shown, record) << "type " << type.id;
                ASSERT_LE(length, codec::GreatestRecordLength(type, stored.size()));
            }
        }
    }
}

TEST(LossyTypes, GiveBackWholeRecords) {
    for (const CompressionType& type : codec::AllCompressionTypes()) {
        if (type.lossless) continue;
        for (const std::size_t length : LengthsFor(type)) {
            Catalogue catalogue(type.id, length);
            for (const material::Kind kind : material::kAllKinds) {
                const Bytes stored = catalogue.Store(material::Make(kind, length, 1));
                Bytes decoded(length);
                ASSERT_LE(stored.size(), codec::WorstStoredLength(type, length));
                ASSERT_EQ(catalogue.Decompress(stored, decoded), length)
                    << "type " << type.id << ", " << material::Describe(kind, length);
            }
        }
    }
}

TEST(DifferentialTypes, BeginWithAKeyFrameAfterEverySetting) {
    const Bytes frame = Words({1, 2, 3});
    for (const int type : {5, 6, 7}) {
        Catalogue catalogue(type, frame.size());
        const Bytes first = catalogue.Store(frame);
        EXPECT_EQ(first[0], 0) << type;
        EXPECT_EQ(catalogue.Store(frame), Words({1, 3})) << type;
        ASSERT_TRUE(catalogue.SetCompressionType(type, static_cast<int>(frame.size())));
        EXPECT_EQ(catalogue.Store(frame), first) << type;
    }
}

TEST(DifferentialTypes, ForceKeyFramesOnlyInSevenAndEight) {
    Bytes frame(2000);
    for (const int type : {5, 6, 7, 8}) {
        Catalogue writer(type, frame.size());
        Catalogue reader(type, frame.size());
        Bytes shown(frame.size());
        Bytes from_key;
        for (std::uint32_t number = 0; number < 9; ++number) {
            frame = pixels::Changed(frame, number);
            const Bytes stored = number % 4 == 0 ? writer.StoreKey(frame) : writer.Store(frame);
            ASSERT_EQ(reader.Decompress(stored, shown), frame.size());
            ASSERT_EQ(shown, frame);
            // A second reader comes in at record 4 and knows nothing of what was before.
            if (number == 4) from_key.assign(frame.size(), kUntouched);
            if (number < 4) continue;
            ASSERT_EQ(Catalogue(type, frame.size()).Decompress(stored, from_key), frame.size());
            if (number == 4 || type >= 7) {
                EXPECT_EQ(from_key == frame, type >= 7) << "type " << type << ", " << number;
            }
        }
    }
}

TEST(DamagedRecords, SayWhatTheyDescribeAndStayInTheirRecord) {
    Bytes record(6, kUntouched);
    EXPECT_EQ(Catalogue(1, 0).DecodeRecord(Bytes{5, 0, 200}, record),
              (Decoded{6, Fault::TooLarge, 400}));
    EXPECT_EQ(record, Repeated(3, 5));
    EXPECT_EQ(Catalogue(99, 0).DecodeRecord(Bytes{1, 2}, record),
              (Decoded{2, Fault::EndsEarly, 2}));
    EXPECT_EQ(record, (Bytes{1, 2, 5, 0, 5, 0}));
    // Seven bytes for six, and three: differences of nothing but the first sample.
    Catalogue bytes(17, 0);
    const Bytes seven(7, 127);
    const Bytes three(3, 127);
    EXPECT_EQ(Catalogue(16, 6).DecodeRecord(bytes.Store(seven), record),
              (Decoded{6, Fault::TooLarge, 7}));
    EXPECT_EQ(Catalogue(16, 6).DecodeRecord(bytes.Store(three), record),
              (Decoded{3, Fault::EndsEarly, 3}));
}

TEST(DamagedRecords, AreReportedWhenTheyOverflowTheStageBetween) {
    // A difference frame with more empty skips than any encoder's stream is long, then all pixels.
    const Bytes frame = Words({4, 5, 6});
    Bytes coded = Joined({Words({1, 55003}), frame});
    coded.resize(4000);
    Catalogue bytes(17, 0);
    Catalogue catalogue(8, frame.size());
    Bytes shown(frame.size());
    const Decoded decoded = catalogue.DecodeRecord(bytes.Store(coded), shown);
    EXPECT_EQ(decoded.fault, Fault::TooLarge);
    EXPECT_GT(decoded.described, frame.size());
    EXPECT_EQ(shown, frame);
}

TEST(DamagedRecords, NeverLeaveTheirBuffersInAnyType) {
    std::mt19937 random(9);
    for (const CompressionType& type : codec::AllCompressionTypes()) {
        for (const std::size_t length : {1, 2, 3, 5, 64, 801, 5000}) {
            Catalogue catalogue(type.id, length);
            for (int round = 0; round < 24; ++round) {
                const Bytes record =
                    material::Make(material::kAllKinds[random() % std::size(material::kAllKinds)],
                                   length, random());
                Bytes stored = catalogue.Store(record);
                if (round % 3 == 0) stored.resize(random() % (stored.size() + 1));
                for (int flips = round % 4; flips > 0 && !stored.empty(); --flips) {
                    stored[random() % stored.size()] = static_cast<std::uint8_t>(random());
                }
                if (round % 5 == 0) {
                    stored = material::Make(material::Kind::Random, random() % 400, random());
                }
                stored.shrink_to_fit();
                Bytes shown(length, kUntouched);
                const Decoded decoded = catalogue.DecodeRecord(stored, shown);
                ASSERT_LE(decoded.written, length) << type.id;
                ASSERT_LE(decoded.written, decoded.described) << type.id;
            }
        }
    }
}

TEST(DamagedRecords, AreRefusedForALongerRecordThanTheTypeWasSetFor) {
    for (const CompressionType& type : codec::AllCompressionTypes()) {
        if (!type.length_required) continue;
        Catalogue catalogue(type.id, 64);
        const Bytes stored = catalogue.Store(Bytes(64, 127));
        Bytes longer(200, kUntouched);
        EXPECT_EQ(catalogue.DecodeRecord(stored, longer), (Decoded{0, Fault::BadValue, 0}))
            << type.id;
        EXPECT_EQ(longer, Bytes(200, kUntouched));
    }
}

TEST(DamagedRecords, OfAnOddPictureLengthAreNeverTakenForWhole) {
    for (const int type : {1, 2, 3, 4, 6, 7, 8, 9}) {
        Catalogue catalogue(type, 5);
        const Bytes stored = catalogue.Store(Bytes{1, 0, 2, 0, 9});
        Bytes shown(5, kUntouched);
        EXPECT_EQ(catalogue.DecodeRecord(stored, shown), (Decoded{4, Fault::EndsEarly, 4})) << type;
        EXPECT_EQ(shown, (Bytes{1, 0, 2, 0, kUntouched})) << type;
    }
}

std::size_t ResidentBytes() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * 4096;
}

TEST(WorkAreas, CostNoMemoryForALengthThatIsOnlyClaimed) {
    for (const CompressionType& type : codec::AllCompressionTypes()) {
        const std::size_t before = ResidentBytes();
        Compressionekel catalogue;
        if (!catalogue.SetCompressionType(type.id, 512 << 20)) continue; // may be too much to map
        Bytes shown(1000);
        std::ignore = catalogue.DecodeRecord(Bytes{0x07, 1, 0, 9}, shown);
        EXPECT_LT(ResidentBytes(), before + (16U << 20U)) << type.id;
    }
}

} // namespace
} // namespace kelvo
