#include "tools/kelvotool/exporting/FilmExport.h"

#include "framework/base/CString.h"
#include "media/TrackNames.h"
#include "tools/kelvotool/files/ByteOutput.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <numeric>
#include <string_view>

namespace kelvo::tool {

namespace {

using Shape = ExportFormat::Shape;

constexpr std::uint32_t kLargestSide = 32767;

std::uint32_t ImagesPerSecond(const TrackDescription& picture) {
    return static_cast<std::uint32_t>(std::max<int>(picture.video->nImgAlSec, 1));
}

/// The other track of a pair, when it lies beside the one that was named.
std::optional<FilmName> PairOf(const std::string& name) {
    const TrackNames names = ResolveTrackNames(CString(std::string_view{name}));
    const std::string video(names.video.View());
    const std::string audio(names.audio.View());
    const bool is_one = name == video || name == audio;
    if (names.is_kva || !is_one) return std::nullopt;
    if (::access(video.c_str(), R_OK) != 0 || ::access(audio.c_str(), R_OK) != 0) {
        return std::nullopt;
    }
    return FilmName{.name = video, .sound = audio};
}

std::uint64_t CountIn(const std::vector<Span>& spans) {
    return std::accumulate(spans.begin(), spans.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const Span& span) { return sum + span.Count(); });
}

} // namespace

FilmExport::FilmExport(const ExportOptions& options, const CommonOptions& common)
    : options_(options), common_(common), reporter_(options.input),
      output_reporter_(options.output) {}

int FilmExport::Code() const {
    return std::max(reporter_.Code(), output_reporter_.Code());
}

bool FilmExport::ChooseFormat() {
    if (!options_.format.empty()) {
        format_ = FindExportFormat(options_.format);
    } else if (options_.output == kStandardOutput) {
        format_ = FindExportFormat("raw");
    } else {
        format_ = FormatOfFile(options_.output);
    }
    if (format_ == nullptr) {
        output_reporter_.NotDone("its name does not tell a format: name one by --format");
        return false;
    }
    const bool takes_pipe = format_->shape != Shape::Series && format_->shape != Shape::Foreign;
    if (options_.output == kStandardOutput && !takes_pipe) {
        output_reporter_.NotDone(
            fmt::format("{} cannot be written to standard output", format_->name),
            ProblemCode::NotPossible);
        return false;
    }
    if (options_.output == kStandardOutput && common_.format != ResultFormat::Text) {
        output_reporter_.NotDone("standard output cannot hold both the film and --json");
        return false;
    }
    return true;
}

bool FilmExport::FindFilm() {
    const auto name = InputName(options_.input, reporter_);
    if (!name) return false;
    input_name_ = *name;
    const bool wants_both = !options_.track && format_->holds_images && format_->holds_sound &&
                            format_->shape != Shape::Raw;
    const bool needs_sound = wants_both || options_.timing == TimingRule::Sync;
    const auto pair = needs_sound ? PairOf(*name) : std::nullopt;
    film_ =
        pair ? DescribePair(pair->name, pair->sound, reporter_) : DescribeFilm(*name, reporter_);
    if (!film_) return false;
    for (const Problem& problem : film_->problems)
        reporter_.Report(problem);
    return true;
}

bool FilmExport::ChooseTracks() {
    for (const TrackDescription& track : film_->tracks) {
        const bool is_picture = track.kind == TrackKind::Video;
        if (options_.track && *options_.track != track.kind) continue;
        if (is_picture ? format_->holds_images : format_->holds_sound) {
            (is_picture ? picture_ : sound_) = &track;
        }
    }
    if (format_->shape == Shape::Raw && picture_ != nullptr && sound_ != nullptr) {
        reporter_.NotDone("it has two tracks: choose one by --track audio or --track video");
        return false;
    }
    if (picture_ == nullptr && sound_ == nullptr) {
        const bool wants_picture = format_->holds_images && options_.track != TrackKind::Audio;
        reporter_.NotDone(
            fmt::format("it has no {} for {}", wants_picture ? "picture" : "sound", format_->name),
            ProblemCode::NotPossible);
        return false;
    }
    return true;
}

bool FilmExport::OpenTrack(const TrackDescription& track, std::unique_ptr<TrackReader>& reader) {
    reader = std::make_unique<TrackReader>(*film_, track);
    if (auto problem = reader->Open()) {
        problem->severity = kNotDone;
        reporter_.Report(*problem);
        return false;
    }
    if (track.track_header_is_sound) return true;
    Problem problem = reader->Make(ProblemCode::HeaderDamaged, "its header does not describe it");
    problem.severity = kNotDone;
    reporter_.Report(problem);
    return false;
}

