#include "tools/kelvotool/film/FilmDescription.h"

#include "container/UndoFile.h"
#include "framework/base/ChFile.h"
#include "tools/kelvotool/files/FileNames.h"

#include <algorithm>
#include <array>

namespace kelvo::tool {

namespace {

constexpr std::uint64_t kDirectoryFieldBytes = 8;
constexpr std::uint64_t kFrameBytesOffset = 12;

/// One description in the making.
class TrackExamination {
public:
    TrackExamination(ChFile& file, TrackDescription& track) : file_(file), track_(track) {}

    /// @param known  what the track must be; none: what it turns out to be
    void Examine(std::optional<TrackKind> known, const std::string& name) {
        std::array<std::uint8_t, kContainerHeaderBytes> bytes{};
        if (!file_.SetWindow(track_.window.start, track_.window.end)) return;
        const std::size_t count = file_.ReadSome(bytes);
        const ByteView head = ByteView{bytes}.first(count);
        if (StartsWithVorbisSignature(head)) {
            track_.form = TrackForm::Vorbis;
            ExamineVorbis(head.subspan(kVorbisSignature.size()));
        } else {
            ExamineContainer(head);
            if (!known) track_.kind = KindOfContainer(name);
        }
        if (track_.form == TrackForm::Unknown) return;
        if (track_.form == TrackForm::Container) ReadTrackHeader();
        if (track_.form == TrackForm::Vorbis && track_.kind == TrackKind::Video) {
            Add("its picture is a Vorbis sound", 0);
        }
    }

private:
    void Add(std::string what, std::uint64_t offset_in_track) {
        track_.problems.push_back({.severity = kDamaged,
                                   .code = ProblemCode::HeaderDamaged,
                                   .what = std::move(what),
                                   .offset = track_.window.start + offset_in_track});
    }

    void ExamineVorbis(ByteView rest) {
        const Result<VorbisDescription> parsed = ParseVorbisDescription(rest);
        if (!parsed) {
            Add("its description is not all there", kVorbisSignature.size());
            return;
        }
        track_.vorbis = parsed.Value();
        ByteView bytes = rest.subspan(VorbisDescription::kBytes);
        bytes = bytes.first(std::min(bytes.size(), kAudioHeaderSize));
        const Result<AudioHeader> header = ParseAudioHeader(bytes);
        if (!header) {
            Add("its sound header is not all there", kVorbisHeaderOffset);
            return;
        }
        track_.user_header.assign(bytes.begin(), bytes.end());
        track_.audio = header.Value();
        const Error error = CheckVorbisSoundHeader(header.Value(), *track_.vorbis);
        if (error.fault != Fault::None) {
            Add("its sound header contradicts itself or its description",
                kVorbisHeaderOffset + error.offset);
        }
        track_.track_header_is_sound = error.fault == Fault::None;
    }

    void ExamineContainer(ByteView head) {
        const Result<ContainerHeader> header = ParseContainerHeader(head);
        if (!header) {
            Add("its header is not all there", header.Why().offset);
            return;
        }
        const Error error = CheckHeaderFits(header.Value(), track_.window.Size());
        if (error.fault != Fault::None) {
            Add("its header claims more than there is", error.offset);
            // Numbers that point outside the file are most likely no header at all.
            if (header.Value().FirstRecordOffset() > track_.window.Size()) return;
        }
        track_.form = TrackForm::Container;
        track_.container = header.Value();
        // Fits into the file, as was checked.
        track_.user_header.resize(header.Value().UserHeaderSize);
        track_.user_header.resize(file_.ReadSome(track_.user_header));
        if (error.fault == Fault::None && header.Value().RecordLength == 0 &&
            header.Value().RecordCount > 0) {
            Add("its records have no length", 4);
        }
    }

    Error CheckAudio(const AudioHeader& header) const {
        const Error error = CheckAudioHeader(header);
        if (error.fault != Fault::None || header.FrameBytes == track_.container->RecordLength) {
            return error;
        }
        return {Fault::Mismatch, kFrameBytesOffset};
    }

