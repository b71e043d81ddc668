#pragma once
// What a file says of itself: its tracks and their headers, found without trusting any of it, so
// that a damaged film is described as far as it goes. Its records are TrackReader's affair.

#include "container/AVDirectory.h"
#include "container/ContainerHeader.h"
#include "media/AudioHeader.h"
#include "media/VideoHeader.h"
#include "media/VorbisFilekel.h"
#include "tools/kelvotool/files/FileList.h"
#include "tools/kelvotool/report/Reporter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::tool {

enum class TrackForm : std::uint8_t { Unknown, Container, Vorbis };

struct TrackDescription {
    TrackKind kind = TrackKind::Audio;
    TrackForm form = TrackForm::Unknown;
    std::string file = {};   ///< full name of the file that it lies in
    TrackWindow window = {}; ///< in the file, as far as the file goes
    bool window_is_whole = true;

    std::optional<ContainerHeader> container = {}; ///< of that form
    std::optional<VorbisDescription> vorbis = {};  ///< of that form
    std::vector<std::uint8_t> user_header = {};    ///< as far as it is there
    std::optional<AudioHeader> audio = {};         ///< of a sound, as it stands
    std::optional<VideoHeader> video = {};         ///< of a picture, as it stands
    bool track_header_is_sound = false;            ///< what it says was checked

    std::vector<Problem> problems = {}; ///< found so far

    /// What ZFilekel calls this track of a film.
    char Selector() const { return kind == TrackKind::Video ? 'V' : 'A'; }
    /// Records or audio frames, as the header claims.
    std::uint32_t RecordCount() const;
    /// How long it lasts; nothing when the header does not say how many records a second has.
    std::optional<double> DurationSeconds() const;
};

struct FilmDescription {
    std::string name = {};      ///< full; of a pair, that of the picture
    std::uint64_t size = 0;     ///< of a pair, that of both files
    bool is_film = false;       ///< both tracks in one file
    bool is_pair = false;       ///< a picture and a sound of the same name
    AVDirectory directory = {}; ///< of a film
    std::vector<TrackDescription> tracks = {};
    std::vector<Problem> problems = {}; ///< of the directory

    const TrackDescription* Find(TrackKind kind) const;
    /// Whether a problem must say which track it is of.
    bool HasNamedTracks() const { return is_film || is_pair; }
};

/// @param name  full name of an existing file
/// @return nothing after it was reported that the file cannot be read or is none of these files;
///         every other problem is in the description
std::optional<FilmDescription> DescribeFilm(const std::string& name, Reporter& reporter);

/// The same for a pair: the picture's track, then the sound's. One of the two that cannot be read
/// or is none of these files is a problem of the film; nothing only where neither can.
std::optional<FilmDescription> DescribePair(const std::string& picture, const std::string& sound,
                                            Reporter& reporter);

/// A film as a person named it: finds the file or the pair and describes it.
std::optional<FilmDescription> DescribeNamedFilm(const FilmName& film, Reporter& reporter);

} // namespace kelvo::tool
