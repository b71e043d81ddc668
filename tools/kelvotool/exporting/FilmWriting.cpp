// The writing half of FilmExport: one function a shape.

#include "framework/base/ChFile.h"
#include "media/VorbisTrackHeader.h"
#include "platform/base/files.h"
#include "tools/kelvotool/exporting/FilmExport.h"
#include "tools/kelvotool/exporting/PictureWalk.h"
#include "tools/kelvotool/files/ByteOutput.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/files/MediaProgram.h"
#include "tools/kelvotool/files/PictureSeries.h"
#include "tools/kelvotool/picture/BmpFile.h"
#include "tools/kelvotool/picture/PngFile.h"
#include "tools/kelvotool/picture/Y4m.h"
#include "tools/kelvotool/report/Steps.h"
#include "tools/kelvotool/report/StopSignal.h"
#include "tools/kelvotool/sound/WavFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <string_view>

namespace kelvo::tool {

namespace {

using Shape = ExportFormat::Shape;

constexpr unsigned kShortPixel = 16;

std::uint32_t ImagesPerSecond(const TrackDescription& picture) {
    return static_cast<std::uint32_t>(std::max<int>(picture.video->nImgAlSec, 1));
}

ByteView BytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace

void FilmExport::WriteSeries() {
    const unsigned bits = picture_->video->bitmap.biBitCount;
    const bool is_png = format_->name == "png";
    const auto code = [is_png, bits](const RgbImage& image, std::vector<std::uint8_t>& file) {
        if (is_png) return EncodePng(image, bits == kShortPixel ? 5 : 8, file);
        EncodeBmp(image, bits, file);
        return true;
    };
    if (timing_.shown == 1 && FormatOfFile(options_.output) == format_ &&
        !ParsePattern(std::string_view(options_.output))) {
        WriteImageFile(); // a single picture needs no number
        return;
    }
    if (FormatOfFile(options_.output) != nullptr && !ParsePattern(options_.output)) {
        output_reporter_.NotDone("a series of pictures needs a place for its numbers, as in "
                                 "frames-%06d.png, or the name of a folder",
                                 ProblemCode::NotPossible);
        return;
    }
    PictureSeries series;
    if (!series.Begin(options_.output, format_->Extension(), timing_.shown, common_.force,
                      common_.Jobs(), code, output_reporter_)) {
        return;
    }
    PictureWalk walk(*picture_reader_, image_spans_, timing_, options_.scale, reporter_);
    Steps steps(timing_.shown);
    std::uint32_t repeats = 0;
    for (std::uint64_t done = 0; walk.Next(series.Room(), repeats); done += repeats) {
        series.Add(repeats);
        if (series.Failed() || !steps.Update(done)) break;
    }
    if (!StopRequested() && reporter_.Code() < kNotDone) series.Finish(output_reporter_);
}

void FilmExport::WriteImageFile() {
    ByteOutput output;
    if (!output.Begin(options_.output, input_name_, common_.force, output_reporter_)) return;
    const BITMAPINFOHEADER& bitmap = picture_->video->bitmap;
    const unsigned bits = bitmap.biBitCount;
    if (format_->shape == Shape::Images) {
        output.Append(BytesOf(
            Y4mHeader({.width = static_cast<std::uint32_t>(bitmap.biWidth) * options_.scale,
                       .height = static_cast<std::uint32_t>(bitmap.biHeight) * options_.scale,
                       .rate_numerator = ImagesPerSecond(*picture_),
                       .rate_denominator = 1})));
        if (bits != kShortPixel) {
            output_reporter_.Warn("a channel may come out one or two steps off", // of 8 bits
                                  ProblemCode::LeftOut);
        }
    }
    PictureWalk walk(*picture_reader_, image_spans_, timing_, options_.scale, reporter_);
    Steps steps(timing_.shown);
    RgbImage image;
    std::vector<std::uint8_t> file;
    std::uint32_t repeats = 0;
    for (std::uint64_t done = 0; walk.Next(image, repeats); done += repeats) {
        if (format_->name == "png") {
            if (!EncodePng(image, bits == kShortPixel ? 5 : 8, file)) return;
        } else if (format_->name == "bmp") {
            EncodeBmp(image, bits, file);
        } else if (format_->shape == Shape::Images) {
            EncodeY4m(image, file);
        }
        for (std::uint32_t i = 0; i < repeats && !output.Failed(); ++i)
            output.Append(format_->shape == Shape::Raw ? ByteView{image.bytes} : ByteView{file});
        if (output.Failed() || !steps.Update(done)) break;
    }
    if (!StopRequested() && reporter_.Code() < kNotDone) output.Finish(output_reporter_);
}

void FilmExport::WriteSoundFile() {
    const bool is_wav = format_->shape == Shape::Sound;
    SoundWalk walk(*sound_reader_, sound_facts_, sample_spans_, SampleForm::Wav, reporter_);
    sample_bytes_ = walk.BytesPerSample();
    const std::uint64_t bytes = walk.Samples() * sample_bytes_;
    if (is_wav && bytes > kMostWavBytes) {
        output_reporter_.NotDone("a WAV file holds at most 4 GiB: name a --range",
                                 ProblemCode::NotPossible);
        return;
    }
    ByteOutput output;
    if (!output.Begin(options_.output, input_name_, common_.force, output_reporter_)) return;
    if (is_wav) {
        output.Append(
            WavHead(sound_->audio->SampleRate, sample_bytes_, static_cast<std::uint32_t>(bytes)));
    }
    Steps steps(bytes);
    std::uint64_t done = 0;
    for (ByteView samples = walk.Next(); !samples.empty(); samples = walk.Next()) {
        output.Append(samples);
        done += samples.size();
        if (output.Failed() || !steps.Update(done)) break;
    }
    constexpr std::uint8_t kFilling = 0;
    if (is_wav && bytes % 2 != 0) output.Append({&kFilling, 1});
    if (!StopRequested() && reporter_.Code() < kNotDone) output.Finish(output_reporter_);
}

void FilmExport::WriteVorbisStream() {
    if (sound_->form != TrackForm::Vorbis) {
        reporter_.NotDone("its sound is no Vorbis stream: .wav and .flac hold it without loss",
                          ProblemCode::NotPossible);
        return;
    }
    if (!options_.ranges.empty()) {
        reporter_.NotDone("a stream that is passed on as it is has no --range",
                          ProblemCode::NotPossible);
        return;
    }
    for (const Problem& problem : sound_->problems)
        reporter_.Report(problem);
    ChFile file;
    if (!file.OpenReadOnly(CString(std::string_view{sound_->file}))) {
        reporter_.NotDone("it cannot be read", ProblemCode::InputUnreadable);
        return;
    }
    ByteOutput output;
    if (!output.Begin(options_.output, input_name_, common_.force, output_reporter_)) return;
    const std::uint64_t start = sound_->window.start + kVorbisHeaderOffset + kAudioHeaderSize;
    std::vector<std::uint8_t> buffer(std::size_t{256} * 1024);
    for (std::uint64_t at = start; at < sound_->window.end && !StopRequested();) {
        const std::size_t wanted = std::min<std::uint64_t>(buffer.size(), sound_->window.end - at);
        const std::int64_t count = platform::ReadFileAt(file.Handle(), at, buffer.data(), wanted);
        if (count <= 0) {
            reporter_.NotDone("it cannot be read", ProblemCode::InputUnreadable);
            return;
        }
        output.Append(ByteView{buffer}.first(static_cast<std::size_t>(count)));
        at += static_cast<std::uint64_t>(count);
    }
    if (!StopRequested()) output.Finish(output_reporter_);
}

void FilmExport::WriteForeign() {
    const auto name = OutputName(options_.output, input_name_, common_.force, output_reporter_);
    if (!name) return;
    std::vector<std::string> arguments{*name, "--format", std::string(format_->name)};
    if (!options_.preset.empty()) arguments.insert(arguments.end(), {"--preset", options_.preset});
    if (common_.force) arguments.emplace_back("--force");
    MediaProgram program;
    if (!program.Start(MediaProgram::Task::Encode, arguments, output_reporter_)) return;

    std::optional<PictureWalk> images;
    std::optional<SoundWalk> sound;
    std::array<std::uint8_t, 4> version{media_stream::kVersion};
    program.WriteBlock(media_stream::kStart, version);
    std::uint64_t rate = 1;
    if (picture_ != nullptr) {
        const BITMAPINFOHEADER& bitmap = picture_->video->bitmap;
        rate = ImagesPerSecond(*picture_);
        const media_stream::PictureFormat format{
            .width = static_cast<std::uint32_t>(bitmap.biWidth) * options_.scale,
            .height = static_cast<std::uint32_t>(bitmap.biHeight) * options_.scale,
            .ticks_numerator = static_cast<std::uint32_t>(rate),
            .ticks_denominator = 1,
            .significant_bits = bitmap.biBitCount == kShortPixel ? 5U : 8U,
            .count = timing_.shown};
        program.WriteBlock(media_stream::kPicture, media_stream::BytesOf(format));
        images.emplace(*picture_reader_, image_spans_, timing_, options_.scale, reporter_);
    }
    std::uint64_t sample_rate = 1;
    if (sound_ != nullptr) {
        sound.emplace(*sound_reader_, sound_facts_, sample_spans_, SampleForm::Wide, reporter_);
        sample_bytes_ = sound->BytesPerSample();
        sample_rate = sound_->audio->SampleRate;
        const media_stream::SoundFormat format{.sample_rate = sound_->audio->SampleRate,
                                               .channels = 1,
                                               .significant_bits =
                                                   sound_->audio->BytesPerSample * 8,
                                               .count = sound->Samples()};
        program.WriteBlock(media_stream::kSound, media_stream::BytesOf(format));
    }
    program.WriteBlock(media_stream::kData, {});

    // Sound up to the time of the image that follows, so that neither runs ahead.
    std::uint64_t samples_written = 0;
    const auto write_sound = [&](std::uint64_t until) {
        while (sound && samples_written <= until && !program.Failed()) {
            const ByteView samples = sound->Next();
            if (samples.empty()) {
                sound.reset();
                return;
            }
            program.WriteBlock(media_stream::kSamples, samples);
            samples_written += samples.size() / 2;
        }
    };
    RgbImage image;
    std::uint64_t start = 0;
    std::uint32_t repeats = 0;
    Steps steps(std::max<std::uint64_t>(timing_.shown, 1));
    while (images && !program.Failed() && images->Next(image, repeats)) {
        write_sound(start * sample_rate / rate);
        const auto head =
            media_stream::BytesOf(media_stream::ImageHead{.start = start, .duration = repeats});
        program.WriteBlock(media_stream::kImage, head, image.bytes);
        start += repeats;
        if (!steps.Update(start)) return;
    }
    write_sound(UINT64_MAX);
    if (StopRequested()) return;
    if (reporter_.Code() < kNotDone) program.WriteBlock(media_stream::kEnd, {});
    const int code = program.Finish();
    if (code == kAllWell || reporter_.Code() >= kNotDone) return;
    output_reporter_.Report({.severity = code == kDamaged ? kDamaged : kNotDone,
                             .code = ProblemCode::OutputUnwritable,
                             .what = code == kDamaged ? "kelvotool-media left something out"
                                                      : "kelvotool-media could not write it"});
}

} // namespace kelvo::tool
