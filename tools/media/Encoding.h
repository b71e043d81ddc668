#pragma once
// encode: a stream of pictures and sound on standard input becomes a file.

#include "tools/media/OutputFormats.h"

#include <string>

namespace kelvo::media_tool {

struct EncodeOptions {
    std::string output;
    std::string format; ///< empty: as the output's extension says
    Preset preset = Preset::Usual;
    bool force = false; ///< replace an output that exists
};

/// @return the exit code
int Encode(const EncodeOptions& options);

} // namespace kelvo::media_tool
