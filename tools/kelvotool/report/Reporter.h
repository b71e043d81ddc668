#pragma once
// Everything that is wrong with one file, as one line each on standard error, and the exit code
// that follows from it.

#include "framework/base/Result.h"
#include "tools/kelvotool/report/Problem.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo::tool {

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
    void NotDone(std::string what, ProblemCode code = ProblemCode::NotDone) {
        Report({.severity = kNotDone, .code = code, .what = std::move(what)});
    }
    void Warn(std::string what, ProblemCode code) {
        Report({.severity = kAllWell, .code = code, .what = std::move(what)});
    }

    /// kAllWell, or the worst severity so far; the signal's when one stopped the work.
    int Code() const;
    std::uint64_t Count() const { return count_; }
    /// What was shown, the oldest first; what was too much is only counted.
    const std::vector<Problem>& Problems() const { return problems_; }

    /// From now on a warning counts as damage, in every file.
    static void CountWarningsAsDamage();

private:
    std::string file_;
    int worst_ = kAllWell;
    std::uint64_t count_ = 0;
    std::vector<Problem> problems_;
};

} // namespace kelvo::tool
