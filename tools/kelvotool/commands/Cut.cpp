// Parts of a film as a film of their own.

#include "media/AudioHeader.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/commands/SpliceResult.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/film/ConversionRules.h"
#include "tools/kelvotool/film/Ranges.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::tool {

namespace {

struct CutOptions {
    std::string film;
    std::string output;
    std::string ranges;
};

/// Audio frames [first, end).
struct Frames {
    std::int64_t first = 0;
    std::int64_t end = 0;
};

class Cut {
public:
    Cut(const FilmDescription& film, Reporter& reporter) : film_(film), reporter_(reporter) {}

    /// What becomes of the ranges; nothing after it was reported that it makes no film.
    std::optional<FilmSplice> Plan(const std::vector<Range>& ranges) {
        if (!OpenTracks()) return std::nullopt;
        splice_.is_film = film_.is_film;
        if (video_) {
            PlanPicture(SpansOf(ranges, {.count = video_->RecordCount(),
                                         .per_second = images_per_second_,
                                         .images_per_second = images_per_second_}));
        } else {
            PlanSound(SpansOf(ranges, {.count = audio_->RecordCount(),
                                       .per_second = audio_per_second_,
                                       .images_per_second = audio_per_second_}));
        }
        const bool any = splice_.picture ? !splice_.picture->pieces.empty()
                                         : splice_.sound && !splice_.sound->pieces.empty();
        if (!any) {
            reporter_.NotDone("nothing of it lies in the range", ProblemCode::NotPossible);
            return std::nullopt;
        }
        Settle();
        return std::move(splice_);
    }

private:
    bool OpenTracks() {
        video_ = film_.Find(TrackKind::Video);
        audio_ = film_.Find(TrackKind::Audio);
        if (video_ != nullptr) {
            picture_source_ = OpenPieces(film_, *video_, reporter_);
            if (!picture_source_ || !video_->video) return false;
            images_per_second_ =
                static_cast<std::uint64_t>(std::max<int>(video_->video->nImgAlSec, 1));
            splice_.picture = {.header = SpliceHeader(*video_), .user_header = video_->user_header};
        }
        if (audio_ == nullptr) return true;
        sound_source_ = OpenPieces(film_, *audio_, reporter_);
        if (!sound_source_ || !audio_->audio) return false;
        audio_per_second_ = std::max<std::uint32_t>(audio_->audio->nFramesAlSec, 1);
        splice_.sound = {.header = SpliceHeader(*audio_),
                         .user_header = audio_->user_header,
                         .silence_byte = SilenceByte(*audio_->audio)};
        if (!audio_->vorbis) return true;
        const int type = static_cast<int>(splice_.sound->header.CompressionType);
        if (const auto reason = WhyNotConvertible(*audio_, type)) {
            reporter_.NotDone(*reason, ProblemCode::NotPossible);
            return false;
        }
        reporter_.Warn(fmt::format("its Vorbis sound cannot be cut as it is: it becomes type {}, "
                                   "which loses nothing more",
                                   type),
                       ProblemCode::NotPossible);
        return true;
    }

    /// The sound that is heard while the images are shown.
    Frames FramesOf(const Span& span) {
        const auto first = picture_source_->SyncNumberOf(static_cast<std::uint32_t>(span.first));
        const auto last = picture_source_->SyncNumberOf(static_cast<std::uint32_t>(span.end - 1));
        if (first && last) return {*first, std::int64_t{std::max(*first, *last)} + 1};
        // Never linked: by time.
        const auto frame = [&](std::uint64_t image, std::uint64_t round) {
            return static_cast<std::int64_t>((image * audio_per_second_ + round) /
                                             images_per_second_);
        };
        return {frame(span.first, 0), frame(span.end, images_per_second_ - 1)};
    }

