#include "tools/kelvotool/files/PictureSeries.h"

#include "platform/base/durable_files.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace kelvo::tool {

namespace {

namespace fs = std::filesystem;

constexpr const char* kNamesInFolder = "%06d";

bool WriteWholeFile(const std::string& name, const std::vector<std::uint8_t>& bytes) {
    const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) return false;
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(file, bytes.data() + written, bytes.size() - written);
        if (count <= 0) break;
        written += static_cast<std::size_t>(count);
    }
    return ::close(file) == 0 && written == bytes.size();
}

bool IsThere(const std::string& name) {
    struct stat status{};
    return ::lstat(name.c_str(), &status) == 0;
}

} // namespace

PictureSeries::~PictureSeries() {
    StopThreads();
}

bool PictureSeries::Begin(const std::string& given, const std::string& extension,
                          std::uint64_t count, bool force, unsigned jobs, Coder coder,
                          Reporter& reporter) {
    force_ = force;
    coder_ = std::move(coder);
    std::error_code error;
    std::string full = fs::absolute(given, error).lexically_normal().native();
    while (full.size() > 1 && full.back() == '/')
        full.pop_back();
    const bool is_folder = fs::is_directory(full, error);
    const auto pattern =
        is_folder ? std::nullopt : ParsePattern(fs::path(full).filename().native());
    new_folder_ = !pattern && (!is_folder || fs::is_empty(full, error));
    folder_ = pattern ? ParentOf(full) : full;
    pattern_ = pattern ? *pattern : *ParsePattern(kNamesInFolder + extension);
    const std::string parent = new_folder_ ? ParentOf(full) : folder_;
    if (!fs::is_directory(parent, error)) {
        reporter.NotDone("there is no such folder to write into", ProblemCode::OutputUnwritable);
        return false;
    }
    if (new_folder_ && !is_folder && IsThere(full)) {
        reporter.NotDone("it is no folder", ProblemCode::OutputUnwritable);
        return false;
    }
    for (std::uint64_t n = 0; !new_folder_ && !force && n < count; ++n) {
        const std::string name = folder_ + "/" + pattern_.NameOf(n);
        if (!IsThere(name)) continue;
        reporter.NotDone(fmt::format("{} exists already; -f replaces it", pattern_.NameOf(n)),
                         ProblemCode::OutputExists);
        return false;
    }
    if (!temporary_.Make(parent, reporter)) return false;
    slots_ = std::vector<Slot>(std::size_t{jobs} * 2);
    for (unsigned i = 0; i < jobs; ++i)
        threads_.emplace_back([this] { Work(); });
    return true;
}

RgbImage& PictureSeries::Room() {
    if (filling_ != nullptr) return filling_->image;
    std::unique_lock lock(mutex_);
    const auto free = [this] { return std::ranges::find(slots_, Slot::State::Free, &Slot::state); };
    changed_.wait(lock, [&] { return free() != slots_.end(); });
    filling_ = &*free();
    filling_->state = Slot::State::Filling;
    return filling_->image;
}

void PictureSeries::Add(std::uint32_t times) {
    if (times == 0) return; // the room stays for the next one
    const std::scoped_lock lock(mutex_);
    filling_->first = next_;
    filling_->times = times;
    filling_->state = Slot::State::Ready;
    filling_ = nullptr;
    next_ += times;
    changed_.notify_all();
}

bool PictureSeries::Failed() {
    const std::scoped_lock lock(mutex_);
    return failed_;
}

bool PictureSeries::WriteSlot(const Slot& slot, std::vector<std::uint8_t>& file) {
    if (!coder_(slot.image, file)) return false;
    for (std::uint64_t n = slot.first; n < slot.first + slot.times; ++n) {
        if (!WriteWholeFile(temporary_.Name() + "/" + pattern_.NameOf(n), file)) return false;
    }
    return true;
}

void PictureSeries::Work() {
    std::vector<std::uint8_t> file; // serves every picture
    std::unique_lock lock(mutex_);
    const auto ready = [this] {
        return std::ranges::find(slots_, Slot::State::Ready, &Slot::state);
    };
    while (true) {
        changed_.wait(lock, [&] { return ending_ || ready() != slots_.end(); });
        const auto slot = ready();
        if (slot == slots_.end()) return;
        slot->state = Slot::State::Coding;
        const bool go_on = !failed_;
        lock.unlock();
        const bool written = go_on && WriteSlot(*slot, file);
        lock.lock();
        failed_ = failed_ || !written;
        slot->state = Slot::State::Free;
        changed_.notify_all();
    }
}

void PictureSeries::StopThreads() {
    {
        const std::scoped_lock lock(mutex_);
        ending_ = true;
        changed_.notify_all();
    }
    for (std::thread& thread : threads_)
        thread.join();
    threads_.clear();
}

bool PictureSeries::PlaceAll() {
    if (new_folder_) return temporary_.PutAt(folder_);
    std::vector<std::string> placed;
    for (std::uint64_t n = 0; n < next_; ++n) {
        const std::string from = temporary_.Name() + "/" + pattern_.NameOf(n);
        const std::string to = folder_ + "/" + pattern_.NameOf(n);
        const bool is_new = !IsThere(to);
        const bool is_placed = force_ ? std::rename(from.c_str(), to.c_str()) == 0
                                      : ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(),
                                                    RENAME_NOREPLACE) == 0;
        if (!is_placed) {
            for (const std::string& name : placed)
                ::unlink(name.c_str());
            return false;
        }
        if (is_new) placed.push_back(to);
    }
    platform::SyncFolderOf(folder_ + "/" + pattern_.NameOf(0));
    return true;
}

void PictureSeries::Finish(Reporter& reporter) {
    StopThreads();
    if (StopRequested()) return;
    if (Failed() || !temporary_.Sync()) {
        reporter.NotDone("it cannot be written", ProblemCode::OutputUnwritable);
    } else if (!PlaceAll()) {
        reporter.NotDone("it cannot be put in its place", ProblemCode::OutputUnwritable);
    }
}

} // namespace kelvo::tool
