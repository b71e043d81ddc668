#pragma once
// The options that mean the same in every command.

#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/Results.h"

#include <optional>
#include <string>

namespace kelvo::tool {

/// Which of these options a command has a use for; the others are wrong use there. How it speaks
/// (-q, -v, --strict, --progress, --color) is everybody's.
enum CommonUse : unsigned {
    kUsesJson = 1,   ///< --json and --jsonl
    kUsesForce = 2,  ///< -f
    kUsesOutput = 4, ///< -o
    kUsesJobs = 8,   ///< --jobs
};

struct CommonOptions {
    bool quiet = false;   ///< no results in words, no progress; what is wrong is still said
    bool verbose = false; ///< also the boxes that a player would show
    bool strict = false;  ///< warnings count as damage
    ProgressStyle progress = ProgressStyle::Auto;
    ColourUse colour = ColourUse::Auto;

    ResultFormat format = ResultFormat::Text;
    bool force = false;      ///< replace an output that exists
    std::string output = {}; ///< of -o; empty: none was given
    unsigned jobs = 0;       ///< at the same time; 0: as many as there are cores
    std::optional<std::string> names_from =
        {};                 ///< file of names that end in 0; "-": standard input
    bool recursive = false; ///< a folder stands for the films in it

    /// `jobs`, or the number of cores.
    unsigned Jobs() const;
};

} // namespace kelvo::tool
