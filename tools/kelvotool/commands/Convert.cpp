#include "container/RecordCopying.h"
#include "container/RewriteTarget.h"
#include "container/codec/CompressionTypes.h"
#include "framework/base/ChFile.h"
#include "framework/base/ProgressDisplay.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/files/NewTracks.h"
#include "tools/kelvotool/film/ConversionRules.h"
#include "tools/kelvotool/film/FilmDescription.h"
#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::tool {

namespace {

struct ConvertOptions {
    std::string input;
    std::string output;
    std::optional<int> type;       ///< of the picture, or of the only track
    std::optional<int> audio_type; ///< of the sound
    std::optional<std::uint32_t> key_interval;
    bool force = false;
};

/// What becomes of one track.
struct TrackPlan {
    const TrackDescription* track = nullptr;
    ContainerHeader header = {};              ///< of the new container
    std::unique_ptr<TrackReader> reader = {}; ///< null: the track is copied byte for byte
};

/// The request for one track; false after it was reported that it makes no sense.
struct TrackRequest {
    std::optional<int> type = {};
    std::optional<std::uint32_t> key_interval = {};
    bool IsEmpty() const { return !type && !key_interval; }
};

class Conversion {
public:
    Conversion(const FilmDescription& film, Reporter& reporter, Reporter& output_reporter)
        : film_(film), reporter_(reporter), output_reporter_(output_reporter) {}

    /// Everything that can be known before anything is written.
    bool Plan(const ConvertOptions& options) {
        for (const TrackDescription& track : film_.tracks) {
            if (!PlanTrack(track, RequestFor(track, options))) return false;
        }
        return true;
    }

    void Write(const std::string& output, bool force) {
        NewTrackFile file(output_reporter_, reporter_);
        const auto kind = film_.is_film ? RewriteTarget::Kind::Film : RewriteTarget::Kind::Track;
        const auto write = [this](RewriteTarget& target) { return WriteTracks(target); };
        if (file.Write(output, kind, write)) file.Place(force);
    }

private:
    TrackRequest RequestFor(const TrackDescription& track, const ConvertOptions& options) const {
        const bool is_audio = track.kind == TrackKind::Audio;
        TrackRequest request;
        if (!film_.is_film) {
            request.type = options.type ? options.type : options.audio_type;
            request.key_interval = options.key_interval;
        } else if (is_audio) {
            request.type = options.audio_type;
        } else {
            request = {options.type, options.key_interval};
        }
        return request;
    }

    bool Refuse(const TrackDescription& track, std::string what) {
        Problem problem{
            .severity = kNotDone, .code = ProblemCode::NotPossible, .what = std::move(what)};
        if (film_.is_film) problem.track = track.kind;
        reporter_.Report(problem);
        return false;
    }

    bool PlanTrack(const TrackDescription& track, const TrackRequest& request) {
        if (!track.window_is_whole) return Refuse(track, "the file ends before it does");
        TrackPlan plan{.track = &track};
        if (!request.IsEmpty()) {
            if (!track.problems.empty()) return Refuse(track, track.problems.front().what);
            if (track.vorbis && !request.type) {
                return Refuse(track, "it has no key records: --key-interval needs a --type");
            }
            plan.header = SourceHeader(track);
            if (request.type)
                plan.header.CompressionType = static_cast<std::uint32_t>(*request.type);
            if (request.key_interval) plan.header.KeyInterval = *request.key_interval;
            const auto reason =
                WhyNotConvertible(track, static_cast<int>(plan.header.CompressionType));
            if (reason) return Refuse(track, *reason);
            if (!SettleKeyInterval(plan.header, request.key_interval)) {
                return Refuse(track, "this type has no key record but the first: "
                                     "--key-interval must not be below the number of records");
            }
            plan.reader = std::make_unique<TrackReader>(film_, track);
            if (auto problem = plan.reader->Open()) {
                problem->severity = kNotDone;
                reporter_.Report(*problem);
                return false;
            }
        }
        plans_.push_back(std::move(plan));
        return true;
    }

