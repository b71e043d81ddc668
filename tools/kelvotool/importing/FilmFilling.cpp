// The writing half of FilmImport: images and samples become records.

#include "framework/base/ByteWriter.h"
#include "framework/base/ChFile.h"
#include "media/Pixel555.h"
#include "media/VideoHeader.h"
#include "media/VorbisTrackWriter.h"
#include "tools/kelvotool/files/TemporaryFolder.h"
#include "tools/kelvotool/importing/FilmImport.h"
#include "tools/kelvotool/report/Steps.h"
#include "tools/kelvotool/sound/WavFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace kelvo::tool {

namespace {

constexpr std::uint32_t kCreator = 1;
constexpr std::uint8_t kByteCentre = 127;

std::vector<std::uint8_t> VideoHeaderBytes(const ImageSize& size, unsigned bits,
                                           std::uint32_t fps) {
    std::vector<std::uint8_t> bytes = BuildBitmapHeaders(static_cast<std::int32_t>(size.width),
                                                         static_cast<std::int32_t>(size.height),
                                                         static_cast<std::uint16_t>(bits));
    std::array<std::uint8_t, kVideoTrailerSize> trailer{};
    ByteWriter writer{trailer};
    writer.WriteU32(static_cast<std::uint32_t>(bytes.size()));
    writer.WriteU32(static_cast<std::uint32_t>(bytes.size() + trailer.size()));
    writer.WriteU16(static_cast<std::uint16_t>(fps));
    writer.WriteU16(0);
    bytes.insert(bytes.end(), trailer.begin(), trailer.end());
    return bytes;
}

} // namespace

Error FilmImport::WriteFile(RewriteTarget& target) {
    AVDirectory directory;
    const auto size = [&target] { return static_cast<std::uint32_t>(target.Size()); };
    if (sound_) {
        directory.audio.start = size();
        const Error error = WritesVorbis() ? WriteVorbis(target) : WriteSound(target);
        if (error.fault != Fault::None) return error;
        directory.audio.end = size();
    }
    if (images_) {
        directory.video.start = size();
        const Error error = WritePicture(target);
        if (error.fault != Fault::None) return error;
        directory.video.end = size();
    }
    return is_film_ ? target.PutDirectory(directory) : Error{};
}

Error FilmImport::AppendImage(RewriteTarget& target, std::uint32_t times) {
    const RgbImage* image = &image_;
    if (image_.width != size_.width || image_.height != size_.height) {
        if (!options_.size) {
            reporter_.NotDone(
                fmt::format("image {} has {} x {} pixels, the first one {} x {}: name "
                            "a --size",
                            images_read_ - 1, image_.width, image_.height, size_.width,
                            size_.height),
                ProblemCode::NotPossible);
            return {Fault::Stopped, 0};
        }
        Resample(image_, size_.width, size_.height, resized_);
        image = &resized_;
    }
    if (times > 0) MakeRecord(*image, options_.bits, options_.dither, record_);
    for (std::uint32_t i = 0; i < times; ++i) {
        std::array<std::uint8_t, kVideoSideLength> side{};
        const std::uint64_t number =
            images_per_audio_frame_
                ? images_written_ / static_cast<std::uint64_t>(*images_per_audio_frame_)
                : kNeverLinked;
        ByteWriter{side}.WriteU32(static_cast<std::uint32_t>(number));
        const Error error = target.AppendRecord(record_, side);
        if (error.fault != Fault::None) return error;
        ++images_written_;
    }
    return {};
}

Error FilmImport::WritePicture(RewriteTarget& target) {
    const ImageFacts& facts = images_->Facts();
    ContainerHeader header;
    const auto user_header = VideoHeaderBytes(size_, options_.bits, fps_);
    header.UserHeaderSize = static_cast<std::uint32_t>(user_header.size());
    header.RecordLength =
        static_cast<std::uint32_t>(pixel::RowStride(size_.width, options_.bits) * size_.height);
    header.SideLength = static_cast<std::uint32_t>(kVideoSideLength);
    header.CreatorValue = kCreator;
    header.CompressionType = static_cast<std::uint32_t>(type_);
    header.KeyInterval = key_interval_;
    Error error = target.BeginContainer(header, user_header);
    if (error.fault != Fault::None) return error;

    // The period of a source that names no rate is one image.
    const std::uint64_t numerator = facts.rate_numerator == 0 ? fps_ : facts.rate_numerator;
    const std::uint64_t denominator = facts.rate_numerator == 0 ? 1 : facts.rate_denominator;
    const auto slot_at = [&](std::uint64_t ticks) {
        __extension__ using Wide = unsigned __int128;
        return static_cast<std::uint64_t>((Wide{ticks} * denominator * fps_ * 2 + numerator) /
                                          (Wide{numerator} * 2));
    };
    Steps steps(facts.count);
    std::uint64_t ticks = 0;
    std::uint32_t lasts = 0;
    while (images_->Next(image_, lasts)) {
        ++images_read_;
        const std::uint64_t times = slot_at(ticks + lasts) - slot_at(ticks);
        ticks += lasts;
        // More than a film can hold is refused when its limit is reached.
        constexpr std::uint64_t kMost = UINT32_MAX;
        error = AppendImage(target, static_cast<std::uint32_t>(std::min(times, kMost)));
        if (error.fault != Fault::None) return error;
        if (!steps.Update(images_read_)) return {Fault::Stopped, 0};
    }
    if (reporter_.Code() >= kNotDone || StopRequested()) return {Fault::Stopped, 0};
    return target.EndContainer();
}

