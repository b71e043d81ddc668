#pragma once
// What a film can be written as.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::tool {

struct ExportFormat {
    enum class Shape : std::uint8_t {
        Series,  ///< one file an image
        Images,  ///< one file of images
        Sound,   ///< one file of samples
        Vorbis,  ///< the stream of a sound track in Vorbis form, as it is
        Raw,     ///< nothing but pixels, or nothing but samples
        Foreign, ///< what kelvotool-media writes
    };
    std::string_view name;
    Shape shape = Shape::Raw;
    bool holds_images = false;
    bool holds_sound = false;

    std::string Extension() const { return "." + std::string(name); }
};

/// All of them, in the order in which help names them.
const std::vector<ExportFormat>& ExportFormats();
/// By its name, or by the extension of a file's name; nothing when there is none.
const ExportFormat* FindExportFormat(std::string_view name);
const ExportFormat* FormatOfFile(std::string_view file_name);

} // namespace kelvo::tool
