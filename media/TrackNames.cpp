#include "media/TrackNames.h"

#include <string_view>

namespace kelvo {

namespace {

constexpr char kFilmExtension[] = ".kva";
constexpr char kVideoExtension[] = ".kvf";
constexpr char kAudioExtension[] = ".kaf";

bool EqualWithoutCase(std::string_view text, std::string_view lower_case) {
    if (text.size() != lower_case.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char letter = text[i];
        const bool capital = letter >= 'A' && letter <= 'Z';
        if ((capital ? static_cast<char>(letter - 'A' + 'a') : letter) != lower_case[i])
            return false;
    }
    return true;
}

} // namespace

TrackNames ResolveTrackNames(const CString& picked) {
    const std::string_view name = picked.View();
    const std::size_t separator = name.find_last_of("\\/");
    const std::size_t file_start = separator == std::string_view::npos ? 0 : separator + 1;
    const std::size_t dot = name.find_last_of('.');
    const bool has_extension = dot != std::string_view::npos && dot > file_start;

    // The directory and the title.
    const CString stem{has_extension ? name.substr(0, dot) : name};
    TrackNames names;
    names.is_kva = has_extension && EqualWithoutCase(name.substr(dot), kFilmExtension);
    names.video = stem + (names.is_kva ? kFilmExtension : kVideoExtension);
    names.audio = stem + (names.is_kva ? kFilmExtension : kAudioExtension);
    return names;
}

} // namespace kelvo