    Error WriteTracks(RewriteTarget& target) {
        AVDirectory directory;
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            const TrackPlan& plan = plans_[i];
            const auto start = static_cast<std::uint32_t>(target.Size());
            const bool copied_behind = i + 1 < plans_.size() && !plans_[i + 1].reader;
            target.ReserveBehind(copied_behind ? plans_[i + 1].track->window.Size() : 0);
            const Error error = plan.reader ? WriteTrack(target, plan) : CopyTrack(target, plan);
            if (error.fault != Fault::None) return error;
            auto& window = plan.track->kind == TrackKind::Audio ? directory.audio : directory.video;
            window = {start, static_cast<std::uint32_t>(target.Size())};
        }
        return film_.is_film ? target.PutDirectory(directory) : Error{};
    }

    Error CopyTrack(RewriteTarget& target, const TrackPlan& plan) const {
        ChFile file;
        if (!file.OpenReadOnly(CString(std::string_view{film_.name}))) {
            return {Fault::Unreadable, 0};
        }
        return target.CopyWindow(file.Handle(), plan.track->window);
    }

    Error WriteTrack(RewriteTarget& target, const TrackPlan& plan) {
        Error error = target.BeginContainer(plan.header, plan.track->user_header);
        if (error.fault == Fault::None) {
            error = plan.reader->IsVorbis()    ? WriteDecodedSound(target, *plan.reader)
                    : KeepsStoredRecords(plan) ? CopyStored(target, *plan.reader)
                                               : WriteRecords(target, plan);
        }
        return error.fault == Fault::None ? target.EndContainer() : error;
    }

    /// A lossy type would lose again what it lost already.
    static bool KeepsStoredRecords(const TrackPlan& plan) {
        const bool same_type =
            plan.header.CompressionType == plan.track->container->CompressionType;
        const auto* const type =
            codec::FindCompressionType(static_cast<int>(plan.header.CompressionType));
        return same_type && type != nullptr && !type->lossless;
    }

    Error WriteRecords(RewriteTarget& target, const TrackPlan& plan) {
        TrackReader& reader = *plan.reader;
        const auto progress = ShowProgress({});
        const auto total = TotalOf(reader);
        const auto step = [&](std::uint32_t n) {
            if (const auto problem = reader.RecordProblem(n)) reporter_.Report(*problem);
            return progress->Update(static_cast<std::int32_t>(n), total);
        };
        return CopyRecords(reader.Container(), target, plan.header.CompressionType,
                           DamagedRecords::KeepWhatReads, step);
    }

    Error CopyStored(RewriteTarget& target, TrackReader& reader) {
        const auto progress = ShowProgress({});
        ZFilekel& source = reader.Container();
        for (std::uint32_t n = 0; n < source.RecordCount(); ++n) {
            std::uint32_t length = 0;
            const auto* const stored = source.ReadRawRecord(static_cast<int>(n), length);
            if (stored == nullptr) return source.LastError();
            if (const auto problem = reader.RecordProblem(n)) reporter_.Report(*problem);
            const Error error = target.AppendStored({stored, length}, source.SideBuffer());
            if (error.fault != Fault::None) return error;
            if (!progress->Update(static_cast<std::int32_t>(n), TotalOf(reader))) {
                return {Fault::Stopped, 0};
            }
        }
        return {};
    }

    Error WriteDecodedSound(RewriteTarget& target, TrackReader& reader) {
        const auto progress = ShowProgress({});
        const std::vector<std::uint8_t> side(kAudioSideLength);
        for (std::uint32_t n = 0; n < reader.Count(); ++n) {
            if (!reader.HasMore()) return {Fault::EndsEarly, 0};
            if (!reader.ReadNext()) return {Fault::Unreadable, 0};
            if (const auto problem = reader.RecordProblem(n)) reporter_.Report(*problem);
            const Error error = target.AppendRecord(reader.Record(), side);
            if (error.fault != Fault::None) return error;
            if (!progress->Update(static_cast<std::int32_t>(n), TotalOf(reader))) {
                return {Fault::Stopped, 0};
            }
        }
        if (reader.Vorbis().StreamDamaged()) {
            reporter_.Report(reader.Make(ProblemCode::StreamDamaged,
                                         "parts of its Ogg stream are lost or broken"));
        }
        return {};
    }

