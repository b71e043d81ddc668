#include "container/codec/Lzss.h"

#include "tests/container/codec/ByteMaterial.h"
#include "tests/container/codec/PlainLzss.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string_view>
#include <vector>

namespace kelvo {
namespace {

using material::Bytes;

constexpr std::uint8_t kUntouched = 0xEE;

Bytes Encode(codec::LzssEncoder& encoder, ByteView input) {
    Bytes stream(codec::LzssWorstCase(input.size()));
    stream.resize(encoder.Encode(input, stream));
    return stream;
}
Bytes PlainEncode(ByteView input) {
    const auto plain = std::make_unique<yardstick::PlainLzss>();
    Bytes stream(codec::LzssWorstCase(input.size()));
    stream.resize(plain->Encode(input, stream));
    return stream;
}
Bytes PlainDecode(ByteView stream) {
    const auto plain = std::make_unique<yardstick::PlainLzss>();
    Bytes output(stream.size() * codec::kLzssLongestMatch / codec::kLzssMatchBytes + 1);
    output.resize(plain->Decode(stream, output));
    return output;
}
Bytes Text(std::string_view text) {
    return {text.begin(), text.end()};
}

struct StreamVector {
    const char* name;
    Bytes input;
    Bytes stream;
};
const StreamVector kStreamVectors[] = {
    {"NothingBecomesNothing", {}, {}},
    {"ThreeLiterals", Text("abc"), {0x07, 0x61, 0x62, 0x63}},
    {"ARunMatchesItself", Text("aaaa"), {0x01, 0x61, 0xEE, 0xF0}},
    {"APeriodMatchesItself", Text("abcabcabcabc"), {0x07, 0x61, 0x62, 0x63, 0xEE, 0xF6}},
    {"LeadingSpacesMatchTheRing", Text("   "), {0x00, 0xED, 0xF0}},
    {"NineLiteralsOpenASecondGroup",
     Text("abcdefghi"),
     {0xFF, 0x61, 0x62, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x01, 0x69}},
};

TEST(LzssStream, HasTheseBytesAndReadsBack) {
    codec::LzssEncoder encoder;
    for (const StreamVector& vector : kStreamVectors) {
        SCOPED_TRACE(vector.name);
        EXPECT_EQ(Encode(encoder, vector.input), vector.stream);
        Bytes output(vector.input.size());
        const Decoded decoded = codec::DecodeLzss(vector.stream, output);
        EXPECT_EQ(decoded, (Decoded{output.size(), Fault::None, output.size()}));
        EXPECT_EQ(output, vector.input);
    }
}

// Around the lengths where the ring's mirror fills, where strings begin to leave the ring, and
// where the text wraps.
std::vector<std::size_t> AwkwardLengths() {
    std::vector<std::size_t> lengths;
    for (std::size_t length = 1; length <= 60; ++length) {
        lengths.push_back(length);
    }
    for (const std::size_t around : {800, 2205, 4060, 4078, 4096, 4114, 8138, 8174, 8192, 12288}) {
        for (std::size_t length = around - 1; length <= around + 1; ++length) {
            lengths.push_back(length);
        }
    }
    lengths.push_back(30011);
    return lengths;
}

TEST(LzssStream, IsThatOfThePlainCoderForEveryKindAndLength) {
    codec::LzssEncoder encoder; // one for all: no input may leave a trace in the next
    for (const material::Kind kind : material::kAllKinds) {
        for (const std::size_t length : AwkwardLengths()) {
            const Bytes input = material::Make(kind, length, static_cast<std::uint32_t>(length));
            const Bytes stream = Encode(encoder, input);
            ASSERT_EQ(stream, PlainEncode(input)) << material::Describe(kind, length);
            Bytes output(length);
            ASSERT_EQ(codec::DecodeLzss(stream, output).described, length);
            ASSERT_EQ(output, input) << material::Describe(kind, length);
        }
    }
}

// So much of it is alike that chains of equal prefixes grow long, and the tree takes over.
TEST(LzssStream, IsThatOfThePlainCoderWhereNearlyEverythingIsAlike) {
    codec::LzssEncoder encoder;
    std::mt19937 random(5);
    for (int round = 0; round < 4; ++round) {
        Bytes input(4060, 127);
        for (auto& byte : input) {
            if (random() % (6U + 10U * static_cast<unsigned>(round)) == 0)
                byte = static_cast<std::uint8_t>(random());
        }
        ASSERT_EQ(Encode(encoder, input), PlainEncode(input)) << "round " << round;
    }
}

TEST(LzssStream, NeverExceedsItsWorstCase) {
    codec::LzssEncoder encoder;
    for (const std::size_t length : {1, 7, 8, 9, 4061, 9000}) {
        // No two equal strings of three: de Bruijn-like, from a counter spread over the bytes.
        Bytes input(length);
        for (std::size_t i = 0; i < length; ++i) {
            input[i] = static_cast<std::uint8_t>((i * 2654435761U) >> 13U);
        }
        Bytes stream(codec::LzssWorstCase(length) + 8, kUntouched);
        const std::size_t written = encoder.Encode(input, stream);
        EXPECT_LE(written, codec::LzssWorstCase(length));
        EXPECT_EQ(std::ranges::count(stream.begin() + static_cast<int>(written), stream.end(),
                                     kUntouched),
                  static_cast<std::ptrdiff_t>(stream.size() - written));
    }
}

/// Decodes exact-size copies, so that a sanitizer sees every byte beyond, and checks the promise.
void ExpectDecodesAsPlain(const Bytes& stream, std::size_t room) {
    const Bytes whole = PlainDecode(stream);
    Bytes output(room, kUntouched);
    const Decoded decoded = codec::DecodeLzss(stream, output);
    ASSERT_EQ(decoded.described, whole.size());
    ASSERT_EQ(decoded.written, std::min(room, whole.size()));
    ASSERT_EQ(decoded.fault == Fault::TooLarge, whole.size() > room);
    const auto end = output.begin() + static_cast<std::ptrdiff_t>(decoded.written);
    ASSERT_TRUE(std::equal(output.begin(), end, whole.begin()));
    ASSERT_EQ(std::count(end, output.end(), kUntouched), output.end() - end);
}

TEST(LzssDecoder, TakesAnyBytesAndStaysInsideItsOutput) {
    std::mt19937 random(11);
    for (int round = 0; round < 400; ++round) {
        const auto kind = material::kAllKinds[random() % std::size(material::kAllKinds)];
        const Bytes stream = material::Make(kind, random() % 4500, random());
        const std::size_t whole = PlainDecode(stream).size();
        for (const std::size_t room :
             {whole, whole / 2, whole + 40, whole + 400, std::size_t{0}, std::size_t{4100}}) {
            ASSERT_NO_FATAL_FAILURE(ExpectDecodesAsPlain(stream, room)) << "round " << round;
        }
    }
}

TEST(LzssDecoder, KeepsWhatCameBeforeACut) {
    const Bytes input = material::Make(material::Kind::NearCopies, 6000, 3);
    const Bytes stream = PlainEncode(input);
    for (std::size_t length = 0; length < stream.size(); length += length < 200 ? 1 : 37) {
        const Bytes cut(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(length));
        ASSERT_NO_FATAL_FAILURE(ExpectDecodesAsPlain(cut, input.size())) << "cut at " << length;
    }
}

TEST(LzssDecoder, SaysThatAStreamEndsInsideAMatch) {
    Bytes output(10);
    const Bytes stream = {0x01, 0x61, 0xEE}; // a literal, then the first half of a match
    EXPECT_EQ(codec::DecodeLzss(stream, output), (Decoded{1, Fault::EndsEarly, 1}));
    EXPECT_EQ(codec::DecodeLzss(Bytes{0x00}, output), (Decoded{0, Fault::None, 0}));
}

} // namespace
} // namespace kelvo
