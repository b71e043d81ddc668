#include "container/UndoFile.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"
#include "framework/base/Bytes.h"
#include "platform/base/file_calls.h"
#include "platform/base/files.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

namespace {

using platform::Claim;
using platform::OwnFile;

constexpr const char* kSuffix = ".undo";

constexpr std::array<std::uint8_t, platform::kOwnMarkBytes> kMark = {
    'K', 'e', 'l', 'v', 'o', ' ', 'u', 'n', 'd', 'o', ' ', 'f', 'i', 'l', 'e', '\n'};

// The file: mark, then the old state (checksum, length of the container's file, header, user
// header, index), then, once the new index is in its place, the announced state (checksum, header).
constexpr std::size_t kOldState = kMark.size();
constexpr std::size_t kChecksumBytes = 8;
constexpr std::size_t kLengthBytes = 8;
/// What an undo file holds beyond bytes of its container.
constexpr std::size_t kOverhead =
    kOldState + 2 * kChecksumBytes + kLengthBytes + kContainerHeaderBytes;

static_assert(std::endian::native == std::endian::little,
              "index values are written as they lie in memory");

class Checksum { // FNV-1a, 64 bits: against accidents, not against people
public:
    void Add(ByteView bytes) {
        for (const std::uint8_t byte : bytes)
            value_ = (value_ ^ byte) * 0x100000001B3U;
    }
    std::uint64_t Value() const { return value_; }

private:
    std::uint64_t value_ = 0xCBF29CE484222325U;
};

ByteView BytesOf(std::span<const std::uint32_t> values) {
    return {reinterpret_cast<const std::uint8_t*>(values.data()), values.size_bytes()};
}

std::array<std::uint8_t, 8> NumberBytes(std::uint64_t number) {
    std::array<std::uint8_t, 8> bytes{};
    ByteWriter{bytes}.WriteU64(number);
    return bytes;
}

/// What an undo file holds; the views live as long as the bytes.
struct SavedState {
    std::uint64_t length = 0;
    ByteView header;
    ByteView user_header;
    ByteView index;
    std::uint32_t index_offset = 0;
    ByteView new_header; ///< empty until it was announced
};

std::optional<SavedState> ParseSaved(ByteView bytes) {
    ByteReader reader{bytes};
    reader.Seek(kOldState);
    const std::uint64_t checksum = reader.ReadU64();
    const ByteView length = reader.ReadBytes(kLengthBytes);
    SavedState saved;
    saved.header = reader.ReadBytes(kContainerHeaderBytes);
    const Result<ContainerHeader> header = ParseContainerHeader(saved.header);
    if (!header) return std::nullopt;
    saved.user_header = reader.ReadBytes(header.Value().UserHeaderSize);
    saved.index = reader.ReadBytes(header.Value().IndexBytes());
    saved.index_offset = header.Value().IndexOffset;
    saved.length = ByteReader{length}.ReadU64();

    Checksum found;
    found.Add(length);
    found.Add(saved.header);
    found.Add(saved.user_header);
    found.Add(saved.index);
    if (!reader.Ok() || found.Value() != checksum) return std::nullopt;

    const std::uint64_t new_checksum = reader.ReadU64();
    const ByteView new_header = reader.ReadBytes(kContainerHeaderBytes);
    Checksum new_found;
    new_found.Add(new_header);
    if (reader.Ok() && new_found.Value() == new_checksum) saved.new_header = new_header;
    return saved;
}

enum class Stand : std::uint8_t {
    Old,      ///< the edit never finished: what was saved must be put back
    Finished, ///< the new header is in the file: the edit stands
    Other,    ///< not the file that was saved
};

Stand StandOf(ByteView on_disk, std::uint64_t length, const SavedState& saved) {
    if (length < saved.index_offset) return Stand::Other;
    if (std::ranges::equal(on_disk, saved.header)) return Stand::Old;
    if (saved.new_header.empty()) return Stand::Other;
    if (std::ranges::equal(on_disk, saved.new_header)) return Stand::Finished;
    // A header that was cut in the writing is made of bytes of both.
    for (std::size_t i = 0; i < on_disk.size(); ++i) {
        if (on_disk[i] != saved.header[i] && on_disk[i] != saved.new_header[i]) return Stand::Other;
    }
    return Stand::Old;
}

bool WriteAll(int file, std::uint64_t offset, ByteView bytes) {
    return platform::WriteFileAt(file, offset, bytes.data(), bytes.size()) ==
           static_cast<std::int64_t>(bytes.size());
}

bool PutBack(int file, const SavedState& saved, std::uint64_t length) {
    return WriteAll(file, saved.index_offset, saved.index) &&
           WriteAll(file, kContainerHeaderBytes, saved.user_header) &&
           WriteAll(file, 0, saved.header) &&
           (length <= saved.length || platform::SetFileSize(file, saved.length)) &&
           platform::SyncFile(file);
}

/// For reading, where it may not be written: an undo file that is another film's harms nobody then.
int OpenFilm(const std::string& name) {
    const int file = platform::CurrentFileCalls().open(name.c_str(), O_RDWR | O_CLOEXEC, 0);
    if (file >= 0) return file;
    return platform::CurrentFileCalls().open(name.c_str(), O_RDONLY | O_CLOEXEC, 0);
}

std::optional<std::vector<std::uint8_t>> ReadWhole(int file) {
    const std::int64_t size = platform::FileSize(file);
    if (size < 0) return std::nullopt;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    if (platform::ReadFileAt(file, 0, bytes.data(), bytes.size()) != size) return std::nullopt;
    return bytes;
}

Error RecoverOpened(int file, OwnFile& undo) {
    std::array<std::uint8_t, kContainerHeaderBytes> header{};
    const std::int64_t length = platform::FileSize(file);
    if (platform::ReadFileAt(file, 0, header.data(), header.size()) !=
        static_cast<std::int64_t>(header.size())) {
        return {}; // too short to be the file that was saved
    }
    const auto size = static_cast<std::uint64_t>(length);
    const std::int64_t undo_size = platform::FileSize(undo.Handle());
    if (undo_size > length + static_cast<std::int64_t>(kOverhead)) return {}; // another film's
    const std::optional<std::vector<std::uint8_t>> bytes = ReadWhole(undo.Handle());
    if (!bytes) return {Fault::Unreadable, 0};
    // Where it is not whole, the kill came while it was saved: nothing had been overwritten yet.
    if (const std::optional<SavedState> saved = ParseSaved(*bytes)) {
        const Stand stand = StandOf(header, size, *saved);
        if (stand == Stand::Other) return {};
        if (stand == Stand::Old && !PutBack(file, *saved, size)) {
            return {Fault::Unwritable, saved->index_offset};
        }
    }
    const std::string name = undo.Name();
    undo.Remove();
    platform::SyncFolderOf(name);
    return {};
}

Fault FaultOf(Claim claim) {
    switch (claim) {
    case Claim::Taken:
        return Fault::None;
    case Claim::Busy:
        return Fault::Busy;
    case Claim::Foreign:
        return Fault::Mismatch;
    case Claim::Failed:
        break;
    }
    return Fault::Unwritable;
}

} // namespace

