#pragma once
// A dialog template as it lies in the resources, read into values. Every number in it is a claim.

#include "platform/base/types.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo::desktop {

struct TemplatePlace {
    std::int16_t x = 0; ///< dialog units, all four
    std::int16_t y = 0;
    std::int16_t width = 0;
    std::int16_t height = 0;
};

struct TemplateControl {
    DWORD style = 0;
    DWORD extended_style = 0;
    TemplatePlace place;
    int id = 0;
    std::string window_class; ///< the names of the standard classes, where a number stood
    std::string title;        ///< "#n" where a number stood
};

struct TemplateFont {
    int points = 0;
    int weight = 400;
    bool italic = false;
    std::string face;
};

struct DialogTemplate {
    DWORD style = 0;
    DWORD extended_style = 0;
    TemplatePlace place;
    std::string menu;         ///< "#n" where a number stood, empty for none
    std::string window_class; ///< empty for the system's own
    std::string title;
    std::optional<TemplateFont> font;
    std::vector<TemplateControl> controls;
};

/// Reads a DIALOG or DIALOGEX template.
/// @return nothing when any part of it lies outside of the bytes or a class number is unknown.
std::optional<DialogTemplate> ReadDialogTemplate(std::span<const std::uint8_t> bytes);

} // namespace kelvo::desktop
