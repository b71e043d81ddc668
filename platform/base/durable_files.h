#pragma once
// Files that stand beside a user's file while it is rewritten or edited: created exclusively,
// locked, recognisable when a kill leaves one behind, and put in another file's place so that
// after a kill or a power cut either the old file or the new one is there, whole. On top of the
// replaceable table of file_calls.h. Names are the system's own, as file_names.h gives them.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <sys/stat.h>

namespace kelvo::platform {

/// Bytes by which an own file is recognised; another for each use.
inline constexpr std::size_t kOwnMarkBytes = 16;
using OwnMark = std::span<const std::uint8_t, kOwnMarkBytes>;

/// How taking a name for an own file ended.
enum class Claim : std::uint8_t {
    Taken,
    Busy,    ///< another holder has it, in this process or in another
    Foreign, ///< a user's own file of that name; it was not touched
    Failed,  ///< the system refused, or (without making one) there is no such file
};

/// A file of ours of a given name. Not for two threads at once.
class OwnFile {
public:
    OwnFile() = default;
    ~OwnFile(); ///< closes and unlocks; the file stays
    OwnFile(OwnFile&& other) noexcept;
    OwnFile& operator=(OwnFile&& other) noexcept;
    OwnFile(const OwnFile&) = delete;
    OwnFile& operator=(const OwnFile&) = delete;

    /// Makes the file exclusively, locks it and puts the mark at its start. One that a kill left is
    /// taken over and emptied.
    /// @param permissions_of  the file whose content it will hold: never more people may read this
    ///                        one than that. Ours by default when there is no such file
    [[nodiscard]] Claim Make(const std::string& name, OwnMark mark,
                             const std::string& permissions_of = {});
    /// Locks one that a kill left; its content stays. One without the mark at its start that is
    /// ours all the same (the kill came first) counts as Taken.
    [[nodiscard]] Claim Find(const std::string& name, OwnMark mark);
    /// Whether one stands there that Find would take, or another holder has. Takes no lock, so that
    /// nobody who does finds it busy.
    [[nodiscard]] static bool StandsAt(const std::string& name, OwnMark mark);

    bool IsOpen() const { return file_ >= 0; }
    int Handle() const { return file_; }
    const std::string& Name() const { return name_; }

    /// Writes all of it at an offset, or fails.
    [[nodiscard]] bool WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes);
    [[nodiscard]] bool Sync();
    /// Closes and unlocks; the file stays.
    /// @return false when the system reports that data did not reach the file
    bool Close();
    /// Deletes the file (if the name still means it) and closes it.
    void Remove();

private:
    friend class DurableTemporary;
    Claim TakeOver(OwnMark mark);
    void MatchPermissions(const struct stat& model);
    bool NameIsOurs() const;
    bool LooksOurs(OwnMark mark) const;

    int file_ = -1;
    std::string name_;
};

/// A complete file in the making, which then takes another file's place (or a new name) at once.
/// Until then it can be recognised as ours whenever a kill comes.
class DurableTemporary {
public:
    DurableTemporary() = default;
    ~DurableTemporary() { Discard(); }
    DurableTemporary(const DurableTemporary&) = delete;
    DurableTemporary& operator=(const DurableTemporary&) = delete;

    /// @param permissions_of  as OwnFile::Make
    [[nodiscard]] Claim Make(const std::string& name, const std::string& permissions_of = {});
    bool IsOpen() const { return file_.IsOpen(); }
    const std::string& Name() const { return file_.Name(); }
    /// Bytes beyond the greatest offset written.
    std::uint64_t Size() const { return size_; }

    /// Writes all of it, at any offset and in any order.
    [[nodiscard]] bool WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes);

    /// Everything is written: syncs it and closes it, each result checked. The lock stays until the
    /// file has its place or is discarded.
    /// @param permissions_of  the file whose permissions it gets; none (ours by default) when there
    ///                        is no such file
    [[nodiscard]] bool Finish(const std::string& permissions_of);
    /// After Finish: renames it over `target`, which may not exist, and syncs the folder.
    /// @return false when the rename was refused: the finished file stays under its own name, as
    ///         the user's, and may be tried again
    [[nodiscard]] bool PutInPlaceOf(const std::string& target);
    /// As PutInPlaceOf, for a name at which nothing may be: false then, too.
    [[nodiscard]] bool PutAt(const std::string& new_name);
    /// Deletes what was written; harmless when nothing is open.
    void Discard();
    /// Lets go of a finished file that stays under its own name.
    void Keep();

private:
    bool Placed(int result, const std::string& target);
    void CutTrailer();

    OwnFile file_;
    std::uint8_t head_[kOwnMarkBytes] = {}; ///< the file's first bytes; the mark stands there
    std::uint64_t size_ = 0;
    int held_ = -1; ///< after Finish: keeps the lock
    bool finished_ = false;
};

/// Waits until everything written to an open file is on the disk.
[[nodiscard]] bool SyncFile(int file);

/// The file that a name means in the end, without symbolic links, so that what replaces it takes
/// the file's place and not the link's. The name itself when there is no such file.
[[nodiscard]] std::string WithoutLinks(const std::string& name);

/// Whether a name still means the file that is open: false once another has taken its place.
[[nodiscard]] bool NameMeans(const std::string& name, int file);

/// Syncs the folder in which `name` stands, so that its renames and deletions last.
bool SyncFolderOf(const std::string& name);

/// Takes or tries the exclusive lock of an open file. @return false while another holds it; true
/// also where the file system knows no locks
[[nodiscard]] bool TryLock(int file);

} // namespace kelvo::platform
