#pragma once
// Everything that is wrong with one file, as one line each on standard error, and the exit code
// that follows from it.

#include "framework/base/Result.h"
#include "tools/kelvotool/Commands.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo::tool {

/// Something wrong, and where.
struct Problem {
    ExitCode severity = kDamaged;        ///< kDamaged or kNotDone
    std::optional<TrackKind> track = {}; ///< none: of the whole file, or of its only track
    std::string what = {};               ///< English, without a full stop
    std::optional<std::uint32_t> record = {};
    std::optional<std::uint64_t> offset = {}; ///< from the start of the file
};

std::string_view NameOf(TrackKind kind);

/// The problem in words: "video: what (record 3, offset 1234)".
std::string TextOf(const Problem& problem);

/// What a fault means for a record that was read.
std::string_view RecordFaultText(Fault fault);
/// What a fault means for a file that was to be read or written.
std::string_view FileFaultText(Fault fault);

class Reporter {
public:
    /// @param file  as the person named it
    explicit Reporter(std::string file);
    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;
    /// Says how many problems were not shown, when they were too many.
    ~Reporter();

    /// Says it: "kelvotool: FILE: ..."
    void Report(const Problem& problem);
    void NotDone(std::string what) { Report({.severity = kNotDone, .what = std::move(what)}); }

    /// kAllWell, or the worst severity so far; the signal's when one stopped the work.
    int Code() const;
    std::uint64_t Count() const { return count_; }

private:
    std::string file_;
    int worst_ = kAllWell;
    std::uint64_t count_ = 0;
};

} // namespace kelvo::tool
