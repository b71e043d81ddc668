#pragma once
// The record container: every track is one. It opens, reads, appends to, edits and rewrites a file
// of records that are each compressed by one type of the catalogue. What the records mean belongs
// to the tracks; how a rewrite reaches the disk without ever losing a film, to RewriteTarget and
// UndoFile.

#include "container/AVDirectory.h"
#include "container/Compressionekel.h"
#include "container/ContainerHeader.h"
#include "container/ProgressOwner.h"
#include "container/RecordBytes.h"
#include "container/RecordIndex.h"
#include "container/RecordMap.h"
#include "container/UndoFile.h"
#include "framework/base/Bytes.h"
#include "framework/base/ChFile.h"
#include "framework/base/Result.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace kelvo {

class RewriteTarget;

/// What a rewrite changes; 0 keeps the container's own value.
struct RewriteParameters {
    std::uint32_t user_header_size = 0;
    std::uint32_t compression_type = 0;
    std::uint32_t key_interval = 0;
    std::uint32_t creator_value = 0;
    /// user_header_size bytes; may be empty: the new user header is then zeros. Used only together
    /// with a new size.
    ByteView user_header{};
};

class ZFilekel : public Compressionekel, public ChFile {
public:
    enum class Mode : int {
        Closed = 0,
        ForRead = 1,    ///< sequential and random reading
        HeaderOnly = 2, ///< random reading; header written at close (and the index, if it moved)
        Existing = 3,   ///< random reading, appending and editing
        New = 4,        ///< made by Create: appending
        IndexRebuild = 5,
    };

    ZFilekel() = default;
    /// Closes, with the question when the container was modified.
    ~ZFilekel() override;

    // Opening. A file that is damaged, missing or claims more than it holds gives false and leaves
    // the object closed, without a box; LastError() says why. An interrupted edit that a kill left
    // behind is undone first.

    /// @param selector  of a film (.kva): 'A' the sound, 'V' the picture, 'N' the bare file
    [[nodiscard]] bool OpenForRead(const CString& name, char selector = 'A');
    /// As OpenForRead, for a container that does not open or whose index is not to be believed: its
    /// index is made in memory, from the records that are there, and the file is only read. Lost
    /// records keep their numbers; reading one leaves the record before it in RecordBuffer(), and
    /// no box is shown for any.
    /// @param window  where the container lies, as far as the file goes; none: the bare file
    /// @return false when no record can be found
    [[nodiscard]] bool OpenSalvaged(const CString& name, const std::optional<TrackWindow>& window);
    /// For reading, the container that lies in a part of a file whatever the file's name.
    [[nodiscard]] bool OpenForReadIn(const CString& name, const TrackWindow& window);
    /// For reading and editing. A differential container is recompressed to type 9 first, if the
    /// user agrees. A film (.kva) is refused: its tracks cannot grow in place.
    [[nodiscard]] bool OpenExisting(const CString& name);
    /// Any of the modes 1, 2, 3 and 5. Mode 5 makes the index of the file anew and leaves the
    /// object closed.
    [[nodiscard]] bool OpenInMode(const CString& name, Mode mode, char selector = 'A');
    /// Makes a new container, or empties the file of that name; the user header is zeros until
    /// WriteUserHeader.
    [[nodiscard]] bool Create(const CString& name, std::uint32_t user_header_size,
                              std::uint32_t record_length, std::uint32_t side_length,
                              std::uint32_t type, std::uint32_t key_interval,
                              std::uint32_t creator_value);
    /// @param user_header  UserHeaderSize() bytes
    [[nodiscard]] bool WriteUserHeader(ByteView user_header);

    // Reading. A record that is damaged shows "FILE CORROTTO!" and still gives true, with what
    // could be decoded in RecordBuffer() and the fault in LastError().

    /// The record at CurrentRecord(); false without a box at the end.
    [[nodiscard]] bool ReadNextRecord();
    /// @param record  negative or beyond the end gives false
    [[nodiscard]] bool ReadRecord(int record);
    /// The stored payload as it is, which lives until the next read or append.
    /// @param stored_length  out: its bytes, cut to what is there
    /// @return null when there is no such record
    const std::uint8_t* ReadRawRecord(int record, std::uint32_t& stored_length);
    /// Clamps the number into what there is; ReadNextRecord then returns that record.
    bool GoToRecord(int record);

    // Appending and editing.

