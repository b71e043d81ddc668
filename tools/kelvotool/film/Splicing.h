#pragma once
// Makes one track of pieces of others. A stored record is copied wherever it decodes to the same at
// its new place: always where records stand by themselves; in a differential type behind the very
// record that it was coded behind. Elsewhere it is decoded and becomes a key record, so that every
// record whose number divides by the key interval is one. Nothing is lost either way.

#include "container/Compressionekel.h"
#include "container/ContainerHeader.h"
#include "container/RecordBytes.h"
#include "container/RewriteTarget.h"
#include "tools/kelvotool/film/TrackReader.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace kelvo::tool {

/// A track that pieces are taken from: one reader for what is stored, one for what is decoded.
class PieceSource {
public:
    PieceSource(const FilmDescription& film, const TrackDescription& track)
        : stored_(film, track), decoded_(film, track) {}

    /// @return what keeps it from being read
    std::optional<Problem> Open();
    const TrackDescription& Track() const { return decoded_.Track(); }
    bool IsVorbis() const { return decoded_.IsVorbis(); }
    /// The audio frame that an image is tied to; nothing for one that never was.
    std::optional<std::uint32_t> SyncNumberOf(std::uint32_t image);

private:
    friend class TrackSplicer;
    TrackReader stored_;
    TrackReader decoded_;
};

/// Changes the side block of a record on its way.
using SideChange = std::function<void(std::uint32_t record, ByteSpan side)>;

class TrackSplicer {
public:
    /// @param header  of the new container, its record count about what it will be
    TrackSplicer(RewriteTarget& target, const ContainerHeader& header, Reporter& reporter);

    Error Begin(ByteView user_header);
    /// Records [first, end) of a track of the same record length. Damaged ones are reported and
    /// come along.
    Error Append(PieceSource& source, std::uint32_t first, std::uint32_t end,
                 const SideChange& change = {});
    /// One record of equal bytes, with an empty side block.
    Error AppendPlain(std::uint8_t value);
    Error End() { return target_.EndContainer(); }

    std::uint32_t Count() const { return count_; }
    std::uint32_t CodedCount() const { return coded_; }

private:
    bool CanCopy(const PieceSource& source, std::uint32_t record) const;
    Error Copy(PieceSource& source, std::uint32_t record, const SideChange& change);
    Error Code(PieceSource& source, std::uint32_t record, const SideChange& change);
    Error CodeRecord(ByteView record, ByteView side);
    bool MustBeKey() const;

    RewriteTarget& target_;
    ContainerHeader header_;
    Reporter& reporter_;
    bool differential_;
    bool forces_key_;
    Compressionekel catalogue_;
    RecordBytes frame_;
    std::vector<std::uint8_t> side_;
    std::vector<std::uint8_t> plain_;
    std::uint32_t count_ = 0; ///< records so far
    std::uint32_t coded_ = 0; ///< of them, not copied
    // The record that was written last.
    const PieceSource* last_source_ = nullptr;
    std::uint32_t last_record_ = 0;
    bool last_was_coded_ = false;
};

/// Whether two tracks can be pieces of one without coding anything again.
bool HaveSameCoding(const ContainerHeader& header, const TrackDescription& track);

} // namespace kelvo::tool