    void PlanPicture(const std::vector<Span>& spans) {
        std::int64_t frames_before = 0;
        for (const Span& span : spans) {
            if (span.Count() == 0) continue;
            const Frames frames = FramesOf(span);
            splice_.picture->pieces.push_back({.source = picture_source_.get(),
                                               .first = static_cast<std::uint32_t>(span.first),
                                               .end = static_cast<std::uint32_t>(span.end),
                                               .sync_shift = frames_before - frames.first});
            if (splice_.sound) AddSound(frames);
            frames_before += frames.end - frames.first;
        }
        // Silence at the very end is nothing to keep in step with.
        if (splice_.sound && !splice_.sound->pieces.empty()) {
            splice_.sound->pieces.back().silence = 0;
        }
    }

    void AddSound(const Frames& frames) {
        const std::int64_t count = audio_->RecordCount();
        const std::int64_t first = std::min(frames.first, count);
        const std::int64_t end = std::min(frames.end, count);
        const std::int64_t missing = (frames.end - frames.first) - (end - first);
        splice_.sound->pieces.push_back({.source = sound_source_.get(),
                                         .first = static_cast<std::uint32_t>(first),
                                         .end = static_cast<std::uint32_t>(end),
                                         .silence = static_cast<std::uint32_t>(missing)});
    }

    void PlanSound(const std::vector<Span>& spans) {
        for (const Span& span : spans) {
            if (span.Count() == 0) continue;
            AddSound({static_cast<std::int64_t>(span.first), static_cast<std::int64_t>(span.end)});
        }
    }

    /// The headers need to know about how many records there will be.
    void Settle() {
        if (!splice_.picture) return;
        std::uint32_t count = 0;
        for (const PicturePiece& piece : splice_.picture->pieces)
            count += piece.end - piece.first;
        splice_.picture->header.RecordCount = count;
        SettleKeyInterval(splice_.picture->header, std::nullopt);
    }

    const FilmDescription& film_;
    Reporter& reporter_;
    const TrackDescription* video_ = nullptr;
    const TrackDescription* audio_ = nullptr;
    std::unique_ptr<PieceSource> picture_source_;
    std::unique_ptr<PieceSource> sound_source_;
    std::uint64_t images_per_second_ = 1;
    std::uint64_t audio_per_second_ = 1;
    FilmSplice splice_;
};

int RunCut(const CutOptions& options, const CommonOptions& common) {
    SetTask("cut " + options.film);
    Reporter reporter(options.film);
    Reporter output_reporter(options.output);
    const auto code = [&] { return std::max(reporter.Code(), output_reporter.Code()); };
    const auto ranges = ParseRanges(options.ranges);
    if (!ranges) {
        reporter.NotDone(fmt::format("\"{}\" is no range such as 12:34.5-13:00 or 300f-450f",
                                     Printable(options.ranges)));
        return code();
    }
    const auto input = InputName(options.film, reporter);
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
    for (const Problem& problem : film->problems)
        reporter.Report(problem);
    Cut cut(*film, reporter);
    const auto splice = cut.Plan(ranges.Value());
    if (!splice) return code();
    return WriteSpliced(*splice, options.film, options.output, *output, common, reporter,
                        output_reporter);
}

} // namespace

void AddCut(CommandLine& line) {
    CLI::App& command =
        line.AddCommand("cut", "Take parts of a film, without coding again what need not be",
                        kUsesForce | kUsesJson);
    const auto options = std::make_shared<CutOptions>();
    command.add_option("FILM", options->film, "a .kva, .kvf or .kaf file")->required();
    command.add_option("OUT", options->output, "the new film or track")->required();
    command
        .add_option("--range", options->ranges,
                    "what to take, in this order: 12:34.5-13:00 in time, 300f-450f in images (of a "
                    "sound alone: in audio frames); the end is not taken")
        ->type_name("A-B[,A-B...]")
        ->required();
    line.WhenChosen(command,
                    [options](const CommonOptions& common) { return RunCut(*options, common); });
}

} // namespace kelvo::tool
