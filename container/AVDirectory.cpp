#include "container/AVDirectory.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"
#include "framework/base/ChFile.h"

namespace kelvo {

Result<AVDirectory> ParseAVDirectory(ByteView bytes) {
    ByteReader reader{bytes};
    AVDirectory directory;
    for (TrackWindow* window : {&directory.audio, &directory.video}) {
        window->start = reader.ReadU32();
        window->end = reader.ReadU32();
    }
    if (!reader.Ok()) return Error{Fault::EndsEarly, bytes.size()};
    return directory;
}

std::array<std::uint8_t, AVDirectory::kBytes> DirectoryBytes(const AVDirectory& directory) {
    std::array<std::uint8_t, AVDirectory::kBytes> bytes{};
    ByteWriter writer{bytes};
    for (const TrackWindow* window : {&directory.audio, &directory.video}) {
        writer.WriteU32(window->start);
        writer.WriteU32(window->end);
    }
    return bytes;
}

Error CheckTrackWindow(const TrackWindow& window, std::uint64_t file_size) {
    if (window.Absent()) return {Fault::Missing, 0};
    if (window.start < AVDirectory::kBytes || window.end < window.start) {
        return {Fault::BadValue, window.start};
    }
    if (window.end > file_size) return {Fault::EndsEarly, file_size};
    return {};
}

bool IsFilmName(std::string_view name) {
    return PathExtension(CString(name)).CompareWithoutCase("kva") == 0;
}

} // namespace kelvo
