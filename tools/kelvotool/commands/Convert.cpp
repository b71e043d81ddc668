#include "container/RewriteTarget.h"
#include "container/codec/CompressionTypes.h"
#include "framework/base/ChFile.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/files/FileTimes.h"
#include "tools/kelvotool/files/NewTracks.h"
#include "tools/kelvotool/film/BestType.h"
#include "tools/kelvotool/film/ConversionRules.h"
#include "tools/kelvotool/film/FilmDescription.h"
#include "tools/kelvotool/film/TrackConversion.h"
#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/Results.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::tool {

namespace {

constexpr char kBest[] = "best";

/// A number, or the best one that loses nothing.
struct TypeWish {
    std::optional<int> number = {}; ///< none: the best
    friend bool operator==(const TypeWish&, const TypeWish&) = default;
};

struct ConvertOptions {
    std::string input;
    std::string output;
    std::optional<TypeWish> type;       ///< of the picture, or of the only track
    std::optional<TypeWish> audio_type; ///< of the sound
    std::optional<std::uint32_t> key_interval;
    bool keep_time = false;
};

/// What becomes of one track.
struct TrackPlan {
    const TrackDescription* track = nullptr;
    std::unique_ptr<TrackReader> reader = {}; ///< null: the track is copied byte for byte
    std::unique_ptr<TrackConversion> conversion = {};
    std::optional<BestType> best = {}; ///< when that was asked for
};

/// The request for one track.
struct TrackRequest {
    std::optional<TypeWish> type = {};
    std::optional<std::uint32_t> key_interval = {};
    bool IsEmpty() const { return !type && !key_interval; }
};

class Conversion {
public:
    Conversion(const FilmDescription& film, unsigned jobs, Reporter& reporter,
               Reporter& output_reporter)
        : film_(film), jobs_(jobs), reporter_(reporter), output_reporter_(output_reporter) {}

    /// Everything that can be known before anything is written.
    bool Plan(const ConvertOptions& options) {
        for (const TrackDescription& track : film_.tracks) {
            if (!PlanTrack(track, RequestFor(track, options))) return false;
        }
        return true;
    }

    /// @return whether the new film has its name
    bool Write(const std::string& output, bool force, bool keep_time) {
        NewTrackFile file(output_reporter_, reporter_);
        const auto kind = film_.is_film ? RewriteTarget::Kind::Film : RewriteTarget::Kind::Track;
        const auto write = [this](RewriteTarget& target) { return WriteTracks(target); };
        if (!file.Write(output, kind, write)) return false;
        if (!Prove(file)) {
            file.Discard();
            return false;
        }
        if (!file.Place(force)) return false;
        // What takes its name was changed until then.
        if (keep_time && !CopyFileTime(film_.name, output)) {
            output_reporter_.Warn("its time could not be set", ProblemCode::OutputUnwritable);
        }
        return true;
    }

    Json Result(const ConvertOptions& options) const {
        Json json = ResultFor(options.input);
        PutName(json, "output_file", options.output);
        json["tracks"] = Json::array();
        for (const TrackPlan& plan : plans_)
            json["tracks"].push_back(ResultOf(plan));
        json["problem_count"] = reporter_.Count() + output_reporter_.Count();
        json["problems"] = JsonOf(reporter_.Problems());
        for (const Problem& problem : output_reporter_.Problems())
            json["problems"].push_back(tool::JsonOf(problem));
        return json;
    }

    /// What was chosen, for a person.
    std::string Text(const ConvertOptions& options) const {
        std::string text;
        for (const TrackPlan& plan : plans_) {
            if (!plan.best) continue;
            const BestType& best = *plan.best;
            text += fmt::format("{}: type {} makes its {} smallest ({} of {} {})\n",
                                Printable(options.input), best.type,
                                plan.track->kind == TrackKind::Audio ? "sound" : "picture",
                                best.is_sample ? "tried on a sample," : "tried on all,",
                                best.records_tried, "records");
        }
        return text;
    }

private:
    static Json ResultOf(const TrackPlan& plan) {
        Json json;
        json["track"] = NameOf(plan.track->kind);
        json["coded"] = plan.conversion != nullptr;
        if (!plan.conversion) {
            json["bytes"] = plan.track->window.Size();
            return json;
        }
        json["type"] = plan.conversion->Header().CompressionType;
        json["key_interval"] = plan.conversion->Header().KeyInterval;
        json["bytes"] = plan.conversion->Size();
        json["source_bytes"] = plan.track->window.Size();
        json["records_proved"] = plan.conversion->ProvedRecords();
        if (plan.best) {
            json["records_tried"] = plan.best->records_tried;
            json["trials"] = Json::array();
            for (const TypeTrial& trial : plan.best->trials)
                json["trials"].push_back({{"type", trial.type}, {"bytes", trial.bytes}});
        }
        return json;
    }

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
        if (!request.IsEmpty() && !PlanCoding(plan, request)) return false;
        plans_.push_back(std::move(plan));
        return true;
    }

