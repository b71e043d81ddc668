#include "tools/kelvotool/importing/FilmImport.h"

#include "container/codec/CompressionTypes.h"
#include "media/Pixel555.h"
#include "media/SyncNumbers.h"
#include "media/VideoHeader.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/files/NewTracks.h"
#include "tools/kelvotool/files/SeriesNames.h"
#include "tools/kelvotool/film/ConversionRules.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>

namespace kelvo::tool {

namespace {

constexpr std::uint32_t kUsualRate = 25;
constexpr int kUsualType = 8;
constexpr int kUsualTypeOfBytes = 17; // takes any bytes: 24-bit pixels, 16-bit samples
constexpr int kUsualAudioType = 16;
constexpr std::uint32_t kKeySeconds = 2; // a seek decodes two seconds at most
constexpr std::uint64_t kLargestFilm = 2147483647;
constexpr unsigned kShortPixel = 16;
constexpr std::array<std::uint32_t, 3> kAudioFrames{10, 5, 1};

bool NamesImages(const std::string& given) {
    std::error_code error;
    const std::string extension = ExtensionOf(given);
    return extension == ".png" || extension == ".bmp" || extension == ".y4m" ||
           std::filesystem::is_directory(given, error);
}

} // namespace

FilmImport::FilmImport(const ImportOptions& options, const CommonOptions& common)
    : options_(options), common_(common), reporter_(options.input), sound_reporter_(options.sound),
      output_reporter_(options.output) {}

int FilmImport::Code() const {
    return std::max({reporter_.Code(), sound_reporter_.Code(), output_reporter_.Code()});
}

bool FilmImport::WritesVorbis() const {
    return sound_ && audio_type_ == codec::kTypeVorbis;
}

bool FilmImport::OpenSoundSource() {
    if (!options_.sound.empty()) {
        const bool is_wav = ExtensionOf(options_.sound) == ".wav";
        const auto name =
            is_wav ? std::optional(options_.sound) : InputName(options_.sound, sound_reporter_);
        if (!name) return false;
        sound_ =
            is_wav ? OpenWav(*name, sound_reporter_) : OpenForeignSound(*name, sound_reporter_);
        if (!sound_ && sound_reporter_.Code() < kNotDone) {
            sound_reporter_.NotDone("there is no sound in it", ProblemCode::NotPossible);
        }
        return sound_ != nullptr;
    }
    if (NamesImages(options_.input)) return true;
    if (ExtensionOf(options_.input) == ".wav") {
        sound_ = OpenWav(options_.input, reporter_);
    } else if (const auto name = InputName(options_.input, reporter_)) {
        sound_ = OpenForeignSound(*name, reporter_);
    }
    return reporter_.Code() < kNotDone;
}

bool FilmImport::OpenSources() {
    const std::string extension = ExtensionOf(options_.output);
    is_film_ = extension == ".kva";
    wants_images_ = is_film_ || extension == ".kvf";
    wants_sound_ = is_film_ || extension == ".kaf";
    if (!wants_images_ && !wants_sound_) {
        output_reporter_.NotDone("its name must end in .kva, .kvf or .kaf",
                                 ProblemCode::NotPossible);
        return false;
    }
    const auto name = OutputName(options_.output, options_.input, common_.force, output_reporter_);
    if (!name) return false;
    output_name_ = *name;
    if (wants_images_ && NamesImages(options_.input)) {
        images_ = OpenImages(options_.input, reporter_);
    } else if (wants_images_ && ExtensionOf(options_.input) != ".wav") {
        const auto input = InputName(options_.input, reporter_);
        if (input) images_ = OpenForeignImages(*input, reporter_);
    }
    if (reporter_.Code() >= kNotDone || (wants_sound_ && !OpenSoundSource())) return false;
    if (images_ || sound_) return true;
    reporter_.NotDone(wants_images_ ? "there is no picture in it" : "there is no sound in it",
                      ProblemCode::NotPossible);
    return false;
}

bool FilmImport::AcceptsType(const TrackDescription& track, int type) {
    const auto reason = WhyNotConvertible(track, type);
    if (reason) output_reporter_.NotDone(*reason, ProblemCode::NotPossible);
    return !reason;
}

bool FilmImport::PlanPicture() {
    const ImageFacts& facts = images_->Facts();
    const std::uint64_t rate =
        facts.rate_numerator == 0
            ? kUsualRate
            : (std::uint64_t{facts.rate_numerator} + facts.rate_denominator / 2) /
                  facts.rate_denominator;
    // A clock of thousands of ticks a second is no rate of images.
    constexpr std::uint64_t kFastest = 120;
    fps_ = options_.fps.value_or(
        rate > kFastest ? kUsualRate
                        : static_cast<std::uint32_t>(std::max<std::uint64_t>(rate, 1)));
    size_ = options_.size.value_or(ImageSize{facts.width, facts.height});
    type_ = options_.type.value_or(options_.bits == kShortPixel ? kUsualType : kUsualTypeOfBytes);
    TrackDescription track;
    track.kind = TrackKind::Video;
    track.track_header_is_sound = true;
    track.video.emplace();
    track.video->bitmap.biBitCount = static_cast<std::uint16_t>(options_.bits);
    if (!AcceptsType(track, type_)) return false;
    ContainerHeader header;
    header.CompressionType = static_cast<std::uint32_t>(type_);
    header.RecordCount = std::numeric_limits<std::int32_t>::max();
    const auto* const type = codec::FindCompressionType(type_);
    header.KeyInterval =
        options_.key_interval.value_or(type->differential ? fps_ * kKeySeconds : kNoKeyInterval);
    if (!SettleKeyInterval(header, options_.key_interval)) {
        output_reporter_.NotDone("this type has no key record but the first: it takes no "
                                 "--key-interval",
                                 ProblemCode::NotPossible);
        return false;
    }
    key_interval_ = header.KeyInterval;
    const std::uint64_t length =
        pixel::RowStride(size_.width, options_.bits) * std::uint64_t{size_.height};
    if (length <= kLargestFilm) return true;
    output_reporter_.NotDone("one image is larger than a film may be", ProblemCode::NotPossible);
    return false;
}

bool FilmImport::PlanSound() {
    const SoundSourceFacts& facts = sound_->Facts();
    const auto* const chosen =
        options_.audio_type ? codec::FindCompressionType(*options_.audio_type) : nullptr;
    const bool needs_bytes =
        chosen != nullptr && !chosen->lossless && chosen->id != codec::kTypeVorbis;
    const unsigned bits = options_.audio_bits.value_or(needs_bytes || facts.bits <= 8 ? 8 : 16);
    audio_type_ = options_.audio_type.value_or(bits == 8 ? kUsualAudioType : kUsualTypeOfBytes);
    std::uint32_t frames = 1;
    for (const std::uint32_t candidate : kAudioFrames) {
        const bool fits = facts.sample_rate % candidate == 0 && (!images_ || fps_ % candidate == 0);
        if (fits) {
            frames = candidate;
            break;
        }
    }
    audio_ = BuildWaveFormat(facts.sample_rate, bits / 8, options_.audio_frames.value_or(frames));
    const Error error = CheckAudioHeader(audio_);
    if (error.fault != Fault::None) {
        output_reporter_.NotDone("a sound track cannot have such samples",
                                 ProblemCode::NotPossible);
        return false;
    }
    if (audio_type_ == codec::kTypeVorbis) return true;
    TrackDescription track;
    track.kind = TrackKind::Audio;
    track.track_header_is_sound = true;
    track.audio = audio_;
    return AcceptsType(track, audio_type_);
}

bool FilmImport::PlanLink() {
    if (!images_ || !sound_) {
        if (!options_.link) return true;
        output_reporter_.NotDone("--link needs both a picture and a sound",
                                 ProblemCode::NotPossible);
        return false;
    }
    const int frames = static_cast<int>(audio_.nFramesAlSec);
    if (SyncLink::IsValid(static_cast<int>(fps_), frames, 0, 1)) {
        images_per_audio_frame_ =
            SyncLink::Of(static_cast<int>(fps_), frames).images_per_audio_frame;
        return true;
    }
    const std::string what = fmt::format(
        "{} images a second are no multiple of {} audio frames a second: they cannot be linked",
        fps_, frames);
    if (!options_.link) {
        output_reporter_.Warn(what, ProblemCode::LeftOut);
    } else {
        output_reporter_.NotDone(what, ProblemCode::NotPossible);
    }
    return !options_.link;
}

void FilmImport::SaySizeLimit() {
    std::uint64_t bytes = 0;
    if (images_) {
        const std::uint64_t length =
            pixel::RowStride(size_.width, options_.bits) * std::uint64_t{size_.height};
        bytes += std::min(images_->Facts().count, kLargestFilm) * length;
    }
    if (bytes <= kLargestFilm) return;
    output_reporter_.Warn(
        fmt::format("uncompressed it is {} MiB, and a film ends at 2048 MiB", bytes >> 20U),
        ProblemCode::LeftOut);
}

void FilmImport::SayWhatIsLost() {
    const auto say = [this](std::string what) {
        reporter_.Warn(std::move(what), ProblemCode::LeftOut);
    };
    if (images_) {
        const ImageFacts& facts = images_->Facts();
        if (!facts.loss.empty()) say(facts.loss);
        if (options_.bits == kShortPixel && !facts.has_five_bits) {
            say("8 bits a channel become 5 (--bits 24 keeps them)");
        }
        if (size_.width != facts.width || size_.height != facts.height) {
            say(fmt::format("{} x {} pixels become {} x {}", facts.width, facts.height, size_.width,
                            size_.height));
        }
        const bool same_rate = facts.rate_numerator == 0 ||
                               facts.rate_numerator == std::uint64_t{fps_} * facts.rate_denominator;
        if (!same_rate) {
            say(fmt::format("its images become {} a second: some are repeated or dropped", fps_));
        }
    }
    if (sound_) {
        const SoundSourceFacts& facts = sound_->Facts();
        if (facts.channels > 1) say(fmt::format("its {} channels become one", facts.channels));
        const unsigned bits = audio_.BytesPerSample * 8;
        if (facts.bits > bits) {
            say(fmt::format("its samples of {} bits become {}", facts.bits, bits));
        }
        const auto* const type = codec::FindCompressionType(audio_type_);
        if (type != nullptr && (!type->lossless || audio_type_ == codec::kTypeVorbis)) {
            say(fmt::format("type {} loses something of the sound", audio_type_));
        }
    }
    SaySizeLimit();
}

int FilmImport::Run() {
    if (!OpenSources()) return Code();
    if (images_ && !PlanPicture()) return Code();
    if (sound_ && !PlanSound()) return Code();
    if (!PlanLink()) return Code();
    SayWhatIsLost();
    if (WritesVorbis() && !is_film_) {
        const Error error = WriteVorbisFile(output_name_, common_.force);
        if (error.fault != Fault::None && !StopRequested()) {
            output_reporter_.NotDone(error.fault == Fault::BadValue
                                         ? "the encoder knows no such sample rate"
                                         : std::string(FileFaultText(error.fault)),
                                     ProblemCode::OutputUnwritable);
        }
        return Code() >= kNotDone ? Code() : Tell();
    }
    NewTrackFile file(output_reporter_, reporter_);
    const auto kind = is_film_ ? RewriteTarget::Kind::Film : RewriteTarget::Kind::Track;
    const auto write = [this](RewriteTarget& target) { return WriteFile(target); };
    if (file.Write(output_name_, kind, write)) file.Place(common_.force);
    return Code() >= kNotDone ? Code() : Tell();
}

int FilmImport::Tell() const {
    Json json = ResultFor(options_.input);
    PutName(json, "output_file", options_.output);
    std::string text;
    if (images_) {
        text = fmt::format("{} images of {}, type {}", images_written_, images_read_, type_);
        json["images"] = images_written_;
        json["images_read"] = images_read_;
        json["images_per_second"] = fps_;
        json["type"] = type_;
        json["linked"] = images_per_audio_frame_.has_value();
    }
    if (sound_) {
        text += fmt::format("{}{} audio frames, type {}", text.empty() ? "" : "; ",
                            audio_frames_written_, audio_type_);
        json["audio_frames"] = audio_frames_written_;
        json["audio_frames_per_second"] = audio_.nFramesAlSec;
        json["sample_rate_hz"] = audio_.SampleRate;
        json["audio_type"] = audio_type_;
    }
    std::vector<Problem> problems = reporter_.Problems();
    for (const Reporter* const other : {&sound_reporter_, &output_reporter_})
        problems.insert(problems.end(), other->Problems().begin(), other->Problems().end());
    json["problems"] = JsonOf(problems);
    Results results(common_, ResultCount::One);
    results.Add(json, fmt::format("{}: {}\n", Printable(options_.output), text));
    return results.Finish(Code());
}

} // namespace kelvo::tool
