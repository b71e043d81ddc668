#include "container/codec/ColourRuns.h"

#include "container/codec/WideWords.h"

#include <algorithm>
#include <cassert>

namespace kelvo::codec {

namespace {

/// Lays down the tokens of one frame: whatever stands for a pixel, then how often.
template <std::size_t kValueBytes>
class TokenWriter {
public:
    TokenWriter(std::uint8_t* stream, RunCount count) : next_(stream), count_(count) {}

    void WriteRun(std::uint32_t value, std::size_t run) {
        while (run > count_.longest) {
            WriteToken(value, count_.longest);
            run -= count_.longest;
        }
        WriteToken(value, run);
    }
    std::uint8_t* Next() const { return next_; }

private:
    void WriteToken(std::uint32_t value, std::size_t run) {
        next_[0] = static_cast<std::uint8_t>(value);
        if constexpr (kValueBytes == 2) next_[1] = static_cast<std::uint8_t>(value >> 8U);
        next_ += kValueBytes;
        next_[0] = static_cast<std::uint8_t>(run);
        if (count_.bytes == 2) next_[1] = static_cast<std::uint8_t>(run >> 8U);
        next_ += count_.bytes;
    }

    std::uint8_t* next_;
    RunCount count_;
};

/// How many pixels from `at` on equal the one there.
std::size_t RunLength(const std::uint8_t* at, const std::uint8_t* end) {
    const std::uint16_t pixel = LoadPixel(at);
    const std::uint8_t* next = at + kPixelBytes;
    if (next == end || LoadPixel(next) != pixel) return 1;
    const std::uint64_t word = 0x0001000100010001U * pixel;
    while (end - next >= static_cast<std::ptrdiff_t>(sizeof word)) {
        const std::uint64_t difference = LoadLittleWord(next) ^ word;
        if (difference != 0) {
            next += static_cast<unsigned>(__builtin_ctzll(difference)) / 16 * kPixelBytes;
            return static_cast<std::size_t>(next - at) / kPixelBytes;
        }
        next += sizeof word;
    }
    while (next != end && LoadPixel(next) == pixel) {
        next += kPixelBytes;
    }
    return static_cast<std::size_t>(next - at) / kPixelBytes;
}

/// Codes every run of `pixels` (whole pixels). @param value_of  what a token says for a pixel
template <std::size_t kValueBytes, class ValueOf>
std::uint8_t* WriteRuns(ByteView pixels, std::uint8_t* stream, RunCount count, ValueOf value_of) {
    TokenWriter<kValueBytes> tokens(stream, count);
    const std::uint8_t* const end = pixels.data() + pixels.size();
    for (const std::uint8_t* at = pixels.data(); at != end;) {
        const std::size_t run = RunLength(at, end);
        tokens.WriteRun(value_of(LoadPixel(at)), run);
        at += run * kPixelBytes;
    }
    return tokens.Next();
}

ByteView WholePixels(ByteView frame) {
    return frame.first(frame.size() / kPixelBytes * kPixelBytes);
}

/// Numbers the colours in order of first appearance and writes them as the palette.
/// @return false when they are too many
bool MakePalette(ByteView pixels, std::uint8_t* palette, ColourMap& map) {
    map.fill(-1);
    std::fill_n(palette, kPaletteBytes, std::uint8_t{0});
    std::size_t colours = 0;
    for (std::size_t at = 0; at < pixels.size(); at += kPixelBytes) {
        const std::uint16_t pixel = LoadPixel(pixels.data() + at);
        if (map[pixel] >= 0) continue;
        if (colours == kPaletteEntries) return false;
        map[pixel] = static_cast<std::int16_t>(colours);
        StorePixel(palette + colours * kPixelBytes, pixel);
        ++colours;
    }
    return true;
}

/// Expands tokens into `frame`. @param pixel_of  the pixel that a token's first bytes stand for
template <std::size_t kValueBytes, std::size_t kCountBytes, class PixelOf>
Decoded ReadRuns(ByteView tokens, ByteSpan frame, PixelOf pixel_of) {
    const std::size_t token_bytes = kValueBytes + kCountBytes;
    const std::size_t pixels = frame.size() / kPixelBytes;
    std::uint64_t covered = 0;
    const std::uint8_t* token = tokens.data();
    for (std::size_t left = tokens.size() / token_bytes; left > 0; --left, token += token_bytes) {
        std::size_t run = token[kValueBytes];
        if constexpr (kCountBytes == 2)
            run |= static_cast<std::size_t>(token[kValueBytes + 1]) << 8U;
        const std::size_t room = covered < pixels ? pixels - static_cast<std::size_t>(covered) : 0;
        const std::size_t fitting = std::min(run, room);
        if (fitting != 0)
            FillPixels(frame.data() + covered * kPixelBytes, pixel_of(token), fitting);
        covered += run;
    }
    return DecodedPixels(covered * kPixelBytes, frame);
}

template <std::size_t kValueBytes, class PixelOf>
Decoded ReadRunsOf(ByteView tokens, ByteSpan frame, RunCount count, PixelOf pixel_of) {
    return count.bytes == 1 ? ReadRuns<kValueBytes, 1>(tokens, frame, pixel_of)
                            : ReadRuns<kValueBytes, 2>(tokens, frame, pixel_of);
}

} // namespace

std::size_t EncodeRuns(ByteView frame, ByteSpan stream, RunCount count) {
    if (stream.size() < RunsWorstCase(frame.size(), count)) {
        assert(false && "the stream must have room for the worst case");
        return 0;
    }
    const auto* const end = WriteRuns<2>(WholePixels(frame), stream.data(), count,
                                         [](std::uint16_t pixel) { return pixel; });
    return static_cast<std::size_t>(end - stream.data());
}

Decoded DecodeRuns(ByteView stream, ByteSpan frame, RunCount count) {
    return ReadRunsOf<2>(stream, frame, count,
                         [](const std::uint8_t* token) { return LoadPixel(token); });
}

std::size_t EncodeIndexedRuns(ByteView frame, ByteSpan stream, RunCount count, ColourMap& map) {
    if (stream.size() < IndexedRunsWorstCase(frame.size(), count)) {
        assert(false && "the stream must have room for the worst case");
        return 0;
    }
    const ByteView pixels = WholePixels(frame);
    std::uint8_t* const body = stream.data() + 1;
    if (!MakePalette(pixels, body, map)) {
        stream[0] = static_cast<std::uint8_t>(IndexMode::Direct);
        return 1 + EncodeRuns(frame, stream.subspan(1), count);
    }
    stream[0] = static_cast<std::uint8_t>(IndexMode::Palette);
    const auto* const end =
        WriteRuns<1>(pixels, body + kPaletteBytes, count, [&map](std::uint16_t pixel) {
            return static_cast<std::uint32_t>(map[pixel]);
        });
    return static_cast<std::size_t>(end - stream.data());
}

Decoded DecodeIndexedRuns(ByteView stream, ByteSpan frame, RunCount count) {
    if (stream.size() <= 1) return DecodedPixels(0, frame);
    const ByteView body = stream.subspan(1);
    if (stream[0] == static_cast<std::uint8_t>(IndexMode::Direct)) {
        return DecodeRuns(body, frame, count);
    }
    if (stream[0] != static_cast<std::uint8_t>(IndexMode::Palette)) {
        return {0, Fault::BadValue, 0};
    }
    if (body.size() <= kPaletteBytes) return DecodedPixels(0, frame);
    return ReadRunsOf<1>(body.subspan(kPaletteBytes), frame, count,
                         [palette = body.data()](const std::uint8_t* token) {
                             return LoadPixel(palette + token[0] * kPixelBytes);
                         });
}

} // namespace kelvo::codec
