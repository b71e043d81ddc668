#include "tools/kelvotool/exporting/FilmPictures.h"

#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/picture/Waveform.h"
#include "tools/kelvotool/report/StopSignal.h"
#include "tools/kelvotool/sound/SoundWalk.h"

#include <algorithm>
#include <cstdint>

namespace kelvo::tool {

namespace {

constexpr std::uint32_t kTried = 24; // spread over the film: one of them shows something

/// How much there is to see: the spread of the brightness over a coarse grid, less where most of it
/// is black or white.
double Interest(const RgbImage& image) {
    constexpr std::uint32_t kGrid = 48;
    double sum = 0;
    double squares = 0;
    std::uint32_t extreme = 0;
    for (std::uint32_t row = 0; row < kGrid; ++row) {
        for (std::uint32_t column = 0; column < kGrid; ++column) {
            const std::uint8_t* const pixel = image.Row(row * image.height / kGrid) +
                                              std::size_t{column * image.width / kGrid} * 3;
            const double brightness = 0.299 * pixel[0] + 0.587 * pixel[1] + 0.114 * pixel[2];
            sum += brightness;
            squares += brightness * brightness;
            extreme += brightness < 24 || brightness > 240 ? 1 : 0;
        }
    }
    constexpr double kCount = double{kGrid} * kGrid;
    const double mean = sum / kCount;
    const double variance = squares / kCount - mean * mean;
    return variance * (1.05 - extreme / kCount);
}

} // namespace

bool FilmPictures::Open(const std::string& given) {
    const auto name = InputName(given, reporter_);
    if (!name) return false;
    name_ = *name;
    film_ = DescribeFilm(*name, reporter_);
    if (!film_) return false;
    for (const Problem& problem : film_->problems)
        reporter_.Report(problem);
    for (const TrackKind kind : {TrackKind::Video, TrackKind::Audio}) {
        const TrackDescription* const track = film_->Find(kind);
        if (track == nullptr) continue;
        auto reader = std::make_unique<TrackReader>(*film_, *track);
        if (auto problem = reader->Open()) {
            reporter_.Report(*problem); // the sound may still be shown
            continue;
        }
        if (!track->track_header_is_sound || reader->Count() == 0) continue;
        (kind == TrackKind::Video ? picture_ : sound_) = track;
        reader_ = std::move(reader);
        return true;
    }
    reporter_.NotDone("there is nothing in it that can be shown", ProblemCode::NotPossible);
    return false;
}

std::uint32_t FilmPictures::ImagesPerSecond() const {
    return static_cast<std::uint32_t>(std::max<int>(picture_->video->nImgAlSec, 1));
}

Counting FilmPictures::Images() const {
    return {.count = ImageCount(),
            .per_second = ImagesPerSecond(),
            .images_per_second = ImagesPerSecond()};
}

std::uint32_t FilmPictures::Width() const {
    return static_cast<std::uint32_t>(picture_->video->bitmap.biWidth);
}

std::uint32_t FilmPictures::Height() const {
    return static_cast<std::uint32_t>(picture_->video->bitmap.biHeight);
}

unsigned FilmPictures::SignificantBits() const {
    return picture_ != nullptr && picture_->video->bitmap.biBitCount == 16 ? 5 : 8;
}

double FilmPictures::Seconds() const {
    return (picture_ != nullptr ? picture_ : sound_)->DurationSeconds().value_or(0);
}

bool FilmPictures::Take(std::uint32_t number, RgbImage& image) {
    if (!reader_->ReadByNumber(number)) {
        if (!StopRequested()) {
            reporter_.Report(reader_->RecordProblem(number).value_or(reader_->Make(
                ProblemCode::RecordDamaged, "the record cannot be read", number, {}, kNotDone)));
        }
        return false;
    }
    if (const auto problem = reader_->RecordProblem(number)) reporter_.Report(*problem);
    TakeRecord(reader_->Record(), *picture_->video, image);
    return true;
}

bool FilmPictures::TakeTelling(RgbImage& image, std::uint32_t& number) {
    double best = -1;
    RgbImage tried;
    const std::uint32_t count = std::min(kTried, ImageCount());
    for (std::uint32_t i = 0; i < count && !StopRequested(); ++i) {
        const auto candidate =
            static_cast<std::uint32_t>((std::uint64_t{i} * 2 + 1) * ImageCount() / (count * 2));
        if (!Take(candidate, tried)) continue;
        const double interest = Interest(tried);
        if (interest <= best) continue;
        best = interest;
        number = candidate;
        std::swap(image, tried);
    }
    return best >= 0;
}

bool FilmPictures::DrawSound(std::uint32_t width, std::uint32_t height, RgbImage& image) {
    const SoundFacts facts = SurveySound(*reader_);
    reader_ = std::make_unique<TrackReader>(*film_, *sound_);
    if (reader_->Open()) return false; // it was open a moment ago
    SoundWalk walk(*reader_, facts, {{0, facts.Samples(*sound_)}}, SampleForm::Wide, reporter_);
    Waveform waveform(width, walk.Samples());
    for (ByteView samples = walk.Next(); !samples.empty(); samples = walk.Next())
        waveform.Add(samples);
    image.Resize(width, height);
    waveform.Draw(image);
    return !StopRequested() && reporter_.Code() < kNotDone;
}

} // namespace kelvo::tool