    /// @param payload  RecordLength() bytes
    /// @param side     SideLength() bytes
    [[nodiscard]] bool AppendRecord(ByteView payload, ByteView side);
    [[nodiscard]] bool ReplaceRecord(int record, ByteView payload, ByteView side);
    [[nodiscard]] bool InsertRecord(int record, ByteView payload, ByteView side);
    /// The records [first, end); record 0 of a whole container stays.
    [[nodiscard]] bool DeleteRecords(int first, int end);

    // Rewriting: a complete temporary file, which then takes the place of the old one. Whatever
    // fails before that leaves the old file as it was and no temporary behind.

    /// The open container in other parameters; it is open again afterwards, for editing where the
    /// type allows it. A track of a film (.kva) is rewritten with the whole film around it and is
    /// then open for reading, as the same track.
    /// @param owner  may be null
    [[nodiscard]] bool Recompress(const RewriteParameters& parameters, ProgressOwner* owner);
    /// The same for a file that is not open; the object must be closed and is closed again.
    [[nodiscard]] bool RecompressFile(const CString& name, const RewriteParameters& parameters,
                                      ProgressOwner* owner, char selector = 'A');
    /// The modified container without its dead bytes; closed afterwards, whatever the result.
    [[nodiscard]] bool RecompressOnClose(bool with_dialog);
    /// The file as it was when it was opened; a file just made is deleted. Closed afterwards.
    void AbandonChanges();
    /// Finishes the file. A modified container asks whether to rewrite it.
    bool Close();

    // Asking.

    std::uint32_t RecordCount() const { return header_.RecordCount; }
    std::uint32_t RecordLength() const { return header_.RecordLength; }
    std::uint32_t SideLength() const { return header_.SideLength; }
    std::uint32_t UserHeaderSize() const { return header_.UserHeaderSize; }
    std::uint32_t CompressionType() const { return header_.CompressionType; }
    std::uint32_t KeyInterval() const { return header_.KeyInterval; }
    std::uint32_t CreatorValue() const { return header_.CreatorValue; }
    const ContainerHeader& Header() const { return header_; }
    Mode OpenMode() const { return mode_; }
    bool IsModified() const { return modified_; }
    /// Number of the record that the next sequential read returns.
    std::uint32_t CurrentRecord() const { return current_record_; }
    /// The decoded payload of the last record; lives until the container is closed.
    ByteSpan RecordBuffer() { return record_buffer_.Span(); }
    ByteView RecordBuffer() const { return record_buffer_.View(); }
    /// The side block of the last record.
    ByteSpan SideBuffer() { return side_buffer_.Span(); }
    ByteView SideBuffer() const { return side_buffer_.View(); }
    /// The user header as read, or as last written.
    ByteSpan UserHeader() { return user_header_.Span(); }
    ByteView UserHeader() const { return user_header_.View(); }
    /// True when the last record read was not all there, or did not decode to its length; what
    /// could be decoded stands in RecordBuffer() over what was there before.
    bool RecordIsDamaged() const { return record_is_damaged_; }
    /// What was found in place of an index, after OpenSalvaged; else null.
    const RecordMap* Salvaged() const { return salvaged_ ? &*salvaged_ : nullptr; }
    /// True when the record read last is not there at all.
    bool RecordIsLost() const { return record_is_lost_; }
    /// After an opening: whether the entries of the index fit each other or at least their records.
    /// Looks at the records only where the entries do not fit.
    bool IndexIsBelievable();
    /// Where a record lies, from the start of the file (not of the window).
    /// @param record  at most RecordCount(), which is the end of the records
    std::uint64_t RecordFileOffset(std::uint32_t record) const;
    /// Bytes that the index gives to a record's payload.
    std::uint32_t StoredLength(std::uint32_t record) const;
    const RecordIndex& Index() const { return index_; }
    /// Why the last operation failed or what it found damaged; Fault::None when nothing was. Its
    /// offset counts from the start of the file. Kept when the object closes.
    const Error& LastError() const { return last_error_; }

private:
    /// Which track of which film is open.
    struct FilmTrack {
        AVDirectory directory;
        char selector = 'A';
    };
    /// One record as the file has it, in the frame buffer.
    struct StoredRecord {
        std::uint64_t file_offset = 0;
        std::uint32_t stored_length = 0; ///< as the record says
        std::size_t available = 0;       ///< bytes of the payload that are in CompressedBuffer
        bool side_available = false;
        bool as_indexed = false; ///< whole, and where and as long as the index says
    };

