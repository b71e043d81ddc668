#pragma once
// What cut and join have in common: they write a film of pieces and tell how much was copied.

#include "tools/kelvotool/film/FilmSplice.h"
#include "tools/kelvotool/options/CommonOptions.h"

#include <memory>
#include <string>

namespace kelvo::tool {

/// A track that pieces can be taken from; nothing after it was reported why not.
std::unique_ptr<PieceSource> OpenPieces(const FilmDescription& film, const TrackDescription& track,
                                        Reporter& reporter);

/// Writes it and prints the result.
/// @param input   of the result
/// @param output  as the person named it; `name` is full
/// @return the exit code
int WriteSpliced(const FilmSplice& splice, const std::string& input, const std::string& output,
                 const std::string& name, const CommonOptions& common, Reporter& reporter,
                 Reporter& output_reporter);

} // namespace kelvo::tool
