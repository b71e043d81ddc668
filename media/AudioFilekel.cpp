#include "media/AudioFilekel.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"
#include "media/FilmTracks.h"

#include <algorithm>
#include <climits>
#include <tuple>

namespace kelvo {

namespace {

constexpr char kCannotOpenVorbisText[] = "Impossibile aprire il VorbisFilekel!";
constexpr char kOpenForReadCaption[] = "AudioFilekel::OpenForRead()";
constexpr char kCannotEditVorbisText[] =
    "Impossibile aprire un VorbisFilekel in lettura/scrittura!";
constexpr char kOpenExistingCaption[] = "AudioFilekel::OpenExisting()";
constexpr char kNotForVorbisText[] = "Operazione non consentita sui file Vorbis!";
constexpr char kMakeVorbisFromTrackText[] =
    "Per creare un Vorbis File occorre partire da un AudioFilekel esistente!";

constexpr std::uint64_t kFrameBytesOffset = 12; // in the header

constexpr int kVorbisType = 69;
constexpr std::uint32_t kRawType = 99;
constexpr std::uint32_t kAudioCreator = 1;

/// Record counts and numbers are unsigned in the container, and never reach the sign bit.
int AsInt(std::uint32_t value) {
    return static_cast<int>(std::min<std::uint32_t>(value, INT_MAX));
}

} // namespace

AudioFilekel::~AudioFilekel() {
    vorbis_.reset();
}

bool AudioFilekel::OpenForRead(const CString& name) {
    if (IsTrackOpen()) return false;
    header_error_ = {};
    if (VorbisFilekel::IsVorbisFile(name)) return OpenVorbis(name, std::nullopt);
    return OpenContainer(name);
}

bool AudioFilekel::OpenContainer(const CString& name) {
    const bool is_film = IsFilmName(name.View());
    if (ZFilekel::OpenForRead(name, 'A')) {
        const bool believable = IndexIsBelievable();
        if (believable && TakeHeader()) return true;
        if (believable && !is_film) return false; // whole, but of something else
        ZFilekel::Close();
    } else if (!is_film && LastError().fault == Fault::Missing) {
        return false;
    }
    return OpenDamaged(name);
}

bool AudioFilekel::OpenDamaged(const CString& name) {
    std::optional<TrackWindow> window;
    if (IsFilmName(name.View())) {
        const Result<FoundTracks> found = FindFilmTracks(name);
        if (!found || found.Value().directory.audio.Absent()) return false;
        window = found.Value().directory.audio;
        if (VorbisFilekel::IsVorbisTrack(name, *window)) {
            if (!OpenVorbis(name, window)) return false;
            notice_.Show(vorbis_->FileName());
            return true;
        }
    }
    if (!OpenSalvaged(name, window) || !TakeHeader()) return false;
    notice_.Show(FileName());
    return true;
}

bool AudioFilekel::OpenVorbis(const CString& name, const std::optional<TrackWindow>& window) {
    auto vorbis = std::make_shared<VorbisFilekel>();
    const bool opened = vorbis->OpenForRead(name, kAudioHeaderSize, window);
    header_error_ = opened ? TakeVorbisHeader(*vorbis) : vorbis->LastError();
    if (header_error_.fault != Fault::None) {
        return ErrorBox(kCannotOpenVorbisText, Caption{kOpenForReadCaption});
    }
    vorbis_ = std::move(vorbis);
    std::ignore = SetCompressionType(kVorbisType, 0); // needs no length, so it cannot be refused
    return true;
}

Error AudioFilekel::TakeVorbisHeader(const VorbisFilekel& vorbis) {
    const Result<AudioHeader> header = ParseAudioHeader(vorbis.HeaderBuffer());
    const Error error =
        header ? CheckVorbisSoundHeader(header.Value(), vorbis.Description()) : header.Why();
    if (error.fault != Fault::None) return {error.fault, error.offset + kVorbisHeaderOffset};
    header_ = header.Value();
    RepairWaveFormat(header_);
    return {};
}

bool AudioFilekel::OpenExisting(const CString& name) {
    if (IsTrackOpen()) return false;
    header_error_ = {};
    if (VorbisFilekel::IsVorbisFile(name)) {
        return ErrorBox(kCannotEditVorbisText, Caption{kOpenExistingCaption});
    }
    if (!ZFilekel::OpenExisting(name) || !TakeHeader()) return false;
    if (CompressionType() == kRawType) return true;
    std::ignore = ZFilekel::Close(); // nothing was changed
    return false;
}

// Closes a container that is no sound track.
bool AudioFilekel::TakeHeader() {
    const Result<AudioHeader> header = ParseAudioHeader(UserHeader());
    header_error_ = header ? CheckAudioHeader(header.Value()) : header.Why();
    if (header_error_.fault == Fault::None && header.Value().FrameBytes != RecordLength()) {
        header_error_ = {Fault::Mismatch, kFrameBytesOffset};
    }
    if (header_error_.fault != Fault::None) {
        std::ignore = ZFilekel::Close(); // nothing was changed
        return false;
    }
    header_ = header.Value();
    RepairWaveFormat(header_);
    return true;
}

bool AudioFilekel::Create(const CString& name, int type, std::uint32_t sample_rate,
                          std::uint32_t bytes_per_sample, std::uint32_t frames_per_second) {
    if (IsTrackOpen()) return false;
    header_ = BuildWaveFormat(sample_rate, bytes_per_sample, frames_per_second);
    if (type == kVorbisType) return ErrorBox(kMakeVorbisFromTrackText);
    header_error_ = CheckAudioHeader(header_);
    if (header_error_.fault != Fault::None) return false;
    return ZFilekel::Create(name, kAudioHeaderSize, header_.FrameBytes, kAudioSideLength,
                            static_cast<std::uint32_t>(type), kNoKeyInterval, kAudioCreator) &&
           WriteUserHeader(AudioHeaderBytes(header_));
}

bool AudioFilekel::Close() {
    vorbis_.reset();
    notice_.Release();
    return OpenMode() == Mode::Closed || ZFilekel::Close();
}

bool AudioFilekel::ReadNextAudioFrame(int& frame_number, std::uint32_t& capture_time) {
    if (const auto vorbis = vorbis_) {
        if (!vorbis->ReadNextFrame()) {
            frame_number = NoFrameIndex;
            return false;
        }
        frame_number = vorbis->CurrentFrame();
        capture_time = 0;
        return true;
    }
    if (OpenMode() == Mode::Closed || !ReadNextRecord()) {
        frame_number = NoFrameIndex;
        return false;
    }
    SilenceLostFrame();
    frame_number = AsInt(CurrentRecord());
    capture_time = SideCaptureTime();
    return true;
}

bool AudioFilekel::ReadAudioFrame(int frame, std::uint32_t& capture_time) {
    if (const auto vorbis = vorbis_) {
        return frame >= 0 && vorbis->GoToFrame(frame) && vorbis->ReadNextFrame();
    }
    if (!ReadRecord(frame)) return false;
    SilenceLostFrame();
    capture_time = SideCaptureTime();
    return true;
}

bool AudioFilekel::GoToAudioFrame(int frame) {
    // Kept alive: a long way lets windows answer, and one of them may close the track.
    if (const auto vorbis = vorbis_) return vorbis->GoToFrame(frame);
    return GoToRecord(frame);
}

bool AudioFilekel::AppendAudioFrame(ByteView frame_bytes, std::uint32_t capture_time) {
    if (RefusedForVorbis()) return false;
    ByteWriter writer{side_};
    writer.WriteU32(capture_time);
    return AppendRecord(frame_bytes, side_);
}

bool AudioFilekel::ReplaceAudioFrame(int frame, ByteView frame_bytes) {
    if (RefusedForVorbis()) return false;
    if (frame < 0 || frame >= FrameCount()) return false;
    // The frame keeps the side block that it has.
    const std::int64_t position = Position();
    const ByteSpan side = SideBuffer();
    if (!Seek(Index().SidePosition(static_cast<std::uint32_t>(frame))) || !ReadAll(side) ||
        !Seek(position)) {
        return false;
    }
    return ReplaceRecord(frame, frame_bytes, side);
}

bool AudioFilekel::RefusedForVorbis() const {
    if (vorbis_ == nullptr) return false;
    ErrorBox(kNotForVorbisText);
    return true;
}

/// A repeated image stands still; a repeated frame of sound stutters.
void AudioFilekel::SilenceLostFrame() {
    if (!RecordIsLost()) return;
    std::ranges::fill(RecordBuffer(), SilenceByte(header_));
}

std::uint32_t AudioFilekel::SideCaptureTime() const {
    ByteReader reader{SideBuffer()};
    return reader.ReadU32();
}

int AudioFilekel::CurrentAudioFrame() const {
    return vorbis_ != nullptr ? vorbis_->CurrentFrame() : AsInt(CurrentRecord());
}

ByteView AudioFilekel::FrameData() const {
    return vorbis_ != nullptr ? vorbis_->FrameBuffer() : RecordBuffer();
}

const std::uint8_t* AudioFilekel::GetFrameData() const {
    return FrameData().data();
}

int AudioFilekel::FrameCount() const {
    return vorbis_ != nullptr ? vorbis_->FrameCount() : AsInt(RecordCount());
}

bool AudioFilekel::IsTrackOpen() const {
    return vorbis_ != nullptr ? vorbis_->IsOpen() : OpenMode() != Mode::Closed;
}

int AudioFilekel::TrackMode() const {
    return vorbis_ != nullptr ? static_cast<int>(Mode::ForRead) : static_cast<int>(OpenMode());
}

bool AudioFilekel::StartsInsideSample(int frame) const {
    return header_.BytesPerSample == 2 && header_.FrameBytes % 2 == 1 && frame % 2 != 0;
}

} // namespace kelvo
