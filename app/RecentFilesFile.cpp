#include "app/RecentFilesFile.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"
#include "framework/base/ChFile.h"
#include "platform/base/clock.h"
#include "platform/base/durable_files.h"
#include "platform/base/file_names.h"
#include "platform/base/threads.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {
namespace {

// What no list of files that a person opened has; a menu could not show it.
constexpr std::uint32_t kMostFiles = 1000;
constexpr std::uint32_t kLongestPath = 32767;
constexpr std::size_t kEntryOverhead = 8; ///< bytes beside the path
constexpr std::int64_t kLargestFile = std::int64_t{4} * 1024 * 1024;
constexpr char kTemporaryExtension[] = ".tmp";

constexpr DWORD kLockDeadlineMs = 2000;
constexpr DWORD kLockPollMs = 5;

std::string_view TextOf(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool IsPath(std::string_view text) {
    return !text.empty() && text.find('\0') == std::string_view::npos;
}

// Whoever has the temporary file saves; the others wait for it to go.
platform::Claim MakeTemporary(platform::DurableTemporary& temporary, const std::string& name) {
    const DWORD start = GetTickCount();
    for (;;) {
        const platform::Claim claim = temporary.Make(name);
        if (claim != platform::Claim::Busy) return claim;
        if (GetTickCount() - start > kLockDeadlineMs) return claim;
        Sleep(kLockPollMs);
    }
}

std::string TemporaryNameFor(const std::string& file) {
    const CString name{std::string_view{file}};
    return std::string{(PathDirectory(name) + PathTitle(name) + kTemporaryExtension).View()};
}

// What the file will hold; nothing where it stays as it is.
std::optional<RecentFiles> Merged(const CString& name, const RecentFiles& files,
                                  const RecentFiles& added, std::int32_t maximum) {
    Result<RecentFiles> stored = LoadRecentFiles(name);
    if (!stored) {
        const Fault fault = stored.Why().fault;
        const bool damaged = fault != Fault::Missing;
        if (fault == Fault::Unreadable || (damaged && files.IsEmpty())) return std::nullopt;
        return files;
    }
    if (added.IsEmpty()) return std::nullopt;
    RecentFiles merged = std::move(stored.Value());
    for (std::int32_t i = added.Count(); i-- > 0;) {
        PutInFront(merged, added[i], maximum);
    }
    return merged;
}

} // namespace

void PutInFront(RecentFiles& files, const RecentFile& file, std::int32_t maximum) {
    const RecentFile first = file; // it may be one of those that move
    std::int32_t gone = 0;
    while (gone < files.Count() &&
           !platform::EqualWithoutCase(files[gone].path.View(), first.path.View())) {
        ++gone;
    }
    if (gone < files.Count()) {
        files.RemoveAt(gone);
    } else if (files.Count() >= maximum && !files.IsEmpty()) {
        files.RemoveAt(files.Count() - 1);
    }
    if (files.Add(first) == 0) return;
    for (std::int32_t i = files.Count() - 1; i > 0; --i) {
        std::swap(files[i], files[i - 1]);
    }
}

Result<RecentFiles> ReadRecentFiles(ByteView bytes) {
    ByteReader reader{bytes};
    const std::uint32_t count = reader.ReadU32();
    if (!reader.Ok()) return Error{Fault::EndsEarly, reader.Offset()};
    if (count > kMostFiles) return Error{Fault::TooLarge, 0};
    if (count > reader.Remaining() / kEntryOverhead) return Error{Fault::EndsEarly, 0};
    RecentFiles files;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t start = reader.Offset();
        const std::uint32_t length = reader.ReadU32();
        if (length > kLongestPath) return Error{Fault::TooLarge, start};
        const std::string_view path = TextOf(reader.ReadBytes(length));
        const std::uint32_t value = reader.ReadU32();
        if (!reader.Ok()) return Error{Fault::EndsEarly, reader.Offset()};
        if (!IsPath(path)) return Error{Fault::BadValue, start};
        if (files.Add({CString{path}, value}) == 0) return Error{Fault::TooLarge, start};
    }
    return files;
}

std::vector<std::uint8_t> RecentFilesBytes(const RecentFiles& files) {
    std::size_t length = sizeof(std::uint32_t);
    for (const RecentFile& file : files) {
        length += kEntryOverhead + file.path.View().size();
    }
    std::vector<std::uint8_t> bytes(length);
    ByteWriter writer{bytes};
    writer.WriteU32(static_cast<std::uint32_t>(files.Count()));
    for (const RecentFile& file : files) {
        const std::string_view path = file.path.View();
        writer.WriteU32(static_cast<std::uint32_t>(path.size()));
        writer.WriteBytes({reinterpret_cast<const std::uint8_t*>(path.data()), path.size()});
        writer.WriteU32(file.value);
    }
    return bytes;
}

Result<RecentFiles> LoadRecentFiles(const CString& name) {
    ChFile file;
    if (!file.OpenReadOnly(name)) {
        const CString path = ResolvePath(nullptr, name, nullptr);
        const bool exists = platform::ExistingFileName(path.View()).has_value();
        return Error{exists ? Fault::Unreadable : Fault::Missing, 0};
    }
    const std::int64_t length = file.FileLength();
    if (length < 0) return Error{Fault::Unreadable, 0};
    if (length > kLargestFile) return Error{Fault::TooLarge, 0};
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length));
    if (!file.ReadAll(bytes))
        return Error{file.ReadFailed() ? Fault::Unreadable : Fault::EndsEarly, 0};
    return ReadRecentFiles(bytes);
}

bool SaveRecentFiles(const CString& name, const RecentFiles& files, const RecentFiles& added,
                     std::int32_t maximum) {
    const CString path = ResolvePath(nullptr, name, nullptr);
    const std::optional<std::string> full_name = platform::NewFileName(path.View());
    if (!full_name) return false;
    const std::string target = platform::WithoutLinks(*full_name);
    platform::DurableTemporary temporary;
    if (MakeTemporary(temporary, TemporaryNameFor(target)) != platform::Claim::Taken) return false;
    const auto merged = Merged(path, files, added, maximum);
    return merged && temporary.WriteAt(0, RecentFilesBytes(*merged)) && temporary.Finish(target) &&
           temporary.PutInPlaceOf(target);
}

} // namespace kelvo