    bool PlanCoding(TrackPlan& plan, const TrackRequest& request) {
        const TrackDescription& track = *plan.track;
        if (!track.problems.empty()) return Refuse(track, track.problems.front().what);
        if (track.vorbis && !request.type) {
            return Refuse(track, "it has no key records: --key-interval needs a --type");
        }
        ContainerHeader header = SourceHeader(track);
        if (request.type && request.type->number) {
            header.CompressionType = static_cast<std::uint32_t>(*request.type->number);
        }
        if (request.key_interval) header.KeyInterval = *request.key_interval;
        const bool takes_best = request.type && !request.type->number;
        if (!takes_best && !CheckHeader(track, header, request)) return false;
        plan.reader = std::make_unique<TrackReader>(film_, track);
        if (auto problem = plan.reader->Open()) {
            problem->severity = kNotDone;
            reporter_.Report(*problem);
            return false;
        }
        if (takes_best && !(TakeBest(plan, header, request) && //
                            CheckHeader(track, header, request))) {
            return false;
        }
        plan.conversion = std::make_unique<TrackConversion>(*plan.reader, header, jobs_, reporter_);
        return true;
    }

    bool CheckHeader(const TrackDescription& track, ContainerHeader& header,
                     const TrackRequest& request) {
        const auto reason = WhyNotConvertible(track, static_cast<int>(header.CompressionType));
        if (reason) return Refuse(track, *reason);
        return SettleKeyInterval(header, request.key_interval) ||
               Refuse(track, "this type has no key record but the first: "
                             "--key-interval must not be below the number of records");
    }

    bool TakeBest(TrackPlan& plan, ContainerHeader& header, const TrackRequest& request) {
        auto best = FindBestType(*plan.reader, request.key_interval, jobs_);
        if (!best) {
            if (best.Why().fault == Fault::Stopped) return false;
            return Refuse(*plan.track, best.Why().fault == Fault::BadValue
                                           ? "there is no type for it that loses nothing"
                                           : std::string(FileFaultText(best.Why().fault)));
        }
        header.CompressionType = static_cast<std::uint32_t>(best.Value().type);
        plan.best = std::move(best.Value());
        return true;
    }

    bool Prove(NewTrackFile& file) {
        for (const TrackPlan& plan : plans_) {
            if (!plan.conversion) continue;
            const Error error = plan.conversion->Prove(file.TemporaryName());
            if (error.fault == Fault::None) continue;
            if (error.fault != Fault::Stopped) {
                Problem problem{.severity = kNotDone,
                                .code = ProblemCode::RecordDiffers,
                                .what = "what was written does not decode to what it should",
                                .record = static_cast<std::uint32_t>(error.offset)};
                if (film_.is_film) problem.track = plan.track->kind;
                output_reporter_.Report(problem);
            }
            return false;
        }
        return !StopRequested();
    }

    Error WriteTracks(RewriteTarget& target) {
        AVDirectory directory;
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            const TrackPlan& plan = plans_[i];
            const auto start = static_cast<std::uint32_t>(target.Size());
            const bool copied_behind = i + 1 < plans_.size() && !plans_[i + 1].conversion;
            target.ReserveBehind(copied_behind ? plans_[i + 1].track->window.Size() : 0);
            const Error error =
                plan.conversion ? plan.conversion->Write(target) : CopyTrack(target, plan);
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

    const FilmDescription& film_;
    unsigned jobs_;
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

int RunConvert(const ConvertOptions& options, const CommonOptions& common) {
    SetTask("convert " + options.input);
    Reporter reporter(options.input);
    Reporter output_reporter(options.output);
    const auto code = [&] { return std::max(reporter.Code(), output_reporter.Code()); };
    const auto input = InputName(options.input, reporter);
    if (!input) return code();
    const auto output = OutputName(options.output, *input, common.force, output_reporter);
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
    Conversion conversion(*film, common.Jobs(), reporter, output_reporter);
    if (!conversion.Plan(options) || StopRequested()) return code();
    if (!conversion.Write(*output, common.force, options.keep_time)) return code();
    Results results(common, ResultCount::One);
    results.Add(conversion.Result(options), conversion.Text(options));
    return results.Finish(code());
}

void AddTypeOption(CLI::App& command, const std::string& name, std::optional<TypeWish>& wish,
                   const std::string& description) {
    command
        .add_option_function<std::string>(
            name,
            [&wish, name](const std::string& value) {
                int number = 0;
                const bool is_number = CLI::detail::lexical_cast(value, number);
                if (!is_number && value != kBest) throw CLI::ConversionError(value, name);
                wish = is_number ? TypeWish{number} : TypeWish{};
            },
            description)
        ->type_name("N|best");
}

} // namespace

void AddConvert(CommandLine& line) {
    CLI::App& command =
        line.AddCommand("convert", "Write the same film or track in another type, and prove it",
                        kUsesForce | kUsesJson | kUsesJobs);
    const auto options = std::make_shared<ConvertOptions>();
    command.add_option("IN", options->input, "a .kva, .kvf or .kaf file")->required();
    command.add_option("OUT", options->output, "the new file")->required();
    AddTypeOption(command, "--type", options->type,
                  "of the picture, or of the only track; best: the one that loses nothing and "
                  "makes it smallest");
    AddTypeOption(command, "--audio-type", options->audio_type, "of the sound");
    command
        .add_option("--key-interval", options->key_interval,
                    "records from key record to key record, for types 7 and 8")
        ->type_name("K")
        ->check(CLI::Range(std::uint32_t{1}, std::numeric_limits<std::uint32_t>::max()));
    command.add_flag("--keep-time", options->keep_time,
                     "the new file keeps the time at which the old one was changed");
    line.CheckWhenChosen(command, [options] {
        if (!options->type && !options->audio_type && !options->key_interval) {
            throw CLI::RequiredError("--type");
        }
    });
    line.WhenChosen(
        command, [options](const CommonOptions& common) { return RunConvert(*options, common); });
}

} // namespace kelvo::tool
