#include "media/FilmFile.h"

#include "container/AVDirectory.h"
#include "container/ContainerHeader.h"
#include "framework/base/ChFile.h"
#include "platform/base/file_names.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

namespace {

constexpr std::size_t kCopyStep = 256 * 1024;

/// One track of the film to be: closed and of no length when the film has none.
struct SourceTrack {
    ChFile file;
    std::uint64_t length = 0;

    Error Open(const CString& name, const std::optional<std::string>& film) {
        if (name.IsEmpty()) return {};
        if (!file.OpenReadOnly(name)) return {Fault::Missing, 0};
        if (film && film == platform::ExistingFileName(file.FileName().View())) {
            return {Fault::Mismatch, 0};
        }
        const std::int64_t size = file.FileLength();
        if (size < 0) return {Fault::Unreadable, 0};
        length = static_cast<std::uint64_t>(size);
        return {};
    }
};

/// An absent track is a pair of zeros.
TrackWindow WindowOf(const SourceTrack& track, std::uint64_t start) {
    if (!track.file.IsOpen()) return {};
    return {static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(start + track.length)};
}

Error CopyTrack(SourceTrack& track, NewFile& film, std::uint64_t start) {
    std::vector<std::uint8_t> buffer(kCopyStep);
    for (std::uint64_t done = 0; done < track.length;) {
        const auto step = std::min<std::uint64_t>(buffer.size(), track.length - done);
        const ByteSpan room = ByteSpan{buffer}.first(static_cast<std::size_t>(step));
        if (!track.file.ReadAll(room)) return {Fault::Unreadable, done};
        const Error error = film.WriteAt(start + done, room);
        if (error.fault != Fault::None) return error;
        done += step;
    }
    return {};
}

Error WriteTracks(NewFile& film, SourceTrack& audio, SourceTrack& video) {
    const std::uint64_t audio_end = AVDirectory::kBytes + audio.length;
    AVDirectory directory;
    directory.audio = WindowOf(audio, AVDirectory::kBytes);
    directory.video = WindowOf(video, audio_end);
    Error error = film.WriteAt(0, DirectoryBytes(directory));
    if (error.fault == Fault::None) error = CopyTrack(audio, film, AVDirectory::kBytes);
    if (error.fault == Fault::None) error = CopyTrack(video, film, audio_end);
    return error.fault == Fault::None ? film.Finish() : error;
}

} // namespace

Error WriteFilmFile(const CString& film_name, const CString& audio_name, const CString& video_name,
                    Existing existing) {
    if (audio_name.IsEmpty() && video_name.IsEmpty()) return {Fault::Missing, 0};
    const std::optional<std::string> old_film =
        platform::ExistingFileName(ResolvePath(nullptr, film_name, nullptr).View());
    SourceTrack audio;
    SourceTrack video;
    for (const Error& error :
         {audio.Open(audio_name, old_film), video.Open(video_name, old_film)}) {
        if (error.fault != Fault::None) return error;
    }
    const std::uint64_t size = AVDirectory::kBytes + audio.length + video.length;
    if (size > kLargestContainer) return {Fault::TooLarge, size};
    NewFile film;
    Error error = film.Begin(film_name, existing);
    if (error.fault != Fault::None) return error;
    error = WriteTracks(film, audio, video);
    if (error.fault != Fault::None) film.Discard();
    return error;
}

} // namespace kelvo