    static std::int32_t TotalOf(const TrackReader& reader) {
        return static_cast<std::int32_t>(std::min<std::uint32_t>(reader.Count(), INT_MAX));
    }

    const FilmDescription& film_;
    Reporter& reporter_;
    Reporter& output_reporter_;
    std::vector<TrackPlan> plans_; ///< in the order of the tracks in the file
};

/// Whether the options fit the kind of file; the reason was reported when not.
bool CheckOptions(const FilmDescription& film, const ConvertOptions& options, Reporter& reporter) {
    const bool only_audio = !film.is_film && film.tracks.front().kind == TrackKind::Audio;
    if (film.is_film) {
        const bool wants_video = options.type || options.key_interval;
        if (wants_video && film.Find(TrackKind::Video) == nullptr) {
            reporter.NotDone("it has no picture: --audio-type is the sound's type");
            return false;
        }
        if (options.audio_type && film.Find(TrackKind::Audio) == nullptr) {
            reporter.NotDone("it has no sound for --audio-type");
            return false;
        }
        return true;
    }
    if (options.audio_type && !only_audio) {
        reporter.NotDone("it has no sound for --audio-type");
        return false;
    }
    if (options.audio_type && options.type && options.audio_type != options.type) {
        reporter.NotDone("its only track cannot get both --type and --audio-type");
        return false;
    }
    return true;
}

int RunConvert(const ConvertOptions& options) {
    SetTask("convert " + options.input);
    Reporter reporter(options.input);
    Reporter output_reporter(options.output);
    const auto code = [&] { return std::max(reporter.Code(), output_reporter.Code()); };
    const auto input = InputName(options.input, reporter);
    if (!input) return code();
    const auto output = OutputName(options.output, *input, options.force, output_reporter);
    if (!output) return code();
    const auto film = DescribeFilm(*input, reporter);
    if (!film) return code();
    if (film->is_film != HasFilmName(*output)) {
        output_reporter.NotDone(film->is_film ? "a film's name must end in .kva"
                                              : "only a film's name may end in .kva");
        return code();
    }
    if (!CheckOptions(*film, options, reporter)) return code();
    for (const Problem& problem : film->problems)
        reporter.Report(problem);
    Conversion conversion(*film, reporter, output_reporter);
    if (conversion.Plan(options) && !StopRequested()) conversion.Write(*output, options.force);
    return code();
}

} // namespace

void AddConvert(CommandLine& line) {
    CLI::App& command =
        line.AddCommand("convert", "Write the same film or track in another type", kUsesForce);
    const auto options = std::make_shared<ConvertOptions>();
    command.add_option("IN", options->input, "a .kva, .kvf or .kaf file")->required();
    command.add_option("OUT", options->output, "the new file")->required();
    command.add_option("--type", options->type, "of the picture, or of the only track")
        ->type_name("N");
    command.add_option("--audio-type", options->audio_type, "of the sound")->type_name("N");
    command
        .add_option("--key-interval", options->key_interval,
                    "records from key record to key record, for types 7 and 8")
        ->type_name("K")
        ->check(CLI::Range(std::uint32_t{1}, std::numeric_limits<std::uint32_t>::max()));
    line.CheckWhenChosen(command, [options] {
        if (!options->type && !options->audio_type && !options->key_interval) {
            throw CLI::RequiredError("--type");
        }
    });
    line.WhenChosen(command, [options](const CommonOptions& common) {
        options->force = common.force;
        return RunConvert(*options);
    });
}

} // namespace kelvo::tool
