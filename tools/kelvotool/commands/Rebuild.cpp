#include "container/IndexRebuild.h"
#include "media/FilmTracks.h"
#include "platform/base/durable_files.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/files/FileList.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/film/Salvage.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/Reporter.h"
#include "tools/kelvotool/report/Results.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace kelvo::tool {

namespace {

constexpr int kMostBackups = 1000;

struct RebuildChoices {
    bool backup = false;
    bool salvage = false;
    bool report = false;

    RebuildAim Aim() const {
        if (report) return RebuildAim::Report;
        return salvage ? RebuildAim::Salvage : RebuildAim::Index;
    }
};

std::string FailureText(const Error& error) {
    switch (error.fault) {
    case Fault::EndsEarly:
    case Fault::BadValue:
        return "no record container can be made out in it";
    case Fault::TooLarge:
        return "its records are longer than can be decoded in trust";
    case Fault::Missing:
        return "it holds no track";
    case Fault::Mismatch:
        return "a file of the temporary's name (.tmp) is in the way";
    case Fault::Busy:
        return "another program is using it, or its temporary (.tmp)";
    default:
        return std::string(FileFaultText(error.fault));
    }
}

/// The old file under another name, of which there was none: a second name of the same bytes, where
/// the file system knows such, and else a copy.
std::optional<std::string> KeepBackup(const std::string& name) {
    namespace fs = std::filesystem;
    const std::string file = platform::WithoutLinks(name);
    for (int i = 0; i < kMostBackups; ++i) {
        std::string backup = file + ".bak" + (i == 0 ? "" : std::to_string(i));
        std::error_code error;
        fs::create_hard_link(file, backup, error);
        if (!error) return backup;
        if (error == std::errc::file_exists) continue;
        if (fs::copy_file(file, backup, fs::copy_options::none, error)) return backup;
        if (error != std::errc::file_exists) return std::nullopt;
    }
    return std::nullopt;
}

/// One file on its way.
class Rebuilding {
public:
    Rebuilding(std::string file, const RebuildChoices& choices, const CommonOptions& common)
        : file_(std::move(file)), choices_(choices), common_(common), reporter_(file_),
          output_reporter_(common.output.empty() ? file_ : common.output) {}

    int Run(Results& results) {
        SetTask("rebuild " + file_);
        const auto name = InputName(file_, reporter_);
        const bool ready = name && FindOutput(*name) && FindDirectory(*name);
        if (ready) Rebuild(*name, results);
        const bool has_result = report_.has_value();
        if (!has_result && results.ListsFailures() && !StopRequested()) {
            Json json = ResultFor(file_);
            json["problems"] = JsonOf(reporter_.Problems());
            results.Add(json, "");
        }
        return std::max(reporter_.Code(), output_reporter_.Code());
    }

private:
    bool FindOutput(const std::string& name) {
        if (common_.output.empty()) return true;
        const auto output = OutputName(common_.output, name, common_.force, output_reporter_);
        if (!output) return false;
        if (HasFilmName(name) != HasFilmName(*output)) {
            output_reporter_.NotDone(HasFilmName(name) ? "a film's name must end in .kva"
                                                       : "only a film's name may end in .kva",
                                     ProblemCode::NotPossible);
            return false;
        }
        options_.output = *output;
        options_.replace_output = common_.force;
        return true;
    }

    /// Where the directory of a film lies, its tracks are looked for.
    bool FindDirectory(const std::string& name) {
        if (!HasFilmName(name)) return true;
        const Result<FoundTracks> found = FindFilmTracks(CString(std::string_view{name}));
        if (!found || !found.Value().lies) return true; // what is wrong then, the rebuild says
        options_.directory = found.Value().directory;
        const auto& [audio, video] = *options_.directory;
        std::string places;
        if (!audio.Absent()) places += fmt::format(", sound at {}", audio.start);
        if (!video.Absent()) places += fmt::format(", picture at {}", video.start);
        reporter_.Report({.severity = choices_.report ? kDamaged : kAllWell,
                          .code = ProblemCode::DirectoryDamaged,
                          .what = "the directory is wrong; found" + places.substr(1),
                          .offset = 0});
        for (const auto& [track, kind] :
             {std::pair{audio, TrackKind::Audio}, std::pair{video, TrackKind::Video}}) {
            if (!track.Absent()) continue;
            reporter_.Report({.code = ProblemCode::RecordMissing,
                              .track = kind,
                              .what = "no such track can be found in the file"});
        }
        return true;
    }

    void Rebuild(const std::string& name, Results& results) {
        options_.aim = choices_.Aim();
        options_.silence = SilenceFor;
        if (choices_.backup) {
            options_.before_placing = [this, name] {
                backup_ = KeepBackup(name);
                if (!backup_) {
                    reporter_.NotDone("no backup can be made beside it",
                                      ProblemCode::OutputUnwritable);
                }
                return backup_.has_value();
            };
        }
        const Result<RebuildReport> result =
            RebuildIndex(CString(std::string_view{name}), options_);
        if (!result && (StopRequested() || reporter_.Code() == kNotDone)) return;
        if (!result) {
            reporter_.Report({.severity = kNotDone,
                              .what = FailureText(result.Why()),
                              .offset = result.Why().offset});
            return;
        }
        report_ = result.Value();
        ReportTrack(report_->audio, KindOf(TrackKind::Audio), options_.aim, reporter_);
        ReportTrack(report_->video, KindOf(TrackKind::Video), options_.aim, reporter_);
        results.Add(ToJson(), ToText());
    }

