#pragma once
// Makes an audio-video file (.kva) of two track files: a directory, then the sound, then the
// picture, each byte for byte.

#include "framework/base/CString.h"
#include "framework/base/Result.h"
#include "media/NewFile.h"

namespace kelvo {

/// Writes a film through a temporary file beside it (its title with ".tmp", created exclusively),
/// synced and then renamed: at any moment the name holds the old file or the whole new one.
/// @param audio_name  an empty name for a film without sound
/// @param video_name  an empty name for a film without picture
/// @return Missing when a track cannot be opened or both names are empty, Mismatch when a track is
///         the film itself, TooLarge when the film would pass 2147483647 bytes, Busy when the film
///         or its temporary file is already there, Unreadable and Unwritable as they say. Nothing
///         but the film is left behind in any case.
[[nodiscard]] Error WriteFilmFile(const CString& film_name, const CString& audio_name,
                                  const CString& video_name, Existing existing = Existing::Refuse);

} // namespace kelvo
