#include "media/FilmTracks.h"

#include "container/ContainerHeader.h"
#include "framework/base/ByteReader.h"
#include "framework/base/ChFile.h"
#include "media/AudioHeader.h"
#include "media/VideoHeader.h"
#include "media/VorbisTrackHeader.h"
#include "platform/base/files.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace kelvo {

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 20U;
/// A palette of 256 colours, and then some.
constexpr std::uint32_t kLargestUserHeader = 4096;
constexpr std::size_t kHead = kContainerHeaderBytes + kLargestUserHeader;
/// Where container headers have the numbers that tell them from other bytes.
constexpr std::size_t kSideLengthAt = 8;
constexpr std::size_t kQuickLook = 12;
// So many places are looked at more closely, whatever the bytes are.
constexpr std::uint64_t kLooksAtLeast = 1024;
constexpr std::uint64_t kBytesALook = 4096;

enum class TrackSign : std::uint8_t { None, Sound, Picture };

std::uint32_t NumberAt(ByteView bytes, std::size_t offset) {
    return ByteReader{bytes.subspan(offset, 4)}.ReadU32();
}

bool MayBeTrack(ByteView bytes) {
    const std::uint32_t first = NumberAt(bytes, 0);
    const std::uint32_t side = NumberAt(bytes, kSideLengthAt);
    if (first == kAudioHeaderSize) return side == kAudioSideLength;
    if (side == kVideoSideLength)
        return first >= kSmallestVideoHeader && first <= kLargestUserHeader;
    return bytes[0] == static_cast<std::uint8_t>(kVorbisSignature[0]) &&
           bytes[1] == static_cast<std::uint8_t>(kVorbisSignature[1]) &&
           bytes[2] == static_cast<std::uint8_t>(kVorbisSignature[2]);
}

/// @param head  of a track, as far as it goes, at most kHead bytes
TrackSign SignOf(ByteView head, std::uint64_t rest) {
    if (StartsWithVorbisSignature(head)) return TrackSign::Sound;
    const Result<ContainerHeader> parsed =
        ParseContainerHeader(head.first(std::min<std::size_t>(head.size(), kContainerHeaderBytes)));
    if (!parsed) return TrackSign::None;
    ContainerHeader header = parsed.Value();
    header.RecordCount = 0;
    if (CheckHeaderFits(header, rest).fault != Fault::None) return TrackSign::None;
    if (header.FirstRecordOffset() > head.size()) return TrackSign::None;
    const ByteView user_header = head.subspan(kContainerHeaderBytes, header.UserHeaderSize);
    const Result<AudioHeader> audio = ParseAudioHeader(user_header);
    if (audio && header.UserHeaderSize == kAudioHeaderSize &&
        CheckAudioHeader(audio.Value()).fault == Fault::None &&
        audio.Value().FrameBytes == header.RecordLength) {
        return TrackSign::Sound;
    }
    const Result<VideoHeader> video = ParseVideoHeader(user_header);
    if (video && CheckVideoHeader(video.Value(), user_header.size(), header.RecordLength).fault ==
                     Fault::None) {
        return TrackSign::Picture;
    }
    return TrackSign::None;
}

class TrackSearch {
public:
    TrackSearch(HFILE file, std::uint64_t size)
        : file_(file), size_(std::min(size, kLargestContainer)),
          looks_left_(kLooksAtLeast + size_ / kBytesALook) {}

