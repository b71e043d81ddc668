#pragma once
// The records of one track, whichever form it has, one after another or by number.

#include "container/ZFilekel.h"
#include "framework/base/Bytes.h"
#include "media/VorbisFilekel.h"
#include "tools/kelvotool/film/FilmDescription.h"
#include "tools/kelvotool/report/Reporter.h"

#include <cstdint>
#include <optional>

namespace kelvo::tool {

class TrackReader {
public:
    /// @param track  must outlive the reader
    TrackReader(const FilmDescription& film, const TrackDescription& track);

    /// @return what keeps the track from being read
    std::optional<Problem> Open();

    std::uint32_t Count() const;
    /// False once the sound of a Vorbis stream has ended before its frames: the rest is missing.
    bool HasMore() const;
    /// @return false when the system refuses, and at the end
    bool ReadNext();
    bool ReadByNumber(std::uint32_t record);

    /// The decoded record; lives until the next read.
    ByteView Record() const;
    /// Empty for the Vorbis form.
    ByteView Side() const;
    /// Bytes of the payload in the file; 0 for the Vorbis form.
    std::uint32_t StoredLength(std::uint32_t record) const;
    /// Whether the record that was read last is not what it should be.
    bool RecordIsDamaged() const;
    /// The same and everything else that was found wrong with it.
    std::optional<Problem> RecordProblem(std::uint32_t record) const;
    /// Whether a record can be decoded by itself.
    bool IsDifferential() const { return !IsVorbis() && container_.IsDifferential(); }
    bool IsVorbis() const { return track_.form == TrackForm::Vorbis; }

    ZFilekel& Container() { return container_; }
    const ZFilekel& Container() const { return container_; }
    const VorbisFilekel& Vorbis() const { return vorbis_; }
    const TrackDescription& Track() const { return track_; }
    const FilmDescription& Film() const { return film_; }

    /// A problem of this track.
    Problem Make(ProblemCode code, std::string what, std::optional<std::uint32_t> record = {},
                 std::optional<std::uint64_t> offset = {}, ExitCode severity = kDamaged) const;

private:
    std::optional<Problem> OpenContainer();
    std::string Remedy() const;
    std::optional<Problem> OpenVorbis();

    const FilmDescription& film_;
    const TrackDescription& track_;
    ZFilekel container_;
    VorbisFilekel vorbis_;
    std::uint32_t incomplete_in_a_row_ = 0;
};

} // namespace kelvo::tool
