#include "tools/kelvotool/files/NewTracks.h"

#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

namespace kelvo::tool {

bool NewTrackFile::Succeeded(const Error& error) {
    if (error.fault == Fault::None) return !StopRequested();
    target_.Discard();
    if (StopRequested()) return false;
    const bool is_source = error.fault == Fault::Unreadable || error.fault == Fault::EndsEarly;
    const ProblemCode code =
        is_source ? ProblemCode::InputUnreadable : ProblemCode::OutputUnwritable;
    Reporter& reporter = is_source ? source_ : reporter_;
    reporter.NotDone(error.fault == Fault::TooLarge ? "it would become larger than 2147483647 bytes"
                                                    : std::string(FileFaultText(error.fault)),
                     code);
    return false;
}

bool NewTrackFile::Write(const std::string& name, RewriteTarget::Kind kind,
                         const std::function<Error(RewriteTarget&)>& write) {
    const Error error = target_.Begin(name, kind);
    if (error.fault == Fault::Mismatch || error.fault == Fault::Busy) {
        reporter_.NotDone(error.fault == Fault::Busy
                              ? "another program is writing it"
                              : fmt::format("the file {} is in the way", TemporaryNameFor(name)),
                          ProblemCode::OutputUnwritable);
        return false;
    }
    return Succeeded(error) && Succeeded(write(target_)) && Succeeded(target_.Finish());
}

bool NewTrackFile::Place(bool replace) {
    if (replace ? target_.PutInPlace() : target_.PutWhereNothingIs()) return true;
    target_.Discard();
    reporter_.NotDone("it cannot be put in its place", ProblemCode::OutputUnwritable);
    return false;
}

} // namespace kelvo::tool
