#pragma once
// Which two files make a film, from the one name that a person picked.

#include "framework/base/CString.h"

namespace kelvo {

struct TrackNames {
    CString video;
    CString audio;
    bool is_kva = false; ///< both are the same audio-video file
};

/// A ".kva", in any letters, is both tracks; any other name stands for the pair of the same
/// directory and title with ".kvf" and ".kaf". A "." in the file name's first place belongs to the
/// title. The extensions come out in small letters.
TrackNames ResolveTrackNames(const CString& picked);

} // namespace kelvo
