#include "framework/base/ProgressDisplay.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/files/RawOutput.h"
#include "tools/kelvotool/film/FilmDescription.h"
#include "tools/kelvotool/film/Sha256.h"
#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace kelvo::tool {

namespace {

struct FramesOptions {
    std::string file;
    std::optional<TrackKind> track; ///< needed only where the file has two
    bool json = false;
    std::string raw; ///< file for the decoded bytes; empty for none
    bool force = false;
};

/// The list of records on standard output, one at a time, so that a long track needs no memory.
class RecordList {
public:
    enum class Style : std::uint8_t { None, Text, Json };

    explicit RecordList(Style style) : style_(style) {}

    void Begin(TrackKind kind) {
        if (style_ != Style::Json) return;
        output_.Write(fmt::format("{{\"schema\":1,\"track\":\"{}\",\"records\":[", NameOf(kind)));
    }
    void Add(std::uint32_t number, const TrackReader& reader) {
        if (style_ == Style::None) return;
        digest_.clear();
        AppendHex(digest_, sha256_.Of(reader.Record()));
        line_.clear();
        const bool corrupt = reader.RecordIsDamaged();
        const std::uint32_t stored = reader.StoredLength(number);
        if (style_ == Style::Json) {
            side_.clear();
            AppendHex(side_, reader.Side());
            fmt::format_to(std::back_inserter(line_),
                           "{}\n{{\"n\":{},\"sha256\":\"{}\",\"side\":\"{}\",\"stored\":{},"
                           "\"corrupt\":{}}}",
                           number == 0 ? "" : ",", number, digest_, side_, stored, corrupt);
        } else {
            fmt::format_to(std::back_inserter(line_), "{} {} {}{}\n", number, digest_, stored,
                           corrupt ? " corrupt" : "");
        }
        output_.Write(line_);
    }
    [[nodiscard]] int Finish(int exit_code) {
        if (style_ == Style::Json) output_.Write("\n]}\n");
        return output_.Finish(exit_code);
    }
    bool Failed() const { return output_.Failed(); }

private:
    Style style_;
    StandardOutput output_;
    Sha256 sha256_;
    std::string digest_; // these three serve every record
    std::string side_;
    std::string line_;
};

const TrackDescription* ChooseTrack(const FilmDescription& film, std::optional<TrackKind> wanted,
                                    Reporter& reporter) {
    if (!wanted) {
        if (film.tracks.size() == 1) return &film.tracks.front();
        reporter.NotDone("it has two tracks: choose one by --track audio or --track video");
        return nullptr;
    }
    const TrackDescription* const track = film.Find(*wanted);
    if (track != nullptr && track->form != TrackForm::Unknown) return track;
    const bool is_broken = track != nullptr && !track->problems.empty();
    reporter.NotDone(is_broken ? TextOf(track->problems.front())
                               : fmt::format("it has no {} track", NameOf(*wanted)));
    return nullptr;
}

void ReadAll(TrackReader& reader, RecordList& list, RawOutput* raw, Reporter& reporter) {
    const auto progress = ShowProgress({});
    const auto total = static_cast<std::int32_t>(std::min<std::uint32_t>(reader.Count(), INT_MAX));
    for (std::uint32_t n = 0; n < reader.Count(); ++n) {
        if (!progress->Update(static_cast<std::int32_t>(n), total) || list.Failed()) return;
        if (raw != nullptr && raw->Failed()) return;
        if (!reader.HasMore()) {
            reporter.Report(reader.Make(ProblemCode::RecordMissing,
                                        "the sound ended long before this frame", n));
            return;
        }
        if (!reader.ReadNext()) {
            if (StopRequested()) return;
            reporter.Report(reader.RecordProblem(n).value_or(reader.Make(
                ProblemCode::RecordDamaged, "the record cannot be read", n, {}, kNotDone)));
            return;
        }
        if (const auto problem = reader.RecordProblem(n)) reporter.Report(*problem);
        list.Add(n, reader);
        if (raw != nullptr) raw->Append(reader.Record());
    }
    if (reader.IsVorbis() && reader.Vorbis().StreamDamaged()) {
        reporter.Report(
            reader.Make(ProblemCode::StreamDamaged, "parts of its Ogg stream are lost or broken"));
    }
}

RecordList::Style StyleOf(const FramesOptions& options) {
    if (options.json) return RecordList::Style::Json;
    return options.raw.empty() ? RecordList::Style::Text : RecordList::Style::None;
}

int RunFrames(const FramesOptions& options) {
    SetTask("frames " + options.file);
    Reporter reporter(options.file);
    Reporter raw_reporter(options.raw);
    const auto name = InputName(options.file, reporter);
    if (!name) return reporter.Code();
    const auto film = DescribeFilm(*name, reporter);
    if (!film) return reporter.Code();
    const TrackDescription* const track = ChooseTrack(*film, options.track, reporter);
    if (track == nullptr) return reporter.Code();
    TrackReader reader(*film, *track);
    if (auto problem = reader.Open()) {
        problem->severity = kNotDone;
        reporter.Report(*problem);
        return reporter.Code();
    }
    for (const Problem& problem : track->problems)
        reporter.Report(problem);

    RawOutput raw;
    if (!options.raw.empty()) {
        const auto raw_name = OutputName(options.raw, *name, options.force, raw_reporter);
        if (!raw_name || !raw.Begin(*raw_name, options.force, raw_reporter)) {
            return raw_reporter.Code();
        }
    }
    RecordList list(StyleOf(options));
    list.Begin(track->kind);
    ReadAll(reader, list, options.raw.empty() ? nullptr : &raw, reporter);
    const int code = list.Finish(reporter.Code());
    if (!options.raw.empty() && !StopRequested() && code != kNotDone) raw.Finish(raw_reporter);
    return std::max(code, raw_reporter.Code());
}

} // namespace

void AddFrames(CommandLine& line) {
    static const std::map<std::string, TrackKind> kKinds{{"audio", TrackKind::Audio},
                                                         {"video", TrackKind::Video}};
    CLI::App& command = line.AddCommand(
        "frames", "Decode every record of a track: its hash, or its bytes", kUsesJson | kUsesForce);
    const auto options = std::make_shared<FramesOptions>();
    command.add_option("FILE", options->file, "a .kva, .kvf or .kaf file")->required();
    command
        .add_option_function<std::string>(
            "--track", [options](const std::string& name) { options->track = kKinds.at(name); },
            "audio or video; needed where the file has both")
        ->check(CLI::IsMember({"audio", "video"}).description(""))
        ->type_name("KIND");
    command.add_option("--raw", options->raw, "write the decoded bytes, one record after another")
        ->type_name("OUT");
    line.WhenChosen(command, [options](const CommonOptions& common) {
        options->json = common.format != ResultFormat::Text;
        options->force = common.force;
        return RunFrames(*options);
    });
}

} // namespace kelvo::tool
