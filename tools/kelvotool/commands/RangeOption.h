#pragma once
// --range, which means the same in every command that has it.

#include "tools/kelvotool/film/Ranges.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace kelvo::tool {

/// Adds --range; what it says stands in `ranges`, which must live as long as the command line.
inline CLI::Option* AddRangeOption(CLI::App& command, std::vector<Range>& ranges) {
    return command
        .add_option_function<std::string>(
            "--range",
            [&ranges](const std::string& text) {
                const auto read = ParseRanges(text);
                if (!read) {
                    throw CLI::ValidationError("--range",
                                               "\"" + text +
                                                   "\" is no range such as 12:34.5-13:00 or "
                                                   "300f-450f");
                }
                ranges = read.Value();
            },
            "only these parts, B not included: 12:34.5-13:00 or 300f-450f (images), several by "
            "comma")
        ->type_name("A-B,...");
}

} // namespace kelvo::tool
