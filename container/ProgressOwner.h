#pragma once
// Who is told how far a rewrite has come, and can stop it.

#include <cstdint>

namespace kelvo {

/// The code with which a rewrite notifies its owner.
inline constexpr int kRewriteProgress = 0x3937;

/// What a rewrite tells with every notification.
struct RewriteInformation {
    std::uint32_t record_count = 0;   ///< of the source
    std::uint32_t temporary_size = 0; ///< bytes written so far
};

class ProgressOwner {
public:
    virtual ~ProgressOwner() = default;
    /// @param code  kRewriteProgress
    /// @param done  records done
    /// @return not 0 stops the rewrite; the file then stays as it was
    virtual int ProgressNotify(int code, int done, const RewriteInformation& info) = 0;
};

} // namespace kelvo
