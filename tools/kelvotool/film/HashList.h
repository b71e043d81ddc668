#pragma once
// A list of the hashes of films, kept beside an archive: of each file, byte for byte, and of each
// track, decoded, which stays the same when a film gets another type that loses nothing.
//
// One line each: the sha256 in hexadecimal, "file", "audio" or "video", the name. A name's line
// ends and backslashes are written "\n" and "\\".

#include "tools/kelvotool/report/Reporter.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo::tool {

inline constexpr std::string_view kHashOfFile = "file";

class HashList {
public:
    /// What is hashed (kHashOfFile or a track's name), and the file's name as the person gave it.
    using Key = std::pair<std::string, std::string>;

    /// @return false when the file cannot be read or holds another line, which was reported
    bool Read(const std::string& name, Reporter& reporter);
    /// All lines, in the order of the names.
    std::string Text() const;

    void Put(std::string_view what, const std::string& name, std::string hex);
    const std::string* Find(std::string_view what, const std::string& name) const;
    bool IsEmpty() const { return hashes_.empty(); }

private:
    std::map<std::pair<std::string, std::string>, std::string> hashes_; ///< by name, then what
};

/// The hash of a whole file; nothing when it cannot be read or a signal stopped it.
std::optional<std::string> HashOfFile(const std::string& name);

} // namespace kelvo::tool
