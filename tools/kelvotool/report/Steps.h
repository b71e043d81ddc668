#pragma once
// Progress of long work whose steps may be more than 32 bits count.

#include "framework/base/CString.h"
#include "framework/base/ProgressDisplay.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace kelvo::tool {

class Steps {
public:
    /// @param total  0 where nobody knows
    explicit Steps(std::uint64_t total)
        : total_(std::max<std::uint64_t>(total, 1)), progress_(ShowProgress({})) {}
    /// @return false when a person stopped it
    bool Update(std::uint64_t done) {
        constexpr std::uint64_t kParts = 10000;
        const std::uint64_t part = std::min(done, total_) * kParts / total_;
        return progress_->Update(static_cast<std::int32_t>(part),
                                 static_cast<std::int32_t>(kParts)) &&
               !StopRequested();
    }

private:
    std::uint64_t total_;
    std::unique_ptr<ProgressDisplay> progress_;
};

} // namespace kelvo::tool
