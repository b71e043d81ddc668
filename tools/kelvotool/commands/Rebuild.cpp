#include "container/IndexRebuild.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/Reporter.h"
#include "tools/kelvotool/report/Results.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <string>
#include <string_view>
#include <utility>

namespace kelvo::tool {

namespace {

std::string FailureText(const Error& error) {
    switch (error.fault) {
    case Fault::EndsEarly:
    case Fault::BadValue:
        return "no record container can be made out in it";
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

/// What became of one track, in words; records that are gone are damage.
std::string Describe(const RebuiltTrack& track, std::optional<TrackKind> kind, Reporter& reporter) {
    if (!track.is_there || !track.is_container) return {};
    if (track.records < track.header_records) {
        reporter.Report({.code = ProblemCode::RecordMissing,
                         .track = kind,
                         .what = fmt::format("only {} of {} records are there", track.records,
                                             track.header_records)});
    }
    return fmt::format("{}{}{} records\n", kind ? NameOf(*kind) : "", kind ? ": " : "",
                       track.changed ? fmt::format("a new index of {}", track.records)
                                     : fmt::format("the index is sound, {}", track.records));
}

int RebuildFile(const std::string& file, Results& results) {
    SetTask("rebuild " + file);
    Reporter reporter(file);
    const auto name = InputName(file, reporter);
    if (!name) return reporter.Code();
    const Result<RebuildReport> result = RebuildIndex(CString(std::string_view{*name}));
    if (!result && StopRequested()) return reporter.Code();
    if (!result) {
        reporter.Report({.severity = kNotDone,
                         .what = FailureText(result.Why()),
                         .offset = result.Why().offset});
        return reporter.Code();
    }
    const RebuildReport& report = result.Value();
    const auto kind_of = [&report](TrackKind kind) {
        return report.is_film ? std::optional(kind) : std::nullopt;
    };
    std::string text;
    for (const auto& [track, kind] :
         {std::pair{report.audio, TrackKind::Audio}, std::pair{report.video, TrackKind::Video}}) {
        const std::string line = Describe(track, kind_of(kind), reporter);
        if (!line.empty()) text += fmt::format("{}: {}", Printable(file), line);
    }
    results.Add({}, text);
    return reporter.Code();
}

} // namespace

void AddRebuild(CommandLine& line) {
    CLI::App& command =
        line.AddCommand("rebuild", "Make the index of a film anew from its records", 0);
    const auto file = std::make_shared<std::string>();
    command.add_option("FILE", *file, "the file, which is replaced at the end")->required();
    line.WhenChosen(command, [file](const CommonOptions& common) {
        Results results(common, ResultCount::One);
        const int code = RebuildFile(*file, results);
        return results.Finish(code);
    });
}

} // namespace kelvo::tool
