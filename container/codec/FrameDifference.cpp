#include "container/codec/FrameDifference.h"

#include "container/codec/WideWords.h"

#include <algorithm>
#include <cassert>

namespace kelvo::codec {

namespace {

constexpr std::size_t kWordBytes = 2;

class WordWriter {
public:
    explicit WordWriter(std::uint8_t* stream) : begin_(stream), next_(stream) {}

    void Write(std::size_t word) {
        StorePixel(next_, static_cast<std::uint32_t>(word));
        next_ += kWordBytes;
    }
    /// The place of the word that is written next.
    std::uint8_t* Next() const { return next_; }
    std::size_t Written() const { return static_cast<std::size_t>(next_ - begin_); }

private:
    std::uint8_t* begin_;
    std::uint8_t* next_;
};

class WordReader {
public:
    explicit WordReader(ByteView stream)
        : next_(stream.data()), left_(stream.size() / kWordBytes) {}

    bool HasWord() const { return left_ != 0; }
    std::size_t Left() const { return left_; }
    std::uint16_t Read() {
        const std::uint16_t word = LoadPixel(next_);
        Skip(1);
        return word;
    }
    const std::uint8_t* Next() const { return next_; }
    void Skip(std::size_t words) {
        next_ += words * kWordBytes;
        left_ -= words;
    }

private:
    const std::uint8_t* next_;
    std::size_t left_;
};

/// How many pixels from `at` on are the same in both frames, up to `end` (all counted in pixels).
std::size_t EqualPixels(const std::uint8_t* frame, const std::uint8_t* previous, std::size_t at,
                        std::size_t end) {
    const std::size_t start = at;
    while (end - at >= kPixelsPerWord) {
        const std::uint64_t difference =
            LoadLittleWord(frame + at * kPixelBytes) ^ LoadLittleWord(previous + at * kPixelBytes);
        if (difference != 0) {
            return at - start + static_cast<unsigned>(__builtin_ctzll(difference)) / 16;
        }
        at += kPixelsPerWord;
    }
    while (at < end &&
           LoadPixel(frame + at * kPixelBytes) == LoadPixel(previous + at * kPixelBytes)) {
        ++at;
    }
    return at - start;
}

/// A frame that a stream covers from the first pixel on, never beyond the last.
class Cover {
public:
    explicit Cover(ByteSpan frame) : frame_(frame), pixels_(frame.size() / kPixelBytes) {}

    void Skip(std::size_t count) { covered_ += count; }
    void Repeat(std::uint16_t pixel, std::size_t count) {
        const std::size_t fitting = Fitting(count);
        if (fitting != 0) FillPixels(Next(), pixel, fitting);
        covered_ += count;
    }
    void Copy(const std::uint8_t* pixels, std::size_t count) {
        const std::size_t fitting = Fitting(count);
        if (fitting != 0) CopyPixels(Next(), pixels, fitting);
        covered_ += count;
    }
    Decoded Result() const { return DecodedPixels(covered_ * kPixelBytes, frame_); }

private:
    std::size_t Fitting(std::size_t count) const {
        if (covered_ >= pixels_) return 0;
        return std::min(count, static_cast<std::size_t>(pixels_ - covered_));
    }
    std::uint8_t* Next() { return frame_.data() + covered_ * kPixelBytes; }

    ByteSpan frame_;
    std::uint64_t pixels_;
    std::uint64_t covered_ = 0;
};

/// The changed pixels between two skips, as groups of one repeated or several literal pixels. Which
/// it becomes shows only as pixels come, so a group's first word is written when it closes.
class GroupWriter {
public:
    explicit GroupWriter(WordWriter& words) : words_(words) {}

    void Add(std::uint16_t pixel) {
        if (!open_) {
            Open(pixel);
        } else if (pixel == last_) {
            AddEqual(pixel);
        } else if (repeats_ >= 2) {
            Close();
            Open(pixel);
        } else {
            words_.Write(pixel);
            last_ = pixel;
            if (++literals_ == GroupDifference::kLongestLiteral) Close();
        }
    }
    void Close() {
        if (!open_) return;
        const std::size_t head = literals_ >= 2 ? GroupDifference::kLiteralBase + literals_
                                                : GroupDifference::kRepeatBase + repeats_;
        StorePixel(head_, static_cast<std::uint32_t>(head));
        open_ = false;
    }

private:
    void Open(std::uint16_t pixel) {
        head_ = words_.Next();
        words_.Write(0);
        words_.Write(pixel);
        literals_ = 1;
        repeats_ = 1;
        last_ = pixel;
        open_ = true;
    }
    void AddEqual(std::uint16_t pixel) {
        if (literals_ < 2) {
            if (++repeats_ == GroupDifference::kLongestRepeat) Close();
            return;
        }
        // The last literal begins a repeat: its slot becomes the new group's head.
        StorePixel(head_,
                   static_cast<std::uint32_t>(GroupDifference::kLiteralBase + literals_ - 1));
        head_ = words_.Next() - kWordBytes;
        words_.Write(pixel);
        literals_ = 1;
        repeats_ = 2;
    }

