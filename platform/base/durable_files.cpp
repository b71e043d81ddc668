#include "platform/base/durable_files.h"

#include "platform/base/file_calls.h"
#include "platform/base/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <tuple>
#include <utility>

namespace kelvo::platform {

namespace {

constexpr std::array<std::uint8_t, kOwnMarkBytes> kTemporaryMark = {
    'K', 'e', 'l', 'v', 'o', ' ', 'r', 'e', 'w', 'r', 'i', 't', 'i', 'n', 'g', '\n'};

// The sticky bit means nothing on a file, but it is there from the very creation: an empty file
// that bears it was made here, by a run that was killed before it could write the mark.
constexpr mode_t kOwnFileMode = S_ISVTX | 0666;
constexpr mode_t kPermissions = 0777;
constexpr mode_t kOwnerReadsAndWrites = S_IRUSR | S_IWUSR;

constexpr int kAttempts = 5;

template <class Call>
auto Repeated(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

int OpenFile(const std::string& name, int flags, mode_t mode = 0) {
    return Repeated([&] { return CurrentFileCalls().open(name.c_str(), flags, mode); });
}

bool Truncate(int file, std::uint64_t size) {
    return Repeated([&] { return CurrentFileCalls().ftruncate(file, static_cast<off_t>(size)); }) ==
           0;
}

/// The regular file of that name.
std::optional<struct stat> StatusOf(const std::string& name) {
    struct stat status{};
    if (name.empty() ||
        Repeated([&] { return CurrentFileCalls().lstat(name.c_str(), &status); }) != 0 ||
        !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return status;
}

bool SameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool HasBytesAt(int file, std::uint64_t offset, OwnMark mark) {
    std::array<std::uint8_t, kOwnMarkBytes> found{};
    return ReadFileAt(file, offset, found.data(), found.size()) == std::int64_t{kOwnMarkBytes} &&
           std::ranges::equal(found, mark);
}

/// The mark as far as a kill let it be written, or with bytes that a power cut lost.
bool HasUnfinishedMark(int file, OwnMark mark) {
    std::array<std::uint8_t, kOwnMarkBytes> found{};
    const std::int64_t count = ReadFileAt(file, 0, found.data(), found.size());
    for (std::size_t i = 0; i < static_cast<std::size_t>(std::max<std::int64_t>(count, 0)); ++i) {
        if (found[i] != mark[i] && found[i] != 0) return false;
    }
    return count >= 0;
}

} // namespace

bool TryLock(int file) {
    const int result = Repeated([&] { return CurrentFileCalls().flock(file, LOCK_EX | LOCK_NB); });
    return result == 0 || errno != EWOULDBLOCK;
}

std::string WithoutLinks(const std::string& name) {
    char* resolved = ::realpath(name.c_str(), nullptr);
    if (resolved == nullptr) return name;
    std::string result(resolved);
    std::free(resolved);
    return result;
}

bool NameMeans(const std::string& name, int file) {
    struct stat by_name{};
    struct stat by_handle{};
    return CurrentFileCalls().lstat(name.c_str(), &by_name) == 0 &&
           CurrentFileCalls().fstat(file, &by_handle) == 0 && SameFile(by_name, by_handle);
}

bool SyncFile(int file) {
    return Repeated([&] { return CurrentFileCalls().fsync(file); }) == 0;
}

bool SyncFolderOf(const std::string& name) {
    const std::size_t separator = name.rfind('/');
    std::string folder = ".";
    if (separator != std::string::npos) folder = separator == 0 ? "/" : name.substr(0, separator);
    const int handle = OpenFile(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return false;
    // A file system that cannot sync a folder says EINVAL and has nothing to wait for.
    const bool synced = SyncFile(handle) || errno == EINVAL;
    CurrentFileCalls().close(handle);
    return synced;
}

OwnFile::~OwnFile() {
    Close();
}

OwnFile::OwnFile(OwnFile&& other) noexcept
    : file_(std::exchange(other.file_, -1)), name_(std::move(other.name_)) {}

OwnFile& OwnFile::operator=(OwnFile&& other) noexcept {
    if (this != &other) {
        Close();
        file_ = std::exchange(other.file_, -1);
        name_ = std::move(other.name_);
    }
    return *this;
}

bool OwnFile::NameIsOurs() const {
    return NameMeans(name_, file_);
}

bool OwnFile::LooksOurs(OwnMark mark) const {
    struct stat status{};
    if (CurrentFileCalls().fstat(file_, &status) != 0) return false;
    if (!S_ISREG(status.st_mode) || status.st_nlink != 1) return false;
    const auto size = static_cast<std::uint64_t>(status.st_size);
    if (HasBytesAt(file_, 0, mark)) return true;
    if (size >= kOwnMarkBytes && HasBytesAt(file_, size - kOwnMarkBytes, mark)) return true;
    return (status.st_mode & S_ISVTX) != 0 && HasUnfinishedMark(file_, mark);
}

Claim OwnFile::Find(const std::string& name, OwnMark mark) {
    assert(!IsOpen());
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        file_ = OpenFile(name, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (file_ < 0) return errno == ENOENT ? Claim::Failed : Claim::Foreign;
        name_ = name;
        if (!LooksOurs(mark)) {
            Close();
            return Claim::Foreign;
        }
        if (!TryLock(file_)) {
            Close();
            return Claim::Busy;
        }
        // Whoever held the lock before may have finished the file and renamed it.
        if (NameIsOurs() && LooksOurs(mark)) return Claim::Taken;
        Close();
    }
    return Claim::Busy;
}

bool OwnFile::StandsAt(const std::string& name, OwnMark mark) {
    OwnFile seen;
    seen.file_ = OpenFile(name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    return seen.IsOpen() && seen.LooksOurs(mark);
}

Claim OwnFile::TakeOver(OwnMark mark) {
    // The mark goes in before the rest goes away: a kill in between is recognised, too.
    struct stat status{};
    if (CurrentFileCalls().fstat(file_, &status) == 0) {
        std::ignore = (::fchmod(file_, (status.st_mode & kPermissions) | S_ISVTX));
    }
    if (WriteAt(0, mark) && Truncate(file_, kOwnMarkBytes)) return Claim::Taken;
    Remove();
    return Claim::Failed;
}

// What a kill leaves behind must open for reading and writing again, so its owner may always do
// both.
void OwnFile::MatchPermissions(const struct stat& model) {
    // Only the system's owner may give a file away; for anybody else it stays theirs.
    std::ignore = (::fchown(file_, model.st_uid, model.st_gid));
    struct stat own{};
    if (CurrentFileCalls().fstat(file_, &own) != 0) return;
    mode_t permissions = (model.st_mode & kPermissions) | kOwnerReadsAndWrites;
    if (own.st_gid != model.st_gid) permissions &= ~static_cast<mode_t>(S_IRWXG);
    std::ignore = (::fchmod(file_, permissions | S_ISVTX));
}

Claim OwnFile::Make(const std::string& name, OwnMark mark, const std::string& permissions_of) {
    assert(!IsOpen());
    const std::optional<struct stat> model = StatusOf(permissions_of);
    const mode_t mode = model ? S_ISVTX | kOwnerReadsAndWrites : kOwnFileMode;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        file_ = OpenFile(name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
        if (file_ < 0) {
            if (errno != EEXIST) return Claim::Failed;
            const Claim found = Find(name, mark);
            if (found == Claim::Failed) continue; // it has just gone
            if (found != Claim::Taken) return found;
        } else {
            name_ = name;
            if (!TryLock(file_)) { // somebody took the fresh file for one that a kill left
                Close();
                return Claim::Busy;
            }
            if (!NameIsOurs()) {
                Close();
                continue;
            }
        }
        if (model) MatchPermissions(*model);
        return TakeOver(mark);
    }
    return Claim::Busy;
}

bool OwnFile::WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    return WriteFileAt(file_, offset, bytes.data(), bytes.size()) ==
           static_cast<std::int64_t>(bytes.size());
}

bool OwnFile::Sync() {
    return SyncFile(file_);
}

bool OwnFile::Close() {
    if (file_ < 0) return true;
    return CurrentFileCalls().close(std::exchange(file_, -1)) == 0;
}

void OwnFile::Remove() {
    if (file_ < 0) return;
    if (NameIsOurs()) CurrentFileCalls().unlink(name_.c_str());
    Close();
}

Claim DurableTemporary::Make(const std::string& name, const std::string& permissions_of) {
    assert(!IsOpen() && held_ < 0);
    std::ranges::fill(head_, std::uint8_t{0});
    size_ = 0;
    return file_.Make(name, kTemporaryMark, permissions_of);
}

bool DurableTemporary::WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    size_ = std::max(size_, offset + bytes.size());
    if (offset < kOwnMarkBytes) { // the mark stands there until the end
        const std::size_t count = std::min(kOwnMarkBytes - offset, bytes.size());
        std::ranges::copy(bytes.first(count), head_ + offset);
        bytes = bytes.subspan(count);
        offset += count;
    }
    return bytes.empty() || file_.WriteAt(offset, bytes);
}

bool DurableTemporary::Finish(const std::string& permissions_of) {
    if (!IsOpen()) return false;
    struct stat own{};
    if (CurrentFileCalls().fstat(file_.Handle(), &own) != 0) return false;
    mode_t permissions = own.st_mode & kPermissions;
    if (const auto model = StatusOf(permissions_of)) {
        permissions = model->st_mode & kPermissions;
        std::ignore = (::fchown(file_.Handle(), model->st_uid, model->st_gid));
    }
    // From here on the mark at the end tells what the one at the start told.
    if (!file_.WriteAt(size_, kTemporaryMark) || !file_.Sync()) return false;
    std::ignore = (::fchmod(file_.Handle(), permissions));
    const auto head = std::span<const std::uint8_t>{head_}.first(
        std::min<std::size_t>(size_, kOwnMarkBytes)); // of a short file, the mark begins behind it
    if (!file_.WriteAt(0, head) || !file_.Sync()) return false;
    // The lock belongs to both handles; closing the first one says whether all data got through.
    held_ = ::fcntl(file_.Handle(), F_DUPFD_CLOEXEC, 0);
    finished_ = held_ >= 0 && file_.Close();
    return finished_;
}

void DurableTemporary::CutTrailer() {
    // Should this fail, the file has some bytes too many behind its index, which nobody reads.
    if (Truncate(held_, size_)) std::ignore = SyncFile(held_);
}

bool DurableTemporary::Placed(int result, const std::string& target) {
    if (result != 0) return false;
    SyncFolderOf(target);
    Keep();
    return true;
}

bool DurableTemporary::PutInPlaceOf(const std::string& target) {
    if (!finished_) return false;
    return Placed(
        Repeated([&] { return CurrentFileCalls().rename(Name().c_str(), target.c_str()); }),
        target);
}

bool DurableTemporary::PutAt(const std::string& new_name) {
    if (!finished_) return false;
    return Placed(
        Repeated([&] { return CurrentFileCalls().rename_new(Name().c_str(), new_name.c_str()); }),
        new_name);
}

void DurableTemporary::Keep() {
    if (!finished_) return;
    finished_ = false;
    CutTrailer();
    CurrentFileCalls().close(std::exchange(held_, -1));
}

void DurableTemporary::Discard() {
    finished_ = false;
    const int handle = held_ >= 0 ? held_ : file_.Handle();
    if (handle >= 0 && NameMeans(file_.Name(), handle)) {
        CurrentFileCalls().unlink(file_.Name().c_str());
    }
    file_.Close();
    if (held_ >= 0) CurrentFileCalls().close(std::exchange(held_, -1));
}

} // namespace kelvo::platform
