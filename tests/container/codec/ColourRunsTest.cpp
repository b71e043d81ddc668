#include "container/codec/ColourRuns.h"

#include "tests/container/codec/Pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

namespace kelvo {
namespace {

using codec::kLongRuns;
using codec::kShortRuns;
using codec::RunCount;
using pixels::Bytes;
using pixels::Distinct;
using pixels::Joined;
using pixels::Repeated;
using pixels::Words;

constexpr std::uint8_t kUntouched = 0xEE;

enum class Form : std::uint8_t { Direct, Indexed };

Bytes Encode(const Bytes& frame, RunCount count, Form form) {
    const auto map = std::make_unique<codec::ColourMap>();
    Bytes stream(form == Form::Direct ? codec::RunsWorstCase(frame.size(), count)
                                      : codec::IndexedRunsWorstCase(frame.size(), count));
    stream.resize(form == Form::Direct ? codec::EncodeRuns(frame, stream, count)
                                       : codec::EncodeIndexedRuns(frame, stream, count, *map));
    return stream;
}
Decoded Decode(const Bytes& stream, Bytes& frame, RunCount count, Form form) {
    return form == Form::Direct ? codec::DecodeRuns(stream, frame, count)
                                : codec::DecodeIndexedRuns(stream, frame, count);
}
/// A palette: its mode byte, the colours, zeros for those that no pixel uses.
Bytes Palette(const Bytes& colours) {
    Bytes palette = Joined({{1}, colours});
    palette.resize(1 + codec::kPaletteBytes);
    return palette;
}

struct RunVector {
    const char* name;
    RunCount count;
    Form form;
    Bytes frame;
    Bytes stream;
};
const RunVector kRunVectors[] = {
    {"NoPixelsStoreNothing", kShortRuns, Form::Direct, {}, {}},
    {"LowByteComesFirst", kShortRuns, Form::Direct, Words({0x0102, 0x0102, 3}), {2, 1, 2, 3, 0, 1}},
    {"RunOf600IsCutAt255",
     kShortRuns,
     Form::Direct,
     Repeated(600, 7),
     {7, 0, 255, 7, 0, 255, 7, 0, 90}},
    {"RunOf510IsTwoFullTokens", kShortRuns, Form::Direct, Repeated(510, 7), {7, 0, 255, 7, 0, 255}},
    {"LongRunOf600IsOneToken", kLongRuns, Form::Direct, Repeated(600, 7), {7, 0, 0x58, 0x02}},
    {"LongRunIsCutAt64000",
     kLongRuns,
     Form::Direct,
     Repeated(64001, 7),
     {7, 0, 0x00, 0xFA, 7, 0, 1, 0}},
    {"ColoursAreNumberedAsTheyAppear", kShortRuns, Form::Indexed, Words({0x700, 5, 5, 0x700}),
     Joined({Palette(Words({0x700, 5})), {0, 1, 1, 2, 0, 1}})},
    {"LongIndexedTokensHaveThreeBytes", kLongRuns, Form::Indexed, Repeated(300, 9),
     Joined({Palette(Words({9})), {0, 0x2C, 0x01}})},
    {"NoPixelsHaveAnEmptyPalette", kShortRuns, Form::Indexed, {}, Palette({})},
};

TEST(ColourRuns, StoreTheseBytesAndReadThemBack) {
    for (const RunVector& vector : kRunVectors) {
        SCOPED_TRACE(vector.name);
        EXPECT_EQ(Encode(vector.frame, vector.count, vector.form), vector.stream);
        Bytes frame(vector.frame.size(), kUntouched);
        const Decoded decoded = Decode(vector.stream, frame, vector.count, vector.form);
        EXPECT_EQ(decoded, (Decoded{frame.size(), Fault::None, frame.size()}));
        EXPECT_EQ(frame, vector.frame);
    }
}

TEST(ColourRuns, UseAPaletteUpTo256ColoursAndPixelsBeyond) {
    for (const RunCount count : {kShortRuns, kLongRuns}) {
        const Bytes fits = Encode(Distinct(256), count, Form::Indexed);
        EXPECT_EQ(fits[0], 1);
        EXPECT_EQ(fits.size(), 1 + 512 + 256 * (1 + count.bytes));
        EXPECT_TRUE(std::ranges::equal(Distinct(256), ByteView(fits).subspan(1, 512)));
        EXPECT_EQ(fits[513 + (1 + count.bytes) * 255], 255); // the last token's index

        const Bytes direct = Encode(Distinct(257), count, Form::Indexed);
        EXPECT_EQ(direct, Joined({{0}, Encode(Distinct(257), count, Form::Direct)}));
    }
}

TEST(ColourRuns, SurviveARoundTripAtAnySize) {
    Bytes previous(2 * 4321);
    for (std::uint32_t seed = 0; seed < 12; ++seed) {
        const Bytes whole = pixels::Changed(previous, seed);
        for (const std::size_t count : {1, 2, 3, 5, 63, 255, 256, 4321}) {
            const Bytes frame(whole.begin(),
                              whole.begin() + static_cast<std::ptrdiff_t>(2 * count));
            for (const RunCount run : {kShortRuns, kLongRuns}) {
                for (const Form form : {Form::Direct, Form::Indexed}) {
                    Bytes decoded(frame.size(), kUntouched);
                    ASSERT_EQ(Decode(Encode(frame, run, form), decoded, run, form).fault,
                              Fault::None);
                    ASSERT_EQ(decoded, frame);
                }
            }
        }
    }
}

TEST(DamagedColourRuns, KeepThePixelsBeforeTheDamage) {
    Bytes frame(10, kUntouched);
    const Bytes missing = {7, 0, 2, 9}; // two pixels, then half a token
    EXPECT_EQ(codec::DecodeRuns(missing, frame, kShortRuns), (Decoded{4, Fault::EndsEarly, 4}));
    EXPECT_EQ(frame, Joined({Words({7, 7}), Bytes(6, kUntouched)}));

    const Bytes beyond = {7, 0, 4, 9, 0, 200, 1, 0, 3};
    EXPECT_EQ(codec::DecodeRuns(beyond, frame, kShortRuns),
              (Decoded{10, Fault::TooLarge, 2 * 207}));
    EXPECT_EQ(frame, Words({7, 7, 7, 7, 9}));
}

TEST(DamagedColourRuns, WithoutTokensOrModeAreAnEmptyFrame) {
    Bytes frame(4, kUntouched);
    for (const Bytes& stream : {Bytes{}, Bytes{0}, Bytes{1}, Palette({}), Bytes(300, 1)}) {
        EXPECT_EQ(codec::DecodeIndexedRuns(stream, frame, kShortRuns),
                  (Decoded{0, Fault::EndsEarly, 0}));
    }
    EXPECT_EQ(codec::DecodeIndexedRuns(Bytes(600, 2), frame, kShortRuns),
              (Decoded{0, Fault::BadValue, 0}));
    EXPECT_EQ(frame, Bytes(4, kUntouched));
}

TEST(DamagedColourRuns, LeaveTheLastByteOfAnOddFrameAlone) {
    Bytes frame(5, kUntouched);
    const Bytes stream = Encode(Words({1, 2}), kShortRuns, Form::Direct);
    EXPECT_EQ(codec::DecodeRuns(stream, frame, kShortRuns), (Decoded{4, Fault::EndsEarly, 4}));
    EXPECT_EQ(codec::DecodeRuns(Bytes{1, 0, 255}, frame, kShortRuns),
              (Decoded{4, Fault::TooLarge, 510}));
    EXPECT_EQ(frame[4], kUntouched);
    EXPECT_EQ(Encode(Bytes{1, 0, 2, 0, 9}, kShortRuns, Form::Direct), stream); // the 9 is no pixel
}

} // namespace
} // namespace kelvo