    WordWriter& words_;
    std::uint8_t* head_ = nullptr;
    std::size_t literals_ = 0;
    std::size_t repeats_ = 0;
    std::uint16_t last_ = 0;
    bool open_ = false;
};

void WriteSkips(WordWriter& words, std::size_t pixels) {
    for (; pixels > GroupDifference::kLongestSkip; pixels -= GroupDifference::kLongestSkip) {
        words.Write(GroupDifference::kLongestSkip);
    }
    if (pixels != 0) words.Write(pixels);
}

std::size_t CodeGroups(ByteView frame, ByteSpan previous, std::uint8_t* stream) {
    const std::size_t pixels = frame.size() / kPixelBytes;
    WordWriter words(stream);
    words.Write(static_cast<std::size_t>(FrameKind::Difference));
    GroupWriter group(words);
    for (std::size_t at = 0; at < pixels;) {
        const std::size_t same = EqualPixels(frame.data(), previous.data(), at, pixels);
        if (same != 0) {
            group.Close();
            WriteSkips(words, same);
            at += same;
            continue;
        }
        const std::uint16_t pixel = LoadPixel(frame.data() + at * kPixelBytes);
        StorePixel(previous.data() + at * kPixelBytes, pixel);
        group.Add(pixel);
        ++at;
    }
    group.Close();
    return words.Written();
}

} // namespace

std::size_t EncodePixelDifference(ByteView frame, ByteSpan previous, ByteSpan stream, CodeAs kind) {
    if (stream.size() < PixelDifferenceWorstCase(frame.size()) || previous.size() < frame.size()) {
        assert(false && "stream and previous frame must have room");
        return 0;
    }
    WordWriter words(stream.data());
    if (kind == CodeAs::Key) {
        words.Write(static_cast<std::size_t>(FrameKind::Key));
        std::ranges::copy(frame, words.Next());
        std::ranges::copy(frame, previous.data());
        return words.Written() + frame.size();
    }
    words.Write(static_cast<std::size_t>(FrameKind::Difference));
    const std::size_t pixels = frame.size() / kPixelBytes;
    for (std::size_t at = 0; at < pixels;) {
        const std::size_t end = std::min(pixels, at + PixelDifference::kLongestSkip);
        const std::size_t same = EqualPixels(frame.data(), previous.data(), at, end);
        words.Write(same);
        at += same;
        if (same != 0) continue;
        const std::uint16_t pixel = LoadPixel(frame.data() + at * kPixelBytes);
        StorePixel(previous.data() + at * kPixelBytes, pixel);
        words.Write(pixel);
        ++at;
    }
    return words.Written();
}

Decoded DecodePixelDifference(ByteView stream, ByteSpan frame) {
    WordReader words(stream);
    if (!words.HasWord()) return DecodedPixels(0, frame);
    const std::uint16_t kind = words.Read();
    if (kind == static_cast<std::uint16_t>(FrameKind::Key)) {
        const ByteView raw = stream.subspan(kWordBytes);
        const std::size_t fitting = std::min(raw.size(), frame.size());
        std::ranges::copy(raw.first(fitting), frame.data());
        const Fault fault = raw.size() < frame.size()   ? Fault::EndsEarly
                            : raw.size() > frame.size() ? Fault::TooLarge
                                                        : Fault::None;
        return {fitting, fault, raw.size()};
    }
    if (kind != static_cast<std::uint16_t>(FrameKind::Difference)) return {0, Fault::BadValue, 0};
    Cover cover(frame);
    while (words.HasWord()) {
        const std::uint16_t skip = words.Read();
        if (skip != 0) {
            cover.Skip(skip);
        } else if (words.HasWord()) {
            cover.Repeat(words.Read(), 1);
        }
    }
    return cover.Result();
}

std::size_t EncodeGroupDifference(ByteView frame, ByteSpan previous, ByteSpan stream, CodeAs kind,
                                  ColourMap& map) {
    if (stream.size() < GroupDifferenceWorstCase(frame.size()) || previous.size() < frame.size()) {
        assert(false && "stream and previous frame must have room");
        return 0;
    }
    if (kind == CodeAs::Difference) return CodeGroups(frame, previous, stream.data());
    StorePixel(stream.data(), static_cast<std::uint32_t>(FrameKind::Key));
    std::ranges::copy(frame, previous.data());
    return kWordBytes + EncodeIndexedRuns(frame, stream.subspan(kWordBytes), kShortRuns, map);
}

Decoded DecodeGroupDifference(ByteView stream, ByteSpan frame) {
    WordReader words(stream);
    if (!words.HasWord()) return DecodedPixels(0, frame);
    const std::uint16_t kind = words.Read();
    if (kind == static_cast<std::uint16_t>(FrameKind::Key)) {
        return DecodeIndexedRuns(stream.subspan(kWordBytes), frame, kShortRuns);
    }
    if (kind != static_cast<std::uint16_t>(FrameKind::Difference)) return {0, Fault::BadValue, 0};
    Cover cover(frame);
    while (words.HasWord()) {
        const std::size_t head = words.Read();
        if (head <= GroupDifference::kLongestSkip) {
            cover.Skip(head);
        } else if (head <= GroupDifference::kLiteralBase) {
            if (words.HasWord()) cover.Repeat(words.Read(), head - GroupDifference::kRepeatBase);
        } else {
            const std::size_t there = std::min(words.Left(), head - GroupDifference::kLiteralBase);
            cover.Copy(words.Next(), there);
            words.Skip(there);
        }
    }
    return cover.Result();
}

} // namespace kelvo::codec
