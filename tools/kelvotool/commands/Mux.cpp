// Two track files to one film and back, byte for byte.

#include "framework/base/ChFile.h"
#include "framework/base/FilePaths.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/files/NewTracks.h"
#include "tools/kelvotool/film/Linking.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::tool {

namespace {

struct MuxOptions {
    std::string audio;
    std::string video;
    std::string output;
    bool link = false;
    int offset = 0;
};

Error CopyTrack(RewriteTarget& target, const TrackDescription& track) {
    ChFile file;
    if (!file.OpenReadOnly(CString(std::string_view{track.file}))) return {Fault::Unreadable, 0};
    return target.CopyWindow(file.Handle(), track.window);
}

/// A track file of one kind; nothing after it was reported that it is none.
std::optional<FilmDescription> DescribeTrack(const std::string& file, TrackKind kind,
                                             Reporter& reporter) {
    const auto name = InputName(file, reporter);
    if (!name) return std::nullopt;
    auto film = DescribeFilm(*name, reporter);
    if (!film) return std::nullopt;
    if (film->is_film || film->tracks.front().kind != kind) {
        reporter.NotDone(fmt::format("it is no {} track", NameOf(kind)), ProblemCode::NotPossible);
        return std::nullopt;
    }
    for (const Problem& problem : film->tracks.front().problems)
        reporter.Report(problem);
    return film;
}

int RunMux(const MuxOptions& options, const CommonOptions& common) {
    SetTask("mux " + options.output);
    Reporter audio_reporter(options.audio);
    Reporter video_reporter(options.video);
    Reporter output_reporter(options.output);
    const auto code = [&] {
        return std::max({audio_reporter.Code(), video_reporter.Code(), output_reporter.Code()});
    };
    const auto audio = DescribeTrack(options.audio, TrackKind::Audio, audio_reporter);
    const auto video = DescribeTrack(options.video, TrackKind::Video, video_reporter);
    if (!audio || !video) return code();
    const auto output = OutputName(options.output, video->name, common.force, output_reporter);
    if (!output) return code();
    if (!HasFilmName(*output)) {
        output_reporter.NotDone("a film's name must end in .kva", ProblemCode::NotPossible);
        return code();
    }
    const TrackDescription& sound = audio->tracks.front();
    const TrackDescription& picture = video->tracks.front();
    TrackReader reader(*video, picture);
    std::optional<SyncLink> link;
    if (options.link) {
        link = LinkFor(picture, sound, options.offset, video_reporter);
        if (!link) return code();
        if (auto problem = reader.Open()) {
            problem->severity = kNotDone;
            video_reporter.Report(*problem);
            return code();
        }
    }
    const auto write = [&](RewriteTarget& target) -> Error {
        AVDirectory directory;
        const auto size = [&target] { return static_cast<std::uint32_t>(target.Size()); };
        directory.audio.start = size();
        target.ReserveBehind(picture.window.Size());
        if (const Error error = CopyTrack(target, sound); error.fault != Fault::None) return error;
        target.ReserveBehind(0);
        directory.audio.end = directory.video.start = size();
        const Error error =
            link ? WriteLinked(target, reader, *link, video_reporter) : CopyTrack(target, picture);
        if (error.fault != Fault::None) return error;
        directory.video.end = size();
        return target.PutDirectory(directory);
    };
    NewTrackFile film(output_reporter, video_reporter);
    if (film.Write(*output, RewriteTarget::Kind::Film, write)) film.Place(common.force);
    return code();
}

struct DemuxOptions {
    std::string film;
    std::string folder;
};

std::string TitleOf(const std::string& name) {
    return std::string(PathTitle(CString(std::string_view{name})).View());
}

std::string FolderOf(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    return slash == std::string::npos ? std::string{} : name.substr(0, slash);
}

struct NewPart {
    const TrackDescription* track;
    std::string given; ///< as the person reads it
    std::string name;
};

/// One after the other, since their temporaries have one name; when one fails, the new ones before
/// it go again.
int WriteParts(const std::vector<NewPart>& parts, bool force, Reporter& source) {
    std::vector<std::string> placed;
    for (const NewPart& part : parts) {
        Reporter reporter(part.given);
        const bool was_there = ::access(part.name.c_str(), F_OK) == 0;
        NewTrackFile file(reporter, source);
        const auto write = [&part](RewriteTarget& target) {
            return CopyTrack(target, *part.track);
        };
        if (!file.Write(part.name, RewriteTarget::Kind::Track, write) || !file.Place(force)) {
            for (const std::string& name : placed)
                ::unlink(name.c_str());
            return std::max(reporter.Code(), source.Code());
        }
        if (!was_there) placed.push_back(part.name);
    }
    return kAllWell;
}

int RunDemux(const DemuxOptions& options, const CommonOptions& common) {
    SetTask("demux " + options.film);
    Reporter reporter(options.film);
    const auto name = InputName(options.film, reporter);
    if (!name) return reporter.Code();
    const auto film = DescribeFilm(*name, reporter);
    if (!film) return reporter.Code();
    if (!film->is_film) {
        reporter.NotDone("it is a track by itself already", ProblemCode::NotPossible);
        return reporter.Code();
    }
    for (const Problem& problem : film->problems)
        reporter.Report(problem);

    const std::string folder = options.folder.empty() ? FolderOf(*name) : options.folder;
    std::vector<NewPart> parts;
    for (const TrackDescription& track : film->tracks) {
        const char* const extension = track.kind == TrackKind::Audio ? ".kaf" : ".kvf";
        const std::string given = folder + "/" + TitleOf(*name) + extension;
        Reporter part_reporter(given);
        const auto output = OutputName(given, *name, common.force, part_reporter);
        if (!output) return part_reporter.Code();
        parts.push_back({&track, given, *output});
    }
    return std::max(WriteParts(parts, common.force, reporter), reporter.Code());
}

} // namespace

void AddMux(CommandLine& line) {
    CLI::App& command =
        line.AddCommand("mux", "Make a film of a sound and a picture, byte for byte", kUsesForce);
    const auto options = std::make_shared<MuxOptions>();
    command.add_option("AUDIO", options->audio, "the sound track (.kaf)")->required();
    command.add_option("VIDEO", options->video, "the picture track (.kvf)")->required();
    command.add_option("OUT", options->output, "the film (.kva)")->required();
    CLI::Option* const link = command.add_flag(
        "--link", options->link, "tie the picture to the sound, as the command link does");
    command
        .add_option("--offset", options->offset,
                    "whole images between picture and sound, for --link")
        ->type_name("IMAGES")
        ->needs(link);
    line.WhenChosen(command,
                    [options](const CommonOptions& common) { return RunMux(*options, common); });
}

void AddDemux(CommandLine& line) {
    CLI::App& command = line.AddCommand(
        "demux", "Part a film into its tracks, byte for byte: TITLE.kaf and TITLE.kvf", kUsesForce);
    const auto options = std::make_shared<DemuxOptions>();
    command.add_option("FILM", options->film, "the film (.kva)")->required();
    command.add_option("DIR", options->folder, "where to; the film's own folder if not given");
    line.WhenChosen(command,
                    [options](const CommonOptions& common) { return RunDemux(*options, common); });
}

} // namespace kelvo::tool
