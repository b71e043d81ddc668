#pragma once
// One or more new files that are written whole before any of them has its name.

#include "container/RewriteTarget.h"
#include "tools/kelvotool/report/Reporter.h"

#include <functional>
#include <string>

namespace kelvo::tool {

/// A new film or track on its way to its name.
class NewTrackFile {
public:
    /// @param reporter  speaks of the output
    /// @param source    speaks of what is read
    NewTrackFile(Reporter& reporter, Reporter& source) : reporter_(reporter), source_(source) {}

    /// @param name   full, as OutputName gives it
    /// @param write  fills it
    /// @return false after it was reported why not; nothing is left behind then
    [[nodiscard]] bool Write(const std::string& name, RewriteTarget::Kind kind,
                             const std::function<Error(RewriteTarget&)>& write);
    /// Where the finished file stands until it has its name.
    const std::string& TemporaryName() const { return target_.TemporaryName(); }
    /// Takes the finished file away: it is not what it should be.
    void Discard() { target_.Discard(); }
    /// Gives it its name, which may mean a file only when that may be replaced.
    bool Place(bool replace);

private:
    bool Succeeded(const Error& error);

    Reporter& reporter_;
    Reporter& source_;
    RewriteTarget target_;
};

} // namespace kelvo::tool
