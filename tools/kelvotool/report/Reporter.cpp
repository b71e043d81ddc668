#include "tools/kelvotool/report/Reporter.h"

#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>

namespace kelvo::tool {

namespace {

// A hostile index can name millions of records that are not there.
constexpr std::uint64_t kMostShown = 1000;

bool warnings_count = false; // set once, before any work begins

} // namespace

std::string_view RecordFaultText(Fault fault) {
    switch (fault) {
    case Fault::EndsEarly:
        return "the record is cut off or describes less than a record";
    case Fault::TooLarge:
        return "the record describes more than a record";
    case Fault::BadValue:
        return "the record holds what its type never writes";
    case Fault::Mismatch:
        return "the record is not where or as long as the index says";
    default:
        return FileFaultText(fault);
    }
}

std::string_view FileFaultText(Fault fault) {
    switch (fault) {
    case Fault::None:
        return "all is well";
    case Fault::EndsEarly:
        return "it ends early";
    case Fault::TooLarge:
        return "it is or would become too large";
    case Fault::BadValue:
        return "it is none of these files";
    case Fault::Mismatch:
        return "two places in it contradict each other";
    case Fault::Unreadable:
        return "it cannot be read";
    case Fault::Unwritable:
        return "it cannot be written";
    case Fault::Missing:
        return "there is no such file";
    case Fault::Busy:
        return "another program is using it";
    case Fault::Stopped:
        return "stopped";
    }
    return "unknown";
}

Reporter::Reporter(std::string file) : file_(Printable(file)) {}

Reporter::~Reporter() {
    if (count_ <= kMostShown) return;
    SayError(fmt::format("{}: and {} further problems", file_, count_ - kMostShown));
}

void Reporter::Report(const Problem& problem) {
    int severity = problem.severity;
    if (severity == kAllWell && warnings_count) severity = kDamaged;
    worst_ = std::max(worst_, severity);
    ++count_;
    if (count_ > kMostShown) return;
    const char* const kind = problem.severity == kAllWell ? "warning: " : "";
    SayError(fmt::format("{}: {}{}", file_, kind, TextOf(problem)));
    problems_.push_back(problem);
}

void Reporter::CountWarningsAsDamage() {
    warnings_count = true;
}

int Reporter::Code() const {
    return StopRequested() ? kStoppedBase + StopSignal() : worst_;
}

} // namespace kelvo::tool
