#include "tools/kelvotool/exporting/ExportFormat.h"

#include "tools/kelvotool/files/SeriesNames.h"

#include <algorithm>

namespace kelvo::tool {

const std::vector<ExportFormat>& ExportFormats() {
    using Shape = ExportFormat::Shape;
    static const std::vector<ExportFormat> kFormats{
        {"wav", Shape::Sound, false, true},   {"ogg", Shape::Vorbis, false, true},
        {"png", Shape::Series, true, false},  {"bmp", Shape::Series, true, false},
        {"y4m", Shape::Images, true, false},  {"raw", Shape::Raw, true, true},
        {"mkv", Shape::Foreign, true, true},  {"mp4", Shape::Foreign, true, true},
        {"webm", Shape::Foreign, true, true}, {"flac", Shape::Foreign, false, true},
        {"gif", Shape::Foreign, true, false},
    };
    return kFormats;
}

const ExportFormat* FindExportFormat(std::string_view name) {
    const auto& formats = ExportFormats();
    const auto found = std::ranges::find(formats, name, &ExportFormat::name);
    return found == formats.end() ? nullptr : &*found;
}

const ExportFormat* FormatOfFile(std::string_view file_name) {
    const std::string extension = ExtensionOf(file_name);
    return extension.empty() ? nullptr : FindExportFormat(std::string_view(extension).substr(1));
}

} // namespace kelvo::tool