    TrackKind KindOfContainer(const std::string& name) const {
        if (track_.form == TrackForm::Unknown) return TrackKind::Audio;
        const auto audio = ParseAudioHeader(track_.user_header);
        if (audio && CheckAudio(audio.Value()).fault == Fault::None) return TrackKind::Audio;
        const auto video = ParseVideoHeader(track_.user_header);
        if (video && CheckVideoHeader(video.Value(), track_.user_header.size(),
                                      track_.container->RecordLength)
                             .fault == Fault::None) {
            return TrackKind::Video;
        }
        const CString extension = PathExtension(CString(std::string_view{name}));
        if (extension.CompareWithoutCase("kvf") == 0) return TrackKind::Video;
        if (extension.CompareWithoutCase("kaf") == 0) return TrackKind::Audio;
        return track_.container->SideLength == kVideoSideLength ? TrackKind::Video
                                                                : TrackKind::Audio;
    }

    void ReadTrackHeader() {
        Error error;
        if (track_.kind == TrackKind::Audio) {
            const auto header = ParseAudioHeader(track_.user_header);
            if (header) track_.audio = header.Value();
            error = header ? CheckAudio(header.Value()) : header.Why();
        } else {
            const auto header = ParseVideoHeader(track_.user_header);
            if (header) track_.video = header.Value();
            error = header ? CheckVideoHeader(header.Value(), track_.user_header.size(),
                                              track_.container->RecordLength)
                           : header.Why();
        }
        track_.track_header_is_sound = error.fault == Fault::None;
        if (track_.track_header_is_sound) return;
        Add(track_.kind == TrackKind::Audio ? "its user header is no sound header"
                                            : "its user header is no picture header",
            kContainerHeaderBytes + error.offset);
    }

