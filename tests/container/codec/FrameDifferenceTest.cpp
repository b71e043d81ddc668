#include "container/codec/FrameDifference.h"

#include "tests/container/codec/Pixels.h"

#include <gtest/gtest.h>

#include <memory>

namespace kelvo {
namespace {

using codec::CodeAs;
using pixels::Bytes;
using pixels::Distinct;
using pixels::Joined;
using pixels::Repeated;
using pixels::Words;

constexpr std::uint8_t kUntouched = 0xEE;

enum class Form : std::uint8_t { Pixels, Groups };

Bytes Encode(const Bytes& frame, Bytes& previous, CodeAs kind, Form form) {
    const auto map = std::make_unique<codec::ColourMap>();
    Bytes stream(form == Form::Pixels ? codec::PixelDifferenceWorstCase(frame.size())
                                      : codec::GroupDifferenceWorstCase(frame.size()));
    stream.resize(form == Form::Pixels
                      ? codec::EncodePixelDifference(frame, previous, stream, kind)
                      : codec::EncodeGroupDifference(frame, previous, stream, kind, *map));
    return stream;
}
Decoded Decode(const Bytes& stream, Bytes& frame, Form form) {
    return form == Form::Pixels ? codec::DecodePixelDifference(stream, frame)
                                : codec::DecodeGroupDifference(stream, frame);
}

struct DifferenceVector {
    const char* name;
    Form form;
    Bytes previous;
    Bytes frame;
    Bytes stream;
};
constexpr unsigned p = 0x1234;
constexpr unsigned q = 0x7FFF;
const DifferenceVector kDifferenceVectors[] = {
    {"OneNewPixel", Form::Pixels, Repeated(4, p), Words({p, q, p, p}), Words({1, 1, 0, q, 2})},
    {"UnchangedIsSkippedIn64000s", Form::Pixels, Repeated(100000, p), Repeated(100000, p),
     Words({1, 64000, 36000})},
    {"ExactlyOneFullSkip", Form::Pixels, Repeated(64000, p), Repeated(64000, p), Words({1, 64000})},
    {"AFullSkipThenANewPixel", Form::Pixels, Repeated(64001, p),
     Joined({Repeated(64000, p), Words({q})}), Words({1, 64000, 0, q})},
    {"ThreeEqualNewPixelsRepeat", Form::Groups, Repeated(4, p), Words({p, q, q, q}),
     Words({1, 1, 50003, q})},
    {"ThreeDistinctNewPixelsAreLiterals", Form::Groups, Repeated(4, p), Words({p, 5, 6, 7}),
     Words({1, 1, 55003, 5, 6, 7})},
    {"OneNewPixelIsARepeatOfOne", Form::Groups, Repeated(3, p), Words({p, q, p}),
     Words({1, 1, 50001, q, 1})},
    {"ALiteralThatRepeatsOpensAGroup", Form::Groups, Repeated(4, p), Words({5, 6, 6, 6}),
     Words({1, 55001, 5, 50003, 6})},
    {"ARepeatThatEndsOpensAGroup", Form::Groups, Repeated(5, p), Words({5, 5, 6, 7, p}),
     Words({1, 50002, 5, 55002, 6, 7, 1})},
    {"RepeatsAreCutAt5000", Form::Groups, Repeated(5001, p), Repeated(5001, q),
     Words({1, 55000, q, 50001, q})},
    {"UnchangedIsSkippedIn50000s", Form::Groups, Repeated(100001, p), Repeated(100001, p),
     Words({1, 50000, 50000, 1})},
    {"LiteralsAreCutAt10000", Form::Groups, Repeated(20000, 65535), Distinct(20000),
     Joined({Words({1, 65000}), Distinct(10000), Words({65000}), Distinct(10000, 10000)})},
    {"NoPixelsAreNoWords", Form::Groups, {}, {}, Words({1})},
};

TEST(FrameDifference, StoresTheseWordsAndReadsThemBack) {
    for (const DifferenceVector& vector : kDifferenceVectors) {
        SCOPED_TRACE(vector.name);
        Bytes previous = vector.previous;
        EXPECT_EQ(Encode(vector.frame, previous, CodeAs::Difference, vector.form), vector.stream);
        EXPECT_EQ(previous, vector.frame); // the reference of the next one
        Bytes frame = vector.previous;
        EXPECT_EQ(Decode(vector.stream, frame, vector.form),
                  (Decoded{frame.size(), Fault::None, frame.size()}));
        EXPECT_EQ(frame, vector.frame);
    }
}

TEST(FrameDifference, StartsFromKeyFrames) {
    const Bytes frame = Words({1, 1, 2});
    Bytes previous(frame.size());
    EXPECT_EQ(Encode(frame, previous, CodeAs::Key, Form::Pixels), Joined({Words({0}), frame}));
    EXPECT_EQ(previous, frame);

    Bytes indexed = Joined({Words({0}), {1}, Words({1, 2})});
    indexed.resize(2 + 1 + 512);
    indexed = Joined({indexed, {0, 2, 1, 1}});
    previous.assign(frame.size(), 0);
    EXPECT_EQ(Encode(frame, previous, CodeAs::Key, Form::Groups), indexed);
    EXPECT_EQ(previous, frame);
    Bytes decoded(frame.size(), kUntouched);
    EXPECT_EQ(Decode(indexed, decoded, Form::Groups).fault, Fault::None);
    EXPECT_EQ(decoded, frame);
}

TEST(FrameDifference, FollowsALongSeriesOfFrames) {
    for (const Form form : {Form::Pixels, Form::Groups}) {
        for (const std::size_t length : {2, 6, 1000, 24576}) {
            Bytes previous(length);
            Bytes shown(length);
            Bytes frame(length);
            for (std::uint32_t number = 0; number < 12; ++number) {
                frame = pixels::Changed(frame, number);
                const CodeAs kind = number % 5 == 0 ? CodeAs::Key : CodeAs::Difference;
                const Bytes stream = Encode(frame, previous, kind, form);
                ASSERT_EQ(Decode(stream, shown, form), (Decoded{length, Fault::None, length}));
                ASSERT_EQ(shown, frame) << "frame " << number << " of " << length << " bytes";
            }
        }
    }
}

TEST(FrameDifference, NeverExceedsItsWorstCase) {
    // Every other pixel changed; all changed and alike in pairs; all changed.
    for (const std::size_t count : {1, 2, 3, 8, 9, 4001}) {
        for (int pattern = 0; pattern < 3; ++pattern) {
            std::vector<unsigned> values(count);
            for (std::size_t i = 0; i < count; ++i) {
                const auto number = static_cast<unsigned>(i + 1);
                values[i] = pattern == 0   ? number % 2 * number
                            : pattern == 1 ? 1 + number / 3
                                           : number;
            }
            const Bytes frame = Words(values);
            for (const Form form : {Form::Pixels, Form::Groups}) {
                for (const CodeAs kind : {CodeAs::Key, CodeAs::Difference}) {
                    Bytes previous(frame.size());
                    const Bytes stream =
                        Encode(frame, previous, kind, form); // exact room: asan watches
                    Bytes decoded(frame.size());
                    ASSERT_EQ(Decode(stream, decoded, form).fault, Fault::None);
                    ASSERT_EQ(decoded, frame);
                }
            }
        }
    }
}

struct DamageVector {
    const char* name;
    Form form;
    Bytes stream;
    Decoded decoded;
    Bytes frame; // of three pixels that were 8, 8, 8
};
const DamageVector kDamageVectors[] = {
    {"Nothing", Form::Groups, {}, {0, Fault::EndsEarly, 0}, Words({8, 8, 8})},
    {"HalfAKind", Form::Pixels, {1}, {0, Fault::EndsEarly, 0}, Words({8, 8, 8})},
    {"UnknownKind", Form::Groups, Words({2, 3}), {0, Fault::BadValue, 0}, Words({8, 8, 8})},
    {"UnknownKindOfPixels", Form::Pixels, Words({9, 3}), {0, Fault::BadValue, 0}, Words({8, 8, 8})},
    {"SkipBeyondTheEnd",
     Form::Pixels,
     Words({1, 0, 4, 60000, 0, 5}),
     {6, Fault::TooLarge, 2 * 60002},
     Words({4, 8, 8})},
    {"PixelMissing", Form::Pixels, Words({1, 1, 0}), {2, Fault::EndsEarly, 2}, Words({8, 8, 8})},
    {"RepeatBeyondTheEnd",
     Form::Groups,
     Words({1, 1, 54999, 4}),
     {6, Fault::TooLarge, 2 * 5000},
     Words({8, 4, 4})},
    {"RepeatWithoutItsPixel",
     Form::Groups,
     Words({1, 50002}),
     {0, Fault::EndsEarly, 0},
     Words({8, 8, 8})},
    {"LiteralsCut",
     Form::Groups,
     Words({1, 55003, 1, 2}),
     {4, Fault::EndsEarly, 4},
     Words({1, 2, 8})},
    {"LiteralsBeyondTheEnd",
     Form::Groups,
     Words({1, 55004, 1, 2, 3, 4}),
     {6, Fault::TooLarge, 8},
     Words({1, 2, 3})},
    {"KeyFrameCut", Form::Pixels, Words({0, 1, 2}), {4, Fault::EndsEarly, 4}, Words({1, 2, 8})},
    {"KeyFrameTooLong",
     Form::Pixels,
     Words({0, 1, 2, 3, 4}),
     {6, Fault::TooLarge, 8},
     Words({1, 2, 3})},
};

TEST(DamagedFrameDifference, ChangesOnlyPixelsThatTheStreamCovers) {
    for (const DamageVector& vector : kDamageVectors) {
        SCOPED_TRACE(vector.name);
        Bytes frame = Repeated(3, 8);
        EXPECT_EQ(Decode(vector.stream, frame, vector.form), vector.decoded);
        EXPECT_EQ(frame, vector.frame);
    }
}

TEST(DamagedFrameDifference, TakesAnyWordsAtAnyLength) {
    std::mt19937 random(2);
    for (int round = 0; round < 3000; ++round) {
        Bytes stream(random() % 60);
        for (auto& byte : stream) {
            byte = static_cast<std::uint8_t>(random() % 3 == 0 ? random() : random() % 3);
        }
        if (stream.size() > 1 && round % 4 != 0) {
            stream[0] = static_cast<std::uint8_t>(round % 2);
            stream[1] = 0;
        }
        const std::size_t length = random() % 40; // odd ones, too
        for (const Form form : {Form::Pixels, Form::Groups}) {
            Bytes frame(length); // exact size: a write beyond is seen
            const Decoded decoded = Decode(stream, frame, form);
            ASSERT_LE(decoded.written, length);
            ASSERT_LE(decoded.written, decoded.described);
            ASSERT_EQ(decoded.fault == Fault::TooLarge, decoded.described > length);
        }
    }
}

} // namespace
} // namespace kelvo
