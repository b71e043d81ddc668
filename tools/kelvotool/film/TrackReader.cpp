#include "tools/kelvotool/film/TrackReader.h"

#include "framework/base/ByteReader.h"
#include "platform/base/files.h"
#include "tools/kelvotool/film/Salvage.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <array>
#include <string>
#include <string_view>

namespace kelvo::tool {

namespace {

constexpr std::uint64_t kIndexOffsetField = 28;

// A header may claim billions of frames behind a stream of a second: so many of the missing ones
// are looked at one by one, which is more than a day of sound.
constexpr std::uint32_t kMostMissingFrames = 1'000'000;

} // namespace

TrackReader::TrackReader(const FilmDescription& film, const TrackDescription& track)
    : film_(film), track_(track) {}

Problem TrackReader::Make(ProblemCode code, std::string what, std::optional<std::uint32_t> record,
                          std::optional<std::uint64_t> offset, ExitCode severity) const {
    Problem problem{.severity = severity, .code = code, .what = std::move(what)};
    if (film_.HasNamedTracks()) problem.track = track_.kind;
    problem.record = record;
    problem.offset = offset;
    return problem;
}

std::optional<Problem> TrackReader::Open() {
    switch (track_.form) {
    case TrackForm::Container: {
        std::optional<Problem> problem = OpenContainer();
        if (problem && problem->severity == kDamaged) problem->remedy = Remedy();
        return problem;
    }
    case TrackForm::Vorbis:
        return OpenVorbis();
    case TrackForm::Unknown:
        break;
    }
    return Make(ProblemCode::HeaderDamaged, "it cannot be made out");
}

/// What a rebuild would make of it; empty when it could make nothing.
std::string TrackReader::Remedy() const {
    ChFile file;
    if (!file.OpenReadOnly(CString(std::string_view{track_.file}))) return {};
    RecordMap map;
    const auto go_on = [](std::uint32_t) { return !StopRequested(); };
    const Error error =
        MapRecords(file.Handle(), track_.window, *track_.container, MapDepth::Places, go_on, map);
    if (error.fault != Fault::None || map.index.Count() == 0) return {};
    const bool lost = map.index.Count() != map.Count(RecordState::Kept);
    return fmt::format("kelvotool rebuild{}: {}", lost ? " --salvage" : "",
                       Summary(map, track_.container->RecordCount));
}

std::optional<Problem> TrackReader::OpenContainer() {
    const CString name(std::string_view{track_.file});
    // A part of a file that is not called a film: a film that has not got its name yet.
    const bool is_part = !film_.is_film && track_.window.start > 0;
    const bool opened = is_part
                            ? container_.OpenForReadIn(name, track_.window)
                            : container_.OpenForRead(name, film_.is_film ? track_.Selector() : 'N');
    if (opened) return std::nullopt;
    const Error error = container_.LastError();
    const ContainerHeader& header = *track_.container;
    const std::uint64_t start = track_.window.start;
    if (!track_.window_is_whole &&
        CheckIndexFits(header, track_.window.Size()).fault == Fault::None) {
        return Make(ProblemCode::DirectoryDamaged, "the directory does not fit the file", {},
                    error.offset);
    }
    if (header.IndexOffset == 0) {
        return Make(ProblemCode::IndexMissing, "it has no index: it was never closed", {},
                    start + kIndexOffsetField);
    }
    switch (CheckIndexFits(header, track_.window.Size()).fault) {
    case Fault::BadValue:
        return Make(ProblemCode::IndexDamaged, "index inside the header", {},
                    start + kIndexOffsetField);
    case Fault::EndsEarly:
        return Make(ProblemCode::IndexDamaged, "index beyond the end", {},
                    start + kIndexOffsetField);
    default:
        break;
    }
    switch (error.fault) {
    case Fault::TooLarge:
        return Make(ProblemCode::HeaderDamaged,
                    "its records would be longer than what is stored can fill", {}, error.offset);
    case Fault::EndsEarly:
    case Fault::BadValue:
        return Make(ProblemCode::HeaderDamaged, "its header claims what cannot be", {},
                    error.offset);
    default:
        return Make(ProblemCode::InputUnreadable, std::string(FileFaultText(error.fault)), {},
                    error.offset, kNotDone);
    }
}

std::optional<Problem> TrackReader::OpenVorbis() {
    const CString name(std::string_view{track_.file});
    if (!vorbis_.OpenForRead(name, kAudioHeaderSize)) {
        const Error error = vorbis_.LastError();
        return Make(ProblemCode::HeaderDamaged, "its description contradicts itself", {},
                    track_.window.start + error.offset);
    }
    return std::nullopt;
}

std::uint32_t TrackReader::Count() const {
    return IsVorbis() ? static_cast<std::uint32_t>(vorbis_.FrameCount()) : container_.RecordCount();
}

bool TrackReader::HasMore() const {
    return incomplete_in_a_row_ < kMostMissingFrames;
}

bool TrackReader::ReadNext() {
    if (!IsVorbis()) return container_.ReadNextRecord();
    if (!vorbis_.ReadNextFrame()) return false;
    incomplete_in_a_row_ = vorbis_.LastFrameComplete() ? 0 : incomplete_in_a_row_ + 1;
    return true;
}

bool TrackReader::ReadByNumber(std::uint32_t record) {
    const auto number = static_cast<int>(record);
    if (IsVorbis()) return vorbis_.GoToFrame(number) && vorbis_.ReadNextFrame();
    return container_.ReadRecord(number);
}

ByteView TrackReader::Record() const {
    return IsVorbis() ? vorbis_.FrameBuffer() : container_.RecordBuffer();
}

ByteView TrackReader::Side() const {
    return IsVorbis() ? ByteView{} : container_.SideBuffer();
}

std::uint32_t TrackReader::StoredLength(std::uint32_t record) const {
    if (IsVorbis()) return 0;
    if (container_.LastError().fault == Fault::None) return container_.StoredLength(record);
    // Where something is wrong, the record itself knows better than the index.
    std::array<std::uint8_t, 4> bytes{};
    const std::int64_t count = platform::ReadFileAt(
        container_.Handle(), container_.RecordFileOffset(record), bytes.data(), bytes.size());
    return count == std::int64_t{bytes.size()} ? ByteReader{bytes}.ReadU32()
                                               : container_.StoredLength(record);
}

bool TrackReader::RecordIsDamaged() const {
    return IsVorbis() ? !vorbis_.LastFrameComplete() : container_.RecordIsDamaged();
}

std::optional<Problem> TrackReader::RecordProblem(std::uint32_t record) const {
    if (IsVorbis()) {
        if (vorbis_.LastFrameComplete()) return std::nullopt;
        return Make(ProblemCode::StreamDamaged, "the sound ends before this frame is full", record);
    }
    const Error& error = container_.LastError();
    if (error.fault == Fault::None && !container_.RecordIsDamaged()) return std::nullopt;
    const std::string what(error.fault == Fault::None ? "the record does not have its length"
                                                      : RecordFaultText(error.fault));
    return Make(ProblemCode::RecordDamaged, what, record, container_.RecordFileOffset(record),
                error.fault == Fault::Unreadable ? kNotDone : kDamaged);
}

} // namespace kelvo::tool
