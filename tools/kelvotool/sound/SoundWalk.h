#pragma once
// The samples of a sound track in the ranges that were asked for, as a WAV file holds them.

#include "framework/base/Bytes.h"
#include "tools/kelvotool/film/Ranges.h"
#include "tools/kelvotool/film/TrackReader.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo::tool {

/// What must be known of a sound before its first sample is written.
struct SoundFacts {
    std::uint64_t frames = 0; ///< that are there
    bool needs_wide = false;  ///< 8-bit samples that no 8-bit WAV file can hold exactly

    /// Samples in whole frames.
    std::uint64_t Samples(const TrackDescription& track) const;
};

/// Decodes the sound once where that is the only way to know: a Vorbis stream may end early, and
/// bytes must be looked at. What is damaged is not reported.
/// @param reader  an own one: its place is lost
SoundFacts SurveySound(TrackReader& reader);

/// How samples come out.
enum class SampleForm : std::uint8_t {
    Stored, ///< as the track holds them
    Wav,    ///< as a WAV file holds them; see WavFile.h
    Wide,   ///< 16 bits in any case
};

class SoundWalk {
public:
    /// @param reader  open; nobody else reads it meanwhile
    /// @param spans   in samples
    SoundWalk(TrackReader& reader, const SoundFacts& facts, std::vector<Span> spans,
              SampleForm form, Reporter& reporter);

    std::uint32_t BytesPerSample() const { return wide_ ? 2 : bytes_; }
    /// All that Next() will give together.
    std::uint64_t Samples() const;
    /// The next samples; lives until the next call. What is missing is silence, after it was
    /// reported. Empty at the end.
    ByteView Next();

private:
    bool ReadFrame(std::uint64_t frame);
    ByteView Converted(ByteView stored);

    TrackReader& reader_;
    std::vector<Span> spans_;
    Reporter& reporter_;
    std::uint32_t bytes_; ///< a sample in the track
    std::uint64_t frame_bytes_;
    bool wide_ = false;          ///< bytes become 16 bits
    bool shift_ = false;         ///< bytes get another centre
    bool reading_ended_ = false; ///< the rest is silence
    std::size_t span_ = 0;
    std::uint64_t position_ = 0; ///< byte of the track
    std::optional<std::uint64_t> read_frame_ = {};
    std::vector<std::uint8_t> buffer_;
    std::vector<std::uint8_t> silence_;
};

} // namespace kelvo::tool
