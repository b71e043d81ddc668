#include "container/IndexRebuild.h"
#include "tools/kelvotool/Commands.h"
#include "tools/kelvotool/Console.h"
#include "tools/kelvotool/FileNames.h"
#include "tools/kelvotool/Reporter.h"
#include "tools/kelvotool/StopSignal.h"

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
        reporter.Report({.track = kind,
                         .what = fmt::format("only {} of {} records are there", track.records,
                                             track.header_records)});
    }
    return fmt::format("{}{}{} records\n", kind ? NameOf(*kind) : "", kind ? ": " : "",
                       track.changed ? fmt::format("a new index of {}", track.records)
                                     : fmt::format("the index is sound, {}", track.records));
}

} // namespace

int RunRebuild(const RebuildOptions& options) {
    SetTask("rebuild " + options.file);
    Reporter reporter(options.file);
    const auto name = InputName(options.file, reporter);
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
    const std::string file = Printable(options.file);
    StandardOutput output;
    for (const auto& [track, kind] :
         {std::pair{report.audio, TrackKind::Audio}, std::pair{report.video, TrackKind::Video}}) {
        const std::string text = Describe(track, kind_of(kind), reporter);
        if (!text.empty()) output.Write(fmt::format("{}: {}", file, text));
    }
    return output.Finish(reporter.Code());
}

} // namespace kelvo::tool
