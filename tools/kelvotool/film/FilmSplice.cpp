#include "tools/kelvotool/film/FilmSplice.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"
#include "framework/base/ProgressDisplay.h"
#include "media/VideoHeader.h"
#include "tools/kelvotool/film/ConversionRules.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <algorithm>
#include <limits>

namespace kelvo::tool {

namespace {

// What loses nothing and suits samples of one byte, and of two.
constexpr std::uint32_t kTypeOfShortSamples = 16;
constexpr std::uint32_t kTypeOfLongSamples = 17;
constexpr std::size_t kSyncBytes = 4;

SideChange ShiftSync(std::int64_t shift) {
    return [shift](std::uint32_t, ByteSpan side) {
        if (side.size() < kSyncBytes) return;
        const std::uint32_t number = ByteReader{side}.ReadU32();
        if (number == kNeverLinked) return;
        const std::int64_t moved = std::clamp<std::int64_t>(
            std::int64_t{number} + shift, 0, std::numeric_limits<std::uint32_t>::max());
        ByteWriter{side.first(kSyncBytes)}.WriteU32(static_cast<std::uint32_t>(moved));
    };
}

Error WriteSound(const FilmSplice::Sound& sound, RewriteTarget& target, Reporter& reporter,
                 SpliceCounts& counts) {
    TrackSplicer splicer(target, sound.header, reporter);
    Error error = splicer.Begin(sound.user_header);
    for (const SoundPiece& piece : sound.pieces) {
        if (error.fault == Fault::None && piece.source != nullptr) {
            error = splicer.Append(*piece.source, piece.first, piece.end);
        }
        for (std::uint32_t n = 0; n < piece.silence && error.fault == Fault::None; ++n) {
            error = StopRequested() ? Error{Fault::Stopped, 0}
                                    : splicer.AppendPlain(sound.silence_byte);
        }
    }
    counts.audio_frames = splicer.Count();
    counts.audio_frames_coded = splicer.CodedCount();
    return error.fault == Fault::None ? splicer.End() : error;
}

Error WritePicture(const FilmSplice::Picture& picture, RewriteTarget& target, Reporter& reporter,
                   SpliceCounts& counts) {
    TrackSplicer splicer(target, picture.header, reporter);
    Error error = splicer.Begin(picture.user_header);
    for (const PicturePiece& piece : picture.pieces) {
        if (error.fault != Fault::None) break;
        error = splicer.Append(*piece.source, piece.first, piece.end, ShiftSync(piece.sync_shift));
    }
    counts.images = splicer.Count();
    counts.images_coded = splicer.CodedCount();
    return error.fault == Fault::None ? splicer.End() : error;
}

} // namespace

ContainerHeader SpliceHeader(const TrackDescription& track) {
    ContainerHeader header = SourceHeader(track);
    if (track.vorbis) {
        header.CompressionType =
            track.vorbis->BytesPerSample == 1 ? kTypeOfShortSamples : kTypeOfLongSamples;
    }
    return header;
}

Error WriteSplice(const FilmSplice& splice, RewriteTarget& target, Reporter& reporter,
                  SpliceCounts& counts) {
    AVDirectory directory;
    if (splice.sound) {
        const Error error = WriteSound(*splice.sound, target, reporter, counts);
        if (error.fault != Fault::None) return error;
        directory.audio = target.LastContainer();
    }
    if (splice.picture) {
        const Error error = WritePicture(*splice.picture, target, reporter, counts);
        if (error.fault != Fault::None) return error;
        directory.video = target.LastContainer();
    }
    return splice.is_film ? target.PutDirectory(directory) : Error{};
}

} // namespace kelvo::tool
