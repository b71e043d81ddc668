#pragma once
// A new film (or a track alone) of pieces of others: which records, in which order, and how the
// numbers that tie pictures to sound are moved. Who cuts or joins says so; here it is written.

#include "container/RewriteTarget.h"
#include "tools/kelvotool/film/Splicing.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo::tool {

/// Audio frames in a row.
struct SoundPiece {
    PieceSource* source = nullptr; ///< null: only silence
    std::uint32_t first = 0;
    std::uint32_t end = 0;
    std::uint32_t silence = 0; ///< frames of it behind them
};

/// Images in a row.
struct PicturePiece {
    PieceSource* source = nullptr;
    std::uint32_t first = 0;
    std::uint32_t end = 0;
    std::int64_t sync_shift = 0; ///< added to their SyncNumbers, but for those never linked
};

/// What is written.
struct FilmSplice {
    struct Sound {
        ContainerHeader header = {};
        std::vector<std::uint8_t> user_header = {};
        std::vector<SoundPiece> pieces = {};
        std::uint8_t silence_byte = 0;
    };
    struct Picture {
        ContainerHeader header = {};
        std::vector<std::uint8_t> user_header = {};
        std::vector<PicturePiece> pieces = {};
    };
    bool is_film = false; ///< with a directory; else just one of the two
    std::optional<Sound> sound = {};
    std::optional<Picture> picture = {};
};

/// How much of it was copied.
struct SpliceCounts {
    std::uint32_t images = 0;
    std::uint32_t images_coded = 0;
    std::uint32_t audio_frames = 0;
    std::uint32_t audio_frames_coded = 0;
};

/// The container that a sound goes into: its own kind, or, for a Vorbis sound, a type that loses
/// nothing.
ContainerHeader SpliceHeader(const TrackDescription& track);

Error WriteSplice(const FilmSplice& splice, RewriteTarget& target, Reporter& reporter,
                  SpliceCounts& counts);

} // namespace kelvo::tool
