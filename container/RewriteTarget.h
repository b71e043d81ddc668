#pragma once
// The complete new file that a rewrite writes beside the old one and then puts in its place: its
// name, its containers and whole tracks one after the other, and the limit of every file. What goes
// into it is decided by whoever rewrites.

#include "container/AVDirectory.h"
#include "container/Compressionekel.h"
#include "container/ContainerHeader.h"
#include "container/RecordBytes.h"
#include "container/RecordIndex.h"
#include "framework/base/Bytes.h"
#include "framework/base/Result.h"
#include "platform/base/durable_files.h"
#include "platform/base/types.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

/// The name of the temporary that a rewrite of `name` writes: its folder, its title, ".tmp".
std::string TemporaryNameFor(const std::string& name);

class RewriteTarget {
public:
    /// What the new file begins with.
    enum class Kind : std::uint8_t {
        Track, ///< the container itself
        Film,  ///< a directory (.kva), then the tracks
    };

    /// Nothing is left of it unless it was put in place or kept.
    ~RewriteTarget() = default;
    RewriteTarget() = default;
    RewriteTarget(const RewriteTarget&) = delete;
    RewriteTarget& operator=(const RewriteTarget&) = delete;

    /// Makes the temporary.
    /// @param destination  the file whose place it will take; the system's own name
    /// @return Busy when another rewrite has the temporary, Mismatch when a user's own file has its
    ///         name, Unwritable when the system refuses
    [[nodiscard]] Error Begin(const std::string& destination, Kind kind);

    /// Bytes that whoever rewrites will still add behind the next container; the limit counts them.
    void ReserveBehind(std::uint64_t bytes) { reserved_behind_ = bytes; }

    /// Appends bytes of another file, verbatim.
    /// @param file  open for reading; its position stays
    [[nodiscard]] Error CopyWindow(HFILE file, const TrackWindow& window);
    [[nodiscard]] Error AppendBytes(ByteView bytes);

    // One container: begin, records, end. Two may follow each other.

    /// @param header       its counts and offsets are set here
    /// @param user_header  cut to UserHeaderSize, or filled up with zeros
    /// @return BadValue when the type cannot code records of this length (and records follow)
    [[nodiscard]] Error BeginContainer(const ContainerHeader& header, ByteView user_header);
    /// @return TooLarge when the file, with its index, would pass 2147483647 bytes
    [[nodiscard]] Error AppendRecord(ByteView payload, ByteView side);
    /// A payload that is coded in the container's type already.
    [[nodiscard]] Error AppendStored(ByteView stored, ByteView side);
    /// Writes index and header.
    [[nodiscard]] Error EndContainer();
    /// Where the container that was ended last lies.
    TrackWindow LastContainer() const { return {container_start_, container_end_}; }

    /// An index that was made elsewhere.
    [[nodiscard]] Error AppendIndex(const RecordIndex& index);

    /// Fills in the first bytes of a film.
    [[nodiscard]] Error PutDirectory(const AVDirectory& directory);
    /// Bytes written so far.
    std::uint64_t Size() const { return size_; }

    /// Syncs and closes the file, each result checked. Afterwards only the place is missing.
    [[nodiscard]] Error Finish();
    /// Renames it over the destination and syncs the folder.
    /// @return false when the system refuses: the finished file is still there, under its own name
    [[nodiscard]] bool PutInPlace();
    /// As PutInPlace, but never replaces a file.
    [[nodiscard]] bool PutWhereNothingIs();
    /// Leaves the finished file under its own name, to the user.
    void Keep() { temporary_.Keep(); }
    /// Removes it.
    void Discard() { temporary_.Discard(); }

    const std::string& TemporaryName() const { return temporary_.Name(); }

private:
    Error AppendFrame(ByteView frame);
    Error Flush();

    platform::DurableTemporary temporary_;
    std::string destination_;
    std::vector<std::uint8_t> buffer_; ///< the last bytes, not yet written
    std::uint64_t size_ = 0;           ///< written and buffered
    std::uint64_t reserved_behind_ = 0;

    // The container that is being written.
    Compressionekel catalogue_;
    ContainerHeader header_;
    RecordIndex index_;
    RecordBytes frame_;
    std::uint32_t container_start_ = 0;
    std::uint32_t container_end_ = 0;
};

} // namespace kelvo