template <class Sink>
Error FilmImport::PourSound(Sink&& sink) {
    Steps steps(sound_->Facts().count);
    std::uint64_t bytes_poured = 0;
    std::vector<std::int16_t> samples;
    std::vector<std::uint8_t> bytes;
    while (sound_->Next(samples)) {
        bytes.clear();
        for (const std::int16_t sample : samples) {
            if (audio_.BytesPerSample == 1) {
                bytes.push_back(ByteSample(sample));
                continue;
            }
            const auto bits = static_cast<std::uint16_t>(sample);
            bytes.push_back(static_cast<std::uint8_t>(bits));
            bytes.push_back(static_cast<std::uint8_t>(bits >> 8U));
        }
        const Error error = sink(ByteView{bytes});
        if (error.fault != Fault::None) return error;
        bytes_poured += bytes.size();
        if (!steps.Update(bytes_poured / audio_.BytesPerSample)) return {Fault::Stopped, 0};
    }
    audio_frames_written_ = (bytes_poured + audio_.FrameBytes - 1) / audio_.FrameBytes;
    const bool is_broken =
        reporter_.Code() >= kNotDone || sound_reporter_.Code() >= kNotDone || StopRequested();
    return is_broken ? Error{Fault::Stopped, 0} : Error{};
}

Error FilmImport::WriteSound(RewriteTarget& target) {
    ContainerHeader header;
    header.UserHeaderSize = static_cast<std::uint32_t>(kAudioHeaderSize);
    header.RecordLength = audio_.FrameBytes;
    header.SideLength = static_cast<std::uint32_t>(kAudioSideLength);
    header.CreatorValue = kCreator;
    header.CompressionType = static_cast<std::uint32_t>(audio_type_);
    header.KeyInterval = kNoKeyInterval;
    Error error = target.BeginContainer(header, AudioHeaderBytes(audio_));
    if (error.fault != Fault::None) return error;
    const std::array<std::uint8_t, kAudioSideLength> side{};
    std::vector<std::uint8_t> frame;
    const auto take = [&](ByteView bytes) -> Error {
        while (!bytes.empty()) {
            const std::size_t count =
                std::min<std::size_t>(bytes.size(), audio_.FrameBytes - frame.size());
            frame.insert(frame.end(), bytes.begin(), bytes.begin() + static_cast<long>(count));
            bytes = bytes.subspan(count);
            if (frame.size() < audio_.FrameBytes) continue;
            const Error append_error = target.AppendRecord(frame, side);
            if (append_error.fault != Fault::None) return append_error;
            frame.clear();
        }
        return {};
    };
    error = PourSound(take);
    if (error.fault != Fault::None) return error;
    if (!frame.empty()) { // the last frame ends in silence
        frame.resize(audio_.FrameBytes, audio_.BytesPerSample == 1 ? kByteCentre : std::uint8_t{0});
        error = target.AppendRecord(frame, side);
        if (error.fault != Fault::None) return error;
    }
    return target.EndContainer();
}

Error FilmImport::WriteVorbisFile(const std::string& name, bool replace) {
    VorbisTrackWriter writer;
    const Error error = writer.Begin(CString(std::string_view{name}), audio_,
                                     replace ? Existing::Replace : Existing::Refuse);
    if (error.fault != Fault::None) return error;
    const Error poured = PourSound([&writer](ByteView bytes) { return writer.Append(bytes); });
    return poured.fault != Fault::None ? poured : writer.Finish();
}

Error FilmImport::WriteVorbis(RewriteTarget& target) {
    TemporaryFolder folder;
    if (!folder.Make(ParentOf(output_name_), output_reporter_)) return {Fault::Unwritable, 0};
    const std::string name = folder.Name() + "/sound.kaf";
    const Error error = WriteVorbisFile(name, false);
    if (error.fault != Fault::None) return error;
    ChFile file;
    std::error_code ignored; // a size that is not known is 0, and 0 bytes are no track
    const std::uintmax_t size = std::filesystem::file_size(name, ignored);
    if (size > std::uintmax_t{INT32_MAX}) return {Fault::TooLarge, 0};
    if (!file.OpenReadOnly(CString(std::string_view{name}))) return {Fault::Unwritable, 0};
    return target.CopyWindow(file.Handle(), {0, static_cast<std::uint32_t>(size)});
}

} // namespace kelvo::tool
