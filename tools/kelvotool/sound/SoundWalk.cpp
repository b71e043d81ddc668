#include "tools/kelvotool/sound/SoundWalk.h"

#include "tools/kelvotool/report/StopSignal.h"
#include "tools/kelvotool/sound/WavFile.h"

#include <algorithm>
#include <numeric>

namespace kelvo::tool {

namespace {

constexpr std::uint8_t kCentre = 127;
constexpr std::uint8_t kUnmatched = 255;

std::uint64_t FrameBytes(const TrackDescription& track) {
    return track.vorbis ? track.vorbis->FrameBytes : track.container->RecordLength;
}

} // namespace

std::uint64_t SoundFacts::Samples(const TrackDescription& track) const {
    return frames * FrameBytes(track) / track.audio->BytesPerSample;
}

SoundFacts SurveySound(TrackReader& reader) {
    SoundFacts facts{.frames = reader.Count()};
    const bool is_short = reader.Track().audio->BytesPerSample == 1;
    if (!is_short && !reader.IsVorbis()) return facts;
    std::uint64_t whole = 0;
    for (std::uint64_t n = 0; n < reader.Count() && reader.HasMore() && !StopRequested(); ++n) {
        if (!reader.ReadNext()) break;
        if (!reader.RecordIsDamaged()) whole = n + 1;
        const ByteView record = reader.Record();
        facts.needs_wide =
            facts.needs_wide || (is_short && std::ranges::find(record, kUnmatched) != record.end());
    }
    // The last frame may be begun; those behind it were never there.
    if (reader.IsVorbis()) facts.frames = std::min<std::uint64_t>(reader.Count(), whole + 1);
    return facts;
}

SoundWalk::SoundWalk(TrackReader& reader, const SoundFacts& facts, std::vector<Span> spans,
                     SampleForm form, Reporter& reporter)
    : reader_(reader), spans_(std::move(spans)), reporter_(reporter),
      bytes_(reader.Track().audio->BytesPerSample), frame_bytes_(FrameBytes(reader.Track())),
      wide_(bytes_ == 1 &&
            (form == SampleForm::Wide || (form == SampleForm::Wav && facts.needs_wide))),
      shift_(bytes_ == 1 && !wide_ && form == SampleForm::Wav) {
    silence_.assign(frame_bytes_, bytes_ == 1 ? kCentre : std::uint8_t{0});
    if (!spans_.empty()) position_ = spans_.front().first * bytes_;
}

std::uint64_t SoundWalk::Samples() const {
    return std::accumulate(spans_.begin(), spans_.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const Span& span) { return sum + span.Count(); });
}

bool SoundWalk::ReadFrame(std::uint64_t frame) {
    if (read_frame_ == frame) return true;
    const auto number = static_cast<std::uint32_t>(frame);
    const bool is_next = read_frame_ ? *read_frame_ + 1 == frame : frame == 0;
    if (!reader_.HasMore() || !(is_next ? reader_.ReadNext() : reader_.ReadByNumber(number))) {
        if (StopRequested()) return false;
        reporter_.Report(reader_.RecordProblem(number).value_or(
            reader_.Make(ProblemCode::RecordMissing, "the rest of the sound is missing", number)));
        return false;
    }
    read_frame_ = frame;
    if (const auto problem = reader_.RecordProblem(number)) reporter_.Report(*problem);
    return true;
}

ByteView SoundWalk::Next() {
    while (span_ < spans_.size() && position_ >= spans_[span_].end * bytes_) {
        if (++span_ < spans_.size()) position_ = spans_[span_].first * bytes_;
    }
    if (span_ == spans_.size() || frame_bytes_ == 0 || StopRequested()) return {};
    const std::uint64_t frame = position_ / frame_bytes_;
    const std::uint64_t offset = position_ % frame_bytes_;
    const std::uint64_t count =
        std::min(frame_bytes_ - offset, spans_[span_].end * bytes_ - position_);
    reading_ended_ = reading_ended_ || !ReadFrame(frame);
    if (StopRequested()) return {};
    position_ += count;
    const ByteView record = reading_ended_ ? ByteView{silence_} : reader_.Record();
    if (record.size() < frame_bytes_) return Converted(ByteView{silence_}.first(count));
    return Converted(record.subspan(offset, count));
}

ByteView SoundWalk::Converted(ByteView stored) {
    if (wide_) {
        buffer_.resize(stored.size() * 2);
        for (std::size_t i = 0; i < stored.size(); ++i) {
            const auto sample = static_cast<std::uint16_t>(WideSample(stored[i]));
            buffer_[2 * i] = static_cast<std::uint8_t>(sample);
            buffer_[2 * i + 1] = static_cast<std::uint8_t>(sample >> 8U);
        }
        return buffer_;
    }
    if (!shift_) return stored;
    buffer_.assign(stored.begin(), stored.end());
    for (std::uint8_t& byte : buffer_)
        byte = static_cast<std::uint8_t>(std::min(byte + 1, 255));
    return buffer_;
}

} // namespace kelvo::tool
