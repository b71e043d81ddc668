#include "container/codec/CompressionTypes.h"

#include "container/codec/BlockTransform.h"
#include "container/codec/ByteGroups.h"
#include "container/codec/ColourRuns.h"
#include "container/codec/FrameDifference.h"
#include "container/codec/Lzss.h"
#include "container/codec/SampleDifference.h"

#include <algorithm>
#include <array>

namespace kelvo::codec {

namespace {

/// Decoded bytes for one stored byte, rounded up, of the token that stands for most.
constexpr std::uint32_t Expansion(std::uint32_t decoded, std::uint32_t stored) {
    return (decoded + stored - 1) / stored;
}
constexpr std::uint32_t kAnyCount8 = 255; // what a count can say, whatever an encoder would write
constexpr std::uint32_t kAnyCount16 = 65535;
constexpr std::uint32_t kCmprs = Expansion(8 * kLzssLongestMatch, 1 + 8 * kLzssMatchBytes);
constexpr std::uint32_t kShort = Expansion(2 * kAnyCount8, 3);
constexpr std::uint32_t kShortIndexed = Expansion(2 * kAnyCount8, 2);
constexpr std::uint32_t kLong = Expansion(2 * kAnyCount16, 4);
constexpr std::uint32_t kLongIndexed = Expansion(2 * kAnyCount16, 3);
constexpr std::uint32_t kPixelSkip = Expansion(2 * kAnyCount16, 2);
constexpr std::uint32_t kGroupSkip = Expansion(2 * GroupDifference::kLongestSkip, 2);
constexpr std::uint32_t kByteGroup = Expansion(190, 2);
constexpr std::uint32_t kNibbles = 2;
constexpr std::uint32_t kZeroRun = Expansion(kAnyCount8, 2); // of coefficients, one for each sample
static_assert(kCmprs == 9 && kGroupSkip == 50000);

// A row's properties by name, so that the table below reads like one.
enum Use : std::uint8_t { Video, Audio, Both };
enum Loss : std::uint8_t { Exact, Lossy };
enum Length : std::uint8_t { Any, Needed };
enum Stage : std::uint8_t { Alone, Cmprs };
enum Key : std::uint8_t { Each, First, Forced };

constexpr CompressionType Row(int id, const char* description, Coder coder, Stage stage, Use use,
                              Loss loss, Length length, Key key, std::uint32_t expansion,
                              TransformBlocks blocks = {}) {
    return {.id = id,
            .description = description,
            .coder = coder,
            .cmprs = stage == Cmprs,
            .codes_video = use != Audio,
            .codes_audio = use != Video,
            .lossless = loss == Exact,
            .length_required = length == Needed,
            .differential = key != Each,
            .forces_key = key == Forced,
            .greatest_expansion = expansion * (stage == Cmprs ? kCmprs : 1),
            .blocks = blocks};
}

constexpr TransformBlocks Blocks(std::size_t samples, double divisor, bool two_pass) {
    return {.block = samples, .divisor = divisor, .two_pass = two_pass};
}

using enum Coder;

// clang-format off
constexpr std::array kTypes = {
    Row(1, "Vid: comp. max 255 col. ripetuti", ShortRuns, Alone, Video, Exact, Any, Each, kShort),
    Row(2, "Vid: comp. max 255 col. rip. + indice colori", IndexedShortRuns, Alone, Video, Exact, Any, Each, kShortIndexed),
    Row(3, "Vid: comp. max 64000 col. ripetuti", LongRuns, Alone, Video, Exact, Any, Each, kLong),
    Row(4, "Vid: comp. max 64000 col. rip. + indice colori", IndexedLongRuns, Alone, Video, Exact, Any, Each, kLongIndexed),
    Row(5, "Vid: QTrx - R solo Sequenziale- No frame rate", Coder::PixelDifference, Alone, Video, Exact, Needed, First, kPixelSkip),
    Row(6, "Vid: QTrx - Versione 2", Coder::GroupDifference, Alone, Video, Exact, Needed, First, kGroupSkip),
    Row(7, "Vid: QTrx - Random Read Access", Coder::GroupDifference, Alone, Video, Exact, Needed, Forced, kGroupSkip),
    Row(8, "Vid: QTrx+cmprs Random Read Access", Coder::GroupDifference, Cmprs, Video, Exact, Needed, Forced, kGroupSkip),
    Row(9, "Vid: Comp+cmprs R/W/Ins/Del", IndexedShortRuns, Cmprs, Video, Exact, Needed, Each, kShortIndexed),
    Row(15, "Audio: Versione 1", ByteGroups, Alone, Audio, Exact, Any, Each, kByteGroup),
    Row(16, "Au-Vi: QTra+cmprs - R/W/Ins/Del - REVERSIBILE TOTALMENTE", SampleDifference, Cmprs, Both, Exact, Needed, Each, 1),
    Row(17, "Au-Vi: cmprs - R/W/Ins/Del - REVERSIBILE TOTALMENTE", Copy, Cmprs, Both, Exact, Any, Each, 1),
    Row(18, "Au-Vi: QTra+cmprs - R/W/Ins/Del - REVERSIBILE TOTALMENTE", NibbleDifference, Cmprs, Both, Exact, Needed, Each, kNibbles),
    Row(19, "Au: FTT+cmprs ATTENZIONE: cmpr->decmpr->compr = sempre peggio!", WholeTransform, Cmprs, Audio, Lossy, Needed, Each, kZeroRun),
    Row(20, "Au: FTT+cmprs 512/10.0, bicompress NON REVERSIBILE!", FixedTransform, Cmprs, Audio, Lossy, Needed, Each, kZeroRun, Blocks(512, 10.0, true)),
    Row(21, "Au: FTT+cmprs 512/5.0, bicompress NON REVERSIBILE!", FixedTransform, Cmprs, Audio, Lossy, Needed, Each, kZeroRun, Blocks(512, 5.0, true)),
    Row(22, "Au: FTT+cmprs 512/2.5, bicompress NON REVERSIBILE!", FixedTransform, Cmprs, Audio, Lossy, Needed, Each, kZeroRun, Blocks(512, 2.5, true)),
    Row(23, "Au: FTT+cmprs 512/1.25, bicompress NON REVERSIBILE!", FixedTransform, Cmprs, Audio, Lossy, Needed, Each, kZeroRun, Blocks(512, 1.25, true)),
    Row(24, "Au: FTT+cmprs 1024/1.25, NO bicompress NON REVERSIBILE!", FixedTransform, Cmprs, Audio, Lossy, Needed, Each, kZeroRun, Blocks(1024, 1.25, false)),
    Row(25, "Au: FTT+cmprs 256/5.0, NO bicompress NON REVERSIBILE!", FixedTransform, Cmprs, Audio, Lossy, Needed, Each, kZeroRun, Blocks(256, 5.0, false)),
    Row(30, "Au: FTT+cmprs pack/div variabili! NON REVERSIBILE!", VariableTransform, Cmprs, Audio, Lossy, Needed, Each, kZeroRun),
    Row(kTypeVorbis, "Au: Vorbis Compression - NON REVERSIBILE!", Copy, Alone, Audio, Lossy, Any, Each, 1),
    Row(kTypeNone, "Nessuna", Copy, Alone, Both, Exact, Any, Each, 1),
};
// clang-format on

constexpr bool InOrder(const CompressionType& a, const CompressionType& b) {
    return a.id < b.id;
}
static_assert(std::ranges::is_sorted(kTypes, InOrder));

constexpr std::size_t CountAudioTypes() {
    return static_cast<std::size_t>(std::ranges::count_if(kTypes, &CompressionType::codes_audio));
}
constexpr auto kAudioTypeIds = [] {
    std::array<int, CountAudioTypes()> ids{};
    std::size_t count = 0;
    for (const CompressionType& type : kTypes) {
        if (type.codes_audio) ids[count++] = type.id;
    }
    return ids;
}();

} // namespace

std::span<const CompressionType> AllCompressionTypes() {
    return kTypes;
}

const CompressionType* FindCompressionType(int id) {
    const auto found = std::ranges::find(kTypes, id, &CompressionType::id);
    return found == kTypes.end() ? nullptr : &*found;
}

const CompressionType& CodingType(int id) {
    const CompressionType* type = FindCompressionType(id);
    return type != nullptr ? *type : kTypes.front();
}

std::span<const int> AudioTypeIds() {
    return kAudioTypeIds;
}

std::size_t WorstCodedLength(const CompressionType& type, std::size_t record_length) {
    switch (type.coder) {
    case ShortRuns:
        return RunsWorstCase(record_length, kShortRuns);
    case IndexedShortRuns:
        return IndexedRunsWorstCase(record_length, kShortRuns);
    case LongRuns:
        return RunsWorstCase(record_length, kLongRuns);
    case IndexedLongRuns:
        return IndexedRunsWorstCase(record_length, kLongRuns);
    case Coder::PixelDifference:
        return PixelDifferenceWorstCase(record_length);
    case Coder::GroupDifference:
        return GroupDifferenceWorstCase(record_length);
    case ByteGroups:
        return LargestByteGroups(record_length);
    case NibbleDifference:
        return LargestNibbles(record_length);
    case WholeTransform:
        return LargestWholeTransform(record_length);
    case FixedTransform:
        return LargestTransformBlocks(record_length, type.blocks);
    case VariableTransform:
        return LargestVariableBlocks(record_length);
    case SampleDifference:
    case Copy:
        break;
    }
    return record_length;
}

std::size_t WorstStoredLength(const CompressionType& type, std::size_t record_length) {
    const std::size_t coded = WorstCodedLength(type, record_length);
    return type.cmprs ? LzssWorstCase(coded) : coded;
}

std::uint64_t GreatestRecordLength(const CompressionType& type, std::uint64_t stored_length) {
    // Offsets in a container have 32 bits, so this product has room.
    return std::min<std::uint64_t>(stored_length, UINT32_MAX) * type.greatest_expansion;
}

} // namespace kelvo::codec
