#include "tools/kelvotool/files/RawOutput.h"

#include "container/RewriteTarget.h"

#include <fmt/format.h>

namespace kelvo::tool {

namespace {

constexpr std::size_t kBufferBytes = std::size_t{256} * 1024;

} // namespace

bool RawOutput::Begin(const std::string& name, bool force, Reporter& reporter) {
    name_ = name;
    force_ = force;
    buffer_.reserve(kBufferBytes);
    const std::string temporary = TemporaryNameFor(name);
    switch (temporary_.Make(temporary)) {
    case platform::Claim::Taken:
        return true;
    case platform::Claim::Busy:
        reporter.NotDone("another program is writing it", ProblemCode::OutputUnwritable);
        break;
    case platform::Claim::Foreign:
        reporter.NotDone(fmt::format("the file {} is in the way", temporary),
                         ProblemCode::OutputUnwritable);
        break;
    case platform::Claim::Failed:
        reporter.NotDone("it cannot be written", ProblemCode::OutputUnwritable);
        break;
    }
    return false;
}

void RawOutput::Append(ByteView bytes) {
    if (bytes.size() > kBufferBytes - buffer_.size()) Flush();
    if (bytes.size() < kBufferBytes) {
        buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
        return;
    }
    failed_ = failed_ || !temporary_.WriteAt(written_, bytes);
    written_ += bytes.size();
}

void RawOutput::Flush() {
    failed_ = failed_ || !temporary_.WriteAt(written_, buffer_);
    written_ += buffer_.size();
    buffer_.clear();
}

void RawOutput::Finish(Reporter& reporter) {
    Flush();
    const bool finished = !failed_ && temporary_.Finish(force_ ? name_ : std::string{});
    if (finished && (force_ ? temporary_.PutInPlaceOf(name_) : temporary_.PutAt(name_))) return;
    temporary_.Discard();
    reporter.NotDone(finished ? "it cannot be put in its place" : "it cannot be written",
                     ProblemCode::OutputUnwritable);
}

} // namespace kelvo::tool