    // Opening (ContainerOpening.cpp)
    bool OpenHandle(const CString& name, Mode mode);
    bool EnterWindow(Mode mode, char selector);
    bool ReadHeader();
    bool ReadIndex(Mode mode);
    bool CheckRecordLength(std::uint64_t largest_stored);
    std::uint64_t LargestStoredLength() const;
    bool CheckIndexForEditing();
    bool KeepOpening();
    bool AllocateBuffers();
    bool FinishOpening(Mode mode);
    bool RecompressForEditing();

    // Opening damaged files (ContainerSalvage.cpp)
    bool MapDamagedFile();
    bool IsLost(std::uint32_t record) const;
    bool PassLostRecord();
    std::uint32_t FirstToDecode(std::uint32_t record) const;

    // Making the index anew in mode 5 (ContainerIndexRebuild.cpp)
    bool RebuildIndexInPlace();
    bool ScanRecords();
    bool ScanRecord();
    bool WriteRebuiltFile();

    // Reading (ContainerReading.cpp)
    bool ReadHere();
    bool ReadStored(StoredRecord& stored);
    bool ReadStoredAsIndexed(StoredRecord& stored);
    bool ReadStoredAsItSays(StoredRecord& stored);
    bool DecodeStored(const StoredRecord& stored);
    void TakeSideBlock(const StoredRecord& stored);
    std::int64_t EntryOffset();
    bool FollowIndex(StoredRecord& stored);
    bool ReadRun(std::uint32_t first, std::uint32_t count);
    bool SeekToRecord(std::uint32_t record);
    std::uint64_t FileOffset() const;

    // Writing and closing (ZFilekel.cpp, ContainerEditing.cpp)
    bool CanAppend(ByteView payload, ByteView side);
    bool WriteFrame(ByteView frame);
    bool SaveUndo();
    bool CheckEditing(int record);
    bool WriteIndexAndHeader();
    bool ReplaceIndexAndHeader();
    bool RestoreOpening();
    bool CloseClean();
    bool CloseModified();
    void GiveChangesUp();
    bool Shut(bool result);
    void Reset();

    // Rewriting (ContainerRewriting.cpp)
    /// Who is told how far a rewrite is; false stops it.
    struct RewriteProgress {
        std::function<bool()> begin;
        std::function<bool(std::uint32_t record)> step;
    };
    static RewriteProgress ProgressOf(ProgressOwner* owner, std::uint32_t record_count,
                                      const RewriteTarget& target);
    Error WriteRewritten(RewriteTarget& target, const RewriteParameters& parameters,
                         const RewriteProgress& progress);
    Error WriteRewrittenTrack(RewriteTarget& target, const ContainerHeader& header,
                              ByteView user_header, const RewriteProgress& progress);
    Error WriteRewrittenFilm(RewriteTarget& target, const ContainerHeader& header,
                             ByteView user_header, const RewriteProgress& progress);
    bool FailRewrite(RewriteTarget& target, const Error& error);
    bool PutInPlace(RewriteTarget& target, const std::string& name);
    void ReplaceBy(RewriteTarget& target);

    bool Fail(Fault fault, std::uint64_t offset = 0);
    bool Fail(const Error& error) { return Fail(error.fault, error.offset); }

    // Fixed while a file is open, but for the counts of header_ and index_, which grow.
    Mode mode_ = Mode::Closed;
    std::string system_name_; ///< of the file, as the file system spells it
    ContainerHeader header_;
    ContainerHeader header_on_disk_;
    std::optional<FilmTrack> film_;
    RecordIndex index_;
    std::optional<RecordMap> salvaged_; ///< its index has become index_
    RecordIndex opening_index_;         ///< only where edits can be undone
    RecordBytes opening_user_header_;   ///< only there, too
    std::int64_t opening_length_ = 0;

    // One buffer each for everything that is read or written.
    RecordBytes record_buffer_;
    RecordBytes side_buffer_;
    RecordBytes user_header_;
    RecordBytes frame_buffer_; ///< stored length, CompressedBuffer, side block: as in the file

    std::uint32_t current_record_ = 0;
    bool record_is_damaged_ = false;
    bool record_is_lost_ = false;
    bool modified_ = false;
    UndoFile undo_;
    Error last_error_;
};

} // namespace kelvo
