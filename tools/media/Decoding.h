#pragma once
// decode: a file that FFmpeg's libraries read becomes a stream of pictures and sound on standard
// output.

#include "tools/media/PictureSource.h"
#include "tools/media/SoundSource.h"

#include <string>

namespace kelvo::media_tool {

struct DecodeOptions {
    std::string input;
    PictureWishes picture;
    SoundWishes sound;
    bool wants_picture = true;
    bool wants_sound = true;
};

/// @return the exit code: 1 when something was damaged and all the rest was written
int Decode(const DecodeOptions& options);

} // namespace kelvo::media_tool