    TrackSign SignAt(std::uint64_t offset) {
        if (offset < AVDirectory::kBytes || offset >= size_) return TrackSign::None;
        head_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kHead, size_ - offset)));
        const std::int64_t count = platform::ReadFileAt(file_, offset, head_.data(), head_.size());
        if (count != static_cast<std::int64_t>(head_.size())) return TrackSign::None;
        return SignOf(head_, size_ - offset);
    }

    /// Whether a track that begins there may end where it is said to: its index is inside.
    bool MayEnd(const TrackWindow& said) {
        if (SignAt(said.start) == TrackSign::None) return false;
        if (StartsWithVorbisSignature(head_)) return true;
        const Result<ContainerHeader> header =
            ParseContainerHeader(ByteView{head_}.first(kContainerHeaderBytes));
        return header && CheckIndexFits(header.Value(), said.Size()).fault == Fault::None;
    }

    /// The first track of each kind.
    void SearchAll(std::optional<std::uint32_t>& sound, std::optional<std::uint32_t>& picture) {
        std::vector<std::uint8_t> piece(kPiece + kQuickLook);
        for (std::uint64_t start = AVDirectory::kBytes; start < size_; start += kPiece) {
            const auto wanted =
                static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), size_ - start));
            const std::int64_t count = platform::ReadFileAt(file_, start, piece.data(), wanted);
            if (count != static_cast<std::int64_t>(wanted)) return;
            for (std::size_t i = 0; i + kQuickLook <= wanted && i < kPiece; ++i) {
                if (!MayBeTrack(ByteView{piece}.subspan(i, kQuickLook))) continue;
                if (looks_left_-- == 0) return;
                const TrackSign sign = SignAt(start + i);
                const auto place = static_cast<std::uint32_t>(start + i);
                if (sign == TrackSign::Sound && !sound) sound = place;
                if (sign == TrackSign::Picture && !picture) picture = place;
                if (sound && picture) return;
            }
        }
    }

private:
    HFILE file_;
    std::uint64_t size_;
    std::uint64_t looks_left_;
    std::vector<std::uint8_t> head_;
};

} // namespace

FoundTracks FindFilmTracks(HFILE file, std::uint64_t size, const AVDirectory& directory) {
    TrackSearch search(file, size);
    const auto end = static_cast<std::uint32_t>(std::min(size, kLargestContainer));
    const bool sound_there = search.SignAt(directory.audio.start) == TrackSign::Sound;
    const bool picture_there = search.SignAt(directory.video.start) == TrackSign::Picture;
    std::optional<std::uint32_t> sound;
    std::optional<std::uint32_t> picture;
    if (sound_there) sound = directory.audio.start;
    if (picture_there) picture = directory.video.start;
    // A track that is said to be absent is absent, if the other one has the whole file.
    const bool believable = (sound_there && (picture_there || directory.video.Absent())) ||
                            (picture_there && directory.audio.Absent());
    FoundTracks found;
    found.directory = directory;
    // One track that has the whole file needs no header that is understood.
    const auto has_all = [end](const TrackWindow& said) {
        return said.start == AVDirectory::kBytes && said.end == end;
    };
    if ((directory.audio.Absent() && has_all(directory.video)) ||
        (directory.video.Absent() && has_all(directory.audio))) {
        return found;
    }
    if (!believable) search.SearchAll(sound, picture);
    const auto window = [&](std::optional<std::uint32_t> start, std::optional<std::uint32_t> other,
                            const TrackWindow& said) -> TrackWindow {
        // What cannot be found may have lost its header, and nothing else.
        const bool may_be_there = said.start >= AVDirectory::kBytes && said.start < end &&
                                  said.end > said.start && !(other && *other == said.start);
        if (!start) return may_be_there ? said : TrackWindow{};
        const std::uint32_t behind = other && *other > *start ? *other : end;
        const bool end_fits =
            said.start == *start && said.end > *start && said.end <= behind && search.MayEnd(said);
        return {*start, end_fits ? said.end : behind};
    };
    found.directory.audio = window(sound, picture, directory.audio);
    found.directory.video = window(picture, sound, directory.video);
    const auto differs = [end](const TrackWindow& said, const TrackWindow& is) {
        const bool cut = said.start == is.start && said.end > end && is.end == end;
        return !(said == is) && !cut;
    };
    found.lies = differs(directory.audio, found.directory.audio) ||
                 differs(directory.video, found.directory.video);
    return found;
}

Result<FoundTracks> FindFilmTracks(const CString& name) {
    ChFile file;
    if (!file.OpenReadOnly(name)) return Error{Fault::Missing, 0};
    const std::int64_t size = file.FileLength();
    if (size < 0) return Error{Fault::Unreadable, 0};
    std::array<std::uint8_t, AVDirectory::kBytes> bytes{};
    if (!file.ReadAll(bytes)) return Error{Fault::EndsEarly, 0};
    return FindFilmTracks(file.Handle(), static_cast<std::uint64_t>(size),
                          ParseAVDirectory(bytes).Value());
}

} // namespace kelvo