bool FilmExport::PrepareImages() {
    if (!OpenTrack(*picture_, picture_reader_)) return false;
    const BITMAPINFOHEADER& bitmap = picture_->video->bitmap;
    const auto largest = static_cast<std::uint32_t>(std::max(bitmap.biWidth, bitmap.biHeight));
    if (std::uint64_t{largest} * options_.scale > kLargestSide) {
        reporter_.NotDone(
            fmt::format("--scale {} makes it larger than {} pixels", options_.scale, kLargestSide),
            ProblemCode::NotPossible);
        return false;
    }
    const std::uint32_t rate = ImagesPerSecond(*picture_);
    image_spans_ =
        SpansOf(options_.ranges,
                {.count = picture_reader_->Count(), .per_second = rate, .images_per_second = rate});
    if (CountIn(image_spans_) == 0) {
        reporter_.NotDone("there is no image in the range", ProblemCode::NotPossible);
        return false;
    }
    const TrackDescription* const sound = film_->Find(TrackKind::Audio);
    const bool knows_frames = sound != nullptr && sound->audio && sound->track_header_is_sound;
    const bool goes_with_sound = sound_ != nullptr && knows_frames;
    const TimingRule rule =
        options_.timing.value_or(goes_with_sound ? TimingRule::Sync : TimingRule::Constant);
    TrackReader sides(*film_, *picture_);
    if (rule != TimingRule::Constant && sides.Open()) return false; // it was open a moment ago
    const auto timing = TimeImages(sides, image_spans_, rule,
                                   knows_frames ? sound->audio->nFramesAlSec : 0, reporter_);
    if (!timing) return false;
    timing_ = *timing;
    if (!timing_.note.empty()) reporter_.Warn(timing_.note, ProblemCode::SyncDamaged);
    return true;
}

bool FilmExport::PrepareSound() {
    if (!OpenTrack(*sound_, sound_reader_)) return false;
    TrackReader survey(*film_, *sound_);
    if (survey.Open()) return false; // it was open a moment ago
    sound_facts_ = SurveySound(survey);
    const AudioHeader& header = *sound_->audio;
    const bool has_images = film_->Find(TrackKind::Video) != nullptr;
    const std::uint32_t numbered = has_images && film_->Find(TrackKind::Video)->video
                                       ? ImagesPerSecond(*film_->Find(TrackKind::Video))
                                       : header.nFramesAlSec;
    // As many samples as the frames of a second hold, which may be less than the rate says.
    const std::uint64_t frame_bytes =
        sound_->vorbis ? sound_->vorbis->FrameBytes : sound_->container->RecordLength;
    const std::uint64_t per_second =
        std::max<std::uint64_t>(1, frame_bytes * header.nFramesAlSec / header.BytesPerSample);
    sample_spans_ = SpansOf(options_.ranges, {.count = sound_facts_.Samples(*sound_),
                                              .per_second = per_second,
                                              .images_per_second = numbered});
    if (CountIn(sample_spans_) == 0 && picture_ == nullptr) {
        reporter_.NotDone("there is no sound in the range", ProblemCode::NotPossible);
        return false;
    }
    return !StopRequested();
}

int FilmExport::Run() {
    if (!ChooseFormat() || !FindFilm() || !ChooseTracks()) return Code();
    if (format_->shape == Shape::Vorbis) {
        WriteVorbisStream();
        return Code() == kNotDone ? Code() : Tell();
    }
    if (picture_ != nullptr && !PrepareImages()) return Code();
    if (sound_ != nullptr && !PrepareSound()) return Code();
    switch (format_->shape) {
    case Shape::Series:
        WriteSeries();
        break;
    case Shape::Images:
        WriteImageFile();
        break;
    case Shape::Raw:
        picture_ != nullptr ? WriteImageFile() : WriteSoundFile();
        break;
    case Shape::Sound:
        WriteSoundFile();
        break;
    default:
        WriteForeign();
        break;
    }
    return Code() >= kNotDone ? Code() : Tell();
}

int FilmExport::Tell() const {
    std::string text;
    Json json = ResultFor(options_.input);
    PutName(json, "output_file", options_.output);
    json["format"] = format_->name;
    if (picture_ != nullptr) {
        text = fmt::format("{} images of {} ({} repeated, {} dropped)", timing_.shown,
                           timing_.repeats.size(), timing_.repeated, timing_.dropped);
        json["images"] = timing_.shown;
        json["images_read"] = timing_.repeats.size();
        json["images_repeated"] = timing_.repeated;
        json["images_dropped"] = timing_.dropped;
    }
    if (sound_ != nullptr && format_->shape == Shape::Vorbis) {
        text = "the Vorbis stream as it is";
    } else if (sound_ != nullptr) {
        text += fmt::format("{}{} samples of {} bits", text.empty() ? "" : ", ",
                            CountIn(sample_spans_), sample_bytes_ * 8);
        json["samples"] = CountIn(sample_spans_);
        json["sample_bits"] = sample_bytes_ * 8;
    }
    json["problems"] = JsonOf(reporter_.Problems());
    if (options_.output == kStandardOutput) {
        if (!common_.quiet) SayError(fmt::format("{}: {}", Printable(options_.input), text));
        return Code();
    }
    Results results(common_, ResultCount::One);
    results.Add(json, fmt::format("{}: {}\n", Printable(options_.output), text));
    return results.Finish(Code());
}

} // namespace kelvo::tool
