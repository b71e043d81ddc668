#include "tools/kelvotool/commands/SpliceResult.h"

#include "tools/kelvotool/files/NewTracks.h"
#include "tools/kelvotool/report/Results.h"

#include <fmt/format.h>

#include <algorithm>

namespace kelvo::tool {

std::unique_ptr<PieceSource> OpenPieces(const FilmDescription& film, const TrackDescription& track,
                                        Reporter& reporter) {
    const auto refuse = [&](Problem problem) {
        problem.severity = kNotDone;
        reporter.Report(problem);
        return nullptr;
    };
    if (!track.window_is_whole) {
        return refuse({.code = ProblemCode::DirectoryDamaged,
                       .track = track.kind,
                       .what = "the file ends before it does"});
    }
    if (!track.problems.empty()) return refuse(track.problems.front());
    auto source = std::make_unique<PieceSource>(film, track);
    if (const auto problem = source->Open()) return refuse(*problem);
    return source;
}

int WriteSpliced(const FilmSplice& splice, const std::string& input, const std::string& output,
                 const std::string& name, const CommonOptions& common, Reporter& reporter,
                 Reporter& output_reporter) {
    SpliceCounts counts;
    const auto write = [&](RewriteTarget& target) {
        return WriteSplice(splice, target, reporter, counts);
    };
    const auto code = [&] { return std::max(reporter.Code(), output_reporter.Code()); };
    NewTrackFile file(output_reporter, reporter);
    const auto kind = splice.is_film ? RewriteTarget::Kind::Film : RewriteTarget::Kind::Track;
    if (!file.Write(name, kind, write) || !file.Place(common.force)) return code();
    Json json = ResultFor(input);
    PutName(json, "output_file", output);
    json["images"] = counts.images;
    json["images_coded_anew"] = counts.images_coded;
    json["audio_frames"] = counts.audio_frames;
    json["audio_frames_coded_anew"] = counts.audio_frames_coded;
    json["problem_count"] = reporter.Count() + output_reporter.Count();
    json["problems"] = JsonOf(reporter.Problems());
    for (const Problem& problem : output_reporter.Problems())
        json["problems"].push_back(JsonOf(problem));
    const std::string text = fmt::format(
        "{}: {} images, {} of them coded anew; {} audio frames, {} of them coded anew\n",
        Printable(output), counts.images, counts.images_coded, counts.audio_frames,
        counts.audio_frames_coded);
    Results results(common, ResultCount::One);
    results.Add(json, text);
    return results.Finish(code());
}

} // namespace kelvo::tool
