#include "container/IndexRebuild.h"

#include "container/ContainerHeader.h"
#include "container/RewriteTarget.h"
#include "container/SalvageWriting.h"
#include "container/UndoFile.h"
#include "framework/base/ChFile.h"
#include "framework/base/ProgressDisplay.h"
#include "platform/base/durable_files.h"
#include "platform/base/file_names.h"
#include "platform/base/files.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr char kTitle[] = "Ricostruzione indici...";
constexpr std::uint32_t kCopyPiece = std::uint32_t{4} * 1024 * 1024;

/// One track on its way from the old file into the new one.
struct Part {
    TrackWindow window;  ///< as far as the file goes
    bool is_cut = false; ///< the directory promises more
    bool is_container = false;
    bool changed = false;
    ContainerHeader header{};
    std::vector<std::uint8_t> user_header = {};
    RecordMap map = {};
};

MapProgress Shown(const std::shared_ptr<ProgressDisplay>& display, const TrackWindow& window) {
    const auto total = static_cast<std::int32_t>(window.Size());
    return [display, total](std::uint32_t position) {
        return display->Update(static_cast<std::int32_t>(position), total);
    };
}

Error ReadUserHeader(HFILE file, Part& part) {
    part.user_header.resize(part.header.UserHeaderSize); // inside the file, as was checked
    const std::uint64_t place = part.window.start + std::uint64_t{kContainerHeaderBytes};
    const std::int64_t count =
        platform::ReadFileAt(file, place, part.user_header.data(), part.user_header.size());
    if (count == static_cast<std::int64_t>(part.user_header.size())) return {};
    return {Fault::Unreadable, place};
}

Error ReadPart(HFILE file, RebuildAim aim, Part& part) {
    std::array<std::uint8_t, kContainerHeaderBytes> bytes{};
    const std::size_t wanted = std::min<std::size_t>(part.window.Size(), bytes.size());
    if (platform::ReadFileAt(file, part.window.start, bytes.data(), wanted) !=
        static_cast<std::int64_t>(wanted)) {
        return {Fault::Unreadable, part.window.start};
    }
    const Result<ContainerHeader> header = ParseContainerHeader(ByteView{bytes}.first(wanted));
    if (!header) return {};
    part.header = header.Value();
    // A header may have lost all the records that it counts.
    ContainerHeader bare = part.header;
    bare.RecordCount = 0;
    part.is_container = CheckHeaderFits(bare, part.window.Size()).fault == Fault::None;
    if (!part.is_container) return {};
    if (const Error error = ReadUserHeader(file, part); error.fault != Fault::None) return error;
    const MapDepth depth = aim == RebuildAim::Index ? MapDepth::Places : MapDepth::Content;
    const std::shared_ptr<ProgressDisplay> display = ShowProgress(kTitle);
    const Error error =
        MapRecords(file, part.window, part.header, depth, Shown(display, part.window), part.map);
    // Where the index alone knows how long a damaged record is, it is as good as it can be.
    part.changed = part.is_cut || part.map.old_index != OldIndex::Sound;
    if (aim != RebuildAim::Index) part.changed = part.changed || part.map.IsDamaged();
    return error;
}

/// A long file can be stopped between two pieces.
Error CopyInPieces(RewriteTarget& target, HFILE file, const TrackWindow& window) {
    const auto progress = ShowProgress(kTitle);
    const auto total = static_cast<std::int32_t>(window.Size());
    for (std::uint32_t start = window.start; start < window.end;) {
        if (!progress->Update(static_cast<std::int32_t>(start - window.start), total)) {
            return {Fault::Stopped, start};
        }
        const std::uint32_t end = start + std::min(window.end - start, kCopyPiece);
        if (const Error error = target.CopyWindow(file, {start, end}); error.fault != Fault::None) {
            return error;
        }
        start = end;
    }
    return {};
}

Error WritePart(RewriteTarget& target, HFILE file, const RebuildOptions& options,
                const Part& part) {
    if (!part.changed) return CopyInPieces(target, file, part.window);
    if (options.aim == RebuildAim::Salvage) {
        const std::shared_ptr<ProgressDisplay> display = ShowProgress(kTitle);
        const auto silence = options.silence ? options.silence(part.header, part.user_header)
                                             : std::optional<std::uint8_t>{};
        return WriteSalvaged(target, file, part.window, part.header, part.user_header, part.map,
                             silence, Shown(display, part.window));
    }
    ContainerHeader header = part.header;
    header.RecordCount = part.map.index.Count();
    header.IndexOffset = part.map.index.End();
    header.HeaderMark = 1;
    const std::uint32_t start = part.window.start;
    const auto header_bytes = static_cast<std::uint32_t>(kContainerHeaderBytes);
    Error error = target.AppendBytes(HeaderBytes(header));
    if (error.fault == Fault::None) {
        error = CopyInPieces(target, file, {start + header_bytes, start + part.map.index.End()});
    }
    return error.fault == Fault::None ? target.AppendIndex(part.map.index) : error;
}

