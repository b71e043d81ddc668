#pragma once
// The 16 bytes at the head of an audio-video file (.kva): where its two tracks lie.

#include "framework/base/Bytes.h"
#include "framework/base/Result.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelvo {

/// Where one track lies in the file: [start, end); both 0 when the film has no such track.
struct TrackWindow {
    std::uint32_t start = 0;
    std::uint32_t end = 0;

    bool Absent() const { return start == 0 && end == 0; }
    std::uint32_t Size() const { return end - start; }
    friend bool operator==(const TrackWindow&, const TrackWindow&) = default;
};

/// Directory of a film; four little-endian 32-bit numbers, absolute in the file.
struct AVDirectory {
    static constexpr std::size_t kBytes = 16;

    TrackWindow audio;
    TrackWindow video;

    /// The window that a selector names: 'V' and 'v' the picture, anything else the sound.
    TrackWindow& Of(char selector) { return selector == 'V' || selector == 'v' ? video : audio; }
    const TrackWindow& Of(char selector) const {
        return selector == 'V' || selector == 'v' ? video : audio;
    }
    friend bool operator==(const AVDirectory&, const AVDirectory&) = default;
};

/// The four numbers as they stand; EndsEarly when there are not 16 bytes. What they claim is
/// checked by CheckTrackWindow.
Result<AVDirectory> ParseAVDirectory(ByteView bytes);

std::array<std::uint8_t, AVDirectory::kBytes> DirectoryBytes(const AVDirectory& directory);

/// Missing for an absent track; BadValue when it starts inside the directory or ends before it
/// starts; EndsEarly when it passes the end of the file; else None.
Error CheckTrackWindow(const TrackWindow& window, std::uint64_t file_size);

/// Whether a file's name says that it is a film: its extension is "kva" in any letters, the
/// extension being the text after the last "." that stands after the last separator and is not
/// the name's first character.
bool IsFilmName(std::string_view name);

} // namespace kelvo
