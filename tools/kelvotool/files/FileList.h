#pragma once
// The films that a command line means: names as they were given, names from a list, and the films
// of folders.

#include <string>
#include <vector>

namespace kelvo::tool {

struct CommonOptions;

/// One film as the person named it.
struct FilmName {
    std::string name = {};
    std::string sound = {}; ///< of a pair: the sound track beside the picture's `name`; else empty
};

struct FilmList {
    std::vector<FilmName> films = {};
    int code = 0;            ///< kNotDone after a list or folder was reported that cannot be read
    bool is_several = false; ///< more may have been meant than one film
};

/// What the names and the common options mean, in the order given, a folder's films by their names.
/// A picture track (.kvf) and a sound track (.kaf) of the same name that are both meant are one
/// film. Names are not looked at otherwise.
FilmList ListFilms(const std::vector<std::string>& names, const CommonOptions& options);

} // namespace kelvo::tool