RebuiltTrack ReportOf(std::optional<Part>& part) {
    if (!part) return {};
    RebuiltTrack track{.is_there = true,
                       .is_container = part->is_container,
                       .is_cut = part->is_cut,
                       .changed = part->changed,
                       .start = part->window.start};
    if (!part->is_container) return track;
    track.header_records = part->header.RecordCount;
    track.records = part->map.index.Count();
    track.map = std::move(part->map);
    return track;
}

/// The tracks of a film; the last one may end where the file does, whatever the directory says.
Error FindParts(ChFile& file, const RebuildOptions& options, std::optional<Part>& audio,
                std::optional<Part>& video, bool is_film) {
    const std::int64_t length = file.FileLength();
    if (length < 0) return {Fault::Unreadable, 0};
    const auto size = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(static_cast<std::uint64_t>(length), kLargestContainer));
    if (!is_film) {
        audio = Part{.window = {0, size}};
        return {};
    }
    std::array<std::uint8_t, AVDirectory::kBytes> bytes{};
    if (!file.ReadAll(bytes)) return {Fault::EndsEarly, 0};
    const AVDirectory directory = options.directory.value_or(ParseAVDirectory(bytes).Value());
    const auto find = [size](TrackWindow window, std::optional<Part>& part) -> Error {
        if (window.Absent()) return {};
        const Error error = CheckTrackWindow({window.start, window.start}, size);
        if (error.fault != Fault::None) return error;
        if (window.end < window.start) return {Fault::BadValue, 0};
        part =
            Part{.window = {window.start, std::min(window.end, size)}, .is_cut = window.end > size};
        return {};
    };
    const Error error = find(directory.audio, audio);
    return error.fault != Fault::None ? error : find(directory.video, video);
}

bool Place(RewriteTarget& target, const RebuildOptions& options) {
    if (options.before_placing && !options.before_placing()) return false;
    const bool replace = options.output.empty() || options.replace_output;
    return replace ? target.PutInPlace() : target.PutWhereNothingIs();
}

Error WriteFile(ChFile& file, const std::string& name, const RebuildOptions& options, bool is_film,
                const std::optional<Part>& audio, const std::optional<Part>& video) {
    RewriteTarget target;
    Error error = target.Begin(options.output.empty() ? name : options.output,
                               is_film ? RewriteTarget::Kind::Film : RewriteTarget::Kind::Track);
    if (error.fault == Fault::None && !platform::NameMeans(name, file.Handle())) {
        error = {Fault::Busy, 0}; // another program has replaced the file
    }
    AVDirectory directory;
    const auto write = [&](const std::optional<Part>& part, TrackWindow& window) {
        if (!part || error.fault != Fault::None) return;
        const auto start = static_cast<std::uint32_t>(target.Size());
        error = WritePart(target, file.Handle(), options, *part);
        window = {start, static_cast<std::uint32_t>(target.Size())};
    };
    write(audio, directory.audio);
    write(video, directory.video);
    if (is_film && error.fault == Fault::None) error = target.PutDirectory(directory);
    if (error.fault == Fault::None) error = target.Finish();
    if (error.fault != Fault::None) return error;
    if (Place(target, options)) return {};
    target.Discard();
    return {Fault::Unwritable, 0};
}

bool NeedsWriting(const std::optional<Part>& part) {
    return part && (part->changed || part->is_cut);
}

} // namespace

Result<RebuildReport> RebuildIndex(const CString& name, const RebuildOptions& options) {
    const std::optional<std::string> found =
        platform::ExistingFileName(ResolvePath(nullptr, name, nullptr).View());
    if (!found) return Error{Fault::Missing, 0};
    const std::string system_name = platform::WithoutLinks(*found);
    if (const Error error = UndoFile::Recover(system_name); error.fault != Fault::None)
        return error;
    ChFile file;
    if (!file.OpenReadOnly(name)) return Error{Fault::Unreadable, 0};
    if (!platform::TryLock(file.Handle())) return Error{Fault::Busy, 0};

    const bool is_film = IsFilmName(*found);
    std::optional<Part> audio;
    std::optional<Part> video;
    Error error = FindParts(file, options, audio, video, is_film);
    for (std::optional<Part>* part : {&audio, &video}) {
        if (*part && error.fault == Fault::None)
            error = ReadPart(file.Handle(), options.aim, **part);
    }
    if (error.fault != Fault::None) return error;
    const bool any_container = (audio && audio->is_container) || (video && video->is_container);
    if (!any_container && !options.directory) return Error{Fault::BadValue, 0};
    const bool needed = NeedsWriting(audio) || NeedsWriting(video) ||
                        options.directory.has_value() || !options.output.empty();
    const bool write = needed && options.aim != RebuildAim::Report;
    if (write) error = WriteFile(file, system_name, options, is_film, audio, video);
    if (error.fault != Fault::None) return error;
    return RebuildReport{.is_film = is_film,
                         .written = write,
                         .directory_found = options.directory.has_value(),
                         .audio = ReportOf(audio),
                         .video = ReportOf(video)};
}

} // namespace kelvo