    std::optional<TrackKind> KindOf(TrackKind kind) const {
        return report_->is_film ? std::optional(kind) : std::nullopt;
    }

    Json ToJson() const {
        Json json = ResultFor(file_);
        json["written"] = report_->written;
        if (!common_.output.empty()) PutName(json, "output_file", common_.output);
        if (backup_) PutName(json, "backup", *backup_);
        json["directory_found"] = report_->directory_found;
        const std::string only = report_->is_film ? "audio" : "track";
        if (report_->audio.is_there) json[only] = JsonOf(report_->audio);
        if (report_->video.is_there) json["video"] = JsonOf(report_->video);
        json["problems"] = JsonOf(reporter_.Problems());
        return json;
    }

    std::string ToText() const {
        std::string text = LineOf(report_->audio, KindOf(TrackKind::Audio)) +
                           LineOf(report_->video, KindOf(TrackKind::Video));
        if (backup_) text += fmt::format("{}: kept as {}\n", Printable(file_), Printable(*backup_));
        return text;
    }

    std::string LineOf(const RebuiltTrack& track, std::optional<TrackKind> kind) const {
        if (!track.is_there || !track.is_container) return {};
        const std::string head = fmt::format(
            "{}: {}", Printable(file_), kind ? std::string(NameOf(*kind)) + ": " : std::string());
        const RecordMap& map = track.map;
        if (options_.aim == RebuildAim::Report) {
            std::string text;
            for (const RecordRun& run : RunsOf(track)) {
                const auto reason = TextOf(run.verdict.reason);
                text += fmt::format("{}records {} to {} {}{}{}\n", head, run.first, run.last,
                                    NameOf(run.verdict.state), reason.empty() ? "" : ": ", reason);
            }
            if (map.missing_at_end > 0) {
                text += fmt::format("{}records {} to {} lost: the track ends before them\n", head,
                                    track.records, track.records + map.missing_at_end - 1);
            }
            return text + head + Summary(map, track.header_records) + "\n";
        }
        if (options_.aim == RebuildAim::Salvage) {
            return fmt::format("{}{} records: {} kept, {} doubtful, {} lost\n", head, track.records,
                               map.Count(RecordState::Kept), map.Count(RecordState::Doubtful),
                               map.Count(RecordState::Lost));
        }
        if (track.changed) return fmt::format("{}a new index of {} records\n", head, track.records);
        const bool damaged = map.IsDamaged();
        return fmt::format("{}{}, {} records\n", head,
                           damaged ? "the index stays, around damaged records"
                                   : "the index is sound",
                           track.records);
    }

    std::string file_;
    RebuildChoices choices_;
    const CommonOptions& common_;
    Reporter reporter_;
    Reporter output_reporter_;
    RebuildOptions options_;
    std::optional<RebuildReport> report_;
    std::optional<std::string> backup_;
};

/// What cannot be asked for together; empty when all is well.
std::string_view Contradiction(const RebuildChoices& choices, const CommonOptions& common,
                               std::size_t files) {
    if (!common.output.empty() && files != 1) return "-o is for one file";
    if (!common.output.empty() && choices.backup)
        return "with -o the file itself stays: no --backup";
    const bool writes = choices.backup || choices.salvage || !common.output.empty();
    if (choices.report && writes) return "--report writes nothing";
    return {};
}

int RunRebuild(const std::vector<std::string>& names, const RebuildChoices& choices,
               const CommonOptions& common) {
    const FilmList list = ListFilms(names, common);
    std::vector<std::string> files;
    for (const FilmName& film : list.films) {
        files.push_back(film.name);
        if (!film.sound.empty()) files.push_back(film.sound);
    }
    if (const auto why = Contradiction(choices, common, files.size()); !why.empty()) {
        SayError(fmt::format("rebuild: {}", why));
        return kNotDone;
    }
    Results results(common, list.is_several ? ResultCount::Several : ResultCount::One);
    int code = list.code;
    for (const std::string& file : files) {
        if (StopRequested() || results.Failed()) break;
        code = std::max(code, Rebuilding(file, choices, common).Run(results));
    }
    return results.Finish(code);
}

} // namespace

void AddRebuild(CommandLine& line) {
    CLI::App& command =
        line.AddCommand("rebuild", "Mend films: a new index, and what can be saved of records",
                        kUsesJson | kUsesForce | kUsesOutput);
    const auto files = line.AddFiles(command);
    const auto choices = std::make_shared<RebuildChoices>();
    command.add_flag("--backup", choices->backup,
                     "keep the old file beside it (.bak, never over another)");
    command.add_flag("--salvage", choices->salvage,
                     "decode everything and write sound records only: damaged ones as far as they "
                     "go, for a lost image the one before, for lost sound silence");
    command.add_flag("--report", choices->report,
                     "write nothing; tell which records are kept, doubtful and lost, and why");
    line.WhenChosen(command, [files, choices](const CommonOptions& common) {
        return RunRebuild(*files, *choices, common);
    });
}

} // namespace kelvo::tool