    ChFile& file_;
    TrackDescription& track_;
};

void FindTracks(FilmDescription& film) {
    struct Slot {
        TrackKind kind;
        const TrackWindow& window;
        std::uint64_t directory_offset;
    };
    const Slot slots[] = {
        {TrackKind::Audio, film.directory.audio, 0},
        {TrackKind::Video, film.directory.video, kDirectoryFieldBytes},
    };
    const auto size = static_cast<std::uint32_t>(std::min(film.size, kLargestContainer));
    for (const Slot& slot : slots) {
        if (slot.window.Absent()) continue;
        const Fault fault = CheckTrackWindow(slot.window, film.size).fault;
        if (fault != Fault::None) {
            film.problems.push_back(
                {.severity = kDamaged,
                 .code = ProblemCode::DirectoryDamaged,
                 .track = slot.kind,
                 .what = fault == Fault::EndsEarly
                             ? "the directory places its end beyond the end of the file"
                             : "the directory places it where no track can be",
                 .offset = slot.directory_offset});
        }
        const bool starts_inside = slot.window.start >= AVDirectory::kBytes &&
                                   slot.window.start <= size &&
                                   slot.window.start <= slot.window.end;
        if (!starts_inside) continue;
        film.tracks.push_back({.kind = slot.kind,
                               .window = {slot.window.start, std::min(slot.window.end, size)},
                               .window_is_whole = fault == Fault::None});
    }
    const auto& [audio, video] = film.directory;
    if (!audio.Absent() && !video.Absent() && audio.start < video.end && video.start < audio.end) {
        film.problems.push_back({.severity = kDamaged,
                                 .code = ProblemCode::DirectoryDamaged,
                                 .what = "the directory places both tracks in the same bytes",
                                 .offset = 0});
    }
}

bool ReadDirectory(ChFile& file, FilmDescription& film, Reporter& reporter) {
    std::array<std::uint8_t, AVDirectory::kBytes> bytes{};
    if (!file.ReadAll(bytes)) {
        reporter.NotDone("it is none of these files: its directory is not all there",
                         ProblemCode::NotAFilm);
        return false;
    }
    film.directory = ParseAVDirectory(bytes).Value();
    FindTracks(film);
    return true;
}

bool OpenForLooking(const std::string& name, ChFile& file, Reporter& reporter) {
    // What a kill left of an edit is undone first, as by every opening.
    if (const Error error = UndoFile::Recover(name); error.fault != Fault::None) {
        reporter.NotDone(std::string(FileFaultText(error.fault)), ProblemCode::InputUnreadable);
        return false;
    }
    if (file.OpenReadOnly(CString(std::string_view{name})) && file.FileLength() >= 0) return true;
    reporter.NotDone("it cannot be read", ProblemCode::InputUnreadable);
    return false;
}

} // namespace

std::uint32_t TrackDescription::RecordCount() const {
    if (vorbis) return vorbis->frame_count;
    return container ? container->RecordCount : 0;
}

std::optional<double> TrackDescription::DurationSeconds() const {
    std::int64_t per_second = 0;
    if (audio) per_second = audio->nFramesAlSec;
    if (video) per_second = std::max<std::int64_t>(video->nImgAlSec, 1); // as the player does
    if (per_second == 0) return std::nullopt;
    return static_cast<double>(RecordCount()) / static_cast<double>(per_second);
}

const TrackDescription* FilmDescription::Find(TrackKind kind) const {
    const auto found = std::ranges::find(tracks, kind, &TrackDescription::kind);
    return found == tracks.end() ? nullptr : &*found;
}

std::optional<FilmDescription> DescribeFilm(const std::string& name, Reporter& reporter) {
    ChFile file;
    if (!OpenForLooking(name, file, reporter)) return std::nullopt;
    FilmDescription film{.name = name, .is_film = HasFilmName(name)};
    film.size = static_cast<std::uint64_t>(file.FileLength());
    if (film.is_film) {
        if (!ReadDirectory(file, film, reporter)) return std::nullopt;
    } else {
        const auto size = static_cast<std::uint32_t>(std::min(film.size, kLargestContainer));
        film.tracks.push_back({.window = {0, size}});
    }
    for (TrackDescription& track : film.tracks) {
        const auto known = film.is_film ? std::optional(track.kind) : std::nullopt;
        track.file = name;
        TrackExamination(file, track).Examine(known, name);
        for (Problem& problem : track.problems) {
            if (film.is_film) problem.track = track.kind;
        }
    }
    const auto is_known = [](const TrackDescription& track) {
        return track.form != TrackForm::Unknown;
    };
    if (std::ranges::any_of(film.tracks, is_known)) return film;
    const bool has_reason = !film.tracks.empty() && !film.tracks.front().problems.empty();
    reporter.NotDone("it is none of these files" +
                         (has_reason ? ": " + TextOf(film.tracks.front().problems.front())
                                     : std::string(": it holds no track")),
                     ProblemCode::NotAFilm);
    return std::nullopt;
}

std::optional<FilmDescription> DescribePair(const std::string& picture, const std::string& sound,
                                            Reporter& reporter) {
    auto film = DescribeFilm(picture, reporter);
    auto other = DescribeFilm(sound, reporter);
    if (!film) return other;
    if (!other) return film;
    TrackDescription& first = film->tracks.front();
    TrackDescription& second = other->tracks.front();
    // Two files of one kind would hide each other.
    if (first.kind == second.kind) return film;
    film->is_pair = true;
    film->size += other->size;
    film->tracks.push_back(std::move(second));
    for (TrackDescription& track : film->tracks) {
        for (Problem& problem : track.problems)
            problem.track = track.kind;
    }
    return film;
}

std::optional<FilmDescription> DescribeNamedFilm(const FilmName& film, Reporter& reporter) {
    const auto name = InputName(film.name, reporter);
    if (film.sound.empty()) return name ? DescribeFilm(*name, reporter) : std::nullopt;
    const auto sound = InputName(film.sound, reporter);
    if (name && sound) return DescribePair(*name, *sound, reporter);
    if (!name && !sound) return std::nullopt;
    return DescribeFilm(name ? *name : *sound, reporter);
}

} // namespace kelvo::tool