Error UndoFile::Recover(const std::string& name) {
    OwnFile undo;
    const Claim claim = undo.Find(name + kSuffix, kMark);
    if (claim == Claim::Busy) return {Fault::Busy, 0};
    if (claim != Claim::Taken) return {};
    const int file = OpenFilm(name);
    if (file < 0) return {}; // whoever opens the film hears why
    const Error error = RecoverOpened(file, undo);
    platform::CurrentFileCalls().close(file);
    return error;
}

bool UndoFile::IsLeftBeside(const std::string& name) {
    return OwnFile::StandsAt(name + kSuffix, kMark);
}

Error UndoFile::Save(const std::string& name, const ContainerHeader& header, ByteView user_header,
                     const RecordIndex& index, std::uint64_t length) {
    const Claim claim = file_.Make(name + kSuffix, kMark, name);
    if (claim != Claim::Taken) return {FaultOf(claim), 0};

    const auto header_bytes = HeaderBytes(header);
    const auto length_bytes = NumberBytes(length);
    const ByteView offsets = BytesOf(index.Offsets());
    const ByteView side_positions = BytesOf(index.SidePositions());
    Checksum checksum;
    bool written = true;
    end_ = kOldState + kChecksumBytes;
    for (const ByteView part :
         {ByteView{length_bytes}, ByteView{header_bytes}, user_header, offsets, side_positions}) {
        checksum.Add(part);
        written = written && file_.WriteAt(end_, part);
        end_ += part.size();
    }
    written = written && file_.WriteAt(kOldState, NumberBytes(checksum.Value()));
    if (!written || !file_.Sync() || !platform::SyncFolderOf(file_.Name())) {
        file_.Remove();
        return {Fault::Unwritable, 0};
    }
    return {};
}

Error UndoFile::Announce(const ContainerHeader& new_header) {
    const auto header_bytes = HeaderBytes(new_header);
    Checksum checksum;
    checksum.Add(header_bytes);
    if (file_.WriteAt(end_, NumberBytes(checksum.Value())) &&
        file_.WriteAt(end_ + kChecksumBytes, header_bytes) && file_.Sync()) {
        return {};
    }
    return {Fault::Unwritable, 0};
}

void UndoFile::Remove() {
    if (!file_.IsOpen()) return;
    const std::string name = file_.Name();
    file_.Remove();
    platform::SyncFolderOf(name);
}

void UndoFile::Abandon() {
    file_.Close();
}

} // namespace kelvo
